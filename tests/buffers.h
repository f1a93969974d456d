// SPDX-License-Identifier: MIT
// Bytes that find faults, and memory between inaccessible pages.
#ifndef LUM_TESTS_BUFFERS_H
#define LUM_TESTS_BUFFERS_H

#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <string>

namespace lum::test {

class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}
  uint64_t next() {  // splitmix64
    uint64_t z = state_ += 0x9E3779B97F4A7C15;
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9;
    z = (z ^ z >> 27) * 0x94D049BB133111EB;
    return z ^ z >> 31;
  }
  uint8_t byte() { return static_cast<uint8_t>(next() >> 32); }

 private:
  uint64_t state_;
};

// Contents that find faults: kinds 0 and 1 are random, the others sit on the edges of the formulas.
constexpr unsigned kFillKinds = 9;
inline void fill(uint8_t* bytes, size_t n, unsigned kind, Random& random) {
  static const uint8_t kEdges[] = {0, 1, 0x7F, 0x80, 0xFE, 0xFF};
  const uint8_t start = random.byte();
  for (size_t i = 0; i < n; ++i) {
    switch (kind % kFillKinds) {
      case 2:
        bytes[i] = 0;
        break;
      case 3:
        bytes[i] = 0xFF;
        break;
      case 4:
        bytes[i] = static_cast<uint8_t>(start + i);
        break;
      case 5:
        bytes[i] = i % 2 == 0 ? 0x7F : 0x80;
        break;
      case 6:
        bytes[i] = i % 2 == 0 ? 0 : 0xFF;
        break;
      case 7:
        bytes[i] = (i + start) % 3 == 0 ? 0xFF : 0;
        break;
      case 8:
        bytes[i] = kEdges[random.next() % sizeof kEdges];
        break;
      default:
        bytes[i] = random.byte();
    }
  }
}

// Memory between two pages that fault on any access.
class Arena {
 public:
  explicit Arena(size_t size) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    page_ = page;
    size_ = std::max((size + page - 1) / page * page, page);
    void* map = mmap(nullptr, size_ + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (map == MAP_FAILED) abort();
    begin_ = static_cast<uint8_t*>(map) + page;
    protect(PROT_READ | PROT_WRITE);
  }
  ~Arena() { munmap(begin_ - page_, size_ + 2 * page_); }
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;

  uint8_t* begin() const { return begin_; }
  uint8_t* end() const { return begin_ + size_; }
  size_t size() const { return size_; }
  // n bytes that touch the lower or the upper inaccessible page, or lie `offset` bytes off it.
  uint8_t* place(size_t n, bool at_end, size_t offset = 0) const {
    return at_end ? end() - n - offset : begin_ + offset;
  }
  void protect(int protection) const {
    if (mprotect(begin_, size_, protection) != 0) abort();
  }

 private:
  uint8_t* begin_;
  size_t size_, page_;
};

inline std::string hex(const uint8_t* bytes, size_t n) {
  std::string out;
  for (size_t i = 0; i < n; ++i) {
    static const char kDigits[] = "0123456789abcdef";
    out += kDigits[bytes[i] >> 4];
    out += kDigits[bytes[i] & 15];
    out += ' ';
  }
  return out;
}

}  // namespace lum::test

#endif
