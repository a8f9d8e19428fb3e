#include "frame_sink.h"

#include <cstdio>

#include "failure.h"

namespace tool {

FrameSink::FrameSink(Target target) : target_(std::move(target)) {
  for (const std::string& file : target_.kept) refuse_same_file(file, target_.path);
  if (is_picture(target_.format)) {
    if (target_.numbered && target_.path == "-" && target_.format == Format::png)
      misuse("several PNG pictures need files of their own; name them with -o, or take --format ppm or y4m");
    if (!target_.numbered || target_.path != "-") return;
  }
  stream_ = std::make_unique<OutputFile>(target_.path);
  if (target_.format == Format::y4m) stream_->write(target_.head);
}

void FrameSink::put(std::span<const uint8_t> frame) {
  const size_t number = number_++;
  if (stream_) {
    if (target_.format == Format::y4m) stream_->write("FRAME\n");
    stream_->write(frame);
    return;
  }
  std::string path = target_.path;
  if (target_.numbered && !is_device(path)) {
    char digits[24];
    snprintf(digits, sizeof digits, "-%04zu", number);
    const size_t dot = path.rfind('.');
    const bool ending = dot != std::string::npos && path.find('/', dot) == std::string::npos;
    path.insert(ending ? dot : path.size(), digits);
  }
  for (const std::string& file : target_.kept) refuse_same_file(file, path);
  write_file(path, frame);
}

void FrameSink::commit() {
  if (stream_) stream_->commit();
}

std::string y4m_head(Size size, const std::string& rate, bool full_range, bool interlaced_source) {
  unsigned up = 0, down = 0;
  char tail = 0;
  if (sscanf(rate.c_str(), "%6u/%6u%c", &up, &down, &tail) != 2 || !up || !down)
    misuse("--rate takes frames a second as a fraction like 25/1 or 30000/1001, not ", rate);
  return text("YUV4MPEG2 W", size.width, " H", size.height, " F", up, ":", down, " Ip ",
              interlaced_source ? "A0:0" : "A1:1", " C420mpeg2",
              interlaced_source ? ""
              : full_range      ? " XCOLORRANGE=FULL"
                                : " XCOLORRANGE=LIMITED",
              "\n");
}

}  // namespace tool
