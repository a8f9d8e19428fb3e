// Raw Bayer frames to finished frames or pictures.
#pragma once

#include <ppl.h>
#include <ppl_prepare.h>
#include <ppl_qualities.h>

#include <optional>
#include <span>

#include "bytes.h"
#include "colour_standard.h"
#include "controls.h"
#include "formats.h"
#include "instance.h"
#include "picture.h"

namespace tool {

// What is to be made of a frame.
struct Job {
  ppl_sensor_frame sensor = {};  // the frame as it is read
  uint32_t quality = PPL_QUALITY_DEFAULT;
  int32_t decimation = 0;                // -1 doubles, 1 halves
  Size scale = {0, 0};                   // 0 x 0: no second pass
  bool via_i420 = false;                 // pictures: through I420 even where the quality has RGB24
  Standard standard = Standard::camera;  // of YUV that leaves the tool
  bool video_range = false;
};

// Whether pictures of a quality come by way of I420 where nothing else is asked for: the RGB of 0 and 10 is paler.
bool best_via_i420(uint32_t quality);

// The library's format on the way to a format of the tool.
Format route_to(const Job&, Format);

// The size of the result.
Size output_size(const Job&);

// Whether a frame depends on the frames before it, in the same context.
bool in_sequence(const Job&);

// Whether the frame is beyond one call of the library and is made in parts.
bool in_parts(const Job&);

// Throws with the reason if the library can't make the whole, right picture of this format from such a frame.
// `row_bytes` are those from row to row in the file, for advice.
void require_possible(const Job&, const Controls&, Format, size_t row_bytes);

// The sensor matrix that makes YUV of the job's standard; empty for the one that the controls set.
std::vector<int32_t> matrix_for(const Job&, const Controls&);

// One context with all that a frame needs, to be used again for the next one.
class BayerWorker {
 public:
  BayerWorker(const Job&, const Controls&, Format, const std::vector<int32_t>& matrix = {});
  BayerWorker(const BayerWorker&) = delete;
  BayerWorker& operator=(const BayerWorker&) = delete;

  ppl_context* context() const { return instance_.get(); }
  // Where the next frame goes, as it stands in the file, rows back to back.
  Bytes& source() { return plain_ ? mosaic_ : source_; }
  // The source as the library takes it: 8 bits, B, Gb on even rows. Done by convert() where it was not called before.
  const Bytes& prepare();
  // The frame as it stands in a file of the format: bytes of the library's frame, or an encoded picture. The source is
  // gone afterwards.
  std::span<const uint8_t> convert();
  // The same as a picture; of a worker made for png or ppm alone.
  Picture picture();

 private:
  void convert_frame();
  void convert_parts();
  void call(const Part&, Bytes& source, Bytes& frame);
  void to_video_range();

  const Job& job_;
  Format format_, route_;
  Size to_;
  bool plain_, prepared_ = false;
  bool mirror_columns_ = false, mirror_rows_ = false;  // pictures: left to the tool
  bool h_mirror_, v_mirror_;
  std::optional<Settings::Lens> lens_;
  std::vector<ppl_part> parts_;  // more than one, or none
  Instance instance_;
  Words lens_table_;
  Bytes source_, mosaic_, frame_, scratch_, encoded_, part_source_, part_frame_;
};

// A frame as a sensor sends it, as the library takes it: 8 bits, B, Gb on even rows.
Bytes mosaic_of(Bytes source, const ppl_sensor_frame&);

}  // namespace tool
