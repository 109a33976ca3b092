// The settings file: read, written back and read again.
#include "ScratchSettings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SettingsAndPaths& settings = ScratchSettings::Get();
  settings.Edit([](Settings& all) { all = Settings(); });
  ScratchSettings::Write(settings.settingsFile,
                         std::string(reinterpret_cast<const char*>(data), size));
  settings.ReadSettings();
  // Each key is written by itself, which takes fifty times as long as reading them all.
  if (size % 32 != 0) return 0;
  const Settings first = settings.Get();
  settings.Edit([](Settings&) {});
  if (!settings.WriteSettings()) return 0;  // a file that could not be read is left alone
  settings.Edit([](Settings& all) { all = Settings(); });
  settings.ReadSettings();
  const Settings& again = settings.Get();
  const bool same = again.force == first.force && again.viewer == first.viewer &&
                    again.mpi_param == first.mpi_param && again.group == first.group &&
                    again.cpu_count == first.cpu_count && again.use_mpp == first.use_mpp;
  if (!same) std::abort();
  return 0;
}
