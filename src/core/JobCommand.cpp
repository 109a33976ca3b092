#include "core/JobCommand.h"

#include <algorithm>

#include "jobs/JobArguments.h"
#include "solvers/JobSolver.h"
#include "solvers/SolverKinds.h"

namespace {

// Only what stands on the line: other solvers, and other ways to run, take less.
std::vector<JobCommand::Memory> MemoryOf(const JobFile& job, const Settings& settings,
                                         const std::string& line) {
  std::vector<JobCommand::Memory> memory;
  for (const auto& [name, megabytes] :
       {std::pair("memory=", job.memory), std::pair("memory2=", settings.memory2)}) {
    const std::uint64_t words = MegaWords(megabytes);
    const std::string argument = name + std::to_string(words) + 'm';
    if ((' ' + line + ' ').find(' ' + argument + ' ') == std::string::npos) continue;
    memory.push_back({argument, MegabytesTaken(words, job.GetSolverType())});
  }
  return memory;
}

JobCommand CommandOf(JobFile& job, const CommandRequest& request) {
  const std::string& token = request.settings.inc_token;
  JobRunContext context;
  context.settings = request.settings;
  context.groupText = request.groupText;
  JobCommand command;
  command.name = job.MainFile();
  command.kind = job.GetSolverType();
  PTWrapperProcessStart start;
  const bool isThere = RowOfKind(command.kind).makeDriver()->Command(job, context, start);
  command.folder = start.folder;
  command.trouble = job.RunMessage().Without(token);
  if (!isThere) return command;
  command.commandLine = WithoutSecret(start.commandLine, token);
  command.variables = start.variables;
  command.memory = MemoryOf(job, request.settings, start.commandLine);
  return command;
}

}  // namespace

std::vector<CommandRequest> CommandRequestsOf(const JobGroup& group, const JobList::Jobs& jobs,
                                              const Settings& settings) {
  std::vector<CommandRequest> requests;
  group.ReadJobs(jobs, [&](const JobFile& job) {
    requests.push_back({ImageOf(job), settings, {}});
  });
  const std::string text = group.Text();
  for (CommandRequest& request : requests) request.groupText = text;
  return requests;
}

std::vector<JobCommand> CommandsOf(const CommandRequest& request) {
  const auto make = [&](SolverKind kind) { return RowOfKind(kind).makeJob(request.settings); };
  const std::shared_ptr<JobFile> job = make(request.job.kind);
  Fill(*job, request.job, make);
  if (job->stages.empty()) return {CommandOf(*job, request)};
  std::vector<JobCommand> commands;
  for (const std::shared_ptr<JobFile>& stage : job->stages) {
    JobCommand command = CommandOf(*stage, request);
    command.stage = static_cast<int>(commands.size());
    command.stages = static_cast<int>(job->stages.size());
    command.isSkipped = command.stage < job->firstStage;
    commands.push_back(std::move(command));
  }
  return commands;
}
