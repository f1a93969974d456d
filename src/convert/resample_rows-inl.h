// SPDX-License-Identifier: MIT
// Resampling: picks and mixes.
namespace lum {
namespace LUM_LEVEL {
namespace {

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
