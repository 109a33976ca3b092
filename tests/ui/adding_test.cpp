// What is dropped on the window, and the bars that ask about it.

#include <FL/Fl.H>
#include <FL/Fl_Button.H>

#include "ui/window/Layout.h"
#include "ui/window/NoticeBar.h"
#include "ui/WindowFixture.h"

namespace {

class Adding : public WindowTest {
 protected:
  void Drop(const std::vector<std::string>& paths) {
    std::string text;
    for (const std::string& path : paths) text += path + "\n";
    Fl::e_text = text.data();
    Fl::e_length = static_cast<int>(text.size());
    window_->handle(FL_PASTE);
  }
  // Of the bars that are shown.
  std::string Bars() {
    std::string text;
    for (NoticeBar* bar : All<NoticeBar>(*window_)) {
      if (bar->visible()) text += Drawing(*window_).Text(*bar);
    }
    return text;
  }
  bool BarsSay(const std::string& key, const std::string& one, const std::string& two = {}) {
    const std::string text = two.empty() ? texts_.Format(key, one) : texts_.Format(key, one, two);
    return Until([&] { return Bars().find(text) != std::string::npos; });
  }
  std::string NameOf(std::size_t row) {
    std::string name;
    Group()->ReadJob(Group()->JobIds().at(row), [&](const JobFile& job) {
      name = dynamic_cast<const JobFileDyna&>(job).outputName;
    });
    return name;
  }
};

TEST_F(Adding, DecksOfOneFolderAreKeptApartWhenAsked) {
  const std::string a = home_.Write("a.k", "*KEYWORD\n*END\n");
  const std::string b = home_.Write("b.k", "*KEYWORD\n*END\n");
  Drop({a});
  EXPECT_TRUE(Until([&] { return Rows().size() == 1; }));
  EXPECT_EQ(Bars(), "");
  Drop({b});
  ASSERT_TRUE(BarsSay("ui_apart", "2"));
  Press(Find<Fl_Button>(*window_, "As they are"));
  EXPECT_EQ(Bars(), "");
  EXPECT_EQ(NameOf(0), "");

  Drop({home_.Write("c.k", "*KEYWORD\n*END\n")});
  ASSERT_TRUE(BarsSay("ui_apart", "3"));
  // In a low window the rows keep their room, and the next bar waits for this one.
  std::filesystem::create_directories(home_ / "tree/below");
  home_.Write("tree/below/x.k", "*KEYWORD\n*END\n");
  Drop({home_ / "tree"});
  ASSERT_TRUE(BarsSay("ui_below", "1", "1"));
  window_->size(window_->w(), Layout::kMinHeight);
  ASSERT_TRUE(BarsSay("ui_apart", "3") && BarsSay("ui_more_bars", "1"));
  EXPECT_EQ(Bars().find(texts_.Format("ui_below", "1")), std::string::npos);
  window_->size(window_->w(), kHeight);
  Press(Find<Fl_Button>(*window_, "Keep apart"));
  EXPECT_TRUE(LineSays(texts_.Format("ui_apart_done", "3")));
  ASSERT_TRUE(BarsSay("ui_below", "1", "1"));
  Press(Find<Fl_Button>(*window_, "Leave them"));
  EXPECT_EQ(Bars(), "");
  EXPECT_EQ(NameOf(0) + NameOf(1) + NameOf(2), "abc");
  Files().Set(&Settings::separate_results, 0);
  Drop({a, b});
  EXPECT_TRUE(Until([&] { return Rows().size() == 5; }));
  EXPECT_EQ(Bars(), "");
}

TEST_F(Adding, AFolderOffersThoseBelow) {
  for (const char* folder : {"tree/run1", "tree/run2", "other/below", "empty"})
    std::filesystem::create_directories(home_ / folder);
  home_.Write("tree/main.KEY", "*KEYWORD\n*INCLUDE\nmesh.k\n*END\n");
  home_.Write("tree/mesh.k", "*KEYWORD\n*END\n");
  home_.Write("tree/of_run.k", "*KEYWORD\n*END\n");
  home_.Write("tree/run1/a.k", "*KEYWORD\n*INCLUDE\n../run2/b.k\n*INCLUDE\n../of_run.k\n*END\n");
  home_.Write("tree/run2/b.k", "*KEYWORD\n*END\n");
  home_.Write("other/below/c.k", "*KEYWORD\n*END\n");
  Drop({home_ / "other"});
  ASSERT_TRUE(BarsSay("ui_below", "1", "1"));
  Drop({home_ / "tree"});
  ASSERT_TRUE(BarsSay("ui_below", "2", "2")) << "what was offered before is not forgotten";
  EXPECT_TRUE(LineSays(texts_.Format("ui_included_left_out", "3")));
  EXPECT_NE(TempFolder::Read(Files().Log().Path()).find("mesh.k"), std::string::npos);
  EXPECT_TRUE(Until([&] { return Rows().size() == 1; }));
  Press(Find<Fl_Button>(*window_, "Add them"));
  EXPECT_TRUE(Until([&] { return Rows().size() == 3; }));
  EXPECT_EQ(Bars(), "") << "each in a folder of its own";
  const auto dropEmpty = [&] {
    Drop({home_ / "empty"});
    Until([] { return false; }, 1);
  };
  EXPECT_EQ(Answer(dropEmpty, "OK"), Say("ui_no_keyword_files"));
}

}  // namespace
