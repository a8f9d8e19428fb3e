#include "file.h"

#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <random>

#include "failure.h"

namespace tool {
namespace {

// The temporary file of the output being written, for the signal handler: the name first, then the mark that it is
// whole. It is set before there is such a file, so that no moment is left out.
char pending[4096];
std::atomic<bool> is_pending = false;
static_assert(std::atomic<bool>::is_always_lock_free);

void remove_pending(int signal_number) {
  if (is_pending) unlink(pending);
  signal(signal_number, SIG_DFL);
  raise(signal_number);
}

// A new file beside the target, its name the target's with an ending that nothing has.
int open_temporary(const std::string& target, std::string& name) {
  std::random_device random;
  for (;;) {
    char ending[12];
    snprintf(ending, sizeof ending, ".%08x", random());
    name = target + ending;
    if (name.size() < sizeof pending) {
      memcpy(pending, name.c_str(), name.size() + 1);
      is_pending = true;
    }
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file >= 0) return file;
    is_pending = false;
    if (errno != EEXIST) return -1;
  }
}

std::string reason() {
  return strerror(errno);
}

}  // namespace

InputFile::InputFile(const std::string& path)
    : path_(path == "-" ? "standard input" : path),
      file_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
  if (file_ < 0) fail("can't read ", path, ": ", reason());
  struct stat about;
  if (fstat(file_, &about) == 0 && S_ISREG(about.st_mode) && lseek(file_, 0, SEEK_CUR) == 0)
    size_ = static_cast<uint64_t>(about.st_size);
}

InputFile::~InputFile() {
  if (file_ != STDIN_FILENO) close(file_);
}

size_t InputFile::read(std::span<uint8_t> bytes) {
  size_t filled = 0;
  while (filled < bytes.size()) {
    const ssize_t got = ::read(file_, bytes.data() + filled, bytes.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) fail("can't read ", path_, ": ", reason());
    if (got == 0) break;
    filled += static_cast<size_t>(got);
  }
  return filled;
}

uint64_t InputFile::skip(uint64_t bytes) {
  if (size_) {
    const uint64_t there = std::min(bytes, *size_);
    if (lseek(file_, static_cast<off_t>(there), SEEK_SET) < 0) fail("can't read ", path_, ": ", reason());
    return there;
  }
  Bytes dropped(std::min<uint64_t>(bytes, uint64_t{1} << 20));
  uint64_t passed = 0;
  while (passed < bytes) {
    const size_t step = static_cast<size_t>(std::min<uint64_t>(bytes - passed, dropped.size()));
    const size_t got = read({dropped.data(), step});
    passed += got;
    if (got < step) break;
  }
  return passed;
}

std::optional<uint64_t> readable_size(const std::string& path) {
  if (path == "-") return InputFile(path).size();
  struct stat about;
  if (stat(path.c_str(), &about) != 0 || access(path.c_str(), R_OK) != 0)
    fail("can't read ", path, ": ", reason());
  if (S_ISDIR(about.st_mode)) fail("can't read ", path, ": it is a directory");
  if (!S_ISREG(about.st_mode)) return {};
  return static_cast<uint64_t>(about.st_size);
}

bool is_device(const std::string& path) {
  struct stat about;
  return path == "-" ||
         (stat(path.c_str(), &about) == 0 && !S_ISREG(about.st_mode) && !S_ISDIR(about.st_mode));
}

void refuse_same_file(const std::string& input, const std::string& output) {
  std::error_code ignored;
  if (input == "-" || output == "-") return;
  if (std::filesystem::is_regular_file(output, ignored) &&
      std::filesystem::equivalent(input, output, ignored))
    fail("the output ", output, " is the input file itself; name another one with -o");
}

OutputFile::OutputFile(const std::string& path) : shown_(path) {
  if (path == "-") {
    file_ = STDOUT_FILENO;
    shown_ = "standard output";
    return;
  }
  std::error_code error;
  target_ = path;
  if (std::filesystem::exists(path, error)) target_ = std::filesystem::canonical(path, error).string();
  if (target_.empty()) target_ = path;
  if (std::filesystem::is_directory(target_, error)) fail("can't write ", path, ": it is a directory");
  if (std::filesystem::exists(target_, error) && !std::filesystem::is_regular_file(target_, error)) {
    file_ = open(target_.c_str(), O_WRONLY | O_CLOEXEC);
    if (file_ < 0) fail("can't write ", path, ": ", reason());
    return;
  }
  // What the program was started to ignore, as nohup does it, it goes on ignoring.
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU})
    if (signal(number, SIG_IGN) != SIG_IGN) signal(number, remove_pending);
  file_ = open_temporary(target_, temporary_);
  if (file_ < 0) fail("can't write ", path, ": ", reason());
}

OutputFile::~OutputFile() {
  if (file_ >= 0 && file_ != STDOUT_FILENO) close(file_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
  is_pending = false;
}

void OutputFile::write(std::span<const uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t done = ::write(file_, bytes.data(), bytes.size());
    if (done < 0 && errno == EINTR) continue;
    if (done < 0) fail("can't write ", shown_, ": ", reason());
    bytes = bytes.subspan(static_cast<size_t>(done));
  }
}

void OutputFile::write(const std::string& bytes) {
  write({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
}

void OutputFile::commit() {
  if (temporary_.empty()) return;
  // The rights the file would have had, and those of the file that it replaces.
  const mode_t mask = umask(0);
  umask(mask);
  struct stat before;
  const mode_t mode = stat(target_.c_str(), &before) == 0 ? before.st_mode & 07777 : 0666 & ~mask;
  const int file = file_;
  file_ = -1;
  if (fchmod(file, mode) != 0 || fsync(file) != 0) {
    const std::string why = reason();
    close(file);
    fail("can't write ", shown_, ": ", why);
  }
  if (close(file) != 0) fail("can't write ", shown_, ": ", reason());
  if (rename(temporary_.c_str(), target_.c_str()) != 0) fail("can't write ", shown_, ": ", reason());
  temporary_.clear();
  is_pending = false;
}

void write_file(const std::string& path, std::span<const uint8_t> bytes) {
  OutputFile file(path);
  file.write(bytes);
  file.commit();
}

}  // namespace tool
