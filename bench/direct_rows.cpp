// SPDX-License-Identifier: MIT
// Rows of planes, depth and geometry.
#include "convert/direct.h"
#include "lum/lum.h"
#include "rows.h"

namespace lum::bench {
namespace {

uint32_t pixels(const Frame& f) { return f.width * f.height; }

void add_yuv(std::vector<Row>& rows) {
  for (const Source source : {Source::yuv411, Source::yuv422, Source::yuv444}) {
    const SourceTraits& in = kSources[static_cast<size_t>(source)];
    rows.push_back({std::string(in.name) + "-studio-to-bgr24", in.group_pixels, in.group_bytes, 3,
                    false, false, 4, 2, [=](const Kernels& k, const Frame& f) {
                      yuv_to_bgr(k, source, YuvEncoding::studio709, f.dst, f.src, pixels(f));
                    }});
  }
  for (const uint32_t layout : {LumPixelLayoutMono, LumPixelLayoutBGR, LumPixelLayoutBGRA,
                                LumPixelLayoutYUV411, LumPixelLayoutYUV422, LumPixelLayoutYUV444}) {
    Source source;
    if (!i420_source(layout, &source)) continue;
    const SourceTraits& in = kSources[static_cast<size_t>(source)];
    Row row = {std::string(in.name) + "-to-i420",
               in.group_pixels,
               in.group_bytes,
               3,
               false,
               false,
               4,
               2,
               [=](const Kernels& k, const Frame& f) {
                 image_to_i420(k, layout, f.dst, f.src, f.width, f.height);
               }};
    row.dst_group_pixels = 2;
    rows.push_back(row);
  }
}

// Planes lie one after the other.
template <class Byte>
struct Planes {
  Planes(Byte* first, const Frame& f, uint32_t sample_bytes) {
    for (uint32_t i = 0; i < 4; ++i) at[i] = first + i * size_t{pixels(f)} * sample_bytes;
  }
  Byte* at[4];
};

void add_planes(std::vector<Row>& rows) {
  struct Named {
    const char* name;
    uint32_t channels, sample_bytes;
  };
  constexpr Named kNamed[] = {{"uv16", 2, 1}, {"bgr24", 3, 1}, {"bgra32", 4, 1}, {"bgr48", 3, 2}};
  for (const Named& n : kNamed) {
    const unsigned bytes = n.channels * n.sample_bytes;
    rows.push_back({std::string(n.name) + "-to-planes", 1, bytes, bytes, false, false, 1, 1,
                    [=](const Kernels& k, const Frame& f) {
                      const Planes<uint8_t> planes(f.dst, f, n.sample_bytes);
                      packed_to_planar(k, planes.at, f.src, pixels(f), n.channels, n.sample_bytes);
                    }});
    rows.push_back({std::string("planes-to-") + n.name, 1, bytes, bytes, false, false, 1, 1,
                    [=](const Kernels& k, const Frame& f) {
                      const Planes<const uint8_t> planes(f.src, f, n.sample_bytes);
                      planar_to_packed(k, f.dst, planes.at, pixels(f), n.channels, n.sample_bytes);
                    }});
  }
}

void add_depth(std::vector<Row>& rows) {
  constexpr const char* kNames[kPackingCount] = {"gige12p", "gige10p", "pfnc12p",
                                                 "pfnc10p", "mipi12",  "mipi10"};
  for (uint32_t packing = 0; packing < kPackingCount; ++packing) {
    const uint32_t group = kPackings[packing].group_pixels;
    rows.push_back({std::string(kNames[packing]) + "-to-words", group, group + 1, 2, false, false,
                    group, 1, [=](const Kernels& k, const Frame& f) {
                      unpack_to_16(k, f.dst, f.src, pixels(f), packing, 4, 0);
                    }});
  }
  Row bytes = {"words-to-bytes", 1, 2, 1, false, false, 1, 1, [](const Kernels& k, const Frame& f) {
                 samples_16_to_8(k, f.dst, f.src, pixels(f), 4, 0);
               }};
  rows.push_back(bytes);
}

void add_flips(std::vector<Row>& rows) {
  const auto add = [&](const char* name, uint32_t mode, uint32_t bytes) {
    rows.push_back({name + std::to_string(8 * bytes), 1, bytes, bytes, false, false, 1, 1,
                    [=](const Kernels& k, const Frame& f) {
                      flip(k, f.dst, f.src, f.width, f.height, bytes, mode);
                    }});
  };
  for (const uint32_t bytes : {1u, 2u, 3u, 4u, 5u, 6u, 12u}) add("mirror-", kMirror, bytes);
  add("turn180-", kMirror | kUpsideDown, 3);
  for (const uint32_t bytes : {1u, 2u, 3u, 4u, 6u, 8u, 12u}) {
    add("turn90-", kTranspose | kMirror, bytes);
  }
}

// Measured by the pixels that are written.
void add_sizes(std::vector<Row>& rows) {
  struct Named {
    const char* name;
    PixelShape pixel;
  };
  constexpr Named kNamed[] = {{"mono8", {1, 1}}, {"bgr24", {3, 1}}, {"mono16", {1, 2}}};
  for (const Named& n : kNamed) {
    const unsigned bytes = static_cast<unsigned>(n.pixel.bytes());
    if (n.pixel.channels == 1) {
      rows.push_back({std::string("bin2x2-") + n.name, 1, 4 * bytes, bytes, false, false, 1, 1,
                      [=](const Kernels& k, const Frame& f) {
                        bin(k, f.dst, f.src, 2 * f.width, 2 * f.height, 1, n.pixel.sample_bytes, 2,
                            2);
                      }});
    } else {  // four whole colour pixels do not fit the buffers
      rows.push_back({std::string("bin2x1-") + n.name, 1, 2 * bytes, bytes, false, false, 1, 1,
                      [=](const Kernels& k, const Frame& f) {
                        bin(k, f.dst, f.src, 2 * f.width, f.height, 3, n.pixel.sample_bytes, 2, 1);
                      }});
    }
    for (const bool linear : {false, true}) {
      rows.push_back({std::string(linear ? "rows-" : "rows-nearest-") + n.name, 2, 3 * bytes, bytes,
                      false, false, 2, 1, [=](const Kernels& k, const Frame& f) {
                        const uint32_t from = f.width / 2 * 3;
                        for (uint32_t y = 0; y < f.height; ++y) {
                          resample_row(k, f.dst + y * size_t{f.width} * bytes,
                                       f.src + y * size_t{from} * bytes, f.width, from, n.pixel,
                                       0x4000, 0x18000,
                                       linear ? Resampling::linear : Resampling::nearest);
                        }
                      }});
      rows.push_back({std::string(linear ? "resize-" : "resize-nearest-") + n.name, 1, 2 * bytes,
                      bytes, false, false, 2, 3, [=](const Kernels& k, const Frame& f) {
                        resize(k, f.dst, f.src, {f.width, f.height},
                               {f.width / 2 * 3, f.height / 3 * 4}, n.pixel,
                               linear ? Resampling::linear : Resampling::nearest);
                      }});
    }
  }
}

}  // namespace

void add_direct(std::vector<Row>& rows) {
  add_yuv(rows);
  add_planes(rows);
  add_depth(rows);
  add_flips(rows);
  add_sizes(rows);
}

}  // namespace lum::bench
