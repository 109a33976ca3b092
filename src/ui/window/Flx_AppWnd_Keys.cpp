// Keys, menus, cells and drops of the main window.

#include <FL/Fl.H>
#include <FL/Fl_Menu_Item.H>

#include <algorithm>
#include <list>

#include "jobs/JobField.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"
#include "ui/window/Flx_AppWnd.h"
#include "ui/window/Layout.h"
#include "util/files/FileDirWrapper.h"

namespace {

constexpr Action kSeparator = Action::kExit;

// Higher up where the menu would go on below the screen, which the toolkit lets it do when it has
// no room above its place either. Coordinates of the window.
int PlaceOfMenu(const std::vector<Fl_Menu_Item>& items, int y) {
  constexpr int kLineGap = 4;  // as the toolkit has it
  constexpr int kFrame = 12;
  int line = 0;
  int lines = 0;
  for (; items[static_cast<std::size_t>(lines)].text != nullptr; ++lines) {
    int height = 0;
    items[static_cast<std::size_t>(lines)].measure(&height, nullptr);
    line = std::max(line, height + kLineGap);
  }
  int left = 0, top = 0, width = 0, height = 0;
  Fl::screen_work_area(left, top, width, height, Fl::event_x_root(), Fl::event_y_root());
  const int toRoot = Fl::event_y_root() - Fl::event_y();
  const int lowest = top + height - (lines * line + kFrame) - toRoot;
  return std::min(y, std::max(lowest, top - toRoot));
}

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
    if (HasEnded(job.status)) FileDirWrapper::FileNameOf(job.RestartDump(), name, true);
  });
  return ToUi(name);
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
  std::vector<Fl_Menu_Item> items;
  std::vector<Action> meanings;
  std::list<std::string> words;
  for (const Action action : actions) {
    if (action == kSeparator) {
      if (!items.empty()) items.back().flags |= FL_MENU_DIVIDER;
      continue;
    }
    const ActionInfo& info = InfoOf(action);
    Fl_Menu_Item item = {};
    item.text = words.emplace_back(MenuText(action)).c_str();
    item.shortcut_ = info.shortcut;
    item.flags = CanPerform(action) ? 0 : FL_MENU_INACTIVE;
    if (action == Action::kForce) {
      const ForceState force = ForceOfSelected();
      item.flags |= FL_MENU_TOGGLE | (force.on && !force.differs ? FL_MENU_VALUE : 0);
    }
    if (action == Action::kKeepApart)
      item.flags |= FL_MENU_TOGGLE | (SelectedAreApart().value_or(false) ? FL_MENU_VALUE : 0);
    item.labeltype_ = Theme::kMenuLabel;
    item.labelsize_ = Layout::kFontSize;
    items.push_back(item);
    meanings.push_back(action);
  }
  items.push_back(Fl_Menu_Item{});
  const int place = PlaceOfMenu(items, y);
  // Beside the pointer, where it would lie over an entry.
  constexpr int kAside = 8;
  const Fl_Menu_Item* const picked = items.front().popup(place < y ? x + kAside : x, place);
  if (picked && picked->text) Perform(meanings[static_cast<std::size_t>(picked - items.data())]);
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
