#include "core/HandOver.h"

#include "core/SettingsAndPaths.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/FileLock.h"

// The right to touch the file, until the end of the scope.
class HandOverGuard {
 public:
  enum class Event { kTaken, kNotGivenBack, kKept };

  explicit HandOverGuard(SettingsAndPaths& files) : files_(files) {}
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

// A file too big to be read would stand in the way of all that come after it.
bool PutBigFileAside(SettingsAndPaths& files, const std::string& path) {
  const std::string aside = files.handOverFile + ".big";
  if (!hand_over_file::PutAsideWhenBigger(path, kLargestFile, aside)) return false;
  files.Log().Report(
      Message(MessageId::kHandOverTooBig, files.handOverFile, kLargestFile / kMegabyte, aside));
  return true;
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
  const FileLock::Result result = lock_.Take(files_.handOverFile + ".lock", milliseconds);
  return result == FileLock::Result::kTaken ||
         (result == FileLock::Result::kFailed && found_ == Event::kTaken);
}

bool HandOverWriter::Write(int argc, const char* const* argv) {
  if (argc <= 1) return true;
  std::vector<Message> remarks;
  const std::string text = MakeHandOverText({argv + 1, argv + argc}, remarks);
  for (const Message& remark : remarks) Fault(remark);
  // What a reader would leave out.
  for (const Message& remark : ReadHandOverText(text, files_.Get()).remarks) Fault(remark);
  if (!Append(text)) Fault(Message(MessageId::kHandOverNotWritten, files_.handOverFile));
  return faults_.empty();
}

bool HandOverWriter::Append(const std::string& text) {
  HandOverGuard guard(files_);
  if (!Enter(guard, kWriterLockMs)) {
    Fault(Message(MessageId::kHandOverBusy, files_.handOverFile));
    return false;
  }
  PutBigFileAside(files_, files_.handOverFile);
  const Result result =
      hand_over_file::Append(files_.handOverFile, text, RecordsOf(text), kLargestFile, record_);
  if (result == Result::kRefused) Fault(Message(MessageId::kHandOverRefused, files_.handOverFile));
  if (result == Result::kTooBig) {
    Fault(Message(MessageId::kHandOverFull, files_.handOverFile, kLargestFile / kMegabyte));
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
  return record_.IsIn(files_.handOverFile);
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
  HandOverGuard guard(files_);
  return Enter(guard, kTakeBackLockMs) && record_.TakeBack(files_.handOverFile);
}

HandOverReader::HandOverReader(SettingsAndPaths& files, Apply apply)
    : files_(files), apply_(std::move(apply)), taken_(files.handOverFile + ".taken") {}

void HandOverReader::Poll() {
  if (isQueued_ && !RemoveTaken()) return;
  if (hand_over_file::Exists(taken_) || TakeAway()) ReadTaken();
}

bool HandOverReader::TakeAway() {
  HandOverGuard guard(files_);
  if (!MayGoOn(guard) || PutBigFileAside(files_, files_.handOverFile)) return false;
  const Result result = hand_over_file::TakeAway(files_.handOverFile, kLargestFile, taken_);
  if (result == Result::kMissing) reported_ = {};
  if (result == Result::kRefused || result == Result::kFailed)
    ReportOnce(Message(MessageId::kHandOverRefused, files_.handOverFile));
  return result == Result::kDone;
}

// The event is given time to come back: whoever holds it may be at the file without our lock.
bool HandOverReader::MayGoOn(HandOverGuard& guard) {
  LookAtEvent(guard);
  const HandOverGuard::Event event = guard.Found();
  const bool isMissing = event == HandOverGuard::Event::kNotGivenBack;
  if ((isMissing && missed_ + 1 < kMostMissed) || !guard.TakeLock(kReaderWaitMs)) {
    if (++missed_ == kMostMissed)
      ReportOnce(Message(MessageId::kHandOverBusy, files_.handOverFile));
    return false;
  }
  if (isMissing) {
    guard.GiveEventBack();
    ReportEvent(Message(MessageId::kHandOverEventLost));
  }
  if (event == HandOverGuard::Event::kTaken) reportedEvent_ = {};
  // Who does not give it back now is not waited for with the next poll.
  missed_ = isMissing ? kMostMissed - 1 : 0;
  return true;
}

// One that is kept from us may cost half a second, which the window must not stand still often.
void HandOverReader::LookAtEvent(HandOverGuard& guard) {
  if (pollsWithoutEvent_ > 0) {
    --pollsWithoutEvent_;
    return;
  }
  if (guard.TakeEvent(kReaderWaitMs) != HandOverGuard::Event::kKept) return;
  pollsWithoutEvent_ = kPollsWithoutEvent;
  ReportEvent(EventIsKept(files_));
}

void HandOverReader::ReadTaken() {
  std::string text;
  const Result result = hand_over_file::Read(taken_, kLargestFile, text);
  if (result == Result::kTooBig && PutBigFileAside(files_, taken_)) return;
  if (result != Result::kDone) {
    ReportOnce(Message(MessageId::kHandOverRefused, taken_));
    return;
  }
  HandOverOrder order = ReadHandOverText(text, files_.Get());
  for (const Message& remark : order.remarks) files_.Log().Report(remark);
  apply_(std::move(order));
  isQueued_ = true;
  RemoveTaken();
}

// As long as the file is there, no other is taken away. One that somebody looks at may stay for
// that long although its removal succeeds.
bool HandOverReader::RemoveTaken() {
  const bool isRemoved = FileDirWrapper::RemoveFile(taken_);
  isQueued_ = hand_over_file::Exists(taken_);
  if (isQueued_ && !isRemoved) ReportOnce(Message(MessageId::kHandOverNotRemoved, taken_));
  return !isQueued_;
}

void HandOverReader::ReportOnce(const Message& message) {
  if (reported_ == message) return;
  reported_ = message;
  files_.Log().Report(message);
}

void HandOverReader::ReportEvent(const Message& message) {
  if (reportedEvent_ == message) return;
  reportedEvent_ = message;
  files_.Log().Report(message);
}
