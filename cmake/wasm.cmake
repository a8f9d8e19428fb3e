# ppl.wasm: the library as one WebAssembly module with SIMD128. It exports the functions of exports.txt and its memory,
# and imports nothing. Linked by a hand-written command line: no start-up file, no C library.
include(cmake/sources.cmake)

set(PPL_WASM_OBJECTS)
function(ppl_wasm_objects name)
  add_library(${name} OBJECT ${ARGN})
  target_include_directories(${name} PRIVATE ${PPL_ROOT}/include ${PPL_ROOT})
  target_compile_definitions(${name} PRIVATE PPL_BUILDING ${PPL_HAS_LEVELS})
  target_compile_options(${name} PRIVATE ${PPL_WARNINGS} ${PPL_CORE_FLAGS} -fvisibility=hidden)
  list(APPEND PPL_WASM_OBJECTS $<TARGET_OBJECTS:${name}>)
  set(PPL_WASM_OBJECTS ${PPL_WASM_OBJECTS} PARENT_SCOPE)
endfunction()

ppl_wasm_objects(ppl_core ${PPL_CORE_SOURCES} ${PPL_ROOT}/platform/wasm.cpp)
ppl_wasm_objects(ppl_${PPL_LEVELS} ${PPL_KERNEL_SOURCES})
target_compile_definitions(ppl_${PPL_LEVELS} PRIVATE PPL_LEVEL=${PPL_LEVELS} PPL_LEVEL_${PPL_LEVELS}=1)
# The memory functions must not be turned into calls of themselves.
ppl_wasm_objects(ppl_memory ${PPL_ROOT}/platform/memory.cpp)
target_compile_options(ppl_memory PRIVATE -fno-builtin)
foreach(part core ${PPL_LEVELS} memory)
  target_compile_options(ppl_${part} PRIVATE ${PPL_FLAGS_${PPL_LEVELS}})
endforeach()

file(STRINGS ${PPL_ROOT}/cmake/exports.txt PPL_EXPORTS)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PPL_ROOT}/cmake/exports.txt)
list(TRANSFORM PPL_EXPORTS PREPEND --export= OUTPUT_VARIABLE PPL_WASM_EXPORTS)
add_custom_command(OUTPUT ppl.wasm DEPENDS ${PPL_WASM_OBJECTS} COMMAND_EXPAND_LISTS VERBATIM
  COMMAND ${PPL_WASM_LD} --no-entry --stack-first -z stack-size=65536 --strip-debug --gc-sections
    ${PPL_WASM_EXPORTS} -o ppl.wasm ${PPL_WASM_OBJECTS})
add_custom_target(ppl_wasm ALL DEPENDS ${CMAKE_BINARY_DIR}/ppl.wasm)

# The npm package, the tuning page and the tests under Node.
enable_testing()
add_subdirectory(${PPL_ROOT}/web)
