#include "output/output.h"
namespace ppl {
namespace {
void nothing(output_writer&, int, const finished_rows&) {}
}  // namespace
void start_packed(output_writer& w, const frame_job&) {
  w.put = nothing;
}
void start_rgb24(output_writer& w, const frame_job&) {
  w.put = nothing;
}
void start_rgb32(output_writer& w, const frame_job&) {
  w.put = nothing;
}
}  // namespace ppl
