#include "record/QueueImage.h"

#include <algorithm>
#include <functional>
#include <unordered_set>

#include "record/Form.h"

namespace form {

namespace {

constexpr std::pair<const char*, std::optional<std::int64_t> RunResult::*> kCounts[] = {
    {"errors", &RunResult::errors},   {"warnings", &RunResult::warnings},
    {"nodes", &RunResult::nodes},     {"elements", &RunResult::elements},
    {"seconds", &RunResult::seconds},
};

void WriteProgress(const JobImage& job, Json& json) {
  if (!job.messageFile.empty()) json["message"] = Of(job.messageFile);
  if (job.errorCode != 0) json["code"] = job.errorCode;
  if (!job.reason.Empty()) json["reason"] = Of(job.reason);
  if (!job.restartDump.empty()) json["dump"] = Of(job.restartDump);
  if (!job.lastWords.Empty()) json["words"] = Of(job.lastWords);
  if (job.stoppedAt != kNotStopped) json["stopped"] = job.stoppedAt;
  if (job.failure != Failure()) json["how"] = Of(job.failure);
  if (job.stops) json["stops"] = true;
  for (const auto& [key, count] : kCounts) {
    if (job.*count) json[key] = *(job.*count);
  }
}

Json JobJson(const JobImage& job) {
  Json json = {{"id", Of(job.id)}, {"kind", Of(job.kind)}};
  Write(job.fields, json);
  WriteProgress(job, json);
  if (job.dyna) {
    Json& dyna = json["dyna"] = Json::object();
    Write(*job.dyna, dyna);
  }
  if (job.run) json["run"] = Of(*job.run);
  for (const JobImage& stage : job.stages) json["stages"].push_back(JobJson(stage));
  return json;
}

template <typename T>
void TakeKey(const Value& json, const char* key, T& value) {
  if (const Value* const found = json.Find(key)) Take(*found, value);
}

void TakeProgress(const Value& json, JobImage& job) {
  Read(json, job.fields);
  TakeKey(json, "message", job.messageFile);
  TakeKey(json, "code", job.errorCode);
  TakeKey(json, "reason", job.reason);
  TakeKey(json, "dump", job.restartDump);
  TakeKey(json, "words", job.lastWords);
  TakeKey(json, "stopped", job.stoppedAt);
  TakeKey(json, "how", job.failure);
  TakeKey(json, "stops", job.stops);
  for (const auto& [key, count] : kCounts) TakeKey(json, key, job.*count);
}

bool TakeJob(const Value& json, JobImage& job, bool isStage) {
  const Value* const id = json.Find("id");
  if (id == nullptr || !Take(*id, job.id)) return false;
  TakeKey(json, "kind", job.kind);
  TakeProgress(json, job);
  if (const Value* const dyna = json.Find("dyna")) Read(*dyna, job.dyna.emplace());
  TakeKey(json, "run", job.run);
  const Value* const stages = json.Find("stages");
  if (isStage || stages == nullptr) return true;
  for (const Value& one : stages->items) {
    JobImage stage;
    if (TakeJob(one, stage, true)) job.stages.push_back(std::move(stage));
  }
  return true;
}

// A change is an array: its word, then what it needs.
struct ToJson {
  Json operator()(const change::GroupSet& c) const {
    return {"group", c.group, Of(c.name), Of(c.text)};
  }
  Json operator()(const change::GroupGone& c) const { return {"nogroup", c.group}; }
  Json operator()(const change::GroupPlaced& c) const { return {"place", c.group, c.place}; }
  Json operator()(const change::CurrentGroup& c) const { return {"current", c.group}; }
  Json operator()(const change::JobRequested& c) const {
    Json request = Json::object();
    Write(c.request, request);
    return {"request", std::move(request)};
  }
  Json operator()(const change::HandedOver& c) const { return {"handed", Of(c.files)}; }
  Json operator()(const change::JobAdded& c) const { return {"add", c.group, JobJson(c.job)}; }
  Json operator()(const change::JobGone& c) const { return {"remove", Of(c.job)}; }
  Json operator()(const change::JobMoved& c) const { return {"move", Of(c.job), c.place}; }
  Json operator()(const change::JobsGone& c) const { return {"gone", Of(c.jobs)}; }
  Json operator()(const change::JobOrder& c) const {
    return {"order", c.group, c.place, Of(c.jobs)};
  }
  Json operator()(const change::JobSet& c) const { return {"job", JobJson(c.job)}; }
  Json operator()(const change::Progress& c) const {
    JobImage job;
    job.Set(c.progress);
    Json progress = Json::object();
    Write(job.fields, progress);
    WriteProgress(job, progress);
    return {"status", Of(c.job), static_cast<std::uint64_t>(c.stage), progress};
  }
  Json operator()(const change::Run& c) const { return {"run", Of(c.job), Of(c.run)}; }
  Json operator()(const change::LeftTaken& c) const { return {"taken", c.resumed}; }
  Json operator()(const change::SessionOver& c) const { return {"over", c.resume, c.stopped}; }
  Json operator()(const change::SessionBegins& c) const { return {"begin", c.last}; }
};

using Reader = std::optional<QueueChange> (*)(const Value& json);

template <typename T>
bool At(const Value& json, std::size_t place, T& value) {
  return place < json.items.size() && Take(json.items[place], value);
}

// A change whose word is followed by these of its fields.
template <typename Change, auto... fields>
std::optional<QueueChange> ReadFields([[maybe_unused]] const Value& json) {
  Change read;
  [[maybe_unused]] std::size_t place = 0;
  if (!(At(json, ++place, read.*fields) && ...)) return {};
  return read;
}

const std::map<std::string, Reader, std::less<>>& Readers() {
  using Result = std::optional<QueueChange>;
  static const auto& readers = *new const std::map<std::string, Reader, std::less<>>{
      {"group", ReadFields<change::GroupSet, &change::GroupSet::group, &change::GroupSet::name,
                           &change::GroupSet::text>},
      {"nogroup", ReadFields<change::GroupGone, &change::GroupGone::group>},
      {"place",
       ReadFields<change::GroupPlaced, &change::GroupPlaced::group, &change::GroupPlaced::place>},
      {"current", ReadFields<change::CurrentGroup, &change::CurrentGroup::group>},
      {"request",
       [](const Value& json) -> Result {
         change::JobRequested c;
         if (json.items.size() < 2) return {};
         Read(json.items[1], c.request);
         return c.request.id == JobId::kNone ? Result() : Result(std::move(c));
       }},
      {"handed", ReadFields<change::HandedOver, &change::HandedOver::files>},
      {"add",
       [](const Value& json) -> Result {
         change::JobAdded c;
         if (!At(json, 1, c.group) || json.items.size() < 3 ||
             !TakeJob(json.items[2], c.job, false))
           return {};
         return Result(std::move(c));
       }},
      {"remove", ReadFields<change::JobGone, &change::JobGone::job>},
      {"gone", ReadFields<change::JobsGone, &change::JobsGone::jobs>},
      {"order", ReadFields<change::JobOrder, &change::JobOrder::group, &change::JobOrder::place,
                           &change::JobOrder::jobs>},
      {"move", ReadFields<change::JobMoved, &change::JobMoved::job, &change::JobMoved::place>},
      {"job",
       [](const Value& json) -> Result {
         change::JobSet c;
         return json.items.size() > 1 && TakeJob(json.items[1], c.job, false) ? Result(std::move(c))
                                                                              : Result();
       }},
      {"status",
       [](const Value& json) -> Result {
         change::Progress c;
         std::uint64_t stage = 0;
         if (!At(json, 1, c.job) || !At(json, 2, stage) || json.items.size() < 4 ||
             !json.items[3].IsObject())
           return {};
         c.stage = static_cast<JobId>(stage);
         JobImage job;
         TakeProgress(json.items[3], job);
         c.progress = {job, job.fields.status, job.fields.started, job.fields.ended, job.stops};
         return c;
       }},
      {"run", ReadFields<change::Run, &change::Run::job, &change::Run::run>},
      {"taken",
       [](const Value& json) -> Result {
         change::LeftTaken c;
         At(json, 1, c.resumed);
         return c;
       }},
      {"over",
       [](const Value& json) -> Result {
         change::SessionOver c;
         if (!At(json, 1, c.resume)) return {};
         At(json, 2, c.stopped);
         return c;
       }},
      {"begin", ReadFields<change::SessionBegins, &change::SessionBegins::last>},
  };
  return readers;
}

std::optional<QueueChange> ChangeOf(const Value& json) {
  if (!json.IsList() || json.items.empty()) return std::nullopt;
  const auto found = Readers().find(json.items[0].text);
  return found == Readers().end() ? std::nullopt : found->second(json);
}

}  // namespace

}  // namespace form

namespace {

// What happens to an image.
class Applier {
 public:
  explicit Applier(QueueImage& image) : image_(image), now_(image.now) {}

  void operator()(const change::GroupSet& c) {
    GroupImage* group = Group(c.group);
    if (group == nullptr) group = &now_.groups.emplace_back(GroupImage{c.group, {}, {}, {}});
    group->name = c.name;
    group->text = c.text;
  }
  void operator()(const change::GroupGone& c) {
    const GroupImage* const group = Group(c.group);
    if (group == nullptr) return;
    for (const JobId job : group->jobs) Remove(job);
    std::erase_if(now_.groups, [&](const GroupImage& one) { return one.id == c.group; });
  }
  void operator()(const change::GroupPlaced& c) {
    const GroupImage* const found = Group(c.group);
    if (found == nullptr) return;
    const GroupImage group = *found;
    std::erase_if(now_.groups, [&](const GroupImage& one) { return one.id == c.group; });
    const auto last = static_cast<int>(now_.groups.size());
    now_.groups.insert(now_.groups.begin() + std::clamp(c.place, 0, last), group);
  }
  void operator()(const change::CurrentGroup& c) { now_.current = c.group; }
  void operator()(const change::JobRequested& c) {
    if (Job(c.request.id) == nullptr) now_.requests.emplace(c.request.id, c.request);
  }
  void operator()(const change::HandedOver& c) { image_.handedOver = c.files; }
  void operator()(const change::JobAdded& c) { (*this)(change::JobAdded(c)); }
  void operator()(change::JobAdded&& c) {
    GroupImage* const group = Group(c.group);
    const JobId id = c.job.id;
    if (group == nullptr || !now_.jobs.emplace(id, std::move(c.job)).second) return;
    group->jobs.push_back(id);
    now_.requests.erase(id);
    const auto leaving = std::find_if(image_.leaving.begin(), image_.leaving.end(),
                                      [id](const LeavingRun& one) { return one.job == id; });
    if (leaving == image_.leaving.end()) return;
    Job(id)->run = std::move(leaving->run);  // the job is back before its solver has ended
    image_.leaving.erase(leaving);
  }
  void operator()(const change::JobGone& c) { (*this)(change::JobsGone{{c.job}}); }
  void operator()(const change::JobsGone& c) {
    bool wereThere = false;
    for (const JobId job : c.jobs) {
      now_.requests.erase(job);
      wereThere = Remove(job) || wereThere;
    }
    const auto isGone = [this](JobId job) { return Job(job) == nullptr; };
    for (GroupImage& group : now_.groups) {
      if (wereThere) std::erase_if(group.jobs, isGone);
    }
  }
  void operator()(const change::JobOrder& c) {
    GroupImage* const group = Group(c.group);
    if (group == nullptr) return;
    std::unordered_set<JobId> others(group->jobs.begin(), group->jobs.end());
    std::vector<JobId> placed;
    for (const JobId job : c.jobs) {
      if (others.erase(job) != 0) placed.push_back(job);
    }
    std::erase_if(group->jobs, [&others](JobId job) { return others.count(job) == 0; });
    const std::size_t place = std::min<std::size_t>(c.place, group->jobs.size());
    group->jobs.insert(group->jobs.begin() + static_cast<std::ptrdiff_t>(place), placed.begin(),
                       placed.end());
  }
  void operator()(const change::JobMoved& c) {
    for (GroupImage& group : now_.groups) {
      const auto found = std::find(group.jobs.begin(), group.jobs.end(), c.job);
      if (found == group.jobs.end()) continue;
      group.jobs.erase(found);
      const std::size_t place = std::min<std::size_t>(c.place, group.jobs.size());
      group.jobs.insert(group.jobs.begin() + static_cast<std::ptrdiff_t>(place), c.job);
      return;
    }
  }
  void operator()(const change::JobSet& c) {
    JobImage* const job = Job(c.job.id);
    if (job == nullptr) return;
    std::optional<RunRecord> run = std::move(job->run);
    *job = c.job;
    for (const JobImage& stage : job->stages) now_.requests.erase(stage.id);
    if (job->fields.status == JobStatus::kRunning) job->run = std::move(run);
  }
  void operator()(const change::Progress& c) {
    JobImage* const job = Job(c.job);
    if (job == nullptr) return;
    if (c.stage == JobId::kNone) {
      job->Set(c.progress);
      if (c.progress.status != JobStatus::kRunning) job->run.reset();
      return;
    }
    for (JobImage& stage : job->stages) {
      if (stage.id == c.stage) stage.Set(c.progress);
    }
  }
  void operator()(const change::Run& c) {
    if (JobImage* const job = Job(c.job)) {
      job->run = c.run;
      return;
    }
    std::erase_if(image_.leaving, [&](const LeavingRun& one) {
      return one.run.token == c.run.token || (one.job == c.job && c.job != kFormerJob);
    });
    if (!HasEnded(c.run.verdict)) image_.leaving.push_back({c.job, c.run});
  }
  void operator()(const change::LeftTaken& c) {
    std::erase_if(image_.left,
                  [&](const SessionImage& session) { return session.resume || !c.resumed; });
  }
  void operator()(const change::SessionOver& c) {
    now_.over = true;
    now_.resume = c.resume;
    now_.stopped = c.stopped;
  }
  void operator()(const change::SessionBegins& c) {
    if (c.last != 0) now_.last = c.last;
    if (now_.IsLeft()) image_.left.push_back(std::move(now_));
    now_ = {};
    for (LeavingRun& one : image_.leaving) one.job = kFormerJob;
  }

 private:
  GroupImage* Group(int id) {
    const auto found = std::find_if(now_.groups.begin(), now_.groups.end(),
                                    [id](const GroupImage& group) { return group.id == id; });
    return found == now_.groups.end() ? nullptr : &*found;
  }
  JobImage* Job(JobId id) {
    const auto found = now_.jobs.find(id);
    return found == now_.jobs.end() ? nullptr : &found->second;
  }
  // False when it was not there.
  bool Remove(JobId id) {
    const auto found = now_.jobs.find(id);
    if (found == now_.jobs.end()) return false;
    std::optional<RunRecord> run = std::move(found->second.run);
    now_.jobs.erase(found);
    if (run) (*this)(change::Run{id, std::move(*run)});
    return true;
  }

  QueueImage& image_;
  SessionImage& now_;
};

void AddSession(const SessionImage& session, std::vector<std::string>& records) {
  constexpr std::size_t kAtOnce = 100;  // changes of one record
  std::vector<QueueChange> changes;
  for (const GroupImage& group : session.groups) {
    changes.push_back(change::GroupSet{group.id, group.name, group.text});
    for (const JobId id : group.jobs) {
      const JobImage* const job = session.Find(id);
      if (job != nullptr) changes.push_back(change::JobAdded{group.id, *job});
      if (changes.size() < kAtOnce) continue;
      records.push_back(RecordOf(changes, session.last));
      changes.clear();
    }
  }
  for (const auto& [id, request] : session.requests) {
    changes.push_back(change::JobRequested{request});
    if (changes.size() < kAtOnce) continue;
    records.push_back(RecordOf(changes, session.last));
    changes.clear();
  }
  changes.push_back(change::CurrentGroup{session.current});
  if (session.over) changes.push_back(change::SessionOver{session.resume, session.stopped});
  records.push_back(RecordOf(changes, session.last));
}

}  // namespace

bool SessionImage::IsLeft() const {
  if (!requests.empty()) return true;
  if (!over || resume || stopped) return !jobs.empty();
  return std::any_of(jobs.begin(), jobs.end(),
                     [](const auto& job) { return !HasEnded(job.second.fields.status); });
}

const JobImage* SessionImage::Find(JobId job) const {
  const auto found = jobs.find(job);
  return found == jobs.end() ? nullptr : &found->second;
}

void QueueImage::Apply(const QueueChange& change) {
  std::visit(Applier(*this), change);
}

void QueueImage::Apply(QueueChange&& change) {
  std::visit(Applier(*this), std::move(change));
}

std::string RecordOf(const std::vector<QueueChange>& changes, std::int64_t time) {
  form::Json list = form::Json::array();
  for (const QueueChange& change : changes) list.push_back(std::visit(form::ToJson(), change));
  return form::Text({{"t", time}, {"c", std::move(list)}});
}

bool ApplyRecord(std::string_view record, QueueImage& image) {
  const form::Value json = form::Parsed(record);
  const form::Value* const list = json.Find("c");
  const form::Value* const time = json.Find("t");
  if (list == nullptr || !list->IsList() || time == nullptr) return false;
  std::vector<QueueChange> changes;
  changes.reserve(list->items.size());
  for (const form::Value& one : list->items) {
    std::optional<QueueChange> change = form::ChangeOf(one);
    if (!change) return false;
    changes.push_back(std::move(*change));
  }
  for (QueueChange& change : changes) image.Apply(std::move(change));
  form::Take(*time, image.now.last);
  return true;
}

std::vector<std::string> SnapshotOf(const QueueImage& image) {
  std::vector<std::string> records;
  for (const SessionImage& session : image.left) {
    AddSession(session, records);
    records.push_back(RecordOf({change::SessionBegins{session.last}}, 0));
  }
  AddSession(image.now, records);
  for (const LeavingRun& one : image.leaving)
    records.push_back(RecordOf({change::Run{one.job, one.run}}, image.now.last));
  if (!image.handedOver.empty())
    records.push_back(RecordOf({change::HandedOver{image.handedOver}}, image.now.last));
  return records;
}
