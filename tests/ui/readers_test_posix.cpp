// The windows that show texts: the viewer of a file and the help.

#include "ui/WindowFixture.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_Help_View.H>
#include <FL/Fl_Hold_Browser.H>
#include <FL/Fl_Text_Display.H>

#include "ui/help/HelpWindow.h"
#include "ui/help/TextViewer.h"

namespace {

// The window of this kind that is open; null when there is none.
template <typename Kind>
Kind* Opened() {
  for (Fl_Window* window = Fl::first_window(); window; window = Fl::next_window(window)) {
    if (auto* found = dynamic_cast<Kind*>(window)) return found;
  }
  return nullptr;
}

class TextViewerTest : public WindowTest {
 protected:
  TextViewer& Show() {
    EXPECT_TRUE(TextViewer::Show(path_, texts_));
    return *Opened<TextViewer>();
  }
  void Append(const std::string& text) { std::ofstream(path_, std::ios::app) << text; }
  void Lines(int megabytes) {
    std::string lines(1024 * 1024, '.');
    for (std::size_t end = 0; end < lines.size(); end += 64) lines[end] = '\n';
    for (int megabyte = 0; megabyte < megabytes; ++megabyte) Append(lines);
  }
  static Fl_Text_Display& Display() { return Find<Fl_Text_Display>(*Opened<TextViewer>()); }
  static std::string Text() {
    char* bytes = Display().buffer()->text();
    const std::string text = bytes;
    std::free(bytes);
    return text;
  }
  // What is said around the text.
  static std::string Note() {
    std::string note;
    for (Fl_Widget* widget : WidgetsOf(*Opened<TextViewer>())) {
      if (dynamic_cast<Fl_Box*>(widget) && widget->label()) note += widget->label();
    }
    return note;
  }
  static void Search(const std::string& words, int state = 0) {
    TextViewer& viewer = *Opened<TextViewer>();
    Key(viewer, 'f', FL_CTRL);
    Key(viewer, words.front(), 0, words);
    Key(viewer, FL_Enter, state);
  }
  static int Marked() {
    int begin = -1, end = -1;
    return Display().buffer()->selection_position(&begin, &end) ? begin : -1;
  }

  const std::string path_ = home_.Write("messag", "one\r\n\xFFtwo \xC3");
};

TEST_F(TextViewerTest, FollowsAFileThatGrows) {
  EXPECT_STREQ(Show().label(), path_.c_str());
  EXPECT_EQ(Text(), "one\n\xEF\xBF\xBDtwo ") << "the beginning of a character waits";
  EXPECT_EQ(Note(), "11 bytes");
  Append("\xA9\nthree\n");
  EXPECT_TRUE(Until([] { return Text() == "one\n\xEF\xBF\xBDtwo \xC3\xA9\nthree\n"; })) << Text();
  EXPECT_EQ(Display().insert_position(), Display().buffer()->length());
  Display().insert_position(0);
  Append("four\n");
  EXPECT_TRUE(Until([] { return Text().ends_with("four\n"); }));
  EXPECT_EQ(Display().insert_position(), 0) << "who reads elsewhere is left there";
  home_.Write("messag", "anew");
  EXPECT_TRUE(Until([] { return Text() == "anew"; }));
  std::filesystem::remove(path_);
  EXPECT_TRUE(Until([&] { return Note() == Say("ui_text_gone"); }));
  Press(Find<Fl_Button>(*Opened<TextViewer>(), "Reload"));
  EXPECT_EQ(Text(), "anew");
}

TEST_F(TextViewerTest, FollowsAFileToItsKeptName) {
  TextViewer& viewer = Show();
  Append("end");
  std::filesystem::rename(path_, path_ + ".krb");
  EXPECT_TRUE(Until([&] { return viewer.label() == path_ + ".krb"; }));
  EXPECT_TRUE(Until([] { return Text().ends_with("end"); }));
  EXPECT_TRUE(TextViewer::Show(path_ + ".krb", texts_));
  EXPECT_EQ(Opened<TextViewer>(), &viewer);
  EXPECT_FALSE(TextViewer::Show(path_, texts_));

  home_.Write("messag", "the next run");
  Show();
  ASSERT_EQ(Text(), "the next run");
  std::filesystem::remove(path_);  // beside a kept file of another run
  EXPECT_TRUE(Until([&] { return Note() == Say("ui_text_gone"); }));
  Key(*Opened<TextViewer>(), FL_F + 5);
  EXPECT_EQ(Text(), "the next run");
}

TEST_F(TextViewerTest, FindsWordsAndGoesRoundTheEnds) {
  home_.Write("messag", "Error one\nan error\n");
  TextViewer& viewer = Show();
  Search("eRRor");
  EXPECT_EQ(Note(), "Line 1; went on from the beginning19 bytes");
  Key(viewer, FL_F + 3);
  EXPECT_EQ(Marked(), 13);
  EXPECT_EQ(Note(), "Line 219 bytes");
  Key(viewer, FL_F + 3, FL_SHIFT);
  Key(viewer, FL_F + 3, FL_SHIFT);
  EXPECT_EQ(Marked(), 13);
  EXPECT_NE(Note().find("went on from the end"), std::string::npos) << Note();
  Search("nowhere");
  EXPECT_NE(Note().find("Not found: nowhere"), std::string::npos) << Note();
  EXPECT_EQ(Fl::modal(), nullptr);
}

TEST_F(TextViewerTest, FindsWordsInTheWholeOfABigFile) {
  constexpr int kMegabyte = 1024 * 1024;
  const auto put = [&](int at, const std::string& text) {
    std::fstream file(path_, std::ios::in | std::ios::out);
    file.seekp(at);
    file << text;
  };
  Lines(20);
  put(4 * kMegabyte - 3, "NEEDLE \xC3\x84\r\n");  // across the border of two pieces
  put(8 * kMegabyte, "\nneedle 2\n");
  Show();
  bool searching = false;
  const auto finds = [&](const std::string& words) {
    return Until([&] {
      searching = searching || Note().find("Searching") != std::string::npos;
      return Marked() >= 0 &&
             Text().compare(static_cast<std::size_t>(Marked()), words.size(), words) == 0;
    });
  };
  Search("needle");
  EXPECT_TRUE(finds("NEEDLE \xC3\x84\n"));
  EXPECT_TRUE(searching) << "the window is not kept waiting";
  EXPECT_NE(Note().find("went on from the beginning"), std::string::npos) << Note();
  Key(*Opened<TextViewer>(), FL_F + 3);
  EXPECT_TRUE(finds("needle 2\n"));
  Key(*Opened<TextViewer>(), FL_F + 3, FL_SHIFT);
  EXPECT_TRUE(finds("NEEDLE"));
  Search("\xC3\xA4", FL_SHIFT);
  EXPECT_TRUE(finds("\xC3\x84\n"));
  Append("needle at the end");
  Search("needle at", FL_SHIFT);
  EXPECT_TRUE(finds("needle at the end"));
  Search("nowhere");
  EXPECT_TRUE(Until([] { return Note().find("Not found: nowhere") != std::string::npos; }));
}

TEST_F(TextViewerTest, ShowsTheEndOfABigFile) {
  Lines(9);
  Append("the end");
  Key(Show(), FL_F + 5);
  EXPECT_EQ(static_cast<std::int64_t>(Text().size()), TextViewer::kMostBytes);
  EXPECT_TRUE(Text().ends_with("the end"));
  EXPECT_NE(Note().find("Only the last 8 MB"), std::string::npos);
  TextViewer* first = Opened<TextViewer>();
  EXPECT_EQ(&Show(), first) << "one window a file";
  Press(Find<Fl_Button>(*first, "Close"));
  Fl::check();
  EXPECT_FALSE(Opened<TextViewer>());
  EXPECT_FALSE(TextViewer::Show(home_ / "missing", texts_));
}

class HelpTest : public WindowTest {
 protected:
  HelpWindow& Open() {
    PressKey(FL_F + 1);
    return *Opened<HelpWindow>();
  }
  static std::string Title() { return Opened<HelpWindow>()->label(); }
};

TEST_F(HelpTest, LeadsThroughThePages) {
  HelpWindow& help = Open();
  EXPECT_EQ(Title(), "Help - Kestrun");
  Key(help, FL_End);  // where the links are; they have a colour of their own
  auto& view = Find<Fl_Help_View>(help);
  const std::vector<Drawn> words = Drawing(help).In(view);
  const auto link = std::find_if(words.begin(), words.end(),
                                 [](const Drawn& word) { return word.color == FL_BLUE; });
  ASSERT_NE(link, words.end());
  ClickAt(help, link->x + 1, link->y - 1);
  EXPECT_TRUE(Until([] { return Title() != "Help - Kestrun"; }));
  const std::string second = Title();
  Key(help, FL_Left, FL_ALT);
  EXPECT_EQ(Title(), "Help - Kestrun");
  Press(Find<Fl_Button>(help, "Forward"));
  EXPECT_EQ(Title(), second);
  help.size(700, 1000);  // the contents are long
  Press(Find<Fl_Hold_Browser>(help), "All settings");
  EXPECT_EQ(Title(), "Help - All settings");

  help.size(700, 500);
  EXPECT_EQ(&Open(), &help) << "the same window";
  EXPECT_EQ(Title(), "Help - Kestrun") << "at its first page again";
  Key(help, FL_Escape);
  Fl::check();
  EXPECT_FALSE(Opened<HelpWindow>());
  EXPECT_EQ(Open().w(), 700);
}

TEST_F(HelpTest, FindsWords) {
  HelpWindow& help = Open();
  auto& find = Find<Fl_Input>(help);
  find.take_focus();
  Key(help, 's', 0, "nosuchword");
  Key(help, FL_Enter);
  EXPECT_EQ(Find<Fl_Box>(help).label(), std::string("Not found: nosuchword"));
}

}  // namespace
