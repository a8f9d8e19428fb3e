#include "frame/geometry.h"

#include "paths/qualities.h"

namespace ppl {
namespace {

constexpr uint32_t kLargestExtent = 2048;
constexpr int32_t kNoBorder = 1024;  // the factor of statistics that reach everywhere

// Entries of stats_scale_table that no quality reads.
struct unread_entry {
  uint8_t entry;
  int8_t columns, rows;
};
constexpr unread_entry kUnreadEntries[] = {{1, 64, 12}, {2, 64, 12}, {3, 48, 12}, {10, 0, 4}, {13, 48, 12}};
// Below this size some border would leave nothing of the frame.
constexpr int32_t kSmallestBorderedWidth = 81, kSmallestBorderedHeight = 17;

void set_scale(ppl_context* c, uint8_t entry, int32_t columns, int32_t rows) {
  if (columns == kNotWritten) return;
  int32_t& scale = c->stats_scale_table[entry];
  scale = kNoBorder;
  const bool bordered =
      c->frame_width >= kSmallestBorderedWidth && c->frame_height >= kSmallestBorderedHeight;
  if (!bordered || (columns == 0 && rows == 0)) return;
  const int32_t reached = (c->frame_height - rows) * (c->frame_width - columns) / 4;
  scale = (c->frame_pixels << 8) / (reached ? reached : 1);
}

int32_t wrapping_add(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

int32_t wrapping_mul(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

// Black lines are untested numbers of the caller: sums and products wrap.
void set_output_size(ppl_context* c, int32_t d, int32_t black_lines) {
  c->out_width = decimated(c->frame_width, d);
  c->out_half_width = c->out_width / 2;
  c->out_height = wrapping_add(decimated(c->frame_height, d), black_lines);
  c->out_pixels = wrapping_mul(c->out_width, c->out_height);
  c->out_quarter_pixels = c->out_pixels / 4;
}

// The picture that a decoder frame of one size becomes. With `by_total` the output may be higher than the decimated
// input: the missing lines are drawn black, half of them (rounded down) above the picture.
struct conversion {
  uint16_t in_width, in_height, out_width, out_height;
  int16_t decimation;
  bool by_total;
};
constexpr conversion kConversions[] = {
    {320, 240, 160, 120, 1, false},
    {320, 240, 320, 240, 0, false},
    {480, 480, 480, 480, 0, false},
    {480, 480, 480, 576, 0, true},
    {480, 576, 480, 576, 0, false},
    {640, 480, 160, 120, 2, false},
    {640, 480, 320, 240, 1, false},
    // Full size: the reduction to 352 is the caller's.
    {640, 480, 352, 240, 0, false},
    {640, 480, 352, 288, 0, false},
    {640, 480, 640, 480, 0, false},
    {640, 480, 1280, 960, -1, false},
    {1280, 1024, 1280, 1024, 0, false},
};
// Any output height from the decimated input height up.
struct open_conversion {
  uint16_t in_width, in_height, out_width;
  int16_t decimation;
};
constexpr open_conversion kOpenConversions[] = {
    {704, 480, 176, 2}, {704, 480, 352, 1}, {704, 480, 704, 0}, {704, 576, 176, 2},
    {704, 576, 352, 1}, {704, 576, 704, 0}, {720, 480, 720, 0}, {720, 576, 720, 0},
};

struct placement {
  int32_t decimation, top, bottom;
};

bool find_placement(uint32_t in_width, uint32_t in_height, uint32_t out_width, uint32_t out_height,
                    placement* p) {
  uint32_t picture_height = 0;
  bool found = false;
  for (const conversion& k : kConversions) {
    if (k.in_width != in_width || k.in_height != in_height || k.out_width != out_width ||
        k.out_height != out_height) {
      continue;
    }
    p->decimation = k.decimation;
    picture_height = k.by_total ? in_height : out_height;
    found = true;
  }
  for (const open_conversion& k : kOpenConversions) {
    if (k.in_width != in_width || k.in_height != in_height || k.out_width != out_width ||
        out_height < in_height >> k.decimation) {
      continue;
    }
    p->decimation = k.decimation;
    picture_height = in_height >> k.decimation;
    found = true;
  }
  if (!found) return false;
  const int32_t total = static_cast<int32_t>(out_height - picture_height);
  p->top = total / 2;
  p->bottom = total - p->top;
  return true;
}

}  // namespace

// The grid starts at the top left corner; the tiles and row pairs that remain after division belong to the outside
// cell.
bool rebuild_frame_tables(ppl_context* c) {
  c->cell_tiles = c->frame_width / 16 / kGridColumns;
  c->cell_row_pairs = c->frame_height / 2 / kGridRows;
  c->grid_first_tile = c->grid_first_row_pair = 0;
  c->grid_end_tile = c->grid_tiles = kGridColumns * c->cell_tiles;
  c->grid_end_row_pair = c->grid_row_pairs = kGridRows * c->cell_row_pairs;
  const int32_t blocks = c->cell_tiles * c->cell_row_pairs;
  const uint32_t cell_pixels = 32u * static_cast<uint32_t>(blocks > 1 ? blocks : 1);
  c->red_divisor = c->blue_divisor = 0x100000u / (cell_pixels >> 2);
  c->green_divisor = 0x100000u / (cell_pixels >> 1);
  return true;
}

// tiles_per_row and row_pairs, and for each border without statistics its factor: 256 x 4 x (frame area / area within
// the border), as statistics take a quarter of the mosaic.
bool rebuild_stats_scales(ppl_context* c) {
  c->tiles_per_row = c->frame_width / 16;
  c->row_pairs = c->frame_height / 2;
  for (const unread_entry& e : kUnreadEntries) set_scale(c, e.entry, e.columns, e.rows);
  for (const quality_row& q : quality_rows)
    if (q.facts().statistics != PPL_STATISTICS_NONE)
      for (int medium = 0; medium < 2; ++medium) {
        const quality_form& form = q.form(medium != 0);
        set_scale(c, form.stats_scale, form.border_columns, form.border_rows);
      }
  return true;
}

}  // namespace ppl

uint8_t ppl_new_frame_size(ppl_context* c, uint32_t width, uint32_t height, uint32_t stride) {
  if (width > ppl::kLargestExtent || height > ppl::kLargestExtent || stride > ppl::kLargestExtent) return 0;
  // Row storage: four rows of a ring slot, six rows of the two slots of the medium filter.
  if (4 * width + 48 > 8192 || 6 * width + 64 > 16384) return 0;
  c->frame_width = static_cast<int32_t>(width);
  c->frame_stride = static_cast<int32_t>(stride);
  c->frame_height = static_cast<int32_t>(height);
  c->frame_pixels = c->frame_width * c->frame_height;
  c->frame_pixels_half = c->frame_pixels / 2;
  c->frame_pixels_quarter = c->frame_pixels / 4;
  c->frame_pixels_eighth = c->frame_pixels / 8;
  ppl::set_output_size(c, c->decimation, 0);  // black lines are dropped until decimation or counts change
  const bool tables = ppl::rebuild_frame_tables(c);
  const bool plan = ppl::rebuild_output_plan(c);
  const bool scales = ppl::rebuild_stats_scales(c);
  return tables && plan && scales;
}

uint8_t ppl_new_frame_sizes(ppl_context* c, uint32_t in_width, uint32_t in_height, uint32_t out_width,
                            uint32_t out_height, uint8_t validate) {
  ppl::placement p = {0, 0, 0};
  if (validate && !ppl::find_placement(in_width, in_height, out_width, out_height, &p)) return 0;
  if (!ppl_new_frame_size(c, in_width, in_height, in_width)) return 0;
  return ppl_set_decimation(c, p.decimation, p.top, p.bottom);
}

uint8_t ppl_set_decimation(ppl_context* c, int32_t decimation, int32_t top_black_lines,
                           int32_t bottom_black_lines) {
  // Nothing new, nothing rebuilt: black lines that a size change dropped stay dropped.
  if (decimation == c->decimation && top_black_lines == c->top_black_lines &&
      bottom_black_lines == c->bottom_black_lines) {
    return 1;
  }
  if (decimation < -1 || decimation > 2) return 0;
  c->decimation = decimation;
  c->top_black_lines = top_black_lines;
  c->bottom_black_lines = bottom_black_lines;
  ppl::set_output_size(c, decimation, ppl::wrapping_add(top_black_lines, bottom_black_lines));
  return ppl::rebuild_output_plan(c);
}

void ppl_reset_decimation(ppl_context* c) {
  if (c->decimation == 0 && c->top_black_lines == 0 && c->bottom_black_lines == 0) return;
  c->decimation = c->top_black_lines = c->bottom_black_lines = 0;
  ppl::set_output_size(c, 0, 0);
  ppl::rebuild_output_plan(c);
}

int32_t ppl_decimation(const ppl_context* c) {
  return c->decimation;
}

int32_t ppl_decimation_top_black_lines(const ppl_context* c) {
  return c->top_black_lines;
}

int32_t ppl_decimation_bottom_black_lines(const ppl_context* c) {
  return c->bottom_black_lines;
}
