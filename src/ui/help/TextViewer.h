// Shows a text file where the system has no viewer, and edits it.
#ifndef KR_UI_HELP_TEXTVIEWER_H
#define KR_UI_HELP_TEXTVIEWER_H

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Text_Buffer.H>
#include <FL/Fl_Text_Display.H>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "messages/Message.h"
#include "ui/help/FileSearch.h"
#include "ui/text/FileText.h"
#include "ui/text/TextTable.h"

// A window that stays beside the main window. To read, it follows the file while it grows, and to
// the name under which a message file is kept; of a big file it shows the end, or what lies around
// a place that was found. What it shows goes only when there is something else to show. To edit, it
// has the whole file, and keeps changes until they are saved or the user drops them. Deletes itself
// when it is closed. Interface thread.
class TextViewer : public Fl_Double_Window {
 public:
  static constexpr std::int64_t kMostBytes = 8 * 1024 * 1024;

  // Opens the file, or brings the window that has it to the front. False when it cannot be read.
  static bool Show(const std::string& path, const TextTable& texts);
  // The same to edit it. What is bigger than kMostBytes can only be read.
  static bool Edit(const std::string& path, const TextTable& texts);

  // One of the windows has saved its file.
  static std::function<void(const std::string& path)> OnSaved;

  // Asks the user about each window with changes that are not saved. False: one of them is to stay.
  static bool MayDropAll();
  // The program ends and nobody can be asked: saves all changes. Where that would write over what
  // another program has written, or the file cannot be written, they go into a new file beside it.
  // `say` hears what was done. Needs no display.
  static void KeepAll(const MessageSink& say);
  // Before the program ends; drops changes.
  static void CloseAll();

  ~TextViewer() override;
  int handle(int event) override;

 private:
  TextViewer(const std::string& path, const TextTable& texts, bool editable);

  static bool Open(const std::string& path, const TextTable& texts, bool editable);
  Fl_Button* MakeButton(int x, int y, const char* key, void (*press)(TextViewer&));
  void MakeFindRow();
  void MakeFooter();
  void PlaceBeside(Fl_Window* other);
  void ShowOverDialog();
  static void Tick(void* self);
  bool TakeKey();
  void Close();
  void Reload();

  // The file, and what is shown of it.
  bool Read(std::int64_t from, std::int64_t to, std::string& bytes) const;
  void KnowFile(std::int64_t size);  // how it is now
  bool Load();                       // the whole file, or its end
  void Follow();
  void FollowName();
  void FollowGrowth(std::int64_t size);
  bool ShowPart(std::int64_t from, std::int64_t to);
  bool Append();  // what the file has more
  std::string Text() const;
  void SetText(const std::string& text);
  bool AtEnd() const;
  void ScrollToEnd();
  void ShowNote();

  // TextViewer_Edit.cpp
  bool ReadWhole(std::string& bytes) const;
  bool LoadToEdit();
  void Keep(const std::string& bytes);
  void FollowToEdit();
  static void TextChanged(int, int inserted, int deleted, int, const char*, void* self);
  void SetEdited(bool edited);
  bool Ask(const char* question, const char* yes, const char* no);
  bool MayDrop();  // asks when there are changes
  bool IsAsKnown() const;  // the file, on the disk
  void Save();
  void KeepChanges(const MessageSink& say);

  // TextViewer_Find.cpp
  void GoToFind();
  void Find(bool back);
  static void SearchOn(void* self);
  void StopSearch();
  void FindAround(bool back);
  void ShowFoundInFile();
  void ShowFound(std::size_t found, const std::string& around);
  void SayFound(const std::string& text);

  std::string path_;  // under which the file is now
  const TextTable& texts_;
  const bool editable_;
  std::string identity_;      // of the file whose contents are shown
  std::int64_t size_ = 0;     // bytes of the file
  std::int64_t begin_ = 0;    // of the bytes that are shown
  std::int64_t end_ = 0;      // behind the last of them
  std::int64_t written_ = 0;  // when, see FileDirWrapper::WriteTime
  bool gone_ = false;
  std::string rest_;  // the first bytes of a character that is not whole yet

  std::unique_ptr<EditableText> editing_;
  std::string stored_;         // the file's bytes when it was read or saved
  bool loading_ = false;       // the buffer is being filled, not edited
  bool edited_ = false;        // and not saved
  bool saved_ = false;         // and not edited since
  bool otherChanged_ = false;  // another program has changed the file

  std::unique_ptr<FileSearch> search_;
  std::string words_;  // that are looked for, folded

  Fl_Text_Buffer buffer_;
  Fl_Text_Display* display_ = nullptr;
  Fl_Input* find_ = nullptr;
  Fl_Box* found_ = nullptr;
  Fl_Box* note_ = nullptr;
  Fl_Button* save_ = nullptr;
};

#endif
