// SPDX-License-Identifier: MIT
// Resampling: picks and mixes.
namespace lum {
namespace LUM_LEVEL {
namespace {

// ---- Picks: for each span of the result, bytes of the two spans of the source from its base on.
// Where a permute takes two vectors, those are the spans.
struct Window {
  U8 first, second;
};
constexpr size_t kWindows = kLanes / kSpanBytes;

LUM_INLINE Window load_window(const uint8_t* src, const uint32_t* base) {
  if constexpr (kPermutesTwo) return {load<U8>(src + *base), load<U8>(src + *base + kSpanBytes)};
  return {load_pieces_at(src, base), load_pieces_at(src + kSpanBytes, base)};
}
// V, which is U8, so that only a level that has the permute looks for it.
template <class V>
LUM_INLINE U8 picked(const Window& w, V index) {
  if constexpr (kPermutesTwo) {
    return permute_two(w.first, w.second, index);
  } else {
    // An index at or above the size of a span has its highest bit set for the first one, one below
    // it for the second.
    return pick_bytes(w.first, index + static_cast<uint8_t>(0x80 - kSpanBytes)) |
           pick_bytes(w.second, index - static_cast<uint8_t>(kSpanBytes));
  }
}

// What lies so far ahead of a span that is picked from. Loops that fetch nothing are loops of their
// own: in caches every instruction counts.
template <bool fetches>
LUM_INLINE void prefetch_span(const uint8_t* src, size_t bytes, ptrdiff_t ahead) {
  if (!fetches) return;
  for (size_t line = 0; line < bytes; line += 64) prefetch_read(src + line, ahead);
}
template <bool fetches>
LUM_INLINE void pick_row(uint8_t* dst, const uint8_t* src, const uint32_t* base,
                         const uint8_t* index, size_t n, ptrdiff_t ahead) {
  const auto block = [&](size_t x) {
    const uint32_t* const first = base + x / kLanes * kWindows;
    for (size_t i = 0; i < kWindows; ++i) {
      prefetch_span<fetches>(src + first[i], 2 * kSpanBytes, ahead);
    }
    const U8 where = in_register(load<U8>(index + x));  // and not twice from memory
    return picked(load_window(src, first), where);
  };
  over_blocks(
      n, kLanes, [&](size_t x) { store(dst + x, block(x)); },
      [&](size_t x, size_t rest) {
        const U8 last = block(x);
        memcpy(dst + x, &last, rest);
      });
}
inline void pick(uint8_t* dst, const uint8_t* src, const uint32_t* base, const uint8_t* index,
                 size_t n, ptrdiff_t ahead) {
  if (ahead == 0) return pick_row<false>(dst, src, base, index, n, 0);
  pick_row<true>(dst, src, base, index, n, ahead);
}
// ---- Mixes: a + (((b - a) f + 0x4000) >> 15), f below 2^15.
// Of bytes: that is the rounding product of words.
LUM_INLINE I16 mix(I16 a, I16 b, I16 f) { return a + mul_round(b - a, f); }
LUM_INLINE U8 mix_bytes(const uint8_t* a, const uint8_t* b, I16 f_lo, I16 f_hi) {
  constexpr size_t kHalf = kLanes / 2;
  return narrow(mix(I16(load_widened(a)), I16(load_widened(b)), f_lo),
                mix(I16(load_widened(a + kHalf)), I16(load_widened(b + kHalf)), f_hi));
}
// Of words: (2^15 - f) a + f b as one multiply-add of pairs. Its factors are signed words: the
// negative weights f - 2^15 and -f fit, and so do 32767 - a and 32767 - b, which are negative a and
// b but for constants. Those add up to what is added here.
LUM_INLINE U32 mix_pairs(U16 pairs, U16 weights) {
  constexpr int32_t kAdded = (1 << 30) - (1 << 15) + 0x4000;
  return U32(madd(I16(pairs ^ 0x7FFF), I16(weights)) + kAdded) >> 15;
}
LUM_INLINE Words2 mix_weights(I16 f) { return interleave(f ^ I16(splat16(0x8000)), -f); }
LUM_INLINE U16 mix_words(const uint8_t* a, const uint8_t* b, const Words2& weights) {
  const Words2 pairs = interleave(load<I16>(a), load<I16>(b));
  return pack_sat_unsigned(I32(mix_pairs(U16(pairs.lo), U16(weights.lo))),
                           I32(mix_pairs(U16(pairs.hi), U16(weights.hi))));
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
  mix_row(dst, n,
          [&](size_t x) { return mix_words(a + 2 * x, b + 2 * x, mix_weights(load<I16>(f + x))); });
}
inline void mix8_evenly(uint8_t* dst, const uint8_t* a, const uint8_t* b, uint16_t f, size_t n) {
  const I16 fv = I16(splat16(f));
  mix_row(dst, n, [&](size_t x) {
    const Bytes2 av = interleave(load<U8>(a + x), U8{}), bv = interleave(load<U8>(b + x), U8{});
    return pack_sat(mix(I16(av.lo), I16(bv.lo), fv), mix(I16(av.hi), I16(bv.hi), fv));
  });
}
inline void mix16_evenly(uint8_t* dst, const uint8_t* a, const uint8_t* b, uint16_t f, size_t n) {
  const Words2 weights = mix_weights(I16(splat16(f)));
  mix_row(dst, n, [&](size_t x) { return mix_words(a + 2 * x, b + 2 * x, weights); });
}

// ---- Picks and mixes in one: src, base, index, f as DirectKernels has them.
template <class Picked, bool fetches>
struct Picks {
  const uint8_t* src;
  const uint32_t* base;
  const uint8_t* index;
  size_t pixel_bytes;
  ptrdiff_t ahead;
  // Those of an index from byte i on.
  LUM_INLINE auto operator()(size_t i) const {
    const uint32_t* const first = base + i / kSpanBytes;
    prefetch_span<fetches>(src + *first, kSpanBytes, ahead);
    return Picked::of(src, first, load<U8>(index + i), pixel_bytes);
  }
};
// Of one span, or 0 for kPickNothing.
template <class V>
LUM_INLINE U8 picked(const uint8_t* src, const uint32_t* base, V index) {
  if constexpr (kPermutesTwo) return permute_two(load<U8>(src + *base), U8{}, index);
  return pick_bytes(load_pieces_at(src, base), index);
}
// a and b of each sample.
struct PickedPairs {
  static constexpr bool kPairs = true;
  static LUM_INLINE U8 of(const uint8_t* src, const uint32_t* base, U8 index, size_t) {
    return picked(src, base, index);
  }
};
// a alone, and b alone.
struct PickedApart {
  static constexpr bool kPairs = false;
  static LUM_INLINE Bytes2 of(const uint8_t* src, const uint32_t* base, U8 index,
                              size_t pixel_bytes) {
    const U8 where = in_register(index);  // and not twice from memory
    return {picked(src, base, where), picked(src + pixel_bytes, base, where)};
  }
};
LUM_INLINE I16 mix_picked(U8 pairs, I16 f) {
  return mix(I16(U16(pairs) & 255), I16(U16(pairs) >> 8), f);
}
LUM_INLINE I16 mix_picked(const Bytes2& v, I16 f) { return mix(I16(v.lo), I16(v.hi), f); }
LUM_INLINE U32 mix_picked(U8 pairs, U16 weights) { return mix_pairs(U16(pairs), weights); }
LUM_INLINE U32 mix_picked(const Bytes2& v, U16 weights) {
  return mix_pairs(U16(U32(v.lo) | U32(v.hi) << 16), weights);
}
// Calls mix(picks), with picks that fetch only where there is something to fetch.
template <class Picked, class Mix>
LUM_INLINE void with_picks(const uint8_t* src, const uint32_t* base, const uint8_t* index,
                           size_t pixel_bytes, ptrdiff_t ahead, Mix mix) {
  if (ahead == 0) return mix(Picks<Picked, false>{src, base, index, pixel_bytes, 0});
  mix(Picks<Picked, true>{src, base, index, pixel_bytes, ahead});
}
template <class Picked>
void mix8_picked(uint8_t* dst, const uint8_t* src, const uint32_t* base, const uint8_t* index,
                 const uint16_t* f, size_t pixel_bytes, size_t n, ptrdiff_t ahead) {
  with_picks<Picked>(src, base, index, pixel_bytes, ahead, [&](const auto& picked) {
    const auto half = [&](size_t x) { return mix_picked(picked(2 * x), load<I16>(f + x)); };
    mix_row(dst, n, [&](size_t x) { return narrow(half(x), half(x + kLanes / 2)); });
  });
}
template <class Picked>
void mix16_picked(uint8_t* dst, const uint8_t* src, const uint32_t* base, const uint8_t* index,
                  const uint16_t* f, size_t pixel_bytes, size_t n, ptrdiff_t ahead) {
  with_picks<Picked>(src, base, index, pixel_bytes, ahead, [&](const auto& picked) {
    const auto half = [&](size_t x) { return mix_picked(picked(4 * x), load<U16>(f + 2 * x)); };
    mix_row(dst, n, [&](size_t x) { return narrow(half(x), half(x + kLanes / 4)); });
  });
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
