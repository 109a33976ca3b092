// What is said of a run that goes on or has ended. Interface thread.
#ifndef KR_UI_DIALOGS_RUNWORDS_H
#define KR_UI_DIALOGS_RUNWORDS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "jobs/JobFile.h"
#include "progress/RunWatcher.h"
#include "ui/dialogs/StatusCell.h"
#include "ui/text/TextTable.h"

// How the last run of a job stands, where that is known; see RunWatch::StateOf.
using RunStateOf = std::function<std::optional<RunState>(JobId job)>;

// All texts here are UTF-8.

// The status of a job or of a stage. `state`: of the job whose run it is; only that of a run that
// goes on counts.
StatusShown ShownStatus(const JobFile& job, const std::optional<RunState>& state,
                        const TextTable& texts);

// What follows the word of an ended run, " · stopped by you"; empty where nothing is known.
std::string HowWords(JobStatus status, const Failure& failure, const TextTable& texts);

// Lines that tell more; empty for a job that has not run.
std::string RunTip(const JobFile& job, const std::optional<RunState>& state,
                   const TextTable& texts);

// "Case 2 of 3"; empty for a deck without cases.
std::string CaseWords(const RunNews& news, const TextTable& texts);

// The moment so many seconds from now.
std::string EndWords(double secondsLeft, const TextTable& texts);

#endif
