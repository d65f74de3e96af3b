// Temporary.
#include <gtest/gtest.h>
#include <QApplication>
#include <QPalette>
#include <QSignalSpy>
#include <QTest>
#include <QStyleFactory>
#include "model/roots/ScanRoots.h"
#include "scan/engine/ScanServices.h"
#include "window/panes/ChartPane.h"
#include "window/panes/TreemapPane.h"
#include "window/panes/TreemapView.h"
using namespace Vantrel;
using namespace Vantrel::Window;
TEST(Look, Look) {
  auto options = std::make_shared<TGlobalOptions>();
  options->KeepFiles = true;
  auto roots = CreateScanRoots(ScanEngine::CreateScanServices(), options);
  auto root = roots->CreateRoot(u"/usr");
  root->Scan();
  root->WaitForScan(600000);
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  for (bool dark : {false, true}) {
    QPalette p = QApplication::style()->standardPalette();
    if (dark) {
      p.setColor(QPalette::Window, QColor(32, 33, 36)); p.setColor(QPalette::WindowText, Qt::white); p.setColor(QPalette::Base, QColor(24, 25, 27));
      p.setColor(QPalette::Button, QColor(48, 49, 54)); p.setColor(QPalette::ButtonText, Qt::white); p.setColor(QPalette::Text, Qt::white);
    }
    QApplication::setPalette(p);
    TTreemapPane map(options);
    map.resize(900, 560);
    map.show();
    QSignalSpy shown(&map.View(), &TTreemapView::PictureShown);
    QElapsedTimer t; t.start();
    map.ShowPlace({root, root->GetTopFolder()});
    printf("show %lld ms\n", (long long)t.elapsed());
    ASSERT_TRUE(shown.wait(60000));
    printf("shown %lld ms\n", (long long)t.elapsed());
    auto folders = root->GetTopFolder()->FindSubFolders();
    map.ShowPlace({root, folders.front()});
    QTest::mouseMove(&map.View(), QPoint(500, 300));
    QTest::qWait(300);
    map.grab().save(dark ? "/tmp/a/map-dark.png" : "/tmp/a/map-light.png");
    TChartPane chart(options);
    chart.resize(900, 560);
    chart.show();
    QSignalSpy drawn(&chart, &TChartPane::ChartShown);
    chart.ShowPlace({root, root->GetTopFolder()});
    ASSERT_TRUE(drawn.wait(60000));
    QTest::qWait(100);
    chart.grab().save(dark ? "/tmp/a/ring-dark.png" : "/tmp/a/ring-light.png");
    chart.SetSource(TChartPane::TSource::csExtensions);
    ASSERT_TRUE(drawn.wait(60000));
    QTest::qWait(100);
    chart.grab().save(dark ? "/tmp/a/ext-dark.png" : "/tmp/a/ext-light.png");
  }
  roots->Dispose();
}
