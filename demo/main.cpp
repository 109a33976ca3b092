// The stand-in solver: a program with the outer behaviour of a finite-element solver that computes
// nothing. It serves the demonstration and is the solver of the tests.

#include <chrono>
#include <cstdio>
#include <thread>

#include "KeywordRun.h"
#include "Options.h"
#include "System.h"
#include "Text.h"
#include "Version.h"

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

}  // namespace

int main(int argc, char** argv) {
  KeepRunningWithoutOutput();
  const std::string name = argc > 0 ? BaseName(argv[0]) : "standin_solver";
  Options options = ParseOptions(argc > 1 ? std::vector<std::string>(argv + 1, argv + argc)
                                          : std::vector<std::string>());
  options.doublePrecision = options.doublePrecision || IsDoubleByName(name);
  if (options.sleepSeconds > 0) {
    std::this_thread::sleep_for(std::chrono::seconds(options.sleepSeconds));
    return 0;
  }
  if (options.info) return WriteInfo(ConfiguredVersion(), options.doublePrecision) ? 0 : 1;
  return RunKeywordSolver(options, name);
}
