// The header and the helpers in a C++ program.
#include <ppl.hpp>

int main() {
  ppl::context context;
  ppl::buffer mosaic(64 * 32);
  const ppl::buffer picture = context.convert({mosaic, 64, 32}, ppl::format::rgb24);
  return context.quality() == ppl::quality::full && picture.size() == 3 * 64 * 32 ? 0 : 1;
}
