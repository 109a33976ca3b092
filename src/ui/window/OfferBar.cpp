#include "ui/window/OfferBar.h"

#include <FL/fl_draw.H>

#include <utility>

#include "ui/fltk/Labels.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"
#include "ui/window/Layout.h"

namespace {

constexpr int kButtonHeight = 22;
constexpr int kButtonPadding = 12;

}  // namespace

OfferBar::OfferBar(int x, int y, int w, int h, std::vector<Offer> offers)
    : Fl_Group(x, y, w, h), offers_(std::move(offers)) {
  for (const Offer& offer : offers_) buttons_.push_back(AddButton(offer));
  end();
  resizable(nullptr);
  LayOut();
  hide();
}

Fl_Button* OfferBar::AddButton(const Offer& offer) {
  auto* button = new Fl_Button(0, 0, 1, kButtonHeight);
  button->copy_label(offer.label.c_str());
  button->labelsize(Layout::kSmallFontSize);
  button->color(Theme::kSurface);
  int width = 0;
  int height = 0;
  button->measure_label(width, height);
  button->size(width + 2 * kButtonPadding, kButtonHeight);
  SetTip(*button, offer.tip);
  button->callback(
      [](Fl_Widget* pressed, void* self) {
        auto* bar = static_cast<OfferBar*>(self);
        for (std::size_t at = 0; at < bar->buttons_.size(); ++at) {
          if (bar->buttons_[at] == pressed) return bar->offers_[at].press();
        }
      },
      this);
  return button;
}

void OfferBar::LayOut() {
  const int top = y() + (h() - kButtonHeight) / 2;
  int right = x() + w();
  for (auto button = buttons_.rbegin(); button != buttons_.rend(); ++button) {
    right -= Layout::kGap + (*button)->w();
    (*button)->position(right, top);
  }
}

void OfferBar::resize(int x, int y, int w, int h) {
  Fl_Widget::resize(x, y, w, h);
  LayOut();
}

void OfferBar::SetText(const std::string& text) {
  text_ = text;
  text.empty() ? hide() : show();
  redraw();
}

void OfferBar::draw() {
  fl_push_clip(x(), y(), w(), h());
  fl_color(Theme::kWindow);
  fl_rectf(x(), y(), w(), h());
  Theme::DrawRounded(x(), y(), w(), h(), Theme::kSelected, Theme::kFocus);
  fl_font(FL_HELVETICA, Layout::kFontSize);
  fl_color(Theme::kText);
  const int at = x() + Layout::kMargin;
  const int end = buttons_.empty() ? x() + w() : buttons_.front()->x();
  const std::string shown = FitHead(text_, end - Layout::kMargin - at);
  const int baseline = y() + (h() + fl_height()) / 2 - fl_descent();
  fl_draw(shown.c_str(), static_cast<int>(shown.size()), at, baseline);
  for (Fl_Button* button : buttons_) draw_child(*button);
  fl_pop_clip();
  SetTip(*this, shown == text_ ? std::string() : text_);
}
