#include "ui/fltk/FilterBar.h"

#include <FL/Fl.H>
#include <FL/Fl_Button.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <cmath>

#include "ui/fltk/Icons.h"
#include "ui/fltk/Labels.h"
#include "ui/fltk/LineInput.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"

namespace {

constexpr int kHeight = 22;  // of what stands in it
constexpr int kIcon = 16;
constexpr int kPadding = 7;
constexpr int kNarrowField = 130;
constexpr int kWideField = 220;
constexpr int kLeastWords = 40;  // what is narrower is not shown

int TextWidth(const std::string& text) {
  fl_font(FL_HELVETICA, Sizes::kSmallFontSize);
  return static_cast<int>(std::ceil(fl_width(text.c_str())));
}

void DrawText(const std::string& text, int x, int y, int h) {
  fl_font(FL_HELVETICA, Sizes::kSmallFontSize);
  fl_draw(text.c_str(), static_cast<int>(text.size()), x, y + (h + fl_height()) / 2 - fl_descent());
}

}  // namespace

// Says what it is for while it is empty.
class FilterBar::WordField : public LineInput {
 public:
  WordField(FilterBar& bar, const std::string& hint)
      : LineInput(0, 0, kNarrowField, kHeight), bar_(bar), hint_(hint) {
    textsize(Sizes::kSmallFontSize);
    when(FL_WHEN_CHANGED);
    callback([](Fl_Widget*, void* owner) { static_cast<FilterBar*>(owner)->Tell(); }, &bar);
  }

  int handle(int event) override {
    const int key = Fl::event_key();
    if (event != FL_KEYBOARD) return LineInput::handle(event);
    if (key == FL_Escape) bar_.Clear();
    if (key != FL_Escape && key != FL_Enter && key != FL_KP_Enter && key != FL_Down)
      return LineInput::handle(event);
    if (bar_.OnLeave) bar_.OnLeave();
    return 1;
  }

  void draw() override {
    LineInput::draw();
    if (size() > 0 || Fl::focus() == this) return;
    fl_push_clip(x() + 2, y() + 1, w() - 4, h() - 2);
    fl_color(Theme::kMuted);
    fl_font(FL_HELVETICA, Sizes::kSmallFontSize);
    DrawText(FitHead(hint_, w() - 2 * kPadding), x() + kPadding, y(), h());
    fl_pop_clip();
  }

 private:
  FilterBar& bar_;
  const std::string hint_;
};

// Stays down until it is pressed again. Without room it shows its number alone.
class FilterBar::Switch : public Fl_Button {
 public:
  Switch(FilterBar& bar, const Label& label)
      : Fl_Button(0, 0, kHeight, kHeight), icon_(label.icon), words_(label.words) {
    type(FL_TOGGLE_BUTTON);
    user_data(&bar);
    SetTip(*this, label.tip);
  }

  void SetNumber(int number) { number_ = std::to_string(number); }
  int Wanted(bool words) const {
    const int icon = icon_.empty() ? 0 : kIcon;
    return 2 * kPadding + icon + TextWidth(Text(words)) + (icon > 0 ? 3 : 0);
  }
  void SetPlace(int x, int y, bool words) {
    shown_ = words;
    resize(x, y, Wanted(words), kHeight);
    redraw();
  }

  int handle(int event) override {
    if (event == FL_ENTER || event == FL_LEAVE) {
      hovered_ = event == FL_ENTER;
      redraw();
    }
    return Fl_Button::handle(event);
  }

  void draw() override {
    const bool on = value() != 0;
    const bool focused = Fl::focus() == this;
    const Fl_Color line = on || hovered_ || focused ? Theme::kAccent : Theme::kLine;
    Theme::DrawRounded(x(), y(), w(), h(), on ? Theme::kSelected : Theme::kSurface, line);
    int at = x() + kPadding;
    if (Fl_RGB_Image* image = icon_.empty() ? nullptr : Icon(icon_)) {
      image->draw(at - 2, y() + (h() - kIcon) / 2);
      at += kIcon + 1;
    }
    fl_color(number_ == "0" && !on ? Theme::kMuted : Theme::kText);
    DrawText(Text(shown_), at, y(), h());
  }

 private:
  std::string Text(bool words) const {
    if (number_.empty()) return words_;
    return words ? words_ + " " + number_ : number_;
  }

  const std::string icon_;
  const std::string words_;
  std::string number_;
  bool shown_ = true;
  bool hovered_ = false;
};

// A text, which can be pressed when somebody wants to know.
class FilterBar::Words : public Fl_Widget {
 public:
  explicit Words(Fl_Color color) : Fl_Widget(0, 0, 10, kHeight), color_(color) {}

  std::function<void()> OnPress;

  void SetText(const std::string& text) { text_ = text; }
  int Wanted() const { return text_.empty() ? 0 : TextWidth(text_) + 2; }

  int handle(int event) override {
    if (event == FL_ENTER || event == FL_LEAVE) return 1;
    if (event == FL_PUSH && OnPress) return 1;
    if (event == FL_RELEASE && OnPress && Fl::event_inside(this)) OnPress();
    return event == FL_RELEASE;
  }

  void draw() override {
    fl_color(color_);
    fl_font(FL_HELVETICA, Sizes::kSmallFontSize);
    DrawText(FitHead(text_, w()), x(), y(), h());
  }

 private:
  const Fl_Color color_;
  std::string text_;
};

FilterBar::FilterBar(int x, int y, int w, int h, const TextTable& texts, const Labels& labels)
    : Fl_Group(x, y, w, h) {
  box(FL_FLAT_BOX);
  color(Theme::kWindow);
  field_ = new WordField(*this, texts.Get("ui_filter_hint"));
  SetTip(*field_, labels.fieldTip);
  for (const Label& label : labels.classes) {
    Switch* const one = switches_.emplace_back(new Switch(*this, label));
    one->SetNumber(0);
    rare_.push_back(label.isRare);
    one->callback([](Fl_Widget*, void* bar) { static_cast<FilterBar*>(bar)->Tell(); });
  }
  if (!labels.follow.words.empty()) {
    follow_ = new Switch(*this, labels.follow);
    follow_->callback([](Fl_Widget* follow, void* self) {
      const auto* bar = static_cast<FilterBar*>(self);
      if (bar->OnFollow) bar->OnFollow(static_cast<Switch*>(follow)->value() != 0);
    });
  }
  said_ = new Words(Theme::kMuted);
  order_ = new Words(Theme::kAccent);
  order_->OnPress = [this] {
    if (OnOrder) OnOrder();
  };
  SetTip(*order_, labels.orderTip);
  end();
  resizable(nullptr);
  LayOut();
}

void FilterBar::Clear() {
  field_->value("");
  for (Switch* one : switches_) one->value(0);
  Tell();
}

void FilterBar::Tell() {
  view_.words = field_->value();
  view_.classes.clear();
  for (std::size_t i = 0; i < switches_.size(); ++i)
    if (switches_[i]->value()) view_.classes.insert(i);
  if (OnFilter) OnFilter(view_.words, view_.classes);
}

void FilterBar::Show(const View& view) {
  if (view == view_ && view.words == field_->value()) return;
  view_ = view;
  if (view.words != field_->value()) field_->value(view.words.c_str());
  for (std::size_t i = 0; i < switches_.size(); ++i) {
    switches_[i]->SetNumber(view.counts.at(i));
    switches_[i]->value(view.classes.count(i) ? 1 : 0);
  }
  said_->SetText(view.said);
  order_->SetText(view.order);
  LayOut();
  redraw();
}

void FilterBar::TakeFocus() {
  field_->take_focus();
  field_->position(field_->size(), 0);
}

// The words of the switches go first when there is no room, then those at the right.
void FilterBar::LayOut() {
  for (std::size_t i = 0; i < switches_.size(); ++i) {
    if (!rare_[i]) continue;
    const bool isShown = (i < view_.counts.size() && view_.counts[i] > 0) || switches_[i]->value();
    isShown ? switches_[i]->show() : switches_[i]->hide();
  }
  const auto needed = [this](bool words) {
    int width = follow_ != nullptr ? follow_->Wanted(true) + Sizes::kGap : 0;
    for (const Switch* one : switches_)
      if (one->visible()) width += one->Wanted(words) + Sizes::kGap;
    return width;
  };
  const int said = said_->Wanted() + order_->Wanted() + 2 * Sizes::kMargin;
  const bool words = w() >= kNarrowField + needed(true) + said;
  const int left = w() - needed(words) - said;
  const int top = y() + (h() - kHeight) / 2;
  field_->resize(x(), top, std::clamp(left, kNarrowField, kWideField), kHeight);
  int at = field_->x() + field_->w() + Sizes::kGap;
  const auto place = [&](Switch& one, bool inWords) {
    one.SetPlace(at, top, inWords);
    at += one.w() + Sizes::kGap;
  };
  for (Switch* one : switches_)
    if (one->visible()) place(*one, words);
  if (follow_ != nullptr) place(*follow_, true);
  at += Sizes::kMargin - Sizes::kGap;
  int right = x() + w();
  for (Words* one : {order_, said_}) {
    const int width = std::min(one->Wanted(), right - at);
    one->resize(right - std::max(width, 0), top, std::max(width, 0), kHeight);
    width >= std::min(kLeastWords, one->Wanted()) && width > 0 ? one->show() : one->hide();
    right = one->x() - Sizes::kMargin;
  }
}

void FilterBar::resize(int x, int y, int w, int h) {
  Fl_Widget::resize(x, y, w, h);
  LayOut();
}
