#include "model/options/OptionSubjects.h"

#include <algorithm>
#include <iterator>

namespace Vantrel {

namespace {

// Options of one subject are declared one after the other. This is the first one of each.
struct TSubject {
  std::string_view fFirst;
  std::string_view fSubject;
};
constexpr TSubject kSubjects[] = {{"MaximumThreads", "Scan"},
                                  {"SearchLimit", "Searches"},
                                  {"SizeUnit", "Reports"},
                                  {"PictureSize", "Pictures"},
                                  {"MailServer", "Mail"},
                                  {"RecordHistory", "History, end"},
                                  {"TextIncludeHeader", "Text exports"},
                                  {"CSVIncludeHeader", "CSV exports"},
                                  {"XMLLevels", "Scan files"}};

}  // namespace

std::string_view SubjectOf(const TOptionInfo& pOption) {
  std::string_view subject = kSubjects[0].fSubject;
  for (const TOptionInfo& option : AllOptions()) {
    const auto begins = std::find_if(std::begin(kSubjects), std::end(kSubjects),
                                     [&](const TSubject& pSubject) { return pSubject.fFirst == option.fName; });
    if (begins != std::end(kSubjects)) subject = begins->fSubject;
    if (option.fName == pOption.fName) break;
  }
  return subject;
}

std::vector<std::string_view> OptionSubjects() {
  std::vector<std::string_view> subjects;
  for (const TSubject& subject : kSubjects) subjects.push_back(subject.fSubject);
  return subjects;
}

}  // namespace Vantrel
