// What is dropped on the window.
#ifndef KR_UI_WINDOW_KEYWORDFILES_H
#define KR_UI_WINDOW_KEYWORDFILES_H

#include <string>
#include <vector>

// The paths in a dropped text: "file://" addresses with "%20" and the like, or plain paths, one a
// line. Comments and addresses of other kinds are left out. UTF-8 in, UTF-8 out.
std::vector<std::string> DroppedPaths(const std::string& text);

#endif
