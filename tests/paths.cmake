# The tile pipeline: its blocks alone, the runs of the output stage, and the corners of its paths and formats.
add_executable(paths blocks_test.cpp output_runs_test.cpp paths_test.cpp statistics_test.cpp)
target_include_directories(paths PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${PPL_ROOT}/include ${PPL_ROOT})
target_compile_options(paths PRIVATE ${PPL_WARNINGS} -O1)
if(PPL_SANITIZE)
  target_compile_options(paths PRIVATE -O1 -fsanitize=address)
endif()
target_link_libraries(paths PRIVATE ppl_test GTest::gtest_main)
gtest_discover_tests(paths TEST_PREFIX "paths.")
