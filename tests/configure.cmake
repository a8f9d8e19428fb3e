# The ways to configure the project that the presets don't take.
set(PPL_CONFIGURE_BUILD OFF CACHE BOOL "Build, too, what the test 'configure' configures")
if(NOT PPL_SANITIZE AND CMAKE_BUILD_TYPE STREQUAL "Release")
  add_test(NAME configure COMMAND ${CMAKE_COMMAND} -DROOT=${PPL_ROOT} -DGENERATOR=${CMAKE_GENERATOR}
    -DWORK=${CMAKE_CURRENT_BINARY_DIR}/configure_test -DBUILD=${PPL_CONFIGURE_BUILD}
    -P ${CMAKE_CURRENT_SOURCE_DIR}/configure/check.cmake)
  set_tests_properties(configure PROPERTIES TIMEOUT 600)
endif()
