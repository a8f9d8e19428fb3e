# The plain reference: whole frames, one sample at a time, nothing shared with the library.
file(GLOB reference_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/reference/*.cpp)
add_library(ppl_reference STATIC ${reference_sources})
target_include_directories(ppl_reference PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
target_compile_options(ppl_reference PRIVATE ${PPL_WARNINGS} -O2)
if(PPL_SANITIZE)
  target_compile_options(ppl_reference PRIVATE -fsanitize=address,undefined -fno-sanitize-recover=all)
  target_link_options(ppl_reference PUBLIC -fsanitize=address,undefined)
endif()

add_executable(reference_test
  ${CMAKE_CURRENT_SOURCE_DIR}/reference_controls.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/reference_tables.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/reference_mosaic.cpp
  ${CMAKE_CURRENT_SOURCE_DIR}/reference_pictures.cpp)
target_link_libraries(reference_test PRIVATE ppl_reference GTest::gtest_main)
target_compile_options(reference_test PRIVATE ${PPL_WARNINGS})
if(PPL_SANITIZE)
  target_compile_options(reference_test PRIVATE -O1 -fsanitize=address)
endif()
target_compile_definitions(reference_test PRIVATE VECTORS="${CMAKE_CURRENT_SOURCE_DIR}/vectors")
gtest_discover_tests(reference_test)
