#include "scan/files/LinkRules.h"

#include "platform/files/Paths.h"
#include "platform/system/DebugLog.h"
#include "platform/system/Errors.h"

namespace Vantrel::Enumerators {
namespace {

bool IsDelimiter(char16_t pChar, char16_t pDelimiter) {
  return pChar == pDelimiter || (pDelimiter == u'\\' && pChar == u'/');
}

// Appends the parts of pRest to pBase. ".." goes one part up, but never above the root.
std::u16string ResolveParts(std::u16string pBase, std::u16string_view pRest, char16_t pDelimiter) {
  size_t begin = 0;
  while (begin < pRest.size()) {
    size_t end = begin;
    while (end < pRest.size() && !IsDelimiter(pRest[end], pDelimiter)) ++end;
    std::u16string_view part = pRest.substr(begin, end - begin);
    begin = end + 1;
    if (part.empty() || part == u".") continue;
    if (part != u"..") {
      pBase = JoinPath(pBase, part, pDelimiter);
    } else if (std::u16string_view folder = FolderOfPath(pBase, pDelimiter); !folder.empty()) {
      pBase = std::u16string(folder);
    }
  }
  return pBase;
}

void AppendBoolean(std::u16string& pText, bool pValue) {
  pText += pValue ? u"True" : u"False";
}

void LogUnresolvedLink(std::u16string_view pLinkPath, uint32_t pErrorCode, THierarchicalEnumeratorOptions pOptions) {
  if (!IsDebugLogActive()) return;
  std::u16string line = u"Link destination for ";
  line += pLinkPath;
  line += u" could not be resolved with ErrorCode ";
  for (char digit : std::to_string(pErrorCode)) line += static_cast<char16_t>(digit);
  line += u". Basing decision on settings (";
  AppendBoolean(line, IsFollowingEnabled(TLinkKind::lkSymbolicLink, pOptions));
  line += u", ";
  AppendBoolean(line, IsFollowingEnabled(TLinkKind::lkMountPoint, pOptions));
  line += u")";
  LogDebug(line);
}

}  // namespace

bool IsCloudTag(uint32_t pTag) {
  return (pTag & 0x9000001A) == 0x9000001A && (pTag & ~0x9000F01AU) == 0;
}

bool IsNameSurrogate(uint32_t pTag) {
  return (pTag & 0x2000'0000) != 0;
}

std::u16string_view RootOfPath(std::u16string_view pPath, char16_t pDelimiter) {
  for (;;) {
    std::u16string_view folder = FolderOfPath(pPath, pDelimiter);
    if (folder.empty() || folder.size() >= pPath.size()) return pPath;
    pPath = folder;
  }
}

bool AreRelatedPaths(std::u16string_view pA, std::u16string_view pB, char16_t pDelimiter) {
  if (pA.empty() || pB.empty()) return false;
  return IsSameOrInside(pA, pB, pDelimiter) || IsSameOrInside(pB, pA, pDelimiter);
}

std::u16string RootedLinkTarget(std::u16string_view pLinkPath, std::u16string_view pTarget, char16_t pDelimiter) {
  if (pTarget.empty()) return {};
  if (IsRootedPath(pTarget, pDelimiter)) {
    std::u16string_view root = RootOfPath(pTarget, pDelimiter);
    return ResolveParts(std::u16string(root), pTarget.substr(root.size()), pDelimiter);
  }
  // "\x" on Windows means the root of the link's own volume.
  std::u16string_view base = IsDelimiter(pTarget.front(), pDelimiter) ? RootOfPath(pLinkPath, pDelimiter)
                                                                      : FolderOfPath(pLinkPath, pDelimiter);
  return ResolveParts(std::u16string(base), pTarget, pDelimiter);
}

bool FollowLink(std::u16string_view pLinkPath, std::u16string_view pTarget, std::u16string_view pRootPath,
                char16_t pDelimiter) {
  std::u16string target = RootedLinkTarget(pLinkPath, pTarget, pDelimiter);
  return !target.empty() && !AreRelatedPaths(target, pRootPath, pDelimiter) &&
         !AreRelatedPaths(target, FolderOfPath(pLinkPath, pDelimiter), pDelimiter);
}

bool IsFollowingEnabled(TLinkKind pKind, THierarchicalEnumeratorOptions pOptions) {
  return (pOptions & (pKind == TLinkKind::lkSymbolicLink ? heoFollowSymbolicLinks : heoFollowMountPoints)) != 0;
}

TLinkDecision DecideUnresolvedLink(std::u16string_view pLinkPath, TLinkKind pKind, uint32_t pErrorCode,
                                   TEnumeratorError pError, THierarchicalEnumeratorOptions pOptions) {
  if (pError == TEnumeratorError::eeOk) return TLinkDecision::ldOrdinary;
  if (pError == TEnumeratorError::eeAccessDenied) return TLinkDecision::ldNotFollowed;
  LogUnresolvedLink(pLinkPath, pErrorCode, pOptions);
  return IsFollowingEnabled(pKind, pOptions) ? TLinkDecision::ldFollowed : TLinkDecision::ldNotFollowed;
}

TEnumeratorError ClassifyEnumeratorError(uint32_t pErrorCode, const std::function<bool()>& pRetryCheck) {
  if (pErrorCode == 0) return TEnumeratorError::eeOk;
  if ((pErrorCode == kErrorRpcServerUnavailable || pErrorCode == kErrorInvalidNetworkAddress) && pRetryCheck &&
      pRetryCheck())
    return TEnumeratorError::eeOk;
  return ClassifyOSError(pErrorCode) == TErrorKind::ekAccessDenied ? TEnumeratorError::eeAccessDenied
                                                                   : TEnumeratorError::eeOther;
}

int64_t AllocatedSizeOf(const TAllocationFacts& pFacts) {
  if (pFacts.fIsFolder) return 0;
  int64_t allocated = pFacts.fRecordAllocation;
  if (allocated > 0 && allocated < pFacts.fClusterSize) allocated = 0;
  if (!pFacts.fSharesHardLinks) return allocated;
  allocated += pFacts.fADSSize;
  return pFacts.fNumberOfHardLinks >= 2 ? allocated / pFacts.fNumberOfHardLinks : allocated;
}

TAttributes AdjustedAttributes(TAttributes pAttributes) {
  pAttributes &= ~kAttributeIntegrityStream;
  if ((pAttributes & kAttributeRecallOnDataAccess) != 0) pAttributes |= kAttributeOffline;
  return pAttributes;
}

}  // namespace Vantrel::Enumerators
