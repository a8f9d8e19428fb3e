#include "reference/convert.h"

#include <algorithm>
#include <cstring>

namespace ref {

namespace {

constexpr packing Y = packing::yuyv, U = packing::uyvy;

std::vector<conversion> list() {
  return {
      {"YUYVToI420MMX", work::progressive, Y, target::i420, false, true},
      {"ppl_process_yuyvtoi420", work::progressive, Y, target::i420, false, false},
      {"UYVYToI420MMX", work::progressive, U, target::i420, false, true},
      {"ppl_process_uyvytoi420", work::progressive, U, target::i420, false, false},
      {"YUYVToRGB24MMX", work::progressive, Y, target::rgb24, false, true},
      {"ppl_process_yuyvtorgb24", work::progressive, Y, target::rgb24, false, false},
      {"UYVYToRGB24MMX", work::progressive, U, target::rgb24, false, true},
      {"ppl_process_uyvytorgb24", work::progressive, U, target::rgb24, false, false},
      {"UYVYYYYYToI420MMX", work::twelve_bit, Y, target::i420, false, true},
      {"ppl_process_uyvyyyyytoi420", work::twelve_bit, Y, target::i420, false, false},
      {"YUYVYYYYToI420MMX", work::twelve_bit, Y, target::i420, false, true},
      {"ppl_process_yuyvyyyytoi420", work::twelve_bit, Y, target::i420, false, false},
      {"RGB24ToRGB32MMX", work::nothing, Y, target::rgb32, false, true},
      {"ppl_process_rgb24torgb32", work::nothing, Y, target::rgb32, false, false},
      {"IntlYUYVToYUYVMMX", work::fields, Y, target::yuyv, true, true},
      {"ppl_process_intlyuyvtoyuyv", work::fields, Y, target::yuyv, true, false},
      {"IntlYUYVToYUYVMMX_no_motion", work::fields, Y, target::yuyv, false, true},
      {"IntlYUYVToUYVYMMX", work::fields, Y, target::uyvy, true, true},
      {"IntlYUYVToUYVYMMX_no_motion", work::counts, Y, target::uyvy, false, true},
      {"IntlYUYVToI420MMX", work::fields, Y, target::i420, true, true},
      {"ppl_process_intlyuyvtoi420", work::fields, Y, target::i420, true, false},
      {"IntlYUYVToI420MMX_no_motion", work::fields, Y, target::i420, false, true},
      {"IntlYUYVToRGB24MMX", work::fields, Y, target::rgb24, true, true},
      {"ppl_process_intlyuyvtorgb24", work::fields, Y, target::rgb24, true, false},
      {"IntlYUYVToRGB24MMX_no_motion", work::fields, Y, target::rgb24, false, true},
      {"IntlUYVYToYUYVMMX", work::fields, U, target::yuyv, true, true},
      {"IntlUYVYToYUYVMMX_no_motion", work::counts, U, target::yuyv, false, true},
      {"IntlUYVYToUYVYMMX", work::fields, U, target::uyvy, true, true},
      {"ppl_process_intluyvytouyvy", work::fields, U, target::uyvy, true, false},
      {"IntlUYVYToUYVYMMX_no_motion", work::fields, U, target::uyvy, false, true},
      {"IntlUYVYToI420MMX", work::fields, U, target::i420, true, true},
      {"ppl_process_intluyvytoi420", work::fields, U, target::i420, true, false},
      {"IntlUYVYToI420MMX_no_motion", work::fields, U, target::i420, false, true},
      {"IntlUYVYToRGB24MMX", work::fields, U, target::rgb24, true, true},
      {"ppl_process_intluyvytorgb24", work::fields, U, target::rgb24, true, false},
      {"IntlUYVYToRGB24MMX_no_motion", work::fields, U, target::rgb24, false, true},
  };
}

// ---- Storing rows ----

struct planes {
  int64_t width, half, luma, u, v;
  explicit planes(const convert_state& s)
      : width(s.out_width),
        half(s.out_width / 2),
        luma(s.out_pixels()),
        u(luma),
        v(luma + s.out_quarter_pixels()) {}
};

// Two finished rows to rows 2p, 2p + 1 of the luma plane and their mean to row p of the chroma planes, 32 columns
// at a time: luma, U, V. Mirrors turn columns and rows of each plane around.
void store_pair_i420(const convert_state& s, const row422& top, const row422& bottom, int64_t p,
                     bool h_mirror, bool v_mirror, picture& out) {
  const planes at(s);
  const row422 chroma = mean_row(top, bottom);
  const int width = top.width();
  const auto column = [&](int x, int64_t pitch) { return h_mirror ? pitch - 1 - x : x; };
  const auto luma_row = [&](int64_t r) { return v_mirror ? at.luma - at.width * (r + 1) : at.width * r; };
  const int64_t chroma_row = v_mirror ? s.out_quarter_pixels() - at.half - p * at.half : p * at.half;
  for (int start = 0; start < width; start += 32) {
    const int end = std::min(start + 32, width);
    for (int x = start; x < end; ++x) out.store(luma_row(2 * p) + column(x, at.width), top.luma[x]);
    for (int x = start; x < end; ++x) out.store(luma_row(2 * p + 1) + column(x, at.width), bottom.luma[x]);
    for (int x = start; x < end; x += 2)
      out.store(at.u + chroma_row + column(x / 2, at.half), chroma.chroma[x]);
    for (int x = start; x < end; x += 2)
      out.store(at.v + chroma_row + column(x / 2, at.half), chroma.chroma[x + 1]);
  }
}

// A black pair: whole rows of Y, then U, then V.
void store_black_i420(const convert_state& s, int64_t p, picture& out) {
  const planes at(s);
  for (int64_t x = 0; x < 2 * at.width; ++x) out.store(2 * p * at.width + x, 16);
  for (int64_t x = 0; x < at.half; ++x) out.store(at.u + p * at.half + x, 128);
  for (int64_t x = 0; x < at.half; ++x) out.store(at.v + p * at.half + x, 128);
}

void store_row_packed(const convert_state& s, const row422& row, int64_t r, packing p, picture& out) {
  for (int x = 0; x < 2 * row.width(); ++x) out.store(r * 2 * s.out_width + x, packed_byte(row, x, p));
}

// RGB24 is stored from the end of the frame towards its start: where row 0, row 1, ... of a picture begins.
int64_t rgb24_row(const convert_state& s, int64_t row) {
  return (int64_t{s.out_pixels()} - s.out_width * (row + 1)) * 3;
}

void store_row_rgb24(const convert_state& s, const row422& row, int64_t r, picture& out) {
  int64_t at = rgb24_row(s, r);
  for (int x = 0; x < row.width(); ++x) {
    const rgb_pixel pixel = to_rgb(row, x);
    out.store(at++, pixel.b);
    out.store(at++, pixel.g);
    out.store(at++, pixel.r);
  }
}

void store_black_rgb24(const convert_state& s, int64_t r, picture& out) {
  for (int64_t x = 0; x < int64_t{3} * s.out_width; ++x) out.store(rgb24_row(s, r) + x, 0);
}

// ---- Storing pictures: black lines on top, the rows, black lines below ----

// Black lines that a count stands for; where they go in pairs an odd one is dropped.
int64_t black_lines(int32_t count, bool in_pairs) {
  return count <= 0 ? 0 : in_pairs ? count / 2 * 2 : count;
}

void store_packed(const convert_state& s, const std::vector<row422>& rows, packing p, picture& out) {
  const bool in_pairs = s.decimation > 0, none = s.decimation < 0;
  const row422 black = black_row(s.out_width);
  int64_t r = 0;
  const auto store_black = [&](int32_t count) {
    const int64_t end = r + (none ? 0 : black_lines(count, in_pairs));
    for (; r < end && s.out_width > 0 && r * s.out_width < out.room; ++r)
      store_row_packed(s, black, r, p, out);
    r = end;
  };
  store_black(s.top_black_lines);
  for (const row422& row : rows) store_row_packed(s, row, r++, p, out);
  store_black(s.bottom_black_lines);
}

void store_i420(const convert_state& s, const std::vector<row422>& rows, picture& out) {
  int64_t p = 0;
  const auto store_black = [&](int32_t count) {
    const int64_t end = p + (s.decimation < 0 ? 0 : black_lines(count, true) / 2);
    const int64_t least =
        std::max(s.out_width / 2, s.out_width > 0 ? 1 : 0);  // that a pair moves on in any plane
    for (; p < end && least > 0 && p * least < out.room; ++p) store_black_i420(s, p, out);
    p = end;
  };
  store_black(s.top_black_lines);
  for (size_t r = 0; r + 1 < rows.size(); r += 2)
    store_pair_i420(s, rows[r], rows[r + 1], p++, false, false, out);
  store_black(s.bottom_black_lines);
}

// Full size: with a top count the image starts on the last top black row, and one row stays free below it.
void store_rgb24_full(const convert_state& s, const std::vector<row422>& rows, picture& out) {
  int64_t r = 0;
  const auto store_black = [&](int32_t count) {
    const int64_t end = r + black_lines(count, false);
    for (; r < end && rgb24_row(s, r) > int64_t{-3} * s.out_width; ++r) store_black_rgb24(s, r, out);
    r = end;
  };
  store_black(s.top_black_lines);
  if (s.top_black_lines != 0) --r;
  for (const row422& image : rows) store_row_rgb24(s, image, r++, out);
  // The row pairs left the pointer one row further than the last image row.
  ++r;
  store_black(s.bottom_black_lines);
}

// Shrunk: with a top count everything starts one row further, and a black step of two rows begins one row behind.
void store_rgb24_shrunk(const convert_state& s, const std::vector<row422>& rows, picture& out) {
  int64_t r = s.top_black_lines != 0 ? 1 : 0;
  const auto store_black = [&](int32_t count) {
    const int64_t end = r + black_lines(count, true);
    for (; r < end && rgb24_row(s, r) > int64_t{-6} * s.out_width; r += 2) {
      store_black_rgb24(s, r - 1, out);
      store_black_rgb24(s, r, out);
    }
    r = end;
  };
  store_black(s.top_black_lines);
  for (const row422& image : rows) store_row_rgb24(s, image, r++, out);
  store_black(s.bottom_black_lines);
}

void store_rgb24_doubled(const convert_state& s, const std::vector<row422>& rows, picture& out) {
  int64_t r = 0;
  for (const row422& image : rows) store_row_rgb24(s, image, r++, out);
}

void store_picture(const convert_state& s, const std::vector<row422>& rows, target t, picture& out) {
  switch (t) {
    case target::yuyv:
      return store_packed(s, rows, packing::yuyv, out);
    case target::uyvy:
      return store_packed(s, rows, packing::uyvy, out);
    case target::i420:
      return store_i420(s, rows, out);
    case target::rgb24:
      if (s.decimation < 0) return store_rgb24_doubled(s, rows, out);
      if (s.decimation > 0) return store_rgb24_shrunk(s, rows, out);
      return store_rgb24_full(s, rows, out);
    case target::rgb32:
      return;
  }
}

// ---- Making the rows of a picture from fields ----

row422 field_row(const convert_state& s, const uint8_t* field, int r, packing p) {
  return read_row(field + int64_t{2} * s.frame_width * r, 16 * s.tiles(), p);
}

// The odd row that row pair i contributes.
row422 odd_row(const convert_state& s, const conversion& c, const convert_call& call, int i) {
  const row422 later = field_row(s, call.later, i, c.source);
  if (!c.motion || i + 1 >= s.row_pairs()) return later;
  return blend_row(field_row(s, call.earlier, i, c.source), later, field_row(s, call.kept, i, c.source),
                   field_row(s, call.kept, i + 1, c.source), s.threshold);
}

std::vector<row422> full_rows(const convert_state& s, const conversion& c, const convert_call& call) {
  std::vector<row422> rows;
  for (int i = 0; i < s.row_pairs(); ++i) {
    rows.push_back(field_row(s, call.kept, i, c.source));
    rows.push_back(odd_row(s, c, call, i));
  }
  return rows;
}

std::vector<row422> shrunk_rows(const convert_state& s, const conversion& c, const convert_call& call) {
  std::vector<row422> rows;
  const bool by_four = s.decimation == 2;
  for (int i = 0; i < (by_four ? s.row_pairs() / 2 : s.row_pairs()); ++i) {
    const row422 row = field_row(s, call.kept, by_four ? 2 * i : i, c.source);
    rows.push_back(by_four ? quarter_row(row) : halve_row(row));
  }
  return rows;
}

std::vector<row422> doubled_rows(const convert_state& s, const conversion& c, const convert_call& call) {
  std::vector<row422> rows;
  for (int i = 0; i < s.row_pairs(); ++i) {
    const row422 kept = widen_row(field_row(s, call.kept, i, c.source));
    const row422 odd = widen_row(odd_row(s, c, call, i));
    rows.push_back(i == 0 ? kept : mean_row(kept, rows.back()));  // the last row is the odd row before
    rows.push_back(kept);
    rows.push_back(mean_row(kept, odd));
    rows.push_back(odd);
  }
  return rows;
}

// True where a conversion counts the frame and does nothing else.
bool only_counts(const conversion& c, int32_t decimation) {
  const bool swaps = (c.source == packing::yuyv && c.output == target::uyvy) ||
                     (c.source == packing::uyvy && c.output == target::yuyv);
  switch (c.kind) {
    case work::progressive:
      return decimation != 0 && c.output == target::i420;
    case work::twelve_bit:
      return decimation != 0;
    case work::fields:
      return decimation < 0 && (!c.motion || swaps);
    case work::nothing:
    case work::counts:
      break;
  }
  return true;
}

promise convert_fields(const convert_state& s, const conversion& c, const convert_call& call, picture& out) {
  if (s.decimation == 0) {
    store_picture(s, full_rows(s, c, call), c.output, out);
  } else if (s.decimation > 0) {
    store_picture(s, shrunk_rows(s, c, call), c.output, out);
  } else {
    store_picture(s, doubled_rows(s, c, call), c.output, out);
    // Widening knows YUYV alone: from UYVY come zero bytes, in the places where the picture would stand.
    if (c.source == packing::uyvy)
      for (size_t k = 0; k < out.bytes.size(); ++k)
        if (out.stored[k]) out.bytes[k] = 0;
  }
  return promise::exact;
}

// ---- One frame in ----

promise convert_progressive(const convert_state& s, const conversion& c, const convert_call& call,
                            picture& out) {
  if (s.decimation != 0) return promise::nothing_inside;
  for (int p = 0; p < s.row_pairs(); ++p) {
    const row422 top = field_row(s, call.kept, 2 * p, c.source);
    const row422 bottom = field_row(s, call.kept, 2 * p + 1, c.source);
    if (c.output == target::i420) {
      store_pair_i420(s, top, bottom, p, s.h_mirror, s.v_mirror, out);
    } else {
      store_row_rgb24(s, top, 2 * p, out);
      store_row_rgb24(s, bottom, 2 * p + 1, out);
    }
  }
  return promise::exact;
}

// Where the 32 luma and 16 chroma bytes of a 48-byte unit come from; -1 is a zero byte.
constexpr int kUnitLuma[32] = {0,  2,  4,  6,  32, 33, 34, 35, 12, 14, 16, 18, 20, 21, 22, 23,
                               24, 26, 28, 30, 36, -1, 38, -1, 36, 38, 40, 42, 44, 45, 46, 47};
constexpr int kUnitChroma[16] = {1, 3, 5, 7, 13, 15, 17, 19, 25, 27, 29, 31, 37, 39, 41, 43};

promise convert_twelve_bit(const convert_state& s, const convert_call& call, picture& out) {
  const planes at(s);
  for (int p = 0; p < s.row_pairs(); ++p)
    for (int unit = 0; unit < s.tiles() / 2; ++unit)
      for (int r = 2 * p; r < 2 * p + 2; ++r) {
        const uint8_t* bytes = call.kept + int64_t{3} * s.frame_width / 2 * r + 48 * unit;
        const int64_t luma = (s.v_mirror ? at.luma - at.width * (r + 1) : at.width * r) +
                             (s.h_mirror ? at.width - 32 - 32 * unit : 32 * unit);
        const int64_t chroma = at.u +
                               (s.v_mirror ? s.out_quarter_pixels() - at.half * (p + 1) : at.half * p) +
                               (s.h_mirror ? at.half - 16 - 16 * unit : 16 * unit);
        for (int k = 0; k < 32; ++k) {
          const uint8_t value = kUnitLuma[k] < 0 ? uint8_t{0} : bytes[kUnitLuma[k]];
          out.store(luma + (s.h_mirror ? 31 - k : k), value);
        }
        for (int k = 0; k < 16; ++k) out.store(chroma + k, bytes[kUnitChroma[k]]);
      }
  return promise::exact;
}

// ---- The contract around a conversion ----

// Whether a conversion that runs reads a null field or writes to a null destination.
bool follows_null(const convert_state& s, const conversion& c, const convert_call& call, int64_t room) {
  if (only_counts(c, s.decimation)) return false;
  const bool fields = c.kind == work::fields, blends = fields && s.decimation <= 0;
  const int row_pairs = fields && s.decimation == 2 ? s.row_pairs() / 2 : s.row_pairs();
  const int units = c.kind == work::twelve_bit ? s.tiles() / 2 : s.tiles();
  const bool reads = units > 0 && row_pairs > 0;
  if (reads && !call.kept) return true;
  if (reads && blends && !call.later) return true;
  if (reads && blends && c.motion && row_pairs > 1 && !call.earlier)
    return true;  // the last row pair is never blended
  return room > 0 && !call.output;
}

bool all_multiples(const conversion& c, const convert_call& call, uintptr_t of) {
  const auto fits = [of](const uint8_t* p) { return reinterpret_cast<uintptr_t>(p) % of == 0; };
  if (call.output % of != 0 || !fits(call.kept)) return false;
  return !c.takes_fields() || (fits(call.earlier) && fits(call.later));
}

int64_t fall_back_bytes(const conversion& c, const convert_call& call) {
  const uint32_t n = call.out_width * call.out_height;
  switch (c.output) {
    case target::i420:
      return int64_t{n} + n / 2;
    case target::rgb24:
      return n * 3;
    case target::rgb32:
      return n * 4;
    default:
      return int64_t{2} * n;
  }
}

void fall_back(const conversion& c, const convert_call& call, picture& out) {
  const uint32_t n = call.out_width * call.out_height;
  const bool fills = c.output == target::rgb24 || c.output == target::rgb32;
  const bool takes_later = c.output == target::yuyv || c.output == target::uyvy;
  if (!call.output || (!fills && !call.kept) || (takes_later && !call.later)) return;
  for (int64_t k = 0; k < out.room; ++k) {
    switch (c.output) {
      case target::i420:
        out.store(k, k < n ? call.kept[k] : 128);
        break;
      case target::rgb24:
      case target::rgb32:
        out.store(k, 255);
        break;
      case target::yuyv:
      case target::uyvy:
        out.store(k, k < n ? call.kept[k] : call.later[k - n]);
        break;
    }
  }
}

}  // namespace

const std::vector<conversion> kConversions = list();

const conversion* find_conversion(const char* name) {
  for (const conversion& c : kConversions)
    if (std::strcmp(c.name, name) == 0) return &c;
  return nullptr;
}

void picture::store(int64_t at, uint8_t value) {
  if (at < 0 || at >= room) return;
  bytes.at(static_cast<size_t>(at)) = value;
  stored[static_cast<size_t>(at)] = true;
}

foresight foresee(const convert_state& s, const conversion& c, const convert_call& call) {
  foresight f{reach::runs, s, 0};
  if (c.wrapper && !all_multiples(c, call, 8)) {
    f.reached = reach::fall_back;
    f.room = fall_back_bytes(c, call);
    return f;
  }
  const bool same = call.in_width == static_cast<uint32_t>(s.frame_width) &&
                    call.in_height == static_cast<uint32_t>(s.frame_height) &&
                    call.out_width == static_cast<uint32_t>(s.out_width) &&
                    call.out_height == static_cast<uint32_t>(s.out_height);
  if (!same &&
      !new_frame_sizes(f.after, call.in_width, call.in_height, call.out_width, call.out_height, true)) {
    f.reached = reach::refused;
    return f;
  }
  if (!all_multiples(c, call, 16) || s.P3_only) {
    f.reached = reach::idle;
    return f;
  }
  ++f.after.n_frame;
  f.room = std::max(
      frame_bytes(c.output, f.after.out_width, f.after.out_height),
      frame_bytes(c.output, static_cast<int32_t>(call.out_width), static_cast<int32_t>(call.out_height)));
  return f;
}

converted convert(convert_state& s, const conversion& c, const convert_call& call, picture& out) {
  const foresight f = foresee(s, c, call);
  s = f.after;
  out.room = f.room;
  if (f.reached == reach::fall_back) fall_back(c, call, out);
  if (f.reached != reach::runs) return {f.reached == reach::idle, promise::exact};

  promise content = promise::exact;
  if (follows_null(s, c, call, f.room)) return {c.kind != work::nothing, content};
  if (f.room > 0 && !only_counts(c, s.decimation)) {
    if (c.kind == work::progressive) content = convert_progressive(s, c, call, out);
    if (c.kind == work::twelve_bit) content = convert_twelve_bit(s, call, out);
    if (c.kind == work::fields) content = convert_fields(s, c, call, out);
    // Partial tiles and an odd last row are not visited; what becomes of their place is left open.
    if (s.frame_width % 16 != 0 || s.frame_height % 2 != 0) content = promise::nothing_inside;
  }
  return {c.kind != work::nothing, content};
}

}  // namespace ref
