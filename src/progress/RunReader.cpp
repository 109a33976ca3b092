#include "progress/RunReader.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "progress/Health.h"
#include "progress/RunCases.h"
#include "progress/SolverClock.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/InputFile.h"
#include "util/files/IOWrapper.h"
#include "util/files/WrittenFiles.h"
#include "util/process/OwnThread.h"
#include "util/signals/Mutex.h"
#include "util/text/DateTimeWrapper.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kEvery{1};
constexpr int kLooksBetweenSearches = 5;     // for files, and for what is on the disk
constexpr std::int64_t kClockSlack = 5;      // seconds between this clock and that of the files
constexpr std::int64_t kEndSlack = 2;        // of the same, where the next run may follow at once
constexpr std::int64_t kLastWrites = 120;    // seconds that a run writes after its last line
constexpr std::int64_t kStillWritten = 600;  // seconds since its last line that a run may be silent
constexpr std::size_t kTailBytes = 64 * 1024;
constexpr std::size_t kLongestTailLine = 400;

double SteadySeconds() {
  return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
}

// Seconds of progress/SolverClock.h since those of 1970.
std::int64_t LocalShift() {
  return LocalClockNow() - DateTimeWrapper::CurrentTime();
}

std::vector<std::string> LastLines(const std::string& path) {
  InputFile file;
  if (path.empty() || !file.Open(path)) return {};
  const std::uint64_t from = file.Size() > kTailBytes ? file.Size() - kTailBytes : 0;
  std::string bytes(static_cast<std::size_t>(file.Size() - from), '\0');
  const std::ptrdiff_t got = file.ReadAt(from, bytes.data(), bytes.size());
  bytes.resize(static_cast<std::size_t>(std::max<std::ptrdiff_t>(got, 0)));
  std::vector<std::string> lines;
  for (std::size_t end = bytes.size(); end > 0 && lines.size() < RunReader::kMostTailLines;) {
    const std::size_t before = bytes.rfind('\n', end - 1);
    const bool isWhole = before != std::string::npos;
    const std::size_t begin = isWhole ? before + 1 : 0;
    std::string line = bytes.substr(begin, end - begin);
    while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) line.pop_back();
    if (line.size() > kLongestTailLine) line.resize(kLongestTailLine);
    const bool isFirst = lines.empty() && end == bytes.size();
    if (!(isFirst && line.empty()) && (isWhole || from == 0)) lines.push_back(std::move(line));
    if (!isWhole) break;
    end = before;
  }
  std::reverse(lines.begin(), lines.end());
  return lines;
}

bool IsSameRun(const RunToRead& one, const RunToRead& other) {
  return one.folder == other.folder && one.since == other.since && one.deck == other.deck &&
         one.path.empty() == other.path.empty();
}

}  // namespace

struct RunReader::Shared {
  Shared(const Settings& healthLimits, RequestHook hook)
      : lookForRequest(std::move(hook)), limits(healthLimits) {}

  const RequestHook lookForRequest;
  std::atomic<bool> ended{false};
  std::atomic<bool> cancelled{false};
  std::atomic<bool> anew{false};  // another run is wanted
  std::atomic<int> percent{0};
  Mutex mutex;
  std::condition_variable changed;
  RunToRead wanted KR_GUARDED_BY(mutex);
  Settings limits KR_GUARDED_BY(mutex);
  std::vector<std::function<void()>> works KR_GUARDED_BY(mutex);
  bool woken KR_GUARDED_BY(mutex) = false;
  std::shared_ptr<const RunPicture> picture KR_GUARDED_BY(mutex);

  void Wake() KR_REQUIRES(mutex) {
    woken = true;
    changed.notify_all();
  }
  void Work();
  void WorkOn();
  void Fail(const std::exception& error);
  void Show(RunPicture next, const RunToRead& run);
};

namespace {

// One run while it is read.
class Reading {
 public:
  Reading(const RunToRead& run, const Settings& limits)
      : run_(run), limits_(limits), health_(limits) {}

  void Take(const RunToRead& run, const Settings& limits) {
    if (run_ != run) looks_ = 0;  // at its end there may be files that no search has found yet
    if (run_.caseShown != run.caseShown) ShowAnew();
    run_ = run;
    limits_ = limits;
    health_.SetLimits(limits);
  }
  const RunToRead& Run() const { return run_; }

  // False when the hook ended it.
  bool Look(const RunProgress::Progress& hook) {
    if (looks_++ % kLooksBetweenSearches == 0 || Files().output.empty()) FindFiles();
    cases_.FollowKeptFile();
    news_ = cases_.Look(hook) || news_;
    return !cases_.Stopped() && LookAtChosen(hook);
  }

  RunPicture Picture() {
    if (!run_.mayGrow && !isClosed_ && cases_.HasRead()) {
      cases_.TakeOpenLines();
      isClosed_ = news_ = true;
    }
    RunPicture picture;
    picture.files = Shown().Files();
    picture.now = LocalClockNow();
    picture.isRunning = run_.isRunning || IsBeingWritten();
    health_.Look(cases_.Newest().States(), Message(), news_, SteadySeconds());
    const bool sampled = LookAtDisk();
    picture.news = cases_.News(picture.isRunning ? std::optional(picture.now) : std::nullopt);
    if (picture.news.ended != RunEnd::kRunning && !run_.isRunning) picture.isRunning = false;
    for (const HealthFinding& finding : health_.Findings()) {
      // Who does not run is silent.
      if (picture.isRunning || finding.check != HealthCheck::kSilence)
        picture.health.push_back(finding.message);
    }
    if (!curves_ || news_ || sampled) MakeCurvesAnew();
    if (news_ || tail_.empty()) tail_ = LastLines(picture.files.output);
    picture.shown = picture.news;
    if (chosen_) {
      picture.shown = chosen_->News();
      picture.shown.caseNumber = static_cast<int>(chosenPlace_) + 1;
      picture.shown.cases = picture.news.cases;
    }
    if (cases_.All().size() > 1) {
      for (std::size_t i = 0; i < cases_.All().size(); ++i) picture.cases.push_back(NumberAt(i));
    }
    news_ = false;
    picture.curves = curves_;
    picture.tail = tail_;
    picture.bytes = bytes_;
    return picture;
  }

  // Big decks are read whole: after there is something to see.
  bool AskDeck() {
    const bool isCase = CaseNumberOf(Files().output) > 0 || cases_.All().size() > 1;
    if (!cases_.WantsDeck() || (!isCase && cases_.News().endTime)) return false;
    const std::string& told = Message().DeckName();
    cases_.SetDeck(EndTimeOfDeck(run_.folder, run_.deck.empty() ? told : run_.deck));
    return true;
  }

 private:
  // Also what came later: stages and runs in one folder write over each other's files.
  bool IsOld(const std::string& file) const {
    // While it runs nothing of it is kept yet.
    if (run_.isRunning && file.ends_with(".krb")) return true;
    std::int64_t created, accessed, modified, size;
    if (!IOWrapperTxt::FileStatInfo(file, created, accessed, modified, size)) return false;
    return modified < run_.since - kClockSlack ||
           (run_.until > 0 && modified > run_.until + kEndSlack);
  }

  // Of a folder of which nobody says whether something runs there.
  bool IsBeingWritten() const {
    std::int64_t created, accessed, modified, size;
    return run_.mayGrow &&
           IOWrapperTxt::FileStatInfo(Files().output, created, accessed, modified, size) &&
           std::abs(DateTimeWrapper::CurrentTime() - modified) < kStillWritten;
  }

  const RunFiles& Files() const { return cases_.Newest().Files(); }
  const MessageProgress& Message() const { return cases_.Newest().Message(); }

  // A deck with cases writes one message file after another; the newest is shown.
  void FindFiles() {
    if (run_.path.empty()) return;
    const auto isOld = [this](const std::string& file) { return IsOld(file); };
    std::vector<RunFiles> found = FindCaseFiles(run_.path, CasesBy::kName, isOld, run_.names);
    // What the deck itself calls its cases has no number in it.
    const bool hasNames = run_.names.hasCases && CaseNumberOf(found.back().output) == 0;
    if (hasNames) {
      found = FindCaseFiles(run_.path, CasesBy::kAll, isOld, run_.names);
      std::stable_sort(found.begin(), found.end(), [](const RunFiles& one, const RunFiles& other) {
        return FileDirWrapper::WriteTime(one.output) < FileDirWrapper::WriteTime(other.output);
      });
    }
    std::string& newest = found.back().output;
    if (!newest.empty() && (!FileDirWrapper::FileExists(newest) || IsOld(newest))) newest.clear();
    // The message file of a job whose run has ended may be that of any case.
    const bool hasAll = !FileDirWrapper::IsFolder(run_.path) && !newest.empty();
    if (hasAll && CaseNumberOf(newest) > 0) {
      std::stable_sort(found.begin(), found.end(), [](const RunFiles& one, const RunFiles& other) {
        return CaseNumberOf(one.output) < CaseNumberOf(other.output);
      });
    }
    const RunCases::Began began = cases_.TakeFiles(found);
    if (began == RunCases::Began::kNothing) return;
    if (began == RunCases::Began::kCase) health_.BeginCase();
    if (began == RunCases::Began::kRun) health_ = Health(limits_);
    disk_ = {};
    isClosed_ = false;
    ShowAnew();
  }

  void ShowAnew() {
    chosen_.reset();
    curves_.reset();
    tail_.clear();
    news_ = true;
  }

  const RunProgress& Shown() const { return chosen_ ? *chosen_ : cases_.Newest(); }

  // Where a name tells no number all are counted.
  int NumberAt(std::size_t place) const {
    const std::vector<RunProgress>& all = cases_.All();
    const bool isCounted = std::any_of(all.begin(), all.end(), [](const RunProgress& one) {
      return CaseNumberOf(one.Files().output) == 0;
    });
    return isCounted ? static_cast<int>(place) + 1 : CaseNumberOf(all[place].Files().output);
  }

  // Of cases before the newest only the end is kept: one that is asked for is read again. False
  // when the hook ended it.
  bool LookAtChosen(const RunProgress::Progress& hook) {
    const std::vector<RunProgress>& all = cases_.All();
    for (std::size_t i = 0; !chosen_ && run_.caseShown > 0 && i + 1 < all.size(); ++i) {
      if (NumberAt(i) != run_.caseShown) continue;
      chosen_.emplace(all[i].Files());
      chosenPlace_ = i;
    }
    if (!chosen_) return true;
    chosen_->SetDeckEndTime(cases_.EndTimeOf(chosenPlace_));
    chosen_->FollowKeptFile();
    news_ = chosen_->Look(hook) || news_;
    return !chosen_->Stopped();
  }

  // True when something came to the curve.
  bool LookAtDisk() {
    const bool isKeyword = Files().kind == RunFiles::Kind::kKeyword;
    if (!isKeyword || !cases_.HasRead() || (looks_ - 1) % kLooksBetweenSearches != 0) return false;
    const std::vector<ProgressPoint>& points = Message().Points();
    if (points.empty()) return false;
    const std::int64_t shift = LocalShift();
    const std::int64_t start = points.front().clock;
    std::vector<DiskUse::File> files;
    bytes_ = 0;
    for (const WrittenFile& file : FilesWrittenSince(run_.folder, start - shift - kClockSlack)) {
      if (file.size == 0) continue;
      bytes_ += file.size;
      files.push_back({std::max(file.written + shift, start), file.size});
    }
    if (disk_.Empty()) {
      // The files of a run that was copied have other times than the run: nothing is known then.
      const std::int64_t end = run_.isRunning ? LocalClockNow() : points.back().clock + kLastWrites;
      disk_.BeginWith(std::move(files), start, end);
      return !disk_.Empty();
    }
    if (!run_.isRunning) return false;
    disk_.Sample(LocalClockNow(), bytes_);
    return true;
  }

  void MakeCurvesAnew() {
    RunCurves curves = MakeCurves(Shown().States(), Shown().Message());
    const std::vector<ProgressPoint>& points = Message().Points();
    // What is on the disk is of the run, seen from its newest case.
    if (!points.empty() && !chosen_) disk_.PutInto(curves, points.front().clock);
    curves_ = std::make_shared<const RunCurves>(std::move(curves));
  }

  RunToRead run_;
  Settings limits_;
  RunCases cases_;
  std::optional<RunProgress> chosen_;  // a case before the newest that is shown
  std::size_t chosenPlace_ = 0;
  Health health_;
  DiskUse disk_;
  std::shared_ptr<const RunCurves> curves_;
  std::vector<std::string> tail_;
  std::uint64_t bytes_ = 0;
  int looks_ = 0;
  bool news_ = true;
  bool isClosed_ = false;  // nobody writes any more: the last lines were taken
};

}  // namespace

std::shared_ptr<const RunCurves> ReadCurves(const RunToRead& run,
                                            const RunProgress::Progress& progress) {
  Reading reading(run, Settings());
  if (!reading.Look(progress)) return nullptr;
  const RunPicture picture = reading.Picture();
  return picture.files.kind == RunFiles::Kind::kNone ? nullptr : picture.curves;
}

void RunReader::Shared::Work() {
  std::unique_ptr<Reading> reading;
  while (true) {
    RunToRead run;
    Settings healthLimits;
    std::vector<std::function<void()>> todo;
    {
      const MutexLock lock(mutex);
      run = wanted;
      healthLimits = limits;
      todo.swap(works);
      anew = false;
    }
    for (const std::function<void()>& work : todo) work();
    if (ended) return;
    if (!reading || !IsSameRun(reading->Run(), run)) {
      reading = std::make_unique<Reading>(run, healthLimits);
      percent = 0;
    }
    reading->Take(run, healthLimits);
    const auto hook = [this](std::uint64_t done, std::uint64_t size) {
      if (size > 0 && percent < 100) {
        percent = std::min(
            99, static_cast<int>(100.0 * static_cast<double>(done) / static_cast<double>(size)));
      }
      return !ended && !cancelled && !anew;
    };
    const bool whole = !cancelled && reading->Look(hook);
    if (whole || cancelled) {
      RunPicture next = reading->Picture();
      next.isWhole = whole;
      if (run.isRunning && lookForRequest) next.request = lookForRequest(run);
      percent = 100;
      Show(std::move(next), run);
      if (whole && reading->AskDeck()) continue;
    }
    MutexLock lock(mutex);
    const auto next = Clock::now() + kEvery;
    const bool isDone = whole && !run.mayGrow;
    while (!woken && (isDone || Clock::now() < next)) {
      isDone ? lock.Wait(changed) : static_cast<void>(lock.WaitUntil(changed, next));
    }
    woken = false;
  }
}

// What is thrown ends the reading until something else is wanted.
void RunReader::Shared::WorkOn() {
  while (!ended) {
    Guard([this] { Work(); },
          [this](const std::exception& error) {
            Fail(error);
            MutexLock lock(mutex);
            while (!woken) lock.Wait(changed);
            woken = false;
          });
  }
}

void RunReader::Shared::Fail(const std::exception& error) {
  RunPicture last;
  last.isWhole = true;
  last.curves = std::make_shared<const RunCurves>();
  last.health = {Message(MessageId::kReadingFailed, error.what())};
  percent = 100;
  const MutexLock lock(mutex);
  if (picture) last = *picture, last.health = {Message(MessageId::kReadingFailed, error.what())};
  picture = std::make_shared<const RunPicture>(std::move(last));
}

// Not when another run is wanted meanwhile.
void RunReader::Shared::Show(RunPicture next, const RunToRead& run) {
  const MutexLock lock(mutex);
  if (IsSameRun(wanted, run)) picture = std::make_shared<const RunPicture>(std::move(next));
}

RunReader::RunReader(const Settings& healthLimits, RequestHook request)
    : shared_(std::make_shared<Shared>(healthLimits, std::move(request))) {
  const auto failed = [shared = shared_](const std::exception& error) { shared->Fail(error); };
  if (!StartGuarded([shared = shared_] { shared->WorkOn(); }, failed))
    shared_->Fail(
        std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again)));
}

RunReader::~RunReader() {
  shared_->ended = true;
  const MutexLock lock(shared_->mutex);
  shared_->Wake();
}

void RunReader::Read(const RunToRead& run) {
  const MutexLock lock(shared_->mutex);
  if (run == shared_->wanted) return;
  if (!IsSameRun(run, shared_->wanted)) {
    shared_->anew = true;
    shared_->cancelled = false;
    shared_->percent = 0;
    shared_->picture.reset();
  }
  shared_->wanted = run;
  shared_->Wake();
}

void RunReader::SetLimits(const Settings& healthLimits) {
  const MutexLock lock(shared_->mutex);
  shared_->limits = healthLimits;
}

std::shared_ptr<const RunPicture> RunReader::Picture() const {
  const MutexLock lock(shared_->mutex);
  return shared_->picture;
}

int RunReader::Percent() const {
  return shared_->percent;
}

void RunReader::Cancel() {
  shared_->cancelled = true;
}

bool RunReader::IsCancelled() const {
  return shared_->cancelled;
}

void RunReader::Continue() {
  shared_->cancelled = false;
  shared_->percent = 0;
  const MutexLock lock(shared_->mutex);
  shared_->Wake();
}

void RunReader::Do(std::function<void()> work) {
  const MutexLock lock(shared_->mutex);
  shared_->works.push_back(std::move(work));
  shared_->Wake();
}
