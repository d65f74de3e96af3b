#include "platform/files/Folders.h"

#include "platform/files/Paths.h"

namespace Vantrel {

void CreateFolderOf(const std::u16string& pFile, TFolderAccess pAccess) {
  CreateFolders(std::u16string(FolderOfPath(pFile, NativePathDelimiter())), pAccess);
}

TTemporaryFiles::~TTemporaryFiles() {
  for (const std::u16string& file : fFiles) RemoveQuietly(file);
  RemoveQuietly(fFolder);
}

std::u16string TTemporaryFiles::Add(std::u16string_view pName) {
  return fFiles.emplace_back(JoinPath(fFolder, pName, NativePathDelimiter()));
}

}  // namespace Vantrel
