#include "export/xml/XMLReader.h"

#include <algorithm>

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

}  // namespace

std::vector<std::u16string> SplitFileNames(std::u16string_view pFileNames) {
  std::vector<std::u16string> names;
  std::u16string name;
  bool quoted = false;
  auto take = [&] {
    if (!name.empty()) names.push_back(std::move(name));
    name.clear();
  };
  for (char16_t unit : pFileNames) {
    if (unit == u'"')
      quoted = !quoted;
    else if (unit == u';' && !quoted)
      take();
    else
      name += unit;
  }
  take();
  return names;
}

std::vector<TLoadedRoot> TQZXMLReader::LoadFromFile(std::u16string_view pFileNames, IScanRoots& pTarget,
                                                    const TLoadProgress& pProgress) {
  std::vector<TLoadedRoot> loaded;
  for (const std::u16string& name : SplitFileNames(pFileNames)) {
    TLoadedRoot root = ReadRootFromXMLFile(name, pTarget, pProgress);
    if (!root.fRoot) break;
    pTarget.AddLoaded(root.fRoot);
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
