# Signs a copy of the image and checks its tables again.
file(REMOVE_RECURSE ${TO})
file(MAKE_DIRECTORY ${TO})
execute_process(COMMAND ${SIGN} ${IMAGE} ${TO}/ppl.sys WORKING_DIRECTORY ${TO} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${PYTHON} -B ${CMAKE_CURRENT_LIST_DIR}/check_tables.py ${TO}/ppl.sys ${EXPORTS}
  COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE ${TO})
