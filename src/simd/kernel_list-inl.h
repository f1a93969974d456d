// SPDX-License-Identifier: MIT
// The cells of a level's table: which source goes to which sinks. Included once by each
// kernels_<level>.cpp after its vector header; defines that level's only global symbol.
#include "simd/kernel_table.h"
#include "simd/pixels-inl.h"
#include "simd/sinks-inl.h"
// Sources that stand alone.
#include "bayer/mosaic_sources-inl.h"
#include "convert/mono_sources-inl.h"
#include "convert/rgb_sources-inl.h"
#include "convert/yuv_sources-inl.h"
#include "cygm/cygm_source-inl.h"
#include "simd/rows-inl.h"
// What builds on them.
#include "bayer/binned_source-inl.h"
#include "bayer/corrected_sources-inl.h"
#include "bayer/corrected_words-inl.h"
#include "bayer/deep_mosaic_sources-inl.h"
#include "bayer/demosaic_rows-inl.h"
#include "bayer/directional_rows-inl.h"
#include "convert/depth_rows-inl.h"
#include "convert/planes_rows-inl.h"
#include "cygm/cygm_window_sources-inl.h"
// And on those.
#include "convert/bin_rows-inl.h"
#include "convert/bin_sums_rows-inl.h"
#include "convert/flip_rows-inl.h"
#include "convert/i420_rows-inl.h"
#include "convert/resample_rows-inl.h"
#include "convert/resample_steps_rows-inl.h"
#include "convert/turn_rows-inl.h"
#include "simd/direct_list-inl.h"

namespace lum {
namespace LUM_LEVEL {
namespace {

template <>
constexpr bool kPrefetchesKept<Mono8Source> = !kLoadsRunAhead;
template <bool bgr, bool swapped>
constexpr bool kPrefetchesKept<Packed24Source<bgr, swapped>> = !kLoadsRunAhead;
template <>
constexpr bool kFewInstructions<Mono8Source> = true;
template <>
constexpr bool kFewInstructions<Mono12Packed> = true;
template <bool second>
constexpr bool kFewInstructions<Mono16High<second>> = true;
template <>
constexpr bool kFewInstructions<Mono16To8> = true;
template <>
constexpr bool kFewInstructions<Mono16To16> = true;
template <class Layout>
constexpr bool kFewInstructions<YuvLuma<Layout>> = true;
template <>
constexpr bool kFewInstructions<Yuv411To422> = true;
// Cut where it was found to gain most; in two rows at once only registers for both make it one.
template <class Layout>
constexpr Cut kCut<YuvSource<Layout>> = Cut::behind_load;
template <class Layout>
constexpr Cut kCut<StudioYuvSource<Layout>> = Cut::behind_block;
template <class Layout>
constexpr Cut kCut<StudioProductsSource<Layout>> = Cut::behind_block;
template <class Layout>
constexpr Cut kCut<StudioProducts444<Layout>> = Cut::behind_block;
template <>
constexpr Cut kCut<Yuv444> = Cut::behind_load;
template <>
constexpr Cut kCut<StudioYuv444> = Cut::behind_load;
template <>
constexpr Cut kCut<Corrected8<Bgr24Samples>> = Cut::behind_load;
template <bool wraps>
constexpr Cut kCut<Corrected8<MosaicPairs8, wraps>> = Cut::behind_block;
template <bool wraps>
constexpr Cut kCut<MosaicWordsCorrectedTo8<wraps>> = Cut::behind_block;
template <>
constexpr Cut kCut<Mosaic8Binned> = Cut::behind_block;
template <>
constexpr Cut kCut<CygmBinned> = Cut::behind_block;
template <>
constexpr Cut kCut<Cygm> = kManyRegisters ? Cut::behind_block : Cut::none;
template <>
constexpr Cut kCut<Bilinear> = Cut::behind_block;
template <>
constexpr Cut kCut<Mono12Packed> = Cut::behind_block;
template <>
constexpr bool kMirrors<Bilinear> = true;
template <>
constexpr Pairs kPairs<Mosaic8> = Pairs::by_turns;
template <>
constexpr Pairs kPairs<Mosaic8Pairs> = Pairs::by_turns;
template <>
constexpr Pairs kPairs<Mosaic16> = Pairs::by_turns;
template <>
constexpr Pairs kPairs<Mosaic16Triples<false>> = Pairs::by_turns;
template <>
constexpr Pairs kPairs<Cygm> = Pairs::of_one_b;

template <Source source, Sink sink, class From, class To, bool in_place = false>
constexpr void add(Kernels& k) {
  constexpr size_t kSource = static_cast<size_t>(source), kSink = static_cast<size_t>(sink);
  k.row[kSource][kSink] = row<From, To, in_place>;
  if constexpr (kStreams && is_memory_bound(source, sink, kLanes)) {
    k.streamed[kSource][kSink] = streamed_row<From, To>;
  }
}
// Grey has no luminance to choose, and with Second = Rec601 one kernel for both.
template <Source source, class From, class Second = Rec709>
constexpr void add_mono8(Kernels& k) {
  add<source, Sink::mono8_rec601, From, Mono8<Rec601>>(k);
  add<source, Sink::mono8_rec709, From, Mono8<Second>>(k);
}
template <Source source, class From, class Second = Rec709>
constexpr void add_mono16(Kernels& k) {
  add<source, Sink::mono16_rec601, From, Mono16<Rec601>>(k);
  add<source, Sink::mono16_rec709, From, Mono16<Second>>(k);
}
// Nor has it an order of channels, and with bgr = false one kernel for each pixel size.
template <Source source, class From, bool bgr = true>
constexpr void add_packed(Kernels& k) {
  add<source, Sink::bgr24, From, Packed24<bgr>>(k);
  add<source, Sink::rgb24, From, Packed24<false>>(k);
  add<source, Sink::bgra32, From, Packed32<bgr>>(k);
  add<source, Sink::rgba32, From, Packed32<false>>(k);
}
template <Source source, class From, bool bgr = true>
constexpr void add_packed48(Kernels& k) {
  add<source, Sink::bgr48, From, Packed48<bgr>>(k);
  add<source, Sink::rgb48, From, Packed48<false>>(k);
}
template <Source source, class From>
constexpr void add_colour(Kernels& k) {
  add_mono8<source, From>(k);
  add_packed<source, From>(k);
}

// RGB and BGR memory differ by name only, so `other` shares the kernels of `source` with the names
// of red and blue exchanged.
constexpr void share_swapped(Kernels& k, Source source, Source other) {
  constexpr Sink kSwapped[][2] = {{Sink::bgr24, Sink::rgb24},
                                  {Sink::rgb24, Sink::bgr24},
                                  {Sink::bgra32, Sink::rgba32},
                                  {Sink::rgba32, Sink::bgra32}};
  const size_t to = static_cast<size_t>(other), from = static_cast<size_t>(source);
  for (const auto& names : kSwapped) {
    const size_t sink = static_cast<size_t>(names[0]), same = static_cast<size_t>(names[1]);
    k.row[to][sink] = k.row[from][same];
    k.streamed[to][sink] = k.streamed[from][same];
  }
}

constexpr Kernels make_kernels() {
  Kernels k{};
  add_mono8<Source::mosaic8, Mosaic8Pairs>(k);
  add_packed<Source::mosaic8, Mosaic8>(k);
  add<Source::mosaic8, Sink::uyvy, Mosaic8Pairs, Uyvy>(k);
  add_mono16<Source::mosaic8, Mosaic8Pairs>(k);

  add_mono16<Source::mosaic16, Mosaic16Triples<false>>(k);
  add_packed48<Source::mosaic16, Mosaic16>(k);

  using Packed12To8 = Reduction<Mono12Packed, Mono8<Rec601>>;
  using WordsTo8 = Reduction<Mono16To8, Mono8<Rec601>>;
  using WordsTo16 = Reduction<Mono16To16, Mono16<Rec601>>;
  using Packed12Pairs = BesideDeep<Mosaic8Pairs, Packed12To8>;
  add_mono8<Source::mosaic8_beside_packed12, Packed12Pairs>(k);
  add_mono16<Source::mosaic8_beside_packed12, Packed12Pairs>(k);
  add_packed<Source::mosaic8_beside_packed12, BesideDeep<Mosaic8, Packed12To8>>(k);
  add_mono8<Source::mosaic8_beside_words, BesideDeep<Mosaic8Pairs, WordsTo8>>(k);
  add_packed<Source::mosaic8_beside_words, BesideDeep<Mosaic8, WordsTo8>>(k);
  add_mono16<Source::mosaic16_beside_words, BesideDeep<Mosaic16Triples<false>, WordsTo16>>(k);
  add_packed48<Source::mosaic16_beside_words, BesideDeep<Mosaic16, WordsTo16>>(k);
  // Where a vector is a line: two pages on, whose addresses are then known when they are read.
  k.streamed_ahead = kLanes == kCacheLine ? 4 * kPrefetchDistance : kPrefetchDistance;
  k.least_beside_deep = kManyRegisters ? 640 : SIZE_MAX;  // registers for both

  add_packed<Source::mono8, Mono8Source, false>(k);
  add<Source::mono8, Sink::uyvy, Mono8Source, Uyvy>(k);

  add_mono8<Source::mono12_packed, Mono12Packed, Rec601>(k);
  add_packed<Source::mono12_packed, Mono12Packed, false>(k);
  add_mono16<Source::mono12_packed, Mono12PackedTo16, Rec601>(k);

  add_mono8<Source::mono16_tinted, Mono16High<false>, Rec601>(k);
  add_mono8<Source::mono16_second, Mono16High<true>, Rec601>(k);
  add_packed<Source::mono16_tinted, Mono16Tinted>(k);

  add_mono8<Source::mono16, Mono16To8, Rec601>(k);
  add_packed<Source::mono16, Mono16To8, false>(k);
  add_mono16<Source::mono16, Mono16To16, Rec601>(k);
  add_packed48<Source::mono16, Mono16To16, false>(k);

  using Rgb24 = Packed24Source<false>;
  add_mono8<Source::rgb24, Rgb24>(k);
  add<Source::rgb24, Sink::bgr24, Swapped24Source<false>, Packed24<true>, true>(k);
  add<Source::rgb24, Sink::rgba32, Rgb24, Packed32<false>>(k);
  add<Source::rgb24, Sink::bgra32, Packed24Source<false, true>, Packed32<true>>(k);
  add_mono8<Source::bgr24, Packed24Source<true>>(k);
  share_swapped(k, Source::rgb24, Source::bgr24);

  using Rgba32 = Packed32Source<false>;
  add_mono8<Source::rgba32, Rgba32>(k);
  add<Source::rgba32, Sink::rgb24, Rgba32, Packed24<false>>(k);
  add<Source::rgba32, Sink::bgr24, Rgba32, Packed24<true>>(k);
  add<Source::rgba32, Sink::bgra32, Rgba32, Packed32<true>, true>(k);
  add_mono8<Source::bgra32, Packed32Source<true>>(k);
  share_swapped(k, Source::rgba32, Source::bgra32);

  add_colour<Source::cygm, Cygm>(k);
  add<Source::cygm, Sink::uyvy, Cygm, Uyvy>(k);

  using Mosaic8Corrected = Corrected8<MosaicPairs8>;
  add_colour<Source::mosaic8_corrected, Mosaic8Corrected>(k);
  add<Source::mosaic8_corrected, Sink::uyvy, Mosaic8Corrected, Uyvy>(k);
  using Mosaic8Wrapped = Corrected8<MosaicPairs8, true>;
  add<Source::mosaic8_wrapped, Sink::mono8_rec601, Mosaic8Wrapped, Mono8<Rec601>>(k);
  using Mosaic12CorrectedTo8 = MosaicWordsCorrectedTo8<true>;
  add_colour<Source::mosaic12_corrected, Mosaic12CorrectedTo8>(k);
  add<Source::mosaic12_corrected, Sink::uyvy, Mosaic12CorrectedTo8, Uyvy>(k);
  using Mosaic16CorrectedTo8 = MosaicWordsCorrectedTo8<false>;
  add_colour<Source::mosaic16_corrected, Mosaic16CorrectedTo8>(k);
  add<Source::mosaic16_corrected, Sink::uyvy, Mosaic16CorrectedTo8, Uyvy>(k);
  using Mosaic16Corrected = Corrected16<Mosaic16>;
  add_mono16<Source::mosaic16_corrected, Mosaic16Corrected>(k);
  add_packed48<Source::mosaic16_corrected, Mosaic16Corrected>(k);
  using Bgr24Corrected = Corrected8<Bgr24Samples>;
  add<Source::bgr24_corrected, Sink::bgr24, Bgr24Corrected, Packed24<true>, true>(k);
  using Bgr48Corrected = Corrected16<Bgr48Samples>;
  add<Source::bgr48_corrected, Sink::bgr48, Bgr48Corrected, Packed48<true>, true>(k);

  // Y is BT.601 luminance already; BT.709 is made from R, G, B.
  add_colour<Source::yuv411, YuvSource<Yuv411Layout>>(k);
  add<Source::yuv411, Sink::mono8_rec601, YuvLuma<Yuv411Layout>, Mono8<Rec601>>(k);
  add<Source::yuv411, Sink::uyvy, Yuv411To422, Uyvy>(k);
  add_colour<Source::yuv422, YuvSource<Yuv422Layout>>(k);
  add<Source::yuv422, Sink::mono8_rec601, YuvLuma<Yuv422Layout>, Mono8<Rec601>>(k);
  add_colour<Source::yuv444, Yuv444>(k);
  add<Source::yuv444, Sink::mono8_rec601, Yuv444Luma, Mono8<Rec601>>(k);
  add<Source::yuv444, Sink::uyvy, Yuv444To422, Uyvy>(k);

  add_colour<Source::planes8, Planes8>(k);
  add<Source::planes8, Sink::uyvy, Planes8, Uyvy>(k);
  add_colour<Source::bilinear, Bilinear>(k);
  add<Source::bilinear, Sink::uyvy, Bilinear, Uyvy>(k);
  add_colour<Source::paired_chroma, PairedChroma>(k);
  add<Source::paired_chroma, Sink::uyvy, PairedChroma, Uyvy>(k);

  add_colour<Source::mosaic8_binned, Mosaic8Binned>(k);
  add<Source::mosaic8_binned, Sink::uyvy, Mosaic8Binned, Uyvy>(k);
  add_colour<Source::cygm_3x3, CygmWindow>(k);
  add<Source::cygm_3x3, Sink::uyvy, CygmWindow, Uyvy>(k);
  add<Source::cygm_3x3_luma, Sink::mono8_rec601, CygmWindowLuma, Mono8<Rec601>>(k);
  add_colour<Source::cygm_binned, CygmBinned>(k);
  add<Source::cygm_binned, Sink::uyvy, CygmBinned, Uyvy>(k);
  k.demosaic = {pair_sums,        kLanes / 2,      along_row, down_column,
                direction<false>, direction<true>, lcaa,      lcaav};

  k.direct = make_direct_kernels();

  k.exchange = exchange;
  if (kStreams) {
    k.stream = stream;
    k.end_stream = end_stream;
  }
  return k;
}

}  // namespace
}  // namespace LUM_LEVEL

#define LUM_JOIN_(a, b) a##b
#define LUM_JOIN(a, b) LUM_JOIN_(a, b)
extern const Kernels LUM_JOIN(kernels_, LUM_LEVEL);
constexpr Kernels LUM_JOIN(kernels_, LUM_LEVEL) = LUM_LEVEL::make_kernels();

}  // namespace lum
