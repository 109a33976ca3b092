// A home of its own for each test: configuration, documents and temporary files lie in a scratch
// folder, no display is known, and what the core tells is written down.
#ifndef KR_TESTS_CORE_COREFIXTURE_H
#define KR_TESTS_CORE_COREFIXTURE_H

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "core/HandOver.h"
#include "core/JobList.h"
#include "core/QueueObserver.h"
#include "core/SettingsAndPaths.h"
#include "support/ScopedVariable.h"
#include "support/TempFolder.h"
#include "support/WaitUntil.h"
#ifdef _WIN32
#include "ScratchAppData_win32.h"
#endif

// A job as it stands, without the list's lock; null when the list does not have it.
inline JobFile* JobIn(const JobList& list, JobId job) {
  JobFile* found = nullptr;
  list.ReadJob(job, [&](const JobFile& one) { found = const_cast<JobFile*>(&one); });
  return found;
}

// Writes down what the core tells. Any thread.
class RecordingObserver : public QueueObserver {
 public:
  static std::string Text(JobId id) { return std::to_string(static_cast<std::uint64_t>(id)); }

  void JobStatusChanged(int groupId, const JobFile& job) override {
    Note("status " + std::to_string(groupId) + " " + Text(job.id) + " " +
         std::to_string(static_cast<int>(job.status)));
  }
  void StageStatusChanged(int groupId, const JobFile& job, const JobFile& stage) override {
    Note("stage " + std::to_string(groupId) + " " + Text(job.id) + " " + Text(stage.id) + " " +
         std::to_string(static_cast<int>(stage.status)));
  }
  void JobsChanged(int groupId, const ListChange&) override {
    Note("jobs " + std::to_string(groupId));
  }
  void GroupRunChanged(int groupId) override { Note("run " + std::to_string(groupId)); }
  void SettingsChanged() override { Note("settings"); }
  void IntakeProgress(int done, int total, const std::string&, int) override {
    Note("intake " + std::to_string(done) + "/" + std::to_string(total));
  }
  void Logged(const Message& message) override { Note("log " + message.English()); }

  std::vector<std::string> Notes() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return notes_;
  }
  int Count(const std::string& note) const {
    const std::vector<std::string> notes = Notes();
    return static_cast<int>(std::count(notes.begin(), notes.end(), note));
  }

 private:
  void Note(std::string note) {
    const std::lock_guard<std::mutex> lock(mutex_);
    notes_.push_back(std::move(note));
  }

  mutable std::mutex mutex_;
  std::vector<std::string> notes_;
};

// Keeps the job files of what was handed over.
inline HandOverReader::Queue JobsInto(std::vector<std::string>& jobs) {
  const auto apply = [&jobs](const HandOverOrder& order, const std::vector<std::string>&) {
    for (const JobRequest& job : order.jobs) jobs.push_back(job.jobFile);
  };
  return {apply, [](const std::string&) { return false; }, [] { return true; }};
}

class CoreTest : public testing::Test {
 protected:
  static constexpr char kTitle[] = "Kestrun 2016 R1";

  std::string Deck(const std::string& name, const std::string& commands = {}) const {
    return home_.Write(name, "*KEYWORD\n" + commands + "*CONTROL_TERMINATION\n       1.0\n*END\n");
  }

  static std::vector<std::string> Words(const std::vector<Message>& messages) {
    std::vector<std::string> words;
    for (const Message& message : messages) words.push_back(message.English());
    return words;
  }

  static bool LogHolds(SettingsAndPaths& settings, const std::string& text) {
    return TempFolder::Read(settings.Log().Path()).find(text) != std::string::npos;
  }

  TempFolder home_;

 private:
  ScopedVariable homeVariable_{"HOME", home_.Path()};
  ScopedVariable config_{"XDG_CONFIG_HOME", home_ / "config"};
  ScopedVariable runtime_{"XDG_RUNTIME_DIR", std::nullopt};
  ScopedVariable temp_{"TMPDIR", home_.Path()};
  ScopedVariable handOver_{"KESTRUN_HANDOVER_FOLDER", home_ / "handover"};
#ifdef _WIN32
  ScratchAppData appData_{home_ / "config"};
#endif
  ScopedVariable display_{"DISPLAY", std::nullopt};
};

#endif
