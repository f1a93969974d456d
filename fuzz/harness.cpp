// SPDX-License-Identifier: MIT
#include "harness.h"

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <vector>

#include "buffers.h"
#include "chosen_kernels.h"
#include "simd/isa.h"

namespace lum::fuzz {
namespace {

constexpr size_t kRoom = 2 << 20;
constexpr size_t kAround = 256;  // bytes about a destination that are looked at
constexpr size_t kMostOffset = 64;
constexpr size_t kMostTables = 2 * kLevelCount;

uint64_t hash(const uint8_t* data, size_t size) {  // FNV-1a
  uint64_t h = 0xCBF29CE484222325;
  for (size_t i = 0; i < size; ++i) h = (h ^ data[i]) * 0x100000001B3;
  return h;
}

}  // namespace

void fail(const std::string& what) {
  fprintf(stderr, "FAILED: %s\n", what.c_str());
  abort();
}

void check(const Call& call, const uint8_t* data, size_t size) {
  static const std::vector<test::NamedKernels> kTables = test::all_kernels();
  static const test::Arena kSource(kRoom), kDestination(kRoom);
  const size_t dst_bytes =
      call.in_place ? std::max(call.src_bytes, call.dst_bytes) : call.dst_bytes;
  if (std::max(call.src_bytes, dst_bytes) + kMostOffset > kRoom) fail(call.what + " needs room");

  test::Random random(hash(data, size));
  const auto below = [&](size_t n) { return static_cast<size_t>(random.next() % n); };
  const auto placed = [&](const test::Arena& arena, size_t bytes) {
    const bool at_end = below(2) != 0;
    return arena.place(bytes, at_end, below(2) != 0 ? 0 : below(kMostOffset));
  };
  // Whichever levels there are, an input has the same one if it is there.
  const test::NamedKernels& table = kTables[below(kMostTables) % kTables.size()];
  uint8_t* const src = placed(kSource, call.src_bytes);
  uint8_t* const dst = placed(kDestination, dst_bytes);
  test::fill(src, call.src_bytes, static_cast<unsigned>(random.next() >> 32), random);
  const std::vector<uint8_t> source(src, src + call.src_bytes);

  uint8_t* const from = std::max(dst - kAround, kDestination.begin());
  uint8_t* const to = std::min(dst + dst_bytes + kAround, kDestination.end());
  test::fill(from, static_cast<size_t>(to - from), 0, random);
  if (call.in_place) std::copy(source.begin(), source.end(), dst);
  std::vector<uint8_t> wanted(from, to);

  test::chosen_kernels = &table.kernels;
  const std::string what = call.what + " at level " + table.name;
  if (below(32) == 0) {
    const bool no_dst = below(2) != 0, no_src = !no_dst || below(2) != 0;
    const uint32_t code = call.run(no_dst ? nullptr : dst, no_src ? nullptr : src);
    if (code == 0) fail(what + " takes a null pointer");
  } else {
    const uint32_t code = call.run(dst, call.in_place ? dst : src);
    test::chosen_kernels = &kTables[0].kernels;
    const uint32_t wanted_code = call.expected(wanted.data() + (dst - from), src);
    if (code != wanted_code) {
      fail(what + " returns " + std::to_string(code) + " for " + std::to_string(wanted_code));
    }
  }
  if (!std::equal(source.begin(), source.end(), src)) fail(what + " writes its source");
  const auto differs = std::mismatch(wanted.begin(), wanted.end(), from).first - wanted.begin();
  if (static_cast<size_t>(differs) == wanted.size()) return;
  const size_t shown = std::min<size_t>(16, wanted.size() - static_cast<size_t>(differs));
  fail(what + ": destination byte " + std::to_string(differs - (dst - from)) + " of " +
       std::to_string(dst_bytes) + "\nexpected " + test::hex(&wanted[differs], shown) +
       "\nactual   " + test::hex(from + differs, shown));
}

}  // namespace lum::fuzz
