#pragma once

// A list as data: columns, rows of typed values, what each row stands for, and sorting.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/columns/MetaData.h"
#include "model/statistics/ColorPalette.h"
#include "model/tree/HierarchicalInterfaces.h"

namespace Vantrel::Presentation {

// Sizes, counts and shares are aligned right, all else left.
enum class TAlignment : uint8_t { alLeft, alRight };
TAlignment AlignmentOf(TColumn pColumn);

// A column of a list. The catalogue's column gives the kind of the values and how they are formatted. The caption may
// differ from the catalogue's.
struct TListColumn {
  std::u16string fCaption;
  TColumn fColumn;
};

// A row and what it stands for.
struct TListRow {
  std::vector<TMetaDataValue> fValues;  // one raw value per column; the first one names the row
  // The row's identity in its list. It stays the same when the list is filled again, so a view can keep its selection:
  // the full path of a file, folder or drive, an extension, an owner, a group's caption, an age interval, a scan's ID.
  std::u16string fKey{};
  TRef<IHierarchicalObject> fNode{};  // the folder in the tree that the row leads to, if any
  std::optional<TColor> fColor{};     // of what the row stands for, in every chart
};

// The content of a list at one moment. It stays as it is; its source makes a new one. Filling a list while a scan runs
// is allowed, on any thread.
struct TList {
  std::u16string fTitle;  // "Largest files of /data"
  std::vector<TListColumn> fColumns;
  std::vector<TListRow> fRows;  // in the list's own order until they are sorted
};

// The position of the first column that shows the catalogue's column, such as mdAllocated.
std::optional<size_t> FindListColumn(const TList& pList, TColumn pColumn);

// Sorts the rows by a column's raw values. Rows with equal values keep their order, so sorting by one column after the
// other sorts by both. Missing values come first, or last in descending order.
void SortRows(TList& pList, size_t pColumn, bool pDescending);

}  // namespace Vantrel::Presentation
