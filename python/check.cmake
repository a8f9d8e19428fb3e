# Builds the package into WORK/site from a copy of its sources, runs its tests and the example.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE out)
  if(NOT status EQUAL 0)
    list(GET ARGN 0 1 2 3 command)
    message(FATAL_ERROR "${command}: ${status}\n${out}")
  endif()
  set(said ${out} PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK}/source ${WORK}/site ${WORK}/explore)
file(COPY ${ROOT}/python/src ${ROOT}/python/pyproject.toml ${ROOT}/python/setup.py ${ROOT}/python/README.md
  DESTINATION ${WORK}/source)
set(environment ${CMAKE_COMMAND} -E env PPL_ROOT=${ROOT} PPL_BUILD=${BUILD} PPL_LIBRARY=${LIBRARY}
  PPL_TOOL=${BUILD}/tools/ppl PYTHONPATH=${WORK}/site PYTHONDONTWRITEBYTECODE=1)
run(${environment} ${PYTHON} -m pip install --quiet --no-build-isolation --no-deps --no-index --target ${WORK}/site
  ${WORK}/source)
# The types, where mypy is at hand.
execute_process(COMMAND ${PYTHON} -m mypy --version RESULT_VARIABLE no_mypy OUTPUT_QUIET ERROR_QUIET)
if(no_mypy)
  message(STATUS "types not checked: mypy is missing")
else()
  run(${environment} ${PYTHON} -m mypy --strict --cache-dir=${WORK}/mypy ${ROOT}/python/src/ppl)
endif()
run(${environment} ${PYTHON} -m pytest -q -p no:cacheprovider ${ROOT}/python/tests)
message(STATUS "${said}")
run(${environment} ${PYTHON} ${ROOT}/examples/explore.py ${WORK}/explore)
foreach(file balance.png qualities.png statistics.png lamp.png camera.json)
  if(NOT EXISTS ${WORK}/explore/${file})
    message(FATAL_ERROR "examples/explore.py made no ${file}")
  endif()
endforeach()
