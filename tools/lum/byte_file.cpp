// SPDX-License-Identifier: MIT
#include "byte_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <regex>
#include <system_error>

#include "failure.h"

namespace lum_tool {
namespace {

namespace fs = std::filesystem;

std::string system_text() { return std::strerror(errno); }

// A link keeps pointing where it did: what it leads to is replaced, and made if it is not there.
fs::path behind_links(const fs::path& name) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  fs::path at = name;
  for (int i = 0; fs::is_symlink(at, error); ++i) {
    const fs::path target = fs::read_symlink(at, error);
    if (error || i == kMostLinks) throw Failure(name.string() + ": leads nowhere");
    at = at.parent_path() / target;
  }
  return at;
}

// Beside the file, or a rename could not put it in its place. The name tells whose it is unless
// that makes it longer than file systems take.
std::string name_of_unfinished(const fs::path& name) {
  constexpr size_t kLongestName = 255;
  const std::string end = "." + std::to_string(getpid()) + ".part";
  const bool fits = name.filename().string().size() + end.size() <= kLongestName;
  return fits ? name.string() + end : (name.parent_path() / (".lum" + end)).string();
}

// The unfinished file, which a signal that ends the program takes away.
char unfinished[4096];

void remove_unfinished(int signal_number) {
  if (unfinished[0] != 0) unlink(unfinished);
  signal(signal_number, SIG_DFL);
  raise(signal_number);
}

void set_unfinished(const std::string& name) {
  static const bool watched = [] {
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGXCPU, SIGXFSZ}) {
      if (signal(number, SIG_IGN) != SIG_IGN) signal(number, remove_unfinished);
    }
    return true;
  }();
  // The first character last, so that no part of the name is ever taken for it.
  unfinished[0] = 0;
  std::atomic_signal_fence(std::memory_order_seq_cst);
  if (!watched || name.empty() || name.size() >= sizeof unfinished) return;
  std::strcpy(unfinished + 1, name.c_str() + 1);
  std::atomic_signal_fence(std::memory_order_seq_cst);
  unfinished[0] = name[0];
}

const std::regex& number_place() {
  static const std::regex place("%(0[1-9])?d");
  return place;
}

// As a regular expression that matches just the text.
std::string quoted(const std::string& text) {
  static const std::regex special(R"([.^$|()\[\]{}*+?\\])");
  return std::regex_replace(text, special, R"(\$&)");
}

}  // namespace

std::string grouped(unsigned long long value) {
  std::string text = std::to_string(value);
  for (size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, ",");
  return text;
}

std::string bytes_text(unsigned long long count) {
  return grouped(count) + (count == 1 ? " byte" : " bytes");
}

bool is_sequence(const std::string& name) {
  const auto end = std::sregex_iterator();
  return std::distance(std::sregex_iterator(name.begin(), name.end(), number_place()), end) == 1;
}

std::string sequence_name(const std::string& pattern, uint64_t number) {
  std::smatch place;
  if (!std::regex_search(pattern, place, number_place())) return pattern;
  std::string digits = std::to_string(number);
  const size_t width = place[1].matched ? size_t(place[1].str()[1] - '0') : 1;
  if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
  return place.prefix().str() + digits + place.suffix().str();
}

std::optional<uint64_t> next_in_sequence(const std::string& pattern, uint64_t number) {
  const fs::path folder = fs::path(pattern).parent_path();
  const std::string file = fs::path(pattern).filename().string();
  std::smatch place;
  if (!std::regex_search(file, place, number_place())) return {};
  const std::regex numbered(quoted(place.prefix()) + "([0-9]{1,18})" + quoted(place.suffix()));
  std::optional<uint64_t> found;
  std::error_code error;
  for (const fs::directory_entry& entry :
       fs::directory_iterator(folder.empty() ? "." : folder, error)) {
    const std::string name = entry.path().filename().string();
    std::smatch match;
    if (!std::regex_match(name, match, numbered)) continue;
    const uint64_t n = std::stoull(match[1]);
    if (n > number && n < found.value_or(UINT64_MAX) && sequence_name(file, n) == name) found = n;
  }
  return found;
}

std::optional<uint64_t> size_of_file(const std::string& name) {
  if (is_standard_stream(name)) return std::nullopt;
  std::error_code error;
  const fs::file_status status = fs::status(name, error);
  if (error) throw Failure(name + ": " + error.message());
  if (fs::is_directory(status)) throw Failure(name + ": is a directory");
  if (!fs::is_regular_file(status)) return std::nullopt;
  return fs::file_size(name);
}

InputFile::InputFile(const std::string& name)
    : title_(is_standard_stream(name) ? "standard input" : name), size_(size_of_file(name)) {
  file_ = is_standard_stream(name) ? stdin : std::fopen(name.c_str(), "rb");
  if (file_ == nullptr) throw Failure(name + ": " + system_text());
}

InputFile::~InputFile() {
  if (file_ != stdin) std::fclose(file_);
}

size_t InputFile::read(uint8_t* to, size_t count) {
  const size_t got = std::fread(to, 1, count, file_);
  if (got < count && std::ferror(file_)) throw Failure(title_ + ": " + system_text());
  return got;
}

size_t InputFile::read(Bytes& to, size_t count) {
  constexpr size_t kLeastStep = 1 << 20;
  for (size_t done = 0; done < count;) {
    const size_t step = std::min(count - done, std::max(kLeastStep, done));
    if (to.size() < done + step) to.resize(done + step);
    const size_t got = read(to.data() + done, step);
    done += got;
    if (got < step) return done;
  }
  return count;
}

void InputFile::skip(uint64_t count) {
  if (fseeko(file_, static_cast<off_t>(count), SEEK_CUR) != 0)
    throw Failure(title_ + ": " + system_text());
}

Bytes read_whole(const std::string& name) {
  InputFile input(name);
  Bytes bytes;
  constexpr size_t kStep = 1 << 20;
  for (;;) {
    const size_t before = bytes.size();
    bytes.resize(before + kStep);
    const size_t got = input.read(bytes.data() + before, kStep);
    bytes.resize(before + got);
    if (got < kStep) return bytes;
  }
}

OutputFile::OutputFile(const std::string& name)
    : name_(is_standard_stream(name) ? "standard output" : name) {
  // By its name the file behind it, which may have other contents already, would be replaced.
  if (is_standard_stream(name) || name == "/dev/stdout") {
    file_ = stdout;
    return;
  }
  if (name.empty()) throw Failure("the output has no name");
  std::error_code error;
  if (fs::is_directory(name, error)) throw Failure(name + ": is a directory");
  const bool special = fs::exists(name, error) && !fs::is_regular_file(name, error);
  if (special) {
    file_ = std::fopen(name_.c_str(), "wb");
  } else {
    name_ = behind_links(name).string();
    temporary_ = name_of_unfinished(name_);
    // A file that was not for everyone is not either when it is replaced. Its owner is who does so.
    struct stat replaced;
    const bool replaces = stat(name_.c_str(), &replaced) == 0;
    const mode_t mode = replaces ? replaced.st_mode & 0777 : 0666;
    const int descriptor = open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (descriptor < 0) {
      temporary_.clear();
    } else {
      set_unfinished(temporary_);
      if (replaces) {
        const bool same_group = fchown(descriptor, static_cast<uid_t>(-1), replaced.st_gid) == 0;
        // The mask of new files may have cut it. A file system without modes has nothing to lose.
        (void)fchmod(descriptor, same_group ? mode : mode & ~mode_t{S_IRWXG});
      }
      file_ = fdopen(descriptor, "wb");
    }
  }
  if (file_ == nullptr) failed("");
}

OutputFile::~OutputFile() {
  if (file_ != nullptr && file_ != stdout) std::fclose(file_);
  if (temporary_.empty()) return;
  unlink(temporary_.c_str());
  forget_temporary();
}

void OutputFile::forget_temporary() {
  set_unfinished("");
  temporary_.clear();
}

void OutputFile::failed(const char* what) const {
  const std::string text = name_ + ": " + what + system_text();
  throw Failure(temporary_.empty() ? text : text + "; nothing was changed under this name");
}

void OutputFile::write(const Bytes& bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) failed("write: ");
  // What reads a pipe may wait for the frame before it sends the next.
  if (temporary_.empty() && std::fflush(file_) != 0) failed("write: ");
}

void OutputFile::commit() {
  if (std::fflush(file_) != 0) failed("write: ");
  if (file_ == stdout) return;
  std::FILE* closing = file_;
  file_ = nullptr;
  if (std::fclose(closing) != 0) failed("close: ");
  if (temporary_.empty()) return;
  if (std::rename(temporary_.c_str(), name_.c_str()) != 0) failed("rename: ");
  forget_temporary();
}

void write_whole(const std::string& name, const Bytes& bytes) {
  OutputFile output(name);
  output.write(bytes);
  output.commit();
}

InputFiles::InputFiles(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    struct stat file;
    const int found =
        is_standard_stream(name) ? fstat(STDIN_FILENO, &file) : stat(name.c_str(), &file);
    if (found == 0 && S_ISREG(file.st_mode)) files_.insert({file.st_dev, file.st_ino});
  }
}

void InputFiles::refuse(const std::string& output) const {
  struct stat file;
  const bool standard = is_standard_stream(output);
  const int found = standard ? fstat(STDOUT_FILENO, &file) : stat(output.c_str(), &file);
  if (found == 0 && files_.count({file.st_dev, file.st_ino}) != 0)
    throw Failure((standard ? "standard output" : output) +
                  " is the input itself; it is not overwritten");
}

}  // namespace lum_tool
