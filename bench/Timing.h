#pragma once

// Times, medians and verdicts that the export benchmarks share.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <vector>

namespace Vantrel::Bench {

// Processor time of this program. It is more exact than elapsed time when other programs run.
inline double ProcessorSeconds() {
  return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

template <class TWork>
double Seconds(const TWork& pWork) {
  const auto start = std::chrono::steady_clock::now();
  pWork();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline double Median(std::vector<double> pValues) {
  std::sort(pValues.begin(), pValues.end());
  return pValues[pValues.size() / 2];
}

// Prints a figure and its reference. Returns whether the figure is at most so many times the reference.
inline bool Report(const char* pWhat, double pValue, const char* pAgainst, double pReference, double pMost) {
  const double ratio = pValue / pReference;
  std::printf("%-6s %s: %.4f against %.4f, ratio %.2f (at most %.2f)\n", ratio <= pMost ? "met" : "MISSED", pWhat,
              pValue, pReference, ratio, pMost);
  std::printf("       against %s\n", pAgainst);
  return ratio <= pMost;
}

// The same of medians, with the fastest and slowest round: how noisy the machine was.
inline bool ReportMedians(const char* pWhat, const std::vector<double>& pValues, const char* pAgainst,
                          const std::vector<double>& pReferences, double pMost) {
  const bool met = Report(pWhat, Median(pValues), pAgainst, Median(pReferences), pMost);
  const auto [least, most] = std::minmax_element(pValues.begin(), pValues.end());
  const auto [leastReference, mostReference] = std::minmax_element(pReferences.begin(), pReferences.end());
  std::printf("       %zu rounds, %.4f to %.4f against %.4f to %.4f\n", pValues.size(), *least, *most, *leastReference,
              *mostReference);
  return met;
}

}  // namespace Vantrel::Bench
