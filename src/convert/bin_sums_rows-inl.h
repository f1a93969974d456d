// SPDX-License-Identifier: MIT
// Binning by sums in memory: rows are added up sample by sample or in pairs of neighbours,
//   row   s0 s1 s2 s3 ...      sums   += s0 s1 s2 s3 ...   or   += (s0 + s1) (s2 + s3) ...
// then sums of neighbours to each other, and the quotients go out as samples. Bytes have sums of 16
// bits, words of 32.
namespace lum {
namespace LUM_LEVEL {
namespace {

// Calls block(x) for whole blocks of n samples; the rest goes through tail(x, rest).
template <class Block, class Tail>
LUM_INLINE void over_blocks(size_t n, size_t step, Block block, Tail tail) {
  size_t x = 0;
  for (; x + step <= n; x += step) block(x);
  if (x < n) tail(x, n - x);
}

struct Samples8 {
  using Sum = uint16_t;
  static constexpr size_t kSample = 1, kStep = kLanes / 2;
  static LUM_INLINE void add(uint16_t* sums, const uint8_t* p, bool first) {
    const U16 v = load_widened(p);
    store(sums, first ? v : v + load<U16>(sums));
  }
};
struct Samples16 {
  using Sum = uint32_t;
  static constexpr size_t kSample = 2, kStep = kLanes / 2;
  static LUM_INLINE void add(uint32_t* sums, const uint8_t* p, bool first) {
    const Wide v = zip(load<U16>(p), U16{});
    constexpr int kHalf = kLanes / 4;
    store(sums, first ? U32(v.lo) : U32(v.lo) + load<U32>(sums));
    store(sums + kHalf, first ? U32(v.hi) : U32(v.hi) + load<U32>(sums + kHalf));
  }
};
// Sums of neighbours: step counts pairs.
struct Pairs8 {
  using Sum = uint16_t;
  static constexpr size_t kSample = 2, kStep = kLanes / 2;
  static LUM_INLINE void add(uint16_t* sums, const uint8_t* p, bool first) {
    const U16 v = sum_of_pairs(load<U8>(p));
    store(sums, first ? v : v + load<U16>(sums));
  }
};
struct Pairs16 {
  using Sum = uint32_t;
  static constexpr size_t kSample = 4, kStep = kLanes / 4;
  static LUM_INLINE void add(uint32_t* sums, const uint8_t* p, bool first) {
    const U32 words = load<U32>(p);
    const U32 v = (words & 0xFFFFu) + (words >> 16);
    store(sums, first ? v : v + load<U32>(sums));
  }
};

// `sums` has room for a whole block at its end, `row` has not.
template <class Samples>
void add(typename Samples::Sum* sums, const uint8_t* row, size_t n, bool first) {
  over_blocks(
      n, Samples::kStep,
      [&](size_t x) {
        prefetch_read(row + x * Samples::kSample);
        Samples::add(sums + x, row + x * Samples::kSample, first);
      },
      [&](size_t x, size_t rest) {
        uint8_t in[Samples::kStep * Samples::kSample] = {};
        memcpy(in, row + x * Samples::kSample, rest * Samples::kSample);
        Samples::add(sums + x, in, first);
      });
}

// sums[i] += more[i]; `more` may lie in `sums`, further on. Both have room for a whole block.
template <class V, class Sum>
void add_sums(Sum* sums, const Sum* more, size_t n) {
  constexpr size_t kStep = kLanes / sizeof(Sum);
  for (size_t x = 0; x < n; x += kStep) store(sums + x, load<V>(sums + x) + load<V>(more + x));
}
// sums[i] = sums[2 i] + sums[2 i + 1], these below 2^15 and 2^31.
inline void halve16(uint16_t* sums, size_t n) {
  const I16 ones = I16(splat16(1));
  constexpr size_t kStep = kLanes / 2;
  for (size_t x = 0; x < n; x += kStep) {
    store(sums + x, narrow(U32(madd(load<I16>(sums + 2 * x), ones)),
                           U32(madd(load<I16>(sums + 2 * x + kStep), ones))));
  }
}
inline void halve32(uint32_t* sums, size_t n) {
  constexpr size_t kStep = kLanes / 4;
  for (size_t x = 0; x < n; x += kStep) {
    store(sums + x, sums_of_pairs(load<I32>(sums + 2 * x), load<I32>(sums + 2 * x + kStep)));
  }
}

template <class Block>
LUM_INLINE void divide_row(uint8_t* dst, size_t n, Block block) {
  using V = decltype(block(size_t{0}));
  constexpr size_t kSample = kElementBytes<V>;
  over_blocks(
      n, kLanes / kSample, [&](size_t x) { store(dst + x * kSample, block(x)); },
      [&](size_t x, size_t rest) {
        const V last = block(x);
        memcpy(dst + x * kSample, &last, rest * kSample);
      });
}
inline void divide8(uint8_t* dst, const uint16_t* sums, size_t n, uint32_t count) {
  const ByteDivision divided(count);
  divide_row(dst, n, [&](size_t x) {
    return narrow(I16(divided(load<U16>(sums + x))),
                  I16(divided(load<U16>(sums + x + kLanes / 2))));
  });
}
inline void divide16(uint8_t* dst, const uint32_t* sums, size_t n, uint32_t count) {
  const WordDivision divided(count);
  divide_row(dst, n, [&](size_t x) {
    return narrow(divided(load<I32>(sums + x)), divided(load<I32>(sums + x + kLanes / 4)));
  });
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
