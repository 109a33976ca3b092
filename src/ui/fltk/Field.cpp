#include "ui/fltk/Field.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include "ui/fltk/Labels.h"
#include "ui/fltk/Theme.h"

namespace {

constexpr int kPadding = 4;

// Keys with Ctrl that the input itself understands.
bool IsEditingKey(int key) {
  switch (key) {
    case 'a':
    case 'c':
    case 'v':
    case 'x':
    case 'z':
    case FL_Left:
    case FL_Right:
    case FL_Home:
    case FL_End:
    case FL_BackSpace:
    case FL_Insert:
      return true;
    default:
      return false;
  }
}

bool IsForTheWindow() {
  const int key = Fl::event_key();
  if (Fl::event_state(FL_ALT)) return true;
  if (Fl::event_state(FL_CTRL)) return !IsEditingKey(key) && key < FL_Shift_L;
  return (key > FL_F && key <= FL_F_Last) || key == FL_Menu;
}

bool IsUndo() {
  return Fl::event_key() == 'z' && Fl::event_ctrl() && !Fl::event_shift();
}

bool IsEnter() {
  return Fl::event_key() == FL_Enter || Fl::event_key() == FL_KP_Enter;
}

}  // namespace

Field::Field(int x, int y, int w, int h) : LineInput(x, y, w, h) {
  color(Theme::kSurface);
  when(FL_WHEN_CHANGED);
  callback(
      [](Fl_Widget*, void* self) {
        auto* field = static_cast<Field*>(self);
        field->edited_ = true;
        field->entered_ = false;
        field->Validate();
      },
      this);
}

void Field::SetPlaceholder(const std::string& text) {
  if (text == placeholder_) return;
  placeholder_ = text;
  redraw();
}

void Field::Show(const std::string& stored) {
  if (edited_ && (bad_ || Fl::focus() == this)) {
    stored_ = stored;
    return;
  }
  ShowAlways(stored);
}

void Field::ShowAlways(const std::string& stored) {
  const bool other = stored != stored_ || stored != value();
  stored_ = stored;
  edited_ = false;
  if (stored != value()) value(stored.c_str());
  if (bad_) {
    Validate();
  } else if (other) {
    LookAgain();
  }
}

void Field::TypeAgain(const std::string& text) {
  value(text.c_str());
  edited_ = true;
  Validate();
}

bool Field::Validate() {
  // What is stored is never wrong: an empty field may stand for different texts.
  const bool isOther = edited_ && stored_ != value();
  const std::string wrong = Check && isOther ? Check(value()) : std::string();
  bad_ = !wrong.empty();
  const std::string hint = bad_ || !Doubt ? wrong : Doubt(value());
  if (OnHint && (marked_ || !hint.empty())) OnHint(hint);
  Mark(!hint.empty());
  return !bad_;
}

void Field::LookAgain() {
  Mark(bad_ || (Doubt && !Doubt(value()).empty()));
}

void Field::Mark(bool marked) {
  if (marked != marked_) redraw();
  marked_ = marked;
}

void Field::GoTo() {
  take_focus();
  position(size(), 0);
  Validate();
}

bool Field::Commit() {
  if (!edited_) return true;
  if (!Validate()) return false;
  const std::string text = value();
  edited_ = false;
  if (text != stored_ && Store) Store(text);
  return true;
}

int Field::handle(int event) {
  switch (event) {
    case FL_DND_ENTER:
    case FL_DND_DRAG:
    case FL_DND_RELEASE:
      return 0;  // dropped files become jobs
    case FL_KEYBOARD:
      if (IsEnter() && !Fl::event_state(FL_CTRL)) {
        entered_ = edited_ && Commit();
        if (!bad_) position(size(), 0);
        return 1;
      }
      if (Fl::event_key() == FL_Escape) {
        if (edited_) ShowAlways(stored_);
        return 1;
      }
      // What the window has stored it takes back too.
      if (IsForTheWindow() || (entered_ && IsUndo())) return 0;
      break;
    case FL_UNFOCUS: {
      entered_ = false;
      const int result = LineInput::handle(event);
      redraw();  // the toolkit itself draws the text again only, not the frame
      Commit();
      return result;
    }
    default:
      break;
  }
  return LineInput::handle(event);
}

void Field::draw() {
  Fl_Input::draw();
  if (size() == 0 && Fl::focus() != this && !placeholder_.empty()) {
    fl_font(textfont(), textsize());
    fl_color(Theme::kDisabledText);
    const std::string text = FitHead(placeholder_, w() - 2 * kPadding);
    fl_draw(text.c_str(), x() + kPadding, y(), w(), h(), FL_ALIGN_LEFT, nullptr, 0);
  }
  if (marked_) {
    fl_color(Theme::kError);
    fl_rect(x(), y(), w(), h());
  } else if (Fl::focus() == this) {
    Theme::DrawFocus(x(), y(), w(), h());
  }
}
