#include "frame_file.h"

#include <algorithm>

#include "failure.h"
#include "frame_stream.h"
#include "guess.h"
#include "options.h"

namespace tool {
namespace {

constexpr uint32_t largest = 16384;

}  // namespace

void FrameFile::add_place_options(CLI::App& app) {
  width_option_ =
      app.add_option("-W,--width", width, "Width in pixels (default: guessed from the file's size)")
          ->check(in_range(1, largest));
  height_option_ =
      app.add_option("-H,--height", height, "Height in rows (likewise)")->check(in_range(1, largest));
  app.add_option(
         "--pattern", pattern,
         "Bayer frames: colours of the first two samples of the first two rows: bggr, gbrg, grbg or rggb")
      ->capture_default_str()
      ->check(CLI::IsMember({"bggr", "gbrg", "grbg", "rggb"}));
  bits_option_ =
      app.add_option("--bits", bits,
                     "Bayer frames: bits of a sample, 8, 10, 12, 14 or 16; above 8 in words of 16 bits, "
                     "right-aligned (default 8, or guessed)")
          ->check(CLI::IsMember({"8", "10", "12", "14", "16"}));
  app.add_option("--byte-order", byte_order, "Of those words: little or big")
      ->capture_default_str()
      ->check(CLI::IsMember({"little", "big"}));
  app.add_flag("--packed", packed, "MIPI-packed samples of 10 or 12 bits: 4 in 5 bytes, or 2 in 3");
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

// What the file's size suggests. Where the options leave nothing open nothing is looked at.
void FrameFile::guess() {
  const bool open = !width_option_->count() || !height_option_->count();
  const bool whole = !place_given() && !recording() && !frame_given();
  if (!open && (bits_option_->count() || packed || !whole)) return;
  const std::optional<uint64_t> size = readable_size(paths[0]);
  if (!size) {
    if (open) misuse("-W and -H are needed: ", paths[0], " has no size to guess them from");
    return;
  }
  const uint64_t bytes = *size > skip ? *size - skip : 0;
  if (!open && bytes == Shape{width, height, 8, false}.bytes()) return;
  if (stride && open) misuse("-W and -H are needed beside --stride");
  Known known{width_option_->count() ? width : 0, height_option_->count() ? height : 0,
              bits_option_->count() ? bits : 0, packed, 8};
  if (paths[0] != "-") {
    InputFile file(paths[0]);
    Bytes first(static_cast<size_t>(std::min<uint64_t>(bytes, uint64_t{1} << 20)));
    file.skip(skip);
    first.resize(file.read(first));
    known.words = bits_of_words(first);
  }
  const std::vector<Shape> shapes = guess_shapes(bytes, known);
  if (shapes.empty()) {
    if (open)
      fail("no size that sensors have fits ", paths[0], ", which has ", bytes, " bytes; name -W and -H");
    return;
  }
  const Shape& shape = shapes[0];
  if (!open && shape.bits == 8 && !shape.packed) return;
  std::string line =
      text(paths[0], " is taken for ", describe(shape), " (", options_of(shape), "), by its size");
  if (shapes.size() > 1) line += text("; or ", options_of(shapes[1]));
  note(line);
  width = shape.width;
  height = shape.height;
  bits = shape.bits;
  packed = shape.packed;
}

void FrameFile::settle(Format format) {
  if (format != Format::bayer) {
    if (!width || !height) misuse("-W and -H are needed for ", name(format), " frames");
    if (bits_option_->count() || packed || pattern != "bggr")
      misuse("--pattern, --bits and --packed are for Bayer frames; ", name(format), " has none");
    return;
  }
  if (packed && !bits_option_->count() && width && height) bits = 10;
  if (packed && bits_option_->count() && bits != 10 && bits != 12)
    misuse("--packed takes --bits 10 or 12, not ", bits);
  guess();
  if (packed && bits == 8) bits = 10;
  if (byte_order == "big" && (bits == 8 || packed))
    misuse("--byte-order is for words: --bits 10, 12, 14 or 16");
  const ppl_sensor_frame frame_shape = sensor();
  if (stride && stride < ppl_sensor_row_bytes(&frame_shape))
    misuse("stride ", stride, " won't do: it runs from the bytes of a row, ",
           ppl_sensor_row_bytes(&frame_shape), ", up");
}

ppl_sensor_frame FrameFile::sensor() const {
  const int phase = pattern == "bggr"   ? PPL_BGGR
                    : pattern == "gbrg" ? PPL_GBRG
                    : pattern == "grbg" ? PPL_GRBG
                                        : PPL_RGGB;
  const int layout = packed                ? (bits == 10 ? PPL_PACKED_10 : PPL_PACKED_12)
                     : bits == 8           ? PPL_BYTES
                     : byte_order == "big" ? PPL_WORDS_BIG
                                           : PPL_WORDS_LITTLE;
  return {width, height, 0, phase, layout, bits};
}

size_t FrameFile::row_step() const {
  const ppl_sensor_frame shape = sensor();
  return stride ? stride : ppl_sensor_row_bytes(&shape);
}

Bytes FrameFile::read(Format format) const {
  FrameStream stream(*this, format);
  Bytes frame_rows(stream.frame_size());
  stream.next(frame_rows);
  return frame_rows;
}

}  // namespace tool
