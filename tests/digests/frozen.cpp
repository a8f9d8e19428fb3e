// Runs the cases of a file of frozen digests (cases.h) on the library it is linked with:
//
//   digests FILE [--level N] [--only FAMILY] [--case NUMBER]
//
// Without --level every level that this processor has is run, one after the other. FILE "-" is standard input. --case
// prints the calls of that case. The last line is "N passed, M failed"; the status is 0 if nothing failed.
//
// Beside the exported functions it needs three that libraries for tests have: ppl_test_levels(), ppl_test_force_level()
// (support/level.h) and ppl_clear_pool(), which gives back the slots as the load of the library leaves them.
#include "digests/cases.h"
#include "ppl.h"
#include "support/convert_exports.h"
#include "support/level.h"
#include "support/library_figures.h"
#include "support/library_slot.h"

extern "C" void ppl_clear_pool();

namespace {

using cases::digest;
using ref::format;

constexpr uint32_t kTables = 65 * 256;
uint8_t built_in_tables[2 * kTables], other_tables[2 * kTables];
alignas(64) uint16_t lens_table[(1 << 19) + 8];

struct library_side : slots::library_slot {
  uint16_t* lens_memory() { return lens_table; }
  uint8_t* gamma_memory() { return other_tables; }
  void replace_gamma_tables(const uint8_t* full, const uint8_t* studio) {
    ppl_copy_gamma_tables65x256(context, full);
    ppl_copy_gamma_tables65x256_16_235(context, studio);
  }
  bool left_open(format) { return false; }
  void figures(digest& to) {
    const auto take = [&](const char*, const uint32_t* words, uint32_t count) {
      for (uint32_t i = 0; i < count; ++i) to.word(words[i]);
    };
    slots::library_statistics(context, take);
    slots::library_read_back(context, take);
  }

  void conversion_controls(bool h, bool v, uint32_t threshold) {
    ppl_set_h_mirror(context, h);
    ppl_set_v_mirror(context, v);
    ppl_set_intl_3T_threshold(context, threshold);
  }
  void conversion_size(uint32_t width, uint32_t height) { ppl_new_frame_size(context, width, height, width); }
  void conversion_decimation(int32_t d, int32_t top, int32_t bottom) {
    ppl_set_decimation(context, d, top, bottom);
  }
  bool convert(const char* name, const uint8_t* earlier, const uint8_t* kept, const uint8_t* later,
               uint8_t* output, uint32_t in_width, uint32_t in_height, uint32_t out_width,
               uint32_t out_height, int64_t, bool*) {
    return (*find_export(name))(context, earlier, kept, later, output, in_width, in_height, out_width,
                                out_height) != 0;
  }
  void conversion_figures(digest& to) {
    to.word(ppl_n_frame(context));
    to.word(static_cast<uint32_t>(ppl_decimation(context)));
    to.word(static_cast<uint32_t>(ppl_decimation_top_black_lines(context)));
    to.word(static_cast<uint32_t>(ppl_decimation_bottom_black_lines(context)));
  }
};

// A case on a slot that was never used, and the gamma tables that the library came with.
void run(int family, uint32_t number, uint32_t seed, cases::outcome& out) {
  ppl_clear_pool();
  library_side side;
  side.context = ppl_init();
  if (!side.context) {
    printf("no context to be had\n");
    exit(2);
  }
  side.replace_gamma_tables(built_in_tables, built_in_tables + kTables);
  cases::run(side, family, number, seed, out);
  side.replace_gamma_tables(built_in_tables, built_in_tables + kTables);
  ppl_free(side.context);
}

bool hex_differs(const char* text, const digest& d) {
  char mine[17];
  snprintf(mine, sizeof mine, "%08x%08x", static_cast<unsigned>(d.value >> 32),
           static_cast<unsigned>(d.value));
  return strcmp(text, mine) != 0;
}

int usage() {
  fprintf(stderr, "usage: digests FILE [--level N] [--only FAMILY] [--case NUMBER]\n");
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  const char *path = nullptr, *only = nullptr;
  int only_level = -1;
  long only_case = -1;
  for (int i = 1; i < argc; ++i) {
    if (strcmp(argv[i], "--level") == 0 && i + 1 < argc) {
      only_level = atoi(argv[++i]);
    } else if (strcmp(argv[i], "--only") == 0 && i + 1 < argc) {
      only = argv[++i];
    } else if (strcmp(argv[i], "--case") == 0 && i + 1 < argc) {
      only_case = atol(argv[++i]);
    } else if (argv[i][0] != '-' || !argv[i][1]) {
      path = argv[i];
    } else {
      return usage();
    }
  }
  if (!path) return usage();
  if (only_level >= ppl_test_levels()) {
    fprintf(stderr, "digests: level %d is not to be had; this processor runs 0 to %d\n", only_level,
            ppl_test_levels() - 1);
    return 2;
  }
  FILE* file = strcmp(path, "-") == 0 ? stdin : fopen(path, "r");
  if (!file) {
    fprintf(stderr, "digests: can't read %s\n", path);
    return 2;
  }
  ppl_context* context = ppl_init();
  ppl_get_gamma_tables65x256(context, built_in_tables);
  ppl_get_gamma_tables65x256_16_235(context, built_in_tables + kTables);
  ppl_free(context);

  // "seed N", then a line for each case: family, number, digests of answers, pictures, sources and figures.
  uint32_t seed = 0;
  long passed = 0, failed = 0, line_number = 0;
  char line[200];
  while (fgets(line, sizeof line, file)) {
    ++line_number;
    if (line[0] == '#' || line[0] == '\n') continue;
    char name[32], text[4][20];
    unsigned number;
    if (sscanf(line, "seed %u", &number) == 1) {
      seed = number;
      continue;
    }
    int family = -1;
    if (sscanf(line, "%31s %u %19s %19s %19s %19s", name, &number, text[0], text[1], text[2], text[3]) == 6)
      for (int f = 0; f < cases::kFamilyCount; ++f)
        if (strcmp(name, cases::kFamilies[f].name) == 0) family = f;
    if (family < 0 || seed == 0) {
      fprintf(stderr, "digests: line %ld of %s is no case: %s", line_number, path, line);
      return 2;
    }
    if (only && strcmp(only, name) != 0) continue;
    if (only_case >= 0 && static_cast<long>(number) != only_case) continue;
    for (int level = 0; level < ppl_test_levels(); ++level) {
      if (only_level >= 0 && level != only_level) continue;
      ppl_test_force_level(level);
      cases::tracing = only_case >= 0 && (level == 0 || level == only_level);
      cases::outcome out;
      run(family, number, seed, out);
      const bool open = strcmp(text[1], "-") == 0;
      const bool answers = hex_differs(text[0], out.answers),
                 pictures = !open && hex_differs(text[1], out.pictures),
                 sources = hex_differs(text[2], out.sources), figures = hex_differs(text[3], out.figures);
      if (!answers && !pictures && !sources && !figures) {
        ++passed;
        continue;
      }
      ++failed;
      if (failed <= 20)
        printf("%s %u at level %d:%s%s%s%s\n", name, number, level, answers ? " answers" : "",
               pictures ? " pictures" : "", sources ? " sources" : "", figures ? " figures" : "");
    }
  }
  if (file != stdin) fclose(file);
  printf("%ld passed, %ld failed\n", passed, failed);
  return failed == 0 && passed > 0 ? 0 : 1;
}
