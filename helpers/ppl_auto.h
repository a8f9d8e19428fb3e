/* Automatic exposure, automatic white balance and lens shading for callers of ppl.
 *
 * Inline functions over structures of the caller's, nothing to link: C99 or C++14 and later. Integers only, no heap,
 * no state of its own, no call of anything outside this file (but the memset that compilers put in): fit for kernel
 * code. No function takes more than 1 KB of
 * stack.
 *
 * White balance of one frame, from the raw samples before they are converted (the source is overwritten by it):
 *
 *     static ppl_auto_sample sample;                          (55 KB; a caller's own, one per thread)
 *     ppl_auto_curve curve;
 *     ppl_auto_balance balance;
 *     ppl_auto_daylight_curve(&curve, 397, 256, 346);         (once: the gains that suit daylight of 6,500 K)
 *     ppl_auto_take_frame(&sample, raw, 640, 480, 640, 12, 12, 12, 12);
 *     if (ppl_auto_white(&curve, &sample, &balance))
 *       ppl_set_rgb_gain(context, balance.gain[0], balance.gain[1], balance.gain[2]);
 *
 * As a loop over frames, exposure included: ppl_auto_start once, then ppl_auto_step for each frame, with a sample of
 * the frame. Instead of raw samples the grid of means that the library keeps of the last frame will do,
 * ppl_auto_take_windows: coarser, but nothing of the frame is read.
 *
 * HOW THE LIGHT IS FOUND. Lights lie on a line from lamps to blue sky; the curve holds up to 32 of them. Under each
 * light in turn, the colours of the frame are looked up in tables of how usual such a colour is in pictures that are
 * balanced: among all samples, among the brightest tenth, fiftieth and two-hundredth, and among the differences of
 * neighbours. The mean of the lights, weighted with what the tables say, is the answer. The tables were learnt from 300
 * photographs (docs/white-balance.md has how, and how far off the answers are). */
#ifndef PPL_AUTO_H
#define PPL_AUTO_H

#include <stdint.h>

enum {
  PPL_AUTO_PAIRS = 2304,  /* pairs of neighbouring blocks that a sample holds at most */
  PPL_AUTO_LIGHTS = 32,   /* lights of a curve, at most */
  PPL_AUTO_BINS = 96,     /* of a histogram of colours, in each direction: 16 to the octave */
  PPL_AUTO_CLIPPED = 250, /* a raw sample from here on counts as cut */
  PPL_AUTO_GAIN_LIMIT = 2047
};

/* ---- Numbers: logarithms to base 2, 256 to the octave ---------------------------------------------------------- */

/* Rounded down; of 0 as of 1. */
static inline int32_t ppl_auto_log2(uint32_t x) {
  int32_t whole = 15, part = 0, bit;
  if (x == 0) return 0;
  for (; x >= 65536; x >>= 1) ++whole;
  for (; x < 256; x <<= 8) whole -= 8;
  for (; x < 32768; x <<= 1) --whole;
  for (bit = 128; bit;
       bit >>= 1) { /* x is 1 to 2 in 15 fraction bits; squaring brings up the next binary place */
    x = (x * x) >> 15;
    if (x >= 65536) {
      x >>= 1;
      part |= bit;
    }
  }
  return whole * 256 + part;
}

/* 2 to the power of e / 256, in 16 fraction bits, right to 1 / 5000; e from -4096 (below it 0) to 3839 (above it the
 * same). */
static inline uint32_t ppl_auto_exp2(int32_t e) {
  uint32_t f, y;
  if (e < -4096) return 0;
  if (e > 3839) e = 3839;
  e += 4096;
  f = (uint32_t)(e & 255) << 8;
  y = ((5206 * f) >> 16) + 14713;
  y = ((y * f) >> 16) + 45617;
  y = ((y * f) >> 16) + 65536;
  e = (e >> 8) - 16;
  return e < 0 ? y >> -e : y << e;
}

/* Rounded down. */
static inline uint32_t ppl_auto_root(uint64_t x) {
  uint64_t r = 0, bit = (uint64_t)1 << 62;
  while (bit > x) bit >>= 2;
  for (; bit; bit >>= 2) {
    if (x >= r + bit) {
      x -= r + bit;
      r = (r >> 1) + bit;
    } else {
      r >>= 1;
    }
  }
  return (uint32_t)r;
}

/* x, but at least low and at most high. */
static inline int32_t ppl_auto_clamp(int32_t x, int32_t low, int32_t high) {
  return x < low ? low : x > high ? high : x;
}

/* ---- What is taken from a frame ---------------------------------------------------------------------------------- */

/* A thin sample of a frame. All of it belongs to the functions below; how much it holds may be read. */
typedef struct ppl_auto_sample {
  uint32_t blocks;  /* that were looked at */
  uint32_t clipped; /* of them, with a sample at the upper end */
  uint32_t colours; /* that are kept: bright enough and not cut */
  uint32_t edges;   /* differences of neighbours that are kept */
  uint32_t light;   /* sum over the blocks of R + 2 G + B, 0 to 4080 each */
  int16_t colour_r[2 * PPL_AUTO_PAIRS], colour_b[2 * PPL_AUTO_PAIRS]; /* R / G and B / G, 256 to the octave */
  uint16_t colour_light[2 * PPL_AUTO_PAIRS];                          /* R + 2 G + B, 0 to 4080 */
  int16_t edge_r[PPL_AUTO_PAIRS], edge_b[PPL_AUTO_PAIRS]; /* of the differences: R / G and B / G */
  uint16_t counts[PPL_AUTO_BINS * PPL_AUTO_BINS];         /* scratch of ppl_auto_white */
} ppl_auto_sample;

/* Nothing in it any more: the beginning of a frame's sample. */
static inline void ppl_auto_empty(ppl_auto_sample* sample) {
  sample->blocks = sample->clipped = sample->colours = sample->edges = sample->light = 0;
}

/* One block: means of R, G and B in quarters of a sample step (0 to 1020), behind the black level, before any gain.
 * Whether it was kept as a colour. */
static inline int ppl_auto_add(ppl_auto_sample* sample, uint32_t r, uint32_t g, uint32_t b, int clipped) {
  uint32_t light, n = sample->colours;
  if (r > 1020) r = 1020;
  if (g > 1020) g = 1020;
  if (b > 1020) b = 1020;
  if (sample->blocks >= 2 * PPL_AUTO_PAIRS) return 0;
  light = r + 2 * g + b;
  ++sample->blocks;
  sample->light += light;
  if (clipped) ++sample->clipped;
  if (clipped || r < 4 || g < 4 || b < 4 || r + g + b < 96) return 0;
  sample->colour_r[n] = (int16_t)(ppl_auto_log2(r) - ppl_auto_log2(g));
  sample->colour_b[n] = (int16_t)(ppl_auto_log2(b) - ppl_auto_log2(g));
  sample->colour_light[n] = (uint16_t)light;
  sample->colours = n + 1;
  return 1;
}

/* The difference between two neighbouring blocks, both of which were kept. */
static inline void ppl_auto_add_edge(ppl_auto_sample* sample, const uint32_t* one, const uint32_t* other) {
  uint32_t d[3], i, n = sample->edges;
  for (i = 0; i < 3; ++i) d[i] = one[i] > other[i] ? one[i] - other[i] : other[i] - one[i];
  if (n >= PPL_AUTO_PAIRS || d[0] < 6 || d[1] < 6 || d[2] < 6 || d[0] + d[1] + d[2] < 48) return;
  sample->edge_r[n] = (int16_t)(ppl_auto_log2(d[0]) - ppl_auto_log2(d[1]));
  sample->edge_b[n] = (int16_t)(ppl_auto_log2(d[2]) - ppl_auto_log2(d[1]));
  sample->edges = n + 1;
}

/* Sums over 4 x 4 samples of a raw frame from a B site on: R, G (half of both greens), B. Whether one was cut. */
static inline int ppl_auto_block(const uint8_t* raw, uint32_t stride, const uint32_t* black_b_gb_gr_r,
                                 uint32_t* rgb) {
  const uint32_t b = black_b_gb_gr_r[0], gb = black_b_gb_gr_r[1], gr = black_b_gb_gr_r[2],
                 r = black_b_gb_gr_r[3];
  uint32_t sum_b = 0, sum_g = 0, sum_r = 0, most = 0, i;
  for (i = 0; i < 4; ++i) { /* its four cells */
    const uint8_t *even = raw + (uint64_t)(i & 2) * stride + 2 * (i & 1), *odd = even + stride;
    const uint32_t v[4] = {even[0], even[1], odd[0], odd[1]};
    sum_b += v[0] > b ? v[0] - b : 0;
    sum_g += (v[1] > gb ? v[1] - gb : 0) + (v[2] > gr ? v[2] - gr : 0);
    sum_r += v[3] > r ? v[3] - r : 0;
    most = v[0] > most ? v[0] : most;
    most = v[1] > most ? v[1] : most;
    most = v[2] > most ? v[2] : most;
    most = v[3] > most ? v[3] : most;
  }
  rgb[0] = sum_r;
  rgb[1] = sum_g >> 1;
  rgb[2] = sum_b;
  return most >= PPL_AUTO_CLIPPED;
}

/* A thin sample of a part of a raw 8-bit frame as the library takes it (B, Gb on even rows, Gr, R on odd rows), spread
 * over it evenly. Black levels as ppl_set_optical_black_b_gb_gr_r takes them. x and y are rounded up to even numbers.
 * A part of less than 8 x 4 samples gives an empty sample. The caller sees to it that the part lies in the frame. */
static inline void ppl_auto_take_region(ppl_auto_sample* sample, const uint8_t* raw, uint32_t stride,
                                        uint32_t x, uint32_t y, uint32_t width, uint32_t height,
                                        uint32_t black_b, uint32_t black_gb, uint32_t black_gr,
                                        uint32_t black_r) {
  const uint32_t black[4] = {black_b, black_gb, black_gr, black_r};
  uint32_t across, down, step = 2, i, k;
  ppl_auto_empty(sample);
  if (x & 1 && width) ++x, --width;
  if (y & 1 && height) ++y, --height;
  across = width / 8 * 2; /* blocks; pairs of them lie side by side */
  down = height / 4;
  while ((uint64_t)(across / step + 1) * (down / step + 1) > PPL_AUTO_PAIRS) ++step;
  for (k = 0; k < down; k += step)
    for (i = 0; i + 1 < across; i += step) {
      const uint8_t* at = raw + (uint64_t)(y + 4 * k) * stride + x + 4 * i;
      uint32_t one[3], other[3];
      const int one_cut = ppl_auto_block(at, stride, black, one);
      const int other_cut = ppl_auto_block(at + 4, stride, black, other);
      const int one_kept = ppl_auto_add(sample, one[0], one[1], one[2], one_cut);
      const int other_kept = ppl_auto_add(sample, other[0], other[1], other[2], other_cut);
      if (one_kept && other_kept) ppl_auto_add_edge(sample, one, other);
    }
}

/* The sample of a whole raw frame, at a stride in bytes, and the black levels that are to be subtracted. */
static inline void ppl_auto_take_frame(ppl_auto_sample* sample, const uint8_t* raw, uint32_t width,
                                       uint32_t height, uint32_t stride, uint32_t black_b, uint32_t black_gb,
                                       uint32_t black_gr, uint32_t black_r) {
  ppl_auto_take_region(sample, raw, stride, 0, 0, width, height, black_b, black_gb, black_gr, black_r);
}

/* What went into gain and delta, from a mean of the library's, 0 to 65280: half of the samples that it was made from
 * were counted before the tone curve, half behind it. In 1/256 of a sample step; exact for an even area. */
static inline uint32_t ppl_auto_before_tone(uint32_t mean, const uint8_t* tone) {
  uint32_t low = 0, high = 255, a, b;
  while (high - low > 1) { /* (i + tone[i]) / 2 rises with i */
    const uint32_t middle = (low + high) / 2;
    if ((middle + tone[middle]) * 128 <= mean)
      low = middle;
    else
      high = middle;
  }
  a = (low + tone[low]) * 128;
  b = (high + tone[high]) * 128;
  if (mean <= a || b <= a) return low * 256;
  if (mean >= b) return high * 256;
  return low * 256 + (mean - a) * 256 / (b - a);
}

/* The sample from the library's statistics of the last frame instead: the 48 means of ppl_rgb_means_sub_windows, under
 * the gains and the tone curve (ppl_rgb_gamma_table) that the frame was converted with; deltas must be 0. Means of
 * large areas say less than samples of small ones: see docs/white-balance.md. */
static inline void ppl_auto_take_windows(ppl_auto_sample* sample, const uint32_t* means, uint32_t columns,
                                         uint32_t rows, uint32_t r_gain, uint32_t g_gain, uint32_t b_gain,
                                         const uint8_t* tone) {
  const uint32_t gains[3] = {r_gain >> 3, g_gain >> 3, b_gain >> 3};
  uint32_t last[3] = {0, 0, 0}, rgb[3], i, c;
  int last_kept = 0;
  ppl_auto_empty(sample);
  for (i = 0; i < columns * rows; ++i) {
    int clipped = 0, kept;
    for (c = 0; c < 3; ++c) {
      const uint32_t v = ppl_auto_before_tone(means[3 * i + c], tone);
      if (v >= PPL_AUTO_CLIPPED * 256) clipped = 1;
      rgb[c] = gains[c] ? (v * 32 / gains[c] + 32) >> 6 : 0;
      if (rgb[c] > 1020) rgb[c] = 1020;
    }
    kept = ppl_auto_add(sample, rgb[0], rgb[1], rgb[2], clipped);
    if (i % columns && kept && last_kept) ppl_auto_add_edge(sample, rgb, last);
    for (c = 0; c < 3; ++c) last[c] = rgb[c];
    last_kept = kept;
  }
}

/* Mean brightness of the sample, (R + 2 G + B) / 4 in 1/256 of a sample step, 0 to 65280. 0 of an empty sample. */
static inline uint32_t ppl_auto_level(const ppl_auto_sample* sample) {
  return sample->blocks ? (uint32_t)((uint64_t)sample->light * 16 / sample->blocks) : 0;
}

/* Share of the blocks that hold a cut sample, 0 to 256. */
static inline uint32_t ppl_auto_clipped(const ppl_auto_sample* sample) {
  return sample->blocks ? sample->clipped * 256 / sample->blocks : 0;
}

/* ---- White balance ----------------------------------------------------------------------------------------------- */

/* The line of plausible lights: what the sensor answers to a white surface, R / G and B / G as logarithms, from the
 * bluest light to the reddest in steps that look alike; and how likely each light is beforehand, in eighths of a
 * natural logarithm. A caller who has measured a sensor under lights of his own fills one himself. */
typedef struct ppl_auto_curve {
  uint32_t lights;                                /* 2 to PPL_AUTO_LIGHTS */
  int16_t r[PPL_AUTO_LIGHTS], b[PPL_AUTO_LIGHTS]; /* R / G and B / G of white, 256 to the octave */
  int8_t likely[PPL_AUTO_LIGHTS];                 /* eighths of a natural logarithm */
} ppl_auto_curve;

/* The light of a frame, and the gains that balance it. */
typedef struct ppl_auto_balance {
  uint32_t gain[3];  /* R, G, B as ppl_set_rgb_gain takes them, the smallest 256 */
  int32_t r, b;      /* the light: R / G and B / G of a white surface, 256 to the octave */
  uint32_t position; /* on the curve, in 1/256 of the step from light to light */
  uint32_t
      spread; /* standard deviation of the position: how unsure it is. Below 256 is sure; beyond 1000 the frame
                        says little, and the answer leans to the middle */
} ppl_auto_balance;

/* Gains that turn a white of these ratios (256 to the octave) into grey: the smallest 256, none above 2047, rounded to
 * the steps of 8 in which gains are effective. */
static inline void ppl_auto_gains(int32_t r, int32_t b, uint32_t* gain) {
  const int32_t log[3] = {ppl_auto_clamp(r, -4096, 4096), 0, ppl_auto_clamp(b, -4096, 4096)};
  int32_t most = 0, c;
  for (c = 0; c < 3; ++c)
    if (log[c] > most) most = log[c];
  for (c = 0; c < 3; ++c) {
    const uint32_t g = (ppl_auto_exp2(most - log[c]) / 256 + 4) & ~(uint32_t)7;
    gain[c] = g < PPL_AUTO_GAIN_LIMIT ? g : (uint32_t)PPL_AUTO_GAIN_LIMIT;
  }
}

/* 32 lights, black body to 4,000 K and daylight from 5,000 K on, from 10,000 K to 2,300 K in even steps of 1 / T: R / G
 * and B / G as a balanced sensor with the default colour matrix sees them, and how likely they are beforehand. */
static inline const int16_t* ppl_auto_lights(void) {
  /* clang-format off */
  static const int16_t lights[3 * PPL_AUTO_LIGHTS] = {
    -36, 56, -8,  -30, 45, -1,  -23, 34, 1,  -16, 22, 1,
    -8, 11, 1,  0, 0, 2,  9, -12, 3,  17, -23, 2,
    26, -34, 2,  36, -45, 2,  47, -54, 2,  58, -63, 2,
    69, -71, 2,  79, -79, 2,  89, -87, 2,  98, -96, 2,
    107, -105, 1,  116, -114, 1,  125, -122, 1,  134, -130, 1,
    142, -138, 1,  151, -146, 1,  159, -153, 0,  167, -159, 0,
    175, -166, 0,  184, -172, 0,  192, -178, 0,  199, -183, -1,
    207, -188, -1,  215, -193, -4,  223, -198, -7,  230, -202, -11};
  /* clang-format on */
  return lights;
}

/* Five tables of 16 x 16: how usual a colour is that lies off the light by R / G (down) and B / G (across), from -2 to
 * 2 octaves, in eighths of a natural logarithm: among all colours, the brightest tenth, fiftieth and two-hundredth,
 * and among differences of neighbours. Made by scripts/learn_white_balance.py. */
static inline const int8_t* ppl_auto_tables(void) {
  /* clang-format off */
  static const int8_t tables[5 * 256] = {
    0, 0, 0, 0, -1, -2, -1, 8, 33, 29, 24, 25, -14, -14, -11, -8,
    0, 0, 0, 0, -2, -3, -5, -6, 1, 8, 12, 26, -4, -11, -8, -6,
    0, 1, 1, 0, -2, -5, -9, -13, -13, -8, 10, 35, 5, -8, -7, -5,
    1, 1, 2, 1, -1, -8, -14, -15, -14, -20, 4, 32, 8, -3, -5, -4,
    1, 3, 5, 6, 4, -7, -18, -10, -6, -15, 10, 2, 1, -3, -3, -3,
    1, 3, 8, 11, 21, 14, -11, 8, 7, -3, 4, -25, -11, -5, -4, -3,
    -2, 3, 10, 12, 23, 34, -6, -9, 1, 20, 19, -11, -8, -7, -5, -3,
    -7, -2, 8, 12, 7, 10, -21, 7, 8, -5, -2, -13, -10, -9, -6, -3,
    -11, -9, -7, -11, -8, 8, 10, -3, -1, -30, -15, -14, -12, -9, -6, -3,
    -16, -8, 1, -4, -12, -3, 8, 2, 2, -10, -1, -5, -7, -7, -5, -4,
    -21, -12, -5, -2, 10, 14, -10, 7, -2, -3, 3, 0, -4, -5, -5, -4,
    -18, -7, -1, -3, 7, 30, 22, 33, 12, 2, 7, 7, 1, -3, -3, -3,
    -17, -9, -5, -8, 2, 9, 11, 28, 26, -2, 0, 9, 8, 4, -1, -1,
    -11, -4, 1, -2, -2, -2, 0, 10, 45, 35, 10, 5, 4, 4, 2, 0,
    -9, -2, 5, 1, -2, -5, -9, -9, -3, 5, 4, 2, 1, 1, 1, 0,
    -18, -6, 12, 12, 0, -3, -12, -6, -2, -1, 1, 1, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 1, 4, 17, 4, 12, 14, -12, -7, -6, -3,
    0, 0, 0, 0, 0, -1, -1, 0, 8, 2, -3, 9, -3, -4, -3, -2,
    0, 0, 0, 0, -1, -2, -4, -4, 2, -5, -1, 11, -4, -4, -2, -1,
    0, 0, 0, -1, -2, -5, -8, -6, 4, -9, 1, 7, -10, -5, -2, -1,
    0, 0, 0, -1, -4, -10, -14, -4, 11, 14, 14, -9, -11, -5, -2, -1,
    1, 1, 2, 1, -4, -12, -20, 3, -9, 4, 3, 0, -5, -2, -1, -1,
    1, 2, 4, 7, 2, 5, -10, -7, 15, 6, 7, 1, -2, -1, -1, 0,
    3, 4, 8, 9, -13, 13, -7, -10, 8, -17, -4, -4, -3, -1, 0, 0,
    4, 7, 17, 21, -14, -7, 10, 0, -6, -19, -5, -4, -2, -1, 0, 0,
    -6, 0, 11, 21, 2, 31, 12, 3, -9, -6, 2, -2, -1, -1, 0, 0,
    -11, -2, 3, 6, 9, 22, 19, 21, 6, -4, -3, -2, -1, 0, 0, 0,
    -13, -8, -4, 0, 2, 13, 19, 33, 31, 17, 0, -1, 0, 0, 0, 0,
    -12, -10, -9, -6, -4, -3, -7, 2, 10, 11, 1, -1, 0, 0, 0, 0,
    -8, -7, -6, -5, -4, -5, -10, -7, 1, 9, 3, 1, 0, 0, 0, 0,
    -7, -6, -6, -4, -1, -1, -5, -5, -2, 2, 2, 1, 0, 0, 0, 0,
    -11, -8, -6, -3, 1, 1, -2, -3, -2, -1, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 1, 4, 13, -1, 1, -6, -15, -8, -6, -3,
    0, 0, 0, 0, 0, 0, 0, 2, 12, 5, -5, -3, -8, -6, -3, -2,
    0, 0, 0, 0, -1, -1, -2, -3, 1, 0, 3, -4, -8, -5, -2, -1,
    0, 0, 0, 0, -1, -3, -5, -2, 2, -2, 13, 1, -10, -5, -2, -1,
    0, 0, 0, 1, -2, -5, -5, 2, 11, 10, 18, -7, -7, -3, -1, -1,
    0, 0, 1, 4, -2, -9, -6, 5, 23, 24, 8, -3, -3, -1, -1, 0,
    0, -1, 0, 13, 1, -9, -10, -15, 22, 5, 8, 0, -1, -1, 0, 0,
    0, -3, -5, 10, 2, -1, -11, -9, -3, 12, 6, 0, 0, 0, 0, 0,
    5, 4, 0, 7, 3, 3, -4, -23, 2, 0, -1, -1, 0, 0, 0, 0,
    -2, -3, -9, -10, -13, 15, 6, -10, -17, -8, -3, -1, 0, 0, 0, 0,
    1, 14, 16, 11, 6, 10, 21, 29, 18, 3, -2, -1, 0, 0, 0, 0,
    1, 9, 9, 11, 3, 0, 11, 20, 17, 15, 1, -1, 0, 0, 0, 0,
    -4, -4, -7, -9, -6, -3, 0, 1, 1, 5, 0, 0, 0, 0, 0, 0,
    -6, -7, -10, -12, -7, -3, -3, -4, -1, 5, 1, 0, 0, 0, 0, 0,
    -8, -9, -13, -11, -4, 0, -1, -3, -2, 0, 0, 0, 0, 0, 0, 0,
    -11, -10, -8, -3, 3, 7, 0, -2, -3, -1, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 1, 4, 14, 0, -11, -14, -14, -8, -5, -3,
    0, 0, 0, 0, 0, 0, 0, 2, 19, 14, -3, -8, -9, -6, -3, -2,
    0, 0, 0, 0, 0, -1, -3, -6, -4, -7, -5, -12, -11, -6, -3, -1,
    0, 0, 0, 0, -1, -3, -5, -1, 5, -3, 3, -9, -13, -5, -2, -1,
    0, 0, 1, 1, -1, -5, -6, -1, 5, 1, 2, -15, -10, -4, -2, -1,
    0, 1, 2, 5, -1, -8, -7, -10, 2, 12, -19, -14, -6, -3, -1, -1,
    0, 1, 2, 12, 1, -12, -2, 9, 0, -16, -10, -7, -3, -1, -1, 0,
    0, 0, -1, 8, 22, 3, 19, 51, 21, -9, 0, -2, -1, -1, 0, 0,
    0, 8, 16, -2, 15, 10, 37, 44, 123, 21, 6, 1, 0, 0, 0, 0,
    -9, -6, -5, -11, -9, -2, -14, 15, 42, 18, 5, 1, 0, 0, 0, 0,
    -4, 14, 15, 9, -6, -40, -25, 12, 19, 10, 3, 1, 0, 0, 0, 0,
    3, 20, 16, 2, -13, -17, 0, 8, 10, 12, 1, 0, 0, 0, 0, 0,
    -4, -1, -4, -12, -11, -8, -1, -1, 0, 4, -1, 0, 0, 0, 0, 0,
    -9, -10, -15, -19, -12, -6, -3, -4, 1, 6, 1, 0, 0, 0, 0, 0,
    -11, -14, -22, -15, -7, -3, -2, -2, 0, 1, 1, 0, 0, 0, 0, 0,
    -13, -12, -11, -7, -1, 2, 0, -1, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, -1, -2, -4, -8, -4, 4, 4, 22, -15, -18, -10, -5, -3,
    0, 0, 0, -1, -1, -3, -6, -4, 4, 12, -4, -12, -12, -7, -4, -2,
    0, 0, -1, -1, -1, -3, -5, -2, 3, 12, -8, -14, -12, -8, -4, -3,
    0, 0, -3, -2, -2, -4, -6, -1, 4, 1, -17, -19, -13, -8, -5, -4,
    1, 1, -2, -2, -1, -5, -10, -5, -1, -10, -23, -21, -13, -7, -5, -4,
    1, 0, -2, -1, 0, -2, -8, -4, -8, -15, -25, -20, -12, -7, -5, -4,
    6, 3, 5, 10, 12, 16, 22, 32, 13, -14, -18, -15, -9, -6, -4, -4,
    16, 10, 12, 22, 29, 38, 58, 98, 73, 11, 4, -8, -6, -3, -2, -3,
    2, 2, 4, 13, 25, 29, 46, 81, 64, 20, 16, 2, -1, -1, -2, -3,
    -4, -5, -8, -3, 8, 18, 21, 44, 36, 21, 19, 5, 1, 0, -4, -7,
    -14, -13, -17, -16, -10, -2, 1, 14, 14, 11, 17, 4, 1, -2, -9, -16,
    -14, -15, -18, -21, -24, -21, -14, -4, -2, -2, 11, 5, 2, -1, -9, -9,
    -13, -13, -16, -19, -23, -20, -13, -4, -2, -3, 5, 5, 7, 1, -3, -3,
    -9, -9, -11, -12, -15, -14, -9, -3, 1, 2, 4, 10, 18, 3, 0, -1,
    -6, -5, -6, -7, -8, -10, -10, -9, -4, 0, 2, 5, 5, 2, 2, -4,
    -3, -3, -3, -4, -6, -7, -8, -8, -4, 0, 2, 4, 0, 0, 12, 5};
  /* clang-format on */
  return tables;
}

/* The curve of a sensor with the default colour matrix from its gains in daylight of 6504 K, 8.8 as ppl_set_rgb_gain
 * takes them: 32 lights from 10,000 K to 2,300 K. Take the gains from a grey card in daylight (ppl_auto_grey). */
static inline void ppl_auto_daylight_curve(ppl_auto_curve* curve, uint32_t r_gain, uint32_t g_gain,
                                           uint32_t b_gain) {
  const int32_t r = ppl_auto_log2(g_gain) - ppl_auto_log2(r_gain),
                b = ppl_auto_log2(g_gain) - ppl_auto_log2(b_gain);
  const int16_t* lights = ppl_auto_lights();
  uint32_t i;
  curve->lights = PPL_AUTO_LIGHTS;
  for (i = 0; i < PPL_AUTO_LIGHTS; ++i) {
    curve->r[i] = (int16_t)(lights[3 * i] + r);
    curve->b[i] = (int16_t)(lights[3 * i + 1] + b);
    curve->likely[i] = (int8_t)lights[3 * i + 2];
  }
}

/* Where a colour falls in the histogram, whose middle is the middle light of the curve. */
static inline uint32_t ppl_auto_bin(int32_t r, int32_t b, const ppl_auto_curve* curve) {
  const uint32_t middle = curve->lights / 2;
  const int32_t i = (r - curve->r[middle] + 768) >> 4, k = (b - curve->b[middle] + 768) >> 4;
  return (uint32_t)(ppl_auto_clamp(i, 0, PPL_AUTO_BINS - 1) * PPL_AUTO_BINS +
                    ppl_auto_clamp(k, 0, PPL_AUTO_BINS - 1));
}

/* How usual a colour is that lies r, b from the light: between the entries of a table of 16 x 16, four to the octave,
 * in 4096ths of an entry. */
static inline int32_t ppl_auto_usual(const int8_t* table, int32_t r, int32_t b) {
  const int32_t x = ppl_auto_clamp(r + 512 - 32, 0, 15 * 64 - 1),
                y = ppl_auto_clamp(b + 512 - 32, 0, 15 * 64 - 1);
  const int32_t fx = x & 63, fy = y & 63;
  const int8_t* at = table + (x >> 6) * 16 + (y >> 6);
  return (at[0] * (64 - fx) + at[16] * fx) * (64 - fy) + (at[1] * (64 - fx) + at[17] * fx) * fy;
}

/* Adds to each light's score what one table says of the n colours, of those as bright as `least`: a colour counts by
 * the root of how often it occurs, so that a large even area does not outvote everything else. */
static inline void ppl_auto_vote(const ppl_auto_curve* curve, const int8_t* table, const int16_t* r,
                                 const int16_t* b, const uint16_t* light, uint32_t least, uint32_t n,
                                 uint16_t* counts, int32_t* score) {
  const uint32_t middle = curve->lights / 2;
  int64_t sums[PPL_AUTO_LIGHTS];
  int32_t total = 0;
  uint32_t i, k;
  for (k = 0; k < curve->lights; ++k) sums[k] = 0;
  for (i = 0; i < n; ++i)
    if (!light || light[i] >= least) ++counts[ppl_auto_bin(r[i], b[i], curve)];
  for (i = 0; i < n; ++i) {
    const uint32_t bin = ppl_auto_bin(r[i], b[i], curve), count = counts[bin];
    int32_t weight, at_r, at_b;
    if (!count || (light && light[i] < least)) continue;
    counts[bin] = 0; /* each bin once, and clean for the next */
    weight = (int32_t)ppl_auto_root((uint64_t)count << 8);
    at_r = (int32_t)(bin / PPL_AUTO_BINS) * 16 + 8 - 768 + curve->r[middle];
    at_b = (int32_t)(bin % PPL_AUTO_BINS) * 16 + 8 - 768 + curve->b[middle];
    total += weight;
    for (k = 0; k < curve->lights; ++k)
      sums[k] += (int64_t)weight * ppl_auto_usual(table, at_r - curve->r[k], at_b - curve->b[k]);
  }
  if (!total) return;
  for (k = 0; k < curve->lights; ++k) score[k] += (int32_t)(sums[k] / total);
}

/* The brightness that one part in `parts` of the colours reach. */
static inline uint32_t ppl_auto_brightest(const ppl_auto_sample* sample, uint32_t parts, uint16_t* counts) {
  const uint32_t wanted = (sample->colours + parts - 1) / parts;
  uint32_t i, level = 4081, found = 0;
  for (i = 0; i < sample->colours; ++i) ++counts[sample->colour_light[i]];
  while (level && found < wanted) found += counts[--level];
  for (i = 0; i < sample->colours; ++i) counts[sample->colour_light[i]] = 0;
  return level;
}

/* The light of the sample and the gains that balance it. False, and nothing written, if the sample holds fewer than 16
 * colours (a black or a wholly cut frame) or the curve no two lights. */
static inline int ppl_auto_white(const ppl_auto_curve* curve, ppl_auto_sample* sample,
                                 ppl_auto_balance* balance) {
  const int8_t* tables = ppl_auto_tables();
  int32_t score[PPL_AUTO_LIGHTS], best;
  uint32_t chance[PPL_AUTO_LIGHTS], i, at, part;
  uint64_t total = 0, mean = 0, square = 0;
  uint16_t* counts = sample->counts;
  if (sample->colours < 16 || curve->lights < 2 || curve->lights > PPL_AUTO_LIGHTS) return 0;
  for (i = 0; i < PPL_AUTO_BINS * PPL_AUTO_BINS; ++i) counts[i] = 0;
  for (i = 0; i < curve->lights; ++i) score[i] = curve->likely[i] * 4096;
  for (i = 0; i < 4; ++i) {
    static const uint16_t parts[4] = {1, 10, 50, 200};
    const uint32_t least = i ? ppl_auto_brightest(sample, parts[i], counts) : 0;
    ppl_auto_vote(curve, tables + 256 * i, sample->colour_r, sample->colour_b, sample->colour_light, least,
                  sample->colours, counts, score);
  }
  ppl_auto_vote(curve, tables + 256 * 4, sample->edge_r, sample->edge_b, 0, 0, sample->edges, counts, score);

  best = score[0];
  for (i = 1; i < curve->lights; ++i)
    if (score[i] > best) best = score[i];
  for (i = 0; i < curve->lights; ++i) {
    /* Scores are natural logarithms, 8 * 4096 to the unit: 739 / 65536 makes octaves of them, 256 each. */
    const uint64_t octaves = ((uint64_t)(uint32_t)(best - score[i]) * 739) >> 16;
    chance[i] = octaves > 4096 ? 0 : ppl_auto_exp2(-(int32_t)octaves);
    total += chance[i];
    mean += (uint64_t)chance[i] * i * 256;
  }
  mean = (mean + total / 2) / total;
  for (i = 0; i < curve->lights; ++i) {
    const int64_t off = (int64_t)i * 256 - (int64_t)mean;
    square += chance[i] * (uint64_t)(off * off);
  }
  at = (uint32_t)mean >> 8;
  part = (uint32_t)mean & 255;
  if (at >= curve->lights - 1) at = curve->lights - 2, part = 256;
  balance->position = (uint32_t)mean;
  balance->spread = ppl_auto_root(square / total);
  balance->r = curve->r[at] + (((curve->r[at + 1] - curve->r[at]) * (int32_t)part) >> 8);
  balance->b = curve->b[at] + (((curve->b[at + 1] - curve->b[at]) * (int32_t)part) >> 8);
  ppl_auto_gains(balance->r, balance->b, balance->gain);
  return 1;
}

/* The balance of a region that is known to be grey, a card for example: from the mean of all its colours, without a
 * curve. False if fewer than 16 blocks are bright enough and not cut. */
static inline int ppl_auto_grey(const uint8_t* raw, uint32_t stride, uint32_t x, uint32_t y, uint32_t width,
                                uint32_t height, uint32_t black_b, uint32_t black_gb, uint32_t black_gr,
                                uint32_t black_r, ppl_auto_balance* balance) {
  const uint32_t black[4] = {black_b, black_gb, black_gr, black_r};
  uint64_t sums[3] = {0, 0, 0};
  uint32_t blocks = 0, rgb[3], i, k, c;
  if (x & 1 && width) ++x, --width;
  if (y & 1 && height) ++y, --height;
  for (k = 0; k + 4 <= height; k += 4)
    for (i = 0; i + 4 <= width; i += 4) {
      if (ppl_auto_block(raw + (uint64_t)(y + k) * stride + x + i, stride, black, rgb)) continue;
      if (rgb[0] < 16 || rgb[1] < 16 || rgb[2] < 16) continue;
      for (c = 0; c < 3; ++c) sums[c] += rgb[c];
      ++blocks;
    }
  if (blocks < 16) return 0;
  for (c = 0; c < 3; ++c) sums[c] = (sums[c] << 16) / blocks; /* 16 to 1020, 16 fraction bits */
  balance->r = ppl_auto_log2((uint32_t)sums[0]) - ppl_auto_log2((uint32_t)sums[1]);
  balance->b = ppl_auto_log2((uint32_t)sums[2]) - ppl_auto_log2((uint32_t)sums[1]);
  balance->position = balance->spread = 0;
  ppl_auto_gains(balance->r, balance->b, balance->gain);
  return 1;
}

/* For one frame that no sensor setting can change any more: gains of the balance times what brings the sample to the
 * level (in 1/256 of a sample step; 0 stands for 18 % of the range), as far as the brightest fiftieth of the colours
 * stays within the range and gains below 2048. Never darker than the balance alone: light that was cut stays white. */
static inline void ppl_auto_brighten(const ppl_auto_balance* balance, ppl_auto_sample* sample, uint32_t level,
                                     uint32_t* gain) {
  const uint32_t* g = balance->gain;
  const uint32_t all = (g[0] + 2 * g[1] + g[2] + 2) / 4;
  uint64_t now, times, most = g[0] > g[1] ? g[0] : g[1];
  uint32_t i;
  if (g[2] > most) most = g[2];
  now = (uint64_t)ppl_auto_level(sample) * all / 256;
  if (!level) level = 11750;
  times = now ? (uint64_t)level * 256 / now : 256;
  if (sample->colours) {
    uint64_t brightest;
    for (i = 0; i < PPL_AUTO_BINS * PPL_AUTO_BINS; ++i) sample->counts[i] = 0;
    brightest = (uint64_t)ppl_auto_brightest(sample, 50, sample->counts) * all / 256;
    if (brightest && times * brightest > 4080 * 256) times = 4080 * 256 / brightest;
  }
  if (times > (uint64_t)PPL_AUTO_GAIN_LIMIT * 256 / most) times = (uint64_t)PPL_AUTO_GAIN_LIMIT * 256 / most;
  if (times < 256) times = 256;
  for (i = 0; i < 3; ++i) gain[i] = (uint32_t)(g[i] * times / 256);
}

/* ---- Loop over frames ------------------------------------------------------------------------------------------- */

/* Exposure and white balance from frame to frame. The exposure moves by a share of what is missing, at most an octave
 * a step (two at the start), and waits until a step shows in the frames; whenever it has stepped too far, the next
 * steps are half as long. The balance follows the light like a low-pass filter, slower the less sure the light is.
 * Both hold still within a dead band. So neither swings. */
typedef struct ppl_auto_loop {
  /* The caller's; ppl_auto_start fills them in, and they may be changed at any time. */
  uint32_t level;                      /* wanted, as ppl_auto_level gives it: 11750, 18 % of the range */
  uint32_t clipped;                    /* share of cut blocks that is let pass, 0 to 256: 8 */
  uint32_t exposure_min, exposure_max; /* in any unit: lines, microseconds; at least 1, below 2^24 */
  uint32_t gain_min, gain_max;         /* of the sensor, 8.8; at least 1, below 2^16 */
  uint32_t flicker;        /* exposures above it become multiples of it (of 10 ms at 50 Hz); 0: any */
  uint32_t delay;          /* frames after a change that do not show it yet: 2 */
  uint32_t exposure_speed; /* share of the way in one step, 1 to 256: 192 */
  uint32_t exposure_band;  /* a settled exposure holds within this, 256 to the octave: 32 */
  uint32_t balance_speed;  /* 1 to 256: 64 */
  uint32_t balance_band;   /* 256 to the octave: 10 */
  /* To be read. */
  uint32_t exposure, gain; /* for the sensor */
  uint32_t rgb_gain[3];    /* for ppl_set_rgb_gain */
  /* Its own. */
  int32_t light, step, last;          /* exposure times gain as a logarithm; longest step; last error */
  uint32_t wait, settled, along;      /* frames: to be waited, settled, on in one direction */
  uint32_t balanced, balance_settled; /* whether there is a balance yet; whether it holds still */
  int32_t r, b;                       /* the light that the gains follow */
} ppl_auto_loop;

enum { PPL_AUTO_EXPOSURE_CHANGED = 1, PPL_AUTO_BALANCE_CHANGED = 2 };

/* 2 to the power of e / 256 as a whole number, rounded down; 0 below 0, 2^31 from 31 octaves on. */
static inline uint32_t ppl_auto_power(int32_t e) {
  uint32_t fraction;
  if (e < 0) return 0;
  if (e >= 31 * 256) return 0x80000000u;
  fraction = ppl_auto_exp2(e & 255);
  e >>= 8;
  return e < 16 ? fraction >> (16 - e) : fraction << (e - 16);
}

/* The logarithm of the light to exposure and gain: as long an exposure as there may be, then gain. */
static inline void ppl_auto_split(ppl_auto_loop* loop) {
  const int32_t gain_min = ppl_auto_log2(loop->gain_min);
  uint32_t exposure = ppl_auto_power(loop->light - gain_min), gain;
  if (exposure < loop->exposure_min) exposure = loop->exposure_min;
  if (exposure > loop->exposure_max) exposure = loop->exposure_max;
  if (loop->flicker && exposure > loop->flicker && exposure - exposure % loop->flicker >= loop->exposure_min)
    exposure -= exposure % loop->flicker;
  gain = ppl_auto_power(loop->light - ppl_auto_log2(exposure));
  if (gain < loop->gain_min) gain = loop->gain_min;
  if (gain > loop->gain_max) gain = loop->gain_max;
  loop->exposure = exposure;
  loop->gain = gain;
}

/* Bounds that make no sense are put right: at least 1, the upper not below the lower. Starts in the middle. */
static inline void ppl_auto_start(ppl_auto_loop* loop, uint32_t exposure_min, uint32_t exposure_max,
                                  uint32_t gain_min, uint32_t gain_max) {
  loop->level = 11750;
  loop->clipped = 8;
  loop->exposure_min = exposure_min ? exposure_min : 1;
  loop->exposure_max = exposure_max < loop->exposure_min ? loop->exposure_min : exposure_max;
  loop->gain_min = gain_min ? gain_min : 1;
  loop->gain_max = gain_max < loop->gain_min ? loop->gain_min : gain_max;
  loop->flicker = 0;
  loop->delay = 2;
  loop->exposure_speed = 192;
  loop->exposure_band = 32;
  loop->balance_speed = 64;
  loop->balance_band = 10;
  loop->rgb_gain[0] = loop->rgb_gain[1] = loop->rgb_gain[2] = 256;
  loop->light = (ppl_auto_log2(loop->exposure_min) + ppl_auto_log2(loop->gain_min) +
                 ppl_auto_log2(loop->exposure_max) + ppl_auto_log2(loop->gain_max)) /
                2;
  loop->step = 512;
  loop->last = 0;
  loop->wait = loop->settled = loop->along = loop->balanced = loop->balance_settled = 0;
  loop->r = loop->b = 0;
  ppl_auto_split(loop);
}

/* How much light is missing, 256 to the octave, within 4 octaves. Cut blocks beyond the share that is let pass count
 * as too much light: falling with more light in any scene, so that there is one exposure where it is 0. */
static inline int32_t ppl_auto_missing(const ppl_auto_loop* loop, uint32_t level, uint32_t clipped) {
  int32_t missing = ppl_auto_log2(loop->level) - ppl_auto_log2(level < 16 ? 16 : level);
  if (clipped > 256) clipped = 256;
  if (clipped > loop->clipped) missing -= (int32_t)(clipped - loop->clipped) * 4;
  return ppl_auto_clamp(missing, -1024, 1024);
}

/* One frame's level and share of cut blocks. Whether exposure or gain have changed. */
static inline int ppl_auto_step_exposure(ppl_auto_loop* loop, uint32_t level, uint32_t clipped) {
  const uint32_t exposure = loop->exposure, gain = loop->gain;
  const int32_t least = ppl_auto_log2(loop->exposure_min) + ppl_auto_log2(loop->gain_min);
  const int32_t most = ppl_auto_log2(loop->exposure_max) + ppl_auto_log2(loop->gain_max);
  const int32_t band = (int32_t)(loop->exposure_band > 512 ? 512 : loop->exposure_band);
  const int32_t speed = ppl_auto_clamp((int32_t)loop->exposure_speed, 1, 256);
  int32_t missing, size, step;
  if (loop->wait) {
    --loop->wait;
    return 0;
  }
  missing = ppl_auto_missing(loop, level, clipped);
  size = missing < 0 ? -missing : missing;
  if (size <= (loop->settled ? band : band / 2)) {
    if (loop->settled < 1000) ++loop->settled;
    return 0;
  }
  if (loop->settled > 16) { /* another scene: as at the start */
    loop->step = 256;
    loop->last = 0;
  }
  loop->settled = 0;
  if ((loop->last < 0 && missing > 0) || (loop->last > 0 && missing < 0)) {
    loop->step = loop->step / 2 < 2 ? 2 : loop->step / 2;
    loop->along = 0;
  } else if (++loop->along > 12) { /* far off, or the scene has changed since */
    loop->step = loop->step > 256 ? 512 : loop->step * 2;
    loop->along = 0;
  }
  loop->last = missing;
  step = missing * speed / 256;
  if (!step) step = missing < 0 ? -1 : 1;
  loop->light = ppl_auto_clamp(loop->light + ppl_auto_clamp(step, -loop->step, loop->step), least, most);
  ppl_auto_split(loop);
  if (loop->exposure == exposure && loop->gain == gain) return 0;
  loop->wait = loop->delay;
  return 1;
}

/* One frame's balance. Whether the gains have changed. The first one is taken as it is. */
static inline int ppl_auto_step_balance(ppl_auto_loop* loop, const ppl_auto_balance* balance) {
  const uint32_t before[3] = {loop->rgb_gain[0], loop->rgb_gain[1], loop->rgb_gain[2]};
  const int32_t r = balance->r - loop->r, b = balance->b - loop->b;
  const int32_t size = (r < 0 ? -r : r) > (b < 0 ? -b : b) ? (r < 0 ? -r : r) : (b < 0 ? -b : b);
  const int32_t band = (int32_t)(loop->balance_band > 512 ? 512 : loop->balance_band);
  if (!loop->balanced) {
    loop->r = balance->r;
    loop->b = balance->b;
    loop->balanced = 1;
  } else {
    const int64_t speed = ppl_auto_clamp((int32_t)loop->balance_speed, 1, 256);
    const int64_t parts = 256 * (256 + (int64_t)(balance->spread > 8192 ? 8192 : balance->spread));
    int32_t by_r, by_b;
    if (size <= (loop->balance_settled ? band : band / 2)) {
      loop->balance_settled = 1;
      return 0;
    }
    loop->balance_settled = 0;
    by_r = (int32_t)(r * speed * 256 / parts);
    by_b = (int32_t)(b * speed * 256 / parts);
    loop->r += by_r ? by_r : (r > 0) - (r < 0);
    loop->b += by_b ? by_b : (b > 0) - (b < 0);
  }
  ppl_auto_gains(loop->r, loop->b, loop->rgb_gain);
  return before[0] != loop->rgb_gain[0] || before[1] != loop->rgb_gain[1] || before[2] != loop->rgb_gain[2];
}

/* Both, from a sample of the frame: PPL_AUTO_..._CHANGED, added. A sample in which the light can't be found leaves the
 * balance. */
static inline int ppl_auto_step(ppl_auto_loop* loop, const ppl_auto_curve* curve, ppl_auto_sample* sample) {
  ppl_auto_balance balance;
  int changed = 0;
  if (sample->blocks && ppl_auto_step_exposure(loop, ppl_auto_level(sample), ppl_auto_clipped(sample)))
    changed |= PPL_AUTO_EXPOSURE_CHANGED;
  if (ppl_auto_white(curve, sample, &balance) && ppl_auto_step_balance(loop, &balance))
    changed |= PPL_AUTO_BALANCE_CHANGED;
  return changed;
}

/* ---- Lens shading ----------------------------------------------------------------------------------------------- */

/* What ppl_set_lens_correction takes. */
typedef struct ppl_auto_lens {
  int32_t origin_x, origin_y, f1, f1_rshift_count, f2, f2_rshift_count; /* its arguments of these names */
  uint32_t corner; /* the factor at the furthest corner, 8192 for 1.0 */
} ppl_auto_lens;

/* The largest shift from 13 to 63 at which the coefficient v / 2^exponent stays within 16 bits; false if there is
 * none. */
static inline int ppl_auto_coefficient(int64_t v, int32_t exponent, int32_t* f, int32_t* shift) {
  int32_t s = exponent > 63 ? 63 : exponent;
  for (; s >= 13; --s) {
    const int32_t down = exponent - s;
    const int64_t half = down ? (int64_t)1 << (down - 1) : 0, value = (v + half) >> down;
    if (value >= -65535 && value <= 65535) {
      *f = (int32_t)value;
      *shift = s;
      return 1;
    }
  }
  return 0;
}

/* The squared distance of an area's middle from the centre: 4096 at the furthest corner. 32 areas across, 24 down. */
static inline int64_t ppl_auto_lens_distance(uint32_t area, uint32_t width, uint32_t height, int64_t x0,
                                             int64_t y0, int64_t furthest) {
  const int64_t x = (int64_t)(2 * (area % 32) + 1) * width / 64 - x0;
  const int64_t y = (int64_t)(2 * (area / 32) + 1) * height / 48 - y0;
  return (x * x + y * y) * 4096 / furthest;
}

/* The light of the 32 x 24 areas, and the brightest; 0 where one is dark or cut. */
static inline uint32_t ppl_auto_lens_areas(const uint8_t* raw, uint32_t width, uint32_t height,
                                           uint32_t stride, const uint32_t* black_b_gb_gr_r,
                                           uint32_t* light) {
  uint32_t brightest = 0, area, x, y, rgb[3];
  for (area = 0; area < 768; ++area) {
    const uint32_t left = area % 32 * width / 32 & ~3u, right = (area % 32 + 1) * width / 32 & ~3u;
    const uint32_t top = area / 32 * height / 24 & ~3u, bottom = (area / 32 + 1) * height / 24 & ~3u;
    uint64_t sum = 0;
    uint32_t blocks = 0, cut = 0;
    for (y = top; y + 4 <= bottom; y += 4)
      for (x = left; x + 4 <= right; x += 4) {
        if (ppl_auto_block(raw + (uint64_t)y * stride + x, stride, black_b_gb_gr_r, rgb)) {
          ++cut;
        } else {
          sum += rgb[0] + 2 * rgb[1] + rgb[2];
          ++blocks;
        }
      }
    if (!blocks || cut * 4 > blocks) return 0;
    light[area] = (uint32_t)(sum * 64 / blocks); /* 0 to 4080, 6 fraction bits */
    if (light[area] < 16 * 16 * 64) return 0;
    if (light[area] > brightest) brightest = light[area];
  }
  return brightest;
}

/* The centre of the shading: the top of the paraboloid that fits the areas best; the frame's middle if the light falls
 * by less than a sixtieth, or if the top lies in the outer quarters. */
static inline void ppl_auto_lens_centre(const uint32_t* light, uint32_t width, uint32_t height,
                                        uint32_t brightest, int64_t* x0, int64_t* y0) {
  int64_t sum_xi = 0, sum_xx = 0, sum_yi = 0, sum_yy = 0, sum_p = 0, sum_i = 0, sum_pi = 0, sum_pp = 0, bow;
  int64_t furthest = 0;
  uint32_t area;
  *x0 = width / 2;
  *y0 = height / 2;
  for (area = 0; area < 768; ++area) {
    /* In eighths of a sample from the middle: on this grid x, y and the squared distance are independent. */
    const int64_t x = ((int64_t)(2 * (area % 32) + 1) - 32) * width / 8;
    const int64_t y = ((int64_t)(2 * (area / 32) + 1) - 24) * height / 6;
    const int64_t i = light[area], p = (x * x + y * y) >> 10;
    sum_xi += x * i;
    sum_xx += x * x;
    sum_yi += y * i;
    sum_yy += y * y;
    sum_p += p;
    sum_i += i;
    sum_pi += p * i;
    sum_pp += p * p;
    if (p > furthest) furthest = p;
  }
  /* light = ... + slope x + bow p, with 20 and 16 fraction bits; the top lies at x = -slope * 1024 / (2 bow). */
  bow = (sum_pi - sum_p * sum_i / 768) * 65536 / (sum_pp - sum_p * sum_p / 768);
  if (-bow * furthest >> 16 >= brightest / 64) {
    const int64_t x = -(sum_xi * ((int64_t)1 << 20) / sum_xx) * 32 / bow;
    const int64_t y = -(sum_yi * ((int64_t)1 << 20) / sum_yy) * 32 / bow;
    if (x > -2 * (int64_t)width && x < 2 * (int64_t)width && y > -2 * (int64_t)height &&
        y < 2 * (int64_t)height) {
      *x0 += (x >= 0 ? x + 4 : x - 4) / 8;
      *y0 += (y >= 0 ? y + 4 : y - 4) / 8;
    }
  }
}

/* The correction that makes a flat frame flat: a picture of an evenly lit white surface (or through a white sheet over
 * the lens), neither dark nor cut, raw 8-bit samples as the library takes them. Black levels as they were subtracted
 * from the samples before the library sees them; 0 if the library itself is to subtract them, since it corrects shading
 * first. `scratch` has 768 words.
 *
 * The polynomial in the squared distance from the centre that fits 1 / light of 32 x 24 areas best. False, and nothing
 * written, for a frame below 128 x 96 or above 2048 x 2048, with areas that are dark (below 16), cut, or below a
 * quarter of the brightest. */
static inline int ppl_auto_fit_lens(const uint8_t* raw, uint32_t width, uint32_t height, uint32_t stride,
                                    uint32_t black_b, uint32_t black_gb, uint32_t black_gr, uint32_t black_r,
                                    uint32_t* scratch, ppl_auto_lens* lens) {
  const uint32_t black[4] = {black_b, black_gb, black_gr, black_r};
  uint32_t brightest, area;
  int64_t x0, y0, far_x, far_y, furthest, m = 0, beta = 0, mean = 0, s11 = 0, s12 = 0, s1y = 0, s22 = 0,
                                          s2y = 0;
  int64_t alpha, a, b, v, q, corner;
  int32_t extra, f1, shift1, f2, shift2;
  if (width < 128 || height < 96 || width > 2048 || height > 2048) return 0;
  brightest = ppl_auto_lens_areas(raw, width, height, stride, black, scratch);
  if (!brightest) return 0;
  for (area = 0; area < 768; ++area)
    if (scratch[area] * 4 < brightest) return 0;
  ppl_auto_lens_centre(scratch, width, height, brightest, &x0, &y0);
  far_x = x0 > (int64_t)width - x0 ? x0 : (int64_t)width - x0;
  far_y = y0 > (int64_t)height - y0 ? y0 : (int64_t)height - y0;
  furthest = far_x * far_x + far_y * far_y;

  /* 1 / light over the distance z, by polynomials that are orthogonal on the areas: z - m and
   * w - beta - alpha (z - m), where w = z * z / 256. */
  for (area = 0; area < 768; ++area) {
    const int64_t z = ppl_auto_lens_distance(area, width, height, x0, y0, furthest);
    m += z;
    beta += z * z >> 8;
    mean += ((int64_t)brightest << 16) / scratch[area];
  }
  m = (m + 384) / 768;
  beta = (beta + 384) / 768;
  mean = (mean + 384) / 768;
  for (area = 0; area < 768; ++area) {
    const int64_t z = ppl_auto_lens_distance(area, width, height, x0, y0, furthest);
    s11 += (z - m) * (z - m);
    s12 += (z - m) * ((z * z >> 8) - beta);
    s1y += (z - m) * (((int64_t)brightest << 16) / scratch[area] - mean);
  }
  alpha = s12 * 256 / s11; /* 8 fraction bits */
  for (area = 0; area < 768; ++area) {
    const int64_t z = ppl_auto_lens_distance(area, width, height, x0, y0, furthest);
    const int64_t second = (z * z >> 8) - beta - (alpha * (z - m) >> 8);
    s22 += second * second;
    s2y += second * (((int64_t)brightest << 16) / scratch[area] - mean);
  }
  /* Written out as a + b z + v w, with 32 fraction bits. */
  v = s2y * 65536 / s22;
  b = s1y * 65536 / s11 - (v * alpha >> 8);
  a = mean * 65536 - b * m - v * beta;
  if (a < (int64_t)1 << 31) return 0;

  /* f1 / 2^shift1 = b / a * 4096 / furthest; f2 / 2^shift2 = -v / a * 65536 / furthest^2. */
  q = b * ((int64_t)1 << 26) / (a >> 16);
  if (!ppl_auto_coefficient(q * ((int64_t)1 << 22) / furthest, 52, &f1, &shift1)) return 0;
  q = -v * ((int64_t)1 << 30) / (a >> 16) * ((int64_t)1 << 22) / furthest;
  for (extra = 26; extra && (q < 0 ? -q : q) >> (62 - extra); --extra) {
  }
  if (!ppl_auto_coefficient(q * ((int64_t)1 << extra) / furthest, 52 + extra, &f2, &shift2)) return 0;
  corner = 8192 + (b * 4096 + v * 65536) / (a >> 13);
  if (corner < 4096 || corner > 32000) return 0;
  lens->origin_x = (int32_t)x0;
  lens->origin_y = (int32_t)y0;
  lens->f1 = f1;
  lens->f1_rshift_count = shift1;
  lens->f2 = f2;
  lens->f2_rshift_count = shift2;
  lens->corner = (uint32_t)corner;
  return 1;
}

#endif /* PPL_AUTO_H */
