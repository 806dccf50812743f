#include "formula/FormulaRefIterator.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "base/Cell.h"
#include "eval/FuncTable.h"

namespace {

using TPostfixPtr = CFormulaBase::TPostfixPtr;
using TRef = CFormulaRefIterator::TRef;

// Function numbers whose result is a reference found only when the formula runs.
constexpr unsigned short kFuncOffset = 78;
constexpr unsigned short kFuncIndirect = 148;

// What the walk does with a token, by its code with the class bits.
enum EStep : unsigned char {
  stPlain = 0,  // tells nothing: stepped over
  stRef,
  stRefN,
  stRef3d,
  stArea,
  stAreaN,
  stArea3d,
  stName,
  stNameX,
  stFunc,
  stFuncVar,
  stAttr,
  stStr,
  stExtended,
  stRunTime,  // tExp and tTbl
  stInvalid,  // no token has this code
};

struct TTokenInfo {
  unsigned char eStep;
  // Operand bytes; for tStr, tAttr and tExtended the least there can be.
  unsigned char nSize;
  // The size is not known from the code, or the token is invalid.
  unsigned char bVariable;
  // The token is reported whatever its operands (references, names, run-time data).
  unsigned char bReport;
  // Where a call's function number starts behind the code (tFunc 1, tFuncVar 2), else 0.
  unsigned char nFuncAt;
  // tAttr: the flag bits that make it reported (volatile) and sized by its operands
  // (choice); 0 for other tokens.
  unsigned char cVolatileBit, cChooseBit;
};

constexpr std::array<TTokenInfo, 256> MakeTokenInfo() {
  std::array<TTokenInfo, 256> a{};
  for (int c = 0; c < 256; c++) {
    // The class folding of CFormulaBase::TokenBase.
    const int nBase = c < 0x40 ? c : c < 0x60 ? c - 0x20 : c < 0x80 ? c - 0x40 : 0xFF;
    TTokenInfo& t = a[static_cast<size_t>(c)];
    if (nBase > CFormulaBase::tAreaErr3d || (nBase >= 0x30 && nBase <= 0x38)) {
      t.eStep = stInvalid;
      t.bVariable = 1;
      continue;
    }
    const unsigned char nFixed = TPostfixPtr::m_bSizes[nBase];
    t.nSize = nFixed != 255 ? nFixed : 0;
    t.bReport = 1;
    switch (nBase) {
      case CFormulaBase::tRef:
        t.eStep = stRef;
        break;
      case CFormulaBase::tRefN:
        t.eStep = stRefN;
        break;
      case CFormulaBase::tRef3d:
        t.eStep = stRef3d;
        break;
      case CFormulaBase::tArea:
        t.eStep = stArea;
        break;
      case CFormulaBase::tAreaN:
        t.eStep = stAreaN;
        break;
      case CFormulaBase::tArea3d:
        t.eStep = stArea3d;
        break;
      case CFormulaBase::tName:
        t.eStep = stName;
        break;
      case CFormulaBase::tNameX:
        t.eStep = stNameX;
        break;
      case CFormulaBase::tExp:
      case CFormulaBase::tTbl:
        t.eStep = stRunTime;
        break;
      case CFormulaBase::tFunc:
        t.eStep = stFunc;
        t.bReport = 0;
        t.nFuncAt = 1;
        break;
      case CFormulaBase::tFuncVar:  // argument count, then the number
        t.eStep = stFuncVar;
        t.bReport = 0;
        t.nFuncAt = 2;
        break;
      case CFormulaBase::tAttr:  // flags, data word[, jump offsets]
        t.eStep = stAttr;
        t.bReport = 0;
        t.nSize = 3;
        t.cVolatileBit = CFormulaBase::kAttrVolatile;
        t.cChooseBit = CFormulaBase::kAttrChoose;
        break;
      case CFormulaBase::tStr:  // count, units
        t.eStep = stStr;
        t.bReport = 0;
        t.nSize = 1;
        t.bVariable = 1;
        break;
      case CFormulaBase::tExtended:  // subtype, ...
        t.eStep = stExtended;
        t.nSize = 1;
        t.bVariable = 1;
        break;
      default:
        t.eStep = stPlain;
        t.bReport = 0;
        break;
    }
  }
  return a;
}
constexpr std::array<TTokenInfo, 256> kTokens = MakeTokenInfo();
static_assert(kTokens[CFormulaBase::tNum].nSize == 8 && kTokens[0x40 + 6].nSize == 6 &&
                  kTokens[0x30].eStep == stInvalid && kTokens[0x80].eStep == stInvalid,
              "plain tokens step over their operands; unknown codes are invalid");

// Bytes that must remain, from a token's code on, for the fast stretch of the walk
// to read the bytes that say what the token is: the code, tAttr's flags and a
// call's function number (behind tFuncVar's argument count).
constexpr ptrdiff_t kMargin = 4;
// Reporting tokens that the fast stretch gathers before it decodes them.
constexpr int kHitBatch = 64;

// What a call of a function number tells the walk.
enum EFuncKind : unsigned char { fkPlain = 0, fkVolatile = 1, fkUntrackable = 2 };

// The kinds by function number; one more entry (plain) stands for every number
// beyond the table. Filled when the library is loaded: the function table is a
// constant, ready before any initialisation runs.
std::array<EFuncKind, kNumFuncSlots + 1> MakeFuncKinds() {
  std::array<EFuncKind, kNumFuncSlots + 1> a{};
  for (unsigned n = 0; n < kNumFuncSlots; n++) {
    const TFuncInfo* pInfo = GetFuncInfo(n);
    if (n == kFuncOffset || n == kFuncIndirect || n == kFuncExtern || n == kFuncAddIn)
      a[n] = fkUntrackable;
    else if (pInfo && pInfo->bVolatile)
      a[n] = fkVolatile;
  }
  return a;
}
const std::array<EFuncKind, kNumFuncSlots + 1> kFuncKinds = MakeFuncKinds();

unsigned short Word(const unsigned char* p) {
  return static_cast<unsigned short>(p[0] | p[1] << 8);
}

unsigned FuncNumber(const unsigned char* pCode, const TTokenInfo& info) {
  const unsigned nFunc = Word(pCode + info.nFuncAt) & 0x7FFFu;
  return nFunc < kNumFuncSlots ? nFunc : kNumFuncSlots;
}

}  // namespace

CFormulaRefIterator::CFormulaRefIterator(CBookBase* pBook, CSheetBase* pSheet, CFormula* pFormula,
                                         EFormulaType type, const TCell& base)
    : CFormulaIterator(pBook, pSheet, pFormula, type, base) {}

void CFormulaRefIterator::Reset(CSheetBase* pSheet, CFormula* pFormula, EFormulaType type, int nRow,
                                int nCol) {
  // What CFormulaIterator::Set does, without the virtual type setter: this walk
  // only needs the offset rule.
  m_pSheet = pSheet;
  m_pFormula = pFormula;
  m_nFormulaType = type;
  m_bRelRCIsOffset = IsOffsetType(type);
  m_Base.row = nRow;
  m_Base.col = nCol;
  m_Cur = pFormula ? pFormula->GetPostfix() : nullptr;
  m_End = pFormula ? pFormula->GetPostfix() + pFormula->GetPostfixLen() : nullptr;
  m_Added = pFormula ? pFormula->GetAddedData() : nullptr;
  m_cToken = m_cTokenCode = 0;
}

// Inline: Next is its only caller, and a member of an exported class is otherwise
// called through its symbol.
inline void CFormulaRefIterator::Decode(const unsigned char* pCode, TRef& ref) const {
  const TTokenInfo& info = kTokens[*pCode];
  const unsigned char* op = pCode + 1;
  const unsigned char eStep = info.eStep;
  // References first, and without a jump table: they are most of the reports.
  if (eStep >= stRef && eStep <= stArea3d) {
    const bool b3d = eStep == stRef3d || eStep == stArea3d;
    const bool bCell = eStep <= stRef3d;
    const bool bOffset = m_bRelRCIsOffset || eStep == stRefN || eStep == stAreaN;
    ref.nExternSheet = b3d ? static_cast<short>(Word(op)) : -1;
    if (b3d) op += 2;
    // Cell: row, column word; area: first row, last row, first and last column words.
    const unsigned short wRow1 = Word(op);
    const unsigned short wRow2 = bCell ? wRow1 : Word(op + 2);
    const unsigned short wCol1 = Word(bCell ? op + 2 : op + 4);
    const unsigned short wCol2 = bCell ? wCol1 : Word(op + 6);
    auto Row = [&](unsigned short wRow, unsigned short wColWord) {
      return bOffset && (wColWord & kRowRelative) ? (m_Base.row + wRow) & kMaxRow : int{wRow};
    };
    auto Col = [&](unsigned short wColWord) {
      const int nCol = wColWord & 0xFF;
      return bOffset && (wColWord & kColRelative) ? (m_Base.col + nCol) & kMaxCol : nCol;
    };
    const int nRow1 = Row(wRow1, wCol1), nRow2 = Row(wRow2, wCol2);
    const int nCol1 = Col(wCol1), nCol2 = Col(wCol2);
    ref.eKind = TRef::rkArea;
    ref.nRow1 = std::min(nRow1, nRow2);
    ref.nRow2 = std::max(nRow1, nRow2);
    ref.nCol1 = std::min(nCol1, nCol2);
    ref.nCol2 = std::max(nCol1, nCol2);
    ref.nName = 0;
    return;
  }
  ref = TRef();
  switch (eStep) {
    case stName:
      ref.eKind = TRef::rkName;
      ref.nName = Word(op);
      return;
    case stNameX:
      ref.eKind = TRef::rkNameX;
      ref.nExternSheet = static_cast<short>(Word(op));
      ref.nName = Word(op + 2);
      return;
    case stFunc:
    case stFuncVar:
      ref.eKind = kFuncKinds[FuncNumber(pCode, info)] == fkVolatile ? TRef::rkVolatile
                                                                    : TRef::rkUntrackable;
      return;
    case stAttr:
      ref.eKind = TRef::rkVolatile;
      return;
    default:  // tExp, tTbl, tExtended, and what cannot be read
      ref.eKind = TRef::rkUntrackable;
      return;
  }
}

int CFormulaRefIterator::Next(TRef* pRefs, int nMax) {
  const unsigned char* q = m_Cur.Get();
  const unsigned char* const qEnd = m_End.Get();
  const EFuncKind* const pFuncKinds = kFuncKinds.data();
  int n = 0;
  // One token with every size checked. Operand bytes must lie inside the stream;
  // the bytes that give a size must be there too. False when the walk has ended at
  // a token that runs past the end of the stream or has no known code: untrackable
  // is reported.
  auto Step = [&]() {
    const unsigned char* const pCode = q++;
    const TTokenInfo& info = kTokens[*pCode];
    const size_t nLeft = static_cast<size_t>(qEnd - q);
    size_t nSize = info.nSize;
    bool bReport = info.bReport;
    bool bTruncated = false;
    if (info.bVariable | info.cChooseBit) {
      switch (info.eStep) {
        case stAttr:
          // Flags, data word, and with the choice flag data + 1 jump offsets. Keep
          // in step with TPostfixPtr::SizeVariableToken, as the two sizes below.
          bTruncated = nLeft < 3;
          if (bTruncated) break;
          if (q[0] & kAttrChoose) nSize = 5 + 2 * static_cast<size_t>(Word(q + 1));
          bReport = (q[0] & kAttrVolatile) != 0;
          break;
        case stStr:
          bTruncated = nLeft < 1;
          if (!bTruncated) nSize = 1 + 2 * static_cast<size_t>(q[0]);
          break;
        case stExtended:
          bTruncated = nLeft < 1;
          if (!bTruncated) nSize = (q[0] == 10 || q[0] == 11) ? 14 : 5;
          break;
        default:  // no token has this code
          bTruncated = true;
          break;
      }
    }
    if (bTruncated || nSize > nLeft) {
      m_Cur = m_End;
      pRefs[n] = TRef();
      pRefs[n++].eKind = TRef::rkUntrackable;
      return false;
    }
    if (info.nFuncAt != 0) bReport = pFuncKinds[FuncNumber(pCode, info)] != fkPlain;
    if (bReport) Decode(pCode, pRefs[n++]);
    q += nSize;
    return true;
  };
  const unsigned char* apHits[kHitBatch];
  for (;;) {
    // The fast stretch: steps over fixed-size tokens without branching on their
    // kinds (the kinds of a formula's tokens follow no pattern a branch predictor
    // could learn) and notes the reporting ones, to be decoded after. It stops at a
    // variable-size or invalid token, and near the end of the stream.
    const int nHitMax = std::min(nMax - n, kHitBatch);
    int nHits = 0;
    while (qEnd - q >= kMargin && nHits < nHitMax) {
      const TTokenInfo& info = kTokens[*q];
      const ptrdiff_t nStep = 1 + info.nSize;
      if ((info.bVariable | (q[1] & info.cChooseBit)) || nStep > qEnd - q) break;
      const bool bReport = info.bReport | (q[1] & info.cVolatileBit) |
                           ((info.nFuncAt != 0) & (pFuncKinds[FuncNumber(q, info)] != fkPlain));
      apHits[nHits] = q;
      nHits += bReport;
      q += nStep;
    }
    for (int i = 0; i < nHits; i++) Decode(apHits[i], pRefs[n++]);
    if (q == qEnd) {
      m_Cur = m_End;
      return n;
    }
    if (n == nMax) {
      m_Cur = const_cast<unsigned char*>(q);
      return n;
    }
    if (nHits < nHitMax && !Step()) return n;
  }
}
