// Reads the HTML of help pages, which may be anything, and makes what the toolkit shows safely.
#ifndef KR_UI_HELP_HELPPAGE_H
#define KR_UI_HELP_HELPPAGE_H

#include <functional>
#include <string>
#include <vector>

#include "ui/help/HelpBook.h"

// What the toolkit's help view gets: only tags and attributes that it knows and that reach no file,
// tables and lists not nested too deep. Each link's address is replaced by what `address` makes of
// it; links for which it is empty become plain text.
std::string SafePage(const std::string& html,
                     const std::function<std::string(const std::string& link)>& address);

// The page's title; empty when it has none.
std::string TitleOf(const std::string& html);

// The lines of a contents file.
std::vector<HelpEntry> ParseContents(const std::string& html);

#endif
