# The core is one body of code, compiled for Linux and for the kernel image alike.
#
# PPL_CORE_SOURCES: plain code, compiled once for the baseline processor.
# PPL_KERNEL_SOURCES: vector code (*_kernels.cpp), compiled once per level; PPL_LEVEL names the level.
get_filename_component(PPL_ROOT "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
file(GLOB PPL_CORE_SOURCES CONFIGURE_DEPENDS ${PPL_ROOT}/record/*.cpp ${PPL_ROOT}/rows/*.cpp
  ${PPL_ROOT}/frame/*.cpp ${PPL_ROOT}/controls/*.cpp ${PPL_ROOT}/tile/*.cpp
  ${PPL_ROOT}/paths/*.cpp ${PPL_ROOT}/output/*.cpp ${PPL_ROOT}/convert/*.cpp)
set(PPL_KERNEL_SOURCES ${PPL_CORE_SOURCES})
list(FILTER PPL_KERNEL_SOURCES INCLUDE REGEX "_kernels\\.cpp$")
list(FILTER PPL_CORE_SOURCES EXCLUDE REGEX "_kernels\\.cpp$")

set(PPL_WARNINGS -Wall -Wextra -Wshadow -Wconversion -Wno-sign-conversion -Wundef -Wcast-align
  -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
set(PPL_CORE_FLAGS -fno-exceptions -fno-rtti -fno-threadsafe-statics -fno-strict-aliasing)

# The levels, narrowest first, with the compiler flags of each. The kernel image takes the XMM ones only.
set(PPL_XMM_LEVELS sse2 sse41)
set(PPL_WIDE_LEVELS avx2 avx512)
set(PPL_FLAGS_sse2 -msse2 -mno-sse3)
set(PPL_FLAGS_sse41 -msse4.1 -mno-avx)
set(PPL_FLAGS_avx2 -mavx2 -mbmi -mbmi2 -mno-avx512f)
set(PPL_FLAGS_avx512 -mavx2 -mbmi -mbmi2 -mavx512f -mavx512bw -mavx512dq -mavx512vl -mavx512vbmi
  -mprefer-vector-width=512)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # gcc 12 takes the undefined vectors of its own 512-bit intrinsics for mistakes
  list(APPEND PPL_FLAGS_avx512 -Wno-uninitialized -Wno-maybe-uninitialized)
endif()
