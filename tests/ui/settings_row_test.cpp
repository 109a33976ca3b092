// The settings between the tools and the tabs: what they show, what they store and where.

#include "ui/WindowFixture.h"

#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>

#include <algorithm>
#include <thread>

#include "ui/fltk/Field.h"

namespace {

class SettingsRowTest : public WindowTest {
 protected:
  Field& At(const std::string& label) { return Beside<Field>(Part<SettingsRow>(), label); }
  Field& Memory() { return At("Memory"); }
  Field& Cpus() { return At("No. of CPUs (ncpu=)"); }
  Field& Pause() { return At("Pause between Jobs"); }
  Field& Command() { return At("Command"); }
  Field& Solver() { return At("Solver:"); }
  Fl_Choice& Kind() { return Part<Fl_Choice>(); }
  bool IsRed(Field& field) { return Drawing(*window_).HasFrame(field, Theme::kError); }
  std::string Mpp() { return Drawing(*window_).Text(Part<StateButton>()); }
};

TEST_F(SettingsRowTest, WithoutAJobItEditsTheDefaults) {
  EXPECT_STREQ(Memory().value(), "500");
  TypeInto(Memory(), "750");
  TypeInto(Pause(), "1");
  EXPECT_EQ(Stored().memory_size, 750U);
  EXPECT_EQ(Stored().pause_time, 1);
  EXPECT_FALSE(Command().active());
  EXPECT_EQ(Drawing(*window_).Text(Command()), Say("ui_tip_command_none"));

  TypeInto(Cpus(), "many");
  EXPECT_TRUE(IsRed(Cpus()));
  EXPECT_FALSE(IsRed(Memory()));
  EXPECT_TRUE(LineSays(Say("ui_bad_cpu")));
  EXPECT_EQ(Stored().cpu_count, 1);
  Cpus().take_focus();
  PressKey(FL_Escape);
  EXPECT_STREQ(Cpus().value(), "1");
  EXPECT_FALSE(IsRed(Cpus()));
  EXPECT_EQ(Line(), "No jobs");
  TypeInto(Cpus(), "4");
  EXPECT_EQ(Stored().cpu_count, 4);
  Press(Find<Fl_Check_Button>(*window_, "Auto"));
  EXPECT_FALSE(Stored().memory_auto);
}

TEST_F(SettingsRowTest, EachKindHasItsProgramAndMppItsOwn) {
  Files().SetSolverPath(SolverKind::kVorel, "/opt/vorel");
  Choose(Kind(), "VOREL");
  EXPECT_STREQ(Solver().value(), "/opt/vorel");
  TypeInto(Solver(), "\"" + home_.Write("my vorel", "") + "\"");
  EXPECT_EQ(Stored().SolverPath(SolverKind::kVorel), home_ / "my vorel");
  EXPECT_EQ(Line(), "No jobs");
  TypeInto(Solver(), home_ / "missing");
  EXPECT_EQ(Stored().SolverPath(SolverKind::kVorel), home_ / "missing") << "it may come later";
  EXPECT_TRUE(LineSays(Say("ui_bad_solver")));
  TypeInto(Solver(), home_.Path());
  EXPECT_TRUE(LineSays(Say("ui_bad_folder")));

  EXPECT_EQ(Mpp(), "Not use MPP");
  Files().Set(&Settings::use_mpp, true);
  Files().Set(&Settings::mpi, 1);
  Files().Set(&Settings::mpp_solver_d, std::string("/opt/mpp_d"));
  PressKey(FL_F + 5);
  EXPECT_EQ(Mpp(), "MPP: Intel MPI");
  Choose(Kind(), "LS-DYNA (D)");
  EXPECT_STREQ(Solver().value(), "/opt/mpp_d");
  TypeInto(Solver(), "/opt/other_d");
  EXPECT_EQ(Stored().mpp_solver_d, "/opt/other_d");
  EXPECT_EQ(Stored().SolverPath(SolverKind::kLsDynaDouble), "");
  Files().Set(&Settings::mpi, 77);
  PressKey(FL_F + 5);
  EXPECT_EQ(Mpp(), "MPP: other launcher");
}

TEST_F(SettingsRowTest, WithAJobItEditsTheJob) {
  Add(MakeJob<JobFileDyna>("/w/one.k"));
  Add(MakeJob<JobFileDyna>("/w/two.k"));
  PressCell(Table(), 1, "Job Name");
  TypeInto(Memory(), "900");
  TypeInto(Command(), "extra=1");
  TypeInto(Cpus(), "3");
  TypeInto(Pause(), "7");
  Choose(Kind(), "LS-DYNA (D)");
  EXPECT_EQ(Rows()[0], "one.k|/w|LS-DYNA (S)|No|–|Queued|(View...)|(View...)|No|");
  EXPECT_EQ(Rows()[1], "two.k|/w|LS-DYNA (D)|No|900|Queued|(View...)|(View...)|No|extra=1");
  EXPECT_EQ(Stored().memory_size, 500U);
  TypeInto(Cpus(), "0");
  EXPECT_TRUE(IsRed(Cpus()));
  PressCell(Table(), 0, "Job Name");  // what is not valid stays with its job's field
  EXPECT_STREQ(Cpus().value(), "1") << "the settings' count";
  EXPECT_STREQ(Pause().value(), "0");
  EXPECT_FALSE(IsRed(Cpus()));
  PressCell(Table(), 1, "Job Name");
  EXPECT_STREQ(Cpus().value(), "0") << "what was typed for it";
  EXPECT_TRUE(IsRed(Cpus()));
  TypeInto(Cpus(), "3");
  EXPECT_STREQ(Pause().value(), "7");
  EXPECT_STREQ(Memory().value(), "900");
  EXPECT_STREQ(Command().value(), "extra=1");
  EXPECT_EQ(Kind().mode(static_cast<int>(SolverKind::kVorel)), FL_MENU_INACTIVE)
      << "a deck is no Vorel job";
  Table().TakeFocus();
  PressKey(FL_Escape);
  EXPECT_STREQ(Memory().value(), "500") << "no job: the defaults";
}

TEST_F(SettingsRowTest, ARejectedFieldKeepsJobsFromStarting) {
  AddJob("kept");
  PressKey(FL_Home);
  TypeInto(Memory(), "8o");
  Table().TakeFocus();
  for (const auto& submit : std::initializer_list<std::function<void()>>{
           [&] { PressKey(FL_Enter, FL_CTRL); }, [&] { Press(Part<PrimaryButton>()); }}) {
    submit();
    EXPECT_FALSE(Group()->Running());
    EXPECT_EQ(Fl::focus(), &Memory());
    EXPECT_TRUE(LineSays(Say("ui_bad_memory")));
    EXPECT_STREQ(Memory().value(), "8o");
  }
  // It belongs to its job, wherever the user looks meanwhile.
  AddJob("other");
  Table().TakeFocus();
  PressKey(FL_End);
  EXPECT_STREQ(Memory().value(), "500");
  Press(Part<PrimaryButton>());
  EXPECT_FALSE(Group()->Running());
  EXPECT_EQ(Table().CurrentJob(), Table().JobAt(0));
  EXPECT_EQ(Fl::focus(), &Memory());
  EXPECT_STREQ(Memory().value(), "8o");
  TypeInto(Memory(), "80");
  Run();
  EXPECT_EQ(JobIn(*Group(), Table().JobAt(0))->status, JobStatus::kFinished);
  EXPECT_EQ(JobIn(*Group(), Table().JobAt(0))->memory, 80U);
}

TEST_F(SettingsRowTest, AFieldShowsWhatAStartingJobHas) {
  AddJob("starts", "run 60");
  PressKey(FL_Home);
  Memory().take_focus();
  window_->Perform(Action::kSubmit);
  Key(*window_, '7', 0, "7");
  EXPECT_STREQ(Memory().value(), "5007");
  ASSERT_TRUE(Until([&] { return !Memory().active(); }));
  EXPECT_STREQ(Memory().value(), "500");
  EXPECT_TRUE(LineSays(Say("ui_running_fixed")));
}

TEST_F(SettingsRowTest, AMissingSolverIsSaidOnceAndMarked) {
  const auto status = [&](int row) { return JobIn(*Group(), Table().JobAt(row))->status; };
  EXPECT_FALSE(IsRed(Solver()));
  const std::string missing = home_ / "gone/ls-dyna";
  Files().SetSolverPath(SolverKind::kLsDynaSingle, missing);
  AddJob("one");
  AddJob("two");
  PressKey(FL_F + 5);
  EXPECT_TRUE(IsRed(Solver())) << "at once";
  std::string said = Answer([&] { PressKey(FL_Enter, FL_CTRL); }, "OK");
  std::replace(said.begin(), said.end(), '\n', ' ');
  EXPECT_EQ(said, window_->Texts().Format("ui_no_solver", "Group1") + " LS-DYNA (S): " + missing);
  EXPECT_FALSE(Group()->Running());
  EXPECT_EQ(status(0), JobStatus::kQueued);
  EXPECT_EQ(Fl::focus(), &Solver());
  EXPECT_TRUE(LineSays(Say("ui_bad_solver")));
  const Message news(MessageId::kFileMissing, "/w/a.k");
  std::thread([&] { notes_.Logged(news); }).join();
  EXPECT_TRUE(LineSays("/w/a.k")) << "an explanation hides nothing that a run tells";

  // Where some jobs can run, the others tell why they do not.
  Choose(Kind(), "LS-DYNA (D)");
  Files().SetSolverPath(SolverKind::kLsDynaDouble, KR_TEST_BIN_DIR "/standin_solver");
  Run();
  EXPECT_EQ(status(0), JobStatus::kFinished);
  EXPECT_EQ(status(1), JobStatus::kAborted);
  EXPECT_TRUE(LineSays(missing)) << Line();

  // Nor in a group that runs already.
  Files().SetSolverPath(SolverKind::kLsDynaSingle, KR_TEST_BIN_DIR "/standin_solver");
  AddJob("long", "run 60");
  for (int press = 0; press < 2; ++press) Press(Part<PrimaryButton>());
  ASSERT_TRUE(Until([&] { return status(2) == JobStatus::kRunning; }));
  window_->Perform(Action::kRefresh);
  EXPECT_TRUE(LineSays(window_->Texts().Format("ui_submit_again", "Group1"))) << Line();
  EXPECT_FALSE(LogHolds(Files(), "submit job failed")) << "a double click is no failure";
  Files().SetSolverPath(SolverKind::kLsDynaSingle, missing);
  AddJob("late");
  said = Answer([&] { window_->Perform(Action::kSubmit); }, "OK");
  EXPECT_NE(said.find(missing), std::string::npos);
}

TEST_F(SettingsRowTest, SomeJobsCannotBeEdited) {
  Add(MakeJob<JobFileDyna>("/w/runs.k", JobStatus::kRunning));
  auto stages = MakeJob<JobFileDyna>("/w/stages.k");
  stages->stages.push_back(MakeJob<JobFileDyna>("/w/stage.k"));
  Add(stages);
  PressCell(Table(), 0, "Job Name");
  for (Field* field : {&Memory(), &Cpus(), &Pause(), &Command()}) EXPECT_FALSE(field->active());
  EXPECT_FALSE(Kind().active());
  PressCell(Table(), 1, "Job Name");
  EXPECT_TRUE(Memory().active());
  EXPECT_FALSE(Command().active());
  EXPECT_EQ(Command().value(), Say("lab_cmd_mstage"));
}

TEST_F(SettingsRowTest, AutoTakesTheDecksMemory) {
  Files().Set(&Settings::memory_auto, false);
  auto job = MakeJob<JobFileDyna>("/w/asks.k");
  job->deckMemory = 800;
  Add(job);
  PressCell(Table(), 0, "Job Name");
  Press(Find<Fl_Check_Button>(*window_, "Auto"));
  EXPECT_STREQ(Memory().value(), "800");
}

}  // namespace
