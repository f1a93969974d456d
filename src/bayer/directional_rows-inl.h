// SPDX-License-Identifier: MIT
// The demosaics that follow the direction of the picture, step by step over rows of words: the
// vector parts. What the rows hold and the order of the steps are in demosaic.cpp.
//
// N is the colour that the row's own native pixels hold, O the one that the row lacks.
namespace lum {
namespace LUM_LEVEL {
namespace {

// Rows of words have their even and their odd columns apart, so that a neighbour beside a pixel is
// in the other half and most loads of neighbours are aligned.
LUM_INLINE I16 at(const int16_t* row, ptrdiff_t x) { return load<I16>(row + x); }

struct Columns {
  I16 even, odd;
};
LUM_INLINE Columns columns_of(U8 samples) {
  const U16 pairs = U16(samples);
  return {I16(pairs & 255), I16(pairs >> 8)};
}
LUM_INLINE Columns load_columns(const uint8_t* p) { return columns_of(in_register(load<U8>(p))); }
LUM_INLINE void store_columns(int16_t* row, const Columns& v) {
  store(row, v.even);
  store(row + kOddColumns, v.odd);
}

// Samples mirror about the frame's first and last column, and so does all that is made of them.
// Rows that begin and end with a frame go on so where a step looks beyond them; in rows that begin
// or end elsewhere, what looks there is not needed.
LUM_INLINE void mirror_beside(int16_t* row, size_t words) {
  int16_t *const odd = row + kOddColumns, *const end = row + words, *const odd_end = odd + words;
  odd[-1] = odd[0];
  row[-1] = row[1];
  odd[-2] = odd[1];
  end[0] = end[-1];
  odd_end[0] = odd_end[-2];
  end[1] = end[-2];
}

// Sums of three neighbours, made along with what is added: loads beside what has just been stored
// would wait for it.
class ColumnSums {
 public:
  // Of rows whose second column has this.
  explicit ColumnSums(int second) : last_{I16{}, I16{} + static_cast<int16_t>(second)} {}
  // v, which begins at word x, gives the sums of its even columns and those of the odd columns of
  // the vector before; finish() gives the last ones.
  LUM_INLINE void add(int16_t* sums, size_t x, const Columns& v) {
    const I16 both = v.even + v.odd;
    store(sums + x, both + words_before(last_.odd, v.odd));
    store_odd(sums, x, v.even);
    both_ = both;
    last_ = v;
  }
  LUM_INLINE void finish(int16_t* sums, size_t words) const {
    store_odd(sums, words, splat_last(last_.even));
  }

 private:
  LUM_INLINE void store_odd(int16_t* sums, size_t x, I16 behind) const {
    store(sums + kOddColumns + x - kLanes / 2, both_ + words_behind(last_.even, behind));
  }

  Columns last_;
  I16 both_ = {};
};

// Samples of two columns by their weights.
LUM_INLINE I16 weighed(U8 samples, int even, int odd) {
  return madd(samples, I8(splat_pair(even, odd)));
}

LUM_INLINE int activity(int z0, int z1, int z3, int z4) {
  const int change = z0 - z4 + 2 * (z3 - z1);
  return change < 0 ? -change : change;
}

// Five samples in line, two before to two behind:
//   p = z0 - 2 z1 + 2 z2 - 2 z3 + z4, sixteen times a colour difference after the low-pass that
//   follows; a = |z0 - 2 z1 + 2 z3 - z4|, how much the line changes
//   qh = 2 p(x) - p(x - 1) - p(x + 1), as one filter [-1 4 -7 8 -7 4 -1]
inline void along_row(const uint8_t* z, int16_t* qh, int16_t* ah3, size_t words) {
  ColumnSums sums(activity(z[-1], z[0], z[2], z[3]));
  for (size_t x = 0; x < words; x += kLanes / 2) {
    const uint8_t* const p = z + 2 * x;
    const U8 m4 = in_register(load<U8>(p - 4)), m2 = in_register(load<U8>(p - 2)),
             here = in_register(load<U8>(p)), p2 = in_register(load<U8>(p + 2)),
             p4 = in_register(load<U8>(p + 4));
    store_columns(
        qh + x,
        {weighed(m4, 0, -1) + weighed(m2, 4, -7) + weighed(here, 8, -7) + weighed(p2, 4, -1),
         weighed(m2, -1, 4) + weighed(here, -7, 8) + weighed(p2, -7, 4) + weighed(p4, -1, 0)});
    const I16 before_even = weighed(m2, 1, -2), behind_odd = weighed(p2, -2, 1),
              before_odd = weighed(load<U8>(p - 1), 1, -2),
              behind_even = weighed(load<U8>(p + 1), -2, 1);
    sums.add(ah3, x, {absolute(before_even - behind_even), absolute(before_odd - behind_odd)});
  }
  sums.finish(ah3, words);
}

// A column of five samples by its halves before and behind the middle one:
//   p = (z0 - 2 z1) + (z4 - 2 z3) + 2 z2    a = |(z0 - 2 z1) - (z4 - 2 z3)|
struct Column {
  I16 p, a;
};
LUM_INLINE Column column_of(I16 z0, I16 twice_z1, I16 twice_z2, I16 twice_z3, I16 z4) {
  const I16 before = z0 - twice_z1, behind = z4 - twice_z3;
  return {before + behind + twice_z2, absolute(before - behind)};
}

inline void down_column(const uint8_t* const z[5], int16_t* pv, int16_t* av3, size_t words) {
  ColumnSums sums(activity(z[0][1], z[1][1], z[3][1], z[4][1]));
  const uint8_t *const r0 = z[0], *const r1 = z[1], *const r2 = z[2], *const r3 = z[3],
                       *const r4 = z[4];
  for (size_t x = 0; x < words; x += kLanes / 2) {
    const Columns z0 = load_columns(r0 + 2 * x), z4 = load_columns(r4 + 2 * x);
    const U8 z1 = in_register(load<U8>(r1 + 2 * x)), z2 = in_register(load<U8>(r2 + 2 * x)),
             z3 = in_register(load<U8>(r3 + 2 * x));
    const Column even =
        column_of(z0.even, weighed(z1, 2, 0), weighed(z2, 2, 0), weighed(z3, 2, 0), z4.even);
    const Column odd =
        column_of(z0.odd, weighed(z1, 0, 2), weighed(z2, 0, 2), weighed(z3, 0, 2), z4.odd);
    store_columns(pv + x, {even.p, odd.p});
    sums.add(av3, x, {even.a, odd.a});
  }
  sums.finish(av3, words);
}

// Weights are negative, in units of 2^-15, so that all of a weight, -1, fits a word: what rounding
// products take. As (b - a) times less w is (a - b) times w,
//   weighted(-w 2^12, a, b) = (w a + (8 - w) b + 4) >> 3    w = 0..8
//   weighted(-w 2^13, a, b) = (w a + (4 - w) b + 2) >> 2    w = 0..4
LUM_INLINE I16 weighted(I16 weight, I16 a, I16 b) { return b + mul_round(b - a, weight); }

// (v + half) >> bits, v being a word.
LUM_INLINE I16 rounded(I16 v, int bits) { return mul_round(v, I16(splat16(1u << (15 - bits)))); }

// Counts of comparisons, in units of 1 << shift: in such steps where kAnyStep, else shifted when
// all are counted.
template <int shift>
class Count {
 public:
  explicit LUM_INLINE Count(int begin) : count_(I16{} + static_cast<int16_t>(begin * kStep)) {}
  LUM_INLINE void up_where_greater(I16 a, I16 b) {
    count_ = add_where_greater<kStep>(count_, a, b);
  }
  LUM_INLINE void down_where_greater(I16 a, I16 b) {
    count_ = subtract_where_greater<kStep>(count_, a, b);
  }
  LUM_INLINE I16 get() const { return kAnyStep ? count_ : I16(U16(count_) << shift); }

 private:
  static constexpr int kStep = kAnyStep ? 1 << shift : 1;
  I16 count_;
};

// 0..-4 << shift: how much smaller the first of two measures is than the second, -2 being
// undecided. `near` and `far` reduce a measure: below near(the other) it is the smaller one, below
// far(the other) by much.
template <int shift, class Near, class Far>
LUM_INLINE I16 preference(I16 first, I16 second, Near near, Far far) {
  Count<shift> e(-2);
  e.down_where_greater(second, far(first));
  e.down_where_greater(second, near(first));
  e.up_where_greater(first, near(second));
  e.up_where_greater(first, far(second));
  return e.get();
}

// Copies of the pointers, which a store cannot change, in the kernel's own stack: of a tile, and of
// three rows.
struct Tile {
  explicit LUM_INLINE Tile(const DemosaicTile& t)
      : z{t.z[0], t.z[1], t.z[2]},
        qh{t.qh[0], t.qh[1], t.qh[2], t.qh[3], t.qh[4], t.qh[5], t.qh[6]},
        qv(t.qv),
        e(t.e),
        act(t.act),
        work{t.work[0], t.work[1], t.work[2], t.work[3], t.work[4]},
        words(t.words),
        planes{t.planes[0], t.planes[1], t.planes[2]} {}
  const uint8_t* z[3];
  const int16_t *qh[7], *qv, *e, *act;
  int16_t* work[5];
  size_t words;
  uint8_t* planes[3];
};
struct Rows3 {
  explicit Rows3(const int16_t* const rows[3]) : above(rows[0]), here(rows[1]), below(rows[2]) {}
  const int16_t *above, *here, *below;
};

template <bool with_activity>
void direction(const int16_t* const pv[3], const int16_t* const ah3[3], const int16_t* const av3[3],
               int16_t* qv, int16_t* e, int16_t* act, size_t words) {
  const Rows3 p(pv), h(ah3), v(av3);
  const auto half = [&](ptrdiff_t x) {
    const I16 mid = at(p.here, x);
    store(qv + x, mid + mid - at(p.above, x) - at(p.below, x));
    const I16 gh = at(h.above, x) + at(h.here, x) + at(h.below, x);
    const I16 gv = at(v.above, x) + at(v.here, x) + at(v.below, x);
    store(e + x, preference<12>(
                     gh, gv, [](I16 v) { return v - (v >> 2); }, [](I16 v) { return v >> 1; }));
    if constexpr (with_activity) store(act + x, lesser(gh, gv));
  };
  for (size_t x = 0; x < words; x += kLanes / 2) {
    half(static_cast<ptrdiff_t>(x));
    half(static_cast<ptrdiff_t>(x) + kOddColumns);
  }
  mirror_beside(qv, words);
  mirror_beside(e, words);
}

// Differences of a pixel: to the colour that green pixels miss in their row (first) and to the one
// that the whole row misses (second), still 16 times too large.
struct Differences {
  I16 first, second;
};

// Where a row has its native and its green columns. The neighbours of a pixel in word x of its half
// are in words x and x + beside of the other half.
template <bool native_even>
struct Halves {
  static constexpr ptrdiff_t kNative = native_even ? 0 : kOddColumns;
  static constexpr ptrdiff_t kGreen = kOddColumns - kNative;
  static constexpr ptrdiff_t kBesideNative = native_even ? -1 : 1, kBesideGreen = -kBesideNative;

  static LUM_INLINE I16 native(const Columns& v) { return native_even ? v.even : v.odd; }
  static LUM_INLINE I16 green(const Columns& v) { return native_even ? v.odd : v.even; }
  static LUM_INLINE I16 even(I16 native, I16 green) { return native_even ? native : green; }
  static LUM_INLINE I16 odd(I16 native, I16 green) { return native_even ? green : native; }
  // Limited to bytes.
  static LUM_INLINE U8 bytes(I16 native, I16 green) {
    return native_even ? alternate_sat(native, green) : alternate_sat(green, native);
  }
};

// With d1 = (first + 8) >> 4 and d2 alike:
//   native: N = z, G = z - d1, O = G + d2     green: N = z - d1, G = z, O = G - d2
template <class Half>
LUM_INLINE void write_planes(const Tile& t, size_t x, const Columns& z, const Differences& native,
                             const Differences& green) {
  const I16 native_z = Half::native(z), green_z = Half::green(z);
  const I16 g = native_z - rounded(native.first, 4);
  store(t.planes[0] + 2 * x, Half::bytes(native_z, green_z - rounded(green.first, 4)));
  store(t.planes[1] + 2 * x, Half::bytes(g, green_z));
  store(t.planes[2] + 2 * x,
        Half::bytes(g + rounded(native.second, 4), green_z - rounded(green.second, 4)));
}

// -((a + b + 1) >> 1), which is half of -(a + b), rounded down.
LUM_INLINE I16 negated_average(I16 a, I16 b) { return mul_hi(a + b, I16{} + (-32768)); }

LUM_INLINE Differences mixed(I16 w, const Differences& along, const Differences& across) {
  return {weighted(w, along.first, across.first), weighted(w, along.second, across.second)};
}

template <class Half>
LUM_INLINE void lcaa_row(const Tile& t) {
  for (size_t x = 0; x < t.words; x += kLanes / 2) {
    const auto row = [&](ptrdiff_t half) -> Differences {
      return {at(t.qh[3] + half, x), negated_average(at(t.qh[2] + half, x), at(t.qh[4] + half, x))};
    };
    const auto two = [x](const int16_t* row, ptrdiff_t beside, auto of) {
      return of(at(row, x), at(row, static_cast<ptrdiff_t>(x) + beside));
    };
    const auto sum = [](I16 a, I16 b) { return a + b; };
    const int16_t *const e_native = t.e + Half::kNative, *const e_green = t.e + Half::kGreen;
    const int16_t *const qv_native = t.qv + Half::kNative, *const qv_green = t.qv + Half::kGreen;
    const Differences native =
        mixed(two(e_green, Half::kBesideNative, sum), row(Half::kNative),
              {at(qv_native, x), two(qv_green, Half::kBesideNative, negated_average)});
    const Differences green =
        mixed(two(e_native, Half::kBesideGreen, sum), row(Half::kGreen),
              {two(qv_native, Half::kBesideGreen, negated_average), at(qv_green, x)});
    write_planes<Half>(t, x, load_columns(t.z[1] + 2 * x), native, green);
  }
}

inline void lcaa(const DemosaicTile& t) {
  if (t.native == 0) {
    lcaa_row<Halves<true>>(Tile(t));
  } else {
    lcaa_row<Halves<false>>(Tile(t));
  }
}

// Which of two neighbouring lines to lean to, by how far their green is from the pixel's: the
// weight of the first.
LUM_INLINE I16 closer(I16 a, I16 c) {
  return preference<13>(
      a + 8, c + 8, [](I16 v) { return (v >> 1) + (v >> 3); }, [](I16 v) { return v >> 3; });
}

// Green of a native pixel by differences q, not limited.
LUM_INLINE I16 green_of(I16 z, I16 q) { return z - rounded(q, 4); }

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
  Count<13> busy(0);
  busy.down_where_greater(act, quarter + (quarter >> 1));
  busy.down_where_greater(act, u - quarter);
  return busy.get();
}

struct SharpAndSmooth {
  Differences sharp, smooth;
  I16 calm;
};
// `share`: of the smooth set.
LUM_INLINE Differences chosen(I16 share, const SharpAndSmooth& v) {
  return mixed(share, v.smooth, v.sharp);
}
// Native or green pixels: `own` is their half of the rows and `other` that of the pixels beside
// them. The samples beside are left and right, or the other way round.
template <bool is_native>
LUM_INLINE SharpAndSmooth sharp_and_smooth(const Tile& t, size_t word, ptrdiff_t own,
                                           ptrdiff_t other, ptrdiff_t beside, I16 z, I16 z_above,
                                           I16 z_below, I16 z_beside, I16 z_beyond) {
  const ptrdiff_t x = static_cast<ptrdiff_t>(word);
  const int16_t *const own_qv = t.qv + own, *const other_qv = t.qv + other;
  const I16 w = at(t.e + other, x) + at(t.e + other, x + beside);
  const I16 qh = at(t.qh[3] + own, x), qh_up = at(t.qh[2] + own, x), qh_down = at(t.qh[4] + own, x);
  const I16 qv = at(own_qv, x), qv_a = at(other_qv, x), qv_b = at(other_qv, x + beside);

  // Sharp: what a line lacks comes from the neighbouring line whose green is nearer.
  I16 from_rows, from_columns;
  if constexpr (is_native) {
    from_rows = leaning(green_of(z, qh), z_above, z_below, qh_up, qh_down);
    from_columns = leaning(green_of(z, qv), z_beside, z_beyond, qv_a, qv_b);
  } else {
    from_rows = leaning(z, green_of(z_above, qh_up), green_of(z_below, qh_down), qh_up, qh_down);
    from_columns = leaning(z, green_of(z_beside, qv_a), green_of(z_beyond, qv_b), qv_a, qv_b);
  }
  // Down the column a native pixel's own line has the first difference and a green one's the other.
  const auto down = [](I16 own_line, I16 lines_beside) -> Differences {
    if constexpr (is_native) return {own_line, lines_beside};
    return {lines_beside, own_line};
  };
  const Differences sharp = mixed(w, {qh, from_rows}, down(qv, from_columns));

  // Smooth: a second low-pass, across the direction.
  const Differences row = {smooth3(at(t.qh[1] + own, x), qh, at(t.qh[5] + own, x)),
                           smooth4(at(t.qh[0] + own, x), qh_up, qh_down, at(t.qh[6] + own, x))};
  const Differences column =
      down(smooth3(at(own_qv, x - 1), qv, at(own_qv, x + 1)),
           smooth4(at(other_qv, x - beside), qv_a, qv_b, at(other_qv, x + 2 * beside)));
  const Differences smooth = mixed(w, row, column);

  return {sharp, smooth, calmness(at(t.act + own, x), smooth)};
}

struct Samples {
  const uint8_t* p;
  Columns z, above, below;
};
LUM_INLINE Samples samples_of(const Tile& t, size_t x) {
  return {t.z[1] + 2 * x, load_columns(t.z[1] + 2 * x), load_columns(t.z[0] + 2 * x),
          load_columns(t.z[2] + 2 * x)};
}
template <class Half>
LUM_INLINE SharpAndSmooth native_of(const Tile& t, size_t x, const Samples& s) {
  return sharp_and_smooth<true>(t, x, Half::kNative, Half::kGreen, Half::kBesideNative,
                                Half::native(s.z), Half::native(s.above), Half::native(s.below),
                                Half::green(s.z),
                                Half::green(load_columns(s.p + 2 * Half::kBesideNative)));
}
template <class Half>
LUM_INLINE SharpAndSmooth green_of(const Tile& t, size_t x, const Samples& s) {
  return sharp_and_smooth<false>(t, x, Half::kGreen, Half::kNative, Half::kBesideGreen,
                                 Half::green(s.z), Half::green(s.above), Half::green(s.below),
                                 Half::native(s.z),
                                 Half::native(load_columns(s.p + 2 * Half::kBesideGreen)));
}

// With many registers a vector waits in them for the calmness of the next one, whose first columns
// are beside its last ones: rows of words more would not fit the first-level cache.
struct NativeAndGreen {
  SharpAndSmooth native, green;
};
template <class Half>
LUM_INLINE NativeAndGreen both_of(const Tile& t, size_t x) {
  const Samples s = samples_of(t, x);
  return {native_of<Half>(t, x, s), green_of<Half>(t, x, s)};
}
template <class Half>
LUM_INLINE void lcaav_at_once(const Tile& t) {
  const auto write = [&](size_t x, I16 odd_before, const NativeAndGreen& v, I16 even_behind) {
    const I16 even = Half::even(v.native.calm, v.green.calm);
    const I16 odd = Half::odd(v.native.calm, v.green.calm);
    const Columns share = {words_before(odd_before, odd) + odd,
                           even + words_behind(even, even_behind)};
    write_planes<Half>(t, x, load_columns(t.z[1] + 2 * x), chosen(Half::native(share), v.native),
                       chosen(Half::green(share), v.green));
  };
  NativeAndGreen here = both_of<Half>(t, 0);
  I16 odd_before = splat_first(Half::odd(here.native.calm, here.green.calm));
  size_t x = kLanes / 2;
  for (; x < t.words; x += kLanes / 2) {
    const NativeAndGreen next = both_of<Half>(t, x);
    write(x - kLanes / 2, odd_before, here, Half::even(next.native.calm, next.green.calm));
    odd_before = Half::odd(here.native.calm, here.green.calm);
    here = next;
  }
  write(x - kLanes / 2, odd_before, here,
        splat_last(Half::even(here.native.calm, here.green.calm)));
}

template <class Half>
LUM_INLINE void lcaav_in_two_passes(const Tile& t) {
  const auto keep = [&t](ptrdiff_t x, const SharpAndSmooth& v) {
    store(t.work[0] + x, v.sharp.first);
    store(t.work[1] + x, v.sharp.second);
    store(t.work[2] + x, v.smooth.first);
    store(t.work[3] + x, v.smooth.second);
    store(t.work[4] + x, v.calm);
  };
  for (size_t word = 0; word < t.words; word += kLanes / 2) {
    const ptrdiff_t x = static_cast<ptrdiff_t>(word);
    const Samples s = samples_of(t, word);
    keep(x + Half::kNative, native_of<Half>(t, word, s));
    keep(x + Half::kGreen, green_of<Half>(t, word, s));
  }
  mirror_beside(t.work[4], t.words);
  for (size_t word = 0; word < t.words; word += kLanes / 2) {
    const ptrdiff_t x = static_cast<ptrdiff_t>(word);
    const auto of = [&](ptrdiff_t own, ptrdiff_t other, ptrdiff_t beside) {
      const int16_t* const calm = t.work[4] + other;
      return mixed(at(calm, x) + at(calm, x + beside),
                   {at(t.work[2] + own, x), at(t.work[3] + own, x)},
                   {at(t.work[0] + own, x), at(t.work[1] + own, x)});
    };
    write_planes<Half>(t, word, load_columns(t.z[1] + 2 * x),
                       of(Half::kNative, Half::kGreen, Half::kBesideNative),
                       of(Half::kGreen, Half::kNative, Half::kBesideGreen));
  }
}

template <class Half>
LUM_INLINE void lcaav_row(const Tile& t) {
  if constexpr (kManyRegisters) {
    lcaav_at_once<Half>(t);
  } else {
    lcaav_in_two_passes<Half>(t);
  }
}

inline void lcaav(const DemosaicTile& t) {
  if (t.native == 0) {
    lcaav_row<Halves<true>>(Tile(t));
  } else {
    lcaav_row<Halves<false>>(Tile(t));
  }
}

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
