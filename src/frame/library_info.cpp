// SPDX-License-Identifier: MIT
// What a caller has loaded: version, kind of build, processor features.
#include "frame/library_info.h"

#include <string.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "arguments.h"
#include "simd/isa.h"

#if !defined(LUM_VERSION_A) || !defined(LUM_VERSION_B) || !defined(LUM_VERSION_C) || \
    !defined(LUM_VERSION_D)
#error "LUM_VERSION_A to LUM_VERSION_D, the parts of the version number, must be defined"
#endif

namespace {

constexpr uint32_t kVersion = (uint32_t{LUM_VERSION_A} << 24) | (uint32_t{LUM_VERSION_B} << 16) |
                              (uint32_t{LUM_VERSION_C} << 8) | uint32_t{LUM_VERSION_D};

constexpr std::string_view kBuildTexts[] = {"Release X86", "X86", "Release"};

constexpr unsigned kFeatureBits[] = {0, 1, 2, 3, 4, 8};

uint32_t read_version(uint32_t* version) {
  if (version == nullptr) return lum::bad_parameter(1);
  *version = kVersion;
  return lum::kSuccess;
}

}  // namespace

namespace lum {

LumErrorType to_modern_result(uint32_t legacy) {
  if (legacy >= bad_parameter(1) && legacy <= bad_parameter(12)) return LumErrorBadParameter;
  switch (legacy) {
    case kSuccess:
      return LumErrorSuccess;
    case LUM_LEGACY_MORE_DATA:
      return LumErrorMoreData;
    case 0x88000000u:  // general error
      return LumErrorInternalFault;
    case kNotImplemented:
      return LumErrorNotImplemented;
    case 0x88000013u:  // feature not supported by the camera
      return LumErrorNotSupported;
    case 0x88000015u:  // interface not initialised
      return LumErrorApiNotStarted;
    case 0x88000019u:  // bus resources exhausted
    case kOutOfMemory:
      return LumErrorResources;
    default:
      return LumErrorOther;
  }
}

}  // namespace lum

int32_t LumGetVersion(uint32_t* version) { return lum::to_modern_result(read_version(version)); }

uint32_t LumGetApiInfoString(uint32_t selector, char* buffer, uint32_t bufferSize) {
  // Kept: the buffer is the second argument, yet callers know its refusal by the first one's code.
  if (buffer == nullptr) return lum::bad_parameter(1);
  if (bufferSize == 0) return lum::kSuccess;
  const std::string_view text =
      selector < std::size(kBuildTexts) ? kBuildTexts[selector] : std::string_view("");
  const size_t copied = std::min<size_t>(text.size(), bufferSize - 1);
  memcpy(buffer, text.data(), copied);
  buffer[copied] = '\0';
  return lum::kSuccess;
}

int32_t LumGetTechnoInfo(uint8_t* info) {
  // Kept: the one result of this function that is not translated.
  if (info == nullptr) return static_cast<int32_t>(lum::bad_parameter(1));
  const uint32_t masks[] = {lum::processor_features(), lum::build_features()};
  for (const unsigned bit : kFeatureBits) {
    for (const uint32_t mask : masks) *info++ = (mask >> bit) & 1;
  }
  return LumErrorSuccess;
}
