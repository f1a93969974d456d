// SPDX-License-Identifier: MIT
// Colours with a matrix, of Bayer mosaics (2 x 2 blocks) and of finished pixels: each becomes
//   clamp((m[0] R + m[1] G + m[2] B) >> scale)
// with the exact sum. Samples and coefficients of 16 bits make two multiply-adds of pairs, (R, G)
// and (B, 0); larger coefficients go lane by lane in 64 bits.
namespace lum {
namespace LUM_LEVEL {
namespace {

class Matrix {
 public:
  explicit Matrix(const RowArgs& args)
      : m_(args.matrix), scale_(args.scale), wide_(args.wide != 0) {
    for (int i = 0; i < 3; ++i) {
      const uint32_t red = static_cast<uint16_t>(m_[3 * i]);
      const uint32_t green = static_cast<uint16_t>(m_[3 * i + 1]);
      const uint32_t blue = static_cast<uint16_t>(m_[3 * i + 2]);
      red_green_[i] = I16(U32{} + (red | green << 16));
      blue_[i] = I16(U32{} + blue);
      // What words less 32768 leave out of the sum.
      const uint32_t sum = static_cast<uint32_t>(m_[3 * i]) + static_cast<uint32_t>(m_[3 * i + 1]) +
                           static_cast<uint32_t>(m_[3 * i + 2]);
      bias_[i] = sum << 15;
    }
  }

  bool wide() const { return wide_; }

  // Row i's sum of signed words, kLanes / 4 pixels.
  LUM_INLINE I32 sum(int i, I16 red_green, I16 blue_zero) const {
    return I32(U32(madd(red_green, red_green_[i])) + U32(madd(blue_zero, blue_[i])));
  }
  // The same for unsigned words that come less 32768; wraps where the exact sum does not.
  LUM_INLINE I32 biased_sum(int i, I16 red_green, I16 blue_zero) const {
    return I32(U32(sum(i, red_green, blue_zero)) + bias_[i]);
  }
  LUM_INLINE I32 scaled(I32 v) const { return v >> static_cast<int32_t>(scale_); }

  // One pixel in 64 bits.
  int clamped(int i, int64_t r, int64_t g, int64_t b, int limit) const {
    const int64_t v = (m_[3 * i] * r + m_[3 * i + 1] * g + m_[3 * i + 2] * b) >> scale_;
    return v < 0 ? 0 : v > limit ? limit : static_cast<int>(v);
  }
  // One pixel in 32 bits, wrapping.
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
  I16 red_green_[3], blue_[3];
  uint32_t bias_[3];
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

// Interleaved words of the pixels of two vectors of words: (R, G) and (B, 0).
struct Pairs {
  Words2 red_green, blue_zero;
};
LUM_INLINE Pairs pairs(I16 r, I16 g, I16 b) { return {interleave(r, g), interleave(b, I16{})}; }

// B G R in memory, bytes and words in host order.
struct Bgr24Samples {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 3;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Bgr24Samples(const RowArgs&) {}
  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t*) const {
    const Bytes3 v = load3(a);
    return {v.c2, v.c1, v.c0};
  }
};
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

// The colours of a source of bytes, corrected.
template <class Samples>
struct Corrected8 : Samples {
  explicit Corrected8(const RowArgs& args) : Samples(args), matrix(args) {}
  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t* b) const {
    return correct(Samples::block(a, b));
  }
  LUM_INLINE Rgb8 last_block(const uint8_t* a, const uint8_t* b) const {
    return correct(Samples::last_block(a, b));
  }

 protected:
  template <class Finish>
  LUM_INLINE Rgb8 sums(const Rgb8& p, Finish finish) const {
    const Bytes2 r = interleave(p.r, U8{}), g = interleave(p.g, U8{}), b = interleave(p.b, U8{});
    const Pairs lo = pairs(I16(r.lo), I16(g.lo), I16(b.lo));
    const Pairs hi = pairs(I16(r.hi), I16(g.hi), I16(b.hi));
    U8 out[3];
    for (int i = 0; i < 3; ++i) {
      const I16 first = pack_sat(finish(matrix.sum(i, lo.red_green.lo, lo.blue_zero.lo)),
                                 finish(matrix.sum(i, lo.red_green.hi, lo.blue_zero.hi)));
      const I16 second = pack_sat(finish(matrix.sum(i, hi.red_green.lo, hi.blue_zero.lo)),
                                  finish(matrix.sum(i, hi.red_green.hi, hi.blue_zero.hi)));
      out[i] = pack_sat(first, second);
    }
    return {out[0], out[1], out[2]};
  }

  Matrix matrix;

 private:
  LUM_INLINE Rgb8 correct(const Rgb8& p) const {
    if (__builtin_expect(matrix.wide(), 0)) {
      return each_lane8(
          p, [this](int i, int r, int g, int b) { return matrix.clamped(i, r, g, b, 255); });
    }
    return sums(p, [this](I32 v) { return matrix.scaled(v); });
  }
};

// Kept: the sum is one of 32 bits, and of it bits 10 to 25 are the signed word that is limited.
// Gains beyond 127 wrap round; receivers of these mono frames expect just that.
struct Mosaic8Wrapped : Corrected8<Mosaic8> {
  using Corrected8<Mosaic8>::Corrected8;
  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t* b) const {
    return correct(Mosaic8::block(a, b));
  }
  LUM_INLINE Rgb8 last_block(const uint8_t* a, const uint8_t* b) const {
    return correct(Mosaic8::last_block(a, b));
  }

 private:
  LUM_INLINE Rgb8 correct(const Rgb8& p) const {
    if (__builtin_expect(matrix.wide(), 0)) {
      return each_lane8(p, [this](int i, uint32_t r, uint32_t g, uint32_t b) {
        return matrix.wrapped(i, r, g, b);
      });
    }
    return sums(p, [](I32 v) { return I32(U32(v) << 6) >> 16; });
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

  Matrix matrix;

 private:
  template <class Word, class Pack>
  LUM_INLINE void half(U16 r, U16 g, U16 b, Word (&out)[3], Pack pack) const {
    const Pairs v = pairs(I16(r ^ 0x8000), I16(g ^ 0x8000), I16(b ^ 0x8000));
    for (int i = 0; i < 3; ++i) {
      out[i] = pack(matrix.scaled(matrix.biased_sum(i, v.red_green.lo, v.blue_zero.lo)),
                    matrix.scaled(matrix.biased_sum(i, v.red_green.hi, v.blue_zero.hi)));
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
