#include "recalc/ChangedRegion.h"

#include <algorithm>
#include <new>

#include "base/Cell.h"
#include "base/Region.h"

namespace {

int Clamp(int n, int nMax) { return n < 0 ? 0 : (n > nMax ? nMax : n); }

}  // namespace

void CChangedRegion::Clear() {
  CChangedRangesArray::Clear();
  m_bOverflow = false;
  m_nLowestRow = 0x7FFFFFFF;
  m_nHighestRow = -1;
}

void CChangedRegion::SetOverflow() {
  CChangedRangesArray::Clear();
  m_bOverflow = true;
}

int CChangedRegion::CountBandSize(int nIndex) const {
  const int nSize = GetSize();
  if (nIndex < 0 || nIndex >= nSize) return 0;
  const int nRow1 = (*this)[nIndex].Row1();
  int i = nIndex + 1;
  while (i < nSize && (*this)[i].Row1() == nRow1) i++;
  return i - nIndex;
}

int CChangedRegion::DuplicateBand(int nIndex) {
  const int nCount = CountBandSize(nIndex);
  Insert(nIndex + nCount, nCount);
  for (int i = 0; i < nCount; i++) (*this)[nIndex + nCount + i] = (*this)[nIndex + i];
  return nCount;
}

int CChangedRegion::AddToBand(int nIndex, int nCount, int nCol1, int nCol2) {
  const int nRow1 = (*this)[nIndex].Row1();
  const int nRow2 = (*this)[nIndex].Row2();
  const int nEnd = nIndex + nCount;
  // The first rectangle that reaches the new columns or touches them from the left.
  int j = nIndex;
  while (j < nEnd && (*this)[j].Col2() < nCol1 - 1) j++;
  if (j == nEnd || (*this)[j].Col1() > nCol2 + 1) {
    Insert(j, 1);
    (*this)[j] = TChangedRange(nRow1, nCol1, nRow2, nCol2);
    return nCount + 1;
  }
  TChangedRange& range = (*this)[j];
  if (range.Col1() <= nCol1 && range.Col2() >= nCol2) return nCount;
  int nNewCol1 = std::min(range.Col1(), nCol1);
  int nNewCol2 = std::max(range.Col2(), nCol2);
  // Absorb every later rectangle that the widened one now reaches or touches.
  int k = j + 1;
  while (k < nEnd && (*this)[k].Col1() <= nNewCol2 + 1) {
    nNewCol2 = std::max(nNewCol2, (*this)[k].Col2());
    k++;
  }
  (*this)[j].SetCols(nNewCol1, nNewCol2);
  Delete(j + 1, k - j - 1);
  return nCount - (k - j - 1);
}

void CChangedRegion::Add(int nRow1, int nCol1, int nRow2, int nCol2, bool bCoalesce) {
  nRow1 = Clamp(nRow1, kMaxRow);
  nRow2 = Clamp(nRow2, kMaxRow);
  nCol1 = Clamp(nCol1, kMaxCol);
  nCol2 = Clamp(nCol2, kMaxCol);
  if (nRow1 > nRow2) std::swap(nRow1, nRow2);
  if (nCol1 > nCol2) std::swap(nCol1, nCol2);
  m_nLowestRow = std::min(m_nLowestRow, nRow1);
  m_nHighestRow = std::max(m_nHighestRow, nRow2);
  if (m_bOverflow) return;
  try {
    int nTop = nRow1;  // rows nTop..nRow2 of the new rectangle are still to place
    int i = 0;
    while (nTop <= nRow2) {
      if (i >= GetSize()) {
        Insert(i, 1);
        (*this)[i] = TChangedRange(nTop, nCol1, nRow2, nCol2);
        break;
      }
      const int nBand1 = (*this)[i].Row1();
      const int nBand2 = (*this)[i].Row2();
      const int nCount = CountBandSize(i);
      if (nBand2 < nTop) {
        i += nCount;
        continue;
      }
      if (nBand1 > nTop) {
        // The rows above this band that the band does not cover form a band of their own.
        const int nEnd = std::min(nRow2, nBand1 - 1);
        Insert(i, 1);
        (*this)[i] = TChangedRange(nTop, nCol1, nEnd, nCol2);
        i++;
        nTop = nEnd + 1;
        continue;
      }
      if (nBand1 < nTop) {
        // Split off the band's rows above the new rectangle; go on with the rest.
        DuplicateBand(i);
        for (int k = 0; k < nCount; k++) {
          (*this)[i + k].SetRows(nBand1, nTop - 1);
          (*this)[i + nCount + k].SetRows(nTop, nBand2);
        }
        i += nCount;
        continue;
      }
      if (nBand2 > nRow2) {
        // Split off the band's rows below the new rectangle.
        DuplicateBand(i);
        for (int k = 0; k < nCount; k++) {
          (*this)[i + k].SetRows(nBand1, nRow2);
          (*this)[i + nCount + k].SetRows(nRow2 + 1, nBand2);
        }
      }
      const int nBandEnd = std::min(nBand2, nRow2);
      i += AddToBand(i, nCount, nCol1, nCol2);
      nTop = nBandEnd + 1;
    }
    if (bCoalesce) Coallesce();
    if (GetSize() > kMaxRanges) SetOverflow();
  } catch (const std::bad_alloc&) {
    SetOverflow();
  }
}

void CChangedRegion::Coallesce() {
  int i = 0;
  while (i < GetSize()) {
    const int nCount = CountBandSize(i);
    const int j = i + nCount;
    if (j < GetSize() && (*this)[j].Row1() == (*this)[i].Row2() + 1 && CountBandSize(j) == nCount) {
      bool bSame = true;
      for (int k = 0; k < nCount && bSame; k++)
        bSame = (*this)[i + k].Col1() == (*this)[j + k].Col1() &&
                (*this)[i + k].Col2() == (*this)[j + k].Col2();
      if (bSame) {
        const int nNewRow2 = (*this)[j].Row2();
        for (int k = 0; k < nCount; k++) (*this)[i + k].SetRows((*this)[i].Row1(), nNewRow2);
        Delete(j, nCount);
        continue;  // the joined band may join the next one too
      }
    }
    i = j;
  }
}

bool CChangedRegion::TestIntersect(int nRow, int nCol) const {
  if (m_bOverflow) return true;
  if (nRow < m_nLowestRow || nRow > m_nHighestRow) return false;
  for (int i = GetSize() - 1; i >= 0; i--) {
    const TChangedRange& range = (*this)[i];
    if (range.Row2() < nRow) return false;
    if (range.Contains(nRow, nCol)) return true;
  }
  return false;
}

bool CChangedRegion::TestIntersect(int nRow1, int nCol1, int nRow2, int nCol2) const {
  if (m_bOverflow) return true;
  if (nRow2 < m_nLowestRow || nRow1 > m_nHighestRow) return false;
  for (int i = GetSize() - 1; i >= 0; i--) {
    const TChangedRange& range = (*this)[i];
    if (range.Row2() < nRow1) return false;
    if (range.Intersects(nRow1, nCol1, nRow2, nCol2)) return true;
  }
  return false;
}

bool CChangedRegion::TestIntersect(const TRegion& region) const {
  if (m_bOverflow) return true;
  if (GetSize() == 0) return false;
  for (int i = 0; i < region.Ranges(); i++) {
    const TRange& range = region.Range(i);
    if (TestIntersect(std::min(range.Row1(), range.Row2()), std::min(range.Col1(), range.Col2()),
                      std::max(range.Row1(), range.Row2()), std::max(range.Col1(), range.Col2())))
      return true;
  }
  return false;
}

void CChangedRegion::GetChangedRegion(TRegion& region) const {
  region.Clear();
  if (m_bOverflow) {
    region.Add(TRange(0, 0, kMaxRow, kMaxCol));
    return;
  }
  for (int i = 0; i < GetSize(); i++) {
    const TChangedRange& range = (*this)[i];
    region.Add(TRange(range.Row1(), range.Col1(), range.Row2(), range.Col2()));
  }
}
