// SPDX-License-Identifier: MIT
// A Bayer mosaic at half its width and height: a pixel for each 2 x 2 cell, with all colours brought
// to the cell's centre. Of a sample of the cell, `far` is the next one of its colour across the cell,
// here for red in column and row 0:
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
      : red(args.column), blue(args.column ^ 1), far_red(args.above), blue_row(args.below),
        far_blue(args.below2) {}
  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t*) const {
    const Words lo = half(a), hi = half(a + kLanes);
    return {narrow(lo.r, hi.r), narrow(lo.g, hi.g), narrow(lo.b, hi.b)};
  }

 private:
  struct Words {
    I16 r, g, b;
  };
  // The cells' samples of one column and those across.
  struct Samples {
    I16 near, far;
    LUM_INLINE I16 weighted() const { return near + near + near + far; }
  };
  struct Column {
    explicit Column(uint32_t column) : shift(8 * column), across(column == 0 ? 2 : -2) {}
    LUM_INLINE Samples of(const uint8_t* row) const { return {byte(row), byte(row + across)}; }
    LUM_INLINE I16 byte(const uint8_t* p) const {
      return I16(shift_right(load<U16>(p), shift) & 255);
    }
    unsigned shift;
    ptrdiff_t across;
  };

  static LUM_INLINE I16 own_colour(const Samples& near, const Samples& far) {
    const I16 w = near.weighted();
    return (w + w + w + far.weighted() + 8) >> 4;
  }

  LUM_INLINE Words half(const uint8_t* red_row) const {
    const uint8_t* const beyond_red = red_row + far_red;
    const uint8_t* const beside_blue = red_row + blue_row;
    const uint8_t* const beyond_blue = red_row + far_blue;
    const Samples green1 = blue.of(red_row), green2 = red.of(beside_blue);
    const I16 near = green1.near + green2.near;
    const I16 far = green1.far + green2.far + blue.byte(beyond_red) + red.byte(beyond_blue);
    return {own_colour(red.of(red_row), red.of(beyond_red)),
            ((near << 2) + near + near + far + 8) >> 4,
            own_colour(blue.of(beside_blue), blue.of(beyond_blue))};
  }

  Column red, blue;
  ptrdiff_t far_red, blue_row, far_blue;
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
