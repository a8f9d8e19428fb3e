"""Builds ppl._ppl, the compiled module. All else stands in pyproject.toml.

The sources of the project are looked for in the folder above this one, or in PPL_ROOT; the library, libppl.a, in
PPL_BUILD, or in build/release of the project. So

    cmake --preset release && cmake --build --preset release --target ppl_static
    pip install --no-build-isolation ./python

installs a package that needs nothing of the project any more.
"""
import os
import pathlib
import sys

from setuptools import Extension, setup

here = pathlib.Path(__file__).resolve().parent
root = pathlib.Path(os.environ.get("PPL_ROOT", here.parent)).resolve()
library = pathlib.Path(os.environ.get("PPL_BUILD", root / "build" / "release")).resolve() / "libppl.a"

# pybind11 from its Python package, or the system's headers without it.
try:
    import pybind11

    pybind11_headers = [pybind11.get_include()]
except ImportError:
    pybind11_headers = []

if "sdist" not in sys.argv:
    if not (root / "include" / "ppl.h").exists():
        sys.exit(f"{root} is not the project: set PPL_ROOT to the folder that holds include/ppl.h")
    if not library.exists():
        sys.exit(f"{library} is not there: build the target ppl_static, or set PPL_BUILD to the folder that holds it")

tools = root / "tools"
setup(
    ext_modules=[
        Extension(
            "ppl._ppl",
            # The simulation and the table of controls are those of the command line tool.
            [os.path.relpath(p, here) for p in (here / "src" / "module.cpp", tools / "simulate.cpp", tools / "failure.cpp")],
            include_dirs=[str(root / "include"), str(root / "helpers"), str(tools), *pybind11_headers],
            language="c++",
            extra_objects=[str(library)],
            depends=[str(library)],
            extra_compile_args=["-std=c++20", "-fvisibility=hidden", "-Wall", "-Wextra"],
            extra_link_args=["-Wl,--exclude-libs,ALL", "-Wl,-z,relro,-z,now"],
        )
    ],
)
