// CFormulaCell: the cell that holds a formula: its token stream, its last computed
// value (kept in the cell's own value, so a formula cell reads like any other cell),
// the sheet and position it stands at, and the links and state bits the
// recalculation chain keeps on it. It also converts its result to and from the
// 8-byte result field of a stored formula record.
#pragma once

#include <memory>

#include "base/Cell.h"
#include "base/Export.h"
#include "book/CellRecord.h"
#include "formula/Formula.h"

class CBookBase;
class CSheetBase;

class YARVBOOK_API CFormulaCell : public CCell {
 public:
  // State bits of the recalculation chain and the views.
  enum EState : unsigned short {
    stOrdered = 0x0001,       // already in the chain
    stVisiting = 0x0002,      // on the current depth-first path
    stCircular = 0x0004,      // on, or depending on, a cycle
    stNeedsRecalc = 0x0008,   // marked for recomputation
    stOnScreen = 0x0010,      // shown by a view: value changes are reported
    stValueChanged = 0x0020,  // the value changed since the views last looked
    stTypeChanged = 0x0040,   // the kind of the value changed as well
    stSubtotal = 0x0080,      // the formula calls SUBTOTAL or SUBTOTALA
  };

  explicit CFormulaCell(unsigned short wFormat = kDefaultFormat);
  // Takes pFormula over.
  CFormulaCell(std::unique_ptr<CFormula> pFormula, CFormulaBase::EFormulaType type,
               unsigned short wFormat = kDefaultFormat);
  ~CFormulaCell() override;

  // A copy of formula, type, value, format, flags, sheet link and position; the chain
  // link and the chain's state bits are not copied. Owned by the caller; throws
  // CZelException when memory is exhausted.
  CFormulaCell* Clone() const override;
  // pSrc is a CCell; when it is a formula cell its formula comes along as Clone says.
  void Copy(const CZelObject* pSrc) override;
  void Copy(const CFormulaCell* pSrc) { Copy(static_cast<const CZelObject*>(pSrc)); }

  // The token stream, part of the cell; null for a cell made without one. Valid
  // until the formula is replaced.
  CFormula* GetFormula() { return m_bHasFormula ? &m_Formula : nullptr; }
  const CFormula* GetFormula() const { return m_bHasFormula ? &m_Formula : nullptr; }
  // Replaces the formula: its token stream is taken over (pFormula is left empty
  // and then freed); null leaves the cell without one.
  void SetFormula(std::unique_ptr<CFormula> pFormula, CFormulaBase::EFormulaType type);
  // Gives the cell an empty formula of the type, for the caller (the parser) to fill
  // in place, and returns it.
  CFormula& InitFormula(CFormulaBase::EFormulaType type);
  CFormulaBase::EFormulaType GetFormulaType() const { return m_nFormulaType; }

  // The sheet link: where the cell stands. Set when the cell is entered and again
  // when the chain is rebuilt (cells move with rows).
  void SetCell3D(CSheetBase* pSheet, int nRow, int nCol);
  CSheetBase* GetSheet() const { return m_pSheet; }
  int GetRow() const { return m_wRow; }
  int GetCol() const { return m_bCol; }
  TCell GetCell() const { return TCell(m_wRow, m_bCol); }

  // The next cell of the book's recalculation chain (not owned).
  CFormulaCell* GetNext() const { return m_pNext; }
  void SetNext(CFormulaCell* pNext) { m_pNext = pNext; }

  unsigned short GetState() const { return m_wState; }
  bool HasState(unsigned short wBits) const { return (m_wState & wBits) != 0; }
  void SetState(unsigned short wBits, bool b = true) {
    m_wState = b ? static_cast<unsigned short>(m_wState | wBits)
                 : static_cast<unsigned short>(m_wState & ~wBits);
  }
  // In minimal mode: marked for recomputation, circular, volatile or untrackable;
  // using a changed name; or reading a cell of a sheet's changed region. False for a
  // cell the last rebuild of pBook's chain did not see (no dependency information).
  bool GetNeedsRecalc(CBookBase* pBook) const;
  bool IsOrdered() const { return HasState(stOrdered); }
  void SetOrdered(bool b = true) { SetState(stOrdered, b); }
  bool IsCircular() const { return HasState(stCircular); }
  bool IsOnScreen() const { return HasState(stOnScreen); }
  void SetOnScreen(bool b) { SetState(stOnScreen, b); }
  bool GetNeedsRecompute() const { return HasState(stNeedsRecalc); }
  void SetNeedsRecompute(bool b = true) { SetState(stNeedsRecalc, b); }
  void SetValueChanged() { SetState(stValueChanged); }
  void SetTypeChanged() { SetState(stTypeChanged); }

  // Members of an array formula are computed in array mode; members of a data table
  // by the table.
  void SetArrayCell(bool b) { SetFlag(flArray, b); }
  void ResetArrayCell() { SetFlag(flArray, false); }
  void SetOpTableCell() { SetFlag(flOpTable, true); }
  void ResetOpTableCell() { SetFlag(flOpTable, false); }

  // Stores a newly computed value; value is left Empty. The same number again on a
  // visible cell changes nothing; otherwise a visible cell gets the value-changed
  // mark, and the type-changed mark when the kind differs.
  void SetRecalcValue(TValue& value);
  // The same for a finite number.
  void SetRecalcNumber(double r);

  // The 8-byte result field of a stored formula record. When bytes 6 and 7 are both
  // 0xFF, byte 0 is a kind (0 text: the text comes separately and the value is left
  // alone; 1 logical, byte 2 its flag; 2 error, byte 2 its stored code; 3 empty: left
  // alone; any other: the cell is marked for recomputation); otherwise the 8 bytes
  // are the number. Reading first clears the recompute mark.
  void SetExcelValue(const double& rField);
  // Writes the field: the number, or the kind form for text, logical and error; an
  // empty value writes the number 0.
  void GetExcelValue(double& rField) const;

 private:
  // Held in the cell rather than behind a pointer: one allocation less per formula,
  // and one indirection less each time it is evaluated or walked.
  CFormula m_Formula;
  CSheetBase* m_pSheet = nullptr;
  CFormulaCell* m_pNext = nullptr;
  unsigned short m_wState = 0;
  unsigned short m_wRow = 0;
  unsigned char m_bCol = 0;
  CFormulaBase::EFormulaType m_nFormulaType = CFormulaBase::ftCell;
  bool m_bHasFormula = false;
};
