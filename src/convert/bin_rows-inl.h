// SPDX-License-Identifier: MIT
// Binning: means of rectangles of samples. Where the factor along the row is a power of two,
// neighbours are added in pairs, the pairs' sums in pairs and so on, all in registers:
//   rows      a0 a1 a2 a3 ...   sums of words  (a0 + a1 + b0 + b1) (a2 + a3 + b2 + b3) ...
//             b0 b1 b2 b3 ...   means          (sum + count / 2) / count
// Other factors go by sums in memory.
namespace lum {
namespace LUM_LEVEL {
namespace {

// ---- Quotients.
LUM_INLINE constexpr unsigned log2_floor(uint32_t v) {
  return 31u - static_cast<unsigned>(__builtin_clz(v));
}
constexpr bool is_power(uint32_t v) { return (v & (v - 1)) == 0; }

// Of 16-bit sums: ((x + increment) * factor) >> 16 >> shift with the multiple of 1 / count that is
// nearer, rounded up (increment 0) or down (1). Exact for sums of `count` bytes and half of it, for
// every product of two numbers up to 16.
struct ByteDivision {
  explicit ByteDivision(uint32_t count) : shift(log2_floor(count)), power(is_power(count)) {
    const uint32_t one = 1u << (16 + shift), below = one - one / count * count;
    const bool up = count - below <= below;
    factor = splat16(one / count + (up ? 1 : 0));
    half = splat16(count / 2 + (up || power ? 0 : 1));
  }
  LUM_INLINE U16 operator()(U16 sum) const {
    const U16 x = sum + half;
    return shift_right(power ? x : mul_hi(x, factor), shift);
  }
  U16 factor, half;
  unsigned shift;
  bool power;
};

// Of sums below 2^24, `missing` of which is still to be added: a product in floating point is off
// by one at most, in whatever rounding mode, and the remainder tells which way.
typedef float F32 __attribute__((vector_size(kLanes)));
struct WordDivision {
  explicit WordDivision(uint32_t count, uint32_t missing = 0)
      : divisor(I32{} + static_cast<int32_t>(count)),
        half(I32{} + static_cast<int32_t>(missing + count / 2)),
        inverse(1.0f / static_cast<float>(count)),
        shift(static_cast<int>(log2_floor(count))),
        power(is_power(count)) {}
  LUM_INLINE U32 operator()(I32 sum) const {
    const I32 x = sum + half;
    if (power) return U32(x) >> static_cast<uint32_t>(shift);
    I32 q = __builtin_convertvector(__builtin_convertvector(x, F32) * inverse, I32);
    const I32 remainder = x - q * divisor;
    q += (remainder < 0);  // true lanes are -1
    q -= (remainder >= divisor);
    return U32(q);
  }
  I32 divisor, half;
  float inverse;
  int shift;
  bool power;
};

// Of sums over 2^log2 samples.
template <int log2>
struct Shift {
  static constexpr uint16_t kHalf = 1 << log2 >> 1;
  LUM_INLINE U16 operator()(U16 sum) const { return (sum + kHalf) >> log2; }
  // Each word lacks 2^15: see sums16().
  LUM_INLINE U32 operator()(I32 sum) const {
    return U32(sum + ((1 << (15 + log2)) + kHalf)) >> log2;
  }
};

// ---- Means in registers.
struct BinRows {
  const uint8_t* first;
  size_t stride;
  uint32_t count;
};
// The sum over the rows of what of() makes of the vector at `at`.
template <int fixed_rows, class Of>
LUM_INLINE auto sum_of_rows(const BinRows& rows, size_t at, Of of) {
  const uint32_t count = fixed_rows != 0 ? fixed_rows : rows.count;
  const uint8_t* p = rows.first + at;
  auto sum = of(p);
  for (uint32_t i = 1; i < count; ++i) sum += of(p += rows.stride);
  return sum;
}

// Neighbours side by side: of pixels of a b, for instance, a0 b0 a1 b1 as a0 a1 b0 b1.
template <int channels, int sample_bytes>
constexpr LaneTable kPaired = lane_table([](int i) {
  const int pixel = channels * sample_bytes, sample = i % (2 * pixel) / sample_bytes;
  return i / (2 * pixel) * 2 * pixel + sample / 2 * sample_bytes + sample % 2 * pixel +
         i % sample_bytes;
});
template <int channels, int sample_bytes>
LUM_INLINE U8 load_paired(const uint8_t* p) {
  if constexpr (channels == 1) return load<U8>(p);
  return shuffle_spans(load_spans(p, kSpanBytes), kPaired<channels, sample_bytes>);
}
// kLanes / 2 sums of bytes from column `at` on, in bytes: sums over up to 128 samples fit signed
// words.
template <int factor, int channels, int rows>
LUM_INLINE U16 sums8(const BinRows& r, size_t at) {
  if constexpr (factor == 1) {
    return sum_of_rows<rows>(r, at, [](const uint8_t* p) { return load_widened(p); });
  } else if constexpr (factor == 2) {
    return sum_of_rows<rows>(
        r, at, [](const uint8_t* p) { return sum_of_pairs(load_paired<channels, 1>(p)); });
  } else {
    const I16 ones = I16(splat16(1));
    const U16 lo = sums8<factor / 2, channels, rows>(r, at);
    const U16 hi = sums8<factor / 2, channels, rows>(r, at + kLanes * factor / 4);
    return narrow(U32(madd(I16(lo), ones)), U32(madd(I16(hi), ones)));
  }
}
// Sums of two pixels of three bytes each, side by side as if pixels had four.
struct PairedOf3 {
  static constexpr int low(int i) { return i % 4 == 3 ? -1 : i / 4 * 6 + i % 4; }
  static constexpr int high(int i) { return i % 4 == 3 ? -1 : i / 4 * 6 + i % 4 + 3; }
};
template <int half, int rows>
LUM_INLINE U16 sums_of_3(const BinRows& r) {
  return sum_of_rows<rows>(r, 0, [](const uint8_t* p) {
    return sum_of_pairs(U8(load_words_of_3<half>(p, PairedOf3())));
  });
}
// kLanes / 4 sums of words, less 2^15 for each sample, so that signed products take them.
template <int factor, int channels, int rows>
LUM_INLINE I32 sums16(const BinRows& r, size_t at) {
  if constexpr (factor == 2) {
    return sum_of_rows<rows>(r, at, [](const uint8_t* p) {
      return madd(I16(U16(load_paired<channels, 2>(p)) ^ 0x8000), I16(splat16(1)));
    });
  } else {
    return sums_of_pairs(sums16<factor / 2, channels, rows>(r, at),
                         sums16<factor / 2, channels, rows>(r, at + kLanes * factor / 4));
  }
}

template <int factor, int channels, int rows, class Division>
LUM_INLINE void means8(uint8_t* dst, const BinRows& r, const Division& divided) {
  if constexpr (channels == 3 && factor == 2) {
    compress3(dst,
              narrow(I16(divided(sums_of_3<0, rows>(r))), I16(divided(sums_of_3<1, rows>(r)))));
  } else {
    static_assert(channels != 3, "pixels of three bytes are added in pairs");
    store(dst, narrow(I16(divided(sums8<factor, channels, rows>(r, 0))),
                      I16(divided(sums8<factor, channels, rows>(r, kLanes * factor / 2)))));
  }
}
template <int factor, int channels, int rows, class Division>
LUM_INLINE void means16(uint8_t* dst, const BinRows& r, const Division& divided) {
  store(dst, narrow(divided(sums16<factor, channels, rows>(r, 0)),
                    divided(sums16<factor, channels, rows>(r, kLanes * factor / 2))));
}

template <int sample_bytes, int factor, int channels, int rows, class Division>
LUM_INLINE void bin_row(uint8_t* dst, const BinRows& r, size_t n, const Division& divided) {
  constexpr size_t kPixel = channels * sample_bytes;
  constexpr size_t kBlock = channels == 3 ? kLanes / 4 : kLanes / kPixel;  // pixels
  const uint32_t count = rows != 0 ? rows : r.count;
  over_row(n, kBlock, [&](size_t x) {
    const uint8_t* const first = r.first + x * factor * kPixel;
    const ptrdiff_t ahead = ahead_in_rows(x * factor * kPixel, n * factor * kPixel, count,
                                          static_cast<ptrdiff_t>(r.stride));
    for (uint32_t i = 0; i < count; ++i) {
      for (size_t line = 0; line < kBlock * factor * kPixel; line += 64) {
        prefetch_read(first + i * r.stride + line, ahead);
      }
    }
    const BinRows here = {first, r.stride, r.count};
    if constexpr (sample_bytes == 1) {
      means8<factor, channels, rows>(dst + x * kPixel, here, divided);
    } else {
      means16<factor, channels, rows>(dst + x * kPixel, here, divided);
    }
  });
}

template <int sample_bytes, int log2_factor, int channels>
void bin_row(uint8_t* dst, const uint8_t* src, size_t src_row, size_t n, uint32_t factor_y) {
  constexpr int kFactor = 1 << log2_factor;
  const BinRows r = {src, src_row, factor_y};
  const uint32_t count = kFactor * factor_y;
  if constexpr (kFactor == 2) {
    if (factor_y == 1) return bin_row<sample_bytes, 2, channels, 1>(dst, r, n, Shift<1>());
  }
  if constexpr (kFactor <= 2) {
    constexpr int kLog2 = log2_factor + 1;
    if (factor_y == 2)
      return bin_row<sample_bytes, kFactor, channels, 2>(dst, r, n, Shift<kLog2>());
  }
  if constexpr (sample_bytes == 1) {
    bin_row<1, kFactor, channels, 0>(dst, r, n, ByteDivision(count));
  } else {
    bin_row<2, kFactor, channels, 0>(dst, r, n, WordDivision(count, count << 15));
  }
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
