// Upper case of every unit.

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include "platform/text/Utf.h"

namespace Vantrel {

// The shortcuts of UpcaseUnit leave no letter out.
TEST(Utf, UpcaseOfEveryUnit) {
  int letters = 0;
  for (UChar32 code = 0; code < 0x10000; ++code) {
    const UChar32 upper = u_toupper(code);
    const UChar32 expected = upper < 0x10000 && u_tolower(upper) == code ? upper : code;
    ASSERT_EQ(static_cast<UChar32>(UpcaseUnit(static_cast<char16_t>(code))), expected) << code;
    letters += expected != code;
  }
  EXPECT_GT(letters, 1'000);
}

}  // namespace Vantrel
