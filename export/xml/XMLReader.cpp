#include "export/xml/XMLReader.h"

#include <algorithm>

#include "export/opening/ScanFiles.h"
#include "export/xml/XMLTreeBuilder.h"
#include "export/xml/ZipFile.h"
#include "platform/text/Text.h"

namespace Vantrel::XML {

using Vantrel::XML::EXMLError;
using Vantrel::XML::TXMLParser;
using Vantrel::XML::TXMLProgress;

namespace {

struct TProtocolPrefix {
  TXMLParseHelper::TProtocol fProtocol;
  std::u16string_view fPrefix;
};
constexpr TProtocolPrefix kProtocols[] = {{TXMLParseHelper::TProtocol::prFile, u"file:"},
                                          {TXMLParseHelper::TProtocol::prWebDav, u"webdav:"},
                                          {TXMLParseHelper::TProtocol::prVirtualDisk, u"vdisk:"}};

// Takes a quoted text from the front and returns it without its quotes. Takes nothing if the second quote is missing.
std::u16string TakeQuoted(std::u16string_view& pText) {
  std::u16string name;
  for (size_t at = 1; at < pText.size(); ++at) {
    if (pText[at] != u'"') {
      name += pText[at];
    } else if (pText.substr(at + 1).starts_with(u'"')) {
      name += pText[at++];
    } else {
      pText.remove_prefix(at + 1);
      return name;
    }
  }
  return {};
}

}  // namespace

std::vector<std::u16string> SplitFileNames(std::u16string_view pFileNames) {
  std::vector<std::u16string> names;
  while (!pFileNames.empty()) {
    std::u16string name;
    if (pFileNames.starts_with(u'"')) name = TakeQuoted(pFileNames);
    const size_t end = std::min(pFileNames.find(u';'), pFileNames.size());
    name += pFileNames.substr(0, end);
    pFileNames.remove_prefix(std::min(end + 1, pFileNames.size()));
    if (!name.empty()) names.push_back(std::move(name));
  }
  return names;
}

std::vector<TLoadedRoot> TQZXMLReader::LoadFromFile(std::u16string_view pFileNames, IScanRoots& pTarget,
                                                    const TLoadProgress& pProgress) {
  return LoadFromFile(SplitFileNames(pFileNames), pTarget, pProgress);
}

std::vector<TLoadedRoot> TQZXMLReader::LoadFromFile(std::span<const std::u16string> pFileNames, IScanRoots& pTarget,
                                                    const TLoadProgress& pProgress) {
  std::vector<TLoadedRoot> loaded;
  for (const std::u16string& name : pFileNames) {
    TLoadedRoot root;
    try {
      root = Opening::ReadScanFile(name, pTarget, pProgress);
      if (!root.fRoot) break;
      pTarget.AddLoaded(root.fRoot);
    } catch (const EException& error) {
      if (root.fRoot) root.fRoot->Dispose();
      root = {};
      root.fError = error.what();
    }
    loaded.push_back(std::move(root));
  }
  return loaded;
}

TLoadedRoot TQZXMLReader::ReadRootFromXMLFile(const std::u16string& pPath, IScanRoots& pTarget,
                                              const TLoadProgress& pProgress, TPurpose pPurpose) {
  TXMLProgress progress;
  if (pProgress) progress = [&](uint64_t pBytes) { return pProgress(pPath, pBytes); };
  try {
    return ReadRoot(*Zip::OpenXMLSource(pPath), pPath, pTarget, progress, pPurpose);
  } catch (const EXMLError& error) {
    throw EScanFileError("The XML file " + ToQuotedDisplay(pPath) + " cannot be loaded. " + error.what());
  } catch (const Zip::EZipError& error) {
    throw EScanFileError(error.what());
  } catch (const EOSError& error) {
    throw EScanFileError("The XML file " + ToQuotedDisplay(pPath) + " cannot be read: " + OSErrorText(error.Code()));
  }
}

TLoadedRoot TQZXMLReader::ReadRoot(IByteSource& pSource, const std::u16string& pName, IScanRoots& pTarget,
                                   const TXMLProgress& pProgress, TPurpose pPurpose) {
  TXMLTreeBuilder builder(pTarget, pName, pPurpose);
  TXMLParser parser(builder);
  builder.SetParser(parser);
  if (!parser.Parse(pSource, pProgress)) return {};
  TLoadedRoot loaded;
  loaded.fRoot = builder.Finish();
  if (!builder.IsFullExport())
    loaded.fNotes.push_back("The XML file " + ToQuotedDisplay(pName) +
                            " includes information for directories limited to a certain directory level.\r\n"
                            "Only the information of included directories will be shown.");
  if (builder.WasCancelled())
    loaded.fNotes.push_back("The XML file " + ToQuotedDisplay(pName) +
                            " holds a scan that was stopped: its totals cover only the part that was scanned.");
  return loaded;
}

TXMLParseHelper::TProtocol TXMLParseHelper::ParseXMLProtocol(std::u16string_view& pPath) {
  for (const TProtocolPrefix& protocol : kProtocols) {
    if (!SameTextAscii(pPath.substr(0, protocol.fPrefix.size()), protocol.fPrefix)) continue;
    if (protocol.fProtocol == TProtocol::prFile) pPath.remove_prefix(protocol.fPrefix.size());
    return protocol.fProtocol;
  }
  return TProtocol::prNone;
}

std::u16string_view TXMLParseHelper::BuildProtocolString(TProtocol pProtocol) {
  for (const TProtocolPrefix& protocol : kProtocols)
    if (protocol.fProtocol == pProtocol) return protocol.fPrefix;
  return {};
}

}  // namespace Vantrel::XML
