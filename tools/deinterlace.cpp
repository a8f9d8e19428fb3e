// ppl deinterlace: fields, or a sequence of interlaced frames, to pictures, raw frames or a Y4M stream.
#include <algorithm>
#include <cstring>
#include <memory>

#include "commands.h"
#include "failure.h"
#include "file.h"
#include "formats.h"
#include "frame_sink.h"
#include "instance.h"
#include "options.h"
#include "progress.h"

namespace tool {
namespace {

struct Deinterlace {
  std::vector<std::string> files;
  uint32_t width = 0, height = 0, threshold = 50;
  bool frames = false, weave = false;
  std::string input = "yuyv", output, format, size, rate = "25/1";

  void run();

 private:
  using Call = uint8_t (*)(ppl_context*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, uint32_t,
                           uint32_t, uint32_t, uint32_t);
  void set_size(ppl_context*);
  void choose_call(ppl_context*);
  Bytes convert(ppl_context*, const uint8_t* earlier, const uint8_t* kept, const uint8_t* later) const;
  std::vector<Bytes> read_fields() const;
  [[noreturn]] void refuse_partial(const std::string& file, uint64_t bytes) const;
  void require_whole_frames() const;
  void convert_sequence(ppl_context*, FrameSink&) const;
  size_t field_bytes() const { return size_t{width} * height; }

  Format in_ = Format::yuyv, out_ = Format::png;
  Format made_ = Format::rgb24;  // what the library makes on the way to out_
  bool swap_input_ = false, swap_output_ = false, motion_ = true;
  Call call_ = nullptr;
  Size to_;
};

// The output sizes that the library makes from a frame of this size.
std::string possible_sizes(ppl_context* context, uint32_t w, uint32_t h) {
  const Size candidates[] = {{w, h}, {w / 2, h / 2}, {w / 4, h / 4}, {w * 2, h * 2}};
  std::string list;
  for (const Size& s : candidates)
    if ((s.width == w && s.height == h) || ppl_new_frame_sizes(context, w, h, s.width, s.height, 1))
      list += text(list.empty() ? "" : ", ", s.width, "x", s.height);
  if (ppl_new_frame_sizes(context, w, h, w, h + 96, 1)) list += ", each also with black lines added";
  return list;
}

void Deinterlace::set_size(ppl_context* context) {
  if (width % 16 || width < 16 || width > 2032 || height % 2 || height < 2 || height > 2048)
    misuse("frames of ", width, " x ", height,
           " won't do: widths are multiples of 16 from 16 to 2032, heights even, up to 2048");
  to_ = size.empty()        ? Size{width, height}
        : size == "half"    ? Size{width / 2, height / 2}
        : size == "quarter" ? Size{width / 4, height / 4}
        : size == "double"  ? Size{2 * width, 2 * height}
                            : parse_size("--size", size);
  const bool same = to_.width == width && to_.height == height;
  const bool known = ppl_new_frame_sizes(context, width, height, to_.width, to_.height, !same) != 0;
  // At full size the library leaves a change of width to a scaler behind it.
  if (!known || (ppl_decimation(context) == 0 && to_.width != width))
    misuse("--size ", to_.width, "x", to_.height, " can't be made from ", width, " x ", height, "; ",
           possible_sizes(context, width, height), " can");
  if (to_.height % 2) misuse("--size ", to_.width, "x", to_.height, " won't do: the height must be even");
}

// The library has no routine for some ways: swapped bytes on the way in or out lead around those, and identical
// earlier and later fields turn a motion form into a plain weave.
void Deinterlace::choose_call(ppl_context* context) {
  const bool doubled = ppl_decimation(context) < 0;
  made_ = is_picture(out_) || out_ == Format::rgb24     ? Format::rgb24
          : out_ == Format::y4m || out_ == Format::i420 ? Format::i420
                                                        : out_;
  Format from = in_;
  if (doubled) {
    swap_input_ = from == Format::uyvy;
    from = Format::yuyv;
    swap_output_ = made_ == Format::uyvy;
    if (swap_output_) made_ = Format::yuyv;
  }
  const bool yuyv = from == Format::yuyv;
  const bool crossed = made_ != from && (made_ == Format::yuyv || made_ == Format::uyvy);
  const bool plain = !motion_ && !doubled && !crossed;
  if (made_ == Format::i420)
    call_ = plain ? (yuyv ? IntlYUYVToI420MMX_no_motion : IntlUYVYToI420MMX_no_motion)
                  : (yuyv ? IntlYUYVToI420MMX : IntlUYVYToI420MMX);
  else if (made_ == Format::rgb24)
    call_ = plain ? (yuyv ? IntlYUYVToRGB24MMX_no_motion : IntlUYVYToRGB24MMX_no_motion)
                  : (yuyv ? IntlYUYVToRGB24MMX : IntlUYVYToRGB24MMX);
  else if (made_ == Format::yuyv)
    call_ = yuyv ? (plain ? IntlYUYVToYUYVMMX_no_motion : IntlYUYVToYUYVMMX) : IntlUYVYToYUYVMMX;
  else
    call_ = yuyv ? IntlYUYVToUYVYMMX : (plain ? IntlUYVYToUYVYMMX_no_motion : IntlUYVYToUYVYMMX);
}

Bytes Deinterlace::convert(ppl_context* context, const uint8_t* earlier, const uint8_t* kept,
                           const uint8_t* later) const {
  const size_t size_in = field_bytes();
  Bytes fields[3];
  const uint8_t* const given[3] = {motion_ ? earlier : later, kept, later};
  for (int i = 0; i < 3; ++i) {
    fields[i].assign(given[i], given[i] + size_in);
    if (swap_input_) swap_words(fields[i]);
  }
  Bytes frame(frame_bytes(made_, to_.width, to_.height));
  const uint32_t before = ppl_n_frame(context);
  if (!call_(context, fields[0].data(), fields[1].data(), fields[2].data(), frame.data(), width, height,
             to_.width, to_.height) ||
      ppl_n_frame(context) == before)
    fail("the library refuses fields of a ", width, " x ", height, " frame");
  if (swap_output_) swap_words(frame);
  if (is_picture(out_)) return encode(out_, picture_of(made_, frame, to_.width, to_.height, Chroma::decoder));
  return frame;
}

void Deinterlace::run() {
  in_ = input == "yuyv" ? Format::yuyv : Format::uyvy;
  out_ = output_format(output, format);
  if (out_ == Format::rgb32) misuse("the library makes no rgb32 from fields; use rgb24, png or ppm");
  const Instance instance;
  ppl_context* context = instance.get();
  set_size(context);
  if (!ppl_set_intl_3T_threshold(context, threshold)) misuse("--threshold runs from 0 to 765");

  std::vector<Bytes> fields;
  if (frames)
    require_whole_frames();
  else
    fields = read_fields();
  motion_ = !weave && (frames || fields.size() == 3);
  choose_call(context);

  FrameSink sink({output, out_, frames, y4m_head(to_, rate, false, true), files});
  if (frames) {
    convert_sequence(context, sink);
  } else {
    const Bytes& later = fields.back();
    const Bytes& kept = fields[fields.size() - 2];
    sink.put(convert(context, fields[0].data(), kept.data(), later.data()));
  }
  sink.commit();
}

std::vector<Bytes> Deinterlace::read_fields() const {
  if (files.size() != 2 && files.size() != 3)
    misuse(files.size(), files.size() == 1 ? " field was" : " fields were",
           " named: two, KEPT LATER, or three, EARLIER KEPT LATER, are needed; --frames takes whole frames");
  std::vector<Bytes> fields;
  for (const std::string& file : files) {
    InputFile in(file);
    const std::optional<uint64_t> held = in.size();
    Bytes& field = fields.emplace_back(field_bytes() + 1);
    field.resize(in.read(field));
    if (field.size() != field_bytes())
      fail(file, " has ",
           held ? text(*held)
                : text(field.size() > field_bytes() ? "more than " : "",
                       std::min(field.size(), field_bytes())),
           " bytes; a field of a ", width, " x ", height, " frame has ", field_bytes(), ": ", height / 2,
           " rows of ", 2 * width, " bytes (--frames takes whole interlaced frames)");
  }
  return fields;
}

void Deinterlace::refuse_partial(const std::string& file, uint64_t bytes) const {
  fail(file, " has ", bytes, " bytes, no whole number of interlaced ", width, " x ", height, " frames of ",
       2 * field_bytes());
}

// Before anything is written, as far as the size of a file can be known.
void Deinterlace::require_whole_frames() const {
  for (const std::string& file : files) {
    const std::optional<uint64_t> bytes = readable_size(file);
    if (bytes && (*bytes == 0 || *bytes % (2 * field_bytes()))) refuse_partial(file, *bytes);
  }
}

// One frame at a time. The later field of each is the earlier field of the next; the first frame's own stands in for
// what was before it, which makes it a plain weave.
void Deinterlace::convert_sequence(ppl_context* context, FrameSink& sink) const {
  const size_t row = size_t{2} * width;
  std::optional<uint64_t> expected = 0;
  for (const std::string& file : files) {
    const std::optional<uint64_t> bytes = readable_size(file);
    if (!bytes) expected.reset();
    if (expected) *expected += *bytes / (2 * field_bytes());
  }
  Bytes frame(2 * field_bytes()), kept(field_bytes()), later(field_bytes()), earlier;
  Progress progress(expected);
  for (const std::string& file : files) {
    InputFile in(file);
    for (uint64_t position = 0;; position += frame.size()) {
      const size_t got = in.read(frame);
      if (got == 0 && position > 0) break;
      if (got < frame.size()) refuse_partial(file, position + got);
      for (size_t r = 0; r < height / 2; ++r) {
        memcpy(kept.data() + r * row, frame.data() + 2 * r * row, row);
        memcpy(later.data() + r * row, frame.data() + (2 * r + 1) * row, row);
      }
      if (earlier.empty()) earlier = later;
      sink.put(convert(context, earlier.data(), kept.data(), later.data()));
      progress.step();
      std::swap(earlier, later);
    }
  }
}

}  // namespace

void add_deinterlace(CLI::App& app) {
  CLI::App* command = app.add_subcommand(
      "deinterlace",
      "Turn the fields of interlaced 4:2:2 video into whole frames; chroma combing is removed");
  const auto state = std::make_shared<Deinterlace>();
  command
      ->add_option(
          "FIELDS", state->files,
          "Two fields, KEPT LATER, or three, EARLIER KEPT LATER; with --frames files of whole frames. KEPT "
          "holds the even rows; EARLIER is the field before LATER with the same rows")
      ->required();
  command->add_option("-W,--width", state->width, "Width of the frame in pixels")
      ->required()
      ->check(in_range(16, 2032));
  command
      ->add_option("-H,--height", state->height, "Height of the whole frame in rows, twice that of a field")
      ->required()
      ->check(in_range(2, 2048));
  command->add_flag("--frames", state->frames, "The files hold interlaced frames, even and odd rows in turn");
  command->add_option("--input", state->input, "Layout of the fields: yuyv or uyvy")
      ->capture_default_str()
      ->check(CLI::IsMember({"yuyv", "uyvy"}));
  command
      ->add_option("-o,--output", state->output,
                   "File to write; pictures of a sequence are numbered, out-0000.png and so on")
      ->type_name("FILE")
      ->required();
  command
      ->add_option("--format", state->format,
                   "png, ppm, i420, yuyv, uyvy, rgb24 or y4m (default: by the ending of the output's name)")
      ->check(CLI::IsMember({"png", "ppm", "i420", "yuyv", "uyvy", "rgb24", "y4m"}));
  command->add_flag("--weave", state->weave, "No motion test: the rows of both fields as they are");
  command->add_option("--threshold", state->threshold, "Motion threshold (0 to 765); lower finds more motion")
      ->capture_default_str()
      ->check(in_range(0, 765));
  command
      ->add_option("--size", state->size,
                   "Size of the result where the library has it: half, quarter, double or WIDTHxHEIGHT "
                   "(default: the frame's)")
      ->type_name("SIZE");
  command->add_option("--rate", state->rate, "Frames a second of a y4m stream, as a fraction")
      ->type_name("N/D")
      ->capture_default_str();
  command->callback([state] { state->run(); });
}

}  // namespace tool
