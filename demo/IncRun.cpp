#include "IncRun.h"

#include "System.h"
#include "Text.h"
#include "TextRun.h"

namespace {

constexpr std::size_t kTokenLength = 22;
constexpr std::size_t kArguments = 3;

class IncRun : public TextRun {
 public:
  using TextRun::TextRun;

 protected:
  std::string JobName() const override {
    return options_.words.size() == kArguments ? options_.words[2] : std::string();
  }
  const char* Usage() const override {
    return "give the access token, the program's folder and the job file without .fin";
  }
  const char* Extension() const override { return ".fin"; }
  const char* OutputEnding() const override { return "_INFO.OUT"; }
  std::string Complaint() const override;
  void WriteHead() override;
  void WriteStep(int step) override;
  void WriteEnd(bool normal) override;
};

// The token itself is told nowhere.
std::string IncRun::Complaint() const {
  const std::size_t length = options_.words[0].size();
  if (length != kTokenLength) {
    return Format("THE ACCESS TOKEN IS REFUSED: IT HAS %zu CHARACTERS INSTEAD OF %zu", length,
                  kTokenLength);
  }
  if (!IsFolder(options_.words[1])) return "THERE IS NO PROGRAM FOLDER " + options_.words[1];
  return {};
}

void IncRun::WriteHead() {
  output_.Line(" INC SOLVER, PLAYED BY A STAND-IN THAT COMPUTES NOTHING");
  output_.Line(" PROGRAM FOLDER    " + options_.words[1]);
  output_.Line(" JOB               " + options_.words[2]);
  output_.Line(" TITLE             " + job_.title);
  output_.Line(Format(" ELEMENTS   %14d", job_.elements));
  output_.Line();
}

void IncRun::WriteStep(int step) {
  output_.Line(Format(" STEP %5d OF %5d    CLOCK %9.2f S", step, job_.steps, Seconds()));
}

void IncRun::WriteEnd(bool normal) {
  output_.Line();
  if (!normal) return output_.Line(" THE RUN ENDED WITH AN ERROR");
  const auto seconds = static_cast<int>(Seconds() + 0.5);
  output_.Line(Format(" THE TOTAL TIME FOR THIS JOB IS ABOUT %4d HOURS %2d MINUTES %2d SECONDS",
                      seconds / 3600, seconds / 60 % 60, seconds % 60));
}

}  // namespace

int RunInc(const Options& options, const std::string& programName) {
  return IncRun(options, programName).Run();
}
