# clang and lld for the 64-bit Windows kernel image (preset kernel-release). The C and C++ headers are those of
# the mingw-w64 packages. lld older than 16 writes no checksum into the image.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

find_program(PPL_CLANG NAMES clang-19 clang-18 clang-17 clang-16)
if(PPL_CLANG)
  string(REGEX MATCH "[0-9]+$" PPL_LLVM_VERSION "${PPL_CLANG}")
  find_program(PPL_CLANGXX NAMES clang++-${PPL_LLVM_VERSION})
  find_program(PPL_LLD_LINK NAMES lld-link-${PPL_LLVM_VERSION})
endif()
if(NOT PPL_CLANG OR NOT PPL_CLANGXX OR NOT PPL_LLD_LINK)
  message(FATAL_ERROR "The preset 'kernel-release' needs clang and lld, version 16 or later, and the headers of "
    "mingw-w64. On Debian: apt-get install clang-19 lld-19 llvm-19 g++-mingw-w64-x86-64-win32")
endif()
set(CMAKE_C_COMPILER ${PPL_CLANG})
set(CMAKE_CXX_COMPILER ${PPL_CLANGXX})
set(CMAKE_C_COMPILER_TARGET x86_64-w64-windows-gnu)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-windows-gnu)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
