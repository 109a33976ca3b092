// What the stand-in solver needs from the operating system, one half a system.
#ifndef STANDIN_SYSTEM_H
#define STANDIN_SYSTEM_H

#include <string>

// From now on a polite request to end (SIGTERM, SIGINT, SIGHUP; closing the console) does nothing.
void IgnorePoliteTermination();

// Starts a process that only sleeps for ten minutes, in a session (process group) of its own and
// with none of our streams. Returns its process id, 0 when it could not be started.
long StartSleepingChild();

// Dies the way a faulty program does: at once, nothing flushed, nothing tidied, no dialog.
[[noreturn]] void Crash();

// By that signal; on Windows as if the console had been closed.
void DieBySignal(int number);

// Of the console that the standard output is; false when it is none.
bool ReadWindowSize(int& lines, int& columns);

bool IsFolder(const std::string& path);
std::string CurrentFolder();
// The folder of the running executable file, without a separator at its end.
std::string ProgramFolder();

// A closed standard output must not end the run.
void KeepRunningWithoutOutput();

#endif
