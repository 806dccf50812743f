// CRefIndex: the rectangles that formulas read on one sheet, indexed by row so that a
// change finds the formulas that read it without looking at the others. It is a
// static segment tree over the 65,536 rows: each rectangle is stored in the O(log)
// nodes whose row spans tile its rows, with its columns and the formula's id, so a
// query for one row visits 17 nodes and sees only rectangles that hold the row.
// Built in one go (counting sort by node); rebuilt with the recalculation chain.
#pragma once

#include <cstdint>
#include <vector>

#include "base/Export.h"

class YARVBOOK_API CRefIndex {
 public:
  // One rectangle read by formula nId, corners in order and inside the grid.
  struct TEntry {
    std::uint32_t nId;
    std::uint16_t wRow1, wRow2;
    std::uint8_t cCol1, cCol2;
  };

  CRefIndex() = default;

  // Replaces the contents with entries. Throws std::bad_alloc.
  void Build(const std::vector<TEntry>& entries);
  void Clear();
  bool IsEmpty() const { return m_Ids.empty(); }

  // Calls fn(nId) for every rectangle that meets rows nRow1..nRow2 by columns
  // nCol1..nCol2. A rectangle may be reported more than once for a query spanning
  // several rows; callers mark what they have seen.
  template <class F>
  void ForEach(int nRow1, int nCol1, int nRow2, int nCol2, F&& fn) const;

 private:
  static constexpr int kLeaves = 65536;  // rows
  static constexpr int kLevels = 17;     // root (level 0) to the leaves (level 16)

  // Node k's entries are m_Ids[m_NodeStart[k]..m_NodeStart[k + 1]); nodes 1..2N-1.
  std::vector<std::uint32_t> m_NodeStart;
  std::vector<std::uint32_t> m_Ids;
  std::vector<std::uint16_t> m_Cols;  // first column << 8 | last column, beside m_Ids
  std::uint32_t m_nLevelMask = 0;     // bit l: some node of level l holds entries
};

template <class F>
void CRefIndex::ForEach(int nRow1, int nCol1, int nRow2, int nCol2, F&& fn) const {
  if (m_Ids.empty()) return;
  for (int nLevel = kLevels - 1; nLevel >= 0; nLevel--) {
    if (!(m_nLevelMask & (1u << nLevel))) continue;
    const int nShift = kLevels - 1 - nLevel;
    const int nLast = (nRow2 + kLeaves) >> nShift;
    for (int nNode = (nRow1 + kLeaves) >> nShift; nNode <= nLast; nNode++) {
      const std::uint32_t nEnd = m_NodeStart[nNode + 1];
      for (std::uint32_t k = m_NodeStart[nNode]; k < nEnd; k++) {
        const int nCols = m_Cols[k];
        if ((nCols >> 8) <= nCol2 && (nCols & 0xFF) >= nCol1) fn(m_Ids[k]);
      }
    }
  }
}
