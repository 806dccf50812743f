// TRange3d: a range spanning the sheets Sheet1()..Sheet2() of a book ("Sheet1:Sheet3!A1:B2").
#pragma once

#include "base/Cell3d.h"
#include "base/Export.h"
#include "base/Range.h"

class YARVBOOK_API TRange3d {
 public:
  TRange3d() = default;
  TRange3d(short nSheet1, short nSheet2, const TRange& range) { Set(nSheet1, nSheet2, range); }
  TRange3d(const TCell3d& cell1, const TCell3d& cell2) : first(cell1), last(cell2) {}
  TRange3d(const TRange3d&) = default;
  TRange3d& operator=(const TRange3d&) = default;
  virtual ~TRange3d() = default;

  short Sheet1() const { return first.sheet; }
  short Sheet2() const { return last.sheet; }
  const TCell3d& Cell1() const { return first; }
  const TCell3d& Cell2() const { return last; }
  // The rectangle without the sheets.
  TRange GetRange() const { return TRange(first.row, first.col, last.row, last.col); }

  void Set(short nSheet1, int nRow1, int nCol1, short nSheet2, int nRow2, int nCol2) {
    first.Set(nSheet1, nRow1, nCol1);
    last.Set(nSheet2, nRow2, nCol2);
  }
  void Set(short nSheet1, short nSheet2, const TRange& range) {
    Set(nSheet1, range.first.row, range.first.col, nSheet2, range.last.row, range.last.col);
  }
  void SetSheets(short nSheet1, short nSheet2) {
    first.sheet = nSheet1;
    last.sheet = nSheet2;
  }

  int Rows() const { return last.row - first.row + 1; }
  int Cols() const { return last.col - first.col + 1; }
  int Sheets() const { return last.sheet - first.sheet + 1; }
  bool IsColumn() const { return first.row == 0 && last.row == kMaxRow; }
  bool IsRow() const { return first.col == 0 && last.col == kMaxCol; }

  // As TRange::operator+=: whole-column ranges keep their rows and whole-row ranges
  // their columns; the sheets never move.
  TRange3d& operator+=(const TCell& cell);
  TRange3d& operator-=(const TCell& cell);

  bool operator==(const TRange3d& other) const {
    return first == other.first && last == other.last;
  }
  bool operator!=(const TRange3d& other) const { return !(*this == other); }

  TCell3d first;
  TCell3d last;
};
