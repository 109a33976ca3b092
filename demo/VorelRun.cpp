#include "VorelRun.h"

#include <chrono>
#include <ctime>

#include "SideFiles.h"
#include "Text.h"
#include "TextRun.h"

namespace {

class VorelRun : public TextRun {
 public:
  using TextRun::TextRun;

 protected:
  std::string JobName() const override {
    return options_.words.empty() ? std::string() : options_.words[0];
  }
  const char* Usage() const override { return "give the job file without .dat"; }
  const char* Extension() const override { return ".dat"; }
  const char* OutputEnding() const override { return ".OUT"; }
  std::string Complaint() const override;
  void WriteHead() override;
  void WriteStep(int step) override;
  void WriteEnd(bool normal) override;

 private:
  void WriteStamp();
  void WriteResult();
};

// Options may follow the job directly; only what looks like a number is one.
std::string VorelRun::Complaint() const {
  if (options_.words.size() < 2 || options_.words[1].find_first_not_of("+-0123456789") == 0) {
    return {};
  }
  const auto memory = ToInteger(options_.words[1]);
  return memory && *memory > 0 ? std::string() : "THE MEMORY IS NO NUMBER: " + options_.words[1];
}

void VorelRun::WriteStamp() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto hundredths = std::chrono::duration_cast<std::chrono::milliseconds>(
                              now - std::chrono::system_clock::from_time_t(seconds))
                              .count() /
                          10;
  char date[16] = "";
  char time[16] = "";
  if (const std::tm* local = std::localtime(&seconds)) {
    std::strftime(date, sizeof date, "%m/%d/%y", local);
    std::strftime(time, sizeof time, "%H:%M:%S", local);
  }
  output_.Line(std::string(" D A T E (MM/DD/YY): ") + date);
  output_.Line(Format(" TIME(HH:MM:SS:.01): %s:.%02d", time, static_cast<int>(hundredths)));
}

void VorelRun::WriteHead() {
  output_.Line(" VOREL ONE-STEP SOLVER, PLAYED BY A STAND-IN THAT COMPUTES NOTHING");
  WriteStamp();
  output_.Line(" JOB               " + options_.words[0]);
  output_.Line(" TITLE             " + job_.title);
  output_.Line(Format(" ELEMENTS   %14d", job_.elements));
  for (std::size_t i = 1; i < options_.words.size(); ++i) {
    output_.Line(" ARGUMENT          " + options_.words[i]);
  }
  output_.Line();
}

void VorelRun::WriteStep(int step) {
  output_.Line(Format(" ITERATION %5d    RESIDUAL %11.4E", step,
                      1.0 - static_cast<double>(step) / (job_.steps + 1)));
}

void VorelRun::WriteEnd(bool normal) {
  if (normal) WriteResult();
  output_.Line();
  WriteStamp();
}

void VorelRun::WriteResult() {
  if (behaviour_.noResult) return;
  const std::string text = behaviour_.emptyResult
                               ? std::string()
                               : Format("stand-in one-step result\nelements %d\n", job_.elements);
  if (!WriteTextFile(options_.words[0] + ".lin", text)) {
    Error("THE RESULT CANNOT BE WRITTEN: " + options_.words[0] + ".lin");
  }
}

}  // namespace

int RunVorel(const Options& options, const std::string& programName) {
  return VorelRun(options, programName).Run();
}
