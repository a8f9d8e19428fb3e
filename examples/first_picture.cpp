// A raw frame to a picture that any viewer opens, in C++: reads a headerless 8-bit Bayer frame, converts it with the
// settings of its sensor, writes a PPM file, and says what an exposure control would read.
//
//     first_picture FRAME.raw WIDTH HEIGHT OUT.ppm
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <ppl.hpp>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

std::vector<uint8_t> read(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  if (!file) throw std::runtime_error(name + " can't be read");
  return {std::istreambuf_iterator<char>(file), {}};
}

// RGB24 stands bottom row first and blue first, PPM top row first and red first.
void write_ppm(const std::string& name, const ppl::buffer& picture, ppl::extent e) {
  std::ofstream file(name, std::ios::binary);
  file << "P6\n" << e.width << " " << e.height << "\n255\n";
  for (size_t row = e.height; row-- > 0;)
    for (size_t column = 0; column < e.width; ++column) {
      const uint8_t* const pixel = picture.data() + 3 * (row * e.width + column);
      const char rgb[] = {char(pixel[2]), char(pixel[1]), char(pixel[0])};
      file.write(rgb, sizeof rgb);
    }
  if (!file.flush()) throw std::runtime_error(name + " can't be written");
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 5) {
    std::cerr << "usage: first_picture FRAME.raw WIDTH HEIGHT OUT.ppm\n";
    return 2;
  }
  const ppl::extent size = {static_cast<uint32_t>(std::stoul(argv[2])),
                            static_cast<uint32_t>(std::stoul(argv[3]))};
  ppl::buffer samples(read(argv[1]));

  ppl::context camera;
  camera.black_level(12).gains(397, 256, 346).green_balance(true);
  camera.lens_correction(size, {size.width / 2, size.height / 2}, 48);
  const ppl::buffer picture = camera.convert({samples, size.width, size.height}, ppl::format::rgb24);
  write_ppm(argv[4], picture, size);

  const ppl::rgb mean = camera.whole_frame();
  std::cout << argv[4] << ": " << size.width << " x " << size.height << ", mean R " << mean.r / 256 << ", G "
            << mean.g / 256 << ", B " << mean.b / 256 << "\n";
  return 0;
} catch (const std::exception& e) {
  std::cerr << "first_picture: " << e.what() << "\n";
  return 1;
}
