// The rows of the table of texts, in UTF-8. Included by the table only.
#ifndef KR_UI_TEXT_INTERFACETEXTS_H
#define KR_UI_TEXT_INTERFACETEXTS_H

#include <span>

struct TextRow {
  const char* key;
  const char* english;
  const char* chinese;
  bool asItStands = false;  // the Chinese text does not pass the conversion of the others
};

// The main window's own texts, and what was added to them; in the order in which they are set.
std::span<const TextRow> MainTexts();
std::span<const TextRow> MoreTexts();
std::span<const TextRow> MonitorTexts();

#endif
