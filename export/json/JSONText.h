#pragma once

// Writes JSON: texts with their escapes, the members of objects, and documents of one object with rows.

#include <cstdint>
#include <string>
#include <string_view>

#include "model/columns/MetaData.h"
#include "platform/files/ByteStreams.h"
#include "platform/system/FileTime.h"

namespace Vantrel::JSON {

// docs/json.md describes the format.
constexpr std::string_view kFormatName = "vantrel";
constexpr int64_t kFormatVersion = 1;

// Appends the inside of a JSON string: UTF-8 with the escapes that JSON asks for. A unit that UTF-8 cannot hold, such
// as an undecodable byte of a Linux name, becomes an escape such as \udcff. Python reads it as its own form of that
// byte.
void AppendText(std::string& pTarget, std::u16string_view pText);

// The key of a column: its name in small letters, and "path" for the full path.
std::string KeyOf(TColumn pColumn);
// The key of a column with a caption of its own: its letters and digits in small letters, with "percent" for "%".
std::string KeyOfCaption(std::u16string_view pCaption);

// Appends the members of one object. Dates and texts without a value, and values of no kind, are left out.
class TMembers {
 public:
  explicit TMembers(std::string& pTarget) : fTarget(pTarget) { fTarget += '{'; }

  void Add(std::string_view pKey, std::u16string_view pText);
  void AddOwn(std::string_view pKey, std::string_view pText);  // a text of the program, without special characters
  void AddNumber(std::string_view pKey, int64_t pNumber);
  void AddBoolean(std::string_view pKey, bool pValue);
  void AddDate(std::string_view pKey, TKivFileTime pDate);
  void AddPercent(std::string_view pKey, double pShare);
  void AddValue(std::string_view pKey, const TMetaDataValue& pValue);
  // Begins a member whose text the caller appends.
  void BeginText(std::string_view pKey);
  void EndText() { fTarget += '"'; }
  void End() { fTarget += '}'; }

 private:
  void Key(std::string_view pKey);

  std::string& fTarget;
  bool fIsFirst = true;
};

// The two forms of a document: one object, whose member "rows" is an array; or lines, of which the first is the object
// without rows, and each further one a row.
enum class TLayout : uint8_t { loObject, loLines };

// Writes a document. The caller appends RowBegin and a row's object for each row, and may do so in pieces.
class TDocument {
 public:
  // pHead is an object with the members of the head, complete.
  TDocument(IByteSink& pSink, TLayout pLayout, std::string pHead);
  std::string_view RowBegin() const { return fLayout == TLayout::loObject ? ",\n" : "\n"; }
  void WriteRows(std::string_view pRows);
  void End();

 private:
  IByteSink& fSink;
  const TLayout fLayout;
  bool fIsFirst = true;
};

// The head of a document of this kind, to which the caller adds further members.
TMembers BeginHead(std::string& pTarget, std::string_view pKind);

}  // namespace Vantrel::JSON
