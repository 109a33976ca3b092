#include "jobs/JobStatus.h"

Message JobStatusWord(JobStatus status) {
  switch (status) {
    case JobStatus::kQueued:
      return Message(MessageId::kQueued);
    case JobStatus::kWaiting:
      return Message(MessageId::kWaiting);
    case JobStatus::kRunning:
      return Message(MessageId::kRunning);
    case JobStatus::kFinished:
      return Message(MessageId::kFinished);
    case JobStatus::kAborted:
      return Message(MessageId::kAborted);
  }
  return Message();
}
