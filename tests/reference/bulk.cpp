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
  return {s.out_width, s.decimation, s.h_mirror != 0, s.v_mirror != 0, s.out_pixels, s.out_quarter_pixels};
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
  void put(int64_t row, const row_bytes& bytes) {
    const int64_t to = upward ? end - (row + 1) * pitch : first + row * pitch;
    for (size_t i = 0; i < bytes.size(); ++i) out.store(to + int64_t(i), bytes[i]);
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

// A plane's part in a doubled picture.
struct doubled_plane {
  rows_out to;
  const std::vector<row_bytes>& rows;
};

// Rows in image order with the means between them. The row that is doubled is the last one in memory. Planes of a
// lowered picture can overlap, so the order of the stores counts: row pair by row pair its own rows and the mean
// between them, then the means towards the row pair before, then the doubled row; each luma before U before V.
void put_doubled(std::vector<doubled_plane> planes) {
  const size_t row_pairs = planes.front().rows.size() / 2;
  for (size_t p = 0; p < row_pairs; ++p)
    for (int step = 0; step < 3; ++step)
      for (doubled_plane& plane : planes) {
        const int64_t shift = plane.to.upward ? 1 : 0;
        const size_t in_pair = plane.rows.size() / row_pairs,
                     first = p * in_pair;  // two rows of luma, one of chroma
        const auto mean_before = [&](size_t i) {
          if (i > 0) plane.to.put(int64_t(2 * i) - 1 + shift, mean_row(plane.rows[i - 1], plane.rows[i]));
        };
        if (step == 0) {
          for (size_t i = first; i < first + in_pair; ++i)
            plane.to.put(int64_t(2 * i) + shift, plane.rows[i]);
          if (in_pair == 2) mean_before(first + 1);
        } else if (step == 1) {
          mean_before(first);
        } else if (plane.to.upward) {
          if (p == 0) plane.to.put(0, plane.rows.front());
        } else if (p + 1 == row_pairs) {
          plane.to.put(int64_t(2 * plane.rows.size()) - 1, plane.rows.back());
        }
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

struct frame_rows {
  rows_out main, u, v;
};
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

// I420 at full size, group by group of 32 columns in a row pair, and at half size, of 64 columns in two row pairs: in
// each the luma, then U, then V, so that planes which overlap (black lines of a negative count) come out as the walk
// has them. `luma`, `u` and `v` give the sample of an output position ahead of the mirrors.
template <typename Luma, typename U, typename V>
void walk_i420(const state& s, int width, int height, canvas& out, Luma&& luma, U&& u, V&& v) {
  const plan_input in = plan_of(s);
  const group_walk plan = luma_groups(in), chroma_plan = chroma_groups(in);
  int64_t l = plan.start, c = s.out_pixels + chroma_plan.start;
  const auto place_in_tile = [&](int i) { return in.h_mirror ? 15 - i : i; };
  for (int y = 0; y + 1 < height; y += 2) {
    for (int x = 0; x + 31 < width; x += 32) {
      for (int half = 0; half < 2; ++half)
        for (int k = 0; k < 2; ++k)
          for (int i = 0; i < 16; ++i)
            out.store(l + plan.half[half] + plan.row[k] + place_in_tile(i), luma(x + 16 * half + i, y + k));
      for (int i = 0; i < 16; ++i) out.store(c + place_in_tile(i), u(x / 2 + i, y / 2));
      for (int i = 0; i < 16; ++i)
        out.store(c + s.out_quarter_pixels + place_in_tile(i), v(x / 2 + i, y / 2));
      l += plan.group_step;
      c += chroma_plan.group_step;
    }
    l += plan.row_step;
    c += chroma_plan.row_step;
  }
}

// Rows of a picture that takes the sites (step * yo, step * xo): every site, or the B sites when halved. Halved RGB32
// is mirrored before its columns are picked, so that they are those of the Gb sites.
void put_cells(const state& s, const cells& c, format kind, canvas& out) {
  const int step = s.decimation > 0 ? 2 : 1;
  const int width = 2 * c.columns / step, height = 2 * c.rows / step;
  const bool h = s.h_mirror != 0;
  if (kind == format::i420) {
    walk_i420(
        s, width, height, out, [&](int x, int y) { return c.luma(step * y, step * x); },
        [&](int i, int j) { return c.chroma(1, step * i, step * j); },
        [&](int i, int j) { return c.chroma(2, step * i, step * j); });
    return;
  }
  frame_rows to = layout(s, kind, out);
  const auto row_of = [&](auto&& value, int n) {
    row_bytes row(size_t(std::max(n, 0)));
    for (int x = 0; x < n; ++x) row[size_t(h ? n - 1 - x : x)] = value(x);
    return row;
  };
  for (int yo = 0; yo < height; ++yo) {
    const int y = step * yo;
    if (kind == format::rgb24 || kind == format::rgb32) {
      const int site = kind == format::rgb32 && h && step == 2 ? 1 : 0;
      const auto plane_row = [&](size_t row) {
        return row_of([&](int xo) { return c.colour(row, y, step * xo + site); }, width);
      };
      to.main.put(yo, pixels(kind == format::rgb24 ? 3 : 4, plane_row(0), plane_row(1), plane_row(2)));
      continue;
    }
    const row_bytes luma = row_of([&](int xo) { return c.luma(y, step * xo); }, width);
    const auto words = [&](size_t row, int j) {
      return row_of([&](int xc) { return c.chroma(row, step * xc, j); }, width / 2);
    };
    to.main.put(yo, interleaved(kind, luma, words(1, y / 2), words(2, y / 2)));
  }
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
  std::vector<row_bytes> main, u, v;
  for (int y = 0; y < height; ++y) {
    if (kind == format::rgb24) {
      const auto plane_row = [&](size_t row) {
        return widened(row_of([&](int x) { return c.colour(row, y, x); }, width), 16, h);
      };
      main.push_back(pixels(3, plane_row(0), plane_row(1), plane_row(2)));
      continue;
    }
    const row_bytes luma = widened(row_of([&](int x) { return c.luma(y, x); }, width), 16, h);
    const auto words = [&](size_t row) {
      return widened(row_of([&](int i) { return c.chroma(row, i, y / 2); }, width / 2), 8, h);
    };
    if (kind != format::i420) {
      main.push_back(interleaved(kind, luma, words(1), words(2)));
      continue;
    }
    main.push_back(luma);
    if (y % 2 == 0) {
      u.push_back(words(1));
      v.push_back(words(2));
    }
  }
  if (kind == format::i420)
    put_doubled({{to.main, main}, {to.u, u}, {to.v, v}});
  else
    put_doubled({{to.main, main}});
}

// RGB32 has no doubling: the routine for full size walks with the plan of a doubled picture.
void walk_rgb32(const state& s, const cells& c, canvas& out) {
  const plan_input in = plan_of(s);
  const group_walk plan = rgb32_groups(in);
  const bool h = in.h_mirror;
  int64_t to = plan.start;
  for (int p = 0; p < c.rows; ++p) {
    for (int t = 0; t + 1 < s.tiles_per_row; t += 2) {
      for (int half = 0; half < 2; ++half)
        for (int k = 0; k < 2; ++k)
          for (int i = 0; i < 16; ++i) {
            const int x = 16 * (t + half) + (h ? 15 - i : i), y = 2 * p + k;
            const int64_t pixel = to + plan.half[half] + plan.row[k] + 4 * i;
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

// The grey picture in RGB24 at half size: groups of four tiles in two row pairs, of which even columns of even rows go
// out. At double size it runs too, with the plan of a doubled picture, and leaves gaps.
void walk_grey_half_rgb24(const state& s, const plane& f, canvas& out) {
  const plan_input in = plan_of(s);
  const group_walk plan = rgb24_groups(in);
  int64_t to = plan.start;
  for (int p = 0; p + 1 < s.row_pairs; p += 2) {
    for (int t = 0; t + 3 < s.tiles_per_row; t += 4) {
      for (int k = 0; k < 2; ++k)
        for (int half = 0; half < 2; ++half)
          for (int i = 0; i < 16; ++i) {
            const int x = 16 * t + 32 * half + 2 * (in.h_mirror ? 15 - i : i), y = 2 * p + 2 * k;
            out.fill(to + plan.half[half] + plan.row[k] + 3 * i, 3, f(y, x));
          }
      to += plan.group_step;
    }
    to += plan.row_step;
  }
}

}  // namespace

void grey_frame(state& s, format kind, uint8_t* source, canvas& out) {
  const mosaic m = front_end(s, source, s.yuv_contrast_gamma_table);
  write_back(s, m.toned, source);
  if (s.mean_collection)
    each_group(s, [&](int row, int column) { add_to_whole_frame(s, mixed_group(m, row, column)); });

  const plane& f = m.toned;
  const auto grey = [](int, int) { return uint8_t(128); };
  const int step = s.decimation != 0 ? 2 : 1;
  if (kind == format::i420) {
    walk_i420(
        s, f.width / step, f.height / step, out, [&](int x, int y) { return f(step * y, step * x); }, grey,
        grey);
  } else if (s.decimation != 0) {
    walk_grey_half_rgb24(s, f, out);
  } else {
    frame_rows to = layout(s, kind, out);
    for (int y = 0; y < f.height; ++y) {
      row_bytes row(at(f, y, 0), at(f, y, 0) + f.width);
      if (s.h_mirror) row = reversed(row, 1);
      to.main.put(y, pixels(3, row, row, row));
    }
  }
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
