# The simulated sensor of the command line tool, without the tool around it.
find_package(PNG QUIET)
if(NOT PNG_FOUND)
  message(STATUS "tests of the simulated sensor left out: they need libpng-dev")
  return()
endif()
set(tools ${PROJECT_SOURCE_DIR}/tools)
add_executable(simulate_test ${CMAKE_CURRENT_SOURCE_DIR}/simulate_test.cpp
  ${tools}/simulate.cpp ${tools}/picture.cpp ${tools}/file.cpp
  ${tools}/failure.cpp)
target_include_directories(simulate_test PRIVATE ${tools})
target_compile_definitions(simulate_test PRIVATE SAMPLES="${PROJECT_SOURCE_DIR}/samples")
target_compile_options(simulate_test PRIVATE ${PPL_WARNINGS})
target_link_libraries(simulate_test PRIVATE ppl::ppl PNG::PNG GTest::gtest_main)
if(PPL_SANITIZE)
  target_compile_options(simulate_test PRIVATE -fsanitize=address,undefined -fno-sanitize-recover=all)
endif()
gtest_discover_tests(simulate_test)
