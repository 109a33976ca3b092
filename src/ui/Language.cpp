#include "ui/Language.h"

namespace {

struct KeyText {
  const char* key;
  const char* text;
};

// The main window's labels (lab_), tooltips (tip_) and messages (msg_).
const KeyText kEnglish[] = {
    {"lab_solver", "Solver:"},
    {"lab_ctrlpara", "LS-DYNA Control Parameter:"},
    {"lab_memory", "Memory"},
    {"lab_cpu", "No. of CPUs (ncpu=)"},
    {"lab_pause", "Pause between Jobs"},
    {"lab_second", "Sec"},
    {"lab_auto", "Auto"},
    {"lab_submit", "Submit Jobs"},
    {"lab_command", "Command"},
    {"lab_not_mpp", "Not use MPP"},
    {"lab_group", "Group"},
    {"lab_job_name", "Job Name"},
    {"lab_in_folder", "In Folder"},
    {"lab_size", "Size"},
    {"lab_solv", "Solver"},
    {"lab_status", "Status"},
    {"lab_messag", "Message"},
    {"lab_result", "Summary"},
    {"lab_mstage", "MStages"},
    {"lab_iforce", "I Force"},
    {"lab_other_para", "Other Param"},
    {"lab_clear_result", "Clear Result"},
    {"lab_yes", "Yes..."},
    {"lab_no", "No"},
    {"lab_view", "View..."},
    {"lab_cmd_mstage",
     "Current job is a multi-stage job, Please view details in the Multiple Stages dialog."},
    {"lab_addk_in_folder", "Add all LS-DYNA jobs in the folder"},
    {"tip_readlog", "Error Log"},
    {"tip_config", "Configuration"},
    {"tip_help", "Help"},
    {"tip_about", "About"},
    {"tip_submit", "Submit job to solver"},
    {"tip_folder", "Add all LS-DYNA jobs in folder"},
    {"tip_resubmit", "Resubmit job"},
    {"tip_adddyn", "Add LS-DYNA job"},
    {"tip_addrestart", "Add LS-DYNA restart job"},
    {"tip_addvorel", "Add Vorel job"},
    {"tip_addinc", "Add INC job"},
    {"tip_delete_job", "Delete current job"},
    {"tip_delete_all", "Delete all jobs"},
    {"tip_move_up", "Move up current job"},
    {"tip_move_down", "Move down current job"},
    {"tip_run_post", "Run PostProcessor"},
    {"tip_add_group", "Add a group"},
    {"tip_del_group", "Delete current group"},
    {"tip_rename_group", "Rename current group"},
    {"msg_ask_del_group", "Really delete this group?"},
    {"msg_ask_del", "Really delete this job?"},
    {"msg_ask_delall", "Really delete all jobs?"},
    {"msg_not_mstages", "This job is not a multi-stage job."},
    {"msg_view_job", "Only Running, Finished or Aborted job can be viewed."},
    {"msg_view_info", "Only Finished or Aborted job can be viewed."},
    {"msg_view_mstage", "Please view details in Multiple Stages dialog."},
    {"msg_no_cur_job", "No selected job."},
    {"msg_not_exist", "Not exist."},
    {"msg_run_post", "Only Finished job can be open."},
    {"msg_not_run_post", "Can't run this kind of job."},
    {"msg_not_found_msg", "Does not find message file."},
    {"msg_curpath_empty", "Current path is empty, so this function can't be used."},
    {"msg_ask_exit", "A job is running, exit?"},
    {"msg_name_exist", "Name has existed"},
    {"msg_open_scp", "Please view the result of SCP by orla/Stampora."},
    {"msg_resubmit", "Only Finished or Aborted job can be resubmitted."},
};

// Menus, hints and the status line.
const KeyText kEnglishMore[] = {
    {"ui_other_yes", "Yes"},
    {"ui_menu_add", "Add LS-DYNA Jobs..."},
    {"ui_menu_add_vorel", "Add Vorel Jobs..."},
    {"ui_menu_add_inc", "Add INC Jobs..."},
    {"ui_menu_folder", "Add All in Folder..."},
    {"ui_menu_submit", "Submit Jobs"},
    {"ui_menu_resubmit", "Resubmit"},
    {"ui_menu_stop", "Stop Running Jobs"},
    {"ui_menu_message", "View Message File"},
    {"ui_menu_info", "View Summary"},
    {"ui_menu_stages", "Multiple Stages..."},
    {"ui_menu_up", "Move Up"},
    {"ui_menu_down", "Move Down"},
    {"ui_menu_delete", "Delete Job"},
    {"ui_menu_delete_all", "Delete All Jobs"},
    {"ui_menu_add_group", "Add Group"},
    {"ui_menu_rename_group", "Rename Group..."},
    {"ui_menu_del_group", "Delete Group"},
    {"ui_menu_refresh", "Refresh"},
    {"ui_menu_log", "Error Log"},
    {"ui_yes", "Yes"},
    {"ui_no", "No"},
    {"ui_ok", "OK"},
    {"ui_cancel", "Cancel"},
    {"ui_keyword_filter", "Dyna File (*.dyn;*.k)|*.dyn;*.k|All Files (*.*)|*|"},
    {"ui_all_files", "All Files (*.*)|*|"},
    {"ui_empty_title", "No jobs in this group"},
    {"ui_empty_hint", "Drop keyword files or folders here, or press Ctrl+O to add jobs."},
    {"ui_empty_hint_drop", "Drop job files here to add jobs."},
    {"ui_count_jobs", "%s jobs"},
    {"ui_count_job", "1 job"},
    {"ui_count_none", "No jobs"},
    {"ui_count_queued", "%s queued"},
    {"ui_count_waiting", "%s waiting"},
    {"ui_count_running", "%s running"},
    {"ui_count_finished", "%s finished"},
    {"ui_count_aborted", "%s aborted"},
    {"ui_reading", "Reading %s of %s: %s"},
    {"ui_submitted", "Submitted: queued jobs of \"%s\" run one after another."},
    {"ui_submit_none", "No queued job in \"%s\"."},
    {"ui_submit_again", "\"%s\" is running already; its queued jobs follow by themselves."},
    {"ui_submit_failed", "\"%s\" could not be submitted."},
    {"ui_resubmitted", "Queued again."},
    {"ui_not_moved", "The job cannot move further in this direction."},
    {"ui_running_fixed", "A running job cannot be changed."},
    {"ui_not_stopped", "The running job has not stopped within 30 seconds. Please try again."},
    {"ui_nothing_runs", "No job is running in this group."},
    {"ui_stopping_title", "Stopping..."},
    {"ui_stopping_text", "Waiting for the solver to end."},
    {"ui_stopped", "Stopped."},
    {"ui_missing_files", "These files do not exist:"},
    {"ui_disabled_files", "The solver of these files is not enabled in this run of the program:"},
    {"ui_more_files", "... and %s more."},
    {"ui_no_keyword_files", "The folder holds no keyword files (*.dyn, *.k)."},
    {"ui_bad_name", "This name cannot be used for a group."},
    {"ui_bad_memory", "Memory is a whole number of megabytes, 0 to 2147483647."},
    {"ui_bad_cpu", "The number of CPUs is a whole number, 1 to 100000."},
    {"ui_bad_pause", "The pause is a whole number of seconds, 0 to 86400."},
    {"ui_bad_solver", "There is no such solver file."},
    {"ui_bad_folder", "A solver is a file, not a folder."},
    {"ui_mpp_on", "MPP"},
    {"ui_mpp_other", "other launcher"},
    {"ui_tip_mpp_off", "LS-DYNA jobs run with shared memory (SMP)."},
    {"ui_tip_mpp_on", "LS-DYNA jobs run through MPI with the MPP solvers."},
    {"ui_tip_solver", "Program that runs %s jobs"},
    {"ui_tip_solver_kind_job", "Solver of the selected job"},
    {"ui_tip_solver_kind", "Solver whose program is shown"},
    {"ui_tip_browse", "Choose the program"},
    {"ui_tip_memory_job", "Memory of the selected job, in MB"},
    {"ui_tip_memory", "Memory of new jobs, in MB"},
    {"ui_tip_auto", "Take the memory from the deck when it asks for it"},
    {"ui_tip_cpu_job", "CPUs of the selected job"},
    {"ui_tip_cpu", "CPUs of new jobs"},
    {"ui_tip_pause_job", "Seconds to wait before the selected job starts"},
    {"ui_tip_pause", "Seconds to wait before each new job starts"},
    {"ui_tip_command", "Extra options for the solver of the selected job"},
    {"ui_tip_command_none", "Select a job to give it extra options."},
    {"ui_tip_later", "%s (not available yet)"},
    {"ui_tip_disabled", "%s (not enabled in this run of the program)"},
    {"ui_tip_iforce", "Force output: passes s= to the solver"},
    {"ui_code", "Reason: %s"},
    {"ui_text_reload", "Reload"},
    {"ui_text_close", "Close"},
    {"ui_text_cut", "Only the last %s MB of the file are shown."},
    {"ui_text_gone", "The file cannot be read any more."},
    {"ui_text_size", "%s bytes"},
};

}  // namespace

const std::string& TextTable::Get(const std::string& key) const {
  static const std::string none;
  const auto found = texts_.find(key);
  return found == texts_.end() ? none : found->second;
}

std::string TextTable::Fill(const std::string& pattern, std::initializer_list<std::string> values) {
  std::string out;
  auto value = values.begin();
  for (std::size_t at = 0; at < pattern.size(); ++at) {
    if (pattern.compare(at, 2, "%s") != 0) {
      out += pattern[at];
      continue;
    }
    if (value != values.end()) out += *value++;
    ++at;
  }
  return out;
}

void FillTexts(int language, const std::string& title, TextTable& texts) {
  if (language != 0 && language != 1) return;
  texts.Set(title, title);
  for (const KeyText& entry : kEnglish) texts.Set(entry.key, entry.text);
  for (const KeyText& entry : kEnglishMore) texts.Set(entry.key, entry.text);
}
