// SPDX-License-Identifier: MIT
#include "frame_stream.h"

#include <cstdio>
#include <filesystem>

#include "failure.h"

namespace lum_tool {
namespace {

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

FrameStream::FrameStream(const std::string& name, const Source& source, uint32_t width,
                         uint32_t height)
    : source_(source),
      width_(width),
      height_(height),
      need_(source.frame_bytes(width, height)),
      names_(files_of(name)),
      total_(0) {
  for (const std::string& file : names_) {
    const std::optional<uint64_t> size = size_of_file(file);
    if (!size)
      total_.reset();
    else if (*size == 0 || *size % need_ != 0)
      refuse(file, *size);
    else if (total_)
      *total_ += *size / need_;
  }
}

void FrameStream::refuse(const std::string& title, uint64_t bytes) const {
  const std::string size = std::to_string(width_) + "x" + std::to_string(height_);
  std::string text = title + " has " + bytes_text(bytes) + "; a " + source_.name + " frame of " +
                     size + " needs " + std::to_string(width_) + " x " + std::to_string(height_) +
                     " x " + std::to_string(source_.pixel.bitsPerPixel) +
                     " bits = " + bytes_text(need_);
  if (bytes > need_)
    text += " (" + grouped(bytes / need_) + " of them and " + bytes_text(bytes % need_) + " over)";
  else if (bytes > 0)
    text += " (" + bytes_text(need_ - bytes) + " short)";
  if (bytes == 0) throw Failure(text);
  std::string fitting;
  for (const Source& source : sources()) {
    if (!source.fits(width_, height_)) continue;
    const uint64_t need = source.frame_bytes(width_, height_);
    if (bytes == need) fitting += (fitting.empty() ? "" : ", ") + source.name;
  }
  if (fitting.empty())
    text +=
        ".\nNo format that this library knows has frames of " + bytes_text(bytes) + " at " + size;
  else
    text += ".\nOne frame of that size would fit as: " + fitting;
  throw Failure(text);
}

bool FrameStream::open_next() {
  if (opened_ == names_.size()) return false;
  file_ = std::make_unique<InputFile>(names_[opened_++]);
  position_ = 0;
  return true;
}

bool FrameStream::next(Bytes& frame) {
  for (;;) {
    if (!file_ && !open_next()) return false;
    const size_t got = file_->read(frame.data(), need_);
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
      Bytes frame(need_);
      return next(frame);
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
