#pragma once

// The properties that stand inside a file, and the reader that finds out the kind of file.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "model/columns/MetaData.h"
#include "search/metadata/FileBytes.h"
#include "search/query/FileFacts.h"

namespace Vantrel::Search {

// What was found in one file. The first value of a text, number or date stays; lists grow.
class TFileProperties {
 public:
  const TMetaDataValue& Get(TFileProperty pProperty) const { return fValues[static_cast<size_t>(pProperty)]; }

  // Blanks and zeros at the ends are cut off. An empty text counts as none. For a list, what is in it already is not
  // added again.
  void AddText(TFileProperty pProperty, std::u16string_view pText);
  void AddText(TFileProperty pProperty, std::string_view pUtf8OrLatin);
  // Each part of a text like "sea; sun, summer".
  void AddList(TFileProperty pProperty, std::u16string_view pTexts);
  void AddNumber(TFileProperty pProperty, int64_t pNumber);
  void AddNumber(TFileProperty pProperty, std::string_view pNumber);
  void AddDate(TFileProperty pProperty, TKivFileTime pDate);

 private:
  TMetaDataValue& At(TFileProperty pProperty) { return fValues[static_cast<size_t>(pProperty)]; }

  std::array<TMetaDataValue, static_cast<size_t>(TFileProperty::fpCount)> fValues;
};

// Text that should be UTF-8, but is Latin-1 in old files.
std::u16string TextOf(std::string_view pBytes);

// Reads what is known of the kind of file, which its first bytes tell: office documents, pictures, music, PDF. A
// damaged file gives what could be read. What the source throws passes through.
TFileProperties ReadFileProperties(TFileBytes& pFile);

// The readers of the kinds. Each expects the first bytes of its kind.
void ReadOfficeProperties(TFileBytes& pFile, TFileProperties& pProperties);
void ReadPictureProperties(TFileBytes& pFile, TFileProperties& pProperties);
void ReadMusicProperties(TFileBytes& pFile, TFileProperties& pProperties);
void ReadPdfProperties(TFileBytes& pFile, TFileProperties& pProperties);

}  // namespace Vantrel::Search
