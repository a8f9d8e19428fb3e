// The gaps round a record's working areas, closed and opened for the address sanitizer. Other builds have none.
#pragma once

#include "record/context.h"

#ifdef PPL_RECORD_GAPS
#include <sanitizer/asan_interface.h>
#endif

namespace ppl {

inline void close_gaps([[maybe_unused]] ppl_context& c) {
#ifdef PPL_RECORD_GAPS
  uint8_t* const gaps[] = {c.gap_before_rings, c.gap_before_scratch, c.gap_before_sums, c.gap_before_tables,
                           c.gap_after};
  for (uint8_t* const gap : gaps) ASAN_POISON_MEMORY_REGION(gap, sizeof c.gap_after);
#endif
}

inline void open_gaps([[maybe_unused]] ppl_context& c) {
#ifdef PPL_RECORD_GAPS
  ASAN_UNPOISON_MEMORY_REGION(&c, sizeof c);
#endif
}

}  // namespace ppl
