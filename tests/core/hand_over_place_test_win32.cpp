// Where the hand-over file lies on Windows.
#include <windows.h>

#include <filesystem>
#include <fstream>

#include "core/Application.h"
#include "CoreFixture.h"

namespace {

class Place : public CoreTest {};

TEST_F(Place, FollowsFromTheUserAlone) {
  const ScopedVariable notMoved("KESTRUN_HANDOVER_FOLDER", std::nullopt);
  const HandOverPlace usual = HandOverPlaces().front();
  EXPECT_TRUE(FileDirWrapper::IsDirWritable(usual.folder)) << usual.folder;
  EXPECT_TRUE(usual.folder.ends_with("\\orla\\handover")) << usual.folder;
  EXPECT_FALSE(usual.folder.starts_with(home_.Path())) << usual.folder;
  const std::string other = home_ / "config";
  const ScopedVariable temporary("TMP", other), temporary2("TEMP", other),
      profile("USERPROFILE", other), local("LOCALAPPDATA", other), roaming("APPDATA", other),
      user("USERNAME", "other");
  const std::vector<HandOverPlace> places = HandOverPlaces();
  ASSERT_EQ(places.size(), 2U);
  EXPECT_EQ(places[0].folder, usual.folder);
  EXPECT_EQ(places[0].lock, usual.lock);
  EXPECT_TRUE(FileDirWrapper::IsSameFile(places[1].folder, other)) << places[1].folder;

  // What another program puts into the temporary folder is taken too.
  Application running;
  const char* alone[] = {"kestrun"};
  ASSERT_TRUE(running.Initialise(1, alone));
  const std::string file = SettingsAndPaths::HandOverFileIn(places[1]);
  home_.Write("config/~kestrun_tmp_2014 R1.txt", "#krjob\n" + Deck("a.k") + "\n");
  EXPECT_TRUE(WaitUntil([&] {
    running.Tick();
    running.Intake().Drain();
    return running.Manager().CurrentGroup()->JobCount() == 1;
  })) << file;
  running.Shutdown();
}

// Of a user whose name is of another language than the system.
TEST_F(Place, AFolderThatTheCodePageCannotWriteIsToldByItsShortName) {
  const std::filesystem::path folder = std::filesystem::path(home_.Path()) / L"\u5f20\u0416\u0641";
  std::filesystem::create_directory(folder);
  const std::wstring path = folder.wstring();
  RegSetKeyValueW(HKEY_CURRENT_USER,
                  L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders",
                  L"AppData", REG_SZ, path.c_str(),
                  static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t)));
  std::string told;
  FileDirWrapper::AppDataDir(told);
  std::ofstream(FileDirWrapper::Join(told, "file")) << "text";
  EXPECT_TRUE(std::filesystem::exists(folder / "file")) << told;
}

}  // namespace
