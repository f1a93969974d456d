// SPDX-License-Identifier: MIT
// Bytes in and out: ordinary files, standard input and output, numbered sequences. An output file
// appears under its name only when it is complete, so that a failure loses nothing.
#ifndef LUM_TOOLS_BYTE_FILE_H
#define LUM_TOOLS_BYTE_FILE_H

#include <sys/types.h>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace lum_tool {

using Bytes = std::vector<uint8_t>;

inline bool is_standard_stream(const std::string& name) { return name == "-"; }

// "frame%04d.png": exactly one %d or %0Nd. A name with any other % is an ordinary name.
bool is_sequence(const std::string& name);
std::string sequence_name(const std::string& pattern, uint64_t number);
// The least number above `number` whose file is there; not of folders with numbers.
std::optional<uint64_t> next_in_sequence(const std::string& pattern, uint64_t number);

// Nothing for a pipe or a device, whose length shows at its end only. Throws Failure when there is
// no such file. Opens nothing: a named pipe can be opened only once.
std::optional<uint64_t> size_of_file(const std::string& name);

class InputFile {
 public:
  explicit InputFile(const std::string& name);
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  std::optional<uint64_t> size() const { return size_; }
  const std::string& title() const { return title_; }

  // Fewer than `count` only at the end of the file.
  size_t read(uint8_t* to, size_t count);
  // The same to the start of `to`, which grows as bytes come where it is smaller: a pipe may end
  // long before what was asked for, and memory be short of that.
  size_t read(Bytes& to, size_t count);
  void skip(uint64_t count);  // not on a pipe

 private:
  std::string title_;
  std::FILE* file_ = nullptr;
  std::optional<uint64_t> size_;
};

Bytes read_whole(const std::string& name);

class OutputFile {
 public:
  explicit OutputFile(const std::string& name);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void write(const Bytes& bytes);
  void commit();

 private:
  [[noreturn]] void failed(const char* what) const;
  void forget_temporary();

  std::string name_;
  std::string temporary_;  // empty when written to directly: a pipe or a device
  std::FILE* file_ = nullptr;
};

void write_whole(const std::string& name, const Bytes& bytes);

// The files that are read, standard input too when it is one.
class InputFiles {
 public:
  explicit InputFiles(const std::vector<std::string>& names);
  // Throws Failure when the name, - for standard output, means one of them.
  void refuse(const std::string& output) const;

 private:
  std::set<std::pair<dev_t, ino_t>> files_;
};

}  // namespace lum_tool

#endif
