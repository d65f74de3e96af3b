#pragma once

// The colours of statistics keys.

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "platform/threads/SlimReaderWriterLock.h"

namespace Vantrel {

using TColor = uint32_t;  // 0xRRGGBB
// The colours that the user chose, by key: an extension in lower case with its dot, an owner, a group's caption.
using TUserColors = std::map<std::u16string, TColor, std::less<>>;

// The 32-bit FNV-1a hash of a text's UTF-16 code units, the low byte of each first, on every platform.
uint32_t HashOfKeyText(std::u16string_view pText);

// Assigns every statistics key its colour, the same in every chart and on every run. Any thread.
class TColorPalette {
 public:
  // The user's colour for the key, else a palette colour picked by the key's hash.
  TColor GetColorForKey(std::u16string_view pKey) const;
  TColor GetColorForHash(uint32_t pHash) const;

  // Replaces all of the user's colours.
  void SetUserColors(TUserColors pColors);

 private:
  mutable TSlimReaderWriterLock fLock;
  TUserColors fUserColors GUARDED_BY(fLock);
};

// The palette of the common options.
TColorPalette& CommonColorPalette();

}  // namespace Vantrel
