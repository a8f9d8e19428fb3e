# GCC for aarch64 Linux (preset aarch64). Programs run here by qemu-user, which ctest then does by itself. What of other
# libraries Debian has installed for aarch64 is found; nothing of this machine's own.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

find_program(PPL_CROSS_GCC aarch64-linux-gnu-gcc)
find_program(PPL_CROSS_GXX aarch64-linux-gnu-g++)
if(NOT PPL_CROSS_GCC OR NOT PPL_CROSS_GXX)
  message(FATAL_ERROR "The preset 'aarch64' needs GCC for aarch64. On Debian: apt-get install g++-aarch64-linux-gnu")
endif()
set(CMAKE_C_COMPILER ${PPL_CROSS_GCC})
set(CMAKE_CXX_COMPILER ${PPL_CROSS_GXX})
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

find_program(PPL_QEMU NAMES qemu-aarch64 qemu-aarch64-static)
if(PPL_QEMU)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${PPL_QEMU} -L /usr/aarch64-linux-gnu)
endif()

set(CMAKE_FIND_ROOT_PATH /usr/aarch64-linux-gnu /)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# pkg-config for the foreign packages alone: multiarch ones, whose headers and libraries are under /usr too.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig)
