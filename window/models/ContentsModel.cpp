#include "window/models/ContentsModel.h"

namespace Vantrel::Window {

void TContentsModel::SetFolder(TRef<IHierarchicalRoot> pRoot, TRef<IFolderData> pFolder) {
  if (Top().fFolder == pFolder && Top().fRoot == pRoot) return;
  Forget(Top());
  DropChildren(Top());
  Top().fMostRows = kFirstRows;
  Top().fNotBefore = 0;
  Top().fRoot = std::move(pRoot);
  Top().fFolder = std::move(pFolder);
  Fetch(Top());
}

void TContentsModel::Refresh() {
  RenewInTurn(Top());
}

bool TContentsModel::hasChildren(const QModelIndex& pParent) const {
  return !pParent.isValid() && !Top().fItems.empty();
}

}  // namespace Vantrel::Window
