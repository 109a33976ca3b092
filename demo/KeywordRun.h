// One run of the keyword solver: from the command line to the exit code.
#ifndef STANDIN_KEYWORDRUN_H
#define STANDIN_KEYWORDRUN_H

#include "Options.h"

int RunKeywordSolver(const Options& options, const std::string& programName);

#endif
