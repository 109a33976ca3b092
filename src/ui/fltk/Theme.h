// The program's look: colours, fonts and the flat boxes that replace FLTK's own.
#ifndef KR_UI_FLTK_THEME_H
#define KR_UI_FLTK_THEME_H

#include <FL/Enumerations.H>

namespace Theme {

constexpr Fl_Color Rgb(unsigned value) {
  return static_cast<Fl_Color>(value << 8);
}

inline constexpr Fl_Color kWindow = Rgb(0xF5F6F8);
inline constexpr Fl_Color kSurface = Rgb(0xFFFFFF);
inline constexpr Fl_Color kHeader = Rgb(0xF9FAFB);
inline constexpr Fl_Color kLine = Rgb(0xD0D5DD);
inline constexpr Fl_Color kFaintLine = Rgb(0xEBEDF1);
inline constexpr Fl_Color kText = Rgb(0x1D2939);
inline constexpr Fl_Color kMuted = Rgb(0x667085);
inline constexpr Fl_Color kDisabledText = Rgb(0xA3ABB8);
inline constexpr Fl_Color kAccent = Rgb(0x2563EB);
inline constexpr Fl_Color kAccentDark = Rgb(0x1D4ED8);
inline constexpr Fl_Color kFocus = Rgb(0x84A9F5);
inline constexpr Fl_Color kHover = Rgb(0xE9EDF4);
inline constexpr Fl_Color kPressed = Rgb(0xDCE3EE);
inline constexpr Fl_Color kRowHover = Rgb(0xF5F8FE);
inline constexpr Fl_Color kSelected = Rgb(0xDBE7FD);  // table has the focus
inline constexpr Fl_Color kSelectedUnfocused = Rgb(0xE6EAF1);
inline constexpr Fl_Color kError = Rgb(0xC4281C);
inline constexpr Fl_Color kQueued = Rgb(0x526077);
inline constexpr Fl_Color kWaiting = Rgb(0xB25309);
inline constexpr Fl_Color kRunning = Rgb(0x1D4ED8);
inline constexpr Fl_Color kUnknown = Rgb(0xE5B567);  // fills only
inline constexpr Fl_Color kFinished = Rgb(0x07753F);
inline constexpr Fl_Color kAborted = Rgb(0xC4281C);
// Curves: told apart by those who see no red or no green as well.
inline constexpr Fl_Color kCurve1 = Rgb(0x0072B2);
inline constexpr Fl_Color kCurve2 = Rgb(0xD55E00);
inline constexpr Fl_Color kCurve3 = Rgb(0x009E73);
inline constexpr Fl_Color kCurve4 = Rgb(0xC24F96);

// The label of a popup menu's item: more room between the lines than the toolkit leaves.
inline constexpr Fl_Labeltype kMenuLabel = FL_FREE_LABELTYPE;

// A normal label whose text is in code page 936.
inline constexpr auto kLabel936 = static_cast<Fl_Labeltype>(FL_FREE_LABELTYPE + 1);

// Once, before the first window is made. `language`: 0 English, 1 Chinese.
void Apply(int language = 0);

// A filled box with a thin line around it whose corners are softened.
void DrawRounded(int x, int y, int w, int h, Fl_Color fill, Fl_Color line);

// The frame of the widget that has the keyboard.
void DrawFocus(int x, int y, int w, int h);

}  // namespace Theme

#endif
