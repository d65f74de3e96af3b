#include <memory>

#include "platform/files/Paths.h"
#include "platform/system/Win32_win32.h"
#include "platform/text/Text.h"

namespace Vantrel {

using namespace Win32;

namespace {

constexpr std::u16string_view kPrefix = u"\\\\?\\";
constexpr std::u16string_view kUncPrefix = u"\\\\?\\UNC\\";

struct TCloseHandle {
  using pointer = HANDLE;
  void operator()(HANDLE pHandle) const { CloseHandle(pHandle); }
};

// Calls pAsk with a buffer and its length until the text fits. pAsk answers as the system does: the length of the text
// without its zero, the needed length with the zero when the buffer is too short, or 0.
template <class TAsk>
std::u16string AskForText(TAsk pAsk) {
  std::u16string buffer(MAX_PATH, 0);
  for (;;) {
    const DWORD length = pAsk(reinterpret_cast<wchar_t*>(buffer.data()), static_cast<DWORD>(buffer.size()));
    const bool fits = length < buffer.size();
    buffer.resize(fits ? length : length + 1);  // some calls leave out the zero
    if (fits) return buffer;
  }
}

}  // namespace

namespace Win32 {

std::u16string ExtendedPath(std::u16string_view pPath) {
  if (pPath.starts_with(kPrefix) || pPath.starts_with(u"\\\\.\\") || !IsRootedPath(pPath, u'\\'))
    return std::u16string(pPath);
  const std::u16string absolute = AbsolutePath(pPath);
  if (absolute.starts_with(u"\\\\")) return std::u16string(kUncPrefix).append(absolute, 2);
  return std::u16string(kPrefix) + absolute;
}

std::u16string WithoutExtendedPrefix(std::u16string_view pPath) {
  if (pPath.starts_with(kUncPrefix)) return u"\\\\" + std::u16string(pPath.substr(kUncPrefix.size()));
  // "\\?\Volume{…}\" has no other form.
  const bool drive = pPath.starts_with(kPrefix) && pPath.size() > 5 && pPath[5] == u':';
  return std::u16string(pPath.substr(drive ? kPrefix.size() : 0));
}

}  // namespace Win32

char16_t NativePathDelimiter() {
  return u'\\';
}

std::u16string AbsolutePath(std::u16string_view pPath) {
  if (pPath.empty()) return {};
  // After this prefix every character is part of a name, including "." and "/".
  if (pPath.starts_with(kPrefix)) return std::u16string(WithoutTrailingDelimiter(pPath, u'\\'));
  const std::u16string path(pPath);
  const std::u16string absolute = AskForText(
      [&](wchar_t* pBuffer, DWORD pLength) { return GetFullPathNameW(Wide(path), pLength, pBuffer, nullptr); });
  return std::u16string(WithoutTrailingDelimiter(absolute, u'\\'));
}

std::u16string ResolvedPath(const std::u16string& pPath) {
  const std::u16string path = ExtendedPath(AbsolutePath(pPath));
  if (path.empty()) return {};
  const HANDLE opened =
      CreateFileW(Wide(path), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (opened == INVALID_HANDLE_VALUE) return {};
  std::unique_ptr<HANDLE, TCloseHandle> file(opened);
  return WithoutExtendedPrefix(AskForText([&](wchar_t* pBuffer, DWORD pLength) {
    return GetFinalPathNameByHandleW(file.get(), pBuffer, pLength, FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
  }));
}

}  // namespace Vantrel
