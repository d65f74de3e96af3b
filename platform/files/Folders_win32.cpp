#include <vector>

#include "platform/files/Folders.h"
#include "platform/files/OutputFile.h"
#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/system/Win32_win32.h"

namespace Vantrel {

using namespace Win32;

namespace {

DWORD AttributesOf(const std::u16string& pPath) {
  return GetFileAttributesW(Wide(ExtendedPath(AbsolutePath(pPath))));
}

}  // namespace

bool PathExists(const std::u16string& pPath) {
  return !pPath.empty() && AttributesOf(pPath) != INVALID_FILE_ATTRIBUTES;
}

bool FolderExists(const std::u16string& pPath) {
  const DWORD attributes = pPath.empty() ? INVALID_FILE_ATTRIBUTES : AttributesOf(pPath);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Decides by the name, since asking a device or pipe would mean to open it.
bool SpecialFileExists(const std::u16string& pPath) {
  return pPath.starts_with(u"\\\\.\\");
}

std::vector<std::u16string> NamesIn(const std::u16string& pFolder) {
  const std::u16string pattern = JoinPath(ExtendedPath(AbsolutePath(pFolder)), u"*", u'\\');
  std::vector<std::u16string> names;
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW(Wide(pattern), &found);
  if (search == INVALID_HANDLE_VALUE) throw EOSError(GetLastError(), "Listing a folder", pFolder);
  do {
    const std::u16string_view name = Narrow(found.cFileName);
    if (name != u"." && name != u"..") names.emplace_back(name);
  } while (FindNextFileW(search, &found));
  const DWORD code = GetLastError();
  FindClose(search);
  if (code != ERROR_NO_MORE_FILES) throw EOSError(code, "Listing a folder", pFolder);
  return names;
}

void CreateFolders(const std::u16string& pPath, TFolderAccess) {
  if (pPath.empty()) return;
  const std::u16string path = ExtendedPath(AbsolutePath(pPath));
  std::vector<std::u16string> missing;  // from the bottom up
  for (std::u16string folder = path; !folder.empty() && GetFileAttributesW(Wide(folder)) == INVALID_FILE_ATTRIBUTES;
       folder = FolderOfPath(std::u16string(folder), u'\\'))
    missing.push_back(folder);
  for (; !missing.empty(); missing.pop_back()) {
    if (CreateDirectoryW(Wide(missing.back()), nullptr) || GetLastError() == ERROR_ALREADY_EXISTS) continue;
    throw EOSError(GetLastError(), "Creating a folder", pPath);
  }
}

std::u16string CreateTemporaryFolder() {
  wchar_t place[MAX_PATH + 1];
  const DWORD length = GetTempPathW(static_cast<DWORD>(std::size(place)), place);
  if (length == 0) throw EOSError(GetLastError(), "Creating a temporary folder", u"");
  const std::u16string path = JoinPath(Narrow(place, length), u"vantrel-" + TemporaryName(), u'\\');
  if (!CreateDirectoryW(Wide(path), nullptr)) throw EOSError(GetLastError(), "Creating a temporary folder", path);
  return path;
}

void RemoveQuietly(const std::u16string& pPath) noexcept {
  const std::u16string path = ExtendedPath(AbsolutePath(pPath));
  if (!DeleteFileW(Wide(path))) RemoveDirectoryW(Wide(path));
}

}  // namespace Vantrel
