// SPDX-License-Identifier: MIT
// The one exception of the tool: its text goes to standard error, and the exit status is 1.
#ifndef LUM_TOOLS_FAILURE_H
#define LUM_TOOLS_FAILURE_H

#include <stdexcept>
#include <string>

namespace lum_tool {

struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// "3,072 bytes", "1 byte": numbers in messages are meant to be compared by eye.
std::string grouped(unsigned long long value);
std::string bytes_text(unsigned long long count);

}  // namespace lum_tool

#endif
