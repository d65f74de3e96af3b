// Pictures of the window for the guide, and to look at, over the disk that picture_disk.py makes. Run it by hand:
// python3 tests/window/picture_disk.py /srv/data
// VANTREL_PICTURES=folder window_tests --gtest_also_run_disabled_tests --gtest_filter=*Screenshots*

#include <QApplication>
#include <QStyleFactory>
#include <QTabWidget>

#include "tests/window/WindowHarness.h"
#include "window/dialogs/OptionsDialog.h"
#include "window/models/DuplicatesModel.h"
#include "window/panes/DuplicatesPane.h"
#include "window/panes/EntriesView.h"
#include "window/panes/SearchPane.h"
#include "window/panes/TreemapView.h"

namespace Vantrel::Window {
namespace {

QPalette DarkPalette() {
  QPalette palette(QColor(0x2B, 0x2D, 0x30));
  palette.setColor(QPalette::Base, QColor(0x1E, 0x1F, 0x22));
  palette.setColor(QPalette::AlternateBase, QColor(0x24, 0x26, 0x29));
  palette.setColor(QPalette::Text, QColor(0xDF, 0xE1, 0xE5));
  palette.setColor(QPalette::WindowText, QColor(0xDF, 0xE1, 0xE5));
  palette.setColor(QPalette::ButtonText, QColor(0xDF, 0xE1, 0xE5));
  palette.setColor(QPalette::PlaceholderText, QColor(0x9A, 0x9D, 0xA3));
  palette.setColor(QPalette::Highlight, QColor(0x2F, 0x6F, 0xC4));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
    palette.setColor(QPalette::Disabled, role, QColor(0x6E, 0x71, 0x77));
  return palette;
}

void Save(QWidget& pWidget, const QString& pName) {
  QTest::qWait(400);
  // A treemap of an earlier size is stretched until the new one is there.
  const auto* map = pWidget.findChild<TTreemapView*>();
  ASSERT_TRUE(!map || !map->isVisible() || WaitFor([map] { return map->GetImage().size() == map->size(); }));
  const QString folder = qEnvironmentVariable("VANTREL_PICTURES", QStringLiteral("."));
  ASSERT_TRUE(pWidget.grab().save(folder + u'/' + pName + QStringLiteral(".png")));
}

TEST(Screenshots, DISABLED_EveryPane) {
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  const QPalette light = QApplication::palette();
  TWindowHarness harness;
  harness.fStart.fOptions->CollectOwners = true;
  harness.fStart.fOptions->FileAgesDateType = TDateType::dtLastChange;
  TMainWindow& window = harness.Window();
  for (const auto& [shade, palette] :
       {std::pair(QStringLiteral("light"), light), std::pair(QStringLiteral("dark"), DarkPalette())}) {
    QApplication::setPalette(palette);
    for (const QSize size : {QSize(1024, 700), QSize(1600, 1000)}) {
      const QString kind = QStringLiteral("%1-%2-").arg(shade).arg(size.width());
      window.resize(size);
      if (window.Tree().rowCount() == 0) {
        QTest::qWait(500);
        Save(window, kind + "start");
        ASSERT_TRUE(harness.Scan(u"/srv/data"));
        window.GoTo(QStringLiteral("/srv/data/photos/2026 Snow"));
        QTest::qWait(500);
        window.GoTo(QStringLiteral("/srv/data"));
        QTest::qWait(500);
        window.Search().SetQuery(u"size:>5MB ext:jpg,flac,gz (name:snow OR modified:<2024)");
        harness.Action("search").trigger();
        window.Search().Start();
        harness.Action("duplicates").trigger();
        Save(window, kind + "duplicates-before");
        window.Duplicates().Start();
        ASSERT_TRUE(WaitFor([&] { return window.Duplicates().Model().rowCount() > 5; }));
        Save(window, kind + "duplicates-while");
        ASSERT_TRUE(WaitFor([&] { return !window.Duplicates().IsSearching(); }));
        window.GoTo(QStringLiteral("/srv/data"));
        QTest::qWait(500);
        window.ShowStartPage();
        Save(window, kind + "start-again");
        window.ShowStartPage();
      }
      for (int i = 0; i < window.Panes().count(); ++i) {
        window.Panes().setCurrentIndex(i);
        Save(window, kind + QString::number(i) + window.Panes().currentWidget()->objectName());
      }
    }
    TOptionsDialog dialog(window.Session().Options(), false, &window);
    dialog.show();
    Save(dialog, shade + "-options");
  }
}

}  // namespace
}  // namespace Vantrel::Window
