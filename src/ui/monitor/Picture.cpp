#include "ui/monitor/Picture.h"

#include <FL/Fl_Image_Surface.H>
#include <FL/Fl_RGB_Image.H>

#include <cstddef>
#include <memory>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb_image_write.h>

Picture PictureOf(Fl_Group& part) {
  Picture picture;
  Fl_Image_Surface surface(part.w(), part.h());
  Fl_Surface_Device* const before = Fl_Surface_Device::surface();
  surface.set_current();
  surface.draw(&part);
  const std::unique_ptr<Fl_RGB_Image> image(surface.image());
  before->set_current();
  if (!image || image->d() < 3) return picture;
  picture.width = image->w();
  picture.height = image->h();
  const int line = image->ld() > 0 ? image->ld() : image->w() * image->d();
  for (int y = 0; y < image->h(); ++y) {
    for (int x = 0; x < image->w(); ++x) {
      const unsigned char* const pixel =
          image->array + static_cast<std::ptrdiff_t>(y) * line + x * image->d();
      picture.pixels.insert(picture.pixels.end(), pixel, pixel + 3);
    }
  }
  return picture;
}

std::string AsPng(const Picture& picture) {
  std::string bytes;
  if (picture.pixels.empty()) return bytes;
  const auto take = [](void* out, void* data, int size) {
    static_cast<std::string*>(out)->append(static_cast<const char*>(data),
                                           static_cast<std::size_t>(size));
  };
  stbi_write_png_to_func(take, &bytes, picture.width, picture.height, 3, picture.pixels.data(),
                         3 * picture.width);
  return bytes;
}
