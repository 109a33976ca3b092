// Requests of the system to end the program.
#ifndef KR_UI_WINDOW_ENDREQUESTS_H
#define KR_UI_WINDOW_ENDREQUESTS_H

#include <functional>

// Calls `leave` on the interface thread when the system asks the program to end (SIGTERM, SIGINT,
// SIGHUP; the last not when it was started to ignore that, as nohup does). A request that comes
// while there is no function to call, as before the first window, waits for one. On Windows that
// comes as a window message and nothing has to be done.
void OnEndRequest(const std::function<void()>& leave);

// Calls `save` on the interface thread when the connection to the display breaks; the process ends
// when it returns. Nothing of the toolkit may be used in it. Call it with the display open. On
// Windows there is no such connection.
void OnDisplayLost(const std::function<void()>& save);

#endif
