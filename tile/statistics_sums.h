// From the sums that the statistics' kernel adds to (ppl_context::sums) to the fields of the record.
#pragma once

#include "record/context.h"

namespace ppl {

// At the start of a frame: nothing added yet.
void clear_sums(statistics_sums& s);
// Before the row pair's statistics. If it lies in another row of the grid than those before it, what was added so far
// goes to the cells of theirs. INT32_MAX is a row pair below the grid.
void enter_row_pair(ppl_context& c, int row_pair);
// At the end of a frame: what is left goes to the record.
void settle_sums(ppl_context& c);

}  // namespace ppl
