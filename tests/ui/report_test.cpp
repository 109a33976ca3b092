// Reports of jobs, and the bar that goes on with a group that pauses.

#include <FL/Fl_Button.H>

#include <cmath>
#include <filesystem>

#include "core/SharedFolders.h"
#include "ui/report/ReportPage.h"
#include "ui/report/ReportPicture.h"
#include "ui/report/ReportWriter.h"
#include "ui/window/NoticeBar.h"
#include "ui/WindowFixture.h"

namespace {

class ReportTest : public WindowTest {
 protected:
  std::string PageOf(const ReportedGroup& group) {
    return ReportPage({group}, texts_,
                      [](const ReportedJob& job) { return ReadCurves(job.run, {}); });
  }
};

bool Holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST_F(ReportTest, APageShowsRunsAndNothingThatANameSaysActs) {
  Group()->SetName("<b onload=x>\"&'");
  AddJob("good & <i>", "lines 50");
  AddJob("bad", "fail 40509");
  Run();
  AddJob("later");
  const ReportedGroup group = ReportOf(*Group());
  const std::string page = PageOf(group);
  EXPECT_FALSE(Holds(page, "<b onload") || Holds(page, "<i>")) << page;
  EXPECT_TRUE(Holds(page, "&lt;b onload=x&gt;&quot;&amp;&#39;"));
  EXPECT_TRUE(Holds(page, "/good%20%26%20%3Ci%3E\">"));
  EXPECT_TRUE(Holds(page, "Aborted \xC2\xB7 solver error 40509"));
  EXPECT_TRUE(Holds(page, "the deck asked the stand-in to fail"));
  EXPECT_TRUE(Holds(page, ">1 finished</span>") && Holds(page, ">1 queued</span>"));
  // Of the job that ran to its end, and of the one that failed on the way.
  std::size_t pictures = 0;
  for (std::size_t at = 0; (at = page.find("<svg", at)) != std::string::npos; ++at) ++pictures;
  EXPECT_GE(pictures, 4U);
  EXPECT_FALSE(Holds(page, "id=\"job3\""));  // it has not run

  const std::vector<JobId> one = {Group()->JobIds().back()};
  EXPECT_EQ(ReportOf(*Group(), &one).jobs.size(), 1U);
  EXPECT_TRUE(ReportLines(group).ends_with("later.k\tQueued\tLS-DYNA (S)\t\t\t\t\n"))
      << ReportLines(group);
  EXPECT_TRUE(ReportTable({group}).find(",Aborted,solver error 40509,") != std::string::npos);
}

TEST_F(ReportTest, ALongCurveKeepsItsPeaksAndBecomesSmall) {
  std::vector<double> time, value;
  for (int i = 0; i < 500000; ++i) {
    time.push_back(i);
    value.push_back(i == 250001 ? 1000 : std::sin(i));
  }
  RunCurves curves;
  curves.time = std::make_shared<const std::vector<double>>(time);
  curves.values[static_cast<std::size_t>(Quantity::kTotalEnergy)] =
      std::make_shared<const std::vector<double>>(value);
  std::string svg = ReportPictures(curves, texts_);
  EXPECT_LT(svg.size(), 30000U);
  EXPECT_TRUE(Holds(svg, ">1000</text>")) << svg.substr(0, 2000);
  curves.time = std::make_shared<const std::vector<double>>(time.size(), 0.0);
  EXPECT_EQ(ReportPictures(curves, texts_), "") << "all at one time";
  EXPECT_EQ(PageText("caf\xE9.k & \xE8\xBD\xA6\xE8"),
            "caf\xEF\xBF\xBD.k &amp; \xE8\xBD\xA6\xEF\xBF\xBD");
}

TEST_F(ReportTest, AReportFollowsTheLastJobAndAPauseGoesOn) {
  Files().Set(&Settings::report_file, std::string(home_ / "all.csv"));
  Files().Set(&Settings::stop_after_failures, 2);
  for (const char* name : {"a", "b", "c", "d"}) AddJob(name, "no-licence");
  Run();
  const auto report = [&] { return TempFolder::Read(home_ / "all.csv"); };
  EXPECT_TRUE(Until([&] { return Holds(report(), ",Queued,,\"not run, its group pauses"); }))
      << report();
  NoticeBar* bar = nullptr;
  EXPECT_TRUE(Until([&] { return (bar = Look<NoticeBar>(*window_)) != nullptr; }));
  ASSERT_NE(bar, nullptr);
  EXPECT_TRUE(Holds(Drawing(*window_).Text(*bar),
                    "2 jobs in a row failed within a minute each: no licence. 2 jobs stay queued"));
  Files().Set(&Settings::stop_after_failures, 0);
  Press(Find<Fl_Button>(*window_, "Go On"));
  EXPECT_TRUE(Until([&] { return !Group()->Running() && !Holds(report(), ",Queued,"); }));
  EXPECT_EQ(Look<NoticeBar>(*window_), nullptr);
}

TEST_F(ReportTest, ADeckIsNotWrittenOver) {
  const std::string deck = AddJob("deck", "run 1");
  const std::string before = TempFolder::Read(deck);
  std::filesystem::create_symlink(deck, home_ / "link.csv");
  ReportWriter writer(home_ / "link.csv", {ReportOf(*Group())}, 0);
  EXPECT_TRUE(Until([&] { return writer.Ended(); }));
  EXPECT_TRUE(Holds(writer.Trouble(), "deck or a message file"));
  EXPECT_EQ(TempFolder::Read(deck), before);
}

TEST_F(ReportTest, QueueOptionsAreCheckedAndStored) {
  const auto open = [&](const std::vector<Step>& steps) {
    Talk([&] { PressKey(',', FL_CTRL); }, steps);
  };
  open({[&](Fl_Window& dialog) {
          EXPECT_LE(dialog.w(), 800);
          EXPECT_LE(dialog.h(), 560);
          Choose(Beside<Fl_Choice>(dialog, "Decks that share a folder"),
                 "keep their results apart");
          Choose(Beside<Fl_Choice>(dialog, "Console of the solvers"), "a minimised window");
          TypeInto(Beside<Fl_Input>(dialog, "Failures in a row for a pause (0: never)"), "25");
          TypeInto(Beside<Fl_Input>(dialog, "its time step falls below (% of the first)"), "101");
          TypeInto(Beside<Fl_Input>(dialog, "Report after the last job"), "report.html");
        },
        [&](Fl_Window& dialog) {
          auto& report = Beside<Fl_Input>(dialog, "Report after the last job");
          EXPECT_EQ(report.textcolor(), static_cast<Fl_Color>(Theme::kError));
          TypeInto(report, home_ / "report.html");
          Press(Find<Fl_Button>(dialog, "Close"));
          EXPECT_TRUE(dialog.shown()) << "one of two wrong fields is left";
          TypeInto(Beside<Fl_Input>(dialog, "its time step falls below (% of the first)"), "2");
        },
        [](Fl_Window& dialog) { Press(Find<Fl_Button>(dialog, "Close")); }});
  EXPECT_EQ(Stored().separate_results, kAlwaysApart);
  EXPECT_EQ(Stored().console, Settings::kConsoleMinimised);
  EXPECT_EQ(Stored().stop_after_failures, 25);
  EXPECT_EQ(Stored().health_step_percent, 2);
  EXPECT_EQ(Stored().report_file, std::string(home_ / "report.html"));
}

}  // namespace
