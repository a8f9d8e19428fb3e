# ppl.sys: the library as an export driver of the 64-bit Windows kernel.
#
#   ppl.sys     the image: the functions of exports.txt, DllInitialize and DllUnload; imports KeBugCheckEx alone
#   ppl.lib     import library for link.exe and lld-link
#   libppl.a    import library for GNU ld (which links the other kind without a word and makes a broken image)
#   ppl.pdb     symbols for the Windows debuggers (clang and lld), ppl.dbg: DWARF (GCC)
#
# The image is linked by hand-written command lines, not by add_library: a driver takes none of the start-up
# files, run-time libraries and default imports that a Windows DLL gets.
include(cmake/sources.cmake)
include(GNUInstallDirs)

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  set(PPL_IMAGE_GCC ON)
else()
  set(PPL_IMAGE_GCC OFF)
endif()

function(ppl_need_program variable package)
  find_program(${variable} NAMES ${ARGN})
  if(NOT ${variable})
    list(GET ARGN 0 first)
    message(FATAL_ERROR "The kernel image needs ${first}. On Debian: apt-get install ${package}")
  endif()
endfunction()
ppl_need_program(PPL_DLLTOOL binutils-mingw-w64-x86-64 x86_64-w64-mingw32-dlltool)
ppl_need_program(PPL_WINDRES binutils-mingw-w64-x86-64 x86_64-w64-mingw32-windres)
ppl_need_program(PPL_LLVM_DLLTOOL llvm-19 llvm-dlltool-19 llvm-dlltool-18 llvm-dlltool-17 llvm-dlltool-16
  llvm-dlltool-15 llvm-dlltool-14 llvm-dlltool)
if(PPL_IMAGE_GCC)
  ppl_need_program(PPL_OBJCOPY binutils-mingw-w64-x86-64 x86_64-w64-mingw32-objcopy)
  ppl_need_program(PPL_STRIP binutils-mingw-w64-x86-64 x86_64-w64-mingw32-strip)
endif()

# ---- Compilation
#
# -ffreestanding is absent on purpose: it would turn every fixed-size memcpy into a call. What is not header-only
# fails to link, as nothing but the objects is linked. -fdata-sections is absent too: GNU ld would move the pool
# from .bss into .data, and the file would carry it. Unwind tables stay: without them a fault in a caller's
# buffer could not reach the caller's handler.
set(PPL_IMAGE_FLAGS -fno-use-cxa-atexit -fasynchronous-unwind-tables -mcmodel=small -march=x86-64 -mtune=generic
  -mno-mmx -mno-avx -fno-common -ffunction-sections
  -ffile-prefix-map=${PPL_ROOT}=. -ffile-prefix-map=${CMAKE_BINARY_DIR}=build)
if(PPL_IMAGE_GCC)
  list(APPEND PPL_IMAGE_FLAGS -mno-80387 -mfpmath=sse -fno-ident
    -Werror=frame-larger-than=2048 -Werror=vla -Werror=alloca)
else()
  list(APPEND PPL_IMAGE_FLAGS -gcodeview -gno-codeview-command-line -ffile-compilation-dir=.
    -Wframe-larger-than=2048 -Wvla -Walloca)
  if(CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 18)
    list(APPEND PPL_IMAGE_FLAGS -fno-auto-import) # else every variable of another file is reached through a pointer
  endif()
endif()

function(ppl_image_objects name)
  add_library(${name} OBJECT ${ARGN})
  target_include_directories(${name} PRIVATE ${PPL_ROOT}/include ${PPL_ROOT})
  target_compile_definitions(${name} PRIVATE PPL_BUILDING)
  target_compile_options(${name} PRIVATE ${PPL_WARNINGS} ${PPL_CORE_FLAGS} ${PPL_IMAGE_FLAGS})
  list(APPEND PPL_IMAGE_OBJECTS $<TARGET_OBJECTS:${name}>)
  set(PPL_IMAGE_OBJECTS ${PPL_IMAGE_OBJECTS} PARENT_SCOPE)
endfunction()

ppl_image_objects(ppl_core ${PPL_CORE_SOURCES})
target_compile_options(ppl_core PRIVATE -mno-sse3 -fstack-protector-strong)
foreach(level IN LISTS PPL_XMM_LEVELS)
  if(PPL_KERNEL_SOURCES)
    ppl_image_objects(ppl_${level} ${PPL_KERNEL_SOURCES})
    target_compile_definitions(ppl_${level} PRIVATE PPL_LEVEL=${level} PPL_LEVEL_${level}=1)
    target_compile_options(ppl_${level} PRIVATE ${PPL_FLAGS_${level}} -fstack-protector-strong)
  endif()
endforeach()
ppl_image_objects(ppl_levels ${PPL_ROOT}/platform/kernel_levels.cpp)
target_compile_options(ppl_levels PRIVATE -mno-sse3 -fstack-protector-strong)
# The guard changes under DllInitialize, and the memory functions must not be turned into calls of themselves.
ppl_image_objects(ppl_platform ${PPL_ROOT}/platform/kernel.cpp ${PPL_ROOT}/platform/memory.cpp)
target_compile_options(ppl_platform PRIVATE -mno-sse3 -fno-stack-protector -fno-builtin)
if(PPL_IMAGE_GCC)
  target_compile_options(ppl_platform PRIVATE -fno-tree-loop-distribute-patterns)
endif()

# ---- Module definition, version resource, import libraries
file(STRINGS ${PPL_ROOT}/cmake/exports.txt PPL_EXPORTS)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PPL_ROOT}/cmake/exports.txt)
list(JOIN PPL_EXPORTS "\n  " PPL_EXPORT_LINES)
set(def ${CMAKE_BINARY_DIR}/ppl.def)
set(nt_def ${PPL_ROOT}/platform/kernel_imports.def)
file(CONFIGURE OUTPUT ${def} @ONLY
  CONTENT "LIBRARY ppl.sys\nEXPORTS\n  DllInitialize PRIVATE\n  DllUnload PRIVATE\n  @PPL_EXPORT_LINES@\n")
configure_file(${PPL_ROOT}/platform/kernel.rc.in ${CMAKE_BINARY_DIR}/ppl.rc @ONLY)

add_custom_command(OUTPUT ppl_version.o DEPENDS ${CMAKE_BINARY_DIR}/ppl.rc VERBATIM
  COMMAND ${PPL_WINDRES} --target=pe-x86-64 -O coff ppl.rc ppl_version.o)
add_custom_command(OUTPUT libntoskrnl.a DEPENDS ${nt_def} VERBATIM
  COMMAND ${PPL_LLVM_DLLTOOL} -m i386:x86-64 -d ${nt_def} -l ntoskrnl.lib
  COMMAND ${PPL_DLLTOOL} --deterministic-libraries -t ntoskrnl -m i386:x86-64 -d ${nt_def} -l libntoskrnl.a
  BYPRODUCTS ntoskrnl.lib)
add_custom_command(OUTPUT libppl.a DEPENDS ${def} VERBATIM
  COMMAND ${PPL_DLLTOOL} --deterministic-libraries -t ppl -m i386:x86-64 -d ${def} -l libppl.a)
add_custom_command(OUTPUT ppl.lib DEPENDS ${def} VERBATIM
  COMMAND ${PPL_LLVM_DLLTOOL} -m i386:x86-64 -d ${def} -l ppl.lib)

# ---- The image. The linkers are told of the objects by paths relative to the build directory, as the symbol files
# keep them: the same bytes come out wherever the sources lie.
file(GENERATE OUTPUT objects.txt CONTENT "$<JOIN:${PPL_IMAGE_OBJECTS},\n>\n")
add_custom_command(OUTPUT objects.rsp DEPENDS ${CMAKE_BINARY_DIR}/objects.txt VERBATIM
  COMMAND ${CMAKE_COMMAND} -DBASE=${CMAKE_BINARY_DIR} -P ${PPL_ROOT}/cmake/kernel-objects.cmake)
if(PPL_IMAGE_GCC)
  set(PPL_SYMBOLS ppl.dbg)
  add_custom_command(OUTPUT ppl.sys BYPRODUCTS ppl.full ppl.dbg ppl.map
    DEPENDS ${PPL_IMAGE_OBJECTS} objects.rsp ppl_version.o libntoskrnl.a ${def} VERBATIM
    COMMAND ${CMAKE_CXX_COMPILER} -nostdlib -shared -o ppl.full @objects.rsp ppl_version.o ppl.def libntoskrnl.a
      -Wl,--subsystem,native:6.1 -Wl,--major-os-version,6 -Wl,--minor-os-version,1 -Wl,--entry,DriverEntry
      -Wl,--image-base,0x140000000 -Wl,--dynamicbase -Wl,--nxcompat -Wl,--wdmdriver -Wl,--gc-sections
      -Wl,--no-insert-timestamp -Wl,--section-alignment,0x1000 -Wl,--file-alignment,0x200
      -Wl,--exclude-all-symbols -Wl,--disable-auto-import -Wl,--disable-runtime-pseudo-reloc -Wl,-Map,ppl.map
    COMMAND ${PPL_OBJCOPY} --only-keep-debug ppl.full ppl.dbg
    # strip stamps the time of day into the header unless told which
    COMMAND ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=1700000000 ${PPL_STRIP} -o ppl.sys ppl.full)
else()
  set(PPL_SYMBOLS ppl.pdb)
  # -lldmingw: without it the unwind data of -ffunction-sections objects is silently lost
  add_custom_command(OUTPUT ppl.sys BYPRODUCTS ppl.pdb ppl.map
    DEPENDS ${PPL_IMAGE_OBJECTS} objects.rsp ppl_version.o libntoskrnl.a ${def} VERBATIM
    COMMAND ${PPL_LLD_LINK} -lldmingw -out:ppl.sys -nodefaultlib -driver -driver:wdm -release -dll
      -subsystem:native,6.01 -entry:DriverEntry -def:ppl.def -noimplib -dynamicbase -nxcompat
      -debug -pdb:ppl.pdb -pdbaltpath:ppl.pdb -pdbsourcepath:. -brepro -opt:ref -base:0x140000000 -align:0x1000
      -map:ppl.map @objects.rsp ppl_version.o ntoskrnl.lib)
endif()
add_custom_target(ppl_image ALL DEPENDS ppl.sys ppl.lib libppl.a)

file(GLOB PPL_HELPERS CONFIGURE_DEPENDS ${PPL_ROOT}/helpers/*.h ${PPL_ROOT}/helpers/*.hpp)
install(FILES ${PPL_ROOT}/include/ppl.h ${PPL_HELPERS}
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${CMAKE_BINARY_DIR}/ppl.sys ${CMAKE_BINARY_DIR}/${PPL_SYMBOLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${CMAKE_BINARY_DIR}/ppl.lib ${CMAKE_BINARY_DIR}/libppl.a DESTINATION ${CMAKE_INSTALL_LIBDIR})

if(PPL_BUILD_TOOLS AND EXISTS ${PPL_ROOT}/examples/capture-driver/CMakeLists.txt)
  add_subdirectory(examples/capture-driver)
endif()
