// Message boxes.
#ifndef KR_UI_DIALOGS_COMNMSGBOX_H
#define KR_UI_DIALOGS_COMNMSGBOX_H

#include <FL/Fl_Window.H>

#include <string>

// A modal window with an icon, a text and one or two buttons, centred over its parent, whole on the
// screen: at most two thirds as wide, a text that does not fit loses its middle (see InLines).
// Enter presses the first button, with kRatherNo the last; Escape and closing the window press the
// last. Texts are UTF-8. Interface thread.
class ComnMsgBox {
 public:
  enum Icon { kInformation, kQuestion };
  enum Type { kOk, kYesNo, kRatherNo };
  enum Button { kNone, kPressedOk, kPressedYes, kPressedNo };

  ComnMsgBox(const std::string& caption, const std::string& text, Icon icon, Type type,
             Fl_Window* parent);

  // A message over the parent with one button.
  static void Inform(Fl_Window* parent, const std::string& caption, const std::string& text,
                     const std::string& button);

  // The words on the buttons; they are English without this.
  void SetButtonTexts(const std::string& first, const std::string& second);

  // Shows the box and handles events until a button is pressed.
  Button DoModal();

 private:
  const std::string caption_, text_;
  const Icon icon_;
  const Type type_;
  Fl_Window* const parent_;
  std::string first_, second_;
};

#endif
