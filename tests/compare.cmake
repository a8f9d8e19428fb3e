# Bayer pictures: known digests, and the random comparison of the library with the plain reference.
function(ppl_bayer_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES;DEFINITIONS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${PPL_ROOT}/include)
  target_compile_options(${name} PRIVATE ${PPL_WARNINGS})
  target_compile_definitions(${name} PRIVATE PPL_TEST_VECTORS="${CMAKE_CURRENT_SOURCE_DIR}/vectors"
    ${ARG_DEFINITIONS})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES})
  if(PPL_SANITIZE)
    target_compile_options(${name} PRIVATE -O1 -fsanitize=address)
  endif()
endfunction()

ppl_bayer_test(digests_bayer_reference SOURCES vectors_bayer.cpp slots_reference.cpp
  LIBRARIES ppl_reference GTest::gtest_main)
gtest_discover_tests(digests_bayer_reference TEST_PREFIX "reference.")

ppl_bayer_test(digests_bayer SOURCES vectors_bayer.cpp slots_reference.cpp slots_library.cpp
  LIBRARIES ppl_reference ppl_test GTest::gtest_main DEFINITIONS TEST_LIBRARY)
gtest_discover_tests(digests_bayer TEST_PREFIX "library.")

# The random comparison, one test a family: a failure names the family and the seed that repeats it.
ppl_bayer_test(compare_bayer SOURCES compare_bayer.cpp slots_reference.cpp slots_library.cpp
  LIBRARIES ppl_reference ppl_test)
set(PPL_COMPARE_SHARE 1 CACHE STRING "Share of the usual number of random cases")
set(families counted sequences scaled black_lines absurd_lines nulls safety controls)
foreach(format I420 YUYV UYVY RGB24 RGB32)
  list(APPEND families raw_${format} wrappers_${format})
  foreach(quality 0 1 2 3 10 11 12 13 15)
    if(NOT (quality EQUAL 13 AND format MATCHES "YUYV|UYVY|RGB32") AND NOT (quality EQUAL 15 AND format STREQUAL "RGB32"))
      list(APPEND families quality_${quality}_${format})
    endif()
  endforeach()
endforeach()
foreach(family IN LISTS families)
  add_test(NAME compare_bayer.${family} COMMAND compare_bayer ${family} --share ${PPL_COMPARE_SHARE})
endforeach()
