// Stays in the console of a solver until the solver has ended, then keeps what its buffer holds:
// krconsole PROCESS-ID FILE EVENT, which it sets when it is ready. Started by Kestrun, without a
// window.
#include <windows.h>

#include <cstdlib>

#include "util/process/ConsoleKeeper_win32.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  if (__argc != 4) return 2;
  return KeepConsole(std::strtoul(__argv[1], nullptr, 10), __argv[2], __argv[3]) ? 0 : 1;
}
