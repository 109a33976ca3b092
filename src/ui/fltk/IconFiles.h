// The icons that the build renders from icons/*.svg, as PNG files in memory.
#ifndef KR_UI_FLTK_ICONFILES_H
#define KR_UI_FLTK_ICONFILES_H

#include <cstddef>

struct IconFile {
  const char* name;  // of the drawing, without ".svg"
  int size;          // width and height in pixels
  const unsigned char* data;
  std::size_t bytes;
};

extern const IconFile kIconFiles[];
extern const std::size_t kIconFileCount;

#endif
