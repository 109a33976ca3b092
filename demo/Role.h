// Which of the four solvers the stand-in plays.
#ifndef STANDIN_ROLE_H
#define STANDIN_ROLE_H

#include <string>
#include <vector>

enum class Role { kKeyword, kUtilityBatch, kVorel, kInc };

// By the program's name when that says so, whatever blanks, "_" and case: KVIN..., Vorel...,
// UtilityBatch... Under another name by the form of the command line: with three words whose second
// is a folder it is INC; when the first word names a file it is the utility batch program, when
// that file needs ".dat" behind it, Vorel; else it is the keyword solver.
Role FindRole(const std::string& programName, const std::vector<std::string>& words);

#endif
