#include "base/RangeIterator.h"

int TRangeIterator::Start(const TRange& range, int bByRow) {
  m_Range = range;
  m_Region = range;
  m_bByRow = bByRow;
  return Start();
}

int TRangeIterator::Start(const TRegion& region, int bByRow) {
  m_Range = region.GetBoundaryRange();
  m_Region = region;
  m_bByRow = bByRow;
  return Start();
}

int TRangeIterator::Start() {
  m_bStarted = m_Range.IsValid();
  if (!m_bStarted) return 0;
  m_Current = m_Range.first;
  // One step before the first cell, so that the first Next lands on it.
  if (m_bByRow) {
    m_Current.col -= 1;
  } else {
    m_Current.row -= 1;
  }
  return 1;
}

int TRangeIterator::Next() {
  while (m_bStarted) {
    if (m_bByRow) {
      if (++m_Current.col > m_Range.last.col) {
        m_Current.col = m_Range.first.col;
        ++m_Current.row;
      }
    } else if (++m_Current.row > m_Range.last.row) {
      m_Current.row = m_Range.first.row;
      ++m_Current.col;
    }
    if (!m_Range.Contains(m_Current)) {
      m_bStarted = false;  // stays finished until the next Start
      return 0;
    }
    if (m_Region.Contains(m_Current)) return 1;
  }
  return 0;
}
