/* The qualities of ppl's Bayer frames as a table: which road each takes, which formats and sizes it runs in, and where
 * a whole picture comes of it.
 *
 * Constants and inline functions, nothing to link: C99 or C++14 and later, integers only, fit for kernel code. The
 * library builds its own table on this one, so the two cannot differ; tests hold both to what frames do. */
#ifndef PPL_QUALITIES_H
#define PPL_QUALITIES_H

#include <stdint.h>

#if defined(__cplusplus) && __cplusplus >= 201703L
#define PPL_HELPER_TABLE inline constexpr
#define PPL_HELPER_INLINE static constexpr
#elif defined(__cplusplus)
#define PPL_HELPER_TABLE static constexpr
#define PPL_HELPER_INLINE static constexpr
#else
#define PPL_HELPER_TABLE static const
#define PPL_HELPER_INLINE static inline
#endif
#if defined(__GNUC__)
#define PPL_HELPER_UNUSED __attribute__((unused))
#else
#define PPL_HELPER_UNUSED
#endif

/* What a Bayer frame is turned into. */
enum ppl_format { PPL_FORMAT_I420, PPL_FORMAT_YUYV, PPL_FORMAT_UYVY, PPL_FORMAT_RGB24, PPL_FORMAT_RGB32 };
enum { PPL_FORMATS = 5, PPL_QUALITIES = 16, PPL_QUALITY_DEFAULT = 15 };

/* Sizes of the picture, as ppl_set_decimation takes them. A set of them has bit PPL_SIZE_BIT(size) for each. */
enum ppl_size { PPL_SIZE_DOUBLE = -1, PPL_SIZE_SAME = 0, PPL_SIZE_HALF = 1, PPL_SIZE_QUARTER = 2 };
/* The bit of a size in a set of sizes. */
#define PPL_SIZE_BIT(size) (1u << ((size) + 1))

/* How the library works on a frame. */
enum ppl_road {
  PPL_ROAD_COUNTED, /* not at all: the frame is only counted, source and destination stay as they are */
  PPL_ROAD_RAW, /* the samples as they are: no correction, no mirror, no statistics; the call answers false */
  PPL_ROAD_CELLS, /* each 2 x 2 cell from its own four samples */
  PPL_ROAD_WALK   /* block by block, with neighbourhoods */
};

/* Which statistics a frame gathers. */
enum ppl_statistics {
  PPL_STATISTICS_NONE = 0,
  PPL_STATISTICS_FRAME = 1,   /* means of the whole frame */
  PPL_STATISTICS_WINDOWS = 2, /* means of the 8 x 6 grid and of all outside it */
  PPL_STATISTICS_RANGES = 4   /* qual and qAE means and counts, histograms */
};

/* A row of the table. */
struct ppl_quality_row {
  uint8_t quality;             /* the row's place in the table */
  uint8_t road;                /* enum ppl_road */
  uint8_t reads_medium_filter; /* ppl_medium_filter_enabled makes a difference */
  uint8_t statistics;          /* of enum ppl_statistics */
  /* By format: the sizes at which it does more than count the frame ... */
  uint8_t runs[PPL_FORMATS];
  /* ... and those at which the whole picture is written as a picture of that format and size: not at double size with
   * rows that keep what the buffer held, without the conversion to RGB, or half finished. With the medium filter off,
   * and on. */
  uint8_t whole[PPL_FORMATS], whole_medium[PPL_FORMATS];
};

/* Sets of sizes: D double, S same, H half, Q quarter. */
#define PPL_SET_S 2u
#define PPL_SET_SH 6u
#define PPL_SET_DSH 7u
#define PPL_SET_DSHQ 15u
/* Columns: I420, YUYV, UYVY, RGB24, RGB32. */
#define PPL_SET_NOWHERE \
  { 0, 0, 0, 0, 0 }
#define PPL_SET_ALIKE(set) \
  { set, set, set, set, set }
/* What the road of blocks makes whole where nothing is left out: RGB32 has no double size. */
#define PPL_SET_WALK \
  { PPL_SET_DSH, PPL_SET_DSH, PPL_SET_DSH, PPL_SET_DSH, PPL_SET_SH }
/* YUYV leaves rows between out. */
#define PPL_SET_WALK_NO_YUYV \
  { PPL_SET_DSH, PPL_SET_SH, PPL_SET_DSH, PPL_SET_DSH, PPL_SET_SH }
/* Rows between are made in RGB24 alone. */
#define PPL_SET_WALK_NO_GAPS \
  { PPL_SET_SH, PPL_SET_SH, PPL_SET_SH, PPL_SET_DSH, PPL_SET_SH }
#define PPL_SET_RAW \
  { PPL_SET_SH, PPL_SET_SH, PPL_SET_SH, PPL_SET_S, PPL_SET_SH }
#define PPL_SET_GREY(set) \
  { set, 0, 0, set, 0 }
/* Quality 15: not in RGB32; at double size RGB24 is not converted, and YUYV lacks rows. */
#define PPL_SET_15_RUNS \
  { PPL_SET_DSHQ, PPL_SET_DSHQ, PPL_SET_DSHQ, PPL_SET_DSHQ, 0 }
#define PPL_SET_15_WHOLE \
  { PPL_SET_DSH, PPL_SET_SH, PPL_SET_DSH, PPL_SET_SH, 0 }
#define PPL_STATISTICS_ALL (PPL_STATISTICS_FRAME | PPL_STATISTICS_WINDOWS | PPL_STATISTICS_RANGES)

#define PPL_ROW_COUNTED(quality) \
  { quality, PPL_ROAD_COUNTED, 0, PPL_STATISTICS_NONE, PPL_SET_NOWHERE, PPL_SET_NOWHERE, PPL_SET_NOWHERE }
/* At other sizes than these nothing is drawn, but for the mark of I420. */
#define PPL_ROW_RAW(quality) \
  { quality, PPL_ROAD_RAW, 0, PPL_STATISTICS_NONE, PPL_SET_RAW, PPL_SET_RAW, PPL_SET_RAW }
#define PPL_ROW_WALK(quality, medium, statistics, whole, whole_medium) \
  { quality, PPL_ROAD_WALK, medium, statistics, PPL_SET_ALIKE(PPL_SET_DSHQ), whole, whole_medium }

/* The table, a row for each quality. */
PPL_HELPER_TABLE struct ppl_quality_row ppl_quality_table[PPL_QUALITIES] PPL_HELPER_UNUSED = {
    PPL_ROW_WALK(0, 1, PPL_STATISTICS_ALL, PPL_SET_WALK, PPL_SET_WALK),
    PPL_ROW_WALK(1, 1, PPL_STATISTICS_ALL, PPL_SET_WALK, PPL_SET_WALK),
    PPL_ROW_WALK(2, 1, PPL_STATISTICS_ALL, PPL_SET_WALK, PPL_SET_WALK_NO_YUYV),
    {3, PPL_ROAD_CELLS, 0, PPL_STATISTICS_FRAME | PPL_STATISTICS_RANGES, PPL_SET_ALIKE(PPL_SET_DSH),
     PPL_SET_WALK, PPL_SET_WALK},
    PPL_ROW_RAW(4),
    PPL_ROW_COUNTED(5),
    PPL_ROW_COUNTED(6),
    PPL_ROW_COUNTED(7),
    PPL_ROW_COUNTED(8),
    PPL_ROW_RAW(9),
    PPL_ROW_WALK(10, 0, PPL_STATISTICS_ALL, PPL_SET_WALK_NO_GAPS, PPL_SET_WALK_NO_GAPS),
    PPL_ROW_WALK(11, 0, PPL_STATISTICS_ALL, PPL_SET_WALK_NO_GAPS, PPL_SET_WALK_NO_GAPS),
    PPL_ROW_WALK(12, 0, PPL_STATISTICS_FRAME | PPL_STATISTICS_WINDOWS, PPL_SET_WALK_NO_GAPS,
                 PPL_SET_WALK_NO_GAPS),
    {13, PPL_ROAD_CELLS, 0, PPL_STATISTICS_FRAME, PPL_SET_GREY(PPL_SET_DSH), PPL_SET_GREY(PPL_SET_SH),
     PPL_SET_GREY(PPL_SET_SH)},
    PPL_ROW_COUNTED(14),
    {15, PPL_ROAD_WALK, 0, PPL_STATISTICS_ALL, PPL_SET_15_RUNS, PPL_SET_15_WHOLE, PPL_SET_15_WHOLE},
};

#undef PPL_SET_S
#undef PPL_SET_SH
#undef PPL_SET_DSH
#undef PPL_SET_DSHQ
#undef PPL_SET_NOWHERE
#undef PPL_SET_ALIKE
#undef PPL_SET_WALK
#undef PPL_SET_WALK_NO_YUYV
#undef PPL_SET_WALK_NO_GAPS
#undef PPL_SET_RAW
#undef PPL_SET_GREY
#undef PPL_SET_15_RUNS
#undef PPL_SET_15_WHOLE
#undef PPL_STATISTICS_ALL
#undef PPL_ROW_COUNTED
#undef PPL_ROW_RAW
#undef PPL_ROW_WALK

/* Does a frame of that quality do more than count itself? No for a quality, format or size that does not exist. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED int ppl_quality_runs(uint32_t quality, uint32_t format, int32_t size) {
  return quality < PPL_QUALITIES && format < PPL_FORMATS && size >= PPL_SIZE_DOUBLE &&
         size <= PPL_SIZE_QUARTER && (ppl_quality_table[quality].runs[format] & PPL_SIZE_BIT(size)) != 0;
}

/* Does a whole picture come of it, at frame sizes that suit the quality and the format? Mirrors count because rows of
 * doubled RGB24 lie elsewhere under exactly one of them. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED int ppl_quality_is_whole(uint32_t quality, int medium_filter,
                                                             uint32_t format, int32_t size, int h_mirror,
                                                             int v_mirror) {
  return ppl_quality_runs(quality, format, size) &&
         ((medium_filter ? ppl_quality_table[quality].whole_medium[format]
                         : ppl_quality_table[quality].whole[format]) &
          PPL_SIZE_BIT(size)) != 0 &&
         !(format == PPL_FORMAT_RGB24 && size == PPL_SIZE_DOUBLE &&
           ppl_quality_table[quality].road == PPL_ROAD_WALK && !h_mirror != !v_mirror);
}

/* A quality's short name, for people. 4 and 9 share one, as do those that only count. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED const char* ppl_quality_name(uint32_t quality) {
  return quality == 0                                      ? "directed-sharp"
         : quality == 1                                    ? "directed"
         : quality == 2                                    ? "bilinear"
         : quality == 3                                    ? "cells"
         : quality == 10                                   ? "flat-sharp"
         : quality == 11                                   ? "flat"
         : quality == 12                                   ? "grey-sharp"
         : quality == 13                                   ? "grey"
         : quality == 15                                   ? "full"
         : quality >= PPL_QUALITIES                        ? "unknown"
         : ppl_quality_table[quality].road == PPL_ROAD_RAW ? "raw"
                                                           : "counted";
}
/* What a quality does, on one line. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED const char* ppl_quality_summary(uint32_t quality) {
  return quality == 0    ? "edge-directed reconstruction, sharpened"
         : quality == 1  ? "edge-directed reconstruction"
         : quality == 2  ? "bilinear reconstruction"
         : quality == 3  ? "each 2 x 2 cell by itself, no interpolation"
         : quality == 10 ? "edge-directed reconstruction, flat areas smoothed, sharpened"
         : quality == 11 ? "edge-directed reconstruction, flat areas smoothed"
         : quality == 12 ? "grey: the corrected mosaic, sharpened"
         : quality == 13 ? "grey: the corrected mosaic"
         : quality == 15 ? "gradient-tested reconstruction, noise filter, sharpening, chroma smoothing"
         : quality >= PPL_QUALITIES                        ? "no such quality"
         : ppl_quality_table[quality].road == PPL_ROAD_RAW ? "the raw mosaic, nothing corrected"
                                                           : "no picture: the frame is only counted";
}
/* A format's name, in small letters. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED const char* ppl_format_name(uint32_t format) {
  return format == PPL_FORMAT_I420    ? "i420"
         : format == PPL_FORMAT_YUYV  ? "yuyv"
         : format == PPL_FORMAT_UYVY  ? "uyvy"
         : format == PPL_FORMAT_RGB24 ? "rgb24"
         : format == PPL_FORMAT_RGB32 ? "rgb32"
                                      : "unknown";
}

/* Does it leave flat colours behind, which later frames may still show? */
PPL_HELPER_INLINE PPL_HELPER_UNUSED int ppl_quality_leaves_colours(uint32_t quality) {
  return quality == 10 || quality == 11;
}
/* Does it show the flat colours that an earlier frame of such a quality left, without a test of its own? */
PPL_HELPER_INLINE PPL_HELPER_UNUSED int ppl_quality_shows_colours(uint32_t quality) {
  return quality == 0 || quality == 1;
}
/* Is its RGB paler than that of the others? Its YUV is not. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED int ppl_quality_is_pale_in_rgb(uint32_t quality) {
  return quality == 0 || quality == 10;
}
/* RGB24 and RGB32: blue, green, red, the bottom row first. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED int ppl_format_is_rgb(uint32_t format) {
  return format == PPL_FORMAT_RGB24 || format == PPL_FORMAT_RGB32;
}
/* Bytes of a pixel; in I420, of a luma sample. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED uint32_t ppl_format_pixel_bytes(uint32_t format) {
  return format == PPL_FORMAT_I420 ? 1 : format == PPL_FORMAT_RGB24 ? 3 : format == PPL_FORMAT_RGB32 ? 4 : 2;
}

#endif
