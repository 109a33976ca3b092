// This computer's address, for job identifiers.
#ifndef KR_JOBS_HOSTADDRESS_H
#define KR_JOBS_HOSTADDRESS_H

#include <string>

// The first IPv4 address that is not a loopback one, as dotted text; "127.0.0.1" when there is
// none. Asks no name server. Found once in the life of the process; any thread.
const std::string& HostAddress();

#endif
