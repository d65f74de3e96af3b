#pragma once

// Finds the rows of an earlier list of children in a newer one.

#include <string_view>
#include <vector>

#include "model/tree/FileTable.h"

namespace Vantrel::Window {

// What makes a row the same in another list of the same folder. Valid as long as what it was made of.
struct TRowName {
  enum class TKind : uint8_t { rkNode, rkGone, rkGoneFiles, rkFile, rkMore };
  TKind fKind;
  const void* fNode = nullptr;  // of a folder in the tree
  std::u16string_view fName;    // of a file, and of a folder that has gone
};

// A row for neither a folder nor a file stands for what is not listed.
TRowName NameOfRow(const IFolderData* pFolder, const TFileTable* pFiles, uint32_t pFile);

// For each earlier row its place in the newer list, or -1.
std::vector<int> MatchRows(const std::vector<TRowName>& pBefore, const std::vector<TRowName>& pAfter);

}  // namespace Vantrel::Window
