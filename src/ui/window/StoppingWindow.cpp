#include "ui/window/StoppingWindow.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Progress.H>

#include <chrono>

#include "ui/fltk/Labels.h"
#include "ui/fltk/ModalWindow.h"
#include "ui/fltk/ProgressBar.h"
#include "ui/window/Layout.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLongest(30);
constexpr double kLook = 0.1;  // seconds between looks
constexpr int kWidth = 340;
constexpr int kProgressHeight = 8;

// Stays open whatever keys are pressed.
class StoppingWindow : public ModalWindow {
 public:
  StoppingWindow(const std::string& title, const std::string& text, int height)
      : ModalWindow(kWidth, height) {
    copy_label(title.c_str());
    xclass("KestrunMessage");
    auto* words = new Fl_Box(Layout::kBoxPadding, Layout::kBoxPadding,
                             kWidth - 2 * Layout::kBoxPadding, Layout::kFieldHeight);
    words->copy_label(PlainLabel(text).c_str());
    words->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE);
    progress_ = new ProgressBar(Layout::kBoxPadding, words->y() + words->h() + Layout::kGap,
                                kWidth - 2 * Layout::kBoxPadding, kProgressHeight);
    progress_->maximum(static_cast<float>(kLongest.count()));
    end();
    callback([](Fl_Widget*, void*) {});
  }

  void ShowPassed(std::chrono::duration<float> passed) { progress_->value(passed.count()); }

 private:
  Fl_Progress* progress_;
};

}  // namespace

bool WaitWhileStopping(Fl_Window* parent, const std::string& title, const std::string& text,
                       const std::function<bool()>& running) {
  if (!running()) return true;
  constexpr int kHeight =
      2 * Layout::kBoxPadding + Layout::kFieldHeight + Layout::kGap + kProgressHeight;
  StoppingWindow window(title, text, kHeight);
  window.Open(parent, nullptr);
  const Clock::time_point begin = Clock::now();
  while (running() && Clock::now() - begin < kLongest) {
    window.ShowPassed(Clock::now() - begin);
    Fl::wait(kLook);
  }
  window.hide();
  return !running();
}
