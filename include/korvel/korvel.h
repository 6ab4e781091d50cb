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
 * - Checks run in this order: handles (KORVEL_RETURN_CODE_InvalidHandle), pointers
 *   (KORVEL_RETURN_CODE_InvalidArgument), values. A null pointer is refused everywhere but where a function gives
 *   it a meaning. That any other pointer can be read or written is trusted.
 * - Objects are held by handles. A handle is valid from the call that wrote it until the matching ..._Destruct. An
 *   unknown, destroyed or foreign handle is refused. A call in progress keeps its objects alive even if another
 *   thread destroys the handle meanwhile.
 * - Two threads may use two handles freely. One converter serves one thread at a time. The pixels of one image may
 *   be read by several threads, and be written by one that has them to itself.
 * - Pixel formats are passed as 32-bit ids: the codes of the GenICam Pixel Format Naming Convention (PFNC), and
 *   ids of the library's own that begin 0x4000.
 * - Sizes of images are in pixels, sizes of memory in bytes.
 * - No single image takes more than half of the physical memory; the library refuses larger ones of its own.
 */
#ifndef KORVEL_KORVEL_H
#define KORVEL_KORVEL_H

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
 * to 8-bit colour write there directly; all others make an image first and copy it, and for them
 * outputImageBufferSize must be the exact byte count of the result. A swap of red and blue changes the input image as
 * told there, also in a call that then fails on outputImageBufferSize.
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
 * runs from 0 (smallest file) to 100 (best picture), and anything above counts as 100. No side of a PNG may exceed
 * 1,000,000 pixels, and none of a JPEG 65,500.
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
 * format; PNG of grey or true colour, where 16-bit samples without an sBIT chunk of 10 or 12 bits for each channel are
 * reduced to 8 and transparent colours are ignored; JPEG of grey or colour, not CMYK.
 *
 * KORVEL_ImageReaderRead_ReadAsPixelFormat takes the pixels for another format; none is converted. From BMP, PNG and
 * JPEG files a mono image can be asked for as a Bayer format of its depth, and the image then has that format. From a
 * RAW file a Bayer image can be asked for as the mono format of its depth and packing, and the image still has the
 * file's format. The format that the file holds can always be asked for.
 *
 * A file is never trusted: whatever it holds, the answer is an image or a failure. Sizes are checked against the file as
 * far as its type allows, and against the limit of all images, before memory is taken. Anything but a regular file is
 * answered like a file that can't be opened.
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

#ifdef __cplusplus
}
#endif

#endif /* KORVEL_KORVEL_H */
