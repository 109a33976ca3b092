#include "MessageFile.h"

#include <ctime>

#include "Text.h"

namespace {

std::string Now() {
  const std::time_t now = std::time(nullptr);
  char text[32] = "";
  if (const std::tm* local = std::localtime(&now)) {
    std::strftime(text, sizeof text, "%m/%d/%y %H:%M:%S", local);
  }
  return text;
}

// The part of the solver that a message number belongs to.
const char* Phase(int number) {
  constexpr const char* kPhases[] = {"MSG", "KEY", "STR", "INI", "SOL", "OTH", "IMP"};
  const int phase = number / 10000;
  return phase < 7 ? kPhases[phase] : "MSG";
}

std::string Seconds(const char* label, double seconds) {
  const auto whole = static_cast<long long>(seconds + 0.5);
  return Format(" %-18s =%10lld seconds (%4lld hours %2lld minutes %2lld seconds)", label, whole,
                whole / 3600, whole / 60 % 60, whole % 60);
}

std::string Termination(const char* text) {
  return Format("%-62s", text) + Now();
}

constexpr char kNormal[] = " N o r m a l    t e r m i n a t i o n";
constexpr char kError[] = " E r r o r   t e r m i n a t i o n";

}  // namespace

MessageFile::~MessageFile() {
  if (file_ != nullptr) std::fclose(file_);
}

bool MessageFile::Open(const std::string& path, bool crlf, bool toOutput) {
  crlf_ = crlf;
  toOutput_ = toOutput;
  if (path.empty()) return true;
  file_ = std::fopen(path.c_str(), "wb");
  return file_ != nullptr;
}

void MessageFile::Line(const std::string& text) {
  if (toOutput_) {
    std::fputs((text + "\n").c_str(), stdout);
    std::fflush(stdout);
  }
  if (file_ == nullptr) return;
  const std::string line = text + (crlf_ ? "\r\n" : "\n");
  if (std::fputs(line.c_str(), file_) < 0 || std::fflush(file_) != 0) good_ = false;
}

void MessageFile::Banner(const Version& version, bool doublePrecision, const Rank& rank) {
  Line();
  Line("     Date: " + Now());
  Line();
  Line("      ___________________________________________________");
  Line("     |                                                   |");
  Line("     |  Stand-in solver of the demonstration and tests.  |");
  Line("     |  It computes nothing: times, messages and result  |");
  Line("     |  files only look like those of a real solver.     |");
  Line(Format("     |  Version : %s %c %-33s|", rank.parallel ? "mpp" : "smp",
              doublePrecision ? 'd' : 's', version.release.c_str()));
  Line(Format("     |  Revision: %-39s|", version.revision.c_str()));
  Line(Format("     |  Precision  : %-36s|",
              doublePrecision ? "Double precision (I8R8)" : "Single precision (I4R4)"));
  if (rank.parallel) {
    Line(Format("     |  Rank %6d of %-34d|", rank.number, rank.size));
  }
  Line("     |___________________________________________________|");
  Line();
}

void MessageFile::OptionsEcho(const std::vector<std::string>& words) {
  const char* label = " Command line options: ";
  for (const std::string& word : words) {
    Line(label + word);
    label = "                       ";
  }
  if (words.empty()) Line(" Command line options: none");
  Line();
}

void MessageFile::MemoryLines(long long words, bool doublePrecision) {
  const char precision = doublePrecision ? 'd' : 's';
  Line(Format(" expanding   memory to %11lld %c %11lld  ", words, precision, words * 2));
  Line(Format(" contracting memory to %11lld %c %11lld  ", words / 2, precision, words));
}

void MessageFile::Block(const char* kind, int number, const std::string& text) {
  Line(Format(" *** %s %d (%s+%d)", kind, number, Phase(number), number % 10000));
  Line("     " + text);
}

void MessageFile::Warning(int number, const std::string& text, bool blankBehind) {
  Block("Warning", number, text);
  if (blankBehind) Line();
}

void MessageFile::Error(int number, const std::string& text) {
  Block("Error", number, text);
  Line();
}

void MessageFile::Progress(int cycle, double time, double step, const std::string& what) {
  Line(Format("%8d t %.4E dt %.2E %-29s", cycle, time, step, what.c_str()) + Now());
}

void MessageFile::ImplicitBegin(int step, double time, double size) {
  Line();
  Line(Format(" BEGIN implicit statics  step %6d t= %.4E             ", step, time) + Now());
  Line(" ============================================================");
  Line(Format("                time = %12.5E", time));
  Line(Format("   current step size = %12.5E", size));
}

void MessageFile::ImplicitEnd(int iterations) {
  double displacement = 1;
  for (int i = 1; i <= iterations; ++i, displacement /= 20) {
    Line(Format(" Iteration:%4d     *|du|/|u| = %14.7E     *Ei/E0 = %14.7E", i, displacement,
                displacement * displacement));
  }
  Line();
  Line(Format(" Equilibrium established after %5d iterations", iterations));
}

void MessageFile::BreakOff() {
  if (file_ != nullptr) {
    std::fputs("  999999 t 9.99", file_);
    std::fclose(file_);
    file_ = nullptr;
  }
  good_ = false;
}

void MessageFile::NormalTermination() {
  Line(Termination(kNormal));
}

void MessageFile::ErrorTermination() {
  Line(Termination(kError));
}

void MessageFile::Timing(double problemTime, int cycle, double cpuSeconds, double wallSeconds) {
  const double share = wallSeconds > 0 ? 100.0 : 0.0;
  Line();
  Line(" T i m i n g   i n f o r m a t i o n");
  Line("                        CPU(seconds)   %CPU  Clock(seconds) %Clock");
  Line("  ----------------------------------------------------------------");
  Line(Format("  Waiting ............. %12.4E %6.2f %15.4E %6.2f", cpuSeconds, share, wallSeconds,
              share));
  Line("  ----------------------------------------------------------------");
  Line(Format("  T o t a l s           %12.4E %6.2f %15.4E %6.2f", cpuSeconds, share, wallSeconds,
              share));
  Line();
  Line(Format(" Problem time       =    %.4E", problemTime));
  Line(Format(" Problem cycle      =%10d", cycle));
  Line(Seconds("Total CPU time", cpuSeconds));
  Line(Format(" CPU time per zone cycle  = %.4f nanoseconds", 0.0));
  Line();
  Line(Seconds("Elapsed time", wallSeconds));
  Line();
}
