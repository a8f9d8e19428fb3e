#include "picture.h"

#include <png.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "failure.h"

namespace tool {

Picture read_png(const std::string& path, std::optional<Size> size) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(
      path == "-" ? fdopen(dup(STDIN_FILENO), "rb") : fopen(path.c_str(), "rb"), fclose);
  if (!file) fail("can't read ", path, ": ", strerror(errno));
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  const std::unique_ptr<png_image, void (*)(png_image*)> freed(&image, png_image_free);
  if (!png_image_begin_read_from_stdio(&image, file.get()))
    fail(path, " is not a PNG picture: ", image.message);
  if (size && (image.width != size->width || image.height != size->height))
    fail("the picture ", path, " is ", image.width, " x ", image.height, ", the frame ", size->width, " x ",
         size->height, "; they must be alike");
  if (image.width > 16384 || image.height > 16384)
    fail("the picture ", path, " is ", image.width, " x ", image.height, "; sizes go up to 16384 x 16384");
  image.format = PNG_FORMAT_RGB;
  Picture picture(image.width, image.height);
  const png_color black{0, 0, 0};
  if (!png_image_finish_read(&image, &black, picture.rgb.data(), 0, nullptr))
    fail("can't read the PNG picture ", path, ": ", image.message);
  return picture;
}

Bytes encode_png(const Picture& picture) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = picture.width;
  image.height = picture.height;
  image.format = PNG_FORMAT_RGB;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  Bytes file(size);
  if (!png_image_write_to_memory(&image, file.data(), &size, 0, picture.rgb.data(), 0, nullptr))
    fail("can't make a PNG picture: ", image.message);
  file.resize(size);
  return file;
}

Bytes encode_ppm(const Picture& picture) {
  const std::string head = text("P6\n", picture.width, " ", picture.height, "\n255\n");
  Bytes file(head.begin(), head.end());
  file.insert(file.end(), picture.rgb.begin(), picture.rgb.end());
  return file;
}

void mirror_columns(Picture& picture) {
  for (uint32_t y = 0; y < picture.height; ++y)
    for (uint32_t x = 0; x < picture.width / 2; ++x)
      std::swap_ranges(picture.row(y) + 3 * x, picture.row(y) + 3 * x + 3,
                       picture.row(y) + 3 * (picture.width - 1 - x));
}

void mirror_rows(Picture& picture) {
  for (uint32_t y = 0; y < picture.height / 2; ++y)
    std::swap_ranges(picture.row(y), picture.row(y) + 3 * picture.width, picture.row(picture.height - 1 - y));
}

}  // namespace tool
