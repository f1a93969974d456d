// SPDX-License-Identifier: MIT
// ASCII texts compared without regard to case, whatever the locale.
#ifndef LUM_FRAME_TEXT_H
#define LUM_FRAME_TEXT_H

namespace lum {

constexpr char to_upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr bool equal_ignoring_case(const char* a, const char* b) {
  for (; to_upper(*a) == to_upper(*b); ++a, ++b) {
    if (*a == '\0') return true;
  }
  return false;
}

constexpr bool starts_with_ignoring_case(const char* text, const char* prefix) {
  for (; *prefix != '\0'; ++text, ++prefix) {
    if (to_upper(*text) != to_upper(*prefix)) return false;
  }
  return true;
}

}  // namespace lum

#endif
