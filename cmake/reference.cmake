# The target reference: HTML of the headers by Doxygen, in reference/html of the build folder. Its test wants every
# function of every header in it, and no warning.
find_package(Python3 COMPONENTS Interpreter QUIET)
find_program(PPL_DOXYGEN doxygen)
if(PPL_DOXYGEN AND Python3_FOUND)
  configure_file(${PPL_ROOT}/docs/reference/Doxyfile.in Doxyfile @ONLY)
  set(ppl_reference ${Python3_EXECUTABLE} ${PPL_ROOT}/docs/reference/make.py ${PPL_ROOT} ${PPL_DOXYGEN}
    ${CMAKE_CURRENT_BINARY_DIR}/Doxyfile ${CMAKE_CURRENT_BINARY_DIR}/reference)
  add_custom_target(reference COMMAND ${ppl_reference} VERBATIM)
  if(PPL_BUILD_TESTS)
    add_test(NAME docs.reference COMMAND ${ppl_reference})
  endif()
else()
  message(STATUS "ppl reference of the headers left out: it needs doxygen and python3")
endif()
