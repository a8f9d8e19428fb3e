// A square in the plane; with BOTH, a picture of the other library in the same program.
#include <ppl.hh>
#ifdef BOTH
#include <ppl.hpp>
#endif

namespace PPL = Parma_Polyhedra_Library;

int main() {
  const PPL::Variable x(0), y(1);
  PPL::C_Polyhedron square(2);
  square.add_constraint(x >= 0);
  square.add_constraint(x <= 3);
  square.add_constraint(y >= 0);
  square.add_constraint(y <= 3);
  PPL::Coefficient most, denominator;
  bool reached;
  if (!square.maximize(x + y, most, denominator, reached) || most != 6 * denominator) return 1;
#ifdef BOTH
  ppl::context context;
  ppl::buffer mosaic(64 * 32);
  if (context.convert({mosaic, 64, 32}, ppl::format::rgb24).size() != 3 * 64 * 32) return 2;
#endif
  return 0;
}
