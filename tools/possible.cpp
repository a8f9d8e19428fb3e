// Which frames the library makes whole pictures of, and what to do about the others.
#include <ppl_check.h>

#include <algorithm>

#include "bayer.h"
#include "failure.h"

namespace tool {
namespace {

bool is_raw(const Job& job) {
  return ppl_quality_table[job.quality].road == PPL_ROAD_RAW;
}

ppl_format frame_format(Format format) {
  return format == Format::i420    ? PPL_FORMAT_I420
         : format == Format::yuyv  ? PPL_FORMAT_YUYV
         : format == Format::uyvy  ? PPL_FORMAT_UYVY
         : format == Format::rgb24 ? PPL_FORMAT_RGB24
                                   : PPL_FORMAT_RGB32;
}

// The call as it will be made, of a frame whose size suits it.
ppl_plan plan_of(const Job& job, const Controls& controls, Format format) {
  const Format route = route_to(job, format);
  ppl_plan plan = ppl_plan_frame(job.scale.width ? PPL_CALL_SCALED : PPL_CALL_FRAME, frame_format(route),
                                 job.quality, job.sensor.width, job.sensor.height);
  plan.decimation = job.decimation;
  plan.medium_filter = controls.medium_filter();
  plan.h_mirror = controls.h_mirror();
  plan.v_mirror = controls.v_mirror();
  if (is_picture(format) && route == Format::rgb24 && job.decimation < 0 && plan.h_mirror != plan.v_mirror)
    plan.h_mirror = plan.v_mirror = 0;  // the picture is turned by hand
  if (job.scale.width) {
    plan.out_width = job.scale.width;
    plan.out_height = job.scale.height;
  }
  return plan;
}

// Whether frames beyond one call can be made in parts.
bool parts_will_do(const Job& job) {
  return job.decimation >= 0 && !job.scale.width && !is_raw(job);
}

void require_size(const Job& job, const ppl_multiples& unit, size_t row_bytes, const std::string& what) {
  const bool parts = parts_will_do(job);
  const uint32_t w = job.sensor.width, h = job.sensor.height;
  const uint32_t widest = parts ? 16384 : 2016, highest = parts ? 16384 : 2048;
  const auto fit = [](uint32_t n, uint32_t of, uint32_t most) {
    return std::clamp(n / of * of, of, most / of * of);
  };
  const uint32_t columns = fit(w, unit.width, widest), rows = fit(h, unit.height, highest);
  if (columns != w)
    misuse("width ", w, " won't do for ", what, ": it takes multiples of ", unit.width, " from ", unit.width,
           " to ", widest / unit.width * unit.width,
           columns < w ? text("; the left ", columns, " columns are -W ", columns, " --stride ", row_bytes)
                       : text(", for example ", columns));
  if (rows != h)
    misuse("height ", h, " won't do for ", what, ": it takes multiples of ", unit.height, " from ",
           unit.height, " to ", highest,
           rows < h ? text("; the upper ", rows, " rows are -H ", rows, " --stride ", row_bytes) : "");
}

void require_scale(const Job& job, Format format) {
  const Size& to = job.scale;
  if (format != Format::i420 && format != Format::yuyv && format != Format::y4m && !is_picture(format))
    misuse("--scale makes i420, yuyv, y4m, png and ppm alone, not ", name(format));
  if (job.decimation) misuse("--scale and --decimation can't be combined");
  if (to.width % 32 || to.width < 32 || to.width > 8192)
    misuse("scaled width ", to.width, " won't do: it takes multiples of 32 up to 8192");
  // The scaler moves on by at most one input row per output row: a lower picture would only show the top.
  if (to.height % 2 || to.height < job.sensor.height || to.height > 8192)
    misuse("scaled height ", to.height, " won't do: it takes even heights from that of the frame, ",
           job.sensor.height, ", to 8192; --decimation 1 halves");
}

// Another format of the same quality that would do, for advice; empty if there is none.
std::string other_formats(const Job& job, const Controls& controls, Format wanted) {
  std::string list;
  for (const Format format :
       {Format::i420, Format::yuyv, Format::uyvy, Format::rgb24, Format::rgb32, Format::png}) {
    ppl_plan plan = plan_of(job, controls, format);
    plan.width = plan.stride = 64;
    plan.height = 64;
    const bool scaled =
        job.scale.width && format != Format::i420 && format != Format::yuyv && format != Format::png;
    if (format == wanted || scaled || !ppl_check(&plan).whole) continue;
    list += (list.empty() ? "" : ", ") + std::string(format == Format::png ? "png and ppm" : name(format));
  }
  return list;
}

}  // namespace

void require_possible(const Job& job, const Controls& controls, Format format, size_t row_bytes) {
  const std::string what = text("quality ", job.quality, " to ", name(format),
                                job.decimation > 0   ? " at half size"
                                : job.decimation < 0 ? " at double size"
                                                     : "");
  if (format == Format::y4m && job.standard == Standard::camera)
    misuse("y4m can't say what the camera's chroma means; take --out-chroma bt601 or bt709, or i420");
  if (job.video_range && job.standard == Standard::camera)
    misuse(
        "the camera's chroma has full range alone; --out-range video goes with --out-chroma bt601 or bt709");
  if (job.scale.width || job.scale.height) require_scale(job, format);
  if (is_raw(job) && (controls.h_mirror() || controls.v_mirror()))
    misuse("quality ", job.quality, " is the mosaic as it is: it has no mirrors");

  // Whether there is such a picture at all, and then at this size.
  ppl_plan plan = plan_of(job, controls, format);
  ppl_multiples unit = ppl_multiples_of(job.quality, plan.format, job.decimation);
  if (in_parts(job) && parts_will_do(job)) {
    unit.width = std::max<decltype(unit.width)>(unit.width, job.decimation ? 64 : 32);
    unit.height = std::max<decltype(unit.height)>(unit.height, job.decimation ? 4 : 2);
  }
  ppl_plan suits = plan;
  suits.width = suits.stride = 64;
  suits.height = 64;
  if (job.scale.width) suits.out_height = std::max(suits.out_height, 64u);
  if (const ppl_verdict verdict = ppl_check(&suits); !verdict.whole) {
    const std::string others = other_formats(job, controls, format);
    misuse(what, ": ", ppl_reason_text(verdict.reason),
           others.empty() ? "" : "; this quality makes " + others + " here");
  }
  require_size(job, unit, row_bytes, what);
  if (!in_parts(job)) {
    if (const ppl_verdict verdict = ppl_check(&plan); !verdict.whole)
      misuse(what, ": ", ppl_reason_text(verdict.reason));
    return;
  }
  ppl_part parts[PPL_MOST_PARTS];
  if (!ppl_plan_parts(job.sensor.width, job.sensor.height, job.decimation, parts, PPL_MOST_PARTS))
    misuse("a frame of ", job.sensor.width, " x ", job.sensor.height, " would take more than ",
           int{PPL_MOST_PARTS}, " parts");
}

}  // namespace tool
