// Which class serves which path.

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/system/Errors.h"
#include "scan/storage/EnumeratorFactory.h"
#include "scan/storage/PathNotFoundEnumerator.h"

namespace Vantrel::Enumerators {
namespace {

// Enumerators that only say by their error code who made them.
template <uint32_t kCode>
TRef<IHierarchicalEnumerator> Make(const std::u16string& pPath, THierarchicalEnumeratorOptions pOptions) {
  return MakeRef<TPathNotFoundEnumerator>(pPath, kCode, pOptions);
}

uint32_t MakerOf(const std::u16string& pPath) {
  return THierarchicalEnumeratorFactory::CreateForPath(pPath, 0)->GetErrorCode();
}

TEST(EnumeratorFactory, ProtocolPicksTheClass) {
  using F = THierarchicalEnumeratorFactory;
  F::RegisterEnumerator({"TOne", u"test1:", Make<101>, nullptr}, false);
  F::RegisterEnumerator({"TTwo", u"test2:", Make<102>, Make<112>}, false);
  EXPECT_EQ(MakerOf(u"test1:/a"), 101U);
  EXPECT_EQ(MakerOf(u"TEST2:"), 102U);
  EXPECT_EQ(F::CreateForObject(u"test2:x", 0)->GetErrorCode(), 112U);
  EXPECT_EQ(F::CreateForObject(u"test1:x", 0)->GetErrorCode(), 101U);
  EXPECT_EQ(F::CreateForPath(u"test1:/a", 0)->GetPath(), u"test1:/a");

  F::RegisterEnumerator({"TThree", u"test1:", Make<103>, nullptr}, false);
  EXPECT_EQ(MakerOf(u"test1:"), 103U) << "the later of two serves their protocol";

  auto protocols = F::GetKnownEnumeratorsProtocols();
  EXPECT_EQ(std::count(protocols.begin(), protocols.end(), u"test1:"), 1);
  EXPECT_EQ(std::count(protocols.begin(), protocols.end(), u"file:"), 1) << "the platform's own come by themselves";
}

TEST(EnumeratorFactory, ClassWithoutFactoryMethodIsNotImplemented) {
  THierarchicalEnumeratorFactory::RegisterEnumerator({"TBare", u"bare:", nullptr, nullptr}, false);
  try {
    THierarchicalEnumeratorFactory::CreateForPath(u"bare:x", 0);
    FAIL() << "no exception";
  } catch (const ENotImplemented& e) {
    EXPECT_STREQ(e.what(), "TBare does not have an implementation for the factory method CreateForPath().");
  }
}

}  // namespace
}  // namespace Vantrel::Enumerators
