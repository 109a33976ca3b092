#include "ui/window/Actions.h"

#include <FL/Fl.H>

namespace {

// In the order of Action.
const ActionInfo kActions[] = {
    {Action::kAddDyna, "add_dyna", "tip_adddyn", "ui_menu_add", FL_CTRL | 'o',
     SolverKind::kLsDynaSingle},
    {Action::kAddRestart, "add_restart", "tip_addrestart", "ui_menu_restart", 0,
     SolverKind::kLsDynaSingle},
    {Action::kAddVorel, "add_vorel", "tip_addvorel", "ui_menu_add_vorel", 0, SolverKind::kVorel},
    {Action::kAddInc, "add_inc", "tip_addinc", "ui_menu_add_inc", 0, SolverKind::kInc},
    {Action::kAddFolder, "add_folder", "tip_folder", "ui_menu_folder", FL_CTRL | FL_SHIFT | 'o',
     SolverKind::kLsDynaSingle},
    {Action::kSubmit, "submit", "tip_submit", "ui_menu_submit", FL_CTRL | FL_Enter},
    {Action::kResubmit, "resubmit", "tip_resubmit", "ui_menu_resubmit", FL_CTRL | 'r'},
    {Action::kDeleteJob, "delete_job", "tip_delete_job", "ui_menu_delete", FL_Delete},
    {Action::kDeleteAll, "delete_all", "tip_delete_all", "ui_menu_delete_all",
     FL_SHIFT | FL_Delete},
    {Action::kMoveUp, "move_up", "tip_move_up", "ui_menu_up", FL_CTRL | FL_Up},
    {Action::kMoveDown, "move_down", "tip_move_down", "ui_menu_down", FL_CTRL | FL_Down},
    {Action::kAddGroup, "add_group", "tip_add_group", "ui_menu_add_group", FL_CTRL | 't'},
    {Action::kRenameGroup, "rename_group", "tip_rename_group", "ui_menu_rename_group", FL_F + 2},
    {Action::kDeleteGroup, "del_group", "tip_del_group", "ui_menu_del_group", 0},
    {Action::kViewSummary, "view_info", "ui_menu_info", "ui_menu_info", FL_CTRL | 'i'},
    {Action::kRunPost, "run_post", "tip_run_post", "ui_menu_post", 0},
    {Action::kReadLog, "read_log", "tip_readlog", "ui_menu_log", FL_CTRL | 'l'},
    {Action::kConfig, "config", "tip_config", nullptr, 0},
    {Action::kHelp, "help", "tip_help", nullptr, FL_F + 1},
    {Action::kAbout, "about", "tip_about", nullptr, 0},
    {Action::kViewMessage, nullptr, nullptr, "ui_menu_message", FL_CTRL | 'm'},
    {Action::kStages, nullptr, nullptr, "ui_menu_stages", FL_CTRL | 'e'},
    {Action::kGoOn, nullptr, nullptr, "ui_menu_go_on", FL_CTRL | 'g'},
    {Action::kKeepApart, nullptr, nullptr, "ui_menu_apart", 0},
    {Action::kStop, nullptr, nullptr, "ui_menu_stop", FL_CTRL | '.'},
    {Action::kRefresh, nullptr, nullptr, "ui_menu_refresh", FL_F + 5},
    {Action::kFind, nullptr, nullptr, "ui_menu_find", FL_CTRL | 'f'},
    {Action::kSelectAll, nullptr, nullptr, "ui_menu_select_all", FL_CTRL | 'a'},
    {Action::kSelectFailed, nullptr, nullptr, "ui_menu_select_failed", FL_CTRL | FL_SHIFT | 'a'},
    {Action::kColumns, nullptr, nullptr, "ui_menu_columns", FL_CTRL | FL_SHIFT | 'k'},
    {Action::kRerunFailed, nullptr, nullptr, "ui_menu_rerun_failed", FL_CTRL | FL_SHIFT | 'r'},
    {Action::kUndo, nullptr, nullptr, "ui_menu_undo", FL_CTRL | 'z'},
    {Action::kMoveToTop, nullptr, nullptr, "ui_menu_top", FL_CTRL | FL_SHIFT | FL_Up},
    {Action::kMoveToBottom, nullptr, nullptr, "ui_menu_bottom", FL_CTRL | FL_SHIFT | FL_Down},
    {Action::kForce, nullptr, nullptr, "lab_iforce", FL_CTRL | FL_SHIFT | 'i'},
    {Action::kOpenFolder, nullptr, nullptr, "ui_menu_open_folder", FL_CTRL | 'd'},
    {Action::kCopyPaths, nullptr, nullptr, "ui_menu_copy_paths", FL_CTRL | 'c'},
    {Action::kShowCommand, nullptr, nullptr, "ui_menu_command", FL_CTRL | 'k'},
    {Action::kHistory, nullptr, nullptr, "ui_menu_history", FL_CTRL | 'h'},
    {Action::kJobHistory, nullptr, nullptr, "ui_menu_job_history", FL_CTRL | FL_SHIFT | 'h'},
    {Action::kMonitor, nullptr, nullptr, "ui_menu_monitor", FL_F + 6},
    {Action::kOpenRunFolder, nullptr, nullptr, "ui_menu_run_folder", FL_SHIFT | (FL_F + 6)},
    {Action::kMppSettings, nullptr, nullptr, nullptr, 0},
    {Action::kReport, nullptr, nullptr, "ui_menu_report", FL_CTRL | 'p'},
    {Action::kQueueOptions, nullptr, "ui_tip_options", "ui_menu_options", FL_CTRL | ','},
    {Action::kNextGroup, nullptr, nullptr, nullptr, FL_CTRL | FL_Tab},
    {Action::kPreviousGroup, nullptr, nullptr, nullptr, FL_CTRL | FL_SHIFT | FL_Tab},
    {Action::kExit, nullptr, nullptr, nullptr, FL_CTRL | 'q'},
};

struct SecondKey {
  int shortcut;
  Action action;
};

const SecondKey kSecondKeys[] = {
    {FL_CTRL | FL_KP_Enter, Action::kSubmit},
    {FL_CTRL | FL_SHIFT | FL_Delete, Action::kDeleteAll},
    {FL_ALT | FL_Up, Action::kMoveUp},
    {FL_ALT | FL_Down, Action::kMoveDown},
    {FL_CTRL | FL_Page_Down, Action::kNextGroup},
    {FL_CTRL | FL_Page_Up, Action::kPreviousGroup},
};

// Exactly these modifiers: the toolkit's own test lets Shift pass with letters.
bool IsPressed(int shortcut) {
  constexpr int kModifiers = FL_CTRL | FL_ALT | FL_SHIFT | FL_META;
  return shortcut != 0 && Fl::event_key() == (shortcut & FL_KEY_MASK) &&
         (Fl::event_state() & kModifiers) == (shortcut & kModifiers);
}

}  // namespace

const ActionInfo& InfoOf(Action action) {
  return kActions[static_cast<int>(action)];
}

bool ActionOfKey(Action& action) {
  for (const ActionInfo& info : kActions) {
    if (IsPressed(info.shortcut)) return action = info.action, true;
  }
  for (const SecondKey& key : kSecondKeys) {
    if (IsPressed(key.shortcut)) return action = key.action, true;
  }
  return false;
}
