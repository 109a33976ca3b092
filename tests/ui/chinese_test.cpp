// Chinese texts from the sources to the widgets.

#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "ui/dialogs/Flx_Base_Dialog.h"
#include "ui/fltk/Theme.h"
#include "ui/text/Encoding.h"
#include "ui/text/InterfaceTexts.h"
#include "ui/text/TextTable.h"

namespace {

const std::string kMemory936 = "\xC4\xDA\xB4\xE6";  // "内存"

TEST(CodePage936, NoTextLosesACharacter) {
  int chinese = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(KR_SOURCE_DIR "/src")) {
    if (!entry.is_regular_file()) continue;
    std::ifstream file(entry.path());
    for (std::string line; std::getline(file, line);) {
      const std::string there = ToCodePage936(line);
      chinese += there != line;
      EXPECT_EQ(FromCodePage936(there), line) << entry.path();
    }
  }
  EXPECT_GT(chinese, 300);
}

TEST(CodePage936, BadAndLongTextsAreCut) {
  EXPECT_EQ(ToCodePage936("a\xF0\x9F\x98\x80\xFFz\xE4z"), "a??z?z") << "no place for it; no UTF-8";
  EXPECT_EQ(FromCodePage936(kMemory936.substr(0, 3)), "内") << "half a character";
  EXPECT_EQ(FromCodePage936("\xFF\xFFz").back(), 'z');
  std::string text = "x";
  for (int i = 0; i < 1030; ++i) text += kMemory936.substr(0, 2);
  EXPECT_EQ(ConvertedText936(text), text.substr(0, 1 + 2 * 1022)) << "1,023 characters";
}

TEST(ChineseTexts, TakeAsManyValuesAsTheEnglishOnes) {
  const auto values = [](const std::string& text) {
    int count = 0;
    for (std::size_t at = 0; (at = text.find("%s", at)) != std::string::npos; ++at) ++count;
    return count;
  };
  for (const auto& texts : {MainTexts(), MoreTexts()}) {
    for (const TextRow& row : texts) EXPECT_EQ(values(row.english), values(row.chinese)) << row.key;
  }
}

TEST(ChineseTexts, AreKeptInTheCodePageAndShownInUtf8) {
  TextTable texts;
  FillTexts(1, "Title", texts);
  EXPECT_EQ(texts.Stored("lab_memory"), kMemory936);
  EXPECT_EQ(texts.Get("lab_memory"), "内存");
  // A file name goes into a text as it is.
  EXPECT_EQ(texts.Format("ui_reading", "1", "2", "дверь.k"), "正在读取（1/2）：дверь.k");
  for (const TextRow& row : MainTexts()) {
    EXPECT_EQ(texts.Get(row.key), row.chinese);
    EXPECT_EQ(row.asItStands,
              row.key == std::string("msg_open_scp") || row.key == std::string("msg_resubmit"));
  }
}

class Sample : public Flx_Base_Dialog {
 public:
  static constexpr WidgetName<Fl_Button> kButton{"ID_BUTTON1"};
  explicit Sample(int language)
      : Flx_Base_Dialog(
            nullptr, language,
            "ID_WINDOW,Window,\"Memory\",1,2,300,200,1,1,49,49,1,0,14,56,1,99,\"\",0,0,0,0,"
            "\"内存\"\n"
            "ID_BUTTON1,Button,\"Memory\",5,6,80,24,2,3,49,49,0,0,12,56,0,99,\"Tip\",0,0,0,0,"
            "\"内存\",\"内存\"\n",
            kTexts) {}

 private:
  static constexpr DialogText kTexts[] = {{"key", "Memory", "内存"}};
};

TEST(ChineseDialogs, HandLabelsOnInTheCodePage) {
  Sample dialog(1);
  ASSERT_TRUE(dialog.Build());
  const Fl_Widget* button = dialog.Find(Sample::kButton);
  EXPECT_EQ(dialog.Window()->label(), kMemory936);
  EXPECT_EQ(button->label(), kMemory936);
  EXPECT_EQ(button->labeltype(), Theme::kLabel936) << "decodes when it draws";
  EXPECT_STREQ(button->tooltip(), "内存") << "drawn by the toolkit alone";
  EXPECT_EQ(dialog.GetText("key"), kMemory936);
  EXPECT_EQ(dialog.Shown("key"), "内存");
  EXPECT_EQ(dialog.ConvertText(kMemory936), button->label()) << "converted once";
}

}  // namespace
