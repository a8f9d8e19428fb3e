# Debian packages, by the preset packages and its target package. What a component lacks to be built is told by the
# room that builds it; such a component makes no package.
#
# Debian's polyhedra library owns libppl.so, libppl.a, /usr/share/ppl and the package names around libppl; its Python
# package owns the module ppl. Hence pplcamera in every name that could meet one of those.
set(CPACK_GENERATOR DEB)
# Debian wants a name and an address. The authors have no address of their own; whoever publishes packages puts in his.
# The domain example.org is kept for examples and is nobody's.
set(CPACK_PACKAGE_CONTACT "The ppl authors <ppl@example.org>" CACHE STRING "Maintainer in the packages, with an address")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_OUTPUT_FILE_PREFIX ${CMAKE_BINARY_DIR}/debs)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/installed)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # every package has its own
set(CPACK_COMPONENTS_ALL)

# One package: its component, name, section, summary, text in lines of at most 79 columns, and what it depends on beside
# shared libraries.
macro(ppl_package component package section summary text)
  string(TOUPPER ${component} ppl_upper)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_DEBIAN_${ppl_upper}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${ppl_upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${ppl_upper}_DESCRIPTION "${summary}\n${text}")
  set(CPACK_DEBIAN_${ppl_upper}_PACKAGE_DEPENDS "${ARGN}")
endmacro()

ppl_package(library libpplcamera1 libs "raw camera frames to pictures, shared library"
  "Turns raw Bayer frames and frames of video decoders into finished I420, YUYV,
UYVY and RGB pictures: reconstructed, corrected, filtered, and with the
statistics that exposure and white balance need.")
# What packages of programs that use the library depend on, and the cache of the dynamic linker.
file(WRITE ${CMAKE_BINARY_DIR}/debian/shlibs
  "libpplcamera ${PROJECT_VERSION_MAJOR} libpplcamera${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION})\n")
file(WRITE ${CMAKE_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_BINARY_DIR}/debian/shlibs ${CMAKE_BINARY_DIR}/debian/triggers)

ppl_package(development libpplcamera-dev libdevel "raw camera frames to pictures, for programs that are built"
  "Headers, the static library, the CMake package ppl, the pkg-config file ppl,
documents and examples of the library that turns raw Bayer frames into
finished pictures."
  "libpplcamera1 (= ${PROJECT_VERSION})")
# The documents with what they lead to, at the places that their links say; the headers stand there as links.
set(ppl_documents ${CMAKE_INSTALL_DATADIR}/doc/libpplcamera-dev)
install(FILES README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md DESTINATION ${ppl_documents} COMPONENT development
  EXCLUDE_FROM_ALL)
install(DIRECTORY docs examples samples DESTINATION ${ppl_documents} COMPONENT development EXCLUDE_FROM_ALL
  PATTERN docs/reference EXCLUDE REGEX "examples/CMakeLists.txt$" EXCLUDE)
foreach(document python/README.md web/package/README.md)
  cmake_path(GET document PARENT_PATH folder)
  install(FILES ${document} DESTINATION ${ppl_documents}/${folder} COMPONENT development EXCLUDE_FROM_ALL)
endforeach()
install(CODE "foreach(name include helpers)
    file(CREATE_LINK ../../../include \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${ppl_documents}/\${name} SYMBOLIC)
  endforeach()
  file(CREATE_LINK copyright \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${ppl_documents}/LICENSE SYMBOLIC)"
  COMPONENT development EXCLUDE_FROM_ALL)

if(TARGET ppl_tool)
  ppl_package(tool pplcamera video "raw camera frames to pictures, command line tool"
    "The command ppl turns raw frames and recordings of any Bayer sensor into
picture files and video, compares reconstructions, finds white balance and
lens shading, and writes settings and statistics."
    "libpplcamera1 (= ${PROJECT_VERSION}), fonts-dejavu-core")
endif()

if(TARGET gstppl)
  ppl_package(element gstreamer1.0-pplcamera libs "raw camera frames to pictures, GStreamer element"
    "The element pplbayer turns video/x-bayer into video/x-raw: any phase, 8 to 16
bits, all controls as properties that may change while it runs, automatic
white balance and exposure.")
  set(CPACK_DEBIAN_ELEMENT_PACKAGE_RECOMMENDS gstreamer1.0-tools)
endif()

# The Python package is built while it is packed, and is nothing that a plain installation takes along.
if(PPL_BUILD_PYTHON)
  find_program(PPL_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH)
  find_file(PPL_PYBIND11 pybind11/pybind11.h)
  if(PPL_PYTHON)
    execute_process(COMMAND ${PPL_PYTHON} -c
      "import setuptools, numpy, pip, sys, wheel; v = sys.version_info; print(f'3.{v[1]};3.{v[1] + 1}')"
      OUTPUT_VARIABLE PPL_PYTHONS OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  endif()
  if(PPL_PYTHONS AND PPL_PYBIND11)
    list(GET PPL_PYTHONS 0 ppl_this)
    list(GET PPL_PYTHONS 1 ppl_next)
    ppl_package(python python3-pplcamera python "raw camera frames to pictures, Python package"
      "The module pplcamera turns raw frames in NumPy arrays into pictures, with
every control and the statistics. It is also called ppl, where Debian's
package python3-ppl, another library, is absent."
      "python3 (>= ${ppl_this}), python3 (<< ${ppl_next}), python3-numpy")
    install(CODE "set(ROOT \"${PPL_ROOT}\")\nset(BUILD \"${CMAKE_BINARY_DIR}\")\nset(PYTHON \"${PPL_PYTHON}\")\nset(STRIP \"${CMAKE_STRIP}\")"
      COMPONENT python EXCLUDE_FROM_ALL)
    install(SCRIPT cmake/package_python.cmake COMPONENT python EXCLUDE_FROM_ALL)
  else()
    message(STATUS "ppl Python package: no .deb; it needs python3-dev, python3-numpy, python3-pip, python3-setuptools, "
      "python3-wheel and pybind11-dev")
  endif()
endif()

if(EXISTS ${PPL_ROOT}/build/wasm/web/tune.html)
  ppl_package(page pplcamera-tune video "raw camera frames to pictures, tuning page"
    "One file for a browser, /usr/share/pplcamera/tune.html: a raw frame of one's
own, every control, the picture at once, and the settings as options, C and
properties. Nothing is fetched, and no frame leaves the machine.")
  set(CPACK_DEBIAN_PAGE_PACKAGE_ARCHITECTURE all)
  set(CPACK_DEBIAN_PAGE_PACKAGE_SHLIBDEPS OFF)
  set(CPACK_DEBIAN_PAGE_PACKAGE_RECOMMENDS "chromium | www-browser")
else()
  message(STATUS "ppl tuning page: no .deb; build the target web and configure again")
endif()

# Every package has its copyright file: the licence, in the form that Debian's tools read.
if(EXISTS ${PPL_ROOT}/LICENSE)
  file(READ ${PPL_ROOT}/LICENSE ppl_licence)
  string(REGEX REPLACE "^Copyright \\(c\\) ([^\n]*)\nAll rights reserved.\n\n" "" ppl_licence "${ppl_licence}")
  set(ppl_copyright ${CMAKE_MATCH_1})
  string(STRIP "${ppl_licence}" ppl_licence)
  string(REGEX REPLACE "\n\n" "\n.\n" ppl_licence "${ppl_licence}")
  string(REPLACE "\n" "\n " ppl_licence "${ppl_licence}")
  file(WRITE ${CMAKE_BINARY_DIR}/copyright "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: ppl

Files: *
Copyright: ${ppl_copyright}
License: BSD-2-Clause
 ${ppl_licence}

Files: samples/* docs/*.png docs/tuning/*
Copyright: Rachel Michetti and Pikolo Espresso Bar (the photograph)
License: CC0-1.0
 On Debian systems the text of this licence is in /usr/share/common-licenses/CC0-1.0.
")
  foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} ppl_upper)
    install(FILES ${CMAKE_BINARY_DIR}/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${ppl_upper}_PACKAGE_NAME}
      COMPONENT ${component} EXCLUDE_FROM_ALL)
  endforeach()
endif()

# And its changelog, and manual pages, as Debian wants them: packed, without a date of packing.
find_program(PPL_GZIP gzip)
if(PPL_GZIP)
  string(TIMESTAMP ppl_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(WRITE ${CMAKE_BINARY_DIR}/debian/changelog "pplcamera (${PROJECT_VERSION}) UNRELEASED; urgency=medium

  * CHANGELOG.md, in libpplcamera-dev, tells what is in this version.

 -- ${CPACK_PACKAGE_CONTACT}  ${ppl_date}
")
  execute_process(COMMAND ${PPL_GZIP} -9nkf ${CMAKE_BINARY_DIR}/debian/changelog COMMAND_ERROR_IS_FATAL ANY)
  foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} ppl_upper)
    install(FILES ${CMAKE_BINARY_DIR}/debian/changelog.gz
      DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${ppl_upper}_PACKAGE_NAME} COMPONENT ${component} EXCLUDE_FROM_ALL)
  endforeach()
  # Behind the installation of the pages themselves.
  install(CODE "file(GLOB pages \$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_MANDIR}/man1/*.1)
    if(pages)
      execute_process(COMMAND ${PPL_GZIP} -9nf \${pages} COMMAND_ERROR_IS_FATAL ANY)
    endif()" COMPONENT tool EXCLUDE_FROM_ALL)
endif()

include(CPack)
