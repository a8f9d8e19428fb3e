#include "reconstruct.h"

#include <algorithm>
#include <cstdlib>

#include "mosaic.h"

namespace ref {
namespace {

uint8_t clamped(int value) {
  return static_cast<uint8_t>(std::clamp(value, 0, 255));
}
int8_t clamped_signed(int value) {
  return static_cast<int8_t>(std::clamp(value, -128, 127));
}
int avg(int a, int b) {
  return (a + b + 1) >> 1;
}

struct colours {
  plane r, g, b;
  colours(int width, int height) : r(width, height), g(width, height), b(width, height) {}
};

// Signed chroma, one U and one V for every column pair of every row.
struct chroma_plane {
  int width, height;
  std::vector<int8_t> samples;
  chroma_plane(int w, int h) : width(w), height(h), samples(static_cast<std::size_t>(w * h)) {}
  int8_t& operator()(int row, int word) { return samples[static_cast<std::size_t>(row * width + word)]; }
  // Rows are mirrored; beside a row stand word 6 of its first tile and word 1 of its last.
  int at(int row, int word) const {
    if (word < 0) word = 6;
    if (word >= width) word = width - 7;
    return samples[static_cast<std::size_t>(mirrored(row, height) * width + word)];
  }
};

struct yuv_planes {
  plane y;
  chroma_plane u, v;
  yuv_planes(int width, int height) : y(width, height), u(width / 2, height), v(width / 2, height) {}
};

// One matrix row, in 16 bits that wrap, without the final clamp.
int matrix_row(const int16_t* row, int offset, int r, int g, int b) {
  return static_cast<int16_t>(row[0] * r + row[1] * g + row[2] * b + offset) >> 6;
}

// Means of neighbours. A missing green is the mean of both pairs, or of the pair that differs less.
colours neighbour_means(const plane& s, bool select_green) {
  colours out(s.width, s.height);
  for (int r = 0; r < s.height; ++r) {
    for (int c = 0; c < s.width; ++c) {
      const int site = s(r, c);
      const int up = s.at(r - 1, c), down = s.at(r + 1, c), left = s.at(r, c - 1), right = s.at(r, c + 1);
      const int diagonal =
          avg(avg(s.at(r - 1, c - 1), s.at(r + 1, c - 1)), avg(s.at(r - 1, c + 1), s.at(r + 1, c + 1)));
      const bool take_horizontal = std::abs(up - down) > std::abs(left - right);
      const int selected = take_horizontal ? avg(left, right) : avg(up, down);
      const int green = select_green ? selected : avg(avg(left, right), avg(up, down));
      int red, grn, blue;
      if (r % 2 == 0 && c % 2 == 0) {
        red = diagonal, grn = green, blue = site;
      } else if (r % 2 == 0) {
        red = avg(up, down), grn = site, blue = avg(left, right);
      } else if (c % 2 == 0) {
        red = avg(left, right), grn = site, blue = avg(up, down);
      } else {
        red = site, grn = green, blue = diagonal;
      }
      out.r(r, c) = static_cast<uint8_t>(red);
      out.g(r, c) = static_cast<uint8_t>(grn);
      out.b(r, c) = static_cast<uint8_t>(blue);
    }
  }
  return out;
}

// Green at every site, along the direction of least change.
plane green_filled(const plane& s, int threshold) {
  plane out = s;
  for (int r = 0; r < s.height; ++r) {
    for (int c = r % 2; c < s.width; c += 2) {
      const int site = s(r, c);
      const int left = s.at(r, c - 1), right = s.at(r, c + 1), up = s.at(r - 1, c), down = s.at(r + 1, c);
      const int gh = std::abs(left - right), gv = std::abs(up - down);
      const int eh = left + right - ((s.at(r, c - 2) + s.at(r, c + 2)) >> 1);
      const int ev = up + down - ((s.at(r - 2, c) + s.at(r + 2, c)) >> 1);
      const bool directional = std::max(gh, gv) > threshold && std::min(gh, gv) < threshold;
      const int estimate = directional ? (gh > gv ? ev : eh) >> 1 : (eh + ev) >> 2;
      out(r, c) = clamped((site >> 1) + estimate);
    }
  }
  return out;
}

// Red and blue by their differences to green.
colours difference_planes(const plane& s, const plane& green) {
  colours out(s.width, s.height);
  const auto d = [&](int r, int c) { return s.at(r, c) - green.at(r, c); };
  for (int r = 0; r < s.height; ++r) {
    for (int c = 0; c < s.width; ++c) {
      const int g = green(r, c), site = s(r, c);
      const int vertical = clamped(g + ((d(r - 1, c) + d(r + 1, c)) >> 1));
      const int horizontal = clamped(g + ((d(r, c - 1) + d(r, c + 1)) >> 1));
      const int diagonal =
          clamped(g + ((d(r - 1, c - 1) + d(r - 1, c + 1) + d(r + 1, c - 1) + d(r + 1, c + 1)) >> 2));
      int red, blue;
      if (r % 2 == 0 && c % 2 == 0) {
        red = diagonal, blue = site;
      } else if (r % 2 == 0) {
        red = vertical, blue = horizontal;
      } else if (c % 2 == 0) {
        red = horizontal, blue = vertical;
      } else {
        red = site, blue = diagonal;
      }
      out.r(r, c) = static_cast<uint8_t>(red);
      out.g(r, c) = static_cast<uint8_t>(g);
      out.b(r, c) = static_cast<uint8_t>(blue);
    }
  }
  return out;
}

// One smoothed colour for a block of two columns and two rows, the first of them r.
struct block_colour {
  bool flat;
  uint8_t r, g, b;
};

// frame: the whole buffer behind the front end. The colours find their rows frame_width apart, the test does not.
block_colour flat_block(const state& st, const plane& s, const uint8_t* frame, int r, int c) {
  const auto differ = [&](int r0, int c0, int r1, int c1) {
    return std::abs(s.at(r0, c0) - s.at(r1, c1)) > static_cast<int>(st.CFA_T0_threshold);
  };
  bool flat;
  if (r % 2 == 0) {
    flat = !(differ(r - 1, c, r - 1, c + 2) || differ(r - 2, c + 1, r, c + 1) ||          //
             differ(r - 1, c, r - 1, c - 2) || differ(r - 2, c - 1, r, c - 1) ||          //
             differ(r + 1, c, r + 1, c - 2) || differ(r, c - 1, r + 2, c - 1) ||          //
             differ(r - 1, c + 2, r + 1, c + 2) || differ(r, c + 1, r, c + 3) ||          //
             differ(r + 1, c + 2, r + 3, c + 2) || differ(r + 2, c + 1, r + 2, c + 3) ||  //
             differ(r + 1, c, r + 3, c) || differ(r + 2, c + 1, r + 2, c - 1));
  } else {
    flat = !(differ(r - 2, c, r, c) || differ(r - 1, c + 1, r - 1, c - 1) ||          //
             differ(r - 2, c + 2, r, c + 2) || differ(r - 1, c + 1, r - 1, c + 3) ||  //
             differ(r, c + 2, r + 2, c + 2) || differ(r + 1, c + 1, r + 1, c + 3) ||  //
             differ(r + 2, c, r + 2, c + 2) || differ(r + 1, c + 1, r + 3, c + 1) ||  //
             differ(r + 2, c, r + 2, c - 2) || differ(r + 1, c - 1, r + 3, c - 1) ||  //
             differ(r, c, r, c - 2) || differ(r - 1, c - 1, r + 1, c - 1));
  }
  const auto near = [&](int row, int column) -> int {
    const std::ptrdiff_t start = std::ptrdiff_t{r} * st.frame_stride;
    return frame[start + (mirrored(row, s.height) - r) * st.frame_width + mirrored(column, s.width)];
  };
  const auto v = [&](int x) { return avg(near(r - 1, x), near(r + 1, x)); };
  const auto w = [&](int x) { return avg(near(r, x), near(r + 2, x)); };
  int red, green, blue;
  if (r % 2 == 0) {
    red = avg(v(c - 1), v(c + 1));
    blue = avg(w(c), w(c + 2));
    green = avg(avg(v(c), v(c + 2)), avg(w(c - 1), w(c + 1)));
  } else {
    blue = avg(v(c), v(c + 2));
    red = avg(w(c - 1), w(c + 1));
    green = avg(avg(w(c), w(c + 2)), avg(v(c - 1), v(c + 1)));
  }
  return {flat, static_cast<uint8_t>(red), static_cast<uint8_t>(green), static_cast<uint8_t>(blue)};
}

void set_block(colours& out, int first_row, int rows, int c, const block_colour& colour) {
  for (int row = first_row; row < first_row + rows; ++row) {
    for (int column = c; column < c + 2; ++column) {
      out.r(row, column) = colour.r;
      out.g(row, column) = colour.g;
      out.b(row, column) = colour.b;
    }
  }
}

// The flat test on blocks that begin at first_row; what the last tile decided stays for later frames.
void select_flat_blocks(state& st, const plane& s, const uint8_t* frame, int first_row, colours& out) {
  for (int r = first_row; r + 1 < s.height; r += 2) {
    for (int c = 0; c < s.width; c += 2) {
      const block_colour colour = flat_block(st, s, frame, r, c);
      if (colour.flat) set_block(out, r, 2, c, colour);
      const int pair = c % 16 / 2;
      st.flat_mask[pair] = colour.flat;
      st.flat_r[pair] = colour.r;
      st.flat_g[pair] = colour.g;
      st.flat_b[pair] = colour.b;
    }
  }
}

void apply_leftover(const state& st, int row, colours& out) {
  for (int c = 0; c < out.r.width; c += 2) {
    const int pair = c % 16 / 2;
    if (st.flat_mask[pair])
      set_block(out, row, 1, c, {true, st.flat_r[pair], st.flat_g[pair], st.flat_b[pair]});
  }
}

yuv_planes to_yuv(const state& st, const colours& in) {
  yuv_planes out(in.r.width, in.r.height);
  const int16_t* m = st.yuv_coef.data();
  for (int row = 0; row < in.r.height; ++row) {
    for (int c = 0; c < in.r.width; ++c) {
      const int r = in.r(row, c), g = in.g(row, c), b = in.b(row, c);
      out.y(row, c) = clamped(matrix_row(m, st.luma_offset, r, g, b));
      if (c % 2) continue;
      out.u(row, c / 2) = clamped_signed(matrix_row(m + 3, 32, r, g, b));
      out.v(row, c / 2) = clamped_signed(matrix_row(m + 6, 32, r, g, b));
    }
  }
  return out;
}

int middle_sum(int a, int b, int c, int d) {
  return a + b + c + d - std::max({a, b, c, d}) - std::min({a, b, c, d});
}

// Replaces a sample by the middle of its neighbours where these agree; chroma follows the even column of its pair.
yuv_planes noise_filtered(const state& st, const yuv_planes& in) {
  yuv_planes out = in;
  const int vertical = static_cast<int>(st.edge_threshold), horizontal = st.medium_diff;
  for (int r = 0; r < in.y.height; ++r) {
    for (int c = 0; c < in.y.width; ++c) {
      const int up = in.y.at(r - 1, c), down = in.y.at(r + 1, c), left = in.y.at(r, c - 1),
                right = in.y.at(r, c + 1);
      if (std::abs(up - down) >= vertical || std::abs(left - right) >= horizontal) continue;
      out.y(r, c) = static_cast<uint8_t>(middle_sum(up, down, left, right) >> 1);
      if (c % 2) continue;
      const int w = c / 2;
      for (const auto& [from, to] : {std::pair{&in.u, &out.u}, std::pair{&in.v, &out.v}}) {
        const int sum =
            middle_sum(from->at(r, w - 1), from->at(r, w + 1), from->at(r - 1, w), from->at(r + 1, w));
        (*to)(r, w) = static_cast<int8_t>(sum >> 1);
      }
    }
  }
  return out;
}

// The correction of an edge measure of this size, if it lies in the band where edges are enhanced.
int enhancement(const state& st, int size, int value) {
  if (size <= static_cast<int>(st.edge_threshold) || size >= static_cast<int>(st.edge_threshold2)) return 0;
  return static_cast<int16_t>(value * static_cast<int>(st.nf88_edge_enhance_factor >> 3)) >> 5;
}

plane edge_enhanced(const state& st, const plane& y) {
  plane out = y;
  for (int r = 0; r < y.height; ++r) {
    for (int c = 0; c < y.width; ++c) {
      const int e = 4 * y(r, c) - y.at(r - 1, c) - y.at(r + 1, c) - y.at(r, c - 1) - y.at(r, c + 1);
      out(r, c) = clamped(y(r, c) + enhancement(st, std::abs(e), e));
    }
  }
  return out;
}

chroma_plane smoothed(const chroma_plane& in) {
  chroma_plane out = in;
  for (int r = 0; r < in.height; ++r) {
    for (int w = 0; w < in.width; ++w) {
      int sum = 0;
      for (int row = r - 1; row <= r + 1; ++row) sum += in.at(row, w - 1) + in.at(row, w) + in.at(row, w + 1);
      out(r, w) = static_cast<int8_t>((sum * 28) >> 8);
    }
  }
  return out;
}

// The mosaic, sharpened as if it were a picture. With a grey conversion in the same plane, what lies in an earlier
// row pair or an earlier tile of this one is already luma when its neighbours look at it.
plane mosaic_sharpened(const state& st, const plane& mosaic_samples, plane* luma) {
  plane seen = mosaic_samples, out = mosaic_samples;
  const int coef = st.yuv_coef[0] + st.yuv_coef[1] + st.yuv_coef[2];
  for (int top = 0; top < seen.height; top += 2) {
    for (int start = 0; start < seen.width; start += 16) {
      for (int r = top; r < top + 2; ++r) {
        for (int c = start; c < start + 16; ++c) {
          const auto p = [&](int dr, int dc) { return static_cast<int>(seen.at(r + dr, c + dc)); };
          const int gv = p(1, -1) + p(1, 0) + p(1, 1) - p(-1, -1) - p(-1, 0) - p(-1, 1);
          const int gh = p(-1, 1) - p(-1, -1) + p(0, 1) - p(0, -1) + p(1, 1) - p(1, -1);
          out(r, c) = clamped(p(0, 0) + enhancement(st, std::abs(gv) + std::abs(gh), gv + gh));
        }
      }
      if (!luma) continue;
      for (int r = top; r < top + 2; ++r) {
        for (int c = start; c < start + 16; ++c)
          seen(r, c) = clamped(static_cast<int16_t>(coef * out(r, c) + st.luma_offset) >> 6);
      }
    }
  }
  if (luma) *luma = seen;
  return out;
}

int saturated(int value) {
  return std::clamp(value, -32768, 32767);
}

struct pixel {
  uint8_t r, g, b;
};

pixel yuv_to_pixel(int y, int cb, int cr) {
  const int red = saturated(saturated(128 * y + 128 * cr) + 64);
  const int green = saturated(saturated(saturated(-65 * cr + 128 * y) - 25 * cb) + 64);
  const int blue = saturated(saturated(128 * y + 128 * cb) + 64);
  return {clamped(red >> 7), clamped(green >> 7), clamped(blue >> 7)};
}

void put_yuv(finished& out, const plane& y, const chroma_plane& u, const chroma_plane& v) {
  out.y = y.samples;
  out.u = u.samples;
  out.v = v.samples;
}

void put_rgb(finished& out, const colours& c) {
  out.r = c.r.samples;
  out.g = c.g.samples;
  out.b = c.b.samples;
}

// Colours as the matrix gives them, without a luma in between.
void put_matrix_rgb(finished& out, const state& st, colours c) {
  const int16_t* m = st.rgb_coef.data();
  for (std::size_t i = 0; i < c.r.samples.size(); ++i) {
    const int r = c.r.samples[i], g = c.g.samples[i], b = c.b.samples[i];
    c.r.samples[i] = clamped(matrix_row(m, st.rgb_offset_lane, r, g, b));
    c.g.samples[i] = clamped(matrix_row(m + 3, st.rgb_offset_lane, r, g, b));
    c.b.samples[i] = clamped(matrix_row(m + 6, st.rgb_offset_lane, r, g, b));
  }
  put_rgb(out, c);
}

// Qualities 0 and 10: sharpened luma and the pixel's own chroma.
void put_sharpened_rgb(finished& out, const state& st, colours c) {
  const int16_t* m = st.yuv2_coef.data();
  plane y(c.r.width, c.r.height);
  for (std::size_t i = 0; i < y.samples.size(); ++i)
    y.samples[i] = clamped(matrix_row(m, st.yuv2_offset, c.r.samples[i], c.g.samples[i], c.b.samples[i]));
  y = edge_enhanced(st, y);
  for (std::size_t i = 0; i < y.samples.size(); ++i) {
    const int r = c.r.samples[i], g = c.g.samples[i], b = c.b.samples[i];
    const int cb = clamped_signed(matrix_row(m + 3, 32, r, g, b)),
              cr = clamped_signed(matrix_row(m + 6, 32, r, g, b));
    const pixel p = yuv_to_pixel(y.samples[i], cb, cr);
    c.r.samples[i] = p.r;
    c.g.samples[i] = p.g;
    c.b.samples[i] = p.b;
  }
  put_rgb(out, c);
}

std::vector<uint8_t> as_bytes(const chroma_plane& u, const chroma_plane& v) {
  std::vector<uint8_t> bytes;
  for (std::size_t i = 0; i < u.samples.size(); ++i) {
    bytes.push_back(static_cast<uint8_t>(u.samples[i]));
    bytes.push_back(static_cast<uint8_t>(v.samples[i]));
  }
  return bytes;
}

void quality_15(const state& st, const plane& s, bool rgb, finished& out) {
  const yuv_planes converted = to_yuv(st, neighbour_means(s, true));
  const yuv_planes filtered = noise_filtered(st, converted);
  const plane y = edge_enhanced(st, filtered.y);
  const chroma_plane u = smoothed(filtered.u), v = smoothed(filtered.v);
  if (!rgb) return put_yuv(out, y, u, v);
  colours c(s.width, s.height);
  for (int row = 0; row < s.height; ++row) {
    for (int column = 0; column < s.width; ++column) {
      const pixel p = yuv_to_pixel(y(row, column), u.at(row, column / 2), v.at(row, column / 2));
      c.r(row, column) = p.r;
      c.g(row, column) = p.g;
      c.b(row, column) = p.b;
    }
  }
  put_rgb(out, c);
  out.raw_r = y.samples;
  out.raw_g = as_bytes(u, v);
  out.raw_b = as_bytes(converted.u, converted.v);
}

void quality_12(const state& st, const plane& s, bool rgb, finished& out) {
  colours grey(s.width, s.height);
  plane luma;
  grey.r = grey.g = grey.b = mosaic_sharpened(st, s, rgb ? nullptr : &luma);
  if (rgb) return put_matrix_rgb(out, st, grey);
  const yuv_planes converted = to_yuv(st, grey);
  put_yuv(out, luma, converted.u, converted.v);
}

// Edge-directed reconstruction: 0 and 1, with the flat test 10 and 11; 0 and 10 sharpen.
void quality_0_1_10_11(state& st, const plane& s, const uint8_t* frame, bool rgb, finished& out) {
  colours c = difference_planes(s, green_filled(s, static_cast<int>(st.CFA_T1_threshold)));
  switch (st.quality) {
    case 0:
      apply_leftover(st, 1, c);
      for (int row = 3; row <= s.height - 2; ++row) apply_leftover(st, row, c);
      break;
    case 1:
      for (int row = 0; row < s.height; ++row) apply_leftover(st, row, c);
      break;
    case 10:
      select_flat_blocks(st, s, frame, 1, c);
      break;
    default:
      select_flat_blocks(st, s, frame, 0, c);
      break;
  }
  const bool sharpen = st.quality == 0 || st.quality == 10;
  if (rgb) return sharpen ? put_sharpened_rgb(out, st, c) : put_matrix_rgb(out, st, c);
  const yuv_planes converted = to_yuv(st, c);
  put_yuv(out, sharpen ? edge_enhanced(st, converted.y) : converted.y, converted.u, converted.v);
}

walk walk_of(uint32_t quality, bool medium) {
  switch (quality) {
    case 0:
      return medium ? walk{3, 3, 4, 5, false} : walk{2, 2, 3, 4, false};
    case 1:
      return medium ? walk{3, 2, 4, 4, false} : walk{2, 1, 3, 3, false};
    case 2:
      return medium ? walk{2, 2, 3, 3, false} : walk{1, 1, 2, 2, false};
    case 10:
      return {2, 2, 3, 4, false};
    case 11:
      return {2, 1, 3, 3, false};
    case 12:
      return {1, 1, 2, 2, true};
    default:
      return {3, 3, 4, 4, false};
  }
}

}  // namespace

finished reconstruct(state& st, uint8_t* source, format f) {
  const bool medium = st.medium_filter_enabled && st.quality <= 2;
  const bool rgb = f == format::rgb24 || f == format::rgb32;
  const mosaic m = front_end(st, source, st.rgb_gamma_table);
  gather_statistics(st, m, walk_of(st.quality, medium));
  const plane s = medium ? medium_filtered(st, m.toned, st.quality == 1 ? 2 : 1) : m.toned;
  write_back(st, s, source);

  finished out;
  out.width = s.width;
  out.height = s.height;
  if (s.samples.empty()) return out;
  switch (st.quality) {
    case 2: {
      const colours c = neighbour_means(s, false);
      if (rgb) {
        put_matrix_rgb(out, st, c);
      } else {
        const yuv_planes converted = to_yuv(st, c);
        put_yuv(out, converted.y, converted.u, converted.v);
      }
      break;
    }
    case 12:
      quality_12(st, s, rgb, out);
      break;
    case 15:
      quality_15(st, s, rgb, out);
      break;
    default:
      quality_0_1_10_11(st, s, source, rgb, out);
      break;
  }
  return out;
}

}  // namespace ref
