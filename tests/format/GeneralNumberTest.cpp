// The General rule: 15 significant digits, fixed notation from 1E-09 up to below
// 1E+15, exponent notation outside.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "format/GeneralNumber.h"

namespace {

std::u16string General(double r, char16_t cDecimal = u'.') {
  char16_t acBuf[TGeneralNumber::kMaxText];
  const int n = FormatGeneralNumber(r, acBuf, TGeneralNumber::kMaxText, cDecimal);
  return std::u16string(acBuf, static_cast<size_t>(n));
}

TEST(GeneralNumberTest, FixedAndExponentNotation) {
  struct TCase {
    double r;
    const char16_t* pwszText;
  };
  // Expected texts as a spreadsheet shows value text (hand-checked against the
  // 15-digit rule).
  // clang-format off
  constexpr TCase kCases[] = {
      {0, u"0"}, {0.1 + 0.2, u"0.3"}, {1.0 / 3, u"0.333333333333333"}, {-2.5, u"-2.5"},
      {100, u"100"}, {999999999999999.0, u"999999999999999"},  // 15 digits: still fixed
      {1e15, u"1E+15"},  // exponent 15: switches
      {9999999999999999.0, u"1E+16"},  // rounds up to 16 digits
      {1e20, u"1E+20"}, {1.5e300, u"1.5E+300"}, {0.0001, u"0.0001"}, {0.00012345, u"0.00012345"},
      {1e-9, u"0.000000001"},  // exponent -9: still fixed
      {9.99e-10, u"9.99E-10"},  // exponent -10: switches
      {-1.23456789012345e-9, u"-0.00000000123456789012345"}, {4.9e-324, u"4.94065645841247E-324"},
      {123456.7890123456789, u"123456.789012346"},
      {-0.000123456789012345678, u"-0.000123456789012346"},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    EXPECT_EQ(c.pwszText, General(c.r)) << c.r;
  }
}

TEST(GeneralNumberTest, DecimalSeparatorAndLimits) {
  EXPECT_EQ(u"1,5", General(1.5, u','));
  EXPECT_EQ(u"1,5E-10", General(1.5e-10, u','));
  EXPECT_EQ(u"0,00000015", General(1.5e-7, u','));
  EXPECT_EQ(u"", General(std::numeric_limits<double>::infinity()));
  EXPECT_EQ(u"", General(std::nan("")));

  // A buffer one short of the text and terminator writes nothing.
  char16_t acBuf[4];
  EXPECT_EQ(0, FormatGeneralNumber(1234, acBuf, 4));
  EXPECT_EQ(3, FormatGeneralNumber(123, acBuf, 4));
}

TEST(GeneralNumberTest, DecompositionAndPrecision) {
  TGeneralNumber num;
  ASSERT_TRUE(num.Set(-12.5));
  EXPECT_TRUE(num.IsNegative());
  EXPECT_STREQ("125", num.Digits());
  EXPECT_EQ(1, num.Exponent());
  // Fewer digits (a narrow column) round earlier and switch notation earlier.
  ASSERT_TRUE(num.Set(123456.789, 5));
  char16_t acBuf[TGeneralNumber::kMaxText];
  const int n = num.Write(acBuf, TGeneralNumber::kMaxText);
  EXPECT_EQ(u"1.2346E+05", std::u16string(acBuf, static_cast<size_t>(n)));
  // Every power of ten from 1E-12 to 1E+20 reads back as the same double.
  for (int e = -12; e <= 20; ++e) {
    const double r = std::pow(10.0, e);
    const std::u16string text = General(r);
    std::string ascii(text.begin(), text.end());
    EXPECT_EQ(r, std::stod(ascii)) << ascii;
  }
}

std::string Fit(double r, int nWidth) {
  TGeneralNumber num;
  if (!num.SetWidth(r, nWidth)) return "<not finite>";
  char16_t acBuf[TGeneralNumber::kMaxText];
  const int n = num.Write(acBuf, TGeneralNumber::kMaxText);
  return std::string(acBuf, acBuf + n);
}

// A cell of standard width shows at most 11 characters; the switch points sit one
// digit either side of the room, and of the smallest fixed exponent (-4).
TEST(GeneralNumberTest, WidthLimitedCellText) {
  struct TCase {
    double r;
    int nWidth;
    const char* pszText;
  };
  // clang-format off
  constexpr TCase kCases[] = {
      {12345678901.0, 11, "12345678901"},  // 11 integer digits: fixed
      {123456789012.0, 11, "1.23457E+11"},  // 12: exponent, 6 digits
      {-1234567890.0, 11, "-1234567890"},  // the sign takes one character
      {-12345678901.0, 11, "-1.2346E+10"}, {0.0001234, 11, "0.0001234"},  // exponent -4: fixed
      {0.00001234, 11, "1.234E-05"},  // exponent -5: exponent notation
      {2.0 / 3, 11, "0.666666667"}, {-2.0 / 3, 11, "-0.66666667"},
      {1234.56789012345, 11, "1234.56789"},  // six decimals, the trailing zero dropped
      {99999999999.5, 11, "1E+11"},  // rounding carries past the room
      {0.99999999999, 11, "1"},
      {1.00000000049999999, 11, "1.000000001"},  // rounds the 15 digits, as typed
      {1.23456789e-100, 11, "1.2346E-100"},  // a third exponent digit costs a digit
      {1.5e300, 11, "1.5E+300"}, {0, 11, "0"}, {-1e-300, 11, "-1E-300"}, {123456, 5, "1E+05"},
      {2.0 / 3, 0, "0.666666666666667"},  // no width: 15 digits
      {1e15, 0, "1E+15"},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(c.pszText);
    EXPECT_EQ(c.pszText, Fit(c.r, c.nWidth));
  }
  EXPECT_EQ("<not finite>", Fit(std::numeric_limits<double>::infinity(), 11));
}

// Every magnitude fits every width from 7 to 11 and reads back within half a unit of
// its last shown digit.
TEST(GeneralNumberTest, WidthSweepFitsAndKeepsTheValue) {
  for (int e = -120; e <= 120; e += 7) {
    for (double rMantissa : {1.0, 1.23456789012345, 9.87654321098765, 9.99999999999}) {
      for (double rSign : {1.0, -1.0}) {
        const double r = rSign * rMantissa * std::pow(10.0, e);
        for (int nWidth = 7; nWidth <= 11; ++nWidth) {
          TGeneralNumber num;
          ASSERT_TRUE(num.SetWidth(r, nWidth));
          char16_t acBuf[TGeneralNumber::kMaxText];
          const int n = num.Write(acBuf, TGeneralNumber::kMaxText);
          const std::string str(acBuf, acBuf + n);
          SCOPED_TRACE(str);
          EXPECT_LE(n, nWidth);
          const double rHalfUnit = 0.5 * std::pow(10.0, 1 - num.DigitCount()) * 1.01;
          EXPECT_NEAR(r, std::stod(str), std::fabs(r) * rHalfUnit);
        }
      }
    }
  }
}

}  // namespace
