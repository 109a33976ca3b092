#include "core/HandOver.h"

#include <chrono>

#include "core/Application.h"
#include "core/HandOverFile.h"
#include "core/HandOverFormat.h"
#include "util/files/FileDirWrapper.h"
#include "util/text/DateTimeWrapper.h"

namespace {

using Clock = std::chrono::steady_clock;
using hand_over_file::Result;

constexpr std::chrono::seconds kWriterPatience{10};
constexpr unsigned kWriterLooksMs = 100;
constexpr long kEventWaitMs = 20;
constexpr int kTakeOverPolls = 4;  // about ten seconds of polls
constexpr std::size_t kLargestFile = 32 * 1024 * 1024;
constexpr char kNoEvent[] = "EVENT handle is null";

enum Wait : int { kTaken = 0, kTimedOut = 1 };

bool HasEvent(SettingsAndPaths& settings) {
  if (settings.handOverEvent.IsEventSignalCreated()) return true;
  settings.handOverEvent.WaitForEventSignal(0);  // records the error
  return false;
}

// Takes the event when the file is free to be written: no other process is at it, and nobody has
// still to read it. False after the writer's patience, with the event taken if it could be had.
bool TakeFreeFile(SettingsAndPaths& settings, bool readerRuns) {
  const Clock::time_point limit = Clock::now() + kWriterPatience;
  while (Clock::now() < limit) {
    if (settings.handOverEvent.WaitForEventSignal(kEventWaitMs) == kTaken) {
      if (!readerRuns || !hand_over_file::Exists(settings.handOverFile)) return true;
      settings.handOverEvent.SetEventSignal();
    }
    DateTimeWrapper::SleepMSec(kWriterLooksMs);
  }
  settings.handOverEvent.WaitForEventSignal(kEventWaitMs);
  return false;
}

// A file too big to be read would stand in the way of all that come after it.
void PutBigFileAside(SettingsAndPaths& settings) {
  const std::string& path = settings.handOverFile;
  const std::string aside = path + ".big";
  if (!hand_over_file::PutAsideWhenBigger(path, kLargestFile, aside)) return;
  settings.Log().ReportLine("Hand-over file [" + path + "] is too big; put aside as [" + aside +
                            "]");
}

// True when something changed.
bool TakeSettings(SettingsAndPaths& settings, const Settings& wanted) {
  bool changed = settings.Set(&Settings::use_mpp, wanted.use_mpp);
  changed |= settings.Set(&Settings::mpi_param, wanted.mpi_param);
  changed |= settings.Set(&Settings::mpp_param, wanted.mpp_param);
  changed |= settings.Set(&Settings::group, wanted.group);
  changed |= settings.Set(&Settings::memory2, wanted.memory2);
  changed |= settings.Set(&Settings::cpu_count, wanted.cpu_count);
  changed |= settings.Set(&Settings::force, wanted.force);
  changed |= settings.Set(&Settings::output_dump, wanted.output_dump);
  const std::string& inc = wanted.SolverPath(SolverKind::kInc);
  changed |= settings.Get().SolverPath(SolverKind::kInc) != inc;
  settings.SetSolverPath(SolverKind::kInc, inc);
  return changed;
}

}  // namespace

bool WriteHandOver(SettingsAndPaths& settings, int argc, const char* const* argv, bool readerRuns) {
  if (argc <= 1) return true;
  std::vector<std::string> remarks;
  const std::string text = MakeHandOverText({argv + 1, argv + argc}, remarks);
  for (const std::string& remark : remarks) settings.Log().ReportLine(remark);

  if (!HasEvent(settings)) {
    settings.Log().ReportLine(kNoEvent);
    return false;
  }
  if (!TakeFreeFile(settings, readerRuns)) {
    settings.Log().ReportLine("Hand-over file was not free in time; going on");
  }
  PutBigFileAside(settings);
  // What is there has not been read: it must not be lost.
  const Result result = hand_over_file::Write(settings.handOverFile, text, true);
  settings.handOverEvent.SetEventSignal();
  if (result == Result::kDone) return true;
  settings.Log().Report(Message(MessageId::kHandOverNotWritten, settings.handOverFile));
  return false;
}

bool HandOverReader::Poll() {
  SettingsAndPaths& settings = application_.SettingsAndFiles();
  if (!HasEvent(settings)) {
    ReportOnce(kNoEvent);
    return false;
  }
  if (!TakeEvent()) return true;
  PutBigFileAside(settings);
  hand_over_file::Contents contents;
  const Result result = hand_over_file::Read(settings.handOverFile, kLargestFile, contents);
  const bool isNew = result == Result::kDone && contents.identity != handled_;
  if (result == Result::kDone && !isNew) RemoveFile();
  settings.handOverEvent.SetEventSignal();

  if (result == Result::kMissing) reported_.clear();
  if (result == Result::kRefused || result == Result::kFailed) {
    ReportOnce("Hand-over file [" + settings.handOverFile + "] refused");
  }
  if (isNew) Apply(contents);
  return true;
}

// A holder that died never gives the event back.
bool HandOverReader::TakeEvent() {
  SettingsAndPaths& settings = application_.SettingsAndFiles();
  if (settings.handOverEvent.WaitForEventSignal(kEventWaitMs) == kTaken) {
    missedTicks_ = 0;
    return true;
  }
  if (++missedTicks_ < kTakeOverPolls) return false;
  missedTicks_ = 0;
  settings.Log().ReportLine("Hand-over event was not given back; taken over");
  return true;
}

void HandOverReader::ReportOnce(const std::string& message) {
  if (reported_ == message) return;
  reported_ = message;
  application_.SettingsAndFiles().Log().ReportLine(message);
}

void HandOverReader::Apply(const hand_over_file::Contents& contents) {
  SettingsAndPaths& settings = application_.SettingsAndFiles();
  HandOverOrder order = ReadHandOverText(contents.text, settings.Get());
  for (const std::string& remark : order.remarks) settings.Log().ReportLine(remark);

  const bool changed = TakeSettings(settings, order.settings);
  if (order.solverMode) application_.SetSolverMode(*order.solverMode);
  const std::shared_ptr<JobGroup> group = application_.Manager().CurrentGroup();
  if (order.groupText && group) group->SetText(*order.groupText);
  if (settings.Dirty()) settings.WriteSettings();
  if (changed || order.groupText || order.solverMode) {
    application_.Manager().Observer().SettingsChanged();
  }

  for (JobRequest& job : order.jobs) application_.Intake().Add(std::move(job));
  handled_ = contents.identity;
  RemoveHandled();
}

// Only the file that was read: a newer one is for the next poll.
void HandOverReader::RemoveHandled() {
  SettingsAndPaths& settings = application_.SettingsAndFiles();
  if (settings.handOverEvent.WaitForEventSignal(kEventWaitMs) != kTaken) return;
  hand_over_file::Contents now;
  const Result result = hand_over_file::Read(settings.handOverFile, kLargestFile, now);
  if (result == Result::kDone && now.identity == handled_) RemoveFile();
  settings.handOverEvent.SetEventSignal();
}

// One that cannot be removed now is known by its identity, so that its jobs are not added again. A
// removed one is forgotten: the next file may be made in its place, as big and at the same moment.
void HandOverReader::RemoveFile() {
  const std::string& path = application_.SettingsAndFiles().handOverFile;
  if (FileDirWrapper::RemoveFile(path)) {
    handled_.clear();
  } else {
    ReportOnce("Remove tmp file [" + path + "] failed");
  }
}
