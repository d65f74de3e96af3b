#pragma once

// The kinds of storage that can be scanned, their properties, and the list of all kinds.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/roots/RootInterfaces.h"
#include "platform/files/ByteStreams.h"
#include "platform/system/Errors.h"

namespace Vantrel {

// The context of everything that a storage opens.
struct TScanContext {
  TRef<ICancellationIndicator> fCancellation;  // nullptr: cannot be cancelled
  THierarchicalEnumeratorOptions fOptions = 0;
  bool fIsWholeTree = true;  // false for the refresh of a branch
  // Called now and then while the storage reads what it needs before the first folder. Empty: not wanted.
  std::function<void(int64_t pDone, int64_t pAll)> fOnPrepare{};
};

// No known kind of storage serves the path. The text names the known kinds.
class EUnknownProtocol : public EException {
 public:
  using EException::EException;
};

// What a storage tells of an open file. Two files with the same volume and id are one file under two names.
struct TStoredFileFacts {
  uint64_t fVolume = 0;
  uint64_t fId = 0;  // 0 in both parts: not known
  uint64_t fIdHigh = 0;
  int64_t fSize = 0;
  TKivFileTime fLastChange{};
  // Of anything: contents, names, rights. Programs cannot choose it. Not set: not known.
  TKivFileTime fStatusChange{};

  bool HasId() const { return fId != 0 || fIdHigh != 0; }
  bool operator==(const TStoredFileFacts&) const = default;
};

// An open file of a storage. For one thread at a time.
class IStoredFile : public IByteSource {
 public:
  // As the file is now, not as a listing had it. EOSError.
  virtual TStoredFileFacts GetFacts() = 0;
};

// A kind of storage: local files, a loaded scan file, an image of a volume. Only it asks the system about its paths.
// Its paths are those of its roots, as AbsolutePath returns them. Any thread.
class IStorage : public IInterface {
 public:
  // The prefix of its paths, in lower case and with the colon: "file:".
  virtual std::u16string_view GetProtocol() const = 0;
  virtual char16_t GetPathDelimiter() const = 0;
  // The root's path for a path as typed, with or without the protocol. Empty when the typed path is impossible.
  virtual std::u16string AbsolutePath(std::u16string_view pTyped) const = 0;
  virtual bool Exists(const std::u16string& pPath) const = 0;
  // Creates an enumerator of a folder's contents, before its first entry. If the path cannot be opened, the enumerator
  // lists nothing and reports the error.
  virtual TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string& pPath,
                                                         const TScanContext& pContext) const = 0;
  virtual TStorageInformation GetInformation(const std::u16string& pPath) const = 0;
  // The text for an error code from one of its enumerators, in UTF-8, without a full stop.
  virtual std::string ErrorText(uint32_t pCode) const = 0;
  // Opens a file for reading from its start. EOSError when it cannot be opened; reading throws the same.
  virtual std::unique_ptr<IStoredFile> OpenFile(const std::u16string& pPath, const TScanContext& pContext) const = 0;
  // What the open file would tell of itself, without reading it. Nothing for what is no ordinary file, or if the
  // storage cannot tell.
  virtual std::optional<TStoredFileFacts> QueryFacts(const std::u16string&) const { return {}; }
  // Whether reading here and there is much slower than reading on, as on a disk that rotates. False if not known.
  virtual bool HasSeekPenalty(const std::u16string&) const { return false; }
  // A number that is larger for files that lie further on in the same volume. Nothing if not known.
  virtual std::optional<uint64_t> PlaceOnDisk(const std::u16string&) const { return {}; }
};

// The kinds of storage that the program knows. Any thread.
class IStorages : public IInterface {
 public:
  // The kind of storage for a path as typed: the one whose protocol begins the path, else local files. EUnknownProtocol
  // for an unknown protocol, unless a local file has that name.
  virtual TRef<IStorage> FindForPath(std::u16string_view pTyped) const = 0;
};

}  // namespace Vantrel
