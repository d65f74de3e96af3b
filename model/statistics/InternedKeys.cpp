#include "model/statistics/InternedKeys.h"

#include <boost/unordered/unordered_flat_map.hpp>
#include <deque>

#include "platform/threads/SlimReaderWriterLock.h"

namespace Vantrel {

namespace {

// The texts are in a deque, which never moves its elements, so references to them stay valid. The map's keys are views
// of the texts, so each text is stored once.
struct TKeyTable {
  TSlimReaderWriterLock fLock;
  std::deque<std::u16string> fTexts GUARDED_BY(fLock);
  boost::unordered_flat_map<std::u16string_view, TKeyId> fKeys GUARDED_BY(fLock);
};

// Never destroyed: a worker may still ask for a text when main's statics are gone.
TKeyTable& Table() {
  static TKeyTable& table = *new TKeyTable;
  return table;
}

}  // namespace

bool FindInternedKey(std::u16string_view pText, TKeyId& pKey) {
  TKeyTable& table = Table();
  TSharedLock lock(table.fLock);
  auto found = table.fKeys.find(pText);
  if (found == table.fKeys.end()) return false;
  pKey = found->second;
  return true;
}

TKeyId InternKey(std::u16string_view pText) {
  TKeyId key = 0;
  if (FindInternedKey(pText, key)) return key;
  TKeyTable& table = Table();
  TExclusiveLock lock(table.fLock);
  auto found = table.fKeys.find(pText);  // another thread may have been first
  if (found != table.fKeys.end()) return found->second;
  key = static_cast<TKeyId>(table.fTexts.size());
  table.fKeys.emplace(table.fTexts.emplace_back(pText), key);
  return key;
}

const std::u16string& TextOfKey(TKeyId pKey) {
  TKeyTable& table = Table();
  TSharedLock lock(table.fLock);
  return table.fTexts[pKey];
}

}  // namespace Vantrel
