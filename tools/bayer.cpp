#include "bayer.h"

#include <ppl_qualities.h>

#include <algorithm>
#include <utility>

#include "failure.h"

namespace tool {
namespace {

bool raw_quality(uint32_t quality) {
  return ppl_quality_table[quality].road == PPL_ROAD_RAW;
}

}  // namespace

bool best_via_i420(uint32_t quality) {
  return ppl_quality_is_pale_in_rgb(quality) != 0;
}

Format route_to(const Job& job, Format format) {
  if (format == Format::y4m) return Format::i420;
  if (!is_picture(format)) return format;
  if (job.scale.width || job.via_i420) return Format::i420;
  if (raw_quality(job.quality) && job.decimation > 0) return Format::rgb32;
  const auto whole = [&](uint32_t made) {
    return ppl_quality_is_whole(job.quality, 0, made, job.decimation, 0, 0) != 0;
  };
  if (!whole(PPL_FORMAT_RGB24) && whole(PPL_FORMAT_I420)) return Format::i420;
  return Format::rgb24;
}

// The mark of the raw I420 frame moves from frame to frame.
bool in_sequence(const Job& job) {
  return raw_quality(job.quality);
}

bool in_parts(const Job& job) {
  return job.sensor.width > 2016 || job.sensor.height > 2048;
}

Size output_size(const Job& job) {
  const uint32_t w = job.sensor.width, h = job.sensor.height;
  if (job.scale.width) return job.scale;
  if (job.decimation > 0) return {w / 2, h / 2};
  if (job.decimation < 0) return {w * 2, h * 2};
  return {w, h};
}

std::vector<int32_t> matrix_for(const Job& job, const Controls& controls) {
  if (job.standard == Standard::camera) return {};
  const Instance instance, scratch;
  apply_settings(controls.given(), instance.get());
  ColourControls colour;
  ppl_sensor_matrix(instance.get(), colour.sensor_matrix.data());
  colour.sat = ppl_nf88_sat(instance.get());
  colour.hue = ppl_hue_degree(instance.get());
  colour.contrast = controls.contrast();
  const auto matrix = standard_matrix(job.standard, colour, scratch.get());
  return {matrix.begin(), matrix.end()};
}

BayerWorker::BayerWorker(const Job& job, const Controls& controls, Format format,
                         const std::vector<int32_t>& matrix)
    : job_(job),
      format_(format),
      route_(route_to(job, format)),
      to_(output_size(job)),
      plain_(job.sensor.layout == PPL_BYTES && job.sensor.pattern == PPL_BGGR),
      h_mirror_(controls.h_mirror()),
      v_mirror_(controls.v_mirror()),
      mosaic_(size_t{job.sensor.width} * job.sensor.height),
      frame_(frame_bytes(route_, to_.width, to_.height)) {
  ppl_context* c = context();
  const uint32_t w = job.sensor.width, h = job.sensor.height;
  const Settings settings = controls.given();
  apply_settings(settings, c);
  lens_ = settings.lens;
  if (!matrix.empty()) ppl_copy_sensor_matrix(c, matrix.data());
  ppl_set_quality(c, job.quality);
  ppl_set_decimation(c, job.decimation, 0, 0);
  // With one mirror the double-size RGB24 rows lie elsewhere: the mirrors are then left to the picture.
  if (is_picture(format) && route_ == Format::rgb24 && job.decimation < 0 && h_mirror_ != v_mirror_) {
    ppl_reset_mirrors(c);
    mirror_columns_ = h_mirror_;
    mirror_rows_ = v_mirror_;
  }
  if (!plain_) source_.resize(ppl_sensor_frame_bytes(&job.sensor));
  // YUYV rows are read 4 bytes beyond the last one.
  if (job.scale.width) scratch_.resize(frame_bytes(route_, w, h) + 64);
  if (in_parts(job)) {
    parts_.resize(PPL_MOST_PARTS);
    parts_.resize(ppl_plan_parts(w, h, job.decimation, parts_.data(), PPL_MOST_PARTS));
    size_t largest = 0;
    for (const ppl_part& p : parts_) largest = std::max(largest, size_t{p.width} * p.height);
    part_source_.resize(largest);
    part_frame_.resize(frame_bytes(route_, static_cast<uint32_t>(largest), 1));
  } else if (lens_) {
    apply_lens(*lens_, c, w, h, {0, 0, w, h}, lens_table_);
  }
}

const Bytes& BayerWorker::prepare() {
  if (!prepared_ && !plain_)
    if (const int reason = ppl_prepare_frame(&job_.sensor, source_.data(), PPL_TO_8_ROUND, nullptr,
                                             mosaic_.data(), job_.sensor.width);
        reason != PPL_PREPARE_FINE)
      misuse(ppl_prepare_sentence(reason));
  prepared_ = true;
  return mosaic_;
}

void BayerWorker::call(const Part& part, Bytes& source, Bytes& frame) {
  ppl_context* c = context();
  const uint32_t w = part.width, h = part.height, before = ppl_n_frame(c);
  bool done;
  if (job_.scale.width) {
    const auto scaled =
        route_ == Format::i420 ? BaylorToI420MMX_scaling_stride : BaylorToYUYVMMX_scaling_stride;
    done = scaled(c, source.data(), w, h, w, frame.data(), to_.width, to_.height, scratch_.data());
  } else {
    using Call = uint8_t (*)(ppl_context*, uint8_t*, uint8_t*, uint32_t, uint32_t, uint32_t);
    const Call same = route_ == Format::i420    ? ppl_process_blrtoi420
                      : route_ == Format::yuyv  ? ppl_process_blrtoyuyv
                      : route_ == Format::uyvy  ? ppl_process_blrtouyvy
                      : route_ == Format::rgb24 ? ppl_process_blrtorgb24
                                                : ppl_process_blrtorgb32;
    done = same(c, source.data(), frame.data(), w, h, w);
  }
  // The raw qualities answer false although they make their picture.
  if (ppl_n_frame(c) == before || (!done && !raw_quality(job_.quality)))
    fail("the library refuses a ", w, " x ", h, " frame");
}

// A frame that is too large for one call. Each part is worked on in a copy, because a call overwrites its source.
void BayerWorker::convert_parts() {
  const uint32_t w = job_.sensor.width, h = job_.sensor.height;
  const ppl_sensor_frame whole = {w, h, w, PPL_BGGR, PPL_BYTES, 8};
  const int format = route_ == Format::i420    ? PPL_FORMAT_I420
                     : route_ == Format::yuyv  ? PPL_FORMAT_YUYV
                     : route_ == Format::uyvy  ? PPL_FORMAT_UYVY
                     : route_ == Format::rgb24 ? PPL_FORMAT_RGB24
                                               : PPL_FORMAT_RGB32;
  for (const ppl_part& p : parts_) {
    const Part part{p.x, p.y, p.width, p.height};
    ppl_prepare_region(&whole, mosaic_.data(), PPL_TO_8_SHIFT, nullptr, p.x, p.y, p.width, p.height,
                       part_source_.data(), p.width);
    if (lens_) apply_lens(*lens_, context(), w, h, part, lens_table_);
    call(part, part_source_, part_frame_);
    ppl_join_part(&p, w, h, format, job_.decimation, h_mirror_, v_mirror_, part_frame_.data(), frame_.data());
  }
}

void BayerWorker::convert_frame() {
  prepare();
  prepared_ = false;
  if (parts_.empty())
    call({0, 0, job_.sensor.width, job_.sensor.height}, mosaic_, frame_);
  else
    convert_parts();
}

void BayerWorker::to_video_range() {
  const size_t pixels = size_t{to_.width} * to_.height;
  if (route_ == Format::i420) {
    luma_to_video_range(frame_.data(), pixels);
    chroma_to_video_range(frame_.data() + pixels, frame_.size() - pixels);
  } else {
    packed_to_video_range(frame_.data(), frame_.size(), route_ == Format::yuyv);
  }
}

std::span<const uint8_t> BayerWorker::convert() {
  if (is_picture(format_)) {
    encoded_ = encode(format_, picture());
    return encoded_;
  }
  convert_frame();
  if (job_.video_range) to_video_range();
  return frame_;
}

Picture BayerWorker::picture() {
  convert_frame();
  Picture picture = picture_of(route_, frame_, to_.width, to_.height, Chroma::camera);
  if (mirror_columns_) mirror_columns(picture);
  if (mirror_rows_) mirror_rows(picture);
  return picture;
}

Bytes mosaic_of(Bytes source, const ppl_sensor_frame& sensor) {
  Job job;
  job.sensor = sensor;
  BayerWorker worker(job, Controls(), Format::i420);
  worker.source() = std::move(source);
  return worker.prepare();
}

}  // namespace tool
