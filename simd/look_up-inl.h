// A row of bytes through two tables of 256, one for the bytes at even places, one for those at odd ones.
//
// Each level keeps the two tables in 4096 bytes of the caller's, in a form of its own. With 64-byte registers a table
// fits in four of them, and both tables are looked up and blended. With 32 bytes, and in WebAssembly, a look-up is a
// chain of shuffles. NEON looks up 64 entries at once. With 16 bytes elsewhere the look-up is scalar, since a chain
// would take longer: each entry is held already shifted to its byte's place among four, so that four bytes are four
// loads and three ors.
#pragma once

#include "simd/simd-inl.h"

namespace ppl::PPL_LEVEL {

// Whether bytes are looked up one vector at a time, by a table_pair; if not, by look_up_row(). And whether a row's
// look-up may take them from memory that must not be passed at its end.
#if defined(PPL_LEVEL_avx2) || defined(PPL_LEVEL_simd128)
#define PPL_LOOK_UP_BY_SHUFFLES
constexpr bool kLooksUpVectors = false, kLooksUpAnywhere = false;
#else
constexpr bool kLooksUpVectors = kWidth == 64, kLooksUpAnywhere = kWidth == 16;
#endif
constexpr int kTablePairBytes = 4096;

#if defined(PPL_LEVEL_avx512)
// Two look-ups by the low seven bits; the top bit chooses.
PPL_INLINE vec<64> look_up(const vec<64> (&table)[4], vec<64> x) {
  return {_mm512_mask_blend_epi8(_mm512_movepi8_mask(x.v),
                                 _mm512_permutex2var_epi8(table[0].v, x.v, table[1].v),
                                 _mm512_permutex2var_epi8(table[2].v, x.v, table[3].v))};
}
// bytes[i] = table[bytes[i]]
PPL_INLINE void look_up_256(uint8_t (&bytes)[256], const uint8_t* table) {
  const vec<64> quarters[4] = {loadu<vec<64>>(table), loadu<vec<64>>(table + 64), loadu<vec<64>>(table + 128),
                               loadu<vec<64>>(table + 192)};
  for (int x = 0; x < 256; x += 64) store(bytes + x, look_up(quarters, load<vec<64>>(bytes + x)));
}
PPL_INLINE void make_table_pair(void* memory, const uint8_t (&even_places)[256],
                                const uint8_t (&odd_places)[256]) {
  uint8_t* const to = static_cast<uint8_t*>(memory);
  for (int x = 0; x < 256; x += 64) {
    store(to + x, load<vec<64>>(even_places + x));
    store(to + 256 + x, load<vec<64>>(odd_places + x));
  }
}
struct table_pair {
  vec<64> table[2][4];
  explicit table_pair(const void* memory) {
    for (int i = 0; i < 8; ++i)
      table[i / 4][i % 4] = load<vec<64>>(static_cast<const uint8_t*>(memory) + 64 * i);
  }
  PPL_INLINE_MEMBER vec<64> operator()(vec<64> x) const {
    return even_odd(look_up(table[0], x), look_up(table[1], x));
  }
  PPL_INLINE_MEMBER vec<16> operator()(vec<16> x) const {
    return {_mm512_castsi512_si128((*this)(vec<64>{_mm512_castsi128_si512(x.v)}).v)};
  }
};
PPL_INLINE void look_up_row(const void*, const uint8_t*, uint8_t*, uint8_t*, int) {}

#else
PPL_INLINE void look_up_256(uint8_t (&bytes)[256], const uint8_t* table) {
  for (uint8_t& b : bytes) b = table[b];
}
struct table_pair {
  explicit table_pair(const void*) {}
  template <class V>
  PPL_INLINE_MEMBER V operator()(V x) const {
    return x;
  }
};
#endif

#if defined(PPL_LOOK_UP_BY_SHUFFLES)
// A shuffle has 16 entries, so half a table is a chain of eight. The index starts as the byte's low seven bits and
// falls by 16 a step. Both halves of a table share it, and bit 7 of the byte chooses between their results. The even
// bytes of a row, and the odd ones, are gathered first.
//
// On x86 a shuffle uses the low four bits of an index, and gives 0 where bit 7 is set. So a byte of the first 16
// entries takes part in one step, a byte of the next 16 in two, and so on; a step holds what changes, as exclusive or,
// from the 16 entries before. In WebAssembly every index beyond 15 gives 0: a byte takes part in the step of its own
// 16 entries alone, which holds their exclusive or with the last entry of the half. Either way steps that change
// nothing are left out.
struct table_steps {
  alignas(16) uint8_t change[2][8][16];
  uint8_t last[2];
  int32_t both;   // steps that change anything in the upper half; many tables reach their last value early
  int32_t lower;  // steps that change anything in either half
};
static_assert(2 * sizeof(table_steps) <= kTablePairBytes);
#if defined(PPL_LEVEL_simd128)
constexpr bool kStepsAddUp = false;
#else
constexpr bool kStepsAddUp = true;
#endif

PPL_INLINE void make_table_steps(table_steps& s, const uint8_t (&table)[256]) {
  s.both = s.lower = 0;
  vec16 before[2];
  for (int half = 0; half < 2; ++half) {
    s.last[half] = table[128 * half + 127];
    before[half] = kStepsAddUp ? zero<vec16>() : set8<vec16>(s.last[half]);
  }
  for (int k = 0; k < 8; ++k)
    for (int half = 0; half < 2; ++half) {
      const vec16 entries = load<vec16>(table + 128 * half + 16 * k), change = entries ^ before[half];
      if (kStepsAddUp) before[half] = entries;
      store(s.change[half][k], change);
      if (!any(change)) continue;
      s.lower = k + 1;
      if (half == 1) s.both = k + 1;
    }
}
static void make_table_pair(void* memory, const uint8_t (&even_places)[256],
                            const uint8_t (&odd_places)[256]) {
  table_steps* const steps = static_cast<table_steps*>(memory);
  make_table_steps(steps[0], even_places);
  make_table_steps(steps[1], odd_places);
}

// Bytes of one table, in place.
template <int kVectors>
PPL_INLINE void look_up(const table_steps& s, wide (&bytes)[kVectors]) {
  const wide sixteen = set8<wide>(16), seven_bits = set8<wide>(127);
  wide index[kVectors], lower[kVectors], upper[kVectors];
#pragma GCC unroll 4
  for (int i = 0; i < kVectors; ++i) {
    index[i] = bytes[i] & seven_bits;
    lower[i] = kStepsAddUp ? zero<wide>() : set8<wide>(s.last[0]);
    upper[i] = kStepsAddUp ? zero<wide>() : set8<wide>(s.last[1]);
  }
  int k = 0;
  for (; k < s.both; ++k) {
    const wide low = repeat16<wide>(s.change[0][k]), high = repeat16<wide>(s.change[1][k]);
#pragma GCC unroll 4
    for (int i = 0; i < kVectors; ++i) {
      lower[i] = lower[i] ^ shuffle8(low, index[i]);
      upper[i] = upper[i] ^ shuffle8(high, index[i]);
      index[i] = sub8(index[i], sixteen);
    }
  }
  for (; k < s.lower; ++k) {
    const wide low = repeat16<wide>(s.change[0][k]);
#pragma GCC unroll 4
    for (int i = 0; i < kVectors; ++i) {
      lower[i] = lower[i] ^ shuffle8(low, index[i]);
      index[i] = sub8(index[i], sixteen);
    }
  }
#pragma GCC unroll 4
  for (int i = 0; i < kVectors; ++i) bytes[i] = select_by_top_bit(bytes[i], upper[i], lower[i]);
}

// kPairs pairs of vectors of a row. The frame, unless it is null, gets `width` bytes of them at most.
constexpr int kPair = 2 * kWidth;
template <int kPairs>
PPL_INLINE void look_up_columns(const table_steps (&steps)[2], const uint8_t* from, uint8_t* row,
                                uint8_t* frame, int width) {
  wide evens[kPairs], odds[kPairs];
#pragma GCC unroll 4
  for (int i = 0; i < kPairs; ++i) {
    const wide a = load<wide>(from + kPair * i), b = load<wide>(from + kPair * i + kWidth);
    evens[i] = narrow(even(a), even(b));
    odds[i] = narrow(odd(a), odd(b));
  }
  look_up(steps[0], evens);
  look_up(steps[1], odds);
  const bool whole = frame != nullptr && width >= kPair * kPairs;
#pragma GCC unroll 4
  for (int i = 0; i < kPairs; ++i) {
    wide a, b;
    widen_pairs(evens[i], odds[i], a, b);
    store(row + kPair * i, a);
    store(row + kPair * i + kWidth, b);
    if (!whole) continue;
    storeu(frame + kPair * i, a);
    storeu(frame + kPair * i + kWidth, b);
  }
  if (frame == nullptr || whole) return;
  for (int x = 0; x < kPair * kPairs && x < width; x += 16) storeu(frame + x, load<vec16>(row + x));
}

// A row through its tables. `from` and `row` are row storage; the result goes to `frame` too, unless that is null.
// Several vectors at once keep the shuffles busy; of 32 bytes, registers hold three. A single vector left over goes
// with the two before it.
static void look_up_row(const void* memory, const uint8_t* from, uint8_t* row, uint8_t* frame, int width) {
  const auto& steps = *static_cast<const table_steps(*)[2]>(memory);
  const auto frame_at = [&](int x) { return frame != nullptr ? frame + x : nullptr; };
  int x = 0;
  if constexpr (kWidth == 16) {
    for (; width - x >= 4 * kPair; x += 4 * kPair)
      look_up_columns<4>(steps, from + x, row + x, frame_at(x), 4 * kPair);
  } else {
    for (; width - x > 3 * kPair || width - x == 2 * kPair; x += 2 * kPair)
      look_up_columns<2>(steps, from + x, row + x, frame_at(x), 2 * kPair);
    if (width - x > 2 * kPair) return look_up_columns<3>(steps, from + x, row + x, frame_at(x), width - x);
  }
  for (; x < width; x += kPair) look_up_columns<1>(steps, from + x, row + x, frame_at(x), width - x);
}

#elif defined(PPL_LEVEL_neon)
static void make_table_pair(void* memory, const uint8_t (&even_places)[256],
                            const uint8_t (&odd_places)[256]) {
  __builtin_memcpy(memory, even_places, 256);
  __builtin_memcpy(static_cast<uint8_t*>(memory) + 256, odd_places, 256);
}

// Bytes of one table, in place, by a quarter of it at a time.
template <int kVectors>
PPL_INLINE void look_up(const uint8_t* table, vec<16> (&bytes)[kVectors]) {
  // Indices beyond a quarter give 0 in the first step, and leave what is there in the others.
  vec<16> index[kVectors];
  const uint8x16x4_t first = vld1q_u8_x4(table);
#pragma GCC unroll 4
  for (int i = 0; i < kVectors; ++i) {
    index[i] = bytes[i];
    bytes[i] = of(vqtbl4q_u8(first, index[i].v));
  }
#pragma GCC unroll 4
  for (int k = 1; k < 4; ++k) {
    const uint8x16x4_t quarter = vld1q_u8_x4(table + 64 * k);
#pragma GCC unroll 4
    for (int i = 0; i < kVectors; ++i) {
      index[i] = sub8(index[i], set8<vec<16>>(64));
      bytes[i] = of(vqtbx4q_u8(bytes[i].v, quarter, index[i].v));
    }
  }
}
template <int kVectors>
PPL_INLINE void look_up_columns(const uint8_t* tables, const uint8_t* from, uint8_t* row, uint8_t* frame) {
  vec<16> evens[kVectors], odds[kVectors];
#pragma GCC unroll 4
  for (int i = 0; i < kVectors; ++i) {
    const vec<16> a = loadu<vec<16>>(from + 32 * i), b = loadu<vec<16>>(from + 32 * i + 16);
    evens[i] = even_bytes(a, b);
    odds[i] = odd_bytes(a, b);
  }
  look_up(tables, evens);
  look_up(tables + 256, odds);
#pragma GCC unroll 4
  for (int i = 0; i < kVectors; ++i) {
    vec<16> a, b;
    interleave8(evens[i], odds[i], a, b);
    storeu(row + 32 * i, a);
    storeu(row + 32 * i + 16, b);
    if (frame == nullptr) continue;
    storeu(frame + 32 * i, a);
    storeu(frame + 32 * i + 16, b);
  }
}

// A row through its tables; `width` is a multiple of 16. The result goes to `row`, and to `frame` unless that is null.
static void look_up_row(const void* memory, const uint8_t* from, uint8_t* row, uint8_t* frame, int width) {
  const uint8_t* const tables = static_cast<const uint8_t*>(memory);
  const auto frame_at = [&](int x) { return frame != nullptr ? frame + x : nullptr; };
  int x = 0;
  for (; x + 128 <= width; x += 128) look_up_columns<4>(tables, from + x, row + x, frame_at(x));
  for (; x + 32 <= width; x += 32) look_up_columns<1>(tables, from + x, row + x, frame_at(x));
  if (x == width) return;
  uint8_t twice[32];
  storeu(twice, loadu<vec<16>>(from + x));
  storeu(twice + 16, loadu<vec<16>>(from + x));
  look_up_columns<1>(tables, twice, twice, nullptr);
  storeu(row + x, loadu<vec<16>>(twice));
  if (frame != nullptr) storeu(frame + x, loadu<vec<16>>(twice));
}

#elif !defined(PPL_LEVEL_avx512)
// Entries of the even table for the first and the third of four bytes, of the odd one for the second and the fourth.
struct shifted_tables {
  uint32_t at[4][256];
};
static_assert(sizeof(shifted_tables) <= kTablePairBytes);

static void make_table_pair(void* memory, const uint8_t (&even_places)[256],
                            const uint8_t (&odd_places)[256]) {
  shifted_tables& t = *static_cast<shifted_tables*>(memory);
  for (int place = 0; place < 2; ++place)
    for (int x = 0; x < 256; ++x) {
      t.at[place][x] = static_cast<uint32_t>((place == 0 ? even_places : odd_places)[x]) << (8 * place);
      t.at[place + 2][x] = t.at[place][x] << 16;
    }
}

// A row through its tables; `width` is a multiple of 8. The result goes to `row`, and to `frame` unless that is null.
PPL_INLINE void look_up_row(const void* memory, const uint8_t* from, uint8_t* row, uint8_t* frame,
                            int width) {
  const uint32_t(&table)[4][256] = static_cast<const shifted_tables*>(memory)->at;
  const auto four = [&](uint32_t in) {
    return table[0][in & 255] | table[1][in >> 8 & 255] | table[2][in >> 16 & 255] | table[3][in >> 24];
  };
  for (int x = 0; x < width; x += 8) {
    uint64_t in;
    __builtin_memcpy(&in, from + x, 8);
    const uint64_t out =
        four(static_cast<uint32_t>(in)) | static_cast<uint64_t>(four(static_cast<uint32_t>(in >> 32))) << 32;
    __builtin_memcpy(row + x, &out, 8);
    if (frame != nullptr) __builtin_memcpy(frame + x, &out, 8);
  }
}
#endif

}  // namespace ppl::PPL_LEVEL
