#pragma once

// Builds a root and its tree from the events of a scan file.

#include <string>
#include <string_view>
#include <vector>

#include "export/xml/LoadedTopFiles.h"
#include "export/xml/ScanFileElements.h"
#include "export/xml/XMLReader.h"
#include "model/roots/Root.h"
#include "model/statistics/AssocSizeArray.h"
#include "model/statistics/FileAges.h"
#include "search/patterns/PatternInterfaces.h"

namespace Vantrel::XML {

using XML::TXMLAttributeSpan;

// Builds a root and its tree from the events of an XML scan file.
//
// A folder's node is made and placed when its element begins. The folder's values follow inside the element, then the
// elements of its sub-folders. So the node is filled when the element ends. If the file lacks a folder's statistics,
// they are the sums of its children's.
//
// Unknown elements are skipped. Any other content that does not fit ends the load with an error that names the line.
class TXMLTreeBuilder : public Vantrel::XML::IXMLHandler {
 public:
  // pName is used in messages.
  TXMLTreeBuilder(IScanRoots& pTarget, std::u16string pName, TPurpose pPurpose)
      : fTarget(pTarget), fName(std::move(pName)), fPurpose(pPurpose) {}
  ~TXMLTreeBuilder() override;
  // Call it before parsing. The parser tells the line of an error.
  void SetParser(const Vantrel::XML::TXMLParser& pParser) { fParser = &pParser; }

  void StartElement(std::u16string_view pName, TXMLAttributeSpan pAttributes) override;
  void EndElement(std::u16string_view pName) override;
  void Characters(std::u16string_view pText) override { fText = pText; }

  // Returns the root after the whole document has been read.
  TRef<IHierarchicalRoot> Finish();
  bool IsFullExport() const { return fScan.fIsFullExport; }
  bool WasCancelled() const { return fScan.fWasCancelled; }

 private:
  // A folder whose element is open.
  struct TOpenFolder {
    TRef<TCustomFolderData> fNode;
    TLoadedFolder fValues;
    size_t fPathLength = 0;  // of the folder's path, with which fPath begins
    bool fIsFilesNode = false;
    bool fHasStatistics = false;  // whether the file holds statistics of this folder
    std::vector<TRef<TCustomFolderData>> fChildren;
  };

  // The limit for bytes or items. Two such numbers can be added, and no storage holds so much.
  static constexpr int64_t kMostOfAnything = INT64_MAX / 2;

  [[noreturn]] void Fail(const std::string& pMessage) const;
  int64_t Integer(std::u16string_view pText, std::string_view pWhat, int64_t pLeast, int64_t pMost) const;
  int64_t Number(TXMLAttributeSpan pAttributes, std::u16string_view pName, int64_t pLeast = 0,
                 int64_t pMost = INT64_MAX) const;
  TKivFileTime FileTime(TXMLAttributeSpan pAttributes, std::u16string_view pLow, std::u16string_view pHigh) const;
  TBasicSizeValues Sizes(TXMLAttributeSpan pAttributes) const;
  // Refuses statistics whose sums would overflow.
  const TBasicSizeValues& Counted(const TBasicSizeValues& pValues);
  std::u16string ExactText() const;

  void BeginRoot(TXMLAttributeSpan pAttributes);
  // The root's path delimiter. If the root's type does not tell it, pPath does.
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
  void ReadPatternElement(TScanFileElement pElement, TXMLAttributeSpan pAttributes);
  void BeginHeaderElement(TScanFileElement pElement, TXMLAttributeSpan pAttributes);
  void ReadHeaderText(TScanFileElement pElement);
  void ReadStorage(TScanFileElement pElement);
  // Reads whether the file holds the whole tree, of a finished scan, and nothing but that.
  void ReadWholeness(TScanFileElement pElement);
  // For comparisons: refuses a file that does not hold the whole state of its tree.
  void RefuseToCompare(std::string_view pReason) const;
  TOpenFolder& OpenFolder(std::string_view pWhere);

  IScanRoots& fTarget;
  const std::u16string fName;
  const TPurpose fPurpose;
  const Vantrel::XML::TXMLParser* fParser = nullptr;

  // These fields hold the header.
  bool fSeenRoot = false;
  char16_t fDelimiter = 0;  // by the root's type; 0 if only the path can tell
  std::u16string fRootPath;
  TLoadedScan fScan;
  TRef<PatternMatching::IPatterns> fPatterns;

  // These fields hold the tree.
  TRef<TCustomRoot> fRoot;
  std::vector<TOpenFolder> fOpen;
  bool fTreeDone = false;
  std::u16string fPath;       // of the innermost open folder; before and after, of the top folder
  TBasicSizeValues fCounted;  // the sum of all statistics read, so no sum of some of them is larger
  TLoadedTopFiles fTopFiles;
  TRef<TFileAges> fFileAges;
  std::vector<std::u16string> fFileAgesNames;  // names of the attributes, one per interval
  TRef<ICustomAssocSizeArray> fSizeArray;      // the array being filled

  // These fields belong to the open element.
  std::u16string fText;
  std::u16string fEscaped;  // the exact form of its text, if XML cannot hold it
};

}  // namespace Vantrel::XML
