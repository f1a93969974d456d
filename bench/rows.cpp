// SPDX-License-Identifier: MIT
#include "rows.h"

#include "bayer/binned.h"
#include "bayer/demosaic.h"
#include "bayer/mosaic.h"
#include "convert/flat.h"
#include "convert/rows.h"
#include "cygm/cygm.h"
#include "cygm/cygm_window.h"

namespace lum::bench {
namespace {

// The cells that exist are the same at every level.
bool has(Source source, Sink sink) { return kernels_of(Level::base)->at(source, sink) != nullptr; }

const SinkTraits& traits(Sink sink) { return kSinks[static_cast<size_t>(sink)]; }
const SourceTraits& traits(Source source) { return kSources[static_cast<size_t>(source)]; }

template <class F>
void each_sink(F f) {
  for (size_t i = 0; i < kSinkCount; ++i) f(static_cast<Sink>(i));
}

// A row from frames of `source` to `sink`, with `run` to be filled in.
Row row_of(const std::string& source_name, Source source, Sink sink) {
  const SourceTraits& in = traits(source);
  const SinkTraits& out = traits(sink);
  const bool own_alpha = source == Source::rgba32 || source == Source::bgra32;
  Row row = {source_name + "-to-" + out.name,
             in.group_pixels,
             in.group_bytes,
             out.pixel_bytes,
             out.pixel_bytes == 4 && !own_alpha,
             false,
             2,
             2,
             {}};
  if (in.group_pixels > row.width_multiple) row.width_multiple = in.group_pixels;
  return row;
}

constexpr RedPhase kRed = red_phase(0);
MosaicFrame mosaic_frame(const Frame& f, Sink sink) {
  return {f.dst, f.src, f.width, f.height, kRed, sink};
}

// In row names 12p is 12 bits packed, 12le and 12be are 12 bits in words of either byte order.
constexpr uint32_t kShift12 = 4;  // 12 significant bits to the top of a word

void add_mosaics(std::vector<Row>& rows) {
  const auto add_reduced = [&](const char* name, Sink sink, Source mosaic, Reduction reduction) {
    if (!has(mosaic, sink) || sink == Sink::uyvy) return;
    Row row = row_of(name, reduction.source, sink);
    row.run = [=](const Kernels& k, const Frame& f) {
      convert_mosaic_reduced(k, mosaic_frame(f, sink), reduction, mosaic);
    };
    rows.push_back(row);
  };
  const auto words_or_bytes = [](const Reduction& r) {
    return r.sink == Sink::mono16_rec601 ? Source::mosaic16 : Source::mosaic8;
  };
  each_sink([&](Sink sink) {
    if (!has(Source::mosaic8, sink) || sink > Sink::uyvy) return;  // bytes to 8-bit formats only
    Row row = row_of("bayer8", Source::mosaic8, sink);
    row.run = [=](const Kernels& k, const Frame& f) { convert_mosaic8(k, mosaic_frame(f, sink)); };
    rows.push_back(row);
  });
  each_sink(
      [&](Sink sink) { add_reduced("bayer12p", sink, Source::mosaic8, kReduceMono12Packed); });
  each_sink([&](Sink sink) {
    const Reduction big_endian = reduce_mono16(sink, 0, 1);
    add_reduced("bayer16be", sink, words_or_bytes(big_endian), big_endian);
  });
  each_sink([&](Sink sink) {
    const Reduction in_words = reduce_mono16(sink, kShift12, 0);
    add_reduced("bayer12le", sink, words_or_bytes(in_words), in_words);
  });
}

void add_demosaics(std::vector<Row>& rows) {
  struct Named {
    const char* name;
    DemosaicMode mode;
  };
  constexpr Named kModes[] = {{"bayer8-3x3", DemosaicMode::bilinear},
                              {"bayer8-yuv422", DemosaicMode::yuv422},
                              {"bayer8-lcaa", DemosaicMode::lcaa},
                              {"bayer8-lcaav", DemosaicMode::lcaav}};
  for (const Named& named : kModes) {
    for (const Sink sink : {Sink::bgr24, Sink::bgra32, Sink::mono8_rec601, Sink::uyvy}) {
      Row row = row_of(named.name, Source::mosaic8, sink);
      const DemosaicMode mode = named.mode;
      row.run = [=](const Kernels& k, const Frame& f) {
        convert_demosaic(k, mosaic_frame(f, sink), mode);
      };
      rows.push_back(row);
    }
  }
}

// Binned frames are measured by the pixels that are written: each has four of the mosaic's samples.
constexpr unsigned kBinnedBytes = 4;
MosaicFrame binned_frame(const Frame& f, Sink sink) {
  return {f.dst, f.src, 2 * f.width, 2 * f.height, kRed, sink};
}

void add_binned(std::vector<Row>& rows) {
  for (const Sink sink : {Sink::bgr24, Sink::mono8_rec601, Sink::uyvy}) {
    Row bayer = row_of("bayer8-bin", Source::mosaic8, sink);
    bayer.group_bytes = kBinnedBytes;
    bayer.run = [=](const Kernels& k, const Frame& f) {
      convert_mosaic_binned(k, binned_frame(f, sink));
    };
    rows.push_back(bayer);
    Row cygm = row_of("cygm-bin", Source::cygm, sink);
    cygm.group_bytes = kBinnedBytes;
    cygm.run = [=](const Kernels& k, const Frame& f) {
      convert_cygm_binned(k, sink, f.dst, f.src, 2 * f.width, 2 * f.height);
    };
    rows.push_back(cygm);
  }
}

constexpr uint32_t kMatrixScale = 10;

RowArgs matrix_args(uint32_t scale) {
  RowArgs args;
  args.matrix = kMatrixTimes1024;
  args.scale = scale;
  return args;
}

void add_matrices(std::vector<Row>& rows) {
  const auto add8 = [&](Source mosaic, Sink sink) {
    Row row = row_of("bayer8-matrix", mosaic, sink);
    row.run = [=](const Kernels& k, const Frame& f) {
      convert_mosaic8(k, mosaic_frame(f, sink), mosaic, matrix_args(kMatrixScale));
    };
    rows.push_back(row);
  };
  const auto add_deep = [&](const char* name, Sink sink, const Reduction& reduction, uint32_t scale,
                            Source mosaic = Source::mosaic16_corrected) {
    Row row = row_of(name, reduction.source, sink);
    row.run = [=](const Kernels& k, const Frame& f) {
      convert_mosaic_reduced(k, mosaic_frame(f, sink), reduction, mosaic, matrix_args(scale));
    };
    rows.push_back(row);
  };
  add8(Source::mosaic8_corrected, Sink::bgr24);
  add8(Source::mosaic8_corrected, Sink::uyvy);
  add8(Source::mosaic8_wrapped, Sink::mono8_rec601);
  Reduction packed = {Source::mono12_packed, Sink::mono16_rec601, {}};
  packed.args.shift = kShift12To8;
  add_deep("bayer12p-matrix", Sink::bgr24, packed, kScale12To8, Source::mosaic12_corrected);
  packed.args.shift = kShift12;
  add_deep("bayer12p-matrix", Sink::bgr48, packed, kMatrixScale);
  for (const Sink sink : {Sink::mono16_rec601, Sink::bgr48}) {
    add_deep("bayer12le-matrix", sink, reduce_mono16(sink, kShift12, 0), kMatrixScale);
  }
  add_deep("bayer12le-matrix", Sink::bgr24, reduce_mono16(Sink::mono16_rec601, kShift12, 0),
           kScale16To8);
  for (const bool deep : {false, true}) {
    const Source source = deep ? Source::bgr48_corrected : Source::bgr24_corrected;
    const Sink sink = deep ? Sink::bgr48 : Sink::bgr24;
    Row row = row_of(deep ? "bgr48-matrix" : "bgr24-matrix", source, sink);
    row.run = [=](const Kernels& k, const Frame& f) {
      convert_flat(k, source, sink, f.dst, f.src, f.width * f.height, matrix_args(kMatrixScale));
    };
    rows.push_back(row);
    row.name += "-in-place";
    row.in_place = true;
    rows.push_back(row);
  }
}

void add_flat(std::vector<Row>& rows) {
  struct Named {
    const char* name;
    Source source;
    uint32_t shift, big_endian;
  };
  constexpr Named kFlat[] = {
      {"mono8", Source::mono8, 0, 0},
      {"mono12p", Source::mono12_packed, 0, 0},
      {"mono16be", Source::mono16_tinted, 0, 0},
      {"mono12le", Source::mono16, kShift12, 0},
      {"mono12be", Source::mono16, kShift12, 1},
      {"rgb24", Source::rgb24, 0, 0},
      {"bgr24", Source::bgr24, 0, 0},
      {"rgba32", Source::rgba32, 0, 0},
      {"bgra32", Source::bgra32, 0, 0},
      {"yuv411", Source::yuv411, 0, 0},
      {"yuv422", Source::yuv422, 0, 0},
      {"yuv444", Source::yuv444, 0, 0},
  };
  for (const Named& from : kFlat) {
    RowArgs args;
    args.shift = from.shift;
    args.big_endian = from.big_endian;
    const Source source = from.source;
    each_sink([&](Sink sink) {
      if (!has(source, sink)) return;  // a copy, or no conversion
      Row row = row_of(from.name, source, sink);
      row.run = [=](const Kernels& k, const Frame& f) {
        convert_flat(k, source, sink, f.dst, f.src, f.width * f.height, args);
      };
      rows.push_back(row);
    });
  }
  each_sink([&](Sink sink) {
    if (!has(Source::mono16_tinted, sink)) return;
    Row row = row_of("mono16le", Source::mono16_tinted, sink);
    row.run = [=](const Kernels& k, const Frame& f) {
      mono16_little_endian_tinted(k, sink, f.dst, f.src, f.width * f.height);
    };
    rows.push_back(row);
  });
  Row swap = row_of("rgb24", Source::rgb24, Sink::bgr24);
  swap.name += "-in-place";
  swap.in_place = true;
  swap.run = [](const Kernels& k, const Frame& f) {
    convert_flat(k, Source::rgb24, Sink::bgr24, f.dst, f.src, f.width * f.height);
  };
  rows.push_back(swap);
}

void add_cygm(std::vector<Row>& rows) {
  each_sink([&](Sink sink) {
    if (!has(Source::cygm, sink)) return;
    Row row = row_of("cygm", Source::cygm, sink);
    row.height_multiple = 4;
    row.run = [=](const Kernels& k, const Frame& f) {
      convert_cygm(k, sink, f.dst, f.src, f.width, f.height);
    };
    rows.push_back(row);
  });
  for (const Sink sink : {Sink::bgr24, Sink::bgra32, Sink::mono8_rec601, Sink::uyvy}) {
    Row row = row_of("cygm-3x3", Source::cygm, sink);
    row.height_multiple = 4;
    row.run = [=](const Kernels& k, const Frame& f) {
      convert_cygm_3x3(k, sink, f.dst, f.src, f.width, f.height);
    };
    rows.push_back(row);
  }
  Row luma = row_of("cygm-luma", Source::cygm, Sink::mono8_rec601);
  luma.height_multiple = 4;
  luma.run = [](const Kernels& k, const Frame& f) {
    convert_cygm_to_luma(k, f.dst, f.src, f.width, f.height);
  };
  rows.push_back(luma);
  Row older = row_of("cygm", Source::cygm, Sink::bgr24);
  older.name += "-older-entry";
  older.height_multiple = 4;
  older.run = [](const Kernels& k, const Frame& f) {
    convert_cygm_to_bgr(k, f.dst, f.src, f.width, f.height);
  };
  rows.push_back(older);
}

// Rows of 24-bit pixels, moved as they are.
void add_row_moves(std::vector<Row>& rows) {
  constexpr unsigned kPixelBytes = 3;
  Row flip = {"flip-bgr24", 1, kPixelBytes, kPixelBytes, false, true, 1, 2, {}};
  flip.run = [](const Kernels& k, const Frame& f) {
    flip_vertical(k, f.dst, f.width * kPixelBytes, f.height);
  };
  rows.push_back(flip);
  Row weave = {"deinterlace-bgr24", 1, kPixelBytes, kPixelBytes, false, false, 2, 2, {}};
  weave.run = [](const Kernels& k, const Frame& f) {
    interlaced_to_progressive(k, f.dst, f.src, f.width * kPixelBytes, f.height);
  };
  rows.push_back(weave);
}

}  // namespace

Traffic Row::traffic(uint32_t width, uint32_t height) const {
  const size_t pixels = size_t{width} * height;
  return {pixels / group_pixels * group_bytes, pixels / dst_group_pixels * pixel_bytes,
          keeps_fourth, in_place};
}

std::vector<Row> all_rows() {
  std::vector<Row> rows;
  add_mosaics(rows);
  add_demosaics(rows);
  add_matrices(rows);
  add_cygm(rows);
  add_binned(rows);
  add_flat(rows);
  add_row_moves(rows);
  add_direct(rows);
  return rows;
}

}  // namespace lum::bench
