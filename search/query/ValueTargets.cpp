#include "search/query/ValueTargets.h"

namespace Vantrel::Search {

std::u16string KeywordOf(const TValueTarget& pTarget) {
  if (const auto* property = std::get_if<TFileProperty>(&pTarget)) {
    switch (*property) {
      case TFileProperty::fpCreator:
        return u"creator:";
      case TFileProperty::fpKeywords:
        return u"keyword:";
      case TFileProperty::fpDateTaken:
        return u"datetaken:";
      default:
        return u"mdata:" + std::u16string(FilePropertyInfo(*property).fName) + u":";
    }
  }
  const TColumn column = std::get<TColumn>(pTarget);
  switch (column) {
    case TColumn::mdName:
      return u"name:";
    case TColumn::mdExtension:
      return u"extension:";
    case TColumn::mdOwner:
      return u"owner:";
    case TColumn::mdAttributes:
      return u"attribute:";
    case TColumn::mdSize:
      return u"size:";
    case TColumn::mdAllocated:
      return u"allocated:";
    case TColumn::mdLastAccess:
      return u"accessed:";
    case TColumn::mdCreation:
      return u"created:";
    case TColumn::mdLastChange:
      return u"modified:";
    default:
      return u"mdata:" + std::u16string(ColumnInfo(column).fName) + u":";
  }
}

}  // namespace Vantrel::Search
