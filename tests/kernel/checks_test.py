#!/usr/bin/env python3
"""The checks of the kernel image find what they look for.

usage: checks_test.py build-directory-of-preset-kernel

Every case is a small image, linked as the real one is, with one thing wrong; the check that is there for it must
complain, in the words given, and must be content with the same image without the fault. Tables are broken in a
copy of the real image.
"""

import pathlib
import struct
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))
from pe_image import Image  # noqa: E402

IMAGE = pathlib.Path(sys.argv[1]) / "ppl.sys"
EXPORTS = HERE.parent.parent / "cmake" / "exports.txt"
PREFIX = "x86_64-w64-mingw32-"
FLAGS = ["-std=c++20", "-O2", "-fno-exceptions", "-fno-rtti", "-fasynchronous-unwind-tables", "-mcmodel=small",
         "-msse2", "-fno-common", "-ffunction-sections", "-fno-ident", "-mno-stack-arg-probe"]
LINK = ["-nostdlib", "-shared", "-Wl,--subsystem,native:6.1", "-Wl,--entry,DriverEntry", "-Wl,--dynamicbase",
        "-Wl,--exclude-all-symbols", "-Wl,--disable-auto-import", "-Wl,--image-base,0x140000000"]

# What every small image holds: the entries, and a level's table, without which the stack check has nothing to go by.
COMMON = """
#include <emmintrin.h>
namespace ppl::sse2 {
struct output_kernels { int (*f)(int); };
static int kernel(int x) { return x + 1; }
extern const output_kernels output_table;
const output_kernels output_table{kernel};
}
extern "C" {
int DriverEntry(void*, void*) { return 0; }
int DllInitialize(void*) { return ppl::sse2::output_table.f(1); }
int DllUnload() { return 0; }
int helper(int* p);
__attribute__((noinline)) int helper(int* p) { return p[3] + 1; }
"""

# name, code that is right, code that is wrong, the check, its complaint
CASES = [
    ("floating-point arithmetic", "int ppl_f(int a) { return a + 1; }",
     "int ppl_f(int a) { volatile float f = 1; f = f + (float)a; return 0; }", "code", "cvtsi2ss"),
    ("floating-point comparison", "int ppl_f(int a) { return a < 1; }",
     "int ppl_f(double* a) { return *a < 1.5; }", "code", "comisd"),
    ("x87", "int ppl_f(int a) { return a; }",
     "int ppl_f(int a) { __asm__ volatile(\"fld1\\n\\tfstp %st(0)\"); return a; }", "code", "fld1"),
    ("MMX", "int ppl_f(int a) { return a; }",
     "int ppl_f(int a) { __asm__ volatile(\"paddb %mm0, %mm1\"); return a; }", "code", "forbidden register"),
    ("AVX", "__m128i ppl_f(__m128i* a) { return _mm_add_epi8(*a, *a); }",
     "int ppl_f(int a) { __asm__ volatile(\"vpaddb %ymm0, %ymm1, %ymm2\"); return a; }", "code", "ymm"),
    ("AVX encoding of XMM code", "__m128i ppl_f(__m128i* a) { return _mm_add_epi8(*a, *a); }",
     "int ppl_f(int a) { __asm__ volatile(\"vpaddb %xmm0, %xmm1, %xmm2\"); return a; }", "code", "vpaddb"),
    ("privileged instruction", "int ppl_f(int a) { return a; }",
     "int ppl_f(int a) { __asm__ volatile(\"cli\"); return a; }", "code", "cli"),
    ("direction flag", "int ppl_f(int a) { return a; }",
     "int ppl_f(int a) { __asm__ volatile(\"std\\n\\tcld\"); return a; }", "code", "std"),
    ("SSE4.1 outside of its level", "int ppl_f(int a) { __asm__ volatile(\"psadbw %xmm0, %xmm1\"); return a; }",
     "int ppl_f(int a) { __asm__ volatile(\"pminsb %xmm0, %xmm1\"); return a; }", "code", "outside of the sse41"),
    ("SSE4.2", "int ppl_f(int a) { return a; }",
     "int ppl_f(int a) { __asm__ volatile(\"popcnt %0, %0\" : \"+r\"(a)); return a; }", "code", "popcnt"),
    ("constructor", "static constinit int kept = 3; int ppl_f(int a) { return a + kept++; }",
     "static volatile __m128i kept = _mm_set1_epi16((short)(long long)&helper); int ppl_f(int) { return 0; }",
     "objects", "run at start"),
    ("constructor, in the image", "static constinit int kept = 3; int ppl_f(int a) { return a + kept++; }",
     "static volatile __m128i kept = _mm_set1_epi16((short)(long long)&helper); int ppl_f(int) { return 0; }",
     "code", "constructors"),
    ("large frame", "int ppl_f(int a) { int b[300]; b[3] = a; return helper(b) + b[a & 3]; }",
     "int ppl_f(int a) { int b[600]; b[3] = a; return helper(b) + b[a & 3]; }", "stack", "a frame of"),
    ("deep stack",
     "__attribute__((noinline)) int g(int a) { int b[300]; b[3] = a; return helper(b) + b[a & 3]; } "
     "int ppl_f(int a) { int b[300]; b[3] = a; return g(helper(b)) + b[a & 3]; }",
     "__attribute__((noinline)) int h(int a) { int b[300]; b[3] = a; return helper(b) + b[a & 3]; } "
     "__attribute__((noinline)) int g(int a) { int b[300]; b[3] = a; return h(helper(b)) + b[a & 3]; } "
     "int ppl_f(int a) { int b[300]; b[3] = a; return g(helper(b)) + b[a & 3]; }", "stack", "bytes of stack"),
    ("recursion", "int ppl_f(int a) { return a; }",
     "int ppl_f(int a) { int b[8]; b[3] = a; return a > 2 ? ppl_f(helper(b)) * 3 + b[2] : 1; }", "stack", "recursion"),
    ("frame of variable size", "int ppl_f(int a) { int b[8]; b[3] = a; return helper(b); }",
     "int ppl_f(int a) { int* b = (int*)__builtin_alloca(a & 255); b[3] = a; return helper(b); }", "stack",
     "variable size"),
    ("unknown pointer", "int ppl_f(int a) { return helper(&a - 3); }",
     "int ppl_f(int a) { int (*volatile f)(int*) = helper; return f(&a - 3); }", "stack",
     "address of helper is taken"),
    ("no unwind data", "int ppl_f(int a) { return helper(&a - 3) + 2; }",
     "int ppl_f(int); __asm__(\".globl ppl_f\\nppl_f: push %rbx\\ncall helper\\npop %rbx\\nret\\n.globl end\\nend: nop\");",
     "stack", "without unwind data"),
]


def check(kind, directory, exports):
    image = str(directory / "ppl.sys")
    arguments = {"objects": [str(directory)], "tables": [image, str(exports)]}.get(kind, [image])
    done = subprocess.run([sys.executable, "-B", str(HERE / f"check_{kind}.py"), *arguments], text=True,
                          capture_output=True)
    return done.returncode, done.stdout + done.stderr


def build(directory, code):
    objects = directory / "CMakeFiles" / "small.dir"
    objects.mkdir(parents=True)
    (directory / "small.cpp").write_text(COMMON + code + "\n}\n")
    (directory / "small.def").write_text("LIBRARY ppl.sys\nEXPORTS\n DllInitialize\n DllUnload\n ppl_f\n")
    subprocess.run([PREFIX + "g++", *FLAGS, "-c", "small.cpp", "-o", objects / "small.obj"], cwd=directory, check=True)
    subprocess.run([PREFIX + "g++", *LINK, "-o", "ppl.full", objects / "small.obj", "small.def"], cwd=directory,
                   check=True)
    subprocess.run([PREFIX + "strip", "-o", "ppl.sys", "ppl.full"], cwd=directory, check=True)


def broken_tables():
    """Name, what to do to the image's bytes, the complaint."""
    image = Image(IMAGE)
    opt = image.optional

    def put(at, form, value):
        return lambda data: struct.pack_into(form, data, at, value)

    first_section = opt + 240
    export_at = image.offset(image.directories[0][0])
    name_table = image.offset(struct.unpack_from("<I", image.data, export_at + 32)[0])
    first_name = image.offset(struct.unpack_from("<I", image.data, name_table)[0])
    import_name = image.data.index(b"KeBugCheckEx\0")
    unwind = image.offset(image.directories[3][0])
    return [
        ("checksum", put(opt + 64, "<I", image.checksum ^ 1), "checksum"),
        ("subsystem", put(opt + 68, "<H", 3), "not native"),
        ("import", put(import_name, "<B", ord("k")), "imports"),
        ("export", put(first_name, "<B", ord("X")), "missing"),
        ("writable code", put(first_section + 36, "<I", 0xe0000020), "written and executed"),
        ("paged section", put(first_section, "<4s", b"PAGE"), "not resident"),
        ("no NX", put(opt + 70, "<H", image.dll_flags & ~0x100), "NX"),
        ("fixed address", put(opt + 70, "<H", image.dll_flags & ~0x40), "cannot be moved"),
        ("no relocations", put(opt + 112 + 8 * 5, "<Q", 0), "relocations are missing"),
        ("no version", put(opt + 112 + 8 * 2, "<Q", 0), "version resource"),
        ("no unwind data", put(opt + 112 + 8 * 3, "<Q", 0), "unwind data is missing"),
        ("unwind data out of order", put(unwind, "<I", struct.unpack_from("<I", image.data, unwind + 24)[0]), "unwind"),
        ("thread-local storage", put(opt + 112 + 8 * 9, "<Q", 0x2800001000), "thread-local"),
        ("entry point", put(opt + 16, "<I", 0x10), "entry point is no code"),
    ]


def main():
    failures = 0

    def expect(what, condition, output):
        nonlocal failures
        if not condition:
            failures += 1
            print(f"{what}:\n{output}")

    with tempfile.TemporaryDirectory() as temporary:
        for n, (name, right, wrong, kind, complaint) in enumerate(CASES):
            for suffix, code in (("right", right), ("wrong", wrong)):
                directory = pathlib.Path(temporary, f"{n}-{suffix}")
                build(directory, code)
                status, output = check(kind, directory, None)
                if suffix == "right":
                    expect(f"{name}: the check complains about what is right", status == 0, output)
                else:
                    expect(f"{name}: the check does not complain", status == 1 and complaint in output, output)
        for name, harm, complaint in broken_tables():
            directory = pathlib.Path(temporary, name.replace(" ", "-"))
            directory.mkdir()
            data = bytearray(IMAGE.read_bytes())
            harm(data)
            (directory / "ppl.sys").write_bytes(data)
            status, output = check("tables", directory, EXPORTS)
            expect(f"{name}: the check does not complain", status == 1 and complaint in output, output)
    print(f"{len(CASES)} small images and {len(broken_tables())} broken tables, {failures} not told apart")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
