// From one frame of the sensor to one finished picture, by settings that may change from frame to frame. One thread.
#pragma once

#include <ppl.h>
#include <ppl_auto.h>
#include <ppl_prepare.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "formats.h"
#include "settings.h"

namespace element {

// A block that starts at a multiple of 64.
class Block {
 public:
  Block() = default;
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block() { free(); }
  uint8_t* data() const { return data_; }
  // At least so many bytes; false if there is no memory, and nothing is held then.
  bool reserve(size_t bytes);
  void free();

 private:
  uint8_t* data_ = nullptr;
  size_t bytes_ = 0;
};

// What a frame has told, in the library's units.
struct FrameStatistics {
  uint32_t whole[3], exposed[3], qualified[3], exposed_cells, qualified_cells;
  bool single;  // made in one call: what follows is there too
  uint32_t windows[3 * 48];
  const uint32_t* histograms[3];  // valid until the next frame
};

// Gains found from the frames.
struct Light {
  bool found = false;    // in the last frame that was looked at
  uint32_t level = 0;    // mean brightness of the raw frame, in 1/256 of a sample step
  uint32_t clipped = 0;  // share of cut samples, of 256
  std::array<uint32_t, 3> gains{256, 256, 256};
};

class FrameMaker {
 public:
  FrameMaker() = default;
  FrameMaker(const FrameMaker&) = delete;
  FrameMaker& operator=(const FrameMaker&) = delete;
  ~FrameMaker() { close(); }

  // Claims one of the library's contexts; false if none is free.
  bool open();
  void close();
  bool is_open() const { return context_ != nullptr; }

  void set_frame(const ppl_sensor_frame&, GstVideoFormat);
  const ppl_sensor_frame& frame() const { return frame_; }
  // Is a frame in this memory worked on without a copy, if it may be overwritten?
  bool in_place(const uint8_t* raw) const;

  // One frame; `raw` is overwritten if `may_overwrite` and in_place. Empty, or why there is no picture.
  std::string make(const Settings&, bool settings_changed, bool with_statistics, uint8_t* raw,
                   bool may_overwrite, uint8_t* picture, size_t picture_bytes);

  FrameStatistics statistics() const { return statistics_; }
  const Light& light() const { return light_; }
  int quality() const { return quality_; }

 private:
  bool takes_parts() const;
  std::string refusal(const Settings&) const;
  void apply(const Settings&);
  bool apply_lens(const Settings&, uint32_t width, uint32_t height, int32_t left, int32_t top);
  void look(const Settings&, const uint8_t* mosaic);
  bool call(uint8_t* source, uint8_t* to, uint32_t width, uint32_t height);
  bool make_parts(const Settings&, const uint8_t* raw, uint8_t* to);
  bool sample_in_parts(const Settings&, const uint8_t* raw);
  void gather();

  ppl_context* context_ = nullptr;
  ppl_sensor_frame frame_{};
  GstVideoFormat format_ = GST_VIDEO_FORMAT_UNKNOWN;
  ppl_format behind_ = PPL_FORMAT_I420;
  int quality_ = -1;  // in force; -1 if nothing has been applied yet
  bool new_frame_ = true;
  bool lens_stale_ = true;
  bool statistics_on_ = true;
  std::array<int32_t, 13> colours_{};  // what the matrix in force was made from
  std::array<int32_t, 9> matrix_{};
  bool matrix_known_ = false;
  std::array<int32_t, 6> lens_in_force_{};
  Block source_, scratch_, part_, lens_;
  FrameStatistics statistics_{};

  Light light_;
  std::unique_ptr<ppl_auto_sample> sample_;
  ppl_auto_curve curve_{};
  ppl_auto_loop loop_{};
  uint32_t brightening_ = 0;  // 8.8; 0 if none is known
  int32_t until_look_ = 0;
  bool automatic_ = false, balancing_ = false;
};

}  // namespace element
