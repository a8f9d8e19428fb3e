#include "frame/scaler.h"

#include "frame/scaler_kernels.h"
#include "record/levels.h"
#include "rows/row_kernels.h"

namespace ppl {
namespace {

constexpr uint32_t kReadAhead = 16;    // of the horizontal pass
constexpr uint32_t kGroup = 16;        // bytes of a planar and of a vertical group
constexpr uint32_t kPackedGroup = 64;  // bytes of a packed horizontal group
constexpr uint32_t kSamples = 4096;    // positions point below this

// In the record's scratch: the planes of a packed source row (or a padded planar one), the planes of a run of a
// packed line, and the tables of the columns.
constexpr uint32_t kLumaRow = 0, kURow = kLumaRow + 2 * kSamples + 64, kVRow = kURow + kSamples + 64;
constexpr uint32_t kRun = kVRow + kSamples + 64, kRunPixels = 512, kTables = kRun + 2 * kRunPixels;
constexpr uint32_t kTableBytes = kScratchBytes - kTables;
static_assert(kTables % 64 == 0);

uint32_t rounded_up(uint32_t bytes, uint32_t group) {
  return (bytes + group - 1) / group * group;
}

// The largest sample index among the first `count` positions; positions wrap in 32 bits.
uint32_t furthest(uint32_t step, uint32_t count) {
  if (count == 0) return 0;
  const uint64_t last = uint64_t{count - 1} * step;
  return last >> 32 ? 4095 : static_cast<uint32_t>(last) >> 20;
}

scaler_columns plan_columns(ppl_context* c, const scaler_plane& p, uint32_t count) {
  scaler_columns columns = {};
  columns.step = (p.source_width << 20) / p.width;
  columns.count = count;
  columns.limit = p.source_width - 1;
  columns.memory = c->scratch + kTables;
  columns.memory_bytes = kTableBytes;
  c->kernels->scaler->prepare(columns);
  return columns;
}

// Outputs first .. first + count - 1 of a line.
inline void pass(const kernels& k, const scaler_columns& columns, const uint8_t* row, uint8_t* line,
                 uint32_t first, uint32_t count) {
  if (columns.way > scaler_way::halved)
    k.scaler->line(columns, row, line, first, count);
  else if (columns.way == scaler_way::copied)
    k.rows->copy(line, row + first, count, false);
  else
    k.rows->halve(line, row + 2 * first, count, false);
}

// blend(top, bottom, weight); weight 0 reads nothing of bottom.
void blend(const ppl_context* c, const uint8_t* top, const uint8_t* bottom, uint32_t weight, uint8_t* out,
           uint32_t bytes) {
  if (weight == 0)
    c->kernels->rows->copy(out, top, bytes, false);
  else if (weight == 128)
    c->kernels->rows->mean(out, top, bottom, bytes);
  else
    c->kernels->scaler->blend(top, bottom, weight, out, bytes);
}

struct source_row {
  const uint8_t* at;
  int64_t left;  // bytes up to the end of the source
};
source_row row_of(const scaler_plane& p, uint32_t row) {
  const uint8_t* at = p.source + int64_t{row} * p.source_width;
  return {at, p.source_end - at};
}

// Passes a row of one plane. A row that the pass could read beyond the source is first copied, followed by zeros.
struct planar_pass {
  ppl_context* context;
  const scaler_plane* plane;
  scaler_columns columns;
  uint32_t reach;  // bytes from the start of a row that the pass may read

  void operator()(uint32_t row, uint8_t* line) const {
    source_row r = row_of(*plane, row);
    if (r.left < reach) {
      uint8_t* const padded = context->scratch + kLumaRow;
      const uint32_t inside = r.left < 0 ? 0 : static_cast<uint32_t>(r.left);
      context->kernels->rows->copy(padded, r.at, inside, false);
      for (uint32_t i = inside; i < reach; ++i) padded[i] = 0;
      r.at = padded;
    }
    pass(*context->kernels, columns, r.at, line, 0, columns.count);
  }
};

// Passes a packed row as planes. Luma and chroma advance by the same step, so the columns worked out for luma serve U
// and V as well.
struct packed_pass {
  ppl_context* context;
  const scaler_plane* plane;
  scaler_columns columns;
  uint32_t reach;  // source pixels that any position may use; even

  void operator()(uint32_t row, uint8_t* line) const {
    const kernels& k = *context->kernels;
    uint8_t* const y = context->scratch + kLumaRow;
    uint8_t* const u = context->scratch + kURow;
    uint8_t* const v = context->scratch + kVRow;
    const source_row r = row_of(*plane, row);
    if (columns.way == scaler_way::copied && r.left >= 2 * columns.count)
      return k.rows->copy(line, r.at, 2 * columns.count, false);
    const uint32_t inside = r.left < 0 ? 0 : r.left / 2 < reach ? static_cast<uint32_t>(r.left / 2) : reach;
    const uint32_t whole = inside & ~31u;
    k.rows->split(y, u, v, r.at, whole);
    const auto sample = [&](uint32_t i) { return i < r.left ? r.at[i] : uint8_t{0}; };
    for (uint32_t x = whole; x < reach; x += 2) {
      y[x] = sample(2 * x);
      u[x / 2] = sample(2 * x + 1);
      y[x + 1] = sample(2 * x + 2);
      v[x / 2] = sample(2 * x + 3);
    }
    uint8_t* const run = context->scratch + kRun;
    uint8_t* const run_u = run + kRunPixels;
    uint8_t* const run_v = run_u + kRunPixels / 2;
    for (uint32_t first = 0; first < columns.count; first += kRunPixels) {
      const uint32_t left = columns.count - first, n = left < kRunPixels ? left : kRunPixels;
      pass(k, columns, y, run, first, n);
      pass(k, columns, u, run_u, first / 2, n / 2);
      pass(k, columns, v, run_v, first / 2, n / 2);
      k.rows->join(line + 2 * first, run, run_u, run_v, n);
    }
  }
};

// Goes down the destination rows, keeping at most two passed lines: that of source row r in the first line buffer if r
// is even, in the second if it is odd; of a plane of one row, in both. Where lines do not run into one another
// (`whole_groups`), a row of weight 0 is not passed, and a line that makes one destination row alone and is not needed
// again is passed straight to its place.
template <class Pass>
void walk_rows(ppl_context* c, const scaler_plane& p, bool whole_groups, const Pass& read) {
  constexpr uint32_t kNone = ~0u;
  uint32_t held[2] = {kNone, kNone};
  const auto line_of = [&](uint32_t row) {
    uint8_t* const line = c->ring_pool + (row & 1) * p.width;
    if (held[row & 1] != row) read(p.source_height > 1 ? row : 0, line);
    held[row & 1] = row;
    return line;
  };

  const uint32_t last = p.source_height > 1 ? p.source_height - 1 : kNone;
  const uint32_t step = (p.source_height << 20) / p.height, pitch = rounded_up(p.width, kGroup);
  uint32_t index = 0, y = 0;
  uint8_t* out = p.destination;
  for (uint32_t row = 0; row < p.height && out < p.destination_end; ++row, out += pitch, y += step) {
    if (y >> 20 > index) ++index;
    const int64_t room = p.destination_end - out;
    const uint32_t weight = y >> 12 & 255;
    const bool alone = whole_groups && weight == 0, moves_on = (y + step) >> 20 > index;
    if (alone && moves_on && held[index & 1] != index && room >= pitch) {
      read(index, out);
      continue;
    }
    const uint8_t* const top = line_of(index);
    const uint8_t* const bottom = alone || index == last ? top : line_of(index + 1);
    blend(c, top, bottom, weight, out, room < pitch ? static_cast<uint32_t>(room) : pitch);
  }
}

}  // namespace

bool frame_scaler_planar(ppl_context* c, const scaler_plane& p) {
  if (p.width == 0 || p.height == 0 || p.width > kRingPoolBytes) return true;
  const uint32_t count = rounded_up(p.width, kGroup);
  if (p.width + count > kRingPoolBytes) return true;
  const scaler_columns columns = plan_columns(c, p, count);
  walk_rows(c, p, p.width == count,
            planar_pass{c, &p, columns, furthest(columns.step, count) + 2 + kReadAhead});
  return true;
}

bool frame_scaler_packed(ppl_context* c, const scaler_plane& p) {
  if (p.width == 0 || p.height == 0 || p.width > kRingPoolBytes) return true;
  if (p.width + rounded_up(p.width, kPackedGroup) > kRingPoolBytes) return true;
  const uint32_t line = rounded_up(p.width / 4 * 4, kPackedGroup);  // whole pixel pairs are passed
  const uint32_t pitch = rounded_up(p.width, kGroup);
  if (line < pitch)  // an odd width: what no pair covers is 0
    for (uint32_t i = 0; i < p.width + pitch; ++i) c->ring_pool[i] = 0;
  const scaler_columns columns = plan_columns(c, p, line / 2);
  const uint32_t luma = furthest(columns.step, columns.count) + 2;
  const uint32_t chroma = 2 * (furthest(columns.step, columns.count / 2) + 2);
  walk_rows(c, p, p.width == line, packed_pass{c, &p, columns, ((luma > chroma ? luma : chroma) + 1) & ~1u});
  return true;
}

}  // namespace ppl
