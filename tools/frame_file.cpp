#include "frame_file.h"

#include "failure.h"
#include "frame_stream.h"
#include "options.h"

namespace tool {
namespace {

constexpr uint32_t largest = 16384;

}  // namespace

void FrameFile::add_place_options(CLI::App& app) {
  app.add_option("-W,--width", width, "Width in pixels")->required()->check(in_range(1, largest));
  app.add_option("-H,--height", height, "Height in rows")->required()->check(in_range(1, largest));
  stride_option_ =
      app.add_option("--stride", stride,
                     "Bytes from one row to the next in the file (default: those of a row). With "
                     "--skip it cuts a part out of a larger frame")
          ->check(in_range(1, 1 << 20));
  frame_option_ = app.add_option("--frame", frame, "Which frame of a file with several, from 0")
                      ->check(in_range(0, 4294967295));
  skip_option_ = app.add_option("--skip", skip, "Bytes in front of the first frame (default 0)")
                     ->check(in_range(0, int64_t{1} << 48));
}

void FrameFile::add_options(CLI::App& app, const std::string& what) {
  app.add_option("FRAME", paths, what)->required()->expected(1);
  add_place_options(app);
}

void FrameFile::add_recording_options(CLI::App& app, const std::string& what) {
  app.add_option("FRAME", paths, what)->required();
  add_place_options(app);
  app.add_flag("--all", all, "Every frame, one after the other; several files are read so without asking")
      ->excludes(frame_option_);
}

Bytes FrameFile::read(Format format) const {
  FrameStream stream(*this, format);
  Bytes frame_rows(stream.frame_size());
  stream.next(frame_rows);
  return frame_rows;
}

}  // namespace tool
