// The base of all dialogs: builds a window from a layout text and runs it.
#ifndef KR_UI_DIALOGS_FLX_BASE_DIALOG_H
#define KR_UI_DIALOGS_FLX_BASE_DIALOG_H

#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Group.H>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ui/dialogs/DialogLayout.h"

// A dialog is made on the stack, given its layouts and texts by its constructor, and run. Widgets
// keep FLTK's default callback: what fires comes out of FLTK's queue and is handed to HandleWidget.
//
// Chinese texts are UTF-8 literals in the sources and code page 936 in the dialog and in the labels
// of its widgets, which have a label type that decodes while it draws. So:
//   SetLayouts(kEnglishLayout, kChineseLayout);            // in the constructor
//   SetTexts("no_file", "No file.", "...");
//   widget->label(ConvertText(GetText("no_file")));        // labels of the layout's widgets
//   list->add(Shown("no_file").c_str());                   // all else that FLTK shows: UTF-8
//   ShowLabel(*widget, ToUi(path));                        // labels with other text than our own
//
// Interface thread.
class Flx_Base_Dialog {
 public:
  // `language`: 0 English, 1 Chinese; a dialog of another one has no layout and does not open.
  Flx_Base_Dialog(Fl_Window* parent, int language) : parent_(parent), language_(language) {}
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

  // In the language's encoding.
  void SetLayout(const std::string& text) { layout_ = text; }

  // The one of the dialog's language.
  void SetLayouts(const std::string& english, const std::string& chinese);

  // Builds the window; returns Initialise's result, false without a layout.
  bool Build();

  // Build, then events until HandleWidget ends the dialog or its window is closed.
  void Run();

  // Null when the layout has no such id.
  Fl_Widget* FindWidget(const std::string& id) const;
  template <typename Kind>
  Kind* Find(const std::string& id) const {
    return dynamic_cast<Kind*>(FindWidget(id));
  }

  // The first text given for a key stays. In the language's encoding; null for an unknown key.
  void SetText(const std::string& key, const std::string& text) { texts_.emplace(key, text); }
  void SetTexts(const std::string& key, const std::string& english, const std::string& chinese);
  const char* GetText(const std::string& key) const;

  // The text of a key in UTF-8; empty for an unknown key.
  std::string Shown(const std::string& key) const;

  // A copy that lives as long as the dialog, for labels of the layout's widgets and the title.
  const char* ConvertText(const std::string& text);

  // Gives a widget of the layout a label in UTF-8, shown as it stands.
  void ShowLabel(Fl_Widget& widget, const std::string& uiText);

  void CentreOnParent();

 protected:
  Fl_Window* Window() const { return window_.get(); }
  Fl_Window* Parent() const { return parent_; }
  int Language() const { return language_; }

 private:
  void AddWidget(const LayoutLine& line);
  void Apply(Fl_Widget& widget, const LayoutLine& line);
  void Reparent(Fl_Widget& widget);
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
