// TCell3d: a cell address that also names a sheet by its index in the book.
#pragma once

#include "base/Cell.h"
#include "base/Export.h"

class YARVBOOK_API TCell3d : public TCell {
 public:
  TCell3d() = default;
  TCell3d(short nSheet, int nRow, int nCol) : TCell(nRow, nCol), sheet(nSheet) {}
  TCell3d(short nSheet, const TCell& cell) : TCell(cell), sheet(nSheet) {}

  short Sheet() const { return sheet; }
  void SetSheet(short nSheet) { sheet = nSheet; }
  void Set(short nSheet, int nRow, int nCol) {
    sheet = nSheet;
    TCell::Set(nRow, nCol);
  }
  using TCell::Set;

  // Offsets row and column only; the sheet stays.
  TCell3d& operator+=(const TCell& cell) {
    TCell::operator+=(cell);
    return *this;
  }
  TCell3d& operator-=(const TCell& cell) {
    TCell::operator-=(cell);
    return *this;
  }

  bool operator==(const TCell3d& other) const {
    return sheet == other.sheet && TCell::operator==(other);
  }
  bool operator!=(const TCell3d& other) const { return !(*this == other); }

  short sheet = 0;
};
