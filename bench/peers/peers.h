// The jobs that a peer can do too. Every peer is one or more chains of calls; the fastest chain counts.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "jobs.h"

namespace peers {

struct chain {
  const char* name;
  std::function<void()> run;
};

// A row of the table. Both sides work on the same number of pixels.
struct job {
  std::string name;
  double pixels;
  std::function<void()> refresh;  // before each call of ours, outside the time
  std::function<void()> ours;
  std::vector<chain> theirs;
};

// Jobs live as long as what they capture: they hold their buffers themselves.
std::vector<job> camera_jobs(bench::size s, int level_number);
std::vector<job> decoder_jobs(bench::size s, int level_number);
std::vector<job> scaler_jobs(bench::size s, int level_number);
std::vector<job> field_jobs(bench::size s, int level_number);  // none where the peer is not installed

}  // namespace peers
