// A raw frame, with what the peers offer for each step of ours:
//
//   finished    black level, shading, tone table, demosaic, colour matrix, I420, median of all planes, sharpening of
//               luma, smoothing of chroma. No green balance, no statistics: less than ours
//   plain       tone table, demosaic, colour matrix, I420
//
// Chain A goes over BGRA with libyuv's colour matrix and I420, chain B stays in OpenCV, with its edge-aware demosaic
// for the finished frame.
#include <libyuv.h>

#include <cmath>
#include <memory>
#include <opencv2/imgproc.hpp>

#include "peers.h"

namespace peers {
namespace {

enum class sharpening { kernel, unsharp_mask };

struct camera {
  int w, h;
  bench::buffer raw;
  cv::Mat mosaic, black, shading, table, matrix, corrected, shaded, toned, bgr, coloured, bgra, bgra_coloured;
  cv::Mat i420, finished, median, chroma_median, blurred, sharpen, packed, rgb, scaled;

  explicit camera(bench::size s)
      : w(s.width), h(s.height), raw(bench::mosaic(s.width, s.height, bench::content::photograph)) {
    mosaic = cv::Mat(h, w, CV_8UC1, raw.data());
    black = cv::Mat(h, w, CV_8UC1, cv::Scalar(12));
    corrected = cv::Mat(h, w, CV_8UC1);
    shaded = cv::Mat(h, w, CV_8UC1);
    shading = cv::Mat(h, w, CV_8UC1, cv::Scalar(200));
    table = cv::Mat(1, 256, CV_8UC1);
    for (int i = 0; i < 256; ++i) table.at<uint8_t>(i) = cv::saturate_cast<uint8_t>(16 * std::sqrt(i));
    matrix = (cv::Mat_<float>(3, 3) << 1.4, -0.3, -0.1, -0.2, 1.4, -0.2, -0.1, -0.4, 1.5);
    sharpen = (cv::Mat_<float>(3, 3) << 0, -0.25, 0, -0.25, 2, -0.25, 0, -0.25, 0);
    i420 = cv::Mat(h * 3 / 2, w, CV_8UC1);
    finished = cv::Mat(h * 3 / 2, w, CV_8UC1);
    bgra_coloured = cv::Mat(h, w, CV_8UC4);
    packed = cv::Mat(h, w, CV_8UC2);
    rgb = cv::Mat(h, w, CV_8UC3);
    scaled = cv::Mat(2 * h * 3 / 2, 2 * w, CV_8UC1);
  }

  static cv::Mat luma(cv::Mat& frame, int width, int height) {
    return cv::Mat(height, width, CV_8UC1, frame.data);
  }
  static cv::Mat chroma(cv::Mat& frame, int width, int height, int plane) {
    return cv::Mat(height / 2, width / 2, CV_8UC1,
                   frame.data + size_t(width) * height + size_t(plane) * (width / 2) * (height / 2));
  }
  uint8_t* y(cv::Mat& f) const { return f.data; }
  uint8_t* u(cv::Mat& f) const { return f.data + size_t(w) * h; }
  uint8_t* v(cv::Mat& f) const { return f.data + size_t(w) * h * 5 / 4; }

  // Both calls take any bytes, four to a "pixel". The shading is at most 1: the tone table makes up for it.
  void correct() {
    libyuv::ARGBSubtract(mosaic.data, w, black.data, w, corrected.data, w, w / 4, h);
    libyuv::ARGBMultiply(corrected.data, w, shading.data, w, shaded.data, w, w / 4, h);
  }
  void tone(const cv::Mat& from) { cv::LUT(from, table, toned); }
  // OpenCV names the pattern after the second row's second and third sample: this is B Gb / Gr R.
  void over_bgra() {
    cv::demosaicing(toned, bgra, cv::COLOR_BayerRG2BGRA, 4);
    static const int8_t m[16] = {90, -19, -6, 0, -13, 90, -13, 0, -6, -26, 96, 0, 0, 0, 0, 64};
    libyuv::ARGBColorMatrix(bgra.data, 4 * w, bgra_coloured.data, 4 * w, m, w, h);
    libyuv::ARGBToJ420(bgra_coloured.data, 4 * w, y(i420), w, u(i420), w / 2, v(i420), w / 2, w, h);
  }
  void over_bgr(bool edge_aware) {
    cv::demosaicing(toned, bgr, edge_aware ? cv::COLOR_BayerRG2BGR_EA : cv::COLOR_BayerRG2BGR);
    cv::transform(bgr, coloured, matrix);
    cv::cvtColor(coloured, i420, cv::COLOR_BGR2YUV_I420);
  }
  void filter(sharpening how) {
    cv::Mat out = luma(finished, w, h);
    cv::medianBlur(luma(i420, w, h), median, 3);
    if (how == sharpening::kernel) {
      cv::filter2D(median, out, -1, sharpen);
    } else {
      cv::GaussianBlur(median, blurred, {3, 3}, 0);
      cv::addWeighted(median, 1.75, blurred, -0.75, 0, out);
    }
    for (int plane = 0; plane < 2; ++plane) {
      cv::Mat smooth = chroma(finished, w, h, plane);
      cv::medianBlur(chroma(i420, w, h, plane), chroma_median, 3);
      cv::GaussianBlur(chroma_median, smooth, {3, 3}, 0);
    }
  }
  void finished_a(sharpening how) {
    correct();
    tone(shaded);
    over_bgra();
    filter(how);
  }
  void finished_b(sharpening how) {
    correct();
    tone(shaded);
    over_bgr(true);
    filter(how);
  }
  void scale(int out_w, int out_h) {
    uint8_t* const to = scaled.data;
    const size_t n = size_t(out_w) * out_h;
    libyuv::I420Scale(y(finished), w, u(finished), w / 2, v(finished), w / 2, w, h, to, out_w, to + n,
                      out_w / 2, to + n * 5 / 4, out_w / 2, out_w, out_h, libyuv::kFilterBilinear);
  }
  void to_yuyv() {
    libyuv::I420ToYUY2(y(finished), w, u(finished), w / 2, v(finished), w / 2, packed.data, 2 * w, w, h);
  }
  void to_rgb24() {
    libyuv::I420ToRGB24(y(finished), w, u(finished), w / 2, v(finished), w / 2, rgb.data, 3 * w, w, h);
  }
};

}  // namespace

std::vector<job> camera_jobs(bench::size s, int level_number) {
  using bench::format;
  const auto their = std::make_shared<camera>(s);
  camera* const p = their.get();
  const auto ours = [&](const char* name, bench::frame_task task, std::vector<chain> theirs) {
    task.frame = s;
    task.level_number = level_number;
    // Set up when its turn comes: there are fewer contexts than jobs.
    const auto f = std::make_shared<std::unique_ptr<bench::frame_runner>>();
    const auto refresh = [f, task] {
      if (*f == nullptr) *f = std::make_unique<bench::frame_runner>(task);
      (*f)->refresh();
    };
    return job{name, double(s.width) * s.height, refresh, [f, their] { (*f)->call(); }, std::move(theirs)};
  };
  const auto finished = [p](const std::function<void()>& end) {
    using body = void (camera::*)(sharpening);
    const auto with = [p, end](const char* name, body steps, sharpening how) {
      return chain{name, [p, end, steps, how] {
                     (p->*steps)(how);
                     end();
                   }};
    };
    return std::vector<chain>{
        with("OpenCV, libyuv, 3x3 kernel", &camera::finished_a, sharpening::kernel),
        with("OpenCV, libyuv, unsharp mask", &camera::finished_a, sharpening::unsharp_mask),
        with("OpenCV, edge-aware", &camera::finished_b, sharpening::kernel)};
  };
  const std::vector<chain> whole = finished([] {});
  const std::vector<chain> plain = {{"OpenCV, libyuv",
                                     [p] {
                                       p->tone(p->mosaic);
                                       p->over_bgra();
                                     }},
                                    {"OpenCV", [p] {
                                       p->tone(p->mosaic);
                                       p->over_bgr(false);
                                     }}};
  std::vector<job> jobs;
  jobs.push_back(ours("quality 15 to I420 : finished frame", {.quality = 15}, whole));
  jobs.push_back(ours("quality 0 to I420 : finished frame", {.quality = 0}, whole));
  jobs.push_back(ours("quality 10 to I420 : finished frame", {.quality = 10}, whole));
  jobs.push_back(ours("quality 2 to I420 : no filters", {.quality = 2}, plain));
  jobs.push_back(ours("quality 3 to I420 : no filters", {.quality = 3}, plain));
  jobs.push_back(ours("quality 13 to I420 : no filters", {.quality = 13}, plain));
  jobs.push_back(ours("quality 15 to YUYV : finished, packed", {.quality = 15, .to = PPL_FORMAT_YUYV},
                      finished([p] { p->to_yuyv(); })));
  jobs.push_back(ours("quality 15 to RGB24 : finished, to RGB24", {.quality = 15, .to = PPL_FORMAT_RGB24},
                      finished([p] { p->to_rgb24(); })));
  jobs.push_back(ours("quality 15, half size : finished, scaled", {.quality = 15, .decimation = 1},
                      finished([p] { p->scale(p->w / 2, p->h / 2); })));
  jobs.push_back(ours("quality 15, double size : finished, scaled", {.quality = 15, .decimation = -1},
                      finished([p] { p->scale(2 * p->w, 2 * p->h); })));
  return jobs;
}

}  // namespace peers
