// Pictures of widgets.
#ifndef KR_UI_MONITOR_PICTURE_H
#define KR_UI_MONITOR_PICTURE_H

#include <FL/Fl_Group.H>

#include <string>
#include <vector>

// Pixels of three bytes, row by row from the top.
struct Picture {
  int width = 0, height = 0;
  std::vector<unsigned char> pixels;
};

// What a part of an open window looks like, also where other windows cover it. Interface thread.
Picture PictureOf(Fl_Group& part);

// The bytes of a PNG file; empty for a picture without pixels. Any thread.
std::string AsPng(const Picture& picture);

#endif
