#include "search/files/FileSearch.h"

#include <fmt/xchar.h>

#include <utility>

#include "platform/system/Errors.h"
#include "search/files/SearchJobs.h"
#include "search/files/SearchRun.h"

namespace Vantrel::Search {

TFileSearch::TFileSearch(TFileSearchSettings pSettings) : fRun(std::make_unique<TSearchRun>(std::move(pSettings))) {}

TFileSearch::~TFileSearch() {
  Cancel();
}

void TFileSearch::AddPath(const IHierarchicalRoot& pRoot) {
  fJobs.push_back(CreatePathJob(*fRun, pRoot));
}

void TFileSearch::AddTree(TRef<IHierarchicalRoot> pRoot, TRef<IStorage> pStorage) {
  if (TRef<ThreadPool::IWorkItem> job = CreateTreeJob(*fRun, std::move(pRoot), std::move(pStorage)))
    fJobs.push_back(std::move(job));
}

void TFileSearch::Start() {
  try {
    fRun->Start(std::exchange(fJobs, {}));
  } catch (...) {
    const uint32_t code = CodeOfCaughtException("TFileSearch.Start");
    fRun->AddError({.fPath = {}, .fCode = code, .fText = {}, .fIsTarget = true});
    fRun->EndAll();
  }
}

void TFileSearch::Cancel() {
  fRun->Token()->Cancel();
  fRun->SetPaused(false);
}

bool TFileSearch::WasCancelled() const {
  return fRun->Token()->IsCancelled() && !HasFoundEnough();
}

bool TFileSearch::HasFoundEnough() const {
  return fRun->HasFoundEnough();
}

void TFileSearch::SetPaused(bool pPaused) {
  fRun->SetPaused(pPaused);
}

bool TFileSearch::WaitForEnd(int64_t pMilliseconds) {
  return fRun->WaitForEnd(pMilliseconds);
}

std::vector<TFoundItem> TFileSearch::TakeFound() {
  return fRun->TakeFound();
}

TSearchProgress TFileSearch::GetProgress() const {
  return fRun->GetProgress();
}

std::vector<TSearchError> TFileSearch::GetErrors() const {
  return fRun->GetErrors();
}

std::vector<std::u16string> TFileSearch::GetWarnings() const {
  std::vector<std::u16string> warnings = fRun->Settings().fExpression.Warnings();
  if (const int64_t lines = fRun->GivenUp(); lines > 0)
    warnings.push_back(
        fmt::format(u"The regular expression for contents needed too much time for {}, which {} as not matching",
                    lines == 1 ? u"1 line" : fmt::format(u"{} lines", lines), lines == 1 ? u"counts" : u"count"));
  return warnings;
}

}  // namespace Vantrel::Search
