#pragma once

// Loads an older scan file as the earlier state for a comparison with a root.

#include "export/xml/XMLReader.h"

namespace Vantrel::XML {

// Compares a tree with an older scan file. Any thread.
class TQZXMLCompareReader {
 public:
  // Reads the file as the earlier state of a root, and does not change that root. Returns no root when cancelled. The
  // caller disposes of the result. EScanFileError when the path is empty, or the file cannot be loaded, holds only part
  // of its tree, or is itself a comparison.
  static TRef<IHierarchicalRoot> ReadEarlier(const std::u16string& pPath, IScanRoots& pRoots,
                                             const TLoadProgress& pProgress = {});
  // Makes pEarlier the scan that the root is compared with. The root's lists and exports then show the changes.
  // EScanFileError while the root is being scanned.
  static void AfterCompareRoot(IHierarchicalRoot& pRoot, IHierarchicalRoot& pEarlier);
  // Reads and compares. When cancelled, returns false and leaves the root unchanged.
  static bool CompareWithXMLFile(const std::u16string& pPath, IHierarchicalRoot& pRoot, IScanRoots& pRoots,
                                 const TLoadProgress& pProgress = {});
};

}  // namespace Vantrel::XML
