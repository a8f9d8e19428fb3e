#include "tile/pads.h"

namespace ppl {

void pad_samples(uint8_t* const* rows, row_bits made, int width) {
  each_row(made, [&](int i) { pad_samples(rows[i], width); });
}

void pad_words(uint8_t* const* rows, row_bits made, int width) {
  each_row(made, [&](int i) { pad_words(rows[i], width); });
}

}  // namespace ppl
