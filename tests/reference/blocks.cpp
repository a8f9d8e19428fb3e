#include "blocks.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace ref {

uint8_t clamped(int value) {
  return static_cast<uint8_t>(std::clamp(value, 0, 255));
}
int8_t clamped_signed(int value) {
  return static_cast<int8_t>(std::clamp(value, -128, 127));
}
static int avg(int a, int b) {
  return (a + b + 1) >> 1;
}

int chroma_plane::at(int row, int word) const {
  if (word < 0) word = 6;
  if (word >= width) word = width - 7;
  return samples[static_cast<std::size_t>(mirrored(row, height) * width + word)];
}

int matrix_row(const int16_t* row, int offset, int r, int g, int b) {
  return static_cast<int16_t>(row[0] * r + row[1] * g + row[2] * b + offset) >> 6;
}

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

namespace {

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

}  // namespace

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

static int middle_sum(int a, int b, int c, int d) {
  return a + b + c + d - std::max({a, b, c, d}) - std::min({a, b, c, d});
}

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
static int enhancement(const state& st, int size, int value) {
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

static int saturated(int value) {
  return std::clamp(value, -32768, 32767);
}

pixel yuv_to_pixel(int y, int cb, int cr) {
  const int red = saturated(saturated(128 * y + 128 * cr) + 64);
  const int green = saturated(saturated(saturated(-65 * cr + 128 * y) - 25 * cb) + 64);
  const int blue = saturated(saturated(128 * y + 128 * cb) + 64);
  return {clamped(red >> 7), clamped(green >> 7), clamped(blue >> 7)};
}

}  // namespace ref
