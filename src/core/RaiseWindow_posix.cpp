#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <optional>
#include <vector>

#include "core/SystemServices.h"

namespace {

constexpr int kDeepest = 4;  // levels below the root at which a window manager keeps clients
constexpr long kLongestTitle = 1024;  // in units of four bytes
constexpr long kMostClients = 65536;
constexpr long kSourceIsUser = 2;  // asked for by the user: a window manager does not refuse it

int IgnoreError(Display*, XErrorEvent*) {
  return 0;
}

// By default the library ends the process when the display goes away.
void StayAlive(Display*, void*) {}

// A connection on which windows that vanish while they are looked at do no harm.
class Connection {
 public:
  Connection() : display_(XOpenDisplay(nullptr)) {
    if (display_ == nullptr) return;
    former_ = XSetErrorHandler(IgnoreError);
    XSetIOErrorExitHandler(display_, StayAlive, nullptr);
  }
  ~Connection() {
    if (display_ == nullptr) return;
    XSync(display_, False);
    XSetErrorHandler(former_);
    XCloseDisplay(display_);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  Display* get() const { return display_; }
  Window root() const { return DefaultRootWindow(display_); }
  Atom Named(const char* name) const { return XInternAtom(display_, name, False); }

 private:
  Display* display_;
  XErrorHandler former_ = nullptr;
};

// The raw bytes of a property; empty when it is missing or of another format.
std::string Property(const Connection& x, Window window, Atom name, int format, long units) {
  Atom type = None;
  int found = 0;
  unsigned long count = 0;
  unsigned long rest = 0;
  unsigned char* data = nullptr;
  if (XGetWindowProperty(x.get(), window, name, 0, units, False, AnyPropertyType, &type, &found,
                         &count, &rest, &data) != Success) {
    return {};
  }
  std::string bytes;
  // The library hands out 32-bit items as longs.
  const std::size_t itemBytes = format == 32 ? sizeof(long) : 1;
  if (data != nullptr && found == format) {
    bytes.assign(reinterpret_cast<const char*>(data), count * itemBytes);
  }
  if (data != nullptr) XFree(data);
  return bytes;
}

bool HasTitle(const Connection& x, Window window, const std::string& title) {
  return Property(x, window, x.Named("_NET_WM_NAME"), 8, kLongestTitle) == title ||
         Property(x, window, XA_WM_NAME, 8, kLongestTitle) == title;
}

// The windows that the window manager cares for; empty when there is none.
std::vector<Window> Clients(const Connection& x) {
  const std::string bytes = Property(x, x.root(), x.Named("_NET_CLIENT_LIST"), 32, kMostClients);
  std::vector<Window> clients(bytes.size() / sizeof(Window));
  bytes.copy(reinterpret_cast<char*>(clients.data()), clients.size() * sizeof(Window));
  return clients;
}

std::vector<Window> Children(const Connection& x, Window window) {
  Window root = None;
  Window parent = None;
  Window* list = nullptr;
  unsigned count = 0;
  if (XQueryTree(x.get(), window, &root, &parent, &list, &count) == 0) return {};
  std::vector<Window> children(list, list + count);
  if (list != nullptr) XFree(list);
  return children;
}

std::optional<Window> FindClient(const Connection& x, const std::string& title) {
  for (const Window window : Clients(x)) {
    if (HasTitle(x, window, title)) return window;
  }
  return std::nullopt;
}

std::optional<Window> FindBelow(const Connection& x, Window window, const std::string& title,
                                int levels) {
  for (const Window child : Children(x, window)) {
    if (HasTitle(x, child, title)) return child;
    if (levels <= 1) continue;
    if (const auto found = FindBelow(x, child, title, levels - 1)) return found;
  }
  return std::nullopt;
}

void AskForActivation(const Connection& x, Window window) {
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.window = window;
  event.xclient.message_type = x.Named("_NET_ACTIVE_WINDOW");
  event.xclient.format = 32;
  event.xclient.data.l[0] = kSourceIsUser;
  event.xclient.data.l[1] = CurrentTime;
  XSendEvent(x.get(), x.root(), False, SubstructureRedirectMask | SubstructureNotifyMask, &event);
}

}  // namespace

bool HasDisplay() {
  return Connection().get() != nullptr;
}

bool RaiseWindow(const std::string& title) {
  const Connection x;
  if (x.get() == nullptr) return false;
  std::optional<Window> window = FindClient(x, title);
  if (!window) window = FindBelow(x, x.root(), title, kDeepest);
  if (!window) return false;
  XMapWindow(x.get(), *window);
  AskForActivation(x, *window);
  XRaiseWindow(x.get(), *window);
  return true;
}
