// Brute-force model for the address tests: a set of cells, and random small ranges
// near a chosen corner of the grid, so that the algebra is checked against plain
// set operations.
#pragma once

#include <random>
#include <set>
#include <utility>

#include "base/Range.h"
#include "base/Region.h"

using TCellSet = std::set<std::pair<int, int>>;

inline TCellSet CellsOf(const TRange& r) {
  TCellSet cells;
  for (int row = r.first.row; row <= r.last.row; ++row)
    for (int col = r.first.col; col <= r.last.col; ++col) cells.emplace(row, col);
  return cells;
}

inline TCellSet CellsOf(const TRegion& region) {
  TCellSet cells;
  for (int i = 0; i < region.Ranges(); ++i) cells.merge(CellsOf(region.Range(i)));
  return cells;
}

inline TCellSet Minus(const TCellSet& a, const TCellSet& b) {
  TCellSet out;
  for (const auto& c : a)
    if (!b.count(c)) out.insert(c);
  return out;
}

inline TCellSet Meet(const TCellSet& a, const TCellSet& b) {
  TCellSet out;
  for (const auto& c : a)
    if (b.count(c)) out.insert(c);
  return out;
}

// Random normalised ranges inside an 8 x 8 window whose top-left is (nRow0, nCol0);
// small enough that overlaps, touching edges and containment all come up often.
class TRandomRanges {
 public:
  TRandomRanges(unsigned nSeed, int nRow0 = 0, int nCol0 = 0)
      : m_Engine(nSeed), m_nRow0(nRow0), m_nCol0(nCol0) {}
  TRange Next() {
    std::uniform_int_distribution<int> pick(0, 7);
    TRange r(m_nRow0 + pick(m_Engine), m_nCol0 + pick(m_Engine), m_nRow0 + pick(m_Engine),
             m_nCol0 + pick(m_Engine));
    r.Normalize();
    return r;
  }
  TRegion NextRegion(int nMaxRanges) {
    TRegion region;
    const int n = std::uniform_int_distribution<int>(1, nMaxRanges)(m_Engine);
    for (int i = 0; i < n; ++i) region.Add(Next());
    return region;
  }
  TCell NextCell() {
    std::uniform_int_distribution<int> pick(0, 7);
    return TCell(m_nRow0 + pick(m_Engine), m_nCol0 + pick(m_Engine));
  }

 private:
  std::mt19937 m_Engine;
  int m_nRow0, m_nCol0;
};

// True when no two ranges of the region share a cell.
inline bool IsDisjoint(const TRegion& region) {
  long long n = 0;
  for (int i = 0; i < region.Ranges(); ++i) n += region.Range(i).CellCount();
  return n == static_cast<long long>(CellsOf(region).size());
}
