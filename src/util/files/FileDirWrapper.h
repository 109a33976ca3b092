// Paths, folders and files. Stateless; any thread.
//
// Paths are byte strings in the system's code page. Both "\" and "/" separate on input; output
// uses the system's own separator. Folder results never end in a separator, save a lone root ("/",
// "C:\"). Results are true on success; no operation leaves a message.
//
// Nothing here cuts a path that is too long for the system: such a file is not found, or not made.
#ifndef KR_UTIL_FILES_FILEDIRWRAPPER_H
#define KR_UTIL_FILES_FILEDIRWRAPPER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

class FileDirWrapper {
 public:
  static constexpr char kSeparator =
#ifdef _WIN32
      '\\';
#else
      '/';
#endif

  // What every program of the system can take; buffers of the usual size would cut more.
  static constexpr std::size_t kMostPathBytes =
#ifdef _WIN32
      259;
#else
      4095;
#endif

  // Appends full paths of the entries to `files` and `dirs` in the system's order; "." and ".." are
  // left out. With `recursive` a folder's contents follow its own line. Links to folders are
  // folders; a folder that is reached again through a link is not listed again.
  static void ListDir(const std::string& folder, std::vector<std::string>& files,
                      std::vector<std::string>& dirs, bool recursive);

  // Creates the folder with all missing parents; stops at the first that cannot be created.
  static bool CreateDirTree(const std::string& path);

  static bool CurrentDir(std::string& dir);
  static bool SetCurrentDir(const std::string& dir);

  // The shell's folders, which need not exist; empty and true when the system gives none. On Linux
  // the documents folder of the user's folder list, else "Documents" in the home folder where that
  // exists, else the home folder; and the configuration folder.
  static bool DocumentsDir(std::string& dir);
  static bool AppDataDir(std::string& dir);

  // On Linux TMPDIR, else the user's private runtime folder, else "/tmp".
  static bool TempDir(std::string& dir);

  // Removes one trailing separator, not more; a lone root stays.
  static bool TrimTrailingSeparator(const std::string& path, std::string& out);

  // Wraps a path that holds a blank or a tab in double quotes.
  static bool QuotePath(const std::string& path, std::string& out);

  // Creates a file in the folder and removes it again; one of a name of its own where the usual
  // name is in use.
  static bool IsDirWritable(const std::string& folder);

  // Any kind of entry.
  static bool FileExists(const std::string& path);
  static bool IsFolder(const std::string& path);
  static bool IsFile(const std::string& path);  // no pipe and no device either
  static bool IsPipe(const std::string& path);
  // True when both paths lead to one file or folder that exists.
  static bool IsSameFile(const std::string& path, const std::string& other);
  // Text that is the same for all paths that lead to one file or folder, links and short names
  // included, and for no other of this machine. Empty when it does not exist.
  static std::string IdentityOf(const std::string& path);
  // When the file was last written, to be compared only: in the finest unit that the system keeps.
  // 0 when it cannot be looked at.
  static std::int64_t WriteTime(const std::string& path);
  static bool RemoveFile(const std::string& path);

  static bool FileNameOf(const std::string& path, std::string& name, bool withExtension);
  // With its extension; empty when there is none.
  static std::string NameOf(const std::string& path);
  // Empty for a name alone. What lies directly below a root gives the root, separator included.
  static bool DirOf(const std::string& path, std::string& dir);
  // Without the dot; of the file name only.
  static bool ExtensionOf(const std::string& path, std::string& ext);

  // The path with the system's own separators. On Linux a backslash is one of the others, except in
  // the name of a file or folder that is there.
  static std::string WithOwnSeparators(const std::string& path);

  // folder + separator + name; the name alone when the folder is empty. No second separator after
  // one that is there.
  static std::string Join(const std::string& folder, const std::string& name);

  // The system's short (8.3) form of an existing path, at most 1,023 bytes; the path itself where
  // there is none.
  static std::string ShortPath(const std::string& path);

  // The path seen from the current folder, made absolute; an absolute path unchanged. Links are not
  // resolved, and on Linux ".." stays where what it means depends on them.
  static std::string AbsolutePath(const std::string& path);

  // Puts `from` in the place of `to` in one step, so that a reader sees the old file or the new
  // one; `from`'s contents are on the disk before. Both must lie in one folder. On failure both
  // stay as they were.
  static bool ReplaceFileWith(const std::string& from, const std::string& to);
  // The same, but for the disk, which may have the old file or the new one until SyncFolderOf.
  // `from` is on the disk already, as far as the caller needs that.
  static bool MoveFileOver(const std::string& from, const std::string& to);
  // That the file has this name is on the disk. Waits for it.
  static void SyncFolderOf(const std::string& path);

  // The file gets a second name on its file system, where that has such. False when something is
  // called so.
  static bool GiveSecondName(const std::string& path, const std::string& name);

  // Writes the text to a temporary file beside `path` and puts it in place (ReplaceFileWith).
  // The old file stays when anything fails or when it is read-only, and keeps its rights. Through a
  // link the file that it leads to is written. `why` gets the system's words for a failure; empty
  // when it has none.
  static bool WriteFileWhole(const std::string& path, const std::string& contents,
                             std::string* why = nullptr);

  // The same in a folder where other programs and people put files: a link is replaced, what it
  // leads to stays as it is.
  static bool WriteOutputFile(const std::string& path, const std::string& contents);

  // Removes the temporary files that killed processes have left in WriteFileWhole(path) and, as
  // they lie in the same folder, of other files there.
  static void RemoveLeftTempFiles(const std::string& path);

  // Makes a new file in the place of an old one, for this user alone where files have rights of
  // their own. Neither in one step nor flushed: for working copies.
  static bool WritePrivateFile(const std::string& path, const std::string& contents);

  // The path of the running program's executable file.
  static std::string ProgramPath();
};

#endif
