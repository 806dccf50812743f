// Reading values from text, shared by TValue's conversions: numbers in the locale's
// or the English notation, TRUE/FALSE, error texts, fractions, dates and times.
// Private to eval/.
#pragma once

#include "eval/Value.h"
#include "format/SingleFormat.h"

// What a text reads as: a Real, a Logical or an Error, with the built-in number
// format that matches its shape (0 when none).
struct TParsedText {
  TValue::TValType vt = TValue::vtEmpty;
  double r = 0;
  int nInt = 0;  // Logical 0/1, or the error code
  int nFormat = 0;
};

// Built-in format indexes that text shapes propose. Keep in step with the built-in
// format table.
constexpr int kFmtThousands = 3;          // #,##0
constexpr int kFmtThousandsDec = 4;       // #,##0.00
constexpr int kFmtCurrency = 5;           // currency, no decimals
constexpr int kFmtCurrencyDec = 7;        // currency with decimals
constexpr int kFmtPercent = 9;            // 0%
constexpr int kFmtPercentDec = 10;        // 0.00%
constexpr int kFmtScientific = 11;        // 0.00E+00
constexpr int kFmtFraction = 12;          // # ?/?
constexpr int kFmtFractionTwoDigit = 13;  // # ??/??

// Parse types 1 and 2 read the English notation; every other value the locale's.
inline bool IsEnglishParseType(int nParseType) {
  return nParseType == ptEnglish || nParseType == ptEnglishFile;
}

// Reads the whole of pwszText (zero-terminated). False when it is none of the forms.
bool ParseValueText(const char16_t* pwszText, int nCellFormatType, int nParseType,
                    TParsedText& out);
