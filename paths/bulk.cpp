// Qualities 3 and 13: row pair by row pair, each cell from its own four samples, with no neighbourhood.
//
// Every row pair passes the front end in place; then its rows are brought to planes, and the planes to rows of the
// format. Three ways lead into the caller's frame, chosen once per frame:
//   in place   the ordinary frame: rows stand where the mirrors and the decimation put them, all of them inside
//   by groups  the pointers of the plan, moved literally, 32 columns of two rows at a time, every store clipped:
//              pictures whose pointers drift, and black lines that push rows out of the frame
//   clipped    the doubled picture where not all of its rows are inside
#include "paths/bulk_kernels.h"

#include "frame/output_plan.h"
#include "frame/paths.h"
#include "platform/levels.h"
#include "tile/kernels.h"
#include "tile/lens_rows.h"

namespace ppl {
namespace {

// ---- row storage, in the record's ring pool: rows of a plane, and rows of a format or of a doubled plane

constexpr int kPlanePitch = 2048 + 128, kWidePitch = 4096 + 128, kPackedPitch = 8192;
enum plane_row : uint8_t { kEven, kOdd, kBlackEven, kBlackOdd, kLuma0, kLuma1, kU, kV };
constexpr int kPlaneRows = 10;
constexpr int kWideRows = 3;    // doubled planes
constexpr int kPackedRows = 2;  // finished rows that are not made in place
constexpr int kWideBase = kPlaneRows * kPlanePitch, kPackedBase = kWideBase + kWideRows * kWidePitch;
static_assert(kPackedBase + kPackedRows * kPackedPitch <= kRingPoolBytes);
static_assert(kPlanePitch % 64 == 0 && kWidePitch % 64 == 0 && kPackedPitch % 64 == 0);

// In the record's scratch: two rows of lens factors, then two of the three sets of doubled rows that a clipped
// frame makes aside. The third takes both finished rows. A set is a row of a format, or I420's rows of luma, U, V.
constexpr int kLensBytes = 2 * 2048 * 2;
constexpr int kAsideU = 4096, kAsideV = 8192, kAsideBytes = 12288;
static_assert(kLensBytes + 2 * kAsideBytes <= kScratchBytes && kAsideBytes <= kPackedRows * kPackedPitch);

uint8_t* plane(ppl_context* c, int row) {
  return c->ring_pool + 64 + row * kPlanePitch;
}
uint8_t* wide_row(ppl_context* c, int row) {
  return c->ring_pool + kWideBase + 64 + row * kWidePitch;
}
uint8_t* packed_row(ppl_context* c, int row) {
  return c->ring_pool + kPackedBase + row * kPackedPitch;
}

// RGB planes stand where the YUV ones do.
constexpr plane_row kG0 = kLuma0, kG1 = kLuma1, kR = kU, kB = kV;

// ---- the frame's plan

constexpr bool is_rgb(out_format f) {
  return f == out_format::rgb24 || f == out_format::rgb32;
}
constexpr int pixel_bytes(out_format f) {
  switch (f) {
    case out_format::i420:
      return 1;
    case out_format::yuyv:
    case out_format::uyvy:
      return 2;
    case out_format::rgb24:
      return 3;
    case out_format::rgb32:
      break;
  }
  return 4;
}

enum class placing : uint8_t { in_place, by_groups, clipped };

// Rows of a plane: row r of the picture begins at start + r * step.
struct row_grid {
  int64_t start, step;
};

struct bulk_frame {
  const frame_job* job;
  ppl_context* context;
  const bulk_kernels* kernels;
  bool grey;      // quality 13
  bool mirrored;  // rows run from right to left
  bool halved, doubled;
  placing place;
  int tiles, row_pairs;
  int columns;    // of the mosaic that are visited
  int pixels;     // of an output row that are made
  row_grid luma;  // I420 luma, or the rows of the one plane
  row_grid u, v;  // I420
};

bool inside(const row_grid& g, int rows, int64_t bytes, int64_t first, int64_t last) {
  const int64_t end = g.start + (rows - 1) * g.step;
  const int64_t low = g.step < 0 ? end : g.start, high = g.step < 0 ? g.start : end;
  return rows == 0 || (low >= first && high + bytes <= last);
}

// Where the rows of the picture stand. A frame that runs upwards starts at its last row; when doubled, one row
// above it, for the copy of the first row belongs below.
void lay_out(bulk_frame& f) {
  const ppl_context& c = *f.context;
  const out_format format = f.job->format;
  const int bytes = pixel_bytes(format);
  const bool upwards = is_rgb(format) == (c.v_mirror == 0);
  const int64_t row = int64_t{bytes} * c.out_width, half = c.out_width / 2;
  const int64_t inset = f.mirrored ? c.out_width - f.pixels : 0;
  const int64_t below = f.doubled ? 2 : 1;
  const int64_t first = upwards ? int64_t{bytes} * c.out_pixels - below * row : 0;
  f.luma = {first + bytes * inset, upwards ? -row : row};
  if (format != out_format::i420) return;
  const int64_t chroma = f.job->chroma_offset + (upwards ? c.out_quarter_pixels - below * half : 0) +
                         (f.mirrored ? half - f.pixels / 2 : 0);
  f.u = {chroma, upwards ? -half : half};
  f.v = {chroma + c.out_quarter_pixels, f.u.step};
}

// Do all rows stand inside their planes? One row more for the copy at the end of a doubled picture, which stands
// behind the last row, or below the first.
bool all_inside(const bulk_frame& f) {
  const ppl_context& c = *f.context;
  const frame_job& job = *f.job;
  const int rows = f.doubled ? 4 * f.row_pairs : f.halved ? f.row_pairs : 2 * f.row_pairs;
  const auto whole = [&](row_grid g, int n, int64_t bytes, int64_t first, int64_t last) {
    if (f.doubled && g.step < 0) g.start -= g.step;
    return inside(g, n, bytes, first, last);
  };
  const int64_t bytes = int64_t{pixel_bytes(job.format)} * f.pixels;
  if (job.format != out_format::i420) return whole(f.luma, rows, bytes, 0, job.destination_bytes);
  const int64_t u = job.chroma_offset, v = u + c.out_quarter_pixels, end = v + c.out_quarter_pixels;
  return end <= job.destination_bytes && whole(f.luma, rows, bytes, 0, u) &&
         whole(f.u, rows / 2, f.pixels / 2, u, v) && whole(f.v, rows / 2, f.pixels / 2, v, end);
}

bulk_frame plan_frame(const frame_job& job) {
  ppl_context* const c = job.context;
  bulk_frame f = {};
  f.job = &job;
  f.context = c;
  f.kernels = c->kernels->bulk;
  f.grey = c->quality == 13;
  f.mirrored = c->h_mirror != 0;
  f.tiles = c->tiles_per_row;
  f.row_pairs = c->row_pairs;
  f.columns = kTile * f.tiles;
  // Grey has no doubling: whatever is not of the same size takes the halving routine. RGB32 has none either: it
  // takes the routine for the same size.
  f.halved = c->decimation > 0 || (f.grey && c->decimation < 0);
  f.doubled = c->decimation < 0 && !f.grey && job.format != out_format::rgb32;
  const bool drifts = c->decimation < 0 && !f.doubled;
  f.pixels = f.doubled ? 2 * f.columns : f.halved ? f.columns / 2 : f.columns;
  lay_out(f);
  const bool ordinary = !drifts && all_inside(f);
  f.place = ordinary ? placing::in_place : f.doubled ? placing::clipped : placing::by_groups;
  return f;
}

// ---- front end and statistics

const uint8_t* tone_of(const bulk_frame& f) {
  return f.grey ? f.context->yuv_contrast_gamma_table : f.context->rgb_gamma_table;
}

void front_end(const bulk_frame& f, int row_pair) {
  ppl_context* const c = f.context;
  const int r = 2 * row_pair;
  uint8_t* const even = f.job->source + int64_t{r} * c->frame_stride;
  uint8_t* const odd = even + c->frame_stride;
  const bool collect = c->mean_collection != 0 && (row_pair & 1) != 0;
  const bool full = collect && !f.grey;  // grey takes plain sums only
  uint16_t* const spare = static_cast<uint16_t*>(static_cast<void*>(c->scratch));
  const auto row_if = [&](bool wanted, plane_row row) { return wanted ? plane(c, row) : nullptr; };
  const tile_kernels& k = *c->kernels->tile;
  k.front_end({.context = c,
               .tone = tone_of(f),
               .source_even = even,
               .source_odd = odd,
               .frame_even = even,
               .frame_odd = odd,
               .row_even = plane(c, kEven),
               .row_odd = plane(c, kOdd),
               .lens_even = lens_row(*c, r, f.columns, spare),
               .lens_odd = lens_row(*c, r + 1, f.columns, spare + 2048),
               .black_even = row_if(collect, kBlackEven),
               .black_odd = row_if(collect, kBlackOdd),
               .width = f.columns});
  if (!collect) return;
  if (full) {
    // In tile 1 the earlier tile is tile 0, which stores its rows like every even tile.
    __builtin_memcpy(&c->leftovers.stat_even_row, plane(c, kBlackEven), kTile);
    __builtin_memcpy(&c->leftovers.stat_odd_row, plane(c, kBlackOdd), kTile);
  }
  // These paths have no sub-windows: a row pair outside the grid makes all plain sums meet in one cell.
  k.statistics({.context = c,
                .black_even = plane(c, kBlackEven),
                .black_odd = plane(c, kBlackOdd),
                .tone_even = plane(c, kEven),
                .tone_odd = plane(c, kOdd),
                .plain_only = !full,
                .row_pair = INT32_MAX,
                .last_tile = f.tiles - 1,
                .tile_lead = 0});
}

// The plain sums belong to the whole frame, four times: every fourth cell was taken.
void finish_statistics(ppl_context* c) {
  rgb32& sums = *outside_cell(c);
  c->whole_frame_means.r += 4 * sums.r;
  c->whole_frame_means.g += 4 * sums.g;
  c->whole_frame_means.b += 4 * sums.b;
  sums = {};
}

// ---- rows of the picture

// The two rows (or the one of a halved picture) and, in I420, the chroma rows that a row pair makes. Null: not made.
struct made_rows {
  uint8_t* row[2];
  uint8_t *u, *v;
};

void fill(uint8_t* to, int n, uint8_t value) {
  for (int i = 0; i < n; ++i) to[i] = value;
}

// One row of RGB from planes; `spare` holds three planes where these must be halved or reversed first.
void put_rgb(const bulk_frame& f, uint8_t* to, const uint8_t* r, const uint8_t* g, const uint8_t* b) {
  const bulk_kernels& k = *f.kernels;
  const auto pack = f.job->format == out_format::rgb24 ? k.rgb24 : k.rgb32;
  if (!f.halved && !f.mirrored) return pack(to, r, g, b, f.pixels);
  const uint8_t* const planes[3] = {r, g, b};
  uint8_t* ready[3];
  for (int i = 0; i < 3; ++i) {
    ready[i] = wide_row(f.context, i);
    if (i > 0 && planes[i] == planes[0])
      ready[i] = ready[0];
    else
      (f.halved ? k.halve : k.copy)(ready[i], planes[i], f.pixels, f.mirrored);
  }
  pack(to, ready[0], ready[1], ready[2], f.pixels);
}

void put_grey(const bulk_frame& f, const made_rows& out) {
  ppl_context* const c = f.context;
  const auto take = f.halved ? f.kernels->halve : f.kernels->copy;
  for (int i = 0; i < 2; ++i) {
    if (out.row[i] == nullptr) continue;
    const uint8_t* const s = plane(c, kEven + i);
    if (f.job->format == out_format::i420)
      take(out.row[i], s, f.pixels, f.mirrored);
    else
      put_rgb(f, out.row[i], s, s, s);
  }
  if (out.u != nullptr) {
    fill(out.u, f.pixels / 2, 128);
    fill(out.v, f.pixels / 2, 128);
  }
}

cell_rows cells_of(const bulk_frame& f) {
  ppl_context* const c = f.context;
  cell_rows a = {};
  a.context = c;
  a.even = plane(c, kEven);
  a.odd = plane(c, kOdd);
  a.width = f.columns;
  a.luma[0] = plane(c, kLuma0);
  a.luma[1] = plane(c, kLuma1);
  a.u = plane(c, kU);
  a.v = plane(c, kV);
  a.r = plane(c, kR);
  a.g[0] = plane(c, kG0);
  a.g[1] = plane(c, kG1);
  a.b = plane(c, kB);
  return a;
}

void put_i420(const bulk_frame& f, const made_rows& out) {
  const bulk_kernels& k = *f.kernels;
  cell_rows a = cells_of(f);
  if (!f.halved && !f.mirrored) {  // in the same order and size: straight into the frame
    a.luma[0] = out.row[0];
    a.luma[1] = out.row[1];
    a.u = out.u;
    a.v = out.v;
    return k.cells_to_yuv(a);
  }
  k.cells_to_yuv(a);
  const auto take = f.halved ? k.halve : k.copy;
  for (int i = 0; i < 2; ++i)
    if (out.row[i] != nullptr) take(out.row[i], a.luma[i], f.pixels, f.mirrored);
  if (out.u != nullptr) {
    take(out.u, a.u, f.pixels / 2, f.mirrored);
    take(out.v, a.v, f.pixels / 2, f.mirrored);
  }
}

// Both rows of a cell carry its chroma; halved, every second cell's.
void put_packed(const bulk_frame& f, const made_rows& out) {
  ppl_context* const c = f.context;
  const bulk_kernels& k = *f.kernels;
  const auto pack = f.job->format == out_format::yuyv ? k.yuyv : k.uyvy;
  const cell_rows a = cells_of(f);
  k.cells_to_yuv(a);
  const uint8_t *u = a.u, *v = a.v;
  const bool moved = f.halved || f.mirrored;
  const auto take = f.halved ? k.halve : k.copy;
  if (moved) {
    take(wide_row(c, 1), u, f.pixels / 2, f.mirrored);
    take(wide_row(c, 2), v, f.pixels / 2, f.mirrored);
    u = wide_row(c, 1);
    v = wide_row(c, 2);
  }
  for (int i = 0; i < 2; ++i) {
    if (out.row[i] == nullptr) continue;
    const uint8_t* y = a.luma[i];
    if (moved) {
      take(wide_row(c, 0), y, f.pixels, f.mirrored);
      y = wide_row(c, 0);
    }
    pack(out.row[i], y, u, v, f.pixels);
  }
}

void put_rows(const bulk_frame& f, const made_rows& out) {
  if (f.grey) return put_grey(f, out);
  if (f.job->format == out_format::i420) return put_i420(f, out);
  if (!is_rgb(f.job->format)) return put_packed(f, out);
  const cell_rows a = cells_of(f);
  f.kernels->cells_to_rgb(a);
  for (int i = 0; i < 2; ++i)
    if (out.row[i] != nullptr) put_rgb(f, out.row[i], a.r, a.g[i], a.b);
}

// ---- in place

uint8_t* at(const bulk_frame& f, const row_grid& g, int row) {
  return f.job->destination + g.start + row * g.step;
}

void place_rows(const bulk_frame& f, int p) {
  made_rows out = {};
  if (f.halved) {
    // One luma row for each row pair; a chroma row for two, from the first.
    out.row[0] = at(f, f.luma, p);
    if (f.u.step != 0 && (p & 1) == 0 && p + 1 < f.row_pairs) {
      out.u = at(f, f.u, p / 2);
      out.v = at(f, f.v, p / 2);
    }
  } else {
    out.row[0] = at(f, f.luma, 2 * p);
    out.row[1] = at(f, f.luma, 2 * p + 1);
    if (f.u.step != 0) {
      out.u = at(f, f.u, p);
      out.v = at(f, f.v, p);
    }
  }
  put_rows(f, out);
}

// ---- doubled

// The rows of a row pair once widened, and those of the row pair before. In place they stand in the frame; in a
// clipped frame they are made aside, three sets in turn, because a row that falls outside still shapes its
// neighbours.
struct doubled_rows {
  uint8_t *first, *second,
      *before;  // luma, or the format's rows; `before` is the second of the row pair before
  uint8_t *u, *u_before, *v, *v_before;
};

uint8_t* aside(ppl_context* c, int set) {
  return set == 0 ? packed_row(c, 0) : c->scratch + kLensBytes + (set - 1) * kAsideBytes;
}

doubled_rows rows_of(const bulk_frame& f, int p) {
  if (f.place == placing::in_place) {
    const bool chroma = f.job->format == out_format::i420;
    const auto of = [&](const row_grid& g, int row) { return chroma ? at(f, g, row) : nullptr; };
    return {at(f, f.luma, 4 * p), at(f, f.luma, 4 * p + 2), at(f, f.luma, 4 * p - 2), of(f.u, 2 * p),
            of(f.u, 2 * p - 2),   of(f.v, 2 * p),           of(f.v, 2 * p - 2)};
  }
  uint8_t* const first = aside(f.context, 2 * p % 3);
  uint8_t* const second = aside(f.context, (2 * p + 1) % 3);
  // The second row leaves the chroma of its set alone: that of the row pair before.
  return {first,           second,           aside(f.context, (2 * p + 2) % 3),
          first + kAsideU, second + kAsideU, first + kAsideV,
          second + kAsideV};
}

// Stores one row as the rounded-up mean of two others (of one and itself: as it is), cut to the frame.
void put_mean(const bulk_frame& f, const row_grid& g, int row, const uint8_t* a, const uint8_t* b, int n) {
  if (f.place == placing::in_place) return f.kernels->mean(at(f, g, row), a, b, n);
  const int64_t to = g.start + row * g.step;
  for (int64_t i = to < 0 ? -to : 0; i < n && to + i < f.job->destination_bytes; ++i)
    f.job->destination[to + i] = static_cast<uint8_t>((a[i] + b[i] + 1) >> 1);
}
void put_aside(const bulk_frame& f, const row_grid& g, int row, const uint8_t* a, int n) {
  if (f.place == placing::clipped) put_mean(f, g, row, a, a, n);
}

// A picture that runs upwards has its first row twice, the copy below it; one that runs downwards its last row.
void put_copy(const bulk_frame& f, const row_grid& g, int p, int rows, const uint8_t* first,
              const uint8_t* last, int n) {
  if (g.step < 0 && p == 0) put_mean(f, g, -1, first, first, n);
  if (g.step > 0 && p == f.row_pairs - 1) put_mean(f, g, rows * p + rows - 1, last, last, n);
}

// Rows 4p and 4p + 2 are the row pair's own, those between and before them means; in chroma, row 2p is.
void put_luma(const bulk_frame& f, int p, const doubled_rows& d, int n) {
  put_aside(f, f.luma, 4 * p, d.first, n);
  put_aside(f, f.luma, 4 * p + 2, d.second, n);
  put_mean(f, f.luma, 4 * p + 1, d.first, d.second, n);
}
void put_luma_before(const bulk_frame& f, int p, const doubled_rows& d, int n) {
  if (p > 0) put_mean(f, f.luma, 4 * p - 1, d.before, d.first, n);
}

void double_i420(const bulk_frame& f, int p) {
  const bulk_kernels& k = *f.kernels;
  const cell_rows a = cells_of(f);
  const doubled_rows d = rows_of(f, p);
  const int half = f.columns / 2;
  k.cells_to_yuv(a);
  k.widen(d.first, a.luma[0], f.columns, {f.mirrored, 16});
  k.widen(d.second, a.luma[1], f.columns, {f.mirrored, 16});
  k.widen(d.u, a.u, half, {f.mirrored, 8});
  k.widen(d.v, a.v, half, {f.mirrored, 8});
  // Planes can overlap in a clipped frame, so the order counts: own rows, means towards the row pair before, copies.
  const int n = f.pixels;
  put_luma(f, p, d, n);
  put_aside(f, f.u, 2 * p, d.u, n / 2);
  put_aside(f, f.v, 2 * p, d.v, n / 2);
  put_luma_before(f, p, d, n);
  if (p > 0) {
    put_mean(f, f.u, 2 * p - 1, d.u_before, d.u, n / 2);
    put_mean(f, f.v, 2 * p - 1, d.v_before, d.v, n / 2);
  }
  put_copy(f, f.luma, p, 4, d.first, d.second, n);
  put_copy(f, f.u, p, 2, d.u, d.u, n / 2);
  put_copy(f, f.v, p, 2, d.v, d.v, n / 2);
}

// The other formats: planes are widened, then joined to rows.
void double_joined(const bulk_frame& f, int p) {
  ppl_context* const c = f.context;
  const bulk_kernels& k = *f.kernels;
  const cell_rows a = cells_of(f);
  const doubled_rows d = rows_of(f, p);
  uint8_t* const to[2] = {d.first, d.second};
  uint8_t* const wide[3] = {wide_row(c, 0), wide_row(c, 1), wide_row(c, 2)};
  const widen_rule rule = {f.mirrored, 16};
  if (is_rgb(f.job->format)) {
    k.cells_to_rgb(a);
    k.widen(wide[0], a.r, f.columns, rule);
    k.widen(wide[2], a.b, f.columns, rule);
    for (int i = 0; i < 2; ++i) {
      k.widen(wide[1], a.g[i], f.columns, rule);
      k.rgb24(to[i], wide[0], wide[1], wide[2], f.pixels);
    }
  } else {
    const auto pack = f.job->format == out_format::yuyv ? k.yuyv : k.uyvy;
    k.cells_to_yuv(a);
    k.widen(wide[1], a.u, f.columns / 2, {f.mirrored, 8});
    k.widen(wide[2], a.v, f.columns / 2, {f.mirrored, 8});
    for (int i = 0; i < 2; ++i) {
      k.widen(wide[0], a.luma[i], f.columns, rule);
      pack(to[i], wide[0], wide[1], wide[2], f.pixels);
    }
  }
  const int n = pixel_bytes(f.job->format) * f.pixels;
  put_luma(f, p, d, n);
  put_luma_before(f, p, d, n);
  put_copy(f, f.luma, p, 4, d.first, d.second, n);
}

// ---- by groups

// The plan's figures of one format.
struct group_steps {
  int32_t half[2], row[2], group, row_step;
  int32_t chroma_group, chroma_row_step;
};
group_steps steps_of(const bulk_frame& f) {
  const output_plan& p = f.context->plan;
  const auto of = [](const auto& b) -> group_steps {
    return {
        {b.left_offset, b.right_offset}, {b.row_0_offset, b.row_1_offset}, b.group_step, b.row_step, 0, 0};
  };
  group_steps s = {};
  switch (f.job->format) {
    case out_format::i420:
      s = of(p.bulk_i420);
      s.chroma_group = p.bulk_i420.chroma_group_step;
      s.chroma_row_step = p.bulk_i420.chroma_row_step;
      break;
    case out_format::yuyv:
    case out_format::uyvy:
      s = of(p.bulk_packed);
      break;
    case out_format::rgb24:
      s = of(p.bulk_rgb24);
      break;
    case out_format::rgb32: {
      const auto& b = p.bulk_rgb32;
      s = {{b.half_offset[0], b.half_offset[1]},
           {b.row_0_offset, b.row_1_offset},
           b.group_step,
           b.row_step,
           0,
           0};
      break;
    }
  }
  return s;
}

struct group_pointers {
  int64_t luma, u, v;
};

void put_clipped(const frame_job& job, int64_t to, const uint8_t* from, int n) {
  for (int64_t i = to < 0 ? -to : 0; i < n && to + i < job.destination_bytes; ++i)
    job.destination[to + i] = from[i];
}

// Stores two finished rows group by group: in each, tile by tile, first row before second, luma before U before V.
void store_groups(const bulk_frame& f, const group_steps& s, const made_rows& rows, group_pointers& to) {
  const frame_job& job = *f.job;
  const int tile_bytes = kTile * pixel_bytes(job.format), tiles = f.pixels / kTile, groups = tiles / 2;
  // The rows were made in the order of memory: under the mirror the walk's first tile is their last.
  const auto tile_of = [&](const uint8_t* row, int t, int count, int bytes) {
    return row + (f.mirrored ? count - 1 - t : t) * bytes;
  };
  for (int g = 0; g < groups; ++g) {
    for (int h = 0; h < 2; ++h)
      for (int i = 0; i < 2; ++i)
        put_clipped(job, to.luma + s.half[h] + s.row[i], tile_of(rows.row[i], 2 * g + h, tiles, tile_bytes),
                    tile_bytes);
    if (rows.u != nullptr) {
      put_clipped(job, to.u, tile_of(rows.u, g, groups, kTile), kTile);
      put_clipped(job, to.v, tile_of(rows.v, g, groups, kTile), kTile);
    }
    to.luma += s.group;
    to.u += s.chroma_group;
    to.v += s.chroma_group;
  }
  to.luma += s.row_step;
  to.u += s.chroma_row_step;
  to.v += s.chroma_row_step;
}

// Rows are made aside. A halved group takes two row pairs, and its chroma from the first.
struct group_store {
  group_steps steps;
  group_pointers to;
};
group_store start_groups(const bulk_frame& f) {
  const start_offsets start = output_start(f.context, f.job->format);
  const int64_t u = f.job->chroma_offset + start.bulk_chroma;
  return {steps_of(f), {start.bulk, u, u + f.context->out_quarter_pixels}};
}

void place_groups(const bulk_frame& f, group_store& store, int p) {
  ppl_context* const c = f.context;
  made_rows rows = {{packed_row(c, 0), packed_row(c, 1)}, nullptr, nullptr};
  if (f.job->format == out_format::i420) {  // behind the luma, which fills a quarter of a packed row
    rows.u = packed_row(c, 0) + kPackedPitch / 2;
    rows.v = packed_row(c, 1) + kPackedPitch / 2;
  }
  if (!f.halved) {
    put_rows(f, rows);
    return store_groups(f, store.steps, rows, store.to);
  }
  made_rows half = {{rows.row[p & 1], nullptr}, nullptr, nullptr};
  if ((p & 1) == 0) {
    half.u = rows.u;
    half.v = rows.v;
  }
  put_rows(f, half);
  if ((p & 1) != 0) store_groups(f, store.steps, rows, store.to);
}

}  // namespace

void run_bulk_path(const frame_job& job) {
  const bulk_frame f = plan_frame(job);
  if (f.tiles <= 0 || f.row_pairs <= 0) return;
  group_store groups = start_groups(f);
  job.context->kernels->tile->prepare_tone(*job.context, tone_of(f));
  for (int p = 0; p < f.row_pairs; ++p) {
    front_end(f, p);
    if (f.doubled)
      (job.format == out_format::i420 ? double_i420 : double_joined)(f, p);
    else if (f.place == placing::by_groups)
      place_groups(f, groups, p);
    else
      place_rows(f, p);
  }
  finish_statistics(job.context);
}

}  // namespace ppl
