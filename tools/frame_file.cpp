#include "frame_file.h"

#include <cstring>

#include "failure.h"
#include "file.h"
#include "options.h"

namespace tool {
namespace {

constexpr uint32_t largest = 16384;

// What else a number of bytes may be; empty if nothing comes to mind.
std::string suggestion(Format format, uint64_t bytes, uint32_t width, uint32_t height) {
  if (format != Format::bayer) return {};
  const uint64_t samples = uint64_t{width} * height;
  const std::string one = text("one frame of ", width, " x ", height);
  if (bytes == 2 * samples)
    return text("; or it holds ", one, " samples of 10 to 16 bits, which ppl does not take: 8 bits alone");
  if (bytes * 2 == 3 * samples || bytes * 4 == 5 * samples)
    return text("; or it holds ", one, " packed samples of ", bytes * 4 == 5 * samples ? 10 : 12,
                " bits, which ppl does not take: 8 bits alone");
  return {};
}

}  // namespace

void FrameFile::add_options(CLI::App& app, const std::string& what) {
  app.add_option("FRAME", path, what)->required();
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

FrameFile::Extent FrameFile::extent(Format format) const {
  if (stride && format != Format::bayer)
    misuse("--stride is for Bayer frames; rows of ", name(format), " have none");
  if (stride && stride < width)
    misuse("stride ", stride, " won't do: it runs from the bytes of a row, ", width, ", up");
  if (format == Format::i420)
    return {frame_bytes(format, width, height), frame_bytes(format, width, height), 1};
  const size_t row = format == Format::bayer ? width : frame_bytes(format, width, 1);
  return {row, stride ? stride : row, height};
}

// Whoever names a stride or bytes to skip knows that the file is no plain sequence of such frames.
bool FrameFile::place_given() const {
  return stride_option_->count() || skip_option_->count();
}

void FrameFile::too_short(Format format, uint64_t held) const {
  fail(path, " is too short: it has ", held, " bytes", skip ? text(" behind the first ", skip) : "", ", one ",
       width, " x ", height, " ", name(format), " frame is ", extent(format).whole());
}

void FrameFile::no_whole_number(Format format, uint64_t held) const {
  fail(path, " has ", held, " bytes, no whole number of ", width, " x ", height, " ", name(format),
       " frames of ", extent(format).period(), "; check -W, -H",
       format == Format::bayer ? ", --stride" : ", --input", " or --skip",
       suggestion(format, held, width, height));
}

// Whether a file with so many bytes behind the skipped ones holds the frame that is wanted, and no doubt about it.
void FrameFile::require_frame(Format format, const Extent& e, uint64_t held) const {
  if (held < e.whole()) too_short(format, held);
  const uint64_t frames = held / e.period() + (held % e.period() >= e.whole());
  if (!place_given() && held % e.period()) no_whole_number(format, held);
  if (frames > 1 && !frame_option_->count()) {
    if (!place_given())
      fail(path, " holds ", frames, " frames; name one with --frame 0 to --frame ", frames - 1,
           suggestion(format, held, width, height));
    if (held % e.period() == 0) note(text("the first of ", frames, " frames; --frame 1 is the next"));
  }
  if (frame >= frames)
    fail("there is no frame ", frame, " in ", path, ": it holds ", frames, ", counted from 0");
}

Bytes FrameFile::read(Format format) const {
  const Extent e = extent(format);
  InputFile file(path);
  const std::optional<uint64_t> size = file.size();
  if (size) require_frame(format, e, *size > skip ? *size - skip : 0);
  const uint64_t before = skip + e.period() * frame;
  const uint64_t passed = file.skip(before);
  if (passed < before) too_short(format, passed > skip ? passed - skip : 0);
  Bytes frame_rows(e.row * e.rows), gap(e.step - e.row);
  for (size_t y = 0; y < e.rows; ++y) {
    size_t got = file.read({frame_rows.data() + y * e.row, e.row});
    if (got == e.row && y + 1 < e.rows) got += file.read(gap);
    if (got < (y + 1 < e.rows ? e.step : e.row)) too_short(format, e.period() * frame + y * e.step + got);
  }
  if (!size && !frame_option_->count() && !place_given()) {
    Bytes more(e.period());
    const size_t behind = file.read(more);
    if (behind == more.size())
      fail(path, " holds more than one frame; name one with --frame, counted from 0");
    if (behind) no_whole_number(format, e.period() + behind);
  }
  return frame_rows;
}

}  // namespace tool
