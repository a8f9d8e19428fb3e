# Signs a copy of the image as documented, without naming a key, and checks its tables again. Nothing but the signed
# image may be left where the script was called; the key is kept elsewhere, for its owner's eyes.
file(REMOVE_RECURSE ${TO})
file(MAKE_DIRECTORY ${TO}/here ${TO}/home)
execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=KEY --unset=CERTIFICATE --unset=XDG_CONFIG_HOME HOME=${TO}/home
  ${SIGN} ${IMAGE} ppl.sys WORKING_DIRECTORY ${TO}/here COMMAND_ERROR_IS_FATAL ANY)
file(GLOB left RELATIVE ${TO}/here ${TO}/here/* ${TO}/here/.[a-z]*)
if(NOT left STREQUAL "ppl.sys")
  message(FATAL_ERROR "left in the current directory: ${left}")
endif()
execute_process(COMMAND stat -c %a ${TO}/home/.config/ppl/test.key OUTPUT_VARIABLE mode
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(NOT mode STREQUAL "600")
  message(FATAL_ERROR "others may read the key: ${mode}")
endif()
execute_process(COMMAND ${PYTHON} -B ${CMAKE_CURRENT_LIST_DIR}/check_tables.py ${TO}/here/ppl.sys ${EXPORTS}
  COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE ${TO})
