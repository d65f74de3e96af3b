#include "automation/actions/ExportFile.h"

#include "platform/files/Folders.h"
#include "platform/files/Paths.h"
#include "platform/system/Console.h"
#include "platform/text/Text.h"

namespace Vantrel::PostScanActions {

bool WasStopped(const IHierarchicalRoot& pRoot) {
  return (pRoot.GetState() & (rsCancelled | rsIsXMLImport)) == rsCancelled;
}

void CheckNotCancelled(bool pIsCancelled, const std::u16string& pPath) {
  if (pIsCancelled && pPath == TOutputFile::kStandardOutput)
    throw EExportCancelled("Stopped: what went to the standard output is not complete");
  if (pIsCancelled)
    throw EExportCancelled("Stopped: " + ToQuotedDisplay(pPath) + " was not written, an earlier one is untouched");
}

TExportFile::TExportFile(const std::u16string& pPath, TIsCancelled pIsCancelled, bool pUnseen)
    : fPath(pPath), fIsCancelled(std::move(pIsCancelled)) {
  if (pPath == TOutputFile::kStandardOutput) fLineEnd = TConsole::LineEnd();
  if (pUnseen && pPath != TOutputFile::kStandardOutput && !SpecialFileExists(pPath))
    fScratch = TFileStream::CreateScratch(pPath);
  else
    fFile = std::make_unique<TOutputFile>(pPath);
}

void TExportFile::Write(std::string_view pBytes) {
  CheckNotCancelled(fIsCancelled(), Path());
  Sink().Write(pBytes);
}

void TExportFile::Commit() {
  if (!fFile) CopyScratch();
  fFile->Commit();
}

void TExportFile::CopyScratch() {
  constexpr size_t kPiece = 1 << 17;
  fFile = std::make_unique<TOutputFile>(fPath);
  fScratch.Seek(0);
  std::string piece(kPiece, '\0');
  while (const size_t length = fScratch.Read(piece.data(), piece.size()))
    Write(std::string_view(piece).substr(0, length));
  fScratch = {};
}

bool TExportFile::WriteLine(std::string_view pLine) {
  Write(pLine);
  Sink().Write(fLineEnd);
  ++fLines;
  return true;
}

Exporting::TLineWidth TExportFile::LineWidth() const {
  return fPath == TOutputFile::kStandardOutput ? Exporting::ConsoleWidth() : Exporting::TLineWidth();
}

Exporting::TLineLook TExportFile::LineLook() const {
  return fPath == TOutputFile::kStandardOutput ? Exporting::ConsoleLook() : Exporting::TLineLook();
}

void ProbeTarget(const std::u16string& pPath) {
  if (pPath == TOutputFile::kStandardOutput) return;
  CreateFolderOf(pPath);
  // The reader of a pipe would take the end of the probe for the end of the export.
  if (SpecialFileExists(pPath)) return;
  const TOutputFile probe(pPath);
}

std::u16string WithPartInName(std::u16string_view pPath, std::u16string_view pPart) {
  constexpr std::u16string_view kPackedXML = u".xml.zip";
  const std::u16string_view name = FileNameOfPath(pPath, NativePathDelimiter());
  size_t dot = HasExtension(name, kPackedXML) ? name.size() - kPackedXML.size() : 0;
  if (dot == 0) dot = name.rfind(u'.');
  if (dot == std::u16string_view::npos || dot == 0) dot = name.size();
  std::u16string path(pPath.substr(0, pPath.size() - name.size()));
  return path.append(name.substr(0, dot)).append(pPart).append(name.substr(dot));
}

bool IsReaderGone(const EOSError& pError) {
  return pError.Object() == TOutputFile::kStandardOutput && TConsole::IsReaderGone(pError.Code());
}

std::u16string NameForFiles(const IHierarchicalRoot& pRoot) {
  return NameForFiles(pRoot.GetPath(), pRoot.GetPathDelimiter());
}

std::u16string NameForFiles(std::u16string_view pPath, char16_t pDelimiter) {
  std::u16string name(FileNameOfPath(WithoutTrailingDelimiter(pPath, pDelimiter), pDelimiter));
  std::erase_if(name, [](char16_t pUnit) {
    return pUnit < u' ' || std::u16string_view(u"/\\:*?\"<>|").find(pUnit) != std::u16string_view::npos;
  });
  return name.empty() ? u"root" : name;
}

std::u16string TNamesOfRoots::Next(const std::u16string& pName) {
  std::u16string unique = pName;
  for (int number = 2; !fNames.insert(ToLowerLinguistic(unique)).second; ++number)
    unique = pName + u"_" + FromUtf8(std::to_string(number));
  return unique;
}

}  // namespace Vantrel::PostScanActions
