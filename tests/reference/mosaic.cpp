#include "mosaic.h"

#include <algorithm>
#include <cstdlib>

namespace ref {

int mirrored(int position, int size) {
  if (size == 1) return 0;
  while (position < 0 || position >= size) {
    if (position < 0) position = -position;
    if (position >= size) position = 2 * (size - 1) - position;
  }
  return position;
}

namespace {

uint8_t clamped(int value) {
  return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

uint8_t lens_corrected(const state& s, int row, int column, uint8_t sample) {
  const uint32_t distance = static_cast<uint32_t>(row) - static_cast<uint32_t>(s.lens_correction_origin_y);
  const uint32_t table_row = static_cast<int32_t>(distance) < 0 ? 0 - distance : distance;
  const int32_t index = static_cast<int32_t>(static_cast<uint32_t>(s.lens_correction_width) * table_row +
                                             static_cast<uint32_t>(column));
  const bool inside = index >= 0 && index < s.lens_correction_table_size / 2;
  const int factor = inside ? static_cast<int16_t>(s.lens_correction_table[index]) : 8192;
  return clamped((sample * factor) >> 13);
}

uint8_t with_gain(uint8_t sample, uint16_t gain, int16_t delta) {
  const int product = static_cast<uint16_t>(static_cast<uint32_t>(sample) * gain);
  return clamped(static_cast<int16_t>((product >> 5) + delta));
}

}  // namespace

mosaic front_end(const state& s, const uint8_t* source, const table256& tone_table) {
  const int width = 16 * s.tiles_per_row, height = 2 * s.row_pairs;
  mosaic m{plane(width, height), plane(width, height), plane(width, height)};
  const bool lens = s.lens_correction_enabled && s.lens_correction_table;
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column) {
      const uint8_t sample = source[std::ptrdiff_t{row} * s.frame_stride + column];
      m.black(row, column) = lens ? lens_corrected(s, row, column, sample) : sample;
    }
  }
  if (s.GbGr_correction_enabled) {
    for (int row = 0; row < height; row += 2) {
      for (int column = 0; column < width; column += 2) {
        uint8_t &gb = m.black(row, column + 1), &gr = m.black(row + 1, column);
        if (std::abs(gb - gr) < s.GbGr_diff) gb = gr = static_cast<uint8_t>((gb + gr + 1) >> 1);
      }
    }
  }
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column) {
      const bool even_row = row % 2 == 0;
      const int lane = column % 2;
      uint8_t& sample = m.black(row, column);
      sample = clamped(sample - (even_row ? s.black_b_gb : s.black_gr_r)[lane]);
      m.linear(row, column) = with_gain(sample, (even_row ? s.gain_b_g : s.gain_g_r)[lane],
                                        (even_row ? s.delta_b_g : s.delta_g_r)[lane]);
      m.toned(row, column) = tone_table[m.linear(row, column)];
    }
  }
  return m;
}

plane medium_filtered(const state& s, const plane& toned, int first_row_pair) {
  plane out = toned;
  for (int row = 2 * first_row_pair; row < toned.height - 2; ++row) {
    for (int column = 16; column < toned.width - 16; ++column) {
      const bool green = (row + column) % 2 != 0;
      std::array<int, 4> n;
      if (green) {
        n = {toned(row - 1, column - 1), toned(row + 1, column - 1), toned(row - 1, column + 1),
             toned(row + 1, column + 1)};
      } else {
        n = {toned(row - 2, column), toned(row + 2, column), toned(row, column - 2), toned(row, column + 2)};
      }
      const uint32_t sum = n[0] + n[1] + n[2] + n[3];
      const int hot = std::max<int>(static_cast<uint16_t>(sum * s.medium_hot_percent) >> 6, s.medium_hot);
      const int dead = std::min<int>(static_cast<uint16_t>(sum * s.medium_dead_percent) >> 6, s.medium_dead);
      const int sample = toned(row, column);
      if (sample > hot || sample < dead) {
        std::sort(n.begin(), n.end());
        out(row, column) = static_cast<uint8_t>(n[1]);
      }
    }
  }
  return out;
}

void write_back(const state& s, const plane& from, uint8_t* source) {
  for (int row = 0; row < from.height; ++row) {
    for (int column = 0; column < from.width; ++column)
      source[std::ptrdiff_t{row} * s.frame_stride + column] = from(row, column);
  }
}

cell_group sampled_cells(const uint8_t* earlier_even, const uint8_t* earlier_odd, const uint8_t* current_even,
                         const uint8_t* current_odd) {
  cell_group cells{};
  for (int k = 0; k < 4; ++k) {
    for (int current = 0; current < 2; ++current) {
      const uint8_t* even = (current ? current_even : earlier_even) + 4 * k + 2;
      const uint8_t* odd = (current ? current_odd : earlier_odd) + 4 * k + 2;
      const int cell = 2 * k + current;
      cells.b[cell] = even[0];
      cells.gb[cell] = even[1];
      cells.gr[cell] = odd[0];
      cells.r[cell] = odd[1];
    }
  }
  return cells;
}

namespace {

bool within(int value, const range& r) {
  return r.minimum <= value && value <= r.maximum;
}
bool within(int value, const state::open_range& r) {
  return r.low < value && value < r.high;
}

}  // namespace

void add_qualified(state& s, const cell_group& cells) {
  uint32_t sum_b = 0, sum_gb = 0, sum_gr = 0, sum_r = 0;
  for (int i = 0; i < 8; ++i) {
    const int b = cells.b[i], gb = cells.gb[i], gr = cells.gr[i], r = cells.r[i];
    const bool pass = within(b, s.qual_B) && within(gb, s.qual_G) && within(gr, s.qual_G) &&
                      within(r, s.qual_R) && within(b - gb, s.qual_BmGb_open) &&
                      within(gr - r, s.qual_GrmR_open) && within((b - gb) + (gr - r), s.qual_sum_open) &&
                      within((b - gb) - (gr - r), s.qual_diff_open);
    if (!pass) continue;
    ++s.qual_count;
    sum_b += b;
    sum_gb += gb;
    sum_gr += gr;
    sum_r += r;
  }
  s.qual_means[0] += sum_r;
  s.qual_means[1] += sum_gb + sum_gr;
  s.qual_means[2] += sum_b;
  s.r_histogram[sum_r >> 3] += 8;
  s.g_histogram[sum_gb >> 3] += 8;
  s.g_histogram[sum_gr >> 3] += 8;
  s.b_histogram[sum_b >> 3] += 8;
}

void add_exposure(state& s, const cell_group& cells) {
  const int minimum = s.qAE_RGB.minimum, maximum = s.qAE_RGB.maximum;
  for (int i = 0; i < 8; ++i) {
    const auto [lowest, highest] = std::minmax({cells.b[i], cells.gb[i], cells.gr[i], cells.r[i]});
    if ((minimum > 0 && highest < minimum) || (maximum < 255 && lowest > maximum)) continue;
    ++s.qAE_count;
    s.qAE_means[0] += cells.r[i];
    s.qAE_means[1] += cells.gb[i] + cells.gr[i];
    s.qAE_means[2] += cells.b[i];
  }
}

rgb_words plain_sums(const cell_group& cells) {
  rgb_words sums{};
  for (int i = 0; i < 8; ++i) {
    sums[0] += cells.r[i];
    sums[1] += cells.gb[i] + cells.gr[i];
    sums[2] += cells.b[i];
  }
  return sums;
}

void gather_statistics(state& s, const mosaic& m, const walk& w) {
  if (!s.mean_collection) return;
  const auto tile = [](const plane& p, int row, int tile_index) {
    return &p.samples[row * p.width + 16 * tile_index];
  };
  for (int p = 1; p <= s.row_pairs - w.rows_kept_off; p += 2) {
    const int row = 2 * (p + w.row_pairs_ahead);
    for (int t = 1; t <= s.tiles_per_row - w.tiles_kept_off; ++t) {
      const int current = t + w.tiles_ahead;
      const uint8_t *black_even = tile(m.black, row, current), *black_odd = tile(m.black, row + 1, current);
      if (t % 2 == 0) {
        if (!w.plain_only) {
          std::copy_n(black_even, 16, s.stat_even_row.begin());
          std::copy_n(black_odd, 16, s.stat_odd_row.begin());
        }
        continue;
      }
      const cell_group cells =
          sampled_cells(tile(m.toned, row, current - 1), tile(m.toned, row + 1, current - 1),
                        tile(m.linear, row, current), tile(m.linear, row + 1, current));
      if (!w.plain_only) {
        // At t = 1 the kept rows are those of the last even inner tile of the collecting row pair before.
        add_qualified(s, sampled_cells(s.stat_even_row.data(), s.stat_odd_row.data(), black_even, black_odd));
        add_exposure(s, cells);
      }
      const bool in_grid = p < s.grid_row_pairs && t < s.grid_tiles;
      rgb_words& cell = s.sub_window_means[in_grid ? 8 * (p / s.cell_row_pairs) + t / s.cell_tiles : 48];
      const rgb_words sums = plain_sums(cells);
      for (int colour = 0; colour < 3; ++colour) cell[colour] += sums[colour];
    }
  }
}

}  // namespace ref
