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
// in 16 bits, as floors of floors: with 2165 = 2 * 1024 + 117 and 344 = 43 * 8, for instance,
// R = Y + 2 Cr + (((117 Cr >> 3) + 43 Cb) >> 7).
namespace lum {
namespace LUM_LEVEL {
namespace {

struct Cygm {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 1;
  static constexpr int kRows = 2;
  static constexpr bool kEdge = true, kPadded = false;

  // yellow - cyan is sample 1 - sample 0 in even pixels and 0 - 1 in odd ones; likewise magenta -
  // green. These are the weights of interleaved samples, for two pixels.
  explicit Cygm(const RowArgs& args) {
    const U8 right_minus_left = U8(U32{} + 0xFF0101FFu);  // -1 +1, +1 -1
    yellow_minus_cyan = I8(right_minus_left);
    // Every weight negated when magenta comes first: -1 is 0xFF, so 1 and -1 differ by 0xFE.
    magenta_minus_green = I8(right_minus_left ^ splat8(args.column & 1 ? 0xFE : 0));
  }

  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t* b) const {
    return colours(load<U8>(a), load<U8>(a + 1), load<U8>(b), load<U8>(b + 1));
  }
  LUM_INLINE Rgb8 last_block(const uint8_t* a, const uint8_t* b) const {
    return colours(load<U8>(a), load_edge8(a), load<U8>(b), load_edge8(b));
  }

 private:
  struct Rgb16Signed {
    I16 r, g, b;
  };

  LUM_INLINE Rgb8 colours(U8 a0, U8 a1, U8 b0, U8 b1) const {
    const Bytes2 a = interleave(a0, a1), b = interleave(b0, b1);
    const Rgb16Signed lo = half(a.lo, b.lo), hi = half(a.hi, b.hi);
    return {pack_sat(lo.r, hi.r), pack_sat(lo.g, hi.g), pack_sat(lo.b, hi.b)};
  }

  static LUM_INLINE I16 quarter_toward_zero(I16 v) { return (v + I16(U16(v) >> 14)) >> 2; }

  LUM_INLINE Rgb16Signed half(U8 a, U8 b) const {
    const I8 ones = I8(splat8(1));
    const I16 y = (madd(a, ones) + madd(b, ones)) >> 2;
    const I16 da = madd(a, yellow_minus_cyan), db = madd(b, magenta_minus_green);
    const I16 cr = quarter_toward_zero(db + da), cb = quarter_toward_zero(db - da);
    return {y + cr + cr + (((times(cr, 117) >> 3) + times(cb, 43)) >> 7),
            y - cr - cb + ((times(cr, 107) - times(cb, 54)) >> 10),
            y - cr + (cb << 2) + ((((times(cr, 65) + times(cb, 37)) >> 9) + cb) >> 1)};
  }

  I8 yellow_minus_cyan, magenta_minus_green;
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
