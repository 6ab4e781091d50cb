/*
 * libkorvel: image processing for applications of industrial cameras.
 *
 * This header is the whole of the library's interface, for C (C99 and later) and C++.
 *
 * Rules that all functions share
 * ------------------------------
 * - Every function returns a KORVEL_RETURN_CODE. On failure it also leaves a code and a text in a record of the
 *   calling thread, which KORVEL_Library_GetLastError reads. A success never changes that record.
 * - A failed call changes nothing but that record, unless the function says otherwise. Results are written through
 *   pointers and only on success.
 * - Checks run in this order: handles (KORVEL_RETURN_CODE_InvalidHandle), packed formats where a function refuses them
 *   (KORVEL_RETURN_CODE_ImageFormatNotSupported), pointers (KORVEL_RETURN_CODE_InvalidArgument), values. A null
 *   pointer is refused everywhere but where a function gives it a meaning. That any other pointer can be read or
 *   written is trusted.
 * - Objects are held by handles. A handle is valid from the call that wrote it until the matching ..._Destruct. An
 *   unknown, destroyed or foreign handle is refused. A call in progress keeps its objects alive even if another
 *   thread destroys the handle meanwhile.
 * - Two threads may use two handles freely. One object that makes or changes images (a converter, a gain) serves one
 *   thread at a time. The pixels of one image may be read by several threads, and be written by one that has them to
 *   itself.
 * - Pixel formats are passed as 32-bit ids: the codes of the GenICam Pixel Format Naming Convention (PFNC), and
 *   ids of the library's own that begin 0x4000.
 * - Sizes of images are in pixels, sizes of memory in bytes.
 * - No single image takes more than half of the physical memory; the library refuses larger ones of its own.
 */
#ifndef KORVEL_KORVEL_H
#define KORVEL_KORVEL_H

#ifndef __cplusplus
#include <stdbool.h>
#endif
#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define KORVEL_API __attribute__((visibility("default")))
#else
#define KORVEL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------ return codes -- */

/* What every function returns; one of the values below. */
typedef uint32_t KORVEL_RETURN_CODE;

enum {
  KORVEL_RETURN_CODE_Success = 0,
  KORVEL_RETURN_CODE_Error = 1,                          /* any failure without a more exact code */
  KORVEL_RETURN_CODE_InvalidHandle = 2,                  /* a handle that is not, or no longer, known */
  KORVEL_RETURN_CODE_Io = 3,                             /* a file could not be opened, read or written */
  KORVEL_RETURN_CODE_BufferToSmall = 4,                  /* the caller's memory is smaller than the result */
  KORVEL_RETURN_CODE_InvalidArgument = 5,                /* a null pointer, or a value that is refused */
  KORVEL_RETURN_CODE_OutOfRange = 6,                     /* a position outside the object, a width or height of 0 */
  KORVEL_RETURN_CODE_ImageFormatNotSupported = 7,        /* the operation does not exist for this format */
  KORVEL_RETURN_CODE_ImageFormatInterpretationError = 8, /* pixels of a file can't be read as this format */
  KORVEL_RETURN_CODE_NotSupported = 9,
  KORVEL_RETURN_CODE_AccessFailed = 10,
  KORVEL_RETURN_CODE_QueueFull = 11,
  KORVEL_RETURN_CODE_Timeout = 12
};

/* ----------------------------------------------------------------------------------------------- pixel formats -- */

/*
 * The list of all public pixel formats, in order of their ids. ROW is expanded once for each as
 *
 *   ROW(X, name, id, pixelClass, layout, significantBitsPerChannel)
 *
 * with X passed through. pixelClass is the family of the format without its depth. layout tells how channels lie in
 * memory:
 *   Unpacked     each channel in one byte (8 bits) or one little-endian 16-bit word, value in the low bits
 *   NoAlignment  one channel, a little-endian bit stream without gaps: the PFNC formats with the suffix "p"
 *   Mipi         one channel, high bits of a group first, then one byte with the low bits of all its pixels, as
 *                MIPI CSI-2 has it in RAW10 (4 pixels in 5 bytes, "g40") and RAW12 (2 pixels in 3 bytes, "g24")
 *   Word32       three channels of 10 bits in one little-endian 32-bit word, the first in the low bits
 * Lines follow each other without padding in every format; packed images are one stream from the first pixel to the
 * last. Applications that need names and ids alone use KORVEL_PIXEL_FORMATS.
 */
#define KORVEL_PIXEL_FORMAT_TABLE(ROW, X)                        \
  ROW(X, Mono8, 0x01080001, Mono, Unpacked, 8)                   \
  ROW(X, BayerGR8, 0x01080008, BayerGR, Unpacked, 8)             \
  ROW(X, BayerRG8, 0x01080009, BayerRG, Unpacked, 8)             \
  ROW(X, BayerGB8, 0x0108000A, BayerGB, Unpacked, 8)             \
  ROW(X, BayerBG8, 0x0108000B, BayerBG, Unpacked, 8)             \
  ROW(X, Mono10p, 0x010A0046, MonoPacked, NoAlignment, 10)       \
  ROW(X, BayerBG10p, 0x010A0052, BayerBGPacked, NoAlignment, 10) \
  ROW(X, BayerGB10p, 0x010A0054, BayerGBPacked, NoAlignment, 10) \
  ROW(X, BayerGR10p, 0x010A0056, BayerGRPacked, NoAlignment, 10) \
  ROW(X, BayerRG10p, 0x010A0058, BayerRGPacked, NoAlignment, 10) \
  ROW(X, Mono12p, 0x010C0047, MonoPacked, NoAlignment, 12)       \
  ROW(X, BayerBG12p, 0x010C0053, BayerBGPacked, NoAlignment, 12) \
  ROW(X, BayerGB12p, 0x010C0055, BayerGBPacked, NoAlignment, 12) \
  ROW(X, BayerGR12p, 0x010C0057, BayerGRPacked, NoAlignment, 12) \
  ROW(X, BayerRG12p, 0x010C0059, BayerRGPacked, NoAlignment, 12) \
  ROW(X, Mono10, 0x01100003, Mono, Unpacked, 10)                 \
  ROW(X, Mono12, 0x01100005, Mono, Unpacked, 12)                 \
  ROW(X, BayerGR10, 0x0110000C, BayerGR, Unpacked, 10)           \
  ROW(X, BayerRG10, 0x0110000D, BayerRG, Unpacked, 10)           \
  ROW(X, BayerGB10, 0x0110000E, BayerGB, Unpacked, 10)           \
  ROW(X, BayerBG10, 0x0110000F, BayerBG, Unpacked, 10)           \
  ROW(X, BayerGR12, 0x01100010, BayerGR, Unpacked, 12)           \
  ROW(X, BayerRG12, 0x01100011, BayerRG, Unpacked, 12)           \
  ROW(X, BayerGB12, 0x01100012, BayerGB, Unpacked, 12)           \
  ROW(X, BayerBG12, 0x01100013, BayerBG, Unpacked, 12)           \
  ROW(X, RGB8, 0x02180014, RGB, Unpacked, 8)                     \
  ROW(X, BGR8, 0x02180015, BGR, Unpacked, 8)                     \
  ROW(X, RGBa8, 0x02200016, RGBa, Unpacked, 8)                   \
  ROW(X, BGRa8, 0x02200017, BGRa, Unpacked, 8)                   \
  ROW(X, RGB10p32, 0x0220001D, RGB10p32, Word32, 10)             \
  ROW(X, BGR10p32, 0x0220001E, BGR10p32, Word32, 10)             \
  ROW(X, RGB10, 0x02300018, RGB, Unpacked, 10)                   \
  ROW(X, BGR10, 0x02300019, BGR, Unpacked, 10)                   \
  ROW(X, RGB12, 0x0230001A, RGB, Unpacked, 12)                   \
  ROW(X, BGR12, 0x0230001B, BGR, Unpacked, 12)                   \
  ROW(X, BGRa10, 0x0240004C, BGRa, Unpacked, 10)                 \
  ROW(X, BGRa12, 0x0240004E, BGRa, Unpacked, 12)                 \
  ROW(X, RGBa10, 0x0240005F, RGBa, Unpacked, 10)                 \
  ROW(X, RGBa12, 0x02400061, RGBa, Unpacked, 12)                 \
  ROW(X, BayerRG10g40Qrv, 0x40000001, BayerRGPacked, Mipi, 10)   \
  ROW(X, BayerGB10g40Qrv, 0x40000002, BayerGBPacked, Mipi, 10)   \
  ROW(X, BayerGR10g40Qrv, 0x40000003, BayerGRPacked, Mipi, 10)   \
  ROW(X, BayerBG10g40Qrv, 0x40000004, BayerBGPacked, Mipi, 10)   \
  ROW(X, Mono10g40Qrv, 0x4000000F, MonoPacked, Mipi, 10)         \
  ROW(X, BayerRG12g24Qrv, 0x40000011, BayerRGPacked, Mipi, 12)   \
  ROW(X, BayerGB12g24Qrv, 0x40000012, BayerGBPacked, Mipi, 12)   \
  ROW(X, BayerGR12g24Qrv, 0x40000013, BayerGRPacked, Mipi, 12)   \
  ROW(X, BayerBG12g24Qrv, 0x40000014, BayerBGPacked, Mipi, 12)   \
  ROW(X, Mono12g24Qrv, 0x4000001F, MonoPacked, Mipi, 12)

/*
 * Expands X(name, id) once for each public pixel format, in order of the ids:
 *
 *   #define PRINT_FORMAT(name, id) printf("%s is 0x%08X\n", #name, id);
 *   KORVEL_PIXEL_FORMATS(PRINT_FORMAT)
 */
#define KORVEL_PIXEL_FORMATS(X) KORVEL_PIXEL_FORMAT_TABLE(KORVEL_DETAIL_NAME_AND_ID, X)
#define KORVEL_DETAIL_NAME_AND_ID(X, name, id, pixelClass, layout, significantBits) X(name, id)

/* The ids as constants: KORVEL_PIXEL_FORMAT_Mono8, KORVEL_PIXEL_FORMAT_BayerRG12p, ... Functions take a uint32_t. */
#define KORVEL_DETAIL_FORMAT_CONSTANT(name, id) KORVEL_PIXEL_FORMAT_##name = id,
enum {
  KORVEL_PIXEL_FORMATS(KORVEL_DETAIL_FORMAT_CONSTANT) KORVEL_PIXEL_FORMAT_Invalid =
      0 /* no format; an image of it has one byte per pixel and no meaning */
};
#undef KORVEL_DETAIL_FORMAT_CONSTANT

/* The order of bytes in channels of more than 8 bits. Every format is little-endian. */
typedef uint32_t KORVEL_ENDIANNESS;

enum { KORVEL_ENDIANNESS_Little = 0 };

/* ------------------------------------------------------------------------------------------------------ handles -- */

/* Each kind of object has a handle type of its own. Null is never a valid handle. */
typedef struct KORVEL_IMAGE_HANDLE_S* KORVEL_IMAGE_HANDLE;
typedef struct KORVEL_IMAGE_CONVERTER_HANDLE_S* KORVEL_IMAGE_CONVERTER_HANDLE;
typedef struct KORVEL_GAIN_HANDLE_S* KORVEL_GAIN_HANDLE;
typedef struct KORVEL_GAMMA_CORRECTOR_HANDLE_S* KORVEL_GAMMA_CORRECTOR_HANDLE;
typedef struct KORVEL_COLOR_CORRECTOR_HANDLE_S* KORVEL_COLOR_CORRECTOR_HANDLE;
typedef struct KORVEL_BINNING_HANDLE_S* KORVEL_BINNING_HANDLE;
typedef struct KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE_S* KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE;
typedef struct KORVEL_IMAGE_TRANSFORMER_HANDLE_S* KORVEL_IMAGE_TRANSFORMER_HANDLE;
typedef struct KORVEL_HISTOGRAM_HANDLE_S* KORVEL_HISTOGRAM_HANDLE;
typedef struct KORVEL_PIXEL_LINE_HANDLE_S* KORVEL_PIXEL_LINE_HANDLE;
typedef struct KORVEL_VIDEO_HANDLE_S* KORVEL_VIDEO_HANDLE;

/* ------------------------------------------------------------------------------------------------------ library -- */

/* The version of the library that runs: 1.5.0 is 1, 5 and 0. */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Library_GetVersionMajor(uint32_t* libraryVersionMajor);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Library_GetVersionMinor(uint32_t* libraryVersionMinor);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Library_GetVersionSubminor(uint32_t* libraryVersionSubminor);

/*
 * Reads code and text of the last failure in the calling thread; 0 and an empty text before the first.
 *
 * With lastErrorDescription null, writes the bytes that the text needs, its terminating zero included, into
 * *lastErrorDescriptionSize, and nothing else. Otherwise *lastErrorDescriptionSize tells how many bytes
 * lastErrorDescription has room for, and is set to the bytes written. Reading doesn't clear the record.
 *
 * InvalidArgument  lastErrorCode or lastErrorDescriptionSize is null
 * BufferToSmall    the text does not fit; this failure takes the place of the one that was asked for, so ask for the
 *                  size first
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Library_GetLastError(uint32_t* lastErrorCode, char* lastErrorDescription,
                                                          size_t* lastErrorDescriptionSize);

/* ---------------------------------------------------------------------------------------- pixel format queries -- */

/*
 * Properties of a pixel format. Bits are significant where they carry a value, and storage bits where they take up
 * memory. KORVEL_PIXEL_FORMAT_Invalid answers like an 8-bit format of one channel. A few ids that the library uses
 * inside, all above 0xFFF00000, have answers too.
 *
 * InvalidArgument  the result pointer is null
 * Error            no format has this id
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumChannels(uint32_t pixelFormat, size_t* numChannels);
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumSignificantBitsPerChannel(uint32_t pixelFormat,
                                                                                 size_t* numSignificantBits);
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumStorageBitsPerChannel(uint32_t pixelFormat,
                                                                             size_t* numStorageBits);
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_GetMaximumValuePerChannel(uint32_t pixelFormat,
                                                                           uint32_t* channelMaximumValue);
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumSignificantBitsPerPixel(uint32_t pixelFormat,
                                                                               size_t* numSignificantBits);
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumStorageBitsPerPixel(uint32_t pixelFormat,
                                                                           size_t* numStorageBits);
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_GetEndianness(uint32_t pixelFormat, KORVEL_ENDIANNESS* endianness);

/*
 * Bytes that a run of numPixels pixels takes, and so also those of an image of width * height pixels. Packed formats
 * round up to a whole byte once, over the whole run. The arithmetic wraps at 64 bits.
 *
 * InvalidArgument  size is null
 * Error            no format has this id
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_CalculateStorageSizeOfPixels(uint32_t pixelFormat, size_t numPixels,
                                                                              size_t* size);

/* ------------------------------------------------------------------------------------------------------- images -- */

/*
 * Makes an image in memory of the library's own, all zero. The memory goes with KORVEL_Image_Destruct.
 * KORVEL_PIXEL_FORMAT_Invalid may have a width or height of 0; such an image has no data.
 *
 * InvalidArgument  imageHandle is null
 * OutOfRange       width or height is 0
 * Error            no public format has this id, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_Construct(uint32_t pixelFormat, size_t width, size_t height,
                                                     KORVEL_IMAGE_HANDLE* imageHandle);

/*
 * Makes an image over the caller's memory; nothing is copied. buffer must hold bufferSize bytes, at least those of
 * width * height pixels; it needs no alignment. It stays the caller's and must stay valid until the handle, and all
 * that was made over the same memory, is gone. What the library writes to this image lands in buffer.
 * KORVEL_PIXEL_FORMAT_Invalid may have a width or height of 0; KORVEL_Image_GetData gives buffer all the same.
 *
 * InvalidArgument  buffer or imageHandle is null, or bufferSize is too small
 * OutOfRange       width or height is 0
 * Error            no public format has this id
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_ConstructFromBuffer(uint32_t pixelFormat, uint8_t* buffer, size_t bufferSize,
                                                               size_t width, size_t height,
                                                               KORVEL_IMAGE_HANDLE* imageHandle);

/*
 * Properties of an image. KORVEL_Image_GetData gives the first byte of the pixels, null for an image without data.
 * The pointer is valid as long as the handle.
 *
 * InvalidHandle    imageHandle is not known
 * InvalidArgument  the result pointer is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_GetWidth(KORVEL_IMAGE_HANDLE imageHandle, size_t* width);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_GetHeight(KORVEL_IMAGE_HANDLE imageHandle, size_t* height);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_GetByteCount(KORVEL_IMAGE_HANDLE imageHandle, size_t* byteCount);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_GetPixelFormat(KORVEL_IMAGE_HANDLE imageHandle, uint32_t* pixelFormat);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_GetData(KORVEL_IMAGE_HANDLE imageHandle, uint8_t** data);

/*
 * Address of the pixel at column xPos and row yPos, both from 0 at the top left. It is exact for every format whose
 * pixels begin on whole bytes. For the packed formats of one channel it counts two bytes a pixel, which is not where
 * their pixels lie: walk those from KORVEL_Image_GetData. Offsets wrap at 4 GiB.
 *
 * InvalidHandle    imageHandle is not known
 * InvalidArgument  pixelPointer is null
 * OutOfRange       the image has no pixels, or the position lies outside it
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_GetPixelPointer(KORVEL_IMAGE_HANDLE imageHandle, size_t xPos, size_t yPos,
                                                           uint8_t** pixelPointer);

/*
 * Copies an image, of any format, into memory of the library's own.
 *
 * InvalidHandle    imageHandle is not known
 * InvalidArgument  outputImageHandle is null
 * Error            the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_Clone(KORVEL_IMAGE_HANDLE imageHandle,
                                                 KORVEL_IMAGE_HANDLE* outputImageHandle);

/*
 * Converts one image to another format; for streams of images use a converter, which keeps its memory. See
 * KORVEL_ImageConverter_Convert for the formats and for when the input image is changed, and KORVEL_CONVERSION_MODE for
 * conversionMode.
 *
 * InvalidHandle    imageHandle is not known
 * InvalidArgument  outputImageHandle is null
 * Error            the conversion does not exist, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_ConvertTo(KORVEL_IMAGE_HANDLE imageHandle, uint32_t outputPixelFormat,
                                                     uint32_t conversionMode, KORVEL_IMAGE_HANDLE* outputImageHandle);

/*
 * Like KORVEL_Image_ConvertTo, with the result in the caller's memory: outputImageHandle then stands for an image over
 * outputImageBuffer, with the rules of KORVEL_Image_ConstructFromBuffer. See KORVEL_ImageConverter_ConvertToBuffer,
 * which also tells the codes, but for InvalidHandle: imageHandle is not known.
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_ConvertToBuffer(KORVEL_IMAGE_HANDLE imageHandle, uint32_t outputPixelFormat,
                                                           uint8_t* outputImageBuffer, size_t outputImageBufferSize,
                                                           uint32_t conversionMode,
                                                           KORVEL_IMAGE_HANDLE* outputImageHandle);

/*
 * Ends a handle. The image's own memory goes with it; the caller's memory is left alone.
 *
 * InvalidHandle    imageHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_Destruct(KORVEL_IMAGE_HANDLE imageHandle);

/* --------------------------------------------------------------------------------------------- image converter -- */

/*
 * How Bayer images become colour images. Any other value is accepted and does what HighQuality does.
 *
 *   Fast         bilinear interpolation over 3 by 3 pixels
 *   HighQuality  linear filters over 5 by 5 pixels that correct each colour with the gradients of the others
 *   Classic      bilinear, sampled half a pixel to the right and below; exists for BayerRG8 and BayerGR8 to 8-bit
 *                colour, from 16 by 16 pixels on, at even widths and heights; elsewhere HighQuality takes its place
 *
 * The outermost pixels are copies of their neighbours, except in Classic and in these conversions of Fast, which exist
 * on processors with AVX from 16 by 16 pixels on, at even widths and heights, and compute each border pixel from the
 * neighbours that it has: BayerRG8 and BayerGR8 to 8-bit colour, and BayerRG10 to RGB10p32. There, and for the same
 * inputs to Mono8, where Fast gives the luminance of the colours, results depend on the processor's features; every
 * other conversion gives the same pixels everywhere.
 */
typedef uint32_t KORVEL_CONVERSION_MODE;

enum { KORVEL_CONVERSION_MODE_Fast = 1, KORVEL_CONVERSION_MODE_HighQuality = 2, KORVEL_CONVERSION_MODE_Classic = 3 };

/*
 * Makes a converter, in mode Fast. A converter keeps the memory of images that it made and that were destroyed, so
 * that converting a stream of like images takes no new memory for pixels.
 *
 * InvalidArgument  imageConverterHandle is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageConverter_Construct(KORVEL_IMAGE_CONVERTER_HANDLE* imageConverterHandle);

/*
 * Takes the memory for a stream of conversions ahead of time: intermediate images, and imageCount results that are to
 * be alive at once.
 *
 * Whether the whole conversion exists isn't asked: KORVEL_ImageConverter_GetSupportedOutputPixelFormats tells that.
 * If memory runs out on the way, what was taken before stays with the converter.
 *
 * InvalidHandle  imageConverterHandle is not known
 * OutOfRange     imageWidth or imageHeight is 0
 * Error          no format has one of the ids, Bayer or mono images don't become such outputs, or imageCount images
 *                exceed half of the physical memory
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageConverter_PreAllocateConversion(
    KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle, uint32_t inputPixelFormat, uint32_t outputPixelFormat,
    size_t imageWidth, size_t imageHeight, size_t imageCount);

/*
 * The conversion mode; see KORVEL_CONVERSION_MODE. A change takes effect from the next conversion stage.
 *
 * InvalidHandle    imageConverterHandle is not known
 * InvalidArgument  conversionMode is null
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_ImageConverter_GetConversionMode(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle, uint32_t* conversionMode);
KORVEL_API KORVEL_RETURN_CODE
KORVEL_ImageConverter_SetConversionMode(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle, uint32_t conversionMode);

/*
 * Lists the formats that inputPixelFormat converts to, itself among them.
 *
 * With outputPixelFormats null, writes the number of formats into *outputPixelFormatsSize. Otherwise
 * *outputPixelFormatsSize tells how many elements the array has, and is set to the number written.
 *
 * InvalidHandle    imageConverterHandle is not known
 * InvalidArgument  outputPixelFormatsSize is null
 * BufferToSmall    the array is too small; *outputPixelFormatsSize stays as it was
 * Error            no format has this id
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageConverter_GetSupportedOutputPixelFormats(
    KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle, uint32_t inputPixelFormat, uint32_t* outputPixelFormats,
    size_t* outputPixelFormatsSize);

/*
 * Converts an image to another format (or copies it, to its own) into memory of the converter, which takes it back
 * when the new handle is destroyed. Width and height stay.
 *
 * Red and blue are swapped between RGB and BGR formats in the input's own memory before the result is copied from it:
 * where that is the first stage (RGB8 to BGR8, say), the input image is changed, also by a call that fails later on.
 *
 * InvalidHandle    imageConverterHandle or inputImageHandle is not known
 * InvalidArgument  outputImageHandle is null
 * Error            the conversion does not exist, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageConverter_Convert(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle,
                                                            KORVEL_IMAGE_HANDLE inputImageHandle,
                                                            uint32_t outputPixelFormat,
                                                            KORVEL_IMAGE_HANDLE* outputImageHandle);

/*
 * Like KORVEL_ImageConverter_Convert, with the result in the caller's memory: outputImageHandle then stands for an
 * image over outputImageBuffer, with the rules of KORVEL_Image_ConstructFromBuffer. The common conversions from Bayer
 * to 8-bit colour take a larger buffer too; for all others outputImageBufferSize must be the exact byte count of the
 * result. Most write there directly; the rest make an image first and copy it. A swap of red and blue changes the input
 * image as told there, also in a call that then fails on outputImageBufferSize.
 *
 * In mode Classic, only BayerRG8 and BayerGR8 to RGB8, BGR8, RGBa8 or BGRa8 are accepted.
 *
 * InvalidHandle    imageConverterHandle or inputImageHandle is not known
 * InvalidArgument  outputImageBuffer or outputImageHandle is null
 * BufferToSmall    outputImageBufferSize is below the byte count of the result
 * Error            the conversion does not exist, outputImageBufferSize is above the byte count of the result where
 *                  it must be exact, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageConverter_ConvertToBuffer(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle,
                                                                    KORVEL_IMAGE_HANDLE inputImageHandle,
                                                                    uint32_t outputPixelFormat,
                                                                    uint8_t* outputImageBuffer,
                                                                    size_t outputImageBufferSize,
                                                                    KORVEL_IMAGE_HANDLE* outputImageHandle);

/*
 * Ends a handle. Images that the converter made stay valid.
 *
 * InvalidHandle  imageConverterHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageConverter_Destruct(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle);

/* -------------------------------------------------------------------------------------------------------- gain -- */

/*
 * Digital gain for mono and unpacked Bayer images. Every value is multiplied by the master gain and, at a Bayer site,
 * by the gain of the site's colour, limited to the maximum of the format's depth; a fraction is dropped. Colour gains
 * don't change mono images. While all four gains lie in 0.999 to 1.001, pixels stay as they are. In formats of 10 and
 * 12 bits, bits above the depth are ignored and come out 0.
 */

/*
 * Makes a gain object, with all gains 1.0. It keeps the memory of images that it made and that were destroyed, so that
 * a stream of like images takes no new memory for pixels.
 *
 * InvalidArgument  gainHandle is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_Construct(KORVEL_GAIN_HANDLE* gainHandle);

/*
 * Sets a gain, for the calls that follow. Its price is that of new tables, so set it when it changes and not for each
 * image.
 *
 * InvalidHandle    gainHandle is not known
 * InvalidArgument  value is null, or *value is not in 1.0 to 8.0; the gain stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_SetMasterGainValue(KORVEL_GAIN_HANDLE gainHandle, const float* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_SetRedGainValue(KORVEL_GAIN_HANDLE gainHandle, const float* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_SetGreenGainValue(KORVEL_GAIN_HANDLE gainHandle, const float* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_SetBlueGainValue(KORVEL_GAIN_HANDLE gainHandle, const float* value);

/*
 * A gain, and the limits of its values, both included: 1.0 and 8.0 for all four.
 *
 * InvalidHandle    gainHandle is not known
 * InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetMasterGainValue(KORVEL_GAIN_HANDLE gainHandle, float* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetRedGainValue(KORVEL_GAIN_HANDLE gainHandle, float* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetGreenGainValue(KORVEL_GAIN_HANDLE gainHandle, float* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetBlueGainValue(KORVEL_GAIN_HANDLE gainHandle, float* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetMasterGainMin(KORVEL_GAIN_HANDLE gainHandle, float* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetRedGainMin(KORVEL_GAIN_HANDLE gainHandle, float* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetGreenGainMin(KORVEL_GAIN_HANDLE gainHandle, float* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetBlueGainMin(KORVEL_GAIN_HANDLE gainHandle, float* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetMasterGainMax(KORVEL_GAIN_HANDLE gainHandle, float* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetRedGainMax(KORVEL_GAIN_HANDLE gainHandle, float* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetGreenGainMax(KORVEL_GAIN_HANDLE gainHandle, float* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetBlueGainMax(KORVEL_GAIN_HANDLE gainHandle, float* value);

/*
 * Whether images of a format can be processed: Mono8, Mono10, Mono12 and the twelve unpacked Bayer formats. An id that
 * no format has is not supported.
 *
 * InvalidHandle    gainHandle is not known
 * InvalidArgument  isPixelFormatSupported is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetIsPixelFormatSupported(KORVEL_GAIN_HANDLE gainHandle, uint32_t pixelFormat,
                                                                    bool* isPixelFormatSupported);

/*
 * Applies the gains: KORVEL_Gain_Process makes a new image, in memory of the gain object, which takes it back when
 * the new handle is destroyed; KORVEL_Gain_ProcessInPlace changes the image's own pixels.
 *
 * InvalidHandle            gainHandle or imageHandle is not known
 * InvalidArgument          outputImageHandle is null
 * ImageFormatNotSupported  the image's format is not supported
 * Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_Process(KORVEL_GAIN_HANDLE gainHandle, KORVEL_IMAGE_HANDLE imageHandle,
                                                  KORVEL_IMAGE_HANDLE* outputImageHandle);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_ProcessInPlace(KORVEL_GAIN_HANDLE gainHandle,
                                                         KORVEL_IMAGE_HANDLE imageHandle);

/*
 * Ends a handle. Images that the gain object made stay valid.
 *
 * InvalidHandle  gainHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_Destruct(KORVEL_GAIN_HANDLE gainHandle);

/* --------------------------------------------------------------------------------------------- gamma corrector -- */

/*
 * Gamma correction of mono, Bayer and colour images. Every value v of a channel with the maximum M becomes
 * M * (v / M) ^ (1 / gamma); a fraction is dropped. Alpha is not corrected. While gamma lies in 0.999 to 1.001, pixels
 * stay as they are. In formats of 10 and 12 bits, values above the maximum count as the maximum.
 */

/*
 * Makes a gamma corrector, with a gamma of 1.0. It keeps the memory of images that it made and that were destroyed, so
 * that a stream of like images takes no new memory for pixels.
 *
 * InvalidArgument  gammaCorrectorHandle is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_GammaCorrector_Construct(KORVEL_GAMMA_CORRECTOR_HANDLE* gammaCorrectorHandle);

/*
 * Sets gamma, for the calls that follow. Above 1 it lightens, below 1 it darkens. Its price is that of new tables, so
 * set it when it changes and not for each image.
 *
 * InvalidHandle    gammaCorrectorHandle is not known
 * InvalidArgument  value is null, or *value is not in 0.3 to 3.0; gamma stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_GammaCorrector_SetGammaCorrectionValue(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle, const float* value);

/*
 * Gamma, and the limits of its values, both included: 0.3 and 3.0.
 *
 * InvalidHandle    gammaCorrectorHandle is not known
 * InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_GammaCorrector_GetGammaCorrectionValue(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle, float* value);
KORVEL_API KORVEL_RETURN_CODE
KORVEL_GammaCorrector_GetGammaCorrectionMin(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle, float* value);
KORVEL_API KORVEL_RETURN_CODE
KORVEL_GammaCorrector_GetGammaCorrectionMax(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle, float* value);

/*
 * Whether images of a format can be processed: all formats that are not packed, and RGB10p32. True also for
 * KORVEL_PIXEL_FORMAT_Invalid, though no image of it is processed. An id that no format has is not supported.
 *
 * InvalidHandle    gammaCorrectorHandle is not known
 * InvalidArgument  isPixelFormatSupported is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_GammaCorrector_GetIsPixelFormatSupported(
    KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle, uint32_t pixelFormat, bool* isPixelFormatSupported);

/*
 * Corrects an image: KORVEL_GammaCorrector_Process makes a new one, in memory of the corrector, which takes it back
 * when the new handle is destroyed; KORVEL_GammaCorrector_ProcessInPlace changes the image's own pixels.
 *
 * Alpha stays as it is in place. In a new image it has no defined value, but where pixels stay as they are. The unused
 * bits of RGB10p32 become 0 where pixels change.
 *
 * InvalidHandle            gammaCorrectorHandle or imageHandle is not known
 * InvalidArgument          outputImageHandle is null
 * ImageFormatNotSupported  the image's format is not supported
 * Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_GammaCorrector_Process(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle,
                                                            KORVEL_IMAGE_HANDLE imageHandle,
                                                            KORVEL_IMAGE_HANDLE* outputImageHandle);
KORVEL_API KORVEL_RETURN_CODE KORVEL_GammaCorrector_ProcessInPlace(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle,
                                                                   KORVEL_IMAGE_HANDLE imageHandle);

/*
 * Ends a handle. Images that the corrector made stay valid.
 *
 * InvalidHandle  gammaCorrectorHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_GammaCorrector_Destruct(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle);

/* -------------------------------------------------------------------------------------------- colour corrector -- */

/*
 * Colour correction: each pixel's red, green and blue are multiplied by a matrix of 3 by 3 factors, and the results
 * limited to 0 and the maximum of the format's depth. Alpha, and the unused bits of RGB10p32, stay as they are.
 *
 * Results are computed in single precision and rounded: half up in general; on processors with AVX, from 16 by 16
 * pixels on, in RGB8, BGR8, RGBa8, BGRa8, RGB10, RGB12 and RGB10p32, to the nearest (even on a tie) for most pixels and
 * down for the last few of a line, or for the last line of RGB10 and RGB12. A result can so differ by one between
 * processors.
 */

/*
 * Makes a colour corrector, with the identity as its matrix. It keeps the memory of images that it made and that were
 * destroyed, so that a stream of like images takes no new memory for pixels.
 *
 * InvalidArgument  colorCorrectorHandle is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ColorCorrector_Construct(KORVEL_COLOR_CORRECTOR_HANDLE* colorCorrectorHandle);

/*
 * Sets the matrix from nine factors, line by line: the first three give the new red from red, green and blue, the next
 * three green, the last three blue, whatever the order of the channels in memory. Any factors are taken; a result that
 * is not a number becomes 0.
 *
 * InvalidHandle    colorCorrectorHandle is not known
 * InvalidArgument  colorCorrectorFactors is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ColorCorrector_SetColorCorrectionFactors(
    KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle, const float* colorCorrectorFactors);

/*
 * Reads the nine factors, in the order in which they are set.
 *
 * With colorCorrectorFactors null, writes 9 into *colorCorrectorFactorsSize. Otherwise *colorCorrectorFactorsSize tells
 * how many elements the array has, and stays as it is; elements beyond the ninth are not touched.
 *
 * InvalidHandle    colorCorrectorHandle is not known
 * InvalidArgument  colorCorrectorFactorsSize is null
 * BufferToSmall    the array has fewer than 9 elements
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_ColorCorrector_GetColorCorrectionFactors(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle,
                                                float* colorCorrectorFactors, size_t* colorCorrectorFactorsSize);

/*
 * Whether images of a format can be processed: the unpacked colour formats and RGB10p32. An id that no format has is
 * not supported.
 *
 * InvalidHandle    colorCorrectorHandle is not known
 * InvalidArgument  isPixelFormatSupported is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ColorCorrector_GetIsPixelFormatSupported(
    KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle, uint32_t pixelFormat, bool* isPixelFormatSupported);

/*
 * Corrects an image: KORVEL_ColorCorrector_Process makes a new one, in memory of the corrector, which takes it back
 * when the new handle is destroyed; KORVEL_ColorCorrector_ProcessInPlace changes the image's own pixels.
 *
 * InvalidHandle            colorCorrectorHandle or imageHandle is not known
 * InvalidArgument          outputImageHandle is null
 * ImageFormatNotSupported  the image's format is not supported
 * Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ColorCorrector_Process(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle,
                                                            KORVEL_IMAGE_HANDLE imageHandle,
                                                            KORVEL_IMAGE_HANDLE* outputImageHandle);
KORVEL_API KORVEL_RETURN_CODE KORVEL_ColorCorrector_ProcessInPlace(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle,
                                                                   KORVEL_IMAGE_HANDLE imageHandle);

/*
 * Ends a handle. Images that the corrector made stay valid.
 *
 * InvalidHandle  colorCorrectorHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ColorCorrector_Destruct(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle);

/* ----------------------------------------------------------------------------------------------------- binning -- */

/*
 * Binning: blocks of X by Y pixels become one, channel by channel. On Bayer images the pixels of a block are those of
 * one colour, two apart, so that the result has the same pattern. Alpha of the result is the maximum of the depth.
 */

/*
 * How a block becomes a pixel.
 *
 *   Average  the mean, its fraction dropped
 *   Sum      the sum, limited to the maximum of the format's depth
 */
typedef uint16_t KORVEL_BINNING_MODE;

enum { KORVEL_BINNING_MODE_Average = 0, KORVEL_BINNING_MODE_Sum = 1 };

/*
 * Makes a binning object, with factors of 1 and mode Sum. It keeps the memory of images that it made and that were
 * destroyed, so that a stream of like images takes no new memory for pixels.
 *
 * InvalidArgument  binningHandle is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_Construct(KORVEL_BINNING_HANDLE* binningHandle);

/*
 * Sets the width (X) and the height (Y) of a block, for the calls that follow.
 *
 * InvalidHandle    binningHandle is not known
 * InvalidArgument  factor is null, or *factor is not in 1 to 8; the factor stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_SetBinningX(KORVEL_BINNING_HANDLE binningHandle, const uint8_t* factor);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_SetBinningY(KORVEL_BINNING_HANDLE binningHandle, const uint8_t* factor);

/*
 * The factors, and the limits of their values, both included: 1 and 8.
 *
 * InvalidHandle    binningHandle is not known
 * InvalidArgument  factor or value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_GetBinningX(KORVEL_BINNING_HANDLE binningHandle, uint8_t* factor);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_GetBinningY(KORVEL_BINNING_HANDLE binningHandle, uint8_t* factor);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_GetBinningMin(KORVEL_BINNING_HANDLE binningHandle, uint8_t* value);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_GetBinningMax(KORVEL_BINNING_HANDLE binningHandle, uint8_t* value);

/*
 * The size of what an image of width by height pixels becomes: each side divided by its factor, and rounded down to
 * a multiple of 4 (width) and 2 (height), on Bayer formats of 8 and 4. The result is 0 where an image is too small.
 * Factors that are both 1 are rounded here as well, though KORVEL_Binning_Process then keeps the size.
 *
 * InvalidHandle    binningHandle is not known
 * InvalidArgument  outputWidth or outputHeight is null, or pixelFormat is not supported
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_ExpectedOutputSize(KORVEL_BINNING_HANDLE binningHandle,
                                                                size_t* outputWidth, size_t* outputHeight, size_t width,
                                                                size_t height, uint32_t pixelFormat);

/*
 * The mode; see KORVEL_BINNING_MODE.
 *
 * InvalidHandle    binningHandle is not known
 * InvalidArgument  mode is null, or *mode is none of the values; the mode stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_SetBinningMode(KORVEL_BINNING_HANDLE binningHandle,
                                                            const KORVEL_BINNING_MODE* mode);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_GetBinningMode(KORVEL_BINNING_HANDLE binningHandle,
                                                            KORVEL_BINNING_MODE* mode);

/*
 * Whether a format has binning: all formats that are not packed, and RGB10p32, for which
 * KORVEL_Binning_ExpectedOutputSize answers, though KORVEL_Binning_Process refuses its images as packed. An id that no
 * format has is not supported.
 *
 * InvalidHandle    binningHandle is not known
 * InvalidArgument  isPixelFormatSupported is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_IsPixelformatSupported(KORVEL_BINNING_HANDLE binningHandle,
                                                                    uint32_t pixelFormat, bool* isPixelFormatSupported);

/*
 * Makes a binned image, in memory of the binning object, which takes it back when the new handle is destroyed. With
 * factors that are both 1 it is a copy. Pixels beyond the last whole block of the rounded size are left out.
 *
 * InvalidHandle            binningHandle or imageHandle is not known
 * InvalidArgument          outputImageHandle is null, or the image is too small for the factors
 * ImageFormatNotSupported  the image's format is not supported
 * Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_Process(KORVEL_BINNING_HANDLE binningHandle,
                                                     KORVEL_IMAGE_HANDLE imageHandle,
                                                     KORVEL_IMAGE_HANDLE* outputImageHandle);

/*
 * Ends a handle. Images that the binning object made stay valid.
 *
 * InvalidHandle  binningHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_Destruct(KORVEL_BINNING_HANDLE binningHandle);

/* ------------------------------------------------------------------------------- adaptive hot pixel corrector -- */

/* A position in an image, in pixels from 0 at the top left. */
typedef struct KORVEL_POINT_2D {
  size_t x;
  size_t y;
} KORVEL_POINT_2D;

/*
 * Finds isolated bright pixels in raw images and replaces them by the mean of two neighbours. Works on Mono and
 * unpacked Bayer formats of 8, 10 and 12 bits; in Bayer images, neighbours are those of the pixel's own colour.
 *
 * A pixel of value c deviates by 2c - a - b from each pair (a, b) of opposite neighbours: those in its row, in its
 * column and on both diagonals. It is hot if it is brighter than the mean of each pair, and the square of each
 * deviation exceeds a threshold of A * c + B. A and B follow from the sensitivity and the gain factor:
 *
 *   A = slope * gainFactorPercent / 100                              slope and floor by sensitivity:
 *   B = floor * gainFactorPercent * gainFactorPercent / 10000          1: 20, 36    2: 6, 25    3: 3, 16
 *                                                                      4: 2, 9      5: 1, 4
 *
 * for 8 bits; for each bit above, A doubles and B quadruples. Products, divisions that truncate, and the threshold are
 * those of 32-bit integers, which wrap. In the first column of a mono image, c of the threshold is the value of the
 * next pixel. At the image's border, pairs are completed from inside the image, for a correction from other rows than
 * for detection; in Bayer images of 4 rows, the third row is not corrected. Mono images below 2 and Bayer images below
 * 4 pixels in width or height have no hot pixels, and nothing in them is corrected.
 *
 * The corrector keeps the list of the last detection, and its memory: 16 bytes for each pixel of the largest image.
 */

/*
 * Makes a corrector: sensitivity 3, gain factor 100 percent, an empty list.
 *
 * InvalidArgument  adaptiveHotpixelCorrectorHandle is null
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_AdaptiveHotpixelCorrector_Construct(KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE* adaptiveHotpixelCorrectorHandle);

/*
 * How readily a pixel counts as hot: 1 finds the fewest pixels, 5 the most. Larger numbers are stored and can be read
 * back, but leave the threshold as it was. Takes effect at the next detection.
 *
 * InvalidHandle    adaptiveHotpixelCorrectorHandle is not known
 * InvalidArgument  the pointer sensitivityLevel is null
 * Error            the value sensitivityLevel is 0
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_SetSensitivity(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, uint32_t sensitivityLevel);
KORVEL_API KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_GetSensitivity(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, uint32_t* sensitivityLevel);

/*
 * The sensor's gain in percent, which scales the noise that is expected; any value. Takes effect at the next detection.
 *
 * InvalidHandle    adaptiveHotpixelCorrectorHandle is not known
 * InvalidArgument  the pointer gainFactorPercent is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_SetGainFactorPercent(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, uint32_t gainFactorPercent);
KORVEL_API KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_GetGainFactorPercent(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, uint32_t* gainFactorPercent);

/*
 * Lists an image's hot pixels, which KORVEL_AdaptiveHotpixelCorrector_GetHotpixels then tells. The image stays as it
 * is.
 *
 * InvalidHandle            adaptiveHotpixelCorrectorHandle or imageHandle is not known
 * ImageFormatNotSupported  the image is neither Mono nor Bayer, or its format is packed
 * Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_Detect(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, KORVEL_IMAGE_HANDLE imageHandle);

/*
 * Tells the hot pixels that the last detection found, row by row from the top, in each row from the left.
 *
 * With detectedHotpixels null, writes their number into *detectedHotpixelsSize. Otherwise *detectedHotpixelsSize tells
 * how many elements the array has, and is set to that number. KORVEL_AdaptiveHotpixelCorrector_Correct puts its own
 * list in place of the detected one while the number stays; the elements are then those of that list, as far as the
 * array has room.
 *
 * InvalidHandle    adaptiveHotpixelCorrectorHandle is not known
 * InvalidArgument  detectedHotpixelsSize is null
 * BufferToSmall    the array is too small; *detectedHotpixelsSize stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_AdaptiveHotpixelCorrector_GetHotpixels(KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle,
                                              KORVEL_POINT_2D* detectedHotpixels, size_t* detectedHotpixelsSize);

/*
 * Corrects the listed pixels of an image in a copy of it, a new image. A pixel takes the mean of that pair of its
 * neighbours from which it deviates least, rounded towards its old value, if it is brighter than the mean of each pair
 * or darker than the mean of each pair, and keeps its value otherwise. Pixels are corrected in the order of the list,
 * so that a later one sees the new values of earlier ones. Positions outside the image are skipped.
 *
 * With detectedHotpixelsSize 0 nothing is done or checked, outputImageHandle is not written, and the call succeeds.
 * Otherwise the list takes the place of the corrector's own, also in a call that fails on the image's format.
 *
 * InvalidHandle            adaptiveHotpixelCorrectorHandle or imageHandle is not known
 * InvalidArgument          detectedHotpixels or outputImageHandle is null
 * ImageFormatNotSupported  the image is neither Mono nor Bayer, or its format is packed
 * Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_Correct(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, KORVEL_IMAGE_HANDLE imageHandle,
    const KORVEL_POINT_2D* detectedHotpixels, size_t detectedHotpixelsSize, KORVEL_IMAGE_HANDLE* outputImageHandle);

/*
 * Detects an image's hot pixels and corrects them in a copy of it, a new image; see
 * KORVEL_AdaptiveHotpixelCorrector_Detect and KORVEL_AdaptiveHotpixelCorrector_Correct.
 *
 * InvalidHandle            adaptiveHotpixelCorrectorHandle or imageHandle is not known
 * InvalidArgument          outputImageHandle is null
 * ImageFormatNotSupported  the image is neither Mono nor Bayer, or its format is packed
 * Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_CorrectAdaptive(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, KORVEL_IMAGE_HANDLE imageHandle,
    KORVEL_IMAGE_HANDLE* outputImageHandle);

/*
 * Ends a handle. Images that the corrector made stay valid.
 *
 * InvalidHandle  adaptiveHotpixelCorrectorHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_AdaptiveHotpixelCorrector_Destruct(KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle);

/* ------------------------------------------------------------------------------------------- image transformer -- */

/* The angles of a rotation, in degrees. */
typedef uint32_t KORVEL_ROTATION_ANGLE;

enum {
  KORVEL_ROTATION_ANGLE_Degree90 = 90, /* counter-clockwise */
  KORVEL_ROTATION_ANGLE_Degree180 = 180,
  KORVEL_ROTATION_ANGLE_Degree270 = 270 /* a quarter turn clockwise */
};

/*
 * Mirrors and rotates images of every format that isn't packed. Pixels are moved as they are. A Bayer image becomes one
 * of the Bayer format that fits its new top left corner: BayerRG8 of even width, mirrored left to right, is BayerGR8.
 */

/*
 * Makes a transformer. It keeps the memory of images that it made and that were destroyed, so that transforming a
 * stream of like images takes no new memory for pixels.
 *
 * InvalidArgument  imageTransformerHandle is null
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_ImageTransformer_Construct(KORVEL_IMAGE_TRANSFORMER_HANDLE* imageTransformerHandle);

/*
 * Mirrors an image into a new one: UpDown exchanges top and bottom, LeftRight left and right, UpDownLeftRight both.
 *
 * InvalidHandle            imageTransformerHandle or imageHandle is not known
 * ImageFormatNotSupported  the image's format is packed
 * InvalidArgument          outputImageHandle is null
 * Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_ImageTransformer_MirrorUpDown(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                     KORVEL_IMAGE_HANDLE imageHandle, KORVEL_IMAGE_HANDLE* outputImageHandle);
KORVEL_API KORVEL_RETURN_CODE
KORVEL_ImageTransformer_MirrorLeftRight(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                        KORVEL_IMAGE_HANDLE imageHandle, KORVEL_IMAGE_HANDLE* outputImageHandle);
KORVEL_API KORVEL_RETURN_CODE
KORVEL_ImageTransformer_MirrorUpDownLeftRight(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                              KORVEL_IMAGE_HANDLE imageHandle, KORVEL_IMAGE_HANDLE* outputImageHandle);

/*
 * Mirrors an image in its own memory. The handle stays; the format that it tells may change.
 *
 * InvalidHandle            imageTransformerHandle or imageHandle is not known
 * ImageFormatNotSupported  the image's format is packed
 * Error                    memory for what the library keeps of the image can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageTransformer_MirrorUpDownInPlace(
    KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle, KORVEL_IMAGE_HANDLE imageHandle);
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageTransformer_MirrorLeftRightInPlace(
    KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle, KORVEL_IMAGE_HANDLE imageHandle);
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageTransformer_MirrorUpDownLeftRightInPlace(
    KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle, KORVEL_IMAGE_HANDLE imageHandle);

/*
 * Rotates an image into a new one; a quarter turn exchanges width and height. See KORVEL_ROTATION_ANGLE for angle, of
 * which the low 16 bits count.
 *
 * InvalidHandle            imageTransformerHandle or imageHandle is not known
 * ImageFormatNotSupported  the image's format is packed
 * InvalidArgument          outputImageHandle is null
 * Error                    angle is none of the three, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageTransformer_Rotate(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                                             KORVEL_IMAGE_HANDLE imageHandle,
                                                             KORVEL_IMAGE_HANDLE* outputImageHandle, uint32_t angle);

/*
 * Rotates an image in its own memory. The handle stays; format, width and height that it tells may change. A quarter
 * turn takes memory of the image's size for the time of the call.
 *
 * InvalidHandle            imageTransformerHandle or imageHandle is not known
 * ImageFormatNotSupported  the image's format is packed
 * Error                    angle is none of the three, or the memory can't be had; if it runs out at the very end of a
 *                          quarter turn of a Bayer image, pixels and size have changed, and the format has not
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageTransformer_RotateInPlace(
    KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle, KORVEL_IMAGE_HANDLE imageHandle, uint32_t angle);

/*
 * Ends a handle. Images that the transformer made stay valid.
 *
 * InvalidHandle  imageTransformerHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageTransformer_Destruct(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle);

/* --------------------------------------------------------------------------------------------------- histogram -- */

/*
 * Counts the values of an image of a format that isn't packed, for each channel: one for Mono and for Bayer, whose
 * colours are counted together; three or four for colour, in the order of the format's name. The image isn't kept.
 * Several threads may read one histogram.
 *
 * InvalidHandle            imageHandle is not known
 * ImageFormatNotSupported  the image's format is packed
 * InvalidArgument          histogramHandle is null
 * Error                    the image has pixels of KORVEL_PIXEL_FORMAT_Invalid, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Histogram_Construct(KORVEL_IMAGE_HANDLE imageHandle,
                                                         KORVEL_HISTOGRAM_HANDLE* histogramHandle);

/*
 * Format of the image that was measured, and its channels.
 *
 * InvalidHandle    histogramHandle is not known
 * InvalidArgument  the result pointer is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Histogram_GetPixelFormat(KORVEL_HISTOGRAM_HANDLE histogramHandle,
                                                              uint32_t* pixelFormat);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Histogram_GetNumChannels(KORVEL_HISTOGRAM_HANDLE histogramHandle,
                                                              size_t* numChannels);

/*
 * Sum and number of a channel's values. channelIndex is from 0.
 *
 * InvalidHandle    histogramHandle is not known
 * InvalidArgument  the result pointer is null
 * OutOfRange       the histogram has no such channel
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Histogram_GetPixelSumForChannel(KORVEL_HISTOGRAM_HANDLE histogramHandle,
                                                                     size_t channelIndex, uint64_t* pixelSum);
KORVEL_API KORVEL_RETURN_CODE KORVEL_Histogram_GetPixelCountForChannel(KORVEL_HISTOGRAM_HANDLE histogramHandle,
                                                                       size_t channelIndex, uint64_t* pixelCount);

/*
 * How often each value occurs in a channel: 256, 1024 or 4096 bins by the format's depth. A stored value above the
 * maximum of the depth counts in the last bin.
 *
 * With bins null, writes the number of bins into *binsSize. Otherwise *binsSize tells how many elements the array has,
 * and is set to the number written.
 *
 * InvalidHandle    histogramHandle is not known
 * InvalidArgument  binsSize is null
 * OutOfRange       the histogram has no such channel
 * BufferToSmall    the array is too small; *binsSize stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Histogram_GetBinsForChannel(KORVEL_HISTOGRAM_HANDLE histogramHandle,
                                                                 size_t channelIndex, uint64_t* bins, size_t* binsSize);

/*
 * Ends a handle.
 *
 * InvalidHandle  histogramHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Histogram_Destruct(KORVEL_HISTOGRAM_HANDLE histogramHandle);

/* -------------------------------------------------------------------------------------------------- pixel line -- */

/* Which line of an image is meant. Any number above 1 means a column, too. */
typedef uint32_t KORVEL_ORIENTATION;

enum {
  KORVEL_ORIENTATION_Horizontal = 0, /* a row */
  KORVEL_ORIENTATION_Vertical = 1    /* a column */
};

/*
 * Copies the values of one row or column, whose number is offset, of an image of a format that isn't packed, for each
 * channel: one for Mono and for Bayer, three or four for colour, in the order of the format's name. The image isn't
 * kept. Several threads may read one line.
 *
 * An offset just past the last row or column gives a line without values, and so does any offset outside the image with
 * an orientation above 1.
 *
 * InvalidHandle            imageHandle is not known
 * ImageFormatNotSupported  the image's format is packed
 * InvalidArgument          pixelLineHandle is null
 * OutOfRange               offset exceeds the height (Horizontal) or the width (Vertical)
 * Error                    the line has pixels of KORVEL_PIXEL_FORMAT_Invalid, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelLine_Construct(KORVEL_IMAGE_HANDLE imageHandle, uint32_t orientation,
                                                         size_t offset, KORVEL_PIXEL_LINE_HANDLE* pixelLineHandle);

/*
 * Format of the image that was measured, which line it was, and the channels. The orientation is told as 0 or 1.
 *
 * InvalidHandle    pixelLineHandle is not known
 * InvalidArgument  the result pointer is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelLine_GetPixelFormat(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle,
                                                              uint32_t* pixelFormat);
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelLine_GetOrientation(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle,
                                                              uint32_t* orientation);
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelLine_GetOffset(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle, size_t* offset);
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelLine_GetNumChannels(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle,
                                                              size_t* numChannels);

/*
 * A channel's values as they are stored, along the line. channelIndex is from 0.
 *
 * With values null, writes their number into *valuesSize. Otherwise *valuesSize tells how many elements the array has,
 * and is set to the number written.
 *
 * InvalidHandle    pixelLineHandle is not known
 * InvalidArgument  valuesSize is null
 * OutOfRange       the line has no such channel
 * BufferToSmall    the array is too small; *valuesSize stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelLine_GetValuesForChannel(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle,
                                                                   size_t channelIndex, uint32_t* values,
                                                                   size_t* valuesSize);

/*
 * Ends a handle.
 *
 * InvalidHandle  pixelLineHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelLine_Destruct(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle);

/* ------------------------------------------------------------------------------------------------- image files -- */

/*
 * Paths of files are filePathSize bytes, without a terminating zero; any bytes that the file system takes. A path
 * without a directory means the working directory. The path's ending, in upper or lower case, tells the file type.
 *
 *   type             formats that it keeps                                 read back as
 *   ".bmp"           Mono, Bayer; RGB8, BGR8, RGBa8, BGRa8, RGB10p32,      mono for Bayer; RGB8 and RGB10p32 with red
 *                    BGR10p32; no other packed format                      and blue exchanged; the others as written
 *   ".png"           Mono, Bayer, colour; no packed format                 mono for Bayer, RGB for BGR; lossless
 *   ".jpg", ".jpeg"  Mono8, Bayer of 8 bits, colour of 8 bits              Mono8 or RGB8; lossy
 *   ".raw"           every format                                          as written
 *
 * BMP files keep the depth of 10 and 12 bits by masks, and pad lines by the remainder of their length by 4: programs
 * other than this library read those of 8 bits whose lines leave a remainder of 0 or 2. PNG files of 10 and 12 bits
 * hold 16-bit samples, shifted up, and tell the depth in an sBIT chunk. RAW is the library's own: 28 bytes (format id,
 * number of pixel bytes, width and height as little-endian integers of 4, 8, 8 and 8 bytes), then the image's bytes.
 */

/*
 * Writes an image to a file. The directory must exist, and the path's ending must be that of the file type. An existing
 * file is overwritten. Success means that the whole file was handed to the system and closed without an error; after a
 * failure a partly written file may stay behind.
 *
 * quality for ".png" runs from 10 (smallest file) to 100 (fastest); the pixels are the same. For ".jpg" and ".jpeg" it
 * runs from 0 (smallest file) to 100 (best picture), and anything above counts as 100. A PNG quality outside its range
 * may fail. No side of a PNG may exceed 1,000,000 pixels and none of a JPEG 65,500, and no BMP 4 GiB.
 *
 * KORVEL_ImageWriter_Write picks the file type from the ending, and a quality of 100 for PNG and of 75 for JPEG.
 *
 * InvalidHandle            inputImageHandle is not known
 * InvalidArgument          filePath is null or filePathSize is 0
 * Io                       the directory does not exist, the ending is not known or does not fit, or the file could
 *                          not be written
 * ImageFormatNotSupported  the file type has no place for this pixel format
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageWriter_WriteAsRAW(KORVEL_IMAGE_HANDLE inputImageHandle, const char* filePath,
                                                            size_t filePathSize);
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageWriter_WriteAsBMP(KORVEL_IMAGE_HANDLE inputImageHandle, const char* filePath,
                                                            size_t filePathSize);
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageWriter_WriteAsPNG(KORVEL_IMAGE_HANDLE inputImageHandle, uint32_t quality,
                                                            const char* filePath, size_t filePathSize);
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageWriter_WriteAsJPG(KORVEL_IMAGE_HANDLE inputImageHandle, uint32_t quality,
                                                            const char* filePath, size_t filePathSize);
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageWriter_Write(KORVEL_IMAGE_HANDLE inputImageHandle, const char* filePath,
                                                       size_t filePathSize);

/*
 * Reads a file into a new image, in memory of the library's own. Files from elsewhere are read as far as they fit: BMP
 * of 8 bits with a colour table (as Mono8, whatever the table's colours), 24 bits, and bit fields that match a pixel
 * format (masks of 12 bytes behind an info header of 40); PNG of grey or true colour, where 16-bit samples without an
 * sBIT chunk are reduced to 8, an sBIT chunk has to tell 10 or 12 bits for every channel, and transparent colours are
 * ignored; JPEG of grey or colour, not CMYK.
 *
 * KORVEL_ImageReaderRead_ReadAsPixelFormat takes the pixels for another format; none is converted. From BMP, PNG and
 * JPEG files a mono image can be asked for as a Bayer format of its depth, and the image then has that format. From a
 * RAW file a Bayer image can be asked for as the mono format of its depth and packing, and the image still has the
 * file's format. The format that the file holds can always be asked for.
 *
 * A file is never trusted: whatever it holds, the answer is an image or a failure. Sizes are checked against the file
 * as far as its type allows, and against the limit of all images, before memory is taken. Anything but a regular file
 * is answered like a file that can't be opened.
 *
 * InvalidArgument                 filePath or outputImageHandle is null or filePathSize is 0
 * Io                              the ending is not known, or the file can't be opened, is damaged, cut short or larger
 *                                 than the limit of all images
 * OutOfRange                      a RAW file's width or height is 0
 * ImageFormatNotSupported         no pixel format fits the file's pixels, or pixelFormat is KORVEL_PIXEL_FORMAT_Invalid
 * ImageFormatInterpretationError  the file's pixels can't be taken for pixelFormat, or no format has this id
 * Error                           a RAW file's pixel format isn't public, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageReader_Read(const char* filePath, size_t filePathSize,
                                                      KORVEL_IMAGE_HANDLE* outputImageHandle);
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageReaderRead_ReadAsPixelFormat(const char* filePath, size_t filePathSize,
                                                                       uint32_t pixelFormat,
                                                                       KORVEL_IMAGE_HANDLE* outputImageHandle);
/* ------------------------------------------------------------------------------------------------ video writer -- */

/*
 * Recording a stream of images to a file, while the stream goes on.
 *
 * KORVEL_VideoWriter_Video_Append copies an image into a queue and returns; a worker thread of the video compresses the
 * queued images and writes them. Nobody waits for the encoder or the disk: an image that finds the queue full is
 * dropped, counted, and told to the caller (QueueFull). Images that the worker can't compress or write, or that come
 * when the disk has less than 5025 KiB left, are dropped and counted too.
 *
 * A file holds up to 4 GiB of compressed images; beyond that images are dropped, and the file stays good. It can be
 * played once it is closed. A video that is still open when the process ends is closed then, with all that is queued.
 * A child made by fork while a video is open has to leave by _exit: with exit it would end the file a second time.
 * Up to 48 videos can be open at a time. Any thread may call any function on one video.
 */

/* Containers and encoders. AVI with MJPEG can be written. */
enum { KORVEL_VIDEO_CONTAINER_AVI = 0 };
enum { KORVEL_VIDEO_ENCODER_AVI = 0, KORVEL_VIDEO_ENCODER_MJPEG = 1 };

/* Options of encoders: Quality is an int32_t from 1 to 100, at first 75. */
enum { KORVEL_VIDEO_ENCODER_OPTION_Quality = 0 };

/* Options of containers: FramesPerSecond is a double above 0, at first 25.0; players take its whole part. */
enum { KORVEL_VIDEO_CONTAINER_OPTION_FramesPerSecond = 0 };

/*
 * Makes a file and a video on it. fileName is UTF-8 and ends in a zero. A file that exists is never overwritten.
 *
 * *videoHandle is read: initialise it with null. It may hold a handle that was closed, but not one of an open video.
 *
 * InvalidArgument  videoHandle is null, *videoHandle is an open video, or the encoder can't be written
 * AccessFailed     the file exists
 * Error            no container or encoder has this number, fileName is null or not UTF-8, the file can't be made, or
 *                  48 videos are open
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_Open(KORVEL_VIDEO_HANDLE* videoHandle, const char* fileName,
                                                            uint16_t container, uint16_t encoder);

/*
 * 1 for an open video, 0 for any other handle.
 *
 * InvalidArgument  isOpen is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_IsOpen(KORVEL_VIDEO_HANDLE videoHandle, uint8_t* isOpen);

/*
 * Waits until all queued images are written, ends the file, and ends the handle.
 *
 * InvalidHandle  videoHandle is not known
 * Error          the end of the file could not be written; the handle stays, to ask how far it came, and a second call
 *                ends it
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_Close(KORVEL_VIDEO_HANDLE videoHandle);

/*
 * Appends an image of Mono8, RGB8, BGR8, RGBa8 or BGRa8, whose pixels are copied. All images of a video have the size
 * and format of the first, a width of 16 or more that is a multiple of 8, and a height of 16 or more.
 *
 * InvalidHandle            videoHandle or imageHandle is not known
 * ImageFormatNotSupported  the image has another format
 * AccessFailed             size or format are not those of the first image
 * InvalidArgument          the image has no data, or the first image's size can't be recorded
 * QueueFull                the image was dropped; the recording goes on
 * Error                    the file has reached its limit, or the recording could not be started
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_Append(KORVEL_VIDEO_HANDLE videoHandle,
                                                              KORVEL_IMAGE_HANDLE imageHandle);

/*
 * Options, also while recording; a new quality counts from the next image that is compressed. value points to the
 * option's value and valueSize is its size in bytes: 4 for an int32_t, 8 for a double. sizeWritten may be null.
 *
 * InvalidHandle    videoHandle is not known
 * InvalidArgument  a pointer is null, valueSize is not the option's, or the value is out of range
 * Error            no option has this number
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Encoder_SetOption(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option,
                                                                   const void* value, size_t valueSize);
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Container_SetOption(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option,
                                                                     const void* value, size_t valueSize);
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Encoder_GetOption(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option,
                                                                   void* value, size_t valueSize, size_t* sizeWritten);
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Container_GetOption(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option,
                                                                     void* value, size_t valueSize,
                                                                     size_t* sizeWritten);

/*
 * The range of an encoder's option: three values of the option's type. Options of containers have no range, and
 * KORVEL_VideoWriter_Container_OptionRange always fails with NotSupported, which leaves no text.
 *
 * InvalidHandle    videoHandle is not known
 * InvalidArgument  a pointer is null
 * Error            no option has this number
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Encoder_OptionRange(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option,
                                                                     void* min, void* max, void* inc);
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Container_OptionRange(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option,
                                                                       void* min, void* max, void* inc);

/*
 * What can be combined. Each writes the number of elements into *size, and the elements into the array unless that is
 * null; the value that *size had is not looked at. So ask with a null array first, and give room for that many: one
 * encoder, one container, five pixel formats.
 *
 * InvalidArgument  size is null
 * Error            no encoder has this number
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_GetSupportedEncodersForAContainer(uint16_t container,
                                                                                   uint16_t* encoders, size_t* size);
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_GetSupportedContainersForAnEncoder(uint16_t encoder,
                                                                                    uint16_t* containers, size_t* size);
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Encoder_GetSupportedPixelFormats(uint16_t encoder,
                                                                                  uint32_t* pixelFormats, size_t* size);

/*
 * How far a recording came: images written, images dropped, and the bytes of all written images, compressed.
 * KORVEL_VideoWriter_Video_ResetFrameCounters sets the first two to 0. After the limit of the file, images are counted
 * as dropped only while the queue is empty.
 *
 * InvalidHandle    videoHandle is not known
 * InvalidArgument  the result pointer is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_GetEncodedFrames(KORVEL_VIDEO_HANDLE videoHandle,
                                                                        uint64_t* numFrames);
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_GetDroppedFrames(KORVEL_VIDEO_HANDLE videoHandle,
                                                                        uint64_t* numFrames);
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_GetFileSize(KORVEL_VIDEO_HANDLE videoHandle,
                                                                   uint64_t* fileSize_bytes);
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_ResetFrameCounters(KORVEL_VIDEO_HANDLE videoHandle);

/*
 * The queue: how many images it holds, 16 at first and, once the first image has told the size, as many as fit 200 MiB
 * at four bytes a pixel (none, if an image is larger than that). Between opening and the first image it can be set,
 * from 1 to 1000, which then stands. The image that is being compressed counts as queued.
 *
 * InvalidHandle    videoHandle is not known
 * InvalidArgument  a result pointer is null, or size is out of range
 * Error            the recording has begun
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Queue_SetSize(KORVEL_VIDEO_HANDLE videoHandle, uint32_t size);
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Queue_GetSize(KORVEL_VIDEO_HANDLE videoHandle, uint32_t* size);
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Queue_GetRange(KORVEL_VIDEO_HANDLE videoHandle, uint32_t* minSize,
                                                                uint32_t* maxSize);
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Queue_GetQueued(KORVEL_VIDEO_HANDLE videoHandle, uint32_t* queued);

/*
 * Waits until the worker has run the queue dry, at most timeoutMs milliseconds; at once for an empty queue. Both
 * functions wait for the same moment: WaitUntilFrameDone doesn't answer for each image.
 *
 * InvalidHandle  videoHandle is not known
 * Timeout        time ran out
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_WaitUntilFrameDone(KORVEL_VIDEO_HANDLE videoHandle,
                                                                          uint32_t timeoutMs);
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(KORVEL_VIDEO_HANDLE videoHandle,
                                                                           uint32_t timeoutMs);

#ifdef __cplusplus
}
#endif

#endif /* KORVEL_KORVEL_H */
