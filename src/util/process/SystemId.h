// Inside util/process/ only.
#ifndef KR_UTIL_PROCESS_SYSTEMID_H
#define KR_UTIL_PROCESS_SYSTEMID_H

#include <string>

// What the system was given when it was installed; empty where it has none.
std::string SystemId();

#endif
