# Installs the Python package as module pplcamera, and as ppl behind every other ppl that the interpreter finds.
set(usr $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX})
set(source ${BUILD}/python-package/source)
set(site ${BUILD}/python-package/site)
file(REMOVE_RECURSE ${BUILD}/python-package)
file(COPY ${ROOT}/python/src ${ROOT}/python/pyproject.toml ${ROOT}/python/setup.py ${ROOT}/python/README.md
  DESTINATION ${source})
execute_process(COMMAND ${CMAKE_COMMAND} -E env PPL_ROOT=${ROOT} PPL_BUILD=${BUILD} ${PYTHON} -m pip install --quiet
  --no-build-isolation --no-deps --no-index --no-compile --root-user-action=ignore --target ${site} ${source}
  COMMAND_ERROR_IS_FATAL ANY)
file(GLOB modules ${site}/ppl/*.so)
if(STRIP)
  execute_process(COMMAND ${STRIP} --strip-unneeded ${modules} COMMAND_ERROR_IS_FATAL ANY)
endif()
file(GLOB files ${site}/ppl/*)
file(INSTALL ${files} DESTINATION ${CMAKE_INSTALL_PREFIX}/lib/python3/dist-packages/pplcamera)
file(WRITE ${usr}/lib/python3/dist-packages/pplcamera.pth "../../pplcamera/python3\n")
file(WRITE ${usr}/lib/pplcamera/python3/ppl/__init__.py
  "\"\"\"pplcamera by its short name.\"\"\"\nimport sys\n\nimport pplcamera\n\nsys.modules[__name__] = pplcamera\n")
file(WRITE ${usr}/lib/pplcamera/python3/ppl/__init__.pyi "from pplcamera import *\n")
file(WRITE ${usr}/lib/pplcamera/python3/ppl/py.typed "")
