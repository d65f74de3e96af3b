#include "export/json/JSONLists.h"

#include <optional>
#include <string>
#include <vector>

namespace Vantrel::Exporting {

using Presentation::TList;
using Presentation::TListColumn;
using Presentation::TListRow;

namespace {

std::string ListHead(const TList& pList, std::string_view pKind, const IHierarchicalRoot* pRoot) {
  std::string text;
  JSON::TMembers head = JSON::BeginHead(text, pKind);
  head.Add("title", pList.fTitle);
  if (pRoot) {
    head.Add("path", pRoot->GetPath());
    head.AddDate("date", pRoot->GetScanTimeStamp());
    head.AddBoolean("incomplete", (pRoot->GetState() & (rsCancelled | rsHasErrors)) != 0);
  }
  head.End();
  return text;
}

std::string KeyOfColumn(const TListColumn& pColumn) {
  const TColumnInfo& info = ColumnInfo(pColumn.fColumn);
  return pColumn.fCaption == info.fCaption ? JSON::KeyOf(pColumn.fColumn) : JSON::KeyOfCaption(pColumn.fCaption);
}

}  // namespace

void WriteListAsJSON(const TListInParts& pParts, std::string_view pKind, const IHierarchicalRoot* pRoot,
                     JSON::TLayout pLayout, IByteSink& pSink) {
  std::optional<JSON::TDocument> document;
  std::vector<std::string> keys;
  std::string rows;
  pParts([&](const TList& pPart) {
    if (!document) {
      document.emplace(pSink, pLayout, ListHead(pPart, pKind, pRoot));
      for (const TListColumn& column : pPart.fColumns) keys.push_back(KeyOfColumn(column));
    }
    rows.clear();
    for (const TListRow& row : pPart.fRows) {
      rows += document->RowBegin();
      JSON::TMembers members(rows);
      for (size_t i = 0; i < row.fValues.size(); ++i) members.AddValue(keys[i], row.fValues[i]);
      members.End();
    }
    document->WriteRows(rows);
    return true;
  });
  document->End();
}

void WriteListAsJSON(const TList& pList, std::string_view pKind, const IHierarchicalRoot* pRoot, JSON::TLayout pLayout,
                     IByteSink& pSink) {
  WriteListAsJSON([&](const TTakeListPart& pTake) { return pTake(pList); }, pKind, pRoot, pLayout, pSink);
}

}  // namespace Vantrel::Exporting
