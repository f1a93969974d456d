// SPDX-License-Identifier: MIT
// `lum simulate`: the frame that a camera would have delivered for a picture. It is cropped from
// the top left to the sizes that the format has.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "byte_file.h"
#include "commands.h"
#include "conversion.h"
#include "failure.h"
#include "picture_file.h"

namespace lum_tool {
namespace {

constexpr double kFull = 65535.0;

struct SimulatedFrame {
  uint32_t width = 0;
  uint32_t height = 0;
  Bytes bytes;
};

struct Rgb {
  double r, g, b;  // 0..kFull
};

struct Scene {
  const Picture& picture;

  const uint16_t* at(uint32_t x, uint32_t y) const {
    return picture.samples.data() + (size_t{y} * picture.width + x) * picture.channels;
  }
  Rgb rgb(uint32_t x, uint32_t y) const {
    const uint16_t* p = at(x, y);
    return picture.channels == 1 ? Rgb{double(p[0]), double(p[0]), double(p[0])}
                                 : Rgb{double(p[0]), double(p[1]), double(p[2])};
  }
  uint16_t alpha(uint32_t x, uint32_t y) const {
    return picture.channels == 4 ? at(x, y)[3] : uint16_t{0xFFFF};
  }
};

double luminance(const Rgb& c) { return 0.299 * c.r + 0.587 * c.g + 0.114 * c.b; }

uint16_t sample(double value) {
  return static_cast<uint16_t>(std::lround(std::clamp(value, 0.0, kFull)));
}

// 8 of the 16 bits. A digital sensor truncates; so 8-bit pictures come back as they were.
uint8_t byte_of(uint16_t value) { return static_cast<uint8_t>(value >> 8); }

// A byte from a value on the 16-bit scale that was computed, not sensed.
uint8_t rounded_byte(double value) {
  return static_cast<uint8_t>(std::lround(std::clamp(value / 257.0, 0.0, 255.0)));
}

// The colour filter at a pixel of a Bayer mosaic. The pattern's bit 1 is the column that holds red,
// bit 0 the row.
uint16_t bayer(const Scene& scene, uint32_t x, uint32_t y, uint32_t pattern) {
  const Rgb c = scene.rgb(x, y);
  const bool red_column = (x & 1) == (pattern >> 1), red_row = (y & 1) == (pattern & 1);
  if (red_column && red_row) return sample(c.r);
  return red_column || red_row ? sample(c.g) : sample(c.b);
}

uint16_t mono_or_bayer(const Scene& scene, uint32_t x, uint32_t y, const LumPixelInfo& pixel) {
  const bool mosaic =
      pixel.pixelLayout == LumPixelLayoutRaw || pixel.pixelLayout == LumPixelLayoutRawPacked;
  return mosaic ? bayer(scene, x, y, pixel.bayerPattern) : sample(luminance(scene.rgb(x, y)));
}

void put_word(Bytes& out, uint16_t value, uint32_t bits_used, bool big_endian, bool msb_aligned) {
  const uint32_t spare = 16 - bits_used;
  const uint32_t word = msb_aligned ? uint32_t{value} >> spare << spare : uint32_t{value} >> spare;
  out.push_back(uint8_t(big_endian ? word >> 8 : word));
  out.push_back(uint8_t(big_endian ? word : word >> 8));
}

// Cyan/yellow on the even frame lines, green/magenta and magenta/green on the odd ones. The four
// filters are what the conversion's luminance and differences say, with no line-to-line term:
// Ye + Mg - Cy - G = 4 Cr, Cy + Mg - Ye - G = 4 Cb. Cr and Cb solve
//   1024 (R - Y) = 2165 Cr + 344 Cb,  1024 (B - Y) = -959 Cr + 4645 Cb.
uint8_t cygm(const Scene& scene, uint32_t x, uint32_t y) {
  const Rgb c = scene.rgb(x, y);
  const double luma = luminance(c);
  const double red = 1024 * (c.r - luma), blue = 1024 * (c.b - luma);
  constexpr double kDeterminant = 2165.0 * 4645.0 + 344.0 * 959.0;
  const double cr = (4645.0 * red - 344.0 * blue) / kDeterminant;
  const double cb = (959.0 * red + 2165.0 * blue) / kDeterminant;
  const bool odd = x & 1;
  if (y % 2 == 0) return rounded_byte(odd ? luma + cr - cb : luma - cr + cb);
  const bool magenta = odd == (y % 4 == 1);
  return rounded_byte(magenta ? luma + cr + cb : luma - cr - cb);
}

// Two fields one after the other, the odd frame lines first.
void cygm_frame(const Scene& scene, SimulatedFrame& frame) {
  for (uint32_t first : {1u, 0u})
    for (uint32_t y = first; y < frame.height; y += 2)
      for (uint32_t x = 0; x < frame.width; ++x) frame.bytes.push_back(cygm(scene, x, y));
}

// Full range. A group's U and V are the means of its pixels'.
void yuv_group(const Scene& scene, uint32_t x, uint32_t y, uint32_t pixels, Bytes& out) {
  double u = 0, v = 0;
  uint8_t luma[4] = {};
  for (uint32_t i = 0; i < pixels; ++i) {
    const Rgb c = scene.rgb(x + i, y);
    const double l = luminance(c);
    luma[i] = rounded_byte(l);
    u += (c.b - l) / 1.772 / pixels;
    v += (c.r - l) / 1.402 / pixels;
  }
  const uint8_t ub = rounded_byte(u + 128 * 257.0), vb = rounded_byte(v + 128 * 257.0);
  if (pixels == 1)
    out.insert(out.end(), {ub, luma[0], vb});
  else if (pixels == 2)
    out.insert(out.end(), {ub, luma[0], vb, luma[1]});
  else
    out.insert(out.end(), {ub, luma[0], luma[1], vb, luma[2], luma[3]});
}

void colour_pixel(const Scene& scene, uint32_t x, uint32_t y, const LumPixelInfo& pixel,
                  Bytes& out) {
  const Rgb c = scene.rgb(x, y);
  uint16_t channels[4] = {sample(c.r), sample(c.g), sample(c.b), scene.alpha(x, y)};
  if (pixel.pixelLayout == LumPixelLayoutBGR || pixel.pixelLayout == LumPixelLayoutBGRA)
    std::swap(channels[0], channels[2]);
  const bool four =
      pixel.pixelLayout == LumPixelLayoutRGBA || pixel.pixelLayout == LumPixelLayoutBGRA;
  for (uint32_t i = 0; i < (four ? 4u : 3u); ++i) {
    if (pixel.bitsPerPixel == 48)
      put_word(out, channels[i], pixel.bitsUsed / 3, false, false);
    else
      out.push_back(byte_of(channels[i]));
  }
}

void packed_group(const Scene& scene, uint32_t x, uint32_t y, const Source& source, Bytes& out) {
  uint32_t samples[4] = {};
  for (uint32_t i = 0; i < source.step_x(); ++i)
    samples[i] =
        uint32_t{mono_or_bayer(scene, x + i, y, source.pixel)} >> (16 - source.pixel.bitsUsed);
  pack_group(*source.packing, samples, out);
}

void pixels_at(const Scene& scene, uint32_t x, uint32_t y, const Source& source, bool big_endian,
               bool msb_aligned, Bytes& out) {
  if (source.packing) return packed_group(scene, x, y, source, out);
  const LumPixelInfo& pixel = source.pixel;
  switch (pixel.pixelLayout) {
    case LumPixelLayoutMono:
    case LumPixelLayoutRaw: {
      const uint16_t value = mono_or_bayer(scene, x, y, pixel);
      if (pixel.bitsPerPixel == 8)
        out.push_back(byte_of(value));
      else
        put_word(out, value, pixel.bitsUsed, big_endian, msb_aligned);
      return;
    }
    case LumPixelLayoutYUV411:
      return yuv_group(scene, x, y, 4, out);
    case LumPixelLayoutYUV422:
      return yuv_group(scene, x, y, 2, out);
    case LumPixelLayoutYUV444:
      return yuv_group(scene, x, y, 1, out);
    default:
      return colour_pixel(scene, x, y, pixel, out);
  }
}

SimulatedFrame simulate_frame(const Picture& picture, const Source& source, bool big_endian,
                              bool msb_aligned) {
  SimulatedFrame frame;
  frame.width = picture.width - picture.width % source.step_x();
  frame.height = picture.height - picture.height % source.step_y();
  if (frame.width == 0 || frame.height == 0)
    throw Failure("a picture of " + std::to_string(picture.width) + "x" +
                  std::to_string(picture.height) + " is too small for " + source.name +
                  ", which needs at least " + std::to_string(source.step_x()) + "x" +
                  std::to_string(source.step_y()));
  const Scene scene{picture};
  frame.bytes.reserve(source.frame_bytes(frame.width, frame.height));
  if (source.is_cygm()) {
    cygm_frame(scene, frame);
    return frame;
  }
  // Pixels that share bytes are made together, those of a plain mosaic one by one.
  const uint32_t step = source.pixel.pixelLayout == LumPixelLayoutRaw ? 1 : source.step_x();
  for (uint32_t y = 0; y < frame.height; ++y)
    for (uint32_t x = 0; x < frame.width; x += step)
      pixels_at(scene, x, y, source, big_endian, msb_aligned, frame.bytes);
  return frame;
}

}  // namespace

int simulate_command(const SimulateOptions& options) {
  const Source& source = need_source(options.format);
  Conversion way;
  way.source = &source;
  way.big_endian = options.big_endian;
  way.msb_aligned = options.msb_aligned;
  way.check(source.step_x(), source.step_y());
  InputFiles({options.input}).refuse(options.output);
  const Picture picture = decode_picture(read_whole(options.input), options.input);
  const SimulatedFrame frame =
      simulate_frame(picture, source, options.big_endian, options.msb_aligned);
  write_whole(options.output, frame.bytes);
  if (frame.width != picture.width || frame.height != picture.height)
    std::fprintf(stderr, "note: %ux%u cropped to %ux%u: %s needs multiples of %u and %u\n",
                 picture.width, picture.height, frame.width, frame.height, source.name.c_str(),
                 source.step_x(), source.step_y());
  std::fprintf(stderr, "%s frame: --from %s --size %ux%u, %s\n", source.name.c_str(),
               source.name.c_str(), frame.width, frame.height,
               bytes_text(frame.bytes.size()).c_str());
  return 0;
}

}  // namespace lum_tool
