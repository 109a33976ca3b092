// The help window, driven through real keys and clicks.

#include <gtest/gtest.h>
#include <unistd.h>

#include "window/WindowFixture.h"

namespace {

class HelpWindow : public WindowFixture {
 protected:
  void SetUp() override {
    WindowFixture::SetUp();
    copy_ = desktop_.Start({});
    ASSERT_TRUE(desktop_.OpenMain()) << TempFolder::Read(copy_.output);
  }

  void Open() {
    desktop_.Key("F1");
    const std::vector<std::string> windows = desktop_.Windows("KestrunHelp");
    ASSERT_EQ(windows.size(), 1U);
    help_ = windows.front();
    ASSERT_TRUE(Desktop::WaitFor([&] { return desktop_.ActiveWindow() == help_; }, 5));
    ASSERT_TRUE(ShowsTitle("Help - Kestrun"));
  }

  std::string Title() const { return desktop_.Command("xdotool getwindowname " + help_); }
  bool ShowsTitle(const std::string& title) const {
    return Desktop::WaitFor([&] { return Title() == title + "\n"; }, 5);
  }
  bool Closed() const { return WindowFixture::Closed("KestrunHelp"); }

  // Clicks down the page until a link has led to another one.
  bool FollowALink() const {
    const std::string before = Title();
    for (int y = 120; y < 600 && Title() == before; y += 9) {
      desktop_.Command("xdotool mousemove --window " + help_ + " 350 " + std::to_string(y) +
                       " click 1");
      usleep(60000);
    }
    return Title() != before;
  }

  Copy copy_;
  std::string help_;
};

TEST_F(HelpWindow, LeadsThroughThePagesWhileWorkGoesOn) {
  Open();
  ASSERT_TRUE(FollowALink());
  const std::string second = Title();
  desktop_.Key("alt+Left");
  EXPECT_TRUE(ShowsTitle("Help - Kestrun"));
  desktop_.Key("alt+Right");
  EXPECT_TRUE(ShowsTitle(second.substr(0, second.size() - 1)));

  desktop_.Command("xdotool windowactivate --sync " + desktop_.Main());
  desktop_.Key("ctrl+t");
  Open();  // the same window, at its first page again
  desktop_.Command("xdotool windowsize --sync " + help_ + " 700 500");
  desktop_.Key("Escape");
  ASSERT_TRUE(Closed());
  Open();
  const Area area = desktop_.AreaOf(help_);
  EXPECT_EQ(area.w, 700);
  EXPECT_EQ(area.h, 500);

  desktop_.Command("xdotool windowactivate --sync " + desktop_.Main());
  desktop_.Key("ctrl+q");
  EXPECT_EQ(desktop_.WaitExit(copy_, 10), 0) << TempFolder::Read(copy_.output);
  EXPECT_EQ(TempFolder::Read(desktop_.Groups()), "Group1=\nGroup2=\n");
}

}  // namespace
