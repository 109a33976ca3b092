#include "ui/dialogs/HostEditor.h"

#include <FL/Fl.H>
#include <FL/fl_draw.H>

#include <utility>

#include "jobs/HostLine.h"
#include "jobs/JobArguments.h"
#include "ui/fltk/Labels.h"
#include "ui/fltk/LineInput.h"
#include "ui/fltk/Sizes.h"
#include "ui/fltk/Theme.h"
#include "ui/fltk/Tip.h"
#include "ui/text/Encoding.h"
#include "util/text/PlainText.h"

namespace {

constexpr std::size_t kMostRows = 200;  // a file with more is edited as a file
constexpr int kInset = 4;
constexpr int kHeadHeight = 20;
constexpr int kRowHeight = 22;
constexpr int kRowPitch = 24;
constexpr int kNameWidth = 150;
constexpr int kCpusWidth = 60;
constexpr int kUsesWidth = 104;
constexpr int kRemoveWidth = 24;
constexpr int kCpusX = kNameWidth + kInset;
constexpr int kUsesX = kCpusX + kCpusWidth + kInset;
constexpr int kRemoveX = kUsesX + kUsesWidth + kInset;
constexpr int kRowWidth = kRemoveX + kRemoveWidth;
constexpr int kAddWidth = 110;

constexpr DialogText kHostTexts[] = {
    {"host_name", "Host", "主机"},
    {"host_cpus", "CPUs", "CPU 数"},
    {"host_uses", "Group uses", "该组使用"},
    {"host_unused", "not used", "不使用"},
    {"host_add", "Add Host", "添加主机"},
    {"host_remove", "Remove this host", "删除该主机"},
    {"host_bad_name", "A host's name is one word that does not begin with #.",
     "主机名中不能有空格，且不能以 # 开头。"},
    {"host_bad_cpus", "The number of CPUs is a whole number, 0 to 100000.",
     "CPU 数为 0 到 100000 之间的整数。"},
    {"host_newer",
     "The host file has been changed by another program and was read again. Please repeat "
     "your change.",
     "主机文件已被其他程序修改，现已重新读取。请重新修改。"},
    {"host_failed", "The host file could not be written; nothing was changed.",
     "无法写入主机文件，未作任何修改。"},
    {"hosts_own", "The group uses the CPUs of the table.", "该组使用表中的 CPU 数。"},
    {"hosts_group", "The group has its own numbers of CPUs: ", "该组有自己的 CPU 数："},
    {"hosts_misfit", "The group's own numbers of CPUs do not fit these hosts and are not used: ",
     "该组自己的 CPU 数与主机数不符，未采用："},
    {"hosts_none", "The launcher gets no host list; MPI Param says where the solver runs.",
     "不向启动程序传递主机列表，由 MPI 参数指定运行位置。"},
    {"hosts_more", "Hosts that are in the file only: ", "仅在文件中列出的主机数："},
};

bool SameNameAndCpus(const HostLine& one, const HostLine& other) {
  return one.name == other.name && one.cpus == other.cpus;
}

}  // namespace

const std::span<const DialogText> HostEditor::kTexts = kHostTexts;

HostEditor::HostEditor(Fl_Scroll& area, SettingsAndPaths& settings, Texts texts)
    : area_(area), settings_(settings), texts_(std::move(texts)) {}

// Deleted later, since one of them may be calling.
void HostEditor::Clear() {
  std::vector<Fl_Widget*> old(heads_.begin(), heads_.end());
  for (const Row& row : rows_) {
    old.insert(old.end(), {row.name, row.cpus, row.uses, row.remove});
    // A field that goes while it is edited would store its row once more.
    for (Fl_Input* input : {row.name, row.cpus}) input->when(FL_WHEN_NEVER);
  }
  for (Fl_Widget* widget : {static_cast<Fl_Widget*>(add_), static_cast<Fl_Widget*>(note_)}) {
    if (widget) old.push_back(widget);
  }
  for (Fl_Widget* widget : old) {
    area_.remove(widget);
    Fl::delete_widget(widget);
  }
  heads_.clear();
  rows_.clear();
  more_.clear();
}

Fl_Box* HostEditor::MakeBox(int x, int width, const std::string& label) {
  const int top = area_.y() + Fl::box_dy(area_.box());
  auto* box = new Fl_Box(area_.x() + kInset + x, top, width, kHeadHeight);
  box->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE | FL_ALIGN_CLIP);
  box->labelsize(Sizes::kFontSize);
  box->labelcolor(Theme::kMuted);
  box->copy_label(PlainLabel(label).c_str());
  return box;
}

void HostEditor::MakeHeads() {
  heads_ = {MakeBox(0, kNameWidth, texts_("host_name")),
            MakeBox(kCpusX, kCpusWidth, texts_("host_cpus")),
            MakeBox(kUsesX, kUsesWidth, texts_("host_uses"))};
}

HostEditor::Row HostEditor::MakeRow(const std::string& line) {
  HostLine host;
  ParseHostLine(line, host);
  const int x = area_.x() + kInset;
  Row row{line, new LineInput(x, 0, kNameWidth, kRowHeight),
          new LineInput(x + kCpusX, 0, kCpusWidth, kRowHeight), MakeBox(kUsesX, kUsesWidth, {}),
          new Fl_Button(x + kRemoveX, 0, kRemoveWidth, kRowHeight, "-")};
  row.name->value(ToUi(host.name).c_str());
  row.cpus->value(line.empty() ? "1" : std::to_string(host.cpus).c_str());
  for (Fl_Input* input : {row.name, row.cpus}) {
    input->color(Theme::kSurface);
    input->textsize(Sizes::kFontSize);
    input->when(FL_WHEN_RELEASE | FL_WHEN_ENTER_KEY);
    input->callback([](Fl_Widget*, void* self) { static_cast<HostEditor*>(self)->Store(); }, this);
  }
  SetTip(*row.remove, texts_("host_remove"));
  row.remove->callback(
      [](Fl_Widget* button, void* self) { static_cast<HostEditor*>(self)->RemoveRow(button); },
      this);
  return row;
}

void HostEditor::Rebuild() {
  Clear();
  area_.scroll_to(0, 0);
  area_.begin();
  MakeHeads();
  for (const std::string& line : settings_.Get().host_lines) {
    HostLine host;
    if (!ParseHostLine(line, host)) continue;
    if (rows_.size() < kMostRows) {
      rows_.push_back(MakeRow(line));
    } else {
      more_.push_back(line);
    }
  }
  add_ = new Fl_Button(area_.x() + kInset, 0, kAddWidth, kRowHeight);
  add_->copy_label(texts_("host_add").c_str());
  add_->labelsize(Sizes::kFontSize);
  add_->callback([](Fl_Widget*, void* self) { static_cast<HostEditor*>(self)->AddRow(); }, this);
  note_ = MakeBox(0, kRowWidth, {});
  note_->align(FL_ALIGN_LEFT | FL_ALIGN_TOP | FL_ALIGN_INSIDE | FL_ALIGN_WRAP);
  area_.end();
  ShowGroup(groupText_);
}

void HostEditor::Place() {
  int y = heads_.front()->y() + kHeadHeight;  // moves while the area scrolls
  for (const Row& row : rows_) {
    for (Fl_Widget* widget :
         {static_cast<Fl_Widget*>(row.name), static_cast<Fl_Widget*>(row.cpus),
          static_cast<Fl_Widget*>(row.uses), static_cast<Fl_Widget*>(row.remove)})
      widget->resize(widget->x(), y, widget->w(), kRowHeight);
    y += kRowPitch;
  }
  add_->position(add_->x(), y);
  y += kRowPitch;
  fl_font(note_->labelfont(), note_->labelsize());
  int width = kRowWidth - 2 * kInset;
  int height = 0;
  fl_measure(note_->label() ? note_->label() : "", width, height);
  note_->resize(note_->x(), y, kRowWidth, height);
  area_.init_sizes();
  area_.redraw();
}

void HostEditor::AddRow() {
  area_.begin();
  rows_.push_back(MakeRow({}));
  area_.end();
  // Before the button, for the Tab key.
  const Row& row = rows_.back();
  for (Fl_Widget* widget : {static_cast<Fl_Widget*>(row.name), static_cast<Fl_Widget*>(row.cpus),
                            static_cast<Fl_Widget*>(row.remove)})
    area_.insert(*widget, add_);
  Place();
  // Down to the button.
  const int bottom = add_->y() + add_->h() + kInset - (area_.y() + area_.h());
  if (bottom > 0) area_.scroll_to(0, area_.yposition() + bottom);
  row.name->take_focus();
}

void HostEditor::RemoveRow(const Fl_Widget* button) {
  for (std::size_t index = 0; index < rows_.size(); ++index) {
    const Row row = rows_[index];
    if (row.remove != button) continue;
    rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(index));
    for (Fl_Widget* widget :
         {static_cast<Fl_Widget*>(row.name), static_cast<Fl_Widget*>(row.cpus),
          static_cast<Fl_Widget*>(row.uses), static_cast<Fl_Widget*>(row.remove)}) {
      area_.remove(widget);
      Fl::delete_widget(widget);
    }
    Place();
    if (index < rows_.size()) rows_[index].remove->take_focus();
    Store();
    return;
  }
}

bool HostEditor::Check(Fl_Input& input, bool valid, const char* hintKey) const {
  input.textcolor(valid ? Theme::kText : Theme::kError);
  SetTip(input, valid ? std::string() : texts_(hintKey));
  input.redraw();
  return valid;
}

std::string HostEditor::LineOf(const Row& row) const {
  const std::string name = FromUi(row.name->value());
  const auto cpus = WholeNumber(row.cpus->value(), 0, Settings::kMostCpus);
  const bool isNew = row.stored.empty() && name.empty();
  const bool nameValid = Check(*row.name, isNew || ValidHostName(name), "host_bad_name");
  const bool cpusValid = Check(*row.cpus, cpus.has_value(), "host_bad_cpus");
  if (isNew || !nameValid || !cpusValid) return row.stored;
  HostLine before;
  ParseHostLine(row.stored, before);
  const HostLine now{name, static_cast<int>(*cpus), before.rest};
  // What is the same stays as the user has written it.
  return SameNameAndCpus(before, now) ? row.stored : FormatHostLine(now);
}

void HostEditor::Store() {
  std::vector<std::string> lines;
  std::vector<std::string> shown;
  for (const Row& row : rows_) {
    shown.push_back(LineOf(row));
    if (!shown.back().empty()) lines.push_back(shown.back());
  }
  lines.insert(lines.end(), more_.begin(), more_.end());
  if (lines == settings_.Get().host_lines) return ShowGroup(groupText_);
  switch (settings_.ChangeHosts(lines)) {
    case SettingsAndPaths::HostChange::kDone:
      for (std::size_t index = 0; index < rows_.size(); ++index) rows_[index].stored = shown[index];
      return ShowGroup(groupText_);
    case SettingsAndPaths::HostChange::kFileIsNewer:
      settings_.ReadHostFile();
      Rebuild();
      return ShowNote(texts_("host_newer"), true);
    case SettingsAndPaths::HostChange::kFailed:
      Rebuild();
      return ShowNote(texts_("host_failed"), true);
  }
}

void HostEditor::ShowNote(const std::string& text, bool problem) {
  note_->labelcolor(problem ? Theme::kError : Theme::kMuted);
  note_->copy_label(PlainLabel(text).c_str());
  Place();
}

void HostEditor::ShowGroup(const std::string& groupText) {
  groupText_ = groupText;
  if (!note_) return;
  const Settings& settings = settings_.Get();
  const GroupHosts group = HostsOfGroup(settings, groupText);
  std::size_t host = 0;
  for (const Row& row : rows_) {
    const bool known = !row.stored.empty() && host < group.hosts.size();
    const int cpus = known ? group.hosts[host++].cpus : 0;
    row.uses->labelfont(cpus > 0 ? FL_HELVETICA_BOLD : FL_HELVETICA);
    row.uses->labelcolor(cpus > 0 ? Theme::kAccent : Theme::kMuted);
    row.uses->copy_label(cpus > 0 ? std::to_string(cpus).c_str()
                         : known  ? texts_("host_unused").c_str()
                                  : "");
  }
  std::string note = texts_("hosts_own");
  if (group.followed) {
    note = texts_("hosts_group") + ToUi(groupText);
  } else if (group.assigned > 0) {
    note = texts_("hosts_misfit") + ToUi(groupText);
  }
  if (!TakesHostList(settings.mpi)) note = texts_("hosts_none");
  if (!more_.empty()) note += " " + texts_("hosts_more") + std::to_string(more_.size());
  ShowNote(note, false);
}
