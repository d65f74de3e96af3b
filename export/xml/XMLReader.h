#pragma once

// Loads scan files into the list of roots; protocols in front of paths.

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "export/xml/XMLParser.h"
#include "model/roots/RootInterfaces.h"

namespace Vantrel::XML {

// A scan file that cannot be loaded; the text names the file, and the line where one is to blame.
class EScanFileError : public EException {
 public:
  using EException::EException;
};

// Told how many bytes of a file have been read, from time to time; false cancels.
using TLoadProgress = std::function<bool(const std::u16string& pPath, uint64_t pBytesRead)>;

// What a file is read for. One that an older state is taken from must hold all of its tree, and no comparison itself.
enum class TPurpose : uint8_t { puShow, puCompare };

// What was read from a file: a root, and what the user should know of it; or why there is none.
struct TLoadedRoot {
  TRef<IHierarchicalRoot> fRoot;
  std::vector<std::string> fNotes;
  std::string fError;  // set by LoadFromFile only, and only without a root
};

// The states of a folder that are properties of it. The others say what a running program does with it, and stand in no
// scan file.
constexpr TFolderStates kFolderStatesInFiles =
    fsSubFolderScanningFinished | fsContainsLongPaths | fsDetectedDuringRefresh | fsIsRoot;

// Reads XML scan files, also packed ones, as docs/xml-scan-file.md describes them. Any thread.
class TQZXMLReader {
 public:
  // Several files. Each is read on its own: its root enters the list as soon as it is read, and a file that cannot be
  // read, or that the list has no room for, gives an error in its place. When cancelled, what has been read so far is
  // returned.
  static std::vector<TLoadedRoot> LoadFromFile(std::span<const std::u16string> pFileNames, IScanRoots& pTarget,
                                               const TLoadProgress& pProgress = {});
  // The same for names as SplitFileNames takes them.
  static std::vector<TLoadedRoot> LoadFromFile(std::u16string_view pFileNames, IScanRoots& pTarget,
                                               const TLoadProgress& pProgress = {});
  // One file; the root is not in the list yet. No root, and no note, when cancelled.
  static TLoadedRoot ReadRootFromXMLFile(const std::u16string& pPath, IScanRoots& pTarget,
                                         const TLoadProgress& pProgress = {}, TPurpose pPurpose = TPurpose::puShow);
  // The same from any source of the document's bytes; EXMLError tells what is wrong with it.
  static TLoadedRoot ReadRoot(IByteSource& pSource, const std::u16string& pName, IScanRoots& pTarget,
                              const Vantrel::XML::TXMLProgress& pProgress = {}, TPurpose pPurpose = TPurpose::puShow);
};

// The names of a list, separated by ";". A name that begins with '"' goes to the next '"' and may hold ";"; '""' in it
// is a quote of the name. Other quotes, and one that has no end, are part of the name.
std::vector<std::u16string> SplitFileNames(std::u16string_view pFileNames);

// What a root's path says of its storage: "file:", "webdav:" or "vdisk:" in front of it, or nothing.
class TXMLParseHelper {
 public:
  enum class TProtocol : uint8_t { prNone, prFile, prWebDav, prVirtualDisk };
  // The path without "file:"; other protocols stay part of it, since they tell paths of different storages apart.
  static TProtocol ParseXMLProtocol(std::u16string_view& pPath);
  static std::u16string_view BuildProtocolString(TProtocol pProtocol);
};

}  // namespace Vantrel::XML
