// A one-line input that is checked while it is typed and stored when it is left.
#ifndef KR_UI_FLTK_FIELD_H
#define KR_UI_FLTK_FIELD_H

#include <functional>
#include <string>

#include "ui/fltk/LineInput.h"

// Enter and leaving it commit, Escape brings the stored text back. A text that is not valid is kept
// as typed, with a red frame, and is not stored; a doubtful one has the frame too. Control keys
// that do not edit go on to the window. Texts are UTF-8. Interface thread.
class Field : public LineInput {
 public:
  Field(int x, int y, int w, int h);

  // What is stored; replaces a text that was typed, unless the user is typing right now.
  void Show(const std::string& stored);
  void ShowAlways(const std::string& stored);
  // Stores what was typed, if anything was and it is valid. False when it is not valid.
  bool Commit();
  // What was typed is not valid.
  bool Rejected() const { return edited_ && bad_; }
  // Shows a text as if it were typed, over what is stored.
  void TypeAgain(const std::string& text);
  // What was typed is not stored yet.
  bool Edited() const { return edited_; }
  // Looks once more whether what is shown is doubtful.
  void LookAgain();
  // Leads the user here, and says what is wrong with the text.
  void GoTo();

  // Shown faintly while the field is empty and not in use.
  void SetPlaceholder(const std::string& text);

  // Empty when the text is valid, else what is wrong.
  std::function<std::string(const std::string& text)> Check;
  // What is doubtful about a text that is stored all the same; empty: nothing.
  std::function<std::string(const std::string& text)> Doubt;
  // Stores a valid text.
  std::function<void(const std::string& text)> Store;
  // What is wrong with the text now; empty: nothing.
  std::function<void(const std::string& hint)> OnHint;

  int handle(int event) override;
  void draw() override;

 private:
  bool Validate();
  void Mark(bool marked);

  std::string stored_;
  std::string placeholder_;
  bool edited_ = false;
  bool entered_ = false;  // Enter has stored the text, and nothing was typed since
  bool bad_ = false;
  bool marked_ = false;  // has the red frame
};

#endif
