// SPDX-License-Identifier: MIT
// Conversions that look at the neighbours of a cell or a line: binned mosaics, CYGM by 3x3 windows.
#include "reference.h"

#include <array>

namespace lum::reference {
namespace {

int mirrored(int i, int n) { return i < 0 ? -i : i >= n ? 2 * (n - 1) - i : i; }
int clamp(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

Pixel rgb(int r, int g, int b) {
  Pixel p;
  p.r = r, p.g = g, p.b = b;
  return p;
}

// A progressive frame of a complementary mosaic, and what a window takes from it.
class CygmFrame {
 public:
  CygmFrame(const uint8_t* src, int width, int height)
      : src_(src), width_(width), height_(height) {}

  int sample(int n, int x) const {
    const int row = n % 2 == 0 ? height_ / 2 + n / 2 : n / 2;
    return src_[row * width_ + mirrored(x, width_)];
  }
  int s(int n, int x) const {
    n = mirrored(n, height_);
    return sample(n, x - 1) + 2 * sample(n, x) + sample(n, x + 1);
  }
  int d(int n, int x) const {
    if (n == -1) return -d(1, x);
    n = mirrored(n, height_);
    const int e = x % 2 == 0 ? 1 : -1;
    return e * (2 * sample(n, x) - sample(n, x - 1) - sample(n, x + 1));
  }
  int y8(int x, int y) const { return luma8_of_lines(s(y - 1, x), s(y, x), s(y + 1, x)); }
  int p(int x, int y) const {
    const int outer = d(y - 1, x) + d(y + 1, x);
    return y % 2 == 1 ? -2 * outer : outer - 4 * d(y, x);
  }
  int q(int x, int y) const {
    switch (y % 4) {
      case 0:
        return 2 * (d(y - 1, x) - d(y + 1, x));
      case 1:
        return -4 * d(y, x);
      case 2:
        return 2 * (d(y + 1, x) - d(y - 1, x));
      default:
        return 4 * d(y, x);
    }
  }

 private:
  const uint8_t* src_;
  int width_, height_;
};

Pixel matrixed(int t, int p, int q, int shift) {
  return rgb(clamp((t + 1821 * p + 2509 * q) >> shift), clamp((t + 161 * p - 1995 * q) >> shift),
             clamp((t - 5604 * p + 3686 * q) >> shift));
}

}  // namespace

int luma8_of_lines(int above, int here, int below) {
  const int a = above - here, b = below - here;
  int t = 0;
  if (a > 0 && b > 0) t = a < b ? a : b;
  if (a < 0 && b < 0) t = a > b ? a : b;
  return 2 * here + t;
}

Frame cygm_3x3(const uint8_t* src, int width, int height) {
  const CygmFrame m(src, width, height);
  Frame out;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      out.push_back(matrixed(4096 * m.y8(x, y) + 16384, m.p(x, y), m.q(x, y), 15));
    }
  }
  return out;
}

Bytes cygm_luma(const uint8_t* src, int width, int height) {
  const CygmFrame m(src, width, height);
  Bytes out;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) out.push_back(static_cast<uint8_t>((m.y8(x, y) + 4) >> 3));
  }
  return out;
}

Frame cygm_binned(const uint8_t* src, int width, int height) {
  const CygmFrame m(src, width, height);
  Frame out;
  for (int y = 0; y < height; y += 2) {
    for (int x = 0; x < width; x += 2) {
      int sum = 0, p = 0, q = 0;
      for (int i = 0; i < 4; ++i) {
        sum += m.sample(y + i / 2, x + i % 2);
        p += m.p(x + i % 2, y + i / 2);
        q += m.q(x + i % 2, y + i / 2);
      }
      out.push_back(matrixed(32768 * sum + 65536, p, q, 17));
    }
  }
  return out;
}

Frame bayer_binned(const uint8_t* src, int width, int height, uint32_t pattern) {
  const char* const cell = std::array<const char*, 4>{"RGGB", "GBRG", "GRBG", "BGGR"}[pattern & 3];
  const auto z = [=](int y, int x) {
    return int{src[mirrored(y, height) * width + mirrored(x, width)]};
  };
  Frame out;
  for (int y0 = 0; y0 < height; y0 += 2) {
    for (int x0 = 0; x0 < width; x0 += 2) {
      Pixel p;
      for (int i = 0; i < 4; ++i) {
        const int y = y0 + i / 2, x = x0 + i % 2;
        const int far_y = i / 2 == 0 ? y0 + 2 : y0 - 1, far_x = i % 2 == 0 ? x0 + 2 : x0 - 1;
        if (cell[i] == 'G') {
          p.g += 6 * z(y, x) + z(y, far_x) + z(far_y, x);
        } else {
          (cell[i] == 'R' ? p.r : p.b) =
              (9 * z(y, x) + 3 * z(y, far_x) + 3 * z(far_y, x) + z(far_y, far_x) + 8) >> 4;
        }
      }
      p.g = (p.g + 8) >> 4;
      out.push_back(p);
    }
  }
  return out;
}

Frame window_row(Source source, const uint8_t* a, size_t n, const RowArgs& args) {
  const uint8_t* const lines[4] = {a + args.above, a, a + args.below, a + args.below2};
  Frame out;
  for (ptrdiff_t i = 0; i < static_cast<ptrdiff_t>(n); ++i) {
    if (source == Source::mosaic8_binned) {
      // Rows: red, the red one across, blue, the blue one across.
      const uint8_t *red = lines[1], *far_red = lines[0], *blue = lines[2], *far_blue = lines[3];
      const ptrdiff_t even = 2 * i, odd = 2 * i + 1;
      const bool first = args.column == 0;
      const ptrdiff_t rx = first ? even : odd, bx = first ? odd : even;
      const ptrdiff_t far_rx = first ? even + 2 : odd - 2, far_bx = first ? odd - 2 : even + 2;
      const int green =
          6 * (red[bx] + blue[rx]) + red[far_bx] + far_red[bx] + blue[far_rx] + far_blue[rx];
      out.push_back(
          rgb((9 * red[rx] + 3 * red[far_rx] + 3 * far_red[rx] + far_red[far_rx] + 8) >> 4,
              (green + 8) >> 4,
              (9 * blue[bx] + 3 * blue[far_bx] + 3 * far_blue[bx] + far_blue[far_bx] + 8) >> 4));
      continue;
    }
    const auto s = [](const uint8_t* m, ptrdiff_t x) { return m[x - 1] + 2 * m[x] + m[x + 1]; };
    const auto d = [](const uint8_t* m, ptrdiff_t x) {
      return (x % 2 == 0 ? 1 : -1) * (2 * m[x] - m[x - 1] - m[x + 1]);
    };
    const bool binned = source == Source::cygm_binned;
    int t, chroma[4];
    for (int k = 0; k < 4; ++k) {
      chroma[k] = k == 3 && !binned ? 0
                  : binned          ? d(lines[k], 2 * i) + d(lines[k], 2 * i + 1)
                                    : d(lines[k], i);
    }
    if (binned) {
      const uint8_t *m = lines[1] + 2 * i, *below = lines[2] + 2 * i;
      t = 32768 * (m[0] + m[1] + below[0] + below[1]) + 65536;
    } else {
      const int y8 = luma8_of_lines(s(lines[0], i), s(lines[1], i), s(lines[2], i));
      if (source == Source::cygm_3x3_luma) {
        const int y = (y8 + 4) >> 3;
        out.push_back(rgb(y, y, y));
        continue;
      }
      t = 4096 * y8 + 16384;
    }
    int c[3];
    for (int k = 0; k < 3; ++k) {
      int64_t v = t;
      for (int line = 0; line < 4; ++line) v += int64_t{args.matrix[4 * k + line]} * chroma[line];
      c[k] = clamp(static_cast<int>(v >> (binned ? 17 : 15)));
    }
    out.push_back(rgb(c[0], c[1], c[2]));
  }
  return out;
}

}  // namespace lum::reference
