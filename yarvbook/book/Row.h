// CRow: one row of a sheet, an array of cell pointers indexed by column (0..255).
// A slot is null, points at a cell the row owns, or points at a shared cell (IsSCT)
// that the shared cell table owns and that may fill many slots of many rows. Every
// deletion goes through FreeObject, which passes shared cells over, so the array's
// block moves and clears never delete a shared cell.
#pragma once

#include "base/Export.h"
#include "base/ZelObArray.h"
#include "book/CellRecord.h"

class CSheetBase;

class YARVBOOK_API CRow : public CZelObArray {
 public:
  static constexpr int kMaxCol = 255;

  CRow() = default;
  // Deletes the cells the row owns; shared cells stay with their table.
  ~CRow() override;

  int MaxIndex() const override { return kMaxCol; }
  void FreeObject(CZelObject* pObj) override;

  // The cell of column nCol, or null (negative, past the row's size, or a hole).
  CCell* Cell(int nCol) const {
    return nCol >= 0 && nCol < m_nSize ? static_cast<CCell*>(m_pData[nCol]) : nullptr;
  }
  int Cells() const { return m_nSize; }
  // The first column holding a cell, -1 when none.
  int Cell1() const;
  // The size - 1: trailing holes count until the row is shrunk.
  int Cell2() const { return m_nSize - 1; }

  // Plain stores: what the slot held is not deleted. SetCell and SetAtGrow grow the
  // row to nCol + 1 first (may throw CZelException). nCol must lie in 0..255.
  void SetCell(int nCol, CCell* pCell) { SetAtGrow(nCol, pCell); }
  void CheckCell(int nCol) { GrowSize(nCol + 1); }
  void GrowCells(int nCol) { GrowSize(nCol + 1); }

  // The next column after nFrom whose slot holds pCell itself, -1 when none.
  int NextCell(const CCell* pCell, int nFrom) const;

  using CZelObArray::Clear;
  // Deletes the cell (unless shared) and nulls the slot; nothing outside the row.
  void Clear(int nCol) { Clear(nCol, 1); }
  void _Clear(int nCol, int nCount) { Clear(nCol, nCount); }

  // Columns nCol1..nCol2 go; the later ones move down. Their cells are deleted
  // unless shared.
  void Delete(int nCol1, int nCol2) { _Delete(nCol1, nCol2 - nCol1 + 1); }
  void Delete(int nCol) { _Delete(nCol, 1); }
  void _Delete(int nCol, int nCount);

  // The cell at nCol, made when missing. An existing cell without a formula is
  // returned as it is (it may be shared: change it only through the shared cell
  // table). A formula cell is replaced by a plain cell of its format, and the book's
  // order of formulas becomes invalid. A missing cell is made with wFormat. Throws
  // CZelException when memory is exhausted; the row is then unchanged.
  CCell* InitCell(CSheetBase* pSheet, int nCol, unsigned short wFormat);

  // Shrinks the cell at nCol and drops it (deleting it unless shared) when it holds
  // nothing: an empty value, no formula, no merge, no flag and the default format.
  // nCol -1 drops trailing holes only.
  void Shrink(int nCol);
  using CZelObArray::Shrink;
  // Shrink(nCol) for every column, then the trailing holes and the spare storage.
  void ShrinkArrayOfArrays();

  // A row copied cell by cell: shared cells are shared again, owned ones cloned.
  CRow* Clone() const override;
  // pSrc is a CRow. May throw CZelException; this row then holds a prefix of it.
  void Copy(const CZelObject* pSrc) override;
};
