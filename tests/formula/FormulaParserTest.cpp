// Parser output against hand-computed token bytes, error codes with their positions,
// nesting and size limits.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "book/BookBase.h"
#include "book/SheetBase.h"
#include "formula/Formula.h"
#include "formula/FormulaParser.h"
#include "formula/ParserModel.h"

namespace {

using FB = CFormulaBase;

// Tokens of a successful parse, with the volatile prefix when there is one.
std::string Tokens(CFormulaParser& parser, const std::u16string& text,
                   FB::EFormulaType type = FB::ftCell) {
  const int nResult = parser.Parse(text.c_str(), type);
  if (nResult != 0) return "error " + std::to_string(parser.GetError());
  CFormula f;
  parser.GetParseResults(&f);
  return Hex(f.GetPostfix(), f.GetPostfixLen());
}

std::string Added(CFormulaParser& parser) {
  return Hex(parser.GetAddedData(), parser.GetAddedDataLen());
}

// Cell formulas, base A1. Column words: bit 14 column relative, bit 15 row relative.
// clang-format off
struct TBytesCase { const char* pszText; const char* pszTokens; };
constexpr TBytesCase kCellCases[] = {
    {"0", "1E 00 00"},
    {"65535", "1E FF FF"},  // largest tInt
    {"65536", "1F 00 00 00 00 00 00 F0 40"},  // one past: tNum
    {"1.5", "1F 00 00 00 00 00 00 F8 3F"},
    {"1E3", "1E E8 03"},  // exact integer
    {".5", "1F 00 00 00 00 00 00 E0 3F"}, {"A1", "24 00 00 00 C0"}, {"$B$3", "24 02 00 01 00"},
    {"B$3", "24 02 00 01 40"}, {"$B3", "24 02 00 01 80"}, {"A1:$C$4", "25 00 00 03 00 00 C0 02 00"},
    {"A:A", "25 00 00 FF FF 00 40 00 40"},  // whole column: the rows fixed
    {"$5:$5", "25 04 00 04 00 00 00 FF 00"},  // whole row: the columns fixed
    {"$3:2", "25 01 00 02 00 00 80 FF 00"},  // ends swapped, each "$" with its row
    {"1:65536", "25 00 00 FF FF 00 80 FF 80"}, {"Sheet2!1:1", "3B 00 00 00 00 00 00 00 80 FF 80"},
    {"A1+1", "44 00 00 00 C0 1E 01 00 03"},
    {"A1 B1", "24 00 00 00 C0 24 00 00 01 C0 0F"},  // space is intersection
    {"A1 + B1", "44 00 00 00 C0 44 00 00 01 C0 03"},  // spaces around an operator
    {"-2^2", "1E 02 00 13 1E 02 00 07"},  // (-2)^2
    {"2^3^2", "1E 02 00 1E 03 00 07 1E 02 00 07"},  // left-associative
    {"1+2*3", "1E 01 00 1E 02 00 1E 03 00 05 03"},
    {"1<=2", "1E 01 00 1E 02 00 0A"},  // longest operator wins
    {"1<>2", "1E 01 00 1E 02 00 0E"}, {"50%", "1E 32 00 14"},
    {"\"a\"\"b\"", "17 03 61 00 22 00 62 00"},  // doubled quote stored once
    {"\"\"", "17 00"}, {"TRUE", "1D 01"}, {"false", "1D 00"}, {"#N/A", "1C 2A"},
    {"#div/0!", "1C 07"}, {"(1)", "1E 01 00 15"},
    {"SUM(A1)", "24 00 00 00 C0 19 10 00 00"},  // one-argument SUM
    {"SUM(A1,B1)", "24 00 00 00 C0 24 00 00 01 C0 42 02 04 00"}, {"SUM()", "42 00 04 00"},
    {"sum ( 1 )", "1E 01 00 19 10 00 00"},
    {"ROUND(1.5,0)", "1F 00 00 00 00 00 00 F8 3F 1E 00 00 41 1B 00"},
    {"ROUND(A1,)", "44 00 00 00 C0 16 41 1B 00"},  // empty argument
    {"PI()", "41 13 00"}, {"TRUE()", "41 22 00"}, {"Tax*2", "43 01 00 00 00 1E 02 00 05"},
    {"Rate", "23 02 00 00 00"},
    // IF: the condition's jump reaches behind the next tAttr; skips reach behind the
    // function token, minus 1.
    {"IF(A1,1,2)",
     "44 00 00 00 C0 19 02 07 00 1E 01 00 19 08 0A 00 1E 02 00 19 08 03 00 42 03 01 00"},
    {"IF(1,2)", "1E 01 00 19 02 07 00 1E 02 00 19 08 03 00 42 02 01 00"},
    // CHOOSE: a choice over 2 values, one jump word per argument (distance of its
    // tAttr from the first, plus the 6-byte table).
    {"CHOOSE(2,10,20)",
     "1E 02 00 19 04 02 00 06 00 0D 00 14 00 1E 0A 00 19 08 0A 00 1E 14 00 19 08 03 00 42 03 64 "
     "00"},
    {"NOW()", "19 01 00 00 41 4A 00"},  // volatile prefix kept
    {"{1}", "60 00 00 00 00 00 00 00"}, {"SUM({1,2})", "60 00 00 00 00 00 00 00 19 10 00 00"},
    {"ABS({1,2})", "40 00 00 00 00 00 00 00 41 18 00"},
    {"'My ''Sheet'''!A1", "3A 00 00 00 00 00 C0"},
    {"Sheet2!$A$1:B2", "3B 00 00 00 00 01 00 00 00 01 C0"},
    {"Sheet1:Sheet2!A1", "3A 00 00 00 00 00 C0"}, {"[Book.xls]Data!A1", "3A 00 00 00 00 00 C0"},
    {"SUM((A1,B1))", "26 00 00 00 00 0C 00 24 00 00 00 C0 24 00 00 01 C0 10 15 19 10 00 00"},
    {"SUM(A1:OFFSET(A1,1,1))",  // volatile, and a function result in a reference argument
     "19 01 00 00 29 15 00 24 00 00 00 C0 24 00 00 00 C0 1E 01 00 1E 01 00 22 03 4E 00 11 19 10 00 "
     "00"},
};
// clang-format on

TEST(FormulaParser, CellFormulaBytes) {
  for (const TBytesCase& c : kCellCases) {
    SCOPED_TRACE(c.pszText);
    CModelParser parser;
    EXPECT_EQ(c.pszTokens, Tokens(parser, U(c.pszText)));
  }
}

// clang-format off
struct TAddedCase { const char* pszText; const char* pszAdded; };
constexpr TAddedCase kAddedCases[] = {
    // columns - 1, rows - 1 (word), then type byte and payload per item
    {"{1}", "00 00 00 01 00 00 00 00 00 00 F0 3F"},
    {"{1,2;-3,4}",
     "01 01 00 01 00 00 00 00 00 00 F0 3F 01 00 00 00 00 00 00 00 40 "
     "01 00 00 00 00 00 00 08 C0 01 00 00 00 00 00 00 10 40"},
    {"{\"a\"\"b\",TRUE,#N/A}",
     "02 00 00 02 03 00 61 00 22 00 62 00 04 01 00 00 00 00 00 00 00 10 2A 00 00 00 00 00 00 00"},
    // memory area: count, then row1 row2 col1 col2 per range
    {"SUM((A1,B1))", "02 00 00 00 00 00 00 00 00 00 00 00 00 00 01 00 01 00"},
    {"SUM((A1:C3 B2:D4))", "01 00 01 00 02 00 01 00 02 00"},
};
// clang-format on

TEST(FormulaParser, AddedDataBytes) {
  for (const TAddedCase& c : kAddedCases) {
    SCOPED_TRACE(c.pszText);
    CModelParser parser;
    ASSERT_EQ(0, parser.Parse(U(c.pszText).c_str(), FB::ftCell));
    EXPECT_EQ(c.pszAdded, Added(parser));
  }
}

TEST(FormulaParser, ExternSheetsAreEnteredOnce) {
  CModelParser parser;
  // operands of "+" take the value class (0x5A)
  EXPECT_EQ("5A 00 00 00 00 00 C0 5A 01 00 00 00 00 C0 03 5A 00 00 00 00 01 C0 03",
            Tokens(parser, u"Sheet2!A1+[Other.xls]Sheet1!A1+Sheet2!B1"));
  ASSERT_EQ(2u, parser.m_Externs.size());
  EXPECT_EQ(u"Sheet2", parser.m_Externs[0].sSheet1);
  EXPECT_EQ(u"Other.xls", parser.m_Externs[1].sBook);
  CModelParser quoted;
  ASSERT_EQ(0, quoted.Parse(u"'My ''Sheet'''!A1", FB::ftCell));
  EXPECT_EQ(u"My 'Sheet'", quoted.m_Externs[0].sSheet1);
  // a name behind a book prefix is a tNameX through an entry made for names
  CModelParser named;
  EXPECT_EQ("39 00 00 01 00 00 00", Tokens(named, u"[Other.xls]Sheet1!Total"));
  EXPECT_TRUE(named.m_Externs[0].bForName);
}

TEST(FormulaParser, OffsetTypesStoreDistances) {
  struct TCase {
    int nRow, nCol;
    FB::EFormulaType type;
    const char* pszText;
    const char* pszTokens;
  };
  // clang-format off
  const TCase kCases[] = {
      {10, 5, FB::ftShared, "A1", "2C F6 FF FB C0"},  // -10 rows, -5 columns
      {10, 5, FB::ftShared, "A$1", "2C 00 00 FB 40"},
      {10, 5, FB::ftShared, "$A$1", "24 00 00 00 00"},  // absolute stays tRef
      {10, 5, FB::ftShared, "A1:$B$2", "2D F6 FF 01 00 FB C0 01 00"},
      {65535, 255, FB::ftShared, "A1", "2C 01 00 01 C0"},  // wraps past the last row
      {0, 0, FB::ftShared, "IV65536", "2C FF FF FF C0"},
      {0, 0, FB::ftCell, "IV65536", "24 FF FF FF C0"},
      {2, 2, FB::ftName, "A1", "3A 00 00 FE FF FE C0"},  // names: 3-D and offsets
      {0, 0, FB::ftChart, "$B$2", "3A 00 00 01 00 01 00"},  // 3-D, absolute coordinates
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(c.pszText);
    CModelParser parser(TCell(c.nRow, c.nCol));
    EXPECT_EQ(c.pszTokens, Tokens(parser, U(c.pszText), c.type));
  }
}

TEST(FormulaParser, ClassFollowsTheFormulaType) {
  CModelParser parser;
  EXPECT_EQ("44 00 00 00 C0", Tokens(parser, u"A1", FB::ftCellValue));   // value
  EXPECT_EQ("4C 00 00 00 C0", Tokens(parser, u"A1", FB::ftCondFormat));  // value, offsets
  EXPECT_EQ("24 00 00 00 C0", Tokens(parser, u"A1", FB::ftArray));       // reference
  EXPECT_EQ("3A 00 00 00 00 00 C0", Tokens(parser, u"A1", FB::ftExternName));
  EXPECT_EQ("60 00 00 00 00 00 00 00", Tokens(parser, u"{1}", FB::ftName));
  EXPECT_EQ("41 13 00", Tokens(parser, u"PI()", FB::ftCell));
}

struct TErrorCase {
  const char* pszText;
  int nError;
  int nPos;
  int nResult;
  FB::EFormulaType type = FB::ftCell;
};
// clang-format off
constexpr TErrorCase kErrorCases[] = {
    {"", 1, 0, 4},  // nothing to parse
    {"1+", 1, 2, 4},  // no element behind the operator
    {")", 1, 0, 4},
    {"A1)", 1, 2, 4},  // unmatched ")"
    {"1 2 +", 1, 5, 4},
    {"SUM(1+,2)", 1, 6, 4},  // separator directly behind an operator
    {"{1,2;3}", 1, 6, 4},  // ragged rows
    {"{{1}}", 1, 1, 4},  // array in an array
    {"{A1}", 1, 1, 4},
    {"Nowhere", 1, 0, 4},  // unknown name, not created
    {"Sheet1:Sheet9!A1", 1, 0, 4},  // no such last sheet
    {"'*x'!A1", 1, 0, 4},  // not a sheet, and no file name
    {"1E999", 1, 0, 4},  // not finite
    {"(1", 2, 2, 4},
    {"IF(1,2", 2, 6, 4},  // enough arguments, no ")"
    {"SUM(1", 2, 5, 4}, {"FOO(1)", 3, 0, 4}, {"ROUND(1)", 4, 7, 4}, {"\"abc", 5, 0, 4},
    {"ROUND(1,", 7, 8, 113}, {"MID(1 2", 7, 7, 113}, {"PI(1)", 8, 3, 114},
    {"IF(1,2,3,4)", 8, 9, 114}, {"Sheet2!A1", 10, 0, 4, FB::ftShared},
    {"1+[B.xls]Sheet1!Total", 10, 2, 4, FB::ftCondFormat},
};
// clang-format on

TEST(FormulaParser, ErrorCodesAndPositions) {
  for (const TErrorCase& c : kErrorCases) {
    SCOPED_TRACE(c.pszText);
    CModelParser parser;
    EXPECT_EQ(c.nResult, parser.Parse(U(c.pszText).c_str(), c.type));
    EXPECT_EQ(c.nError, parser.GetError());
    EXPECT_EQ(c.nPos, parser.GetErrorPos());
  }
}

TEST(FormulaParser, StringLengthLimit) {
  CModelParser parser;
  const std::u16string s255(255, u'x');
  ASSERT_EQ(0, parser.Parse((u"\"" + s255 + u"\"").c_str(), FB::ftCell));
  EXPECT_EQ(2 + 2 * 255, parser.GetPostfixLen());
  EXPECT_EQ(255, parser.GetPostfix()[1]);
  // 255 stored units written with doubled quotes still fit
  const std::u16string q255(510, u'"');
  EXPECT_EQ(0, parser.Parse((u"\"" + q255 + u"\"").c_str(), FB::ftCell));
  EXPECT_EQ(4, parser.Parse((u"\"" + s255 + u"x\"").c_str(), FB::ftCell));
  EXPECT_EQ(6, parser.GetError());
}

TEST(FormulaParser, NestedCallLimit) {
  auto nest = [](int n) {
    std::u16string s;
    for (int i = 0; i < n; i++) s += u"ABS(";
    s += u"1";
    for (int i = 0; i < n; i++) s += u")";
    return s;
  };
  CModelParser parser;
  EXPECT_EQ(0, parser.Parse(nest(30).c_str(), FB::ftCell));
  EXPECT_EQ(4, parser.Parse(nest(31).c_str(), FB::ftCell));
  EXPECT_EQ(9, parser.GetError());
  EXPECT_EQ(4 * 30, parser.GetErrorPos());  // at the 31st name
}

TEST(FormulaParser, DeepNestingFailsWithoutOverflow) {
  CModelParser parser;
  const std::u16string sShallow = std::u16string(200, u'(') + u"1" + std::u16string(200, u')');
  EXPECT_EQ(0, parser.Parse(sShallow.c_str(), FB::ftCell));
  EXPECT_EQ(3 + 200, parser.GetPostfixLen());
  for (const std::u16string& s :
       {std::u16string(100000, u'(') + u"1", std::u16string(100000, u'-') + u"1",
        std::u16string(50000, u'{')}) {
    EXPECT_EQ(4, parser.Parse(s.c_str(), FB::ftCell));
    EXPECT_EQ(1, parser.GetError());
  }
}

TEST(FormulaParser, PostfixSizeLimit) {
  // "1" then "+1" k times: 3 + 4k bytes; k = 16383 is exactly 65,535.
  auto sum = [](int k) {
    std::u16string s = u"1";
    for (int i = 0; i < k; i++) s += u"+1";
    return s;
  };
  CModelParser parser;
  ASSERT_EQ(0, parser.Parse(sum(16383).c_str(), FB::ftCell));
  CFormula f;
  parser.GetParseResults(&f);
  EXPECT_EQ(65535, f.GetPostfixLen());
  EXPECT_EQ(4, parser.Parse(sum(16384).c_str(), FB::ftCell));
  EXPECT_EQ(1, parser.GetError());
}

TEST(FormulaParser, AddedDataSizeLimit) {
  // A one-column array of n numbers: 3 + 9n bytes; n = 7281 gives 65,532.
  auto column = [](int n) {
    std::u16string s = u"{1";
    for (int i = 1; i < n; i++) s += u";1";
    return s + u"}";
  };
  CModelParser parser;
  ASSERT_EQ(0, parser.Parse(column(7281).c_str(), FB::ftCell));
  EXPECT_EQ(65532, parser.GetAddedDataLen());
  EXPECT_EQ(4, parser.Parse(column(7282).c_str(), FB::ftCell));
  // 255 items in a row are allowed, 256 are not
  std::u16string sRow = u"{1";
  for (int i = 1; i < 255; i++) sRow += u",1";
  EXPECT_EQ(0, parser.Parse((sRow + u"}").c_str(), FB::ftCell));
  EXPECT_EQ(0xFE, parser.GetAddedData()[0]);
  EXPECT_EQ(4, parser.Parse((sRow + u",1}").c_str(), FB::ftCell));
}

TEST(FormulaParser, CreatesUnknownNamesWhenAsked) {
  CModelParser parser;
  parser.SetCreateNames(true);
  EXPECT_EQ("23 03 00 00 00", Tokens(parser, u"Profit"));
  EXPECT_EQ(u"Profit", parser.m_Names[2]);
}

TEST(FormulaParser, ResultsOnlyOnSuccess) {
  CModelParser parser;
  CFormula* pFormula = nullptr;
  EXPECT_EQ(4, parser.Parse(u"1+", &pFormula, FB::ftCell));
  EXPECT_EQ(nullptr, pFormula);
  ASSERT_EQ(0, parser.Parse(u"{1}+1", &pFormula, FB::ftCell));
  ASSERT_NE(nullptr, pFormula);
  EXPECT_EQ(12, pFormula->GetPostfixLen());
  EXPECT_EQ(12, pFormula->GetAddedDataLen());
  delete pFormula;
}

// Sheet prefixes resolve against a real book's sheets, ignoring case, and are
// written through the book's extern-sheet table.
TEST(FormulaParser, SheetNamesComeFromTheBook) {
  struct TProbe : CFormulaParser {
    using CFormulaParser::CFormulaParser;
    using CFormulaParser::FindSheet;
    using CFormulaParser::GetFormulaSheetIndex;
  };
  CBookBase book;
  book.NewSheet(u"First");
  CSheetBase* pSecond = book.NewSheet(u"Second");
  TProbe parser(&book, pSecond, TCell());
  EXPECT_EQ(1, parser.FindSheet(u"sECOND", 6));
  EXPECT_EQ(0, parser.FindSheet(u"First", 5));
  EXPECT_EQ(-1, parser.FindSheet(u"Firs", 4));
  EXPECT_EQ(1, parser.GetFormulaSheetIndex());
  EXPECT_EQ(0, parser.Parse(u"Second!A1", CFormulaBase::ftCell));
  EXPECT_EQ(CFormulaBase::tRef3d, CFormulaBase::TokenBase(parser.GetPostfix()[0]));
  EXPECT_EQ(1, book.GetNumExternSheets());
  EXPECT_EQ(4, parser.Parse(u"Third!A1", CFormulaBase::ftCell));
  EXPECT_EQ(0, parser.Parse(u"A1", CFormulaBase::ftCell));
}

}  // namespace
