// SPDX-License-Identifier: MIT
//
// Lum converts frames of industrial cameras into formats for display and processing.
//
//   #include <lum/lum.h>
//
//   int to_bgr(uint8_t *mosaic, uint8_t *bgr, uint32_t width, uint32_t height) {
//     LumImage source = {0}, destination = {0};
//     LumTransformInfo debayer;
//     source.size = destination.size = sizeof(LumImage);
//     source.data = mosaic;    /* width * height bytes */
//     destination.data = bgr;  /* width * height * 3 bytes */
//     if (LumSetImageInfoFromPixelFormat(LumPixelFormatBayerRG8, width, height, &source) ||
//         LumSetImageInfoFromString("BGR24", 5, width, height, &destination))
//       return 0;
//     LumSetDebayerMode(LumDebayerModeLCAA, &debayer); /* optional: 2x2 is the default */
//     return LumImageTransform(&source, &destination, &debayer, 1) == LumErrorSuccess;
//   }
//
// Contents
//   1 Enumerations         5 Generic transform      9 CYGM, rows          12 Information
//   2 Result codes         6 Mono sources          10 Planes and depth    13 Older dispatcher
//   3 Records              7 RGB and YUV sources   11 Geometry
//   4 Set-up and queries   8 Bayer sources
//
// What holds for every function
//   - Callers own all records and buffers. Nothing is kept between calls, nothing but the in-place
//     form of LumInterlacedToProgressive and LumCreateColorCorrectionMatrix_Int8 allocates, nothing
//     is configured but by arguments.
//   - Any number of threads may call any functions at once, as long as no two of them write the
//     same memory. No function throws.
//   - Rows are tightly packed: pitch = width * bytes per pixel. No alignment is needed. No other
//     memory is touched than the functions say; the sizes of buffers cannot be checked.
//   - Bytes that are said not to be written keep their values; no other thread may write them
//     during the call.
//   - Up to 128 KiB of the calling thread's stack are used.
//   - Arguments are checked in the order given; after a refusal the destination is as it was.
//   - Source and destination must not overlap unless a function says otherwise.
//
#ifndef LUM_LUM_H
#define LUM_LUM_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define LUM_API __attribute__((visibility("default")))
#else
#define LUM_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

// ---------------------------------------------------------------------------------------------
// 1 Enumerations
//
// All are carried in fields and arguments of 32 bits, so that the ABI does not hang on the size
// that a compiler gives an enum.

// How a pixel is organised.
typedef uint32_t LumPixelLayout;
enum {
  LumPixelLayoutMono = 0,        // one grey sample
  LumPixelLayoutMonoPacked = 1,  // two grey samples of 12 bits in three bytes
  LumPixelLayoutRaw = 2,         // one sample of a mosaic
  LumPixelLayoutRawPacked = 3,   // two samples of a mosaic, of 12 bits, in three bytes
  LumPixelLayoutRGB = 4,         // R, G, B in memory
  LumPixelLayoutBGR = 5,         // B, G, R in memory
  LumPixelLayoutRGBA = 6,        // R, G, B, A in memory
  LumPixelLayoutBGRA = 7,        // B, G, R, A in memory
  LumPixelLayoutYUV411 = 8,      // U Y0 Y1 V Y2 Y3: four pixels in six bytes
  LumPixelLayoutYUV422 = 9,      // U Y0 V Y1: two pixels in four bytes (UYVY)
  LumPixelLayoutYUV444 = 10      // U Y V: one pixel in three bytes
};

// The packing that the layouts MonoPacked and RawPacked mean is the first of the three in use; the
// other two hold the same bits elsewhere, and read as the first they give speckled pictures. a and
// b are the samples of a pair, a the left one; bits from the most significant to the least.
//
//                                            byte 0      byte 1                byte 2
//   GigE Vision, PFNC "Packed": read here    a[11..4]    b[3..0] a[3..0]       b[11..4]
//   PFNC "12p"                               a[7..0]     b[3..0] a[11..8]      b[11..4]
//   MIPI CSI-2 RAW12                         a[11..4]    b[11..4]              b[3..0] a[3..0]

// The colours of the first two rows and columns of a mosaic. Other names of the same thing:
//
//   value  top left  PFNC     V4L2                GStreamer  FFmpeg       OpenCV       older OpenCV
//   0      R G       BayerRG  V4L2_PIX_FMT_SRGGB8 rggb       bayer_rggb8  BayerRGGB2.. BayerBG2..
//          G B
//   1      G B       BayerGB  V4L2_PIX_FMT_SGBRG8 gbrg       bayer_gbrg8  BayerGBRG2.. BayerGR2..
//          R G
//   2      G R       BayerGR  V4L2_PIX_FMT_SGRBG8 grbg       bayer_grbg8  BayerGRBG2.. BayerGB2..
//          B G
//   3      B G       BayerBG  V4L2_PIX_FMT_SBGGR8 bggr       bayer_bggr8  BayerBGGR2.. BayerRG2..
//          G R
//
// PFNC tells the first two samples of the first row; the older OpenCV names tell the second and
// third samples of the second row. Bit 1 of the value is the column of red, bit 0 its row, so that
//
//   a region that starts at an odd column      value ^ 2
//   a region that starts at an odd row         value ^ 1
//   mirrored left to right, width even         value ^ 2       (width odd: unchanged)
//   turned upside down, height even            value ^ 1       (height odd: unchanged)
typedef uint32_t LumBayerPattern;
enum {
  LumBayerPatternRGGB = 0,
  LumBayerPatternGBRG = 1,
  LumBayerPatternGRBG = 2,
  LumBayerPatternBGGR = 3,
  LumBayerPatternNone = 255  // no mosaic
};

// Which luminance a mono destination holds. Undefined counts as BT.601.
//   BT.601  (77 R + 150 G + 29 B) >> 8, truncated
//   BT.709  (54 R + 184 G + 18 B + 128) >> 8, rounded
typedef uint32_t LumColorSpace;
enum { LumColorSpaceUndefined = 0, LumColorSpaceItuBt709 = 1, LumColorSpaceItuBt601 = 2 };

// Destination formats, written in memory order. 16-bit samples are words in host order.
//
//   index  name            bytes per pixel  written
//   0      MONO8_REC601    1                luminance BT.601
//   1      BGR24           3                B, G, R
//   2      BGRA32          4                B, G, R; the fourth byte only from sources with alpha
//   3      RGB24           3                R, G, B
//   4      RGBA32          4                R, G, B; the fourth byte only from sources with alpha
//   5      MONO8_REC709    1                luminance BT.709
//   6      UYVY            2                U, Y0, V, Y1 for a pair of pixels, BT.601
//   7      MONO16_REC601   2                luminance BT.601
//   8      MONO16_REC709   2                luminance BT.709
//   9      BGR48           6                B, G, R
//   10     RGB48           6                R, G, B
//
// pixel_bytes(format) below is the third column.
typedef uint32_t LumSimpleImageFormat;
enum {
  LUM_FORMAT_MONO8_REC601 = 0,
  LUM_FORMAT_BGR24 = 1,
  LUM_FORMAT_BGRA32 = 2,
  LUM_FORMAT_RGB24 = 3,
  LUM_FORMAT_RGBA32 = 4,
  LUM_FORMAT_MONO8_REC709 = 5,
  LUM_FORMAT_UYVY = 6,
  LUM_FORMAT_MONO16_REC601 = 7,
  LUM_FORMAT_MONO16_REC709 = 8,
  LUM_FORMAT_BGR48 = 9,
  LUM_FORMAT_RGB48 = 10
};

// How an 8-bit mosaic becomes colour, from the fastest to the best but for the last.
typedef uint32_t LumDebayerMode;
enum {
  LumDebayerMode2x2 = 0,    // the 2x2 block at the pixel: fastest, half a pixel of shift
  LumDebayerMode3x3 = 1,    // bilinear
  LumDebayerModeLCAA = 2,   // directional colour differences, low-passed along their direction
  LumDebayerModeLCAAV = 3,  // the same with edge-aware transfer and a second low-pass across
  LumDebayerModeYUV422 = 4  // full luminance, one colour difference for a pixel pair: for UYVY
};

// What an entry of the parameter array of LumImageTransform holds.
typedef uint32_t LumTransformType;
enum {
  LumTransformTypeDebayerMode = 0,
  LumTransformTypeColorCorrectionMatrix = 1,
  LumTransformTypeGammaCorrection = 2  // accepted and ignored
};

// Camera pixel formats: values of the GenICam pixel format naming convention (PFNC). The list is
// complete: no function takes another code. Words of 16 bits are little-endian, the significant
// bits at the bottom.
typedef uint32_t LumPixelFormat;
enum {
  LumPixelFormatMono8 = 0x01080001,
  LumPixelFormatMono10 = 0x01100003,
  LumPixelFormatMono12 = 0x01100005,
  LumPixelFormatMono12Packed = 0x010C0006,
  LumPixelFormatMono14 = 0x01100025,
  LumPixelFormatMono16 = 0x01100007,
  LumPixelFormatBayerGR8 = 0x01080008,
  LumPixelFormatBayerRG8 = 0x01080009,
  LumPixelFormatBayerGB8 = 0x0108000A,
  LumPixelFormatBayerBG8 = 0x0108000B,
  LumPixelFormatBayerGR10 = 0x0110000C,
  LumPixelFormatBayerRG10 = 0x0110000D,
  LumPixelFormatBayerGB10 = 0x0110000E,
  LumPixelFormatBayerBG10 = 0x0110000F,
  LumPixelFormatBayerGR12 = 0x01100010,
  LumPixelFormatBayerRG12 = 0x01100011,
  LumPixelFormatBayerGB12 = 0x01100012,
  LumPixelFormatBayerBG12 = 0x01100013,
  LumPixelFormatBayerGR12Packed = 0x010C002A,
  LumPixelFormatBayerRG12Packed = 0x010C002B,
  LumPixelFormatBayerGB12Packed = 0x010C002C,
  LumPixelFormatBayerBG12Packed = 0x010C002D,
  LumPixelFormatBayerGR16 = 0x0110002E,
  LumPixelFormatBayerRG16 = 0x0110002F,
  LumPixelFormatBayerGB16 = 0x01100030,
  LumPixelFormatBayerBG16 = 0x01100031,
  LumPixelFormatRgb8 = 0x02180014,
  LumPixelFormatBgr8 = 0x02180015,
  LumPixelFormatArgb8 = 0x02200016,  // another name of Rgba8: R, G, B, A in memory
  LumPixelFormatRgba8 = 0x02200016,
  LumPixelFormatBgra8 = 0x02200017,
  LumPixelFormatRgb12 = 0x0230001A,  // can be described, not converted
  LumPixelFormatRgb16 = 0x02300033,  // can be described, not converted
  LumPixelFormatYuv411 = 0x020C001E,
  LumPixelFormatYuv422 = 0x0210001F,
  LumPixelFormatYuv444 = 0x02180020
};

// ---------------------------------------------------------------------------------------------
// 2 Result codes
//
// Two families share the 32 bits of a result. Functions that take records return LumErrorType, a
// signed value. Functions that take bare buffers return the unsigned legacy codes.
// LumImageTransform and LumTransformOLD return their own refusals as LumErrorType and pass the
// legacy code of the transform they chose on as it is; compare it with (int32_t)LUM_LEGACY_.... 0
// is success in both.

// This library returns 0, -7, -8 and, from LumGetVersion and LumGetTechnoInfo, what a legacy code
// translates to; the others belong to the camera interface that shares the numbers.
typedef int32_t LumErrorType;
enum {
  LumErrorSuccess = 0,
  LumErrorInternalFault = -1,
  LumErrorApiNotStarted = -2,
  LumErrorNotFound = -3,
  LumErrorBadHandle = -4,
  LumErrorDeviceNotOpen = -5,
  LumErrorInvalidAccess = -6,
  LumErrorBadParameter = -7,  // an argument or a field is invalid, or a pair of formats has no way
  LumErrorStructSize = -8,    // LumImage.size is not 56
  LumErrorMoreData = -9,
  LumErrorWrongType = -10,
  LumErrorInvalidValue = -11,
  LumErrorTimeout = -12,
  LumErrorOther = -13,
  LumErrorResources = -14,
  LumErrorInvalidCall = -15,
  LumErrorNoTL = -16,
  LumErrorNotImplemented = -17,
  LumErrorNotSupported = -18
};

// 0x88000001 + k: argument k (from 1) is invalid.
#define LUM_LEGACY_PARAMETER_1 UINT32_C(0x88000002)
#define LUM_LEGACY_PARAMETER_2 UINT32_C(0x88000003)
#define LUM_LEGACY_PARAMETER_3 UINT32_C(0x88000004)
#define LUM_LEGACY_PARAMETER_4 UINT32_C(0x88000005)
#define LUM_LEGACY_PARAMETER_5 UINT32_C(0x88000006)
#define LUM_LEGACY_PARAMETER_6 UINT32_C(0x88000007)
#define LUM_LEGACY_PARAMETER_7 UINT32_C(0x88000008)
#define LUM_LEGACY_PARAMETER_8 UINT32_C(0x88000009)
#define LUM_LEGACY_NOT_IMPLEMENTED UINT32_C(0x88000012)  // format or mode not served
#define LUM_LEGACY_OUT_OF_MEMORY UINT32_C(0x8800001A)
#define LUM_LEGACY_MORE_DATA UINT32_C(234)  // LumGetErrorInfo: the text was cut

// ---------------------------------------------------------------------------------------------
// 3 Records

// What a pixel is. The bits of a 16-bit sample lie like this, 12 used bits taken as the example:
//
//   alignment 0, top     byte of bits 15..8: vvvvvvvv   byte of bits 7..0: vvvv0000
//   alignment 1, bottom  byte of bits 15..8: 0000vvvv   byte of bits 7..0: vvvvvvvv
//
//   endianness 0, little: the byte of bits 7..0 comes first in memory (GigE Vision, USB3 Vision)
//   endianness 1, big:    the byte of bits 15..8 comes first in memory (IIDC)
typedef struct LumPixelInfo {
  uint32_t bitsPerPixel;  // storage of one pixel: 8, 12, 16, 24, 32 or 48
  uint32_t bitsUsed;      // significant bits of one pixel; 16-bit sources only
  uint32_t alignment;     // 0 or 1; 16-bit sources only
  uint32_t endianness;    // 0 or 1; 16-bit sources only
  LumPixelLayout pixelLayout;
  LumBayerPattern bayerPattern;  // mosaic sources only
} LumPixelInfo;

typedef struct LumImageInfo {
  uint32_t width;   // pixels in a row
  uint32_t height;  // rows
  uint32_t stride;  // set to the width by the set-up functions, read by no function
  LumPixelInfo pixelInfo;
  LumColorSpace colorSpace;  // mono destinations only
} LumImageInfo;

typedef struct LumImage {
  uint32_t size;  // sizeof(LumImage), 56: set it before any function gets the record
  uint8_t* data;  // first byte of the pixels; not written in a source
  LumImageInfo imageInfo;
} LumImage;

typedef union LumTransformParameter {
  LumDebayerMode debayerMode;
  float matrix[9];  // row-major: rows give R, G, B; columns take R, G, B
  float gamma;
} LumTransformParameter;

// An entry of the parameter array of LumImageTransform.
typedef struct LumTransformInfo {
  LumTransformType transformType;
  LumTransformParameter parameter;
} LumTransformInfo;

// What a 16-bit sample is, for the Ex transforms.
typedef struct LumBitDepthInfo {
  uint32_t reserved;             // 0, not read
  uint32_t alignment;            // 0 or 1, as in LumPixelInfo
  uint32_t bitsUsed;             // as the function says; not read with alignment 0
  uint32_t endianness;           // 0 or 1, as in LumPixelInfo
  LumBayerPattern bayerPattern;  // not read for mono
} LumBitDepthInfo;

// A colour matrix as the _CC transforms take it.
typedef struct LumColorCorrection {
  uint32_t kind;            // 2: made for 8-bit samples, 3: for deeper ones; both treated alike
  int32_t coefficients[9];  // times 1024; row-major: rows give R, G, B, columns take R, G, B
} LumColorCorrection;

#if defined(__cplusplus)
#define LUM_ASSERT(name, condition) static_assert(condition, #name)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define LUM_ASSERT(name, condition) _Static_assert(condition, #name)
#else
#define LUM_ASSERT(name, condition) extern char LumAssert_##name[(condition) ? 1 : -1]
#endif
#define LUM_ASSERT_SIZE(type, bytes) LUM_ASSERT(type##_size, sizeof(type) == (bytes))
#define LUM_ASSERT_AT(type, field, bytes) \
  LUM_ASSERT(type##_##field, offsetof(type, field) == (bytes))

LUM_ASSERT_SIZE(LumPixelInfo, 24);
LUM_ASSERT_AT(LumPixelInfo, bitsPerPixel, 0);
LUM_ASSERT_AT(LumPixelInfo, bitsUsed, 4);
LUM_ASSERT_AT(LumPixelInfo, alignment, 8);
LUM_ASSERT_AT(LumPixelInfo, endianness, 12);
LUM_ASSERT_AT(LumPixelInfo, pixelLayout, 16);
LUM_ASSERT_AT(LumPixelInfo, bayerPattern, 20);
LUM_ASSERT_SIZE(LumImageInfo, 40);
LUM_ASSERT_AT(LumImageInfo, width, 0);
LUM_ASSERT_AT(LumImageInfo, height, 4);
LUM_ASSERT_AT(LumImageInfo, stride, 8);
LUM_ASSERT_AT(LumImageInfo, pixelInfo, 12);
LUM_ASSERT_AT(LumImageInfo, colorSpace, 36);
LUM_ASSERT_SIZE(LumImage, 56);
LUM_ASSERT_AT(LumImage, size, 0);
LUM_ASSERT_AT(LumImage, data, 8);
LUM_ASSERT_AT(LumImage, imageInfo, 16);
LUM_ASSERT_SIZE(LumTransformParameter, 36);
LUM_ASSERT_SIZE(LumTransformInfo, 40);
LUM_ASSERT_AT(LumTransformInfo, transformType, 0);
LUM_ASSERT_AT(LumTransformInfo, parameter, 4);
LUM_ASSERT_SIZE(LumBitDepthInfo, 20);
LUM_ASSERT_AT(LumBitDepthInfo, reserved, 0);
LUM_ASSERT_AT(LumBitDepthInfo, alignment, 4);
LUM_ASSERT_AT(LumBitDepthInfo, bitsUsed, 8);
LUM_ASSERT_AT(LumBitDepthInfo, endianness, 12);
LUM_ASSERT_AT(LumBitDepthInfo, bayerPattern, 16);
LUM_ASSERT_SIZE(LumColorCorrection, 40);
LUM_ASSERT_AT(LumColorCorrection, kind, 0);
LUM_ASSERT_AT(LumColorCorrection, coefficients, 4);

#undef LUM_ASSERT_AT
#undef LUM_ASSERT_SIZE
#undef LUM_ASSERT

// ---------------------------------------------------------------------------------------------
// 4 Set-up and queries
//
// Threads: pure functions of their arguments; several may fill different records at once, the first
// look-up of a name included.

// Describes a frame as a camera delivers it.
//   code           a LumPixelFormat
//   width, height  pixels, any value
//   image          its size must be 56; data is neither read nor written
// Writes width, height, stride = width, bitsPerPixel, bitsUsed, pixelLayout, bayerPattern,
// colorSpace, alignment 1, endianness 0.
// Checks: image null: -7; size not 56: -8; code unknown: -7 (width, height and stride are then
// written).
// Returns 0, -7, -8.
LUM_API int32_t LumSetImageInfoFromPixelFormat(uint32_t code, uint32_t width, uint32_t height,
                                               LumImage* image);

// Describes a destination. LumImageTransform reads the same format out of the record again.
//   simpleFormat   a LumSimpleImageFormat, 0 to 10
//   width, height  pixels, any value
//   image          its size must be 56; data is neither read nor written
// Writes width, height, stride = width, bitsPerPixel, bitsUsed = bitsPerPixel, pixelLayout,
// bayerPattern 255, alignment 1, endianness 0, and colorSpace: 1 for the REC709 formats, 2 for the
// REC601 formats and UYVY, 0 for the others.
// Checks: image null: -7; size not 56: -8; simpleFormat above 10: -7 (width, height and stride are
// then written).
// Returns 0, -7, -8.
LUM_API int32_t LumSetImageInfoOutput(uint32_t simpleFormat, uint32_t width, uint32_t height,
                                      LumImage* image);

// Describes a frame by the name of its format: a name of the table at LumSimpleImageFormat,
// "YUV422" (UYVY as well), or "PixelFormat" and a camera format as in LumPixelFormat..., such as
// "PixelFormatBayerRG8". Case does not matter, and a leading "Lum" may be there or not.
//   name           zero-terminated
//   nameLength     characters of the name; above 3 it permits the leading "Lum", no other use
//   width, height  pixels, any value
//   image          its size must be 56; data is neither read nor written
// Writes the fields that LumSetImageInfoOutput or LumSetImageInfoFromPixelFormat writes.
// Checks: name or image null: -7; size not 56: -8; name unknown: -7 (nothing is written).
// Returns 0, -7, -8.
LUM_API int32_t LumSetImageInfoFromString(const char* name, uint32_t nameLength, uint32_t width,
                                          uint32_t height, LumImage* image);

// Storage bits of one pixel of a camera format: 8, 12, 16, 24, 32 or 48.
// Checks: out null: -7; code unknown: -7. Nothing is written then. Returns 0, -7.
LUM_API int32_t LumBitsPerPixel(uint32_t* out, uint32_t code);

// Significant bits of one pixel of a camera format: 8 to 48.
// Checks: out null: -7; code unknown: -7. Nothing is written then. Returns 0, -7.
LUM_API int32_t LumBitsPerPixelUsed(uint32_t* out, uint32_t code);

// LumBayerPattern of a camera format, 255 for one that is no mosaic.
// Checks: out null: -7; code unknown: -7. Nothing is written then. Returns 0, -7.
LUM_API int32_t LumGetBayerPattern(uint32_t* out, uint32_t code);

// LumPixelLayout of a camera format.
// Checks: out null: -7; code unknown: -7. Nothing is written then. Returns 0, -7.
LUM_API int32_t LumGetPixelLayout(uint32_t* out, uint32_t code);

// LumColorSpace of a camera format: 2 for the YUV formats, 0 for every other value, known or not.
// Checks: out null: -7. Returns 0, -7.
LUM_API int32_t LumGetColorSpace(uint32_t* out, uint32_t code);

// 1 for the RGB and YUV families, 0 for mono and for mosaics, which become colour by demosaicing.
// Checks: out null: -7; code unknown or LumPixelFormatRgb12: -7. Nothing is written then.
// Returns 0, -7.
LUM_API int32_t LumIsColor(uint8_t* out, uint32_t code);

// 1 for mosaics, 0 for all others.
// Checks: out null: -7; code unknown or LumPixelFormatRgb12: -7. Nothing is written then.
// Returns 0, -7.
LUM_API int32_t LumHasBayerPattern(uint8_t* out, uint32_t code);

// ---------------------------------------------------------------------------------------------
// 5 Generic transform
//
// Threads: no state; any number of frames may be converted at once. A source may be shared.

// Converts a frame from the format that source describes into the one that destination describes.
//   source          LumImage with data, size 56
//   destination     LumImage with data, size 56, the same width and height;
//                   width * height * pixel_bytes(format) bytes are written, one more from Mono
//                   8 to UYVY with an odd number of pixels
//   parameters      array of entries, or null for none
//   parameterCount  number of entries, or 0 for none; of each type the first entry counts
//
// The destination format follows from pixelLayout, bitsPerPixel and, for mono, colorSpace:
//   Mono 8         colorSpace 0, 2: MONO8_REC601    1: MONO8_REC709
//   Mono 16        colorSpace 0, 2: MONO16_REC601   1: MONO16_REC709
//   Mono           colorSpace above 2: as RGB
//   RGB 24, 48     RGB24, RGB48                     BGR 24, 48   BGR24, BGR48
//   RGBA 32        RGBA32                           BGRA 32      BGRA32
//   YUV422         UYVY, whatever bitsPerPixel says
//
// The source chooses the transform; sections 6 to 8 tell what each serves, reads and refuses. The
// bytes of the source that it reads, n being width * height (which must stay below 2^32):
//   Mono 8                    LumY8ImageTransform                            n
//   Mono 16, 16 bits used     endianness not 0: LumY16ImageTransform         2n
//                             endianness 0: the same for little-endian words; the tint of a
//                             pixel comes from the low byte of the one after it, the last pixel
//                             has none                                       2n
//   Mono 16, fewer bits used  LumY16ImageTransformEx                         2n
//   MonoPacked 12             LumY12ImageTransform                           n / 2 * 3
//   RGB 24, BGR 24            LumRGB8ImageTransform, LumBGR8ImageTransform   3n
//   BGR 32, RGBA 32           LumRGBA8ImageTransform (BGR 32 is read as R, G, B, A)       4n
//   BGRA 32                   LumBGRA8ImageTransform                         4n
//   YUV411, YUV422, YUV444    LumYUV411ImageTransform ..., any bitsPerPixel  n / 2 * 3, 2n, 3n
//   Raw 8                     LumRaw8ImageTransform or, with a debayer entry of mode 1 to 4, _3x3,
//                             _IntLCAA, _IntLCAAV, _IntYUV422                n
//   RawPacked 12              LumRaw12ImageTransform                         n / 2 * 3
//   Raw 16, 16 bits used, endianness 1   LumRaw16ImageTransform              2n
//   Raw 16, all others        LumRaw16ImageTransformEx                       2n
// RawPacked, BGR, RGBA and BGRA with 8 or 16 bits are treated as Raw with as many, and BGR, RGBA
// and BGRA with 12 bits as RawPacked 12. Every other pair of layout and bits is refused.
//
// With a colour matrix entry, mosaics go a way of their own: the 2x2 blocks of
// LumRaw8ImageTransform, each corrected by the matrix (coefficients become fixed point with 10
// fractional bits, truncated, saturating, not-a-number 0), results limited to their range. The
// debayer entry then has no effect.
//   Raw 8 to BGR24                          reads n bytes
//   Raw 8 to MONO8_REC601, MONO8_REC709     reads n; both are BT.601; patterns 1 and 2 are taken
//                                           with red and blue exchanged; components beyond 0..255
//                                           are limited by their low 16 bits only
//   Raw 16 to MONO16_REC601, MONO16_REC709  reads 2n; both are BT.601; host-order words, shifted up
//   Raw 16 to BGR48                         by 16 - bitsUsed; no other alignment or byte order;
//                                           bitsUsed 0 or above 16 makes every sample 0
//   RawPacked, any bits, to BGR24, BGR48    reads n / 2 * 3 as 12-bit packed, low nibbles too; an
//                                           odd width writes nothing
//   Raw, any other pair, to BGR24, BGR48    the same: Raw 16 to BGR24 and Raw 8 to BGR48 are read
//                                           as packed data
// Every other pair is refused. A width or a height below 2 writes nothing and is a success. No
// pattern is refused: bits 0 and 1 are the LumBayerPattern.
//
// In place: where the transform permits it. Not written: what the transform leaves unwritten; the
// records are not written at all.
// Checks: destination, source, destination data, source data null: -7; heights differ: -7; widths
// differ: -7; source size, destination size not 56: -8; with a matrix entry: destination format or
// pair not served: -7; without: destination format: -7; source layout above 10: -7; pair of layout
// and bits: -7; debayer mode above 4 for an 8-bit mosaic: -7; then the checks of the transform.
// Returns 0, -7, -8, or a legacy code of the transform as a signed value.
LUM_API int32_t LumImageTransform(const LumImage* source, LumImage* destination,
                                  const LumTransformInfo* parameters, uint32_t parameterCount);

// Makes an entry that chooses the demosaicing of 8-bit mosaics.
//   mode  LumDebayerMode; stored as it is, LumImageTransform checks it
//   info  the entry; all 40 bytes are written, those without a meaning as 0
// Checks: info null: -7. Returns 0, -7.
LUM_API int32_t LumSetDebayerMode(uint32_t mode, LumTransformInfo* info);

// Makes an entry with a colour matrix.
//   matrix  nine floats, row-major: the rows give R, G, B, the columns take R, G, B
//   info    the entry; all 40 bytes are written
// In place: matrix may lie in the entry. Checks: matrix or info null: -7. Returns 0, -7.
LUM_API int32_t LumSetColorCorrectionMatrix3x3(const float* matrix, LumTransformInfo* info);

// Makes an entry with a gamma, which LumImageTransform accepts and ignores. Mind that the entry
// comes first here.
//   info   the entry; all 40 bytes are written, those without a meaning as 0
//   gamma  any value
// Checks: info null: -7. Returns 0, -7.
LUM_API int32_t LumSetGammaCorrection(LumTransformInfo* info, float gamma);

// ---------------------------------------------------------------------------------------------
// 6 Mono sources
//
// A frame is a run of count pixels; rows do not matter.
// Threads: no state; any number of calls at once on different destinations.

// 8-bit mono.
//   dst          count * pixel_bytes(formatIndex) bytes; 2 * count + 1 do for UYVY with an odd
//                count
//   src          count bytes
//   count        pixels, 1 or more
//   formatIndex  0 to 6. UYVY gets U = V = 0, not the neutral 128
// In place: formatIndex 0 and 5. Not written: byte 3 of BGRA32 and RGBA32; Y1 of the last pair of
// UYVY with an odd count.
// Checks: dst null: 0x88000002; src null: 0x88000003; count 0: 0x88000004; formatIndex above 6:
// 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumY8ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                     uint32_t formatIndex);

// 12-bit packed mono (the GigE Vision packing), the upper 8 bits of each pixel.
//   dst          count * pixel_bytes(formatIndex) bytes
//   src          count / 2 * 3 bytes
//   count        pixels, even; 0 writes nothing
//   formatIndex  0 to 5
// In place: no. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; count odd: 0x88000004; formatIndex above 5:
// 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumY12ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                      uint32_t formatIndex);

// 16-bit mono, big-endian, all bits used. The high byte is the grey; bit 7 of the low byte adds 1
// to red, bit 6 to blue (never past 255), a tint that keeps quarter steps apart.
//   dst          count * pixel_bytes(formatIndex) bytes
//   src          2 * count bytes
//   count        pixels, 1 or more
//   formatIndex  0 to 5, 7, 8. 7 and 8 are the source bytes, still big-endian
// In place: formatIndex 7 and 8. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; count 0: 0x88000004; formatIndex 6 or above
// 8: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumY16ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                      uint32_t formatIndex);

// 16-bit mono of either byte order and 10, 12, 13, 14, 15 or 16 bits used. With V the word and s =
// 0 (alignment 0) or 16 - bitsUsed (alignment 1), 8-bit formats hold (V >> (8 - s)) & 255 and
// 16-bit formats (V << s) & 0xFFFF.
//   dst          count * pixel_bytes(formatIndex) bytes
//   src          2 * count bytes
//   count        pixels, 1 or more
//   formatIndex  0 to 5, 7, 8, 9; 16-bit formats in host order
//   bitDepth     alignment, bitsUsed and endianness are read; null: big-endian, 16 bits used
// In place: no. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; count 0: 0x88000004; alignment above 1:
// 0x88000012; formatIndex 6 or above 9: 0x88000012; endianness above 1: 0x88000012; s none of 0, 1,
// 2, 3, 4, 6: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumY16ImageTransformEx(uint8_t* dst, const uint8_t* src, uint32_t count,
                                        uint32_t formatIndex, const LumBitDepthInfo* bitDepth);

// ---------------------------------------------------------------------------------------------
// 7 RGB and YUV sources
//
// A frame is a run of count pixels; rows do not matter. YUV is full range (Y, U, V span 0..255, U
// and V about 128), as IIDC and GigE Vision cameras send it; the U and V of a group serve all its
// pixels.
// Threads: no state; any number of calls at once on different destinations.

// 24-bit R, G, B.
//   dst          count * pixel_bytes(formatIndex) bytes
//   src          3 * count bytes
//   count        pixels; 0 writes nothing
//   formatIndex  0 to 5
// In place: formatIndex 1 and 3. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; formatIndex above 5: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumRGB8ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                       uint32_t formatIndex);

// 24-bit B, G, R.
//   dst          count * pixel_bytes(formatIndex) bytes
//   src          3 * count bytes
//   count        pixels; 0 writes nothing
//   formatIndex  0 to 5
// In place: formatIndex 1 and 3. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; formatIndex above 5: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumBGR8ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                       uint32_t formatIndex);

// 32-bit R, G, B, A. Alpha is copied to BGRA32 and RGBA32.
//   dst          count * pixel_bytes(formatIndex) bytes
//   src          4 * count bytes
//   count        pixels; 0 writes nothing
//   formatIndex  0 to 5
// In place: formatIndex 4. Not written: nothing.
// Checks: dst null: 0x88000002; src null: 0x88000003; formatIndex above 5: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumRGBA8ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                        uint32_t formatIndex);

// 32-bit B, G, R, A. Alpha is copied to BGRA32 and RGBA32.
//   dst          count * pixel_bytes(formatIndex) bytes
//   src          4 * count bytes
//   count        pixels; 0 writes nothing
//   formatIndex  0 to 5
// In place: formatIndex 2. Not written: nothing.
// Checks: dst null: 0x88000002; src null: 0x88000003; formatIndex above 5: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumBGRA8ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                        uint32_t formatIndex);

// YUV 4:1:1, groups of four pixels U Y0 Y1 V Y2 Y3.
//   dst          count * pixel_bytes(formatIndex) bytes
//   src          count / 2 * 3 bytes
//   count        pixels, 4 or more, a multiple of 4
//   formatIndex  0 to 6. 0 is Y as it is; UYVY keeps the full range
// In place: no. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; count 0, then no multiple of 4: 0x88000004;
// formatIndex above 6: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumYUV411ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                         uint32_t formatIndex);

// YUV 4:2:2, groups of two pixels U Y0 V Y1.
//   dst          count * pixel_bytes(formatIndex) bytes
//   src          2 * count bytes
//   count        pixels, 2 or more, even
//   formatIndex  0 to 6. 0 is Y as it is; UYVY is the source as it is, full range
// In place: formatIndex 6. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; count 0, then odd: 0x88000004; formatIndex
// above 6: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumYUV422ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                         uint32_t formatIndex);

// YUV 4:4:4, U Y V.
//   dst          count * pixel_bytes(formatIndex) bytes
//   src          3 * count bytes
//   count        pixels, 1 or more; even for UYVY
//   formatIndex  0 to 6. 0 is Y as it is; UYVY keeps the full range and takes the mean U and V of a
//                pair
// In place: no. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; count 0: 0x88000004; formatIndex above 6:
// 0x88000012; formatIndex 6 with count odd: 0x88000004.
// Returns 0 or one of these.
LUM_API uint32_t LumYUV444ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t count,
                                         uint32_t formatIndex);

// ---------------------------------------------------------------------------------------------
// 8 Bayer sources
//
// The 2x2 transforms take R, B and the truncated mean of both greens from the block whose top left
// sample is the pixel's own; the last column repeats the one before it, and the last row is a copy
// of the row above, alpha bytes included.
// Threads: no state; any number of calls at once on different destinations.

// 8-bit mosaic, 2x2.
//   dst            width * height * pixel_bytes(formatIndex) bytes
//   src            width * height bytes
//   width, height  pixels, even, 2 or more
//   formatIndex    0 to 6
//   bayerPattern   LumBayerPattern 0 to 3, or 0xFFFFFFFF for BGGR
// In place: no. Not written: byte 3 of BGRA32 and RGBA32, but for the copied last row.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height odd: 0x88000005; bayerPattern: 0x88000006 (the fifth argument's
// code for the sixth); formatIndex above 6: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumRaw8ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t width,
                                       uint32_t height, uint32_t formatIndex,
                                       uint32_t bayerPattern);

// 8-bit mosaic, bilinear.
//   dst            width * height * pixel_bytes(formatIndex) bytes
//   src            width * height bytes
//   width, height  pixels, even, 2 or more
//   formatIndex    0 to 6
//   bayerPattern   LumBayerPattern 0 to 3, or 0xFFFFFFFF for BGGR
// In place: no. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height odd: 0x88000005; bayerPattern: 0x88000006; formatIndex above 6:
// 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumRaw8ImageTransform_3x3(uint8_t* dst, const uint8_t* src, uint32_t width,
                                           uint32_t height, uint32_t formatIndex,
                                           uint32_t bayerPattern);

// 8-bit mosaic, directional colour differences.
//   dst            width * height * pixel_bytes(formatIndex) bytes
//   src            width * height bytes
//   width, height  pixels, even, 2 or more
//   formatIndex    0 to 6
//   bayerPattern   LumBayerPattern 0 to 3, or 0xFFFFFFFF for BGGR
// In place: no. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height odd: 0x88000005; bayerPattern: 0x88000006; formatIndex above 6:
// 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumRaw8ImageTransform_IntLCAA(uint8_t* dst, const uint8_t* src, uint32_t width,
                                               uint32_t height, uint32_t formatIndex,
                                               uint32_t bayerPattern);

// 8-bit mosaic, directional colour differences with edge-aware transfer: the best and the slowest.
//   dst            width * height * pixel_bytes(formatIndex) bytes
//   src            width * height bytes
//   width, height  pixels, even, 2 or more
//   formatIndex    0 to 6
//   bayerPattern   LumBayerPattern 0 to 3, or 0xFFFFFFFF for BGGR
// In place: no. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height odd: 0x88000005; bayerPattern: 0x88000006; formatIndex above 6:
// 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumRaw8ImageTransform_IntLCAAV(uint8_t* dst, const uint8_t* src, uint32_t width,
                                                uint32_t height, uint32_t formatIndex,
                                                uint32_t bayerPattern);

// 8-bit mosaic, full luminance and one colour difference for each pair of pixels.
//   dst            width * height * pixel_bytes(formatIndex) bytes
//   src            width * height bytes
//   width, height  pixels, even, 2 or more
//   formatIndex    0 to 6
//   bayerPattern   LumBayerPattern 0 to 3, or 0xFFFFFFFF for BGGR
// In place: no. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height odd: 0x88000005; bayerPattern: 0x88000006; formatIndex above 6:
// 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumRaw8ImageTransform_IntYUV422(uint8_t* dst, const uint8_t* src, uint32_t width,
                                                 uint32_t height, uint32_t formatIndex,
                                                 uint32_t bayerPattern);

// 8-bit mosaic at half its size, with a pixel for each 2x2 cell: all colours are brought to the
// cell's centre by the samples around it (those beyond the border are mirrored about the border
// sample), so that edges have no colour fringes.
//   dst            width / 2 * height / 2 * pixel_bytes(formatIndex) bytes
//   src            width * height bytes
//   width, height  pixels of the source, even, 2 or more; a multiple of 4 the width for UYVY
//   formatIndex    0 to 6
//   bayerPattern   LumBayerPattern 0 to 3, or 0xFFFFFFFF for BGGR
// In place: no. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height odd: 0x88000005; bayerPattern: 0x88000006; formatIndex above 6:
// 0x88000012; formatIndex 6 with width no multiple of 4: 0x88000004.
// Returns 0 or one of these.
LUM_API uint32_t LumRaw8ImageTransform_Bin(uint8_t* dst, const uint8_t* src, uint32_t width,
                                           uint32_t height, uint32_t formatIndex,
                                           uint32_t bayerPattern);

// 12-bit packed mosaic (the GigE Vision packing), 2x2 on the upper 8 bits of each sample.
//   dst            width * height * pixel_bytes(formatIndex) bytes
//   src            width / 2 * 3 * height bytes
//   width, height  pixels, even, 2 or more
//   formatIndex    0 to 5, 7, 8. 7 and 8 hold the 8-bit luminance, 0..255, in 16-bit words
//   bayerPattern   LumBayerPattern 0 to 3, or 0xFFFFFFFF for BGGR
// In place: no. Not written: byte 3 of BGRA32 and RGBA32, but for the copied last row.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height odd: 0x88000005; bayerPattern: 0x88000006; formatIndex 6 or above
// 8: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumRaw12ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t width,
                                        uint32_t height, uint32_t formatIndex,
                                        uint32_t bayerPattern);

// 16-bit mosaic, big-endian, all bits used, 2x2 on the high bytes.
//   dst            width * height * pixel_bytes(formatIndex) bytes
//   src            2 * width * height bytes
//   width, height  pixels, even, 2 or more
//   formatIndex    0 to 5
//   bayerPattern   LumBayerPattern 0 to 3, or 0xFFFFFFFF for BGGR
// In place: no. Not written: byte 3 of BGRA32 and RGBA32, but for the copied last row.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height odd: 0x88000005; bayerPattern: 0x88000006; formatIndex above 5:
// 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumRaw16ImageTransform(uint8_t* dst, const uint8_t* src, uint32_t width,
                                        uint32_t height, uint32_t formatIndex,
                                        uint32_t bayerPattern);

// 16-bit mosaic of either byte order and 10, 12, 13, 14, 15 or 16 bits used, 2x2. With V the word
// and s = 0 (alignment 0) or 16 - bitsUsed (alignment 1), 8-bit formats are made from (V >> (8 -
// s)) & 255 and 16-bit formats from (V << s) & 0xFFFF.
//   dst            width * height * pixel_bytes(formatIndex) bytes
//   src            2 * width * height bytes
//   width, height  pixels, even, 2 or more
//   formatIndex    0 to 5, 7, 8, 9; 16-bit formats in host order
//   bitDepth       not null; bayerPattern above 3 is not refused: bits 0 and 1 are then the column
//                  and the row of red
// In place: no. Not written: byte 3 of BGRA32 and RGBA32, but for the copied last row.
// Checks: dst null: 0x88000002; src null: 0x88000003; bitDepth null: 0x88000007; width 0:
// 0x88000004; height 0: 0x88000005; width odd: 0x88000004; height odd: 0x88000005; alignment above
// 1: 0x88000012; formatIndex 6 or above 9: 0x88000012; endianness above 1: 0x88000012; s none of 0,
// 1, 2, 3, 4, 6: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumRaw16ImageTransformEx(uint8_t* dst, const uint8_t* src, uint32_t width,
                                          uint32_t height, uint32_t formatIndex,
                                          const LumBitDepthInfo* bitDepth);

// Makes a matrix of floats: once, not once a frame. Coefficients times 1024 are truncated toward
// zero and saturate. A LumColorCorrection that a caller fills does as well.
//   matrix        receives the address of the object, of kind 2; give it back by
//                 LumDestroyColorCorrection
//   coefficients  nine floats, row-major: rows give R, G, B, columns take R, G, B
// On failure *matrix is as it was.
// Checks: matrix null: 0x88000002; coefficients null, then one of them not finite: 0x88000003.
// Returns 0, one of these, or 0x8800001A (out of memory).
LUM_API uint32_t LumCreateColorCorrectionMatrix_Int8(LumColorCorrection** matrix,
                                                     const float* coefficients);

// Gives back an object of LumCreateColorCorrectionMatrix_Int8, no other.
// Checks: matrix null: 0x88000002. Returns 0 or that.
LUM_API uint32_t LumDestroyColorCorrection(LumColorCorrection* matrix);

// The _CC transforms are the 2x2 ones with a matrix: of the block's R, G, B at each pixel
//   R' = (m0 R + m1 G + m2 B) >> 10, limited to the sample's range, G' and B' alike,
// with the exact sum. Luminance and UYVY are made of R', G', B'.

// 8-bit mosaic with a colour matrix, to BGR24.
//   dst            width * height * 3 bytes
//   src            width * height bytes
//   width, height  pixels, even, 2 or more
//   bayerPattern   LumBayerPattern 0 to 3, or 0xFFFFFFFF for BGGR
//   matrix         kind 2 or 3
// In place: no. Not written: nothing.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height odd: 0x88000005; bayerPattern: 0x88000006; matrix null or of
// another kind: 0x88000007.
// Returns 0 or one of these.
LUM_API uint32_t LumRaw8ToBGR_CC(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                                 uint32_t bayerPattern, const LumColorCorrection* matrix);

// 8-bit mosaic with a colour matrix.
//   dst            width * height * pixel_bytes(formatIndex) bytes
//   src            width * height bytes
//   width, height  pixels, even, 2 or more
//   formatIndex    0 to 6
//   bayerPattern   LumBayerPattern 0 to 3, or 0xFFFFFFFF for BGGR
//   matrix         kind 2 or 3
// In place: no. Not written: byte 3 of BGRA32 and RGBA32, but for the copied last row.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height odd: 0x88000005; bayerPattern: 0x88000006; formatIndex above 6:
// 0x88000012; matrix null or of another kind: 0x88000008.
// Returns 0 or one of these.
LUM_API uint32_t LumRaw8ImageTransform_CC(uint8_t* dst, const uint8_t* src, uint32_t width,
                                          uint32_t height, uint32_t formatIndex,
                                          uint32_t bayerPattern, const LumColorCorrection* matrix);

// 12-bit packed mosaic (the GigE Vision packing) with a colour matrix, all 12 bits of each sample.
//   dst            width * height * pixel_bytes(formatIndex) bytes
//   src            width / 2 * 3 * height bytes
//   width, height  pixels, even, 2 or more
//   formatIndex    0 to 10. 8-bit formats get bits 11 to 4 of the corrected 12-bit samples,
//                  limited; 16-bit formats get the samples shifted up by 4, then corrected
//   bayerPattern   LumBayerPattern 0 to 3, or 0xFFFFFFFF for BGGR
//   matrix         kind 2 or 3
// In place: no. Not written: byte 3 of BGRA32 and RGBA32, but for the copied last row.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height odd: 0x88000005; bayerPattern: 0x88000006; formatIndex above 10:
// 0x88000012; matrix null or of another kind: 0x88000008.
// Returns 0 or one of these.
LUM_API uint32_t LumRaw12ImageTransform_CC(uint8_t* dst, const uint8_t* src, uint32_t width,
                                           uint32_t height, uint32_t formatIndex,
                                           uint32_t bayerPattern,
                                           const LumColorCorrection* matrix);

// 16-bit mosaic of either byte order and any number of bits used, with a colour matrix. With V the
// word the samples are V (alignment 0) or (V << (16 - bitsUsed)) & 0xFFFF (alignment 1).
//   dst            width * height * pixel_bytes(formatIndex) bytes
//   src            2 * width * height bytes
//   width, height  pixels, even, 2 or more
//   formatIndex    0 to 10. 8-bit formats get the upper 8 bits of the corrected samples, limited;
//                  16-bit formats in host order
//   bitDepth       not null; bitsUsed 8 to 16 with alignment 1, not read with alignment 0;
//                  bayerPattern 0 to 3
//   matrix         kind 2 or 3
// In place: no. Not written: byte 3 of BGRA32 and RGBA32, but for the copied last row.
// Checks: dst null: 0x88000002; src null: 0x88000003; bitDepth null: 0x88000007; width 0:
// 0x88000004; height 0: 0x88000005; width odd: 0x88000004; height odd: 0x88000005; alignment above
// 1, alignment 1 with bitsUsed none of 8 to 16, bayerPattern above 3: 0x88000012; formatIndex above
// 10: 0x88000012; endianness above 1: 0x88000012; matrix null or of another kind: 0x88000008.
// Returns 0 or one of these.
LUM_API uint32_t LumRaw16ImageTransform_CC(uint8_t* dst, const uint8_t* src, uint32_t width,
                                           uint32_t height, uint32_t formatIndex,
                                           const LumBitDepthInfo* bitDepth,
                                           const LumColorCorrection* matrix);

// Finished B, G, R pixels with a colour matrix: after any demosaic. For pixels in the order R, G, B
// reverse the nine coefficients.
//   dst             3 * pixelCount * bytesPerSample bytes
//   src             as many
//   pixelCount      pixels, 1 or more
//   bytesPerSample  1, or 2 for words in host order
//   matrix          kind 2 or 3
// In place: dst equal to src. Not written: nothing.
// Checks: dst null: 0x88000002; src null: 0x88000003; pixelCount 0: 0x88000004; bytesPerSample:
// 0x88000005; matrix null or of another kind: 0x88000006.
// Returns 0 or one of these.
LUM_API uint32_t LumBGRToBGR_CC(uint8_t* dst, const uint8_t* src, uint32_t pixelCount,
                                uint32_t bytesPerSample, const LumColorCorrection* matrix);

// ---------------------------------------------------------------------------------------------
// 9 CYGM, rows
//
// CYGM frames come from interlaced sensors with a complementary mosaic. The buffer holds two fields
// one after the other; the frame interleaves them, the second field first:
//
//   frame line  field, line      even column  odd column
//   4k          second, 2k       Cy           Ye
//   4k + 1      first, 2k        G            Mg
//   4k + 2      second, 2k + 1   Cy           Ye
//   4k + 3      first, 2k + 1    Mg           G
//
// Threads: no state; any number of calls at once on different buffers.

// 8-bit CYGM mosaic, from the 2x2 block whose top left sample is the pixel's own. The last column
// repeats the one before it, the last row is a copy of the row above, alpha bytes included.
//   dst          width * height * pixel_bytes(formatIndex) bytes
//   src          width * height bytes, two fields
//   width        pixels, even, 2 or more
//   height       rows, a multiple of 4
//   formatIndex  0 to 6
//   reserved     any value, not used
// In place: no. Not written: byte 3 of BGRA32 and RGBA32, but for the copied last row.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height no multiple of 4: 0x88000005; formatIndex above 6: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumIRaw8CYGMImageTransform(uint8_t* dst, const uint8_t* src, uint32_t width,
                                            uint32_t height, uint32_t formatIndex,
                                            uint32_t reserved);

// 8-bit CYGM mosaic to BGR24, an older form: colours as LumIRaw8CYGMImageTransform, edges of its
// own. The last column takes its right neighbours from the sample that follows the row in its
// field, rows height - 4 to height - 2 are copies of row height - 5 (with width 2 they are not
// written).
//   dst     width * height * 3 bytes
//   src     width * height bytes, two fields
//   width   pixels, even; 0 writes nothing
//   height  rows, a multiple of 4, 8 or more; 0 writes nothing
// In place: no. Not written: row height - 1; with width 2 rows height - 4 to height - 1.
// Checks, with a width or height of 0 too: dst null: 0x88000002; src null: 0x88000003; width odd:
// 0x88000004; height no multiple of 4, or 4: 0x88000005.
// Returns 0 or one of these.
LUM_API uint32_t LumIRaw8CYGMToBGR(uint8_t* dst, const uint8_t* src, uint32_t width,
                                   uint32_t height);

// 8-bit CYGM mosaic, from three lines and columns about the pixel: no half-pixel shift, sharper and
// with less zipper at edges than the 2x2 form. Every pixel is computed, borders included: lines and
// columns beyond the frame are mirrored about its outermost ones, and above it colour differences
// change their sign, as the line there has green and magenta the other way round. Equal samples
// give that grey.
//   dst          width * height * pixel_bytes(formatIndex) bytes
//   src          width * height bytes, two fields
//   width        pixels, even, 2 or more
//   height       rows, a multiple of 4
//   formatIndex  0 to 6
//   reserved     any value, not used
// In place: no. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height no multiple of 4: 0x88000005; formatIndex above 6: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumIRaw8CYGMImageTransform_3x3(uint8_t* dst, const uint8_t* src, uint32_t width,
                                                uint32_t height, uint32_t formatIndex,
                                                uint32_t reserved);

// 8-bit CYGM mosaic at half its size: a pixel for each 2x2 block, which has a sample of each
// colour; the lines and columns around it keep edges from being taken for colour.
//   dst          width / 2 * height / 2 * pixel_bytes(formatIndex) bytes
//   src          width * height bytes, two fields
//   width        pixels of the source, even, 2 or more; a multiple of 4 for UYVY
//   height       rows of the source, a multiple of 4
//   formatIndex  0 to 6
//   reserved     any value, not used
// In place: no. Not written: byte 3 of BGRA32 and RGBA32.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height no multiple of 4: 0x88000005; formatIndex above 6: 0x88000012;
// formatIndex 6 with width no multiple of 4: 0x88000004.
// Returns 0 or one of these.
LUM_API uint32_t LumIRaw8CYGMImageTransform_Bin(uint8_t* dst, const uint8_t* src, uint32_t width,
                                                uint32_t height, uint32_t formatIndex,
                                                uint32_t reserved);

// 8-bit CYGM mosaic to luminance, one byte a pixel: that of the 3x3 form before it becomes
// colour, so neither the matrix nor the limits of R, G, B touch it. Its weights are those of
// BT.601.
//   dst     width * height bytes
//   src     width * height bytes, two fields
//   width   pixels, even, 2 or more
//   height  rows, a multiple of 4
// In place: no. Not written: nothing.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// width odd: 0x88000004; height no multiple of 4: 0x88000005.
// Returns 0 or one of these.
LUM_API uint32_t LumIRaw8CYGMToY8(uint8_t* dst, const uint8_t* src, uint32_t width,
                                  uint32_t height);

// Turns an image upside down in place, whatever its pixels are.
//   image     rows * rowBytes bytes
//   rowBytes  bytes of a row, 1 or more
//   rows      2 or more; the middle one of an odd number stays
// A mosaic's pattern becomes pattern ^ 1 when rows is even.
// Checks: image null: 0x88000002; rowBytes 0: 0x88000003; rows 0 or 1: 0x88000004.
// Returns 0 or one of these.
LUM_API uint32_t LumFlipVertical(uint8_t* image, uint32_t rowBytes, uint32_t rows);

// Interleaves two fields: line 2i gets row i of the second field, line 2i + 1 row i of the first.
//   destination  rowBytes * height bytes
//   source       rowBytes * height bytes, the first field in the first half; not written unless it
//                is the destination. In separate buffers with an odd rowBytes the second field is
//                taken to start at height * (rowBytes / 2), height / 2 bytes before the middle
//   rowBytes     bytes of a row, any value
//   height       rows, even; 0 does nothing
// In place: destination equal to source. In separate buffers rowBytes * height must stay below
// 2^32.
// Checks: destination null: 0x88000002; source null: 0x88000003; height odd: 0x88000005.
// Returns 0, one of these, or 0x8800001A (in place only: out of memory, nothing written).
LUM_API uint32_t LumInterlacedToProgressive(uint8_t* destination, uint8_t* source,
                                            uint32_t rowBytes, uint32_t height);

// ---------------------------------------------------------------------------------------------
// 10 Planes and depth
//
// Components apart and together, sampling of chroma, packed and deep samples. But for
// LumImageToI420 a frame is a run of pixels and rows do not matter.
// Threads: no state; any number of calls at once on different destinations.

// YUV of a chosen encoding to BGR24. With u = U - 128, v = V - 128, c = 298 (Y - 16) + 128 and
// every result limited to 0..255:
//
//   encoding             R                     G                           B
//   0 full, BT.601       Y + (359v+128 >> 8)   Y - (88u+183v+128 >> 8)     Y + (454u+128 >> 8)
//   1 studio, BT.601     (c + 409v) >> 8       (c - 100u - 208v) >> 8      (c + 516u) >> 8
//   2 studio, BT.709     (c + 459v) >> 8       (c - 55u - 136v) >> 8       (c + 541u) >> 8
//
// 0 is what cameras send and what the YUV transforms take; 1 decodes the UYVY that this library
// makes of RGB, a flat colour to within 3.
//   dst         3 * pixelCount bytes: B, G, R
//   src         pixelCount * 3 / 2 bytes (4:1:1), * 2 (4:2:2), * 3 (4:4:4)
//   pixelCount  1 or more; a multiple of 4 for 4:1:1, of 2 for 4:2:2
//   layout      LumPixelLayoutYUV411, YUV422 or YUV444
//   encoding    0 to 2
// In place: no. Not written: nothing.
// Checks: dst null: 0x88000002; src null: 0x88000003; pixelCount 0: 0x88000004; layout: 0x88000012;
// pixelCount no such multiple: 0x88000004; encoding above 2: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumYUVToBGR(uint8_t* dst, const uint8_t* src, uint32_t pixelCount, uint32_t layout,
                             uint32_t encoding);

// A frame to planar 4:2:0, as video encoders take it: the plane of Y, then that of U, then that of
// V. Mono and the RGB family become studio range BT.601; mono counts as R = G = B. With r, g, b the
// sums over 2x2 pixels:
//   Y = ((66 R + 129 G + 25 B + 128) >> 8) + 16
//   U = ((-38 r - 74 g + 112 b + 512) >> 10) + 128, V = ((112 r - 94 g - 18 b + 512) >> 10) + 128
// YUV keeps its range: Y is copied, U and V are rounded means of the values of 2x2 pixels.
//   dst     width * height * 3 / 2 bytes
//   src     width * height pixels of the layout
//   width   pixels, even, 2 or more; a multiple of 4 for 4:1:1
//   height  rows, even, 2 or more
//   layout  LumPixelLayoutMono (8 bits a pixel), RGB, BGR, RGBA, BGRA, YUV411, YUV422 or YUV444
// In place: no. Not written: nothing.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// layout: 0x88000012; width odd, or for 4:1:1 no multiple of 4: 0x88000004; height odd: 0x88000005.
// Returns 0 or one of these.
LUM_API uint32_t LumImageToI420(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                                uint32_t layout);

// Interleaved components to planes. The order of the pointers is the caller's: BGR24 to planes of
// R, G and B is {b, g, r}.
//   planes          channels pointers; plane i gets component i of every pixel, pixelCount *
//                   bytesPerSample bytes. A null one is skipped
//   src             pixelCount * channels * bytesPerSample bytes
//   pixelCount      1 or more
//   channels        2 to 4
//   bytesPerSample  1 or 2
// In place: no. Not written: nothing.
// Checks: planes null: 0x88000002; src null: 0x88000003; pixelCount 0: 0x88000004; channels:
// 0x88000005; bytesPerSample: 0x88000006; all planes null: 0x88000002.
// Returns 0 or one of these.
LUM_API uint32_t LumPackedToPlanar(uint8_t* const* planes, const uint8_t* src, uint32_t pixelCount,
                                   uint32_t channels, uint32_t bytesPerSample);

// Planes to interleaved components, the reverse of LumPackedToPlanar.
//   dst             pixelCount * channels * bytesPerSample bytes
//   planes          channels pointers to pixelCount * bytesPerSample bytes each; the component of a
//                   null one stays as it is in dst, as an alpha byte may
//   pixelCount      1 or more
//   channels        2 to 4
//   bytesPerSample  1 or 2
// In place: no. Not written: components without a plane; no other thread may write them meanwhile.
// Checks: dst null: 0x88000002; planes null: 0x88000003; pixelCount 0: 0x88000004; channels:
// 0x88000005; bytesPerSample: 0x88000006; all planes null: 0x88000003.
// Returns 0 or one of these.
LUM_API uint32_t LumPlanarToPacked(uint8_t* dst, const uint8_t* const* planes, uint32_t pixelCount,
                                   uint32_t channels, uint32_t bytesPerSample);

// Packed samples of 10 and 12 bits, mono or mosaic, to words. Groups follow each other without
// regard to rows.
//
//   packing                        samples in bytes  values
//   0  12-bit, GigE Vision packed  2 in 3            b0 << 4 | b1 & 15, b2 << 4 | b1 >> 4
//   1  10-bit, GigE Vision packed  2 in 3            b0 << 2 | b1 & 3, b2 << 2 | (b1 >> 4) & 3
//   2  12-bit, PFNC "12p"          2 in 3            little-endian, 12 bits each from below
//   3  10-bit, PFNC "10p"          4 in 5            little-endian, 10 bits each from below
//   4  12-bit, MIPI CSI-2          2 in 3            b0 << 4 | b2 & 15, b1 << 4 | b2 >> 4
//   5  10-bit, MIPI CSI-2          4 in 5            bi << 2 | (b4 >> 2i) & 3, i = 0..3
//
//   dst         2 * pixelCount bytes
//   src         pixelCount / 2 * 3 bytes, or pixelCount / 4 * 5
//   pixelCount  1 or more, a multiple of the samples in a group
//   packing     0 to 5
//   bitDepth    of the destination: alignment 0 has the samples shifted up to bit 15, 1 as they
//               are; endianness is the byte order. Not read: the other fields
// In place: no. Not written: nothing.
// Checks: dst null: 0x88000002; src null: 0x88000003; pixelCount 0: 0x88000004; packing above 5:
// 0x88000012; pixelCount no multiple: 0x88000004; bitDepth null: 0x88000006; alignment or
// endianness above 1: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumUnpackTo16(uint8_t* dst, const uint8_t* src, uint32_t pixelCount,
                               uint32_t packing, const LumBitDepthInfo* bitDepth);

// Words to bytes, whatever the samples are. With V the word, alignment 0 gives V >> 8 and alignment
// 1 gives min(255, V >> (bitsUsed - 8)): bits above bitsUsed saturate.
//   dst          sampleCount bytes
//   src          2 * sampleCount bytes
//   sampleCount  samples, 1 or more; of three-channel pixels three times their number
//   bitDepth     alignment, endianness and with alignment 1 bitsUsed, 8 to 16; the other fields are
//                not read
// In place: dst equal to src. Not written: nothing.
// Checks: dst null: 0x88000002; src null: 0x88000003; sampleCount 0: 0x88000004; bitDepth null:
// 0x88000005; alignment above 1, bitsUsed, endianness above 1: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumSamples16To8(uint8_t* dst, const uint8_t* src, uint32_t sampleCount,
                                 const LumBitDepthInfo* bitDepth);

// ---------------------------------------------------------------------------------------------
// 11 Geometry
//
// Threads: no state; any number of calls at once on different destinations.

// Mirrors and turns an image. mode is a sum: 1 left to right, 2 upside down, 4 rows and columns
// exchanged before those:
//
//   0 copy    1 mirrored    2 upside down    3 turned by 180
//   4 transposed    5 turned by 90 clockwise    6 turned by 90 anticlockwise    7 other diagonal
//
//   dst            width * height * bytesPerPixel bytes; from mode 4 on its rows have height pixels
//   src            as many bytes
//   width, height  of src, in pixels, 1 or more
//   bytesPerPixel  1 to 16; a pixel is moved whole
//   mode           0 to 7
// In place: dst equal to src with modes 0 to 3. Not written: nothing.
// A mosaic's pattern becomes pattern ^ 2 under 1 when the new width is even, pattern ^ 1 under 2
// when the new height is even; under 4 patterns 1 and 2 change places first. Packed samples and
// UYVY share bytes between pixels: only mode 2 suits them.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// bytesPerPixel: 0x88000006; mode above 7: 0x88000012; dst equal to src with mode 4 or above:
// 0x88000003.
// Returns 0 or one of these.
LUM_API uint32_t LumFlip(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                         uint32_t bytesPerPixel, uint32_t mode);

// Copies rows from one pitch to another: into and out of padded images and regions of them.
//   dst       row i is written at dst + i * dstPitch
//   src       row i is read at src + i * srcPitch
//   rowBytes  bytes of a row, 1 or more
//   rows      1 or more
//   dstPitch  bytes from row to row, rowBytes or more
//   srcPitch  bytes from row to row, rowBytes or more
// In place: dst equal to src. Not written, nor read: bytes between rows.
// Checks: dst null: 0x88000002; src null: 0x88000003; rowBytes 0: 0x88000004; rows 0: 0x88000005;
// dstPitch: 0x88000006; srcPitch: 0x88000007.
// Returns 0 or one of these.
LUM_API uint32_t LumCopyRows(uint8_t* dst, const uint8_t* src, uint32_t rowBytes, uint32_t rows,
                             uint32_t dstPitch, uint32_t srcPitch);

// Makes one pixel of factorX * factorY: the rounded mean of each channel, (sum + n / 2) / n with n
// = factorX * factorY. Not for mosaics.
//   dst               (width / factorX) * (height / factorY) pixels, sizes rounded down
//   src               width * height pixels; columns and rows that do not fill a block are not read
//   width, height     pixels, not below the factors
//   channels          1 to 4, interleaved
//   bytesPerSample    1 or 2 (words in host order)
//   factorX, factorY  1 to 16
// In place: no. Not written: nothing.
// Checks: dst null: 0x88000002; src null: 0x88000003; width 0: 0x88000004; height 0: 0x88000005;
// channels: 0x88000006; bytesPerSample: 0x88000007; factorX: 0x88000008; factorY: 0x88000009; width
// below factorX: 0x88000004; height below factorY: 0x88000005.
// Returns 0 or one of these.
LUM_API uint32_t LumBin(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                        uint32_t channels, uint32_t bytesPerSample, uint32_t factorX,
                        uint32_t factorY);

// Resamples one row. Pixel x of the result is taken at p = position + x * step, limited to the
// source row, in units of 1/65536 source pixel, pixel centres at whole numbers. Nearest takes pixel
// (p + 32768) >> 16. Linear takes a, the pixel p >> 16, and b, the next one (a itself at the end),
// and gives a + (((b - a) f + 16384) >> 15) with f = (p >> 1) & 32767, channel by channel.
//   dst             dstCount pixels
//   src             srcCount pixels
//   dstCount        1 or more
//   srcCount        1 or more
//   channels        1 to 4, interleaved
//   bytesPerSample  1 or 2 (words in host order)
//   position        of the first pixel, may lie outside the row
//   step            from pixel to pixel; 0 repeats one pixel
//   mode            0 nearest, 1 linear
// In place: no. Not written: nothing.
// Checks: dst null: 0x88000002; src null: 0x88000003; dstCount 0: 0x88000004; srcCount 0:
// 0x88000005; channels: 0x88000006; bytesPerSample: 0x88000007; mode above 1: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumResampleRow(uint8_t* dst, const uint8_t* src, uint32_t dstCount,
                                uint32_t srcCount, uint32_t channels, uint32_t bytesPerSample,
                                int32_t position, uint32_t step, uint32_t mode);

// Resizes an image to any size, rows as by LumResampleRow, then columns likewise, so that the outer
// edges coincide: steps are s = (source size << 16) / destination size, rounded down, and the first
// position is (s >> 1) - 32768. Equal sizes copy. Below half the size linear skips samples: LumBin
// first. Not for mosaics.
//   dst                  dstWidth * dstHeight pixels
//   src                  srcWidth * srcHeight pixels
//   dstWidth, dstHeight  1 to 65535
//   srcWidth, srcHeight  1 to 65535
//   channels             1 to 4, interleaved
//   bytesPerSample       1 or 2 (words in host order)
//   mode                 0 nearest, 1 linear
// In place: no. Not written: nothing.
// Checks: dst null: 0x88000002; src null: 0x88000003; dstWidth, dstHeight, srcWidth, srcHeight:
// 0x88000004, 0x88000005, 0x88000006, 0x88000007; channels: 0x88000008; bytesPerSample: 0x88000009;
// mode above 1: 0x88000012.
// Returns 0 or one of these.
LUM_API uint32_t LumResize(uint8_t* dst, const uint8_t* src, uint32_t dstWidth, uint32_t dstHeight,
                           uint32_t srcWidth, uint32_t srcHeight, uint32_t channels,
                           uint32_t bytesPerSample, uint32_t mode);

// ---------------------------------------------------------------------------------------------
// 12 Information
//
// Threads: only constants are read.

// Version of the library: four parts of 8 bits, the most significant first.
// Checks: version null: -7. Returns 0, -7.
LUM_API int32_t LumGetVersion(uint32_t* version);

// A text about the build.
//   selector    0 "Release X86", 1 "X86", 2 "Release", any other the empty text
//   buffer      receives the text and a terminating zero; a text that does not fit is cut
//   bufferSize  bytes; 0 writes nothing. 12 suffice
// Checks: buffer null: 0x88000002. Returns 0 or that.
LUM_API uint32_t LumGetApiInfoString(uint32_t selector, char* buffer, uint32_t bufferSize);

// Which instruction sets there are and which of them the library was built to use.
//   info  12 bytes, each 0 or 1, in pairs: the processor has it, the library was built with it. The
//         pairs: SSE2, SSSE3, SSE4.1, AVX2, AVX-512 (F, BW, VL, DQ, VBMI, VNNI), NEON
// Checks: info null: (int32_t)0x88000002. Returns 0 or that.
LUM_API int32_t LumGetTechnoInfo(uint8_t* info);

// The English text of a LumErrorType, 0 to -18; "return code not found" for any other code.
//   code        a result
//   buffer      receives the text and a terminating zero; a text that does not fit is cut to
//               bufferSize characters without a zero. 81 bytes suffice
//   bufferSize  bytes, 1 or more
// Checks: buffer null: 0x88000003; bufferSize 0: 0x88000004.
// Returns 0, one of these, or 234 when a text was cut ("return code not found" is cut with 0).
LUM_API uint32_t LumGetErrorInfo(int32_t code, char* buffer, uint32_t bufferSize);

// The English text of a legacy code (0, 0x88000000 and up, also the driver codes 0x8A000000 and up,
// 0xCCCCCCCC) by its 32 bits; "return code not found" for any other code.
//   code        a result, (int32_t) of an unsigned one
//   buffer      receives the text and a terminating zero; a text that does not fit is cut to
//               bufferSize characters without a zero. 64 bytes suffice
//   bufferSize  bytes, 1 or more
// Checks: buffer null: 0x88000003; bufferSize 0: 0x88000004.
// Returns 0, also when the text was cut, or one of these.
LUM_API uint32_t LumGetLegacyErrorInfo(int32_t code, char* buffer, uint32_t bufferSize);

#ifdef __cplusplus
}  // extern "C"

// ---------------------------------------------------------------------------------------------
// 13 Older dispatcher
//
// C++ linkage on purpose: programs that use it were linked against its decorated symbol,
// _Z15LumTransformOLDPvjS_jjij, so there is none that C could call.
// Threads: no state; any number of calls at once on different destinations.

// Converts a frame that is told by its camera pixel format.
//   destinationData  width * height * pixel_bytes(formatIndex) bytes
//   formatIndex      LumSimpleImageFormat; what a source serves is told at its transform
//   sourceData       width * height * bits per pixel / 8 bytes, not written
//   width, height    pixels; width * height must stay below 2^32
//   ignoredArgument  any value, not read
//   pixelFormat      LumPixelFormat
// 8-bit and 12-bit packed sources, RGB8, BGR8, RGBA8, BGRA8 and YUV go to their transforms; mosaics
// are always demosaiced 2x2. Words with fewer than 16 bits used are taken as little-endian with the
// bits at the bottom (LumY16ImageTransformEx, LumRaw16ImageTransformEx), fully used ones as
// big-endian (LumY16ImageTransform, LumRaw16ImageTransform).
// In place: where the transform permits it. Not written: what the transform leaves unwritten.
// Checks: destinationData or sourceData null: -7; pixelFormat unknown, RGB12 or RGB16: -7; then the
// checks of the transform.
// Returns 0, -7, or a legacy code of the transform as a signed value.
LUM_API int32_t LumTransformOLD(void* destinationData, unsigned formatIndex, void* sourceData,
                                unsigned width, unsigned height, int ignoredArgument,
                                unsigned pixelFormat);
#endif

#endif
