// A positioning library for the tests. Writes its calls into "calls.txt" beside the main deck,
// whose comments "$ qvas: auto" and "$ qvas: cannot open" say how it answers. Built twice: the
// other one lacks a function.
#include <atomic>
#include <fstream>
#include <string>

namespace {

std::string record;
std::string earlier;  // calls before the main deck is known
bool isAuto = false;
bool canOpen = true;
std::atomic<bool> inSession{false};

void Note(const std::string& call) {
  if (record.empty()) {
    earlier += call + '\n';
    return;
  }
  std::ofstream(record, std::ios::app | std::ios::binary) << earlier << call << '\n';
  earlier.clear();
}

std::string NameOf(const char* path) {
  const std::string text = path;
  return text.substr(text.find_last_of("/\\") + 1);
}

}  // namespace

extern "C" {

void qvAsPositionBegin() {
  record.clear();
  Note(inSession.exchange(true) ? "begin within a session" : "begin");
}

int qvAsGetDataFromDyn(const char* deck) {
  const std::string path = deck;
  record = path.substr(0, path.find_last_of("/\\") + 1) + "calls.txt";
  isAuto = false;
  canOpen = true;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("$ qvas: auto", 0) == 0) isAuto = true;
    if (line.rfind("$ qvas: cannot open", 0) == 0) canOpen = false;
  }
  Note("data " + NameOf(deck));
  return 0;
}

int qvAsIsAutoPositionMutiStage() {
  Note("auto?");
  return isAuto ? 1 : 2;
}

int qvAsWriteDynaFileOpen() {
  Note("open");
  return canOpen ? 1 : 0;
}

void qvAsSetMainDynaFile(const char* deck) {
  Note("main " + NameOf(deck));
}

void qvAsWriteDynaFilePosition(const char* deck) {
  Note("position " + NameOf(deck));
}

void qvAsWriteDynaFileClose() {
  Note("close");
}

#ifndef QVAS_WITHOUT_END
void qvAsPositionEnd() {
  Note("end");
  inSession = false;
}
#endif
}
