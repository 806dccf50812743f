#include "formula/FormulaParser.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "base/A1Text.h"
#include "base/Cell.h"
#include "base/ZelException.h"
#include "book/BookBase.h"
#include "book/Name.h"
#include "book/SheetBase.h"
#include "eval/ExternFunc.h"
#include "eval/Func.h"
#include "extern/ExternSheet.h"
#include "extern/SupBook.h"
#include "formula/FormulaCell.h"
#include "platform/Locale.h"
#include "platform/ResourceIds.h"
#include "platform/Resources.h"
#include "platform/TextServices.h"

struct CFormulaParser::TParseOp {
  static constexpr int kMaxText = 8;
  enum EKind : unsigned char { okBinary = 0, okPrefix = 1, okPostfix = 2 };
  char16_t szText[kMaxText] = {};  // upper case
  int nLen = 0;
  unsigned char cToken = 0;
  int nLevel = 0;  // 0 binds tightest
  EKind nKind = okBinary;
  bool bRefOp = false;  // range, intersection, union: the operands are references
};

// One open function call.
struct CFormulaParser::TFrame {
  const TParseFunc* pFunc = nullptr;
  int nStart = 0;  // output position of the first argument
  int nArgs = 0;
  unsigned char cAttr = 0;  // 0, kAttrIf or kAttrChoose
  int nAttrs = 0;
  int anAttrPos[kMaxNestedCalls] = {};  // tAttr tokens written behind the arguments
};

// What a parsed sub-expression leaves for its consumer: the token whose class the
// consumer decides (-1: none) and the class that token has by nature.
struct CFormulaParser::TOperand {
  int nPos = -1;
  unsigned char cNatural = 0;
  bool bRefOp = false;  // the sub-expression ends in a reference operator
};

namespace {

struct TOpDef {
  unsigned nResId;
  unsigned char cToken;
  int nLevel;
  unsigned char nKind;  // TParseOp::EKind
};

// Token codes and levels of the operators whose texts come from the resources.
// Union takes the list separator and intersection is white space; both are added
// by hand.
constexpr TOpDef kOpDefs[] = {
    {IDS_OP_RANGE, CFormulaBase::tRange, 0, 0}, {IDS_OP_UMINUS, CFormulaBase::tUminus, 3, 1},
    {IDS_OP_UPLUS, CFormulaBase::tUplus, 3, 1}, {IDS_OP_PERCENT, CFormulaBase::tPercent, 4, 2},
    {IDS_OP_POWER, CFormulaBase::tPower, 5, 0}, {IDS_OP_DIV, CFormulaBase::tDiv, 6, 0},
    {IDS_OP_MUL, CFormulaBase::tMul, 6, 0},     {IDS_OP_SUB, CFormulaBase::tSub, 7, 0},
    {IDS_OP_ADD, CFormulaBase::tAdd, 7, 0},     {IDS_OP_CONCAT, CFormulaBase::tConcat, 8, 0},
    {IDS_OP_GT, CFormulaBase::tGT, 9, 0},       {IDS_OP_GE, CFormulaBase::tGE, 9, 0},
    {IDS_OP_LT, CFormulaBase::tLT, 9, 0},       {IDS_OP_LE, CFormulaBase::tLE, 9, 0},
    {IDS_OP_NE, CFormulaBase::tNE, 9, 0},       {IDS_OP_EQ, CFormulaBase::tEQ, 9, 0},
};
constexpr int kTopLevel = 9;

// 10^0 to 10^22: the powers of ten that doubles hold exactly.
constexpr double kExactPowersOf10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                       1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                       1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// BIFF8 error literals; keep in step with the error texts of TValue.
struct TErrorLiteral {
  const char16_t* pwszText;
  int nLen;
  unsigned char cCode;
};
constexpr TErrorLiteral kErrorLiterals[] = {
    {u"#NULL!", 6, 0x00}, {u"#DIV/0!", 7, 0x07}, {u"#VALUE!", 7, 0x0F}, {u"#REF!", 5, 0x17},
    {u"#NAME?", 6, 0x1D}, {u"#NUM!", 5, 0x24},   {u"#N/A", 4, 0x2A},
};

inline char16_t Upper(char16_t c) {
  if (c < 0x80) return (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 32) : c;
  return ToUpperChar(c);
}

// Classes of the ASCII units, one bit each; units from 0x80 on go to the platform's
// tables. Keep in step with the predicates below.
enum : unsigned char {
  kcWhite = 0x01,       // space, tab, carriage return, line feed
  kcDigit = 0x02,       // 0-9
  kcLetter = 0x04,      // A-Z, a-z
  kcNameStart = 0x08,   // first character of a name: letter, "_", "\"
  kcFuncChar = 0x10,    // later character of a function name: letter, digit, "_", "."
  kcNameChar = 0x20,    // later character of a defined name: kcFuncChar, "\", "?"
  kcEndsPrefix = 0x40,  // ends an unquoted sheet or book prefix (the terminator too)
};

constexpr std::array<unsigned char, 128> kAsciiClasses = [] {
  std::array<unsigned char, 128> a{};
  for (char16_t c : std::u16string_view(u" \t\r\n")) a[c] |= kcWhite | kcEndsPrefix;
  for (char16_t c = u'0'; c <= u'9'; c++) a[c] |= kcDigit | kcFuncChar | kcNameChar;
  for (char16_t c = u'A'; c <= u'Z'; c++) {
    a[c] |= kcLetter | kcNameStart | kcFuncChar | kcNameChar;
    a[c + 32] |= kcLetter | kcNameStart | kcFuncChar | kcNameChar;
  }
  a[u'_'] |= kcNameStart | kcFuncChar | kcNameChar;
  a[u'.'] |= kcFuncChar | kcNameChar;
  a[u'\\'] |= kcNameStart | kcNameChar;
  a[u'?'] |= kcNameChar;
  a[0] |= kcEndsPrefix;
  for (char16_t c : std::u16string_view(u"+-*/^&=<>(),;{}\"'%!")) a[c] |= kcEndsPrefix;
  return a;
}();

inline bool HasClass(char16_t c, unsigned char cClass) {
  return (kAsciiClasses[c] & cClass) != 0;  // c < 0x80
}
inline bool IsWhite(char16_t c) {
  if (c < 0x80) return HasClass(c, kcWhite);
  return c == 0x00A0 || c == 0x3000;
}
inline bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
inline bool IsAsciiLetter(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}
inline bool IsLetter(char16_t c) {
  if (c < 0x80) return HasClass(c, kcLetter);
  return !IsWhite(c) && IsLetterChar(c);
}
// First character of a function or defined name.
inline bool IsNameStart(char16_t c) {
  if (c < 0x80) return HasClass(c, kcNameStart);
  return IsLetter(c);
}
// Later characters of a function name.
inline bool IsFuncChar(char16_t c) {
  if (c < 0x80) return HasClass(c, kcFuncChar);
  return IsLetter(c) || IsDigitChar(c);
}
// Later characters of a defined name.
inline bool IsNameChar(char16_t c) {
  if (c < 0x80) return HasClass(c, kcNameChar);
  return IsFuncChar(c);
}
// Characters that end an unquoted sheet or book prefix.
inline bool EndsPrefix(char16_t c) {
  if (c < 0x80) return HasClass(c, kcEndsPrefix);
  return IsWhite(c);
}

bool EqualNoCase(const char16_t* p, const char16_t* pwszUpper, int nLen) {
  for (int i = 0; i < nLen; i++)
    if (Upper(p[i]) != pwszUpper[i]) return false;
  return true;
}

// A file name rejected as a book: empty name and extension, or a part that starts
// with a character no file name starts with.
bool IsBadBookPath(const char16_t* p, int nLen) {
  int nStart = 0;
  for (int i = 0; i < nLen; i++)
    if (p[i] == u'\\' || p[i] == u'/') nStart = i + 1;
  int nDot = nLen;
  for (int i = nLen - 1; i >= nStart; i--)
    if (p[i] == u'.') {
      nDot = i;
      break;
    }
  const int nName = nDot - nStart;
  const int nExt = nDot < nLen ? nLen - nDot - 1 : 0;
  if (nName == 0 && nExt == 0) return true;
  auto bad = [](char16_t c) {
    return std::u16string_view(u"/:*?\"<>|").find(c) != std::u16string_view::npos;
  };
  if (nName > 0 && bad(p[nStart])) return true;
  if (nExt > 0 && bad(p[nDot + 1])) return true;
  return false;
}

}  // namespace

// ---- CParseFuncIndex ------------------------------------------------------------

unsigned CParseFuncIndex::Hash(const char16_t* p, int nLen) {
  unsigned h = 2166136261u;
  for (int i = 0; i < nLen; i++) h = (h ^ Upper(p[i])) * 16777619u;
  return h;
}

void CParseFuncIndex::Grow() {
  const int nNewCap = m_nCapacity ? m_nCapacity * 2 : 256;
  std::unique_ptr<TSlot[]> pNew(new TSlot[static_cast<size_t>(nNewCap)]);
  for (int i = 0; i < m_nCapacity; i++) {
    const TSlot& s = m_pSlots[i];
    if (!s.pFunc) continue;
    unsigned j = s.nHash & static_cast<unsigned>(nNewCap - 1);
    while (pNew[j].pFunc) j = (j + 1) & static_cast<unsigned>(nNewCap - 1);
    pNew[j] = s;
  }
  m_pSlots = std::move(pNew);
  m_nCapacity = nNewCap;
}

void CParseFuncIndex::Add(const TParseFunc* pFunc, bool bLocal) {
  if (!pFunc || pFunc->nFunc == 255) return;
  const char16_t* pwsz = bLocal && pFunc->pwszLocalName ? pFunc->pwszLocalName : pFunc->pwszName;
  if (!pwsz || !*pwsz) return;
  const int nLen = static_cast<int>(std::char_traits<char16_t>::length(pwsz));
  if (Find(pwsz, nLen)) return;
  if ((m_nCount + 1) * 2 > m_nCapacity) Grow();
  const unsigned h = Hash(pwsz, nLen);
  unsigned j = h & static_cast<unsigned>(m_nCapacity - 1);
  while (m_pSlots[j].pFunc) j = (j + 1) & static_cast<unsigned>(m_nCapacity - 1);
  m_pSlots[j] = TSlot{pwsz, pFunc, h};
  m_nCount++;
}

const TParseFunc* CParseFuncIndex::Find(const char16_t* p, int nLen) const {
  if (!m_nCapacity || nLen <= 0) return nullptr;
  const unsigned h = Hash(p, nLen);
  for (unsigned j = h & static_cast<unsigned>(m_nCapacity - 1);;
       j = (j + 1) & static_cast<unsigned>(m_nCapacity - 1)) {
    const TSlot& s = m_pSlots[j];
    if (!s.pFunc) return nullptr;
    if (s.nHash == h && s.pwszName[nLen] == 0 && EqualNoCase(p, s.pwszName, nLen)) return s.pFunc;
  }
}

// ---- Construction ---------------------------------------------------------------

CFormulaParser::CFormulaParser(CBookBase* pBook, CSheetBase* pSheet, const TCell& base,
                               bool bEnglish)
    : CFormulaIterator(pBook, pSheet, base),
      m_bEnglish(bEnglish),
      m_pFrames(new TFrame[kMaxNestedCalls]) {
  Grow(m_pOut, m_nOutCap, 2048);
  Grow(m_pAdded, m_nAddedCap, 2048);
  m_sScratch.reserve(256);
}

CFormulaParser::~CFormulaParser() = default;

void CFormulaParser::SetContext(CBookBase* pBook, CSheetBase* pSheet, const TCell& base) {
  m_pBook = pBook;
  m_pSheet = pSheet;
  m_Base = base;
}

void CFormulaParser::SetFormulaType(EFormulaType type) {
  CFormulaIterator::SetFormulaType(type);
  m_bForce3d = type == ftChart || type == ftName || type == ftBuiltInName || type == ftExternName;
  m_bNo3d = type == ftShared || type == ftCondFormat || type == ftDataValid;
  // The formula's own result: a cell formula keeps references as references;
  // conditions and validations want values; names and linked formulas keep
  // references and take anything else as an array.
  if (type == ftCellValue || type == ftCondFormat || type == ftDataValid)
    m_cTypeClass = kClassValue;
  else if (type == ftName || type == ftBuiltInName || type == ftExternName || type == ftLinked)
    m_cTypeClass = 0;  // reference kept, else array
  else
    m_cTypeClass = kClassRef;
}

// ---- Default lookups ------------------------------------------------------------
// Functions come from the function registry, names from the book's name table,
// sheet prefixes from the book's supporting-book and extern-sheet tables.

namespace {

// The parser's descriptor of each registered function, refreshed from the registry
// at every registry lookup so that a body registered late or a reloaded local name
// is seen.
TParseFunc g_ParseFuncs[kNumFuncSlots];

// Built-in functions by ASCII name, one cache per mode, so that a call's name is not
// hashed and compared through the platform's case mapping and its descriptor not
// rebuilt every time. The entries hold while the registry's list head and the
// resource generation are what they were when the cache was filled: registering a
// function puts it at the head, and local names change only with the resources. A
// hit is also checked against its function's slot, so that a function unregistered
// from deeper in the list is not found. Misses go to the registry.
struct TFuncNameCache {
  static constexpr int kMaxName = 32;  // longer names are not cached
  static constexpr int kSlots = 512;   // a power of two
  static constexpr int kMaxEntries = kSlots / 2;
  // A name as the cache compares it: its first four units upper-cased, 16 bits each
  // and zero beyond the name, its length, and its text for the units after those.
  struct TKey {
    std::uint64_t nHead = 0;
    int nLen = 0;
    const char16_t* pText = nullptr;
  };
  struct TEntry {
    std::uint64_t nHead = 0;
    int nLen = 0;  // 0: free
    unsigned short nFunc = 0;
    const TFunc* pFunc = nullptr;
    char16_t szTail[kMaxName - 4] = {};  // the units after the head, upper case
  };

  TEntry aSlots[kSlots];
  int nCount = 0;
  const TFunc* pHead = nullptr;  // TFunc::m_pFirstFunc when the entries were made
  unsigned nResourceGen = 0;

  static unsigned AsciiUpper(unsigned c) { return c - (c - u'a' < 26u ? 32 : 0); }
  // The key of the nLen units at p; false for a name that is empty, too long or not
  // ASCII. The head is read without a loop: unit i, or the last unit again (then
  // masked off) where the name is shorter.
  static bool MakeKey(const char16_t* p, int nLen, TKey* pKey) {
    if (nLen <= 0 || nLen > kMaxName) return false;
    const int nLast = nLen - 1;
    unsigned nUnits = 0;
    std::uint64_t nHead = 0;
    for (int i = 0; i < 4; i++) {
      const unsigned c = p[i < nLast ? i : nLast] & (i <= nLast ? 0xFFFFu : 0u);
      nUnits |= c;
      nHead |= static_cast<std::uint64_t>(AsciiUpper(c) & 0xFFFF) << (16 * i);
    }
    for (int i = 4; i < nLen; i++) nUnits |= p[i];
    if (nUnits >= 0x80) return false;
    *pKey = TKey{nHead, nLen, p};
    return true;
  }
  static unsigned Hash(const TKey& key) {
    return static_cast<unsigned>(
        ((key.nHead ^ static_cast<std::uint64_t>(key.nLen)) * 0x9E3779B97F4A7C15ull) >> 40);
  }
  bool IsCurrent() const {
    return nCount > 0 && pHead == TFunc::m_pFirstFunc && nResourceGen == GetResourceGeneration();
  }
  static bool Matches(const TEntry& e, const TKey& key) {
    if (e.nHead != key.nHead || e.nLen != key.nLen) return false;
    for (int i = 4; i < key.nLen; i++)
      if (AsciiUpper(key.pText[i]) != e.szTail[i - 4]) return false;
    return true;
  }
  // The slot of the key, or the free slot where it would go.
  TEntry& Probe(const TKey& key) {
    for (unsigned j = Hash(key) & (kSlots - 1);; j = (j + 1) & (kSlots - 1)) {
      TEntry& e = aSlots[j];
      if (e.nLen == 0 || Matches(e, key)) return e;
    }
  }
  const TEntry* Find(const TKey& key) {
    const TEntry& e = Probe(key);
    if (e.nLen == 0 || TFunc::m_pFunc[e.nFunc] != e.pFunc) return nullptr;
    return &e;
  }
  // Enters what the registry found for the key; called right after the lookup, so
  // that a registry completed by that lookup is the state recorded.
  void Add(const TKey& key, const TFunc* pFunc) {
    const unsigned nFunc = pFunc->GetFuncNumber();
    if (nFunc >= kNumFuncSlots || TFunc::m_pFunc[nFunc] != pFunc) return;
    if (!IsCurrent()) {
      for (TEntry& e : aSlots) e = TEntry{};
      nCount = 0;
      pHead = TFunc::m_pFirstFunc;
      nResourceGen = GetResourceGeneration();
    }
    TEntry& e = Probe(key);
    if (e.nLen == 0) {
      if (nCount >= kMaxEntries) return;
      nCount++;
      e.nHead = key.nHead;
      e.nLen = key.nLen;
      for (int i = 4; i < key.nLen; i++)
        e.szTail[i - 4] = static_cast<char16_t>(AsciiUpper(key.pText[i]));
    }
    e.nFunc = static_cast<unsigned short>(nFunc);
    e.pFunc = pFunc;
  }
};
TFuncNameCache g_aFuncNameCaches[2];  // English, local

// The registry's function of the nLen units at p (into *ppFunc) and its descriptor,
// refreshed; null when there is none.
const TParseFunc* FindRegisteredFunc(const char16_t* p, int nLen, bool bEnglish,
                                     const TFunc** ppFunc) {
  const TFunc* pFunc = TFunc::FindFunc(p, nLen, bEnglish ? 1 : 0);
  *ppFunc = pFunc;
  if (pFunc == nullptr) return nullptr;
  TParseFunc& desc = g_ParseFuncs[pFunc->GetFuncNumber()];
  desc.pwszName = pFunc->GetName();
  desc.pwszLocalName = pFunc->GetLocalName();
  desc.nFunc = pFunc->GetFuncNumber();
  desc.nMinArgs = static_cast<unsigned char>(pFunc->GetMinArgs());
  desc.nMaxArgs = static_cast<unsigned char>(pFunc->GetMaxArgs());
  desc.nResultClass = pFunc->GetResultClass();
  unsigned wClasses = 0;
  for (int i = 0; i < 8; i++)
    wClasses |= static_cast<unsigned>(pFunc->GetArgClass(i)) << (i < 7 ? 2 * i : 14);
  desc.wArgClasses = static_cast<unsigned short>(wClasses);
  desc.bVolatile = pFunc->IsVolatile();
  desc.bVarArgs = pFunc->GetMinArgs() != pFunc->GetMaxArgs();
  return &desc;
}

// The 1-based index of the extern name of pSupBook spelt by the nLen units at p,
// added when bAdd; 0 when none.
int FindSupBookName(CSupBook* pSupBook, const char16_t* p, int nLen, bool bAdd) {
  int nIndex = -1;
  if (pSupBook->FindExternName(p, nLen, &nIndex)) return nIndex + 1;
  if (!bAdd) return 0;
  pSupBook->AddExternName(p, nLen, &nIndex);
  return nIndex + 1;
}

}  // namespace

const TParseFunc* CFormulaParser::FindFunction(const char16_t* p, int nLen) {
  // ASCII names go through the name cache first; its key is the name upper-cased,
  // which is all the registry's comparison looks at for ASCII text.
  TFuncNameCache& cache = g_aFuncNameCaches[m_bEnglish ? 0 : 1];
  TFuncNameCache::TKey key;
  const TFunc* pFunc = nullptr;
  if (!TFuncNameCache::MakeKey(p, nLen, &key))
    return FindRegisteredFunc(p, nLen, m_bEnglish, &pFunc);
  if (cache.IsCurrent()) {
    if (const TFuncNameCache::TEntry* pEntry = cache.Find(key)) return &g_ParseFuncs[pEntry->nFunc];
  }
  const TParseFunc* pDesc = FindRegisteredFunc(p, nLen, m_bEnglish, &pFunc);
  if (pDesc != nullptr) cache.Add(key, pFunc);
  return pDesc;
}

// External functions (and the host's add-ins) are called as function 255 with their
// name as a tNameX of the book's add-in supporting book.
bool CFormulaParser::FindExternFunction(const char16_t* p, int nLen, int* pFunc, int* pExternSheet,
                                        int* pNameIndex) {
  if (m_pBook == nullptr) return false;
  TExternFunc* pExtern = TExternFunc::FindFunc(p, nLen, m_bEnglish ? 1 : 0);
  if (pExtern != nullptr) {
    pExtern->SetOwner(m_pBook);
  } else {
    m_sName.assign(p, static_cast<size_t>(nLen));
    if (m_pBook->FindExternFunc(m_sName.c_str()) == nullptr) return false;
  }
  const int nSupBook = m_pBook->MakeSupBook(nullptr, nullptr, CSupBook::kKindAddIn);
  const int nExtern = m_pBook->MakeExternSheet(nSupBook, CExternSheet::kSheetForNames,
                                               CExternSheet::kSheetForNames);
  // The name is stored as the function's English name, so the call unparses and
  // evaluates whatever the parser's mode was.
  const char16_t* pwszName = pExtern != nullptr ? pExtern->GetName() : m_sName.c_str();
  int nNameLen = 0;
  while (pwszName[nNameLen] != 0) nNameLen++;
  *pFunc = kFuncExtern;
  *pExternSheet = nExtern;
  *pNameIndex = FindSupBookName(m_pBook->GetSupBook(nSupBook), pwszName, nNameLen, true);
  return true;
}

int CFormulaParser::FindSheet(const char16_t* p, int nLen) {
  if (!m_pBook) return -1;
  m_sName.assign(p, static_cast<size_t>(nLen));
  const CSheetBase* pSheet = m_pBook->FindSheetBase(m_sName.c_str(), /*bIgnoreCase=*/true);
  return pSheet ? pSheet->GetSheetIndex() : -1;
}

int CFormulaParser::FindExternSheet(const TExternPrefix& prefix, bool bForName) {
  if (m_pBook == nullptr) return -1;
  if (prefix.nBookLen == 0) {
    // Sheets of this book.
    if (prefix.nSheet1Len == 0) return -1;
    int nSheet1 = FindSheet(prefix.pSheet1, prefix.nSheet1Len);
    int nSheet2 = prefix.nSheet2Len > 0 ? FindSheet(prefix.pSheet2, prefix.nSheet2Len) : nSheet1;
    if (nSheet1 < 0 || nSheet2 < 0) return -1;
    if (nSheet2 < nSheet1) std::swap(nSheet1, nSheet2);
    return m_pBook->MakeExternSheet(m_pBook->GetExternTables().MakeSelfSupBook(), nSheet1, nSheet2);
  }
  std::u16string sTitle(prefix.pBook, static_cast<size_t>(prefix.nBookLen));
  CBookBase* pRefBook = CBookBase::FindBook(sTitle.c_str());
  const int nSupBook = m_pBook->MakeSupBook(sTitle.c_str(), pRefBook);
  if (prefix.nSheet1Len == 0) {
    if (!bForName) return -1;
    return m_pBook->MakeExternSheet(nSupBook, CExternSheet::kSheetForNames,
                                    CExternSheet::kSheetForNames);
  }
  // An open book is addressed by its own sheet numbers, a closed one by the entries
  // of its supporting book's sheet list.
  auto sheetIndex = [&](const char16_t* p, int nLen) {
    std::u16string sSheet(p, static_cast<size_t>(nLen));
    if (pRefBook != nullptr) {
      const CSheetBase* pSheet = pRefBook->FindSheetBase(sSheet.c_str(), /*bIgnoreCase=*/true);
      return pSheet != nullptr ? pSheet->GetSheetIndex() : -1;
    }
    CSupBook* pSupBook = m_pBook->GetSupBook(nSupBook);
    int nIndex = -1;
    if (pSupBook->FindSheet(sSheet.c_str(), &nIndex) == nullptr)
      pSupBook->AddSheet(sSheet.c_str(), &nIndex);
    return nIndex;
  };
  int nSheet1 = sheetIndex(prefix.pSheet1, prefix.nSheet1Len);
  int nSheet2 = prefix.nSheet2Len > 0 ? sheetIndex(prefix.pSheet2, prefix.nSheet2Len) : nSheet1;
  if (nSheet1 < 0 || nSheet2 < 0) return -1;
  if (nSheet2 < nSheet1) std::swap(nSheet1, nSheet2);
  return m_pBook->MakeExternSheet(nSupBook, nSheet1, nSheet2);
}

int CFormulaParser::FindOwnExternSheet(int nSheet) {
  if (m_pBook == nullptr || nSheet < 0) return -1;
  return m_pBook->MakeExternSheet(m_pBook->GetExternTables().MakeSelfSupBook(), nSheet, nSheet);
}

int CFormulaParser::FindName(const char16_t* p, int nLen, bool bCreate) {
  if (m_pBook == nullptr) return 0;
  const int nSheet = m_pSheet != nullptr ? m_pSheet->GetSheetIndex() : CName::kBookLevel;
  const int nIndex = m_pBook->FindName(p, nLen, nSheet);
  if (nIndex != 0 || !bCreate) return nIndex;
  m_sName.assign(p, static_cast<size_t>(nLen));
  if (!CName::ValidName(m_sName.c_str())) return 0;
  // An undefined book-level name: it evaluates to #NAME? until it is given a formula.
  auto pName = std::make_unique<CName>(m_sName.c_str());
  const int nAdded = m_pBook->AddName(pName.get());
  pName.release();
  return nAdded;
}

int CFormulaParser::FindExternName(int nExternSheet, const char16_t* p, int nLen, bool bCreate) {
  if (m_pBook == nullptr) return 0;
  const CExternSheet* pExtern = m_pBook->GetExternSheet(nExternSheet);
  CSupBook* pSupBook = pExtern != nullptr ? m_pBook->GetSupBook(pExtern->GetSupBook()) : nullptr;
  if (pSupBook == nullptr) return 0;
  if (pSupBook->IsSelf()) return FindName(p, nLen, bCreate);
  // A name of an open book must exist there; a closed book cannot be asked, so the
  // reference is taken as written.
  CBookBase* pRefBook = pSupBook->GetRefBook();
  const bool bKnown = pRefBook == nullptr || pRefBook->FindName(p, nLen, CName::kBookLevel) != 0;
  return FindSupBookName(pSupBook, p, nLen, bKnown || bCreate);
}

int CFormulaParser::GetFormulaSheetIndex() { return m_pSheet ? m_pSheet->GetSheetIndex() : 0; }

namespace {

// A column part of a whole-column span: optional "$", one to three letters naming
// column A to IV. Advances *pp; -1 when there is none.
int ReadSpanColumn(const char16_t** pp, bool* pbAbs) {
  const char16_t* p = *pp;
  *pbAbs = *p == u'$';
  if (*pbAbs) ++p;
  int nCol = 0, nLetters = 0;
  while (nLetters < 3 && ((*p >= u'A' && *p <= u'Z') || (*p >= u'a' && *p <= u'z'))) {
    nCol = nCol * 26 + ((*p | 0x20) - u'a' + 1);
    ++p;
    ++nLetters;
  }
  if (nLetters == 0 || nCol - 1 > kMaxCol) return -1;
  *pp = p;
  return nCol - 1;
}

// "A:C", "$A:$C": every row of the columns, the rows fixed.
bool ReadColumnSpan(const char16_t** ppText, int* pFlags1, int* pFlags2, TRange* pRange) {
  const char16_t* p = *ppText;
  bool bAbs1 = false, bAbs2 = false;
  const int nCol1 = ReadSpanColumn(&p, &bAbs1);
  if (nCol1 < 0 || *p != u':') return false;
  ++p;
  const int nCol2 = ReadSpanColumn(&p, &bAbs2);
  if (nCol2 < 0) return false;
  const char16_t c = *p;
  if ((c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') ||
      c == u'_' || c == u'.' || c == u'(' || c == u'!')
    return false;
  *pFlags1 = (bAbs1 ? 1 : 0) | 2;
  *pFlags2 = (bAbs2 ? 1 : 0) | 2;
  if (nCol1 > nCol2) std::swap(*pFlags1, *pFlags2);
  pRange->Set(0, std::min(nCol1, nCol2), kMaxRow, std::max(nCol1, nCol2));
  *ppText = p;
  return true;
}

// A row part of a whole-row span: optional "$", the row number 1 to 65536. Advances
// *pp; -1 when there is none.
int ReadSpanRow(const char16_t** pp, bool* pbAbs) {
  const char16_t* p = *pp;
  *pbAbs = *p == u'$';
  if (*pbAbs) ++p;
  int nRow = 0;
  if (!CvtRNr(&p, &nRow)) return -1;
  *pp = p;
  return nRow;
}

// "2:3", "$5:$5": every column of the rows, the columns fixed.
bool ReadRowSpan(const char16_t** ppText, int* pFlags1, int* pFlags2, TRange* pRange) {
  const char16_t* p = *ppText;
  bool bAbs1 = false, bAbs2 = false;
  const int nRow1 = ReadSpanRow(&p, &bAbs1);
  if (nRow1 < 0 || *p != u':') return false;
  ++p;
  const int nRow2 = ReadSpanRow(&p, &bAbs2);
  if (nRow2 < 0) return false;
  const char16_t c = *p;
  if ((c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') ||
      c == u'_' || c == u'.' || c == u'(' || c == u'!')
    return false;
  *pFlags1 = (bAbs1 ? 2 : 0) | 1;
  *pFlags2 = (bAbs2 ? 2 : 0) | 1;
  if (nRow1 > nRow2) std::swap(*pFlags1, *pFlags2);
  pRange->Set(std::min(nRow1, nRow2), 0, std::max(nRow1, nRow2), kMaxCol);
  *ppText = p;
  return true;
}

// A plain address "[$]col[$]row" standing before a character that continues no
// reading of it (not a name character, not ":"): the common case, read in one pass.
// False, with nothing advanced, for anything else; the general readers then decide,
// and where this succeeds they give the same address.
bool ReadPlainAddress(const char16_t** ppText, int* pFlags, int* pRow, int* pCol) {
  const char16_t* p = *ppText;
  int nFlags = 0;
  if (*p == u'$') {
    nFlags |= kAbsCol;
    ++p;
  }
  if (!IsAsciiLetter(*p)) return false;
  int nCol = (*p++ | 0x20) - u'a';
  if (IsAsciiLetter(*p)) {
    nCol = (nCol + 1) * 26 + ((*p++ | 0x20) - u'a');
    if (nCol > kMaxCol) return false;
  }
  if (*p == u'$') {
    nFlags |= kAbsRow;
    ++p;
  }
  if (!IsDigit(*p)) return false;
  int nRow = 0;
  do {
    nRow = nRow * 10 + (*p++ - u'0');
    if (nRow > kRowCount) return false;
  } while (IsDigit(*p));
  if (nRow == 0) return false;
  if (*p >= 0x80 || HasClass(*p, kcNameChar) || *p == u':') return false;
  *pFlags = nFlags;
  *pRow = nRow - 1;
  *pCol = nCol;
  *ppText = p;
  return true;
}

}  // namespace

int CFormulaParser::NextRangeToken(const char16_t** ppText, int* pIsRange, unsigned char* pFlags1,
                                   unsigned char* pFlags2, TRange* pRange) {
  // Past an optional "$", a digit can only start a whole-row span and a letter a
  // whole-column span or an address; anything else starts no reference. The two
  // commonest answers, a number's digits and a plain address, are given here; the
  // rest goes to the full reading.
  const char16_t* p = *ppText;
  const char16_t c = p[*p == u'$' ? 1 : 0];
  if (IsDigit(c)) {
    const char16_t* q = p + (*p == u'$' ? 2 : 1);
    while (IsDigit(*q)) q++;
    if (*q != u':') return 0;
  } else if (!IsAsciiLetter(c)) {
    return 0;
  } else {
    int nFlags = 0, nRow = 0, nCol = 0;
    if (ReadPlainAddress(ppText, &nFlags, &nRow, &nCol)) {
      *pIsRange = 0;
      *pFlags1 = *pFlags2 = static_cast<unsigned char>(nFlags);
      pRange->Set(nRow, nCol, nRow, nCol);
      return 1;
    }
  }
  return ReadRangeToken(ppText, pIsRange, pFlags1, pFlags2, pRange);
}

// NextRangeToken's full reading: a whole-column span, a whole-row span, an address
// or a range of two.
int CFormulaParser::ReadRangeToken(const char16_t** ppText, int* pIsRange, unsigned char* pFlags1,
                                   unsigned char* pFlags2, TRange* pRange) {
  int nFlags1 = 0, nFlags2 = 0;
  if (ReadColumnSpan(ppText, &nFlags1, &nFlags2, pRange) ||
      ReadRowSpan(ppText, &nFlags1, &nFlags2, pRange)) {
    *pIsRange = 1;
  } else if (!CvtRange(ppText, pIsRange, &nFlags1, &nFlags2, pRange)) {
    return 0;
  }
  *pFlags1 = static_cast<unsigned char>(nFlags1);
  *pFlags2 = static_cast<unsigned char>(nFlags2);
  return 1;
}

// ---- Output buffers -------------------------------------------------------------

void CFormulaParser::Grow(std::unique_ptr<unsigned char[]>& p, int& nCap, int nNeed) {
  if (nNeed <= nCap) return;
  int nNew = nCap ? nCap : 2048;
  while (nNew < nNeed) nNew *= 2;
  unsigned char* pNew = new (std::nothrow) unsigned char[static_cast<size_t>(nNew)];
  if (!pNew) CZelException::ThrowMemory();
  if (nCap) std::memcpy(pNew, p.get(), static_cast<size_t>(nCap));
  p.reset(pNew);
  nCap = nNew;
}

inline unsigned char* CFormulaParser::Out(int nBytes) {
  if (m_nOut + nBytes > m_nOutCap) Grow(m_pOut, m_nOutCap, m_nOut + nBytes);
  unsigned char* p = m_pOut.get() + m_nOut;
  m_nOut += nBytes;
  return p;
}

inline unsigned char* CFormulaParser::OutAdded(int nBytes) {
  if (m_nAdded + nBytes > m_nAddedCap) Grow(m_pAdded, m_nAddedCap, m_nAdded + nBytes);
  unsigned char* p = m_pAdded.get() + m_nAdded;
  m_nAdded += nBytes;
  return p;
}

void CFormulaParser::Insert(int nPos, int nBytes) {
  Out(nBytes);
  std::memmove(m_pOut.get() + nPos + nBytes, m_pOut.get() + nPos,
               static_cast<size_t>(m_nOut - nBytes - nPos));
}

void CFormulaParser::InsertAdded(int nPos, int nBytes) {
  OutAdded(nBytes);
  std::memmove(m_pAdded.get() + nPos + nBytes, m_pAdded.get() + nPos,
               static_cast<size_t>(m_nAdded - nBytes - nPos));
}

// ---- Parse ----------------------------------------------------------------------

void CFormulaParser::SetError(int nError, const char16_t* pAt) {
  if (m_nError) return;
  m_nError = nError;
  m_nErrorPos = pAt ? static_cast<int>(pAt - m_pText) : 0;
}

void CFormulaParser::Reset(const char16_t* pwszText) {
  m_pText = m_p = m_pTokStart = pwszText;
  m_nKind = lkEnd;
  m_nOut = kPrefixLen;
  m_nAdded = 0;
  m_nError = m_nErrorPos = 0;
  m_bVolatile = false;
  m_bInArgs = m_bInArray = false;
  m_nDepth = 0;
  m_nFrames = 0;
  if (m_bEnglish) {
    m_cDecimal = u'.';
    m_cArgSep = m_cUnion = u',';
  } else {
    const TLocaleSettings& ls = GetLocaleSettings();
    m_cDecimal = ls.cDecimal;
    m_cArgSep = m_cUnion = ls.cList;
  }
  EnsureOps();
}

void CFormulaParser::EnsureOps() {
  // Two caches, English and local; the union text is the only difference.
  struct TCache {
    TParseOp aOps[std::size(kOpDefs) + 1];
    int nOps = 0;
    // Per ASCII first character (upper case), the operators that start with it: bit i
    // for aOps[i]; prefix operators in the first half, the others in the second.
    unsigned anStarts[2 * 128] = {};
    unsigned nResourceGen = ~0u;
    unsigned nLocaleGen = ~0u;
    bool bBuilt = false;
  };
  static_assert(std::size(kOpDefs) + 1 <= 32, "one bit per operator");
  static TCache s_aCache[2];
  TCache& c = s_aCache[m_bEnglish ? 0 : 1];
  const unsigned nResGen = GetResourceGeneration();
  const unsigned nLocGen = m_bEnglish ? 0 : GetLocaleGeneration();
  if (!c.bBuilt || c.nResourceGen != nResGen || c.nLocaleGen != nLocGen) {
    c.nOps = 0;
    for (const TOpDef& d : kOpDefs) {
      const char16_t* pwsz = LoadResourceString(d.nResId);
      if (!pwsz) continue;
      TParseOp& op = c.aOps[c.nOps];
      op.nLen = 0;
      while (pwsz[op.nLen] && op.nLen < TParseOp::kMaxText - 1) {
        op.szText[op.nLen] = Upper(pwsz[op.nLen]);
        op.nLen++;
      }
      op.szText[op.nLen] = 0;
      bool bAllWhite = true;
      for (int i = 0; i < op.nLen; i++) bAllWhite = bAllWhite && IsWhite(op.szText[i]);
      if (op.nLen == 0 || bAllWhite) continue;
      op.cToken = d.cToken;
      op.nLevel = d.nLevel;
      op.nKind = static_cast<TParseOp::EKind>(d.nKind);
      op.bRefOp = d.cToken == tRange;
      c.nOps++;
    }
    TParseOp& un = c.aOps[c.nOps++];
    un.szText[0] = m_cUnion;
    un.szText[1] = 0;
    un.nLen = 1;
    un.cToken = tList;
    un.nLevel = 2;
    un.nKind = TParseOp::okBinary;
    un.bRefOp = true;
    std::fill(std::begin(c.anStarts), std::end(c.anStarts), 0u);
    for (int i = 0; i < c.nOps; i++) {
      const TParseOp& op = c.aOps[i];
      if (op.szText[0] >= 0x80) continue;
      c.anStarts[(op.nKind == TParseOp::okPrefix ? 0 : 128) + op.szText[0]] |= 1u << i;
    }
    c.nResourceGen = nResGen;
    c.nLocaleGen = nLocGen;
    c.bBuilt = true;
  }
  m_pOps = c.aOps;
  m_nOps = c.nOps;
  m_pOpStarts = c.anStarts;
}

int CFormulaParser::Parse(const char16_t* pwszText, EFormulaType type) {
  SetFormulaType(type);
  Reset(pwszText ? pwszText : u"");
  Next(false);
  TOperand top = ParseExpr(kTopLevel);
  if (!m_nError && m_nKind != lkEnd) SetError(perUnexpected);
  if (!m_nError) {
    FixOperand(top, m_cTypeClass);
    const int nLen = m_nOut - (m_bVolatile ? 0 : kPrefixLen);
    if (nLen > 0xFFFF || m_nAdded > 0xFFFF) SetError(perUnexpected, m_p);
  }
  if (m_nError) {
    if (m_nError == perFewArgs) return kResultFewArgs;
    if (m_nError == perManyArgs) return kResultManyArgs;
    return kResultError;
  }
  unsigned char* p = m_pOut.get();
  p[0] = tAttr;
  p[1] = kAttrVolatile;
  p[2] = p[3] = 0;
  return kResultOk;
}

int CFormulaParser::Parse(const char16_t* pwszText, CFormula** ppFormula, EFormulaType type) {
  const int nResult = Parse(pwszText, type);
  if (nResult != kResultOk || !ppFormula) return nResult;
  if (!*ppFormula) *ppFormula = new CFormula;
  GetParseResults(*ppFormula);
  return nResult;
}

void CFormulaParser::GetParseResults(CFormula* pFormula) const {
  const int nSkip = m_bVolatile ? 0 : kPrefixLen;
  pFormula->Set(m_pOut.get() + nSkip, m_nOut - nSkip, m_pAdded.get(), m_nAdded);
}

void CFormulaParser::GetParseResults(CFormulaCell* pCell) const {
  GetParseResults(&pCell->InitFormula(GetFormulaType()));
}

// ---- Lexer ----------------------------------------------------------------------

// Compiled once for each position. The commonest tokens met without white space
// are taken here, with only the tests that tell them, before the general path
// (LexToken), which comes to the same reading in its own order: behind an operand
// a separator or ")", which leave the call and extern fields alone (only the token
// that set them reads them); as an operand a number or a word.
template <bool bOperator>
void CFormulaParser::NextToken() {
  const char16_t c = *m_p;
  if constexpr (bOperator) {
    if (c == m_cArgSep && (m_bInArgs || m_bInArray)) {
      m_pTokStart = m_p++;
      m_nKind = lkSep;
      return;
    }
    if (c == u')' && c != m_cArgSep) {
      m_pTokStart = m_p++;
      m_nKind = lkClose;
      return;
    }
    if (c < 0x80 && c != u')' && c != u'}' && c != u';' &&
        LexSingleOperator(m_pOpStarts[128 + Upper(c)]))
      return;
  } else {
    const bool bDigit = IsDigit(c);
    if (bDigit ||
        (IsAsciiLetter(c) && c != m_cDecimal && c != m_cArgSep && m_pOpStarts[Upper(c)] == 0)) {
      m_pFunc = nullptr;
      m_nExternFunc = 0;
      m_nExternSheet = -1;
      m_pTokStart = m_p;
      if (!bDigit) {
        if (!LexWord()) m_nKind = lkBad;
      } else if (!m_bInArray &&
                 NextRangeToken(&m_p, &m_nIsRange, &m_cFlags1, &m_cFlags2, &m_Range)) {
        m_nKind = lkRef;  // "5:5" is a whole row, not the number 5
      } else if (!LexNumber()) {
        m_nKind = lkBad;
      }
      return;
    }
    if (c < 0x80 && c != m_cDecimal && c != m_cArgSep && c != u')' && c != u'}' && c != u';') {
      const unsigned nStarts = m_pOpStarts[Upper(c)];
      if (c == u'(' && nStarts == 0) {
        m_pTokStart = m_p++;
        m_nKind = lkOpen;
        return;
      }
      if (LexSingleOperator(nStarts)) return;
    }
  }
  LexToken(bOperator);
}

// The operator of the start set nStarts when the set holds one operator of one
// unit: nothing longer can start here, so it is what LexOperator would find.
inline bool CFormulaParser::LexSingleOperator(unsigned nStarts) {
  if (nStarts == 0 || (nStarts & (nStarts - 1)) != 0) return false;
  const TParseOp& op = m_pOps[std::countr_zero(nStarts)];
  if (op.nLen != 1) return false;
  m_pTokStart = m_p++;
  m_pOp = &op;
  m_nKind = lkOp;
  return true;
}

// Out of line, so that the short cuts above do not carry its register saves.
void CFormulaParser::LexToken(bool bOperator) {
  m_pFunc = nullptr;
  m_nExternFunc = 0;
  m_nExternSheet = -1;
  const char16_t* pStart = m_p;
  while (IsWhite(*m_p)) m_p++;
  const bool bWhite = m_p != pStart;
  m_pTokStart = m_p;
  const char16_t c = *m_p;
  if (c == 0) {
    m_nKind = lkEnd;
    return;
  }
  if (!bOperator && (IsDigit(c) || (c == m_cDecimal && IsDigit(m_p[1])))) {
    // "5:5" is a whole row, not the number 5.
    if (!m_bInArray && IsDigit(c) &&
        NextRangeToken(&m_p, &m_nIsRange, &m_cFlags1, &m_cFlags2, &m_Range)) {
      m_nKind = lkRef;
      return;
    }
    if (!LexNumber()) m_nKind = lkBad;
    return;
  }
  if (c == m_cArgSep && (m_bInArgs || m_bInArray)) {
    m_p++;
    m_nKind = lkSep;
    return;
  }
  if (c != u')' && c != u'}' && c != u';') {
    // The ASCII start table tells without a call that no operator starts here.
    if ((c >= 0x80 || m_pOpStarts[(bOperator ? 128 : 0) + Upper(c)] != 0) && LexOperator(bOperator))
      return;
    if (bOperator && bWhite) {
      // White space between two operands is the intersection operator.
      static const TParseOp s_Isect = [] {
        TParseOp op;
        op.szText[0] = u' ';
        op.nLen = 1;
        op.cToken = tIsect;
        op.nLevel = 1;
        op.bRefOp = true;
        return op;
      }();
      m_pTokStart = pStart;
      m_pOp = &s_Isect;
      m_nKind = lkOp;
      return;
    }
  }
  switch (c) {
    case u')':
      m_p++;
      m_nKind = lkClose;
      return;
    case u'(':
      m_p++;
      m_nKind = lkOpen;
      return;
    case u'{':
      m_p++;
      m_nKind = lkArrOpen;
      return;
    case u'}':
      m_p++;
      m_nKind = lkArrClose;
      return;
    case u';':
      m_p++;
      m_nKind = lkRowSep;
      return;
    case u'"':
      if (!LexString()) m_nKind = lkBad;
      return;
    default:
      break;
  }
  m_nKind = lkBad;
  if (bOperator) return;
  if (c == u'#') {
    if (LexErrorLiteral()) return;
    m_nKind = lkBad;
    return;
  }
  if (c == u'\'') {
    // 'quoted prefix'! with '' standing for one apostrophe; the unparser doubles
    // full-width apostrophes too, so a doubled one also stands for one.
    const char16_t* q = m_p + 1;
    m_sScratch.clear();
    for (;;) {
      if (*q == 0) return;
      if (*q == u'\'') {
        if (q[1] != u'\'') break;
        q++;
      } else if (*q == u'\uFF07' && q[1] == u'\uFF07') {
        q++;
      }
      m_sScratch.push_back(*q++);
    }
    if (q[1] != u'!') return;
    if (!LexPrefixed(q + 2)) m_nKind = lkBad;
    return;
  }
  if (!LexWord()) m_nKind = lkBad;
}

bool CFormulaParser::LexNumber() {
  // Plain decimals (no exponent) of at most 19 digits whose digits, read as one
  // integer, stay below 2^53, and with at most 22 digits after the decimal separator:
  // both that integer and the power of ten are exact doubles, so their quotient is
  // the correctly rounded value, as from_chars would give.
  {
    const char16_t* p = m_p;
    unsigned long long nMantissa = 0;
    int nIntDigits = 0, nFracDigits = 0;
    while (IsDigit(*p)) {
      nMantissa = nMantissa * 10 + static_cast<unsigned>(*p++ - u'0');
      nIntDigits++;
    }
    const unsigned long long nIntPart = nMantissa;
    bool bFracZero = true;
    if (*p == m_cDecimal && (IsDigit(p[1]) || nIntDigits > 0)) {
      p++;
      while (IsDigit(*p)) {
        bFracZero = bFracZero && *p == u'0';
        nMantissa = nMantissa * 10 + static_cast<unsigned>(*p++ - u'0');
        nFracDigits++;
      }
    }
    const bool bExponent = (*p == u'E' || *p == u'e') &&
                           (IsDigit(p[1]) || ((p[1] == u'+' || p[1] == u'-') && IsDigit(p[2])));
    if (!bExponent && nIntDigits + nFracDigits <= 19 && nMantissa < (1ull << 53) &&
        nFracDigits <= 22 && (nFracDigits > 0 || nIntDigits <= 15)) {
      double r = static_cast<double>(nMantissa);
      if (nFracDigits > 0) r /= kExactPowersOf10[nFracDigits];
      m_p = p;
      m_nKind = lkNumber;
      m_rNumber = r;
      // Whole exactly when the fraction digits are all zero: a nonzero one puts the
      // value at least 10^-k from every integer, and with fewer than 2^53 as the digits'
      // integer that is more than half the spacing of doubles there, so rounding
      // cannot land on an integer either.
      m_bIsInt = bFracZero && nIntPart <= 65535;
      m_wInt = m_bIsInt ? static_cast<unsigned short>(nIntPart) : 0;
      return true;
    }
  }
  return LexNumberGeneral();
}

// Any number: digits [decimal digits] [E [sign] digits], read as ASCII for
// from_chars. Out of line, so that the common case above does without its frame.
bool CFormulaParser::LexNumberGeneral() {
  char szBuf[80];
  std::string sLong;
  const char16_t* p = m_p;
  int n = 0;
  auto put = [&](char16_t c) {
    if (n < static_cast<int>(sizeof szBuf) - 1)
      szBuf[n] = static_cast<char>(c);
    else {
      if (sLong.empty()) sLong.assign(szBuf, static_cast<size_t>(n));
      sLong.push_back(static_cast<char>(c));
    }
    n++;
  };
  bool bInt = true;
  unsigned long long nValue = 0;
  while (IsDigit(*p)) {
    if (nValue < 100000000000000ull)
      nValue = nValue * 10 + static_cast<unsigned>(*p - u'0');
    else
      bInt = false;
    put(*p++);
  }
  if (*p == m_cDecimal && IsDigit(p[1])) {
    bInt = false;
    put(u'.');
    p++;
    while (IsDigit(*p)) put(*p++);
  } else if (*p == m_cDecimal && p != m_p) {
    put(u'.');  // "1." reads as 1
    p++;
  }
  if ((*p == u'E' || *p == u'e') &&
      (IsDigit(p[1]) || ((p[1] == u'+' || p[1] == u'-') && IsDigit(p[2])))) {
    bInt = false;
    put(u'e');
    p++;
    if (*p == u'+' || *p == u'-') put(*p++);
    while (IsDigit(*p)) put(*p++);
  }
  double r;
  if (bInt) {
    r = static_cast<double>(nValue);
  } else {
    const char* pBegin = sLong.empty() ? szBuf : sLong.data();
    const auto res = std::from_chars(pBegin, pBegin + n, r);
    if (res.ec != std::errc() || !std::isfinite(r)) {
      SetError(perUnexpected);
      return false;
    }
  }
  m_p = p;
  m_nKind = lkNumber;
  m_rNumber = r;
  m_bIsInt = r >= 0 && r <= 65535 && r == std::floor(r);
  m_wInt = m_bIsInt ? static_cast<unsigned short>(r) : 0;
  return true;
}

bool CFormulaParser::LexString() {
  const char16_t* p = m_p + 1;
  int nCount = 0;
  for (;;) {
    if (*p == 0) {
      SetError(perNoEndQuote);
      return false;
    }
    if (*p == u'"') {
      if (p[1] != u'"') break;
      p++;
    }
    p++;
    nCount++;
  }
  if (nCount > kMaxStringLen) {
    SetError(perStringTooLong);
    return false;
  }
  m_pStr = m_p + 1;
  m_nStrRaw = static_cast<int>(p - m_pStr);
  m_nStrLen = nCount;
  m_p = p + 1;
  m_nKind = lkString;
  return true;
}

inline bool CFormulaParser::LexOperator(bool bOperator) {
  // Of the operators of the wanted kind that the text starts with, the longest; of
  // equally long ones the first.
  const TParseOp* pBest = nullptr;
  const char16_t c0 = Upper(*m_p);
  if (*m_p < 0x80) {
    for (unsigned nSet = m_pOpStarts[(bOperator ? 128 : 0) + c0]; nSet != 0; nSet &= nSet - 1) {
      const TParseOp& op = m_pOps[std::countr_zero(nSet)];
      if (pBest && op.nLen <= pBest->nLen) continue;
      if (EqualNoCase(m_p, op.szText, op.nLen)) pBest = &op;
    }
  } else {
    // A unit from 0x80 on may upper-case onto an ASCII operator text.
    for (int i = 0; i < m_nOps; i++) {
      const TParseOp& op = m_pOps[i];
      if ((op.nKind == TParseOp::okPrefix) == bOperator) continue;
      if (op.szText[0] != c0) continue;
      if (pBest && op.nLen <= pBest->nLen) continue;
      if (EqualNoCase(m_p, op.szText, op.nLen)) pBest = &op;
    }
  }
  if (!pBest) return false;
  m_p += pBest->nLen;
  m_pOp = pBest;
  m_nKind = lkOp;
  return true;
}

bool CFormulaParser::LexErrorLiteral() {
  for (const TErrorLiteral& e : kErrorLiterals) {
    if (EqualNoCase(m_p, e.pwszText, e.nLen)) {
      m_p += e.nLen;
      m_cErr = e.cCode;
      m_nKind = lkError;
      return true;
    }
  }
  return false;
}

bool CFormulaParser::LexWord() {
  const char16_t* p = m_p;
  // Where the search for a prefix's "!" may start: no function-name character ends a
  // prefix, so the run that step 1 reads need not be read again.
  const char16_t* pPrefixScan = p;
  // 1. function name followed by "("
  if (IsNameStart(*p) && *p != u'\\') {
    const char16_t* q = p + 1;
    while (IsFuncChar(*q)) q++;
    pPrefixScan = q;
    const char16_t* r = q;
    while (IsWhite(*r)) r++;
    if (*r == u'(') {
      const int nLen = static_cast<int>(q - p);
      if (const TParseFunc* pFunc = FindFunction(p, nLen)) {
        m_pFunc = pFunc;
        m_p = r + 1;
        m_nKind = lkFunc;
        return true;
      }
      int nFunc = 0, nExternSheet = -1, nName = 0;
      if (FindExternFunction(p, nLen, &nFunc, &nExternSheet, &nName)) {
        m_ExternFunc = TParseFunc{};
        m_ExternFunc.nFunc = static_cast<unsigned short>(nFunc);
        m_ExternFunc.nMinArgs = 1;  // the function's name counts as the first argument
        m_ExternFunc.nMaxArgs = kMaxNestedCalls + 1;
        m_ExternFunc.nResultClass = 2;
        m_ExternFunc.wArgClasses = 0x5555;  // every argument a reference
        m_ExternFunc.bVarArgs = true;
        m_pFunc = &m_ExternFunc;
        m_nExternFunc = nFunc;
        m_nExternSheet = nExternSheet;
        m_nNameIndex = nName;
        m_p = r + 1;
        m_nKind = lkFunc;
        return true;
      }
      // "A1 (B1)" is an intersection, not a call
      const char16_t* t = p;
      int nIsRange;
      unsigned char f1, f2;
      TRange range;
      if (q == r || !NextRangeToken(&t, &nIsRange, &f1, &f2, &range) || t != q) {
        SetError(perNotFunction);
        return false;
      }
    }
  }
  // 2. unquoted sheet or book prefix up to "!"
  {
    const char16_t* q = pPrefixScan;
    while (!EndsPrefix(*q)) q++;
    if (*q == u'!' && q != p) {
      m_sScratch.assign(p, q);
      return LexPrefixed(q + 1);
    }
  }
  // 3. cell or rectangle
  if (NextRangeToken(&m_p, &m_nIsRange, &m_cFlags1, &m_cFlags2, &m_Range)) {
    m_nKind = lkRef;
    return true;
  }
  // 4. TRUE, FALSE and defined names
  if (IsNameStart(*p)) {
    const char16_t* q = p + 1;
    while (IsNameChar(*q)) q++;
    const int nLen = static_cast<int>(q - p);
    if ((nLen == 4 && EqualNoCase(p, u"TRUE", 4)) || (nLen == 5 && EqualNoCase(p, u"FALSE", 5))) {
      m_bBool = nLen == 4;
      m_p = q;
      m_nKind = lkBool;
      return true;
    }
    if (m_bInArray) return false;
    if (const int nName = FindName(p, nLen, m_bCreateNames)) {
      m_nNameIndex = nName;
      m_p = q;
      m_nKind = lkName;
      return true;
    }
  }
  return false;
}

bool CFormulaParser::LexPrefixed(const char16_t* pAfter) {
  // The prefix text is in m_sScratch, unquoted.
  const int nLen = static_cast<int>(m_sScratch.size());
  if (nLen == 0 || nLen >= 256) return false;
  const char16_t* s = m_sScratch.data();
  TExternPrefix prefix;
  const size_t nOpen = m_sScratch.find(u'[');
  const size_t nClose = m_sScratch.rfind(u']');
  std::u16string sBook;
  if (nOpen != std::u16string::npos && nClose != std::u16string::npos && nClose > nOpen) {
    // [book]sheet, [book]sheet1:sheet2, path[book]sheet
    sBook.assign(s, nOpen);
    sBook.append(s + nOpen + 1, nClose - nOpen - 1);
    if (sBook.empty()) return false;
    prefix.pBook = sBook.data();
    prefix.nBookLen = static_cast<int>(sBook.size());
    const char16_t* pSheets = s + nClose + 1;
    const int nSheets = nLen - static_cast<int>(nClose) - 1;
    int nColon = -1;
    for (int i = 0; i < nSheets; i++)
      if (pSheets[i] == u':') {
        nColon = i;
        break;
      }
    prefix.pSheet1 = pSheets;
    prefix.nSheet1Len = nColon < 0 ? nSheets : nColon;
    if (nColon >= 0) {
      prefix.pSheet2 = pSheets + nColon + 1;
      prefix.nSheet2Len = nSheets - nColon - 1;
      if (prefix.nSheet1Len == 0 || prefix.nSheet2Len == 0) return false;
    }
  } else if (FindSheet(s, nLen) >= 0) {
    prefix.pSheet1 = s;
    prefix.nSheet1Len = nLen;
  } else {
    const size_t nColon = m_sScratch.find(u':');
    if (nColon != std::u16string::npos && nColon > 0 &&
        FindSheet(s, static_cast<int>(nColon)) >= 0) {
      prefix.pSheet1 = s;
      prefix.nSheet1Len = static_cast<int>(nColon);
      prefix.pSheet2 = s + nColon + 1;
      prefix.nSheet2Len = nLen - static_cast<int>(nColon) - 1;
      if (prefix.nSheet2Len == 0) return false;
    } else {
      // not a sheet of this book: the whole prefix names a book
      if (IsBadBookPath(s, nLen)) return false;
      prefix.pBook = s;
      prefix.nBookLen = nLen;
    }
  }
  if (m_bNo3d) {
    SetError(per3dForbidden);
    return false;
  }
  m_p = pAfter;
  if (NextRangeToken(&m_p, &m_nIsRange, &m_cFlags1, &m_cFlags2, &m_Range)) {
    const int nExtern = FindExternSheet(prefix, false);
    if (nExtern < 0) return false;
    m_nExternSheet = nExtern;
    m_nKind = lkRef;
    return true;
  }
  // a name of that book
  const char16_t* q = m_p;
  if (!IsNameStart(*q)) return false;
  q++;
  while (IsNameChar(*q)) q++;
  const int nExtern = FindExternSheet(prefix, true);
  if (nExtern < 0) return false;
  const int nName = FindExternName(nExtern, m_p, static_cast<int>(q - m_p), m_bCreateNames);
  if (nName <= 0) return false;
  m_nExternSheet = nExtern;
  m_nNameIndex = nName;
  m_p = q;
  m_nKind = lkNameX;
  return true;
}

// ---- Parser ---------------------------------------------------------------------

inline void CFormulaParser::FixOperand(const TOperand& op, unsigned char cWant) {
  if (op.nPos < 0 || !op.cNatural) return;
  unsigned char cClass;
  if (cWant == kClassRef)
    cClass = op.cNatural;
  else if (cWant == 0)  // keep a reference, take anything else as an array
    cClass = op.cNatural == kClassRef ? kClassRef : kClassArray;
  else
    cClass = cWant;
  unsigned char& c = m_pOut[op.nPos];
  c = static_cast<unsigned char>((TokenBase(c) & 0x1F) | cClass);
}

void CFormulaParser::ForceArrayClass(int nStart) {
  int nPos = nStart;
  while (nPos < m_nOut) {
    unsigned char& c = m_pOut[nPos];
    const unsigned char cBase = TokenBase(c);
    switch (cBase) {
      case tArray:
      case tName:
      case tNameX:
      case tRef:
      case tArea:
      case tRefN:
      case tAreaN:
      case tRef3d:
      case tArea3d:
        if ((c & 0x60) == kClassValue) c = static_cast<unsigned char>((c & 0x1F) | kClassArray);
        break;
      default:
        break;
    }
    const int nSize = TPostfixPtr(m_pOut.get() + nPos + 1).SizeToken(cBase);
    nPos += 1 + nSize;
  }
}

// A number or reference as the current token stands, then the token behind it.
inline CFormulaParser::TOperand CFormulaParser::EmitOperand() {
  TOperand x;
  if (m_nKind == lkNumber) {
    x.nPos = m_nOut;
    TPostfixPtr p(Out(m_bIsInt ? 3 : 9));
    if (m_bIsInt) {
      p.Put(tInt);
      p.Put(m_wInt);
    } else {
      p.Put(tNum);
      p.Put(m_rNumber);
    }
    Next(true);
    return x;
  }
  const bool bArea = m_nIsRange != 0;
  int nExtern = m_nExternSheet;
  if (nExtern < 0 && m_bForce3d) {
    nExtern = FindOwnExternSheet(GetFormulaSheetIndex());
    if (nExtern < 0) {
      SetError(perUnexpected);
      return x;
    }
  }
  unsigned char cBase;
  const bool bRel = !(m_cFlags1 & kAbsCol) || !(m_cFlags1 & kAbsRow) ||
                    (bArea && (!(m_cFlags2 & kAbsCol) || !(m_cFlags2 & kAbsRow)));
  if (nExtern >= 0)
    cBase = bArea ? tArea3d : tRef3d;
  else if (m_bRelRCIsOffset && bRel)
    cBase = bArea ? tAreaN : tRefN;
  else
    cBase = bArea ? tArea : tRef;
  x.nPos = m_nOut;
  x.cNatural = kClassRef;
  if (cBase == tRef && !m_bRelRCIsOffset) {
    // The commonest reference, one cell of this sheet as it stands: what
    // PutRef writes for it.
    unsigned w = static_cast<unsigned>(m_Range.Col1()) & 0xFF;
    if (!(m_cFlags1 & kAbsCol)) w |= kColRelative;
    if (!(m_cFlags1 & kAbsRow)) w |= kRowRelative;
    TPostfixPtr q(Out(5));
    q.Put(static_cast<unsigned char>(tRef));
    q.PutRowNr(m_Range.Row1());
    q.PutColNr(static_cast<int>(w));
  } else {
    PutRef(cBase, nExtern);
  }
  Next(true);
  return x;
}

CFormulaParser::TOperand CFormulaParser::ParseExpr(int nMaxLevel) {
  TOperand left;
  if (++m_nDepth > kMaxDepth) {
    SetError(perUnexpected);
    m_nDepth--;
    return left;
  }
  if (m_nKind == lkOp && m_pOp->nKind == TParseOp::okPrefix && m_pOp->nLevel <= nMaxLevel) {
    const TParseOp* pOp = m_pOp;
    Next(false);
    TOperand x = ParseExpr(pOp->nLevel);
    if (!m_nError) {
      FixOperand(x, kClassValue);
      left.nPos = m_nOut;
      *Out(1) = pOp->cToken;
    }
  } else if (m_nKind == lkNumber || m_nKind == lkRef) {
    left = EmitOperand();
  } else if (m_nKind == lkFunc) {
    // Here rather than in ParseElement: one call frame less for every level of
    // nested calls.
    left = ParseFunc();
  } else {
    left = ParseElement();
  }
  if (!m_nError && m_nKind == lkOp) left = ParseOperators(left, nMaxLevel);
  m_nDepth--;
  return left;
}

// The operators behind the operand left that bind at nMaxLevel or tighter, with
// their right operands.
CFormulaParser::TOperand CFormulaParser::ParseOperators(TOperand left, int nMaxLevel) {
  while (!m_nError && m_nKind == lkOp) {
    const TParseOp* pOp = m_pOp;
    if (pOp->nLevel > nMaxLevel) break;
    if (pOp->nKind == TParseOp::okPostfix) {
      FixOperand(left, kClassValue);
      left = TOperand{};
      left.nPos = m_nOut;
      *Out(1) = pOp->cToken;
      Next(true);
      continue;
    }
    const unsigned char cWant = pOp->bRefOp ? kClassRef : kClassValue;
    FixOperand(left, cWant);
    Next(false);
    TOperand right = ParseExpr(pOp->nLevel - 1);
    if (m_nError) break;
    FixOperand(right, cWant);
    left = TOperand{};
    left.nPos = m_nOut;
    left.bRefOp = pOp->bRefOp;
    *Out(1) = pOp->cToken;
  }
  return left;
}

void CFormulaParser::PutRef(unsigned char cBase, int nExternSheet) {
  // [extern sheet] row (row2) col (col2); a part without "$" is relative and in
  // offset form holds the distance from the base cell, wrapping around the sheet.
  const bool bOffset = m_bRelRCIsOffset || cBase == tRefN || cBase == tAreaN;
  auto rowOf = [&](int nRow, unsigned char cFlags) {
    if (!(cFlags & kAbsRow) && bOffset) nRow = (nRow - m_Base.row) & 0xFFFF;
    return static_cast<unsigned short>(nRow);
  };
  auto colOf = [&](int nCol, unsigned char cFlags) {
    if (!(cFlags & kAbsCol) && bOffset) nCol = (nCol - m_Base.col) & 0xFF;
    unsigned w = static_cast<unsigned>(nCol) & 0xFF;
    if (!(cFlags & kAbsCol)) w |= kColRelative;
    if (!(cFlags & kAbsRow)) w |= kRowRelative;
    return static_cast<unsigned short>(w);
  };
  const bool bArea = cBase == tArea || cBase == tAreaN || cBase == tArea3d;
  TPostfixPtr p(Out(1 + (nExternSheet >= 0 ? 2 : 0) + (bArea ? 8 : 4)));
  p.Put(static_cast<unsigned char>(cBase));
  if (nExternSheet >= 0) p.Put(static_cast<unsigned short>(nExternSheet));
  if (bArea) {
    p.PutRowNr(rowOf(m_Range.Row1(), m_cFlags1));
    p.PutRowNr(rowOf(m_Range.Row2(), m_cFlags2));
    p.PutColNr(colOf(m_Range.Col1(), m_cFlags1));
    p.PutColNr(colOf(m_Range.Col2(), m_cFlags2));
  } else {
    p.PutRowNr(rowOf(m_Range.Row1(), m_cFlags1));
    p.PutColNr(colOf(m_Range.Col1(), m_cFlags1));
  }
}

// The elements ParseExpr leaves to this: strings, constants, names, brackets and
// arrays, and whatever is no element.
CFormulaParser::TOperand CFormulaParser::ParseElement() {
  TOperand res;
  switch (m_nKind) {
    case lkString: {
      res.nPos = m_nOut;
      TPostfixPtr p(Out(2 + 2 * m_nStrLen));
      p.Put(tStr);
      p.Put(static_cast<unsigned char>(m_nStrLen));
      p.PutStr(m_pStr, m_nStrRaw);
      Next(true);
      return res;
    }
    case lkBool:
    case lkError: {
      res.nPos = m_nOut;
      unsigned char* p = Out(2);
      p[0] = m_nKind == lkBool ? tBool : tErr;
      p[1] = m_nKind == lkBool ? (m_bBool ? 1 : 0) : m_cErr;
      Next(true);
      return res;
    }
    case lkName:
    case lkNameX: {
      res.nPos = m_nOut;
      res.cNatural = kClassRef;
      const bool bX = m_nKind == lkNameX;
      TPostfixPtr p(Out(bX ? 7 : 5));
      p.Put(static_cast<unsigned char>(bX ? tNameX : tName));
      if (bX) p.Put(static_cast<unsigned short>(m_nExternSheet));
      p.Put(static_cast<unsigned short>(m_nNameIndex));
      p.Zero(2);
      Next(true);
      return res;
    }
    case lkOpen: {
      const bool bInArgs = m_bInArgs;
      m_bInArgs = false;
      Next(false);
      res = ParseExpr(kTopLevel);
      if (m_nError) return res;
      if (m_nKind != lkClose) {
        SetError(perMissingParen);
        return res;
      }
      m_bInArgs = bInArgs;
      *Out(1) = tParen;
      Next(true);
      return res;
    }
    case lkArrOpen:
      return ParseArray();
    default:
      SetError(perUnexpected);
      return res;
  }
}

CFormulaParser::TOperand CFormulaParser::ParseArray() {
  TOperand res;
  if (m_bInArray) {
    SetError(perUnexpected);
    return res;
  }
  const bool bInArgs = m_bInArgs;
  m_bInArgs = false;
  m_bInArray = true;
  res.nPos = m_nOut;
  res.cNatural = kClassArray;
  TPostfixPtr p(Out(8));
  p.Put(tArray);
  p.Zero(7);
  // columns - 1, rows - 1, then the items row by row
  const int nHeader = m_nAdded;
  OutAdded(3);
  int nCols = 0, nRows = 0, nRowItems = 0;
  Next(false);
  while (!m_nError) {
    if (!ParseArrayItem()) break;
    if (++nRowItems > 255) {
      SetError(perUnexpected);
      break;
    }
    Next(true);
    if (m_nKind == lkSep) {
      Next(false);
      continue;
    }
    if (m_nKind != lkRowSep && m_nKind != lkArrClose) {
      SetError(perUnexpected);
      break;
    }
    if (nRows == 0)
      nCols = nRowItems;
    else if (nRowItems != nCols) {
      SetError(perUnexpected);
      break;
    }
    nRowItems = 0;
    if (++nRows >= 65536) {
      SetError(perUnexpected);
      break;
    }
    if (m_nKind == lkArrClose) break;
    Next(false);
  }
  if (m_nError) return res;
  TPostfixPtr h(m_pAdded.get() + nHeader);
  h.Put(static_cast<unsigned char>(nCols - 1));
  h.Put(static_cast<unsigned short>(nRows - 1));
  m_bInArray = false;
  m_bInArgs = bInArgs;
  Next(true);
  return res;
}

bool CFormulaParser::ParseArrayItem() {
  double rSign = 1;
  if (m_nKind == lkOp && (m_pOp->cToken == tUminus || m_pOp->cToken == tUplus)) {
    if (m_pOp->cToken == tUminus) rSign = -1;
    Next(false);
    if (m_nKind != lkNumber) {
      SetError(perUnexpected);
      return false;
    }
  }
  switch (m_nKind) {
    case lkNumber: {
      TPostfixPtr p(OutAdded(9));
      p.Put(kItemNumber);
      p.Put(rSign * m_rNumber);
      return true;
    }
    case lkString: {
      TPostfixPtr p(OutAdded(3 + 2 * m_nStrLen));
      p.Put(kItemString);
      p.Put(static_cast<unsigned short>(m_nStrLen));
      p.PutStr(m_pStr, m_nStrRaw);
      return true;
    }
    case lkBool:
    case lkError: {
      TPostfixPtr p(OutAdded(9));
      p.Put(m_nKind == lkBool ? kItemBool : kItemError);
      p.Put(static_cast<unsigned char>(m_nKind == lkBool ? (m_bBool ? 1 : 0) : m_cErr));
      p.Zero(7);
      return true;
    }
    default:
      SetError(perUnexpected);
      return false;
  }
}

CFormulaParser::TOperand CFormulaParser::ParseFunc() {
  TOperand res;
  if (m_nFrames >= kMaxNestedCalls) {
    SetError(perTooDeep);
    return res;
  }
  TFrame& f = m_pFrames[m_nFrames++];
  f.pFunc = m_pFunc;
  f.nArgs = 0;
  f.nAttrs = 0;
  f.cAttr = f.pFunc->nFunc == 1 ? kAttrIf : f.pFunc->nFunc == 100 ? kAttrChoose : 0;
  if (m_nExternFunc) f.cAttr = 0;
  if (f.pFunc->bVolatile) m_bVolatile = true;
  const bool bInArgs = m_bInArgs, bInArray = m_bInArray;
  m_bInArgs = true;
  m_bInArray = false;
  const bool bExtern = m_nExternFunc != 0;
  if (bExtern) {
    // The external function's name is the first argument.
    TPostfixPtr p(Out(7));
    p.Put(static_cast<unsigned char>(tNameX));
    p.Put(static_cast<unsigned short>(m_nExternSheet));
    p.Put(static_cast<unsigned short>(m_nNameIndex));
    p.Zero(2);
    f.nArgs = 1;
  }
  f.nStart = m_nOut;
  const TParseFunc* pFunc = f.pFunc;
  Next(false);
  bool bLastEmpty = false;
  if (m_nKind != lkClose) {
    for (;;) {
      if (m_nKind == lkEnd) {
        SetError(f.nArgs < pFunc->nMinArgs ? perFewArgs : perMissingParen);
        break;
      }
      if (f.nArgs >= pFunc->nMaxArgs) {
        SetError(perManyArgs);
        break;
      }
      const int nArgStart = m_nOut, nAddedStart = m_nAdded;
      bLastEmpty = m_nKind == lkSep || m_nKind == lkClose;
      if (bLastEmpty) {
        *Out(1) = tMissArg;
      } else {
        TOperand x;
        if ((m_nKind == lkNumber || m_nKind == lkRef) && m_nDepth < kMaxDepth) {
          // What ParseExpr does for an argument that starts with a number or a
          // reference, at the same depth, without a call frame of its own.
          m_nDepth++;
          x = EmitOperand();
          if (!m_nError && m_nKind == lkOp) x = ParseOperators(x, kTopLevel);
          m_nDepth--;
        } else {
          x = ParseExpr(kTopLevel);
        }
        if (m_nError) break;
        const int nClass = pFunc->GetArgClass(f.nArgs);
        const unsigned char cWant = nClass == 1   ? kClassRef
                                    : nClass == 3 ? kClassArray
                                                  : kClassValue;
        FixOperand(x, cWant);
        if (cWant == kClassArray) ForceArrayClass(nArgStart);
        if (nClass == 1 && x.bRefOp) InsertMemToken(nArgStart, nAddedStart);
      }
      f.nArgs++;
      if (f.cAttr && f.nAttrs < kMaxNestedCalls) {
        f.anAttrPos[f.nAttrs++] = m_nOut;
        TPostfixPtr p(Out(4));
        p.Put(tAttr);
        p.Put(static_cast<unsigned char>(f.nAttrs == 1 ? f.cAttr : kAttrSkip));
        p.Put(static_cast<unsigned short>(0));
      }
      if (m_nKind == lkSep) {
        Next(false);
        continue;
      }
      if (m_nKind == lkClose) break;
      SetError(f.nArgs < pFunc->nMinArgs ? perFewArgs : perMissingParen);
      break;
    }
  }
  if (!m_nError && f.nArgs < pFunc->nMinArgs) SetError(bLastEmpty ? perFewArgs : perFewArgsAtParen);
  m_bInArgs = bInArgs;
  m_bInArray = bInArray;
  if (m_nError) {
    m_nFrames--;
    return res;
  }
  if (pFunc->nFunc == 4 && f.nArgs == 1 && !bExtern) {
    // SUM of one argument: the evaluator sums the top of the stack
    TPostfixPtr p(Out(4));
    p.Put(tAttr);
    p.Put(kAttrSum);
    p.Put(static_cast<unsigned short>(0));
  } else {
    res.nPos = m_nOut;
    res.cNatural = pFunc->nResultClass == 1   ? kClassRef
                   : pFunc->nResultClass == 3 ? kClassArray
                                              : kClassValue;
    TPostfixPtr p(Out(pFunc->bVarArgs ? 4 : 3));
    p.Put(static_cast<unsigned char>((pFunc->bVarArgs ? tFuncVar : tFunc) | kClassValue));
    if (pFunc->bVarArgs) p.Put(static_cast<unsigned char>(f.nArgs));
    p.Put(static_cast<unsigned short>(pFunc->nFunc));
    if (f.cAttr) {
      const int nShift = f.cAttr == kAttrChoose ? 2 * f.nArgs : 0;
      PatchAttrs(f, m_nOut);
      res.nPos += nShift;
    }
  }
  m_nFrames--;
  Next(true);
  return res;
}

void CFormulaParser::PatchAttrs(const TFrame& f, int nFuncEnd) {
  // Each tAttr is 4 bytes: code, flags, data word. A skip word is the distance from
  // the end of its tAttr to the end of the function token, minus 1.
  unsigned char* pOut = m_pOut.get();
  auto putWord = [&](int nPos, int nValue) {
    pOut[nPos + 2] = static_cast<unsigned char>(nValue);
    pOut[nPos + 3] = static_cast<unsigned char>(nValue >> 8);
  };
  for (int i = 1; i < f.nAttrs; i++) putWord(f.anAttrPos[i], nFuncEnd - (f.anAttrPos[i] + 4) - 1);
  if (f.cAttr == kAttrIf) {
    // condition: jump from behind its tAttr to behind the tAttr of the next argument
    putWord(f.anAttrPos[0], f.nAttrs > 1 ? f.anAttrPos[1] - f.anAttrPos[0] : 0);
    return;
  }
  // CHOOSE: the first tAttr becomes a choice over nArgs - 1 values and gets one jump
  // word per argument: that argument's tAttr distance from the first, plus the
  // table's size.
  const int nTable = 2 * f.nAttrs;
  const int nFirst = f.anAttrPos[0];
  putWord(nFirst, f.nAttrs - 1);
  pOut[nFirst + 1] = kAttrChoose;
  Insert(nFirst + 4, nTable);
  pOut = m_pOut.get();
  for (int i = 0; i < f.nAttrs; i++) {
    const int nValue = f.anAttrPos[i] - nFirst + nTable;
    pOut[nFirst + 4 + 2 * i] = static_cast<unsigned char>(nValue);
    pOut[nFirst + 5 + 2 * i] = static_cast<unsigned char>(nValue >> 8);
  }
}

void CFormulaParser::InsertMemToken(int nStart, int nAddedStart) {
  // Marks of the sub-expression's tokens.
  bool bRef = false, bNotComputable = false, bError = false, bFunc = false, bOffset = false;
  TPostfixPtr p(m_pOut.get() + nStart);
  const TPostfixPtr end(m_pOut.get() + m_nOut);
  while (p < end) {
    const unsigned char cBase = TokenBase(p.GetToken());
    switch (cBase) {
      case tRefN:
      case tAreaN:
        bOffset = true;
        bRef = true;
        break;
      case tRef:
      case tArea: {
        bRef = true;
        if (m_bRelRCIsOffset) bOffset = true;
        break;
      }
      case tRefErr:
      case tAreaErr:
        bRef = bError = true;
        break;
      case tFunc:
      case tFuncVar:
        bNotComputable = bFunc = true;
        break;
      case tName:
      case tNameX:
      case tRef3d:
      case tArea3d:
        bNotComputable = true;
        break;
      case tRefErr3d:
      case tAreaErr3d:
        bNotComputable = bError = true;
        break;
      case tErr:
        bError = true;
        break;
      case tRange:
      case tIsect:
      case tList:
      case tParen:
        break;
      default:
        bNotComputable = true;
        break;
    }
    p.NextToken(cBase);
  }
  (void)bRef;
  const int nLen = m_nOut - nStart;
  std::vector<TRange> ranges;
  bool bComputed = false;
  if (!bError && !bNotComputable && !bOffset) {
    // Evaluate the references: a stack of range lists, each list a run in ranges.
    std::vector<size_t> starts;
    bComputed = true;
    TPostfixPtr q(m_pOut.get() + nStart);
    while (bComputed && q < end) {
      const unsigned char cBase = TokenBase(q.GetToken());
      if (cBase == tRef) {
        const int nRow = q.GetRowNr(), nCol = q.GetColNr() & 0xFF;
        starts.push_back(ranges.size());
        ranges.emplace_back(nRow, nCol);
      } else if (cBase == tArea) {
        const int nRow1 = q.GetRowNr(), nRow2 = q.GetRowNr();
        const int nCol1 = q.GetColNr() & 0xFF, nCol2 = q.GetColNr() & 0xFF;
        starts.push_back(ranges.size());
        ranges.emplace_back(nRow1, nCol1, nRow2, nCol2);
      } else if (cBase == tParen) {
        continue;
      } else {
        if (starts.size() < 2) {
          bComputed = false;
          break;
        }
        const size_t nB = starts.back();
        starts.pop_back();
        const size_t nA = starts.back();
        if (cBase == tRange) {
          TRange box = ranges[nA];
          for (size_t i = nA + 1; i < ranges.size(); i++) box.Union(box, ranges[i]);
          ranges.resize(nA);
          ranges.push_back(box);
        } else if (cBase == tIsect) {
          std::vector<TRange> out;
          for (size_t i = nA; i < nB; i++)
            for (size_t j = nB; j < ranges.size(); j++) {
              TRange r;
              if (r.Intersect(ranges[i], ranges[j])) out.push_back(r);
              if (out.size() > 8000) break;
            }
          if (out.empty()) bError = true;
          ranges.resize(nA);
          ranges.insert(ranges.end(), out.begin(), out.end());
          if (bError) bComputed = false;
        }
        // tList: the two runs are already adjacent
      }
      if (ranges.size() > 8000) bComputed = false;
    }
    if (starts.size() != 1) bComputed = false;
  }
  if (bComputed) {
    // tMemArea: 4 reserved bytes, sub-expression length; added data: count, ranges
    const int nRanges = static_cast<int>(ranges.size());
    InsertAdded(nAddedStart, 2 + 8 * nRanges);
    TPostfixPtr a(m_pAdded.get() + nAddedStart);
    a.Put(static_cast<unsigned short>(nRanges));
    for (const TRange& r : ranges) {
      a.PutRowNr(r.Row1());
      a.PutRowNr(r.Row2());
      a.PutColNr(r.Col1());
      a.PutColNr(r.Col2());
    }
    Insert(nStart, 7);
    TPostfixPtr t(m_pOut.get() + nStart);
    t.Put(static_cast<unsigned char>(tMemArea));
    t.Zero(4);
    t.Put(static_cast<unsigned short>(nLen));
    return;
  }
  unsigned char cToken;
  if (bError)
    cToken = tMemErr;
  else if (bFunc)
    cToken = tMemFunc;
  else if (bOffset && !bNotComputable)
    cToken = tMemAreaN;
  else
    cToken = bOffset ? tMemNoMemN : tMemNoMem;
  const int nSize = TPostfixPtr::m_bSizes[cToken];
  Insert(nStart, 1 + nSize);
  TPostfixPtr t(m_pOut.get() + nStart);
  t.Put(cToken);
  if (nSize == 6) t.Zero(4);
  t.Put(static_cast<unsigned short>(nLen));
}
