// Keeps what a console holds at the end of the program that it was opened for.
//
// A console goes with the last process in it, and its buffer with it. So a process of ours
// (krconsole) enters it, waits for the program's end there and reads the buffer.
#ifndef KR_UTIL_PROCESS_CONSOLEKEEPER_WIN32_H
#define KR_UTIL_PROCESS_CONSOLEKEEPER_WIN32_H

#include <string>

// Enters the console of the process, lets it show colours, waits for the end of the process, or for
// the console to be closed, and writes the buffer's lines into the file, as ConsoleFile does on
// Linux. The process may wait to be let go until the event `ready`, which the caller has made, is
// set: then even one that ends at once is not missed. False when there is no such
// process, it ended before its console could be entered, or the file cannot be written. For a
// process without a console that does nothing else.
bool KeepConsole(unsigned long process, const std::string& file, const std::string& ready = {});

#endif
