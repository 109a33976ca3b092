// Names of the temporary files that FileDirWrapper::WriteFileWhole makes beside a file. Inside
// util/ only; any thread.
#ifndef KR_UTIL_FILES_TEMPNAME_H
#define KR_UTIL_FILES_TEMPNAME_H

#include <optional>
#include <string>

std::string TempName(unsigned long processId, unsigned number);

// The process that makes files of this name; none for a name of another kind.
std::optional<unsigned long> OwnerOfTempName(const std::string& name);

#endif
