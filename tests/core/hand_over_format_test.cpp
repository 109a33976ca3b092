// The text of the hand-over file.
#include "core/HandOverFormat.h"
#include "CoreFixture.h"

namespace {

HandOverOrder Read(const std::string& text, const Settings& settings = {}) {
  return ReadHandOverText(text, settings);
}

std::vector<std::string> PathsOf(const HandOverOrder& order) {
  std::vector<std::string> paths;
  for (const JobRequest& job : order.jobs) paths.push_back(job.jobFile);
  return paths;
}

TEST(HandOverText, EachJobKeySetsItsFieldAndTheSettingsTheOthers) {
  Settings settings;
  settings.pause_time = 9;
  const HandOverOrder order = Read(
      "#krjob\r\n#dyna_precision=2\r\n#pause_time=7s\r\nmemory=300m\r\nncpu=6\r\n"
      "i=/in=put.k\r\nr=/d3dump01\r\ns=iff\r\nd=nodump\r\n"
      "#krjob\r\n#vorel\r\nd=other\r\n/b.dat\r\n#krjob\r\n#inc\r\n/c.fin",
      settings);
  ASSERT_EQ(order.jobs.size(), 3u);
  const JobRequest& full = order.jobs[0];
  EXPECT_EQ(full.kind, SolverKind::kLsDynaDouble);
  EXPECT_EQ(full.pause, 7);
  EXPECT_EQ(full.memory, 300u);
  EXPECT_EQ(full.ncpu, 6);
  EXPECT_EQ(full.jobFile, "/in=put.k");
  EXPECT_EQ(full.restartFile, "/d3dump01");
  EXPECT_TRUE(full.sGiven);
  EXPECT_FALSE(full.dump);
  EXPECT_EQ(order.settings.cpu_count, 6);
  EXPECT_EQ(order.settings.force, "iff");
  EXPECT_FALSE(order.settings.output_dump);
  EXPECT_EQ(order.jobs[1].kind, SolverKind::kVorel);
  EXPECT_TRUE(order.jobs[1].dump);
  EXPECT_EQ(order.jobs[1].ncpu, 6);  // the settings' value by now
  EXPECT_EQ(order.jobs[2].kind, SolverKind::kInc);
  EXPECT_EQ(order.jobs[2].pause, 9);
  EXPECT_FALSE(order.jobs[2].sGiven);
}

TEST(HandOverText, PrecisionsBeyondTheKnownOnesGiveNoKind) {
  const std::pair<const char*, std::optional<SolverKind>> cases[] = {
      {"0", {}}, {"x", {}}, {"1", SolverKind::kLsDynaSingle}, {"3", {}}, {"-1", {}}};
  for (const auto& [value, kind] : cases) {
    const HandOverOrder order =
        Read(std::string("#krjob\n#vorel\n#dyna_precision=") + value + "\na\n");
    EXPECT_TRUE(order.jobs.at(0).kind == kind) << value;
  }
}

TEST(HandOverText, SettingsLinesWorkWithoutARecordAndJobLinesDoNot) {
  Settings settings;
  settings.SolverPath(SolverKind::kInc) = "/solvers/old.exe";
  const HandOverOrder order = Read(
      "/lost.k\nncpu=9\ns=lost\nd=nodump\n#mpp=1\n#mpi_param=-x 1=2\n#mpp_param=p\n"
      "#group=350,node1,4\n#solver=dyna\n#solver=INC\n#single_cpu=1\n",
      settings);
  EXPECT_TRUE(order.jobs.empty());
  EXPECT_EQ(order.settings.cpu_count, 1);
  EXPECT_EQ(order.settings.force, "d3plotint");
  EXPECT_TRUE(order.settings.output_dump);
  EXPECT_TRUE(order.settings.use_mpp);
  EXPECT_EQ(order.settings.mpi_param, "-x 1=2");
  EXPECT_EQ(order.settings.mpp_param, "p");
  EXPECT_EQ(order.settings.group, "350,node1,4");
  EXPECT_EQ(order.groupText, "350,node1,4");
  EXPECT_EQ(order.settings.memory2, 350u);
  EXPECT_EQ(order.solverMode, SolverMode::kDyna);
  EXPECT_EQ(order.settings.SolverPath(SolverKind::kInc),
            FileDirWrapper::Join(FileDirWrapper::kSeparator == '/' ? "/solvers" : "\\solvers",
                                 "KVIN_SC.EXE"));
  EXPECT_NE(Read("#single_cpu=0\n", settings).settings.SolverPath(SolverKind::kInc).find("KVIN_MC"),
            std::string::npos);
  EXPECT_FALSE(Read("#mpp=true\n", order.settings).settings.use_mpp);
  EXPECT_EQ(Read("#single_cpu=1\n").settings.SolverPath(SolverKind::kInc), "");
}

TEST(HandOverText, EveryPathOfARecordBecomesAJobWithItsValues) {
  const HandOverOrder order = Read("#krjob\n/a.k\n/b.k\nmemory=5\n/c=1.k\n\n#krjob\n/d.k\n");
  EXPECT_EQ(PathsOf(order), (std::vector<std::string>{"/a.k", "/b.k", "/c=1.k", "/d.k"}));
  EXPECT_EQ(order.jobs[0].memory, 5u);
  EXPECT_EQ(order.jobs[2].memory, 5u);
  EXPECT_EQ(order.jobs[3].memory, 0u);
  EXPECT_EQ(PathsOf(Read("#krjob\ni=/a\n/b\n/a\n")), (std::vector<std::string>{"/b", "/a"}));
  EXPECT_EQ(PathsOf(Read("#krjob\ni=/a\n/b\n")), (std::vector<std::string>{"/a", "/b"}));
  EXPECT_EQ(PathsOf(Read("#krjob\nr=/d3dump\n")), (std::vector<std::string>{""}));
  EXPECT_TRUE(Read("#krjob\n#solver=dyna\nmemory=4\n").jobs.empty());
}

TEST(HandOverText, TheInputFileAndAPathLineThatLeadToOneFileAreOneJob) {
  const TempFolder folder;
  const std::string deck = folder.Write("deck.k", "");
  const std::string other = folder.Write("other.k", "");
  FileDirWrapper::CreateDirTree(folder / "sub");
  const std::string again = folder / "sub/../deck.k";
  EXPECT_EQ(PathsOf(Read("#krjob\ni=" + deck + "\n" + again + "\n")),
            std::vector<std::string>{again});
  EXPECT_EQ(PathsOf(Read("#krjob\n" + other + "\ni=" + again + "\n" + deck + "\n")),
            (std::vector<std::string>{other, deck}));
}

TEST(HandOverText, RecordsThatAreNotValidArePassedOver) {
  const std::string notValid = std::string(1, '\0') + "krjob\n";
  const HandOverOrder order = Read("#krjob\n/a.k\n" + notValid + "#mpp=1\nncpu=7\n/lost.k\n" +
                                   "#krjob\n/b.k\n" + notValid + "/ha");
  EXPECT_EQ(PathsOf(order), (std::vector<std::string>{"/a.k", "/b.k"}));
  EXPECT_FALSE(order.settings.use_mpp);
  EXPECT_EQ(order.settings.cpu_count, 1);
  EXPECT_EQ(RecordsOf("#krjob\n/x#krjob\n#krjob\n"), (std::vector<std::size_t>{0, 16}));
}

TEST(HandOverText, HostileLinesDoNoHarm) {
  const HandOverOrder order = Read(std::string("#krjob\n/a\0b.k\n", 14) + std::string(70000, 'x') +
                                   "\n \t\nncpu=-3\nmemory=99999999999999999999999\n/ok.k");
  EXPECT_EQ(PathsOf(order), std::vector<std::string>{"/ok.k"});
  EXPECT_EQ(order.remarks.size(), 2u);
  EXPECT_EQ(order.settings.cpu_count, -3);

  std::string many = "#krjob\n";
  for (int i = 0; i < 50200; ++i) many += "x\n";
  const HandOverOrder most = Read(many);
  EXPECT_EQ(most.jobs.size(), 50000u);
  EXPECT_EQ(most.remarks.size(), 100u);
}

TEST(HandOverText, ArgumentsBecomeLinesThatReadBackAsTheyWereMeant) {
  const TempFolder folder;
  folder.Write("memory=5.k", "");
  folder.Write("#odd.k", "");
  const InFolder in(folder.Path());
  std::vector<Message> remarks;
  const std::string text =
      MakeHandOverText({"a.k", "", ".", "sub/a=b.k", "memory=5.k", "memory=200", "#odd.k", "#vorel",
                        "i=c.k", "s=x", "r", "two\nlines.k"},
                       remarks);
  const auto path = &FileDirWrapper::AbsolutePath;
  EXPECT_EQ(text, "#krjob\n" + path("a.k") + "\n" + path("sub/a=b.k") + "\n" + path("memory=5.k") +
                      "\nmemory=200\n" + path("#odd.k") + "\n#vorel\ni=" + path("c.k") + "\ns=x\n" +
                      path("r") + "\n");
  ASSERT_EQ(remarks.size(), 3u);
  EXPECT_EQ(remarks[0].English(), "An argument is empty; no job was made of it");
  EXPECT_EQ(remarks[1].English(), "[.] is a folder, not a job file; no job was made of it");
  EXPECT_EQ(MakeHandOverText({"#krjob", "#inc"}, remarks), "#krjob\n#inc\n");
}

}  // namespace
