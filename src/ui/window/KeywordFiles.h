// What is dropped on the window, and the keyword files of a folder.
#ifndef KR_UI_WINDOW_KEYWORDFILES_H
#define KR_UI_WINDOW_KEYWORDFILES_H

#include <string>
#include <vector>

// The paths in a dropped text: "file://" addresses with "%20" and the like, or plain paths, one a
// line. Comments and addresses of other kinds are left out. UTF-8 in, UTF-8 out.
std::vector<std::string> DroppedPaths(const std::string& text);

// The folder's files "*.dyn" and "*.k", in any case, sorted by name; folders in it are not entered.
std::vector<std::string> KeywordFiles(const std::string& folder);

#endif
