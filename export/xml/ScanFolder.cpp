#include "export/xml/ScanFolder.h"

#include "export/xml/ScanFileElements.h"
#include "export/xml/XMLParser.h"
#include "export/xml/ZipFile.h"
#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"

namespace Vantrel::XML {

namespace {

// Thrown at the first folder of the tree, to end the reading.
class EHeaderEnds : public EException {
 public:
  EHeaderEnds() : EException("") {}
};

class THeaderHandler : public IXMLHandler {
 public:
  void StartElement(std::u16string_view pName, TXMLAttributeSpan pAttributes) override {
    fElement = ElementOf(pName);
    if (fElement == TScanFileElement::elFolder) throw EHeaderEnds();
    fEscaped = TXMLUtils::GetValueFromAttributeByQName(pAttributes, TXMLUtils::kEscapedSuffix, {});
    fText.clear();
  }

  void Characters(std::u16string_view pText) override { fText = pText; }

  void EndElement(std::u16string_view) override {
    using enum TScanFileElement;
    const TXMLAttribute escaped{TXMLUtils::kEscapedSuffix, fEscaped};
    const size_t attributes = fEscaped.empty() ? 0 : 1;
    if (fElement == elPath) fPath = TXMLUtils::HtmlDecode(TXMLUtils::ExactText({&escaped, attributes}, fText));
    if (fElement == elDateISO) TryParseIso(ToUtf8(TXMLUtils::Trimmed(fText)), fDate);
    if (fElement == elTerminated || fElement == elIsCompared) fIsWhole &= TXMLUtils::Trimmed(fText) == u"0";
    if (fElement == elIsFullExport) fIsWhole &= TXMLUtils::Trimmed(fText) != u"0";
    fElement = elUnknown;
  }

  std::u16string fPath;
  TKivFileTime fDate;
  bool fIsWhole = true;

 private:
  TScanFileElement fElement = TScanFileElement::elUnknown;
  std::u16string fText;
  std::u16string fEscaped;  // the exact text, when an attribute holds it
};

// The header of a scan file, as far as it could be read.
THeaderHandler HeaderOf(const std::u16string& pFile) {
  THeaderHandler header;
  try {
    TXMLParser(header).Parse(*Zip::OpenXMLSource(pFile));
  } catch (const EHeaderEnds&) {
    return header;
  } catch (const EException&) {
  }
  header.fIsWhole = false;  // it has no tree
  return header;
}

}  // namespace

std::u16string NewestScanInFolder(const std::u16string& pFolder, const std::u16string& pPath, TKivFileTime pBefore) {
  std::u16string newest;
  TKivFileTime newestDate;
  for (const std::u16string& name : NamesIn(pFolder)) {
    if (!HasExtension(name, u".xml") && !HasExtension(name, u".zip")) continue;
    const std::u16string file = JoinPath(pFolder, name, NativePathDelimiter());
    if (SpecialFileExists(file)) continue;
    const THeaderHandler header = HeaderOf(file);
    const bool isEarlier = newestDate < header.fDate && header.fDate < pBefore;
    if (!header.fIsWhole || !isEarlier || !SamePath(header.fPath, pPath, NativePathDelimiter())) continue;
    newest = file;
    newestDate = header.fDate;
  }
  return newest;
}

}  // namespace Vantrel::XML
