// SPDX-License-Identifier: MIT
// A Bayer mosaic at half its width and height: a pixel for each 2 x 2 cell, with all colours
// brought to the cell's centre. Of a sample of the cell, `far` is the next one of its colour across
// the cell, here for red in column and row 0:
//
//   R  g  r'     red, blue  (9 R + 3 r' + 3 r" + r* + 8) >> 4
//   g  b  .      green      (6 (g1 + g2) + g1' + g1" + g2' + g2" + 8) >> 4
//   r" .  r*
//
// which is the mean of the four bilinear pixels of the cell, rounded once.
namespace lum {
namespace LUM_LEVEL {
namespace {

struct Mosaic8Binned {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 2;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = true;
  explicit Mosaic8Binned(const RowArgs& args)
      : red(args.column),
        blue(args.column ^ 1),
        far_red(args.above),
        blue_row(args.below),
        far_blue(args.below2) {}
  LUM_INLINE RgbOfHalves block(const uint8_t* a, const uint8_t*) const {
    const Words lo = half(a), hi = half(a + kLanes);
    return {of_halves(lo.r, hi.r), of_halves(lo.g, hi.g), of_halves(lo.b, hi.b)};
  }

 private:
  struct Words {
    I16 r, g, b;
  };
  // One of the two columns of the cells. A row's bytes are the cells' sample pairs, and madd()
  // takes the column's sample by its weight and the other one by 0.
  struct Column {
    explicit Column(uint32_t column)
        : one(weight(column, 1)),
          three(weight(column, 3)),
          six(weight(column, 6)),
          nine(weight(column, 9)),
          across(column == 0 ? 2 : -2) {}
    static I8 weight(uint32_t column, int w) {
      return I8(column == 0 ? splat_pair(w, 0) : splat_pair(0, w));
    }
    I8 one, three, six, nine;
    ptrdiff_t across;
  };

  // Sums grow one by one and stay in registers: left to itself, g++ makes all products first and
  // keeps them in memory.
  static LUM_INLINE void add(I16& sum, U8 samples, I8 weights) {
    sum = in_register(sum + madd(samples, weights));
  }
  LUM_INLINE Words half(const uint8_t* red_row) const {
    const I16 kRound = I16{} + 8;
    I16 r = kRound, g = kRound, b = kRound;
    const auto row = [&](const Column& own, const Column& other, const uint8_t* near,
                         const uint8_t* far, I16& colour) {
      const U8 n = in_register(load<U8>(near)), f = in_register(load<U8>(far));
      add(colour, n, own.nine);
      add(g, n, other.six);
      add(colour, f, own.three);
      add(g, f, other.one);
      add(colour, load<U8>(near + own.across), own.three);
      add(g, load<U8>(near + other.across), other.one);
      add(colour, load<U8>(far + own.across), own.one);
    };
    row(red, blue, red_row, red_row + far_red, r);
    row(blue, red, red_row + blue_row, red_row + far_blue, b);
    return {r >> 4, g >> 4, b >> 4};
  }

  Column red, blue;
  ptrdiff_t far_red, blue_row, far_blue;
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
