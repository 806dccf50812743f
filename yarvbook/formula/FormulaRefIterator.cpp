#include "formula/FormulaRefIterator.h"

#include <utility>

#include "base/Cell.h"
#include "eval/FuncTable.h"

namespace {

// Function numbers whose result is a reference found only when the formula runs.
constexpr unsigned short kFuncOffset = 78;
constexpr unsigned short kFuncIndirect = 148;

}  // namespace

CFormulaRefIterator::CFormulaRefIterator(CBookBase* pBook, CSheetBase* pSheet, CFormula* pFormula,
                                         EFormulaType type, const TCell& base)
    : CFormulaIterator(pBook, pSheet, pFormula, type, base) {}

int CFormulaRefIterator::AbsRow(unsigned short wRow, unsigned short wColWord, bool bOffset) const {
  if (bOffset && (wColWord & kRowRelative)) return (m_Base.row + wRow) & kMaxRow;
  return wRow;
}

int CFormulaRefIterator::AbsCol(unsigned short wColWord, bool bOffset) const {
  const int nCol = wColWord & 0xFF;
  if (bOffset && (wColWord & kColRelative)) return (m_Base.col + nCol) & kMaxCol;
  return nCol;
}

bool CFormulaRefIterator::Next(TRef& ref) {
  bool bTruncated = false;
  while (!AtEnd()) {
    const unsigned char cBase = TokenBase(*m_Cur.Get());
    m_Cur.Skip(1);
    if (cBase == tInvalid || (cBase >= 0x30 && cBase <= 0x38) || cBase > tAreaErr3d) {
      m_Cur = m_End;
      ref = TRef();
      ref.eKind = TRef::rkUntrackable;
      return true;
    }
    // Operand bytes must lie inside the stream; the sizes of tStr, tAttr and
    // tExtended are read from their first operand bytes, which must be there too.
    const int nLeft = m_End - m_Cur;
    bTruncated =
        ((cBase == tStr || cBase == tExtended) && nLeft < 1) || (cBase == tAttr && nLeft < 3);
    if (bTruncated) break;
    const int nSize = m_Cur.SizeToken(cBase);
    bTruncated = nSize > nLeft;
    if (bTruncated) break;
    TPostfixPtr op = m_Cur;
    m_Cur.Skip(nSize);
    switch (cBase) {
      case tRef:
      case tRefN:
      case tRef3d: {
        ref = TRef();
        ref.eKind = TRef::rkArea;
        if (cBase == tRef3d) ref.nExternSheet = static_cast<short>(op.GetWord());
        const bool bOffset = m_bRelRCIsOffset || cBase == tRefN;
        const unsigned short wRow = op.GetWord();
        const unsigned short wCol = op.GetWord();
        ref.nRow1 = ref.nRow2 = AbsRow(wRow, wCol, bOffset);
        ref.nCol1 = ref.nCol2 = AbsCol(wCol, bOffset);
        return true;
      }
      case tArea:
      case tAreaN:
      case tArea3d: {
        ref = TRef();
        ref.eKind = TRef::rkArea;
        if (cBase == tArea3d) ref.nExternSheet = static_cast<short>(op.GetWord());
        const bool bOffset = m_bRelRCIsOffset || cBase == tAreaN;
        const unsigned short wRow1 = op.GetWord();
        const unsigned short wRow2 = op.GetWord();
        const unsigned short wCol1 = op.GetWord();
        const unsigned short wCol2 = op.GetWord();
        ref.nRow1 = AbsRow(wRow1, wCol1, bOffset);
        ref.nRow2 = AbsRow(wRow2, wCol2, bOffset);
        ref.nCol1 = AbsCol(wCol1, bOffset);
        ref.nCol2 = AbsCol(wCol2, bOffset);
        if (ref.nRow1 > ref.nRow2) std::swap(ref.nRow1, ref.nRow2);
        if (ref.nCol1 > ref.nCol2) std::swap(ref.nCol1, ref.nCol2);
        return true;
      }
      case tName:
        ref = TRef();
        ref.eKind = TRef::rkName;
        ref.nName = op.GetWord();
        return true;
      case tNameX:
        ref = TRef();
        ref.eKind = TRef::rkNameX;
        ref.nExternSheet = static_cast<short>(op.GetWord());
        ref.nName = op.GetWord();
        return true;
      case tAttr:
        if (op.GetByte() & kAttrVolatile) {
          ref = TRef();
          ref.eKind = TRef::rkVolatile;
          return true;
        }
        break;
      case tFunc:
      case tFuncVar: {
        if (cBase == tFuncVar) op.Skip(1);
        const unsigned short nFunc = op.GetWord() & 0x7FFF;
        const TFuncInfo* pInfo = GetFuncInfo(nFunc);
        ref = TRef();
        if (nFunc == kFuncOffset || nFunc == kFuncIndirect || nFunc == kFuncExtern ||
            nFunc == kFuncAddIn) {
          ref.eKind = TRef::rkUntrackable;
          return true;
        }
        if (pInfo && pInfo->bVolatile) {
          ref.eKind = TRef::rkVolatile;
          return true;
        }
        break;
      }
      case tExp:
      case tTbl:
      case tExtended:
        ref = TRef();
        ref.eKind = TRef::rkUntrackable;
        return true;
      default:
        break;
    }
  }
  if (bTruncated) {
    // A token runs past the end of the stream.
    m_Cur = m_End;
    ref = TRef();
    ref.eKind = TRef::rkUntrackable;
    return true;
  }
  return false;
}
