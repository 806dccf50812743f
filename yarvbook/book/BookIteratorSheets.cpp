#include "book/BookIteratorSheets.h"

#include <algorithm>

#include "book/BookBase.h"

CBookIteratorSheets::CBookIteratorSheets(CBookBase* pBook, int nFirstSheet, int nLastSheet)
    : m_pBook(pBook), m_nFirstSheet(nFirstSheet), m_nLastSheet(nLastSheet) {
  m_ranges.Add(TRange(0, 0, kMaxRow, kMaxCol));
}

void CBookIteratorSheets::SetRanges(int nFirstSheet, int nLastSheet, const TRange& range) {
  SetRanges(nFirstSheet, nLastSheet, 1, &range);
}

void CBookIteratorSheets::SetRanges(int nFirstSheet, int nLastSheet, int nCount,
                                    const TRange* pRanges) {
  m_nFirstSheet = nFirstSheet;
  m_nLastSheet = nLastSheet;
  m_ranges.Clear();
  m_ranges.Add(nCount, pRanges);
}

void CBookIteratorSheets::SetRanges(int nFirstSheet, int nLastSheet, const TRegion& region) {
  m_nFirstSheet = nFirstSheet;
  m_nLastSheet = nLastSheet;
  m_ranges = region;
}

int CBookIteratorSheets::StartFrom() {
  const int nLast = std::min(m_nLastSheet, m_pBook ? m_pBook->Sheets() - 1 : -1);
  for (; m_nSheet <= nLast; ++m_nSheet) {
    CSheetBase* pSheet = m_pBook->SheetBase(m_nSheet);
    if (!pSheet) continue;
    if (m_ranges.Ranges() == 1)
      Set(pSheet, m_ranges.Range(0));
    else
      Set(pSheet, m_ranges, 0);
    if (CBookIterator::Start()) return 1;
  }
  m_pSheet = nullptr;
  return 0;
}

int CBookIteratorSheets::Start() {
  m_nSheet = std::max(m_nFirstSheet, 0);
  return StartFrom();
}

int CBookIteratorSheets::NextSheet() {
  if (m_nSheet < 0) return 0;
  ++m_nSheet;
  return StartFrom();
}

int CBookIteratorSheets::Next() {
  if (!m_pSheet) return 0;
  if (CBookIterator::Next()) return 1;
  return NextSheet();
}
