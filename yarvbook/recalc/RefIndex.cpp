#include "recalc/RefIndex.h"

namespace {

// Calls fn(node) for the canonical nodes of rows nRow1..nRow2 (bottom-up walk).
template <class F>
void ForEachNode(int nRow1, int nRow2, int nLeaves, F&& fn) {
  int l = nRow1 + nLeaves;
  int r = nRow2 + nLeaves + 1;
  while (l < r) {
    if (l & 1) fn(l++);
    if (r & 1) fn(--r);
    l >>= 1;
    r >>= 1;
  }
}

int LevelOf(int nNode) {
  int nLevel = -1;
  while (nNode) {
    nNode >>= 1;
    nLevel++;
  }
  return nLevel;
}

}  // namespace

void CRefIndex::Clear() {
  std::vector<std::uint32_t>().swap(m_NodeStart);
  std::vector<std::uint32_t>().swap(m_Ids);
  std::vector<std::uint16_t>().swap(m_Cols);
  m_nLevelMask = 0;
}

void CRefIndex::Build(const std::vector<TEntry>& entries) {
  Clear();
  if (entries.empty()) return;
  m_NodeStart.assign(2 * kLeaves + 1, 0);
  // Count per node (shifted by one), prefix sums, then place.
  for (const TEntry& e : entries)
    ForEachNode(e.wRow1, e.wRow2, kLeaves, [&](int nNode) { m_NodeStart[nNode + 1]++; });
  for (int k = 1; k <= 2 * kLeaves; k++) {
    if (m_NodeStart[k] != 0 && k >= 1) m_nLevelMask |= 1u << LevelOf(k - 1);
    m_NodeStart[k] += m_NodeStart[k - 1];
  }
  m_Ids.resize(m_NodeStart[2 * kLeaves]);
  m_Cols.resize(m_Ids.size());
  std::vector<std::uint32_t> fill(m_NodeStart.begin(), m_NodeStart.end() - 1);
  for (const TEntry& e : entries) {
    const std::uint16_t wCols = static_cast<std::uint16_t>((e.cCol1 << 8) | e.cCol2);
    ForEachNode(e.wRow1, e.wRow2, kLeaves, [&](int nNode) {
      const std::uint32_t k = fill[nNode]++;
      m_Ids[k] = e.nId;
      m_Cols[k] = wCols;
    });
  }
}
