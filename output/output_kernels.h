// The entry points of the output stage's vector code, also used for frames made cell by cell; copies and halves of
// single planes are in rows/row_kernels.h. Sources are row storage (see tile/kernels.h) and may be read up to the next
// multiple of 64. Destinations get exactly the bytes told and may be the caller's memory. Counts are multiples of 16,
// or anything where it says "any n". "reversed" writes a run end for end.
#pragma once

#include <stdint.h>

#include "record/format.h"

namespace ppl {

// R, G, B of a row of pixels, or what they are made from: Y, U, V of every pixel, or Y and a row of words.
struct rgb_source {
  enum kind : uint8_t { planes, yuv_planes, yuv_words } kind;
  const uint8_t* plane[3];
};

// A row widened to twice its samples: before each the rounded-up mean of it and the sample to its left. Reversed:
// descending columns, each with its mean in front.
struct widen_rule {
  uint8_t outside;  // the sample left of the first
  bool reversed;
  // Where reversed, 8 or 16: the samples of a tile. A tile's first sample is then averaged with the mean of the two
  // samples to its left, not with the nearer one. 0: no tiles.
  uint8_t tile;
};

struct output_kernels {
  // ---- single planes
  // 2n bytes from n samples; any n.
  void (*widen)(uint8_t* to, const uint8_t* from, int n, widen_rule rule);
  // Bytes with the top bit flipped: without the 128 that was added.
  void (*unbias)(uint8_t* to, const uint8_t* from, int n);

  // ---- chroma words (U, V with 128 added for two columns) to planes: n U bytes and n V bytes from n words; every
  // second of 2n words; each byte twice
  void (*split_words)(uint8_t* u, uint8_t* v, const uint8_t* words, int n, bool reversed);
  void (*split_every_second)(uint8_t* u, uint8_t* v, const uint8_t* words, int n, bool reversed);
  void (*split_doubled)(uint8_t* u, uint8_t* v, const uint8_t* words, int n, bool reversed);

  // 2n words from n, as widen makes bytes: tiles of 8 words, the first word its own neighbour; any n.
  void (*widen_words)(uint8_t* to, const uint8_t* words, int n, bool reversed);

  // ---- packed 4:2:2: n pixels of luma and words; reversed by pixels, U still before V
  void (*pack)(uint8_t* to, const uint8_t* luma, const uint8_t* words, int n, bool reversed,
               byte_order order);
  // Every second column of 2n, with the words of every second pair; any n.
  void (*pack_halved)(uint8_t* to, const uint8_t* luma, const uint8_t* words, int n, bool reversed,
                      byte_order order);
  auto pack_or_halve(bool halved) const { return halved ? pack_halved : pack; }
  // 2n pixels from n: luma as in widen without tiles, each word twice.
  void (*pack_doubled)(uint8_t* to, const uint8_t* luma, const uint8_t* words, int n, int outside,
                       bool reversed, byte_order order);
  // The row between two rows of packed pixels, n bytes, a multiple of 64. Of every 64 bytes only the first 32 are
  // means of a (at the lower address) and b; the third and the fourth 16 are means of a and of the second 16.
  void (*packed_gap)(uint8_t* to, const uint8_t* a, const uint8_t* b, int n);

  // ---- RGB: n pixels as B, G, R or B, G, R, 0; any n
  void (*rgb24)(uint8_t* to, const rgb_source& from, int n, bool reversed);
  void (*rgb32)(uint8_t* to, const rgb_source& from, int n, bool reversed);
  auto rgb(out_format format) const { return format == out_format::rgb24 ? rgb24 : rgb32; }
  // The same conversion to planes; n a multiple of 16.
  void (*rgb_planes)(uint8_t* const to[3], const rgb_source& from, int n);
};

}  // namespace ppl
