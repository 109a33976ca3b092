#include <windows.h>

#include "app/Program.h"
#include "util/text/StrWrapper.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  std::vector<std::string> arguments;
  StrWrapperTxt::SplitCommandLine(GetCommandLineA(), arguments);
  return RunProgram(std::move(arguments));
}
