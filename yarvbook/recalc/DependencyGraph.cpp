#include "recalc/DependencyGraph.h"

#include <algorithm>

#include "base/Cell.h"

namespace {

// A reference taller than this many times its width is walked column by column.
constexpr int kTallFactor = 16;
// Rows with more formulas than this are searched, shorter ones scanned.
constexpr std::uint32_t kScanLimit = 16;

std::uint32_t Key(int nRow, int nCol) { return static_cast<std::uint32_t>(nRow) << 8 | nCol; }

}  // namespace

void CDependencyGraph::Reset(int nSheets, bool bIndexReaders) {
  m_Sheets.clear();
  m_Sheets.resize(static_cast<size_t>(nSheets > 0 ? nSheets : 0));
  m_Key.clear();
  m_Flags.clear();
  m_RefStart.clear();
  m_RefStart.push_back(0);
  m_Refs.clear();
  m_Names.clear();
  m_Order.clear();
  m_Pos.clear();
  m_AlwaysIds.clear();
  m_nPending = 0;
  m_bCounting = bIndexReaders;
  m_bDependants = false;
  m_NameUsers.clear();
  m_Queue.clear();
  m_Dirty.clear();
}

void CDependencyGraph::EndCollect() {
  if (GetCount() > 0) m_RefStart.push_back(static_cast<std::uint32_t>(m_Refs.size()));
  for (TSheet& sheet : m_Sheets) {
    if (sheet.nFirst == sheet.nEnd) continue;
    const int nLastRow = GetRow(sheet.nEnd - 1);
    sheet.rowFirst.assign(static_cast<size_t>(nLastRow) + 2, sheet.nEnd);
    // Walk backwards so that each row ends up with its first id; rows without a
    // formula take the first id of the next row that has one.
    std::uint32_t nNext = sheet.nEnd;
    int nRow = nLastRow + 1;
    for (std::uint32_t nId = sheet.nEnd; nId-- > sheet.nFirst;) {
      const int nIdRow = GetRow(nId);
      while (nRow > nIdRow + 1) sheet.rowFirst[static_cast<size_t>(--nRow)] = nNext;
      nNext = nId;
      sheet.rowFirst[static_cast<size_t>(nIdRow)] = nId;
      nRow = nIdRow + 1;
    }
    while (nRow > 0) sheet.rowFirst[static_cast<size_t>(--nRow)] = nNext;
  }
}

void CDependencyGraph::BuildColumns(const TSheet& sheet) const {
  // Counting sort; ids ascend, so each column's list is by row.
  sheet.colStart.assign(kMaxCol + 2, 0);
  for (std::uint32_t nId = sheet.nFirst; nId < sheet.nEnd; nId++)
    sheet.colStart[static_cast<size_t>(GetCol(nId)) + 1]++;
  for (int c = 1; c <= kMaxCol + 1; c++) sheet.colStart[c] += sheet.colStart[c - 1];
  sheet.colIds.resize(sheet.nEnd - sheet.nFirst);
  std::vector<std::uint32_t> fill(sheet.colStart.begin(), sheet.colStart.end() - 1);
  for (std::uint32_t nId = sheet.nFirst; nId < sheet.nEnd; nId++)
    sheet.colIds[fill[static_cast<size_t>(GetCol(nId))]++] = nId;
}

int CDependencyGraph::GetSheet(std::uint32_t nId) const {
  for (size_t s = 0; s < m_Sheets.size(); s++)
    if (nId >= m_Sheets[s].nFirst && nId < m_Sheets[s].nEnd) return static_cast<int>(s);
  return -1;
}

void CDependencyGraph::GetNames(std::uint32_t nId, const TNameUse** pBegin,
                                const TNameUse** pEnd) const {
  const auto range =
      std::equal_range(m_Names.begin(), m_Names.end(), TNameUse{nId, 0},
                       [](const TNameUse& a, const TNameUse& b) { return a.nId < b.nId; });
  *pBegin = m_Names.data() + (range.first - m_Names.begin());
  *pEnd = m_Names.data() + (range.second - m_Names.begin());
}

long CDependencyGraph::FindFormula(int nSheet, int nRow, int nCol) const {
  if (nSheet < 0 || static_cast<size_t>(nSheet) >= m_Sheets.size()) return -1;
  const TSheet& sheet = m_Sheets[static_cast<size_t>(nSheet)];
  if (nRow < 0 || static_cast<size_t>(nRow) + 1 >= sheet.rowFirst.size()) return -1;
  return FindInRow(sheet, nRow, nCol);
}

inline long CDependencyGraph::FindInRow(const TSheet& sheet, int nRow, int nCol) const {
  const std::uint32_t nKey = Key(nRow, nCol);
  std::uint32_t j = sheet.rowFirst[static_cast<size_t>(nRow)];
  const std::uint32_t jEnd = sheet.rowFirst[static_cast<size_t>(nRow) + 1];
  if (j == jEnd) return -1;
  // A row whose formulas stand side by side, the common case, is found by subtraction.
  const std::uint32_t nFirst = m_Key[j];
  if (m_Key[jEnd - 1] - nFirst == jEnd - 1 - j)
    return nKey - nFirst <= jEnd - 1 - j ? static_cast<long>(j + (nKey - nFirst)) : -1;
  if (jEnd - j > kScanLimit) {
    const auto itEnd = m_Key.begin() + jEnd;
    const auto it = std::lower_bound(m_Key.begin() + j, itEnd, nKey);
    return it != itEnd && *it == nKey ? static_cast<long>(it - m_Key.begin()) : -1;
  }
  for (; j < jEnd && m_Key[j] <= nKey; j++)
    if (m_Key[j] == nKey) return static_cast<long>(j);
  return -1;
}

inline void CDependencyGraph::SetLine(TFrame& frame) const {
  const TSheet& sheet = m_Sheets[m_Refs[frame.nRef - 1].wSheet];
  const int nLine = frame.wLine, nLo = frame.wLo, nHi = frame.wHi;
  if (frame.bByColumn) {
    // Ids of one column between rows nLo and nHi.
    const auto itBegin = sheet.colIds.begin() + sheet.colStart[static_cast<size_t>(nLine)];
    const auto itEnd = sheet.colIds.begin() + sheet.colStart[static_cast<size_t>(nLine) + 1];
    const auto itLo = std::lower_bound(
        itBegin, itEnd, nLo, [&](std::uint32_t nId, int nRow) { return GetRow(nId) < nRow; });
    const auto itHi = std::upper_bound(
        itLo, itEnd, nHi, [&](int nRow, std::uint32_t nId) { return nRow < GetRow(nId); });
    frame.j = static_cast<std::uint32_t>(itLo - sheet.colIds.begin());
    frame.jEnd = static_cast<std::uint32_t>(itHi - sheet.colIds.begin());
    return;
  }
  // Ids of one row between columns nLo and nHi.
  std::uint32_t j = sheet.rowFirst[static_cast<size_t>(nLine)];
  std::uint32_t jEnd = sheet.rowFirst[static_cast<size_t>(nLine) + 1];
  if (jEnd - j > kScanLimit) {
    const auto itBegin = m_Key.begin() + j;
    const auto itEnd = m_Key.begin() + jEnd;
    j = static_cast<std::uint32_t>(std::lower_bound(itBegin, itEnd, Key(nLine, nLo)) -
                                   m_Key.begin());
    jEnd = static_cast<std::uint32_t>(std::upper_bound(m_Key.begin() + j, itEnd, Key(nLine, nHi)) -
                                      m_Key.begin());
  } else {
    while (j < jEnd && GetCol(j) < nLo) j++;
    while (jEnd > j && GetCol(jEnd - 1) > nHi) jEnd--;
  }
  frame.j = j;
  frame.jEnd = jEnd;
}

inline bool CDependencyGraph::NextPrecedent(TFrame& frame, std::uint32_t& nId) const {
  for (;;) {
    if (frame.j < frame.jEnd) {
      const std::uint32_t k = frame.j++;
      nId = frame.bByColumn ? m_Sheets[m_Refs[frame.nRef - 1].wSheet].colIds[k] : k;
      return true;
    }
    if (frame.wLine < frame.wLineEnd) {
      frame.wLine++;
      SetLine(frame);
      continue;
    }
    if (frame.nRef >= m_RefStart[frame.nId + 1]) return false;
    const TRef& ref = m_Refs[frame.nRef++];
    frame.wLine = frame.wLineEnd = 0;  // no lines to come but the ones set below
    if (ref.wSheet >= m_Sheets.size()) continue;
    const TSheet& sheet = m_Sheets[ref.wSheet];
    if (sheet.rowFirst.empty()) continue;
    const int nRow1 = ref.wRow1;
    const int nRow2 = std::min<int>(ref.wRow2, static_cast<int>(sheet.rowFirst.size()) - 2);
    if (nRow1 > nRow2) continue;
    if (ref.wRow1 == ref.wRow2 && ref.cCol1 == ref.cCol2) {
      // One cell, the common case: at most one formula, found without a line walk.
      const long nFound = FindInRow(sheet, nRow1, ref.cCol1);
      if (nFound < 0) continue;
      nId = static_cast<std::uint32_t>(nFound);
      return true;
    }
    frame.bByColumn = (nRow2 - nRow1 + 1) > kTallFactor * (ref.cCol2 - ref.cCol1 + 1);
    if (frame.bByColumn && sheet.colStart.empty()) BuildColumns(sheet);
    if (frame.bByColumn) {
      frame.wLine = ref.cCol1;
      frame.wLineEnd = ref.cCol2;
      frame.wLo = static_cast<std::uint16_t>(nRow1);
      frame.wHi = static_cast<std::uint16_t>(nRow2);
    } else {
      frame.wLine = static_cast<std::uint16_t>(nRow1);
      frame.wLineEnd = static_cast<std::uint16_t>(nRow2);
      frame.wLo = ref.cCol1;
      frame.wHi = ref.cCol2;
    }
    SetLine(frame);
  }
}

bool CDependencyGraph::SetDependentCellsOrder(std::uint32_t nRoot, TPodArray<TFrame>& stack) {
  // Entering a formula: a circular one reports circular; one on the path is marked
  // circular; an ordered one or one that reads nothing has nothing to order.
  // Otherwise it goes on the stack. The walk of a frame appends each precedent it
  // finishes; a circular result unwinds the whole path, marking every formula on it.
  auto Enter = [&](std::uint32_t nId, int& nResult) {
    std::uint8_t& cFlags = m_Flags[nId];
    if (cFlags & dfCircular) {
      nResult = 1;
      return;
    }
    if (cFlags & dfVisiting) {
      cFlags |= dfCircular;
      nResult = 1;
      return;
    }
    if ((cFlags & dfOrdered) || !(cFlags & dfHasDeps)) {
      nResult = 0;
      return;
    }
    cFlags |= dfVisiting;
    // Made in place: a frame built aside and copied in would be read back before
    // its parts have reached memory.
    TFrame& frame = stack.emplace_back();
    frame.nId = nId;
    frame.nRef = m_RefStart[nId];
    nResult = -1;  // pending
  };

  stack.clear();
  int nResult;
  Enter(nRoot, nResult);
  if (nResult >= 0) return nResult == 0;
  while (!stack.empty()) {
    TFrame& frame = stack.back();
    std::uint32_t nPrec;
    if (NextPrecedent(frame, nPrec)) {
      // An ordered precedent is done with, unless it is circular: then so is this
      // formula, whenever the precedent was ordered.
      if ((m_Flags[nPrec] & (dfOrdered | dfCircular)) == dfOrdered) continue;
      Enter(nPrec, nResult);
      if (nResult == 0) {
        Append(nPrec);
        continue;
      }
      if (nResult < 0) continue;  // descend into the new frame
    } else {
      nResult = 0;
    }
    // The frame is finished with nResult: 0 in order, 1 circular.
    for (;;) {
      const std::uint32_t nDone = stack.back().nId;
      std::uint8_t& cFlags = m_Flags[nDone];
      cFlags &= static_cast<std::uint8_t>(~dfVisiting);
      if (nResult) cFlags |= dfCircular;
      stack.pop_back();
      if (stack.empty()) return nResult == 0;
      if (nResult == 0) {
        Append(nDone);  // its parent goes on with its next precedent
        break;
      }
      // Circular: the parent stops too.
    }
  }
  return true;
}

template <class F>
bool CDependencyGraph::ForEachPrecedent(std::uint32_t nId, F&& fn) const {
  // The lines of NextPrecedent and SetLine, walked in the same order.
  for (const TRef *pRef = RefsBegin(nId), *pRefEnd = RefsEnd(nId); pRef != pRefEnd; pRef++) {
    if (pRef->wSheet >= m_Sheets.size()) continue;
    const TSheet& sheet = m_Sheets[pRef->wSheet];
    if (sheet.rowFirst.empty()) continue;
    const int nRow1 = pRef->wRow1;
    const int nRow2 = std::min<int>(pRef->wRow2, static_cast<int>(sheet.rowFirst.size()) - 2);
    if (nRow1 > nRow2) continue;
    const int nCol1 = pRef->cCol1, nCol2 = pRef->cCol2;
    if (pRef->wRow1 == pRef->wRow2 && nCol1 == nCol2) {
      const long nFound = FindInRow(sheet, nRow1, nCol1);
      if (nFound >= 0 && !fn(static_cast<std::uint32_t>(nFound))) return false;
      continue;
    }
    if ((nRow2 - nRow1 + 1) > kTallFactor * (nCol2 - nCol1 + 1)) {
      if (sheet.colStart.empty()) BuildColumns(sheet);
      for (int c = nCol1; c <= nCol2; c++) {
        const auto itBegin = sheet.colIds.begin() + sheet.colStart[static_cast<size_t>(c)];
        const auto itEnd = sheet.colIds.begin() + sheet.colStart[static_cast<size_t>(c) + 1];
        auto it = std::lower_bound(itBegin, itEnd, nRow1,
                                   [&](std::uint32_t n, int nRow) { return GetRow(n) < nRow; });
        for (; it != itEnd && GetRow(*it) <= nRow2; ++it)
          if (!fn(*it)) return false;
      }
      continue;
    }
    for (int r = nRow1; r <= nRow2; r++) {
      std::uint32_t j = sheet.rowFirst[static_cast<size_t>(r)];
      const std::uint32_t jEnd = sheet.rowFirst[static_cast<size_t>(r) + 1];
      if (jEnd - j > kScanLimit)
        j = static_cast<std::uint32_t>(
            std::lower_bound(m_Key.begin() + j, m_Key.begin() + jEnd, Key(r, nCol1)) -
            m_Key.begin());
      else
        while (j < jEnd && GetCol(j) < nCol1) j++;
      for (; j < jEnd && GetCol(j) <= nCol2; j++)
        if (!fn(j)) return false;
    }
  }
  return true;
}

bool CDependencyGraph::OrderSettled(std::uint32_t nId, std::uint16_t wSheet, bool bAnyCircular) {
  if (!bAnyCircular) {
    // Every formula with a smaller id is ordered and none is circular, so references
    // that end before nId's cell (ids follow sheet, row and column) need no look.
    const std::uint32_t nKey = m_Key[nId];
    const TRef *pRef = RefsBegin(nId), *pRefEnd = RefsEnd(nId);
    while (pRef != pRefEnd && (pRef->wSheet < wSheet ||
                               (pRef->wSheet == wSheet && Key(pRef->wRow2, pRef->cCol2) < nKey)))
      pRef++;
    if (pRef == pRefEnd) return true;
  }
  return ForEachPrecedent(nId, [this](std::uint32_t nPrec) {
    const std::uint8_t cFlags = m_Flags[nPrec];
    if ((cFlags & (dfOrdered | dfCircular)) == dfOrdered) return true;
    if (cFlags & (dfOrdered | dfCircular | dfVisiting | dfHasDeps)) return false;
    Append(nPrec);  // reads nothing: the walk would append it here too
    return true;
  });
}

int CDependencyGraph::BuildOrder() {
  const std::uint32_t nCount = GetCount();
  m_Order.clear();
  m_Order.reserve(nCount);
  m_Pos.SetSize(nCount);
  m_nCircular = 0;
  TPodArray<TFrame> stack;
  // Every formula before the one in hand is ordered; none is circular until a walk
  // reports one.
  bool bAnyCircular = false;
  for (size_t s = 0; s < m_Sheets.size(); s++) {
    const TSheet& sheet = m_Sheets[s];
    for (std::uint32_t nId = sheet.nFirst; nId < sheet.nEnd; nId++) {
      const std::uint8_t cFlags = m_Flags[nId];
      if (cFlags & dfOrdered) continue;
      // A circular formula or one that reads nothing is appended as it stands.
      if ((cFlags & (dfCircular | dfHasDeps)) == dfHasDeps &&
          !OrderSettled(nId, static_cast<std::uint16_t>(s), bAnyCircular) &&
          !SetDependentCellsOrder(nId, stack))
        bAnyCircular = true;
      Append(nId);
    }
  }
  return m_nCircular;
}

void CDependencyGraph::BuildDependants() {
  const std::uint32_t nCount = GetCount();
  m_AlwaysIds.clear();
  m_nPending = 0;
  for (std::uint32_t nId = 0; nId < nCount; nId++) {
    if (m_Flags[nId] & (kAlways | dfCircular)) m_AlwaysIds.push_back(nId);
    if (m_Flags[nId] & dfNeedsRecompute) m_nPending++;
  }
  // The rectangle indexes are filled in two steps: the entries of each index node
  // are counted as the references are added (again here when the indexes were built
  // before), then placed, by id.
  if (!m_bCounting) {
    for (TSheet& sheet : m_Sheets) sheet.readers.StartCount();
    for (const TRef& ref : m_Refs)
      if (ref.wSheet < m_Sheets.size()) m_Sheets[ref.wSheet].readers.Count(ref.wRow1, ref.wRow2);
  }
  m_bCounting = false;
  m_bDependants = true;
  for (TSheet& sheet : m_Sheets) sheet.readers.StartPlace();
  for (std::uint32_t nId = 0; nId < nCount; nId++)
    for (const TRef *p = RefsBegin(nId), *pEnd = RefsEnd(nId); p != pEnd; p++)
      if (p->wSheet < m_Sheets.size())
        m_Sheets[p->wSheet].readers.Place(nId, p->wRow1, p->wRow2, p->cCol1, p->cCol2);
  for (TSheet& sheet : m_Sheets) sheet.readers.EndPlace();
  m_NameUsers.clear();
  m_NameUsers.reserve(m_Names.size());
  for (const TNameUse& use : m_Names)
    m_NameUsers.push_back(static_cast<std::uint64_t>(static_cast<std::uint32_t>(use.nName)) << 32 |
                          use.nId);
  std::sort(m_NameUsers.begin(), m_NameUsers.end());
}

void CDependencyGraph::MarkReaders(int nSheet, int nRow1, int nCol1, int nRow2, int nCol2) {
  if (nSheet < 0 || static_cast<size_t>(nSheet) >= m_Sheets.size()) return;
  m_Sheets[static_cast<size_t>(nSheet)].readers.ForEach(
      nRow1, nCol1, nRow2, nCol2, [this](std::uint32_t nId) { MarkDirty(nId); });
}

void CDependencyGraph::MarkAlways() {
  for (const std::uint32_t nId : m_AlwaysIds) MarkDirty(nId);
  // Formulas marked for recomputation when collected are recomputed once. One look
  // at every formula, once after a rebuild, and only when some were marked.
  if (m_nPending == 0) return;
  for (std::uint32_t nId = 0; nId < GetCount(); nId++) {
    if (!(m_Flags[nId] & dfNeedsRecompute)) continue;
    MarkDirty(nId);
    m_Flags[nId] &= static_cast<std::uint8_t>(~dfNeedsRecompute);
  }
  m_nPending = 0;
}

void CDependencyGraph::MarkNameUsers(int nName) {
  const std::uint64_t nFrom = static_cast<std::uint64_t>(static_cast<std::uint32_t>(nName)) << 32;
  for (auto it = std::lower_bound(m_NameUsers.begin(), m_NameUsers.end(), nFrom);
       it != m_NameUsers.end() && (*it >> 32) == (nFrom >> 32); ++it)
    MarkDirty(static_cast<std::uint32_t>(*it));
}

void CDependencyGraph::Propagate() {
  while (!m_Queue.empty()) {
    const std::uint32_t nId = m_Queue.back();
    m_Queue.pop_back();
    m_Dirty.push_back(nId);
    const int nSheet = GetSheet(nId);
    const int nRow = GetRow(nId);
    const int nCol = GetCol(nId);
    m_Sheets[static_cast<size_t>(nSheet)].readers.ForEach(
        nRow, nCol, nRow, nCol, [this](std::uint32_t nReader) { MarkDirty(nReader); });
  }
}

void CDependencyGraph::TakeDirty(std::vector<std::uint32_t>& ids) {
  Propagate();
  ids.clear();
  const std::uint32_t nCount = GetCount();
  if (m_Dirty.size() > nCount / 16) {
    // Many: one pass over the order is cheaper than sorting.
    ids.reserve(m_Dirty.size());
    for (const std::uint32_t nId : m_Order)
      if (m_Flags[nId] & dfDirty) ids.push_back(nId);
  } else {
    std::vector<std::uint64_t> byPos;
    byPos.reserve(m_Dirty.size());
    for (const std::uint32_t nId : m_Dirty)
      byPos.push_back(static_cast<std::uint64_t>(m_Pos[nId]) << 32 | nId);
    std::sort(byPos.begin(), byPos.end());
    ids.reserve(byPos.size());
    for (const std::uint64_t n : byPos) ids.push_back(static_cast<std::uint32_t>(n));
  }
  for (const std::uint32_t nId : m_Dirty) m_Flags[nId] &= static_cast<std::uint8_t>(~dfDirty);
  m_Dirty.clear();
}
