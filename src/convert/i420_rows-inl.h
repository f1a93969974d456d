// SPDX-License-Identifier: MIT
// 4:2:0 from two rows: Y of each pixel, U and V of each square of 2 x 2,
//   Y = ((66 R + 129 G + 25 B + 128) >> 8) + 16
//   U = ((-38 r - 74 g + 112 b + 512) >> 10) + 128, V = ((112 r - 94 g - 18 b + 512) >> 10) + 128
// with the sums r, g, b over a square. YUV keeps its values, U and V are rounded means.
namespace lum {
namespace LUM_LEVEL {
namespace {

// A source gives kLanes pixels of a row as it has them, and of two such blocks the chroma of their
// squares of 2 x 2 pixels: kLanes / 2 bytes of U and as many of V.
struct YuvBlock {
  U8 y, u, v;
};

LUM_INLINE U8 luma_of(const Rgb8& p) { return luma<StudioY>(p); }
template <bool bgr>
LUM_INLINE U8 luma_of(const Pixels4<bgr, true>& p) {
  return luma<StudioY>(p);
}
LUM_INLINE U8 luma_of(const YuvBlock& p) { return p.y; }
LUM_INLINE U8 luma_of(const Wide& uyvy) { return narrow(I16(uyvy.lo >> 8), I16(uyvy.hi >> 8)); }

// Grey is a row like others: U and V are 128 everywhere, as the factors of either add up to 0, and
// are filled in elsewhere. Those of Y added up leave ((220 y + 128) >> 8) + 16. The upper half of
// the product (256 y + 149) 220 is ((220 y + 128.05) >> 8), and bytes beside y are all it takes.
struct StudioGray {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 1;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit StudioGray(const RowArgs&) {}
  LUM_INLINE Gray8 block(const uint8_t* a, const uint8_t*) const {
    const U16 factor = multiplier(StudioY::kRed + StudioY::kGreen + StudioY::kBlue);
    const Bytes2 v = interleave(splat8(149), load<U8>(a));
    return {pack_sat(I16(mul_hi(U16(v.lo), factor)), I16(mul_hi(U16(v.hi), factor))) + 16};
  }
  static_assert(StudioU::kRed + StudioU::kGreen + StudioU::kBlue == 0, "U of grey");
  static_assert(StudioV::kRed + StudioV::kGreen + StudioV::kBlue == 0, "V of grey");
};

LUM_INLINE I16 sum_of_squares(U8 a, U8 b) { return I16(sum_of_pairs(a) + sum_of_pairs(b)); }

// What a sum gets before the shift by 10: a half, and the 128 that follows it.
constexpr int kChromaBack = 512 + (128 << 10);

// R, G, B, summed over the square: up to 1020, so that the products need 32 bits.
struct RgbTo420 {
  static LUM_INLINE U8 chroma(const Rgb8& upper, const Rgb8& lower) {
    const I16 r = sum_of_squares(upper.r, lower.r), g = sum_of_squares(upper.g, lower.g),
              b = sum_of_squares(upper.b, lower.b);
    const Words2 rg = interleave(r, g), b1 = interleave(b, I16(splat16(kChromaBack / 512)));
    return narrow(channel<StudioU>(rg, b1), channel<StudioV>(rg, b1));
  }

 private:
  template <class Factors>
  static LUM_INLINE I16 channel(const Words2& rg, const Words2& b1) {
    static_assert(kChromaBack % 512 == 0, "a product");
    const I16 red_green = I16(splat_words(Factors::kRed, Factors::kGreen));
    const I16 blue_back = I16(splat_words(Factors::kBlue, 512));
    const auto of = [&](I16 rg_words, I16 b1_words) {
      return I32(add_madd(U32(madd(rg_words, red_green)), b1_words, blue_back)) >> 10;
    };
    return pack_sat(of(rg.lo, b1.lo), of(rg.hi, b1.hi));
  }
};
template <bool bgr>
struct Rgb24To420 : RgbTo420 {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 3;
  static LUM_INLINE Rgb8 block(const uint8_t* p) {
    const Bytes3 v = load3(p);
    return {bgr ? v.c2 : v.c0, v.c1, bgr ? v.c0 : v.c2};
  }
};
template <bool bgr, bool by_shuffles = kShufflesBytes>
struct Rgba32To420 : RgbTo420 {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 4;
  static LUM_INLINE Rgb8 block(const uint8_t* p) {
    U8 c[4];
    apart(p, c);
    return {bgr ? c[2] : c[0], c[1], bgr ? c[0] : c[2]};
  }
};

// The same without planes, from pixels as they lie in memory. The two squares of each 16 bytes:
// their first and second channels, then the third and fourth ones, with the pixels of a pair side
// by side.
constexpr LaneTable kSquares = lane_table([](int i) {
  const int channel = i % 16 / 8 * 2 + i % 4 / 2, pixel = i % 8 / 4 * 2 + i % 2;
  return i / 16 * 16 + 4 * pixel + channel;
});
template <bool bgr>
struct Rgba32To420<bgr, true> {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 4;
  using Block = Pixels4<bgr, true>;
  static LUM_INLINE Block block(const uint8_t* p) { return load_pixels4<bgr>(p); }
  static LUM_INLINE U8 chroma(const Block& upper, const Block& lower) {
    U64 sums[4];
    for (int i = 0; i < 4; ++i) {
      sums[i] = U64(sum_of_squares(shuffle_spans(upper.quarter[i], kSquares),
                                   shuffle_spans(lower.quarter[i], kSquares)));
    }
    const Qwords2 first = interleave(sums[0], sums[1]), second = interleave(sums[2], sums[3]);
    return narrow_quarters(channel<StudioU>(first, second), channel<StudioV>(first, second));
  }

 private:
  template <class Factors>
  static LUM_INLINE I16 channel(const Qwords2& first, const Qwords2& second) {
    const I16 lower = I16(splat_words(bgr ? Factors::kBlue : Factors::kRed, Factors::kGreen));
    const I16 upper = I16(splat_words(bgr ? Factors::kRed : Factors::kBlue, 0));
    const auto of = [&](const Qwords2& v) {
      const U32 back = U32{} + uint32_t{kChromaBack};
      return I32(add_madd(add_madd(back, I16(v.lo), lower), I16(v.hi), upper)) >> 10;
    };
    return pack_sat(of(first), of(second));
  }
};
// As U Y V Y; the chroma of two rows is averaged as it lies there.
template <class Layout>
struct YuvTo420 {
  static constexpr size_t kGroupPixels = Layout::kGroupPixels, kGroupBytes = Layout::kGroupBytes;
  static LUM_INLINE Wide block(const uint8_t* p) {
    return {Layout::template uyvy<0>(p), Layout::template uyvy<1>(p)};
  }
  static LUM_INLINE U8 chroma(const Wide& upper, const Wide& lower) {
    const U16 lo = U16(avg_up(U8(upper.lo), U8(lower.lo))) & 255;
    const U16 hi = U16(avg_up(U8(upper.hi), U8(lower.hi))) & 255;
    const U16 uv = U16(narrow(I16(lo), I16(hi)));
    return narrow(I16(uv & 255), I16(uv >> 8));
  }
};
struct Yuv444To420 {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 3;
  static LUM_INLINE YuvBlock block(const uint8_t* p) {
    const Bytes3 v = load3(p);
    return {v.c1, v.c0, v.c2};
  }
  static LUM_INLINE U8 chroma(const YuvBlock& upper, const YuvBlock& lower) {
    return narrow((sum_of_squares(upper.u, lower.u) + 2) >> 2,
                  (sum_of_squares(upper.v, lower.v) + 2) >> 2);
  }
};

template <class Source>
LUM_INLINE void i420_block(const I420Rows& rows) {
  const auto upper = Source::block(rows.src[0]), lower = Source::block(rows.src[1]);
  store(rows.y[0], luma_of(upper));
  store(rows.y[1], luma_of(lower));
  store_halves(rows.u, rows.v, Source::chroma(upper, lower));
}

template <class Source>
void i420(const I420Rows& rows, size_t n) {
  const I420Rows r = rows;  // which no store can change
  if (n < kLanes) {
    constexpr size_t kIn = source_bytes<Source>(kLanes);
    uint8_t in[2][kIn] = {}, y[2][kLanes], u[kLanes / 2], v[kLanes / 2];
    for (int i = 0; i < 2; ++i) memcpy(in[i], r.src[i], source_bytes<Source>(n));
    i420_block<Source>({{in[0], in[1]}, {y[0], y[1]}, u, v});
    for (int i = 0; i < 2; ++i) memcpy(r.y[i], y[i], n);
    memcpy(r.u, u, n / 2);
    memcpy(r.v, v, n / 2);
    return;
  }
  over_row(n, kLanes, [&](size_t x) {
    const size_t at = source_bytes<Source>(x);
    const ptrdiff_t ahead =
        ahead_in_rows(at, source_bytes<Source>(n), 2, distance(r.src[0], r.src[1]));
    for (size_t line = 0; line < source_bytes<Source>(kLanes); line += 64) {
      prefetch_read(r.src[0] + at + line, ahead);
      prefetch_read(r.src[1] + at + line, ahead);
    }
    i420_block<Source>(
        {{r.src[0] + at, r.src[1] + at}, {r.y[0] + x, r.y[1] + x}, r.u + x / 2, r.v + x / 2});
  });
}

// Past the cache, a line of each output at a time: see PastCache. n is a multiple of
// kStreamedI420.
template <class Source>
void streamed_i420(const I420Rows& rows, size_t n) {
  static_assert(kStreamedI420 == 2 * kCacheLine, "a line of U");
  const I420Rows r = rows;  // which no store can change
  constexpr size_t kIn = source_bytes<Source>(kLanes), kBlocks = kStreamedI420 / kLanes;
  for (size_t x = 0; x < n; x += kStreamedI420) {
    const size_t at = source_bytes<Source>(x);
    const ptrdiff_t ahead =
        ahead_in_rows(at, source_bytes<Source>(n), 2, distance(r.src[0], r.src[1]));
    const uint8_t *upper = r.src[0] + at, *lower = r.src[1] + at;
    for (size_t line = 0; line < kBlocks * kIn; line += 64) {
      prefetch_read(upper + line, ahead);
      prefetch_read(lower + line, ahead);
    }
    using Block = decltype(Source::block(upper));
    decltype(luma_of(Block())) y[kBlocks];
    decltype(Source::chroma(Block(), Block())) uv[kBlocks];
    for (size_t k = 0; k < kBlocks; ++k, upper += kIn, lower += kIn) {
      const Block above = Source::block(upper), below = Source::block(lower);
      store(PastCache{r.y[0] + x + k * kLanes}, luma_of(above));
      y[k] = luma_of(below);
      uv[k] = Source::chroma(above, below);
    }
    for (size_t k = 0; k < kBlocks; ++k) store(PastCache{r.y[1] + x + k * kLanes}, y[k]);
    Bytes2 together[kBlocks / 2];
    for (size_t k = 0; k < kBlocks / 2; ++k) {
      together[k] = halves_together(uv[2 * k], uv[2 * k + 1]);
      store(PastCache{r.u + x / 2 + k * kLanes}, together[k].lo);
    }
    for (size_t k = 0; k < kBlocks / 2; ++k) {
      store(PastCache{r.v + x / 2 + k * kLanes}, together[k].hi);
    }
  }
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
