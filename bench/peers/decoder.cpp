// Packed frames, and the scaler.
#include <libyuv.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <opencv2/imgproc.hpp>

#include "peers.h"

namespace peers {
namespace {

struct frames {
  uint32_t w, h;
  bench::buffer in, out, theirs, between;
  ppl_context* context;

  frames(bench::size s, bench::size to, int level_number)
      : w(uint32_t(s.width)),
        h(uint32_t(s.height)),
        in(bench::packed_frame(s.width, s.height)),
        out(4 * size_t(to.width) * size_t(to.height)),
        theirs(out.size()),
        between(4 * size_t(s.width) * size_t(s.height)) {
    ppl_test_force_level(level_number);
    context = ppl_init();
    if (context == nullptr) abort();
    ppl_new_frame_sizes(context, w, h, w, h, 0);
    ppl_set_quality(context, 5);  // scaled calls then scale and nothing else
  }
  ~frames() {
    ppl_reset_all_controls(context);
    ppl_free(context);
  }
  double pixels() const { return double(w) * h; }
};

constexpr int kStrip = 8;  // rows that two calls pass on to each other through the first-level cache

}  // namespace

std::vector<job> decoder_jobs(bench::size s, int level_number) {
  const auto f = std::make_shared<frames>(s, s, level_number);
  const auto to_i420 = [&](const char* name, decltype(&ppl_process_yuyvtoi420) call,
                           decltype(&libyuv::YUY2ToI420) peer) {
    return job{name,
               f->pixels(),
               [] {},
               [f, call] { call(f->context, f->in.data(), f->out.data(), f->w, f->h, f->w, f->h); },
               {{"libyuv", [f, peer] {
                   uint8_t* const to = f->theirs.data();
                   const int w = int(f->w), n = w * int(f->h);
                   peer(f->in.data(), 2 * w, to, w, to + n, w / 2, to + n * 5 / 4, w / 2, w, int(f->h));
                 }}}};
  };
  std::vector<job> jobs;
  jobs.push_back(to_i420("YUYV to I420", ppl_process_yuyvtoi420, libyuv::YUY2ToI420));
  jobs.push_back(to_i420("UYVY to I420", ppl_process_uyvytoi420, libyuv::UYVYToI420));
  const auto over_argb = [f](int strip) {
    const int w = int(f->w), h = int(f->h);
    for (int y = 0; y < h; y += strip) {
      const int rows = std::min(strip, h - y);
      libyuv::YUY2ToARGB(f->in.data() + size_t(2) * w * y, 2 * w, f->between.data(), 4 * w, w, rows);
      libyuv::ARGBToRGB24(f->between.data(), 4 * w, f->theirs.data() + size_t(3) * w * y, 3 * w, w, rows);
    }
  };
  const auto over_planes = [f](int strip) {
    const int w = int(f->w), h = int(f->h);
    uint8_t *const luma = f->between.data(), *const u = luma + size_t(w) * strip,
                   *const v = u + size_t(w) / 2 * strip;
    for (int y = 0; y < h; y += strip) {
      const int rows = std::min(strip, h - y);
      libyuv::YUY2ToI422(f->in.data() + size_t(2) * w * y, 2 * w, luma, w, u, w / 2, v, w / 2, w, rows);
      libyuv::I422ToRGB24(luma, w, u, w / 2, v, w / 2, f->theirs.data() + size_t(3) * w * y, 3 * w, w, rows);
    }
  };
  jobs.push_back(
      {"YUYV to RGB24",
       f->pixels(),
       [] {},
       [f] { ppl_process_yuyvtorgb24(f->context, f->in.data(), f->out.data(), f->w, f->h, f->w, f->h); },
       {{"libyuv over ARGB", [over_argb, f] { over_argb(int(f->h)); }},
        {"libyuv over ARGB, in strips", [over_argb] { over_argb(kStrip); }},
        {"libyuv over planes, in strips", [over_planes] { over_planes(kStrip); }},
        {"OpenCV", [f] {
           const cv::Mat in(int(f->h), int(f->w), CV_8UC2, f->in.data());
           cv::Mat out(int(f->h), int(f->w), CV_8UC3, f->theirs.data());
           cv::cvtColor(in, out, cv::COLOR_YUV2BGR_YUY2);
         }}}});
  return jobs;
}

std::vector<job> scaler_jobs(bench::size s, int level_number) {
  std::vector<job> jobs;
  const auto add = [&](const char* name, bench::size to) {
    const auto f = std::make_shared<frames>(s, to, level_number);
    jobs.push_back({name,
                    double(to.width) * to.height,
                    [] {},
                    [f, to] {
                      BaylorToI420MMX_scaling_stride(f->context, f->between.data(), f->w, f->h, f->w,
                                                     f->out.data(), uint32_t(to.width), uint32_t(to.height),
                                                     f->in.data());
                    },
                    {{"libyuv",
                      [f, to] {
                        const int w = int(f->w), h = int(f->h), n = to.width * to.height;
                        const uint8_t* const from = f->in.data();
                        uint8_t* const out = f->theirs.data();
                        libyuv::I420Scale(from, w, from + w * h, w / 2, from + w * h * 5 / 4, w / 2, w, h,
                                          out, to.width, out + n, to.width / 2, out + n * 5 / 4, to.width / 2,
                                          to.width, to.height, libyuv::kFilterBilinear);
                      }},
                     {"OpenCV, three planes", [f, to] {
                        const uint8_t* from = f->in.data();
                        uint8_t* out = f->theirs.data();
                        for (int plane = 0; plane < 3; ++plane) {
                          const int d = plane == 0 ? 1 : 2, w = int(f->w) / d, h = int(f->h) / d;
                          const cv::Mat in(h, w, CV_8UC1, const_cast<uint8_t*>(from));
                          cv::Mat scaled(to.height / d, to.width / d, CV_8UC1, out);
                          cv::resize(in, scaled, scaled.size(), 0, 0, cv::INTER_LINEAR);
                          from += w * h;
                          out += scaled.total();
                        }
                      }}}});
  };
  add("scale I420 by 1/2, per output pixel", {s.width / 2, s.height / 2});
  add("scale I420 by 2, per output pixel", {2 * s.width, 2 * s.height});
  add("scale I420 by 1.15 and 1.13, per output pixel",
      {s.width * 23 / 20 / 32 * 32, s.height * 17 / 15 / 2 * 2});
  return jobs;
}

}  // namespace peers
