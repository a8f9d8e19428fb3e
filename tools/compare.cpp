// ppl compare: the same frame at every quality on one labelled sheet, with PSNR and SSIM where the truth is known; or
// one picture beside another.
#include <cctype>
#include <cstdio>
#include <memory>

#include "bayer.h"
#include "commands.h"
#include "failure.h"
#include "file.h"
#include "frame_file.h"
#include "likeness.h"
#include "options.h"
#include "sheet.h"

namespace tool {
namespace {

struct Kind {
  uint32_t quality;
  bool medium;
  const char* what;
};

// From the cheapest to the finest. Qualities 10 and 11 come last: what they leave in a context shows in later
// frames of qualities 0 and 1.
constexpr Kind kinds[] = {
    {13, false, "the mosaic"},
    {12, false, "the mosaic, sharpened"},
    {3, false, "cell by cell"},
    {2, false, "bilinear"},
    {2, true, "bilinear"},
    {15, false, "noise filter, sharpened"},
    {1, false, "edge-directed"},
    {1, true, "edge-directed"},
    {0, false, "edge-directed, sharpened"},
    {0, true, "edge-directed, sharpened"},
    {11, false, "edge-directed, flat areas"},
    {10, false, "flat areas, sharpened"},
};

struct Compare {
  // By way of I420, which all qualities make from the same rows of the colour matrix.
  Job job(const Kind& kind) const;

  FrameFile frame;
  Controls controls;
  std::string truth, differences, output = "compare.png", via = "i420";
  uint32_t columns = 4;

  void run();
  void compare_pictures();
  void compare_qualities();
};

Job Compare::job(const Kind& kind) const {
  Job job;
  job.sensor = frame.sensor();
  job.quality = kind.quality;
  job.via_i420 = via == "i420";
  return job;
}

bool ends_in_png(std::string path) {
  for (char& c : path) c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
  return path.ends_with(".png");
}

// A picture that was made elsewhere, held to the truth.
void Compare::compare_pictures() {
  if (truth.empty()) misuse("a picture is compared with another one: name it with --truth");
  if (frame.recording()) misuse("one picture at a time is compared");
  const Picture right = read_png(truth);
  const Picture picture = read_png(frame.paths[0], Size{right.width, right.height});
  if (!differences.empty()) write_file(differences, encode_png(difference(picture, right)));
  OutputFile("-").write(describe(likeness(picture, right)) + "\n");
}

void Compare::compare_qualities() {
  frame.settle(Format::bayer);
  if (controls.medium_filter()) misuse("--medium-filter is shown beside its absence; leave the option out");
  for (const Kind& kind : kinds) require_possible(job(kind), controls, Format::png, frame.row_step());
  controls.note_idle(0);
  const Bytes source = frame.read(Format::bayer);
  Picture right;
  if (!truth.empty()) right = read_png(truth, Size{frame.width, frame.height});
  std::vector<Panel> panels, off;
  std::string table;
  for (const Kind& kind : kinds) {
    const Job made = job(kind);
    BayerWorker worker(made, controls, Format::png);
    if (kind.medium) ppl_enable_medium_filter(worker.context());
    worker.source() = source;
    Picture picture = worker.picture();
    std::string label = text("quality ", kind.quality, kind.medium ? " + medium filter: " : ": ", kind.what);
    if (!truth.empty()) {
      const std::string alike = describe(likeness(picture, right));
      char line[96];
      snprintf(line, sizeof line, "quality %2u%s  %s\n", kind.quality,
               kind.medium ? " + medium filter" : "                ", alike.c_str());
      table += line;
      label += text("  -  ", alike);
      if (!differences.empty()) off.push_back({label, difference(picture, right)});
    }
    panels.push_back({label, std::move(picture)});
  }
  if (!truth.empty()) panels.push_back({"the truth", std::move(right)});
  write_file(output, encode_png(make_sheet(panels, columns)));
  if (!off.empty()) write_file(differences, encode_png(make_sheet(off, columns)));
  OutputFile("-").write(table);
}

void Compare::run() {
  for (const std::string& file : {output, differences})
    if (!file.empty() && !ends_in_png(file))
      misuse("the sheet is a PNG picture: end the output's name in .png, not ", file);
  if (truth.empty() && !differences.empty()) misuse("--difference is that from --truth");
  for (const std::string& in : {frame.paths[0], truth})
    for (const std::string& out : {output, differences})
      if (!in.empty() && !out.empty()) refuse_same_file(in, out);
  if (ends_in_png(frame.paths[0]))
    compare_pictures();
  else
    compare_qualities();
}

}  // namespace

void add_compare(CLI::App& app) {
  CLI::App* command =
      app.add_subcommand("compare", "One Bayer frame at every quality, as one labelled PNG sheet");
  const auto state = std::make_shared<Compare>();
  state->frame.add_options(
      *command, "File of headerless Bayer frames, or a PNG picture to hold to --truth; - is standard input");
  command
      ->add_option("--truth", state->truth,
                   "PNG picture to compare with: prints PSNR and structural similarity of every quality")
      ->type_name("FILE");
  command
      ->add_option(
          "--difference", state->differences,
          "PNG file to write as well: four times the difference from the truth, grey where there is none")
      ->type_name("FILE");
  command->add_option("-o,--output", state->output, "PNG file to write")
      ->type_name("FILE")
      ->capture_default_str();
  command->add_option("--columns", state->columns, "Pictures side by side (1 to 13)")
      ->capture_default_str()
      ->check(in_range(1, 13));
  command
      ->add_option("--via", state->via, "The library's frames that the pictures are made of: i420 or rgb24")
      ->capture_default_str()
      ->check(CLI::IsMember({"i420", "rgb24"}));
  state->controls.add_options(*command);
  command->callback([state] { state->run(); });
}

}  // namespace tool
