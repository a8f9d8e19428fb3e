// Frames one after the other, or several at a time.
#pragma once

#include <cstdint>
#include <functional>

namespace tool {

// Each of `jobs` workers, by number from 0, reads a frame, works on it and writes it, until read() finds no more.
// Reading and writing happen one at a time and in the order of the frames, so that the result does not depend on the
// number of workers; work() runs at the same time in all of them. The first failure ends all and is thrown on. One job
// runs on the caller's thread.
struct FrameWork {
  std::function<bool(unsigned worker)> read;
  std::function<void(unsigned worker)> work;
  std::function<void(unsigned worker)> write;
};
void run_frames(unsigned jobs, const FrameWork&);

}  // namespace tool
