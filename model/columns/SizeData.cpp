#include "model/columns/SizeData.h"

#include <type_traits>

namespace Vantrel {

namespace {

std::u16string CountText(int64_t pCount, std::u16string_view pOne, std::u16string_view pMany) {
  std::u16string text = FormatValue(TColumn::mdFiles, pCount, {});
  text += u' ';
  text += pCount == 1 ? pOne : pMany;
  return text;
}

}  // namespace

TMetaDataValue ValueOfSizes(const TSizeValues& pValues, TColumn pColumn) {
  switch (pColumn) {
    case TColumn::mdSize:
      return pValues.fSize;
    case TColumn::mdAllocated:
      return pValues.fAllocated;
    case TColumn::mdFiles:
      return pValues.fFiles;
    case TColumn::mdFolders:
      return pValues.fFolders;
    case TColumn::mdItems:
      return pValues.fFiles + pValues.fFolders;
    case TColumn::mdCompression:
      return static_cast<int64_t>(pValues.fCompression);
    case TColumn::mdAverageFileSize:
      if (pValues.fFiles == 0) return {};
      return pValues.fSize / pValues.fFiles;
    default:
      return {};
  }
}

TMetaDataValue ValueOfChange(const TChange& pChange, TColumn pColumn) {
  const int64_t growth = pChange.fNow.fSize - pChange.fThen.fSize;
  switch (pColumn) {
    case TColumn::mdSizeChange:
      return growth;
    case TColumn::mdSizeChangePercent:
      if (pChange.fThen.fSize == 0) return {};
      return static_cast<double>(growth) / static_cast<double>(pChange.fThen.fSize);
    case TColumn::mdFileChange:
      return pChange.fNow.fFiles - pChange.fThen.fFiles;
    case TColumn::mdAllocatedChange:
      return pChange.fNow.fAllocated - pChange.fThen.fAllocated;
    case TColumn::mdChangeState:
      if (pChange.fIsGone) return u"gone";
      return pChange.fIsNew ? TMetaDataValue(u"new") : TMetaDataValue();
    default:
      return {};
  }
}

template <class TInterface>
void TBasicSizeDataOf<TInterface>::Assign(const IBasicSizeData& pSource) {
  fValues = {};
  fValues.fSize = pSource.GetSize();
  fValues.fAllocated = pSource.GetAllocated();
  fValues.fFiles = pSource.GetFiles();
  if constexpr (std::is_same_v<TInterface, ISizeData>) {
    if (const auto* full = dynamic_cast<const ISizeData*>(&pSource)) {
      fValues.fFolders = full->GetFolders();
      fValues.fCompression = full->GetCompression();
    }
  }
}

template <class TInterface>
std::u16string TBasicSizeDataOf<TInterface>::ToString() const {
  std::u16string text = FormatValue(TColumn::mdSize, fValues.fSize, {});
  text += u" (" + FormatValue(TColumn::mdAllocated, fValues.fAllocated, {}) + u" allocated), ";
  text += CountText(fValues.fFiles, u"file", u"files");
  if constexpr (std::is_same_v<TInterface, ISizeData>) {
    text += u", " + CountText(fValues.fFolders, u"folder", u"folders");
  }
  return text;
}

template <class TInterface>
TMetaDataValue TBasicSizeDataOf<TInterface>::GetValue(TColumn pColumn) const {
  if constexpr (!std::is_same_v<TInterface, ISizeData>) {
    // A record without folders and compression has no value in these columns.
    if (pColumn == TColumn::mdFolders || pColumn == TColumn::mdCompression) return {};
  }
  return ValueOfSizes(fValues, pColumn);
}

template class TBasicSizeDataOf<IBasicSizeData>;
template class TBasicSizeDataOf<ISizeData>;

}  // namespace Vantrel
