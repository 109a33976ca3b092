// The group tabs and the line at the bottom of the main window.

#include "ui/WindowFixture.h"

#include <FL/Fl_Button.H>
#include <FL/fl_draw.H>

#include "ui/window/Layout.h"

namespace {

class GroupTabsTest : public WindowTest {
 protected:
  std::string Tabs() { return Drawing(*window_).Text(Part<GroupTabs>()); }
  std::string Current() {
    for (const Drawn& drawn : Drawing(*window_).In(Part<GroupTabs>())) {
      if (!drawn.icon && drawn.color == Theme::kText) return drawn.text;
    }
    return {};
  }
  bool SaysRunning() { return Drawing(*window_).HasIcon(Part<GroupTabs>(), "state_running"); }
};

TEST_F(GroupTabsTest, ShowTheGroupsWithTheirJobs) {
  EXPECT_EQ(Tabs(), "Group1");
  Add(MakeJob<JobFileDyna>("/w/one.k"));
  Add(MakeJob<JobFileDyna>("/w/two.k"));
  PressTool("tip_add_group");
  EXPECT_EQ(Tabs(), "Group1 2 Group2");
  EXPECT_EQ(Current(), "Group2");
  EXPECT_EQ(Drawing(*window_).Text(Table()).find("two.k"), std::string::npos);
  Press(Part<GroupTabs>(), "Group1");
  EXPECT_EQ(Current(), "Group1");
  EXPECT_EQ(Rows().size(), 2U);
  MoveTo(Part<GroupTabs>(), "Group2");
  EXPECT_EQ(Tip(), "Group2");
  Talk([&] { Press(Part<GroupTabs>(), "Group2", FL_RIGHT_MOUSE); },
       {[](Fl_Window& menu) { Press(menu, "Delete Group"); },
        [](Fl_Window& box) { Press(Find<Fl_Button>(box, "Yes")); }});
  EXPECT_EQ(Tabs(), "Group1 2");
}

TEST_F(GroupTabsTest, TellTheNewNameAndTheValueThatWasHandedOver) {
  GroupTabs& tabs = Part<GroupTabs>();
  PressTool("tip_add_group");
  MoveTo(tabs, "Group2");
  EXPECT_EQ(Tip(), "Group2");
  Group()->SetName("Doors");
  window_->Perform(Action::kRefresh);
  EXPECT_TRUE(Until([] { return Tip() == "Doors"; }, 5)) << "the mouse has not moved";

  std::ofstream(Files().handOverFile) << "#group=300,2,0\n";
  application_->Tick();
  EXPECT_TRUE(Until([&] { return Tabs() == "Group1 Doors 300,2,0"; })) << Tabs();
  const std::string value = window_->Texts().Format("ui_tip_group", "300,2,0");
  EXPECT_TRUE(Until([&] { return Tip() == "Doors " + value; }, 5)) << Tip();
  Press(tabs, "Group1");
  EXPECT_EQ(Tabs(), "Group1 300,2,0 Doors") << "with the current one";
  EXPECT_EQ(Tip(), "Group1 " + value);
}

TEST_F(GroupTabsTest, MarkAGroupThatRuns) {
  AddJob("long", "run 60");
  EXPECT_FALSE(SaysRunning());
  window_->Perform(Action::kSubmit);
  EXPECT_TRUE(SaysRunning());
  ASSERT_TRUE(Until([&] { return Group()->ActiveJob() != JobId::kNone; }));
  Talk([&] { window_->Perform(Action::kStop); },
       {[](Fl_Window& box) { Press(Find<Fl_Button>(box, "Yes")); }});
  EXPECT_TRUE(Until([&] { return !SaysRunning(); }));
}

TEST_F(GroupTabsTest, KeepTheCurrentOneInSight) {
  for (int i = 0; i < 30; ++i) PressTool("tip_add_group");
  EXPECT_EQ(Current(), "Group31");
  EXPECT_EQ(Tabs().find("Group1 "), std::string::npos);
  PressKey(FL_Tab, FL_CTRL);
  EXPECT_EQ(Current(), "Group1");
  EXPECT_EQ(Tabs().find("Group31"), std::string::npos);
}

class StatusBarTest : public WindowTest {
 protected:
  QueueObserver& Queue() { return application_->Manager().Observer(); }
  Fl_Color ColorOf(const std::string& text) {
    for (const Drawn& drawn : Drawing(*window_).In(Part<StatusBar>())) {
      if (drawn.text == text) return drawn.color;
    }
    return 0;
  }
};

TEST_F(StatusBarTest, CountsTheJobsOfTheGroup) {
  EXPECT_EQ(Line(), "No jobs");
  const JobStatus statuses[] = {JobStatus::kQueued,  JobStatus::kQueued,   JobStatus::kWaiting,
                                JobStatus::kRunning, JobStatus::kFinished, JobStatus::kAborted};
  for (const JobStatus status : statuses) {
    Add(MakeJob<JobFileDyna>("/w/a.k", status));
    if (Group()->JobCount() == 1) {
      EXPECT_EQ(Line(), "1 job: 1 queued");
    }
  }
  EXPECT_EQ(Line(), "6 jobs: 2 queued, 1 waiting, 1 running, 1 finished, 1 aborted");
  PressTool("tip_add_group");
  EXPECT_EQ(Line(), "No jobs");
}

TEST_F(StatusBarTest, TellsFaultsInRedAndWhole) {
  PressTool("tip_submit");
  const std::string none = "No queued job in \"Group1\".";
  EXPECT_TRUE(LineSays(none));
  EXPECT_EQ(ColorOf(none), Theme::kText);
  const std::string path = "/w/" + std::string(300, 'x');
  Queue().Logged(Message(MessageId::kFileMissing, path));
  EXPECT_TRUE(LineSays("File ["));
  EXPECT_EQ(Line().find("does not exist"), std::string::npos);
  EXPECT_EQ(Part<StatusBar>().tooltip(), "File [" + path + "] does not exist");
  Queue().Logged(Message(MessageId::kFileMissing, "/w/a.k"));
  EXPECT_TRUE(LineSays("does not exist"));
  EXPECT_EQ(ColorOf("File [/w/a.k] does not exist"), Theme::kError);
  EXPECT_EQ(Part<StatusBar>().tooltip(), nullptr);
}

TEST_F(StatusBarTest, NeverCutsTheCounts) {
  for (const JobStatus status : {JobStatus::kQueued, JobStatus::kWaiting, JobStatus::kRunning,
                                 JobStatus::kFinished, JobStatus::kAborted}) {
    for (int i = 0; i < 11; ++i) Group()->AddJob(MakeJob<JobFileDyna>("/w/a.k", status));
  }
  window_->size(Layout::kMinWidth, kHeight);
  window_->Perform(Action::kRefresh);
  const std::string counts = "55 jobs: 11 queued, 11 waiting, 11 running, 11 finished, 11 aborted";
  const std::string path = "/w/" + std::string(300, 'x') + ".k";
  Queue().Logged(Message(MessageId::kFileMissing, path));
  EXPECT_TRUE(LineSays("File ["));
  EXPECT_TRUE(Line().starts_with(counts)) << Line();
  Queue().IntakeProgress(1, 4, path, 50);
  EXPECT_TRUE(Until([&] { return Part<StatusBar>().child(0)->visible() != 0; }));
  EXPECT_TRUE(Line().starts_with(counts)) << Line();
  const std::string tip = Part<StatusBar>().tooltip();
  EXPECT_NE(tip.find(path + "] does not exist"), std::string::npos) << tip;
  EXPECT_NE(tip.find("Reading 2 of 4: "), std::string::npos) << tip;
  // What is drawn lies side by side.
  int end = 0;
  for (const Drawn& drawn : Drawing(*window_).In(Part<StatusBar>())) {
    if (drawn.icon) continue;
    EXPECT_GE(drawn.x, end) << drawn.text;
    fl_font(FL_HELVETICA, Layout::kSmallFontSize);
    end = drawn.x + static_cast<int>(fl_width(drawn.text.c_str()));
  }
  EXPECT_LE(end, window_->w());
}

TEST_F(StatusBarTest, ShowsTheReadingOfDecks) {
  Fl_Button& cancel = *dynamic_cast<Fl_Button*>(Part<StatusBar>().child(0));
  EXPECT_FALSE(cancel.visible());
  Queue().IntakeProgress(1, 4, "/w/big.k", 50);
  EXPECT_TRUE(LineSays("Reading 2 of 4: big.k"));
  Press(Find<Fl_Button>(*window_, "Cancel"));
  Queue().IntakeProgress(4, 4, "", 0);
  EXPECT_TRUE(Until([&] { return !cancel.visible(); }));
  EXPECT_EQ(Line(), "No jobs");
}

}  // namespace
