// SPDX-License-Identifier: MIT
#include "reference.h"

#include <string.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace lum::reference {
namespace {

enum Format : uint32_t {
  kMono601,
  kBgr24,
  kBgra32,
  kRgb24,
  kRgba32,
  kMono709,
  kUyvy,
  kMono16_601,
  kMono16_709,
  kBgr48,
  kRgb48
};

int clamp(int v, int top = 255) { return v < 0 ? 0 : v > top ? top : v; }

Pixel grey(int y) {
  Pixel p;
  p.r = p.g = p.b = y;
  return p;
}

void put_word(uint8_t* dst, int v) {
  dst[0] = static_cast<uint8_t>(v & 255);
  dst[1] = static_cast<uint8_t>(v >> 8);
}

struct Yuv {
  int y, u, v;
};

Yuv studio(const Pixel& p) {
  Yuv out;
  out.y = ((66 * p.r + 129 * p.g + 25 * p.b + 128) >> 8) + 16;
  out.u = ((-38 * p.r - 74 * p.g + 112 * p.b + 128) >> 8) + 128;
  out.v = ((112 * p.r - 94 * p.g - 18 * p.b + 128) >> 8) + 128;
  if (p.zero_chroma) out = {p.r, 0, 0};
  return out;
}

// The 2x2 block at (x, y): every sample goes to the colour that `letter` gives its place.
template <class Letter>
Pixel bayer_block(const Letter& letter, const Sampler& sample, size_t x, size_t y) {
  Pixel p;
  for (size_t dy = 0; dy < 2; ++dy) {
    for (size_t dx = 0; dx < 2; ++dx) {
      const int v = sample(x + dx, y + dy);
      const char colour = letter(x + dx, y + dy);
      (colour == 'R' ? p.r : colour == 'B' ? p.b : p.g) += v;
    }
  }
  p.g >>= 1;
  return p;
}

template <class Letter>
Pixel cygm_block_at(const Letter& letter, const Sampler& sample, size_t x, size_t y) {
  int cy = 0, ye = 0, g = 0, mg = 0;
  for (size_t dy = 0; dy < 2; ++dy) {
    for (size_t dx = 0; dx < 2; ++dx) {
      const char colour = letter(x + dx, y + dy);
      (colour == 'C' ? cy : colour == 'Y' ? ye : colour == 'G' ? g : mg) = sample(x + dx, y + dy);
    }
  }
  return cygm_block(cy, ye, g, mg);
}

// Fills a frame from its blocks; the last column repeats the one before it, the last row too.
template <class Block>
Frame from_blocks(size_t width, size_t height, const Block& block) {
  Frame frame(width * height);
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      frame[y * width + x] = block(std::min(x, width - 2), std::min(y, height - 2));
    }
  }
  return frame;
}

// Sums of 32 bits that wrap, of which bits 10 to 25 count; bit 15 of those is taken for the sign.
Pixel correct_wrapped(const Pixel& in, const int32_t m[9]) {
  const uint32_t rgb[3] = {static_cast<uint32_t>(in.r), static_cast<uint32_t>(in.g),
                           static_cast<uint32_t>(in.b)};
  int out[3];
  for (int c = 0; c < 3; ++c) {
    uint32_t v = 0;
    for (int k = 0; k < 3; ++k) v += static_cast<uint32_t>(m[3 * c + k]) * rgb[k];
    v = (v >> 10) & 0xFFFF;
    out[c] = v < 256 ? static_cast<int>(v) : (v & 0x8000) != 0 ? 0 : 255;
  }
  Pixel p;
  p.r = out[0], p.g = out[1], p.b = out[2];
  return p;
}

char cygm_letter(size_t x, size_t y) {
  static const char* const kLines[4] = {"CY", "GM", "CY", "MG"};
  return kLines[y % 4][x % 2];
}

Sampler interlaced(const uint8_t* src, size_t width, size_t height) {
  return [=](size_t x, size_t y) {
    const size_t line = y % 2 == 0 ? height / 2 + y / 2 : y / 2;
    return int{src[line * width + x]};
  };
}

}  // namespace

size_t pixel_bytes(uint32_t format) {
  static const size_t kBytes[] = {1, 3, 4, 3, 4, 1, 2, 2, 2, 6, 6};
  return kBytes[format];
}

bool is_deep(uint32_t format) { return format >= kMono16_601; }

int luma601(const Pixel& p) { return (77 * p.r + 150 * p.g + 29 * p.b) >> 8; }
int luma709(const Pixel& p) { return (54 * p.r + 184 * p.g + 18 * p.b + 128) >> 8; }

void store(uint32_t format, const Pixel* pixels, size_t n, uint8_t* dst) {
  for (size_t i = 0; i < n; ++i) {
    const Pixel& p = pixels[i];
    uint8_t* out = dst + i * pixel_bytes(format);
    const bool rgb = format == kRgb24 || format == kRgba32 || format == kRgb48;
    const int first = rgb ? p.r : p.b, third = rgb ? p.b : p.r;
    switch (format) {
      case kMono601:
        out[0] = static_cast<uint8_t>(luma601(p));
        break;
      case kMono709:
        out[0] = static_cast<uint8_t>(luma709(p));
        break;
      case kMono16_601:
        put_word(out, luma601(p));
        break;
      case kMono16_709:
        put_word(out, luma709(p));
        break;
      case kBgr48:
      case kRgb48:
        put_word(out, first);
        put_word(out + 2, p.g);
        put_word(out + 4, third);
        break;
      case kUyvy: {
        const Yuv own = studio(p);
        if (i % 2 == 0) {
          const Yuv other = i + 1 < n ? studio(pixels[i + 1]) : own;
          out[0] = static_cast<uint8_t>((own.u + other.u) >> 1);
          out[1] = static_cast<uint8_t>(own.y);
          out[2] = static_cast<uint8_t>((own.v + other.v) >> 1);
        } else {
          out[1] = static_cast<uint8_t>(own.y);
        }
        break;
      }
      default:
        out[0] = static_cast<uint8_t>(first);
        out[1] = static_cast<uint8_t>(p.g);
        out[2] = static_cast<uint8_t>(third);
        if (pixel_bytes(format) == 4 && p.alpha >= 0) out[3] = static_cast<uint8_t>(p.alpha);
    }
  }
}

Pixel cygm_block(int cy, int ye, int g, int mg) {
  const int luminance = (cy + ye + g + mg) / 4;
  const int cr = (ye + mg - cy - g) / 4;  // / truncates toward zero, as it has to
  const int cb = (cy + mg - ye - g) / 4;
  const auto scale = [](int v) { return v < 0 ? 0 : v >= 255 * 1024 ? 255 : v >> 10; };
  Pixel p;
  p.r = scale(1024 * luminance + 2165 * cr + 344 * cb);
  p.g = scale(1024 * luminance - 917 * cr - 1078 * cb);
  p.b = scale(1024 * luminance - 959 * cr + 4645 * cb);
  return p;
}

bool row(Source source, Sink sink, uint8_t* dst, const uint8_t* a, const uint8_t* b, size_t n,
         const RowArgs& args) {
  const uint32_t format = static_cast<uint32_t>(sink);
  const bool deep = is_deep(format);
  const size_t column = args.column;
  const auto red_row = [=](size_t x, size_t y) {
    return (x + column) % 2 == 0 ? (y == 0 ? 'R' : 'G') : (y == 0 ? 'G' : 'B');
  };
  const auto cyan_row = [=](size_t x, size_t y) {
    return y == 0 ? "CY"[x % 2] : "GM"[(x + column) % 2];
  };
  if (deep && (source == Source::planes8 || source == Source::bilinear ||
               source == Source::paired_chroma)) {
    return false;
  }
  const Sampler two_rows = [=](size_t x, size_t y) { return int{(y == 0 ? a : b)[x]}; };
  const Sampler two_word_rows = [=](size_t x, size_t y) { return word(y == 0 ? a : b, x, false); };
  Frame pixels;
  switch (source) {
    case Source::mosaic8:
    case Source::mosaic16:
    case Source::mosaic8_corrected:
    case Source::mosaic8_wrapped:
    case Source::mosaic12_corrected:
    case Source::mosaic16_corrected: {
      const bool words = source != Source::mosaic8 && source != Source::mosaic8_corrected &&
                         source != Source::mosaic8_wrapped;
      if (source == Source::mosaic16 && !deep) return false;
      if (source == Source::mosaic12_corrected && deep) return false;
      pixels = from_blocks(n, 2, [&](size_t x, size_t y) {
        if (source == Source::mosaic12_corrected) {
          return bayer_block(
              red_row, [&](size_t c, size_t r) { return two_word_rows(c, r) >> 2; }, x, y);
        }
        const Pixel p = bayer_block(red_row, words ? two_word_rows : two_rows, x, y);
        return source == Source::mosaic8_wrapped ? correct_wrapped(p, args.matrix) : p;
      });
      if (source == Source::mosaic12_corrected) {
        pixels = correct(pixels, args.matrix, static_cast<int>(args.scale) - 2, 255);
      } else if (source == Source::mosaic8_corrected || source == Source::mosaic16_corrected) {
        pixels = correct(pixels, args.matrix, static_cast<int>(args.scale), deep ? 65535 : 255);
      }
      break;
    }
    case Source::mosaic8_beside_packed12:
    case Source::mosaic8_beside_words:
    case Source::mosaic16_beside_words:
      return false;  // two rows, each of which is asked for by itself
    case Source::cygm:
      pixels = from_blocks(
          n, 2, [&](size_t x, size_t y) { return cygm_block_at(cyan_row, two_rows, x, y); });
      break;
    case Source::mono8:
      pixels = mono8(a, n);
      break;
    case Source::mono12_packed:
      pixels = mono12_packed(a, n, deep, args.shift);
      break;
    case Source::mono16_tinted:
      pixels = mono16_tinted(a, n, false);
      break;
    case Source::mono16_second:
      pixels = mono16(a, n, 0, false, false);
      break;
    case Source::mono16:
      pixels = mono16(a, n, args.shift, args.big_endian != 0, deep);
      break;
    case Source::rgb24:
      pixels = colour(a, n, "RGB");
      break;
    case Source::bgr24:
      pixels = colour(a, n, "BGR");
      break;
    case Source::rgba32:
      pixels = colour(a, n, "RGBA");
      break;
    case Source::bgra32:
      pixels = colour(a, n, "BGRA");
      break;
    case Source::planes8:
      pixels.resize(n);
      for (size_t x = 0; x < n; ++x) {
        const uint8_t* red = a + x;
        pixels[x].r = red[0];
        pixels[x].g = red[args.pitch];
        pixels[x].b = red[2 * args.pitch];
      }
      break;
    case Source::bilinear:
      pixels.resize(n);
      for (size_t x = 0; x < n; ++x) {
        const uint8_t *own = a + x, *up = own + args.above, *down = own + args.below;
        const ptrdiff_t left = x == 0 && args.begins != 0 ? 1 : -1;
        const ptrdiff_t right = x == n - 1 && args.ends != 0 ? -1 : 1;
        const int h = own[left] + own[right], v = up[0] + down[0];
        const int d = up[left] + up[right] + down[left] + down[right];
        const bool native = x % 2 == args.column;
        const int n_own = native ? own[0] : (h + 1) >> 1,
                  other = native ? (d + 2) >> 2 : (v + 1) >> 1;
        pixels[x].r = args.own_is_blue != 0 ? other : n_own;
        pixels[x].g = native ? (h + v + 2) >> 2 : own[0];
        pixels[x].b = args.own_is_blue != 0 ? n_own : other;
      }
      break;
    case Source::paired_chroma: {
      // Columns -2 .. 3 from the pair's native pixel towards its green one, of the row itself.
      static const int kGreenLessOwn[6] = {-3, 3, -12, 9, -7, 2};
      static const int kGreenLessOther[6] = {1, 1, -1, 8, -2, 1};
      const ptrdiff_t sums[4] = {args.above, args.below, args.above2, args.below2};
      const auto clamped = [](int v) { return v < 0 ? 0 : v > 255 ? 255 : v; };
      pixels.resize(n);
      for (size_t x = 0; x < n; ++x) {
        const bool native = x % 2 == args.column;
        const uint8_t* own = a + (x / 2 * 2 + args.column);
        const int step = args.column == 0 ? 1 : -1;
        int d1 = 0, d2 = 0;
        for (int column = -2; column <= 3; ++column) {
          d1 += kGreenLessOwn[column + 2] * own[step * column];
          d2 += kGreenLessOther[column + 2] * own[step * column];
        }
        for (const ptrdiff_t row : sums) {
          d1 += word(a + row, x / 2, false);
          d2 += word(a + row + args.pitch, x / 2, false);
        }
        d1 = (static_cast<int16_t>(d1) + 16) >> 5;
        d2 = (static_cast<int16_t>(d2) + 16) >> 5;
        const int z = a[x];
        const int n_own = native ? z : clamped(z - d1);
        const int other = clamped(native ? z + d1 - d2 : z - d2);
        pixels[x].r = args.own_is_blue != 0 ? other : n_own;
        pixels[x].g = native ? clamped(z + d1) : z;
        pixels[x].b = args.own_is_blue != 0 ? n_own : other;
      }
      break;
    }
    case Source::bgr24_corrected:
    case Source::bgr48_corrected:
      if (deep != (source == Source::bgr48_corrected)) return false;
      pixels.resize(n);
      for (size_t x = 0; x < n; ++x) {
        int* const to[3] = {&pixels[x].b, &pixels[x].g, &pixels[x].r};
        for (size_t c = 0; c < 3; ++c) *to[c] = deep ? word(a, 3 * x + c, false) : a[3 * x + c];
      }
      pixels = correct(pixels, args.matrix, static_cast<int>(args.scale), deep ? 65535 : 255);
      break;
    case Source::mosaic8_binned:
    case Source::cygm_3x3:
    case Source::cygm_3x3_luma:
    case Source::cygm_binned:
      if (deep) return false;
      pixels = window_row(source, a, n, args);
      break;
    case Source::yuv411:
    case Source::yuv422:
    case Source::yuv444:
      if (deep) return false;
      store_yuv(format, a, n,
                source == Source::yuv411   ? 411
                : source == Source::yuv422 ? 422
                                           : 444,
                dst);
      return true;
  }
  store(format, pixels.data(), n, dst);
  return true;
}

Frame mono8(const uint8_t* src, size_t count) {
  Frame frame(count);
  for (size_t i = 0; i < count; ++i) {
    frame[i] = grey(src[i]);
    frame[i].zero_chroma = true;
  }
  return frame;
}

Frame mono12_packed(const uint8_t* src, size_t count, bool deep, unsigned shift) {
  const Sampler high = packed12_high_bytes(src, count), all = packed12_samples(src, count);
  Frame frame(count);
  for (size_t i = 0; i < count; ++i) frame[i] = grey(deep ? all(i, 0) << shift : high(i, 0));
  return frame;
}

Frame mono16_tinted(const uint8_t* src, size_t count, bool little_endian) {
  Frame frame(count);
  for (size_t i = 0; i < count; ++i) {
    const size_t low_at = little_endian ? 2 * i + 2 : 2 * i + 1;
    const int high = src[little_endian ? 2 * i + 1 : 2 * i];
    const int low = low_at < 2 * count ? src[low_at] : 0;
    frame[i] = grey(high);
    if ((low & 0x80) != 0 && high < 255) frame[i].r = high + 1;
    if ((low & 0x40) != 0 && high < 255) frame[i].b = high + 1;
  }
  return frame;
}

Frame mono16(const uint8_t* src, size_t count, unsigned shift, bool big_endian, bool deep) {
  Frame frame(count);
  for (size_t i = 0; i < count; ++i) {
    const int v = word(src, i, big_endian);
    frame[i] = grey(deep ? (v << shift) & 0xFFFF : (v >> (8 - shift)) & 255);
  }
  return frame;
}

Frame colour(const uint8_t* src, size_t count, const char* order) {
  const size_t channels = strlen(order);
  Frame frame(count);
  for (size_t i = 0; i < count; ++i) {
    for (size_t c = 0; c < channels; ++c) {
      Pixel& p = frame[i];
      (order[c] == 'R'   ? p.r
       : order[c] == 'G' ? p.g
       : order[c] == 'B' ? p.b
                         : p.alpha) = src[i * channels + c];
    }
  }
  return frame;
}

namespace {

// Y, U, V of each pixel as the source bytes have them.
std::vector<Yuv> yuv_samples(const uint8_t* src, size_t count, int layout) {
  static const int kU = 0;
  struct Group {
    size_t pixels, bytes, v, y[4];
  };
  const Group group = layout == 411   ? Group{4, 6, 3, {1, 2, 4, 5}}
                      : layout == 422 ? Group{2, 4, 2, {1, 3, 0, 0}}
                                      : Group{1, 3, 2, {1, 0, 0, 0}};
  std::vector<Yuv> out(count);
  for (size_t i = 0; i < count; ++i) {
    const uint8_t* g = src + i / group.pixels * group.bytes;
    out[i] = {g[group.y[i % group.pixels]], g[kU], g[group.v]};
  }
  return out;
}

}  // namespace

void store_yuv(uint32_t format, const uint8_t* src, size_t count, int layout, uint8_t* dst) {
  const std::vector<Yuv> s = yuv_samples(src, count, layout);
  Frame frame(count);
  for (size_t i = 0; i < count; ++i) {
    const int y = s[i].y, u = s[i].u - 128, v = s[i].v - 128;
    frame[i].r = clamp(y + ((359 * v + 128) >> 8));
    frame[i].g = clamp(y - ((88 * u + 183 * v + 128) >> 8));
    frame[i].b = clamp(y + ((454 * u + 128) >> 8));
    if (format == kMono601) frame[i] = grey(y);  // Y is that luminance
    if (format == kUyvy) {
      const Yuv& even = s[i & ~size_t{1}];
      const Yuv& odd = s[i | 1];
      dst[2 * i] = static_cast<uint8_t>(i % 2 == 0 ? (even.u + odd.u) >> 1 : (even.v + odd.v) >> 1);
      dst[2 * i + 1] = static_cast<uint8_t>(y);
    }
  }
  if (format != kUyvy) store(format, frame.data(), count, dst);
}

int word(const uint8_t* src, size_t index, bool big_endian) {
  const int first = src[2 * index], second = src[2 * index + 1];
  return big_endian ? first << 8 | second : second << 8 | first;
}

Sampler bytes_of(const uint8_t* src, size_t width) {
  return [=](size_t x, size_t y) { return int{src[y * width + x]}; };
}

Sampler packed12_high_bytes(const uint8_t* src, size_t width) {
  return [=](size_t x, size_t y) { return int{src[y * (width / 2 * 3) + x / 2 * 3 + x % 2 * 2]}; };
}

Sampler packed12_samples(const uint8_t* src, size_t width) {
  return [=](size_t x, size_t y) {
    const uint8_t* group = src + y * (width / 2 * 3) + x / 2 * 3;
    return x % 2 == 0 ? group[0] << 4 | (group[1] & 15) : group[2] << 4 | group[1] >> 4;
  };
}

Sampler words_to_bytes(const uint8_t* src, size_t width, unsigned shift, bool big_endian) {
  return [=](size_t x, size_t y) {
    return (word(src, y * width + x, big_endian) >> (8 - shift)) & 255;
  };
}

Sampler shifted_words(const uint8_t* src, size_t width, unsigned shift, bool big_endian) {
  return [=](size_t x, size_t y) {
    return static_cast<int>((int64_t{word(src, y * width + x, big_endian)} << shift) & 0xFFFF);
  };
}

Frame bayer(size_t width, size_t height, uint32_t pattern, const Sampler& sample) {
  static const char* const kCells[4] = {"RGGB", "GBRG", "GRBG", "BGGR"};
  const char* cell = kCells[pattern & 3];  // 255 and 0xFFFFFFFF: BGGR
  const auto letter = [=](size_t x, size_t y) { return cell[y % 2 * 2 + x % 2]; };
  return from_blocks(width, height,
                     [&](size_t x, size_t y) { return bayer_block(letter, sample, x, y); });
}

Frame cygm(const uint8_t* src, size_t width, size_t height) {
  const Sampler sample = interlaced(src, width, height);
  return from_blocks(width, height,
                     [&](size_t x, size_t y) { return cygm_block_at(cygm_letter, sample, x, y); });
}

void store_mosaic(uint32_t format, const Frame& frame, size_t width, size_t height, uint8_t* dst) {
  const size_t row_bytes = width * pixel_bytes(format);
  for (size_t y = 0; y + 1 < height; ++y) {
    store(format, frame.data() + y * width, width, dst + y * row_bytes);
  }
  memcpy(dst + (height - 1) * row_bytes, dst + (height - 2) * row_bytes, row_bytes);
}

void cygm_to_bgr_direct(const uint8_t* src, size_t width, size_t height, uint8_t* dst) {
  const Sampler sample = interlaced(src, width, height);  // column `width` is the field's next line
  const size_t row_bytes = width * 3;
  for (size_t y = 0; y + 4 < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      const Pixel p = cygm_block_at(cygm_letter, sample, x, y);
      store(kBgr24, &p, 1, dst + y * row_bytes + x * 3);
    }
  }
  if (width <= 3) return;
  for (size_t y = height - 4; y < height - 1; ++y) {
    memcpy(dst + y * row_bytes, dst + (height - 5) * row_bytes, row_bytes);
  }
}

Frame correct(const Frame& blocks, const int32_t m[9], int shift, int top) {
  Frame out = blocks;
  for (Pixel& p : out) {
    const int64_t in[3] = {p.r, p.g, p.b};
    int* const result[3] = {&p.r, &p.g, &p.b};
    for (int c = 0; c < 3; ++c) {
      const int64_t sum = m[3 * c] * in[0] + m[3 * c + 1] * in[1] + m[3 * c + 2] * in[2];
      *result[c] = static_cast<int>(std::min<int64_t>(std::max<int64_t>(sum >> shift, 0), top));
    }
  }
  return out;
}

Frame correct_mono8(const uint8_t* src, size_t width, size_t height, uint32_t pattern,
                    const int32_t m[9]) {
  const Sampler sample = bytes_of(src, width);
  return from_blocks(width, height, [&](size_t x, size_t y) {
    const unsigned row_parity = (pattern / 2 + y) % 2, column_parity = (pattern + x) % 2;
    const size_t red_x = x + column_parity, red_y = y + row_parity;
    const size_t blue_x = x + 1 - column_parity, blue_y = y + 1 - row_parity;
    Pixel p;
    p.r = sample(red_x, red_y);
    p.g = (sample(blue_x, red_y) + sample(red_x, blue_y)) >> 1;
    p.b = sample(blue_x, blue_y);
    return correct_wrapped(p, m);
  });
}

void flip(uint8_t* image, size_t row_bytes, size_t rows) {
  const Bytes before(image, image + row_bytes * rows);
  for (size_t y = 0; y < rows; ++y) {
    memcpy(image + y * row_bytes, before.data() + (rows - 1 - y) * row_bytes, row_bytes);
  }
}

void deinterlace(uint8_t* dst, const uint8_t* src, size_t row_bytes, size_t height) {
  const bool in_place = dst == src;
  const Bytes before(src, src + row_bytes * height);
  const size_t second = in_place ? height * row_bytes / 2 : height * (row_bytes / 2);
  for (size_t i = 0; i < height / 2; ++i) {
    const uint8_t *const even = before.data() + second + i * row_bytes, *const odd = before.data() +
                                                                                     i * row_bytes;
    std::copy(even, even + row_bytes, dst + 2 * i * row_bytes);
    std::copy(odd, odd + row_bytes, dst + (2 * i + 1) * row_bytes);
  }
}

uint32_t crc32(const uint8_t* bytes, size_t n) {
  uint32_t crc = 0xFFFFFFFF;
  for (size_t i = 0; i < n; ++i) {
    crc ^= bytes[i];
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
  }
  return ~crc;
}

}  // namespace lum::reference
