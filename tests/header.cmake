# What ppl.h says, held against the library and the build.
add_executable(header_test header_test.cpp header_c99.c)
target_include_directories(header_test PRIVATE ${PPL_ROOT}/include)
target_compile_options(header_test PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:${PPL_WARNINGS}>")
set_source_files_properties(header_c99.c PROPERTIES COMPILE_OPTIONS "-std=c99;-pedantic-errors")
target_compile_definitions(header_test PRIVATE WANTED_VERSION="${PROJECT_VERSION}")
target_link_libraries(header_test PRIVATE ppl GTest::gtest_main)
gtest_discover_tests(header_test)

find_package(Python3 COMPONENTS Interpreter)
if(Python3_FOUND)
  add_test(NAME header_names COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/scripts/header_names.py
    ${PPL_ROOT}/include/ppl.h ${PPL_ROOT}/cmake/exports.txt)
endif()
