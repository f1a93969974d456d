// SPDX-License-Identifier: MIT
// Frames of one format and size, one after the other, from a file, a numbered sequence of files or
// standard input.
#ifndef LUM_TOOLS_FRAME_STREAM_H
#define LUM_TOOLS_FRAME_STREAM_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "byte_file.h"
#include "catalogue.h"
#include "commands.h"

namespace lum_tool {

class FrameStream {
 public:
  // Lines lie line_pitch bytes apart, or follow each other. Throws Failure with the arithmetic when
  // a file holds no whole number of frames.
  FrameStream(const std::string& name, const Source& source, const FrameSize& size,
              std::optional<uint32_t> line_pitch);

  const std::vector<std::string>& names() const { return names_; }
  // Nothing for a pipe.
  std::optional<uint64_t> total() const { return total_; }

  // False at the end. `frame` starts with the bytes of one afterwards, lines without padding, and
  // grows where it is smaller.
  bool next(Bytes& frame);
  bool skip();
  // Reads a pipe to its end, so that a length that does not fit is noticed. The frames it had left.
  uint64_t check_rest();

 private:
  bool open_next();
  bool read_next(Bytes& to);
  [[noreturn]] void refuse(const std::string& title, uint64_t bytes) const;

  const Source& source_;
  const FrameSize size_;
  uint64_t line_, pitch_;  // bytes of a line, without and with its padding
  uint64_t need_;          // bytes of a frame in the file
  Bytes padded_;
  std::vector<std::string> names_;
  std::optional<uint64_t> total_;
  size_t opened_ = 0;
  std::unique_ptr<InputFile> file_;
  uint64_t position_ = 0;  // bytes of this file that were read
};

}  // namespace lum_tool

#endif
