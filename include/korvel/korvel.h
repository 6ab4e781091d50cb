/**
 * @file
 * libkorvel: image processing for applications of industrial cameras.
 *
 * This header is the whole of the library's interface, for C (C99 and later) and C++.
 */

/**
 * @defgroup korvel_rules Rules that all functions share
 *
 * @par Results and failures
 *
 * - Every function returns a KORVEL_RETURN_CODE. The descriptions name codes by the end of their names: InvalidHandle
 *   is KORVEL_RETURN_CODE_InvalidHandle. For each function they list all codes that it can return, with their causes.
 *   Two are left out: Success, and Error for want of the little memory that a call itself needs, which can happen to
 *   every function.
 * - On failure a function also leaves its code and a text in a record of the calling thread, which
 *   KORVEL_Library_GetLastError() reads. A success never changes that record.
 * - A failed call changes nothing but that record, unless the function says otherwise. Results are written through
 *   pointers and only on success.
 * - Checks run in this order: handles (InvalidHandle), packed formats where a function refuses them
 *   (ImageFormatNotSupported), pointers (InvalidArgument), values.
 *
 * @par Arguments
 *
 * - A null pointer is refused everywhere but where a function gives it a meaning. That any other pointer can be read or
 *   written is trusted.
 * - Sizes of images are in pixels, sizes of memory in bytes, sizes of arrays in elements.
 * - Functions that fill an array come with a pointer to its size, and are called twice. With a null array a call writes
 *   the size that the array needs, and nothing else. With an array the size tells how much room there is; a success
 *   sets it to what was written, and a failure with BufferToSmall leaves it as it was.
 * - Pixel formats are passed as 32-bit ids: the codes of the GenICam Pixel Format Naming Convention (PFNC), and ids of
 *   the library's own that begin 0x4000. Packed formats are those with a "p" or "g" behind the depth ("10p", "10p32",
 *   "10g40"); all others are unpacked.
 * - No single image takes more than half of the physical memory; the library refuses larger ones of its own.
 *
 * @par Objects
 *
 * - Objects are held by handles. A handle is valid from the call that wrote it until the matching ..._Destruct
 *   (KORVEL_VideoWriter_Video_Close() for videos), which whoever got the handle has to call. An unknown, destroyed or
 *   foreign handle is refused. A call in progress keeps its objects alive even if another thread destroys the handle
 *   meanwhile.
 * - An image that another object made is the caller's: it stays valid when that object's handle ends.
 * - Converters, gains, gamma and colour correctors, binnings and transformers keep the memory of images that they made
 *   and that were destroyed, so that a stream of like images takes no new memory for pixels. It goes when the object's
 *   handle and those of all its images have ended.
 *
 * @par Threads
 *
 * - Any thread may call any function, and two threads may use two handles freely.
 * - One object that makes or changes images (a converter, a gain) serves one thread at a time. Histograms, pixel lines
 *   and videos serve any number of threads.
 * - The pixels of one image may be read by several threads, and be written by one that has them to itself.
 */

#ifndef KORVEL_KORVEL_H
#define KORVEL_KORVEL_H

#ifndef __cplusplus
#include <stdbool.h>
#endif
#include <stddef.h>
#include <stdint.h>

/** Marks what the library exports. */
#if defined(__GNUC__)
#define KORVEL_API __attribute__((visibility("default")))
#else
#define KORVEL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------- return codes -- */

/**
 * @defgroup korvel_codes Return codes
 * @{
 */

/** What every function returns; one of the values below. */
typedef uint32_t KORVEL_RETURN_CODE;

/** Values of KORVEL_RETURN_CODE. */
enum {
  KORVEL_RETURN_CODE_Success = 0,                        /**< the call did what it was asked */
  KORVEL_RETURN_CODE_Error = 1,                          /**< any failure without a more exact code */
  KORVEL_RETURN_CODE_InvalidHandle = 2,                  /**< a handle that is not, or no longer, known */
  KORVEL_RETURN_CODE_Io = 3,                             /**< a file could not be opened, read or written */
  KORVEL_RETURN_CODE_BufferToSmall = 4,                  /**< the caller's memory is smaller than the result */
  KORVEL_RETURN_CODE_InvalidArgument = 5,                /**< a null pointer, or a value that is refused */
  KORVEL_RETURN_CODE_OutOfRange = 6,                     /**< a position outside the object, a width or height of 0 */
  KORVEL_RETURN_CODE_ImageFormatNotSupported = 7,        /**< the operation does not exist for this format */
  KORVEL_RETURN_CODE_ImageFormatInterpretationError = 8, /**< pixels of a file can't be read as this format */
  KORVEL_RETURN_CODE_NotSupported = 9,                   /**< the operation does not exist */
  KORVEL_RETURN_CODE_AccessFailed = 10,                  /**< a video's file exists, or its images differ */
  KORVEL_RETURN_CODE_QueueFull = 11,                     /**< a video had no room for an image, which was dropped */
  KORVEL_RETURN_CODE_Timeout = 12                        /**< what was waited for didn't come in time */
};

/** @} */

/* ------------------------------------------------------------------------------------------------ pixel formats -- */

/**
 * @defgroup korvel_formats Pixel formats
 * The ids of pixel formats are constants, KORVEL_PIXEL_FORMAT_Mono8, KORVEL_PIXEL_FORMAT_BayerRG12p and so on, one for
 * each row of KORVEL_PIXEL_FORMAT_TABLE. Functions take them as a uint32_t.
 *
 * Lines follow each other without padding in every format; packed images are one stream from the first pixel to the
 * last. Values of more than 8 bits are little-endian.
 * @{
 */

/**
 * The list of all public pixel formats, in order of their ids. ROW is expanded once for each as
 *
 *     ROW(X, name, id, pixelClass, layout, significantBitsPerChannel)
 *
 * with X passed through. pixelClass is the family of the format without its depth. layout tells how channels lie in
 * memory:
 *
 * - Unpacked: each channel in one byte (8 bits) or one little-endian 16-bit word, the value in the low bits
 * - NoAlignment: one channel, a little-endian bit stream without gaps; the PFNC formats with the suffix "p"
 * - Mipi: one channel, high bits of a group first, then one byte with the low bits of all its pixels, as MIPI CSI-2 has
 *   it in RAW10 (4 pixels in 5 bytes, "g40") and RAW12 (2 pixels in 3 bytes, "g24")
 * - Word32: three channels of 10 bits in one little-endian 32-bit word, the first in the low bits
 *
 * Applications that need names and ids alone use KORVEL_PIXEL_FORMATS.
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

/**
 * Expands X(name, id) once for each public pixel format, in order of the ids:
 *
 *     #define PRINT_FORMAT(name, id) printf("%s is 0x%08X\n", #name, id);
 *     KORVEL_PIXEL_FORMATS(PRINT_FORMAT)
 */
#define KORVEL_PIXEL_FORMATS(X) KORVEL_PIXEL_FORMAT_TABLE(KORVEL_DETAIL_NAME_AND_ID, X)
#define KORVEL_DETAIL_NAME_AND_ID(X, name, id, pixelClass, layout, significantBits) X(name, id)

#define KORVEL_DETAIL_FORMAT_CONSTANT(name, id) KORVEL_PIXEL_FORMAT_##name = id,
/** The ids as constants. */
enum {
  KORVEL_PIXEL_FORMATS(KORVEL_DETAIL_FORMAT_CONSTANT) KORVEL_PIXEL_FORMAT_Invalid =
      0 /**< no format; an image of it has one byte per pixel and no meaning */
};
#undef KORVEL_DETAIL_FORMAT_CONSTANT

/** The order of bytes in channels of more than 8 bits. */
typedef uint32_t KORVEL_ENDIANNESS;

/** Values of KORVEL_ENDIANNESS. */
enum { KORVEL_ENDIANNESS_Little = 0 /**< the low byte first, in every format */ };

/** @} */

/* ------------------------------------------------------------------------------------------------------ handles -- */

/**
 * @defgroup korvel_handles Handles
 * Each kind of object has a handle type of its own. Null is never a valid handle.
 * @{
 */

/** An image: pixels of one format, with width and height. */
typedef struct KORVEL_IMAGE_HANDLE_S* KORVEL_IMAGE_HANDLE;
/** Converts images to other pixel formats. */
typedef struct KORVEL_IMAGE_CONVERTER_HANDLE_S* KORVEL_IMAGE_CONVERTER_HANDLE;
/** Multiplies the values of mono and Bayer images. */
typedef struct KORVEL_GAIN_HANDLE_S* KORVEL_GAIN_HANDLE;
/** Corrects the gamma of images. */
typedef struct KORVEL_GAMMA_CORRECTOR_HANDLE_S* KORVEL_GAMMA_CORRECTOR_HANDLE;
/** Corrects colours by a matrix. */
typedef struct KORVEL_COLOR_CORRECTOR_HANDLE_S* KORVEL_COLOR_CORRECTOR_HANDLE;
/** Makes one pixel of a block of pixels. */
typedef struct KORVEL_BINNING_HANDLE_S* KORVEL_BINNING_HANDLE;
/** Finds and corrects hot pixels. */
typedef struct KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE_S* KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE;
/** Mirrors and rotates images. */
typedef struct KORVEL_IMAGE_TRANSFORMER_HANDLE_S* KORVEL_IMAGE_TRANSFORMER_HANDLE;
/** The values of an image, counted. */
typedef struct KORVEL_HISTOGRAM_HANDLE_S* KORVEL_HISTOGRAM_HANDLE;
/** The values of one row or column of an image. */
typedef struct KORVEL_PIXEL_LINE_HANDLE_S* KORVEL_PIXEL_LINE_HANDLE;
/** A video that is being recorded. */
typedef struct KORVEL_VIDEO_HANDLE_S* KORVEL_VIDEO_HANDLE;

/** @} */

/* ------------------------------------------------------------------------------------------------------ library -- */

/**
 * @defgroup korvel_library Library
 * The version of the library, and the failures of its calls.
 * @{
 */

/**
 * The first number of the version of the library that runs: 1 in 1.5.0.
 *
 * @param libraryVersionMajor  receives the number
 *
 * @retval InvalidArgument  libraryVersionMajor is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Library_GetVersionMajor(uint32_t* libraryVersionMajor);

/**
 * The second number of the version of the library that runs: 5 in 1.5.0.
 *
 * @param libraryVersionMinor  receives the number
 *
 * @retval InvalidArgument  libraryVersionMinor is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Library_GetVersionMinor(uint32_t* libraryVersionMinor);

/**
 * The third number of the version of the library that runs: 0 in 1.5.0.
 *
 * @param libraryVersionSubminor  receives the number
 *
 * @retval InvalidArgument  libraryVersionSubminor is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Library_GetVersionSubminor(uint32_t* libraryVersionSubminor);

/**
 * Reads code and text of the last failure in the calling thread; 0 and an empty text before the first. Reading doesn't
 * clear the record. Call it twice: with a null text it writes the bytes that the text needs, and nothing else.
 *
 * @param lastErrorCode             receives the code, where there is room for the text
 * @param lastErrorDescription      receives the text, with a terminating zero; null asks for its size
 * @param lastErrorDescriptionSize  bytes that lastErrorDescription has room for; receives the bytes of the text, its
 *                                  terminating zero among them
 *
 * @retval InvalidArgument  lastErrorCode or lastErrorDescriptionSize is null
 * @retval BufferToSmall    the text does not fit; this failure takes the place of the one that was asked for, so ask
 *                          for the size first
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Library_GetLastError(uint32_t* lastErrorCode, char* lastErrorDescription,
                                                          size_t* lastErrorDescriptionSize);

/** @} */

/* ----------------------------------------------------------------------------------------- pixel format queries -- */

/**
 * @defgroup korvel_format_queries Pixel format queries
 * Properties of a pixel format. Bits are significant where they carry a value, and storage bits where they take up
 * memory. KORVEL_PIXEL_FORMAT_Invalid answers like an 8-bit format of one channel. A few ids that the library uses
 * inside, all above 0xFFF00000, have answers too.
 * @{
 */

/**
 * The channels of a pixel: 1 for Mono and Bayer, 3 or 4 for colour.
 *
 * @param pixelFormat  id of the format
 * @param numChannels  receives the number of channels
 *
 * @retval InvalidArgument  numChannels is null
 * @retval Error            no format has this id
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumChannels(uint32_t pixelFormat, size_t* numChannels);

/**
 * The bits that carry the value of a channel: 8, 10 or 12.
 *
 * @param pixelFormat         id of the format
 * @param numSignificantBits  receives the number of bits
 *
 * @retval InvalidArgument  numSignificantBits is null
 * @retval Error            no format has this id
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumSignificantBitsPerChannel(uint32_t pixelFormat,
                                                                                 size_t* numSignificantBits);

/**
 * The bits that a channel takes in memory: 8 or 16 in unpacked formats, 10 or 12 in packed ones.
 *
 * @param pixelFormat     id of the format
 * @param numStorageBits  receives the number of bits
 *
 * @retval InvalidArgument  numStorageBits is null
 * @retval Error            no format has this id
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumStorageBitsPerChannel(uint32_t pixelFormat,
                                                                             size_t* numStorageBits);

/**
 * The greatest value of a channel: 255, 1023 or 4095.
 *
 * @param pixelFormat          id of the format
 * @param channelMaximumValue  receives the value
 *
 * @retval InvalidArgument  channelMaximumValue is null
 * @retval Error            no format has this id
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_GetMaximumValuePerChannel(uint32_t pixelFormat,
                                                                           uint32_t* channelMaximumValue);

/**
 * The bits that carry the values of a pixel, over all its channels.
 *
 * @param pixelFormat         id of the format
 * @param numSignificantBits  receives the number of bits
 *
 * @retval InvalidArgument  numSignificantBits is null
 * @retval Error            no format has this id
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumSignificantBitsPerPixel(uint32_t pixelFormat,
                                                                               size_t* numSignificantBits);

/**
 * The bits that a pixel takes in memory, over all its channels. The 32 bits of RGB10p32 and BGR10p32 include two unused
 * ones.
 *
 * @param pixelFormat     id of the format
 * @param numStorageBits  receives the number of bits
 *
 * @retval InvalidArgument  numStorageBits is null
 * @retval Error            no format has this id
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_GetNumStorageBitsPerPixel(uint32_t pixelFormat,
                                                                           size_t* numStorageBits);

/**
 * The order of bytes in channels of more than 8 bits.
 *
 * @param pixelFormat  id of the format
 * @param endianness   receives KORVEL_ENDIANNESS_Little, which every format has
 *
 * @retval InvalidArgument  endianness is null
 * @retval Error            no format has this id
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_GetEndianness(uint32_t pixelFormat, KORVEL_ENDIANNESS* endianness);

/**
 * Bytes that a run of pixels takes, and so also those of an image of width * height pixels. Packed formats round up to
 * a whole byte once, over the whole run. The arithmetic wraps at 64 bits.
 *
 * @param pixelFormat  id of the format
 * @param numPixels    number of pixels
 * @param size         receives the number of bytes
 *
 * @retval InvalidArgument  size is null
 * @retval Error            no format has this id
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelFormat_CalculateStorageSizeOfPixels(uint32_t pixelFormat, size_t numPixels,
                                                                              size_t* size);

/** @} */

/* ------------------------------------------------------------------------------------------------------- images -- */

/**
 * @defgroup korvel_image Images
 * An image is in memory of the library's own, or in the caller's. Images also come from the functions that convert,
 * process or read them.
 * @{
 */

/**
 * Makes an image in memory of the library's own, all zero. The memory goes with the image. KORVEL_PIXEL_FORMAT_Invalid
 * may have a width or height of 0; such an image has no data.
 *
 * @param pixelFormat  a public format, or KORVEL_PIXEL_FORMAT_Invalid
 * @param width        pixels of a row
 * @param height       number of rows
 * @param imageHandle  receives the image
 *
 * @retval InvalidArgument  imageHandle is null
 * @retval OutOfRange       width or height is 0
 * @retval Error            no public format has this id, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_Construct(uint32_t pixelFormat, size_t width, size_t height,
                                                     KORVEL_IMAGE_HANDLE* imageHandle);

/**
 * Makes an image over the caller's memory; nothing is copied. The memory stays the caller's and must stay valid until
 * the handle, and all that was made over the same memory, is gone. What the library writes to this image lands there.
 * KORVEL_PIXEL_FORMAT_Invalid may have a width or height of 0; KORVEL_Image_GetData() gives buffer all the same.
 *
 * @param pixelFormat  a public format, or KORVEL_PIXEL_FORMAT_Invalid
 * @param buffer       first byte of the pixels; needs no alignment
 * @param bufferSize   bytes of buffer, at least those of width * height pixels; see
 *                     KORVEL_PixelFormat_CalculateStorageSizeOfPixels()
 * @param width        pixels of a row
 * @param height       number of rows
 * @param imageHandle  receives the image
 *
 * @retval InvalidArgument  buffer or imageHandle is null, or bufferSize is too small
 * @retval OutOfRange       width or height is 0
 * @retval Error            no public format has this id
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_ConstructFromBuffer(uint32_t pixelFormat, uint8_t* buffer, size_t bufferSize,
                                                               size_t width, size_t height,
                                                               KORVEL_IMAGE_HANDLE* imageHandle);

/**
 * The width of an image.
 *
 * @param imageHandle  the image
 * @param width        receives the pixels of a row
 *
 * @retval InvalidHandle    imageHandle is not known
 * @retval InvalidArgument  width is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_GetWidth(KORVEL_IMAGE_HANDLE imageHandle, size_t* width);

/**
 * The height of an image.
 *
 * @param imageHandle  the image
 * @param height       receives the number of rows
 *
 * @retval InvalidHandle    imageHandle is not known
 * @retval InvalidArgument  height is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_GetHeight(KORVEL_IMAGE_HANDLE imageHandle, size_t* height);

/**
 * The bytes that the pixels of an image take.
 *
 * @param imageHandle  the image
 * @param byteCount    receives the number of bytes
 *
 * @retval InvalidHandle    imageHandle is not known
 * @retval InvalidArgument  byteCount is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_GetByteCount(KORVEL_IMAGE_HANDLE imageHandle, size_t* byteCount);

/**
 * The pixel format of an image.
 *
 * @param imageHandle  the image
 * @param pixelFormat  receives the id of the format
 *
 * @retval InvalidHandle    imageHandle is not known
 * @retval InvalidArgument  pixelFormat is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_GetPixelFormat(KORVEL_IMAGE_HANDLE imageHandle, uint32_t* pixelFormat);

/**
 * The memory of an image, in the layout of its format. It is valid as long as the handle.
 *
 * @param imageHandle  the image
 * @param data         receives the address of the first byte; null for an image without data
 *
 * @retval InvalidHandle    imageHandle is not known
 * @retval InvalidArgument  data is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_GetData(KORVEL_IMAGE_HANDLE imageHandle, uint8_t** data);

/**
 * The address of one pixel. It is exact for every format whose pixels begin on whole bytes. For the packed formats of
 * one channel it counts two bytes a pixel, which is not where their pixels lie: walk those from KORVEL_Image_GetData().
 * Offsets wrap at 4 GiB.
 *
 * @param imageHandle   the image
 * @param xPos          column, from 0 at the left
 * @param yPos          row, from 0 at the top
 * @param pixelPointer  receives the address; valid as that of KORVEL_Image_GetData()
 *
 * @retval InvalidHandle    imageHandle is not known
 * @retval InvalidArgument  pixelPointer is null
 * @retval OutOfRange       the image has no pixels, or the position lies outside it
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_GetPixelPointer(KORVEL_IMAGE_HANDLE imageHandle, size_t xPos, size_t yPos,
                                                           uint8_t** pixelPointer);

/**
 * Copies an image, of any format, into memory of the library's own.
 *
 * @param imageHandle        the image
 * @param outputImageHandle  receives the new image
 *
 * @retval InvalidHandle    imageHandle is not known
 * @retval InvalidArgument  outputImageHandle is null
 * @retval Error            the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_Clone(KORVEL_IMAGE_HANDLE imageHandle,
                                                 KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Converts one image to another format; for streams of images use a converter, which keeps its memory. See
 * KORVEL_ImageConverter_Convert() for the formats and for when the input image is changed.
 *
 * @param imageHandle        the image
 * @param outputPixelFormat  format of the result
 * @param conversionMode     how Bayer images become colour images, see KORVEL_CONVERSION_MODE; any value
 * @param outputImageHandle  receives the new image
 *
 * @retval InvalidHandle    imageHandle is not known
 * @retval InvalidArgument  outputImageHandle is null
 * @retval Error            the conversion does not exist, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_ConvertTo(KORVEL_IMAGE_HANDLE imageHandle, uint32_t outputPixelFormat,
                                                     uint32_t conversionMode, KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Like KORVEL_Image_ConvertTo(), with the result in the caller's memory. See KORVEL_ImageConverter_ConvertToBuffer()
 * for the size of that memory, and for what mode Classic accepts.
 *
 * @param imageHandle            the image
 * @param outputPixelFormat      format of the result
 * @param outputImageBuffer      memory for the result; stays the caller's, and must outlive the new image
 * @param outputImageBufferSize  bytes of outputImageBuffer
 * @param conversionMode         how Bayer images become colour images, see KORVEL_CONVERSION_MODE; any value
 * @param outputImageHandle      receives an image over outputImageBuffer
 *
 * @retval InvalidHandle    imageHandle is not known
 * @retval InvalidArgument  outputImageBuffer or outputImageHandle is null
 * @retval BufferToSmall    outputImageBufferSize is below the byte count of the result
 * @retval Error            the conversion does not exist, outputImageBufferSize is above the byte count of the result
 *                          where it must be exact, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_ConvertToBuffer(KORVEL_IMAGE_HANDLE imageHandle, uint32_t outputPixelFormat,
                                                           uint8_t* outputImageBuffer, size_t outputImageBufferSize,
                                                           uint32_t conversionMode,
                                                           KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Ends a handle. The image's own memory goes with it; the caller's memory is left alone.
 *
 * @param imageHandle  the image
 *
 * @retval InvalidHandle  imageHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Image_Destruct(KORVEL_IMAGE_HANDLE imageHandle);

/** @} */

/* ---------------------------------------------------------------------------------------------- image converter -- */

/**
 * @defgroup korvel_converter Image converter
 * Conversion of images to other pixel formats, for streams of images. Width and height stay.
 * @{
 */

/**
 * How Bayer images become colour images. Any other value is accepted and does what HighQuality does.
 *
 * - Fast: bilinear interpolation over 3 by 3 pixels
 * - HighQuality: linear filters over 5 by 5 pixels that correct each colour with the gradients of the others
 * - Classic: bilinear, sampled half a pixel to the right and below; exists for BayerRG8 and BayerGR8 to 8-bit colour,
 *   from 16 by 16 pixels on, at even widths and heights; elsewhere HighQuality takes its place
 *
 * The outermost pixels are copies of their neighbours, except in Classic and in these conversions of Fast, which exist
 * on processors with AVX from 16 by 16 pixels on, at even widths and heights, and compute each border pixel from the
 * neighbours that it has: BayerRG8 and BayerGR8 to 8-bit colour, and BayerRG10 to RGB10p32. There, and for the same
 * inputs to Mono8, where Fast gives the luminance of the colours, results depend on the processor's features; every
 * other conversion gives the same pixels everywhere.
 */
typedef uint32_t KORVEL_CONVERSION_MODE;

/** Values of KORVEL_CONVERSION_MODE. */
enum {
  KORVEL_CONVERSION_MODE_Fast = 1,        /**< bilinear; what a converter starts with */
  KORVEL_CONVERSION_MODE_HighQuality = 2, /**< sharper at edges */
  KORVEL_CONVERSION_MODE_Classic = 3      /**< bilinear, shifted by half a pixel */
};

/**
 * Makes a converter, in mode Fast.
 *
 * @param imageConverterHandle  receives the converter
 *
 * @retval InvalidArgument  imageConverterHandle is null
 * @retval Error            the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageConverter_Construct(KORVEL_IMAGE_CONVERTER_HANDLE* imageConverterHandle);

/**
 * Takes the memory for a stream of conversions ahead of time: intermediate images, and results that are to be alive at
 * once.
 *
 * Whether the whole conversion exists isn't asked: KORVEL_ImageConverter_GetSupportedOutputPixelFormats() tells that.
 * If memory runs out on the way, what was taken before stays with the converter.
 *
 * @param imageConverterHandle  the converter
 * @param inputPixelFormat      format of the images that will come
 * @param outputPixelFormat     format that they will be converted to
 * @param imageWidth            pixels of a row
 * @param imageHeight           number of rows
 * @param imageCount            number of results to take memory for
 *
 * @retval InvalidHandle  imageConverterHandle is not known
 * @retval OutOfRange     imageWidth or imageHeight is 0
 * @retval Error          no format has one of the ids, Bayer or mono images don't become such outputs, the images
 *                        exceed half of the physical memory, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageConverter_PreAllocateConversion(
    KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle, uint32_t inputPixelFormat, uint32_t outputPixelFormat,
    size_t imageWidth, size_t imageHeight, size_t imageCount);

/**
 * How the converter makes colour images of Bayer images.
 *
 * @param imageConverterHandle  the converter
 * @param conversionMode        receives the mode, see KORVEL_CONVERSION_MODE
 *
 * @retval InvalidHandle    imageConverterHandle is not known
 * @retval InvalidArgument  conversionMode is null
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_ImageConverter_GetConversionMode(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle, uint32_t* conversionMode);

/**
 * Sets how the converter makes colour images of Bayer images. A change takes effect from the next conversion stage.
 *
 * @param imageConverterHandle  the converter
 * @param conversionMode        the mode, see KORVEL_CONVERSION_MODE; any value
 *
 * @retval InvalidHandle  imageConverterHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_ImageConverter_SetConversionMode(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle, uint32_t conversionMode);

/**
 * Lists the formats that a format converts to, itself among them. Call it twice: a null array asks for the size.
 *
 * @param imageConverterHandle    the converter
 * @param inputPixelFormat        format to be converted
 * @param outputPixelFormats      receives the ids; null asks for their number
 * @param outputPixelFormatsSize  elements that the array has room for; receives the number of ids
 *
 * @retval InvalidHandle    imageConverterHandle is not known
 * @retval InvalidArgument  outputPixelFormatsSize is null
 * @retval BufferToSmall    the array is too small
 * @retval Error            no format has this id
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageConverter_GetSupportedOutputPixelFormats(
    KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle, uint32_t inputPixelFormat, uint32_t* outputPixelFormats,
    size_t* outputPixelFormatsSize);

/**
 * Converts an image to another format (or copies it, to its own) into memory of the converter, which takes it back when
 * the new handle ends.
 *
 * Red and blue are swapped between RGB and BGR formats in the input's own memory before the result is copied from it:
 * where that is the first stage (RGB8 to BGR8, say), the input image is changed, also by a call that fails later on.
 *
 * @param imageConverterHandle  the converter
 * @param inputImageHandle      the image
 * @param outputPixelFormat     format of the result
 * @param outputImageHandle     receives the new image
 *
 * @retval InvalidHandle    imageConverterHandle or inputImageHandle is not known
 * @retval InvalidArgument  outputImageHandle is null
 * @retval Error            the conversion does not exist, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageConverter_Convert(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle,
                                                            KORVEL_IMAGE_HANDLE inputImageHandle,
                                                            uint32_t outputPixelFormat,
                                                            KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Like KORVEL_ImageConverter_Convert(), with the result in the caller's memory, under the rules of
 * KORVEL_Image_ConstructFromBuffer(). The common conversions from Bayer to 8-bit colour take a larger buffer too; for
 * all others outputImageBufferSize must be the exact byte count of the result. Most write there directly; the rest make
 * an image first and copy it. A swap of red and blue changes the input image as told there, also in a call that then
 * fails on outputImageBufferSize.
 *
 * In mode Classic, only BayerRG8 and BayerGR8 to RGB8, BGR8, RGBa8 or BGRa8 are accepted.
 *
 * @param imageConverterHandle   the converter
 * @param inputImageHandle       the image
 * @param outputPixelFormat      format of the result
 * @param outputImageBuffer      memory for the result; stays the caller's, and must outlive the new image
 * @param outputImageBufferSize  bytes of outputImageBuffer
 * @param outputImageHandle      receives an image over outputImageBuffer
 *
 * @retval InvalidHandle    imageConverterHandle or inputImageHandle is not known
 * @retval InvalidArgument  outputImageBuffer or outputImageHandle is null
 * @retval BufferToSmall    outputImageBufferSize is below the byte count of the result
 * @retval Error            the conversion does not exist, outputImageBufferSize is above the byte count of the result
 *                          where it must be exact, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageConverter_ConvertToBuffer(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle,
                                                                    KORVEL_IMAGE_HANDLE inputImageHandle,
                                                                    uint32_t outputPixelFormat,
                                                                    uint8_t* outputImageBuffer,
                                                                    size_t outputImageBufferSize,
                                                                    KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Ends a handle. Images that the converter made stay valid.
 *
 * @param imageConverterHandle  the converter
 *
 * @retval InvalidHandle  imageConverterHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageConverter_Destruct(KORVEL_IMAGE_CONVERTER_HANDLE imageConverterHandle);

/** @} */

/* --------------------------------------------------------------------------------------------------------- gain -- */

/**
 * @defgroup korvel_gain Gain
 * Digital gain for mono and unpacked Bayer images. Every value is multiplied by the master gain and, at a Bayer site,
 * by the gain of the site's colour, limited to the maximum of the format's depth; a fraction is dropped. Colour gains
 * don't change mono images. While all four gains lie in 0.999 to 1.001, pixels stay as they are. In formats of 10 and
 * 12 bits, bits above the depth are ignored and come out 0.
 *
 * All gains are 1.0 at first and lie in 1.0 to 8.0. Setting one costs new tables, so set it when it changes and not for
 * each image.
 * @{
 */

/**
 * Makes a gain object, with all gains 1.0.
 *
 * @param gainHandle  receives the gain object
 *
 * @retval InvalidArgument  gainHandle is null
 * @retval Error            the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_Construct(KORVEL_GAIN_HANDLE* gainHandle);

/**
 * Sets the master gain, for the calls that follow.
 *
 * @param gainHandle  the gain object
 * @param value       address of the gain, a factor from 1.0 to 8.0
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null, or the gain is out of range; it then stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_SetMasterGainValue(KORVEL_GAIN_HANDLE gainHandle, const float* value);

/**
 * Sets the gain of red sites, for the calls that follow.
 *
 * @param gainHandle  the gain object
 * @param value       address of the gain, a factor from 1.0 to 8.0
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null, or the gain is out of range; it then stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_SetRedGainValue(KORVEL_GAIN_HANDLE gainHandle, const float* value);

/**
 * Sets the gain of green sites, for the calls that follow.
 *
 * @param gainHandle  the gain object
 * @param value       address of the gain, a factor from 1.0 to 8.0
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null, or the gain is out of range; it then stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_SetGreenGainValue(KORVEL_GAIN_HANDLE gainHandle, const float* value);

/**
 * Sets the gain of blue sites, for the calls that follow.
 *
 * @param gainHandle  the gain object
 * @param value       address of the gain, a factor from 1.0 to 8.0
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null, or the gain is out of range; it then stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_SetBlueGainValue(KORVEL_GAIN_HANDLE gainHandle, const float* value);

/**
 * The master gain.
 *
 * @param gainHandle  the gain object
 * @param value       receives the factor
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetMasterGainValue(KORVEL_GAIN_HANDLE gainHandle, float* value);

/**
 * The gain of red sites.
 *
 * @param gainHandle  the gain object
 * @param value       receives the factor
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetRedGainValue(KORVEL_GAIN_HANDLE gainHandle, float* value);

/**
 * The gain of green sites.
 *
 * @param gainHandle  the gain object
 * @param value       receives the factor
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetGreenGainValue(KORVEL_GAIN_HANDLE gainHandle, float* value);

/**
 * The gain of blue sites.
 *
 * @param gainHandle  the gain object
 * @param value       receives the factor
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetBlueGainValue(KORVEL_GAIN_HANDLE gainHandle, float* value);

/**
 * The least value of the master gain.
 *
 * @param gainHandle  the gain object
 * @param value       receives 1.0
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetMasterGainMin(KORVEL_GAIN_HANDLE gainHandle, float* value);

/**
 * The least value of the gain of red sites.
 *
 * @param gainHandle  the gain object
 * @param value       receives 1.0
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetRedGainMin(KORVEL_GAIN_HANDLE gainHandle, float* value);

/**
 * The least value of the gain of green sites.
 *
 * @param gainHandle  the gain object
 * @param value       receives 1.0
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetGreenGainMin(KORVEL_GAIN_HANDLE gainHandle, float* value);

/**
 * The least value of the gain of blue sites.
 *
 * @param gainHandle  the gain object
 * @param value       receives 1.0
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetBlueGainMin(KORVEL_GAIN_HANDLE gainHandle, float* value);

/**
 * The greatest value of the master gain.
 *
 * @param gainHandle  the gain object
 * @param value       receives 8.0
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetMasterGainMax(KORVEL_GAIN_HANDLE gainHandle, float* value);

/**
 * The greatest value of the gain of red sites.
 *
 * @param gainHandle  the gain object
 * @param value       receives 8.0
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetRedGainMax(KORVEL_GAIN_HANDLE gainHandle, float* value);

/**
 * The greatest value of the gain of green sites.
 *
 * @param gainHandle  the gain object
 * @param value       receives 8.0
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetGreenGainMax(KORVEL_GAIN_HANDLE gainHandle, float* value);

/**
 * The greatest value of the gain of blue sites.
 *
 * @param gainHandle  the gain object
 * @param value       receives 8.0
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetBlueGainMax(KORVEL_GAIN_HANDLE gainHandle, float* value);

/**
 * Whether images of a format can be processed: Mono8, Mono10, Mono12 and the twelve unpacked Bayer formats. An id that
 * no format has is not supported.
 *
 * @param gainHandle              the gain object
 * @param pixelFormat             id of the format
 * @param isPixelFormatSupported  receives the answer
 *
 * @retval InvalidHandle    gainHandle is not known
 * @retval InvalidArgument  isPixelFormatSupported is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_GetIsPixelFormatSupported(KORVEL_GAIN_HANDLE gainHandle, uint32_t pixelFormat,
                                                                    bool* isPixelFormatSupported);

/**
 * Applies the gains to a copy of an image, in memory of the object, which takes it back when the new handle ends.
 *
 * @param gainHandle         the gain object
 * @param imageHandle        the image, which stays as it is
 * @param outputImageHandle  receives the new image
 *
 * @retval InvalidHandle            gainHandle or imageHandle is not known
 * @retval InvalidArgument          outputImageHandle is null
 * @retval ImageFormatNotSupported  the image's format is not supported
 * @retval Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_Process(KORVEL_GAIN_HANDLE gainHandle, KORVEL_IMAGE_HANDLE imageHandle,
                                                  KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Applies the gains to an image's own pixels.
 *
 * @param gainHandle   the gain object
 * @param imageHandle  the image
 *
 * @retval InvalidHandle            gainHandle or imageHandle is not known
 * @retval ImageFormatNotSupported  the image's format is not supported
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_ProcessInPlace(KORVEL_GAIN_HANDLE gainHandle,
                                                         KORVEL_IMAGE_HANDLE imageHandle);

/**
 * Ends a handle. Images that the gain object made stay valid.
 *
 * @param gainHandle  the gain object
 *
 * @retval InvalidHandle  gainHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Gain_Destruct(KORVEL_GAIN_HANDLE gainHandle);

/** @} */

/* ---------------------------------------------------------------------------------------------- gamma corrector -- */

/**
 * @defgroup korvel_gamma Gamma corrector
 * Gamma correction of mono, Bayer and colour images. Every value v of a channel with the maximum M becomes M * (v / M)
 * ^ (1 / gamma); a fraction is dropped. Alpha is not corrected. While gamma lies in 0.999 to 1.001, pixels stay as they
 * are. In formats of 10 and 12 bits, values above the maximum count as the maximum.
 * @{
 */

/**
 * Makes a gamma corrector, with a gamma of 1.0.
 *
 * @param gammaCorrectorHandle  receives the corrector
 *
 * @retval InvalidArgument  gammaCorrectorHandle is null
 * @retval Error            the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_GammaCorrector_Construct(KORVEL_GAMMA_CORRECTOR_HANDLE* gammaCorrectorHandle);

/**
 * Sets gamma, for the calls that follow. Above 1 it lightens, below 1 it darkens. Its price is that of new tables, so
 * set it when it changes and not for each image.
 *
 * @param gammaCorrectorHandle  the corrector
 * @param value                 address of gamma, from 0.3 to 3.0
 *
 * @retval InvalidHandle    gammaCorrectorHandle is not known
 * @retval InvalidArgument  value is null, or gamma is out of range; it then stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_GammaCorrector_SetGammaCorrectionValue(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle, const float* value);

/**
 * Gamma.
 *
 * @param gammaCorrectorHandle  the corrector
 * @param value                 receives gamma
 *
 * @retval InvalidHandle    gammaCorrectorHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_GammaCorrector_GetGammaCorrectionValue(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle, float* value);

/**
 * The least gamma.
 *
 * @param gammaCorrectorHandle  the corrector
 * @param value                 receives 0.3
 *
 * @retval InvalidHandle    gammaCorrectorHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_GammaCorrector_GetGammaCorrectionMin(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle, float* value);

/**
 * The greatest gamma.
 *
 * @param gammaCorrectorHandle  the corrector
 * @param value                 receives 3.0
 *
 * @retval InvalidHandle    gammaCorrectorHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_GammaCorrector_GetGammaCorrectionMax(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle, float* value);

/**
 * Whether images of a format can be processed: all unpacked formats, and RGB10p32. True also for
 * KORVEL_PIXEL_FORMAT_Invalid, though no image of it is processed. An id that no format has is not supported.
 *
 * @param gammaCorrectorHandle    the corrector
 * @param pixelFormat             id of the format
 * @param isPixelFormatSupported  receives the answer
 *
 * @retval InvalidHandle    gammaCorrectorHandle is not known
 * @retval InvalidArgument  isPixelFormatSupported is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_GammaCorrector_GetIsPixelFormatSupported(
    KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle, uint32_t pixelFormat, bool* isPixelFormatSupported);

/**
 * Corrects a copy of an image, in memory of the object, which takes it back when the new handle ends. Alpha has no
 * defined value in it, but where pixels stay as they are. The unused bits of RGB10p32 become 0 where pixels change.
 *
 * @param gammaCorrectorHandle  the corrector
 * @param imageHandle           the image, which stays as it is
 * @param outputImageHandle     receives the new image
 *
 * @retval InvalidHandle            gammaCorrectorHandle or imageHandle is not known
 * @retval InvalidArgument          outputImageHandle is null
 * @retval ImageFormatNotSupported  the image's format is not supported
 * @retval Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_GammaCorrector_Process(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle,
                                                            KORVEL_IMAGE_HANDLE imageHandle,
                                                            KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Corrects an image's own pixels. Alpha stays as it is. The unused bits of RGB10p32 become 0 where pixels change.
 *
 * @param gammaCorrectorHandle  the corrector
 * @param imageHandle           the image
 *
 * @retval InvalidHandle            gammaCorrectorHandle or imageHandle is not known
 * @retval ImageFormatNotSupported  the image's format is not supported
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_GammaCorrector_ProcessInPlace(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle,
                                                                   KORVEL_IMAGE_HANDLE imageHandle);

/**
 * Ends a handle. Images that the corrector made stay valid.
 *
 * @param gammaCorrectorHandle  the corrector
 *
 * @retval InvalidHandle  gammaCorrectorHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_GammaCorrector_Destruct(KORVEL_GAMMA_CORRECTOR_HANDLE gammaCorrectorHandle);

/** @} */

/* --------------------------------------------------------------------------------------------- colour corrector -- */

/**
 * @defgroup korvel_color Colour corrector
 * Colour correction: each pixel's red, green and blue are multiplied by a matrix of 3 by 3 factors, and the results
 * limited to 0 and the maximum of the format's depth. Alpha, and the unused bits of RGB10p32, stay as they are.
 *
 * Results are computed in single precision and rounded: half up in general; on processors with AVX, from 16 by 16
 * pixels on, in RGB8, BGR8, RGBa8, BGRa8, RGB10, RGB12 and RGB10p32, to the nearest (even on a tie) for most pixels and
 * down for the last few of a line, or for the last line of RGB10 and RGB12. A result can so differ by one between
 * processors.
 * @{
 */

/**
 * Makes a colour corrector, with the identity as its matrix.
 *
 * @param colorCorrectorHandle  receives the corrector
 *
 * @retval InvalidArgument  colorCorrectorHandle is null
 * @retval Error            the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ColorCorrector_Construct(KORVEL_COLOR_CORRECTOR_HANDLE* colorCorrectorHandle);

/**
 * Sets the matrix, line by line: the first three factors give the new red from red, green and blue, the next three
 * green, the last three blue, whatever the order of the channels in memory.
 *
 * @param colorCorrectorHandle   the corrector
 * @param colorCorrectorFactors  nine factors; any values, and a result that is not a number becomes 0
 *
 * @retval InvalidHandle    colorCorrectorHandle is not known
 * @retval InvalidArgument  colorCorrectorFactors is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ColorCorrector_SetColorCorrectionFactors(
    KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle, const float* colorCorrectorFactors);

/**
 * Reads the nine factors, in the order in which they are set. Call it with a null array to ask for the size. Unlike
 * other functions that fill an array it leaves the size as it is when it writes factors; elements beyond the ninth are
 * not touched.
 *
 * @param colorCorrectorHandle       the corrector
 * @param colorCorrectorFactors      receives the factors; null asks for their number
 * @param colorCorrectorFactorsSize  elements that the array has room for; receives 9 if the array is null
 *
 * @retval InvalidHandle    colorCorrectorHandle is not known
 * @retval InvalidArgument  colorCorrectorFactorsSize is null
 * @retval BufferToSmall    the array has fewer than 9 elements
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_ColorCorrector_GetColorCorrectionFactors(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle,
                                                float* colorCorrectorFactors, size_t* colorCorrectorFactorsSize);

/**
 * Whether images of a format can be processed: the unpacked colour formats and RGB10p32. An id that no format has is
 * not supported.
 *
 * @param colorCorrectorHandle    the corrector
 * @param pixelFormat             id of the format
 * @param isPixelFormatSupported  receives the answer
 *
 * @retval InvalidHandle    colorCorrectorHandle is not known
 * @retval InvalidArgument  isPixelFormatSupported is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ColorCorrector_GetIsPixelFormatSupported(
    KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle, uint32_t pixelFormat, bool* isPixelFormatSupported);

/**
 * Corrects a copy of an image, in memory of the object, which takes it back when the new handle ends.
 *
 * @param colorCorrectorHandle  the corrector
 * @param imageHandle           the image, which stays as it is
 * @param outputImageHandle     receives the new image
 *
 * @retval InvalidHandle            colorCorrectorHandle or imageHandle is not known
 * @retval InvalidArgument          outputImageHandle is null
 * @retval ImageFormatNotSupported  the image's format is not supported
 * @retval Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ColorCorrector_Process(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle,
                                                            KORVEL_IMAGE_HANDLE imageHandle,
                                                            KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Corrects an image's own pixels.
 *
 * @param colorCorrectorHandle  the corrector
 * @param imageHandle           the image
 *
 * @retval InvalidHandle            colorCorrectorHandle or imageHandle is not known
 * @retval ImageFormatNotSupported  the image's format is not supported
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ColorCorrector_ProcessInPlace(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle,
                                                                   KORVEL_IMAGE_HANDLE imageHandle);

/**
 * Ends a handle. Images that the corrector made stay valid.
 *
 * @param colorCorrectorHandle  the corrector
 *
 * @retval InvalidHandle  colorCorrectorHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ColorCorrector_Destruct(KORVEL_COLOR_CORRECTOR_HANDLE colorCorrectorHandle);

/** @} */

/* ------------------------------------------------------------------------------------------------------ binning -- */

/**
 * @defgroup korvel_binning Binning
 * Blocks of X by Y pixels become one, channel by channel. On Bayer images the pixels of a block are those of one
 * colour, two apart, so that the result has the same pattern. Alpha of the result is the maximum of the depth.
 * @{
 */

/** How a block becomes a pixel. */
typedef uint16_t KORVEL_BINNING_MODE;

/** Values of KORVEL_BINNING_MODE. */
enum {
  KORVEL_BINNING_MODE_Average = 0, /**< the mean, its fraction dropped */
  KORVEL_BINNING_MODE_Sum = 1      /**< the sum, limited to the maximum of the format's depth */
};

/**
 * Makes a binning object, with factors of 1 and mode Sum.
 *
 * @param binningHandle  receives the binning object
 *
 * @retval InvalidArgument  binningHandle is null
 * @retval Error            the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_Construct(KORVEL_BINNING_HANDLE* binningHandle);

/**
 * Sets the width of a block, for the calls that follow.
 *
 * @param binningHandle  the binning object
 * @param factor         address of the width in pixels, from 1 to 8
 *
 * @retval InvalidHandle    binningHandle is not known
 * @retval InvalidArgument  factor is null, or the width is out of range; it then stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_SetBinningX(KORVEL_BINNING_HANDLE binningHandle, const uint8_t* factor);

/**
 * Sets the height of a block, for the calls that follow.
 *
 * @param binningHandle  the binning object
 * @param factor         address of the height in pixels, from 1 to 8
 *
 * @retval InvalidHandle    binningHandle is not known
 * @retval InvalidArgument  factor is null, or the height is out of range; it then stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_SetBinningY(KORVEL_BINNING_HANDLE binningHandle, const uint8_t* factor);

/**
 * The width of a block.
 *
 * @param binningHandle  the binning object
 * @param factor         receives the width in pixels
 *
 * @retval InvalidHandle    binningHandle is not known
 * @retval InvalidArgument  factor is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_GetBinningX(KORVEL_BINNING_HANDLE binningHandle, uint8_t* factor);

/**
 * The height of a block.
 *
 * @param binningHandle  the binning object
 * @param factor         receives the height in pixels
 *
 * @retval InvalidHandle    binningHandle is not known
 * @retval InvalidArgument  factor is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_GetBinningY(KORVEL_BINNING_HANDLE binningHandle, uint8_t* factor);

/**
 * The least width and height of a block.
 *
 * @param binningHandle  the binning object
 * @param value          receives 1
 *
 * @retval InvalidHandle    binningHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_GetBinningMin(KORVEL_BINNING_HANDLE binningHandle, uint8_t* value);

/**
 * The greatest width and height of a block.
 *
 * @param binningHandle  the binning object
 * @param value          receives 8
 *
 * @retval InvalidHandle    binningHandle is not known
 * @retval InvalidArgument  value is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_GetBinningMax(KORVEL_BINNING_HANDLE binningHandle, uint8_t* value);

/**
 * The size of what an image becomes: each side divided by its factor, and rounded down to a multiple of 4 (width) and 2
 * (height), on Bayer formats of 8 and 4. It is 0 where an image is too small. Factors that are both 1 are rounded here
 * as well, though KORVEL_Binning_Process() then keeps the size.
 *
 * @param binningHandle  the binning object
 * @param outputWidth    receives the pixels of a row of the result
 * @param outputHeight   receives the number of its rows
 * @param width          pixels of a row of the image
 * @param height         number of its rows
 * @param pixelFormat    its format
 *
 * @retval InvalidHandle    binningHandle is not known
 * @retval InvalidArgument  outputWidth or outputHeight is null, or pixelFormat is not supported
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_ExpectedOutputSize(KORVEL_BINNING_HANDLE binningHandle,
                                                                size_t* outputWidth, size_t* outputHeight, size_t width,
                                                                size_t height, uint32_t pixelFormat);

/**
 * Sets how a block becomes a pixel.
 *
 * @param binningHandle  the binning object
 * @param mode           address of the mode, one of the values of KORVEL_BINNING_MODE
 *
 * @retval InvalidHandle    binningHandle is not known
 * @retval InvalidArgument  mode is null, or the mode is none of the values; it then stays as it was
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_SetBinningMode(KORVEL_BINNING_HANDLE binningHandle,
                                                            const KORVEL_BINNING_MODE* mode);

/**
 * How a block becomes a pixel.
 *
 * @param binningHandle  the binning object
 * @param mode           receives the mode, see KORVEL_BINNING_MODE
 *
 * @retval InvalidHandle    binningHandle is not known
 * @retval InvalidArgument  mode is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_GetBinningMode(KORVEL_BINNING_HANDLE binningHandle,
                                                            KORVEL_BINNING_MODE* mode);

/**
 * Whether a format has binning: all unpacked formats, and RGB10p32, for which KORVEL_Binning_ExpectedOutputSize()
 * answers, though KORVEL_Binning_Process() refuses its images as packed. An id that no format has is not supported.
 *
 * @param binningHandle           the binning object
 * @param pixelFormat             id of the format
 * @param isPixelFormatSupported  receives the answer
 *
 * @retval InvalidHandle    binningHandle is not known
 * @retval InvalidArgument  isPixelFormatSupported is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_IsPixelformatSupported(KORVEL_BINNING_HANDLE binningHandle,
                                                                    uint32_t pixelFormat, bool* isPixelFormatSupported);

/**
 * Makes a binned image, in memory of the binning object, which takes it back when the new handle ends. With factors
 * that are both 1 it is a copy. Pixels beyond the last whole block of the rounded size are left out.
 *
 * @param binningHandle      the binning object
 * @param imageHandle        the image, which stays as it is
 * @param outputImageHandle  receives the new image
 *
 * @retval InvalidHandle            binningHandle or imageHandle is not known
 * @retval InvalidArgument          outputImageHandle is null, or the image is too small for the factors
 * @retval ImageFormatNotSupported  the image's format is packed, or KORVEL_PIXEL_FORMAT_Invalid
 * @retval Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_Process(KORVEL_BINNING_HANDLE binningHandle,
                                                     KORVEL_IMAGE_HANDLE imageHandle,
                                                     KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Ends a handle. Images that the binning object made stay valid.
 *
 * @param binningHandle  the binning object
 *
 * @retval InvalidHandle  binningHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Binning_Destruct(KORVEL_BINNING_HANDLE binningHandle);

/** @} */

/* --------------------------------------------------------------------------------- adaptive hot pixel corrector -- */

/**
 * @defgroup korvel_hotpixel Adaptive hot pixel corrector
 * Finds isolated bright pixels in raw images and replaces them by the mean of two neighbours. Works on Mono and
 * unpacked Bayer formats of 8, 10 and 12 bits; in Bayer images, neighbours are those of the pixel's own colour.
 *
 * A pixel of value c deviates by 2c - a - b from each pair (a, b) of opposite neighbours: those in its row, in its
 * column and on both diagonals. It is hot if it is brighter than the mean of each pair, and the square of each
 * deviation exceeds a threshold of A * c + B. A and B follow from the sensitivity and the gain factor, for 8 bits:
 *
 *     A = slope * gainFactorPercent / 100
 *     B = floor * gainFactorPercent * gainFactorPercent / 10000
 *
 * | Sensitivity | 1  | 2  | 3  | 4 | 5 |
 * | ----------- | -- | -- | -- | - | - |
 * | Slope       | 20 | 6  | 3  | 2 | 1 |
 * | Floor       | 36 | 25 | 16 | 9 | 4 |
 *
 * For each bit above 8, A doubles and B quadruples. Products, divisions that truncate, and the threshold are those of
 * 32-bit integers, which wrap. In the first column of a mono image, c of the threshold is the value of the next pixel.
 * At the image's border, pairs are completed from inside the image, for a correction from other rows than for
 * detection; in Bayer images of 4 rows, the third row is not corrected. Mono images below 2 and Bayer images below 4
 * pixels in width or height have no hot pixels, and nothing in them is corrected.
 *
 * The corrector keeps the list of the last detection, and its memory: 16 bytes for each pixel of the largest image.
 * @{
 */

/** A position in an image, in pixels from 0 at the top left. */
typedef struct KORVEL_POINT_2D {
  size_t x; /**< column */
  size_t y; /**< row */
} KORVEL_POINT_2D;

/**
 * Makes a corrector: sensitivity 3, gain factor 100 percent, an empty list.
 *
 * @param adaptiveHotpixelCorrectorHandle  receives the corrector
 *
 * @retval InvalidArgument  adaptiveHotpixelCorrectorHandle is null
 * @retval Error            the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_AdaptiveHotpixelCorrector_Construct(KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE* adaptiveHotpixelCorrectorHandle);

/**
 * Sets how readily a pixel counts as hot, from the next detection on. Numbers above 5 are stored and can be read back,
 * but leave the threshold as it was.
 *
 * @param adaptiveHotpixelCorrectorHandle  the corrector
 * @param sensitivityLevel                 1 finds the fewest pixels, 5 the most
 *
 * @retval InvalidHandle  adaptiveHotpixelCorrectorHandle is not known
 * @retval Error          sensitivityLevel is 0
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_SetSensitivity(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, uint32_t sensitivityLevel);

/**
 * How readily a pixel counts as hot.
 *
 * @param adaptiveHotpixelCorrectorHandle  the corrector
 * @param sensitivityLevel                 receives the sensitivity
 *
 * @retval InvalidHandle    adaptiveHotpixelCorrectorHandle is not known
 * @retval InvalidArgument  sensitivityLevel is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_GetSensitivity(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, uint32_t* sensitivityLevel);

/**
 * Sets the sensor's gain, which scales the noise that is expected, from the next detection on.
 *
 * @param adaptiveHotpixelCorrectorHandle  the corrector
 * @param gainFactorPercent                the gain in percent; any value
 *
 * @retval InvalidHandle  adaptiveHotpixelCorrectorHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_SetGainFactorPercent(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, uint32_t gainFactorPercent);

/**
 * The sensor's gain.
 *
 * @param adaptiveHotpixelCorrectorHandle  the corrector
 * @param gainFactorPercent                receives the gain in percent
 *
 * @retval InvalidHandle    adaptiveHotpixelCorrectorHandle is not known
 * @retval InvalidArgument  gainFactorPercent is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_GetGainFactorPercent(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, uint32_t* gainFactorPercent);

/**
 * Lists an image's hot pixels, which KORVEL_AdaptiveHotpixelCorrector_GetHotpixels() then tells.
 *
 * @param adaptiveHotpixelCorrectorHandle  the corrector
 * @param imageHandle                      the image, which stays as it is
 *
 * @retval InvalidHandle            adaptiveHotpixelCorrectorHandle or imageHandle is not known
 * @retval ImageFormatNotSupported  the image is neither Mono nor Bayer, or its format is packed
 * @retval Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_Detect(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, KORVEL_IMAGE_HANDLE imageHandle);

/**
 * Tells the hot pixels that the last detection found, row by row from the top, in each row from the left. Call it
 * twice: a null array asks for the size.
 *
 * KORVEL_AdaptiveHotpixelCorrector_Correct() puts its own list in place of the detected one while the number stays; the
 * elements are then those of that list, as far as the array has room.
 *
 * @param adaptiveHotpixelCorrectorHandle  the corrector
 * @param detectedHotpixels                receives the positions; null asks for their number
 * @param detectedHotpixelsSize            elements that the array has room for; receives the number that was detected
 *
 * @retval InvalidHandle    adaptiveHotpixelCorrectorHandle is not known
 * @retval InvalidArgument  detectedHotpixelsSize is null
 * @retval BufferToSmall    the array is too small
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_AdaptiveHotpixelCorrector_GetHotpixels(KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle,
                                              KORVEL_POINT_2D* detectedHotpixels, size_t* detectedHotpixelsSize);

/**
 * Corrects the listed pixels of an image in a copy of it, in memory of the image's own. A pixel takes the mean of that
 * pair of its neighbours from which it deviates least, rounded towards its old value, if it is brighter than the mean
 * of each pair or darker than the mean of each pair, and keeps its value otherwise. Pixels are corrected in the order
 * of the list, so that a later one sees the new values of earlier ones.
 *
 * With detectedHotpixelsSize 0 nothing is done or checked, outputImageHandle is not written, and the call succeeds.
 * Otherwise the list takes the place of the corrector's own, also in a call that fails on an unpacked format or on
 * memory.
 *
 * @param adaptiveHotpixelCorrectorHandle  the corrector
 * @param imageHandle                      the image, which stays as it is
 * @param detectedHotpixels                positions to correct; those outside the image are skipped
 * @param detectedHotpixelsSize            number of positions
 * @param outputImageHandle                receives the new image
 *
 * @retval InvalidHandle            adaptiveHotpixelCorrectorHandle or imageHandle is not known
 * @retval InvalidArgument          detectedHotpixels or outputImageHandle is null
 * @retval ImageFormatNotSupported  the image is neither Mono nor Bayer, or its format is packed
 * @retval Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_Correct(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, KORVEL_IMAGE_HANDLE imageHandle,
    const KORVEL_POINT_2D* detectedHotpixels, size_t detectedHotpixelsSize, KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Detects an image's hot pixels and corrects them in a copy of it, in memory of the image's own; see
 * KORVEL_AdaptiveHotpixelCorrector_Detect() and KORVEL_AdaptiveHotpixelCorrector_Correct().
 *
 * @param adaptiveHotpixelCorrectorHandle  the corrector
 * @param imageHandle                      the image, which stays as it is
 * @param outputImageHandle                receives the new image
 *
 * @retval InvalidHandle            adaptiveHotpixelCorrectorHandle or imageHandle is not known
 * @retval InvalidArgument          outputImageHandle is null
 * @retval ImageFormatNotSupported  the image is neither Mono nor Bayer, or its format is packed
 * @retval Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_AdaptiveHotpixelCorrector_CorrectAdaptive(
    KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle, KORVEL_IMAGE_HANDLE imageHandle,
    KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Ends a handle. Images that the corrector made stay valid.
 *
 * @param adaptiveHotpixelCorrectorHandle  the corrector
 *
 * @retval InvalidHandle  adaptiveHotpixelCorrectorHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_AdaptiveHotpixelCorrector_Destruct(KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE adaptiveHotpixelCorrectorHandle);

/** @} */

/* -------------------------------------------------------------------------------------------- image transformer -- */

/**
 * @defgroup korvel_transformer Image transformer
 * Mirrors and rotates images of every unpacked format. Pixels are moved as they are. A Bayer image becomes one of the
 * Bayer format that fits its new top left corner: BayerRG8 of even width, mirrored left to right, is BayerGR8.
 * @{
 */

/** The angle of a rotation, in degrees. */
typedef uint32_t KORVEL_ROTATION_ANGLE;

/** Values of KORVEL_ROTATION_ANGLE. */
enum {
  KORVEL_ROTATION_ANGLE_Degree90 = 90,   /**< a quarter turn counter-clockwise */
  KORVEL_ROTATION_ANGLE_Degree180 = 180, /**< a half turn */
  KORVEL_ROTATION_ANGLE_Degree270 = 270  /**< a quarter turn clockwise */
};

/**
 * Makes a transformer.
 *
 * @param imageTransformerHandle  receives the transformer
 *
 * @retval InvalidArgument  imageTransformerHandle is null
 * @retval Error            the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_ImageTransformer_Construct(KORVEL_IMAGE_TRANSFORMER_HANDLE* imageTransformerHandle);

/**
 * Exchanges top and bottom of a copy of an image, in memory of the transformer, which takes it back when the new handle
 * ends.
 *
 * @param imageTransformerHandle  the transformer
 * @param imageHandle             the image, which stays as it is
 * @param outputImageHandle       receives the new image
 *
 * @retval InvalidHandle            imageTransformerHandle or imageHandle is not known
 * @retval ImageFormatNotSupported  the image's format is packed
 * @retval InvalidArgument          outputImageHandle is null
 * @retval Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_ImageTransformer_MirrorUpDown(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                     KORVEL_IMAGE_HANDLE imageHandle, KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Exchanges left and right of a copy of an image, in memory of the transformer, which takes it back when the new handle
 * ends.
 *
 * @param imageTransformerHandle  the transformer
 * @param imageHandle             the image, which stays as it is
 * @param outputImageHandle       receives the new image
 *
 * @retval InvalidHandle            imageTransformerHandle or imageHandle is not known
 * @retval ImageFormatNotSupported  the image's format is packed
 * @retval InvalidArgument          outputImageHandle is null
 * @retval Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_ImageTransformer_MirrorLeftRight(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                        KORVEL_IMAGE_HANDLE imageHandle, KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Exchanges top and bottom, and left and right, of a copy of an image, in memory of the transformer, which takes it
 * back when the new handle ends.
 *
 * @param imageTransformerHandle  the transformer
 * @param imageHandle             the image, which stays as it is
 * @param outputImageHandle       receives the new image
 *
 * @retval InvalidHandle            imageTransformerHandle or imageHandle is not known
 * @retval ImageFormatNotSupported  the image's format is packed
 * @retval InvalidArgument          outputImageHandle is null
 * @retval Error                    the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE
KORVEL_ImageTransformer_MirrorUpDownLeftRight(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                              KORVEL_IMAGE_HANDLE imageHandle, KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Exchanges top and bottom of an image in its own memory. The handle stays; the format that it tells may change.
 *
 * @param imageTransformerHandle  the transformer
 * @param imageHandle             the image
 *
 * @retval InvalidHandle            imageTransformerHandle or imageHandle is not known
 * @retval ImageFormatNotSupported  the image's format is packed
 * @retval Error                    the image is Bayer, and the memory for what the library keeps of it can't be had, or
 *                                  another thread ended its handle meanwhile
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageTransformer_MirrorUpDownInPlace(
    KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle, KORVEL_IMAGE_HANDLE imageHandle);

/**
 * Exchanges left and right of an image in its own memory. The handle stays; the format that it tells may change.
 *
 * @param imageTransformerHandle  the transformer
 * @param imageHandle             the image
 *
 * @retval InvalidHandle            imageTransformerHandle or imageHandle is not known
 * @retval ImageFormatNotSupported  the image's format is packed
 * @retval Error                    the image is Bayer, and the memory for what the library keeps of it can't be had, or
 *                                  another thread ended its handle meanwhile
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageTransformer_MirrorLeftRightInPlace(
    KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle, KORVEL_IMAGE_HANDLE imageHandle);

/**
 * Exchanges top and bottom, and left and right, of an image in its own memory. The handle stays; the format that it
 * tells may change.
 *
 * @param imageTransformerHandle  the transformer
 * @param imageHandle             the image
 *
 * @retval InvalidHandle            imageTransformerHandle or imageHandle is not known
 * @retval ImageFormatNotSupported  the image's format is packed
 * @retval Error                    the image is Bayer, and the memory for what the library keeps of it can't be had, or
 *                                  another thread ended its handle meanwhile
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageTransformer_MirrorUpDownLeftRightInPlace(
    KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle, KORVEL_IMAGE_HANDLE imageHandle);

/**
 * Rotates a copy of an image, in memory of the transformer, which takes it back when the new handle ends. A quarter
 * turn exchanges width and height.
 *
 * @param imageTransformerHandle  the transformer
 * @param imageHandle             the image, which stays as it is
 * @param outputImageHandle       receives the new image
 * @param angle                   one of the values of KORVEL_ROTATION_ANGLE; the low 16 bits count
 *
 * @retval InvalidHandle            imageTransformerHandle or imageHandle is not known
 * @retval ImageFormatNotSupported  the image's format is packed
 * @retval InvalidArgument          outputImageHandle is null
 * @retval Error                    angle is none of the values, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageTransformer_Rotate(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle,
                                                             KORVEL_IMAGE_HANDLE imageHandle,
                                                             KORVEL_IMAGE_HANDLE* outputImageHandle, uint32_t angle);

/**
 * Rotates an image in its own memory. The handle stays; format, width and height that it tells may change. A quarter
 * turn takes memory of the image's size for the time of the call.
 *
 * @param imageTransformerHandle  the transformer
 * @param imageHandle             the image
 * @param angle                   one of the values of KORVEL_ROTATION_ANGLE; the low 16 bits count
 *
 * @retval InvalidHandle            imageTransformerHandle or imageHandle is not known
 * @retval ImageFormatNotSupported  the image's format is packed
 * @retval Error                    angle is none of the values, the memory can't be had, or another thread ended the
 *                                  handle of a Bayer image meanwhile; if memory runs out at the very end of a quarter
 *                                  turn of a Bayer image, pixels and size have changed, and the format has not
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageTransformer_RotateInPlace(
    KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle, KORVEL_IMAGE_HANDLE imageHandle, uint32_t angle);

/**
 * Ends a handle. Images that the transformer made stay valid.
 *
 * @param imageTransformerHandle  the transformer
 *
 * @retval InvalidHandle  imageTransformerHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageTransformer_Destruct(KORVEL_IMAGE_TRANSFORMER_HANDLE imageTransformerHandle);

/** @} */

/* ---------------------------------------------------------------------------------------------------- histogram -- */

/**
 * @defgroup korvel_histogram Histogram
 * The values of an image of an unpacked format, counted for each channel: one for Mono and for Bayer, whose colours are
 * counted together; three or four for colour, in the order of the format's name. A stored value above the maximum of
 * the depth counts in the last bin, and in the sum as it is. Several threads may read one histogram.
 * @{
 */

/**
 * Counts the values of an image. The image isn't kept.
 *
 * @param imageHandle      the image
 * @param histogramHandle  receives the histogram
 *
 * @retval InvalidHandle            imageHandle is not known
 * @retval ImageFormatNotSupported  the image's format is packed
 * @retval InvalidArgument          histogramHandle is null
 * @retval Error                    the image has pixels of KORVEL_PIXEL_FORMAT_Invalid, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Histogram_Construct(KORVEL_IMAGE_HANDLE imageHandle,
                                                         KORVEL_HISTOGRAM_HANDLE* histogramHandle);

/**
 * The pixel format of the image that was counted.
 *
 * @param histogramHandle  the histogram
 * @param pixelFormat      receives the id of the format
 *
 * @retval InvalidHandle    histogramHandle is not known
 * @retval InvalidArgument  pixelFormat is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Histogram_GetPixelFormat(KORVEL_HISTOGRAM_HANDLE histogramHandle,
                                                              uint32_t* pixelFormat);

/**
 * The channels of the image that was counted.
 *
 * @param histogramHandle  the histogram
 * @param numChannels      receives the number of channels
 *
 * @retval InvalidHandle    histogramHandle is not known
 * @retval InvalidArgument  numChannels is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Histogram_GetNumChannels(KORVEL_HISTOGRAM_HANDLE histogramHandle,
                                                              size_t* numChannels);

/**
 * The sum of a channel's values.
 *
 * @param histogramHandle  the histogram
 * @param channelIndex     the channel, from 0
 * @param pixelSum         receives the sum
 *
 * @retval InvalidHandle    histogramHandle is not known
 * @retval InvalidArgument  pixelSum is null
 * @retval OutOfRange       the histogram has no such channel
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Histogram_GetPixelSumForChannel(KORVEL_HISTOGRAM_HANDLE histogramHandle,
                                                                     size_t channelIndex, uint64_t* pixelSum);

/**
 * The number of a channel's values.
 *
 * @param histogramHandle  the histogram
 * @param channelIndex     the channel, from 0
 * @param pixelCount       receives the number
 *
 * @retval InvalidHandle    histogramHandle is not known
 * @retval InvalidArgument  pixelCount is null
 * @retval OutOfRange       the histogram has no such channel
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Histogram_GetPixelCountForChannel(KORVEL_HISTOGRAM_HANDLE histogramHandle,
                                                                       size_t channelIndex, uint64_t* pixelCount);

/**
 * How often each value occurs in a channel: 256, 1024 or 4096 bins by the format's depth. Call it twice: a null array
 * asks for the size.
 *
 * @param histogramHandle  the histogram
 * @param channelIndex     the channel, from 0
 * @param bins             receives the counts, from value 0 on; null asks for their number
 * @param binsSize         elements that the array has room for; receives the number of bins
 *
 * @retval InvalidHandle    histogramHandle is not known
 * @retval InvalidArgument  binsSize is null
 * @retval OutOfRange       the histogram has no such channel
 * @retval BufferToSmall    the array is too small
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Histogram_GetBinsForChannel(KORVEL_HISTOGRAM_HANDLE histogramHandle,
                                                                 size_t channelIndex, uint64_t* bins, size_t* binsSize);

/**
 * Ends a handle.
 *
 * @param histogramHandle  the histogram
 *
 * @retval InvalidHandle  histogramHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_Histogram_Destruct(KORVEL_HISTOGRAM_HANDLE histogramHandle);

/** @} */

/* --------------------------------------------------------------------------------------------------- pixel line -- */

/**
 * @defgroup korvel_pixel_line Pixel line
 * The values of one row or column of an image of an unpacked format, for each channel: one for Mono and for Bayer,
 * three or four for colour, in the order of the format's name. Several threads may read one line.
 * @{
 */

/** Which line of an image is meant. Any number above 1 means a column, too. */
typedef uint32_t KORVEL_ORIENTATION;

/** Values of KORVEL_ORIENTATION. */
enum {
  KORVEL_ORIENTATION_Horizontal = 0, /**< a row */
  KORVEL_ORIENTATION_Vertical = 1    /**< a column */
};

/**
 * Copies the values of a row or column. The image isn't kept. An offset just past the last row or column gives a line
 * without values, and so does any offset outside the image with an orientation above 1.
 *
 * @param imageHandle      the image
 * @param orientation      row or column, see KORVEL_ORIENTATION
 * @param offset           number of the row or column, from 0
 * @param pixelLineHandle  receives the line
 *
 * @retval InvalidHandle            imageHandle is not known
 * @retval ImageFormatNotSupported  the image's format is packed
 * @retval InvalidArgument          pixelLineHandle is null
 * @retval OutOfRange               offset exceeds the height (Horizontal) or the width (Vertical)
 * @retval Error                    the line has pixels of KORVEL_PIXEL_FORMAT_Invalid, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelLine_Construct(KORVEL_IMAGE_HANDLE imageHandle, uint32_t orientation,
                                                         size_t offset, KORVEL_PIXEL_LINE_HANDLE* pixelLineHandle);

/**
 * The pixel format of the image that the line is from.
 *
 * @param pixelLineHandle  the line
 * @param pixelFormat      receives the id of the format
 *
 * @retval InvalidHandle    pixelLineHandle is not known
 * @retval InvalidArgument  pixelFormat is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelLine_GetPixelFormat(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle,
                                                              uint32_t* pixelFormat);

/**
 * Whether the line is a row or a column.
 *
 * @param pixelLineHandle  the line
 * @param orientation      receives KORVEL_ORIENTATION_Horizontal or KORVEL_ORIENTATION_Vertical
 *
 * @retval InvalidHandle    pixelLineHandle is not known
 * @retval InvalidArgument  orientation is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelLine_GetOrientation(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle,
                                                              uint32_t* orientation);

/**
 * The number of the row or column.
 *
 * @param pixelLineHandle  the line
 * @param offset           receives the number
 *
 * @retval InvalidHandle    pixelLineHandle is not known
 * @retval InvalidArgument  offset is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelLine_GetOffset(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle, size_t* offset);

/**
 * The channels of the image that the line is from.
 *
 * @param pixelLineHandle  the line
 * @param numChannels      receives the number of channels
 *
 * @retval InvalidHandle    pixelLineHandle is not known
 * @retval InvalidArgument  numChannels is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelLine_GetNumChannels(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle,
                                                              size_t* numChannels);

/**
 * A channel's values as they are stored, along the line. Call it twice: a null array asks for the size.
 *
 * @param pixelLineHandle  the line
 * @param channelIndex     the channel, from 0
 * @param values           receives the values, from the left or the top; null asks for their number
 * @param valuesSize       elements that the array has room for; receives the number of values
 *
 * @retval InvalidHandle    pixelLineHandle is not known
 * @retval InvalidArgument  valuesSize is null
 * @retval OutOfRange       the line has no such channel
 * @retval BufferToSmall    the array is too small
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelLine_GetValuesForChannel(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle,
                                                                   size_t channelIndex, uint32_t* values,
                                                                   size_t* valuesSize);

/**
 * Ends a handle.
 *
 * @param pixelLineHandle  the line
 *
 * @retval InvalidHandle  pixelLineHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_PixelLine_Destruct(KORVEL_PIXEL_LINE_HANDLE pixelLineHandle);

/** @} */

/* -------------------------------------------------------------------------------------------------- image files -- */

/**
 * @defgroup korvel_files Image files
 * Paths of files are filePathSize bytes, without a terminating zero; any bytes that the file system takes. A path
 * without a directory means the working directory. The path's ending, in upper or lower case, tells the file type:
 *
 * - ".bmp" keeps Mono, Bayer, RGB8, BGR8, RGBa8, BGRa8, RGB10p32 and BGR10p32, and no other packed format. Read back,
 *   Bayer is mono, RGB8 and RGB10p32 have red and blue exchanged, and the others are as written.
 * - ".png" keeps every unpacked format, without loss. Read back, Bayer is mono and BGR is RGB.
 * - ".jpg" and ".jpeg" keep Mono, Bayer and colour of 8 bits, with loss. Read back they are Mono8 or RGB8.
 * - ".raw" keeps every format. Read back it is as written.
 *
 * BMP files keep the depth of 10 and 12 bits by masks, and pad lines by the remainder of their length by 4: programs
 * other than this library read those of 8 bits whose lines leave a remainder of 0 or 2. PNG files of 10 and 12 bits
 * hold 16-bit samples, shifted up, and tell the depth in an sBIT chunk. RAW is the library's own: 28 bytes (format id,
 * number of pixel bytes, width and height as little-endian integers of 4, 8, 8 and 8 bytes), then the image's bytes.
 *
 * An existing file is overwritten. A written file is whole and closed when the call succeeds; after a failure a partly
 * written file may stay behind.
 *
 * A file that is read is never trusted: whatever it holds, the answer is an image or a failure. Sizes are checked
 * against the file as far as its type allows, and against the limit of all images, before memory is taken. Anything but
 * a regular file is answered like a file that can't be opened.
 * @{
 */

/**
 * Writes an image to a RAW file.
 *
 * @param inputImageHandle  the image
 * @param filePath          path of the file, which must end in ".raw"
 * @param filePathSize      bytes of the path
 *
 * @retval InvalidHandle            inputImageHandle is not known
 * @retval InvalidArgument          filePath is null or filePathSize is 0
 * @retval Io                       the directory does not exist, the path has another ending, or the file can't be
 *                                  written
 * @retval ImageFormatNotSupported  the image's format is KORVEL_PIXEL_FORMAT_Invalid
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageWriter_WriteAsRAW(KORVEL_IMAGE_HANDLE inputImageHandle, const char* filePath,
                                                            size_t filePathSize);

/**
 * Writes an image to a BMP file, which may have up to 4 GiB.
 *
 * @param inputImageHandle  the image
 * @param filePath          path of the file, which must end in ".bmp"
 * @param filePathSize      bytes of the path
 *
 * @retval InvalidHandle            inputImageHandle is not known
 * @retval InvalidArgument          filePath is null or filePathSize is 0
 * @retval Io                       the directory does not exist, the path has another ending, or the file can't be
 *                                  written, for its size among other causes
 * @retval ImageFormatNotSupported  BMP has no place for the image's format
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageWriter_WriteAsBMP(KORVEL_IMAGE_HANDLE inputImageHandle, const char* filePath,
                                                            size_t filePathSize);

/**
 * Writes an image to a PNG file. No side may exceed 1,000,000 pixels.
 *
 * @param inputImageHandle  the image
 * @param quality           from 10 (smallest file) to 100 (fastest); the pixels are the same; a value out of range may
 *                          fail
 * @param filePath          path of the file, which must end in ".png"
 * @param filePathSize      bytes of the path
 *
 * @retval InvalidHandle            inputImageHandle is not known
 * @retval InvalidArgument          filePath is null or filePathSize is 0
 * @retval Io                       the directory does not exist, the path has another ending, or the file can't be
 *                                  written, for its size or the quality among other causes
 * @retval ImageFormatNotSupported  PNG has no place for the image's format
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageWriter_WriteAsPNG(KORVEL_IMAGE_HANDLE inputImageHandle, uint32_t quality,
                                                            const char* filePath, size_t filePathSize);

/**
 * Writes an image to a JPEG file. No side may exceed 65,500 pixels.
 *
 * @param inputImageHandle  the image
 * @param quality           from 0 (smallest file) to 100 (best picture); anything above counts as 100
 * @param filePath          path of the file, which must end in ".jpg" or ".jpeg"
 * @param filePathSize      bytes of the path
 *
 * @retval InvalidHandle            inputImageHandle is not known
 * @retval InvalidArgument          filePath is null or filePathSize is 0
 * @retval Io                       the directory does not exist, the path has another ending, or the file can't be
 *                                  written, for its size among other causes
 * @retval ImageFormatNotSupported  JPEG has no place for the image's format
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageWriter_WriteAsJPG(KORVEL_IMAGE_HANDLE inputImageHandle, uint32_t quality,
                                                            const char* filePath, size_t filePathSize);

/**
 * Writes an image to a file of the type that the path's ending tells, with a quality of 100 for PNG and of 75 for JPEG.
 *
 * @param inputImageHandle  the image
 * @param filePath          path of the file
 * @param filePathSize      bytes of the path
 *
 * @retval InvalidHandle            inputImageHandle is not known
 * @retval InvalidArgument          filePath is null or filePathSize is 0
 * @retval Io                       the directory does not exist, the ending is not known, or the file can't be written,
 *                                  for its size among other causes
 * @retval ImageFormatNotSupported  the file type has no place for the image's format
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageWriter_Write(KORVEL_IMAGE_HANDLE inputImageHandle, const char* filePath,
                                                       size_t filePathSize);

/**
 * Reads a file into a new image, in memory of the library's own. Files from elsewhere are read as far as they fit:
 *
 * - BMP of 8 bits with a colour table (as Mono8, whatever the table's colours), 24 bits, and bit fields that match a
 *   pixel format (masks of 12 bytes behind an info header of 40)
 * - PNG of grey or true colour; 16-bit samples without an sBIT chunk are reduced to 8, an sBIT chunk has to tell 10 or
 *   12 bits for every channel, and transparent colours are ignored
 * - JPEG of grey or colour, not CMYK
 *
 * @param filePath           path of the file
 * @param filePathSize       bytes of the path
 * @param outputImageHandle  receives the new image
 *
 * @retval InvalidArgument          filePath or outputImageHandle is null or filePathSize is 0
 * @retval Io                       the ending is not known, or the file can't be opened, is damaged, cut short or
 *                                  larger than the limit of all images
 * @retval OutOfRange               a RAW file's width or height is 0
 * @retval ImageFormatNotSupported  no pixel format fits the file's pixels
 * @retval Error                    a RAW file's pixel format isn't public, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageReader_Read(const char* filePath, size_t filePathSize,
                                                      KORVEL_IMAGE_HANDLE* outputImageHandle);

/**
 * Reads a file like KORVEL_ImageReader_Read(), and takes its pixels for another format; none is converted. From BMP,
 * PNG and JPEG files a mono image can be asked for as a Bayer format of its depth, and the image then has that format.
 * From a RAW file a Bayer image can be asked for as the mono format of its depth and packing (but for "g40" and "g24"),
 * and the image still has the file's format. The format that the file holds can always be asked for.
 *
 * @param filePath           path of the file
 * @param filePathSize       bytes of the path
 * @param pixelFormat        the format to take the pixels for
 * @param outputImageHandle  receives the new image
 *
 * @retval InvalidArgument                 filePath or outputImageHandle is null or filePathSize is 0
 * @retval Io                              the ending is not known, or the file can't be opened, is damaged, cut short
 *                                         or larger than the limit of all images
 * @retval OutOfRange                      a RAW file's width or height is 0
 * @retval ImageFormatNotSupported         no pixel format fits the file's pixels, or pixelFormat is
 *                                         KORVEL_PIXEL_FORMAT_Invalid
 * @retval ImageFormatInterpretationError  the file's pixels can't be taken for pixelFormat, or no format has this id
 * @retval Error                           a RAW file's pixel format isn't public, or the memory can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_ImageReaderRead_ReadAsPixelFormat(const char* filePath, size_t filePathSize,
                                                                       uint32_t pixelFormat,
                                                                       KORVEL_IMAGE_HANDLE* outputImageHandle);

/** @} */

/* ------------------------------------------------------------------------------------------------- video writer -- */

/**
 * @defgroup korvel_video Video writer
 * Recording a stream of images to a file, while the stream goes on.
 *
 * KORVEL_VideoWriter_Video_Append() copies an image into a queue and returns; a worker thread of the video compresses
 * the queued images and writes them. Nobody waits for the encoder or the disk: an image that finds the queue full is
 * dropped, counted, and told to the caller (QueueFull). Images that the worker can't compress or write, or that come
 * when the disk has less than 5025 KiB left, are dropped and counted too.
 *
 * A file holds up to 4 GiB of compressed images; beyond that images are dropped, and the file stays good. It can be
 * played once it is closed. A video that is still open when the process ends is closed then, with all that is queued. A
 * child made by fork while a video is open has to leave by _exit: with exit it would end the file a second time. Up to
 * 48 videos can be open at a time. Any thread may call any function on one video.
 * @{
 */

/** Containers. */
enum { KORVEL_VIDEO_CONTAINER_AVI = 0 /**< AVI files */ };

/** Encoders. */
enum {
  KORVEL_VIDEO_ENCODER_AVI = 0,  /**< has a number only: nothing can be recorded with it */
  KORVEL_VIDEO_ENCODER_MJPEG = 1 /**< each image is a JPEG picture */
};

/** Options of encoders. */
enum { KORVEL_VIDEO_ENCODER_OPTION_Quality = 0 /**< an int32_t from 1 to 100, at first 75 */ };

/** Options of containers. */
enum {
  KORVEL_VIDEO_CONTAINER_OPTION_FramesPerSecond = 0 /**< a double above 0, at first 25.0; players take its whole part */
};

/**
 * Makes a file and a video on it. A file that exists is never overwritten.
 *
 * @param videoHandle  receives the video. What it holds is read before: initialise it with null. It may hold a handle
 *                     that was closed, but not one of an open video
 * @param fileName     path of the file, UTF-8 with a terminating zero
 * @param container    KORVEL_VIDEO_CONTAINER_AVI
 * @param encoder      KORVEL_VIDEO_ENCODER_MJPEG
 *
 * @retval InvalidArgument  videoHandle is null or holds an open video, or nothing can be recorded with the encoder
 * @retval AccessFailed     the file exists
 * @retval Error            no container or encoder has this number, fileName is null, empty or not UTF-8, the file
 *                          can't be made, or 48 videos are open
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_Open(KORVEL_VIDEO_HANDLE* videoHandle, const char* fileName,
                                                            uint16_t container, uint16_t encoder);

/**
 * Whether a handle is that of an open video. Any handle is taken.
 *
 * @param videoHandle  a video, or anything else
 * @param isOpen       receives 1 for an open video, 0 for any other handle
 *
 * @retval InvalidArgument  isOpen is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_IsOpen(KORVEL_VIDEO_HANDLE videoHandle, uint8_t* isOpen);

/**
 * Waits until all queued images are written, ends the file, and ends the handle.
 *
 * @param videoHandle  the video
 *
 * @retval InvalidHandle  videoHandle is not known
 * @retval Error          the end of the file could not be written; the handle stays, to ask how far it came, and a
 *                        second call ends it
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_Close(KORVEL_VIDEO_HANDLE videoHandle);

/**
 * Appends an image, whose pixels are copied. All images of a video have the size and format of the first.
 *
 * @param videoHandle  the video
 * @param imageHandle  an image of Mono8, RGB8, BGR8, RGBa8 or BGRa8, with a width of 16 or more that is a multiple of
 *                     8, and a height of 16 or more
 *
 * @retval InvalidHandle            videoHandle or imageHandle is not known
 * @retval InvalidArgument          the image has no data, or the first image's size can't be recorded
 * @retval ImageFormatNotSupported  the image has another format
 * @retval AccessFailed             size or format are not those of the first image
 * @retval QueueFull                the image was dropped; the recording goes on
 * @retval Error                    the file has reached its limit, the recording could not be started, or the memory
 *                                  can't be had
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_Append(KORVEL_VIDEO_HANDLE videoHandle,
                                                              KORVEL_IMAGE_HANDLE imageHandle);

/**
 * Sets an option of an encoder, also while recording. A new quality counts from the next image that is compressed.
 *
 * @param videoHandle  the video
 * @param option       KORVEL_VIDEO_ENCODER_OPTION_Quality
 * @param value        address of the option's value
 * @param valueSize    bytes of the value: 4, as an int32_t has
 *
 * @retval InvalidHandle    videoHandle is not known
 * @retval InvalidArgument  value is null, valueSize is not the option's, or the value is out of range
 * @retval Error            no option has this number
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Encoder_SetOption(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option,
                                                                   const void* value, size_t valueSize);

/**
 * Sets an option of a container, also while recording. The file tells the rate that was set last.
 *
 * @param videoHandle  the video
 * @param option       KORVEL_VIDEO_CONTAINER_OPTION_FramesPerSecond
 * @param value        address of the option's value
 * @param valueSize    bytes of the value: 8, as a double has
 *
 * @retval InvalidHandle    videoHandle is not known
 * @retval InvalidArgument  value is null, valueSize is not the option's, or the value is out of range
 * @retval Error            no option has this number
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Container_SetOption(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option,
                                                                     const void* value, size_t valueSize);

/**
 * The value of an option of an encoder.
 *
 * @param videoHandle  the video
 * @param option       KORVEL_VIDEO_ENCODER_OPTION_Quality
 * @param value        receives the option's value
 * @param valueSize    bytes of the value: 4, as an int32_t has
 * @param sizeWritten  receives valueSize; may be null
 *
 * @retval InvalidHandle    videoHandle is not known
 * @retval InvalidArgument  value is null, or valueSize is not the option's
 * @retval Error            no option has this number
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Encoder_GetOption(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option,
                                                                   void* value, size_t valueSize, size_t* sizeWritten);

/**
 * The value of an option of a container.
 *
 * @param videoHandle  the video
 * @param option       KORVEL_VIDEO_CONTAINER_OPTION_FramesPerSecond
 * @param value        receives the option's value
 * @param valueSize    bytes of the value: 8, as a double has
 * @param sizeWritten  receives valueSize; may be null
 *
 * @retval InvalidHandle    videoHandle is not known
 * @retval InvalidArgument  value is null, or valueSize is not the option's
 * @retval Error            no option has this number
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Container_GetOption(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option,
                                                                     void* value, size_t valueSize,
                                                                     size_t* sizeWritten);

/**
 * The range of an encoder's option, in values of the option's type.
 *
 * @param videoHandle  the video
 * @param option       KORVEL_VIDEO_ENCODER_OPTION_Quality
 * @param min          receives the least value
 * @param max          receives the greatest value
 * @param inc          receives the step between values
 *
 * @retval InvalidHandle    videoHandle is not known
 * @retval InvalidArgument  min, max or inc is null
 * @retval Error            no option has this number
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Encoder_OptionRange(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option,
                                                                     void* min, void* max, void* inc);

/**
 * Options of containers have no range. This function always fails, looks at no argument, and leaves no text.
 *
 * @param videoHandle  not looked at
 * @param option       not looked at
 * @param min          not looked at
 * @param max          not looked at
 * @param inc          not looked at
 *
 * @retval NotSupported  always
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Container_OptionRange(KORVEL_VIDEO_HANDLE videoHandle, uint32_t option,
                                                                       void* min, void* max, void* inc);

/**
 * The encoders that can record into a container. Call it twice: a null array asks for the size. The array has to have
 * room for that many.
 *
 * @param container  not looked at: there is one
 * @param encoders   receives one encoder, unless it is null
 * @param size       receives the number of elements; what it holds before is not looked at
 *
 * @retval InvalidArgument  size is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_GetSupportedEncodersForAContainer(uint16_t container,
                                                                                   uint16_t* encoders, size_t* size);

/**
 * The containers that an encoder can record into. Call it twice: a null array asks for the size. The array has to have
 * room for that many.
 *
 * @param encoder     not looked at: there is one
 * @param containers  receives one container, unless it is null
 * @param size        receives the number of elements; what it holds before is not looked at
 *
 * @retval InvalidArgument  size is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_GetSupportedContainersForAnEncoder(uint16_t encoder,
                                                                                    uint16_t* containers, size_t* size);

/**
 * The pixel formats that an encoder takes. Call it twice: a null array asks for the size. The array has to have room
 * for that many.
 *
 * @param encoder       KORVEL_VIDEO_ENCODER_MJPEG; KORVEL_VIDEO_ENCODER_AVI takes none
 * @param pixelFormats  receives five formats, unless it is null
 * @param size          receives the number of elements; what it holds before is not looked at
 *
 * @retval InvalidArgument  size is null
 * @retval Error            no encoder has this number
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Encoder_GetSupportedPixelFormats(uint16_t encoder,
                                                                                  uint32_t* pixelFormats, size_t* size);

/**
 * The images that were written.
 *
 * @param videoHandle  the video
 * @param numFrames    receives the number of images
 *
 * @retval InvalidHandle    videoHandle is not known
 * @retval InvalidArgument  numFrames is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_GetEncodedFrames(KORVEL_VIDEO_HANDLE videoHandle,
                                                                        uint64_t* numFrames);

/**
 * The images that were dropped. After the limit of the file, images are counted as dropped only while the queue is
 * empty.
 *
 * @param videoHandle  the video
 * @param numFrames    receives the number of images
 *
 * @retval InvalidHandle    videoHandle is not known
 * @retval InvalidArgument  numFrames is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_GetDroppedFrames(KORVEL_VIDEO_HANDLE videoHandle,
                                                                        uint64_t* numFrames);

/**
 * The bytes of all images that were written, compressed.
 *
 * @param videoHandle     the video
 * @param fileSize_bytes  receives the number of bytes
 *
 * @retval InvalidHandle    videoHandle is not known
 * @retval InvalidArgument  fileSize_bytes is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_GetFileSize(KORVEL_VIDEO_HANDLE videoHandle,
                                                                   uint64_t* fileSize_bytes);

/**
 * Sets the numbers of written and dropped images to 0.
 *
 * @param videoHandle  the video
 *
 * @retval InvalidHandle  videoHandle is not known
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_ResetFrameCounters(KORVEL_VIDEO_HANDLE videoHandle);

/**
 * Sets how many images the queue holds, between opening and the first image. Without it, 16 at first and, once the
 * first image has told the size, as many as fit 200 MiB at four bytes a pixel (none, if an image is larger than that).
 *
 * @param videoHandle  the video
 * @param size         number of images, from 1 to 1000
 *
 * @retval InvalidHandle    videoHandle is not known
 * @retval InvalidArgument  size is out of range
 * @retval Error            the recording has begun
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Queue_SetSize(KORVEL_VIDEO_HANDLE videoHandle, uint32_t size);

/**
 * How many images the queue holds.
 *
 * @param videoHandle  the video
 * @param size         receives the number of images
 *
 * @retval InvalidHandle    videoHandle is not known
 * @retval InvalidArgument  size is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Queue_GetSize(KORVEL_VIDEO_HANDLE videoHandle, uint32_t* size);

/**
 * The range of sizes that can be set.
 *
 * @param videoHandle  the video
 * @param minSize      receives 1
 * @param maxSize      receives 1000
 *
 * @retval InvalidHandle    videoHandle is not known
 * @retval InvalidArgument  minSize or maxSize is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Queue_GetRange(KORVEL_VIDEO_HANDLE videoHandle, uint32_t* minSize,
                                                                uint32_t* maxSize);

/**
 * The images that wait in the queue, the one that is being compressed among them.
 *
 * @param videoHandle  the video
 * @param queued       receives the number of images
 *
 * @retval InvalidHandle    videoHandle is not known
 * @retval InvalidArgument  queued is null
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Queue_GetQueued(KORVEL_VIDEO_HANDLE videoHandle, uint32_t* queued);

/**
 * Waits until the worker has run the queue dry, like KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(): it doesn't answer
 * for each image.
 *
 * @param videoHandle  the video
 * @param timeoutMs    milliseconds to wait at most
 *
 * @retval InvalidHandle  videoHandle is not known
 * @retval Timeout        time ran out
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_WaitUntilFrameDone(KORVEL_VIDEO_HANDLE videoHandle,
                                                                          uint32_t timeoutMs);

/**
 * Waits until the worker has run the queue dry; returns at once for an empty queue.
 *
 * @param videoHandle  the video
 * @param timeoutMs    milliseconds to wait at most
 *
 * @retval InvalidHandle  videoHandle is not known
 * @retval Timeout        time ran out
 */
KORVEL_API KORVEL_RETURN_CODE KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(KORVEL_VIDEO_HANDLE videoHandle,
                                                                           uint32_t timeoutMs);

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* KORVEL_KORVEL_H */
