# What is installed is enough to build against: a project of its own, by find_package and by pkg-config.
if(NOT PPL_SANITIZE)
  find_program(PPL_PKG_CONFIG pkg-config)
  add_test(NAME install COMMAND ${CMAKE_COMMAND} -DBUILD=${CMAKE_BINARY_DIR} -DVERSION=${PROJECT_VERSION}
    -DSOURCE=${CMAKE_CURRENT_SOURCE_DIR}/install -DWORK=${CMAKE_CURRENT_BINARY_DIR}/install_test
    -DCC=${CMAKE_C_COMPILER} -DGENERATOR=${CMAKE_GENERATOR} -DLIBDIR=${CMAKE_INSTALL_LIBDIR}
    -DPKG_CONFIG=${PPL_PKG_CONFIG} -P ${CMAKE_CURRENT_SOURCE_DIR}/install/check.cmake)
  set_tests_properties(install PROPERTIES TIMEOUT 300)
endif()
