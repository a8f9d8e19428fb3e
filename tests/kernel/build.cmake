# Makes the image of a preset.
execute_process(COMMAND ${CMAKE_COMMAND} --preset ${PRESET} WORKING_DIRECTORY ${ROOT} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build --preset ${PRESET} --parallel 2 WORKING_DIRECTORY ${ROOT}
  COMMAND_ERROR_IS_FATAL ANY)
