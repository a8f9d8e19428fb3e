// The pool of eight records: claiming one, giving it back, clearing all.
//
// Claiming is a plain test and store: callers serialise ppl_init. Giving a record back clears two flags and
// nothing else, so size, frame count, statistics and leftovers pass on to the next owner of the slot.
#include "record/context.h"
#include "record/gaps.h"
#include "record/levels.h"

namespace ppl {

ppl_context context_pool[kPoolRecords];

}  // namespace ppl

// Not exported: the load entry of the platform calls it, so that an image that stays loaded starts afresh.
extern "C" void ppl_clear_pool();

void ppl_clear_pool() {
  for (ppl_context& c : ppl::context_pool) ppl::open_gaps(c);
  __builtin_memset(static_cast<void*>(ppl::context_pool), 0, sizeof ppl::context_pool);
}

ppl_context* ppl_init(void) {
  for (ppl_context& c : ppl::context_pool) {
    if (c.in_use) continue;
    c.in_use = 1;
    ppl::close_gaps(c);
    c.kernels = ppl::choose_kernels();
    ppl_reset_all_controls(&c);  // answers false: the default lens correction has no table
    c.claimed_flag = 1;
    return &c;
  }
  return nullptr;
}

uint8_t ppl_free(ppl_context* c) {
  if (!c) return 0;
  c->claimed_flag = 0;
  c->in_use = 0;
  return 1;
}
