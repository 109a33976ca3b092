#include "jobs/StageDecks.h"

#include <algorithm>

#include "util/files/FileDirWrapper.h"
#include "util/text/PlainText.h"

namespace {

bool IsDeckName(const std::string& name) {
  std::string ending;
  FileDirWrapper::ExtensionOf(name, ending);
  ending = Lower(ending);
  return ending == "dyn" || ending == "k" || ending == "key";
}

bool IsAbsolute(const std::string& path) {
  return path.find_first_of("/\\") == 0 || path.find(':') == 1;
}

}  // namespace

std::string IncludedPath(const std::string& deck, const std::string& name) {
  std::string path = name;
  if (!IsAbsolute(name)) {
    std::string folder;
    FileDirWrapper::DirOf(deck, folder);
    path = FileDirWrapper::Join(folder, name);
  }
  return FileDirWrapper::WithOwnSeparators(path);
}

std::vector<std::string> StageDecks(const JobFileDyna& job, const MessageSink& report) {
  std::vector<std::string> decks;
  if (!job.hasFirstStage) return decks;
  bool complete = true;
  for (const std::string& name : job.includes) {
    if (!IsDeckName(name)) continue;
    decks.push_back(IncludedPath(job.jobFile, name));
    if (FileDirWrapper::FileExists(decks.back())) continue;
    complete = false;
    if (report) report(Message(MessageId::kFileMissing, decks.back()));
  }
  if (!complete) decks.clear();
  return decks;
}
