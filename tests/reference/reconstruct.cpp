#include "reconstruct.h"

#include "blocks.h"
#include "mosaic.h"

namespace ref {
namespace {

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
