// The English vocabulary is a constant table; the localized one takes the locale's
// decimal and grouping characters and the host's words, each falling back to English.
#include "format/FormatVocabulary.h"

#include "format/SingleFormat.h"
#include "platform/Locale.h"
#include "platform/ResourceIds.h"
#include "platform/Resources.h"
#include "platform/TextServices.h"

namespace {

constexpr char16_t kEnglishChars[fcCount + 1] = u"0#?E%/\\\"@*_[]hms.,y/:+-=";
constexpr const char16_t* kDateCodes[20] = {
    u"mmmmm", u"mmmm", u"mmm", u"mm", u"m",  u"aaaa", u"dddd", u"aaa", u"ddd", u"dd",
    u"d",     u"yyyy", u"yy",  u"cy", u"jy", u"g",    u"ee",   u"e",   u"hw",  u"hnw"};
// Codes 36 and 37 are further spellings of 35 that the parser folds into it.
constexpr const char16_t* kTimeCodes[14] = {
    u"hh",      u"h",       u"mm",        u"m",     u"ss",
    u"s",       u"AM/PM",   u"AM/PM",     u"AM/PM", u"\u4E0A\u5348/\u4E0B\u5348",
    u"AMS/PMS", u"AMC/PMC", u"AMSS/PMSS", u"A/P"};
constexpr const char16_t* kOperators[6] = {u"<=", u">=", u"<>", u"<", u"=", u">"};
constexpr const char16_t* kColors[9] = {u"Black", u"Blue",  u"Cyan",   u"Green", u"Magenta",
                                        u"Red",   u"White", u"Yellow", u"Color"};

void FillEnglish(TFormatVocabulary& v) {
  for (int i = 0; i < fcCount; ++i) v.acChars[i] = kEnglishChars[i];
  v.strGeneral = u"General";
  v.strReserved = u"0#?e%\"@*_[]hms.,:gmdyap";
  for (int i = 0; i < 20; ++i) v.astrDateCodes[i] = kDateCodes[i];
  for (int i = 0; i < 14; ++i) v.astrTimeCodes[i] = kTimeCodes[i];
  for (int i = 0; i < 6; ++i) v.astrOperators[i] = kOperators[i];
  for (int i = 0; i < 9; ++i) v.astrColors[i] = kColors[i];
}

// A host text replaces the English word; a missing or empty one leaves it.
void LoadWord(unsigned nId, std::u16string& str) {
  const char16_t* pwsz = LoadResourceString(nId);
  if (pwsz && *pwsz) str = pwsz;
}

struct TVocabularies {
  TFormatVocabulary english;
  TFormatVocabulary local;
  unsigned nLocaleGeneration = ~0u;
  unsigned nResourceGeneration = ~0u;
  TVocabularies() { FillEnglish(english); }
};

TVocabularies& GetVocabularies() {
  static TVocabularies s_vocabularies;
  return s_vocabularies;
}

}  // namespace

char16_t FoldFormatChar(char16_t c) {
  if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
  return ToLowerChar(c);
}

int MatchFormatWord(const char16_t* pwsz, const std::u16string* pList, int nCount, int* pnIndex) {
  int nBest = 0;
  for (int i = 0; i < nCount; ++i) {
    const std::u16string& str = pList[i];
    const int nLen = static_cast<int>(str.size());
    if (nLen <= nBest) continue;
    int j = 0;
    while (j < nLen && pwsz[j] && FoldFormatChar(pwsz[j]) == FoldFormatChar(str[j])) ++j;
    if (j == nLen) {
      nBest = nLen;
      if (pnIndex) *pnIndex = i;
    }
  }
  return nBest;
}

const TFormatVocabulary& GetFormatVocabulary(int nParseType) {
  TVocabularies& v = GetVocabularies();
  if (nParseType == ptEnglish || nParseType == ptEnglishFile) return v.english;
  if (v.nLocaleGeneration == GetLocaleGeneration() &&
      v.nResourceGeneration == GetResourceGeneration())
    return v.local;
  TFormatVocabulary& local = v.local;
  FillEnglish(local);
  const TLocaleSettings& locale = GetLocaleSettings();
  local.acChars[fcDecimal] = locale.cDecimal;
  local.acChars[fcThousands] = locale.cThousands;
  LoadWord(IDS_FMT_GENERAL, local.strGeneral);
  for (unsigned i = 0; i < IDS_FMT_COLOR_COUNT; ++i)
    LoadWord(IDS_FMT_COLOR_BASE + i, local.astrColors[i]);
  for (unsigned i = 0; i < IDS_FMT_DATE_CODE_COUNT; ++i)
    LoadWord(IDS_FMT_DATE_CODE_BASE + i, local.astrDateCodes[i]);
  for (unsigned i = 0; i < IDS_FMT_TIME_CODE_COUNT; ++i)
    LoadWord(IDS_FMT_TIME_CODE_BASE + i, local.astrTimeCodes[i]);
  for (unsigned i = 0; i < IDS_FMT_OPERATOR_COUNT; ++i)
    LoadWord(IDS_FMT_OPERATOR_BASE + i, local.astrOperators[i]);
  // The escape set follows the local decimal and grouping characters.
  std::u16string& strReserved = local.strReserved;
  for (char16_t& c : strReserved) {
    if (c == u'.')
      c = FoldFormatChar(locale.cDecimal);
    else if (c == u',')
      c = FoldFormatChar(locale.cThousands);
  }
  v.nLocaleGeneration = GetLocaleGeneration();
  v.nResourceGeneration = GetResourceGeneration();
  return local;
}

int FormatTokenOperands(unsigned short wCode, const unsigned short* pTokens, int nAt, int nCount) {
  switch (wCode) {
    case CSingleFormat::tkDigitZero:
    case CSingleFormat::tkDigitHash:
    case CSingleFormat::tkDigitQuestion:
    case CSingleFormat::tkExponent:
    case CSingleFormat::tkHour2:
    case CSingleFormat::tkHour1:
    case CSingleFormat::tkSecond2:
    case CSingleFormat::tkSecond1:
    case CSingleFormat::tkLiteral:
    case CSingleFormat::tkFill:
    case CSingleFormat::tkSpace:
    case CSingleFormat::tkElapsedHours:
    case CSingleFormat::tkElapsedMinutes:
      return 1;
    case CSingleFormat::tkElapsedSeconds:
      return 2;
    case CSingleFormat::tkQuoted:
    case CSingleFormat::tkLocaleBlock: {
      int j = nAt;
      while (j < nCount && pTokens[j] != 0) ++j;
      if (j >= nCount) return -1;
      return j - nAt + 1 + (wCode == CSingleFormat::tkLocaleBlock ? 2 : 0);
    }
    default:
      return 0;
  }
}
