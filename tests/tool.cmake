# The command line tool, run as a user runs it.
if(NOT TARGET ppl_tool)
  message(STATUS "tests of the command line tool left out: the tool is not built")
  return()
endif()
find_package(PNG REQUIRED)
find_package(nlohmann_json CONFIG REQUIRED)
add_executable(tool_test ${CMAKE_CURRENT_SOURCE_DIR}/tool/convert_test.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/tool/reports_test.cpp ${CMAKE_CURRENT_SOURCE_DIR}/tool/deinterlace_test.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/tool/bad_input_test.cpp ${CMAKE_CURRENT_SOURCE_DIR}/tool/frame_file_test.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/tool/run.cpp)
target_compile_options(tool_test PRIVATE ${PPL_WARNINGS})
target_compile_definitions(tool_test PRIVATE TOOL="$<TARGET_FILE:ppl_tool>"
  SAMPLES="${PROJECT_SOURCE_DIR}/samples" VERSION="${PROJECT_VERSION}")
target_link_libraries(tool_test PRIVATE ppl::ppl PNG::PNG nlohmann_json::nlohmann_json GTest::gtest_main)
target_compile_options(tool_test PRIVATE -O1)
if(PPL_SANITIZE)
  target_compile_options(tool_test PRIVATE -O0 -fsanitize=address)
endif()
add_dependencies(tool_test ppl_tool)
# The font library keeps its tables to the end of the program: no leak of ours.
gtest_discover_tests(tool_test PROPERTIES ENVIRONMENT ASAN_OPTIONS=detect_leaks=0)
