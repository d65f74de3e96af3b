#pragma once

// The elements of treemaps, and the containers that hand them to the layout.

#include <cstdint>
#include <string>
#include <vector>

#include "model/columns/SizeData.h"
#include "model/tree/HierarchicalInterfaces.h"
#include "presentation/treemap/TreemapTypes.h"

namespace Vantrel::Treemap {

// An element of a treemap, made on request for a caller that wants to know more about a tile. Its values are those of
// that moment.
class TTreeMapElement : public TInterfaced<IInterface> {
 public:
  // A file or folder of the tree. Its caption is its name; that of a top folder is its path.
  TTreeMapElement(TTreemapElementID pID, TRef<IHierarchicalElement> pNode);

  TTreemapElementID GetID() const { return fID; }
  const std::u16string& GetCaption() const { return fCaption; }
  const TSizeValues& GetValues() const { return fValues; }
  // The file or folder; nullptr for an element of another kind.
  const TRef<IHierarchicalElement>& GetNode() const { return fNode; }
  // Lines for a tooltip. The first names the element: the path of a file or folder, else the caption.
  virtual std::u16string GetHint(const TValueFormat& pFormat) const;

 protected:
  TTreeMapElement(TTreemapElementID pID, std::u16string pCaption, const TSizeValues& pValues);

 private:
  const TTreemapElementID fID;
  const TRef<IHierarchicalElement> fNode;
  const std::u16string fCaption;
  const TSizeValues fValues;
};

// The free space of a drive.
class TTreemapElementFreeSpace : public TTreeMapElement {
 public:
  static constexpr std::u16string_view kCaption = u"Free space";
  TTreemapElementFreeSpace(TTreemapElementID pID, int64_t pBytes);
  std::u16string GetHint(const TValueFormat& pFormat) const override;
};

// All files of one extension below a folder.
class TTreemapElementExtension : public TTreeMapElement {
 public:
  TTreemapElementExtension(TTreemapElementID pID, std::u16string pExtension, const TSizeValues& pValues)
      : TTreeMapElement(pID, std::move(pExtension), pValues) {}
};

// All files of one file-type group below a folder.
class TTreemapElementExtensionGroup : public TTreeMapElement {
 public:
  TTreemapElementExtensionGroup(TTreemapElementID pID, std::u16string pGroup, std::u16string pDescription,
                                const TSizeValues& pValues)
      : TTreeMapElement(pID, std::move(pGroup), pValues), fDescription(std::move(pDescription)) {}
  // Has the group's description as its second line.
  std::u16string GetHint(const TValueFormat& pFormat) const override;

 private:
  const std::u16string fDescription;
};

// All files of one owner below a folder.
class TTreemapElementUser : public TTreeMapElement {
 public:
  TTreemapElementUser(TTreemapElementID pID, std::u16string pUser, const TSizeValues& pValues)
      : TTreeMapElement(pID, std::move(pUser), pValues) {}
};

// One child of a container.
struct TTreemapChild {
  int64_t fValue = 0;
  uint32_t fItem = 0;  // the child's number inside its container
};

// What a picture needs to know about a child that gets a tile.
struct TTreemapLook {
  TTreemapElementID fID = TTreemapElementID::None;
  TColor fColor = 0;     // for a container, the mixed colour of what is inside
  size_t fChildren = 0;  // about how many there are inside; 0 for an element that cannot be opened
  bool fIsFreeSpace = false;
};

class TColorLookup;

// A snapshot of the children of one element, such as the sub-folders and files of a folder. It does not change while
// the tree does. Any thread.
class ITreemapContainer : public IInterface {
 public:
  // Appends all children, in any order. Values below 1 may be left out.
  virtual void AppendChildren(std::vector<TTreemapChild>& pChildren) const = 0;
  // The order of children of equal value: by name in code-unit order.
  virtual bool ComesBefore(uint32_t pItem, uint32_t pOther) const = 0;
  // pLayer is the child's depth; the top has 0. The lookup is the calling thread's own.
  virtual TTreemapLook GetLook(uint32_t pItem, int32_t pLayer, TColorLookup& pColors) const = 0;
  virtual TRef<const ITreemapContainer> Open(uint32_t pItem) const = 0;
  virtual std::u16string GetCaption(uint32_t pItem) const = 0;
  virtual TRef<TTreeMapElement> CreateElement(uint32_t pItem) const = 0;
};

}  // namespace Vantrel::Treemap
