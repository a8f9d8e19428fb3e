#include "helpers/scenes.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "ppl.h"
#include "reference/convert.h"
#include "support/convert_exports.h"
#include "support/slots.h"

namespace scenes {
namespace {

enum kind { grey_across, grey_down, colour_across, colour_down };
constexpr double kGrey = 40, kColour = 60, kRest = 100, kRange = 120;

// Steps a sample or row, as steep as the levels allow and neighbourhoods bear.
double slope(kind k, const ppl_plan& p) {
  const uint32_t extent = k == grey_across || k == colour_across ? p.width : p.height;
  return std::min(3.0, kRange / std::max(extent, 1u));
}
double along(kind k, double x, double y, const ppl_plan& p) {
  return slope(k, p) * (k == grey_across || k == colour_across ? x : y);
}
bool is_colour(kind k) {
  return k == colour_across || k == colour_down;
}

// Bytes at the address asked for, modulo 16.
class place {
 public:
  place(size_t n, uint32_t at, uint8_t fill) : memory_(n + 96, fill), size_(n) {
    const auto base = reinterpret_cast<uintptr_t>(memory_.data());
    data_ = memory_.data() + (64 - base % 64) % 64 + at;
  }
  uint8_t* data() { return data_; }
  bytes content() const { return bytes(data_, data_ + size_); }
  void set(const bytes& b) { std::copy(b.begin(), b.end(), data_); }

 private:
  bytes memory_;
  size_t size_;
  uint8_t* data_;
};

// A call's destination, with room for any last-resort picture and for a frame that is larger than asked for.
size_t room_of(const ppl_plan& p) {
  const uint64_t n = bytes_of(p.format, picture_of(p));
  return static_cast<size_t>(n + uint64_t{16} * p.width * p.height +
                             uint64_t{4} * p.out_width * p.out_height + 64);
}
uint32_t stride_of(const ppl_plan& p) {
  return p.call == PPL_CALL_FRAME || p.call == PPL_CALL_SCALED ? p.stride
         : p.call == PPL_CALL_DOUBLE_STRIDE                    ? 2 * p.width
         : p.call == PPL_CALL_STRIDE_4                         ? 4 * p.width
                                                               : p.width;
}

bytes identity() {
  bytes t(256);
  for (size_t i = 0; i < 256; ++i) t[i] = static_cast<uint8_t>(i);
  return t;
}
constexpr int32_t kIdentityMatrix[9] = {256, 0, 0, 0, 256, 0, 0, 0, 256};

// The plan's controls and geometry, on either kind of slot. Tone and colour stay as they are in the scene.
template <class Slot>
void set_up(Slot& s, const ppl_plan& p) {
  s.reset_all_controls();
  const bytes t = identity();
  s.copy_rgb_gamma_table(t.data());
  s.copy_yuv_gamma_table(t.data());
  s.copy_sensor_matrix(kIdentityMatrix);
  s.set_quality(p.quality);
  if (p.medium_filter) s.enable_medium_filter();
  s.set_h_mirror(p.h_mirror);
  s.set_v_mirror(p.v_mirror);
  s.set_P3_only(p.P3_only);
  if (p.sized) s.new_frame_size(p.width, p.height, ppl_call_takes_bayer(p.call) ? stride_of(p) : p.width);
  s.set_decimation(p.decimation, p.top_black_lines, p.bottom_black_lines);
}

// What qualities 10 and 11 leave behind would colour later frames: a frame without flat places clears it.
template <class Slot>
void forget_flat_colours(Slot& s) {
  s.reset_all_controls();
  s.set_quality(11);
  place bars(32 * 4, 0, 0), out(32 * 4 * 2, 0, 0);
  for (int i = 0; i < 32 * 4; ++i) bars.data()[i] = i % 4 < 2 ? 0 : 255;
  s.process_frame(ref::format{}, bars.data(), out.data(), 32, 4, 32);
}

template <class Slot, class Count>
made run_frame(Slot& s, const Count& count, const ppl_plan& p, const bytes& source, uint8_t fill) {
  set_up(s, p);
  const size_t last_resort =
      p.call == PPL_CALL_SCALED ? size_t{p.out_width} * p.out_height : 4 * size_t{p.width} * p.height;
  place from(std::max(source.size(), last_resort), p.source_at, fill), to(room_of(p), p.destination_at, fill);
  // What stands behind the frame in scratch is the caller's, and may be read.
  const size_t in_scratch = p.call == PPL_CALL_SCALED ? bytes_of(p.format, {p.width, p.height}) : 0;
  place scratch(in_scratch + 64, p.scratch_at, 128);
  std::fill_n(scratch.data(), in_scratch, fill);
  from.set(source);
  const auto format = static_cast<ref::format>(p.format);
  const auto before = count();
  made m;
  if (p.call == PPL_CALL_FRAME)
    m.result = s.process_frame(format, from.data(), to.data(), p.width, p.height, p.stride);
  else if (p.call == PPL_CALL_SCALED)
    m.result = s.scaling_wrapper(format, from.data(), p.width, p.height, p.stride, to.data(), p.out_width,
                                 p.out_height, scratch.data());
  else
    m.result = s.wrapper(format, static_cast<ref::ending>(p.call - PPL_CALL_SAME), from.data(), to.data(),
                         p.width, p.height);
  m.counted = count() != before;
  m.picture = to.content();
  if (p.quality == 10 || p.quality == 11) forget_flat_colours(s);
  return m;
}

const char* name_of(const ppl_plan& p) {
  static std::string name;
  const char* const from = p.input == PPL_FORMAT_YUYV ? "YUYV" : "UYVY";
  constexpr const char* to[] = {"I420", "YUYV", "UYVY", "RGB24", "RGB32"};
  const bool fields = p.call >= PPL_CALL_FIELDS;
  if (p.call == PPL_CALL_PACKED_12_BIT) return p.process ? "ppl_process_uyvyyyyytoi420" : "UYVYYYYYToI420MMX";
  if (p.call == PPL_CALL_RGB24_TO_RGB32) return p.process ? "ppl_process_rgb24torgb32" : "RGB24ToRGB32MMX";
  name = p.process ? "ppl_process_" + std::string(fields ? "intl" : "") + from + "to" + to[p.format]
                   : std::string(fields ? "Intl" : "") + from + "To" + to[p.format] + "MMX" +
                         (p.call == PPL_CALL_FIELDS_NO_MOTION ? "_no_motion" : "");
  if (p.process)
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
  return name.c_str();
}

class the_library : public machine {
 public:
  the_library() { slot_.context = ppl_init(); }
  made frame(const ppl_plan& p, const bytes& source, uint8_t fill) override {
    return run_frame(
        slot_, [this] { return ppl_n_frame(slot_.context); }, p, source, fill);
  }
  made conversion(const ppl_plan& p, const bytes (&source)[3], uint8_t fill) override {
    // Another size than the plan's, unless the plan says that it stands: conversions then set their own.
    ppl_reset_decimation(slot_.context);
    ppl_new_frame_size(slot_.context, 48, 20, 48);
    set_up(slot_, p);
    place earlier(source[0].size(), p.source_at, 0), kept(source[1].size(), p.source_at, 0);
    place later(source[2].size(), p.source_at, 0), to(room_of(p), p.destination_at, fill);
    earlier.set(source[0]);
    kept.set(source[1]);
    later.set(source[2]);
    const convert_export* const call = find_export(name_of(p));
    if (call == nullptr) return {};
    const uint32_t before = ppl_n_frame(slot_.context);
    made m;
    m.result = (*call)(slot_.context, earlier.data(), kept.data(), later.data(), to.data(), p.width, p.height,
                       p.out_width, p.out_height);
    m.counted = ppl_n_frame(slot_.context) != before;
    m.picture = to.content();
    return m;
  }

 private:
  slots::library_slot slot_;
};

class the_reference : public machine {
 public:
  made frame(const ppl_plan& p, const bytes& source, uint8_t fill) override {
    return run_frame(
        slot_, [this] { return slot_.n_frame; }, p, source, fill);
  }
  made conversion(const ppl_plan& p, const bytes (&source)[3], uint8_t fill) override {
    const ref::conversion* const c = ref::find_conversion(name_of(p));
    if (c == nullptr) return {};
    ref::convert_state s;
    ref::new_frame_size(s, 48, 20, 48);
    if (p.sized) ref::new_frame_size(s, p.width, p.height, p.width);
    ref::set_decimation(s, p.decimation, p.top_black_lines, p.bottom_black_lines);
    s.h_mirror = p.h_mirror;
    s.v_mirror = p.v_mirror;
    s.P3_only = p.P3_only;
    place earlier(source[0].size(), p.source_at, 0), kept(source[1].size(), p.source_at, 0);
    place later(source[2].size(), p.source_at, 0);
    earlier.set(source[0]);
    kept.set(source[1]);
    later.set(source[2]);
    ref::picture out(bytes(room_of(p), fill));
    const ref::convert_call call = {earlier.data(), kept.data(), later.data(), 4096u + p.destination_at,
                                    p.width,        p.height,    p.out_width,  p.out_height};
    out.room = ref::foresee(s, *c, call).room;
    out.bytes.resize(std::max(out.bytes.size(), static_cast<size_t>(out.room)), fill);
    out.stored.resize(out.bytes.size());
    const ref::converted done = ref::convert(s, *c, call, out);
    made m;
    m.result = done.result;
    m.counted = s.n_frame != 0;
    m.picture = out.bytes;
    // What is left open is a picture of nothing.
    if (done.content == ref::promise::nothing_inside) std::fill(m.picture.begin(), m.picture.end(), fill);
    return m;
  }

 private:
  slots::reference_slot slot_;
};

// ---- Scenes

uint8_t level(double v) {
  return static_cast<uint8_t>(std::lround(std::clamp(v, 0.0, 255.0)));
}

bytes mosaic(kind k, const ppl_plan& p, uint8_t fill) {
  const uint32_t stride = stride_of(p);
  bytes s(size_t{stride} * p.height, fill);
  for (uint32_t y = 0; y < p.height; ++y)
    for (uint32_t x = 0; x < std::min(p.width, stride); ++x) {
      const double t = along(k, x, y, p);
      const bool blue = y % 2 == 0 && x % 2 == 0;
      s[size_t{y} * stride + x] = level(!is_colour(k) ? kGrey + t : blue ? kColour + t : kRest);
    }
  return s;
}

// Luma rises in grey scenes and U in coloured ones.
void packed(kind k, const ppl_plan& p, bytes (&source)[3]) {
  const bool fields = p.call >= PPL_CALL_FIELDS;
  const size_t row = 2 * size_t{p.width};
  bytes whole(row * p.height + row);
  for (uint32_t y = 0; y < p.height; ++y)
    for (uint32_t x = 0; x < p.width; ++x) {
      const double t = along(k, x, y, p);
      const uint8_t luma = level(is_colour(k) ? kRest : kGrey + t);
      const uint8_t chroma = x % 2 == 0 ? level(is_colour(k) ? kColour + t : 128) : 128;
      uint8_t* const at = &whole[y * row + 2 * x];
      at[0] = p.input == PPL_FORMAT_YUYV ? luma : chroma;
      at[1] = p.input == PPL_FORMAT_YUYV ? chroma : luma;
    }
  for (bytes& s : source) s.assign(fields ? row * (p.height / 2 + 1) : whole.size(), 0);
  if (!fields) {
    source[1] = whole;
    return;
  }
  for (uint32_t y = 0; y + 1 < p.height; y += 2) {
    std::copy_n(&whole[y * row], row, &source[1][y / 2 * row]);
    std::copy_n(&whole[(y + 1) * row], row, &source[2][y / 2 * row]);
  }
  source[0] = source[2];  // nothing moves
}

// ---- What comes out

struct pixel {
  double luma, u, v;  // YUV formats
  double b, g, r;     // RGB formats
};

pixel pixel_at(const bytes& out, uint32_t format, extent e, uint32_t x, uint32_t y) {
  pixel p = {};
  const size_t w = e.width, h = e.height, n = w * h;
  const auto at = [&](size_t i) { return double{out[i] * 1.0}; };
  if (format == PPL_FORMAT_I420) {
    const size_t c = y / 2 * (w / 2) + x / 2;
    p.luma = at(y * w + x);
    p.u = n < 4 ? 128 : at(n + std::min(c, n / 4 - 1));
    p.v = n < 4 ? 128 : at(n + n / 4 + std::min(c, n / 4 - 1));
  } else if (format <= PPL_FORMAT_UYVY) {
    const size_t first = 2 * (y * w + (x & ~1u)), odd = format == PPL_FORMAT_UYVY;
    const size_t last = std::min(first + 2, 2 * n - 2);
    p.luma = at(2 * (y * w + x) + odd);
    p.u = at(first + 1 - odd);
    p.v = at(last + 1 - odd);
  } else {
    const size_t size = format == PPL_FORMAT_RGB24 ? 3 : 4, i = size * ((h - 1 - y) * w + x);
    p.b = at(i);
    p.g = at(i + 1);
    p.r = at(i + 2);
  }
  return p;
}

bool near(double a, double b, double by) {
  return std::fabs(a - b) <= by;
}

std::string say(const char* what, uint32_t x, uint32_t y, double is, double wanted) {
  return std::string(what) + " at column " + std::to_string(x) + ", row " + std::to_string(y) + ": " +
         std::to_string(is) + ", not " + std::to_string(wanted);
}

std::string judge(const bytes& out, kind k, const ppl_plan& p, extent e) {
  const bool bayer = ppl_call_takes_bayer(p.call), fields = p.call >= PPL_CALL_FIELDS;
  const bool scaled = p.call == PPL_CALL_SCALED, rgb = p.format >= PPL_FORMAT_RGB24;
  const bool raw = bayer && (p.quality == 4 || p.quality == 9);
  const bool grey = raw || (bayer && (p.quality == 12 || p.quality == 13));
  const bool mirrors = bayer ? !raw : p.call == PPL_CALL_PACKED && p.format == PPL_FORMAT_I420;
  const bool h = mirrors && p.h_mirror, v = mirrors && p.v_mirror;
  const bool doubled = e.width > p.width && !scaled;
  const bool across = k == grey_across || k == colour_across;

  // Samples and rows of the frame for each of the picture: a power of two, but where it is scaled.
  double wide = 1;
  if (doubled) wide = 0.5;
  while (!scaled && e.width > 0 && 2 * wide * e.width <= p.width) wide *= 2;
  // Rows of the frame in the picture; fields may have black ones above and below.
  const auto all_rows = static_cast<int64_t>(p.height / wide);
  int64_t rows = e.height, top = 0;
  if (fields) {
    rows = all_rows;
    top = p.sized ? p.top_black_lines : (e.height - rows) / 2;
  }
  if (rows <= 0) return "nothing of the frame is in it";
  if (!scaled && (rows != all_rows || e.width != static_cast<uint32_t>(p.width / wide)))
    return "a part of the frame is missing";
  const double high = scaled ? p.height / static_cast<double>(rows) : wide;
  if (scaled) wide = p.width / double{e.width * 1.0};

  const double step = slope(k, p);
  // How many samples a place may be off: interpolation and, across doubled packed rows, columns mixed in.
  const double off = !across ? 1.2 : bayer && doubled && !rgb ? 5 : 2.5;
  const uint32_t every_x = e.width * uint64_t{e.height} > 50000 ? 7 : 1, every_y = every_x == 1 ? 1 : 3;
  for (uint32_t y = 0; y < e.height; y += every_y)
    for (uint32_t x = 0; x < e.width; x += every_x) {
      const pixel is = pixel_at(out, p.format, e, x, y);
      if (y < top || y >= top + rows) {
        const bool black =
            rgb ? is.b == 0 && is.g == 0 && is.r == 0 : is.luma == 16 && is.u == 128 && is.v == 128;
        if (!black) return say("no black line", x, y, rgb ? is.b : is.luma, 0);
        continue;
      }
      const double row = static_cast<double>(y - top), last = static_cast<double>(rows - 1);
      const double ix = h ? e.width - 1.0 - x : x, iy = v ? last - row : row;
      const double sx = ix * wide, sy = iy * high;
      // Known blemishes: a column of doubled, mirrored pictures, the last columns of scaled YUYV.
      if (bayer && doubled && h && p.quality != 3 && !rgb && x == e.width - 2) continue;
      if (scaled && p.format == PPL_FORMAT_YUYV && sx >= p.width - 3.0) continue;
      const double t = along(k, sx, sy, p), by = (rgb ? 3.5 : 2) + off * step;
      if (!is_colour(k)) {
        // 74 / 64 of what is above 16 in RGB of a decoder frame.
        const double level = bayer || !rgb ? kGrey + t : (kGrey + t - 16) * 74 / 64;
        const double first = rgb ? is.b : is.luma;
        if (!near(first, level, by)) return say("brightness", x, y, first, level);
        if (rgb && (!near(is.g, level, by + 4) || !near(is.r, level, by + 4)))
          return say("no grey", x, y, is.g, level);
        const bool mark = raw && is.v == 255;
        const double chroma_by = 6 + 2 * step;
        if (!rgb && (!near(is.u, 128, chroma_by) || !(mark || near(is.v, 128, chroma_by))))
          return say("chroma of grey", x, y, is.u, 128);
        if (p.format == PPL_FORMAT_RGB32 && out[4 * ((size_t{e.height} - 1 - y) * e.width + x) + 3] != 0)
          return say("fourth byte", x, y, 1, 0);
        continue;
      }
      if (grey) continue;
      const double d = kColour + t - (bayer ? kRest : 128), chroma_by = 7 + (off + 2) * step;
      if (bayer && !rgb) {
        // U is B - Y, and Y takes 7 / 64 of blue.
        if (!near(is.u, 128 + 57.0 / 64 * d, chroma_by)) return say("U", x, y, is.u, 128 + 57.0 / 64 * d);
      } else if (bayer) {
        const double share = p.quality == 0 || p.quality == 10 ? 40.0 / 64 : 1;
        if (!near(is.b, kRest + share * d, chroma_by)) return say("blue", x, y, is.b, kRest + share * d);
        if (!near(is.r, kRest, chroma_by + 4)) return say("red", x, y, is.r, kRest);
      } else if (!rgb) {
        if (!near(is.u, 128 + d, chroma_by)) return say("U", x, y, is.u, 128 + d);
        if (!near(is.luma, kRest, 3)) return say("luma", x, y, is.luma, kRest);
      } else {
        const double blue = std::clamp((74 * (kRest - 16) + 129 * d) / 64, 0.0, 255.0);
        if (!near(is.b, blue, 2 * chroma_by + 4)) return say("blue", x, y, is.b, blue);
      }
    }
  return "";
}

}  // namespace

machine& library() {
  static the_library m;
  return m;
}
machine& reference() {
  static the_reference m;
  return m;
}

extent picture_of(const ppl_plan& p) {
  const auto sized = [&](int64_t d, int64_t lines) {
    if (p.width > 2036 || p.height > 2048) return extent{0, 0};
    const int64_t w = d < 0 ? 2 * int64_t{p.width} : p.width >> d;
    const int64_t h = (d < 0 ? 2 * int64_t{p.height} : p.height >> d) + lines;
    return h <= 0 ? extent{0, 0} : extent{static_cast<uint32_t>(w), static_cast<uint32_t>(h)};
  };
  const int64_t lines = int64_t{p.top_black_lines} + p.bottom_black_lines;
  switch (p.call) {
    case PPL_CALL_FRAME:
    case PPL_CALL_STRIDE_4:
      return sized(p.decimation, lines);
    case PPL_CALL_SAME:
      return sized(0, 0);
    case PPL_CALL_HALF:
      return sized(1, 0);
    case PPL_CALL_DOUBLE:
    case PPL_CALL_DOUBLE_STRIDE:
      return sized(-1, 0);
    default:
      return {p.out_width, p.out_height};
  }
}

uint64_t bytes_of(uint32_t format, extent e) {
  const uint64_t n = uint64_t{e.width} * e.height;
  constexpr uint64_t per_pixel[] = {1, 2, 2, 3, 4};
  return format == PPL_FORMAT_I420 ? n + 2 * (n / 4) : per_pixel[format] * n;
}

seen look(machine& m, const ppl_plan& p) {
  const extent e = picture_of(p);
  const size_t n = static_cast<size_t>(bytes_of(p.format, e));
  seen s;
  const auto run = [&](kind k, uint8_t fill) {
    if (ppl_call_takes_bayer(p.call)) return m.frame(p, mosaic(k, p, fill), fill);
    bytes source[3];
    packed(k, p, source);
    return m.conversion(p, source, fill);
  };
  const made first = run(grey_across, 0);
  s.result = first.result;
  s.counted = first.counted;
  if (n == 0) {
    s.why = "the picture has no bytes";
    return s;
  }
  if (!first.result && !first.counted) {
    s.why = "a last resort";
    return s;
  }
  const made second = run(grey_across, 255);
  // The mark of raw I420 pictures moves from frame to frame.
  const bool marked =
      (p.quality == 4 || p.quality == 9) && ppl_call_takes_bayer(p.call) && p.format == PPL_FORMAT_I420;
  const auto is_mark = [&](size_t i) {
    return marked && i >= n / 6 * 5 && std::min(first.picture[i], second.picture[i]) == 128 &&
           std::max(first.picture[i], second.picture[i]) == 255;
  };
  for (size_t i = 0; i < n; ++i)
    if (first.picture[i] != second.picture[i] && !is_mark(i)) {
      s.why = "byte " + std::to_string(i) + " of " + std::to_string(n) +
              " is not written, or from what stood before";
      return s;
    }
  for (kind k : {grey_across, grey_down, colour_across, colour_down}) {
    s.why = judge(k == grey_across ? first.picture : run(k, 128).picture, k, p, e);
    if (!s.why.empty()) {
      s.why = "scene " + std::to_string(k) + ": " + s.why;
      return s;
    }
  }
  s.whole = true;
  return s;
}

}  // namespace scenes
