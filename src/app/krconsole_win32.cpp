// Stays in the console of a solver until the solver has ended, then keeps what its buffer holds:
// krconsole PROCESS-ID FILE. Started by Kestrun, without a window.
#include <windows.h>

#include <cstdlib>

#include "util/process/ConsoleKeeper_win32.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  if (__argc != 3) return 2;
  return KeepConsole(std::strtoul(__argv[1], nullptr, 10), __argv[2]) ? 0 : 1;
}
