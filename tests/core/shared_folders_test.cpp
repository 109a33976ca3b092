// Jobs that share a folder, and folders that are added whole.
#include "core/SharedFolders.h"

#include "core/DeckFolders.h"
#include "core/JobIntake.h"
#include "core/QueueUndo.h"
#include "GroupFixture.h"

namespace {

class SharedFolders : public GroupTest {
 protected:
  JobId Add(const std::string& deck, bool fromWindow = true) {
    JobRequest request = MakeJobRequest(files_.Get());
    request.jobFile = Deck(deck);
    request.fromWindow = fromWindow;
    return intake_.Add(request);
  }
  std::string NameOf(JobId job) const {
    return dynamic_cast<JobFileDyna*>(JobIn(*Group(), job))->outputName;
  }
  // Paths in the home, without it.
  std::vector<std::string> Short(std::vector<std::string> paths) const {
    for (std::string& path : paths) {
      path.erase(0, home_.Path().size() + 1);
      std::replace(path.begin(), path.end(), '\\', '/');
    }
    return paths;
  }

  JobIntake intake_{*manager_};
};

using Paths = std::vector<std::string>;

TEST_F(SharedFolders, ThoseThatCanBeKeptApartGetNamesOfTheirOwn) {
  for (const char* folder : {"run", "alone"}) std::filesystem::create_directory(home_ / folder);
  const JobId alone = Add("alone/a.k");
  const JobId a = Add("run/a.k"), again = Add("run/A.dyn"), b = Add("run/b.k");
  const JobId typed = Add("run/c.k"), ended = Add("run/d.k");
  intake_.Drain();
  EXPECT_TRUE(Group()->SetExtraOptions(typed, "jobid=B"));
  JobIn(*Group(), ended)->status = JobStatus::kFinished;
  EXPECT_EQ(FindSharedResults(*manager_, {alone, typed}).jobs, 0);
  const SharedResults shared = FindSharedResults(*manager_, {alone, a});
  EXPECT_EQ(shared.jobs, 4) << "the one that has ended would lose its results too";
  EXPECT_EQ(shared.folders.size(), 1u);
  EXPECT_EQ(shared.separable, (std::vector{a, again, b}));
  EXPECT_EQ(KeepResultsApart(*manager_, shared.separable), 3);
  EXPECT_EQ(NameOf(a) + " " + NameOf(again) + " " + NameOf(b), "a A_2 b_2");
  EXPECT_EQ(FindSharedResults(*manager_, {a}).jobs, 0);
  EXPECT_EQ(PrefixesBeside(*manager_, *JobIn(*Group(), a)), (Paths{"A_2.", "b_2.", "B."}));
}

TEST_F(SharedFolders, ANameBelongsToOneJob) {
  std::filesystem::create_directory(home_ / "run");
  manager_->AddGroup("Group2");
  QueueUndo undo(*manager_);
  const auto names = [&] {
    std::string text;
    for (int group = 0; group < manager_->GroupCount(); ++group) {
      Group(group)->ReadJobs([&](const JobFile& job) {
        text += dynamic_cast<const JobFileDyna&>(job).outputName + ' ';
      });
    }
    return text;
  };
  const auto add = [&](const std::string& deck, int group = 0) {
    JobRequest request = MakeJobRequest(files_.Get());
    request.jobFile = Deck(deck);
    request.groupId = Group(group)->Id();
    return intake_.Add(request);
  };
  const JobId a = add("run/a.k"), c = add("run/c.k");
  intake_.Drain();
  undo.KeepApart({a, c});
  undo.Remove(Group(), {a});
  const JobId other = add("run/a.dyn", 1);
  intake_.Drain();
  undo.KeepApart({other});
  EXPECT_EQ(names(), "c a ");
  undo.Undo();
  EXPECT_EQ(names(), "c  ") << "keeping apart is taken back, in the group that it was in";
  undo.KeepApart({other});
  EXPECT_EQ(names(), "c a ");
  undo.Undo(), Group(1)->Set(other, JobField::kOutputName, std::string("A"));
  undo.Undo();
  EXPECT_EQ(names(), "a_2 c A ") << "the one that comes back takes another name";
  EXPECT_TRUE(LogHolds(files_, "has its results called [A]; those of ["));
  EXPECT_TRUE(LogHolds(files_, "a.k] will be called [a_2]"));
  // Under which one has run is its own.
  EXPECT_TRUE(Group()->Set(a, JobField::kOutputName, std::string("A")));
  JobIn(*Group(), a)->status = JobStatus::kFinished;
  EXPECT_FALSE(Group()->Set(a, JobField::kOutputName, std::string()));
  TakeFreeNames(*manager_, {a});
  EXPECT_EQ(names(), "A c a_2 ");
  // A job that goes on from a dump has the name of those who wrote it.
  JobIn(*Group(), c)->restartFile = home_ / "run/a.d3dump01";
  EXPECT_TRUE(Group()->Set(c, JobField::kOutputName, std::string("a")));
  TakeFreeNames(*manager_, {c});
  EXPECT_EQ(names(), "A a a_2 ");
  // What nobody has seen coming is mended when its run begins.
  EXPECT_TRUE(Group(1)->Set(other, JobField::kOutputName, std::string("a")));
  ASSERT_TRUE(Group(1)->Submit());
  ASSERT_TRUE(WaitForEnd(*Group(1)));
  EXPECT_EQ(names(), "A a a_2 ");
  EXPECT_TRUE(std::filesystem::exists(home_ / "run/a_2.d3plot"));
}

TEST_F(SharedFolders, TheSettingsDecideForThoseOfNoWindow) {
  const auto log = [this] { return TempFolder::Read(files_.Log().Path()); };
  const std::string line = "write over each other's results";
  std::filesystem::create_directory(home_ / "run");
  files_.Set(&Settings::separate_results, 0);
  Add("run/a.k", false), Add("run/b.k", false);
  intake_.Drain();
  EXPECT_EQ(log().find(line), std::string::npos);
  files_.Set(&Settings::separate_results, 1);
  std::filesystem::create_directory(home_ / "second");
  for (const char* deck : {"second/a.k", "second/b.k", "second/c.k"}) Add(deck, false);
  Add("run/c.k");
  intake_.Drain();
  const std::size_t told = log().find(line);
  EXPECT_NE(told, std::string::npos);
  EXPECT_EQ(log().find(line, told + 1), std::string::npos) << "once for a folder";
  EXPECT_EQ(NameOf(Id(0)), "");

  files_.Set(&Settings::separate_results, 2);
  const JobId d = Add("run/d.k", false);
  std::filesystem::create_directory(home_ / "third");
  const JobId alone = Add("third/a.k", false);
  intake_.Drain();
  EXPECT_EQ(NameOf(d), "d");
  EXPECT_EQ(NameOf(Id(0)), "a") << "those that wait there too";
  EXPECT_EQ(NameOf(alone), "");
}

TEST_F(SharedFolders, ATreeIsSearchedOnceAndIncludedDecksAreLeftOut) {
  for (const char* folder : {"tree/run1/deep", "tree/run2", "tree/.git"})
    std::filesystem::create_directories(home_ / folder);
  for (const char* name : {"b.K", "a.dyn", "c.Key", "k", "e.k.bak"})
    home_.Write(std::string("tree/") + name, "*KEYWORD\n*END\n");
  home_.Write("tree/main.k", "*KEYWORD\n*INCLUDE\nb.K\n*INCLUDE\nrun2/x.k\n*END\n");
  home_.Write("tree/b.K", "*KEYWORD\n*INCLUDE\nc.Key\n*END\n");
  for (const char* name : {"run1/x.k", "run1/deep/x.k", "run2/x.k", ".git/x.k"})
    home_.Write(std::string("tree/") + name, "*KEYWORD\n*END\n");
  std::error_code noLinks;
  std::filesystem::create_directory_symlink(home_ / "tree", home_ / "tree/run1/loop", noLinks);

  DecksFound found;
  std::size_t folders = 0;
  DeckSearchHooks hooks;
  hooks.looked = [&](std::size_t looked, std::size_t) { return folders = looked, true; };
  ASSERT_TRUE(FindDecks({home_ / "tree"}, hooks, found));
  EXPECT_LT(folders, 6u);
  EXPECT_EQ(Short(found.decks), (Paths{"tree/a.dyn", "tree/b.K", "tree/c.Key", "tree/main.k"}));
  EXPECT_EQ(Short(found.below), (Paths{"tree/run1/x.k", "tree/run1/deep/x.k", "tree/run2/x.k"}));
  Paths included;
  home_.Write("tree/run1/x.k", "*KEYWORD\n*INCLUDE\n../a.dyn\n*END\n");
  ASSERT_TRUE(LeaveOutIncluded(found, included, {}));
  EXPECT_EQ(Short(found.decks), Paths{"tree/main.k"});
  EXPECT_EQ(Short(found.below), (Paths{"tree/run1/x.k", "tree/run1/deep/x.k"}));
  EXPECT_EQ(Short(included), (Paths{"tree/a.dyn", "tree/b.K", "tree/c.Key", "tree/run2/x.k"}));

  // A circle, and one of it includes a third.
  home_.Write("tree/c.Key", "*KEYWORD\n*INCLUDE\nb.K\n*INCLUDE\na.dyn\n*END\n");
  DecksFound circle{{home_ / "tree/a.dyn", home_ / "tree/b.K", home_ / "tree/c.Key"}, {}};
  included.clear();
  ASSERT_TRUE(LeaveOutIncluded(circle, included, {}));
  EXPECT_EQ(Short(circle.decks), Paths{"tree/b.K"});
  EXPECT_EQ(included.size(), 2u);

  hooks.looked = [](std::size_t, std::size_t) { return false; };
  EXPECT_FALSE(FindDecks({home_ / "tree"}, hooks, found));
  hooks.read = [](std::size_t, std::size_t) { return false; };
  EXPECT_FALSE(LeaveOutIncluded(circle, included, hooks));
  EXPECT_EQ(circle.decks.size(), 1u);
}

}  // namespace
