#pragma once

// Opens saved scans of every kind as roots. What a file is, its first bytes say, not its name.

#include <optional>
#include <string>

#include "export/opening/OpenedText.h"
#include "export/opening/PeekedSource.h"
#include "export/xml/XMLReader.h"

namespace Vantrel::Opening {

// What a reader made of a file. Without a root, it was cancelled.
struct TOpenedScan {
  TRef<IHierarchicalRoot> fRoot;
  bool fIsWhole = true;  // the file holds every folder of its scan
  bool fWasStopped = false;
  bool fIsCompared = false;  // it holds what has gone since an earlier scan, which was left out
  bool fLacksFiles = false;  // its folders are larger than what it tells of them
};

// Reads one file: an XML scan file, also packed, JSON, a file of ncdu, a cache file of QDirStat, or the text of du; the
// latter ones also packed by gzip. XML::EScanFileError names the file, the place in it and what is wrong. The root is
// not added to the list. When cancelled, returns no root.
XML::TLoadedRoot ReadScanFile(const std::u16string& pPath, IScanRoots& pTarget,
                              const XML::TLoadProgress& pProgress = {}, XML::TPurpose pPurpose = XML::TPurpose::puShow);
// The same for the source of a document that is not XML. Nothing if its beginning is of no known kind; what was looked
// at can still be read then. EFileError when it is damaged.
std::optional<TOpenedScan> TryReadScan(TPeekedSource& pSource, IScanRoots& pTarget,
                                       const TFileProgress& pProgress = {});

}  // namespace Vantrel::Opening
