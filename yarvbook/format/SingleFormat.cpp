// Parsing, writing back, comparing and storing one format section. Rendering lives in
// FormatRender.cpp.
#include "format/SingleFormat.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "format/FormatVocabulary.h"
#include "platform/Archive.h"
#include "platform/Locale.h"

namespace {

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t'; }

// Reads a number written in the vocabulary's notation: leading blanks, a sign, digits
// with one decimal character, an exponent. Stops at the first character that cannot
// continue the number. Returns the characters consumed, 0 when no digit was seen.
int ReadFormatNumber(const char16_t* pwsz, char16_t cDecimal, double& r) {
  int i = 0;
  while (IsBlank(pwsz[i])) ++i;
  std::string strAscii;
  if (pwsz[i] == u'+' || pwsz[i] == u'-') strAscii += static_cast<char>(pwsz[i++]);
  bool bDigits = false;
  while (pwsz[i] >= u'0' && pwsz[i] <= u'9') {
    strAscii += static_cast<char>(pwsz[i++]);
    bDigits = true;
  }
  if (pwsz[i] == cDecimal) {
    strAscii += '.';
    ++i;
    while (pwsz[i] >= u'0' && pwsz[i] <= u'9') {
      strAscii += static_cast<char>(pwsz[i++]);
      bDigits = true;
    }
  }
  if (!bDigits) return 0;
  if (pwsz[i] == u'e' || pwsz[i] == u'E') {
    int j = i + 1;
    if (pwsz[j] == u'+' || pwsz[j] == u'-') ++j;
    if (pwsz[j] >= u'0' && pwsz[j] <= u'9') {
      strAscii += 'e';
      strAscii.append(1, static_cast<char>(pwsz[i + 1]));
      i += 2;
      while (pwsz[i] >= u'0' && pwsz[i] <= u'9' && strAscii.size() < 64)
        strAscii += static_cast<char>(pwsz[i++]);
      while (pwsz[i] >= u'0' && pwsz[i] <= u'9') ++i;
    }
  }
  r = std::strtod(strAscii.c_str(), nullptr);
  if (!std::isfinite(r)) return 0;
  return i;
}

// The number as the shortest text that reads back the same, in the given notation.
void AppendFormatNumber(std::u16string& str, double r, char16_t cDecimal) {
  char sz[40];
  for (int nDigits = 1; nDigits <= 17; ++nDigits) {
    std::snprintf(sz, sizeof sz, "%.*g", nDigits, r);
    if (std::strtod(sz, nullptr) == r) break;
  }
  for (const char* p = sz; *p; ++p) str += *p == '.' ? cDecimal : static_cast<char16_t>(*p);
}

// The currency symbol as the parser reads it back: bare when no character of it has a
// meaning of its own, else in quotes (a quoted symbol is recognised as the currency).
void AppendCurrency(std::u16string& str, const TFormatVocabulary& voc) {
  const std::u16string& strSymbol = GetLocaleSettings().strCurrency;
  bool bBare = !strSymbol.empty();
  for (char16_t c : strSymbol)
    if (voc.strReserved.find(FoldFormatChar(c)) != std::u16string::npos || c == u'\\' ||
        c == u';' || IsBlank(c) || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'))
      bBare = false;
  if (bBare) {
    str += strSymbol;
    return;
  }
  str += u'"';
  str += strSymbol;
  str += u'"';
}

}  // namespace

char16_t CSingleFormat::m_Buf[CSingleFormat::kMaxFormatted + 1];
unsigned short CSingleFormat::m_wFormattedLen = 0;
bool CSingleFormat::m_bIsGeneral = false;
double CSingleFormat::m_rGeneralValue = 0;
unsigned short CSingleFormat::m_wGeneralStart = 0;
unsigned short CSingleFormat::m_wGeneralEnd = 0;
unsigned short CSingleFormat::m_wGeneralPrecision = 0;

CSingleFormat::CSingleFormat() = default;

CSingleFormat::CSingleFormat(const CSingleFormat& other) { *this = other; }

CSingleFormat& CSingleFormat::operator=(const CSingleFormat& other) {
  if (this == &other) return *this;
  SetTokens(other.m_pTokens, other.m_pTokens ? other.m_wTokenCount : 0);
  m_nFixedDenominator = other.m_nFixedDenominator;
  m_nType = other.m_nType;
  m_nOperator = other.m_nOperator;
  m_rCondition = other.m_rCondition;
  m_bFlags = other.m_bFlags;
  m_nSecPrecision = other.m_nSecPrecision;
  m_nColorIndex = other.m_nColorIndex;
  m_wColorNumber = other.m_wColorNumber;
  m_nScale = other.m_nScale;
  std::copy(std::begin(other.m_aGroups), std::end(other.m_aGroups), std::begin(m_aGroups));
  return *this;
}

CSingleFormat::~CSingleFormat() { delete[] m_pTokens; }

void CSingleFormat::Clear() {
  delete[] m_pTokens;
  m_pTokens = nullptr;
  m_wTokenCount = 0;
  m_nFixedDenominator = 0;
  m_nType = ftUndetermined;
  m_nOperator = opNone;
  m_rCondition = 0;
  m_bFlags = 0;
  m_nSecPrecision = 3;
  m_nColorIndex = 0;
  m_wColorNumber = 0;
  m_nScale = 0;
  for (TDigitGroup& g : m_aGroups) g = {};
}

void CSingleFormat::SetTokens(const unsigned short* pTokens, int nCount) {
  unsigned short* pNew = nullptr;
  if (nCount > 0) {
    pNew = new unsigned short[nCount];
    std::copy(pTokens, pTokens + nCount, pNew);
  }
  delete[] m_pTokens;
  m_pTokens = pNew;
  m_wTokenCount = static_cast<unsigned short>(nCount);
}

int CSingleFormat::Parse(const char16_t*& pwszText, int nParseType) {
  return ParseSection(pwszText, nParseType, false, nullptr);
}

// One pass over the section's characters; the rules are tried in a fixed order, which
// decides between readings that share a letter ('E' exponent or era, "m" month or
// minute, '/' fraction, date separator or literal).
int CSingleFormat::ParseSection(const char16_t*& pwszText, int nParseType, bool bOtherwise,
                                bool* pbSemicolon) {
  Clear();
  if (pbSemicolon) *pbSemicolon = false;
  if (bOtherwise) m_nOperator = opOtherwise;
  const TFormatVocabulary& voc = GetFormatVocabulary(nParseType);
  const std::u16string& strCurrency = GetLocaleSettings().strCurrency;

  char16_t aText[kMaxSectionText + 1];
  int nLen = 0;
  while (nLen < kMaxSectionText && pwszText[nLen]) {
    aText[nLen] = pwszText[nLen];
    ++nLen;
  }
  aText[nLen] = 0;
  const bool bCut = pwszText[nLen] != 0;

  auto is = [&](int i, int nChar) {
    return aText[i] != 0 && FoldFormatChar(aText[i]) == FoldFormatChar(voc.acChars[nChar]);
  };
  auto isPlaceholder = [&](int i) { return is(i, fcZero) || is(i, fcHash) || is(i, fcQuestion); };

  std::vector<unsigned short> tokens;
  tokens.reserve(64);
  int nPart = 0;
  int nPending = -1;   // token index of an "m"/"mm" that may still become minutes
  int nLastHour = -1;  // token index of the last hour's 12-hour operand
  int nLastCode = -1;  // the last date or time code emitted
  bool bAmPmSeen = false;
  bool bDecimalSeen = false;
  bool bDenomQuestion = false;
  // Token index where the run of placeholders that ends the token list starts (-1:
  // the list does not end in a placeholder). Tokens have operands, so a walk back
  // through the list could take an operand (a literal "\x02") for a placeholder code.
  int nPlaceholderRun = -1;
  int nPlaceholderRunEnd = -1;  // token count right after that run's last placeholder
  int i = 0;
  auto fail = [&](int nPos) {
    pwszText += std::min(nPos, nLen);
    return 0;
  };
  auto emit = [&](unsigned c) { tokens.push_back(static_cast<unsigned short>(c)); };
  // The fraction digits after a seconds code ("ss.00", "[s].000"): up to three zeros
  // after a decimal point, emitted as the code's operand. The section shows the
  // fewest of all its seconds codes.
  auto emitSecondFraction = [&]() {
    int nFraction = 0;
    if ((is(i, fcDecimal) || aText[i] == u'\uFF0E') && aText[i + 1] == u'0') {
      ++i;
      while (nFraction < 3 && aText[i] == u'0') {
        ++nFraction;
        ++i;
      }
    }
    m_nSecPrecision = static_cast<unsigned char>(std::min<int>(m_nSecPrecision, nFraction));
    emit(nFraction);
  };

  while (i < nLen && aText[i] != u';') {
    const char16_t c = aText[i];
    if (isPlaceholder(i)) {
      if (m_nType == ftUndetermined) m_nType = ftNumber;
      if (!IsNumeric()) return fail(i);
      const bool bQuestion = is(i, fcQuestion);
      if (nPart == 2 && m_nType == ftFraction) {
        if (m_nFixedDenominator != 0) return fail(i);
        if (bDenomQuestion && !bQuestion) return fail(i);
        if (m_aGroups[2].nCount == 0 && bQuestion) m_aGroups[2].wFlags |= gfQuestionDenom;
        if (bQuestion) bDenomQuestion = true;
      }
      if (static_cast<int>(tokens.size()) != nPlaceholderRunEnd)
        nPlaceholderRun = static_cast<int>(tokens.size());
      emit(is(i, fcZero) ? tkDigitZero : is(i, fcHash) ? tkDigitHash : tkDigitQuestion);
      emit(nPart);
      nPlaceholderRunEnd = static_cast<int>(tokens.size());
      ++m_aGroups[nPart].nCount;
      ++i;
      continue;
    }
    if (is(i, fcPercent) && m_nType != ftPercent) {
      m_bFlags |= fPercent;
      if (m_nType == ftUndetermined || m_nType == ftNumber)
        m_nType = ftPercent;
      else if (!IsNumeric())
        return fail(i);
      m_nScale = static_cast<short>(m_nScale - 2);
      emit(tkPercent);
      ++i;
      continue;
    }
    if (is(i, fcExponent) && IsNumeric()) {
      const bool bPlus = is(i + 1, fcPlus);
      if (!bPlus && !is(i + 1, fcMinus)) return fail(i + 1);
      m_nType = ftScientific;
      emit(tkExponent);
      emit((c == FoldFormatChar(voc.acChars[fcExponent]) && c != voc.acChars[fcExponent] ? 1 : 0) |
           (bPlus ? 2 : 0));
      nPart = 2;
      i += 2;
      continue;
    }
    if (is(i, fcSlash)) {
      if (m_nType == ftNumber && nPart == 0) {
        // The run of placeholders right before the slash is the numerator.
        if (nPlaceholderRunEnd == static_cast<int>(tokens.size())) {
          for (int j = nPlaceholderRun; j + 1 < nPlaceholderRunEnd; j += 2) {
            tokens[j + 1] = 1;
            --m_aGroups[0].nCount;
            ++m_aGroups[1].nCount;
          }
        }
        emit(tkFractionSlash);
        m_nType = ftFraction;
        nPart = 2;
        ++i;
        continue;
      }
      if ((m_bFlags & fDate) || nPending >= 0) {
        if (nPending >= 0) {
          nPending = -1;
          m_bFlags |= fDate;
        }
        emit(tkDateSep);
        ++i;
        continue;
      }
      emit(tkLiteral);
      emit(c);
      ++i;
      continue;
    }
    if (m_nType == ftFraction && c >= u'1' && c <= u'9' && m_nFixedDenominator == 0) {
      if (m_aGroups[2].nCount != 0) return fail(i);
      uint32_t nDenom = 0;
      while (aText[i] >= u'0' && aText[i] <= u'9') {
        if (nDenom < 100000000) nDenom = nDenom * 10 + (aText[i] - u'0');
        emit(tkDigitQuestion);
        emit(2);
        ++m_aGroups[2].nCount;
        ++i;
      }
      m_nFixedDenominator = nDenom;
      continue;
    }
    if (is(i, fcOpenBracket)) {
      int j = i + 1;
      if (aText[j] == u'$') {
        if (m_nType != ftUndetermined && !IsNumeric()) return fail(i);
        emit(tkLocaleBlock);
        ++j;
        while (aText[j] && !is(j, fcCloseBracket) && aText[j] != u'-') emit(aText[j++]);
        emit(0);
        uint32_t nLcid = 0;
        if (aText[j] == u'-') {
          ++j;
          int nDigits = 0;
          while (aText[j] && !is(j, fcCloseBracket)) {
            const char16_t h = aText[j];
            int nValue;
            if (h >= u'0' && h <= u'9')
              nValue = h - u'0';
            else if (h >= u'a' && h <= u'f')
              nValue = h - u'a' + 10;
            else if (h >= u'A' && h <= u'F')
              nValue = h - u'A' + 10;
            else
              return fail(j);
            if (++nDigits > 8) return fail(j);
            nLcid = nLcid * 16 + static_cast<uint32_t>(nValue);
            ++j;
          }
        }
        if (!is(j, fcCloseBracket)) return fail(j);
        emit(nLcid & 0xFFFF);
        emit(nLcid >> 16);
        if (nLcid == 0xF400) {
          m_nType = ftTime;
          m_bFlags |= fTime;
        } else if (nLcid == 0xF800) {
          m_nType = ftDate;
          m_bFlags |= fDate;
        } else {
          m_nType = ftUndetermined;  // the placeholders that follow decide
        }
        i = j + 1;
        continue;
      }
      int nIndex = 0;
      if (int n = MatchFormatWord(aText + j, voc.astrOperators, 6, &nIndex)) {
        if (m_bFlags & fCondition) return fail(i);
        double r = 0;
        const int nNumber = ReadFormatNumber(aText + j + n, voc.acChars[fcDecimal], r);
        if (nNumber == 0) return fail(j + n);
        j += n + nNumber;
        while (IsBlank(aText[j])) ++j;
        if (!is(j, fcCloseBracket)) return fail(j);
        m_nOperator = static_cast<EOperator>(nIndex);
        m_rCondition = r;
        m_bFlags |= fCondition;
        i = j + 1;
        continue;
      }
      if (int n = MatchFormatWord(aText + j, voc.astrColors, 9, &nIndex)) {
        if (m_bFlags & fColor) return fail(i);
        j += n;
        if (nIndex == 8) {
          double r = 0;
          const int nNumber = ReadFormatNumber(aText + j, voc.acChars[fcDecimal], r);
          if (nNumber == 0) return fail(j);
          if (!(r >= 1 && r < 57)) return fail(j);
          m_wColorNumber = static_cast<unsigned short>(static_cast<int>(r) - 1);
          j += nNumber;
        }
        while (IsBlank(aText[j])) ++j;
        if (!is(j, fcCloseBracket)) return fail(j);
        m_nColorIndex = static_cast<uint32_t>(nIndex);
        m_bFlags |= fColor;
        i = j + 1;
        continue;
      }
      if (is(j, fcHour) || is(j, fcMinute) || is(j, fcSecond)) {
        const char16_t cLetter = FoldFormatChar(aText[j]);
        int nLetters = 0;
        while (aText[j] && FoldFormatChar(aText[j]) == cLetter) {
          ++nLetters;
          ++j;
        }
        if (!is(j, fcCloseBracket)) return fail(j);
        if (m_nType != ftUndetermined && m_nType != ftDate && m_nType != ftTime) return fail(i);
        m_nType = ftTime;
        m_bFlags |= fTime;
        i = j + 1;
        const unsigned short wCode = cLetter == FoldFormatChar(voc.acChars[fcHour]) ? tkElapsedHours
                                     : cLetter == FoldFormatChar(voc.acChars[fcMinute])
                                         ? tkElapsedMinutes
                                         : tkElapsedSeconds;
        emit(wCode);
        emit(std::min(nLetters, 0xFFFF));
        if (wCode == tkElapsedSeconds) emitSecondFraction();
        nLastCode = wCode;
        continue;
      }
      return fail(i);
    }
    if (is(i, fcQuote)) {
      const int n = static_cast<int>(strCurrency.size());
      if (n > 0 && (m_nType == ftUndetermined || IsNumeric()) &&
          std::u16string_view(aText + i + 1).substr(0, n) == strCurrency &&
          is(i + 1 + n, fcQuote)) {
        m_nType = ftCurrency;
        emit(tkCurrency);
        i += n + 2;
        continue;
      }
      int j = i + 1;
      while (aText[j] && !is(j, fcQuote)) ++j;
      if (!aText[j]) return fail(i);
      emit(tkQuoted);
      for (int k = i + 1; k < j; ++k) emit(aText[k]);
      emit(0);
      i = j + 1;
      continue;
    }
    if (is(i, fcAt)) {
      if (m_nType == ftUndetermined) m_nType = ftText;
      if (m_nType != ftText) return fail(i);
      if (m_nOperator != opOtherwise && m_nOperator != opNone) return fail(i);
      emit(tkTextValue);
      ++i;
      continue;
    }
    if (is(i, fcStar)) {
      if ((m_bFlags & fFill) || aText[i + 1] == 0) return fail(i);
      m_bFlags |= fFill;
      emit(tkFill);
      emit(aText[i + 1]);
      i += 2;
      continue;
    }
    if (is(i, fcUnderscore)) {
      emit(tkSpace);
      emit(aText[i + 1]);
      i += aText[i + 1] ? 2 : 1;
      continue;
    }
    if (is(i, fcYear) && !is(i + 1, fcYear)) {
      emit(tkYear2);
      ++i;
      continue;
    }
    if (is(i, fcBackslash)) {
      if (aText[i + 1] == 0) return fail(i);
      emit(tkLiteral);
      emit(aText[i + 1]);
      i += 2;
      continue;
    }
    if (is(i, fcTimeSep)) {
      if (nPending >= 0) {
        if (m_nType == ftDate) m_nType = ftTime;
        if (m_nType != ftTime) return fail(i);
        tokens[nPending] = tokens[nPending] == tkMonth2 ? tkMinute2 : tkMinute1;
        nPending = -1;
        m_bFlags |= fTime;
      }
      if (m_bFlags & fTime) {
        emit(tkTimeSep);
        ++i;
        continue;
      }
    }
    if (!strCurrency.empty() && (m_nType == ftUndetermined || IsNumeric()) &&
        std::u16string_view(aText + i).substr(0, strCurrency.size()) == strCurrency) {
      m_nType = ftCurrency;
      emit(tkCurrency);
      i += static_cast<int>(strCurrency.size());
      continue;
    }
    if (is(i, fcDecimal)) {
      emit(tkDecimalPoint);
      if (!bDecimalSeen) {
        bDecimalSeen = true;
        nPart = 1;
        m_aGroups[1].wFlags |= gfDecimalPoint;
      }
      ++i;
      continue;
    }
    if (is(i, fcThousands) && i > 0 && (is(i - 1, fcZero) || is(i - 1, fcHash))) {
      if (is(i + 1, fcZero) || is(i + 1, fcHash)) {
        m_aGroups[0].wFlags |= gfGrouping;
        ++i;
        continue;
      }
      while (is(i, fcThousands)) {
        if (m_nScale < 30000) m_nScale = static_cast<short>(m_nScale + 3);
        ++i;
      }
      continue;
    }
    if (int n = MatchFormatWord(aText + i, &voc.strGeneral, 1, nullptr)) {
      if (m_nType != ftUndetermined) return fail(i);
      m_nType = ftGeneral;
      emit(tkGeneral);
      i += n;
      continue;
    }
    int nIndex = 0;
    int nDate = MatchFormatWord(aText + i, voc.astrDateCodes, 20, &nIndex);
    if (nDate && (nIndex == 3 || nIndex == 4) &&
        (nLastCode == tkHour2 || nLastCode == tkHour1 || nLastCode == tkElapsedHours))
      nDate = 0;
    if (nDate) {
      if (m_nType == ftUndetermined) m_nType = ftDate;
      if (m_nType != ftDate && m_nType != ftTime) return fail(i);
      const unsigned short wCode = static_cast<unsigned short>(tkDateFirst + nIndex);
      if (wCode == tkMonth2 || wCode == tkMonth1) {
        nPending = static_cast<int>(tokens.size());
      } else {
        m_bFlags |= fDate;
        nPending = -1;
      }
      emit(wCode);
      nLastCode = wCode;
      i += nDate;
      continue;
    }
    if (int n = MatchFormatWord(aText + i, voc.astrTimeCodes, 14, &nIndex)) {
      if (m_nType == ftUndetermined || m_nType == ftDate) m_nType = ftTime;
      if (m_nType != ftTime) return fail(i);
      unsigned short wCode = static_cast<unsigned short>(tkHour2 + nIndex);
      if (wCode == 36 || wCode == 37) wCode = tkAmPm;
      if (nPending >= 0) {
        tokens[nPending] = tokens[nPending] == tkMonth2 ? tkMinute2 : tkMinute1;
        nPending = -1;
      }
      i += n;
      emit(wCode);
      if (wCode == tkHour2 || wCode == tkHour1) {
        nLastHour = static_cast<int>(tokens.size());
        emit(bAmPmSeen ? 1 : 0);
      } else if (wCode == tkSecond2 || wCode == tkSecond1) {
        emitSecondFraction();
      } else if (wCode >= tkAmPm) {
        bAmPmSeen = true;
        if (nLastHour >= 0) tokens[nLastHour] = 1;
      }
      m_bFlags |= fTime;
      nLastCode = wCode;
      continue;
    }
    emit(tkLiteral);
    emit(c);
    ++i;
  }

  if (m_nType == ftFraction && m_aGroups[2].nCount == 0) return fail(i);
  if (nPending >= 0) m_bFlags |= fDate;
  if (tokens.empty() && (m_bFlags & (fCondition | fColor))) {
    m_nType = ftGeneral;
    emit(tkGeneral);
  }
  if (m_nType != ftNumber && m_nType != ftCurrency && m_nType != ftPercent) m_nScale = 0;
  emit(tkEnd);
  SetTokens(tokens.data(), static_cast<int>(tokens.size()));
  if (pbSemicolon) *pbSemicolon = i < nLen;
  if (i < nLen)
    pwszText += i + 1;  // past the ';'
  else if (bCut)
    pwszText += nLen + std::char_traits<char16_t>::length(pwszText + nLen);
  else
    pwszText += nLen;
  return 1;
}

bool CSingleFormat::MeetsCriteria(double r) const {
  switch (m_nOperator) {
    case opLessEqual:
      return r <= m_rCondition;
    case opGreaterEqual:
      return r >= m_rCondition;
    case opNotEqual:
      return r != m_rCondition;
    case opLess:
      return r < m_rCondition;
    case opEqual:
      return r == m_rCondition;
    case opGreater:
      return r > m_rCondition;
    default:
      return true;
  }
}

bool CSingleFormat::IsNegativeSection() const {
  if (m_nOperator == opLess) return m_rCondition <= 0;
  if (m_nOperator == opLessEqual) return m_rCondition < 0 || m_rCondition == 0;
  if (m_nOperator == opEqual) return m_rCondition < 0;
  return false;
}

int CSingleFormat::Unparse(char16_t* pBuf, int nMax, int nParseType) const {
  if (nMax <= 0) return 0;
  const TFormatVocabulary& voc = GetFormatVocabulary(nParseType);
  std::u16string str;
  if (m_bFlags & fColor) {
    str += voc.acChars[fcOpenBracket];
    str += voc.astrColors[std::min<uint32_t>(m_nColorIndex, 8)];
    if (m_nColorIndex == 8) AppendFormatNumber(str, m_wColorNumber + 1, voc.acChars[fcDecimal]);
    str += voc.acChars[fcCloseBracket];
  }
  if ((m_bFlags & fCondition) && m_nOperator < opOtherwise) {
    str += voc.acChars[fcOpenBracket];
    str += voc.astrOperators[m_nOperator];
    AppendFormatNumber(str, m_rCondition, voc.acChars[fcDecimal]);
    str += voc.acChars[fcCloseBracket];
  }
  const unsigned short* p = m_pTokens;
  const int nCount = p ? m_wTokenCount : 0;
  int nLastDigit = -1;
  int nPercents = 0;
  for (int i = 0; i < nCount && p[i] != tkEnd;) {
    const int nOperands = FormatTokenOperands(p[i], p, i + 1, nCount);
    if (nOperands < 0) break;
    if (p[i] >= tkDigitZero && p[i] <= tkDigitQuestion && i + 1 < nCount && p[i + 1] < 2)
      nLastDigit = i;
    if (p[i] == tkPercent) ++nPercents;
    i += 1 + nOperands;
  }
  const int nCommas = nLastDigit >= 0 ? (m_nScale + 2 * nPercents) / 3 : 0;
  const bool bDateSection = m_nType == ftDate || m_nType == ftTime;
  bool bGroupWritten = !(m_aGroups[0].wFlags & gfGrouping);
  bool bDenominatorWritten = false;
  auto appendSecondFraction = [&](int nDigits) {
    if (nDigits <= 0) return;
    str += voc.acChars[fcDecimal];
    str.append(std::min(nDigits, 3), u'0');
  };
  for (int i = 0; i < nCount && p[i] != tkEnd;) {
    const unsigned short w = p[i];
    const int nOperands = FormatTokenOperands(w, p, i + 1, nCount);
    if (nOperands < 0 || i + nOperands >= nCount) break;
    const unsigned short wOp = nOperands > 0 ? p[i + 1] : 0;
    switch (w) {
      case tkGeneral:
        str += voc.strGeneral;
        break;
      case tkDigitZero:
      case tkDigitHash:
      case tkDigitQuestion:
        if (wOp == 2 && m_nFixedDenominator != 0 && m_nType == ftFraction) {
          if (!bDenominatorWritten) {
            bDenominatorWritten = true;
            for (char c : std::to_string(m_nFixedDenominator)) str += static_cast<char16_t>(c);
          }
          break;
        }
        str += voc.acChars[w == tkDigitZero ? fcZero : w == tkDigitHash ? fcHash : fcQuestion];
        if (wOp == 0 && !bGroupWritten) {
          str += voc.acChars[fcThousands];
          bGroupWritten = true;
        }
        if (i == nLastDigit)
          for (int k = 0; k < nCommas; ++k) str += voc.acChars[fcThousands];
        break;
      case tkDecimalPoint:
        str += voc.acChars[fcDecimal];
        break;
      case tkCurrency:
        AppendCurrency(str, voc);
        break;
      case tkExponent:
        str += (wOp & 1) ? FoldFormatChar(voc.acChars[fcExponent]) : voc.acChars[fcExponent];
        str += voc.acChars[(wOp & 2) ? fcPlus : fcMinus];
        break;
      case tkPercent:
        str += voc.acChars[fcPercent];
        break;
      case tkFractionSlash:
        str += voc.acChars[fcSlash];
        break;
      case tkHour2:
      case tkHour1:
      case tkMinute2:
      case tkMinute1:
      case tkAmPm:
      case tkAmPmChinese:
      case tkAmPmS:
      case tkAmPmC:
      case tkAmPmSS:
      case tkAP:
        str += voc.astrTimeCodes[w - tkHour2];
        break;
      case tkSecond2:
      case tkSecond1:
        str += voc.astrTimeCodes[w - tkHour2];
        appendSecondFraction(wOp);
        break;
      case tkLiteral: {
        const char16_t c = static_cast<char16_t>(wOp);
        const bool bEscape = voc.strReserved.find(FoldFormatChar(c)) != std::u16string::npos ||
                             c == voc.acChars[fcBackslash] || c == u';' ||
                             c == voc.acChars[fcDecimal] || c == voc.acChars[fcThousands] ||
                             (c == voc.acChars[fcSlash] && !bDateSection) ||
                             (m_nType == ftFraction && c >= u'0' && c <= u'9');
        if (bEscape) str += voc.acChars[fcBackslash];
        str += c;
        break;
      }
      case tkQuoted:
        str += voc.acChars[fcQuote];
        for (int k = i + 1; p[k] != 0; ++k) str += static_cast<char16_t>(p[k]);
        str += voc.acChars[fcQuote];
        break;
      case tkTextValue:
        str += voc.acChars[fcAt];
        break;
      case tkFill:
        str += voc.acChars[fcStar];
        str += static_cast<char16_t>(wOp);
        break;
      case tkSpace:
        str += voc.acChars[fcUnderscore];
        if (wOp) str += static_cast<char16_t>(wOp);
        break;
      case tkDateSep:
        str += voc.acChars[fcDateSep];
        break;
      case tkTimeSep:
        str += voc.acChars[fcTimeSep];
        break;
      case tkElapsedHours:
      case tkElapsedMinutes:
      case tkElapsedSeconds: {
        const int nLetter = w == tkElapsedHours     ? fcHour
                            : w == tkElapsedMinutes ? fcMinute
                                                    : fcSecond;
        str += voc.acChars[fcOpenBracket];
        str.append(std::max<int>(wOp, 1), voc.acChars[nLetter]);
        str += voc.acChars[fcCloseBracket];
        if (w == tkElapsedSeconds) appendSecondFraction(p[i + 2]);
        break;
      }
      case tkLocaleBlock: {
        str += voc.acChars[fcOpenBracket];
        str += u'$';
        int k = i + 1;
        for (; p[k] != 0; ++k) str += static_cast<char16_t>(p[k]);
        const uint32_t nLcid = p[k + 1] | (static_cast<uint32_t>(p[k + 2]) << 16);
        if (nLcid != 0) {
          char sz[16];
          std::snprintf(sz, sizeof sz, "-%X", static_cast<unsigned>(nLcid));
          for (const char* q = sz; *q; ++q) str += static_cast<char16_t>(*q);
        }
        str += voc.acChars[fcCloseBracket];
        break;
      }
      default:
        if (w >= tkDateFirst && w <= tkDateLast) str += voc.astrDateCodes[w - tkDateFirst];
        break;
    }
    i += 1 + nOperands;
  }
  const int nCopy = std::min<int>(static_cast<int>(str.size()), nMax - 1);
  std::copy(str.begin(), str.begin() + nCopy, pBuf);
  pBuf[nCopy] = 0;
  return nCopy;
}

bool CSingleFormat::operator==(const CSingleFormat& other) const {
  const int nCount = m_pTokens ? m_wTokenCount : 0;
  const int nOtherCount = other.m_pTokens ? other.m_wTokenCount : 0;
  if (nCount != nOtherCount) return false;
  if (nCount && !std::equal(m_pTokens, m_pTokens + nCount, other.m_pTokens)) return false;
  for (int i = 0; i < 3; ++i)
    if (m_aGroups[i].nCount != other.m_aGroups[i].nCount ||
        m_aGroups[i].wFlags != other.m_aGroups[i].wFlags)
      return false;
  return m_nFixedDenominator == other.m_nFixedDenominator && m_nType == other.m_nType &&
         m_nOperator == other.m_nOperator && m_rCondition == other.m_rCondition &&
         (m_bFlags & ~fAutoMilliseconds) == (other.m_bFlags & ~fAutoMilliseconds) &&
         m_nColorIndex == other.m_nColorIndex && m_wColorNumber == other.m_wColorNumber &&
         m_nScale == other.m_nScale;
}

bool CSingleFormat::IsValidTokenArray(const unsigned short* pTokens, int nCount) {
  if (!pTokens || nCount <= 0) return false;
  int i = 0;
  while (i < nCount) {
    const unsigned short w = pTokens[i];
    if (w == tkEnd) return i == nCount - 1;
    if (w > tkEnd || w == 36 || w == 37) return false;
    const int nOperands = FormatTokenOperands(w, pTokens, i + 1, nCount);
    if (nOperands < 0 || i + nOperands >= nCount - 1) return false;
    if ((w >= tkDigitZero && w <= tkDigitQuestion) && pTokens[i + 1] > 2) return false;
    i += 1 + nOperands;
  }
  return false;
}

// Stored layout of a section, little-endian:
//   u32 type | u32 operator | f64 condition | u16 flags | u32 colour index
//   u16 colour number | i16 scale | u32 fixed denominator | u16 token count
//   token count × u16 tokens | 3 × (u16 count, u16 flags) digit groups
// The stored flag word numbers the bits differently from m_bFlags: percent 0x40,
// spare 0x20, fill 0x10, colour 0x08, date 0x04, time 0x02, condition 0x01.
namespace {
constexpr struct {
  unsigned char bMemory;
  unsigned short wStored;
} kFlagMap[] = {
    {CSingleFormat::fPercent, 0x40},   {CSingleFormat::fSpare, 0x20}, {CSingleFormat::fFill, 0x10},
    {CSingleFormat::fColor, 0x08},     {CSingleFormat::fDate, 0x04},  {CSingleFormat::fTime, 0x02},
    {CSingleFormat::fCondition, 0x01},
};
}  // namespace

bool CSingleFormat::SerializeCB(CPelArchive& ar) {
  if (ar.IsStoring()) {
    unsigned short wFlags = 0;
    for (const auto& m : kFlagMap)
      if (m_bFlags & m.bMemory) wFlags |= m.wStored;
    const unsigned short wCount = m_pTokens ? m_wTokenCount : 0;
    ar << static_cast<uint32_t>(m_nType) << static_cast<uint32_t>(m_nOperator) << m_rCondition
       << wFlags << m_nColorIndex << m_wColorNumber << static_cast<int16_t>(m_nScale)
       << m_nFixedDenominator << wCount;
    for (int i = 0; i < wCount; ++i) ar << m_pTokens[i];
    for (const TDigitGroup& g : m_aGroups) ar << g.nCount << g.wFlags;
    return !ar.IsFailed();
  }
  Clear();
  uint32_t nType = 0, nOperator = 0, nColorIndex = 0, nDenominator = 0;
  double rCondition = 0;
  uint16_t wFlags = 0, wColorNumber = 0, wCount = 0;
  int16_t nScale = 0;
  ar >> nType >> nOperator >> rCondition >> wFlags >> nColorIndex >> wColorNumber >> nScale >>
      nDenominator >> wCount;
  if (ar.IsFailed() || static_cast<std::size_t>(wCount) * 2 > ar.Remaining()) return false;
  std::vector<unsigned short> tokens(wCount);
  for (unsigned short& w : tokens) ar >> w;
  TDigitGroup aGroups[3];
  for (TDigitGroup& g : aGroups) ar >> g.nCount >> g.wFlags;
  const bool bTypeKnown = nType <= ftText || nType == ftUndetermined;
  if (ar.IsFailed() || !bTypeKnown || nOperator > opNone || nColorIndex > 8 || wColorNumber > 55 ||
      (wFlags & ~0x7F) || !std::isfinite(rCondition) ||
      (wCount == 0 ? nType != ftUndetermined : !IsValidTokenArray(tokens.data(), wCount)))
    return false;
  SetTokens(tokens.data(), wCount);
  m_nType = static_cast<EType>(nType);
  m_nOperator = static_cast<EOperator>(nOperator);
  m_rCondition = rCondition;
  for (const auto& m : kFlagMap)
    if (wFlags & m.wStored) m_bFlags |= m.bMemory;
  m_nColorIndex = nColorIndex;
  m_wColorNumber = wColorNumber;
  m_nScale = nScale;
  m_nFixedDenominator = nDenominator;
  std::copy(std::begin(aGroups), std::end(aGroups), std::begin(m_aGroups));
  // The seconds precision is not stored: it follows from the seconds codes.
  for (int i = 0; i + 1 < wCount;) {
    const unsigned short w = tokens[i];
    if (w == tkSecond2 || w == tkSecond1)
      m_nSecPrecision = static_cast<unsigned char>(
          std::min<int>(m_nSecPrecision, std::min<int>(tokens[i + 1], 3)));
    else if (w == tkElapsedSeconds)
      m_nSecPrecision = static_cast<unsigned char>(
          std::min<int>(m_nSecPrecision, std::min<int>(tokens[i + 2], 3)));
    i += 1 + FormatTokenOperands(w, tokens.data(), i + 1, wCount);
  }
  return true;
}
