// What 10,000 rows cost the user: to filter, to sort, to select all of them, and to hear of one job
// that changed while they are sorted, each until it is on the screen. Compared with a plain search
// in as many texts and a plain sort of them. Needs a display.
#include <FL/Fl.H>
#include <FL/x.H>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "Measure.h"
#include "QueueProgram.h"

namespace {

constexpr int kJobs = 10000;
constexpr int kRounds = 15;

JobTable* FindTable(Fl_Group& group) {
  for (int i = 0; i < group.children(); ++i) {
    auto* table = dynamic_cast<JobTable*>(group.child(i));
    if (table != nullptr && table->visible()) return table;
  }
  return nullptr;
}

// In no order that a sort could make use of.
std::string PathOf(const std::string& folder, int i) {
  const int number = static_cast<int>(i * 7919LL % kJobs);
  return folder + "/v" + std::to_string(number % 37) + "/run" + std::to_string(number) + ".k";
}

}  // namespace

int main() {
  QueueProgram program;
  if (!program.Ready()) return 1;
  const std::unique_ptr<Flx_AppWnd> window = program.MakeWindow();
  window->show();
  RunWindowFor(1);
  const auto group = program.App().Manager().GroupAt(0);
  std::vector<std::string> texts;
  for (int i = 0; i < kJobs; ++i) {
    texts.push_back(PathOf(program.Scratch(), i));
    group->AddJob(program.MakeJob(texts.back()));
  }
  RunWindowFor(1);
  JobTable* const table = FindTable(*window);
  if (table == nullptr || table->AllCount() != kJobs) return 1;
  const auto shown = [] {
    Fl::check();
    XSync(fl_display, False);
  };
  std::size_t found = 0;
  const double search = BestSeconds(kRounds, [&] {
    for (const std::string& text : texts) found += text.find("run12") != std::string::npos;
  });
  const double sort = BestSeconds(kRounds, [&] {
    std::vector<std::string> sorted = texts;
    std::sort(sorted.begin(), sorted.end());
    found += sorted.size();
  });
  const auto say = [](const char* what, double seconds, const char* plain, double reference) {
    std::printf("%-28s %6.2f ms, %s %5.2f ms, ratio %.1f\n", what, seconds * 1e3, plain,
                reference * 1e3, seconds / reference);
  };
  int turn = 0;
  const double filter = BestSeconds(kRounds, [&] {
    table->SetFilter(++turn % 2 ? "run12" : "", {});
    shown();
  });
  table->SetFilter("", {});
  say("filter", filter, "plain search", search);
  const auto sorts = [&](const char* what, JobTable::Column column) {
    const double seconds = BestSeconds(kRounds, [&] {
      table->SortBy(column, ++turn % 2 == 0);
      shown();
    });
    say(what, seconds, "plain sort", sort);
  };
  sorts("sort by name", JobTable::kName);
  sorts("sort by folder", JobTable::kFolder);
  sorts("sort by status", JobTable::kStatus);
  const double all = BestSeconds(kRounds, [&] {
    table->SelectRow(0);
    table->SelectAllRows();
    shown();
  });
  say("select all", all, "plain search", search);
  table->SelectRow(0);
  table->SortBy(JobTable::kMemory, false);
  const double change = BestSeconds(kRounds, [&] {
    ++turn;
    const JobId job = table->JobAt(turn % kJobs);
    group->SetMemory(job, static_cast<std::uint64_t>(turn * 37 % 900 + 1));
    table->JobsChanged({job});
    shown();
  });
  say("one job changes, sorted", change, "plain search", search);
  return found > 0 ? 0 : 1;
}
