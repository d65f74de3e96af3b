#include "automation/actions/PictureAction.h"

#include <cmath>
#include <utility>

#include "automation/actions/HistoryTasks.h"
#include "export/history/HistoryDatabase.h"
#include "export/pictures/PNGEncoder.h"
#include "export/pictures/SVGWriter.h"
#include "export/pictures/TreemapDrawing.h"
#include "platform/files/Paths.h"
#include "platform/text/Text.h"
#include "presentation/charts/ChartSources.h"
#include "presentation/treemap/SizeArrayPresenters.h"
#include "presentation/treemap/TreemapPresenters.h"
#include "presentation/treemap/TreemapWorker.h"

namespace Vantrel::PostScanActions {

using namespace Charts;
using enum TPictureSubject;

namespace {

constexpr std::u16string_view kBitmapExtension = u".png";

std::u16string_view TemporaryNameOf(const TPictureRequest& pRequest) {
  switch (pRequest.fSubject) {
    case psTreemap:
      return u"Treemap.svg";
    case psFolders:
      return u"Folders.svg";
    case psExtensions:
      return u"Extensions.svg";
    case psFileTypes:
      return u"FileTypes.svg";
    case psUsers:
      return u"Owners.svg";
    case psFileAges:
      return u"FileAges.svg";
    default:
      return u"History.svg";
  }
}

// Folders have several levels, which only rings show. Ages have an order, which columns show best.
TChartForm UsualFormOf(TPictureSubject pSubject) {
  if (pSubject == psFolders || pSubject == psFileTypes) return TChartForm::cfRing;
  return pSubject == psFileAges ? TChartForm::cfColumn : TChartForm::cfBar;
}

TChartData DataOf(IHierarchicalRoot& pRoot, TPictureSubject pSubject) {
  constexpr int kLevels = 4;
  switch (pSubject) {
    case psExtensions:
      return ExtensionsData(pRoot);
    case psFileTypes:
      return FileTypesData(pRoot);
    case psUsers:
      return OwnersData(pRoot);
    case psFileAges:
      return FileAgesData(pRoot);
    default:
      return FoldersData(pRoot, kLevels);
  }
}

TRef<Treemap::ITreemapPresenter> PresenterOf(IHierarchicalRoot& pRoot, const TGlobalOptions& pOptions,
                                             TRef<IFolderData> pTop) {
  using namespace Treemap;
  const TColumn column = pRoot.GetScanConfiguration()->GetShareBasis();
  switch (pOptions.TreemapOf) {
    case TTreemapSource::tsExtensions:
      return MakeRef<TExtensionSizeArrayMapPresenter>(*pTop, column);
    case TTreemapSource::tsOwners:
      return MakeRef<TUserSizeArrayMapPresenter>(*pTop, column);
    default:
      break;
  }
  TTreeMapOptions options;
  options.fValueColumn = column;
  options.fScheme = static_cast<TTreemapColorScheme>(pOptions.TreemapColors);
  return MakeRef<TTreeMapChartBasePresenter>(std::move(pTop), std::move(options));
}

static_assert(static_cast<int>(Treemap::TTreemapColorScheme::csGrowth) == static_cast<int>(TTreemapColors::tcGrowth) &&
                  static_cast<int>(Treemap::TTreemapColorScheme::csDepth) == static_cast<int>(TTreemapColors::tcDepth),
              "both have the same order");

}  // namespace

TChartType ChartTypeOf(TChartForm pForm) {
  switch (pForm) {
    case TChartForm::cfColumn:
      return TChartType::ctColumn;
    case TChartForm::cfPie:
      return TChartType::ctPie;
    case TChartForm::cfRing:
      return TChartType::ctRing;
    default:
      return TChartType::ctBar;
  }
}

TChartType ChartTypeOf(THistoryChartForm pForm) {
  return pForm == THistoryChartForm::hfLine ? TChartType::ctLine : TChartType::ctArea;
}

TChartSettings ChartSettings(const TGlobalOptions& pOptions) {
  TChartSettings settings;
  settings.fWidth = pOptions.PictureSize.fWidth;
  settings.fHeight = pOptions.PictureSize.fHeight;
  settings.fMostItems = static_cast<size_t>(pOptions.ChartItems) + 1;  // and the rest
  settings.fDark = pOptions.DarkPictures;
  settings.fFormat.fSizeUnit = pOptions.SizeUnit;
  settings.fFormat.fDecimalUnits = pOptions.DecimalUnits;
  return settings;
}

Drawing::TDrawing HistoryPicture(const TGlobalOptions& pOptions, const std::u16string& pPath,
                                 std::u16string_view pPattern) {
  const std::u16string database = CommandLine::HistoryFile(pOptions);
  TTimeSeries series;
  series.fTitle = u"History of " + pPath;
  if (PathExists(database))
    for (const History::THistoryEntry& entry :
         History::THistoryDatabaseReaderWriter().ReadRootHistoryData(database, pPath, pPattern))
      series.fPoints.push_back({entry.fDate, entry.fSize, entry.fUnreadFolders > 0});
  if (series.fPoints.empty())
    throw EInvalidOperation("The history of " + ToQuotedDisplay(pPath) +
                            " cannot be drawn: no scan of it is recorded; scan it with --record-history");
  return MakeChart(ChartTypeOf(pOptions.HistoryChartType), series, ChartSettings(pOptions),
                   Drawing::TEstimatedTextMeasure());
}

void WritePicture(const Drawing::TDrawing& pDrawing, TExportFile& pFile, std::u16string_view pName,
                  Pictures::IPictureRenderer* pRenderer) {
  if (pRenderer && HasExtension(pName, kBitmapExtension))
    pFile.Write(Pictures::EncodePNG(static_cast<int>(pDrawing.fWidth), static_cast<int>(pDrawing.fHeight),
                                    pRenderer->Render(pDrawing)));
  else
    Pictures::WriteSVG(pDrawing, pFile);
  pFile.Commit();
}

TCustomPresenterPostScanAction::TCustomPresenterPostScanAction(const TGlobalOptions& pOptions, TPictureRequest pRequest,
                                                               TExportRun pRun, TWriteNote pWriteNote,
                                                               Pictures::IPictureRenderer* pRenderer)
    : fOptions(pOptions),
      fRequest(std::move(pRequest)),
      fRun(std::move(pRun)),
      fWriteNote(std::move(pWriteNote)),
      fRenderer(pRenderer) {}

void TCustomPresenterPostScanAction::Prepare() {
  if (fRequest.fFile.empty()) {
    fRequest.fFile = fTemporary.emplace().Add(std::u16string(TemporaryNameOf(fRequest)));
    return;
  }
  ProbeTarget(fRequest.fFile);
  if (!fRenderer && HasExtension(fRequest.fFile, kBitmapExtension))
    fWriteNote(
        "The PNG file gets no captions and no legend: this program has no fonts, and the window program, which has, is "
        "not there. SVG files have both.");
}

void TCustomPresenterPostScanAction::Execute(IHierarchicalRoot& pRoot, bool, bool) {
  CheckNotCancelled(WasStopped(pRoot), fRequest.fFile);
  const std::u16string path =
      fRun.fSeveralRoots ? WithPartInName(fRequest.fFile, u"_" + fNames.Next(NameForFiles(pRoot))) : fRequest.fFile;
  TExportFile file(path, fRun.fIsCancelled, fRun.fSeveralRoots);
  if (fRequest.fSubject == psTreemap)
    DrawTreemap(pRoot, file);
  else
    WritePicture(DrawChart(pRoot), file, fRequest.fFile, fRenderer);
  fWritten.push_back(path);
  // Names made from the first one are temporary, too.
  if (fTemporary) fTemporary->Add(FileNameOfPath(path, NativePathDelimiter()));
}

void TCustomPresenterPostScanAction::DrawTreemap(IHierarchicalRoot& pRoot, TExportFile& pFile) {
  using namespace Treemap;
  const bool isBitmap = !fRenderer && HasExtension(fRequest.fFile, kBitmapExtension);  // without text
  TTreemapSettings settings;
  settings.fWidth = fOptions.PictureSize.fWidth;
  settings.fHeight = fOptions.PictureSize.fHeight;
  settings.fDark = fOptions.DarkPictures;
  settings.fFormat.fSizeUnit = fOptions.SizeUnit;
  settings.fFormat.fDecimalUnits = fOptions.DecimalUnits;
  settings.fFlags.Set(TTreemapFlag::tmfExporting);
  if (isBitmap)  // room for headings would stay empty
    for (const TTreemapFlag flag : {TTreemapFlag::tmfShowRoot, TTreemapFlag::tmfShowNonLeafCaptions,
                                    TTreemapFlag::tmfShowLeafCaptions, TTreemapFlag::tmfLegend})
      settings.fFlags.Set(flag, false);
  const TRef<IFolderData> top = pRoot.GetTopFolder();
  if (!top) throw EInvalidOperation("There is nothing to draw of " + ToQuotedDisplay(pRoot.GetPath()));
  const TRef<ITreemapPresenter> presenter = PresenterOf(pRoot, fOptions, top);
  const Drawing::TEstimatedTextMeasure measure;
  const double height = settings.fHeight;
  if (!isBitmap)
    settings.fHeight -= static_cast<int32_t>(
        std::ceil(Pictures::LegendHeight(presenter->GetLegend(), settings.fWidth, height, measure)));
  const auto picture = ComputeTreemap(*presenter, settings, nullptr);
  if (isBitmap) {
    pFile.Write(Pictures::EncodePNG(picture->fWidth, picture->fHeight, picture->fPixels));
    return pFile.Commit();
  }
  WritePicture(Pictures::DrawingOfTreemap(*picture, height, pRoot.GetTitle(), Drawing::ThemeOf(settings.fDark),
                                          settings.fFormat, measure),
               pFile, fRequest.fFile, fRenderer);
}

Drawing::TDrawing TCustomPresenterPostScanAction::DrawChart(IHierarchicalRoot& pRoot) const {
  if (fRequest.fSubject == psHistory) return HistoryPicture(fOptions, pRoot.GetTitle(), History::HistoryPattern(pRoot));
  TChartForm form = fRequest.fForm.value_or(fOptions.ChartType);
  if (form == TChartForm::cfAutomatic) form = UsualFormOf(fRequest.fSubject);
  return MakeChart(ChartTypeOf(form), DataOf(pRoot, fRequest.fSubject), ChartSettings(fOptions),
                   Drawing::TEstimatedTextMeasure());
}

}  // namespace Vantrel::PostScanActions
