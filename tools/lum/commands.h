// SPDX-License-Identifier: MIT
// The commands of `lum`, one function each. They return the exit status or throw Failure.
#ifndef LUM_TOOLS_COMMANDS_H
#define LUM_TOOLS_COMMANDS_H

#include <cstdint>
#include <string>
#include <vector>

namespace lum_tool {

struct FrameSize {
  uint32_t width = 0;
  uint32_t height = 0;
};

constexpr uint32_t kMostPerSide = 1 << 20;  // keeps every product in 64 bits

// "2448x2048". False when it is not two whole numbers from 1 to kMostPerSide.
bool parse_size(const std::string& text, FrameSize& size);
// The same, but a Failure.
FrameSize need_size(const char* option, const std::string& text);

constexpr char kDefaultDestination[] = "BGR24";

struct ConvertOptions {
  std::string from;
  std::string size;
  std::string line_pitch;  // bytes from one line of a frame to the next, or empty
  std::string to;          // empty: kDefaultDestination, or the one that there is
  std::string input;
  std::string output;
  std::string type;    // png, tiff, pnm, raw; empty: by the output's extension
  std::string frames;  // "all", "3", "2-9"; empty: all into a sequence or raw, else the first
  std::string debayer;
  std::string cygm;
  std::string yuv;                   // a name of kYuvNames, or empty
  std::vector<float> matrix;         // nine or none
  std::vector<float> white_balance;  // three or none
  bool direct_correction = false;
  std::string bin;     // N or NxN, or empty
  std::string flip;    // a name of kFlipNames, or empty
  std::string resize;  // WIDTHxHEIGHT, or empty
  bool nearest = false;
  bool i420 = false;
  std::string unpack;  // a name of kWordNames, or empty
  bool via_old = false;
  bool direct_bgr = false;
  bool big_endian = false;
  bool msb_aligned = false;
  uint32_t time = 0;  // conversions to time, 0: none
};
int convert_command(const ConvertOptions& options);

struct SimulateOptions {
  std::string format;
  std::string input;
  std::string output;
  bool big_endian = false;
  bool msb_aligned = false;
};
int simulate_command(const SimulateOptions& options);

int formats_command(bool json);
int info_command(const std::string& format, const std::string& size);
int errors_command(const std::string& code);

}  // namespace lum_tool

#endif
