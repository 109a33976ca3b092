// The job table: what its columns say, and what a user does with rows, cells and columns.

#include "ui/WindowFixture.h"

#include <FL/fl_draw.H>

#include "ui/fltk/Flx_HeaderButton.h"
#include "ui/fltk/Sizes.h"

namespace {

using Lines = std::vector<std::string>;

class JobTableTest : public WindowTest {
 protected:
  using WindowTest::WindowTest;

  // Jobs of every kind and status; they are only looked at.
  void AddOneOfEach() {
    const auto dyna = [&](const char* path, JobStatus status) {
      return MakeJob<JobFileDyna>(path, status);
    };
    auto shared = dyna("/w/queued.k", JobStatus::kQueued);
    shared->memory = 500;
    shared->extraOptions = "q=1";
    Add(shared);
    auto precise = dyna("/w/sub/running.k", JobStatus::kRunning);
    precise->solverType = SolverKind::kLsDynaDouble;
    precise->useSFile = true;
    Add(precise);
    auto batch = dyna("", JobStatus::kFinished);
    batch->solverType = SolverKind::kUtilityBatch;
    batch->restartFile = "/w/d3dump01";
    batch->memory = 77;
    Add(batch);
    auto stages = dyna("/w/stages.k", JobStatus::kAborted);
    stages->stages.push_back(dyna("/w/one.k", JobStatus::kQueued));
    Add(stages);
    Add(MakeJob<JobFileVorel>("/w/step.dat", JobStatus::kWaiting));
    Add(MakeJob<JobFileInc>("/w/part.v2.fin", JobStatus::kAborted));
  }

  std::string TipOf(int row, const std::string& title) {
    MoveToCell(Table(), row, title);
    return Tip();
  }
  // The names of the selected jobs without their endings; the current one in brackets.
  std::string Selected() {
    std::string names;
    for (const JobId job : Table().SelectedJobs()) {
      std::string name;
      Group()->ReadJob(job, [&](const JobFile& read) { name = read.jobFile; });
      name = std::filesystem::path(name).stem().string();
      names += job == Table().CurrentJob() ? "[" + name + "]" : name;
    }
    return names;
  }
  void Select(int row, int held, int button = FL_LEFT_MOUSE) {
    PressCell(Table(), row, "Job Name", button, false, held);
  }

  // Without blanks, which stand where a line ends.
  static std::string Packed(std::string text) {
    std::erase(text, ' ');
    return text;
  }
};

TEST_F(JobTableTest, AJobThatLeftARestartDumpGoesOnFromItWithOneClick) {
  auto job = MakeJob<JobFileDyna>("/w/plate.k", JobStatus::kAborted);
  job->solverType = SolverKind::kLsDynaDouble;
  job->memory = 700;
  job->SetRestartDump("/w/plate.d3dump03");
  Add(job);
  auto stages = MakeJob<JobFileDyna>("/f/pan.k", JobStatus::kAborted);
  for (const char* name : {"/f/0/s.k", "/f/1/s.k", "/f/2/s.k"}) {
    stages->stages.push_back(MakeJob<JobFileDyna>(name, JobStatus::kFinished));
  }
  stages->stages[1]->SetRestartDump("/f/1/d3dump01");
  stages->SetRestartDump("/f/1/d3dump01");
  Add(stages);
  EXPECT_NE(TipOf(0, "Status").find("d3dump03"), std::string::npos);
  PressCell(Table(), 0, "Status");  // beside the arrow: only selects
  PressEndOfCell(Table(), 0, "Status");
  PressEndOfCell(Table(), 0, "Status");  // it is there already
  EXPECT_TRUE(LineSays(texts_.Format("ui_goes_on_already", "plate.d3dump03")));
  PressEndOfCell(Table(), 1, "Status");
  const Lines rows = Rows();
  ASSERT_EQ(rows.size(), 4U);
  EXPECT_EQ(rows[2],
            "R=plate.d3dump03|/w|LS-DYNA (D)|No|700|Queued|(View...)|(View...)|No|jobid=plate");
  EXPECT_TRUE(rows[3].starts_with("pan.k (R=d3dump01)|/f|")) << rows[3];
  Group()->ReadJob(Table().JobAt(3), [](const JobFile& restart) {
    EXPECT_EQ(restart.firstStage, 1);
    EXPECT_EQ(restart.stages[0]->status, JobStatus::kFinished);
    EXPECT_EQ(restart.stages[1]->status, JobStatus::kQueued);
    EXPECT_EQ(restart.stages[1]->Folder(), "/f/1");
    EXPECT_EQ(restart.stages[2]->jobFile, "/f/2/s.k");
  });
}

TEST_F(JobTableTest, SaysWhatEachJobIs) {
  EXPECT_EQ(Drawing(*window_).In(Table()).back().text, Say("ui_empty_hint"));
  AddOneOfEach();
  EXPECT_EQ(HeadsOf(Table()),
            "Job Name|In Folder|Solver|MStages|Memory|Status|Message|Summary|I Force|Other Param");
  EXPECT_EQ(Rows(), (Lines{"queued.k|/w|LS-DYNA (S)|No|500|Queued|(View...)|(View...)|No|q=1",
                           "running.k|/w/sub|LS-DYNA (D)|No|–|Running|View...|(View...)|(Yes)|",
                           "R=d3dump01|/w|UTILITYBATCH|No|77|Finished|View...|View...|No|",
                           "stages.k|/w|LS-DYNA (S)|Yes...|–|Aborted|(View...)|(View...)|No|",
                           "step.dat|/w|VOREL|No|–|Waiting|(View...)|(View...)|(–)|",
                           "part.v2.fin|/w|INCSolver|No|–|Aborted|View...|View...|(–)|"}));
  EXPECT_EQ(TipOf(1, "Job Name"), "/w/sub/running.k");
  EXPECT_EQ(TipOf(2, "Job Name"), window_->Texts().Format("ui_tip_restart", "/w/d3dump01"));
  EXPECT_EQ(TipOf(0, "Other Param"), "q=1");
  EXPECT_EQ(TipOf(0, "I Force"), Say("ui_tip_iforce"));
  EXPECT_EQ(TipOf(4, "I Force"), "");
}

TEST_F(JobTableTest, TellsWhyAJobWaits) {
  const std::string runs = AddJob("same", "run 60");
  PressTool("tip_add_group");
  auto restart = MakeJob<JobFileDyna>("");
  restart->restartFile = home_.Write("same/d3dump01", "dump");
  application_->Manager().GroupAt(0)->Submit();
  ASSERT_TRUE(Until([&] { return std::filesystem::exists(home_ / "same/messag"); }));
  Add(restart);
  window_->Perform(Action::kSubmit);
  ASSERT_TRUE(Until([&] { return !restart->RunMessage().Empty(); }));
  EXPECT_EQ(Packed(TipOf(0, "Status")),
            Packed("Reason: Job [" + restart->restartFile + "] waits for the job [" + runs +
                   "], which runs in the same folder"));
  EXPECT_TRUE(LineSays("waits for the job"));
  const auto before = std::chrono::steady_clock::now();
  application_->Manager().RequestStop(-1);
  EXPECT_TRUE(Until([&] { return Line().find("waits for the job") == std::string::npos; }));
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(15))
      << "it went before its time";
}

TEST_F(JobTableTest, CellsAreButtons) {
  AddOneOfEach();
  const auto told = [&](int row, const char* title) {
    return Answer([&] { PressCell(Table(), row, title); }, "OK");
  };
  EXPECT_EQ(told(0, "Message"), Say("msg_view_job"));
  EXPECT_EQ(told(3, "Message"), Say("msg_view_mstage"));
  EXPECT_EQ(told(5, "Message"), Say("msg_not_found_msg"));
  EXPECT_EQ(told(1, "Summary"), Say("msg_view_info"));
  PressCell(Table(), 0, "Status");  // none: only selects
  PressCell(Table(), 0, "I Force");
  EXPECT_EQ(Rows()[0], "queued.k|/w|LS-DYNA (S)|No|500|Queued|(View...)|(View...)|Yes|q=1");
  PressCell(Table(), 1, "I Force");
  EXPECT_TRUE(LineSays(Say("ui_running_fixed")));
  EXPECT_EQ(Rows()[1], "running.k|/w/sub|LS-DYNA (D)|No|–|Running|View...|(View...)|(Yes)|");
  Talk([&] { PressCell(Table(), 3, "MStages"); }, {[&](Fl_Window& dialog) {
         EXPECT_STREQ(dialog.label(), "Multiple Stages");
         dialog.hide();
       }});
}

TEST_F(JobTableTest, AMenuActsOnTheRowUnderTheMouse) {
  AddOneOfEach();
  Talk([&] { PressCell(Table(), 2, "Job Name", FL_RIGHT_MOUSE); },
       {[&](Fl_Window& menu) { Press(menu, "Resubmit"); }});
  EXPECT_EQ(Rows()[2], "R=d3dump01|/w|UTILITYBATCH|No|77|Queued|(View...)|(View...)|No|");
}

TEST_F(JobTableTest, SeveralRowsAreSelectedByMouseAndKeys) {
  for (const char* name : {"a", "b", "c", "d", "e", "f"})
    Add(MakeJob<JobFileDyna>("/w/" + std::string(name) + ".k"));
  int told = 0;
  const auto before = std::exchange(Table().OnSelect, {});
  Table().OnSelect = [&] { ++told, before(); };
  Select(1, 0);
  Select(3, FL_SHIFT);
  EXPECT_EQ(Selected(), "bc[d]");
  Select(5, FL_CTRL);
  Select(2, FL_CTRL);
  EXPECT_EQ(Selected(), "[b]df") << "the nearest one becomes current";
  EXPECT_EQ(told, 4);
  PressKey(FL_Down);
  EXPECT_EQ(Selected(), "[c]");
  PressKey(FL_Home, FL_SHIFT);
  EXPECT_EQ(Selected(), "[a]bc");
  PressKey(FL_End, FL_SHIFT);
  EXPECT_EQ(Selected(), "cde[f]");
  PressKey('a', FL_CTRL);
  EXPECT_EQ(Selected(), "abcde[f]");
  told = 0;
  PressKey('a', FL_CTRL);
  EXPECT_EQ(told, 0);
  PressKey(FL_Escape);
  EXPECT_EQ(Selected(), "");

  // A band, from below the rows to the last but one.
  const int x = Table().x() + 300;
  const int below = Table().y() + Sizes::kHeaderHeight + 7 * Sizes::kRowHeight;
  Drag(*window_, x, below, 90, -5 * Sizes::kRowHeight / 2);
  EXPECT_EQ(Selected(), "[e]f");

  // A menu is for what is selected, when it is opened there.
  Talk([&] { Select(5, 0, FL_RIGHT_MOUSE); }, {[](Fl_Window& menu) { Key(menu, FL_Escape); }});
  EXPECT_EQ(Selected(), "e[f]");

  // Jobs that move, come and go.
  Table().SelectJobs({Table().JobAt(1), Table().JobAt(4), Table().JobAt(5)});
  EXPECT_EQ(Selected(), "be[f]");
  window_->Perform(Action::kMoveUp);
  EXPECT_EQ(Selected(), "be[f]") << "as a block";
  told = 0;
  Group()->RemoveJob(Table().JobAt(4));
  Add(MakeJob<JobFileDyna>("/w/g.k"));
  EXPECT_EQ(Selected(), "b[e]");
  EXPECT_EQ(told, 1);
}

TEST_F(JobTableTest, JobsAreFoundByWordsChipsAndLetters) {
  for (int i = 1; i <= 12; ++i) Add(MakeJob<JobFileDyna>("/w/run" + std::to_string(i) + ".k"));
  Add(MakeJob<JobFileDyna>("/other/beam.k", JobStatus::kFinished));
  auto stopped = MakeJob<JobFileDyna>("/other/bolt.k", JobStatus::kFinished);
  stopped->SetStoppedAt(38);
  Add(stopped);
  auto failed = MakeJob<JobFileDyna>("/w/cup.k", JobStatus::kAborted);
  failed->SetRunError(2, Message(MessageId::kForeignWords, "no licence"));
  Add(failed);
  auto& bar = Part<FilterBar>();
  auto& field = Find<Fl_Input>(bar);
  const auto says = [&] { return Drawing(*window_).Text(bar); };
  EXPECT_NE(says().find("Queued 12 Running 0 Finished 1 Stopped early 1 Aborted 1"),
            std::string::npos)
      << says();

  Table().SelectJobs({Table().JobAt(0), Table().JobAt(12), Table().JobAt(14)});
  PressKey('f', FL_CTRL);
  ASSERT_EQ(Fl::focus(), &field);
  const auto type = [&](const std::string& text) {
    field.position(field.size(), 0);
    Key(*window_, text.front(), 0, text);
  };
  type("OTHER b");
  EXPECT_EQ(Table().ShownCount(), 2);
  EXPECT_EQ(Selected(), "[beam]") << "what goes out of sight is selected no more";
  EXPECT_NE(says().find("2 of 15"), std::string::npos) << says();
  type("licence");
  EXPECT_EQ(Rows().size(), 1U);
  type("nowhere");
  EXPECT_EQ(Drawing(*window_).In(Table()).back().text, texts_.Format("ui_filter_back", "15"));
  Press(Table(), texts_.Format("ui_filter_back", "15"));
  EXPECT_EQ(Table().ShownCount(), 15);
  EXPECT_EQ(field.size(), 0);
  Press(bar, "Stopped early 1");
  Press(bar, "Finished 1");
  EXPECT_EQ(Table().ShownCount(), 2);
  PressKey('f', FL_CTRL);
  PressKey(FL_Escape);
  EXPECT_EQ(Table().ShownCount(), 15);
  PressKey('a', FL_CTRL | FL_SHIFT);
  EXPECT_EQ(Selected(), "[cup]");

  // Letters, from row to row and on to the name.
  const auto typed = [&](const std::string& letter) {
    Key(*window_, letter.front(), 0, letter);
    return Selected();
  };
  EXPECT_EQ(typed("b"), "[beam]");
  EXPECT_EQ(typed("b"), "[bolt]");
  EXPECT_EQ(typed("e"), "[beam]");

  EXPECT_EQ(says().find("End not known"), std::string::npos);
  auto unknown = MakeJob<JobFileDyna>("/other/rod.k", JobStatus::kFinished);
  unknown->SetStoppedAt(kStopUnknown);
  Add(unknown);
  EXPECT_NE(says().find("Finished 1 Stopped early 1 End not known 1 Aborted 1"), std::string::npos)
      << says();
  Press(bar, "End not known 1");
  EXPECT_EQ(Table().ShownCount(), 1);
}

TEST_F(JobTableTest, SortedRowsSayThatTheyRunInAnotherOrder) {
  for (const char* name : {"run10", "run2", "run1"})
    Add(MakeJob<JobFileDyna>("/w/" + std::string(name) + ".k"));
  const auto names = [&] {
    PressKey('a', FL_CTRL);
    return Selected();
  };
  auto& bar = Part<FilterBar>();
  Select(1, 0);
  Press(Table(), "Job Name");
  EXPECT_EQ(Selected(), "[run2]");
  EXPECT_EQ(names(), "run1[run2]run10");
  const std::string said = texts_.Format("ui_sorted_by", "Job Name");
  EXPECT_NE(Drawing(*window_).Text(bar).find(said), std::string::npos);
  window_->Perform(Action::kMoveUp);
  EXPECT_TRUE(LineSays(Say("ui_move_sorted")));
  EXPECT_EQ(names(), "run1[run2]run10");
  Add(MakeJob<JobFileDyna>("/w/run3.k"));
  EXPECT_EQ(names(), "run1[run2]run3run10");
  Press(Table(), "Job Name");
  EXPECT_EQ(names(), "run10run3[run2]run1");

  // One that changes goes to its new place, and where it is not known to the end.
  Press(Table(), "Memory");
  Group()->SetMemory(Table().JobAt(3), 900);
  ASSERT_TRUE(Until([&] { return names() == "run3run10[run2]run1"; })) << names();
  Press(bar, texts_.Format("ui_sorted_by", "Memory"));
  EXPECT_EQ(names(), "run10[run2]run1run3");
}

// What scrolling leaves on the screen and draws beside it is what a new drawing gives.
TEST_F(JobTableTest, ScrolledRowsLookLikeRowsDrawnAnew) {
  for (int i = 0; i < 60; ++i) Add(MakeJob<JobFileDyna>("/w/" + std::to_string(i) + ".k"));
  const auto picture = [&] {
    Fl::flush();
    window_->make_current();
    const int size = window_->w() * window_->h() * 3;
    std::vector<uchar> pixels(static_cast<std::size_t>(size));
    fl_read_image(pixels.data(), 0, 0, window_->w(), window_->h());
    return pixels;
  };
  std::vector<uchar> before;
  EXPECT_TRUE(Until([&] {  // all has been drawn
    std::vector<uchar> last = std::exchange(before, picture());
    return last == before;
  }));
  for (const int key : {FL_End, FL_Up, FL_Page_Up, FL_Up, FL_Home, FL_Page_Down, FL_Down}) {
    PressKey(key);
    const std::vector<uchar> scrolled = picture();
    EXPECT_NE(scrolled, before) << key;
    window_->redraw();
    before = picture();
    EXPECT_EQ(scrolled, before) << key;
  }
}

TEST_F(JobTableTest, ColumnsAreDraggedAndFitted) {
  AddOneOfEach();
  const std::vector<Flx_HeaderButton*> heads = All<Flx_HeaderButton>(Table());
  const int x = heads[1]->x(), width = heads[1]->w(), nameWidth = heads[0]->w();
  const int y = heads[0]->y() + heads[0]->h() / 2;
  Drag(*window_, x - 1, y, 60);
  EXPECT_EQ(heads[0]->w(), nameWidth + 60);
  EXPECT_EQ(heads[1]->x(), x + 60);
  EXPECT_EQ(heads[1]->w(), width);
  ClickAt(*window_, x + 59, y, FL_LEFT_MOUSE, true);
  EXPECT_LT(heads[0]->w(), nameWidth);
  EXPECT_NE(Rows()[5].find("part.v2.fin|"), std::string::npos) << "whole all the same";
}

TEST_F(JobTableTest, ColumnsMadeNarrowAndWideAgainAreAsBefore) {
  AddOneOfEach();
  const std::vector<Flx_HeaderButton*> heads = All<Flx_HeaderButton>(Table());
  const auto drag = [&](std::size_t column, int by) {
    const Flx_HeaderButton& head = *heads[column];
    Drag(*window_, head.x() + head.w() - 1, head.y() + head.h() / 2, by);
  };
  const auto widths = [&] {
    std::vector<int> now;
    for (const Flx_HeaderButton* head : heads) now.push_back(head->w());
    return now;
  };
  const std::vector<int> before = widths();
  drag(4, 0);
  for (const int size : {800, kWidth}) window_->size(size, kHeight);
  EXPECT_EQ(widths(), before) << "a press alone fixes nothing";
  drag(1, -80);
  drag(0, -40);
  EXPECT_GT(widths().back(), before.back()) << "the last one takes what is over";
  drag(0, 40);
  drag(1, 80);
  EXPECT_EQ(widths(), before) << "and gives it back";

  // What is too wide is not made wider with the window.
  drag(1, 500);
  const std::vector<int> wide = widths();
  window_->size(kWidth + 90, kHeight);
  EXPECT_EQ(widths(), wide);
}

TEST_F(JobTableTest, ExtraColumnsAreChosenMovedAndRemembered) {
  Files().Set(&Settings::cpu_count, 3);
  auto done = MakeJob<JobFileDyna>("/w/done.k", JobStatus::kFinished);
  done->restartFile = "/w/d3dump02";
  done->ncpu = 8;
  done->started = 1000;
  done->ended = 1065;
  auto forming = MakeJob<JobFileDyna>("/w/forming.k", JobStatus::kAborted);
  for (const char* stage : {"/w/draw.k", "/w/trim.k", "/w/late.k"})
    forming->stages.push_back(MakeJob<JobFileDyna>(stage));
  const auto count = [](JobFile& job, std::int64_t warnings, std::int64_t nodes) {
    RunResult result;
    result.errors = 0;
    result.warnings = warnings;
    result.nodes = nodes;
    result.elements = nodes - 1;
    job.SetResult(result);
  };
  count(*done, 10, 5);
  count(*forming->stages[0], 7, 3);
  count(*forming->stages[1], 9, 4);
  Add(done);
  Add(MakeJob<JobFileDyna>("/w/next.k"));
  Add(forming);
  const auto choose = [&](const std::string& entry) {
    Talk([&] { PressKey('k', FL_CTRL | FL_SHIFT); },
         {[&](Fl_Window& menu) { Press(menu, entry); }});
  };
  for (const char* column : {"CPUs", "Group", "Elapsed", "Restart File", "Group"}) choose(column);
  const std::string first =
      "Job Name|In Folder|Solver|MStages|Memory|Status|Message|Summary|I Force|Other Param";
  EXPECT_EQ(HeadsOf(Table()), first + "|CPUs|Elapsed|Restart File");
  EXPECT_TRUE(Rows()[0].ends_with("|8|1 min 5 s|d3dump02")) << Rows()[0];
  EXPECT_TRUE(Rows()[1].ends_with("|3|–|–")) << Rows()[1];
  Press(Table(), "Elapsed");
  EXPECT_TRUE(Rows()[0].starts_with("done.k ")) << "what is not known is last";
  for (const char* column : {"Nodes / Elements", "Errors", "Warnings"}) choose(column);
  Press(Table(), "Warnings");
  EXPECT_TRUE(Rows()[0].ends_with("|4 / 3|0|9")) << Rows()[0];
  EXPECT_TRUE(Rows()[1].ends_with("|5 / 4|0|10")) << Rows()[1];
  EXPECT_TRUE(Rows()[2].ends_with("|–|–|–")) << Rows()[2];
  for (const char* column : {"Nodes / Elements", "Errors", "Warnings"}) choose(column);

  const auto head = [&](const std::string& title) -> Flx_HeaderButton& {
    for (Flx_HeaderButton* one : All<Flx_HeaderButton>(Table()))
      if (Drawing(*window_).Text(*one) == title) return *one;
    throw std::runtime_error(title);
  };
  const auto drag = [&](const Flx_HeaderButton& one, int place, int by) {
    Drag(*window_, one.x() + place, one.y() + one.h() / 2, by);
  };
  drag(head("CPUs"), 20, head("Elapsed").x() - head("CPUs").x() + head("Elapsed").w() - 25);
  drag(head("In Folder"), head("In Folder").w() - 1, 37);
  const int width = head("In Folder").w();
  EXPECT_EQ(Stored().table_columns, "folder=" + std::to_string(width) + " elapsed cpus restart");
  Close();
  Start();
  EXPECT_EQ(HeadsOf(Table()), first + "|Elapsed|CPUs|Restart File");
  EXPECT_EQ(head("In Folder").w(), width);
}

class ChineseJobTable : public JobTableTest {
 protected:
  ChineseJobTable() : JobTableTest(1) {}
};

TEST_F(ChineseJobTable, SaysItInChinese) {
  AddOneOfEach();
  EXPECT_EQ(HeadsOf(Table()),
            "任务名称|所在文件夹|求解器|多工步|内存|状态|消息|摘要|I Force|其他参数");
  EXPECT_EQ(Rows()[1], "running.k|/w/sub|LS-DYNA (D)|否|–|运行中|查看...|(查看...)|(是)|");
  EXPECT_EQ(Rows()[3], "stages.k|/w|LS-DYNA (S)|是...|–|已中止|(查看...)|(查看...)|否|");
}

TEST_F(ChineseJobTable, TellsWhyAJobWasAborted) {
  const std::string bad = AddJob("bad", "fail");
  const std::string gone = AddJob("gone");
  std::filesystem::remove(gone);
  Run();
  const std::string notNormal = Packed("原因：任务 [" + bad + "] 未正常结束：*** Error ");
  EXPECT_EQ(Packed(TipOf(0, "状态")).substr(0, notNormal.size()), notNormal);
  const std::string missing = Packed("原因：任务文件 [" + gone + "] 不存在");
  EXPECT_EQ(Packed(TipOf(1, "状态")).substr(0, missing.size()), missing);
  EXPECT_TRUE(LineSays("任务文件 ["));
}

}  // namespace
