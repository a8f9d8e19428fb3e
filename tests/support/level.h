// Holding the library to a vector level; only in the library that the tests link.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// How many levels this processor runs: 1 or more. Level 0 is the narrowest.
int ppl_test_levels(void);
const char* ppl_test_level_name(int level);
// From the next ppl_init on: 0 to ppl_test_levels() - 1, or -1 for the widest. Levels that this processor does not
// run count as the widest.
void ppl_test_force_level(int level);

#ifdef __cplusplus
}
#endif
