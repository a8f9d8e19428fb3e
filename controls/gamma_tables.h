// The library-wide gamma tables: 65 tone curves, from the darkest (row 0) over the default (row 32) to the
// brightest (row 64), in full range and in studio range. A caller may replace either block for all contexts.
//
// The built-in data is written by controls/generate_gamma_tables.py, which has the rule.
#pragma once

#include <stdint.h>

namespace ppl {

constexpr int kGammaRows = 65;
constexpr int kGammaBlockBytes = kGammaRows * 256;

extern uint8_t gamma_tables65x256[kGammaRows][256];
// Only stored and given back: no frame reads it.
extern uint8_t gamma_tables65x256_16_235[kGammaRows][256];

// The exponent of each row, 20.12: 0.45 x e^(-3 i / 64) for i = row - 32, truncated.
extern const uint16_t kGammaValues[kGammaRows];

}  // namespace ppl
