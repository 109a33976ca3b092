#include "ui/window/FilterBar.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <algorithm>
#include <cmath>

#include "ui/fltk/Icons.h"
#include "ui/fltk/Labels.h"
#include "ui/fltk/LineInput.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"
#include "ui/window/Layout.h"

namespace {

constexpr int kHeight = 22;  // of what stands in it
constexpr int kIcon = 16;
constexpr int kPadding = 7;
constexpr int kNarrowField = 130;
constexpr int kWideField = 220;
constexpr int kLeastWords = 40;  // what is narrower is not shown

struct Class {
  const char* icon;
  const char* key;
};

// In the order of StatusClass.
constexpr Class kClasses[] = {{"state_queued", "ui_chip_queued"},
                              {"state_running", "ui_chip_running"},
                              {"state_finished", "ui_chip_finished"},
                              {"state_marked", "ui_chip_stopped"},
                              {"state_aborted", "ui_chip_aborted"}};
static_assert(std::size(kClasses) == kStatusClasses);

int TextWidth(const std::string& text) {
  fl_font(FL_HELVETICA, Layout::kSmallFontSize);
  return static_cast<int>(std::ceil(fl_width(text.c_str())));
}

void DrawText(const std::string& text, int x, int y, int h) {
  fl_font(FL_HELVETICA, Layout::kSmallFontSize);
  fl_draw(text.c_str(), static_cast<int>(text.size()), x, y + (h + fl_height()) / 2 - fl_descent());
}

}  // namespace

// Says what it is for while it is empty.
class FilterBar::WordField : public LineInput {
 public:
  WordField(FilterBar& bar, const std::string& hint)
      : LineInput(0, 0, kNarrowField, kHeight), bar_(bar), hint_(hint) {
    textsize(Layout::kSmallFontSize);
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
    fl_font(FL_HELVETICA, Layout::kSmallFontSize);
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
  Switch(FilterBar& bar, const char* icon, const std::string& words)
      : Fl_Button(0, 0, kHeight, kHeight), icon_(icon), words_(words) {
    type(FL_TOGGLE_BUTTON);
    user_data(&bar);
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
    fl_font(FL_HELVETICA, Layout::kSmallFontSize);
    DrawText(FitHead(text_, w()), x(), y(), h());
  }

 private:
  const Fl_Color color_;
  std::string text_;
};

FilterBar::FilterBar(int x, int y, int w, int h, const TextTable& texts)
    : Fl_Group(x, y, w, h), texts_(texts) {
  box(FL_FLAT_BOX);
  color(Theme::kWindow);
  field_ = new WordField(*this, texts.Get("ui_filter_hint"));
  SetTip(*field_, texts.Get("ui_filter_tip"));
  for (std::size_t i = 0; i < kStatusClasses; ++i) {
    const std::string& words = texts.Get(kClasses[i].key);
    switches_[i] = new Switch(*this, kClasses[i].icon, words);
    switches_[i]->SetNumber(0);
    SetTip(*switches_[i], texts.Format("ui_chip_tip", words));
    switches_[i]->callback([](Fl_Widget*, void* bar) { static_cast<FilterBar*>(bar)->Tell(); });
  }
  follow_ = new Switch(*this, "", texts.Get("ui_follow"));
  SetTip(*follow_, texts.Get("ui_follow_tip"));
  follow_->callback([](Fl_Widget* follow, void* self) {
    const auto* bar = static_cast<FilterBar*>(self);
    if (bar->OnFollow) bar->OnFollow(static_cast<Switch*>(follow)->value() != 0);
  });
  count_ = new Words(Theme::kMuted);
  order_ = new Words(Theme::kAccent);
  order_->OnPress = [this] {
    if (OnRunningOrder) OnRunningOrder();
  };
  SetTip(*order_, texts.Get("ui_sorted_tip"));
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
  for (std::size_t i = 0; i < kStatusClasses; ++i)
    if (switches_[i]->value()) view_.classes.insert(static_cast<StatusClass>(i));
  if (OnFilter) OnFilter(view_.words, view_.classes);
}

std::string FilterBar::CountWords() const {
  const bool part = view_.shown < view_.all || !view_.words.empty() || !view_.classes.empty();
  return part ? texts_.Format("ui_shown_of", std::to_string(view_.shown), std::to_string(view_.all))
              : std::string();
}

void FilterBar::Show(const View& view) {
  if (view == view_ && view.words == field_->value()) return;
  view_ = view;
  if (view.words != field_->value()) field_->value(view.words.c_str());
  for (std::size_t i = 0; i < kStatusClasses; ++i) {
    switches_[i]->SetNumber(view.counts[i]);
    switches_[i]->value(view.classes.count(static_cast<StatusClass>(i)) ? 1 : 0);
  }
  count_->SetText(CountWords());
  order_->SetText(view.sortedBy.empty() ? std::string()
                                        : texts_.Format("ui_sorted_by", view.sortedBy));
  LayOut();
  redraw();
}

void FilterBar::ShowFollow(bool follow) {
  follow_->value(follow ? 1 : 0);
}

void FilterBar::TakeFocus() {
  field_->take_focus();
  field_->position(field_->size(), 0);
}

// The words of the switches go first when there is no room, then those at the right.
void FilterBar::LayOut() {
  const auto needed = [this](bool words) {
    int width = follow_->Wanted(true) + Layout::kGap;
    for (const Switch* one : switches_) width += one->Wanted(words) + Layout::kGap;
    return width;
  };
  const int said = count_->Wanted() + order_->Wanted() + 2 * Layout::kMargin;
  const bool words = w() >= kNarrowField + needed(true) + said;
  const int left = w() - needed(words) - said;
  const int top = y() + (h() - kHeight) / 2;
  field_->resize(x(), top, std::clamp(left, kNarrowField, kWideField), kHeight);
  int at = field_->x() + field_->w() + Layout::kGap;
  for (Switch* one : switches_) {
    one->SetPlace(at, top, words);
    at += one->w() + Layout::kGap;
  }
  follow_->SetPlace(at, top, true);
  at += follow_->w() + Layout::kMargin;
  int right = x() + w();
  for (Words* one : {order_, count_}) {
    const int width = std::min(one->Wanted(), right - at);
    one->resize(right - std::max(width, 0), top, std::max(width, 0), kHeight);
    width >= std::min(kLeastWords, one->Wanted()) && width > 0 ? one->show() : one->hide();
    right = one->x() - Layout::kMargin;
  }
}

void FilterBar::resize(int x, int y, int w, int h) {
  Fl_Widget::resize(x, y, w, h);
  LayOut();
}
