// ppl convert: one raw frame in, one file out.
#include <memory>

#include "bayer.h"
#include "commands.h"
#include "failure.h"
#include "file.h"
#include "instance.h"
#include "options.h"

namespace tool {
namespace {

struct Convert {
  FrameFile frame;
  Controls controls;
  Job job;
  std::string input = "bayer", output, format, chroma, scale, via;

  void run();
  Bytes from_bayer(Format out);
  Bytes from_finished(Format in, Format out);
};

Bytes Convert::from_bayer(Format out) {
  if (!chroma.empty()) misuse("--chroma is for YUV input");
  require_possible(frame, job, controls, out);
  controls.note_idle(job.quality);
  Bytes source = frame.read(Format::bayer);
  const Instance instance;
  controls.apply(instance.get(), frame.width, frame.height);
  if (!is_picture(out)) return convert_bayer(instance.get(), frame, job, out, std::move(source));
  ppl_set_quality(instance.get(), job.quality);
  return encode(out, bayer_picture(instance.get(), frame, job, controls, source));
}

// A frame that is no mosaic: packed YUV to I420 through the library, everything else through a picture.
Bytes Convert::from_finished(Format in, Format out) {
  if (const std::string given = controls.first_given(); !given.empty())
    misuse(given, " acts on Bayer frames alone; a ", input, " frame takes the mirrors only");
  if (job.decimation || job.scale.width) misuse("--decimation and --scale act on Bayer frames alone");
  const bool packed = in == Format::yuyv || in == Format::uyvy;
  if (out == Format::y4m) misuse("convert makes no y4m; ppl deinterlace does");
  if (frame.height % 2 || frame.width > 2032 || frame.height > 2048 || frame.width % 16)
    misuse("a ", input, " frame of ", frame.width, " x ", frame.height,
           " won't do: widths are multiples of 16 up to 2032, heights even, up to 2048");
  Bytes source = frame.read(in);
  const bool known_chroma = in == Format::rgb24 || in == Format::rgb32;
  if (known_chroma && !chroma.empty()) misuse("--chroma is for YUV input");
  const Chroma meaning = chroma.empty()       ? (packed ? Chroma::decoder : Chroma::camera)
                         : chroma == "camera" ? Chroma::camera
                                              : Chroma::decoder;
  if (packed && out == Format::i420) {
    const Instance instance;
    const uint32_t w = frame.width, h = frame.height;
    ppl_set_h_mirror(instance.get(), controls.h_mirror);
    ppl_set_v_mirror(instance.get(), controls.v_mirror);
    ppl_new_frame_sizes(instance.get(), w, h, w, h, 0);
    Bytes destination(frame_bytes(out, w, h));
    const auto call = in == Format::yuyv ? ppl_process_yuyvtoi420 : ppl_process_uyvytoi420;
    if (!call(instance.get(), source.data(), destination.data(), w, h, w, h))
      fail("the library refuses a ", w, " x ", h, " frame");
    return destination;
  }
  if (!is_picture(out) && out != Format::rgb24 && out != Format::rgb32)
    misuse("no way from ", input, " to ", name(out), "; ",
           packed ? "i420, rgb24, rgb32, png and ppm can be made" : "rgb24, rgb32, png and ppm can be made");
  Picture picture = picture_of(in, source, frame.width, frame.height, meaning);
  if (controls.h_mirror) mirror_columns(picture);
  if (controls.v_mirror) mirror_rows(picture);
  return encode(out, picture);
}

void Convert::run() {
  if (!scale.empty()) job.scale = parse_size("--scale", scale);
  job.via_i420 = via.empty() ? best_via_i420(job.quality) : via == "i420";
  const Format out = output_format(output, format);
  refuse_same_file(frame.path, output);
  const Format in = input == "bayer" ? Format::bayer : output_format("", input);
  write_file(output, in == Format::bayer ? from_bayer(out) : from_finished(in, out));
}

}  // namespace

void add_convert(CLI::App& app) {
  CLI::App* command =
      app.add_subcommand("convert", "Turn one raw frame into a picture or a frame of another format");
  const auto state = std::make_shared<Convert>();
  state->frame.add_options(*command, "File of headerless frames; - is standard input");
  command->add_option("-o,--output", state->output, "File to write; - is standard output")->required();
  command
      ->add_option("--format", state->format,
                   "png, ppm, i420, yuyv, uyvy, rgb24 or rgb32 (default: by the ending of the output's name)")
      ->check(CLI::IsMember({"png", "ppm", "i420", "yuyv", "uyvy", "rgb24", "rgb32"}));
  command
      ->add_option(
          "--input", state->input,
          "What FRAME holds: bayer (8 bits; B, Gb on even rows, Gr, R on odd rows), i420, yuyv, uyvy, rgb24 "
          "or rgb32 (both bottom row first, blue byte first)")
      ->capture_default_str()
      ->check(CLI::IsMember({"bayer", "i420", "yuyv", "uyvy", "rgb24", "rgb32"}));
  command
      ->add_option(
          "--chroma", state->chroma,
          "YUV input: camera (B - Y, R - Y, as made from a Bayer frame; default for i420) or decoder "
          "(BT.601; default for yuyv and uyvy)")
      ->check(CLI::IsMember({"camera", "decoder"}));
  command
      ->add_option(
          "-q,--quality", state->job.quality,
          "Reconstruction: 15 the default; 0, 1, 2 also with --medium-filter; 10, 11 smooth flat areas; "
          "3 cell by cell; 12, 13 grey; 4 the raw mosaic")
      ->capture_default_str()
      ->check(in_range(0, 15));
  command->add_option("--decimation", state->job.decimation, "1 half size, 0 full size, -1 double size")
      ->capture_default_str()
      ->check(in_range(-1, 1));
  command->add_option("--scale", state->scale, "Scale to WIDTHxHEIGHT in a second pass, e.g. 1280x960");
  command
      ->add_option("--via", state->via,
                   "Pictures from Bayer frames: by way of the library's i420 (default in qualities 0 and 10, "
                   "whose RGB "
                   "is paler than their YUV) or of its rgb24 (default in all others, where they have it)")
      ->check(CLI::IsMember({"rgb24", "i420"}));
  state->controls.add_options(*command);
  command->callback([state] { state->run(); });
}

}  // namespace tool
