// Pieces in their order on any number of threads; failures, early ends.

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

#include "export/walk/ParallelText.h"

namespace Vantrel::Exporting {
namespace {

// Some take long, and some are there from the start.
std::string PieceOf(int pNumber) {
  return std::string(static_cast<size_t>(pNumber) * 7919 % 500, static_cast<char>('a' + pNumber % 26)) + "\n";
}

bool AddPiece(TParallelText& pParallel, int pNumber) {
  if (pNumber % 5 != 0) {
    return pParallel.Add([pNumber](TRowText& pText) {
      EXPECT_EQ(pText.fBytes, "");
      std::mt19937_64 random(static_cast<uint64_t>(pNumber));
      random.discard(pNumber % 16 == 1 ? 20'000 : 10);
      pText.fBytes = PieceOf(pNumber);
    });
  }
  TRowText ready{PieceOf(pNumber), {}};
  const bool added = pParallel.Add(ready);
  EXPECT_EQ(ready.fBytes, "");
  return added;
}

TEST(ParallelText, PiecesComeInTheOrderInWhichTheyWereAskedFor) {
  constexpr int kPieces = 3000;
  std::string expected;
  for (int i = 0; i < kPieces; ++i) expected += PieceOf(i);
  for (const int threads : {0, 1, 2, 8}) {
    std::string text;
    TParallelText parallel(threads, [&](const TRowText& pText) {
      text += pText.fBytes;
      return true;
    });
    for (int i = 0; i < kPieces; ++i) EXPECT_TRUE(AddPiece(parallel, i));
    EXPECT_TRUE(parallel.Finish());
    EXPECT_EQ(text, expected) << threads;
  }
}

TEST(ParallelText, EndsWhereItIsToldOrAPieceFails) {
  for (const int threads : {1, 2, 8}) {
    int taken = 0;
    TParallelText stopped(threads, [&](const TRowText&) { return ++taken < 100; });
    int added = 0;
    while (added < 100'000 && AddPiece(stopped, added)) ++added;
    EXPECT_LT(added, 1000) << threads;
    EXPECT_FALSE(stopped.Finish());
    EXPECT_EQ(taken, 100);

    std::string text;
    TParallelText failing(threads, [&](const TRowText& pText) {
      text += pText.fBytes;
      return true;
    });
    const auto run = [&] {
      for (int i = 0; i < 500; ++i)
        failing.Add([i](TRowText& pText) {
          if (i == 300) throw std::runtime_error("piece 300");
          pText.fBytes = "x";
        });
      failing.Finish();
    };
    EXPECT_THROW(run(), std::runtime_error) << threads;
    EXPECT_EQ(text, std::string(300, 'x')) << threads;
  }
}

TEST(ParallelText, WhatIsGivenUpHalfWayLetsGoOfEverything) {
  const auto held = std::make_shared<int>();
  for (const int threads : {1, 2, 8}) {
    TParallelText parallel(threads, [](const TRowText&) { return true; });
    for (int i = 0; i < 50; ++i)
      parallel.Add([held](TRowText& pText) { pText.fBytes = std::to_string(held.use_count()); });
  }
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace Vantrel::Exporting
