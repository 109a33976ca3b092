// What the application does in a different way on each system.
#ifndef KR_CORE_SYSTEMSERVICES_H
#define KR_CORE_SYSTEMSERVICES_H

#include <string>

// Whether the program that a command line begins with can be found.
bool ProgramExists(const std::string& commandLine);

// Opens a file with the program that the desktop has for it. May take a few seconds; any thread.
bool OpenWithDesktop(const std::string& path);

// Whether windows can be shown.
bool HasDisplay();

// Shows the top-level window with this title and brings it to the front. False when there is none.
bool RaiseWindow(const std::string& title);

// Ends the process at once, past destructors that running threads would collide with.
[[noreturn]] void LeaveProcess(int exitCode);

#endif
