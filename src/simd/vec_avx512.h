// SPDX-License-Identifier: MIT
// Vector primitives, level avx512: F, BW, VL, DQ, VBMI and VNNI, 64 lanes. Byte permutes across the
// whole register replace shuffles within 128 bits; masks replace blends.
#ifndef LUM_SIMD_VEC_AVX512_H
#define LUM_SIMD_VEC_AVX512_H

#include <immintrin.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace lum {
namespace LUM_LEVEL {
namespace {
constexpr int kLanes = 64;
}
}  // namespace LUM_LEVEL
}  // namespace lum

#include "simd/vec_types-inl.h"

namespace lum {
namespace LUM_LEVEL {
namespace {

LUM_INLINE __m512i m(U8 v) { return reinterpret_cast<__m512i>(v); }
LUM_INLINE __m512i m(U16 v) { return reinterpret_cast<__m512i>(v); }
LUM_INLINE __m512i m(I16 v) { return reinterpret_cast<__m512i>(v); }
LUM_INLINE __m512i m(I32 v) { return reinterpret_cast<__m512i>(v); }
LUM_INLINE U8 u8(__m512i v) { return reinterpret_cast<U8>(v); }
LUM_INLINE U16 u16(__m512i v) { return reinterpret_cast<U16>(v); }
LUM_INLINE I16 i16(__m512i v) { return reinterpret_cast<I16>(v); }

LUM_INLINE U8 permute(U8 v, const LaneTable& t) {
  return u8(_mm512_permutexvar_epi8(m(load<U8>(t.v)), m(v)));
}

// The order of 32-bit lanes in a permute.
struct Lanes32 {
  alignas(64) uint32_t v[16];
};
// Row and column of a 4 x 4 matrix of 32-bit lanes exchanged: the step between pixels kept in order
// and what unpacking or packing within 128 bits makes of them.
constexpr Lanes32 kTranspose = {{0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15}};
LUM_INLINE __m512i transpose(__m512i v) {
  return _mm512_permutexvar_epi32(_mm512_load_si512(kTranspose.v), v);
}

// Lanes chosen by the parity of their number.
struct Mask {
  __mmask64 bytes;
};
LUM_INLINE Mask even_lanes(unsigned parity) { return {0x5555555555555555ull << (parity & 1)}; }

// x = a in the chosen lanes and b in the others; y the other way round. g++ would load what comes
// from memory twice, as an operand of either blend, and half of these loads cross a cache line.
LUM_INLINE void cross(const Mask& mask, U8 a, U8 b, U8& x, U8& y) {
  a = in_register(a);
  b = in_register(b);
  x = u8(_mm512_mask_blend_epi8(mask.bytes, m(b), m(a)));
  y = u8(_mm512_mask_blend_epi8(mask.bytes, m(a), m(b)));
}
LUM_INLINE void cross16(const Mask& mask, U16 a, U16 b, U16& x, U16& y) {
  const __mmask32 words = static_cast<__mmask32>(mask.bytes);
  a = in_register(a);
  b = in_register(b);
  x = u16(_mm512_mask_blend_epi16(words, m(b), m(a)));
  y = u16(_mm512_mask_blend_epi16(words, m(a), m(b)));
}

// a in the chosen lanes, b in the others.
LUM_INLINE U8 choose(const Mask& mask, U8 a, U8 b) {
  return u8(_mm512_mask_blend_epi8(mask.bytes, m(b), m(a)));
}

LUM_INLINE U8 avg_up(U8 a, U8 b) { return u8(_mm512_avg_epu8(m(a), m(b))); }
LUM_INLINE U16 avg_up(U16 a, U16 b) { return u16(_mm512_avg_epu16(m(a), m(b))); }
LUM_INLINE I16 absolute(I16 a) { return i16(_mm512_abs_epi16(m(a))); }
LUM_INLINE U16 lesser(U16 a, U16 b) { return u16(_mm512_min_epu16(m(a), m(b))); }
LUM_INLINE I16 lesser(I16 a, I16 b) { return i16(_mm512_min_epi16(m(a), m(b))); }
LUM_INLINE I16 greater(I16 a, I16 b) { return i16(_mm512_max_epi16(m(a), m(b))); }
// sum + step, or sum - step, in the lanes where a > b.
constexpr bool kAnyStep = true;
template <int step>
LUM_INLINE I16 add_where_greater(I16 sum, I16 a, I16 b) {
  const __mmask32 greater = _mm512_cmpgt_epi16_mask(m(a), m(b));
  return i16(_mm512_mask_add_epi16(m(sum), greater, m(sum), _mm512_set1_epi16(step)));
}
template <int step>
LUM_INLINE I16 subtract_where_greater(I16 sum, I16 a, I16 b) {
  const __mmask32 greater = _mm512_cmpgt_epi16_mask(m(a), m(b));
  return i16(_mm512_mask_sub_epi16(m(sum), greater, m(sum), _mm512_set1_epi16(step)));
}
LUM_INLINE U16 mul_hi(U16 a, U16 b) { return u16(_mm512_mulhi_epu16(m(a), m(b))); }
LUM_INLINE I16 mul_hi(I16 a, I16 b) { return i16(_mm512_mulhi_epi16(m(a), m(b))); }
// n is at most 16. A count in each lane is one operation; the shifts by one count for all lanes are
// a shuffle more.
LUM_INLINE U16 shift_left(U16 a, unsigned n) { return u16(_mm512_sllv_epi16(m(a), m(splat16(n)))); }
LUM_INLINE U16 shift_right(U16 a, unsigned n) {
  return u16(_mm512_srlv_epi16(m(a), m(splat16(n))));
}
// Every count is the same.
LUM_INLINE I32 shift_right(I32 a, I32 counts) {
  return I32(u8(_mm512_srav_epi32(m(a), m(counts))));
}

// a0 b0 a1 b1 ... within each 128 bits: the lower eight pixels of each in lo, the upper in hi.
LUM_INLINE Bytes2 interleave(U8 a, U8 b) {
  return {u8(_mm512_unpacklo_epi8(m(a), m(b))), u8(_mm512_unpackhi_epi8(m(a), m(b)))};
}
LUM_INLINE Words2 interleave(I16 a, I16 b) {
  return {i16(_mm512_unpacklo_epi16(m(a), m(b))), i16(_mm512_unpackhi_epi16(m(a), m(b)))};
}
// Products of unsigned and signed bytes, added in pairs.
LUM_INLINE I16 madd(U8 u, I8 s) { return i16(_mm512_maddubs_epi16(m(u), m(U8(s)))); }
// Products of signed words, added in pairs.
LUM_INLINE I32 madd(I16 a, I16 b) { return reinterpret_cast<I32>(_mm512_madd_epi16(m(a), m(b))); }
LUM_INLINE U32 add_madd(U32 sum, I16 a, I16 b) {
  return U32(u8(_mm512_dpwssd_epi32(m(U8(sum)), m(a), m(b))));
}
LUM_INLINE Dwords2 interleave(U32 a, U32 b) {
  return {U32(u8(_mm512_unpacklo_epi32(m(U8(a)), m(U8(b))))),
          U32(u8(_mm512_unpackhi_epi32(m(U8(a)), m(U8(b)))))};
}
LUM_INLINE Qwords2 interleave(U64 a, U64 b) {
  return {U64(u8(_mm512_unpacklo_epi64(m(U8(a)), m(U8(b))))),
          U64(u8(_mm512_unpackhi_epi64(m(U8(a)), m(U8(b)))))};
}
// Products of signed words in units of 2^-15, rounded: (a b + 0x4000) >> 15.
LUM_INLINE I16 mul_round(I16 a, I16 b) { return i16(_mm512_mulhrs_epi16(m(a), m(b))); }

// Back from interleaved order: high bytes; values limited to 0..255; values limited to -128..127.
LUM_INLINE U8 pack_high(U16 lo, U16 hi) { return u8(_mm512_packus_epi16(m(lo >> 8), m(hi >> 8))); }
LUM_INLINE U8 pack_sat(I16 lo, I16 hi) { return u8(_mm512_packus_epi16(m(lo), m(hi))); }
LUM_INLINE I8 pack_sat_signed(I16 lo, I16 hi) {
  return reinterpret_cast<I8>(_mm512_packs_epi16(m(lo), m(hi)));
}
// The same from 32 to 16 bits, limited to signed or to unsigned words.
LUM_INLINE I16 pack_sat(I32 lo, I32 hi) { return i16(_mm512_packs_epi32(m(lo), m(hi))); }
LUM_INLINE U16 pack_sat_unsigned(I32 lo, I32 hi) { return u16(_mm512_packus_epi32(m(lo), m(hi))); }
// The upper bytes of both, side by side: even's, odd's, even's ...
constexpr LaneTable kUpperBytes = lane_table([](int i) { return i % 16 | 1; });
LUM_INLINE U8 upper_bytes(U16 even, U16 odd) {
  return u8(
      _mm512_mask_shuffle_epi8(m(odd), 0x5555555555555555, m(even), m(load<U8>(kUpperBytes.v))));
}
// The even words of the first, the odd ones of the second.
LUM_INLINE U16 alternate(U16 even, U16 odd) {
  return u16(_mm512_mask_blend_epi16(0xAAAAAAAA, m(U8(even)), m(U8(odd))));
}
// The complement of that.
LUM_INLINE U16 not_alternate(U16 even, U16 odd) {
  constexpr int kNotChosen = 0x1B;  // ~(third ? first : second)
  return u16(_mm512_ternarylogic_epi32(m(even), m(odd), _mm512_set1_epi32(0xFFFF), kNotChosen));
}
// Bits 8 to 23 of the lanes of both, as words: even's, odd's, even's ...
constexpr LaneTable kMiddleWords = lane_table([](int i) { return i % 16 / 4 * 4 + 1 + i % 2; });
LUM_INLINE U16 middle_words(U32 even, U32 odd) {
  const __m512i index = m(load<U8>(kMiddleWords.v));
  return u16(_mm512_mask_shuffle_epi8(_mm512_shuffle_epi8(m(U8(odd)), index), 0x3333333333333333,
                                      m(U8(even)), index));
}
// Bits 16 to 31 of the lanes of both, as words: even's, odd's, even's ...
constexpr LaneTable kUpperWords = lane_table([](int i) { return i % 16 | 2; });
LUM_INLINE I16 high_words(U32 even, U32 odd) {
  return i16(_mm512_mask_shuffle_epi8(m(U8(odd)), 0x3333333333333333, m(U8(even)),
                                      m(load<U8>(kUpperWords.v))));
}
// Words of the columns before: the last of the vector before and all but the last of this one; and
// of the columns behind. Two permutes of bytes, as one of two vectors is three operations.
constexpr LaneTable kWordsBefore = lane_table([](int i) { return (62 + i) % 64; });
constexpr LaneTable kWordsBehind = lane_table([](int i) { return (2 + i) % 64; });
LUM_INLINE I16 words_before(I16 before, I16 here) {
  const __m512i index = m(load<U8>(kWordsBefore.v));
  const __m512i all_but_first = _mm512_permutexvar_epi8(index, m(here));
  return i16(_mm512_mask_permutexvar_epi8(all_but_first, 3, index, m(before)));
}
LUM_INLINE I16 words_behind(I16 here, I16 behind) {
  const __m512i index = m(load<U8>(kWordsBehind.v));
  const __m512i all_but_last = _mm512_permutexvar_epi8(index, m(here));
  return i16(_mm512_mask_permutexvar_epi8(all_but_last, __mmask64{3} << 62, index, m(behind)));
}
// Words of the even and of the odd bytes, limited to 0..255, to bytes.
constexpr LaneTable kAlternating = lane_table([](int i) { return i % 16 / 2 + i % 2 * 8; });
LUM_INLINE U8 alternate_sat(I16 even, I16 odd) {
  return u8(_mm512_shuffle_epi8(_mm512_packus_epi16(m(even), m(odd)), m(load<U8>(kAlternating.v))));
}
// Signed words in memory order to bytes, limited to 0..255.
LUM_INLINE U8 narrow(I16 lo, I16 hi) {
  return u8(_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7),
                                     _mm512_packus_epi16(m(lo), m(hi))));
}
// The same from words packed of four vectors in turn, two of each in 128 bits, to bytes in the
// order of these four: what lo holds, then what hi holds.
constexpr LaneTable kQuartersOfHalf =
    lane_table([](int i) { return i % 8 / 2 * 16 + i / 32 * 8 + i % 32 / 8 * 2 + i % 2; });
LUM_INLINE U8 narrow_quarters(I16 lo, I16 hi) { return permute(pack_sat(lo, hi), kQuartersOfHalf); }
// 32-bit lanes in memory order, each 0..65535, to words.
LUM_INLINE U16 narrow(U32 lo, U32 hi) {
  return u16(_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7),
                                      _mm512_packus_epi32(m(U8(lo)), m(U8(hi)))));
}
// Sums of neighbouring lanes, those of `a` first.
LUM_INLINE I32 sums_of_pairs(I32 a, I32 b) {
  const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
  const __m512i odd = _mm512_add_epi32(even, _mm512_set1_epi32(1));
  return I32(u8(_mm512_add_epi32(_mm512_permutex2var_epi32(m(a), even, m(b)),
                                 _mm512_permutex2var_epi32(m(a), odd, m(b)))));
}
// Bytes 1 of sums plus `added`, each 0..65535, in memory order: of four products of unsigned and
// signed bytes, where two fit a signed word.
// Packed to words within 128 bits, vectors 0 and 1 by turns of four words, 2 and 3 likewise; the
// upper bytes of the first words in lower bytes, beside those of the second:
constexpr LaneTable kQuarters = lane_table([](int i) {
  const int quarter = i / 16, pixel = i % 16;
  const int word = pixel / 4 * 8 + quarter % 2 * 4 + pixel % 4;
  return 2 * word + quarter / 2;
});
LUM_INLINE U8 madd4_high(const U8 (&v)[4], I8 weights, unsigned added) {
  const __m512i sum = _mm512_set1_epi32(static_cast<int>(added));
  I32 q[4];
  for (int i = 0; i < 4; ++i) q[i] = I32(u8(_mm512_dpbusd_epi32(sum, m(v[i]), m(U8(weights)))));
  const U16 first = pack_sat_unsigned(q[0], q[1]), second = pack_sat_unsigned(q[2], q[3]);
  const __m512i upper = _mm512_mask_mov_epi8(m(second), 0x5555555555555555, m(first >> 8));
  return permute(u8(upper), kQuarters);
}

// The order of the two bytes of a word, as data.
using ByteOrder = U8;
constexpr LaneTable kLaneNumbers = lane_table([](int i) { return i % 16; });
LUM_INLINE ByteOrder byte_order(bool big_endian) {
  return load<U8>(kLaneNumbers.v) ^ static_cast<uint8_t>(big_endian);
}
LUM_INLINE U16 ordered(U16 v, ByteOrder order) { return u16(_mm512_shuffle_epi8(m(v), m(order))); }
// Words V of either byte order to bytes: V >> first, where first is at most 8. What is above eight
// bits is dropped, or makes 255. The bits are picked where they lie; in 64 bits are then the bytes
// of four words of the lower half and of four of the upper one.
class ByteOfWords {
 public:
  ByteOfWords(unsigned first, bool big_endian)
      : swaps_(big_endian && first != 8),
        order_(byte_order(big_endian)),
        bits_(load<U8>(kBitOfWord.v) + splat8(big_endian && !swaps_ ? 0 : first)),
        most_(splat16((256u << first) - 1)) {}
  LUM_INLINE U8 dropping(U16 lo, U16 hi) const {
    to_host(lo, hi);
    return pick(lo, hi);
  }
  LUM_INLINE U8 saturated(U16 lo, U16 hi) const {
    to_host(lo, hi);
    return pick(lesser(lo, most_), lesser(hi, most_));
  }

 private:
  static constexpr LaneTable kBitOfWord = lane_table([](int i) { return i % 4 * 16; });
  static constexpr LaneTable kLowerFirst =
      lane_table([](int i) { return i % 32 / 4 * 8 + i / 32 * 4 + i % 4; });

  LUM_INLINE void to_host(U16& lo, U16& hi) const {
    if (__builtin_expect(swaps_, 0)) {
      lo = ordered(lo, order_);
      hi = ordered(hi, order_);
    }
  }
  LUM_INLINE U8 pick(U16 lo, U16 hi) const {
    constexpr __mmask64 kOfUpper = 0xF0F0F0F0F0F0F0F0;
    const __m512i lower = _mm512_multishift_epi64_epi8(m(bits_), m(lo));
    const __m512i both = _mm512_mask_multishift_epi64_epi8(lower, kOfUpper, m(bits_), m(hi));
    return u8(_mm512_permutexvar_epi8(m(load<U8>(kLowerFirst.v)), both));
  }

  bool swaps_;
  ByteOrder order_;
  U8 bits_;
  U16 most_;
};

// The last lanes of a row, one sample to the right; the sample beyond the row repeats the last but
// one.
constexpr LaneTable kEdge8 = lane_table([](int i) { return i < 63 ? i + 1 : 62; });
constexpr LaneTable kEdge16 = lane_table([](int i) { return i < 62 ? i + 2 : i - 2; });
LUM_INLINE U8 load_edge8(const uint8_t* p) { return permute(load<U8>(p), kEdge8); }
LUM_INLINE U16 load_edge16(const uint8_t* p) { return U16(permute(load<U8>(p), kEdge16)); }

// Bytes to words, half a vector of them, in memory order.
LUM_INLINE U16 load_widened(const uint8_t* p) {
  return u16(_mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))));
}

// Vectors of rows whose blocks are not made of lines of the cache: in one, many of the loads would
// cross a line, which takes a twentieth of the time where rows come from memory. Where p is a
// multiple of them, pieces of 32 or 16 bytes do not.
LUM_INLINE __m512i pieces64(const uint8_t* p) {
  const auto piece = [&](int at) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + at));
  };
  return _mm512_inserti64x4(_mm512_castsi256_si512(piece(0)), piece(32), 1);
}
LUM_INLINE __m512i pieces48(const uint8_t* p) {
  const auto piece = [&](int at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + at));
  };
  const __m512i lower = _mm512_inserti32x4(_mm512_castsi128_si512(piece(0)), piece(16), 1);
  return _mm512_inserti32x4(lower, piece(32), 2);
}

// Two of every three bytes: byte i is Formula::byte(i) of the memory, 96 bytes of it.
template <class Formula>
constexpr LaneTable kBytesOf3 = lane_table([](int i) { return Formula::byte(i); });
template <class Formula>
LUM_INLINE U8 load_bytes_of_3(const uint8_t* p, Formula) {
  const __m256i last = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 64));
  return u8(_mm512_permutex2var_epi8(pieces64(p), m(load<U8>(kBytesOf3<Formula>.v)),
                                     _mm512_castsi256_si512(last)));
}

// The first or second kWords words of those at p, from 3/4 as many bytes: word i is made of bytes
// low(i) and high(i) of the memory, a negative number gives zero. The formulas repeat every 12
// bytes. Zero comes by the mask of the words' bytes that have a source.
template <class Formula>
constexpr int byte_of_word(int i) {
  return i % 2 ? Formula::high(i / 2) : Formula::low(i / 2);
}
template <class Formula, int from = 0>
constexpr LaneTable kWordsOf3 = lane_table([](int i) {
  const int byte = byte_of_word<Formula>(i);
  return byte < 0 ? 0 : from + byte;
});
template <class Formula>
constexpr uint64_t words_of_3_mask() {
  uint64_t mask = 0;
  for (int i = 0; i < 64; ++i) mask |= uint64_t{byte_of_word<Formula>(i) >= 0} << i;
  return mask;
}
constexpr __mmask64 kThreeQuarters = 0x0000FFFFFFFFFFFFull;
LUM_INLINE U8 load48(const uint8_t* p) { return u8(_mm512_maskz_loadu_epi8(kThreeQuarters, p)); }
template <int half, class Formula>
LUM_INLINE U16 load_words_of_3(const uint8_t* p, Formula) {
  return u16(_mm512_maskz_permutexvar_epi8(words_of_3_mask<Formula>(),
                                           m(load<U8>(kWordsOf3<Formula, 16 * half>.v)),
                                           pieces64(p + 32 * half)));
}
// The same of bytes with their highest bits flipped, from Formula::kBytes of them.
template <class Formula>
LUM_INLINE I16 load_flipped_words(const uint8_t* p, Formula) {
  const U8 bytes = (Formula::kBytes == kLanes ? load<U8>(p) : load48(p)) ^ 0x80;
  static_assert(Formula::kBytes == kLanes || Formula::kBytes == 48, "what is loaded");
  return i16(_mm512_maskz_permutexvar_epi8(words_of_3_mask<Formula>(),
                                           m(load<U8>(kWordsOf3<Formula>.v)), m(bytes)));
}
// The same from 5/8 as many bytes; the formulas repeat every 10 bytes or fewer. The
// second are loaded from 8 bytes before their own.
template <int half, class Formula>
LUM_INLINE U16 load_words_of_5(const uint8_t* p, Formula) {
  return u16(_mm512_maskz_permutexvar_epi8(words_of_3_mask<Formula>(),
                                           m(load<U8>(kWordsOf3<Formula, 8 * half>.v)),
                                           pieces48(p + 32 * half)));
}

// Half a vector each.
LUM_INLINE void store_halves(uint8_t* low, uint8_t* high, U8 v) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(low), _mm512_castsi512_si256(m(v)));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(high), _mm512_extracti64x4_epi64(m(v), 1));
}
// Where lines come from beyond the first-level cache, two stores of 32 bytes take .93 to .98 of the
// time of one of 64. Behind arithmetic the shuffle that this needs costs more.
template <class V>
LUM_INLINE void store_moved(uint8_t* p, V v) {
  store_halves(p, p + 32, U8(v));
}

// a0 b0 a1 b1 ... in memory order.
LUM_INLINE Bytes2 pairs_in_memory_order(__m512i lo, __m512i hi) {
  const __m512i first = _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11);
  const __m512i second = _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15);
  return {u8(_mm512_permutex2var_epi64(lo, first, hi)),
          u8(_mm512_permutex2var_epi64(lo, second, hi))};
}
LUM_INLINE Bytes2 zip(U8 a, U8 b) {
  const Bytes2 v = interleave(a, b);
  return pairs_in_memory_order(m(v.lo), m(v.hi));
}
LUM_INLINE Wide zip(U16 a, U16 b) {
  const Words2 v = interleave(I16(a), I16(b));
  const Bytes2 pairs = pairs_in_memory_order(m(v.lo), m(v.hi));
  return {U16(pairs.lo), U16(pairs.hi)};
}
template <class To>
LUM_INLINE void store2(To p, U8 even, U8 odd) {
  store(p, zip(even, odd));
}
// Bytes 0 (upper: 1) of words whose others are 0, in memory order.
template <bool upper>
constexpr LaneTable kWidened = lane_table([](int i) { return i % 2 == upper ? i / 2 : 0; });
template <bool upper, class To>
LUM_INLINE void store_in_words(To p, U8 v) {
  constexpr __mmask64 kBytes = upper ? 0xAAAAAAAAAAAAAAAA : 0x5555555555555555;
  const __m512i index = m(load<U8>(kWidened<upper>.v));
  const __m512i half = _mm512_set1_epi8(32);
  store(p, u8(_mm512_maskz_permutexvar_epi8(kBytes, index, m(v))));
  store(p + 64, u8(_mm512_maskz_permutexvar_epi8(kBytes, _mm512_add_epi8(index, half), m(v))));
}

// Three channels c0 c1 c2 c0 c1 c2 ... with elements of `size` bytes fill three vectors. Since 3
// does not divide 64, a byte position belongs to a different channel in each of the three, so one
// permute a channel puts every byte where it goes, and blends with constant masks finish the job.
constexpr int channel_of(int size, int k, int i) { return (64 * k + i) / size % 3; }
constexpr int spread3_index(int size, int c, int i) {
  for (int k = 0; k < 3; ++k) {
    if (channel_of(size, k, i) == c) return (64 * k + i) / size / 3 * size + i % size;
  }
  return 0;
}
constexpr uint64_t channel_mask(int size, int k, int c) {
  uint64_t mask = 0;
  for (int i = 0; i < 64; ++i) mask |= uint64_t{channel_of(size, k, i) == c} << i;
  return mask;
}
template <int size, int c>
constexpr LaneTable kSpread3 = lane_table([](int i) { return spread3_index(size, c, i); });
template <class Order, int c>
constexpr LaneTable kSpread3Of = lane_table([](int i) {
  return Order::byte(spread3_index(1, c, i));
});
template <int size, int k>
constexpr LaneTable kTriplicate = lane_table([](int i) {
  return (64 * k + i) / size / 3 * size + i % size;
});

template <int size, int k>
LUM_INLINE U8 blend3(U8 c0, U8 c1, U8 c2) {
  const __m512i c01 = _mm512_mask_blend_epi8(channel_mask(size, k, 1), m(c0), m(c1));
  return u8(_mm512_mask_blend_epi8(channel_mask(size, k, 2), c01, m(c2)));
}
// Elements c0 c1 c2 c0 c1 c2 ... apart: the same blends, then one permute a channel.
template <int size, int c>
constexpr LaneTable kGather3 = lane_table([](int i) {
  return ((i / size * 3 + c) * size + i % size) % 64;
});
template <int size, int c>
LUM_INLINE U8 channel_of_3(U8 v0, U8 v1, U8 v2) {
  const __m512i v01 = _mm512_mask_blend_epi8(channel_mask(size, 1, c), m(v0), m(v1));
  const __m512i v = _mm512_mask_blend_epi8(channel_mask(size, 2, c), v01, m(v2));
  return permute(u8(v), kGather3<size, c>);
}
template <int size>
LUM_INLINE Bytes3 load3_bytes(const uint8_t* p) {
  const U8 v0 = load<U8>(p), v1 = load<U8>(p + 64), v2 = load<U8>(p + 128);
  return {channel_of_3<size, 0>(v0, v1, v2), channel_of_3<size, 1>(v0, v1, v2),
          channel_of_3<size, 2>(v0, v1, v2)};
}
LUM_INLINE Bytes3 load3(const uint8_t* p) { return load3_bytes<1>(p); }
LUM_INLINE Words3 load3_words(const uint8_t* p) {
  const Bytes3 v = load3_bytes<2>(p);
  return {U16(v.c0), U16(v.c1), U16(v.c2)};
}

template <int size, class To>
LUM_INLINE void store3_spread(To p, U8 c0, U8 c1, U8 c2) {
  store(p, blend3<size, 0>(c0, c1, c2));
  store(p + 64, blend3<size, 1>(c0, c1, c2));
  store(p + 128, blend3<size, 2>(c0, c1, c2));
}
template <class To, class V>
LUM_INLINE void store3(To p, V first, V second, V third) {
  constexpr int size = kElementBytes<V>;
  store3_spread<size>(p, permute(U8(first), kSpread3<size, 0>),
                      permute(U8(second), kSpread3<size, 1>),
                      permute(U8(third), kSpread3<size, 2>));
}
// Of bytes that lie where Order tells.
template <class To, class Order>
LUM_INLINE void store3(To p, U8 first, U8 second, U8 third, Order) {
  store3_spread<1>(p, permute(first, kSpread3Of<Order, 0>), permute(second, kSpread3Of<Order, 1>),
                   permute(third, kSpread3Of<Order, 2>));
}
// Of bytes whole stores take no longer.
template <class To, class V>
LUM_INLINE void store3_same(To p, V same) {
  constexpr int size = kElementBytes<V>;
  const U8 c = U8(same);
  const auto put = [](To to, U8 v) { size == 1 ? store(to, v) : store_moved(to, v); };
  put(p, permute(c, kTriplicate<size, 0>));
  put(p + 64, permute(c, kTriplicate<size, 1>));
  put(p + 128, permute(c, kTriplicate<size, 2>));
}
// Four-byte pixels whose last byte stays as it is in memory. Whether that loads so far ahead, where
// little else is done, that fetching both source and destination costs more than it gains:
constexpr bool kLoadsRunAhead = false;
LUM_INLINE void store_keep(uint8_t* p, U8 pixels) {
  constexpr __mmask64 colours = 0x7777777777777777ull;
  _mm512_mask_storeu_epi8(p, colours, m(pixels));
}
LUM_INLINE void store4_keep(uint8_t* p, U8 c0, U8 c1, U8 c2) {
  c2 = u8(transpose(m(c2)));
  const Bytes2 c01 = interleave(u8(transpose(m(c0))), u8(transpose(m(c1))));
  const Bytes2 c2x = interleave(c2, c2);
  store_keep(p, u8(_mm512_unpacklo_epi16(m(c01.lo), m(c2x.lo))));
  store_keep(p + 64, u8(_mm512_unpackhi_epi16(m(c01.lo), m(c2x.lo))));
  store_keep(p + 128, u8(_mm512_unpacklo_epi16(m(c01.hi), m(c2x.hi))));
  store_keep(p + 192, u8(_mm512_unpackhi_epi16(m(c01.hi), m(c2x.hi))));
}

// kLanes / 4 pixels of four bytes, the last one a copy of the second, from three in memory, and
// back.
template <bool swap>
constexpr LaneTable kExpand3 = lane_table([](int i) { return i / 4 * 3 + byte_of_three(i, swap); });
// They begin at byte `from` of the vector, and go on at its beginning beyond its end.
template <bool swap, int from>
constexpr LaneTable kCompress3 = lane_table([](int i) {
  const int byte = (i + 64 - from) % 64;
  return byte / 3 * 4 % 64 + (swap ? 2 - byte % 3 : byte % 3);
});
template <bool swap>
LUM_INLINE U8 expand3(const uint8_t* p) {
  return permute(load48(p), kExpand3<swap>);
}
LUM_INLINE void compress3(uint8_t* p, U8 pixels) {
  _mm512_mask_storeu_epi8(p, kThreeQuarters, m(permute(pixels, kCompress3<false, 0>)));
}
// The same for kLanes pixels; with `swap` the first and the third byte change places. Each quarter
// begins where the one before it ends, and so shares two vectors.
template <bool swap, class To>
LUM_INLINE void compress3_all(To p, const U8 (&pixels)[4]) {
  const __m512i q0 = m(permute(pixels[0], kCompress3<swap, 0>));
  const __m512i q1 = m(permute(pixels[1], kCompress3<swap, 48>));
  const __m512i q2 = m(permute(pixels[2], kCompress3<swap, 32>));
  const __m512i q3 = m(permute(pixels[3], kCompress3<swap, 16>));
  store_moved(p, u8(_mm512_mask_blend_epi32(0xF000, q0, q1)));
  store_moved(p + 64, u8(_mm512_mask_blend_epi32(0xFF00, q1, q2)));
  store_moved(p + 128, u8(_mm512_mask_blend_epi32(0xFFF0, q2, q3)));
}
// Three vectors of three-byte elements whose first and third byte change places. Elements that lie
// across the border of two vectors take a permute of either; loads that begin elsewhere would be
// fewer operations, but cross a line each.
template <int k>
constexpr LaneTable kSwapped = lane_table([](int i) { return swapped_byte(64 * k + i) % 64; });
constexpr uint64_t swapped_from(int k, int vector) {
  uint64_t mask = 0;
  for (int i = 0; i < 64; ++i) mask |= uint64_t{swapped_byte(64 * k + i) / 64 == vector} << i;
  return mask;
}
template <int k>
LUM_INLINE U8 swapped(const U8 (&v)[3]) {
  const __m512i index = m(load<U8>(kSwapped<k>.v));
  __m512i result = _mm512_permutexvar_epi8(index, m(v[k]));
  if constexpr (k > 0) {
    result = _mm512_mask_permutexvar_epi8(result, swapped_from(k, k - 1), index, m(v[k - 1]));
  }
  if constexpr (k < 2) {
    result = _mm512_mask_permutexvar_epi8(result, swapped_from(k, k + 1), index, m(v[k + 1]));
  }
  return u8(result);
}
LUM_INLINE Bytes3 load3_swapped(const uint8_t* p) {
  const U8 v[3] = {load<U8>(p), load<U8>(p + 64), load<U8>(p + 128)};
  return {swapped<0>(v), swapped<1>(v), swapped<2>(v)};
}
// Elements of `size` bytes, a power of two, in reverse order.
template <int size>
constexpr LaneTable kReversed = lane_table([](int i) {
  return (63 - i % 64) / size * size + i % size;
});
template <int size>
LUM_INLINE U8 reversed(U8 v) {
  return permute(v, kReversed<size>);
}
// A vector of pieces as long as those within which interleave() works, `stride` bytes apart.
constexpr int kPieceBytes = 16;
template <class At>
LUM_INLINE U8 load_four(At at) {
  const auto piece = [&](int i) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at(i)));
  };
  const __m256i lo = _mm256_inserti128_si256(_mm256_castsi128_si256(piece(0)), piece(1), 1);
  const __m256i hi = _mm256_inserti128_si256(_mm256_castsi128_si256(piece(2)), piece(3), 1);
  return u8(_mm512_inserti64x4(_mm512_castsi256_si512(lo), hi, 1));
}
LUM_INLINE U8 load_pieces(const uint8_t* p, ptrdiff_t stride) {
  return load_four([&](int i) { return p + i * stride; });
}
// The pieces that begin at p + at[0], p + at[1] ...
LUM_INLINE U8 load_pieces_at(const uint8_t* p, const uint32_t* at) {
  return load_four([&](int i) { return p + at[i]; });
}
// The bytes of a piece that the low bits of an index tell, or 0 where its highest bit is set.
LUM_INLINE U8 pick_bytes(U8 v, U8 index) { return u8(_mm512_shuffle_epi8(m(v), m(index))); }
// Spans are what a byte can be moved about in by one shuffle: here it is the whole vector.
constexpr int kSpanBytes = 64;
constexpr bool kShufflesBytes = true;
// Whether there is permute_two(): bytes of two vectors that the low seven bits of an index tell.
constexpr bool kPermutesTwo = true;
LUM_INLINE U8 permute_two(U8 first, U8 second, U8 index) {
  return u8(_mm512_permutex2var_epi8(m(first), m(index), m(second)));
}
// The lower halves of both, and the upper ones.
LUM_INLINE Bytes2 halves_together(U8 a, U8 b) {
  const __m512i lower = _mm512_setr_epi64(0, 1, 2, 3, 8, 9, 10, 11);
  const __m512i upper = _mm512_setr_epi64(4, 5, 6, 7, 12, 13, 14, 15);
  return {u8(_mm512_permutex2var_epi64(m(a), lower, m(b))),
          u8(_mm512_permutex2var_epi64(m(a), upper, m(b)))};
}
LUM_INLINE U8 load_spans(const uint8_t* p, ptrdiff_t) { return load<U8>(p); }
LUM_INLINE void store_spans(uint8_t* p, ptrdiff_t, U8 v) { store(p, v); }
LUM_INLINE U8 shuffle_spans(U8 v, const LaneTable& t) { return permute(v, t); }
// Bytes 0 and 2 of every four change places.
constexpr LaneTable kSwap02 = lane_table([](int i) { return i % 2 ? i % 16 : i % 16 ^ 2; });
LUM_INLINE U8 swap02(U8 v) { return u8(_mm512_shuffle_epi8(m(v), m(load<U8>(kSwap02.v)))); }
// Byte 3 of every four becomes a copy of byte 1.
constexpr LaneTable kCopy1To3 = lane_table([](int i) { return i % 4 == 3 ? i % 16 - 2 : i % 16; });
LUM_INLINE U8 copy1_to_3(U8 v) { return u8(_mm512_shuffle_epi8(m(v), m(load<U8>(kCopy1To3.v)))); }

// To an aligned address, past the cache.
constexpr bool kStreams = true;
LUM_INLINE void stream_vector(uint8_t* p, U8 v) {
  _mm512_stream_si512(reinterpret_cast<__m512i*>(p), m(v));
}
inline void end_stream() { _mm_sfence(); }

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum

#endif
