#pragma once

// Options with random values from their declared ranges.

#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "model/options/GlobalOptions.h"
#include "platform/text/Text.h"
#include "tests/support/NastyText.h"

namespace Vantrel::Testing {

// Random values for whatever options there are, by the ranges that they declare.
class TRandomOptions {
 public:
  explicit TRandomOptions(uint32_t pSeed) : fRandom(pSeed), fNasty(pSeed) {}

  // About half of the options changed.
  Vantrel::TGlobalOptions Next() {
    Vantrel::TGlobalOptions options;
    for (const Vantrel::TOptionInfo& option : Vantrel::AllOptions())
      for (int tries = fRandom() % 2 == 0 ? 20 : 0; tries > 0 && !option.fSet(options, Value(option)); --tries)
        continue;
    return options;
  }

 private:
  std::string Value(const Vantrel::TOptionInfo& pOption) {
    const std::string_view range = pOption.fRange;
    if (pOption.fKind == Vantrel::TOptionKind::okInteger) return Number(range);
    if (pOption.fKind == Vantrel::TOptionKind::okText) return Text();
    std::vector<std::string_view> words;
    for (size_t at = 0; at <= range.size(); at += words.back().size() + 1)
      words.push_back(range.substr(at, range.find('|', at) - at));
    return std::string(words[fRandom() % words.size()]);
  }

  // From a range such as "1..256", its ends more often than the rest.
  std::string Number(std::string_view pRange) {
    const size_t dots = pRange.find("..");
    int64_t least = 0, most = 0;
    Vantrel::TryParseInt64(pRange.substr(0, dots), least);
    Vantrel::TryParseInt64(pRange.substr(dots + 2), most);
    const int64_t inside = std::uniform_int_distribution<int64_t>(least, most)(fRandom);
    const int64_t values[] = {least, most, inside, inside};
    return std::to_string(values[fRandom() % std::size(values)]);
  }

  // Mostly anything, bytes that are not UTF-8 included; now and then what the options with a form of their own take.
  std::string Text() {
    static constexpr std::string_view kForms[] = {"1;5;90",         "3",           "name",    "name;size",
                                                  "size,ascending", "a@b.example", "640x480", "2.5%"};
    const size_t choice = fRandom() % (2 * std::size(kForms));
    if (choice < std::size(kForms)) return std::string(kForms[choice]);
    return Vantrel::ToNativeBytes(fNasty.Next());
  }

  std::mt19937 fRandom;
  TNastyText fNasty;
};

}  // namespace Vantrel::Testing
