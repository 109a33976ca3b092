// The jobs of the last session, as the window offers them.

#include "ui/window/NoticeBar.h"

#include <FL/Fl_Button.H>

#include "ui/WindowFixture.h"

namespace {

class LeftBarTest : public WindowTest {
 protected:
  std::string Bar() {
    NoticeBar* const bar = Look<NoticeBar>(*window_);
    return bar != nullptr ? Drawing(*window_).Text(*bar) : std::string();
  }
  // A session with jobs that ends as it should.
  void Leave() {
    Add(MakeJob<JobFileDyna>("/w/1.k", JobStatus::kAborted));
    Add(MakeJob<JobFileDyna>("/w/2.k"));
    Add(MakeJob<JobFileDyna>("/w/3.k"));
    Start();
  }
};

TEST_F(LeftBarTest, JobsAreOfferedUntilTheyAreRestored) {
  EXPECT_EQ(Bar(), "");
  Leave();
  EXPECT_TRUE(Bar().starts_with("3 jobs of ")) << Bar();
  EXPECT_NE(Bar().find(": 2 queued, 1 had ended"), std::string::npos) << Bar();
  Start();
  Press(Find<Fl_Button>(*window_, "Restore"));
  EXPECT_EQ(Bar(), "");
  EXPECT_EQ(Rows().size(), 3U);
  EXPECT_TRUE(LineSays(texts_.Format("ui_left_restored", "3")));
}

TEST_F(LeftBarTest, ForgettingAsks) {
  Leave();
  const auto press = [&] { Press(Find<Fl_Button>(*window_, "Forget")); };
  EXPECT_EQ(Answer(press, "No"), Say("ui_left_ask_forget"));
  EXPECT_NE(Bar(), "");
  Answer(press, "Yes");
  EXPECT_EQ(Bar(), "");
  Start();
  EXPECT_EQ(Bar(), "");
}

}  // namespace
