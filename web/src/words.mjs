// What the page says of each control beyond the tool's table: a name for people, the unit, the range in which the slider
// moves (the number beside it takes the whole range), the step that has an effect, and the qualities that heed it.

const WALKED = [0, 1, 2, 3, 10, 11, 12, 15];
const NOT_RAW = [0, 1, 2, 3, 10, 11, 12, 13, 15];

export const groups = [
  { title: 'Picture', open: true },
  { title: 'Sensor', open: true },
  { title: 'Filters', open: false },
  { title: 'Statistics ranges', open: false },
  { title: 'Lens correction', open: false },
];

export const words = {
  h_mirror: { label: 'Mirror left to right', text: 'Exchanges left and right.', in: NOT_RAW },
  v_mirror: { label: 'Mirror top to bottom', text: 'Exchanges top and bottom.', in: NOT_RAW },
  gamma: { label: 'Gamma', unit: 'curve', text: 'The tone curve: 0 is the exponent 0.45; higher lifts the shadows.', in: NOT_RAW },
  contrast_c: { label: 'Contrast', unit: 'steps', text: 'Draws tones apart about mid-grey, or together.', in: NOT_RAW },
  sat: { label: 'Saturation', unit: '1/256', text: 'How colourful the picture is; 0 is grey, 256 as the sensor sees it.', in: WALKED },
  hue: { label: 'Hue', unit: 'degrees', range: [-180, 180], text: 'Turns all colours round the colour wheel.', in: WALKED },
  optical_black_b_gb_gr_r: { label: 'Black level', unit: 'sample steps', range: [0, 64], text: 'What the sensor delivers in the dark, taken off each of the four sites.', in: NOT_RAW, together: true },
  rgb_gain: { label: 'White balance', unit: '1/256', step: 8, range: [0, 1024], text: 'Multiplies red, green and blue so that grey comes out grey.', in: NOT_RAW },
  rgb_delta: { label: 'Offset', unit: 'sample steps', range: [-64, 64], text: 'Added to red, green and blue behind the gains.', in: NOT_RAW },
  sensor_matrix: { label: 'Colour matrix', unit: '1/256', range: [-512, 1024], text: 'From the sensor’s red, green and blue to the picture’s, row by row.', in: WALKED },
  GbGr_correction: { label: 'Green balance', text: 'Evens out the two kinds of green where they differ a little.', in: NOT_RAW },
  GbGr_correction_diff_threshold: { label: 'Green difference', unit: 'sample steps', range: [0, 64], text: 'Greens that differ by less than this are evened out.', in: NOT_RAW },
  medium_filter: { label: 'Hot and dead pixels', text: 'Replaces samples that stand out from their neighbours.', in: [0, 1, 2] },
  medium_filter_diff_threshold: { label: 'Noise filter, across', unit: 'luma steps', range: [0, 128], text: 'Left and right neighbours that differ by less than this are smoothed; 0 turns the noise filter off.', in: [15] },
  medium_filter_hot_pixel_threshold: { label: 'Hot above', unit: 'sample steps', range: [0, 255], text: 'A sample is hot only above this.', in: [0, 1, 2] },
  medium_filter_dead_pixel_threshold: { label: 'Dead below', unit: 'sample steps', range: [0, 255], text: 'A sample is dead only below this.', in: [0, 1, 2] },
  nf88_medium_filter_hot_pixel_threshold_percentage: { label: 'Hot share', unit: '1/256', step: 4, range: [0, 256], text: 'And only above this share of the sum of its four neighbours; 64 is their mean.', in: [0, 1, 2] },
  nf88_medium_filter_dead_pixel_threshold_percentage: { label: 'Dead share', unit: '1/256', step: 4, range: [0, 256], text: 'And only below this share of the sum of its four neighbours; 64 is their mean.', in: [0, 1, 2] },
  edge_threshold: { label: 'Sharpen above', unit: 'luma steps', range: [0, 400], text: 'Weaker edges are taken for noise: they are not sharpened, and quality 15 smooths them down the picture.', in: [0, 10, 12, 15] },
  edge_threshold2: { label: 'Sharpen below', unit: 'luma steps', text: 'Edges stronger than this are sharp enough already.', in: [0, 10, 12, 15] },
  nf88_edge_enhance_factor: { label: 'Sharpness', unit: '1/256', step: 8, text: 'How much of an edge is added to it.', in: [0, 10, 12, 15] },
  CFA_T0_threshold: { label: 'Flat below', unit: 'sample steps', text: 'Greens that differ by no more than this make an area flat, and it is smoothed.', in: [10, 11] },
  CFA_T1_threshold: { label: 'Edge direction', unit: 'sample steps', text: 'A green is taken along an edge where the gradient across it is above this.', in: [0, 1, 10, 11] },
  noise_filter_G_12T_threshold: { label: 'Green noise', unit: 'sample steps', text: 'Kept by the library; no picture depends on it.', in: [] },
  noise_filter_R_8T_threshold: { label: 'Red noise', unit: 'sample steps', text: 'Kept by the library; no picture depends on it.', in: [] },
  noise_filter_B_8T_threshold: { label: 'Blue noise', unit: 'sample steps', text: 'Kept by the library; no picture depends on it.', in: [] },
  qual_BmGb_min_max: { label: 'B − Gb', unit: 'sample steps', range: [-255, 255], text: 'Cells beyond this range count for neither the qualified means nor the histograms.', statistics: true },
  qual_GrmR_min_max: { label: 'Gr − R', unit: 'sample steps', range: [-255, 255], text: 'The same for the difference of green and red.', statistics: true },
  qual_BmGb_p_GrmR_min_max: { label: 'Sum of both', unit: 'sample steps', range: [-510, 510], text: 'The same for the sum of both differences.', statistics: true },
  qual_BmGb_m_GrmR_min_max: { label: 'Difference of both', unit: 'sample steps', range: [-510, 510], text: 'The same for the difference of both.', statistics: true },
  qual_R_min_max: { label: 'Red', unit: 'sample steps', text: 'Cells whose red lies beyond this range do not count.', statistics: true },
  qual_G_min_max: { label: 'Green', unit: 'sample steps', text: 'Cells with a green beyond this range do not count.', statistics: true },
  qual_B_min_max: { label: 'Blue', unit: 'sample steps', text: 'Cells whose blue lies beyond this range do not count.', statistics: true },
  qAE_RGB_min_max: { label: 'Exposure', unit: 'sample steps', text: 'Cells wholly below or wholly above this range do not count for the exposure means.', statistics: true },
};

export const lensWords = {
  f1: { label: 'Strength', unit: 'f1', range: [-256, 256], text: 'The factor is 1 + f1 r² / 2^shift1 − f2 r⁴ / 2^shift2, with r the distance from the centre in samples.' },
  f1_rshift_count: { label: 'Scale of the strength', unit: 'shift1', text: 'One more halves it.' },
  f2: { label: 'Bend', unit: 'f2', range: [-256, 256], text: 'Takes the correction back towards the corners.' },
  f2_rshift_count: { label: 'Scale of the bend', unit: 'shift2', text: 'One more halves it.' },
};

export const qualities = [15, 0, 1, 2, 3, 10, 11, 12, 13, 4];
