// SPDX-License-Identifier: MIT
// Colours with a matrix, of sources of words: as those of bytes, but that samples less 32768 are
// the signed words that multiply-adds take.
namespace lum {
namespace LUM_LEVEL {
namespace {

// What words less 32768 leave out of the sum of a row of the matrix.
LUM_INLINE U32 bias_of_row(const int32_t* m) {
  const uint32_t sum =
      static_cast<uint32_t>(m[0]) + static_cast<uint32_t>(m[1]) + static_cast<uint32_t>(m[2]);
  return U32{} + (sum << 15);
}

// Lane by lane: out[i * kLanes + x] = f(i, r, g, b).
template <class Out, class F>
LUM_INLINE void each_lane16(const Rgb16& p, Out* out, F f) {
  uint16_t in[3][kLanes];
  store(in[0], p.r);
  store(in[1], p.g);
  store(in[2], p.b);
  each_lane(in[0], in[1], in[2], out, f);
}

// The matrix for words.
class WordMatrix : public ScalarMatrix {
 public:
  explicit WordMatrix(const RowArgs& args)
      : ScalarMatrix(args), scale_(I32{} + static_cast<int32_t>(args.scale)) {
    const int32_t* m = args.matrix;
    for (int i = 0; i < 3; ++i, m += 3) {
      red_green_[i] = I16(splat_words(m[0], m[1]));
      blue_[i] = I16(splat_words(m[2], 0));
      bias_[i] = bias_of_row(m);
    }
  }

  // Row i's sum, scaled, for kLanes / 4 pixels of unsigned words that come less 32768; wraps where
  // the exact sum does not.
  LUM_INLINE I32 scaled_sum(int i, I16 red_green, I16 blue_zero) const {
    const U32 sum = add_madd(add_madd(bias_[i], red_green, red_green_[i]), blue_zero, blue_[i]);
    return shift_right(I32(sum), scale_);
  }

 private:
  I32 scale_;
  I16 red_green_[3], blue_[3];
  U32 bias_[3];
};

// B G R in memory, words in host order.
struct Bgr48Samples {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 6;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Bgr48Samples(const RowArgs&) {}
  LUM_INLINE Rgb16 block(const uint8_t* a, const uint8_t*) const {
    const Words3 lo = load3_words(a), hi = load3_words(a + 3 * kLanes);
    return {{lo.c2, hi.c2}, {lo.c1, hi.c1}, {lo.c0, hi.c0}};
  }
};

// The colours of a source of words, corrected; to 16 bits.
template <class Samples>
struct Corrected16 : Samples {
  explicit Corrected16(const RowArgs& args) : Samples(args), matrix(args) {}
  LUM_INLINE Rgb16 block(const uint8_t* a, const uint8_t* b) const {
    return correct(Samples::block(a, b));
  }
  LUM_INLINE Rgb16 last_block(const uint8_t* a, const uint8_t* b) const {
    return correct(Samples::last_block(a, b));
  }

 private:
  LUM_INLINE void half(U16 r, U16 g, U16 b, U16 (&out)[3]) const {
    const Words2 red_green = interleave(I16(r ^ 0x8000), I16(g ^ 0x8000));
    const Words2 blue_zero = interleave(I16(b ^ 0x8000), I16{});
    for (int i = 0; i < 3; ++i) {
      out[i] = pack_sat_unsigned(matrix.scaled_sum(i, red_green.lo, blue_zero.lo),
                                 matrix.scaled_sum(i, red_green.hi, blue_zero.hi));
    }
  }
  LUM_INLINE Rgb16 by_lanes(const Rgb16& p) const {
    uint16_t out[3][kLanes];
    each_lane16(p, out[0],
                [this](int i, int r, int g, int b) { return matrix.clamped(i, r, g, b, 65535); });
    return {load<Wide>(out[0]), load<Wide>(out[1]), load<Wide>(out[2])};
  }

  LUM_INLINE Rgb16 correct(const Rgb16& p) const {
    if (__builtin_expect(matrix.wide(), 0)) return by_lanes(p);
    U16 lo[3], hi[3];
    half(p.r.lo, p.g.lo, p.b.lo, lo);
    half(p.r.hi, p.g.hi, p.b.hi, hi);
    return {{lo[0], hi[0]}, {lo[1], hi[1]}, {lo[2], hi[2]}};
  }

  WordMatrix matrix;
};

// Words of a mosaic to 8 bits. The sums' upper halves lie side by side as the pixels do.
template <bool of_12_bits>
struct MosaicWordsCorrectedTo8 : Mosaic16Triples<of_12_bits> {
  using Samples = Mosaic16Triples<of_12_bits>;
  using Triples = typename Samples::Triples;

  explicit MosaicWordsCorrectedTo8(const RowArgs& args) : Samples(args), scalar(args) {
    const bool blue_first = (args.column & 1) != 0;
    for (int i = 0; i < 3; ++i) {
      const int32_t* const m = args.matrix + 3 * i;
      const int32_t first = blue_first ? m[2] : m[0], third = blue_first ? m[0] : m[2];
      first_green[i] = I16(splat_words(first, m[1]));
      any_third[i] = I16(splat_words(0, third));
      if constexpr (!of_12_bits) bias[i] = bias_of_row(m);
    }
  }
  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t* b) const {
    if (__builtin_expect(scalar.wide(), 0)) return by_lanes(Mosaic16::block(a, b));
    return colours(Samples::block(a, b));
  }
  LUM_INLINE Rgb8 last_block(const uint8_t* a, const uint8_t* b) const {
    if (__builtin_expect(scalar.wide(), 0)) return by_lanes(Mosaic16::last_block(a, b));
    return colours(Samples::last_block(a, b));
  }

 private:
  struct Words {
    I16 c[3];
  };
  LUM_INLINE Words half(const typename Triples::Half& p) const {
    Words out;
    for (int i = 0; i < 3; ++i) {
      const U32 sum =
          of_12_bits ? U32(madd(p.third, any_third[i])) : add_madd(bias[i], p.third, any_third[i]);
      const I16 high =
          high_words(add_madd(sum, p.even, first_green[i]), add_madd(sum, p.odd, first_green[i]));
      out.c[i] = of_12_bits ? high : high >> (kScale16To8 - 16);
    }
    return out;
  }
  LUM_INLINE Rgb8 colours(const Triples& p) const {
    const Words lo = half(p.lo), hi = half(p.hi);
    return {narrow(lo.c[0], hi.c[0]), narrow(lo.c[1], hi.c[1]), narrow(lo.c[2], hi.c[2])};
  }
  LUM_INLINE Rgb8 by_lanes(const Rgb16& p) const {
    uint8_t out[3][kLanes];
    each_lane16(p, out[0], [this](int i, int r, int g, int b) {
      return scalar.clamped(i, r, of_12_bits ? g >> kShift12To8 << kShift12To8 : g, b, 255);
    });
    return {load<U8>(out[0]), load<U8>(out[1]), load<U8>(out[2])};
  }

  ScalarMatrix scalar;
  I16 first_green[3], any_third[3];
  U32 bias[3] = {};
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
