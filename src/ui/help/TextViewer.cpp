#include "ui/help/TextViewer.h"

#include <FL/Fl.H>
#include <FL/Fl_Button.H>
#include <FL/fl_utf8.h>

#include <algorithm>
#include <fstream>
#include <vector>

#include "ui/fltk/ModalWindow.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"
#include "util/files/IOWrapper.h"

namespace {

constexpr double kFollowSeconds = 1.0;
constexpr int kWidth = 820;
constexpr int kHeight = 560;
constexpr int kTitleBar = 24;  // of the window manager, above the window's own area
constexpr int kFooter = Sizes::kButtonHeight + 2 * Sizes::kMargin;
constexpr char kReplacement[] = "\xEF\xBF\xBD";

std::vector<TextViewer*>& OpenWindows() {
  static std::vector<TextViewer*> windows;
  return windows;
}

// Bytes that are not UTF-8 become replacement characters, zero bytes blanks. The beginning of a
// character at the end goes into `rest`.
std::string Cleaned(const std::string& bytes, std::string& rest) {
  std::string out;
  out.reserve(bytes.size());
  const char* end = bytes.data() + bytes.size();
  for (const char* at = bytes.data(); at < end;) {
    const auto byte = static_cast<unsigned char>(*at);
    if (byte < 0x80) {
      if (byte != '\r') out += byte == 0 ? ' ' : *at;
      ++at;
      continue;
    }
    const int wanted = fl_utf8len(*at);
    if (wanted > 1 && at + wanted > end) {
      rest.assign(at, end);
      break;
    }
    int length = 0;
    const unsigned code = fl_utf8decode(at, end, &length);
    const bool valid = wanted > 1 && length == wanted && code != 0xFFFD;
    valid ? out.append(at, static_cast<std::size_t>(length)) : out.append(kReplacement);
    at += valid ? length : 1;
  }
  return out;
}

}  // namespace

bool TextViewer::Show(const std::string& path, const TextTable& texts) {
  for (TextViewer* window : OpenWindows()) {
    if (window->path_ != path) continue;
    window->Follow();
    window->ShowOverDialog();
    return true;
  }
  auto* window = new TextViewer(path, texts);
  if (!window->Load()) {
    delete window;
    return false;
  }
  window->PlaceBeside(Fl::first_window());
  window->ShowOverDialog();
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
  int left, top, width, height;
  Fl::screen_work_area(left, top, width, height);
  CentreOver(*this, other);
  position(std::clamp(x(), left, std::max(left, left + width - w())),
           std::clamp(y(), top + kTitleBar, std::max(top + kTitleBar, top + height - h())));
}

void TextViewer::CloseAll() {
  while (!OpenWindows().empty()) delete OpenWindows().back();
}

TextViewer::TextViewer(const std::string& path, const TextTable& texts)
    : Fl_Double_Window(kWidth, kHeight), path_(path), texts_(texts) {
  OpenWindows().push_back(this);
  copy_label(ToUi(path).c_str());
  xclass("KestrunText");
  color(Theme::kWindow);
  display_ = new Fl_Text_Display(0, 0, kWidth, kHeight - kFooter);
  display_->box(FL_FLAT_BOX);
  display_->buffer(buffer_);
  display_->textfont(FL_COURIER);
  display_->textsize(Sizes::kFontSize);
  display_->textcolor(Theme::kText);
  auto* footer = new Fl_Group(0, kHeight - kFooter, kWidth, kFooter);
  const int y = kHeight - kFooter + Sizes::kMargin;
  note_ = new Fl_Box(Sizes::kMargin, y, 10, Sizes::kButtonHeight);
  note_->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
  note_->labelcolor(Theme::kMuted);
  const auto button = [&](const char* key, int fromRight, Fl_Callback* call) {
    const int x = kWidth - fromRight * (Sizes::kButtonWidth + Sizes::kMargin);
    auto* made = new Fl_Button(x, y, Sizes::kButtonWidth, Sizes::kButtonHeight);
    made->copy_label(texts_.Get(key).c_str());
    made->color(Theme::kSurface);
    made->callback(call, this);
    return made;
  };
  auto* reload = button("ui_text_reload", 2,
                        [](Fl_Widget*, void* self) { static_cast<TextViewer*>(self)->Load(); });
  button("ui_text_close", 1,
         [](Fl_Widget*, void* self) { Fl::delete_widget(static_cast<TextViewer*>(self)); });
  note_->size(reload->x() - 2 * Sizes::kMargin, Sizes::kButtonHeight);
  footer->end();
  footer->resizable(note_);
  end();
  resizable(display_);
  size_range(320, 200);
  callback([](Fl_Widget* self, void*) { Fl::delete_widget(self); });
  Fl::add_timeout(kFollowSeconds, Tick, this);
}

TextViewer::~TextViewer() {
  Fl::remove_timeout(Tick, this);
  std::erase(OpenWindows(), this);
  display_->buffer(nullptr);
}

void TextViewer::Tick(void* self) {
  auto* window = static_cast<TextViewer*>(self);
  if (window->shown()) window->Follow();
  Fl::repeat_timeout(kFollowSeconds, Tick, self);
}

int TextViewer::handle(int event) {
  if (event == FL_SHORTCUT && Fl::event_key() == FL_F + 5) return Load(), 1;
  return Fl_Double_Window::handle(event);
}

// The insertion point stays at the end until the user clicks or moves it somewhere else.
bool TextViewer::AtEnd() const {
  return display_->insert_position() >= buffer_.length();
}

void TextViewer::ScrollToEnd() {
  display_->insert_position(buffer_.length());
  display_->show_insert_position();
}

bool TextViewer::Append(std::int64_t from, std::int64_t to) {
  std::ifstream file(path_, std::ios::binary);
  if (!file || !file.seekg(from)) return false;
  std::string bytes(static_cast<std::size_t>(to - from), '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  size_ = from + static_cast<std::int64_t>(bytes.size());
  std::string rest;
  const std::string text = Cleaned(rest_ + bytes, rest);
  rest_ = rest;
  buffer_.append(text.c_str());
  return true;
}

bool TextViewer::Load() {
  std::int64_t created, accessed, size = 0;
  gone_ = !IOWrapperTxt::FileStatInfo(path_, created, accessed, modified_, size);
  buffer_.text("");
  rest_.clear();
  skipped_ = std::max<std::int64_t>(0, size - kMostBytes);
  gone_ = gone_ || !Append(skipped_, size);
  ScrollToEnd();
  ShowSize();
  return !gone_;
}

bool TextViewer::Follow() {
  std::int64_t created, accessed, modified = 0, size = 0;
  if (!IOWrapperTxt::FileStatInfo(path_, created, accessed, modified, size)) {
    if (!gone_) {
      gone_ = true;
      ShowSize();
    }
    return false;
  }
  const bool rewritten = size < size_ || (size == size_ && modified != modified_) || gone_;
  modified_ = modified;
  if (rewritten || size - size_ > kMostBytes) return Load();
  if (size == size_) return true;
  const bool atEnd = AtEnd();
  if (!Append(size_, size)) return false;
  const int tooMany = buffer_.length() - static_cast<int>(2 * kMostBytes);
  if (tooMany > 0) {
    buffer_.remove(0, buffer_.line_end(tooMany) + 1);
    skipped_ += tooMany;
  }
  if (atEnd) ScrollToEnd();
  ShowSize();
  return true;
}

void TextViewer::ShowSize() {
  std::string note = texts_.Format("ui_text_size", std::to_string(size_));
  if (skipped_ > 0)
    note += "   " + texts_.Format("ui_text_cut", std::to_string(kMostBytes / (1024 * 1024)));
  if (gone_) note = texts_.Get("ui_text_gone");
  note_->copy_label(note.c_str());
  note_->redraw();
}
