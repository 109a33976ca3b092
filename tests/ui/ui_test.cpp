// The parts of the interface that need no display.

#include <gtest/gtest.h>

#include "support/TempFolder.h"
#include "ui/dialogs/ComnFileDialog.h"
#include "ui/dialogs/DialogLayout.h"
#include "ui/window/KeywordFiles.h"
#include "ui/window/ProgramOptions.h"
#include "util/text/PlainText.h"

namespace {

TEST(DialogLayout, ReadsFieldsAsTheyStand) {
  const auto lines = ParseLayout(
      "# a comment\n\n"
      "ID_WINDOW,Window,\"Title, with a "
      "comma\",779,213,375,328,1,1,49,49,1,0,14,56,1,99,\"\",0,0,0,0\n"
      "ID_BUTTON1,Button,\"OK\",98,42,80,24,2,3,49,49,0,0,12,56,0,0,\"Tip\",0\n"
      "ID_BOX,Box,,1,2\n"
      "ID_SHORT,Box\n"
      ",Box,\"no id\",1\n"
      "ID_LAST,Box,\"x\",1,2,3,4,0,0,49,49,0,0,12,56,20,99,,0");
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0].label, "Title, with a comma");
  EXPECT_EQ(lines[0].typeName, "Fl_Window");
  EXPECT_EQ(lines[0].x, 779);
  EXPECT_EQ(lines[0].labelColor, 56);
  EXPECT_EQ(lines[0].subtype, kKeepSubtype);
  EXPECT_EQ(lines[1].downBox, 3);
  EXPECT_EQ(lines[1].subtype, 0);
  EXPECT_EQ(lines[1].tooltip, "Tip");
  EXPECT_EQ(lines[2].label, "");
  EXPECT_EQ(lines[2].width, 0);  // numbers that are missing
  EXPECT_EQ(lines[3].tooltip, "");
}

TEST(DialogLayout, KeepsGeometryInAnotherLanguage) {
  const LineTexts texts[] = {{"ID_BUTTON1", "确定, x", "提示"}, {"ID_BOX", "", "提示"}};
  EXPECT_EQ(TranslatedLayout("ID_BUTTON1,Button,\"A, b\",1,2,3,4,2,3,49,49,0,0,12,56,0,99,,5\n"
                             "# a comment, \"x\"\nID_BOX,Box,\"Gone\",7\n"
                             "ID_OTHER,Box,\"Stays\",1,2,3",
                             texts),
            "ID_BUTTON1,Button,\"确定, x\",1,2,3,4,2,3,49,49,0,0,12,56,0,99,\"提示\",5\n"
            "# a comment, \"x\"\nID_BOX,Box,\"\",7,,,,,,,,,,,,,,\"提示\"\n"
            "ID_OTHER,Box,\"Stays\",1,2,3\n");
}

TEST(DropTarget, UnderstandsAddressesAndPlainPaths) {
  const auto paths = DroppedPaths(
      "file:///data/door%20inner.k\r\n# comment\r\nfile://localhost/a%25b\nfile:/c\nhttp://host/x\n"
      "/plain/p%20q.k\nfile:///bad%zz%00\n");
  const std::vector<std::string> expected = {"/data/door inner.k", "/a%b", "/c", "/plain/p%20q.k",
                                             "/bad%zz%00"};
  EXPECT_EQ(paths, expected);
}

TEST(DropTarget, TakesTheKeywordFilesOfAFolderInOrder) {
  const TempFolder folder;
  for (const char* name : {"b.K", "a.dyn", "c.DYN", "d.key", "k", "e.k.bak"})
    folder.Write(name, "");
  std::filesystem::create_directory(folder / "f.k");
  const std::vector<std::string> expected = {folder / "a.dyn", folder / "b.K", folder / "c.DYN"};
  EXPECT_EQ(KeywordFiles(folder.Path()), expected);
}

TEST(Numbers, TakesWholeNumbersOnly) {
  EXPECT_EQ(WholeNumber(" 42 ", 0, 100), 42);
  EXPECT_EQ(WholeNumber("100", 0, 100), 100);
  for (const char* text : {"", " ", "101", "-1", "4.2", "4 2", "0x10", "12345678901234567890"})
    EXPECT_FALSE(WholeNumber(text, 0, 100)) << text;
}

TEST(ProgramOptions, TakesItsOwnAndLeavesTheRest) {
  std::vector<std::string> arguments = {"--submit",         "--submit",     "a.k",
                                        "--report=out.txt", "#solver=dyna", "--odd",
                                        "--quit-when-done"};
  const ProgramOptions options = TakeOptions(arguments);
  EXPECT_TRUE(options.submit && options.quitWhenDone);
  EXPECT_FALSE(options.help || options.version);
  EXPECT_EQ(options.report, FileDirWrapper::AbsolutePath("out.txt"));
  const std::vector<std::string> expected = {"--submit", "a.k", "#solver=dyna", "--odd"};
  EXPECT_EQ(arguments, expected);
}

TEST(ComnFileDialog, TranslatesFilters) {
  EXPECT_EQ(ComnFileDialog::ToolkitFilter("Dyna File (*.dyn;*.k)|*.dyn;*.k|All Files (*.*)|*|"),
            "Dyna File \t*.{dyn,k}\nAll Files \t*\n");
  EXPECT_EQ(ComnFileDialog::ToolkitFilter("D3dump |*d3dump*|All Files (*.*)|*.*|"),
            "D3dump  \t*d3dump*\nAll Files \t*\n");
  EXPECT_EQ(ComnFileDialog::ToolkitFilter(""), "");
}

}  // namespace
