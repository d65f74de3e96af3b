#pragma once

// A root and its tree from the events of a scan file.

#include <string>
#include <string_view>
#include <vector>

#include "export/xml/LoadedTopFiles.h"
#include "export/xml/XMLReader.h"
#include "model/roots/Root.h"
#include "model/statistics/AssocSizeArray.h"
#include "model/statistics/FileAges.h"
#include "search/patterns/PatternInterfaces.h"

namespace Vantrel::XML {

using XML::TXMLAttributeSpan;

// Makes a root and its tree of the events of an XML scan file.
//
// A folder's node is made, and takes its place, when its element begins. Its values follow inside the element, and its
// sub-folders' elements after them, so it is filled when the element ends. A folder whose statistics are not in the
// file gets the sums of its children's.
//
// Elements that it does not know are passed over. Everything else that does not fit ends the load, with the line.
class TXMLTreeBuilder : public Vantrel::XML::IXMLHandler {
 public:
  // The name is for messages.
  TXMLTreeBuilder(IScanRoots& pTarget, std::u16string pName, TPurpose pPurpose)
      : fTarget(pTarget), fName(std::move(pName)), fPurpose(pPurpose) {}
  ~TXMLTreeBuilder() override;
  // Before parsing; tells the line of what is wrong.
  void SetParser(const Vantrel::XML::TXMLParser& pParser) { fParser = &pParser; }

  void StartElement(std::u16string_view pName, TXMLAttributeSpan pAttributes) override;
  void EndElement(std::u16string_view pName) override;
  void Characters(std::u16string_view pText) override { fText = pText; }

  // The root, once the document has been read to its end.
  TRef<IHierarchicalRoot> Finish();
  bool IsFullExport() const { return fScan.fIsFullExport; }
  bool WasCancelled() const { return fScan.fWasCancelled; }

 private:
  enum class TElement : uint8_t;
  // A folder whose element is open.
  struct TOpenFolder {
    TRef<TCustomFolderData> fNode;
    TLoadedFolder fValues;
    size_t fPathLength = 0;  // of its path, which fPath begins with
    bool fIsFilesNode = false;
    bool fHasStatistics = false;  // of its own, in the file
    std::vector<TRef<TCustomFolderData>> fChildren;
  };

  // Bytes or items. Two such numbers can be added; no storage holds so much.
  static constexpr int64_t kMostOfAnything = INT64_MAX / 2;

  static TElement ElementOf(std::u16string_view pName);

  [[noreturn]] void Fail(const std::string& pMessage) const;
  int64_t Integer(std::u16string_view pText, std::string_view pWhat, int64_t pLeast, int64_t pMost) const;
  int64_t Number(TXMLAttributeSpan pAttributes, std::u16string_view pName, int64_t pLeast = 0,
                 int64_t pMost = INT64_MAX) const;
  TKivFileTime FileTime(TXMLAttributeSpan pAttributes, std::u16string_view pLow, std::u16string_view pHigh) const;
  TBasicSizeValues Sizes(TXMLAttributeSpan pAttributes) const;
  // Refuses statistics whose sums would not fit their numbers.
  const TBasicSizeValues& Counted(const TBasicSizeValues& pValues);
  std::u16string ExactText() const;

  void BeginRoot(TXMLAttributeSpan pAttributes);
  // What the root's kind is where its type does not say.
  char16_t DelimiterFor(std::u16string_view pPath) const;
  void CreateRoot();
  void BeginFolder(TXMLAttributeSpan pAttributes);
  std::u16string_view NameIn(const TOpenFolder& pParent, std::u16string_view pPath) const;
  void EndFolder();
  void CheckNames(const TOpenFolder& pFolder) const;
  void BeginSizeArray(bool pIsUsers);
  void AddItem(TXMLAttributeSpan pAttributes);
  void ReadFileAges(TXMLAttributeSpan pAttributes);
  void ReadDate(TKivFileTime TEntryValues::*pDate, std::string_view pWhere, TXMLAttributeSpan pAttributes);
  void ReadSizeData(TXMLAttributeSpan pAttributes);
  void BeginError(TXMLAttributeSpan pAttributes);
  void EndError();
  void ReadTopFile(TXMLAttributeSpan pAttributes);
  void ReadPatternElement(TElement pElement, TXMLAttributeSpan pAttributes);
  void ReadHeaderText(TElement pElement);
  // A file that holds no whole state of its tree is refused as the earlier state of a comparison.
  void RefuseToCompare(std::string_view pReason) const;
  TOpenFolder& OpenFolder(std::string_view pWhere);

  IScanRoots& fTarget;
  const std::u16string fName;
  const TPurpose fPurpose;
  const Vantrel::XML::TXMLParser* fParser = nullptr;

  // The header.
  bool fSeenRoot = false;
  char16_t fDelimiter = 0;  // by the root's type; 0 for one that the path has to tell
  std::u16string fRootPath;
  TLoadedScan fScan;
  TRef<PatternMatching::IPatterns> fPatterns;

  // The tree.
  TRef<TCustomRoot> fRoot;
  std::vector<TOpenFolder> fOpen;
  bool fTreeDone = false;
  std::u16string fPath;       // of the innermost open folder; of the top folder before and after
  TBasicSizeValues fCounted;  // of all statistics read: no sum of some of them is more
  TLoadedTopFiles fTopFiles;
  TRef<TFileAges> fFileAges;
  std::vector<std::u16string> fFileAgesNames;  // of the attributes, one per interval
  TRef<ICustomAssocSizeArray> fSizeArray;      // being filled

  // The element that is open.
  std::u16string fText;
  std::u16string fEscaped;  // the exact form of its text, when XML cannot hold it
};

}  // namespace Vantrel::XML
