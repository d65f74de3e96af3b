#pragma once

// Reads JSON values one after the other from a source, with limits. Boost.JSON parses them.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "export/opening/OpenedText.h"
#include "platform/files/ByteStreams.h"

namespace Vantrel::JSON {

// These limits keep a document from costing more memory or time than its size justifies.
constexpr size_t kDeepestValue = 16;
constexpr size_t kMostMembers = 1000;
constexpr size_t kLongestText = 1 << 20;  // bytes of a text or key; longer than any path

// A value without parts. A text is UTF-8, in which a lone surrogate has its three bytes and a raw byte stays what it
// is.
using TScalar = std::variant<std::monostate, bool, int64_t, double, std::string>;

// The members of an object that are no objects or arrays themselves. One object is reused, so nothing is allocated for
// most of them.
class TObject {
 public:
  void Clear() { fCount = 0; }
  bool IsEmpty() const { return fCount == 0; }
  // nullptr if there is none.
  const TScalar* Find(std::string_view pKey) const;
  // The values of members. A missing member, and null, give the default. Opening::EFileError for one of another type.
  std::string_view Text(std::string_view pKey, std::string_view pDefault = {}) const;
  bool Boolean(std::string_view pKey, bool pDefault) const;
  // A whole number from 0 to pMost.
  int64_t Number(std::string_view pKey, int64_t pDefault, int64_t pMost) const;
  bool Has(std::string_view pKey) const;

  void BeginMember(std::string_view pKey);
  TScalar& LastValue() { return fMembers[fCount - 1].fValue; }

 private:
  struct TMember {
    std::string fKey;
    TScalar fValue;
  };
  std::vector<TMember> fMembers;
  size_t fCount = 0;
};

// Takes what is read. The calls may throw Opening::EFileError.
class IObjectHandler {
 public:
  virtual ~IObjectHandler() = default;
  // The array of this member follows, element by element, if it returns true. Otherwise the array is skipped. pSoFar
  // has the members before it.
  virtual bool BeginRows(std::string_view /*pKey*/, const TObject& /*pSoFar*/) { return false; }
  // An object of that array is complete.
  virtual void Row(const TObject& /*pRow*/) {}
  // The value is complete: an object, whose later members have come meanwhile.
  virtual void End(const TObject& pObject) = 0;
};

// The values of a source in their order. The reader of a format takes what stands between them. It takes the bytes as
// they are, and does not insist on UTF-8, since names are bytes in files of other programs. One thread.
class TValues {
 public:
  // pPosition is told where the reader is, for messages.
  TValues(IByteSource& pSource, const Opening::TFileProgress& pProgress);
  ~TValues();

  // The next byte that is no blank; 0 at the end.
  char Peek();
  // Takes that byte.
  void Take();
  // Reads a value that must be an object. Opening::EFileError with the place if it is damaged, or if pHandler throws
  // one.
  void ReadObject(IObjectHandler& pHandler);
  // Reads a number, as it stands between values.
  int64_t ReadNumber();
  [[noreturn]] void Fail(const std::string& pMessage) const;
  bool WasCancelled() const;

 private:
  class TRun;
  const std::unique_ptr<TRun> fRun;
};

// The text as units. Three bytes that stand for a lone surrogate become it, which UTF-8 does not allow; any other byte
// that does not decode becomes what FromNativeBytes makes of it.
std::u16string UnitsOf(std::string_view pText);

}  // namespace Vantrel::JSON
