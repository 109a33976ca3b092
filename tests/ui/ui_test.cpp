// The parts of the interface that need no display.

#include <gtest/gtest.h>

#include "support/TempFolder.h"
#include "ui/dialogs/ComnFileDialog.h"
#include "ui/dialogs/DialogLayout.h"
#include "ui/window/KeywordFiles.h"
#include "util/text/PlainText.h"

namespace {

TEST(DialogLayout, KeepsGeometryInAnotherLanguage) {
  const std::string rest = "1,2,3,4,2,3,49,49,0,0,12,56,0,99,";
  EXPECT_EQ(ChineseLayout("ID_BUTTON1,Button,\"A, b\"," + rest +
                          "\"Tip\",0,0,0,0,\"确定, x\",\"提示\"\n" +
                          "# a comment, \"x\"\nID_BOX,Box,\"Gone\"," + rest +
                          "\"Gone\",0,0,0,5,\"\"\n" + "ID_OTHER,Box,\"Stays\",1,2,3"),
            "ID_BUTTON1,Button,\"确定, x\"," + rest + "\"提示\",0,0,0,0\n" +
                "# a comment, \"x\"\nID_BOX,Box,\"\"," + rest + "\"\",0,0,0,5\n" +
                "ID_OTHER,Box,\"Stays\",1,2,3\n");
}

TEST(KeywordFiles, UnderstandDroppedAddressesAndPlainPaths) {
  const auto paths = DroppedPaths(
      "file:///data/door%20inner.k\r\n# comment\r\nfile://localhost/a%25b\nfile:/c\nhttp://host/x\n"
      "/plain/p%20q.k\nfile:///bad%zz%00\n");
  const std::vector<std::string> expected = {"/data/door inner.k", "/a%b", "/c", "/plain/p%20q.k",
                                             "/bad%zz%00"};
  EXPECT_EQ(paths, expected);
}

TEST(Numbers, TakesWholeNumbersOnly) {
  EXPECT_EQ(WholeNumber(" 42 ", 0, 100), 42);
  EXPECT_EQ(WholeNumber("100", 0, 100), 100);
  for (const char* text : {"", " ", "101", "-1", "4.2", "4 2", "0x10", "12345678901234567890"})
    EXPECT_FALSE(WholeNumber(text, 0, 100)) << text;
}

TEST(ComnFileDialog, TranslatesFilters) {
  EXPECT_EQ(ComnFileDialog::ToolkitFilter("Dyna File (*.dyn;*.k)|*.dyn;*.k|All Files (*.*)|*|"),
            "Dyna File \t*.{dyn,k}\nAll Files \t*\n");
  EXPECT_EQ(ComnFileDialog::ToolkitFilter("D3dump |*d3dump*|All Files (*.*)|*.*|"),
            "D3dump  \t*d3dump*\nAll Files \t*\n");
  EXPECT_EQ(ComnFileDialog::ToolkitFilter(""), "");
}

}  // namespace
