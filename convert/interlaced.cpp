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

// Row i of the later field as the picture gets it; a row that is made goes to out, the kept row on to kept_out if
// that is not null.
const uint8_t* later_row(const fields& f, const row_sink& sink, int i, uint8_t* out, uint8_t* kept_out) {
  const int64_t at = i * f.pitch;
  if (!is_tested(f, i)) return f.later + at;
  const uint8_t* const kept = f.kept + at;
  sink.kernels->blend[static_cast<int>(sink.from)](
      out, kept_out, {kept, kept + f.pitch, f.earlier + at, f.later + at}, f.pixels, f.threshold);
  return out;
}

// A tested row and the one above it reach the picture in one go where rows are made in place: at full size no row
// is longer than the way to the next.
void weave(const fields& f, row_sink& sink) {
  for (int i = 0; i < f.rows; i++) {
    uint8_t* const kept_out = is_tested(f, i) && makes_rows_in_place(sink) ? make_row(sink) : nullptr;
    const uint8_t* const later = later_row(f, sink, i, make_row(sink, 1), kept_out);
    put_row(sink, kept_out != nullptr ? kept_out : f.kept + i * f.pitch);
    put_row(sink, later);
  }
}

// Columns by 2 from every row, or by 4 from every second one.
void shrink(const fields& f, row_sink& sink, int decimation, int64_t rows) {
  const auto shrink_row =
      (decimation == 1 ? sink.kernels->shrink_2 : sink.kernels->shrink_4)[static_cast<int>(sink.from)];
  for (int64_t r = 0; r < rows; r++) {
    uint8_t* const out = make_row(sink);
    shrink_row(out, f.kept + r * decimation * f.pitch, f.pixels);
    put_row(sink, out);
  }
}

// Four rows from each pair, every one twice as wide. Above the first pair stands its own kept row.
void double_rows(const fields& f, row_sink& sink) {
  const convert_kernels& k = *sink.kernels;
  k.widen(sink.rows.widened_before, f.kept, f.rows > 0 ? f.pixels : 0);
  for (int i = 0; i < f.rows; i++) {
    uint8_t* const out[4] = {make_row(sink), make_row(sink, 1), make_row(sink, 2), make_row(sink, 3)};
    const uint8_t* const later = later_row(f, sink, i, sink.rows.blended, nullptr);
    k.double_pair(out, f.kept + i * f.pitch, later, sink.rows.widened_before, f.pixels);
    for (const uint8_t* row : out) put_row(sink, row);
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
  const bool same_layout =
      planes || rgb || (job.conv.to == out_format::yuyv) == (job.conv.from == layout::yuyv);
  if (d < 0 && !(motion && same_layout)) return;  // the frame is only counted

  const int pixels = 16 * c->tiles_per_row;
  const fields f = {job.call.source[kEarlier],
                    job.call.source[kKept],
                    job.call.source[kLater],
                    2 * static_cast<int64_t>(c->frame_width),
                    c->row_pairs,
                    pixels,
                    motion,
                    c->intl_3T_vector.lane[0]};
  row_sink sink = open_sink(c, job.conv.from, job.conv.to, job.call.output, job.bytes,
                            d < 0 ? pixels << 1 : pixels >> d, false, false);
  if (d < 0) {
    const int64_t rows = 4 * static_cast<int64_t>(f.rows);
    find_out_whether_direct(sink, c, {0, rows, 0}, 0);
    if (job.conv.from == layout::yuyv) {
      double_rows(f, sink);
    } else {
      put_flat_rows(sink, rows, 0, 0);  // rows are widened in YUYV alone
    }
    return;
  }

  // Black lines: at full size each of them, in I420 and in shrunk pictures two at a time. Shrunk pictures in I420
  // come in pairs of rows too.
  picture_rows rows = {drawn(c->top_black_lines), d == 0 ? 2 * f.rows : f.rows / d,
                       drawn(c->bottom_black_lines)};
  if (d > 0 || planes) {
    rows.top_black &= ~int64_t{1};
    rows.bottom_black &= ~int64_t{1};
  }
  if (planes) rows.image &= ~int64_t{1};
  // RGB24 starts one row further from the end of the frame at full size without black lines, and when shrunk with
  // them. Full-size image rows then lie one row nearer to the end than the black ones' pointer, shrunk black rows
  // one nearer than the image's: with black lines the picture sits one row off, and one row is drawn by no one.
  int64_t image_shift = 0, black_shift = 0;
  if (rgb) {
    if ((d == 0) == (c->top_black_lines == 0)) {
      sink.at += sink.step;
    }
    (d == 0 ? image_shift : black_shift) = -sink.step;
  }
  find_out_whether_direct(sink, c, rows, image_shift);
  const auto put_black = [&](int64_t count) {
    sink.at += black_shift;
    put_flat_rows(sink, count, kBlackLuma, kBlackChroma);
    sink.at -= black_shift;
  };
  put_black(rows.top_black);
  sink.at += image_shift;
  if (d == 0) {
    weave(f, sink);
  } else {
    shrink(f, sink, d, rows.image);
  }
  sink.at -= image_shift;
  put_black(rows.bottom_black);
}

}  // namespace ppl
