// The words and characters of the number-format language, in the English notation or
// in the user's locale. Private to format/.
#pragma once

#include <string>

// Positions in TFormatVocabulary::acChars. Keep in the order of the format characters.
enum EFormatChar : int {
  fcZero = 0,
  fcHash,
  fcQuestion,
  fcExponent,
  fcPercent,
  fcSlash,
  fcBackslash,
  fcQuote,
  fcAt,
  fcStar,
  fcUnderscore,
  fcOpenBracket,
  fcCloseBracket,
  fcHour,
  fcMinute,
  fcSecond,
  fcDecimal,
  fcThousands,
  fcYear,
  fcDateSep,
  fcTimeSep,
  fcPlus,
  fcMinus,
  fcEquals,
  fcCount
};

struct TFormatVocabulary {
  char16_t acChars[fcCount];
  std::u16string strGeneral;
  std::u16string strReserved;        // characters a literal must be escaped for
  std::u16string astrDateCodes[20];  // token codes 9..28
  std::u16string astrTimeCodes[14];  // token codes 29..42
  std::u16string astrOperators[6];   // "<=", ">=", "<>", "<", "=", ">"
  std::u16string astrColors[9];      // "Black" .. "Yellow", "Color"
};

// The English vocabulary for parse types 1 and 2, the localized one for the others.
// The localized vocabulary is built on first use and rebuilt when the locale or the
// host's resource table changes; the reference is valid until then.
const TFormatVocabulary& GetFormatVocabulary(int nParseType);

// Lower-case folding used for every comparison of format words.
char16_t FoldFormatChar(char16_t c);

// Length of the longest entry of pList (nCount entries) that pwsz starts with, compared
// case-insensitively, and its index through pnIndex (the first entry wins a tie); 0
// when none matches. pwsz is zero-terminated.
int MatchFormatWord(const char16_t* pwsz, const std::u16string* pList, int nCount, int* pnIndex);

// The number of operand words that follow the token code wCode at pTokens[nAt - 1], or
// -1 when a text operand runs past nCount words.
int FormatTokenOperands(unsigned short wCode, const unsigned short* pTokens, int nAt, int nCount);
