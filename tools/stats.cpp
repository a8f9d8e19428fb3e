// ppl stats: the statistics of one Bayer frame, as a table to read or as JSON.
#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "bayer.h"
#include "commands.h"
#include "failure.h"
#include "file.h"
#include "frame_file.h"
#include "options.h"
#include "quality_list.h"

namespace tool {
namespace {

using Json = nlohmann::ordered_json;

struct Stats {
  FrameFile frame;
  Controls controls;
  uint32_t quality = PPL_QUALITY_DEFAULT;
  bool json = false;
  CLI::Option* quality_option = nullptr;
  std::string output = "-";

  void run();
};

Json colour(const uint32_t* rgb) {
  return Json::array({rgb[0], rgb[1], rgb[2]});
}

Json histogram(const uint32_t* bins) {
  return Json(std::vector<uint32_t>(bins, bins + 256));
}

Json gather(const ppl_context* context, const FrameFile& frame, uint32_t quality) {
  uint32_t columns = 0, rows = 0;
  ppl_n_sub_windows(context, &columns, &rows);
  Json grid = Json::array();
  const uint32_t* cells = ppl_rgb_means_sub_windows(context);
  for (uint32_t r = 0; r < rows; ++r) {
    Json line = Json::array();
    for (uint32_t c = 0; c < columns; ++c) line.push_back(colour(cells + 3 * (columns * r + c)));
    grid.push_back(line);
  }
  return Json{{"frame", {{"width", frame.width}, {"height", frame.height}, {"quality", quality}}},
              {"unit", "means are R, G, B in 1/256 of a sample step"},
              {"grid", {{"columns", columns}, {"rows", rows}, {"means", grid}}},
              {"outside_grid", colour(ppl_rgb_means_outside_all_sub_windows(context))},
              {"whole_grid", colour(ppl_rgb_means_all_sub_windows(context))},
              {"whole_frame", colour(ppl_rgb_means_whole_frame(context))},
              {"central_4_cells", colour(ppl_rgb_means_whole_frame_4pts(context))},
              {"centre_weighted",
               {{"4", colour(ppl_rgb_means_whole_frame_central4(context))},
                {"8", colour(ppl_rgb_means_whole_frame_central8(context))},
                {"16", colour(ppl_rgb_means_whole_frame_central16(context))}}},
              {"exposure",
               {{"cells", ppl_n_qAE_2x2_whole_frame(context)},
                {"means", colour(ppl_qAE_rgb_means_whole_frame(context))}}},
              {"qualified",
               {{"cells", ppl_n_qual_2x2_whole_frame(context)},
                {"means", colour(ppl_qual_rgb_means_whole_frame(context))}}},
              {"histograms",
               {{"r", histogram(ppl_r_histogram(context))},
                {"g", histogram(ppl_g_histogram(context))},
                {"b", histogram(ppl_b_histogram(context))}}}};
}

std::string triple(const Json& rgb) {
  char line[64];
  snprintf(line, sizeof line, "%6.1f %6.1f %6.1f", rgb[0].get<double>() / 256, rgb[1].get<double>() / 256,
           rgb[2].get<double>() / 256);
  return line;
}

std::string table(const Json& s) {
  std::string out =
      text("frame ", s["frame"]["width"], " x ", s["frame"]["height"], ", quality ", s["frame"]["quality"],
           "; means in sample steps, 0 to 255\n\ngrid, R G B of each cell\n");
  for (const Json& row : s["grid"]["means"]) {
    for (int c = 0; c < 3; ++c) {
      out += "RGB"[c];
      for (const Json& cell : row) {
        char value[16];
        snprintf(value, sizeof value, " %6.1f", cell[static_cast<size_t>(c)].get<double>() / 256);
        out += value;
      }
      out += "\n";
    }
    out += "\n";
  }
  const auto line = [&](const char* title, const Json& rgb, const std::string& more = "") {
    char head[32];
    snprintf(head, sizeof head, "%-24s", title);
    out += head + triple(rgb) + more + "\n";
  };
  out += "means                        R      G      B\n";
  line("whole frame", s["whole_frame"]);
  line("whole grid", s["whole_grid"]);
  line("outside the grid", s["outside_grid"]);
  line("four central cells", s["central_4_cells"]);
  line("centre weight 4", s["centre_weighted"]["4"]);
  line("centre weight 8", s["centre_weighted"]["8"]);
  line("centre weight 16", s["centre_weighted"]["16"]);
  // Estimates from the cells that were looked at, so they may come out a little above all there are.
  const uint64_t all = s["frame"]["width"].get<uint64_t>() * s["frame"]["height"].get<uint64_t>() / 4;
  const auto cells = [&](const char* kind) {
    return text("  about ", std::min(all, s[kind]["cells"].get<uint64_t>()), " of ", all, " cells");
  };
  line("exposure cells", s["exposure"]["means"], cells("exposure"));
  line("qualified cells", s["qualified"]["means"], cells("qualified"));
  out += "\nhistograms, eight bins a line\n  bins          R        G        B\n";
  const Json& h = s["histograms"];
  for (size_t bin = 0; bin < 256; bin += 8) {
    uint64_t sums[3] = {};
    const char* const colours[] = {"r", "g", "b"};
    for (size_t c = 0; c < 3; ++c)
      for (size_t i = 0; i < 8; ++i) sums[c] += h[colours[c]][bin + i].get<uint64_t>();
    char row[80];
    snprintf(row, sizeof row, "%3zu-%3zu %8" PRIu64 " %8" PRIu64 " %8" PRIu64 "\n", bin, bin + 7, sums[0],
             sums[1], sums[2]);
    out += row;
  }
  return out;
}

void Stats::run() {
  controls.take_quality(quality_option, quality);
  Job job;
  frame.settle(Format::bayer);
  job.sensor = frame.sensor();
  job.quality = quality;
  if (ppl_quality_table[quality].road == PPL_ROAD_RAW)
    misuse("quality ", quality, " gathers no statistics; use ",
           quality_list([](const ppl_quality_row& q) { return q.statistics != PPL_STATISTICS_NONE; }));
  require_possible(job, controls, Format::i420, frame.row_step());
  if (in_parts(job))
    misuse("statistics are gathered of frames up to 2016 x 2048, not ", frame.width, " x ", frame.height,
           "; -W, -H and --stride ", frame.row_step(), " cut a part out");
  controls.note_idle(quality);
  refuse_same_file(frame.paths[0], output);
  BayerWorker worker(job, controls, Format::i420);
  worker.source() = frame.read(Format::bayer);
  worker.convert();
  const Json figures = gather(worker.context(), frame, quality);
  const std::string shown = json ? figures.dump(2) + "\n" : table(figures);
  write_file(output, {reinterpret_cast<const uint8_t*>(shown.data()), shown.size()});
}

}  // namespace

void add_stats(CLI::App& app) {
  CLI::App* command = app.add_subcommand(
      "stats", "Exposure and white-balance statistics of one Bayer frame: grid, means, counts, histograms");
  const auto state = std::make_shared<Stats>();
  state->frame.add_options(*command, "File of headerless Bayer frames; - is standard input");
  command->add_flag("--json", state->json, "Write JSON instead of a table");
  command->add_option("-o,--output", state->output, "File to write; - is standard output")
      ->type_name("FILE")
      ->capture_default_str();
  state->quality_option =
      command->add_option("-q,--quality", state->quality, "Reconstruction that gathers them")
          ->capture_default_str()
          ->check(in_range(0, PPL_QUALITIES - 1));
  state->controls.add_options(*command);
  command->callback([state] { state->run(); });
}

}  // namespace tool
