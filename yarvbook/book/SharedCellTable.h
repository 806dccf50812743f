// CSharedCellTable: the process-wide table of cells that many positions point at.
// Above all it holds one empty cell per format index, so a formatted but empty block
// costs one pointer per position; beside those, a short list of shared non-empty
// cells that loaders fold repeated cells into. Every cell the table holds has the
// shared flag set, and rows never delete such cells.
//
// Clone on write: every change of a cell's value or attribute runs
//   CloneCell (a private copy when the cell is shared) -> the change ->
//   ModifyClonedCell (an empty init cell folds back into the shared empty cell of its
//   format; the row's slot is rewritten only when the pointer changed).
// The value operations below do all three; each takes the row, the column and the
// address of the caller's cell pointer, which is updated to the cell now in the slot.
// When the change throws (exhausted memory), the slot and the caller's pointer keep
// the old cell and a private copy made for the change is deleted.
#pragma once

#include <cstdint>
#include <vector>

#include "base/Export.h"
#include "eval/Value.h"

class CBookIterator;
class CCell;
class CRow;
class CSheetBase;
class TCell;
class TRange;
class TRegion;

// A per-cell change for SetAttribute: gets a private cell to change; returns 0 to stop
// the walk before that cell is stored.
using TCellAttributeProc = int (*)(void* pContext, CSheetBase* pSheet, CCell* pCell,
                                   std::intptr_t a, std::intptr_t b);

class YARVBOOK_API CSharedCellTable {
 public:
  CSharedCellTable() = default;
  ~CSharedCellTable();  // RemoveAllSCT
  CSharedCellTable(const CSharedCellTable&) = delete;
  CSharedCellTable& operator=(const CSharedCellTable&) = delete;

  // The process-wide table.
  static CSharedCellTable& Get();

  // The shared empty cell of wFormat, made on first use. Throws CZelException (memory).
  CCell* SetEmptyCell(unsigned short wFormat);
  // Clears the row's slot (deleting a cell the row owns) and puts the shared empty
  // cell of wFormat there; returns it. The sheet form makes the row when missing.
  CCell* SetEmptyCell(CRow* pRow, int nCol, unsigned short wFormat);
  CCell* SetEmptyCell(CSheetBase* pSheet, const TCell& cell, unsigned short wFormat);

  // A private copy (owned by the caller) when pCell is shared and not a formula cell;
  // otherwise pCell itself.
  static CCell* CloneCell(CCell* pCell);
  // Takes pCell over and returns the shared cell that stands for it. An empty init
  // cell becomes (or is replaced by) the shared empty cell of its format; any other
  // cell is matched against the shared non-empty list and, without a match, appended.
  // pCell is deleted when an equal shared cell already exists. Null gives null.
  CCell* AddCell(CCell* pCell);
  // Stores pChanged (a result of CloneCell) at nCol of pRow, folding an empty init
  // cell into the shared empty cell of its format. *ppSlotCell is the cell the slot
  // held; it receives the cell now there, which is also returned.
  CCell* ModifyClonedCell(CRow* pRow, int nCol, CCell** ppSlotCell, CCell* pChanged);

  CCell* ValueClear(CRow* pRow, int nCol, CCell** ppCell);
  CCell* ValueSetValue(CRow* pRow, int nCol, CCell** ppCell, double r);
  CCell* ValueSetValue(CRow* pRow, int nCol, CCell** ppCell, int n);
  CCell* ValueSetValue(CRow* pRow, int nCol, CCell** ppCell, const char16_t* pwszText,
                       int nLength = -1);
  CCell* ValueSetValue(CRow* pRow, int nCol, CCell** ppCell, const TValue* pValue);
  CCell* ValueSetValue(CRow* pRow, int nCol, CCell** ppCell, const TValue& value);
  CCell* ValueSetLogical(CRow* pRow, int nCol, CCell** ppCell, int nLogical);
  CCell* ValueSetError(CRow* pRow, int nCol, CCell** ppCell, TValue::TError eError);
  CCell* ValueSetExcelError(CRow* pRow, int nCol, CCell** ppCell, unsigned char cError);
  // Moves src into the cell; src is left Empty.
  CCell* ValueCopyAndClearSource(CRow* pRow, int nCol, CCell** ppCell, TValue& src);
  CCell* SetCellFormat(CRow* pRow, int nCol, CCell** ppCell, unsigned short wFormat);
  CCell* SetCellHasMemo(CRow* pRow, int nCol, CCell** ppCell, bool bHasMemo);
  CCell* SetCellBidir(CRow* pRow, int nCol, CCell** ppCell, bool bBidir);
  CCell* SetMergedCellIndex(CRow* pRow, int nCol, CCell** ppCell, unsigned short wIndex);

  // Walks the existing cells of the range or region on pSheet (CBookIterator): each is
  // cloned, handed to pfn and stored back. Returns 0 when pfn stopped the walk, else 1.
  int SetAttribute(void* pContext, CSheetBase* pSheet, const TRange& range, TCellAttributeProc pfn,
                   std::intptr_t a, std::intptr_t b);
  int SetAttribute(void* pContext, CSheetBase* pSheet, const TRegion& region,
                   TCellAttributeProc pfn, std::intptr_t a, std::intptr_t b);
  // The same over an iterator the caller made (a filling iterator reaches every
  // position). The iterator must not have been started.
  int SetAttributeIter(void* pContext, CBookIterator& it, TCellAttributeProc pfn, std::intptr_t a,
                       std::intptr_t b);
  // Sets the merged index of every existing cell of the range.
  int SetMergedCellIndex(void* pContext, CSheetBase* pSheet, const TRange& range,
                         unsigned short wIndex);

  // Deletes every shared cell, the last first. No row may point at one any more.
  void RemoveAllSCT();

  int GetSharedCount() const { return static_cast<int>(m_SharedCells.size()); }
  // The shared empty cell of wFormat when made, else null.
  CCell* FindEmptyCell(unsigned short wFormat) const;

 private:
  template <class TFn>
  CCell* Modify(CRow* pRow, int nCol, CCell** ppCell, TFn fn);

  std::vector<CCell*> m_SharedCells;  // owned: deleted only by RemoveAllSCT
  std::vector<CCell*> m_EmptyCells;   // owned; indexed by format, null until first use
};
