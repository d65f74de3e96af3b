#include "export/xml/XMLFileStream.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "export/xml/XMLUtils.h"
#include "platform/system/Errors.h"
#include "platform/text/Utf.h"

namespace Vantrel::XML {

namespace {

// This size makes the sink's cost per call small and still fits into the processor's cache.
constexpr size_t kPieceForSink = 64 * 1024;

// The escape of an ASCII character in a text or attribute. Empty for characters written as they are.
struct TEscape {
  char fLength = 0;
  char fText[7] = {};
};
using TEscapeTable = std::array<TEscape, 128>;

constexpr TEscapeTable MakeEscapeTable(bool pInAttribute) {
  TEscapeTable table{};
  const auto set = [&table](int pChar, std::string_view pText) {
    table[static_cast<size_t>(pChar)].fLength = static_cast<char>(pText.size());
    for (size_t i = 0; i < pText.size(); ++i) table[static_cast<size_t>(pChar)].fText[i] = pText[i];
  };
  for (int control = 0; control < 0x20; ++control) {
    if (control != '\t' && control != '\n' && control != '\r') set(control, "\xEF\xBF\xBD");
  }
  set('&', "&amp;");
  set('<', "&lt;");
  set('>', "&gt;");
  set('\r', "&#13;");
  if (pInAttribute) {
    set('"', "&quot;");
    set('\t', "&#9;");
    set('\n', "&#10;");
  }
  return table;
}

constexpr TEscapeTable kInText = MakeEscapeTable(false);
constexpr TEscapeTable kInAttribute = MakeEscapeTable(true);
constexpr size_t kLongestEscape = 6;
// Spare room after the escapes, because each copy takes the full length of the table's field.
constexpr size_t kSpare = sizeof(TEscape::fText);

char* PutEscape(char* pTarget, const TEscape& pEscape) {
  std::memcpy(pTarget, pEscape.fText, sizeof pEscape.fText);
  return pTarget + pEscape.fLength;
}

char* PutThreeBytes(char* pTarget, uint32_t pCode) {
  *pTarget++ = static_cast<char>(0xE0 | (pCode >> 12));
  *pTarget++ = static_cast<char>(0x80 | ((pCode >> 6) & 0x3F));
  *pTarget++ = static_cast<char>(0x80 | (pCode & 0x3F));
  return pTarget;
}

char* PutPair(char* pTarget, char16_t pLead, char16_t pTrail) {
  const uint32_t code = 0x10000u + ((pLead & 0x3FFu) << 10) + (pTrail & 0x3FFu);
  *pTarget++ = static_cast<char>(0xF0 | (code >> 18));
  *pTarget++ = static_cast<char>(0x80 | ((code >> 12) & 0x3F));
  *pTarget++ = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
  *pTarget++ = static_cast<char>(0x80 | (code & 0x3F));
  return pTarget;
}

// Writes the non-ASCII character at pAt and moves pAt to its last unit. Sets pHeld to false if XML cannot hold it.
char* PutBeyondAscii(char* pTarget, std::u16string_view pText, size_t& pAt, bool& pHeld) {
  const char16_t unit = pText[pAt];
  if (unit < 0x800) {
    *pTarget++ = static_cast<char>(0xC0 | (unit >> 6));
    *pTarget++ = static_cast<char>(0x80 | (unit & 0x3F));
    return pTarget;
  }
  if (IsLeadSurrogate(unit) && pAt + 1 < pText.size() && IsTrailSurrogate(pText[pAt + 1]))
    return PutPair(pTarget, unit, pText[++pAt]);
  const bool held = (unit & 0xF800) != 0xD800 && unit < 0xFFFE;
  pHeld = pHeld && held;
  return PutThreeBytes(pTarget, held ? unit : 0xFFFD);
}

char* PutEscaped(char* pTarget, std::u16string_view pText, const TEscapeTable& pTable, bool& pHeld) {
  for (size_t at = 0; at < pText.size(); ++at) {
    const char16_t unit = pText[at];
    if (unit >= 0x80) {
      pTarget = PutBeyondAscii(pTarget, pText, at, pHeld);
    } else if (const TEscape& escape = pTable[unit]; escape.fLength == 0) {
      *pTarget++ = static_cast<char>(unit);
    } else {
      pHeld = pHeld && (unit >= 0x20 || unit == u'\t' || unit == u'\n' || unit == u'\r');
      pTarget = PutEscape(pTarget, escape);
    }
  }
  return pTarget;
}

[[noreturn]] void Refuse(std::string_view pMethod, std::string_view pWhy) {
  throw EInvalidOperation(fmt::format("TXMLFileStream.{}: {}", pMethod, pWhy));
}

}  // namespace

void TXMLBuffer::Grow(size_t pBytes) {
  const size_t capacity = std::max({fCapacity * 2, fSize + pBytes, size_t{256}});
  std::unique_ptr<char[]> bytes(new char[capacity]);
  if (fSize > 0) std::memcpy(bytes.get(), fBytes.get(), fSize);
  fBytes = std::move(bytes);
  fCapacity = capacity;
}

bool TXMLBuffer::AppendEscaped(std::u16string_view pText, bool pInAttribute) {
  constexpr size_t kPiece = 1024;  // limits the room reserved for the worst case
  const TEscapeTable& table = pInAttribute ? kInAttribute : kInText;
  bool held = true;
  while (!pText.empty()) {
    size_t length = std::min(pText.size(), kPiece);
    // The other half of a surrogate pair may follow.
    while (length < pText.size() && IsLeadSurrogate(pText[length - 1])) ++length;
    char* room = Reserve(length * kLongestEscape + kSpare);
    Advance(PutEscaped(room, pText.substr(0, length), table, held));
    pText.remove_prefix(length);
  }
  return held;
}

void TXMLBuffer::AppendEscaped(std::string_view pText, bool pInAttribute) {
  const TEscapeTable& table = pInAttribute ? kInAttribute : kInText;
  char* target = Reserve(pText.size() * kLongestEscape + kSpare);
  for (const char byte : pText) {
    const auto value = static_cast<unsigned char>(byte);
    if (value >= table.size() || table[value].fLength == 0) {
      *target++ = byte;
    } else {
      target = PutEscape(target, table[value]);
    }
  }
  Advance(target);
}

void TXMLAttributes::Begin(std::string_view pName) {
  char* room = fText.Reserve(pName.size() + 3);
  *room++ = ' ';
  if (!pName.empty()) std::memcpy(room, pName.data(), pName.size());
  room += pName.size();
  *room++ = '=';
  *room++ = '"';
  fText.Advance(room);
}

void TXMLAttributes::Add(std::string_view pName, std::u16string_view pValue) {
  Begin(pName);
  const bool held = fText.AppendEscaped(pValue, true);
  fText.Append("\"");
  if (held) return;
  std::string name(pName);
  name.append(TXMLUtils::kEscapedSuffix.begin(), TXMLUtils::kEscapedSuffix.end());
  Add(name, TXMLUtils::EscapeUnits(pValue));
}

void TXMLAttributes::Add(std::string_view pName, std::string_view pValue) {
  Begin(pName);
  fText.AppendEscaped(pValue, true);
  fText.Append("\"");
}

void TXMLFileStream::StartDocument(std::string_view pVersion, std::string_view pEncoding,
                                   std::string_view pStandalone) {
  if (fAnything) Refuse("StartDocument", "The document has begun already");
  if (pEncoding != "UTF-8")
    throw EInvalidArgumentValue(fmt::format("TXMLFileStream.StartDocument: Encoding \"{}\" is not known", pEncoding));
  fBuffer.Append("<?xml version=\"");
  fBuffer.Append(pVersion);
  fBuffer.Append("\" encoding=\"UTF-8\" standalone=\"");
  fBuffer.Append(pStandalone);
  fBuffer.Append("\"?>");
  fAnything = true;
}

void TXMLFileStream::EndDocument() {
  if (!fOpen.empty() || !fRootWritten) Refuse("EndDocument", "An element is still open, or there was none");
  fBuffer.Append("\r\n");
  Flush();
}

TXMLFileStream TXMLFileStream::Inside(IByteSink& pSink) {
  TXMLFileStream stream(pSink);
  stream.fAnything = stream.fRootWritten = true;
  stream.fOpen.push_back({0, false});
  return stream;
}

void TXMLFileStream::Flush() {
  if (fTagOpen) Refuse("Flush", "It is not known yet how the innermost element's tag ends");
  if (fBuffer.Size() > 0) fSink.Write(fBuffer.View());
  fBuffer.Clear();
}

void TXMLFileStream::FlushWhenFull() {
  if (fBuffer.Size() >= kPieceForSink) Flush();
}

// A line break is written only with the next tag. Only then is it known whether the parent has text.
void TXMLFileStream::BeginTag(std::string_view pName, std::string_view pAttributes) {
  if (fOpen.empty() && fRootWritten) Refuse("StartElement", "There is a root element already");
  fRootWritten = true;
  const bool newLine = fAnything && (fOpen.empty() || !fOpen.back().fHasText);
  char* room = fBuffer.Reserve(pName.size() + pAttributes.size() + 4);
  if (fTagOpen) *room++ = '>';
  if (newLine) {
    *room++ = '\r';
    *room++ = '\n';
  }
  *room++ = '<';
  room = std::copy(pName.begin(), pName.end(), room);
  room = std::copy(pAttributes.begin(), pAttributes.end(), room);
  fBuffer.Advance(room);
  fTagOpen = true;
  fAnything = true;
}

void TXMLFileStream::StartElement(std::string_view pName, const TXMLAttributes& pAttributes) {
  BeginTag(pName, pAttributes.Text());
  fOpen.push_back({fNames.size(), false});
  fNames += pName;
}

void TXMLFileStream::EndElement(std::string_view pName) {
  if (fOpen.empty() || std::string_view(fNames).substr(fOpen.back().fNameStart) != pName)
    throw EInvalidArgumentValue(fmt::format("TXMLFileStream.EndElement: \"{}\" is not the innermost element", pName));
  if (!fTagOpen && !fOpen.back().fHasText) fBuffer.Append("\r\n");
  EndTag(pName);
  fNames.resize(fOpen.back().fNameStart);
  fOpen.pop_back();
}

void TXMLFileStream::EndTag(std::string_view pName) {
  if (fTagOpen) {
    fBuffer.Append("/>");
  } else {
    char* room = fBuffer.Reserve(pName.size() + 3);
    *room++ = '<';
    *room++ = '/';
    room = std::copy(pName.begin(), pName.end(), room);
    *room++ = '>';
    fBuffer.Advance(room);
  }
  fTagOpen = false;
  FlushWhenFull();
}

void TXMLFileStream::AddElement(std::string_view pName, std::u16string_view pText, const TXMLAttributes& pAttributes) {
  BeginTag(pName, pAttributes.Text());
  if (!pText.empty()) {
    if (!TXMLUtils::CanHold(pText)) {
      fAttributes.Clear();
      fAttributes.Add("Escaped", TXMLUtils::EscapeUnits(pText));
      fBuffer.Append(fAttributes.Text());
    }
    CloseStartTag();
    fBuffer.AppendEscaped(pText, false);
  }
  EndTag(pName);
}

void TXMLFileStream::AddElement(std::string_view pName, std::string_view pText, const TXMLAttributes& pAttributes) {
  BeginTag(pName, pAttributes.Text());
  if (!pText.empty()) CloseStartTag();
  fBuffer.AppendEscaped(pText, false);
  EndTag(pName);
}

void TXMLFileStream::AddElement(std::string_view pName, const TXMLAttributes& pAttributes) {
  BeginTag(pName, pAttributes.Text());
  EndTag(pName);
}

void TXMLFileStream::Characters(std::u16string_view pText) {
  if (fOpen.empty()) Refuse("Characters", "Text belongs into an element");
  if (pText.empty()) return;
  CloseStartTag();
  fOpen.back().fHasText = true;
  fBuffer.AppendEscaped(pText, false);
  FlushWhenFull();
}

void TXMLFileStream::ProcessingInstruction(std::string_view pTarget, std::string_view pData) {
  if (pData.find("?>") != std::string_view::npos)
    throw EInvalidArgumentValue("TXMLFileStream.ProcessingInstruction: The data hold the end of an instruction");
  CloseStartTag();
  if (fAnything && (fOpen.empty() || !fOpen.back().fHasText)) fBuffer.Append("\r\n");
  fBuffer.Append("<?");
  fBuffer.Append(pTarget);
  if (!pData.empty()) fBuffer.Append(" ");
  fBuffer.Append(pData);
  fBuffer.Append("?>");
  fAnything = true;
}

void TXMLFileStream::WriteFileTimeToXMLFile(std::string_view pName, TKivFileTime pTime) {
  fAttributes.Clear();
  fAttributes.Add("Low", TXMLUtils::LowHalf(pTime.fTicks));
  fAttributes.Add("High", TXMLUtils::HighHalf(pTime.fTicks));
  AddElement(pName, fAttributes);
}

}  // namespace Vantrel::XML
