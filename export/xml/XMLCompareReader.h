#pragma once

// An older scan file as what a root is compared with.

#include "export/xml/XMLReader.h"

namespace Vantrel::XML {

// Compares a tree with an older scan file. Any thread.
class TQZXMLCompareReader {
 public:
  // Reads the file as the earlier state of a root, which is not touched; no root when cancelled. The caller disposes
  // it. EScanFileError when the file cannot be loaded, holds only a part of its tree or a comparison itself, or when no
  // path is given.
  static TRef<IHierarchicalRoot> ReadEarlier(const std::u16string& pPath, IScanRoots& pRoots,
                                             const TLoadProgress& pProgress = {});
  // Makes it what the root is compared with; the root's lists and exports then show what has changed. EScanFileError
  // while the root is being scanned.
  static void Compare(IHierarchicalRoot& pRoot, IHierarchicalRoot& pEarlier);
  // Both in one. Returns false, and leaves the root as it was, when cancelled.
  static bool CompareWithXMLFile(const std::u16string& pPath, IHierarchicalRoot& pRoot, IScanRoots& pRoots,
                                 const TLoadProgress& pProgress = {});
};

}  // namespace Vantrel::XML
