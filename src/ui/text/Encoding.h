// Between the encodings of the program and FLTK's UTF-8.
//
// Three kinds of text meet in a window, and nothing but their type of use tells them apart:
//  - byte strings of the program (file names, options, log lines) are in the system's code page:
//    ToUi and FromUi;
//  - Chinese texts of the interface are kept in code page 936. In the sources they are UTF-8
//    literals that readers can read; they become code page 936 where they enter a table or a
//    layout (FillTexts, Flx_Base_Dialog::SetLayouts and SetTexts), and UTF-8 again where the
//    toolkit draws them (TextTable::Get, Flx_Base_Dialog::Shown, the label type of dialogs);
//  - what FLTK gives and takes is UTF-8.
#ifndef KR_UI_TEXT_ENCODING_H
#define KR_UI_TEXT_ENCODING_H

#include <string>

std::string ToUi(const std::string& text);
std::string FromUi(const std::string& text);

// What has no place in the other encoding becomes "?"; half a character at the end is left out.
// Both leave texts alone on a system that does not know the code page. Any thread.
std::string ToCodePage936(const std::string& uiText);
std::string FromCodePage936(const std::string& text);

// A text of the interface in code page 936 as tables and labels take it: at most 1,023 UTF-16
// units of it.
inline constexpr int kMostUnits = 1023;
std::string ConvertedText936(const std::string& text);

#endif
