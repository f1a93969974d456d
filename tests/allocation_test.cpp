// SPDX-License-Identifier: MIT
// No conversion takes memory from the heap, whatever the size of its frame, and none takes more of
// the stack than is promised. The linker hands every call of an allocating function in this
// program, the library's included, to the counters below.
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

#include "chosen_kernels.h"
#include "frame/pixel_formats.h"
#include "lum/lum.h"
#include "test_support.h"

namespace {
thread_local unsigned allocations;
}

extern "C" {
void* __real_malloc(size_t);
void* __real_calloc(size_t, size_t);
void* __real__Znwm(size_t);
void* __real__Znam(size_t);
void* __real__ZnwmRKSt9nothrow_t(size_t, const std::nothrow_t&);
void* __wrap_malloc(size_t n) { return ++allocations, __real_malloc(n); }
void* __wrap_calloc(size_t n, size_t size) { return ++allocations, __real_calloc(n, size); }
void* __wrap__Znwm(size_t n) { return ++allocations, __real__Znwm(n); }
void* __wrap__Znam(size_t n) { return ++allocations, __real__Znam(n); }
void* __wrap__ZnwmRKSt9nothrow_t(size_t n, const std::nothrow_t& tag) {
  return ++allocations, __real__ZnwmRKSt9nothrow_t(n, tag);
}
}

namespace lum::test {
namespace {

// Some of each: more than the tiles and strips of the library, and less than a vector.
const Size kFrames[] = {{4, 4}, {1364, 12}, {8200, 4}};
constexpr size_t kMostBytes = 8;  // of a pixel, on either side

struct Frame {
  Size size;
  Bytes src, dst;
};
std::vector<Frame> frames() {
  std::vector<Frame> list;
  for (const Size size : kFrames) {
    const size_t bytes = size.width * size.height * kMostBytes;
    list.push_back({size, random_bytes(bytes, bytes), Bytes(bytes)});
  }
  return list;
}

TEST(Allocation, IsCounted) {
  const unsigned before = allocations;
  LumColorCorrection* matrix = nullptr;
  const float unit[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  ASSERT_EQ(LumCreateColorCorrectionMatrix_Int8(&matrix, unit), 0u);
  LumDestroyColorCorrection(matrix);
  EXPECT_EQ(allocations, before + 1);
}

void convert_by_the_generic_transform() {
  unsigned converted = 0;
  for (Frame& frame : frames()) {
    for (const PixelFormat& format : kPixelFormats) {
      for (const uint32_t mode : {LumDebayerMode2x2, LumDebayerMode3x3, LumDebayerModeLCAA,
                                  LumDebayerModeLCAAV, LumDebayerModeYUV422}) {
        for (uint32_t index = 0; index <= LUM_FORMAT_RGB48; ++index) {
          LumImage from = {}, to = {};
          from.size = to.size = sizeof(LumImage);
          LumTransformInfo info = {};
          if (LumSetImageInfoFromPixelFormat(format.code, frame.size.width, frame.size.height,
                                             &from) != 0 ||
              LumSetImageInfoOutput(index, frame.size.width, frame.size.height, &to) != 0 ||
              LumSetDebayerMode(mode, &info) != 0) {
            continue;
          }
          from.data = frame.src.data();
          to.data = frame.dst.data();
          const unsigned before = allocations;
          const int32_t result = LumImageTransform(&from, &to, &info, 1);
          ASSERT_EQ(allocations, before) << format.name << " to format " << index << ", mode "
                                         << mode << ", width " << frame.size.width;
          converted += result == 0;
        }
      }
    }
  }
  EXPECT_GT(converted, 1000u);
}

void convert_by_direct_functions() {
  for (Frame& frame : frames()) {
    uint8_t *const dst = frame.dst.data(), *const src = frame.src.data();
    const uint32_t width = frame.size.width, height = frame.size.height, count = width * height;
    uint8_t* const planes[] = {dst, dst + count, dst + 2 * count, dst + 3 * count};
    const unsigned before = allocations;
    uint32_t errors = 0;
    errors |= LumRaw8ImageTransform_Bin(dst, src, width, height, LUM_FORMAT_BGR24, 0);
    errors |= LumIRaw8CYGMImageTransform(dst, src, width, height, LUM_FORMAT_BGR24, 0);
    errors |= LumIRaw8CYGMImageTransform_3x3(dst, src, width, height, LUM_FORMAT_BGR24, 0);
    errors |= LumIRaw8CYGMImageTransform_Bin(dst, src, width, height, LUM_FORMAT_BGR24, 0);
    errors |= LumIRaw8CYGMToY8(dst, src, width, height);
    errors |= LumFlipVertical(dst, width, height);
    errors |= LumYUVToBGR(dst, src, count, LumPixelLayoutYUV422, 1);
    errors |= LumImageToI420(dst, src, width, height, LumPixelLayoutBGR);
    errors |= LumPackedToPlanar(planes, src, count, 3, 1);
    errors |= LumPlanarToPacked(src, planes, count, 3, 1);
    for (uint32_t size = 1; size <= 8; ++size) {
      for (uint32_t mode = 0; mode < 8; ++mode) {
        errors |= LumFlip(dst, src, width, height, size, mode);
      }
    }
    for (const uint32_t factor : {2, 3, 4}) {
      errors |= LumBin(dst, src, width, height, 3, 2, factor, factor);
    }
    for (const uint32_t mode : {0, 1}) {
      errors |= LumResize(dst, src, width / 2, height / 2, width, height, 3, 1, mode);
      errors |= LumResize(dst, src, width, height, width / 2, height / 2, 1, 2, mode);
    }
    EXPECT_EQ(allocations, before) << width << " x " << height;
    EXPECT_EQ(errors, 0u);
  }
}

void convert_everything() {
  convert_by_the_generic_transform();
  convert_by_direct_functions();
}

// At every level, streamed and not; on emulated processors at the best one, as they are slow.
template <class F>
void with_all_kernels(const F& f) {
  if (quick()) return f("of the library's choice");
  for (const NamedKernels& named : all_kernels()) {
    chosen_kernels = &named.kernels;
    f(named.name);
    chosen_kernels = nullptr;
    if (::testing::Test::HasFailure()) FAIL() << "at level " << named.name;
  }
}

TEST(Allocation, NoneInAnyConversion) {
  with_all_kernels([](const std::string&) { convert_everything(); });
}

// How far down its stack a thread that runs f() writes, of as much as `room`.
size_t stack_used(size_t room, void (*f)()) {
  struct Task {
    void (*f)();
    const uint8_t* top;
  } task = {f, nullptr};
  constexpr uint8_t kUntouched = 0xA5;
  constexpr size_t kPage = 4096;
  std::vector<uint8_t> memory(room + kPage, kUntouched);
  uint8_t* const stack = &memory[(kPage - reinterpret_cast<uintptr_t>(&memory[0]) % kPage)];
  pthread_attr_t attributes;
  pthread_t thread;
  EXPECT_EQ(pthread_attr_init(&attributes), 0);
  EXPECT_EQ(pthread_attr_setstack(&attributes, stack, room), 0);
  const auto run = [](void* p) -> void* {
    Task& t = *static_cast<Task*>(p);
    t.top = static_cast<const uint8_t*>(__builtin_frame_address(0));
    t.f();
    return nullptr;
  };
  EXPECT_EQ(pthread_create(&thread, &attributes, run, &task), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  const uint8_t* const end = stack + room;
  const uint8_t* const lowest = std::find_if(static_cast<const uint8_t*>(stack), end,
                                             [](uint8_t v) { return v != kUntouched; });
  return static_cast<size_t>(task.top - lowest);
}

// Of the public header. What this program adds to it is on the safe side.
TEST(Stack, HoldsWhatIsPromised) {
#ifdef LUM_TEST_SANITIZED
  GTEST_SKIP() << "sanitizers change what functions have on the stack";
#endif
  static constexpr size_t kPromised = 128 << 10, kRoom = 1 << 20;
  with_all_kernels([](const std::string& level) {
    if (level.find("emulated") != std::string::npos) return;  // emulation has a stack of its own
    const size_t used = stack_used(kRoom, convert_everything);
    EXPECT_LE(used, kPromised);
    EXPECT_GT(used, kPromised / 2) << "strips of rows alone take more";
  });
}

}  // namespace
}  // namespace lum::test
