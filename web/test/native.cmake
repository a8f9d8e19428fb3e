# Builds what the page and the module are compared with, in the native build of the preset release.
if(NOT EXISTS ${ROOT}/build/release/build.ninja)
  execute_process(COMMAND ${CMAKE_COMMAND} --preset release WORKING_DIRECTORY ${ROOT} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endif()
execute_process(COMMAND ${CMAKE_COMMAND} --build --preset release --target ppl_tool digests_make WORKING_DIRECTORY ${ROOT}
  COMMAND_ERROR_IS_FATAL ANY)
