// The monitor of a run.

#include "ui/WindowFixture.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Text_Display.H>

#include "ui/fltk/Chart.h"
#include "ui/monitor/MonitorWindow.h"
#include "ui/monitor/Picture.h"

namespace {

class MonitorTest : public WindowTest {
 protected:
  static std::vector<MonitorWindow*> Monitors() {
    std::vector<MonitorWindow*> found;
    for (Fl_Window* window = Fl::first_window(); window; window = Fl::next_window(window)) {
      if (auto* monitor = dynamic_cast<MonitorWindow*>(window)) found.push_back(monitor);
    }
    return found;
  }
  static MonitorWindow& Monitor() { return *Monitors().at(0); }
  static std::string Says(Fl_Widget& part) { return Drawing(Monitor()).Text(part); }
  static bool HeadSays(const std::string& text) {
    return Until([&] { return Says(Find<RunHeading>(Monitor())).find(text) != std::string::npos; });
  }
  static std::string ChartSays(const std::string& title) {
    for (Fl_Widget* widget : WidgetsOf(Monitor())) {
      if (!dynamic_cast<Chart*>(widget)) continue;
      const std::string text = Says(*widget);
      if (text.starts_with(title)) return text;
    }
    return {};
  }
  static bool CanPress(const std::string& label) {
    return Find<Fl_Button>(Monitor(), label).active_r() != 0;
  }
};

TEST_F(MonitorTest, ShowsAJobFromItsStartToItsEndAndAsksItsSolver) {
  const std::string deck = AddJob("plate", "run 60");
  const std::string folder = home_ / "plate";
  PressCell(Table(), 0, "Status", FL_LEFT_MOUSE, true);
  ASSERT_EQ(Monitors().size(), 1u);
  EXPECT_STREQ(Monitor().label(), "Monitor: plate.k");
  EXPECT_TRUE(HeadSays("The job has not started yet."));
  EXPECT_FALSE(CanPress("Write a Dump"));

  window_->Perform(Action::kSubmit);
  EXPECT_TRUE(HeadSays("Running"));
  EXPECT_TRUE(Until([&] { return ChartSays("Energies").find("kinetic") != std::string::npos; }))
      << ChartSays("Energies");
  EXPECT_NE(ChartSays("Time step").find("problem time (unit of the deck)"), std::string::npos);
  char* const lines = Find<Fl_Text_Display>(Monitor()).buffer()->text();
  EXPECT_NE(std::string(lines).find("flush i/o buffers"), std::string::npos) << lines;
  std::free(lines);
  PressKey(FL_F + 6);
  EXPECT_EQ(Monitors().size(), 1u) << "one for a job";

  ASSERT_TRUE(Until([&] { return CanPress("Write a Dump"); }));
  Press(Find<Fl_Button>(Monitor(), "Write a Dump"));
  EXPECT_FALSE(CanPress("Write a Dump")) << "one request at a time";
  EXPECT_TRUE(Until([&] { return std::filesystem::exists(folder + "/d3dump01"); }));
  EXPECT_TRUE(Until([&] { return CanPress("Dump and Stop..."); }));
  auto& stop = Find<Fl_Button>(Monitor(), "Dump and Stop...");
  Answer([&] { Press(stop); }, "No");
  EXPECT_EQ(Group()->ActiveJob(), Table().CurrentJob());
  Answer([&] { Press(stop); }, "Yes");
  EXPECT_TRUE(Until([&] { return !Group()->Running(); }));
  EXPECT_TRUE(HeadSays("% of the end time"));
  EXPECT_TRUE(Until([&] { return !CanPress("Write a Dump"); }));
  EXPECT_FALSE(std::filesystem::exists(folder + "/d3kil"));

  Choose(Find<Fl_Choice>(Monitor(), "Over:"), "Clock");
  EXPECT_NE(ChartSays("Energies").find("clock since the start"), std::string::npos);
  Choose(Find<Fl_Choice>(Monitor(), "Charts:"), "Energies");
  EXPECT_EQ(ChartSays("Time step"), "");
  const std::string png = AsPng(PictureOf(Find<MonitorCharts>(Monitor())));
  EXPECT_TRUE(png.starts_with("\x89PNG")) << png.size();
  Key(Monitor(), FL_Escape);
  Fl::check();
  EXPECT_TRUE(Monitors().empty());
}

TEST_F(MonitorTest, ShowsAnyFolderAndWhyThereIsNothingToSee) {
  std::filesystem::create_directory(home_ / "empty");
  const auto show = [&](const std::string& folder) {
    MonitorWindow::Show(*application_, texts_, MonitoredRun(folder), window_.get());
  };
  show(home_ / "empty");
  EXPECT_TRUE(HeadSays("There is no output of a run in this folder."));
  MonitorWindow::CloseAll();

  // Of a deck with cases the newest is shown until another one is chosen.
  std::filesystem::create_directory(home_ / "cases");
  const std::string line = " t 1.0E-1 dt 1.0E-3 flush i/o buffers  08/14/24 12:00:00\n";
  home_.Write("cases/CASE1.messag.krb", " 11" + line);
  home_.Write("cases/CASE2.messag", " 22" + line);
  std::filesystem::last_write_time(
      home_ / "cases/CASE1.messag.krb",
      std::filesystem::file_time_type::clock::now() - std::chrono::minutes(1));
  show(home_ / "cases");
  EXPECT_TRUE(HeadSays("Case 2")) << "of the run, and its number";
  EXPECT_TRUE(HeadSays("cycle 22"));
  Choose(Find<Fl_Choice>(Monitor(), "Case:"), "Case 1");
  EXPECT_TRUE(HeadSays("Case 1"));
  EXPECT_TRUE(HeadSays("cycle 11"));
  MonitorWindow::CloseAll();

  // What a hostile file may hold.
  std::filesystem::create_directory(home_ / "bad");
  home_.Write("bad/messag",
              " 1 t -1.0E+299 dt 1.0E-3 a  08/14/24 12:00:00\n"
              " 2 t 1.0E+299 dt 1.0E-3 %s%n@B1 \xFF  08/14/24 12:00:01\n");
  home_.Write("bad/glstat",
              " dt of cycle 1 is controlled by @-5%s\n\n time....  Infinity\n"
              " kinetic energy....  NaN\n total energy....  -1.0E+308\n");
  show(home_ / "bad");
  EXPECT_TRUE(Until([&] { return ChartSays("Problem").find("h:min") != std::string::npos; }));
  EXPECT_NE(ChartSays("Energies").find("finite number"), std::string::npos);

  const char* data = std::getenv("KESTRUN_TEST_DATA");
  if (data == nullptr) GTEST_SKIP() << "KESTRUN_TEST_DATA is not set";
  MonitorWindow::CloseAll();
  show(std::string(data) + "/runs/bent_plate");
  EXPECT_TRUE(HeadSays("Error termination"));
  EXPECT_NE(ChartSays("Energies").find("total"), std::string::npos);
  EXPECT_FALSE(CanPress("Tell the Time"));
}

}  // namespace
