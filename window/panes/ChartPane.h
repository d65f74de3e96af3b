#pragma once

// Charts of the chosen folder: kind and form to choose, hints, saved and copied as pictures.

#include <QWidget>
#include <memory>
#include <variant>

#include "model/options/GlobalOptions.h"
#include "presentation/charts/ChartData.h"
#include "presentation/charts/Charts.h"
#include "window/panes/Pane.h"

class QComboBox;

namespace Vantrel::Window {

// Shows one chart, drawn anew for each size.
class TChartView : public QWidget {
  Q_OBJECT
 public:
  using TData = std::variant<std::monostate, Charts::TChartData, Charts::TTimeSeries>;

  explicit TChartView(QWidget* pParent);

  // Nothing, values or a history. The type must suit them.
  void Show(TData pData, Charts::TChartType pType, const Charts::TChartSettings& pSettings);
  void ShowText(const QString& pText);

  const Drawing::TDrawing& GetDrawing() const { return fDrawing; }
  bool HasDrawing() const { return !std::holds_alternative<std::monostate>(fData); }
  // The drawing's subject at a position of the widget; nullptr where there is none.
  const Drawing::TSubject* SubjectAt(QPointF pPosition) const;

 Q_SIGNALS:
  void SubjectChosen(const QString& pKey);

 protected:
  bool event(QEvent* pEvent) override;
  void paintEvent(QPaintEvent* pEvent) override;
  void resizeEvent(QResizeEvent* pEvent) override;
  void changeEvent(QEvent* pEvent) override;
  void mouseMoveEvent(QMouseEvent* pEvent) override;
  void mouseReleaseEvent(QMouseEvent* pEvent) override;

 private:
  void Draw();

  TData fData;
  Charts::TChartType fType = Charts::TChartType::ctBar;
  Charts::TChartSettings fSettings;
  QString fText;
  Drawing::TDrawing fDrawing;
};

// The data are read on another thread. What the user sets is kept in the options.
class TChartPane : public TPane {
  Q_OBJECT
 public:
  enum class TSource : uint8_t { csFolders, csExtensions, csFileTypes, csOwners, csFileAges, csHistory };

  explicit TChartPane(std::shared_ptr<TGlobalOptions> pOptions, QWidget* pParent = nullptr);

  void ShowPlace(const TPlace& pPlace) override;
  void Refresh() override;
  TPrintable Printable() const override;
  void SetSource(TSource pSource);

  // Writes the chart as SVG or PNG, by the name; an exception names the file if it cannot be written. For calls from
  // programs; Save asks the user for a file.
  void SaveToFile(const std::u16string& pFile) const;
  void Save();
  void Copy() const;
  TChartView& View() { return *fView; }

 Q_SIGNALS:
  void ChartShown();

 private:
  void Read();
  void Take(TChartView::TData pData);
  void FillForms();
  void SetForm(int pItem);
  bool IsHistory() const { return fSource == TSource::csHistory; }
  Charts::TChartType Type() const;

  const std::shared_ptr<TGlobalOptions> fOptions;
  TPlace fPlace;
  TSource fSource = TSource::csFolders;
  uint64_t fRequest = 0;  // the number of the last reading
  bool fIsReading = false;
  bool fIsOutdated = false;  // changed since that reading began

  TChartView* fView = nullptr;
  QComboBox* fSources = nullptr;
  QComboBox* fForms = nullptr;
};

}  // namespace Vantrel::Window
