#pragma once

// Rules for entries, as pure functions: which links are followed, how errors count, allocated sizes, attributes.

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <string_view>

#include "model/tree/HierarchicalInterfaces.h"
#include "scan/storage/EnumeratorBase.h"

// Decisions about an entry that need no file system. They take facts and give the same answer on every platform.
namespace Vantrel::Enumerators {

// ---- Links

// Whether a reparse tag marks a file or folder of a cloud storage.
bool IsCloudTag(uint32_t pTag);
// Whether a reparse tag marks another name: a symbolic link, a junction, a mounted volume. Cloud placeholders and
// compressed files carry other tags.
bool IsNameSurrogate(uint32_t pTag);

enum class TLinkKind : uint8_t { lkSymbolicLink, lkMountPoint };

enum class TLinkDecision : uint8_t {
  ldOrdinary,     // not a link: the reparse attribute is removed and the entry is treated like any other
  ldNotFollowed,  // listed, not entered
  ldFollowed      // entered
};

// The root that the path begins with: "C:\", "\\server\share\", "/". For a relative path, its first part.
std::u16string_view RootOfPath(std::u16string_view pPath, char16_t pDelimiter);

// Whether one path equals the other or lies beneath it. An empty path is related to none.
bool AreRelatedPaths(std::u16string_view pA, std::u16string_view pB, char16_t pDelimiter);

// The link's target as a rooted path. A relative target starts at the link's folder. "." and ".." are resolved by text
// only. Empty for an empty target.
std::u16string RootedLinkTarget(std::u16string_view pLinkPath, std::u16string_view pTarget, char16_t pDelimiter);

// Whether a link leads to data that the scan of pRootPath does not reach otherwise. The target must be rooted as by
// RootedLinkTarget. It must not be related to the scanned root or to the link's own folder. So no link makes a scan
// count data twice or run in circles. The caller resolves all links in the three paths, except the link itself.
bool FollowLink(std::u16string_view pLinkPath, std::u16string_view pTarget, std::u16string_view pRootPath,
                char16_t pDelimiter);

// Whether the options allow links of this kind to be followed.
bool IsFollowingEnabled(TLinkKind pKind, THierarchicalEnumeratorOptions pOptions);

// Decides about a link whose target could not be found. pError is the class of pErrorCode. If the settings decide, a
// line is written to the debug log.
TLinkDecision DecideUnresolvedLink(std::u16string_view pLinkPath, TLinkKind pKind, uint32_t pErrorCode,
                                   TEnumeratorError pError, THierarchicalEnumeratorOptions pOptions);

// ---- Errors

// Windows error codes for a server that does not answer. An unstable network returns them for folders that exist.
constexpr uint32_t kErrorRpcServerUnavailable = 1722;
constexpr uint32_t kErrorInvalidNetworkAddress = 1707;

// How an error counts on the root. pRetryCheck is called only for the two network errors, and tells whether the folder
// answers after all. An empty function means no.
TEnumeratorError ClassifyEnumeratorError(uint32_t pErrorCode, const std::function<bool()>& pRetryCheck);

// ---- Sizes and attributes

// Marks an allocated size that has not been computed for the current entry.
constexpr int64_t kAllocatedUnknown = std::numeric_limits<int64_t>::min();

struct TAllocationFacts {
  bool fIsFolder = false;
  int64_t fRecordAllocation = 0;  // bytes, from the directory record
  int64_t fClusterSize = 0;       // bytes; 0 if unknown, or if data is never kept inside the file record
  bool fSharesHardLinks = false;  // whether the next two fields count
  int64_t fADSSize = 0;           // bytes of the alternate data streams
  uint32_t fNumberOfHardLinks = 1;
};

// The bytes that one entry takes on the storage. A folder takes none. An allocation below one cluster means that the
// data lies inside the file record. With shared hard links each link gets an equal share, cut to whole bytes. So the
// links of a file add up to its size once, less the few bytes cut.
int64_t AllocatedSizeOf(const TAllocationFacts& pFacts);

// The attributes as the program shows them. The integrity-stream bit is removed, since it says nothing about the file.
// A file that is fetched from elsewhere on reading counts as offline.
TAttributes AdjustedAttributes(TAttributes pAttributes);

}  // namespace Vantrel::Enumerators
