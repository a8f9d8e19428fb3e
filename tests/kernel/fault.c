/* A fault in a frame buffer, in the middle of a frame call, must reach the __try of the caller: the image's unwind data
 * lead there. Built with clang for -windows-msvc, which has __try; run under Wine as a user program.
 *
 *   fault.exe C:\path\ppl.sys     exit status 42: caught, and the next frame is made
 */
#include <stdint.h>

typedef struct ppl_context ppl_context;
typedef ppl_context* (*init_call)(void);
typedef uint8_t (*frame_call)(ppl_context*, uint8_t*, uint8_t*, uint32_t, uint32_t, uint32_t);

__declspec(dllimport) void* LoadLibraryA(const char*);
__declspec(dllimport) void* GetProcAddress(void*, const char*);
__declspec(dllimport) char* GetCommandLineA(void);
__declspec(dllimport) void* VirtualAlloc(void*, uint64_t, uint32_t, uint32_t);
__declspec(dllimport) int VirtualProtect(void*, uint64_t, uint32_t, uint32_t*);
__declspec(dllimport) void ExitProcess(uint32_t);

int _fltused = 0;

enum { WIDTH = 128, HEIGHT = 96, PAGE = 4096, COMMIT = 0x3000, NO_ACCESS = 1, READ_WRITE = 4 };

static __attribute__((noinline)) uint32_t frame(frame_call call, ppl_context* c, uint8_t* raw,
                                                uint8_t* picture) {
  __try {
    return call(c, raw, picture, WIDTH, HEIGHT, WIDTH);
  } __except (1) {
    return 42;
  }
}

void entry(void) {
  const char* path = GetCommandLineA();
  uint8_t* raw = VirtualAlloc(0, WIDTH * HEIGHT, COMMIT, READ_WRITE);
  uint8_t* picture = VirtualAlloc(0, WIDTH * HEIGHT * 3 / 2, COMMIT, READ_WRITE);
  uint32_t before, caught;
  void* image;
  ppl_context* c;
  frame_call call;
  while (*path != 0 && *path != ' ') {
    ++path;
  }
  while (*path == ' ') {
    ++path;
  }
  image = LoadLibraryA(path);
  if (image == 0) {
    ExitProcess(2);
  }
  c = ((init_call)GetProcAddress(image, "ppl_init"))();
  call = (frame_call)GetProcAddress(image, "ppl_process_blrtoi420");
  if (frame(call, c, raw, picture) != 1) {
    ExitProcess(3);
  }
  VirtualProtect(raw + PAGE, PAGE, NO_ACCESS, &before);
  caught = frame(call, c, raw, picture);
  VirtualProtect(raw + PAGE, PAGE, READ_WRITE, &before);
  if (frame(call, c, raw, picture) != 1) {
    ExitProcess(4);
  }
  ExitProcess(caught);
}
