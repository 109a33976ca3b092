// Writes a report on a thread of its own, since it reads the curves of all runs.
#ifndef KR_UI_REPORT_REPORTWRITER_H
#define KR_UI_REPORT_REPORTWRITER_H

#include <memory>
#include <string>
#include <vector>

#include "ui/report/QueueReport.h"

// In the form that its ending asks for; never over a file of one of its jobs. Interface thread.
class ReportWriter {
 public:
  // `language` of a page: 0 English, 1 Chinese.
  ReportWriter(std::string path, std::vector<ReportedGroup> groups, int language);
  // Gives it up, and does not wait for a file system that does not answer.
  ~ReportWriter();
  ReportWriter(const ReportWriter&) = delete;
  ReportWriter& operator=(const ReportWriter&) = delete;

  const std::string& Path() const { return path_; }
  int Total() const { return total_; }  // jobs
  int Done() const;
  int Percent() const;
  // Nothing is written any more.
  void Cancel();

  bool Ended() const;
  bool Cancelled() const;
  // What went wrong, when it has ended; empty: it is written, or was given up.
  std::string Trouble() const;

 private:
  struct Shared;
  const std::string path_;
  int total_ = 0;
  std::shared_ptr<Shared> shared_;
};

#endif
