// SPDX-License-Identifier: MIT
// Its names of packed formats count from the last byte: RGB24 is B, G, R in memory, RAW is R, G, B,
// ARGB is B, G, R, A and ABGR is R, G, B, A.
#include <libyuv.h>
#include <libyuv/scale_rgb.h>

#include "peers/peers.h"

namespace lum::bench {
namespace {

constexpr const char* kRounded = "rounded to nearest";
constexpr const char* kStudio601 = "studio range";
constexpr const char* kOwnRounding = "own rounding";

using OneToOne = int (*)(const uint8_t* src, int src_stride, uint8_t* dst, int dst_stride,
                         int width, int height);
struct Packed {
  const char* row;
  const char* name;
  OneToOne convert;
  int src_bytes, dst_bytes;  // of a pixel
  const char* difference;
};
constexpr Packed kPacked[] = {
    {"rgb24-to-bgr24", "RAWToRGB24", libyuv::RAWToRGB24, 3, 3, ""},
    {"rgb24-to-bgr24-in-place", "RAWToRGB24", libyuv::RAWToRGB24, 3, 3, ""},
    {"bgr24-to-rgb24", "RGB24ToRAW", libyuv::RAWToRGB24, 3, 3, ""},
    {"rgb24-to-bgra32", "RAWToARGB", libyuv::RAWToARGB, 3, 4, ""},
    {"rgb24-to-rgba32", "RGB24ToARGB", libyuv::RGB24ToARGB, 3, 4, ""},
    {"bgr24-to-bgra32", "RGB24ToARGB", libyuv::RGB24ToARGB, 3, 4, ""},
    {"bgr24-to-rgba32", "RAWToARGB", libyuv::RAWToARGB, 3, 4, ""},
    {"rgba32-to-bgr24", "ARGBToRAW", libyuv::ARGBToRAW, 4, 3, ""},
    {"rgba32-to-rgb24", "ARGBToRGB24", libyuv::ARGBToRGB24, 4, 3, ""},
    {"rgba32-to-bgra32", "ABGRToARGB", libyuv::ABGRToARGB, 4, 4, ""},
    {"bgra32-to-bgr24", "ARGBToRGB24", libyuv::ARGBToRGB24, 4, 3, ""},
    {"bgra32-to-rgb24", "ARGBToRAW", libyuv::ARGBToRAW, 4, 3, ""},
    {"bgra32-to-rgba32", "ARGBToABGR", libyuv::ARGBToABGR, 4, 4, ""},
    {"mono8-to-bgra32", "J400ToARGB", libyuv::J400ToARGB, 1, 4, ""},
    {"mono8-to-rgba32", "J400ToARGB", libyuv::J400ToARGB, 1, 4, ""},
    {"rgb24-to-mono8_rec601", "RAWToJ400", libyuv::RAWToJ400, 3, 1, kRounded},
    {"bgr24-to-mono8_rec601", "RGB24ToJ400", libyuv::RGB24ToJ400, 3, 1, kRounded},
    {"rgba32-to-mono8_rec601", "ABGRToJ400", libyuv::ABGRToJ400, 4, 1, kRounded},
    {"bgra32-to-mono8_rec601", "ARGBToJ400", libyuv::ARGBToJ400, 4, 1, kRounded},
    {"yuv422-to-mono8_rec601", "UYVYToY", libyuv::UYVYToY, 2, 1, ""},
    {"yuv422-to-bgra32", "UYVYToARGB", libyuv::UYVYToARGB, 2, 4, kStudio601},
    {"mirror-24", "RGB24Mirror", libyuv::RGB24Mirror, 3, 3, ""},
    {"mirror-32", "ARGBMirror", libyuv::ARGBMirror, 4, 4, ""},
};

Peer peer_of(const Packed& p) {
  return {p.row, p.name, p.difference, [p](uint32_t width, uint32_t height) -> Conversion {
            const int w = static_cast<int>(width), h = static_cast<int>(height);
            return [=](uint8_t* dst, uint8_t* src) {
              p.convert(src, w * p.src_bytes, dst, w * p.dst_bytes, w, h);
            };
          }};
}

// Source and destination with planes at their usual places: one after the other, those of a packed
// frame likewise, and those of 4:2:0 with the chroma behind.
struct At {
  uint8_t *dst, *src;
  int w, h;
  uint8_t* scratch;  // planes between two steps: four of w x h

  size_t plane() const { return static_cast<size_t>(w) * static_cast<size_t>(h); }
  uint8_t* to(size_t i) const { return dst + i * plane(); }
  uint8_t* from(size_t i) const { return src + i * plane(); }
  uint8_t* between(size_t i) const { return scratch + i * plane(); }
  uint8_t* u() const { return dst + plane(); }
  uint8_t* v() const { return dst + plane() + plane() / 4; }
  const uint16_t* words() const { return reinterpret_cast<const uint16_t*>(src); }
};

struct Other {
  const char* row;
  const char* name;
  const char* difference;
  void (*run)(const At& at);
};

template <libyuv::FilterMode kFilter, int kHalves, int kThirds>
void scale8(const At& a) {
  libyuv::ScalePlane(a.src, a.w * kHalves / 2, a.w * kHalves / 2, a.h * kThirds / 3, a.dst, a.w,
                     a.w, a.h, kFilter);
}
template <libyuv::FilterMode kFilter, int kHalves, int kThirds>
void scale16(const At& a) {
  libyuv::ScalePlane_16(a.words(), a.w * kHalves / 2, a.w * kHalves / 2, a.h * kThirds / 3,
                        reinterpret_cast<uint16_t*>(a.dst), a.w, a.w, a.h, kFilter);
}
template <libyuv::FilterMode kFilter, int kHalves, int kThirds>
void scale24(const At& a) {
  libyuv::RGBScale(a.src, a.w * kHalves / 2 * 3, a.w * kHalves / 2, a.h * kThirds / 3, a.dst,
                   a.w * 3, a.w, a.h, kFilter);
}
void words_to_bytes(const At& a) {
  constexpr int kFrom12Bits = 4096;
  libyuv::Convert16To8Plane(a.words(), a.w, a.dst, a.w, kFrom12Bits, a.w, a.h);
}
void grey_to_24(const At& a) {
  libyuv::MergeRGBPlane(a.src, a.w, a.src, a.w, a.src, a.w, a.dst, 3 * a.w, a.w, a.h);
}
void grey_to_uyvy(const At& a) {  // the scratch planes are zero
  libyuv::I422ToUYVY(a.src, a.w, a.between(0), a.w / 2, a.between(1), a.w / 2, a.dst, 2 * a.w, a.w,
                     a.h);
}
// 4:2:2 to planes, and these to colours. kYvu and its like have U and V, hence R and B, exchanged.
template <bool kSwapped, int kBytes>
void yuv422(const At& a, const libyuv::YuvConstants& constants) {
  uint8_t *const u = a.between(1), *const v = a.between(2);
  const int half = a.w / 2;
  libyuv::UYVYToI422(a.src, 2 * a.w, a.between(0), a.w, u, half, v, half, a.w, a.h);
  const auto convert = kBytes == 3 ? libyuv::I422ToRGB24Matrix : libyuv::I422ToARGBMatrix;
  convert(a.between(0), a.w, kSwapped ? v : u, half, kSwapped ? u : v, half, a.dst, kBytes * a.w,
          &constants, a.w, a.h);
}
template <bool kSwapped>
void yuv444(const At& a) {
  uint8_t *const u = a.between(0), *const y = a.between(1), *const v = a.between(2);
  libyuv::SplitRGBPlane(a.src, 3 * a.w, u, a.w, y, a.w, v, a.w, a.w, a.h);
  libyuv::I444ToRGB24Matrix(y, a.w, kSwapped ? v : u, a.w, kSwapped ? u : v, a.w, a.dst, 3 * a.w,
                            kSwapped ? &libyuv::kYvuJPEGConstants : &libyuv::kYuvJPEGConstants, a.w,
                            a.h);
}
template <auto kConvert, int kBytes>
void to_i420(const At& a) {
  kConvert(a.src, kBytes * a.w, a.dst, a.w, a.u(), a.w / 2, a.v(), a.w / 2, a.w, a.h);
}
// Rows in twice their distance, field by field.
void weave(const At& a) {
  const int row = 3 * a.w;
  libyuv::CopyPlane(a.src + static_cast<size_t>(row) * (a.h / 2), row, a.dst, 2 * row, row,
                    a.h / 2);
  libyuv::CopyPlane(a.src, row, a.dst + row, 2 * row, row, a.h / 2);
}
// It has the matrix for four components only, in 64ths.
void matrix(const At& a) {
  int8_t m[16] = {};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      m[4 * i + j] = static_cast<int8_t>((kMatrixTimes1024[8 - 3 * i - j] + 8) >> 4);
    }
  }
  m[15] = 64;
  libyuv::RGB24ToARGB(a.src, 3 * a.w, a.scratch, 4 * a.w, a.w, a.h);
  libyuv::ARGBColorMatrix(a.scratch, 4 * a.w, a.scratch, 4 * a.w, m, a.w, a.h);
  libyuv::ARGBToRGB24(a.scratch, 4 * a.w, a.dst, 3 * a.w, a.w, a.h);
}

constexpr Other kOthers[] = {
    {"mono8-to-bgr24", "MergeRGBPlane", "", grey_to_24},
    {"mono8-to-rgb24", "MergeRGBPlane", "", grey_to_24},
    {"mono12le-to-mono8_rec601", "Convert16To8Plane", "", words_to_bytes},
    {"words-to-bytes", "Convert16To8Plane", "", words_to_bytes},
    {"mono8-to-uyvy", "I422ToUYVY", "", grey_to_uyvy},
    {"yuv422-to-bgr24", "UYVYToI422, I422ToRGB24Matrix", kOwnRounding,
     [](const At& a) { yuv422<false, 3>(a, libyuv::kYuvJPEGConstants); }},
    {"yuv422-to-rgb24", "UYVYToI422, I422ToRGB24Matrix", kOwnRounding,
     [](const At& a) { yuv422<true, 3>(a, libyuv::kYvuJPEGConstants); }},
    {"yuv422-to-bgra32", "UYVYToI422, I422ToARGBMatrix", kOwnRounding,
     [](const At& a) { yuv422<false, 4>(a, libyuv::kYuvJPEGConstants); }},
    {"yuv422-to-rgba32", "UYVYToI422, I422ToARGBMatrix", kOwnRounding,
     [](const At& a) { yuv422<true, 4>(a, libyuv::kYvuJPEGConstants); }},
    {"yuv422-studio-to-bgr24", "UYVYToI422, I422ToRGB24Matrix", kOwnRounding,
     [](const At& a) { yuv422<false, 3>(a, libyuv::kYuvH709Constants); }},
    {"yuv444-to-bgr24", "SplitRGBPlane, I444ToRGB24Matrix", kOwnRounding, yuv444<false>},
    {"yuv444-to-rgb24", "SplitRGBPlane, I444ToRGB24Matrix", kOwnRounding, yuv444<true>},
    {"bgr24-to-i420", "RGB24ToI420", kOwnRounding, to_i420<libyuv::RGB24ToI420, 3>},
    {"bgra32-to-i420", "ARGBToI420", kOwnRounding, to_i420<libyuv::ARGBToI420, 4>},
    {"yuv422-to-i420", "UYVYToI420", kOwnRounding, to_i420<libyuv::UYVYToI420, 2>},
    {"mono8-to-i420", "I400ToI420", "full range: the grey is copied",
     [](const At& a) {
       libyuv::I400ToI420(a.src, a.w, a.dst, a.w, a.u(), a.w / 2, a.v(), a.w / 2, a.w, a.h);
     }},
    {"bgr24-matrix-to-bgr24", "RGB24ToARGB, ARGBColorMatrix, ARGBToRGB24", "coefficients of 6 bits",
     matrix},
    {"uv16-to-planes", "SplitUVPlane", "",
     [](const At& a) {
       libyuv::SplitUVPlane(a.src, 2 * a.w, a.to(0), a.w, a.to(1), a.w, a.w, a.h);
     }},
    {"planes-to-uv16", "MergeUVPlane", "",
     [](const At& a) {
       libyuv::MergeUVPlane(a.from(0), a.w, a.from(1), a.w, a.dst, 2 * a.w, a.w, a.h);
     }},
    {"bgr24-to-planes", "SplitRGBPlane", "",
     [](const At& a) {
       libyuv::SplitRGBPlane(a.src, 3 * a.w, a.to(0), a.w, a.to(1), a.w, a.to(2), a.w, a.w, a.h);
     }},
    {"planes-to-bgr24", "MergeRGBPlane", "",
     [](const At& a) {
       libyuv::MergeRGBPlane(a.from(0), a.w, a.from(1), a.w, a.from(2), a.w, a.dst, 3 * a.w, a.w,
                             a.h);
     }},
    {"bgra32-to-planes", "SplitARGBPlane", "",
     [](const At& a) {
       libyuv::SplitARGBPlane(a.src, 4 * a.w, a.to(2), a.w, a.to(1), a.w, a.to(0), a.w, a.to(3),
                              a.w, a.w, a.h);
     }},
    {"planes-to-bgra32", "MergeARGBPlane", "",
     [](const At& a) {
       libyuv::MergeARGBPlane(a.from(2), a.w, a.from(1), a.w, a.from(0), a.w, a.from(3), a.w, a.dst,
                              4 * a.w, a.w, a.h);
     }},
    {"deinterlace-bgr24", "CopyPlane", "", weave},
    {"mirror-8", "MirrorPlane", "",
     [](const At& a) { libyuv::MirrorPlane(a.src, a.w, a.dst, a.w, a.w, a.h); }},
    {"mirror-16", "MirrorUVPlane", "",
     [](const At& a) { libyuv::MirrorUVPlane(a.src, 2 * a.w, a.dst, 2 * a.w, a.w, a.h); }},
    {"turn180-24", "RGB24Mirror", "",
     [](const At& a) { libyuv::RGB24Mirror(a.src, 3 * a.w, a.dst, 3 * a.w, a.w, -a.h); }},
    {"turn90-8", "RotatePlane", "",
     [](const At& a) { libyuv::RotatePlane(a.src, a.w, a.dst, a.h, a.w, a.h, libyuv::kRotate90); }},
    {"turn90-32", "ARGBRotate", "",
     [](const At& a) {
       libyuv::ARGBRotate(a.src, 4 * a.w, a.dst, 4 * a.h, a.w, a.h, libyuv::kRotate90);
     }},
    {"bin2x2-mono8", "ScalePlane", "", scale8<libyuv::kFilterBox, 4, 6>},
    {"bin2x2-mono16", "ScalePlane_16", "", scale16<libyuv::kFilterBox, 4, 6>},
    {"bin2x1-bgr24", "RGBScale", kOwnRounding, scale24<libyuv::kFilterBox, 4, 3>},
    {"resize-nearest-mono8", "ScalePlane", "other neighbours", scale8<libyuv::kFilterNone, 3, 4>},
    {"resize-nearest-bgr24", "RGBScale", "other neighbours", scale24<libyuv::kFilterNone, 3, 4>},
    {"resize-nearest-mono16", "ScalePlane_16", "other neighbours",
     scale16<libyuv::kFilterNone, 3, 4>},
    {"resize-mono8", "ScalePlane", kOwnRounding, scale8<libyuv::kFilterBilinear, 3, 4>},
    {"resize-bgr24", "RGBScale", kOwnRounding, scale24<libyuv::kFilterBilinear, 3, 4>},
    {"resize-mono16", "ScalePlane_16", kOwnRounding, scale16<libyuv::kFilterBilinear, 3, 4>},
};

Peer peer_of(const Other& o) {
  return {o.row, o.name, o.difference, [o](uint32_t width, uint32_t height) -> Conversion {
            const At at = {nullptr, nullptr, static_cast<int>(width), static_cast<int>(height),
                           nullptr};
            return [=, scratch = std::vector<uint8_t>(4 * at.plane() + 64)](uint8_t* dst,
                                                                            uint8_t* src) mutable {
              o.run({dst, src, at.w, at.h, scratch.data()});
            };
          }};
}

}  // namespace

PeerLibrary libyuv_peers() {
  PeerLibrary library = {"libyuv", std::to_string(LIBYUV_VERSION), {}};
  for (const Packed& p : kPacked) library.peers.push_back(peer_of(p));
  for (const Other& o : kOthers) library.peers.push_back(peer_of(o));
  return library;
}

}  // namespace lum::bench
