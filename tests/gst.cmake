# The GStreamer element, through gst-launch-1.0.
find_program(PPL_GST_LAUNCH gst-launch-1.0)
if(NOT TARGET gstppl OR NOT TARGET ppl_tool OR NOT PPL_GST_LAUNCH)
  return()
endif()
find_package(PNG REQUIRED)
add_executable(gst_test ${CMAKE_CURRENT_SOURCE_DIR}/tool/gst_test.cpp ${CMAKE_CURRENT_SOURCE_DIR}/tool/run.cpp)
target_compile_options(gst_test PRIVATE ${PPL_WARNINGS})
target_compile_definitions(gst_test PRIVATE TOOL="$<TARGET_FILE:ppl_tool>" GST_LAUNCH="${PPL_GST_LAUNCH}"
  PLUGINS="$<TARGET_FILE_DIR:gstppl>" SAMPLES="${PROJECT_SOURCE_DIR}/samples")
target_link_libraries(gst_test PRIVATE PNG::PNG GTest::gtest_main)
add_dependencies(gst_test ppl_tool gstppl)
gtest_discover_tests(gst_test)
