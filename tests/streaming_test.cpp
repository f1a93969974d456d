// SPDX-License-Identifier: MIT
// Frames that are streamed past the cache have the bytes of those that are not, at any alignment,
// and nothing around them is touched.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>

#include "bayer/binned.h"
#include "bayer/colour_correction.h"
#include "bayer/demosaic.h"
#include "convert/flat.h"
#include "convert/rows.h"
#include "cygm/cygm.h"
#include "cygm/cygm_window.h"
#include "direct_support.h"

namespace lum::test {
namespace {

struct Conversion {
  std::string name;
  size_t src_bytes, dst_bytes;  // of a pixel, at most
  std::function<void(const Kernels&, uint8_t* dst, const uint8_t* src, uint32_t width,
                     uint32_t height)>
      run;
};

// What the sources that correct colours need to know; the others do not look.
constexpr int32_t kMatrix[9] = {1590, -430, -136, -210, 1480, -246, -60, -540, 1624};
RowArgs with_matrix() {
  RowArgs args;
  args.matrix = kMatrix;
  args.scale = 10;
  return args;
}

ColourMatrix colour_matrix() {
  float coefficients[9];
  for (int i = 0; i < 9; ++i) coefficients[i] = static_cast<float>(kMatrix[i]) / 1024;
  return make_colour_matrix(kMatrixKindDeep, coefficients);
}

std::vector<Conversion> flat_conversions() {
  std::vector<Conversion> list;
  const Kernels& base = *kernels_of(Level::base);
  for (size_t s = 0; s < kSourceCount; ++s) {
    const Source source = static_cast<Source>(s);
    const bool from_window = source == Source::bilinear || source == Source::paired_chroma ||
                             source == Source::planes8 || source == Source::mosaic8_binned ||
                             source == Source::cygm_binned;
    if (from_window || kSources[s].rows != 1) continue;
    for (size_t d = 0; d < kSinkCount; ++d) {
      const Sink sink = static_cast<Sink>(d);
      if (!is_memory_bound(source, sink) || base.at(source, sink) == nullptr) continue;
      list.push_back({std::string(kSources[s].name) + " to " + kSinks[d].name, 6, 6,
                      [=](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width,
                          uint32_t height) {
                        convert_flat(k, source, sink, dst, src, width * height, with_matrix());
                      }});
    }
  }
  for (const uint32_t channels : {2, 3, 4}) {
    for (const uint32_t bytes : {1, 2}) {
      const std::string kind = std::to_string(channels) + " planes of " + std::to_string(bytes);
      list.push_back(
          {"joined " + kind, 8, 8,
           [=](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width,
               uint32_t height) {
             const uint32_t n = width * height;
             const uint8_t* const planes[] = {src, src + 2 * n, src + 4 * n, src + 6 * n};
             planar_to_packed(k, dst, planes, n, channels, bytes);
           }});
      list.push_back({kind, 8, 8,
                      [=](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width,
                          uint32_t height) {
                        const uint32_t n = width * height;
                        uint8_t* const planes[] = {dst, dst + 2 * n, dst + 4 * n, dst + 6 * n};
                        packed_to_planar(k, planes, src, n - 1, channels, bytes);
                      }});
    }
  }
  list.push_back({"words to bytes", 2, 1,
                  [](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width,
                     uint32_t height) { samples_16_to_8(k, dst, src, width * height, 4, 1); }});
  for (const Source source : {Source::yuv411, Source::yuv422, Source::yuv444}) {
    list.push_back(
        {"studio " + std::to_string(static_cast<int>(source)), 3, 3,
         [=](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height) {
           yuv_to_bgr(k, source, YuvEncoding::studio601, dst, src, width * height);
         }});
  }
  for (uint32_t packing = 0; packing < kPackingCount; ++packing) {
    list.push_back(
        {"packing " + std::to_string(packing), 2, 2,
         [=](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height) {
           unpack_to_16(k, dst, src, width * height, packing, 4, 1);
         }});
  }
  return list;
}

std::vector<Conversion> frame_conversions() {
  std::vector<Conversion> list;
  const auto add_mosaic = [&list](const std::string& name, std::initializer_list<Sink> sinks,
                                  auto convert) {
    for (const Sink sink : sinks) {
      list.push_back({name + " to " + kSinks[static_cast<size_t>(sink)].name, 2, 6,
                      [=](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width,
                          uint32_t height) {
                        convert(k, MosaicFrame{dst, src, width, height, red_phase(1), sink});
                      }});
    }
  };
  const auto as_it_is = [](const Kernels& k, const MosaicFrame& f) { convert_mosaic8(k, f); };
  const auto packed = [](const Kernels& k, const MosaicFrame& f) {
    convert_mosaic_reduced(k, f, kReduceMono12Packed, Source::mosaic8);
  };
  const auto words = [](const Kernels& k, const MosaicFrame& f) {
    const Source mosaic = f.sink >= Sink::mono16_rec601 ? Source::mosaic16 : Source::mosaic8;
    convert_mosaic_reduced(k, f, reduce_mono16(f.sink, 4, 0), mosaic);
  };
  const auto corrected = [](const Kernels& k, const MosaicFrame& f) {
    convert_mosaic8(k, f, Source::mosaic8_corrected, with_matrix());
  };
  const auto packed_corrected = [](const Kernels& k, const MosaicFrame& f) {
    correct_raw12(k, f, colour_matrix());
  };
  const auto words_corrected = [](const Kernels& k, const MosaicFrame& f) {
    correct_raw16(k, f, 4, 0, colour_matrix());
  };
  const auto cygm = [](const Kernels& k, const MosaicFrame& f) {
    convert_cygm(k, f.sink, f.dst, f.src, f.width, f.height);
  };
  const auto demosaic = [](DemosaicMode mode) {
    return [mode](const Kernels& k, const MosaicFrame& f) { convert_demosaic(k, f, mode); };
  };
  const auto cygm_binned = [](const Kernels& k, const MosaicFrame& f) {
    convert_cygm_binned(k, f.sink, f.dst, f.src, f.width, f.height);
  };
  add_mosaic("mosaic", {Sink::bgr24, Sink::mono8_rec601, Sink::uyvy, Sink::bgra32}, as_it_is);
  add_mosaic("mosaic of packed words",
             {Sink::rgb24, Sink::mono8_rec601, Sink::mono16_rec709, Sink::bgra32}, packed);
  add_mosaic("mosaic of words",
             {Sink::bgr24, Sink::mono8_rec709, Sink::bgra32, Sink::bgr48, Sink::mono16_rec601},
             words);
  add_mosaic("mosaic by a matrix", {Sink::bgr24, Sink::mono8_rec601}, corrected);
  add_mosaic("mosaic of packed words by a matrix", {Sink::bgr24, Sink::bgr48}, packed_corrected);
  add_mosaic("mosaic of words by a matrix", {Sink::bgr24, Sink::bgr48}, words_corrected);
  add_mosaic("complementary", {Sink::rgb24, Sink::mono8_rec601}, cygm);
  add_mosaic("3x3", {Sink::bgr24, Sink::rgb24}, demosaic(DemosaicMode::bilinear));
  add_mosaic("yuv422", {Sink::bgr24}, demosaic(DemosaicMode::yuv422));
  add_mosaic("lcaa", {Sink::bgr24, Sink::bgra32}, demosaic(DemosaicMode::lcaa));
  add_mosaic("lcaav", {Sink::bgr24}, demosaic(DemosaicMode::lcaav));
  add_mosaic("binned", {Sink::bgr24, Sink::mono8_rec709}, convert_mosaic_binned);
  add_mosaic("binned complementary", {Sink::bgr24, Sink::mono8_rec709}, cygm_binned);
  list.push_back({"upside down", 3, 3,
                  [](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width,
                     uint32_t height) { flip(k, dst, src, width, height, 3, kUpsideDown); }});
  for (uint32_t pixel_bytes = 1; pixel_bytes <= 16; ++pixel_bytes) {
    for (const uint32_t mode : {kMirror, kMirror | kUpsideDown}) {
      list.push_back(
          {"flip " + std::to_string(mode) + " of " + std::to_string(pixel_bytes), pixel_bytes,
           pixel_bytes,
           [=](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width,
               uint32_t height) { flip(k, dst, src, width, height, pixel_bytes, mode); }});
    }
  }
  for (const PixelShape shape : {PixelShape{1, 1}, PixelShape{3, 1}, PixelShape{1, 2}}) {
    for (const Resampling mode : {Resampling::nearest, Resampling::linear}) {
      const uint32_t bytes = static_cast<uint32_t>(shape.bytes());
      list.push_back(
          {"resized " + std::to_string(static_cast<int>(mode)) + " of " + std::to_string(bytes),
           bytes, bytes,
           [=](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width,
               uint32_t height) {
             resize(k, dst, src, {width * 2 / 3, height * 2 / 3}, {width, height}, shape, mode);
           }});
    }
  }
  for (uint32_t layout = 0; layout <= LumPixelLayoutYUV444; ++layout) {
    Source source;
    if (!i420_source(layout, &source)) continue;
    list.push_back({std::string(kSources[static_cast<size_t>(source)].name) + " to I420", 4, 2,
                    [=](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width,
                        uint32_t height) { image_to_i420(k, layout, dst, src, width, height); }});
  }
  list.push_back(
      {"interlaced to progressive", 3, 3,
       [](const Kernels& k, uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height) {
         interlaced_to_progressive(k, dst, src, 3 * width, height);
       }});
  return list;
}

void compare(const Kernels& kernels, const std::string& level, const Conversion& conversion,
             uint32_t width, uint32_t height) {
  Kernels cached = kernels, streamed = kernels;
  cached.stream_above = SIZE_MAX;
  streamed.stream_above = 1;
  const size_t pixels = size_t{width} * height;
  const Bytes src = random_bytes(pixels * conversion.src_bytes, pixels);
  // From the beginning of a line of the cache: pixels may begin there, further on, or nowhere.
  for (const size_t offset : {0, 1, 2, 16, 37, 58, 60, 62}) {
    Bytes expected = random_bytes(pixels * conversion.dst_bytes + 4 * kCacheLine, 7),
          actual = expected;
    const size_t to_line = -reinterpret_cast<uintptr_t>(actual.data()) % kCacheLine;
    const size_t at = kCacheLine + to_line + offset;
    conversion.run(cached, expected.data() + at, src.data(), width, height);
    conversion.run(streamed, actual.data() + at, src.data(), width, height);
    ASSERT_TRUE(expected == actual) << conversion.name << ", " << width << " x " << height
                                    << ", offset " << offset << ", level " << level;
  }
}

// Without its kernel a cell would be written in the ordinary way, and nothing below compare it.
TEST(Streaming, MemoryBoundCellsHaveKernels) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    for (size_t s = 0; s < kSourceCount; ++s) {
      for (size_t d = 0; d < kSinkCount; ++d) {
        const bool expected = kernels.stream != nullptr && kernels.row[s][d] != nullptr &&
                              is_memory_bound(static_cast<Source>(s), static_cast<Sink>(d),
                                              2 * kernels.demosaic.step);
        EXPECT_EQ(kernels.streamed[s][d] != nullptr, expected)
            << kSources[s].name << " to " << kSinks[d].name << ", level " << level;
      }
    }
  });
}

// Where no line begins with a pixel, the pieces in which rows are streamed have 512 to 4096 pixels.
TEST(Streaming, FlatRunsHaveTheSameBytes) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    if (kernels.stream == nullptr) return;
    for (const Conversion& conversion : flat_conversions()) {
      for (const uint32_t width : {4, 64, 196, 2048, 2052, 6148}) {
        compare(kernels, level, conversion, width, 1);
        if (HasFatalFailure()) return;
      }
    }
  });
}

// The last pixel of an odd row is made of the one before it, which must not be in another piece.
TEST(Streaming, OddMosaicsHaveTheSameBytes) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    if (kernels.stream == nullptr) return;
    for (const Conversion& conversion : frame_conversions()) {
      const bool mosaic = conversion.name.compare(0, 7, "mosaic ") == 0 &&
                          conversion.name.find("packed") == std::string::npos &&
                          conversion.name.find("uyvy") == std::string::npos;
      if (!mosaic) continue;
      for (const uint32_t width : {65, 67, 97, 131, 2049, 4097, 6145}) {
        compare(kernels, level, conversion, width, 8);
        if (HasFatalFailure()) return;
      }
    }
  });
}

TEST(Streaming, FramesHaveTheSameBytes) {
  at_every_level([](const Kernels& kernels, const std::string& level) {
    if (kernels.stream == nullptr) return;
    for (const Conversion& conversion : frame_conversions()) {
      // 4160: the last strip of deep mosaics is whole lines.
      for (const uint32_t width : {4, 68, 128, 196, 2048, 2052, 4160, 6148}) {
        compare(kernels, level, conversion, width, 8);
        if (HasFatalFailure()) return;
      }
    }
  });
}

}  // namespace
}  // namespace lum::test
