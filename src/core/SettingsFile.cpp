// The settings file: which keys there are, and how they are read and written.
#include <algorithm>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "core/SettingsAndPaths.h"
#include "core/SmallTextFile.h"
#include "solvers/SolverKinds.h"
#include "util/files/FileDirWrapper.h"
#include "util/files/IOWrapper.h"
#include "util/text/StrWrapper.h"

namespace {

constexpr std::size_t kReadableBytes = 4095;
constexpr std::size_t kLargestFile = 1024 * 1024;  // more is not looked into for keys

using Field = std::variant<std::uint64_t Settings::*, int Settings::*, bool Settings::*,
                           std::string Settings::*, SolverKind>;

struct Key {
  const char* section;
  const char* name;
  Field field;
  const char* whenEmpty = "";  // what a text becomes whose value is empty
};

// In the order in which a new file holds them: these, the programs of the solver kinds, the last.
const Key kFirstKeys[] = {
    {"GENERAL", "memory_size", &Settings::memory_size},
    {"GENERAL", "memory_auto", &Settings::memory_auto},
    {"GENERAL", "pause_time", &Settings::pause_time},
    {"GENERAL", "cpu_count", &Settings::cpu_count},
    {"GENERAL", "force", &Settings::force, "d3plotint"},
    {"GENERAL", "output_dump", &Settings::output_dump},
    {"GENERAL", "no_adapdump", &Settings::no_adapdump},
    {"GENERAL", "last_path", &Settings::last_path},
    {"GENERAL", "last_solver_path", &Settings::last_solver_path},
    {"GENERAL", "xterm_path", &Settings::xterm_path, "xterm"},
    {"GENERAL", "language", &Settings::language},
    {"GENERAL", "keep_jobs", &Settings::keep_jobs},
    {"GENERAL", "stop_after_failures", &Settings::stop_after_failures},
    {"GENERAL", "report_file", &Settings::report_file},
    {"GENERAL", "console", &Settings::console},
    {"GENERAL", "separate_results", &Settings::separate_results},
    {"GENERAL", "group", &Settings::group},
    {"GENERAL", "table_columns", &Settings::table_columns},
};
const Key kLastKeys[] = {
    {"SOLVER", "mpp_solver_s", &Settings::mpp_solver_s},
    {"SOLVER", "mpp_solver_d", &Settings::mpp_solver_d},
    {"MPP", "use_mpp", &Settings::use_mpp},
    {"MPP", "use_lamboot", &Settings::use_lamboot},
    {"MPP", "mpi", &Settings::mpi},
    {"MPP", "lamboot", &Settings::lamboot, "lamboot"},
    {"MPP", "memory2", &Settings::memory2},
    {"MPP", "mpi_param", &Settings::mpi_param},
    {"MPP", "mpp_param", &Settings::mpp_param},
    {"MPP", "protocol", &Settings::protocol},
    {"HEALTH", "health_silence_minutes", &Settings::health_silence_minutes},
    {"HEALTH", "health_step_percent", &Settings::health_step_percent},
    {"HEALTH", "health_energy_percent", &Settings::health_energy_percent},
    {"HEALTH", "health_hourglass_percent", &Settings::health_hourglass_percent},
    {"HEALTH", "health_mass_percent", &Settings::health_mass_percent},
    {"HEALTH", "health_not_finite", &Settings::health_not_finite},
    {"HEALTH", "health_disk_percent", &Settings::health_disk_percent},
    {"HEALTH", "min_free_mb", &Settings::min_free_mb},
    {"EXTERNAL_APP", "viewer", &Settings::viewer},
};

const std::vector<Key>& Keys() {
  static const std::vector<Key> keys = [] {
    std::vector<Key> all(std::begin(kFirstKeys), std::end(kFirstKeys));
    for (const SolverKindRow& row : SolverKinds())
      all.push_back({"SOLVER", row.settingsKey, row.kind});
    all.insert(all.end(), std::begin(kLastKeys), std::end(kLastKeys));
    return all;
  }();
  return keys;
}

// The key of the INC solver's access is the user's to write, by hand, and neither stored nor shown.
const Key kReadOnlyKeys[] = {{"SOLVER", "inc_token", &Settings::inc_token}};

// Stored only when it is set, or stands in the file already: an empty one means nothing.
const Key kOptionalKeys[] = {{"EXTERNAL_APP", "post_processor", &Settings::post_processor}};

void TakeText(std::string& text, const std::string& value, const char* whenEmpty) {
  if (!value.empty()) {
    text = value;
  } else if (*whenEmpty != '\0') {
    text = whenEmpty;
  }
}

// The overloads take a value as it was read; an empty one may stand for a missing key.
struct Taker {
  Settings& settings;
  const std::string& value;
  const char* whenEmpty;

  // Read as 32 bits and widened with the sign, also when there is no value.
  void operator()(std::uint64_t Settings::*field) const {
    settings.*field = static_cast<std::uint64_t>(std::int64_t{StrWrapperTxt::LeadingInt(value)});
  }
  void operator()(int Settings::*field) const {
    if (!value.empty()) settings.*field = StrWrapperTxt::LeadingInt(value);
  }
  void operator()(bool Settings::*field) const {
    if (!value.empty()) settings.*field = StrWrapperTxt::LeadingInt(value) == 1;
  }
  void operator()(std::string Settings::*field) const {
    TakeText(settings.*field, value, whenEmpty);
  }
  void operator()(SolverKind kind) const { TakeText(settings.SolverPath(kind), value, whenEmpty); }
};

struct Formatter {
  const Settings& settings;

  std::string operator()(std::uint64_t Settings::*field) const {
    return std::to_string(settings.*field);
  }
  std::string operator()(int Settings::*field) const { return std::to_string(settings.*field); }
  std::string operator()(bool Settings::*field) const { return settings.*field ? "1" : "0"; }
  std::string operator()(std::string Settings::*field) const { return OneLine(settings.*field); }
  std::string operator()(SolverKind kind) const { return OneLine(settings.SolverPath(kind)); }
};

void ReadKey(const Key& key, const std::string& file, Settings& settings) {
  std::string value;
  IOWrapperIni().ReadValFromIni(key.section, key.name, value, file);
  std::visit(Taker{settings, value, key.whenEmpty}, key.field);
}

bool ReadsAs(const Key& key, const std::string& value, const std::string& file) {
  std::string readBack;
  return IOWrapperIni().ReadValFromIni(key.section, key.name, readBack, file) &&
         readBack == value.substr(0, kReadableBytes);
}

bool WriteAndCompare(const Key& key, const std::string& written, const std::string& value,
                     const std::string& file) {
  IOWrapperIni().WriteValToIni(key.section, key.name, written, file);
  return ReadsAs(key, value, file);
}

// Reading drops blanks at the ends and one pair of quotes around a value. Where a value would come
// back changed, an outer pair protects it.
bool WriteKey(const Key& key, const std::string& value, const std::string& file) {
  if (WriteAndCompare(key, value, value, file)) return true;
  if (WriteAndCompare(key, '"' + value + '"', value, file)) return true;
  std::string trimmed;
  StrWrapperTxt::Trim(value, trimmed);
  return WriteAndCompare(key, trimmed, trimmed, file);
}

// Each writing replaces the copy, so what is there already is left alone. An empty value reads like
// a missing key, which has to be written.
bool WriteKeys(const Settings& settings, const std::string& file) {
  return std::all_of(Keys().begin(), Keys().end(),
                     [&](const Key& key) {
                       const std::string value = std::visit(Formatter{settings}, key.field);
                       return (!value.empty() && ReadsAs(key, value, file)) ||
                              WriteKey(key, value, file);
                     }) &&
         std::all_of(std::begin(kOptionalKeys), std::end(kOptionalKeys), [&](const Key& key) {
           const std::string value = std::visit(Formatter{settings}, key.field);
           return ReadsAs(key, value, file) || WriteKey(key, value, file);
         });
}

// Two bytes a character, as some editors save texts; with or without a byte order mark.
bool IsUtf16(const std::string& contents) {
  if (contents.size() < 2) return false;
  return contents.starts_with("\xFF\xFE") || contents.starts_with("\xFE\xFF") ||
         (contents[0] == '\0') != (contents[1] == '\0');
}

// False for a file whose keys cannot be read, and would not be kept when others are written.
bool ReadKeyText(const std::string& file, std::string& contents) {
  return ReadWholeText(file, contents) && contents.size() <= kLargestFile && !IsUtf16(contents);
}

// The keys are changed in a copy whose contents then take the place of the file's: a full disk or a
// crash between two keys leaves the old file. It may hold the user's access key. Copies of the
// program that end at the same moment each have their own.
bool ReplaceKeys(const Settings& settings, const std::string& file) {
  std::string contents;
  if (FileDirWrapper::FileExists(file) && !ReadKeyText(file, contents)) return false;
  const std::string copy = file + '.' + std::to_string(PTWrapperProcess().ProcessId()) + ".new";
  const bool edited = FileDirWrapper::WritePrivateFile(copy, contents) &&
                      WriteKeys(settings, copy) && ReadWholeText(copy, contents);
  FileDirWrapper::RemoveFile(copy);
  return edited && FileDirWrapper::WriteFileWhole(file, contents);
}

}  // namespace

void SettingsAndPaths::ReadSettings() {
  dirty_ = false;
  if (!FileDirWrapper::FileExists(settingsFile)) return;
  std::string contents;
  if (!ReadKeyText(settingsFile, contents)) {
    log_.Report(Message(MessageId::kSettingsUnreadable, settingsFile));
    return;
  }
  Settings read = settings_;
  for (const Key& key : Keys()) ReadKey(key, settingsFile, read);
  for (const Key& key : kOptionalKeys) ReadKey(key, settingsFile, read);
  for (const Key& key : kReadOnlyKeys) ReadKey(key, settingsFile, read);
  settings_ = std::move(read);
  Publish();
}

bool SettingsAndPaths::WriteSettings() {
  if (!HasWorkFolder()) {
    log_.Report(Message(MessageId::kFolderNotWritable, workFolder));
    return false;
  }
  if (!dirty_ && FileDirWrapper::FileExists(settingsFile)) return true;
  if (!ReplaceKeys(settings_, settingsFile)) {
    log_.Report(Message(MessageId::kSettingsNotWritten, settingsFile));
    return false;
  }
  dirty_ = false;
  return true;
}
