/* Loaded in front of the C library, lets one call that writes files fail, or be where a signal comes: the FAULT_AT-th
 * of open for writing, write, fchmod, fsync, close of what was opened for writing, and rename.
 *
 * FAULT is ENOSPC, EIO or EINTR (of writes alone), or the number of a signal, which comes in front of the call, or
 * behind it with FAULT_BEHIND. FAULT_SHORT: every write takes 100 bytes at most. How many calls there were goes to the
 * file FAULT_COUNT. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#define NEXT(type, name, ...) ((type(*)(__VA_ARGS__))dlsym(RTLD_NEXT, name))

static atomic_int calls;
static atomic_int behind; /* a signal is due behind the call */
static char to_write[1024];

static void come(int number) {
  struct sigaction action;
  kill(getpid(), number);
  if (!sigaction(number, NULL, &action) && action.sa_handler == SIG_IGN) return;
  sleep(60); /* the process ends within, however busy the machine is */
}

/* Whether this call fails; errno says why. */
static int fault(int is_write) {
  const char* const at = getenv("FAULT_AT");
  const char* const what = getenv("FAULT");
  if (atomic_fetch_add(&calls, 1) + 1 != (at ? atoi(at) : 0) || !what) return 0;
  if (atoi(what) != 0) {
    if (getenv("FAULT_BEHIND"))
      behind = atoi(what);
    else
      come(atoi(what));
    return 0;
  }
  if (!strcmp(what, "EINTR") && !is_write) return 0;
  errno = !strcmp(what, "ENOSPC") ? ENOSPC : !strcmp(what, "EINTR") ? EINTR : EIO;
  return 1;
}

static void after(void) {
  const int number = atomic_exchange(&behind, 0);
  if (number) come(number);
}

static int open_with(const char* name, const char* path, int flags, int mode) {
  const int writes = (flags & O_ACCMODE) != O_RDONLY;
  int file;
  if (writes && fault(0)) return -1;
  file = NEXT(int, name, const char*, int, ...)(path, flags, mode);
  if (writes && file >= 0 && file < (int)sizeof to_write) to_write[file] = 1;
  if (writes) after();
  return file;
}

#define OPEN(name)                                  \
  int name(const char* path, int flags, ...) {      \
    va_list rest;                                   \
    int mode;                                       \
    va_start(rest, flags);                          \
    mode = flags & O_CREAT ? va_arg(rest, int) : 0; \
    va_end(rest);                                   \
    return open_with(#name, path, flags, mode);     \
  }
OPEN(open)
OPEN(open64)

ssize_t write(int file, const void* bytes, size_t count) {
  ssize_t done;
  if (fault(1)) return -1;
  if (getenv("FAULT_SHORT") && count > 100) count = 100;
  done = NEXT(ssize_t, "write", int, const void*, size_t)(file, bytes, count);
  after();
  return done;
}

int fchmod(int file, mode_t mode) {
  int result;
  if (fault(0)) return -1;
  result = NEXT(int, "fchmod", int, mode_t)(file, mode);
  after();
  return result;
}

int fsync(int file) {
  int result;
  if (fault(0)) return -1;
  result = NEXT(int, "fsync", int)(file);
  after();
  return result;
}

/* The file is closed all the same, as Linux does it. */
int close(int file) {
  const int counts = file >= 0 && file < (int)sizeof to_write && to_write[file];
  int failed = 0, why = 0, result;
  if (counts) {
    to_write[file] = 0;
    failed = fault(0);
    why = errno;
  }
  result = NEXT(int, "close", int)(file);
  if (counts) after();
  if (failed) errno = why;
  return failed ? -1 : result;
}

int rename(const char* from, const char* to) {
  int result;
  if (fault(0)) return -1;
  result = NEXT(int, "rename", const char*, const char*)(from, to);
  after();
  return result;
}

__attribute__((destructor)) static void tell(void) {
  const char* const path = getenv("FAULT_COUNT");
  char text[16];
  int file, length;
  if (!path) return;
  length = snprintf(text, sizeof text, "%d", (int)calls);
  file = (int)syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_TRUNC, 0666);
  if (file < 0 || syscall(SYS_write, file, text, length) != length) _exit(99);
}
