// Shows a compiled-help file where the system has no viewer.
#ifndef KR_UI_HELP_HELPWINDOW_H
#define KR_UI_HELP_HELPWINDOW_H

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Help_View.H>
#include <FL/Fl_Hold_Browser.H>
#include <FL/Fl_Input.H>

#include <string>
#include <vector>

#include "ui/help/HelpBook.h"
#include "ui/text/TextTable.h"

// Contents at the left, the page at the right; at most one such window. Deletes itself when it is
// closed; the next one has its size. Linux only. Interface thread.
class HelpWindow : public Fl_Double_Window {
 public:
  // Opens the file at the page, or brings the window that shows the file to the front and turns to
  // the page. False when the file cannot be read. `texts` outlives the window.
  static bool Show(const std::string& path, const std::string& page, const TextTable& texts);

  // Before the program ends.
  static void Close();

  ~HelpWindow() override;
  int handle(int event) override;

 private:
  struct Place {
    std::string page;
    int top = 0;  // how far the page is scrolled, in pixels
  };

  HelpWindow(const std::string& path, HelpBook book, const TextTable& texts);
  void MakeTools();
  void MakeContents();

  void GoTo(const std::string& page, const std::string& anchor);  // a new place of the history
  void Step(int by);                                              // through the history
  void Render(const std::string& page);
  void MarkContents();
  std::string AddressFor(const std::string& link);
  static const char* LinkPressed(Fl_Widget* view, const char* address);
  static void Follow(void* self);
  void FindNext();
  bool Scroll(int key);
  void Say(const std::string& text);

  const std::string path_;
  const HelpBook book_;
  const TextTable& texts_;
  std::vector<Place> history_;
  std::size_t at_ = 0;  // in the history
  // The addresses of the page's links. The view gets numbers that never come twice: it takes an
  // address equal to the last one for a link inside the page.
  std::vector<std::string> links_;
  int firstLink_ = 0;
  std::string pressed_;  // the link to follow when the view has handled its event
  int found_ = -1;       // where the last search ended, in the view's text
  Fl_Button* back_ = nullptr;
  Fl_Button* forward_ = nullptr;
  Fl_Input* find_ = nullptr;
  Fl_Box* note_ = nullptr;
  Fl_Hold_Browser* contents_ = nullptr;
  Fl_Help_View* view_ = nullptr;
};

#endif
