// SPDX-License-Identifier: MIT
// Complementary mosaic, two lines at a time: a holds cyan and yellow, b green and magenta (column
// 0) or magenta and green (column 1). Every 2 x 2 block has one sample of each colour:
//
//   Y  = floor((Cy + Ye + G + Mg) / 4)
//   Cr = (Ye + Mg - Cy - G) / 4, Cb = (Cy + Mg - Ye - G) / 4, both truncated toward zero
//   R  = clamp((1024 Y + 2165 Cr +  344 Cb) >> 10)
//   G  = clamp((1024 Y -  917 Cr - 1078 Cb) >> 10)
//   B  = clamp((1024 Y -  959 Cr + 4645 Cb) >> 10)
//
// Y is whole, so only the rest of the sums needs more than 16 bits. With 64 Cr and 64 Cb its floor
// is the upper half of a 32-bit lane: 64 * 1024 = 65536.
namespace lum {
namespace LUM_LEVEL {
namespace {

struct Cygm {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 1;
  static constexpr int kRows = 2;
  static constexpr bool kEdge = true, kPadded = false;

  // Even and odd pixels are apart, the two samples that each takes of a line in a word. yellow -
  // cyan is sample 1 - sample 0 in even pixels and 0 - 1 in odd ones; magenta - green likewise when
  // green comes first, and the other way round when magenta does.
  explicit Cygm(const RowArgs& args) : magenta_first((args.column & 1) != 0) {}

  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t* b) const {
    return colours(load<U8>(a), load<U8>(a + 1), load<U8>(b), load<U8>(b + 1));
  }
  LUM_INLINE Rgb8 last_block(const uint8_t* a, const uint8_t* b) const {
    return colours(load<U8>(a), load_edge8(a), load<U8>(b), load_edge8(b));
  }

 private:
  struct Terms {
    U16 y256;  // 256 times the quarter, of which Y is the whole part
    I16 cr64, cb64;
  };

  // 64 times a quarter, truncated toward zero, of a sixteenth of v, a multiple of 16. To negative v
  // 48 to 63 has to be added, to others less than 16: its upper six bits as a number, which are 56
  // to 63 and 0 to 7 for -8160 to 8160.
  static LUM_INLINE I16 quarter64(I16 v) { return (v + I16(U16(v) >> 10)) & ~63; }

  static LUM_INLINE Terms terms(U8 a, U8 b, I8 yellow_minus_cyan, I8 magenta_minus_green) {
    const I8 quarter256 = I8(splat8(64));
    const I16 da = madd(a, yellow_minus_cyan), db = madd(b, magenta_minus_green);
    return {U16(madd(a, quarter256)) + U16(madd(b, quarter256)), quarter64(db + da),
            quarter64(db - da)};
  }

  LUM_INLINE Rgb8 colours(U8 a0, U8 a1, U8 b0, U8 b1) const {
    const I8 second_minus_first = I8(splat_pair(-16, 16)),
             first_minus_second = I8(splat_pair(16, -16));
    const Terms even =
        terms(a0, b0, second_minus_first, magenta_first ? first_minus_second : second_minus_first);
    const Terms odd =
        terms(a1, b1, first_minus_second, magenta_first ? second_minus_first : first_minus_second);
    const Words2 even_c = interleave(even.cr64, even.cb64), odd_c = interleave(odd.cr64, odd.cb64);
    if constexpr (kAddsProducts) {
      const auto even_y = upper_halves(even.y256), odd_y = upper_halves(odd.y256);
      return each_colour([&](I16 weights) {
        const auto half = [&](I16 e, I16 o, U32 e_y, U32 o_y) {
          return high_words(add_madd(e_y, e, weights), add_madd(o_y, o, weights));
        };
        return pack_sat(half(even_c.lo, odd_c.lo, even_y.lo, odd_y.lo),
                        half(even_c.hi, odd_c.hi, even_y.hi, odd_y.hi));
      });
    } else {
      const Words2 y = interleave(I16(even.y256 >> 8), I16(odd.y256 >> 8));
      return each_colour([&](I16 weights) {
        const auto half = [&](I16 e, I16 o) {
          return high_words(U32(madd(e, weights)), U32(madd(o, weights)));
        };
        return pack_sat(y.lo + half(even_c.lo, odd_c.lo), y.hi + half(even_c.hi, odd_c.hi));
      });
    }
  }
  // Whole Y as the upper half of 32-bit lanes, in the order of interleave().
  static LUM_INLINE Dwords2 upper_halves(U16 y256) {
    return {U32(pick_bytes(U8(y256), load<U8>(kUpperHalves<0>.v))),
            U32(pick_bytes(U8(y256), load<U8>(kUpperHalves<8>.v)))};
  }
  template <int from>
  static constexpr LaneTable kUpperHalves = lane_table([](int i) {
    return i % 4 == 2 ? from + i % 16 / 4 * 2 + 1 : 0x80;
  });

  // Of weights of Cr and Cb.
  template <class Colour>
  static LUM_INLINE Rgb8 each_colour(Colour colour) {
    return {colour(I16(splat_words(2165, 344))), colour(I16(splat_words(-917, -1078))),
            colour(I16(splat_words(-959, 4645)))};
  }

  bool magenta_first;
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
