// Two fields to one picture: woven at full size, shrunk from the kept field, or doubled.
//
// Each form is a source of finished rows for the sink. The kept field gives the even rows of the woven frame, the
// later field the odd ones; a field has row_pairs rows.
#include "convert/conversion.h"

namespace ppl {

namespace {

struct fields {
  const uint8_t *earlier, *kept, *later;
  int64_t pitch;
  int rows, pixels;
  bool motion;
  int threshold;
};

// There is no row of the kept field below the last one, so the last row is never tested.
bool is_tested(const fields& f, int i) {
  return f.motion && i + 1 < f.rows;
}

// Tested row i of the later field as the picture gets it. The kept row goes on to kept_out if that is not null.
void blend_row(const fields& f, const row_sink& sink, int i, uint8_t* out, uint8_t* kept_out) {
  const int64_t at = i * f.pitch;
  const uint8_t* const kept = f.kept + at;
  sink.kernels->blend[static_cast<int>(sink.from)](
      out, kept_out, {kept, kept + f.pitch, f.earlier + at, f.later + at}, f.pixels, f.threshold);
}

// A tested row and the one above it are made in one go where rows are made in place: at full size no row is longer
// than the distance to the next.
void weave(const fields& f, row_sink& sink) {
  for (int i = 0; i < f.rows; i++) {
    const int64_t at = i * f.pitch;
    const bool tested = is_tested(f, i), both = tested && sink.in_place;
    if (tested) blend_row(f, sink, i, make_row(sink, 1), both ? make_row(sink) : nullptr);
    both ? put_made_row(sink) : put_row(sink, f.kept + at);
    tested ? put_made_row(sink) : put_row(sink, f.later + at);
  }
}

// Columns by 2 from every row, or by 4 from every second one.
void shrink(const fields& f, row_sink& sink, int decimation, int64_t rows) {
  const auto shrink_row =
      (decimation == 1 ? sink.kernels->shrink_2 : sink.kernels->shrink_4)[static_cast<int>(sink.from)];
  for (int64_t r = 0; r < rows; r++) {
    shrink_row(make_row(sink), f.kept + r * decimation * f.pitch, f.pixels);
    put_made_row(sink);
  }
}

// Four rows from each pair, every one twice as wide. The first pair has its own kept row above it.
void double_rows(const fields& f, row_sink& sink) {
  const convert_kernels& k = *sink.kernels;
  uint8_t* const blended = ring_row(sink.context, kSinkRows);
  uint8_t* const widened_before = ring_row(sink.context, kSinkRows + 1);
  k.widen(widened_before, f.kept, f.rows > 0 ? f.pixels : 0);
  for (int i = 0; i < f.rows; i++) {
    uint8_t* const out[4] = {make_row(sink), make_row(sink, 1), make_row(sink, 2), make_row(sink, 3)};
    const bool tested = is_tested(f, i);
    if (tested) blend_row(f, sink, i, blended, nullptr);
    k.double_pair(out, f.kept + i * f.pitch, tested ? blended : f.later + i * f.pitch, widened_before,
                  f.pixels);
    for (int n = 0; n < 4; n++) put_made_row(sink);
  }
}

constexpr uint8_t kBlackLuma = 16, kBlackChroma = 128;

int64_t drawn(int32_t lines) {
  return lines > 0 ? lines : 0;
}

}  // namespace

void convert_interlaced(const conversion_job& job) {
  ppl_context* const c = job.context;
  const int d = c->decimation;
  const bool rgb = job.conv.to == out_format::rgb24, planes = job.conv.to == out_format::i420;
  const bool motion = job.conv.how == method::motion;
  const bool same_order = planes || rgb || order_of(job.conv.to) == job.conv.from;
  if (d < 0 && !(motion && same_order)) return;  // the frame is only counted

  const int pixels = 16 * c->tiles_per_row;
  const fields f = {job.call.source[kEarlier],
                    job.call.source[kKept],
                    job.call.source[kLater],
                    2 * static_cast<int64_t>(c->frame_width),
                    c->row_pairs,
                    pixels,
                    motion,
                    c->intl_3T_vector.lane[0]};
  const canvas on = {job.conv.from, job.conv.to, job.out, d < 0 ? pixels << 1 : pixels >> d, false, false};
  if (d < 0) {
    const int64_t rows = 4 * static_cast<int64_t>(f.rows);
    row_sink sink = open_sink(c, on, 0, rows);
    if (job.conv.from != byte_order::yuyv)
      put_flat_rows(sink, 0, rows, 0, 0);  // rows are widened in YUYV alone
    else if (pixels > 0)
      double_rows(f, sink);
    return;
  }

  // Black lines: at full size each of them, in I420 and in shrunk pictures two at a time. Shrunk pictures in I420
  // come in pairs of rows too.
  const int64_t in_pairs = ~int64_t{1}, all = ~int64_t{0};
  const int64_t of_black = d > 0 || planes ? in_pairs : all;
  const int64_t top = drawn(c->top_black_lines) & of_black, bottom = drawn(c->bottom_black_lines) & of_black;
  const int64_t image = (d == 0 ? 2 * f.rows : f.rows / d) & (planes ? in_pairs : all);
  int64_t first_top = 0, first_image = top, first_bottom = top + image;
  // RGB24 lies one row off where there is a count of top lines, even a negative one. At full size the image then
  // begins on the last black row, and one row below the image is never drawn. Shrunk, the image begins a row later,
  // and black rows lie a row before their place.
  if (rgb) {
    const int64_t off = c->top_black_lines != 0 ? 1 : 0;
    if (d == 0) {
      first_image -= off;
      first_bottom += 1 - off;
    } else {
      first_top += off - 1;
      first_image += off;
      first_bottom += off - 1;
    }
  }
  row_sink sink = open_sink(c, on, first_image, image);
  put_flat_rows(sink, first_top, top, kBlackLuma, kBlackChroma);
  // Fields without a tile may be nowhere.
  if (pixels > 0) d == 0 ? weave(f, sink) : shrink(f, sink, d, image);
  put_flat_rows(sink, first_bottom, bottom, kBlackLuma, kBlackChroma);
}

}  // namespace ppl
