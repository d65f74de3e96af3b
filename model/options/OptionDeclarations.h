#pragma once

// The kinds of options: makes an option's entry from its name, field, default, range and help line.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "model/options/GlobalOptions.h"
#include "platform/text/Text.h"

namespace Vantrel::OptionDeclarations {

// An option's field is a pointer to a member of TGlobalOptions, or another callable through which std::invoke returns
// the field.

inline bool ParseBoolean(std::string_view pText, bool& pValue) {
  if (SameTextAscii(pText, "true") || pText == "1") {
    pValue = true;
  } else if (SameTextAscii(pText, "false") || pText == "0") {
    pValue = false;
  } else {
    return false;
  }
  return true;
}

template <class TField>
TOptionInfo Boolean(std::string pName, TField pField, bool pDefault, std::string pHelp) {
  return {std::move(pName),
          TOptionKind::okBoolean,
          std::move(pHelp),
          pDefault ? "true" : "false",
          "true|false",
          [pField](TGlobalOptions& pOptions, std::string_view pText) {
            return ParseBoolean(pText, std::invoke(pField, pOptions));
          },
          [pField](const TGlobalOptions& pOptions) {
            return std::string(std::invoke(pField, pOptions) ? "true" : "false");
          }};
}

template <class TField>
TOptionInfo Integer(std::string pName, TField pField, int64_t pDefault, int64_t pLeast, int64_t pMost,
                    std::string pHelp) {
  auto set = [pField, pLeast, pMost](TGlobalOptions& pOptions, std::string_view pText) {
    int64_t value = 0;
    if (!TryParseInt64(pText, value) || value < pLeast || value > pMost) return false;
    auto& field = std::invoke(pField, pOptions);
    field = static_cast<std::remove_reference_t<decltype(field)>>(value);
    return true;
  };
  return {std::move(pName),
          TOptionKind::okInteger,
          std::move(pHelp),
          std::to_string(pDefault),
          std::to_string(pLeast) + ".." + std::to_string(pMost),
          set,
          [pField](const TGlobalOptions& pOptions) { return std::to_string(std::invoke(pField, pOptions)); }};
}

template <class T>
using TChoices = std::vector<std::pair<std::string_view, T>>;

// An option with a choice of words. The first word is the default.
template <class T, class TField>
TOptionInfo Choice(std::string pName, TField pField, TChoices<T> pChoices, std::string pHelp) {
  std::string range;
  for (const auto& choice : pChoices) range.append(range.empty() ? "" : "|").append(choice.first);
  std::string byDefault(pChoices.front().first);
  auto set = [pField, pChoices](TGlobalOptions& pOptions, std::string_view pText) {
    for (const auto& [word, value] : pChoices) {
      if (!SameTextAscii(pText, word)) continue;
      std::invoke(pField, pOptions) = value;
      return true;
    }
    return false;
  };
  auto get = [pField, pChoices](const TGlobalOptions& pOptions) {
    for (const auto& [word, value] : pChoices)
      if (std::invoke(pField, pOptions) == value) return std::string(word);
    return std::string();
  };
  return {std::move(pName), TOptionKind::okChoice, std::move(pHelp), byDefault, range, set, get};
}

template <class TField>
TOptionInfo Text(std::string pName, TField pField, std::string pDefault, std::string pRange,
                 bool (*pIsValid)(std::string_view), std::string pHelp) {
  auto set = [pField, pIsValid](TGlobalOptions& pOptions, std::string_view pText) {
    if (pIsValid != nullptr && !pIsValid(pText)) return false;
    std::invoke(pField, pOptions) = std::string(pText);
    return true;
  };
  return {std::move(pName),
          TOptionKind::okText,
          std::move(pHelp),
          std::move(pDefault),
          std::move(pRange),
          set,
          [pField](const TGlobalOptions& pOptions) { return std::string(std::invoke(pField, pOptions)); }};
}

// An option whose text represents a value of another type.
template <class T, class TField>
TOptionInfo Parsed(std::string pName, TField pField, std::string pDefault, std::string pRange,
                   bool (*pParse)(std::u16string_view, T&), std::u16string (*pText)(const T&), std::string pHelp) {
  return {std::move(pName),
          TOptionKind::okText,
          std::move(pHelp),
          std::move(pDefault),
          std::move(pRange),
          [pField, pParse](TGlobalOptions& pOptions, std::string_view pValue) {
            return pParse(FromUtf8(pValue), std::invoke(pField, pOptions));
          },
          [pField, pText](const TGlobalOptions& pOptions) { return ToUtf8(pText(std::invoke(pField, pOptions))); }};
}

}  // namespace Vantrel::OptionDeclarations
