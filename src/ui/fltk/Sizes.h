// Sizes that all windows share, in pixels. Plain numbers without toolkit headers.
#ifndef KR_UI_FLTK_SIZES_H
#define KR_UI_FLTK_SIZES_H

namespace Sizes {

inline constexpr int kMargin = 8;  // between a window's edge and what it holds
inline constexpr int kGap = 6;     // between neighbours

inline constexpr int kFontSize = 12;
inline constexpr int kSmallFontSize = 11;
inline constexpr int kMenuSpacing = 5;  // pixels more than the toolkit leaves between menu items

// Tables.
inline constexpr int kHeaderHeight = 26;
inline constexpr int kRowHeight = 24;
inline constexpr int kScrollbarSize = 14;

// Windows that are not built from a layout text.
inline constexpr int kButtonWidth = 84;
inline constexpr int kButtonHeight = 26;
inline constexpr int kButtonRow = kButtonHeight + 2 * kMargin;  // along a window's edge
inline constexpr int kBoxPadding = 16;

}  // namespace Sizes

#endif
