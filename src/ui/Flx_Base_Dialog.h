// The base of all dialogs: builds a window from a layout text and runs it.
#ifndef KR_UI_FLX_BASE_DIALOG_H
#define KR_UI_FLX_BASE_DIALOG_H

#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Group.H>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ui/DialogLayout.h"

// A dialog is made on the stack, given its layout and texts by its constructor, and run. Widgets
// keep FLTK's default callback: what fires comes out of FLTK's queue and is handed to HandleWidget.
// Interface thread.
class Flx_Base_Dialog {
 public:
  explicit Flx_Base_Dialog(Fl_Window* parent) : parent_(parent) {}
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

  void SetLayout(const std::string& text) { layout_ = text; }

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

  // The first text given for a key stays.
  void SetText(const std::string& key, const std::string& text) { texts_.emplace(key, text); }
  const char* GetText(const std::string& key) const;

  // A copy that lives as long as the dialog, ready for the toolkit.
  const char* ConvertText(const std::string& text);

  void CentreOnParent();

 protected:
  Fl_Window* Window() const { return window_.get(); }
  Fl_Window* Parent() const { return parent_; }

 private:
  void AddWidget(const LayoutLine& line);
  void Apply(Fl_Widget& widget, const LayoutLine& line);
  void Reparent(Fl_Widget& widget);

  Fl_Window* parent_;
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
