#include "export/json/JSONValues.h"

#include <fmt/format.h>

#include <algorithm>
#include <boost/json/basic_parser_impl.hpp>
#include <cmath>
#include <optional>

#include "platform/text/Numbers.h"
#include "platform/text/Text.h"
#include "platform/text/Utf.h"

namespace Vantrel::JSON {

using Opening::EFileError;

// --- objects ---------------------------------------------------------------------------------------------------------

const TScalar* TObject::Find(std::string_view pKey) const {
  for (size_t i = 0; i < fCount; ++i)
    if (fMembers[i].fKey == pKey) return &fMembers[i].fValue;
  return nullptr;
}

bool TObject::Has(std::string_view pKey) const {
  const TScalar* value = Find(pKey);
  return value && !std::holds_alternative<std::monostate>(*value);
}

std::string_view TObject::Text(std::string_view pKey, std::string_view pDefault) const {
  if (!Has(pKey)) return pDefault;
  const auto* text = std::get_if<std::string>(Find(pKey));
  if (!text) throw EFileError(fmt::format("\"{}\" is no text", pKey));
  return *text;
}

bool TObject::Boolean(std::string_view pKey, bool pDefault) const {
  if (!Has(pKey)) return pDefault;
  const auto* value = std::get_if<bool>(Find(pKey));
  if (!value) throw EFileError(fmt::format("\"{}\" is neither true nor false", pKey));
  return *value;
}

int64_t TObject::Number(std::string_view pKey, int64_t pDefault, int64_t pMost) const {
  if (!Has(pKey)) return pDefault;
  const auto* number = std::get_if<int64_t>(Find(pKey));
  if (!number) throw EFileError(fmt::format("\"{}\" is no whole number", pKey));
  if (*number < 0 || *number > pMost) throw EFileError(fmt::format("\"{}\" is out of range: {}", pKey, *number));
  return *number;
}

void TObject::BeginMember(std::string_view pKey) {
  if (fCount == kMostMembers) throw EFileError(fmt::format("An object has more than {} members", kMostMembers));
  if (fCount == fMembers.size()) fMembers.emplace_back();
  fMembers[fCount].fKey = pKey;
  fMembers[fCount++].fValue = std::monostate();
}

std::u16string UnitsOf(std::string_view pText) {
  std::u16string units;
  while (!pText.empty()) {
    // A lone surrogate begins with 0xED and a byte from 0xA0 on, and no other character does.
    size_t at = pText.find('\xED');
    while (at != std::string_view::npos && (at + 2 >= pText.size() || static_cast<uint8_t>(pText[at + 1]) < 0xA0))
      at = pText.find('\xED', at + 1);
    AppendFromNativeBytes(units, pText.substr(0, at));
    if (at == std::string_view::npos) return units;
    units += static_cast<char16_t>(0xD000 | ((pText[at + 1] & 0x3F) << 6) | (pText[at + 2] & 0x3F));
    pText.remove_prefix(at + 3);
  }
  return units;
}

// --- escapes ---------------------------------------------------------------------------------------------------------

namespace {

// Replaces the escapes of lone surrogates, which the parser refuses, by the three bytes that UTF-8 would have for them.
// Python writes such escapes for names that are not UTF-8. Text comes in pieces.
class TSurrogateEscapes {
 public:
  // Appends the piece to pTarget. The beginning of an escape at its end waits for the next piece; pIsLast ends that.
  void Append(std::string& pTarget, std::string_view pPiece, bool pIsLast) {
    if (!fWaiting.empty()) {
      fWaiting += pPiece;
      pPiece = fWaiting;
    }
    std::string waiting;
    while (!pPiece.empty()) {
      const size_t plain = std::min(pPiece.find('\\'), pPiece.size());
      pTarget += pPiece.substr(0, plain);
      pPiece.remove_prefix(plain);
      if (pPiece.empty()) break;
      const size_t length = AppendEscape(pTarget, pPiece, pIsLast);
      if (length == 0) break;
      pPiece.remove_prefix(length);
    }
    waiting = pPiece;
    fWaiting.swap(waiting);
  }

 private:
  // The unit of an escape at the beginning of the text.
  static std::optional<char16_t> UnitOf(std::string_view pText) {
    if (pText.size() < 6 || pText[0] != '\\' || pText[1] != 'u') return std::nullopt;
    unsigned unit = 0;
    const char* end = pText.data() + 6;
    const auto [read, error] = std::from_chars(pText.data() + 2, end, unit, 16);
    return read == end && error == std::errc() ? std::optional(static_cast<char16_t>(unit)) : std::nullopt;
  }

  // Returns the length of what was appended from the text, which begins with a backslash. 0 if more of it is needed.
  static size_t AppendEscape(std::string& pTarget, std::string_view pText, bool pIsLast) {
    const auto asItIs = [&](size_t pLength) {
      pLength = std::min(pLength, pText.size());
      pTarget += pText.substr(0, pLength);
      return pLength;
    };
    const bool isShort = pText.size() < 2 || (pText[1] == 'u' && pText.size() < 6);
    if (isShort) return pIsLast ? asItIs(pText.size()) : 0;
    const std::optional<char16_t> unit = UnitOf(pText);
    if (!unit || !(IsLeadSurrogate(*unit) || IsTrailSurrogate(*unit))) return asItIs(2);
    if (IsLeadSurrogate(*unit)) {
      const std::string_view rest = pText.substr(6);
      const bool mayFollow = rest.empty() || (rest[0] == '\\' && (rest.size() < 2 || rest[1] == 'u'));
      if (rest.size() < 6 && mayFollow && !pIsLast) return 0;
      const std::optional<char16_t> next = UnitOf(rest);
      if (next && IsTrailSurrogate(*next)) return asItIs(12);
    }
    pTarget += static_cast<char>(0xE0 | (*unit >> 12));
    pTarget += static_cast<char>(0x80 | ((*unit >> 6) & 0x3F));
    pTarget += static_cast<char>(0x80 | (*unit & 0x3F));
    return 6;
  }

  std::string fWaiting;
};

// Turns the parser's events into objects. What goes wrong is kept, since the parser knows the place of an event only
// after the event.
class TEvents {
 public:
  static constexpr size_t max_object_size = SIZE_MAX;
  static constexpr size_t max_array_size = SIZE_MAX;
  static constexpr size_t max_key_size = kLongestText;
  static constexpr size_t max_string_size = kLongestText;
  using TCode = boost::json::error_code;
  using TText = boost::json::string_view;

  void Begin(IObjectHandler& pHandler) {
    fHandler = &pHandler;
    fHead.Clear();
    fRow.Clear();
    fLevel = 0;
    fRowsLevel = 0;
    fText.clear();
    fError.clear();
  }
  const std::string& Error() const { return fError; }

  bool on_document_begin(TCode&) { return true; }
  bool on_document_end(TCode&) { return true; }
  bool on_object_begin(TCode&) {
    ++fLevel;
    if (IsRow()) fRow.Clear();
    return true;
  }
  bool on_object_end(size_t, TCode& pCode) {
    return Guarded(pCode, [&] {
      if (IsRow()) fHandler->Row(fRow);
      if (fLevel == 1) fHandler->End(fHead);
      --fLevel;
    });
  }
  bool on_array_begin(TCode& pCode) {
    return Guarded(pCode, [&] {
      ++fLevel;
      if (fLevel == 1) throw EFileError("An object was expected");
      if (IsRow()) throw EFileError("A row is no object");
      if (fLevel == 2 && fHandler->BeginRows(fKey, fHead)) fRowsLevel = 2;
    });
  }
  bool on_array_end(size_t, TCode&) {
    if (fRowsLevel == fLevel) fRowsLevel = 0;
    --fLevel;
    return true;
  }
  bool on_key_part(TText pText, size_t, TCode&) { return AddText(pText); }
  bool on_key(TText pText, size_t, TCode& pCode) {
    AddText(pText);
    return Guarded(pCode, [&] {
      fKey.swap(fText);
      fText.clear();
      if (TObject* object = Current()) object->BeginMember(fKey);
    });
  }
  bool on_string_part(TText pText, size_t, TCode&) { return AddText(pText); }
  bool on_string(TText pText, size_t, TCode& pCode) {
    AddText(pText);
    const bool isTaken = Guarded(pCode, [&] { Keep(fText); });
    fText.clear();
    return isTaken;
  }
  bool on_number_part(TText, TCode&) { return true; }
  bool on_int64(int64_t pNumber, TText, TCode& pCode) {
    return Guarded(pCode, [&] { Keep(pNumber); });
  }
  bool on_uint64(uint64_t pNumber, TText, TCode& pCode) {
    // It is larger than any that fits into 64 bits with a sign.
    return Guarded(pCode, [&] { Keep(static_cast<double>(pNumber)); });
  }
  bool on_double(double pNumber, TText, TCode& pCode) {
    return Guarded(pCode, [&] { Keep(pNumber); });
  }
  bool on_bool(bool pValue, TCode& pCode) {
    return Guarded(pCode, [&] { Keep(pValue); });
  }
  bool on_null(TCode& pCode) {
    return Guarded(pCode, [&] { Keep(std::monostate()); });
  }
  bool on_comment_part(TText, TCode&) { return true; }
  bool on_comment(TText, TCode&) { return true; }

 private:
  bool IsRow() const { return fRowsLevel != 0 && fLevel == fRowsLevel + 1; }
  // The object whose members are read now; nullptr inside of a value that is skipped.
  TObject* Current() { return fLevel == 1 ? &fHead : IsRow() ? &fRow : nullptr; }

  bool AddText(TText pText) {
    fText.append(pText.data(), pText.size());
    return true;
  }

  template <class TValue>
  void Keep(const TValue& pValue) {
    if (fLevel == 0) throw EFileError("An object was expected");
    if (fRowsLevel != 0 && fLevel == fRowsLevel) throw EFileError("A row is no object");
    TObject* object = Current();
    if (!object) return;
    TScalar& value = object->LastValue();
    if constexpr (std::is_same_v<TValue, std::string>) {
      if (auto* text = std::get_if<std::string>(&value)) return void(*text = pValue);
    }
    value = pValue;
  }

  template <class TAction>
  bool Guarded(TCode& pCode, const TAction& pAction) {
    try {
      pAction();
      return true;
    } catch (const EFileError& error) {
      fError = error.what();
      pCode = boost::json::error::exception;
      return false;
    }
  }

  IObjectHandler* fHandler = nullptr;
  TObject fHead;
  TObject fRow;
  size_t fLevel = 0;
  size_t fRowsLevel = 0;  // of the array of rows; 0: not in it
  std::string fKey;
  std::string fText;  // of the key or text that is being read
  std::string fError;
};

boost::json::parse_options Limits() {
  boost::json::parse_options options;
  options.max_depth = kDeepestValue;
  options.allow_invalid_utf8 = true;
  return options;
}

}  // namespace

// --- values ----------------------------------------------------------------------------------------------------------

class TValues::TRun {
 public:
  TRun(IByteSource& pSource, const Opening::TFileProgress& pProgress)
      : fSource(pSource), fProgress(pProgress), fParser(Limits()) {}

  // False at the end, and after a cancellation.
  bool Fill() {
    constexpr size_t kPiece = 1 << 16;
    while (fAt == fText.size() && !fEnded) {
      if (fProgress && !fProgress(fBytesRead)) fCancelled = fEnded = true;
      if (fCancelled) break;
      char piece[kPiece];
      const size_t length = fSource.Read(piece, kPiece);
      fBytesRead += length;
      fEnded = length == 0;
      fText.clear();
      fAt = 0;
      fEscapes.Append(fText, {piece, length}, fEnded);
    }
    return fAt < fText.size();
  }

  // Counts lines as it goes.
  void Advance(size_t pLength) {
    const auto begin = fText.begin() + static_cast<ptrdiff_t>(fAt);
    const auto end = begin + static_cast<ptrdiff_t>(pLength);
    fLine += std::count(begin, end, '\n');
    const size_t last = std::string_view(fText).substr(fAt, pLength).rfind('\n');
    fColumn = last == std::string_view::npos ? fColumn + pLength : pLength - last - 1;
    fAt += pLength;
  }

  [[noreturn]] void Fail(const std::string& pMessage) const {
    throw EFileError(fmt::format("Line {}, column {}: {}", fLine, fColumn + 1, pMessage));
  }

  void ReadObject(IObjectHandler& pHandler) {
    fParser.reset();
    TEvents& events = fParser.handler();
    events.Begin(pHandler);
    boost::json::error_code code;
    while (!fParser.done()) {
      if (!Fill()) {
        if (fCancelled) return;
        Fail("The file ends too early");
      }
      const size_t length = fParser.write_some(true, fText.data() + fAt, fText.size() - fAt, code);
      Advance(length);
      if (!code) continue;
      if (!events.Error().empty()) Fail(events.Error());
      Fail(code == boost::json::error::too_deep ? "Objects are nested too deep"
           : code == boost::json::error::string_too_large || code == boost::json::error::key_too_large
               ? "A text is too long"
               : "This is no JSON");
    }
  }

  IByteSource& fSource;
  const Opening::TFileProgress& fProgress;
  TSurrogateEscapes fEscapes;
  boost::json::basic_parser<TEvents> fParser;
  std::string fText;  // what was read last, with its escapes replaced
  size_t fAt = 0;     // of the next byte in it
  uint64_t fBytesRead = 0;
  int64_t fLine = 1;
  uint64_t fColumn = 0;  // bytes before the next one in its line
  bool fEnded = false;
  bool fCancelled = false;
};

TValues::TValues(IByteSource& pSource, const Opening::TFileProgress& pProgress)
    : fRun(std::make_unique<TRun>(pSource, pProgress)) {}

TValues::~TValues() = default;

char TValues::Peek() {
  while (fRun->Fill()) {
    const char next = fRun->fText[fRun->fAt];
    if (next != ' ' && next != '\n' && next != '\r' && next != '\t') return next;
    fRun->Advance(1);
  }
  return 0;
}

void TValues::Take() {
  if (Peek() != 0) fRun->Advance(1);
}

void TValues::ReadObject(IObjectHandler& pHandler) {
  fRun->ReadObject(pHandler);
}

int64_t TValues::ReadNumber() {
  int64_t number = 0;
  int digits = 0;
  constexpr int kMostDigits = 9;
  for (char next = Peek(); next >= '0' && next <= '9'; next = fRun->Fill() ? fRun->fText[fRun->fAt] : '\0') {
    if (++digits > kMostDigits) break;
    number = number * 10 + (next - '0');
    fRun->Advance(1);
  }
  if (digits == 0 || digits > kMostDigits) Fail("A small number was expected");
  return number;
}

void TValues::Fail(const std::string& pMessage) const {
  fRun->Fail(pMessage);
}

bool TValues::WasCancelled() const {
  return fRun->fCancelled;
}

}  // namespace Vantrel::JSON
