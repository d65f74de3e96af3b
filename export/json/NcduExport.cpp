#include "export/json/NcduExport.h"

#include <fmt/format.h>

#include <optional>
#include <string_view>

#include "model/tree/CustomFolder.h"
#include "platform/system/Errors.h"
#include "platform/text/Numbers.h"
#include "platform/text/Text.h"

namespace Vantrel::Exporting {

namespace {

// The settings of a walk over everything.
TMediaSettings WholeTree() {
  TMediaSettings settings;
  settings.fIncludedObjectTypes = kAllObjectTypes;
  return settings;
}

constexpr int64_t kMostSeconds = 253'402'300'799;  // the end of the year 9999

// ncdu takes the bytes of names as they are, and control characters as escapes.
void AppendNcduText(std::string& pTarget, std::u16string_view pText) {
  for (const char byte : ToNativeBytes(pText)) {
    const auto code = static_cast<unsigned char>(byte);
    if (byte == '"' || byte == '\\') pTarget += '\\';
    if (code < ' ' || code == 0x7F)
      fmt::format_to(std::back_inserter(pTarget), "\\u{:04x}", code);
    else
      pTarget += byte;
  }
}

int64_t UnixSeconds(TKivFileTime pTime) {
  return (pTime.fTicks - TKivFileTime::kUnixEpoch) / TKivFileTime::kTicksPerSecond;
}

}  // namespace

// Writes items for the whole tree, or for the contents of one of its folders. Each begins with the comma that separates
// it from the one before.
class TNcduExport::TItems final : public TRowWriter {
 public:
  // pExport must outlive this object.
  explicit TItems(const TNcduExport& pExport) : fExport(pExport) {}

  std::unique_ptr<TRowWriter> Branch() const override { return std::make_unique<TItems>(fExport); }

  bool BeginNode(const TTreeRow& pRow, bool pIsComplete) override {
    const TEntryView entry = pRow.View();
    const TSizeValues sizes = entry.GetValues();
    if (pRow.fFolder.IsFileGroup()) {
      // Without the files themselves, one item stands for them.
      if (pIsComplete && sizes.fFiles > 0) WriteItem(entry, sizes, false);
      return true;
    }
    Line() += ",\n[";
    WriteItem(entry, {}, !fExport.ErrorOf(pRow).empty());
    if (!pIsComplete) return true;
    if (sizes.fFiles > 0) WriteItem(entry, sizes, false, TFileGroupData::kName);
    Line() += ']';
    return true;
  }
  bool EndNode(const TTreeRow& pRow) override {
    if (!pRow.fFolder.IsFileGroup()) Line() += ']';
    return true;
  }
  bool VisitFile(const TTreeRow& pRow) override {
    const TEntryView file = pRow.View();
    WriteItem(file, file.GetValues(), false);
    return true;
  }

 private:
  std::string& Line() { return fText.fBytes; }

  void AddNumber(std::string_view pKey, int64_t pNumber) {
    if (pNumber <= 0) return;
    Line() += pKey;
    AppendInteger(Line(), pNumber);
  }

  // An item stands behind the bracket of its folder or behind another item.
  void WriteItem(const TEntryView& pEntry, const TSizeValues& pSizes, bool pHasError,
                 std::optional<std::u16string_view> pName = std::nullopt) {
    std::string& text = Line();
    text += text.ends_with('[') ? "{\"name\":\"" : ",\n{\"name\":\"";
    AppendNcduText(text, pName.value_or(pEntry.GetObjectName()));
    text += '"';
    AddNumber(",\"asize\":", pSizes.fSize);
    AddNumber(",\"dsize\":", pSizes.fAllocated);
    const int64_t seconds = UnixSeconds(pEntry.GetLastChangeDate());
    if (seconds <= kMostSeconds) AddNumber(",\"mtime\":", seconds);
    if (!pEntry.IsFolder() && (pEntry.GetAttributes() & (kAttributeReparsePoint | kAttributeDevice)) != 0)
      text += ",\"notreg\":true";
    if (pHasError) text += ",\"read_error\":true";
    text += '}';
  }

  const TNcduExport& fExport;
};

TNcduExport::TNcduExport(std::string pProgramName, std::string pVersion)
    : TBaseExport(WholeTree()), fProgramName(std::move(pProgramName)), fVersion(std::move(pVersion)) {}

void TNcduExport::Export(IHierarchicalRoot& pRoot, IByteSink& pSink) {
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  if (!top) throw EInvalidOperation("TNcduExport.Export: the root has not been scanned");
  ReadErrors(pRoot);
  pSink.Write(fmt::format("[1,2,{{\"progname\":\"{}\",\"progver\":\"{}\",\"timestamp\":{}}}", fProgramName, fVersion,
                          std::max<int64_t>(UnixSeconds(pRoot.GetScanTimeStamp()), 0)));
  TItems items(*this);
  WalkInParallel(*top, items, [&pSink](const TRowText& pText) {
    pSink.Write(pText.fBytes);
    return true;
  });
  pSink.Write("]\n");
  ForgetErrors();
}

}  // namespace Vantrel::Exporting
