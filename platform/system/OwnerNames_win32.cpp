#include <fmt/format.h>

#include <memory>

#include "platform/system/OwnerNames.h"
#include "platform/system/Win32_win32.h"
#include "platform/text/Text.h"

// Must follow windows.h, which they need.
#include <aclapi.h>
#include <sddl.h>

namespace Vantrel {

using namespace Win32;

namespace {

struct TLocalFree {
  void operator()(void* pMemory) const { LocalFree(pMemory); }
};

std::u16string AccountName(PSID pSid) {
  wchar_t name[256];
  wchar_t domain[256];
  DWORD nameLength = static_cast<DWORD>(std::size(name));
  DWORD domainLength = static_cast<DWORD>(std::size(domain));
  SID_NAME_USE use{};
  if (!LookupAccountSidW(nullptr, pSid, name, &nameLength, domain, &domainLength, &use)) return {};
  std::u16string result(Narrow(domain, domainLength));
  if (!result.empty()) result += u'\\';
  return result += Narrow(name, nameLength);
}

std::u16string SidText(PSID pSid) {
  wchar_t* text = nullptr;
  if (!ConvertSidToStringSidW(pSid, &text)) return {};
  std::unique_ptr<wchar_t, TLocalFree> owned(text);
  return std::u16string(Narrow(text));
}

}  // namespace

std::u16string OwnerNameOfUser(uint32_t pUserId) {
  return FromUtf8(fmt::format_int(pUserId).str());
}

std::u16string OwnerNameOfPath(const std::u16string& pPath) {
  std::u16string path = ExtendedPath(pPath);
  PSID owner = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (GetNamedSecurityInfoW(const_cast<wchar_t*>(Wide(path)), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner,
                            nullptr, nullptr, nullptr, &descriptor) != ERROR_SUCCESS)
    return {};
  std::unique_ptr<void, TLocalFree> owned(descriptor);
  if (owner == nullptr) return {};
  std::u16string name = AccountName(owner);
  return name.empty() ? SidText(owner) : name;
}

}  // namespace Vantrel
