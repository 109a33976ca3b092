// Dialogs as they are built from their layouts.

// Before the toolkit, whose headers bring macros of the window system.
#include <gtest/gtest.h>

#include <FL/Fl.H>

#include <string>

#include "ui/dialogs/Flx_Base_Dialog.h"
#include "ui/fltk/LineInput.h"

namespace {

class Built : public Flx_Base_Dialog {
 public:
  explicit Built(const std::string& lines) : Flx_Base_Dialog(nullptr, 0) {
    SetLayout(
        "ID_EARLY,Box,\"no window yet\",1,2,3,4\n"
        "ID_WINDOW,Window,\"Title\",779,213,400,300,1,1,49,49,1,0,14,56,1,99,\"\",0\n" +
        lines);
    built_ = Build();
  }
  bool built_ = false;
};

std::string Line(const std::string& id, const std::string& type, const std::string& place) {
  return id + "," + type + ",\"x\"," + place + ",3,14,7,15,0,4,20,56,20,99,\"\",0\n";
}

TEST(DialogBuilder, PutsWidgetsIntoTheFirstGroupAtTheirCorner) {
  const Built dialog(Line("ID_GROUP1", "Group", "10,10,100,50") +
                     Line("ID_GROUP2", "Group", "60,20,100,90") +
                     Line("ID_EDGE", "Box", "110,60,5,5") + Line("ID_SECOND", "Box", "111,60,5,5") +
                     Line("ID_OUT", "Box", "9,10,50,50") +
                     "ID_TWICE,Box,\"one\",0,0,9,9,0,0,0,0,0,0,0,0,0,99,\"a tip of the first\"\n"
                     "ID_TWICE,Box,\"two\",0,0,9,9,0,0,0,0,0,0,0,0,0,99,\"" +
                     std::string(300, 't') + "\"\n");
  const auto in = [&](const char* id) { return dialog.FindWidget(id)->parent(); };
  EXPECT_EQ(in("ID_GROUP1"), dialog.Window());
  EXPECT_EQ(in("ID_GROUP2"), dialog.FindWidget("ID_GROUP1"));
  EXPECT_EQ(in("ID_EDGE"), dialog.FindWidget("ID_GROUP1")) << "edges belong to the group";
  EXPECT_EQ(in("ID_SECOND"), dialog.FindWidget("ID_GROUP2"));
  EXPECT_EQ(in("ID_OUT"), dialog.Window());
  EXPECT_STREQ(dialog.FindWidget("ID_TWICE")->label(), "two");
  const int first = dialog.Window()->find(dialog.FindWidget("ID_TWICE")) - 1;
  EXPECT_STREQ(dialog.Window()->child(first)->tooltip(), "a tip of the first");
}

TEST(LineInput, KeepsPastedTextsOnOneLine) {
  LineInput input(0, 0, 100, 20);
  std::string pasted = "-x 1\r\n[SOLVER]\ninc=\xC3\xA9\x7F\n";
  Fl::e_text = pasted.data();
  Fl::e_length = static_cast<int>(pasted.size());
  ASSERT_EQ(input.handle(FL_PASTE), 1);
  EXPECT_STREQ(input.value(), "-x 1  [SOLVER] inc=\xC3\xA9");
  EXPECT_EQ(Fl::e_text, pasted.data());
}

}  // namespace
