// CBookIteratorSheets: the walk of CBookIterator over the same range or region on each
// sheet of a span of one book, first sheet to last: the cells of a three-dimensional
// reference.
#pragma once

#include "base/Export.h"
#include "book/BookIterator.h"

class CBookBase;

class YARVBOOK_API CBookIteratorSheets : public CBookIterator {
 public:
  CBookIteratorSheets(CBookBase* pBook, int nFirstSheet, int nLastSheet);

  void SetRanges(int nFirstSheet, int nLastSheet, const TRange& range);
  void SetRanges(int nFirstSheet, int nLastSheet, int nCount, const TRange* pRanges);
  void SetRanges(int nFirstSheet, int nLastSheet, const TRegion& region);

  // The first cell of the first sheet that has one: 1, or 0.
  int Start() override;
  // The next cell, going on to later sheets: 1, or 0 at the end.
  int Next() override;
  // Starts the walk on the sheet after the current one: 1, or 0 when no later sheet
  // has a cell.
  int NextSheet();
  int GetSheetIndex() const { return m_nSheet; }

 private:
  // Starts the walk on sheet m_nSheet and the later ones until one has a cell.
  int StartFrom();

  CBookBase* m_pBook;
  int m_nFirstSheet;
  int m_nLastSheet;
  int m_nSheet = -1;
  TRegion m_ranges;  // what each sheet walks
};
