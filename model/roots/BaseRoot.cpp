#include "model/roots/BaseRoot.h"

namespace Vantrel {

TBaseRoot::TBaseRoot(std::u16string pPath, char16_t pDelimiter)
    : fPath(std::move(pPath)),
      fPathDelimiter(pDelimiter),
      fDisposeToken(MakeRef<TDisposeToken>()),
      fObservers(MakeRef<TChangeQueues>()),
      fTitle(fPath) {}

std::u16string TBaseRoot::GetTitle() const {
  TCriticalSectionLock lock(fTitleLock);
  return fTitle;
}

void TBaseRoot::SetTitle(std::u16string_view pTitle) {
  TCriticalSectionLock lock(fTitleLock);
  fTitle = pTitle;
}

TMetaDataValue TBaseRoot::GetValue(TColumn pColumn) const {
  if (pColumn == TColumn::mdName) return GetTitle();
  if (pColumn == TColumn::mdFullPath) return fPath;
  TRef<IFolderData> top = GetTopFolder();
  return top ? top->GetValue(pColumn) : TMetaDataValue();
}

}  // namespace Vantrel
