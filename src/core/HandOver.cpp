#include "core/HandOver.h"

#include <algorithm>

#include "core/SettingsAndPaths.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/FileLock.h"
#include "util/process/PTWrapper.h"
#include "util/text/DateTimeWrapper.h"

// The right to touch the file, until the end of the scope.
class HandOverGuard {
 public:
  enum class Event { kTaken, kNotGivenBack, kKept };

  HandOverGuard(SettingsAndPaths& files, const std::string& path) : files_(files), path_(path) {}
  ~HandOverGuard();
  HandOverGuard(const HandOverGuard&) = delete;
  HandOverGuard& operator=(const HandOverGuard&) = delete;

  // Each waits up to so many milliseconds. The event comes first: it is what most wait for.
  Event TakeEvent(long milliseconds);
  Event Found() const { return found_; }  // kKept when it was not asked for
  // Without an event there must be the lock; with it, a file system without locks will do.
  bool TakeLock(long milliseconds);
  // Gives the event back in the place of a holder that did not.
  void GiveEventBack() { givesBack_ = true; }

 private:
  SettingsAndPaths& files_;
  const std::string path_;
  FileLock lock_;
  Event found_ = Event::kKept;
  bool givesBack_ = false;
};

namespace {

using hand_over_file::Result;

constexpr long kWriterEventMs = 3000;
constexpr long kWriterLockMs = 10000;
constexpr long kTakeBackLockMs = 1000;
constexpr long kReaderWaitMs = 20;
constexpr int kMostMissed = 4;          // about ten seconds of polls
constexpr int kPollsWithoutEvent = 20;  // about a minute
constexpr std::size_t kMegabyte = 1024 * 1024;
constexpr std::size_t kLargestFile = 8 * kMegabyte;

Message EventIsKept(const SettingsAndPaths& files) {
  return Message(MessageId::kHandOverEventKept, files.handOverEvent.LastError());
}

constexpr char kTakenMark[] = ".taken";

const auto NameOf = &FileDirWrapper::NameOf;

// A file too big to be read would stand in the way of all that come after it.
bool PutBigFileAside(SettingsAndPaths& files, const std::string& path) {
  std::string folder;
  FileDirWrapper::DirOf(path, folder);
  const std::string file = FileDirWrapper::Join(folder, NameOf(files.handOverFile));
  const std::string aside = file + ".big";
  if (!hand_over_file::PutAsideWhenBigger(path, kLargestFile, aside)) return false;
  files.Log().Report(Message(MessageId::kHandOverTooBig, file, kLargestFile / kMegabyte, aside));
  return true;
}

// What the file is called while its jobs are not safe yet. No other one is ever called so.
std::string TakenName(const std::string& path) {
  static int count = 0;
  return path + kTakenMark + '-' + std::to_string(DateTimeWrapper::CurrentTime()) + '-' +
         std::to_string(PTWrapperProcess().ProcessId()) + '-' + std::to_string(++count);
}

// The oldest first.
std::vector<std::string> LeftFiles(const std::string& path) {
  std::string folder;
  std::vector<std::string> files, folders, left;
  FileDirWrapper::DirOf(path, folder);
  FileDirWrapper::ListDir(folder, files, folders, false);
  const std::string beginning = NameOf(path) + kTakenMark;
  for (const std::string& file : files) {
    if (NameOf(file).starts_with(beginning)) left.push_back(file);
  }
  std::sort(left.begin(), left.end());
  return left;
}

}  // namespace

HandOverGuard::~HandOverGuard() {
  lock_.Release();
  if (found_ == Event::kTaken || givesBack_) files_.handOverEvent.SetEventSignal();
}

HandOverGuard::Event HandOverGuard::TakeEvent(long milliseconds) {
  constexpr int kSignalled = 0;
  constexpr int kTimedOut = 1;
  const int result = files_.handOverEvent.WaitForEventSignal(milliseconds);
  found_ = result == kSignalled  ? Event::kTaken
           : result == kTimedOut ? Event::kNotGivenBack
                                 : Event::kKept;
  return found_;
}

bool HandOverGuard::TakeLock(long milliseconds) {
  const FileLock::Result result = lock_.Take(path_ + ".lock", milliseconds);
  return result == FileLock::Result::kTaken ||
         (result == FileLock::Result::kFailed && found_ == Event::kTaken);
}

HandOverWriter::HandOverWriter(SettingsAndPaths& files)
    : HandOverWriter(files, files.handOverFile) {}

bool HandOverWriter::Write(int argc, const char* const* argv) {
  if (argc <= 1) return true;
  std::vector<Message> remarks;
  const std::string text = MakeHandOverText({argv + 1, argv + argc}, remarks);
  for (const Message& remark : remarks) Fault(remark);
  // What a reader would leave out.
  for (const Message& remark : ReadHandOverText(text, files_.Get()).remarks) Fault(remark);
  if (!Append(text)) Fault(Message(MessageId::kHandOverNotWritten, path_));
  return faults_.empty();
}

bool HandOverWriter::Append(const std::string& text) {
  HandOverGuard guard(files_, path_);
  if (!Enter(guard, kWriterLockMs)) {
    Fault(Message(MessageId::kHandOverBusy, path_));
    return false;
  }
  PutBigFileAside(files_, path_);
  const Result result = hand_over_file::Append(path_, text, RecordsOf(text), kLargestFile, record_);
  if (result == Result::kRefused) Fault(Message(MessageId::kHandOverRefused, path_));
  if (result == Result::kTooBig) {
    Fault(Message(MessageId::kHandOverFull, path_, kLargestFile / kMegabyte));
  }
  return result == Result::kDone;
}

bool HandOverWriter::Enter(HandOverGuard& guard, long lockMs) {
  const HandOverGuard::Event event = guard.TakeEvent(kWriterEventMs);
  if (event == HandOverGuard::Event::kKept) files_.Log().Report(EventIsKept(files_));
  if (!guard.TakeLock(lockMs)) return false;
  if (event != HandOverGuard::Event::kNotGivenBack) return true;
  files_.Log().Report(Message(MessageId::kHandOverEventLost));
  guard.GiveEventBack();
  return true;
}

void HandOverWriter::Fault(const Message& fault) {
  faults_.push_back(fault);
  files_.Log().Report(fault);
}

bool HandOverWriter::Waits() const {
  return record_.IsIn(path_);
}

bool HandOverWriter::StopWaiting() {
  if (!Waits()) return true;
  const bool back = TakeBack();
  if (!back && !Waits()) return true;
  Fault(back ? Message(MessageId::kHandOverNotTaken) : Message(MessageId::kHandOverMaybeTaken));
  return false;
}

bool HandOverWriter::TakeBack() {
  if (!Waits()) return false;
  HandOverGuard guard(files_, path_);
  if (!Enter(guard, kTakeBackLockMs) || !record_.TakeBack(path_)) return false;
  record_ = {};  // it may lie there for long, and nothing waits
  return true;
}

HandOverReader::HandOverReader(SettingsAndPaths& files, Queue queue)
    : files_(files), queue_(std::move(queue)) {
  for (const HandOverPlace& place : files_.handOverPlaces) {
    places_.push_back({.path = SettingsAndPaths::HandOverFileIn(place)});
    for (const std::string& file : LeftFiles(places_.back().path)) {
      if (queue_.has(NameOf(file))) {
        applied_.push_back(file);
      } else {
        taken_.push_back(file);
      }
    }
  }
}

void HandOverReader::Poll() {
  RemoveApplied();
  for (Place& place : places_) {
    if (taken_.empty()) TakeAway(place);
  }
  while (!taken_.empty() && ReadTaken()) taken_.pop_front();
  RemoveApplied();  // where nothing is kept
}

void HandOverReader::TakeAway(Place& place) {
  HandOverGuard guard(files_, place.path);
  if (!MayGoOn(place, guard) || PutBigFileAside(files_, place.path)) return;
  const std::string taken = TakenName(place.path);
  const Result result = hand_over_file::TakeAway(place.path, kLargestFile, taken);
  if (result == Result::kDone) taken_.push_back(taken);
  if (result == Result::kMissing) place.reported = {};
  if (result == Result::kRefused || result == Result::kFailed)
    ReportOnce(place.reported, Message(MessageId::kHandOverRefused, place.path));
}

// The event is given time to come back: whoever holds it may be at the file without our lock.
bool HandOverReader::MayGoOn(Place& place, HandOverGuard& guard) {
  LookAtEvent(place, guard);
  const HandOverGuard::Event event = guard.Found();
  const bool isMissing = event == HandOverGuard::Event::kNotGivenBack;
  if ((isMissing && place.missed + 1 < kMostMissed) || !guard.TakeLock(kReaderWaitMs)) {
    if (++place.missed == kMostMissed)
      ReportOnce(place.reported, Message(MessageId::kHandOverBusy, place.path));
    return false;
  }
  if (isMissing) {
    guard.GiveEventBack();
    ReportEvent(Message(MessageId::kHandOverEventLost));
  }
  if (event == HandOverGuard::Event::kTaken) reportedEvent_ = {};
  // Who does not give it back now is not waited for with the next poll.
  place.missed = isMissing ? kMostMissed - 1 : 0;
  return true;
}

// One that is kept from us may cost half a second, which the window must not stand still often.
void HandOverReader::LookAtEvent(Place& place, HandOverGuard& guard) {
  if (place.pollsWithoutEvent > 0) {
    --place.pollsWithoutEvent;
    return;
  }
  if (guard.TakeEvent(kReaderWaitMs) != HandOverGuard::Event::kKept) return;
  place.pollsWithoutEvent = kPollsWithoutEvent;
  ReportEvent(EventIsKept(files_));
}

// False when the next poll is to try again.
bool HandOverReader::ReadTaken() {
  const std::string& file = taken_.front();
  std::string text;
  const Result result = hand_over_file::Read(file, kLargestFile, text);
  if (result == Result::kMissing || (result == Result::kTooBig && PutBigFileAside(files_, file)))
    return true;
  if (result != Result::kDone) {
    ReportOnce(reportedTaken_, Message(MessageId::kHandOverRefused, file));
    return result == Result::kRefused;
  }
  HandOverOrder order = ReadHandOverText(text, files_.Get());
  for (const Message& remark : order.remarks) files_.Log().Report(remark);
  applied_.push_back(file);
  std::vector<std::string> names;
  for (const std::string& one : applied_) names.push_back(NameOf(one));
  queue_.apply(std::move(order), names);
  return true;
}

void HandOverReader::RemoveApplied() {
  if (applied_.empty() || !queue_.isSafe()) return;
  std::erase_if(applied_, [this](const std::string& file) { return Remove(file); });
}

// One that somebody looks at may stay for that long although its removal succeeds.
bool HandOverReader::Remove(const std::string& path) {
  const bool isRemoved = FileDirWrapper::RemoveFile(path);
  const bool isThere = hand_over_file::Exists(path);
  if (isThere && !isRemoved)
    ReportOnce(reportedTaken_, Message(MessageId::kHandOverNotRemoved, path));
  return !isThere;
}

void HandOverReader::ReportOnce(Message& reported, const Message& message) {
  if (reported == message) return;
  reported = message;
  files_.Log().Report(message);
}

void HandOverReader::ReportEvent(const Message& message) {
  ReportOnce(reportedEvent_, message);
}
