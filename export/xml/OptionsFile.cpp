#include "export/xml/OptionsFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <set>
#include <utility>

#include "export/xml/OptionsTables.h"
#include "export/xml/XMLFileStream.h"
#include "export/xml/XMLParser.h"
#include "export/xml/XMLUtils.h"
#include "platform/files/FileStream.h"
#include "platform/files/Folders.h"
#include "platform/files/OutputFile.h"
#include "platform/files/Paths.h"
#include "platform/files/UserFolders.h"
#include "platform/text/Text.h"

namespace Vantrel::Options {

using XML::EXMLError;
using XML::IXMLHandler;
using XML::TXMLAttribute;
using XML::TXMLAttributes;
using XML::TXMLAttributeSpan;
using XML::TXMLFileStream;
using XML::TXMLParser;
using XML::TXMLUtils;

namespace {

// The version of the format, not of the program. Increase it for a change that older programs would misread. A new
// element, attribute or option needs no increase: older programs skip it and report it.
constexpr int64_t kFormatVersion = 1;

// Thousands of times the size of all options. It limits the messages about a file of unknown options.
constexpr uint64_t kMostBytes = 4 << 20;

// Tells which options are kept out of files. An option that holds a secret must be named here.
bool IsKeptInFiles(const TOptionInfo&) {
  return true;
}

// Options hold UTF-8 texts but may hold any bytes. Bytes that do not decode are kept as in file names.
std::u16string TextForFile(std::string_view pText) {
  return FromNativeBytes(pText);
}

// The value in the form that TOptionInfo::fSet takes. Scan files use -1 and 0 for booleans; users write true and false.
std::string TextFromFile(const TOptionInfo& pOption, std::u16string_view pValue) {
  bool value = false;
  if (pOption.fKind == TOptionKind::okBoolean && TXMLUtils::TryReadBoolean(pValue, value))
    return value ? "true" : "false";
  return ToNativeBytes(pValue);
}

// Reads an options file into a copy of the options.
class TOptionsReader final : public IXMLHandler {
 public:
  explicit TOptionsReader(const TGlobalOptions& pOptions) : fOptions(pOptions), fParser(*this) {}

  // False when the file is longer than allowed.
  bool Read(IByteSource& pSource) {
    return fParser.Parse(pSource, [](uint64_t pBytesRead) { return pBytesRead <= kMostBytes; });
  }
  TGlobalOptions& Options() { return fOptions; }
  TLoadedOptions& Loaded() { return fLoaded; }

  void StartElement(std::u16string_view pName, TXMLAttributeSpan pAttributes) override {
    if (fDepth == 0) {
      StartRoot(pName, pAttributes);
    } else if (fDepth == 1) {
      StartPart(pName, pAttributes);
    } else if (fDepth == 2 && fTable != TTable::tNone) {
      ReadItem(pName, pAttributes);
    }
    ++fDepth;
  }
  void EndElement(std::u16string_view) override {
    if (--fDepth != 1) return;
    if (fTable == TTable::tGroups) SkipIf(fGroups.Finish(fOptions));
    fTable = TTable::tNone;
  }
  void Characters(std::u16string_view) override {}

 private:
  void StartRoot(std::u16string_view pName, TXMLAttributeSpan pAttributes);
  void StartPart(std::u16string_view pName, TXMLAttributeSpan pAttributes);
  void ReadOption(TXMLAttributeSpan pAttributes);
  void ReadItem(std::u16string_view pName, TXMLAttributeSpan pAttributes);
  // Reports attributes that are not among those with a meaning.
  void CheckAttributes(TXMLAttributeSpan pAttributes, std::initializer_list<std::u16string_view> pKnown);
  void SkipIf(std::string_view pWhat) {
    if (!pWhat.empty()) Skip(pWhat);
  }
  // Reports what was skipped at the current place of the file.
  void Skip(std::string_view pWhat) {
    fLoaded.fSkipped.push_back(fmt::format("line {}: {}", fParser.ErrorHere({}).Line(), pWhat));
  }

  TGlobalOptions fOptions;
  TLoadedOptions fLoaded;
  TXMLParser fParser;
  std::set<const TOptionInfo*> fSet;
  size_t fDepth = 0;
  enum class TTable : uint8_t {
    tNone,
    tGroups,
    tColors,
    tSearches
  } fTable = TTable::tNone;  // that the current place is in
  TGroupsReader fGroups;
};

void TOptionsReader::StartRoot(std::u16string_view pName, TXMLAttributeSpan pAttributes) {
  if (!SameTextAscii(pName, u"VantrelOptions"))
    throw fParser.ErrorHere(
        fmt::format("this is no options file: it begins with \"{}\" and not with \"VantrelOptions\"", Shown(pName)));
  const std::u16string_view text = TXMLUtils::GetValueFromAttributeByQName(pAttributes, u"Version", {});
  int64_t version = 0;
  if (!TXMLUtils::TryReadInteger(text, version) || version < 1)
    throw fParser.ErrorHere(fmt::format("\"{}\" is no version of an options file", Shown(text)));
  if (version > kFormatVersion)
    Skip(fmt::format("the file has the format {} of a newer version; this one knows formats up to {}", version,
                     kFormatVersion));
}

void TOptionsReader::CheckAttributes(TXMLAttributeSpan pAttributes, std::initializer_list<std::u16string_view> pKnown) {
  for (const TXMLAttribute& attribute : pAttributes) {
    const bool isKnown = std::any_of(pKnown.begin(), pKnown.end(),
                                     [&](std::u16string_view pName) { return SameTextAscii(attribute.fName, pName); });
    if (!isKnown) Skip(fmt::format("the attribute \"{}\" is not known to this version", Shown(attribute.fName)));
  }
}

void TOptionsReader::StartPart(std::u16string_view pName, TXMLAttributeSpan pAttributes) {
  if (SameTextAscii(pName, u"Option")) return ReadOption(pAttributes);
  if (SameTextAscii(pName, u"Application") || SameTextAscii(pName, u"Version")) return;
  if (SameTextAscii(pName, u"FileTypeGroups")) {
    fTable = TTable::tGroups;
    fGroups = {};
  } else if (SameTextAscii(pName, u"Colors")) {
    fTable = TTable::tColors;
  } else if (SameTextAscii(pName, u"Searches")) {
    fTable = TTable::tSearches;
  } else {
    Skip(fmt::format("the element \"{}\" is not known to this version", Shown(pName)));
  }
}

void TOptionsReader::ReadItem(std::u16string_view pName, TXMLAttributeSpan pAttributes) {
  if (!SameTextAscii(pName, u"Item"))
    return Skip(fmt::format("the element \"{}\" is not known to this version", Shown(pName)));
  if (fTable == TTable::tColors) {
    CheckAttributes(pAttributes, {u"Key", u"KeyEscaped", u"Color"});
    return SkipIf(ReadColor(pAttributes, fOptions));
  }
  if (fTable == TTable::tSearches) {
    CheckAttributes(pAttributes, {u"Name", u"NameEscaped", u"Query", u"QueryEscaped"});
    return SkipIf(ReadSearch(pAttributes, fOptions));
  }
  CheckAttributes(pAttributes, {u"Caption", u"CaptionEscaped", u"Description", u"DescriptionEscaped",
                                u"ExtensionForIcon", u"ExtensionForIconEscaped", u"Patterns", u"PatternsEscaped"});
  SkipIf(fGroups.Add(pAttributes));
}

void TOptionsReader::ReadOption(TXMLAttributeSpan pAttributes) {
  bool hasName = false;
  bool hasValue = false;
  for (const TXMLAttribute& attribute : pAttributes) {
    hasName = hasName || SameTextAscii(attribute.fName, u"Name");
    hasValue = hasValue || SameTextAscii(attribute.fName, u"Value");
  }
  CheckAttributes(pAttributes, {u"Name", u"Value", u"ValueEscaped"});
  if (!hasName) return Skip("an option without a name");
  const std::u16string_view name = TXMLUtils::GetValueFromAttributeByQName(pAttributes, u"Name", {});
  const TOptionInfo* option = FindOption(ToUtf8(name));
  if (option == nullptr) return Skip(fmt::format("the option \"{}\" is not known to this version", Shown(name)));
  if (!hasValue) return Skip(fmt::format("the option \"{}\" has no value", option->fName));
  const std::u16string value = TXMLUtils::ExactValue(pAttributes, u"Value", {});
  if (!option->fSet(fOptions, TextFromFile(*option, value))) return Skip(RefusedValueText(*option, Shown(value)));
  if (!fSet.insert(option).second)
    Skip(fmt::format("the option \"{}\" is set a second time; this is the value that counts", option->fName));
}

void WriteOption(TXMLFileStream& pStream, const TOptionInfo& pOption, const std::string& pValue) {
  TXMLAttributes attributes;
  attributes.Add("Name", pOption.fName);
  if (pOption.fKind == TOptionKind::okBoolean) {
    attributes.AddBoolean("Value", pValue == "true");
  } else {
    attributes.Add("Value", TextForFile(pValue));
  }
  pStream.AddElement("Option", attributes);
}

[[noreturn]] void Refuse(const std::u16string& pPath, std::string_view pWhy) {
  throw EOptionsFileError(
      fmt::format("The options file {} cannot be loaded. {}. Nothing in it counts until that is corrected",
                  ToQuotedDisplay(pPath), pWhy));
}

}  // namespace

TLoadedOptions LoadOptionsFile(const std::u16string& pPath, TGlobalOptions& pOptions) {
  TOptionsReader reader(pOptions);
  try {
    TFileStream file = TFileStream::OpenForReading(pPath);
    if (!reader.Read(file)) Refuse(pPath, fmt::format("It is larger than {} MB", kMostBytes >> 20));
  } catch (const EXMLError& error) {
    Refuse(pPath, error.what());
  } catch (const EOSError& error) {
    const TErrorKind kind = ClassifyOSError(error.Code());
    throw EOptionsFileError(
        fmt::format("The options file {} cannot be read: {}", ToQuotedDisplay(pPath), OSErrorText(error.Code())),
        kind == TErrorKind::ekNotFound || kind == TErrorKind::ekAccessDenied);
  }
  pOptions = std::move(reader.Options());
  return std::move(reader.Loaded());
}

void SaveOptionsFile(const std::u16string& pPath, const TGlobalOptions& pOptions, std::string_view pProgramName,
                     std::string_view pVersion) {
  CreateFolderOf(pPath, TFolderAccess::faUserAlone);
  TOutputFile file(pPath);
  TXMLFileStream stream(file);
  TXMLAttributes attributes;
  attributes.Add("Version", kFormatVersion);
  stream.StartDocument();
  stream.StartElement("VantrelOptions", attributes);
  stream.AddElement("Application", pProgramName);
  stream.AddElement("Version", pVersion);
  const TGlobalOptions defaults;
  for (const TOptionInfo& option : AllOptions()) {
    const std::string value = option.fGet(pOptions);
    // Compares with the default as read back, because its declaration may be spelled differently.
    if (IsKeptInFiles(option) && value != option.fGet(defaults)) WriteOption(stream, option, value);
  }
  WriteTables(stream, pOptions);
  stream.EndElement("VantrelOptions");
  stream.EndDocument();
  file.Commit();
}

std::u16string UserOptionsFile() {
  const std::u16string folder = UserConfigurationFolder();
  return folder.empty() ? folder : JoinPath(folder, u"options.xml", NativePathDelimiter());
}

}  // namespace Vantrel::Options
