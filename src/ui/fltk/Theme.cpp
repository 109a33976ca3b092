#include "ui/fltk/Theme.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>
#include <FL/fl_message.H>
#include <FL/Fl_Tooltip.H>

#include "ui/fltk/Sizes.h"
#include "ui/fltk/ThemeFonts.h"
#include "ui/fltk/Tip.h"
#include "ui/text/Encoding.h"

namespace {

Fl_Color ToneDown(Fl_Color color) {
  return Fl::draw_box_active() ? color : fl_inactive(color);
}

void Frame(int x, int y, int w, int h, Fl_Color line) {
  fl_color(line);
  fl_xyline(x + 1, y, x + w - 2);
  fl_xyline(x + 1, y + h - 1, x + w - 2);
  fl_yxline(x, y + 1, y + h - 2);
  fl_yxline(x + w - 1, y + 1, y + h - 2);
}

void DrawUpBox(int x, int y, int w, int h, Fl_Color color) {
  Theme::DrawRounded(x, y, w, h, color, Fl::draw_box_active() ? Theme::kLine : Theme::kFaintLine);
}

void DrawDownBox(int x, int y, int w, int h, Fl_Color color) {
  const bool active = Fl::draw_box_active();
  Theme::DrawRounded(x, y, w, h, active ? color : Theme::kWindow,
                     active ? Theme::kLine : Theme::kFaintLine);
}

void DrawFrame(int x, int y, int w, int h, Fl_Color) {
  Frame(x, y, w, h, Theme::kLine);
}

void DrawFlat(int x, int y, int w, int h, Fl_Color color) {
  fl_color(ToneDown(color));
  fl_rectf(x, y, w, h);
}

void DrawMenuLabel(const Fl_Label* label, int x, int y, int w, int h, Fl_Align align) {
  fl_font(label->font, label->size);
  fl_color(static_cast<Fl_Color>(label->color));
  fl_draw(label->value, x, y, w, h, align, nullptr, 0);
}

void MeasureMenuLabel(const Fl_Label* label, int& w, int& h) {
  fl_font(label->font, label->size);
  fl_measure(label->value, w, h, 0);
  h += Sizes::kMenuSpacing;
}

void DrawLabel936(const Fl_Label* label, int x, int y, int w, int h, Fl_Align align) {
  fl_font(label->font, label->size);
  fl_color(static_cast<Fl_Color>(label->color));
  fl_draw(FromCodePage936(label->value).c_str(), x, y, w, h, align, label->image);
}

void MeasureLabel936(const Fl_Label* label, int& w, int& h) {
  fl_font(label->font, label->size);
  fl_measure(FromCodePage936(label->value).c_str(), w, h);
}

void SetPalette(Fl_Color index, Fl_Color color) {
  Fl::set_color(index, static_cast<uchar>(color >> 24), static_cast<uchar>(color >> 16),
                static_cast<uchar>(color >> 8));
}

}  // namespace

void Theme::Apply(int language) {
  SetInterfaceFonts(language);
  FL_NORMAL_SIZE = Sizes::kFontSize;
  const auto part = [](Fl_Color color, int shift) { return static_cast<uchar>(color >> shift); };
  Fl::background(part(kWindow, 24), part(kWindow, 16), part(kWindow, 8));
  Fl::background2(part(kSurface, 24), part(kSurface, 16), part(kSurface, 8));
  Fl::foreground(part(kText, 24), part(kText, 16), part(kText, 8));
  SetPalette(FL_SELECTION_COLOR, kAccent);
  SetPalette(FL_INACTIVE_COLOR, kDisabledText);
  SetPalette(FL_GRAY0, kFaintLine);  // the bevel of the arrow on default buttons

  Fl::scheme("gtk+");
  for (const Fl_Boxtype box : {FL_UP_BOX, FL_THIN_UP_BOX, FL_ROUND_UP_BOX})
    Fl::set_boxtype(box, DrawUpBox, 1, 1, 2, 2);
  for (const Fl_Boxtype box : {FL_DOWN_BOX, FL_THIN_DOWN_BOX, FL_BORDER_BOX})
    Fl::set_boxtype(box, DrawDownBox, 3, 1, 6, 2);
  for (const Fl_Boxtype box : {FL_UP_FRAME, FL_DOWN_FRAME, FL_THIN_UP_FRAME, FL_THIN_DOWN_FRAME,
                               FL_ENGRAVED_FRAME, FL_EMBOSSED_FRAME})
    Fl::set_boxtype(box, DrawFrame, 1, 1, 2, 2);
  Fl::set_boxtype(FL_FLAT_BOX, DrawFlat, 0, 0, 0, 0);

  Fl::set_labeltype(kMenuLabel, DrawMenuLabel, MeasureMenuLabel);
  Fl::set_labeltype(kLabel936, DrawLabel936, MeasureLabel936);
  Fl::scrollbar_size(Sizes::kScrollbarSize);
  Fl::visible_focus(1);
  // One look for all windows; the toolkit's own chooser also leaves the process's locale alone.
  Fl::option(Fl::OPTION_FNFC_USES_GTK, false);
  Fl_Tooltip::size(Sizes::kFontSize);
  Fl_Tooltip::color(kText);
  Fl_Tooltip::textcolor(kSurface);
  Fl_Tooltip::delay(0.6F);
  KeepTipsOnScreen();
  fl_message_hotspot(0);
}

void Theme::DrawRounded(int x, int y, int w, int h, Fl_Color fill, Fl_Color line) {
  fl_color(fill);
  fl_rectf(x + 1, y + 1, w - 2, h - 2);
  Frame(x, y, w, h, line);
}

void Theme::DrawFocus(int x, int y, int w, int h) {
  fl_color(kFocus);
  fl_rect(x, y, w, h);
}
