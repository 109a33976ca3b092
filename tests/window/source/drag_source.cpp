// A window from which a text can be dragged, as a file manager drags files: the addresses in its
// arguments, one a line.

#include <FL/Fl.H>
#include <FL/Fl_Window.H>

#include <string>

namespace {

class DragSource : public Fl_Window {
 public:
  explicit DragSource(std::string text) : Fl_Window(1150, 680, 80, 60), text_(std::move(text)) {
    xclass("DragSource");
  }

  int handle(int event) override {
    if (event == FL_PUSH) return 1;
    if (event != FL_DRAG) return Fl_Window::handle(event);
    Fl::copy(text_.data(), static_cast<int>(text_.size()), 0);
    Fl::dnd();
    return 1;
  }

 private:
  const std::string text_;
};

}  // namespace

int main(int argc, char** argv) {
  std::string text;
  for (int i = 1; i < argc; ++i) text += std::string(argv[i]) + "\r\n";
  DragSource window(text);
  window.end();
  window.show();
  return Fl::run();
}
