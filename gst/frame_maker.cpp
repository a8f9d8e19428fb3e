#include "frame_maker.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

#include "colour_standard.h"
#include "flat_colours.h"

namespace element {
namespace {

std::mutex slots;  // ppl_init and ppl_free must not overlap

using Call = uint8_t (*)(ppl_context*, uint8_t*, uint8_t*, uint32_t, uint32_t, uint32_t);
constexpr Call calls[] = {ppl_process_blrtoi420, ppl_process_blrtoyuyv, ppl_process_blrtouyvy,
                          ppl_process_blrtorgb24, ppl_process_blrtorgb32};  // by ppl_format

size_t bytes_of(ppl_format format, size_t pixels) {
  return format == PPL_FORMAT_I420 ? pixels + pixels / 2 : ppl_format_pixel_bytes(format) * pixels;
}

// The library's RGB has its bottom row first, GStreamer's its top row. The mirror turns it for all but the raw
// qualities.
void turn_rows(uint8_t* frame, size_t row, size_t rows) {
  for (size_t y = 0; y < rows / 2; ++y)
    std::swap_ranges(frame + y * row, frame + (y + 1) * row, frame + (rows - 1 - y) * row);
}

// Planes of U and V to pairs.
void interleave(const uint8_t* u, const uint8_t* v, uint8_t* __restrict to, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    to[2 * i] = u[i];
    to[2 * i + 1] = v[i];
  }
}

// Pixels of three bytes to four. One byte behind the last pixel is read.
void widen(const uint8_t* from, uint8_t* to, size_t pixels, bool exchange) {
  for (size_t i = 0; i < pixels; ++i) {
    uint32_t pixel;
    memcpy(&pixel, from + 3 * i, 4);
    pixel = GUINT32_FROM_LE(pixel);
    pixel = exchange ? GUINT32_SWAP_LE_BE(pixel) >> 8 : pixel & 0xffffff;
    pixel = GUINT32_TO_LE(pixel);
    memcpy(to + 4 * i, &pixel, 4);
  }
}

const int32_t* values(const Settings& s, size_t control) {
  return s.controls[control];
}

}  // namespace

bool Block::reserve(size_t bytes) {
  if (data_ && bytes <= bytes_) return true;
  free();
  data_ = static_cast<uint8_t*>(::operator new (bytes, std::align_val_t{64}, std::nothrow));
  bytes_ = data_ ? bytes : 0;
  return data_ != nullptr;
}

void Block::free() {
  ::operator delete (data_, std::align_val_t{64});
  data_ = nullptr;
  bytes_ = 0;
}

bool FrameMaker::open() {
  {
    const std::lock_guard guard(slots);
    context_ = ppl_init();
  }
  if (!context_) return false;
  forget_flat_colours(context_);  // of the slot's last owner
  quality_ = -1;
  lens_stale_ = new_frame_ = true;
  matrix_known_ = false;
  automatic_ = balancing_ = false;
  light_ = {};
  return true;
}

void FrameMaker::close() {
  if (!context_) return;
  {
    const std::lock_guard guard(slots);
    ppl_free(context_);
  }
  context_ = nullptr;
  source_.free();
  scratch_.free();
  part_.free();
  lens_.free();
}

void FrameMaker::set_frame(const ppl_sensor_frame& frame, GstVideoFormat format) {
  frame_ = frame;
  format_ = format;
  new_frame_ = true;
}

bool FrameMaker::takes_parts() const {
  return frame_.width > whole_width || frame_.height > whole_height;
}

bool FrameMaker::in_place(const uint8_t* raw) const {
  return frame_.layout == PPL_BYTES && frame_.pattern == PPL_BGGR && !takes_parts() &&
         reinterpret_cast<uintptr_t>(raw) % 16 == 0;
}

std::string FrameMaker::refusal(const Settings& s) const {
  static const size_t h_mirror = control_at("h_mirror"), v_mirror = control_at("v_mirror");
  const std::string made = formats_of(s.quality), number = std::to_string(s.quality);
  ppl_format behind;
  if (made.empty()) return no_picture(s.quality);
  if (!frame_behind(s.quality, format_, &behind))
    return "quality " + number + " makes no " + gst_video_format_to_string(format_) + ", but " + made;
  if (!is_raw(s.quality)) return {};
  if (values(s, h_mirror)[0] || values(s, v_mirror)[0])
    return "quality " + number + " is the mosaic as it is: it has no mirrors";
  if (takes_parts())
    return "quality " + number + " makes no frames beyond " + std::to_string(whole_width) + " x " +
           std::to_string(whole_height);
  return {};
}

// Every control by its setter. The YUV is brought to the standard's scale by way of the sensor matrix.
void FrameMaker::apply(const Settings& s) {
  static const size_t matrix = control_at("sensor_matrix"), sat = control_at("sat"), hue = control_at("hue"),
                      contrast = control_at("contrast_c"), v_mirror = control_at("v_mirror");
  frame_behind(s.quality, format_, &behind_);
  if (ppl_quality_leaves_colours(static_cast<uint32_t>(quality_))) {
    forget_flat_colours(context_);
    lens_stale_ = true;
  }
  quality_ = s.quality;
  if (!ppl_format_is_rgb(behind_)) {
    std::array<int32_t, 13> colours{};
    std::copy_n(values(s, matrix), 9, colours.begin());
    colours[9] = values(s, sat)[0];
    colours[10] = values(s, hue)[0];
    colours[11] = values(s, contrast)[0];
    if (!matrix_known_ || colours != colours_) {
      tool::ColourControls c{{}, static_cast<uint32_t>(colours[9]), colours[10], colours[11]};
      std::copy_n(colours.begin(), 9, c.sensor_matrix.begin());
      ppl_reset_all_controls(context_);
      lens_stale_ = true;
      matrix_ = standard_matrix(tool::Standard::bt601, c, context_);
      colours_ = colours;
      matrix_known_ = true;
    }
  }
  ppl_set_quality(context_, static_cast<uint32_t>(s.quality));
  ppl_set_decimation(context_, 0, 0, 0);
  for (size_t i = 0; i < tool::control_count; ++i) tool::all_controls[i].set(context_, values(s, i));
  if (ppl_format_is_rgb(behind_))
    ppl_set_v_mirror(context_, !values(s, v_mirror)[0]);
  else
    ppl_copy_sensor_matrix(context_, matrix_.data());
  const std::array<int32_t, 6> lens{s.lens_numbers[0], s.lens_numbers[1], s.lens_numbers[2],
                                    s.lens_numbers[3], s.lens_origin[0],  s.lens_origin[1]};
  if (lens != lens_in_force_) lens_stale_ = true;
  lens_in_force_ = lens;
  s.lens ? ppl_enable_lens_correction(context_) : ppl_disable_lens_correction(context_);
  ppl_set_mean_collection(context_, statistics_on_);
}

// The table of a picture, or of a part of it that begins at column `left` and row `top`.
bool FrameMaker::apply_lens(const Settings& s, uint32_t width, uint32_t height, int32_t left, int32_t top) {
  const int32_t w = static_cast<int32_t>(frame_.width), h = static_cast<int32_t>(frame_.height);
  const int32_t x = (s.lens_origin[0] < 0 ? w / 2 : s.lens_origin[0]) - left,
                y = (s.lens_origin[1] < 0 ? h / 2 : s.lens_origin[1]) - top;
  const int32_t rows = std::max(y, static_cast<int32_t>(height) - y) + 1;
  const size_t bytes = sizeof(uint16_t) * width * static_cast<size_t>(rows);
  if (!lens_.reserve(bytes)) {  // the library must not keep the table that is gone
    ppl_set_lens_correction(context_, 0, 0, 0, 0, nullptr, 0, 16, 24, 16, 44);
    return false;
  }
  ppl_set_lens_correction(context_, static_cast<int32_t>(width), static_cast<int32_t>(height), x, y,
                          reinterpret_cast<uint16_t*>(lens_.data()), static_cast<int32_t>(bytes),
                          s.lens_numbers[0], s.lens_numbers[1], s.lens_numbers[2], s.lens_numbers[3]);
  return true;
}

// Gains from a thin sample of the frame as the library is about to see it.
void FrameMaker::look(const Settings& s, const uint8_t* mosaic) {
  static const size_t black_at = control_at("optical_black_b_gb_gr_r"), gain_at = control_at("rgb_gain");
  const auto u = [](int32_t v) { return static_cast<uint32_t>(v); };
  const int32_t* const black = values(s, black_at);
  ppl_auto_balance balance{};
  ppl_auto_take_frame(sample_.get(), mosaic, frame_.width, frame_.height, frame_.width, u(black[0]),
                      u(black[1]), u(black[2]), u(black[3]));
  light_.level = ppl_auto_level(sample_.get());
  light_.clipped = ppl_auto_clipped(sample_.get());
  for (size_t c = 0; c < 3; ++c) balance.gain[c] = u(values(s, gain_at)[c]);
  if (s.auto_white_balance) {
    ppl_auto_balance seen;
    light_.found = ppl_auto_white(&curve_, sample_.get(), &seen) != 0;
    if (light_.found) ppl_auto_step_balance(&loop_, &seen);
    if (loop_.balanced) std::copy_n(loop_.rgb_gain, 3, balance.gain);
  }
  std::copy_n(balance.gain, 3, light_.gains.begin());
  if (!s.auto_exposure) return;
  // Which way and how far; by half of it, but at once for the first frame. Small changes are let be.
  uint32_t wanted[3];
  ppl_auto_brighten(&balance, sample_.get(), 0, wanted);
  const uint32_t all = balance.gain[0] + balance.gain[1] + balance.gain[2];
  const uint32_t times = all ? (wanted[0] + wanted[1] + wanted[2]) * 256 / all : 256;
  const int32_t missing = static_cast<int32_t>(times) - static_cast<int32_t>(brightening_);
  if (!brightening_)
    brightening_ = times;
  else if (std::abs(missing) > static_cast<int32_t>(brightening_ / 32))
    brightening_ = u(static_cast<int32_t>(brightening_) + missing / 2);
  for (uint32_t& gain : light_.gains)
    gain = std::min<uint32_t>(gain * brightening_ / 256, PPL_AUTO_GAIN_LIMIT);
}

bool FrameMaker::call(uint8_t* source, uint8_t* to, uint32_t width, uint32_t height) {
  const uint32_t before = ppl_n_frame(context_);
  const bool done = calls[behind_](context_, source, to, width, height, width) ||
                    is_raw(quality_);  // these answer false although they make their picture
  return done && ppl_n_frame(context_) != before;
}

void FrameMaker::gather() {
  const auto copy = [](const uint32_t* from, uint32_t* to, size_t n) { std::copy_n(from, n, to); };
  copy(ppl_rgb_means_whole_frame(context_), statistics_.whole, 3);
  copy(ppl_qAE_rgb_means_whole_frame(context_), statistics_.exposed, 3);
  copy(ppl_qual_rgb_means_whole_frame(context_), statistics_.qualified, 3);
  copy(ppl_rgb_means_sub_windows(context_), statistics_.windows, 3 * 48);
  statistics_.exposed_cells = ppl_n_qAE_2x2_whole_frame(context_);
  statistics_.qualified_cells = ppl_n_qual_2x2_whole_frame(context_);
  statistics_.histograms[0] = ppl_r_histogram(context_);
  statistics_.histograms[1] = ppl_g_histogram(context_);
  statistics_.histograms[2] = ppl_b_histogram(context_);
  statistics_.single = true;
}

// A frame that one call does not take, in parts that overlap.
bool FrameMaker::make_parts(const Settings& s, const uint8_t* raw, uint8_t* to) {
  static const size_t h_mirror = control_at("h_mirror"), v_mirror = control_at("v_mirror");
  ppl_part parts[PPL_MOST_PARTS];
  const uint32_t count = ppl_plan_parts(frame_.width, frame_.height, PPL_SIZE_SAME, parts, PPL_MOST_PARTS);
  ppl_part_means exposed, qualified;
  ppl_part_means_clear(&exposed);
  ppl_part_means_clear(&qualified);
  const bool turned = ppl_format_is_rgb(behind_);
  for (uint32_t i = 0; i < count; ++i) {
    const ppl_part& p = parts[i];
    const size_t pixels = size_t{p.width} * p.height;
    if (!source_.reserve(pixels) || !part_.reserve(bytes_of(behind_, pixels))) return false;
    ppl_prepare_region(&frame_, raw, s.round ? PPL_TO_8_ROUND : PPL_TO_8_SHIFT, nullptr, p.x, p.y, p.width,
                       p.height, source_.data(), p.width);
    if (s.lens && !apply_lens(s, p.width, p.height, static_cast<int32_t>(p.x), static_cast<int32_t>(p.y)))
      return false;
    if (!call(source_.data(), part_.data(), p.width, p.height)) return false;
    ppl_join_part(&p, frame_.width, frame_.height, behind_, PPL_SIZE_SAME, values(s, h_mirror)[0],
                  (values(s, v_mirror)[0] != 0) != turned, part_.data(), to);
    if (!statistics_on_) continue;
    gather();
    ppl_part_means_add(&exposed, &p, statistics_.whole, statistics_.exposed, statistics_.exposed_cells);
    ppl_part_means_add(&qualified, &p, statistics_.whole, statistics_.qualified, statistics_.qualified_cells);
  }
  if (count && statistics_on_) {
    ppl_part_means_total(&exposed, frame_.width, frame_.height, statistics_.whole, statistics_.exposed,
                         &statistics_.exposed_cells);
    ppl_part_means_total(&qualified, frame_.width, frame_.height, statistics_.whole, statistics_.qualified,
                         &statistics_.qualified_cells);
    statistics_.single = false;
  }
  return count != 0;
}

std::string FrameMaker::make(const Settings& given, bool settings_changed, bool with_statistics, uint8_t* raw,
                             bool may_overwrite, uint8_t* picture, size_t picture_bytes) {
  constexpr const char* no_memory = "there is no memory for a frame of this size";
  Settings s = given;
  // A quality that lacks the format may be on its way to caps of its own: until they come the last one holds.
  ppl_format behind;
  if (quality_ >= 0 && s.quality != quality_ && !formats_of(s.quality).empty() &&
      !frame_behind(s.quality, format_, &behind) && frame_behind(quality_, format_, &behind))
    s.quality = quality_;
  const bool changed = settings_changed || new_frame_ || s.quality != quality_ || quality_ < 0;
  if (changed)
    if (std::string why = refusal(s); !why.empty()) return why;

  const uint32_t width = frame_.width, height = frame_.height;
  const size_t pixels = size_t{width} * height;
  const bool parts = takes_parts();
  statistics_on_ = with_statistics;
  if (new_frame_) lens_stale_ = true;
  new_frame_ = false;
  if (changed)
    apply(s);
  else
    ppl_set_mean_collection(context_, statistics_on_);

  // The library writes into its source.
  uint8_t* source = raw;
  const bool automatic = (s.auto_white_balance || s.auto_exposure) && !is_raw(s.quality);
  const bool looks = automatic && (!automatic_ || --until_look_ <= 0 || s.auto_white_balance != balancing_);
  if (!(may_overwrite && in_place(raw)) && (!parts || looks)) {
    if (!source_.reserve(pixels)) return no_memory;
    source = source_.data();
    ppl_prepare_frame(&frame_, raw, s.round ? PPL_TO_8_ROUND : PPL_TO_8_SHIFT, nullptr, source, width);
  }

  if (looks) {
    if (!sample_) sample_.reset(new (std::nothrow) ppl_auto_sample);
    if (!sample_) return no_memory;
    if (!automatic_ || (s.auto_white_balance && !balancing_)) {
      ppl_auto_start(&loop_, 1, 1, 256, 256);
      loop_.balance_speed = 128;  // looks are rare
    }
    if (!automatic_) brightening_ = 0;
    const auto u = [](int32_t v) { return static_cast<uint32_t>(v); };
    ppl_auto_daylight_curve(&curve_, u(s.daylight[0]), u(s.daylight[1]), u(s.daylight[2]));
    look(s, source);
    until_look_ = s.auto_interval;
    balancing_ = s.auto_white_balance;
  }
  automatic_ = automatic;
  if (!automatic) {
    static const size_t gain_at = control_at("rgb_gain");
    light_ = {};
    for (size_t c = 0; c < 3; ++c) light_.gains[c] = static_cast<uint32_t>(values(s, gain_at)[c]);
  } else if (looks || changed) {
    ppl_set_rgb_gain(context_, light_.gains[0], light_.gains[1], light_.gains[2]);
  }
  if (s.lens && lens_stale_ && !parts) {
    if (!apply_lens(s, width, height, 0, 0)) return no_memory;
    lens_stale_ = false;
  }
  if (parts) lens_stale_ = true;

  const size_t needed = bytes_of(behind_, pixels);
  const bool widened =
      behind_ == PPL_FORMAT_RGB24 && (format_ == GST_VIDEO_FORMAT_BGRx || format_ == GST_VIDEO_FORMAT_RGBx);
  const bool direct = !widened && picture_bytes >= needed && reinterpret_cast<uintptr_t>(picture) % 16 == 0;
  if (picture_bytes < (widened ? 4 * pixels : needed)) return "the buffer for the picture is too small";
  if (!direct && !scratch_.reserve(needed + 16)) return no_memory;
  uint8_t* const to = direct ? picture : scratch_.data();
  if (parts) {
    if (!make_parts(s, raw, to)) return no_memory;
  } else {
    if (!call(source, to, width, height))
      return "the library makes no frame of " + std::to_string(width) + " x " + std::to_string(height);
    if (statistics_on_) gather();
  }
  if (is_raw(s.quality) && ppl_format_is_rgb(behind_)) turn_rows(to, bytes_of(behind_, width), height);
  if (widened) {
    widen(to, picture, pixels, format_ == GST_VIDEO_FORMAT_RGBx);
  } else if (format_ == GST_VIDEO_FORMAT_NV12) {
    const uint8_t* chroma = to + pixels;
    if (direct) {
      if (!scratch_.reserve(pixels / 2)) return no_memory;
      chroma = static_cast<uint8_t*>(memcpy(scratch_.data(), to + pixels, pixels / 2));
    } else {
      memcpy(picture, to, pixels);
    }
    interleave(chroma, chroma + pixels / 4, picture + pixels, pixels / 4);
  } else if (!direct) {
    memcpy(picture, to, needed);
  }
  return {};
}

}  // namespace element
