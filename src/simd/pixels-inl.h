// SPDX-License-Identifier: MIT
// Pixel arithmetic: luminance, chroma, averages. Each formula stands here once, for all levels.
namespace lum {
namespace LUM_LEVEL {
namespace {

// Blocks of kLanes pixels, what sources give and sinks take.
struct Gray8 {
  U8 y;
};
struct Gray16 {
  Wide y;
};
struct Rgb8 {
  U8 r, g, b;
};
struct Rgb16 {
  Wide r, g, b;
};
// Colours where packing of words leaves them within 128 bits: pixel i in byte Order::byte(i). Where
// a permute reaches all bytes, that of a sink that has one anyway puts them straight.
template <class Order>
struct Disordered {
  U8 r, g, b;
};
// Packed of words of the lower and of the upper pixels, or of the even and of the odd ones.
struct InHalves {
  static constexpr bool kWithinPieces = false;
  static constexpr int byte(int i) { return i % 32 / 8 * 16 + i / 32 * 8 + i % 8; }
};
struct ByParity {
  static constexpr bool kWithinPieces = true;
  static constexpr int byte(int i) { return i / 16 * 16 + i % 2 * 8 + i % 16 / 2; }
};
constexpr bool kPermutesAll = kSpanBytes == kLanes && kLanes > 16;
using RgbOfHalves = Either<kPermutesAll, Disordered<InHalves>, Rgb8>;
using RgbOfParities = Either<kPermutesAll, Disordered<ByParity>, Rgb8>;
// Their bytes, limited to 0..255.
LUM_INLINE U8 of_halves(I16 lo, I16 hi) { return kPermutesAll ? pack_sat(lo, hi) : narrow(lo, hi); }
LUM_INLINE U8 of_parities(I16 even, I16 odd) {
  return kPermutesAll ? pack_sat(even, odd) : alternate_sat(even, odd);
}
template <class Order>
constexpr LaneTable kInOrder = lane_table([](int i) { return Order::byte(i); });
template <class Order, class V>
LUM_INLINE V in_order(V v, Order) {
  if constexpr (Order::kWithinPieces) return pick_bytes(v, load<V>(kInOrder<Order>.v));
  return permute(v, kInOrder<Order>);
}
template <class Order>
LUM_INLINE Rgb8 in_order(const Disordered<Order>& v) {
  return {in_order(v.r, Order()), in_order(v.g, Order()), in_order(v.b, Order())};
}

// Four vectors of kLanes / 4 pixels of four bytes each, in memory order (bgr tells which); the
// fourth byte is alpha, or green once more.
template <bool bgr, bool has_alpha>
struct Pixels4 {
  U8 quarter[4];
};

template <bool bgr>
LUM_INLINE Pixels4<bgr, true> load_pixels4(const uint8_t* p) {
  return {{load<U8>(p), load<U8>(p + kLanes), load<U8>(p + 2 * kLanes), load<U8>(p + 3 * kLanes)}};
}

// Pixels of three bytes, in memory order (bgr tells which).
template <bool bgr>
struct Pixels3 {
  U8 third[3];
};

// The samples of 2 x 2 blocks as a Bayer mosaic has them side by side, one block a 16-bit lane: red
// and blue, and the two greens. Even and odd pixels apart; in the lanes of one of them red is the
// lower byte, in those of the other blue.
struct BlockPairs {
  struct Half {
    U8 red_blue, greens;
    bool blue_first;
    U8 blue_first_mask;  // the same as all ones or none
  };
  Half even, odd;
};

// The samples of such blocks as signed words, for multiply-adds of two: less 32768, or with
// below_32768 as they are. The first colour is red, or with blue_first blue. A lane of 32 bits is
// two pixels:
template <bool below_32768>
struct BlockTriples {
  struct Half {
    I16 even;   // first colour and green of the even one
    I16 odd;    // first colour and green of the odd one
    I16 third;  // any, and the third colour of both
  };
  Half lo, hi;
  bool blue_first;
};

template <class V>
LUM_INLINE V avg_down(V a, V b) {  // (a + b) >> 1 without a ninth bit
  return avg_up(a, b) - ((a ^ b) & 1);
}

// Luminance: (wr R + wg G + wb B + round) >> 8. Kept: BT.601 truncates and
// BT.709 rounds; the bytes of either are what receivers compare with.
// The green weight is above 127, the limit of a signed byte, so it is split over the two products
// of madd(): once beside red and once beside blue.
struct Rec601 {
  static constexpr int kRed = 77, kGreen = 150, kBlue = 29, kRound = 0, kGreenWithRed = 51;
};
struct Rec709 {
  static constexpr int kRed = 54, kGreen = 184, kBlue = 18, kRound = 128, kGreenWithRed = 74;
};

template <class Luma>
LUM_INLINE U8 luma(const Rgb8& p) {
  const I8 red_green = I8(splat_pair(Luma::kRed, Luma::kGreenWithRed));
  const I8 blue_green = I8(splat_pair(Luma::kBlue, Luma::kGreen - Luma::kGreenWithRed));
  const Bytes2 rg = interleave(p.r, p.g);
  const Bytes2 bg = interleave(p.b, p.g);
  // Each product pair is at most 255 * 128; their sum needs all 16 bits, unsigned.
  U16 lo = U16(madd(rg.lo, red_green)) + U16(madd(bg.lo, blue_green));
  U16 hi = U16(madd(rg.hi, red_green)) + U16(madd(bg.hi, blue_green));
  if (Luma::kRound != 0) {
    lo += static_cast<uint16_t>(Luma::kRound);
    hi += static_cast<uint16_t>(Luma::kRound);
  }
  return pack_high(lo, hi);
}

// Weights of red and blue, in the order in which a half has them: chosen by a branch in each block,
// or computed before the first, which takes registers.
LUM_INLINE I8 red_blue_weights(const BlockPairs::Half& p, int red, int blue) {
  return I8(p.blue_first ? splat_pair(blue, red) : splat_pair(red, blue));
}
LUM_INLINE I8 red_blue_weights_in_register(const BlockPairs::Half& p, int red, int blue) {
  const U8 red_first = splat_pair(red, blue), blue_first = splat_pair(blue, red);
  return I8(in_register(red_first ^ ((red_first ^ blue_first) & p.blue_first_mask)));
}
LUM_INLINE I16 sum_of_greens(const BlockPairs::Half& p) {
  return madd(p.greens, I8(in_register(splat8(1))));
}

template <class Luma, class Order>
LUM_INLINE U8 luma(const Disordered<Order>& p) {
  return in_order(luma<Luma>(Rgb8{p.r, p.g, p.b}), Order());
}

// The same from samples as they lie in a mosaic: no shuffle is needed, as even and odd pixels end
// up in the lower and the upper byte of a lane. G is half the sum of the greens, rounded down, so
// its weight, which is even, goes by halves to the sum without its last bit.
template <class Luma>
LUM_INLINE U16 luma_times_256(const BlockPairs::Half& p) {
  static_assert(Luma::kGreen % 2 == 0, "half the weight of green");
  const U16 green =
      (U16(sum_of_greens(p)) & in_register(splat16(0xFFFE))) * multiplier(Luma::kGreen / 2);
  const U16 sum =
      U16(madd(p.red_blue, red_blue_weights_in_register(p, Luma::kRed, Luma::kBlue))) + green;
  return Luma::kRound == 0 ? sum : sum + in_register(splat16(Luma::kRound));
}
template <class Luma>
LUM_INLINE U8 luma(const BlockPairs& p) {
  return upper_bytes(luma_times_256<Luma>(p.even), luma_times_256<Luma>(p.odd));
}

// Weights of pixels of four bytes whose last one is green once more.
template <class Luma, bool bgr>
LUM_INLINE I8 colour_weights() {
  constexpr uint32_t kWithRed = Luma::kGreenWithRed, kWithBlue = Luma::kGreen - kWithRed;
  static_assert((Luma::kRed + kWithRed) * 255 < 32768 && (Luma::kBlue + kWithBlue) * 255 < 32768,
                "sums of two products");
  constexpr uint32_t kRedGreen = Luma::kRed | kWithRed << 8,
                     kBlueGreen = Luma::kBlue | kWithBlue << 8;
  return I8(U32{} + (bgr ? kBlueGreen | kRedGreen << 16 : kRedGreen | kBlueGreen << 16));
}
// The same from such pixels; alpha makes room for green.
template <class Luma, bool bgr, bool has_alpha>
LUM_INLINE U8 luma(const Pixels4<bgr, has_alpha>& p) {
  U8 v[4];
  for (int i = 0; i < 4; ++i) v[i] = has_alpha ? copy1_to_3(p.quarter[i]) : p.quarter[i];
  return madd4_high(v, colour_weights<Luma, bgr>(), Luma::kRound);
}

// 16-bit samples: the sum needs 24 bits. `high` adds the products' upper parts, each floored, so it
// falls short of the result by less than 4; the low 16 bits of the sum tell by how much.
template <class Luma>
LUM_INLINE U16 luma(U16 r, U16 g, U16 b) {
  const U16 wr = multiplier(Luma::kRed), wg = multiplier(Luma::kGreen),
            wb = multiplier(Luma::kBlue);
  const U16 high = mul_hi(r, wr << 8) + mul_hi(g, wg << 8) + mul_hi(b, wb << 8);
  const U16 low = r * wr + g * wg + b * wb + static_cast<uint16_t>(Luma::kRound);
  return high + (((low >> 8) - high) & 255);
}
template <class Luma>
LUM_INLINE Wide luma(const Rgb16& p) {
  return {luma<Luma>(p.r.lo, p.g.lo, p.b.lo), luma<Luma>(p.r.hi, p.g.hi, p.b.hi)};
}

template <class Luma>
LUM_INLINE U16 luma(const BlockTriples<false>::Half& p, bool blue_first) {
  const I16 first_green = I16(splat_words(blue_first ? Luma::kBlue : Luma::kRed, Luma::kGreen));
  const I16 any_third = I16(splat_words(0, blue_first ? Luma::kRed : Luma::kBlue));
  static_assert(Luma::kRed + Luma::kGreen + Luma::kBlue == 256, "what is less goes back at once");
  const U32 sum = add_madd(U32{} + (256u * 32768 + Luma::kRound), p.third, any_third);
  return middle_words(add_madd(sum, p.even, first_green), add_madd(sum, p.odd, first_green));
}
template <class Luma>
LUM_INLINE Wide luma(const BlockTriples<false>& p) {
  return {luma<Luma>(p.lo, p.blue_first), luma<Luma>(p.hi, p.blue_first)};
}

// Studio-range YUV 4:2:2 from R, G, B:
//   Y = ((66 R + 129 G + 25 B + 128) >> 8) + 16
//   U = ((-38 R - 74 G + 112 B + 128) >> 8) + 128, V = ((112 R - 94 G - 18 B + 128) >> 8) + 128
// and U, V of a pixel pair = (first + second) >> 1. `uv` holds U, V byte by byte, one of each a
// pair.
struct Yuv422 {
  U8 y, uv;
};
struct StudioY {
  static constexpr int kRed = 66, kGreen = 129, kBlue = 25, kRound = 128 + 16 * 256,
                       kGreenWithRed = 62;
};
struct StudioU {
  static constexpr int kRed = -38, kGreen = -74, kBlue = 112;
};
struct StudioV {
  static constexpr int kRed = 112, kGreen = -94, kBlue = -18;
};
LUM_INLINE I16 half_sum_of_pairs(I8 v) { return madd(splat8(1), v) >> 1; }
// A constant beside blue brings the rounding term in without an addition of its own.
constexpr int kBeside = 64;
// From R, G, R, G ... and B, kBeside, B, kBeside ...
LUM_INLINE U8 studio_luma(const Bytes2& rg, const Bytes2& bk) {
  // R and G less 128, as the weight 129 needs the unsigned factor; 128 (66 + 129) is put back.
  const U8 y_red_green = splat_pair(66, 129);
  const I8 y_blue = I8(splat_pair(25, 66));  // 66 * 64 = 128 + 16 * 256
  constexpr uint16_t kBack = 128 * (66 + 129);
  static_assert(66 * kBeside == 128 + 16 * 256, "rounding and offset of Y");
  const U16 y_lo = U16(madd(y_red_green, I8(rg.lo ^ 0x80))) + U16(madd(bk.lo, y_blue)) + kBack;
  const U16 y_hi = U16(madd(y_red_green, I8(rg.hi ^ 0x80))) + U16(madd(bk.hi, y_blue)) + kBack;
  return pack_high(y_lo, y_hi);
}
LUM_INLINE Yuv422 to_yuv422(const Rgb8& p) {
  const Bytes2 rg = interleave(p.r, p.g), bk = interleave(p.b, splat8(kBeside));
  const I8 u_red_green = I8(splat_pair(StudioU::kRed, StudioU::kGreen));
  const I8 v_red_green = I8(splat_pair(StudioV::kRed, StudioV::kGreen));
  const I8 u_blue = I8(splat_pair(StudioU::kBlue, 2)), v_blue = I8(splat_pair(StudioV::kBlue, 2));
  static_assert(2 * kBeside == 128, "rounding of U and V");
  const I8 u = pack_sat_signed((madd(rg.lo, u_red_green) + madd(bk.lo, u_blue)) >> 8,
                               (madd(rg.hi, u_red_green) + madd(bk.hi, u_blue)) >> 8);
  const I8 v = pack_sat_signed((madd(rg.lo, v_red_green) + madd(bk.lo, v_blue)) >> 8,
                               (madd(rg.hi, v_red_green) + madd(bk.hi, v_blue)) >> 8);
  const U16 u_pair = U16(half_sum_of_pairs(u) + 128);
  const U16 v_pair = U16(half_sum_of_pairs(v) + 128);
  return {studio_luma(rg, bk), U8(u_pair | v_pair << 8)};
}

// From samples as they lie in a mosaic: the lanes of even and odd pixels are the pairs.
struct YuvOfHalf {
  U16 y_times_256;
  U8 not_uv;  // complements of U and V, signed, one of each a lane
};
// Weights are even, and so are the sums: the upper byte of -sum - 2 is that of -sum - 1, the
// complement.
LUM_INLINE YuvOfHalf to_yuv(const BlockPairs::Half& p) {
  constexpr int kBesideGreen = 65;
  const U16 g = U16(sum_of_greens(p)) >> 1;
  const U8 green_beside = U8(g | static_cast<uint16_t>(kBesideGreen << 8));
  const U16 y = U16(madd(p.red_blue, red_blue_weights(p, 66, 25))) + g * multiplier(129) +
                static_cast<uint16_t>(128 + 16 * 256);
  static_assert(-2 * kBesideGreen == -128 - 2, "rounding of U and V, and their complements");
  const I16 u = madd(p.red_blue, red_blue_weights(p, -StudioU::kRed, -StudioU::kBlue)) +
                madd(green_beside, I8(splat_pair(-StudioU::kGreen, -2)));
  const I16 v = madd(p.red_blue, red_blue_weights(p, -StudioV::kRed, -StudioV::kBlue)) +
                madd(green_beside, I8(splat_pair(-StudioV::kGreen, -2)));
  return {y, upper_bytes(U16(u), U16(v))};
}
// (A + B) >> 1 of signed bytes, plus 128, from their complements. Averages round up, those of
// complements down; they take bytes as unsigned, which is 128 off where the signs differ.
LUM_INLINE U8 mean_plus_128(U8 not_a, U8 not_b) {
  if constexpr (kLogicOfThree) {
    return avg_up(not_a, not_b) ^ ((not_a ^ not_b) & 0x80) ^ 0x7F;
  }
  return ~avg_up(not_a ^ 0x80, not_b ^ 0x80);
}
LUM_INLINE Yuv422 to_yuv422(const BlockPairs& p) {
  const YuvOfHalf even = to_yuv(p.even), odd = to_yuv(p.odd);
  return {upper_bytes(even.y_times_256, odd.y_times_256), mean_plus_128(even.not_uv, odd.not_uv)};
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
