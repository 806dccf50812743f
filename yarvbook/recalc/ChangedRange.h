// TChangedRange: one rectangle of a sheet's changed region, 6 bytes: rows as 16-bit
// numbers, columns as 8-bit numbers. Callers clamp to the grid before storing.
#pragma once

#include "base/Export.h"

class YARVBOOK_API TChangedRange {
 public:
  TChangedRange() = default;
  TChangedRange(int nRow1, int nCol1, int nRow2, int nCol2)
      : m_wRow1(static_cast<unsigned short>(nRow1)),
        m_wRow2(static_cast<unsigned short>(nRow2)),
        m_cCol1(static_cast<unsigned char>(nCol1)),
        m_cCol2(static_cast<unsigned char>(nCol2)) {}

  int Row1() const { return m_wRow1; }
  int Row2() const { return m_wRow2; }
  int Col1() const { return m_cCol1; }
  int Col2() const { return m_cCol2; }
  void SetRows(int nRow1, int nRow2) {
    m_wRow1 = static_cast<unsigned short>(nRow1);
    m_wRow2 = static_cast<unsigned short>(nRow2);
  }
  void SetCols(int nCol1, int nCol2) {
    m_cCol1 = static_cast<unsigned char>(nCol1);
    m_cCol2 = static_cast<unsigned char>(nCol2);
  }
  bool Contains(int nRow, int nCol) const {
    return nRow >= m_wRow1 && nRow <= m_wRow2 && nCol >= m_cCol1 && nCol <= m_cCol2;
  }
  bool Intersects(int nRow1, int nCol1, int nRow2, int nCol2) const {
    return nRow1 <= m_wRow2 && nRow2 >= m_wRow1 && nCol1 <= m_cCol2 && nCol2 >= m_cCol1;
  }

 private:
  unsigned short m_wRow1 = 0;
  unsigned short m_wRow2 = 0;
  unsigned char m_cCol1 = 0;
  unsigned char m_cCol2 = 0;
};

static_assert(sizeof(TChangedRange) == 6, "a changed rectangle is 6 bytes");
