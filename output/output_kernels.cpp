// The output stage's vector code for one level.
#include "output/output_kernels.h"

#include "platform/levels.h"
#include "tile/simd.h"

namespace ppl::PPL_LEVEL {

namespace {

// Stores a vector that belongs `at` bytes from the start of a run of n, or from its end when reversed.
template <class V>
PPL_INLINE void put(uint8_t* to, int n, int at, bool reversed, V v) {
  if (reversed)
    storeu(to + n - at - V::size, reverse8(v));
  else
    storeu(to + at, v);
}

void copy(uint8_t* to, const uint8_t* from, int n, bool reversed) {
  walk_exact(n, [&]<class V>(int x) { put(to, n, x, reversed, loadu<V>(from + x)); });
}

void halve(uint8_t* to, const uint8_t* from, int n, bool reversed) {
  walk_exact(n, [&]<class V>(int x) {
    put(to, n, x, reversed, even_bytes(loadu<V>(from + 2 * x), loadu<V>(from + 2 * x + V::size)));
  });
}

void widen(uint8_t* to, const uint8_t* from, int n, int outside, bool reversed) {
  walk_exact(n, [&]<class V>(int x) {
    const V sample = loadu<V>(from + x);
    const V mean = avg8(sample, loadu<V>(from + x - 1));
    V first, second;
    if (reversed) {
      // Ascending here, turned as a whole on the way out: the mean comes first there.
      interleave8(sample, mean, first, second);
      storeu(to + 2 * (n - x) - V::size, reverse8(first));
      storeu(to + 2 * (n - x) - 2 * V::size, reverse8(second));
    } else {
      interleave8(mean, sample, first, second);
      storeu(to + 2 * x, first);
      storeu(to + 2 * x + V::size, second);
    }
  });
  // The byte left of the run is nobody's: the first mean is made apart.
  to[reversed ? 2 * n - 2 : 0] = static_cast<uint8_t>((from[0] + outside + 1) >> 1);
}

void split_words(uint8_t* u, uint8_t* v, const uint8_t* words, int n, bool reversed) {
  walk_exact(n, [&]<class V>(int x) {
    const V a = loadu<V>(words + 2 * x), b = loadu<V>(words + 2 * x + V::size);
    put(u, n, x, reversed, even_bytes(a, b));
    put(v, n, x, reversed, odd_bytes(a, b));
  });
}

void split_every_second(uint8_t* u, uint8_t* v, const uint8_t* words, int n, bool reversed) {
  walk_exact(n, [&]<class V>(int x) {
    const auto at = [&](int i) { return loadu<V>(words + 4 * x + i * V::size); };
    // Two steps of every second: bytes (U, V) of all words, then every second of those.
    const V u_all[2] = {even_bytes(at(0), at(1)), even_bytes(at(2), at(3))};
    const V v_all[2] = {odd_bytes(at(0), at(1)), odd_bytes(at(2), at(3))};
    put(u, n, x, reversed, even_bytes(u_all[0], u_all[1]));
    put(v, n, x, reversed, even_bytes(v_all[0], v_all[1]));
  });
}

template <class V>
PPL_INLINE void put_twice(uint8_t* to, int n, int x, bool reversed, V v) {
  V first, second;
  interleave8(v, v, first, second);
  put(to, 2 * n, 2 * x, reversed, first);
  put(to, 2 * n, 2 * x + V::size, reversed, second);
}

void split_doubled(uint8_t* u, uint8_t* v, const uint8_t* words, int n, bool reversed) {
  walk_exact(n, [&]<class V>(int x) {
    const V a = loadu<V>(words + 2 * x), b = loadu<V>(words + 2 * x + V::size);
    put_twice(u, n, x, reversed, even_bytes(a, b));
    put_twice(v, n, x, reversed, odd_bytes(a, b));
  });
}

void mean(uint8_t* to, const uint8_t* a, const uint8_t* b, int n) {
  walk_exact(n, [&]<class V>(int x) { storeu(to + x, avg8(loadu<V>(a + x), loadu<V>(b + x))); });
}

}  // namespace

extern const output_kernels output_table;
const output_kernels output_table = {
    .copy = copy,
    .halve = halve,
    .widen = widen,
    .split_words = split_words,
    .split_every_second = split_every_second,
    .split_doubled = split_doubled,
    .mean = mean,
};

}  // namespace ppl::PPL_LEVEL
