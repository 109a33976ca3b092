#include <windows.h>

#include <shellapi.h>

#include "ui/help/ComnChmDialog.h"
#include "util/files/FileDirWrapper.h"

namespace {

constexpr UINT kDisplayTopic = 0x0000;
constexpr UINT kCloseAll = 0x0012;
constexpr INT_PTR kLeastSuccess = 33;  // of ShellExecute

using HtmlHelpFunction = HWND(WINAPI*)(HWND caller, LPCSTR file, UINT command, DWORD_PTR data);

// The viewer's library, from the system's folder only; null when the system has none. Stays loaded:
// its window goes on living.
HtmlHelpFunction HtmlHelp() {
  static const HtmlHelpFunction function = []() -> HtmlHelpFunction {
    char folder[MAX_PATH];
    const UINT length = GetSystemDirectoryA(folder, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return nullptr;
    const HMODULE library = LoadLibraryA(FileDirWrapper::Join(folder, "hhctrl.ocx").c_str());
    if (!library) return nullptr;
    return reinterpret_cast<HtmlHelpFunction>(
        reinterpret_cast<void*>(GetProcAddress(library, "HtmlHelpA")));
  }();
  return function;
}

bool opened = false;

}  // namespace

bool ComnChmDialog::Display(const std::string& page) {
  const std::string target = path_ + "::/" + page;
  if (HtmlHelp() && HtmlHelp()(nullptr, (target + ">main").c_str(), kDisplayTopic, 0)) {
    opened = true;
    return true;
  }
  std::string quoted;
  FileDirWrapper::QuotePath(target, quoted);
  const HINSTANCE result =
      ShellExecuteA(nullptr, "open", "hh.exe", quoted.c_str(), nullptr, SW_SHOWNORMAL);
  return reinterpret_cast<INT_PTR>(result) >= kLeastSuccess;
}

// The viewer runs in this process and must be gone before its library is.
void ComnChmDialog::CloseViewer() {
  if (opened) HtmlHelp()(nullptr, nullptr, kCloseAll, 0);
  opened = false;
}
