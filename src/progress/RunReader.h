// Reads one run for a window that shows it, on a thread of its own.
#ifndef KR_PROGRESS_RUNREADER_H
#define KR_PROGRESS_RUNREADER_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "jobs/Settings.h"
#include "messages/Message.h"
#include "progress/RunCurves.h"
#include "progress/RunFiles.h"
#include "progress/RunProgress.h"

// What is to be read.
struct RunToRead {
  std::string path = {};  // as FindRunFiles takes it; empty: nothing
  std::string folder = {};
  std::string deck = {};   // where it is known
  std::int64_t since = 0;  // what was written before (seconds since 1970) is of another run
  std::int64_t until = 0;  // what was written after it too; 0: nobody has
  bool mayGrow = true;     // somebody may still write
  bool isRunning = false;  // somebody writes
  OutputNames names = {};  // of its files
  int caseShown = 0;       // by its number; 0, or one that is not there: the newest
  bool operator==(const RunToRead&) const = default;
};

// A request to the solver that has not been taken yet.
struct LyingRequest {
  std::string text;        // as it stands in its file
  std::int64_t since = 0;  // seconds since 1970
  bool operator==(const LyingRequest&) const = default;
};

// What was read.
struct RunPicture {
  bool isWhole = false;    // read to the end at least once
  bool isRunning = false;  // or nobody knows, and its file has been written lately
  RunFiles files;          // kNone: no output of a run was found
  RunNews news;            // of the whole run
  RunNews shown;           // of the case that is shown; its files, curves and lines are these too
  std::vector<int> cases;  // of the deck that were found, by their numbers; none: just one
  std::int64_t now = 0;    // when it was taken, in the seconds of progress/SolverClock.h
  std::vector<Message> health;
  std::shared_ptr<const RunCurves> curves;  // another object when something is new; never null
  std::vector<std::string> tail;            // the last lines, as they stand in the file
  std::uint64_t bytes = 0;                  // of the run's files
  std::optional<LyingRequest> request;
};

// What a run has written, read once on the calling thread; null for one without files. `progress`
// as RunProgress::Look has it.
std::shared_ptr<const RunCurves> ReadCurves(const RunToRead& run,
                                            const RunProgress::Progress& progress);

// Files are looked at once a second, those that nobody writes any more once. A file system that
// does not answer blocks the reader's thread alone: the destructor does not wait for it. Interface
// thread, or one at a time.
class RunReader {
 public:
  static constexpr std::size_t kMostTailLines = 200;

  // Asked on the reader's thread at each look at a run that goes on.
  using RequestHook = std::function<std::optional<LyingRequest>(const RunToRead& run)>;

  explicit RunReader(const Settings& healthLimits, RequestHook request = {});
  ~RunReader();
  RunReader(const RunReader&) = delete;
  RunReader& operator=(const RunReader&) = delete;

  // Another run begins anew; what else changes of the same one is taken over by the next look.
  void Read(const RunToRead& run);

  // Other limits from the next look on.
  void SetLimits(const Settings& healthLimits);

  // Null before the first look has ended.
  std::shared_ptr<const RunPicture> Picture() const;

  // How far the first look is; 100 when it has ended.
  int Percent() const;
  // Ends it: what was read until then stays, nothing more is read until Continue.
  void Cancel();
  bool IsCancelled() const;
  void Continue();

  // Does this on the reader's thread, before the next look: what the interface must not wait for.
  // Also when the reader goes away meanwhile.
  void Do(std::function<void()> work);

 private:
  struct Shared;
  std::shared_ptr<Shared> shared_;
};

#endif
