#include "presentation/treemap/SampleData.h"

#include <fmt/format.h>

#include <array>
#include <vector>

#include "platform/system/Errors.h"

namespace Vantrel::Treemap {

namespace {

constexpr int32_t kFolder = 0;
constexpr int32_t kAudio = 1;
constexpr int32_t kVideo = 2;
constexpr int32_t kImage = 3;
constexpr int32_t kApplication = 4;
constexpr int32_t kContainer = 5;
constexpr int32_t kDevelopment = 6;
constexpr int32_t kVirtual = 7;
constexpr int32_t kOffice = 8;
constexpr int32_t kSystem = 9;
constexpr int32_t kDatabase = 10;
constexpr int32_t kTemporary = 11;
constexpr int32_t kText = 12;
constexpr int32_t kMail = 16;
constexpr int kGroups = 18;

constexpr TInitSampleData kSample[] = {
    {u"Disk", 0, kFolder, 4},
    {u"Users", 0, kFolder, 2},
    {u"Anna", 0, kFolder, 5},
    {u"Videos", 0, kFolder, 4},
    {u"Holiday.mp4", 9200, kVideo, 0},
    {u"Birthday.mov", 5100, kVideo, 0},
    {u"Snow.mp4", 2300, kVideo, 0},
    {u"Cut.tmp", 1100, kTemporary, 0},
    {u"Pictures", 0, kFolder, 5},
    {u"Coast.raw", 1900, kImage, 0},
    {u"Panorama.tif", 1400, kImage, 0},
    {u"Garden.raw", 1200, kImage, 0},
    {u"Cat.jpg", 300, kImage, 0},
    {u"Dog.jpg", 250, kImage, 0},
    {u"Music", 0, kFolder, 3},
    {u"Concert.flac", 2100, kAudio, 0},
    {u"Choir.flac", 800, kAudio, 0},
    {u"Radio.mp3", 400, kAudio, 0},
    {u"Documents", 0, kFolder, 3},
    {u"Report.pdf", 700, kOffice, 0},
    {u"Accounts.xlsx", 500, kOffice, 0},
    {u"Notes.txt", 60, kText, 0},
    {u"Mail.pst", 3600, kMail, 0},
    {u"Bert", 0, kFolder, 3},
    {u"Machines", 0, kFolder, 2},
    {u"Server.vmdk", 12000, kVirtual, 0},
    {u"Test.vmdk", 6400, kVirtual, 0},
    {u"Source", 0, kFolder, 3},
    {u"Program.pdb", 2800, kDevelopment, 0},
    {u"Library.lib", 1700, kDevelopment, 0},
    {u"Main.cpp", 40, kDevelopment, 0},
    {u"Backup.zip", 7300, kContainer, 0},
    {u"Programs", 0, kFolder, 3},
    {u"Editor.exe", 2600, kApplication, 0},
    {u"Game.exe", 8700, kApplication, 0},
    {u"Setup.msi", 900, kSystem, 0},
    {u"System", 0, kFolder, 3},
    {u"Drivers.sys", 4200, kSystem, 0},
    {u"Index.db", 1600, kDatabase, 0},
    {u"Update.cab", 2900, kContainer, 0},
    {u"Swap.tmp", 8000, kTemporary, 0},
};
constexpr size_t kCount = std::size(kSample);

class TSampleElement : public TTreeMapElement {
 public:
  TSampleElement(TTreemapElementID pID, std::u16string_view pName, const TSizeValues& pValues)
      : TTreeMapElement(pID, std::u16string(pName), pValues) {}
};

// Adds an entry with all that is beneath it to a list. Returns the number of entries. The tree has four levels, so
// recursion does no harm.
size_t AddEntry(size_t pIndex, TTreemapElementID pParent, TElementList& pList, TSizeValues& pSum) {
  const TInitSampleData& entry = kSample[pIndex];
  const TTreemapElementID id = ChildID(pParent, entry.fName);
  size_t count = 1;
  TSizeValues values;
  values.fSize = values.fAllocated = entry.fSize << 20;
  values.fFiles = entry.fImageIndex == kFolder ? 0 : 1;
  auto inside = MakeRef<TElementList>();
  for (int32_t i = 0; i < entry.fChildCount; ++i) count += AddEntry(pIndex + count, id, *inside, values);
  pSum += values;
  pList.Add(MakeRef<TSampleElement>(id, entry.fName, values), ColorOfFileTypeGroup(entry.fImageIndex - 1, kGroups),
            values.fSize, entry.fChildCount > 0 ? inside : nullptr);
  return count;
}

}  // namespace

TSampleData::TSampleData() {
  auto top = MakeRef<TElementList>();
  TSizeValues sum;
  AddEntry(0, TTreemapElementID::None, *top, sum);
  fTop = std::move(top);
}

size_t TSampleData::Count() {
  return kCount;
}

const TInitSampleData& TSampleData::GetSampleData(size_t pIndex) {
  if (pIndex >= kCount)
    throw EInvalidArgumentValue(fmt::format("TSampleData.GetSampleData: no entry {} (0..{})", pIndex, kCount - 1));
  return kSample[pIndex];
}

}  // namespace Vantrel::Treemap
