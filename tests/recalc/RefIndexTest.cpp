// The index of rectangles read against a brute-force scan of every (rectangle,
// reader) pair: many formulas reading the same rectangles, alone or beside one-cell
// and once-read ones, at the edges of the grid.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "base/Cell.h"
#include "recalc/RefIndex.h"

namespace {

using TEntry = CRefIndex::TEntry;

// A random rectangle: one cell, one row, one column or a block, at times reaching the
// last row or column.
TEntry RandomRect(std::mt19937& rng) {
  auto Span = [&](int nMax) {
    const int nShape = static_cast<int>(rng() % 4);
    int n1 = static_cast<int>(rng() % 64);
    if (rng() % 8 == 0) n1 = nMax - n1;  // near the end of the grid
    const int nLen = nShape == 0 ? 0 : static_cast<int>(rng() % (nShape == 3 ? 40000 : 20));
    return std::pair<int, int>(n1, std::min(nMax, n1 + nLen));
  };
  const auto [nRow1, nRow2] = Span(kMaxRow);
  const auto [nCol1, nCol2] = rng() % 3 == 0 ? std::pair<int, int>(0, 0) : Span(kMaxCol);
  return {0, static_cast<std::uint16_t>(nRow1), static_cast<std::uint16_t>(nRow2),
          static_cast<std::uint8_t>(nCol1), static_cast<std::uint8_t>(nCol2)};
}

TEST(RefIndex, QueriesMatchBruteForceWithSharedRectangles) {
  std::mt19937 rng(31);
  CRefIndex index;
  for (int nTrial = 0; nTrial < 40; nTrial++) {
    SCOPED_TRACE(nTrial);
    // A pool of rectangles, some read by one formula, most by many; the pool outgrows
    // the first hash table in the later trials.
    std::vector<TEntry> pool(static_cast<size_t>(1 + nTrial * 4));
    for (TEntry& e : pool) e = RandomRect(rng);
    std::vector<TEntry> entries;
    const std::uint32_t nFormulas = 50 + static_cast<std::uint32_t>(rng() % 400);
    for (std::uint32_t nId = 0; nId < nFormulas; nId++)
      for (unsigned nRefs = rng() % 4; nRefs > 0; nRefs--) {
        TEntry e = rng() % 5 == 0 ? RandomRect(rng) : pool[rng() % pool.size()];
        e.nId = nId;
        entries.push_back(e);
      }
    std::shuffle(entries.begin(), entries.end(), rng);
    index.Build(entries);  // the same index object each time: a rebuild starts afresh
    EXPECT_EQ(entries.empty(), index.IsEmpty());
    for (int nQuery = 0; nQuery < 60; nQuery++) {
      // Cells and small rectangles, mostly where the entries are.
      TEntry q = nQuery % 2        ? RandomRect(rng)
                 : entries.empty() ? pool[0]
                                   : entries[rng() % entries.size()];
      if (nQuery % 3 == 0) q.wRow2 = q.wRow1, q.cCol2 = q.cCol1;
      if (nQuery % 3 == 1) q.wRow1 = q.wRow2, q.cCol1 = q.cCol2;
      if (q.wRow2 - q.wRow1 > 50) q.wRow2 = static_cast<std::uint16_t>(q.wRow1 + 50);
      std::vector<bool> expected(nFormulas, false), got(nFormulas, false);
      for (const TEntry& e : entries)
        if (e.wRow1 <= q.wRow2 && e.wRow2 >= q.wRow1 && e.cCol1 <= q.cCol2 && e.cCol2 >= q.cCol1)
          expected[e.nId] = true;
      bool bInRange = true;
      index.ForEach(q.wRow1, q.cCol1, q.wRow2, q.cCol2, [&](std::uint32_t nId) {
        if (nId >= nFormulas) {
          bInRange = false;
          return;
        }
        got[nId] = true;
      });
      ASSERT_TRUE(bInRange);
      ASSERT_EQ(expected, got) << "query rows " << q.wRow1 << ".." << q.wRow2 << ", columns "
                               << int{q.cCol1} << ".." << int{q.cCol2};
    }
  }
  index.Clear();
  EXPECT_TRUE(index.IsEmpty());
}

// A reader of a shared rectangle is reported once per query of one cell, whatever
// the number of readers; a cell beside the rectangle reports none of them.
TEST(RefIndex, SharedRectangleReportsEachReaderOnce) {
  std::vector<TEntry> entries;
  for (std::uint32_t nId = 0; nId < 1000; nId++) {
    entries.push_back({nId, 0, 9999, 0, 1});  // $A$1:$B$10000
    entries.push_back(
        {nId, static_cast<std::uint16_t>(nId), static_cast<std::uint16_t>(nId), 3, 3});
  }
  CRefIndex index;
  index.Build(entries);
  // clang-format off
  struct TCase { int nRow, nCol; size_t nReports; };
  const TCase kCases[] = {
      {0, 0, 1000}, {9999, 1, 1000},  // corners inside
      {10000, 0, 0}, {0, 2, 0},       // one step outside, down and right
      {5, 3, 1},                      // a one-cell reference
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.nRow << "," << c.nCol);
    std::vector<std::uint32_t> reported;
    index.ForEach(c.nRow, c.nCol, c.nRow, c.nCol,
                  [&](std::uint32_t nId) { reported.push_back(nId); });
    EXPECT_EQ(c.nReports, reported.size());
    std::sort(reported.begin(), reported.end());
    EXPECT_EQ(reported.end(), std::adjacent_find(reported.begin(), reported.end()));
  }
}

}  // namespace
