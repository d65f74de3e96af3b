#pragma once

// The process-wide table of extensions and owners, which maps texts to integers.

#include <cstdint>
#include <string>
#include <string_view>

namespace Vantrel {

// The process-wide table of statistics keys (extensions, owners). Each text is stored once under a small integer.
// Merging statistics into a folder's ancestors then compares integers and hashes no text. Keys live as long as the
// process; there are thousands, not millions. Any thread; a scan worker uses its own cache first.
using TKeyId = uint32_t;
constexpr TKeyId kNoKey = 0xFFFFFFFF;

// The id of a text. Adds the text if it is new.
TKeyId InternKey(std::u16string_view pText);
// The id of a text. False when the table does not hold it.
bool FindInternedKey(std::u16string_view pText, TKeyId& pKey);
// The text of an id. The reference stays valid.
const std::u16string& TextOfKey(TKeyId pKey);

}  // namespace Vantrel
