// The closed library that positions the tools of forming stages.
#ifndef KR_RUNS_POSITIONINGLIBRARY_H
#define KR_RUNS_POSITIONINGLIBRARY_H

#include <mutex>
#include <string>

#include "jobs/JobFile.h"
#include "util/process/SharedLibrary.h"
#include "util/signals/Mutex.h"

// Its functions. Paths are zero-terminated texts.
struct PositioningFunctions {
  void (*positionBegin)() = nullptr;
  int (*getDataFromDyn)(const char* mainDeck) = nullptr;
  int (*isAutoPositionMutiStage)() = nullptr;  // 1: the deck asks for it
  int (*writeDynaFileOpen)() = nullptr;        // 0: failed
  void (*setMainDynaFile)(const char* mainDeck) = nullptr;
  void (*writeDynaFilePosition)(const char* stageDeck) = nullptr;
  void (*writeDynaFileClose)() = nullptr;
  void (*positionEnd)() = nullptr;
};

// One a program. Looked for when the first job wants it; without it, or with one that lacks a
// function, jobs run as if none asked for positioning, which the log says once. Any thread.
class PositioningLibrary {
 public:
  // `folder` is the program's own, absolute.
  explicit PositioningLibrary(const std::string& folder);

 private:
  friend class PositioningSession;
  // Null without the library.
  const PositioningFunctions* Functions(const JobFile& job);
  bool Load(Message& error) KR_REQUIRES(mutex_);

  const std::string path_;
  Mutex mutex_;
  bool tried_ KR_GUARDED_BY(mutex_) = false;
  bool loaded_ KR_GUARDED_BY(mutex_) = false;
  SharedLibrary library_ KR_GUARDED_BY(mutex_);
  PositioningFunctions functions_ KR_GUARDED_BY(mutex_);  // fixed once loaded
  // A turn, which guards nothing of ours: the library has one session for all. A session object
  // holds it for as long as it lasts.
  std::mutex session_;
};

// What the library does for one job. Used on the job's thread; ends with the object whatever
// happened in between. Needs `job.run`.
class PositioningSession {
 public:
  PositioningSession(PositioningLibrary& library, const JobFile& job)
      : library_(library), job_(job) {}
  ~PositioningSession() { End(); }
  PositioningSession(const PositioningSession&) = delete;
  PositioningSession& operator=(const PositioningSession&) = delete;

  // Asks whether the job's deck wants its stages positioned; never for a restart. A session that is
  // wanted lasts until this object goes, and other jobs wait for it, which their abort ends; one
  // that is not is over at once. False when the library cannot open its output; it is not
  // called again for this job then.
  bool Begin();
  bool Wanted() const { return wanted_; }
  // Writes the positions into a stage's deck. Does nothing unless wanted.
  void Position(const JobFile& stage);

 private:
  void End();
  void Leave();

  PositioningLibrary& library_;
  const JobFile& job_;
  const PositioningFunctions* functions_ = nullptr;  // while the session lasts
  std::unique_lock<std::mutex> turn_;
  bool wanted_ = false;
  bool opened_ = false;
};

#endif
