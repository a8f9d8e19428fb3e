// ppl._ppl: contexts, checks, the table of controls and the simulation, as the Python package needs them. Arrays come
// in as they lie in memory and go out in memory of their own; errors are those of ppl.hpp, as ppl.Error.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <memory>
#include <mutex>
#include <optional>

#include "control_table.h"
#include "failure.h"
#include "ppl.hpp"
#include "ppl_auto.h"
#include "ppl_prepare.h"
#include "simulate.h"

namespace py = pybind11;
using namespace py::literals;

namespace {

using array = py::array_t<uint8_t>;

// A buffer as a one-dimensional array that owns it.
py::array as_array(ppl::buffer&& picture) {
  auto* const owner = new ppl::buffer(std::move(picture));
  const py::capsule hold(owner, [](void* p) { delete static_cast<ppl::buffer*>(p); });
  return array({static_cast<py::ssize_t>(owner->size())}, {1}, owner->data(), hold);
}

// A frame's rows back to back in a buffer of its own.
ppl::buffer packed(const array& frame) {
  const py::buffer_info at = frame.request();
  const auto rows = static_cast<size_t>(at.shape[0]);
  const size_t row = static_cast<size_t>(at.size) / std::max<size_t>(rows, 1);
  ppl::buffer all(rows * row);
  const auto* const from = static_cast<const uint8_t*>(at.ptr);
  const bool runs = at.ndim == 1
                        ? at.strides[0] == 1
                        : at.strides[at.ndim - 1] == 1 && (at.ndim < 3 || at.strides[1] == at.shape[2]);
  if (at.ndim == 1 && runs) {
    std::memcpy(all.data(), from, all.size());
  } else if (at.ndim > 1 && runs) {
    for (size_t r = 0; r < rows; ++r)
      std::memcpy(all.data() + r * row, from + static_cast<py::ssize_t>(r) * at.strides[0], row);
  } else {
    const py::array contiguous = py::array::ensure(frame, py::array::c_style);
    std::memcpy(all.data(), contiguous.data(), all.size());
  }
  return all;
}

// A decoder frame as it lies, or packed where it lies otherwise or at an address that won't do.
class Input {
 public:
  explicit Input(const array& frame) {
    const bool as_it_is = (frame.flags() & py::array::c_style) &&
                          reinterpret_cast<uintptr_t>(frame.data()) % PPL_BUFFER_ALIGNMENT == 0;
    if (as_it_is) {
      bytes_ = {frame.data(), static_cast<size_t>(frame.size())};
    } else {
      own_ = packed(frame);
      bytes_ = own_;
    }
  }
  std::span<const uint8_t> bytes() const { return bytes_; }

 private:
  ppl::buffer own_;
  std::span<const uint8_t> bytes_;
};

ppl::extent extent_of(const array& frame) {
  return {static_cast<uint32_t>(frame.shape(1)), static_cast<uint32_t>(frame.shape(0))};
}

class Context {
 public:
  Context() : context_(std::in_place) {}

  void close() {
    const std::lock_guard hold(busy_);
    context_.reset();
  }
  bool closed() const { return !context_; }

  // The samples are worked on where they lie if `in_place`, else in a copy.
  py::object convert(const array& frame, int format, int size, bool in_place,
                     const std::optional<array>& out) {
    const ppl::extent e = extent_of(frame);
    ppl::buffer copy, picture;
    ppl::mosaic mosaic{{}, e.width, e.height, 0};
    if (in_place) {
      if (!frame.writeable() || frame.strides(1) != 1 || frame.strides(0) < frame.shape(1))
        throw ppl::error(
            "a frame that is converted in place must be writable, with its samples side by side");
      mosaic.stride = static_cast<uint32_t>(frame.strides(0));
      mosaic.samples = {const_cast<uint8_t*>(frame.data()), static_cast<size_t>(frame.strides(0)) * e.height};
    } else {
      copy = packed(frame);
      mosaic.samples = copy;
    }
    const auto to = static_cast<ppl::format>(format);
    const auto at = static_cast<ppl::size>(size);
    if (out) {
      if (!out->writeable() || !(out->flags() & py::array::c_style))
        throw ppl::error("an array for the picture must be writable and contiguous");
      const std::span<uint8_t> bytes(const_cast<uint8_t*>(out->data()), static_cast<size_t>(out->size()));
      alone([&] { get().convert(mosaic, bytes, to, at); });
      return *out;
    }
    alone([&] { picture = get().convert(mosaic, to, at); });
    return as_array(std::move(picture));
  }
  py::array convert_scaled(const array& frame, int format, uint32_t width, uint32_t height) {
    const ppl::extent e = extent_of(frame);
    ppl::buffer copy = packed(frame), picture;
    alone([&] {
      picture =
          get().convert_scaled({copy, e.width, e.height}, static_cast<ppl::format>(format), {width, height});
    });
    return as_array(std::move(picture));
  }
  // The picture, and what was measured on it.
  std::pair<py::array, py::dict> convert_large(const array& frame, int format, int size) {
    const ppl::extent e = extent_of(frame);
    const bool runs =
        frame.strides(1) == 1 && frame.strides(0) >= frame.shape(1) && frame.strides(0) <= INT32_MAX;
    ppl::buffer copy, picture;
    ppl::mosaic mosaic{{}, e.width, e.height, 0};
    if (runs) {
      mosaic.stride = static_cast<uint32_t>(frame.strides(0));
      const size_t bytes = static_cast<size_t>(mosaic.stride) * (e.height - 1) + e.width;
      mosaic.samples = {const_cast<uint8_t*>(frame.data()), bytes};  // which are only read
    } else {
      copy = packed(frame);
      mosaic.samples = copy;
    }
    ppl::measurements m{};
    alone([&] {
      picture =
          get().convert_large(mosaic, static_cast<ppl::format>(format), static_cast<ppl::size>(size), &m);
    });
    const auto words = [](const ppl::rgb& mean) {
      py::array_t<uint32_t> out(3);
      uint32_t* const to = out.mutable_data();
      to[0] = mean.r, to[1] = mean.g, to[2] = mean.b;
      return out;
    };
    return {as_array(std::move(picture)),
            py::dict("whole_frame"_a = words(m.whole_frame), "exposure"_a = words(m.exposure),
                     "exposure_cells"_a = m.exposure_cells, "qualified"_a = words(m.qualified),
                     "qualified_cells"_a = m.qualified_cells)};
  }
  py::array convert_12_bit(const array& frame) {
    const Input in(frame);
    const ppl::extent e = {extent_of(frame).width / 3 * 2, extent_of(frame).height};
    ppl::buffer picture;
    alone([&] { picture = get().convert_12_bit(in.bytes(), e); });
    return as_array(std::move(picture));
  }
  py::array convert_packed(const array& frame, int input, int format) {
    const Input in(frame);
    const ppl::extent e = extent_of(frame);
    ppl::buffer picture;
    alone([&] {
      picture =
          get().convert(static_cast<ppl::packing>(input), in.bytes(), e, static_cast<ppl::format>(format));
    });
    return as_array(std::move(picture));
  }
  py::array deinterlace(const std::optional<array>& earlier, const array& kept, const array& later, int input,
                        int format, uint32_t top, uint32_t bottom) {
    const Input k(kept), l(later);
    std::optional<Input> e;
    if (earlier) e.emplace(*earlier);
    const ppl::extent whole = {extent_of(kept).width, 2 * extent_of(kept).height};
    ppl::buffer picture;
    alone([&] {
      picture =
          get().deinterlace(static_cast<ppl::packing>(input), e ? e->bytes() : std::span<const uint8_t>(),
                            k.bytes(), l.bytes(), whole, static_cast<ppl::format>(format), {top, bottom});
    });
    return as_array(std::move(picture));
  }

  void set(const std::string& key, const std::vector<int32_t>& values) {
    const std::lock_guard hold(busy_);
    for (const tool::Control& c : tool::all_controls)
      if (key == c.key) {
        if (values.size() != c.count || !c.set(get().get(), values.data()))
          throw ppl::error(key + " refuses these values");
        return;
      }
    throw ppl::error("there is no control " + key);
  }
  void set_quality(uint32_t quality) {
    const std::lock_guard hold(busy_);
    get().quality(static_cast<ppl::quality>(quality));
  }
  void collect_statistics(bool on) {
    const std::lock_guard hold(busy_);
    get().statistics(on);
  }
  void lens(uint32_t width, uint32_t height, uint32_t x, uint32_t y, int32_t f1, int32_t shift1, int32_t f2,
            int32_t shift2) {
    const std::lock_guard hold(busy_);
    get().lens_correction({width, height}, {x, y}, f1, shift1, f2, shift2);
  }
  void no_lens() {
    const std::lock_guard hold(busy_);
    get().no_lens_correction();
  }
  void reset() {
    const std::lock_guard hold(busy_);
    get().reset();
  }
  // The tone curve in force, or one of the caller's.
  py::array tone() {
    const std::lock_guard hold(busy_);
    array table(256);
    std::memcpy(table.mutable_data(), ppl_rgb_gamma_table(get().get()), 256);
    return table;
  }
  void set_tone(const array& table) {
    const std::lock_guard hold(busy_);
    if (table.size() != 256) throw ppl::error("a tone curve has 256 entries");
    const py::array contiguous = py::array::ensure(table, py::array::c_style);
    get().tone(std::span<const uint8_t, 256>(static_cast<const uint8_t*>(contiguous.data()), 256));
  }

  uint32_t frames() {
    const std::lock_guard hold(busy_);
    return get().frames();
  }
  py::dict statistics() {
    const std::lock_guard hold(busy_);
    const ppl::context& c = get();
    const auto words = [](const uint32_t* from, std::vector<py::ssize_t> shape) {
      py::array_t<uint32_t> out(shape);
      std::memcpy(out.mutable_data(), from, static_cast<size_t>(out.nbytes()));
      return out;
    };
    ppl_context* const p = c.get();
    return py::dict(
        "whole_frame"_a = words(ppl_rgb_means_whole_frame(p), {3}),
        "all_windows"_a = words(ppl_rgb_means_all_sub_windows(p), {3}),
        "outside"_a = words(ppl_rgb_means_outside_all_sub_windows(p), {3}),
        "windows"_a = words(ppl_rgb_means_sub_windows(p), {6, 8, 3}),
        "centre_4_points"_a = words(ppl_rgb_means_whole_frame_4pts(p), {3}),
        "centre_4"_a = words(ppl_rgb_means_whole_frame_central4(p), {3}),
        "centre_8"_a = words(ppl_rgb_means_whole_frame_central8(p), {3}),
        "centre_16"_a = words(ppl_rgb_means_whole_frame_central16(p), {3}),
        "exposure"_a = words(ppl_qAE_rgb_means_whole_frame(p), {3}), "exposure_cells"_a = c.exposure_cells(),
        "qualified"_a = words(ppl_qual_rgb_means_whole_frame(p), {3}),
        "qualified_cells"_a = c.qualified_cells(), "red_histogram"_a = words(ppl_r_histogram(p), {256}),
        "green_histogram"_a = words(ppl_g_histogram(p), {256}),
        "blue_histogram"_a = words(ppl_b_histogram(p), {256}));
  }

 private:
  ppl::context& get() {
    if (!context_) throw ppl::error("the context is closed");
    return *context_;
  }
  // Frames run without the interpreter's lock, one at a time on a context.
  template <class Work>
  void alone(const Work& work) {
    const py::gil_scoped_release free;
    const std::lock_guard hold(busy_);
    work();
  }

  std::optional<ppl::context> context_;
  std::mutex busy_;
};

// A plan from keyword arguments by the names of its fields.
ppl_plan plan_of(const py::dict& fields) {
  ppl_plan p = {};
  p.input = PPL_FORMAT_YUYV;
  bool has_stride = false;
  for (const auto& [name, value] : fields) {
    const auto key = name.cast<std::string>();
    const auto n = value.cast<int64_t>();
    const auto byte = [&] {
      if (n < 0 || n > 255) throw ppl::error(key + " takes a number from 0 to 255");
      return static_cast<uint8_t>(n);
    };
    const auto word = [&] {
      if (n < 0 || n > UINT32_MAX) throw ppl::error(key + " takes a number from 0 to 4294967295");
      return static_cast<uint32_t>(n);
    };
    const auto sign = [&] {
      if (n < INT32_MIN || n > INT32_MAX) throw ppl::error(key + " takes a number of 32 bits");
      return static_cast<int32_t>(n);
    };
    has_stride |= key == "stride";
    if (key == "call")
      p.call = byte();
    else if (key == "format")
      p.format = byte();
    else if (key == "input")
      p.input = byte();
    else if (key == "process")
      p.process = byte();
    else if (key == "quality")
      p.quality = byte();
    else if (key == "medium_filter")
      p.medium_filter = byte();
    else if (key == "h_mirror")
      p.h_mirror = byte();
    else if (key == "v_mirror")
      p.v_mirror = byte();
    else if (key == "P3_only")
      p.P3_only = byte();
    else if (key == "sized")
      p.sized = byte();
    else if (key == "source_at")
      p.source_at = byte() & 15;
    else if (key == "destination_at")
      p.destination_at = byte() & 15;
    else if (key == "scratch_at")
      p.scratch_at = byte() & 15;
    else if (key == "decimation")
      p.decimation = sign();
    else if (key == "top_black_lines")
      p.top_black_lines = sign();
    else if (key == "bottom_black_lines")
      p.bottom_black_lines = sign();
    else if (key == "width")
      p.width = word();
    else if (key == "height")
      p.height = word();
    else if (key == "stride")
      p.stride = word();
    else if (key == "out_width")
      p.out_width = word();
    else if (key == "out_height")
      p.out_height = word();
    else
      throw ppl::error("a plan has no " + key);
  }
  if (!has_stride) p.stride = p.width;
  return p;
}
py::dict fields_of(const ppl_plan& p) {
  return py::dict("call"_a = p.call, "format"_a = p.format, "input"_a = p.input, "quality"_a = p.quality,
                  "medium_filter"_a = p.medium_filter != 0, "h_mirror"_a = p.h_mirror != 0,
                  "v_mirror"_a = p.v_mirror != 0, "sized"_a = p.sized != 0, "decimation"_a = p.decimation,
                  "top_black_lines"_a = p.top_black_lines, "bottom_black_lines"_a = p.bottom_black_lines,
                  "width"_a = p.width, "height"_a = p.height, "stride"_a = p.stride,
                  "out_width"_a = p.out_width, "out_height"_a = p.out_height);
}
py::dict check(const py::dict& fields) {
  const ppl_plan p = plan_of(fields);
  const ppl_verdict v = ppl_check(&p);
  ppl_plan near = {};
  py::object nearest = py::none();
  if (ppl_nearest(&p, &near)) nearest = fields_of(near);
  return py::dict("whole"_a = v.whole != 0, "reason"_a = v.reason, "sentence"_a = ppl_reason_text(v.reason),
                  "answer"_a = v.answer != 0, "counted"_a = v.counted != 0, "notes"_a = v.notes,
                  "width"_a = v.width, "height"_a = v.height, "source_bytes"_a = v.source_bytes,
                  "destination_bytes"_a = v.destination_bytes, "scratch_bytes"_a = v.scratch_bytes,
                  "nearest"_a = nearest);
}

py::list controls() {
  py::list all;
  for (const tool::Control& c : tool::all_controls) {
    const char* const kind = c.kind == tool::Control::Kind::flag     ? "flag"
                             : c.kind == tool::Control::Kind::number ? "number"
                                                                     : "numbers";
    all.append(py::dict("key"_a = c.key, "kind"_a = kind, "count"_a = c.count, "low"_a = c.low,
                        "high"_a = c.high,
                        "standard"_a = std::vector<int32_t>(c.standard.begin(), c.standard.begin() + c.count),
                        "group"_a = c.group, "what"_a = c.what));
  }
  return all;
}
py::list lens_numbers() {
  py::list all;
  for (const tool::LensNumber& n : tool::lens_numbers)
    all.append(py::dict("key"_a = n.key, "low"_a = n.low, "high"_a = n.high, "standard"_a = n.standard));
  return all;
}

py::array simulate(const array& rgb, int pattern, unsigned bits, double black, std::array<double, 3> gains,
                   double kelvin, double exposure, double shading, std::array<double, 2> centre,
                   double green_imbalance, double noise, double shot_noise, unsigned hot, unsigned dead,
                   uint64_t seed) {
  const py::array contiguous = py::array::ensure(rgb, py::array::c_style);
  tool::Picture picture(static_cast<uint32_t>(rgb.shape(1)), static_cast<uint32_t>(rgb.shape(0)));
  std::memcpy(picture.rgb.data(), contiguous.data(), picture.rgb.size());
  tool::Simulation s;
  s.phase = static_cast<tool::Phase>(pattern);
  s.bits = bits;
  s.black = black;
  s.gains = gains;
  s.kelvin = kelvin;
  s.exposure = exposure;
  s.shading = shading;
  s.centre_x = centre[0];
  s.centre_y = centre[1];
  s.green_imbalance = green_imbalance;
  s.noise = noise;
  s.shot_noise = shot_noise;
  s.hot = hot;
  s.dead = dead;
  s.seed = seed;
  tool::Mosaic m;
  {
    const py::gil_scoped_release free;
    m = tool::simulate(picture, s);
  }
  const std::vector<py::ssize_t> shape = {static_cast<py::ssize_t>(m.height),
                                          static_cast<py::ssize_t>(m.width)};
  if (bits > 8) {
    py::array_t<uint16_t> out(shape);
    std::copy(m.samples.begin(), m.samples.end(), out.mutable_data());
    return out;
  }
  array out(shape);
  std::transform(m.samples.begin(), m.samples.end(), out.mutable_data(),
                 [](uint16_t v) { return static_cast<uint8_t>(v); });
  return out;
}

// ---- What a sensor delivers, and automatic controls

// Rows of a frame, samples side by side; anything else is copied first.
struct Rows {
  py::array keep;
  const uint8_t* data;
  uint32_t stride;
};
Rows rows_of(const py::array& frame) {
  const bool runs = frame.strides(1) == frame.itemsize() &&
                    frame.strides(0) >= frame.shape(1) * frame.itemsize() && frame.strides(0) <= INT32_MAX;
  const py::array kept = runs ? frame : py::array::ensure(frame, py::array::c_style);
  return {kept, static_cast<const uint8_t*>(kept.data()), static_cast<uint32_t>(kept.strides(0))};
}

py::array prepare(const py::array& frame, uint32_t width, int pattern, int layout, uint32_t bits, int to_8,
                  const std::optional<array>& table) {
  const Rows rows = rows_of(frame);
  const ppl_sensor_frame sensor = {width, static_cast<uint32_t>(frame.shape(0)), rows.stride, pattern, layout,
                                   bits};
  int reason = ppl_sensor_frame_reason(&sensor);
  if (!reason && ppl_sensor_row_bytes(&sensor) > static_cast<uint64_t>(frame.shape(1) * frame.itemsize()))
    reason = PPL_PREPARE_STRIDE;
  if (reason) throw ppl::error(ppl_prepare_sentence(reason));
  if (table && static_cast<uint64_t>(table->size()) != uint64_t{1} << ppl_sensor_bits(&sensor))
    throw ppl::error("a table for samples of " + std::to_string(ppl_sensor_bits(&sensor)) + " bits has " +
                     std::to_string(uint64_t{1} << ppl_sensor_bits(&sensor)) + " entries");
  const py::array entries = table ? py::array::ensure(*table, py::array::c_style) : py::array();
  ppl::buffer out(size_t{width} * sensor.height);
  {
    const uint8_t* const by = table ? static_cast<const uint8_t*>(entries.data()) : nullptr;
    const py::gil_scoped_release free;
    reason = ppl_prepare_frame(&sensor, rows.data, table ? int{PPL_TO_8_TABLE} : to_8, by, out.data(), width);
  }
  if (reason) throw ppl::error(ppl_prepare_sentence(reason));
  return as_array(std::move(out))
      .reshape({static_cast<py::ssize_t>(sensor.height), static_cast<py::ssize_t>(width)});
}

using Sites = std::array<uint32_t, 4>;

py::dict as_dict(const ppl_auto_balance& b) {
  return py::dict("gains"_a = py::make_tuple(b.gain[0], b.gain[1], b.gain[2]), "spread"_a = b.spread / 256.0);
}
std::unique_ptr<ppl_auto_sample> sample_of(const Rows& rows, const array& frame, const Sites& black) {
  auto sample = std::make_unique<ppl_auto_sample>();
  ppl_auto_take_frame(sample.get(), rows.data, static_cast<uint32_t>(frame.shape(1)),
                      static_cast<uint32_t>(frame.shape(0)), rows.stride, black[0], black[1], black[2],
                      black[3]);
  return sample;
}

py::dict white_balance(const array& frame, const Sites& black, const std::array<uint32_t, 3>& daylight) {
  const Rows rows = rows_of(frame);
  const auto sample = sample_of(rows, frame, black);
  ppl_auto_curve curve;
  ppl_auto_balance balance;
  ppl_auto_daylight_curve(&curve, daylight[0], daylight[1], daylight[2]);
  if (!ppl_auto_white(&curve, sample.get(), &balance))
    throw ppl::error("the frame does not show its light: too much of it is black or cut");
  return as_dict(balance);
}
py::dict grey_point(const array& frame, const std::array<uint32_t, 4>& region, const Sites& black) {
  const Rows rows = rows_of(frame);
  const auto [x, y, width, height] = region;
  if (x > frame.shape(1) || width > frame.shape(1) - x || y > frame.shape(0) || height > frame.shape(0) - y)
    throw ppl::error("the region lies within the frame: x, y, width, height");
  ppl_auto_balance balance;
  if (!ppl_auto_grey(rows.data, rows.stride, x, y, width, height, black[0], black[1], black[2], black[3],
                     &balance))
    throw ppl::error("the region is too small, too dark or cut: 16 blocks of 4 x 4 samples must be neither");
  return as_dict(balance);
}
py::dict fit_lens(const array& frame, const Sites& black) {
  const Rows rows = rows_of(frame);
  std::vector<uint32_t> scratch(768);
  ppl_auto_lens lens;
  if (!ppl_auto_fit_lens(rows.data, static_cast<uint32_t>(frame.shape(1)),
                         static_cast<uint32_t>(frame.shape(0)), rows.stride, black[0], black[1], black[2],
                         black[3], scratch.data(), &lens))
    throw ppl::error(
        "the frame is not flat: it must show an evenly lit white surface, neither dark nor cut, 128 x 96 "
        "or larger");
  return py::dict("f1"_a = lens.f1, "f1_rshift_count"_a = lens.f1_rshift_count, "f2"_a = lens.f2,
                  "f2_rshift_count"_a = lens.f2_rshift_count,
                  "origin"_a = py::make_tuple(lens.origin_x, lens.origin_y));
}

class Loop {
 public:
  Loop(uint32_t exposure_min, uint32_t exposure_max, uint32_t gain_min, uint32_t gain_max, uint32_t flicker,
       uint32_t delay, const std::array<uint32_t, 3>& daylight)
      : sample_(std::make_unique<ppl_auto_sample>()) {
    ppl_auto_daylight_curve(&curve_, daylight[0], daylight[1], daylight[2]);
    ppl_auto_start(&loop_, exposure_min, exposure_max, gain_min, gain_max);
    loop_.flicker = flicker;
    loop_.delay = delay;
    ppl_auto_split(&loop_);
  }
  std::pair<bool, bool> step(const array& frame, const Sites& black) {
    const Rows rows = rows_of(frame);
    sample_ = sample_of(rows, frame, black);
    const int changed = ppl_auto_step(&loop_, &curve_, sample_.get());
    return {(changed & PPL_AUTO_EXPOSURE_CHANGED) != 0, (changed & PPL_AUTO_BALANCE_CHANGED) != 0};
  }
  uint32_t exposure() const { return loop_.exposure; }
  double gain() const { return loop_.gain / 256.0; }
  py::tuple rgb_gain() const {
    return py::make_tuple(loop_.rgb_gain[0], loop_.rgb_gain[1], loop_.rgb_gain[2]);
  }

 private:
  ppl_auto_loop loop_;
  ppl_auto_curve curve_;
  std::unique_ptr<ppl_auto_sample> sample_;
};

// Where the package's exceptions stand. Installed beside another module ppl, the package goes by another name.
std::string errors_module;

}  // namespace

PYBIND11_MODULE(_ppl, m) {
  m.doc() = "The compiled half of the package ppl: see there.";
  const std::string name = py::cast<std::string>(m.attr("__name__"));
  errors_module = name.substr(0, name.rfind('.')) + "._errors";
  py::register_exception_translator([](std::exception_ptr p) {
    const auto raise = [](const char* what, int reason) {
      const py::object type = py::module_::import(errors_module.c_str()).attr("Error");
      PyErr_SetObject(type.ptr(), type(what, reason).ptr());
    };
    try {
      if (p) std::rethrow_exception(p);
    } catch (const ppl::error& e) {
      raise(e.what(), e.reason());
    } catch (const tool::Failure& e) {
      raise(e.what(), PPL_WHOLE);
    }
  });

  py::class_<Context>(m, "Context")
      .def(py::init<>())
      .def("close", &Context::close, py::call_guard<py::gil_scoped_release>())
      .def_property_readonly("closed", &Context::closed)
      .def("convert", &Context::convert, "frame"_a, "format"_a, "size"_a, "in_place"_a, "out"_a)
      .def("convert_scaled", &Context::convert_scaled, "frame"_a, "format"_a, "width"_a, "height"_a)
      .def("convert_large", &Context::convert_large, "frame"_a, "format"_a, "size"_a)
      .def("convert_12_bit", &Context::convert_12_bit, "frame"_a)
      .def("convert_packed", &Context::convert_packed, "frame"_a, "input"_a, "format"_a)
      .def("deinterlace", &Context::deinterlace, "earlier"_a, "kept"_a, "later"_a, "input"_a, "format"_a,
           "top"_a, "bottom"_a)
      .def("set", &Context::set, "key"_a, "values"_a, py::call_guard<py::gil_scoped_release>())
      .def("set_quality", &Context::set_quality, py::call_guard<py::gil_scoped_release>())
      .def("collect_statistics", &Context::collect_statistics, py::call_guard<py::gil_scoped_release>())
      .def("lens", &Context::lens, py::call_guard<py::gil_scoped_release>())
      .def("no_lens", &Context::no_lens, py::call_guard<py::gil_scoped_release>())
      .def("reset", &Context::reset, py::call_guard<py::gil_scoped_release>())
      .def("tone", &Context::tone)
      .def("set_tone", &Context::set_tone)
      .def("frames", &Context::frames, py::call_guard<py::gil_scoped_release>())
      .def("statistics", &Context::statistics);
  m.def("check", &check);
  m.def("reason_text", &ppl_reason_text);
  m.def("controls", &controls);
  m.def("lens_numbers", &lens_numbers);
  m.def("simulate", &simulate, "rgb"_a, "pattern"_a, "bits"_a, "black"_a, "gains"_a, "kelvin"_a, "exposure"_a,
        "shading"_a, "centre"_a, "green_imbalance"_a, "noise"_a, "shot_noise"_a, "hot"_a, "dead"_a, "seed"_a);
  m.def("prepare", &prepare, "frame"_a, "width"_a, "pattern"_a, "layout"_a, "bits"_a, "to_8"_a, "table"_a);
  m.def("white_balance", &white_balance);
  m.def("grey_point", &grey_point);
  m.def("fit_lens", &fit_lens);
  py::class_<Loop>(m, "Loop")
      .def(py::init<uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t,
                    const std::array<uint32_t, 3>&>())
      .def("step", &Loop::step)
      .def_property_readonly("exposure", &Loop::exposure)
      .def_property_readonly("gain", &Loop::gain)
      .def_property_readonly("rgb_gain", &Loop::rgb_gain);
  m.attr("version") = py::make_tuple(PPL_VERSION_MAJOR, PPL_VERSION_MINOR, PPL_VERSION_PATCH);

  // Names and values of the C enumerations that Python mirrors.
  const auto table = [&m](const char* name, std::initializer_list<std::pair<const char*, int>> rows) {
    py::dict d;
    for (const auto& [key, value] : rows) d[key] = value;
    m.attr(name) = d;
  };
  table(
      "REASONS",
      {
#define PPL_NAME(name) {#name, PPL_REASON_##name},
          PPL_NAME(UNKNOWN_CALL) PPL_NAME(SIZE_REFUSED) PPL_NAME(EMPTY) PPL_NAME(SIZES_NOT_IN_TABLE) PPL_NAME(
              SIZES_DISAGREE) PPL_NAME(OUTPUT_TOO_LARGE) PPL_NAME(SOURCE_MISALIGNED)
              PPL_NAME(DESTINATION_MISALIGNED) PPL_NAME(SCRATCH_MISALIGNED) PPL_NAME(P3_ONLY) PPL_NAME(
                  STRIDE_BELOW_WIDTH) PPL_NAME(QUALITY_ONLY_COUNTS) PPL_NAME(QUALITY_NOT_IN_FORMAT)
                  PPL_NAME(RAW_AT_THIS_SIZE) PPL_NAME(GREY_NOT_DOUBLED) PPL_NAME(QUARTER_SIZE) PPL_NAME(
                      RGB32_NOT_DOUBLED) PPL_NAME(NOT_CONVERTED_TO_RGB) PPL_NAME(ROWS_BETWEEN)
                      PPL_NAME(ONE_MIRROR) PPL_NAME(STRIDE_NOT_WIDTH) PPL_NAME(BLACK_LINES) PPL_NAME(WIDTH_16)
                          PPL_NAME(WIDTH_32) PPL_NAME(WIDTH_64) PPL_NAME(HEIGHT_2) PPL_NAME(HEIGHT_4)
                              PPL_NAME(FORMAT_NOT_SCALED) PPL_NAME(SCALED_WIDTH_32) PPL_NAME(SCALED_HEIGHT_2)
                                  PPL_NAME(SCALED_DOWN) PPL_NAME(SCALED_TOO_LARGE)
                                      PPL_NAME(NO_SUCH_CONVERSION) PPL_NAME(NO_V_PLANE) PPL_NAME(ONLY_COUNTED)
                                          PPL_NAME(DECIMATION_NOT_CONVERTED) PPL_NAME(UYVY_NOT_DOUBLED)
                                              PPL_NAME(LINES_NOT_DRAWN) PPL_NAME(LINES_LOST)
                                                  PPL_NAME(LINES_SHIFT_RGB24) PPL_NAME(LINES_ODD)
                                                      PPL_NAME(ROWS_ODD) PPL_NAME(LEFT_AT_FULL_SIZE)
#undef PPL_NAME
      });
}
