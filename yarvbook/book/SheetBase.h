// CSheetBase: one sheet: an array of rows indexed by row number (0..65535), each row
// an array of cell pointers indexed by column, so reading a cell is two index
// operations. Rows and cells are made only when written. Beside the rows the sheet
// keeps its name, its row and column information lists and its changed region.
//
// Every constant setter goes through NewValueCell and the shared cell table's clone
// on write; a formatted but empty position holds the shared empty cell of its format.
// A cell's format index selects a number format of the book, through which the sheet
// writes the cell's display text. Formula entry, merged blocks, memos, array-formula
// and data-table blocks and text export join the sheet with the parts of the engine
// that provide them.
#pragma once

#include <string>

#include "base/Cell.h"
#include "base/Export.h"
#include "base/Range.h"
#include "base/Region.h"
#include "base/ZelObArray.h"
#include "book/RCInfoList.h"
#include "book/Row.h"
#include "eval/Value.h"
#include "recalc/ChangedRegion.h"
#include "format/GeneralNumber.h"
#include "format/SingleFormat.h"

class CBookBase;
class CCell;

class YARVBOOK_API CSheetBase : public CZelObArray {
 public:
  // Edge navigation directions: the column steps by -1 or +1, or the row by -1 or +1.
  enum ENextEdgeDirection : int { edLeft = 0, edRight = 1, edUp = 2, edDown = 3 };

  // Result codes of the setters and of SetSheetName.
  static constexpr int kOk = 0;
  static constexpr int kErrMemory = 3;
  static constexpr int kErrNameTaken = 91;
  static constexpr int kMaxSheetName = 31;

  // Sizes in the host's units: row heights in twips, column widths in 1/256 of a
  // character of the default font. The defaults are those of a new workbook.
  static constexpr unsigned short kDefRowHeight = 255;
  static constexpr unsigned short kDefColWidth = 2304;
  static constexpr unsigned short kDefRowHdrWidth = 1024;
  static constexpr unsigned short kDefColHdrHeight = 255;

  // A sheet of pBook (which may be null for a free-standing sheet) at nSheetIndex.
  CSheetBase(CBookBase* pBook, int nSheetIndex);
  ~CSheetBase() override;

  CBookBase* GetBook() const { return m_pBook; }
  void SetBook(CBookBase* pBook) { m_pBook = pBook; }
  int GetSheetIndex() const { return m_nSheetIndex; }
  void SetSheetIndex(int nIndex) { m_nSheetIndex = static_cast<short>(nIndex); }

  // ---- Rows and cells ----------------------------------------------------------
  int MaxIndex() const override { return kMaxRow; }
  int Rows() const { return m_nSize; }
  // The last row index: the row array's size - 1.
  int Row2() const { return m_nSize - 1; }
  CRow* Row(int nRow) const {
    return nRow >= 0 && nRow < m_nSize ? static_cast<CRow*>(m_pData[nRow]) : nullptr;
  }
  // The cell at a position, or null (outside the grid or no cell object).
  CCell* Cell(int nRow, int nCol) const {
    const CRow* pRow = Row(nRow);
    return pRow ? pRow->Cell(nCol) : nullptr;
  }
  CCell* Cell(const TCell& cell) const { return Cell(cell.row, cell.col); }
  // The row, made when missing; null outside 0..65535. Throws CZelException (memory).
  CRow* InitRow(int nRow);
  // The cell at a position, made with wFormat when missing (CRow::InitCell), and the
  // position marked for recalculation. Null outside the grid. Throws CZelException.
  CCell* InitCell(int nRow, int nCol, unsigned short wFormat = CCell::kDefaultFormat);

  // Makes sure a plain (non-formula) cell object stands at cell for a constant setter
  // and gives it in *ppNewCell (it may be shared: change it through the shared cell
  // table). With ppOldCell the present cell is handed to the caller (who then owns it
  // unless it is shared) and a new one made. A formula cell is replaced by a new
  // cell of its format. Returns 0, or 3 when memory ran out (the position is then as
  // it was, and a handed-out old cell is back in place). bMarkRecalc marks the
  // position; bUpdateMerged redraws the rows of the cell.
  int NewValueCell(const TCell& cell, CCell** ppNewCell, CCell** ppOldCell = nullptr,
                   bool bMarkRecalc = true, bool bUpdateMerged = false);
  // Undoes a failed NewValueCell: pNewCell leaves the slot (if there) and is deleted.
  void CleanupAfterError(const TCell& cell, CCell* pNewCell);

  // Constant setters: 0, or 3 when memory ran out (the cell then keeps its old
  // state), or -1 when the position is outside the grid.
  int SetNumber(const TCell& cell, double r);
  int SetLogical(const TCell& cell, int nLogical);
  int SetText(const TCell& cell, const char16_t* pwszText, int nLength = -1);
  int SetValue(const TCell& cell, const TValue& value);
  int SetError(const TCell& cell, TValue::TError eError);
  // Sets the position from text as a user types it. Text that reads as a number, a
  // date or time, TRUE/FALSE or an error text (TValue::StringToReal in the notation
  // nParseType, the cell's number-format type deciding the percent and fraction
  // readings) stores that value; while the cell's number format is General the cell
  // also takes the built-in format the text's shape proposes ("3/1/2024" the short
  // date, "1,234.5" "#,##0.00", "5%" "0%"). Other text is stored as text; an empty
  // text clears the value. Returns as SetValue; on failure the cell is as it was.
  int SetValueFromText(const TCell& cell, const char16_t* pwszText, int nParseType = ptLocal);
  // Empties the value; a cell left with only a format becomes the shared empty cell
  // of that format. A position without a cell stays without one.
  int ClearValue(const TCell& cell);
  // Sets the format of the position, making the shared empty cell of wFormat where
  // no cell was.
  int SetCellFormat(const TCell& cell, unsigned short wFormat);
  // Puts pCell (taken over) at the position; what was there is deleted unless shared.
  // Returns 0, 3 (memory: pCell deleted, position unchanged) or -1 (outside).
  int SetCell(int nRow, int nCol, CCell* pCell);
  int SetCell(const TCell& cell, CCell* pCell) { return SetCell(cell.row, cell.col, pCell); }
  // Puts one cell at every position of the region: pCell is folded into the shared
  // cell table first (AddCell), since many slots point at it.
  int SetCell(const TRegion& region, CCell* pCell);
  // The format a new cell at the position receives: the row's format when it has one
  // other than the default, else the column's.
  unsigned short NewFormat(int nRow, int nCol) const;

  // ---- Formulas ------------------------------------------------------------------
  // A plain formula, or a member of an array formula (computed in array mode).
  enum ECellFormulaType : int { cftNormal = 0, cftArray = 1 };
  // Parses pwszText (a leading "=" is skipped; unknown names are added to the book as
  // undefined names) and puts a formula cell at the
  // position, keeping the format of the cell it replaces; the book's order of
  // formulas becomes invalid and the cell is computed by the next recalculation.
  // Parse types 1 and 2 read English function names and separators, other values
  // the locale's. Returns 0; the parser's result code (4, 113, 114) with the index
  // of the fault in the text in *pnErrorPos, the cell left as it was; 3 when memory
  // ran out; -1 outside the grid.
  int SetFormula(const TCell& cell, const char16_t* pwszText, int nFormulaType = cftNormal,
                 int nParseType = 1, int nFlags = 0, int* pnErrorPos = nullptr);
  // The same with references read in R1C1 notation (A1 references are read too).
  int SetFormulaR1C1(const TCell& cell, const char16_t* pwszText, int nFormulaType = cftNormal,
                     int nParseType = 1, int nFlags = 0, int* pnErrorPos = nullptr);
  // The cell's formula as text with its leading "=" (English names and separators
  // for parse types 1 and 2, the locale's otherwise). False, with text empty, when
  // the position holds no formula or its tokens cannot be shown.
  bool GetFormulaText(int nRow, int nCol, std::u16string& text, int nParseType = 1) const;
  // The text a user edits in the cell: the formula text (an array formula within
  // braces), else the constant as it would be typed. False, with text empty, for a
  // position without a value or formula.
  bool GetDispFormulaText(int nRow, int nCol, std::u16string& text, int nParseType = 1) const;

  // Readers: an absent cell reads as Empty.
  void GetValue(int nRow, int nCol, TValue* pValue) const;
  // False when the position holds no number.
  bool GetNumber(int nRow, int nCol, double& r) const;
  // The number of a Real cell, else 0.
  double QuickGetNumber(int nRow, int nCol) const;
  // False when the position holds no logical value.
  bool GetLogical(int nRow, int nCol, int& nLogical) const;
  // The text of a Text cell, else null. Valid while the cell is unchanged.
  const char16_t* GetText(int nRow, int nCol) const;
  bool IsValue(int nRow, int nCol) const;
  bool IsValue(const TCell& cell) const { return IsValue(cell.row, cell.col); }
  // No cell object, or one holding the empty value.
  bool IsEmptyCell(int nRow, int nCol) const;
  // True when no position of the range holds a value.
  bool IsEmpty(const TRange& range) const;
  using CZelObArray::IsEmpty;
  // The format of the cell object, else the format a new cell there would receive.
  unsigned short GetFormatIndex(const TCell& cell) const;
  // The index of the book's number format that the position's cell format selects
  // (CBookBase::GetCellValFormatIndex).
  int GetValFormatIndex(const TCell& cell) const;
  // The type of that number format; General on a sheet without a book.
  CSingleFormat::EType GetValFormatType(const TCell& cell) const;
  // The position's display text: a number through its number format, the General rule
  // cut to nGeneralWidth characters (11: a cell of standard width; 0: 15 significant
  // digits); a text through the format's text section; a logical as TRUE or FALSE and
  // an error as its text, whatever the format; "" for an empty position. The text is
  // the process-wide formatting result (CSingleFormat::m_Buf, with the fill, colour
  // and spacing marks beside it): copy it before the next formatting call. A sheet
  // without a book shows everything through General.
  const char16_t* GetFormattedText(int nRow, int nCol,
                                   int nGeneralWidth = TGeneralNumber::kCellWidth) const;

  // ---- Name ----------------------------------------------------------------------
  // Stores the first 31 characters of pwszName. 91 when another sheet of the book has
  // that name in any letter case (nothing changes); 3 when memory ran out; else 0.
  int SetSheetName(const char16_t* pwszName, bool bSetModified = true, bool bFixReferences = false);
  const char16_t* GetSheetName() const { return m_sName.c_str(); }
  // Exact comparison with the sheet name.
  bool operator==(const char16_t* pwszName) const;
  // The sheet's second text; null clears it. 3 when memory ran out, else 0.
  int SetRowColName(const char16_t* pwszText);
  const char16_t* GetRowColName() const { return m_sRowColName.c_str(); }

  // ---- Extent and navigation ---------------------------------------------------
  // The used range: the bounding range of every existing row's slots from its first
  // cell to its last slot (trailing holes not shrunk away count). False, with the
  // range set to (-1, -1, -1, -1), when the sheet has no cell.
  bool GetActiveRange(TRange& range) const;
  // Moves cell to the edge of the data block in direction eDir, passing hidden rows
  // and columns. A cell outside the grid is left as it is.
  void GetNextEdge(ENextEdgeDirection eDir, TCell& cell) const;

  // ---- Row removal and compaction ------------------------------------------------
  // Deletes row nRow (cells it owns included) and nulls its slot; later rows stay.
  void DeleteRow(int nRow);
  // Drops the cells of the row that hold nothing, then the row itself when it is left
  // without cells.
  void CleanUpRow(int nRow);
  void CleanUpSheet();
  void ShrinkRows(int nFrom, int nTo);
  // Drops trailing missing rows and spare storage of the row array.
  void ShrinkRowArray();
  void Shrink() override;
  using CZelObArray::Shrink;
  // CleanUpSheet, then shrinks every row's storage and the row array.
  void Optimize();

  // ---- Row and column information ------------------------------------------------
  CRCInfoList& RowInfo() { return m_RowInfo; }
  CRCInfoList& ColInfo() { return m_ColInfo; }
  const CRCInfoList& RowInfo() const { return m_RowInfo; }
  const CRCInfoList& ColInfo() const { return m_ColInfo; }
  void SetColWidth(int nCol1, int nCol2, unsigned short wWidth);
  void SetRowHeight(int nRow1, int nRow2, unsigned short wHeight);
  void SetColHidden(int nCol1, int nCol2, bool bHidden);
  void SetRowHidden(int nRow1, int nRow2, bool bHidden);
  void SetRowFiltered(int nRow1, int nRow2, bool bFiltered);
  void SetColUserDefinedSize(int nCol1, int nCol2, bool bOn);
  void SetRowUserDefinedSize(int nRow1, int nRow2, bool bOn);
  // The default column width; runs of the old default keep their size.
  void SetDefWidth(unsigned short wWidth);
  void SetHdrWidth(unsigned short wWidth) { m_RowInfo.SetHdrSize(wWidth); }
  void SetHdrHeight(unsigned short wHeight) { m_ColInfo.SetHdrSize(wHeight); }
  void SetColInfo(int nCol1, int nCol2, const CRCInfoItem& model);
  void SetRowInfo(int nRow1, int nRow2, const CRCInfoItem& model);
  // Outline level change over rows (bRows) or columns.
  void IncLevelInfo(bool bRows, int nFirst, int nLast, int nDelta);
  bool GetColHidden(int nCol) const { return m_ColInfo.IsHidden(nCol); }
  bool GetRowHidden(int nRow) const { return m_RowInfo.IsHidden(nRow); }
  bool IsColVisible(int nCol) const { return m_ColInfo.IsVisible(nCol); }
  bool IsRowVisible(int nRow) const { return m_RowInfo.IsVisible(nRow); }
  // True when the position lies in a row or a column that is not visible.
  bool GetHidden(const TCell& cell) const;
  // True when every row or every column of the range is not visible.
  bool GetHidden(const TRange& range) const;
  bool GetHidden(const TRegion& region) const;
  void SetNeedsAutoHeight(int nRow1, int nRow2);

  // ---- Marks for the views and the recalculation ---------------------------------
  void SetModified();
  // The whole sheet, a cell or a range changed: in minimal mode the changed region
  // grows; in every mode the book needs recalculation.
  void SetNeedsRecalc();
  void SetNeedsRecalc(const TCell& cell);
  void SetNeedsRecalc(const TRange& range);
  // The cells changed since the last recalculation (minimal mode). The recalculation
  // empties it once it has read it.
  CChangedRegion& ChangedRegion() { return m_ChangedRegion; }
  const CChangedRegion& ChangedRegion() const { return m_ChangedRegion; }
  void OnInvalidateRange(const TRange& range);
  void OnInvalidateRange(const TRegion& region);
  void UpdateRow(int nRow);
  void UpdateRows(int nRow1, int nRow2);
  void UpdateRange(const TRange& range);
  void UpdateAllCells();
  void UpdateView();
  void UpdateAllViews();

  bool IsProtected() const { return m_bProtected; }
  void SetProtected(bool b) { m_bProtected = b; }

 private:
  CBookBase* m_pBook;
  short m_nSheetIndex;
  bool m_bProtected = false;
  std::u16string m_sName;
  std::u16string m_sRowColName;
  CRCInfoList m_RowInfo;
  CRCInfoList m_ColInfo;
  CChangedRegion m_ChangedRegion;
};
