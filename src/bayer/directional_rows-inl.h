// SPDX-License-Identifier: MIT
// The demosaics that follow the direction of the picture, step by step over rows of words: the
// vector parts. What the rows hold and the order of the steps are in demosaic.cpp.
//
// N is the colour that the row's own native pixels hold, O the one that the row lacks.
namespace lum {
namespace LUM_LEVEL {
namespace {

inline void widen(int16_t* dst, const uint8_t* src, size_t bytes) {
  constexpr size_t kStep = kLanes / 2;
  size_t x = 0;
  for (; x + kStep <= bytes; x += kStep) store(dst + x, load_widened(src + x));
  if (x == bytes) return;
  if (bytes >= kStep) {
    store(dst + bytes - kStep, load_widened(src + bytes - kStep));
  } else {
    for (; x < bytes; ++x) dst[x] = src[x];
  }
}

LUM_INLINE I16 at(const int16_t* row, ptrdiff_t x) { return load<I16>(row + x); }

// Sums of three neighbours of `row`, into `sums`.
LUM_INLINE void sum_columns(const int16_t* row, int16_t* sums, size_t words) {
  for (size_t x = 0; x < words; x += kLanes / 2) {
    const int16_t* const p = row + x;
    store(sums + x, at(p, -1) + at(p, 0) + at(p, 1));
  }
}

// Five samples in line, two before to two behind:
//   p = z0 - 2 z1 + 2 z2 - 2 z3 + z4, sixteen times a colour difference after the low-pass that
//   follows a = |z0 - 2 z1 + 2 z3 - z4|, how much the line changes
LUM_INLINE I16 activity(I16 z0, I16 z1, I16 z3, I16 z4) {
  const I16 inner = z3 - z1;
  return absolute(z0 - z4 + inner + inner);
}

// qh = 2 p(x) - p(x - 1) - p(x + 1), as one filter [-1 4 -7 8 -7 4 -1].
inline void along_row(const int16_t* z, int16_t* qh, int16_t* ah3, int16_t* scratch, size_t words) {
  for (size_t x = 0; x < words; x += kLanes / 2) {
    const int16_t* const p = z + x;
    const I16 m2 = at(p, -2), m1 = at(p, -1), p1 = at(p, 1), p2 = at(p, 2);
    const I16 s1 = m1 + p1, s2 = m2 + p2, s3 = at(p, -3) + at(p, 3);
    store(qh + x, ((at(p, 0) - s1) << 3) + s1 + (s2 << 2) - s3);
    store(scratch + x, activity(m2, m1, p1, p2));
  }
  sum_columns(scratch, ah3, words);
}

inline void down_column(const int16_t* const z[5], int16_t* pv, int16_t* av3, int16_t* scratch,
                        size_t words) {
  const int16_t *const r0 = z[0], *const r1 = z[1], *const r2 = z[2], *const r3 = z[3],
                       *const r4 = z[4];
  for (size_t x = 0; x < words; x += kLanes / 2) {
    const I16 z0 = at(r0, x), z1 = at(r1, x), z2 = at(r2, x), z3 = at(r3, x), z4 = at(r4, x);
    const I16 near = z2 - z1 - z3;
    store(pv + x, z0 + z4 + near + near);
    store(scratch + x, activity(z0, z1, z3, z4));
  }
  sum_columns(scratch, av3, words);
}

// Weights are negative, in units of 2^-15, so that all of a weight, -1, fits a word: what rounding
// products take. As (b - a) times less w is (a - b) times w,
//   weighted(-w 2^12, a, b) = (w a + (8 - w) b + 4) >> 3    w = 0..8
//   weighted(-w 2^13, a, b) = (w a + (4 - w) b + 2) >> 2    w = 0..4
LUM_INLINE I16 weighted(I16 weight, I16 a, I16 b) { return b + mul_round(b - a, weight); }

// (v + half) >> bits, v being a word.
LUM_INLINE I16 rounded(I16 v, int bits) { return mul_round(v, I16(splat16(1u << (15 - bits)))); }

// 0..-4 << shift: how much smaller the first of two measures is than the second, -2 being
// undecided. `near` and `far` reduce a measure: below near(the other) it is the smaller one, below
// far(the other) by much.
template <class Near, class Far>
LUM_INLINE I16 preference(I16 first, I16 second, Near near, Far far, int shift) {
  I16 e = I16{} - 2;
  e = subtract_where_greater(e, second, far(first));
  e = subtract_where_greater(e, second, near(first));
  e = add_where_greater(e, first, near(second));
  e = add_where_greater(e, first, far(second));
  return I16(U16(e) << shift);
}

// Copies of the pointers, which a store cannot change.
struct Rows3 {
  explicit Rows3(const int16_t* const rows[3]) : above(rows[0]), here(rows[1]), below(rows[2]) {}
  const int16_t *above, *here, *below;
};

inline void direction(const int16_t* const pv[3], const int16_t* const ah3[3],
                      const int16_t* const av3[3], int16_t* qv, int16_t* e, int16_t* act,
                      size_t words) {
  const Rows3 p(pv), h(ah3), v(av3);
  for (size_t x = 0; x < words; x += kLanes / 2) {
    const I16 mid = at(p.here, x);
    store(qv + x, mid + mid - at(p.above, x) - at(p.below, x));
    const I16 gh = at(h.above, x) + at(h.here, x) + at(h.below, x);
    const I16 gv = at(v.above, x) + at(v.here, x) + at(v.below, x);
    store(e + x, preference(
                     gh, gv, [](I16 v) { return v - (v >> 2); }, [](I16 v) { return v >> 1; }, 12));
    store(act + x, lesser(gh, gv));
  }
}

// Differences of a pixel: to the colour that green pixels miss in their row (first) and to the one
// that the whole row misses (second), still 16 times too large.
struct Differences {
  I16 first, second;
};

// The columns that hold the row's own colour and those that hold green, as factors: a product with
// none is cheaper than a choice.
struct Columns {
  explicit Columns(unsigned parity_of_native)
      : native(even_lanes(parity_of_native)),
        sixteenth_of_native(chosen(kSixteenth, 0)),
        sixteenth_of_green(chosen(0, kSixteenth)),
        sign(chosen(1, -1)) {}

  Mask native;
  I16 sixteenth_of_native, sixteenth_of_green;  // of mul_round()
  I16 sign;                                     // -1 where green is

 private:
  static constexpr int kSixteenth = 1 << 11;
  LUM_INLINE I16 chosen(int in_native, int in_green) const {
    U16 x, y;
    cross16(native, splat16(static_cast<unsigned>(in_native)),
            splat16(static_cast<unsigned>(in_green)), x, y);
    return I16(x);
  }
};

// Colours of half a block before they are limited.
struct Colours {
  I16 n, g, o;
};
// With d1 = (first + 8) >> 4 and d2 alike:
//   native: N = z, G = z - d1, O = G + d2     green: N = z - d1, G = z, O = G - d2
LUM_INLINE Colours colours_from(const Columns& c, I16 z, const Differences& x) {
  const I16 g = z - mul_round(x.first, c.sixteenth_of_native);
  return {z - mul_round(x.first, c.sixteenth_of_green), g, g + rounded(x.second, 4) * c.sign};
}

// half(x) gives the colours of columns x .. x + kLanes / 2 - 1 of the tile's word rows.
template <class Half>
LUM_INLINE void write_planes(const DemosaicTile& t, Half half) {
  for (size_t x = 0; x < t.columns; x += kLanes) {
    const Colours lo = half(x + kTileMargin), hi = half(x + kTileMargin + kLanes / 2);
    store(t.planes[0] + x, narrow(lo.n, hi.n));
    store(t.planes[1] + x, narrow(lo.g, hi.g));
    store(t.planes[2] + x, narrow(lo.o, hi.o));
  }
}

// -((a + b + 1) >> 1), which is half of -(a + b), rounded down.
LUM_INLINE I16 negated_average(I16 a, I16 b) { return mul_hi(a + b, I16{} + (-32768)); }

// Differences down the column by a pixel's own line and by the lines beside it: which of the two is
// the first depends on what the pixel holds.
LUM_INLINE Differences down(const Mask& native, I16 own, I16 beside) {
  U16 first, second;
  cross16(native, U16(own), U16(beside), first, second);
  return {I16(first), I16(second)};
}

LUM_INLINE Differences mixed(I16 w, const Differences& along, const Differences& across) {
  return {weighted(w, along.first, across.first), weighted(w, along.second, across.second)};
}

inline void lcaa(const DemosaicTile& tile) {
  const DemosaicTile t = tile;  // or each store might change its pointers
  const Columns columns(t.native);
  write_planes(t, [&](size_t x) {
    const I16 w = at(t.e, x - 1) + at(t.e, x + 1);
    const Differences row = {at(t.qh[3], x), negated_average(at(t.qh[2], x), at(t.qh[4], x))};
    const Differences column =
        down(columns.native, at(t.qv, x), negated_average(at(t.qv, x - 1), at(t.qv, x + 1)));
    return colours_from(columns, at(t.z[3], x), mixed(w, row, column));
  });
}

// Which of two neighbouring lines to lean to, by how far their green is from the pixel's: the
// weight of the first.
LUM_INLINE I16 closer(I16 a, I16 c) {
  return preference(
      a + 8, c + 8, [](I16 v) { return (v >> 1) + (v >> 3); }, [](I16 v) { return v >> 3; }, 13);
}

// Green of a pixel by differences q, not limited. `sixteenth` is none where the sample is green.
LUM_INLINE I16 green(I16 sixteenth, I16 z, I16 q) { return z - mul_round(q, sixteenth); }

// The weighted mean of two lines, negated, by which of their greens is nearer to the pixel's.
LUM_INLINE I16 leaning(I16 green_here, I16 green_a, I16 green_b, I16 a, I16 b) {
  const I16 k = closer(absolute(green_here - green_a), absolute(green_here - green_b));
  return -weighted(k, a, b);
}

LUM_INLINE I16 smooth3(I16 before, I16 here, I16 behind) {
  return rounded(before + here + here + behind, 2);
}
LUM_INLINE I16 smooth4(I16 far1, I16 near1, I16 near2, I16 far2) {
  const I16 near = near1 + near2;
  return -rounded(far1 + far2 + near + near + near, 3);
}

// How busy and nearly grey a place is, 0..-2 << 13, from its activity and its smooth differences.
LUM_INLINE I16 calmness(I16 act, const Differences& smooth) {
  const I16 u = absolute(smooth.first) + absolute(smooth.second) + 64, quarter = u >> 2;
  const I16 busy = subtract_where_greater(I16{}, act, quarter + (quarter >> 1));
  return I16(U16(subtract_where_greater(busy, act, u - quarter)) << 13);
}

inline void lcaav(const DemosaicTile& tile) {
  const DemosaicTile t = tile;  // or each store might change its pointers
  const Columns columns(t.native);
  const I16 here = columns.sixteenth_of_native, beside = columns.sixteenth_of_green;
  for (size_t x = t.first; x < t.columns + kTileMargin + 1; x += kLanes / 2) {
    const I16 w = at(t.e, x - 1) + at(t.e, x + 1);
    const I16 z = at(t.z[3], x);
    const I16 qh = at(t.qh[3], x), qh_up = at(t.qh[2], x), qh_down = at(t.qh[4], x);
    const I16 qv = at(t.qv, x), qv_left = at(t.qv, x - 1), qv_right = at(t.qv, x + 1);

    // Sharp: what a line lacks comes from the neighbouring line whose green is nearer.
    const I16 from_rows = leaning(green(here, z, qh), green(beside, at(t.z[2], x), qh_up),
                                  green(beside, at(t.z[4], x), qh_down), qh_up, qh_down);
    const I16 from_columns = leaning(green(here, z, qv), green(beside, at(t.z[3], x - 1), qv_left),
                                     green(beside, at(t.z[3], x + 1), qv_right), qv_left, qv_right);
    const Differences sharp = mixed(w, {qh, from_rows}, down(columns.native, qv, from_columns));

    // Smooth: a second low-pass, across the direction.
    const Differences row = {smooth3(at(t.qh[1], x), qh, at(t.qh[5], x)),
                             smooth4(at(t.qh[0], x), qh_up, qh_down, at(t.qh[6], x))};
    const Differences column = down(columns.native, smooth3(at(t.qv, x - 2), qv, at(t.qv, x + 2)),
                                    smooth4(at(t.qv, x - 3), qv_left, qv_right, at(t.qv, x + 3)));
    const Differences smooth = mixed(w, row, column);

    store(t.work[0] + x, sharp.first);
    store(t.work[1] + x, sharp.second);
    store(t.work[2] + x, smooth.first);
    store(t.work[3] + x, smooth.second);
    store(t.work[4] + x, calmness(at(t.act, x), smooth));
  }
  write_planes(t, [&](size_t x) {
    const I16 share = at(t.work[4], x - 1) + at(t.work[4], x + 1);  // of the smooth set
    const Differences chosen = {weighted(share, at(t.work[2], x), at(t.work[0], x)),
                                weighted(share, at(t.work[3], x), at(t.work[1], x))};
    return colours_from(columns, at(t.z[3], x), chosen);
  });
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
