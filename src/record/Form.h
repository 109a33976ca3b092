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
#include "messages/Message.h"
#include "runs/RunRecord.h"

namespace form {

using Json = nlohmann::json;

// Byte strings need not be UTF-8: such a one is {"bytes": the same, taken for Latin-1}.
Json Of(const std::string& text);
bool Take(const Json& json, std::string& text);

// {"id": its name, "with": its arguments, "text": its English}. One that this program's table does
// not have, or has with other arguments, comes back as that text.
Json Of(const Message& message);
bool Take(const Json& json, Message& message);

Json Of(const RunRecord& run);
bool Take(const Json& json, RunRecord& run);

template <std::integral Number>
Json Of(Number number) {
  return number;
}
template <std::integral Number>
bool Take(const Json& json, Number& number) {
  if constexpr (std::same_as<Number, bool>) {
    if (!json.is_boolean()) return false;
  } else {
    if (!json.is_number_integer()) return false;
    const bool fits = json.is_number_unsigned() ? std::in_range<Number>(json.get<std::uint64_t>())
                                                : std::in_range<Number>(json.get<std::int64_t>());
    if (!fits) return false;
  }
  number = json.get<Number>();
  return true;
}

template <typename Enum>
requires std::is_enum_v<Enum> Json Of(Enum value) {
  return static_cast<std::int64_t>(value);
}
bool Take(const Json& json, JobStatus& status);
bool Take(const Json& json, SolverKind& kind);
inline bool Take(const Json& json, JobId& id) {
  std::uint64_t number = 0;
  if (!Take(json, number) || number == 0) return false;
  id = static_cast<JobId>(number);
  return true;
}

template <typename T>
Json Of(const std::optional<T>& value) {
  return value ? Of(*value) : Json();
}
template <typename T>
bool Take(const Json& json, std::optional<T>& value) {
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
bool Take(const Json& json, std::pair<A, B>& both) {
  return json.is_array() && json.size() == 2 && Take(json[0], both.first) &&
         Take(json[1], both.second);
}

template <typename T>
Json Of(const std::vector<T>& list) {
  Json json = Json::array();
  for (const T& one : list) json.push_back(Of(one));
  return json;
}
template <typename T>
bool Take(const Json& json, std::vector<T>& list) {
  if (!json.is_array()) return false;
  for (const Json& one : json) {
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
  visit("machine", run.machine);
  visit("process", run.process.id);
  visit("mark", run.process.mark);
  visit("token", run.token);
  visit("before", run.filesBefore);
  visit("ended", run.ended);
  visit("exit", run.exitCode);
  visit("verdict", run.verdict);
  visit("code", run.errorCode);
  visit("reason", run.reason);
  visit("message", run.messageFile);
  visit("errors", run.errors);
  visit("warnings", run.warnings);
  visit("nodes", run.nodes);
  visit("elements", run.elements);
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
void Read(const Json& json, Fields& fields) {
  if (!json.is_object()) return;
  ForEachField(fields, [&](const char* key, auto& field) {
    const auto found = json.find(key);
    if (found != json.end()) Take(*found, field);
  });
}

// One that is not JSON is discarded().
Json Parsed(std::string_view text);
std::string Text(const Json& json);

}  // namespace form

#endif
