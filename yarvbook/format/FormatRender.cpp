// Rendering a value through one chosen section. Numbers are first turned into at most
// 15 significant decimal digits (what a cell holds), and every later rounding works on
// those digits, half away from zero: 2.675 shows as 2.68 and 9.995 with two decimals as
// 10.00, the way they were typed, not the way the binary value lies.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "format/DateTime.h"
#include "format/FormatVocabulary.h"
#include "format/GeneralNumber.h"
#include "format/SingleFormat.h"
#include "format/ValFormat.h"
#include "platform/Locale.h"

namespace {

// A non-negative number as decimal digits: value = 0.d0 d1 d2 ... × 10^nPoint.
// No trailing zeros; no digits at all for zero.
struct TDecimal {
  char acDigits[24];
  int nDigits = 0;
  int nPoint = 0;

  char DigitAt(int nPos) const { return nPos >= 0 && nPos < nDigits ? acDigits[nPos] : '0'; }
  bool IsZero() const { return nDigits == 0; }
  void Trim() {
    while (nDigits > 0 && acDigits[nDigits - 1] == '0') --nDigits;
    if (nDigits == 0) nPoint = 0;
  }
  // Keeps nDecimals digits after the point, rounding half away from zero.
  void Round(int nDecimals) {
    const int nKeep = nPoint + nDecimals;
    if (nKeep >= nDigits) return;
    if (nKeep < 0) {
      nDigits = 0;
      nPoint = 0;
      return;
    }
    const bool bUp = acDigits[nKeep] >= '5';
    nDigits = nKeep;
    if (bUp) {
      int k = nKeep - 1;
      while (k >= 0 && acDigits[k] == '9') --k;
      if (k < 0) {
        acDigits[0] = '1';
        nDigits = 1;
        ++nPoint;
      } else {
        ++acDigits[k];
        nDigits = k + 1;
      }
    }
    Trim();
  }
  // The digits left of the point, without leading zeros ("" for values below 1).
  std::string IntegerDigits() const {
    std::string str;
    for (int i = 0; i < nPoint; ++i) str += DigitAt(i);
    return str;
  }
};

// The 15 significant digits of |r|, as the General rule makes them.
TDecimal ToDecimal(double r) {
  TDecimal d;
  TGeneralNumber num;
  if (!num.Set(std::fabs(r)) || num.IsZero()) return d;
  d.nDigits = num.DigitCount();
  std::copy_n(num.Digits(), d.nDigits, d.acDigits);
  d.nPoint = num.Exponent() + 1;
  return d;
}

TDecimal ToDecimalScaled(double r, int nScale) {
  TDecimal d = ToDecimal(r);
  if (!d.IsZero()) d.nPoint -= nScale;
  return d;
}

void AppendAscii(const std::string& str) {
  for (char c : str) CSingleFormat::Append(static_cast<char16_t>(c));
}

void AppendText(const std::u16string& str) {
  CSingleFormat::Append(str.data(), static_cast<int>(str.size()));
}

// Date and time fields of a serial, after rounding the seconds to the shown precision.
struct TTimeParts {
  int nYear, nMonth, nDay, nWeekday;
  int nHour, nMinute, nSecond, nMillisecond;
  double rTotalMs;  // from serial 0, after rounding
};

// Splits a serial through CDateTime, with the seconds rounded to the shown precision
// and the carry taken into the minutes, hours and the date.
bool SplitSerial(double r, int nDecimals, TTimeParts& t) {
  CDateTime dt;
  if (!dt.NumberToDateTime(r)) return false;
  dt.RoundSeconds(nDecimals);
  t.nYear = dt.GetYear();
  t.nMonth = dt.GetMonth();
  t.nDay = dt.GetDay();
  t.nWeekday = dt.GetWeekday();
  t.nHour = dt.GetHour();
  t.nMinute = dt.GetMinute();
  t.nSecond = dt.GetSecond();
  t.nMillisecond = dt.GetMillisecond();
  t.rTotalMs = dt.TotalSeconds() * 1000.0 + t.nMillisecond;
  return t.nMonth >= 1 && t.nMonth <= 12 && t.nWeekday >= 1 && t.nWeekday <= 7;
}

void AppendNumber(long long n, int nMinDigits) {
  char sz[32];
  std::snprintf(sz, sizeof sz, "%0*lld", std::clamp(nMinDigits, 1, 20), n);
  AppendAscii(sz);
}

// A placeholder with no digit to show: '0' shows a zero, '?' a blank, '#' nothing.
void AppendFiller(unsigned short wCode) {
  if (wCode == CSingleFormat::tkDigitZero)
    CSingleFormat::Append(u'0');
  else if (wCode == CSingleFormat::tkDigitQuestion)
    CSingleFormat::Append(u' ');
}

bool IsDigitToken(unsigned short w) {
  return w >= CSingleFormat::tkDigitZero && w <= CSingleFormat::tkDigitQuestion;
}

// The continued-fraction walk that finds the fraction nearest to x with a denominator
// of at most nMaxDen (a semiconvergent when the next convergent is too large).
void BestFraction(double x, long long nMaxDen, long long& nNum, long long& nDen) {
  long long p0 = 0, q0 = 1, p1 = 1, q1 = 0;
  double y = x;
  for (int nStep = 0; nStep < 64; ++nStep) {
    const double a = std::floor(y);
    if (a > 1e15) break;
    const long long na = static_cast<long long>(a);
    const long long p2 = na * p1 + p0, q2 = na * q1 + q0;
    if (q2 > nMaxDen) {
      const long long k = q1 > 0 ? (nMaxDen - q0) / q1 : 0;
      const long long ps = p0 + k * p1, qs = q0 + k * q1;
      if (q1 == 0 ||
          (qs > 0 && std::fabs(x - static_cast<double>(ps) / static_cast<double>(qs)) <
                         std::fabs(x - static_cast<double>(p1) / static_cast<double>(q1)))) {
        p1 = ps;
        q1 = qs;
      }
      break;
    }
    p0 = p1;
    q0 = q1;
    p1 = p2;
    q1 = q2;
    const double rFrac = y - a;
    if (rFrac < 1e-12) break;
    y = 1 / rFrac;
  }
  if (q1 <= 0) {
    p1 = static_cast<long long>(std::floor(x + 0.5));
    q1 = 1;
  }
  nNum = p1;
  nDen = q1;
}

// Digit strings placed into placeholders from the right: the leftmost placeholder takes
// every digit that the others have no room for.
class TRightAligned {
 public:
  TRightAligned(std::string strDigits, int nSlots, bool bGroup, char16_t cSep)
      : m_strDigits(std::move(strDigits)), m_nSlots(nSlots), m_bGroup(bGroup), m_cSep(cSep) {}
  // A placeholder beyond the slot count (a stored record whose group counts disagree
  // with its tokens) shows nothing.
  void Put(unsigned short wCode) {
    const int nPos = m_nSlots - 1 - m_nSlot;  // position counted from the right, 0-based
    if (nPos < 0) return;
    const int nLen = static_cast<int>(m_strDigits.size());
    const int nFrom = m_nSlot == 0 ? std::max(nLen - 1, nPos) : nPos;
    ++m_nSlot;
    for (int p = nFrom; p >= nPos; --p) {
      if (p < nLen) {
        CSingleFormat::Append(static_cast<char16_t>(m_strDigits[nLen - 1 - p]));
      } else {
        AppendFiller(wCode);
        if (wCode == CSingleFormat::tkDigitHash) continue;
      }
      if (m_bGroup && p > 0 && p % 3 == 0)
        CSingleFormat::Append(p < nLen || wCode == CSingleFormat::tkDigitZero ? m_cSep : u' ');
    }
  }

 private:
  std::string m_strDigits;
  int m_nSlots;
  int m_nSlot = 0;
  bool m_bGroup;
  char16_t m_cSep;
};

}  // namespace

void CSingleFormat::ResetResult() {
  m_Buf[0] = 0;
  m_wFormattedLen = 0;
  m_bIsGeneral = false;
  m_rGeneralValue = 0;
  m_wGeneralStart = m_wGeneralEnd = m_wGeneralPrecision = 0;
  CValFormat::m_cFillChar = 0;
  CValFormat::m_wFillPos = 0;
  CValFormat::m_bIsColorIndex = false;
  CValFormat::m_wColorIndex = 0;
  CValFormat::m_bIsColorRef = false;
  CValFormat::m_ColorRef = 0;
  CValFormat::m_wSpaceChars = 0;
}

void CSingleFormat::Append(const char16_t* pwsz, int nLen) {
  for (int i = 0; i < nLen && m_wFormattedLen < kMaxFormatted; ++i)
    m_Buf[m_wFormattedLen++] = pwsz[i];
  m_Buf[m_wFormattedLen] = 0;
}

void CSingleFormat::Append(char16_t c) { Append(&c, 1); }

int CSingleFormat::FormatCommonToken(int i) const {
  const unsigned short* p = m_pTokens;
  const TLocaleSettings& locale = GetLocaleSettings();
  switch (p[i]) {
    case tkLiteral:
      Append(static_cast<char16_t>(p[i + 1]));
      return i + 2;
    case tkQuoted: {
      int j = i + 1;
      while (p[j] != 0) Append(static_cast<char16_t>(p[j++]));
      return j + 1;
    }
    case tkCurrency:
      AppendText(locale.strCurrency);
      return i + 1;
    case tkPercent:
      Append(u'%');
      return i + 1;
    case tkFill:
      if (CValFormat::m_cFillChar == 0) {
        CValFormat::m_cFillChar = static_cast<char16_t>(p[i + 1]);
        CValFormat::m_wFillPos = m_wFormattedLen;
      }
      return i + 2;
    case tkSpace:
      if (CValFormat::m_wSpaceChars < kMaxSpaceChars)
        CValFormat::m_SpaceChars[CValFormat::m_wSpaceChars++] = {m_wFormattedLen,
                                                                 static_cast<char16_t>(p[i + 1])};
      Append(u' ');
      return i + 2;
    case tkLocaleBlock: {
      int j = i + 1;
      while (p[j] != 0) Append(static_cast<char16_t>(p[j++]));
      return j + 3;
    }
    case tkDateSep:
      AppendText(locale.strDateSep);
      return i + 1;
    case tkTimeSep:
      AppendText(locale.strTimeSep);
      return i + 1;
    case tkDecimalPoint:
      Append(u'.');
      return i + 1;
    case tkFractionSlash:
      Append(u'/');
      return i + 1;
    default:
      return -1;
  }
}

namespace {

int NextToken(const unsigned short* p, int i, int nCount) {
  const int n = FormatTokenOperands(p[i], p, i + 1, nCount);
  return i + 1 + std::max(n, 0);
}

}  // namespace

void CSingleFormat::FormatNumber(double r, bool bShowSign, int nGeneralWidth) const {
  if (!m_pTokens) return;
  if (m_nType == ftDate || m_nType == ftTime) {
    FormatDateTime(r);
    return;
  }
  bool bExponent = false, bFraction = false, bGeneral = false;
  for (int i = 0; i < m_wTokenCount && m_pTokens[i] != tkEnd;
       i = NextToken(m_pTokens, i, m_wTokenCount)) {
    bExponent |= m_pTokens[i] == tkExponent;
    bFraction |= m_pTokens[i] == tkFractionSlash;
    bGeneral |= m_pTokens[i] == tkGeneral;
  }
  if (bGeneral)
    FormatGeneral(r, nGeneralWidth, bShowSign);
  else if (bExponent)
    FormatScientific(r, bShowSign);
  else if (bFraction && m_nType == ftFraction)
    FormatFraction(r, bShowSign);
  else
    FormatFixed(r, bShowSign);
}

void CSingleFormat::FormatGeneral(double r, int nWidth, bool bShowSign) const {
  const unsigned short* p = m_pTokens;
  const int nCount = p ? m_wTokenCount : 0;
  // A negative section that writes its own sign shows the magnitude only.
  TGeneralNumber num;
  const bool bFinite = num.SetWidth(bShowSign ? r : std::fabs(r), nWidth);
  char16_t acNumber[TGeneralNumber::kMaxText];
  const int nLen =
      bFinite ? num.Write(acNumber, TGeneralNumber::kMaxText, GetLocaleSettings().cDecimal) : 0;
  auto appendNumber = [&] {
    m_wGeneralStart = m_wFormattedLen;
    if (bFinite)
      Append(acNumber, nLen);
    else
      Append(u"#NUM!", 5);
    m_wGeneralEnd = m_wFormattedLen;
    m_bIsGeneral = true;
    m_rGeneralValue = r;
    m_wGeneralPrecision = static_cast<unsigned short>(num.DigitCount());
  };
  bool bDone = false;
  for (int i = 0; i < nCount && p[i] != tkEnd;) {
    if (p[i] == tkGeneral && !bDone) {
      appendNumber();
      bDone = true;
      ++i;
      continue;
    }
    const int nNext = FormatCommonToken(i);
    i = nNext >= 0 ? nNext : NextToken(p, i, nCount);
  }
  if (!bDone) appendNumber();
}

void CSingleFormat::FormatFixed(double r, bool bShowSign) const {
  const unsigned short* p = m_pTokens;
  const int nCount = m_wTokenCount;
  const TLocaleSettings& locale = GetLocaleSettings();
  TDecimal d = ToDecimalScaled(r, m_nScale);
  const int nDecimals = m_aGroups[1].nCount;
  d.Round(nDecimals);
  if (bShowSign && !d.IsZero()) Append(u'-');
  int nIntSlots = 0;
  for (int i = 0; i < nCount && p[i] != tkEnd; i = NextToken(p, i, nCount))
    if (IsDigitToken(p[i]) && p[i + 1] == 0) ++nIntSlots;
  TRightAligned integer(d.IntegerDigits(), nIntSlots, (m_aGroups[0].wFlags & gfGrouping) != 0,
                        locale.cThousands);
  // Decimal places past the last non-zero digit are "insignificant": '#' drops them.
  int nLastSignificant = -1;
  for (int k = 0; k < nDecimals; ++k)
    if (d.DigitAt(d.nPoint + k) != '0') nLastSignificant = k;
  int nDecimal = 0;
  bool bPointWritten = false;
  for (int i = 0; i < nCount && p[i] != tkEnd;) {
    const unsigned short w = p[i];
    if (IsDigitToken(w)) {
      if (p[i + 1] == 0) {
        integer.Put(w);
      } else if (nDecimal <= nLastSignificant) {
        Append(static_cast<char16_t>(d.DigitAt(d.nPoint + nDecimal++)));
      } else {
        ++nDecimal;
        AppendFiller(w);
      }
      i += 2;
      continue;
    }
    if (w == tkDecimalPoint) {
      // Without integer placeholders the integer digits still show, before the point.
      if (nIntSlots == 0 && !bPointWritten) AppendAscii(d.IntegerDigits());
      bPointWritten = true;
      Append(locale.cDecimal);
      ++i;
      continue;
    }
    const int nNext = FormatCommonToken(i);
    i = nNext >= 0 ? nNext : NextToken(p, i, nCount);
  }
}

void CSingleFormat::FormatScientific(double r, bool bShowSign) const {
  const unsigned short* p = m_pTokens;
  const int nCount = m_wTokenCount;
  const TLocaleSettings& locale = GetLocaleSettings();
  const int nIntSlots = m_aGroups[0].nCount;
  const int nDecimals = m_aGroups[1].nCount;
  // The exponent is a multiple of the number of integer placeholders ("##0.0E+0" gives
  // engineering notation); the mantissa then has 1 to that many integer digits.
  const int nStep = std::max(nIntSlots, 1);
  TDecimal d = ToDecimalScaled(r, m_nScale);
  int nExp = 0;
  TDecimal m = d;
  if (!d.IsZero()) {
    for (int nTry = 0; nTry < 2; ++nTry) {
      const int nX = d.nPoint - 1;
      nExp = (nX >= 0 ? nX / nStep : -((-nX + nStep - 1) / nStep)) * nStep;
      m = d;
      m.nPoint = nX - nExp + 1;
      const int nIntDigits = m.nPoint;
      m.Round(nDecimals);
      if (m.nPoint <= nIntDigits || m.IsZero()) break;
      d = m;  // rounding carried into a new digit: place the exponent again
      d.nPoint = nX + 2;
    }
  }
  if (m.IsZero()) nExp = 0;
  if (bShowSign && !m.IsZero()) Append(u'-');
  TRightAligned integer(m.IntegerDigits(), nIntSlots, false, 0);
  int nLastSignificant = -1;
  for (int k = 0; k < nDecimals; ++k)
    if (m.DigitAt(m.nPoint + k) != '0') nLastSignificant = k;
  int nExpSlots = 0;
  for (int i = 0; i < nCount && p[i] != tkEnd; i = NextToken(p, i, nCount))
    if (IsDigitToken(p[i]) && p[i + 1] == 2) ++nExpSlots;
  TRightAligned exponent(std::to_string(std::abs(nExp)), nExpSlots, false, 0);
  int nDecimal = 0;
  for (int i = 0; i < nCount && p[i] != tkEnd;) {
    const unsigned short w = p[i];
    if (IsDigitToken(w)) {
      if (p[i + 1] == 0)
        integer.Put(w);
      else if (p[i + 1] == 2)
        exponent.Put(w);
      else if (nDecimal <= nLastSignificant)
        Append(static_cast<char16_t>(m.DigitAt(m.nPoint + nDecimal++)));
      else {
        ++nDecimal;
        AppendFiller(w);
      }
      i += 2;
      continue;
    }
    if (w == tkDecimalPoint) {
      Append(locale.cDecimal);
      ++i;
      continue;
    }
    if (w == tkExponent) {
      Append((p[i + 1] & 1) ? u'e' : u'E');
      if (nExp < 0)
        Append(u'-');
      else if (p[i + 1] & 2)
        Append(u'+');
      i += 2;
      continue;
    }
    const int nNext = FormatCommonToken(i);
    i = nNext >= 0 ? nNext : NextToken(p, i, nCount);
  }
}

void CSingleFormat::FormatFraction(double r, bool bShowSign) const {
  const unsigned short* p = m_pTokens;
  const int nCount = m_wTokenCount;
  const double a = std::fabs(r);
  const bool bHasInteger = m_aGroups[0].nCount > 0;
  double rWhole = bHasInteger ? std::floor(a) : 0;
  const double rFrac = a - rWhole;
  long long nNum = 0, nDen = 1;
  // A numerator past 15 digits has no exact fraction to find: it shows its digits.
  double rBigNum = 0;
  if (m_nFixedDenominator != 0) {
    nDen = m_nFixedDenominator;
    const double rNum = std::floor(rFrac * static_cast<double>(nDen) + 0.5);
    if (rNum > 999999999999999.0)
      rBigNum = rNum;
    else
      nNum = static_cast<long long>(rNum);
  } else if (rFrac > 999999999999999.0) {
    rBigNum = std::floor(rFrac + 0.5);
  } else {
    const int nDigits = std::clamp<int>(m_aGroups[2].nCount, 1, 9);
    long long nMaxDen = 1;
    for (int k = 0; k < nDigits; ++k) nMaxDen *= 10;
    BestFraction(rFrac - std::floor(rFrac), nMaxDen - 1, nNum, nDen);
    nNum += static_cast<long long>(std::floor(rFrac)) * nDen;
  }
  if (bHasInteger && nNum >= nDen) {
    rWhole += 1;
    nNum = 0;
  }
  TDecimal whole = ToDecimal(rWhole);
  whole.Round(0);
  const bool bZeroFraction = bHasInteger && nNum == 0 && rBigNum == 0;
  if (bShowSign && (!whole.IsZero() || nNum != 0 || rBigNum != 0)) Append(u'-');
  std::string strWhole = whole.IntegerDigits();
  if (bZeroFraction && strWhole.empty()) strWhole.push_back('0');  // the value still shows
  TRightAligned integer(strWhole, m_aGroups[0].nCount, (m_aGroups[0].wFlags & gfGrouping) != 0,
                        GetLocaleSettings().cThousands);
  // A numerator beyond the exact range of doubles shows its 15 significant digits.
  std::string strNum = std::to_string(nNum);
  if (rBigNum != 0) {
    TDecimal n = ToDecimal(rBigNum);
    n.Round(0);
    strNum = n.IntegerDigits();
  }
  TRightAligned numerator(strNum, m_aGroups[1].nCount, false, 0);
  const std::string strDen = std::to_string(nDen);
  int nDenSlot = 0;
  bool bInFraction = false;
  for (int i = 0; i < nCount && p[i] != tkEnd;) {
    const unsigned short w = p[i];
    if (IsDigitToken(w)) {
      const unsigned short wPart = p[i + 1];
      if (wPart == 0) {
        integer.Put(w);
      } else if (bZeroFraction) {
        bInFraction = wPart == 1 || nDenSlot + 1 < m_aGroups[2].nCount;
        if (wPart == 2) ++nDenSlot;
        if (m_nFixedDenominator == 0 || wPart == 1 || nDenSlot == 1)
          Append(m_nFixedDenominator != 0 && wPart == 2
                     ? std::u16string(strDen.size(), u' ').c_str()
                     : u" ",
                 m_nFixedDenominator != 0 && wPart == 2 ? static_cast<int>(strDen.size()) : 1);
      } else if (wPart == 1) {
        numerator.Put(w);
      } else if (m_nFixedDenominator != 0) {
        if (nDenSlot++ == 0) AppendAscii(strDen);
      } else {
        if (nDenSlot < static_cast<int>(strDen.size()))
          Append(static_cast<char16_t>(strDen[nDenSlot]));
        else if (w != tkDigitHash)
          Append(u' ');
        ++nDenSlot;
      }
      i += 2;
      continue;
    }
    if (w == tkFractionSlash) {
      Append(bZeroFraction ? u' ' : u'/');
      ++i;
      continue;
    }
    if (bZeroFraction && bInFraction && w == tkLiteral) {
      Append(u' ');
      i += 2;
      continue;
    }
    const int nNext = FormatCommonToken(i);
    i = nNext >= 0 ? nNext : NextToken(p, i, nCount);
  }
}

void CSingleFormat::FormatDateTime(double r) const {
  const unsigned short* p = m_pTokens;
  const int nCount = m_wTokenCount;
  const TLocaleSettings& locale = GetLocaleSettings();
  const bool bAutoMs = (m_bFlags & fAutoMilliseconds) != 0;
  TTimeParts t{};
  if (!SplitSerial(r, bAutoMs ? 3 : m_nSecPrecision, t)) {
    // Out of the date range: the cell shows a row of '#'.
    CValFormat::m_cFillChar = u'#';
    CValFormat::m_wFillPos = m_wFormattedLen;
    return;
  }
  bool bElapsedHours = false, bElapsedMinutes = false;
  for (int i = 0; i < nCount && p[i] != tkEnd; i = NextToken(p, i, nCount)) {
    bElapsedHours |= p[i] == tkElapsedHours;
    bElapsedMinutes |= p[i] == tkElapsedMinutes;
  }
  const long long nTotalMs = static_cast<long long>(t.rTotalMs);
  auto appendFraction = [&](int nDigits) {
    if (nDigits <= 0) {
      if (bAutoMs && t.nMillisecond != 0) {
        char sz[8];
        std::snprintf(sz, sizeof sz, "%03d", t.nMillisecond);
        std::string str(sz);
        while (!str.empty() && str.back() == '0') str.pop_back();
        Append(locale.cDecimal);
        AppendAscii(str);
      }
      return;
    }
    Append(locale.cDecimal);
    char sz[8];
    std::snprintf(sz, sizeof sz, "%03d", t.nMillisecond);
    for (int k = 0; k < nDigits && k < 3; ++k) Append(static_cast<char16_t>(sz[k]));
  };
  for (int i = 0; i < nCount && p[i] != tkEnd;) {
    const unsigned short w = p[i];
    const unsigned short wOp = i + 1 < nCount ? p[i + 1] : 0;
    switch (w) {
      case tkMonthName1:
        AppendText(locale.astrMonthNames[t.nMonth - 1].substr(0, 1));
        break;
      case tkMonthName:
        AppendText(locale.astrMonthNames[t.nMonth - 1]);
        break;
      case tkMonthAbbrev:
        AppendText(locale.astrMonthAbbrev[t.nMonth - 1]);
        break;
      case tkMonth2:
        AppendNumber(t.nMonth, 2);
        break;
      case tkMonth1:
        AppendNumber(t.nMonth, 1);
        break;
      case tkDayNameA:
      case tkDayName:
        AppendText(locale.astrDayNames[t.nWeekday - 1]);
        break;
      case tkDayAbbrevA:
      case tkDayAbbrev:
        AppendText(locale.astrDayAbbrev[t.nWeekday - 1]);
        break;
      case tkDay2:
        AppendNumber(t.nDay, 2);
        break;
      case tkDay1:
        AppendNumber(t.nDay, 1);
        break;
      case tkYear4:
      case tkYearC:
      case tkYearJ:
      case tkEraYear2:
      case tkEraYear1:
        AppendNumber(t.nYear, 4);
        break;
      case tkYear2:
        AppendNumber(t.nYear % 100, 2);
        break;
      case tkEra:
      case tkHw:
      case tkHnw:
        break;  // the Gregorian calendar has no era name
      case tkHour2:
      case tkHour1: {
        int nHour = t.nHour;
        if (wOp) nHour = nHour == 0 ? 12 : nHour > 12 ? nHour - 12 : nHour;
        AppendNumber(nHour, w == tkHour2 ? 2 : 1);
        break;
      }
      case tkMinute2:
      case tkMinute1:
        AppendNumber(bElapsedHours ? nTotalMs / 60000 % 60 : t.nMinute, w == tkMinute2 ? 2 : 1);
        break;
      case tkSecond2:
      case tkSecond1:
        AppendNumber((bElapsedHours || bElapsedMinutes) ? nTotalMs / 1000 % 60 : t.nSecond,
                     w == tkSecond2 ? 2 : 1);
        appendFraction(wOp);
        break;
      case tkAmPm:
      case tkAmPmS:
      case tkAmPmC:
      case tkAmPmSS:
        AppendText(t.nHour < 12 ? locale.strAm : locale.strPm);
        break;
      case tkAmPmChinese:
        Append(t.nHour < 12 ? u"\u4E0A\u5348" : u"\u4E0B\u5348", 2);
        break;
      case tkAP:
        Append(t.nHour < 12 ? u'A' : u'P');
        break;
      case tkElapsedHours:
        AppendNumber(nTotalMs / 3600000, wOp);
        break;
      case tkElapsedMinutes:
        AppendNumber(bElapsedHours ? nTotalMs / 60000 % 60 : nTotalMs / 60000, wOp);
        break;
      case tkElapsedSeconds:
        AppendNumber((bElapsedHours || bElapsedMinutes) ? nTotalMs / 1000 % 60 : nTotalMs / 1000,
                     wOp);
        appendFraction(p[i + 2]);
        break;
      case tkDecimalPoint:
        Append(u'.');
        break;
      case tkLocaleBlock: {
        int k = i + 1;
        while (p[k] != 0) ++k;
        const unsigned nLcid = p[k + 1] | (static_cast<unsigned>(p[k + 2]) << 16);
        FormatCommonToken(i);
        // The system long date and long time have no codes of their own.
        if (nLcid == 0xF800) {
          AppendText(locale.astrDayNames[t.nWeekday - 1]);
          Append(u", ", 2);
          AppendText(locale.astrMonthNames[t.nMonth - 1]);
          Append(u' ');
          AppendNumber(t.nDay, 1);
          Append(u", ", 2);
          AppendNumber(t.nYear, 4);
        } else if (nLcid == 0xF400) {
          const int nHour = locale.b24Hour ? t.nHour
                                           : (t.nHour == 0   ? 12
                                              : t.nHour > 12 ? t.nHour - 12
                                                             : t.nHour);
          AppendNumber(nHour, locale.bHourLeadingZero ? 2 : 1);
          AppendText(locale.strTimeSep);
          AppendNumber(t.nMinute, 2);
          AppendText(locale.strTimeSep);
          AppendNumber(t.nSecond, 2);
          if (!locale.b24Hour) {
            Append(u' ');
            AppendText(t.nHour < 12 ? locale.strAm : locale.strPm);
          }
        }
        break;
      }
      default: {
        const int nNext = FormatCommonToken(i);
        if (nNext >= 0) {
          i = nNext;
          continue;
        }
        break;
      }
    }
    i = NextToken(p, i, nCount);
  }
}

void CSingleFormat::FormatText(const char16_t* pwszText, int nLen) const {
  const unsigned short* p = m_pTokens;
  const int nCount = p ? m_wTokenCount : 0;
  for (int i = 0; i < nCount && p[i] != tkEnd;) {
    if (p[i] == tkTextValue || p[i] == tkGeneral) {
      Append(pwszText, nLen);
      ++i;
      continue;
    }
    const int nNext = FormatCommonToken(i);
    i = nNext >= 0 ? nNext : NextToken(p, i, nCount);
  }
}
