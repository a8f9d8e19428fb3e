// A path takes one frame from the caller's source to the caller's destination and fills the sums of its statistics.
#pragma once

#include "paths/qualities.h"
#include "record/job.h"

namespace ppl {

// PPL_ROAD_WALK: block by block (paths/walked.cpp).
void run_walked_path(const frame_job& job, const quality_row& quality);
// PPL_ROAD_CELLS: each cell from its own four samples (paths/cells.cpp).
void run_cells_path(const frame_job& job, const quality_row& quality);

}  // namespace ppl
