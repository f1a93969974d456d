// SPDX-License-Identifier: MIT
// Vector primitives, level sse41: SSSE3 and SSE4.1, 16 lanes.
#ifndef LUM_SIMD_VEC_SSE41_H
#define LUM_SIMD_VEC_SSE41_H

#include <immintrin.h>
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

LUM_INLINE __m128i m(U8 v) { return reinterpret_cast<__m128i>(v); }
LUM_INLINE __m128i m(U16 v) { return reinterpret_cast<__m128i>(v); }
LUM_INLINE __m128i m(I16 v) { return reinterpret_cast<__m128i>(v); }
LUM_INLINE __m128i m(I32 v) { return reinterpret_cast<__m128i>(v); }
LUM_INLINE U8 u8(__m128i v) { return reinterpret_cast<U8>(v); }
LUM_INLINE U16 u16(__m128i v) { return reinterpret_cast<U16>(v); }
LUM_INLINE I16 i16(__m128i v) { return reinterpret_cast<I16>(v); }

LUM_INLINE U8 shuffle(U8 v, const LaneTable& t) {
  return u8(_mm_shuffle_epi8(m(v), m(load<U8>(t.v))));
}

// a in the chosen lanes, b in the others.
LUM_INLINE U8 choose(const Mask& mask, U8 a, U8 b) { return b ^ ((a ^ b) & mask.bytes); }

LUM_INLINE U8 avg_up(U8 a, U8 b) { return u8(_mm_avg_epu8(m(a), m(b))); }
LUM_INLINE U16 avg_up(U16 a, U16 b) { return u16(_mm_avg_epu16(m(a), m(b))); }
LUM_INLINE I16 absolute(I16 a) { return i16(_mm_abs_epi16(m(a))); }
LUM_INLINE U16 lesser(U16 a, U16 b) { return u16(_mm_min_epu16(m(a), m(b))); }
LUM_INLINE I16 lesser(I16 a, I16 b) { return i16(_mm_min_epi16(m(a), m(b))); }
LUM_INLINE I16 greater(I16 a, I16 b) { return i16(_mm_max_epi16(m(a), m(b))); }
LUM_INLINE U16 mul_hi(U16 a, U16 b) { return u16(_mm_mulhi_epu16(m(a), m(b))); }
LUM_INLINE I16 mul_hi(I16 a, I16 b) { return i16(_mm_mulhi_epi16(m(a), m(b))); }
// n is at most 16.
LUM_INLINE U16 shift_left(U16 a, unsigned n) {
  return u16(_mm_sll_epi16(m(a), _mm_cvtsi32_si128(static_cast<int>(n))));
}
LUM_INLINE U16 shift_right(U16 a, unsigned n) {
  return u16(_mm_srl_epi16(m(a), _mm_cvtsi32_si128(static_cast<int>(n))));
}
// Every count is the same.
LUM_INLINE I32 shift_right(I32 a, I32 counts) {
  return reinterpret_cast<I32>(_mm_sra_epi32(m(a), _mm_cvtsi32_si128(counts[0])));
}

// a0 b0 a1 b1 ...; the first half of the pixels in lo.
LUM_INLINE Bytes2 interleave(U8 a, U8 b) {
  return {u8(_mm_unpacklo_epi8(m(a), m(b))), u8(_mm_unpackhi_epi8(m(a), m(b)))};
}
LUM_INLINE Words2 interleave(I16 a, I16 b) {
  return {i16(_mm_unpacklo_epi16(m(a), m(b))), i16(_mm_unpackhi_epi16(m(a), m(b)))};
}
// Products of unsigned and signed bytes, added in pairs.
LUM_INLINE I16 madd(U8 u, I8 s) { return i16(_mm_maddubs_epi16(m(u), m(U8(s)))); }
// Products of signed words, added in pairs.
LUM_INLINE I32 madd(I16 a, I16 b) { return reinterpret_cast<I32>(_mm_madd_epi16(m(a), m(b))); }
LUM_INLINE U32 add_madd(U32 sum, I16 a, I16 b) { return sum + U32(madd(a, b)); }
// Products of unsigned and signed bytes, added in fours; sums of two fit a signed word.
LUM_INLINE I32 madd4(U8 u, I8 s) { return madd(madd(u, s), I16(splat16(1))); }
LUM_INLINE Dwords2 interleave(U32 a, U32 b) {
  return {U32(u8(_mm_unpacklo_epi32(m(U8(a)), m(U8(b))))),
          U32(u8(_mm_unpackhi_epi32(m(U8(a)), m(U8(b)))))};
}
LUM_INLINE Qwords2 interleave(U64 a, U64 b) {
  return {U64(u8(_mm_unpacklo_epi64(m(U8(a)), m(U8(b))))),
          U64(u8(_mm_unpackhi_epi64(m(U8(a)), m(U8(b)))))};
}
// Products of signed words in units of 2^-15, rounded: (a b + 0x4000) >> 15.
LUM_INLINE I16 mul_round(I16 a, I16 b) { return i16(_mm_mulhrs_epi16(m(a), m(b))); }

// Back from interleaved order: high bytes; values limited to 0..255; values limited to -128..127.
LUM_INLINE U8 pack_high(U16 lo, U16 hi) { return u8(_mm_packus_epi16(m(lo >> 8), m(hi >> 8))); }
LUM_INLINE U8 pack_sat(I16 lo, I16 hi) { return u8(_mm_packus_epi16(m(lo), m(hi))); }
LUM_INLINE I8 pack_sat_signed(I16 lo, I16 hi) {
  return reinterpret_cast<I8>(_mm_packs_epi16(m(lo), m(hi)));
}
// The same from 32 to 16 bits, limited to signed or to unsigned words.
LUM_INLINE I16 pack_sat(I32 lo, I32 hi) { return i16(_mm_packs_epi32(m(lo), m(hi))); }
LUM_INLINE U16 pack_sat_unsigned(I32 lo, I32 hi) { return u16(_mm_packus_epi32(m(lo), m(hi))); }
// The upper bytes of both, side by side: even's, odd's, even's ...
LUM_INLINE U8 upper_bytes(U16 even, U16 odd) { return U8((even >> 8) | (odd & 0xFF00)); }
// The even words of the first, the odd ones of the second.
LUM_INLINE U16 alternate(U16 even, U16 odd) {
  return u16(_mm_blend_epi16(m(U8(even)), m(U8(odd)), 0xAA));
}
// The complement of that.
LUM_INLINE U16 not_alternate(U16 even, U16 odd) { return ~alternate(even, odd); }
// Bits 8 to 23 of the lanes of both, as words: even's, odd's, even's ...
LUM_INLINE U16 middle_words(U32 even, U32 odd) { return alternate(U16(even >> 8), U16(odd << 8)); }
// Bits 16 to 31 of the lanes of both, as words: even's, odd's, even's ...
LUM_INLINE I16 high_words(U32 even, U32 odd) {
  return i16(_mm_blend_epi16(m(U8(even >> 16)), m(U8(odd)), 0xAA));
}
// Words of the columns before: the last of the vector before and all but the last of this one; and
// of the columns behind.
LUM_INLINE I16 words_before(I16 before, I16 here) {
  return i16(_mm_alignr_epi8(m(here), m(before), 14));
}
LUM_INLINE I16 words_behind(I16 here, I16 behind) {
  return i16(_mm_alignr_epi8(m(behind), m(here), 2));
}
// Words of the even and of the odd bytes, limited to 0..255, to bytes.
constexpr LaneTable kAlternating = lane_table([](int i) { return i % 16 / 2 + i % 2 * 8; });
LUM_INLINE U8 alternate_sat(I16 even, I16 odd) {
  return u8(_mm_shuffle_epi8(_mm_packus_epi16(m(even), m(odd)), m(load<U8>(kAlternating.v))));
}
// Signed words in memory order to bytes, limited to 0..255.
LUM_INLINE U8 narrow(I16 lo, I16 hi) { return u8(_mm_packus_epi16(m(lo), m(hi))); }
// The same from words packed of four vectors in turn, two of each in 128 bits, to bytes in the
// order of these four: what lo holds, then what hi holds.
LUM_INLINE U8 narrow_quarters(I16 lo, I16 hi) { return narrow(lo, hi); }
// 32-bit lanes in memory order, each 0..65535, to words.
LUM_INLINE U16 narrow(U32 lo, U32 hi) { return u16(_mm_packus_epi32(m(U8(lo)), m(U8(hi)))); }
// Sums of neighbouring lanes, those of `a` first.
LUM_INLINE I32 sums_of_pairs(I32 a, I32 b) { return I32(u8(_mm_hadd_epi32(m(a), m(b)))); }
// Bytes 1 of the sums of madd4() plus `added`, each 0..65535, in memory order.
LUM_INLINE U8 madd4_high(const U8 (&v)[4], I8 weights, unsigned added) {
  const U16 first = pack_sat_unsigned(madd4(v[0], weights), madd4(v[1], weights)) + splat16(added);
  const U16 second = pack_sat_unsigned(madd4(v[2], weights), madd4(v[3], weights)) + splat16(added);
  return pack_high(first, second);
}

// The order of the two bytes of a word, as data.
using ByteOrder = U8;
constexpr LaneTable kLaneNumbers = lane_table([](int i) { return i; });
LUM_INLINE ByteOrder byte_order(bool big_endian) {
  return load<U8>(kLaneNumbers.v) ^ static_cast<uint8_t>(big_endian);
}
LUM_INLINE U16 ordered(U16 v, ByteOrder order) { return u16(_mm_shuffle_epi8(m(v), m(order))); }

// The last lanes of a row, one sample to the right; the sample beyond the row repeats the last but
// one.
constexpr LaneTable kEdge8 = lane_table([](int i) { return i < 15 ? i + 1 : 14; });
constexpr LaneTable kEdge16 = lane_table([](int i) { return i < 14 ? i + 2 : i - 2; });
LUM_INLINE U8 load_edge8(const uint8_t* p) { return shuffle(load<U8>(p), kEdge8); }
LUM_INLINE U16 load_edge16(const uint8_t* p) { return U16(shuffle(load<U8>(p), kEdge16)); }

// Bytes to words, half a vector of them, in memory order.
LUM_INLINE U16 load_widened(const uint8_t* p) {
  return u16(_mm_cvtepu8_epi16(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))));
}

// Two of every three bytes: byte i is Formula::byte(i) of the memory, the formulas repeat every 24
// bytes. the first 16 bytes are one load and those after them in another, 8 bytes on.
template <class Formula>
constexpr LaneTable kBytesOf3First = lane_table([](int i) {
  const int byte = Formula::byte(i % 16);
  return byte < 16 ? byte : kNone;
});
template <class Formula>
constexpr LaneTable kBytesOf3Rest = lane_table([](int i) {
  const int byte = Formula::byte(i % 16);
  return byte < 16 ? kNone : byte - 8;
});
template <class Formula>
LUM_INLINE U8 load_bytes_of_3(const uint8_t* p, Formula) {
  return shuffle(load<U8>(p), kBytesOf3First<Formula>) |
         shuffle(load<U8>(p + 8), kBytesOf3Rest<Formula>);
}

// The first or second kWords words of those at p, from 3/4 as many bytes: word i is made of bytes
// low(i) and high(i) of the memory, a negative number gives zero. The formulas repeat every 12
// bytes.
constexpr int or_none(int byte) { return byte < 0 ? kNone : byte; }
template <class Formula>
constexpr LaneTable kWordsOf3 = lane_table([](int i) {
  const int word = i % 16 / 2;
  return or_none(i % 2 ? Formula::high(word) : Formula::low(word));
});
LUM_INLINE U8 load12(const uint8_t* p) {
  uint32_t last;
  memcpy(&last, p + 8, sizeof last);
  const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  return u8(_mm_insert_epi32(first, static_cast<int>(last), 2));
}
template <int half, class Formula>
LUM_INLINE U16 load_words_of_3(const uint8_t* p, Formula) {
  return U16(shuffle(load12(p + 12 * half), kWordsOf3<Formula>));
}
// The same from 5/8 as many bytes; the formulas repeat every 10 bytes or fewer.
LUM_INLINE U8 load10(const uint8_t* p) {
  uint16_t last;
  memcpy(&last, p + 8, sizeof last);
  const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  return u8(_mm_insert_epi16(first, last, 4));
}
template <int half, class Formula>
LUM_INLINE U16 load_words_of_5(const uint8_t* p, Formula) {
  return U16(shuffle(load10(p + 10 * half), kWordsOf3<Formula>));
}
// Bytes c0 c1 c2 c0 c1 c2 ... apart: channel c takes these bytes of the k-th 16.
// With elements of `size` bytes.
constexpr int deinterleave3_index(int size, int k, int c, int i) {
  const int byte = (i % 16 / size * 3 + c) * size + i % size - 16 * k;
  return byte < 0 || byte >= 16 ? kNone : byte;
}
template <int size, int k, int c>
constexpr LaneTable kDeinterleave3 = lane_table([](int i) {
  return deinterleave3_index(size, k, c, i);
});
template <int size, int c>
LUM_INLINE U8 channel_of_3(U8 v0, U8 v1, U8 v2) {
  return shuffle(v0, kDeinterleave3<size, 0, c>) | shuffle(v1, kDeinterleave3<size, 1, c>) |
         shuffle(v2, kDeinterleave3<size, 2, c>);
}
template <int size>
LUM_INLINE Bytes3 load3_bytes(const uint8_t* p) {
  const U8 v0 = load<U8>(p), v1 = load<U8>(p + 16), v2 = load<U8>(p + 32);
  return {channel_of_3<size, 0>(v0, v1, v2), channel_of_3<size, 1>(v0, v1, v2),
          channel_of_3<size, 2>(v0, v1, v2)};
}
LUM_INLINE Bytes3 load3(const uint8_t* p) { return load3_bytes<1>(p); }
LUM_INLINE Words3 load3_words(const uint8_t* p) {
  const Bytes3 v = load3_bytes<2>(p);
  return {U16(v.c0), U16(v.c1), U16(v.c2)};
}

// a0 b0 a1 b1 ... in memory order.
LUM_INLINE Bytes2 zip(U8 a, U8 b) { return interleave(a, b); }
LUM_INLINE Wide zip(U16 a, U16 b) {
  const Words2 v = interleave(I16(a), I16(b));
  return {U16(v.lo), U16(v.hi)};
}
template <class To>
LUM_INLINE void store2(To p, U8 even, U8 odd) {
  store(p, zip(even, odd));
}
// Bytes 0 (upper: 1) of words whose others are 0, in memory order.
template <bool upper, class To>
LUM_INLINE void store_in_words(To p, U8 v) {
  store2(p, upper ? U8{} : v, upper ? v : U8{});
}

// The lower halves of both, and the upper ones.
LUM_INLINE Bytes2 halves_together(U8 a, U8 b) {
  return {u8(_mm_unpacklo_epi64(m(a), m(b))), u8(_mm_unpackhi_epi64(m(a), m(b)))};
}
// Half a vector each.
LUM_INLINE void store_halves(uint8_t* low, uint8_t* high, U8 v) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(low), m(v));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(high), _mm_unpackhi_epi64(m(v), m(v)));
}

// Byte i of the k-th 16 bytes of c0 c1 c2 c0 c1 c2 ..., with elements of `size` bytes: which byte
// of channel `c` it takes, or kNone when it belongs to another channel.
constexpr int interleave3_index(int size, int k, int c, int i) {
  const int byte = 16 * k + i % 16;
  const int element = byte / size;
  return element % 3 == c ? element / 3 * size + byte % size : kNone;
}
template <int size, int k, int c>
constexpr LaneTable kInterleave3 = lane_table([](int i) {
  return interleave3_index(size, k, c, i);
});
template <int size, int k>
constexpr LaneTable kTriplicate = lane_table([](int i) {
  return (16 * k + i % 16) / size / 3 * size + i % size;
});

template <int size, int k>
LUM_INLINE U8 interleaved3(U8 c0, U8 c1, U8 c2) {
  return shuffle(c0, kInterleave3<size, k, 0>) | shuffle(c1, kInterleave3<size, k, 1>) |
         shuffle(c2, kInterleave3<size, k, 2>);
}
template <class To, class V>
LUM_INLINE void store3(To p, V first, V second, V third) {
  constexpr int size = kElementBytes<V>;
  const U8 c0 = U8(first), c1 = U8(second), c2 = U8(third);
  store(p, interleaved3<size, 0>(c0, c1, c2));
  store(p + 16, interleaved3<size, 1>(c0, c1, c2));
  store(p + 32, interleaved3<size, 2>(c0, c1, c2));
}
template <class To, class V>
LUM_INLINE void store3_same(To p, V same) {
  constexpr int size = kElementBytes<V>;
  const U8 c = U8(same);
  store(p, shuffle(c, kTriplicate<size, 0>));
  store(p + 16, shuffle(c, kTriplicate<size, 1>));
  store(p + 32, shuffle(c, kTriplicate<size, 2>));
}
// Four-byte pixels whose last byte stays as it is in memory. Whether that loads so far ahead, where
// little else is done, that fetching both source and destination costs more than it gains:
constexpr bool kLoadsRunAhead = false;
LUM_INLINE void store_keep(uint8_t* p, U8 pixels) {
  const U8 alpha = U8(U32{} + 0xFF000000u);
  store(p, (load<U8>(p) & alpha) | (pixels & ~alpha));
}
LUM_INLINE void store4_keep(uint8_t* p, U8 c0, U8 c1, U8 c2) {
  const Bytes2 c01 = interleave(c0, c1);
  const Bytes2 c2x = interleave(c2, c2);
  store_keep(p, u8(_mm_unpacklo_epi16(m(c01.lo), m(c2x.lo))));
  store_keep(p + 16, u8(_mm_unpackhi_epi16(m(c01.lo), m(c2x.lo))));
  store_keep(p + 32, u8(_mm_unpacklo_epi16(m(c01.hi), m(c2x.hi))));
  store_keep(p + 48, u8(_mm_unpackhi_epi16(m(c01.hi), m(c2x.hi))));
}

// kLanes / 4 pixels of four bytes, the last one a copy of the second, from three in memory, and
// back.
template <bool swap>
constexpr LaneTable kExpand3 = lane_table([](int i) { return i / 4 * 3 + byte_of_three(i, swap); });
// They begin at byte `from` of the vector, and go on at its beginning beyond its end.
template <bool swap, int from>
constexpr LaneTable kCompress3 = lane_table([](int i) {
  const int byte = (i + 16 - from) % 16;
  return byte >= 12 ? kNone : byte / 3 * 4 + (swap ? 2 - byte % 3 : byte % 3);
});
template <bool swap>
LUM_INLINE U8 expand3(const uint8_t* p) {
  return shuffle(load12(p), kExpand3<swap>);
}
LUM_INLINE void compress3(uint8_t* p, U8 pixels) {
  const __m128i v = m(shuffle(pixels, kCompress3<false, 0>));
  const int last = _mm_extract_epi32(v, 2);
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v);
  memcpy(p + 8, &last, sizeof last);
}
// The same for kLanes pixels; with `swap` the first and the third byte change places. Each quarter
// begins where the one before it ends, and so shares two vectors.
template <bool swap, class To>
LUM_INLINE void compress3_all(To p, const U8 (&pixels)[4]) {
  const __m128i q0 = m(shuffle(pixels[0], kCompress3<swap, 0>));
  const __m128i q1 = m(shuffle(pixels[1], kCompress3<swap, 12>));
  const __m128i q2 = m(shuffle(pixels[2], kCompress3<swap, 8>));
  const __m128i q3 = m(shuffle(pixels[3], kCompress3<swap, 4>));
  store(p, u8(_mm_blend_epi16(q0, q1, 0xC0)));
  store(p + 16, u8(_mm_blend_epi16(q1, q2, 0xF0)));
  store(p + 32, u8(_mm_blend_epi16(q2, q3, 0xFC)));
}
// Three-byte elements whose first and third byte change places.
template <int k>
LUM_INLINE U8 load_swapped(const uint8_t* p) {
  return shuffle(load<U8>(p + first_from<16>(k)), kSwapFirst<16, k>) |
         shuffle(load<U8>(p + second_from<16>(k)), kSwapSecond<16, k>);
}
LUM_INLINE Bytes3 load3_swapped(const uint8_t* p) {
  return {load_swapped<0>(p), load_swapped<1>(p), load_swapped<2>(p)};
}
// Elements of `size` bytes, a power of two, in reverse order.
template <int size>
constexpr LaneTable kReversed = lane_table([](int i) {
  return (15 - i % 16) / size * size + i % size;
});
template <int size>
LUM_INLINE U8 reversed(U8 v) {
  return shuffle(v, kReversed<size>);
}
// A vector of pieces as long as those within which interleave() works, `stride` bytes apart.
constexpr int kPieceBytes = 16;
LUM_INLINE U8 load_pieces(const uint8_t* p, ptrdiff_t) { return load<U8>(p); }
// The pieces that begin at p + at[0], p + at[1] ...
LUM_INLINE U8 load_pieces_at(const uint8_t* p, const uint32_t* at) { return load<U8>(p + at[0]); }
// The bytes of a piece that the low bits of an index tell, or 0 where its highest bit is set.
LUM_INLINE U8 pick_bytes(U8 v, U8 index) { return u8(_mm_shuffle_epi8(m(v), m(index))); }
// Spans are what a byte can be moved about in by one shuffle: here there is one in a vector.
constexpr int kSpanBytes = 16;
constexpr bool kShufflesBytes = true;
constexpr bool kPermutesTwo = false;  // there is no permute of two vectors
LUM_INLINE U8 load_spans(const uint8_t* p, ptrdiff_t) { return load<U8>(p); }
LUM_INLINE void store_spans(uint8_t* p, ptrdiff_t, U8 v) { store(p, v); }
LUM_INLINE U8 shuffle_spans(U8 v, const LaneTable& t) { return shuffle(v, t); }
// Bytes 0 and 2 of every four change places.
constexpr LaneTable kSwap02 = lane_table([](int i) { return i % 2 ? i : i ^ 2; });
LUM_INLINE U8 swap02(U8 v) { return shuffle(v, kSwap02); }
// Byte 3 of every four becomes a copy of byte 1.
constexpr LaneTable kCopy1To3 = lane_table([](int i) { return i % 4 == 3 ? i - 2 : i; });
LUM_INLINE U8 copy1_to_3(U8 v) { return shuffle(v, kCopy1To3); }

// To an aligned address, past the cache.
constexpr bool kStreams = true;
LUM_INLINE void stream_vector(uint8_t* p, U8 v) {
  _mm_stream_si128(reinterpret_cast<__m128i*>(p), m(v));
}
inline void end_stream() { _mm_sfence(); }

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum

#include "simd/vec_byte_of_words-inl.h"

#endif
