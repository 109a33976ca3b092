// Puts values into the texts of the tables.
#ifndef KR_MESSAGES_FILLEDTEXT_H
#define KR_MESSAGES_FILLEDTEXT_H

#include <functional>
#include <string>
#include <string_view>

// `give` makes the values of "%p", "%s", "%d" and "%m", in their order and of that letter; any
// other "%" stands for itself. Of "{job|jobs}" the first holds when the value before it is 1, and
// when there is none: "%s {job waits|jobs wait}". Values are taken as they are. Any thread.
std::string FilledText(std::string_view text, const std::function<std::string(char letter)>& give);

#endif
