#include "formula/FormulaUnparserBase.h"

#include <cstring>
#include <iterator>

#include "book/BookBase.h"
#include "book/CellRecord.h"
#include "book/Name.h"
#include "book/SheetBase.h"
#include "eval/Func.h"
#include "eval/Value.h"
#include "extern/ExternName.h"
#include "extern/ExternSheet.h"
#include "extern/SupBook.h"
#include "extern/SupSheet.h"
#include "formula/Formula.h"
#include "platform/Locale.h"
#include "platform/ResourceIds.h"
#include "platform/Resources.h"

namespace {

enum EOpKind : unsigned char { okBinary, okPrefix, okPostfix };

struct TOpText {
  unsigned char cToken;
  unsigned nResId;  // 0: the list separator
  EOpKind nKind;
};

// Operator tokens and the resource texts they are written with; the parser matches the
// same texts. Union is the list separator, not a resource.
constexpr TOpText kOpTexts[] = {
    {CFormulaBase::tAdd, IDS_OP_ADD, okBinary},
    {CFormulaBase::tSub, IDS_OP_SUB, okBinary},
    {CFormulaBase::tMul, IDS_OP_MUL, okBinary},
    {CFormulaBase::tDiv, IDS_OP_DIV, okBinary},
    {CFormulaBase::tPower, IDS_OP_POWER, okBinary},
    {CFormulaBase::tConcat, IDS_OP_CONCAT, okBinary},
    {CFormulaBase::tLT, IDS_OP_LT, okBinary},
    {CFormulaBase::tLE, IDS_OP_LE, okBinary},
    {CFormulaBase::tEQ, IDS_OP_EQ, okBinary},
    {CFormulaBase::tGE, IDS_OP_GE, okBinary},
    {CFormulaBase::tGT, IDS_OP_GT, okBinary},
    {CFormulaBase::tNE, IDS_OP_NE, okBinary},
    {CFormulaBase::tIsect, IDS_OP_INTERSECTION, okBinary},
    {CFormulaBase::tList, 0, okBinary},
    {CFormulaBase::tRange, IDS_OP_RANGE, okBinary},
    {CFormulaBase::tUplus, IDS_OP_UPLUS, okPrefix},
    {CFormulaBase::tUminus, IDS_OP_UMINUS, okPrefix},
    {CFormulaBase::tPercent, IDS_OP_PERCENT, okPostfix},
};
static_assert(std::size(kOpTexts) == CFormulaBase::tPercent - CFormulaBase::tAdd + 1,
              "one text per operator token");

// Texts of the BIFF8 error codes; any other code reads as #N/A. Keep in step with the
// parser's error literals.
const char16_t* ErrorText(unsigned char cCode) {
  switch (cCode) {
    case 0x00:
      return u"#NULL!";
    case 0x07:
      return u"#DIV/0!";
    case 0x0F:
      return u"#VALUE!";
    case 0x17:
      return u"#REF!";
    case 0x1D:
      return u"#NAME?";
    case 0x24:
      return u"#NUM!";
    default:
      return u"#N/A";
  }
}

unsigned short ReadWord(const unsigned char* p) {
  return static_cast<unsigned short>(p[0] | (p[1] << 8));
}

unsigned ReadDWord(const unsigned char* p) {
  return static_cast<unsigned>(p[0]) | (static_cast<unsigned>(p[1]) << 8) |
         (static_cast<unsigned>(p[2]) << 16) | (static_cast<unsigned>(p[3]) << 24);
}

double ReadReal(const unsigned char* p) {
  double r;
  std::memcpy(&r, p, sizeof r);
  return r;
}

// Appends nCount little-endian UTF-16 units from p with every double quote doubled,
// between double quotes.
void AppendQuotedUnits(std::u16string& s, const unsigned char* p, int nCount) {
  s += u'"';
  for (int i = 0; i < nCount; ++i) {
    const char16_t c = static_cast<char16_t>(ReadWord(p + 2 * i));
    s += c;
    if (c == u'"') s += c;
  }
  s += u'"';
}

// Operand bytes behind each base code that has a fixed size; -1 where the size
// depends on the operands or the unparser does not know the token.
int FixedSize(unsigned char cBase) {
  switch (cBase) {
    case CFormulaBase::tErr:
    case CFormulaBase::tBool:
      return 1;
    case CFormulaBase::tInt:
    case CFormulaBase::tFunc:
    case CFormulaBase::tMemFunc:
    case CFormulaBase::tMemAreaN:
    case CFormulaBase::tMemNoMemN:
      return 2;
    case CFormulaBase::tFuncVar:
      return 3;
    case CFormulaBase::tName:
    case CFormulaBase::tRef:
    case CFormulaBase::tRefErr:
    case CFormulaBase::tRefN:
    case CFormulaBase::tLegacy1B:
      return 4;
    case CFormulaBase::tMemArea:
    case CFormulaBase::tMemErr:
    case CFormulaBase::tMemNoMem:
    case CFormulaBase::tNameX:
    case CFormulaBase::tRef3d:
    case CFormulaBase::tRefErr3d:
      return 6;
    case CFormulaBase::tArray:
      return 7;
    case CFormulaBase::tNum:
    case CFormulaBase::tArea:
    case CFormulaBase::tAreaErr:
    case CFormulaBase::tAreaN:
      return 8;
    case CFormulaBase::tArea3d:
    case CFormulaBase::tAreaErr3d:
    case CFormulaBase::tLegacy1A:
      return 10;
    default:
      return -1;
  }
}

}  // namespace

CFormulaUnparserBase::CFormulaUnparserBase(CBookBase* pBook, CSheetBase* pSheet, CFormula* pFormula,
                                           EFormulaType type, const TCell& base, int nParseType)
    : CFormulaIterator(pBook, pSheet, pFormula, type, base), m_nParseType(nParseType) {}

CFormulaUnparserBase::CFormulaUnparserBase(CBookBase* pBook, CSheetBase* pSheet, CFormula* pFormula,
                                           EFormulaType type, int nRow, int nCol, int nParseType)
    : CFormulaIterator(pBook, pSheet, pFormula, type, nRow, nCol), m_nParseType(nParseType) {}

const std::u16string& CFormulaUnparserBase::GetUnknownFunctionFormat() {
  static unsigned s_nGeneration = ~0u;
  static std::u16string s_strUnknownFunction;
  if (s_nGeneration != GetResourceGeneration()) {
    const char16_t* pwsz = LoadResourceString(IDS_UNPARSE_UNKNOWN_FUNCTION);
    s_strUnknownFunction = pwsz ? pwsz : u"%d";
    s_nGeneration = GetResourceGeneration();
  }
  return s_strUnknownFunction;
}

const std::u16string& CFormulaUnparserBase::GetUnparserFailure() {
  static unsigned s_nGeneration = ~0u;
  static std::u16string s_strUnparserFailure;
  if (s_nGeneration != GetResourceGeneration()) {
    const char16_t* pwsz = LoadResourceString(IDS_UNPARSE_FAILURE);
    s_strUnparserFailure = pwsz ? pwsz : u"";
    s_nGeneration = GetResourceGeneration();
  }
  return s_strUnparserFailure;
}

// ---- Book and function lookups -----------------------------------------------------

bool CFormulaUnparserBase::GetFunction(int nFunc, std::u16string* pName, int* pnArgs) {
  const TFunc* pFunc = TFunc::GetFunc(static_cast<unsigned>(nFunc));
  if (pFunc == nullptr) return false;
  const char16_t* pwszName = pFunc->GetName(m_nParseType);
  *pName = pwszName ? pwszName : u"";
  *pnArgs = pFunc->GetMinArgs();
  return true;
}

bool CFormulaUnparserBase::GetSheetName(int nSheet, std::u16string* pName) {
  pName->clear();
  const CSheetBase* pSheet = m_pBook ? m_pBook->SheetBase(nSheet) : nullptr;
  if (pSheet == nullptr) return false;
  *pName = pSheet->GetSheetName();
  return true;
}

bool CFormulaUnparserBase::GetExternSheet(int nIndex, TExternPrefix* pPrefix) {
  const CExternSheet* pExtern = m_pBook ? m_pBook->GetExternSheet(nIndex) : nullptr;
  const CSupBook* pSupBook = pExtern ? m_pBook->GetSupBook(pExtern->GetSupBook()) : nullptr;
  if (pSupBook == nullptr) return false;
  *pPrefix = TExternPrefix{};
  pPrefix->bOtherBook = !pSupBook->IsSelf();
  if (pPrefix->bOtherBook) pPrefix->sBook = pSupBook->GetFullTitle();
  if (pExtern->IsForNames()) {
    pPrefix->bBookOnly = true;
    return pPrefix->bOtherBook;
  }
  // Sheets of this book or of an open book by their numbers, of a closed book by its
  // supporting book's sheet list.
  const CBookBase* pBook = pSupBook->IsSelf() ? m_pBook : pSupBook->GetRefBook();
  auto sheetName = [&](int nSheet, std::u16string* pName) {
    if (pBook != nullptr) {
      const CSheetBase* pSheet = pBook->SheetBase(nSheet);
      if (pSheet == nullptr) return false;
      *pName = pSheet->GetSheetName();
      return true;
    }
    const CSupSheet* pSupSheet = pSupBook->GetSheet(nSheet);
    if (pSupSheet == nullptr) return false;
    *pName = pSupSheet->GetSheetName();
    return true;
  };
  if (!sheetName(pExtern->GetFirstSheet(), &pPrefix->sSheet1)) return false;
  if (pExtern->GetLastSheet() != pExtern->GetFirstSheet() &&
      !sheetName(pExtern->GetLastSheet(), &pPrefix->sSheet2)) {
    return false;
  }
  return true;
}

bool CFormulaUnparserBase::GetNameText(int nIndex, std::u16string* pName, std::u16string* pSheet) {
  const CName* pDefined = m_pBook ? m_pBook->GetName(nIndex) : nullptr;
  if (pDefined == nullptr) return false;
  *pName = pDefined->GetName();
  pSheet->clear();
  const int nSheet = pDefined->GetSheet();
  if (nSheet != CName::kBookLevel && (m_pSheet == nullptr || nSheet != m_pSheet->GetSheetIndex())) {
    if (const CSheetBase* pOwner = m_pBook->SheetBase(nSheet)) *pSheet = pOwner->GetSheetName();
  }
  return true;
}

bool CFormulaUnparserBase::GetExternNameText(int nExternSheet, int nName, std::u16string* pName) {
  const CExternSheet* pExtern = m_pBook ? m_pBook->GetExternSheet(nExternSheet) : nullptr;
  const CSupBook* pSupBook = pExtern ? m_pBook->GetSupBook(pExtern->GetSupBook()) : nullptr;
  if (pSupBook == nullptr) return false;
  if (pSupBook->IsSelf()) {
    std::u16string sSheet;
    return GetNameText(nName, pName, &sSheet);
  }
  const CExternName* pExternName = pSupBook->GetExternName(nName - 1);
  if (pExternName == nullptr) return false;
  *pName = pExternName->GetName();
  return true;
}

bool CFormulaUnparserBase::GetLabelText(int nRow, int nCol, std::u16string* pText) {
  const CCell* pCell = m_pSheet ? m_pSheet->Cell(nRow, nCol) : nullptr;
  if (pCell == nullptr || !(pCell->IsText() || pCell->IsReal())) return false;
  pText->clear();
  pCell->GetValue().GetValue(*pText);
  return true;
}

std::u16string CFormulaUnparserBase::GetBoolText(bool b) const {
  if (!IsEnglish()) {
    const char16_t* pwsz = LoadResourceString(b ? IDS_FN_TRUE : IDS_FN_FALSE);
    if (pwsz != nullptr && pwsz[0] != 0) return pwsz;
  }
  return b ? u"TRUE" : u"FALSE";
}

char16_t CFormulaUnparserBase::GetArgSeparator() const {
  return IsEnglish() ? u',' : GetLocaleSettings().cList;
}

char16_t CFormulaUnparserBase::GetDecimal() const {
  return IsEnglish() ? u'.' : GetLocaleSettings().cDecimal;
}

// ---- Fragments ---------------------------------------------------------------------

void CFormulaUnparserBase::Reset() {
  m_sArena.clear();
  m_Pieces.clear();
  m_Stack.clear();
  m_nUnknownFunc = -1;
  m_pAddedPos = m_pAddedEnd = nullptr;
  if (m_pFormula != nullptr) {
    Set(m_pSheet, m_pFormula, m_nFormulaType, m_Base);
    m_pAddedPos = m_pFormula->GetAddedData();
    m_pAddedEnd = m_pAddedPos ? m_pAddedPos + m_pFormula->GetAddedDataLen() : nullptr;
  }
}

int CFormulaUnparserBase::NewPiece(const char16_t* p, int nLen) {
  const int nStart = static_cast<int>(m_sArena.size());
  m_sArena.append(p, static_cast<size_t>(nLen));
  return NewPieceFromArena(nStart);
}

int CFormulaUnparserBase::NewPieceFromArena(int nStart) {
  m_Pieces.push_back({nStart, static_cast<int>(m_sArena.size()) - nStart, -1});
  return static_cast<int>(m_Pieces.size()) - 1;
}

void CFormulaUnparserBase::Push(int nPiece) { m_Stack.push_back({nPiece, nPiece}); }

// Numbers on both sides of the range operator ("1:1") would read back as a whole-row
// reference, so a number counts as a reference edge for the operator's spacing.
void CFormulaUnparserBase::PushNumber(int nPiece) {
  Push(nPiece);
  m_Stack.back().bStartsWithRef = m_Stack.back().bEndsWithCell = true;
}

void CFormulaUnparserBase::PushText(const std::u16string& s) {
  Push(NewPiece(s.data(), static_cast<int>(s.size())));
}

void CFormulaUnparserBase::Append(TFragment& f, int nPiece) {
  if (f.nHead < 0) {
    f.nHead = f.nTail = nPiece;
    return;
  }
  m_Pieces[f.nTail].nNext = nPiece;
  f.nTail = nPiece;
}

void CFormulaUnparserBase::Prepend(TFragment& f, int nPiece) {
  if (f.nHead < 0) {
    f.nHead = f.nTail = nPiece;
    return;
  }
  m_Pieces[nPiece].nNext = f.nHead;
  f.nHead = nPiece;
}

void CFormulaUnparserBase::AppendFragment(TFragment& f, const TFragment& g) {
  if (g.nHead < 0) return;
  if (f.nHead < 0) {
    f = g;
    return;
  }
  m_Pieces[f.nTail].nNext = g.nHead;
  f.nTail = g.nTail;
}

// ---- The walk ----------------------------------------------------------------------

std::u16string CFormulaUnparserBase::Unparse() {
  std::u16string s;
  Unparse(s);
  return s;
}

void CFormulaUnparserBase::Fail(const std::u16string& sMessage, std::u16string& out) {
  out = sMessage;
  m_Stack.clear();
}

bool CFormulaUnparserBase::Unparse(std::u16string& out) {
  out.clear();
  Reset();
  if (AtEnd()) return true;  // no formula, no text
  bool bOk = true;
  while (bOk && !AtEnd()) {
    const unsigned char cBase = GetToken();
    const unsigned char* p = m_Cur.Get();
    const int nAvail = static_cast<int>(m_End.Get() - p);
    int nSize = FixedSize(cBase);
    // Tokens whose size the leading operand bytes give.
    if (cBase == tStr) {
      nSize = nAvail >= 1 ? 1 + 2 * p[0] : 1;
    } else if (cBase == tAttr) {
      nSize = nAvail >= 3 && (p[0] & kAttrChoose) ? 5 + 2 * ReadWord(p + 1) : 3;
    } else if (cBase == tExtended) {
      nSize = nAvail >= 1 && (p[0] == 10 || p[0] == 11) ? 14 : 5;
    } else if (cBase == tParen || cBase == tMissArg || (cBase >= tAdd && cBase <= tPercent)) {
      nSize = 0;
    }
    if (nSize < 0 || nSize > nAvail) {
      bOk = false;
      break;
    }
    m_Cur = const_cast<unsigned char*>(p + nSize);

    switch (cBase) {
      case tParen: {
        if (m_Stack.empty()) {
          bOk = false;
          break;
        }
        TFragment& f = m_Stack.back();
        Prepend(f, NewPiece(u"(", 1));
        Append(f, NewPiece(u")", 1));
        f.bStartsWithRef = f.bEndsWithCell = f.bStartsWithPrefix = false;
        break;
      }
      case tMissArg:
        m_Stack.push_back({-1, -1});
        break;
      case tStr: {
        const int nStart = static_cast<int>(m_sArena.size());
        AppendQuotedUnits(m_sArena, p + 1, p[0]);
        Push(NewPieceFromArena(nStart));
        break;
      }
      case tExtended:
        bOk = DoExtended(p);
        break;
      case tAttr:
        if (p[0] & kAttrSum) bOk = DoFunction(4, 1, false);
        break;
      case tLegacy1A:
      case tLegacy1B:
        break;  // never written; stepped over
      case tErr:
        PushText(ErrorText(p[0]));
        break;
      case tBool:
        PushText(GetBoolText(p[0] != 0));
        break;
      case tInt: {
        const int nStart = static_cast<int>(m_sArena.size());
        unsigned nValue = ReadWord(p);
        char16_t acDigits[6];
        int nDigits = 0;
        do {
          acDigits[nDigits++] = static_cast<char16_t>(u'0' + nValue % 10);
          nValue /= 10;
        } while (nValue != 0);
        while (nDigits > 0) m_sArena += acDigits[--nDigits];
        PushNumber(NewPieceFromArena(nStart));
        break;
      }
      case tNum: {
        const int nStart = static_cast<int>(m_sArena.size());
        FormatNumber(m_sArena, ReadReal(p), GetDecimal());
        PushNumber(NewPieceFromArena(nStart));
        break;
      }
      case tArray:
        bOk = DoArray();
        break;
      case tFunc:
        bOk = DoFunction(ReadWord(p), 0, true);
        break;
      case tFuncVar:
        bOk = DoFunction(ReadWord(p + 1), p[0], false);
        break;
      case tName: {
        std::u16string sName, sSheet;
        if (!GetNameText(ReadWord(p), &sName, &sSheet)) {
          PushText(u"#NAME?");
          break;
        }
        std::u16string s;
        if (!sSheet.empty()) Concat3dPart(s, nullptr, sSheet.c_str(), nullptr);
        s += sName;
        PushText(s);
        break;
      }
      case tNameX: {
        const int nExternSheet = static_cast<short>(ReadWord(p));
        std::u16string s;
        bool bValid = false;
        DoPrefix(s, nExternSheet, &bValid);
        std::u16string sName;
        if (!bValid || !GetExternNameText(nExternSheet, ReadWord(p + 2), &sName)) {
          PushText(u"#REF!");
          break;
        }
        s += sName;
        PushText(s);
        break;
      }
      case tRef:
      case tRefN:
      case tArea:
      case tAreaN:
      case tRef3d:
      case tArea3d:
        DoReference(cBase, p);
        break;
      case tRefErr:
      case tAreaErr:
      case tRefErr3d:
      case tAreaErr3d:
        PushText(u"#REF!");
        break;
      case tMemArea: {
        // The range list in the added data: a count, then 8 bytes per range.
        const unsigned char* pList = nullptr;
        if (!ReadAdded(2, &pList) || !ReadAdded(8 * ReadWord(pList), &pList)) bOk = false;
        break;
      }
      case tMemErr:
      case tMemNoMem:
      case tMemFunc:
      case tMemAreaN:
      case tMemNoMemN:
        break;  // the sub-expression behind writes the text
      default:
        if (cBase >= tAdd && cBase <= tPercent) {
          bOk = DoOperator(cBase);
        } else {
          bOk = false;
        }
        break;
    }
  }
  if (m_nUnknownFunc >= 0) {
    std::u16string sMessage = GetUnknownFunctionFormat();
    const size_t nAt = sMessage.find(u"%d");
    std::u16string sNumber;
    for (const char c : std::to_string(m_nUnknownFunc)) sNumber += static_cast<char16_t>(c);
    if (nAt != std::u16string::npos) {
      sMessage.replace(nAt, 2, sNumber);
    } else {
      sMessage += sNumber;
    }
    Fail(sMessage, out);
    return false;
  }
  if (!bOk || m_Stack.size() != 1) {
    Fail(GetUnparserFailure(), out);
    return false;
  }
  for (int i = m_Stack.back().nHead; i >= 0; i = m_Pieces[i].nNext) {
    out.append(m_sArena, static_cast<size_t>(m_Pieces[i].nStart),
               static_cast<size_t>(m_Pieces[i].nLen));
  }
  m_Stack.clear();
  return true;
}

bool CFormulaUnparserBase::ReadAdded(int nBytes, const unsigned char** pp) {
  if (m_pAddedPos == nullptr || m_pAddedEnd - m_pAddedPos < nBytes) return false;
  *pp = m_pAddedPos;
  m_pAddedPos += nBytes;
  return true;
}

bool CFormulaUnparserBase::DoOperator(unsigned char cBase) {
  const TOpText& op = kOpTexts[cBase - tAdd];
  std::u16string sText;
  if (op.nResId == 0) {
    sText = GetArgSeparator();
  } else if (const char16_t* pwsz = LoadResourceString(op.nResId)) {
    sText = pwsz;
  }
  if (op.nKind != okBinary) {
    if (m_Stack.empty()) return false;
    const int nPiece = NewPiece(sText.data(), static_cast<int>(sText.size()));
    TFragment& f = m_Stack.back();
    if (op.nKind == okPrefix) {
      Prepend(f, nPiece);
      f.bStartsWithRef = f.bStartsWithPrefix = false;
    } else {
      Append(f, nPiece);
      f.bEndsWithCell = false;
    }
    return true;
  }
  if (m_Stack.size() < 2) return false;
  const TFragment right = m_Stack.back();
  m_Stack.pop_back();
  TFragment& left = m_Stack.back();
  // Written as "A1:C1" a cell, the range operator and a cell would read back as one
  // rectangle token; the space keeps them two operands.
  if (cBase == tRange &&
      ((left.bEndsWithCell && right.bStartsWithRef) || right.bStartsWithPrefix))
    sText += u' ';
  Append(left, NewPiece(sText.data(), static_cast<int>(sText.size())));
  AppendFragment(left, right);
  left.bEndsWithCell = right.bEndsWithCell;
  return true;
}

bool CFormulaUnparserBase::DoFunction(int nFunc, int nArgs, bool bFixed) {
  std::u16string sName;
  int nFixedArgs = 0;
  const bool bExternal = nFunc == kFuncExtern || nFunc == kFuncAddIn;
  if (nFunc >= kNumFuncSlots || (!bExternal && !GetFunction(nFunc, &sName, &nFixedArgs))) {
    m_nUnknownFunc = nFunc;
    return false;
  }
  if (bFixed) nArgs = bExternal ? 1 : nFixedArgs;
  if (nArgs < 0 || static_cast<size_t>(nArgs) > m_Stack.size()) return false;
  const size_t nFirst = m_Stack.size() - static_cast<size_t>(nArgs);
  TFragment call{-1, -1};
  size_t i = nFirst;
  if (bExternal) {
    // The called name is the first operand.
    if (nArgs == 0) return false;
    call = m_Stack[i++];
  } else {
    Append(call, NewPiece(sName.data(), static_cast<int>(sName.size())));
  }
  Append(call, NewPiece(u"(", 1));
  const char16_t cSep = GetArgSeparator();
  for (size_t j = i; j < m_Stack.size(); ++j) {
    if (j > i) Append(call, NewPiece(&cSep, 1));
    AppendFragment(call, m_Stack[j]);
  }
  Append(call, NewPiece(u")", 1));
  call.bStartsWithRef = call.bEndsWithCell = call.bStartsWithPrefix = false;
  m_Stack.resize(nFirst);
  m_Stack.push_back(call);
  return true;
}

bool CFormulaUnparserBase::DoArray() {
  // Added data: columns - 1 (8 bits), rows - 1 (16 bits), then the items row by row.
  const unsigned char* p = nullptr;
  if (!ReadAdded(3, &p)) return false;
  const int nCols = p[0] + 1;
  const int nRows = ReadWord(p + 1) + 1;
  const int nStart = static_cast<int>(m_sArena.size());
  m_sArena += u'{';
  // The separators of an array constant are fixed, whatever the locale.
  for (int nRow = 0; nRow < nRows; ++nRow) {
    if (nRow > 0) m_sArena += u';';
    for (int nCol = 0; nCol < nCols; ++nCol) {
      if (nCol > 0) m_sArena += u',';
      if (!ReadAdded(1, &p)) return false;
      const unsigned char cType = p[0];
      if (cType == kItemString) {
        if (!ReadAdded(2, &p)) return false;
        const int nCount = ReadWord(p);
        if (!ReadAdded(2 * nCount, &p)) return false;
        AppendQuotedUnits(m_sArena, p, nCount);
        continue;
      }
      if (cType > kItemError) return false;
      if (!ReadAdded(8, &p)) return false;
      switch (cType) {
        case kItemEmpty:
          break;
        case kItemNumber:
          FormatNumber(m_sArena, ReadReal(p), u'.');
          break;
        case kItemBool:
          m_sArena += p[0] ? u"TRUE" : u"FALSE";
          break;
        case kItemError:
          m_sArena += ErrorText(p[0]);
          break;
        default:
          return false;
      }
    }
  }
  m_sArena += u'}';
  Push(NewPieceFromArena(nStart));
  return true;
}

bool CFormulaUnparserBase::DoExtended(const unsigned char* p) {
  // Subtype byte, then for 2, 3, 6, 7 and 10 the label cell's row and column words.
  const unsigned char cSubtype = p[0];
  if (cSubtype >= 11 && cSubtype <= 15) {
    // A 32-bit count and 4 bytes per entry in the added data.
    const unsigned char* pList = nullptr;
    if (!ReadAdded(4, &pList)) return false;
    const unsigned nCount = ReadDWord(pList);
    if (nCount > 0xFFFFu || !ReadAdded(static_cast<int>(4 * nCount), &pList)) return false;
  }
  std::u16string sText;
  const bool bLabel =
      cSubtype == 2 || cSubtype == 3 || cSubtype == 6 || cSubtype == 7 || cSubtype == 10;
  if (!bLabel || !GetLabelText(ReadWord(p + 1), ReadWord(p + 3) & 0xFF, &sText)) {
    sText = u"#NAME?";
  }
  PushText(sText);
  return true;
}

void CFormulaUnparserBase::DoPrefix(std::u16string& s, int nExternSheet, bool* pbValid) {
  TExternPrefix prefix;
  *pbValid = GetExternSheet(nExternSheet, &prefix);
  if (!*pbValid) return;
  if (prefix.bBookOnly) {
    Concat3dPart(s, prefix.sBook.c_str(), nullptr, nullptr);
    return;
  }
  Concat3dPart(s, prefix.bOtherBook ? prefix.sBook.c_str() : nullptr, prefix.sSheet1.c_str(),
               prefix.sSheet2.empty() ? nullptr : prefix.sSheet2.c_str());
}

void CFormulaUnparserBase::DoReference(unsigned char cBase, const unsigned char* p) {
  std::u16string s;
  const bool b3d = cBase == tRef3d || cBase == tArea3d;
  if (b3d) {
    bool bValid = false;
    DoPrefix(s, static_cast<short>(ReadWord(p)), &bValid);
    if (!bValid) {
      PushText(u"#REF!");
      return;
    }
    p += 2;
  }
  // tRefN and tAreaN hold offsets whatever the formula type; the others only in the
  // offset types.
  const bool bOffset = cBase == tRefN || cBase == tAreaN || GetRelRCIsOffset();
  const int nBaseRow = bOffset ? m_Base.row : 0;
  const int nBaseCol = bOffset ? m_Base.col : 0;
  auto absRow = [&](int nRow, unsigned short wCol) {
    return (wCol & kRowRelative) ? (nRow + nBaseRow) & 0xFFFF : nRow;
  };
  auto absCol = [&](unsigned short wCol) {
    return (wCol & kColRelative) ? (wCol + nBaseCol) & 0xFF : wCol & 0xFF;
  };
  if (cBase == tRef || cBase == tRefN || cBase == tRef3d) {
    const int nRow = ReadWord(p);
    const unsigned short wCol = ReadWord(p + 2);
    FormatCell(s, absRow(nRow, wCol), absCol(wCol), wCol);
    PushText(s);
    m_Stack.back().bEndsWithCell = true;
  } else {
    const int nRow1 = ReadWord(p);
    const int nRow2 = ReadWord(p + 2);
    const unsigned short wCol1 = ReadWord(p + 4);
    const unsigned short wCol2 = ReadWord(p + 6);
    FormatRange(s, absRow(nRow1, wCol1), absCol(wCol1), wCol1, absRow(nRow2, wCol2), absCol(wCol2),
                wCol2);
    PushText(s);
  }
  m_Stack.back().bStartsWithRef = true;
  m_Stack.back().bStartsWithPrefix = b3d;
}
