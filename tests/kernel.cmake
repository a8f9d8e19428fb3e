# Tests of the kernel image. The image is built by its own presets, as a fixture; everything else asks for it:
#
#   <preset>.build            makes the image; also fails if a frame is larger than 2 KB
#   <preset>.tables .objects .code .stack   what stands in the files (kernel/check_*.py)
#   <preset>.reproducible     a second build, elsewhere, gives the same bytes
#   <preset>.image            the image loaded into a Linux process
#   <preset>.<test>           a test of the Linux library, run against the loaded image
#   <preset>.wine             the capture driver example as a service under Wine
#   kernel.sign               a signed image is still right
#   kernel.checks             the checks find what they look for
#
# In the ordinary release build only: the others would test the same images again. Where a tool is missing, one
# test stands for what cannot be done and says so.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT PPL_SANITIZE)
  set(default ON)
else()
  set(default OFF)
endif()
set(PPL_IMAGE_SHARE 0.3 CACHE STRING "Share of the usual number of random cases that the kernel image is put to")
option(PPL_TEST_KERNEL "Build and test the kernel image" ${default})
if(NOT PPL_TEST_KERNEL)
  return()
endif()

set(here ${CMAKE_CURRENT_LIST_DIR}/kernel)

# The reason stands in the name: ctest shows nothing else of a skipped test.
function(ppl_skipped_test name reason)
  add_test(NAME "${name}: ${reason}" COMMAND ${CMAKE_COMMAND} -E echo "skipped: ${reason}")
  set_tests_properties("${name}: ${reason}" PROPERTIES SKIP_REGULAR_EXPRESSION "^skipped: ")
endfunction()

find_package(Python3 COMPONENTS Interpreter)
find_program(PPL_FOUND_MINGW NAMES x86_64-w64-mingw32-g++-win32 x86_64-w64-mingw32-g++)
find_program(PPL_FOUND_DLLTOOL NAMES llvm-dlltool-19 llvm-dlltool-18 llvm-dlltool-17 llvm-dlltool-16 llvm-dlltool-15
  llvm-dlltool-14 llvm-dlltool)
find_program(PPL_FOUND_CLANG NAMES clang++-19 clang++-18 clang++-17 clang++-16)
find_program(PPL_FOUND_LLD NAMES lld-link-19 lld-link-18 lld-link-17 lld-link-16)
find_program(PPL_FOUND_WINE NAMES wine)
find_program(PPL_FOUND_NINJA NAMES ninja)
foreach(tool PYTHON3_EXECUTABLE=python3 PPL_FOUND_MINGW=g++-mingw-w64-x86-64-win32 PPL_FOUND_DLLTOOL=llvm
    PPL_FOUND_NINJA=ninja-build)
  string(REPLACE "=" ";" tool ${tool})
  list(GET tool 0 variable)
  list(GET tool 1 package)
  if(variable STREQUAL "PYTHON3_EXECUTABLE")
    set(found ${Python3_EXECUTABLE})
  else()
    set(found ${${variable}})
  endif()
  if(NOT found)
    ppl_skipped_test(kernel "${package} is not installed")
    return()
  endif()
endforeach()
set(python ${Python3_EXECUTABLE} -B)

# ---- The functions of ppl.h, answered by the image
file(STRINGS ${PPL_ROOT}/cmake/exports.txt names)
list(TRANSFORM names REPLACE "(.+)" "PPL_IMAGE_FUNCTION(\\1)\n")
list(JOIN names "" names)
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/kernel/image_names.inc CONTENT "${names}" @ONLY)
add_library(ppl_kernel_image STATIC ${here}/image_calls.cpp ${here}/loaded_image.cpp)
target_include_directories(ppl_kernel_image PUBLIC ${PPL_ROOT}/include ${CMAKE_CURRENT_LIST_DIR} ${PPL_ROOT}
  PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/kernel)
target_compile_definitions(ppl_kernel_image PRIVATE PPL_KERNEL_IMAGE_DEFAULT="${PPL_ROOT}/build/kernel/ppl.sys")
# longjmp leaves the image's stack for the caller's; the checked form of it takes that for a mistake
target_compile_options(ppl_kernel_image PRIVATE ${PPL_WARNINGS} -U_FORTIFY_SOURCE)

add_executable(kernel_image_test ${here}/image_test.cpp)
target_link_libraries(kernel_image_test PRIVATE ppl_kernel_image GTest::gtest_main)
target_compile_options(kernel_image_test PRIVATE ${PPL_WARNINGS})

# The tests of the Linux library, the very objects, linked with the image instead.
set(PPL_IMAGE_TESTS image_test)
foreach(name digests_bayer compare_bayer vectors_convert edges_convert compare_convert)
  add_executable(kernel_${name} $<TARGET_OBJECTS:${name}>)
  target_link_libraries(kernel_${name} PRIVATE ppl_kernel_image ppl_reference GTest::gtest_main)
  list(APPEND PPL_IMAGE_TESTS ${name})
endforeach()
set(PPL_IMAGE_ARGUMENTS_compare_bayer --share ${PPL_IMAGE_SHARE})

add_executable(kernel_capture_pictures ${here}/capture_pictures.cpp)
target_link_libraries(kernel_capture_pictures PRIVATE ppl_static)
target_include_directories(kernel_capture_pictures PRIVATE ${PPL_ROOT}/examples/capture-driver)
target_compile_options(kernel_capture_pictures PRIVATE ${PPL_WARNINGS})

# ---- Per preset
function(ppl_kernel_tests preset)
  set(dir ${PPL_ROOT}/build/${preset})
  set(image ${dir}/ppl.sys)
  set(copy ${CMAKE_BINARY_DIR}/${preset}-again)
  add_test(NAME ${preset}.build COMMAND ${CMAKE_COMMAND} -DROOT=${PPL_ROOT} -DPRESET=${preset} -P ${here}/build.cmake)
  add_test(NAME ${preset}.tables COMMAND ${python} ${here}/check_tables.py ${image} ${PPL_ROOT}/cmake/exports.txt)
  add_test(NAME ${preset}.objects COMMAND ${python} ${here}/check_objects.py ${dir})
  add_test(NAME ${preset}.code COMMAND ${python} ${here}/check_code.py ${image})
  add_test(NAME ${preset}.stack COMMAND ${python} ${here}/check_stack.py ${image} 2048 4096)
  add_test(NAME ${preset}.reproducible COMMAND ${CMAKE_COMMAND} -DROOT=${PPL_ROOT} -DPRESET=${preset} -DCOPY=${copy}
    -P ${here}/reproduce.cmake)
  set(needing ${preset}.tables ${preset}.objects ${preset}.code ${preset}.stack ${preset}.reproducible)
  foreach(name IN LISTS PPL_IMAGE_TESTS)
    add_test(NAME ${preset}.${name} COMMAND kernel_${name} ${PPL_IMAGE_ARGUMENTS_${name}})
    set_tests_properties(${preset}.${name} PROPERTIES ENVIRONMENT PPL_KERNEL_IMAGE=${image})
    list(APPEND needing ${preset}.${name})
  endforeach()
  if(PPL_FOUND_WINE)
    add_test(NAME ${preset}.wine COMMAND ${python} ${here}/wine_test.py ${dir} ${CMAKE_BINARY_DIR}/wine
      $<TARGET_FILE:kernel_capture_pictures>)
    set_tests_properties(${preset}.wine PROPERTIES SKIP_RETURN_CODE 77 RESOURCE_LOCK wine TIMEOUT 300)
    list(APPEND needing ${preset}.wine)
  else()
    ppl_skipped_test(${preset}.wine "wine is not installed")
  endif()
  set_tests_properties(${preset}.build PROPERTIES FIXTURES_SETUP ${preset})
  set_tests_properties(${needing} PROPERTIES FIXTURES_REQUIRED ${preset})
  set_tests_properties(${preset}.build ${preset}.reproducible PROPERTIES RUN_SERIAL ON TIMEOUT 900)
endfunction()

ppl_kernel_tests(kernel)
if(PPL_FOUND_CLANG AND PPL_FOUND_LLD)
  ppl_kernel_tests(kernel-release)
else()
  ppl_skipped_test(kernel-release "clang-19 or lld-19 is not installed")
endif()
find_program(PPL_FOUND_SIGN NAMES osslsigncode)
if(PPL_FOUND_SIGN)
  add_test(NAME kernel.sign COMMAND ${CMAKE_COMMAND} -DSIGN=${PPL_ROOT}/platform/kernel-sign.sh
    -DIMAGE=${PPL_ROOT}/build/kernel/ppl.sys -DTO=${CMAKE_BINARY_DIR}/signed -DPYTHON=${Python3_EXECUTABLE}
    -DEXPORTS=${PPL_ROOT}/cmake/exports.txt -P ${here}/sign.cmake)
  set_tests_properties(kernel.sign PROPERTIES FIXTURES_REQUIRED kernel)
else()
  ppl_skipped_test(kernel.sign "osslsigncode is not installed")
endif()
add_test(NAME kernel.checks COMMAND ${python} ${here}/checks_test.py ${PPL_ROOT}/build/kernel)
set_tests_properties(kernel.checks PROPERTIES FIXTURES_REQUIRED kernel)
