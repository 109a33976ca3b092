// Between the byte strings of the program, in the system's code page, and FLTK's UTF-8.
#ifndef KR_UI_TEXT_H
#define KR_UI_TEXT_H

#include <string>

std::string ToUi(const std::string& text);
std::string FromUi(const std::string& text);

// The text as an entry for Fl_Menu_::add: "&", "@", "/" and "\" lose their special meaning.
std::string MenuLabel(const std::string& uiText);

// The text, or its head or tail with "..." so that it fits into `width` pixels in the current font.
std::string FitHead(const std::string& uiText, int width);  // keeps the beginning
std::string FitTail(const std::string& uiText, int width);  // keeps the end

#endif
