// The cases behind the frozen digests: what each of them calls, with which controls, sizes, formats and bytes.
//
// A case is a family and a number; everything in it follows from the two and the seed of the file. digests_make runs
// the cases on the plain reference and writes what comes out as digests; the program digests runs them on the library
// it is linked with. Both run the functions below, so the file holds nothing but digests.
//
// Every draw of the dice is a statement of its own or an element of a braced list: arguments of a call may be evaluated
// in any order, and compilers differ. The code keeps to what every target has: the integers, memcpy, malloc and printf
// of C, and no C++ library. A side offers the members of slots::library_slot and those that are named where they are
// used.
#pragma once

#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "reference/formats.h"
#include "support/bayer_exports.h"

namespace cases {

using ref::ending;
using ref::format;

// FNV-1a, 64 bits, over bytes in memory order.
struct digest {
  uint64_t value = 14695981039346656037u;
  void byte(uint8_t b) { value = (value ^ b) * 1099511628211u; }
  void bytes(const uint8_t* data, int64_t count) {
    for (int64_t i = 0; i < count; ++i) byte(data[i]);
  }
  void word(uint32_t w) {
    for (int i = 0; i < 4; ++i) byte(static_cast<uint8_t>(w >> 8 * i));
  }
};

// What is kept of a case.
struct outcome {
  digest answers;     // of every call, in order
  digest pictures;    // destinations and scratch after every call, with 64 bytes round them
  digest sources;     // sources after every call, with 64 bytes round them
  digest figures;     // statistics, controls and tables after every frame, lens tables
  bool open = false;  // no rule settles some byte of a picture: the digest of the pictures says nothing
};

// Prints the calls of a case as they are made.
inline bool tracing = false;
inline void trace(const char* form, ...) {
  if (!tracing) return;
  va_list values;
  va_start(values, form);
  printf("    ");
  vprintf(form, values);
  printf("\n");
  va_end(values);
}

class dice {
 public:
  dice(uint32_t seed, uint32_t family, uint32_t number) {
    state_ = seed * 2654435761u ^ (family + 1) * 2246822519u ^ (number + 1) * 3266489917u;
    if (state_ == 0) state_ = 1;
    for (int i = 0; i < 8; ++i) bits();
  }
  uint32_t bits() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 17;
    state_ ^= state_ << 5;
    return state_ * 2654435769u >> 4;
  }
  int between(int low, int high) {
    return low + static_cast<int>(bits() % static_cast<uint32_t>(high - low + 1));
  }
  bool chance(int percent) { return between(1, 100) <= percent; }
  template <typename T, int n>
  T pick(const T (&list)[n]) {
    return list[bits() % static_cast<uint32_t>(n)];
  }
  // Mostly within a range, sometimes its ends and what lies beyond.
  int value(int low, int high) {
    const int kind = between(0, 9);
    if (kind == 0) return chance(50) ? low : high;
    if (kind == 1) return chance(50) ? low - 1 : high + 1;
    if (kind == 2 && chance(20)) return static_cast<int>(bits());
    return between(low, high);
  }

 private:
  uint32_t state_;
};

// Bytes whose address is `offset` modulo 64, with 64 bytes on either side.
class buffer {
 public:
  buffer(int64_t size, int offset, uint32_t seed) : size_(size) {
    memory_ = static_cast<uint8_t*>(malloc(static_cast<size_t>(size) + 256));
    if (!memory_) abort();
    memset(memory_, 0xA5, static_cast<size_t>(size) + 256);
    data_ = memory_ + 64 + (64 - reinterpret_cast<uintptr_t>(memory_) % 64) % 64 + offset;
    uint32_t x = seed * 2 + 1;
    for (int64_t i = 0; i < size; ++i) {
      x ^= x << 13;
      x ^= x >> 17;
      x ^= x << 5;
      data_[i] = static_cast<uint8_t>(x >> 24);
    }
  }
  buffer(const buffer&) = delete;
  buffer& operator=(const buffer&) = delete;
  ~buffer() { free(memory_); }
  uint8_t* data() const { return data_; }
  int64_t size() const { return size_; }
  void add_to(digest& d) const { d.bytes(data_ - 64, size_ + 128); }

 private:
  int64_t size_;
  uint8_t* memory_;
  uint8_t* data_;
};

// Sizes as an instance has them: what a caller must know to size a destination.
struct geometry {
  int32_t width = 0, height = 0, stride = 0;
  int32_t decimation = 0, top = 0, bottom = 0;
  int32_t out_width = 0, out_height = 0;

  static int32_t scaled(int32_t size, int32_t d) { return d < 0 ? size * 2 : size >> d; }
  bool accepts(uint32_t w, uint32_t h, uint32_t s) const { return w <= 2036 && h <= 2048 && s <= 2048; }
  // Black lines are not in the height until decimation or line counts change.
  void size(uint32_t w, uint32_t h, uint32_t s) {
    if (!accepts(w, h, s)) return;
    width = static_cast<int32_t>(w);
    height = static_cast<int32_t>(h);
    stride = static_cast<int32_t>(s);
    out_width = scaled(width, decimation);
    out_height = scaled(height, decimation);
  }
  void decimate(int32_t d, int32_t above, int32_t below) {
    if ((d == decimation && above == top && below == bottom) || d < -1 || d > 2) return;
    decimation = d;
    top = above;
    bottom = below;
    out_width = scaled(width, d);
    out_height = static_cast<int32_t>(static_cast<uint32_t>(scaled(height, d)) +
                                      static_cast<uint32_t>(above) + static_cast<uint32_t>(below));
  }
  // What a frame call does first.
  void frame(uint32_t w, uint32_t h, uint32_t s) {
    const bool same = w == static_cast<uint32_t>(width) && h == static_cast<uint32_t>(height) &&
                      s == static_cast<uint32_t>(stride);
    if (!same) size(w, h, s);
  }
  int64_t bytes(format kind) const { return ref::frame_bytes(kind, out_width, out_height); }
};

constexpr int64_t kLargest = 4 << 20;
// Frozen with the digests: another list would make other cases of the same seeds.
constexpr uint32_t kQualities[] = {0, 1, 2, 3, 10, 11, 12, 13, 15};

// ---- controls ----

inline void trace_value(const void* pointer) {
  printf("%s", pointer ? "pointer" : "null");
}
inline void trace_value(uint8_t value) {
  printf("%d", value);
}
inline void trace_value(uint32_t value) {
  printf("%u", static_cast<unsigned>(value));
}
inline void trace_value(int32_t value) {
  printf("%d", static_cast<int>(value));
}
inline void trace_value(format kind) {
  printf("%s", support::kFormatNames[static_cast<int>(kind)]);
}
inline void trace_value(ending name) {
  printf("ending %d", static_cast<int>(name));
}

// One call of a side, its answer kept.
template <typename Call, typename... Values>
void call_and_keep(outcome& out, const char* name, Call call, Values... values) {
  const bool answer = call(values...) != 0;
  out.answers.byte(answer);
  if (!tracing) return;
  [[maybe_unused]] const char* between = "";
  printf("    %s(", name);
  ((printf("%s", between), trace_value(values), between = ", "), ...);
  printf(") -> %d\n", answer);
}
#define CASE_CALL(name, ...) \
  call_and_keep(out, #name, [&](auto... values) { return side.name(values...); } __VA_OPT__(, ) __VA_ARGS__)

inline void random_table(dice& d, uint8_t* table) {
  const int kind = d.between(0, 3), slope = d.between(64, 320);
  for (int i = 0; i < 256; ++i) {
    const int line = i * slope >> 7;
    table[i] = static_cast<uint8_t>(kind == 0    ? i
                                    : kind == 1  ? static_cast<int>(d.bits() & 255)
                                    : kind == 2  ? 255 - i
                                    : line > 255 ? 255
                                                 : line);
  }
}

// A lens table of the frame's size or of any other. The side keeps the memory until its next table.
template <typename Side>
void random_lens(Side& side, dice& d, outcome& out, int width, int height) {
  int x = width / 2, y = height / 2;
  if (d.chance(30)) {
    width = d.between(0, 300);
    height = d.between(0, 120);
  }
  if (d.chance(40)) {
    x = d.between(-40, width + 40);
    y = d.between(-20, height + 20);
  }
  const int largest_y = y > height - y ? y : height - y;
  int size = (largest_y + 1) * width * 2;
  if (d.chance(15)) size += d.between(-40, 40);
  size = size < 0 ? 0 : size > (1 << 20) ? 1 << 20 : size;
  const int f1 = d.chance(60) ? 48 : d.value(-2000, 60000), s1 = d.chance(60) ? 24 : d.value(13, 40);
  const int f2 = d.chance(60) ? 16 : d.value(-2000, 60000), s2 = d.chance(60) ? 44 : d.value(30, 60);
  uint16_t* table = side.lens_memory();  // 1 << 20 bytes
  memset(table, 0x5C, static_cast<size_t>(size) + 16);
  CASE_CALL(set_lens_correction, width, height, x, y, table, size, f1, s1, f2, s2);
  for (int i = 0; i < size / 2 + 8; ++i) out.figures.word(table[i]);
}

template <typename Side>
void random_control(Side& side, dice& d, outcome& out, const geometry& g) {
  const auto u = [&](int low, int high) { return static_cast<uint32_t>(d.value(low, high)); };
  const auto s = [&](int low, int high) { return static_cast<int32_t>(d.value(low, high)); };
  const auto pair = [&](int low, int high, int32_t* to) {
    to[0] = s(low, high);
    to[1] = d.chance(90) ? to[0] + static_cast<int32_t>(d.bits() % 120) : s(low, high);
  };
  int32_t p[6];
  uint8_t table[256];
  switch (d.between(0, 51)) {
    case 0: {
      const uint32_t b = u(0, 60), gb = u(0, 60), gr = u(0, 60), r = u(0, 255);
      CASE_CALL(set_optical_black_b_gb_gr_r, b, gb, gr, r);
      break;
    }
    case 1:
    case 2: {
      const uint32_t r = u(0, 2047), gr = u(0, 2047), b = u(0, 2047);
      CASE_CALL(set_rgb_gain, r, gr, b);
      break;
    }
    case 3: {
      const uint32_t r = u(200, 700), gr = u(200, 400), b = u(200, 700);
      CASE_CALL(set_rgb_gain, r, gr, b);
      break;
    }
    case 4:
      CASE_CALL(set_r_gain, u(0, 2047));
      break;
    case 5:
      CASE_CALL(set_g_gain, u(0, 2047));
      break;
    case 6:
      CASE_CALL(set_b_gain, u(0, 2047));
      break;
    case 7: {
      const int32_t r = s(-40, 40), gr = s(-40, 40), b = s(-40, 40);
      CASE_CALL(set_rgb_delta, r, gr, b);
      break;
    }
    case 8:
      CASE_CALL(set_g_delta, s(-32768, 32767));
      break;
    case 9: {
      const uint32_t r = u(0, 1023), gr = u(0, 1023), b = u(0, 1023);
      CASE_CALL(set_quals_rgb_gain, r, gr, b);
      break;
    }
    case 10:
    case 11: {
      int32_t matrix[9];
      const int reach = d.chance(15) ? 1 << 30 : d.chance(30) ? 100000 : 600;
      for (int32_t& v : matrix) v = d.between(-reach, reach);
      CASE_CALL(copy_sensor_matrix, static_cast<const int32_t*>(matrix));
      break;
    }
    case 12:
      CASE_CALL(enable_medium_filter);
      break;
    case 13:
      CASE_CALL(disable_medium_filter);
      break;
    case 14:
      CASE_CALL(set_medium_filter_diff_threshold, s(0, 255));
      break;
    case 15:
      CASE_CALL(set_medium_filter_hot_pixel_threshold, s(0, 255));
      break;
    case 16:
      CASE_CALL(set_medium_filter_dead_pixel_threshold, s(0, 255));
      break;
    case 17:
      CASE_CALL(set_nf88_medium_filter_hot_pixel_threshold_percentage, s(0, 512));
      break;
    case 18:
      CASE_CALL(set_nf88_medium_filter_dead_pixel_threshold_percentage, s(0, 512));
      break;
    case 19:
      pair(-120, 60, p);
      CASE_CALL(set_qual_BmGb_min_max, p[0], p[1]);
      break;
    case 20:
      pair(-120, 60, p);
      CASE_CALL(set_qual_GrmR_min_max, p[0], p[1]);
      break;
    case 21:
      pair(-120, 60, p);
      CASE_CALL(set_qual_BmGb_p_GrmR_min_max, p[0], p[1]);
      break;
    case 22:
      pair(-120, 60, p);
      CASE_CALL(set_qual_BmGb_m_GrmR_min_max, p[0], p[1]);
      break;
    case 23:
    case 24:
      pair(0, 130, p);
      pair(0, 130, p + 2);
      pair(0, 130, p + 4);
      CASE_CALL(set_qual_RGB_min_max, p[0], p[1], p[2], p[3], p[4], p[5]);
      break;
    case 25:
      pair(0, 130, p);
      CASE_CALL(set_qual_G_min_max, p[0], p[1]);
      break;
    case 26:
    case 27:
      pair(0, 130, p);
      CASE_CALL(set_qAE_RGB_min_max, p[0], p[1]);
      break;
    case 28:
      CASE_CALL(set_edge_threshold, u(0, 1530));
      break;
    case 29:
      CASE_CALL(set_edge_threshold2, u(0, 1530));
      break;
    case 30:
      CASE_CALL(set_nf88_edge_enhance_factor, u(0, 256));
      break;
    case 31:
      CASE_CALL(set_noise_filter_G_12T_threshold, u(0, 3060));
      break;
    case 32:
      CASE_CALL(set_CFA_T0_threshold, u(0, 255));
      break;
    case 33:
      CASE_CALL(set_CFA_T1_threshold, u(0, 63));
      break;
    case 34: {
      const uint32_t sat = u(0, 512);
      const int32_t hue = s(-400, 800);
      CASE_CALL(set_sat_hue, sat, hue);
      break;
    }
    case 35:
      CASE_CALL(set_sat, u(0, 512));
      break;
    case 36:
      CASE_CALL(set_hue, s(-400, 800));
      break;
    case 37: {
      const uint32_t x = u(0, 127), y = u(0, 127);
      CASE_CALL(set_contrast_xy, x, y);
      break;
    }
    case 38:
    case 39: {
      uint32_t x = 7, y = 7;
      const int32_t c = s(-127, 127);
      CASE_CALL(set_contrast_c, c, &x, &y);
      out.answers.word(x);
      out.answers.word(y);
      break;
    }
    case 40:
      random_table(d, table);
      CASE_CALL(copy_contrast_table, static_cast<const uint8_t*>(table));
      break;
    case 41:
      random_table(d, table);
      CASE_CALL(copy_yuv_gamma_table, static_cast<const uint8_t*>(table));
      break;
    case 42:
      random_table(d, table);
      CASE_CALL(copy_rgb_gamma_table, static_cast<const uint8_t*>(table));
      break;
    case 43:
    case 44:
      CASE_CALL(set_gamma, s(-32, 32));
      break;
    case 45:
      CASE_CALL(enable_GbGr_correction);
      CASE_CALL(set_GbGr_correction_diff_threshold, s(0, 100));
      break;
    case 46:
      CASE_CALL(disable_GbGr_correction);
      break;
    case 47:
      random_lens(side, d, out, g.width ? g.width : 64, g.height ? g.height : 32);
      break;
    case 48:
    case 49:
      random_lens(side, d, out, g.width ? g.width : 64, g.height ? g.height : 32);
      CASE_CALL(enable_lens_correction);
      break;
    case 50:
      CASE_CALL(set_mean_collection, static_cast<uint8_t>(d.between(0, 3)));
      break;
    default:
      random_table(d, table);
      CASE_CALL(copy_g_dekneel_table, static_cast<const uint8_t*>(table));
      break;
  }
}

template <typename Side>
void random_controls(Side& side, dice& d, outcome& out, const geometry& g, int most) {
  for (int i = d.between(0, most); i > 0; --i) random_control(side, d, out, g);
}

template <typename Side>
void set_mirrors(Side& side, outcome& out, bool h, bool v) {
  CASE_CALL(set_h_mirror, static_cast<uint8_t>(h ? 1 : 0));
  CASE_CALL(set_v_mirror, static_cast<uint8_t>(v ? 1 : 0));
}

template <typename Side>
void random_mirrors(Side& side, dice& d, outcome& out, int percent) {
  const bool h = d.chance(percent), v = d.chance(percent);
  set_mirrors(side, out, h, v);
}

template <typename Side>
void set_decimation(Side& side, outcome& out, geometry& g, int32_t decimation, int32_t top, int32_t bottom) {
  CASE_CALL(set_decimation, decimation, top, bottom);
  g.decimate(decimation, top, bottom);
}

// ---- frames ----

// A mosaic: noise, slopes, edges, extremes, flat sites, hot and dead samples.
inline void draw_scene(dice& d, uint8_t* to, int64_t stride, int64_t height) {
  const int kind = d.between(0, 5), base = d.between(0, 200), slope_x = d.between(0, 5),
            slope_y = d.between(0, 5);
  const int edge = d.between(4, 40), step = d.between(0, 200), noise = d.between(1, 40),
            hot = d.between(0, 2);
  int site[4];
  for (int& v : site) v = d.between(0, 255);
  for (int r = 0; r < height; ++r)
    for (int c = 0; c < stride; ++c) {
      const uint32_t n = d.bits();
      int v = 0;
      switch (kind) {
        case 0:
          v = static_cast<int>(n & 255);
          break;
        case 1:
          v = base + ((slope_x * c + slope_y * r) >> 1) + static_cast<int>(n % static_cast<uint32_t>(noise));
          break;
        case 2:
          v = base + step * (((c + slope_x * r) / edge) % 2) + static_cast<int>(n % 4);
          break;
        case 3:
          v = n & 1 ? 255 : 0;
          break;
        case 4:
          v = site[2 * (r % 2) + c % 2] + static_cast<int>(n % static_cast<uint32_t>(noise));
          break;
        default:
          v = base + static_cast<int>(n % 3);
          break;
      }
      if (hot > 0 && (n >> 8) % 64 < static_cast<uint32_t>(hot)) v = (n >> 16) & 1 ? 255 : 0;
      to[r * stride + c] = static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v);
    }
}

// An address modulo 64 that a call takes, or rarely one that it refuses.
inline int random_offset(dice& d, int misaligned_percent) {
  constexpr int bad[] = {8, 24, 4, 1, 12};
  return d.chance(misaligned_percent) ? d.pick(bad) : 16 * d.between(0, 3);
}

struct null_buffers {
  bool source = false, destination = false;
};

// A side says by left_open(kind) whether the frame just put out holds bytes that no rule settles, and adds by
// figures(digest) all that can be read back.
template <typename Side>
void finish_frame(Side& side, outcome& out, format kind) {
  if (side.left_open(kind)) out.open = true;
  side.figures(out.figures);
}

template <typename Side>
void frame(Side& side, dice& d, outcome& out, geometry& g, format kind, uint32_t width, uint32_t height,
           uint32_t stride, int misaligned_percent = 0, null_buffers null = {}) {
  const bool accepted = g.accepts(width, height, stride);
  g.frame(width, height, stride);
  const int64_t size = accepted ? g.bytes(kind) : 0;
  if (size > kLargest) return;
  const int from = random_offset(d, misaligned_percent), to = random_offset(d, misaligned_percent);
  buffer source(accepted ? static_cast<int64_t>(stride) * height : 0, from, 1);
  buffer destination(size, to, d.bits());
  if (accepted) draw_scene(d, source.data(), stride, height);
  CASE_CALL(process_frame, kind, null.source ? nullptr : source.data(),
            null.destination ? nullptr : destination.data(), width, height, stride);
  destination.add_to(out.pictures);
  source.add_to(out.sources);
  finish_frame(side, out, kind);
}

inline uint32_t random_stride(dice& d, uint32_t width) {
  if (!d.chance(35)) return width;
  const uint32_t stride =
      width + static_cast<uint32_t>(d.chance(50) ? 16 * d.between(1, 4) : d.between(1, 70));
  return stride > 2048 ? width : stride;
}

struct frame_size {
  uint32_t width, height, stride;
};
inline frame_size random_size(dice& d) {
  int tiles = d.chance(70) ? 2 * d.between(1, 8) : d.between(1, 20);
  int pairs = d.chance(60) ? 2 * d.between(1, 10) : d.between(1, 20);
  if (d.chance(3)) {
    tiles = d.between(21, 126);
    pairs = d.between(1, 5);
  }
  const uint32_t width = static_cast<uint32_t>(16 * tiles);
  return {width, static_cast<uint32_t>(2 * pairs), random_stride(d, width)};
}

// Every quality with and without the medium filter, format, decimation and mirror in turn; the first round at sizes at
// which all of them are whole, the second at any.
template <typename Side>
void picture_case(Side& side, dice& d, outcome& out, uint32_t number) {
  constexpr uint32_t qualities[] = {0, 1, 2, 3, 10, 11, 12, 13, 15, 0, 1, 2};
  const uint32_t combination = number % 720, path = combination % 12;
  geometry g;
  frame_size f = random_size(d);
  if (number < 720) {
    f.width = 64 * static_cast<uint32_t>(d.chance(97) ? d.between(1, 4) : d.between(5, 31));
    f.height = 4 * static_cast<uint32_t>(f.width > 256 ? 2 : d.between(2, 14));
    f.stride = random_stride(d, f.width);
  }
  g.width = static_cast<int32_t>(f.width);
  g.height = static_cast<int32_t>(f.height);
  random_controls(side, d, out, g, d.chance(50) ? 4 : 14);
  g = geometry();
  set_mirrors(side, out, combination / 180 & 1, combination / 360 & 1);
  if (path >= 9) CASE_CALL(enable_medium_filter);
  if (path <= 2) CASE_CALL(disable_medium_filter);
  set_decimation(side, out, g, static_cast<int32_t>(combination / 60 % 3) - 1, 0, 0);
  CASE_CALL(set_quality, qualities[path]);
  frame(side, d, out, g, static_cast<format>(combination / 12 % 5), f.width, f.height, f.stride);
}

// The raw path, whose mark walks from frame to frame.
template <typename Side>
void raw_case(Side& side, dice& d, outcome& out, uint32_t number) {
  geometry g;
  constexpr uint32_t widths[] = {160, 320, 160, 32, 64, 48, 96};
  const uint32_t width = d.pick(widths), height = static_cast<uint32_t>(2 * d.between(1, 30));
  const uint32_t stride = random_stride(d, width);
  for (int frames = d.between(1, 4); frames > 0; --frames) {
    random_mirrors(side, d, out, 30);
    const int32_t decimation = d.between(-1, 2), lines = d.chance(20) ? d.between(0, 9) : 0;
    set_decimation(side, out, g, decimation, lines, 0);
    CASE_CALL(set_quality, d.chance(50) ? 4u : 9u);
    frame(side, d, out, g, static_cast<format>(number % 5), width, height, stride);
  }
}

// Frames of any quality and format on one slot: what outlives a frame passes on.
template <typename Side>
void sequence_case(Side& side, dice& d, outcome& out, uint32_t) {
  geometry g;
  frame_size f = random_size(d);
  random_controls(side, d, out, g, 6);
  for (int frames = d.between(3, 6); frames > 0; --frames) {
    random_controls(side, d, out, g, 3);
    if (d.chance(40)) random_mirrors(side, d, out, 50);
    if (d.chance(40)) set_decimation(side, out, g, d.between(-1, 1), 0, 0);
    if (d.chance(40)) f = random_size(d);
    if (d.chance(4)) CASE_CALL(set_P3_only, static_cast<uint8_t>(d.between(0, 1)));
    if (d.chance(80)) {
      const uint32_t quality = d.chance(85) ? d.pick(kQualities) : static_cast<uint32_t>(d.between(0, 16));
      CASE_CALL(set_quality, quality);
    }
    const uint32_t stride = d.chance(3) ? f.width - 1 : f.stride;
    frame(side, d, out, g, static_cast<format>(d.between(0, 4)), f.width, f.height, stride, 3);
  }
}

inline int32_t random_lines(dice& d) {
  constexpr int32_t far[] = {INT32_MAX, INT32_MIN, 1 << 30,    -(1 << 30),
                             1 << 27,   1 << 26,   -(1 << 28), 1 << 22};
  if (d.chance(50)) return 0;
  if (d.chance(25)) {
    const uint32_t about = static_cast<uint32_t>(d.pick(far));
    return static_cast<int32_t>(about + static_cast<uint32_t>(d.between(-24, 24)));
  }
  return d.between(-6, 14);
}

// Sizes, decimations and black lines that change between frames, and are lost in doing so.
template <typename Side>
void resize_case(Side& side, dice& d, outcome& out, uint32_t) {
  geometry g;
  random_controls(side, d, out, g, 2);
  frame_size f = random_size(d);
  for (int steps = d.between(3, 7); steps > 0; --steps) {
    switch (d.between(0, 3)) {
      case 0: {
        f = random_size(d);
        if (d.chance(10)) f.width = static_cast<uint32_t>(d.between(2030, 2060));
        CASE_CALL(new_frame_size, f.width, f.height, f.stride);
        g.size(f.width, f.height, f.stride);
        break;
      }
      case 1: {
        const int32_t decimation = d.between(-2, 3), top = random_lines(d), bottom = random_lines(d);
        set_decimation(side, out, g, decimation, top, bottom);
        break;
      }
      case 2:
        trace("reset_decimation");
        side.reset_decimation();
        g.decimate(0, 0, 0);
        break;
      default: {
        const bool accepted = d.chance(70);
        const uint32_t width = accepted ? f.width : 321;
        CASE_CALL(new_frame_sizes, width, f.height, 99u, 99u, static_cast<uint8_t>(accepted ? 0 : 1));
        if (accepted) {
          if (g.accepts(width, f.height, width)) {
            g.size(width, f.height, width);
            g.decimate(0, 0, 0);
            f.stride = width;
          }
        }
        break;
      }
    }
    CASE_CALL(set_quality, d.chance(85) ? d.pick(kQualities) : 4u);
    frame(side, d, out, g, static_cast<format>(d.between(0, 4)), f.width, f.height, f.stride);
  }
}

// The thirty wrappers but for the scaled ones, in turn.
template <typename Side>
void wrapper_case(Side& side, dice& d, outcome& out, uint32_t number, int null_percent = 0) {
  geometry g;
  random_controls(side, d, out, g, 3);
  const format kind = static_cast<format>(number % 5);
  for (int calls = 2; calls > 0; --calls) {
    const ending name = static_cast<ending>((number / 5 + static_cast<uint32_t>(calls)) % 5);
    CASE_CALL(set_quality, d.pick(kQualities));
    random_mirrors(side, d, out, 30);
    const uint32_t width = static_cast<uint32_t>(32 * d.between(1, 6));
    const uint32_t height = static_cast<uint32_t>(4 * d.between(1, 8));
    const int from = random_offset(d, 15), to = random_offset(d, 15);
    const int64_t pixels = static_cast<int64_t>(width) * height;
    int64_t size = 0;
    constexpr int decimations[] = {0, 1, -1, -1, -2}, times[] = {1, 1, 1, 2, 4};
    const uint32_t stride = width * static_cast<uint32_t>(times[static_cast<int>(name)]);
    if (from % 8 || to % 8) {
      const int64_t n = name == ending::none ? pixels : name == ending::deci_2_1 ? pixels >> 2 : 4 * pixels;
      size = kind == format::rgb24 ? 3 * n : kind == format::rgb32 ? 4 * n : n + (n >> 1);
    } else {
      g.decimate(decimations[static_cast<int>(name)], 0, 0);
      g.frame(width, height, stride);
      size = g.bytes(kind);
    }
    buffer source(4 * pixels, from, d.bits()), destination(size, to, d.bits());
    const bool no_source = from % 16 == 0 && d.chance(null_percent);
    const bool no_destination = to % 16 == 0 && d.chance(null_percent);
    CASE_CALL(wrapper, kind, name, no_source ? nullptr : source.data(),
              no_destination ? nullptr : destination.data(), width, height);
    destination.add_to(out.pictures);
    source.add_to(out.sources);
    finish_frame(side, out, kind);
  }
}

template <typename Side>
void scaled_case(Side& side, dice& d, outcome& out, uint32_t number, int null_percent = 0) {
  geometry g;
  random_controls(side, d, out, g, 3);
  const format kind = d.chance(92) ? static_cast<format>(number % 3) : static_cast<format>(d.between(3, 4));
  random_mirrors(side, d, out, 30);
  CASE_CALL(set_quality, d.chance(60) ? 2u : d.pick(kQualities));
  const frame_size f = random_size(d);
  int width = 32 * d.between(1, 9), height = 2 * d.between(1, 40);
  if (d.chance(15)) width = static_cast<int>(f.width);
  if (d.chance(15)) height = static_cast<int>(f.height);
  if (d.chance(35)) width = d.between(0, 300);
  if (d.chance(20)) height = d.between(0, 90);
  if (kind == format::yuyv && width % 32 == 1) ++width;  // one position that no horizontal pass makes
  const int from = random_offset(d, 4), to = random_offset(d, 4), by = random_offset(d, 4);
  g.decimate(0, 0, 0);
  g.frame(f.width, f.height, f.stride);
  const int64_t n = static_cast<int64_t>(width) * height;
  int64_t size = ref::frame_bytes(kind, width, height);
  int64_t source_size = static_cast<int64_t>(f.stride) * f.height;
  if ((from % 8 || to % 8) && kind <= format::uyvy) {
    size = n + (n >> 1);
    source_size = source_size < n ? n : source_size;
  }
  buffer source(source_size, from, 1), destination(size, to, d.bits());
  buffer scratch(g.bytes(kind) + (kind == format::yuyv ? 4 : 0), by, d.bits());
  draw_scene(d, source.data(), f.stride, f.height);
  const bool no_source = from % 16 == 0 && d.chance(null_percent);
  const bool no_destination = to % 16 == 0 && d.chance(null_percent);
  const bool no_scratch = by % 16 == 0 && d.chance(null_percent);
  CASE_CALL(scaling_wrapper, kind, no_source ? nullptr : source.data(), f.width, f.height, f.stride,
            no_destination ? nullptr : destination.data(), static_cast<uint32_t>(width),
            static_cast<uint32_t>(height), no_scratch ? nullptr : scratch.data());
  destination.add_to(out.pictures);
  scratch.add_to(out.pictures);
  source.add_to(out.sources);
  finish_frame(side, out, kind);
}

// Controls and their tables, built-in gamma tables of the caller's own among them. A side puts the two sets of 65 x 256
// bytes in by replace_gamma_tables() and back when its next case begins.
template <typename Side>
void control_case(Side& side, dice& d, outcome& out, uint32_t) {
  geometry g;
  for (int i = d.between(15, 50); i > 0; --i) {
    random_control(side, d, out, g);
    if (d.chance(15)) side.figures(out.figures);
    if (d.chance(4)) {
      uint8_t* tables = side.gamma_memory();  // 2 * 65 * 256 bytes
      for (int k = 0; k < 2 * 65 * 256; ++k) tables[k] = static_cast<uint8_t>(d.bits());
      trace("other gamma tables");
      side.replace_gamma_tables(tables, tables + 65 * 256);
    }
    if (d.chance(3)) CASE_CALL(reset_all_controls);
    if (d.chance(6)) {
      const frame_size f = random_size(d);
      CASE_CALL(new_frame_size, f.width, f.height, f.stride);
      g.size(f.width, f.height, f.stride);
    }
  }
  CASE_CALL(reset_gamma);
  side.figures(out.figures);
}

// ---- conversions ----

constexpr const char* kConversions[] = {
    "YUYVToI420MMX",
    "ppl_process_yuyvtoi420",
    "UYVYToI420MMX",
    "ppl_process_uyvytoi420",
    "YUYVToRGB24MMX",
    "ppl_process_yuyvtorgb24",
    "UYVYToRGB24MMX",
    "ppl_process_uyvytorgb24",
    "UYVYYYYYToI420MMX",
    "ppl_process_uyvyyyyytoi420",
    "YUYVYYYYToI420MMX",
    "ppl_process_yuyvyyyytoi420",
    "RGB24ToRGB32MMX",
    "ppl_process_rgb24torgb32",
    "IntlYUYVToYUYVMMX",
    "ppl_process_intlyuyvtoyuyv",
    "IntlYUYVToYUYVMMX_no_motion",
    "IntlYUYVToUYVYMMX",
    "IntlYUYVToUYVYMMX_no_motion",
    "IntlYUYVToI420MMX",
    "ppl_process_intlyuyvtoi420",
    "IntlYUYVToI420MMX_no_motion",
    "IntlYUYVToRGB24MMX",
    "ppl_process_intlyuyvtorgb24",
    "IntlYUYVToRGB24MMX_no_motion",
    "IntlUYVYToYUYVMMX",
    "IntlUYVYToYUYVMMX_no_motion",
    "IntlUYVYToUYVYMMX",
    "ppl_process_intluyvytouyvy",
    "IntlUYVYToUYVYMMX_no_motion",
    "IntlUYVYToI420MMX",
    "ppl_process_intluyvytoi420",
    "IntlUYVYToI420MMX_no_motion",
    "IntlUYVYToRGB24MMX",
    "ppl_process_intluyvytorgb24",
    "IntlUYVYToRGB24MMX_no_motion",
};
constexpr uint32_t kConversionCount = sizeof kConversions / sizeof kConversions[0];
static_assert(kConversionCount == 36);

// What a conversion puts out, by the end of its name.
inline format conversion_format(const char* name) {
  const auto ends = [&](const char* upper, const char* lower) {
    return strstr(name, upper) || strstr(name, lower);
  };
  if (ends("ToI420", "toi420")) return format::i420;
  if (ends("ToRGB24", "torgb24")) return format::rgb24;
  if (ends("ToRGB32", "torgb32")) return format::rgb32;
  return ends("ToYUYV", "toyuyv") ? format::yuyv : format::uyvy;
}

struct size_pair {
  uint32_t in_width, in_height, out_width, out_height;
  int32_t decimation, lines;
};
constexpr size_pair kSizePairs[] = {
    {320, 240, 320, 240, 0, 0},  {320, 240, 160, 120, 1, 0},   {320, 240, 320, 240, 0, 0},
    {704, 480, 176, 144, 2, 24}, {704, 480, 352, 288, 1, 48},  {480, 480, 480, 576, 0, 96},
    {720, 480, 720, 483, 0, 3},  {640, 480, 1280, 960, -1, 0}, {320, 240, 160, 120, 1, 0},
};

// A side has the calls of conversions under names of their own, for the reference keeps their state apart.
template <typename Side>
void convert(Side& side, dice& d, outcome& out, const geometry& g, const char* name, const size_pair& s,
             int misaligned_percent, int null_percent) {
  const format kind = conversion_format(name);
  const int at[] = {random_offset(d, misaligned_percent), random_offset(d, misaligned_percent),
                    random_offset(d, misaligned_percent), random_offset(d, misaligned_percent)};
  int64_t fields = 2 * static_cast<int64_t>(s.in_width) * s.in_height;
  int64_t size = g.bytes(kind);
  const int64_t asked =
      ref::frame_bytes(kind, static_cast<int32_t>(s.out_width), static_cast<int32_t>(s.out_height));
  if (size < asked) size = asked;
  if (at[0] % 8 || at[1] % 8 || at[2] % 8 || at[3] % 8) {  // a last resort takes the arguments as they are
    const int64_t pixels = static_cast<int64_t>(s.out_width) * s.out_height;
    if (fields < pixels) fields = pixels;
    if (size < 4 * pixels) size = 4 * pixels;
  }
  if (size > kLargest || fields > kLargest) return;
  buffer earlier(fields, at[0], d.bits()), kept(fields, at[1], d.bits()), later(fields, at[2], d.bits());
  buffer destination(size, at[3], d.bits());
  // The later field: the earlier one with more or less motion in it.
  const int motion = d.between(0, 3);
  for (int64_t i = 0; motion > 0 && i < fields; ++i)
    later.data()[i] = static_cast<uint8_t>(
        earlier.data()[i] + (i / 64 % 3 != 0 && motion < 3 ? 0 : later.data()[i] % (motion == 1 ? 7 : 60)));
  const uint8_t* from[] = {earlier.data(), kept.data(), later.data()};
  for (int i = 0; i < 3; ++i)
    if (at[i] % 16 == 0 && d.chance(null_percent)) from[i] = nullptr;
  uint8_t* to = at[3] % 16 == 0 && d.chance(null_percent) ? nullptr : destination.data();
  trace("%s, %u x %u to %u x %u, at %d %d %d %d, null %d %d %d %d", name, s.in_width, s.in_height,
        s.out_width, s.out_height, at[0], at[1], at[2], at[3], !from[0], !from[1], !from[2], !to);
  bool open = false;
  const bool answer = side.convert(name, from[0], from[1], from[2], to, s.in_width, s.in_height, s.out_width,
                                   s.out_height, size, &open);
  out.answers.byte(answer);
  if (open) out.open = true;
  destination.add_to(out.pictures);
  earlier.add_to(out.sources);
  kept.add_to(out.sources);
  later.add_to(out.sources);
  side.conversion_figures(out.figures);
}

template <typename Side>
void conversion_case(Side& side, dice& d, outcome& out, uint32_t number, int null_percent = 0) {
  geometry g;
  for (int calls = d.between(1, 3); calls > 0; --calls) {
    const char* name = kConversions[(calls == 1 ? number : d.bits()) % kConversionCount];
    const bool h = d.chance(40), v = d.chance(40);
    const int threshold = d.chance(30) ? d.between(0, 765) : d.between(0, 120);
    trace("mirrors %d %d, threshold %d", h, v, threshold);
    side.conversion_controls(h, v, static_cast<uint32_t>(threshold));
    size_pair s;
    if (number % 12 == 0 && calls == 1) {
      s = kSizePairs[number / 12 % (sizeof kSizePairs / sizeof kSizePairs[0])];
      g.size(s.in_width, s.in_height, s.in_width);
      g.decimate(s.decimation, s.lines / 2, s.lines - s.lines / 2);
    } else {
      const uint32_t width = static_cast<uint32_t>(16 * d.between(1, d.chance(80) ? 12 : 40));
      const uint32_t height = static_cast<uint32_t>(2 * d.between(1, 20));
      const int32_t decimation = d.between(-1, 2), top = d.chance(40) ? random_lines(d) : 0,
                    bottom = d.chance(40) ? random_lines(d) : 0;
      const bool lose = d.chance(15);
      trace("size %u %u, decimation %d %d %d%s", width, height, decimation, top, bottom,
            lose ? ", lost" : "");
      for (int i = 0; i < (lose ? 2 : 1); ++i) {
        side.conversion_size(width, height);
        g.size(width, height, width);
        if (i == 0) side.conversion_decimation(decimation, top, bottom);
        if (i == 0) g.decimate(decimation, top, bottom);
      }
      s = {width, height, static_cast<uint32_t>(g.out_width), static_cast<uint32_t>(g.out_height), 0, 0};
    }
    convert(side, d, out, g, name, s, 5, null_percent);
  }
}

// Null for any buffer of any call.
template <typename Side>
void null_case(Side& side, dice& d, outcome& out, uint32_t number) {
  if (number % 4 == 0) return wrapper_case(side, d, out, number / 4, 40);
  if (number % 4 == 1) return scaled_case(side, d, out, number / 4, 30);
  if (number % 4 == 2) return conversion_case(side, d, out, number, 30);
  geometry g;
  const frame_size f = random_size(d);
  for (int frames = 4; frames > 0; --frames) {
    set_decimation(side, out, g, d.between(-1, 2), 0, 0);
    CASE_CALL(set_quality, d.chance(70) ? d.pick(kQualities) : 4u);
    const format kind = static_cast<format>(d.between(0, 4));
    const null_buffers null = {d.chance(50), d.chance(50)};
    frame(side, d, out, g, kind, f.width, f.height, f.stride, 5, null);
  }
}

// ---- families ----

struct family {
  const char* name;
  uint32_t cases;
};
constexpr family kFamilies[] = {
    {"pictures", 1440}, {"raw", 100},      {"sequences", 240},   {"sizes", 200}, {"wrappers", 150},
    {"scaled", 160},    {"controls", 160}, {"conversions", 576}, {"nulls", 80},
};
constexpr int kFamilyCount = sizeof kFamilies / sizeof kFamilies[0];

template <typename Side>
void run(Side& side, int family, uint32_t number, uint32_t seed, outcome& out) {
  dice d(seed, static_cast<uint32_t>(family), number);
  switch (family) {
    case 0:
      return picture_case(side, d, out, number);
    case 1:
      return raw_case(side, d, out, number);
    case 2:
      return sequence_case(side, d, out, number);
    case 3:
      return resize_case(side, d, out, number);
    case 4:
      return wrapper_case(side, d, out, number);
    case 5:
      return scaled_case(side, d, out, number);
    case 6:
      return control_case(side, d, out, number);
    case 7:
      return conversion_case(side, d, out, number);
    default:
      return null_case(side, d, out, number);
  }
}

}  // namespace cases
