#pragma once

// An older scan file as what a root is compared with.

#include "export/xml/XMLReader.h"

namespace Vantrel::XML {

// Compares a tree with an older scan file. Any thread.
class TQZXMLCompareReader {
 public:
  // Reads the file and makes it the root's comparison; the root's lists and exports then show what has changed. Returns
  // false when cancelled. EScanFileError, and the root as it was, when the file cannot be loaded, holds only a part of
  // its tree or a comparison itself, when no path is given, or while the root is being scanned.
  static bool CompareWithXMLFile(const std::u16string& pPath, IHierarchicalRoot& pRoot, IScanRoots& pRoots,
                                 const TLoadProgress& pProgress = {});
};

}  // namespace Vantrel::XML
