// How alike two pictures are.
#pragma once

#include "picture.h"

namespace tool {

struct Likeness {
  double psnr;  // dB over all samples of the three colours; infinite for equal pictures
  double ssim;  // mean over all windows of 7 x 7 pixels of luma; 1 for equal pictures
};

// Throws if the sizes differ.
Likeness likeness(const Picture& a, const Picture& b);
std::string describe(const Likeness&);

// Mid-grey where they are equal, four times the difference about it elsewhere.
Picture difference(const Picture& a, const Picture& b);

}  // namespace tool
