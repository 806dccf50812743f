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
  constexpr TCase kCases[] = {
      {0, u"0"},
      {0.1 + 0.2, u"0.3"},
      {1.0 / 3, u"0.333333333333333"},
      {-2.5, u"-2.5"},
      {100, u"100"},
      {999999999999999.0, u"999999999999999"},  // 15 digits: still fixed
      {1e15, u"1E+15"},                         // exponent 15: switches
      {9999999999999999.0, u"1E+16"},           // rounds up to 16 digits
      {1e20, u"1E+20"},
      {1.5e300, u"1.5E+300"},
      {0.0001, u"0.0001"},
      {0.00012345, u"0.00012345"},
      {1e-9, u"0.000000001"},   // exponent -9: still fixed
      {9.99e-10, u"9.99E-10"},  // exponent -10: switches
      {-1.23456789012345e-9, u"-0.00000000123456789012345"},
      {4.9e-324, u"4.94065645841247E-324"},
      {123456.7890123456789, u"123456.789012346"},
      {-0.000123456789012345678, u"-0.000123456789012346"},
  };
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

}  // namespace
