#include "ui/help/HelpWindow.h"

#include <FL/filename.H>
#include <FL/Fl.H>
#include <FL/Fl_Tile.H>
#include <FL/x.H>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "ui/fltk/Labels.h"
#include "ui/fltk/ModalWindow.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"
#include "ui/help/HelpPage.h"

namespace {

constexpr int kMinWidth = 480;
constexpr int kMinHeight = 280;
constexpr int kContentsWidth = 230;
constexpr int kFindWidth = 180;
constexpr int kTextSize = 13;
constexpr int kContentsTextSize = 13;
constexpr int kPaperMargin = 12;  // at the left of the text
constexpr int kLine = 24;         // pixels that an arrow key scrolls
constexpr std::size_t kMostPlaces = 500;
constexpr char kAddress[] = "kr:";

HelpWindow* openWindow = nullptr;

struct Size {
  int width = 920, height = 640;
} lastSize;

std::string LinePrefix(int depth) {
  return std::string(static_cast<std::size_t>(depth) * 4, ' ');
}

bool IsWebAddress(const std::string& link) {
  return link.rfind("http://", 0) == 0 || link.rfind("https://", 0) == 0;
}

Fl_Button* MakeButton(int x, const std::string& label, Fl_Callback* call, void* self) {
  auto* button = new Fl_Button(x, Sizes::kMargin, Sizes::kButtonWidth, Sizes::kButtonHeight);
  button->copy_label(label.c_str());
  button->color(Theme::kSurface);
  button->callback(call, self);
  return button;
}

// The toolkit only raises a window that is open already.
void GiveKeyboard(Fl_Window& window) {
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.window = fl_xid(&window);
  event.xclient.message_type = XInternAtom(fl_display, "_NET_ACTIVE_WINDOW", 0);
  event.xclient.format = 32;
  event.xclient.data.l[0] = 1;  // asked for by an application
  event.xclient.data.l[1] = static_cast<long>(fl_event_time);
  XSendEvent(fl_display, RootWindow(fl_display, fl_screen), 0,
             SubstructureRedirectMask | SubstructureNotifyMask, &event);
}

}  // namespace

bool HelpWindow::Show(const std::string& path, const std::string& page, const TextTable& texts) {
  if (openWindow && openWindow->path_ != path) Close();
  if (!openWindow) {
    HelpBook book;
    if (!book.Open(path)) return false;
    openWindow = new HelpWindow(path, std::move(book), texts);
  }
  openWindow->GoTo(page, "");
  const bool wasOpen = openWindow->shown() != 0;
  openWindow->show();
  if (wasOpen) GiveKeyboard(*openWindow);
  return true;
}

void HelpWindow::Close() {
  delete openWindow;
}

HelpWindow::HelpWindow(const std::string& path, HelpBook book, const TextTable& texts)
    : Fl_Double_Window(lastSize.width, lastSize.height),
      path_(path),
      book_(std::move(book)),
      texts_(texts) {
  xclass("KestrunHelp");
  color(Theme::kWindow);
  MakeTools();
  auto* tile = new Fl_Tile(0, Sizes::kButtonRow, w(), h() - Sizes::kButtonRow);
  contents_ = new Fl_Hold_Browser(0, Sizes::kButtonRow, kContentsWidth, tile->h());
  contents_->format_char(0);  // titles may hold any character
  contents_->textsize(kContentsTextSize);
  contents_->color(Theme::kSurface);
  auto* paper = new Fl_Group(kContentsWidth, Sizes::kButtonRow, w() - kContentsWidth, tile->h());
  paper->box(FL_FLAT_BOX);
  paper->color(Theme::kSurface);
  view_ = new Fl_Help_View(paper->x() + kPaperMargin, paper->y(), paper->w() - kPaperMargin,
                           paper->h());
  view_->box(FL_FLAT_BOX);
  view_->textfont(FL_HELVETICA);
  view_->textsize(kTextSize);
  view_->textcolor(Theme::kText);
  view_->color(Theme::kSurface);
  view_->link(LinkPressed);
  paper->end();
  paper->resizable(view_);
  auto* limits =
      new Fl_Box(kContentsWidth / 2, Sizes::kButtonRow, w() - kContentsWidth / 2 - 200, tile->h());
  tile->resizable(limits);
  tile->end();
  end();
  resizable(tile);
  size_range(kMinWidth, kMinHeight);
  MakeContents();
  CentreOver(*this, Fl::first_window());
  callback([](Fl_Widget* self, void*) { Fl::delete_widget(self); });
  Fl::focus(view_);
}

HelpWindow::~HelpWindow() {
  lastSize = {w(), h()};
  Fl::remove_timeout(Follow, this);
  if (openWindow == this) openWindow = nullptr;
}

void HelpWindow::MakeTools() {
  auto* tools = new Fl_Group(0, 0, w(), Sizes::kButtonRow);
  const auto step = [](int by) {
    return by < 0 ? [](Fl_Widget*, void* self) { static_cast<HelpWindow*>(self)->Step(-1); }
                  : [](Fl_Widget*, void* self) { static_cast<HelpWindow*>(self)->Step(1); };
  };
  back_ = MakeButton(Sizes::kMargin, texts_.Get("ui_help_back"), step(-1), this);
  forward_ = MakeButton(Sizes::kMargin + Sizes::kButtonWidth + Sizes::kGap,
                        texts_.Get("ui_help_forward"), step(1), this);
  const int noteX = forward_->x() + forward_->w() + Sizes::kMargin;
  const int findX = w() - Sizes::kMargin - kFindWidth;
  note_ = new Fl_Box(noteX, Sizes::kMargin, findX - 60 - noteX, Sizes::kButtonHeight);
  note_->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
  note_->labelcolor(Theme::kMuted);
  find_ = new Fl_Input(findX, Sizes::kMargin, kFindWidth, Sizes::kButtonHeight);
  find_->copy_label(texts_.Get("ui_find").c_str());
  find_->when(FL_WHEN_ENTER_KEY | FL_WHEN_NOT_CHANGED);
  find_->callback([](Fl_Widget*, void* self) { static_cast<HelpWindow*>(self)->FindNext(); }, this);
  tools->end();
  tools->resizable(note_);
}

void HelpWindow::MakeContents() {
  for (const HelpEntry& entry : book_.Contents())
    contents_->add((LinePrefix(entry.depth) + entry.title).c_str());
  contents_->callback(
      [](Fl_Widget*, void* self) {
        auto* window = static_cast<HelpWindow*>(self);
        const int line = window->contents_->value();
        if (line < 1) return window->MarkContents();
        const HelpEntry& entry = window->book_.Contents()[static_cast<std::size_t>(line - 1)];
        if (!entry.page.empty()) window->GoTo(entry.page, entry.anchor);
      },
      this);
}

void HelpWindow::GoTo(const std::string& page, const std::string& anchor) {
  const bool first = history_.empty();
  const bool same = !first && history_[at_].page == page;
  if (!same && !book_.Page(page)) Say(texts_.Format("ui_help_no_page", page));
  if (!same && !book_.Page(page) && !first) return;
  if (!first) history_[at_].top = view_->topline();
  if (!same) {
    history_.resize(first ? 0 : at_ + 1);
    if (history_.size() == kMostPlaces) history_.erase(history_.begin());
    history_.push_back({page, 0});
    at_ = history_.size() - 1;
  }
  Render(page);
  anchor.empty() ? view_->topline(0) : view_->topline(anchor.c_str());
}

void HelpWindow::Step(int by) {
  if ((by < 0 && at_ == 0) || (by > 0 && at_ + 1 >= history_.size())) return;
  history_[at_].top = view_->topline();
  at_ += static_cast<std::size_t>(by);
  Render(history_[at_].page);
  view_->topline(history_[at_].top);
}

void HelpWindow::Render(const std::string& page) {
  firstLink_ += static_cast<int>(links_.size());
  links_.clear();
  found_ = -1;
  const std::string* html = book_.Page(page);
  if (html) Say("");
  view_->value(
      html ? SafePage(*html, [this](const std::string& link) { return AddressFor(link); }).c_str()
           : "");
  const std::string title = html ? TitleOf(*html) : std::string();
  copy_label((texts_.Get("tip_help") + (title.empty() ? "" : " - " + title)).c_str());
  at_ > 0 ? back_->activate() : back_->deactivate();
  at_ + 1 < history_.size() ? forward_->activate() : forward_->deactivate();
  MarkContents();
}

// Marks the line of the page, unless a line inside the page is marked.
void HelpWindow::MarkContents() {
  const std::vector<HelpEntry>& entries = book_.Contents();
  const int line = contents_->value();
  if (line > 0 && entries[static_cast<std::size_t>(line - 1)].page == history_[at_].page) return;
  contents_->deselect();
  for (std::size_t index = 0; index < entries.size(); ++index) {
    if (entries[index].page != history_[at_].page) continue;
    contents_->value(static_cast<int>(index + 1));
    return;
  }
}

std::string HelpWindow::AddressFor(const std::string& link) {
  std::string page, anchor;
  if (!HelpBook::Resolve(history_[at_].page, link, page, anchor) && !IsWebAddress(link)) return {};
  links_.push_back(link);
  return kAddress + std::to_string(firstLink_ + static_cast<int>(links_.size()) - 1);
}

// The view is in the middle of its event and must keep its page until it is through.
const char* HelpWindow::LinkPressed(Fl_Widget* view, const char* address) {
  auto* self = static_cast<HelpWindow*>(view->window());
  if (std::strncmp(address, kAddress, std::strlen(kAddress)) != 0) return nullptr;
  const int index = std::atoi(address + std::strlen(kAddress)) - self->firstLink_;
  if (index < 0 || index >= static_cast<int>(self->links_.size())) return nullptr;
  self->pressed_ = self->links_[static_cast<std::size_t>(index)];
  Fl::remove_timeout(Follow, self);
  Fl::add_timeout(0, Follow, self);
  return nullptr;
}

void HelpWindow::Follow(void* data) {
  auto* self = static_cast<HelpWindow*>(data);
  const std::string here = self->history_[self->at_].page;
  const int top = self->view_->topline();
  std::string page, anchor;
  if (HelpBook::Resolve(here, self->pressed_, page, anchor) && self->book_.Page(page))
    return self->GoTo(page, anchor);
  self->Render(here);  // with new addresses
  self->view_->topline(top);
  if (!IsWebAddress(self->pressed_)) {
    self->Say(self->texts_.Format("ui_help_no_page", page));
  } else if (!fl_open_uri(self->pressed_.c_str(), nullptr, 0)) {
    self->Say(self->pressed_);
  }
}

void HelpWindow::FindNext() {
  const std::string wanted = find_->value();
  if (wanted.empty()) return;
  const int next = view_->find(wanted.c_str(), found_ < 0 ? 0 : found_ + 1);
  found_ = next < 0 && found_ >= 0 ? view_->find(wanted.c_str(), 0) : next;
  Say(found_ < 0 ? texts_.Format("ui_find_none", wanted) : std::string());
}

void HelpWindow::Say(const std::string& text) {
  note_->copy_label(PlainLabel(text).c_str());
}

bool HelpWindow::Scroll(int key) {
  const int page = std::max(view_->h() - 2 * kLine, kLine);
  const int end = std::max(0, view_->size() - view_->h() + 2 * kLine);
  int top = view_->topline();
  switch (key) {
    case FL_Up:
      top -= kLine;
      break;
    case FL_Down:
      top += kLine;
      break;
    case FL_Page_Up:
      top -= page;
      break;
    case FL_Page_Down:
    case ' ':
      top += page;
      break;
    case FL_Home:
      top = 0;
      break;
    case FL_End:
      top = end;
      break;
    default:
      return false;
  }
  view_->topline(std::clamp(top, 0, end));
  return true;
}

int HelpWindow::handle(int event) {
  if (event == FL_KEYBOARD || event == FL_SHORTCUT) {
    const int key = Fl::event_key();
    const bool control = Fl::event_ctrl() != 0;
    const bool typing = Fl::focus() == find_;
    if (key == FL_Escape) return do_callback(), 1;
    if (control && (key == 'w' || key == 'q')) return do_callback(), 1;
    if (control && key == 'f') return find_->take_focus(), find_->position(find_->size(), 0), 1;
    if (key == FL_F + 3) return FindNext(), 1;
    if (Fl::event_alt() && key == FL_Left) return Step(-1), 1;
    if (Fl::event_alt() && key == FL_Right) return Step(1), 1;
    if (!typing && key == FL_BackSpace) return Step(-1), 1;
    if (!typing && !control && !Fl::event_alt() && Scroll(key)) return 1;
  }
  return Fl_Double_Window::handle(event);
}
