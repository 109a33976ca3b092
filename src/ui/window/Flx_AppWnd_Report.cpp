// Reports that the main window writes: when the user asks for one, and after the last job.

#include <FL/Fl.H>

#include <utility>

#include "core/SmallTextFile.h"
#include "ui/dialogs/ComnFileDialog.h"
#include "ui/text/Encoding.h"
#include "ui/window/Flx_AppWnd.h"

namespace {

constexpr double kLookSeconds = 0.1;

}  // namespace

// Of the selected jobs where there are several, else of the group.
void Flx_AppWnd::SaveReport() {
  const auto group = Group();
  if (!group || !Table()) return;
  if (report_) return Say(texts_.Get("rep_busy"));
  const std::vector<JobId> selected = Table()->SelectedJobs();
  const bool some = selected.size() > 1;
  ComnFileDialog dialog;
  dialog.SetParentWindow(this);
  dialog.SetOpen(false);
  dialog.SetCaption(texts_.Get(some ? "rep_save_some" : "rep_save"));
  dialog.SetFilter(texts_.Get("rep_page") + " (*.html)|*.html|CSV (*.csv)|*.csv|" +
                   texts_.Get("rep_lines") + " (*.txt;*.tsv)|*.txt;*.tsv|");
  dialog.SetDefExt("html");
  dialog.SetDefFile("report.html");
  const bool chosen = dialog.DoModal();
  FocusTable();
  if (chosen && !report_)
    WriteReport(dialog.GetPathName(), {ReportOf(*group, some ? &selected : nullptr)});
}

void Flx_AppWnd::WriteReport(const std::string& path, std::vector<ReportedGroup> groups) {
  report_ = std::make_unique<ReportWriter>(path, std::move(groups), application_.language);
  Fl::add_timeout(0, LookAtReport, this);
}

// When no group runs any more, of the groups that have run since the report before.
void Flx_AppWnd::ReportWhenDone() {
  const std::string& path = application_.SettingsAndFiles().Get().report_file;
  if (path.empty() || report_ || leaving_) return;
  std::vector<ReportedGroup> groups;
  JobGroupManager& manager = application_.Manager();
  std::map<int, int> endings;
  for (int index = 0; index < manager.GroupCount(); ++index) {
    const auto group = manager.GroupAt(index);
    if (!group) continue;
    if (group->Running()) return;
    const int ended = endings[group->Id()] = group->Endings();
    if (ended != reported_[group->Id()]) groups.push_back(ReportOf(*group));
  }
  if (groups.empty()) return;
  reported_ = std::move(endings);
  WriteReport(path, std::move(groups));
}

bool Flx_AppWnd::WritesReport() {
  ReportWhenDone();
  return report_ != nullptr;
}

void Flx_AppWnd::LookAtReport(void* self) {
  auto* window = static_cast<Flx_AppWnd*>(self);
  if (!window->report_) return;
  const ReportWriter& report = *window->report_;
  const bool reads = window->application_.Intake().Busy();
  if (!report.Ended() && !report.Cancelled()) {
    const std::string text = window->texts_.Format("rep_writing", ToUi(report.Path()));
    if (!reads) window->status_->SetProgress(text, report.Percent());
    Fl::repeat_timeout(kLookSeconds, LookAtReport, self);
    return;
  }
  const std::string path = ToUi(report.Path());
  const std::string trouble = report.Trouble();
  const bool givenUp = report.Cancelled();
  window->report_.reset();
  if (!reads) window->status_->SetProgress({}, -1);
  window->ReportWhenDone();  // the last job may have ended meanwhile
  if (givenUp) return window->Say(window->texts_.Get("rep_given_up"));
  if (trouble.empty()) return window->Say(window->texts_.Format("rep_written", path));
  const Message failed(MessageId::kReportNotWritten, FromUi(path));
  window->application_.SettingsAndFiles().Log().Note(failed);
  if (window->OnReportFailed) window->OnReportFailed(failed);
  window->Say(OneLine(window->texts_.Format("ui_past_not_exported", path, ToUi(trouble))),
              StatusBar::Tone::kError);
}
