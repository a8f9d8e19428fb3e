#include "frame_stream.h"

#include "failure.h"

namespace tool {
namespace {

// What else a number of bytes may be; empty if nothing comes to mind.
std::string suggestion(Format format, uint64_t bytes, const FrameFile& where) {
  if (format != Format::bayer || where.bits != 8) return {};
  const uint64_t samples = uint64_t{where.width} * where.height;
  const std::string one = text("; or it is one frame of ", where.width, " x ", where.height);
  if (bytes == 2 * samples) return text(one, " words of 10 to 16 bits: --bits 10, 12, 14 or 16");
  if (bytes * 4 == 5 * samples) return text(one, " packed samples of 10 bits: --bits 10 --packed");
  if (bytes * 2 == 3 * samples) return text(one, " packed samples of 12 bits: --bits 12 --packed");
  return {};
}

}  // namespace

FrameStream::FrameStream(const FrameFile& where, Format format, bool go_on)
    : where_(where), format_(format), go_on_(go_on) {
  const uint32_t w = where.width, h = where.height, stride = where.stride;
  if (stride && format != Format::bayer)
    misuse("--stride is for Bayer frames; rows of ", name(format), " have none");
  const bool planes = format == Format::i420;
  const ppl_sensor_frame sensor = where.sensor();
  row_ = format == Format::bayer ? ppl_sensor_row_bytes(&sensor) : frame_bytes(format, w, planes ? h : 1);
  rows_ = planes ? 1 : h;
  step_ = stride ? stride : row_;
  for (const std::string& path : where.paths) {
    try {
      const std::optional<uint64_t> held = look_at(path, readable_size(path));
      if (!held) frames_.reset();
      if (frames_) *frames_ += *held;
    } catch (const Failure&) {
      if (!go_on) throw;  // told when its turn comes
    }
  }
  if (frames_ && *frames_ == 0 && !go_on) fail("there is nothing to read");
}

void FrameStream::too_short(const std::string& path, uint64_t held) const {
  fail(path, " is too short: it has ", held, " bytes",
       where_.skip ? text(" behind the first ", where_.skip) : "", ", one ", where_.width, " x ",
       where_.height, " ", name(format_), " frame is ", whole());
}

void FrameStream::no_whole_number(const std::string& path, uint64_t held) const {
  fail(path, " has ", held, " bytes, no whole number of ", where_.width, " x ", where_.height, " ",
       name(format_), " frames of ", period(), "; check -W, -H",
       format_ == Format::bayer ? ", --stride" : ", --input", " or --skip",
       suggestion(format_, held, where_));
}

// How many frames will be read of a file, nothing for a pipe. Throws if what is wanted is not in it, or in doubt.
std::optional<uint64_t> FrameStream::look_at(const std::string& path, std::optional<uint64_t> size) const {
  if (!size) return {};
  const uint64_t held = *size > where_.skip ? *size - where_.skip : 0;
  if (held < whole()) too_short(path, held);
  const uint64_t there = held / period() + (held % period() >= whole());
  if (!where_.place_given() && held % period()) no_whole_number(path, held);
  if (where_.recording()) return there;
  if (there > 1 && !where_.frame_given()) {
    if (!where_.place_given())
      fail(path, " holds ", there, " frames; name one with --frame 0 to --frame ", there - 1,
           suggestion(format_, held, where_));
    if (held % period() == 0) note(text("the first of ", there, " frames; --frame 1 is the next"));
  }
  if (where_.frame >= there)
    fail("there is no frame ", where_.frame, " in ", path, ": it holds ", there, ", counted from 0");
  return 1;
}

void FrameStream::start(const std::string& path) {
  path_ = path;
  file_ = std::make_unique<InputFile>(path);
  const std::optional<uint64_t> held = look_at(path, file_->size());
  counted_ = held.has_value() || !where_.recording();
  left_ = held.value_or(1);
  read_ = 0;
  const uint64_t before = where_.skip + (where_.recording() ? 0 : period() * where_.frame);
  const uint64_t passed = file_->skip(before);
  if (passed < before) too_short(path, passed > where_.skip ? passed - where_.skip : 0);
}

// False if the file ends before the frame begins. What lies between rows is read in front of every row but the file's
// first: behind the last row of all it may be missing.
bool FrameStream::read_frame(std::span<uint8_t> frame) {
  const bool plain = step_ == row_;
  const size_t piece = plain ? frame.size() : row_;
  Bytes gap(step_ - row_);
  for (size_t at = 0; at < frame.size(); at += piece) {
    const bool between = read_ || at;
    const size_t passed = between ? file_->read(gap) : 0;
    const size_t got = between && passed < gap.size() ? 0 : file_->read(frame.subspan(at, piece));
    if (got == piece) continue;
    if (at == 0 && got == 0 && read_) return false;
    if (read_ == 0)
      too_short(path_,
                (where_.recording() ? 0 : period() * where_.frame) + at / piece * step_ + passed + got);
    fail(path_, " ends within its frame ", read_, ", of which ", at + got, " of ", frame.size(),
         " bytes are there");
  }
  return true;
}

// One frame of a pipe was wanted and none named: there must not be more.
void FrameStream::look_behind() {
  Bytes more(period());
  const size_t behind = file_->read(more);
  if (behind == more.size()) fail(path_, " holds more than one frame; name one with --frame, counted from 0");
  if (behind) no_whole_number(path_, period() + behind);
}

bool FrameStream::next(std::span<uint8_t> frame) {
  for (;;) {
    try {
      if (!file_) {
        if (file_number_ == where_.paths.size()) return false;
        start(where_.paths[file_number_++]);
      }
      if (!(counted_ && left_ == 0) && read_frame(frame)) {
        ++read_;
        if (counted_) --left_;
        if (!where_.recording() && !where_.frame_given() && !where_.place_given() && !file_->size())
          look_behind();
        return true;
      }
      file_.reset();
    } catch (const Failure& failure) {
      if (!go_on_) throw;
      complain(failure.what());
      file_.reset();
    }
  }
}

}  // namespace tool
