// A picture to the raw frame that a sensor would have delivered for it: the way back of the library's pipeline, for
// tests and for learning. Floating point, but nothing of the mathematical library, and random numbers that are
// integers: the same settings give the same frame everywhere.
//
// A pixel of the picture is taken for what the library would show at its defaults. So, from a pixel to a sample:
//
//   1. the default sensor matrix undone, then the default tone curve: linear R, G, B of a balanced sensor, 0 to 1
//   2. times the illuminant, relative to daylight of 6504 K; divided by the gains that balance the sensor there
//   3. times shading, green imbalance (Gr sites), exposure, and 235/255 of the sensor's range
//   4. noise and the black level added, rounded, cut at the ends of the range
//   5. hot sites at the upper end, dead ones at 0
#pragma once

#include <array>
#include <string>
#include <vector>

#include "bytes.h"
#include "picture.h"

namespace tool {

// Colours of the first two sites of the first two rows.
enum class Phase { bggr, gbrg, grbg, rggb };

struct Simulation {
  Phase phase = Phase::bggr;
  unsigned bits = 8;                                      // 8 to 16
  double black = 12;                                      // in steps of the frame; the same for all sites
  std::array<double, 3> gains{1.55078125, 1, 1.3515625};  // R, G, B: what balances the sensor under 6504 K
  double kelvin = 6504;                                   // 2,000 to 10,000
  double exposure = 1;                                    // times the light; above some 1.08 white is cut
  double shading = 0;                     // share of the light that the furthest corner loses, 0 to 1
  double centre_x = 0.5, centre_y = 0.5;  // of the lens, as shares of width and height
  double green_imbalance = 0;             // how much brighter Gr sites are than Gb sites, 0.015 for 1.5 %
  double noise = 0;                       // read noise: standard deviation in 1/255 of the range
  double shot_noise = 0;       // photon noise: the same at full light; it falls with the root of the light
  unsigned hot = 0, dead = 0;  // sites
  uint64_t seed = 1;
};

// Samples as numbers, row by row.
struct Mosaic {
  uint32_t width = 0, height = 0;
  unsigned bits = 8;
  std::vector<uint16_t> samples;
};

// Throws if a setting is out of its range. The frame has the size of the picture.
Mosaic simulate(const Picture&, const Simulation&);

// Which colour a site has: 0 R, 1 G, 2 B.
unsigned site_colour(Phase, uint32_t x, uint32_t y);

// How samples stand in a file: bytes (8 bits alone); words of 16 bits, right-aligned, in either byte order (9 to 16
// bits); or packed as cameras send them: 10 bits as four upper bytes and one with the lower bits, the first sample's
// lowest; 12 bits as two upper bytes and one. Packed rows are whole groups: widths that are multiples of 4 and of 2.
enum class Packing { little_endian, big_endian, packed };
Bytes pack(const Mosaic&, Packing);

// What a balanced sensor answers to a white surface under light of this temperature: R, G, B with G = 1, and 1, 1, 1 at
// 6504 K. The light has the chromaticity of a black body up to 4,000 K, of daylight from 5,000 K on, between them in
// proportion; the sensor sees its linear BT.709 colour through the inverse of the default sensor matrix.
std::array<double, 3> illuminant(double kelvin);

// The largest middle part of the picture that has the shape of width x height, averaged down (or repeated) to it.
Picture fitted(const Picture&, uint32_t width, uint32_t height);

}  // namespace tool
