// SPDX-License-Identifier: MIT
// Texts of result codes, and what the library tells about itself.
#include <gtest/gtest.h>
#include <string.h>

#include <algorithm>
#include <string>

#include "frame/library_info.h"
#include "lum/lum.h"
#include "simd/isa.h"

namespace lum::test {
namespace {

using TextFunction = uint32_t (*)(int32_t, char*, uint32_t);

// The bytes that a look-up left in a buffer of `size`, and nothing beyond it.
std::string look_up(TextFunction function, uint32_t code, uint32_t size, uint32_t result) {
  std::string buffer(size + 8, '#');
  EXPECT_EQ(function(static_cast<int32_t>(code), buffer.data(), size), result)
      << std::hex << code << " into " << std::dec << size;
  EXPECT_EQ(buffer.substr(size), "########") << "written past the buffer";
  return buffer.substr(0, size);
}

void expect_text(TextFunction function, uint32_t code, const std::string& text,
                 uint32_t result_when_cut) {
  const std::string terminated = text + '\0';
  const auto length = static_cast<uint32_t>(text.size());
  EXPECT_EQ(look_up(function, code, length + 3, 0), terminated + "##");
  EXPECT_EQ(look_up(function, code, length + 1, 0), terminated);
  EXPECT_EQ(look_up(function, code, length, result_when_cut), text);
  EXPECT_EQ(look_up(function, code, 1, result_when_cut), text.substr(0, 1));
}

const char kUnknown[] = "return code not found";

TEST(ErrorInfo, KnowsTheModernCodes) {
  const char* texts[] = {
      "No error",
      "Unexpected fault in LumC or driver",
      "LumStartup() was not called before the current command",
      "The designated instance (camera, feature etc.) cannot be found",
      "The given handle is not valid",
      "Device was not opened for usage",
      "Operation is invalid with the current access mode",
      "One of the parameters was invalid (usually an illegal pointer)",
      "The given struct size is not valid for this version of the API",
      "More data was returned in a string/list than space was provided",
      "The feature type for this access function was wrong",
      "The value was not valid; either out of bounds or not an increment of the minimum",
      "Timeout during wait",
      "Other error",
      "Resources not available (e.g memory)",
      "Call is invalid in the current context (e.g callback)",
      "No transport layers were found",
      "API feature is not implemented",
      "API feature is not supported"};
  uint32_t code = 0;
  for (const char* text : texts) expect_text(LumGetErrorInfo, code--, text, LUM_LEGACY_MORE_DATA);
  for (const uint32_t unknown : {code, 1u, 0x88000002u, 0xCCCCCCCCu, 0x80000000u}) {
    expect_text(LumGetErrorInfo, unknown, kUnknown, 0);
  }
}

TEST(LegacyErrorInfo, KnowsTheLegacyAndDriverCodes) {
  const struct {
    uint32_t code;
    const char* text;
  } rows[] = {
      {0xCCCCCCCC, "No description for this error available"},
      {0, "No error"},
      {0x88000000, "General API Error"},
      {0x88000001, "Unclassified error"},
      {0x88000002, "Parameter 1 is invalid"},
      {0x8800000D, "Parameter 12 is invalid"},
      {0x88000010, "Camera not found"},
      {0x88000012, "Feature support is not implemented (yet?)"},
      {0x88000015, "The API was not initialized - QDX_Init() has to be called first"},
      {0x88000019, "Insufficient FireWire ressources"},
      {0x8800001A, "Out of memory"},
      {0x8800001D, "second call to QDX_Init() : The API was already initialized"},
      {0x8800001F, "Notification has to be registered with a Type"},
      {0x8A000000, "General Kestrel Error"},
      {0x8A000001, "Card not present"},
      {0x8A00000F, "RCode not RCODE_COMPLETE"},
      {0x8A000019, "No BusManager present"},
      {0x8A0003E9, "Card already opened"},
      {0x8A0003FE, "A pararmeter had to be adjusted"},
  };
  for (const auto& row : rows) expect_text(LumGetLegacyErrorInfo, row.code, row.text, 0);
  const uint32_t unknown_codes[] = {1u, static_cast<uint32_t>(-7), 0x8800000E, 0x8A00000E};
  for (const uint32_t code : unknown_codes) expect_text(LumGetLegacyErrorInfo, code, kUnknown, 0);
}

TEST(ErrorInfo, ChecksBufferThenSize) {
  char buffer[4] = "abc";
  for (const TextFunction function : {LumGetErrorInfo, LumGetLegacyErrorInfo}) {
    EXPECT_EQ(function(0, nullptr, 0), LUM_LEGACY_PARAMETER_2);
    EXPECT_EQ(function(0, buffer, 0), LUM_LEGACY_PARAMETER_3);
    EXPECT_STREQ(buffer, "abc");
  }
}

TEST(LibraryInfo, ResultsTranslate) {
  const struct {
    uint32_t legacy;
    int32_t modern;
  } rows[] = {{0, 0},
              {234, -9},
              {0x88000000, -1},
              {0x88000001, -13},
              {0x88000002, -7},
              {0x8800000D, -7},
              {0x8800000E, -13},
              {0x88000011, -13},
              {0x88000012, -17},
              {0x88000013, -18},
              {0x88000014, -13},
              {0x88000015, -2},
              {0x88000019, -14},
              {0x8800001A, -14},
              {0x8800001B, -13},
              {0x8A000001, -13}};
  for (const auto& row : rows) {
    EXPECT_EQ(to_modern_result(row.legacy), row.modern) << std::hex << row.legacy;
  }
}

TEST(LibraryInfo, VersionPacksItsFourParts) {
  uint32_t version = 0;
  EXPECT_EQ(LumGetVersion(&version), 0);
  EXPECT_GT(version, 0u);
  EXPECT_EQ(LumGetVersion(nullptr), LumErrorBadParameter);
}

TEST(LibraryInfo, BuildTextIsCutAndTerminatedInsideTheBuffer) {
  const struct {
    uint32_t selector, size;
    std::string left;  // the first bytes of a buffer of '#'
  } rows[] = {{0, 64, std::string("Release X86\0#", 13)},
              {0, 12, std::string("Release X86\0#", 13)},
              {0, 5, std::string("Rele\0#", 6)},
              {0, 1, std::string("\0#", 2)},
              {0, 0, "#"},
              {1, 8, std::string("X86\0#", 5)},
              {2, 8, std::string("Release\0#", 9)},
              {3, 8, std::string("\0#", 2)},
              {7, 8, std::string("\0#", 2)}};
  for (const auto& row : rows) {
    std::string buffer(64, '#');
    EXPECT_EQ(LumGetApiInfoString(row.selector, buffer.data(), row.size), 0u);
    EXPECT_EQ(buffer.substr(0, row.left.size()), row.left) << row.selector << " " << row.size;
    EXPECT_TRUE(std::all_of(buffer.begin() + static_cast<ptrdiff_t>(row.left.size()), buffer.end(),
                            [](char c) { return c == '#'; }));
  }
  EXPECT_EQ(LumGetApiInfoString(0, nullptr, 8), LUM_LEGACY_PARAMETER_1);
}

TEST(LibraryInfo, TechnoInfoPairsProcessorAndBuild) {
  uint8_t info[13];
  memset(info, 0xEE, sizeof info);
  EXPECT_EQ(LumGetTechnoInfo(info), 0);
  const unsigned bits[] = {0, 1, 2, 3, 4, 8};
  for (unsigned k = 0; k < 6; ++k) {
    EXPECT_EQ(info[2 * k], processor_features() >> bits[k] & 1) << k;
    EXPECT_EQ(info[2 * k + 1], build_features() >> bits[k] & 1) << k;
  }
  EXPECT_EQ(info[12], 0xEE);
  EXPECT_EQ(LumGetTechnoInfo(nullptr), static_cast<int32_t>(LUM_LEGACY_PARAMETER_1));
}

}  // namespace
}  // namespace lum::test
