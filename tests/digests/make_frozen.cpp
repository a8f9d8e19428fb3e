// Writes a file of frozen digests (cases.h), made from the plain reference:
//
//   digests_make FILE [--seed N] [--share S]
//
// FILE "-" is standard output. The file kept here is that of seed 1, whole. Any other seed gives a file of other cases,
// and a share a shorter one: with the program `digests` on the other end that is a random comparison of the plain
// reference with the library of any target, the reference running here.
#include <cstdlib>
#include <cstring>
#include <memory>

#include "digests/cases.h"
#include "reference/convert.h"
#include "support/slots.h"

namespace {

using cases::digest;
using ref::format;

struct reference_side : slots::reference_slot {
  ref::convert_state conversions;
  std::vector<uint16_t> lens = std::vector<uint16_t>((1 << 19) + 8);
  std::vector<uint8_t> tables = std::vector<uint8_t>(2 * 65 * 256);

  reference_side() = default;
  ~reference_side() { ref::shared_tables() = ref::built_in_tables(); }

  uint16_t* lens_memory() { return lens.data(); }
  uint8_t* gamma_memory() { return tables.data(); }
  void replace_gamma_tables(const uint8_t* full, const uint8_t* studio) {
    for (size_t row = 0; row < 65; ++row) {
      std::memcpy(ref::shared_tables().gamma[row].data(), full + 256 * row, 256);
      std::memcpy(ref::shared_tables().gamma_16_235[row].data(), studio + 256 * row, 256);
    }
  }
  bool left_open(format kind) { return !ref::open_bytes().empty() || ref::picture_is_open(*this, kind); }
  void figures(digest& to) {
    for (const slots::figure& f : slots::statistics(*this))
      for (uint32_t word : f.words) to.word(word);
    for (const slots::figure& f : slots::read_back(*this))
      for (uint32_t word : f.words) to.word(word);
  }

  void conversion_controls(bool h, bool v, uint32_t threshold) {
    conversions.h_mirror = h;
    conversions.v_mirror = v;
    conversions.threshold = static_cast<int>(threshold);
  }
  void conversion_size(uint32_t width, uint32_t height) {
    ref::new_frame_size(conversions, width, height, width);
  }
  void conversion_decimation(int32_t d, int32_t top, int32_t bottom) {
    ref::set_decimation(conversions, d, top, bottom);
  }
  bool convert(const char* name, const uint8_t* earlier, const uint8_t* kept, const uint8_t* later,
               uint8_t* output, uint32_t in_width, uint32_t in_height, uint32_t to_width, uint32_t to_height,
               int64_t size, bool* open) {
    ref::picture picture(output ? std::vector<uint8_t>(output, output + size)
                                : std::vector<uint8_t>(static_cast<size_t>(size)));
    const ref::conversion* c = ref::find_conversion(name);
    const ref::convert_call call = {earlier,  kept,      later,    reinterpret_cast<uintptr_t>(output),
                                    in_width, in_height, to_width, to_height};
    const int64_t room = ref::foresee(conversions, *c, call).room;
    if (room > size) {
      std::fprintf(stderr, "%s wants %lld bytes of a destination of %lld\n", name,
                   static_cast<long long>(room), static_cast<long long>(size));
      std::exit(2);
    }
    const ref::converted done = ref::convert(conversions, *c, call, picture);
    if (output) std::memcpy(output, picture.bytes.data(), static_cast<size_t>(size));
    *open = done.content == ref::promise::nothing_inside;
    return done.result;
  }
  void conversion_figures(digest& to) {
    to.word(conversions.n_frame);
    to.word(static_cast<uint32_t>(conversions.decimation));
    to.word(static_cast<uint32_t>(conversions.top_black_lines));
    to.word(static_cast<uint32_t>(conversions.bottom_black_lines));
  }
};

void print(FILE* file, const digest& d) {
  std::fprintf(file, " %016llx", static_cast<unsigned long long>(d.value));
}

}  // namespace

int main(int argc, char** argv) {
  const char* path = nullptr;
  uint32_t seed = 1;
  double share = 1;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--seed") == 0 && i + 1 < argc) {
      seed = static_cast<uint32_t>(std::strtoul(argv[++i], nullptr, 10));
    } else if (std::strcmp(argv[i], "--share") == 0 && i + 1 < argc) {
      share = std::atof(argv[++i]);
    } else if (argv[i][0] != '-' || !argv[i][1]) {
      path = argv[i];
    } else {
      path = nullptr;
      break;
    }
  }
  if (!path || seed == 0) {
    std::fprintf(stderr, "usage: digests_make FILE [--seed N] [--share S], with a seed above 0\n");
    return 2;
  }
  FILE* file = std::strcmp(path, "-") == 0 ? stdout : std::fopen(path, "w");
  if (!file) {
    std::fprintf(stderr, "digests_make: can't write %s\n", path);
    return 2;
  }
  std::fprintf(
      file,
      "# Digests of the cases of tests/digests/cases.h, made from the plain reference by digests_make.\n"
      "# family, number, digests of answers, pictures (- where no rule settles every byte), sources, "
      "figures\n"
      "seed %u\n",
      seed);
  for (int family = 0; family < cases::kFamilyCount; ++family) {
    const uint32_t count = cases::kFamilies[family].cases;
    const uint32_t step = share < 1 && share > 0 ? static_cast<uint32_t>(1 / share) : 1;
    for (uint32_t number = 0; number < count; number += step) {
      const auto side = std::make_unique<reference_side>();
      cases::outcome out;
      cases::run(*side, family, number, seed, out);
      std::fprintf(file, "%s %u", cases::kFamilies[family].name, number);
      print(file, out.answers);
      if (out.open) {
        std::fprintf(file, " -");
      } else {
        print(file, out.pictures);
      }
      print(file, out.sources);
      print(file, out.figures);
      std::fprintf(file, "\n");
    }
  }
  return std::fclose(file) == 0 ? 0 : 1;
}
