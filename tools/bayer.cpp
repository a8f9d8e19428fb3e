#include "bayer.h"

#include <algorithm>

#include "failure.h"
#include "file.h"

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
  if (w > 2016 || w < width_unit || w % width_unit) {
    const uint32_t fit = std::clamp(w / width_unit * width_unit, width_unit, 2016 / width_unit * width_unit);
    fail("width ", w, " won't do for ", what, ": it takes multiples of ", width_unit, " from ", width_unit,
         " to ", 2016 / width_unit * width_unit,
         fit < w && stride <= 2048 ? text("; the left ", fit, " columns are -W ", fit, " --stride ", stride)
                                   : text(", for example ", fit));
  }
  if (h > 2048 || h < height_unit || h % height_unit)
    fail("height ", h, " won't do for ", what, ": it takes multiples of ", height_unit, " from ", height_unit,
         " to 2048");
  if (stride < w || stride > 2048)
    fail("stride ", stride, " won't do: it runs from the width, ", w, ", to 2048");
}

void require_scale(const FrameFile& file, const Job& job, Format format) {
  const Size& to = job.scale;
  if (format != Format::i420 && format != Format::yuyv && !is_picture(format))
    fail("--scale makes i420, yuyv, png and ppm alone, not ", name(format));
  if (job.decimation) fail("--scale and --decimation can't be combined");
  if (to.width % 32 || to.width < 32 || to.width > 8192)
    fail("scaled width ", to.width, " won't do: it takes multiples of 32 up to 8192");
  // The scaler moves on by at most one input row per output row: a lower picture would only show the top.
  if (to.height % 2 || to.height < file.height || to.height > 8192)
    fail("scaled height ", to.height, " won't do: it takes even heights from that of the frame, ",
         file.height, ", to 8192; --decimation 1 halves");
}

}  // namespace

void FrameFile::add_options(CLI::App& app, const std::string& what) {
  app.add_option("FRAME", path, what)->required();
  app.add_option("-W,--width", width, "Width in pixels")->required();
  app.add_option("-H,--height", height, "Height in rows")->required();
  app.add_option("--stride", stride,
                 "Bytes from one row to the next, Bayer frames alone (default: the width)");
  frame_option_ = app.add_option("--frame", frame, "Which frame of a file with several, from 0");
  app.add_option("--skip", skip, "Bytes in front of the first frame (default 0)");
}

Bytes FrameFile::read(Format format) const {
  if (!width || !height || width > 16384 || height > 16384)
    fail("a frame of ", width, " x ", height, " won't do: -W and -H run from 1 to 16384");
  if (stride && format != Format::bayer)
    fail("--stride is for Bayer frames; rows of ", name(format), " have none");
  if (stride && stride < width) fail("stride ", stride, " is below the width, ", width);
  const size_t size = frame_bytes(format, width, height, stride ? stride : width);
  const Bytes all = read_file(path);
  const size_t held = all.size() > skip ? all.size() - static_cast<size_t>(skip) : 0;
  const std::string kind = text(width, " x ", height, " ", name(format));
  if (held < size)
    fail(path, " is too short: it has ", held, " bytes", skip ? text(" behind the first ", skip) : "",
         ", one ", kind, " frame is ", size);
  if (held % size)
    fail(path, " has ", held, " bytes, no whole number of ", kind, " frames of ", size,
         "; check -W, -H, --stride, --input or --skip");
  if (held > size && !frame_option_->count())
    fail(path, " holds ", held / size, " frames; name one with --frame 0 to --frame ", held / size - 1);
  if (frame >= held / size)
    fail("there is no frame ", frame, " in ", path, ": it holds ", held / size, ", counted from 0");
  const auto first = all.begin() + static_cast<ptrdiff_t>(skip + size * frame);
  return Bytes(first, first + static_cast<ptrdiff_t>(size));
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
    fail("y4m can't say what the chroma of a Bayer frame means; use i420, png or ppm");
  if (q > 15 || (q >= 5 && q <= 8) || q == 14)
    fail("quality ", q, " makes no picture; use 0, 1, 2, 3, 10, 11, 12, 13, 15, or 4 for the raw mosaic");
  if (job.scale.width || job.scale.height) require_scale(file, job, format);

  // What the library leaves out or unfinished.
  if (q == 13 && (packed || format == Format::rgb32))
    fail("quality 13 makes no ", name(format), "; use i420, rgb24, png or ppm, or another quality");
  if (q == 15 && format == Format::rgb32)
    fail("quality 15 makes no rgb32; use rgb24, or quality 0, 1, 2, 3, 10, 11 or 12");
  if (raw_quality(q)) {
    if (controls.h_mirror || controls.v_mirror)
      fail("quality ", q, " is the mosaic as it is: it has no mirrors");
    if (file.stride && file.stride != file.width && d == 0)
      fail("quality ", q, " reads rows back to back: it takes no stride but the width");
    if (d < 0 || (d > 0 && format == Format::rgb24)) fail(what, " isn't there; use full size");
  }
  if (d < 0) {
    if (q == 13) fail(what, " isn't there; use full or half size");
    if (format == Format::rgb32) fail("rgb32 has no double size; use rgb24, i420, png or ppm");
    if (format == Format::rgb24 && q == 15)
      fail(
          "quality 15 doubles rgb24 without its colour conversion; use i420, png or ppm, or another quality");
    if (format == Format::rgb24 && one_mirror)
      fail("rgb24 at double size takes both mirrors or none; use png or ppm");
    if ((route == Format::i420 || packed) && q >= 10 && q <= 12)
      fail(what, " leaves rows out; use rgb24, or png or ppm by way of it, or another quality");
    if (format == Format::yuyv && (q == 15 || (q == 2 && controls.medium_filter)))
      fail(what, " leaves rows out; use uyvy, i420, png or ppm");
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
  const uint32_t w = file.width, h = file.height, stride = file.stride ? file.stride : w;
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
    done =
        call(context, source.data(), w, h, stride, destination.data(), to.width, to.height, scratch.data());
  } else {
    using Call = uint8_t (*)(ppl_context*, uint8_t*, uint8_t*, uint32_t, uint32_t, uint32_t);
    const Call call = format == Format::i420    ? ppl_process_blrtoi420
                      : format == Format::yuyv  ? ppl_process_blrtoyuyv
                      : format == Format::uyvy  ? ppl_process_blrtouyvy
                      : format == Format::rgb24 ? ppl_process_blrtorgb24
                                                : ppl_process_blrtorgb32;
    ppl_set_decimation(context, job.decimation, 0, 0);
    done = call(context, source.data(), destination.data(), w, h, stride);
  }
  // The raw qualities answer false although they make their picture.
  if (ppl_n_frame(context) == before || (!done && !raw_quality(job.quality)))
    fail("the library refuses a ", w, " x ", h, " frame with stride ", stride);
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
