#pragma once

// The cache of one node's formatted texts.

#include <string>
#include <utility>
#include <vector>

#include "model/columns/MetaData.h"
#include "platform/threads/SlimReaderWriterLock.h"

namespace Vantrel {

// Formatted column texts of one node. A shown row has few columns, so a short list is enough. Any thread.
class TMetaDataCache : public TInterfaced<IMetaDataCache> {
 public:
  bool Find(TColumn pColumn, std::u16string& pText) const override;
  void Store(TColumn pColumn, const std::u16string& pText) override;
  void Clear() override;

 private:
  mutable TSlimReaderWriterLock fLock;
  std::vector<std::pair<TColumn, std::u16string>> fTexts GUARDED_BY(fLock);
};

}  // namespace Vantrel
