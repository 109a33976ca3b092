// The hosts of distributed runs in a scrolling area: names and CPUs to edit, and what a group uses.
#ifndef KR_UI_DIALOGS_HOSTEDITOR_H
#define KR_UI_DIALOGS_HOSTEDITOR_H

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Scroll.H>

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "core/SettingsAndPaths.h"
#include "ui/dialogs/Flx_Base_Dialog.h"

// Every change of a row is stored in the host file at once. A row that is not valid is not stored;
// its field says why. Interface thread.
class HostEditor {
 public:
  // What it says; the dialog that holds it sets these texts.
  static const std::span<const DialogText> kTexts;
  // Gives one of them by its key, in UTF-8.
  using Texts = std::function<std::string(const std::string& key)>;

  // The area is empty; both outlive the table.
  HostEditor(Fl_Scroll& area, SettingsAndPaths& settings, Texts texts);

  // Makes the rows from the host lines anew.
  void Rebuild();

  // Marks the hosts that a group runs on. `groupText` is its assignment (HostsOfGroup).
  void ShowGroup(const std::string& groupText);

 private:
  struct Row {
    std::string stored;  // the host line; empty for a row that is new
    Fl_Input* name;
    Fl_Input* cpus;
    Fl_Box* uses;
    Fl_Button* remove;
  };

  void Clear();
  void MakeHeads();
  Row MakeRow(const std::string& line);
  Fl_Box* MakeBox(int x, int width, const std::string& label);
  void Place();
  void AddRow();
  void RemoveRow(const Fl_Widget* button);
  std::string LineOf(const Row& row) const;  // empty: nothing to store
  bool Check(Fl_Input& input, bool valid, const char* hintKey) const;
  void Store();
  void ShowNote(const std::string& text, bool problem);

  Fl_Scroll& area_;
  SettingsAndPaths& settings_;
  const Texts texts_;
  std::string groupText_;
  std::vector<Fl_Box*> heads_;
  std::vector<Row> rows_;
  std::vector<std::string> more_;  // host lines beyond the rows that are shown
  Fl_Button* add_ = nullptr;
  Fl_Box* note_ = nullptr;
};

#endif
