#include <windows.h>

#include "core/SystemServices.h"

bool RaiseWindow(const std::string& title) {
  const HWND window = FindWindowA(nullptr, title.c_str());
  if (window == nullptr) return false;
  ShowWindow(window, SW_SHOWNORMAL);
  SetForegroundWindow(window);
  return true;
}
