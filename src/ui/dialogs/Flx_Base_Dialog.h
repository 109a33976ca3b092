// The base of all dialogs: builds a window from a layout text and runs it.
#ifndef KR_UI_DIALOGS_FLX_BASE_DIALOG_H
#define KR_UI_DIALOGS_FLX_BASE_DIALOG_H

#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Group.H>

#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "messages/BothLanguages.h"
#include "ui/dialogs/DialogLayout.h"

// A widget of a dialog by its name in the code: the id of its line in the layout, and what it is.
template <typename Kind>
struct WidgetName {
  const char* id;
};

// A text that a dialog shows beside its layout, in UTF-8.
struct DialogText {
  const char* key;
  const char* english;
  const char* chinese;
};

// A dialog is made on the stack, given its layout and texts by its constructor, and run. Its class
// names the widgets that the code uses; its layout has the geometry of both languages. Widgets keep
// FLTK's default callback: what fires comes out of FLTK's queue and is handed to HandleWidget.
//
// Chinese texts are UTF-8 literals in the sources and code page 936 in the dialog and in the labels
// of its widgets, which have a label type that decodes while it draws. So:
//   static constexpr WidgetName<Fl_Button> kClose{"ID_BUTTON1"};  // in the class
//   : Flx_Base_Dialog(parent, language, kLayout, kTexts)  // in the constructor
//   Find(kClose)->label(ConvertText(GetText("close")));  // labels of the layout's widgets
//   list->add(Shown("no_file").c_str());                 // all else that FLTK shows: UTF-8
//   ShowLabel(*widget, ToUi(path));                      // labels with other text than our own
//
// Interface thread.
class Flx_Base_Dialog {
 public:
  // `language`: 0 English, 1 Chinese; a dialog of another one has no layout and does not open.
  // The layout and the texts may come later, too: see SetLayouts and SetTexts.
  Flx_Base_Dialog(Fl_Window* parent, int language, const std::string& layout = {},
                  std::span<const DialogText> texts = {});
  virtual ~Flx_Base_Dialog();
  Flx_Base_Dialog(const Flx_Base_Dialog&) = delete;
  Flx_Base_Dialog& operator=(const Flx_Base_Dialog&) = delete;

  // Looks widgets up by id, fills them, centres the window. False: the dialog is not run.
  virtual bool Initialise() { return true; }

  // Called with a widget that has fired. -1 keeps the dialog open, any other value ends it.
  virtual int HandleWidget(Fl_Widget*) { return -1; }

  // Jobs, groups or settings have changed while the dialog is open, not through it: by a run, or by
  // jobs and settings that were handed over.
  virtual void QueueChanged() {}
  // The host lines were read anew.
  virtual void HostsChanged() {}
  // Running jobs have been looked at.
  virtual void RunsLookedAt() {}

  // In the language's encoding.
  void SetLayout(const std::string& text) { layout_ = text; }

  // The layout in the dialog's language, from one whose lines have both (see ChineseLayout); UTF-8.
  void SetLayouts(const std::string& text);

  // Builds the window; returns Initialise's result, false without a layout.
  bool Build();

  // Build, then events until HandleWidget ends the dialog or its window is closed. Whichever it is,
  // a field that is still being typed in fires before the window goes.
  void Run();

  // A field that is being typed in fires now, while the dialog is run.
  void StoreTyped();

  // Null when the layout has no such id; by name also when it is another kind of widget.
  Fl_Widget* FindWidget(const std::string& id) const;
  template <typename Kind>
  Kind* Find(WidgetName<Kind> name) const {
    return dynamic_cast<Kind*>(FindWidget(name.id));
  }
  template <typename... Kinds>
  bool HasAll(WidgetName<Kinds>... names) const {
    return (Find(names) && ...);
  }

  // The first text given for a key stays. In the language's encoding; null for an unknown key.
  void SetText(const std::string& key, const std::string& text) { texts_.emplace(key, text); }
  void SetTexts(std::span<const DialogText> texts);
  const char* GetText(const std::string& key) const;

  // The text of a key in UTF-8; empty for an unknown key. Every dialog has "ok".
  std::string Shown(const std::string& key) const;
  std::string Shown(const BothLanguages& text) const;

  // A copy that lives as long as the dialog, for labels of the layout's widgets and the title.
  const char* ConvertText(const std::string& text);

  // Gives a widget of the layout a label in UTF-8, shown as it stands.
  void ShowLabel(Fl_Widget& widget, const std::string& uiText);

  // A message with one button over the dialog. UTF-8.
  void Inform(const std::string& caption, const std::string& uiText);

  void CentreOnParent();

  // The last step of Initialise for a dialog of the usual kind: the window stands over its parent,
  // Enter presses one button, and one widget has the focus; the text of a field is selected.
  void Present(Fl_Button& byEnter, Fl_Widget& focused);

  // Null before Build.
  Fl_Window* Window() const { return window_.get(); }

 protected:
  int Language() const { return language_; }

 private:
  void AddWidget(const LayoutLine& line);
  void Apply(Fl_Widget& widget, const LayoutLine& line);
  void Reparent(Fl_Widget& widget);
  void HandleFired();
  void LeaveFields(Fl_Group& group);
  bool Chinese() const { return language_ == 1; }
  std::string Decoded(const std::string& text) const;

  Fl_Window* parent_;
  const int language_;
  bool closed_ = false;
  float scaleX_ = 1.0F;
  float scaleY_ = 1.0F;
  int windowX_ = 0;
  int windowY_ = 0;
  std::string layout_;
  std::unique_ptr<Fl_Double_Window> window_;
  std::vector<Fl_Group*> groups_;
  std::map<std::string, Fl_Widget*> widgets_;
  std::map<std::string, std::string> converted_;
  std::map<std::string, std::string> texts_;
};

#endif
