#include "eval/Value.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <new>
#include <utility>

#include "base/Cell.h"
#include "base/Range.h"
#include "base/Range3d.h"
#include "base/Region.h"
#include "base/WideString.h"
#include "base/ZelException.h"
#include "book/SharedStringTable.h"
#include "eval/ValueText.h"
#include "format/GeneralNumber.h"
#include "platform/Locale.h"
#include "platform/TextServices.h"

static_assert(sizeof(void*) != 8 || sizeof(TValue) == 24,
              "TValue is 16 bytes of payload, two sheet words, kind and flag");

// Keep in step with TValue::TError.
const char16_t* const TValue::m_pErrorStrings[TValue::errLast + 1] = {
    nullptr,   u"#NULL!", u"#DIV/0!", u"#VALUE!",   u"#REF!",
    u"#NAME?", u"#NUM!",  u"#N/A",    u"#FORMULA!",
};

bool TValue::m_sbMakeAutoPercentValue = true;

namespace {

// External (stored) error bytes by code; codes 7 and 8 both store as #N/A.
constexpr unsigned char kExcelErrors[] = {42, 0, 7, 15, 23, 29, 36, 42, 42};
static_assert(std::size(kExcelErrors) == TValue::errLast + 1, "one byte per error code");

constinit ICellValueReader* s_pCellReader = nullptr;
constinit TBaseCellFn s_pfnBaseCell = nullptr;

// A private copy of nLen characters, or null when memory is exhausted. new[] as in
// StringNewW, so the two families mix. The empty text is the shared g_wszEmpty,
// never allocated and never freed.
const char16_t* NewPrivateText(const char16_t* pwszText, int nLen) {
  if (nLen == 0) return g_wszEmpty;
  auto* p = new (std::nothrow) char16_t[static_cast<size_t>(nLen) + 1];
  if (p == nullptr) return nullptr;
  std::memcpy(p, pwszText, static_cast<size_t>(nLen) * sizeof(char16_t));
  p[nLen] = 0;
  return p;
}

void DeletePrivateText(const char16_t* p) {
  if (p != g_wszEmpty) delete[] p;
}

CSharedStringTable& Sst() { return CSharedStringTable::GetGlobal(); }

int ClampRow(int n) { return n < 0 ? 0 : n > kMaxRow ? kMaxRow : n; }
int ClampCol(int n) { return n < 0 ? 0 : n > kMaxCol ? kMaxCol : n; }

// Applies set to the array element at (nRow, nCol); false when there is none.
template <class TSet>
bool SetElement(TValue& array, int nRow, int nCol, TSet set) {
  TValue* pElem = array.GetArrayValue(nRow, nCol);
  if (pElem == nullptr) return false;
  set(*pElem);
  return true;
}

// The failed end of a conversion: an error value stays as it is, anything else
// becomes #VALUE!. Returns 0.
int FailConversion(TValue& val) {
  if (!val.IsError()) val.SetError(TValue::errValue);
  return 0;
}

// Allocates an element block; throws CZelException when memory is exhausted.
TValue* NewElements(int nCount) {
  if (nCount <= 0) return nullptr;
  auto* p = new (std::nothrow) TValue[static_cast<size_t>(nCount)];
  if (p == nullptr) CZelException::ThrowMemory();
  return p;
}

// Copies that may throw bad_alloc from the standard library report it the engine's way.
TRegion* NewRegion(const TRegion* pSrc) {
  try {
    return pSrc != nullptr ? new TRegion(*pSrc) : new TRegion;
  } catch (const std::bad_alloc&) {
    CZelException::ThrowMemory();
  }
}

}  // namespace

// ---- Construction, assignment, Clear ----

TValue::TValue(const TValue& src) { AssignFrom(src); }

TValue::TValue(TValue&& src) noexcept {
  // The new holder takes the flag along with the payload: a counted text stays
  // counted, and nothing is allocated.
  m_u = src.m_u;
  m_wSheet1 = src.m_wSheet1;
  m_wSheet2 = src.m_wSheet2;
  m_vt = src.m_vt;
  m_bSST = src.m_bSST;
  src.m_u = {};
  src.m_wSheet1 = src.m_wSheet2 = 0;
  src.m_vt = vtEmpty;
}

TValue& TValue::operator=(const TValue& src) {
  if (this != &src) AssignFrom(src);
  return *this;
}

TValue& TValue::operator=(TValue&& src) noexcept {
  // Equal flags (the common case) move without allocating. A text that must change
  // between the string table and a private copy is copied; should that fail, the
  // value becomes #VALUE! rather than throwing out of a move.
  if (this == &src) return *this;
  try {
    CopyAndClearSource(src);
  } catch (const CZelException&) {
    SetError(errValue);
    src.Clear();
  }
  return *this;
}

void TValue::ReleasePayload() {
  switch (m_vt) {
    case vtText:
      if (m_bSST)
        Sst().DecRefSST(m_u.pText);
      else
        DeletePrivateText(m_u.pText);
      break;
    case vtRegion:
      delete m_u.region.pRegion;
      break;
    case vtArray:
      delete[] m_u.array.pElems;  // elements hold no arrays, so this goes one level deep
      break;
    default:
      break;
  }
}

void TValue::AssignFrom(const TValue& src) {
  switch (src.m_vt) {
    case vtText: {
      // Make the new payload before releasing the old one, so that a throw leaves
      // this value as it was.
      const char16_t* pText = src.m_u.pText;
      if (!m_bSST) {
        pText = NewPrivateText(pText, strlenW(pText));
        if (pText == nullptr) CZelException::ThrowMemory();
      } else if (!src.m_bSST) {
        pText = Sst().AddString(pText);
      } else {
        Sst().IncRefSST(pText);
      }
      Clear(vtText);
      m_u.pText = pText;
      return;
    }
    case vtArray: {
      const int nCount = src.m_u.array.nRows * src.m_u.array.nCols;
      TValue* pElems = NewElements(nCount);
      try {
        for (int i = 0; i < nCount; ++i) pElems[i].AssignFrom(src.m_u.array.pElems[i]);
      } catch (...) {
        delete[] pElems;
        throw;
      }
      Clear(vtArray);
      m_u.array.nRows = src.m_u.array.nRows;
      m_u.array.nCols = src.m_u.array.nCols;
      m_u.array.pElems = pElems;
      return;
    }
    case vtRegion: {
      TRegion* pRegion = NewRegion(src.m_u.region.pRegion);
      void* pSheet = src.m_u.region.pSheet;
      Clear(vtRegion);
      m_u.region.pSheet = pSheet;
      m_u.region.pRegion = pRegion;
      return;
    }
    default: {
      // src may be an element of this value's array, which Clear frees: read first.
      const TPayload u = src.m_u;  // a Real's eight bytes as they stand
      const unsigned short wSheet1 = src.m_wSheet1, wSheet2 = src.m_wSheet2;
      Clear(src.m_vt);
      m_u = u;
      m_wSheet1 = wSheet1;
      m_wSheet2 = wSheet2;
      return;
    }
  }
}

void TValue::StealFrom(TValue& src) {
  // src is emptied before Clear, which may free the array that src belongs to.
  const TPayload u = src.m_u;
  const unsigned short wSheet1 = src.m_wSheet1, wSheet2 = src.m_wSheet2;
  const TValType vt = src.m_vt;
  src.m_u = {};
  src.m_wSheet1 = src.m_wSheet2 = 0;
  src.m_vt = vtEmpty;
  Clear(vt);
  m_u = u;
  m_wSheet1 = wSheet1;
  m_wSheet2 = wSheet2;
}

void TValue::CopyAndClearSource(TValue& src) {
  if (this == &src) return;
  if (src.m_vt == vtText && m_bSST != src.m_bSST) {
    TValue moved(std::move(src));  // keeps its flag; src may lie in this value's array
    AssignFrom(moved);
    return;
  }
  StealFrom(src);
}

void TValue::SetSST(bool bSST) {
  const unsigned char bNew = bSST ? 1 : 0;
  if (bNew == m_bSST) return;
  if (m_vt == vtText) {
    const char16_t* pOld = m_u.pText;
    if (bNew) {
      m_u.pText = Sst().AddString(pOld);
      DeletePrivateText(pOld);
    } else {
      const char16_t* pCopy = NewPrivateText(pOld, strlenW(pOld));
      if (pCopy == nullptr) CZelException::ThrowMemory();
      m_u.pText = pCopy;
      Sst().DecRefSST(pOld);
    }
  }
  m_bSST = bNew;
}

int TValue::Rows() const {
  switch (m_vt) {
    case vtArray:
      return m_u.array.nRows;
    case vtRange:
      return m_u.ref.wRow2 - m_u.ref.wRow1 + 1;
    case vtRegion:
    case vtRange3d:
      return 0;
    default:
      return 1;
  }
}

int TValue::Cols() const {
  switch (m_vt) {
    case vtArray:
      return m_u.array.nCols;
    case vtRange:
      return m_u.ref.bCol2 - m_u.ref.bCol1 + 1;
    case vtRegion:
    case vtRange3d:
      return 0;
    default:
      return 1;
  }
}

// ---- Setters ----

void TValue::SetLogical(int bValue) {
  Clear(vtLogical);
  m_u.nInt = bValue != 0 ? 1 : 0;
}

void TValue::SetError(TError err) {
  Clear(vtError);
  m_u.nInt = err;
}

void TValue::SetText(const char16_t* pwszText, int nLen, bool bThrow, bool* pbOk) {
  if (pwszText == nullptr) nLen = 0;
  if (nLen < 0) nLen = strlenW(pwszText);
  const char16_t* pText;
  if (m_bSST) {
    if (bThrow) {
      pText = Sst().AddString(pwszText, nLen);
    } else {
      try {
        pText = Sst().AddString(pwszText, nLen);
      } catch (const CZelException&) {
        pText = nullptr;
      }
    }
  } else {
    pText = NewPrivateText(pwszText, nLen);
    if (pText == nullptr && bThrow) CZelException::ThrowMemory();
  }
  // pwszText may be this value's own text: it is copied before Clear releases it.
  if (pText == nullptr) {
    Clear();
    *pbOk = false;
    return;
  }
  Clear(vtText);
  m_u.pText = pText;
  *pbOk = true;
}

void TValue::SetValue(const char16_t* pwszText, int nLen) {
  bool bOk;
  SetText(pwszText, nLen, true, &bOk);
}

bool TValue::SetValueWithoutException(const char16_t* pwszText, int nLen) {
  bool bOk;
  SetText(pwszText, nLen, false, &bOk);
  return bOk;
}

void TValue::SetCell(CSheetBase* pSheet, int nRow, int nCol) {
  Clear(vtCell);
  m_u.ref.pSheet = pSheet;
  m_u.ref.wRow1 = m_u.ref.wRow2 = static_cast<unsigned short>(ClampRow(nRow));
  m_u.ref.bCol1 = m_u.ref.bCol2 = static_cast<unsigned char>(ClampCol(nCol));
}

void TValue::SetRange(CSheetBase* pSheet, int nRow1, int nCol1, int nRow2, int nCol2) {
  if (nRow1 > nRow2) std::swap(nRow1, nRow2);
  if (nCol1 > nCol2) std::swap(nCol1, nCol2);
  Clear(vtRange);
  m_u.ref.pSheet = pSheet;
  m_u.ref.wRow1 = static_cast<unsigned short>(ClampRow(nRow1));
  m_u.ref.wRow2 = static_cast<unsigned short>(ClampRow(nRow2));
  m_u.ref.bCol1 = static_cast<unsigned char>(ClampCol(nCol1));
  m_u.ref.bCol2 = static_cast<unsigned char>(ClampCol(nCol2));
}

void TValue::SetValue(CSheetBase* pSheet, const TRange& range) {
  SetRange(pSheet, range.first.row, range.first.col, range.last.row, range.last.col);
}

void TValue::SetValue(CSheetBase* pSheet, const TCell& cell) {
  SetCell(pSheet, cell.row, cell.col);
}

void TValue::SetValue(CSheetBase* pSheet, const TCell& cell1, const TCell& cell2) {
  SetRange(pSheet, cell1.row, cell1.col, cell2.row, cell2.col);
}

void TValue::SetRange3d(CBookBase* pBook, int nSheet1, int nRow1, int nCol1, int nSheet2, int nRow2,
                        int nCol2) {
  SetRange(nullptr, nRow1, nCol1, nRow2, nCol2);
  m_vt = vtRange3d;
  m_u.ref.pSheet = pBook;
  if (nSheet1 > nSheet2) std::swap(nSheet1, nSheet2);
  m_wSheet1 = static_cast<unsigned short>(nSheet1 < 0 ? 0 : nSheet1 > 0x7FFF ? 0x7FFF : nSheet1);
  m_wSheet2 = static_cast<unsigned short>(nSheet2 < 0 ? 0 : nSheet2 > 0x7FFF ? 0x7FFF : nSheet2);
}

void TValue::SetValue(CAddInFunc* pFunc) {
  Clear(vtAddInFunc);
  m_u.pAddIn = pFunc;
}

void TValue::AddRanges(CSheetBase* pSheet, int nCount, const TRange* pRanges) {
  if (m_vt != vtRegion || m_u.region.pSheet != pSheet) {
    TRegion* pRegion = NewRegion(nullptr);
    Clear(vtRegion);
    m_u.region.pSheet = pSheet;
    m_u.region.pRegion = pRegion;
  }
  if (nCount <= 0 || pRanges == nullptr) return;
  try {
    m_u.region.pRegion->Add(nCount, pRanges);
  } catch (const std::bad_alloc&) {
    CZelException::ThrowMemory();
  }
}

// ---- Arrays ----

bool TValue::ResizeArray(int nRows, int nCols) {
  if (nRows < 0 || nCols < 0) return false;
  if (nCols != 0 && nRows > kMaxArrayElements / nCols) return false;
  const int nCount = nRows * nCols;
  TValue* pElems = NewElements(nCount);
  if (m_vt == vtArray) {
    const int nKeepRows = std::min(nRows, m_u.array.nRows);
    const int nKeepCols = std::min(nCols, m_u.array.nCols);
    for (int r = 0; r < nKeepRows; ++r) {
      for (int c = 0; c < nKeepCols; ++c) {
        pElems[r * nCols + c].StealFrom(m_u.array.pElems[r * m_u.array.nCols + c]);
      }
    }
  }
  Clear(vtArray);
  m_u.array.nRows = nRows;
  m_u.array.nCols = nCols;
  m_u.array.pElems = pElems;
  return true;
}

TValue* TValue::GetArrayValue(int nRow, int nCol) {
  if (m_vt != vtArray || nRow < 0 || nCol < 0 || nRow >= m_u.array.nRows ||
      nCol >= m_u.array.nCols) {
    return nullptr;
  }
  return &m_u.array.pElems[nRow * m_u.array.nCols + nCol];
}

const TValue* TValue::GetArrayValue(int nRow, int nCol) const {
  return const_cast<TValue*>(this)->GetArrayValue(nRow, nCol);
}

bool TValue::SetArrayValue(int nRow, int nCol, const TValue& val) {
  return SetElement(*this, nRow, nCol, [&val](TValue& elem) {
    if (val.m_vt == vtArray || val.m_vt == vtRegion)
      elem.SetError(errValue);
    else if (&elem != &val)
      elem.AssignFrom(val);
  });
}

bool TValue::SetArrayValueAndClearSource(int nRow, int nCol, TValue& val) {
  return SetElement(*this, nRow, nCol, [&val](TValue& elem) {
    if (val.m_vt == vtArray || val.m_vt == vtRegion) {
      elem.SetError(errValue);
      val.Clear();
    } else {
      elem.CopyAndClearSource(val);
    }
  });
}

bool TValue::SetArrayNumber(int nRow, int nCol, double r) {
  return SetElement(*this, nRow, nCol, [r](TValue& elem) { elem.SetValue(r); });
}

bool TValue::SetArrayString(int nRow, int nCol, const char16_t* pwszText, int nLen) {
  return SetElement(*this, nRow, nCol,
                    [pwszText, nLen](TValue& elem) { elem.SetValue(pwszText, nLen); });
}

bool TValue::SetArrayLogical(int nRow, int nCol, int bValue) {
  return SetElement(*this, nRow, nCol, [bValue](TValue& elem) { elem.SetLogical(bValue); });
}

bool TValue::SetArrayError(int nRow, int nCol, TError err) {
  return SetElement(*this, nRow, nCol, [err](TValue& elem) { elem.SetError(err); });
}

bool TValue::SetArrayExcelError(int nRow, int nCol, unsigned char bCode) {
  return SetArrayError(nRow, nCol, ExcelErrorToError(bCode));
}

void TValue::Pop(int nArgs) {
  TValue* pArgs = this;
  TError errFirst = GetError();
  for (int i = 1; i < nArgs; ++i) {
    if (pArgs[i].IsError()) {
      if (errFirst == errNone) errFirst = pArgs[i].GetError();
    } else {
      pArgs[i].Clear();
    }
  }
  if (errFirst != errNone)
    SetError(errFirst);
  else
    Clear();
}

// ---- Getters ----

bool TValue::_GetValue(double& r) const {
  // A local scratch value: converting never touches this value and cannot be
  // disturbed by a nested conversion.
  TValue scratch(*this);
  if (!scratch.CheckReal()) {
    r = 0;
    return false;
  }
  r = scratch.m_u.r;
  return true;
}

int TValue::GetLogical() const {
  if (m_vt == vtLogical) return m_u.nInt;
  double r;
  GetValue(r);
  return r != 0 ? 1 : 0;  // NaN != 0 holds, so NaN reads as TRUE
}

int TValue::GetValue(char16_t* pBuf, int nCapacity) const {
  char16_t acNumber[TGeneralNumber::kMaxText];
  const char16_t* pText = u"";
  switch (m_vt) {
    case vtText:
      pText = m_u.pText;
      break;
    case vtLogical:
      pText = GetLogicalText(m_u.nInt != 0, false);
      break;
    case vtError:
      pText = GetErrorString(GetError());
      if (pText == nullptr) pText = u"";
      break;
    case vtReal:
      if (FormatGeneralNumber(m_u.r, acNumber, TGeneralNumber::kMaxText,
                              GetLocaleSettings().cDecimal) == 0) {
        acNumber[0] = 0;  // not finite: no text
      }
      pText = acNumber;
      break;
    default:
      break;
  }
  if (pBuf == nullptr || nCapacity == 0) return 0;
  int n = 0;
  while (pText[n] != 0 && (nCapacity < 0 || n < nCapacity - 1)) {
    pBuf[n] = pText[n];
    ++n;
  }
  pBuf[n] = 0;
  return n;
}

void TValue::GetValue(std::u16string& str) const {
  switch (m_vt) {
    case vtText:
      str.assign(m_u.pText);
      return;
    case vtLogical:
      str.assign(GetLogicalText(m_u.nInt != 0, false));
      return;
    default: {
      char16_t acText[TGeneralNumber::kMaxText];
      const int n = GetValue(acText, TGeneralNumber::kMaxText);  // numbers and error texts fit
      str.assign(acText, static_cast<size_t>(n));
      return;
    }
  }
}

bool TValue::GetValue(CSheetBase** ppSheet, TRange* pRange) const {
  if (!IsRef()) return false;
  if (ppSheet != nullptr) *ppSheet = RefSheet();
  if (pRange != nullptr) pRange->Set(m_u.ref.wRow1, m_u.ref.bCol1, m_u.ref.wRow2, m_u.ref.bCol2);
  return true;
}

bool TValue::GetValue(CBookBase** ppBook, TRange3d* pRange) const {
  if (m_vt != vtRange3d) return false;
  if (ppBook != nullptr) *ppBook = static_cast<CBookBase*>(m_u.ref.pSheet);
  if (pRange != nullptr) {
    pRange->Set(static_cast<short>(m_wSheet1), m_u.ref.wRow1, m_u.ref.bCol1,
                static_cast<short>(m_wSheet2), m_u.ref.wRow2, m_u.ref.bCol2);
  }
  return true;
}

bool TValue::GetValue(CSheetBase** ppSheet, const TRegion** ppRegion) const {
  if (m_vt != vtRegion) return false;
  if (ppSheet != nullptr) *ppSheet = static_cast<CSheetBase*>(m_u.region.pSheet);
  if (ppRegion != nullptr) *ppRegion = m_u.region.pRegion;
  return true;
}

void ICellValueReader::ReadCellValue(const CSheetBase* pSheet, int nRow, int nCol,
                                     TValue& out) const {
  const TValue* pValue = GetCellValue(pSheet, nRow, nCol);
  if (pValue == nullptr) {
    out.Clear();
    return;
  }
  out = *pValue;  // copy assignment ignores self-assignment
}

void TValue::GetCellValue(const CSheetBase* pSheet, int nRow, int nCol, TValue& out) {
  if (pSheet == nullptr) {
    out.SetError(errRef);
    return;
  }
  if (s_pCellReader == nullptr) {
    out.Clear();
    return;
  }
  s_pCellReader->ReadCellValue(pSheet, nRow, nCol, out);
}

bool TValue::GetRK(int* pnRK) const {
  if (m_vt != vtReal) return false;
  uint64_t nBits;
  std::memcpy(&nBits, &m_u.r, sizeof(nBits));
  const auto nHigh = static_cast<uint32_t>(nBits >> 32);
  if (static_cast<uint32_t>(nBits) == 0 && (nHigh & 3) == 0) {
    if (pnRK != nullptr) *pnRK = static_cast<int>(nHigh);
    return true;
  }
  const double r = m_u.r;
  if (r >= -536870912.0 && r <= 536870911.0 && r == std::trunc(r)) {
    if (pnRK != nullptr)
      *pnRK = static_cast<int>(static_cast<uint32_t>(static_cast<int>(r)) << 2 | 2);
    return true;
  }
  return false;
}

bool TValue::IsZero() const { return m_vt == vtEmpty || (m_vt == vtReal && m_u.r == 0); }

bool TValue::IsValidReal() const { return m_vt == vtReal && std::isfinite(m_u.r); }

// ---- Comparison ----

int TValue::Compare(const TValue& other) const {
  const TValType a = m_vt;
  const TValType b = other.m_vt;
  if (a == vtReal && b == vtReal) {
    const double rTol = 1e-15 * std::fabs(m_u.r);
    const double d = m_u.r - other.m_u.r;
    if (d > rTol) return 1;
    if (d < -rTol) return -1;
    return 0;
  }
  // Empty counts as 0, with an absolute tolerance.
  if (a == vtEmpty && b == vtReal) {
    if (other.m_u.r > 1e-15) return -1;
    if (other.m_u.r < -1e-15) return 1;
    return 0;
  }
  if (a == vtReal && b == vtEmpty) {
    if (m_u.r > 1e-15) return 1;
    if (m_u.r < -1e-15) return -1;
    return 0;
  }
  if (a == vtText && b == vtText) {
    if (m_u.pText == other.m_u.pText) return 0;
    const int n = CompareStringNoCase(m_u.pText, other.m_u.pText);
    return n < 0 ? -1 : n > 0 ? 1 : 0;
  }
  if (a == vtText && b == vtEmpty) return m_u.pText[0] == 0 ? 0 : 1;
  if (a == vtEmpty && b == vtText) return other.m_u.pText[0] == 0 ? 0 : -1;
  if ((a == vtLogical && b == vtLogical) || (a == vtError && b == vtError)) {
    return m_u.nInt < other.m_u.nInt ? -1 : m_u.nInt > other.m_u.nInt ? 1 : 0;
  }
  return a < b ? -1 : a > b ? 1 : 0;
}

int TValue::CompareExact(const TValue& other) const {
  if (m_vt != other.m_vt) return 1;
  switch (m_vt) {
    case vtReal:
      return m_u.r == other.m_u.r ? 0 : 1;
    // References are equal only when they name the same place.
    case vtCell:
    case vtRange:
    case vtRange3d:
      return m_u.ref.pSheet == other.m_u.ref.pSheet && m_u.ref.wRow1 == other.m_u.ref.wRow1 &&
                     m_u.ref.wRow2 == other.m_u.ref.wRow2 && m_u.ref.bCol1 == other.m_u.ref.bCol1 &&
                     m_u.ref.bCol2 == other.m_u.ref.bCol2 && m_wSheet1 == other.m_wSheet1 &&
                     m_wSheet2 == other.m_wSheet2
                 ? 0
                 : 1;
    case vtRegion: {
      const TRegion& r1 = *m_u.region.pRegion;
      const TRegion& r2 = *other.m_u.region.pRegion;
      if (m_u.region.pSheet != other.m_u.region.pSheet || r1.Ranges() != r2.Ranges()) return 1;
      for (int i = 0; i < r1.Ranges(); ++i) {
        if (r1.Range(i) != r2.Range(i)) return 1;
      }
      return 0;
    }
    case vtAddInFunc:
      return m_u.pAddIn == other.m_u.pAddIn ? 0 : 1;
    case vtArray: {
      // Elements hold no arrays, so this goes one level deep.
      if (m_u.array.nRows != other.m_u.array.nRows || m_u.array.nCols != other.m_u.array.nCols)
        return 1;
      const int nCount = m_u.array.nRows * m_u.array.nCols;
      for (int i = 0; i < nCount; ++i) {
        if (m_u.array.pElems[i].CompareExact(other.m_u.array.pElems[i]) != 0) return 1;
      }
      return 0;
    }
    default:
      return Compare(other) == 0 ? 0 : 1;
  }
}

// ---- Formula text ----

void TValue::Unparse([[maybe_unused]] const CSheetBase* pSheet, std::u16string& str,
                     bool bEnglish) const {
  switch (m_vt) {
    case vtReal: {
      char16_t acNumber[TGeneralNumber::kMaxText];
      const int n = FormatGeneralNumber(m_u.r, acNumber, TGeneralNumber::kMaxText,
                                        bEnglish ? u'.' : GetLocaleSettings().cDecimal);
      if (n == 0)
        str += m_pErrorStrings[errNum];
      else
        str.append(acNumber, static_cast<size_t>(n));
      return;
    }
    case vtText:
      str += u'"';
      for (const char16_t* p = m_u.pText; *p != 0; ++p) {
        if (*p == u'"') str += u'"';
        str += *p;
      }
      str += u'"';
      return;
    case vtLogical:
      str += GetLogicalText(m_u.nInt != 0, bEnglish);
      return;
    case vtError: {
      const char16_t* pText = GetErrorString(GetError());
      if (pText != nullptr) str += pText;
      return;
    }
    case vtCell:
    case vtRange: {
      TRange range;
      GetValue(nullptr, &range);
      std::u16string strRange;
      range.GetText(strRange);
      str += strRange;
      return;
    }
    case vtArray: {
      // English: "," between columns and ";" between rows. Local: the list separator
      // between columns, and "|" between rows where that separator is already ";".
      char16_t cCol = u',';
      char16_t cRow = u';';
      if (!bEnglish) {
        cCol = GetLocaleSettings().cList;
        if (cCol == u';') cRow = u'|';
      }
      str += u'{';
      for (int r = 0; r < m_u.array.nRows; ++r) {
        if (r > 0) str += cRow;
        for (int c = 0; c < m_u.array.nCols; ++c) {
          if (c > 0) str += cCol;
          m_u.array.pElems[r * m_u.array.nCols + c].Unparse(pSheet, str, bEnglish);
        }
      }
      str += u'}';
      return;
    }
    default:
      return;
  }
}

// ---- Argument checks ----

void TValue::Deref() {
  switch (m_vt) {
    case vtCell:
    case vtRange:
      CvtRangeToValue();
      return;
    case vtRegion:
    case vtRange3d:
    case vtAddInFunc:
      SetError(errValue);
      return;
    case vtArray:
      CvtArrayValToValue();
      return;
    default:
      return;
  }
}

int TValue::CheckValue() {
  Deref();
  if (m_vt == vtReal) return CheckNumber();
  return m_vt == vtError ? 0 : 1;
}

int TValue::CheckReal() {
  Deref();
  switch (m_vt) {
    case vtReal:
      return 1;
    case vtEmpty:
      SetValue(0.0);
      return 1;
    case vtLogical:
      SetValue(static_cast<double>(m_u.nInt != 0));
      return 1;
    case vtText: {
      TParsedText parsed;
      if (ParseValueText(m_u.pText, 0, 0, parsed) && parsed.vt == vtReal) {
        SetValue(parsed.r);
        return 1;
      }
      break;
    }
    default:
      break;
  }
  return FailConversion(*this);
}

int TValue::CheckNumber() {
  if (!CheckReal()) return 0;
  if (!std::isfinite(m_u.r)) {
    SetError(errNum);
    return 0;
  }
  return 1;
}

int TValue::CheckLogical(int& bOut, bool bStrict) {
  Deref();
  switch (m_vt) {
    case vtLogical:
      bOut = m_u.nInt;
      return 1;
    case vtEmpty:
      bOut = 0;
      return 1;
    case vtReal:
      if (bStrict) return 0;
      bOut = m_u.r != 0 ? 1 : 0;
      return 1;
    case vtText: {
      if (bStrict) return 0;
      TParsedText parsed;
      if (ParseValueText(m_u.pText, 0, 0, parsed)) {
        if (parsed.vt == vtLogical) {
          bOut = parsed.nInt;
          return 1;
        }
        if (parsed.vt == vtReal) {
          bOut = parsed.r != 0 ? 1 : 0;
          return 1;
        }
      }
      break;
    }
    default:
      break;
  }
  return FailConversion(*this);
}

int TValue::CheckLogical() {
  int bValue = 0;
  if (!CheckLogical(bValue, false)) return 0;
  SetLogical(bValue);
  return 1;
}

int TValue::CheckString() {
  Deref();
  if (m_vt == vtText) return 1;
  if (m_vt == vtError) return 0;
  std::u16string str;
  GetValue(str);
  SetValue(str.c_str(), static_cast<int>(str.size()));
  return 1;
}

int TValue::Check2Strings() { return CheckString() && this[1].CheckString(); }

int TValue::Check2Reals() { return CheckReal() && this[1].CheckReal(); }

int TValue::CheckReals(int nCount) {
  for (int i = 0; i < nCount; ++i) {
    if (!this[i].CheckReal()) return 0;
  }
  return 1;
}

int TValue::CheckIntRange(double rMin, double rMaxExclusive, int& nOut) {
  if (!CheckReal()) return 0;
  const double r = m_u.r;
  if (!(r >= rMin && r < rMaxExclusive)) {  // NaN fails here too
    SetError(errValue);
    return 0;
  }
  nOut = static_cast<int>(std::trunc(r));
  return 1;
}

int TValue::CheckInt(int& nOut) { return CheckIntRange(-2147483648.0, 2147483648.0, nOut); }

int TValue::CheckLong(int& nOut) { return CheckInt(nOut); }

int TValue::CheckShort(short& nOut) {
  int n;
  if (!CheckIntRange(-32768.0, 32768.0, n)) return 0;
  nOut = static_cast<short>(n);
  return 1;
}

int TValue::CheckUShort(unsigned short& nOut) {
  int n;
  if (!CheckIntRange(0.0, 32768.0, n)) return 0;
  nOut = static_cast<unsigned short>(n);
  return 1;
}

int TValue::CheckWord(unsigned short& nOut) { return CheckUShort(nOut); }

int TValue::CheckRange() {
  if (m_vt == vtRange) return 1;
  if (m_vt == vtCell) {
    m_vt = vtRange;  // the payload already holds equal first and last positions
    return 1;
  }
  if (m_vt != vtError) SetError(errNA);
  return 0;
}

int TValue::CheckArray() {
  switch (m_vt) {
    case vtReal:
    case vtArray:
      return 1;
    case vtCell:
    case vtRange:
      return CheckRange();
    default:
      return FailConversion(*this);
  }
}

int TValue::CheckArrayVal() {
  switch (m_vt) {
    case vtCell:
    case vtRange: {
      const CSheetBase* pSheet = RefSheet();
      if (pSheet == nullptr) {
        SetError(errRef);
        return 0;
      }
      const int nRow1 = m_u.ref.wRow1;
      const int nCol1 = m_u.ref.bCol1;
      const int nRows = Rows();
      const int nCols = Cols();
      TValue result;
      result.ResizeArray(nRows, nCols);  // at most 65536 x 256, always accepted
      for (int r = 0; r < nRows; ++r) {
        for (int c = 0; c < nCols; ++c) {
          TValue* pElem = result.GetArrayValue(r, c);
          GetCellValue(pSheet, nRow1 + r, nCol1 + c, *pElem);
        }
      }
      StealFrom(result);
      return 1;
    }
    case vtRegion:
    case vtRange3d:
    case vtAddInFunc:
      SetError(errValue);
      return 0;
    case vtError:
      return 0;
    default:
      return 1;
  }
}

int TValue::CheckIntWithDefault(int& nOut) { return IsEmpty() ? 1 : CheckInt(nOut); }

int TValue::CheckLogicalWithDefault(int& bOut, bool bStrict) {
  return IsEmpty() ? 1 : CheckLogical(bOut, bStrict);
}

int TValue::CheckWordWithDefault(unsigned short& nOut) { return IsEmpty() ? 1 : CheckWord(nOut); }

int TValue::CheckStringWithDefault() { return IsEmpty() ? 1 : CheckString(); }

// ---- Implicit intersection ----

bool TValue::GetValueCell(const TRange& range, int& nRow, int& nCol) {
  const int nRow1 = range.first.row, nRow2 = range.last.row;
  const int nCol1 = range.first.col, nCol2 = range.last.col;
  if (nRow1 == nRow2 && nCol1 == nCol2) {
    nRow = nRow1;
    nCol = nCol1;
    return true;
  }
  if (nRow1 == nRow2 && nCol >= nCol1 && nCol <= nCol2) {
    nRow = nRow1;
    return true;
  }
  if (nCol1 == nCol2 && nRow >= nRow1 && nRow <= nRow2) {
    nCol = nCol1;
    return true;
  }
  return false;
}

int TValue::CvtRangeToValue(int nRow, int nCol, bool bRelative) {
  if (m_vt != vtCell && m_vt != vtRange) return m_vt == vtError ? 0 : 1;
  const CSheetBase* pSheet = RefSheet();
  if (pSheet == nullptr) {
    SetError(errRef);
    return 0;
  }
  if (m_u.ref.wRow1 == m_u.ref.wRow2 && m_u.ref.bCol1 == m_u.ref.bCol2) {
    // One cell is its own value wherever the formula stands.
    GetCellValue(pSheet, m_u.ref.wRow1, m_u.ref.bCol1, *this);
    return 1;
  }
  TRange range(m_u.ref.wRow1, m_u.ref.bCol1, m_u.ref.wRow2, m_u.ref.bCol2);
  if (nRow < 0 && nCol < 0) {
    if (s_pfnBaseCell == nullptr || !s_pfnBaseCell(&nRow, &nCol)) nRow = nCol = -1;
  } else if (bRelative) {
    nRow += range.first.row;
    nCol += range.first.col;
  }
  if (!GetValueCell(range, nRow, nCol)) {
    SetError(errValue);
    return 0;
  }
  GetCellValue(pSheet, nRow, nCol, *this);
  return 1;
}

int TValue::CvtArrayValToValue() {
  if (m_vt != vtArray) return m_vt == vtError ? 0 : 1;
  if (m_u.array.nRows * m_u.array.nCols == 0) {
    SetError(errValue);
    return 0;
  }
  CopyAndClearSource(m_u.array.pElems[0]);  // re-homes a text for a shared holder
  return 1;
}

// ---- Text to number ----

int TValue::StringToReal(const char16_t* pwszText, int* pnFormat, int nCellFormatType,
                         int nParseType) {
  if (pnFormat != nullptr) *pnFormat = 0;
  TParsedText parsed;
  if (pwszText == nullptr || !ParseValueText(pwszText, nCellFormatType, nParseType, parsed))
    return 0;
  // The text may be this value's own: it has been read completely before this point.
  switch (parsed.vt) {
    case vtLogical:
      SetLogical(parsed.nInt);
      break;
    case vtError:
      SetError(static_cast<TError>(parsed.nInt));
      break;
    default:
      SetValue(parsed.r);
      break;
  }
  if (pnFormat != nullptr) *pnFormat = parsed.nFormat;
  return 1;
}

// ---- Errors ----

unsigned char TValue::ErrorToExcelError(TError err) {
  if (err >= errNull && err <= errNum) return kExcelErrors[err];
  return 42;
}

TValue::TError TValue::ExcelErrorToError(unsigned char bCode) {
  for (int i = errNull; i <= errNum; ++i) {
    if (kExcelErrors[i] == bCode) return static_cast<TError>(i);
  }
  return errNA;
}

const char16_t* TValue::GetErrorString(TError err) {
  if (err <= errNone || err > errLast) return nullptr;
  return m_pErrorStrings[err];
}

const char16_t* TValue::GetExcelErrorString(unsigned char bCode) {
  return m_pErrorStrings[ExcelErrorToError(bCode)];
}

TValue::TError TValue::GetErrorToken(const char16_t* pwsz, int nLen) {
  if (pwsz == nullptr) return errNone;
  if (nLen < 0) nLen = strlenW(pwsz);
  for (int i = errNull; i < errFormula; ++i) {
    if (EqualsNoCaseW(pwsz, nLen, m_pErrorStrings[i])) return static_cast<TError>(i);
  }
  return errNone;
}

// ---- Hooks ----

ICellValueReader* TValue::SetCellValueReader(ICellValueReader* pReader) {
  return std::exchange(s_pCellReader, pReader);
}

TBaseCellFn TValue::SetBaseCellFn(TBaseCellFn pfn) { return std::exchange(s_pfnBaseCell, pfn); }
