/* An exposure and white-balance loop that is driven by the statistics of each frame.
 *
 * The camera here is a model: a scene of grey and coloured patches, a light that changes its strength and its colour
 * half way, and a sensor with an exposure time. The loop knows none of that: it reads the library's means after a
 * frame and sets the exposure and the gains for the next one. Exits with 1 if it doesn't settle. */
#include <math.h>
#include <ppl.h>
#include <stdio.h>
#include <stdlib.h>

enum { width = 640, height = 480, pixels = width * height, frames = 60 };

struct light {
  double r, g, b;
};

/* Share of light that the scene gives back: a grey scale with a few coloured patches in it. */
static double reflected(int row, int column, int colour) {
  const int patch = column / 80 + row / 80 * 8;
  if (patch % 11 == 3) return (colour == 0) ? 0.55 : 0.25;
  if (patch % 11 == 7) return (colour == 2) ? 0.55 : 0.25;
  return 0.15 + 0.05 * (patch % 9);
}

static void expose(uint8_t* mosaic, struct light light, double exposure) {
  uint32_t noise = 1;
  for (int r = 0; r < height; ++r)
    for (int c = 0; c < width; ++c) {
      const int colour = (r % 2 == 0 && c % 2 == 0) ? 2 : (r % 2 == 1 && c % 2 == 1) ? 0 : 1;
      const double of_colour = colour == 0 ? light.r : colour == 1 ? light.g : light.b;
      noise = noise * 1664525u + 1013904223u;
      const double level = 255 * reflected(r, c, colour) * of_colour * exposure + (noise >> 30);
      mosaic[r * width + c] = (uint8_t)fmin(level, 255);
    }
}

static double between(double value, double low, double high) {
  return fmin(fmax(value, low), high);
}

static double plane_mean(const uint8_t* plane, int n) {
  double sum = 0;
  for (int k = 0; k < n; ++k) sum += plane[k];
  return sum / n;
}

int main(void) {
  uint8_t* mosaic = aligned_alloc(64, pixels);
  uint8_t* picture = aligned_alloc(64, pixels * 3 / 2);
  ppl_context* context = ppl_init();
  if (!mosaic || !picture || !context) {
    fprintf(stderr, "no memory, or all eight contexts are taken\n");
    return 1;
  }

  ppl_set_mean_collection(context, 1);
  /* Cells that may be grey under any light we expect: neither dark nor clipped, colour differences within reach. */
  ppl_set_qual_RGB_min_max(context, 8, 245, 8, 245, 8, 245);
  ppl_set_qual_BmGb_min_max(context, -150, 150);
  ppl_set_qual_GrmR_min_max(context, -150, 150);
  ppl_set_qual_BmGb_p_GrmR_min_max(context, -200, 200);
  ppl_set_qual_BmGb_m_GrmR_min_max(context, -200, 200);

  const double target = 90;
  double exposure = 0.2, r_gain = 1, b_gain = 1, mean = 0;
  double u = 0, v = 0;
  for (int frame = 0; frame < frames; ++frame) {
    const struct light light = frame < frames / 2 ? (struct light){1.4, 1.0, 0.6}
                                                  : (struct light){0.5, 0.7, 0.9}; /* lamp, then window */
    expose(mosaic, light, exposure);
    if (!BaylorToI420MMX(context, mosaic, picture, width, height)) {
      fprintf(stderr, "frame %d was refused\n", frame);
      return 1;
    }

    /* Exposure: the frame's middle counts most. Steps are bounded, so that one odd frame does little. */
    const uint32_t* centre = ppl_rgb_means_whole_frame_central8(context);
    mean = (centre[0] + 2.0 * centre[1] + centre[2]) / (4 * 256);
    exposure = between(exposure * between(target / fmax(mean, 1), 0.6, 1.6), 0.01, 4);

    /* White balance: the qualified cells are measured before the gains, so their ratio is the gain itself. */
    const uint32_t* grey = ppl_qual_rgb_means_whole_frame(context);
    if (ppl_n_qual_2x2_whole_frame(context) > 1000) {
      r_gain += 0.5 * (between((double)grey[1] / fmax(grey[0], 1), 0.25, 3.9) - r_gain);
      b_gain += 0.5 * (between((double)grey[1] / fmax(grey[2], 1), 0.25, 3.9) - b_gain);
      ppl_set_rgb_gain(context, (uint32_t)(256 * r_gain), 256, (uint32_t)(256 * b_gain));
    }

    u = plane_mean(picture + pixels, pixels / 4);
    v = plane_mean(picture + pixels * 5 / 4, pixels / 4);
    if (frame % 5 == 4 || frame == frames / 2)
      printf("frame %2d: mean %5.1f exposure %.3f gains %.2f 1.00 %.2f, picture U %.1f V %.1f\n", frame, mean,
             exposure, r_gain, b_gain, u, v);
  }

  ppl_free(context);
  free(picture);
  free(mosaic);
  if (fabs(mean - target) > 3 || fabs(u - 128) > 4 || fabs(v - 128) > 4) {
    fprintf(stderr, "the loop didn't settle\n");
    return 1;
  }
  return 0;
}
