// SPDX-License-Identifier: MIT
// Planes: interleaved components apart and together, and 4:2:0 from two rows.
namespace lum {
namespace LUM_LEVEL {
namespace {

// Calls block(x) for blocks of `step` samples that cover 0 .. n - 1, n >= step; the last one
// overlaps the one before it where step does not divide n.
template <class Block>
LUM_INLINE void over_row(size_t n, size_t step, Block block) {
  size_t x = 0;
  for (; x + step <= n; x += step) block(x);
  if (x < n) block(n - step);
}

// Elements 0, 2, 4 ... of v0 and v1, and elements 1, 3, 5 ...
LUM_INLINE void split_pairs(U8 v0, U8 v1, U8& even, U8& odd) {
  even = narrow(I16(U16(v0) & 255), I16(U16(v1) & 255));
  odd = narrow(I16(U16(v0) >> 8), I16(U16(v1) >> 8));
}
LUM_INLINE void split_pairs(U16 v0, U16 v1, U16& even, U16& odd) {
  even = narrow(U32(v0) & 0xFFFFu, U32(v1) & 0xFFFFu);
  odd = narrow(U32(v0) >> 16, U32(v1) >> 16);
}

template <class V>
LUM_INLINE void apart(const uint8_t* p, V (&c)[2]) {
  split_pairs(load<V>(p), load<V>(p + kLanes), c[0], c[1]);
}
LUM_INLINE void apart(const uint8_t* p, U8 (&c)[3]) {
  const Bytes3 v = load3(p);
  c[0] = v.c0;
  c[1] = v.c1;
  c[2] = v.c2;
}
LUM_INLINE void apart(const uint8_t* p, U16 (&c)[3]) {
  const Words3 v = load3_words(p);
  c[0] = v.c0;
  c[1] = v.c1;
  c[2] = v.c2;
}
template <class V>
LUM_INLINE void apart(const uint8_t* p, V (&c)[4]) {
  V even[2], odd[2];
  split_pairs(load<V>(p), load<V>(p + kLanes), even[0], odd[0]);
  split_pairs(load<V>(p + 2 * kLanes), load<V>(p + 3 * kLanes), even[1], odd[1]);
  split_pairs(even[0], even[1], c[0], c[2]);
  split_pairs(odd[0], odd[1], c[1], c[3]);
}

template <class V>
LUM_INLINE void together(uint8_t* p, const V (&c)[2]) {
  store(p, zip(c[0], c[1]));
}
template <class V>
LUM_INLINE void together(uint8_t* p, const V (&c)[3]) {
  store3(p, c[0], c[1], c[2]);
}
template <class V>
LUM_INLINE void together(uint8_t* p, const V (&c)[4]) {
  const auto even = zip(c[0], c[2]), odd = zip(c[1], c[3]);
  store(p, zip(even.lo, odd.lo));
  store(p + 2 * kLanes, zip(even.hi, odd.hi));
}

template <class V, int channels>
void split(uint8_t* const* planes, const uint8_t* src, size_t n) {
  constexpr size_t kSample = kElementBytes<V>, kPixel = kSample * channels;
  constexpr size_t kStep = kLanes / kSample;
  if (n < kStep) {
    V c[channels];
    uint8_t in[kStep * kPixel] = {};
    memcpy(in, src, n * kPixel);
    apart(in, c);
    for (int i = 0; i < channels; ++i) {
      if (planes[i] != nullptr) memcpy(planes[i], &c[i], n * kSample);
    }
    return;
  }
  over_row(n, kStep, [&](size_t x) {
    for (size_t line = 0; line < kLanes * channels; line += 64) {
      prefetch_read(src + x * kPixel + line);
    }
    V c[channels];
    apart(src + x * kPixel, c);
    for (int i = 0; i < channels; ++i) {
      if (planes[i] != nullptr) store(planes[i] + x * kSample, c[i]);
    }
  });
}

// Components without a plane are stored as they were read from dst.
template <class V, int channels, bool all>
LUM_INLINE void join_blocks(uint8_t* dst, const uint8_t* const* planes, size_t n) {
  constexpr size_t kSample = kElementBytes<V>, kPixel = kSample * channels;
  over_row(n, kLanes / kSample, [&](size_t x) {
    uint8_t* const p = dst + x * kPixel;
    for (size_t line = 0; line < kLanes * channels; line += 64) prefetch_write(p + line);
    V c[channels];
    if constexpr (!all) apart(p, c);
    for (int i = 0; i < channels; ++i) {
      if (all || planes[i] != nullptr) c[i] = load<V>(planes[i] + x * kSample);
    }
    together(p, c);
  });
}
template <class V, int channels>
void join(uint8_t* dst, const uint8_t* const* planes, size_t n) {
  constexpr size_t kSample = kElementBytes<V>, kPixel = kSample * channels;
  constexpr size_t kStep = kLanes / kSample;
  bool all = true;
  for (int i = 0; i < channels; ++i) all = all && planes[i] != nullptr;
  if (n < kStep) {
    V c[channels];
    uint8_t out[kStep * kPixel] = {};
    memcpy(out, dst, n * kPixel);
    apart(out, c);
    for (int i = 0; i < channels; ++i) {
      if (planes[i] != nullptr) memcpy(&c[i], planes[i], n * kSample);
    }
    together(out, c);
    memcpy(dst, out, n * kPixel);
    return;
  }
  if (all) {
    join_blocks<V, channels, true>(dst, planes, n);
  } else {
    join_blocks<V, channels, false>(dst, planes, n);
  }
}

// ---- 4:2:0. A source gives kLanes pixels of a row as it has them, and of two such blocks the
// chroma of their kLanes / 2 squares of 2 x 2 pixels as words.
struct Chroma {
  U16 u, v;
};
struct GrayBlock {
  U8 y;
};
struct YuvBlock {
  U8 y, u, v;
};

// The factors of a grey pixel's three colours added up.
LUM_INLINE U8 luma_of(const GrayBlock& p) {
  const U16 factor = multiplier(66 + 129 + 25);
  constexpr uint16_t kAdded = 128 + 16 * 256;
  const U16 even = (U16(p.y) & 255) * factor + kAdded, odd = (U16(p.y) >> 8) * factor + kAdded;
  return U8((even >> 8) | (odd & 0xFF00));
}
LUM_INLINE U8 luma_of(const Rgb8& p) { return studio_luma(p); }
LUM_INLINE U8 luma_of(const YuvBlock& p) { return p.y; }
LUM_INLINE U8 luma_of(const Wide& uyvy) { return narrow(I16(uyvy.lo >> 8), I16(uyvy.hi >> 8)); }

struct GrayTo420 {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 1;
  static LUM_INLINE GrayBlock block(const uint8_t* p) { return {load<U8>(p)}; }
  // Grey has no chroma: the factors of U and of V add up to 0.
  static LUM_INLINE Chroma chroma(const GrayBlock&, const GrayBlock&) {
    static_assert(StudioU::kRed + StudioU::kGreen + StudioU::kBlue == 0, "U of grey");
    static_assert(StudioV::kRed + StudioV::kGreen + StudioV::kBlue == 0, "V of grey");
    return {splat16(128), splat16(128)};
  }
};

LUM_INLINE U16 sum_of_pairs(U8 v) { return U16(madd(v, I8(splat8(1)))); }
LUM_INLINE I16 sum_of_squares(U8 a, U8 b) { return I16(sum_of_pairs(a) + sum_of_pairs(b)); }

// R, G, B, summed over the square: up to 1020, so that the products need 32 bits.
struct RgbTo420 {
  static LUM_INLINE Chroma chroma(const Rgb8& upper, const Rgb8& lower) {
    const I16 r = sum_of_squares(upper.r, lower.r), g = sum_of_squares(upper.g, lower.g),
              b = sum_of_squares(upper.b, lower.b);
    const Words2 rg = interleave(r, g), b1 = interleave(b, I16(splat16(1)));
    return {channel<StudioU>(rg, b1), channel<StudioV>(rg, b1)};
  }

 private:
  template <class Factors>
  static LUM_INLINE U16 channel(const Words2& rg, const Words2& b1) {
    const I16 red_green = I16(splat_words(Factors::kRed, Factors::kGreen));
    const I16 blue_round = I16(splat_words(Factors::kBlue, 512));
    return U16(pack_sat((madd(rg.lo, red_green) + madd(b1.lo, blue_round)) >> 10,
                        (madd(rg.hi, red_green) + madd(b1.hi, blue_round)) >> 10) +
               128);
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
template <bool bgr>
struct Rgba32To420 : RgbTo420 {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 4;
  static LUM_INLINE Rgb8 block(const uint8_t* p) {
    U8 c[4];
    apart(p, c);
    return {bgr ? c[2] : c[0], c[1], bgr ? c[0] : c[2]};
  }
};

// As U Y V Y; the chroma of two rows is averaged as it lies there.
template <class Layout>
struct YuvTo420 {
  static constexpr size_t kGroupPixels = Layout::kGroupPixels, kGroupBytes = Layout::kGroupBytes;
  static LUM_INLINE Wide block(const uint8_t* p) {
    return {Layout::uyvy(p), Layout::uyvy(p + Layout::kHalf)};
  }
  static LUM_INLINE Chroma chroma(const Wide& upper, const Wide& lower) {
    const U16 lo = U16(avg_up(U8(upper.lo), U8(lower.lo))) & 255;
    const U16 hi = U16(avg_up(U8(upper.hi), U8(lower.hi))) & 255;
    const U16 uv = U16(narrow(I16(lo), I16(hi)));
    return {uv & 255, uv >> 8};
  }
};
struct Yuv444To420 {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 3;
  static LUM_INLINE YuvBlock block(const uint8_t* p) {
    const Bytes3 v = load3(p);
    return {v.c1, v.c0, v.c2};
  }
  static LUM_INLINE Chroma chroma(const YuvBlock& upper, const YuvBlock& lower) {
    return {U16((sum_of_squares(upper.u, lower.u) + 2) >> 2),
            U16((sum_of_squares(upper.v, lower.v) + 2) >> 2)};
  }
};

template <class Source>
LUM_INLINE void i420_block(const uint8_t* a, const uint8_t* b, uint8_t* y0, uint8_t* y1, uint8_t* u,
                           uint8_t* v) {
  const auto upper = Source::block(a), lower = Source::block(b);
  store(y0, luma_of(upper));
  store(y1, luma_of(lower));
  const Chroma c = Source::chroma(upper, lower);
  const U8 uv = narrow(I16(c.u), I16(c.v));
  uint8_t both[kLanes];
  store(both, uv);
  memcpy(u, both, kLanes / 2);
  memcpy(v, both + kLanes / 2, kLanes / 2);
}

template <class Source>
void i420(const I420Rows& rows, size_t n) {
  if (n < kLanes) {
    constexpr size_t kIn = source_bytes<Source>(kLanes);
    uint8_t in[2][kIn] = {}, y[2][kLanes], u[kLanes / 2], v[kLanes / 2];
    for (int i = 0; i < 2; ++i) memcpy(in[i], rows.src[i], source_bytes<Source>(n));
    i420_block<Source>(in[0], in[1], y[0], y[1], u, v);
    for (int i = 0; i < 2; ++i) memcpy(rows.y[i], y[i], n);
    memcpy(rows.u, u, n / 2);
    memcpy(rows.v, v, n / 2);
    return;
  }
  over_row(n, kLanes, [&](size_t x) {
    const size_t at = source_bytes<Source>(x);
    for (size_t line = 0; line < source_bytes<Source>(kLanes); line += 64) {
      prefetch_read(rows.src[0] + at + line);
      prefetch_read(rows.src[1] + at + line);
    }
    i420_block<Source>(rows.src[0] + at, rows.src[1] + at, rows.y[0] + x, rows.y[1] + x,
                       rows.u + x / 2, rows.v + x / 2);
  });
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
