#include "ui/dialogs/DialogTools.h"

#include <FL/Fl.H>
#include <FL/Fl_Tooltip.H>

#include "ui/dialogs/ComnMsgBox.h"
#include "ui/text/Encoding.h"

namespace {

// "&" would underline the next character and "@" begin a symbol.
std::string ItemLabel(const std::string& uiText) {
  std::string label;
  for (const char c : uiText) {
    if (c == '&' || c == '@') label += c;
    label += c;
  }
  return label;
}

}  // namespace

void ChoiceEntries::Show(Fl_Choice& choice, const std::vector<std::string>& texts, int chosen) {
  labels_.clear();
  for (const std::string& text : texts) labels_.push_back(ItemLabel(text));
  items_.clear();
  for (const std::string& label : labels_) {
    Fl_Menu_Item item = {};
    item.text = label.c_str();
    items_.push_back(item);
  }
  items_.push_back(Fl_Menu_Item{});
  choice.menu(items_.data());
  choice.value(chosen >= 0 && chosen < static_cast<int>(texts.size()) ? chosen : -1);
  choice.redraw();
}

void SetTabOrder(Fl_Group& group, std::initializer_list<Fl_Widget*> children) {
  int place = 0;
  for (Fl_Widget* child : children) {
    if (child && child->parent() == &group) group.insert(*child, place++);
  }
}

void ShowStored(Fl_Input& input, const std::string& uiText) {
  if (Fl::focus() == &input && input.changed()) return;
  if (uiText != input.value()) input.value(uiText.c_str());
  input.clear_changed();
}

void ShowTip(Fl_Widget& widget, const std::string& uiText) {
  const std::string now = widget.tooltip() ? widget.tooltip() : "";
  if (now == uiText) return;
  if (Fl_Tooltip::current() == &widget) Fl_Tooltip::exit(&widget);
  widget.copy_tooltip(uiText.empty() ? nullptr : uiText.c_str());
}

void InformOver(Fl_Window* parent, const std::string& caption, const std::string& text,
                const std::string& button) {
  ComnMsgBox box(caption, text, ComnMsgBox::kInformation, ComnMsgBox::kOk, parent);
  box.SetButtonTexts(button, "");
  box.DoModal();
}

std::string PathIn(const Fl_Input& input) {
  return TypedPath(input.value());
}

std::string TypedPath(const std::string& uiText) {
  const std::string text = FromUi(uiText);
  const bool quoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
  return quoted ? text.substr(1, text.size() - 2) : text;
}
