// Horizontal and vertical passes of the frame scaler.
//
// blend(a, b, f) = (a * (256 - f) + b * f + 128) >> 8.
#include "frame/scaler_kernels.h"

#include "record/levels.h"
#include "simd/simd-inl.h"

namespace ppl::PPL_LEVEL {
namespace {

constexpr uint32_t kOne = 1u << 20;  // a step of one sample

PPL_INLINE uint8_t blend_one(uint32_t a, uint32_t b, uint32_t f) {
  return static_cast<uint8_t>((a * (256 - f) + b * f + 128) >> 8);
}

// ---- lines of one plane

// Both tables have two bytes for each output, and begin at multiples of 64. Gathered: the index of its sample, and the
// weight. Shuffled: the places of its pair in their window, and the weights of the two. A window is 16 bytes of the
// row that hold the samples of 8, 4 or 2 outputs.
struct column_tables {
  uint16_t* sample;
  uint16_t* weight;
  uint16_t* base;  // shuffled: where the windows begin
};
PPL_INLINE uint32_t padded(uint32_t count) {
  return (count + 31) & ~31u;
}
PPL_INLINE uint32_t table_bytes(uint32_t count) {
  return 4 * padded(count) + count;
}
PPL_INLINE column_tables tables_of(const scaler_columns& c) {
  uint16_t* const memory = static_cast<uint16_t*>(static_cast<void*>(c.memory));
  return {memory, memory + padded(c.count), memory + 2 * padded(c.count)};
}
// A sample without a right neighbour is taken whole.
PPL_INLINE uint32_t weight_at(uint32_t p, uint32_t limit) {
  return p >> 20 < limit ? p >> 12 & 255 : 0;
}

// False where samples lie too far apart for any window: the last of one begins at most 14 bytes after the first.
bool prepare_shuffles(scaler_columns& c) {
  if (!kShufflesBytes) return false;
  const uint32_t step = c.step, limit = c.limit, count = c.count;
  if (step > 14 * kOne) return false;
  c.windows = step <= 2 * kOne ? 1 : step <= 14 * kOne / 3 ? 2 : 4;
  const column_tables t = tables_of(c);
  const uint32_t group = 8 / c.windows;  // outputs of a window
  uint32_t p = 0;
  for (uint32_t i = 0; i < count; ++i, p += step) {
    const uint32_t a = (p >> 20) - ((i & ~(group - 1)) * step >> 20), f = weight_at(p, limit);
    const uint32_t b = f == 0 ? a : a + 1, w = f == 0 ? 1 : f;
    t.sample[i] = static_cast<uint16_t>(a | b << 8);
    t.weight[i] = static_cast<uint16_t>((256 - w) | w << 8);
  }
  for (uint32_t i = 0; i < count; i += group) t.base[i / group] = static_cast<uint16_t>(i * step >> 20);
  return true;
}

void prepare_gathering(const scaler_columns& c) {
  const column_tables t = tables_of(c);
  const uint32_t step = c.step, limit = c.limit, count = c.count;
  uint32_t p = 0;
  for (uint32_t i = 0; i < count; ++i, p += step) {
    t.sample[i] = static_cast<uint16_t>(p >> 20);
    t.weight[i] = static_cast<uint16_t>(weight_at(p, limit));
  }
}

// A row has 2048 samples at most, and a line less than 64 outputs beyond its last: only positions of steps above 14
// can wrap, and those are gathered or taken one by one.
void prepare(scaler_columns& c) {
  if (c.step == kOne) {
    c.way = scaler_way::copied;
  } else if (c.step == 2 * kOne) {
    c.way = scaler_way::halved;
  } else if (c.step == kOne / 2) {
    c.way = scaler_way::doubled;
  } else if (table_bytes(c.count) > c.memory_bytes) {
    c.way = scaler_way::single;
  } else if (prepare_shuffles(c)) {
    c.way = scaler_way::shuffled;
  } else {
    prepare_gathering(c);
    c.way = scaler_way::gathered;
  }
}

// `last`: the sample without a right neighbour, counted from the start of `row`.
void doubled_line(const uint8_t* row, uint8_t* out, int count, int last) {
  const auto pairs = [&]<class V>(int x, V& first, V& second) {
    const V a = loadu<V>(row + x);
    interleave8(a, avg8(a, loadu<V>(row + x + 1)), first, second);
  };
  const int samples = count / 2;  // a multiple of 8
  walk_exact(samples & ~15, [&]<class V>(int x) {
    V first, second;
    pairs(x, first, second);
    storeu(out + 2 * x, first);
    storeu(out + 2 * x + V::size, second);
  });
  if (samples & 8) {
    vec16 first, second;
    pairs(samples - 8, first, second);
    storeu(out + count - 16, first);
  }
  for (int x = last; x < samples; ++x) out[2 * x + 1] = row[x];
}

template <int kWindows>
void shuffled_line(const scaler_columns& c, const uint8_t* row, uint8_t* out, uint32_t first, int count) {
  alignas(16) constexpr uint8_t places[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  const column_tables t = tables_of(c);
  const uint16_t* const sample = t.sample + first;
  const uint16_t* const weight = t.weight + first;
  const uint16_t* base = t.base + first / 8 * kWindows;
  walk_exact(count, [&]<class V>(int x) {
    V half[2];
    for (int k = 0; k < 2; ++k, base += V::size / 16 * kWindows) {
      const int at = x + k * V::size / 2;
      const V order = load<V>(sample + at);
      // A window for each 16 bytes: every kWindows-th from `base` + n on.
      const auto windows = [=](int n) {
        return load_16s<V>([=](int i) { return row + base[kWindows * i + n]; });
      };
      V pairs = shuffle8(windows(0), order);
      for (int n = 1; n < kWindows; ++n) {
        const auto from_here_on = le_u8(set8<V>(16 / kWindows * n), repeat16<V>(places));
        pairs = select(from_here_on, shuffle8(windows(n), order), pairs);
      }
      half[k] = blend_pairs(pairs, load<V>(weight + at));
    }
    storeu(out + x, pack_u8(half[0], half[1]));
  });
}

void gathered_line(const scaler_columns& c, const uint8_t* row, uint8_t* out, uint32_t first, int count) {
  const column_tables t = tables_of(c);
  const uint16_t* const sample = t.sample + first;
  const uint16_t* const weight = t.weight + first;
  for (int x = 0; x < count; x += 16) {
    vec16 a[2], change[2];
    for (int k = 0; k < 2; ++k) {
      const uint16_t* const at = sample + x + 8 * k;
      // A sample and its right neighbour, eight times.
      const vec16 pairs = gather_words([=](int i) { return row + at[i]; });
      a[k] = even(pairs);
      const vec16 product = mullo16(sub16(odd(pairs), a[k]), load<vec16>(weight + x + 8 * k));
      change[k] = srl16<8>(add16(product, set16<vec16>(128)));
    }
    storeu(out + x, add8(pack_u8(a[0], a[1]), pack_u8(change[0], change[1])));
  }
}

void single_line(const scaler_columns& c, const uint8_t* row, uint8_t* out, uint32_t first, int count) {
  uint32_t p = first * c.step;
  for (int i = 0; i < count; ++i, p += c.step) {
    const uint32_t x = p >> 20;
    out[i] = blend_one(row[x], row[x < c.limit ? x + 1 : x], p >> 12 & 255);
  }
}

void line(const scaler_columns& c, const uint8_t* row, uint8_t* out, uint32_t first, uint32_t count) {
  const int n = static_cast<int>(count);
  switch (c.way) {
    case scaler_way::doubled:
      return doubled_line(row + first / 2, out, n,
                          static_cast<int>(c.limit > first / 2 ? c.limit - first / 2 : 0));
    case scaler_way::shuffled:
      if constexpr (kShufflesBytes)
        c.windows == 1   ? shuffled_line<1>(c, row, out, first, n)
        : c.windows == 2 ? shuffled_line<2>(c, row, out, first, n)
                         : shuffled_line<4>(c, row, out, first, n);
      return;
    case scaler_way::gathered:
      return gathered_line(c, row, out, first, n);
    default:
      return single_line(c, row, out, first, n);
  }
}

// ---- vertical pass

void blend(const uint8_t* top, const uint8_t* bottom, uint32_t weight, uint8_t* out, uint32_t bytes) {
  const int whole = static_cast<int>(bytes & ~15u), f = static_cast<int>(weight);
  walk_exact(whole,
             [&]<class V>(int x) { storeu(out + x, blend8(loadu<V>(top + x), loadu<V>(bottom + x), f)); });
  for (uint32_t x = static_cast<uint32_t>(whole); x < bytes; ++x)
    out[x] = blend_one(top[x], bottom[x], weight);
}

}  // namespace

extern const scaler_kernels scaler_table;
const scaler_kernels scaler_table = {.prepare = prepare, .line = line, .blend = blend};

}  // namespace ppl::PPL_LEVEL
