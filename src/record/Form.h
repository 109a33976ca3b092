// Values as JSON and back. Inside record/ only.
//
// What has its usual value is left out. Reading never fails: what is missing, or is something else
// than it should be, stays as it was.
#ifndef KR_RECORD_FORM_H
#define KR_RECORD_FORM_H

#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "jobs/JobFile.h"
#include "jobs/JobRequest.h"
#include "messages/Message.h"
#include "runs/RunRecord.h"

namespace form {

using Json = nlohmann::json;  // to write

// To read: JSON as it was parsed, lighter than what it is written from.
struct Value {
  enum class Kind : unsigned char { kNone, kBool, kInteger, kUnsigned, kText, kList, kObject };
  Kind kind = Kind::kNone;  // of a null and of a number with a fraction too
  bool flag = false;
  std::int64_t integer = 0;
  std::uint64_t whole = 0;
  std::string text;
  std::string key;           // of a member
  std::vector<Value> items;  // of a list, or the members

  bool IsObject() const { return kind == Kind::kObject; }
  bool IsList() const { return kind == Kind::kList; }
  bool IsText() const { return kind == Kind::kText; }
  const Value* Find(std::string_view name) const;  // a member; null: there is none
};

// kNone for what is no JSON, or nested deeper than anything of ours.
Value Parsed(std::string_view text);
std::string Text(const Json& json);

// Byte strings need not be UTF-8: such a one is {"bytes": the same, taken for Latin-1}.
Json Of(const std::string& text);
bool Take(const Value& json, std::string& text);

// {"id": its name, "with": its arguments, "text": its English}. One that this program's table does
// not have, or has with other arguments, comes back as that text.
Json Of(const Message& message);
bool Take(const Value& json, Message& message);

Json Of(const RunRecord& run);
bool Take(const Value& json, RunRecord& run);

template <std::integral Number>
Json Of(Number number) {
  return number;
}
template <std::integral Number>
bool Take(const Value& json, Number& number) {
  if constexpr (std::same_as<Number, bool>) {
    if (json.kind != Value::Kind::kBool) return false;
    number = json.flag;
  } else if (json.kind == Value::Kind::kUnsigned) {
    if (!std::in_range<Number>(json.whole)) return false;
    number = static_cast<Number>(json.whole);
  } else {
    if (json.kind != Value::Kind::kInteger || !std::in_range<Number>(json.integer)) return false;
    number = static_cast<Number>(json.integer);
  }
  return true;
}

template <typename Enum>
requires std::is_enum_v<Enum> Json Of(Enum value) {
  return static_cast<std::int64_t>(value);
}
bool Take(const Value& json, JobStatus& status);
bool Take(const Value& json, SolverKind& kind);
inline bool Take(const Value& json, JobId& id) {
  std::uint64_t number = 0;
  if (!Take(json, number) || number == 0) return false;
  id = static_cast<JobId>(number);
  return true;
}

// [kind, number]
Json Of(const Failure& failure);
bool Take(const Value& json, Failure& failure);

template <typename T>
Json Of(const std::optional<T>& value) {
  return value ? Of(*value) : Json();
}
template <typename T>
bool Take(const Value& json, std::optional<T>& value) {
  T found{};
  if (!Take(json, found)) return false;
  value = std::move(found);
  return true;
}

template <typename A, typename B>
Json Of(const std::pair<A, B>& both) {
  return Json::array({Of(both.first), Of(both.second)});
}
template <typename A, typename B>
bool Take(const Value& json, std::pair<A, B>& both) {
  return json.IsList() && json.items.size() == 2 && Take(json.items[0], both.first) &&
         Take(json.items[1], both.second);
}

template <typename T>
Json Of(const std::vector<T>& list) {
  Json json = Json::array();
  for (const T& one : list) json.push_back(Of(one));
  return json;
}
template <typename T>
bool Take(const Value& json, std::vector<T>& list) {
  if (!json.IsList()) return false;
  for (const Value& one : json.items) {
    T found{};
    if (Take(one, found)) list.push_back(std::move(found));
  }
  return true;
}

// The fields of a value with their keys, for both directions: `visit(key, field)`.
template <typename Fields, typename Visit>
requires std::same_as<std::remove_const_t<Fields>, JobFields>
void ForEachField(Fields& job, Visit visit) {
  visit("identifier", job.identifier);
  visit("file", job.jobFile);
  visit("restart", job.restartFile);
  visit("options", job.extraOptions);
  visit("memory", job.memory);
  visit("cpus", job.ncpu);
  visit("pause", job.pause);
  visit("status", job.status);
  visit("started", job.started);
  visit("ended", job.ended);
  visit("first", job.firstStage);
}
template <typename Fields, typename Visit>
requires std::same_as<std::remove_const_t<Fields>, DynaFields>
void ForEachField(Fields& job, Visit visit) {
  visit("solver", job.solverType);
  visit("s", job.useSFile);
  visit("case", job.caseRun);
  visit("dump", job.dump);
  visit("keep", job.keepDeck);
  visit("jobid", job.outputName);
  visit("deckMemory", job.deckMemory);
  visit("recommended", job.hasRecommendedSolver);
  visit("saysFirst", job.hasFirstStage);
  visit("simulation", job.simulationType);
  visit("method", job.calculationMethod);
  visit("deckId", job.deckIdentifier);
  visit("deckIdFlag", job.deckIdentifierFlag);
  visit("includes", job.includes);
}
template <typename Fields, typename Visit>
requires std::same_as<std::remove_const_t<Fields>, JobRequest>
void ForEachField(Fields& request, Visit visit) {
  visit("id", request.id);
  visit("kind", request.kind);
  visit("pause", request.pause);
  visit("memory", request.memory);
  visit("s", request.sGiven);
  visit("dump", request.dump);
  visit("cpus", request.ncpu);
  visit("input", request.inputFile);
  visit("restart", request.restartFile);
  visit("file", request.jobFile);
  visit("options", request.extraOptions);
  visit("jobid", request.outputName);
  visit("group", request.groupId);
  visit("window", request.fromWindow);
  visit("stageOf", request.stageOf);
}
template <typename Fields, typename Visit>
requires std::same_as<std::remove_const_t<Fields>, RunRecord>
void ForEachField(Fields& run, Visit visit) {
  visit("started", run.started);
  visit("stage", run.stage);
  visit("solver", run.solver);
  visit("file", run.jobFile);
  visit("restart", run.restartFile);
  visit("program", run.program);
  visit("line", run.commandLine);
  visit("folder", run.folder);
  visit("variables", run.variables);
  visit("cpus", run.cpus);
  visit("memory", run.memory);
  visit("options", run.extraOptions);
  visit("ncpu", run.ncpu);
  visit("pause", run.pause);
  visit("sfile", run.useSFile);
  visit("jobid", run.outputName);
  visit("dump", run.dump);
  visit("machine", run.machine);
  visit("process", run.process.id);
  visit("mark", run.process.mark);
  visit("token", run.token);
  visit("before", run.filesBefore);
  visit("dumpsBefore", run.dumpsBefore);
  visit("ended", run.ended);
  visit("exit", run.exitCode);
  visit("verdict", run.verdict);
  visit("code", run.errorCode);
  visit("reason", run.reason);
  visit("words", run.lastWords);
  visit("message", run.messageFile);
  visit("goOn", run.restartDump);
  visit("stopped", run.stoppedAt);
  visit("how", run.failure);
  visit("errors", run.errors);
  visit("warnings", run.warnings);
  visit("nodes", run.nodes);
  visit("elements", run.elements);
  visit("seconds", run.seconds);
}

template <typename Fields>
void Write(const Fields& fields, Json& json) {
  // Both are visited at once: the place of each field is the same in both.
  const Fields usual{};
  std::vector<const void*> usuals;
  ForEachField(usual, [&](const char*, const auto& field) { usuals.push_back(&field); });
  std::size_t place = 0;
  ForEachField(fields, [&](const char* key, const auto& field) {
    using Field = std::remove_cvref_t<decltype(field)>;
    if (field != *static_cast<const Field*>(usuals[place++])) json[key] = Of(field);
  });
}
template <typename Fields>
void Read(const Value& json, Fields& fields) {
  ForEachField(fields, [&](const char* key, auto& field) {
    if (const Value* const found = json.Find(key)) Take(*found, field);
  });
}

}  // namespace form

#endif
