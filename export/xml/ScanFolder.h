#pragma once

// Finds the earlier scan of a path in a folder of scan files.

#include <string>

#include "platform/system/FileTime.h"

namespace Vantrel::XML {

// The newest file in the folder that holds a whole scan of the path, begun before pBefore. Empty when there is none.
// Only names that end in .xml or .zip count. Files that cannot be read, or not be compared with, are passed over. Of
// each file no more is read than stands before its tree. EOSError when the folder cannot be listed. Any thread.
std::u16string NewestScanInFolder(const std::u16string& pFolder, const std::u16string& pPath, TKivFileTime pBefore);

}  // namespace Vantrel::XML
