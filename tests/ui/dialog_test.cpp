// Dialogs as they are built from their layouts.

// Before the toolkit, whose headers bring macros of the window system.
#include <gtest/gtest.h>

#include <FL/Fl.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Menu_Button.H>
#include <FL/Fl_Round_Button.H>

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

TEST(DialogBuilder, MakesEachTypeWithItsAttributes) {
  std::string lines = "#" + Line("ID_NOTE", "Button", "1,1,1,1");
  for (const char* type : {"Button", "Box", "Input", "Group", "Check_Button", "Round_Button",
                           "Choice", "Browser", "Scrollbar", "Scroll", "Slider", "Tabs", "Counter",
                           "Value_Slider", "Menu_Button", "Help_View", "Menu_Bar"})
    lines += Line(type, type, type == std::string("Group") ? "350,250,5,5" : "300,200,20,10");
  lines += Line("ID_BAD", "Buttons", "1,1,1,1") + Line("ID_CASE", "button", "1,1,1,1") +
           "ID_SUB,Button,,1,1,5,5,2,3,49,49,0,0,9,56,0,0,,0\n";
  const Built dialog(lines);
  ASSERT_TRUE(dialog.built_);
  EXPECT_EQ(dialog.Window()->children(), 18) << "what is open would have swallowed others";
  EXPECT_EQ(dialog.Window()->labelsize(), 12);
  EXPECT_TRUE(dialog.Window()->modal());
  for (const char* id : {"ID_EARLY", "ID_NOTE", "ID_BAD", "ID_CASE"})
    EXPECT_EQ(dialog.FindWidget(id), nullptr) << id;
  for (const char* id : {"Button", "Check_Button", "Round_Button"})
    EXPECT_EQ(dialog.Find(WidgetName<Fl_Button>{id})->down_box(), 14) << id;
  EXPECT_EQ(dialog.Find(WidgetName<Fl_Choice>{"Choice"})->down_box(), 14);
  EXPECT_EQ(dialog.Find(WidgetName<Fl_Menu_Button>{"Menu_Button"})->down_box(), FL_NO_BOX)
      << "not of a choice";
  const auto* round = dialog.Find(WidgetName<Fl_Round_Button>{"Round_Button"});
  EXPECT_EQ(round->type(), Fl_Round_Button(0, 0, 1, 1).type()) << "99 keeps it";
  EXPECT_EQ(dialog.FindWidget("ID_SUB")->type(), 0);
  EXPECT_EQ(round->labelsize(), 12);
  EXPECT_EQ(round->labelfont(), 4);
  EXPECT_EQ(round->selection_color(), 15U);
  EXPECT_EQ(round->align(), 20U);
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
