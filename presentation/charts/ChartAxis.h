#pragma once

// Axes with round numbers, for values and for times.

#include <string>
#include <vector>

#include "model/columns/MetaData.h"

namespace Vantrel::Charts {

struct TTick {
  double fValue = 0;
  std::u16string fLabel;
};

// A scale from the least to the largest value, with ticks in ascending order.
struct TAxis {
  double fLeast = 0;
  double fMost = 1;
  std::vector<TTick> fTicks;
  // The position of a value on the axis: 0 at its least, 1 at its largest value.
  double ShareOf(double pValue) const { return (pValue - fLeast) / (fMost - fLeast); }
};

// An axis that covers the values from pLeast to pMost, with at most pMostTicks steps. A step is 1, 2 or 5 times a power
// of ten, for sizes in the unit of the labels: 200 KB are 204,800 bytes. The axis begins and ends with a tick.
TAxis MakeValueAxis(double pLeast, double pMost, int pMostSteps, TColumn pColumn, const TValueFormat& pFormat);

// An axis of exactly this period, with at most pMostTicks ticks inside it. A tick is at the start of a year, a month, a
// week, a day, an hour or a minute of local time. Values are ticks of file times. A period of no length is widened to
// one day.
TAxis MakeTimeAxis(TKivFileTime pFirst, TKivFileTime pLast, int pMostTicks);

}  // namespace Vantrel::Charts
