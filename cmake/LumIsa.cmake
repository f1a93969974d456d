# SPDX-License-Identifier: MIT
# The compiler flags of each instruction-set level: the only place that has them. A level's flags
# are exactly the processor bits that its predicate in src/simd/isa.cpp tests, one by one: a name
# such as x86-64-v3 would permit instructions that nobody asked the processor about.
# With -O3 g++ unrolls the short loops over lanes of base before it can make vectors of them.
set(lum_flags_base -O2)
set(lum_flags_sse41 -mssse3 -msse4.1)
set(lum_flags_avx2 ${lum_flags_sse41} -mavx -mavx2)
set(lum_flags_avx512 ${lum_flags_avx2} -mavx512f -mavx512bw -mavx512vl -mavx512dq -mavx512vbmi
    -mavx512vnni)

set(LUM_LEVELS base)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$" AND CMAKE_SIZEOF_VOID_P EQUAL 8)
  list(APPEND LUM_LEVELS sse41 avx2 avx512)
endif()

# Optimised in every build type: kernels are always_inline throughout, so that an unoptimised build
# of them is larger and slower beyond use. No LTO: it could move code of a level out of its unit.
# Functions on a cache line's border: how fast a short loop runs depends on where it lies in its
# line, by up to a factor of two, which is not to change with every edit elsewhere.
set(lum_flags_every_level -O3 -falign-functions=64 -fno-exceptions -fno-lto)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # False alarms of g++ 12: vectors that are filled lane by lane, and the AVX-512 headers, which
  # start from registers that they leave undefined on purpose.
  list(APPEND lum_flags_every_level -Wno-uninitialized -Wno-maybe-uninitialized)
  # Signed lanes wrap. To g++ their overflow would be as undefined as that of an int; clang knows
  # the difference, and with the flag its sanitizer would no longer check ints.
  list(APPEND lum_flags_every_level -fwrapv)
endif()

# Adds src/simd/kernels_<level>.cpp to the target for each level of the processor family.
function(lum_add_levels target)
  foreach(level IN LISTS LUM_LEVELS)
    set(unit "${CMAKE_CURRENT_SOURCE_DIR}/src/simd/kernels_${level}.cpp")
    target_sources(${target} PRIVATE "${unit}")
    set_source_files_properties("${unit}" PROPERTIES
      COMPILE_OPTIONS "${lum_flags_every_level};${lum_flags_${level}}")
  endforeach()
endfunction()
