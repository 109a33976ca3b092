// Looks for the decks of folders on a thread of its own.
#ifndef KR_UI_WINDOW_DECKSEARCH_H
#define KR_UI_WINDOW_DECKSEARCH_H

#include <memory>
#include <string>
#include <vector>

#include "core/DeckFolders.h"

// One search at a time; a disk that does not answer blocks its thread alone, the destructor does
// not wait. Interface thread.
class DeckSearch {
 public:
  struct Result {
    bool isWhole = false;  // nobody has cancelled it
    DecksFound found;      // without those that others include
    std::vector<std::string> included;
  };
  struct Progress {
    std::size_t folders = 0, decks = 0;  // looked at and found
    std::size_t read = 0, toRead = 0;    // for what they include
    bool ended = false;
  };

  ~DeckSearch() { Cancel(); }

  // The decks of these folders, and those below them, without those that others of them include.
  void Find(std::vector<std::string> folders);

  bool IsBusy() const { return shared_ != nullptr; }
  Progress Look() const;
  // Once it has ended; not busy then.
  Result Take();
  void Cancel();

 private:
  struct Shared;

  std::shared_ptr<Shared> shared_;
};

#endif
