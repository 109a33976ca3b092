#include "ui/report/ReportWriter.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <iterator>
#include <system_error>
#include <thread>
#include <utility>

#include "ui/report/ReportPage.h"
#include "ui/text/Encoding.h"
#include "util/files/FileDirWrapper.h"
#include "util/process/OwnThread.h"
#include "util/signals/Mutex.h"

namespace {

// The user's own files: decks, and what is kept of runs.
bool IsFileOf(const std::string& identity, const ReportedJob& job) {
  const std::string* const files[] = {&job.jobFile, &job.restartFile, &job.messageFile};
  const auto isIt = [&](const std::string* file) {
    return FileDirWrapper::IdentityOf(*file) == identity;
  };
  return std::any_of(std::begin(files), std::end(files), isIt) ||
         std::any_of(job.stages.begin(), job.stages.end(),
                     [&](const ReportedJob& stage) { return IsFileOf(identity, stage); });
}

}  // namespace

struct ReportWriter::Shared {
  std::string path;
  std::vector<ReportedGroup> groups;
  TextTable texts;  // the thread's own
  int total = 0;    // jobs
  std::atomic<bool> cancelled{false};
  std::atomic<int> done{0};
  std::atomic<int> percent{0};
  std::atomic<bool> ended{false};
  Mutex mutex;
  std::string trouble KR_GUARDED_BY(mutex);

  void Write();
  bool IsOverAJob() const;
  std::string Text();
  std::shared_ptr<const RunCurves> Curves(const ReportedJob& job);
  void Fail(const std::string& why) {
    const MutexLock lock(mutex);
    trouble = why.empty() ? "-" : why;
  }
};

std::shared_ptr<const RunCurves> ReportWriter::Shared::Curves(const ReportedJob& job) {
  if (cancelled) return nullptr;
  const double each = 100.0 / std::max(total, 1);
  const double before = each * std::min<int>(done, total);
  percent = std::min(99, static_cast<int>(before));  // files that are not big tell nothing
  auto curves = ReadCurves(job.run, [&](std::uint64_t read, std::uint64_t size) {
    const double share = size > 0 ? static_cast<double>(read) / static_cast<double>(size) : 1;
    percent = std::min(99, static_cast<int>(before + each * std::min(share, 1.0)));
    return !cancelled;
  });
  ++done;
  return curves;
}

std::string ReportWriter::Shared::Text() {
  switch (FormOfReport(path)) {
    case ReportForm::kPage:
      return ReportPage(groups, texts, [this](const ReportedJob& job) { return Curves(job); });
    case ReportForm::kTable:
      return ReportTable(groups);
    case ReportForm::kLines:
      break;
  }
  std::string lines;
  for (const ReportedGroup& group : groups) lines += ReportLines(group);
  return lines;
}

bool ReportWriter::Shared::IsOverAJob() const {
  const std::string identity = FileDirWrapper::IdentityOf(path);
  return !identity.empty() &&
         std::any_of(groups.begin(), groups.end(), [&](const ReportedGroup& group) {
           return std::any_of(group.jobs.begin(), group.jobs.end(),
                              [&](const ReportedJob& job) { return IsFileOf(identity, job); });
         });
}

void ReportWriter::Shared::Write() {
  std::string why;
  if (IsOverAJob()) {
    Fail(FromUi(texts.Get("rep_over_job")));
  } else if (const std::string text = Text();
             !cancelled && !FileDirWrapper::WriteFileWhole(path, text, &why)) {
    Fail(why);
  }
  ended = true;
}

ReportWriter::ReportWriter(std::string path, std::vector<ReportedGroup> groups, int language)
    : path_(std::move(path)), shared_(std::make_shared<Shared>()) {
  for (const ReportedGroup& group : groups) {
    for (const ReportedJob& job : group.jobs) {
      const auto isRead = [](const ReportedJob& one) { return !one.run.path.empty(); };
      total_ += isRead(job) +
                static_cast<int>(std::count_if(job.stages.begin(), job.stages.end(), isRead));
    }
  }
  shared_->path = path_;
  shared_->total = total_;
  shared_->groups = std::move(groups);
  FillTexts(language, {}, shared_->texts);
  const auto failed = [shared = shared_](const std::exception& error) {
    shared->Fail(error.what());
    shared->ended = true;
  };
  if (!StartGuarded([shared = shared_] { shared->Write(); }, failed))
    failed(std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again)));
}

ReportWriter::~ReportWriter() {
  shared_->cancelled = true;
}

int ReportWriter::Done() const {
  return std::min<int>(shared_->done, total_);
}

int ReportWriter::Percent() const {
  return shared_->percent;
}

void ReportWriter::Cancel() {
  shared_->cancelled = true;
}

bool ReportWriter::Ended() const {
  return shared_->ended;
}

bool ReportWriter::Cancelled() const {
  return shared_->cancelled;
}

std::string ReportWriter::Trouble() const {
  const MutexLock lock(shared_->mutex);
  return shared_->trouble;
}
