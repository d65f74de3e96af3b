#pragma once

// Loads scan files into the list of roots, and reads the protocols in front of paths.

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "export/xml/XMLParser.h"
#include "model/roots/RootInterfaces.h"

namespace Vantrel::XML {

// Reports a scan file that cannot be loaded. The text names the file and, if one is to blame, the line.
class EScanFileError : public EException {
 public:
  using EException::EException;
};

// Called from time to time with the number of bytes read of a file. A result of false cancels.
using TLoadProgress = std::function<bool(const std::u16string& pPath, uint64_t pBytesRead)>;

// What a file is read for. A file read for comparison must hold its whole tree and must not be a comparison itself.
enum class TPurpose : uint8_t { puShow, puCompare };

// The result of reading a file: a root with notes for the user, or the reason why there is none.
struct TLoadedRoot {
  TRef<IHierarchicalRoot> fRoot;
  std::vector<std::string> fNotes;
  std::string fError;  // set only by LoadFromFile, and only without a root
};

// The states in scan files, which are properties of the folder. The other states are for a running program and are not
// saved.
constexpr TFolderStates kFolderStatesInFiles =
    fsSubFolderScanningFinished | fsContainsLongPaths | fsDetectedDuringRefresh | fsIsRoot;

// Reads XML scan files, also packed ones. docs/xml-scan-file.md describes them. Any thread.
class TQZXMLReader {
 public:
  // Reads several files of any kind that Opening::ReadScanFile knows, each on its own. A root is added to the list as
  // soon as it is read. If a file cannot be read, or the list has no room for it, its result holds an error. When
  // cancelled, returns what has been read so far.
  static std::vector<TLoadedRoot> LoadFromFile(std::span<const std::u16string> pFileNames, IScanRoots& pTarget,
                                               const TLoadProgress& pProgress = {});
  // The same for a text of file names in the form of SplitFileNames.
  static std::vector<TLoadedRoot> LoadFromFile(std::u16string_view pFileNames, IScanRoots& pTarget,
                                               const TLoadProgress& pProgress = {});
  // Reads one file and does not add the root to the list. When cancelled, returns no root and no notes.
  static TLoadedRoot ReadRootFromXMLFile(const std::u16string& pPath, IScanRoots& pTarget,
                                         const TLoadProgress& pProgress = {}, TPurpose pPurpose = TPurpose::puShow);
  // The same for any source of the document's bytes. EXMLError when the document is wrong.
  static TLoadedRoot ReadRoot(IByteSource& pSource, const std::u16string& pName, IScanRoots& pTarget,
                              const Vantrel::XML::TXMLProgress& pProgress = {}, TPurpose pPurpose = TPurpose::puShow);
};

// The file names in a text, separated by ";". A name that begins with '"' ends at the next '"' and may hold ";". In it,
// '""' stands for one quote. Other quotes are part of the name, and so is a first one without a second.
std::vector<std::u16string> SplitFileNames(std::u16string_view pFileNames);

// The protocol in front of a root's path tells its storage: "file:", "webdav:", "vdisk:" or none.
class TXMLParseHelper {
 public:
  enum class TProtocol : uint8_t { prNone, prFile, prWebDav, prVirtualDisk };
  // Removes "file:" from the path. Other protocols stay in it, because they distinguish paths of different storages.
  static TProtocol ParseXMLProtocol(std::u16string_view& pPath);
  static std::u16string_view BuildProtocolString(TProtocol pProtocol);
};

}  // namespace Vantrel::XML
