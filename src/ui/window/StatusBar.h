// The line at the bottom of the main window.
#ifndef KR_UI_WINDOW_STATUSBAR_H
#define KR_UI_WINDOW_STATUSBAR_H

#include <FL/Fl_Button.H>
#include <FL/Fl_Group.H>

#include <functional>
#include <string>

#include "ui/fltk/ToolButton.h"

// From the left: what the queue does, never cut off, the last message for a while, the reading of
// decks with its progress and a button that gives it up, a gear for the options of the queue. Texts
// are UTF-8. Interface thread.
class StatusBar : public Fl_Group {
 public:
  enum class Tone { kPlain, kError };

  StatusBar(int x, int y, int w, int h, const std::string& cancelText,
            const std::string& optionsTip);
  ~StatusBar() override;

  void SetState(const std::string& text);
  // Shown for some seconds; an error longer. An empty text takes the message away.
  void ShowMessage(const std::string& text, Tone tone);
  // Takes this message away where it is still shown.
  void TakeBack(const std::string& text);
  // A negative percentage ends the display.
  void SetProgress(const std::string& text, int percent);

  std::function<void()> OnCancel;
  std::function<void()> OnOptions;  // the gear

  void draw() override;
  void resize(int x, int y, int w, int h) override;

 private:
  static void MessageTimeout(void* self);
  int BarX() const;   // of the progress
  int Right() const;  // where the gear begins
  void LayOut();

  ToolButton* options_;
  Fl_Button* cancel_;
  std::string state_;
  std::string message_;
  Tone tone_ = Tone::kPlain;
  std::string progressText_;
  int percent_ = -1;
};

#endif
