#include <gtest/gtest.h>

#include <cmath>

#include "support/TempFolder.h"
#include "util/files/GrowingFile.h"
#include "util/files/LineBlocks.h"
#include "util/text/PlainText.h"

namespace {

using News = GrowingFile::News;

struct Taken : LineTaker {
  void BeginAnew() override {
    text.clear();
    ++begins;
  }
  void TakeLines(std::string_view block) override { text += block; }
  std::string text;
  int begins = 0;
};

void Append(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary | std::ios::app) << text;
}

TEST(GrowingFile, TakesWholeLinesOnceAsTheyCome) {
  const TempFolder folder;
  const std::string path = folder / "messag";
  GrowingFile file(path);
  Taken taken;
  EXPECT_EQ(file.Look(taken), News::kMissing);
  folder.Write("messag", "one\r\ntw");
  EXPECT_EQ(file.Look(taken), News::kRead);
  EXPECT_EQ(taken.text, "one\r\n");
  EXPECT_EQ(file.Look(taken), News::kNone);
  Append(path, "o");
  EXPECT_EQ(file.Look(taken), News::kNone);
  Append(path, "\nthree");
  EXPECT_EQ(file.Look(taken), News::kRead);
  EXPECT_EQ(taken.text, "one\r\ntwo\n");
  file.TakeOpenLine(taken);
  EXPECT_EQ(taken.text, "one\r\ntwo\nthree");
  EXPECT_EQ(taken.begins, 0);
}

TEST(GrowingFile, BeginsAnewWithAnotherFile) {
  const TempFolder folder;
  const std::string path = folder.Write("glstat", "1\n2\n3\n");
  GrowingFile file(path);
  Taken taken;
  file.Look(taken);
  folder.Write("glstat", "4\n");  // shorter
  EXPECT_EQ(file.Look(taken), News::kRead);
  EXPECT_EQ(taken.text, "4\n");
  folder.Write("glstat", "5\n6\n7\n8\n");  // longer, in the same place
  file.Look(taken);
  EXPECT_EQ(taken.text, "5\n6\n7\n8\n");
  folder.Write("next", "5\n6\n7\n8\n9\n");  // the same begin, another file
  std::filesystem::rename(folder / "next", path);
  file.Look(taken);
  EXPECT_EQ(taken.text, "5\n6\n7\n8\n9\n");
  EXPECT_EQ(taken.begins, 3);
  std::filesystem::remove(path);
  EXPECT_EQ(file.Look(taken), News::kMissing);
  EXPECT_EQ(taken.text, "5\n6\n7\n8\n9\n");
}

TEST(GrowingFile, CutsALongLineOnceAndFindsItsEnd) {
  const TempFolder folder;
  const std::string path = folder.Write("messag", "a\n" + std::string(200000, 'x'));
  GrowingFile file(path);
  Taken taken;
  file.Look(taken);
  EXPECT_EQ(taken.text.size(), 2 + LineBlocks::kLongestLine);
  Append(path, std::string(100000, 'y'));
  file.Look(taken);
  Append(path, "y\nb\n");
  file.Look(taken);
  EXPECT_EQ(taken.text.size(), 4 + LineBlocks::kLongestLine);
  EXPECT_TRUE(taken.text.ends_with("xb\n"));
  Append(path, "c\n");
  file.Look(taken);
  EXPECT_TRUE(taken.text.ends_with("xb\nc\n"));
  EXPECT_EQ(taken.begins, 0);
}

TEST(GrowingFile, GoesOnWhereItWasStopped) {
  const TempFolder folder;
  std::string text;
  while (text.size() < (20u << 20))
    text += std::to_string(text.size()) + std::string(5000, ' ') + "\n";
  GrowingFile file(folder.Write("messag", text));
  Taken taken;
  int asked = 0;
  const auto refuse = [&](std::uint64_t, std::uint64_t) { return ++asked != 1; };
  EXPECT_EQ(file.Look(taken, refuse), News::kStopped);
  EXPECT_LT(taken.text.size(), text.size());
  EXPECT_EQ(file.Look(taken, refuse), News::kRead);
  EXPECT_TRUE(taken.text == text);
}

TEST(PlainText, NumbersOfAllAges) {
  const std::pair<const char*, double> numbers[] = {
      {"1.25E+01", 12.5}, {"+2", 2},       {"-1.0D-3", -1e-3}, {"-1.5+101", -1.5e101},
      {"1.0-3", 1e-3},    {"1.0E-400", 0}, {".5", 0.5}};
  for (const auto& [text, value] : numbers) {
    ASSERT_TRUE(AnyNumber(text)) << text;
    EXPECT_DOUBLE_EQ(*AnyNumber(text), value) << text;
  }
  for (const char* text : {"NaN", "*****", "Infinity", "-1.0E+400"}) {
    ASSERT_TRUE(AnyNumber(text)) << text;
    EXPECT_FALSE(std::isfinite(*AnyNumber(text))) << text;
  }
  for (const char* text : {"", "+", "+-1", "1.0E", "1.2.3", "1e5x", "12/12/2022", "E"})
    EXPECT_FALSE(AnyNumber(text)) << text;
}

}  // namespace
