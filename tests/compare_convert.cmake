# Conversions: known digests, corners of the contract, and the comparison with the plain reference.
foreach(test vectors_convert edges_convert compare_convert)
  add_executable(${test} ${CMAKE_CURRENT_SOURCE_DIR}/${test}.cpp)
  target_include_directories(${test} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  target_compile_definitions(${test} PRIVATE PPL_TEST_VECTORS="${CMAKE_CURRENT_SOURCE_DIR}/vectors")
  target_compile_options(${test} PRIVATE ${PPL_WARNINGS})
  target_link_libraries(${test} PRIVATE ppl_test ppl_reference GTest::gtest_main)
  gtest_discover_tests(${test} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endforeach()
