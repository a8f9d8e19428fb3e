// make_sample_digests FRAME: digests (FNV-1a, 64 bits) of the sample's pictures, made from the plain reference. What it
// prints is kept in sample_digests.csv.
//
//   g++ -std=c++20 -O2 -I. -Iinclude -Itests -o make_sample_digests web/test/make_sample_digests.cpp \
//     tests/support/slots_reference.cpp tests/reference/*.cpp
//   ./make_sample_digests samples/coffee_640x480_bggr8.raw > web/test/sample_digests.csv
#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "support/slots.h"

int main(int argc, char** argv) {
  constexpr uint32_t W = 640, H = 480;
  std::vector<uint8_t> raw(W * H);
  FILE* file = argc == 2 ? std::fopen(argv[1], "rb") : nullptr;
  if (!file || std::fread(raw.data(), 1, raw.size(), file) != raw.size()) return 2;
  std::fclose(file);
  std::puts("quality,format,size,digest");
  const char* const sizes[] = {"double", "same", "half"};
  for (int quality : {0, 1, 2, 3, 4, 10, 11, 12, 13, 15})
    for (int format = 0; format < 5; ++format)
      for (int decimation = -1; decimation <= 1; ++decimation) {
        // What those qualities leave unfinished has no digest here; flat colours of 10 and 11 stay in a slot.
        if ((quality == 13 && format != 0 && format != 3) || (quality == 15 && format == 4)) continue;
        if (decimation == -1 && quality != 0 && quality != 1 && quality != 2 && quality != 3) continue;
        if ((decimation == -1 && format == 4) || (quality == 4 && format == 3 && decimation == 1)) continue;
        const size_t n = decimation == -1 ? 4 * W * H : decimation == 1 ? W * H / 4 : W * H;
        const size_t bytes[] = {n * 3 / 2, 2 * n, 2 * n, 3 * n, 4 * n};
        struct alignas(64) line {
          uint8_t bytes[64];
        };
        std::vector<line> source((raw.size() + 63) / 64), picture((bytes[format] + 63) / 64);
        uint8_t* from = source[0].bytes;
        uint8_t* to = picture[0].bytes;
        std::copy(raw.begin(), raw.end(), from);
        auto slot = std::make_unique<slots::reference_slot>();
        slot->reset_all_controls();
        slot->set_optical_black_b_gb_gr_r(12, 12, 12, 12);
        slot->set_rgb_gain(397, 256, 346);
        slot->set_quality(static_cast<uint32_t>(quality));
        slot->set_decimation(decimation, 0, 0);
        slot->process_frame(static_cast<ref::format>(format), from, to, W, H, W);
        uint64_t digest = 14695981039346656037u;
        for (size_t i = 0; i < bytes[format]; ++i) digest = (digest ^ to[i]) * 1099511628211u;
        std::printf("%d,%s,%s,%016llx\n", quality, slots::kFormatNames[format], sizes[decimation + 1],
                    static_cast<unsigned long long>(digest));
      }
}
