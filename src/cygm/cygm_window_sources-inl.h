// SPDX-License-Identifier: MIT
// Complementary mosaic by windows of three lines and columns. A line is luminance plus a chroma
// that alternates from column to column. Of sample m with neighbours l and r, e being 1 in even
// columns and -1 in odd ones:
//
//   S = l + 2 m + r         four times the line's luminance
//   D = e (2 m - l - r)     four times its chroma
//
// A luminance term that alternates from line to line cancels in
//
//   Y8 = 2 S + t            eight times the luminance; t of a = S above - S, b = S below - S is
//                           the one nearer 0, or 0 when their signs differ: the median of a, b, 0,
//                           so that Y8 is S and the median of the three S
//
// and the colour differences P, Q are sums of the D of the lines, by the phase of the line, so that
//
//   R, G, B = clamp((4096 Y8 + 16384 + weighted D of the lines) >> 15)
//
// with weights that come as data (RowArgs::matrix).
//
// Words hold the even or the odd columns of a vector of bytes: no shuffle takes them apart.
// madd() of bytes sums a sample and the one before or behind it.
namespace lum {
namespace LUM_LEVEL {
namespace {

// Weighted sums of the two bytes in each word.
LUM_INLINE I16 of_pairs(const uint8_t* p, int first, int second) {
  return madd(load<U8>(p), I8(splat_pair(first, second)));
}
// The samples at even distances from p.
LUM_INLINE I16 every_other(const uint8_t* p) { return I16(load<U16>(p) & 255); }

// S and D of the even and of the odd columns.
struct CygmLine {
  LUM_INLINE explicit CygmLine(const uint8_t* p) {
    const I16 odd = I16(load<U16>(p) >> 8), behind = every_other(p + 2);
    s_even = of_pairs(p - 1, 1, 2) + odd;
    d_even = of_pairs(p - 1, -1, 2) - odd;
    s_odd = of_pairs(p, 1, 2) + behind;
    d_odd = of_pairs(p, 1, -2) + behind;
  }
  I16 s_even, s_odd, d_even, d_odd;
};

LUM_INLINE I16 cygm_luma8(I16 above, I16 here, I16 below) {
  const I16 median = greater(lesser(above, below), lesser(greater(above, below), here));
  return here + median;
}

// Columns of the weights: the line above, here, below, the one below that.
constexpr int kCygmLines = 4;

struct CygmWindow {
  static constexpr size_t kGroupPixels = 2, kGroupBytes = 2;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = true;
  explicit CygmWindow(const RowArgs& args) : above(args.above), below(args.below) {
    for (int i = 0; i < 3; ++i) {
      const int32_t* const w = args.matrix + i * kCygmLines;
      luma_here[i] = I16(splat_words(4096, w[1]));
      above_below[i] = I16(splat_words(w[0], w[2]));
    }
  }
  LUM_INLINE RgbOfParities block(const uint8_t* a, const uint8_t*) const {
    const CygmLine up(a + above), mid(a), down(a + below);
    const Words even =
        colours(cygm_luma8(up.s_even, mid.s_even, down.s_even), up.d_even, mid.d_even, down.d_even);
    const Words odd =
        colours(cygm_luma8(up.s_odd, mid.s_odd, down.s_odd), up.d_odd, mid.d_odd, down.d_odd);
    return {of_parities(even.c[0], odd.c[0]), of_parities(even.c[1], odd.c[1]),
            of_parities(even.c[2], odd.c[2])};
  }

 private:
  struct Words {
    I16 c[3];
  };
  LUM_INLINE Words colours(I16 y8, I16 d_above, I16 d_here, I16 d_below) const {
    // 4 of luminance are the rounding: 16384 of 32768.
    const Words2 y_here = interleave(y8 + 4, d_here), outer = interleave(d_above, d_below);
    Words out;
    for (int i = 0; i < 3; ++i) {
      const auto sum = [&](I16 y, I16 d) {
        return I32(add_madd(U32(madd(y, luma_here[i])), d, above_below[i]));
      };
      out.c[i] = pack_sat(sum(y_here.lo, outer.lo) >> 15, sum(y_here.hi, outer.hi) >> 15);
    }
    return out;
  }

  ptrdiff_t above, below;
  I16 luma_here[3], above_below[3];
};

// (Y8 + 4) >> 3
struct CygmWindowLuma {
  static constexpr size_t kGroupPixels = 2, kGroupBytes = 2;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = true;
  explicit CygmWindowLuma(const RowArgs& args) : above(args.above), below(args.below) {}
  LUM_INLINE Gray8 block(const uint8_t* a, const uint8_t*) const {
    const CygmLine up(a + above), mid(a), down(a + below);
    const U16 even = U16(cygm_luma8(up.s_even, mid.s_even, down.s_even) + 4) >> 3;
    const U16 odd = U16(cygm_luma8(up.s_odd, mid.s_odd, down.s_odd) + 4) >> 3;
    return {U8(even | odd << 8)};
  }

  ptrdiff_t above, below;
};

// A pixel for each block of two lines and columns. With M the sum of its samples and D' the sum of
// D over both columns, R, G, B = clamp((32768 M + 65536 + weighted D' of four lines) >> 17).
struct CygmBinned {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 2;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = true;
  explicit CygmBinned(const RowArgs& args)
      : above(args.above), below(args.below), below2(args.below2) {
    for (int i = 0; i < 3; ++i) {
      const int32_t* const w = args.matrix + i * kCygmLines;
      // The line's own weight is even and may need 17 bits: half of it goes with twice its D'.
      luma_here[i] = I16(splat_words(16384, w[1] / 2));
      above_below[i] = I16(splat_words(w[0], w[2]));
      beyond[i] = I16(splat_words(w[3], 0));
    }
  }
  LUM_INLINE RgbOfHalves block(const uint8_t* a, const uint8_t*) const {
    const Words lo = half(a), hi = half(a + kLanes);
    return {of_halves(lo.c[0], hi.c[0]), of_halves(lo.c[1], hi.c[1]), of_halves(lo.c[2], hi.c[2])};
  }

 private:
  struct Words {
    I16 c[3];
  };
  static LUM_INLINE I16 d_of_both(const uint8_t* p) {
    return of_pairs(p, 3, -3) + every_other(p + 2) - every_other(p - 1);
  }
  LUM_INLINE Words half(const uint8_t* a) const {
    const I16 sum = of_pairs(a, 1, 1) + of_pairs(a + below, 1, 1), d_here = d_of_both(a);
    const Words2 y_here = interleave(sum + sum + 4, d_here + d_here);  // 4 is the rounding
    const Words2 outer = interleave(d_of_both(a + above), d_of_both(a + below));
    const Words2 last = interleave(d_of_both(a + below2), I16{});
    Words out;
    for (int i = 0; i < 3; ++i) {
      const auto sum = [&](I16 y, I16 d, I16 d_last) {
        const U32 inner = add_madd(U32(madd(y, luma_here[i])), d, above_below[i]);
        return I32(add_madd(inner, d_last, beyond[i]));
      };
      out.c[i] = pack_sat(sum(y_here.lo, outer.lo, last.lo) >> 17,
                          sum(y_here.hi, outer.hi, last.hi) >> 17);
    }
    return out;
  }

  ptrdiff_t above, below, below2;
  I16 luma_here[3], above_below[3], beyond[3];
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
