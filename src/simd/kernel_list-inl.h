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
#include "convert/turn_rows-inl.h"
#include "simd/direct_list-inl.h"

namespace lum {
namespace LUM_LEVEL {
namespace {

constexpr RowKernel& cell(Kernels& k, Source source, Sink sink) {
  return k.row[static_cast<size_t>(source)][static_cast<size_t>(sink)];
}

template <class From>
constexpr void add_mono8(Kernels& k, Source source) {
  cell(k, source, Sink::mono8_rec601) = row<From, Mono8<Rec601>>;
  cell(k, source, Sink::mono8_rec709) = row<From, Mono8<Rec709>>;
}
// Grey has no channel order and no luminance to choose: one kernel for each pixel size.
template <class From>
constexpr void add_grey_colour(Kernels& k, Source source) {
  cell(k, source, Sink::bgr24) = cell(k, source, Sink::rgb24) = row<From, Packed24<false>>;
  cell(k, source, Sink::bgra32) = cell(k, source, Sink::rgba32) = row<From, Packed32<false>>;
}
template <class From>
constexpr void add_grey8(Kernels& k, Source source) {
  cell(k, source, Sink::mono8_rec601) = cell(k, source, Sink::mono8_rec709) =
      row<From, Mono8<Rec601>>;
  add_grey_colour<From>(k, source);
}
template <class From>
constexpr void add_colour(Kernels& k, Source source) {
  add_mono8<From>(k, source);
  cell(k, source, Sink::bgr24) = row<From, Packed24<true>>;
  cell(k, source, Sink::rgb24) = row<From, Packed24<false>>;
  cell(k, source, Sink::bgra32) = row<From, Packed32<true>>;
  cell(k, source, Sink::rgba32) = row<From, Packed32<false>>;
}
template <class From>
constexpr void add_mono16(Kernels& k, Source source) {
  cell(k, source, Sink::mono16_rec601) = row<From, Mono16<Rec601>>;
  cell(k, source, Sink::mono16_rec709) = row<From, Mono16<Rec709>>;
}

// RGB and BGR memory differ by name only, so `other` shares the kernels of `source` with the names
// of red and blue exchanged.
constexpr void share_swapped(Kernels& k, Source source, Source other) {
  cell(k, other, Sink::bgr24) = cell(k, source, Sink::rgb24);
  cell(k, other, Sink::rgb24) = cell(k, source, Sink::bgr24);
  cell(k, other, Sink::bgra32) = cell(k, source, Sink::rgba32);
  cell(k, other, Sink::rgba32) = cell(k, source, Sink::bgra32);
}

constexpr Kernels make_kernels() {
  Kernels k{};
  add_colour<Mosaic8>(k, Source::mosaic8);
  add_mono8<Mosaic8Pairs>(k, Source::mosaic8);
  cell(k, Source::mosaic8, Sink::uyvy) = row<Mosaic8Pairs, Uyvy>;
  add_mono16<Mosaic8Pairs>(k, Source::mosaic8);

  add_mono16<Mosaic16>(k, Source::mosaic16);
  cell(k, Source::mosaic16, Sink::bgr48) = row<Mosaic16, Packed48<true>>;
  cell(k, Source::mosaic16, Sink::rgb48) = row<Mosaic16, Packed48<false>>;

  add_grey_colour<Mono8Source>(k, Source::mono8);
  cell(k, Source::mono8, Sink::uyvy) = row<Mono8Source, Uyvy>;

  add_grey8<Mono12Packed>(k, Source::mono12_packed);
  cell(k, Source::mono12_packed, Sink::mono16_rec601) =
      cell(k, Source::mono12_packed, Sink::mono16_rec709) = row<Mono12PackedTo16, Mono16<Rec601>>;

  add_colour<Mono16Tinted>(k, Source::mono16_tinted);
  cell(k, Source::mono16_tinted, Sink::mono8_rec601) =
      cell(k, Source::mono16_tinted, Sink::mono8_rec709) = row<Mono16High, Mono8<Rec601>>;

  add_grey8<Mono16To8>(k, Source::mono16);
  cell(k, Source::mono16, Sink::mono16_rec601) = cell(k, Source::mono16, Sink::mono16_rec709) =
      row<Mono16To16, Mono16<Rec601>>;
  cell(k, Source::mono16, Sink::bgr48) = cell(k, Source::mono16, Sink::rgb48) =
      row<Mono16To16, Packed48<false>>;

  using Rgb24 = Packed24Source<false>;
  add_mono8<Cheaper24<false>::Type>(k, Source::rgb24);
  cell(k, Source::rgb24, Sink::bgr24) = row<Cheaper24<false>::Type, Packed24<true>, true>;
  cell(k, Source::rgb24, Sink::rgba32) = row<Rgb24, Packed32<false>>;
  cell(k, Source::rgb24, Sink::bgra32) = row<Rgb24, Packed32<true>>;
  add_mono8<Cheaper24<true>::Type>(k, Source::bgr24);
  share_swapped(k, Source::rgb24, Source::bgr24);

  using Rgba32 = Packed32Source<false>;
  add_mono8<Rgba32>(k, Source::rgba32);
  cell(k, Source::rgba32, Sink::rgb24) = row<Rgba32, Packed24<false>>;
  cell(k, Source::rgba32, Sink::bgr24) = row<Rgba32, Packed24<true>>;
  cell(k, Source::rgba32, Sink::bgra32) = row<Rgba32, Packed32<true>, true>;
  add_mono8<Packed32Source<true>>(k, Source::bgra32);
  share_swapped(k, Source::rgba32, Source::bgra32);

  add_colour<Cygm>(k, Source::cygm);
  cell(k, Source::cygm, Sink::uyvy) = row<Cygm, Uyvy>;

  using Mosaic8Corrected = Corrected8<MosaicPairs8>;
  add_colour<Mosaic8Corrected>(k, Source::mosaic8_corrected);
  cell(k, Source::mosaic8_corrected, Sink::uyvy) = row<Mosaic8Corrected, Uyvy>;
  cell(k, Source::mosaic8_wrapped, Sink::mono8_rec601) =
      row<Corrected8<MosaicPairs8, true>, Mono8<Rec601>>;
  add_colour<Mosaic16CorrectedTo8>(k, Source::mosaic16_corrected);
  cell(k, Source::mosaic16_corrected, Sink::uyvy) = row<Mosaic16CorrectedTo8, Uyvy>;
  using Mosaic16Corrected = Corrected16<Mosaic16>;
  add_mono16<Mosaic16Corrected>(k, Source::mosaic16_corrected);
  cell(k, Source::mosaic16_corrected, Sink::bgr48) = row<Mosaic16Corrected, Packed48<true>>;
  cell(k, Source::mosaic16_corrected, Sink::rgb48) = row<Mosaic16Corrected, Packed48<false>>;
  cell(k, Source::bgr24_corrected, Sink::bgr24) =
      row<Corrected8<Bgr24Samples>, Packed24<true>, true>;
  cell(k, Source::bgr48_corrected, Sink::bgr48) =
      row<Corrected16<Bgr48Samples>, Packed48<true>, true>;

  // Y is BT.601 luminance already; BT.709 is made from R, G, B.
  add_colour<YuvSource<Yuv411Layout>>(k, Source::yuv411);
  cell(k, Source::yuv411, Sink::mono8_rec601) = row<YuvLuma<Yuv411Layout>, Mono8<Rec601>>;
  cell(k, Source::yuv411, Sink::uyvy) = row<Yuv411To422, Uyvy>;
  add_colour<YuvSource<Yuv422Layout>>(k, Source::yuv422);
  cell(k, Source::yuv422, Sink::mono8_rec601) = row<YuvLuma<Yuv422Layout>, Mono8<Rec601>>;
  add_colour<Yuv444>(k, Source::yuv444);
  cell(k, Source::yuv444, Sink::mono8_rec601) = row<Yuv444Luma, Mono8<Rec601>>;
  cell(k, Source::yuv444, Sink::uyvy) = row<Yuv444To422, Uyvy>;

  add_colour<Planes8>(k, Source::planes8);
  cell(k, Source::planes8, Sink::uyvy) = row<Planes8, Uyvy>;
  add_colour<Bilinear>(k, Source::bilinear);
  cell(k, Source::bilinear, Sink::uyvy) = row<Bilinear, Uyvy>;
  add_colour<PairedChroma>(k, Source::paired_chroma);
  cell(k, Source::paired_chroma, Sink::uyvy) = row<PairedChroma, Uyvy>;

  add_colour<Mosaic8Binned>(k, Source::mosaic8_binned);
  cell(k, Source::mosaic8_binned, Sink::uyvy) = row<Mosaic8Binned, Uyvy>;
  add_colour<CygmWindow>(k, Source::cygm_3x3);
  cell(k, Source::cygm_3x3, Sink::uyvy) = row<CygmWindow, Uyvy>;
  cell(k, Source::cygm_3x3_luma, Sink::mono8_rec601) = row<CygmWindowLuma, Mono8<Rec601>>;
  add_colour<CygmBinned>(k, Source::cygm_binned);
  cell(k, Source::cygm_binned, Sink::uyvy) = row<CygmBinned, Uyvy>;
  k.demosaic = {kLanes / 2, widen, along_row, down_column, direction, lcaa, lcaav};

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
