// What every benchmark needs: frames, contexts set up for the work to be measured, and repeated timing.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <memory>
#include <string>
#include <vector>

#include "helpers/ppl_qualities.h"
#include "level.h"
#include "ppl.h"

namespace bench {

// Memory at a multiple of 64 bytes, zero at first, with 64 bytes to spare behind.
class buffer {
 public:
  explicit buffer(size_t bytes);
  uint8_t* data() const { return memory_.get(); }
  size_t size() const { return bytes_; }

 private:
  struct release {
    void operator()(uint8_t* p) const;
  };
  size_t bytes_;
  std::unique_ptr<uint8_t, release> memory_;
};

enum class content {
  photograph,  // the sample frame side by side as often as the size asks for
  random,      // every sample on its own: no branch and no table look-up is predictable
};
buffer mosaic(int width, int height, content what);
// Packed 4:2:2 with the detail of the photograph. `shift` moves the picture to the left: a second field with motion.
buffer packed_frame(int width, int height, int shift = 0);

// Speed is a matter of the level, the kernels' register width.
struct level {
  int number;
  const char* name;
};
std::vector<level> levels();

struct size {
  int width, height;
};

// One frame call, everything on that is on by default, with lens correction, green balance, black level, white
// balance and statistics.
struct frame_task {
  int quality = PPL_QUALITY_DEFAULT;
  bool medium_filter = false;
  ppl_format to = PPL_FORMAT_I420;
  int decimation = 0;  // 1: half size, -1: double size
  size frame = {640, 480};
  content what = content::photograph;
  int level_number = -1;
  bool statistics = true;
  bool lens = true;
};

// The task with its buffers and a context of its own.
class frame_runner {
 public:
  explicit frame_runner(const frame_task& task);
  ~frame_runner();
  frame_runner(const frame_runner&) = delete;
  frame_runner& operator=(const frame_runner&) = delete;

  void refresh();  // the call overwrites its source: put the raw frame back
  bool call();     // the frame call itself
  double pixels() const { return double(task_.frame.width) * task_.frame.height; }
  ppl_context* context() const { return context_; }
  const uint8_t* output() const { return destination_.data(); }

 private:
  frame_task task_;
  buffer raw_, source_, destination_, lens_;
  ppl_context* context_;
};

double seconds_now();

}  // namespace bench
