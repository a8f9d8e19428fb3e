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

void require_size(const FrameFile& file, uint32_t width_unit, uint32_t height_unit, const std::string& what) {
  const uint32_t w = file.width, h = file.height, stride = file.stride ? file.stride : w;
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

void require_scale(const FrameFile& file, const Job& job, Format format) {
  const Size& to = job.scale;
  if (format != Format::i420 && format != Format::yuyv && !is_picture(format))
    misuse("--scale makes i420, yuyv, png and ppm alone, not ", name(format));
  if (job.decimation) misuse("--scale and --decimation can't be combined");
  if (to.width % 32 || to.width < 32 || to.width > 8192)
    misuse("scaled width ", to.width, " won't do: it takes multiples of 32 up to 8192");
  // The scaler moves on by at most one input row per output row: a lower picture would only show the top.
  if (to.height % 2 || to.height < file.height || to.height > 8192)
    misuse("scaled height ", to.height, " won't do: it takes even heights from that of the frame, ",
           file.height, ", to 8192; --decimation 1 halves");
}

}  // namespace

bool best_via_i420(uint32_t quality) {
  return quality == 0 || quality == 10;
}

Size output_size(const FrameFile& file, const Job& job) {
  if (job.scale.width) return job.scale;
  if (job.decimation > 0) return {file.width / 2, file.height / 2};
  if (job.decimation < 0) return {file.width * 2, file.height * 2};
  return {file.width, file.height};
}

void require_possible(const FrameFile& file, const Job& job, const Controls& controls, Format format) {
  const uint32_t q = job.quality;
  const int d = job.decimation;
  const Format route = is_picture(format) ? picture_route(job) : format;
  const bool one_mirror = controls.h_mirror != controls.v_mirror;
  const std::string what = text("quality ", q, " to ", name(format),
                                d > 0   ? " at half size"
                                : d < 0 ? " at double size"
                                        : "");
  const bool packed = format == Format::yuyv || format == Format::uyvy;
  if (format == Format::y4m)
    misuse("y4m can't say what the chroma of a Bayer frame means; use i420, png or ppm");
  if (q > 15 || (q >= 5 && q <= 8) || q == 14)
    misuse("quality ", q, " makes no picture; use 0, 1, 2, 3, 10, 11, 12, 13, 15, or 4 for the raw mosaic");
  if (job.scale.width || job.scale.height) require_scale(file, job, format);

  // What the library leaves out or unfinished.
  if (q == 13 && (packed || format == Format::rgb32))
    misuse("quality 13 makes no ", name(format), "; use i420, rgb24, png or ppm, or another quality");
  if (q == 15 && format == Format::rgb32)
    misuse("quality 15 makes no rgb32; use rgb24, or quality 0, 1, 2, 3, 10, 11 or 12");
  if (raw_quality(q)) {
    if (controls.h_mirror || controls.v_mirror)
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
    if (format == Format::yuyv && (q == 15 || (q == 2 && controls.medium_filter)))
      misuse(what, " leaves rows out; use uyvy, i420, png or ppm");
  }

  // Sizes at which the whole picture is right.
  if (d > 0) {
    require_size(file, 64, 4, what);
  } else {
    const bool groups = route == Format::i420 || q == 3 || q == 13 || d < 0;
    require_size(file, groups ? 32 : 16, 2, what);
  }
}

Bytes convert_bayer(ppl_context* context, const FrameFile& file, const Job& job, Format format,
                    Bytes source) {
  const uint32_t w = file.width, h = file.height;
  const Size to = output_size(file, job);
  Bytes destination(frame_bytes(format, to.width, to.height));
  ppl_set_quality(context, job.quality);
  const uint32_t before = ppl_n_frame(context);
  bool done;
  if (job.scale.width) {
    // YUYV rows are read 4 bytes beyond the last one.
    Bytes scratch(frame_bytes(format, w, h) + 64);
    const auto call =
        format == Format::i420 ? BaylorToI420MMX_scaling_stride : BaylorToYUYVMMX_scaling_stride;
    done = call(context, source.data(), w, h, w, destination.data(), to.width, to.height, scratch.data());
  } else {
    using Call = uint8_t (*)(ppl_context*, uint8_t*, uint8_t*, uint32_t, uint32_t, uint32_t);
    const Call call = format == Format::i420    ? ppl_process_blrtoi420
                      : format == Format::yuyv  ? ppl_process_blrtoyuyv
                      : format == Format::uyvy  ? ppl_process_blrtouyvy
                      : format == Format::rgb24 ? ppl_process_blrtorgb24
                                                : ppl_process_blrtorgb32;
    ppl_set_decimation(context, job.decimation, 0, 0);
    done = call(context, source.data(), destination.data(), w, h, w);
  }
  // The raw qualities answer false although they make their picture.
  if (ppl_n_frame(context) == before || (!done && !raw_quality(job.quality)))
    fail("the library refuses a ", w, " x ", h, " frame");
  return destination;
}

Picture bayer_picture(ppl_context* context, const FrameFile& file, const Job& job, const Controls& controls,
                      const Bytes& source) {
  const Format route = picture_route(job);
  const Size to = output_size(file, job);
  // With one mirror the double-size RGB24 rows lie elsewhere: the mirrors are then left to the picture.
  const bool by_hand = route == Format::rgb24 && job.decimation < 0 && controls.h_mirror != controls.v_mirror;
  if (by_hand) ppl_reset_mirrors(context);
  Picture picture = picture_of(route, convert_bayer(context, file, job, route, source), to.width, to.height,
                               Chroma::camera);
  if (by_hand && controls.h_mirror) mirror_columns(picture);
  if (by_hand && controls.v_mirror) mirror_rows(picture);
  return picture;
}

}  // namespace tool
