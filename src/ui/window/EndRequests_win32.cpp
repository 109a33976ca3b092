#include "ui/window/EndRequests.h"

#include <windows.h>

namespace {

std::function<void()>& HangUp() {
  static std::function<void()> hangUp;
  return hangUp;
}

// The toolkit's windows let these pass. The system waits some seconds for the answer to the second,
// then it ends the process.
LRESULT CALLBACK TakeMessage(HWND window, UINT message, WPARAM first, LPARAM second) {
  if (message == WM_QUERYENDSESSION) return TRUE;
  if (message == WM_ENDSESSION) {
    if (first != FALSE && HangUp()) HangUp()();
    return 0;
  }
  return DefWindowProcA(window, message, first, second);
}

// Never shown, but no message-only window either: those are not told of a session's end.
void MakeListener() {
  static bool made = false;
  if (made) return;
  WNDCLASSA kind = {};
  kind.lpfnWndProc = TakeMessage;
  kind.hInstance = GetModuleHandleA(nullptr);
  kind.lpszClassName = "KrSessionEnd";
  RegisterClassA(&kind);
  made = CreateWindowExA(0, kind.lpszClassName, "", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                         kind.hInstance, nullptr) != nullptr;
}

}  // namespace

void OnEndRequest(const std::function<void()>&, const std::function<void()>& hangUp) {
  HangUp() = hangUp;
  MakeListener();
}

bool EndRequestWaits() {
  return false;
}

void OnDisplayLost(const std::function<void()>&) {}
