// Ending one process at once, for PTWrapperProcess::Terminate(exeName). Any thread.
#ifndef KR_UTIL_PROCESS_PROCESSBYNAME_H
#define KR_UTIL_PROCESS_PROCESSBYNAME_H

#include <cstdint>

bool KillProcess(std::int32_t processId);
std::int32_t OwnProcessId();

#endif
