// SPDX-License-Identifier: MIT
#include "reference_direct.h"

#include <algorithm>

namespace lum::reference {
namespace {

int clamp(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

struct Yuv {
  int y, u, v;
};
Yuv yuv_at(uint32_t layout, const uint8_t* src, size_t i) {
  if (layout == 8) {
    const uint8_t* g = src + i / 4 * 6;
    static const int kY[4] = {1, 2, 4, 5};
    return {g[kY[i % 4]], g[0], g[3]};
  }
  if (layout == 9) {
    const uint8_t* g = src + i / 2 * 4;
    return {g[1 + 2 * (i % 2)], g[0], g[2]};
  }
  return {src[3 * i + 1], src[3 * i], src[3 * i + 2]};
}

int packed_sample(uint32_t packing, const uint8_t* src, size_t i) {
  const uint8_t* b = src + i / kPackedGroups[packing].pixels * kPackedGroups[packing].bytes;
  const size_t k = i % kPackedGroups[packing].pixels;
  switch (packing) {
    case 0:
      return k == 0 ? b[0] << 4 | (b[1] & 15) : b[2] << 4 | b[1] >> 4;
    case 1:
      return k == 0 ? b[0] << 2 | (b[1] & 3) : b[2] << 2 | (b[1] >> 4 & 3);
    case 4:
      return b[k] << 4 | (k == 0 ? b[2] & 15 : b[2] >> 4);
    case 5:
      return b[k] << 2 | (b[4] >> 2 * k & 3);
    default: {
      uint64_t group = 0;
      for (size_t j = 0; j < kPackedGroups[packing].bytes; ++j) group |= uint64_t{b[j]} << 8 * j;
      const uint32_t bits = kPackedGroups[packing].bits;
      return static_cast<int>(group >> bits * k & ((1u << bits) - 1));
    }
  }
}

int64_t limited(int64_t p, size_t count) {
  const int64_t last = static_cast<int64_t>(count - 1) << 16;
  return p < 0 ? 0 : p > last ? last : p;
}
int mix(int a, int b, int64_t f) { return static_cast<int>(a + (((b - a) * f + 0x4000) >> 15)); }

}  // namespace

size_t layout_group(uint32_t layout) { return layout == 8 ? 4 : layout == 9 ? 2 : 1; }
size_t layout_bytes(uint32_t layout, size_t pixels) {
  switch (layout) {
    case 0:
      return pixels;
    case 4:
    case 5:
    case 10:
      return 3 * pixels;
    case 6:
    case 7:
      return 4 * pixels;
    case 8:
      return pixels * 3 / 2;
    default:
      return 2 * pixels;
  }
}

void yuv_to_bgr(uint8_t* dst, const uint8_t* src, size_t n, uint32_t layout, uint32_t encoding) {
  for (size_t i = 0; i < n; ++i) {
    const Yuv p = yuv_at(layout, src, i);
    const int u = p.u - 128, v = p.v - 128, c = 298 * (p.y - 16) + 128;
    int r, g, b;
    if (encoding == 0) {
      r = p.y + ((359 * v + 128) >> 8);
      g = p.y - ((88 * u + 183 * v + 128) >> 8);
      b = p.y + ((454 * u + 128) >> 8);
    } else if (encoding == 1) {
      r = (c + 409 * v) >> 8;
      g = (c - 100 * u - 208 * v) >> 8;
      b = (c + 516 * u) >> 8;
    } else {
      r = (c + 459 * v) >> 8;
      g = (c - 55 * u - 136 * v) >> 8;
      b = (c + 541 * u) >> 8;
    }
    dst[3 * i] = static_cast<uint8_t>(clamp(b));
    dst[3 * i + 1] = static_cast<uint8_t>(clamp(g));
    dst[3 * i + 2] = static_cast<uint8_t>(clamp(r));
  }
}

void i420(uint8_t* dst, const uint8_t* src, size_t w, size_t h, uint32_t layout) {
  const auto rgb = [&](size_t x, size_t y) -> Pixel {
    const size_t i = y * w + x;
    Pixel p;
    if (layout == 0) {
      p.r = p.g = p.b = src[i];
      return p;
    }
    const uint8_t* s = src + i * (layout < 6 ? 3 : 4);
    const bool bgr = layout % 2 == 1;
    p.r = s[bgr ? 2 : 0];
    p.g = s[1];
    p.b = s[bgr ? 0 : 2];
    return p;
  };
  const auto yuv = [&](size_t x, size_t y) {
    return yuv_at(layout, src + y * layout_bytes(layout, w), x);
  };
  for (size_t y = 0; y < h; ++y) {
    for (size_t x = 0; x < w; ++x) {
      if (layout >= 8) {
        dst[y * w + x] = static_cast<uint8_t>(yuv(x, y).y);
      } else {
        const Pixel p = rgb(x, y);
        dst[y * w + x] = static_cast<uint8_t>(((66 * p.r + 129 * p.g + 25 * p.b + 128) >> 8) + 16);
      }
    }
  }
  uint8_t* u = dst + w * h;
  uint8_t* v = u + w * h / 4;
  for (size_t y = 0; y < h; y += 2) {
    for (size_t x = 0; x < w; x += 2) {
      if (layout >= 8) {
        int su = 0, sv = 0;
        for (size_t i = 0; i < 4; ++i) {
          su += yuv(x + i % 2, y + i / 2).u;
          sv += yuv(x + i % 2, y + i / 2).v;
        }
        const Yuv a = yuv(x, y), b = yuv(x, y + 1);
        *u++ = static_cast<uint8_t>(layout == 10 ? (su + 2) >> 2 : (a.u + b.u + 1) >> 1);
        *v++ = static_cast<uint8_t>(layout == 10 ? (sv + 2) >> 2 : (a.v + b.v + 1) >> 1);
      } else {
        int r = 0, g = 0, b = 0;
        for (size_t i = 0; i < 4; ++i) {
          const Pixel p = rgb(x + i % 2, y + i / 2);
          r += p.r, g += p.g, b += p.b;
        }
        *u++ = static_cast<uint8_t>(((-38 * r - 74 * g + 112 * b + 512) >> 10) + 128);
        *v++ = static_cast<uint8_t>(((112 * r - 94 * g - 18 * b + 512) >> 10) + 128);
      }
    }
  }
}

void split(uint8_t* dst, const uint8_t* src, const Planes& p) {
  for (size_t i = 0; i < p.n * p.channels; ++i) {
    const size_t pixel = i / p.channels, channel = i % p.channels;
    if ((p.present >> channel & 1) == 0) continue;
    const uint8_t* const from = src + i * p.bytes;
    std::copy(from, from + p.bytes, dst + channel * p.plane_bytes() + pixel * p.bytes);
  }
}
void join(uint8_t* dst, const uint8_t* src, const Planes& p) {
  for (size_t i = 0; i < p.n * p.channels; ++i) {
    const size_t pixel = i / p.channels, channel = i % p.channels;
    if ((p.present >> channel & 1) == 0) continue;
    const uint8_t* const from = src + channel * p.plane_bytes() + pixel * p.bytes;
    std::copy(from, from + p.bytes, dst + i * p.bytes);
  }
}

void unpack(uint8_t* dst, const uint8_t* src, size_t n, uint32_t packing,
            const LumBitDepthInfo& info) {
  for (size_t i = 0; i < n; ++i) {
    int v = packed_sample(packing, src, i);
    if (info.alignment == 0) v <<= 16 - kPackedGroups[packing].bits;
    dst[2 * i + (info.endianness ? 0 : 1)] = static_cast<uint8_t>(v >> 8);
    dst[2 * i + (info.endianness ? 1 : 0)] = static_cast<uint8_t>(v);
  }
}

void words_to_8(uint8_t* dst, const uint8_t* src, size_t n, const LumBitDepthInfo& info) {
  for (size_t i = 0; i < n; ++i) {
    const int v = word(src, i, info.endianness != 0);
    dst[i] = static_cast<uint8_t>(info.alignment == 0 ? v >> 8
                                                      : std::min(255, v >> (info.bitsUsed - 8)));
  }
}

void flip_image(uint8_t* dst, const uint8_t* src, size_t width, size_t height, size_t bytes,
                uint32_t mode) {
  const size_t w = mode & 4 ? height : width, h = mode & 4 ? width : height;
  for (size_t y = 0; y < h; ++y) {
    for (size_t x = 0; x < w; ++x) {
      const size_t u = mode & 1 ? w - 1 - x : x, v = mode & 2 ? h - 1 - y : y;
      const size_t from = mode & 4 ? u * width + v : v * width + u;
      std::copy(src + from * bytes, src + (from + 1) * bytes, dst + (y * w + x) * bytes);
    }
  }
}

void copy_rows(uint8_t* dst, const uint8_t* src, size_t row_bytes, size_t rows, size_t dst_pitch,
               size_t src_pitch) {
  for (size_t y = 0; y < rows; ++y) {
    const uint8_t* const row = src + y * src_pitch;
    std::copy(row, row + row_bytes, dst + y * dst_pitch);
  }
}

void bin(uint8_t* dst, const uint8_t* src, size_t width, size_t height, size_t channels,
         size_t bytes, size_t fx, size_t fy) {
  const size_t n = fx * fy;
  for (size_t y = 0; y < height / fy; ++y) {
    for (size_t x = 0; x < width / fx; ++x) {
      for (size_t c = 0; c < channels; ++c) {
        size_t sum = 0;
        for (size_t i = 0; i < n; ++i) {
          const size_t pixel = (y * fy + i / fx) * width + x * fx + i % fx;
          sum += static_cast<size_t>(sample(src, pixel * channels + c, bytes));
        }
        put_sample(dst, (y * (width / fx) + x) * channels + c, bytes,
                   static_cast<int>((sum + n / 2) / n));
      }
    }
  }
}

void resample_row(uint8_t* dst, const uint8_t* src, size_t n, size_t count, PixelShape pixel,
                  int64_t position, int64_t step, uint32_t mode) {
  for (size_t x = 0; x < n; ++x) {
    const int64_t p = limited(position + static_cast<int64_t>(x) * step, count);
    for (size_t c = 0; c < pixel.channels; ++c) {
      const auto at = [&](int64_t i) {
        return sample(src, static_cast<size_t>(i) * pixel.channels + c, pixel.sample_bytes);
      };
      const int64_t i = p >> 16, next = std::min<int64_t>(i + 1, static_cast<int64_t>(count) - 1);
      const int v = mode == 0 ? at((p + 0x8000) >> 16) : mix(at(i), at(next), (p >> 1) & 0x7FFF);
      put_sample(dst, x * pixel.channels + c, pixel.sample_bytes, v);
    }
  }
}
void resize(uint8_t* dst, const uint8_t* src, Size to, Size from, PixelShape pixel,
            uint32_t mode) {
  const int64_t sx = static_cast<int64_t>((from.width << 16) / to.width);
  const int64_t sy = static_cast<int64_t>((from.height << 16) / to.height);
  const size_t row = to.width * pixel.channels;
  Bytes rows(from.height * row * pixel.sample_bytes);
  for (size_t y = 0; y < from.height; ++y) {
    resample_row(&rows[y * row * pixel.sample_bytes], src + y * from.width * pixel.bytes(),
                 to.width, from.width, pixel, (sx >> 1) - 0x8000, sx, mode);
  }
  for (size_t y = 0; y < to.height; ++y) {
    const int64_t q = limited((sy >> 1) - 0x8000 + static_cast<int64_t>(y) * sy, from.height);
    const int64_t last = static_cast<int64_t>(from.height) - 1;
    for (size_t x = 0; x < row; ++x) {
      const auto at = [&](int64_t i) {
        return sample(rows.data(), static_cast<size_t>(i) * row + x, pixel.sample_bytes);
      };
      const int v = mode == 0
                        ? at((q + 0x8000) >> 16)
                        : mix(at(q >> 16), at(std::min((q >> 16) + 1, last)), (q >> 1) & 0x7FFF);
      put_sample(dst, y * row + x, pixel.sample_bytes, v);
    }
  }
}

}  // namespace lum::reference
