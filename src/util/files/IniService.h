// Private-profile files: the system's own service, or one with the same rules. Inside util/ only.
//
// Names are not empty and hold no line end. Nothing is reported, as the system's service is not
// looked at either. Any thread.
#ifndef KR_UTIL_FILES_INISERVICE_H
#define KR_UTIL_FILES_INISERVICE_H

#include <cstddef>
#include <string>

namespace ini_service {

constexpr std::size_t kLongestValue = 4095;       // bytes
constexpr std::size_t kSectionListBuffer = 2048;  // bytes, with the list's two last zeros

// Empty when file, section or key is missing.
std::string ReadValue(const std::string& section, const std::string& key,
                      const std::string& fileName);

// A null value removes the key, a null key the section.
void Write(const std::string& section, const std::string* key, const std::string* value,
           const std::string& fileName);

// The names, each followed by a zero byte, as far as they fit: the last may be cut.
std::string SectionNames(const std::string& fileName);

}  // namespace ini_service

#endif
