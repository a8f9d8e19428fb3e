/*
 * ppl: a video pipeline library for a USB 2.0 camera. This header is the whole interface.
 *
 * A capture driver or camera program takes a context, sets its image controls and hands it one frame per call.
 * Two kinds of frames come in: raw 8-bit Bayer mosaics from a sensor, which leave as I420, YUYV, UYVY, RGB24 or
 * RGB32 with the statistics that an exposure and white-balance control needs; and packed 4:2:2 frames or fields from
 * a video decoder, which leave as I420, YUYV, UYVY or RGB24.
 *
 *     ppl_context *context = ppl_init();
 *     ppl_set_rgb_gain(context, 397, 256, 346);
 *     BaylorToI420MMX(context, mosaic, picture, 640, 480);            (once per frame)
 *     const uint32_t *rgb = ppl_rgb_means_whole_frame(context);
 *     ppl_free(context);
 *
 * RESULTS. A uint8_t result is 1 (true) or 0 (false). There are no error codes and no messages: a refusal is silent.
 * What a refusal leaves behind is said at each call; where nothing is said, nothing has changed. Results are part of
 * the interface even where they surprise: some setters always answer false, some calls that write nothing answer
 * true. So true does not mean that there is a picture: ppl_check.h, which stands beside this header, is told a call as
 * it is planned and answers whether one comes of it, and if not, why. A null context is allowed in ppl_free alone.
 *
 * FRAME FORMATS. No format has padding between rows; W and H are the width and height of the frame.
 *
 *   Bayer   one byte a sample, rows `stride` bytes apart: B Gb B Gb ... on even rows, Gr R Gr R ... on odd rows.
 *   I420    W*H bytes of luma, then W*H/4 bytes of U, then W*H/4 bytes of V; top row first.
 *   YUYV    2*W*H bytes, Y0 U Y1 V for two pixels; top row first.
 *   UYVY    2*W*H bytes, U Y0 V Y1 for two pixels; top row first.
 *   RGB24   3*W*H bytes, blue, green, red; BOTTOM row first.
 *   RGB32   4*W*H bytes, blue, green, red, 0; BOTTOM row first.
 *
 *   YUV made from a Bayer frame has full-range luma, and its chroma is the plain colour difference plus 128: U is
 *   B - Y, V is R - Y, each cut at -128 and 127. So R = Y + V - 128, B = Y + U - 128 and
 *   G = Y - 0.509 (V - 128) - 0.194 (U - 128). YUV from a decoder is studio-range BT.601 and stays so.
 *
 * SIZES. Widths up to 2036, heights and strides up to 2048 are accepted. The picture is whole and right at
 *
 *   Bayer, same size     widths that are multiples of 32, even heights
 *   Bayer, double size   the same, where the quality fills all rows (see the Bayer frame calls)
 *   Bayer, half size     widths that are multiples of 64 and heights that are multiples of 4
 *   conversions          widths that are multiples of 32, even heights
 *
 *   at any stride from the width up. Two paths are right at a stride equal to the width alone: qualities 10 and 11,
 *   whose flat colours take samples that lie 1 and 2 widths away, so that bytes of the padding colour the picture; and
 *   the raw qualities 4 and 9, which read a continuous run (at half size RGB32 alone does: rows 2 * width apart). With
 *   an odd number of 16-column tiles RGB, YUYV, UYVY and the luma of I420 are whole at the same size too (not in
 *   qualities 3 and 13), the chroma of I420 is not. At widths that are no multiple of 16 and at odd heights a call
 *   stays inside its buffers and counts the frame; what the picture holds is open. A frame whose stride is below its
 *   width is only counted, and the answer is true, in the raw qualities too.
 *
 * MEMORY. The library allocates nothing. Contexts are eight static records inside the library; frames and the lens
 * table are the caller's. Everything that a getter returns by pointer stays valid until the next frame call on that
 * context. No call reads or writes a byte outside the buffers that the caller handed over, with ONE EXCEPTION: the
 * last-resort picture that an ...MMX call makes when a buffer is no multiple of 8 is sized by what the call's name and
 * output size promise, whatever the source holds. The _intp_ wrappers then read four times width * height bytes of a
 * source that may be a quarter of that, _scaling_stride and the conversions out_width * out_height. An odd address is
 * all it takes: test alignment before these calls.
 *
 *   Buffers of one call that it writes may not overlap one another, nor a buffer that it reads: a source, a
 *   destination, `scratch`, a lens table. Fields of an interlaced conversion may overlap or be the same. Where buffers
 *   overlap all the same, nothing outside them is touched, and what they hold afterwards is open.
 *
 * ALIGNMENT. Frame buffers start at multiples of 16 bytes; strides and widths are free. A buffer at an odd multiple of
 * 8 makes a frame call or conversion answer true without touching it; a buffer that is no multiple of 8 does the same
 * in a ppl_process_ call, and makes an ...MMX call write a plain last-resort picture and answer false.
 *
 * NULL BUFFERS. Null is a multiple of everything. Sizes, alignment and ppl_P3_only are tested first; a call that would
 * then read or write at a null address touches nothing, counts the frame and answers true, in the raw qualities too. A
 * scaled call looks at source, scratch and, where it resamples, destination before it starts. A last-resort picture
 * that needs a null buffer is not written; the answer is false and nothing is counted, as ever. A null table given to
 * a ppl_copy_ form changes nothing, and is answered as a good one.
 *
 * THE SOURCE OF A BAYER FRAME IS AN IN-OUT BUFFER: the corrected mosaic replaces the raw one while the frame is worked
 * on. Keep a copy if the raw frame is needed again. Sources of conversions are only read.
 *
 * THREADS. The library has no thread and no lock, and works on the caller's thread inside the call. A context serves
 * one thread at a time; no setter may run during a frame on that context. Different contexts may run at the same time.
 * The caller serialises ppl_init and ppl_free, with one lock for both. Shared by all contexts: the built-in gamma
 * tables (ppl_copy_gamma_tables65x256 and its studio-range sibling replace them) and the results of the four
 * centre-weighted means.
 *
 * STACK. No call takes more than 4 KB of stack on Linux, 3,584 bytes in the kernel image. Builds in plain C++, for
 * processors without vector code of their own, take up to 12 KB. There is no floating point and no call into the
 * operating system, so a frame may be converted wherever its buffers are resident, in kernel mode too. The Linux
 * library calls memcpy, memmove and memset of the C library and nothing else; the kernel image has its own.
 *
 * FIXED POINT. nf88 in a name is 8.8: 256 is 1.0. nf20_12 is 20.12: 4096 is 1.0.
 */
#ifndef PPL_H
#define PPL_H

#include <stdint.h>

/* The version of this header; as one number, 1.2.3 is 10203. The major number changes when a program that was built
 * against an older header would break. */
#define PPL_VERSION_MAJOR 1
#define PPL_VERSION_MINOR 0
#define PPL_VERSION_PATCH 0
#define PPL_VERSION (PPL_VERSION_MAJOR * 10000 + PPL_VERSION_MINOR * 100 + PPL_VERSION_PATCH)

#if defined(_WIN32)
#if defined(PPL_BUILDING) || defined(PPL_STATIC)
#define PPL_API
#else
#define PPL_API __declspec(dllimport)
#endif
#elif defined(PPL_BUILDING)
#define PPL_API __attribute__((visibility("default")))
#else
#define PPL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* One instance: controls, what is derived from them, geometry, statistics and line buffers. Opaque and flat. */
typedef struct ppl_context ppl_context;

/* ---- Context --------------------------------------------------------------------------------------------------- */

/* Claims the first free one of eight contexts, with all controls at their defaults; null if all are claimed. Frame
 * size, frame count, statistics, the place of the raw picture's mark and the leftovers of qualities 10 and 11 (see
 * ppl_set_CFA_T0_threshold) are those of the slot's last owner (zero in a slot that was never used); the first frame
 * call sets the size. Calls must not overlap, neither with one another nor with ppl_free. */
PPL_API ppl_context *ppl_init(void);

/* Gives the context back; true. A null context: false, nothing happens. Doing it twice is harmless as long as no
 * ppl_init came between: that one may have given the record to somebody else. Must not overlap with ppl_init. */
PPL_API uint8_t ppl_free(ppl_context *context);

/* Sets every control to its default, as its own reset does. Frame size, frame count and statistics stay. ALWAYS FALSE:
 * it ends with the lens correction's reset, which has no table to fill. */
PPL_API uint8_t ppl_reset_all_controls(ppl_context *context);

/* ---- Geometry ------------------------------------------------------------------------------------------------------
 *
 * Frame and conversion calls set the size themselves; these calls serve callers that want to know beforehand whether
 * a size is taken, and drivers of the interlaced conversions. */

/* Size of the input in samples and rows, stride in bytes. True if width is at most 2036, height and stride are at
 * most 2048; otherwise false and nothing changes. The output size follows by the decimation in force. Black lines are
 * NOT added to it: their counts stay, but count again only after the next change by ppl_set_decimation. */
PPL_API uint8_t ppl_new_frame_size(ppl_context *context, uint32_t width, uint32_t height, uint32_t stride);

/* Size, decimation and black lines in one call, with the input width as stride. With `validate` zero: decimation and
 * black lines 0, any input size that ppl_new_frame_size takes, and the output size given is not looked at. Otherwise
 * the combination must be one of these, or the call answers false and nothing changes:
 *
 *   input                     output                         decimation   black lines
 *   320 x 240                 160 x 120                      1            none
 *   320 x 240                 320 x 240                      0            none
 *   480 x 480                 480 x 480, 480 x 576           0            as many as the output is higher
 *   480 x 576                 480 x 576                      0            none
 *   640 x 480                 160 x 120                      2            none
 *   640 x 480                 320 x 240                      1            none
 *   640 x 480                 352 x 240, 352 x 288           0            none: the frame made is 640 x 480
 *   640 x 480                 640 x 480                      0            none
 *   640 x 480                 1280 x 960                     -1           none
 *   704 x 480, 704 x 576      176 x any from height / 4 on   2            as many as the output is higher
 *   704 x 480, 704 x 576      352 x any from height / 2 on   1            as many as the output is higher
 *   704 x 480, 704 x 576      704 x any from height on       0            as many as the output is higher
 *   720 x 480, 720 x 576      720 x any from height on       0            as many as the output is higher
 *   1280 x 1024               1280 x 1024                    0            none
 *
 * Of the black lines half, rounded down, stand above the picture. Called twice with the same black lines, the second
 * call loses them from the output height: reset the decimation between the two. */
PPL_API uint8_t ppl_new_frame_sizes(ppl_context *context, uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                    uint32_t out_height, uint8_t validate);

/* Output size: 0 as the input, 1 half and 2 a quarter of its width and height, -1 twice; and rows that the interlaced
 * conversions draw black above and below the picture. Default 0, 0, 0. A decimation beyond -1 to 2: false, nothing
 * changes. The counts are not tested: a negative one draws nothing but lowers the output height, and heights wrap in
 * 32 bits; an output of no height has no bytes. If all three stand already, the call answers true and does nothing:
 * lines that a change of size has dropped from the output height stay dropped. */
PPL_API uint8_t ppl_set_decimation(ppl_context *context, int32_t decimation, int32_t top_black_lines,
                                   int32_t bottom_black_lines);

/* All three to 0; without effect if they are. No result. */
PPL_API void ppl_reset_decimation(ppl_context *context);

/* As they stand. */
PPL_API int32_t ppl_decimation(const ppl_context *context);
PPL_API int32_t ppl_decimation_top_black_lines(const ppl_context *context);
PPL_API int32_t ppl_decimation_bottom_black_lines(const ppl_context *context);

/* ---- Bayer frame calls -----------------------------------------------------------------------------------------
 *
 * One raw frame in, one finished frame out, statistics ready to be read. In the order of the call:
 *
 * 1. A width, height or stride other than the context's is taken as ppl_new_frame_size takes it. Refused sizes: false,
 *    nothing changes, the frame is not counted, the statistics of the last frame stay.
 * 2. The statistics are cleared.
 * 3. The frame is converted by the context's quality and decimation, and ppl_n_frame moves on by one. This step is
 *    left out, and the call still answers true, if source or destination is no multiple of 16 or ppl_P3_only is set:
 *    the destination stays untouched and the statistics come out as zeros.
 * 4. The statistics are turned into means.
 *
 *   source        stride * height bytes, at a multiple of 16. OVERWRITTEN with the corrected mosaic (bytes between
 *                 width and stride stay), but for the raw qualities and those that write nothing.
 *   destination   one frame of the format at the output size, at a multiple of 16: width x height at decimation 0,
 *                 half of both at 1, twice both at -1; black lines of ppl_set_decimation add to the height until the
 *                 next change of size. Bytes as in FRAME FORMATS, I420 exactly n + 2 * (n / 4) for n pixels.
 *   width, height in samples and rows; stride in bytes from one row to the next.
 *
 * Result: true for a converted or only counted frame, false for a refused size and, although their picture is made,
 * for the raw qualities 4 and 9.
 *
 * By ppl_set_quality:
 *
 *   0            edge-directed reconstruction, sharpened; with the medium filter where that is enabled
 *   1, 2         edge-directed, bilinear; likewise with or without medium filter
 *   3            cell by cell, no interpolation
 *   4, 9         the raw mosaic; result false. Decimation 0, and 1 but for RGB24. I420 at widths that are multiples of
 *                160 carries a mark of V = 255 that moves from frame to frame. Mirrors are not looked at, nor the
 *                stride at decimation 0; at decimation 1 RGB32 takes its rows 2 * width apart, the others 2 * stride
 *   10, 11       as 0 and 1, with flat areas smoothed; their flat colours want a stride equal to the width
 *   12, 13       grey: the mosaic, sharpened in 12 (RGB and chroma of 12 pass the colour matrix). 13 in I420 and RGB24
 *                alone, whole at decimation 0 and 1; at -1 one byte in sixteen of the destination is written and the
 *                rest stays as it was, and the source is overwritten all the same
 *   15           the default: gradient-tested reconstruction, noise filter, sharpening, chroma smoothing. NOT IN RGB32
 *   5 to 8, 14   nothing is written, the frame is counted; likewise 13 and 15 in the formats where they are missing,
 *                and 3 and 13 at decimation 2
 *
 * Unfinished at double size, by design of the formats, and so to be expected:
 *
 *   - RGB32 makes no picture: quality 3 puts its frame of the single size into the doubled one, the others store pixels
 *     of three bytes that overlap; about three quarters of the bytes stay as they were.
 *   - RGB24 of quality 15 holds luma and chroma unconverted. RGB24 with exactly one mirror has its rows in other
 *     places, and half of the frame stays as it was (not in quality 3).
 *   - I420, YUYV and UYVY of qualities 10, 11 and 12, YUYV of quality 15 and YUYV of quality 2 with medium filter leave
 *     rows between untouched.
 *   - YUYV and UYVY: in the rows between, the right half of each 32 columns is no true mean of the rows above and
 *     below. Columns 16 to 23 and 24 to 31 mix in the means of columns 8 to 15 (not in quality 3).
 *   - I420, YUYV and UYVY under the horizontal mirror: of every row, column W - 2 of the doubled width W is half as
 *     bright as it should be (not in quality 3).
 *   - Quality 3 under a mirror is not the flip of its unmirrored picture: the pairs of a doubled row keep their order,
 *     and the row that stands twice is the last in memory either way.
 *
 * At half size RGB32 under the horizontal mirror takes the odd columns, from right to left, and without it the even
 * ones; all other formats take the even ones both times. Decimation 2 is for the interlaced conversions: a Bayer frame
 * there comes out broken, inside its buffer.
 *
 * The RGB of qualities 0 and 10 is formed from Y and chroma reduced to the usual ranges, and is paler than the RGB of
 * the other qualities and than their own YUV.
 *
 * Qualities 10 and 11 leave the flat colours of their last tile behind, and qualities 0 and 1 then lay them over the
 * pictures of every later frame, in every tile: even after ppl_free and ppl_init, for whoever gets the slot next. To
 * get rid of them, put one frame of quality 11 through the context in which nothing is flat: 32 x 4 samples or larger,
 * with greens that differ everywhere by more than ppl_CFA_T0_threshold, behind gain and tone. Bars of two columns at 0
 * and two at 255 do it with the controls at their defaults. */
PPL_API uint8_t ppl_process_blrtoi420(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                      uint32_t height, uint32_t stride);
PPL_API uint8_t ppl_process_blrtoyuyv(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                      uint32_t height, uint32_t stride);
PPL_API uint8_t ppl_process_blrtouyvy(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                      uint32_t height, uint32_t stride);
PPL_API uint8_t ppl_process_blrtorgb24(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                       uint32_t height, uint32_t stride);
PPL_API uint8_t ppl_process_blrtorgb32(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                       uint32_t height, uint32_t stride);

/* ---- Bayer wrappers: what a capture driver calls per frame ------------------------------------------------------
 *
 *   ending              decimation set   stride passed on   output
 *   (none)              0                width              width x height
 *   _deci_2_1           1                width              half of both
 *   _intp_1_2           -1               width              twice both
 *   _intp_1_2_stride    -1               2 * width          twice both
 *   _intp_1_4_stride    as it stands     4 * width          as the decimation in force says
 *   _scaling_stride     0                stride             out_width x out_height
 *
 * Source, destination and result are those of the frame calls above; black lines are set to none, but for
 * _intp_1_4_stride, which leaves decimation and black lines as they stand. The decimation stays set even if the size is
 * refused afterwards. With a stride of 2 or 4 times the width the source is stride * height
 * bytes, and strides above 2048 are refused, which limits the widths to 1024 and 512.
 *
 * If source or destination is no multiple of 8 nothing is set or counted; a last-resort picture is written and the
 * result is false. With n = width * height:
 *
 *   I420, YUYV, UYVY    m bytes of the source are copied as they are, then m / 2 bytes of 128: m is n, n / 4 for
 *                       _deci_2_1, 4 * n for the _intp forms (which therefore read 4 * n bytes of the source),
 *                       out_width * out_height for _scaling_stride
 *   RGB24               bytes of 255: 3 * n, 3 * (n / 4) for _deci_2_1, 12 * n for the _intp forms
 *   RGB32               bytes of 255: 4 * n, 4 * (n / 4) for _deci_2_1, 16 * n for the _intp forms
 *
 * The _scaling_stride forms convert at the input size into `scratch` and resample from there into `destination`:
 *
 *   scratch       one frame of the format at the input size, at a multiple of 16. YUYV may be read 4 bytes beyond.
 *                 At any other address nothing is converted, resampled or counted, and the answer is true.
 *   destination   out_width x out_height in the format, at a multiple of 8.
 *
 * Resampling takes what scratch holds. A quality that writes nothing there (5 to 8, 13 in YUYV, 14) leaves the frame of
 * some earlier call, or whatever the caller's memory held, and that is what comes out, resampled, with the answer true.
 * The raw qualities are resampled too, and answer false.
 *
 *   I420          bilinear, plane by plane. Whole at out_width that is a multiple of 32 and even out_height.
 *   YUYV          bilinear. Whole at out_width that is a multiple of 32.
 *   UYVY          is not resampled: the frame is in scratch, destination stays untouched.
 *   RGB24, RGB32  are not converted at all: destination is filled with 255, the result is always false.
 *
 * The scaler moves on by at most one input row per output row. So out_height from the input height up gives the whole
 * picture; below it the rows come from the top of the frame: shrink with _deci_2_1. The position of output pixel i in
 * its row is i * ((in << 20) / out) with 20 fraction bits, blended with 8-bit weights. A plane whose two output rows do
 * not fit 57344 bytes is not scaled. */
PPL_API uint8_t BaylorToI420MMX(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                uint32_t height);
PPL_API uint8_t BaylorToI420MMX_deci_2_1(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                         uint32_t height);
PPL_API uint8_t BaylorToI420MMX_intp_1_2(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                         uint32_t height);
PPL_API uint8_t BaylorToI420MMX_intp_1_2_stride(ppl_context *context, uint8_t *source, uint8_t *destination,
                                                uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToI420MMX_intp_1_4_stride(ppl_context *context, uint8_t *source, uint8_t *destination,
                                                uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToI420MMX_scaling_stride(ppl_context *context, uint8_t *source, uint32_t width, uint32_t height,
                                               uint32_t stride, uint8_t *destination, uint32_t out_width,
                                               uint32_t out_height, uint8_t *scratch);
PPL_API uint8_t BaylorToYUYVMMX(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                uint32_t height);
PPL_API uint8_t BaylorToYUYVMMX_deci_2_1(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                         uint32_t height);
PPL_API uint8_t BaylorToYUYVMMX_intp_1_2(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                         uint32_t height);
PPL_API uint8_t BaylorToYUYVMMX_intp_1_2_stride(ppl_context *context, uint8_t *source, uint8_t *destination,
                                                uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToYUYVMMX_intp_1_4_stride(ppl_context *context, uint8_t *source, uint8_t *destination,
                                                uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToYUYVMMX_scaling_stride(ppl_context *context, uint8_t *source, uint32_t width, uint32_t height,
                                               uint32_t stride, uint8_t *destination, uint32_t out_width,
                                               uint32_t out_height, uint8_t *scratch);
PPL_API uint8_t BaylorToUYVYMMX(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                uint32_t height);
PPL_API uint8_t BaylorToUYVYMMX_deci_2_1(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                         uint32_t height);
PPL_API uint8_t BaylorToUYVYMMX_intp_1_2(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                         uint32_t height);
PPL_API uint8_t BaylorToUYVYMMX_intp_1_2_stride(ppl_context *context, uint8_t *source, uint8_t *destination,
                                                uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToUYVYMMX_intp_1_4_stride(ppl_context *context, uint8_t *source, uint8_t *destination,
                                                uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToUYVYMMX_scaling_stride(ppl_context *context, uint8_t *source, uint32_t width, uint32_t height,
                                               uint32_t stride, uint8_t *destination, uint32_t out_width,
                                               uint32_t out_height, uint8_t *scratch);
PPL_API uint8_t BaylorToRGB24MMX(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                 uint32_t height);
PPL_API uint8_t BaylorToRGB24MMX_deci_2_1(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                          uint32_t height);
PPL_API uint8_t BaylorToRGB24MMX_intp_1_2(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                          uint32_t height);
PPL_API uint8_t BaylorToRGB24MMX_intp_1_2_stride(ppl_context *context, uint8_t *source, uint8_t *destination,
                                                 uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToRGB24MMX_intp_1_4_stride(ppl_context *context, uint8_t *source, uint8_t *destination,
                                                 uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToRGB24MMX_scaling_stride(ppl_context *context, uint8_t *source, uint32_t width, uint32_t height,
                                                uint32_t stride, uint8_t *destination, uint32_t out_width,
                                                uint32_t out_height, uint8_t *scratch);
PPL_API uint8_t BaylorToRGB32MMX(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                 uint32_t height);
PPL_API uint8_t BaylorToRGB32MMX_deci_2_1(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                          uint32_t height);
PPL_API uint8_t BaylorToRGB32MMX_intp_1_2(ppl_context *context, uint8_t *source, uint8_t *destination, uint32_t width,
                                          uint32_t height);
PPL_API uint8_t BaylorToRGB32MMX_intp_1_2_stride(ppl_context *context, uint8_t *source, uint8_t *destination,
                                                 uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToRGB32MMX_intp_1_4_stride(ppl_context *context, uint8_t *source, uint8_t *destination,
                                                 uint32_t width, uint32_t height);
PPL_API uint8_t BaylorToRGB32MMX_scaling_stride(ppl_context *context, uint8_t *source, uint32_t width, uint32_t height,
                                                uint32_t stride, uint8_t *destination, uint32_t out_width,
                                                uint32_t out_height, uint8_t *scratch);

/* ---- Frame behaviour -------------------------------------------------------------------------------------------- */

/* Which reconstruction a Bayer frame goes through, 0 to 15; see the Bayer frame calls. Default 15. Above 15: false,
 * not stored. */
PPL_API uint32_t ppl_quality(const ppl_context *context);
PPL_API uint8_t ppl_set_quality(ppl_context *context, uint32_t quality);
PPL_API uint8_t ppl_reset_quality(ppl_context *context);

/* Whether frames gather statistics: on if not 0, and read back as it was set. Default 1. Always true. Off, the sums
 * of a frame stay 0, and the frame takes less time. */
PPL_API uint8_t ppl_mean_collection(const ppl_context *context);
PPL_API uint8_t ppl_set_mean_collection(ppl_context *context, uint8_t value);
PPL_API uint8_t ppl_reset_mean_collection(ppl_context *context);

/* The off switch of all frame calls and conversions, for a machine that must not run them (by its name: one whose
 * processor has no more than the vector instructions of its third generation). If not 0, they convert nothing: the
 * output stays untouched, the frame is not counted, the statistics of a Bayer call come out as zeros, the answer is
 * true. Sizes are still taken, and last-resort pictures still made. The library never sets it by itself. Read back as
 * it was set. Default 0. Always true. */
PPL_API uint8_t ppl_P3_only(const ppl_context *context);
PPL_API uint8_t ppl_set_P3_only(ppl_context *context, uint8_t value);
PPL_API uint8_t ppl_reset_P3_only(ppl_context *context);

/* The setter answers true for the codes 0x5754, 0x5948, 0x42564F and 0x7544F4D, false for any other. It stores
 * nothing, and nothing depends on it: the getter gives 0. */
PPL_API uint32_t ppl_sensor_type(const ppl_context *context);
PPL_API uint8_t ppl_set_sensor_type(ppl_context *context, uint32_t code);

/* Mirror the picture left to right, top to bottom: on if not 0, and read back as set. Default 0. Always true. In
 * force from the next frame on. They reach Bayer frames of all qualities but the raw ones; of the conversions, YUYV,
 * UYVY and the 12-bit layout to I420 (see there). */
PPL_API uint8_t ppl_h_mirror(const ppl_context *context);
PPL_API uint8_t ppl_set_h_mirror(ppl_context *context, uint8_t value);
PPL_API uint8_t ppl_v_mirror(const ppl_context *context);
PPL_API uint8_t ppl_set_v_mirror(ppl_context *context, uint8_t value);
PPL_API uint8_t ppl_reset_mirrors(ppl_context *context);

/* Frames that calls on this slot have converted or counted, of all kinds. Counts on over ppl_free and ppl_init, and
 * is never reset. */
PPL_API uint32_t ppl_n_frame(const ppl_context *context);

/* ---- Sensor front end ----------------------------------------------------------------------------------------------
 *
 * What happens to a sample of the mosaic before colours are formed, in this order: lens correction, green balance
 * (both under Correction controls), black level, gain, delta, tone curve (under Picture controls). Qualities 4 and 9
 * take no part in any of it.
 *
 *   x = max(sample - black, 0);  v = clamp(((x * (gain >> 3)) >> 5) + delta, 0, 255);  out = rgb_gamma_table[v]
 *
 * Setters here store first and test then: a refused value answers false and is what the getter gives, while frames go
 * on with what was in force before. A setter of one colour tests that colour alone but rebuilds the row it lies in
 * from the stored values of both colours of the row, so that a value refused earlier can come into force through its
 * partner; the setters of all three test all three before anything comes into force. */

/* Black level of the four sites of the mosaic, in sample steps, subtracted stopping at 0. Each 0 to 255; default 0.
 * The getter skips null pointers. */
PPL_API void ppl_optical_black_b_gb_gr_r(const ppl_context *context, uint32_t *b, uint32_t *gb, uint32_t *gr,
                                         uint32_t *r);
PPL_API uint8_t ppl_set_optical_black_b_gb_gr_r(ppl_context *context, uint32_t b, uint32_t gb, uint32_t gr, uint32_t r);
PPL_API uint8_t ppl_reset_optical_black_b_gb_gr_r(ppl_context *context);

/* Tables of 256 bytes kept for the caller; no frame reads them. Default: table[i] = i. The copies take effect and
 * ALWAYS ANSWER FALSE; the reset answers true. */
PPL_API const uint8_t *ppl_r_dekneel_table(const ppl_context *context);
PPL_API const uint8_t *ppl_g_dekneel_table(const ppl_context *context);
PPL_API const uint8_t *ppl_b_dekneel_table(const ppl_context *context);
PPL_API uint8_t ppl_copy_r_dekneel_table(ppl_context *context, const uint8_t *table);
PPL_API uint8_t ppl_copy_g_dekneel_table(ppl_context *context, const uint8_t *table);
PPL_API uint8_t ppl_copy_b_dekneel_table(ppl_context *context, const uint8_t *table);
PPL_API uint8_t ppl_reset_rgb_dekneel_table(ppl_context *context);

/* Added behind the gain, in sample steps. Each -32768 to 32767; default 0. Otherwise false, stored, not in force.
 * Gain and delta add in 16 bits, wrapping, before the sum is clamped. */
PPL_API int32_t ppl_r_delta(const ppl_context *context);
PPL_API int32_t ppl_g_delta(const ppl_context *context);
PPL_API int32_t ppl_b_delta(const ppl_context *context);
PPL_API uint8_t ppl_set_rgb_delta(ppl_context *context, int32_t r, int32_t g, int32_t b);
PPL_API uint8_t ppl_set_r_delta(ppl_context *context, int32_t value);
PPL_API uint8_t ppl_set_g_delta(ppl_context *context, int32_t value);
PPL_API uint8_t ppl_set_b_delta(ppl_context *context, int32_t value);
PPL_API uint8_t ppl_reset_rgb_delta(ppl_context *context);

/* White balance, 8.8: 256 is 1.0. Each 0 to 2047 (just below 8.0), effective in steps of 8; default 256. Otherwise
 * false, stored, not in force. */
PPL_API uint32_t ppl_nf88_r_gain(const ppl_context *context);
PPL_API uint32_t ppl_nf88_g_gain(const ppl_context *context);
PPL_API uint32_t ppl_nf88_b_gain(const ppl_context *context);
PPL_API uint8_t ppl_set_rgb_gain(ppl_context *context, uint32_t r, uint32_t g, uint32_t b);
PPL_API uint8_t ppl_set_r_gain(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_set_g_gain(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_set_b_gain(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_reset_rgb_gain(ppl_context *context);

/* Kept for the caller, 8.8; no frame reads them. Default 256. The four setters ALWAYS ANSWER FALSE and always store;
 * the reset answers true. */
PPL_API uint32_t ppl_nf88_quals_r_gain(const ppl_context *context);
PPL_API uint32_t ppl_nf88_quals_g_gain(const ppl_context *context);
PPL_API uint32_t ppl_nf88_quals_b_gain(const ppl_context *context);
PPL_API uint8_t ppl_set_quals_rgb_gain(ppl_context *context, uint32_t r, uint32_t g, uint32_t b);
PPL_API uint8_t ppl_set_quals_r_gain(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_set_quals_g_gain(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_set_quals_b_gain(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_reset_quals_rgb_gain(ppl_context *context);

/* The matrix that takes the sensor's R, G, B to R, G, B, nine words row by row, 8.8. Default: 389, -15, -120; -118,
 * 509, -137; -19, -229, 503. Any values; true. Multiplied with saturation, hue and contrast into the one matrix that
 * a frame applies; products wrap in 32 bits, and coefficients reach a frame with 6 fraction bits in 16 bits, so keep
 * the rows small: within a few times 256. A null pointer of the getter is skipped. */
PPL_API void ppl_sensor_matrix(const ppl_context *context, int32_t *nine_words);
PPL_API uint8_t ppl_copy_sensor_matrix(ppl_context *context, const int32_t *nine_words);
PPL_API uint8_t ppl_reset_sensor_matrix(ppl_context *context);

/* Kept for the caller; nothing reads it. Default 12. Any value; true. */
PPL_API uint32_t ppl_sensor_matrix_index_upper_bound(const ppl_context *context);
PPL_API uint8_t ppl_set_sensor_matrix_index_upper_bound(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_reset_sensor_matrix_index_upper_bound(ppl_context *context);

/* ---- Medium filter -------------------------------------------------------------------------------------------------
 *
 * Replaces hot and dead samples of the mosaic. It acts in qualities 0, 1 and 2, and there not in the outermost 16
 * columns and two rows (at the top of quality 1 four). With `sum` that of the four nearest samples of the same
 * colour:
 *
 *   hot     sample > max((sum * (hot percentage >> 2)) >> 6, hot threshold)
 *   dead    sample < min((sum * (dead percentage >> 2)) >> 6, dead threshold)
 *
 * and such a sample becomes the second smallest of the four. All values are stored and then tested: a refused one
 * answers false and is what the getter gives, while frames go on with the one before. */

/* Off by default. Always true. The reset brings the whole family back, thresholds and percentages too. */
PPL_API uint8_t ppl_medium_filter_enabled(const ppl_context *context);
PPL_API uint8_t ppl_enable_medium_filter(ppl_context *context);
PPL_API uint8_t ppl_disable_medium_filter(ppl_context *context);
PPL_API uint8_t ppl_reset_medium_filter(ppl_context *context);

/* NOT part of this filter: the horizontal threshold of the noise filter of quality 15, in luma steps; the vertical
 * one is ppl_edge_threshold. A pixel whose left and right neighbours differ by less than this, and whose upper and
 * lower ones differ by less than that, becomes the mean of the middle two of the four. -32768 to 32767; default 24. 0
 * or less turns the noise filter off. */
PPL_API int32_t ppl_medium_filter_diff_threshold(const ppl_context *context);
PPL_API uint8_t ppl_set_medium_filter_diff_threshold(ppl_context *context, int32_t value);

/* In sample steps, -32768 to 32767. Defaults 240 and 16. */
PPL_API int32_t ppl_medium_filter_hot_pixel_threshold(const ppl_context *context);
PPL_API uint8_t ppl_set_medium_filter_hot_pixel_threshold(ppl_context *context, int32_t value);
PPL_API int32_t ppl_medium_filter_dead_pixel_threshold(const ppl_context *context);
PPL_API uint8_t ppl_set_medium_filter_dead_pixel_threshold(ppl_context *context, int32_t value);

/* Share of the SUM of the four neighbours, 8.8, so that 64 is their mean: defaults 80 (1.25 times the mean) and 48
 * (0.75). -65536 to 65535, effective in steps of 4; keep to 0 to 256, beyond which the product may leave 16 bits. */
PPL_API int32_t ppl_nf88_medium_filter_hot_pixel_threshold_percentage(const ppl_context *context);
PPL_API uint8_t ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(ppl_context *context, int32_t value);
PPL_API int32_t ppl_nf88_medium_filter_dead_pixel_threshold_percentage(const ppl_context *context);
PPL_API uint8_t ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(ppl_context *context, int32_t value);

/* ---- Quality ranges ------------------------------------------------------------------------------------------------
 *
 * Which 2 x 2 cells of the mosaic (B, Gb over Gr, R) count in the qualified means, ppl_qual_rgb_means_whole_frame,
 * and the histograms: those whose samples, behind the black level and before the gain, lie in all seven ranges. Both
 * ends belong to a range. */

/* Four differences of a cell's samples; in the names m stands for minus and p for plus:
 *
 *   BmGb          B - Gb                      default -25 to 25
 *   GrmR          Gr - R                      default -25 to 25
 *   BmGb_p_GrmR   (B - Gb) + (Gr - R)         default -30 to 30
 *   BmGb_m_GrmR   (B - Gb) - (Gr - R)         default -30 to 30
 *
 * A minimum above the maximum: false, nothing stored. A minimum below -32767 or a maximum above 32766: false, stored,
 * but the range in force stays. */
PPL_API int32_t ppl_qual_BmGb_min(const ppl_context *context);
PPL_API int32_t ppl_qual_BmGb_max(const ppl_context *context);
PPL_API uint8_t ppl_set_qual_BmGb_min_max(ppl_context *context, int32_t minimum, int32_t maximum);
PPL_API int32_t ppl_qual_GrmR_min(const ppl_context *context);
PPL_API int32_t ppl_qual_GrmR_max(const ppl_context *context);
PPL_API uint8_t ppl_set_qual_GrmR_min_max(ppl_context *context, int32_t minimum, int32_t maximum);
PPL_API int32_t ppl_qual_BmGb_p_GrmR_min(const ppl_context *context);
PPL_API int32_t ppl_qual_BmGb_p_GrmR_max(const ppl_context *context);
PPL_API uint8_t ppl_set_qual_BmGb_p_GrmR_min_max(ppl_context *context, int32_t minimum, int32_t maximum);
PPL_API int32_t ppl_qual_BmGb_m_GrmR_min(const ppl_context *context);
PPL_API int32_t ppl_qual_BmGb_m_GrmR_max(const ppl_context *context);
PPL_API uint8_t ppl_set_qual_BmGb_m_GrmR_min_max(ppl_context *context, int32_t minimum, int32_t maximum);

/* The samples themselves; the range of G holds for both greens. Within 0 to 255, minimum not above maximum; otherwise
 * false, nothing stored. Default 0 to 255. The call for all three stores all or none. The reset brings all seven
 * ranges back. */
PPL_API int32_t ppl_qual_R_min(const ppl_context *context);
PPL_API int32_t ppl_qual_R_max(const ppl_context *context);
PPL_API uint8_t ppl_set_qual_R_min_max(ppl_context *context, int32_t minimum, int32_t maximum);
PPL_API int32_t ppl_qual_G_min(const ppl_context *context);
PPL_API int32_t ppl_qual_G_max(const ppl_context *context);
PPL_API uint8_t ppl_set_qual_G_min_max(ppl_context *context, int32_t minimum, int32_t maximum);
PPL_API int32_t ppl_qual_B_min(const ppl_context *context);
PPL_API int32_t ppl_qual_B_max(const ppl_context *context);
PPL_API uint8_t ppl_set_qual_B_min_max(ppl_context *context, int32_t minimum, int32_t maximum);
PPL_API uint8_t ppl_set_qual_RGB_min_max(ppl_context *context, int32_t r_min, int32_t r_max, int32_t g_min,
                                         int32_t g_max, int32_t b_min, int32_t b_max);
PPL_API uint8_t ppl_reset_qual_min_max(ppl_context *context);

/* For exposure, ppl_qAE_rgb_means_whole_frame: behind the gain, a cell is left out if all four samples lie below the
 * minimum, or all four above the maximum. At 0 and at 255 that end rejects nothing. Within 0 to 255, minimum not
 * above maximum; otherwise false, nothing stored. Default 0 to 255. */
PPL_API int32_t ppl_qAE_RGB_min(const ppl_context *context);
PPL_API int32_t ppl_qAE_RGB_max(const ppl_context *context);
PPL_API uint8_t ppl_set_qAE_RGB_min_max(ppl_context *context, int32_t minimum, int32_t maximum);
PPL_API uint8_t ppl_reset_qAE_min_max(ppl_context *context);

/* ---- Filter thresholds ---------------------------------------------------------------------------------------------
 *
 * These setters test first: above the limit the answer is false and nothing is stored. Limits are the largest sums of
 * samples that a threshold is compared with. */

/* Sharpening in qualities 0, 10, 12 and 15, in steps of e = 4 * luma - the four neighbours: pixels with threshold <
 * |e| < threshold2 gain e * factor. Below the first they count as noise (and in quality 15 the noise filter takes its
 * vertical threshold from it), above the second as sharp enough. 0 to 1530 each; defaults 100 and 1530. A threshold
 * above 1020 turns the sharpening off. Quality 12 sharpens the mosaic by a gradient of its own with the same three
 * controls. */
PPL_API uint32_t ppl_edge_threshold(const ppl_context *context);
PPL_API uint8_t ppl_set_edge_threshold(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_reset_edge_threshold(ppl_context *context);
PPL_API uint32_t ppl_edge_threshold2(const ppl_context *context);
PPL_API uint8_t ppl_set_edge_threshold2(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_reset_edge_threshold2(ppl_context *context);

/* 8.8, 0 to 256 (1.0), effective in steps of 8; default 32, an eighth of e. Below 8 nothing is sharpened. */
PPL_API uint32_t ppl_nf88_edge_enhance_factor(const ppl_context *context);
PPL_API uint8_t ppl_set_nf88_edge_enhance_factor(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_reset_nf88_edge_enhance_factor(ppl_context *context);

/* Kept for the caller; no frame reads them. Limits 3060, 2040, 2040; defaults 60, 40, 40. The noise filter of quality
 * 15 goes by ppl_edge_threshold and ppl_medium_filter_diff_threshold. */
PPL_API uint32_t ppl_noise_filter_G_12T_threshold(const ppl_context *context);
PPL_API uint8_t ppl_set_noise_filter_G_12T_threshold(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_reset_noise_filter_G_12T_threshold(ppl_context *context);
PPL_API uint32_t ppl_noise_filter_R_8T_threshold(const ppl_context *context);
PPL_API uint8_t ppl_set_noise_filter_R_8T_threshold(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_reset_noise_filter_R_8T_threshold(ppl_context *context);
PPL_API uint32_t ppl_noise_filter_B_8T_threshold(const ppl_context *context);
PPL_API uint8_t ppl_set_noise_filter_B_8T_threshold(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_reset_noise_filter_B_8T_threshold(ppl_context *context);

/* Flat areas in qualities 10 and 11: a pair of columns is flat if none of the twelve differences between neighbouring
 * greens around it is above this, in sample steps behind the tone curve. 0 to 255; default 10. What these two qualities
 * leave behind for qualities 0 and 1: see the end of the Bayer frame calls. */
PPL_API uint32_t ppl_CFA_T0_threshold(const ppl_context *context);
PPL_API uint8_t ppl_set_CFA_T0_threshold(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_reset_CFA_T0_threshold(ppl_context *context);

/* Edges in qualities 0, 1, 10 and 11: a missing green is taken along an edge, not from all sides, where the green
 * gradient is above this in one direction and below it in the other. 0 to 63; default 15. */
PPL_API uint32_t ppl_CFA_T1_threshold(const ppl_context *context);
PPL_API uint8_t ppl_set_CFA_T1_threshold(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_reset_CFA_T1_threshold(ppl_context *context);

/* Motion in the interlaced conversions (not the _no_motion forms): how much the chroma of three neighbouring pixels
 * may have changed unequally between the earlier and the later field before it counts as motion. 0 to 765; default
 * 50. */
PPL_API uint32_t ppl_intl_3T_threshold(const ppl_context *context);
PPL_API uint8_t ppl_set_intl_3T_threshold(ppl_context *context, uint32_t value);
PPL_API uint8_t ppl_reset_intl_3T_threshold(ppl_context *context);

/* ---- Picture controls ----------------------------------------------------------------------------------------------
 *
 * They act on Bayer frames, raw ones excepted. Setters rebuild matrices and tables at once, in a few microseconds. A
 * frame loads them, and folds black level, gain, delta and tone table into one look-up for each site of the mosaic,
 * which takes some microseconds more at its start. Tables that a getter points to are part of the context and change
 * with the next setter. */

/* Saturation, 8.8: 0 grey, 256 as the sensor sees it, 512 at most; and hue in degrees, any number, stored as 0 to
 * 359. A saturation above 512: false, nothing stored. Setting one keeps the other. Defaults 256 and 0. */
PPL_API uint32_t ppl_nf88_sat(const ppl_context *context);
PPL_API int32_t ppl_hue_degree(const ppl_context *context);
PPL_API uint8_t ppl_set_sat(ppl_context *context, uint32_t nf88_sat);
PPL_API uint8_t ppl_set_hue(ppl_context *context, int32_t hue_degree);
PPL_API uint8_t ppl_set_sat_hue(ppl_context *context, uint32_t nf88_sat, int32_t hue_degree);
PPL_API uint8_t ppl_reset_sat_hue(ppl_context *context);

/* Tables of 256 bytes: the contrast curve, and each gamma table seen through it: yuv_contrast_gamma[i] =
 * yuv_gamma[contrast[i]], likewise RGB. Frames read two tables: rgb_gamma in the front end of every quality but 13,
 * and yuv_contrast_gamma in that of quality 13. */
PPL_API const uint8_t *ppl_contrast_table(const ppl_context *context);
PPL_API const uint8_t *ppl_yuv_contrast_gamma_table(const ppl_context *context);
PPL_API const uint8_t *ppl_rgb_contrast_gamma_table(const ppl_context *context);
PPL_API const uint8_t *ppl_yuv_gamma_table(const ppl_context *context);
PPL_API const uint8_t *ppl_rgb_gamma_table(const ppl_context *context);

/* The contrast curve through (0, 0), (x, y), (255 - x, 255 - y), (255, 255); with x = 0 the straight line from (0, y)
 * to (255, 255 - y). x 0 to 127, above that false, nothing stored; y is not tested. Default 0, 0, the identity.
 * Reaches the three tables above, not the contrast gain. */
PPL_API uint8_t ppl_set_contrast_xy(ppl_context *context, uint32_t x, uint32_t y);

/* Contrast as a user knows it, -127 to 127; beyond that false, nothing stored or written. Sets the curve, x = c for c
 * >= 0 or y = -c below, and tells x and y through the pointers, each of which may be null. Sets as well the contrast
 * gain, by which luma turns about mid-grey in the colour matrices: 1 + c / 128 upward, 1 + c / 256 downward. */
PPL_API uint8_t ppl_set_contrast_c(ppl_context *context, int32_t c, uint32_t *out_x, uint32_t *out_y);

/* A contrast curve of the caller's, 256 bytes; true. The contrast gain stays. */
PPL_API uint8_t ppl_copy_contrast_table(ppl_context *context, const uint8_t *table);

/* Contrast 0, the identity; true. */
PPL_API uint8_t ppl_reset_contrast(ppl_context *context);

/* Copies a table of the context to 256 bytes of the caller's; true. A null pointer is skipped. */
PPL_API uint8_t ppl_get_yuv_gamma_table(const ppl_context *context, uint8_t *table);
PPL_API uint8_t ppl_get_rgb_gamma_table(const ppl_context *context, uint8_t *table);

/* A tone curve of the caller's, 256 bytes; true. Its exponent is not known: ppl_nf20_12_gamma gives 0 from then on.
 * */
PPL_API uint8_t ppl_copy_yuv_gamma_table(ppl_context *context, const uint8_t *table);
PPL_API uint8_t ppl_copy_rgb_gamma_table(ppl_context *context, const uint8_t *table);

/* The exponent of the tone curve, 20.12 (1843 by default, which is 0.45). The pointers, each of which may be null,
 * receive 0 (the index is not kept), -32 and 32. */
PPL_API int32_t ppl_nf20_12_gamma(const ppl_context *context, int32_t *out_index, int32_t *out_min, int32_t *out_max);

/* One of the 65 tone curves, -32 (darkest, exponent 2.02) over 0 (0.45) to 32 (brightest, 0.10), as YUV and as RGB
 * gamma table. Beyond that: false, nothing changes. Default 0. A curve is a power with a straight toe; for the default,
 * with u = x / 255,
 *
 *   y = 4.374 u                      for u < 0.018
 *   y = 1.102 u^0.45 - 0.102         from there on
 *
 * and the entry is 255 y, rounded, give or take one step. The others have their own exponent g = 0.45 e^(-3 index / 64)
 * and their own offset a in y = (1 + a) u^g - a, which grows from 0 for the dark curves to 1.4 for the brightest; the
 * toe always ends at 0.018, where the two parts meet. The curves are those of ppl_get_gamma_tables65x256 as they stand
 * when this is called: after ppl_copy_gamma_tables65x256 the replaced row is taken, by ppl_reset_gamma,
 * ppl_reset_all_controls and ppl_init too, while the exponent that ppl_nf20_12_gamma gives remains the built-in one. */
PPL_API uint8_t ppl_set_gamma(ppl_context *context, int32_t index);
PPL_API uint8_t ppl_reset_gamma(ppl_context *context);

/* The 65 curves themselves, 65 * 256 = 16640 bytes, curve -32 first: in full range, which ppl_set_gamma takes its
 * curves from, and in studio range (16 to 235), which is only kept. The get forms copy them out, the copy forms
 * REPLACE THEM FOR ALL CONTEXTS of the process; tables already in a context stay. Always true. Not guarded: no other
 * context may take a gamma meanwhile. A null pointer of a get form is skipped. */
PPL_API uint8_t ppl_get_gamma_tables65x256(const ppl_context *context, uint8_t *tables);
PPL_API uint8_t ppl_copy_gamma_tables65x256(ppl_context *context, const uint8_t *tables);
PPL_API uint8_t ppl_get_gamma_tables65x256_16_235(const ppl_context *context, uint8_t *tables);
PPL_API uint8_t ppl_copy_gamma_tables65x256_16_235(ppl_context *context, const uint8_t *tables);

/* ---- Correction controls ---------------------------------------------------------------------------------------- */

/* Green balance: where the two greens of a 2 x 2 cell differ by less than the threshold, both become their rounded
 * mean. Behind the lens correction, before the black level. Off by default; the flag's calls always answer true.
 * Threshold in sample steps, -32768 to 32767, default 10; otherwise false, stored, the one in force stays. The reset
 * brings both back. */
PPL_API uint8_t ppl_GbGr_correction_enabled(const ppl_context *context);
PPL_API uint8_t ppl_enable_GbGr_correction(ppl_context *context);
PPL_API uint8_t ppl_disable_GbGr_correction(ppl_context *context);
PPL_API int32_t ppl_GbGr_correction_diff_threshold(const ppl_context *context);
PPL_API uint8_t ppl_set_GbGr_correction_diff_threshold(ppl_context *context, int32_t value);
PPL_API uint8_t ppl_reset_GbGr_correction(ppl_context *context);

/* Lens shading: every sample is multiplied with a factor from the table, 8192 for 1.0, and clamped to 255. Off by
 * default; the flag's calls always answer true and leave the table alone. Enabled without a table it does nothing. */
PPL_API uint8_t ppl_lens_correction_enabled(const ppl_context *context);
PPL_API uint8_t ppl_enable_lens_correction(ppl_context *context);
PPL_API uint8_t ppl_disable_lens_correction(ppl_context *context);

/* As given to ppl_set_lens_correction last, accepted or not; the table is null if none was accepted. */
PPL_API int32_t ppl_lens_correction_width(const ppl_context *context);
PPL_API int32_t ppl_lens_correction_height(const ppl_context *context);
PPL_API int32_t ppl_lens_correction_origin_x(const ppl_context *context);
PPL_API int32_t ppl_lens_correction_origin_y(const ppl_context *context);
PPL_API int32_t ppl_lens_correction_f1(const ppl_context *context);
PPL_API int32_t ppl_lens_correction_f1_rshift_count(const ppl_context *context);
PPL_API int32_t ppl_lens_correction_f2(const ppl_context *context);
PPL_API int32_t ppl_lens_correction_f2_rshift_count(const ppl_context *context);
PPL_API uint16_t *ppl_lens_correction_table(const ppl_context *context);

/* Fills a table of the caller's and holds on to it. With r the squared distance from the optical centre in samples,
 * the factor is
 *
 *   1 + f1 * r / 2^f1_rshift_count - f2 * r * r / 2^f2_rshift_count
 *
 *   width, height        of the frames to come, in samples and rows (width is the table's, too)
 *   origin_x, origin_y   the optical centre, column and row
 *   table                uint16_t, `width` entries a row, one row for every distance in rows from the centre:
 *                        max(origin_y, height - origin_y) + 1 of them. At a multiple of 2 bytes. IT MUST STAY VALID
 *                        until another call of this function, or a reset, drops it.
 *   table_size           in BYTES: at least 2 * width * rows
 *   ..._rshift_count     13 or more
 *
 * True if the table was filled, also where the sizes leave nothing to fill (a width or a count of rows that is 0 or
 * negative): frames then find 1.0 everywhere. Null or too small: false, no table is in force; the other values are
 * stored. The default is 640, 480, 320, 240, no table, 16, 24, 16, 44. A change of the frame's size does not rebuild
 * the table: the factor of column x at a distance of d rows is entry d * width + x. So a narrower frame is served
 * rightly, columns of a frame wider than the table read on in the table's next row, and behind the table is 1.0. */
PPL_API uint8_t ppl_set_lens_correction(ppl_context *context, int32_t width, int32_t height, int32_t origin_x,
                                        int32_t origin_y, uint16_t *table, int32_t table_size, int32_t f1,
                                        int32_t f1_rshift_count, int32_t f2, int32_t f2_rshift_count);

/* Flag off, default values, no table. ALWAYS FALSE, for want of a table. */
PPL_API uint8_t ppl_reset_lens_correction(ppl_context *context);

/* ---- Statistics ----------------------------------------------------------------------------------------------------
 *
 * Of the last Bayer frame on this context: valid from the end of its call until the next Bayer frame call, whatever
 * controls are set between. Conversions leave them alone. A frame call that was left out (see there), a frame without
 * ppl_mean_collection, and qualities that only count or are raw give zeros.
 *
 * Means are three words, R, G, B, in units of 1/256 of a sample step, G over both greens. Samples are taken at three
 * places of the front end; only the first is linear in the light whatever the controls:
 *
 *   linear    behind lens correction, green balance and black level, before the gain: the qualified means, their count
 *             and the histograms
 *   exposed   behind gain and delta, before the tone curve
 *   toned     behind the tone curve
 *
 *   All other figures take HALF OF THEIR CELLS EXPOSED AND HALF TONED: the 48 cells, what lies outside, the mean of the
 *   cells, of the frame, the centre-weighted means and the qAE means. With the identity as RGB gamma table (in quality
 *   13 as YUV contrast-gamma table) the halves agree, and all means are linear up
 *   to the cut at 255.
 *
 * Looked at are columns 2 and 3 of every four in every second row pair, in most qualities not near the frame's edges;
 * sums are scaled up to the frame by a factor that allows for the edges roughly. On a flat frame the mean of the frame
 * therefore comes out exact in qualities 3 and 13, and else some parts in a hundred off: at 640 x 480 from 0.8 % too
 * high (2, 15) to 4.4 % too high (1, 11), and 5.8 % too low in quality 12, which has no such factor.
 *
 * The frame is divided into 8 x 6 cells from its top left corner, each (width / 16 / 8) tiles of 16 columns wide and
 * (height / 2 / 6) row pairs high; what the divisions leave over is outside. Below 128 columns or 12 rows all is
 * outside. Qualities 3 and 13 fill neither cells nor outside, 13 has the mean of the frame alone. Three things keep a
 * cell's mean from being a mean: samples count for the cell of the pixel that leaves the pipeline while they enter it,
 * up to 48 columns and 6 rows further left and up; cells at the edges hold fewer samples; and cells of an odd number of
 * tiles or row pairs hold more and fewer by turns. All are divided alike. A flat frame at 640 x 480 in quality 15 gives
 * cells between 0.41 and 1.36 of its brightness: compare a cell with the same cell of a flat frame, not with others.
 *
 * The first group of each row looked at in the first step (linear figures) holds in part what the last row looked at
 * left there, on the first such row of a frame what the frame before left: qualified means, counts and histograms of
 * equal frames may differ by that much.
 *
 * Sums are kept in 32 bits, and wrap where a cell or what lies outside is large and bright: at 96 x 2048 samples of
 * 200 the green mean of the frame in quality 2 reads 7609 where 51,200 would be right. Green wraps first, red and blue
 * at twice the size. No figure of the frame or of a cell wraps in a frame whose width is a multiple of 128, nor in one
 * of at least 128 columns and at most 1172 rows, nor in one of fewer than 65,000 samples, nor where the mean sample is
 * below 85. */

/* 48; writes 8 and 6. Null pointers are skipped. */
PPL_API uint32_t ppl_n_sub_windows(const ppl_context *context, uint32_t *out_columns, uint32_t *out_rows);

/* The means of the 48 cells, row by row, three words each: cell = 8 * row + column. Exposed and toned by halves. */
PPL_API const uint32_t *ppl_rgb_means_sub_windows(const ppl_context *context);

/* What lies outside, its sum divided as if it were one cell: a mean only if it has a cell's size. Exposed and toned by
 * halves. */
PPL_API const uint32_t *ppl_rgb_means_outside_all_sub_windows(const ppl_context *context);

/* The mean of the 48 cells (a hair low: times 341 / 16384). Exposed and toned by halves. */
PPL_API const uint32_t *ppl_rgb_means_all_sub_windows(const ppl_context *context);

/* The mean of the frame, outside included. Exposed and toned by halves. */
PPL_API const uint32_t *ppl_rgb_means_whole_frame(const ppl_context *context);

/* Centre-weighted means of the cells, exposed and toned by halves, worked out by the call: of the four central cells
 * alone; and of all cells, those next to the edge counting 1, the 20 further in 2, the four central ones 4, 8 and 16.
 * While the control ppl_quality is 3 they give the mean of the frame. Each of the four has ONE RESULT FOR ALL CONTEXTS,
 * which its next call overwrites. */
PPL_API const uint32_t *ppl_rgb_means_whole_frame_4pts(const ppl_context *context);
PPL_API const uint32_t *ppl_rgb_means_whole_frame_central4(const ppl_context *context);
PPL_API const uint32_t *ppl_rgb_means_whole_frame_central8(const ppl_context *context);
PPL_API const uint32_t *ppl_rgb_means_whole_frame_central16(const ppl_context *context);

/* The mean of the cells within ppl_set_qAE_RGB_min_max, exposed and toned by halves; zeros if none is. A true mean of
 * the cells that were looked at, scaled by nothing. */
PPL_API const uint32_t *ppl_qAE_rgb_means_whole_frame(const ppl_context *context);

/* The mean of the cells within the quality ranges, linear; zeros if none is. A true mean as well. */
PPL_API const uint32_t *ppl_qual_rgb_means_whole_frame(const ppl_context *context);

/* 256 words each: how many cells have which mean over groups of eight cells, linear, cells outside the quality ranges
 * counting as black. Each group adds 8 to one bin of R and of B and twice 8 to G. Not scaled to the frame. */
PPL_API const uint32_t *ppl_r_histogram(const ppl_context *context);
PPL_API const uint32_t *ppl_g_histogram(const ppl_context *context);
PPL_API const uint32_t *ppl_b_histogram(const ppl_context *context);

/* How many 2 x 2 cells of the frame passed, estimated from those that were looked at. The estimate can exceed what the
 * frame has: 77,393 of 76,800 where all of 640 x 480 pass in quality 15. */
PPL_API uint32_t ppl_n_qAE_2x2_whole_frame(const ppl_context *context);
PPL_API uint32_t ppl_n_qual_2x2_whole_frame(const ppl_context *context);

/* ---- Packed YUV, 12-bit packed and RGB conversions ---------------------------------------------------------------
 *
 * Frames from a video decoder. The arithmetic is fixed: no control but the mirrors (YUV to I420 alone) acts on them,
 * and they touch no statistics.
 *
 *   input         in_width x in_height, rows back to back: 2 bytes a pixel, 1.5 in the 12-bit layout
 *   output        out_width x out_height in the format
 *   both          at multiples of 16
 *
 * The ppl_process_ form, in this order: sizes other than the context's are looked up as ppl_new_frame_sizes does with
 * validation on, and a pair that is not in its table gives false with nothing changed; a pointer that is no multiple
 * of 16, or ppl_P3_only, gives true with no output and no count (an accepted size has been taken by then); else the
 * frame is converted and counted, and the result is true. For sizes that are not in the table call
 * ppl_new_frame_sizes(context, w, h, w, h, 0) first: sizes equal to the context's are not looked up.
 *
 * The ...MMX form first tests for multiples of 8. If a pointer fails nothing but a last-resort picture happens, and
 * the result is false: to I420 the first out_width * out_height bytes of the input with half as many bytes of 128
 * behind them; to RGB24 and RGB32 bytes of 255 all over.
 *
 * YUYV, UYVY to I420: luma is copied, a chroma sample is the rounded-up mean (a + b + 1) >> 1 of two rows. Both mirrors
 * act. Only at decimation 0; otherwise the frame is counted and nothing is written. Black lines are not written.
 *
 * YUYV, UYVY to RGB24: with y = 74 * max(Y - 16, 0), u = U - 128, v = V - 128, in 16-bit arithmetic that wraps,
 *
 *   blue  = (y + 129 u) >> 6,   green = (y - 25 u - 52 v) >> 6,   red = (y + 102 v) >> 6,   each cut at 0 and 255
 *
 * (BT.601 at a scale of 64; blue wraps to 0 where Y and U are near 255). Mirrors are not looked at. Only at decimation
 * 0: otherwise the picture is open.
 *
 * UYVYYYYYToI420MMX and YUYVYYYYToI420MMX are one function, and so are their process forms, which do without the test
 * for multiples of 8 and its last-resort picture. They take frames of 12 bits a pixel: 12 bytes for 8 pixels, four luma
 * and chroma byte pairs and four more luma bytes. U and V bytes go mixed to the U plane, from the second row
 * of each row pair; the V plane is not written. Of each 32 pixels, pixels 4 to 7 hold the luma of 20 to 23, and 20 to
 * 23 hold the luma of 24, 0, the luma of 25, 0. Only at decimation 0; both mirrors act.
 *
 * RGB24ToRGB32MMX converts nothing: its process form counts the frame and returns false. */
PPL_API uint8_t YUYVToI420MMX(ppl_context *context, const uint8_t *input, uint8_t *output, uint32_t in_width,
                              uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_yuyvtoi420(ppl_context *context, const uint8_t *input, uint8_t *output, uint32_t in_width,
                                       uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t UYVYToI420MMX(ppl_context *context, const uint8_t *input, uint8_t *output, uint32_t in_width,
                              uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_uyvytoi420(ppl_context *context, const uint8_t *input, uint8_t *output, uint32_t in_width,
                                       uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t YUYVToRGB24MMX(ppl_context *context, const uint8_t *input, uint8_t *output, uint32_t in_width,
                               uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_yuyvtorgb24(ppl_context *context, const uint8_t *input, uint8_t *output, uint32_t in_width,
                                        uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t UYVYToRGB24MMX(ppl_context *context, const uint8_t *input, uint8_t *output, uint32_t in_width,
                               uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_uyvytorgb24(ppl_context *context, const uint8_t *input, uint8_t *output, uint32_t in_width,
                                        uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t UYVYYYYYToI420MMX(ppl_context *context, const uint8_t *input, uint8_t *output, uint32_t in_width,
                                  uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_uyvyyyyytoi420(ppl_context *context, const uint8_t *input, uint8_t *output,
                                           uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                           uint32_t out_height);
PPL_API uint8_t YUYVYYYYToI420MMX(ppl_context *context, const uint8_t *input, uint8_t *output, uint32_t in_width,
                                  uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_yuyvyyyytoi420(ppl_context *context, const uint8_t *input, uint8_t *output,
                                           uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                           uint32_t out_height);
PPL_API uint8_t RGB24ToRGB32MMX(ppl_context *context, const uint8_t *input, uint8_t *output, uint32_t in_width,
                                uint32_t in_height, uint32_t out_width, uint32_t out_height);
PPL_API uint8_t ppl_process_rgb24torgb32(ppl_context *context, const uint8_t *input, uint8_t *output, uint32_t in_width,
                                         uint32_t in_height, uint32_t out_width, uint32_t out_height);

/* ---- Interlaced conversions --------------------------------------------------------------------------------------
 *
 * Fields of packed 4:2:2 video to whole frames.
 *
 *   kept_field      supplies the even output rows; never altered
 *   later_field     supplies the odd output rows
 *   earlier_field   the field before later_field with the same rows; the motion test compares the two. The library
 *                   keeps no field: pass the later_field of the last frame. For the first frame pass later_field
 *                   itself, which gives the plain weave
 *   output          out_width x out_height in the format, but the full in_width x in_height where 640 x 480 is asked
 *                   to become 352 x 240 or 352 x 288
 *
 * in_width and in_height are those of the whole frame: a field is in_width * in_height bytes, in_height / 2 rows of
 * 2 * in_width bytes. All four pointers are at multiples of 16, read or not. One that is not read may be null; one that
 * would be read or written makes the call count the frame and do nothing else. Sizes, alignment, results
 * and count are those of the conversions above; the last-resort picture takes out_width * out_height bytes of
 * kept_field and, to YUYV and UYVY, as many of later_field behind them, to I420 half as many bytes of 128.
 *
 * Full size. Rows are woven. The motion form then looks at the chroma of the odd rows: with d the difference of later
 * and earlier field at pixels x - 1, x, x + 1 (0 outside the row) and S their sum, there is motion where
 * |S - 3 d(x-1)| + |S - 3 d(x)| + |S - 3 d(x+1)| is above ppl_intl_3T_threshold (0 to 765, default 50), and the chroma
 * byte becomes the rounded-up mean of the kept rows above and below. Luma is always woven, as is the last row pair.
 * _no_motion forms weave and do not read earlier_field. I420 chroma is the mean of the two finished rows. RGB24 is
 * converted as above.
 *
 * Black lines (ppl_new_frame_sizes with an out_height above the frame's) are Y 16, U and V 128, in RGB24 0. In RGB24
 * with black lines the picture lies one row off: at full size its first row replaces the last black row above it and
 * one row below keeps what the buffer held; when shrinking the last picture row is replaced instead.
 *
 * Half and quarter size (decimation 1, 2) read the kept field alone: means of pixel pairs; at a quarter every second
 * row and pair. Double size (decimation -1, motion forms alone) puts rounded-up means between columns and rows.
 *
 *   writes nothing, counts, true: IntlYUYVToUYVYMMX_no_motion and IntlUYVYToYUYVMMX_no_motion (one function) at every
 *   size; every other _no_motion form and both layout-changing motion forms at double size. Double size from UYVY
 *   stores zero bytes.
 *
 * Mirrors have no effect here. */
PPL_API uint8_t IntlYUYVToYUYVMMX(ppl_context *context, const uint8_t *earlier_field, const uint8_t *kept_field,
                                  const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height,
                                  uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlYUYVToYUYVMMX_no_motion(ppl_context *context, const uint8_t *earlier_field,
                                            const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output,
                                            uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                            uint32_t out_height);
PPL_API uint8_t IntlYUYVToUYVYMMX(ppl_context *context, const uint8_t *earlier_field, const uint8_t *kept_field,
                                  const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height,
                                  uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlYUYVToUYVYMMX_no_motion(ppl_context *context, const uint8_t *earlier_field,
                                            const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output,
                                            uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                            uint32_t out_height);
PPL_API uint8_t IntlYUYVToI420MMX(ppl_context *context, const uint8_t *earlier_field, const uint8_t *kept_field,
                                  const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height,
                                  uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlYUYVToI420MMX_no_motion(ppl_context *context, const uint8_t *earlier_field,
                                            const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output,
                                            uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                            uint32_t out_height);
PPL_API uint8_t IntlYUYVToRGB24MMX(ppl_context *context, const uint8_t *earlier_field, const uint8_t *kept_field,
                                   const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height,
                                   uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlYUYVToRGB24MMX_no_motion(ppl_context *context, const uint8_t *earlier_field,
                                             const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output,
                                             uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                             uint32_t out_height);
PPL_API uint8_t IntlUYVYToYUYVMMX(ppl_context *context, const uint8_t *earlier_field, const uint8_t *kept_field,
                                  const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height,
                                  uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlUYVYToYUYVMMX_no_motion(ppl_context *context, const uint8_t *earlier_field,
                                            const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output,
                                            uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                            uint32_t out_height);
PPL_API uint8_t IntlUYVYToUYVYMMX(ppl_context *context, const uint8_t *earlier_field, const uint8_t *kept_field,
                                  const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height,
                                  uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlUYVYToUYVYMMX_no_motion(ppl_context *context, const uint8_t *earlier_field,
                                            const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output,
                                            uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                            uint32_t out_height);
PPL_API uint8_t IntlUYVYToI420MMX(ppl_context *context, const uint8_t *earlier_field, const uint8_t *kept_field,
                                  const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height,
                                  uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlUYVYToI420MMX_no_motion(ppl_context *context, const uint8_t *earlier_field,
                                            const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output,
                                            uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                            uint32_t out_height);
PPL_API uint8_t IntlUYVYToRGB24MMX(ppl_context *context, const uint8_t *earlier_field, const uint8_t *kept_field,
                                   const uint8_t *later_field, uint8_t *output, uint32_t in_width, uint32_t in_height,
                                   uint32_t out_width, uint32_t out_height);
PPL_API uint8_t IntlUYVYToRGB24MMX_no_motion(ppl_context *context, const uint8_t *earlier_field,
                                             const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output,
                                             uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                             uint32_t out_height);
PPL_API uint8_t ppl_process_intlyuyvtoyuyv(ppl_context *context, const uint8_t *earlier_field,
                                           const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output,
                                           uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                           uint32_t out_height);
PPL_API uint8_t ppl_process_intluyvytouyvy(ppl_context *context, const uint8_t *earlier_field,
                                           const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output,
                                           uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                           uint32_t out_height);
PPL_API uint8_t ppl_process_intlyuyvtoi420(ppl_context *context, const uint8_t *earlier_field,
                                           const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output,
                                           uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                           uint32_t out_height);
PPL_API uint8_t ppl_process_intluyvytoi420(ppl_context *context, const uint8_t *earlier_field,
                                           const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output,
                                           uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                           uint32_t out_height);
PPL_API uint8_t ppl_process_intlyuyvtorgb24(ppl_context *context, const uint8_t *earlier_field,
                                            const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output,
                                            uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                            uint32_t out_height);
PPL_API uint8_t ppl_process_intluyvytorgb24(ppl_context *context, const uint8_t *earlier_field,
                                            const uint8_t *kept_field, const uint8_t *later_field, uint8_t *output,
                                            uint32_t in_width, uint32_t in_height, uint32_t out_width,
                                            uint32_t out_height);

#ifdef __cplusplus
}
#endif

#endif /* PPL_H */
