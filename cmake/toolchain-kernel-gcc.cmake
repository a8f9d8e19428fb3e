# GCC for the 64-bit Windows kernel image (preset kernel).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

find_program(PPL_MINGW_GCC NAMES x86_64-w64-mingw32-gcc-win32 x86_64-w64-mingw32-gcc)
find_program(PPL_MINGW_GXX NAMES x86_64-w64-mingw32-g++-win32 x86_64-w64-mingw32-g++)
if(NOT PPL_MINGW_GCC OR NOT PPL_MINGW_GXX)
  message(FATAL_ERROR "The preset 'kernel' needs GCC for Windows. On Debian: apt-get install g++-mingw-w64-x86-64-win32")
endif()
set(CMAKE_C_COMPILER ${PPL_MINGW_GCC})
set(CMAKE_CXX_COMPILER ${PPL_MINGW_GXX})

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
