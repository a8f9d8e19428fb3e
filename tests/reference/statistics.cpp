// From the sums of a frame to its means.
#include "state.h"

namespace ref {

void state::clear_statistics() {
  sub_window_means = {};
  all_windows_means = whole_frame_means = qAE_means = qual_means = {};
  r_histogram = g_histogram = b_histogram = {};
  qAE_count = qual_count = 0;
}

namespace {

uint32_t quotient(uint64_t dividend, uint32_t divisor) {
  return divisor ? static_cast<uint32_t>(dividend / divisor) : 0;
}

// Sums over n cells of one R, two G and one B sample to means.
void finish_cells(rgb_words& means, uint32_t& n, uint32_t scale) {
  if (n == 0) return;
  means[0] = quotient((uint64_t{means[0]} << 8) + (n >> 1), n);
  means[1] = quotient((uint64_t{means[1]} << 8) + n, 2 * n);
  means[2] = quotient((uint64_t{means[2]} << 8) + (n >> 1), n);
  n = (n * scale) >> 8;
}

}  // namespace

void state::roll_up() {
  const uint32_t scale = static_cast<uint32_t>(stats_scale);
  const uint32_t divisors[3] = {red_divisor, green_divisor, blue_divisor};
  for (int cell = 0; cell < 49; ++cell) {
    for (int colour = 0; colour < 3; ++colour) {
      uint32_t& value = sub_window_means[cell][colour];
      const uint32_t t = (value * scale) >> 8;
      whole_frame_means[colour] += t;
      value = (t * divisors[colour]) >> 12;
      if (cell < 48) all_windows_means[colour] += value;
    }
  }
  for (uint32_t& value : all_windows_means) value = (value * 341) >> 14;
  const uint32_t half = static_cast<uint32_t>(frame_pixels_half),
                 quarter = static_cast<uint32_t>(frame_pixels_quarter);
  const uint32_t eighth = static_cast<uint32_t>(frame_pixels_eighth);
  whole_frame_means[0] = quotient((uint64_t{whole_frame_means[0]} << 8) + eighth, quarter);
  whole_frame_means[1] = quotient((uint64_t{whole_frame_means[1]} << 8) + quarter, half);
  whole_frame_means[2] = quotient((uint64_t{whole_frame_means[2]} << 8) + eighth, quarter);
  finish_cells(qAE_means, qAE_count, scale);
  finish_cells(qual_means, qual_count, scale);
}

constexpr int central_cells[] = {19, 20, 27, 28};
constexpr int ring_cells[] = {9, 10, 11, 12, 13, 14, 17, 18, 21, 22, 25, 26, 29, 30, 33, 34, 35, 36, 37, 38};

rgb_words state::rgb_means_whole_frame_4pts() const {
  if (quality == 3) return whole_frame_means;
  rgb_words result{};
  for (int colour = 0; colour < 3; ++colour) {
    for (int cell : central_cells) result[colour] += sub_window_means[cell][colour];
    result[colour] >>= 2;
  }
  return result;
}

rgb_words state::weighted_mean(int32_t k) const {
  if (quality == 3) return whole_frame_means;
  rgb_words result{};
  for (int colour = 0; colour < 3; ++colour) {
    uint32_t central = 0, ring = 0;
    for (int cell : central_cells) central += sub_window_means[cell][colour];
    for (int cell : ring_cells) ring += sub_window_means[cell][colour];
    const uint32_t sum = 48 * all_windows_means[colour] + static_cast<uint32_t>(k) * central + ring;
    result[colour] = static_cast<uint32_t>(static_cast<int32_t>(sum) / (4 * k + 68));
  }
  return result;
}
rgb_words state::rgb_means_whole_frame_central4() const {
  return weighted_mean(3);
}
rgb_words state::rgb_means_whole_frame_central8() const {
  return weighted_mean(7);
}
rgb_words state::rgb_means_whole_frame_central16() const {
  return weighted_mean(15);
}

}  // namespace ref
