// Waits for groups to stop while the program stays alive.
#ifndef KR_UI_WINDOW_STOPPINGWINDOW_H
#define KR_UI_WINDOW_STOPPINGWINDOW_H

#include <FL/Fl_Window.H>

#include <functional>
#include <string>

// Handles events, behind a small modal window, until `running` is false. False when it still runs
// after 30 seconds. Texts are UTF-8. Interface thread.
bool WaitWhileStopping(Fl_Window* parent, const std::string& title, const std::string& text,
                       const std::function<bool()>& running);

#endif
