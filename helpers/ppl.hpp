// ppl in C++20: a context that frees itself, spans, enumerations, and exceptions that say why there is no picture.
//
//     ppl::context camera;
//     camera.gains(397, 256, 346).black_level(12);
//     ppl::buffer picture = camera.convert({mosaic, 640, 480}, ppl::format::rgb24);   // mosaic is overwritten
//     const ppl::rgb mean = camera.whole_frame();
//
// Whatever the C functions answer with "true" and no picture is an exception here: each call is checked by ppl_check.h
// before it is made, together with the sizes and addresses of the buffers, so that it either makes a whole picture or
// throws ppl::error with the sentence of that header and what would do instead. A control that refuses a value throws
// as well, and stays as it was.
//
// Nothing but inline code over ppl.h: link the library as usual. Controls that have no function here are set through
// get(), which gives the plain context. A context serves one thread at a time; contexts may be made and dropped in any
// thread, as long as all of the program goes through this header.
#ifndef PPL_HPP
#define PPL_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <new>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ppl.h"
#include "ppl_check.h"
#include "ppl_prepare.h"

namespace ppl {

/// What a Bayer frame is turned into.
enum class format : std::uint8_t {
  i420 = PPL_FORMAT_I420,
  yuyv = PPL_FORMAT_YUYV,
  uyvy = PPL_FORMAT_UYVY,
  rgb24 = PPL_FORMAT_RGB24,  ///< blue, green, red; bottom row first
  rgb32 = PPL_FORMAT_RGB32   ///< blue, green, red, 0; bottom row first
};

/// What a decoder delivers.
enum class packing : std::uint8_t { yuyv = PPL_FORMAT_YUYV, uyvy = PPL_FORMAT_UYVY };

/// How a Bayer frame is reconstructed.
enum class quality : std::uint8_t {
  directed_sharp = PPL_QUALITY_DIRECTED_SHARP,
  directed = PPL_QUALITY_DIRECTED,
  bilinear = PPL_QUALITY_BILINEAR,
  cells = PPL_QUALITY_CELLS,
  raw = PPL_QUALITY_RAW,
  flat_sharp = PPL_QUALITY_FLAT_SHARP,
  flat = PPL_QUALITY_FLAT,
  grey_sharp = PPL_QUALITY_GREY_SHARP,
  grey = PPL_QUALITY_GREY,
  full = PPL_QUALITY_FULL  ///< the default
};

/// The picture's size beside the frame's.
enum class size : std::int8_t { twice = PPL_SIZE_DOUBLE, same = PPL_SIZE_SAME, half = PPL_SIZE_HALF };

/// Why a call can't be made. what() is the sentence; reason() is that of ppl_check.h, PPL_WHOLE where the call itself
/// would do and something else is wrong: a buffer too small, a value out of range, no context left.
class error : public std::runtime_error {
 public:
  /// From the sentence, and the reason where there is one.
  explicit error(const std::string& sentence, ppl_reason reason = PPL_WHOLE)
      : std::runtime_error(sentence), reason_(reason) {}
  /// Why no whole picture would come.
  ppl_reason reason() const noexcept { return reason_; }

 private:
  ppl_reason reason_;
};

/// Bytes that start at a multiple of 64, as frames want them. Zero at first.
class buffer {
 public:
  /// No bytes.
  buffer() noexcept = default;
  /// n bytes of zero.
  explicit buffer(std::size_t n) : buffer(n, uncleared{}) {
    if (n != 0) std::memset(data_, 0, n);
  }
  /// For what is written whole anyway.
  struct uncleared {};
  /// n bytes, as memory happened to be.
  buffer(std::size_t n, uncleared)
      : data_(n == 0 ? nullptr : static_cast<std::uint8_t*>(::operator new (n, std::align_val_t{64}))),
        size_(n) {}
  /// A copy of the bytes.
  explicit buffer(std::span<const std::uint8_t> bytes) : buffer(bytes.size()) {
    if (size_ != 0) std::memcpy(data_, bytes.data(), size_);
  }
  /// A copy, with memory of its own.
  buffer(const buffer& other) : buffer(std::span<const std::uint8_t>(other)) {}
  /// Takes the bytes over; the other holds none any more.
  buffer(buffer&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}
  /// Copies or takes over.
  buffer& operator=(buffer other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    return *this;
  }
  ~buffer() {
    if (data_ != nullptr) ::operator delete (data_, std::align_val_t{64});
  }

  /// @{ As those of a std::vector.
  std::uint8_t* data() noexcept { return data_; }
  const std::uint8_t* data() const noexcept { return data_; }
  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  std::uint8_t& operator[](std::size_t i) noexcept { return data_[i]; }
  const std::uint8_t& operator[](std::size_t i) const noexcept { return data_[i]; }
  std::uint8_t* begin() noexcept { return data_; }
  std::uint8_t* end() noexcept { return data_ + size_; }
  const std::uint8_t* begin() const noexcept { return data_; }
  const std::uint8_t* end() const noexcept { return data_ + size_; }
  /// @}

 private:
  std::uint8_t* data_ = nullptr;
  std::size_t size_ = 0;
};

/// Width and height in pixels.
struct extent {
  std::uint32_t width = 0;   ///< columns
  std::uint32_t height = 0;  ///< rows
  /// Equal in both.
  friend bool operator==(const extent&, const extent&) = default;
};

/// A Bayer frame of the caller's: B Gb on even rows, Gr R on odd ones. Conversions overwrite it.
struct mosaic {
  std::span<std::uint8_t> samples;  ///< at least stride * height bytes, at a multiple of 16
  std::uint32_t width = 0;          ///< samples in a row
  std::uint32_t height = 0;         ///< rows
  std::uint32_t stride = 0;         ///< bytes from row to row; 0 for the width
};

/// A mean or a sum in the order in which the library keeps it, in 1/256 of a sample step.
struct rgb {
  std::uint32_t r;  ///< red
  std::uint32_t g;  ///< green, of both sites
  std::uint32_t b;  ///< blue
  /// Equal in all three.
  friend bool operator==(const rgb&, const rgb&) = default;
};

/// Rows that fields become black above and below the picture.
struct black_lines {
  std::uint32_t top = 0;     ///< above
  std::uint32_t bottom = 0;  ///< below
};

/// What was measured on a frame that was made in parts, as context tells it of one that was not.
struct measurements {
  rgb whole_frame;                ///< mean of the frame
  rgb exposure;                   ///< mean of the cells within the range for exposure
  rgb qualified;                  ///< mean of the cells within the quality ranges
  std::uint32_t exposure_cells;   ///< how many 2 x 2 cells exposure is a mean of
  std::uint32_t qualified_cells;  ///< how many 2 x 2 cells qualified is a mean of
};

/// Bytes of a picture.
constexpr std::size_t bytes(format f, extent e) noexcept {
  return static_cast<std::size_t>(ppl_frame_bytes(static_cast<std::uint32_t>(f), e.width, e.height));
}

/// One of the library's eight contexts, with all controls at their defaults.
class context {
 public:
  /// Takes one; ppl::error if all eight are in use.
  context() {
    const std::lock_guard hold(pool());
    context_ = ppl_init();
    if (context_ == nullptr) throw error("all eight contexts are in use: drop one first");
  }
  /// Takes the context over; the other is only fit to be dropped or assigned to.
  context(context&& other) noexcept
      : context_(std::exchange(other.context_, nullptr)),
        lens_(std::move(other.lens_)),
        stained_(other.stained_) {}
  /// Drops its own context and takes the other over.
  context& operator=(context&& other) noexcept {
    context taken(std::move(other));
    std::swap(context_, taken.context_);
    std::swap(lens_, taken.lens_);
    std::swap(stained_, taken.stained_);
    return *this;
  }
  context(const context&) = delete;
  context& operator=(const context&) = delete;
  ~context() {
    if (context_ == nullptr) return;
    const std::lock_guard hold(pool());
    ppl_reset_lens_correction(context_);  // its table goes with this object
    ppl_free(context_);
  }

  /// The context as ppl.h knows it, for all that has no function here.
  ppl_context* get() const noexcept { return context_; }

  // ---- Frames

  /// What a conversion would do, without doing it.
  ppl_verdict check(extent frame, format to, size at = size::same, std::uint32_t stride = 0) const noexcept {
    const ppl_plan p = plan(frame, to, at, stride);
    return ppl_check(&p);
  }
  /// The picture's width and height.
  static extent picture_of(extent frame, size at = size::same) noexcept {
    return {ppl_decimated_extent(frame.width, static_cast<std::int32_t>(at)),
            ppl_decimated_extent(frame.height, static_cast<std::int32_t>(at))};
  }

  /// Converts a frame into the caller's buffer. The samples are overwritten.
  void convert(const mosaic& frame, std::span<std::uint8_t> picture, format to, size at = size::same) {
    ppl_plan p = plan({frame.width, frame.height}, to, at, frame.stride);
    p.source_at = address(frame.samples.data());
    p.destination_at = address(picture.data());
    const ppl_verdict v = demand(p);
    demand_bytes("the frame", frame.samples, v.source_bytes);
    demand_bytes("the picture", picture, v.destination_bytes);
    forget_flat_colours();
    constexpr decltype(&ppl_process_blrtoi420) calls[] = {ppl_process_blrtoi420, ppl_process_blrtoyuyv,
                                                          ppl_process_blrtouyvy, ppl_process_blrtorgb24,
                                                          ppl_process_blrtorgb32};
    ppl_set_decimation(context_, p.decimation, 0, 0);
    finish(calls[p.format](context_, frame.samples.data(), picture.data(), p.width, p.height, p.stride), v);
    if (v.notes & PPL_NOTE_LEAVES_COLOURS) stained_ = true;
  }
  /// The same into a buffer of its own.
  buffer convert(const mosaic& frame, format to, size at = size::same) {
    const extent e = {frame.width, frame.height};
    demand(plan(e, to, at, frame.stride));  // before memory is asked for
    buffer picture(bytes(to, picture_of(e, at)), buffer::uncleared{});
    convert(frame, picture, to, at);
    return picture;
  }
  /// Converts a frame and scales it to `to_size`, which is as high as the frame or higher. I420 and YUYV alone.
  buffer convert_scaled(const mosaic& frame, format to, extent to_size) {
    ppl_plan p = plan({frame.width, frame.height}, to, size::same, frame.stride);
    p.call = PPL_CALL_SCALED;
    p.out_width = to_size.width;
    p.out_height = to_size.height;
    p.source_at = address(frame.samples.data());
    const ppl_verdict v = demand(p);
    demand_bytes("the frame", frame.samples, v.source_bytes);
    forget_flat_colours();
    const buffer::uncleared as_it_is;
    buffer scratch(static_cast<std::size_t>(v.scratch_bytes), as_it_is),
        picture(bytes(to, to_size), as_it_is);
    const auto call = to == format::yuyv ? BaylorToYUYVMMX_scaling_stride : BaylorToI420MMX_scaling_stride;
    finish(call(context_, frame.samples.data(), p.width, p.height, p.stride, picture.data(), p.out_width,
                p.out_height, scratch.data()),
           v);
    if (v.notes & PPL_NOTE_LEAVES_COLOURS) stained_ = true;
    return picture;
  }

  /// Converts a frame of any size, up to 64 parts of 1984 x 2048 that overlap, to the picture that one call would make
  /// of it. Same and half size, all qualities but the raw one. The samples are only read. Statistics of the context are
  /// then those of the last part; `measured`, if given, gets those of the frame.
  buffer convert_large(const mosaic& frame, format to, size at = size::same,
                       measurements* measured = nullptr) {
    const std::uint32_t stride = frame.stride != 0 ? frame.stride : frame.width;
    std::vector<ppl_part> parts(PPL_MOST_PARTS);
    const int d = static_cast<int>(at);
    parts.resize(
        at == size::twice ? 0 : ppl_plan_parts(frame.width, frame.height, d, parts.data(), PPL_MOST_PARTS));
    within(!parts.empty(),
           "a frame in parts has a width that is a multiple of 32 and an even height, of 64 and 4 at half "
           "size, and is not doubled");
    within(ppl_quality_table[ppl_quality(context_)].road != PPL_ROAD_RAW,
           "the raw quality is not made in parts");
    within(stride >= frame.width, "the stride is below the width: it must be the width or more");
    demand_bytes("the frame", frame.samples, std::uint64_t{stride} * (frame.height - 1) + frame.width);
    std::size_t samples = 0, lens_bytes = 0;
    lens_in_parts lens(context_);
    for (const ppl_part& p : parts) {
      demand(plan({p.width, p.height}, to, at, 0));  // before memory is asked for
      samples = samples > std::size_t{p.width} * p.height ? samples : std::size_t{p.width} * p.height;
      const std::size_t wanted =
          lens.on ? static_cast<std::size_t>(ppl_part_lens_bytes(&p, lens.origin_y)) : 0;
      lens_bytes = lens_bytes > wanted ? lens_bytes : wanted;
    }
    lens.table.resize(lens_bytes / 2);
    const buffer::uncleared as_it_is;
    buffer picture(bytes(to, picture_of({frame.width, frame.height}, at)), as_it_is);
    buffer source(samples, as_it_is), made(4 * samples, as_it_is);
    ppl_part_means exposed, qualified;
    ppl_part_means_clear(&exposed);
    ppl_part_means_clear(&qualified);
    for (const ppl_part& p : parts) {
      ppl_copy_rectangle(source.data(), p.width, frame.samples.data() + std::size_t{p.y} * stride + p.x,
                         stride, p.width, p.height);
      lens.move_to(p);
      convert({source, p.width, p.height}, made, to, at);
      ppl_join_part(&p, frame.width, frame.height, static_cast<int>(to), d, ppl_h_mirror(context_) != 0,
                    ppl_v_mirror(context_) != 0, made.data(), picture.data());
      const std::uint32_t* const whole = ppl_rgb_means_whole_frame(context_);
      ppl_part_means_add(&exposed, &p, whole, ppl_qAE_rgb_means_whole_frame(context_), exposure_cells());
      ppl_part_means_add(&qualified, &p, whole, ppl_qual_rgb_means_whole_frame(context_), qualified_cells());
    }
    if (measured != nullptr) {
      std::uint32_t whole[3], ranged[3];
      ppl_part_means_total(&exposed, frame.width, frame.height, whole, ranged, &measured->exposure_cells);
      measured->whole_frame = at_words(whole);
      measured->exposure = at_words(ranged);
      ppl_part_means_total(&qualified, frame.width, frame.height, whole, ranged, &measured->qualified_cells);
      measured->qualified = at_words(ranged);
    }
    return picture;
  }

  /// Converts a frame of the 12-bit layout, 12 bytes for 8 pixels, to I420. The library writes no V plane and mixes
  /// the chroma into that of U (see ppl.h); V is 128 here.
  buffer convert_12_bit(std::span<const std::uint8_t> frame, extent e) {
    ppl_plan p = conversion(PPL_CALL_PACKED_12_BIT, packing::uyvy, format::i420, e, e);
    p.source_at = address(frame.data());
    const ppl_verdict v = ppl_check(&p);
    if (v.reason != PPL_REASON_NO_V_PLANE) demand(p);
    within(e.width != 0 && e.width % 32 == 0 && e.height != 0 && e.height % 2 == 0,
           "the 12-bit layout has widths that are multiples of 32 and even heights");
    demand_bytes("the frame", frame, v.source_bytes);
    buffer picture(bytes(format::i420, e), buffer::uncleared{});
    const std::size_t n = std::size_t{e.width} * e.height;
    std::memset(picture.data() + n, 128, picture.size() - n);
    stand_at(e);
    finish(ppl_process_uyvyyyyytoi420(context_, frame.data(), picture.data(), e.width, e.height, e.width,
                                      e.height),
           v);
    return picture;
  }

  /// Converts a packed decoder frame at its own size, to I420 or RGB24. Of the controls the mirrors alone act, on I420.
  void convert(packing from, std::span<const std::uint8_t> frame, extent e, std::span<std::uint8_t> picture,
               format to) {
    ppl_plan p = conversion(PPL_CALL_PACKED, from, to, e, e);
    p.source_at = address(frame.data());
    p.destination_at = address(picture.data());
    const ppl_verdict v = demand(p);
    demand_bytes("the frame", frame, v.source_bytes);
    demand_bytes("the picture", picture, v.destination_bytes);
    stand_at(e);
    constexpr decltype(&ppl_process_yuyvtoi420) calls[2][2] = {
        {ppl_process_yuyvtoi420, ppl_process_yuyvtorgb24}, {ppl_process_uyvytoi420, ppl_process_uyvytorgb24}};
    finish(calls[from == packing::uyvy][to == format::rgb24](context_, frame.data(), picture.data(), e.width,
                                                             e.height, e.width, e.height),
           v);
  }
  /// The same into a buffer of its own.
  buffer convert(packing from, std::span<const std::uint8_t> frame, extent e, format to) {
    demand(conversion(PPL_CALL_PACKED, from, to, e, e));
    buffer picture(bytes(to, e), buffer::uncleared{});
    convert(from, frame, e, picture, to);
    return picture;
  }

  /// Weaves two fields to a frame of `e`; each field holds every second row of it. `earlier` is the later field of the
  /// frame before, by which chroma that moved is found; without one the fields are woven as they stand. The picture is
  /// higher by the black lines; RGB24 has none, I420 an even number above and below.
  void deinterlace(packing from, std::span<const std::uint8_t> earlier, std::span<const std::uint8_t> kept,
                   std::span<const std::uint8_t> later, extent e, std::span<std::uint8_t> picture, format to,
                   black_lines lines = {}) {
    const ppl_plan at_lines = fields(from, to, e, lines);
    const extent out = {e.width, at_lines.out_height};
    ppl_plan p = at_lines;
    const std::span<const std::uint8_t> before = earlier.empty() ? later : earlier;
    p.source_at =
        static_cast<std::uint8_t>(address(before.data()) | address(kept.data()) | address(later.data()));
    p.destination_at = address(picture.data());
    const ppl_verdict v = demand(p);
    demand_bytes("the earlier field", before, v.source_bytes);
    demand_bytes("the kept field", kept, v.source_bytes);
    demand_bytes("the later field", later, v.source_bytes);
    demand_bytes("the picture", picture, v.destination_bytes);
    stand_at(e);
    ppl_set_decimation(context_, 0, p.top_black_lines, p.bottom_black_lines);
    using call = decltype(&IntlYUYVToYUYVMMX);
    constexpr call calls[2][4] = {
        {IntlYUYVToI420MMX, IntlYUYVToYUYVMMX, IntlYUYVToUYVYMMX, IntlYUYVToRGB24MMX},
        {IntlUYVYToI420MMX, IntlUYVYToYUYVMMX, IntlUYVYToUYVYMMX, IntlUYVYToRGB24MMX}};
    const std::uint8_t answer =
        calls[from == packing::uyvy][p.format](context_, before.data(), kept.data(), later.data(),
                                               picture.data(), e.width, e.height, out.width, out.height);
    ppl_reset_decimation(context_);
    finish(answer, v);
  }
  /// The same into a buffer of its own.
  buffer deinterlace(packing from, std::span<const std::uint8_t> earlier, std::span<const std::uint8_t> kept,
                     std::span<const std::uint8_t> later, extent e, format to, black_lines lines = {}) {
    const ppl_plan p = fields(from, to, e, lines);
    demand(p);
    buffer picture(bytes(to, {p.out_width, p.out_height}), buffer::uncleared{});
    deinterlace(from, earlier, kept, later, e, picture, to, lines);
    return picture;
  }

  // ---- Controls. Each gives the context back, so that calls can be strung together; units are those of ppl.h.

  /// How frames are reconstructed.
  ppl::quality quality() const noexcept { return static_cast<ppl::quality>(ppl_quality(context_)); }
  /// Sets it.
  context& quality(ppl::quality q) {
    return accepted(ppl_set_quality(context_, static_cast<std::uint32_t>(q)), "qualities go from 0 to 15");
  }
  /// Left to right, top to bottom.
  context& mirrors(bool horizontal, bool vertical) noexcept {
    ppl_set_h_mirror(context_, horizontal);
    ppl_set_v_mirror(context_, vertical);
    return *this;
  }
  /// Whether frames gather statistics; without them they take less time.
  context& statistics(bool on) noexcept {
    ppl_set_mean_collection(context_, on);
    return *this;
  }

  /// The same for all four sites, 0 to 255.
  context& black_level(std::uint32_t all) { return black_level(all, all, all, all); }
  /// Of the four sites of the mosaic, 0 to 255 each.
  context& black_level(std::uint32_t b, std::uint32_t gb, std::uint32_t gr, std::uint32_t r) {
    within(b <= 255 && gb <= 255 && gr <= 255 && r <= 255, "black levels go from 0 to 255");
    ppl_set_optical_black_b_gb_gr_r(context_, b, gb, gr, r);
    return *this;
  }
  /// 256 is 1.0.
  context& gains(std::uint32_t r, std::uint32_t g, std::uint32_t b) {
    within(r <= 2047 && g <= 2047 && b <= 2047, "gains go from 0 to 2047, 256 being 1.0");
    ppl_set_rgb_gain(context_, r, g, b);
    return *this;
  }
  /// Added behind the gains, in sample steps.
  context& deltas(std::int32_t r, std::int32_t g, std::int32_t b) {
    within(fits_16(r) && fits_16(g) && fits_16(b), "deltas go from -32768 to 32767");
    ppl_set_rgb_delta(context_, r, g, b);
    return *this;
  }
  /// Nine words row by row, 256 being 1.0.
  context& sensor_matrix(std::span<const std::int32_t, 9> nine) noexcept {
    ppl_copy_sensor_matrix(context_, nine.data());
    return *this;
  }

  /// 256 is 1.0; 0 is grey, 512 the most.
  context& saturation(std::uint32_t nf88) {
    return accepted(ppl_set_sat(context_, nf88), "saturation goes from 0 to 512, 256 being 1.0");
  }
  /// In degrees, any number.
  context& hue(std::int32_t degrees) noexcept {
    ppl_set_hue(context_, degrees);
    return *this;
  }
  /// -127 to 127; 0 changes nothing.
  context& contrast(std::int32_t c) {
    return accepted(ppl_set_contrast_c(context_, c, nullptr, nullptr), "contrast goes from -127 to 127");
  }
  /// One of the built-in tone curves.
  context& gamma(std::int32_t index) {
    return accepted(ppl_set_gamma(context_, index), "tone curves go from -32 to 32");
  }
  /// A tone curve of the caller's, in force in all qualities but 13.
  context& tone(std::span<const std::uint8_t, 256> table) noexcept {
    ppl_copy_rgb_gamma_table(context_, table.data());
    return *this;
  }

  /// The two greens of a cell become their mean where they differ by less than the threshold.
  context& green_balance(bool on, std::int32_t threshold = 10) {
    within(fits_16(threshold), "thresholds of the green balance go from -32768 to 32767");
    on ? ppl_enable_GbGr_correction(context_) : ppl_disable_GbGr_correction(context_);
    ppl_set_GbGr_correction_diff_threshold(context_, threshold);
    return *this;
  }
  /// Hot and dead pixels, in qualities 0, 1 and 2.
  context& medium_filter(bool on) noexcept {
    on ? ppl_enable_medium_filter(context_) : ppl_disable_medium_filter(context_);
    return *this;
  }
  /// Pixels gain their difference times factor / 256 where it lies between the thresholds.
  context& sharpness(std::uint32_t factor, std::uint32_t threshold = 100, std::uint32_t threshold2 = 1530) {
    within(factor <= 256 && threshold <= 1530 && threshold2 <= 1530,
           "sharpness goes from 0 to 256, its thresholds from 0 to 1530");
    ppl_set_nf88_edge_enhance_factor(context_, factor);
    ppl_set_edge_threshold(context_, threshold);
    ppl_set_edge_threshold2(context_, threshold2);
    return *this;
  }

  /// Lens shading: the factor at a squared distance s from `origin` is 1 + f1 s / 2^shift1 - f2 s s / 2^shift2. The
  /// table is kept here. `frame` is the size of the frames to come.
  context& lens_correction(extent frame, extent origin, std::int32_t f1, std::int32_t shift1 = 24,
                           std::int32_t f2 = 0, std::int32_t shift2 = 44) {
    within(frame.width >= 1 && frame.width <= 65535 && frame.height >= 1 && frame.height <= 65535,
           "frames go up to 65535 x 65535");
    within(origin.width <= frame.width && origin.height <= frame.height, "the origin lies within the frame");
    within(shift1 >= 13 && shift1 <= 63 && shift2 >= 13 && shift2 <= 63, "shifts go from 13 to 63");
    const std::uint32_t below = frame.height - origin.height;
    const std::uint32_t rows = (origin.height > below ? origin.height : below) + 1;
    within(std::uint64_t{rows} * frame.width < 0x40000000u, "a table of this size has more than 2^31 bytes");
    std::vector<std::uint16_t> table(std::size_t{rows} * frame.width);
    ppl_set_lens_correction(
        context_, static_cast<std::int32_t>(frame.width), static_cast<std::int32_t>(frame.height),
        static_cast<std::int32_t>(origin.width), static_cast<std::int32_t>(origin.height), table.data(),
        static_cast<std::int32_t>(table.size() * sizeof table[0]), f1, shift1, f2, shift2);
    ppl_enable_lens_correction(context_);
    lens_ = std::move(table);
    return *this;
  }
  /// Off, without a table.
  context& no_lens_correction() noexcept {
    ppl_reset_lens_correction(context_);
    lens_.clear();
    return *this;
  }
  /// All controls to their defaults.
  context& reset() noexcept {
    ppl_reset_all_controls(context_);
    lens_.clear();
    return *this;
  }

  // ---- Statistics of the last Bayer frame; spans are valid until the next. See ppl.h for what each is a mean of.

  /// Frames that calls on this context have converted or counted, its earlier owners' too.
  std::uint32_t frames() const noexcept { return ppl_n_frame(context_); }
  /// Mean of the frame.
  rgb whole_frame() const noexcept { return at_words(ppl_rgb_means_whole_frame(context_)); }
  /// Mean of the 48 cells of the grid.
  rgb all_windows() const noexcept { return at_words(ppl_rgb_means_all_sub_windows(context_)); }
  /// What lies outside the grid, divided as if it were one cell.
  rgb outside_windows() const noexcept { return at_words(ppl_rgb_means_outside_all_sub_windows(context_)); }
  /// Mean of the cells within the range for exposure.
  rgb exposure() const noexcept { return at_words(ppl_qAE_rgb_means_whole_frame(context_)); }
  /// Mean of the cells within the quality ranges, linear in the light.
  rgb qualified() const noexcept { return at_words(ppl_qual_rgb_means_whole_frame(context_)); }
  /// How many 2 x 2 cells exposure() is a mean of.
  std::uint32_t exposure_cells() const noexcept { return ppl_n_qAE_2x2_whole_frame(context_); }
  /// How many 2 x 2 cells qualified() is a mean of.
  std::uint32_t qualified_cells() const noexcept { return ppl_n_qual_2x2_whole_frame(context_); }
  /// The 8 x 6 grid, row by row.
  std::array<rgb, 48> windows() const noexcept {
    std::array<rgb, 48> cells;
    for (std::size_t i = 0; i < cells.size(); ++i)
      cells[i] = at_words(ppl_rgb_means_sub_windows(context_) + 3 * i);
    return cells;
  }
  /// One word for each of 256 steps.
  using histogram = std::span<const std::uint32_t, 256>;
  /// @{ How many cells have which mean, linear; cells outside the quality ranges count as black.
  histogram red_histogram() const noexcept { return histogram(ppl_r_histogram(context_), 256); }
  histogram green_histogram() const noexcept { return histogram(ppl_g_histogram(context_), 256); }
  histogram blue_histogram() const noexcept { return histogram(ppl_b_histogram(context_), 256); }
  /// @}

 private:
  // The library's pool has no lock of its own.
  static std::mutex& pool() {
    static std::mutex m;
    return m;
  }
  static std::uint8_t address(const void* p) noexcept {
    return static_cast<std::uint8_t>(reinterpret_cast<std::uintptr_t>(p) % PPL_BUFFER_ALIGNMENT);
  }
  static bool fits_16(std::int32_t v) noexcept { return v >= -32768 && v <= 32767; }
  static rgb at_words(const std::uint32_t* words) noexcept { return {words[0], words[1], words[2]}; }

  // The lens correction as it moves from part to part, and back to the whole frame in the end.
  struct lens_in_parts {
    explicit lens_in_parts(ppl_context* context)
        : c(context),
          whole(ppl_lens_correction_table(c)),
          on(whole != nullptr && ppl_lens_correction_enabled(c) != 0),
          width(ppl_lens_correction_width(c)),
          height(ppl_lens_correction_height(c)),
          origin_x(ppl_lens_correction_origin_x(c)),
          origin_y(ppl_lens_correction_origin_y(c)),
          f1(ppl_lens_correction_f1(c)),
          shift1(ppl_lens_correction_f1_rshift_count(c)),
          f2(ppl_lens_correction_f2(c)),
          shift2(ppl_lens_correction_f2_rshift_count(c)) {}
    lens_in_parts(const lens_in_parts&) = delete;
    lens_in_parts& operator=(const lens_in_parts&) = delete;
    ~lens_in_parts() {
      if (!moved) return;
      const std::int32_t below = height - origin_y;
      const std::int32_t rows = (origin_y > below ? origin_y : below) + 1;
      ppl_set_lens_correction(c, width, height, origin_x, origin_y, whole, 2 * width * rows, f1, shift1, f2,
                              shift2);
    }
    void move_to(const ppl_part& p) {
      if (!on) return;
      moved = true;
      ppl_set_lens_correction(
          c, static_cast<std::int32_t>(p.width), static_cast<std::int32_t>(p.height),
          origin_x - static_cast<std::int32_t>(p.x), origin_y - static_cast<std::int32_t>(p.y), table.data(),
          static_cast<std::int32_t>(table.size() * sizeof table[0]), f1, shift1, f2, shift2);
    }

    ppl_context* c;
    std::uint16_t* whole;
    bool on, moved = false;
    std::int32_t width, height, origin_x, origin_y, f1, shift1, f2, shift2;
    std::vector<std::uint16_t> table;
  };

  static void within(bool is, const char* sentence) {
    if (!is) throw error(sentence);
  }
  context& accepted(std::uint8_t answer, const char* sentence) {
    within(answer != 0, sentence);
    return *this;
  }

  ppl_plan plan(extent frame, format to, size at, std::uint32_t stride) const noexcept {
    ppl_plan p = ppl_plan_frame(PPL_CALL_FRAME, static_cast<std::uint32_t>(to), ppl_quality(context_),
                                frame.width, frame.height);
    p.decimation = static_cast<std::int32_t>(at);
    if (stride != 0) p.stride = stride;
    p.medium_filter = ppl_medium_filter_enabled(context_);
    controls(p);
    return p;
  }
  ppl_plan conversion(std::uint32_t call, packing from, format to, extent in, extent out) const noexcept {
    ppl_plan p = ppl_plan_conversion(call, static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to),
                                     in.width, in.height, out.width, out.height);
    p.process = 1;  // misaligned buffers are refused before the call
    p.sized = 1;
    controls(p);
    return p;
  }
  ppl_plan fields(packing from, format to, extent e, black_lines lines) const {
    within(lines.top <= PPL_LIMIT_HEIGHT && lines.bottom <= PPL_LIMIT_HEIGHT,
           "black lines go from 0 to 2048 above and below");
    ppl_plan p = conversion(PPL_CALL_FIELDS, from, to, e, {e.width, e.height + lines.top + lines.bottom});
    p.top_black_lines = static_cast<std::int32_t>(lines.top);
    p.bottom_black_lines = static_cast<std::int32_t>(lines.bottom);
    return p;
  }
  void controls(ppl_plan& p) const noexcept {
    p.h_mirror = ppl_h_mirror(context_) != 0;
    p.v_mirror = ppl_v_mirror(context_) != 0;
    p.P3_only = ppl_P3_only(context_) != 0;
  }
  // A size that the conversions need not look up.
  void stand_at(extent e) {
    ppl_reset_decimation(context_);
    ppl_new_frame_size(context_, e.width, e.height, e.width);
  }

  static std::string numbers(std::uint32_t w, std::uint32_t h) {
    return std::to_string(w) + " x " + std::to_string(h);
  }
  static ppl_verdict demand(const ppl_plan& p) {
    const ppl_verdict v = ppl_check(&p);
    if (v.whole) return v;
    std::string sentence = ppl_reason_text(v.reason);
    ppl_plan near = p;
    if (ppl_nearest(&p, &near)) {
      if (near.quality != p.quality)
        sentence += std::string("; quality ") + std::to_string(near.quality) + " would do";
      else if (near.width != p.width || near.height != p.height)
        sentence += "; " + numbers(near.width, near.height) + " would do";
      else if (p.call == PPL_CALL_SCALED &&
               (near.out_width != p.out_width || near.out_height != p.out_height))
        sentence += "; an output of " + numbers(near.out_width, near.out_height) + " would do";
      else if (near.stride != p.stride)
        sentence += "; " + std::to_string(near.stride) + " would do";
    }
    throw error(sentence, static_cast<ppl_reason>(v.reason));
  }
  static void demand_bytes(const char* what, std::span<const std::uint8_t> held, std::uint64_t needed) {
    if (held.size() < needed)
      throw error(std::string(what) + " needs " + std::to_string(needed) + " bytes, its buffer has " +
                  std::to_string(held.size()));
  }
  // The verdict is that of the library, or this header does not belong to it.
  static void finish(std::uint8_t answer, const ppl_verdict& v) {
    if (answer != v.answer)
      throw error("the library answered otherwise than its header says: do the two belong together?");
  }

  // Some qualities leave flat colours behind, which others would lay over their pictures: a frame without flat places
  // clears them. They may stem from the context's owner before this one.
  void forget_flat_colours() {
    const std::uint32_t wanted = ppl_quality(context_);
    if (!stained_ || ppl_quality_shows_colours(wanted) == 0) return;
    constexpr std::uint32_t width = 32, height = 4;
    buffer bars(width * height), out(width * height * 4 * 3 / 2);
    for (std::size_t i = 0; i < bars.size(); ++i) bars[i] = i % 4 < 2 ? 0 : 255;
    const std::uint32_t threshold = ppl_CFA_T0_threshold(context_);
    ppl_set_CFA_T0_threshold(context_, 0);
    ppl_set_quality(context_, PPL_QUALITY_FLAT);
    ppl_set_decimation(context_, 0, 0, 0);
    ppl_process_blrtoi420(context_, bars.data(), out.data(), width, height, width);
    ppl_set_quality(context_, wanted);
    ppl_set_CFA_T0_threshold(context_, threshold);
    // Controls that make all samples alike leave flat places in any frame: then the colours are still there.
    stained_ = bars[1] == bars[3] || bars[width] == bars[width + 2];
  }

  ppl_context* context_ = nullptr;
  std::vector<std::uint16_t> lens_;
  bool stained_ = true;  // flat colours may stand in the context
};

}  // namespace ppl

#endif  // PPL_HPP
