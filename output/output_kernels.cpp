// The output stage's vector code for one level.
#include "output/output_kernels.h"

#include "output/yuv_to_rgb.h"
#include "platform/levels.h"
#include "tile/simd.h"
#include "tile/store_rgb.h"

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

void unbias(uint8_t* to, const uint8_t* from, int n) {
  walk_exact(n, [&]<class V>(int x) { storeu(to + x, loadu<V>(from + x) ^ set8<V>(0x80)); });
}

// ---- packed 4:2:2

// A vector of luma and one of words, interleaved, to 2 * V::size bytes that belong 2x from a run's start or end.
template <byte_order kOrder, class V>
PPL_INLINE void put_packed(uint8_t* to, int n, int x, bool reversed, V luma, V words) {
  V first, second;
  if (reversed) words = reverse16(words);
  if (kOrder == byte_order::yuyv)
    interleave8(luma, words, first, second);
  else
    interleave8(words, luma, first, second);
  uint8_t* const at = reversed ? to + 2 * (n - x - V::size) : to + 2 * x;
  storeu(at, first);
  storeu(at + V::size, second);
}

// Runs body<order>() for the order asked for.
template <class Body>
PPL_INLINE void with_order(byte_order order, Body&& body) {
  if (order == byte_order::yuyv)
    body.template operator()<byte_order::yuyv>();
  else
    body.template operator()<byte_order::uyvy>();
}

void pack(uint8_t* to, const uint8_t* luma, const uint8_t* words, int n, bool reversed, byte_order order) {
  with_order(order, [&]<byte_order kOrder>() {
    walk_exact(n, [&]<class V>(int x) {
      const V y = loadu<V>(luma + x);
      put_packed<kOrder>(to, n, x, reversed, reversed ? reverse8(y) : y, loadu<V>(words + x));
    });
  });
}

void pack_halved(uint8_t* to, const uint8_t* luma, const uint8_t* words, int n, bool reversed,
                 byte_order order) {
  with_order(order, [&]<byte_order kOrder>() {
    walk_exact(n, [&]<class V>(int x) {
      const V y = even_bytes(loadu<V>(luma + 2 * x), loadu<V>(luma + 2 * x + V::size));
      const V a = loadu<V>(words + 2 * x), b = loadu<V>(words + 2 * x + V::size);
      const V u = even_bytes(even_bytes(a, b), zero<V>()), v = even_bytes(odd_bytes(a, b), zero<V>());
      V every_second, rest;
      interleave8(u, v, every_second, rest);
      put_packed<kOrder>(to, n, x, reversed, reversed ? reverse8(y) : y, every_second);
    });
  });
}

void pack_doubled(uint8_t* to, const uint8_t* luma, const uint8_t* words, int n, int outside, bool reversed,
                  byte_order order) {
  with_order(order, [&]<byte_order kOrder>() {
    walk_exact(n, [&]<class V>(int x) {
      const V sample = loadu<V>(luma + x), average = avg8(sample, loadu<V>(luma + x - 1));
      const V c = loadu<V>(words + x);
      V y[2], w[2];
      interleave16(c, c, w[0], w[1]);
      if (reversed)
        interleave8(sample, average, y[0], y[1]);
      else
        interleave8(average, sample, y[0], y[1]);
      for (int i = 0; i < 2; ++i)
        put_packed<kOrder>(to, 2 * n, 2 * x + i * V::size, reversed, reversed ? reverse8(y[i]) : y[i], w[i]);
    });
  });
  const int luma_byte = order == byte_order::yuyv ? 0 : 1;
  to[(reversed ? 4 * n - 4 : 0) + luma_byte] = static_cast<uint8_t>((luma[0] + outside + 1) >> 1);
}

void packed_gap(uint8_t* to, const uint8_t* a, const uint8_t* b, int n) {
  using V = vec16;
  for (int x = 0; x < n; x += 64) {
    const V m0 = avg8(loadu<V>(b + x), loadu<V>(a + x));
    const V m1 = avg8(loadu<V>(b + x + 16), loadu<V>(a + x + 16));
    storeu(to + x, m0);
    storeu(to + x + 16, m1);
    storeu(to + x + 32, avg8(m1, loadu<V>(a + x + 32)));
    storeu(to + x + 48, avg8(m1, loadu<V>(a + x + 48)));
  }
}

// ---- RGB

// Runs body<kind>() for the source's kind.
template <class Body>
PPL_INLINE void with_kind(const rgb_source& s, Body&& body) {
  switch (s.kind) {
    case rgb_source::planes:
      body.template operator()<rgb_source::planes>();
      break;
    case rgb_source::yuv_planes:
      body.template operator()<rgb_source::yuv_planes>();
      break;
    case rgb_source::yuv_words:
      body.template operator()<rgb_source::yuv_words>();
      break;
  }
}

template <int kBytes>
void interleaved(uint8_t* to, const rgb_source& from, int n, bool reversed) {
  with_kind(
      from, [&]<enum rgb_source::kind kKind>() {
        walk_exact(n, [&]<class V>(int x) {
          rgb<V> p = rgb_at<kKind, V>(from, x);
          if (reversed) p = {reverse8(p.r), reverse8(p.g), reverse8(p.b)};
          uint8_t* const at = to + kBytes * (reversed ? n - x - V::size : x);
          if constexpr (kBytes == 3)
            store_bgr(at, p.b, p.g, p.r);
          else
            store_bgr0(at, p.b, p.g, p.r);
        });
      });
}

void rgb_planes(uint8_t* const to[3], const rgb_source& from, int n) {
  with_kind(
      from, [&]<enum rgb_source::kind kKind>() {
        walk_exact(n, [&]<class V>(int x) {
          const rgb<V> p = rgb_at<kKind, V>(from, x);
          storeu(to[0] + x, p.r);
          storeu(to[1] + x, p.g);
          storeu(to[2] + x, p.b);
        });
      });
}

}  // namespace

extern const output_kernels output_table;
const output_kernels output_table = {
    .copy = copy,
    .halve = halve,
    .widen = widen,
    .mean = mean,
    .unbias = unbias,
    .split_words = split_words,
    .split_every_second = split_every_second,
    .split_doubled = split_doubled,
    .pack = pack,
    .pack_halved = pack_halved,
    .pack_doubled = pack_doubled,
    .packed_gap = packed_gap,
    .rgb24 = interleaved<3>,
    .rgb32 = interleaved<4>,
    .rgb_planes = rgb_planes,
};

}  // namespace ppl::PPL_LEVEL
