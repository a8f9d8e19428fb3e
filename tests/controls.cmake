# Pool, geometry, output plan, controls, derived tables, statistics read-out; and what the shared object exports.
file(GLOB controls_tests CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/controls_*_test.cpp)
add_executable(controls_test ${controls_tests})
target_include_directories(controls_test PRIVATE ${PPL_ROOT})
target_compile_options(controls_test PRIVATE ${PPL_WARNINGS})
target_compile_definitions(controls_test PRIVATE PPL_VECTORS="${CMAKE_CURRENT_SOURCE_DIR}/vectors")
target_link_libraries(controls_test PRIVATE ppl_test GTest::gtest_main)
if(PPL_SANITIZE)
  target_compile_options(controls_test PRIVATE -O1 -fsanitize=address)
endif()
gtest_discover_tests(controls_test)

add_test(NAME exports COMMAND ${CMAKE_COMMAND} -DNM=${CMAKE_NM} -DLIBRARY=$<TARGET_FILE:ppl>
  -DEXPORTS=${PPL_ROOT}/cmake/exports.txt -P ${CMAKE_CURRENT_SOURCE_DIR}/scripts/exports.cmake)
