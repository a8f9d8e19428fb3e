#include "recording.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace tool {
namespace {

class Crew {
 public:
  explicit Crew(const FrameWork& frames) : frames_(frames) {}

  void run(unsigned worker) {
    try {
      for (uint64_t number; read(worker, number);) {
        frames_.work(worker);
        if (!write(worker, number)) return;
      }
    } catch (...) {
      const std::lock_guard guard(turn_lock_);
      if (!failure_) failure_ = std::current_exception();
      turn_changed_.notify_all();
    }
  }

  void rethrow() {
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  bool read(unsigned worker, uint64_t& number) {
    const std::lock_guard guard(read_lock_);
    if (ended_ || failed() || !frames_.read(worker)) {
      ended_ = true;
      return false;
    }
    number = next_++;
    return true;
  }

  bool write(unsigned worker, uint64_t number) {
    std::unique_lock lock(turn_lock_);
    turn_changed_.wait(lock, [&] { return turn_ == number || failure_; });
    if (failure_) return false;
    lock.unlock();  // nobody else has this turn
    frames_.write(worker);
    lock.lock();
    ++turn_;
    turn_changed_.notify_all();
    return true;
  }

  bool failed() {
    const std::lock_guard guard(turn_lock_);
    return failure_ != nullptr;
  }

  const FrameWork& frames_;
  std::mutex read_lock_, turn_lock_;
  std::condition_variable turn_changed_;
  uint64_t next_ = 0, turn_ = 0;
  bool ended_ = false;
  std::exception_ptr failure_;
};

}  // namespace

void run_frames(unsigned jobs, const FrameWork& frames) {
  if (jobs < 2) {
    while (frames.read(0)) {
      frames.work(0);
      frames.write(0);
    }
    return;
  }
  Crew crew(frames);
  std::vector<std::thread> threads;
  for (unsigned worker = 0; worker < jobs; ++worker)
    threads.emplace_back([&crew, worker] { crew.run(worker); });
  for (std::thread& thread : threads) thread.join();
  crew.rethrow();
}

}  // namespace tool
