#include "bayer.h"

#include <algorithm>

#include "failure.h"

namespace tool {
namespace {

bool raw_quality(uint32_t quality) {
  return quality == 4 || quality == 9;
}

// The format that carries a picture to look at.
Format picture_route(const Job& job) {
  if (job.scale.width || job.via_i420) return Format::i420;
  if (raw_quality(job.quality) && job.decimation > 0) return Format::rgb32;
  if (job.quality == 15 && job.decimation < 0) return Format::i420;
  return Format::rgb24;
}

void require_size(const Job& job, uint32_t file_stride, uint32_t width_unit, uint32_t height_unit,
                  const std::string& what) {
  const uint32_t w = job.frame.width, h = job.frame.height, stride = file_stride ? file_stride : w;
  const auto fit = [](uint32_t n, uint32_t unit, uint32_t most) {
    return std::clamp(n / unit * unit, unit, most / unit * unit);
  };
  const uint32_t columns = fit(w, width_unit, 2016), rows = fit(h, height_unit, 2048);
  if (columns != w)
    misuse("width ", w, " won't do for ", what, ": it takes multiples of ", width_unit, " from ", width_unit,
           " to ", 2016 / width_unit * width_unit,
           columns < w ? text("; the left ", columns, " columns are -W ", columns, " --stride ", stride)
                       : text(", for example ", columns));
  if (rows != h)
    misuse("height ", h, " won't do for ", what, ": it takes multiples of ", height_unit, " from ",
           height_unit, " to 2048",
           rows < h ? text("; the upper ", rows, " rows are -H ", rows, " --stride ", stride) : "");
}

void require_scale(const Job& job, Format format) {
  const Size& to = job.scale;
  if (format != Format::i420 && format != Format::yuyv && format != Format::y4m && !is_picture(format))
    misuse("--scale makes i420, yuyv, y4m, png and ppm alone, not ", name(format));
  if (job.decimation) misuse("--scale and --decimation can't be combined");
  if (to.width % 32 || to.width < 32 || to.width > 8192)
    misuse("scaled width ", to.width, " won't do: it takes multiples of 32 up to 8192");
  // The scaler moves on by at most one input row per output row: a lower picture would only show the top.
  if (to.height % 2 || to.height < job.frame.height || to.height > 8192)
    misuse("scaled height ", to.height, " won't do: it takes even heights from that of the frame, ",
           job.frame.height, ", to 8192; --decimation 1 halves");
}

}  // namespace

bool best_via_i420(uint32_t quality) {
  return quality == 0 || quality == 10;
}

// The mark of the raw I420 frame moves from frame to frame.
bool in_sequence(const Job& job) {
  return raw_quality(job.quality);
}

Size output_size(const Job& job) {
  if (job.scale.width) return job.scale;
  if (job.decimation > 0) return {job.frame.width / 2, job.frame.height / 2};
  if (job.decimation < 0) return {job.frame.width * 2, job.frame.height * 2};
  return {job.frame.width, job.frame.height};
}

void require_possible(const Job& job, const Controls& controls, Format format, uint32_t file_stride) {
  const uint32_t q = job.quality;
  const int d = job.decimation;
  const Format route = is_picture(format)      ? picture_route(job)
                       : format == Format::y4m ? Format::i420
                                               : format;
  const bool one_mirror = controls.h_mirror() != controls.v_mirror();
  const std::string what = text("quality ", q, " to ", name(format),
                                d > 0   ? " at half size"
                                : d < 0 ? " at double size"
                                        : "");
  const bool packed = format == Format::yuyv || format == Format::uyvy;
  if (format == Format::y4m && job.standard == Standard::camera)
    misuse("y4m can't say what the camera's chroma means; take --out-chroma bt601 or bt709, or i420");
  if (job.video_range && job.standard == Standard::camera)
    misuse(
        "the camera's chroma has full range alone; --out-range video goes with --out-chroma bt601 or bt709");
  if (q > 15 || (q >= 5 && q <= 8) || q == 14)
    misuse("quality ", q, " makes no picture; use 0, 1, 2, 3, 10, 11, 12, 13, 15, or 4 for the raw mosaic");
  if (job.scale.width || job.scale.height) require_scale(job, format);

  // What the library leaves out or unfinished.
  if (q == 13 && (packed || format == Format::rgb32))
    misuse("quality 13 makes no ", name(format), "; use i420, rgb24, png or ppm, or another quality");
  if (q == 15 && format == Format::rgb32)
    misuse("quality 15 makes no rgb32; use rgb24, or quality 0, 1, 2, 3, 10, 11 or 12");
  if (raw_quality(q)) {
    if (controls.h_mirror() || controls.v_mirror())
      misuse("quality ", q, " is the mosaic as it is: it has no mirrors");
    if (d < 0 || (d > 0 && format == Format::rgb24)) misuse(what, " isn't there; use full size");
  }
  if (d < 0) {
    if (q == 13) misuse(what, " isn't there; use full or half size");
    if (format == Format::rgb32) misuse("rgb32 has no double size; use rgb24, i420, png or ppm");
    if (format == Format::rgb24 && q == 15)
      misuse(
          "quality 15 doubles rgb24 without its colour conversion; use i420, png or ppm, or another quality");
    if (format == Format::rgb24 && one_mirror)
      misuse("rgb24 at double size takes both mirrors or none; use png or ppm");
    if ((route == Format::i420 || packed) && q >= 10 && q <= 12)
      misuse(what, " leaves rows out; use rgb24, or png or ppm by way of it, or another quality");
    if (format == Format::yuyv && (q == 15 || (q == 2 && controls.medium_filter())))
      misuse(what, " leaves rows out; use uyvy, i420, png or ppm");
  }

  // Sizes at which the whole picture is right.
  if (d > 0) {
    require_size(job, file_stride, 64, 4, what);
  } else {
    const bool groups = route == Format::i420 || q == 3 || q == 13 || d < 0;
    require_size(job, file_stride, groups ? 32 : 16, 2, what);
  }
}

std::vector<int32_t> matrix_for(const Job& job, const Controls& controls) {
  if (job.standard == Standard::camera) return {};
  const Instance instance, scratch;
  Words table;
  controls.apply(instance.get(), job.frame.width, job.frame.height, table);
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
      route_(is_picture(format)      ? picture_route(job)
             : format == Format::y4m ? Format::i420
                                     : format),
      to_(output_size(job)),
      source_(frame_bytes(Format::bayer, job.frame.width, job.frame.height, job.frame.width)),
      frame_(frame_bytes(route_, to_.width, to_.height)) {
  ppl_context* c = context();
  controls.apply(c, job.frame.width, job.frame.height, lens_table_);
  if (!matrix.empty()) ppl_copy_sensor_matrix(c, matrix.data());
  ppl_set_quality(c, job.quality);
  ppl_set_decimation(c, job.decimation, 0, 0);
  // With one mirror the double-size RGB24 rows lie elsewhere: the mirrors are then left to the picture.
  if (is_picture(format) && route_ == Format::rgb24 && job.decimation < 0 &&
      controls.h_mirror() != controls.v_mirror()) {
    ppl_reset_mirrors(c);
    mirror_columns_ = controls.h_mirror();
    mirror_rows_ = controls.v_mirror();
  }
  // YUYV rows are read 4 bytes beyond the last one.
  if (job.scale.width) scratch_.resize(frame_bytes(route_, job.frame.width, job.frame.height) + 64);
}

void BayerWorker::convert_frame() {
  ppl_context* c = context();
  const uint32_t w = job_.frame.width, h = job_.frame.height, before = ppl_n_frame(c);
  bool done;
  if (job_.scale.width) {
    const auto call =
        route_ == Format::i420 ? BaylorToI420MMX_scaling_stride : BaylorToYUYVMMX_scaling_stride;
    done = call(c, source_.data(), w, h, w, frame_.data(), to_.width, to_.height, scratch_.data());
  } else {
    using Call = uint8_t (*)(ppl_context*, uint8_t*, uint8_t*, uint32_t, uint32_t, uint32_t);
    const Call call = route_ == Format::i420    ? ppl_process_blrtoi420
                      : route_ == Format::yuyv  ? ppl_process_blrtoyuyv
                      : route_ == Format::uyvy  ? ppl_process_blrtouyvy
                      : route_ == Format::rgb24 ? ppl_process_blrtorgb24
                                                : ppl_process_blrtorgb32;
    done = call(c, source_.data(), frame_.data(), w, h, w);
  }
  // The raw qualities answer false although they make their picture.
  if (ppl_n_frame(c) == before || (!done && !raw_quality(job_.quality)))
    fail("the library refuses a ", w, " x ", h, " frame");
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

}  // namespace tool
