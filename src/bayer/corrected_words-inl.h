// SPDX-License-Identifier: MIT
// Colours with a matrix, of sources of words: as those of bytes, but that samples less 32768 are
// the signed words that multiply-adds take.
namespace lum {
namespace LUM_LEVEL {
namespace {

// The matrix for words.
class WordMatrix : public ScalarMatrix {
 public:
  explicit WordMatrix(const RowArgs& args)
      : ScalarMatrix(args), scale_(I32{} + static_cast<int32_t>(args.scale)) {
    const int32_t* m = args.matrix;
    for (int i = 0; i < 3; ++i, m += 3) {
      red_green_[i] = I16(splat_words(m[0], m[1]));
      blue_[i] = I16(splat_words(m[2], 0));
      // What words less 32768 leave out of the sum.
      const uint32_t sum =
          static_cast<uint32_t>(m[0]) + static_cast<uint32_t>(m[1]) + static_cast<uint32_t>(m[2]);
      bias_[i] = U32{} + (sum << 15);
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

 protected:
  // pack(lo, hi) takes the scaled sums of a vector of words.
  template <class Word, class Pack>
  LUM_INLINE void sums(const Rgb16& p, Word (&lo)[3], Word (&hi)[3], Pack pack) const {
    half(p.r.lo, p.g.lo, p.b.lo, lo, pack);
    half(p.r.hi, p.g.hi, p.b.hi, hi, pack);
  }
  // Lane by lane, limited to `limit`.
  LUM_INLINE Rgb16 wide(const Rgb16& p, int limit) const {
    uint16_t in[3][kLanes], out[3][kLanes];
    store(in[0], p.r);
    store(in[1], p.g);
    store(in[2], p.b);
    each_lane(in[0], in[1], in[2], out[0], [this, limit](int i, int r, int g, int b) {
      return matrix.clamped(i, r, g, b, limit);
    });
    return {load<Wide>(out[0]), load<Wide>(out[1]), load<Wide>(out[2])};
  }

  WordMatrix matrix;

 private:
  template <class Word, class Pack>
  LUM_INLINE void half(U16 r, U16 g, U16 b, Word (&out)[3], Pack pack) const {
    const Words2 red_green = interleave(I16(r ^ 0x8000), I16(g ^ 0x8000));
    const Words2 blue_zero = interleave(I16(b ^ 0x8000), I16{});
    for (int i = 0; i < 3; ++i) {
      out[i] = pack(matrix.scaled_sum(i, red_green.lo, blue_zero.lo),
                    matrix.scaled_sum(i, red_green.hi, blue_zero.hi));
    }
  }

  LUM_INLINE Rgb16 correct(const Rgb16& p) const {
    if (__builtin_expect(matrix.wide(), 0)) return wide(p, 65535);
    U16 lo[3], hi[3];
    sums(p, lo, hi, [](I32 first, I32 second) { return pack_sat_unsigned(first, second); });
    return {{lo[0], hi[0]}, {lo[1], hi[1]}, {lo[2], hi[2]}};
  }
};

// 16-bit samples; to 8 bits.
struct Mosaic16CorrectedTo8 : Corrected16<Mosaic16> {
  using Corrected16<Mosaic16>::Corrected16;
  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t* b) const {
    return correct(Mosaic16::block(a, b));
  }
  LUM_INLINE Rgb8 last_block(const uint8_t* a, const uint8_t* b) const {
    return correct(Mosaic16::last_block(a, b));
  }

 private:
  LUM_INLINE Rgb8 correct(const Rgb16& p) const {
    I16 lo[3], hi[3];
    if (__builtin_expect(matrix.wide(), 0)) {
      const Rgb16 v = wide(p, 255);
      return {narrow(I16(v.r.lo), I16(v.r.hi)), narrow(I16(v.g.lo), I16(v.g.hi)),
              narrow(I16(v.b.lo), I16(v.b.hi))};
    }
    sums(p, lo, hi, [](I32 first, I32 second) { return pack_sat(first, second); });
    return {narrow(lo[0], hi[0]), narrow(lo[1], hi[1]), narrow(lo[2], hi[2])};
  }
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
