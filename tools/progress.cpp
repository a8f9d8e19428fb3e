#include "progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace tool {
namespace {

unsigned terminal_columns() {
  struct winsize size;
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col ? size.ws_col : 80;
}

std::string duration(double seconds) {
  const auto whole = static_cast<unsigned long long>(seconds + 0.5);
  char text[40];
  if (whole < 3600)
    snprintf(text, sizeof text, "%llu:%02llu", whole / 60, whole % 60);
  else
    snprintf(text, sizeof text, "%llu:%02llu:%02llu", whole / 3600, whole / 60 % 60, whole % 60);
  return text;
}

}  // namespace

std::string progress_line(uint64_t done, std::optional<uint64_t> total, double seconds, unsigned columns) {
  const double rate = seconds > 0 ? static_cast<double>(done) / seconds : 0;
  char figures[120];
  std::string bar;
  if (!total) {
    snprintf(figures, sizeof figures, "%llu frames, %.1f a second", static_cast<unsigned long long>(done),
             rate);
  } else {
    const double share = *total ? static_cast<double>(done) / static_cast<double>(*total) : 1;
    const std::string left = rate > 0 ? duration(static_cast<double>(*total - done) / rate) + " left" : "";
    snprintf(figures, sizeof figures, "%3d %%  %llu of %llu frames, %.1f a second  %s",
             static_cast<int>(100 * share), static_cast<unsigned long long>(done),
             static_cast<unsigned long long>(*total), rate, left.c_str());
    const size_t room = columns > 64 + 14 ? std::min<size_t>(30, columns - 64) : 0;
    if (room) {
      const size_t filled = static_cast<size_t>(share * static_cast<double>(room));
      bar = "[" + std::string(filled, '#') + std::string(room - filled, '.') + "] ";
    }
  }
  return (bar + figures).substr(0, columns ? columns - 1 : 0);
}

Progress::Progress(std::optional<uint64_t> total) : total_(total), shown_(isatty(STDERR_FILENO) != 0) {}

// Drawn a few times a second, and not in the first one: short work shows nothing.
void Progress::step() {
  ++done_;
  if (!shown_) return;
  const Clock::time_point now = Clock::now();
  if (now - start_ < std::chrono::milliseconds(500) || now - drawn_ < std::chrono::milliseconds(200)) return;
  drawn_ = now;
  const double seconds = std::chrono::duration<double>(now - start_).count();
  fprintf(stderr, "\r\033[K%s", progress_line(done_, total_, seconds, terminal_columns()).c_str());
}

Progress::~Progress() {
  if (shown_ && drawn_ != start_) fprintf(stderr, "\r\033[K");
}

}  // namespace tool
