#include "TextRun.h"

#include <cstdio>
#include <thread>

#include "BehaviourActs.h"
#include "Text.h"

TextRun::TextRun(const Options& options, const std::string& programName)
    : options_(options), programName_(programName) {}

int TextRun::Run() {
  const std::string name = JobName();
  if (name.empty()) {
    std::fprintf(stderr, "%s: %s\n", programName_.c_str(), Usage());
    return 2;
  }
  const std::string path = FindJobText(name, Extension());
  behaviour_ = ReadBehaviour(path);
  ActAtStart(behaviour_, options_, true);
  const std::string output = behaviour_.noMessage ? std::string() : name + OutputEnding();
  if (!output_.Open(output, behaviour_.crlf, true)) {
    std::fprintf(stderr, "%s: the file %s cannot be written\n", programName_.c_str(),
                 output.c_str());
    return 1;
  }
  job_ = ReadJobText(path);
  WriteHead();
  if (path.empty()) job_.error = "THE JOB FILE CANNOT BE READ: " + name + Extension();
  if (ReadInput()) March();
  WriteEnd(!failed_);
  return behaviour_.exitCode.value_or(!failed_ && output_.Good() ? 0 : 1);
}

bool TextRun::ReadInput() {
  for (const std::string& command : behaviour_.refused) {
    output_.Line(" STAND-IN: NOT UNDERSTOOD: " + command);
  }
  if (const std::string complaint = Complaint(); !complaint.empty()) Error(complaint);
  if (!failed_ && !job_.error.empty()) Error(job_.error);
  if (!failed_) WriteNotices();
  return !failed_;
}

void TextRun::WriteNotices() {
  for (const Notices& notices : behaviour_.warnings) {
    for (int i = 1; i <= notices.count; ++i) {
      output_.Line(Format(" *** WARNING %d: ", notices.number) +
                   NoticeText("warning", i, notices.count));
    }
  }
  for (const Notices& notices : behaviour_.errors) {
    for (int i = 1; i <= notices.count; ++i) {
      Error(Format("%d: ", notices.number) + NoticeText("error", i, notices.count));
    }
  }
}

void TextRun::March() {
  for (int step = 1; step <= job_.steps; ++step) {
    const std::chrono::duration<double> due(behaviour_.runSeconds * step / job_.steps);
    std::this_thread::sleep_until(
        start_ + std::chrono::duration_cast<std::chrono::steady_clock::duration>(due));
    WriteStep(step);
    if (step != (job_.steps + 1) / 2) continue;
    ActInTheMiddle(behaviour_);
    if (behaviour_.fail) {
      return Error(Format("%d: THE JOB ASKED THE STAND-IN TO FAIL", *behaviour_.fail));
    }
  }
}

void TextRun::Error(const std::string& text) {
  output_.Line(" *** ERROR " + text);
  failed_ = true;
}

double TextRun::Seconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}
