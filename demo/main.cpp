// The stand-in solver: a program with the outer behaviour of a finite-element solver that computes
// nothing. It serves the demonstration and is the solver of the tests.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "IncRun.h"
#include "KeywordRun.h"
#include "Options.h"
#include "Role.h"
#include "System.h"
#include "Text.h"
#include "Version.h"
#include "VorelRun.h"

namespace {

std::string BaseName(const std::string& path) {
  return path.substr(path.find_last_of("\\/") + 1);
}

// Solvers of both precisions lie beside each other under two names: "solver" and "solver_d".
bool IsDoubleByName(std::string name) {
  name = Upper(name);
  constexpr std::string_view kExtension = ".EXE";
  if (name.size() > kExtension.size() &&
      name.compare(name.size() - kExtension.size(), kExtension.size(), kExtension) == 0) {
    name.resize(name.size() - kExtension.size());
  }
  return name.size() > 2 && name.compare(name.size() - 2, 2, "_D") == 0;
}

// The deck, whatever characters its name has, then options of the keyword solver.
Options UtilityBatchOptions(const std::vector<std::string>& words) {
  if (words.empty()) return {};
  Options options = ParseOptions({words.begin() + 1, words.end()});
  options.words = words;
  options.deck = words[0];
  return options;
}

}  // namespace

int main(int argc, char** argv) {
  KeepRunningWithoutOutput();
  const std::string name = argc > 0 ? BaseName(argv[0]) : "standin_solver";
  const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  Options options = ParseOptions(words);
  if (options.sleepSeconds > 0) {
    std::this_thread::sleep_for(std::chrono::seconds(options.sleepSeconds));
    return 0;
  }
  const Role role = FindRole(name, words);
  if (role == Role::kInc) return RunInc(options, name);
  if (role == Role::kVorel) return RunVorel(options, name);
  if (role == Role::kUtilityBatch) options = UtilityBatchOptions(words);
  options.doublePrecision = options.doublePrecision || IsDoubleByName(name);
  if (options.info) return WriteInfo(ConfiguredVersion(), options.doublePrecision) ? 0 : 1;
  return RunKeywordSolver(options, name);
}
