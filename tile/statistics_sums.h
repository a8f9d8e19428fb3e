// From the sums that the statistics' kernel adds to (ppl_context::sums) to the fields of the record.
#pragma once

#include "record/context.h"

namespace ppl {

// Nothing added yet; at the start of a frame.
void clear_sums(statistics_sums& s);
// Before the row pair's statistics: what was added so far belongs to the cells of an earlier row of the grid, if the
// row pair is not in the same one. INT32_MAX stands for a row pair below the grid.
void enter_row_pair(ppl_context& c, int row_pair);
// At the end of a frame.
void settle_sums(ppl_context& c);

}  // namespace ppl
