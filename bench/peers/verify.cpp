// SPDX-License-Identifier: MIT
#include <string.h>

#include <cmath>
#include <random>
#include <regex>

#include "peers/peers.h"

namespace lum::bench {
namespace {

// Every row takes this size: groups of four pixels, resizing by thirds.
constexpr uint32_t kWidth = 192, kHeight = 96;
constexpr size_t kPixels = size_t{kWidth} * kHeight;
// Columns and rows in which a frame's border may show.
constexpr uint32_t kBorder = 4;
// Mean difference, of 255, on flat frames. Studio instead of full range gives 10 to 20 on random
// colours, red and blue exchanged more than 50.
constexpr double kOtherConversion = 24;
constexpr int kFlatFrames = 16;

using Bytes = std::vector<uint8_t>;

bool writes_words(const std::string& row) {
  static const std::regex words("(bgr48|rgb48|mono16(_rec...)?|words|planes-to-bgr48)$");
  return std::regex_search(row, words) || row == "bgr48-to-planes";
}

// Cameras leave the bits above the used ones zero.
void keep_used_bits(const std::string& row, Bytes& src) {
  const bool little = row.find("12le") != std::string::npos || row == "words-to-bytes";
  const bool big = row.find("12be") != std::string::npos;
  if (!little && !big) return;
  for (size_t i = little ? 1 : 0; i < src.size(); i += 2) src[i] &= 0x0F;
}

struct Outputs {
  Bytes ours, theirs;
};

Outputs run_both(const Row& row, const Conversion& peer, const Bytes& src) {
  const auto run = [&](const Conversion& convert) {
    Bytes from = src, to(kPixels * kLargestDestinationPixel + src.size(), 0xA5);
    uint8_t* const dst = row.in_place ? from.data() : to.data();
    convert(dst, from.data());
    return Bytes(dst, dst + row.traffic(kWidth, kHeight).written);
  };
  return {run([&](uint8_t* dst, uint8_t* from) {
            row.run(kernels(), {dst, from, kWidth, kHeight});
          }),
          run(peer)};
}

Bytes random_frame(const std::string& row, unsigned seed) {
  std::mt19937 random(seed);
  Bytes src(kPixels * kLargestSourcePixel + 4096);
  for (uint8_t& byte : src) byte = static_cast<uint8_t>(random() >> 24);
  keep_used_bits(row, src);
  return src;
}

// A mosaic of one colour; of packed formats, groups and pairs of pixels that repeat.
Bytes flat_frame(const Row& row, unsigned seed) {
  const auto named = [&](const char* part) { return row.name.find(part) != std::string::npos; };
  size_t period = row.group_bytes * (row.group_pixels == 1 ? 2 : 1), parities = 2;
  size_t row_bytes = row.traffic(kWidth, kHeight).read / kHeight;
  if (named("-bin-")) {  // mosaics of twice the size
    period = 2;
    row_bytes = 2 * kWidth;
  } else if (named("resize-") || named("bin2x")) {
    period = row.pixel_bytes;
    parities = 1;
    row_bytes = period;
  }
  const Bytes random = random_frame(row.name, seed);
  Bytes src(random.size());
  for (size_t i = 0; i < src.size(); ++i) {
    src[i] = random[i / row_bytes % parities * period + i % row_bytes % period];
  }
  return src;
}

double mean_difference(const Outputs& o, const Row& row, unsigned shift) {
  const bool words = writes_words(row.name);
  const size_t step = words ? 2 : 1;
  double sum = 0;
  for (size_t i = 0; i + step <= o.ours.size(); i += step) {
    if (row.keeps_fourth && i % 4 == 3) continue;
    double ours = o.ours[i], theirs = o.theirs[i];
    if (words) {
      uint16_t a, b;
      memcpy(&a, &o.ours[i], 2);
      memcpy(&b, &o.theirs[i], 2);
      ours = a / 256.0;
      theirs = std::ldexp(b, static_cast<int>(shift)) / 256.0;
    }
    sum += std::fabs(ours - theirs);
  }
  return sum * static_cast<double>(step) / static_cast<double>(o.ours.size());
}

bool only_alpha_differs(const Outputs& o) {
  for (size_t i = 0; i < o.ours.size(); ++i) {
    if (i % 4 != 3 && o.ours[i] != o.theirs[i]) return false;
  }
  return true;
}

bool only_border_differs(const Outputs& o, const Row& row) {
  const unsigned skipped = row.keeps_fourth ? 4 : 0;
  for (size_t i = 0; i < o.ours.size(); ++i) {
    const size_t x = i / row.pixel_bytes % kWidth, y = i / row.pixel_bytes / kWidth;
    const bool border =
        x < kBorder || y < kBorder || x + kBorder >= kWidth || y + kBorder >= kHeight;
    const bool alpha = skipped != 0 && i % skipped == skipped - 1;
    if (!border && !alpha && o.ours[i] != o.theirs[i]) return false;
  }
  return true;
}

void add_words(std::string& text, const std::string& words) {
  text += (text.empty() ? "" : ", ") + words;
}

}  // namespace

bool verify(Peer& peer, const Row& row) {
  const Conversion convert = peer.prepare(kWidth, kHeight);
  double flat = 0;
  for (unsigned seed = 1; seed <= kFlatFrames; ++seed) {
    const Outputs o = run_both(row, convert, flat_frame(row, seed));
    flat += mean_difference(o, row, peer.shift) / kFlatFrames;
  }
  if (flat > kOtherConversion) return false;

  const Outputs o = run_both(row, convert, random_frame(row.name, 1));
  peer.exact = o.ours == o.theirs;
  if (peer.exact) {
    peer.difference.clear();
    return true;
  }
  const bool one_image = row.dst_group_pixels == 1 &&
                         row.traffic(kWidth, kHeight).written == kPixels * row.pixel_bytes;
  if (row.keeps_fourth && only_alpha_differs(o)) {
    peer.difference.clear();
  } else if (one_image && only_border_differs(o, row)) {
    peer.difference = "another rule for the border";
  } else if (peer.difference.empty()) {
    peer.difference = "other bytes than expected";
  }
  if (row.keeps_fourth) add_words(peer.difference, "writes alpha");
  return true;
}

}  // namespace lum::bench
