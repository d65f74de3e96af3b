#pragma once

// The action that draws a root as a picture: a treemap or a chart.

#include <optional>
#include <string>
#include <vector>

#include "automation/actions/ExportFile.h"
#include "automation/actions/FileExportAction.h"
#include "automation/actions/PostScanActions.h"
#include "automation/commandline/CommandLineState.h"
#include "export/pictures/PictureRenderer.h"
#include "platform/files/Folders.h"
#include "presentation/charts/Charts.h"

namespace Vantrel::PostScanActions {

using Vantrel::CommandLine::TPictureRequest;
using Vantrel::CommandLine::TPictureSubject;

// The chart of a form. Automatic stands for bars.
Charts::TChartType ChartTypeOf(TChartForm pForm);
Charts::TChartType ChartTypeOf(THistoryChartForm pForm);
// The settings of charts that the options ask for.
Charts::TChartSettings ChartSettings(const TGlobalOptions& pOptions);
// The scans of a path in the history as a picture. EInvalidOperation when the history holds none.
Drawing::TDrawing HistoryPicture(const TGlobalOptions& pOptions, const std::u16string& pPath,
                                 std::u16string_view pPattern);
// Writes a drawing: as PNG if the file's name asks for it and there is a renderer, else as SVG.
void WritePicture(const Drawing::TDrawing& pDrawing, TExportFile& pFile, std::u16string_view pName,
                  Pictures::IPictureRenderer* pRenderer);

// Draws each root when its scan has finished. Each of several roots gets its own file with the root's name in it. Files
// replace their targets when everything is written. An error is an exception that names the file.
class TCustomPresenterPostScanAction : public TBasePostScanAction {
 public:
  using TWriteNote = std::function<void(std::string_view)>;
  // The options and the renderer must outlive the action. Without a name, the file is a temporary one that the action
  // deletes at its end. pWriteNote gets what the user should know about the picture. Without a renderer, treemaps in
  // PNG files have no text.
  TCustomPresenterPostScanAction(const TGlobalOptions& pOptions, TPictureRequest pRequest, TExportRun pRun,
                                 TWriteNote pWriteNote, Pictures::IPictureRenderer* pRenderer = nullptr);

  void Prepare() override;
  void Execute(IHierarchicalRoot& pRoot, bool pReplaceExisting, bool pReportErrors) override;
  std::u16string GetInformation() const override { return u"Picture to \"" + fRequest.fFile + u"\""; }
  uint32_t GetFlags() const override { return kMayClose; }
  std::vector<std::u16string> GetAttachments() const override { return fWritten; }
  std::vector<std::u16string> GetWrittenFiles() const override {
    return fTemporary ? std::vector<std::u16string>() : fWritten;
  }

 private:
  void DrawTreemap(IHierarchicalRoot& pRoot, TExportFile& pFile);
  Drawing::TDrawing DrawChart(IHierarchicalRoot& pRoot) const;

  const TGlobalOptions& fOptions;
  TPictureRequest fRequest;
  const TExportRun fRun;
  const TWriteNote fWriteNote;
  Pictures::IPictureRenderer* const fRenderer;
  std::optional<TTemporaryFiles> fTemporary;  // none: the file has its own target
  TNamesOfRoots fNames;
  std::vector<std::u16string> fWritten;
};

}  // namespace Vantrel::PostScanActions
