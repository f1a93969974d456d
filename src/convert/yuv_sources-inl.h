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
// and factors that are data. What depends on chroma alone is worked out once for each pair of
// pixels, and then handed to both.
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
  return I16(pick_bytes(U8(v), load<U8>((odd ? kOddWordsTwice : kEvenWordsTwice).v)));
}

// A range makes of words with U in the lower and V in the upper byte what they contribute, and of
// that and Y the colours.
LUM_INLINE I16 low_bytes(U8 uv) { return I16(uv) & 255; }
LUM_INLINE I16 high_bytes(U8 uv) { return I16(U16(uv) >> 8); }

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

// The offsets of Y, U and V and the rounding are one number a colour, added to the products.
struct StudioRange {
  struct Chroma {
    I16 u, v;
    template <bool odd>
    LUM_INLINE Chroma twice() const {
      return {words_twice<odd>(u), words_twice<odd>(v)};
    }
  };
  explicit StudioRange(const RowArgs& args)
      : red(args.matrix[0]),
        green_u(args.matrix[1]),
        green_v(args.matrix[2]),
        blue(args.matrix[3]) {}
  LUM_INLINE Chroma chroma(U8 uv) const { return {low_bytes(uv), high_bytes(uv)}; }
  LUM_INLINE RgbWords to_rgb(I16 y, const Chroma& c) const {
    const Words2 yu = interleave(y, c.u), yv = interleave(y, c.v);
    const I16 from_v = I16(splat_words(kLuma, red)), from_u = I16(splat_words(kLuma, blue));
    const I16 green_yu = I16(splat_words(kLuma, green_u)), green_yv = I16(splat_words(0, green_v));
    const U32 r = added(red), g = added(green_u + green_v), b = added(blue);
    const U32 g_lo = add_madd(g, yu.lo, green_yu), g_hi = add_madd(g, yu.hi, green_yu);
    return {packed(add_madd(r, yv.lo, from_v), add_madd(r, yv.hi, from_v)),
            packed(add_madd(g_lo, yv.lo, green_yv), add_madd(g_hi, yv.hi, green_yv)),
            packed(add_madd(b, yu.lo, from_u), add_madd(b, yu.hi, from_u))};
  }

 private:
  static constexpr int32_t kLuma = 298;
  static LUM_INLINE U32 added(int32_t chroma) {
    return U32{} + static_cast<uint32_t>(128 - 16 * kLuma - 128 * chroma);
  }
  static LUM_INLINE I16 packed(U32 lo, U32 hi) { return pack_sat(I32(lo) >> 8, I32(hi) >> 8); }
  int32_t red, green_u, green_v, blue;
};

// A layout gives half a block as U Y V Y ..., or its luma alone; its pair_chroma() has a word of U
// and V for each pair of a block: even words for the first half of the block, odd words for the
// second, so that words_twice() gives them in memory order.

// U Y0 Y1 V Y2 Y3: words of one byte each, taken from these bytes.
struct Yuv411Layout {
  struct Y {
    static constexpr int low(int i) { return i / 4 * 6 + 1 + i % 4 + i % 4 / 2; }
    static constexpr int high(int) { return -1; }
  };
  // U and V of a pair in one word, which is the pair's first or its second.
  template <int at>
  struct PairChroma {
    static constexpr int low(int i) { return i % 2 == at ? i / 4 * 6 : -1; }
    static constexpr int high(int i) { return i % 2 == at ? i / 4 * 6 + 3 : -1; }
  };
  // As in U Y V Y: chroma below, Y above.
  struct ChromaY {
    static constexpr int low(int i) { return i / 4 * 6 + i % 2 * 3; }
    static constexpr int high(int i) { return Y::low(i); }
  };
  static constexpr size_t kGroupPixels = 4, kGroupBytes = 6;
  static constexpr int kHalf = kLanes / 2 * 3 / 2;  // bytes of half a block
  static LUM_INLINE I16 luma_words(const uint8_t* p) { return I16(load_words_of_3(p, Y{})); }
  static LUM_INLINE U16 uyvy(const uint8_t* p) { return load_words_of_3(p, ChromaY{}); }
  static LUM_INLINE U8 pair_chroma(const uint8_t* p) {
    return U8(load_words_of_3(p, PairChroma<0>{}) | load_words_of_3(p + kHalf, PairChroma<1>{}));
  }
};

// U Y0 V Y1: as words, chroma below Y.
struct Yuv422Layout {
  static constexpr size_t kGroupPixels = 2, kGroupBytes = 4;
  static constexpr int kHalf = kLanes;
  static LUM_INLINE I16 luma_words(const uint8_t* p) { return I16(load<U16>(p) >> 8); }
  static LUM_INLINE U16 uyvy(const uint8_t* p) { return load<U16>(p); }
  static LUM_INLINE U8 pair_chroma(const uint8_t* p) {
    return pick_bytes(load<U8>(p), load<U8>(kPairChroma<0>.v)) |
           pick_bytes(load<U8>(p + kHalf), load<U8>(kPairChroma<1>.v));
  }

 private:
  template <int at>
  static constexpr LaneTable kPairChroma = lane_table([](int i) {
    const int byte = i % kPieceBytes;
    return byte / 2 % 2 == at ? byte / 4 * 4 + byte % 2 * 2 : 0x80;
  });
};

template <class Layout, class Range = FullRange>
struct YuvSource {
  static constexpr size_t kGroupPixels = Layout::kGroupPixels, kGroupBytes = Layout::kGroupBytes;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit YuvSource(const RowArgs& args) : range(args) {}
  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t*) const {
    const auto pairs = range.chroma(Layout::pair_chroma(a));
    const RgbWords lo = range.to_rgb(Layout::luma_words(a), pairs.template twice<false>());
    const RgbWords hi =
        range.to_rgb(Layout::luma_words(a + Layout::kHalf), pairs.template twice<true>());
    return {narrow(lo.r, hi.r), narrow(lo.g, hi.g), narrow(lo.b, hi.b)};
  }

 private:
  Range range;
};

// Y alone, which is BT.601 luminance already.
template <class Layout>
struct YuvLuma {
  static constexpr size_t kGroupPixels = Layout::kGroupPixels, kGroupBytes = Layout::kGroupBytes;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit YuvLuma(const RowArgs&) {}
  LUM_INLINE Gray8 block(const uint8_t* a, const uint8_t*) const {
    return {narrow(Layout::luma_words(a), Layout::luma_words(a + Layout::kHalf))};
  }
};

// 4:1:1 to 4:2:2 by bytes alone.
struct Yuv411To422 {
  static constexpr size_t kGroupPixels = 4, kGroupBytes = 6;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Yuv411To422(const RowArgs&) {}
  LUM_INLINE Wide block(const uint8_t* a, const uint8_t*) const {
    return {Yuv411Layout::uyvy(a), Yuv411Layout::uyvy(a + Yuv411Layout::kHalf)};
  }
};

// U Y V
template <class Range>
struct Yuv444Source {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 3;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Yuv444Source(const RowArgs& args) : range(args) {}
  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t*) const {
    const Bytes3 v = load3(a);
    const Bytes2 y = interleave(v.c1, U8{}), uv = interleave(v.c0, v.c2);
    const RgbWords lo = range.to_rgb(I16(y.lo), range.chroma(uv.lo));
    const RgbWords hi = range.to_rgb(I16(y.hi), range.chroma(uv.hi));
    return {pack_sat(lo.r, hi.r), pack_sat(lo.g, hi.g), pack_sat(lo.b, hi.b)};
  }

 private:
  Range range;
};
using Yuv444 = Yuv444Source<FullRange>;

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
