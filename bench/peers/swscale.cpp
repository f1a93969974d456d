// SPDX-License-Identifier: MIT
extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <stdexcept>

#include "peers/peers.h"

namespace lum::bench {
namespace {

constexpr const char* kOwnRounding = "own rounding";
constexpr const char* kNoTint = "without the low byte's tint";
constexpr const char* kBilinear = "bilinear from 3x3 instead of 2x2 blocks";

// From source_halves / 2 times the width and source_thirds / 3 times the height.
struct Scaling {
  int source_halves = 2, source_thirds = 3;
};
constexpr Scaling kSame, kLess = {3, 4}, kHalf = {4, 6};

struct Entry {
  const char* row;
  AVPixelFormat from, to;
  const char* difference;
  int flags = SWS_POINT;  // what costs least
  Scaling scaling = kSame;
};

// The patterns that begin with B are taken for those that begin with R where B, G, R is wanted:
// of mosaics it makes R, G, B only.
constexpr Entry kEntries[] = {
    {"rgb24-to-bgr24", AV_PIX_FMT_RGB24, AV_PIX_FMT_BGR24, ""},
    {"bgr24-to-rgb24", AV_PIX_FMT_BGR24, AV_PIX_FMT_RGB24, ""},
    {"rgb24-to-bgra32", AV_PIX_FMT_RGB24, AV_PIX_FMT_BGRA, ""},
    {"rgb24-to-rgba32", AV_PIX_FMT_RGB24, AV_PIX_FMT_RGBA, ""},
    {"bgr24-to-bgra32", AV_PIX_FMT_BGR24, AV_PIX_FMT_BGRA, ""},
    {"bgr24-to-rgba32", AV_PIX_FMT_BGR24, AV_PIX_FMT_RGBA, ""},
    {"rgba32-to-bgr24", AV_PIX_FMT_RGBA, AV_PIX_FMT_BGR24, ""},
    {"rgba32-to-rgb24", AV_PIX_FMT_RGBA, AV_PIX_FMT_RGB24, ""},
    {"rgba32-to-bgra32", AV_PIX_FMT_RGBA, AV_PIX_FMT_BGRA, ""},
    {"bgra32-to-bgr24", AV_PIX_FMT_BGRA, AV_PIX_FMT_BGR24, ""},
    {"bgra32-to-rgb24", AV_PIX_FMT_BGRA, AV_PIX_FMT_RGB24, ""},
    {"bgra32-to-rgba32", AV_PIX_FMT_BGRA, AV_PIX_FMT_RGBA, ""},
    {"rgb24-to-mono8_rec601", AV_PIX_FMT_RGB24, AV_PIX_FMT_GRAY8, kOwnRounding},
    {"bgr24-to-mono8_rec601", AV_PIX_FMT_BGR24, AV_PIX_FMT_GRAY8, kOwnRounding},
    {"rgba32-to-mono8_rec601", AV_PIX_FMT_RGBA, AV_PIX_FMT_GRAY8, kOwnRounding},
    {"bgra32-to-mono8_rec601", AV_PIX_FMT_BGRA, AV_PIX_FMT_GRAY8, kOwnRounding},
    {"mono8-to-bgr24", AV_PIX_FMT_GRAY8, AV_PIX_FMT_BGR24, ""},
    {"mono8-to-rgb24", AV_PIX_FMT_GRAY8, AV_PIX_FMT_RGB24, ""},
    {"mono8-to-bgra32", AV_PIX_FMT_GRAY8, AV_PIX_FMT_BGRA, ""},
    {"mono8-to-rgba32", AV_PIX_FMT_GRAY8, AV_PIX_FMT_RGBA, ""},
    {"mono16be-to-mono8_rec601", AV_PIX_FMT_GRAY16BE, AV_PIX_FMT_GRAY8, kOwnRounding},
    {"mono16le-to-mono8_rec601", AV_PIX_FMT_GRAY16LE, AV_PIX_FMT_GRAY8, kOwnRounding},
    {"mono16be-to-bgr24", AV_PIX_FMT_GRAY16BE, AV_PIX_FMT_BGR24, kNoTint},
    {"mono16le-to-bgr24", AV_PIX_FMT_GRAY16LE, AV_PIX_FMT_BGR24, kNoTint},
    {"mono12le-to-mono8_rec601", AV_PIX_FMT_GRAY12LE, AV_PIX_FMT_GRAY8, kOwnRounding},
    {"mono12be-to-mono8_rec601", AV_PIX_FMT_GRAY12BE, AV_PIX_FMT_GRAY8, kOwnRounding},
    {"mono12le-to-mono16_rec601", AV_PIX_FMT_GRAY12LE, AV_PIX_FMT_GRAY16LE, kOwnRounding},
    {"mono12be-to-mono16_rec601", AV_PIX_FMT_GRAY12BE, AV_PIX_FMT_GRAY16LE, kOwnRounding},
    {"mono12le-to-bgr24", AV_PIX_FMT_GRAY12LE, AV_PIX_FMT_BGR24, kOwnRounding},
    {"mono12be-to-bgr24", AV_PIX_FMT_GRAY12BE, AV_PIX_FMT_BGR24, kOwnRounding},
    {"mono12le-to-bgr48", AV_PIX_FMT_GRAY12LE, AV_PIX_FMT_BGR48LE, kOwnRounding},
    {"mono12be-to-bgr48", AV_PIX_FMT_GRAY12BE, AV_PIX_FMT_BGR48LE, kOwnRounding},
    {"words-to-bytes", AV_PIX_FMT_GRAY12LE, AV_PIX_FMT_GRAY8, kOwnRounding},
    {"yuv422-to-mono8_rec601", AV_PIX_FMT_UYVY422, AV_PIX_FMT_GRAY8, ""},
    {"yuv422-to-bgr24", AV_PIX_FMT_UYVY422, AV_PIX_FMT_BGR24, kOwnRounding},
    {"yuv422-to-rgb24", AV_PIX_FMT_UYVY422, AV_PIX_FMT_RGB24, kOwnRounding},
    {"yuv422-to-bgra32", AV_PIX_FMT_UYVY422, AV_PIX_FMT_BGRA, kOwnRounding},
    {"yuv422-to-rgba32", AV_PIX_FMT_UYVY422, AV_PIX_FMT_RGBA, kOwnRounding},
    {"mono8-to-i420", AV_PIX_FMT_GRAY8, AV_PIX_FMT_YUV420P, "full range: the grey is copied"},
    {"bgr24-to-i420", AV_PIX_FMT_BGR24, AV_PIX_FMT_YUV420P,
     "full range, chroma of every other row"},
    {"bgra32-to-i420", AV_PIX_FMT_BGRA, AV_PIX_FMT_YUV420P,
     "full range, chroma of every other row"},
    {"yuv422-to-i420", AV_PIX_FMT_UYVY422, AV_PIX_FMT_YUV420P, kOwnRounding},
    {"bayer8-to-rgb24", AV_PIX_FMT_BAYER_RGGB8, AV_PIX_FMT_RGB24, kBilinear},
    {"bayer8-to-bgr24", AV_PIX_FMT_BAYER_BGGR8, AV_PIX_FMT_RGB24, kBilinear},
    {"bayer8-3x3-to-bgr24", AV_PIX_FMT_BAYER_BGGR8, AV_PIX_FMT_RGB24, kOwnRounding},
    {"bayer16be-to-rgb24", AV_PIX_FMT_BAYER_RGGB16BE, AV_PIX_FMT_RGB24, kBilinear},
    {"bayer16be-to-bgr24", AV_PIX_FMT_BAYER_BGGR16BE, AV_PIX_FMT_RGB24, kBilinear},
    {"bayer16be-to-rgb48", AV_PIX_FMT_BAYER_RGGB16BE, AV_PIX_FMT_RGB48LE, kBilinear},
    {"bayer16be-to-bgr48", AV_PIX_FMT_BAYER_BGGR16BE, AV_PIX_FMT_RGB48LE, kBilinear},
    {"bgr24-to-planes", AV_PIX_FMT_BGR24, AV_PIX_FMT_GBRP, ""},
    {"planes-to-bgr24", AV_PIX_FMT_GBRP, AV_PIX_FMT_BGR24, ""},
    {"planes-to-bgra32", AV_PIX_FMT_GBRAP, AV_PIX_FMT_BGRA, ""},
    {"bgr48-to-planes", AV_PIX_FMT_BGR48LE, AV_PIX_FMT_GBRP16LE, ""},
    {"planes-to-bgr48", AV_PIX_FMT_GBRP16LE, AV_PIX_FMT_BGR48LE, ""},
    {"bin2x2-mono8", AV_PIX_FMT_GRAY8, AV_PIX_FMT_GRAY8, kOwnRounding, SWS_AREA, kHalf},
    {"resize-nearest-mono8", AV_PIX_FMT_GRAY8, AV_PIX_FMT_GRAY8, "", SWS_POINT, kLess},
    {"resize-nearest-bgr24", AV_PIX_FMT_BGR24, AV_PIX_FMT_BGR24, "", SWS_POINT, kLess},
    {"resize-mono8", AV_PIX_FMT_GRAY8, AV_PIX_FMT_GRAY8, "its filter looks at more than two pixels",
     SWS_BILINEAR, kLess},
    {"resize-bgr24", AV_PIX_FMT_BGR24, AV_PIX_FMT_BGR24, "its filter looks at more than two pixels",
     SWS_BILINEAR, kLess},
    {"resize-mono16", AV_PIX_FMT_GRAY16LE, AV_PIX_FMT_GRAY16LE,
     "its filter looks at more than two pixels", SWS_BILINEAR, kLess},
};

struct Free {
  void operator()(SwsContext* context) const { sws_freeContext(context); }
};

struct Picture {
  uint8_t* data[4];
  int stride[4];
};

// Planes one after the other: B, G, R, A where it says G, B, R, A.
Picture picture(AVPixelFormat format, uint8_t* p, int width, int height) {
  Picture made;
  av_image_fill_arrays(made.data, made.stride, p, format, width, height, 1);
  const bool planes =
      format == AV_PIX_FMT_GBRP || format == AV_PIX_FMT_GBRAP || format == AV_PIX_FMT_GBRP16LE;
  if (planes) std::swap(made.data[0], made.data[1]);
  return made;
}

Conversion prepare(const Entry& e, int width, int height) {
  const int from_width = width * e.scaling.source_halves / 2;
  const int from_height = height * e.scaling.source_thirds / 3;
  const std::shared_ptr<SwsContext> context(
      sws_getContext(from_width, from_height, e.from, width, height, e.to, e.flags, nullptr,
                     nullptr, nullptr),
      Free());
  if (context == nullptr) throw std::runtime_error(std::string("swscale refuses ") + e.row);
  // Full range everywhere.
  const int* const bt601 = sws_getCoefficients(SWS_CS_ITU601);
  sws_setColorspaceDetails(context.get(), bt601, 1, bt601, 1, 0, 1 << 16, 1 << 16);
  return [=](uint8_t* dst, uint8_t* src) {
    const Picture from = picture(e.from, src, from_width, from_height);
    const Picture to = picture(e.to, dst, width, height);
    sws_scale(context.get(), from.data, from.stride, 0, from_height, to.data, to.stride);
  };
}

}  // namespace

PeerLibrary swscale() {
  av_log_set_level(AV_LOG_QUIET);
  const unsigned version = swscale_version();
  PeerLibrary library = {
      "swscale",
      std::to_string(AV_VERSION_MAJOR(version)) + "." + std::to_string(AV_VERSION_MINOR(version)),
      {}};
  for (const Entry& e : kEntries) {
    library.peers.push_back(
        {e.row, "sws_scale", e.difference, [e](uint32_t width, uint32_t height) {
           return prepare(e, static_cast<int>(width), static_cast<int>(height));
         }});
  }
  return library;
}

}  // namespace lum::bench
