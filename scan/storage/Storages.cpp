#include "scan/storage/Storages.h"

#include <algorithm>

#include "platform/system/Errors.h"
#include "platform/text/Text.h"
#include "scan/storage/PathNotFoundEnumerator.h"

namespace Vantrel::Storages {

namespace {

bool IsLetter(char16_t pUnit) {
  return (pUnit >= u'a' && pUnit <= u'z') || (pUnit >= u'A' && pUnit <= u'Z');
}

bool IsPartOfProtocol(char16_t pUnit) {
  return IsLetter(pUnit) || (pUnit >= u'0' && pUnit <= u'9') || pUnit == u'+' || pUnit == u'-' || pUnit == u'.';
}

class TStorages : public TInterfaced<IStorages> {
 public:
  explicit TStorages(std::vector<TRef<IStorage>> pKinds) : fKinds(std::move(pKinds)) {}

  TRef<IStorage> FindForPath(std::u16string_view pTyped) const override {
    const std::u16string_view protocol = ProtocolOf(pTyped);
    if (protocol.empty()) return fKinds.front();
    for (const TRef<IStorage>& kind : fKinds)
      if (SameTextAscii(kind->GetProtocol(), protocol)) return kind;
    if (fKinds.front()->Exists(std::u16string(pTyped))) return fKinds.front();
    throw EUnknownProtocol(ToQuotedDisplay(pTyped) + " cannot be scanned: there is no storage " +
                           ToQuotedDisplay(protocol) + ". Known are: " + KnownProtocols() + ".");
  }

 private:
  std::string KnownProtocols() const {
    std::string known;
    for (const TRef<IStorage>& kind : fKinds) known += (known.empty() ? "" : ", ") + ToUtf8(kind->GetProtocol());
    return known;
  }

  const std::vector<TRef<IStorage>> fKinds;
};

// The error code for a path that only the scan file could explain.
constexpr uint32_t kNothingToOpen = 2;

class TLoadedScanStorage : public TInterfaced<IStorage> {
 public:
  explicit TLoadedScanStorage(char16_t pPathDelimiter) : fPathDelimiter(pPathDelimiter) {}

  std::u16string_view GetProtocol() const override { return u""; }
  char16_t GetPathDelimiter() const override { return fPathDelimiter; }
  std::u16string AbsolutePath(std::u16string_view pTyped) const override { return std::u16string(pTyped); }
  bool Exists(const std::u16string&) const override { return false; }
  TRef<IHierarchicalEnumerator> CreateEnumerator(const std::u16string& pPath,
                                                 const TScanContext& pContext) const override {
    return MakeRef<Enumerators::TPathNotFoundEnumerator>(pPath, kNothingToOpen, pContext.fOptions);
  }
  TStorageInformation GetInformation(const std::u16string&) const override { return {}; }
  std::string ErrorText(uint32_t) const override { return "it is part of an opened scan file"; }
  std::unique_ptr<IStoredFile> OpenFile(const std::u16string& pPath, const TScanContext&) const override {
    throw EOSError(kNothingToOpen, "TLoadedScanStorage.OpenFile: a scan file holds no contents", pPath);
  }

 private:
  const char16_t fPathDelimiter;
};

}  // namespace

TRef<IStorages> CreateStorages(std::vector<TRef<IStorage>> pKinds) {
  return MakeRef<TStorages>(std::move(pKinds));
}

TRef<IStorage> CreateLoadedScanStorage(char16_t pPathDelimiter) {
  return MakeRef<TLoadedScanStorage>(pPathDelimiter);
}

std::u16string_view ProtocolOf(std::u16string_view pPath) {
  const size_t colon = pPath.find(u':');
  if (colon == std::u16string_view::npos || colon < 2 || !IsLetter(pPath.front())) return {};
  const std::u16string_view name = pPath.substr(0, colon);
  return std::all_of(name.begin(), name.end(), IsPartOfProtocol) ? pPath.substr(0, colon + 1) : std::u16string_view();
}

}  // namespace Vantrel::Storages
