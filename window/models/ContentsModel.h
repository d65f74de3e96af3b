#pragma once

// The model of one folder's contents: its sub-folders and its files side by side.

#include "window/models/EntriesModel.h"

namespace Vantrel::Window {

class TContentsModel : public TEntriesModel {
  Q_OBJECT
 public:
  explicit TContentsModel(QObject* pParent = nullptr) : TEntriesModel(pParent) {}

  // Shows another folder, or nothing.
  void SetFolder(TRef<IHierarchicalRoot> pRoot, TRef<IFolderData> pFolder);
  // Asks for the contents again.
  void Refresh();
  const TRef<IFolderData>& Folder() const { return Top().fFolder; }

  TRef<IHierarchicalRoot> RootAt(const QModelIndex&) const override { return Top().fRoot; }
  bool hasChildren(const QModelIndex& pParent = {}) const override;
  bool canFetchMore(const QModelIndex&) const override { return false; }

 protected:
  bool ListsFileGroups() const override { return false; }
};

}  // namespace Vantrel::Window
