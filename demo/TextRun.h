// One run of a solver that reads a small text job and writes one text output: INC and Vorel.
#ifndef STANDIN_TEXTRUN_H
#define STANDIN_TEXTRUN_H

#include <chrono>
#include <string>

#include "Behaviour.h"
#include "JobText.h"
#include "MessageFile.h"
#include "Options.h"

class TextRun {
 public:
  TextRun(const Options& options, const std::string& programName);
  virtual ~TextRun() = default;

  // The exit code: 0, 1 after an error, 2 for a command line that names no job.
  int Run();

 protected:
  // What the two solvers differ in. `JobName`: the job file without its extension, empty when the
  // command line is none of this solver's. `Complaint`: what is wrong with the other arguments.
  virtual std::string JobName() const = 0;
  virtual const char* Usage() const = 0;
  virtual const char* Extension() const = 0;
  virtual const char* OutputEnding() const = 0;
  virtual std::string Complaint() const = 0;
  virtual void WriteHead() = 0;
  virtual void WriteStep(int step) = 0;
  virtual void WriteEnd(bool normal) = 0;

  void Error(const std::string& text);
  double Seconds() const;  // since the start

  const Options& options_;
  Behaviour behaviour_;
  JobText job_;
  MessageFile output_;

 private:
  bool ReadInput();
  void WriteNotices();
  void March();

  const std::string programName_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  bool failed_ = false;
};

#endif
