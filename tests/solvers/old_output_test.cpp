// What counts as written by a run, and how several message files are judged.
#include "jobs/JobArguments.h"
#include "solvers/JobOutput.h"
#include "solvers/OutputAnalysis.h"
#include "solvers/RunSteps.h"
#include "solvers/SolverKinds.h"
#include "support/SolverFixture.h"

namespace {

const std::string kNormal = " N o r m a l    t e r m i n a t i o n\n";
const std::string kError = " E r r o r   t e r m i n a t i o n\n";

class OldOutput : public SolverTest {
 protected:
  // Ends a run that began when the files were as they are, and wrote what `write` writes.
  template <typename Write>
  JobStatus Ended(JobFile& job, Write write) {
    const RunScope scope(job, context_);
    job.SetMessageFile({});
    std::vector<std::string> files;
    std::vector<std::string> folders;
    FileDirWrapper::ListDir(job.Folder(), files, folders, false);
    job.folderBefore.Take(files);
    write();
    return Solver(job.GetSolverType()).Finish(job);
  }

  JobFile& Job(SolverKind kind) {
    switch (kind) {
      case SolverKind::kVorel:
        job_ = std::make_unique<JobFileVorel>(context_.settings);
        job_->jobFile = folder_.Write("a.dat", "x");
        break;
      case SolverKind::kInc:
        job_ = std::make_unique<JobFileInc>(context_.settings);
        job_->jobFile = folder_.Write("a.fin", "x");
        break;
      default:
        auto dyna = DynaJobWith("");
        dyna->solverType = kind;
        job_ = std::move(dyna);
    }
    return *job_;
  }

  std::unique_ptr<JobFile> job_;
};

// As where a viewer holds the files or the folder is read-only, so that they could not be removed.
TEST_F(OldOutput, DoesNotTellHowARunEnded) {
  const struct {
    SolverKind kind;
    const char* file;
    std::string text;
    int code;
    const char* reason;
  } cases[] = {
      {SolverKind::kLsDynaSingle, "messag", kNormal, RunError::kNoMessageFile,
       "No message file been generated when run job [*]: [*] is left from an earlier run; it is "
       "the same as before the start, so it does not count"},
      {SolverKind::kUtilityBatch, "messag", kNormal, RunError::kNoMessageFile,
       "No message file been generated when run job [*]: [*] is left from an earlier run; it is "
       "the same as before the start, so it does not count"},
      {SolverKind::kVorel, "a.lin", "x", RunError::kNotNormal,
       "Job [*] did not end normally: [*] is left from an earlier run; it is "
       "the same as before the start, so it does not count"},
      {SolverKind::kInc, "a_INFO.OUT", " THE TOTAL TIME FOR ALL\n", RunError::kNotNormal,
       "Job [*] did not end normally: [*] is left from an earlier run; it is "
       "the same as before the start, so it does not count"},
  };
  for (const auto& c : cases) {
    JobFile& job = Job(c.kind);
    const std::string file = folder_.Write(c.file, c.text);
    EXPECT_EQ(Ended(job, [] {}), JobStatus::kAborted) << c.file;
    EXPECT_EQ(job.HowFailed().kind, FailureKind::kOldOutput) << c.file;
    EXPECT_NE(job.MessageFile(), file) << "nor is it shown as this run's";
    EXPECT_EQ(job.RunErrorCode(), c.code) << c.file;
    std::string reason = c.reason;
    for (const std::string& path : {job.jobFile, file}) reason.replace(reason.find('*'), 1, path);
    EXPECT_EQ(job.RunMessage().English(), reason);
    EXPECT_EQ(Ended(job, [&] { folder_.Write(c.file, c.text + " more\n"); }), JobStatus::kFinished)
        << c.file;
    FileDirWrapper::RemoveFile(file);
  }
}

TEST_F(OldOutput, AVorelJobNamedLikeAResultHasNoneOfItsOwn) {
  JobFile& job = Job(SolverKind::kVorel);
  job.jobFile = folder_.Write("b.lin", "input");
  folder_.Write("b.OUT", " TIME(HH:MM:SS:.01): 10:00:00 \n");
  EXPECT_EQ(Ended(job, [] {}), JobStatus::kAborted);
  EXPECT_EQ(OutputOf(job).messageFile, "");
  EXPECT_EQ(RowOfKind(SolverKind::kVorel).report(OutputOf(job), {}).lines.size(), 1U) << "its name";
  EXPECT_EQ(job.RunMessage().English(), "Job [" + job.jobFile +
                                            "] did not end normally: there is no result in [" +
                                            job.jobFile + "]");
}

TEST_F(OldOutput, EveryCaseCounts) {
  JobFile& job = Job(SolverKind::kLsDynaSingle);
  const auto write = [&](const std::string& first, const std::string& second,
                         const std::string& tenth) {
    return [=, this] {
      if (!first.empty()) folder_.Write("CASE1.messag", first);
      folder_.Write("CASE2.messag", second);
      folder_.Write("CASE10.messag", tenth);
    };
  };
  EXPECT_EQ(Ended(job, write(kNormal, kNormal, kNormal)), JobStatus::kFinished);
  EXPECT_EQ(job.MessageFile(), folder_ / "CASE1.messag.krb");
  for (const char* name : {"CASE1", "CASE2", "CASE10"}) {
    EXPECT_TRUE(Exists(folder_ / (std::string(name) + ".messag.krb")));
    EXPECT_FALSE(Exists(folder_ / (std::string(name) + ".messag")));
  }

  EXPECT_EQ(Ended(job, write(kNormal, kError, kError)), JobStatus::kAborted);
  EXPECT_EQ(job.RunMessage().English(),
            "Job [" + job.jobFile +
                "] did not end normally: CASE2.messag: the solver reports an error termination");
  EXPECT_EQ(job.MessageFile(), folder_ / "CASE2.messag.krb");
  EXPECT_EQ(job.RunErrorCode(), RunError::kNotNormal);

  folder_.Write("CASE1.messag", kError);  // of an earlier run
  EXPECT_EQ(Ended(job, write("", kNormal, kNormal)), JobStatus::kFinished);
  EXPECT_EQ(Ended(job, write("", kNormal, "")), JobStatus::kAborted);
}

}  // namespace
