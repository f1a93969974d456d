// SPDX-License-Identifier: MIT
// YUV sources: the pixels of a group share its U and V. With u = U - 128, v = V - 128, full range:
//
//   R = clamp(Y + ((359 v + 128) >> 8))         = clamp(Y + v + round(v, 103))
//   G = clamp(Y - ((88 u + 183 v + 128) >> 8))  = clamp(Y - v - ((88 u - 73 v + 128) >> 8))
//   B = clamp(Y + ((454 u + 128) >> 8))         = clamp(Y + round(2 u, 227))
//
// where the forms on the right stay within 16 bits and round(x, f) is (x f + 128) >> 8, one
// rounding product. Studio range: with c = 298 (Y - 16) + 128
//
//   R = clamp((c + rv v) >> 8), G = clamp((c + gu u + gv v) >> 8), B = clamp((c + bu u) >> 8)
//
// and factors that are data. What depends on full-range chroma alone is worked out once for each
// pair of pixels of 4:1:1 and 4:2:2, and then handed to both.
namespace lum {
namespace LUM_LEVEL {
namespace {

struct RgbWords {
  I16 r, g, b;  // not limited yet
};

// The words of a pair's chroma become those of its two pixels: from the even words or from the odd.
constexpr LaneTable kEvenWordsTwice = lane_table([](int i) { return i % kPieceBytes & ~2; });
constexpr LaneTable kOddWordsTwice = lane_table([](int i) { return i % kPieceBytes | 2; });
template <bool odd>
LUM_INLINE I16 words_twice(I16 v) {
  if constexpr (kShufflesBytes) {
    return I16(pick_bytes(U8(v), load<U8>((odd ? kOddWordsTwice : kEvenWordsTwice).v)));
  } else {
    const U32 pairs = U32(v);
    return I16(odd ? pairs >> 16 | (pairs & 0xFFFF0000u) : (pairs & 0xFFFFu) | pairs << 16);
  }
}

LUM_INLINE I16 low_bytes(U8 uv) { return I16(uv) & 255; }
LUM_INLINE I16 high_bytes(U8 uv) { return I16(U16(uv) >> 8); }

// Full range: makes of words with U in the lower and V in the upper byte what they contribute, and
// of that and Y the colours.
struct FullRange {
  struct Chroma {
    I16 r, g, b;
    template <bool odd>
    LUM_INLINE Chroma twice() const {
      return {words_twice<odd>(r), words_twice<odd>(g), words_twice<odd>(b)};
    }
  };
  explicit FullRange(const RowArgs&) {}
  LUM_INLINE Chroma chroma(U8 uv) const {
    const I16 u = low_bytes(uv) - 128, v = high_bytes(uv) - 128;
    constexpr int16_t kOffset = 128 - 128 * (88 - 73);
    return {v + round<103>(v), v + ((madd(uv, I8(splat_pair(88, -73))) + kOffset) >> 8),
            round<227>(u + u)};
  }
  LUM_INLINE RgbWords to_rgb(I16 y, const Chroma& c) const { return {y + c.r, y - c.g, y + c.b}; }

 private:
  template <int factor>
  static LUM_INLINE I16 round(I16 v) {
    return mul_round(v, I16(splat16(factor * 128)));
  }
};

// Studio range, from words of a chroma byte below Y. A factor f is 256 n + f' with f' a signed
// byte, and 298 is 256 + 42, so that whatever is a multiple of 256 need not be shifted:
//
//   (c + f x) >> 8 = Y - 16 + n x + ((42 (Y - 16) + 128 + f' x) >> 8)
//
// and green, of two chromas, has two f' x; the n of its U is 0. Each product of two bytes is one
// multiply-add, and with the factors of either standard no sum leaves 16 bits, provided that the
// constant is added before both of green's products are.
class StudioRange {
 public:
  explicit StudioRange(const RowArgs& args)
      : red_(args.matrix[0]),
        green_u_(args.matrix[1]),
        green_v_(args.matrix[2]),
        blue_(args.matrix[3]) {}

  LUM_INLINE RgbWords to_rgb(U8 uy, U8 vy) const {
    const I16 green = madd(vy, pair(green_v_.low, 0)) + constant(green_u_.low + green_v_.low) +
                      madd(uy, pair(green_u_.low, kLuma));
    return {colour(red_, vy), total(green, vy, green_v_.high), colour(blue_, uy)};
  }

 private:
  static constexpr int kLuma = 298 - 256;
  struct Factor {
    explicit Factor(int32_t f) : high((f + 128) >> 8), low(f - 256 * high) {}
    int high, low;
  };

  static LUM_INLINE I8 pair(int chroma, int luma) { return I8(splat_pair(chroma, luma)); }
  static LUM_INLINE I16 words(int v) { return I16(splat16(static_cast<unsigned>(v))); }
  // What bytes as they are leave out of 42 (Y - 16) + 128 + f' x, f' added up.
  static LUM_INLINE I16 constant(int low) { return words(128 - 16 * kLuma - 128 * low); }
  static LUM_INLINE I16 colour(const Factor& f, U8 xy) {
    return total(madd(xy, pair(f.low, kLuma)) + constant(f.low), xy, f.high);
  }
  // n is `high`, the chroma's that xy holds.
  static LUM_INLINE I16 total(I16 lower, U8 xy, int high) {
    return (lower >> 8) + (madd(xy, pair(high, 1)) + words(-16 - 128 * high));
  }

  Factor red_, green_u_, green_v_, blue_;
};

// The same where products are added to sums in one operation: as exact sums of 32 bits, of words of
// 256 (x - 128), so that the upper halves of the sums are the colours.
class StudioProducts {
 public:
  // A pixel in each 32-bit lane.
  struct Pixels {
    I16 yu, yv;
  };
  explicit StudioProducts(const RowArgs& args)
      : red_(weights(args.matrix[0])),
        green_u_(weights(args.matrix[1])),
        green_v_(I16(splat_words(0, args.matrix[2]))),
        blue_(weights(args.matrix[3])) {}

  // Words of pixels of the first and of the second by turns.
  LUM_INLINE RgbWords to_rgb(const Pixels& first, const Pixels& second) const {
    return {high_words(sum(first.yv, red_), sum(second.yv, red_)),
            high_words(add_madd(sum(first.yu, green_u_), first.yv, green_v_),
                       add_madd(sum(second.yu, green_u_), second.yv, green_v_)),
            high_words(sum(first.yu, blue_), sum(second.yu, blue_))};
  }

 private:
  static constexpr int kLuma = 298;
  static I16 weights(int32_t of_chroma) { return I16(splat_words(kLuma, of_chroma)); }
  // With the rounding, and the luma that Y less 128 leaves out.
  static LUM_INLINE U32 sum(I16 samples, I16 weights) {
    return add_madd(U32{} + 256u * (kLuma * (128 - 16) + 128), samples, weights);
  }

  I16 red_, green_u_, green_v_, blue_;
};

// Of pixels first, first + step ...: words of Y and of what `chroma` finds.
template <class Layout, int bytes, int first, int step, int (*chroma)(int)>
struct YAndChroma {
  static constexpr int kBytes = bytes;
  static constexpr int low(int) { return -1; }
  static constexpr int high(int i) {
    const int pixel = first + i / 2 * step;
    return i % 2 == 0 ? Layout::y_byte(pixel) : chroma(pixel);
  }
};
template <class Layout, int bytes, int first, int step>
LUM_INLINE StudioProducts::Pixels load_products(const uint8_t* p) {
  return {load_flipped_words(p, YAndChroma<Layout, bytes, first, step, Layout::u_byte>{}),
          load_flipped_words(p, YAndChroma<Layout, bytes, first, step, Layout::v_byte>{})};
}

// A layout tells at which bytes the samples of a pixel are. It gives half a block, the first or
// the second, as U Y V Y ..., as words of a pixel's Y above its U or V, or its luma alone; its
// pair_chroma() has a word of U and V for each pair of a block: even words for the first half of
// the block, odd words for the second, so that words_twice() gives them in memory order.

// U Y0 Y1 V Y2 Y3: words of one byte each, taken from these bytes.
struct Yuv411Layout {
  static constexpr int y_byte(int i) { return i / 4 * 6 + 1 + i % 4 + i % 4 / 2; }
  static constexpr int u_byte(int i) { return i / 4 * 6; }
  static constexpr int v_byte(int i) { return u_byte(i) + 3; }
  struct Y {
    static constexpr int byte(int i) { return y_byte(i); }
    static constexpr int low(int i) { return y_byte(i); }
    static constexpr int high(int) { return -1; }
  };
  // U and V of a pair in one word, which is the pair's first or its second.
  template <int at>
  struct PairChroma {
    static constexpr int low(int i) { return i % 2 == at ? i / 4 * 6 : -1; }
    static constexpr int high(int i) { return i % 2 == at ? i / 4 * 6 + 3 : -1; }
  };
  // Y above the group's U or V, which is `chroma` bytes from its beginning.
  template <int chroma>
  struct WithY {
    static constexpr int low(int i) { return i / 4 * 6 + chroma; }
    static constexpr int high(int i) { return Y::low(i); }
  };
  // As in U Y V Y: chroma below, Y above.
  struct ChromaY {
    static constexpr int low(int i) { return i / 4 * 6 + i % 2 * 3; }
    static constexpr int high(int i) { return Y::low(i); }
  };
  static constexpr size_t kGroupPixels = 4, kGroupBytes = 6;
  static constexpr int kHalf = kLanes / 2 * 3 / 2;  // bytes of half a block
  template <int half>
  static LUM_INLINE I16 luma_words(const uint8_t* p) {
    return I16(load_words_of_3<half>(p, Y{}));
  }
  static LUM_INLINE U8 luma(const uint8_t* p) { return load_bytes_of_3(p, Y{}); }
  template <int half>
  static LUM_INLINE U16 uyvy(const uint8_t* p) {
    return load_words_of_3<half>(p, ChromaY{});
  }
  template <int half>
  static LUM_INLINE U8 uy(const uint8_t* p) {
    return U8(load_words_of_3<half>(p, WithY<0>{}));
  }
  template <int half>
  static LUM_INLINE U8 vy(const uint8_t* p) {
    return U8(load_words_of_3<half>(p, WithY<3>{}));
  }
  static LUM_INLINE U8 pair_chroma(const uint8_t* p) {
    return U8(load_words_of_3<0>(p, PairChroma<0>{}) | load_words_of_3<1>(p, PairChroma<1>{}));
  }
};

// U Y0 V Y1: as words, chroma below Y.
struct Yuv422Layout {
  static constexpr int y_byte(int i) { return i * 2 + 1; }
  static constexpr int u_byte(int i) { return i / 2 * 4; }
  static constexpr int v_byte(int i) { return u_byte(i) + 2; }
  static constexpr size_t kGroupPixels = 2, kGroupBytes = 4;
  static constexpr int kHalf = kLanes;
  template <int half>
  static LUM_INLINE I16 luma_words(const uint8_t* p) {
    return I16(load<U16>(p + half * kHalf) >> 8);
  }
  static LUM_INLINE U8 luma(const uint8_t* p) { return narrow(luma_words<0>(p), luma_words<1>(p)); }
  template <int half>
  static LUM_INLINE U16 uyvy(const uint8_t* p) {
    return load<U16>(p + half * kHalf);
  }
  template <int half>
  static LUM_INLINE U8 uy(const uint8_t* p) {
    return with_y<0>(p + half * kHalf);
  }
  template <int half>
  static LUM_INLINE U8 vy(const uint8_t* p) {
    return with_y<2>(p + half * kHalf);
  }
  static LUM_INLINE U8 pair_chroma(const uint8_t* p) {
    const U8 lo = load<U8>(p), hi = load<U8>(p + kHalf);
    if constexpr (kShufflesBytes) {
      return pick_bytes(lo, load<U8>(kPairChroma<0>.v)) |
             pick_bytes(hi, load<U8>(kPairChroma<1>.v));
    } else {
      const auto uv = [](U32 pair) { return (pair & 0xFFu) | (pair >> 8 & 0xFF00u); };
      return U8(uv(U32(lo)) | uv(U32(hi)) << 16);
    }
  }

 private:
  template <int at>
  static constexpr LaneTable kPairChroma = lane_table([](int i) {
    const int byte = i % kPieceBytes;
    return byte / 2 % 2 == at ? byte / 4 * 4 + byte % 2 * 2 : 0x80;
  });
  template <int chroma>
  static constexpr LaneTable kWithY = lane_table([](int i) {
    const int byte = i % kPieceBytes;
    return byte % 2 == 0 ? byte / 4 * 4 + chroma : byte;
  });
  template <int chroma>
  static LUM_INLINE U8 with_y(const uint8_t* p) {
    const U8 v = load<U8>(p);
    if constexpr (kShufflesBytes) {
      return pick_bytes(v, load<U8>(kWithY<chroma>.v));
    } else {
      const U32 beside = U32(v) >> 8 * chroma & 0xFFu;
      return U8((U32(v) & 0xFF00FF00u) | beside | beside << 16);
    }
  }
};

template <class Layout>
struct YuvSource {
  static constexpr size_t kGroupPixels = Layout::kGroupPixels, kGroupBytes = Layout::kGroupBytes;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit YuvSource(const RowArgs& args) : range(args) {}
  LUM_INLINE RgbOfHalves block(const uint8_t* a, const uint8_t* b) const {
    return pixels(load_block(a, b));
  }
  struct Loaded {
    U8 pair_chroma;
    I16 luma_lo, luma_hi;
  };
  LUM_INLINE Loaded load_block(const uint8_t* a, const uint8_t*) const {
    return {Layout::pair_chroma(a), Layout::template luma_words<0>(a),
            Layout::template luma_words<1>(a)};
  }
  LUM_INLINE RgbOfHalves pixels(const Loaded& v) const {
    const auto pairs = range.chroma(v.pair_chroma);
    const RgbWords lo = range.to_rgb(v.luma_lo, pairs.template twice<false>());
    const RgbWords hi = range.to_rgb(v.luma_hi, pairs.template twice<true>());
    return {of_halves(lo.r, hi.r), of_halves(lo.g, hi.g), of_halves(lo.b, hi.b)};
  }

 private:
  FullRange range;
};

template <class Layout>
struct StudioYuvSource {
  static constexpr size_t kGroupPixels = Layout::kGroupPixels, kGroupBytes = Layout::kGroupBytes;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit StudioYuvSource(const RowArgs& args) : range(args) {}
  LUM_INLINE RgbOfHalves block(const uint8_t* a, const uint8_t*) const {
    const RgbWords lo = range.to_rgb(Layout::template uy<0>(a), Layout::template vy<0>(a));
    const RgbWords hi = range.to_rgb(Layout::template uy<1>(a), Layout::template vy<1>(a));
    return {of_halves(lo.r, hi.r), of_halves(lo.g, hi.g), of_halves(lo.b, hi.b)};
  }

 private:
  StudioRange range;
};

template <class Layout>
struct StudioProductsSource {
  static constexpr size_t kGroupPixels = Layout::kGroupPixels, kGroupBytes = Layout::kGroupBytes;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit StudioProductsSource(const RowArgs& args) : range(args) {}
  LUM_INLINE RgbOfHalves block(const uint8_t* a, const uint8_t*) const {
    const RgbWords lo = half(a), hi = half(a + Layout::kHalf);
    return {of_halves(lo.r, hi.r), of_halves(lo.g, hi.g), of_halves(lo.b, hi.b)};
  }

 private:
  LUM_INLINE RgbWords half(const uint8_t* p) const {
    return range.to_rgb(load_products<Layout, Layout::kHalf, 0, 2>(p),
                        load_products<Layout, Layout::kHalf, 1, 2>(p));
  }

  StudioProducts range;
};

// Y alone, which is BT.601 luminance already.
template <class Layout>
struct YuvLuma {
  static constexpr size_t kGroupPixels = Layout::kGroupPixels, kGroupBytes = Layout::kGroupBytes;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit YuvLuma(const RowArgs&) {}
  LUM_INLINE Gray8 block(const uint8_t* a, const uint8_t*) const { return {Layout::luma(a)}; }
};

// 4:1:1 to 4:2:2 by bytes alone.
struct Yuv411To422 {
  static constexpr size_t kGroupPixels = 4, kGroupBytes = 6;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Yuv411To422(const RowArgs&) {}
  LUM_INLINE Wide block(const uint8_t* a, const uint8_t*) const {
    return {Yuv411Layout::uyvy<0>(a), Yuv411Layout::uyvy<1>(a)};
  }
};

// U Y V
struct Yuv444 {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 3;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Yuv444(const RowArgs& args) : range(args) {}
  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t*) const { return pixels(load3(a)); }
  LUM_INLINE Bytes3 load_block(const uint8_t* a, const uint8_t*) const { return load3(a); }
  LUM_INLINE Rgb8 pixels(const Bytes3& v) const {
    const Bytes2 y = interleave(v.c1, U8{}), uv = interleave(v.c0, v.c2);
    const RgbWords lo = range.to_rgb(I16(y.lo), range.chroma(uv.lo));
    const RgbWords hi = range.to_rgb(I16(y.hi), range.chroma(uv.hi));
    return {pack_sat(lo.r, hi.r), pack_sat(lo.g, hi.g), pack_sat(lo.b, hi.b)};
  }

 private:
  FullRange range;
};

struct StudioYuv444 {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 3;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit StudioYuv444(const RowArgs& args) : range(args) {}
  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t*) const { return pixels(load3(a)); }
  LUM_INLINE Bytes3 load_block(const uint8_t* a, const uint8_t*) const { return load3(a); }
  LUM_INLINE Rgb8 pixels(const Bytes3& v) const {
    const Bytes2 uy = interleave(v.c0, v.c1), vy = interleave(v.c2, v.c1);
    const RgbWords lo = range.to_rgb(uy.lo, vy.lo), hi = range.to_rgb(uy.hi, vy.hi);
    return {pack_sat(lo.r, hi.r), pack_sat(lo.g, hi.g), pack_sat(lo.b, hi.b)};
  }

 private:
  StudioRange range;
};

struct Yuv444Layout {
  static constexpr int y_byte(int i) { return 3 * i + 1; }
  static constexpr int u_byte(int i) { return 3 * i; }
  static constexpr int v_byte(int i) { return 3 * i + 2; }
};
// Packed of words of four vectors, by turns of the first two and of the others.
struct QuartersByTurns {
  static constexpr bool kWithinPieces = false;
  static constexpr int byte(int i) {
    const int quarter = i / 16, lane = i % 16;
    return lane / 4 * 16 + quarter / 2 * 8 + lane % 4 * 2 + quarter % 2;
  }
};
template <class Layout>
struct StudioProducts444 {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 3;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit StudioProducts444(const RowArgs& args) : range(args) {}
  LUM_INLINE Disordered<QuartersByTurns> block(const uint8_t* a, const uint8_t*) const {
    const RgbWords lo = range.to_rgb(quarter(a, 0), quarter(a, 1));
    const RgbWords hi = range.to_rgb(quarter(a, 2), quarter(a, 3));
    return {pack_sat(lo.r, hi.r), pack_sat(lo.g, hi.g), pack_sat(lo.b, hi.b)};
  }

 private:
  static LUM_INLINE StudioProducts::Pixels quarter(const uint8_t* p, int i) {
    constexpr int kQuarter = kLanes / 4 * 3;
    return load_products<Layout, kQuarter, 0, 1>(p + i * kQuarter);
  }

  StudioProducts range;
};

struct Yuv444Luma : Yuv444 {
  using Yuv444::Yuv444;
  LUM_INLINE Gray8 block(const uint8_t* a, const uint8_t*) const { return {load3(a).c1}; }
};

// U and V of a pair are (first + second) >> 1.
struct Yuv444To422 : Yuv444 {
  using Yuv444::Yuv444;
  LUM_INLINE Yuv422 block(const uint8_t* a, const uint8_t*) const {
    const Bytes3 v = load3(a);
    return {v.c1, U8(pair_average(v.c0) | pair_average(v.c2) << 8)};
  }

 private:
  static LUM_INLINE U16 pair_average(U8 v) { return ((U16(v) & 255) + (U16(v) >> 8)) >> 1; }
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
