// Makes files that children do not inherit.
#ifndef KR_SOLVERS_NEWFILE_H
#define KR_SOLVERS_NEWFILE_H

#include <cstdio>
#include <string>

// A new file for writing, with the rights of the file `like`. Null when it cannot be made or there
// is one already.
std::FILE* CreateFileLike(const std::string& path, const std::string& like);

#endif
