// This room's vector code for one level.
#include "output/output_kernels.h"

#include "output/yuv_to_rgb-inl.h"
#include "record/levels.h"
#include "simd/packed-inl.h"
#include "simd/store_rgb-inl.h"

namespace ppl::PPL_LEVEL {

namespace {

// Walks a run of any length: step<V>(at, x) makes kBytes bytes of each of the samples x .. x + V::size - 1, and stores
// them at `at`. The last samples, where they do not fill a vector, are made in a block of their own and copied.
template <int kBytes, class Step>
PPL_INLINE void walk_run(uint8_t* to, int n, bool reversed, Step&& step) {
  const int whole = n & ~15, rest = n - whole;
  walk_exact(whole, [&]<class V>(int x) {
    step.template operator()<V>(to + kBytes * (reversed ? n - x - V::size : x), x);
  });
  if (rest == 0) return;
  uint8_t block[16 * kBytes];
  step.template operator()<vec16>(block, whole);
  __builtin_memcpy(reversed ? to : to + kBytes * whole, reversed ? block + kBytes * (16 - rest) : block,
                   size_t{kBytes} * static_cast<size_t>(rest));
}

// Two runs interleaved by samples of kSample bytes. Reversed, they are interleaved in ascending order, b first, and
// turned round as they are stored.
template <int kSample, class V>
PPL_INLINE void put_interleaved(uint8_t* at, bool reversed, V a, V b) {
  const auto interleave = [](V x, V y, V(&out)[2]) {
    kSample == 1 ? interleave8(x, y, out[0], out[1]) : interleave16(x, y, out[0], out[1]);
  };
  V out[2];
  if (reversed) {
    interleave(b, a, out);
    storeu(at, kSample == 1 ? reverse8(out[1]) : reverse16(out[1]));
    storeu(at + V::size, kSample == 1 ? reverse8(out[0]) : reverse16(out[0]));
  } else {
    interleave(a, b, out);
    storeu(at, out[0]);
    storeu(at + V::size, out[1]);
  }
}

// n bytes of samples of kSample bytes. tile_starts: all ones in the first sample of every tile, or null.
template <int kSample>
PPL_INLINE void widen_samples(uint8_t* to, const uint8_t* from, int n, const uint8_t* outside, bool reversed,
                              const uint8_t* tile_starts) {
  walk_run<2>(to, n, reversed, [&]<class V>(uint8_t* at, int x) {
    const V sample = loadu<V>(from + x);
    V left = loadu<V>(from + x - kSample);
    if (tile_starts != nullptr)
      left = select(to_mask8(repeat16<V>(tile_starts)), avg8(left, loadu<V>(from + x - 2 * kSample)), left);
    put_interleaved<kSample>(at, reversed, avg8(sample, left), sample);
  });
  // Left of the run are other bytes: the first mean is made again, from the sample outside.
  uint8_t* const first = to + (reversed ? 2 * (n - kSample) : 0);
  for (int i = 0; i < kSample; ++i) first[i] = static_cast<uint8_t>((from[i] + outside[i] + 1) >> 1);
}

void widen(uint8_t* to, const uint8_t* from, int n, widen_rule rule) {
  alignas(16) static constexpr uint8_t kStarts[2][16] = {{255, 0, 0, 0, 0, 0, 0, 0, 255}, {255}};
  widen_samples<1>(to, from, n, &rule.outside, rule.reversed,
                   !rule.reversed || rule.tile == 0 ? nullptr : kStarts[rule.tile == 16]);
}

void widen_words(uint8_t* to, const uint8_t* words, int n, bool reversed) {
  alignas(16) static constexpr uint8_t kStarts[16] = {255, 255};
  widen_samples<2>(to, words, 2 * n, words, reversed, reversed ? kStarts : nullptr);
}

// Stores a vector that belongs `at` bytes from the start of a run of n, or from its end when reversed.
template <class V>
PPL_INLINE void put(uint8_t* to, int n, int at, bool reversed, V v) {
  if (reversed)
    storeu(to + n - at - V::size, reverse8(v));
  else
    storeu(to + at, v);
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
    // All U bytes and all V bytes first, then every second of each.
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

void unbias(uint8_t* to, const uint8_t* from, int n) {
  walk_exact(n, [&]<class V>(int x) { storeu(to + x, loadu<V>(from + x) ^ set8<V>(0x80)); });
}

// ---- packed 4:2:2

// A vector of luma and one of words, interleaved, to 2 * V::size bytes.
template <byte_order kOrder, class V>
PPL_INLINE void put_packed(uint8_t* at, bool reversed, V luma, V words) {
  if (reversed) {
    luma = reverse8(luma);
    words = reverse16(words);
  }
  store_packed<kOrder>(at, luma, words);
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
    walk_run<2>(to, n, reversed, [&]<class V>(uint8_t* at, int x) {
      put_packed<kOrder>(at, reversed, loadu<V>(luma + x), loadu<V>(words + x));
    });
  });
}

void pack_halved(uint8_t* to, const uint8_t* luma, const uint8_t* words, int n, bool reversed,
                 byte_order order) {
  with_order(order, [&]<byte_order kOrder>() {
    walk_run<2>(to, n, reversed, [&]<class V>(uint8_t* at, int x) {
      const V y = even_bytes(loadu<V>(luma + 2 * x), loadu<V>(luma + 2 * x + V::size));
      const V a = loadu<V>(words + 2 * x), b = loadu<V>(words + 2 * x + V::size);
      const V u = even_bytes(even_bytes(a, b), zero<V>()), v = even_bytes(odd_bytes(a, b), zero<V>());
      V every_second, rest;
      interleave8(u, v, every_second, rest);
      put_packed<kOrder>(at, reversed, y, every_second);
    });
  });
}

// The direction is chosen outside the loop; a test inside it would cost at every step.
template <byte_order kOrder, bool kReversed>
PPL_INLINE void pack_doubled_run(uint8_t* to, const uint8_t* luma, const uint8_t* words, int n) {
  walk_run<4>(to, n, kReversed, [&]<class V>(uint8_t* at, int x) {
    const V sample = loadu<V>(luma + x), average = avg8(sample, loadu<V>(luma + x - 1));
    const V c = loadu<V>(words + x);
    V y[2], w[2];
    interleave16(c, c, w[0], w[1]);
    kReversed ? interleave8(sample, average, y[0], y[1]) : interleave8(average, sample, y[0], y[1]);
    for (int i = 0; i < 2; ++i)
      put_packed<kOrder>(at + 2 * V::size * (kReversed ? 1 - i : i), kReversed, y[i], w[i]);
  });
}

void pack_doubled(uint8_t* to, const uint8_t* luma, const uint8_t* words, int n, int outside, bool reversed,
                  byte_order order) {
  with_order(order, [&]<byte_order kOrder>() {
    reversed ? pack_doubled_run<kOrder, true>(to, luma, words, n)
             : pack_doubled_run<kOrder, false>(to, luma, words, n);
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
        walk_run<kBytes>(to, n, reversed, [&]<class V>(uint8_t* at, int x) {
          rgb<V> p = rgb_at<kKind, V>(from, x);
          if (reversed) p = {reverse8(p.r), reverse8(p.g), reverse8(p.b)};
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
    .widen = widen,
    .unbias = unbias,
    .split_words = split_words,
    .split_every_second = split_every_second,
    .split_doubled = split_doubled,
    .widen_words = widen_words,
    .pack = pack,
    .pack_halved = pack_halved,
    .pack_doubled = pack_doubled,
    .packed_gap = packed_gap,
    .rgb24 = interleaved<3>,
    .rgb32 = interleaved<4>,
    .rgb_planes = rgb_planes,
};

}  // namespace ppl::PPL_LEVEL
