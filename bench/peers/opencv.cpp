// SPDX-License-Identifier: MIT
#include <opencv2/core.hpp>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>

#include "peers/peers.h"

namespace lum::bench {
namespace {

constexpr const char* kBilinear = "bilinear from 3x3 instead of 2x2 blocks";
constexpr const char* kOwnRounding = "own rounding";
constexpr const char* kStudio601 = "studio range";
constexpr const char* kNoTint = "without the low byte's tint";
constexpr const char* kFloat = "in floats, rounded to nearest";
constexpr const char* kGradients = "another method: gradients of 5x5";
constexpr double kFrom12 = 1 / 16.0, kFrom16 = 1 / 256.0, kTo16 = 16;

struct Colour {
  const char* row;
  int code;
  const char* name;
  int from, to;
  const char* difference;
};
constexpr Colour kColours[] = {
    {"rgb24-to-bgr24", cv::COLOR_RGB2BGR, "RGB2BGR", CV_8UC3, CV_8UC3, ""},
    {"bgr24-to-rgb24", cv::COLOR_BGR2RGB, "BGR2RGB", CV_8UC3, CV_8UC3, ""},
    {"rgb24-to-bgr24-in-place", cv::COLOR_RGB2BGR, "RGB2BGR", CV_8UC3, CV_8UC3, ""},
    {"rgb24-to-bgra32", cv::COLOR_RGB2BGRA, "RGB2BGRA", CV_8UC3, CV_8UC4, ""},
    {"rgb24-to-rgba32", cv::COLOR_RGB2RGBA, "RGB2RGBA", CV_8UC3, CV_8UC4, ""},
    {"bgr24-to-bgra32", cv::COLOR_BGR2BGRA, "BGR2BGRA", CV_8UC3, CV_8UC4, ""},
    {"bgr24-to-rgba32", cv::COLOR_BGR2RGBA, "BGR2RGBA", CV_8UC3, CV_8UC4, ""},
    {"rgba32-to-bgr24", cv::COLOR_RGBA2BGR, "RGBA2BGR", CV_8UC4, CV_8UC3, ""},
    {"rgba32-to-rgb24", cv::COLOR_RGBA2RGB, "RGBA2RGB", CV_8UC4, CV_8UC3, ""},
    {"rgba32-to-bgra32", cv::COLOR_RGBA2BGRA, "RGBA2BGRA", CV_8UC4, CV_8UC4, ""},
    {"bgra32-to-bgr24", cv::COLOR_BGRA2BGR, "BGRA2BGR", CV_8UC4, CV_8UC3, ""},
    {"bgra32-to-rgb24", cv::COLOR_BGRA2RGB, "BGRA2RGB", CV_8UC4, CV_8UC3, ""},
    {"bgra32-to-rgba32", cv::COLOR_BGRA2RGBA, "BGRA2RGBA", CV_8UC4, CV_8UC4, ""},
    {"rgb24-to-mono8_rec601", cv::COLOR_RGB2GRAY, "RGB2GRAY", CV_8UC3, CV_8UC1, kOwnRounding},
    {"bgr24-to-mono8_rec601", cv::COLOR_BGR2GRAY, "BGR2GRAY", CV_8UC3, CV_8UC1, kOwnRounding},
    {"rgba32-to-mono8_rec601", cv::COLOR_RGBA2GRAY, "RGBA2GRAY", CV_8UC4, CV_8UC1, kOwnRounding},
    {"bgra32-to-mono8_rec601", cv::COLOR_BGRA2GRAY, "BGRA2GRAY", CV_8UC4, CV_8UC1, kOwnRounding},
    {"mono8-to-bgr24", cv::COLOR_GRAY2BGR, "GRAY2BGR", CV_8UC1, CV_8UC3, ""},
    {"mono8-to-rgb24", cv::COLOR_GRAY2BGR, "GRAY2BGR", CV_8UC1, CV_8UC3, ""},
    {"mono8-to-bgra32", cv::COLOR_GRAY2BGRA, "GRAY2BGRA", CV_8UC1, CV_8UC4, ""},
    {"mono8-to-rgba32", cv::COLOR_GRAY2BGRA, "GRAY2BGRA", CV_8UC1, CV_8UC4, ""},
    {"yuv422-to-bgr24", cv::COLOR_YUV2BGR_UYVY, "YUV2BGR_UYVY", CV_8UC2, CV_8UC3, kStudio601},
    {"yuv422-to-rgb24", cv::COLOR_YUV2RGB_UYVY, "YUV2RGB_UYVY", CV_8UC2, CV_8UC3, kStudio601},
    {"yuv422-to-bgra32", cv::COLOR_YUV2BGRA_UYVY, "YUV2BGRA_UYVY", CV_8UC2, CV_8UC4, kStudio601},
    {"yuv422-to-rgba32", cv::COLOR_YUV2RGBA_UYVY, "YUV2RGBA_UYVY", CV_8UC2, CV_8UC4, kStudio601},
    {"yuv422-studio-to-bgr24", cv::COLOR_YUV2BGR_UYVY, "YUV2BGR_UYVY", CV_8UC2, CV_8UC3,
     "BT.601 instead of BT.709"},
    {"yuv422-to-mono8_rec601", cv::COLOR_YUV2GRAY_UYVY, "YUV2GRAY_UYVY", CV_8UC2, CV_8UC1, ""},
    // OpenCV names the pattern that starts with R by what its second row starts with.
    {"bayer8-to-bgr24", cv::COLOR_BayerBG2BGR, "BayerBG2BGR", CV_8UC1, CV_8UC3, kBilinear},
    {"bayer8-to-rgb24", cv::COLOR_BayerBG2RGB, "BayerBG2RGB", CV_8UC1, CV_8UC3, kBilinear},
    {"bayer8-to-bgra32", cv::COLOR_BayerBG2BGRA, "BayerBG2BGRA", CV_8UC1, CV_8UC4, kBilinear},
    {"bayer8-to-rgba32", cv::COLOR_BayerBG2RGBA, "BayerBG2RGBA", CV_8UC1, CV_8UC4, kBilinear},
    {"bayer8-to-mono8_rec601", cv::COLOR_BayerBG2GRAY, "BayerBG2GRAY", CV_8UC1, CV_8UC1, kBilinear},
    {"bayer8-3x3-to-bgr24", cv::COLOR_BayerBG2BGR, "BayerBG2BGR", CV_8UC1, CV_8UC3, ""},
    {"bayer8-3x3-to-bgr24", cv::COLOR_BayerBG2BGR_EA, "BayerBG2BGR_EA", CV_8UC1, CV_8UC3,
     "green along the edges"},
    {"bayer8-3x3-to-bgra32", cv::COLOR_BayerBG2BGRA, "BayerBG2BGRA", CV_8UC1, CV_8UC4, ""},
    {"bayer8-3x3-to-mono8_rec601", cv::COLOR_BayerBG2GRAY, "BayerBG2GRAY", CV_8UC1, CV_8UC1,
     kOwnRounding},
    {"bayer8-yuv422-to-bgr24", cv::COLOR_BayerBG2BGR_VNG, "BayerBG2BGR_VNG", CV_8UC1, CV_8UC3,
     kGradients},
    {"bayer8-lcaa-to-bgr24", cv::COLOR_BayerBG2BGR_VNG, "BayerBG2BGR_VNG", CV_8UC1, CV_8UC3,
     kGradients},
    {"bayer8-lcaav-to-bgr24", cv::COLOR_BayerBG2BGR_VNG, "BayerBG2BGR_VNG", CV_8UC1, CV_8UC3,
     kGradients},
};

cv::Size size_of(uint32_t width, uint32_t height) {
  return {static_cast<int>(width), static_cast<int>(height)};
}

// Two steps, with a frame between them.
struct Steps {
  const char* row;
  int from;
  double scale;  // to samples of this depth
  int depth;
  int code;
  int to;
  const char* name;
  const char* difference;
};
constexpr Steps kSteps[] = {
    {"mono12le-to-bgr24", CV_16UC1, kFrom12, CV_8U, cv::COLOR_GRAY2BGR, CV_8UC3,
     "convertTo, GRAY2BGR", kOwnRounding},
    {"mono12le-to-rgb24", CV_16UC1, kFrom12, CV_8U, cv::COLOR_GRAY2BGR, CV_8UC3,
     "convertTo, GRAY2BGR", kOwnRounding},
    {"mono12le-to-bgra32", CV_16UC1, kFrom12, CV_8U, cv::COLOR_GRAY2BGRA, CV_8UC4,
     "convertTo, GRAY2BGRA", kOwnRounding},
    {"mono12le-to-bgr48", CV_16UC1, kTo16, CV_16U, cv::COLOR_GRAY2BGR, CV_16UC3,
     "convertTo, GRAY2BGR", ""},
    {"mono16le-to-bgr24", CV_16UC1, kFrom16, CV_8U, cv::COLOR_GRAY2BGR, CV_8UC3,
     "convertTo, GRAY2BGR", kNoTint},
    {"bayer12le-to-bgr24", CV_16UC1, kFrom12, CV_8U, cv::COLOR_BayerBG2BGR, CV_8UC3,
     "convertTo, BayerBG2BGR", kBilinear},
    {"bayer12le-to-bgra32", CV_16UC1, kFrom12, CV_8U, cv::COLOR_BayerBG2BGRA, CV_8UC4,
     "convertTo, BayerBG2BGRA", kBilinear},
    {"bayer12le-to-mono8_rec601", CV_16UC1, kFrom12, CV_8U, cv::COLOR_BayerBG2GRAY, CV_8UC1,
     "convertTo, BayerBG2GRAY", kBilinear},
    {"bayer12le-to-mono16_rec601", CV_16UC1, kTo16, CV_16U, cv::COLOR_BayerBG2GRAY, CV_16UC1,
     "convertTo, BayerBG2GRAY", kBilinear},
    {"bayer12le-to-bgr48", CV_16UC1, kTo16, CV_16U, cv::COLOR_BayerBG2BGR, CV_16UC3,
     "convertTo, BayerBG2BGR", kBilinear},
};

// Each of the rest: what it does with source, destination and the size of the row's frame.
struct Other {
  const char* row;
  const char* name;
  const char* difference;
  void (*run)(uint8_t* dst, uint8_t* src, uint32_t width, uint32_t height);
};

template <int kType, int kMode>
void flip(uint8_t* dst, uint8_t* src, uint32_t width, uint32_t height) {
  cv::Mat to(size_of(width, height), kType, dst);
  cv::flip(cv::Mat(size_of(width, height), kType, src), to, kMode);
}
template <int kType>
void turn(uint8_t* dst, uint8_t* src, uint32_t width, uint32_t height) {
  cv::Mat to(size_of(height, width), kType, dst);
  cv::rotate(cv::Mat(size_of(width, height), kType, src), to, cv::ROTATE_90_CLOCKWISE);
}
// From X / 2 times the width and Y / 3 times the height.
template <int kType, int kMode, int kHalves, int kThirds>
void resize(uint8_t* dst, uint8_t* src, uint32_t width, uint32_t height) {
  cv::Mat to(size_of(width, height), kType, dst);
  const cv::Size from = size_of(width * kHalves / 2, height * kThirds / 3);
  cv::resize(cv::Mat(from, kType, src), to, to.size(), 0, 0, kMode);
}
template <int kDepth, int kChannels>
struct Planes {
  Planes(uint8_t* first, uint32_t width, uint32_t height) {
    for (int i = 0; i < kChannels; ++i) {
      at[i] = cv::Mat(size_of(width, height), kDepth,
                      first + i * size_t{width} * height * CV_ELEM_SIZE1(kDepth));
    }
  }
  cv::Mat at[kChannels];
};
template <int kDepth, int kChannels>
void split(uint8_t* dst, uint8_t* src, uint32_t width, uint32_t height) {
  Planes<kDepth, kChannels> to(dst, width, height);
  cv::split(cv::Mat(size_of(width, height), CV_MAKETYPE(kDepth, kChannels), src), to.at);
}
template <int kDepth, int kChannels>
void merge(uint8_t* dst, uint8_t* src, uint32_t width, uint32_t height) {
  const Planes<kDepth, kChannels> from(src, width, height);
  cv::Mat to(size_of(width, height), CV_MAKETYPE(kDepth, kChannels), dst);
  cv::merge(from.at, kChannels, to);
}
template <int kFrom, int kTo>
void scale(uint8_t* dst, uint8_t* src, uint32_t width, uint32_t height) {
  constexpr double kFactor = CV_MAT_DEPTH(kTo) == CV_16U ? kTo16 : kFrom12;
  cv::Mat to(size_of(width, height), kTo, dst);
  cv::Mat(size_of(width, height), kFrom, src).convertTo(to, kTo, kFactor);
}
// One byte of each word.
template <int kByte>
void extract(uint8_t* dst, uint8_t* src, uint32_t width, uint32_t height) {
  cv::Mat to(size_of(width, height), CV_8UC1, dst);
  cv::extractChannel(cv::Mat(size_of(width, height), CV_8UC2, src), to, kByte);
}
template <int kCode, int kType>
void i420(uint8_t* dst, uint8_t* src, uint32_t width, uint32_t height) {
  cv::Mat to(size_of(width, height + height / 2), CV_8UC1, dst);
  cv::cvtColor(cv::Mat(size_of(width, height), kType, src), to, kCode);
}
// The coefficients of the rows with a matrix; B, G, R instead of R, G, B.
template <int kType>
void matrix(uint8_t* dst, uint8_t* src, uint32_t width, uint32_t height) {
  static const cv::Matx33f kMatrix = [] {
    cv::Matx33f m;
    for (int i = 0; i < 9; ++i) m.val[i] = static_cast<float>(kMatrixTimes1024[8 - i]) / 1024;
    return m;
  }();
  cv::Mat to(size_of(width, height), kType, dst);
  cv::transform(cv::Mat(size_of(width, height), kType, src), to, kMatrix);
}
void weave(uint8_t* dst, uint8_t* src, uint32_t width, uint32_t height) {
  const cv::Size field = size_of(width, height / 2);
  const size_t row = size_t{width} * 3, field_bytes = row * (height / 2);
  cv::Mat even(field, CV_8UC3, dst, 2 * row), odd(field, CV_8UC3, dst + row, 2 * row);
  cv::Mat(field, CV_8UC3, src + field_bytes).copyTo(even);
  cv::Mat(field, CV_8UC3, src).copyTo(odd);
}

constexpr Other kOthers[] = {
    {"mono12le-to-mono8_rec601", "convertTo", kOwnRounding, scale<CV_16UC1, CV_8UC1>},
    {"mono12le-to-mono16_rec601", "convertTo", "", scale<CV_16UC1, CV_16UC1>},
    {"words-to-bytes", "convertTo", kOwnRounding, scale<CV_16UC1, CV_8UC1>},
    {"mono16be-to-mono8_rec601", "extractChannel", "", extract<0>},
    {"mono16le-to-mono8_rec601", "extractChannel", "", extract<1>},
    {"bgr24-to-i420", "cvtColor BGR2YUV_I420", kOwnRounding, i420<cv::COLOR_BGR2YUV_I420, CV_8UC3>},
    {"bgra32-to-i420", "cvtColor BGRA2YUV_I420", kOwnRounding,
     i420<cv::COLOR_BGRA2YUV_I420, CV_8UC4>},
    {"bgr24-matrix-to-bgr24", "transform", kFloat, matrix<CV_8UC3>},
    {"bgr48-matrix-to-bgr48", "transform", kFloat, matrix<CV_16UC3>},
    {"uv16-to-planes", "split", "", split<CV_8U, 2>},
    {"bgr24-to-planes", "split", "", split<CV_8U, 3>},
    {"bgra32-to-planes", "split", "", split<CV_8U, 4>},
    {"bgr48-to-planes", "split", "", split<CV_16U, 3>},
    {"planes-to-uv16", "merge", "", merge<CV_8U, 2>},
    {"planes-to-bgr24", "merge", "", merge<CV_8U, 3>},
    {"planes-to-bgra32", "merge", "", merge<CV_8U, 4>},
    {"planes-to-bgr48", "merge", "", merge<CV_16U, 3>},
    {"flip-bgr24", "flip", "", flip<CV_8UC3, 0>},
    {"deinterlace-bgr24", "copyTo", "", weave},
    {"mirror-8", "flip", "", flip<CV_8UC1, 1>},
    {"mirror-16", "flip", "", flip<CV_16UC1, 1>},
    {"mirror-24", "flip", "", flip<CV_8UC3, 1>},
    {"mirror-32", "flip", "", flip<CV_8UC4, 1>},
    {"mirror-48", "flip", "", flip<CV_16UC3, 1>},
    {"turn180-24", "flip", "", flip<CV_8UC3, -1>},
    {"turn90-8", "rotate", "", turn<CV_8UC1>},
    {"turn90-16", "rotate", "", turn<CV_16UC1>},
    {"turn90-24", "rotate", "", turn<CV_8UC3>},
    {"turn90-32", "rotate", "", turn<CV_8UC4>},
    {"turn90-48", "rotate", "", turn<CV_16UC3>},
    {"bin2x2-mono8", "resize AREA", "", resize<CV_8UC1, cv::INTER_AREA, 4, 6>},
    {"bin2x2-mono16", "resize AREA", "", resize<CV_16UC1, cv::INTER_AREA, 4, 6>},
    {"bin2x1-bgr24", "resize AREA", kOwnRounding, resize<CV_8UC3, cv::INTER_AREA, 4, 3>},
    {"resize-nearest-mono8", "resize NEAREST", "neighbour to the left and above",
     resize<CV_8UC1, cv::INTER_NEAREST, 3, 4>},
    {"resize-nearest-bgr24", "resize NEAREST", "neighbour to the left and above",
     resize<CV_8UC3, cv::INTER_NEAREST, 3, 4>},
    {"resize-nearest-mono16", "resize NEAREST", "neighbour to the left and above",
     resize<CV_16UC1, cv::INTER_NEAREST, 3, 4>},
    {"resize-nearest-mono8", "resize NEAREST_EXACT", "",
     resize<CV_8UC1, cv::INTER_NEAREST_EXACT, 3, 4>},
    {"resize-nearest-bgr24", "resize NEAREST_EXACT", "",
     resize<CV_8UC3, cv::INTER_NEAREST_EXACT, 3, 4>},
    {"resize-nearest-mono16", "resize NEAREST_EXACT", "",
     resize<CV_16UC1, cv::INTER_NEAREST_EXACT, 3, 4>},
    {"resize-mono8", "resize LINEAR", kOwnRounding, resize<CV_8UC1, cv::INTER_LINEAR, 3, 4>},
    {"resize-bgr24", "resize LINEAR", kOwnRounding, resize<CV_8UC3, cv::INTER_LINEAR, 3, 4>},
    {"resize-mono16", "resize LINEAR", kOwnRounding, resize<CV_16UC1, cv::INTER_LINEAR, 3, 4>},
};

Peer peer_of(const Colour& c) {
  return {c.row, std::string("cvtColor ") + c.name, c.difference,
          [c](uint32_t width, uint32_t height) -> Conversion {
            return [=](uint8_t* dst, uint8_t* src) {
              cv::Mat to(size_of(width, height), c.to, dst);
              cv::cvtColor(cv::Mat(size_of(width, height), c.from, src), to, c.code);
            };
          }};
}

Peer peer_of(const Steps& s) {
  return {s.row, s.name, s.difference, [s](uint32_t width, uint32_t height) -> Conversion {
            return [=, between = cv::Mat(size_of(width, height), s.depth)](uint8_t* dst,
                                                                           uint8_t* src) mutable {
              cv::Mat(size_of(width, height), s.from, src).convertTo(between, s.depth, s.scale);
              cv::Mat to(size_of(width, height), s.to, dst);
              cv::cvtColor(between, to, s.code);
            };
          }};
}

Peer peer_of(const Other& o) {
  return {o.row, o.name, o.difference, [o](uint32_t width, uint32_t height) -> Conversion {
            return [=](uint8_t* dst, uint8_t* src) { o.run(dst, src, width, height); };
          }};
}

}  // namespace

PeerLibrary opencv() {
  cv::setNumThreads(1);
  PeerLibrary library = {"OpenCV", cv::getVersionString(), {}};
  for (const Colour& c : kColours) library.peers.push_back(peer_of(c));
  for (const Steps& s : kSteps) library.peers.push_back(peer_of(s));
  for (const Other& o : kOthers) library.peers.push_back(peer_of(o));
  return library;
}

}  // namespace lum::bench
