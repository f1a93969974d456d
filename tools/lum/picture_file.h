// SPDX-License-Identifier: MIT
// Picture files: PNG, TIFF and PNM in and out, JPEG in. Everything is coded in memory, so that
// reading from a pipe and writing to one are the ordinary case.
#ifndef LUM_TOOLS_PICTURE_FILE_H
#define LUM_TOOLS_PICTURE_FILE_H

#include <cstdint>
#include <string>
#include <vector>

namespace lum_tool {

using Bytes = std::vector<uint8_t>;

// Samples of 16 bits in host order, whatever the file's depth: an 8-bit sample v is v * 257, so
// that
// >> 8 gives it back. Channels are in the order grey, or red, green, blue, alpha.
struct Picture {
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t channels = 0;   // 1, 3 or 4
  uint32_t bits = 8;       // depth to write: 8 or 16
  uint32_t white = 65535;  // the largest 16-bit sample, which only PNM can tell
  std::vector<uint16_t> samples;
};

enum class FileKind { raw, png, tiff, pnm };

// In any case.
bool has_extension(const std::string& name, const char* extension);

// From the extension; anything that is no picture's is raw. A Failure for pictures of other kinds,
// which plain bytes under such a name are not.
FileKind kind_of_name(const std::string& name);

// From the first bytes of the file. Throws Failure.
Picture decode_picture(const Bytes& file, const std::string& name);

// PNM has no alpha: a fourth channel is left out there. Throws Failure.
Bytes encode_picture(const Picture& picture, FileKind kind);

}  // namespace lum_tool

#endif
