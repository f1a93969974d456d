// SPDX-License-Identifier: MIT
// Geometry: sums for binning, picks and mixes for resampling.
namespace lum {
namespace LUM_LEVEL {
namespace {

// ---- Sums.
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

LUM_INLINE unsigned log2_floor(uint32_t v) { return 31u - static_cast<unsigned>(__builtin_clz(v)); }

// Quotients of 16-bit sums: ((x + increment) * factor) >> 16 >> shift with the multiple of 1 /
// count that is nearer, rounded up (increment 0) or down (1). Exact for sums of `count` bytes and
// half of it, for every product of two numbers up to 16.
inline void divide8(uint8_t* dst, const uint16_t* sums, size_t n, uint32_t count) {
  const unsigned shift = log2_floor(count);
  const bool power = (count & (count - 1)) == 0;
  const uint32_t one = 1u << (16 + shift), below = one - one / count * count;
  const bool up = count - below <= below;
  const U16 factor = splat16(one / count + (up ? 1 : 0));
  const U16 half = splat16(count / 2 + (up || power ? 0 : 1));
  const auto quotient = [&](const uint16_t* p) {
    const U16 x = load<U16>(p) + half;
    return I16(shift_right(power ? x : mul_hi(x, factor), shift));
  };
  const auto block = [&](const uint16_t* p) {
    return narrow(quotient(p), quotient(p + kLanes / 2));
  };
  over_blocks(
      n, kLanes, [&](size_t x) { store(dst + x, block(sums + x)); },
      [&](size_t x, size_t rest) {
        const U8 last = block(sums + x);
        memcpy(dst + x, &last, rest);
      });
}

// Quotients of sums below 2^24: a product in floating point is off by one at most, in whatever
// rounding mode, and the remainder tells which way.
typedef float F32 __attribute__((vector_size(kLanes)));
inline void divide16(uint8_t* dst, const uint32_t* sums, size_t n, uint32_t count) {
  const unsigned shift = log2_floor(count);
  const bool power = (count & (count - 1)) == 0;
  const float inverse = 1.0f / static_cast<float>(count);
  const I32 divisor = I32{} + static_cast<int32_t>(count);
  const auto quotient = [&](const uint32_t* p) {
    const I32 x = load<I32>(p) + static_cast<int32_t>(count / 2);
    if (power) return U32(x >> static_cast<int>(shift));
    I32 q = __builtin_convertvector(__builtin_convertvector(x, F32) * inverse, I32);
    const I32 remainder = x - q * divisor;
    q += (remainder < 0);  // true lanes are -1
    q -= (remainder >= divisor);
    return U32(q);
  };
  constexpr size_t kStep = kLanes / 2;
  const auto block = [&](const uint32_t* p) {
    return narrow(quotient(p), quotient(p + kLanes / 4));
  };
  over_blocks(
      n, kStep, [&](size_t x) { store(dst + 2 * x, block(sums + x)); },
      [&](size_t x, size_t rest) {
        const U16 last = block(sums + x);
        memcpy(dst + 2 * x, &last, 2 * rest);
      });
}

// ---- Picks: for each piece of the result, bytes of the two pieces of the source from its base on.
struct Window {
  U8 first, second;
};
LUM_INLINE Window load_window(const uint8_t* src, const size_t* base) {
  return {load_pieces_at(src, base), load_pieces_at(src + kPieceBytes, base)};
}
// An index at or above the size of a piece has its highest bit set for the first one, one below it
// for the second.
LUM_INLINE U8 picked(const Window& w, U8 index) {
  return pick_bytes(w.first, index + static_cast<uint8_t>(0x80 - kPieceBytes)) |
         pick_bytes(w.second, index - static_cast<uint8_t>(kPieceBytes));
}
constexpr size_t kPieces = kLanes / kPieceBytes;

inline void pick(uint8_t* dst, const uint8_t* src, const size_t* base, const uint8_t* index,
                 size_t n) {
  const auto block = [&](size_t x) {
    return picked(load_window(src, base + x / kLanes * kPieces), load<U8>(index + x));
  };
  over_blocks(
      n, kLanes, [&](size_t x) { store(dst + x, block(x)); },
      [&](size_t x, size_t rest) {
        const U8 last = block(x);
        memcpy(dst + x, &last, rest);
      });
}
inline void pick_pairs(uint8_t* a, uint8_t* b, const uint8_t* src, const size_t* base,
                       const uint8_t* index, uint8_t offset, size_t n) {
  for (size_t x = 0; x < n; x += kLanes) {
    const Window w = load_window(src, base + x / kLanes * kPieces);
    const U8 i = load<U8>(index + x);
    store(a + x, picked(w, i));
    store(b + x, picked(w, i + offset));
  }
}

// ---- Mixes. Bytes fit the rounding product of words; words need 32 bits.
LUM_INLINE I16 mix(I16 a, I16 b, I16 f) { return a + mul_round(b - a, f); }
LUM_INLINE U8 mix_bytes(const uint8_t* a, const uint8_t* b, I16 f_lo, I16 f_hi) {
  constexpr size_t kHalf = kLanes / 2;
  return narrow(mix(I16(load_widened(a)), I16(load_widened(b)), f_lo),
                mix(I16(load_widened(a + kHalf)), I16(load_widened(b + kHalf)), f_hi));
}
LUM_INLINE I32 mix(I32 a, I32 b, I32 f) { return a + (((b - a) * f + 0x4000) >> 15); }
LUM_INLINE U16 mix_words(const uint8_t* a, const uint8_t* b, I16 f) {
  const Words2 av = interleave(load<I16>(a), I16{}), bv = interleave(load<I16>(b), I16{}),
               fv = interleave(f, I16{});
  return pack_sat_unsigned(mix(I32(av.lo), I32(bv.lo), I32(fv.lo)),
                           mix(I32(av.hi), I32(bv.hi), I32(fv.hi)));
}

// a, b and f may be read to the end of a whole block.
template <class Mixed>
LUM_INLINE void mix_row(uint8_t* dst, size_t n, Mixed mixed) {
  using V = decltype(mixed(size_t{0}));
  constexpr size_t kSample = kElementBytes<V>, kStep = kLanes / kSample;
  over_blocks(
      n, kStep, [&](size_t x) { store(dst + x * kSample, mixed(x)); },
      [&](size_t x, size_t rest) {
        const V last = mixed(x);
        memcpy(dst + x * kSample, &last, rest * kSample);
      });
}
inline void mix8(uint8_t* dst, const uint8_t* a, const uint8_t* b, const uint16_t* f, size_t n) {
  mix_row(dst, n, [&](size_t x) {
    return mix_bytes(a + x, b + x, load<I16>(f + x), load<I16>(f + x + kLanes / 2));
  });
}
inline void mix16(uint8_t* dst, const uint8_t* a, const uint8_t* b, const uint16_t* f, size_t n) {
  mix_row(dst, n, [&](size_t x) { return mix_words(a + 2 * x, b + 2 * x, load<I16>(f + x)); });
}
inline void mix8_evenly(uint8_t* dst, const uint8_t* a, const uint8_t* b, uint16_t f, size_t n) {
  const I16 fv = I16(splat16(f));
  mix_row(dst, n, [&](size_t x) { return mix_bytes(a + x, b + x, fv, fv); });
}
inline void mix16_evenly(uint8_t* dst, const uint8_t* a, const uint8_t* b, uint16_t f, size_t n) {
  const I16 fv = I16(splat16(f));
  mix_row(dst, n, [&](size_t x) { return mix_words(a + 2 * x, b + 2 * x, fv); });
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
