// SPDX-License-Identifier: MIT
// Colours with a matrix, of Bayer mosaics (2 x 2 blocks) and of finished pixels: each becomes
//   clamp((m[0] R + m[1] G + m[2] B) >> scale)
// with the exact sum. Samples and coefficients of 16 bits make multiply-adds of pairs; larger
// coefficients go lane by lane in 64 bits. Here are the sources of bytes.
namespace lum {
namespace LUM_LEVEL {
namespace {

// The matrix for one pixel.
class ScalarMatrix {
 public:
  explicit ScalarMatrix(const RowArgs& args)
      : m_(args.matrix), scale_(args.scale), wide_(args.wide != 0) {}

  bool wide() const { return wide_; }

  // In 64 bits.
  int clamped(int i, int64_t r, int64_t g, int64_t b, int limit) const {
    const int64_t v = (m_[3 * i] * r + m_[3 * i + 1] * g + m_[3 * i + 2] * b) >> scale_;
    return v < 0 ? 0 : v > limit ? limit : static_cast<int>(v);
  }
  // In 32 bits, wrapping.
  int wrapped(int i, uint32_t r, uint32_t g, uint32_t b) const {
    const uint32_t sum = static_cast<uint32_t>(m_[3 * i]) * r +
                         static_cast<uint32_t>(m_[3 * i + 1]) * g +
                         static_cast<uint32_t>(m_[3 * i + 2]) * b;
    const int v = static_cast<int16_t>(sum >> scale_);
    return v < 0 ? 0 : v > 255 ? 255 : v;
  }

 private:
  const int32_t* m_;
  uint32_t scale_;
  bool wide_;
};

// The matrix for bytes. Words hold 64 times the samples, so that, the scale being 10, bits 16 to 31
// of a sum are the corrected colour. Even and odd pixels are apart, two of their colours in the
// lanes of a multiply-add; the sums' upper halves then lie side by side as the pixels do.
struct PixelPairs {
  Words2 even, odd;  // first colour and green of the even, of the odd pixels
  Words2 third;      // third colour of the even and of the odd pixels
};
class ByteMatrix {
 public:
  // With blue_first the first colour is blue and the third one red.
  ByteMatrix(const int32_t* matrix, bool blue_first) {
    for (int i = 0; i < 3; ++i) {
      const int32_t* const m = matrix + 3 * i;
      const int32_t first = blue_first ? m[2] : m[0], third = blue_first ? m[0] : m[2];
      first_green_[i] = I16(splat_words(first, m[1]));
      third_of_even_[i] = I16(splat_words(third, 0));
      third_of_odd_[i] = I16(splat_words(0, third));
    }
  }
  // one_third: both pixels of a pair have the same third colour.
  template <bool one_third>
  LUM_INLINE Rgb8 corrected(const PixelPairs& p) const {
    return {corrected<one_third>(0, p), corrected<one_third>(1, p), corrected<one_third>(2, p)};
  }

 private:
  template <bool one_third>
  LUM_INLINE U8 corrected(int i, const PixelPairs& p) const {
    return pack_sat(half<one_third>(i, p.even.lo, p.odd.lo, p.third.lo),
                    half<one_third>(i, p.even.hi, p.odd.hi, p.third.hi));
  }
  template <bool one_third>
  LUM_INLINE I16 half(int i, I16 even, I16 odd, I16 third) const {
    const U32 to_even = U32(madd(third, third_of_even_[i]));
    const U32 to_odd = one_third ? to_even : U32(madd(third, third_of_odd_[i]));
    return high_words(add_madd(to_even, even, first_green_[i]),
                      add_madd(to_odd, odd, first_green_[i]));
  }

  I16 first_green_[3], third_of_even_[3], third_of_odd_[3];
};

// 64 times the lower or the upper byte of each word.
LUM_INLINE I16 unit_of_lower(U8 v, int unit = 64) { return madd(v, I8(splat_pair(unit, 0))); }
LUM_INLINE I16 unit_of_upper(U8 v, int unit = 64) { return madd(v, I8(splat_pair(0, unit))); }

// Pixel pairs of a mosaic. `own` is the row with samples of its colour in even columns:
//
//   own:    R0 G1 R2     even pixel: R0, G1 and G0', B1'     both have G1 and B1'
//   other:  G0'B1'G2'     odd pixel: R2, G1 and G2', B1'
struct MosaicPairs8 : Mosaic8 {
  static constexpr bool kOneThird = true;
  explicit MosaicPairs8(const RowArgs& args) : Mosaic8(args), own_is_b(blue_first(args)) {}

  static bool blue_first(const RowArgs& args) { return (args.column & 1) != 0; }
  struct Loaded {
    U8 own0, own1, other0, other1;
  };
  LUM_INLINE Loaded load_block(const uint8_t* a, const uint8_t* b) const {
    const uint8_t* const own = own_is_b ? b : a;
    const uint8_t* const other = own_is_b ? a : b;
    return {load<U8>(own), load<U8>(own + 1), load<U8>(other), load<U8>(other + 1)};
  }
  LUM_INLINE Loaded load_last_block(const uint8_t* a, const uint8_t* b) const {
    const uint8_t* const own = own_is_b ? b : a;
    const uint8_t* const other = own_is_b ? a : b;
    return {load<U8>(own), load_edge8(own), load<U8>(other), load_edge8(other)};
  }
  LUM_INLINE Rgb8 colours(const Loaded& v) const {
    return own_is_b ? Mosaic8::colours(v.other0, v.other1, v.own0, v.own1)
                    : Mosaic8::colours(v.own0, v.own1, v.other0, v.other1);
  }
  LUM_INLINE PixelPairs pairs(const Loaded& v) const {
    const I16 even_green = mean(unit_of_upper(v.own0, 32), unit_of_lower(v.other0, 32));
    const I16 odd_green = mean(unit_of_lower(v.own1, 32), unit_of_upper(v.other1, 32));
    const I16 third = unit_of_upper(v.other0);
    return {interleave(unit_of_lower(v.own0), even_green),
            interleave(unit_of_upper(v.own1), odd_green), interleave(third, third)};
  }

 private:
  // 64 ((g1 + g2) >> 1)
  static LUM_INLINE I16 mean(I16 half_g1, I16 half_g2) {
    return (half_g1 + half_g2) & in_register(I16{} + (-64));
  }

  bool own_is_b;
};

// B G R in memory, bytes.
struct Bgr24Samples {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 3;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false, kOneThird = false;
  explicit Bgr24Samples(const RowArgs&) {}

  static bool blue_first(const RowArgs&) { return false; }
  LUM_INLINE Rgb8 load_block(const uint8_t* a, const uint8_t*) const {
    const Bytes3 v = load3(a);
    return {v.c2, v.c1, v.c0};
  }
  LUM_INLINE Rgb8 colours(const Rgb8& p) const { return p; }
  LUM_INLINE PixelPairs pairs(const Rgb8& p) const {
    return {interleave(unit_of_lower(p.r), unit_of_lower(p.g)),
            interleave(unit_of_upper(p.r), unit_of_upper(p.g)),
            interleave(unit_of_lower(p.b), unit_of_upper(p.b))};
  }
};

// Lane by lane: f(i, r, g, b) for colour i. Out of line: it is the rare case.
template <class Out, class Word, class F>
__attribute__((noinline)) void each_lane(const Word* r, const Word* g, const Word* b, Out* out,
                                         F f) {
  for (int x = 0; x < kLanes; ++x) {
    for (int i = 0; i < 3; ++i) {
      out[i * kLanes + x] = static_cast<Out>(f(i, r[x], g[x], b[x]));
    }
  }
}
template <class F>
LUM_INLINE Rgb8 each_lane8(const Rgb8& p, F f) {
  uint8_t in[3][kLanes], out[3][kLanes];
  store(in[0], p.r);
  store(in[1], p.g);
  store(in[2], p.b);
  each_lane(in[0], in[1], in[2], out[0], f);
  return {load<U8>(out[0]), load<U8>(out[1]), load<U8>(out[2])};
}

// The colours of a source of bytes, corrected. Kept, with `wraps`: the sum is one of 32 bits, and
// of it bits 10 to 25 are the signed word that is limited. Gains beyond 127 wrap round; receivers
// of these mono frames expect just that. Coefficients of 16 bits do not get there.
template <class Samples, bool wraps = false>
struct Corrected8 : Samples {
  explicit Corrected8(const RowArgs& args)
      : Samples(args), scalar(args), matrix(args.matrix, Samples::blue_first(args)) {}
  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t* b) const {
    return pixels(Samples::load_block(a, b));
  }
  LUM_INLINE Rgb8 last_block(const uint8_t* a, const uint8_t* b) const {
    return pixels(Samples::load_last_block(a, b));
  }
  template <class Loaded>
  LUM_INLINE Rgb8 pixels(const Loaded& v) const {
    if (__builtin_expect(scalar.wide(), 0)) return by_lanes(Samples::colours(v));
    return matrix.template corrected<Samples::kOneThird>(Samples::pairs(v));
  }

 private:
  LUM_INLINE Rgb8 by_lanes(const Rgb8& p) const {
    return each_lane8(p, [this](int i, uint32_t r, uint32_t g, uint32_t b) {
      return wraps ? scalar.wrapped(i, r, g, b) : scalar.clamped(i, r, g, b, 255);
    });
  }

  ScalarMatrix scalar;
  ByteMatrix matrix;
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
