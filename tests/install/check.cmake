# Installs BUILD under WORK, moves the prefix, and builds and runs the consumer against it in every way offered.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE out)
  if(NOT status EQUAL 0)
    string(JOIN " " command ${ARGN})
    message(FATAL_ERROR "${command}: ${status}\n${out}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/first)
file(RENAME ${WORK}/first ${WORK}/moved)
set(prefix ${WORK}/moved)

foreach(file include/ppl.h ${LIBDIR}/libppl.so ${LIBDIR}/libppl.a ${LIBDIR}/pkgconfig/ppl.pc
    ${LIBDIR}/cmake/ppl/ppl-config.cmake ${LIBDIR}/cmake/ppl/ppl-config-version.cmake)
  if(NOT EXISTS ${prefix}/${file})
    message(FATAL_ERROR "not installed: ${file}")
  endif()
endforeach()
file(GLOB headers RELATIVE ${prefix}/include ${prefix}/include/*)
# ppl.h and the helpers, all that there are and nothing else.
file(GLOB wanted RELATIVE ${SOURCE}/../../../helpers ${SOURCE}/../../../helpers/*)
list(APPEND wanted ppl.h)
list(SORT wanted)
list(SORT headers)
if(NOT headers STREQUAL wanted)
  message(FATAL_ERROR "headers installed: ${headers}; wanted: ${wanted}")
endif()

set(configure ${CMAKE_COMMAND} -S ${SOURCE} -G ${GENERATOR} -DCMAKE_C_COMPILER=${CC} -DCMAKE_PREFIX_PATH=${prefix})
run(${configure} -B ${WORK}/consumer -DWANTED_VERSION=${VERSION})
run(${CMAKE_COMMAND} --build ${WORK}/consumer)
foreach(program shared static shared_cxx)
  run(${WORK}/consumer/${program})
endforeach()

# A version that isn't there must not be found.
execute_process(COMMAND ${configure} -B ${WORK}/refused -DWANTED_VERSION=99 RESULT_VARIABLE status
  OUTPUT_QUIET ERROR_QUIET)
if(status EQUAL 0)
  message(FATAL_ERROR "version 99 was found")
endif()

if(NOT PKG_CONFIG)
  message(STATUS "pkg-config isn't installed: its part is left out")
  return()
endif()
set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
execute_process(COMMAND ${PKG_CONFIG} --modversion ppl OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT version STREQUAL VERSION)
  message(FATAL_ERROR "pkg-config says version '${version}', not ${VERSION}")
endif()
execute_process(COMMAND ${PKG_CONFIG} --cflags --libs ppl OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
  COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${CC} ${SOURCE}/consumer.c -o ${WORK}/by_pkg_config ${flags} -Wl,-rpath,${prefix}/${LIBDIR})
run(${WORK}/by_pkg_config)
