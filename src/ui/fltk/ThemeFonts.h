// The fonts behind FLTK's font numbers.
#ifndef KR_UI_FLTK_THEMEFONTS_H
#define KR_UI_FLTK_THEMEFONTS_H

// FL_HELVETICA and its bold and italic become the system's interface font, FL_COURIER and its bold
// the system's fixed-width font. For Chinese they are fonts made for Chinese, if there are any.
void SetInterfaceFonts(int language);

#endif
