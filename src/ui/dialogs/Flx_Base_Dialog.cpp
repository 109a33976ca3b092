#include "ui/dialogs/Flx_Base_Dialog.h"

#include <FL/Fl.H>
#include <FL/Fl_Input.H>

#include "ui/dialogs/ComnMsgBox.h"
#include "ui/dialogs/DialogWidgets.h"
#include "ui/fltk/Labels.h"
#include "ui/fltk/ModalWindow.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"

namespace {

constexpr DialogText kCommonTexts[] = {
    {"ok", "OK", "确定"},
};

}  // namespace

Flx_Base_Dialog::Flx_Base_Dialog(Fl_Window* parent, int language, const std::string& layout,
                                 std::span<const DialogText> texts)
    : parent_(parent), language_(language) {
  SetTexts(kCommonTexts);
  SetLayouts(layout);
  SetTexts(texts);
}

Flx_Base_Dialog::~Flx_Base_Dialog() {
  // Widgets that fired last must not wait in the queue for the next dialog.
  while (Fl::readqueue()) {
  }
  Fl_Group::current(nullptr);  // the last one that was filled goes with the window
}

void Flx_Base_Dialog::AddWidget(const LayoutLine& line) {
  const int x = static_cast<int>(static_cast<float>(line.x) * scaleX_);
  const int y = static_cast<int>(static_cast<float>(line.y) * scaleY_);
  const int width = static_cast<int>(static_cast<float>(line.width) * scaleX_);
  const int height = static_cast<int>(static_cast<float>(line.height) * scaleY_);
  if (line.typeName == "Fl_Window") {
    if (window_) return;
    window_ = std::make_unique<Fl_Double_Window>(width, height);
    window_->label(ConvertText(line.label));
    window_->labelsize(kLayoutLabelSize);
    window_->resize(windowX_, windowY_, width, height);
    window_->xclass("KestrunDialog");
    return;
  }
  if (!window_) return;
  Fl_Widget* widget = MakeDialogWidget(line, x, y, width, height);
  if (!widget) return;
  if (line.typeName == "Fl_Group") groups_.push_back(static_cast<Fl_Group*>(widget));
  Reparent(*widget);
  Apply(*widget, line);
  widgets_[line.id] = widget;
}

void Flx_Base_Dialog::Reparent(Fl_Widget& widget) {
  for (Fl_Group* group : groups_) {
    const bool inside = group != &widget && widget.x() >= group->x() &&
                        widget.x() <= group->x() + group->w() && widget.y() >= group->y() &&
                        widget.y() <= group->y() + group->h();
    if (!inside) continue;
    group->add(widget);
    return;
  }
}

void Flx_Base_Dialog::Apply(Fl_Widget& widget, const LayoutLine& line) {
  widget.box(static_cast<Fl_Boxtype>(line.box));
  widget.color(static_cast<Fl_Color>(line.color), static_cast<Fl_Color>(line.selectionColor));
  const bool decoded = Chinese() && line.labelType == FL_NORMAL_LABEL;
  widget.labeltype(decoded ? Theme::kLabel936 : static_cast<Fl_Labeltype>(line.labelType));
  widget.labelfont(line.labelFont);
  widget.labelsize(kLayoutLabelSize);
  widget.labelcolor(static_cast<Fl_Color>(line.labelColor));
  widget.align(static_cast<Fl_Align>(line.align));
  if (line.subtype != kKeepSubtype) widget.type(static_cast<uchar>(line.subtype));
  if (!line.tooltip.empty()) widget.copy_tooltip(Decoded(ConvertText(line.tooltip)).c_str());
  if (!line.label.empty()) widget.label(ConvertText(line.label));
}

bool Flx_Base_Dialog::Build() {
  if (layout_.empty()) return false;
  for (const LayoutLine& line : ParseLayout(layout_)) AddWidget(line);
  if (!window_) return false;
  window_->set_modal();
  const bool run = Initialise();
  window_->end();
  window_->callback(
      [](Fl_Widget*, void* self) { static_cast<Flx_Base_Dialog*>(self)->closed_ = true; }, this);
  return run;
}

void Flx_Base_Dialog::Run() {
  while (Fl::readqueue()) {
  }
  if (!ModalWindowsAllowed() || !Build()) return;
  // The system's title bars are the toolkit's business, which takes UTF-8.
  if (window_->label()) window_->copy_label(Decoded(window_->label()).c_str());
  window_->show();
  while (!closed_ && window_->shown()) {
    Fl::wait();
    HandleFired();
  }
  StoreTyped();
  window_->hide();
}

void Flx_Base_Dialog::StoreTyped() {
  if (window_) LeaveFields(*window_);
}

// Also what fired just before the window was closed.
void Flx_Base_Dialog::HandleFired() {
  while (Fl_Widget* fired = Fl::readqueue()) {
    if (HandleWidget(fired) == -1) continue;
    closed_ = true;
    return;
  }
}

// The toolkit does not tell a field that its window goes away.
void Flx_Base_Dialog::LeaveFields(Fl_Group& group) {
  for (int child = 0; child < group.children(); ++child) {
    Fl_Widget* const widget = group.child(child);
    if (Fl_Group* const inner = widget->as_group()) LeaveFields(*inner);
    const auto* const input = dynamic_cast<Fl_Input*>(widget);
    if (!input || !input->changed() || !(input->when() & FL_WHEN_RELEASE)) continue;
    if (input->callback() == Fl_Widget::default_callback) {
      HandleWidget(widget);
    } else {
      widget->do_callback();
    }
  }
}

Fl_Widget* Flx_Base_Dialog::FindWidget(const std::string& id) const {
  const auto found = widgets_.find(id);
  return found == widgets_.end() ? nullptr : found->second;
}

const char* Flx_Base_Dialog::GetText(const std::string& key) const {
  const auto found = texts_.find(key);
  return found == texts_.end() ? nullptr : found->second.c_str();
}

void Flx_Base_Dialog::SetLayouts(const std::string& text) {
  if (language_ == 0) SetLayout(text);
  if (Chinese()) SetLayout(ToCodePage936(ChineseLayout(text)));
}

void Flx_Base_Dialog::SetTexts(std::span<const DialogText> texts) {
  for (const DialogText& text : texts) {
    if (language_ == 0) SetText(text.key, text.english);
    if (Chinese()) SetText(text.key, ToCodePage936(text.chinese));
  }
}

std::string Flx_Base_Dialog::Decoded(const std::string& text) const {
  return Chinese() ? FromCodePage936(text) : text;
}

std::string Flx_Base_Dialog::Shown(const std::string& key) const {
  const char* text = GetText(key);
  return text ? Decoded(text) : std::string();
}

std::string Flx_Base_Dialog::Shown(const BothLanguages& text) const {
  return Chinese() ? text.chinese : text.english;
}

const char* Flx_Base_Dialog::ConvertText(const std::string& text) {
  const auto found = converted_.find(text);
  if (found != converted_.end()) return found->second.c_str();
  return converted_.emplace(text, Chinese() ? ConvertedText936(text) : text).first->second.c_str();
}

void Flx_Base_Dialog::ShowLabel(Fl_Widget& widget, const std::string& uiText) {
  widget.labeltype(FL_NORMAL_LABEL);
  widget.copy_label(PlainLabel(uiText).c_str());
  widget.redraw_label();
}

void Flx_Base_Dialog::Inform(const std::string& caption, const std::string& uiText) {
  ComnMsgBox::Inform(Window(), caption, uiText, Shown("ok"));
}

void Flx_Base_Dialog::CentreOnParent() {
  CentreOver(*window_, parent_);
}

void Flx_Base_Dialog::Present(Fl_Button& byEnter, Fl_Widget& focused) {
  byEnter.shortcut(FL_Enter);
  CentreOnParent();
  if (auto* const field = dynamic_cast<Fl_Input*>(&focused)) field->position(field->size(), 0);
  focused.take_focus();
}
