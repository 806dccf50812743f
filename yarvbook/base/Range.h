// TRange: a rectangle of cells given by its top-left (first) and bottom-right (last)
// cells. Constructors and setters store what they are given; Normalize puts the
// corners in order. A range spanning all 65,536 rows is a whole-column range, one
// spanning all 256 columns a whole-row range; offsetting leaves those extents alone.
#pragma once

#include <string>

#include "base/Cell.h"
#include "base/Export.h"

class CPelArchive;
class TRegion;

class YARVBOOK_API TRange {
 public:
  TRange() = default;  // A1:A1
  TRange(int nRow, int nCol) : first(nRow, nCol), last(nRow, nCol) {}
  TRange(int nRow1, int nCol1, int nRow2, int nCol2) : first(nRow1, nCol1), last(nRow2, nCol2) {}
  explicit TRange(const TCell& cell) : first(cell), last(cell) {}
  TRange(const TCell& cell1, const TCell& cell2) : first(cell1), last(cell2) {}
  TRange(const TRange&) = default;
  TRange& operator=(const TRange&) = default;
  virtual ~TRange() = default;

  const TCell& Cell1() const { return first; }
  const TCell& Cell2() const { return last; }
  int Row1() const { return first.row; }
  int Col1() const { return first.col; }
  int Row2() const { return last.row; }
  int Col2() const { return last.col; }

  void Set(int nRow, int nCol) { Set(nRow, nCol, nRow, nCol); }
  void Set(int nRow1, int nCol1, int nRow2, int nCol2) {
    first.Set(nRow1, nCol1);
    last.Set(nRow2, nCol2);
  }
  void Set(const TCell& cell) { Set(cell, cell); }
  void Set(const TCell& cell1, const TCell& cell2) {
    first.Copy(cell1);
    last.Copy(cell2);
  }
  void SetRows(int nRow1, int nRow2) {
    first.row = nRow1;
    last.row = nRow2;
  }
  void SetCols(int nCol1, int nCol2) {
    first.col = nCol1;
    last.col = nCol2;
  }
  void SetRow1(int nRow) { first.row = nRow; }
  void SetRow2(int nRow) { last.row = nRow; }
  void SetCol1(int nCol) { first.col = nCol; }
  void SetCol2(int nCol) { last.col = nCol; }
  void SetCell1(const TCell& cell) { first.Copy(cell); }
  void SetCell2(const TCell& cell) { last.Copy(cell); }

  int Rows() const { return last.row - first.row + 1; }
  int Cols() const { return last.col - first.col + 1; }
  // Number of cells of a normalised range, in 64 bits (the whole sheet has 2^24).
  long long CellCount() const { return static_cast<long long>(Rows()) * Cols(); }
  bool IsSingleCell() const { return first == last; }
  // Spans all rows 0..65535 (a whole-column range).
  bool WholeRows() const { return first.row == 0 && last.row == kMaxRow; }
  // Spans all columns 0..255 (a whole-row range).
  bool WholeColumns() const { return first.col == 0 && last.col == kMaxCol; }
  bool IsColumn() const { return WholeRows(); }
  bool IsRow() const { return WholeColumns(); }
  // Both corners inside the grid and first <= last in both axes.
  bool IsValid() const {
    return first.IsValid() && last.IsValid() && first.row <= last.row && first.col <= last.col;
  }

  // Swaps the rows if first.row > last.row, then, independently, the columns.
  void Normalize();

  bool Contains(const TCell& cell) const {
    return cell.row >= first.row && cell.row <= last.row && cell.col >= first.col &&
           cell.col <= last.col;
  }
  bool Contains(const TRange& other) const {
    return other.first.row >= first.row && other.last.row <= last.row &&
           other.first.col >= first.col && other.last.col <= last.col;
  }

  // Replaces text with "A1" for a single cell, else "A1:B2". False (text empty) when
  // a corner lies outside the grid.
  bool GetText(std::u16string& text) const;
  // Appends the same text; false (nothing appended) when a corner lies outside the grid.
  bool AppendText(std::u16string& text) const;

  // Archive record: the first cell, then the last (row1, col1, row2, col2 as 32-bit
  // integers). False when the archive has failed.
  bool SerializeCB(CPelArchive& ar);

  // Sets this to the overlap of a and b (larger firsts, smaller lasts). True only when
  // the result lies inside the grid with first <= last; the result is stored either way.
  bool Intersect(const TRange& a, const TRange& b);
  bool Intersect(const TRange& other) { return Intersect(*this, other); }
  // Tests what Intersect would return, changing nothing.
  static bool CheckIntersect(const TRange& a, const TRange& b);
  bool CheckIntersect(const TRange& other) const { return CheckIntersect(*this, other); }

  // Sets this to the bounding rectangle of a and b.
  void Union(const TRange& a, const TRange& b);
  // Splits the cells of this and other into at most three non-overlapping ranges that
  // cover exactly those cells, preferring fewer pieces. pPieces is pointed at a static
  // array owned by the module, valid until the next call (not reentrant); nCount gets
  // the number of pieces (1 to 3). Both ranges must be normalised.
  void Union(const TRange& other, const TRange*& pPieces, int& nCount) const;

  // Sets this to a joined with b when the two share an edge and have the same extent
  // along it (A1:A2 with A3:A4 gives A1:A4). Overlapping, identical or merely touching
  // ranges are not joined: the result is false and this is unchanged.
  bool Combine(const TRange& a, const TRange& b);
  bool Combine(const TRange& other) { return Combine(*this, other); }

  // Puts this minus other into out, cleared first. Without an intersection out gets
  // this whole; otherwise up to four pieces in this order: the band above the
  // intersection (full width), the band left of it and the band right of it (the
  // intersection's rows), the band below (full width). True when out is not empty.
  bool Subtract(const TRange& other, TRegion& out) const;
  // As Subtract, except that without an intersection out is cleared and the result
  // is false.
  bool SubtractEx(const TRange& other, TRegion& out) const;

  // Moves first up/left and last down/right by the amounts, clamped to the grid.
  void SafeInflate(int nRows, int nCols);

  // Moves each of first.row and last.row that lies in [nFrom, nTo] by nDelta. A
  // whole-column range is left alone. No clamping.
  void OffsetRows(int nFrom, int nTo, int nDelta);

  // Adds the cell's row to both rows unless this is a whole-column range, and its
  // column to both columns unless this is a whole-row range.
  TRange& operator+=(const TCell& cell);
  TRange& operator-=(const TCell& cell);
  TRange operator+(const TCell& cell) const;
  TRange operator-(const TCell& cell) const;

  // Where cell lies: 3 on the last cell (or on a single-cell range), 1 on the first
  // cell, 2 elsewhere inside, 0 outside.
  int WherePosCell(const TCell& cell) const;

  // How other relates to this: 0 null or disjoint; 4 other inside this with the same
  // number of cells (equal); 1 other inside this; 5 this inside other; 2 overlap only.
  int CompareRange(const TRange* pOther) const;

  // Comparators for TRegion::Sort; each returns the plain difference.
  static int CompareBottom(const TRange& a, const TRange& b);       // first row
  static int CompareRight(const TRange& a, const TRange& b);        // first column
  static int CompareBottomRight(const TRange& a, const TRange& b);  // first row, then column

  bool operator==(const TRange& other) const { return first == other.first && last == other.last; }
  bool operator!=(const TRange& other) const { return !(*this == other); }

  TCell first;
  TCell last;
};
