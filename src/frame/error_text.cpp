// SPDX-License-Identifier: MIT
// The English texts of the result codes.
#include <string.h>

#include <algorithm>
#include <string_view>

#include "arguments.h"
#include "lum/lum.h"

namespace {

struct Row {
  uint32_t code;
  std::string_view text;
};

constexpr uint32_t modern(int32_t code) { return static_cast<uint32_t>(code); }

constexpr Row kModernTexts[] = {
    {modern(LumErrorSuccess), "No error"},
    {modern(LumErrorInternalFault), "Unexpected fault in LumC or driver"},
    {modern(LumErrorApiNotStarted), "LumStartup() was not called before the current command"},
    {modern(LumErrorNotFound), "The designated instance (camera, feature etc.) cannot be found"},
    {modern(LumErrorBadHandle), "The given handle is not valid"},
    {modern(LumErrorDeviceNotOpen), "Device was not opened for usage"},
    {modern(LumErrorInvalidAccess), "Operation is invalid with the current access mode"},
    {modern(LumErrorBadParameter),
     "One of the parameters was invalid (usually an illegal pointer)"},
    {modern(LumErrorStructSize), "The given struct size is not valid for this version of the API"},
    {modern(LumErrorMoreData), "More data was returned in a string/list than space was provided"},
    {modern(LumErrorWrongType), "The feature type for this access function was wrong"},
    {modern(LumErrorInvalidValue),
     "The value was not valid; either out of bounds or not an increment of the minimum"},
    {modern(LumErrorTimeout), "Timeout during wait"},
    {modern(LumErrorOther), "Other error"},
    {modern(LumErrorResources), "Resources not available (e.g memory)"},
    {modern(LumErrorInvalidCall), "Call is invalid in the current context (e.g callback)"},
    {modern(LumErrorNoTL), "No transport layers were found"},
    {modern(LumErrorNotImplemented), "API feature is not implemented"},
    {modern(LumErrorNotSupported), "API feature is not supported"},
};

constexpr uint32_t kNoDescriptionCode = 0xCCCCCCCCu;

// Kept: spelling included, for logs and scripts compare these texts.
constexpr Row kLegacyTexts[] = {
    {kNoDescriptionCode, "No description for this error available"},
    {0, "No error"},
    {0x88000001, "Unclassified error"},
    {lum::bad_parameter(1), "Parameter 1 is invalid"},
    {lum::bad_parameter(2), "Parameter 2 is invalid"},
    {lum::bad_parameter(3), "Parameter 3 is invalid"},
    {lum::bad_parameter(4), "Parameter 4 is invalid"},
    {lum::bad_parameter(5), "Parameter 5 is invalid"},
    {lum::bad_parameter(6), "Parameter 6 is invalid"},
    {lum::bad_parameter(7), "Parameter 7 is invalid"},
    {lum::bad_parameter(8), "Parameter 8 is invalid"},
    {lum::bad_parameter(9), "Parameter 9 is invalid"},
    {lum::bad_parameter(10), "Parameter 10 is invalid"},
    {lum::bad_parameter(11), "Parameter 11 is invalid"},
    {lum::bad_parameter(12), "Parameter 12 is invalid"},
    {0x88000010, "Camera not found"},
    {0x88000011, "TARN camera not found"},
    {0x88000012, "Feature support is not implemented (yet?)"},
    {0x88000013, "Feature not supported by camera"},
    {0x88000014, "Invalid operation for the selected feature"},
    {0x88000015, "The API was not initialized - QDX_Init() has to be called first"},
    {0x8800001D, "second call to QDX_Init() : The API was already initialized"},
    {0x88000016, "The camera was not initialized before grabbing"},
    {0x88000017, "The camera is busy"},
    {0x88000018, "Invalid camera settings selected"},
    {0x88000019, "Insufficient FireWire ressources"},
    {0x8800001A, "Out of memory"},
    {0x8800001B, "Operation not allowed in this mode"},
    {0x8800001C, "Timeout period expired"},
    {0x8800001E, "The current command was aborted"},
    {0x8800001F, "Notification has to be registered with a Type"},

    // FireWire driver
    {0x8A000001, "Card not present"},
    {0x8A000002, "No logical Device"},
    {0x8A000003, "Not enough memory"},
    {0x8A000004, "Not allowed in this mode"},
    {0x8A000005, "Timeout"},
    {0x8A000006, "Already started"},
    {0x8A000007, "Not started"},
    {0x8A000008, "Busy at the moment"},
    {0x8A000009, "No resources available"},
    {0x8A00000A, "No data available"},
    {0x8A00000B, "No acknowledge"},
    {0x8A00000C, "Interrupt install error"},
    {0x8A00000D, "Error waiting for busreset"},
    {0x8A00000F, "RCode not RCODE_COMPLETE"},
    {0x8A000010, "Something still pending"},
    {0x8A000011, "Input parameter range"},
    {0x8A000012, "Unrecognized chipversion"},
    {0x8A000013, "Hardware error"},
    {0x8A000014, "Not implemented"},
    {0x8A000015, "Cancelled"},
    {0x8A000016, "Memory not locked"},
    {0x8A000017, "Bus reset in between"},
    {0x8A000018, "No IsoManager present"},
    {0x8A000019, "No BusManager present"},
    {0x8A0003E9, "Card already opened"},
    {0x8A0003EA, "Card not open yet"},
    {0x8A0003EB, "No details"},
    {0x8A0003EC, "Driver not installed"},
    {0x8A0003ED, "Don't have buffers"},
    {0x8A0003EE, "Parameter error"},
    {0x8A0003EF, "Error creating WinDevice"},
    {0x8A0003F0, "Internal Windows error"},
    {0x8A0003F1, "Error DevIoCtl"},
    {0x8A0003F2, "Wrong length return data"},
    {0x8A0003F3, "Wrong handle"},
    {0x8A0003F4, "Function not implemented"},
    {0x8A0003F5, "Driver runs already"},
    {0x8A0003F6, "Couldn't start"},
    {0x8A0003F7, "Installation error"},
    {0x8A0003F8, "Driver and DLL don't match"},
    {0x8A0003F9, "Wrong nodeaddress"},
    {0x8A0003FA, "Partial info. copied"},
    {0x8A0003FB, "No memory"},
    {0x8A0003FC, "Requested function not available"},
    {0x8A0003FD, "Not connected to target"},
    {0x8A0003FE, "A pararmeter had to be adjusted"},

    {0x88000000, "General API Error"},
    {0x8A000000, "General Kestrel Error"},
};

constexpr std::string_view kNotFound = "return code not found";

// Copies the text and its terminator, or as much of both as the buffer holds; true when all fits.
bool copy_text(std::string_view text, char* buffer, uint32_t buffer_size) {
  // Kept: a text that is cut has no terminator; callers print it by the size they gave.
  const size_t characters = std::min<size_t>(text.size(), buffer_size);
  memcpy(buffer, text.data(), characters);
  if (characters == buffer_size) return false;
  buffer[characters] = '\0';
  return true;
}

template <size_t kRows>
uint32_t look_up(const Row (&rows)[kRows], int32_t code, char* buffer, uint32_t buffer_size,
                 uint32_t result_when_cut) {
  if (buffer == nullptr) return lum::bad_parameter(2);
  if (buffer_size == 0) return lum::bad_parameter(3);
  for (const Row& row : rows) {
    if (row.code == static_cast<uint32_t>(code)) {
      return copy_text(row.text, buffer, buffer_size) ? lum::kSuccess : result_when_cut;
    }
  }
  // Kept: an unknown code is success, cut or not.
  copy_text(kNotFound, buffer, buffer_size);
  return lum::kSuccess;
}

}  // namespace

uint32_t LumGetErrorInfo(int32_t code, char* buffer, uint32_t bufferSize) {
  return look_up(kModernTexts, code, buffer, bufferSize, LUM_LEGACY_MORE_DATA);
}

uint32_t LumGetLegacyErrorInfo(int32_t code, char* buffer, uint32_t bufferSize) {
  // Kept: unlike its sibling it does not tell that it cut the text.
  return look_up(kLegacyTexts, code, buffer, bufferSize, lum::kSuccess);
}
