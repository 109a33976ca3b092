// Everything that the main window can do, for its tools, menus and keys.
#ifndef KR_UI_WINDOW_ACTIONS_H
#define KR_UI_WINDOW_ACTIONS_H

#include <optional>

#include "jobs/JobFile.h"

// The tools first, in their order in the tool row.
enum class Action {
  kAddDyna,
  kAddRestart,
  kAddVorel,
  kAddInc,
  kAddFolder,
  kSubmit,
  kResubmit,
  kDeleteJob,
  kDeleteAll,
  kMoveUp,
  kMoveDown,
  kAddGroup,
  kRenameGroup,
  kDeleteGroup,
  kViewSummary,
  kRunPost,
  kReadLog,
  kConfig,
  kHelp,
  kAbout,
  kViewMessage,
  kStages,
  kGoOn,
  kKeepApart,
  kStop,
  kRefresh,
  kFind,
  kSelectAll,
  kSelectFailed,
  kColumns,
  kRerunFailed,
  kUndo,
  kMoveToTop,
  kMoveToBottom,
  kForce,
  kOpenFolder,
  kCopyPaths,
  kShowCommand,
  kHistory,
  kJobHistory,
  kMonitor,
  kOpenRunFolder,
  kMppSettings,
  kReport,
  kQueueOptions,
  kNextGroup,
  kPreviousGroup,
  kExit
};

struct ActionInfo {
  Action action;
  const char* icon;                       // null: no tool
  const char* tipKey;                     // of the tool's tooltip
  const char* menuKey;                    // null: in no menu
  int shortcut;                           // FLTK's key with modifiers; 0: none
  std::optional<SolverKind> solver = {};  // the kind whose jobs it adds; not while that is disabled
};

const ActionInfo& InfoOf(Action action);

// The action of the key that is being handled, its second key too. False when no action has it.
bool ActionOfKey(Action& action);

#endif
