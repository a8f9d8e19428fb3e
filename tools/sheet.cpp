#include "sheet.h"

#include <cairo.h>

#include <algorithm>
#include <memory>

#include "failure.h"

namespace tool {
namespace {

constexpr uint32_t label_height = 26, margin = 8;
constexpr double font_size = 16;

// Writes white text into a dark strip at x, y of the sheet.
void draw_label(Picture& sheet, uint32_t x, uint32_t y, uint32_t width, const std::string& label) {
  const std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)> strip(
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(width), static_cast<int>(label_height)),
      cairo_surface_destroy);
  const std::unique_ptr<cairo_t, void (*)(cairo_t*)> pen(cairo_create(strip.get()), cairo_destroy);
  cairo_set_source_rgb(pen.get(), 0.15, 0.15, 0.15);
  cairo_paint(pen.get());
  cairo_set_source_rgb(pen.get(), 1, 1, 1);
  cairo_select_font_face(pen.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  cairo_text_extents_t extents;
  cairo_set_font_size(pen.get(), font_size);
  cairo_text_extents(pen.get(), label.c_str(), &extents);
  const double room = width - 8.0;  // a narrow picture gets a smaller label
  if (extents.width > room) cairo_set_font_size(pen.get(), font_size * room / extents.width);
  cairo_move_to(pen.get(), 4, 18);
  cairo_show_text(pen.get(), label.c_str());
  if (cairo_status(pen.get()) != CAIRO_STATUS_SUCCESS)
    fail("can't draw the labels: ", cairo_status_to_string(cairo_status(pen.get())));
  cairo_surface_flush(strip.get());
  const uint8_t* pixels = cairo_image_surface_get_data(strip.get());
  const int pitch = cairo_image_surface_get_stride(strip.get());
  for (uint32_t row = 0; row < label_height; ++row)
    for (uint32_t column = 0; column < width; ++column) {
      const uint8_t* bgrx = pixels + static_cast<ptrdiff_t>(row) * pitch + 4 * column;
      std::reverse_copy(bgrx, bgrx + 3, sheet.row(y + row) + 3 * (x + column));
    }
}

}  // namespace

Picture make_sheet(const std::vector<Panel>& panels, uint32_t columns) {
  const uint32_t width = panels[0].picture.width, height = panels[0].picture.height;
  const uint32_t rows = (static_cast<uint32_t>(panels.size()) + columns - 1) / columns;
  Picture sheet(columns * (width + margin) + margin, rows * (height + label_height + margin) + margin);
  std::fill(sheet.rgb.begin(), sheet.rgb.end(), uint8_t{38});
  for (uint32_t i = 0; i < panels.size(); ++i) {
    const uint32_t x = margin + i % columns * (width + margin);
    const uint32_t y = margin + i / columns * (height + label_height + margin);
    draw_label(sheet, x, y, width, panels[i].label);
    for (uint32_t row = 0; row < height; ++row)
      std::copy_n(panels[i].picture.row(row), 3 * width, sheet.row(y + label_height + row) + 3 * x);
  }
  return sheet;
}

}  // namespace tool
