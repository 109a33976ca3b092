// What is done to several selected jobs at once, and taken back.

#include "ui/WindowFixture.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Text_Display.H>

#include "ui/dialogs/Flx_ShowCommand.h"
#include "ui/fltk/Field.h"

namespace {

using Names = std::vector<std::string>;

class SelectionTest : public WindowTest {
 protected:
  void SetUp() override {
    WindowTest::SetUp();
    for (const char* name : {"/w/a.k", "/w/b.k", "/v/c.k", "/w/d.k"}) AddDeck(name);
  }
  std::shared_ptr<JobFileDyna> AddDeck(const std::string& name,
                                       JobStatus status = JobStatus::kQueued) {
    jobs_.push_back(MakeJob<JobFileDyna>(name, status));
    Add(jobs_.back());
    return jobs_.back();
  }
  Names Shown() {
    Names names;
    for (const std::string& row : Rows()) names.push_back(row.substr(0, row.find('|')));
    return names;
  }
  Field& Cpus() { return Beside<Field>(Part<SettingsRow>(), "No. of CPUs (ncpu=)"); }
  std::string Answered(int key, const char* button) {
    return Answer([&] { PressKey(key); }, button);
  }

  std::vector<std::shared_ptr<JobFileDyna>> jobs_;
};

TEST_F(SelectionTest, AFieldInWhichJobsDifferSaysSoAndChangesWhenTypedInto) {
  Add(MakeJob<JobFileVorel>("/w/e.dat"));
  jobs_[1]->ncpu = 8;
  jobs_[2]->status = JobStatus::kRunning;
  PressKey('a', FL_CTRL);
  EXPECT_STREQ(Cpus().value(), "");
  EXPECT_EQ(Drawing(*window_).Text(Cpus()), "various");
  EXPECT_EQ(Drawing(*window_).Text(Part<Fl_Choice>()), "various");
  EXPECT_STREQ(Beside<Field>(Part<SettingsRow>(), "Memory").value(), "0");
  Cpus().take_focus();
  PressKey(FL_Tab);
  EXPECT_EQ(jobs_[1]->ncpu, 8) << "nothing was typed";
  TypeInto(Cpus(), "4");
  EXPECT_EQ(jobs_[0]->ncpu, 4);
  EXPECT_EQ(jobs_[1]->ncpu, 4);
  EXPECT_NE(jobs_[2]->ncpu, 4);
  EXPECT_TRUE(LineSays("Left out, since running: 1 of 5."));
  Cpus().take_focus();
  Cpus().value("6");
  Cpus().do_callback();
  PressKey(FL_Enter);
  EXPECT_EQ(jobs_[0]->ncpu, 6);
  PressKey('z', FL_CTRL);
  EXPECT_EQ(jobs_[0]->ncpu, 4) << "as the status line says, although the field has the focus";
  Table().TakeFocus();
  PressKey('i', FL_CTRL | FL_SHIFT);
  EXPECT_TRUE(jobs_[0]->useSFile);
  EXPECT_FALSE(jobs_[2]->useSFile);
  PressKey('z', FL_CTRL);
  EXPECT_FALSE(jobs_[0]->useSFile);
  EXPECT_TRUE(LineSays("The change of 3 jobs is taken back."));
  PressKey('z', FL_CTRL);
  EXPECT_EQ(jobs_[1]->ncpu, 8);

  jobs_[0]->deckMemory = 700;
  jobs_[1]->deckMemory = 900;
  for (int twice = 0; twice < 2; ++twice) Press(Find<Fl_Check_Button>(*window_, "Auto"));
  EXPECT_EQ(jobs_[0]->memory, 700U);
  EXPECT_EQ(jobs_[1]->memory, 900U);
  Table().TakeFocus();
  PressKey('z', FL_CTRL);
  EXPECT_EQ(jobs_[0]->memory + jobs_[1]->memory, 0U) << "one step";
}

TEST_F(SelectionTest, DeletedJobsAndGroupsComeBack) {
  PressKey('z', FL_CTRL);
  PressKey(FL_Home);
  PressKey(FL_Down);
  PressKey(FL_Down, FL_SHIFT);
  PressKey(FL_Up, FL_CTRL);
  EXPECT_EQ(Shown(), (Names{"b.k", "c.k", "a.k", "d.k"})) << "as a block";
  EXPECT_EQ(Answered(FL_Delete, "Yes"), "Really delete these 2 jobs?");
  EXPECT_EQ(Shown(), (Names{"a.k", "d.k"}));
  EXPECT_TRUE(LineSays("2 jobs deleted. Ctrl+Z brings them back."));
  const auto group = Group();
  PressKey('t', FL_CTRL);
  PressKey(FL_Tab, FL_CTRL);
  Answer([&] { PressTool("tip_del_group"); }, "Yes");
  EXPECT_NE(Group(), group);
  PressKey('z', FL_CTRL);
  EXPECT_EQ(Group(), group);
  PressKey('z', FL_CTRL);
  EXPECT_EQ(Shown(), (Names{"b.k", "c.k", "a.k", "d.k"}));
  EXPECT_EQ(Table().SelectedJobs().size(), 2U);
  PressKey('z', FL_CTRL);
  EXPECT_EQ(Shown(), (Names{"a.k", "b.k", "c.k", "d.k"}));
}

TEST_F(SelectionTest, FailedJobsRunAgainAndStoppedOnesWhenThereAreNoOthers) {
  for (const auto& job : jobs_) job->status = JobStatus::kAborted;
  jobs_[0]->status = JobStatus::kFinished;
  jobs_[1]->SetHowFailed({FailureKind::kStopped});
  PressKey('r', FL_CTRL | FL_SHIFT);
  EXPECT_EQ(jobs_[1]->status, JobStatus::kAborted);
  EXPECT_EQ(jobs_[2]->status, JobStatus::kQueued);
  EXPECT_TRUE(LineSays("2 jobs are queued again. \"Submit Jobs\" starts the queue."));
  PressKey('r', FL_CTRL | FL_SHIFT);
  EXPECT_EQ(jobs_[1]->status, JobStatus::kQueued);
  EXPECT_EQ(jobs_[0]->status, JobStatus::kFinished);
  PressKey('z', FL_CTRL);
  EXPECT_EQ(jobs_[1]->HowFailed().kind, FailureKind::kStopped);
}

TEST_F(SelectionTest, KeysOfAFieldAreItsOwn) {
  PressKey('a', FL_CTRL);
  PressKey('c', FL_CTRL);
  EXPECT_TRUE(LineSays("4 paths are copied."));
  Answered(FL_Delete, "Yes");
  auto& cpus = Cpus();
  cpus.take_focus();
  cpus.position(0, 0);
  for (const int key : {'z', 'c', 'a'}) PressKey(key, FL_CTRL);
  EXPECT_EQ(Group()->JobCount(), 0)
      << "the field has nothing to take back, and the window does not";
  EXPECT_EQ(Line().find("paths are copied."), std::string::npos);
}

TEST_F(SelectionTest, CommandLinesAndSummariesOfSeveralJobsShow) {
  PressKey('a', FL_CTRL);
  std::string text;
  Talk([&] { PressKey('k', FL_CTRL); }, {[&](Fl_Window& dialog) {
         auto& display = Find<Fl_Text_Display>(dialog);
         EXPECT_TRUE(Until([&] { return Find<Fl_Button>(dialog, "Copy").active() != 0; }));
         char* const shown = display.buffer()->text();
         text = shown;
         std::free(shown);
         Press(Find<Fl_Button>(dialog, "Copy"));
         Key(dialog, FL_Escape);
       }});
  EXPECT_NE(text.find("/v/c.k\nCommand: "), std::string::npos) << text;
  EXPECT_NE(text.find("standin_solver i=/w/d.k"), std::string::npos) << text;
  EXPECT_NE(text.find("As things are, it cannot start: "), std::string::npos) << text;
  jobs_[0]->status = JobStatus::kFinished;
  jobs_[3]->status = JobStatus::kAborted;
  Talk([&] { PressKey('i', FL_CTRL); }, {[&](Fl_Window& dialog) {
         text = Drawing(dialog).Text(dialog);
         Key(dialog, FL_Escape);
       }});
  EXPECT_NE(text.find("a.k: Successful"), std::string::npos) << text;
  EXPECT_NE(text.find("d.k: Failed"), std::string::npos) << text;
}

}  // namespace
