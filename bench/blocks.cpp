// Every entry of every kernel table alone: on rows of 640 samples that stay in the first-level cache, ns per pixel
// of the picture that the call covers. Names: TABLE/ENTRY/LEVEL.
#include "convert/convert_kernels.h"
#include "frame/scaler_kernels.h"
#include "measure.h"
#include "output/output_kernels.h"
#include "paths/kernels.h"
#include "record/context.h"
#include "record/levels.h"
#include "rows/row_kernels.h"
#include "tile/kernels.h"

namespace {

using namespace bench;
using namespace ppl;

constexpr int kWidth = 640, kPitch = 4 * kWidth + 128, kRows = 12;
constexpr int kTimes = 64;  // calls between two looks at the clock

// Rows as the kernels want them: starts at multiples of 64, filled at both sides. Content is that of the photograph.
class row_store {
 public:
  row_store() : memory_(size_t{kRows} * kPitch + 128) {
    for (int r = 0; r < kRows; ++r) places_[r] = (*this)[r];
    const buffer frame = mosaic(4 * kWidth, 2 * kRows, content::photograph);
    for (int r = 0; r < kRows; ++r)
      for (int x = -16; x < kPitch - 64; ++x)
        (*this)[r][x] = frame.data()[2 * r * 4 * kWidth + (x & ~1) + 16];
  }
  uint8_t* operator[](int r) const { return memory_.data() + 64 + r * kPitch; }
  // The pointers of rows r, r + 1 ...
  uint8_t* const* from(int r) const { return places_ + r; }

 private:
  buffer memory_;
  uint8_t* places_[kRows];
};

// Everything that a call may need.
struct bench_rows {
  frame_runner frame;  // a record that has seen a frame: its tables and vectors are those of real work
  row_store in, chroma, out;
  buffer lens{2 * kWidth + 64}, columns{256 * 1024};
  colour_matrix matrix{};

  explicit bench_rows(int level_number) : frame({.level_number = level_number}) {
    frame.call();
    const ppl_context& c = context();
    for (int i = 0; i < 9; ++i) matrix.coef[i] = c.yuv_coef[i];
    for (int row = 0; row < 3; ++row)
      for (int lane = 0; lane < 8; ++lane) {
        matrix.bias[row].lane[lane] = row > 0 ? 128 : 0;
        matrix.offset[row].lane[lane] = 32;
      }
    for (int x = 0; x < kWidth; ++x)
      reinterpret_cast<uint16_t*>(lens.data())[x] = uint16_t(8192 + (x > 320 ? x - 320 : 320 - x) * 8);
  }
  ppl_context& context() const { return *frame.context(); }
  const kernels& k() const { return *context().kernels; }
};

using call = void (*)(bench_rows&);
struct block {
  const char* name;
  double pixels;
  call run;
};

front_end_args front_end(bench_rows& b, bool lens, bool collect) {
  uint16_t* const factors = lens ? reinterpret_cast<uint16_t*>(b.lens.data()) : nullptr;
  return {.context = &b.context(),
          .source_even = b.in[0],
          .source_odd = b.in[1],
          .frame_even = b.out[0],
          .frame_odd = b.out[1],
          .row_even = b.out[2],
          .row_odd = b.out[3],
          .lens_even = factors,
          .lens_odd = factors,
          .black_even = collect ? b.out[4] : nullptr,
          .black_odd = collect ? b.out[5] : nullptr,
          .width = kWidth};
}

void statistics(bench_rows& b, bool plain_only) {
  b.k().tile->statistics({.context = &b.context(),
                          .black_even = b.in[0],
                          .black_odd = b.in[1],
                          .tone_even = b.in[2],
                          .tone_odd = b.in[3],
                          .plain_only = plain_only,
                          .last_tile = kWidth / kTile - 2,
                          .tile_lead = 1});
}

demosaic_args demosaic(bench_rows& b) {
  return {.rows = b.in.from(0),
          .green = b.in.from(5),
          .flat_mask = nullptr,
          .flat_r = nullptr,
          .flat_g = nullptr,
          .flat_b = nullptr,
          .matrix = &b.matrix,
          .plane = {b.out.from(0), b.out.from(2), nullptr},
          .made = 3,
          .with_chroma = 3,
          .with_flat = 0,
          .odd_row = 0,
          .width = kWidth};
}

using rgb_kind = decltype(rgb_source::kind);
rgb_source colours(const bench_rows& b, rgb_kind kind) {
  return {kind, {b.in[0], kind == rgb_source::yuv_words ? b.chroma[1] : b.in[1], b.in[2]}};
}

cell_rows cells(bench_rows& b) {
  return {.context = &b.context(),
          .even = b.in[0],
          .odd = b.in[1],
          .width = kWidth,
          .luma = {b.out[0], b.out[1]},
          .u = b.out[2],
          .v = b.out[3],
          .words = b.out[2],
          .r = b.out[4],
          .g = {b.out[5], b.out[6]},
          .b = b.out[7]};
}

scaler_columns columns(bench_rows& b) {
  scaler_columns c = {};
  c.step = (500u << 20) / kWidth;
  c.count = kWidth;
  c.limit = 499;
  c.memory = b.columns.data();
  c.memory_bytes = 64 * 1024;
  b.k().scaler->prepare(c);
  return c;
}

// The tone curve comes into force once per frame; all others are walked through for every row or row pair.
constexpr block kBlocks[] = {
    {"tile/prepare_tone (per call, not pixel)", 1,
     [](bench_rows& b) { b.k().tile->prepare_tone(b.context(), b.context().rgb_gamma_table); }},
    {"tile/front_end", 2 * kWidth, [](bench_rows& b) { b.k().tile->front_end(front_end(b, true, false)); }},
    {"tile/front_end with black rows", 2 * kWidth,
     [](bench_rows& b) { b.k().tile->front_end(front_end(b, true, true)); }},
    {"tile/front_end without lens", 2 * kWidth,
     [](bench_rows& b) { b.k().tile->front_end(front_end(b, false, false)); }},
    // Every second row pair is collected: four rows a call.
    {"tile/statistics", 4 * kWidth, [](bench_rows& b) { statistics(b, false); }},
    {"tile/statistics plain", 4 * kWidth, [](bench_rows& b) { statistics(b, true); }},
    {"tile/medium_filter", 2 * kWidth,
     [](bench_rows& b) {
       b.k().tile->medium_filter({.context = &b.context(),
                                  .rows = b.in.from(0),
                                  .out = b.out.from(0),
                                  .made = 3,
                                  .odd_row = 0,
                                  .width = kWidth});
     }},
    {"tile/green_fill", 2 * kWidth,
     [](bench_rows& b) {
       b.k().tile->green_fill({.context = &b.context(),
                               .rows = b.in.from(0),
                               .out = b.out.from(0),
                               .made = 3,
                               .odd_row = 0,
                               .width = kWidth});
     }},
    {"paths/flat_test", 2 * kWidth,
     [](bench_rows& b) {
       b.k().paths->flat_test({.context = &b.context(),
                               .rows = b.in.from(0),
                               .colour_rows = b.in.from(1),
                               .mask = b.out[0],
                               .r = b.out[1],
                               .g = b.out[2],
                               .b = b.out[3],
                               .odd_row = 0,
                               .width = kWidth});
     }},
    {"tile/demosaic_gradient", 2 * kWidth, [](bench_rows& b) { b.k().tile->demosaic_gradient(demosaic(b)); }},
    {"tile/demosaic_bilinear", 2 * kWidth, [](bench_rows& b) { b.k().tile->demosaic_bilinear(demosaic(b)); }},
    {"tile/demosaic_directed", 2 * kWidth, [](bench_rows& b) { b.k().tile->demosaic_directed(demosaic(b)); }},
    {"paths/mosaic_edge", 2 * kWidth,
     [](bench_rows& b) {
       b.k().paths->mosaic_edge({.context = &b.context(),
                                 .rows = {b.out[4], b.out[5], b.out[6], b.out[7]},
                                 .matrix = &b.matrix,
                                 .plane = {{b.out[0], b.out[1]}, {b.out[2], b.out[3]}, {}},
                                 .three_planes = 0,
                                 .width = kWidth});
     }},
    {"tile/noise_filter", 2 * kWidth,
     [](bench_rows& b) {
       b.k().tile->noise_filter({.context = &b.context(),
                                 .luma = b.in.from(0),
                                 .chroma = b.chroma.from(0),
                                 .luma_out = b.out.from(0),
                                 .chroma_out = b.out.from(2),
                                 .made = 3,
                                 .width = kWidth});
     }},
    {"tile/edge", 2 * kWidth,
     [](bench_rows& b) {
       b.k().tile->edge(
           {.context = &b.context(), .luma = b.in.from(0), .out = b.out.from(0), .made = 3, .width = kWidth});
     }},
    // Chroma of every second row is put out.
    {"tile/smooth", 2 * kWidth,
     [](bench_rows& b) {
       b.k().tile->smooth({.chroma = b.chroma.from(0),
                           .u_sums = b.out[0],
                           .v_sums = b.out[1],
                           .out = b.out.from(2),
                           .made = 1,
                           .width = kWidth});
     }},

    {"rows/copy", kWidth, [](bench_rows& b) { b.k().rows->copy(b.out[0], b.in[0], kWidth, false); }},
    {"rows/copy reversed", kWidth, [](bench_rows& b) { b.k().rows->copy(b.out[0], b.in[0], kWidth, true); }},
    {"rows/halve", kWidth, [](bench_rows& b) { b.k().rows->halve(b.out[0], b.in[0], kWidth / 2, false); }},
    {"output/widen", kWidth,
     [](bench_rows& b) {
       b.k().output->widen(b.out[0], b.in[0], kWidth, {9, false, 0});
     }},
    {"output/widen in tiles", kWidth,
     [](bench_rows& b) {
       b.k().output->widen(b.out[0], b.in[0], kWidth, {9, true, 16});
     }},
    {"rows/mean", kWidth, [](bench_rows& b) { b.k().rows->mean(b.out[0], b.in[0], b.in[1], kWidth); }},
    {"output/unbias", kWidth, [](bench_rows& b) { b.k().output->unbias(b.out[0], b.in[0], kWidth); }},
    // The words of one row serve two rows of I420.
    {"output/split_words", 2 * kWidth,
     [](bench_rows& b) { b.k().output->split_words(b.out[0], b.out[1], b.chroma[0], kWidth / 2, false); }},
    {"output/split_every_second", 2 * kWidth,
     [](bench_rows& b) {
       b.k().output->split_every_second(b.out[0], b.out[1], b.chroma[0], kWidth / 4, false);
     }},
    {"output/split_doubled", 2 * kWidth,
     [](bench_rows& b) { b.k().output->split_doubled(b.out[0], b.out[1], b.chroma[0], kWidth / 2, false); }},
    {"output/widen_words", kWidth,
     [](bench_rows& b) { b.k().output->widen_words(b.out[0], b.chroma[0], kWidth / 2, false); }},
    {"output/pack", kWidth,
     [](bench_rows& b) {
       b.k().output->pack(b.out[0], b.in[0], b.chroma[0], kWidth, false, byte_order::yuyv);
     }},
    {"output/pack_halved", kWidth,
     [](bench_rows& b) {
       b.k().output->pack_halved(b.out[0], b.in[0], b.chroma[0], kWidth / 2, false, byte_order::yuyv);
     }},
    {"output/pack_doubled", kWidth,
     [](bench_rows& b) {
       b.k().output->pack_doubled(b.out[0], b.in[0], b.chroma[0], kWidth, 9, false, byte_order::yuyv);
     }},
    {"output/packed_gap", kWidth,
     [](bench_rows& b) { b.k().output->packed_gap(b.out[0], b.in[0], b.in[1], 2 * kWidth); }},
    {"output/rgb24 of planes", kWidth,
     [](bench_rows& b) { b.k().output->rgb24(b.out[0], colours(b, rgb_source::planes), kWidth, false); }},
    {"output/rgb24 of yuv planes", kWidth,
     [](bench_rows& b) { b.k().output->rgb24(b.out[0], colours(b, rgb_source::yuv_planes), kWidth, false); }},
    {"output/rgb24 of yuv words", kWidth,
     [](bench_rows& b) { b.k().output->rgb24(b.out[0], colours(b, rgb_source::yuv_words), kWidth, false); }},
    {"output/rgb32 of planes", kWidth,
     [](bench_rows& b) { b.k().output->rgb32(b.out[0], colours(b, rgb_source::planes), kWidth, false); }},

    {"paths/cells_to_yuv", 2 * kWidth, [](bench_rows& b) { b.k().paths->cells_to_yuv(cells(b)); }},
    {"paths/cells_to_words", 2 * kWidth, [](bench_rows& b) { b.k().paths->cells_to_words(cells(b)); }},
    {"paths/cells_to_rgb", 2 * kWidth, [](bench_rows& b) { b.k().paths->cells_to_rgb(cells(b)); }},

    {"rows/fill", kWidth, [](bench_rows& b) { b.k().rows->fill(b.out[0], 2 * kWidth, 16, 128); }},
    {"convert/double_pair", 2 * kWidth,
     [](bench_rows& b) {
       uint8_t* const out[4] = {b.out[0], b.out[1], b.out[2], b.out[3]};
       b.k().convert->double_pair(out, b.in[0], b.in[1], b.out[4], kWidth);
     }},
    // One row in two is tested.
    {"convert/blend", 2 * kWidth,
     [](bench_rows& b) {
       b.k().convert->blend[0](b.out[0], nullptr,
                               {.kept = b.in[0], .below = b.in[1], .earlier = b.in[2], .later = b.in[3]},
                               kWidth, 50);
     }},
    {"convert/blend, kept row passed on", 2 * kWidth,
     [](bench_rows& b) {
       b.k().convert->blend[0](b.out[0], b.out[1],
                               {.kept = b.in[0], .below = b.in[1], .earlier = b.in[2], .later = b.in[3]},
                               kWidth, 50);
     }},
    {"convert/shrink_2", kWidth,
     [](bench_rows& b) { b.k().convert->shrink_2[0](b.out[0], b.in[0], kWidth); }},
    {"convert/shrink_4", kWidth,
     [](bench_rows& b) { b.k().convert->shrink_4[0](b.out[0], b.in[0], kWidth); }},
    {"convert/widen", kWidth, [](bench_rows& b) { b.k().convert->widen(b.out[0], b.in[0], kWidth); }},
    {"convert/swap", kWidth, [](bench_rows& b) { b.k().convert->swap(b.out[0], b.in[0], kWidth); }},
    {"convert/rgb24", kWidth, [](bench_rows& b) { b.k().convert->rgb24[0](b.out[0], b.in[0], kWidth); }},
    {"convert/planes", 2 * kWidth,
     [](bench_rows& b) {
       b.k().convert->planes[0][0]({.luma = {b.out[0], b.out[1]}, .u = b.out[2], .v = b.out[3]}, b.in[0],
                                   b.in[1], kWidth);
     }},
    {"convert/twelve_bit", kWidth,
     [](bench_rows& b) { b.k().convert->twelve_bit[0](b.out[0], b.out[1], b.in[0], kWidth / 32); }},

    {"scaler/prepare (per output of a line)", kWidth, [](bench_rows& b) { columns(b); }},
    {"rows/split", kWidth,
     [](bench_rows& b) { b.k().rows->split(b.out[0], b.out[1], b.out[2], b.in[0], kWidth); }},
    {"rows/join", kWidth,
     [](bench_rows& b) { b.k().rows->join(b.out[0], b.in[0], b.in[1], b.in[2], kWidth); }},
    {"scaler/blend", kWidth,
     [](bench_rows& b) { b.k().scaler->blend(b.in[0], b.in[1], 77, b.out[0], kWidth); }},
};

}  // namespace

int main(int argc, char** argv) {
  for (const level& l : levels()) {
    for (const block& k : kBlocks)
      add(std::string(k.name) + "/" + l.name, [k, l](benchmark::State& state) {
        bench_rows rows(l.number);
        measure_small(state, k.pixels, kTimes, [&] { k.run(rows); });
      });
    add(std::string("scaler/line/") + l.name, [l](benchmark::State& state) {
      bench_rows rows(l.number);
      const scaler_columns c = columns(rows);
      measure_small(state, kWidth, kTimes,
                    [&] { rows.k().scaler->line(c, rows.in[0], rows.out[0], 0, kWidth); });
    });
  }
  return run_all(argc, argv);
}
