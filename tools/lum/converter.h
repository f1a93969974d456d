// SPDX-License-Identifier: MIT
// What `lum convert` does with one frame, from the bytes of the camera to those of the output file.
#ifndef LUM_TOOLS_CONVERTER_H
#define LUM_TOOLS_CONVERTER_H

#include <optional>

#include "commands.h"
#include "conversion.h"
#include "finish.h"
#include "picture_file.h"

namespace lum_tool {

struct Job {
  Conversion way;
  Finish finish;
  std::optional<bool> words_at_top;  // to write the unpacked samples and convert nothing
  FrameSize size;
};

class Converter {
 public:
  explicit Converter(const Job& job);  // a Failure for what cannot be done

  bool makes_grey() const;
  // What the bytes of the output are, where the formats' names do not tell.
  void print_notes(FileKind kind, bool destination_given) const;

  // Of one frame, or more bytes, for run().
  Bytes& frame() { return source_; }
  void run();
  void time(uint32_t repeats);
  Bytes encoded(FileKind kind) const;

 private:
  enum class Route {
    converted,  // to the destination's format
    planes,     // to I420 from the source's own pixels
    words
  };

  void make_room();
  FrameSize converted_size() const;
  const char* result_name() const;
  uint32_t largest_word() const;

  Job job_;
  Route route_;
  Bytes source_, result_;
};

}  // namespace lum_tool

#endif
