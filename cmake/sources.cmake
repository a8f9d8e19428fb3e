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
  -Wnon-virtual-dtor -Woverloaded-virtual)
set(PPL_C_WARNINGS -Wall -Wextra -Wshadow)  # of C programs, and of code around other libraries' macros
if(PPL_WERROR)
  list(APPEND PPL_WARNINGS -Werror)
  list(APPEND PPL_C_WARNINGS -Werror)
endif()
# Of programs around the library. The library itself goes without: it would import one more symbol.
set(PPL_HARDENING -fstack-protector-strong)
set(PPL_LINK_HARDENING -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
set(PPL_CORE_FLAGS -fno-exceptions -fno-rtti -fno-threadsafe-statics -fno-strict-aliasing)

# The levels, with the compiler flags of each: one entry here, one in platform/, and what its instructions do better in
# simd/. "plain" is C++ without an intrinsic, for every other processor and for tools that see through plain code only.
set(PPL_XMM_LEVELS sse2 sse41) # the kernel image takes these alone
set(PPL_FLAGS_plain "")
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
  set(PPL_OWN_LEVELS ${PPL_XMM_LEVELS} avx2 avx512) # narrowest first
  set(PPL_FLAGS_sse2 -msse2 -mno-sse3)
  set(PPL_FLAGS_sse41 -msse4.1 -mno-avx)
  set(PPL_FLAGS_avx2 -mavx2 -mbmi -mbmi2 -mno-avx512f)
  set(PPL_FLAGS_avx512 -mavx2 -mbmi -mbmi2 -mavx512f -mavx512bw -mavx512dq -mavx512vl -mavx512vbmi
    -mprefer-vector-width=512)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # gcc 12 takes the undefined vectors of its own 512-bit intrinsics for mistakes
    list(APPEND PPL_FLAGS_avx512 -Wno-uninitialized -Wno-maybe-uninitialized)
  endif()
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  set(PPL_OWN_LEVELS neon)
  set(PPL_FLAGS_neon "")
elseif(CMAKE_SYSTEM_PROCESSOR STREQUAL "wasm32")
  set(PPL_OWN_LEVELS simd128)
  set(PPL_FLAGS_simd128 -msimd128)
else()
  set(PPL_OWN_LEVELS plain)
endif()
set(PPL_LEVELS "${PPL_OWN_LEVELS}" CACHE STRING "Vector levels to build: some of ${PPL_OWN_LEVELS}, or plain alone")
foreach(level IN LISTS PPL_LEVELS)
  if(NOT level IN_LIST PPL_OWN_LEVELS AND NOT PPL_LEVELS STREQUAL "plain")
    list(JOIN PPL_OWN_LEVELS ", " own)
    message(FATAL_ERROR "PPL_LEVELS has \"${level}\". For ${CMAKE_SYSTEM_PROCESSOR} there are ${own}; or plain alone.")
  endif()
endforeach()
if(NOT PPL_LEVELS)
  message(FATAL_ERROR "PPL_LEVELS is empty: name one vector level at least")
endif()
list(TRANSFORM PPL_LEVELS REPLACE "(.+)" "PPL_HAS_\\1=1" OUTPUT_VARIABLE PPL_HAS_LEVELS) # for platform/
