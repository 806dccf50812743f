#include "recalc/RefIndex.h"

#include <algorithm>
#include <cassert>

namespace {

std::uint64_t RectKey(int nRow1, int nRow2, int nCol1, int nCol2) {
  return static_cast<std::uint64_t>(nRow1) << 32 | static_cast<std::uint64_t>(nRow2) << 16 |
         static_cast<std::uint64_t>(nCol1) << 8 | static_cast<std::uint64_t>(nCol2);
}

}  // namespace

void CRefIndex::Clear() {
  std::vector<std::uint32_t>().swap(m_NodeStart);
  m_Ids.Release();
  m_Cols.Release();
  m_nLevelMask = 0;
  m_SharedStart.Release();
  m_Readers.Release();
  m_Slots.Release();
  m_nSlotBits = 0;
  m_RectInfo.Release();
}

void CRefIndex::Build(const std::vector<TEntry>& entries) {
  StartCount();
  for (const TEntry& e : entries) Count(e.wRow1, e.wRow2, e.cCol1, e.cCol2);
  StartPlace();
  for (const TEntry& e : entries) Place(e.nId, e.wRow1, e.wRow2, e.cCol1, e.cCol2);
  EndPlace();
}

void CRefIndex::StartCount() { Clear(); }

void CRefIndex::AllocateNodes() { m_NodeStart.assign(2 * kLeaves + 1, 0); }

size_t CRefIndex::FindSlot(std::uint64_t nKey) const {
  // Fibonacci hashing: the top bits of the product mix every corner in.
  const size_t nMask = m_Slots.size() - 1;
  size_t i = static_cast<size_t>((nKey * 0x9E3779B97F4A7C15ull) >> (64 - m_nSlotBits));
  while (m_Slots[i].nKey != 0 && m_Slots[i].nKey != nKey) i = (i + 1) & nMask;
  return i;
}

void CRefIndex::GrowSlots() {
  TPodArray<TSlot> old = std::move(m_Slots);
  m_nSlotBits = m_nSlotBits == 0 ? 6 : m_nSlotBits + 1;
  m_Slots.SetSize(size_t{1} << m_nSlotBits);
  std::fill(m_Slots.begin(), m_Slots.end(), TSlot{0, 0});
  for (const TSlot& slot : old)
    if (slot.nKey != 0) m_Slots[FindSlot(slot.nKey)] = slot;
}

void CRefIndex::CountRect(int nRow1, int nRow2, int nCol1, int nCol2) {
  if (2 * (m_RectInfo.size() + 1) > m_Slots.size()) GrowSlots();
  const std::uint64_t nKey = RectKey(nRow1, nRow2, nCol1, nCol2);
  TSlot& slot = m_Slots[FindSlot(nKey)];
  if (slot.nKey != 0) {
    m_RectInfo[slot.nRect]++;
    return;
  }
  // A new rectangle: its node entries are counted once, for all its readers.
  slot.nKey = nKey;
  slot.nRect = static_cast<std::uint32_t>(m_RectInfo.size());
  m_RectInfo.push_back(1);
  ForEachNode(nRow1, nRow2, [this](int nNode) { m_NodeStart[static_cast<size_t>(nNode) + 1]++; });
}

void CRefIndex::PlaceNodes(std::uint32_t nEntry, int nRow1, int nRow2, int nCol1, int nCol2) {
  const std::uint16_t wCols = static_cast<std::uint16_t>((nCol1 << 8) | nCol2);
  ForEachNode(nRow1, nRow2, [&](int nNode) {
    const std::uint32_t k = m_NodeStart[static_cast<size_t>(nNode)]++;
    m_Ids[k] = nEntry;
    m_Cols[k] = wCols;
  });
}

void CRefIndex::PlaceRect(std::uint32_t nId, int nRow1, int nRow2, int nCol1, int nCol2) {
  assert(nId < kShared && "formula ids stay below the shared-rectangle bit");
  const TSlot& slot = m_Slots[FindSlot(RectKey(nRow1, nRow2, nCol1, nCol2))];
  assert(slot.nKey != 0 && "placed rectangles were counted");
  const std::uint32_t nInfo = m_RectInfo[slot.nRect];
  if (nInfo & kShared)
    m_Readers[m_SharedStart[nInfo & ~kShared]++] = nId;
  else
    PlaceNodes(nId, nRow1, nRow2, nCol1, nCol2);
}

void CRefIndex::StartPlace() {
  if (m_NodeStart.empty()) return;
  // Counts to starts: node k's entries begin behind those of the nodes before it.
  // Node k's count is at k + 1, and the nodes of level l are 2^l..2^(l+1)-1.
  std::uint32_t nSum = 0;
  for (int nLevel = 0; nLevel < kLevels; nLevel++) {
    const int nFirst = 1 << nLevel;
    const std::uint32_t nBefore = nSum;
    for (int k = nFirst; k < 2 * nFirst; k++) {
      const std::uint32_t nCount = m_NodeStart[static_cast<size_t>(k) + 1];
      m_NodeStart[static_cast<size_t>(k) + 1] = nSum;
      nSum += nCount;
    }
    if (nSum != nBefore) m_nLevelMask |= 1u << nLevel;
  }
  // Now node k's start is at k + 1; move it to k.
  std::copy(m_NodeStart.begin() + 1, m_NodeStart.end(), m_NodeStart.begin());
  m_NodeStart[2 * kLeaves] = nSum;
  m_Ids.SetSize(nSum);  // every place is filled by Place or below
  m_Cols.SetSize(nSum);

  // Rectangles read by several formulas get a reader list and their node entries
  // now; the others are placed with their one reader.
  std::uint32_t nReaders = 0;
  for (std::uint32_t& nInfo : m_RectInfo) {
    if (nInfo < 2) {
      nInfo = 0;
      continue;
    }
    const std::uint32_t nCount = nInfo;
    nInfo = kShared | static_cast<std::uint32_t>(m_SharedStart.size());
    m_SharedStart.push_back(nReaders);
    nReaders += nCount;
  }
  if (m_SharedStart.empty()) return;
  m_SharedStart.push_back(nReaders);
  m_Readers.SetSize(nReaders);
  for (const TSlot& slot : m_Slots) {
    if (slot.nKey == 0 || !(m_RectInfo[slot.nRect] & kShared)) continue;
    PlaceNodes(m_RectInfo[slot.nRect], static_cast<int>(slot.nKey >> 32),
               static_cast<int>(slot.nKey >> 16 & 0xFFFF), static_cast<int>(slot.nKey >> 8 & 0xFF),
               static_cast<int>(slot.nKey & 0xFF));
  }
}

void CRefIndex::EndPlace() {
  if (m_NodeStart.empty()) return;
  // Each node's place has moved on to the start of the next node: shift back. The
  // same for the reader lists.
  std::copy_backward(m_NodeStart.begin(), m_NodeStart.end() - 2, m_NodeStart.end() - 1);
  m_NodeStart[0] = 0;
  if (!m_SharedStart.empty()) {
    std::copy_backward(m_SharedStart.begin(), m_SharedStart.end() - 1, m_SharedStart.end());
    m_SharedStart[0] = 0;
  }
  m_Slots.Release();
  m_nSlotBits = 0;
  m_RectInfo.Release();
}
