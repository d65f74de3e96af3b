#include "platform/Folders.h"

#include "platform/Paths.h"

namespace Kiv {

void CreateFolderOf(const std::u16string& pFile, TFolderAccess pAccess) {
  CreateFolders(std::u16string(FolderOfPath(pFile, NativePathDelimiter())), pAccess);
}

}  // namespace Kiv
