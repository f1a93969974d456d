// SPDX-License-Identifier: MIT
// The interpolating demosaic modes, straight from their definitions: every intermediate is a whole
// plane that mirrors about its border samples.
#include <algorithm>
#include <cstdlib>

#include "reference.h"

namespace lum::reference {
namespace {

int clamp(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

class Plane {
 public:
  template <class Value>
  Plane(int width, int height, const Value& value) : width_(width), height_(height) {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) values_.push_back(value(y, x));
    }
  }
  int operator()(int y, int x) const {
    return values_[static_cast<size_t>(mirror(y, height_) * width_ + mirror(x, width_))];
  }

 private:
  static int mirror(int i, int n) {
    const int period = 2 * (n - 1);
    i = (i % period + period) % period;
    return i > n - 1 ? period - i : i;
  }
  int width_, height_;
  std::vector<int> values_;
};

struct Phase {
  int rx, ry;
  bool red_row(int y) const { return (y + ry) % 2 == 0; }
  bool native(int y, int x) const { return (x + rx + y + ry) % 2 == 0; }
};

struct Ngo {  // the row's own colour, green, the other colour
  int n, g, o;
};

Ngo bilinear(const Plane& z, const Phase& phase, int y, int x) {
  const int h = z(y, x - 1) + z(y, x + 1), v = z(y - 1, x) + z(y + 1, x);
  const int d = z(y - 1, x - 1) + z(y - 1, x + 1) + z(y + 1, x - 1) + z(y + 1, x + 1);
  if (phase.native(y, x)) return {z(y, x), (h + v + 2) >> 2, (d + 2) >> 2};
  return {(h + 1) >> 1, z(y, x), (v + 1) >> 1};
}

Ngo pair_kernels(const Plane& z, const Phase& phase, int y, int x) {
  static const int kFirst[3][6] = {
      {-3, 3, -12, 9, -7, 2}, {1, 1, 4, -1, 2, 0}, {0, 0, -3, 2, -2, 0}};
  static const int kSecond[3][6] = {
      {1, 1, -1, 8, -2, 1}, {1, -5, 5, -9, 4, -2}, {0, 0, 1, 1, 0, 0}};
  const int even = x & ~1;
  const bool native_first = phase.native(y, even);
  const int origin = native_first ? even : even + 1, step = native_first ? 1 : -1;
  int first = 16, second = 16;
  for (int dy = -2; dy <= 2; ++dy) {
    for (int k = 0; k < 6; ++k) {
      const int value = z(y + dy, origin + step * (k - 2));
      first += kFirst[std::abs(dy)][k] * value;
      second += kSecond[std::abs(dy)][k] * value;
    }
  }
  const int d1 = first >> 5, d2 = second >> 5, own = z(y, x);
  if (phase.native(y, x)) return {own, clamp(own + d1), clamp(own + d1 - d2)};
  return {clamp(own - d1), own, clamp(own - d2)};
}

// Weight of the first neighbour in quarters: the one whose green is nearer counts more.
int closer(int a, int c) {
  const int first = a + 8, second = c + 8;
  const auto most = [](int v) { return (v >> 1) + (v >> 3); };
  return 2 + (second > first >> 3) + (second > most(first)) - (first > most(second)) -
         (first > second >> 3);
}

class Directional {
 public:
  Directional(const Plane& z, const Phase& phase, int width, int height, bool refined)
      : z_(z), phase_(phase), width_(width), height_(height), refined_(refined) {}

  std::vector<Ngo> run() const {
    const auto make = [this](auto value) { return Plane(width_, height_, value); };
    const Plane& z = z_;
    const Plane ph = make([&](int y, int x) {
      return z(y, x - 2) - 2 * z(y, x - 1) + 2 * z(y, x) - 2 * z(y, x + 1) + z(y, x + 2);
    });
    const Plane pv = make([&](int y, int x) {
      return z(y - 2, x) - 2 * z(y - 1, x) + 2 * z(y, x) - 2 * z(y + 1, x) + z(y + 2, x);
    });
    const Plane qh = make([&](int y, int x) { return 2 * ph(y, x) - ph(y, x - 1) - ph(y, x + 1); });
    const Plane qv = make([&](int y, int x) { return 2 * pv(y, x) - pv(y - 1, x) - pv(y + 1, x); });
    const Plane ah = make([&](int y, int x) {
      return std::abs(z(y, x - 2) - 2 * z(y, x - 1) + 2 * z(y, x + 1) - z(y, x + 2));
    });
    const Plane av = make([&](int y, int x) {
      return std::abs(z(y - 2, x) - 2 * z(y - 1, x) + 2 * z(y + 1, x) - z(y + 2, x));
    });
    const auto box = [&](const Plane& a) {
      return make([&](int y, int x) {
        int sum = 0;
        for (int i = 0; i < 9; ++i) sum += a(y + i / 3 - 1, x + i % 3 - 1);
        return sum;
      });
    };
    const Plane gh = box(ah), gv = box(av);
    const Plane e = make([&](int y, int x) {
      const int h = gh(y, x), v = gv(y, x);
      return 2 + (v > h >> 1) + (v > h - (h >> 2)) - (h > v >> 1) - (h > v - (v >> 2));
    });
    const Plane eh = make([&](int y, int x) {
      return phase_.native(y, x) ? z(y, x) - ((qh(y, x) + 8) >> 4) : z(y, x);
    });
    const Plane ev = make([&](int y, int x) {
      return phase_.native(y, x) ? z(y, x) - ((qv(y, x) + 8) >> 4) : z(y, x);
    });

    struct Mixed {
      int x1, x2;
    };
    // hn, ho along the row; own, oth down the column; mixed by the direction weight.
    const auto mix = [&](int y, int x, int hn, int ho, int own, int oth) {
      const int w = e(y, x - 1) + e(y, x + 1);
      const int vn = phase_.native(y, x) ? own : oth, vo = phase_.native(y, x) ? oth : own;
      return Mixed{(w * hn + (8 - w) * vn + 4) >> 3, (w * ho + (8 - w) * vo + 4) >> 3};
    };
    const auto plain = [&](int y, int x) {
      return mix(y, x, qh(y, x), -((qh(y - 1, x) + qh(y + 1, x) + 1) >> 1), qv(y, x),
                 -((qv(y, x - 1) + qv(y, x + 1) + 1) >> 1));
    };
    const auto sharp = [&](int y, int x) {
      const int kh = closer(std::abs(eh(y, x) - eh(y - 1, x)), std::abs(eh(y, x) - eh(y + 1, x)));
      const int kv = closer(std::abs(ev(y, x) - ev(y, x - 1)), std::abs(ev(y, x) - ev(y, x + 1)));
      return mix(y, x, qh(y, x), -((kh * qh(y - 1, x) + (4 - kh) * qh(y + 1, x) + 2) >> 2),
                 qv(y, x), -((kv * qv(y, x - 1) + (4 - kv) * qv(y, x + 1) + 2) >> 2));
    };
    const auto smooth = [&](int y, int x) {
      const int hn = (qh(y - 2, x) + 2 * qh(y, x) + qh(y + 2, x) + 2) >> 2;
      const int ho =
          -((qh(y - 3, x) + 3 * qh(y - 1, x) + 3 * qh(y + 1, x) + qh(y + 3, x) + 4) >> 3);
      const int own = (qv(y, x - 2) + 2 * qv(y, x) + qv(y, x + 2) + 2) >> 2;
      const int oth =
          -((qv(y, x - 3) + 3 * qv(y, x - 1) + 3 * qv(y, x + 1) + qv(y, x + 3) + 4) >> 3);
      return mix(y, x, hn, ho, own, oth);
    };
    const Plane s = make([&](int y, int x) {
      const Mixed l = smooth(y, x);
      const int u = std::abs(l.x1) + std::abs(l.x2) + 64, h = u >> 2;
      const int act = std::min(gh(y, x), gv(y, x));
      return (act > h + (h >> 1)) + (act > u - h);
    });

    std::vector<Ngo> out;
    for (int y = 0; y < height_; ++y) {
      for (int x = 0; x < width_; ++x) {
        Mixed m = plain(y, x);
        if (refined_) {
          const int t = s(y, x - 1) + s(y, x + 1);
          const Mixed a = sharp(y, x), l = smooth(y, x);
          m = {(t * l.x1 + (4 - t) * a.x1 + 2) >> 2, (t * l.x2 + (4 - t) * a.x2 + 2) >> 2};
        }
        const int d1 = (m.x1 + 8) >> 4, d2 = (m.x2 + 8) >> 4, own = z(y, x);
        out.push_back(phase_.native(y, x) ? Ngo{own, clamp(own - d1), clamp(own - d1 + d2)}
                                          : Ngo{clamp(own - d1), own, clamp(own - d2)});
      }
    }
    return out;
  }

 private:
  const Plane& z_;
  Phase phase_;
  int width_, height_;
  bool refined_;
};

}  // namespace

Frame demosaic(Demosaic mode, const uint8_t* src, int width, int height, uint32_t pattern) {
  static const Phase kPhases[4] = {{0, 0}, {0, 1}, {1, 0}, {1, 1}};
  const Phase phase = kPhases[pattern & 3];
  const Plane z(width, height, [&](int y, int x) { return int{src[y * width + x]}; });
  std::vector<Ngo> pixels;
  if (mode == Demosaic::lcaa || mode == Demosaic::lcaav) {
    pixels = Directional(z, phase, width, height, mode == Demosaic::lcaav).run();
  } else {
    for (int i = 0; i < width * height; ++i) {
      const int y = i / width, x = i % width;
      pixels.push_back(mode == Demosaic::bilinear ? bilinear(z, phase, y, x)
                                                  : pair_kernels(z, phase, y, x));
    }
  }
  Frame frame(pixels.size());
  for (size_t i = 0; i < frame.size(); ++i) {
    const bool red_row = phase.red_row(static_cast<int>(i) / width);
    frame[i].r = red_row ? pixels[i].n : pixels[i].o;
    frame[i].g = pixels[i].g;
    frame[i].b = red_row ? pixels[i].o : pixels[i].n;
  }
  return frame;
}

}  // namespace lum::reference
