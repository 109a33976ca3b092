// The settings file, the host file and the group file.
#include <filesystem>

#include "CoreFixture.h"

namespace {

class SettingsFile : public CoreTest {
 protected:
  // The settings as a program started now would have them.
  Settings ReadAgain() {
    SettingsAndPaths again(kTitle);
    again.ReadSettings();
    EXPECT_FALSE(again.Dirty());
    return again.Get();
  }

  // Puts a file in the place of the work folder: nothing can be written there, not even by root.
  void BlockWorkFolder() {
    std::filesystem::remove_all(files_.workFolder);
    std::ofstream(files_.workFolder) << "not a folder";
  }

  void Write(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
  }

  SettingsAndPaths files_{kTitle};
};

TEST_F(SettingsFile, ReadsEachKindOfValueByItsRule) {
  Write(files_.settingsFile,
        "[general]\r\nMEMORY_SIZE = 3000000000\r\nmemory_auto=2\r\npause_time= -4x\r\n"
        "cpu_count=\r\noutput_dump=0\r\nxterm_path=\r\nforce=\r\nlast_path=\r\n"
        "[SOLVER]\r\nu_batch=/b\r\nv_orel=/v\r\ninc_token=abc.def\r\n"
        "[MPP]\r\nuse_mpp=1\r\nmemory2=-1\r\nmpi=junk\r\n");
  Settings settings = ReadAgain();
  EXPECT_EQ(settings.memory_size, 2147483647u);
  EXPECT_FALSE(settings.memory_auto);
  EXPECT_EQ(settings.pause_time, -4);
  EXPECT_EQ(settings.cpu_count, 1);
  EXPECT_FALSE(settings.output_dump);
  EXPECT_EQ(settings.xterm_path, "xterm");
  EXPECT_EQ(settings.force, "d3plotint");
  EXPECT_FALSE(settings.last_path.empty());
  EXPECT_EQ(settings.SolverPath(SolverKind::kUtilityBatch), "/b");
  EXPECT_EQ(settings.SolverPath(SolverKind::kVorel), "/v");
  EXPECT_EQ(settings.inc_token, "abc.def");
  EXPECT_TRUE(settings.use_mpp);
  EXPECT_EQ(settings.memory2, UINT64_MAX);
  EXPECT_EQ(settings.mpi, 0);

  // Only the memory values vanish with their lines.
  Write(files_.settingsFile, "[GENERAL]\nlanguage=1\n");
  settings = ReadAgain();
  EXPECT_EQ(settings.memory_size + settings.memory2, 0u);
  EXPECT_TRUE(settings.memory_auto);
  EXPECT_EQ(settings.language, 1);
}

TEST_F(SettingsFile, ComesBackAsItWasWritten) {
  const std::string longPath = "/" + std::string(600, 'p') + "/solver";
  files_.Edit([&](Settings& s) {
    s.memory_size = 1234;
    s.memory_auto = false;
    s.cpu_count = 8;
    s.no_adapdump = true;
    s.last_path = "/with blanks/and=equals;semicolon";
    s.last_solver_path = " blanks around ";
    s.group = "100,node 1,4";
    s.SolverPath(SolverKind::kInc) = longPath;
    s.use_mpp = true;
    s.mpi = 3;
    s.mpi_param = "\"-env X\" \"two words\"";
    s.mpp_param = "'single'";
    s.viewer = "\"/opt/my editor/ed\"";
  });
  ASSERT_TRUE(files_.WriteSettings());
  EXPECT_FALSE(files_.Dirty());
  EXPECT_TRUE(ReadAgain() == files_.Get());
}

TEST_F(SettingsFile, KeepsWhatItDoesNotKnowWhereItIs) {
  Write(files_.settingsFile,
        "; mine\n[GENERAL]\nfuture=7\nmemory_size=1\n\n[SOLVER]\ninc_token=secret.token\n"
        "[OTHER]\nx=y\n");
  files_.ReadSettings();
  files_.Set(&Settings::memory_size, std::uint64_t{77});
  ASSERT_TRUE(files_.WriteSettings());
  const std::string text = TempFolder::Read(files_.settingsFile);
  const auto at = [&](const std::string& part) { return text.find(part); };
  EXPECT_EQ(at("; mine"), 0u);
  EXPECT_LT(at("future=7"), at("memory_size=77"));
  EXPECT_LT(at("inc_token=secret.token"), at("[OTHER]"));
  EXPECT_NE(at("x=y"), std::string::npos);
  EXPECT_FALSE(LogHolds(files_, "secret.token"));
}

TEST_F(SettingsFile, AnUnwritableFolderIsReportedAndNothingIsForgotten) {
  BlockWorkFolder();
  RecordingObserver seen;
  files_.Log().SetListener([&](const Message& message) { seen.Logged(message); });
  files_.Set(&Settings::cpu_count, 4);
  EXPECT_FALSE(files_.WriteSettings());
  EXPECT_TRUE(files_.Dirty());
  files_.WriteHostFile();
  files_.WriteGroupFile({{"G", ""}});
  EXPECT_EQ(seen.Count("log Directory [" + files_.workFolder + "] is not writable"), 1);
  EXPECT_EQ(seen.Count("log Write host file [" + files_.hostFile + "] failed"), 1);
  EXPECT_EQ(seen.Count("log Write group file [" + files_.groupFile + "] failed"), 1);
}

TEST_F(SettingsFile, OneOfTwoBytesACharacterIsSaidToBeUnreadableAndStays) {
  using namespace std::string_literals;
  const std::string utf16 = "\xFF\xFE[\0M\0P\0P\0]\0\n\0u\0s\0e\0_\0m\0p\0p\0=\0"s + "1\0"s;
  for (const std::string& text : {utf16, utf16.substr(2)}) {
    Write(files_.settingsFile, text);
    RecordingObserver seen;
    files_.Log().SetListener([&](const Message& message) { seen.Logged(message); });
    files_.ReadSettings();
    EXPECT_EQ(seen.Count("log Read settings file [" + files_.settingsFile + "] failed"), 1);
    files_.Set(&Settings::cpu_count, files_.Get().cpu_count + 1);
    EXPECT_FALSE(files_.WriteSettings());
    EXPECT_EQ(TempFolder::Read(files_.settingsFile), text);
  }
}

// Removed by somebody while the program runs, as cleaners of home folders do.
TEST_F(SettingsFile, ARemovedFolderIsMadeAnew) {
  std::filesystem::remove_all(files_.workFolder);
  files_.Log().Report(Message(MessageId::kForeignWords, "still told"));
  EXPECT_NE(TempFolder::Read(files_.Log().Path()).find(">> still told"), std::string::npos);
  std::filesystem::remove_all(files_.workFolder);
  files_.WriteGroupFile({{"G", "1,2"}});
  files_.ReadGroupFile();
  EXPECT_EQ(files_.groupEntries.size(), 1u);
  std::filesystem::remove_all(files_.workFolder);
  EXPECT_TRUE(files_.WriteSettings());
  EXPECT_TRUE(std::filesystem::exists(files_.settingsFile));
}

TEST_F(SettingsFile, HostLinesAreTheUsersOwn) {
  files_.ReadHostFile();
  ASSERT_EQ(files_.Get().host_lines.size(), 2u) << "examples";
  const std::string edited = "#Host Name          Cpu Count\r\n\r\n#off  2\r\nbig  64\r\nlast 1";
  Write(files_.hostFile, edited);
  files_.ReadHostFile();
  EXPECT_EQ(files_.Get().host_lines, (std::vector<std::string>{"big  64", "last 1"}));
  files_.WriteHostFile();
  EXPECT_EQ(TempFolder::Read(files_.hostFile), edited);

  Write(files_.hostFile, "#Host Name          Cpu Count\n");
  files_.ReadHostFile();
  EXPECT_TRUE(files_.Get().host_lines.empty());
}

TEST_F(SettingsFile, ChangedHostsLeaveTheRestOfTheirFileAlone) {
  using HostChange = SettingsAndPaths::HostChange;
  Write(files_.hostFile, "# mine\r\none 4\r\n# spare:\r\ntwo 8\r\n\r\n# end\r\n");
  files_.ReadHostFile();
  const std::vector<std::string> steps[] = {{"one 4", "new 1", "two 8"},
                                            {"one 4", "new 2", "two 8", "last 1"},
                                            {"one 4", "two 8", "last 1"},
                                            {},
                                            {"a 1"}};
  const std::string texts[] = {
      "# mine\r\none 4\r\nnew 1\r\n# spare:\r\ntwo 8\r\n\r\n# end\r\n",
      "# mine\r\none 4\r\nnew 2\r\n# spare:\r\ntwo 8\r\nlast 1\r\n\r\n# end\r\n",
      "# mine\r\none 4\r\n# spare:\r\ntwo 8\r\nlast 1\r\n\r\n# end\r\n",
      "# mine\r\n# spare:\r\n\r\n# end\r\n", "# mine\r\n# spare:\r\n\r\n# end\r\na 1\r\n"};
  for (std::size_t i = 0; i < std::size(steps); ++i) {
    EXPECT_EQ(files_.ChangeHosts(steps[i]), HostChange::kDone);
    EXPECT_EQ(TempFolder::Read(files_.hostFile), texts[i]);
    EXPECT_EQ(files_.Get().host_lines, steps[i]);
  }
  // What somebody else has written since is not overwritten.
  Write(files_.hostFile, "other 16\n");
  EXPECT_EQ(files_.ChangeHosts({"b 1"}), HostChange::kFileIsNewer);
  EXPECT_EQ(TempFolder::Read(files_.hostFile), "other 16\n");
  BlockWorkFolder();
  EXPECT_EQ(files_.ChangeHosts({"b 1"}), HostChange::kFailed);
  EXPECT_EQ(files_.Get().host_lines, steps[4]);
}

TEST_F(SettingsFile, GroupsComeBackInTheirOrder) {
  const std::vector<SettingsAndPaths::GroupEntry> groups = {
      {"Nacht \xC3\xA4", "100,a,2"}, {"A", ""}, {"B", "x=y=z"}};
  files_.WriteGroupFile(groups);
  files_.ReadGroupFile();
  EXPECT_EQ(files_.groupEntries, groups);

  Write(files_.groupFile, "#comment=1\r\n\r\nno group\r\nempty=\r\nlast=1,2");
  files_.ReadGroupFile();
  EXPECT_EQ(files_.groupEntries,
            (std::vector<SettingsAndPaths::GroupEntry>{{"empty", ""}, {"last", "1,2"}}));

  files_.WriteGroupFile({{"#x", "t"}, {"a=b\nc=d", "e\nf=g"}});
  files_.ReadGroupFile();
  EXPECT_EQ(files_.groupEntries,
            (std::vector<SettingsAndPaths::GroupEntry>{{"_x", "t"}, {"a_b c_d", "e f=g"}}));
}

}  // namespace
