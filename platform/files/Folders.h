#pragma once

// Whether there is a folder or something special; making and removing folders; temporary files.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Vantrel {

// Whether there is anything at the path, or a folder; links are followed.
bool PathExists(const std::u16string& pPath);
bool FolderExists(const std::u16string& pPath);
// Whether there is something else than a file or a folder, such as a device or a pipe.
bool SpecialFileExists(const std::u16string& pPath);
// Who may look into a new folder, on Linux; on Windows it inherits that from the one above.
enum class TFolderAccess : uint8_t { faUsual, faUserAlone };
// Creates the folder, and those above it that are missing. Does nothing for an empty path or for what is there already,
// a file included: who then writes into it gets the failure. EOSError.
void CreateFolders(const std::u16string& pPath, TFolderAccess pAccess = TFolderAccess::faUsual);
// The same for the folder that a file is to lie in.
void CreateFolderOf(const std::u16string& pFile, TFolderAccess pAccess = TFolderAccess::faUsual);
// A new folder for this user alone, in the system's place for temporary files. EOSError.
std::u16string CreateTemporaryFolder();
// Removes a file or an empty folder; what cannot be removed stays.
void RemoveQuietly(const std::u16string& pPath) noexcept;

// Files in a new temporary folder, gone with the object. One thread.
class TTemporaryFiles {
 public:
  TTemporaryFiles() : fFolder(CreateTemporaryFolder()) {}  // EOSError
  ~TTemporaryFiles();
  TTemporaryFiles(const TTemporaryFiles&) = delete;
  TTemporaryFiles& operator=(const TTemporaryFiles&) = delete;

  // The path of the file of this name, which is the caller's to write.
  std::u16string Add(std::u16string_view pName);

 private:
  const std::u16string fFolder;
  std::vector<std::u16string> fFiles;
};

}  // namespace Vantrel
