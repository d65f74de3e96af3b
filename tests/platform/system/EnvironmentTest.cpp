// Variables, percent signs; today's date.

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "platform/system/Environment.h"
#include "platform/system/FileTime.h"
#include "platform/text/Text.h"

namespace Vantrel {

TEST(Environment, PercentSigns) {
  // PATH is the one variable that every process has on both systems.
  const char* value = std::getenv("PATH");
  ASSERT_NE(value, nullptr);
  const std::u16string path = FromNativeBytes(value);
  const struct {
    std::u16string_view fText;
    std::u16string fExpected;
  } rows[] = {
      {u"", u""},
      {u"*.tmp", u"*.tmp"},
      {u"%PATH%", path},
      {u"a%PATH%b;%PATH%", u"a" + path + u"b;" + path},
      {u"%VANTREL_NONE%", u"%VANTREL_NONE%"},
      {u"%VANTREL_NONE%%PATH%", u"%VANTREL_NONE%" + path},
      {u"%VANTREL_NONE%PATH%", u"%VANTREL_NONE%PATH%"},
      {u"100% of %PATH%", u"100% of %PATH%"},
      {u"%", u"%"},
      {u"%%", u"%%"},
      {u"%%PATH%%", u"%%PATH%%"},
      {u"%PATH", u"%PATH"},
      {u"%PATH%50%", path + u"50%"},
      {u"\u00E9%PATH%", u"\u00E9" + path},
  };
  for (const auto& row : rows) EXPECT_EQ(ToUtf8(ExpandEnvironment(row.fText)), ToUtf8(row.fExpected));
  EXPECT_EQ(EnvironmentVariable(u"PATH"), path);
  EXPECT_EQ(EnvironmentVariable(u"VANTREL_NONE"), std::nullopt);
  EXPECT_EQ(EnvironmentVariable(u"%PATH%"), std::nullopt);
}

TEST(Environment, DateOfToday) {
  const auto today = [] {
    const std::time_t now = std::time(nullptr);
    char text[16];
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%d", std::localtime(&now)));
  };
  const std::string before = today();
  const std::string date = ToUtf8(CurrentDateText());
  const std::string after = today();  // differs at midnight
  EXPECT_TRUE(date == before || date == after) << date;
}

}  // namespace Vantrel
