#include "export/xml/OptionsTables.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "platform/text/Text.h"

namespace Vantrel::Options {

using XML::TXMLAttributes;
using XML::TXMLAttributeSpan;
using XML::TXMLFileStream;
using XML::TXMLUtils;

namespace {

// Every extension is matched against every group.
constexpr int kMostGroups = 1000;

std::optional<std::u16string> FindValue(TXMLAttributeSpan pAttributes, std::u16string_view pName) {
  const bool hasValue = std::any_of(pAttributes.begin(), pAttributes.end(), [&](const XML::TXMLAttribute& pAttribute) {
    return SameTextAscii(pAttribute.fName, pName);
  });
  return hasValue ? std::optional(TXMLUtils::ExactValue(pAttributes, pName, {})) : std::nullopt;
}

// Users type captions in any letter case.
std::u16string Folded(std::u16string_view pText) {
  std::u16string folded(pText);
  std::transform(folded.begin(), folded.end(), folded.begin(), FoldAscii);
  return folded;
}

bool IsColorText(std::u16string_view pText) {
  constexpr size_t kLength = 7;
  return pText.size() == kLength && pText.front() == u'#' &&
         pText.find_first_not_of(u"0123456789abcdefABCDEF", 1) == std::u16string_view::npos;
}

}  // namespace

std::string Shown(std::u16string_view pText) {
  constexpr size_t kMostShown = 60;
  std::string shown = ToDisplay(pText.substr(0, kMostShown));
  return pText.size() > kMostShown ? shown + "..." : shown;
}

std::string TGroupsReader::Refuse(std::string_view pWhy) {
  if (std::exchange(fIsRefused, true)) return {};  // the first fault is told
  return fmt::format("the list of file-type groups is not used: {}", pWhy);
}

std::string TGroupsReader::Add(TXMLAttributeSpan pAttributes) {
  if (fGroups->GetCount() == kMostGroups) return Refuse(fmt::format("it has more than {} groups", kMostGroups));
  const std::u16string caption = FindValue(pAttributes, u"Caption").value_or(u"");
  if (caption.empty()) return Refuse("a group has no caption");
  const std::optional<std::u16string> patterns = FindValue(pAttributes, u"Patterns");
  if (!patterns) return Refuse(fmt::format("the group \"{}\" has no patterns", Shown(caption)));
  if (!fCaptions.insert(Folded(caption)).second)
    return Refuse(fmt::format("the caption \"{}\" is used twice", Shown(caption)));
  if (!fCatchAll.empty())
    return Refuse(fmt::format("the group \"{}\" has the pattern \"*\" and is not the last one", Shown(fCatchAll)));
  const TRef<IFileTypeGroup> group = fGroups->AddNewGroup();
  group->SetCaption(caption);
  group->SetDescription(FindValue(pAttributes, u"Description").value_or(u""));
  group->SetExtensionForIcon(FindValue(pAttributes, u"ExtensionForIcon").value_or(u""));
  group->SetPatterns(*patterns);
  if (group->IsCatchAll()) fCatchAll = caption;
  return {};
}

std::string TGroupsReader::Finish(TGlobalOptions& pOptions) {
  if (fCatchAll.empty()) return Refuse("its last group must have the pattern \"*\" and so take all other files");
  if (!fIsRefused) pOptions.FileTypeGroups = fGroups;
  return {};
}

std::string ReadColor(TXMLAttributeSpan pAttributes, TGlobalOptions& pOptions) {
  const std::u16string key = FindValue(pAttributes, u"Key").value_or(u"");
  if (key.empty()) return "a color without a key";
  const std::u16string text = FindValue(pAttributes, u"Color").value_or(u"");
  if (!IsColorText(text))
    return fmt::format("the color \"{}\" of \"{}\" is not allowed; expected #RRGGBB", Shown(text), Shown(key));
  constexpr int kHexadecimal = 16;
  pOptions.UserColors.insert_or_assign(key,
                                       static_cast<TColor>(std::stoul(ToUtf8(text).substr(1), nullptr, kHexadecimal)));
  return {};
}

std::string ReadSearch(TXMLAttributeSpan pAttributes, TGlobalOptions& pOptions) {
  constexpr size_t kMostSearches = 1000;
  const std::u16string name = FindValue(pAttributes, u"Name").value_or(u"");
  if (name.empty()) return "a search without a name";
  const std::optional<std::u16string> query = FindValue(pAttributes, u"Query");
  if (!query) return fmt::format("the search \"{}\" has no query", Shown(name));
  if (pOptions.KeptSearches.size() >= kMostSearches)
    return fmt::format("the search \"{}\" is one more than {}", Shown(name), kMostSearches);
  pOptions.KeptSearches.insert_or_assign(name, *query);
  return {};
}

namespace {

void WriteSearches(TXMLFileStream& pStream, const TGlobalOptions& pOptions) {
  if (pOptions.KeptSearches.empty()) return;
  TXMLAttributes attributes;
  pStream.StartElement("Searches");
  for (const auto& [name, query] : pOptions.KeptSearches) {
    attributes.Clear();
    attributes.Add("Name", name);
    attributes.Add("Query", query);
    pStream.AddElement("Item", attributes);
  }
  pStream.EndElement("Searches");
}

}  // namespace

void WriteTables(TXMLFileStream& pStream, const TGlobalOptions& pOptions) {
  TXMLAttributes attributes;
  if (!pOptions.FileTypeGroups->SameGroups(*StandardFileTypes())) {
    pStream.StartElement("FileTypeGroups");
    for (int i = 0; i < pOptions.FileTypeGroups->GetCount(); ++i) {
      const TRef<IFileTypeGroup> group = pOptions.FileTypeGroups->GetItem(i);
      attributes.Clear();
      attributes.Add("Caption", group->GetCaption());
      attributes.Add("Description", group->GetDescription());
      attributes.Add("ExtensionForIcon", group->GetExtensionForIcon());
      attributes.Add("Patterns", group->GetPatterns());
      pStream.AddElement("Item", attributes);
    }
    pStream.EndElement("FileTypeGroups");
  }
  if (!pOptions.UserColors.empty()) {
    pStream.StartElement("Colors");
    for (const auto& [key, color] : pOptions.UserColors) {
      attributes.Clear();
      attributes.Add("Key", key);
      attributes.Add("Color", fmt::format("#{:06X}", color));
      pStream.AddElement("Item", attributes);
    }
    pStream.EndElement("Colors");
  }
  WriteSearches(pStream, pOptions);
}

}  // namespace Vantrel::Options
