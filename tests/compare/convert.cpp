// The conversions against the plain reference, through the exported names, at every level the processor has.
//
// A sequence is one instance per level and the calls that change its geometry and convert frames. Its seed repeats it:
//   compare_convert FAMILY --seed N
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "compare/families.h"
#include "reference/convert.h"
#include "support/convert_exports.h"
#include "support/guarded.h"
#include "support/level.h"
#include "support/random.h"

namespace {

#if defined(__SANITIZE_ADDRESS__) || !defined(__OPTIMIZE__) || defined(PPL_TEST_EMULATED)
constexpr uint64_t kSlow = 8;  // so many times fewer sequences
#else
constexpr uint64_t kSlow = 1;
#endif

struct size_pair {
  uint32_t in_width, in_height, out_width, out_height;
};

constexpr size_pair kSizePairs[] = {
    {320, 240, 160, 120}, {320, 240, 320, 240},     {480, 480, 480, 480},  {480, 480, 480, 576},
    {480, 576, 480, 576}, {640, 480, 160, 120},     {640, 480, 320, 240},  {640, 480, 352, 240},
    {640, 480, 352, 288}, {640, 480, 640, 480},     {640, 480, 1280, 960}, {704, 480, 176, 120},
    {704, 480, 176, 144}, {704, 576, 176, 144},     {704, 576, 176, 150},  {704, 480, 352, 240},
    {704, 480, 352, 288}, {704, 576, 352, 288},     {704, 576, 352, 293},  {704, 480, 704, 480},
    {704, 480, 704, 576}, {704, 480, 704, 481},     {704, 576, 704, 576},  {704, 576, 704, 579},
    {704, 480, 704, 960}, {704, 480, 352, 500},     {720, 480, 720, 480},  {720, 480, 720, 576},
    {720, 576, 720, 576}, {1280, 1024, 1280, 1024},
};
constexpr size_pair kRefusedPairs[] = {{320, 240, 160, 121}, {704, 480, 704, 479}, {640, 480, 320, 241},
                                       {96, 64, 96, 66},     {480, 480, 480, 500}, {2048, 16, 2048, 16}};

using dice = support::random_source;

// What a call must leave as it is.
struct statistics {
  std::vector<uint32_t> words;
  explicit statistics(const ppl_context* c) {
    const auto take = [this](const uint32_t* from, int n) { words.insert(words.end(), from, from + n); };
    take(ppl_rgb_means_sub_windows(c), 144);
    take(ppl_rgb_means_outside_all_sub_windows(c), 3);
    take(ppl_rgb_means_all_sub_windows(c), 3);
    take(ppl_rgb_means_whole_frame(c), 3);
    take(ppl_qAE_rgb_means_whole_frame(c), 3);
    take(ppl_qual_rgb_means_whole_frame(c), 3);
    take(ppl_r_histogram(c), 256);
    take(ppl_g_histogram(c), 256);
    take(ppl_b_histogram(c), 256);
    words.push_back(ppl_n_qAE_2x2_whole_frame(c));
    words.push_back(ppl_n_qual_2x2_whole_frame(c));
  }
};

// Noise, flat with a little noise, extremes only, noise with many extremes.
void fill(dice& d, uint8_t* to, size_t n, int kind) {
  uint64_t x = uint64_t{d.bits()} << 32 | d.bits() | 1;
  for (size_t k = 0; k < n; k += 8) {
    x ^= x << 13;
    x ^= x >> 7;
    x ^= x << 17;
    uint64_t bytes = x;
    constexpr uint64_t each = 0x0101010101010101u;
    if (kind == 1) bytes = 120 * each + (x & 15 * each);
    if (kind == 2) bytes = (x & each) * 255;
    if (kind == 3) bytes = (x | ((x >> 5 & x >> 6 & each) * 255)) & ~((x >> 3 & x >> 4 & each) * 255);
    std::memcpy(to + k, &bytes, std::min(n - k, sizeof bytes));
  }
}

// A later field: the earlier one with more or less motion in it.
void move(dice& d, const uint8_t* from, uint8_t* to, size_t n, int kind) {
  fill(d, to, n, kind == 3 ? 2 : 0);
  if (kind == 0) return;  // unrelated
  const int most = kind == 1 ? 7 : 60;
  for (size_t k = 0; k < n; ++k) {
    const bool still = k / 64 % 3 != 0 && kind != 2;
    to[k] = kind == 3 && !still ? to[k] : static_cast<uint8_t>(from[k] + (still ? 0 : to[k] % most));
  }
}

class sequence {
 public:
  explicit sequence(uint64_t number) : number_(number), dice_(number) {}
  ~sequence() {
    for (const instance& i : instances_) ppl_free(i.context);
  }

  // An instance per level, with a frame behind it that left statistics.
  void open() {
    for (int level = 0; level < ppl_test_levels(); ++level) {
      ppl_test_force_level(level);
      ppl_context* c = ppl_init();
      if (!c) return check(false, "no instance to be had");
      instances_.push_back({c, level, 0, {}});
    }
    bayer_frame(96, 64, 96);
    for (instance& i : instances_) {
      i.frames_before = ppl_n_frame(i.context) - state_.n_frame;
      i.kept = statistics(i.context).words;
      check(std::count(i.kept.begin(), i.kept.end(), 0u) != static_cast<long>(i.kept.size()),
            "the frame left no statistics");
    }
  }

  void run(int steps) {
    open();
    for (int k = 0; k < steps && !failed_; ++k) {
      change();
      if (!dice_.one_in(8)) convert_any();
    }
  }

  // One conversion of one pair of the table, from wherever the instance stands.
  void convert_pair(const ref::conversion& c, const size_pair& sizes) {
    random_controls();
    convert(c, sizes, {0, 0, 0, 0});
  }

  static int ran(const std::string& conversion, int32_t decimation) { return ran_[{conversion, decimation}]; }

  bool failed() const { return failed_; }
  // The calls and what they did wrong; nothing where all was well.
  const std::vector<std::string>& log() const { return log_; }

 private:
  struct instance {
    ppl_context* context;
    int level;
    uint32_t frames_before;
    std::vector<uint32_t> kept;  // statistics of the frame in open()
  };
  struct offsets {
    int earlier, kept, later, output;
  };

  void check(bool good, const std::string& what) {
    if (good) return;
    failed_ = true;
    say() << "*** " << what;
  }
  // A line of the log.
  struct line {
    std::vector<std::string>& log;
    std::ostringstream text;
    template <class T>
    line& operator<<(const T& part) {
      text << part;
      return *this;
    }
    explicit line(std::vector<std::string>& to) : log(to) {}
    ~line() { log.push_back(text.str()); }
  };
  line say() { return line(log_); }

  void random_controls() {
    const bool h = dice_.one_in(3), v = dice_.one_in(3);
    const int threshold = dice_.one_in(4) ? dice_.between(0, 765) : dice_.between(0, 120);
    say() << "mirrors " << h << v << ", threshold " << threshold;
    state_.h_mirror = h;
    state_.v_mirror = v;
    state_.threshold = threshold;
    for (const instance& i : instances_) {
      ppl_set_h_mirror(i.context, h ? static_cast<uint8_t>(dice_.between(1, 255)) : 0);
      ppl_set_v_mirror(i.context, v);
      check(ppl_set_intl_3T_threshold(i.context, static_cast<uint32_t>(threshold)) == 1, "threshold refused");
      if (number_ % 4 == 0)  // the old one stays
        check(ppl_set_intl_3T_threshold(i.context, 766) == 0, "threshold 766 accepted");
    }
  }

  int32_t odd_count() {
    constexpr int32_t absurd[] = {INT32_MAX, INT32_MAX - 40, INT32_MIN, INT32_MIN + 41,
                                  1 << 30,   -(1 << 30),     1 << 22};
    if (dice_.one_in(2)) return 0;
    return dice_.one_in(12) ? dice_.pick(absurd) : dice_.between(-5, 24);
  }
  uint32_t odd_width() {
    return static_cast<uint32_t>(16 * (dice_.one_in(4) ? dice_.between(1, 3) : dice_.between(1, 24)));
  }
  uint32_t odd_height() {
    return static_cast<uint32_t>(2 * (dice_.one_in(4) ? dice_.between(1, 4) : dice_.between(1, 40)));
  }

  // One or two calls that change geometry or controls.
  void change() {
    if (dice_.one_in(2)) random_controls();
    if (dice_.one_in(12)) {
      state_.P3_only = true;
      say() << "P3_only";
    } else {
      state_.P3_only = false;
    }
    for (const instance& i : instances_) ppl_set_P3_only(i.context, state_.P3_only);
    for (int calls = dice_.between(0, 2); calls > 0; --calls) change_geometry();
  }

  void change_geometry() {
    switch (dice_.between(0, 9)) {
      case 0:
      case 1:
      case 2: {
        uint32_t width = odd_width(), height = odd_height();
        if (dice_.one_in(12)) width = static_cast<uint32_t>(dice_.between(1, 400));
        if (dice_.one_in(12)) height = static_cast<uint32_t>(dice_.between(1, 60));
        if (dice_.one_in(20)) width = static_cast<uint32_t>(dice_.between(1950, 2060)), height = 8;
        const uint32_t stride = dice_.one_in(3) ? static_cast<uint32_t>(dice_.between(0, 2060)) : width;
        say() << "new_frame_size " << width << ' ' << height << ' ' << stride;
        const bool accepted = ref::new_frame_size(state_, width, height, stride);
        for (const instance& i : instances_)
          check(ppl_new_frame_size(i.context, width, height, stride) == accepted, "new_frame_size");
        break;
      }
      case 3:
      case 4:
      case 5: {
        const int32_t d = dice_.one_in(10) ? dice_.between(-3, 3) : dice_.between(-1, 2);
        const int32_t top = odd_count(), bottom = odd_count();
        say() << "set_decimation " << d << ' ' << top << ' ' << bottom;
        const bool accepted = ref::set_decimation(state_, d, top, bottom);
        for (const instance& i : instances_)
          check(ppl_set_decimation(i.context, d, top, bottom) == accepted, "set_decimation");
        break;
      }
      case 6: {
        say() << "reset_decimation";
        ref::reset_decimation(state_);
        for (const instance& i : instances_) ppl_reset_decimation(i.context);
        break;
      }
      case 7: {
        const size_pair& p = dice_.one_in(8) ? dice_.pick(kSizePairs) : dice_.pick(kRefusedPairs);
        const bool validate = !dice_.one_in(3);
        say() << "new_frame_sizes " << p.in_width << ' ' << p.in_height << ' ' << p.out_width << ' '
              << p.out_height << ' ' << validate;
        const bool accepted =
            ref::new_frame_sizes(state_, p.in_width, p.in_height, p.out_width, p.out_height, validate);
        for (const instance& i : instances_)
          check(ppl_new_frame_sizes(i.context, p.in_width, p.in_height, p.out_width, p.out_height,
                                    validate) == accepted,
                "new_frame_sizes");
        break;
      }
      default:
        break;
    }
    check_getters();
  }

  // A frame of the other family: it sets the size, and it leaves statistics. It overwrites its source.
  void bayer_frame(uint32_t width, uint32_t height, uint32_t stride) {
    say() << "mosaic frame " << width << ' ' << height;
    const size_t n = size_t{stride} * height;
    guarded source(n), destination(4 * n);
    check(ref::new_frame_size(state_, width, height, stride), "the size of the mosaic frame");
    ++state_.n_frame;
    for (const instance& i : instances_)
      check(ppl_process_blrtoi420(i.context, source.begin(), destination.begin(), width, height, stride) == 1,
            "mosaic frame");
  }

  void convert_any() {
    const ref::conversion& c = ref::kConversions[dice_.bits() % ref::kConversions.size()];
    size_pair sizes = {static_cast<uint32_t>(state_.frame_width), static_cast<uint32_t>(state_.frame_height),
                       static_cast<uint32_t>(state_.out_width), static_cast<uint32_t>(state_.out_height)};
    if (dice_.one_in(6)) sizes = dice_.one_in(5) ? dice_.pick(kSizePairs) : dice_.pick(kRefusedPairs);
    offsets at = {0, 0, 0, 0};
    if (dice_.one_in(6)) {
      constexpr int offset[] = {0, 8, 8, 24, 4, 12, 1};
      at = {dice_.pick(offset), dice_.pick(offset), dice_.pick(offset), dice_.pick(offset)};
    } else if (dice_.one_in(2)) {
      constexpr int offset[] = {0, 16, 32, 48};
      at = {dice_.pick(offset), dice_.pick(offset), dice_.pick(offset), dice_.pick(offset)};
    }
    convert(c, sizes, at);
  }

  void convert(const ref::conversion& c, const size_pair& sizes, const offsets& at) {
    say() << c.name << ' ' << sizes.in_width << 'x' << sizes.in_height << " to " << sizes.out_width << 'x'
          << sizes.out_height << " at " << at.earlier << ' ' << at.kept << ' ' << at.later << ' '
          << at.output;
    // Alignment and sizes alone tell how far the call comes and what it may touch.
    ref::convert_call call = {
        address(at.earlier), address(at.kept), address(at.later), 64u + static_cast<uintptr_t>(at.output),
        sizes.in_width,      sizes.in_height,  sizes.out_width,   sizes.out_height};
    const ref::foresight f = ref::foresee(state_, c, call);
    // What no caller hands over.
    if (f.room > (int64_t{1} << 23)) return;

    const size_t picture_bytes = static_cast<size_t>(f.room);
    size_t source_bytes = 0;
    const bool fills = c.output == ref::target::rgb24 || c.output == ref::target::rgb32;
    if (f.reached == ref::reach::fall_back && !fills) {
      source_bytes = sizes.out_width * sizes.out_height;  // in 32 bits
    } else if (f.reached == ref::reach::runs) {
      const auto pixels =
          static_cast<size_t>(f.after.frame_width) * static_cast<size_t>(f.after.frame_height);
      source_bytes = c.takes_fields()                  ? pixels
                     : c.kind == ref::work::twelve_bit ? pixels * 3 / 2
                                                       : pixels * 2;
    }

    const bool at_end = !dice_.one_in(3);
    const size_t arena = guarded::room_for(source_bytes);
    guarded earlier(arena), kept(arena), later(arena);
    uint8_t* e = earlier.place(source_bytes, static_cast<size_t>(at.earlier), at_end);
    uint8_t* k = kept.place(source_bytes, static_cast<size_t>(at.kept), at_end);
    uint8_t* l = later.place(source_bytes, static_cast<size_t>(at.later), at_end);
    const int content = dice_.between(0, 3);
    fill(dice_, e, source_bytes, content);
    fill(dice_, k, source_bytes, dice_.between(0, 3));
    move(dice_, e, l, source_bytes, dice_.between(0, 4));
    const std::vector<uint8_t> e_before(e, e + source_bytes), k_before(k, k + source_bytes),
        l_before(l, l + source_bytes);

    guarded output(guarded::room_for(picture_bytes + 256));
    uint8_t* o = output.place(picture_bytes, static_cast<size_t>(at.output), at_end);
    fill(dice_, output.begin(), static_cast<size_t>(output.end() - output.begin()), 0);
    const std::vector<uint8_t> o_before(output.begin(), output.end());

    // Null passes every test of alignment.
    const uint8_t *pass_e = e, *pass_k = k, *pass_l = l;
    uint8_t* pass_o = o;
    if (dice_.one_in(4)) {
      if (at.earlier % 16 == 0 && dice_.one_in(2)) pass_e = nullptr;
      if (at.later % 16 == 0 && dice_.one_in(2)) pass_l = nullptr;
      if (at.kept % 16 == 0 && dice_.one_in(4)) pass_k = nullptr;
      if (at.output % 16 == 0 && dice_.one_in(4)) pass_o = nullptr;
      say() << "  null:" << (pass_e ? "" : " earlier") << (pass_k ? "" : " kept") << (pass_l ? "" : " later")
            << (pass_o ? "" : " output");
    }

    ref::picture wanted({o, o + picture_bytes});
    call = {pass_e,         pass_k,          pass_l,          reinterpret_cast<uintptr_t>(pass_o),
            sizes.in_width, sizes.in_height, sizes.out_width, sizes.out_height};
    const ref::converted done = ref::convert(state_, c, call, wanted);
    const convert_export* library = find_export(c.name);
    if (!library) return check(false, std::string("not exported: ") + c.name);

    // What the whole memory around the destination must hold.
    std::vector<uint8_t> expected = o_before;
    const auto start = static_cast<size_t>(o - output.begin());
    std::copy(wanted.bytes.begin(), wanted.bytes.end(), expected.begin() + static_cast<long>(start));
    if (f.reached == ref::reach::runs) ++ran_[{c.name, state_.decimation}];
    if (done.content != ref::promise::nothing_inside && expected != o_before) ++compare::frames_compared;

    for (const instance& i : instances_) {
      std::memcpy(output.begin(), o_before.data(), o_before.size());
      const uint8_t result = (*library)(i.context, pass_e, pass_k, pass_l, pass_o, sizes.in_width,
                                        sizes.in_height, sizes.out_width, sizes.out_height);
      check(result == done.result, "the answer of " + where(i, c));
      if (done.content == ref::promise::nothing_inside)
        std::memcpy(expected.data() + start, o, picture_bytes);
      if (std::memcmp(output.begin(), expected.data(), expected.size()) != 0) {
        const auto [ours, theirs] = std::mismatch(expected.begin(), expected.end(), output.begin());
        check(false, "byte " + std::to_string(theirs - o) + " of " + std::to_string(picture_bytes) + " is " +
                         std::to_string(*theirs) + ", not " + std::to_string(*ours) + ", " + where(i, c));
      }
      check(std::equal(e_before.begin(), e_before.end(), e), "earlier field written by " + where(i, c));
      check(std::equal(k_before.begin(), k_before.end(), k), "kept field written by " + where(i, c));
      check(std::equal(l_before.begin(), l_before.end(), l), "later field written by " + where(i, c));
      check(statistics(i.context).words == i.kept, "statistics changed by " + where(i, c));
    }
    check_getters();
  }

  void check_getters() {
    for (const instance& i : instances_) {
      check(ppl_n_frame(i.context) - i.frames_before == state_.n_frame, "n_frame");
      check(ppl_decimation(i.context) == state_.decimation, "decimation");
      check(ppl_decimation_top_black_lines(i.context) == state_.top_black_lines, "top lines");
      check(ppl_decimation_bottom_black_lines(i.context) == state_.bottom_black_lines, "bottom lines");
    }
  }

  std::string where(const instance& i, const ref::conversion& c) const {
    std::ostringstream out;
    out << c.name << " at level " << i.level << ": frame " << state_.frame_width << 'x' << state_.frame_height
        << ", picture " << state_.out_width << 'x' << state_.out_height << ", decimation "
        << state_.decimation << ", black lines " << state_.top_black_lines << " + "
        << state_.bottom_black_lines << ", mirrors " << state_.h_mirror << state_.v_mirror << ", threshold "
        << state_.threshold;
    return out.str();
  }

  static const uint8_t* address(int offset) {
    return reinterpret_cast<const uint8_t*>(uintptr_t{64} + static_cast<uintptr_t>(offset));
  }

  static std::map<std::pair<std::string, int32_t>, int> ran_;  // conversions that ran, by decimation

  uint64_t number_;
  dice dice_;
  ref::convert_state state_;
  std::vector<instance> instances_;
  std::vector<std::string> log_;
  bool failed_ = false;
};

std::map<std::pair<std::string, int32_t>, int> sequence::ran_;

std::vector<std::string> log_of(const sequence& s) {
  return s.failed() ? s.log() : std::vector<std::string>();
}

// Both lists name the same conversions, and take the same arguments.
std::vector<std::string> compare_exports(uint64_t) {
  std::vector<std::string> missing;
  if (std::size(kConvertExports) != ref::kConversions.size()) missing.push_back("the lists differ in length");
  for (const ref::conversion& c : ref::kConversions) {
    const convert_export* e = find_export(c.name);
    if (!e || (e->fields != nullptr) != c.takes_fields()) missing.push_back(c.name);
  }
  return missing;
}

// Sequences of odd geometry: any sizes, lost and negative black lines, every alignment.
std::vector<std::string> random_sequence(uint64_t seed) {
  sequence s(seed);
  s.run(24);
  return log_of(s);
}
// The sequences are worth nothing where they don't reach.
std::vector<std::string> unreached() {
  std::vector<std::string> missed;
  for (const ref::conversion& c : ref::kConversions)
    for (int32_t d = -1; d <= 2; ++d)
      if (sequence::ran(c.name, d) < 12)
        missed.push_back(std::string(c.name) + " at decimation " + std::to_string(d) + " ran " +
                         std::to_string(sequence::ran(c.name, d)) + " times");
  return missed;
}

// Every conversion of every size pair, a quarter of them a case, in an order that leaves each pair's geometry to
// another's.
std::vector<std::string> size_pairs(uint64_t seed) {
  const size_t share = static_cast<size_t>((seed - 1) % 4);
  std::vector<std::pair<const ref::conversion*, const size_pair*>> todo;
  for (const ref::conversion& c : ref::kConversions)
    for (const size_pair& p : kSizePairs) todo.emplace_back(&c, &p);
  std::mt19937_64 order((seed - 1) / 4);
  std::shuffle(todo.begin(), todo.end(), order);
  sequence s(seed);
  s.open();
  for (size_t k = share * kSlow; k < todo.size() && !s.failed(); k += 4 * kSlow)
    s.convert_pair(*todo[k].first, *todo[k].second);
  return log_of(s);
}

}  // namespace

int main(int argc, char** argv) {
  return compare::run("compare_convert",
                      {{"exports", 1, compare_exports},
                       {"sequences", int(500 / kSlow), random_sequence,
                        kSlow == 1 ? unreached : std::function<std::vector<std::string>()>()},
                       {"size_pairs", 4, size_pairs}},
                      argc, argv);
}
