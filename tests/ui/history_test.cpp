// The window with all runs, and what a queued job says of its last one.

#include "ui/dialogs/HistoryWindow.h"

#include "ui/WindowFixture.h"

namespace {

class HistoryTest : public WindowTest {
 protected:
  using WindowTest::WindowTest;

  // The window, opened by a key of the main window.
  Fl_Window& Open(int state) {
    PressKey('h', state);
    const auto find = [this] {
      for (Fl_Window* one = Fl::first_window(); one; one = Fl::next_window(one)) {
        if (Say("ui_past_title") == one->label()) return one;
      }
      return static_cast<Fl_Window*>(nullptr);
    };
    EXPECT_TRUE(Until([&] { return find() != nullptr; }));
    Fl_Window& opened = *find();
    opened.size(kWidth, kHeight);
    return opened;
  }
  // "job verdict" of each row.
  static std::vector<std::string> Shown(Fl_Window& history) {
    std::vector<std::string> shown;
    for (const std::string& row : RowsOf(Find<HistoryTable>(history))) {
      std::vector<std::string> cells;
      std::istringstream in(row);
      for (std::string cell; std::getline(in, cell, '|');) cells.push_back(cell);
      shown.push_back(cells.at(1) + ' ' + cells.at(5));
    }
    return shown;
  }
};

using Lines = std::vector<std::string>;

TEST_F(HistoryTest, ListsSortsAndFiltersTheRuns) {
  Fl_Window& history = Open(FL_CTRL);
  HistoryTable& table = Find<HistoryTable>(history);
  EXPECT_TRUE(Until(
      [&] { return Drawing(history).Text(table).find("Nothing has run") != std::string::npos; }));
  AddJob("b_good");
  AddJob("c_bad", "fail");
  AddJob("a_good");
  Run();
  const Lines asTheyRan = {"a_good.k Finished", "c_bad.k Aborted", "b_good.k Finished"};
  EXPECT_TRUE(Until([&] { return Shown(history) == asTheyRan; })) << "new runs come by themselves";
  table.SelectRow(0);
  EXPECT_TRUE(table.CurrentRun()->run.nodes);
  EXPECT_TRUE(table.CurrentRun()->run.elements);
  EXPECT_EQ(table.CurrentRun()->run.errors, 0);
  std::filesystem::remove(home_ / "a_good/d3plot");
  Talk([&] { Key(history, FL_Enter); }, {[&](Fl_Window& summary) {
         const auto shown = [&] { return Drawing(summary).Text(summary); };
         EXPECT_TRUE(Until([&] { return shown().find("Element Number") != std::string::npos; }))
             << "as it was counted, whatever lies there now: " << shown();
         Key(summary, FL_Escape);
       }});

  Press(table, Say("lab_job_name"));
  EXPECT_EQ(Shown(history), (Lines{"a_good.k Finished", "b_good.k Finished", "c_bad.k Aborted"}));
  EXPECT_EQ(table.CurrentRun()->Cell(HistoryColumn::kJob), "a_good.k") << "still the current one";
  Press(table, Say("lab_job_name"));
  EXPECT_EQ(Shown(history).front(), "c_bad.k Aborted");
  FilterBar& bar = Find<FilterBar>(history);
  Press(bar, "Finished 2");
  EXPECT_EQ(Shown(history), (Lines{"b_good.k Finished", "a_good.k Finished"}));
  TypeInto(Find<Fl_Input>(history), "GOOD b_");
  EXPECT_EQ(Shown(history), Lines{"b_good.k Finished"});
  EXPECT_NE(Drawing(history).Text(bar).find(texts_.Format("ui_past_some", "1", "3")),
            std::string::npos);
  Press(bar, "Finished 2");
  Press(bar, "Aborted 1");
  EXPECT_EQ(table.CurrentRun(), nullptr);
  Find<Fl_Input>(history).take_focus();
  Key(history, FL_Escape);
  EXPECT_EQ(Shown(history).size(), 3U) << "Escape in the field shows all";

  Table().SelectRow(2);
  EXPECT_EQ(&Open(FL_CTRL | FL_SHIFT), &history) << "there is one window";
  EXPECT_EQ(Shown(history), Lines{"a_good.k Finished"});
  Key(history, FL_Escape);
  EXPECT_FALSE(history.shown());
}

TEST_F(HistoryTest, RunsAJobAgainAsItWas) {
  auto job = MakeJob<JobFileDyna>(MakeDeck("again"));
  job->extraOptions = "jobid=x";
  job->ncpu = 3;
  job->memory = 77;
  job->useSFile = true;
  job->dump = false;
  Add(job);
  Run();
  application_->Manager().AddGroup("Other");
  application_->Manager().SetCurrentGroup(1);
  window_->Perform(Action::kRefresh);
  Fl_Window& history = Open(FL_CTRL);
  ASSERT_TRUE(Until([&] { return Find<HistoryTable>(history).CurrentRun() != nullptr; }));
  Press(Find<Fl_Button>(history, Say("ui_past_again")));
  ASSERT_TRUE(Until([&] { return Group()->JobCount() == 1; }));
  EXPECT_EQ(Group()->Name(), "Other");
  JobId added = JobId::kNone;
  Group()->ReadJobs([&](const JobFile& read) {
    added = read.id;
    const auto& dyna = dynamic_cast<const JobFileDyna&>(read);
    EXPECT_EQ(dyna.jobFile, job->jobFile);
    EXPECT_EQ(dyna.extraOptions, "jobid=x");
    EXPECT_EQ(dyna.ncpu, 3);
    EXPECT_EQ(dyna.memory, 77U);
    EXPECT_TRUE(dyna.useSFile);
    EXPECT_FALSE(dyna.dump);
    EXPECT_EQ(dyna.status, JobStatus::kQueued);
  });
  window_->Perform(Action::kRefresh);
  MoveToCell(Table(), 0, Say("lab_status"));
  EXPECT_NE(Tip().find("on 3 CPUs ("), std::string::npos) << "what it took before";

  std::filesystem::remove(job->jobFile);
  const std::string said =
      Answer([&] { Press(Find<Fl_Button>(history, Say("ui_past_again"))); }, Say("ui_ok"));
  EXPECT_TRUE(said.starts_with(Say("ui_past_gone"))) << said;
  EXPECT_EQ(Group()->JobCount(), 1);
}

}  // namespace
