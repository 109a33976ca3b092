#include "Version.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "System.h"
#include "Text.h"

namespace {

std::string FirstLine(const std::string& path) {
  if (IsFolder(path)) return {};
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

std::string OldReport(const Version& version, bool doublePrecision) {
  const char precision = doublePrecision ? 'd' : 's';
  return Format(" Stand-in solver: computes nothing\n\n") +
         Format(" Version number:  ls971%c %s\n", precision, version.release.c_str()) +
         Format(" Revision:        %s\n", version.revision.c_str()) +
         Format(" Precision:       %s\n",
                doublePrecision ? "Double precision (I8R8)" : "Single precision (I4R4)");
}

std::string NewReport(const Version& version, bool doublePrecision) {
  const char precision = doublePrecision ? 'd' : 's';
  return " -------------------------------------------------\n"
         " |  Stand-in solver: computes nothing            |\n" +
         Format(" |  Version : smp %c %-29s|\n", precision, version.release.c_str()) +
         Format(" |  Revision: %-35s|\n", version.revision.c_str()) +
         Format(" |  Precision  : %-32s|\n",
                doublePrecision ? "Double precision (I8R8)" : "Single precision (I4R4)") +
         " -------------------------------------------------\n";
}

}  // namespace

Version ParseVersion(const std::vector<std::string>& words) {
  Version version;
  if (!words.empty()) version.release = words[0];
  if (words.size() > 1) version.revision = words[1];
  if (words.size() > 2) version.oldReport = Upper(words[2]) == "OLD";
  return version;
}

Version ConfiguredVersion() {
  const char* environment = std::getenv("STANDIN_VERSION");
  std::string text = environment != nullptr ? environment : "";
  if (Trim(text).empty()) text = FirstLine("standin_version.txt");
  if (Trim(text).empty()) text = FirstLine(ProgramFolder() + "/standin_version.txt");
  return ParseVersion(Words(text));
}

bool WriteInfo(const Version& version, bool doublePrecision) {
  const std::string report =
      version.oldReport ? OldReport(version, doublePrecision) : NewReport(version, doublePrecision);
  std::fputs(report.c_str(), stdout);
  std::FILE* file = std::fopen("lstc.log", "w");
  if (file == nullptr) return false;
  const bool written = std::fputs(report.c_str(), file) >= 0;
  return std::fclose(file) == 0 && written;
}
