// Adding files and folders to the queue, and keeping apart what shares a folder.

#include <FL/Fl.H>

#include <utility>

#include "core/SharedFolders.h"
#include "jobs/OutputPrefix.h"
#include "solvers/SolverKinds.h"
#include "ui/dialogs/ComnFileDialog.h"
#include "ui/dialogs/FileQuestions.h"
#include "ui/text/Encoding.h"
#include "ui/window/Flx_AppWnd.h"
#include "ui/window/KeywordFiles.h"
#include "ui/window/Layout.h"
#include "util/files/FileDirWrapper.h"

namespace {

constexpr std::size_t kMostListed = 8;  // names in a message
constexpr double kLookAgain = 0.1;      // seconds

}  // namespace

void Flx_AppWnd::AddJobs(SolverKind kind) {
  const SolverKindRow& row = RowOfKind(kind);
  const std::vector<std::string> paths =
      AskForFiles({this, texts_.Say(row.jobTitle), row.jobFilter,
                   application_.SettingsAndFiles().Get().last_path});
  FocusTable();
  // A deck may also be a job of another solver by its ending; other jobs are what they are chosen
  // for.
  AddFiles(paths, row.runsDecks ? std::nullopt : std::optional(kind));
}

std::optional<std::string> Flx_AppWnd::AskForFolder(const char* titleKey) {
  ComnFolder dialog;
  dialog.SetParentWindow(this);
  dialog.SetTitle(texts_.Get(titleKey));
  dialog.SetInitDir(application_.SettingsAndFiles().Get().last_path);
  const bool chosen = dialog.DoModal();
  FocusTable();
  return chosen ? std::optional(dialog.GetPath()) : std::nullopt;
}

void Flx_AppWnd::AddFolder() {
  if (const auto folder = AskForFolder("lab_addk_in_folder")) AddFiles({*folder});
}

void Flx_AppWnd::TakeDropped(void* self) {
  auto* window = static_cast<Flx_AppWnd*>(self);
  std::vector<std::string> paths;
  for (const std::string& path : DroppedPaths(window->dropped_)) paths.push_back(FromUi(path));
  if (!paths.empty()) window->AddFiles(paths);
}

void Flx_AppWnd::InformOfFiles(const char* key, const std::vector<std::string>& paths) {
  std::string text = texts_.Get(key);
  for (std::size_t index = 0; index < paths.size() && index < kMostListed; ++index)
    text += "\n" + ToUi(paths[index]);
  if (paths.size() > kMostListed)
    text += "\n" + texts_.Format("ui_more_files", std::to_string(paths.size() - kMostListed));
  Inform(text);
}

// Of folders, the keyword files become jobs.
void Flx_AppWnd::AddFiles(const std::vector<std::string>& paths, std::optional<SolverKind> kind) {
  const auto group = Group();
  if (!group) return;
  std::vector<std::string> files;
  std::vector<std::string> missing;
  for (const std::string& path : paths) {
    if (FileDirWrapper::IsFolder(path)) {
      folders_.push_back(path);
      application_.SettingsAndFiles().Set(&Settings::last_path, path);
    } else if (FileDirWrapper::FileExists(path)) {
      files.push_back(path);
      KeepFolderOf(path, application_.SettingsAndFiles(), &Settings::last_path);
    } else {
      missing.push_back(path);
    }
  }
  AddDecks(files, kind);
  if (!missing.empty()) InformOfFiles("ui_missing_files", missing);
  SearchNext();
}

void Flx_AppWnd::AddDecks(const std::vector<std::string>& files, std::optional<SolverKind> kind) {
  const auto group = Group();
  if (!group) return;
  std::vector<std::string> refused;
  for (const std::string& file : files) {
    if (!application_.SolverEnabled(kind.value_or(SolverKindOfFile(file)))) {
      refused.push_back(file);
      continue;
    }
    JobRequest request = MakeJobRequest(application_.SettingsAndFiles().Get());
    request.kind = kind;
    request.jobFile = file;
    request.groupId = group->Id();
    request.fromWindow = true;
    askApart_.insert(application_.Intake().Add(request));
  }
  if (!refused.empty()) InformOfFiles("ui_disabled_files", refused);
}

// Those that were added while another search was under way are looked for together.
void Flx_AppWnd::SearchNext() {
  if (search_.IsBusy() || folders_.empty()) return;
  search_.Find(std::exchange(folders_, {}));
  FollowSearch(this);
}

void Flx_AppWnd::FollowSearch(void* self) {
  auto* window = static_cast<Flx_AppWnd*>(self);
  if (window->leaving_) return;
  const DeckSearch::Progress progress = window->search_.Look();
  if (progress.ended) return window->TakeSearch();
  const bool reads = progress.toRead > 0;
  const std::string text =
      reads ? window->texts_.Format("ui_search_reading", std::to_string(progress.read + 1),
                                    std::to_string(progress.toRead))
            : window->texts_.Format("ui_searching", std::to_string(progress.folders),
                                    std::to_string(progress.decks));
  window->status_->SetProgress(text,
                               reads ? static_cast<int>(100 * progress.read / progress.toRead) : 0);
  Fl::add_timeout(kLookAgain, FollowSearch, self);
}

void Flx_AppWnd::TakeSearch() {
  const DeckSearch::Result result = search_.Take();
  status_->SetProgress({}, -1);
  if (!result.isWhole) {
    folders_.clear();
    return Say(texts_.Get("ui_search_cancelled"));
  }
  AddDecks(result.found.decks, {});
  if (!result.included.empty()) {
    std::string names;
    for (const std::string& deck : result.included) names += (names.empty() ? "" : ", ") + deck;
    application_.SettingsAndFiles().Log().Note(Message(MessageId::kIncludedLeftOut, names));
    Say(texts_.Format("ui_included_left_out", std::to_string(result.included.size())));
  }
  OfferBelow(result.found);
  if (result.found.decks.empty() && result.found.below.empty() && result.included.empty())
    Inform(texts_.Get("ui_no_keyword_files"));
  SearchNext();
}

// Beside those of folders that were added before, when nobody has answered yet; without those that
// were added now with their own folder.
void Flx_AppWnd::OfferBelow(const DecksFound& found) {
  const std::set<std::string> added(found.decks.begin(), found.decks.end());
  std::erase_if(below_, [&](const std::string& deck) { return added.contains(deck); });
  std::set<std::string> offered(below_.begin(), below_.end());
  std::set<std::string> folders;
  for (const std::string& deck : found.below) {
    if (offered.insert(deck).second) below_.push_back(deck);
  }
  if (below_.empty()) return ShowBar(*belowBar_, {});
  for (const std::string& deck : below_) {
    std::string folder;
    FileDirWrapper::DirOf(deck, folder);
    folders.insert(std::move(folder));
  }
  ShowBar(*belowBar_,
          texts_.Format("ui_below", std::to_string(below_.size()), std::to_string(folders.size())));
}

void Flx_AppWnd::AddBelow(bool add) {
  ShowBar(*belowBar_, {});
  FocusTable();
  const std::vector<std::string> decks = std::exchange(below_, {});
  if (add) AddDecks(decks, {});
}

// For what was added here and still waits; once all of it has been read.
void Flx_AppWnd::AskApart() {
  const bool asks = application_.SettingsAndFiles().Get().separate_results == kAskApart;
  if (!asks) askApart_.clear();
  SharedResults shared;
  if (!askApart_.empty()) shared = FindSharedResults(application_.Manager(), askApart_);
  if (shared.separable.empty()) {
    ForgetAsked();
    return ShowBar(*apart_, {});
  }
  const std::string jobs = std::to_string(shared.jobs);
  const std::size_t folders = shared.folders.size();
  ShowBar(*apart_, folders == 1 ? texts_.Format("ui_apart", jobs)
                                : texts_.Format("ui_apart_folders", jobs, std::to_string(folders)));
}

// Those that have become jobs; others are still read.
void Flx_AppWnd::ForgetAsked() {
  JobGroupManager& manager = application_.Manager();
  for (int index = 0; index < manager.GroupCount() && !askApart_.empty(); ++index) {
    for (const JobId job : manager.GroupAt(index)->JobIds()) askApart_.erase(job);
  }
}

void Flx_AppWnd::AnswerApart(bool apart) {
  JobGroupManager& manager = application_.Manager();
  const std::vector<JobId> jobs = FindSharedResults(manager, askApart_).separable;
  // Of decks that are still read it is asked again: nobody knew of them.
  ForgetAsked();
  ShowBar(*apart_, {});
  FocusTable();
  if (!apart) return;
  SayApart(undo_.KeepApart(jobs));
}

std::optional<bool> Flx_AppWnd::SelectedAreApart() const {
  std::optional<bool> all;
  const auto group = Group();
  if (!group || !Table()) return all;
  const std::vector<JobId> selected = Table()->SelectedJobs();
  const std::set<JobId> jobs(selected.begin(), selected.end());
  group->ReadJobs([&](const JobFile& job) {
    if (!jobs.contains(job.id) || !CanKeepApart(job)) return;
    all = all.value_or(true) && !OutputPrefix(job).empty();
  });
  return all;
}

void Flx_AppWnd::SwitchApart() {
  const std::optional<bool> apart = SelectedAreApart();
  if (!apart) return;
  const std::vector<JobId> jobs = Table()->SelectedJobs();
  if (!*apart) {
    SayApart(undo_.KeepApart(jobs));
  } else {
    SayEdited(undo_.SetField(Group(), jobs, JobField::kOutputName, std::string()));
  }
}

void Flx_AppWnd::SayApart(int jobs) {
  Say(texts_.Format("ui_apart_done", std::to_string(jobs)));
}

void Flx_AppWnd::ShowBar(NoticeBar& bar, const std::string& text) {
  const bool asked = bar.Asks();
  bar.SetText(text);
  if (asked == bar.Asks()) return;
  LayOut();
  redraw();
}
