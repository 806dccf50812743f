// TCell: the address of one cell on a sheet, a zero-based row and column. The grid
// is fixed at 65,536 rows (0..65535) and 256 columns (0..255); a TCell may hold any
// int, and the operations that build text or check the grid say how they treat
// values outside it.
#pragma once

#include <string>

#include "base/Export.h"

class CPelArchive;

// Grid limits, shared by every clamp, parser and block move.
constexpr int kMaxRow = 65535;
constexpr int kMaxCol = 255;
constexpr int kRowCount = kMaxRow + 1;
constexpr int kColCount = kMaxCol + 1;

class YARVBOOK_API TCell {
 public:
  // Zero, so that a forgotten Set never leaves an indeterminate address behind.
  TCell() = default;
  TCell(int nRow, int nCol) : row(nRow), col(nCol) {}
  TCell(const TCell&) = default;
  TCell& operator=(const TCell&) = default;
  // Virtual so that TCell3d can derive from it.
  virtual ~TCell() = default;

  int Row() const { return row; }
  int Col() const { return col; }
  void SetRow(int nRow) { row = nRow; }
  void SetCol(int nCol) { col = nCol; }
  void Set(int nRow, int nCol) {
    row = nRow;
    col = nCol;
  }
  void Copy(const TCell& other) { Set(other.row, other.col); }
  void IncRow(int nBy = 1) { row += nBy; }
  void IncCol(int nBy = 1) { col += nBy; }

  // True when the cell lies inside the grid.
  bool IsValid() const { return row >= 0 && row <= kMaxRow && col >= 0 && col <= kMaxCol; }

  bool operator==(const TCell& other) const { return row == other.row && col == other.col; }
  bool operator!=(const TCell& other) const { return !(*this == other); }
  // Component-wise offsets.
  TCell& operator+=(const TCell& other) {
    row += other.row;
    col += other.col;
    return *this;
  }
  TCell& operator-=(const TCell& other) {
    row -= other.row;
    col -= other.col;
    return *this;
  }
  TCell operator+(const TCell& other) const { return TCell(row + other.row, col + other.col); }
  TCell operator-(const TCell& other) const { return TCell(row - other.row, col - other.col); }

  // Replaces text with the A1 address without "$" ("A1", "IV65536"). A cell outside
  // the grid has no A1 text: text is emptied and the result is false.
  bool GetText(std::u16string& text) const;
  // Appends the same text to text; false (nothing appended) outside the grid.
  bool AppendText(std::u16string& text) const;

  // Archive record: row, then col, each a 32-bit signed integer (little-endian).
  // Writes when the archive stores, reads when it loads. False when the archive has
  // failed (a load past the end leaves the cell at 0, 0).
  bool SerializeCB(CPelArchive& ar);

  int row = 0;
  int col = 0;
};
