# Makes the frozen digests anew and compares them with those that are kept.
execute_process(COMMAND ${MAKE} ${WORK} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${WORK} ${FROZEN} RESULT_VARIABLE differs)
if(differs)
  message(FATAL_ERROR "${WORK}, just made from the plain reference, is not ${FROZEN}")
endif()
