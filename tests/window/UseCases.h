#pragma once

// A window over a made folder, and what users see of it.

#include <QMessageBox>
#include <QTabWidget>
#include <filesystem>
#include <string>

#include "tests/window/WindowHarness.h"
#include "window/panes/ListPane.h"

namespace Vantrel::Window {

using Testing::TTemporaryFolder;

struct TUseCases : ::testing::Test, TWindowHarness {
  TUseCases() {
    std::filesystem::create_directories(fData.Path() / "films");
    std::filesystem::create_directories(fData.Path() / "papers" / "old");
    fData.Put("films/long.mp4", std::string(300'000, 'x'));
    fData.Put("films/short.mp4", std::string(100'000, 'x'));
    fData.Put("papers/letter.txt", std::string(5'000, 'x'));
    fData.Put("papers/old/bill.txt", std::string(2'000, 'x'));
    fData.Put("alone.bin", std::string(50'000, 'x'));
  }
  ~TUseCases() override { Close(); }

  std::u16string DataPath() const { return fData.Path().u16string(); }
  bool ScanData() { return Scan(DataPath()); }
  TTreeModel& Tree() { return Window().Tree(); }
  QModelIndex Root() { return Tree().index(0, 0); }
  QStringList Names(const QModelIndex& pParent) {
    QStringList names;
    for (int row = 0; row < pParent.model()->rowCount(pParent); ++row)
      names << pParent.model()->index(row, 0, pParent).data().toString();
    return names;
  }
  TListPane& ListPane(const char* pName) {
    auto* pane = Window().findChild<TListPane*>(QString::fromLatin1(pName));
    Window().Panes().setCurrentWidget(pane);
    EXPECT_TRUE(WaitFor([pane] { return !pane->IsFilling(); })) << pName;
    return *pane;
  }
  bool GoTo(const char* pRelative) {
    Window().GoTo(QString::fromStdU16String(DataPath()) + pRelative);
    const std::u16string path = DataPath() + QString(pRelative).toStdU16String();
    return WaitFor([&] { return Window().Chosen().fPath == path; });
  }
  // What a message box says, if one is there.
  std::string Complaint() {
    const auto* box = Window().findChild<QMessageBox*>("failure");
    return box ? box->text().toStdString() : "no message";
  }
  std::string Read(const char* pName) { return fOut.Get(pName); }
  bool Written(const char* pName) {
    return WaitFor([&] { return std::filesystem::exists(fOut.Path() / pName) && Window().Session().Jobs().empty(); });
  }

  TTemporaryFolder fData;
  TTemporaryFolder fOut;
};

}  // namespace Vantrel::Window
