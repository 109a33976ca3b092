// A text in both languages of the interface.
#ifndef KR_MESSAGES_BOTHLANGUAGES_H
#define KR_MESSAGES_BOTHLANGUAGES_H

// For tables whose rows hold more than texts. Both in UTF-8; neither is null.
struct BothLanguages {
  const char* english;
  const char* chinese;
};

#endif
