#include <cstdio>

#include "Answers.h"

namespace {

std::string Printable(const std::string& text) {
  std::string out;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\r') continue;  // lines end as the system likes
    if (c == '\n') {
      out += "\\n";
    } else if (byte < ' ' || byte > '~') {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
      out += escaped;
    } else {
      out += c;
    }
  }
  return out;
}

}  // namespace

void Answer(const std::string& service, const std::string& question, const std::string& answer) {
  std::printf("%s | %s | %s\n", service.c_str(), Printable(question).c_str(),
              Printable(answer).c_str());
  std::fflush(stdout);
}

int main(int argc, char** argv) {
  if (argc > 1) return BehaveAsChild({argv + 1, argv + argc});
  AnswerProfiles();
  AnswerSignals();
  AnswerProcesses();
  AnswerCommandLines();
  AnswerPaths();
  return 0;
}
