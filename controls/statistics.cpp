// Read-out of a frame's statistics. Most getters return pointers into the record; the centre-weighted ones compute.
#include "paths/qualities.h"
#include "record/context.h"

using namespace ppl;

namespace {

// The four cells in the middle of the grid.
constexpr uint8_t kCentral[4] = {19, 20, 27, 28};
// Grid rows 1 to 4, columns 1 to 6, without the four in the middle.
constexpr uint8_t kRing[20] = {9, 10, 11, 12, 13, 14, 17, 18, 21, 22, 25, 26, 29, 30, 33, 34, 35, 36, 37, 38};

// One result per getter for the whole library: contexts that ask at the same time overwrite each other.
uint32_t result_4pts[3], result_central4[3], result_central8[3], result_central16[3];

const uint32_t* words(const rgb32& means) {
  return &means.r;
}

// Qualities that fill no cells give the mean of the whole frame.
bool centre_from_frame(const ppl_context* c) {
  return quality_of(*c).centre_from_frame;
}

uint32_t sum(const ppl_context* c, const uint8_t* cells, int count, int component) {
  uint32_t total = 0;
  for (int i = 0; i < count; ++i) total += words(c->sub_window_means[cells[i]])[component];
  return total;
}

// The grid's mean counts 48 times, each ring cell once and each central cell k times: with its share in the grid's
// mean a central cell counts k + 1 times.
const uint32_t* centre_weighted(const ppl_context* c, uint32_t k, uint32_t* result) {
  if (centre_from_frame(c)) return words(c->whole_frame_means);
  for (int i = 0; i < 3; ++i) {
    const uint32_t total =
        48u * words(c->all_windows_means)[i] + k * sum(c, kCentral, 4, i) + sum(c, kRing, 20, i);
    result[i] = static_cast<uint32_t>(static_cast<int32_t>(total) / static_cast<int32_t>(4 * k + 68));
  }
  return result;
}

}  // namespace

uint32_t ppl_n_sub_windows(const ppl_context*, uint32_t* out_columns, uint32_t* out_rows) {
  if (out_columns) *out_columns = kGridColumns;
  if (out_rows) *out_rows = kGridRows;
  return kCells;
}

const uint32_t* ppl_rgb_means_sub_windows(const ppl_context* c) {
  return words(c->sub_window_means[0]);
}

const uint32_t* ppl_rgb_means_outside_all_sub_windows(const ppl_context* c) {
  return words(c->sub_window_means[kCells]);
}

const uint32_t* ppl_rgb_means_all_sub_windows(const ppl_context* c) {
  return words(c->all_windows_means);
}

const uint32_t* ppl_rgb_means_whole_frame(const ppl_context* c) {
  return words(c->whole_frame_means);
}

const uint32_t* ppl_rgb_means_whole_frame_4pts(const ppl_context* c) {
  if (centre_from_frame(c)) return words(c->whole_frame_means);
  for (int i = 0; i < 3; ++i) result_4pts[i] = sum(c, kCentral, 4, i) >> 2;
  return result_4pts;
}

const uint32_t* ppl_rgb_means_whole_frame_central4(const ppl_context* c) {
  return centre_weighted(c, 3, result_central4);
}

const uint32_t* ppl_rgb_means_whole_frame_central8(const ppl_context* c) {
  return centre_weighted(c, 7, result_central8);
}

const uint32_t* ppl_rgb_means_whole_frame_central16(const ppl_context* c) {
  return centre_weighted(c, 15, result_central16);
}

const uint32_t* ppl_qAE_rgb_means_whole_frame(const ppl_context* c) {
  return words(c->qAE_means);
}

const uint32_t* ppl_qual_rgb_means_whole_frame(const ppl_context* c) {
  return words(c->qual_means);
}

const uint32_t* ppl_r_histogram(const ppl_context* c) {
  return c->r_histogram;
}

const uint32_t* ppl_g_histogram(const ppl_context* c) {
  return c->g_histogram;
}

const uint32_t* ppl_b_histogram(const ppl_context* c) {
  return c->b_histogram;
}

uint32_t ppl_n_qAE_2x2_whole_frame(const ppl_context* c) {
  return c->qAE_count;
}

uint32_t ppl_n_qual_2x2_whole_frame(const ppl_context* c) {
  return c->qual_count;
}
