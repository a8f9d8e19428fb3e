// ppl convert: raw frames in; a picture, numbered pictures or a stream of frames out.
#include <algorithm>
#include <map>
#include <memory>
#include <thread>

#include "auto_gains.h"
#include "bayer.h"
#include "commands.h"
#include "failure.h"
#include "finished.h"
#include "frame_file.h"
#include "frame_sink.h"
#include "frame_stream.h"
#include "options.h"
#include "progress.h"
#include "quality_list.h"
#include "recording.h"

namespace tool {
namespace {

struct Convert {
  FrameFile frame;
  Controls controls;
  AutoGains gains;
  Job job;
  std::string input = "bayer", output, format, chroma, out_chroma, out_range, scale, via, rate = "25/1";
  unsigned jobs = 0;
  CLI::Option* quality_option = nullptr;

  void run();
  void choose_standard(Format out);
  void from_bayer(Format out);
  void from_finished(Format in, Format out);
  FrameSink::Target target(Format out) const;
  bool read(FrameStream&, BayerWorker&);
};

// y4m is for other programs and takes what they expect; raw files keep what the camera made unless asked.
void Convert::choose_standard(Format out) {
  const bool yuv = out == Format::i420 || out == Format::yuyv || out == Format::uyvy || out == Format::y4m;
  if (!yuv && !out_chroma.empty())
    misuse("--out-chroma is for i420, yuyv, uyvy and y4m; ", name(out), " has no chroma");
  if (!yuv && !out_range.empty())
    misuse("--out-range is for i420, yuyv, uyvy and y4m; ", name(out), " has full range");
  static const std::map<std::string, Standard> standards{
      {"camera", Standard::camera}, {"bt601", Standard::bt601}, {"bt709", Standard::bt709}};
  job.standard = !out_chroma.empty()  ? standards.at(out_chroma)
                 : out == Format::y4m ? Standard::bt601
                                      : Standard::camera;
  job.video_range = out_range.empty() ? job.standard != Standard::camera : out_range == "video";
}

FrameSink::Target Convert::target(Format out) const {
  const std::string head =
      out == Format::y4m ? y4m_head(output_size(job), rate, !job.video_range, false) : "";
  return {output, out, frame.recording(), head, frame.paths};
}

// What is found in a frame depends on those before it, so it is found where frames are read, one after the other.
bool Convert::read(FrameStream& stream, BayerWorker& worker) {
  if (!stream.next(worker.source())) return false;
  if (gains.wanted()) {
    const Gains found = gains.next(worker.prepare(), frame.width, frame.height);
    ppl_set_rgb_gain(worker.context(), found[0], found[1], found[2]);
  }
  return true;
}

void Convert::from_bayer(Format out) {
  if (!chroma.empty()) misuse("--chroma is for YUV input");
  choose_standard(out);
  require_possible(job, controls, out, frame.row_step());
  controls.note_idle(job.quality);
  if (gains.wanted()) gains.start(controls);
  FrameSink::Target where = target(out);
  FrameStream stream(frame, Format::bayer, frame.recording() && is_picture(out));
  const std::vector<int32_t> matrix = matrix_for(job, controls);
  const unsigned cores = jobs ? jobs : std::clamp(std::thread::hardware_concurrency(), 1u, 8u);
  const unsigned crew =
      in_sequence(job) ? 1
                       : static_cast<unsigned>(std::min<uint64_t>(cores, stream.frames().value_or(cores)));
  std::vector<std::unique_ptr<BayerWorker>> workers;
  for (unsigned i = 0; i < std::max(crew, 1u); ++i)
    workers.push_back(std::make_unique<BayerWorker>(job, controls, out, matrix));
  FrameSink sink(std::move(where));
  std::vector<std::span<const uint8_t>> made(workers.size());
  Progress progress(stream.frames());
  run_frames(crew, {[&](unsigned i) { return read(stream, *workers[i]); },
                    [&](unsigned i) { made[i] = workers[i]->convert(); },
                    [&](unsigned i) {
                      sink.put(made[i]);
                      progress.step();
                    }});
  sink.commit();
}

void Convert::from_finished(Format in, Format out) {
  if (gains.wanted()) misuse("--auto-white-balance and --auto-exposure act on Bayer frames alone");
  if (const std::string given = controls.first_given(); !given.empty())
    misuse(given, " acts on Bayer frames alone; a ", input, " frame takes the mirrors only");
  if (job.decimation || job.scale.width) misuse("--decimation and --scale act on Bayer frames alone");
  if (!out_chroma.empty() || !out_range.empty())
    misuse("--out-chroma and --out-range act on Bayer frames alone; a ", input, " frame keeps its chroma");
  const bool rgb = in == Format::rgb24 || in == Format::rgb32,
             packed = in == Format::yuyv || in == Format::uyvy;
  if (rgb && !chroma.empty()) misuse("--chroma is for YUV input");
  const Chroma meaning = chroma.empty()       ? (packed ? Chroma::decoder : Chroma::camera)
                         : chroma == "camera" ? Chroma::camera
                                              : Chroma::decoder;
  FinishedFrames frames(in, out, Size{frame.width, frame.height}, meaning, controls.h_mirror(),
                        controls.v_mirror());
  FrameSink::Target where = target(out);
  FrameStream stream(frame, in, frame.recording() && is_picture(out));
  FrameSink sink(std::move(where));
  Bytes source(stream.frame_size());
  for (Progress progress(stream.frames()); stream.next(source); progress.step())
    sink.put(frames.convert(source));
  sink.commit();
}

void Convert::run() {
  if (!scale.empty()) job.scale = parse_size("--scale", scale);
  controls.take_quality(quality_option, job.quality);
  job.via_i420 = via.empty() ? best_via_i420(job.quality) : via == "i420";
  const Format out = output_format(output, format);
  const Format in = input == "bayer" ? Format::bayer : output_format("", input);
  frame.settle(in);
  job.sensor = frame.sensor();
  if (in == Format::bayer)
    from_bayer(out);
  else
    from_finished(in, out);
}

}  // namespace

void add_convert(CLI::App& app) {
  CLI::App* command =
      app.add_subcommand("convert", "Turn raw frames into pictures, or into frames of another format");
  const auto state = std::make_shared<Convert>();
  state->frame.add_recording_options(*command, "Files of headerless frames; - is standard input");
  command
      ->add_option(
          "-o,--output", state->output,
          "File to write; - is standard output. Pictures of a recording are numbered, out-0000.png and "
          "so on; other formats hold its frames one after the other")
      ->type_name("FILE")
      ->required();
  command
      ->add_option(
          "--format", state->format,
          "png, ppm, y4m, i420, yuyv, uyvy, rgb24 or rgb32 (default: by the ending of the output's name)")
      ->check(CLI::IsMember({"png", "ppm", "y4m", "i420", "yuyv", "uyvy", "rgb24", "rgb32"}));
  command
      ->add_option("--input", state->input,
                   "What FRAME holds: bayer (see --pattern and --bits), i420, yuyv, uyvy, rgb24 or rgb32 "
                   "(both bottom row "
                   "first, blue byte first)")
      ->capture_default_str()
      ->check(CLI::IsMember({"bayer", "i420", "yuyv", "uyvy", "rgb24", "rgb32"}));
  command
      ->add_option(
          "--chroma", state->chroma,
          "YUV input: camera (B - Y, R - Y, as made from a Bayer frame; default for i420) or decoder "
          "(BT.601; default for yuyv and uyvy)")
      ->check(CLI::IsMember({"camera", "decoder"}));
  command
      ->add_option("--out-chroma", state->out_chroma,
                   "YUV output: camera (B - Y, R - Y; default for i420, yuyv and uyvy), bt601 (default for "
                   "y4m) or bt709")
      ->check(CLI::IsMember({"camera", "bt601", "bt709"}));
  command
      ->add_option("--out-range", state->out_range,
                   "YUV output: full (0 to 255; default for camera) or video (luma 16 to 235; default for "
                   "bt601 and bt709)")
      ->check(CLI::IsMember({"full", "video"}));
  command->add_option("--rate", state->rate, "Frames a second of a y4m stream, as a fraction")
      ->type_name("N/D")
      ->capture_default_str();
  command
      ->add_option("-j,--jobs", state->jobs,
                   "Frames worked on at a time, 1 to 8 (default: as many as there are processors); the "
                   "result is the same")
      ->check(in_range(1, 8));
  state->quality_option =
      command->add_option("-q,--quality", state->job.quality, "Reconstruction: " + quality_names())
          ->capture_default_str()
          ->check(in_range(0, PPL_QUALITIES - 1));
  command->add_option("--decimation", state->job.decimation, "1 half size, 0 full size, -1 double size")
      ->capture_default_str()
      ->check(in_range(-1, 1));
  command->add_option("--scale", state->scale, "Scale to WIDTHxHEIGHT in a second pass, e.g. 1280x960")
      ->type_name("SIZE");
  command
      ->add_option("--via", state->via,
                   "Pictures from Bayer frames: by way of the library's i420 (default in qualities 0 and 10, "
                   "whose RGB "
                   "is paler than their YUV) or of its rgb24 (default in all others, where they have it)")
      ->check(CLI::IsMember({"rgb24", "i420"}));
  state->controls.add_options(*command);
  state->gains.add_options(*command);
  command->callback([state] { state->run(); });
}

}  // namespace tool
