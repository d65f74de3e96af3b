#pragma once

// The process-wide table of extensions and owners.

#include <cstdint>
#include <string>
#include <string_view>

namespace Vantrel {

// The process-wide table of statistics keys (extensions, owners): each text once, named by a small integer, so that
// merging statistics into a folder's ancestors compares integers and hashes no text. Keys live as long as the process:
// there are thousands, not millions. Any thread; a scan worker keeps a cache of its own in front.
using TKeyId = uint32_t;
constexpr TKeyId kNoKey = 0xFFFFFFFF;

// The id of a text, a new one when the text is new.
TKeyId InternKey(std::u16string_view pText);
// The id of a text, or false when no statistics ever held it.
bool FindInternedKey(std::u16string_view pText, TKeyId& pKey);
// The text of an id. The reference stays good.
const std::u16string& TextOfKey(TKeyId pKey);

}  // namespace Vantrel
