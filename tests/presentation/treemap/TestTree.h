#pragma once

// Trees of numbers that stand for the elements of treemaps.

#include <atomic>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "platform/text/Text.h"
#include "presentation/treemap/TreemapPresenters.h"

namespace Vantrel::Treemap::Testing {

// An element: its children's values need not sum up to its own, as in a tree that is just being scanned.
struct TTestNode {
  int64_t fValue = 0;
  std::vector<std::unique_ptr<TTestNode>> fChildren;

  TTestNode& Add(int64_t pValue) {
    fChildren.push_back(std::make_unique<TTestNode>());
    fChildren.back()->fValue = pValue;
    return *fChildren.back();
  }
  // One child with one child …, all of the same value. Its end is destroyed without recursion.
  static std::unique_ptr<TTestNode> Chain(int pLevels, int64_t pValue) {
    auto node = std::make_unique<TTestNode>();
    node->fValue = pValue;
    while (pLevels-- > 0) {
      auto parent = std::make_unique<TTestNode>();
      parent->fValue = pValue;
      parent->fChildren.push_back(std::move(node));
      node = std::move(parent);
    }
    return node;
  }
  ~TTestNode() {
    while (!fChildren.empty()) {
      std::unique_ptr<TTestNode> child = std::move(fChildren.back());
      fChildren.pop_back();
      for (auto& grandchild : child->fChildren) fChildren.push_back(std::move(grandchild));
      child->fChildren.clear();
    }
  }
};

// Values of very different sizes, zeros among them.
inline void FillRandomly(TTestNode& pNode, std::mt19937& pRandom, int pDepth) {
  const int children = static_cast<int>(pRandom() % 12);
  for (int i = 0; i < children; ++i) {
    const int64_t value = pRandom() % 6 == 0 ? 0 : static_cast<int64_t>(pRandom() % 1000) << (pRandom() % 10);
    TTestNode& child = pNode.Add(value);
    if (pDepth > 0 && pRandom() % 2 == 0) {
      FillRandomly(child, pRandom, pDepth - 1);
      child.fValue = 0;
      for (const auto& grandchild : child.fChildren) child.fValue += grandchild->fValue;
    }
  }
}

class TTestElement : public TTreeMapElement {
 public:
  TTestElement(TTreemapElementID pID, const std::u16string& pName) : TTreeMapElement(pID, pName, {}) {}
};

// Calls a function whenever an element is opened.
struct TTestWatch {
  std::atomic<int> fOpened{0};
  std::atomic<int> fTops{0};
  std::function<void()> fOnOpen;
  std::function<void()> fOnTop;
};

class TTestContainer : public TInterfaced<ITreemapContainer> {
 public:
  TTestContainer(std::vector<const TTestNode*> pNodes, TTreemapElementID pID, std::shared_ptr<TTestWatch> pWatch)
      : fNodes(std::move(pNodes)), fID(pID), fWatch(std::move(pWatch)) {}

  void AppendChildren(std::vector<TTreemapChild>& pChildren) const override {
    for (uint32_t i = 0; i < fNodes.size(); ++i) pChildren.push_back({fNodes[i]->fValue, i});
  }
  bool ComesBefore(uint32_t pItem, uint32_t pOther) const override { return GetCaption(pItem) < GetCaption(pOther); }
  TTreemapLook GetLook(uint32_t pItem, int32_t, TColorLookup&) const override {
    const TTreemapElementID id = ChildID(fID, GetCaption(pItem));
    return {id, static_cast<TColor>(static_cast<uint64_t>(id) & 0xFFFFFF), fNodes[pItem]->fChildren.size()};
  }
  TRef<const ITreemapContainer> Open(uint32_t pItem) const override {
    ++fWatch->fOpened;
    if (fWatch->fOnOpen) fWatch->fOnOpen();
    std::vector<const TTestNode*> nodes;
    for (const auto& child : fNodes[pItem]->fChildren) nodes.push_back(child.get());
    return MakeRef<TTestContainer>(std::move(nodes), ChildID(fID, GetCaption(pItem)), fWatch);
  }
  std::u16string GetCaption(uint32_t pItem) const override { return FromUtf8("n" + std::to_string(pItem)); }
  TRef<TTreeMapElement> CreateElement(uint32_t pItem) const override {
    return MakeRef<TTestElement>(ChildID(fID, GetCaption(pItem)), GetCaption(pItem));
  }
  const TTestNode& Node(uint32_t pItem) const { return *fNodes[pItem]; }
  size_t Count() const { return fNodes.size(); }

 private:
  const std::vector<const TTestNode*> fNodes;
  const TTreemapElementID fID;
  const std::shared_ptr<TTestWatch> fWatch;
};

class TTestPresenter : public TInterfaced<ITreemapPresenter> {
 public:
  explicit TTestPresenter(const TTestNode& pTop) : fTop(pTop) {}
  TRef<const ITreemapContainer> GetTop(const TTreemapSettings&) const override {
    ++fWatch->fTops;
    if (fWatch->fOnTop) fWatch->fOnTop();
    return MakeRef<TTestContainer>(std::vector<const TTestNode*>{&fTop}, TTreemapElementID::None, fWatch);
  }
  const TTreemapColoring& GetColoring() const override { return fColoring; }
  std::vector<TTreemapLegendItem> GetLegend() const override { return {}; }

  const std::shared_ptr<TTestWatch> fWatch = std::make_shared<TTestWatch>();

 private:
  const TTestNode& fTop;
  const TTreemapColoring fColoring;
};

}  // namespace Vantrel::Treemap::Testing
