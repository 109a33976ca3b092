// Other fonts for characters that a font does not have.
#ifndef KR_UI_FLTK_FONTFALLBACK_POSIX_H
#define KR_UI_FLTK_FONTFALLBACK_POSIX_H

// The toolkit draws a text with one font and boxes for what that font lacks. After this, texts on
// the screen take such characters from the first installed font that has them, so that file names
// of any script can be read in every language of the interface. Once, before the first window.
void InstallFontFallback();

#endif
