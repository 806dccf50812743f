// TGeneralNumber: a number as the General format shows it: at most 15 significant
// digits, fixed notation from 1E-09 up to below 1E+15, exponent notation ("1E+20",
// "1.5E-10") outside; or, for a cell, cut to the characters the cell has room for.
// This is the one place that turns doubles into decimal digits and chooses between
// fixed and exponent notation: the value-to-text conversion of TValue and every
// section of the number-format renderer read their digits from here.
#pragma once

#include "base/Export.h"

class YARVBOOK_API TGeneralNumber {
 public:
  // Significant digits of the General rule; a double carries 15 reliable ones.
  static constexpr int kPrecision = 15;
  // Smallest decimal exponent written in fixed notation ("0.000000001").
  static constexpr int kMinFixedExponent = -9;
  // Longest text Write can produce: sign, "0.", 8 leading zeros and 17 digits.
  static constexpr int kMaxText = 32;
  // Characters a General number may take in a cell of standard width.
  static constexpr int kCellWidth = 11;
  // Smallest decimal exponent that a width-limited number keeps in fixed notation:
  // 0.0001234 stays fixed, 0.00001234 becomes 1.234E-05.
  static constexpr int kMinCellFixedExponent = -4;

  TGeneralNumber() = default;

  // Rounds r to nPrecision significant digits (1..17, clamped), correctly rounded from
  // the binary value, and drops trailing zeros. Returns false, leaving the number 0,
  // when r is not finite.
  bool Set(double r, int nPrecision = kPrecision);
  // Rounds r to 15 significant digits, then fits it into nWidth characters, sign
  // included, as a cell shows General numbers: fixed notation while the integer digits
  // fit, the exponent is at least kMinCellFixedExponent and something other than zero
  // is left, the decimals cut to the room left; else exponent notation with as many
  // mantissa digits as the room allows ("1.23457E+11" in 11). Every rounding works on
  // the 15 digits, half away from zero. nWidth <= 0 is Set(r). Returns false, leaving
  // the number 0, when r is not finite.
  bool SetWidth(double r, int nWidth);

  // Writes the number: exponent notation when the decimal exponent is below
  // kMinFixedExponent or at least the precision given to Set, else fixed notation; cDecimal is the
  // decimal separator. Writes at most nCapacity - 1 characters and a terminator; returns the length
  // written, or 0 when nCapacity cannot hold the whole text.
  int Write(char16_t* pBuf, int nCapacity, char16_t cDecimal = u'.') const;

  // The number in exponent notation whatever its magnitude ("1.5E+00").
  int WriteScientific(char16_t* pBuf, int nCapacity, char16_t cDecimal = u'.') const;

  bool IsNegative() const { return m_bNegative; }
  bool IsZero() const { return m_szDigits[0] == '0'; }
  // The significant digits as ASCII '0'..'9', no trailing zeros; "0" for zero.
  const char* Digits() const { return m_szDigits; }
  int DigitCount() const { return m_nDigits; }
  // Power of ten of the first digit: 12.5 has digits "125" and exponent 1.
  int Exponent() const { return m_nExponent; }
  // True when Write chooses exponent notation.
  bool IsScientific() const { return m_bScientific; }

 private:
  // Keeps the first nKeep significant digits, rounding half away from zero on the
  // decimal digits; nKeep 0 gives 0 or one unit of the next power, below 0 gives 0.
  void RoundDigits(int nKeep);

  char m_szDigits[20] = {'0', 0};
  int m_nDigits = 1;
  int m_nExponent = 0;
  bool m_bNegative = false;
  bool m_bScientific = false;
};

// Writes r by the General rule with 15 significant digits; returns the length, 0 when
// r is not finite or the buffer is too small. A convenience over TGeneralNumber.
YARVBOOK_API int FormatGeneralNumber(double r, char16_t* pBuf, int nCapacity,
                                     char16_t cDecimal = u'.');
