// The text of the host file.
#ifndef KR_CORE_HOSTFILETEXT_H
#define KR_CORE_HOSTFILETEXT_H

#include <string>
#include <vector>

// The lines that name hosts: not empty, no comment.
std::vector<std::string> HostLinesOf(const std::string& text);

// The text with its host lines replaced. Comments stay where they are, host lines that are the same
// at the beginning and end of both lists too; the line ends are the text's own.
std::string WithHostLines(const std::string& text, const std::vector<std::string>& hosts);

#endif
