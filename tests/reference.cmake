# The plain reference: whole frames, one sample at a time, nothing shared with the library.
file(GLOB reference_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/reference/*.cpp)
add_library(ppl_reference STATIC ${reference_sources})
target_include_directories(ppl_reference PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
target_compile_options(ppl_reference PRIVATE ${PPL_WARNINGS} $<$<CONFIG:Debug>:-O1>)
if(PPL_SANITIZE)
  target_compile_options(ppl_reference PRIVATE -fsanitize=address,undefined -fno-sanitize-recover=all)
  target_link_options(ppl_reference PUBLIC -fsanitize=address,undefined)
endif()
