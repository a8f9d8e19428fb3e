# The tuning page from a native build: target web builds it with the preset wasm, and installing takes it along.
add_custom_target(web WORKING_DIRECTORY ${PPL_ROOT} VERBATIM USES_TERMINAL
  COMMAND ${CMAKE_COMMAND} --preset wasm
  COMMAND ${CMAKE_COMMAND} --build --preset wasm --target web)
install(FILES ${PPL_ROOT}/build/wasm/web/tune.html DESTINATION ${CMAKE_INSTALL_DATADIR}/pplcamera COMPONENT page
  OPTIONAL)
