// The entry points of the output stage's vector code. Sources are row storage (see tile/kernels.h) and may be read
// up to the next multiple of 64; destinations are the caller's memory and get exactly the bytes told. Counts are
// multiples of 16. "reversed" writes the run end for end.
#pragma once

#include <stdint.h>

namespace ppl {

struct output_kernels {
  // n bytes as they are.
  void (*copy)(uint8_t* to, const uint8_t* from, int n, bool reversed);
  // The bytes at even places of 2n.
  void (*halve)(uint8_t* to, const uint8_t* from, int n, bool reversed);
  // 2n bytes from n samples: before each sample the rounded-up mean with the sample to its left. The sample left
  // of the first is `outside`. Reversed: descending columns, each with its mean in front.
  void (*widen)(uint8_t* to, const uint8_t* from, int n, int outside, bool reversed);
  // n U bytes and n V bytes from n words; every second word of 2n; each byte twice, 2n of n words.
  void (*split_words)(uint8_t* u, uint8_t* v, const uint8_t* words, int n, bool reversed);
  void (*split_every_second)(uint8_t* u, uint8_t* v, const uint8_t* words, int n, bool reversed);
  void (*split_doubled)(uint8_t* u, uint8_t* v, const uint8_t* words, int n, bool reversed);
  // Rounded-up means of two runs of the caller's memory.
  void (*mean)(uint8_t* to, const uint8_t* a, const uint8_t* b, int n);
};

}  // namespace ppl
