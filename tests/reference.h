// SPDX-License-Identifier: MIT
// What every conversion has to write, pixel by pixel in plain ints. Slow on purpose, and written
// from the documented formulas alone: it shares no code with the library but its enumerations.
#ifndef LUM_TESTS_REFERENCE_H
#define LUM_TESTS_REFERENCE_H

#include <stddef.h>
#include <stdint.h>

#include <functional>
#include <vector>

#include "simd/kernel_table.h"

namespace lum::reference {

using Bytes = std::vector<uint8_t>;

struct Size {
  size_t width, height;
};

struct Pixel {
  int r = 0, g = 0, b = 0;
  int alpha = -1;            // -1: the source has none, a fourth byte is not written
  bool zero_chroma = false;  // grey bytes: UYVY gets 0, not 128, as chroma
};
using Frame = std::vector<Pixel>;

size_t pixel_bytes(uint32_t format);
bool is_deep(uint32_t format);  // 16-bit samples

// Stores n pixels; an odd last pixel of a UYVY row leaves its Y1 byte alone.
void store(uint32_t format, const Pixel* pixels, size_t n, uint8_t* dst);

// One row as a cell of the kernel table converts it. False: such a cell has no meaning.
bool row(Source source, Sink sink, uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n,
         const RowArgs& args);

Pixel cygm_block(int cy, int ye, int g, int mg);
int luma601(const Pixel& p);
int luma709(const Pixel& p);

// Flat sources. `deep` asks for the 16-bit value where the source has one.
Frame mono8(const uint8_t* src, size_t count);
Frame mono12_packed(const uint8_t* src, size_t count, bool deep = false, unsigned shift = 0);
Frame mono16_tinted(const uint8_t* src, size_t count, bool little_endian);
Frame mono16(const uint8_t* src, size_t count, unsigned shift, bool big_endian, bool deep);
Frame colour(const uint8_t* src, size_t count, const char* order);             // "RGB", "BGRA" ...
void store_yuv(uint32_t format, const uint8_t* src, size_t count, int layout,  // 411, 422, 444
               uint8_t* dst);

// Mosaics. A sampler gives the sample of column x, row y.
using Sampler = std::function<int(size_t x, size_t y)>;
int word(const uint8_t* src, size_t index, bool big_endian);
Sampler bytes_of(const uint8_t* src, size_t width);
Sampler packed12_high_bytes(const uint8_t* src, size_t width);
Sampler packed12_samples(const uint8_t* src, size_t width);
Sampler words_to_bytes(const uint8_t* src, size_t width, unsigned shift, bool big_endian);
Sampler shifted_words(const uint8_t* src, size_t width, unsigned shift, bool big_endian);

Frame bayer(size_t width, size_t height, uint32_t pattern, const Sampler& sample);
Frame cygm(const uint8_t* src, size_t width, size_t height);

// Rows 0 .. height - 2 of a mosaic's frame, then a byte copy of the row above as the last row.
void store_mosaic(uint32_t format, const Frame& frame, size_t width, size_t height, uint8_t* dst);
void cygm_to_bgr_direct(const uint8_t* src, size_t width, size_t height, uint8_t* dst);

enum class Demosaic { bilinear, lcaa, lcaav, yuv422 };
Frame demosaic(Demosaic mode, const uint8_t* src, int width, int height, uint32_t pattern);

// Colour correction of 2x2 blocks: an exact sum, a flooring shift, limited to 0 .. top.
Frame correct(const Frame& blocks, const int32_t m[9], int shift, int top);
Frame correct_mono8(const uint8_t* src, size_t width, size_t height, uint32_t pattern,
                    const int32_t m[9]);

// Half the width and height of the mosaic.
Frame bayer_binned(const uint8_t* src, int width, int height, uint32_t pattern);

// CYGM by windows of three lines and columns; _binned has half the width and height.
Frame cygm_3x3(const uint8_t* src, int width, int height);
Frame cygm_binned(const uint8_t* src, int width, int height);
Bytes cygm_luma(const uint8_t* src, int width, int height);
int luma8_of_lines(int above, int here, int below);
// A row of the sources that take such windows as RowArgs tells them.
Frame window_row(Source source, const uint8_t* a, size_t n, const RowArgs& args);

void flip(uint8_t* image, size_t row_bytes, size_t rows);
void deinterlace(uint8_t* dst, const uint8_t* src, size_t row_bytes, size_t height);

uint32_t crc32(const uint8_t* bytes, size_t n);

}  // namespace lum::reference

#endif
