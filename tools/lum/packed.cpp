// SPDX-License-Identifier: MIT
#include "packed.h"

#include "conversion.h"
#include "failure.h"

namespace lum_tool {

void pack_group(Packing packing, const uint32_t* samples, Bytes& out) {
  const PackedGroup& group = kPackedGroups[packing];
  if (packing == kPfnc12p || packing == kPfnc10p) {
    uint64_t all = 0;
    for (uint32_t i = 0; i < group.samples; ++i) all |= uint64_t{samples[i]} << group.bits * i;
    for (uint32_t i = 0; i < group.bytes; ++i) out.push_back(uint8_t(all >> 8 * i));
    return;
  }
  // A byte of each sample, and one of all their lower bits: the second byte for GigE Vision, the
  // last for CSI-2.
  const bool gige = packing == kGige12 || packing == kGige10;
  const uint32_t low_bits = group.bits - 8, apart = gige ? 4 : low_bits;
  uint32_t low = 0;
  for (uint32_t i = 0; i < group.samples; ++i)
    low |= (samples[i] & ((1u << low_bits) - 1)) << apart * i;
  for (uint32_t i = 0; i < group.samples; ++i) {
    if (gige && i == 1) out.push_back(uint8_t(low));
    out.push_back(uint8_t(samples[i] >> low_bits));
  }
  if (!gige) out.push_back(uint8_t(low));
}

void unpack(Packing packing, bool at_top, const uint8_t* packed, uint64_t pixels, Bytes& words) {
  if (pixels > UINT32_MAX)
    throw Failure(grouped(pixels) + " pixels; LumUnpackTo16 takes 4,294,967,295 at most");
  LumBitDepthInfo depth = {};
  depth.alignment = at_top ? 0 : 1;
  words.resize(pixels * 2);
  need("LumUnpackTo16",
       LumUnpackTo16(words.data(), packed, static_cast<uint32_t>(pixels), packing, &depth));
}

}  // namespace lum_tool
