#include "core/DeckFolders.h"

#include <algorithm>
#include <deque>
#include <set>
#include <unordered_map>

#include "jobs/DeckScan.h"
#include "jobs/StageDecks.h"
#include "solvers/SolverKinds.h"
#include "util/files/FileDirWrapper.h"

namespace {

bool IsDeck(const std::string& path) {
  return HasJobEnding(RowOfKind(SolverKind::kLsDynaSingle), path);
}

// Folders and names one after another: "a/z.k" comes before "a/b/c.k".
bool ComesBefore(const std::string& a, const std::string& b) {
  std::string folderA, folderB;
  FileDirWrapper::DirOf(a, folderA);
  FileDirWrapper::DirOf(b, folderB);
  return folderA != folderB ? folderA < folderB : a < b;
}

// For each deck the places of those that it includes itself.
class Includes {
 public:
  // False when the hook ended it.
  bool Read(const std::vector<std::string>& decks, const DeckSearchHooks& hooks) {
    for (std::size_t i = 0; i < decks.size(); ++i) {
      // Its spelling may differ in each deck.
      placeOf_.emplace(FileDirWrapper::IdentityOf(decks[i]), i);
    }
    includes_.resize(decks.size());
    for (std::size_t i = 0; i < decks.size(); ++i) {
      const auto goesOn = [&] { return !hooks.read || hooks.read(i, decks.size()); };
      if (!goesOn()) return false;
      JobFileDyna job{Settings()};
      job.jobFile = decks[i];
      DeckScanHooks scan;
      bool ended = false;
      scan.progress = [&](std::uint64_t, std::uint64_t) { return !(ended = !goesOn()); };
      ScanDeck(job, scan);
      if (ended) return false;
      for (const std::string& name : job.includes) Add(i, IncludedPath(decks[i], name));
    }
    return true;
  }

  // Which of them another one includes.
  std::vector<bool> Included() const {
    std::vector<bool> isNamed(includes_.size()), reached(includes_.size());
    for (const auto& of : includes_) {
      for (const std::size_t place : of) isNamed[place] = true;
    }
    for (std::size_t i = 0; i < includes_.size(); ++i) {
      if (!isNamed[i]) Reach(i, reached);
    }
    // What is left is named by decks in a circle.
    for (std::size_t i = 0; i < includes_.size(); ++i) {
      if (isNamed[i] && !reached[i]) {
        Reach(i, reached);
        reached[i] = false;
        isNamed[i] = false;
      }
    }
    return reached;
  }

 private:
  void Add(std::size_t deck, const std::string& path) {
    const auto found = placeOf_.find(FileDirWrapper::IdentityOf(path));
    if (found != placeOf_.end() && found->second != deck) includes_[deck].push_back(found->second);
  }

  void Reach(std::size_t from, std::vector<bool>& reached) const {
    std::vector<std::size_t> open = {from};
    while (!open.empty()) {
      const std::size_t deck = open.back();
      open.pop_back();
      for (const std::size_t place : includes_[deck]) {
        if (reached[place]) continue;
        reached[place] = true;
        open.push_back(place);
      }
    }
  }

  std::unordered_map<std::string, std::size_t> placeOf_;  // by identity
  std::vector<std::vector<std::size_t>> includes_;
};

}  // namespace

bool FindDecks(const std::vector<std::string>& folders, const DeckSearchHooks& hooks,
               DecksFound& found) {
  std::set<std::string> seen;
  std::deque<std::string> open(folders.begin(), folders.end());
  const std::size_t asked = open.size();
  for (std::size_t looked = 0; !open.empty(); ++looked) {
    const std::string folder = std::move(open.front());
    open.pop_front();
    if (hooks.looked && !hooks.looked(looked, found.decks.size() + found.below.size())) {
      return false;
    }
    const std::string identity = FileDirWrapper::IdentityOf(folder);
    if (identity.empty() || !seen.insert(identity).second) continue;
    std::vector<std::string> files, inside;
    FileDirWrapper::ListDir(folder, files, inside, false);
    std::erase_if(files, [](const std::string& file) { return !IsDeck(file); });
    std::vector<std::string>& to = looked < asked ? found.decks : found.below;
    to.insert(to.end(), files.begin(), files.end());
    std::erase_if(inside, [](const std::string& path) {
      return FileDirWrapper::NameOf(path).starts_with('.');
    });
    open.insert(open.end(), inside.begin(), inside.end());
  }
  std::sort(found.decks.begin(), found.decks.end(), ComesBefore);
  std::sort(found.below.begin(), found.below.end(), ComesBefore);
  return true;
}

bool LeaveOutIncluded(DecksFound& found, std::vector<std::string>& included,
                      const DeckSearchHooks& hooks) {
  std::vector<std::string> all = found.decks;
  all.insert(all.end(), found.below.begin(), found.below.end());
  Includes includes;
  if (!includes.Read(all, hooks)) return false;
  const std::vector<bool> leave = includes.Included();
  DecksFound stay;
  for (std::size_t i = 0; i < all.size(); ++i) {
    std::vector<std::string>& with = i < found.decks.size() ? stay.decks : stay.below;
    (leave[i] ? included : with).push_back(std::move(all[i]));
  }
  found = std::move(stay);
  return true;
}
