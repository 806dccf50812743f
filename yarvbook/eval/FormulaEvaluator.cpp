#include "eval/FormulaEvaluator.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <memory>
#include <vector>

#include "base/Range.h"
#include "base/ZelException.h"
#include "book/BookBase.h"
#include "book/CellRecord.h"
#include "book/Name.h"
#include "book/SheetBase.h"
#include "eval/ExternFunc.h"
#include "eval/Func.h"
#include "eval/Op.h"
#include "extern/ExternName.h"
#include "extern/ExternSheet.h"
#include "extern/SupBook.h"
#include "formula/FormulaCell.h"

TValue* CFormulaEvaluator::m_pVal = nullptr;
constinit bool CFormulaEvaluator::m_bCalcArray = false;
constinit bool CFormulaEvaluator::m_bSubtotal = false;
constinit bool CFormulaEvaluator::m_bSubA = false;
constinit bool CFormulaEvaluator::m_bSubSkipHidden = false;
constinit CBookBase* CFormulaEvaluator::m_pLastBook = nullptr;
constinit CSheetBase* CFormulaEvaluator::m_pLastSheet = nullptr;
constinit CFormulaCell* CFormulaEvaluator::m_pLastCell = nullptr;
TCell CFormulaEvaluator::m_LastBase;
constinit int CFormulaEvaluator::m_nNesting = 0;

namespace {

using TPostfixPtr = CFormulaBase::TPostfixPtr;

// The value stack: slot 0 is the bottom and never holds a value, so the top pointer
// of an empty stack is a valid address. Made on first use.
std::unique_ptr<TValue[]>& StackBlock() {
  static std::unique_ptr<TValue[]> s_pBlock;
  return s_pBlock;
}

// One past the block's last slot, set with the block.
TValue* g_pStackEnd = nullptr;

// Cells are read straight from the sheet's rows. The value is built in one scratch
// record per process: a number costs no allocation; a text is copied.
class TSheetCellReader final : public ICellValueReader {
 public:
  const TValue* GetCellValue(const CSheetBase* pSheet, int nRow, int nCol) const override {
    const CCell* pCell = pSheet->Cell(nRow, nCol);
    if (pCell == nullptr || pCell->IsEmpty()) return nullptr;
    pCell->GetValue(m_Scratch);
    return &m_Scratch;
  }
  void ReadCellValue(const CSheetBase* pSheet, int nRow, int nCol, TValue& out) const override {
    const CCell* pCell = pSheet->Cell(nRow, nCol);
    if (pCell == nullptr) {
      out.Clear();
      return;
    }
    pCell->GetValue(out);  // an empty cell clears out
  }

 private:
  mutable TValue m_Scratch;  // the last cell read; used by the caller at once
};

// Implicit intersection looks at the base cell of the evaluation in progress.
bool LastBaseCell(int* pnRow, int* pnCol) {
  if (CFormulaEvaluator::GetStackDepth() < 0) return false;
  *pnRow = CFormulaEvaluator::GetLastBaseRow();
  *pnCol = CFormulaEvaluator::GetLastBaseCol();
  return true;
}

// Installs the book's cell access and the base cell into the value layer when the
// library loads.
struct TInstaller {
  TInstaller() {
    static TSheetCellReader s_Reader;
    TValue::SetCellValueReader(&s_Reader);
    TValue::SetBaseCellFn(&LastBaseCell);
  }
} g_Installer;

// Elements a value brings to element-wise work: an array or range its cells, a
// region or 3-D range none, anything else one.
int ElementCount(const TValue& val) {
  switch (val.GetValType()) {
    case TValue::vtArray:
    case TValue::vtRange:
      return val.Rows() * val.Cols();
    case TValue::vtRegion:
    case TValue::vtRange3d:
      return 0;
    default:
      return 1;
  }
}

// Tokens that push one operand and carry a class.
bool IsOperandToken(unsigned char cBase) {
  switch (cBase) {
    case CFormulaBase::tArray:
    case CFormulaBase::tName:
    case CFormulaBase::tNameX:
    case CFormulaBase::tRef:
    case CFormulaBase::tArea:
    case CFormulaBase::tRefN:
    case CFormulaBase::tAreaN:
    case CFormulaBase::tRef3d:
    case CFormulaBase::tArea3d:
      return true;
    default:
      return false;
  }
}

bool IsRefOp(const TOpBinary* pOp) {
  return pOp->GetToken() >= CFormulaBase::tIsect && pOp->GetToken() <= CFormulaBase::tRange;
}

}  // namespace

CFormulaEvaluator::CFormulaEvaluator(CBookBase* pBook, CFormulaCell* pCell)
    : m_pBook(pBook),
      m_pSheet(pCell->GetSheet()),
      m_pCell(pCell),
      m_Base(pCell->GetRow(), pCell->GetCol()) {
  Init();
}

CFormulaEvaluator::CFormulaEvaluator(CBookBase* pBook, CSheetBase* pSheet, CFormulaCell* pCell,
                                     const TCell& base)
    : m_pBook(pBook), m_pSheet(pSheet), m_pCell(pCell), m_Base(base) {
  Init();
}

CFormulaEvaluator::CFormulaEvaluator(CBookBase* pBook, CSheetBase* pSheet, const TCell& base)
    : m_pBook(pBook), m_pSheet(pSheet), m_Base(base) {
  Init();
}

CFormulaEvaluator::CFormulaEvaluator(CBookBase* pBook, CSheetBase* pSheet)
    : m_pBook(pBook), m_pSheet(pSheet) {
  Init();
}

void CFormulaEvaluator::Init() {
  if (g_pStackEnd == nullptr) {
    StackBlock().reset(new TValue[kStackSize]);
    m_pVal = StackBlock().get();
    g_pStackEnd = m_pVal + kStackSize;
  }
}

int CFormulaEvaluator::GetStackDepth() {
  if (m_nNesting == 0) return -1;
  return static_cast<int>(m_pVal - StackBlock().get());
}

void CFormulaEvaluator::DropTo(TValue* pNewTop) {
  for (TValue* p = m_pVal; p > pNewTop; --p) p->Clear();
  m_pVal = pNewTop;
}

TValue* CFormulaEvaluator::Evaluate(TValue::TError err) {
  TValue* pSlot = m_pVal + 1;
  pSlot->SetError(err);
  return pSlot;
}

TValue* CFormulaEvaluator::Evaluate(CFormula* pFormula, CFormulaBase::EFormulaType type) {
  if (pFormula == nullptr) return nullptr;
  m_pFormula = pFormula;
  m_nValFormat = 0;
  m_bRelIsOffset = CFormulaBase::IsOffsetType(type);
  // A formula pushes at most one value per token byte.
  if (m_nNesting >= kMaxNesting || m_pVal + pFormula->GetPostfixLen() + 2 >= g_pStackEnd)
    return Evaluate(TValue::errName);
  m_pLastBook = m_pBook;
  m_pLastSheet = m_pSheet;
  m_pLastCell = m_pCell;
  m_LastBase = m_Base;
  TValue* pEntry = m_pVal;
  ++m_nNesting;
  try {
    Run(pFormula, pEntry);
  } catch (...) {
    DropTo(pEntry);
    --m_nNesting;
    throw;
  }
  --m_nNesting;
  TValue* pResult = pEntry + 1;
  if (m_pVal == pEntry) {
    pResult->Clear();  // an empty stream leaves nothing
  } else if (m_pVal > pResult) {
    // More than one value left: the last one is the result.
    TValue last;
    last.CopyAndClearSource(*m_pVal);
    DropTo(pEntry);
    pResult->CopyAndClearSource(last);
  }
  m_pVal = pEntry;
  return pResult;
}

void CFormulaEvaluator::Evaluate(CFormulaCell* pCell) {
  const bool bArray = pCell->IsArrayCell();
  const bool bOldArray = m_bCalcArray;
  m_bCalcArray = bArray;
  TValue result;
  try {
    TValue* pResult = Evaluate(pCell->GetFormula(), pCell->GetFormulaType());
    if (pResult != nullptr && pResult->GetValType() == TValue::vtReal) {
      // A finite number, the common result, goes straight into the cell.
      double r;
      pResult->GetValue(r);
      if (std::isfinite(r)) {
        m_bCalcArray = bOldArray;
        pCell->SetRecalcNumber(r);
        pCell->SetNeedsRecompute(false);
        return;
      }
    }
    if (pResult != nullptr) result.CopyAndClearSource(*pResult);
  } catch (...) {
    m_bCalcArray = bOldArray;
    throw;
  }
  m_bCalcArray = bOldArray;
  if (result.IsRef()) {
    if (bArray) {
      if (result.CheckArrayVal()) result.CvtArrayValToValue();
    } else {
      result.CvtRangeToValue(pCell->GetRow(), pCell->GetCol());
    }
  }
  result.CheckValue();
  if (result.IsEmpty()) result.SetZero();
  pCell->SetRecalcValue(result);
  pCell->SetNeedsRecompute(false);
}

// ---- The main loop ------------------------------------------------------------------

void CFormulaEvaluator::Run(CFormula* pFormula, TValue* pEntry) {
  m_pEntry = pEntry;
  m_ArrayOperands.clear();
  TPostfixPtr cur(pFormula->GetPostfix());
  const TPostfixPtr end(pFormula->GetPostfix() + pFormula->GetPostfixLen());
  m_Added = TPostfixPtr(pFormula->GetAddedData());
  m_pAddedEnd = pFormula->GetAddedData() + pFormula->GetAddedDataLen();
  bool bAbort = false;
  while (!bAbort && cur < end) {
    const unsigned char cCode = cur.GetByte();
    const unsigned char cBase = CFormulaBase::TokenBase(cCode);
    const int nLeft = end - cur;
    int nSize = cBase < sizeof TPostfixPtr::m_bSizes ? TPostfixPtr::m_bSizes[cBase] : 0;
    if (nSize == 255) {
      // Variable-size tokens read their size from their first operand bytes.
      if ((cBase == CFormulaBase::tStr || cBase == CFormulaBase::tExtended) && nLeft < 1) break;
      if (cBase == CFormulaBase::tAttr && nLeft < 3) break;
      nSize = cur.SizeToken(cBase);
    }
    if (nSize > nLeft) {
      bAbort = true;
      break;
    }
    TPostfixPtr operands = cur;
    const int nValues = static_cast<int>(m_pVal - pEntry);
    switch (cBase) {
      case CFormulaBase::tAdd:
      case CFormulaBase::tSub:
      case CFormulaBase::tMul:
      case CFormulaBase::tDiv:
      case CFormulaBase::tPower:
      case CFormulaBase::tConcat:
      case CFormulaBase::tLT:
      case CFormulaBase::tLE:
      case CFormulaBase::tEQ:
      case CFormulaBase::tGE:
      case CFormulaBase::tGT:
      case CFormulaBase::tNE:
      case CFormulaBase::tIsect:
      case CFormulaBase::tList:
      case CFormulaBase::tRange: {
        const auto* pOp = static_cast<const TOpBinary*>(TOp::GetOp(cBase));
        if (nValues < 2 || pOp == nullptr) {
          bAbort = true;
          break;
        }
        if (!m_bCalcArray && m_ArrayOperands.empty())
          pOp->Evaluate(m_pVal - 1);
        else
          EvaluateOpWithArray(pOp, m_pVal - 1);
        --m_pVal;
        break;
      }
      case CFormulaBase::tUplus:
      case CFormulaBase::tUminus:
      case CFormulaBase::tPercent: {
        const auto* pOp = static_cast<const TOpUnary*>(TOp::GetOp(cBase));
        if (nValues < 1 || pOp == nullptr) {
          bAbort = true;
          break;
        }
        EvaluateOpWithArray(pOp, m_pVal);
        break;
      }
      case CFormulaBase::tParen:
        break;
      case CFormulaBase::tMissArg:
        Push()->Clear();
        break;
      case CFormulaBase::tStr: {
        const int nLen = operands.GetByte();
        char16_t szText[256];
        for (int i = 0; i < nLen; i++) szText[i] = static_cast<char16_t>(operands.GetWord());
        Push()->SetValue(szText, nLen);
        break;
      }
      case CFormulaBase::tAttr: {
        const unsigned char cFlags = operands.GetByte();
        if (cFlags & CFormulaBase::kAttrSum) {
          if (nValues < 1 || !EvaluateFunc(4, 1, true)) bAbort = true;
        }
        break;
      }
      case CFormulaBase::tErr:
        Push()->SetExcelError(operands.GetByte());
        break;
      case CFormulaBase::tBool:
        Push()->SetLogical(operands.GetByte() != 0);
        break;
      case CFormulaBase::tInt:
        Push()->SetValue(static_cast<double>(operands.GetWord()));
        break;
      case CFormulaBase::tNum:
        Push()->SetValue(operands.GetReal());
        break;
      case CFormulaBase::tArray:
        PushArray();
        break;
      case CFormulaBase::tFunc: {
        const int nFunc = operands.GetWord();
        const TFunc* pFunc = TFunc::GetFuncToEvaluate(static_cast<unsigned>(nFunc));
        if (pFunc == nullptr || !EvaluateFunc(nFunc, pFunc->GetMinArgs(), true)) bAbort = true;
        break;
      }
      case CFormulaBase::tFuncVar: {
        const int nArgs = operands.GetByte();
        const int nFunc = operands.GetWord() & 0x7FFF;
        if (!EvaluateFunc(nFunc, nArgs, true)) bAbort = true;
        break;
      }
      case CFormulaBase::tName:
        PushName(m_pBook, m_pSheet, operands.GetWord());
        break;
      case CFormulaBase::tNameX: {
        const int nExtern = static_cast<short>(operands.GetWord());
        PushNameX(nExtern, operands.GetWord());
        break;
      }
      case CFormulaBase::tRef:
      case CFormulaBase::tRefN:
        // A value-class reference to one cell that holds something is its value:
        // read it into the slot now rather than pushing the reference for the
        // consumer to read. An empty cell stays a reference (a function may tell an
        // omitted argument from an empty cell).
        if ((cCode & 0x60) == CFormulaBase::kClassValue && !m_bCalcArray &&
            PushCellValue(cBase, operands))
          break;
        PushRef(cBase, operands);
        break;
      case CFormulaBase::tArea:
      case CFormulaBase::tAreaN:
      case CFormulaBase::tRef3d:
      case CFormulaBase::tArea3d:
        PushRef(cBase, operands);
        break;
      case CFormulaBase::tRefErr:
      case CFormulaBase::tAreaErr:
      case CFormulaBase::tRefErr3d:
      case CFormulaBase::tAreaErr3d:
        Push()->SetError(TValue::errRef);
        break;
      case CFormulaBase::tMemArea:
      case CFormulaBase::tMemErr:
      case CFormulaBase::tMemNoMem:
      case CFormulaBase::tMemFunc:
      case CFormulaBase::tMemAreaN:
      case CFormulaBase::tMemNoMemN:
        // The sub-expression that follows is computed as it stands.
        break;
      case CFormulaBase::tExtended:
        PushExtended(operands);
        break;
      default:
        bAbort = true;
        break;
    }
    if (bAbort) break;
    if (!m_ArrayOperands.empty()) DropArrayOperands(m_pVal + 1);
    if (!m_bCalcArray && (cCode & 0x60) == CFormulaBase::kClassArray && IsOperandToken(cBase))
      m_ArrayOperands.push_back(m_pVal);
    if ((cBase == CFormulaBase::tMemArea || cBase == CFormulaBase::tExtended) &&
        !SkipAdded(cBase, cur))
      bAbort = true;
    cur.Skip(nSize);
  }
  if (bAbort) {
    // Whatever this formula pushed goes; the formula cannot be computed.
    DropTo(pEntry);
    Push()->SetError(TValue::errFormula);
  }
}

bool CFormulaEvaluator::SkipAdded(unsigned char cBase, TPostfixPtr operands) {
  const unsigned char* p = m_Added.Get();
  if (p == nullptr) return true;
  const long nLeft = m_pAddedEnd - p;
  switch (cBase) {
    case CFormulaBase::tArray:
      // PushArray has moved the cursor already.
      return true;
    case CFormulaBase::tMemArea: {
      if (nLeft < 2) return true;
      const long nBytes = 2 + 8L * (p[0] | (p[1] << 8));
      m_Added.Skip(static_cast<int>(std::min(nBytes, nLeft)));
      return nBytes <= nLeft;
    }
    case CFormulaBase::tExtended: {
      const unsigned char cSub = operands.Get()[0];
      if (cSub < 11 || cSub > 15 || nLeft < 4) return true;
      const long nCount =
          static_cast<long>(p[0] | (p[1] << 8) | (p[2] << 16)) | (static_cast<long>(p[3]) << 24);
      if (nCount < 0 || 4 + 4 * nCount > nLeft) return false;
      m_Added.Skip(static_cast<int>(4 + 4 * nCount));
      return true;
    }
    default:
      return true;
  }
}

// Array constant in the added data: columns - 1 (byte), rows - 1 (word), then the
// items row by row, each a type byte and its payload:
//   number: 8-byte double; string: 16-bit count and that many UTF-16 units;
//   logical, error: the flag or stored code in the first of 8 bytes; empty: 8 bytes.
void CFormulaEvaluator::PushArray() {
  TValue* pSlot = Push();
  const unsigned char* p = m_Added.Get();
  if (p == nullptr || m_pAddedEnd - p < 3) {
    pSlot->SetError(TValue::errFormula);
    return;
  }
  const int nCols = p[0] + 1;
  const int nRows = (p[1] | (p[2] << 8)) + 1;
  p += 3;
  pSlot->ResizeArray(nRows, nCols);
  for (int r = 0; r < nRows; r++) {
    for (int c = 0; c < nCols; c++) {
      if (p >= m_pAddedEnd) {
        pSlot->SetError(TValue::errFormula);
        m_Added = TPostfixPtr(const_cast<unsigned char*>(m_pAddedEnd));
        return;
      }
      const unsigned char cType = *p++;
      if (cType == CFormulaBase::kItemString) {
        if (m_pAddedEnd - p < 2) break;
        const int nLen = p[0] | (p[1] << 8);
        p += 2;
        if (m_pAddedEnd - p < 2L * nLen) break;
        std::u16string sText(static_cast<size_t>(nLen), u'\0');
        for (int i = 0; i < nLen; i++, p += 2) sText[i] = static_cast<char16_t>(p[0] | (p[1] << 8));
        pSlot->SetArrayString(r, c, sText.c_str(), nLen);
        continue;
      }
      if (m_pAddedEnd - p < 8) break;
      TPostfixPtr item(const_cast<unsigned char*>(p));
      switch (cType) {
        case CFormulaBase::kItemNumber:
          pSlot->SetArrayNumber(r, c, item.GetReal());
          break;
        case CFormulaBase::kItemBool:
          pSlot->SetArrayLogical(r, c, p[0] != 0);
          break;
        case CFormulaBase::kItemError:
          pSlot->SetArrayExcelError(r, c, p[0]);
          break;
        default:
          break;  // empty
      }
      p += 8;
    }
  }
  if (p > m_pAddedEnd || (!pSlot->IsArrayVal())) {
    pSlot->SetError(TValue::errFormula);
    p = m_pAddedEnd;
  }
  m_Added = TPostfixPtr(const_cast<unsigned char*>(p));
}

int CFormulaEvaluator::AbsRow(unsigned short wRow, unsigned short wColWord, bool bOffset) const {
  if (bOffset && (wColWord & CFormulaBase::kRowRelative)) return (wRow + m_Base.row) & 0xFFFF;
  return wRow;
}

int CFormulaEvaluator::AbsCol(unsigned short wColWord, bool bOffset) const {
  const int nCol = wColWord & 0xFF;
  if (bOffset && (wColWord & CFormulaBase::kColRelative)) return (nCol + m_Base.col) & 0xFF;
  return nCol;
}

bool CFormulaEvaluator::PushCellValue(unsigned char cBase, TPostfixPtr operands) {
  if (m_pSheet == nullptr) return false;
  const bool bOffset = m_bRelIsOffset || cBase == CFormulaBase::tRefN;
  const unsigned short wRow = operands.GetWord(), wCol = operands.GetWord();
  const CCell* pCell = GetValueCell(m_pSheet, AbsRow(wRow, wCol, bOffset), AbsCol(wCol, bOffset));
  if (pCell == nullptr || pCell->IsEmpty()) return false;
  if (pCell->IsReal())
    Push()->SetValue(pCell->GetReal());
  else
    pCell->GetValue(*Push());
  return true;
}

void CFormulaEvaluator::PushRef(unsigned char cBase, TPostfixPtr operands) {
  TValue* pSlot = Push();
  const bool b3d = cBase == CFormulaBase::tRef3d || cBase == CFormulaBase::tArea3d;
  const bool bArea = cBase == CFormulaBase::tArea || cBase == CFormulaBase::tAreaN ||
                     cBase == CFormulaBase::tArea3d;
  const bool bOffset =
      m_bRelIsOffset || cBase == CFormulaBase::tRefN || cBase == CFormulaBase::tAreaN;
  const int nExtern = b3d ? static_cast<short>(operands.GetWord()) : -1;
  int nRow1, nCol1, nRow2, nCol2;
  if (bArea) {
    const unsigned short wRow1 = operands.GetWord(), wRow2 = operands.GetWord();
    const unsigned short wCol1 = operands.GetWord(), wCol2 = operands.GetWord();
    nRow1 = AbsRow(wRow1, wCol1, bOffset);
    nRow2 = AbsRow(wRow2, wCol2, bOffset);
    nCol1 = AbsCol(wCol1, bOffset);
    nCol2 = AbsCol(wCol2, bOffset);
  } else {
    const unsigned short wRow = operands.GetWord(), wCol = operands.GetWord();
    nRow1 = nRow2 = AbsRow(wRow, wCol, bOffset);
    nCol1 = nCol2 = AbsCol(wCol, bOffset);
  }
  CSheetBase* pSheet = m_pSheet;
  if (b3d) {
    // The extern-sheet entry gives the book and the sheet span.
    const CExternSheet* pExtern = m_pBook ? m_pBook->GetExternSheet(nExtern) : nullptr;
    CSupBook* pSupBook = pExtern ? m_pBook->GetSupBook(pExtern->GetSupBook()) : nullptr;
    CBookBase* pBook = pSupBook == nullptr  ? nullptr
                       : pSupBook->IsSelf() ? m_pBook
                                            : pSupBook->GetSupDataBook();
    if (pBook == nullptr || pExtern->IsForNames()) {
      pSlot->SetError(TValue::errRef);
      return;
    }
    int nSheet1 = pExtern->GetFirstSheet(), nSheet2 = pExtern->GetLastSheet();
    if (!pSupBook->IsSelf()) {
      nSheet1 = pSupBook->CheckSheetIndex(nSheet1);
      nSheet2 = pSupBook->CheckSheetIndex(nSheet2);
    }
    if (nSheet1 < 0 || nSheet2 < 0 || pBook->SheetBase(nSheet1) == nullptr ||
        pBook->SheetBase(nSheet2) == nullptr) {
      pSlot->SetError(TValue::errRef);
      return;
    }
    if (nSheet1 != nSheet2) {
      pSlot->SetRange3d(pBook, std::min(nSheet1, nSheet2), nRow1, nCol1, std::max(nSheet1, nSheet2),
                        nRow2, nCol2);
      return;
    }
    pSheet = pBook->SheetBase(nSheet1);
  }
  if (bArea)
    pSlot->SetRange(pSheet, nRow1, nCol1, nRow2, nCol2);
  else
    pSlot->SetCell(pSheet, nRow1, nCol1);
}

// Label-relative references: a row or column of cells running from a label cell to
// the base cell's row or column.
void CFormulaEvaluator::PushExtended(TPostfixPtr operands) {
  TValue* pSlot = Push();
  const unsigned char cSub = operands.GetByte();
  switch (cSub) {
    case 2:
    case 3:
    case 6:
    case 7: {
      const int nRow = operands.GetWord();
      const int nCol = operands.GetWord() & 0xFF;
      if (cSub == 2)
        pSlot->SetRange(m_pSheet, nRow, std::min(nCol + 1, kMaxCol), nRow, m_Base.col);
      else if (cSub == 6)
        pSlot->SetCell(m_pSheet, nRow, m_Base.col);
      else if (cSub == 3)
        pSlot->SetRange(m_pSheet, std::min(nRow + 1, kMaxRow), nCol, m_Base.row, nCol);
      else
        pSlot->SetCell(m_pSheet, m_Base.row, nCol);
      return;
    }
    case 10: {
      operands.Skip(5);  // the label: row, column word, one byte
      const int nRow1 = operands.GetWord(), nRow2 = operands.GetWord();
      const int nCol1 = operands.GetWord() & 0xFF, nCol2 = operands.GetWord() & 0xFF;
      pSlot->SetRange(m_pSheet, nRow1, nCol1, nRow2, nCol2);
      return;
    }
    default:
      pSlot->SetError(TValue::errName);
      return;
  }
}

void CFormulaEvaluator::PushName(CBookBase* pBook, CSheetBase* pSheet, int nName) {
  CName* pName = pBook != nullptr ? pBook->GetName(nName) : nullptr;
  if (pName == nullptr) {
    Push()->SetError(TValue::errName);
    return;
  }
  // The nested evaluation leaves its result just above the top: the push.
  CFormulaEvaluator nested(pBook, pSheet, m_pCell, m_Base);
  TValue* pResult = pName->Evaluate(nested);
  if (pResult != m_pVal + 1) {
    Push()->SetError(TValue::errName);
    return;
  }
  Push();
}

void CFormulaEvaluator::PushNameX(int nExtern, int nName) {
  const CExternSheet* pExtern = m_pBook ? m_pBook->GetExternSheet(nExtern) : nullptr;
  CSupBook* pSupBook = pExtern ? m_pBook->GetSupBook(pExtern->GetSupBook()) : nullptr;
  if (pSupBook == nullptr) {
    Push()->SetError(TValue::errRef);
    return;
  }
  if (pSupBook->IsSelf()) {
    PushName(m_pBook, m_pSheet, nName);
    return;
  }
  const CExternName* pExternName = pSupBook->GetExternName(nName - 1);
  if (pExternName == nullptr) {
    Push()->SetError(TValue::errRef);
    return;
  }
  if (pSupBook->GetKind() & CSupBook::kKindAddIn) {
    // The callee of an external call (function 255): its name.
    Push()->SetValue(pExternName->GetName(), pExternName->GetNameLength());
    return;
  }
  CBookBase* pBook = pSupBook->GetSupDataBook();
  const int nIndex =
      pBook != nullptr
          ? pBook->FindName(pExternName->GetName(), pExternName->GetNameLength(), CName::kBookLevel)
          : 0;
  if (nIndex == 0) {
    Push()->SetError(TValue::errRef);
    return;
  }
  PushName(pBook, pBook->GetActiveSheet() ? pBook->GetActiveSheet() : pBook->SheetBase(0), nIndex);
}

// ---- Functions ------------------------------------------------------------------------

bool CFormulaEvaluator::EvaluateFunc(int nFunc, int nArgs, bool bSetFormat) {
  if (nFunc < 0 || nFunc >= kNumFuncSlots || nArgs < 0) return false;
  if (m_nNesting > 0 && nArgs > m_pVal - m_pEntry) return false;
  if (nFunc == kFuncExtern) return EvaluateExternCall(nArgs);
  TFunc* pFunc = TFunc::GetFuncToEvaluate(static_cast<unsigned>(nFunc));
  if (pFunc == nullptr || nArgs < pFunc->GetMinArgs() || nArgs > pFunc->GetMaxArgs()) return false;
  TValue* pArgs = m_pVal - nArgs + 1;
  const bool bOldSubtotal = m_bSubtotal, bOldSubA = m_bSubA;
  if (nFunc == 344 || nFunc == 368) {
    if (m_pCell != nullptr) m_pCell->SetState(CFormulaCell::stSubtotal);
    m_bSubtotal = true;
    m_bSubA = nFunc == 368;
  }
  if (m_bCalcArray && nArgs > 0)
    EvaluateFuncWithArray(pFunc, pArgs, nArgs);
  else
    CallFunc(pFunc, pArgs, nArgs);
  m_bSubtotal = bOldSubtotal;
  m_bSubA = bOldSubA;
  if (!m_ArrayOperands.empty()) DropArrayOperands(pArgs);
  DropTo(pArgs);
  if (bSetFormat && pFunc->GetValueFormat() != 0) m_nValFormat = pFunc->GetValueFormat();
  return true;
}

void CFormulaEvaluator::CallFunc(TFunc* pFunc, TValue* pArgs, int nArgs) {
  if (pFunc->IsVarArgs())
    pFunc->Evaluate(pArgs, nArgs, m_pCell);
  else
    pFunc->Evaluate(pArgs, m_pCell);
}

// Function 255: the first argument names the external function; the others are its
// arguments.
bool CFormulaEvaluator::EvaluateExternCall(int nArgs) {
  if (nArgs < 1) return false;
  TValue* pArgs = m_pVal - nArgs + 1;
  if (!pArgs[0].IsError()) {
    const char16_t* pwszName = pArgs[0].TextPtr();
    int nLen = 0;
    while (pwszName != nullptr && pwszName[nLen] != 0) nLen++;
    TExternFunc* pFunc = pwszName ? TExternFunc::FindFunc(pwszName, nLen, 1) : nullptr;
    if (pFunc == nullptr) {
      pArgs[0].SetError(TValue::errName);
    } else {
      pFunc->Evaluate(pArgs + 1, nArgs - 1, m_pCell);
      pArgs[0].CopyAndClearSource(pArgs[1]);
    }
  }
  DropArrayOperands(pArgs);
  DropTo(pArgs);
  return true;
}

void CFormulaEvaluator::EvaluateFuncWithArray(TFunc* pFunc, TValue* pArgs, int nArgs) {
  int nRows = 1, nCols = 1;
  std::vector<bool> expand(static_cast<size_t>(nArgs), false);
  for (int i = 0; i < nArgs; i++) {
    if (pFunc->GetArgClass(i) != TFuncInfo::tcDefault || ElementCount(pArgs[i]) < 2) continue;
    if (!pArgs[i].CheckArrayVal()) {
      pArgs[0].SetError(TValue::errValue);
      return;
    }
    expand[static_cast<size_t>(i)] = true;
    nRows = std::max(nRows, pArgs[i].Rows());
    nCols = std::max(nCols, pArgs[i].Cols());
  }
  if (nRows == 1 && nCols == 1) {
    CallFunc(pFunc, pArgs, nArgs);
    return;
  }
  TValue result;
  result.ResizeArray(nRows, nCols);
  std::vector<TValue> call(static_cast<size_t>(nArgs) + 1);
  for (int r = 0; r < nRows; r++) {
    for (int c = 0; c < nCols; c++) {
      for (int i = 0; i < nArgs; i++) {
        if (expand[static_cast<size_t>(i)])
          GetArrayValue(&pArgs[i], r, c, call[static_cast<size_t>(i)]);
        else
          call[static_cast<size_t>(i)] = pArgs[i];
      }
      CallFunc(pFunc, call.data(), nArgs);
      result.SetArrayValueAndClearSource(r, c, call[0]);
      for (TValue& val : call) val.Clear();
    }
  }
  pArgs[0].CopyAndClearSource(result);
}

// ---- Operators --------------------------------------------------------------------------

void CFormulaEvaluator::EvaluateOp(const TOpUnary* pOp, TValue* pArgs) { pOp->Evaluate(pArgs); }

void CFormulaEvaluator::EvaluateOp(const TOpBinary* pOp, TValue* pArgs) { pOp->Evaluate(pArgs); }

bool CFormulaEvaluator::IsArrayOperand(const TValue* pSlot) const {
  for (auto it = m_ArrayOperands.rbegin(); it != m_ArrayOperands.rend() && *it >= pSlot; ++it)
    if (*it == pSlot) return true;
  return false;
}

void CFormulaEvaluator::DropArrayOperands(const TValue* pFrom) {
  while (!m_ArrayOperands.empty() && m_ArrayOperands.back() >= pFrom) m_ArrayOperands.pop_back();
}

void CFormulaEvaluator::EvaluateOpWithArray(const TOpUnary* pOp, TValue* pArgs) {
  if (!m_bCalcArray && m_ArrayOperands.empty()) {
    pOp->Evaluate(pArgs);
    return;
  }
  const bool bArray = m_bCalcArray || IsArrayOperand(pArgs);
  if (!bArray || ElementCount(pArgs[0]) < 2) {
    pOp->Evaluate(pArgs);
    return;
  }
  if (!pArgs[0].CheckArrayVal()) return;
  const int nRows = pArgs[0].Rows(), nCols = pArgs[0].Cols();
  for (int r = 0; r < nRows; r++) {
    for (int c = 0; c < nCols; c++) pOp->Evaluate(pArgs[0].GetArrayValue(r, c));
  }
}

void CFormulaEvaluator::EvaluateOpWithArray(const TOpBinary* pOp, TValue* pArgs) {
  if (!m_bCalcArray && m_ArrayOperands.empty()) {
    pOp->Evaluate(pArgs);
    return;
  }
  const int nLeft = ElementCount(pArgs[0]), nRight = ElementCount(pArgs[1]);
  // An array-class operand makes the result one too, whatever its size.
  const bool bForced = IsArrayOperand(&pArgs[0]) || IsArrayOperand(&pArgs[1]);
  DropArrayOperands(pArgs);
  if ((!m_bCalcArray && !bForced) || IsRefOp(pOp) || nLeft == 0 || nRight == 0 ||
      nLeft + nRight < 3) {
    pOp->Evaluate(pArgs);
    if (bForced && !IsRefOp(pOp)) m_ArrayOperands.push_back(pArgs);
    return;
  }
  if (bForced) m_ArrayOperands.push_back(pArgs);
  if (!pArgs[0].CheckArrayVal() || !pArgs[1].CheckArrayVal()) {
    pArgs[0].SetError(TValue::errValue);
    pArgs[1].Clear();
    return;
  }
  const int nRows = std::max(pArgs[0].Rows(), pArgs[1].Rows());
  const int nCols = std::max(pArgs[0].Cols(), pArgs[1].Cols());
  TValue result;
  result.ResizeArray(nRows, nCols);
  TValue pair[2];
  for (int r = 0; r < nRows; r++) {
    for (int c = 0; c < nCols; c++) {
      GetArrayValue(&pArgs[0], r, c, pair[0]);
      GetArrayValue(&pArgs[1], r, c, pair[1]);
      // An element outside its operand is #N/A, and that error wins as any would.
      pOp->Evaluate(pair);
      result.SetArrayValueAndClearSource(r, c, pair[0]);
      pair[1].Clear();
    }
  }
  pArgs[0].CopyAndClearSource(result);
  pArgs[1].Clear();
}

void CFormulaEvaluator::GetArrayValue(const TValue* pVal, int nRow, int nCol, TValue& out) {
  if (!pVal->IsArrayVal()) {
    out = *pVal;
    return;
  }
  const int nRows = pVal->Rows(), nCols = pVal->Cols();
  const int r = nRows == 1 ? 0 : nRow;
  const int c = nCols == 1 ? 0 : nCol;
  const TValue* pElem = r < nRows && c < nCols ? pVal->GetArrayValue(r, c) : nullptr;
  if (pElem == nullptr) {
    out.SetError(TValue::errNA);
    return;
  }
  out = *pElem;
}

CCell* CFormulaEvaluator::GetValueCell(const CSheetBase* pSheet, int nRow, int nCol) {
  return pSheet != nullptr ? pSheet->Cell(nRow, nCol) : nullptr;
}
