# Conversions where rows, planes and destinations do not fit together as usual.
add_executable(convert_edge_cases ${CMAKE_CURRENT_SOURCE_DIR}/convert_edge_cases.cpp)
target_include_directories(convert_edge_cases PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_compile_options(convert_edge_cases PRIVATE ${PPL_WARNINGS})
target_link_libraries(convert_edge_cases PRIVATE ppl_test GTest::gtest_main)
gtest_discover_tests(convert_edge_cases DISCOVERY_TIMEOUT 60)
# The motion test, by its kernels.
add_executable(motion_test ${CMAKE_CURRENT_SOURCE_DIR}/motion_test.cpp)
target_include_directories(motion_test PRIVATE ${PPL_ROOT})
target_compile_options(motion_test PRIVATE ${PPL_WARNINGS})
target_link_libraries(motion_test PRIVATE ppl_test GTest::gtest_main)
gtest_discover_tests(motion_test DISCOVERY_TIMEOUT 60)
