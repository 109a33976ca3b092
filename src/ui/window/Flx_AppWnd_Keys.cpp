// Keys, menus, cells and drops of the main window.

#include <FL/Fl.H>

#include <utility>
#include <vector>

#include "jobs/JobField.h"
#include "ui/fltk/PopupMenu.h"
#include "ui/text/ShownValues.h"
#include "ui/window/Flx_AppWnd.h"
#include "ui/window/Layout.h"

namespace {

constexpr Action kSeparator = Action::kExit;

}  // namespace

int Flx_AppWnd::handle(int event) {
  switch (event) {
    case FL_DND_ENTER:
    case FL_DND_DRAG:
      Fl::belowmouse(this);  // not a widget of it
      return 1;
    case FL_DND_LEAVE:
    case FL_DND_RELEASE:
      return 1;
    case FL_PASTE:
      // Later: the program that the drag came from waits for this event's end.
      dropped_ = Fl::event_text() ? Fl::event_text() : "";
      Fl::add_timeout(0, TakeDropped, this);
      return 1;
    case FL_KEYBOARD:  // what the widget with the focus did not take
    case FL_SHORTCUT: {
      Action action;
      if (ActionOfKey(action)) return Perform(action), 1;
      if (event == FL_SHORTCUT && Fl::event_key() == FL_Escape) {
        // Does not close the window; it leads back to the table.
        if (Table() && Fl::focus() && Table()->contains(Fl::focus())) filter_->Clear();
        if (Table()) Table()->TakeFocus();
        return 1;
      }
      break;
    }
    default:
      break;
  }
  return Fl_Double_Window::handle(event);
}

bool Flx_AppWnd::SolverEnabledFor(Action action) const {
  const std::optional<SolverKind> solver = InfoOf(action).solver;
  return !solver || application_.SolverEnabled(*solver);
}

bool Flx_AppWnd::CanPerform(Action action) const {
  if (!SolverEnabledFor(action)) return false;
  switch (action) {
    case Action::kDeleteAll:
    case Action::kReport:
      return Group() && Group()->JobCount() > 0;
    case Action::kGoOn:
      return !DumpOfCurrentJob().empty();
    case Action::kKeepApart:
      return SelectedAreApart().has_value();
    case Action::kDeleteGroup:
      return application_.Manager().GroupCount() > 1;
    case Action::kUndo:
      return !undo_.Empty();
    case Action::kForce:
      return ForceOfSelected().any;
    default:
      return true;
  }
}

std::string Flx_AppWnd::DumpOfCurrentJob() const {
  std::string name;
  const auto group = Group();
  if (!group) return name;
  group->ReadJob(CurrentJob(), [&](const JobFile& job) {
    if (HasEnded(job.status)) name = ShownName(job.RestartDump());
  });
  return name;
}

// Of a box that some of the selected jobs have checked the menu cannot show a third state.
std::string Flx_AppWnd::MenuText(Action action) const {
  if (action == Action::kForce && ForceOfSelected().differs)
    return texts_.Format("ui_menu_various", texts_.Get("lab_iforce"));
  const std::string dump = action == Action::kGoOn ? DumpOfCurrentJob() : std::string();
  return dump.empty() ? texts_.Get(InfoOf(action).menuKey)
                      : texts_.Format("ui_menu_go_on_from", dump);
}

void Flx_AppWnd::PopUp(const std::vector<Action>& actions, int x, int y) {
  std::vector<PopupEntry> entries;
  std::vector<Action> meanings;
  for (const Action action : actions) {
    if (action == kSeparator) {
      if (!entries.empty()) entries.back().endsPart = true;
      continue;
    }
    PopupEntry entry = {MenuText(action), CanPerform(action)};
    entry.shortcut = InfoOf(action).shortcut;
    if (action == Action::kForce) {
      const ForceState force = ForceOfSelected();
      entry.isSwitch = true;
      entry.on = force.on && !force.differs;
    }
    if (action == Action::kKeepApart) {
      entry.isSwitch = true;
      entry.on = SelectedAreApart().value_or(false);
    }
    entries.push_back(std::move(entry));
    meanings.push_back(action);
  }
  const int picked = PickFromMenu(entries, x, y);
  if (picked >= 0) Perform(meanings[static_cast<std::size_t>(picked)]);
}

void Flx_AppWnd::OpenJobMenu(int x, int y) {
  if (CurrentJob() != JobId::kNone) {
    // What has a tool, and what is not of the job, is left out: it fits into a low screen.
    PopUp({Action::kMonitor,      Action::kViewMessage,  Action::kViewSummary,
           Action::kRunPost,      Action::kStages,       Action::kShowCommand,
           Action::kJobHistory,   Action::kReport,       kSeparator,
           Action::kSubmit,       Action::kResubmit,     Action::kRerunFailed,
           Action::kGoOn,         Action::kStop,         kSeparator,
           Action::kForce,        Action::kKeepApart,    Action::kMoveToTop,
           Action::kMoveToBottom, Action::kSelectFailed, kSeparator,
           Action::kCopyPaths,    Action::kOpenFolder,   kSeparator,
           Action::kUndo,         Action::kDeleteJob,    Action::kDeleteAll},
          x, y);
  } else {
    PopUp({Action::kAddDyna, Action::kAddRestart, Action::kAddVorel, Action::kAddInc,
           Action::kAddFolder, kSeparator, Action::kSubmit, Action::kStop, kSeparator,
           Action::kSelectFailed, Action::kRerunFailed, Action::kUndo, Action::kDeleteAll,
           kSeparator, Action::kRefresh, Action::kHistory, Action::kReadLog, Action::kOpenRunFolder,
           Action::kQueueOptions},
          x, y);
  }
}

void Flx_AppWnd::OpenGroupMenu(int x, int y) {
  PopUp({Action::kRenameGroup, Action::kAddGroup, Action::kDeleteGroup, kSeparator, Action::kSubmit,
         Action::kStop, kSeparator, Action::kFind, Action::kSelectAll, Action::kSelectFailed,
         Action::kRerunFailed, kSeparator, Action::kReport, Action::kHistory, Action::kQueueOptions,
         Action::kColumns, Action::kUndo},
        x, y);
}

void Flx_AppWnd::CellPressed(int row, int column) {
  if (column == JobTable::kMessage) return Perform(Action::kViewMessage);
  if (column == JobTable::kStatus) return Perform(Action::kGoOn);
  if (column == JobTable::kStages) return Perform(Action::kStages);
  if (column == JobTable::kSummary) return Perform(Action::kViewSummary);
  if (column != JobTable::kForce) return;
  const JobId pressed = Table()->JobAt(row);
  bool on = false;
  Group()->ReadJob(pressed, [&](const JobFile& job) {
    on = ValueOf(job, JobField::kForce) == FieldValue(true);
  });
  SayEdited(undo_.SetField(Group(), {pressed}, JobField::kForce, !on));
}
