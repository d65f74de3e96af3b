#pragma once

// The colours of statistics keys.

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/threads/SlimReaderWriterLock.h"

namespace Vantrel {

using TColor = uint32_t;  // 0xRRGGBB

// The 32-bit FNV-1a hash of a text's UTF-16 code units, the low byte of each first, on every platform.
uint32_t HashOfKeyText(std::u16string_view pText);

// Assigns every statistics key its colour, the same in every chart and on every run. Any thread.
class TColorPalette {
 public:
  // The user's colour for the key, else a palette colour picked by the key's hash.
  TColor GetColorForKey(std::u16string_view pKey) const;
  TColor GetColorForHash(uint32_t pHash) const;

  void SetUserColor(std::u16string_view pKey, TColor pColor);
  void RemoveUserColor(std::u16string_view pKey);

 private:
  mutable TSlimReaderWriterLock fLock;
  boost::unordered_flat_map<std::u16string, TColor> fUserColors GUARDED_BY(fLock);
};

// The palette of the common options.
TColorPalette& CommonColorPalette();

}  // namespace Vantrel
