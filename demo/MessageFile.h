// The message file of a run, in the layouts that keyword solvers write. Every line is on the disk
// before the next begins, so that a reader sees the run grow.
#ifndef STANDIN_MESSAGEFILE_H
#define STANDIN_MESSAGEFILE_H

#include <cstdio>
#include <string>
#include <vector>

#include "Launcher.h"
#include "Version.h"

class MessageFile {
 public:
  MessageFile() = default;
  ~MessageFile();
  MessageFile(const MessageFile&) = delete;
  MessageFile& operator=(const MessageFile&) = delete;

  // With `toOutput` the lines go to standard output too. An empty path writes no file.
  bool Open(const std::string& path, bool crlf, bool toOutput);
  // False when a line could not be written, e.g. on a full disk.
  bool Good() const { return good_; }

  void Line(const std::string& text = {});
  void Banner(const Version& version, bool doublePrecision, const Rank& rank);
  void OptionsEcho(const std::vector<std::string>& words);
  void MemoryLines(long long words, bool doublePrecision);
  void Warning(int number, const std::string& text, bool blankBehind);
  void Error(int number, const std::string& text);
  void Progress(int cycle, double time, double step, const std::string& what);
  // One step of an implicit run: its begin, then, when it is done, its iterations.
  void ImplicitBegin(int step, double time, double size);
  void ImplicitEnd(int iterations);
  // The disk is full: the file ends in the middle of a line, and no more is written to it.
  void BreakOff();
  void NormalTermination();
  void ErrorTermination();
  void Timing(double problemTime, int cycle, double cpuSeconds, double wallSeconds);

 private:
  void Block(const char* kind, int number, const std::string& text);

  std::FILE* file_ = nullptr;
  bool crlf_ = false;
  bool toOutput_ = false;
  bool good_ = true;
};

#endif
