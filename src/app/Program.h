// The program from its arguments to its exit code.
#ifndef KR_APP_PROGRAM_H
#define KR_APP_PROGRAM_H

#include <string>
#include <vector>

// The arguments in the system's code page, the program's name first.
int RunProgram(std::vector<std::string> arguments);

#endif
