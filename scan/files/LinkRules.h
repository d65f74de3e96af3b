#pragma once

// Pure decisions: whether a link is followed, what an error is, the allocated size, attributes.

#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <string_view>

#include "model/tree/HierarchicalInterfaces.h"
#include "scan/storage/EnumeratorBase.h"

// The decisions about an entry that need no file system: they take facts and give an answer, the same on every
// platform.
namespace Vantrel::Enumerators {

// ---- Links

enum class TLinkKind : uint8_t { lkSymbolicLink, lkMountPoint };

enum class TLinkDecision : uint8_t {
  ldOrdinary,     // no link after all: the reparse attribute goes, the entry is entered like any other
  ldNotFollowed,  // listed, not entered
  ldFollowed      // entered
};

// The root that the path begins with: "C:\", "\\server\share\", "/". A relative path gives its first part.
std::u16string_view RootOfPath(std::u16string_view pPath, char16_t pDelimiter);

// Whether one of the paths is the other or lies beneath it. Nothing is related to an empty path.
bool AreRelatedPaths(std::u16string_view pA, std::u16string_view pB, char16_t pDelimiter);

// The link's target as a rooted path: a relative one counts from the link's folder; "." and ".." are resolved by text.
// Empty for an empty target.
std::u16string RootedLinkTarget(std::u16string_view pLinkPath, std::u16string_view pTarget, char16_t pDelimiter);

// Whether a link leads to data that the scan of pRootPath does not reach anyway: its target, made rooted as above, must
// be related neither to the scanned root nor to the link's own folder. So a link cannot make a scan count data twice or
// run in circles. The caller resolves all links in the three paths, but for the link itself.
bool FollowLink(std::u16string_view pLinkPath, std::u16string_view pTarget, std::u16string_view pRootPath,
                char16_t pDelimiter);

// Whether the options allow links of this kind to be followed at all.
bool IsFollowingEnabled(TLinkKind pKind, THierarchicalEnumeratorOptions pOptions);

// What becomes of a link whose destination could not be found out. pError is the classified form of pErrorCode. Where
// the settings have to decide, a line in the debug log says so.
TLinkDecision DecideUnresolvedLink(std::u16string_view pLinkPath, TLinkKind pKind, uint32_t pErrorCode,
                                   TEnumeratorError pError, THierarchicalEnumeratorOptions pOptions);

// ---- Errors

// Codes of Windows for a server that does not answer; a network that comes and goes gives them for folders that exist.
constexpr uint32_t kErrorRpcServerUnavailable = 1722;
constexpr uint32_t kErrorInvalidNetworkAddress = 1707;

// How an error counts on the root. The retry check is only asked for the two network errors: whether the folder answers
// after all. It may be empty, which means no.
TEnumeratorError ClassifyEnumeratorError(uint32_t pErrorCode, const std::function<bool()>& pRetryCheck);

// ---- Sizes and attributes

// Marks an allocated size that has not been worked out for the current entry.
constexpr int64_t kAllocatedUnknown = std::numeric_limits<int64_t>::min();

struct TAllocationFacts {
  bool fIsFolder = false;
  int64_t fRecordAllocation = 0;  // bytes, from the directory record
  int64_t fClusterSize = 0;       // bytes; 0 where data is never kept inside the file record, or when unknown
  bool fSharesHardLinks = false;  // the next two count
  int64_t fADSSize = 0;           // bytes of the alternate data streams
  uint32_t fNumberOfHardLinks = 1;
};

// Bytes on storage of one entry. A folder has none. Less than a cluster means that the data lies inside the file
// record. With shared hard links each link carries an equal share, cut to whole bytes, so that the links of a file add
// up to it once, less the few bytes that were cut.
int64_t AllocatedSizeOf(const TAllocationFacts& pFacts);

// The attributes as the program shows them: the integrity-stream bit says nothing about the file and goes; a file that
// would be fetched from elsewhere when read counts as offline.
TAttributes AdjustedAttributes(TAttributes pAttributes);

}  // namespace Vantrel::Enumerators
