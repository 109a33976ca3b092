// Settings in a scratch work folder, with files of any content.
#ifndef KR_FUZZ_SCRATCHSETTINGS_H
#define KR_FUZZ_SCRATCHSETTINGS_H

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/SettingsAndPaths.h"

class ScratchSettings {
 public:
  // One for the whole run; in memory where there is such a folder.
  static SettingsAndPaths& Get() {
    static SettingsAndPaths* const settings = [] {
      struct stat info {};
      std::string folder = stat("/dev/shm", &info) == 0 ? "/dev/shm" : "/tmp";
      folder += "/kr_fuzz.XXXXXX";
      if (mkdtemp(folder.data()) == nullptr) std::abort();
      setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
      return new SettingsAndPaths("fuzz");
    }();
    return *settings;
  }

  static void Write(const std::string& path, const std::string& bytes) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) std::abort();
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
  }
};

#endif
