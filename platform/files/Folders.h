#pragma once

// Tests whether a folder or a special file exists, creates and removes folders, and makes temporary files.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Vantrel {

// Whether anything exists at the path, and whether a folder does. Links are followed.
bool PathExists(const std::u16string& pPath);
bool FolderExists(const std::u16string& pPath);
// Whether something exists at the path that is neither a file nor a folder, such as a device or a pipe.
bool SpecialFileExists(const std::u16string& pPath);
// The names of what the folder holds, in no order, without "." and "..". EOSError.
std::vector<std::u16string> NamesIn(const std::u16string& pFolder);
// Who may open a new folder on Linux. On Windows the folder inherits its permissions from its parent.
enum class TFolderAccess : uint8_t { faUsual, faUserAlone };
// Creates the folder and its missing parents. Does nothing for an empty path or when the path exists, even as a file: a
// later write into it then fails. EOSError.
void CreateFolders(const std::u16string& pPath, TFolderAccess pAccess = TFolderAccess::faUsual);
// Creates the folder that will hold the file, in the same way.
void CreateFolderOf(const std::u16string& pFile, TFolderAccess pAccess = TFolderAccess::faUsual);
// Creates a folder for this user alone, in the system's place for temporary files. EOSError.
std::u16string CreateTemporaryFolder();
// Removes a file or an empty folder. Does nothing when it cannot be removed.
void RemoveQuietly(const std::u16string& pPath) noexcept;

// Files in a new temporary folder. The destructor removes them and the folder. One thread.
class TTemporaryFiles {
 public:
  TTemporaryFiles() : fFolder(CreateTemporaryFolder()) {}  // EOSError
  ~TTemporaryFiles();
  TTemporaryFiles(const TTemporaryFiles&) = delete;
  TTemporaryFiles& operator=(const TTemporaryFiles&) = delete;

  // The path for a file of this name. The caller writes the file.
  std::u16string Add(std::u16string_view pName);

 private:
  const std::u16string fFolder;
  std::vector<std::u16string> fFiles;
};

}  // namespace Vantrel
