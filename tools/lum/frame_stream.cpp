// SPDX-License-Identifier: MIT
#include "frame_stream.h"

#include <cstdio>
#include <filesystem>

#include "conversion.h"
#include "failure.h"

namespace lum_tool {
namespace {

// What drivers and buses align lines to.
constexpr uint64_t kLeastAlignment = 4, kMostAlignment = 4096;

// A sequence starts at 0 or 1 and ends before the first number that is missing.
std::vector<std::string> files_of(const std::string& name) {
  if (is_standard_stream(name) || !is_sequence(name) || std::filesystem::exists(name))
    return {name};
  std::vector<std::string> names;
  const uint64_t first = std::filesystem::exists(sequence_name(name, 0)) ? 0 : 1;
  uint64_t end = first;
  for (; std::filesystem::exists(sequence_name(name, end)); ++end)
    names.push_back(sequence_name(name, end));
  if (names.empty())
    throw Failure(name + ": neither " + sequence_name(name, 0) + " nor " + sequence_name(name, 1) +
                  " is there");
  if (const std::optional<uint64_t> more = next_in_sequence(name, end))
    std::fprintf(stderr, "note: %s is missing; %s and what follows is not read\n",
                 sequence_name(name, end).c_str(), sequence_name(name, *more).c_str());
  if (first == 1)
    std::fprintf(stderr, "note: frames are counted from 0, which is %s here\n",
                 names.front().c_str());
  return names;
}

}  // namespace

FrameStream::FrameStream(const std::string& name, const Source& source, const FrameSize& size,
                         std::optional<uint32_t> line_pitch)
    : source_(source),
      size_(size),
      line_(source.frame_bytes(size.width, 1)),
      pitch_(line_pitch.value_or(line_)),
      need_(pitch_ * size.height),
      names_(files_of(name)),
      total_(0) {
  if (pitch_ < line_)
    throw Failure("--line-pitch " + std::to_string(pitch_) + ": a line of " +
                  std::to_string(size.width) + " " + source.name + " pixels has " +
                  bytes_text(line_));
  for (const std::string& file : names_) {
    const std::optional<uint64_t> bytes = size_of_file(file);
    if (!bytes)
      total_.reset();
    else if (*bytes == 0 || *bytes % need_ != 0)
      refuse(file, *bytes);
    else if (total_)
      *total_ += *bytes / need_;
  }
}

void FrameStream::refuse(const std::string& title, uint64_t bytes) const {
  const std::string height = std::to_string(size_.height);
  const std::string size = std::to_string(size_.width) + "x" + height;
  std::string text =
      title + " has " + bytes_text(bytes) + "; a " + source_.name + " frame of " + size + " needs ";
  if (pitch_ != line_)
    text += height + " lines of " + bytes_text(pitch_);
  else
    text += std::to_string(size_.width) + " x " + height + " x " +
            std::to_string(source_.pixel.bitsPerPixel) + " bits";
  text += " = " + bytes_text(need_);
  if (bytes > need_)
    text += " (" + grouped(bytes / need_) + " of them and " + bytes_text(bytes % need_) + " over)";
  else if (bytes > 0)
    text += " (" + bytes_text(need_ - bytes) + " short)";
  if (bytes == 0 || pitch_ != line_) throw Failure(text);
  std::string fitting;
  for (const Source& source : sources()) {
    if (!source.fits(size_.width, size_.height)) continue;
    const uint64_t need = source.frame_bytes(size_.width, size_.height);
    if (bytes == need) fitting += (fitting.empty() ? "" : ", ") + source.name;
  }
  if (fitting.empty())
    text +=
        ".\nNo format that this library knows has frames of " + bytes_text(bytes) + " at " + size;
  else
    text += ".\nOne frame of that size would fit as: " + fitting;
  for (uint64_t step = kLeastAlignment; step <= kMostAlignment; step *= 2) {
    const uint64_t pitch = (line_ + step - 1) / step * step;
    if (pitch == line_ || bytes % (pitch * size_.height) != 0) continue;
    text += ".\nWith padded lines " + grouped(bytes / (pitch * size_.height)) +
            " of that size would fit: --line-pitch " + std::to_string(pitch);
    break;
  }
  throw Failure(text);
}

bool FrameStream::open_next() {
  if (opened_ == names_.size()) return false;
  file_ = std::make_unique<InputFile>(names_[opened_++]);
  position_ = 0;
  return true;
}

bool FrameStream::next(Bytes& frame) {
  if (pitch_ == line_) return read_next(frame);
  if (!read_next(padded_)) return false;
  const size_t bytes = line_ * size_.height;
  if (frame.size() < bytes) frame.resize(bytes);
  need("LumCopyRows",
       LumCopyRows(frame.data(), padded_.data(), static_cast<uint32_t>(line_), size_.height,
                   static_cast<uint32_t>(line_), static_cast<uint32_t>(pitch_)));
  return true;
}

bool FrameStream::read_next(Bytes& to) {
  for (;;) {
    if (!file_ && !open_next()) return false;
    const size_t got = file_->read(to, need_);
    position_ += got;
    if (got == need_) return true;
    if (got != 0 || position_ == 0) refuse(file_->title(), position_);
    file_.reset();
  }
}

bool FrameStream::skip() {
  for (;;) {
    if (!file_ && !open_next()) return false;
    const std::optional<uint64_t> size = file_->size();
    if (!size) {
      Bytes frame;
      return read_next(frame);
    }
    if (position_ < *size) {
      file_->skip(need_);
      position_ += need_;
      return true;
    }
    file_.reset();
  }
}

uint64_t FrameStream::check_rest() {
  if (!file_ || file_->size()) return 0;
  const uint64_t before = position_;
  Bytes rest(1 << 16);
  while (const size_t got = file_->read(rest.data(), rest.size())) position_ += got;
  if (position_ % need_ != 0) refuse(file_->title(), position_);
  return (position_ - before) / need_;
}

}  // namespace lum_tool
