// Text family: measuring, cutting, searching, case, cleaning, codes and number to text.
// Text arguments go through CheckString (numbers become their General text, logicals
// TRUE or FALSE); counts and positions are numbers truncated toward zero. The byte
// forms (LENB, LEFTB, ...) share their bodies with the character forms and count
// each character by its size in the active code page; an offset that falls inside a
// double-byte character cuts it, and a space stands for each cut half.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/StrBase.h"
#include "base/Wildcard.h"
#include "eval/Func.h"
#include "eval/Value.h"
#include "format/FormatSubstitution.h"
#include "format/SingleFormat.h"
#include "format/ValFormat.h"
#include "platform/CodePage.h"
#include "platform/Locale.h"
#include "platform/ResourceIds.h"
#include "platform/TextServices.h"

namespace {

// Counts past any text length; small enough that a position plus a count never
// overflows an int.
constexpr int kMaxCount = INT_MAX / 4;
// REPT stops after the copy that takes the text past this many bytes of storage.
constexpr int kMaxReptBytes = 32765;
// FIXED, DOLLAR and WON show at most this many decimals.
constexpr int kMaxDecimals = 127;

// The text of an argument that passed CheckString.
std::u16string_view ArgText(const TValue& arg) { return std::u16string_view(arg.TextPtr()); }

void SetText(TValue* pResult, std::u16string_view text) {
  pResult->SetValue(text.data(), static_cast<int>(text.size()));
}

// Reads a count or position: a number truncated toward zero that must be at least
// nMin (else #VALUE!), capped at kMaxCount. Returns false with the error left in arg.
bool GetCount(TValue& arg, int nMin, int& nOut) {
  if (!arg.CheckReal()) return false;
  double r;
  arg.GetValue(r);
  r = std::trunc(r);
  if (!(r >= nMin)) {  // NaN fails here too
    arg.SetError(TValue::errValue);
    return false;
  }
  nOut = r > kMaxCount ? kMaxCount : static_cast<int>(r);
  return true;
}

// Length of a text in characters or in bytes of the active code page.
int TextUnits(std::u16string_view text, bool bBytes) {
  return bBytes ? CStrBase::strbytes(text.data(), static_cast<int>(text.size()))
                : static_cast<int>(text.size());
}

// Where an offset (characters or bytes from the start) falls: the index of the
// character it stops before, or, with bHalf, of the double-byte character it cuts.
struct TTextPos {
  int nIndex;
  bool bHalf;
};

// text must end at a terminator, as a value's text does.
TTextPos Locate(std::u16string_view text, int nOffset, bool bBytes) {
  if (!bBytes) return {std::min(nOffset, static_cast<int>(text.size())), false};
  bool bHalf = false;
  const char16_t* p = CStrBase::safestrnincbytesC(text.data(), nOffset, &bHalf);
  return {static_cast<int>(p - text.data()), bHalf};
}

// The part of text between two offsets (nFrom <= nTo). A cut half of a double-byte
// character at either end becomes a space, so the result spans the bytes asked for.
std::u16string Slice(std::u16string_view text, int nFrom, int nTo, bool bBytes) {
  std::u16string str;
  if (nTo <= nFrom) return str;
  const TTextPos from = Locate(text, nFrom, bBytes);
  const TTextPos to = Locate(text, nTo, bBytes);
  const int nFirst = from.nIndex + (from.bHalf ? 1 : 0);
  if (from.bHalf) str += u' ';
  if (to.nIndex > nFirst) str += text.substr(nFirst, to.nIndex - nFirst);
  if (to.bHalf) str += u' ';
  return str;
}

// Formats r through a format written in English notation; false when the format
// does not parse.
bool FormatNumber(const std::u16string& strFormat, double r, std::u16string& out) {
  CValFormat format;
  if (!format.Parse(strFormat.c_str(), nullptr, ptEnglish)) return false;
  format.Format(r);
  out.assign(CSingleFormat::m_Buf, CSingleFormat::m_wFormattedLen);
  return true;
}

// r rounded to nDecimals places (negative: to tens, hundreds, ...), halves away from
// zero, decided on the exact binary value: 1.005 is stored just below 1.005 and rounds
// to 1.00, 999.995 is stored just above and rounds to 1000.00. The decimal expansion
// of a double is finite (at most 1074 fraction digits), so it is written out in full
// and rounded as digits. A result of zero carries no sign.
double RoundExact(double r, int nDecimals) {
  if (!std::isfinite(r) || r == 0) return r;
  char aBuf[1500];  // 309 integer digits, the point and 1074 fraction digits
  std::snprintf(aBuf, sizeof aBuf, "%.1074f", std::fabs(r));
  std::string strDigits(aBuf);
  const std::size_t nPoint = strDigits.find_first_not_of("0123456789");  // the point
  strDigits.erase(nPoint, 1);
  const long nKeep = static_cast<long>(nPoint) + nDecimals;  // digits left standing
  if (nKeep < 0) return 0;
  if (nKeep >= static_cast<long>(strDigits.size())) return r;
  const bool bUp = strDigits[nKeep] >= '5';
  strDigits.resize(nKeep);
  if (bUp) {
    long i = nKeep - 1;
    for (; i >= 0 && strDigits[i] == '9'; --i) strDigits[i] = '0';
    if (i < 0)
      strDigits.insert(strDigits.begin(), '1');
    else
      ++strDigits[i];
  }
  if (strDigits.empty()) strDigits = "0";
  // The kept digits are the result in units of 10^-nDecimals.
  const double rResult =
      std::strtod((strDigits + "e" + std::to_string(-nDecimals)).c_str(), nullptr);
  if (rResult == 0) return 0;
  return r < 0 ? -rResult : rResult;
}

// The digits part of a number format: grouped or not, with nDecimals places (none
// when negative; at most kMaxDecimals).
std::u16string DigitsFormat(bool bGrouped, int nDecimals) {
  std::u16string str = bGrouped ? u"#,##0" : u"0";
  if (nDecimals > 0) str += u'.' + std::u16string(std::min(nDecimals, kMaxDecimals), u'0');
  return str;
}

// ---- Measuring and cutting ---------------------------------------------------------

// LEN and LENB.
class TFuncLen final : public TFuncOneArg {
 public:
  TFuncLen(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bBytes)
      : TFuncOneArg(nResId, pwszName, nFunc), m_bBytes(bBytes) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckString()) return;
    pArgs->SetValue(TextUnits(ArgText(*pArgs), m_bBytes));
  }

 private:
  const bool m_bBytes;
};

// LEFT, RIGHT, LEFTB and RIGHTB: the first or last n units (n defaults to 1).
class TFuncLeftRight final : public TFuncVarArgs {
 public:
  TFuncLeftRight(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bRight,
                 bool bBytes)
      : TFuncVarArgs(nResId, pwszName, nFunc, 1, 2), m_bRight(bRight), m_bBytes(bBytes) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    int nCount = 1;
    if (!pArgs->CheckString() || (nArgs > 1 && !GetCount(pArgs[1], 0, nCount))) {
      pArgs->Pop(nArgs);
      return;
    }
    const std::u16string_view text = ArgText(*pArgs);
    const int nTotal = TextUnits(text, m_bBytes);
    const int nFrom = m_bRight ? std::max(0, nTotal - nCount) : 0;
    const int nTo = m_bRight ? nTotal : nCount;
    SetText(pArgs, Slice(text, nFrom, nTo, m_bBytes));
  }

 private:
  const bool m_bRight;
  const bool m_bBytes;
};

// MID and MIDB: n units from position start (1-based, at least 1).
class TFuncMid final : public TFuncThreeArgs {
 public:
  TFuncMid(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bBytes)
      : TFuncThreeArgs(nResId, pwszName, nFunc), m_bBytes(bBytes) {}
  using TFuncThreeArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    int nStart = 1, nCount = 0;
    if (!pArgs->CheckString() || !GetCount(pArgs[1], 1, nStart) || !GetCount(pArgs[2], 0, nCount)) {
      pArgs->Pop(3);
      return;
    }
    SetText(pArgs, Slice(ArgText(*pArgs), nStart - 1, nStart - 1 + nCount, m_bBytes));
  }

 private:
  const bool m_bBytes;
};

// REPLACE and REPLACEB: n units from position start give way to the new text; a start
// past the end appends.
class TFuncReplace final : public TFuncFourArgs {
 public:
  TFuncReplace(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bBytes)
      : TFuncFourArgs(nResId, pwszName, nFunc), m_bBytes(bBytes) {}
  using TFuncFourArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    int nStart = 1, nCount = 0;
    if (!pArgs->CheckString() || !GetCount(pArgs[1], 1, nStart) || !GetCount(pArgs[2], 0, nCount) ||
        !pArgs[3].CheckString()) {
      pArgs->Pop(4);
      return;
    }
    const std::u16string_view text = ArgText(*pArgs);
    const int nTotal = TextUnits(text, m_bBytes);
    std::u16string str = Slice(text, 0, nStart - 1, m_bBytes);
    str += ArgText(pArgs[3]);
    str += Slice(text, nStart - 1 + nCount, nTotal, m_bBytes);
    SetText(pArgs, str);
  }

 private:
  const bool m_bBytes;
};

// ---- Searching ---------------------------------------------------------------------

// FIND, FINDB (case-sensitive, plain text) and SEARCH, SEARCHB (case-insensitive, with
// the wildcards "*", "?" and the escape "~"). The search starts at position start
// (default 1), which may lie one past the end of the text; a match must begin at a
// character of the text, so an empty find text matches at the start position unless
// that is the end. The result is the 1-based position of the match in characters or
// bytes.
class TFuncFind final : public TFuncVarArgs {
 public:
  TFuncFind(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bWildcards,
            bool bBytes)
      : TFuncVarArgs(nResId, pwszName, nFunc, 2, 3), m_bWildcards(bWildcards), m_bBytes(bBytes) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    int nStart = 1;
    if (!pArgs->Check2Strings() || (nArgs > 2 && !GetCount(pArgs[2], 1, nStart))) {
      pArgs->Pop(nArgs);
      return;
    }
    const std::u16string_view find = ArgText(pArgs[0]);
    const std::u16string_view within = ArgText(pArgs[1]);
    const int nLen = static_cast<int>(within.size());
    if (nStart - 1 > TextUnits(within, m_bBytes)) {
      pArgs->SetError(TValue::errValue);
      return;
    }
    const TTextPos from = Locate(within, nStart - 1, m_bBytes);
    const int nFrom = from.nIndex + (from.bHalf ? 1 : 0);
    int nHit = -1;
    if (m_bWildcards) {
      nHit = StrStrxiWildcardC(within.data(), pArgs[0].TextPtr(), nFrom);
    } else if (nFrom < nLen) {
      const std::size_t nPos = within.find(find, nFrom);
      if (nPos != std::u16string_view::npos) nHit = static_cast<int>(nPos);
    }
    if (nHit < 0) {
      pArgs->SetError(TValue::errValue);
      return;
    }
    pArgs->SetValue(m_bBytes ? CStrBase::strbytes(within.data(), nHit) + 1 : nHit + 1);
  }

 private:
  const bool m_bWildcards;
  const bool m_bBytes;
};

// SUBSTITUTE: every occurrence of the old text, left to right and without overlaps, or
// only the n-th one (n at least 1). An empty old text changes nothing.
class TFuncSubstitute final : public TFuncVarArgs {
 public:
  TFuncSubstitute() : TFuncVarArgs(IDS_FN_SUBSTITUTE, u"SUBSTITUTE", 120, 3, 4) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    int nInstance = 0;  // 0: all
    if (!pArgs->Check2Strings() || !pArgs[2].CheckString() ||
        (nArgs > 3 && !GetCount(pArgs[3], 1, nInstance))) {
      pArgs->Pop(nArgs);
      return;
    }
    const std::u16string_view text = ArgText(pArgs[0]);
    const std::u16string_view oldText = ArgText(pArgs[1]);
    const std::u16string_view newText = ArgText(pArgs[2]);
    if (oldText.empty()) return;  // pArgs[0] already holds the text
    std::u16string str;
    std::size_t nDone = 0;
    int nSeen = 0;
    for (std::size_t nPos = text.find(oldText); nPos != std::u16string_view::npos;
         nPos = text.find(oldText, nPos + oldText.size())) {
      if (nInstance != 0 && ++nSeen != nInstance) continue;
      str += text.substr(nDone, nPos - nDone);
      str += newText;
      nDone = nPos + oldText.size();
      if (nInstance != 0) break;
    }
    str += text.substr(nDone);
    SetText(pArgs, str);
  }
};

// ---- Building and changing text -----------------------------------------------------

// REPT: n copies (0 to 32767). Appending stops after the copy that takes the text past
// kMaxReptBytes of storage, two bytes a character; that copy is kept.
class TFuncRept final : public TFuncTwoArgs {
 public:
  TFuncRept() : TFuncTwoArgs(IDS_FN_REPT, u"REPT", 30) {}
  using TFuncTwoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    unsigned short nCopies = 0;
    if (!pArgs->CheckString() || !pArgs[1].CheckWord(nCopies)) {
      pArgs->Pop(2);
      return;
    }
    const std::u16string_view text = ArgText(*pArgs);
    std::u16string str;
    if (!text.empty()) {
      for (int i = 0; i < nCopies && static_cast<int>(str.size()) * 2 <= kMaxReptBytes; ++i)
        str += text;
    }
    SetText(pArgs, str);
  }
};

// CONCATENATE: the texts of all arguments joined; the first error is the result.
class TFuncConcatenate final : public TFuncVarArgs {
 public:
  TFuncConcatenate() : TFuncVarArgs(IDS_FN_CONCATENATE, u"CONCATENATE", 336, 1, 30) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    std::u16string str;
    for (int i = 0; i < nArgs; ++i) {
      if (!pArgs[i].CheckString()) {
        pArgs->Pop(nArgs);
        return;
      }
      str += ArgText(pArgs[i]);
    }
    SetText(pArgs, str);
  }
};

// UPPER, LOWER and PROPER: character by character through the simple case mappings.
// PROPER capitalises a letter that follows anything but a letter and lowers the rest.
class TFuncCase final : public TFuncOneArg {
 public:
  enum ECase { caseUpper, caseLower, caseProper };
  TFuncCase(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, ECase nCase)
      : TFuncOneArg(nResId, pwszName, nFunc), m_nCase(nCase) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckString()) return;
    std::u16string str(ArgText(*pArgs));
    bool bAfterLetter = false;
    for (char16_t& c : str) {
      const bool bUpper =
          m_nCase == caseUpper || (m_nCase == caseProper && !bAfterLetter && IsLetterChar(c));
      bAfterLetter = IsLetterChar(c);
      c = bUpper ? ToUpperChar(c) : ToLowerChar(c);
    }
    SetText(pArgs, str);
  }

 private:
  const ECase m_nCase;
};

// TRIM: no spaces at either end, and single spaces between words. Only U+0020 counts.
class TFuncTrim final : public TFuncOneArg {
 public:
  TFuncTrim() : TFuncOneArg(IDS_FN_TRIM, u"TRIM", 118) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckString()) return;
    std::u16string str;
    bool bPendingSpace = false;
    for (char16_t c : ArgText(*pArgs)) {
      if (c == u' ') {
        bPendingSpace = !str.empty();
        continue;
      }
      if (bPendingSpace) str += u' ';
      bPendingSpace = false;
      str += c;
    }
    SetText(pArgs, str);
  }
};

// CLEAN: drops the control characters 0 to 31.
class TFuncClean final : public TFuncOneArg {
 public:
  TFuncClean() : TFuncOneArg(IDS_FN_CLEAN, u"CLEAN", 162) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckString()) return;
    std::u16string str;
    for (char16_t c : ArgText(*pArgs))
      if (c >= 32) str += c;
    SetText(pArgs, str);
  }
};

// ASC narrows full-width forms to half width (a voiced katakana may become two
// characters); DBCS widens half-width forms character by character.
class TFuncWidth final : public TFuncOneArg {
 public:
  TFuncWidth(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bToHalf)
      : TFuncOneArg(nResId, pwszName, nFunc), m_bToHalf(bToHalf) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckString()) return;
    const std::u16string_view text = ArgText(*pArgs);
    std::u16string str;
    if (!m_bToHalf) {
      for (char16_t c : text) str += HalfToFullWidthChar(c);
    } else if (!text.empty()) {
      const int nSrc = static_cast<int>(text.size());
      const int nNeeded = MapString(LCMAP_HALFWIDTH, text.data(), nSrc, nullptr, 0);
      str.resize(nNeeded > 0 ? nNeeded : 0);
      const int nDone =
          nNeeded > 0 ? MapString(LCMAP_HALFWIDTH, text.data(), nSrc, str.data(), nNeeded) : 0;
      if (nDone <= 0) {
        pArgs->SetError(TValue::errValue);
        return;
      }
      str.resize(nDone);
    }
    SetText(pArgs, str);
  }

 private:
  const bool m_bToHalf;
};

// ---- Comparing and converting -------------------------------------------------------

// EXACT: the two texts are equal, case and all.
class TFuncExact final : public TFuncTwoArgs {
 public:
  TFuncExact() : TFuncTwoArgs(IDS_FN_EXACT, u"EXACT", 117) {}
  using TFuncTwoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->Check2Strings()) {
      pArgs->Pop(2);
      return;
    }
    pArgs->SetLogical(ArgText(pArgs[0]) == ArgText(pArgs[1]));
  }
};

// CHAR: the character of a code of the active code page (a byte, or lead * 256 + trail
// in a double-byte code page).
class TFuncChar final : public TFuncOneArg {
 public:
  TFuncChar() : TFuncOneArg(IDS_FN_CHAR, u"CHAR", 111) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    int nCode = 0;
    if (!pArgs->CheckInt(nCode)) return;
    const char16_t c =
        nCode >= 1 && nCode <= 65535 && CStrBase::IsValidCode(nCode) ? MAKEWCHAR(nCode) : 0;
    if (c == 0) {
      pArgs->SetError(TValue::errValue);
      return;
    }
    SetText(pArgs, std::u16string_view(&c, 1));
  }
};

// CODE: the code of the first character in the active code page. A character the code
// page cannot hold converts to "?", as the host's conversion writes it.
class TFuncCode final : public TFuncOneArg {
 public:
  TFuncCode() : TFuncOneArg(IDS_FN_CODE, u"CODE", 121) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckString()) return;
    const std::u16string_view text = ArgText(*pArgs);
    if (text.empty()) {
      pArgs->SetError(TValue::errValue);
      return;
    }
    const unsigned nCode = MAKECHAR(text[0]);
    pArgs->SetValue(nCode != 0 ? nCode : static_cast<unsigned>(u'?'));
  }
};

// T: a text stays, an error stays, anything else gives the empty text.
class TFuncT final : public TFuncOneArg {
 public:
  TFuncT() : TFuncOneArg(IDS_FN_T, u"T", 130) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckValue() || pArgs->IsText()) return;
    pArgs->SetValue(u"", 0);
  }
};

// VALUE: a text read as the user would type it into a cell (numbers with the locale's
// separators, percentages, currency, fractions, dates and times); a number stays and
// an empty cell is 0. A logical, or a text that reads as anything but a number
// (TRUE, an error text), is #VALUE!.
class TFuncValue final : public TFuncOneArg {
 public:
  TFuncValue() : TFuncOneArg(IDS_FN_VALUE, u"VALUE", 33) {}
  using TFuncOneArg::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckValue()) return;
    if (pArgs->IsReal()) return;
    if (pArgs->IsEmpty()) {
      pArgs->SetZero();
      return;
    }
    TValue parsed;
    double r = 0;
    if (!pArgs->IsText() || !parsed.StringToReal(pArgs->TextPtr()) || !parsed.IsReal()) {
      pArgs->SetError(TValue::errValue);
      return;
    }
    parsed.GetValue(r);
    pArgs->SetValue(r);
  }
};

// ---- Number to text through number formats -----------------------------------------

// TEXT(value, format): the value shown through a format in the local notation. A text
// that reads as a number is shown as that number; any other text, and a logical as
// its TRUE/FALSE text, goes through the format's text section. A format that does not
// parse is #VALUE!; an empty format gives the empty text.
class TFuncText final : public TFuncTwoArgs {
 public:
  TFuncText() : TFuncTwoArgs(IDS_FN_TEXT, u"TEXT", 48) {}
  using TFuncTwoArgs::Evaluate;
  void Evaluate(TValue* pArgs) override {
    if (!pArgs->CheckValue() || !pArgs[1].CheckString()) {
      pArgs->Pop(2);
      return;
    }
    const std::u16string strFormat(ArgText(pArgs[1]));
    if (strFormat.empty()) {
      SetText(pArgs, u"");
      return;
    }
    CValFormat format;
    if (!format.Parse(strFormat.c_str(), nullptr, ptLocal)) {
      pArgs->SetError(TValue::errValue);
      return;
    }
    TValue number;
    double r = 0;
    if (pArgs->IsReal()) {
      pArgs->GetValue(r);
      format.Format(r);
    } else if (pArgs->IsEmpty()) {
      format.Format(0.0);
    } else if (pArgs->IsText() && number.StringToReal(pArgs->TextPtr()) && number.IsReal()) {
      number.GetValue(r);
      format.Format(r);
    } else {
      pArgs->CheckString();  // a logical becomes its text
      const std::u16string_view text = ArgText(*pArgs);
      format.Format(text.data(), static_cast<int>(text.size()));
    }
    SetText(pArgs, std::u16string_view(CSingleFormat::m_Buf, CSingleFormat::m_wFormattedLen));
  }
};

// Shows r, rounded to nDecimals places (at most kMaxDecimals, else #VALUE!), through
// a format in English notation; the result or the error goes to pArgs[0].
void SetNumberText(TValue* pArgs, double r, int nDecimals, const std::u16string& strFormat) {
  if (nDecimals > kMaxDecimals) {
    pArgs->SetError(TValue::errValue);
    return;
  }
  const double rRounded = RoundExact(r, nDecimals);
  if (!std::isfinite(rRounded)) {  // rounded up past the largest double
    pArgs->SetError(TValue::errNum);
    return;
  }
  std::u16string str;
  if (!FormatNumber(strFormat, rRounded, str)) {
    pArgs->SetError(TValue::errValue);
    return;
  }
  SetText(pArgs, str);
}

// FIXED(number, decimals = 2, no commas = FALSE): the rounded number with the
// locale's separators, grouped unless asked not to.
class TFuncFixed final : public TFuncVarArgs {
 public:
  TFuncFixed() : TFuncVarArgs(IDS_FN_FIXED, u"FIXED", 14, 1, 3) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    int nDecimals = 2, bNoCommas = 0;
    if (!pArgs->CheckReal() || (nArgs > 1 && !pArgs[1].CheckInt(nDecimals)) ||
        (nArgs > 2 && !pArgs[2].CheckLogical(bNoCommas))) {
      pArgs->Pop(nArgs);
      return;
    }
    double r = 0;
    pArgs->GetValue(r);
    SetNumberText(pArgs, r, nDecimals, DigitsFormat(!bNoCommas, nDecimals));
  }
};

// DOLLAR and WON: the rounded number in the locale's currency format (symbol place,
// negative form, grouping). DOLLAR shows two decimals unless told; WON shows the
// locale's currency digits. Unlike the built-in currency formats, a positive amount
// keeps no room for a closing parenthesis.
class TFuncDollar final : public TFuncVarArgs {
 public:
  TFuncDollar(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bLocaleDigits)
      : TFuncVarArgs(nResId, pwszName, nFunc, 1, 2), m_bLocaleDigits(bLocaleDigits) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override {
    int nDecimals = m_bLocaleDigits ? GetLocaleSettings().nCurrencyDigits : 2;
    if (!pArgs->CheckReal() || (nArgs > 1 && !pArgs[1].CheckInt(nDecimals))) {
      pArgs->Pop(nArgs);
      return;
    }
    double r = 0;
    pArgs->GetValue(r);
    const std::u16string strDigits = DigitsFormat(true, nDecimals);
    std::u16string strFormat = TFormatSubstitution::Render(
        TFormatSubstitution::srcCurrency, u"%s" + strDigits + u"%s;%s" + strDigits + u"%s");
    for (std::size_t nPos = strFormat.find(u"_)"); nPos != std::u16string::npos;
         nPos = strFormat.find(u"_)", nPos))
      strFormat.erase(nPos, 2);
    SetNumberText(pArgs, r, nDecimals, strFormat);
  }

 private:
  const bool m_bLocaleDigits;
};

// Constructing an object registers it; kept in number order, like the function table.
TFuncDollar s_Won(IDS_FN_WON, u"WON", 13, /*bLocaleDigits=*/true);
TFuncFixed s_Fixed;
TFuncRept s_Rept;
TFuncMid s_Mid(IDS_FN_MID, u"MID", 31, /*bBytes=*/false);
TFuncLen s_Len(IDS_FN_LEN, u"LEN", 32, /*bBytes=*/false);
TFuncValue s_Value;
TFuncText s_Text;
TFuncFind s_Search(IDS_FN_SEARCH, u"SEARCH", 82, /*bWildcards=*/true, /*bBytes=*/false);
TFuncChar s_Char;
TFuncCase s_Lower(IDS_FN_LOWER, u"LOWER", 112, TFuncCase::caseLower);
TFuncCase s_Upper(IDS_FN_UPPER, u"UPPER", 113, TFuncCase::caseUpper);
TFuncCase s_Proper(IDS_FN_PROPER, u"PROPER", 114, TFuncCase::caseProper);
TFuncLeftRight s_Left(IDS_FN_LEFT, u"LEFT", 115, /*bRight=*/false, /*bBytes=*/false);
TFuncLeftRight s_Right(IDS_FN_RIGHT, u"RIGHT", 116, /*bRight=*/true, /*bBytes=*/false);
TFuncExact s_Exact;
TFuncTrim s_Trim;
TFuncReplace s_Replace(IDS_FN_REPLACE, u"REPLACE", 119, /*bBytes=*/false);
TFuncSubstitute s_Substitute;
TFuncCode s_Code;
TFuncFind s_Find(IDS_FN_FIND, u"FIND", 124, /*bWildcards=*/false, /*bBytes=*/false);
TFuncT s_T;
TFuncClean s_Clean;
TFuncDollar s_Dollar(IDS_FN_DOLLAR, u"DOLLAR", 204, /*bLocaleDigits=*/false);
TFuncFind s_FindB(IDS_FN_FINDB, u"FINDB", 205, /*bWildcards=*/false, /*bBytes=*/true);
TFuncFind s_SearchB(IDS_FN_SEARCHB, u"SEARCHB", 206, /*bWildcards=*/true, /*bBytes=*/true);
TFuncReplace s_ReplaceB(IDS_FN_REPLACEB, u"REPLACEB", 207, /*bBytes=*/true);
TFuncLeftRight s_LeftB(IDS_FN_LEFTB, u"LEFTB", 208, /*bRight=*/false, /*bBytes=*/true);
TFuncLeftRight s_RightB(IDS_FN_RIGHTB, u"RIGHTB", 209, /*bRight=*/true, /*bBytes=*/true);
TFuncMid s_MidB(IDS_FN_MIDB, u"MIDB", 210, /*bBytes=*/true);
TFuncLen s_LenB(IDS_FN_LENB, u"LENB", 211, /*bBytes=*/true);
TFuncWidth s_Asc(IDS_FN_ASC, u"ASC", 214, /*bToHalf=*/true);
TFuncWidth s_Dbcs(IDS_FN_DBCS, u"DBCS", 215, /*bToHalf=*/false);
TFuncConcatenate s_Concatenate;

}  // namespace
