#include <algorithm>
#include <string_view>
#include <vector>

#include "platform/files/OutputFile.h"
#include "platform/files/Paths.h"
#include "platform/system/Errors.h"
#include "platform/system/Win32_win32.h"

namespace Vantrel {

using namespace Win32;

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE OpenExisting(const std::u16string& pPath) {
  return CreateFileW(Wide(pPath), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr);
}

bool IsPossibleName(std::u16string_view pName) {
  constexpr size_t kLongestName = 255;
  return pName.size() <= kLongestName && std::none_of(pName.begin(), pName.end(), [](char16_t pUnit) {
           return pUnit < u' ' || std::u16string_view(u"<>:\"/\\|?*").find(pUnit) != std::u16string_view::npos;
         });
}

// Copies the earlier file's access list and attributes, as far as the process may set them. ReplaceFileW would do the
// same, but when it fails half way the target is gone.
void CopyPermissions(const std::u16string& pFrom, const std::u16string& pTo) {
  DWORD size = 0;
  GetFileSecurityW(Wide(pFrom), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
  std::vector<char> descriptor(size);
  if (size > 0 && GetFileSecurityW(Wide(pFrom), DACL_SECURITY_INFORMATION, descriptor.data(), size, &size))
    SetFileSecurityW(Wide(pTo), DACL_SECURITY_INFORMATION, descriptor.data());
  const DWORD attributes = GetFileAttributesW(Wide(pFrom));
  constexpr DWORD kKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & kKept) != 0)
    SetFileAttributesW(Wide(pTo), attributes & kKept);
}

// A handle of its own to the standard output, nullptr when there is none.
HANDLE OwnStandardOutput() {
  HANDLE own = nullptr;
  if (!DuplicateHandle(GetCurrentProcess(), GetStdHandle(STD_OUTPUT_HANDLE), GetCurrentProcess(), &own, 0, FALSE,
                       DUPLICATE_SAME_ACCESS))
    return nullptr;
  return own;
}

[[noreturn]] void Fail(DWORD pCode, std::string_view pOperation, const std::u16string& pPath) {
  throw EOSError(pCode, pOperation, pPath);
}

// Creates the temporary file beside the target, under a name that no other file has. pPath is for messages.
HANDLE CreateTemporary(const std::u16string& pTarget, const std::u16string& pPath, std::u16string& pTemporary) {
  HANDLE file = INVALID_HANDLE_VALUE;
  do {
    pTemporary = JoinPath(FolderOfPath(pTarget, u'\\'), TemporaryName(), u'\\');
    file = CreateFileW(Wide(pTemporary), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
  } while (file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS);
  if (file == INVALID_HANDLE_VALUE) {
    const DWORD code = GetLastError();
    pTemporary.clear();
    Fail(code, "Creating a temporary file beside its target", pPath);
  }
  return file;
}

}  // namespace

void TOutputFile::Open() {
  constexpr DWORD kDirectoryNotSupported = 336;  // newer than the compiler's headers
  const auto fail = [&](DWORD pCode, std::string_view pOperation) { Fail(pCode, pOperation, fPath); };
  if (fPath == kStandardOutput) {
    const HANDLE own = OwnStandardOutput();
    if (own == nullptr) fail(GetLastError(), "Opening a file");
    fTarget = fPath;
    fFile = TFileStream(reinterpret_cast<TFileStream::THandle>(own), fPath);
    return;
  }
  const std::u16string absolute = AbsolutePath(fPath);
  if (absolute.empty() || fPath.find(u'\0') != std::u16string::npos) fail(ERROR_INVALID_NAME, "Creating a file");
  if (fPath.back() == u'\\' || fPath.back() == u'/') fail(kDirectoryNotSupported, "Creating a file");
  fTarget = ExtendedPath(absolute);
  const DWORD attributes = GetFileAttributesW(Wide(fTarget));
  const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
  // Reports an impossible name before the work begins. The temporary name is valid and would not show it.
  if (!exists && !IsPossibleName(FileNameOfPath(absolute, u'\\'))) fail(ERROR_INVALID_NAME, "Creating a file");
  if (exists && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) fail(kDirectoryNotSupported, "Creating a file");
  if (exists && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
    const std::u16string resolved = ResolvedPath(absolute);
    if (!resolved.empty()) fTarget = ExtendedPath(resolved);
  }
  // The absolute path of "NUL", "CON" and pipes has this prefix.
  const bool device = absolute.starts_with(u"\\\\.\\");
  if (exists || device) {
    // Opens the target now so that a refusal shows before the work, not after it.
    const HANDLE earlier = OpenExisting(fTarget);
    if (earlier == INVALID_HANDLE_VALUE) fail(GetLastError(), "Opening a file");
    TFileStream file(reinterpret_cast<TFileStream::THandle>(earlier), fPath);
    if (device || GetFileType(earlier) != FILE_TYPE_DISK) {
      fFile = std::move(file);
      return;
    }
  }
  const HANDLE file = CreateTemporary(fTarget, fPath, fTemporary);
  fFile = TFileStream(reinterpret_cast<TFileStream::THandle>(file), fPath);
  if (exists) CopyPermissions(fTarget, fTemporary);
}

void TOutputFile::Replace() {
  if (!MoveFileExW(Wide(fTemporary), Wide(fTarget), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
    throw EOSError(GetLastError(), "Replacing a file", fPath);
}

void TOutputFile::RemoveTemporary() noexcept {
  if (!fTemporary.empty()) DeleteFileW(Wide(fTemporary));
  fTemporary.clear();
}

}  // namespace Vantrel
