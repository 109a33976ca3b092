#include "ui/help/TextViewer.h"

#include <FL/Fl.H>
#include <FL/Fl_Text_Editor.H>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "solvers/MessageFiles.h"
#include "ui/fltk/LineInput.h"
#include "ui/fltk/ModalWindow.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/InputFile.h"
#include "util/files/IOWrapper.h"

namespace {

constexpr double kFollowSeconds = 1.0;
constexpr int kWidth = 820;
constexpr int kHeight = 560;
constexpr int kMinWidth = 480;
constexpr int kMinHeight = 240;
constexpr int kFindLabel = 52;
constexpr int kFindWidth = 220;

std::vector<TextViewer*>& OpenWindows() {
  static std::vector<TextViewer*> windows;
  return windows;
}

bool SizeOf(const std::string& path, std::int64_t& size) {
  std::int64_t created, accessed, modified;
  return IOWrapperTxt::FileStatInfo(path, created, accessed, modified, size);
}

Fl_Box* MakeNote(int x, int y, int right) {
  auto* note = new Fl_Box(x, y, right - x, Sizes::kButtonHeight);
  note->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
  note->labelcolor(Theme::kMuted);
  return note;
}

}  // namespace

bool TextViewer::Show(const std::string& path, const TextTable& texts) {
  return Open(path, texts, false);
}

bool TextViewer::Edit(const std::string& path, const TextTable& texts) {
  std::int64_t size = 0;
  return Open(path, texts, SizeOf(path, size) && size <= kMostBytes);
}

bool TextViewer::Open(const std::string& path, const TextTable& texts, bool editable) {
  for (TextViewer* window : OpenWindows()) {
    window->Follow();
    if (window->path_ != path || window->editable_ != editable) continue;
    window->ShowOverDialog();
    return true;
  }
  auto* window = new TextViewer(path, texts, editable);
  if (!(editable ? window->LoadToEdit() : window->Load())) {
    delete window;
    return false;
  }
  window->PlaceBeside(Fl::first_window());
  window->ShowOverDialog();
  window->display_->take_focus();
  return true;
}

// While a dialog is open, only its own windows hear of keys and clicks.
void TextViewer::ShowOverDialog() {
  if (Fl::modal() && Fl::modal() != this) {
    hide();
    set_modal();
  }
  show();
}

// Over the other window, as far as the screen has room.
void TextViewer::PlaceBeside(Fl_Window* other) {
  CentreOver(*this, other);
  FitScreen(*this, other);
}

// A window may go while another one asks.
bool TextViewer::MayDropAll() {
  const std::vector<TextViewer*> windows = OpenWindows();
  return std::all_of(windows.begin(), windows.end(), [](TextViewer* window) {
    const auto& open = OpenWindows();
    return std::find(open.begin(), open.end(), window) == open.end() || window->MayDrop();
  });
}

void TextViewer::KeepAll(const MessageSink& say) {
  for (TextViewer* window : OpenWindows()) window->KeepChanges(say);
}

void TextViewer::CloseAll() {
  while (!OpenWindows().empty()) delete OpenWindows().back();
}

TextViewer::TextViewer(const std::string& path, const TextTable& texts, bool editable)
    : Fl_Double_Window(kWidth, kHeight), path_(path), texts_(texts), editable_(editable) {
  OpenWindows().push_back(this);
  copy_label(ToUi(path).c_str());
  xclass("KestrunText");
  color(Theme::kWindow);
  MakeFindRow();
  const int height = kHeight - 2 * Sizes::kButtonRow;
  display_ = editable ? new Fl_Text_Editor(0, Sizes::kButtonRow, kWidth, height)
                      : new Fl_Text_Display(0, Sizes::kButtonRow, kWidth, height);
  display_->box(FL_FLAT_BOX);
  display_->buffer(buffer_);
  display_->textfont(FL_COURIER);
  display_->textsize(Sizes::kFontSize);
  display_->textcolor(Theme::kText);
  MakeFooter();
  end();
  resizable(display_);
  size_range(kMinWidth, kMinHeight);
  callback([](Fl_Widget* self, void*) { static_cast<TextViewer*>(self)->Close(); });
  buffer_.add_modify_callback(TextChanged, this);
  Fl::add_timeout(kFollowSeconds, Tick, this);
}

Fl_Button* TextViewer::MakeButton(int x, int y, const char* key, void (*press)(TextViewer&)) {
  auto* made = new Fl_Button(x, y, Sizes::kButtonWidth, Sizes::kButtonHeight);
  made->copy_label(texts_.Get(key).c_str());
  made->color(Theme::kSurface);
  made->callback(
      [](Fl_Widget* pressed, void* call) {
        reinterpret_cast<void (*)(TextViewer&)>(call)(
            *static_cast<TextViewer*>(pressed->top_window()));
      },
      reinterpret_cast<void*>(press));
  return made;
}

void TextViewer::MakeFindRow() {
  auto* row = new Fl_Group(0, 0, kWidth, Sizes::kButtonRow);
  const int y = Sizes::kMargin;
  find_ = new LineInput(Sizes::kMargin + kFindLabel, y, kFindWidth, Sizes::kButtonHeight);
  find_->copy_label(texts_.Get("ui_find").c_str());
  find_->when(FL_WHEN_ENTER_KEY | FL_WHEN_NOT_CHANGED);
  find_->callback(
      [](Fl_Widget*, void* self) { static_cast<TextViewer*>(self)->Find(Fl::event_shift() != 0); },
      this);
  int x = find_->x() + find_->w() + Sizes::kGap;
  Fl_Button* next =
      MakeButton(x, y, "ui_find_next", [](TextViewer& window) { window.Find(false); });
  next->copy_tooltip(texts_.Get("ui_find_next_tip").c_str());
  x += next->w() + Sizes::kGap;
  Fl_Button* previous =
      MakeButton(x, y, "ui_find_previous", [](TextViewer& window) { window.Find(true); });
  previous->copy_tooltip(texts_.Get("ui_find_previous_tip").c_str());
  found_ = MakeNote(x + previous->w() + Sizes::kMargin, y, kWidth - Sizes::kMargin);
  row->end();
  row->resizable(found_);
}

void TextViewer::MakeFooter() {
  auto* footer = new Fl_Group(0, kHeight - Sizes::kButtonRow, kWidth, Sizes::kButtonRow);
  const int y = kHeight - Sizes::kButtonRow + Sizes::kMargin;
  int x = kWidth;
  const auto button = [&](const char* key, void (*press)(TextViewer&)) {
    x -= Sizes::kButtonWidth + Sizes::kMargin;
    return MakeButton(x, y, key, press);
  };
  button("ui_text_close", [](TextViewer& window) { window.Close(); });
  button("ui_text_reload", [](TextViewer& window) { window.Reload(); });
  if (editable_) save_ = button("ui_text_save", [](TextViewer& window) { window.Save(); });
  note_ = MakeNote(Sizes::kMargin, y, x - Sizes::kMargin);
  footer->end();
  footer->resizable(note_);
}

TextViewer::~TextViewer() {
  Fl::remove_timeout(Tick, this);
  Fl::remove_idle(SearchOn, this);
  std::erase(OpenWindows(), this);
  buffer_.remove_modify_callback(TextChanged, this);
  display_->buffer(nullptr);
}

void TextViewer::Tick(void* self) {
  auto* window = static_cast<TextViewer*>(self);
  if (window->shown()) window->Follow();
  Fl::repeat_timeout(kFollowSeconds, Tick, self);
}

int TextViewer::handle(int event) {
  if ((event == FL_KEYBOARD || event == FL_SHORTCUT) && TakeKey()) return 1;
  return Fl_Double_Window::handle(event);
}

bool TextViewer::TakeKey() {
  const int key = Fl::event_key();
  const bool control = Fl::event_ctrl() != 0;
  if (key == FL_Escape) return search_ ? StopSearch() : Close(), true;
  if (key == FL_F + 5) return Reload(), true;
  if (key == FL_F + 3) return Find(Fl::event_shift() != 0), true;
  if (control && key == 'f') return GoToFind(), true;
  if (control && key == 's' && editable_) return Save(), true;
  return false;
}

void TextViewer::Close() {
  if (MayDrop()) Fl::delete_widget(this);
}

void TextViewer::Reload() {
  if (!editable_) {
    Load();
  } else if (MayDrop()) {
    LoadToEdit();
  }
}

std::string TextViewer::Text() const {
  char* bytes = buffer_.text();
  std::string text(bytes);
  std::free(bytes);
  return text;
}

void TextViewer::SetText(const std::string& text) {
  loading_ = true;
  buffer_.text(text.c_str());
  loading_ = false;
}

// The insertion point stays at the end until the user clicks or moves it somewhere else.
bool TextViewer::AtEnd() const {
  return display_->insert_position() >= buffer_.length();
}

void TextViewer::ScrollToEnd() {
  display_->insert_position(buffer_.length());
  display_->show_insert_position();
}

bool TextViewer::Read(std::int64_t from, std::int64_t to, std::string& bytes) const {
  InputFile file;
  if (!file.Open(path_)) return false;
  bytes.resize(static_cast<std::size_t>(to - from));
  const std::ptrdiff_t got =
      file.ReadAt(static_cast<std::uint64_t>(from), bytes.data(), bytes.size());
  bytes.resize(static_cast<std::size_t>(std::max<std::ptrdiff_t>(got, 0)));
  return got >= 0;
}

void TextViewer::KnowFile(std::int64_t size) {
  gone_ = false;
  size_ = size;
  written_ = FileDirWrapper::WriteTime(path_);
  identity_ = FileDirWrapper::IdentityOf(path_);
}

bool TextViewer::Load() {
  FollowName();
  std::int64_t size = 0;
  gone_ = !SizeOf(path_, size) || !ShowPart(std::max<std::int64_t>(0, size - kMostBytes), size);
  if (!gone_) KnowFile(size);
  ShowNote();
  return !gone_;
}

bool TextViewer::ShowPart(std::int64_t from, std::int64_t to) {
  std::string bytes;
  if (!Read(from, to, bytes)) return false;
  const std::size_t cut = from > 0 ? BytesOfCutCharacter(bytes) : 0;
  begin_ = from + static_cast<std::int64_t>(cut);
  end_ = from + static_cast<std::int64_t>(bytes.size());
  const std::string text = ShownText(bytes.substr(cut), rest_);
  if (text == Text()) return true;
  SetText(text);
  ScrollToEnd();
  return true;
}

bool TextViewer::Append() {
  std::string bytes;
  if (!Read(end_, size_, bytes)) return false;
  end_ += static_cast<std::int64_t>(bytes.size());
  std::string rest;
  buffer_.append(ShownText(rest_ + bytes, rest).c_str());
  rest_ = rest;
  return true;
}

// The end of a run gives its message file another name, under which it is kept.
void TextViewer::FollowName() {
  if (identity_.empty() || FileDirWrapper::IdentityOf(path_) == identity_) return;
  const std::string kept = KeptName(path_);
  if (FileDirWrapper::IdentityOf(kept) != identity_) return;
  path_ = kept;
  copy_label(ToUi(path_).c_str());
}

void TextViewer::Follow() {
  if (editable_) return FollowToEdit();
  FollowName();
  std::int64_t size = 0;
  if (!SizeOf(path_, size)) {
    gone_ = true;
    return ShowNote();
  }
  const std::int64_t written = FileDirWrapper::WriteTime(path_);
  const bool rewritten = gone_ || size < size_ || (size == size_ && written != written_) ||
                         FileDirWrapper::IdentityOf(path_) != identity_;
  written_ = written;
  if (rewritten) {
    Load();
  } else if (size > size_) {
    FollowGrowth(size);
  }
}

// Who reads elsewhere keeps what is shown; more than twice the usual size is not added to it.
void TextViewer::FollowGrowth(std::int64_t size) {
  const bool atEnd = AtEnd();
  const bool untilEnd = end_ == size_;
  const bool tooMuch = size - begin_ > 2 * kMostBytes;
  size_ = size;
  if (untilEnd && atEnd && tooMuch) {
    Load();
    return;
  }
  if (untilEnd && !tooMuch && Append() && atEnd) ScrollToEnd();
  ShowNote();
}

void TextViewer::ShowNote() {
  std::string note = texts_.Format("ui_text_size", std::to_string(size_));
  const std::string shown = std::to_string((end_ - begin_) / (1024 * 1024));
  if (end_ < size_) {
    note += "   " + texts_.Format("ui_text_part", shown);
  } else if (begin_ > 0) {
    note += "   " + texts_.Format("ui_text_cut", shown);
  }
  if (edited_) note = texts_.Get("ui_text_edited");
  if (saved_) note = texts_.Get("ui_text_saved");
  if (otherChanged_) note = texts_.Get("ui_text_other");
  if (gone_) note = texts_.Get("ui_text_gone");
  if (note_->label() && note == note_->label()) return;
  note_->copy_label(note.c_str());
  note_->redraw();
}
