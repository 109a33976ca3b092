// The window with all runs that there were.
#ifndef KR_UI_DIALOGS_HISTORYWINDOW_H
#define KR_UI_DIALOGS_HISTORYWINDOW_H

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/Application.h"
#include "ui/dialogs/HistoryTable.h"
#include "ui/fltk/FilterBar.h"
#include "ui/text/TextTable.h"

// One of it stays beside the main window and shows what is new by itself. The history is read and
// written on threads of its own. Deletes itself when it is closed. Interface thread.
class HistoryWindow : public Fl_Double_Window {
 public:
  // Opens it, or brings it to the front, with these words in its filter (UTF-8; empty: all runs).
  // The application and the texts outlive it.
  static void Show(Application& application, const TextTable& texts, const std::string& words);

  // Before the program ends.
  static void CloseAll();

  ~HistoryWindow() override;
  int handle(int event) override;

 private:
  struct Reading;  // shared with the thread, which may outlive the window
  struct Export;
  using Clock = std::chrono::steady_clock;
  struct Command {
    const char* key;                     // of the text on its button and in the menu
    bool (HistoryWindow::*can)() const;  // null: always
    void (HistoryWindow::*act)();
    bool inMenu;
  };
  static const std::vector<Command>& Commands();

  HistoryWindow(Application& application, const TextTable& texts);

  bool Can(const Command& command) const;
  void MakeFilter();
  void MakeFooter();
  void FilterFor(const std::string& words);
  void SetFilter(const std::string& words, const FilterBar::Places& verdicts);
  void ShowButtons();
  void ShowCount();
  void Say(const std::string& text);
  void Inform(const std::string& text);
  void OpenMenu(int x, int y);
  bool TakeKey();

  static void Tick(void* self);
  void StartReading();
  void TakeRead();
  void TakeExported();

  bool HasRows() const { return !table_->Places().empty(); }
  bool HasEnded() const;
  bool HasMessage() const;
  bool HasFolder() const;
  bool HasFile() const;
  void ShowSummary();
  void ShowMessage();
  void OpenFolder();
  void RunAgain();
  void ExportRows();
  void Close();

  Application& application_;
  const TextTable& texts_;
  std::shared_ptr<Reading> reading_;  // null: nothing is being read
  std::shared_ptr<Export> export_;
  std::uint64_t version_ = 0;  // of what was read last
  bool hasRead_ = false;
  Clock::time_point next_{};  // not read again before

  FilterBar* filter_ = nullptr;
  FilterBar::View filtered_;
  HistoryTable* table_ = nullptr;
  std::vector<Fl_Button*> buttons_;  // in the order of the commands
  Fl_Box* said_ = nullptr;
};

#endif
