// CRefIndex: the rectangles that formulas read on one sheet, indexed by row so that a
// change finds the formulas that read it without looking at the others. It is a
// static segment tree over the 65,536 rows: each rectangle is stored in the O(log)
// nodes whose row spans tile its rows, with its columns and the formula's id, so a
// query for one row visits 17 nodes and sees only rectangles that hold the row.
// Built in one go (counting sort by node); rebuilt with the recalculation chain.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/Export.h"
#include "recalc/PodArray.h"

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
  // The same in steps, for callers that produce the entries rather than hold them:
  // StartCount, Count for each entry, StartPlace, Place for the same entries in
  // the order their ids should be reported in, EndPlace. StartCount and StartPlace
  // throw std::bad_alloc.
  void StartCount();
  void Count(int nRow1, int nRow2);
  void StartPlace();
  void Place(std::uint32_t nId, int nRow1, int nRow2, int nCol1, int nCol2);
  void EndPlace();
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

  // Calls fn(node) for the nodes whose row spans tile rows nRow1..nRow2.
  template <class F>
  static void ForEachNode(int nRow1, int nRow2, F&& fn);
  // Makes the node table, every count 0. Throws std::bad_alloc.
  void AllocateNodes();

  // Node k's entries are m_Ids[m_NodeStart[k]..m_NodeStart[k + 1]); nodes 1..2N-1.
  // While the entries are counted, node k's count is at k + 1; while they are
  // placed, node k's next free place is at k. Empty when no entry was counted.
  std::vector<std::uint32_t> m_NodeStart;
  TPodArray<std::uint32_t> m_Ids;
  TPodArray<std::uint16_t> m_Cols;  // first column << 8 | last column, beside m_Ids
  std::uint32_t m_nLevelMask = 0;   // bit l: some node of level l holds entries
};

// The canonical nodes of the rows, by a bottom-up walk; one row is one leaf.
template <class F>
void CRefIndex::ForEachNode(int nRow1, int nRow2, F&& fn) {
  if (nRow1 == nRow2) {
    fn(nRow1 + kLeaves);
    return;
  }
  int l = nRow1 + kLeaves;
  int r = nRow2 + kLeaves + 1;
  while (l < r) {
    if (l & 1) fn(l++);
    if (r & 1) fn(--r);
    l >>= 1;
    r >>= 1;
  }
}

// Inline: they run once per reference of the book.
inline void CRefIndex::Count(int nRow1, int nRow2) {
  // The node table is made with the first entry: a sheet nobody reads keeps none.
  if (m_NodeStart.empty()) AllocateNodes();
  if (nRow1 == nRow2) {  // one leaf, the common case
    m_NodeStart[static_cast<size_t>(nRow1) + kLeaves + 1]++;
    return;
  }
  ForEachNode(nRow1, nRow2, [this](int nNode) { m_NodeStart[static_cast<size_t>(nNode) + 1]++; });
}

inline void CRefIndex::Place(std::uint32_t nId, int nRow1, int nRow2, int nCol1, int nCol2) {
  const std::uint16_t wCols = static_cast<std::uint16_t>((nCol1 << 8) | nCol2);
  ForEachNode(nRow1, nRow2, [&](int nNode) {
    const std::uint32_t k = m_NodeStart[static_cast<size_t>(nNode)]++;
    m_Ids[k] = nId;
    m_Cols[k] = wCols;
  });
}

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
