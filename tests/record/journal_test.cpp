#include "record/Journal.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "support/TempFolder.h"

namespace {

using Records = std::vector<std::string>;

const JournalName kName{"queue", "here"};

class JournalTest : public testing::Test {
 protected:
  Journal::Found Read(Records& records, const JournalName& name = kName) {
    records.clear();
    Journal journal(path_, name);
    const Journal::Found found = journal.Read([&](std::string_view record) {
      records.emplace_back(record);
      return true;
    });
    aside_ = journal.Aside();
    return found;
  }

  // What was put aside is the same file until then.
  void WriteAnew(const std::string& bytes) {
    std::filesystem::remove_all(path_);
    folder_.Write("a.kr", bytes);
  }

  TempFolder folder_;
  const std::string path_ = folder_ / "a.kr";
  std::string aside_;
};

TEST_F(JournalTest, GivesBackWhatWasWrittenAndCutsATornEnd) {
  Journal journal(path_, kName);
  ASSERT_TRUE(journal.Rewrite({"one", std::string("t\nw\0o", 5)}));
  ASSERT_TRUE(journal.Append("three"));
  ASSERT_TRUE(journal.Append(""));
  ASSERT_TRUE(journal.Append("five"));
  ASSERT_TRUE(journal.Sync());
  const std::string whole = TempFolder::Read(path_);
  EXPECT_EQ(whole.size(), journal.Size());
  const Records all = {"one", std::string("t\nw\0o", 5), "three", "", "five"};

  std::size_t most = 0;
  for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
    const JournalText text = ReadJournalText(std::string_view(whole).substr(0, cut), kName);
    const Records read(text.records.begin(), text.records.end());
    ASSERT_LE(read.size(), all.size());
    EXPECT_EQ(read, Records(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(read.size())));
    EXPECT_GE(read.size(), most);
    most = read.size();
    // What a crash can leave: the snapshot is whole, since it was renamed into place.
    if (cut >= journal.SnapshotSize()) {
      EXPECT_EQ(text.state, JournalText::State::kWhole) << cut;
    }
    if (cut > 0 && cut < journal.SnapshotSize()) {
      EXPECT_NE(text.state, JournalText::State::kWhole) << cut;
    }
  }
  EXPECT_EQ(most, all.size());
}

// One byte of a record that is not the last: what stands behind it cannot be known to follow.
TEST_F(JournalTest, ADamagedFileIsPutAsideAndWhatStandsBeforeTheDamageIsUsed) {
  {
    Journal journal(path_, kName);
    ASSERT_TRUE(journal.Rewrite({"one"}));
    ASSERT_TRUE(journal.Append("two") && journal.Append("three"));
  }
  std::string bytes = TempFolder::Read(path_);
  bytes[bytes.find("two")] = 'T';
  folder_.Write("a.kr", bytes);
  Records records;
  EXPECT_EQ(Read(records), Journal::Found::kAside);
  EXPECT_EQ(records, Records{"one"});
  EXPECT_EQ(TempFolder::Read(aside_), bytes);
  // It stays until there is another one.
  EXPECT_EQ(Read(records), Journal::Found::kAside);
  EXPECT_EQ(TempFolder::Read(path_), bytes);
  ASSERT_TRUE(Journal(path_, kName).Rewrite(records));
  EXPECT_EQ(Read(records), Journal::Found::kRecords);
  EXPECT_EQ(TempFolder::Read(path_ + ".old1"), bytes);
}

TEST_F(JournalTest, WhatIsNotOursIsPutAsideUnderANameOfItsOwn) {
  ASSERT_TRUE(Journal(path_, kName).Rewrite({"one"}));
  const std::string ours = TempFolder::Read(path_);
  const std::string newer = JournalLine("kestrun queue 3 here 1 and more") + JournalLine("one");
  Records records;
  std::set<std::string> asides;
  for (const std::string& bytes : {newer, std::string("rubbish\n"), std::string(5000, '\0'),
                                   JournalLine("kestrun queue x here 0")}) {
    WriteAnew(bytes);
    EXPECT_EQ(Read(records), Journal::Found::kAside) << bytes.substr(0, 40);
    EXPECT_TRUE(records.empty());
    EXPECT_EQ(TempFolder::Read(aside_), bytes);
    asides.insert(aside_);
  }
  EXPECT_EQ(asides.size(), 4U);
  WriteAnew(ours);
  EXPECT_EQ(Read(records, {"history", "here"}), Journal::Found::kAside);
  WriteAnew(ours);
  std::filesystem::resize_file(path_, (1U << 30) + 1);
  EXPECT_EQ(Read(records), Journal::Found::kAside);
  std::filesystem::remove(path_);
  std::filesystem::create_directory(path_);
  EXPECT_EQ(Read(records), Journal::Found::kAside);
  WriteAnew(ours);
  EXPECT_EQ(Read(records, {"queue", "renamed"}), Journal::Found::kRecords);
}

TEST_F(JournalTest, NoticesThatItsFileIsGone) {
  Journal journal(path_, kName);
  ASSERT_TRUE(journal.Rewrite({"one"}));
  FileDirWrapper::RemoveFile(path_);
  if (FileDirWrapper::FileExists(path_)) GTEST_SKIP() << "an open file stays here";
  folder_.Write("a.kr", "theirs");
  EXPECT_FALSE(journal.Append("two"));
  EXPECT_TRUE(journal.Rewrite({"one", "two"}));
  EXPECT_EQ(TempFolder::Read(journal.Aside()), "theirs");
  EXPECT_TRUE(journal.Append("three"));
  Records records;
  EXPECT_EQ(Read(records), Journal::Found::kRecords);
  EXPECT_EQ(records, (Records{"one", "two", "three"}));
}

}  // namespace
