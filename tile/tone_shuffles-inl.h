// The look-up of tile/tone-inl.h with 32-byte registers: a chain of byte shuffles of 16 entries each.
//
// A shuffle takes an index by its low four bits, and gives 0 where bit 7 is set. A chain's index starts as the sample's
// low seven bits and falls by 16 a step, so samples of the first 16 entries take the first step alone, those of the
// next 16 two steps, and so on: a step's entries are what changes, as exclusive or, from the 16 entries before. Both
// halves of a table share the index; bit 7 of the sample chooses. The even columns of a row, and the odd ones, are
// gathered first, for each parity has a table of its own.
#pragma once

#include "simd/simd-inl.h"

namespace ppl::PPL_LEVEL {

// A site's table in the record.
struct site_steps {
  alignas(16) uint8_t change[2][8][16];
  // Steps that change anything in the upper half; in either. Gain reaches the curve's end early.
  int32_t both, lower;
};
static_assert(sizeof(site_steps) <= sizeof(ppl_context::site_tables[0][0]));

static void prepare_tone(ppl_context& c, const uint8_t* tone) {
  alignas(64) uint8_t table[256];
  for (int site = 0; site < 4; ++site) {
    make_site_table(c, tone, site >> 1, site & 1, table);
    site_steps& s = *reinterpret_cast<site_steps*>(c.site_tables[site >> 1][site & 1]);
    s.both = s.lower = 0;
    vec16 before[2] = {zero<vec16>(), zero<vec16>()};
    for (int k = 0; k < 8; ++k)
      for (int half = 0; half < 2; ++half) {
        const vec16 entries = load<vec16>(table + 128 * half + 16 * k), change = entries ^ before[half];
        before[half] = entries;
        store(s.change[half][k], change);
        if (!any(le_u8(set8<vec16>(1), change))) continue;
        s.lower = k + 1;
        if (half == 1) s.both = k + 1;
      }
  }
}

// Samples of one site, in place.
template <int kVectors>
PPL_INLINE void look_up(const site_steps& s, wide (&samples)[kVectors]) {
  const wide sixteen = set8<wide>(16), seven_bits = set8<wide>(127);
  wide index[kVectors], lower[kVectors], upper[kVectors];
#pragma GCC unroll 3
  for (int i = 0; i < kVectors; ++i) {
    index[i] = samples[i] & seven_bits;
    lower[i] = upper[i] = zero<wide>();
  }
  int k = 0;
  for (; k < s.both; ++k) {
    const wide low = repeat16<wide>(s.change[0][k]), high = repeat16<wide>(s.change[1][k]);
#pragma GCC unroll 3
    for (int i = 0; i < kVectors; ++i) {
      lower[i] = lower[i] ^ shuffle8(low, index[i]);
      upper[i] = upper[i] ^ shuffle8(high, index[i]);
      index[i] = sub8(index[i], sixteen);
    }
  }
  for (; k < s.lower; ++k) {
    const wide low = repeat16<wide>(s.change[0][k]);
#pragma GCC unroll 3
    for (int i = 0; i < kVectors; ++i) {
      lower[i] = lower[i] ^ shuffle8(low, index[i]);
      index[i] = sub8(index[i], sixteen);
    }
  }
#pragma GCC unroll 3
  for (int i = 0; i < kVectors; ++i) samples[i] = {_mm256_blendv_epi8(lower[i].v, upper[i].v, samples[i].v)};
}

// 64 * kPairs columns, of which the frame, which may be null, takes `width` at the most.
template <int kPairs>
PPL_INLINE void look_up_columns(const site_steps& even_site, const site_steps& odd_site, const uint8_t* from,
                                uint8_t* row, uint8_t* frame, int width) {
  wide evens[kPairs], odds[kPairs];
#pragma GCC unroll 3
  for (int i = 0; i < kPairs; ++i) {
    const wide a = load<wide>(from + 64 * i), b = load<wide>(from + 64 * i + 32);
    evens[i] = narrow(even(a), even(b));
    odds[i] = narrow(odd(a), odd(b));
  }
  look_up(even_site, evens);
  look_up(odd_site, odds);
  const bool whole = frame != nullptr && width >= 64 * kPairs;
#pragma GCC unroll 3
  for (int i = 0; i < kPairs; ++i) {
    wide a, b;
    widen_pairs(evens[i], odds[i], a, b);
    store(row + 64 * i, a);
    store(row + 64 * i + 32, b);
    if (!whole) continue;
    storeu(frame + 64 * i, a);
    storeu(frame + 64 * i + 32, b);
  }
  if (frame == nullptr || whole) return;
  for (int x = 0; x < 64 * kPairs && x < width; x += 16) storeu(frame + x, load<vec16>(row + x));
}

// A row through its tables. `from` and `row` are row storage. Two vectors of a site at once keep the shuffles busy, one
// does not: 64 columns that are left over go with the 128 before them, for registers hold three.
static void look_up_row(const ppl_context& c, int row_parity, const uint8_t* from, uint8_t* row,
                        uint8_t* frame, int width) {
  const auto& even_site = *reinterpret_cast<const site_steps*>(c.site_tables[row_parity][0]);
  const auto& odd_site = *reinterpret_cast<const site_steps*>(c.site_tables[row_parity][1]);
  const auto frame_at = [&](int x) { return frame != nullptr ? frame + x : nullptr; };
  int x = 0;
  for (; width - x > 192 || width - x == 128; x += 128)
    look_up_columns<2>(even_site, odd_site, from + x, row + x, frame_at(x), 128);
  if (width - x > 128)
    return look_up_columns<3>(even_site, odd_site, from + x, row + x, frame_at(x), width - x);
  for (; x < width; x += 64)
    look_up_columns<1>(even_site, odd_site, from + x, row + x, frame_at(x), width - x);
}

}  // namespace ppl::PPL_LEVEL
