#include "bulk.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "mosaic.h"
#include "place.h"
#include "plan.h"

namespace ref {
namespace {

using row_bytes = std::vector<uint8_t>;

plan_input plan_of(const state& s) {
  return {s.out_width, s.decimation, s.h_mirror != 0, s.v_mirror != 0};
}

// The collecting tiles are those of odd index in row pairs of odd index; their partner is the tile before.
template <typename F>
void each_group(const state& s, F&& collect) {
  for (int p = 1; p < s.row_pairs; p += 2)
    for (int t = 1; t < s.tiles_per_row; t += 2) collect(2 * p, 16 * t);
}

const uint8_t* at(const plane& from, int row, int column) {
  return from.samples.data() + size_t(row) * size_t(from.width) + size_t(column);
}

// Finished samples of the tile before, samples ahead of the tone table of the tile itself.
cell_group mixed_group(const mosaic& m, int row, int column) {
  return sampled_cells(at(m.toned, row, column - 16), at(m.toned, row + 1, column - 16),
                       at(m.linear, row, column), at(m.linear, row + 1, column));
}

void add_to_whole_frame(state& s, const cell_group& cells) {
  const rgb_words sums = plain_sums(cells);
  for (size_t i = 0; i < 3; ++i) s.whole_frame_means[i] += 4 * sums[i];
}

// A picture of bytes, some bytes a pixel, whose memory rows run down from the start or up from the end of a plane.
// `first` is the plane's place in the frame, `end` that of the byte behind it.
struct rows_out {
  canvas& out;
  int64_t first, end, pitch;
  bool upward;
  void put(int64_t row, const row_bytes& bytes) { put(row, bytes, 0, bytes.size()); }
  void put(int64_t row, const row_bytes& bytes, size_t from, size_t count) {
    const int64_t to = upward ? end - (row + 1) * pitch : first + row * pitch;
    for (size_t i = from; i < from + count; ++i) out.store(to + int64_t(i), bytes[i]);
  }
};

// Reverses a row of groups of n bytes, keeping each group.
row_bytes reversed(const row_bytes& row, size_t n) {
  row_bytes back(row.size());
  for (size_t i = 0; i + n <= row.size(); i += n)
    for (size_t k = 0; k < n; ++k) back[row.size() - n - i + k] = row[i + k];
  return back;
}

// Twice as wide. Unmirrored: the mean with the sample before, then the sample. Mirrored: tile by tile from the right
// edge, where the first neighbour of a tile is what already stands to its right.
row_bytes widened(const row_bytes& L, size_t tile, bool h_mirror) {
  const size_t n = L.size();
  row_bytes E(2 * n);
  if (!h_mirror) {
    for (size_t x = 0; x < n; ++x) {
      E[2 * x] = mean(L[x > 0 ? x - 1 : 0], L[x]);
      E[2 * x + 1] = L[x];
    }
    return E;
  }
  for (size_t t = 0; t * tile + tile <= n; ++t) {
    uint8_t* to = E.data() + 2 * (n - tile * (t + 1));
    const auto M = [&](size_t k) { return L[tile * t + tile - 1 - k]; };
    for (size_t k = 0; k < tile; ++k) {
      const int beside = k + 1 < tile ? M(k + 1) : t == 0 ? M(tile - 1) : to[2 * tile];
      to[2 * k] = mean(M(k), beside);
      to[2 * k + 1] = M(k);
    }
  }
  return E;
}

row_bytes mean_row(const row_bytes& a, const row_bytes& b) {
  row_bytes m(a.size());
  for (size_t i = 0; i < a.size(); ++i) m[i] = mean(a[i], b[i]);
  return m;
}

struct frame_rows {
  rows_out main, u, v;
};

// Rows in image order, from the first column to the last as they stand in memory. In I420 the planes can overlap
// where black lines are negative, so the order of the stores matters: two rows at a time, in groups of 32 columns
// in the walk's direction, tile by tile and row by row, luma before U before V.
struct row_list {
  std::vector<row_bytes> main, u, v;
};

void put_rows(frame_rows& to, const row_list& rows, bool h_mirror) {
  const size_t height = rows.main.size();
  if (rows.u.empty()) {
    for (size_t y = 0; y < height; ++y) to.main.put(int64_t(y), rows.main[y]);
    return;
  }
  for (size_t y = 0; y + 1 < height; y += 2) {
    const size_t width = rows.main[y].size(), groups = width / 32;
    for (size_t g = 0; g < groups; ++g) {
      for (size_t t = 2 * g; t < 2 * g + 2; ++t)
        for (size_t k = 0; k < 2; ++k)
          to.main.put(int64_t(y + k), rows.main[y + k], h_mirror ? width - 16 * (t + 1) : 16 * t, 16);
      const size_t chroma = h_mirror ? width / 2 - 16 * (g + 1) : 16 * g;
      to.u.put(int64_t(y / 2), rows.u[y / 2], chroma, 16);
      to.v.put(int64_t(y / 2), rows.v[y / 2], chroma, 16);
    }
  }
}

// Rows in image order with the means between them. The row that is doubled is the last one in memory. Row pair by
// row pair: its own rows and the mean between them in all planes, then the means towards the row pair before, then
// the doubled row, each luma before U before V.
void put_doubled(frame_rows& to, const row_list& rows) {
  const int64_t shift = to.main.upward ? 1 : 0;
  const auto own = [&](rows_out& plane, const std::vector<row_bytes>& from, size_t i) {
    plane.put(int64_t(2 * i) + shift, from[i]);
  };
  const auto before = [&](rows_out& plane, const std::vector<row_bytes>& from, size_t i) {
    if (i > 0) plane.put(int64_t(2 * i) - 1 + shift, mean_row(from[i - 1], from[i]));
  };
  const auto twice = [&](rows_out& plane, const std::vector<row_bytes>& from, size_t first, size_t count) {
    if (shift != 0 && first == 0) plane.put(0, from.front());
    if (shift == 0 && first + count == from.size()) plane.put(int64_t(2 * from.size()) - 1, from.back());
  };
  const bool chroma = !rows.u.empty();
  for (size_t i = 0; i + 1 < rows.main.size(); i += 2) {
    own(to.main, rows.main, i);
    own(to.main, rows.main, i + 1);
    before(to.main, rows.main, i + 1);
    if (chroma) own(to.u, rows.u, i / 2), own(to.v, rows.v, i / 2);
    before(to.main, rows.main, i);
    if (chroma) before(to.u, rows.u, i / 2), before(to.v, rows.v, i / 2);
    twice(to.main, rows.main, i, 2);
    if (chroma) twice(to.u, rows.u, i / 2, 1), twice(to.v, rows.v, i / 2, 1);
  }
}

int clamped(int value, int low, int high) {
  return std::clamp(value, low, high);
}

// What a frame of cells comes to: per site luma and colours, per cell chroma with 128 added.
struct cells {
  const state& s;
  const plane& f;
  int columns, rows;  // of cells

  cells(const state& s_, const plane& f_) : s(s_), f(f_), columns(f_.width / 2), rows(f_.height / 2) {}
  int B(int i, int j) const { return f(2 * j, 2 * i); }
  int Gb(int i, int j) const { return f(2 * j, 2 * i + 1); }
  int Gr(int i, int j) const { return f(2 * j + 1, 2 * i); }
  int R(int i, int j) const { return f(2 * j + 1, 2 * i + 1); }
  int Gm(int i, int j) const { return (Gb(i, j) + Gr(i, j) + 1) >> 1; }
  // The green of the site at row y, column x.
  int green(int y, int x) const {
    if (y % 2 == 0 && x % 2 == 1) return Gb(x / 2, y / 2);
    if (y % 2 == 1 && x % 2 == 0) return Gr(x / 2, y / 2);
    return Gm(x / 2, y / 2);
  }
  static int weigh(const std::array<int16_t, 9>& m, size_t row, int r, int g, int b, int offset) {
    return int16_t(uint16_t(m[3 * row] * r + m[3 * row + 1] * g + m[3 * row + 2] * b + offset)) >> 6;
  }
  uint8_t luma(int y, int x) const {
    const int i = x / 2, j = y / 2;
    return uint8_t(clamped(weigh(s.yuv_coef, 0, R(i, j), green(y, x), B(i, j), s.luma_offset), 0, 255));
  }
  uint8_t chroma(size_t row, int i, int j) const {
    return uint8_t(clamped(weigh(s.yuv_coef, row, R(i, j), Gm(i, j), B(i, j), 32), -128, 127) + 128);
  }
  uint8_t u(int i, int j) const { return chroma(1, i, j); }
  uint8_t v(int i, int j) const { return chroma(2, i, j); }
  uint8_t colour(size_t row, int y, int x) const {
    const int i = x / 2, j = y / 2;
    const int g = row == 1 ? green(y, x) : Gm(i, j);
    return uint8_t(clamped(weigh(s.rgb_coef, row, R(i, j), g, B(i, j), s.rgb_offset_lane), 0, 255));
  }
};

// Packed bytes of a row from its luma and its chroma words.
row_bytes interleaved(format kind, const row_bytes& y, const row_bytes& u, const row_bytes& v) {
  row_bytes row(2 * y.size());
  for (size_t i = 0; i < y.size(); ++i) {
    const uint8_t c = i % 2 == 0 ? u[i / 2] : v[i / 2];
    row[2 * i] = kind == format::yuyv ? y[i] : c;
    row[2 * i + 1] = kind == format::yuyv ? c : y[i];
  }
  return row;
}

row_bytes pixels(size_t bytes_a_pixel, const row_bytes& r, const row_bytes& g, const row_bytes& b) {
  row_bytes row(bytes_a_pixel * r.size());
  for (size_t i = 0; i < r.size(); ++i) {
    row[bytes_a_pixel * i] = b[i];
    row[bytes_a_pixel * i + 1] = g[i];
    row[bytes_a_pixel * i + 2] = r[i];
  }
  return row;
}

frame_rows layout(const state& s, format kind, canvas& out) {
  const int64_t W = s.out_width, N = s.out_pixels, Q = s.out_quarter_pixels;
  const bool up = s.v_mirror != 0;
  switch (kind) {
    case format::i420:
      return {{out, 0, N, W, up}, {out, N, N + Q, W / 2, up}, {out, N + Q, N + 2 * Q, W / 2, up}};
    case format::yuyv:
    case format::uyvy:
      return {{out, 0, 2 * N, 2 * W, up}, {out, 0, 0, 0, up}, {out, 0, 0, 0, up}};
    case format::rgb24:
      return {{out, 0, 3 * N, 3 * W, !up}, {out, 0, 0, 0, up}, {out, 0, 0, 0, up}};
    case format::rgb32:
      break;
  }
  return {{out, 0, 4 * N, 4 * W, !up}, {out, 0, 0, 0, up}, {out, 0, 0, 0, up}};
}

// Rows of a picture that takes the sites (step * yo, step * xo): every site, or the B sites when halved.
void put_cells(const state& s, const cells& c, format kind, canvas& out) {
  const int step = s.decimation > 0 ? 2 : 1;
  const int width = 2 * c.columns / step, height = 2 * c.rows / step;
  const bool h = s.h_mirror != 0;
  frame_rows to = layout(s, kind, out);
  const auto row_of = [&](auto&& value, int n) {
    row_bytes row(size_t(std::max(n, 0)));
    for (int x = 0; x < n; ++x) row[size_t(h ? n - 1 - x : x)] = value(x);
    return row;
  };
  row_list rows;
  for (int yo = 0; yo < height; ++yo) {
    const int y = step * yo;
    if (kind == format::rgb24 || kind == format::rgb32) {
      const auto plane_row = [&](size_t row) {
        return row_of([&](int xo) { return c.colour(row, y, step * xo); }, width);
      };
      rows.main.push_back(pixels(kind == format::rgb24 ? 3 : 4, plane_row(0), plane_row(1), plane_row(2)));
      continue;
    }
    const row_bytes luma = row_of([&](int xo) { return c.luma(y, step * xo); }, width);
    const auto words = [&](size_t row, int j) {
      return row_of([&](int xc) { return c.chroma(row, step * xc, j); }, width / 2);
    };
    if (kind != format::i420) {
      rows.main.push_back(interleaved(kind, luma, words(1, y / 2), words(2, y / 2)));
      continue;
    }
    rows.main.push_back(luma);
    if (yo % 2 == 0) {
      rows.u.push_back(words(1, step * (yo / 2)));
      rows.v.push_back(words(2, step * (yo / 2)));
    }
  }
  put_rows(to, rows, h);
}

void put_cells_doubled(const state& s, const cells& c, format kind, canvas& out) {
  const bool h = s.h_mirror != 0;
  const int width = 2 * c.columns, height = 2 * c.rows;
  frame_rows to = layout(s, kind, out);
  const auto row_of = [&](auto&& value, int n) {
    row_bytes row;
    for (int x = 0; x < n; ++x) row.push_back(value(x));
    return row;
  };
  row_list rows;
  for (int y = 0; y < height; ++y) {
    if (kind == format::rgb24) {
      const auto plane_row = [&](size_t row) {
        return widened(row_of([&](int x) { return c.colour(row, y, x); }, width), 16, h);
      };
      rows.main.push_back(pixels(3, plane_row(0), plane_row(1), plane_row(2)));
      continue;
    }
    const row_bytes luma = widened(row_of([&](int x) { return c.luma(y, x); }, width), 16, h);
    const auto words = [&](size_t row) {
      return widened(row_of([&](int i) { return c.chroma(row, i, y / 2); }, width / 2), 8, h);
    };
    if (kind != format::i420) {
      rows.main.push_back(interleaved(kind, luma, words(1), words(2)));
      continue;
    }
    rows.main.push_back(luma);
    if (y % 2 == 0) {
      rows.u.push_back(words(1));
      rows.v.push_back(words(2));
    }
  }
  put_doubled(to, rows);
}

// RGB32 has no doubling: the routine for full size walks with the plan of a doubled picture.
void walk_rgb32(const state& s, const cells& c, canvas& out) {
  const plan_input in = plan_of(s);
  const bulk_plan plan = bulk_rgb32_plan(in);
  const bool h = in.h_mirror;
  int64_t to = 4 * bulk_start(format::rgb32, in, s.out_pixels, s.out_quarter_pixels).main;
  for (int p = 0; p < c.rows; ++p) {
    for (int t = 0; t + 1 < s.tiles_per_row; t += 2) {
      for (int half = 0; half < 2; ++half)
        for (int k = 0; k < 2; ++k)
          for (int i = 0; i < 16; ++i) {
            const int x = 16 * (t + half) + (h ? 15 - i : i), y = 2 * p + k;
            const int64_t pixel = to + (half ? plan.right_offset : plan.left_offset) +
                                  (k ? plan.row_1_offset : plan.row_0_offset) + 4 * i;
            out.store(pixel, c.colour(2, y, x));
            out.store(pixel + 1, c.colour(1, y, x));
            out.store(pixel + 2, c.colour(0, y, x));
            out.store(pixel + 3, 0);
          }
      to += plan.group_step;
    }
    to += plan.row_step;
  }
}

// The grey picture at half size: groups of four tiles in two row pairs, of which even columns of even rows go out.
// At double size it runs too, with the plan of a doubled picture, and leaves gaps.
void walk_grey_half(const state& s, const plane& f, format kind, canvas& out) {
  const plan_input in = plan_of(s);
  const bulk_plan plan = kind == format::i420 ? bulk_i420_plan(in) : bulk_rgb24_plan(in);
  const start from = bulk_start(kind, in, s.out_pixels, s.out_quarter_pixels);
  const int bytes = kind == format::i420 ? 1 : 3;
  int64_t l = bytes * from.main, c = s.out_pixels + from.chroma;
  for (int p = 0; p + 1 < s.row_pairs; p += 2) {
    for (int t = 0; t + 3 < s.tiles_per_row; t += 4) {
      for (int k = 0; k < 2; ++k)
        for (int half = 0; half < 2; ++half)
          for (int i = 0; i < 16; ++i) {
            const int x = 16 * t + 32 * half + 2 * (in.h_mirror ? 15 - i : i), y = 2 * p + 2 * k;
            out.fill(l + (half ? plan.right_offset : plan.left_offset) +
                         (k ? plan.row_1_offset : plan.row_0_offset) + bytes * i,
                     bytes, f(y, x));
          }
      l += plan.group_step;
      if (kind == format::i420) {
        out.fill(c, 16, 128);
        out.fill(c + s.out_quarter_pixels, 16, 128);
        c += plan.chroma_group_step;
      }
    }
    l += plan.row_step;
    c += plan.chroma_row_step;
  }
}

}  // namespace

void grey_frame(state& s, format kind, uint8_t* source, canvas& out) {
  const mosaic m = front_end(s, source, s.yuv_contrast_gamma_table);
  write_back(s, m.toned, source);
  if (s.mean_collection)
    each_group(s, [&](int row, int column) { add_to_whole_frame(s, mixed_group(m, row, column)); });

  if (s.decimation != 0) {
    walk_grey_half(s, m.toned, kind, out);
    return;
  }
  frame_rows to = layout(s, kind, out);
  row_list rows;
  for (int y = 0; y < m.toned.height; ++y) {
    row_bytes row(at(m.toned, y, 0), at(m.toned, y, 0) + m.toned.width);
    if (s.h_mirror) row = reversed(row, 1);
    if (kind == format::rgb24) row = pixels(3, row, row, row);
    rows.main.push_back(row);
    if (kind == format::i420 && y % 2 == 0) {
      rows.u.emplace_back(size_t(m.toned.width / 2), 128);
      rows.v.emplace_back(size_t(m.toned.width / 2), 128);
    }
  }
  put_rows(to, rows, s.h_mirror != 0);
}

void cell_frame(state& s, format kind, uint8_t* source, canvas& out) {
  const mosaic m = front_end(s, source, s.rgb_gamma_table);
  write_back(s, m.toned, source);
  if (s.mean_collection) {
    each_group(s, [&](int row, int column) {
      add_qualified(s, sampled_cells(at(m.black, row, column - 16), at(m.black, row + 1, column - 16),
                                     at(m.black, row, column), at(m.black, row + 1, column)));
      const cell_group mixed = mixed_group(m, row, column);
      add_exposure(s, mixed);
      add_to_whole_frame(s, mixed);
    });
    // The last even tile of the last odd row pair is what a later frame's first group finds.
    const int p = s.row_pairs - 1 - (s.row_pairs % 2), t = s.tiles_per_row - 1 - (s.tiles_per_row + 1) % 2;
    if (p >= 1 && t >= 0) {
      std::copy_n(at(m.black, 2 * p, 16 * t), 16, s.stat_even_row.begin());
      std::copy_n(at(m.black, 2 * p + 1, 16 * t), 16, s.stat_odd_row.begin());
    }
  }

  const cells c(s, m.toned);
  if (s.decimation >= 0) {
    put_cells(s, c, kind, out);
  } else if (kind == format::rgb32) {
    walk_rgb32(s, c, out);
  } else {
    put_cells_doubled(s, c, kind, out);
  }
}

}  // namespace ref
