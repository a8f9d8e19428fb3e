/* Will this call make a picture? ppl answers "true" to many calls that write nothing, and gives no reason. This header
 * knows the rules: it is told a call as it is planned, and answers whether a whole picture comes of it, what the call
 * will answer and how large the buffers must be; if no picture comes, why not, as a value and as a sentence, and what
 * could be called instead.
 *
 *     struct ppl_plan plan = ppl_plan_frame(PPL_CALL_SAME, PPL_FORMAT_I420, 15, 650, 480);
 *     struct ppl_verdict verdict = ppl_check(&plan);
 *     if (!verdict.whole) {
 *       puts(ppl_reason_text(verdict.reason));
 *       if (ppl_nearest(&plan, &plan)) printf("%u x %u would do\n", plan.width, plan.height);
 *     }
 *
 * A PICTURE IS WHOLE if the call writes every byte of its destination, and every pixel of it is made of samples about
 * its own place in the frame, in the format and at the size that were asked for. A picture that is whole may still have
 * a blemish that the library is known for (ppl_verdict.notes): a dark column, rows between that are not the mean of
 * their neighbours, a mark. Where the library leaves open what a picture holds (widths that are no multiple of 16, odd
 * heights; of scaled pictures, widths that are no multiple of 32), it is not whole.
 *
 * The last resort of a misaligned ...MMX call is no picture in this sense.
 *
 * Beyond the plan, a picture needs buffers that are not null, and for qualities 0 and 1 a context on which qualities 10
 * and 11 have not left their colours (see ppl.h).
 *
 * Constants and inline functions, nothing to link, no call into the library: C99 or C++14 and later, integers only, fit
 * for kernel code; constant expressions in C++. */
#ifndef PPL_CHECK_H
#define PPL_CHECK_H

#include "ppl_qualities.h"

#ifdef __cplusplus
#define PPL_HELPER_ZERO \
  {}
#else
#define PPL_HELPER_ZERO \
  { 0 }
#endif

/* ---- Names ------------------------------------------------------------------------------------------------------ */

/** The qualities that make pictures, by name. */
enum ppl_quality_value {
  PPL_QUALITY_DIRECTED_SHARP = 0, /**< edge-directed reconstruction, sharpened */
  PPL_QUALITY_DIRECTED = 1,       /**< edge-directed reconstruction */
  PPL_QUALITY_BILINEAR = 2,       /**< bilinear reconstruction */
  PPL_QUALITY_CELLS = 3,          /**< each 2 x 2 cell by itself */
  PPL_QUALITY_RAW = 4,            /**< the mosaic as it is; the call answers false */
  PPL_QUALITY_FLAT_SHARP = 10,    /**< as 0, flat areas smoothed */
  PPL_QUALITY_FLAT = 11,          /**< as 1, flat areas smoothed */
  PPL_QUALITY_GREY_SHARP = 12,    /**< the corrected mosaic, sharpened */
  PPL_QUALITY_GREY = 13,          /**< the corrected mosaic */
  PPL_QUALITY_FULL = 15           /**< the default: noise filter, sharpening, chroma smoothing */
};

/** The limits of the library. */
enum {
  PPL_LIMIT_CONTEXTS = 8,
  PPL_LIMIT_WIDTH =
      2036, /**< accepted; the widest whole frames have 2016 (multiples of 32) or 2032 columns */
  PPL_LIMIT_HEIGHT = 2048,   /**< of a frame, in rows */
  PPL_LIMIT_STRIDE = 2048,   /**< in bytes */
  PPL_BUFFER_ALIGNMENT = 16, /**< of source, destination and scratch */
  PPL_SCALED_ALIGNMENT = 8,  /**< of the destination of a scaled call */
  PPL_SCALER_BYTES = 57344   /**< two rows of the scaled plane must fit */
};

/** Calls by what they do; the formats at either end are a plan's own fields. */
enum ppl_call {
  PPL_CALL_FRAME,         /**< ppl_process_blrto...: decimation and black lines as the context holds them */
  PPL_CALL_SAME,          /**< BaylorTo...MMX */
  PPL_CALL_HALF,          /**< BaylorTo...MMX_deci_2_1 */
  PPL_CALL_DOUBLE,        /**< BaylorTo...MMX_intp_1_2 */
  PPL_CALL_DOUBLE_STRIDE, /**< BaylorTo...MMX_intp_1_2_stride: rows 2 * width apart */
  PPL_CALL_STRIDE_4, /**< BaylorTo...MMX_intp_1_4_stride: rows 4 * width apart, decimation as it stands */
  PPL_CALL_SCALED,   /**< BaylorTo...MMX_scaling_stride */
  PPL_CALL_PACKED,   /**< YUYVTo...MMX, UYVYTo...MMX */
  PPL_CALL_PACKED_12_BIT,   /**< UYVYYYYYToI420MMX, YUYVYYYYToI420MMX */
  PPL_CALL_RGB24_TO_RGB32,  /**< RGB24ToRGB32MMX */
  PPL_CALL_FIELDS,          /**< Intl...MMX */
  PPL_CALL_FIELDS_NO_MOTION /**< Intl...MMX_no_motion */
};
enum { PPL_CALLS = 12 };

/* ---- A plan ------------------------------------------------------------------------------------------------------ */

/** A call as it is planned. ppl_plan_frame and ppl_plan_conversion fill in what goes without saying. */
struct ppl_plan {
  uint8_t call;    /**< enum ppl_call */
  uint8_t format;  /**< enum ppl_format: of the picture */
  uint8_t input;   /**< conversions: PPL_FORMAT_YUYV or PPL_FORMAT_UYVY */
  uint8_t process; /**< conversions: 1 for the ppl_process_ form, which has no last-resort picture */

  uint8_t quality;       /**< the controls of a Bayer frame */
  uint8_t medium_filter; /**< 1 if enabled */
  uint8_t h_mirror;      /**< 1 if on */
  uint8_t v_mirror;      /**< 1 if on */
  uint8_t P3_only;       /**< 1 if on */

  /** The context holds this frame size (for conversions: and this output size) already, so the call will not set it.
   * Conversions at sizes that are not in the table of ppl_new_frame_sizes need that. */
  uint8_t sized;

  /** Addresses modulo 16: of the source (or all fields together, by "or"), the destination, and scratch. */
  uint8_t source_at, destination_at, scratch_at;

  /** As the context holds them when the call begins; the ...MMX wrappers of a Bayer frame, but STRIDE_4, set their own.
   * Black lines of a Bayer frame count if they were set since its size last changed; else say 0. */
  int32_t decimation, top_black_lines, bottom_black_lines;

  uint32_t width, height;         /**< of the input */
  uint32_t stride;                /**< in bytes; of PPL_CALL_FRAME and PPL_CALL_SCALED alone */
  uint32_t out_width, out_height; /**< of conversions and PPL_CALL_SCALED alone */
};

/** Why no whole picture comes. */
enum ppl_reason {
  PPL_WHOLE = 0,
  PPL_REASON_UNKNOWN_CALL, /* a call, format, quality or decimation that does not exist */
  PPL_REASON_SIZE_REFUSED,
  PPL_REASON_EMPTY,
  PPL_REASON_SIZES_NOT_IN_TABLE,
  PPL_REASON_SIZES_DISAGREE,
  PPL_REASON_OUTPUT_TOO_LARGE,
  PPL_REASON_SOURCE_MISALIGNED,
  PPL_REASON_DESTINATION_MISALIGNED,
  PPL_REASON_SCRATCH_MISALIGNED,
  PPL_REASON_P3_ONLY,
  PPL_REASON_STRIDE_BELOW_WIDTH,
  PPL_REASON_QUALITY_ONLY_COUNTS,
  PPL_REASON_QUALITY_NOT_IN_FORMAT,
  PPL_REASON_RAW_AT_THIS_SIZE,
  PPL_REASON_GREY_NOT_DOUBLED,
  PPL_REASON_QUARTER_SIZE,
  PPL_REASON_RGB32_NOT_DOUBLED,
  PPL_REASON_NOT_CONVERTED_TO_RGB,
  PPL_REASON_ROWS_BETWEEN,
  PPL_REASON_ONE_MIRROR,
  PPL_REASON_STRIDE_NOT_WIDTH,
  PPL_REASON_BLACK_LINES,
  PPL_REASON_WIDTH_16,
  PPL_REASON_WIDTH_32,
  PPL_REASON_WIDTH_64,
  PPL_REASON_HEIGHT_2,
  PPL_REASON_HEIGHT_4,
  PPL_REASON_FORMAT_NOT_SCALED,
  PPL_REASON_SCALED_WIDTH_32,
  PPL_REASON_SCALED_HEIGHT_2,
  PPL_REASON_SCALED_DOWN,
  PPL_REASON_SCALED_TOO_LARGE,
  PPL_REASON_NO_SUCH_CONVERSION,
  PPL_REASON_NO_V_PLANE,
  PPL_REASON_ONLY_COUNTED,
  PPL_REASON_DECIMATION_NOT_CONVERTED,
  PPL_REASON_UYVY_NOT_DOUBLED,
  PPL_REASON_LINES_NOT_DRAWN,
  PPL_REASON_LINES_LOST,
  PPL_REASON_LINES_SHIFT_RGB24,
  PPL_REASON_LINES_ODD,
  PPL_REASON_ROWS_ODD,
  PPL_REASON_LEFT_AT_FULL_SIZE,
  PPL_REASONS
};

/** What a whole picture may still have about it: bits of ppl_verdict.notes. */
enum ppl_note {
  PPL_NOTE_ANSWERS_FALSE = 1,   /**< the call answers false although the picture is made */
  PPL_NOTE_MIRRORS_IGNORED = 2, /**< a mirror is on and has no effect */
  PPL_NOTE_MARK = 4,            /**< a white block moves through the V plane, one place a frame */
  PPL_NOTE_DARK_COLUMN = 8,     /**< the last column but one of the doubled picture is half as bright */
  PPL_NOTE_GHOSTS_BETWEEN = 16, /**< in rows between, columns 16 to 31 of each 32 mix in columns 8 to 15 */
  PPL_NOTE_NOT_A_FLIP =
      32, /**< mirrored and doubled: pairs of columns, or the row that stands twice, do not flip */
  PPL_NOTE_ODD_COLUMNS = 64, /**< halved RGB32 under the horizontal mirror shows the odd columns */
  PPL_NOTE_PALE = 128, /**< RGB of qualities 0 and 10: from reduced ranges, paler than that of the others */
  PPL_NOTE_LAST_COLUMN = 256,    /**< scaled YUYV: the last columns mix in the start of the next row */
  PPL_NOTE_LEAVES_COLOURS = 512, /**< qualities 10 and 11 leave colours behind for later frames of 0 and 1 */
  PPL_NOTE_ROW_OFF =
      1024 /**< halved RGB24 of an odd number of 16 columns: 8 columns of some rows are a row off */
};

/** What ppl_check says. Sizes of buffers are what the caller must hand over, whether a picture comes or not. */
struct ppl_verdict {
  uint8_t whole;          /**< 1 if a whole picture comes */
  uint8_t reason;         /**< enum ppl_reason */
  uint8_t answer;         /**< what the call answers */
  uint8_t counted;        /**< 1 if ppl_n_frame moves on */
  uint32_t notes;         /**< of enum ppl_note; 0 where no whole picture comes */
  uint32_t width, height; /**< of the frame that the destination holds; 0 where the size is refused */
  uint64_t source_bytes;  /**< of a Bayer frame or packed frame; of each field */
  uint64_t
      destination_bytes;  /**< of the picture; the last-resort picture is never larger than three of them */
  uint64_t scratch_bytes; /**< of a scaled call; the 4 bytes that YUYV may read behind it included */
};

/** A Bayer call at the usual state of a context: rows back to back, no mirror, no medium filter, aligned buffers. The
 * decimation is that of the call's name, 0 where it has none. Scaled calls: set out_width and out_height too. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED struct ppl_plan ppl_plan_frame(uint32_t call, uint32_t format,
                                                                   uint32_t quality, uint32_t width,
                                                                   uint32_t height) {
  struct ppl_plan p = PPL_HELPER_ZERO;
  p.call = (uint8_t)(call < PPL_CALLS ? call : 255);
  p.format = (uint8_t)(format < PPL_FORMATS ? format : 255);
  p.quality = (uint8_t)(quality < PPL_QUALITIES ? quality : 255);
  p.input = PPL_FORMAT_YUYV;
  p.decimation = call == PPL_CALL_HALF                                       ? PPL_SIZE_HALF
                 : call == PPL_CALL_DOUBLE || call == PPL_CALL_DOUBLE_STRIDE ? PPL_SIZE_DOUBLE
                                                                             : PPL_SIZE_SAME;
  p.width = width;
  p.height = height;
  p.stride = width;
  p.out_width = width;
  p.out_height = height;
  return p;
}

/** A conversion at the usual state of a context: decimation 0, no black lines, no mirror, aligned buffers. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED struct ppl_plan ppl_plan_conversion(uint32_t call, uint32_t input,
                                                                        uint32_t format, uint32_t in_width,
                                                                        uint32_t in_height,
                                                                        uint32_t out_width,
                                                                        uint32_t out_height) {
  struct ppl_plan p = ppl_plan_frame(call, format, PPL_QUALITY_DEFAULT, in_width, in_height);
  p.input = (uint8_t)(input < PPL_FORMATS ? input : 255);
  p.out_width = out_width;
  p.out_height = out_height;
  return p;
}

/* ---- Sizes ------------------------------------------------------------------------------------------------------- */

/** Is the call one for Bayer frames? */
PPL_HELPER_INLINE PPL_HELPER_UNUSED int ppl_call_takes_bayer(uint32_t call) {
  return call <= PPL_CALL_SCALED;
}

/** Bytes of a frame. 0 where width or height is 0, or where they make more pixels than the library can count. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED uint64_t ppl_frame_bytes(uint32_t format, uint32_t width,
                                                             uint32_t height) {
  const uint64_t n = (uint64_t)width * height;
  return n > 0x7fffffffu             ? 0
         : format == PPL_FORMAT_I420 ? n + 2 * (n / 4)
                                     : ppl_format_pixel_bytes(format) * n;
}

/** What ppl_new_frame_sizes makes of a pair of sizes with validation on. */
struct ppl_placement {
  uint8_t found;                                           /**< 0: the pair is refused */
  int32_t decimation, top_black_lines, bottom_black_lines; /**< as the context holds them then */
  uint32_t width, height;                                  /**< of the frame that is made */
};

/** Looks a pair of sizes up, as ppl_new_frame_sizes does with validation on. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED struct ppl_placement ppl_place(uint32_t in_width, uint32_t in_height,
                                                                   uint32_t out_width, uint32_t out_height) {
  struct ppl_placement p = PPL_HELPER_ZERO;
  uint32_t picture = out_height; /* rows of it, the black ones not among them */
  if (in_width == 320 && in_height == 240) {
    p.found = (out_width == 320 && out_height == 240) || (out_width == 160 && out_height == 120);
    p.decimation = out_width == 160;
  } else if (in_width == 480 && in_height == 480) {
    p.found = out_width == 480 && (out_height == 480 || out_height == 576);
    picture = 480;
  } else if (in_width == 480 && in_height == 576) {
    p.found = out_width == 480 && out_height == 576;
  } else if (in_width == 640 && in_height == 480) {
    p.found = (out_width == 160 && out_height == 120) || (out_width == 320 && out_height == 240) ||
              (out_width == 640 && out_height == 480) || (out_width == 1280 && out_height == 960) ||
              (out_width == 352 && (out_height == 240 || out_height == 288));
    p.decimation = out_width == 160 ? 2 : out_width == 320 ? 1 : out_width == 1280 ? -1 : 0;
  } else if (in_width == 1280 && in_height == 1024) {
    p.found = out_width == 1280 && out_height == 1024;
  } else if ((in_width == 704 || in_width == 720) && (in_height == 480 || in_height == 576)) {
    p.decimation = in_width == 720 ? 0 : out_width == 176 ? 2 : out_width == 352 ? 1 : 0;
    picture = in_height >> p.decimation;
    p.found = out_width == in_width >> p.decimation && out_height >= picture;
  }
  if (!p.found) {
    p.decimation = 0;
    return p;
  }
  /* A total of 2^31 lines and more is negative: no line is drawn, and the height wraps back. */
  const int32_t total = (int32_t)(out_height - picture);
  p.top_black_lines = total / 2;
  p.bottom_black_lines = total - p.top_black_lines;
  p.width = out_width == 352 && in_width == 640 ? 640 : out_width;
  p.height = out_width == 352 && in_width == 640 ? 480 : out_height;
  return p;
}

/** A width or height of the input at a decimation: twice, the same, half or a quarter of it. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED uint32_t ppl_decimated_extent(uint32_t extent, int32_t decimation) {
  return decimation < 0 ? extent << 1 : extent >> decimation;
}

/* ---- The check --------------------------------------------------------------------------------------------------- */

/** Does ppl_new_frame_size take it? */
PPL_HELPER_INLINE PPL_HELPER_UNUSED int ppl_size_accepted(uint32_t width, uint32_t height, uint32_t stride) {
  return width <= PPL_LIMIT_WIDTH && height <= PPL_LIMIT_HEIGHT && stride <= PPL_LIMIT_STRIDE;
}

/* What the widths and heights of whole pictures are multiples of. */
struct ppl_multiples {
  uint32_t width, height; /**< 1 or more */
};
/** The multiples for a quality, a format and a decimation. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED struct ppl_multiples ppl_multiples_of(uint32_t quality, uint32_t format,
                                                                          int32_t decimation) {
  struct ppl_multiples m = PPL_HELPER_ZERO;
  const uint32_t road = ppl_quality_table[quality].road;
  m.width = 16;
  m.height = 2;
  if (road == PPL_ROAD_RAW) {
    m.width = m.height = 1;
  } else if (decimation > 0 && (road == PPL_ROAD_CELLS || format == PPL_FORMAT_I420)) {
    m.width = 64;
    m.height = 4;
  } else if (road == PPL_ROAD_CELLS || format == PPL_FORMAT_I420 ||
             (decimation > 0 && format != PPL_FORMAT_RGB32)) {
    m.width = 32;
  }
  return m;
}

/* Halved RGB24 is put out by pairs of 16 columns. Where their number is odd, pairs go on from row to row, and only
 * under these mirrors does everything still find its place, if some of it from a row beside. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED int ppl_halved_rgb24_by_16(int h_mirror, int v_mirror, uint32_t height) {
  return h_mirror ? !v_mirror || height == 2 : v_mirror && height % 4 == 0;
}

/* Why a frame that runs in that quality, format and size is not whole although its shape is right. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED uint8_t ppl_reason_of_quality(uint32_t quality, int medium_filter,
                                                                  uint32_t format, int32_t decimation,
                                                                  int h_mirror, int v_mirror) {
  const uint32_t road = ppl_quality_table[quality].road;
  if (ppl_quality_is_whole(quality, medium_filter, format, decimation, h_mirror, v_mirror)) return PPL_WHOLE;
  if (road == PPL_ROAD_COUNTED) return PPL_REASON_QUALITY_ONLY_COUNTS;
  if (ppl_quality_table[quality].runs[format] == 0) return PPL_REASON_QUALITY_NOT_IN_FORMAT;
  if (road == PPL_ROAD_RAW) return PPL_REASON_RAW_AT_THIS_SIZE;
  if (decimation == PPL_SIZE_QUARTER) return PPL_REASON_QUARTER_SIZE;
  if (format == PPL_FORMAT_RGB32) return PPL_REASON_RGB32_NOT_DOUBLED;
  if (quality == PPL_QUALITY_GREY) return PPL_REASON_GREY_NOT_DOUBLED;
  if (format != PPL_FORMAT_RGB24) return PPL_REASON_ROWS_BETWEEN;
  if (!ppl_quality_is_whole(quality, medium_filter, format, decimation, 0, 0))
    return PPL_REASON_NOT_CONVERTED_TO_RGB;
  return PPL_REASON_ONE_MIRROR;
}

/** What a whole picture of a Bayer frame has about it: bits of enum ppl_note. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED uint32_t ppl_notes_of_frame(const struct ppl_plan* p, int32_t decimation,
                                                                uint32_t out_width, uint32_t out_height) {
  const uint32_t road = ppl_quality_table[p->quality].road;
  const int rgb = ppl_format_is_rgb(p->format), mirrored = p->h_mirror || p->v_mirror;
  uint32_t notes = 0;
  if (road == PPL_ROAD_RAW) {
    if (mirrored) notes |= PPL_NOTE_MIRRORS_IGNORED;
    if (p->format == PPL_FORMAT_I420 && out_width >= 10 && out_width / 10 % 16 == 0 && out_height >= 12)
      notes |= PPL_NOTE_MARK;
    return notes | PPL_NOTE_ANSWERS_FALSE;
  }
  if (decimation == PPL_SIZE_DOUBLE && road == PPL_ROAD_WALK) {
    if (p->h_mirror && !rgb) notes |= PPL_NOTE_DARK_COLUMN;
    if (p->format == PPL_FORMAT_YUYV || p->format == PPL_FORMAT_UYVY) notes |= PPL_NOTE_GHOSTS_BETWEEN;
  }
  if (decimation == PPL_SIZE_DOUBLE && mirrored) notes |= PPL_NOTE_NOT_A_FLIP;
  if (decimation == PPL_SIZE_HALF && p->format == PPL_FORMAT_RGB32 && p->h_mirror)
    notes |= PPL_NOTE_ODD_COLUMNS;
  if (decimation == PPL_SIZE_HALF && p->format == PPL_FORMAT_RGB24 && p->width % 32 != 0)
    notes |= PPL_NOTE_ROW_OFF;
  if (rgb && ppl_quality_is_pale_in_rgb(p->quality)) notes |= PPL_NOTE_PALE;
  if (ppl_quality_leaves_colours(p->quality)) notes |= PPL_NOTE_LEAVES_COLOURS;
  return notes;
}

/** The verdict on a Bayer frame's call; ppl_check tells the two kinds of calls apart. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED struct ppl_verdict ppl_check_frame(const struct ppl_plan* p) {
  struct ppl_verdict v = PPL_HELPER_ZERO;
  const int scaled = p->call == PPL_CALL_SCALED, rgb = ppl_format_is_rgb(p->format);
  const int own_decimation = p->call == PPL_CALL_FRAME || p->call == PPL_CALL_STRIDE_4;
  const int32_t decimation = own_decimation             ? p->decimation
                             : p->call == PPL_CALL_HALF ? PPL_SIZE_HALF
                             : p->call == PPL_CALL_DOUBLE || p->call == PPL_CALL_DOUBLE_STRIDE
                                 ? PPL_SIZE_DOUBLE
                                 : PPL_SIZE_SAME;
  const uint32_t stride = p->call == PPL_CALL_FRAME || scaled ? p->stride
                          : p->call == PPL_CALL_DOUBLE_STRIDE ? 2 * p->width
                          : p->call == PPL_CALL_STRIDE_4      ? 4 * p->width
                                                              : p->width;
  const int64_t lines = own_decimation ? (int64_t)p->top_black_lines + p->bottom_black_lines : 0;
  if (p->call > PPL_CALL_SCALED || p->format >= PPL_FORMATS || p->quality >= PPL_QUALITIES ||
      decimation < PPL_SIZE_DOUBLE || decimation > PPL_SIZE_QUARTER) {
    v.reason = PPL_REASON_UNKNOWN_CALL;
    return v;
  }

  /* Buffers and what the call answers, in the order in which it looks. */
  const int accepted = ppl_size_accepted(p->width, p->height, stride);
  const uint32_t frame_width = accepted ? ppl_decimated_extent(p->width, decimation) : 0;
  const uint32_t frame_height =
      accepted ? (uint32_t)((int64_t)ppl_decimated_extent(p->height, decimation) + lines) : 0;
  v.width = scaled ? p->out_width : frame_width;
  v.height = scaled ? p->out_height : frame_height;
  v.source_bytes = accepted ? (uint64_t)stride * p->height : 0;
  v.destination_bytes =
      (int32_t)v.width > 0 && (int32_t)v.height > 0 ? ppl_frame_bytes(p->format, v.width, v.height) : 0;
  if (scaled && !rgb && accepted)
    v.scratch_bytes =
        ppl_frame_bytes(p->format, p->width, p->height) + (p->format == PPL_FORMAT_YUYV ? 4 : 0);
  if (scaled && rgb) {
    v.reason = PPL_REASON_FORMAT_NOT_SCALED;
    return v;
  }
  if (p->call != PPL_CALL_FRAME && ((p->source_at | p->destination_at) & 7)) {
    v.reason = (p->source_at & 7) ? PPL_REASON_SOURCE_MISALIGNED : PPL_REASON_DESTINATION_MISALIGNED;
    return v;
  }
  if (!accepted) {
    v.reason = PPL_REASON_SIZE_REFUSED;
    return v;
  }
  v.answer = 1;
  if (p->source_at & 15)
    v.reason = PPL_REASON_SOURCE_MISALIGNED;
  else if (!scaled && (p->destination_at & 15))
    v.reason = PPL_REASON_DESTINATION_MISALIGNED;
  else if (scaled && (p->scratch_at & 15))
    v.reason = PPL_REASON_SCRATCH_MISALIGNED;
  else if (p->P3_only)
    v.reason = PPL_REASON_P3_ONLY;
  if (v.reason) return v;
  v.counted = 1;
  const uint32_t road = ppl_quality_table[p->quality].road;
  if (stride < p->width) {
    v.reason = PPL_REASON_STRIDE_BELOW_WIDTH;
    return v;
  }
  v.answer = road != PPL_ROAD_RAW;

  /* The picture. */
  const struct ppl_multiples m = ppl_multiples_of(p->quality, p->format, decimation);
  const int by_16 = p->format == PPL_FORMAT_RGB24 && road == PPL_ROAD_WALK && decimation == PPL_SIZE_HALF &&
                    ppl_halved_rgb24_by_16(p->h_mirror, p->v_mirror, p->height);
  /* The flat colours of quality 11, those of quality 10 from row 1 on, and raw rows behind the first. */
  const int wants_width_as_stride =
      road == PPL_ROAD_RAW
          ? (decimation == PPL_SIZE_SAME && p->height > 1) ||
                (decimation == PPL_SIZE_HALF && p->format == PPL_FORMAT_RGB32 && p->height > 3)
          : p->quality == PPL_QUALITY_FLAT || (p->quality == PPL_QUALITY_FLAT_SHARP && p->height > 2);
  v.reason =
      ppl_reason_of_quality(p->quality, p->medium_filter, p->format, decimation, p->h_mirror, p->v_mirror);
  /* YUYV lacks the rows between of the row pairs that have four others below them (with the medium filter, three). */
  if (v.reason == PPL_REASON_ROWS_BETWEEN && p->format == PPL_FORMAT_YUYV &&
      ((p->quality == PPL_QUALITY_FULL && p->height < 10) ||
       (p->quality == PPL_QUALITY_BILINEAR && p->height < 8)))
    v.reason = PPL_WHOLE;
  if (v.reason == PPL_WHOLE) {
    if (p->width >> (decimation > 0) == 0 || p->height >> (decimation > 0) == 0)
      v.reason = PPL_REASON_EMPTY;
    else if (lines != 0)
      v.reason = PPL_REASON_BLACK_LINES;
    else if (wants_width_as_stride && stride != p->width)
      v.reason = PPL_REASON_STRIDE_NOT_WIDTH;
    else if (p->width % (by_16 ? 16 : m.width) != 0)
      v.reason = m.width == 64   ? PPL_REASON_WIDTH_64
                 : m.width == 32 ? PPL_REASON_WIDTH_32
                                 : PPL_REASON_WIDTH_16;
    else if (p->height % m.height != 0)
      v.reason = m.height == 4 ? PPL_REASON_HEIGHT_4 : PPL_REASON_HEIGHT_2;
  }
  if (v.reason == PPL_WHOLE && scaled) {
    const uint64_t pixels = (uint64_t)p->out_width * p->out_height;
    const uint32_t row = p->format == PPL_FORMAT_I420 ? p->out_width : 2 * p->out_width;
    if (p->format == PPL_FORMAT_UYVY)
      v.reason = PPL_REASON_FORMAT_NOT_SCALED;
    else if (pixels == 0)
      v.reason = PPL_REASON_EMPTY;
    else if (p->out_width % 32 != 0)
      v.reason = PPL_REASON_SCALED_WIDTH_32;
    else if (p->format == PPL_FORMAT_I420 && p->out_height % 2 != 0)
      v.reason = PPL_REASON_SCALED_HEIGHT_2;
    else if (p->out_height < p->height)
      v.reason = PPL_REASON_SCALED_DOWN;
    else if (pixels > 0x7fffffffu || p->out_width > PPL_SCALER_BYTES || row > PPL_SCALER_BYTES / 2)
      v.reason = PPL_REASON_SCALED_TOO_LARGE;
    else {
      /* The way down the frame has steps of 2^-20 rows: of a million rows and more the last may not be reached. */
      const uint64_t step = ((uint64_t)p->height << 20) / p->out_height;
      if ((((uint64_t)p->out_height - 1) * step >> 20) + 2 < p->height)
        v.reason = PPL_REASON_SCALED_TOO_LARGE;
    }
  }
  v.whole = v.reason == PPL_WHOLE;
  if (v.whole) {
    v.notes = ppl_notes_of_frame(p, decimation, frame_width, frame_height);
    if (scaled && p->format == PPL_FORMAT_YUYV && p->out_width != p->width) v.notes |= PPL_NOTE_LAST_COLUMN;
  }
  return v;
}

/** The verdict on a conversion, of whole frames or of fields. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED struct ppl_verdict ppl_check_conversion(const struct ppl_plan* p) {
  struct ppl_verdict v = PPL_HELPER_ZERO;
  const int fields = p->call == PPL_CALL_FIELDS || p->call == PPL_CALL_FIELDS_NO_MOTION;
  const int whole_frame = p->call == PPL_CALL_PACKED;
  const int exists = p->input == PPL_FORMAT_YUYV || p->input == PPL_FORMAT_UYVY;
  int32_t decimation = p->decimation, top = p->top_black_lines, bottom = p->bottom_black_lines;
  uint32_t frame_width = p->out_width, frame_height = p->out_height;
  if (p->call >= PPL_CALLS || p->format >= PPL_FORMATS || decimation < PPL_SIZE_DOUBLE ||
      decimation > PPL_SIZE_QUARTER) {
    v.reason = PPL_REASON_UNKNOWN_CALL;
    return v;
  }
  if ((whole_frame && (!exists || (p->format != PPL_FORMAT_I420 && p->format != PPL_FORMAT_RGB24))) ||
      (fields && (!exists || p->format == PPL_FORMAT_RGB32)) ||
      (p->call == PPL_CALL_PACKED_12_BIT && p->format != PPL_FORMAT_I420) ||
      (p->call == PPL_CALL_RGB24_TO_RGB32 && p->format != PPL_FORMAT_RGB32)) {
    v.reason = PPL_REASON_NO_SUCH_CONVERSION;
    return v;
  }

  /* Sizes, buffers and what the call answers, in the order in which it looks. */
  int lines_lost = 0, accepted = 1, left_at_full_size = 0;
  if (p->sized) {
    const int64_t own = ppl_decimated_extent(p->height, decimation);
    accepted = ppl_size_accepted(p->width, p->height, p->width);
    lines_lost = (top != 0 || bottom != 0) && p->out_height == own;
    if (accepted && (p->out_width != ppl_decimated_extent(p->width, decimation) ||
                     (!lines_lost && (int64_t)p->out_height != own + top + bottom)))
      v.reason = PPL_REASON_SIZES_DISAGREE;
  } else {
    const struct ppl_placement place = ppl_place(p->width, p->height, p->out_width, p->out_height);
    accepted = place.found;
    /* What stands already is not set again, and what the new size has dropped stays dropped. */
    lines_lost = place.decimation == decimation && place.top_black_lines == top &&
                 place.bottom_black_lines == bottom && (top != 0 || bottom != 0);
    decimation = place.decimation;
    top = place.top_black_lines;
    bottom = place.bottom_black_lines;
    frame_width = place.width;
    frame_height = place.height;
    left_at_full_size = place.width != p->out_width || place.height != p->out_height;
  }
  const uint64_t asked = ppl_frame_bytes(p->format, p->out_width, p->out_height);
  const uint64_t made = ppl_frame_bytes(p->format, frame_width, frame_height);
  v.width = accepted ? frame_width : 0;
  v.height = accepted ? frame_height : 0;
  v.destination_bytes = asked > made ? asked : made;
  v.source_bytes = p->call == PPL_CALL_RGB24_TO_RGB32  ? 3 * (uint64_t)p->width * p->height
                   : p->call == PPL_CALL_PACKED_12_BIT ? 3 * (uint64_t)p->width / 2 * p->height
                   : fields                            ? (uint64_t)p->width * p->height
                                                       : 2 * (uint64_t)p->width * p->height;
  if (!p->process && ((p->source_at | p->destination_at) & 7)) {
    v.reason = (p->source_at & 7) ? PPL_REASON_SOURCE_MISALIGNED : PPL_REASON_DESTINATION_MISALIGNED;
    return v;
  }
  if (!accepted) {
    v.reason = p->sized ? PPL_REASON_SIZE_REFUSED : PPL_REASON_SIZES_NOT_IN_TABLE;
    return v;
  }
  if (v.reason) return v;
  v.answer = 1;
  if (p->source_at & 15)
    v.reason = PPL_REASON_SOURCE_MISALIGNED;
  else if (p->destination_at & 15)
    v.reason = PPL_REASON_DESTINATION_MISALIGNED;
  else if (p->P3_only)
    v.reason = PPL_REASON_P3_ONLY;
  if (v.reason) return v;
  v.counted = 1;
  v.answer = p->call != PPL_CALL_RGB24_TO_RGB32;

  /* The picture. */
  const int swapped = p->format != p->input && (p->format == PPL_FORMAT_YUYV || p->format == PPL_FORMAT_UYVY);
  const int lines = top != 0 || bottom != 0;
  const int lines_by_two = decimation > 0 || p->format == PPL_FORMAT_I420;
  if (p->call == PPL_CALL_RGB24_TO_RGB32 || (fields && p->call == PPL_CALL_FIELDS_NO_MOTION && swapped))
    v.reason = PPL_REASON_ONLY_COUNTED;
  else if (p->call == PPL_CALL_PACKED_12_BIT)
    v.reason = PPL_REASON_NO_V_PLANE;
  else if (p->width == 0 || p->height == 0)
    v.reason = PPL_REASON_EMPTY;
  else if (made == 0)
    v.reason = PPL_REASON_OUTPUT_TOO_LARGE;
  else if (left_at_full_size)
    v.reason = PPL_REASON_LEFT_AT_FULL_SIZE;
  else if (whole_frame && decimation != PPL_SIZE_SAME)
    v.reason = PPL_REASON_DECIMATION_NOT_CONVERTED;
  else if (decimation == PPL_SIZE_DOUBLE && (swapped || p->call == PPL_CALL_FIELDS_NO_MOTION))
    v.reason = PPL_REASON_ONLY_COUNTED;
  else if (decimation == PPL_SIZE_DOUBLE && p->input == PPL_FORMAT_UYVY)
    v.reason = PPL_REASON_UYVY_NOT_DOUBLED;
  else if (p->width % 16 != 0)
    v.reason = PPL_REASON_WIDTH_16;
  else if (p->height % 2 != 0)
    v.reason = PPL_REASON_HEIGHT_2;
  else if (lines_lost && (p->sized || p->format == PPL_FORMAT_I420))
    v.reason = PPL_REASON_LINES_LOST;
  else if (lines && (whole_frame || decimation == PPL_SIZE_DOUBLE || top < 0 || bottom < 0))
    v.reason = PPL_REASON_LINES_NOT_DRAWN;
  else if (lines && p->format == PPL_FORMAT_RGB24)
    v.reason = PPL_REASON_LINES_SHIFT_RGB24;
  else if (lines && lines_by_two && (top % 2 != 0 || bottom % 2 != 0))
    v.reason = PPL_REASON_LINES_ODD;
  else if (fields && p->format == PPL_FORMAT_I420 && decimation > 0 &&
           p->height / 2 / (uint32_t)decimation % 2 != 0)
    v.reason = PPL_REASON_ROWS_ODD;
  else if (fields && decimation == PPL_SIZE_QUARTER && p->height < 4)
    v.reason = PPL_REASON_EMPTY;
  v.whole = v.reason == PPL_WHOLE;
  if (v.whole && (p->h_mirror || p->v_mirror) && !(whole_frame && p->format == PPL_FORMAT_I420))
    v.notes |= PPL_NOTE_MIRRORS_IGNORED;
  return v;
}

/** The verdict on a planned call. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED struct ppl_verdict ppl_check(const struct ppl_plan* plan) {
  return ppl_call_takes_bayer(plan->call) ? ppl_check_frame(plan) : ppl_check_conversion(plan);
}

/** A reason as a sentence: what is wrong, and what would be right. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED const char* ppl_reason_text(uint32_t reason) {
  switch (reason) {
    case PPL_WHOLE:
      return "a whole picture comes of it";
    case PPL_REASON_UNKNOWN_CALL:
      return "there is no such call, format, quality (0 to 15) or decimation (-1 to 2)";
    case PPL_REASON_SIZE_REFUSED:
      return "the size is refused: widths go up to 2036 samples, heights to 2048 rows, strides to 2048 "
             "bytes";
    case PPL_REASON_EMPTY:
      return "the frame or its picture has no pixels: width and height must be larger";
    case PPL_REASON_SIZES_NOT_IN_TABLE:
      return "this pair of sizes is not in the table: call ppl_new_frame_sizes with the frame's size "
             "twice and validation off first, and convert at that size";
    case PPL_REASON_SIZES_DISAGREE:
      return "a context that holds this decimation and these black lines has another output size";
    case PPL_REASON_OUTPUT_TOO_LARGE:
      return "the output has too many rows: its pixels must stay below 2^31";
    case PPL_REASON_SOURCE_MISALIGNED:
      return "the source must start at a multiple of 16 bytes";
    case PPL_REASON_DESTINATION_MISALIGNED:
      return "the destination must start at a multiple of 16 bytes (of 8 in a scaled call)";
    case PPL_REASON_SCRATCH_MISALIGNED:
      return "scratch must start at a multiple of 16 bytes";
    case PPL_REASON_P3_ONLY:
      return "ppl_P3_only is set, which turns all conversion off";
    case PPL_REASON_STRIDE_BELOW_WIDTH:
      return "the stride is below the width, so the frame is only counted: it must be the width or more";
    case PPL_REASON_QUALITY_ONLY_COUNTS:
      return "qualities 5 to 8 and 14 only count the frame: choose another, 15 for the full reconstruction";
    case PPL_REASON_QUALITY_NOT_IN_FORMAT:
      return "this quality does not exist in this format: 15 lacks RGB32, 13 exists in I420 and RGB24 "
             "alone";
    case PPL_REASON_RAW_AT_THIS_SIZE:
      return "the raw qualities draw nothing here: they exist at the same size, and but for RGB24 at half "
             "of it";
    case PPL_REASON_GREY_NOT_DOUBLED:
      return "quality 13 is not doubled: at double size most bytes stay as they were; 0, 1, 2, 3 and 15 "
             "are";
    case PPL_REASON_QUARTER_SIZE:
      return "decimation 2 is for fields alone: a Bayer frame comes out broken; use 1, half the size";
    case PPL_REASON_RGB32_NOT_DOUBLED:
      return "RGB32 is not doubled: use RGB24, or the same size";
    case PPL_REASON_NOT_CONVERTED_TO_RGB:
      return "doubled RGB24 of quality 15 holds luma and chroma unconverted: use quality 0, 1, 2 or 3";
    case PPL_REASON_ROWS_BETWEEN:
      return "this quality leaves rows of the doubled picture as they were: in I420 and UYVY 0, 1, 2, 3 "
             "and 15 do not, in YUYV 0, 1, 3 and, without medium filter, 2";
    case PPL_REASON_ONE_MIRROR:
      return "doubled RGB24 with exactly one mirror has its rows in other places: use both mirrors, none, "
             "or quality 3";
    case PPL_REASON_STRIDE_NOT_WIDTH:
      return "this quality wants its rows back to back: the stride must be the width";
    case PPL_REASON_BLACK_LINES:
      return "black lines are for fields: a Bayer frame leaves their rows as they were; set them to 0";
    case PPL_REASON_WIDTH_16:
      return "the width must be a multiple of 16";
    case PPL_REASON_WIDTH_32:
      return "the width must be a multiple of 32";
    case PPL_REASON_WIDTH_64:
      return "the width must be a multiple of 64";
    case PPL_REASON_HEIGHT_2:
      return "the height must be a multiple of 2";
    case PPL_REASON_HEIGHT_4:
      return "the height must be a multiple of 4";
    case PPL_REASON_FORMAT_NOT_SCALED:
      return "frames are scaled in I420 and YUYV alone: UYVY stays in scratch, RGB becomes white";
    case PPL_REASON_SCALED_WIDTH_32:
      return "the output width must be a multiple of 32";
    case PPL_REASON_SCALED_HEIGHT_2:
      return "the output height must be a multiple of 2";
    case PPL_REASON_SCALED_DOWN:
      return "the output height must be that of the frame or more: the scaler skips no rows, so that a "
             "lower picture is the top of the frame";
    case PPL_REASON_SCALED_TOO_LARGE:
      return "the output is too large for the scaler: up to 28672 columns in I420, 14336 in YUYV";
    case PPL_REASON_NO_SUCH_CONVERSION:
      return "there is no such conversion: YUYV or UYVY frames become I420 or RGB24, fields YUYV and UYVY "
             "as well";
    case PPL_REASON_NO_V_PLANE:
      return "the 12-bit layout gives luma alone: U and V stand mixed in the U plane, the V plane stays "
             "as it was";
    case PPL_REASON_ONLY_COUNTED:
      return "this conversion only counts the frame; for fields the form with motion test makes a "
             "picture, and at double size in the layout of the input, I420 or RGB24";
    case PPL_REASON_DECIMATION_NOT_CONVERTED:
      return "whole frames are converted at their own size alone: the output must have the size of the "
             "input";
    case PPL_REASON_UYVY_NOT_DOUBLED:
      return "fields in UYVY are not doubled: the picture is all zero bytes";
    case PPL_REASON_LINES_NOT_DRAWN:
      return "black lines are drawn for fields alone, and not at double size: the output must have the "
             "picture's height";
    case PPL_REASON_LINES_LOST:
      return "the context holds these black lines already and so loses them at the change of size: call "
             "ppl_reset_decimation first";
    case PPL_REASON_LINES_SHIFT_RGB24:
      return "black lines put an RGB24 picture one row off: the output must have the picture's height";
    case PPL_REASON_LINES_ODD:
      return "black lines are drawn two at a time here: their counts must be even";
    case PPL_REASON_ROWS_ODD:
      return "shrunk I420 is made of pairs of rows: the height must be a multiple of 4 at half size, of 8 "
             "at a quarter";
    case PPL_REASON_LEFT_AT_FULL_SIZE:
      return "640 x 480 to 352 columns makes a picture of 640 x 480 and leaves the rest to the caller: "
             "ask for that";
    default:
      return "no such reason";
  }
}

/* ---- The nearest call that makes a picture ----------------------------------------------------------------------- */

/** The multiple of `of` that is nearest to n, not 0 and not above the limit. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED uint32_t ppl_nearest_multiple(uint32_t n, uint32_t of, uint32_t limit) {
  const uint32_t most = limit / of * of;
  const uint32_t below = n / of * of;
  const uint32_t nearest = n >= most ? most : n - below > of / 2 ? below + of : below;
  return nearest < of ? of : nearest;
}

/* Sizes, stride, addresses and flags as the quality and the format at hand want them. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED void ppl_fix_frame_shape(struct ppl_plan* p) {
  const int32_t decimation = p->call == PPL_CALL_HALF ? PPL_SIZE_HALF
                             : p->call == PPL_CALL_DOUBLE || p->call == PPL_CALL_DOUBLE_STRIDE
                                 ? PPL_SIZE_DOUBLE
                             : p->call == PPL_CALL_FRAME || p->call == PPL_CALL_STRIDE_4 ? p->decimation
                                                                                         : PPL_SIZE_SAME;
  const struct ppl_multiples m = ppl_multiples_of(p->quality, p->format, decimation);
  const uint32_t widest = p->call == PPL_CALL_DOUBLE_STRIDE ? PPL_LIMIT_STRIDE / 2
                          : p->call == PPL_CALL_STRIDE_4    ? PPL_LIMIT_STRIDE / 4
                                                            : PPL_LIMIT_WIDTH;
  p->width = ppl_nearest_multiple(p->width, m.width, widest);
  p->height = ppl_nearest_multiple(p->height, m.height, PPL_LIMIT_HEIGHT);
  p->top_black_lines = p->bottom_black_lines = 0;
  if (p->stride < p->width || p->quality == PPL_QUALITY_FLAT_SHARP || p->quality == PPL_QUALITY_FLAT ||
      ppl_quality_table[p->quality].road == PPL_ROAD_RAW)
    p->stride = p->width;
  if (p->stride > PPL_LIMIT_STRIDE) p->stride = PPL_LIMIT_STRIDE;
  if (p->call == PPL_CALL_SCALED) {
    const uint32_t rows = p->format == PPL_FORMAT_I420 ? 2 : 1;
    p->out_width =
        ppl_nearest_multiple(p->out_width, 32, PPL_SCALER_BYTES / (p->format == PPL_FORMAT_I420 ? 2u : 4u));
    p->out_height = ppl_nearest_multiple(p->out_height, rows, 65536);
    if (p->out_height < p->height) p->out_height = p->height;
  }
}

/* Qualities in the order in which they stand in for another: of its own kind first. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED uint8_t ppl_stand_in(uint8_t quality, int place) {
  if (place == 0) return quality;
  if (place == 2) return PPL_QUALITY_DIRECTED_SHARP;
  if (place == 3) return PPL_QUALITY_CELLS;
  switch (quality) {
    case PPL_QUALITY_FLAT_SHARP:
      return PPL_QUALITY_DIRECTED_SHARP;
    case PPL_QUALITY_FLAT:
    case PPL_QUALITY_BILINEAR:
      return PPL_QUALITY_DIRECTED;
    case PPL_QUALITY_GREY:
      return PPL_QUALITY_GREY_SHARP;
    case PPL_QUALITY_GREY_SHARP:
      return PPL_QUALITY_GREY;
    default:
      return PPL_QUALITY_FULL;
  }
}

/** The planned call, changed as little as possible so that a whole picture comes of it, into `*nearest` (which may be
 * the plan itself). Sizes go to the nearest that will do, stride, addresses, black lines and flags to what is wanted.
 * Where that is not enough, in this order: the medium filter goes off, the vertical mirror follows the horizontal one,
 * another quality stands in, the decimation becomes 0. 1 if there is one; 0 and nothing written where there is none,
 * which is so for the 12-bit layout, for RGB24 to RGB32 and for calls and formats that do not exist. */
PPL_HELPER_INLINE PPL_HELPER_UNUSED int ppl_nearest(const struct ppl_plan* plan, struct ppl_plan* nearest) {
  struct ppl_plan base = *plan;
  if (ppl_check(plan).whole) {
    *nearest = base;
    return 1;
  }
  if (base.call >= PPL_CALLS || base.format >= PPL_FORMATS) return 0;
  base.P3_only = base.source_at = base.destination_at = base.scratch_at = 0;
  if (base.quality >= PPL_QUALITIES) base.quality = PPL_QUALITY_DEFAULT;
  if (base.decimation < PPL_SIZE_DOUBLE) base.decimation = PPL_SIZE_DOUBLE;
  if (base.decimation > PPL_SIZE_QUARTER) base.decimation = PPL_SIZE_QUARTER;
  if (ppl_call_takes_bayer(base.call)) {
    /* One format can't be scaled by the call's own name, the RGB formats not at all. */
    if (base.call == PPL_CALL_SCALED && base.format == PPL_FORMAT_UYVY) base.format = PPL_FORMAT_YUYV;
    if (base.call == PPL_CALL_SCALED && base.format >= PPL_FORMAT_RGB24) base.call = PPL_CALL_SAME;
    for (int same_size = 0; same_size < 2; ++same_size)
      for (int place = 0; place < 4; ++place)
        for (int mirrors = 0; mirrors < 2; ++mirrors)
          for (int filter = 0; filter < 2; ++filter) {
            struct ppl_plan p = base;
            if (filter) p.medium_filter = 0;
            if (mirrors) p.v_mirror = p.h_mirror;
            p.quality = ppl_stand_in(base.quality, place);
            if (same_size) {
              p.decimation = PPL_SIZE_SAME;
              if (p.call != PPL_CALL_FRAME && p.call != PPL_CALL_SCALED && p.call != PPL_CALL_STRIDE_4)
                p.call = PPL_CALL_SAME;
            }
            ppl_fix_frame_shape(&p);
            if (ppl_check_frame(&p).whole) {
              *nearest = p;
              return 1;
            }
          }
    return 0;
  }
  if (base.call == PPL_CALL_PACKED_12_BIT || base.call == PPL_CALL_RGB24_TO_RGB32) return 0;
  if (ppl_check_conversion(&base).reason == PPL_REASON_NO_SUCH_CONVERSION) return 0;
  /* A few rows more or fewer, as black lines go; then the context's lines out of the way; then the frame's own size;
   * and the form with the motion test where the other only counts. */
  for (int motion = 0; motion < 2; ++motion) {
    struct ppl_plan p = base;
    if (motion && p.call == PPL_CALL_FIELDS_NO_MOTION) p.call = PPL_CALL_FIELDS;
    for (int reset = 0; reset < 2; ++reset) {
      if (reset && !p.sized) p.decimation = p.top_black_lines = p.bottom_black_lines = 0;
      for (int more = 0; more < 8; ++more) {
        const uint32_t by = (uint32_t)((more + 1) / 2);
        p.out_height = more % 2 ? base.out_height + by : base.out_height > by ? base.out_height - by : 1;
        if (p.sized && more) {
          p.bottom_black_lines = base.bottom_black_lines + (int32_t)(p.out_height - base.out_height);
        }
        if (ppl_check_conversion(&p).whole) {
          *nearest = p;
          return 1;
        }
      }
      p.out_height = base.out_height;
      p.bottom_black_lines = base.bottom_black_lines;
    }
    p.sized = 1;
    p.decimation = p.top_black_lines = p.bottom_black_lines = 0;
    p.width = p.out_width = ppl_nearest_multiple(base.width, 16, PPL_LIMIT_WIDTH);
    p.height = p.out_height = ppl_nearest_multiple(base.height, 2, PPL_LIMIT_HEIGHT);
    if (ppl_check_conversion(&p).whole) {
      *nearest = p;
      return 1;
    }
  }
  return 0;
}

#endif
