#include "ui/window/DeckSearch.h"
#include "util/process/OwnThread.h"

#include <atomic>
#include <thread>
#include <utility>

struct DeckSearch::Shared {
  std::atomic<std::size_t> folders{0}, decks{0}, read{0}, toRead{0};
  std::atomic<bool> cancelled{false};
  std::atomic<bool> ended{false};
  Result result;  // the thread's until it has ended

  void Work(const std::vector<std::string>& inFolders) {
    DeckSearchHooks hooks;
    hooks.looked = [this](std::size_t looked, std::size_t found) {
      folders = looked;
      decks = found;
      return !cancelled;
    };
    hooks.read = [this](std::size_t done, std::size_t total) {
      read = done;
      toRead = total;
      return !cancelled;
    };
    result.isWhole = FindDecks(inFolders, hooks, result.found) &&
                     LeaveOutIncluded(result.found, result.included, hooks);
    ended = true;
  }
};

void DeckSearch::Find(std::vector<std::string> folders) {
  Cancel();
  shared_ = std::make_shared<Shared>();
  const auto failed = [shared = shared_](const std::exception&) {
    shared->result.isWhole = false;
    shared->ended = true;
  };
  const auto work = [shared = shared_, folders = std::move(folders)] { shared->Work(folders); };
  if (!StartGuarded(work, failed)) shared_->ended = true;
}

DeckSearch::Progress DeckSearch::Look() const {
  if (!shared_) return {};
  return {shared_->folders, shared_->decks, shared_->read, shared_->toRead, shared_->ended};
}

DeckSearch::Result DeckSearch::Take() {
  Result result;
  if (shared_ && shared_->ended) result = std::move(shared_->result);
  shared_.reset();
  return result;
}

void DeckSearch::Cancel() {
  if (shared_) shared_->cancelled = true;
}
