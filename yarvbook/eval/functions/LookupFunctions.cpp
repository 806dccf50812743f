// Lookup and reference family: VLOOKUP, HLOOKUP, MATCH and LOOKUP share one search
// engine over a table given as a range, an array or a single number; INDEX, OFFSET and
// INDIRECT make references; ADDRESS writes one as text; ROW, COLUMN, ROWS and COLUMNS
// measure one. A range is read cell by cell through its sheet, never copied, so a
// binary search over a column costs a logarithmic number of cell reads. During a
// recalculation, exact searches along a range's first column or row go through the
// lookup index (CLookupCache) instead of scanning.
#include <algorithm>
#include <string>
#include <utility>

#include "base/A1Text.h"
#include "base/Cell.h"
#include "base/Range3d.h"
#include "base/Region.h"
#include "base/Wildcard.h"
#include "book/BookBase.h"
#include "book/CellRecord.h"
#include "book/SheetBase.h"
#include "eval/FormulaEvaluator.h"
#include "eval/Func.h"
#include "eval/LookupCache.h"
#include "eval/Value.h"
#include "formula/R1C1Text.h"
#include "platform/ResourceIds.h"

namespace {

// ---- Tables ----------------------------------------------------------------------------

// A table the lookups read element by element: a range of a sheet, an Array value, or
// a single number (a one-by-one table).
class TLookupTable {
 public:
  // Takes a value that passed CheckArray; it must outlive the table. False (with
  // *pErr set) for a reference to a deleted sheet.
  bool Init(const TValue& val, TValue::TError* pErr) {
    m_pVal = &val;
    m_pSheet = nullptr;
    if (val.IsRef()) {
      TRange range;
      val.GetValue(&m_pSheet, &range);
      if (!m_pSheet) {
        *pErr = TValue::errRef;
        return false;
      }
      m_nRow1 = range.first.row;
      m_nCol1 = range.first.col;
      m_nRows = range.Rows();
      m_nCols = range.Cols();
      m_nSheetRows = m_pSheet->Rows();
      // Texts read from cells share their string-table entry instead of being copied.
      m_Scratch.SetSST(true);
    } else {
      m_nRows = val.Rows();
      m_nCols = val.Cols();
    }
    return true;
  }
  int Rows() const { return m_nRows; }
  int Cols() const { return m_nCols; }
  // The first column (or, bHorizontal, the first row) of a range on a sheet as a
  // sheet line; false for arrays and single values.
  bool GetSheetLine(bool bHorizontal, TSheetLine* pLine) const {
    if (!m_pSheet) return false;
    pLine->pSheet = m_pSheet;
    pLine->bHorizontal = bHorizontal;
    pLine->nLine = bHorizontal ? m_nRow1 : m_nCol1;
    pLine->nFirst = bHorizontal ? m_nCol1 : m_nRow1;
    pLine->nLast = pLine->nFirst + (bHorizontal ? m_nCols : m_nRows) - 1;
    return true;
  }
  // True when every position of row nRow (0-based in the table) and later has no cell:
  // the sheet has no row there.
  bool IsPastLastRow(int nRow) const { return m_pSheet && m_nRow1 + nRow >= m_nSheetRows; }
  // The element at (nRow, nCol), or null for a position without a cell or outside the
  // table. The pointer is valid until the next call.
  const TValue* Get(int nRow, int nCol) const {
    if (nRow < 0 || nCol < 0 || nRow >= m_nRows || nCol >= m_nCols) return nullptr;
    if (m_pSheet) {
      const CCell* pCell = m_pSheet->Cell(m_nRow1 + nRow, m_nCol1 + nCol);
      if (!pCell) return nullptr;
      pCell->GetValue(m_Scratch);
      return &m_Scratch;
    }
    if (m_pVal->IsArrayVal()) return m_pVal->GetArrayValue(nRow, nCol);
    return m_pVal;
  }

 private:
  const TValue* m_pVal = nullptr;
  CSheetBase* m_pSheet = nullptr;
  int m_nRow1 = 0, m_nCol1 = 0, m_nRows = 0, m_nCols = 0;
  int m_nSheetRows = 0;
  mutable TValue m_Scratch;
};

bool IsUsable(const TValue* pVal) { return pVal && !pVal->IsEmpty() && !pVal->IsError(); }

enum class ESearchMode { kAscending, kDescending, kExact, kWildcard };

// One line of a table: its first column (vertical) or its first row.
class TSearchLine {
 public:
  TSearchLine(const TLookupTable& table, bool bHorizontal)
      : m_Table(table), m_bHorizontal(bHorizontal) {}
  int Size() const { return m_bHorizontal ? m_Table.Cols() : m_Table.Rows(); }
  const TValue* At(int nPos) const {
    return m_bHorizontal ? m_Table.Get(0, nPos) : m_Table.Get(nPos, 0);
  }
  // The first usable position from nFrom to nTo, or -1; *ppElem receives its element
  // (valid until the next read).
  int NextUsable(int nFrom, int nTo, const TValue** ppElem) const {
    for (int i = nFrom; i <= nTo; ++i) {
      if (!m_bHorizontal && m_Table.IsPastLastRow(i)) return -1;
      const TValue* pElem = At(i);
      if (IsUsable(pElem)) {
        *ppElem = pElem;
        return i;
      }
    }
    return -1;
  }

 private:
  const TLookupTable& m_Table;
  const bool m_bHorizontal;
};

// The binary search for the last element not greater than v (ascending) or not
// smaller than v (descending, bMirror). On an equal element it stops at once, so of a
// run of equals it gives the one it meets first. Unusable elements are stepped over
// forward from each probe and backward from the answer. Returns the position or -1.
int SearchApproximate(const TValue& v, const TSearchLine& line, bool bMirror) {
  const int n = line.Size();
  int nLo = 0, nHi = n - 1, nAnswer = -1;
  bool bAnswered = false;
  while (nLo <= nHi) {
    const int nMid = nLo + (nHi - nLo) / 2;
    const TValue* pElem = nullptr;
    int i = line.NextUsable(nMid, nHi, &pElem);
    int c;
    if (i >= 0) {
      c = v.Compare(*pElem);
      if (bMirror) c = -c;
    } else {
      c = -1;  // nothing usable up to nHi: look below the probe
      i = nMid;
    }
    if (c == 0) {
      nAnswer = i;
      bAnswered = true;
      break;
    }
    if (c > 0) {
      nLo = i + 1;
      if (nLo > nHi) {
        nAnswer = i;
        bAnswered = true;
        break;
      }
    } else {
      nHi = i - 1;
    }
  }
  if (!bAnswered) nAnswer = nHi;
  while (nAnswer >= 0 && !IsUsable(line.At(nAnswer))) --nAnswer;
  return nAnswer;
}

// Position of the first element equal to v (or, with bWildcard, of the first text
// that v matches as a pattern), or -1.
int SearchExact(const TValue& v, const TSearchLine& line, bool bWildcard) {
  const int n = line.Size();
  const TValue* pElem = nullptr;
  for (int i = line.NextUsable(0, n - 1, &pElem); i >= 0;
       i = line.NextUsable(i + 1, n - 1, &pElem)) {
    if (bWildcard ? pElem->IsText() && StrMatch(v.TextPtr(), pElem->TextPtr())
                  : v.Compare(*pElem) == 0)
      return i;
  }
  return -1;
}

// The 0-based position of v along the first column (or, bHorizontal, the first row) of
// the table, or -1 when there is none.
int Search(const TValue& v, const TLookupTable& table, ESearchMode eMode, bool bHorizontal) {
  const TSearchLine line(table, bHorizontal);
  switch (eMode) {
    case ESearchMode::kAscending:
      return SearchApproximate(v, line, false);
    case ESearchMode::kDescending: {
      // Nothing is found when v lies above the first (largest) element.
      const TValue* pFirst = nullptr;
      if (line.NextUsable(0, line.Size() - 1, &pFirst) < 0 || v.Compare(*pFirst) > 0) return -1;
      return SearchApproximate(v, line, true);
    }
    case ESearchMode::kExact: {
      // During a recalculation many formulas search the same table: an index
      // answers as the scan would.
      TSheetLine sheetLine;
      int nPos = -1;
      if (table.GetSheetLine(bHorizontal, &sheetLine) && CLookupCache::Find(sheetLine, v, &nPos))
        return nPos;
      return SearchExact(v, line, false);
    }
    case ESearchMode::kWildcard:
      return SearchExact(v, line, true);
  }
  return -1;
}

// The longer side of a vector is searched: horizontal when it has more columns.
bool IsAutoHorizontal(const TLookupTable& table) { return table.Cols() > table.Rows(); }

// Stores the element of the result table at (nPos, nIndex) of a vertical search or
// (nIndex, nPos) of a horizontal one into pResult; a negative index means the last
// column or row. Outside the table gives #REF!, a position without a cell Empty.
void SetResultElement(const TLookupTable& result, int nPos, int nIndex, bool bHorizontal,
                      TValue* pResult) {
  if (nIndex < 0) nIndex = bHorizontal ? result.Rows() - 1 : result.Cols() - 1;
  const int nRow = bHorizontal ? nIndex : nPos;
  const int nCol = bHorizontal ? nPos : nIndex;
  if (nRow >= result.Rows() || nCol >= result.Cols()) {
    pResult->SetError(TValue::errRef);
    return;
  }
  const TValue* pElem = result.Get(nRow, nCol);
  if (!pElem) {
    pResult->Clear();
    return;
  }
  TValue elem(*pElem);  // pElem may be pResult itself or one of the argument slots
  pResult->CopyAndClearSource(elem);
}

// Makes argument nArg's error (left by a failed check) the call's result.
void FailWith(TValue* pArgs, int nArg) {
  if (nArg != 0) pArgs[0].SetError(pArgs[nArg].GetError());
}

// ---- VLOOKUP, HLOOKUP, MATCH, LOOKUP -------------------------------------------------

// VLOOKUP searches down the first column, HLOOKUP along the first row; the index
// picks the result column or row (1-based).
class TFuncXLookup final : public TFuncVarArgs {
 public:
  TFuncXLookup(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bHorizontal)
      : TFuncVarArgs(nResId, pwszName, nFunc, 3, 4), m_bHorizontal(bHorizontal) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    if (!pArgs[0].CheckValue()) return;
    if (!pArgs[1].CheckArray()) return FailWith(pArgs, 1);
    int nIndex = 0;
    if (!pArgs[2].CheckInt(nIndex)) return FailWith(pArgs, 2);
    int bApproximate = 1;
    if (nArgs > 3 && !pArgs[3].CheckLogicalWithDefault(bApproximate)) return FailWith(pArgs, 3);
    TLookupTable table;
    TValue::TError err = TValue::errNone;
    if (!table.Init(pArgs[1], &err)) return pArgs[0].SetError(err);
    if (nIndex < 1) return pArgs[0].SetError(TValue::errValue);
    if (nIndex > (m_bHorizontal ? table.Rows() : table.Cols()))
      return pArgs[0].SetError(TValue::errRef);
    const int nPos =
        Search(pArgs[0], table, bApproximate ? ESearchMode::kAscending : ESearchMode::kExact,
               m_bHorizontal);
    if (nPos < 0) return pArgs[0].SetError(TValue::errNA);
    SetResultElement(table, nPos, nIndex - 1, m_bHorizontal, &pArgs[0]);
  }

 private:
  const bool m_bHorizontal;
};

// MATCH: the 1-based position in a row or column. Type 1 (default) ascending, -1
// descending, 0 exact, with wildcards for a text lookup value.
class TFuncMatch final : public TFuncVarArgs {
 public:
  TFuncMatch() : TFuncVarArgs(IDS_FN_MATCH, u"MATCH", 64, 2, 3) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    if (!pArgs[0].CheckValue()) return;
    if (!pArgs[1].CheckArray()) return FailWith(pArgs, 1);
    int nType = 1;
    if (nArgs > 2 && !pArgs[2].CheckIntWithDefault(nType)) return FailWith(pArgs, 2);
    TLookupTable table;
    TValue::TError err = TValue::errNone;
    if (!table.Init(pArgs[1], &err)) return pArgs[0].SetError(err);
    if (table.Rows() != 1 && table.Cols() != 1) return pArgs[0].SetError(TValue::errNA);
    ESearchMode eMode = ESearchMode::kAscending;
    if (nType < 0) {
      eMode = ESearchMode::kDescending;
    } else if (nType == 0) {
      eMode = pArgs[0].IsText() ? ESearchMode::kWildcard : ESearchMode::kExact;
    }
    const int nPos = Search(pArgs[0], table, eMode, IsAutoHorizontal(table));
    if (nPos < 0) return pArgs[0].SetError(TValue::errNA);
    pArgs[0].SetValue(nPos + 1);
  }
};

// LOOKUP: an ascending search of the vector (or the longer side of a table); the
// result comes from the last row or column of the result vector, or of the table.
class TFuncLookup final : public TFuncVarArgs {
 public:
  TFuncLookup() : TFuncVarArgs(IDS_FN_LOOKUP, u"LOOKUP", 28, 2, 3) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    if (!pArgs[0].CheckValue()) return;
    if (!pArgs[1].CheckArray()) return FailWith(pArgs, 1);
    if (nArgs > 2 && !pArgs[2].CheckArray()) return FailWith(pArgs, 2);
    TLookupTable table, result;
    TValue::TError err = TValue::errNone;
    if (!table.Init(pArgs[1], &err) || !result.Init(pArgs[nArgs > 2 ? 2 : 1], &err))
      return pArgs[0].SetError(err);
    const bool bHorizontal = IsAutoHorizontal(table);
    const int nPos = Search(pArgs[0], table, ESearchMode::kAscending, bHorizontal);
    if (nPos < 0) return pArgs[0].SetError(TValue::errNA);
    SetResultElement(result, nPos, -1, bHorizontal, &pArgs[0]);
  }
};

// ---- INDEX ---------------------------------------------------------------------------

// The rows and columns an index pair selects in a block of nRows x nCols: 0 selects
// all of them. One index into a one-row block counts columns. False (#REF!) for an
// index outside the block.
bool SelectBlock(int nRows, int nCols, int nArgs, int nRow, int nCol, TRange* pSel) {
  if (nArgs == 2 && nRows == 1 && nCols > 1) {
    nCol = nRow;
    nRow = 0;
  }
  if (nRow < 0 || nCol < 0 || nRow > nRows || nCol > nCols) return false;
  pSel->first.row = nRow == 0 ? 0 : nRow - 1;
  pSel->last.row = nRow == 0 ? nRows - 1 : nRow - 1;
  pSel->first.col = nCol == 0 ? 0 : nCol - 1;
  pSel->last.col = nCol == 0 ? nCols - 1 : nCol - 1;
  return true;
}

// INDEX(reference or array, row, column, area). A reference gives a reference (a
// multi-area one picks its area first); an array gives an element, or a row or
// column of it for an index 0.
class TFuncIndex final : public TFuncVarArgs {
 public:
  TFuncIndex() : TFuncVarArgs(IDS_FN_INDEX, u"INDEX", 29, 1, 4) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    if (pArgs[0].IsError()) return;
    int anIndex[3] = {0, 0, 1};  // row, column, area
    for (int i = 1; i < nArgs; ++i)
      if (!pArgs[i].CheckIntWithDefault(anIndex[i - 1])) return FailWith(pArgs, i);
    const int nArea = anIndex[2];
    CSheetBase* pSheet = nullptr;
    TRange area;
    if (pArgs[0].IsRegion()) {
      const TRegion* pRegion = nullptr;
      pArgs[0].GetValue(&pSheet, &pRegion);
      if (nArea < 1 || nArea > pRegion->Ranges()) return pArgs[0].SetError(TValue::errRef);
      area = pRegion->Range(nArea - 1);
    } else if (pArgs[0].IsRef()) {
      pArgs[0].GetValue(&pSheet, &area);
      if (nArea != 1) return pArgs[0].SetError(TValue::errRef);
    } else if (pArgs[0].IsRange3d()) {
      return pArgs[0].SetError(TValue::errValue);
    } else {
      if (nArea != 1) return pArgs[0].SetError(TValue::errRef);
      return IndexArray(pArgs, nArgs, anIndex[0], anIndex[1]);
    }
    if (!pSheet) return pArgs[0].SetError(TValue::errRef);
    if (nArgs == 1) return pArgs[0].SetValue(pSheet, area);
    TRange sel;
    if (!SelectBlock(area.Rows(), area.Cols(), nArgs, anIndex[0], anIndex[1], &sel))
      return pArgs[0].SetError(TValue::errRef);
    pArgs[0].SetRange(pSheet, area.first.row + sel.first.row, area.first.col + sel.first.col,
                      area.first.row + sel.last.row, area.first.col + sel.last.col);
  }

 private:
  static void IndexArray(TValue* pArgs, int nArgs, int nRow, int nCol) {
    TValue& arr = pArgs[0];
    if (nArgs == 1) return;
    TRange sel;
    if (!SelectBlock(arr.Rows(), arr.Cols(), nArgs, nRow, nCol, &sel))
      return arr.SetError(TValue::errRef);
    if (!arr.IsArrayVal()) return;  // a single value is its own only element
    TValue part;
    if (sel.Rows() == 1 && sel.Cols() == 1) {
      part = *arr.GetArrayValue(sel.first.row, sel.first.col);
    } else {
      part.ResizeArray(sel.Rows(), sel.Cols());
      for (int r = 0; r < sel.Rows(); ++r)
        for (int c = 0; c < sel.Cols(); ++c)
          part.SetArrayValue(r, c, *arr.GetArrayValue(sel.first.row + r, sel.first.col + c));
    }
    arr.CopyAndClearSource(part);
  }
};

// ---- OFFSET and INDIRECT -------------------------------------------------------------

// OFFSET(reference, rows, columns, height, width): the reference moved and resized.
// Height and width default to the reference's; a negative one extends up or left from
// the moved corner; 0, or a result beyond the grid, is #REF!.
class TFuncOffset final : public TFuncVarArgs {
 public:
  TFuncOffset() : TFuncVarArgs(IDS_FN_OFFSET, u"OFFSET", 78, 3, 5) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    if (pArgs[0].IsError()) return;
    int nRows = 0, nCols = 0;
    if (!pArgs[1].CheckInt(nRows)) return FailWith(pArgs, 1);
    if (!pArgs[2].CheckInt(nCols)) return FailWith(pArgs, 2);
    if (!pArgs[0].IsRef()) return pArgs[0].SetError(TValue::errValue);
    CSheetBase* pSheet = nullptr;
    TRange range;
    pArgs[0].GetValue(&pSheet, &range);
    int nHeight = range.Rows(), nWidth = range.Cols();
    if (nArgs > 3 && !pArgs[3].CheckIntWithDefault(nHeight)) return FailWith(pArgs, 3);
    if (nArgs > 4 && !pArgs[4].CheckIntWithDefault(nWidth)) return FailWith(pArgs, 4);
    if (!pSheet || nHeight == 0 || nWidth == 0) return pArgs[0].SetError(TValue::errRef);
    long long nRow1 = static_cast<long long>(range.first.row) + nRows;
    long long nCol1 = static_cast<long long>(range.first.col) + nCols;
    long long nRow2 = nRow1 + nHeight + (nHeight > 0 ? -1 : 1);
    long long nCol2 = nCol1 + nWidth + (nWidth > 0 ? -1 : 1);
    if (nRow2 < nRow1) std::swap(nRow1, nRow2);
    if (nCol2 < nCol1) std::swap(nCol1, nCol2);
    if (nRow1 < 0 || nCol1 < 0 || nRow2 > kMaxRow || nCol2 > kMaxCol)
      return pArgs[0].SetError(TValue::errRef);
    pArgs[0].SetRange(pSheet, static_cast<int>(nRow1), static_cast<int>(nCol1),
                      static_cast<int>(nRow2), static_cast<int>(nCol2));
  }
};

// Reads "A:C" (whole columns) or "2:5" (whole rows) at *ppText.
bool ReadWholeLines(const char16_t** ppText, TRange* pRange) {
  const char16_t* p = *ppText;
  int n1 = 0, n2 = 0;
  while (*p == u'$') ++p;
  if (CvtCNr(&p, &n1)) {
    if (*p++ != u':') return false;
    while (*p == u'$') ++p;
    if (!CvtCNr(&p, &n2)) return false;
    *pRange = TRange(0, std::min(n1, n2), kMaxRow, std::max(n1, n2));
  } else if (CvtRNr(&p, &n1)) {
    if (*p++ != u':') return false;
    while (*p == u'$') ++p;
    if (!CvtRNr(&p, &n2)) return false;
    *pRange = TRange(std::min(n1, n2), 0, std::max(n1, n2), kMaxCol);
  } else {
    return false;
  }
  *ppText = p;
  return true;
}

// The sheet a reference text names before its "!" ("Sheet2!A1", "'My ''Sheet'!A1"),
// advancing *ppText past the "!". Without a prefix the formula's own sheet. Null
// when the prefix names no sheet of the book.
CSheetBase* ReadSheetPrefix(const char16_t** ppText, CSheetBase* pOwnSheet) {
  const char16_t* p = *ppText;
  std::u16string name;
  if (*p == u'\'') {
    for (++p;; ++p) {
      if (*p == 0) return nullptr;
      if (*p == u'\'') {
        if (p[1] != u'\'') break;
        ++p;
      }
      name += *p;
    }
    if (*++p != u'!') return nullptr;
  } else {
    const char16_t* pBang = p;
    while (*pBang && *pBang != u'!') ++pBang;
    if (*pBang == 0) return pOwnSheet;
    name.assign(p, pBang);
    p = pBang;
  }
  *ppText = p + 1;
  const CBookBase* pBook = pOwnSheet ? pOwnSheet->GetBook() : nullptr;
  return pBook ? pBook->FindSheetBase(name.c_str(), true) : nullptr;
}

// INDIRECT(text, a1): the reference the text names, in A1 notation or (a1 FALSE) in
// R1C1 notation relative to the formula's cell, optionally after a sheet name. Text
// that names no reference is #REF!.
class TFuncIndirect final : public TFuncVarArgs {
 public:
  TFuncIndirect() : TFuncVarArgs(IDS_FN_INDIRECT, u"INDIRECT", 148, 1, 2) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    if (!pArgs[0].CheckValue() || !pArgs[0].CheckString()) return;
    int bA1 = 1;
    if (nArgs > 1 && !pArgs[1].CheckLogicalWithDefault(bA1)) return FailWith(pArgs, 1);
    const std::u16string text(pArgs[0].TextPtr());
    const char16_t* p = text.c_str();
    CSheetBase* pSheet = ReadSheetPrefix(&p, CFormulaEvaluator::GetLastSheet());
    TRange range;
    int bRange = 0, nFlags1 = 0, nFlags2 = 0;
    bool bRead;
    if (bA1) {
      const char16_t* pStart = p;
      bRead = CvtRange(&p, &bRange, &nFlags1, &nFlags2, &range) != 0;
      if (!bRead || *p != 0) {
        p = pStart;
        bRead = ReadWholeLines(&p, &range);
      }
    } else {
      const TCell base(std::max(CFormulaEvaluator::GetLastBaseRow(), 0),
                       std::max(CFormulaEvaluator::GetLastBaseCol(), 0));
      bRead = CvtRangeR1C1(&p, base, &bRange, &nFlags1, &nFlags2, &range) != 0;
    }
    if (!pSheet || !bRead || *p != 0) return pArgs[0].SetError(TValue::errRef);
    if (range.Rows() == 1 && range.Cols() == 1)
      return pArgs[0].SetCell(pSheet, range.first.row, range.first.col);
    pArgs[0].SetValue(pSheet, range);
  }
};

// ---- ADDRESS -------------------------------------------------------------------------

// True when a sheet name must be quoted in a reference: anything but letters, digits,
// "_" and "." (a leading digit included), or a name that reads as a cell address.
bool NeedsQuotes(const std::u16string& name) {
  if (name.empty()) return false;
  if (name[0] >= u'0' && name[0] <= u'9') return true;
  for (char16_t c : name) {
    const bool bPlain = (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') ||
                        (c >= u'0' && c <= u'9') || c == u'_' || c == u'.' || c >= 0x80;
    if (!bPlain) return true;
  }
  TCell cell;
  if (CvtRCNr(name.c_str(), &cell)) return true;
  const char16_t* p = name.c_str();
  int nIsRange = 0, nFlags1 = 0, nFlags2 = 0;
  TRange range;
  return CvtRangeR1C1(&p, TCell(0, 0), &nIsRange, &nFlags1, &nFlags2, &range) && *p == 0;
}

// ADDRESS(row, column, kind, a1, sheet): kind 1 absolute, 2 absolute row, 3 absolute
// column, 4 relative; R1C1 text writes the relative parts in brackets.
class TFuncAddress final : public TFuncVarArgs {
 public:
  TFuncAddress() : TFuncVarArgs(IDS_FN_ADDRESS, u"ADDRESS", 219, 2, 5) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    int nRow = 0, nCol = 0, nKind = 1, bA1 = 1;
    if (!pArgs[0].CheckInt(nRow)) return;
    if (!pArgs[1].CheckInt(nCol)) return FailWith(pArgs, 1);
    if (nArgs > 2 && !pArgs[2].CheckIntWithDefault(nKind)) return FailWith(pArgs, 2);
    if (nArgs > 3 && !pArgs[3].CheckLogicalWithDefault(bA1)) return FailWith(pArgs, 3);
    const bool bSheet = nArgs > 4 && !pArgs[4].IsEmpty();
    if (bSheet && !pArgs[4].CheckString()) return FailWith(pArgs, 4);
    if (nRow < 1 || nRow > kMaxRow + 1 || nCol < 1 || nCol > kMaxCol + 1 || nKind < 1 || nKind > 4)
      return pArgs[0].SetError(TValue::errValue);
    const bool bAbsRow = nKind == 1 || nKind == 2;
    const bool bAbsCol = nKind == 1 || nKind == 3;
    std::u16string text;
    if (bSheet) {
      const std::u16string name(pArgs[4].TextPtr());
      if (NeedsQuotes(name)) {
        text += u'\'';
        for (char16_t c : name) {
          if (c == u'\'') text += u'\'';
          text += c;
        }
        text += u'\'';
      } else {
        text += name;
      }
      text += u'!';
    }
    if (bA1) {
      if (bAbsCol) text += u'$';
      text += FormatColNr(nCol - 1);
      if (bAbsRow) text += u'$';
      text += FormatRowNr(nRow - 1);
    } else {
      const std::u16string rowNr = FormatRowNr(nRow - 1);
      text += bAbsRow ? u"R" + rowNr : u"R[" + rowNr + u"]";
      const std::u16string colNr = FormatRowNr(nCol - 1);
      text += bAbsCol ? u"C" + colNr : u"C[" + colNr + u"]";
    }
    pArgs[0].SetValue(text.c_str(), static_cast<int>(text.size()));
  }
};

// ---- ROW, COLUMN, ROWS, COLUMNS ------------------------------------------------------

// ROW and COLUMN: the 1-based number of the reference's first row or column, or of
// the formula's cell without an argument. A reference of several rows (columns)
// gives them all, as a column (row) of numbers.
class TFuncRowCol final : public TFuncVarArgs {
 public:
  TFuncRowCol(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bRow)
      : TFuncVarArgs(nResId, pwszName, nFunc, 0, 1), m_bRow(bRow) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    if (nArgs == 0) {
      const int n =
          m_bRow ? CFormulaEvaluator::GetLastBaseRow() : CFormulaEvaluator::GetLastBaseCol();
      if (n < 0) return pArgs[0].SetError(TValue::errValue);
      return pArgs[0].SetValue(n + 1);
    }
    if (pArgs[0].IsError()) return;
    TRange range;
    if (pArgs[0].IsRef()) {
      CSheetBase* pSheet = nullptr;
      pArgs[0].GetValue(&pSheet, &range);
    } else if (pArgs[0].IsRange3d()) {
      CBookBase* pBook = nullptr;
      TRange3d range3d;
      pArgs[0].GetValue(&pBook, &range3d);
      range = range3d.GetRange();
    } else {
      return pArgs[0].SetError(pArgs[0].IsRegion() ? TValue::errRef : TValue::errValue);
    }
    const int nFirst = m_bRow ? range.first.row : range.first.col;
    const int nCount = m_bRow ? range.Rows() : range.Cols();
    if (nCount == 1) return pArgs[0].SetValue(nFirst + 1);
    TValue numbers;
    numbers.ResizeArray(m_bRow ? nCount : 1, m_bRow ? 1 : nCount);
    for (int i = 0; i < nCount; ++i)
      numbers.SetArrayNumber(m_bRow ? i : 0, m_bRow ? 0 : i, nFirst + i + 1);
    pArgs[0].CopyAndClearSource(numbers);
  }

 private:
  const bool m_bRow;
};

// ROWS and COLUMNS differ by the dimension only. A single value is one row and one
// column; a multi-area reference has no extent and gives #REF!.
class TFuncExtent final : public TFuncOneArg {
 public:
  TFuncExtent(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bRows)
      : TFuncOneArg(nResId, pwszName, nFunc), m_bRows(bRows) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (pArgs->IsError()) return;
    if (pArgs->IsRegion()) {
      pArgs->SetError(TValue::errRef);
      return;
    }
    int nExtent;
    if (pArgs->IsRange3d()) {
      CBookBase* pBook = nullptr;
      TRange3d range;
      pArgs->GetValue(&pBook, &range);
      nExtent = m_bRows ? range.Rows() : range.Cols();
    } else {
      nExtent = m_bRows ? pArgs->Rows() : pArgs->Cols();
    }
    pArgs->SetValue(nExtent);
  }

 private:
  const bool m_bRows;
};

// Constructing an object registers it; kept in number order, like the function table.
TFuncRowCol s_Row(IDS_FN_ROW, u"ROW", 8, /*bRow=*/true);
TFuncRowCol s_Column(IDS_FN_COLUMN, u"COLUMN", 9, /*bRow=*/false);
TFuncLookup s_Lookup;
TFuncIndex s_Index;
TFuncMatch s_Match;
TFuncExtent s_Rows(IDS_FN_ROWS, u"ROWS", 76, /*bRows=*/true);
TFuncExtent s_Columns(IDS_FN_COLUMNS, u"COLUMNS", 77, /*bRows=*/false);
TFuncOffset s_Offset;
TFuncXLookup s_HLookup(IDS_FN_HLOOKUP, u"HLOOKUP", 101, /*bHorizontal=*/true);
TFuncXLookup s_VLookup(IDS_FN_VLOOKUP, u"VLOOKUP", 102, /*bHorizontal=*/false);
TFuncIndirect s_Indirect;
TFuncAddress s_Address;

}  // namespace
