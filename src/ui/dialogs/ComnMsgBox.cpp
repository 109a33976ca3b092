#include "ui/dialogs/ComnMsgBox.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Double_Window.H>
#include <FL/fl_draw.H>

#include <algorithm>

#include "ui/fltk/Icons.h"
#include "ui/fltk/Labels.h"
#include "ui/fltk/ModalWindow.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/ToolButton.h"

namespace {

constexpr int kIconSize = 40;
constexpr int kLeastWidth = 320;
constexpr int kTextWidth = 420;  // of a line before it is broken
constexpr int kFooterHeight = Sizes::kButtonHeight + 2 * Sizes::kBoxPadding - 8;

// The two buttons and the one that was pressed.
class BoxWindow : public ModalWindow {
 public:
  using ModalWindow::ModalWindow;

  void AddButton(Fl_Button* button, ComnMsgBox::Button meaning) {
    meanings_[button == first_ || !first_ ? 0 : 1] = meaning;
    (first_ ? second_ : first_) = button;
    button->callback(
        [](Fl_Widget* pressed, void* self) { static_cast<BoxWindow*>(self)->Press(pressed); },
        this);
  }

  int handle(int event) override {
    if (event == FL_SHORTCUT || event == FL_KEYBOARD) {
      const int key = Fl::event_key();
      if (key == FL_Escape) return Press(second_ ? second_ : first_), 1;
      if (key == FL_Enter || key == FL_KP_Enter)
        return Press(Fl::focus() == first_ || Fl::focus() == second_ ? Fl::focus() : Default()), 1;
      if (second_ && (key == FL_Left || key == FL_Right || key == FL_Tab))
        return (Fl::focus() == first_ ? second_ : first_)->take_focus(), 1;
    }
    return ModalWindow::handle(event);
  }

  // The last button stands for closing the window.
  ComnMsgBox::Button Pressed() const { return pressed_ ? *pressed_ : meanings_[second_ ? 1 : 0]; }
  void PreferLast() { last_ = true; }
  Fl_Button* Default() const { return last_ ? second_ : first_; }

 private:
  void Press(const Fl_Widget* button) {
    pressed_ = &meanings_[button == first_ ? 0 : 1];
    hide();
  }

  Fl_Button* first_ = nullptr;
  Fl_Button* second_ = nullptr;
  bool last_ = false;
  ComnMsgBox::Button meanings_[2] = {ComnMsgBox::kNone, ComnMsgBox::kNone};
  const ComnMsgBox::Button* pressed_ = nullptr;
};

// The window's child.
Fl_Button* MakeButton(bool isDefault, const std::string& text, int x, int y, int width) {
  Fl_Button* button = nullptr;
  if (isDefault) {
    button = new PrimaryButton(x, y, width, Sizes::kButtonHeight);
  } else {
    button = new Fl_Button(x, y, width, Sizes::kButtonHeight);
    button->color(Theme::kSurface);
  }
  button->copy_label(text.c_str());
  return button;
}

int ButtonWidth(const std::string& text) {
  fl_font(FL_HELVETICA_BOLD, Sizes::kFontSize);
  int width = 0;
  int height = 0;
  fl_measure(text.c_str(), width, height, 0);
  return std::max(Sizes::kButtonWidth, width + 2 * Sizes::kBoxPadding);
}

}  // namespace

ComnMsgBox::ComnMsgBox(const std::string& caption, const std::string& text, Icon icon, Type type,
                       Fl_Window* parent)
    : caption_(caption), text_(text), icon_(icon), type_(type), parent_(parent) {
  type == kOk ? SetButtonTexts("OK", "") : SetButtonTexts("Yes", "No");
}

void ComnMsgBox::Inform(Fl_Window* parent, const std::string& caption, const std::string& text,
                        const std::string& button) {
  ComnMsgBox box(caption, text, kInformation, kOk, parent);
  box.SetButtonTexts(button, "");
  box.DoModal();
}

void ComnMsgBox::SetButtonTexts(const std::string& first, const std::string& second) {
  first_ = first;
  second_ = second;
}

ComnMsgBox::Button ComnMsgBox::DoModal() {
  using namespace Sizes;
  const ScreenArea screen = ScreenOf(parent_);
  const int textX = 2 * kBoxPadding + kIconSize;
  const int room = screen.h - kFooterHeight - 2 * kBoxPadding;
  fl_font(FL_HELVETICA, kFontSize);
  int textWidth = std::min(kTextWidth, screen.w * 2 / 3 - textX - 2 * kBoxPadding);
  int textHeight = 0;
  const std::string shown = PlainLabel(InLines(text_, textWidth, room / fl_height()));
  fl_measure(shown.c_str(), textWidth, textHeight);
  const int width = std::max(kLeastWidth, textX + textWidth + 2 * kBoxPadding);
  const int bodyHeight = std::max(kIconSize, textHeight) + 2 * kBoxPadding;
  BoxWindow window(width, bodyHeight + kFooterHeight);
  window.copy_label(caption_.c_str());
  window.xclass("KestrunMessage");

  Fl_Box body(0, 0, width, bodyHeight);
  body.box(FL_FLAT_BOX);
  body.color(Theme::kSurface);
  Fl_Box icon(kBoxPadding, kBoxPadding, kIconSize, kIconSize);
  icon.image(::Icon(icon_ == kQuestion ? "box_question" : "box_info"));
  Fl_Box text(textX, kBoxPadding, width - textX - kBoxPadding, bodyHeight - 2 * kBoxPadding);
  text.align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE);
  text.label(shown.c_str());

  const int y = bodyHeight + (kFooterHeight - kButtonHeight) / 2;
  const bool two = type_ != kOk;
  const int secondWidth = two ? ButtonWidth(second_) : 0;
  const int secondX = width - kBoxPadding - secondWidth;
  const int firstWidth = ButtonWidth(first_);
  const int firstX = (two ? secondX - kMargin : width - kBoxPadding) - firstWidth;
  const bool rather = type_ == kRatherNo;
  window.AddButton(MakeButton(!rather, first_, firstX, y, firstWidth),
                   two ? kPressedYes : kPressedOk);
  if (two) window.AddButton(MakeButton(rather, second_, secondX, y, secondWidth), kPressedNo);
  if (rather) window.PreferLast();
  window.end();
  window.Run(parent_, window.Default());
  return window.Pressed();
}
