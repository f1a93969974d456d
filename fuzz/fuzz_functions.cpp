// SPDX-License-Identifier: MIT
// Every function that converts, with any arguments, against the per-pixel reference.
#include <algorithm>
#include <array>
#include <initializer_list>

#include "harness.h"
#include "lum/lum.h"
#include "reference.h"
#include "reference_direct.h"

namespace lum::fuzz {
namespace {

using reference::Frame;
using reference::Sampler;
using reference::Size;

// ---- Arguments. Sizes are small enough to try many, sometimes wider than the strips and tiles in
// which frames are taken; what a function refuses comes now and then.
uint32_t number(Input& in, uint32_t most) { return in.ConsumeIntegralInRange<uint32_t>(0, most); }

uint32_t multiple(Input& in, uint32_t most, uint32_t step) {
  const uint32_t n = number(in, most);
  return mostly(in) ? n / step * step : n;
}

Size frame_size(Input& in, uint32_t step_x = 2, uint32_t step_y = 2) {
  const uint32_t kind = number(in, 8);
  const uint32_t widest = kind == 0 ? 4500 : kind < 5 ? 20 : 300, highest = kind == 0 ? 8 : 40;
  const uint32_t width = multiple(in, widest, step_x);
  return {width, multiple(in, highest, step_y)};
}
uint32_t u32(size_t n) { return static_cast<uint32_t>(n); }

uint32_t pixel_count(Input& in, uint32_t group) {
  return multiple(in, number(in, 3) == 0 ? 10000 : 300, group);
}

// Every destination and one that is none, which has no size.
uint32_t any_format(Input& in) { return number(in, kSinkCount); }
size_t pixel_bytes(uint32_t format) {
  return format < kSinkCount ? reference::pixel_bytes(format) : 0;
}

uint32_t any_pattern(Input& in) {
  static constexpr uint32_t kOthers[] = {4, 255, UINT32_MAX, UINT32_MAX - 1};
  return mostly(in) ? number(in, 3) : in.PickValueInArray(kOthers);
}

LumBitDepthInfo any_depth(Input& in) {
  LumBitDepthInfo depth = {};
  depth.alignment = number(in, mostly(in) ? 1 : 2);
  depth.bitsUsed = mostly(in) ? 8 + number(in, 8) : number(in, 40);
  depth.endianness = number(in, mostly(in) ? 1 : 2);
  depth.bayerPattern = any_pattern(in);
  return depth;
}
unsigned shift_of(const LumBitDepthInfo& depth) {
  return depth.alignment == 0 ? 0 : 16 - depth.bitsUsed;
}
// Bits 0 and 1 of a pattern that is not refused are the column and the row of red.
uint32_t pattern_of_bits(uint32_t word) {
  static constexpr uint32_t kPattern[] = {LumBayerPatternRGGB, LumBayerPatternGRBG,
                                          LumBayerPatternGBRG, LumBayerPatternBGGR};
  return word <= 3 ? word : kPattern[word & 3];
}

LumColorCorrection any_matrix(Input& in) {
  LumColorCorrection matrix = {};
  matrix.kind = mostly(in) ? 2 + number(in, 1) : number(in, 5);
  // Coefficients of 16 bits have arithmetic of their own.
  const int32_t most = in.PickValueInArray({4096, INT16_MAX, INT32_MAX});
  for (int32_t& m : matrix.coefficients) m = in.ConsumeIntegralInRange<int32_t>(-most - 1, most);
  return matrix;
}

uint32_t any_channels(Input& in) { return mostly(in) ? 1 + number(in, 3) : number(in, 5); }
uint32_t any_sample(Input& in) { return mostly(in) ? 1 + number(in, 1) : number(in, 3); }

// ---- Checks, in the order of lum.h but for those of null pointers. Of the first that fails a call
// returns the code, of the wrong argument or of what is not served.
struct Check {
  bool fails;
  uint32_t code;
};
constexpr uint32_t argument(uint32_t position) { return 0x88000001 + position; }
constexpr uint32_t kNotServed = 0x88000012;

// When none fails, write(dst, src).
template <class Write>
auto after(std::initializer_list<Check> checks, Write write) {
  const auto failed =
      std::find_if(checks.begin(), checks.end(), [](const Check& check) { return check.fails; });
  const uint32_t code = failed == checks.end() ? 0 : failed->code;
  return [=](uint8_t* d, const uint8_t* s) {
    if (code == 0) write(d, s);
    return code;
  };
}
constexpr bool serves(uint32_t formats, uint32_t format) { return (formats >> format & 1) != 0; }

// ---- Runs of pixels
struct Flat {
  const char* name;
  uint32_t (*function)(uint8_t*, const uint8_t*, uint32_t count, uint32_t format);
  size_t group_pixels, group_bytes;
  uint32_t formats, in_place;  // bit i: format i is served, and in place
  bool takes_none;             // of its pixels
  void (*expected)(uint8_t* dst, const uint8_t* src, size_t count, uint32_t format);
};

template <Frame (*read)(const uint8_t*, size_t)>
void store_of(uint8_t* dst, const uint8_t* src, size_t count, uint32_t format) {
  reference::store(format, read(src, count).data(), count, dst);
}
Frame packed12(const uint8_t* src, size_t n) { return reference::mono12_packed(src, n); }
Frame tinted(const uint8_t* src, size_t n) { return reference::mono16_tinted(src, n, false); }
Frame rgb(const uint8_t* src, size_t n) { return reference::colour(src, n, "RGB"); }
Frame bgr(const uint8_t* src, size_t n) { return reference::colour(src, n, "BGR"); }
Frame rgba(const uint8_t* src, size_t n) { return reference::colour(src, n, "RGBA"); }
Frame bgra(const uint8_t* src, size_t n) { return reference::colour(src, n, "BGRA"); }
void words(uint8_t* dst, const uint8_t* src, size_t n, uint32_t format) {
  if (!reference::is_deep(format)) return store_of<tinted>(dst, src, n, format);
  std::copy(src, src + 2 * n, dst);
}
template <int layout>
void yuv(uint8_t* dst, const uint8_t* src, size_t n, uint32_t format) {
  reference::store_yuv(format, src, n, layout, dst);
}

constexpr Flat kFlat[] = {
    {"LumY8ImageTransform", LumY8ImageTransform, 1, 1, 0x7F, 0x21, false,
     store_of<reference::mono8>},
    {"LumY12ImageTransform", LumY12ImageTransform, 2, 3, 0x3F, 0, true, store_of<packed12>},
    {"LumY16ImageTransform", LumY16ImageTransform, 1, 2, 0x1BF, 0x180, false, words},
    {"LumRGB8ImageTransform", LumRGB8ImageTransform, 1, 3, 0x3F, 0xA, true, store_of<rgb>},
    {"LumBGR8ImageTransform", LumBGR8ImageTransform, 1, 3, 0x3F, 0xA, true, store_of<bgr>},
    {"LumRGBA8ImageTransform", LumRGBA8ImageTransform, 1, 4, 0x3F, 0x10, true, store_of<rgba>},
    {"LumBGRA8ImageTransform", LumBGRA8ImageTransform, 1, 4, 0x3F, 0x4, true, store_of<bgra>},
    {"LumYUV411ImageTransform", LumYUV411ImageTransform, 4, 6, 0x7F, 0, false, yuv<411>},
    {"LumYUV422ImageTransform", LumYUV422ImageTransform, 2, 4, 0x7F, 0x40, false, yuv<422>},
    {"LumYUV444ImageTransform", LumYUV444ImageTransform, 1, 3, 0x7F, 0, false, yuv<444>},
};

Call flat(Input& in) {
  const Flat& f = in.PickValueInArray(kFlat);
  const uint32_t format = any_format(in);
  const bool pairs = format == LUM_FORMAT_UYVY && f.function == LumYUV444ImageTransform;
  const uint32_t group = u32(f.group_pixels), count = pixel_count(in, pairs ? 2 : group);
  Call call;
  call.what = describe(f.name, count, format);
  call.src_bytes = count / f.group_pixels * f.group_bytes;
  // The last Y1 of an odd number of pixels is not there.
  call.dst_bytes = count * pixel_bytes(format) + (format == 6 && count % 2 != 0 ? 1 : 0);
  call.in_place = (f.in_place >> format & 1) != 0 && in.ConsumeBool();
  call.run = [=](uint8_t* d, const uint8_t* s) { return f.function(d, s, count, format); };
  call.expected = after({{count == 0 && !f.takes_none, argument(3)},
                         {count % group != 0, argument(3)},
                         {!serves(f.formats, format), kNotServed},
                         {pairs && count % 2 != 0, argument(3)}},
                        [=](uint8_t* d, const uint8_t* s) { f.expected(d, s, count, format); });
  return call;
}

// By which samples of the extended forms are short of a word.
bool serves_shift(unsigned shift) { return shift <= 4 || shift == 6; }

Call mono16_ex(Input& in) {
  const uint32_t format = any_format(in), count = pixel_count(in, 1);
  const LumBitDepthInfo depth = any_depth(in);
  const bool given = mostly(in);
  Call call;
  call.what = describe("LumY16ImageTransformEx", count, format, depth.alignment, depth.bitsUsed,
                       depth.endianness);
  call.src_bytes = 2 * size_t{count};
  call.dst_bytes = count * pixel_bytes(format);
  call.run = [=](uint8_t* d, const uint8_t* s) {
    return LumY16ImageTransformEx(d, s, count, format, given ? &depth : nullptr);
  };
  call.expected = after({{count == 0, argument(3)},
                         {given && depth.alignment > 1, kNotServed},
                         {!serves(0x3BF, format), kNotServed},
                         {given && depth.endianness > 1, kNotServed},
                         {given && !serves_shift(shift_of(depth)), kNotServed}},
                        [=](uint8_t* d, const uint8_t* s) {
                          const bool big = !given || depth.endianness != 0;
                          const Frame frame =
                              reference::mono16(s, count, given ? shift_of(depth) : 0, big,
                                                reference::is_deep(format));
                          reference::store(format, frame.data(), count, d);
                        });
  return call;
}

// ---- Mosaics
bool takes_pattern(uint32_t pattern) { return pattern <= 3 || pattern == UINT32_MAX; }

struct Mosaic {
  const char* name;
  uint32_t (*function)(uint8_t*, const uint8_t*, uint32_t width, uint32_t height, uint32_t format,
                       uint32_t pattern);
  size_t bits;       // of a source pixel
  unsigned divisor;  // of the destination's width and height
  uint32_t step_y;   // rows are a multiple
  uint32_t formats;  // bit i: format i is served
  void (*expected)(uint8_t* dst, const uint8_t* src, Size size, uint32_t format, uint32_t pattern);
};

template <Sampler (*sampler)(const uint8_t* src, size_t width)>
void blocks(uint8_t* dst, const uint8_t* src, Size size, uint32_t format, uint32_t pattern) {
  const Frame frame = reference::bayer(size.width, size.height, pattern, sampler(src, size.width));
  reference::store_mosaic(format, frame, size.width, size.height, dst);
}
Sampler high_bytes(const uint8_t* src, size_t width) {
  return reference::words_to_bytes(src, width, 0, true);
}
void store_frame(uint8_t* dst, uint32_t format, const Frame& frame) {
  reference::store(format, frame.data(), frame.size(), dst);
}
template <reference::Demosaic mode>
void interpolated(uint8_t* dst, const uint8_t* src, Size size, uint32_t format, uint32_t pattern) {
  store_frame(dst, format,
              reference::demosaic(mode, src, static_cast<int>(size.width),
                                  static_cast<int>(size.height), pattern));
}
void bayer_binned(uint8_t* dst, const uint8_t* src, Size size, uint32_t format, uint32_t pattern) {
  store_frame(dst, format,
              reference::bayer_binned(src, static_cast<int>(size.width),
                                      static_cast<int>(size.height), pattern));
}
void cygm(uint8_t* dst, const uint8_t* src, Size size, uint32_t format, uint32_t) {
  reference::store_mosaic(format, reference::cygm(src, size.width, size.height), size.width,
                          size.height, dst);
}
template <Frame (*frame)(const uint8_t*, int, int)>
void cygm_window(uint8_t* dst, const uint8_t* src, Size size, uint32_t format, uint32_t) {
  store_frame(dst, format, frame(src, static_cast<int>(size.width), static_cast<int>(size.height)));
}

constexpr Mosaic kMosaics[] = {
    {"LumRaw8ImageTransform", LumRaw8ImageTransform, 8, 1, 2, 0x7F, blocks<reference::bytes_of>},
    {"LumRaw8ImageTransform_3x3", LumRaw8ImageTransform_3x3, 8, 1, 2, 0x7F,
     interpolated<reference::Demosaic::bilinear>},
    {"LumRaw8ImageTransform_IntLCAA", LumRaw8ImageTransform_IntLCAA, 8, 1, 2, 0x7F,
     interpolated<reference::Demosaic::lcaa>},
    {"LumRaw8ImageTransform_IntLCAAV", LumRaw8ImageTransform_IntLCAAV, 8, 1, 2, 0x7F,
     interpolated<reference::Demosaic::lcaav>},
    {"LumRaw8ImageTransform_IntYUV422", LumRaw8ImageTransform_IntYUV422, 8, 1, 2, 0x7F,
     interpolated<reference::Demosaic::yuv422>},
    {"LumRaw8ImageTransform_Bin", LumRaw8ImageTransform_Bin, 8, 2, 2, 0x7F, bayer_binned},
    {"LumRaw12ImageTransform", LumRaw12ImageTransform, 12, 1, 2, 0x1BF,
     blocks<reference::packed12_high_bytes>},
    {"LumRaw16ImageTransform", LumRaw16ImageTransform, 16, 1, 2, 0x3F, blocks<high_bytes>},
    {"LumIRaw8CYGMImageTransform", LumIRaw8CYGMImageTransform, 8, 1, 4, 0x7F, cygm},
    {"LumIRaw8CYGMImageTransform_3x3", LumIRaw8CYGMImageTransform_3x3, 8, 1, 4, 0x7F,
     cygm_window<reference::cygm_3x3>},
    {"LumIRaw8CYGMImageTransform_Bin", LumIRaw8CYGMImageTransform_Bin, 8, 2, 4, 0x7F,
     cygm_window<reference::cygm_binned>},
};

Call mosaic(Input& in) {
  const Mosaic& m = in.PickValueInArray(kMosaics);
  const uint32_t format = any_format(in);
  const Size size = frame_size(in, m.divisor == 2 && format == 6 ? 4 : 2, m.step_y);
  const uint32_t pattern = any_pattern(in);
  Call call;
  call.what = describe(m.name, size.width, size.height, format, pattern);
  call.src_bytes = size.width * m.bits / 8 * size.height;
  call.dst_bytes = size.width / m.divisor * (size.height / m.divisor) * pixel_bytes(format);
  call.run = [=](uint8_t* d, const uint8_t* s) {
    return m.function(d, s, u32(size.width), u32(size.height), format, pattern);
  };
  call.expected =
      after({{size.width == 0, argument(3)},
             {size.height == 0, argument(4)},
             {size.width % 2 != 0, argument(3)},
             {size.height % m.step_y != 0, argument(4)},
             {m.step_y == 2 && !takes_pattern(pattern), argument(5)},
             {!serves(m.formats, format), kNotServed},
             {m.divisor == 2 && format == LUM_FORMAT_UYVY && size.width % 4 != 0, argument(3)}},
            [=](uint8_t* d, const uint8_t* s) { m.expected(d, s, size, format, pattern); });
  return call;
}

Call mosaic16_ex(Input& in) {
  const Size size = frame_size(in);
  const uint32_t format = any_format(in);
  const LumBitDepthInfo depth = any_depth(in);
  Call call;
  call.what = describe("LumRaw16ImageTransformEx", size.width, size.height, format, depth.alignment,
                       depth.bitsUsed, depth.endianness, depth.bayerPattern);
  call.src_bytes = 2 * size.width * size.height;
  call.dst_bytes = size.width * size.height * pixel_bytes(format);
  call.run = [=](uint8_t* d, const uint8_t* s) {
    return LumRaw16ImageTransformEx(d, s, u32(size.width), u32(size.height), format, &depth);
  };
  call.expected = after(
      {{size.width == 0, argument(3)},
       {size.height == 0, argument(4)},
       {size.width % 2 != 0, argument(3)},
       {size.height % 2 != 0, argument(4)},
       {depth.alignment > 1, kNotServed},
       {!serves(0x3BF, format), kNotServed},
       {depth.endianness > 1, kNotServed},
       {!serves_shift(shift_of(depth)), kNotServed}},
      [=](uint8_t* d, const uint8_t* s) {
        const auto sampler =
            reference::is_deep(format) ? reference::shifted_words : reference::words_to_bytes;
        const Sampler sample = sampler(s, size.width, shift_of(depth), depth.endianness != 0);
        const uint32_t pattern = pattern_of_bits(depth.bayerPattern);
        reference::store_mosaic(format, reference::bayer(size.width, size.height, pattern, sample),
                                size.width, size.height, d);
      });
  return call;
}

Call cygm_others(Input& in) {
  const Size size = frame_size(in, 2, 4);
  const uint32_t w = u32(size.width), h = u32(size.height);
  const size_t pixels = size.width * size.height;
  const bool luma = in.ConsumeBool();
  Call call;
  call.what = describe(luma ? "LumIRaw8CYGMToY8" : "LumIRaw8CYGMToBGR", w, h);
  call.src_bytes = pixels;
  call.dst_bytes = luma ? pixels : 3 * pixels;
  call.run = [=](uint8_t* d, const uint8_t* s) {
    return luma ? LumIRaw8CYGMToY8(d, s, w, h) : LumIRaw8CYGMToBGR(d, s, w, h);
  };
  call.expected = after({{luma && w == 0, argument(3)},
                         {luma && h == 0, argument(4)},
                         {w % 2 != 0, argument(3)},
                         {h % 4 != 0 || (!luma && h == 4), argument(4)}},
                        [=](uint8_t* d, const uint8_t* s) {
                          if (luma) {
                            const reference::Bytes y =
                                reference::cygm_luma(s, static_cast<int>(w), static_cast<int>(h));
                            std::copy(y.begin(), y.end(), d);
                          } else if (pixels > 0) {
                            reference::cygm_to_bgr_direct(s, w, h, d);
                          }
                        });
  return call;
}

// ---- Colour matrices
bool is_matrix(const LumColorCorrection& matrix) { return matrix.kind == 2 || matrix.kind == 3; }
bool is_depth(uint32_t bits) { return bits >= 8 && bits <= 16; }

void store_corrected(uint8_t* dst, Size size, uint32_t format, uint32_t pattern,
                     const Sampler& sample, const LumColorCorrection& matrix, int scale) {
  const bool deep = reference::is_deep(format);
  const Frame frame =
      reference::correct(reference::bayer(size.width, size.height, pattern, sample),
                         matrix.coefficients, deep ? 10 : scale, deep ? 65535 : 255);
  reference::store_mosaic(format, frame, size.width, size.height, dst);
}

Call corrected(Input& in) {
  const Size size = frame_size(in);
  const uint32_t w = u32(size.width), h = u32(size.height), format = any_format(in);
  const uint32_t pattern = any_pattern(in);
  const LumColorCorrection matrix = any_matrix(in);
  LumBitDepthInfo depth = any_depth(in);
  depth.bayerPattern = pattern;
  const uint32_t kind = number(in, 3);
  std::function<void(uint8_t*, const uint8_t*)> expected;
  Call call;
  call.dst_bytes = size.width * size.height * (kind == 0 ? 3 : pixel_bytes(format));
  switch (kind) {
    case 0:
      call.what = describe("LumRaw8ToBGR_CC", w, h, pattern);
      call.src_bytes = size.width * size.height;
      call.run = [=](uint8_t* d, const uint8_t* s) {
        return LumRaw8ToBGR_CC(d, s, w, h, pattern, &matrix);
      };
      expected = [=](uint8_t* d, const uint8_t* s) {
        store_corrected(d, size, LUM_FORMAT_BGR24, pattern, reference::bytes_of(s, w), matrix, 10);
      };
      break;
    case 1:
      call.what = describe("LumRaw8ImageTransform_CC", w, h, format, pattern);
      call.src_bytes = size.width * size.height;
      call.run = [=](uint8_t* d, const uint8_t* s) {
        return LumRaw8ImageTransform_CC(d, s, w, h, format, pattern, &matrix);
      };
      expected = [=](uint8_t* d, const uint8_t* s) {
        store_corrected(d, size, format, pattern, reference::bytes_of(s, w), matrix, 10);
      };
      break;
    case 2:
      call.what = describe("LumRaw12ImageTransform_CC", w, h, format, pattern);
      call.src_bytes = size.width / 2 * 3 * size.height;
      call.run = [=](uint8_t* d, const uint8_t* s) {
        return LumRaw12ImageTransform_CC(d, s, w, h, format, pattern, &matrix);
      };
      expected = [=](uint8_t* d, const uint8_t* s) {
        const Sampler sample = reference::packed12_samples(s, w);
        const int up = reference::is_deep(format) ? 4 : 0;
        store_corrected(
            d, size, format, pattern, [&](size_t x, size_t y) { return sample(x, y) << up; },
            matrix, 14);
      };
      break;
    default:
      call.what = describe("LumRaw16ImageTransform_CC", w, h, format, depth.alignment,
                           depth.bitsUsed, depth.endianness, pattern);
      call.src_bytes = 2 * size.width * size.height;
      call.run = [=](uint8_t* d, const uint8_t* s) {
        return LumRaw16ImageTransform_CC(d, s, w, h, format, &depth, &matrix);
      };
      expected = [=](uint8_t* d, const uint8_t* s) {
        const Sampler sample =
            reference::shifted_words(s, w, shift_of(depth), depth.endianness != 0);
        store_corrected(d, size, format, pattern, sample, matrix, 18);
      };
  }
  const bool words = kind == 3;
  call.expected = after({{w == 0, argument(3)},
                         {h == 0, argument(4)},
                         {w % 2 != 0, argument(3)},
                         {h % 2 != 0, argument(4)},
                         {!words && !takes_pattern(pattern), argument(5)},
                         {words && depth.alignment > 1, kNotServed},
                         {words && depth.alignment == 1 && !is_depth(depth.bitsUsed), kNotServed},
                         {words && pattern > 3, kNotServed},
                         {kind == 1 ? format > 6 : kind > 1 && format > 10, kNotServed},
                         {words && depth.endianness > 1, kNotServed},
                         {!is_matrix(matrix), argument(kind == 0 ? 6 : 7)}},
                        expected);
  for (const int32_t m : matrix.coefficients) call.what += " " + std::to_string(m);
  return call;
}

Call corrected_pixels(Input& in) {
  const uint32_t count = pixel_count(in, 1), bytes = number(in, 3);
  const LumColorCorrection matrix = any_matrix(in);
  Call call;
  call.what = describe("LumBGRToBGR_CC", count, bytes);
  for (const int32_t m : matrix.coefficients) call.what += " " + std::to_string(m);
  call.src_bytes = call.dst_bytes = 3 * size_t{count} * bytes;
  call.in_place = in.ConsumeBool();
  call.run = [=](uint8_t* d, const uint8_t* s) {
    return LumBGRToBGR_CC(d, s, count, bytes, &matrix);
  };
  call.expected = after({{count == 0, argument(3)},
                         {bytes != 1 && bytes != 2, argument(4)},
                         {!is_matrix(matrix), argument(5)}},
                        [=](uint8_t* d, const uint8_t* s) {
                          Frame pixels(count);
                          for (size_t i = 0; i < count; ++i) {
                            pixels[i].b = reference::sample(s, 3 * i, bytes);
                            pixels[i].g = reference::sample(s, 3 * i + 1, bytes);
                            pixels[i].r = reference::sample(s, 3 * i + 2, bytes);
                          }
                          const int top = bytes == 1 ? 255 : 65535;
                          store_frame(d, bytes == 1 ? LUM_FORMAT_BGR24 : LUM_FORMAT_BGR48,
                                      reference::correct(pixels, matrix.coefficients, 10, top));
                        });
  return call;
}

// ---- Planes and depth
Call yuv_to_bgr(Input& in) {
  const uint32_t layout = mostly(in) ? 8 + number(in, 2) : number(in, 12);
  const uint32_t count = pixel_count(in, u32(reference::layout_group(layout)));
  const uint32_t encoding = number(in, 3);
  Call call;
  call.what = describe("LumYUVToBGR", count, layout, encoding);
  call.src_bytes = reference::layout_bytes(layout, count);
  call.dst_bytes = 3 * size_t{count};
  call.run = [=](uint8_t* d, const uint8_t* s) {
    return LumYUVToBGR(d, s, count, layout, encoding);
  };
  call.expected = after(
      {{count == 0, argument(3)},
       {layout < 8 || layout > 10, kNotServed},
       {count % reference::layout_group(layout) != 0, argument(3)},
       {encoding > 2, kNotServed}},
      [=](uint8_t* d, const uint8_t* s) { reference::yuv_to_bgr(d, s, count, layout, encoding); });
  return call;
}

Call i420(Input& in) {
  const uint32_t layout = number(in, 11);
  const Size size = frame_size(in, layout == LumPixelLayoutYUV411 ? 4 : 2, 2);
  const uint32_t w = u32(size.width), h = u32(size.height);
  Call call;
  call.what = describe("LumImageToI420", w, h, layout);
  call.src_bytes = reference::layout_bytes(layout, size.width * size.height);
  call.dst_bytes = size.width * size.height * 3 / 2;
  call.run = [=](uint8_t* d, const uint8_t* s) { return LumImageToI420(d, s, w, h, layout); };
  call.expected = after({{w == 0, argument(3)},
                         {h == 0, argument(4)},
                         {layout > 10 || (layout >= 1 && layout <= 3), kNotServed},
                         {w % (layout == LumPixelLayoutYUV411 ? 4 : 2) != 0, argument(3)},
                         {h % 2 != 0, argument(4)}},
                        [=](uint8_t* d, const uint8_t* s) { reference::i420(d, s, w, h, layout); });
  return call;
}

Call planes(Input& in) {
  const bool splits = in.ConsumeBool();
  const uint32_t count = pixel_count(in, 1), channels = any_channels(in), bytes = any_sample(in);
  const uint32_t present = in.ConsumeIntegral<uint8_t>() | (mostly(in) ? 15 : 0);
  const reference::Planes p = {count, channels, bytes, present};
  Call call;
  call.what =
      describe(splits ? "LumPackedToPlanar" : "LumPlanarToPacked", count, channels, bytes, present);
  call.src_bytes = call.dst_bytes = p.plane_bytes() * channels;
  if (splits) {
    call.run = [=](uint8_t* d, const uint8_t* s) {
      std::array<uint8_t*, 5> to = {};
      for (size_t i = 0; d != nullptr && i < channels; ++i) {
        if (present >> i & 1) to[i] = d + i * p.plane_bytes();
      }
      return LumPackedToPlanar(d == nullptr ? nullptr : to.data(), s, count, channels, bytes);
    };
  } else {
    call.run = [=](uint8_t* d, const uint8_t* s) {
      std::array<const uint8_t*, 5> from = {};
      for (size_t i = 0; s != nullptr && i < channels; ++i) {
        if (present >> i & 1) from[i] = s + i * p.plane_bytes();
      }
      return LumPlanarToPacked(d, s == nullptr ? nullptr : from.data(), count, channels, bytes);
    };
  }
  const uint32_t all = (1u << channels) - 1;
  call.expected = after({{count == 0, argument(3)},
                         {channels < 2 || channels > 4, argument(4)},
                         {bytes < 1 || bytes > 2, argument(5)},
                         {(present & all) == 0, argument(splits ? 1 : 2)}},
                        [=](uint8_t* d, const uint8_t* s) {
                          (splits ? reference::split : reference::join)(d, s, p);
                        });
  return call;
}

Call unpack(Input& in) {
  const uint32_t packing = number(in, 6);
  const reference::PackedGroup group = reference::kPackedGroups[packing % 6];
  const uint32_t count = pixel_count(in, group.pixels);
  const LumBitDepthInfo depth = any_depth(in);
  Call call;
  call.what = describe("LumUnpackTo16", count, packing, depth.alignment, depth.endianness);
  call.src_bytes = count / group.pixels * group.bytes;
  call.dst_bytes = 2 * size_t{count};
  call.run = [=](uint8_t* d, const uint8_t* s) {
    return LumUnpackTo16(d, s, count, packing, &depth);
  };
  call.expected =
      after({{count == 0, argument(3)},
             {packing > 5, kNotServed},
             {count % group.pixels != 0, argument(3)},
             {depth.alignment > 1 || depth.endianness > 1, kNotServed}},
            [=](uint8_t* d, const uint8_t* s) { reference::unpack(d, s, count, packing, depth); });
  return call;
}

Call words_to_8(Input& in) {
  const uint32_t count = pixel_count(in, 1);
  const LumBitDepthInfo depth = any_depth(in);
  Call call;
  call.what = describe("LumSamples16To8", count, depth.alignment, depth.bitsUsed, depth.endianness);
  call.src_bytes = 2 * size_t{count};
  call.dst_bytes = count;
  call.in_place = in.ConsumeBool();
  call.run = [=](uint8_t* d, const uint8_t* s) { return LumSamples16To8(d, s, count, &depth); };
  call.expected =
      after({{count == 0, argument(3)},
             {depth.alignment > 1 || depth.endianness > 1, kNotServed},
             {depth.alignment == 1 && !is_depth(depth.bitsUsed), kNotServed}},
            [=](uint8_t* d, const uint8_t* s) { reference::words_to_8(d, s, count, depth); });
  return call;
}

// ---- Geometry
Call flip(Input& in) {
  const uint32_t most = number(in, 3) == 0 ? 200 : 70;
  const uint32_t w = number(in, most), h = number(in, most), bytes = number(in, 17);
  const uint32_t mode = number(in, 8);
  Call call;
  call.what = describe("LumFlip", w, h, bytes, mode);
  call.src_bytes = call.dst_bytes = size_t{w} * h * bytes;
  call.in_place = in.ConsumeBool();
  const bool in_place = call.in_place;
  call.run = [=](uint8_t* d, const uint8_t* s) { return LumFlip(d, s, w, h, bytes, mode); };
  call.expected =
      after({{w == 0, argument(3)},
             {h == 0, argument(4)},
             {bytes < 1 || bytes > 16, argument(5)},
             {mode > 7, kNotServed},
             {in_place && mode >= 4, argument(2)}},
            [=](uint8_t* d, const uint8_t* s) { reference::flip_image(d, s, w, h, bytes, mode); });
  return call;
}

Call flip_vertical(Input& in) {
  const uint32_t row_bytes = number(in, 600), rows = number(in, 40);
  Call call;
  call.what = describe("LumFlipVertical", row_bytes, rows);
  call.src_bytes = call.dst_bytes = size_t{row_bytes} * rows;
  call.in_place = true;
  call.run = [=](uint8_t* d, const uint8_t* s) {
    return LumFlipVertical(s == nullptr ? nullptr : d, row_bytes, rows);
  };
  call.expected = after({{row_bytes == 0, argument(2)}, {rows < 2, argument(3)}},
                        [=](uint8_t* d, const uint8_t*) { reference::flip(d, row_bytes, rows); });
  return call;
}

Call deinterlace(Input& in) {
  const uint32_t row_bytes = number(in, 600), height = multiple(in, 40, 2);
  Call call;
  call.what = describe("LumInterlacedToProgressive", row_bytes, height);
  call.src_bytes = call.dst_bytes = size_t{row_bytes} * height;
  call.in_place = in.ConsumeBool();
  const bool in_place = call.in_place;
  call.run = [=](uint8_t* d, const uint8_t* s) {
    return LumInterlacedToProgressive(d, const_cast<uint8_t*>(s), row_bytes, height);
  };
  call.expected = after({{height % 2 != 0, argument(4)}}, [=](uint8_t* d, const uint8_t* s) {
    reference::deinterlace(d, in_place ? d : s, row_bytes, height);
  });
  return call;
}

Call copy_rows(Input& in) {
  const uint32_t bytes = number(in, 300), rows = number(in, 40);
  const uint32_t to = bytes + number(in, 80) - (mostly(in) ? 0 : 1);
  const uint32_t from = bytes + number(in, 80) - (mostly(in) ? 0 : 1);
  const size_t none = bytes == 0 || rows == 0 || to < bytes || from < bytes ? 0 : 1;
  Call call;
  call.what = describe("LumCopyRows", bytes, rows, to, from);
  call.src_bytes = none * (size_t{from} * (rows - size_t{1}) + bytes);
  call.dst_bytes = none * (size_t{to} * (rows - size_t{1}) + bytes);
  call.in_place = in.ConsumeBool();
  call.run = [=](uint8_t* d, const uint8_t* s) { return LumCopyRows(d, s, bytes, rows, to, from); };
  call.expected = after(
      {{bytes == 0, argument(3)},
       {rows == 0, argument(4)},
       {to < bytes, argument(5)},
       {from < bytes, argument(6)}},
      [=](uint8_t* d, const uint8_t* s) { reference::copy_rows(d, s, bytes, rows, to, from); });
  return call;
}

Call bin(Input& in) {
  const Size size = frame_size(in, 1, 1);
  const uint32_t w = u32(size.width), h = u32(size.height);
  const uint32_t channels = any_channels(in), bytes = any_sample(in);
  const uint32_t most = mostly(in) ? 4 : 17, fx = number(in, most), fy = number(in, most);
  Call call;
  call.what = describe("LumBin", w, h, channels, bytes, fx, fy);
  call.src_bytes = size.width * size.height * channels * bytes;
  call.dst_bytes = fx == 0 || fy == 0 ? 0 : size_t{w / fx} * (h / fy) * channels * bytes;
  call.run = [=](uint8_t* d, const uint8_t* s) {
    return LumBin(d, s, w, h, channels, bytes, fx, fy);
  };
  call.expected = after(
      {{w == 0, argument(3)},
       {h == 0, argument(4)},
       {channels < 1 || channels > 4, argument(5)},
       {bytes < 1 || bytes > 2, argument(6)},
       {fx < 1 || fx > 16, argument(7)},
       {fy < 1 || fy > 16, argument(8)},
       {w < fx, argument(3)},
       {h < fy, argument(4)}},
      [=](uint8_t* d, const uint8_t* s) { reference::bin(d, s, w, h, channels, bytes, fx, fy); });
  return call;
}

Call resample_row(Input& in) {
  const uint32_t n = pixel_count(in, 1), count = pixel_count(in, 1);
  const uint32_t channels = any_channels(in), bytes = any_sample(in), mode = number(in, 2);
  const int32_t position = in.ConsumeIntegral<int32_t>() >> number(in, 31);
  const uint32_t step = in.ConsumeIntegral<uint32_t>() >> number(in, 31);
  Call call;
  call.what = describe("LumResampleRow", n, count, channels, bytes, position, step, mode);
  call.src_bytes = size_t{count} * channels * bytes;
  call.dst_bytes = size_t{n} * channels * bytes;
  call.run = [=](uint8_t* d, const uint8_t* s) {
    return LumResampleRow(d, s, n, count, channels, bytes, position, step, mode);
  };
  call.expected =
      after({{n == 0, argument(3)},
             {count == 0, argument(4)},
             {channels < 1 || channels > 4, argument(5)},
             {bytes < 1 || bytes > 2, argument(6)},
             {mode > 1, kNotServed}},
            [=](uint8_t* d, const uint8_t* s) {
              reference::resample_row(d, s, n, count, {channels, bytes}, position, step, mode);
            });
  return call;
}

Call resize(Input& in) {
  const Size from = frame_size(in, 1, 1), to = frame_size(in, 1, 1);
  const uint32_t channels = any_channels(in), bytes = any_sample(in), mode = number(in, 2);
  Call call;
  call.what =
      describe("LumResize", to.width, to.height, from.width, from.height, channels, bytes, mode);
  call.src_bytes = from.width * from.height * channels * bytes;
  call.dst_bytes = to.width * to.height * channels * bytes;
  call.run = [=](uint8_t* d, const uint8_t* s) {
    return LumResize(d, s, u32(to.width), u32(to.height), u32(from.width), u32(from.height),
                     channels, bytes, mode);
  };
  call.expected = after({{to.width == 0, argument(3)},
                         {to.height == 0, argument(4)},
                         {from.width == 0, argument(5)},
                         {from.height == 0, argument(6)},
                         {channels < 1 || channels > 4, argument(7)},
                         {bytes < 1 || bytes > 2, argument(8)},
                         {mode > 1, kNotServed}},
                        [=](uint8_t* d, const uint8_t* s) {
                          reference::resize(d, s, to, from, {channels, bytes}, mode);
                        });
  return call;
}

constexpr Call (*kCalls[])(Input&) = {
    flat,        mosaic,    mosaic16_ex, mono16_ex,    cygm_others, corrected, corrected_pixels,
    yuv_to_bgr,  i420,      planes,      unpack,       words_to_8,  flip,      flip_vertical,
    deinterlace, copy_rows, bin,         resample_row, resize};

}  // namespace
}  // namespace lum::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace lum::fuzz;
  Input in(data, size);
  check(in.PickValueInArray(kCalls)(in), data, size);
  return 0;
}
