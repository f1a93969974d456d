// SPDX-License-Identifier: MIT
// Vector primitives, level base: 16 lanes, for any processor. Shuffles are the compilers' own, and
// arithmetic that vectors do not offer is a loop over arrays, which compilers turn into one
// instruction where there is one; a loop over the lanes of vectors goes through memory, lane by
// lane.
#ifndef LUM_SIMD_VEC_BASE_H
#define LUM_SIMD_VEC_BASE_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace lum {
namespace LUM_LEVEL {
namespace {
constexpr int kLanes = 16;
}
}  // namespace LUM_LEVEL
}  // namespace lum

#include "simd/vec_lane_masks-inl.h"

namespace lum {
namespace LUM_LEVEL {
namespace {

// For what is called for each lane: g++ does not inline so many calls by itself.
#define LUM_FLAT __attribute__((always_inline))

constexpr int kWords = kLanes / 2;

template <class V>
struct Lanes {
  decltype(lane_of(V{})) v[kLanes / kElementBytes<V>];
};
template <class V>
LUM_INLINE Lanes<V> lanes_of(V v) {
  Lanes<V> lanes;
  memcpy(&lanes, &v, sizeof v);
  return lanes;
}
template <class V, class F>
LUM_INLINE V each(V a, V b, F f) {
  Lanes<V> x = lanes_of(a), y = lanes_of(b);
  for (size_t i = 0; i < kLanes / kElementBytes<V>; ++i) {
    x.v[i] = static_cast<decltype(lane_of(V{}))>(f(x.v[i], y.v[i]));
  }
  return load<V>(&x);
}

template <int...>
struct Indices {};
template <int n, int... rest>
struct IndicesBelow : IndicesBelow<n - 1, n - 1, rest...> {};
template <int... all>
struct IndicesBelow<0, all...> {
  using Type = Indices<all...>;
};
template <int n>
using Below = typename IndicesBelow<n>::Type;
// f(0), f(1) ...
template <class V, class F, int... i>
LUM_INLINE V lanes(F f, Indices<i...>) {
  return V{static_cast<decltype(lane_of(V{}))>(f(i))...};
}
template <class V, class F>
LUM_INLINE V lanes(F f) {
  return lanes<V>(f, Below<kLanes / static_cast<int>(kElementBytes<V>)>{});
}
// Bytes f(0), f(1) ... as two numbers: of single bytes g++ would put a vector together in memory.
template <class F, int... i>
LUM_INLINE uint64_t number_from(F f, Indices<i...>) {
  return (... | (uint64_t{f(i)} << 8 * i));
}
template <class F>
LUM_INLINE U8 bytes_from(F f) {
  const auto rest = [&](int i) LUM_FLAT { return f(i + 8); };
  return U8(U64{number_from(f, Below<8>{}), number_from(rest, Below<8>{})});
}
// Lane i is lane formula(i) of a and b together.
template <class V, class Formula, int... i>
LUM_INLINE V shuffled(V a, V b, Formula formula, Indices<i...>) {
  return __builtin_shufflevector(a, b, formula(i)...);
}
template <class V, class Formula>
LUM_INLINE V shuffled(V a, V b, Formula formula) {
  constexpr int n = kLanes / static_cast<int>(kElementBytes<V>);
  return shuffled(a, b, formula, Below<n>{});
}
template <class V>
LUM_INLINE V evens(V a, V b) {
  return shuffled(a, b, [](int i) LUM_FLAT { return 2 * i; });
}
template <class V>
LUM_INLINE V odds(V a, V b) {
  return shuffled(a, b, [](int i) LUM_FLAT { return 2 * i + 1; });
}
template <class V>
LUM_INLINE V zip_low(V a, V b) {
  constexpr int n = kLanes / static_cast<int>(kElementBytes<V>);
  return shuffled(a, b, [](int i) LUM_FLAT { return i / 2 + i % 2 * n; });
}
template <class V>
LUM_INLINE V zip_high(V a, V b) {
  constexpr int n = kLanes / static_cast<int>(kElementBytes<V>);
  return shuffled(a, b, [](int i) LUM_FLAT { return n / 2 + i / 2 + i % 2 * n; });
}

template <class V>
LUM_INLINE V blend(V mask, V a, V b) {
  return b ^ ((a ^ b) & mask);
}
// a in the chosen lanes, b in the others.
LUM_INLINE U8 choose(const Mask& mask, U8 a, U8 b) { return blend(mask.bytes, a, b); }

template <class V>
LUM_INLINE V avg_up(V a, V b) {
  return each(a, b, [](int x, int y) LUM_FLAT { return (x + y + 1) >> 1; });
}
template <class V>
LUM_INLINE V lesser(V a, V b) {
  return a < b ? a : b;
}
template <class V>
LUM_INLINE V greater(V a, V b) {
  return a > b ? a : b;
}
LUM_INLINE I16 absolute(I16 a) { return greater(a, I16(-U16(a))); }
LUM_INLINE U16 mul_hi(U16 a, U16 b) {
  return each(a, b, [](uint32_t x, uint32_t y) LUM_FLAT { return x * y >> 16; });
}
LUM_INLINE I16 mul_hi(I16 a, I16 b) {
  return each(a, b, [](int x, int y) LUM_FLAT { return x * y >> 16; });
}
// n is at most 16, and vectors are shifted by less than their lanes have bits.
LUM_INLINE U16 shift_left(U16 a, unsigned n) { return a << (n / 2) << (n - n / 2); }
LUM_INLINE U16 shift_right(U16 a, unsigned n) { return a >> (n / 2) >> (n - n / 2); }
// Every count is the same.
LUM_INLINE I32 shift_right(I32 a, I32 counts) { return a >> counts[0]; }

// a0 b0 a1 b1 ...; the first half of the pixels in lo.
LUM_INLINE Bytes2 interleave(U8 a, U8 b) { return {zip_low(a, b), zip_high(a, b)}; }
LUM_INLINE Words2 interleave(I16 a, I16 b) { return {zip_low(a, b), zip_high(a, b)}; }
LUM_INLINE Dwords2 interleave(U32 a, U32 b) { return {zip_low(a, b), zip_high(a, b)}; }
LUM_INLINE Qwords2 interleave(U64 a, U64 b) { return {zip_low(a, b), zip_high(a, b)}; }
// Products of unsigned and signed bytes, added in pairs.
LUM_INLINE I16 madd(U8 u, I8 s) {
  return I16(U16(u) & 0xFF) * (I16(s) << 8 >> 8) + I16(U16(u) >> 8) * (I16(s) >> 8);
}
// Products of signed words, added in pairs.
LUM_INLINE I32 madd(I16 a, I16 b) {
  const U32 low = U32(U16(a) * U16(b)), high = U32(mul_hi(a, b));
  return I32(((low & 0xFFFF) | high << 16) + (low >> 16 | (high & 0xFFFF0000u)));
}
LUM_INLINE U32 add_madd(U32 sum, I16 a, I16 b) { return sum + U32(madd(a, b)); }
// Products of unsigned and signed bytes, added in fours; sums of two fit a signed word.
LUM_INLINE U32 madd4(U8 u, I8 s) { return U32(madd(madd(u, s), I16(splat16(1)))); }
// Products of signed words in units of 2^-15, rounded: (a b + 0x4000) >> 15.
LUM_INLINE I16 mul_round(I16 a, I16 b) {
  return each(a, b, [](int x, int y) LUM_FLAT { return (x * y + 0x4000) >> 15; });
}

template <class V>
LUM_INLINE V limited(V v, int low, int high) {
  using Lane = decltype(lane_of(v));
  return lesser(greater(v, V{} + static_cast<Lane>(low)), V{} + static_cast<Lane>(high));
}
// Back from interleaved order: high bytes; values limited to 0..255; values limited to -128..127.
LUM_INLINE U8 pack_high(U16 lo, U16 hi) { return odds(U8(lo), U8(hi)); }
LUM_INLINE U8 pack_sat(I16 lo, I16 hi) {
  return evens(U8(limited(lo, 0, 255)), U8(limited(hi, 0, 255)));
}
LUM_INLINE I8 pack_sat_signed(I16 lo, I16 hi) {
  return I8(evens(U8(limited(lo, -128, 127)), U8(limited(hi, -128, 127))));
}
// The same from 32 to 16 bits, limited to signed or to unsigned words.
LUM_INLINE I16 pack_sat(I32 lo, I32 hi) {
  return evens(I16(limited(lo, -32768, 32767)), I16(limited(hi, -32768, 32767)));
}
LUM_INLINE U16 pack_sat_unsigned(I32 lo, I32 hi) {
  return evens(U16(limited(lo, 0, 65535)), U16(limited(hi, 0, 65535)));
}
// The upper bytes of both, side by side: even's, odd's, even's ...
LUM_INLINE U8 upper_bytes(U16 even, U16 odd) { return U8((even >> 8) | (odd & 0xFF00)); }
// The even words of the first, the odd ones of the second.
LUM_INLINE U16 alternate(U16 even, U16 odd) {
  return U16((U32(even) & 0x0000FFFFu) | (U32(odd) & 0xFFFF0000u));
}
// The complement of that.
LUM_INLINE U16 not_alternate(U16 even, U16 odd) { return ~alternate(even, odd); }
// Bits 8 to 23 of the lanes of both, as words: even's, odd's, even's ...
LUM_INLINE U16 middle_words(U32 even, U32 odd) { return alternate(U16(even >> 8), U16(odd << 8)); }
// Bits 16 to 31 of the lanes of both, as words: even's, odd's, even's ...
LUM_INLINE I16 high_words(U32 even, U32 odd) { return I16((even >> 16) | (odd & 0xFFFF0000u)); }
// Words of the columns before: the last of the vector before and all but the last of this one; and
// of the columns behind.
LUM_INLINE I16 words_before(I16 before, I16 here) {
  return shuffled(before, here, [](int i) LUM_FLAT { return kWords - 1 + i; });
}
LUM_INLINE I16 words_behind(I16 here, I16 behind) {
  return shuffled(here, behind, [](int i) LUM_FLAT { return i + 1; });
}
// Words of the even and of the odd bytes, limited to 0..255, to bytes.
LUM_INLINE U8 alternate_sat(I16 even, I16 odd) {
  return U8(limited(even, 0, 255) | limited(odd, 0, 255) << 8);
}
// Signed words in memory order to bytes, limited to 0..255.
LUM_INLINE U8 narrow(I16 lo, I16 hi) { return pack_sat(lo, hi); }
// The same from words packed of four vectors in turn, two of each in 128 bits, to bytes in the
// order of these four: what lo holds, then what hi holds.
LUM_INLINE U8 narrow_quarters(I16 lo, I16 hi) { return narrow(lo, hi); }
// 32-bit lanes in memory order, each 0..65535, to words.
LUM_INLINE U16 narrow(U32 lo, U32 hi) { return evens(U16(lo), U16(hi)); }
// Sums of neighbouring lanes, those of `a` first.
LUM_INLINE I32 sums_of_pairs(I32 a, I32 b) {
  return I32(evens(U32(a), U32(b)) + odds(U32(a), U32(b)));
}
// Bytes 1 of the sums of madd4() plus `added`, each 0..65535, in memory order.
LUM_INLINE U8 madd4_high(const U8 (&v)[4], I8 weights, unsigned added) {
  const U16 first = narrow(madd4(v[0], weights), madd4(v[1], weights)) + splat16(added);
  const U16 second = narrow(madd4(v[2], weights), madd4(v[3], weights)) + splat16(added);
  return pack_high(first, second);
}

// The order of the two bytes of a word, as data: all ones where they change places.
using ByteOrder = U16;
LUM_INLINE ByteOrder byte_order(bool big_endian) { return splat16(big_endian ? 0xFFFF : 0); }
LUM_INLINE U16 ordered(U16 v, ByteOrder order) { return blend(order, v << 8 | v >> 8, v); }

// The last lanes of a row, one sample to the right; the sample beyond the row repeats the last but
// one.
LUM_INLINE U8 load_edge8(const uint8_t* p) {
  const U8 v = load<U8>(p);
  return shuffled(v, v, [](int i) LUM_FLAT { return i + 1 < kLanes ? i + 1 : kLanes - 2; });
}
LUM_INLINE U16 load_edge16(const uint8_t* p) {
  const U16 v = load<U16>(p);
  return shuffled(v, v, [](int i) LUM_FLAT { return i + 1 < kWords ? i + 1 : kWords - 2; });
}

// Bytes to words, half a vector of them, in memory order.
LUM_INLINE U16 load_widened(const uint8_t* p) {
  return lanes<U16>([&](int i) LUM_FLAT { return p[i]; });
}

// Two of every three bytes: byte i is Formula::byte(i) of the memory, the formulas repeat every 24
// bytes.
template <class Formula>
LUM_INLINE U8 load_bytes_of_3(const uint8_t* p, Formula) {
  return bytes_from([&](int i) LUM_FLAT { return p[Formula::byte(i)]; });
}

// The first or second kWords words of those at p, from 3/4 as many bytes: word i is made of bytes
// low(i) and high(i) of the memory, a negative number gives zero. The formulas repeat every 12
// bytes.
template <class Formula>
LUM_INLINE U16 words_of_bytes(const uint8_t* p, Formula) {
  return lanes<U16>([&](int i) LUM_FLAT {
    const int low = Formula::low(i), high = Formula::high(i);
    return (low < 0 ? 0 : p[low]) | (high < 0 ? 0 : p[high]) << 8;
  });
}
template <int half, class Formula>
LUM_INLINE U16 load_words_of_3(const uint8_t* p, Formula f) {
  return words_of_bytes(p + half * kWords * 3 / 2, f);
}
// The same from 5/8 as many bytes; the formulas repeat every 10 bytes or fewer.
template <int half, class Formula>
LUM_INLINE U16 load_words_of_5(const uint8_t* p, Formula f) {
  return words_of_bytes(p + half * kWords * 5 / 4, f);
}
// Bytes c0 c1 c2 c0 c1 c2 ... apart.
LUM_INLINE Bytes3 load3(const uint8_t* p) {
  return {bytes_from([&](int i) LUM_FLAT { return p[3 * i]; }),
          bytes_from([&](int i) LUM_FLAT { return p[3 * i + 1]; }),
          bytes_from([&](int i) LUM_FLAT { return p[3 * i + 2]; })};
}
LUM_INLINE Words3 load3_words(const uint8_t* p) {
  uint16_t v[3 * kWords];
  memcpy(v, p, sizeof v);
  return {lanes<U16>([&](int i) LUM_FLAT { return v[3 * i]; }),
          lanes<U16>([&](int i) LUM_FLAT { return v[3 * i + 1]; }),
          lanes<U16>([&](int i) LUM_FLAT { return v[3 * i + 2]; })};
}

// Pixels of four elements from three channels, the last one a copy of the third: take(i, vector)
// for each of four vectors. With a loop over a record of them g++ took up to 1.8 times as long.
template <class Pair, class V, class Take>
LUM_INLINE void over_quartets(V c0, V c1, V c2, Take take) {
  const Pair lo01 = Pair(zip_low(c0, c1)), hi01 = Pair(zip_high(c0, c1));
  const Pair lo2 = Pair(zip_low(c2, c2)), hi2 = Pair(zip_high(c2, c2));
  take(0, zip_low(lo01, lo2));
  take(1, zip_high(lo01, lo2));
  take(2, zip_low(hi01, hi2));
  take(3, zip_high(hi01, hi2));
}
// The lower six bytes of both, without a gap.
LUM_INLINE void store_sixes(uint8_t* p, U64 v) {
  const uint64_t first = (v[0] & 0xFFFFFFFFFFFFu) | v[1] << 48;
  const uint32_t last = static_cast<uint32_t>(v[1] >> 16);
  memcpy(p, &first, 8);
  memcpy(p + 8, &last, 4);
}
// Pixels of three bytes from those of four, the last of which goes.
LUM_INLINE void compress3(uint8_t* p, U8 pixels) {
  const U64 two = U64(pixels);
  store_sixes(p, (two & 0xFFFFFFu) | (two >> 8 & 0xFFFFFF000000u));
}
LUM_INLINE void store3(uint8_t* p, U8 c0, U8 c1, U8 c2) {
  over_quartets<U16>(c0, c1, c2, [&](int i, U16 v) LUM_FLAT { compress3(p + 12 * i, U8(v)); });
}
LUM_INLINE void store3(uint8_t* p, U16 c0, U16 c1, U16 c2) {
  over_quartets<U32>(c0, c1, c2, [&](int i, U32 v) LUM_FLAT { store_sixes(p + 12 * i, U64(v)); });
}
// a0 b0 a1 b1 ... in memory order.
LUM_INLINE Bytes2 zip(U8 a, U8 b) { return interleave(a, b); }
LUM_INLINE Wide zip(U16 a, U16 b) { return {zip_low(a, b), zip_high(a, b)}; }
LUM_INLINE void store2(uint8_t* p, U8 even, U8 odd) { store(p, zip(even, odd)); }
// Bytes 0 (upper: 1) of words whose others are 0, in memory order.
template <bool upper>
LUM_INLINE void store_in_words(uint8_t* p, U8 v) {
  store2(p, upper ? U8{} : v, upper ? v : U8{});
}
// Half a vector each.
LUM_INLINE void store_halves(uint8_t* low, uint8_t* high, U8 v) {
  const uint64_t first = U64(v)[0], second = U64(v)[1];
  memcpy(low, &first, sizeof first);
  memcpy(high, &second, sizeof second);
}
template <class V>
LUM_INLINE void store3_same(uint8_t* p, V c) {
  store3(p, c, c, c);
}

// Four-byte pixels whose last byte stays as it is in memory. Whether that loads so far ahead, where
// little else is done, that fetching both source and destination costs more than it gains:
constexpr bool kLoadsRunAhead = false;
LUM_INLINE void store_keep(uint8_t* p, U8 pixels) {
  store(p, blend(U32{} + 0xFF000000u, load<U32>(p), U32(pixels)));
}
LUM_INLINE void store4_keep(uint8_t* p, U8 c0, U8 c1, U8 c2) {
  over_quartets<U16>(c0, c1, c2, [&](int i, U16 v) LUM_FLAT { store_keep(p + kLanes * i, U8(v)); });
}

// Bytes 0 and 2 of every four change places.
LUM_INLINE U8 swap02(U8 v) {
  const U32 p = U32(v), even = p & 0x00FF00FFu;
  return U8((p & 0xFF00FF00u) | even << 16 | even >> 16);
}
// Byte 3 of every four becomes a copy of byte 1.
LUM_INLINE U8 copy1_to_3(U8 v) { return U8((U32(v) & 0x00FFFFFFu) | (U32(v) & 0xFF00u) << 16); }

// kLanes / 4 pixels of four bytes, the last one a copy of the second, from three in memory, and
// back.
template <bool swap>
LUM_INLINE U8 expand3(const uint8_t* p) {
  uint32_t first, second, third, last;
  memcpy(&first, p, 4);
  memcpy(&second, p + 3, 4);
  memcpy(&third, p + 6, 4);
  memcpy(&last, p + 8, 4);
  const U8 pixels = copy1_to_3(U8(U32{first, second, third, last >> 8}));
  return swap ? swap02(pixels) : pixels;
}
// The same for kLanes pixels; with `swap` the first and the third byte change places.
template <bool swap>
LUM_INLINE void compress3_all(uint8_t* p, const U8 (&pixels)[4]) {
  for (int k = 0; k < 4; ++k) {
    compress3(p + 12 * k, swap ? swap02(pixels[k]) : pixels[k]);
  }
}
// Three vectors of three-byte elements whose first and third byte change places.
LUM_INLINE Bytes3 load3_swapped(const uint8_t* p) {
  const auto swapped = [&](int k) LUM_FLAT {
    return bytes_from([&](int i) LUM_FLAT {
      const int byte = kLanes * k + i;
      return p[byte / 3 * 3 + 2 - byte % 3];
    });
  };
  return {swapped(0), swapped(1), swapped(2)};
}
// Elements of `size` bytes, a power of two, in reverse order. Where bytes are not shuffled, words
// are, within half a vector.
template <int size>
LUM_INLINE U8 reversed(U8 v) {
  const U64 halves =
      size > 8 ? U64(v) : shuffled(U64(v), U64(v), [](int i) LUM_FLAT { return 1 - i; });
  if constexpr (size >= 8) return U8(halves);
  const U16 words = size == 1 ? U16(halves) << 8 | U16(halves) >> 8 : U16(halves);
  constexpr int n = size < 2 ? 1 : size / 2;
  return U8(shuffled(words, words,
                     [](int i) LUM_FLAT { return i / 4 * 4 + (3 - i % 4) / n * n + i % n; }));
}
// A vector of pieces as long as those within which interleave() works, `stride` bytes apart.
constexpr int kPieceBytes = kLanes;
LUM_INLINE U8 load_pieces(const uint8_t* p, ptrdiff_t) { return load<U8>(p); }
// The pieces that begin at p + at[0], p + at[1] ...
LUM_INLINE U8 load_pieces_at(const uint8_t* p, const uint32_t* at) { return load<U8>(p + at[0]); }
// The bytes of a piece that the low bits of an index tell, or 0 where its highest bit is set.
LUM_INLINE U8 pick_bytes(U8 v, U8 index) {
  return lanes<U8>([&](int i) LUM_FLAT { return index[i] & 0x80 ? 0 : v[index[i] % kPieceBytes]; });
}
// Spans are what tables of shuffles are made for: here there is one in a vector.
constexpr int kSpanBytes = kLanes;
// Whether one operation moves any byte of a span to any place; if not, moving pixels is less work.
constexpr bool kShufflesBytes = false;
constexpr bool kPermutesTwo = false;  // there is no permute of two vectors
LUM_INLINE U8 load_spans(const uint8_t* p, ptrdiff_t) { return load<U8>(p); }
LUM_INLINE void store_spans(uint8_t* p, ptrdiff_t, U8 v) { store(p, v); }
LUM_INLINE U8 shuffle_spans(U8 v, const LaneTable& t) { return pick_bytes(v, load<U8>(t.v)); }

// There is no store past the cache.
constexpr bool kStreams = false;
LUM_INLINE void stream_vector(uint8_t* p, U8 v) { store(p, v); }
inline void end_stream() {}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum

#include "simd/vec_byte_of_words-inl.h"

#endif
