// The row kernels for one level.
#include "rows/row_kernels.h"

#include "record/format.h"
#include "record/levels.h"
#include "simd/packed-inl.h"

namespace ppl::PPL_LEVEL {
namespace {

// Runs step<V>(position) over n samples: wide steps, 16-byte steps, and the rest one by one.
template <class Step, class Tail>
PPL_INLINE void walk_any(int64_t n, Step&& step, Tail&& tail) {
  int64_t x = 0;
  for (; x + kWidth <= n; x += kWidth) step.template operator()<wide>(x);
  if constexpr (kWidth > 16) {
    for (; x + 16 <= n; x += 16) step.template operator()<vec16>(x);
  }
  for (; x < n; ++x) tail(x);
}

// Keeps the compiler from turning a loop over single bytes into a call of the run-time library.
PPL_INLINE void put_byte(uint8_t* to, uint8_t value) {
  *static_cast<volatile uint8_t*>(to) = value;
}

// Runs body<reversed>(), and puts what belongs at x of n bytes at its place, or as far from the end.
template <class Body>
PPL_INLINE void with_direction(bool reversed, Body&& body) {
  reversed ? body.template operator()<true>() : body.template operator()<false>();
}
template <bool kReversed, class V>
PPL_INLINE void put(uint8_t* to, int64_t n, int64_t x, V v) {
  kReversed ? storeu(to + n - x - V::size, reverse8(v)) : storeu(to + x, v);
}
template <bool kReversed>
PPL_INLINE void put_one(uint8_t* to, int64_t n, int64_t x, uint8_t value) {
  put_byte(to + (kReversed ? n - 1 - x : x), value);
}

void copy(uint8_t* to, const uint8_t* from, int64_t n, bool reversed) {
  with_direction(reversed, [&]<bool kReversed>() {
    walk_any(
        n, [&]<class V>(int64_t x) { put<kReversed>(to, n, x, loadu<V>(from + x)); },
        [&](int64_t x) { put_one<kReversed>(to, n, x, from[x]); });
  });
}

void halve(uint8_t* to, const uint8_t* from, int64_t n, bool reversed) {
  with_direction(reversed, [&]<bool kReversed>() {
    walk_any(
        n,
        [&]<class V>(int64_t x) {
          put<kReversed>(to, n, x, even_bytes(loadu<V>(from + 2 * x), loadu<V>(from + 2 * x + V::size)));
        },
        [&](int64_t x) { put_one<kReversed>(to, n, x, from[2 * x]); });
  });
}

void fill(uint8_t* to, int64_t n, uint8_t even_byte, uint8_t odd_byte) {
  const int word = even_byte | odd_byte << 8;
  walk_any(
      n, [&]<class V>(int64_t x) { storeu(to + x, set16<V>(word)); },
      [&](int64_t x) { put_byte(to + x, x & 1 ? odd_byte : even_byte); });
}

void mean(uint8_t* to, const uint8_t* a, const uint8_t* b, int64_t n) {
  walk_any(
      n, [&]<class V>(int64_t x) { storeu(to + x, avg8(loadu<V>(a + x), loadu<V>(b + x))); },
      [&](int64_t x) { put_byte(to + x, static_cast<uint8_t>((a[x] + b[x] + 1) >> 1)); });
}

void split(uint8_t* y, uint8_t* u, uint8_t* v, const uint8_t* row, uint32_t pixels) {
  walk_exact(static_cast<int>(pixels / 2), [&]<class V>(int x) {
    V words[4];
    for (int k = 0; k < 4; ++k) words[k] = loadu<V>(row + 4 * x + V::size * k);
    storeu(y + 2 * x, even_bytes(words[0], words[1]));
    storeu(y + 2 * x + V::size, even_bytes(words[2], words[3]));
    const V lo = odd_bytes(words[0], words[1]), hi = odd_bytes(words[2], words[3]);
    storeu(u + x, even_bytes(lo, hi));
    storeu(v + x, odd_bytes(lo, hi));
  });
}

void join(uint8_t* row, const uint8_t* y, const uint8_t* u, const uint8_t* v, uint32_t pixels) {
  walk_exact(static_cast<int>(pixels / 2), [&]<class V>(int x) {
    V chroma[2];
    interleave8(loadu<V>(u + x), loadu<V>(v + x), chroma[0], chroma[1]);
    for (int k = 0; k < 2; ++k)
      store_packed<byte_order::yuyv>(row + 4 * x + 2 * V::size * k, loadu<V>(y + 2 * x + V::size * k),
                                     chroma[k]);
  });
}

}  // namespace

extern const row_kernels row_table;
const row_kernels row_table = {
    .copy = copy, .fill = fill, .halve = halve, .mean = mean, .split = split, .join = join};

}  // namespace ppl::PPL_LEVEL
