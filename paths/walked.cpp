// The frames that walk: which stages a quality's frame goes through in a format, the last of them the format's.
#include "output/output.h"
#include "paths/paths.h"
#include "record/levels.h"

namespace ppl {

namespace {

// A walk with the writer that takes its rows. It is kept in the record's scratch, after what walk and blocks take,
// because a kernel's stack is small.
struct walked_frame : walk {
  output_writer* writer;
};
constexpr int kFrameScratch = (kBlockScratch + 63) / 64 * 64;
static_assert(kFrameScratch + static_cast<int>(sizeof(walked_frame)) <= kScratchBytes - kOutputScratch);

// Reads the rings of two or three planes and, where the format asks for them, the chroma words before noise filter and
// smoothing. Row pair by row pair.
void output_stage(walk& w, const stage& s, int first) {
  output_writer& writer = *static_cast<walked_frame&>(w).writer;
  const auto row_pair = [&](ring_id ring, int r) { return ring != no_ring ? w.rows(ring, r) : nullptr; };
  for (int r = first; r < first + w.step && r < w.height; r += 2)
    if (r >= 0)
      writer.put(
          writer, r / 2,
          {{w.rows(s.reads[0], r), w.rows(s.reads[1], r), row_pair(s.reads[2], r)}, row_pair(s.reads[3], r)});
}
constexpr stage_kind kOutput = {.run = output_stage, .first = stage_kind::even_row};

constexpr stage_list plan_stages(const quality_row& q, bool medium_filter, bool three_planes,
                                 bool unfiltered_chroma) {
  stage_list plan;
  plan.add(kFrontEnd, {}, {medium_filter ? median_ring : mosaic_ring});
  if (medium_filter) plan.add(kMediumFilter, {median_ring}, {mosaic_ring});

  const demosaic_block& block = *q.demosaic;
  if (block.reads_green) plan.add(kGreenFill, {mosaic_ring}, {green_ring});
  plan.add(block.stage, {mosaic_ring, block.reads_green ? green_ring : no_ring},
           {luma_ring, chroma_ring, third_plane_ring});

  ring_id luma = luma_ring, chroma = chroma_ring;
  if (q.noise_filter) {
    plan.add(kNoiseFilter, {luma, chroma}, {luma_nf_ring, chroma_nf_ring});
    luma = luma_nf_ring;
    chroma = chroma_nf_ring;
  }
  if (q.edge) {
    plan.add(kEdge, {luma}, {luma_out_ring});
    luma = luma_out_ring;
  }
  if (q.noise_filter) {
    plan.add(kChromaSmoothing, {chroma}, {chroma_out_ring});
    chroma = chroma_out_ring;
  }
  plan.add(
      kOutput,
      {luma, chroma, three_planes ? third_plane_ring : no_ring, unfiltered_chroma ? chroma_ring : no_ring},
      {no_ring});
  return plan;
}

constexpr bool forms_planes(const quality_row& q, out_format format) {
  return is_rgb(format) && q.rgb != rgb_form::yuv_words;
}

// Every quality's rings have their place, whatever the format.
constexpr bool all_fit() {
  for (const quality_row& q : quality_rows)
    for (int form = 0; q.walks() && form < 8; ++form) {
      const bool medium = (form & 1) != 0 && q.facts().reads_medium_filter != 0;
      const bool planes = (form & 2) != 0 && q.rgb != rgb_form::yuv_words;
      const bool unfiltered = (form & 4) != 0 && q.rgb == rgb_form::yuv_words;
      if (!plan_stages(q, medium, planes, unfiltered).fits()) return false;
    }
  return true;
}
static_assert(all_fit());

// The rows of the matrix form Y and chroma words; with three planes R, G, B; or Y, U, V where luma is sharpened first.
void load_matrix(walk& w, rgb_form rgb) {
  const ppl_context& c = *w.context;
  const bool yuv2 = w.three_planes && rgb == rgb_form::yuv_planes;
  const vec_i16* const coef = !w.three_planes ? c.yuv_coef : yuv2 ? c.yuv2_coef : c.rgb_coef;
  for (int i = 0; i < 9; ++i) w.matrix.coef[i] = coef[i];
  for (int row = 0; row < 3; ++row) {
    const bool chroma = row > 0 && (!w.three_planes || yuv2);
    for (int lane = 0; lane < 8; ++lane) {
      w.matrix.bias[row].lane[lane] = chroma ? 128 : 0;
      w.matrix.offset[row].lane[lane] = 32;
    }
    if (!chroma)
      w.matrix.offset[row] = !w.three_planes ? c.luma_offset : yuv2 ? c.yuv2_offset : c.rgb_offset_vector;
  }
}

}  // namespace

void run_walked_path(const frame_job& job, const quality_row& q) {
  ppl_context* const c = job.context;
  if (c->tiles_per_row < 1 || c->row_pairs < 1) return;
  const bool medium_filter = c->medium_filter_enabled != 0 && q.facts().reads_medium_filter != 0;
  const quality_form& form = q.form(medium_filter);
  output_writer writer = make_writer(job, {q.rgb, form.between, form.bottom});
  walked_frame& w = *static_cast<walked_frame*>(static_cast<void*>(c->scratch + kFrameScratch));
  w.writer = &writer;
  w.context = c;
  w.kernels = c->kernels->tile;
  w.source = job.source;
  w.tiles = c->tiles_per_row;
  w.row_pairs = c->row_pairs;
  w.width = w.tiles * kTile;
  w.height = 2 * w.row_pairs;
  w.statistics = {(q.facts().statistics & PPL_STATISTICS_RANGES) == 0, form.lead_row_pairs, form.lead_tiles,
                  form.bottom, form.right};
  w.first_filtered_row_pair = form.first_filtered_row_pair;
  w.demosaic = q.demosaic->kernel;
  w.three_planes = forms_planes(q, job.format);
  // Halved pictures use even rows alone; I420 uses the chroma of even rows, halved of every second of those.
  const bool halved = c->decimation > 0;
  w.luma_rows = halved && writer.ordinary ? kEvenRows : kEveryRow;
  w.chroma_rows = job.format != out_format::i420 ? w.luma_rows : halved ? kEverySecondEvenRow : kEvenRows;
  load_matrix(w, q.rgb);
  start_flat_colours(w, *q.demosaic, q.edge);
  w.kernels->prepare_tone(*c, c->rgb_gamma_table);
  run_walk(w, plan_stages(q, medium_filter, w.three_planes, writer.wants_unfiltered_chroma));
}

}  // namespace ppl
