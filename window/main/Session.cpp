#include "window/main/Session.h"

#include <algorithm>
#include <future>

#include "automation/actions/FileExportAction.h"
#include "automation/actions/HistoryTasks.h"
#include "automation/actions/PictureAction.h"
#include "export/history/HistoryDatabase.h"
#include "export/xml/OptionsFile.h"
#include "export/xml/XMLCompareReader.h"
#include "export/xml/XMLReader.h"
#include "model/roots/Storage.h"
#include "search/patterns/ExactPattern.h"
#include "search/patterns/PatternFilter.h"
#include "search/patterns/PatternList.h"
#include "window/main/ScanFollowUp.h"
#include "window/models/Background.h"
#include "window/models/ShownText.h"
#include "window/painting/PictureRenderer.h"

namespace Vantrel::Window {

// --- life ------------------------------------------------------------------------------------------------------------

TSession::TSession(TWindowStart pStart, QObject* pParent) : QObject(pParent), fStart(std::move(pStart)) {
  if (fStart.fCreateRoots) fRoots = fStart.fCreateRoots(fStart.fOptions);
}

TSession::~TSession() {
  for (const auto& job : fJobs) job->fCancelled = true;
  fFollowUp = nullptr;
  if (!fRoots) return;
  for (const TRef<IHierarchicalRoot>& root : fRoots->GetRoots()) root->CancelScan();
  // A target that hangs must not keep the program from ending.
  constexpr auto kPatience = std::chrono::seconds(3);
  auto ended = std::make_shared<std::promise<void>>();
  LongWork().start([roots = fRoots, ended] {
    roots->Dispose();
    ended->set_value();
  });
  ended->get_future().wait_for(kPatience);
}

std::u16string TSession::HistoryFile() const {
  return CommandLine::HistoryFile(*fStart.fOptions);
}

void TSession::Begin() {
  const bool hasWork = !fStart.fPaths.empty() || !fStart.fOpenFiles.empty();
  if (fStart.fQueueActions && hasWork) {
    fFollowUp = std::make_unique<TScanFollowUp>(fStart, *fRoots);
    connect(fFollowUp.get(), &TScanFollowUp::Failed, this, &TSession::Failed);
    connect(fFollowUp.get(), &TScanFollowUp::CloseWanted, this, &TSession::CloseWanted);
    fFollowUp->SetFindExpanded(fFindExpanded);
    if (!fFollowUp->Prepare()) return;
  }
  for (const std::u16string& file : fStart.fOpenFiles) OpenScanFile(file);
  for (const std::u16string& path : fStart.fPaths) StartScan(path, true);
  if (!fStart.fMessages.empty()) {
    QStringList lines;
    for (const std::string& line : fStart.fMessages) lines << FromUtf8Text(line);
    Q_EMIT Failed(tr("Command line"), lines.join(u'\n'));
  }
}

// pWork gets the job. pDone gets its outcome, unless the user stopped it.
template <class TWork, class TDone>
void TSession::RunJob(const QString& pTitle, TWork pWork, TDone pDone) {
  auto job = std::make_shared<TJob>();
  job->fTitle = pTitle;
  fJobs.push_back(job);
  Q_EMIT JobsChanged();
  RunInBackground(
      LongWork(), this, [job, work = std::move(pWork)]() mutable { return work(*job); },
      [this, job, pTitle, done = std::move(pDone)](auto pOutcome) {
        std::erase(fJobs, job);
        Q_EMIT JobsChanged();
        if (job->fCancelled) {
          Q_EMIT Told(tr("Stopped: %1").arg(pTitle));
        } else if (!pOutcome.fError.isEmpty()) {
          Q_EMIT Failed(pTitle, pOutcome.fError);
        } else {
          done(std::move(pOutcome.fValue));
        }
      });
}

// --- scans -----------------------------------------------------------------------------------------------------------

void TSession::Scan(const std::u16string& pPath) {
  StartScan(pPath, false);
}

TRef<IHierarchicalRoot> TSession::StartScan(const std::u16string& pPath, bool pIsFromStart) {
  TRef<IHierarchicalRoot> root;
  try {
    root = fRoots->CreateRoot(pPath);
  } catch (const std::exception& error) {
    if (pIsFromStart && fFollowUp) fFollowUp->RootFailed();
    Q_EMIT Failed(tr("Scan"), QString::fromUtf8(error.what()));
    return nullptr;
  }
  if ((root->GetState() & rsScanning) != 0 || fStarting.contains(root.get())) {
    Q_EMIT Opened(root);
    return root;
  }
  if (pIsFromStart && fFollowUp) fFollowUp->Expect(*root);
  if (pIsFromStart && fStart.fCreateFilter) root->SetScanFilter(fStart.fCreateFilter());
  Q_EMIT Opened(root);
  StartScanOf(root);
  return root;
}

// A scan frees the earlier tree first, which may have millions of nodes.
void TSession::StartScanOf(const TRef<IHierarchicalRoot>& pRoot) {
  fStarting.insert(pRoot.get());
  auto start = [pRoot] {
    pRoot->Scan();
    return true;
  };
  RunInBackground(LongWork(), this, start, [this, pRoot](TOutcome<bool> pStarted) {
    fStarting.erase(pRoot.get());
    if (!pStarted.fError.isEmpty()) Q_EMIT Failed(tr("Scan"), pStarted.fError);
  });
}

void TSession::ScanAgain(const TRef<IHierarchicalRoot>& pRoot) {
  if (!pRoot || (pRoot->GetState() & (rsScanning | rsIsXMLImport)) != 0 || fStarting.contains(pRoot.get())) return;
  StartScanOf(pRoot);
}

void TSession::Close(const TRef<IHierarchicalRoot>& pRoot) {
  if (!pRoot) return;
  Q_EMIT Closing(pRoot);
  pRoot->CancelScan();
  RunInBackground(
      LongWork(), this,
      [roots = fRoots, pRoot] {
        roots->Remove(*pRoot);
        return true;
      },
      [](const TOutcome<bool>&) {});
}

void TSession::ScanEnded(const TRef<IHierarchicalRoot>& pRoot) {
  if (fFollowUp && fFollowUp->ScanEnded(pRoot)) return;
  if (Options().RecordHistory) RecordHistory(pRoot);
}

void TSession::RecordHistory(const TRef<IHierarchicalRoot>& pRoot) {
  if ((pRoot->GetState() & (rsFinished | rsCancelled | rsIsXMLImport)) != rsFinished) return;
  auto record = [pRoot, file = HistoryFile(), version = fStart.fVersion](TJob&) {
    History::THistoryDatabaseReaderWriter(version).WriteRootHistoryData(file, pRoot->GetPath(), *pRoot);
    return true;
  };
  RunJob(tr("Recording in the history"), record, [this](bool) { Q_EMIT HistoryChanged(); });
}

void TSession::LeaveOut(const TRef<IHierarchicalRoot>& pRoot, const TRef<IFolderData>& pFolder) {
  using namespace PatternMatching;
  if (!pRoot || !pFolder || (pRoot->GetState() & rsScanning) != 0) return;
  const char16_t delimiter = pRoot->GetPathDelimiter();
  auto* filter = dynamic_cast<TPatternFilter*>(pRoot->GetScanFilter().get());
  const TRef<IPatterns> patterns = filter ? filter->GetPatterns()->Clone() : MakeRef<TPatternList>(delimiter);
  patterns->Add(TRef<IPattern>(MakeRef<TExactPattern>(pFolder->GetFullPath(), ColumnInfo(TColumn::mdFullPath).fKey,
                                                      TPatternType::ptyExclude, delimiter)));
  pRoot->SetScanFilter(MakeRef<TPatternFilter>(patterns));
  RunJob(
      tr("Removing from the tree"), [pRoot, pFolder](TJob&) { return pRoot->RemoveFolder(*pFolder); },
      [this](bool pRemoved) {
        if (!pRemoved) Q_EMIT Failed(tr("Leave out of scans"), tr("The folder is left out of the next scan."));
      });
}

// --- files -----------------------------------------------------------------------------------------------------------

void TSession::OpenScanFile(const std::u16string& pFile) {
  auto load = [roots = fRoots, pFile](TJob& pJob) {
    return XML::TQZXMLReader::LoadFromFile(std::span(&pFile, 1), *roots, [&](const std::u16string&, uint64_t pBytes) {
      pJob.fBytes.store(pBytes, std::memory_order_relaxed);
      return !pJob.fCancelled;
    });
  };
  RunJob(tr("Reading the scan file"), load, [this](const std::vector<XML::TLoadedRoot>& pLoaded) {
    for (const XML::TLoadedRoot& loaded : pLoaded) {
      if (!loaded.fRoot) {
        Q_EMIT Failed(tr("Open a scan file"), FromUtf8Text(loaded.fError));
        if (fFollowUp) fFollowUp->RootFailed();
        continue;
      }
      if (fFollowUp) fFollowUp->Loaded(loaded.fRoot);
      Q_EMIT Opened(loaded.fRoot);
      QStringList notes;
      for (const std::string& note : loaded.fNotes) notes << FromUtf8Text(note);
      if (!notes.isEmpty()) Q_EMIT Told(notes.join(u' '));
    }
  });
}

namespace {

// The one action of an export from the window. The handler's questions to the program have fixed answers.
class TLoneHost : public PostScanActions::IPostScanHost {
 public:
  explicit TLoneHost(std::shared_ptr<const TExpandedFolders> pExpanded) : fExpanded(std::move(pExpanded)) {}
  bool IsTerminating() const override { return false; }
  bool IsUnattended() const override { return false; }
  bool MustStayOpen() const override { return true; }
  bool ClosesAfterExport() const override { return false; }
  int ModalLevel() const override { return 0; }
  void Terminate() override {}
  std::string ProgramName() const override { return {}; }
  std::shared_ptr<const TExpandedFolders> ExpandedFolders(const IHierarchicalRoot&) const override { return fExpanded; }

 private:
  const std::shared_ptr<const TExpandedFolders> fExpanded;
};

class TNoOutput : public Exporting::ILineOutput {
 public:
  bool WriteLine(std::string_view) override { return true; }
  int64_t LineCount() const override { return 0; }
};

PostScanActions::TExportRun RunOf(const TWindowStart& pStart, TJob& pJob) {
  return {pStart.fProgramName, pStart.fVersion, false, false, [&pJob] { return pJob.fCancelled.load(); }};
}

// The queue with one action: it merges the settings of its actions, so an action does not work without it.
bool Perform(TGlobalOptions& pOptions, const TRef<IHierarchicalRoot>& pRoot, const IScanRoots& pRoots,
             std::shared_ptr<const TExpandedFolders> pExpanded,
             const std::function<std::unique_ptr<PostScanActions::TBasePostScanAction>(
                 const PostScanActions::TPostProcessActionHandler&)>& pMake) {
  TLoneHost host(std::move(pExpanded));
  TNoOutput output;
  Exporting::TMediaOptions media(pOptions);
  PostScanActions::TPostProcessActionHandler handler(host, media, output);
  handler.Add(pMake(handler));
  if (handler.ResolveRequirements() && handler.PerformPostProcessActions(pRoot.get(), pRoots)) handler.FinishActions();
  for (const PostScanActions::TActionFailure& failure : handler.TakeFailures()) throw EException(failure.fMessage);
  return true;
}

}  // namespace

void TSession::Export(const TRef<IHierarchicalRoot>& pRoot, CommandLine::TExportFormat pFormat,
                      const std::u16string& pFile) {
  auto options = std::make_shared<TGlobalOptions>(Options());
  auto expanded = fFindExpanded ? fFindExpanded(*pRoot) : nullptr;
  auto write = [pRoot, pFormat, pFile, options, expanded, roots = fRoots, start = fStart](TJob& pJob) {
    return Perform(*options, pRoot, *roots, expanded, [&](const PostScanActions::TPostProcessActionHandler& pHandler) {
      return std::make_unique<PostScanActions::TFileExportPostScanAction>(pHandler, *options, pFormat, pFile,
                                                                          RunOf(start, pJob));
    });
  };
  RunJob(tr("Writing %1").arg(Shown(pFile)), write,
         [this, pFile](bool) { Q_EMIT Told(tr("Written: %1").arg(Shown(pFile))); });
}

void TSession::ExportPicture(const TRef<IHierarchicalRoot>& pRoot, const CommandLine::TPictureRequest& pRequest) {
  auto options = std::make_shared<TGlobalOptions>(Options());
  auto write = [pRoot, pRequest, options, roots = fRoots, start = fStart](TJob& pJob) {
    static TPictureRenderer renderer;
    std::string notes;
    Perform(*options, pRoot, *roots, nullptr, [&](const PostScanActions::TPostProcessActionHandler&) {
      return std::make_unique<PostScanActions::TCustomPresenterPostScanAction>(
          *options, pRequest, RunOf(start, pJob), [&notes](std::string_view pNote) { notes += pNote; }, &renderer);
    });
    return notes;
  };
  RunJob(tr("Drawing %1").arg(Shown(pRequest.fFile)), write, [this, file = pRequest.fFile](const std::string& pNotes) {
    Q_EMIT Told(tr("Written: %1").arg(Shown(file)) + u' ' + FromUtf8Text(pNotes));
  });
}

void TSession::Compare(const TRef<IHierarchicalRoot>& pRoot, const std::u16string& pFile) {
  auto compare = [pRoot, pFile, roots = fRoots](TJob& pJob) {
    return XML::TQZXMLCompareReader::CompareWithXMLFile(pFile, *pRoot, *roots,
                                                        [&](const std::u16string&, uint64_t pBytes) {
                                                          pJob.fBytes.store(pBytes, std::memory_order_relaxed);
                                                          return !pJob.fCancelled;
                                                        });
  };
  RunJob(tr("Comparing"), compare, [this, pRoot](bool pDone) {
    if (pDone) Q_EMIT Compared(pRoot);
  });
}

void TSession::EndComparison(const TRef<IHierarchicalRoot>& pRoot) {
  if (pRoot && (pRoot->GetState() & rsScanning) == 0) pRoot->SetComparison(nullptr);
}

void TSession::SetOptions(const TGlobalOptions& pEdited) {
  std::vector<const TOptionInfo*> changed;
  for (const TOptionInfo& option : AllOptions())
    if (option.fGet(pEdited) != option.fGet(Options())) changed.push_back(&option);
  *fStart.fOptions = pEdited;
  if (!changed.empty()) KeepOptions(changed);
}

// Reads the file first: another window may have changed other options in it.
void TSession::KeepOptions(const std::vector<const TOptionInfo*>& pChanged) {
  if (IsReadOnly() || fStart.fUserOptionsFile.empty()) return;
  try {
    TGlobalOptions kept;
    try {
      Vantrel::Options::LoadOptionsFile(fStart.fUserOptionsFile, kept);
    } catch (const Vantrel::Options::EOptionsFileError& error) {
      if (!error.IsMissing()) throw;
    }
    for (const TOptionInfo* option : pChanged) option->fSet(kept, option->fGet(Options()));
    Vantrel::Options::SaveOptionsFile(fStart.fUserOptionsFile, kept, fStart.fProgramName, fStart.fVersion);
  } catch (const std::exception& error) {
    Q_EMIT Failed(tr("Options"), QString::fromUtf8(error.what()));
  }
}

}  // namespace Vantrel::Window
