#include "runs/PositioningLibrary.h"

#include <type_traits>

#include "solvers/AbortableWait.h"
#include "solvers/RunSteps.h"
#include "util/files/FileDirWrapper.h"

PositioningLibrary::PositioningLibrary(const std::string& folder)
    : path_(FileDirWrapper::Join(folder, SharedLibrary::FileName("qvas"))) {}

const PositioningFunctions* PositioningLibrary::Functions(const JobFile& job) {
  const MutexLock lock(mutex_);
  if (!tried_) {
    tried_ = true;
    Message error;
    loaded_ = Load(error);
    if (!loaded_) {
      const Message message(MessageId::kPositioningUnusable, path_, error);
      // Most people have none.
      const bool none = !FileDirWrapper::FileExists(path_);
      if (none && job.run && job.run->note) {
        job.run->note(message);
      } else {
        Report(job, message);
      }
    }
  }
  return loaded_ ? &functions_ : nullptr;
}

bool PositioningLibrary::Load(Message& error) {
  if (!FileDirWrapper::FileExists(path_)) {
    error = Message(MessageId::kPositioningMissing);
    return false;
  }
  std::string systemsWords;
  if (!library_.Load(path_, systemsWords)) {
    error = Message(MessageId::kForeignWords, systemsWords);
    return false;
  }
  const auto find = [&](auto& function, const char* name) KR_REQUIRES(mutex_) {
    using Function = std::remove_reference_t<decltype(function)>;
    function = reinterpret_cast<Function>(library_.Find(name));
    if (function == nullptr && error.Empty()) error = Message(MessageId::kPositioningLacks, name);
  };
  error = Message();
  find(functions_.positionBegin, "qvAsPositionBegin");
  find(functions_.getDataFromDyn, "qvAsGetDataFromDyn");
  find(functions_.isAutoPositionMutiStage, "qvAsIsAutoPositionMutiStage");
  find(functions_.writeDynaFileOpen, "qvAsWriteDynaFileOpen");
  find(functions_.setMainDynaFile, "qvAsSetMainDynaFile");
  find(functions_.writeDynaFilePosition, "qvAsWriteDynaFilePosition");
  find(functions_.writeDynaFileClose, "qvAsWriteDynaFileClose");
  find(functions_.positionEnd, "qvAsPositionEnd");
  if (error.Empty()) return true;
  library_.Unload();
  return false;
}

bool PositioningSession::Begin() {
  if (job_.abort || !job_.restartFile.empty()) return true;
  const PositioningFunctions* const functions = library_.Functions(job_);
  if (functions == nullptr) return true;
  turn_ = std::unique_lock<std::mutex>(library_.session_, std::try_to_lock);
  if (!turn_) {
    Report(job_, Message(MessageId::kPositioningBusy, job_.jobFile));
    turn_ = LockUnlessAborted(library_.session_, job_.abort);
  }
  if (!turn_) return true;

  functions_ = functions;
  functions_->positionBegin();
  functions_->getDataFromDyn(job_.jobFile.c_str());
  wanted_ = functions_->isAutoPositionMutiStage() == 1;
  if (wanted_) opened_ = functions_->writeDynaFileOpen() != 0;
  if (wanted_ && !opened_) return Leave(), false;
  if (!wanted_) End();
  return true;
}

void PositioningSession::Position(const JobFile& stage) {
  if (!wanted_) return;
  functions_->setMainDynaFile(job_.jobFile.c_str());
  functions_->writeDynaFilePosition(stage.jobFile.c_str());
}

void PositioningSession::End() {
  if (functions_ == nullptr) return;
  if (opened_) functions_->writeDynaFileClose();
  functions_->positionEnd();
  Leave();
}

void PositioningSession::Leave() {
  functions_ = nullptr;
  wanted_ = opened_ = false;
  turn_.unlock();
}
