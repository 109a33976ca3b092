// Requests of the system to end the program.
#ifndef KR_UI_WINDOW_ENDREQUESTS_H
#define KR_UI_WINDOW_ENDREQUESTS_H

#include <functional>

// Calls `leave` on the interface thread when somebody asks the program to end (SIGTERM, SIGINT),
// and `hangUp` when its session ends (SIGHUP; not when it was started to ignore that, as nohup
// does). A request that comes while there is no function to call, as before the first window, waits
// for one. Where both come in one moment, it is the first. On Windows that one comes as a window
// message and nothing has to be done.
void OnEndRequest(const std::function<void()>& leave, const std::function<void()>& hangUp);

// A request waits for a function to call.
bool EndRequestWaits();

// Calls `save` on the interface thread when the connection to the display breaks; the process ends
// when it returns. Nothing of the toolkit may be used in it. Call it with the display open. On
// Windows there is no such connection.
void OnDisplayLost(const std::function<void()>& save);

#endif
