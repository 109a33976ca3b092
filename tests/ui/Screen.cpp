#include "ui/Screen.h"

#include <gtest/gtest.h>

#include <FL/Fl.H>
#include <FL/Fl_Button.H>
#include <FL/fl_draw.H>
#include <FL/Fl_Tooltip.H>
#include <FL/x.H>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <tuple>
#include <utility>

#include "core/CoreFixture.h"
#include "support/VirtualDisplay_posix.h"
#include "ui/fltk/Flx_HeaderButton.h"
#include "ui/fltk/Icons.h"
#include "ui/fltk/Theme.h"

namespace {

constexpr double kLook = 0.01;    // seconds between looks at a condition
constexpr double kPatience = 20;  // seconds, on a busy machine too

bool Covers(Fl_Widget& widget, int x, int y) {
  const int left = widget.as_window() ? 0 : widget.x();
  const int top = widget.as_window() ? 0 : widget.y();
  return x >= left && x < left + widget.w() && y >= top && y <= top + widget.h();
}

// Without a window manager nobody else tells the toolkit.
void GiveFocus(Fl_Window& window) {
  if (!Fl::grab()) Fl::handle(FL_FOCUS, &window);
}

class Talker {
 public:
  explicit Talker(const std::vector<Step>& steps) : steps_(steps) {
    if (pipe(turn_) != 0 || write(turn_[1], "", 1) != 1) throw std::runtime_error("no pipe");
    Fl::add_fd(turn_[0], FL_READ, Turn, this);  // always has something to read
    Fl::add_timeout(kPatience, GiveUp, this);
  }
  ~Talker() {
    Fl::remove_fd(turn_[0]);
    Fl::remove_timeout(GiveUp, this);
    close(turn_[0]);
    close(turn_[1]);
    EXPECT_EQ(next_, steps_.size()) << "steps for which no window was open";
  }

 private:
  // Once in each turn of an event loop, as an event of the window system would come.
  static void Turn(int, void* self) {
    auto* talker = static_cast<Talker*>(self);
    Fl_Window* open = Fl::grab() ? Fl::grab() : Fl::modal();
    // What a step has opened and waits for is the next one's.
    if (!open || !open->shown() || open == talker->busy_) return;
    Fl_Window* before = std::exchange(talker->busy_, open);
    GiveFocus(*open);
    try {
      talker->steps_[talker->next_++](*open);
    } catch (const std::exception& error) {
      ADD_FAILURE() << "step " << talker->next_ << ": " << error.what();
    }
    talker->busy_ = before;
    if (talker->next_ == talker->steps_.size()) Fl::remove_fd(talker->turn_[0]);
  }

  static void GiveUp(void*) {
    ADD_FAILURE() << "a window stays open";
    if (Fl::grab()) Key(*Fl::grab(), FL_Escape);
    while (Fl::modal()) Fl::modal()->hide();
  }

  const std::vector<Step>& steps_;
  std::size_t next_ = 0;
  int turn_[2] = {-1, -1};
  Fl_Window* busy_ = nullptr;  // the window of the step that is at work
};

struct Place {
  int x, y;
};

std::vector<Flx_HeaderButton*> HeadsFromLeft(Flx_Table& table) {
  std::vector<Flx_HeaderButton*> heads = All<Flx_HeaderButton>(table);
  std::ranges::sort(heads, {}, [](const Fl_Widget* head) { return head->x(); });
  return heads;
}

Fl_Window& WindowOf(Fl_Widget& widget) {
  return widget.as_window() ? *widget.as_window() : *widget.window();
}

Place PlaceOf(Fl_Widget& in, const std::string& text) {
  for (const Drawn& drawn : Drawing(WindowOf(in)).In(in)) {
    if (drawn.text.substr(std::min(drawn.text.find_first_not_of(' '), drawn.text.size())) == text)
      return {drawn.x + 1, drawn.y - 1};
  }
  throw std::runtime_error("not to be seen: " + text);
}

// A place in a cell, by its share of the width.
Place PlaceOf(Flx_Table& table, int row, const std::string& title, double across = 0.5) {
  const Drawing drawing(*table.window());
  int line = 0;
  for (Flx_HeaderButton* head : All<Flx_HeaderButton>(table)) {
    if (drawing.Text(*head) != title) continue;
    for (const Drawn& drawn : drawing.In(table)) {
      if (drawn.icon || drawn.y < head->y() + head->h() || drawn.y == line) continue;
      line = drawn.y;
      if (row-- == 0) return {head->x() + static_cast<int>(head->w() * across), line - 1};
    }
  }
  throw std::runtime_error("no such cell: " + title);
}

}  // namespace

void OpenDisplay() {
  static const VirtualDisplay* display = nullptr;
  if (display) return;
  display =
      new VirtualDisplay("1600x1000");  // until the process ends: windows may come at any time
  const ScopedVariable name("DISPLAY", display->Name());
  fl_open_display();
  Fl::lock();  // other threads wake the event loop
  // The mouse of the display is in nobody's way.
  XWarpPointer(fl_display, None, RootWindow(fl_display, fl_screen), 0, 0, 0, 0, 0, 0);
}

bool Until(const std::function<bool()>& condition, double seconds) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::duration<double>(seconds);
  while (!condition()) {
    if (Clock::now() > end) return false;
    Fl::wait(kLook);
  }
  return true;
}

// The toolkit's drawing on the screen, and what of it is text, icon or frame.
class Drawing::Recorder : public Fl_Xlib_Graphics_Driver {
 public:
  using Fl_Xlib_Graphics_Driver::draw;
  using Fl_Xlib_Graphics_Driver::width;

  Recorder(Drawing& drawing, Fl_Graphics_Driver& screen) : drawing_(drawing), screen_(screen) {}

  void draw(const char* text, int bytes, int x, int y) override {
    if (bytes > 0 && not_clipped(x, y - 1, 1, 1))
      drawing_.drawn_.push_back(
          {std::string(text, static_cast<std::size_t>(bytes)), nullptr, x, y, Color()});
  }
  void draw(Fl_RGB_Image* icon, int x, int y, int, int, int, int) override {
    if (not_clipped(x, y, 1, 1)) drawing_.drawn_.push_back({{}, icon, x, y, Color()});
  }
  void rect(int x, int y, int w, int h) override {
    drawing_.frames_.push_back({x, y, w, h, Color()});
    Fl_Xlib_Graphics_Driver::rect(x, y, w, h);
  }
  // The screen's own driver takes characters from other fonts.
  double width(const char* text, int bytes) override {
    ShareFont();
    return screen_.width(text, bytes);
  }
  double width(unsigned character) override {
    ShareFont();
    return screen_.width(character);
  }

 private:
  Fl_Color Color() { return Fl_Graphics_Driver::color(); }
  void ShareFont() { screen_.font(Fl_Graphics_Driver::font(), size()); }

  Drawing& drawing_;
  Fl_Graphics_Driver& screen_;
};

Drawing::Drawing(Fl_Window& window) {
  Fl::flush();
  Fl_Surface_Device* display = Fl_Display_Device::display_device();
  Fl_Graphics_Driver* screen = display->driver();
  Recorder recorder(*this, *screen);
  display->driver(&recorder);
  display->set_current();
  window.make_current();
  window.damage(FL_DAMAGE_ALL);
  static_cast<Fl_Widget&>(window).draw();
  display->driver(screen);
  display->set_current();
  window.redraw();
  std::stable_sort(drawn_.begin(), drawn_.end(), [](const Drawn& one, const Drawn& other) {
    return std::tie(one.y, one.x) < std::tie(other.y, other.x);
  });
}

std::vector<Drawn> Drawing::In(Fl_Widget& widget) const {
  std::vector<Drawn> in;
  for (const Drawn& drawn : drawn_) {
    if (Covers(widget, drawn.x, drawn.y)) in.push_back(drawn);
  }
  return in;
}

std::string Drawing::Text(Fl_Widget& widget) const {
  std::string text;
  for (const Drawn& drawn : In(widget)) {
    if (!drawn.icon) text += (text.empty() ? "" : " ") + drawn.text;
  }
  return text;
}

bool Drawing::HasIcon(Fl_Widget& widget, const std::string& name) const {
  const std::vector<Drawn> in = In(widget);
  return std::any_of(in.begin(), in.end(),
                     [&](const Drawn& drawn) { return drawn.icon && drawn.icon == Icon(name); });
}

bool Drawing::HasFrame(Fl_Widget& widget, Fl_Color color) const {
  return std::any_of(frames_.begin(), frames_.end(), [&](const Frame& frame) {
    return frame.x == widget.x() && frame.y == widget.y() && frame.w == widget.w() &&
           frame.h == widget.h() && frame.color == color;
  });
}

std::string HeadsOf(Flx_Table& table) {
  const Drawing drawing(*table.window());
  std::string titles;
  for (Flx_HeaderButton* head : HeadsFromLeft(table)) titles += "|" + drawing.Text(*head);
  return titles.substr(1);
}

std::vector<std::string> RowsOf(Flx_Table& table) {
  const Drawing drawing(*table.window());
  const std::vector<Flx_HeaderButton*> heads = HeadsFromLeft(table);
  std::vector<std::string> rows;
  std::size_t column = 0;
  int line = 0;
  for (const Drawn& drawn : drawing.In(table)) {
    if (drawn.icon || drawn.y < heads.front()->y() + heads.front()->h()) continue;
    if (drawn.y != line) {
      rows.emplace_back();
      column = 0;
      line = drawn.y;
    }
    for (; column < heads.size() && drawn.x >= heads[column]->x() + heads[column]->w(); ++column)
      rows.back() += '|';
    const bool pale = drawn.color == Theme::kDisabledText;
    rows.back() += pale ? "(" + drawn.text + ")" : drawn.text;
  }
  for (std::string& row : rows) {
    const auto bars = static_cast<std::size_t>(std::count(row.begin(), row.end(), '|'));
    row.append(heads.size() - 1 - bars, '|');
  }
  return rows;
}

std::vector<Fl_Widget*> WidgetsOf(const Fl_Group& in, const std::string& label) {
  std::vector<Fl_Widget*> found;
  for (int i = 0; i < in.children(); ++i) {
    Fl_Widget* widget = in.child(i);
    if (!widget->visible()) continue;
    if (label.empty() || (widget->label() && widget->label() == label)) found.push_back(widget);
    const Fl_Group* group = widget->as_group();
    if (!group) continue;
    const std::vector<Fl_Widget*> inner = WidgetsOf(*group, label);
    found.insert(found.end(), inner.begin(), inner.end());
  }
  return found;
}

void MoveTo(Fl_Window& window, int x, int y) {
  Fl_Tooltip::delay(0);
  Fl_Tooltip::hoverdelay(0);
  GiveFocus(window);
  Fl::e_x = x;
  Fl::e_y = y;
  Fl::e_x_root = window.x() + x;
  Fl::e_y_root = window.y() + y;
  Fl::handle(FL_MOVE, &window);
}

void ClickAt(Fl_Window& window, int x, int y, int button, bool twice, int held) {
  MoveTo(window, x, y);
  Fl::e_keysym = FL_Button + button;
  Fl::e_state = (FL_BUTTON1 << (button - 1)) | held;
  Fl::e_is_click = 1;
  Fl::e_clicks = twice ? 1 : 0;
  Fl::handle(FL_PUSH, &window);
  Fl::e_state = 0;
  Fl::handle(FL_RELEASE, &window);
}

void Drag(Fl_Window& window, int x, int y, int byX, int byY) {
  MoveTo(window, x, y);
  Fl::e_keysym = FL_Button + FL_LEFT_MOUSE;
  Fl::e_state = FL_BUTTON1;
  Fl::e_clicks = 0;
  Fl::handle(FL_PUSH, &window);
  Fl::e_is_click = 0;
  MoveTo(window, x + byX, y + byY);  // a drag while the button is down
  Fl::e_state = 0;
  Fl::handle(FL_RELEASE, &window);
}

void Press(Fl_Widget& widget) {
  ClickAt(*widget.window(), widget.x() + widget.w() / 2, widget.y() + widget.h() / 2);
}

void MoveTo(Fl_Widget& in, const std::string& text) {
  const Place place = PlaceOf(in, text);
  MoveTo(WindowOf(in), place.x, place.y);
}

void Press(Fl_Widget& in, const std::string& text, int button, bool twice) {
  const Place place = PlaceOf(in, text);
  ClickAt(WindowOf(in), place.x, place.y, button, twice);
}

void MoveToCell(Flx_Table& table, int row, const std::string& title) {
  const Place place = PlaceOf(table, row, title);
  MoveTo(*table.window(), place.x, place.y);
}

void PressCell(Flx_Table& table, int row, const std::string& title, int button, bool twice,
               int held) {
  const Place place = PlaceOf(table, row, title);
  ClickAt(*table.window(), place.x, place.y, button, twice, held);
}

void PressEndOfCell(Flx_Table& table, int row, const std::string& title) {
  const Place place = PlaceOf(table, row, title, 0.95);
  ClickAt(*table.window(), place.x, place.y);
}

Fl_Window* TipWindow() {
  Fl_Window* open = nullptr;
  Until(
      [&] {
        open = Fl::first_window();
        while (open && !open->override()) open = Fl::next_window(open);
        return open != nullptr;
      },
      0.5);
  return open;
}

std::string Tip() {
  Fl_Window* open = TipWindow();
  return open ? Drawing(*open).Text(*open) : std::string();
}

void Key(Fl_Window& window, int key, int state, const std::string& text) {
  static char bytes[4096];  // the toolkit writes into it
  GiveFocus(window);
  bytes[text.copy(bytes, sizeof bytes - 1)] = 0;
  Fl::e_text = bytes;
  Fl::e_length = static_cast<int>(text.size());
  Fl::e_keysym = Fl::e_original_keysym = key;
  Fl::e_state = state;
  Fl::handle(FL_KEYBOARD, &window);
  Fl::e_state = 0;
}

void TypeInto(Fl_Input& input, const std::string& text) {
  GiveFocus(*input.window());
  input.take_focus();
  input.position(input.size(), 0);
  Key(*input.window(), text.empty() ? FL_Delete : text.front(), 0, text);
  Key(*input.window(), FL_Tab);
}

void Choose(Fl_Choice& choice, const std::string& entry) {
  const int index = choice.find_index(entry.c_str());
  if (index < 0) throw std::runtime_error("no such entry: " + entry);
  choice.value(index);
  choice.do_callback();
}

void Talk(const std::function<void()>& open, const std::vector<Step>& steps) {
  const Talker talker(steps);
  open();
}

std::string Answer(const std::function<void()>& open, const std::string& button) {
  std::string longest;
  Talk(open, {[&](Fl_Window& window) {
         for (Fl_Widget* widget : WidgetsOf(window)) {
           const std::string label = widget->label() ? widget->label() : "";
           if (label.size() > longest.size()) longest = label;
         }
         Press(Find<Fl_Button>(window, button));
       }});
  return longest;
}
