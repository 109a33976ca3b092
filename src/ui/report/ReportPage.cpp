#include "ui/report/ReportPage.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>

#include "solvers/SolverKinds.h"
#include "ui/dialogs/StatusCell.h"
#include "ui/report/ReportPicture.h"
#include "ui/text/Encoding.h"
#include "ui/text/ShownValues.h"
#include "util/process/ProcessIdentity.h"
#include "util/text/DateTimeWrapper.h"
#include "util/text/FileUrl.h"

namespace {

constexpr char kStyle[] = R"(
:root{font:14px/1.4 "Segoe UI","Noto Sans","DejaVu Sans","Microsoft YaHei","Noto Sans CJK SC",sans-serif;
color:#1d2939;background:#fff}
body{max-width:1100px;margin:24px auto;padding:0 16px}
h1{font-size:22px;margin:0 0 4px}h2{font-size:18px;margin:28px 0 6px}h3{font-size:15px;margin:0 0 4px}
h4{font-size:14px;margin:10px 0 2px}p{margin:4px 0}.m{color:#667085}
a{color:#175cd3;text-decoration:none}a:hover{text-decoration:underline}
.bar{display:flex;height:14px;border-radius:7px;overflow:hidden;margin:8px 0;background:#eaecf0}
.bar i{display:block;min-width:2px}
.fin{background:#17b26a}.early{background:#f79009}.unkn{background:#fedf89}.fail{background:#d92d20}.stop{background:#667085}
.run{background:#1570ef}.wait{background:#d0d5dd}
.key{display:inline-block;width:10px;height:10px;border-radius:5px;margin:0 5px 0 0}
.keys span{margin-right:16px;white-space:nowrap}
table{border-collapse:collapse;width:100%;margin:10px 0;font-size:13px}
th{text-align:left;background:#f2f4f7}th,td{padding:4px 8px;border-bottom:1px solid #eaecf0;vertical-align:top;
overflow-wrap:anywhere}td.n,th.n{text-align:right;white-space:nowrap;overflow-wrap:normal}
td.w{white-space:nowrap}td.s{overflow-wrap:break-word}
.job{border:1px solid #eaecf0;border-radius:8px;padding:12px 14px;margin:12px 0}
.job p,h2,h3,h4{overflow-wrap:anywhere}.why{white-space:pre-wrap;background:#f9fafb;padding:6px 10px;border-radius:6px;
overflow-wrap:anywhere}
.pics{display:flex;flex-wrap:wrap;gap:8px}svg{width:340px;max-width:100%}
svg text{font-size:10px;fill:#667085}svg .t{font-size:12px;fill:#1d2939}
svg .g{stroke:#eaecf0;fill:none}svg .c{fill:none;stroke-width:1.4;stroke-linejoin:round}
@page{margin:14mm}
@media print{:root{font-size:11px}body{max-width:none;margin:0;padding:0}a{color:inherit}
*{-webkit-print-color-adjust:exact;print-color-adjust:exact}
.job,tr,.bar,.keys{break-inside:avoid}h2,h3{break-after:avoid}thead{display:table-header-group}
table{font-size:10px}svg{width:32%}}
)";

const std::string kDot = " \xC2\xB7 ";

// How a job looks; in the order of the bar.
enum Look { kFinished, kEarly, kUnknown, kFailed, kStopped, kRunning, kQueued, kLooks };
constexpr std::array<const char*, kLooks> kClasses = {"fin",  "early", "unkn", "fail",
                                                      "stop", "run",   "wait"};
constexpr std::array<const char*, kLooks> kNames = {"rep_finished", "rep_early",   "rep_unknown",
                                                    "rep_failed",   "rep_stopped", "rep_running",
                                                    "rep_queued"};

Look LookOf(const ReportedJob& job) {
  switch (ClassOf(job.status, job.stoppedAt)) {
    case StatusClass::kFinished:
      return kFinished;
    case StatusClass::kStoppedEarly:
      return kEarly;
    case StatusClass::kEndUnknown:
      return kUnknown;
    case StatusClass::kAborted:
      return job.failure.kind == FailureKind::kStopped ? kStopped : kFailed;
    case StatusClass::kRunning:
      return kRunning;
    case StatusClass::kQueued:
      break;
  }
  return kQueued;
}

bool HasRun(const ReportedJob& job) {
  return job.started != 0 || HasEnded(job.status);
}

class Page {
 public:
  Page(const TextTable& texts, const CurvesOf& curvesOf) : texts_(texts), curvesOf_(curvesOf) {}

  std::string Of(const std::vector<ReportedGroup>& groups) {
    const std::string title = Text("rep_title");
    html_ = "<!DOCTYPE html>\n<html lang=\"" + Text("rep_language") +
            "\"><head><meta charset=\"utf-8\">\n"
            "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
            "style-src 'unsafe-inline'\">\n"
            "<meta name=\"viewport\" content=\"width=device-width\">\n<title>" +
            title + "</title><style>" + kStyle + "</style></head><body>\n<h1>" + title + "</h1>\n";
    const std::int64_t now = DateTimeWrapper::CurrentTime();
    Paragraph("m", PageText(texts_.Format("rep_made", ShownMinute(now), ToUi(MachineName()))));
    for (const ReportedGroup& group : groups) AddGroup(group);
    return html_ + "</body></html>\n";
  }

 private:
  std::string Text(const char* key) const { return PageText(texts_.Get(key)); }

  void Paragraph(const char* kind, const std::string& inside) {
    html_ += "<p class=\"" + std::string(kind) + "\">" + inside + "</p>\n";
  }

  void AddGroup(const ReportedGroup& group) {
    html_ += "<h2>" + PageText(texts_.Format("rep_group", ToUi(group.name))) + "</h2>\n";
    if (group.jobs.empty()) return Paragraph("m", Text("ui_count_none"));
    AddBar(group);
    AddTimes(group);
    if (group.pause) {
      Paragraph("why", PageText(texts_.Say(Message(MessageId::kPausedBefore, group.pause->failures,
                                                   group.pause->reason))));
    }
    AddReasons(group);
    const int first = number_;
    AddTable(group);
    number_ = first;
    for (const ReportedJob& job : group.jobs) {
      ++number_;
      if (HasRun(job)) AddJob(job);
    }
  }

  void AddBar(const ReportedGroup& group) {
    std::array<int, kLooks> counts{};
    for (const ReportedJob& job : group.jobs) ++counts[LookOf(job)];
    std::string bar;
    std::string keys;
    for (std::size_t look = 0; look < kLooks; ++look) {
      if (counts[look] == 0) continue;
      char width[24];
      std::snprintf(width, sizeof width, "%.2f",
                    100.0 * counts[look] / static_cast<double>(group.jobs.size()));
      const std::string kind = kClasses[look];
      bar += "<i class=\"" + kind + "\" style=\"width:" + width + "%\"></i>";
      keys += "<span><i class=\"key " + kind + "\"></i>" +
              PageText(texts_.Format(kNames[look], std::to_string(counts[look]))) + "</span>";
    }
    html_ += "<div class=\"bar\">" + bar + "</div>\n<p class=\"keys\">" + keys + "</p>\n";
  }

  // From the first start to the last end.
  void AddTimes(const ReportedGroup& group) {
    std::int64_t begin = 0;
    std::int64_t end = 0;
    for (const ReportedJob& job : group.jobs) {
      if (job.started == 0) continue;
      begin = begin == 0 ? job.started : std::min(begin, job.started);
      end = std::max(end, job.ended);
    }
    if (begin == 0 || end < begin) return;
    Paragraph("m",
              PageText(texts_.Format("rep_times", ShownMinute(begin), ShownMinute(end),
                                     ShownDuration(static_cast<double>(end - begin), texts_))));
  }

  void AddReasons(const ReportedGroup& group) {
    std::map<std::string, int> counts;
    for (const ReportedJob& job : group.jobs) {
      const std::string how = texts_.Say(HowItEnded(job));
      if (LookOf(job) == kFailed && !how.empty()) ++counts[how];
    }
    if (counts.empty()) return;
    std::vector<std::pair<int, std::string>> sorted;
    for (const auto& [how, count] : counts) sorted.emplace_back(-count, how);
    std::sort(sorted.begin(), sorted.end());
    std::string line;
    for (const auto& [count, how] : sorted)
      line += (line.empty() ? "" : kDot) + how + " (" + std::to_string(-count) + ")";
    Paragraph("m", PageText(texts_.Format("rep_reasons", line)));
  }

  void AddTable(const ReportedGroup& group) {
    html_ += "<table><thead><tr><th class=\"n\">" + Text("rep_number") + "</th><th>" +
             Text("lab_job_name") + "</th><th>" + Text("lab_solv") + "</th><th>" +
             Text("lab_status") + "</th><th>" + Text("ui_past_when") + "</th><th class=\"n\">" +
             Text("ui_past_took") + "</th><th class=\"n\">" + Text("ui_past_cpus") +
             "</th><th class=\"n\">" + Text("rep_memory") + "</th></tr></thead><tbody>\n";
    for (const ReportedJob& job : group.jobs) {
      const std::string number = std::to_string(++number_);
      const std::string name = PageText(ShownJob(job.jobFile, job.restartFile));
      html_ += "<tr><td class=\"n\">" + number + "</td><td>" +
               (HasRun(job) ? "<a href=\"#job" + number + "\">" + name + "</a>" : name) +
               "</td><td class=\"w\">" + RowOfKind(job.solver).name + "</td><td class=\"s\">" +
               Status(job) + "</td><td class=\"w\">" +
               (job.started != 0 ? ShownMinute(job.started) : "") + "</td><td class=\"n\">" +
               Took(job) + "</td><td class=\"n\">" +
               (job.cpus > 0 ? std::to_string(job.cpus) : "") + "</td><td class=\"n\">" +
               (job.memory > 0 ? std::to_string(job.memory) : "") + "</td></tr>\n";
    }
    html_ += "</tbody></table>\n";
  }

  std::string Status(const ReportedJob& job) const {
    const std::string how = texts_.Say(HowItEnded(job));
    return "<i class=\"key " + std::string(kClasses[LookOf(job)]) + "\"></i>" +
           PageText(texts_.Say(JobStatusWord(job.status)) + (how.empty() ? "" : kDot + how));
  }

  std::string Took(const ReportedJob& job) const {
    const std::optional<std::int64_t> seconds = job.Took(job.started, job.ended);
    return seconds ? PageText(ShownDuration(static_cast<double>(*seconds), texts_)) : std::string();
  }

  std::string Link(const std::string& path) const {
    const std::string shown = PageText(ToUi(path));
    const std::string url = FileUrl(ToUi(path));
    return url.empty() ? shown : "<a href=\"" + url + "\">" + shown + "</a>";
  }

  void AddJob(const ReportedJob& job) {
    html_ += "<div class=\"job\" id=\"job" + std::to_string(number_) + "\"><h3>" +
             std::to_string(number_) + ". " + PageText(ShownJob(job.jobFile, job.restartFile)) +
             "</h3>\n";
    AddFacts(job);
    int stage = 0;
    for (const ReportedJob& one : job.stages) {
      html_ += "<h4>" +
               PageText(texts_.Format("rep_stage", std::to_string(++stage),
                                      ShownJob(one.jobFile, one.restartFile))) +
               "</h4>\n";
      AddFacts(one);
    }
    html_ += "</div>\n";
  }

  void AddFacts(const ReportedJob& job) {
    const std::string took = Took(job);
    Paragraph("s", Status(job) +
                       (job.started != 0 ? kDot + ShownMinute(job.started) : std::string()) +
                       (took.empty() ? "" : kDot + took));
    Paragraph("m", Text("rep_folder") + " " + Link(job.folder));
    if (!job.messageFile.empty())
      Paragraph("m", Text("ui_past_message") + ": " + Link(job.messageFile));
    if (!job.options.empty())
      Paragraph("m", Text("lab_other_para") + ": " + PageText(ToUi(job.options)));
    AddWhy(job);
    if (job.run.path.empty()) return;
    const std::shared_ptr<const RunCurves> curves = curvesOf_(job);
    const std::string pictures = curves ? ReportPictures(*curves, texts_) : std::string();
    if (!pictures.empty()) html_ += "<div class=\"pics\">" + pictures + "</div>\n";
  }

  void AddWhy(const ReportedJob& job) {
    if (job.status != JobStatus::kAborted) return;
    std::string why = texts_.Say(job.reason);
    const std::string last = texts_.Say(job.lastWords);
    if (!last.empty()) why += (why.empty() ? "" : "\n") + last;
    if (!why.empty()) Paragraph("why", PageText(why));
  }

  const TextTable& texts_;
  const CurvesOf& curvesOf_;
  std::string html_;
  int number_ = 0;  // of the job, in all groups
};

}  // namespace

std::string ReportPage(const std::vector<ReportedGroup>& groups, const TextTable& texts,
                       const CurvesOf& curvesOf) {
  return Page(texts, curvesOf).Of(groups);
}
