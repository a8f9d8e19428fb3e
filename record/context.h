// The record that holds all state of one instance, and the pool of eight of them.
//
// A record is flat: nothing in it is allocated and nothing has to be freed. It keeps the controls as the caller set
// them and, derived from them, vectors and tables, which the setters rebuild at once.
#pragma once

#include <stdint.h>

#include "ppl.h"

namespace ppl {

struct kernels;  // record/levels.h

constexpr int kPoolRecords = 8;
constexpr int kRingSlots = 7;
constexpr int kRingSlotBytes = 8192;
constexpr int kRingPoolBytes = kRingSlots * kRingSlotBytes;
constexpr int kScratchBytes = 84 * 1024;
constexpr int kPlanValues = 79;
constexpr int kStatsScales = 18;
constexpr int kGridColumns = 8;
constexpr int kGridRows = 6;
constexpr int kCells = kGridColumns * kGridRows;

// 16 bytes with the same element (or the same pair of elements) repeated.
struct alignas(16) vec_i16 {
  int16_t lane[8];
};
struct alignas(16) vec_u8 {
  uint8_t lane[16];
};

// A range control: minimum, maximum, maximum - minimum + 1.
struct range {
  int32_t minimum, maximum, count;
};

struct rgb32 {
  uint32_t r, g, b;
};

// Steps and offsets in bytes by which output pointers move; record/output_plan.cpp has every rule. The plan is whole: a
// figure for each step of each layout, in this order. Nothing reads the last_source and chroma_last_source of the bulk
// groups, the quarter offsets, the bulk figures of `packed`, and of a pitch anything but row_pitch.
struct output_offset_plan {
  struct {
    int32_t left_offset, right_offset, row_0_offset, row_1_offset, group_step, row_step, last_source;
    int32_t chroma_group_step, chroma_row_step, chroma_last_source;
  } bulk_i420;
  struct {
    int32_t left_offset, right_offset, row_0_offset, row_1_offset, group_step, row_step;
  } bulk_packed;
  struct {
    int32_t left_offset, right_offset, row_0_offset, row_1_offset, group_step, row_step, last_source;
  } bulk_rgb24;
  struct {
    int32_t half_offset[2], quarter_offset[4], row_0_offset, row_1_offset, group_step, row_step;
  } bulk_rgb32;
  struct {
    int32_t luma_tile_step, luma_row_step, luma_fill_1, luma_fill_2, luma_last_source, luma_last_target;
    int32_t chroma_tile_step, chroma_row_step, chroma_fill, unused, chroma_last_source, chroma_last_target;
  } i420;
  struct {
    int32_t tile_step, row_step, fill_1, fill_2, last_source, last_target;
    int32_t bulk_fill_1, bulk_fill_2, bulk_last_source, bulk_last_target;
  } packed;
  struct {
    int32_t tile_step, row_step, fill_1, fill_2, last_source, last_target;
  } rgb24;
  struct {
    int32_t tile_step, row_step;
  } rgb32;
  struct pitch {
    int32_t zero, tile_offset, row_pitch, row_pitch_and_tile_offset;
  } i420_pitch, packed_pitch, rgb24_pitch, rgb32_pitch;
};
static_assert(sizeof(output_offset_plan) == kPlanValues * sizeof(int32_t));

// What the tile pipeline carries from step to step and from frame to frame. Only the clearing of the pool initialises
// it: it survives frames, paths, ppl_free and ppl_init.
struct tile_leftovers {
  // Black-corrected samples of the last even inner tile of a collecting row pair.
  vec_u8 stat_even_row, stat_odd_row;
  // The flat test's last tile, one 16-bit lane for two columns: 0xffff where they are flat, and the flat colours.
  vec_i16 flat_mask, flat_r, flat_g, flat_b;
};

// What statistics have added up so far in a frame (tile/statistics-inl.h, tile/statistics_sums.h).
struct alignas(64) statistics_sums {
  uint32_t tiles[64][4];  // of each odd tile: B, G, G, R of the row pairs that share a row of the grid
  uint32_t bins[64][4];   // of each group of the current row pair, in the same order
  // Four lanes for each group of a vector. Counts are in the first two: of cells that passed, their sum; of
  // rejected ones, both the same.
  uint32_t qualified[16], exposed[16], passed[16], rejected[16];
  int32_t grid_row;  // kGridRows: below the grid
};

}  // namespace ppl

// Builds for the address sanitizer separate the working areas by bytes that nothing may touch (record/gaps.h), so that
// running over the end of one is noticed.
#ifdef PPL_RECORD_GAPS
#define PPL_RECORD_GAP(name) alignas(64) uint8_t name[256];
#else
#define PPL_RECORD_GAP(name)
#endif

struct alignas(64) ppl_context {
  uint8_t in_use;

  // Derived vectors: exclusive bounds of the difference ranges, then the per-sample ranges as byte pairs.
  ppl::vec_i16 qual_BmGb_low, qual_BmGb_high, qual_GrmR_low, qual_GrmR_high;
  ppl::vec_i16 qual_sum_low, qual_sum_high, qual_diff_low, qual_diff_high;
  ppl::vec_i16 qual_rg_min, qual_rg_span, qual_gb_min, qual_gb_span;
  ppl::vec_u8 qAE_min, qAE_below_min, qAE_max, qAE_above_max;
  // Derived vectors: filter thresholds.
  ppl::vec_i16 edge_threshold_vector, edge_threshold2_vector, edge_factor_vector, intl_3T_vector;
  ppl::vec_i16 G_12T_vector, R_8T_vector, B_8T_vector;
  ppl::vec_u8 CFA_T0_vector;
  ppl::vec_i16 CFA_T1_vector;
  // Derived vectors: colour matrices, four groups of nine, row by row, 6 fraction bits.
  ppl::vec_i16 rgb_coef[9], yuv2_coef[9], yuv_coef[9], unused_coef[9];
  // Derived vectors: gains and offsets; lanes alternate with the colours of a row.
  ppl::vec_i16 gain_b_g, gain_g_r, quals_gain_b_g, quals_gain_g_r, delta_b_g, delta_g_r;
  ppl::vec_u8 black_b_gb, black_gr_r;
  ppl::vec_i16 medium_diff_plus, medium_diff_minus, medium_hot, medium_dead;
  ppl::vec_i16 medium_hot_percent, medium_dead_percent, GbGr_diff_plus, GbGr_diff_minus;
  ppl::vec_i16 luma_offset, yuv2_offset, rgb_offset_vector;

  ppl::tile_leftovers leftovers;

  // Geometry of the sub-window grid.
  int32_t grid_first_tile, grid_end_tile, grid_first_row_pair, grid_end_row_pair, grid_tiles, grid_row_pairs;
  int32_t cell_tiles, cell_row_pairs, tiles_per_row, row_pairs;
  int32_t stats_scale_table[ppl::kStatsScales];
  ppl::output_offset_plan plan;
  int32_t mark_position;
  uint8_t claimed_flag;
  uint8_t P3_only;
  uint32_t sensor_type;
  int32_t decimation, top_black_lines, bottom_black_lines;
  int32_t frame_width, frame_height, frame_stride;
  int32_t frame_pixels, frame_pixels_half, frame_pixels_quarter, frame_pixels_eighth;
  int32_t out_width, out_height, out_half_width, out_pixels, out_quarter_pixels;
  uint32_t n_frame, quality;

  // Tables of 256 bytes.
  uint8_t r_dekneel_table[256], g_dekneel_table[256], b_dekneel_table[256];
  uint8_t contrast_table[256], yuv_contrast_gamma_table[256], rgb_contrast_gamma_table[256];
  uint8_t yuv_gamma_table[256], rgb_gamma_table[256];

  uint8_t mean_collection;
  // Sensor controls.
  uint32_t nf88_r_gain, nf88_g_gain, nf88_b_gain;
  int32_t r_delta, g_delta, b_delta;
  uint32_t optical_black_b, optical_black_gb, optical_black_gr, optical_black_r;
  int32_t sensor_matrix[9];
  uint32_t sensor_matrix_index_upper_bound;
  // Medium filter.
  uint8_t medium_filter_enabled;
  int32_t medium_filter_diff_threshold, medium_filter_hot_pixel_threshold, medium_filter_dead_pixel_threshold;
  int32_t nf88_medium_filter_hot_pixel_threshold_percentage;
  int32_t nf88_medium_filter_dead_pixel_threshold_percentage;
  uint32_t nf88_quals_r_gain, nf88_quals_g_gain, nf88_quals_b_gain;
  ppl::range qual_BmGb, qual_GrmR, qual_BmGb_p_GrmR, qual_BmGb_m_GrmR, qual_R, qual_G, qual_B, qAE_RGB;
  uint32_t r_histogram[256], g_histogram[256], b_histogram[256];
  // Filter controls.
  uint32_t edge_threshold, edge_threshold2, nf88_edge_enhance_factor, intl_3T_threshold;
  uint32_t noise_filter_G_12T_threshold, noise_filter_R_8T_threshold, noise_filter_B_8T_threshold;
  uint32_t CFA_T0_threshold, CFA_T1_threshold;
  // Picture controls.
  int32_t contrast_c;
  uint32_t contrast_x, contrast_y, nf88_sat;
  int32_t hue_degree;
  // Derived matrices, 8 fraction bits.
  int32_t hue_rotation[4], rgb_matrix[9], yuv_matrix[9], y_bmy_rmy_matrix[9];
  int32_t y_bmy_rmy_offset, yuv_offset, rgb_offset;
  int32_t nf20_12_gamma, gamma_index;
  uint8_t h_mirror, v_mirror, GbGr_correction_enabled;
  int32_t GbGr_correction_diff_threshold;
  // Lens correction.
  uint8_t lens_correction_enabled;
  int32_t lens_width, lens_height, lens_origin_x, lens_origin_y;
  uint16_t* lens_table;
  int32_t lens_table_size, lens_needed_size;
  int32_t lens_f1, lens_f1_rshift_count, lens_f2, lens_f2_rshift_count;
  int32_t lens_largest_x_offset, lens_smallest_x_offset, lens_largest_y_offset;

  // Statistics. During a frame the fields hold sums; the roll-up turns them into means. The outside cell
  // follows the 48 sub-windows: all 49 are walked as one array.
  uint32_t red_divisor, green_divisor, blue_divisor;
  ppl::rgb32 sub_window_means[ppl::kCells + 1];
  ppl::rgb32 all_windows_means, whole_frame_means, qAE_means;
  uint32_t qAE_count;
  ppl::rgb32 qual_means;
  uint32_t qual_count;
  int32_t stats_scale;

  // The vector code of this processor, chosen when the record is claimed.
  const ppl::kernels* kernels;

  // Row storage of the frame in progress; nothing here outlives a call.
  PPL_RECORD_GAP(gap_before_rings)
  alignas(64) uint8_t ring_pool[ppl::kRingPoolBytes];
  PPL_RECORD_GAP(gap_before_scratch)
  alignas(64) uint8_t scratch[ppl::kScratchBytes];
  PPL_RECORD_GAP(gap_before_sums)
  ppl::statistics_sums sums;
  PPL_RECORD_GAP(gap_before_tables)
  // Black level, gain, offset and tone curve of the frame in progress as one look-up, in the form that suits the
  // level: for each of four neighbouring samples of an even and of an odd row, or for each site (tile/tone-inl.h).
  alignas(64) uint32_t site_tables[2][4][256];
  PPL_RECORD_GAP(gap_after)
};
#undef PPL_RECORD_GAP

namespace ppl {

// The eight records; zero at load. ppl_clear_pool (platform load entries) zeroes them again.
extern ppl_context context_pool[kPoolRecords];

constexpr rgb32* outside_cell(ppl_context* c) {
  return &c->sub_window_means[kCells];
}

// Works the plan out from decimation, out_width and the mirrors; whoever changes one of them calls it. Always true.
bool rebuild_output_plan(ppl_context* c);  // record/output_plan.cpp

}  // namespace ppl
