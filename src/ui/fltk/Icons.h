// Icons by the name of their drawing. Interface thread.
#ifndef KR_UI_FLTK_ICONS_H
#define KR_UI_FLTK_ICONS_H

#include <FL/Fl_RGB_Image.H>

#include <string>

enum class IconLook { kNormal, kDisabled };

// The icon in the size it was rendered for; null for an unknown name. Lives as long as the program.
Fl_RGB_Image* Icon(const std::string& name, IconLook look = IconLook::kNormal);

// The program's icon as a picture of this many pixels; null for a size that was not rendered.
Fl_RGB_Image* ProgramPicture(int size);

// Gives all windows of the program its icon, in all sizes.
void SetProgramIcon();

#endif
