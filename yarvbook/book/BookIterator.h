// CBookIterator: walks the existing cells of a range or region on a sheet, row by
// row, left to right, skipping positions without a cell object (rows and cells are
// made only when written, so a walk costs the cells that exist, not the area).
//
//   CBookIterator it(pSheet, TRange(0, 0, 99, 3));
//   for (int b = it.Start(); b; b = it.Next()) Use(it.GetCurrent(), it.GetCell());
//
// The sheet's rows must not be added or removed during a walk; changing the cell in
// the current slot (clone on write) is allowed.
#pragma once

#include "base/Cell.h"
#include "base/Export.h"
#include "base/Range.h"
#include "base/Region.h"

class CCell;
class CRow;
class CSheetBase;

class YARVBOOK_API CBookIterator {
 public:
  CBookIterator() = default;
  // The whole sheet.
  explicit CBookIterator(CSheetBase* pSheet);
  CBookIterator(CSheetBase* pSheet, const TRange& range);
  // Only cells inside the region; bSkipHidden passes hidden rows and columns over.
  CBookIterator(CSheetBase* pSheet, const TRegion& region, int bSkipHidden);
  CBookIterator(const CBookIterator&) = delete;
  CBookIterator& operator=(const CBookIterator&) = delete;
  virtual ~CBookIterator() = default;

  // Re-targets the walk; Start must follow.
  void Set(CSheetBase* pSheet, const TRange& range);
  void Set(CSheetBase* pSheet, const TRegion& region, int bSkipHidden);

  // Positions on the first cell: 1, or 0 when there is none (or the range is not a
  // normalised range inside the grid).
  virtual int Start();
  // The next cell: 1, or 0 when the walk is over.
  virtual int Next();

  CCell* GetCell() const { return m_pCell; }
  CRow* GetRow() const { return m_pRow; }
  const TRange& GetRange() const { return m_range; }
  CSheetBase* GetSheet() const { return m_pSheet; }
  const TCell& GetCurrent() const { return m_current; }

 protected:
  // The row step: on to the next row that exists and holds an accepted cell.
  virtual int NextRow();
  // Which rows and cells the walk returns; variants narrow them.
  virtual bool IsRowAccepted(int nRow) const;
  virtual bool IsCellAccepted(const CCell* pCell, int nRow, int nCol) const;
  // Looks for an accepted cell from column nCol to the working last column.
  bool FindInRow(int nCol);

  int m_bSkipHidden = 0;
  TRange m_range{0, 0, -1, -1};
  TRange m_work{0, 0, -1, -1};
  TRegion m_region;
  TCell m_current;
  CSheetBase* m_pSheet = nullptr;
  CRow* m_pRow = nullptr;
  CCell* m_pCell = nullptr;
};
