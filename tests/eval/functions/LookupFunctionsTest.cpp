// The lookup and reference family through formula text on a real book: the search
// modes against a brute-force model, references made by INDEX, OFFSET and INDIRECT,
// ADDRESS text, and the arity edges of each function.
#include <string>

#include "../EvalFixture.h"

namespace {

class LookupFunctionsTest : public EvalTest {
 protected:
  void SetUp() override {
    EvalTest::SetUp();
    // A1:A3 1, 3, 7 with B1:B3 a, b, c; A4 empty, A5 9 (a hole inside the key column).
    const double aKeys[] = {1, 3, 7};
    const char16_t* aNames[] = {u"a", u"b", u"c"};
    for (int i = 0; i < 3; ++i) {
      ASSERT_EQ(0, m_pSheet->SetNumber(TCell(i, 0), aKeys[i]));
      SetText(("B" + std::to_string(i + 1)).c_str(), aNames[i]);
    }
    SetNumber("A5", 9);
    SetText("B5", u"d");
    SetNumber("A1", 5, m_pSheet2);
  }
};

// Approximate lookups over 1, 3, 7, (hole), 9: the last key not above the value.
// clang-format off
constexpr TEvalCase kSearchCases[] = {
    {"=VLOOKUP(5,A1:B5,2)", "b"}, {"=VLOOKUP(0.999,A1:B5,2)", "#N/A"},  // below the first key
    {"=VLOOKUP(1,A1:B5,2)", "a"}, {"=VLOOKUP(8,A1:B5,2)", "c"},  // the hole is stepped over
    {"=VLOOKUP(9,A1:B5,2)", "d"}, {"=VLOOKUP(1E+300,A1:B5,2)", "d"},
    {"=VLOOKUP(\"B\",B1:B5,1,FALSE)", "b"},  // case is ignored
    {"=VLOOKUP(\"b*\",B1:B5,1,FALSE)", "#N/A"},  // no wildcards
    {"=VLOOKUP(1,A1:B5,2,FALSE)", "a"}, {"=VLOOKUP(1,A1:B5,3)", "#REF!"},
    {"=VLOOKUP(1,A1:B5,2.9)", "a"},  // the index is truncated
    {"=VLOOKUP(1,A1:B5,0.9)", "#VALUE!"}, {"=VLOOKUP(1,\"x\",1)", "#VALUE!"},
    {"=HLOOKUP(4,{1,3,5;\"x\",\"y\",\"z\"},2)", "y"},
    {"=HLOOKUP(4,{1,3,5;\"x\",\"y\",\"z\"},3)", "#REF!"}, {"=MATCH(\"?\",B1:B5,0)", "1"},
    {"=MATCH(\"c\",B1:B5,0)", "3"},
    {"=MATCH(4,A1:A5,-1)", "#N/A"},  // 4 lies above the first element, 1
    {"=MATCH(2,A1:B2,0)", "#N/A"},  // neither a row nor a column
    {"=MATCH(9,A1:A65536)", "5"},  // the rows past the sheet's last are empty
    {"=LOOKUP(8,A1:A5,B1:B5)", "c"}, {"=LOOKUP(8,A1:B5)", "c"},
    {"=LOOKUP(8,A1:A5,B1)", "#REF!"},  // a one-cell result vector cannot hold row 3
};
// clang-format on

TEST_F(LookupFunctionsTest, SearchModes) { ExpectAll(kSearchCases); }

// An ascending search over distinct sorted keys agrees with the brute-force answer:
// the position of the last key not above the value, for values on, between and
// outside the keys. Keys are 0, 2, 4, ..., with every fifth position left empty.
TEST_F(LookupFunctionsTest, ApproximateSearchMatchesModel) {
  constexpr int kRows = 60;
  for (int i = 0; i < kRows; ++i) {
    if (i % 5 == 3) continue;  // a hole
    ASSERT_EQ(0, m_pSheet3->SetNumber(TCell(i, 0), 2.0 * i));
  }
  for (int v = -1; v <= 2 * kRows + 1; ++v) {
    int nExpected = -1;
    for (int i = 0; i < kRows; ++i)
      if (i % 5 != 3 && 2.0 * i <= v) nExpected = i + 1;
    const std::string sFormula =
        "=MATCH(" + std::to_string(v) + ",Sheet3!A1:A" + std::to_string(kRows) + ")";
    SCOPED_TRACE(sFormula);
    EXPECT_EQ(nExpected < 0 ? "#N/A" : std::to_string(nExpected), Eval(sFormula.c_str()));
  }
}

// clang-format off
constexpr TEvalCase kReferenceCases[] = {
    {"=INDEX(A1:B5,3,2)", "c"}, {"=SUM(INDEX(A1:B5,0,1))", "20"},
    {"=INDEX(B1:B5,0)", "#VALUE!"},  // a whole column met at row 100: no intersection
    {"=INDEX(A1:B1,2)", "a"},  // one index into a one-row range counts columns
    {"=INDEX(A1:B5,6,1)", "#REF!"}, {"=INDEX(A1:B5,1,3)", "#REF!"},
    {"=INDEX({1,2;3,4},0,2)", "2"},  // a column of the array, met as its first element
    {"=SUM(INDEX({1,2;3,4},2,0))", "7"}, {"=INDEX((A1:A2,B1:B2),1,1,2)", "a"},
    {"=INDEX(A1:A2,1,1,2)", "#REF!"},
    {"=SUM(OFFSET(A3,0,0,-2))", "10"},  // a negative height extends upward
    {"=OFFSET(A1,0,-1)", "#REF!"}, {"=OFFSET(A1,65535,255)", "0"},
    {"=OFFSET(A1,65535,256)", "#REF!"}, {"=OFFSET(\"A1\",0,0)", "#VALUE!"},
    {"=INDIRECT(\"Sheet2!A1\")", "5"}, {"=INDIRECT(\"'Sheet2'!A1\")+1", "6"},
    {"=INDIRECT(\"Nowhere!A1\")", "#REF!"}, {"=SUM(INDIRECT(\"A:A\"))", "20"},
    {"=SUM(INDIRECT(\"1:2\"))", "4"},
    {"=INDIRECT(\"R[-99]C[-25]\",FALSE)", "1"},  // relative to Z100
    {"=ADDRESS(3,28,4,TRUE,\"My Sheet\")", "'My Sheet'!AB3"},
    {"=ADDRESS(3,28,1,TRUE,\"Sheet2\")", "Sheet2!$AB$3"},
    {"=ADDRESS(3,28,1,TRUE,\"A1\")", "'A1'!$AB$3"},  // reads as an address
    {"=ADDRESS(3,28,1,TRUE,\"it's\")", "'it''s'!$AB$3"}, {"=ADDRESS(65537,1)", "#VALUE!"},
    {"=ADDRESS(1,1,4,FALSE)", "R[1]C[1]"}, {"=ROW()", "100"}, {"=COLUMN()", "26"},
    {"=SUM(COLUMN(A1:D1))", "10"}, {"=ROW((A1,B2))", "#REF!"}, {"=ROW(1)", "#VALUE!"},
};
// clang-format on

TEST_F(LookupFunctionsTest, ReferenceFunctions) { ExpectAll(kReferenceCases); }

// A volatile INDIRECT follows a change of the cell it names without depending on it.
TEST_F(LookupFunctionsTest, IndirectIsRecomputed) {
  EXPECT_EQ("5", Eval("=INDIRECT(\"Sheet2!A1\")"));
  SetNumber("A1", 8, m_pSheet2);
  m_pBook->Recalc();
  EXPECT_EQ("8", Text("Z100"));
}

constexpr TArity kArity[] = {
    {"VLOOKUP", 3, 4}, {"HLOOKUP", 3, 4},  {"MATCH", 2, 3},   {"LOOKUP", 2, 3}, {"INDEX", 1, 4},
    {"OFFSET", 3, 5},  {"INDIRECT", 1, 2}, {"ADDRESS", 2, 5}, {"ROW", 0, 1},    {"COLUMN", 0, 1},
};

TEST_F(LookupFunctionsTest, ArityEdges) { ExpectArity(kArity); }

}  // namespace
