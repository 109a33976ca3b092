// New files, and second names of old ones.
#ifndef KR_SOLVERS_NEWFILE_H
#define KR_SOLVERS_NEWFILE_H

#include <cstdio>
#include <string>

// A new file for writing, with the rights of the file `like`, which children do not inherit. Null
// when it cannot be made or there is one already.
std::FILE* CreateFileLike(const std::string& path, const std::string& like);

// Keeps the file under another name too, which must be free: a second name where the file system
// has such, so that replacing the first leaves it; else a copy.
bool KeepAs(const std::string& path, const std::string& name);

#endif
