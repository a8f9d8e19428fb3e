/* From what a sensor delivers to what ppl takes: any Bayer phase, 8 to 16 bits in words or MIPI-packed, to aligned rows
 * of 8-bit samples that begin with B, Gb / Gr, R; and frames larger than the library accepts, in overlapping parts.
 *
 * Constants and inline functions, nothing to link: C99 or C++, integers only, no memory of its own, fit for kernel
 * code.
 *
 *     struct ppl_sensor_frame sensor = {1280, 960, 0, PPL_RGGB, PPL_WORDS_LITTLE, 10};
 *     ppl_prepare_frame(&sensor, raw, PPL_TO_8_ROUND, 0, mosaic, 1280);
 *     BaylorToI420MMX(context, mosaic, picture, 1280, 960);
 */
#ifndef PPL_PREPARE_H
#define PPL_PREPARE_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "ppl_qualities.h"

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define PPL_PREPARE_SSE2 1
#elif defined(__aarch64__) && defined(__ARM_NEON)
#include <arm_neon.h>
#define PPL_PREPARE_NEON 1
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- One frame --------------------------------------------------------------------------------------------------- */

/* The first two samples of the sensor's first two rows. The picture begins at its first B site: one column further on
 * for GBRG and RGGB, one row further down for GRBG and RGGB. The column or row that is then missing at the far end is
 * the frame mirrored about its last one, which keeps the colours in their places. */
enum ppl_pattern { PPL_BGGR, PPL_GBRG, PPL_GRBG, PPL_RGGB };
/* The column of the first B site: 0 or 1. */
static inline uint32_t ppl_pattern_column(int pattern) {
  return pattern == PPL_GBRG || pattern == PPL_RGGB;
}
/* The row of the first B site: 0 or 1. */
static inline uint32_t ppl_pattern_row(int pattern) {
  return pattern == PPL_GRBG || pattern == PPL_RGGB;
}

/* How samples lie in memory. Words hold a sample in their low bits; a word beyond the largest sample counts as the
 * largest. Packed rows are whole groups: four samples in 5 bytes (high bits of each, then the low two of all four, the
 * first lowest) or two in 3 (high bits of both, then the low four of both, the first lowest). */
enum ppl_sample_layout { PPL_BYTES, PPL_WORDS_LITTLE, PPL_WORDS_BIG, PPL_PACKED_10, PPL_PACKED_12 };

/* To 8 bits: dropping the low bits; rounding to nearest, which stops at 255; or by a table with an entry for every
 * sample. Samples of 8 bits change by a table alone. */
enum ppl_to_8 { PPL_TO_8_SHIFT, PPL_TO_8_ROUND, PPL_TO_8_TABLE };

/* A frame as the sensor delivers it. */
struct ppl_sensor_frame {
  uint32_t width, height; /* samples and rows, 2 or more each */
  uint32_t stride;        /* bytes from row to row; 0: rows back to back */
  int pattern;            /* enum ppl_pattern */
  int layout;             /* enum ppl_sample_layout */
  uint32_t bits;          /* words: 8 to 16; otherwise that of the layout, or 0 */
};

/* The bits of a sample, whatever the layout. */
static inline uint32_t ppl_sensor_bits(const struct ppl_sensor_frame* f) {
  return f->layout == PPL_BYTES       ? 8
         : f->layout == PPL_PACKED_10 ? 10
         : f->layout == PPL_PACKED_12 ? 12
                                      : f->bits;
}
/* The bytes that a row of samples fills. */
static inline uint32_t ppl_sensor_row_bytes(const struct ppl_sensor_frame* f) {
  switch (f->layout) {
    case PPL_BYTES:
      return f->width;
    case PPL_PACKED_10:
      return (f->width + 3) / 4 * 5;
    case PPL_PACKED_12:
      return (f->width + 1) / 2 * 3;
    default:
      return 2 * f->width;
  }
}
/* Bytes from row to row, where the frame leaves it open too. */
static inline uint32_t ppl_sensor_stride(const struct ppl_sensor_frame* f) {
  return f->stride != 0 ? f->stride : ppl_sensor_row_bytes(f);
}
/* The bytes of a frame: what a call reads. */
static inline uint64_t ppl_sensor_frame_bytes(const struct ppl_sensor_frame* f) {
  return f->height == 0 ? 0 : (uint64_t)ppl_sensor_stride(f) * (f->height - 1) + ppl_sensor_row_bytes(f);
}

/* Why a frame can't be prepared. */
enum ppl_prepare_reason {
  PPL_PREPARE_FINE,
  PPL_PREPARE_SIZE,
  PPL_PREPARE_STRIDE,
  PPL_PREPARE_PATTERN,
  PPL_PREPARE_LAYOUT,
  PPL_PREPARE_BITS,
  PPL_PREPARE_TABLE,
  PPL_PREPARE_REGION
};
/* Whether the frame makes sense: PPL_PREPARE_FINE, or what is wrong with it. */
static inline int ppl_sensor_frame_reason(const struct ppl_sensor_frame* f) {
  if (f->width < 2 || f->height < 2 || f->width > 65535 || f->height > 65535) return PPL_PREPARE_SIZE;
  if (f->pattern < PPL_BGGR || f->pattern > PPL_RGGB) return PPL_PREPARE_PATTERN;
  if (f->layout < PPL_BYTES || f->layout > PPL_PACKED_12) return PPL_PREPARE_LAYOUT;
  if (ppl_sensor_bits(f) < 8 || ppl_sensor_bits(f) > 16 || (f->bits != 0 && f->bits != ppl_sensor_bits(f)))
    return PPL_PREPARE_BITS;
  if (ppl_sensor_stride(f) < ppl_sensor_row_bytes(f)) return PPL_PREPARE_STRIDE;
  return PPL_PREPARE_FINE;
}
/* A reason as a sentence that says what would be right. */
static inline const char* ppl_prepare_sentence(int reason) {
  switch (reason) {
    case PPL_PREPARE_FINE:
      return "the frame can be prepared";
    case PPL_PREPARE_SIZE:
      return "width and height are 2 to 65535";
    case PPL_PREPARE_STRIDE:
      return "the stride is at least the bytes of a row";
    case PPL_PREPARE_PATTERN:
      return "the pattern is bggr, gbrg, grbg or rggb";
    case PPL_PREPARE_LAYOUT:
      return "samples are bytes, words of either byte order, or MIPI-packed with 10 or 12 bits";
    case PPL_PREPARE_BITS:
      return "words hold 8 to 16 bits; bytes hold 8, packed samples 10 or 12";
    case PPL_PREPARE_TABLE:
      return "the way to 8 bits is by shift, by rounding, or by a table";
    default:
      return "the region lies inside the frame, and its rows fit the stride";
  }
}

/* One sample, as it was delivered. */
static inline uint32_t ppl_sensor_sample(int layout, const uint8_t* row, uint32_t x) {
  switch (layout) {
    case PPL_BYTES:
      return row[x];
    case PPL_WORDS_LITTLE:
      return row[2 * (size_t)x] | (uint32_t)row[2 * (size_t)x + 1] << 8;
    case PPL_WORDS_BIG:
      return row[2 * (size_t)x + 1] | (uint32_t)row[2 * (size_t)x] << 8;
    case PPL_PACKED_10: {
      const uint8_t* const group = row + (size_t)(x / 4) * 5;
      return (uint32_t)group[x & 3] << 2 | (group[4] >> 2 * (x & 3) & 3u);
    }
    default: {
      const uint8_t* const group = row + (size_t)(x / 2) * 3;
      return (uint32_t)group[x & 1] << 4 | (group[2] >> 4 * (x & 1) & 15u);
    }
  }
}
/* One sample as 8 bits. */
static inline uint8_t ppl_sample_to_8(uint32_t sample, uint32_t bits, int to_8, const uint8_t* table) {
  const uint32_t largest = (1u << bits) - 1, low = bits - 8;
  if (sample > largest) sample = largest;
  if (to_8 == PPL_TO_8_TABLE) return table[sample];
  if (to_8 == PPL_TO_8_ROUND && low > 0) sample += 1u << (low - 1);
  sample >>= low;
  return (uint8_t)(sample > 255 ? 255 : sample);
}

#if defined(PPL_PREPARE_SSE2)
/* Eight words to the 16-bit lanes that packing with saturation brings to 8 bits. The mean of a lane and 0, rounded up,
 * is half of it and 1: the bit that was cut off last rounds. Only lanes that are not shifted can be too large for the
 * saturation, which takes them as signed. */
static inline __m128i ppl_words_to_8(const uint8_t* from, __m128i largest, __m128i shift, int swap, int clamp,
                                     int round) {
  __m128i v = _mm_loadu_si128((const __m128i*)(const void*)from);
  if (swap) v = _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
  if (clamp) v = _mm_sub_epi16(v, _mm_subs_epu16(v, largest));
  v = _mm_srl_epi16(v, shift);
  return round ? _mm_avg_epu16(v, _mm_setzero_si128()) : v;
}
/* The last words are taken with some before them once more. */
#define PPL_WORDS_LOOP(swap, clamp, round)                                       \
  for (;;) {                                                                     \
    for (; i + 32 <= count; i += 32) {                                           \
      const uint8_t* const at = from + 2 * (size_t)i;                            \
      const __m128i a = ppl_words_to_8(at, largest, n, swap, clamp, round);      \
      const __m128i b = ppl_words_to_8(at + 16, largest, n, swap, clamp, round); \
      const __m128i c = ppl_words_to_8(at + 32, largest, n, swap, clamp, round); \
      const __m128i d = ppl_words_to_8(at + 48, largest, n, swap, clamp, round); \
      _mm_storeu_si128((__m128i*)(void*)(out + i), _mm_packus_epi16(a, b));      \
      _mm_storeu_si128((__m128i*)(void*)(out + i + 16), _mm_packus_epi16(c, d)); \
    }                                                                            \
    if (i == count || count < 32) break;                                         \
    i = count - 32;                                                              \
  }
static inline uint32_t ppl_words_run(const uint8_t* from, uint32_t count, uint32_t bits, int swap, int round,
                                     uint8_t* out) {
  const uint32_t shift = bits - 8 - (round ? 1 : 0);
  const __m128i largest = _mm_set1_epi16((short)((1u << bits) - 1)), n = _mm_cvtsi32_si128((int)shift);
  uint32_t i = 0;
  if (shift == 0) {
    PPL_WORDS_LOOP(swap, 1, round)
  } else if (round) {
    if (swap) {
      PPL_WORDS_LOOP(1, 0, 1)
    } else {
      PPL_WORDS_LOOP(0, 0, 1)
    }
  } else if (swap) {
    PPL_WORDS_LOOP(1, 0, 0)
  } else {
    PPL_WORDS_LOOP(0, 0, 0)
  }
  return i;
}
#undef PPL_WORDS_LOOP
#elif defined(PPL_PREPARE_NEON)
static inline uint32_t ppl_words_run(const uint8_t* from, uint32_t count, uint32_t bits, int swap, int round,
                                     uint8_t* out) {
  const uint16x8_t largest = vdupq_n_u16((uint16_t)((1u << bits) - 1));
  const int16x8_t right = vdupq_n_s16((int16_t)(8 - (int)bits));
  uint32_t i, k;
  for (i = 0; i + 16 <= count; i += 16) {
    uint16x8_t v[2];
    for (k = 0; k < 2; ++k) {
      v[k] = vreinterpretq_u16_u8(vld1q_u8(from + 2 * (size_t)i + 16 * k));
      if (swap) v[k] = vreinterpretq_u16_u8(vrev16q_u8(vreinterpretq_u8_u16(v[k])));
      v[k] = vminq_u16(v[k], largest);
      v[k] = round ? vrshlq_u16(v[k], right) : vshlq_u16(v[k], right);
    }
    vst1q_u8(out + i, vcombine_u8(vqmovn_u16(v[0]), vqmovn_u16(v[1])));
  }
  return i;
}
#else
/* As many of the words of a row as vector instructions take at once, to 8 bits; how many that were. */
static inline uint32_t ppl_words_run(const uint8_t* from, uint32_t count, uint32_t bits, int swap, int round,
                                     uint8_t* out) {
  (void)from, (void)count, (void)bits, (void)swap, (void)round, (void)out;
  return 0;
}
#endif

/* Whole groups of 10-bit samples: the four high bytes as they are. Rounding adds the higher of each sample's low bits,
 * but not to 255. */
static inline void ppl_packed_10_run(const uint8_t* group, uint32_t groups, int round, uint8_t* out) {
  uint32_t i;
  for (i = 0; !round && i < groups; ++i) memcpy(out + 4 * (size_t)i, group + 5 * (size_t)i, 4);
  for (; i < groups; ++i) {
    const uint8_t* const from = group + 5 * (size_t)i;
    uint32_t k;
    for (k = 0; k < 4; ++k)
      out[4 * (size_t)i + k] =
          (uint8_t)(from[k] + ((uint32_t)from[4] >> (2 * k + 1) & (uint32_t)(from[k] != 255) & 1u));
  }
}
/* Whole groups of 12-bit samples. */
static inline void ppl_packed_12_run(const uint8_t* group, uint32_t groups, int round, uint8_t* out) {
  uint32_t i;
  for (i = 0; i < groups; ++i, group += 3, out += 2) {
    const uint32_t a = group[0], b = group[1], low = round ? group[2] : 0;
    out[0] = (uint8_t)(a + ((low >> 3 & 1u) & (uint32_t)(a != 255)));
    out[1] = (uint8_t)(b + ((low >> 7) & (uint32_t)(b != 255)));
  }
}
/* Little-endian words by a table. */
static inline void ppl_words_table_run(const uint8_t* from, uint32_t count, uint32_t bits,
                                       const uint8_t* table, uint8_t* out) {
  const uint32_t largest = (1u << bits) - 1;
  uint32_t i;
  for (i = 0; i < count; ++i, from += 2) {
    const uint32_t s = from[0] | (uint32_t)from[1] << 8;
    out[i] = table[s < largest ? s : largest];
  }
}

/* Samples first .. first + count - 1 of a row, all of them inside it, by the rule of the two functions above. */
static inline void ppl_prepare_run(const struct ppl_sensor_frame* f, const uint8_t* row, uint32_t first,
                                   uint32_t count, int to_8, const uint8_t* table, uint8_t* out) {
  const uint32_t bits = ppl_sensor_bits(f);
  const int linear = to_8 != PPL_TO_8_TABLE, round = to_8 == PPL_TO_8_ROUND && bits > 8;
  uint32_t i = 0;
  if (f->layout == PPL_BYTES && linear) {
    memcpy(out, row + first, count);
    return;
  }
  if ((f->layout == PPL_WORDS_LITTLE || f->layout == PPL_WORDS_BIG) && linear) {
    i = ppl_words_run(row + 2 * (size_t)first, count, bits, f->layout == PPL_WORDS_BIG, round, out);
  } else if (f->layout == PPL_WORDS_LITTLE) {
    ppl_words_table_run(row + 2 * (size_t)first, count, bits, table, out);
    return;
  } else if ((f->layout == PPL_PACKED_10 || f->layout == PPL_PACKED_12) && linear) {
    const uint32_t group = f->layout == PPL_PACKED_10 ? 4 : 2, bytes = f->layout == PPL_PACKED_10 ? 5 : 3;
    for (; i < count && (first + i) % group != 0; ++i)
      out[i] = ppl_sample_to_8(ppl_sensor_sample(f->layout, row, first + i), bits, to_8, table);
    (group == 4 ? ppl_packed_10_run : ppl_packed_12_run)(row + (size_t)((first + i) / group) * bytes,
                                                         (count - i) / group, round, out + i);
    i += (count - i) / group * group;
  }
  for (; i < count; ++i)
    out[i] = ppl_sample_to_8(ppl_sensor_sample(f->layout, row, first + i), bits, to_8, table);
}

/* A part of the picture: `width` columns and `height` rows from column x and row y on, counted from the first B site,
 * to rows out_stride bytes apart; what lies between a row's width and the stride is not written. The library wants
 * `out` at a multiple of 16. `table` has 2^bits entries and is read for PPL_TO_8_TABLE alone. PPL_PREPARE_FINE, or the
 * reason why nothing was written. */
static inline int ppl_prepare_region(const struct ppl_sensor_frame* f, const uint8_t* source, int to_8,
                                     const uint8_t* table, uint32_t x, uint32_t y, uint32_t width,
                                     uint32_t height, uint8_t* out, uint32_t out_stride) {
  const int reason = ppl_sensor_frame_reason(f);
  const uint32_t dx = ppl_pattern_column(f->pattern), dy = ppl_pattern_row(f->pattern);
  uint32_t r;
  if (reason != PPL_PREPARE_FINE) return reason;
  if (to_8 < PPL_TO_8_SHIFT || to_8 > PPL_TO_8_TABLE || (to_8 == PPL_TO_8_TABLE && table == 0))
    return PPL_PREPARE_TABLE;
  if (x > f->width || width > f->width - x || y > f->height || height > f->height - y || width > out_stride)
    return PPL_PREPARE_REGION;
  if (width == 0) return PPL_PREPARE_FINE;
  for (r = 0; r < height; ++r) {
    const uint32_t from = y + r + dy;
    const uint8_t* const row =
        source + (size_t)(from < f->height ? from : f->height - 2) * ppl_sensor_stride(f);
    uint8_t* const to = out + (size_t)r * out_stride;
    const int beyond = x + dx + width > f->width; /* by the last column */
    ppl_prepare_run(f, row, x + dx, beyond ? width - 1 : width, to_8, table, to);
    if (beyond) ppl_prepare_run(f, row, f->width - 2, 1, to_8, table, to + width - 1);
  }
  return PPL_PREPARE_FINE;
}

/* The whole frame: as many columns and rows as the sensor's. */
static inline int ppl_prepare_frame(const struct ppl_sensor_frame* f, const uint8_t* source, int to_8,
                                    const uint8_t* table, uint8_t* out, uint32_t out_stride) {
  return ppl_prepare_region(f, source, to_8, table, 0, 0, f->width, f->height, out, out_stride);
}

/* ---- Frames of any size, in parts ----------------------------------------------------------------------------------
 *
 * The library takes frames up to 2016 x 2048. A larger one is cut into parts that overlap by so much that what is kept
 * of each is, byte for byte, what one pass over the whole frame would have made. Each part is a frame call of its own:
 *
 *     n = ppl_plan_parts(2592, 1944, PPL_SIZE_SAME, parts, PPL_MOST_PARTS);
 *     for each part p:
 *       ppl_prepare_region(&sensor, raw, to_8, table, p->x, p->y, p->width, p->height, mosaic, p->width);
 *       ppl_set_lens_correction(context, p->width, p->height, origin_x - p->x, origin_y - p->y, lens, bytes, ...);
 *       BaylorToRGB24MMX(context, mosaic, part_picture, p->width, p->height);
 *       ppl_join_part(p, 2592, 1944, PPL_FORMAT_RGB24, PPL_SIZE_SAME, 0, 0, part_picture, picture);
 *
 * A part is worked on in a copy, because a call overwrites its source where the parts overlap. One context can take
 * all parts one after the other, or each its own at the same time; all need the same controls. With lens correction
 * each part needs its table: ppl_part_lens_bytes tells how large.
 *
 * Same and half size, all formats, any mirrors, every quality that makes a picture by road of blocks or cells (0, 1, 2,
 * 3, 10 to 13, 15). Contexts that work on parts of one frame must all be in the state of one that makes whole frames:
 * in qualities 0 and 1 that includes the flat colours that a frame of quality 10 or 11 has left in the slot.
 */

enum {
  PPL_PART_WIDTH = 1984,
  PPL_PART_HEIGHT = 2048,
  PPL_PART_MARGIN = 64,
  PPL_PART_ROWS_MARGIN = 24,
  PPL_MOST_PARTS = 64
};

/* One part of a frame. */
struct ppl_part {
  uint32_t x, y, width, height;                     /* the frame of its call, in the whole frame */
  uint32_t keep_x, keep_y, keep_width, keep_height; /* what is kept of it, in the whole frame */
};

/* One direction: part i of `count` keeps from cut i to cut i + 1; cuts lie at multiples of `step`. */
static inline uint32_t ppl_part_cut(uint32_t size, uint32_t count, uint32_t i, uint32_t step) {
  return i >= count ? size : (uint32_t)((uint64_t)(size / step) * i / count) * step;
}
/* How many parts one direction takes: of at most `most`, with `margin` overlap to either side; 0 if it can't be. */
static inline uint32_t ppl_parts_along(uint32_t size, uint32_t most, uint32_t margin, uint32_t step) {
  uint32_t count, i;
  if (size <= most) return 1;
  if (most < 2 * margin + step) return 0;
  for (count = 2; count <= PPL_MOST_PARTS; ++count) {
    int fits = 1;
    for (i = 0; i < count; ++i) {
      const uint32_t first = ppl_part_cut(size, count, i, step), end = ppl_part_cut(size, count, i + 1, step);
      if (end - first + (i > 0 ? margin : 0) + (i + 1 < count ? margin : 0) > most || end - first < margin)
        fits = 0;
    }
    if (fits) return count;
  }
  return 0;
}

/* ppl_plan_parts with parts of at most so many columns and rows. */
static inline uint32_t ppl_plan_parts_of(uint32_t width, uint32_t height, int size, uint32_t most_width,
                                         uint32_t most_height, struct ppl_part* parts, uint32_t room) {
  const uint32_t row_step = size == PPL_SIZE_HALF ? 4 : 2;
  const uint32_t columns = ppl_parts_along(width, most_width, PPL_PART_MARGIN, 64);
  const uint32_t rows = ppl_parts_along(height, most_height, PPL_PART_ROWS_MARGIN, 4);
  uint32_t i, j;
  if (size != PPL_SIZE_SAME && size != PPL_SIZE_HALF) return 0;
  if (width == 0 || height == 0 || width % (size == PPL_SIZE_HALF ? 64 : 32) != 0 || height % row_step != 0)
    return 0;
  if (columns == 0 || rows == 0 || columns * rows > room || columns * rows > PPL_MOST_PARTS) return 0;
  for (j = 0; j < rows; ++j) {
    for (i = 0; i < columns; ++i) {
      struct ppl_part* const p = parts + j * columns + i;
      p->keep_x = ppl_part_cut(width, columns, i, 64);
      p->keep_y = ppl_part_cut(height, rows, j, 4);
      p->keep_width = ppl_part_cut(width, columns, i + 1, 64) - p->keep_x;
      p->keep_height = ppl_part_cut(height, rows, j + 1, 4) - p->keep_y;
      p->x = p->keep_x - (i > 0 ? PPL_PART_MARGIN : 0);
      p->y = p->keep_y - (j > 0 ? PPL_PART_ROWS_MARGIN : 0);
      p->width = p->keep_x + p->keep_width + (i + 1 < columns ? PPL_PART_MARGIN : 0) - p->x;
      p->height = p->keep_y + p->keep_height + (j + 1 < rows ? PPL_PART_ROWS_MARGIN : 0) - p->y;
    }
  }
  return columns * rows;
}

/* The parts of a frame, rows of parts from the top; their number, or 0 where the frame has no exact picture of that
 * size (widths are multiples of 32 and heights even, of 64 and 4 for half size), or `room` is too small. */
static inline uint32_t ppl_plan_parts(uint32_t width, uint32_t height, int size, struct ppl_part* parts,
                                      uint32_t room) {
  return ppl_plan_parts_of(width, height, size, PPL_PART_WIDTH, PPL_PART_HEIGHT, parts, room);
}

/* The lens table of a part: at least so many bytes for ppl_set_lens_correction with the optical centre at
 * origin_x - x, origin_y - y. */
static inline uint64_t ppl_part_lens_bytes(const struct ppl_part* p, int32_t origin_y) {
  const int64_t above = (int64_t)origin_y - p->y, below = (int64_t)p->height - above;
  return 2 * (uint64_t)p->width * (uint64_t)((above > below ? above : below) + 1);
}

/* Copies a rectangle of bytes, rows from_pitch and to_pitch apart. */
static inline void ppl_copy_rectangle(uint8_t* to, size_t to_pitch, const uint8_t* from, size_t from_pitch,
                                      size_t bytes, size_t rows) {
  size_t r;
  for (r = 0; r < rows; ++r) memcpy(to + r * to_pitch, from + r * from_pitch, bytes);
}

/* Puts what is kept of a part's picture into the whole frame's, `width` x `height` samples of the mosaic. Both mirrors
 * are those that the context had. */
static inline void ppl_join_part(const struct ppl_part* p, uint32_t width, uint32_t height, int format,
                                 int size, int h_mirror, int v_mirror, const uint8_t* part,
                                 uint8_t* picture) {
  const uint32_t d = size == PPL_SIZE_HALF;
  const size_t frame_w = width >> d, frame_h = height >> d, part_w = p->width >> d, part_h = p->height >> d;
  const size_t w = p->keep_width >> d, h = p->keep_height >> d;
  /* Where the kept rectangle begins, in the part's picture and in the frame's, in the order of memory. */
  const int upwards = ppl_format_is_rgb((uint32_t)format) == !v_mirror;
  size_t x0 = (p->keep_x - p->x) >> d, y0 = (p->keep_y - p->y) >> d, x1 = p->keep_x >> d, y1 = p->keep_y >> d;
  if (h_mirror) x0 = part_w - x0 - w, x1 = frame_w - x1 - w;
  if (upwards) y0 = part_h - y0 - h, y1 = frame_h - y1 - h;
  if (format == PPL_FORMAT_I420) {
    const uint8_t* from = part + part_w * part_h;
    uint8_t* to = picture + frame_w * frame_h;
    int plane;
    ppl_copy_rectangle(picture + y1 * frame_w + x1, frame_w, part + y0 * part_w + x0, part_w, w, h);
    for (plane = 0; plane < 2; ++plane) {
      ppl_copy_rectangle(to + y1 / 2 * (frame_w / 2) + x1 / 2, frame_w / 2,
                         from + y0 / 2 * (part_w / 2) + x0 / 2, part_w / 2, w / 2, h / 2);
      from += part_w * part_h / 4;
      to += frame_w * frame_h / 4;
    }
  } else {
    const size_t pixel = ppl_format_pixel_bytes((uint32_t)format);
    ppl_copy_rectangle(picture + pixel * (y1 * frame_w + x1), pixel * frame_w,
                       part + pixel * (y0 * part_w + x0), pixel * part_w, pixel * w, h);
  }
}

/* Statistics of the whole frame from those of its parts: every mean weighs as much as the 2 x 2 cells that it is of,
 * and counts are brought to the size of the frame, since cells of the overlaps were seen twice. */
struct ppl_part_means {
  uint64_t sum[3], weight;          /* of means of the whole part */
  uint64_t counted_sum[3], counted; /* of means over cells that passed a range */
  uint64_t cells;                   /* of all parts */
};
/* Before a frame's first part. */
static inline void ppl_part_means_clear(struct ppl_part_means* m) {
  memset(m, 0, sizeof *m);
}
/* whole: ppl_rgb_means_whole_frame after the part's call; ranged and count: qualified means with their number of cells,
 * or those for exposure with theirs. */
static inline void ppl_part_means_add(struct ppl_part_means* m, const struct ppl_part* p,
                                      const uint32_t* whole, const uint32_t* ranged, uint32_t count) {
  const uint64_t cells = (uint64_t)p->width * p->height / 4;
  int i;
  for (i = 0; i < 3; ++i) {
    m->sum[i] += whole[i] * cells;
    m->counted_sum[i] += (uint64_t)ranged[i] * count;
  }
  m->weight += cells;
  m->counted += count;
  m->cells += cells;
}
/* Means as the library gives them, in 1/256 of a sample step; zeros of nothing. */
static inline void ppl_part_means_total(const struct ppl_part_means* m, uint32_t width, uint32_t height,
                                        uint32_t whole[3], uint32_t ranged[3], uint32_t* count) {
  int i;
  for (i = 0; i < 3; ++i) {
    whole[i] = (uint32_t)(m->weight != 0 ? (m->sum[i] + m->weight / 2) / m->weight : 0);
    ranged[i] = (uint32_t)(m->counted != 0 ? (m->counted_sum[i] + m->counted / 2) / m->counted : 0);
  }
  *count = (uint32_t)(m->cells != 0 ? m->counted * ((uint64_t)width * height / 4) / m->cells : 0);
}

#ifdef __cplusplus
}
#endif

#endif /* PPL_PREPARE_H */
