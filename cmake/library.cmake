# libppl.so, libppl.a and, for the tests alone, libppl_test.a, which can be held to a level.
include(cmake/sources.cmake)

set(PPL_OBJECTS)
function(ppl_objects name)
  add_library(${name} OBJECT ${ARGN})
  target_include_directories(${name} PUBLIC ${PPL_ROOT}/include PRIVATE ${PPL_ROOT})
  target_compile_definitions(${name} PRIVATE PPL_BUILDING)
  target_compile_options(${name} PRIVATE ${PPL_WARNINGS} ${PPL_CORE_FLAGS} -fno-stack-protector)
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
  if(PPL_SANITIZE)
    target_compile_options(${name} PRIVATE -fsanitize=address,undefined -fno-sanitize-recover=all)
  endif()
endfunction()

ppl_objects(ppl_core ${PPL_CORE_SOURCES})
list(APPEND PPL_OBJECTS $<TARGET_OBJECTS:ppl_core>)
foreach(level IN LISTS PPL_LEVELS)
  if(PPL_KERNEL_SOURCES)
    ppl_objects(ppl_${level} ${PPL_KERNEL_SOURCES})
    target_compile_definitions(ppl_${level} PRIVATE PPL_LEVEL=${level} PPL_LEVEL_${level}=1)
    target_compile_options(ppl_${level} PRIVATE ${PPL_FLAGS_${level}})
    list(APPEND PPL_OBJECTS $<TARGET_OBJECTS:ppl_${level}>)
  endif()
endforeach()
list(LENGTH PPL_LEVELS levels_built)
ppl_objects(ppl_platform ${PPL_ROOT}/platform/linux.cpp)
ppl_objects(ppl_platform_test ${PPL_ROOT}/platform/linux_test.cpp)
foreach(target ppl_platform ppl_platform_test)
  target_compile_definitions(${target} PRIVATE ${PPL_HAS_LEVELS} PPL_LEVELS_BUILT=${levels_built})
endforeach()

# The version script names exactly the exported functions.
file(STRINGS ${PPL_ROOT}/cmake/exports.txt PPL_EXPORTS)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PPL_ROOT}/cmake/exports.txt)
list(JOIN PPL_EXPORTS ";\n    " PPL_EXPORT_LINES)
file(CONFIGURE OUTPUT ppl.map CONTENT "{\n  global:\n    @PPL_EXPORT_LINES@;\n  local: *;\n};\n" @ONLY)

add_library(ppl SHARED ${PPL_OBJECTS} $<TARGET_OBJECTS:ppl_platform>)
add_library(ppl_static STATIC ${PPL_OBJECTS} $<TARGET_OBJECTS:ppl_platform>)
add_library(ppl_test STATIC ${PPL_OBJECTS} $<TARGET_OBJECTS:ppl_platform_test>)
# Installed, both are called pplcamera: on Debian another library owns libppl.so and libppl.a.
add_library(ppl_installed SHARED ${PPL_OBJECTS} $<TARGET_OBJECTS:ppl_platform>)
add_library(ppl_installed_static STATIC ${PPL_OBJECTS} $<TARGET_OBJECTS:ppl_platform>)
add_library(ppl::ppl ALIAS ppl)
add_library(ppl::ppl_static ALIAS ppl_static)
foreach(lib ppl ppl_static ppl_test ppl_installed ppl_installed_static)
  target_include_directories(${lib} PUBLIC "$<BUILD_INTERFACE:${PPL_ROOT}/include;${PPL_ROOT}/helpers>"
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  set_target_properties(${lib} PROPERTIES ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
endforeach()
set_target_properties(ppl_installed PROPERTIES EXPORT_NAME ppl)
set_target_properties(ppl_installed_static PROPERTIES EXPORT_NAME ppl_static)
set_target_properties(ppl_installed ppl_installed_static PROPERTIES OUTPUT_NAME pplcamera
  ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/installed LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/installed)
# C++ sources, but nothing of the C++ run-time library: the shared object needs three memory functions of the C library.
# It calls its own functions directly, whatever else goes by their names, and has every address before it is first
# called: no call pays the dynamic linker's stack, and the table of addresses is read-only.
foreach(lib ppl ppl_installed)
  set_target_properties(${lib} PROPERTIES LINK_DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/ppl.map
    SOVERSION 1 VERSION ${PROJECT_VERSION})
  target_link_options(${lib} PRIVATE -Wl,--version-script=${CMAKE_CURRENT_BINARY_DIR}/ppl.map
    -Wl,-Bsymbolic -Wl,--as-needed ${PPL_LINK_HARDENING})
  if(NOT PPL_SANITIZE)
    target_link_options(${lib} PRIVATE -Wl,--no-undefined)
  endif()
endforeach()
if(PPL_SANITIZE)
  foreach(lib ppl ppl_static ppl_test ppl_installed ppl_installed_static)
    target_link_options(${lib} PUBLIC -fsanitize=address,undefined)
  endforeach()
endif()
set_target_properties(ppl_static PROPERTIES OUTPUT_NAME ppl)
target_compile_definitions(ppl_test INTERFACE PPL_TEST_LEVELS=${levels_built}) # those built; support/level.h asks the processor

# The helpers stand beside ppl.h wherever it is used.
file(GLOB PPL_HELPERS CONFIGURE_DEPENDS ${PPL_ROOT}/helpers/*.h ${PPL_ROOT}/helpers/*.hpp)
install(FILES ${PPL_ROOT}/include/ppl.h ${PPL_HELPERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development)
install(TARGETS ppl_installed ppl_installed_static EXPORT ppl-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(EXPORT ppl-targets NAMESPACE ppl:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ppl COMPONENT development)

# What find_package(ppl) and pkg-config read; both find the rest from where they stand, so a prefix can be moved.
include(CMakePackageConfigHelpers)
set(PPL_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ppl)
configure_package_config_file(${PPL_ROOT}/cmake/ppl-config.cmake.in ppl-config.cmake
  INSTALL_DESTINATION ${PPL_PACKAGE_DIR} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(ppl-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ppl-config.cmake ${CMAKE_CURRENT_BINARY_DIR}/ppl-config-version.cmake
  DESTINATION ${PPL_PACKAGE_DIR} COMPONENT development)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE PPL_LIBDIR)
string(REGEX REPLACE "[^/]+" ".." PPL_UP ${PPL_LIBDIR}/pkgconfig)
configure_file(${PPL_ROOT}/cmake/ppl.pc.in ppl.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/ppl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)
