#include "window/panes/TreemapPane.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QMenu>
#include <QMetaMethod>
#include <QVBoxLayout>

#include "platform/files/Paths.h"
#include "presentation/treemap/FolderContainer.h"
#include "presentation/treemap/SizeArrayPresenters.h"
#include "window/models/ShownText.h"
#include "window/painting/PictureFile.h"
#include "window/panes/PaneControls.h"
#include "window/panes/TreemapView.h"

namespace Vantrel::Window {

using namespace Treemap;

namespace {

constexpr TColumn kAreas[] = {TColumn::mdSize, TColumn::mdAllocated, TColumn::mdFiles};

TRef<IFolderData> FolderOf(const TRef<IHierarchicalElement>& pNode) {
  if (!pNode) return nullptr;
  if (IFolderData* folder = pNode->AsFolder()) return folder;
  const TRef<IHierarchicalElement> parent = pNode->GetParentFolder();
  return parent ? TRef<IFolderData>(parent->AsFolder()) : nullptr;
}

TRef<IFolderData> ParentOf(IFolderData& pFolder) {
  const TRef<IHierarchicalElement> parent = pFolder.GetParentFolder();
  return parent ? TRef<IFolderData>(parent->AsFolder()) : nullptr;
}

bool IsInside(TRef<IFolderData> pFolder, const IFolderData& pOuter) {
  for (; pFolder; pFolder = ParentOf(*pFolder))
    if (pFolder.get() == &pOuter) return true;
  return false;
}

}  // namespace

TTreemapPane::TTreemapPane(std::shared_ptr<TGlobalOptions> pOptions, QWidget* pParent)
    : TPane(pParent), fOptions(std::move(pOptions)), fView(new TTreemapView(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  AddControls();
  layout->addWidget(fView, 1);
  fHovered = new QLabel(this);
  fHovered->setContentsMargins(6, 3, 6, 3);
  fHovered->setTextFormat(Qt::PlainText);
  fHovered->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  layout->addWidget(fHovered);
  fView->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(fView, &QWidget::customContextMenuRequested, this, &TTreemapPane::ShowMenu);
  connect(fView, &TTreemapView::TileHovered, this, &TTreemapPane::TellHovered);
  connect(fView, &TTreemapView::TileChosen, this, [this](uint32_t pTile) {
    if (const TRef<IHierarchicalElement> node = fView->NodeOf(pTile)) Q_EMIT PathChosen(ToQString(node->GetFullPath()));
  });
  connect(fView, &TTreemapView::TileOpened, this, &TTreemapPane::OpenTile);
  connect(fView, &TTreemapView::ZoomedIn, this, &TTreemapPane::ZoomTowards);
  connect(fView, &TTreemapView::ZoomedOut, this, &TTreemapPane::ZoomOut);
  Update();
}

void TTreemapPane::AddControls() {
  TPaneControls controls(this);
  fBackButton = controls.AddButton(QStyle::SP_ArrowBack, tr("Back"));
  fUpButton = controls.AddButton(QStyle::SP_ArrowUp, tr("Zoom out"));
  connect(fBackButton, &QToolButton::clicked, this, &TTreemapPane::ZoomBack);
  connect(fUpButton, &QToolButton::clicked, this, &TTreemapPane::ZoomOut);
  fSource = controls.AddChoice(tr("What is shown"), {tr("Folders and files"), tr("Extensions"), tr("Owners")});
  fSource->setCurrentIndex(static_cast<int>(fOptions->TreemapOf));
  connect(fSource, &QComboBox::activated, this, [this](int pItem) {
    fOptions->TreemapOf = static_cast<TTreemapSource>(pItem);
    Update();
  });
  fColors = controls.AddChoice(tr("What the colours mean"),
                               {tr("Colours by type"), tr("Colours by extension"), tr("Colours by age"),
                                tr("Colours by depth"), tr("Colours by growth")});
  fColors->setCurrentIndex(static_cast<int>(fOptions->TreemapColors));
  connect(fColors, &QComboBox::activated, this, [this](int pItem) {
    fOptions->TreemapColors = static_cast<TTreemapColors>(pItem);
    Update();
  });
  fAreas = controls.AddChoice(tr("What areas stand for"), {tr("Size"), tr("Size on disk"), tr("Number of files")});
  connect(fAreas, &QComboBox::activated, this, [this] { Update(); });
  fFreeSpace = controls.AddTextButton(tr("Free space"), tr("Show the free space of the drive, too"));
  fFreeSpace->setCheckable(true);
  connect(fFreeSpace, &QToolButton::toggled, this, [this] { Update(); });
  connect(controls.AddTextButton(tr("Copy"), tr("Copy the picture")), &QToolButton::clicked, this, &TTreemapPane::Copy);
  connect(controls.AddTextButton(tr("Save…"), tr("Save the picture as a file")), &QToolButton::clicked, this,
          &TTreemapPane::Save);
  static_cast<QVBoxLayout*>(layout())->addLayout(controls.Row());
}

// --- what is shown
// -----------------------------------------------------------------------------------------------------

TRef<IFolderData> TTreemapPane::GetShownFolder() const {
  if (!fPlace.fRoot) return nullptr;
  return fZoomed ? fZoomed : fPlace.fRoot->GetTopFolder();
}

void TTreemapPane::ShowPlace(const TPlace& pPlace) {
  const bool isOtherRoot = pPlace.fRoot != fPlace.fRoot;
  fPlace = pPlace;
  if (isOtherRoot) {
    fAreas->setCurrentIndex(
        fPlace.fRoot && fPlace.fRoot->GetScanConfiguration()->GetShareBasis() == TColumn::mdAllocated ? 1 : 0);
    fBack.clear();
  }
  const bool isOutside = fZoomed && (!fPlace.fFolder || !IsInside(fPlace.fFolder, *fZoomed));
  if (isOtherRoot || isOutside) {
    fZoomed = nullptr;
    Update();
  }
  const bool isMarked = fPlace.fFolder && fPlace.fFolder != GetShownFolder();
  fView->MarkFolder(isMarked ? IDOfFolder(*fPlace.fFolder) : TTreemapElementID::None);
}

// Looks at the root anew: its top folder appears some time after its scan began, and a refresh removes folders.
void TTreemapPane::Refresh() {
  if (!fPlace.fRoot) return;
  if (fZoomed && !IsInTree(*fZoomed)) fZoomed = nullptr;
  Update(true);
}

bool TTreemapPane::IsInTree(IFolderData& pFolder) const {
  const TRef<IFolderData> top = fPlace.fRoot->GetTopFolder();
  return top && IsInside(&pFolder, *top);
}

void TTreemapPane::Update(bool pIsRefresh) {
  UpdateControls();
  const TRef<IFolderData> folder = GetShownFolder();
  const bool isBusy = fPlace.fRoot && (fPlace.fRoot->GetState() & rsScanning) != 0;
  if (!folder)
    fView->ShowNothing(fPlace.fRoot ? tr("Waiting for the first folder…") : tr("Nothing is scanned yet."));
  else if (pIsRefresh)
    fView->Refresh(MakePresenter(folder), isBusy);
  else
    fView->Show(MakePresenter(folder), WindowFormat(fOptions->SizeUnit), isBusy);
}

TRef<const ITreemapPresenter> TTreemapPane::MakePresenter(TRef<IFolderData> pFolder) const {
  const TColumn areas = kAreas[fAreas->currentIndex()];
  if (fOptions->TreemapOf == TTreemapSource::tsExtensions)
    return MakeRef<TExtensionSizeArrayMapPresenter>(*pFolder, areas);
  if (fOptions->TreemapOf == TTreemapSource::tsOwners) return MakeRef<TUserSizeArrayMapPresenter>(*pFolder, areas);
  TTreeMapOptions options;
  options.fValueColumn = areas;
  options.fScheme = static_cast<TTreemapColorScheme>(fOptions->TreemapColors);
  if (options.fScheme == TTreemapColorScheme::csGrowth && !fPlace.fRoot->GetComparison())
    options.fScheme = TTreemapColorScheme::csType;
  options.fShowFreeSpace = fFreeSpace->isChecked();
  return MakeRef<TTreeMapChartBasePresenter>(std::move(pFolder), std::move(options));
}

void TTreemapPane::UpdateControls() {
  const bool isTree = fOptions->TreemapOf == TTreemapSource::tsFolders;
  fBackButton->setEnabled(!fBack.empty());
  fUpButton->setEnabled(fZoomed != nullptr);
  fColors->setEnabled(isTree);
  EnableItem(*fColors, static_cast<int>(TTreemapColors::tcGrowth), fPlace.fRoot && fPlace.fRoot->GetComparison());
  fFreeSpace->setEnabled(isTree && kAreas[fAreas->currentIndex()] != TColumn::mdFiles);
}

// --- zoom
// --------------------------------------------------------------------------------------------------------------

void TTreemapPane::ShowFolder(TRef<IFolderData> pFolder) {
  const bool isTop = !pFolder || pFolder == fPlace.fRoot->GetTopFolder();
  fZoomed = isTop ? nullptr : std::move(pFolder);
  Update();
}

void TTreemapPane::ZoomTo(TRef<IFolderData> pFolder) {
  if (!fPlace.fRoot || !pFolder || pFolder == GetShownFolder() || pFolder->IsFileGroup()) return;
  fBack.push_back(fZoomed);
  ShowFolder(std::move(pFolder));
}

void TTreemapPane::ZoomOut() {
  if (fZoomed) ZoomTo(ParentOf(*fZoomed));
}

void TTreemapPane::ZoomBack() {
  if (fBack.empty() || !fPlace.fRoot) return;
  TRef<IFolderData> folder = std::move(fBack.back());
  fBack.pop_back();
  ShowFolder(folder && !IsInTree(*folder) ? nullptr : std::move(folder));
}

void TTreemapPane::OpenTile(uint32_t pTile) {
  ZoomTo(FolderOf(fView->NodeOf(pTile)));
}

// One level nearer: to the folder directly in the shown one that holds the tile.
void TTreemapPane::ZoomTowards(uint32_t pTile) {
  const TRef<IFolderData> shown = GetShownFolder();
  TRef<IFolderData> folder = FolderOf(fView->NodeOf(pTile));
  while (folder && folder != shown) {
    const TRef<IFolderData> parent = ParentOf(*folder);
    if (parent == shown) return ZoomTo(folder);
    folder = parent;
  }
}

// --- texts, menu, pictures
// -----------------------------------------------------------------------------------------------

void TTreemapPane::TellHovered(uint32_t pTile) {
  if (pTile == kNoTile || !fView->GetPicture()) return fHovered->clear();
  const std::u16string hint =
      TTreemapWorkItem::CalculateHint(*fView->GetPicture(), pTile, WindowFormat(fOptions->SizeUnit));
  QStringList lines;
  for (const QString& line : ToQString(hint).split(u'\n')) lines.append(Shown(FromQString(line)));
  const QString values =
      lines.size() > 1 ? QStringLiteral("  ·  ") + lines.mid(1).join(QStringLiteral("  ·  ")) : QString();
  const QFontMetrics metrics = fHovered->fontMetrics();
  const int room = fHovered->contentsRect().width() - metrics.horizontalAdvance(values);
  fHovered->setText(metrics.elidedText(lines.first(), Qt::ElideMiddle, std::max(room, 80)) + values);
}

void TTreemapPane::ShowMenu(const QPoint& pPosition) {
  const uint32_t tile = fView->TileAt(pPosition);
  const TRef<IHierarchicalElement> node = fView->NodeOf(tile);
  const QPoint position = fView->mapToGlobal(pPosition);
  if (node && isSignalConnected(QMetaMethod::fromSignal(&TTreemapPane::MenuWanted)))
    return Q_EMIT MenuWanted(ToQString(node->GetFullPath()), position);
  QMenu menu(this);
  if (node) {
    menu.addAction(tr("Zoom in"), this, [this, tile] { OpenTile(tile); });
    menu.addAction(tr("Copy path"), this,
                   [path = ToQString(node->GetFullPath())] { QGuiApplication::clipboard()->setText(path); });
  }
  QAction* out = menu.addAction(tr("Zoom out"), this, &TTreemapPane::ZoomOut);
  out->setEnabled(fZoomed != nullptr);
  menu.addSeparator();
  menu.addAction(tr("Copy picture"), this, &TTreemapPane::Copy);
  menu.addAction(tr("Save picture…"), this, &TTreemapPane::Save);
  menu.exec(position);
}

void TTreemapPane::SaveToFile(const std::u16string& pFile) const {
  const TRef<IFolderData> folder = GetShownFolder();
  WritePictureFile(fView->DrawingMaker(folder ? folder->GetFullPath() : u"")(), pFile, font());
}

void TTreemapPane::Save() {
  const TRef<IFolderData> folder = GetShownFolder();
  if (!folder || !fView->GetPicture()) return;
  SavePictureAs(this, tr("Treemap") + QStringLiteral(".png"), font(), fView->DrawingMaker(folder->GetFullPath()));
}

TPrintable TTreemapPane::Printable() const {
  const TRef<IFolderData> folder = GetShownFolder();
  if (!folder || !fView->GetPicture()) return {};
  return {ToQString(folder->GetFullPath()), fView->DrawingMaker(folder->GetFullPath()), {}};
}

void TTreemapPane::Copy() const {
  CopyPicture(fView->GetImage());
}

}  // namespace Vantrel::Window
