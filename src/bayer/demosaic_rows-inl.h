// SPDX-License-Identifier: MIT
// Demosaics that look beyond the 2 x 2 block: the vector parts. Frames, borders and the order of
// rows are in demosaic.cpp.
//
// N is the colour that the row's own native pixels hold (red in red rows), O the one that the row
// lacks; every other pixel of the row holds green.
namespace lum {
namespace LUM_LEVEL {
namespace {

// Rows of finished colours, padded.
struct Planes8 {
  static constexpr size_t kGroupPixels = 1, kGroupBytes = 1;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = true;
  explicit Planes8(const RowArgs& args) : pitch(args.pitch) {}
  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t*) const {
    return {load<U8>(a), load<U8>(a + pitch), load<U8>(a + 2 * pitch)};
  }

  ptrdiff_t pitch;
};

// (a + b + c + d + 2) >> 2 in bytes. Two averages that round up overshoot by one when one of the
// first two was rounded and the last one was too.
LUM_INLINE U8 average4(U8 a, U8 b, U8 c, U8 d) {
  const U8 ab = avg_up(a, b), cd = avg_up(c, d);
  return avg_up(ab, cd) - (((a ^ b) | (c ^ d)) & (ab ^ cd) & 1);
}

// Bilinear, 3 x 3: with h, v, d the sums of the neighbours beside, above and below, diagonal,
//   native: N = z             G = (h + v + 2) >> 2   O = (d + 2) >> 2
//   green:  N = (h + 1) >> 1  G = z                  O = (v + 1) >> 1
// Both means of four belong to native pixels. The one of d is made in the lane of the green pixel
// that makes a pair with it, where the samples above and below are two of the four:
//
//   native in even columns:  0 1 2 3     the mean around 2 lies in lane 3, from 1 and 3 of the rows
//                            N G N G     above and below
struct Bilinear {
  static constexpr size_t kGroupPixels = 2, kGroupBytes = 2;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = false;
  explicit Bilinear(const RowArgs& args)
      : native(even_lanes(args.column)),
        above(args.above),
        below(args.below),
        across((args.column & 1) == 0 ? -2 : 2),
        exchanged(byte_order(true)),
        own_is_blue(args.own_is_blue != 0) {}
  LUM_INLINE Rgb8 block(const uint8_t* a, const uint8_t*) const {
    const uint8_t* const up = a + above;
    const uint8_t* const down = a + below;
    // In registers, or g++ would load them for each operation: half of these loads cross a line.
    const U8 left = in_register(load<U8>(a - 1)), right = in_register(load<U8>(a + 1));
    return pixels(in_register(load<U8>(a)), left, right, in_register(load<U8>(up)),
                  in_register(load<U8>(down)), load<U8>(up + across), load<U8>(down + across));
  }
  LUM_INLINE Rgb8 side_block(const uint8_t* a, bool begins, bool ends) const {
    const uint8_t* const up = a + above;
    const uint8_t* const down = a + below;
    const U8 z = load<U8>(a), n = load<U8>(up), s = load<U8>(down);
    const U8 left = begins ? byte_before(z) : load<U8>(a - 1);
    const U8 right = ends ? byte_behind(z) : load<U8>(a + 1);
    if (across < 0 && begins) {
      return pixels(z, left, right, n, s, pair_before(n), pair_before(s));
    }
    if (across > 0 && ends) return pixels(z, left, right, n, s, pair_behind(n), pair_behind(s));
    return pixels(z, left, right, n, s, load<U8>(up + across), load<U8>(down + across));
  }

 private:
  // Samples moved by a pair of columns: beyond the side the nearest pair, of which the green lanes
  // need the sample that is mirrored about the side's column.
  static LUM_INLINE U8 pair_before(U8 v) { return U8(words_before(splat_first(I16(v)), I16(v))); }
  static LUM_INLINE U8 pair_behind(U8 v) { return U8(words_behind(I16(v), splat_last(I16(v)))); }
  // Samples moved by a column: likewise.
  static LUM_INLINE U8 byte_before(U8 v) { return U8((U16(v) << 8) | (U16(pair_before(v)) >> 8)); }
  static LUM_INLINE U8 byte_behind(U8 v) { return U8((U16(v) >> 8) | (U16(pair_behind(v)) << 8)); }

  LUM_INLINE Rgb8 pixels(U8 z, U8 left, U8 right, U8 n, U8 s, U8 n_across, U8 s_across) const {
    const U8 mean = average4(n, s, choose(native, left, n_across), choose(native, right, s_across));
    const U8 mean_of_pair = U8(ordered(U16(mean), exchanged));
    const U8 own = choose(native, z, avg_up(left, right));
    const U8 green = choose(native, mean, z);
    const U8 other = choose(native, mean_of_pair, avg_up(n, s));
    return own_is_blue ? Rgb8{other, green, own} : Rgb8{own, green, other};
  }

  Mask native;
  ptrdiff_t above, below, across;
  ByteOrder exchanged;
  bool own_is_blue;
};

// Least-squares differences of a pixel pair, d1 = G - N and d2 = G - O, times 32. Column 0 is the
// pair's native pixel and column 1 its green one; when green comes first the columns run leftwards.
struct PairKernel {
  int8_t row[3][6];  // rows y, y +- 1, y +- 2; columns -2 .. 3
};
constexpr PairKernel kGreenMinusOwn = {
    {{-3, 3, -12, 9, -7, 2}, {1, 1, 4, -1, 2, 0}, {0, 0, -3, 2, -2, 0}}};
constexpr PairKernel kGreenMinusOther = {
    {{1, 1, -1, 8, -2, 1}, {1, -5, 5, -9, 4, -2}, {0, 0, 1, 1, 0, 0}}};

// The pairs to the left, here and to the right, in registers: two of these loads cross a line.
struct PairSamples {
  explicit LUM_INLINE PairSamples(const uint8_t* p)
      : pair{in_register(load<U8>(p - 2)), in_register(load<U8>(p)), in_register(load<U8>(p + 2))} {
  }
  U8 pair[3];
};

// Adds the weighted samples of one of the pairs.
template <const PairKernel& kernel, int row, bool green_first, int pair>
LUM_INLINE void add_pair(const PairSamples& samples, I16& sum) {
  constexpr int column = green_first ? 5 - 2 * pair : 2 * pair;
  constexpr int w0 = kernel.row[row][column];
  constexpr int w1 = kernel.row[row][green_first ? column - 1 : column + 1];
  if constexpr (w0 != 0 || w1 != 0) {
    sum += madd(samples.pair[pair], I8(splat_pair(w0, w1)));
  }
}
// What a row adds to the difference of a row that many rows away.
template <const PairKernel& kernel, int row, bool green_first>
LUM_INLINE I16 row_sum(const PairSamples& samples) {
  I16 sum = {};
  add_pair<kernel, row, green_first, 0>(samples, sum);
  add_pair<kernel, row, green_first, 1>(samples, sum);
  add_pair<kernel, row, green_first, 2>(samples, sum);
  return sum;
}

// Of the rows beside a row, green comes first in pairs where it does not in this one.
template <bool green_first>
LUM_INLINE void pair_sums_of_row(const uint8_t* z, const PairSums& to, size_t n) {
  for (size_t x = 0; x < n; x += kLanes) {
    const PairSamples samples(z + x);
    store(to.beside + x, U8(row_sum<kGreenMinusOwn, 1, !green_first>(samples)));
    store(to.beside + to.pitch + x, U8(row_sum<kGreenMinusOther, 1, !green_first>(samples)));
    store(to.beyond + x, U8(row_sum<kGreenMinusOwn, 2, green_first>(samples)));
    store(to.beyond + to.pitch + x, U8(row_sum<kGreenMinusOther, 2, green_first>(samples)));
  }
}
inline void pair_sums(const uint8_t* z, uint32_t native, const PairSums& sums, size_t n) {
  const PairSums to = sums;  // or each store might change its pointers
  if (native != 0) {
    pair_sums_of_row<true>(z, to, n);
  } else {
    pair_sums_of_row<false>(z, to, n);
  }
}

// Full-resolution luminance, one colour difference a pair:
//   native: N = z, G = z + d1, O = z + d1 - d2     green: N = z - d1, G = z, O = z - d2
// Both pixels of a pair share the 16-bit lane of their differences. What other rows add to these
// comes from pair_sums(): two rows above take the same of a row as two rows below, and the row
// above the same as the row below.
struct PairedChroma {
  static constexpr size_t kGroupPixels = 2, kGroupBytes = 2;
  static constexpr int kRows = 1;
  static constexpr bool kEdge = false, kPadded = true;
  explicit PairedChroma(const RowArgs& args)
      : sums{args.above, args.below, args.above2, args.below2},
        to_other(args.pitch),
        green_first((args.column & 1) != 0),
        own_is_blue(args.own_is_blue != 0) {}
  LUM_INLINE RgbOfParities block(const uint8_t* a, const uint8_t*) const {
    const Colours c = green_first ? colours<true>(a) : colours<false>(a);
    if (own_is_blue) return {c.other, c.green, c.own};
    return {c.own, c.green, c.other};
  }

 private:
  struct Colours {
    U8 own, green, other;
  };

  // (sum + 16) >> 5, with the sums of the other rows
  LUM_INLINE I16 difference(I16 own_row, const uint8_t* p) const {
    const I16 beside = load<I16>(p + sums[0]) + load<I16>(p + sums[1]);
    const I16 beyond = load<I16>(p + sums[2]) + load<I16>(p + sums[3]);
    return mul_round(own_row + (beside + beyond), I16{} + (1 << 10));
  }

  template <bool green_first_>
  LUM_INLINE Colours colours(const uint8_t* a) const {
    const PairSamples samples(a);
    const I16 d1 = difference(row_sum<kGreenMinusOwn, 0, green_first_>(samples), a);
    const I16 d2 = difference(row_sum<kGreenMinusOther, 0, green_first_>(samples), a + to_other);
    const U16 z = U16(samples.pair[1]);
    const I16 first = I16(z & 255), second = I16(z >> 8);
    const I16 native = green_first_ ? second : first, green = green_first_ ? first : second;
    const I16 native_green = native + d1, green_own = green - d1;
    const I16 native_other = native_green - d2, green_other = green - d2;
    if (green_first_) {
      return {of_parities(green_own, native), of_parities(green, native_green),
              of_parities(green_other, native_other)};
    }
    return {of_parities(native, green_own), of_parities(native_green, green),
            of_parities(native_other, green_other)};
  }

  ptrdiff_t sums[4], to_other;
  bool green_first, own_is_blue;
};

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
