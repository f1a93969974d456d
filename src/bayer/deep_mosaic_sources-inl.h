// SPDX-License-Identifier: MIT
// Mosaics of deep samples: two rows that are reduced to what the mosaic's arithmetic reads, and
// beside each of their blocks one of the row that comes next. So what is reduced costs no time of
// its own where stores wait for memory; row by row in turn it would.
namespace lum {
namespace LUM_LEVEL {
namespace {

// A flat source and the sink that makes samples of it.
template <class From, class To>
struct Reduction {
  using Deep = From;
  using Samples = To;
};

template <class Mosaic, class Reduction>
struct BesideDeep : Mosaic {
  using Pixels = Mosaic;
  using Deep = typename Reduction::Deep;
  using Samples = typename Reduction::Samples;
  static_assert(Samples::kPixelBytes == Mosaic::kGroupBytes, "samples of the mosaic");

  explicit BesideDeep(const RowArgs& args)
      : Mosaic(args), deep(args), from(args.deep), beside(args.beside_deep), to(args.reduced) {}

  LUM_INLINE auto block(const uint8_t* a, const uint8_t* b) const {
    reduce(a);
    return Mosaic::block(a, b);
  }
  LUM_INLINE auto last_block(const uint8_t* a, const uint8_t* b) const {
    reduce(a);
    return Mosaic::last_block(a, b);
  }
  static LUM_INLINE void beside_few(const RowArgs& args, const uint8_t* a, size_t n) {
    const size_t at = static_cast<size_t>(a - args.beside_deep);
    row<Deep, Samples>(args.reduced + at, deep_at(args.deep, at), nullptr, n, args);
  }

 private:
  static LUM_INLINE const uint8_t* deep_at(const uint8_t* from, size_t at) {
    return from + source_bytes<Deep>(at / Mosaic::kGroupBytes);
  }
  LUM_INLINE void reduce(const uint8_t* a) const {
    const size_t at = static_cast<size_t>(a - beside);
    Samples::store_block(to + at, deep.block(deep_at(from, at), nullptr));
  }

  Deep deep;
  const uint8_t *from, *beside;
  uint8_t* to;
};

template <class Mosaic, class Reduction>
constexpr bool kHasBeside<BesideDeep<Mosaic, Reduction>> = true;

}  // namespace
}  // namespace LUM_LEVEL
}  // namespace lum
