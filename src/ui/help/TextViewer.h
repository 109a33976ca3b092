// Shows a text file where the system has no viewer.
#ifndef KR_UI_HELP_TEXTVIEWER_H
#define KR_UI_HELP_TEXTVIEWER_H

#include <FL/Fl_Box.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Text_Buffer.H>
#include <FL/Fl_Text_Display.H>

#include <cstdint>
#include <string>

#include "ui/text/TextTable.h"

// A window that stays beside the main window, reads only, and follows the file while it grows. Of a
// big file it shows the end. Deletes itself when it is closed. Interface thread.
class TextViewer : public Fl_Double_Window {
 public:
  static constexpr std::int64_t kMostBytes = 8 * 1024 * 1024;

  // Opens the file, or brings the window that shows it to the front. False when it cannot be read.
  static bool Show(const std::string& path, const TextTable& texts);

  // Before the program ends.
  static void CloseAll();

  ~TextViewer() override;
  int handle(int event) override;

 private:
  TextViewer(const std::string& path, const TextTable& texts);

  void PlaceBeside(Fl_Window* other);
  void ShowOverDialog();
  static void Tick(void* self);
  bool Load();    // the whole file, or its end
  bool Follow();  // what was appended; loads anew when the file became shorter
  bool Append(std::int64_t from, std::int64_t to);
  bool AtEnd() const;
  void ScrollToEnd();
  void ShowSize();

  const std::string path_;
  const TextTable& texts_;
  std::int64_t size_ = 0;      // bytes of the file that are shown or skipped
  std::int64_t skipped_ = 0;   // bytes in front of what is shown
  std::int64_t modified_ = 0;  // seconds since 1970
  bool gone_ = false;
  std::string rest_;  // the first bytes of a character that is not whole yet
  Fl_Text_Buffer buffer_;
  Fl_Text_Display* display_;
  Fl_Box* note_;
};

#endif
