// Before the toolkit, whose headers bring macros of the window system.
#include <gtest/gtest.h>

#include <FL/Fl.H>

#include <string>

#include "ui/fltk/LineInput.h"

namespace {

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
