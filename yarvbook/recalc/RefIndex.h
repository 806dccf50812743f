// CRefIndex: the rectangles that formulas read on one sheet, indexed by row so that a
// change finds the formulas that read it without looking at the others. It is a
// static segment tree over the 65,536 rows: each rectangle is stored in the O(log)
// nodes whose row spans tile its rows, with its columns and the formula's id, so a
// query for one row visits 17 nodes and sees only rectangles that hold the row.
// A rectangle of more than one cell is kept once however many formulas read it: its
// node entries name the rectangle, which lists its readers, so a query looks at each
// distinct rectangle once (a column of lookups reading one table costs a few checks,
// not one per lookup). One-cell rectangles, rarely shared, name their formula.
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
  // StartCount, Count for each entry, StartPlace, Place for the same entries (in
  // any order), EndPlace. StartCount, Count and StartPlace throw
  // std::bad_alloc. Ids are below 2^31.
  void StartCount();
  void Count(int nRow1, int nRow2, int nCol1, int nCol2);
  void StartPlace();
  void Place(std::uint32_t nId, int nRow1, int nRow2, int nCol1, int nCol2);
  void EndPlace();
  void Clear();
  bool IsEmpty() const { return m_Ids.empty(); }

  // Calls fn(nId) for every rectangle that meets rows nRow1..nRow2 by columns
  // nCol1..nCol2, in no particular order. A rectangle may be reported more than once
  // for a query spanning several rows; callers mark what they have seen.
  template <class F>
  void ForEach(int nRow1, int nCol1, int nRow2, int nCol2, F&& fn) const;

 private:
  static constexpr int kLeaves = 65536;  // rows
  static constexpr int kLevels = 17;     // root (level 0) to the leaves (level 16)

  // A node entry with this bit names shared rectangle (entry & ~kShared); without
  // it, a formula.
  static constexpr std::uint32_t kShared = 0x80000000u;

  // Calls fn(node) for the nodes whose row spans tile rows nRow1..nRow2.
  template <class F>
  static void ForEachNode(int nRow1, int nRow2, F&& fn);
  // Makes the node table, every count 0. Throws std::bad_alloc.
  void AllocateNodes();
  // Count and Place for rectangles of more than one cell.
  void CountRect(int nRow1, int nRow2, int nCol1, int nCol2);
  void PlaceRect(std::uint32_t nId, int nRow1, int nRow2, int nCol1, int nCol2);
  // Puts nEntry in the nodes of the rectangle.
  void PlaceNodes(std::uint32_t nEntry, int nRow1, int nRow2, int nCol1, int nCol2);
  // The slot of the rectangle with this key in m_Slots: its own, or the empty one
  // where it belongs.
  size_t FindSlot(std::uint64_t nKey) const;
  // Doubles m_Slots. Throws std::bad_alloc.
  void GrowSlots();

  // Node k's entries are m_Ids[m_NodeStart[k]..m_NodeStart[k + 1]); nodes 1..2N-1.
  // While the entries are counted, node k's count is at k + 1; while they are
  // placed, node k's next free place is at k. Empty when no entry was counted.
  std::vector<std::uint32_t> m_NodeStart;
  TPodArray<std::uint32_t> m_Ids;
  TPodArray<std::uint16_t> m_Cols;  // first column << 8 | last column, beside m_Ids
  std::uint32_t m_nLevelMask = 0;   // bit l: some node of level l holds entries
  // Shared rectangle s is read by m_Readers[m_SharedStart[s]..m_SharedStart[s + 1]),
  // in the order placed. While they are placed, the next free place of s is at s.
  TPodArray<std::uint32_t> m_SharedStart;
  TPodArray<std::uint32_t> m_Readers;

  // While building: the distinct rectangles of more than one cell, numbered as first
  // counted, in an open-addressing table keyed by corners (row1 << 32 | row2 << 16 |
  // col1 << 8 | col2, never 0 for such a rectangle; 0 marks an empty slot).
  struct TSlot {
    std::uint64_t nKey;
    std::uint32_t nRect;
  };
  TPodArray<TSlot> m_Slots;  // a power of two long, at most half full
  int m_nSlotBits = 0;
  // By rectangle: while counting, its readers; from StartPlace, kShared | s for a
  // rectangle read by several formulas, 0 for one read by one.
  TPodArray<std::uint32_t> m_RectInfo;
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
inline void CRefIndex::Count(int nRow1, int nRow2, int nCol1, int nCol2) {
  // The node table is made with the first entry: a sheet nobody reads keeps none.
  if (m_NodeStart.empty()) AllocateNodes();
  if (nRow1 == nRow2 && nCol1 == nCol2) {  // one cell, one leaf: the common case
    m_NodeStart[static_cast<size_t>(nRow1) + kLeaves + 1]++;
    return;
  }
  CountRect(nRow1, nRow2, nCol1, nCol2);
}

inline void CRefIndex::Place(std::uint32_t nId, int nRow1, int nRow2, int nCol1, int nCol2) {
  if (nRow1 != nRow2 || nCol1 != nCol2) {
    PlaceRect(nId, nRow1, nRow2, nCol1, nCol2);
    return;
  }
  const std::uint32_t k = m_NodeStart[static_cast<size_t>(nRow1) + kLeaves]++;
  m_Ids[k] = nId;
  m_Cols[k] = static_cast<std::uint16_t>((nCol1 << 8) | nCol2);
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
        if ((nCols >> 8) > nCol2 || (nCols & 0xFF) < nCol1) continue;
        const std::uint32_t nEntry = m_Ids[k];
        if (!(nEntry & kShared)) {
          fn(nEntry);
          continue;
        }
        const std::uint32_t s = nEntry & ~kShared;
        for (std::uint32_t j = m_SharedStart[s], jEnd = m_SharedStart[s + 1]; j < jEnd; j++)
          fn(m_Readers[j]);
      }
    }
  }
}
