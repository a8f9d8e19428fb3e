// Vector levels: the same kernels compiled for several register widths, and the choice among them.
//
// Every *_kernels.cpp is compiled once per level with PPL_LEVEL set to the level's name, and puts its functions
// in ppl::PPL_LEVEL. Each such file ends with one table of its entry points; a level is the set of its tables.
#pragma once

namespace ppl {

struct row_kernels;      // rows/row_kernels.h
struct tile_kernels;     // tile/kernels.h
struct path_kernels;     // paths/kernels.h
struct output_kernels;   // output/output_kernels.h
struct convert_kernels;  // convert/convert_kernels.h
struct scaler_kernels;   // frame/scaler_kernels.h

struct kernels {
  const char* name;
  const row_kernels* rows;
  const tile_kernels* tile;
  const path_kernels* paths;
  const output_kernels* output;
  const convert_kernels* convert;
  const scaler_kernels* scaler;
};

// The tables of one level.
#define PPL_DECLARE_LEVEL(level)              \
  namespace level {                           \
  extern const row_kernels row_table;         \
  extern const tile_kernels tile_table;       \
  extern const path_kernels path_table;       \
  extern const output_kernels output_table;   \
  extern const convert_kernels convert_table; \
  extern const scaler_kernels scaler_table;   \
  }
PPL_DECLARE_LEVEL(plain)
PPL_DECLARE_LEVEL(sse2)
PPL_DECLARE_LEVEL(sse41)
PPL_DECLARE_LEVEL(avx2)
PPL_DECLARE_LEVEL(avx512)
PPL_DECLARE_LEVEL(neon)
PPL_DECLARE_LEVEL(simd128)
#undef PPL_DECLARE_LEVEL
#define PPL_LEVEL_TABLES(level)                                                              \
  {                                                                                          \
#level, &level::row_table, &level::tile_table, &level::path_table, &level::output_table, \
        &level::convert_table, &level::scaler_table                                          \
  }

// Asks the processor once; ppl_init stores the answer in the record. Defined in platform/.
const kernels* choose_kernels();

}  // namespace ppl
