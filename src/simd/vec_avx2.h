// SPDX-License-Identifier: MIT
// Vector primitives, level avx2: 32 lanes. Shuffles work within 128-bit halves, so interleaved
// words stay in the order in which the pack functions take them back, and interleaved pixels are
// made in halves that change places on their way to memory.
#ifndef LUM_SIMD_VEC_AVX2_H
#define LUM_SIMD_VEC_AVX2_H

#include <immintrin.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace lum {
namespace LUM_LEVEL {
namespace {
constexpr int kLanes = 32;
}
}  // namespace LUM_LEVEL
}  // namespace lum

#include "simd/vec_lane_masks-inl.h"

namespace lum {
namespace LUM_LEVEL {
namespace {

LUM_INLINE __m256i m(U8 v) { return reinterpret_cast<__m256i>(v); }
LUM_INLINE __m256i m(U16 v) { return reinterpret_cast<__m256i>(v); }
LUM_INLINE __m256i m(I16 v) { return reinterpret_cast<__m256i>(v); }
LUM_INLINE __m256i m(I32 v) { return reinterpret_cast<__m256i>(v); }
LUM_INLINE U8 u8(__m256i v) { return reinterpret_cast<U8>(v); }
LUM_INLINE U16 u16(__m256i v) { return reinterpret_cast<U16>(v); }
LUM_INLINE I16 i16(__m256i v) { return reinterpret_cast<I16>(v); }

// The lower halves of both, and the upper ones.
LUM_INLINE Bytes2 halves_together(U8 a, U8 b) {
  return {u8(_mm256_permute2x128_si256(m(a), m(b), 0x20)),
          u8(_mm256_permute2x128_si256(m(a), m(b), 0x31))};
}
LUM_INLINE U8 shuffle(U8 v, const LaneTable& t) {
  return u8(_mm256_shuffle_epi8(m(v), m(load<U8>(t.v))));
}
LUM_INLINE U8 load_halves(const uint8_t* low, const uint8_t* high) {
  return u8(_mm256_inserti128_si256(
      _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(low))),
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(high)), 1));
}
// Half a vector each.
LUM_INLINE void store_halves(uint8_t* low, uint8_t* high, U8 v) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(low), _mm256_castsi256_si128(m(v)));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(high), _mm256_extracti128_si256(m(v), 1));
}
// Quarters 0 2 1 3: from two vectors packed half by half to memory order.
LUM_INLINE __m256i in_memory_order(__m256i v) { return _mm256_permute4x64_epi64(v, 0xD8); }

// a in the chosen lanes, b in the others.
LUM_INLINE U8 choose(const Mask& mask, U8 a, U8 b) {
  return u8(_mm256_blendv_epi8(m(b), m(a), m(mask.bytes)));
}

LUM_INLINE U8 avg_up(U8 a, U8 b) { return u8(_mm256_avg_epu8(m(a), m(b))); }
LUM_INLINE U16 avg_up(U16 a, U16 b) { return u16(_mm256_avg_epu16(m(a), m(b))); }
LUM_INLINE I16 absolute(I16 a) { return i16(_mm256_abs_epi16(m(a))); }
LUM_INLINE U16 lesser(U16 a, U16 b) { return u16(_mm256_min_epu16(m(a), m(b))); }
LUM_INLINE I16 lesser(I16 a, I16 b) { return i16(_mm256_min_epi16(m(a), m(b))); }
LUM_INLINE I16 greater(I16 a, I16 b) { return i16(_mm256_max_epi16(m(a), m(b))); }
LUM_INLINE U16 mul_hi(U16 a, U16 b) { return u16(_mm256_mulhi_epu16(m(a), m(b))); }
LUM_INLINE I16 mul_hi(I16 a, I16 b) { return i16(_mm256_mulhi_epi16(m(a), m(b))); }
// n is at most 16.
LUM_INLINE U16 shift_left(U16 a, unsigned n) {
  return u16(_mm256_sll_epi16(m(a), _mm_cvtsi32_si128(static_cast<int>(n))));
}
LUM_INLINE U16 shift_right(U16 a, unsigned n) {
  return u16(_mm256_srl_epi16(m(a), _mm_cvtsi32_si128(static_cast<int>(n))));
}
// Every count is the same. One operation, where a count in a scalar takes two on many processors.
LUM_INLINE I32 shift_right(I32 a, I32 counts) { return a >> counts; }

// a0 b0 a1 b1 ... within each half: pixels 0-7 and 16-23 in lo, 8-15 and 24-31 in hi.
LUM_INLINE Bytes2 interleave(U8 a, U8 b) {
  return {u8(_mm256_unpacklo_epi8(m(a), m(b))), u8(_mm256_unpackhi_epi8(m(a), m(b)))};
}
LUM_INLINE Words2 interleave(I16 a, I16 b) {
  return {i16(_mm256_unpacklo_epi16(m(a), m(b))), i16(_mm256_unpackhi_epi16(m(a), m(b)))};
}
// Products of unsigned and signed bytes, added in pairs.
LUM_INLINE I16 madd(U8 u, I8 s) { return i16(_mm256_maddubs_epi16(m(u), m(U8(s)))); }
// Products of signed words, added in pairs.
LUM_INLINE I32 madd(I16 a, I16 b) { return reinterpret_cast<I32>(_mm256_madd_epi16(m(a), m(b))); }
LUM_INLINE U32 add_madd(U32 sum, I16 a, I16 b) { return sum + U32(madd(a, b)); }
// Products of unsigned and signed bytes, added in fours; sums of two fit a signed word.
LUM_INLINE I32 madd4(U8 u, I8 s) { return madd(madd(u, s), I16(splat16(1))); }
LUM_INLINE Dwords2 interleave(U32 a, U32 b) {
  return {U32(u8(_mm256_unpacklo_epi32(m(U8(a)), m(U8(b))))),
          U32(u8(_mm256_unpackhi_epi32(m(U8(a)), m(U8(b)))))};
}
LUM_INLINE Qwords2 interleave(U64 a, U64 b) {
  return {U64(u8(_mm256_unpacklo_epi64(m(U8(a)), m(U8(b))))),
          U64(u8(_mm256_unpackhi_epi64(m(U8(a)), m(U8(b)))))};
}
// Products of signed words in units of 2^-15, rounded: (a b + 0x4000) >> 15.
LUM_INLINE I16 mul_round(I16 a, I16 b) { return i16(_mm256_mulhrs_epi16(m(a), m(b))); }

// Back from interleaved order: high bytes; values limited to 0..255; values limited to -128..127.
LUM_INLINE U8 pack_high(U16 lo, U16 hi) { return u8(_mm256_packus_epi16(m(lo >> 8), m(hi >> 8))); }
LUM_INLINE U8 pack_sat(I16 lo, I16 hi) { return u8(_mm256_packus_epi16(m(lo), m(hi))); }
LUM_INLINE I8 pack_sat_signed(I16 lo, I16 hi) {
  return reinterpret_cast<I8>(_mm256_packs_epi16(m(lo), m(hi)));
}
// The same from 32 to 16 bits, limited to signed or to unsigned words.
LUM_INLINE I16 pack_sat(I32 lo, I32 hi) { return i16(_mm256_packs_epi32(m(lo), m(hi))); }
LUM_INLINE U16 pack_sat_unsigned(I32 lo, I32 hi) { return u16(_mm256_packus_epi32(m(lo), m(hi))); }
// The upper bytes of both, side by side: even's, odd's, even's ...
LUM_INLINE U8 upper_bytes(U16 even, U16 odd) { return U8((even >> 8) | (odd & 0xFF00)); }
// The even words of the first, the odd ones of the second.
LUM_INLINE U16 alternate(U16 even, U16 odd) {
  return u16(_mm256_blend_epi16(m(U8(even)), m(U8(odd)), 0xAA));
}
// The complement of that.
LUM_INLINE U16 not_alternate(U16 even, U16 odd) { return ~alternate(even, odd); }
// Bits 8 to 23 of the lanes of both, as words: even's, odd's, even's ...
LUM_INLINE U16 middle_words(U32 even, U32 odd) { return alternate(U16(even >> 8), U16(odd << 8)); }
// Bits 16 to 31 of the lanes of both, as words: even's, odd's, even's ...
LUM_INLINE I16 high_words(U32 even, U32 odd) {
  return i16(_mm256_blend_epi16(m(U8(even >> 16)), m(U8(odd)), 0xAA));
}
// Words of the columns before: the last of the vector before and all but the last of this one; and
// of the columns behind.
LUM_INLINE I16 words_before(I16 before, I16 here) {
  return i16(_mm256_alignr_epi8(m(here), _mm256_permute2x128_si256(m(before), m(here), 0x21), 14));
}
LUM_INLINE I16 words_behind(I16 here, I16 behind) {
  return i16(_mm256_alignr_epi8(_mm256_permute2x128_si256(m(here), m(behind), 0x21), m(here), 2));
}
// Words of the even and of the odd bytes, limited to 0..255, to bytes.
constexpr LaneTable kAlternating = lane_table([](int i) { return i % 16 / 2 + i % 2 * 8; });
LUM_INLINE U8 alternate_sat(I16 even, I16 odd) {
  return u8(_mm256_shuffle_epi8(_mm256_packus_epi16(m(even), m(odd)), m(load<U8>(kAlternating.v))));
}
// Signed words in memory order to bytes, limited to 0..255.
LUM_INLINE U8 narrow(I16 lo, I16 hi) {
  return u8(in_memory_order(_mm256_packus_epi16(m(lo), m(hi))));
}
// The same from words packed of four vectors in turn, two of each in 128 bits, to bytes in the
// order of these four: what lo holds, then what hi holds.
constexpr LaneTable kQuartersOfHalf =
    lane_table([](int i) { return i % 4 / 2 * 8 + i % 16 / 4 * 2 + i % 2; });
LUM_INLINE U8 narrow_quarters(I16 lo, I16 hi) { return shuffle(narrow(lo, hi), kQuartersOfHalf); }
// 32-bit lanes in memory order, each 0..65535, to words.
LUM_INLINE U16 narrow(U32 lo, U32 hi) {
  return u16(in_memory_order(_mm256_packus_epi32(m(U8(lo)), m(U8(hi)))));
}
// Sums of neighbouring lanes, those of `a` first.
LUM_INLINE I32 sums_of_pairs(I32 a, I32 b) {
  return I32(u8(in_memory_order(_mm256_hadd_epi32(m(a), m(b)))));
}
// Bytes 1 of the sums of madd4() plus `added`, each 0..65535, in memory order.
LUM_INLINE U8 madd4_high(const U8 (&v)[4], I8 weights, unsigned added) {
  const U16 first = pack_sat_unsigned(madd4(v[0], weights), madd4(v[1], weights)) + splat16(added);
  const U16 second = pack_sat_unsigned(madd4(v[2], weights), madd4(v[3], weights)) + splat16(added);
  return u8(_mm256_permutevar8x32_epi32(m(pack_high(first, second)),
                                        _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7)));
}

// The order of the two bytes of a word, as data.
using ByteOrder = U8;
constexpr LaneTable kLaneNumbers = lane_table([](int i) { return i % 16; });
LUM_INLINE ByteOrder byte_order(bool big_endian) {
  return load<U8>(kLaneNumbers.v) ^ static_cast<uint8_t>(big_endian);
}
LUM_INLINE U16 ordered(U16 v, ByteOrder order) { return u16(_mm256_shuffle_epi8(m(v), m(order))); }

// The last lanes of a row, one sample to the right; the sample beyond the row repeats the last but
// one.
constexpr LaneTable kEdge8 = lane_table([](int i) { return i < 31 ? i % 16 + (i >= 16) : 14; });
constexpr LaneTable kEdge16 = lane_table([](int i) {
  return i < 16 ? i : i < 30 ? i % 16 + 2 : i % 16 - 2;
});
LUM_INLINE U8 load_edge8(const uint8_t* p) { return shuffle(load_halves(p + 1, p + 16), kEdge8); }
LUM_INLINE U16 load_edge16(const uint8_t* p) {
  return U16(shuffle(load_halves(p + 2, p + 16), kEdge16));
}

// Bytes to words, half a vector of them, in memory order.
LUM_INLINE U16 load_widened(const uint8_t* p) {
  return u16(_mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))));
}

// Two of every three bytes: byte i is Formula::byte(i) of the memory, the formulas repeat every 24
// bytes. In each half the first 16 bytes are one load and those after them in another, 8 bytes on.
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
  return shuffle(load_halves(p, p + 24), kBytesOf3First<Formula>) |
         shuffle(load_halves(p + 8, p + 32), kBytesOf3Rest<Formula>);
}

// The first or second kWords words of those at p, from 3/4 as many bytes: word i is made of bytes
// low(i) and high(i) of the memory, a negative number gives zero. The formulas repeat every 12
// bytes.
constexpr int shifted_or_none(int byte, int i) {
  return byte < 0 ? kNone : byte % 12 + (i < 16 ? 0 : 4);
}
template <class Formula>
constexpr LaneTable kWordsOf3 = lane_table([](int i) {
  const int word = i % 32 / 2;
  return shifted_or_none(i % 2 ? Formula::high(word) : Formula::low(word), i);
});
// 24 bytes, the upper half from 8 bytes on: its own 12 bytes begin at byte 4.
LUM_INLINE U8 load24(const uint8_t* p) { return load_halves(p, p + 8); }
template <int half, class Formula>
LUM_INLINE U16 load_words_of_3(const uint8_t* p, Formula) {
  return U16(shuffle(load24(p + 24 * half), kWordsOf3<Formula>));
}
// The same from 5/8 as many bytes; the formulas repeat every 10 bytes or fewer. Of the 20 bytes the
// upper half is loaded from 4 on: its own 10 begin at byte 6.
template <class Formula>
constexpr LaneTable kWordsOf5 = lane_table([](int i) {
  const int word = i % 32 / 2;
  const int byte = i % 2 ? Formula::high(word) : Formula::low(word);
  return byte < 0 ? kNone : byte % 10 + (i < 16 ? 0 : 6);
});
template <int half, class Formula>
LUM_INLINE U16 load_words_of_5(const uint8_t* p, Formula) {
  p += 20 * half;
  return U16(shuffle(load_halves(p, p + 4), kWordsOf5<Formula>));
}
// Three channels c0 c1 c2 c0 c1 c2 ... with elements of `size` bytes, in three times 16 bytes. 3
// does not divide 16, so a position belongs to another channel in each of the three: one shuffle a
// channel and blends with constant masks bring them together or apart. The same in both halves.
constexpr int channel_of(int size, int k, int i) { return (16 * k + i) / size % 3; }
// Which of the three has channel c at position i.
constexpr int third_with(int size, int c, int i) {
  for (int k = 0; k < 3; ++k) {
    if (channel_of(size, k, i) == c) return k;
  }
  return 0;
}
template <int size, int k, int c>
constexpr LaneTable kOfChannel = lane_table([](int i) {
  return channel_of(size, k, i % 16) == c ? 0xFF : 0;
});
template <int size, int k, int c>
LUM_INLINE __m256i blend_channel(__m256i others, U8 v) {
  return _mm256_blendv_epi8(others, m(v), m(load<U8>(kOfChannel<size, k, c>.v)));
}
// Elements of channel c, brought together from where the three have them.
template <int size, int c>
constexpr LaneTable kGather3 = lane_table([](int i) {
  return ((i % 16 / size * 3 + c) * size + i % size) % 16;
});
template <int size, int c>
LUM_INLINE U8 channel_of_3(U8 v0, U8 v1, U8 v2) {
  const __m256i v01 = blend_channel<size, 1, c>(m(v0), v1);
  return shuffle(u8(blend_channel<size, 2, c>(v01, v2)), kGather3<size, c>);
}
template <int size>
LUM_INLINE Bytes3 load3_bytes(const uint8_t* p) {
  const U8 v0 = load_halves(p, p + 48), v1 = load_halves(p + 16, p + 64),
           v2 = load_halves(p + 32, p + 80);
  return {channel_of_3<size, 0>(v0, v1, v2), channel_of_3<size, 1>(v0, v1, v2),
          channel_of_3<size, 2>(v0, v1, v2)};
}
LUM_INLINE Bytes3 load3(const uint8_t* p) { return load3_bytes<1>(p); }
LUM_INLINE Words3 load3_words(const uint8_t* p) {
  const Bytes3 v = load3_bytes<2>(p);
  return {U16(v.c0), U16(v.c1), U16(v.c2)};
}

// a0 b0 a1 b1 ... in memory order.
LUM_INLINE Bytes2 zip(U8 a, U8 b) {
  const Bytes2 v = interleave(a, b);
  return {u8(_mm256_permute2x128_si256(m(v.lo), m(v.hi), 0x20)),
          u8(_mm256_permute2x128_si256(m(v.lo), m(v.hi), 0x31))};
}
LUM_INLINE Wide zip(U16 a, U16 b) {
  const Words2 v = interleave(I16(a), I16(b));
  return {u16(_mm256_permute2x128_si256(m(v.lo), m(v.hi), 0x20)),
          u16(_mm256_permute2x128_si256(m(v.lo), m(v.hi), 0x31))};
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

template <int size, int c>
constexpr LaneTable kSpread3 = lane_table([](int i) {
  const int byte = 16 * third_with(size, c, i % 16) + i % 16;
  return byte / size / 3 * size + byte % size;
});
template <int size, int k>
LUM_INLINE U8 blend3(U8 c0, U8 c1, U8 c2) {
  return u8(blend_channel<size, k, 2>(blend_channel<size, k, 1>(m(c0), c1), c2));
}
template <class To, class V>
LUM_INLINE void store3(To p, V first, V second, V third) {
  constexpr int size = kElementBytes<V>;
  const U8 c0 = shuffle(U8(first), kSpread3<size, 0>);
  const U8 c1 = shuffle(U8(second), kSpread3<size, 1>);
  const U8 c2 = shuffle(U8(third), kSpread3<size, 2>);
  // Each holds 16 bytes of the memory and, in the upper half, the 16 that lie 48 further.
  const __m256i v0 = m(blend3<size, 0>(c0, c1, c2)), v1 = m(blend3<size, 1>(c0, c1, c2)),
                v2 = m(blend3<size, 2>(c0, c1, c2));
  store(p, u8(_mm256_permute2x128_si256(v0, v1, 0x20)));
  store(p + 32, u8(_mm256_blend_epi32(v2, v0, 0xF0)));
  store(p + 64, u8(_mm256_permute2x128_si256(v1, v2, 0x31)));
}
template <int size, int k>
constexpr LaneTable kTriplicate = lane_table([](int i) {
  return (32 * k + i % 32) / size / 3 * size % 16 + i % size;
});
template <class To, class V>
LUM_INLINE void store3_same(To p, V same) {
  constexpr int size = kElementBytes<V>;
  const U8 c = U8(same);
  const U8 lower = u8(_mm256_permute2x128_si256(m(c), m(c), 0x00));
  const U8 upper = u8(_mm256_permute2x128_si256(m(c), m(c), 0x11));
  store(p, shuffle(lower, kTriplicate<size, 0>));
  store(p + 32, shuffle(c, kTriplicate<size, 1>));
  store(p + 64, shuffle(upper, kTriplicate<size, 2>));
}
// Four-byte pixels whose last byte stays as it is in memory. Whether that loads so far ahead, where
// little else is done, that fetching both source and destination costs more than it gains:
constexpr bool kLoadsRunAhead = true;
LUM_INLINE void store_keep(uint8_t* p, U8 pixels) {
  const U8 alpha = U8(U32{} + 0xFF000000u);
  store(p, u8(_mm256_blendv_epi8(m(pixels), m(load<U8>(p)), m(alpha))));
}
LUM_INLINE void store4_keep(uint8_t* p, U8 c0, U8 c1, U8 c2) {
  const Bytes2 c01 = interleave(c0, c1);
  const Bytes2 c2x = interleave(c2, c2);
  const __m256i q0 = _mm256_unpacklo_epi16(m(c01.lo), m(c2x.lo));  // pixels 0-3, 16-19
  const __m256i q1 = _mm256_unpackhi_epi16(m(c01.lo), m(c2x.lo));  // pixels 4-7, 20-23
  const __m256i q2 = _mm256_unpacklo_epi16(m(c01.hi), m(c2x.hi));
  const __m256i q3 = _mm256_unpackhi_epi16(m(c01.hi), m(c2x.hi));
  store_keep(p, u8(_mm256_permute2x128_si256(q0, q1, 0x20)));
  store_keep(p + 32, u8(_mm256_permute2x128_si256(q2, q3, 0x20)));
  store_keep(p + 64, u8(_mm256_permute2x128_si256(q0, q1, 0x31)));
  store_keep(p + 96, u8(_mm256_permute2x128_si256(q2, q3, 0x31)));
}

// kLanes / 4 pixels of four bytes, the last one a copy of the second, from three in memory, and
// back. The second half is loaded and stored 4 bytes early so that 24 bytes are touched and no
// more.
template <bool swap>
constexpr LaneTable kExpand3 = lane_table([](int i) {
  return i % 16 / 4 * 3 + byte_of_three(i, swap) + (i < 16 ? 0 : 4);
});
template <bool swap>
constexpr LaneTable kCompress3 = lane_table([](int i) {
  const int byte = i < 16 ? i : i % 16 - 4;
  return byte < 0 || byte >= 12 ? kNone : byte / 3 * 4 + (swap ? 2 - byte % 3 : byte % 3);
});
template <bool swap>
LUM_INLINE U8 expand3(const uint8_t* p) {
  return shuffle(load24(p), kExpand3<swap>);
}
LUM_INLINE void compress3(uint8_t* p, U8 pixels) {
  const __m256i v = m(shuffle(pixels, kCompress3<false>));
  const __m128i low = _mm256_castsi256_si128(v);
  const __m128i high = _mm_or_si128(_mm256_extracti128_si256(v, 1), _mm_srli_si128(low, 8));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(p), low);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 8), high);
}
// The same for kLanes pixels; with `swap` the first and the third byte change places. Each quarter
// is brought together, begins where the one before it ends, and so shares two vectors.
template <bool swap, class To>
LUM_INLINE void compress3_all(To p, const U8 (&pixels)[4]) {
  const auto packed = [&](int i, __m256i order) {
    return _mm256_permutevar8x32_epi32(m(shuffle(pixels[i], kCompress3<swap>)), order);
  };
  const __m256i q0 = packed(0, _mm256_setr_epi32(0, 1, 2, 5, 6, 7, 0, 0));
  const __m256i q1 = packed(1, _mm256_setr_epi32(2, 5, 6, 7, 0, 0, 0, 1));
  const __m256i q2 = packed(2, _mm256_setr_epi32(6, 7, 0, 0, 0, 1, 2, 5));
  const __m256i q3 = packed(3, _mm256_setr_epi32(0, 0, 0, 1, 2, 5, 6, 7));
  store(p, u8(_mm256_blend_epi32(q0, q1, 0xC0)));
  store(p + 32, u8(_mm256_blend_epi32(q1, q2, 0xF0)));
  store(p + 64, u8(_mm256_blend_epi32(q2, q3, 0xFC)));
}
// Three-byte elements whose first and third byte change places.
template <int k>
LUM_INLINE U8 load_swapped(const uint8_t* p) {
  const auto load_from = [&](int lower, int upper) {
    return upper == lower + 16 ? load<U8>(p + lower) : load_halves(p + lower, p + upper);
  };
  constexpr int kLower = 2 * k, kUpper = 2 * k + 1;
  return shuffle(load_from(first_from<16>(kLower), first_from<16>(kUpper)), kSwapFirst<16, k>) |
         shuffle(load_from(second_from<16>(kLower), second_from<16>(kUpper)), kSwapSecond<16, k>);
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
  return u8(_mm256_permute4x64_epi64(m(shuffle(v, kReversed<size>)), 0x4E));
}
// A vector of pieces as long as those within which interleave() works, `stride` bytes apart.
constexpr int kPieceBytes = 16;
LUM_INLINE U8 load_pieces(const uint8_t* p, ptrdiff_t stride) { return load_halves(p, p + stride); }
// The pieces that begin at p + at[0], p + at[1] ...
LUM_INLINE U8 load_pieces_at(const uint8_t* p, const uint32_t* at) {
  return load_halves(p + at[0], p + at[1]);
}
// The bytes of a piece that the low bits of an index tell, or 0 where its highest bit is set.
LUM_INLINE U8 pick_bytes(U8 v, U8 index) { return u8(_mm256_shuffle_epi8(m(v), m(index))); }
// Spans are what a byte can be moved about in by one shuffle: side by side or apart in memory, the
// first one's at p.
constexpr int kSpanBytes = 16;
constexpr bool kShufflesBytes = true;
constexpr bool kPermutesTwo = false;  // there is no permute of two vectors
LUM_INLINE U8 load_spans(const uint8_t* p, ptrdiff_t stride) { return load_halves(p, p + stride); }
LUM_INLINE void store_spans(uint8_t* p, ptrdiff_t stride, U8 v) { store_halves(p, p + stride, v); }
LUM_INLINE U8 shuffle_spans(U8 v, const LaneTable& t) { return shuffle(v, t); }
// Bytes 0 and 2 of every four change places.
constexpr LaneTable kSwap02 = lane_table([](int i) { return i % 2 ? i % 16 : i % 16 ^ 2; });
LUM_INLINE U8 swap02(U8 v) { return shuffle(v, kSwap02); }
// Byte 3 of every four becomes a copy of byte 1.
constexpr LaneTable kCopy1To3 = lane_table([](int i) { return i % 4 == 3 ? i % 16 - 2 : i % 16; });
LUM_INLINE U8 copy1_to_3(U8 v) { return shuffle(v, kCopy1To3); }

// To an aligned address, past the cache.
constexpr bool kStreams = true;
LUM_INLINE void stream_vector(uint8_t* p, U8 v) {
  _mm256_stream_si256(reinterpret_cast<__m256i*>(p), m(v));
}
inline void end_stream() { _mm_sfence(); }

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum

#include "simd/vec_byte_of_words-inl.h"

#endif
