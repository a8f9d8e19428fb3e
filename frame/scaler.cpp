#include "frame/scaler.h"

#include "frame/scaler_kernels.h"
#include "platform/levels.h"

namespace ppl {
namespace {

constexpr uint32_t kReadAhead = 16;             // of the horizontal passes
constexpr uint32_t kGroup = 16;                 // bytes of a planar and of a vertical group
constexpr uint32_t kPackedGroup = 64;           // bytes of a packed horizontal group
constexpr uint32_t kPaddedRow = 4 * 4096 + 64;  // the furthest that any position reaches
constexpr uint32_t kTableBytes = (kScratchBytes - kPaddedRow) & ~63u;

uint32_t rounded_up(uint32_t bytes, uint32_t group) {
  return (bytes + group - 1) / group * group;
}

// The largest sample index among the first `count` positions; positions wrap in 32 bits.
uint32_t furthest(uint32_t step, uint32_t count) {
  if (count == 0) return 0;
  const uint64_t last = uint64_t{count - 1} * step;
  return last >> 32 ? 4095 : static_cast<uint32_t>(last) >> 20;
}

// How many positions come in order before the first that wraps or reaches the limit.
uint32_t plain_outputs(uint32_t step, uint32_t limit, uint32_t count) {
  const uint64_t end = uint64_t{limit} << 20 < uint64_t{1} << 32 ? uint64_t{limit} << 20 : uint64_t{1} << 32;
  if (step == 0) return limit == 0 ? 0 : count;
  const uint64_t n = (end + step - 1) / step;
  return n < count ? static_cast<uint32_t>(n) : count;
}

using line_pass = void (*)(const scaler_columns&, const uint8_t* row, uint8_t* line);

// Reads one source row through a horizontal pass. Rows near the end of the source, from which the pass could read
// behind it, are first copied to a padded row with zeros behind.
struct row_reader {
  const scaler_plane* plane;
  const scaler_columns* columns;
  line_pass pass;
  uint32_t reach;  // bytes from the start of a row that the pass may read
  uint8_t* padded;

  void operator()(uint32_t row, uint8_t* line) const {
    const uint8_t* at = plane->source + int64_t{row} * plane->source_width;
    const int64_t left = plane->source_end - at;
    if (left < reach) {
      for (int64_t i = 0; i < reach; ++i) padded[i] = i < left ? at[i] : 0;
      at = padded;
    }
    pass(*columns, at, line);
  }
};

// Down the destination rows, with at most two passed lines at a time.
void walk_rows(ppl_context* c, const scaler_plane& p, const row_reader& read) {
  const scaler_kernels& k = *c->kernels->scaler;
  uint8_t* top = c->ring_pool;
  uint8_t* bottom = top + p.width;
  read(0, top);
  read(p.source_height > 1 ? 1 : 0, bottom);

  const uint32_t step = (p.source_height << 20) / p.height, pitch = rounded_up(p.width, kGroup);
  uint32_t index = 0, y = 0;
  uint8_t* out = p.destination;
  for (uint32_t row = 0; row < p.height && out < p.destination_end; ++row, out += pitch, y += step) {
    if (y >> 20 > index) {
      ++index;
      uint8_t* const free_line = top;
      top = bottom;
      if (index < p.source_height - 1) {
        bottom = free_line;
        read(index + 1, bottom);
      }
    }
    const int64_t room = p.destination_end - out;
    k.blend_lines(top, bottom, y >> 12 & 255, out, room < pitch ? static_cast<uint32_t>(room) : pitch);
  }
}

}  // namespace

bool frame_scaler_planar(ppl_context* c, const scaler_plane& p) {
  if (p.width == 0 || p.height == 0 || p.width > kRingPoolBytes) return true;
  const uint32_t count = rounded_up(p.width, kGroup);
  if (p.width + count > kRingPoolBytes) return true;
  scaler_columns columns = {};
  columns.step = (p.source_width << 20) / p.width;
  columns.count = count;
  columns.limit = p.source_width - 1;
  columns.plain = plain_outputs(columns.step, columns.limit, count);
  columns.memory = c->scratch;
  columns.memory_bytes = kTableBytes;
  const scaler_kernels& k = *c->kernels->scaler;
  k.planar_prepare(columns);
  const uint32_t reach = furthest(columns.step, count) + 2 + kReadAhead;
  walk_rows(c, p, {&p, &columns, k.planar_line, reach, c->scratch + kTableBytes});
  return true;
}

bool frame_scaler_packed(ppl_context* c, const scaler_plane& p) {
  if (p.width == 0 || p.height == 0 || p.width > kRingPoolBytes) return true;
  if (p.width + rounded_up(p.width, kPackedGroup) > kRingPoolBytes) return true;
  const uint32_t line = rounded_up(p.width / 4 * 4, kPackedGroup);  // whole pixel pairs are passed
  const uint32_t pitch = rounded_up(p.width, kGroup);
  if (line < pitch)  // an odd width: what no pair covers is 0
    for (uint32_t i = 0; i < p.width + pitch; ++i) c->ring_pool[i] = 0;
  scaler_columns columns = {};
  columns.step = (p.source_width << 20) / p.width;
  columns.count = line / 2;
  columns.limit = p.source_width - 1;
  columns.plain = plain_outputs(columns.step, columns.limit, columns.count);
  const uint32_t luma = 2 * furthest(columns.step, columns.count) + 4;
  const uint32_t chroma = 4 * furthest(columns.step, columns.count / 2) + 8;
  const uint32_t reach = (luma > chroma ? luma : chroma) + kReadAhead;
  walk_rows(c, p, {&p, &columns, c->kernels->scaler->packed_line, reach, c->scratch + kTableBytes});
  return true;
}

}  // namespace ppl
