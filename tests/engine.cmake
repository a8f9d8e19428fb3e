# Frame calls, raw path, wrappers, scaler, qualities 3 and 13: the corners of their contract.
add_executable(engine engine_pool.cpp engine_frame_call.cpp engine_wrappers.cpp engine_scaler.cpp engine_bulk.cpp
  qualities_test.cpp qualities_c99.c)
target_include_directories(engine PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${PPL_ROOT}/include ${PPL_ROOT})
set_source_files_properties(qualities_c99.c PROPERTIES COMPILE_OPTIONS "-std=c99;-Wall;-Wextra;-Wpedantic;-Werror")
target_compile_options(engine PRIVATE $<$<COMPILE_LANGUAGE:CXX>:${PPL_WARNINGS}> -O1)  # gcc 12 -O3 suspects growing vectors of overruns
if(PPL_SANITIZE)
  target_compile_options(engine PRIVATE -O1 -fsanitize=address)
endif()
target_link_libraries(engine PRIVATE ppl_test ppl_reference GTest::gtest_main)
gtest_discover_tests(engine TEST_PREFIX "engine.")
