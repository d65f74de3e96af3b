#pragma once

// The elements of a scan file that have a meaning for the program.

#include <cstdint>
#include <string_view>

namespace Vantrel::XML {

enum class TScanFileElement : uint8_t {
  elUnknown,
  elRoot,
  elPath,
  elTitle,
  elDate,
  elDateISO,
  elFilesystem,
  elBytesPerCluster,
  elTotalBytes,
  elFreeBytes,
  elExcludedObjects,
  elTerminated,
  elIsFullExport,
  elIsCompared,
  elFileAgesDateType,
  elDoCreateFileAges,
  elTopSizeList,
  elTopFile,
  elPatterns,  // of either type
  elPatternList,
  elPattern,
  elFolder,
  elAttributes,
  elOwner,
  elErrorMessage,
  elFolderState,
  elLastAccess,
  elLastChange,
  elCreation,
  elSizeData,
  elExtensionSizeArray,
  elUserSizeArray,
  elItem,
  elFileAges,
};

// The element of a name, in any case of letters. elUnknown for a name that has no meaning.
TScanFileElement ElementOf(std::u16string_view pName);

}  // namespace Vantrel::XML
