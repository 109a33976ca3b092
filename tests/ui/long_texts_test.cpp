// Message boxes and tooltips that have a lot to say.

#include "ui/WindowFixture.h"

#include <FL/Fl_Button.H>
#include <FL/fl_draw.H>
#include <FL/Fl_Tooltip.H>

#include "ui/dialogs/ComnMsgBox.h"
#include "ui/fltk/ModalWindow.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Tip.h"

namespace {

std::string Deep(const std::string& folder, int levels) {
  std::string path;
  for (int i = 0; i < levels; ++i) path += "/" + folder;
  return path;
}

class LongTextsTest : public WindowTest {
 protected:
  // Within the screen, not too wide, and nothing of it cut off.
  static void ExpectFits(Fl_Window& window, const std::string& what) {
    EXPECT_LE(window.w(), Fl::w() * 2 / 3) << what;
    EXPECT_GE(window.x(), 0) << what;
    EXPECT_GE(window.y(), 0) << what;
    EXPECT_LE(window.x() + window.w(), Fl::w()) << what;
    EXPECT_LE(window.y() + window.h(), Fl::h()) << what;
    for (const Drawn& drawn : Drawing(window).In(window)) {
      fl_font(FL_HELVETICA, Sizes::kFontSize);
      EXPECT_LE(drawn.x + fl_width(drawn.text.c_str()), window.w()) << drawn.text;
    }
  }
};

TEST_F(LongTextsTest, AWindowIsMadeAsSmallAsTheScreen) {
  Fl_Window big(Fl::w() - 100, 50, Fl::w() + 300, 200);
  big.end();
  FitScreen(big, nullptr);
  EXPECT_EQ(big.x(), 0);
  EXPECT_EQ(big.w(), Fl::w());
  EXPECT_EQ(big.h(), 200);
  Fl_Window small(Fl::w() - 100, Fl::h() - 50, 300, 200);
  small.end();
  FitScreen(small, nullptr);
  EXPECT_EQ(small.x() + small.w(), Fl::w());
  EXPECT_EQ(small.y() + small.h(), Fl::h());
  EXPECT_EQ(small.w(), 300);
}

TEST_F(LongTextsTest, AMessageBoxStaysOnTheScreen) {
  std::string all = "These files do not exist:";
  for (int i = 0; i < 8; ++i)
    all += "\n" + Deep("no blank in this folder@" + std::to_string(i), 150);
  const std::string texts[] = {
      Deep("a_folder_with_a_name", 90) + "/door@panel.k",
      std::string(4000, 'x') + "/door@panel.k",
      "Job [" + Deep("folder", 90) + "] waits for " + Deep("a_folder_with_a_name", 90) +
          "/door@panel.k",
      "文件“" + Deep("一个名称很长的文件夹", 60) + "/door@panel.k”不存在，请检查。",
      all + "\n/w/door@panel.k",
      std::string(300, '\n') + "door@panel.k",
  };
  for (const std::string& text : texts) {
    for (const auto& [x, y] : {std::pair{0, 0}, std::pair{1400, 900}, std::pair{-1300, -500}}) {
      window_->position(x, y);
      Talk([&] { ComnMsgBox::Inform(window_.get(), "Title", text, "OK"); }, {[&](Fl_Window& box) {
             ExpectFits(box, text.substr(0, 30));
             const std::string said = Drawing(box).Text(box);
             EXPECT_NE(said.find("door@panel.k"), std::string::npos) << said;
             EXPECT_EQ(text.find("waits for") != std::string::npos,
                       said.find("waits for") != std::string::npos);
             Key(box, FL_Enter);
           }});
    }
  }
}

TEST_F(LongTextsTest, ATipKeepsTheNameOfTheFile) {
  const std::string path = Deep("a_folder_with_a_name", 90) + "/door@panel.k";
  Add(MakeJob<JobFileDyna>(path));
  MoveToCell(Table(), 0, "Job Name");
  const auto expectTip = [&](const char* where) {
    Fl_Window* tip = TipWindow();
    ASSERT_TRUE(tip) << where;
    ExpectFits(*tip, "tip");
    EXPECT_LT(tip->h(), Fl::h() / 3);
    const std::string said = Drawing(*tip).Text(*tip);
    EXPECT_TRUE(said.starts_with("/a_folder_with")) << said;
    EXPECT_NE(said.find("…"), std::string::npos) << said;
    EXPECT_TRUE(said.ends_with("door@panel.k")) << said;
  };
  expectTip("row");
  Group()->SetName(path);
  window_->Perform(Action::kRefresh);
  GroupTabs& tabs = Part<GroupTabs>();
  MoveTo(*window_, tabs.x() + 20, tabs.y() + 5);
  expectTip("tab");
  auto& button = Find<Fl_Button>(*window_, "...");
  SetTip(button, path);
  Fl_Tooltip::enter(&button);  // as the toolkit does for a widget under the mouse
  expectTip("button");
}

TEST_F(LongTextsTest, ATipOfBlanksAndLinesEndsToo) {
  std::string options;
  for (int i = 0; i < 3000; ++i) options += "p=" + std::to_string(i) + (i % 9 ? " " : "\n");
  auto job = MakeJob<JobFileDyna>("/w/a.k");
  job->extraOptions = options;
  Add(job);
  MoveToCell(Table(), 0, "Other Param");
  Fl_Window* tip = TipWindow();
  ASSERT_TRUE(tip);
  ExpectFits(*tip, "options");
}

}  // namespace
