// The header in a C++ program.
#include <ppl.h>

int main() {
  ppl_context* context = ppl_init();
  return context && ppl_quality(context) == 15 && ppl_free(context) ? 0 : 1;
}
