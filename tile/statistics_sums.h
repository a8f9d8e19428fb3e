// From the sums that the statistics' kernel adds to (ppl_context::sums) to the fields of the record.
#pragma once

#include "record/context.h"

namespace ppl {

// At the start of a frame: nothing added yet.
void clear_sums(statistics_sums& s);
// Before the row pair's statistics. If it lies in another row of the grid than the row pair before, the sums so far go
// to the cells of that row. INT32_MAX is a row pair below the grid.
void enter_row_pair(ppl_context& c, int row_pair);
// At the end of a frame: the sums that are left go to the record.
void settle_sums(ppl_context& c);

}  // namespace ppl
