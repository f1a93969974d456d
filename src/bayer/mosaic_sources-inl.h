// SPDX-License-Identifier: MIT
// Bayer mosaics, two rows at a time. Pixel x is made of the 2 x 2 samples whose top left one is its
// own: they hold one red, one blue and two green samples wherever they lie, here for column 0:
//
//   a:  R0 G1 R2 G3 ...     pixel 0: R0, (G1 + G0') >> 1, B1'    the row with red is always a,
//   b:  G0'B1'G2'B3'...     pixel 1: R2, (G1 + G2') >> 1, B1'    above b or below it alike
//
// So each row gives a colour at the lanes of one parity and green at the others.
namespace lum {
namespace LUM_LEVEL {
namespace {

struct Mosaic8 {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 1;
  static constexpr int kRows = 2;
  static constexpr bool kEdge = true, kPadded = false;

  explicit Mosaic8(const RowArgs& args) : red_lanes(even_lanes(args.column)) {}

  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t* b) const {
    return colours(load<U8>(a), load<U8>(a + 1), load<U8>(b), load<U8>(b + 1));
  }
  LUM_INLINE Rgb8 last_block(const uint8_t* a, const uint8_t* b) const {
    return colours(load<U8>(a), load_edge8(a), load<U8>(b), load_edge8(b));
  }

 protected:
  LUM_INLINE Rgb8 colours(U8 a0, U8 a1, U8 b0, U8 b1) const {
    Rgb8 p;
    U8 green_a, green_b;
    cross(red_lanes, a0, a1, p.r, green_a);
    cross(red_lanes, b1, b0, p.b, green_b);
    p.g = avg_down(green_a, green_b);
    return p;
  }

 private:
  Mask red_lanes;
};

// The same, for sinks that weigh the samples where they lie: in a 16-bit lane of the two rows,
//
//   column 0 red:  a: R G    b: G' B    so a, b give R and B, and the other bytes both greens.
//
// Lanes at even columns are the blocks of even pixels; one sample on, those of odd pixels, with red
// and blue the other way round.
struct Mosaic8Pairs {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 1;
  static constexpr int kRows = 2;
  static constexpr bool kEdge = true, kPadded = false;

  explicit Mosaic8Pairs(const RowArgs& args)
      : from_a_even(even_lanes(args.column)),
        from_a_odd(even_lanes(args.column + 1)),
        blue_first((args.column & 1) != 0),
        blue_first_mask(splat8(blue_first ? 0xFF : 0)) {}

  LUM_INLINE BlockPairs block(const uint8_t* a, const uint8_t* b) const {
    return pairs_of(load<U8>(a), load<U8>(a + 1), load<U8>(b), load<U8>(b + 1));
  }
  LUM_INLINE BlockPairs last_block(const uint8_t* a, const uint8_t* b) const {
    return pairs_of(load<U8>(a), load_edge8(a), load<U8>(b), load_edge8(b));
  }

 private:
  LUM_INLINE BlockPairs pairs_of(U8 a0, U8 a1, U8 b0, U8 b1) const {
    BlockPairs p;
    cross(from_a_even, a0, b0, p.even.red_blue, p.even.greens);
    cross(from_a_odd, a1, b1, p.odd.red_blue, p.odd.greens);
    p.even.blue_first = blue_first;
    p.odd.blue_first = !blue_first;
    p.even.blue_first_mask = blue_first_mask;
    p.odd.blue_first_mask = ~blue_first_mask;
    return p;
  }

  Mask from_a_even, from_a_odd;
  bool blue_first;
  U8 blue_first_mask;
};

struct Mosaic16 {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 2;
  static constexpr int kRows = 2;
  static constexpr bool kEdge = true, kPadded = false;

  explicit Mosaic16(const RowArgs& args) : red_lanes(even_lanes(args.column)) {}

  LUM_INLINE Rgb16 block(const uint8_t* a, const uint8_t* b) const {
    return colours(a, load<U16>(a + kLanes + 2), b, load<U16>(b + kLanes + 2));
  }
  LUM_INLINE Rgb16 last_block(const uint8_t* a, const uint8_t* b) const {
    return colours(a, load_edge16(a + kLanes), b, load_edge16(b + kLanes));
  }

 private:
  // a1_hi, b1_hi: the upper half's samples one column on.
  LUM_INLINE Rgb16 colours(const uint8_t* a, U16 a1_hi, const uint8_t* b, U16 b1_hi) const {
    Rgb16 p;
    half(load<U16>(a), load<U16>(a + 2), load<U16>(b), load<U16>(b + 2), p.r.lo, p.g.lo, p.b.lo);
    half(load<U16>(a + kLanes), a1_hi, load<U16>(b + kLanes), b1_hi, p.r.hi, p.g.hi, p.b.hi);
    return p;
  }
  LUM_INLINE void half(U16 a0, U16 a1, U16 b0, U16 b1, U16& r, U16& g, U16& b) const {
    U16 green_a, green_b;
    cross16(red_lanes, a0, a1, r, green_a);
    cross16(red_lanes, b1, b0, b, green_b);
    g = avg_down(green_a, green_b);
  }

  Mask red_lanes;
};

// The same, for weights that multiply-adds apply. `own` is the row with samples of its colour in
// even columns:
//
//   own:    R0 G1 R2     even pixel: R0, G1 and G0', B1'     both have G1 and B1'
//   other:  G0'B1'G2'     odd pixel: R2, G1 and G2', B1'
//
// of_12_bits: samples come shifted up by two, and are not taken less 32768.
template <bool of_12_bits>
struct Mosaic16Triples : Mosaic16 {
  using Triples = BlockTriples<of_12_bits>;

  explicit Mosaic16Triples(const RowArgs& args)
      : Mosaic16(args), own_is_b((args.column & 1) != 0) {}
  LUM_INLINE Triples block(const uint8_t* a, const uint8_t* b) const {
    const uint8_t* const own = own_is_b ? b : a;
    const uint8_t* const other = own_is_b ? a : b;
    return triples(own, load<U16>(own + kLanes + 2), other, load<U16>(other + kLanes + 2));
  }
  LUM_INLINE Triples last_block(const uint8_t* a, const uint8_t* b) const {
    const uint8_t* const own = own_is_b ? b : a;
    const uint8_t* const other = own_is_b ? a : b;
    return triples(own, load_edge16(own + kLanes), other, load_edge16(other + kLanes));
  }

 private:
  // (g1 + g2) >> 1 of the samples
  static LUM_INLINE U16 mean(U16 g1, U16 g2) {
    if constexpr (of_12_bits)
      return ((g1 + g2) >> 1) & static_cast<uint16_t>(0xFFFFu << kShift12To8);
    return avg_down(g1, g2);
  }
  static LUM_INLINE I16 as_signed(U16 v) { return I16(of_12_bits ? v : v ^ 0x8000); }

  static LUM_INLINE typename Triples::Half half(U16 own0, U16 own1, U16 other0, U16 other1) {
    if constexpr (kLogicOfThree && !of_12_bits) {
      // Averages round up, those of complements down, and blends complement at no cost.
      const U16 not_green = avg_up(not_alternate(own1, own0), not_alternate(other0, other1));
      const I16 flips = I16(splat_words(0x8000, 0x7FFF));
      return {I16(alternate(own0, U16(U32(not_green) << 16))) ^ flips,
              high_words(U32(own1), U32(not_green)) ^ flips, as_signed(other0)};
    }
    const U16 green = mean(alternate(own1, own0), alternate(other0, other1));
    return {as_signed(alternate(own0, U16(U32(green) << 16))),
            as_signed(U16(high_words(U32(own1), U32(green)))), as_signed(other0)};
  }
  // own1_hi, other1_hi: the upper half's samples one column on.
  LUM_INLINE Triples triples(const uint8_t* own, U16 own1_hi, const uint8_t* other,
                             U16 other1_hi) const {
    return {half(load<U16>(own), load<U16>(own + 2), load<U16>(other), load<U16>(other + 2)),
            half(load<U16>(own + kLanes), own1_hi, load<U16>(other + kLanes), other1_hi), own_is_b};
  }

  bool own_is_b;
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
