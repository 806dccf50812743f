// TValue: the storage-flag rules, ownership, errors, argument checks with their
// bounds, implicit intersection, ordering and the RK form.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <utility>

#include "base/Range.h"
#include "base/Region.h"
#include "book/SharedStringTable.h"
#include "eval/Value.h"
#include "platform/Locale.h"

namespace {

// A sheet of constant cells for the reference conversions. Sheets are only ever
// passed around as pointers here, so any distinct address serves as one.
class TFakeSheets : public ICellValueReader {
 public:
  const TValue* GetCellValue(const CSheetBase* pSheet, int nRow, int nCol) const override {
    if (pSheet != Sheet()) return nullptr;
    auto it = m_Cells.find({nRow, nCol});
    return it == m_Cells.end() ? nullptr : &it->second;
  }
  CSheetBase* Sheet() const { return reinterpret_cast<CSheetBase*>(const_cast<int*>(&m_nTag)); }
  TValue& Cell(int nRow, int nCol) { return m_Cells[{nRow, nCol}]; }

 private:
  int m_nTag = 0;
  std::map<std::pair<int, int>, TValue> m_Cells;
};

int g_nBaseRow = -1, g_nBaseCol = -1;
bool GetTestBaseCell(int* pnRow, int* pnCol) {
  if (g_nBaseRow < 0) return false;
  *pnRow = g_nBaseRow;
  *pnCol = g_nBaseCol;
  return true;
}

class ValueTest : public ::testing::Test {
 protected:
  void SetUp() override {
    m_pOldReader = TValue::SetCellValueReader(&m_Sheets);
    m_pfnOldBase = TValue::SetBaseCellFn(&GetTestBaseCell);
    m_nSstCount = CSharedStringTable::GetGlobal().GetCount();
  }
  void TearDown() override {
    TValue::SetCellValueReader(m_pOldReader);
    TValue::SetBaseCellFn(m_pfnOldBase);
    g_nBaseRow = g_nBaseCol = -1;
    // Every test releases the shared texts it made.
    EXPECT_EQ(m_nSstCount, CSharedStringTable::GetGlobal().GetCount());
  }

  TFakeSheets m_Sheets;
  ICellValueReader* m_pOldReader = nullptr;
  TBaseCellFn m_pfnOldBase = nullptr;
  int m_nSstCount = 0;
};

std::u16string Text(const TValue& v) {
  std::u16string str;
  v.GetValue(str);
  return str;
}

// Values of each kind for the tables.
TValue Num(double r) {
  TValue v;
  v.SetValue(r);
  return v;
}
TValue Txt(const char16_t* p) {
  TValue v;
  v.SetValue(p);
  return v;
}
TValue Logical(int b) {
  TValue v;
  v.SetLogical(b);
  return v;
}
TValue Err(TValue::TError e) {
  TValue v;
  v.SetError(e);
  return v;
}

double Real(const TValue& v) {
  double r = -999;
  v.GetValue(r);
  return r;
}

int SstRefs(const char16_t* p) { return CSharedStringTable::GetGlobal().GetRefCount(p); }
bool InSst(const char16_t* p) { return CSharedStringTable::GetGlobal().IsSSTString(p); }

// ---- Storage flag and ownership ----

TEST_F(ValueTest, AssignmentFollowsTheDestinationFlag) {
  TValue scratch;
  scratch.SetValue(u"abc");
  EXPECT_FALSE(InSst(scratch.TextPtr()));

  // Rule 2: a shared holder adds a private text to the table.
  TValue cell1;
  cell1.SetSST(true);
  cell1 = scratch;
  ASSERT_TRUE(cell1.IsText());
  EXPECT_TRUE(InSst(cell1.TextPtr()));
  EXPECT_EQ(0, SstRefs(cell1.TextPtr()));
  EXPECT_NE(scratch.TextPtr(), cell1.TextPtr());

  // Rule 3: shared to shared shares the entry and counts it.
  TValue cell2;
  cell2.SetSST(true);
  cell2 = cell1;
  EXPECT_EQ(cell1.TextPtr(), cell2.TextPtr());
  EXPECT_EQ(1, SstRefs(cell1.TextPtr()));

  // Rule 1: a private holder copies, whatever the source.
  TValue scratch2;
  scratch2 = cell1;
  EXPECT_NE(cell1.TextPtr(), scratch2.TextPtr());
  EXPECT_EQ(u"abc", Text(scratch2));
  EXPECT_EQ(1, SstRefs(cell1.TextPtr()));

  // Clear keeps the flag and releases one user.
  cell2.Clear();
  EXPECT_TRUE(cell2.IsSST());
  EXPECT_EQ(0, SstRefs(cell1.TextPtr()));
  cell2.SetValue(u"abc");  // a setter on a shared holder goes through the table too
  EXPECT_EQ(cell1.TextPtr(), cell2.TextPtr());
}

TEST_F(ValueTest, SetSSTMovesTheHeldText) {
  TValue v;
  v.SetValue(u"moved");
  v.SetSST(true);
  EXPECT_TRUE(InSst(v.TextPtr()));
  v.SetSST(false);
  EXPECT_FALSE(InSst(v.TextPtr()));
  EXPECT_EQ(u"moved", Text(v));
}

TEST_F(ValueTest, CopyAndClearSourceAcrossFlags) {
  TValue shared;
  shared.SetSST(true);
  shared.SetValue(u"x");
  TValue scratch;
  scratch.CopyAndClearSource(shared);
  EXPECT_TRUE(shared.IsEmpty());
  EXPECT_TRUE(shared.IsSST());
  EXPECT_EQ(u"x", Text(scratch));
  EXPECT_FALSE(scratch.IsSST());

  TValue other;
  other.SetValue(u"y");
  const char16_t* p = other.TextPtr();
  TValue taker;
  taker.CopyAndClearSource(other);  // equal flags: the buffer itself moves
  EXPECT_EQ(p, taker.TextPtr());
  EXPECT_TRUE(other.IsEmpty());
}

TEST_F(ValueTest, ArraysAndRegionsCopyDeep) {
  TValue arr;
  ASSERT_TRUE(arr.ResizeArray(2, 3));
  EXPECT_EQ(2, arr.Rows());
  EXPECT_EQ(3, arr.Cols());
  arr.SetArrayNumber(0, 0, 1.5);
  arr.SetArrayString(1, 2, u"t");
  EXPECT_FALSE(arr.SetArrayNumber(2, 0, 1));  // outside
  EXPECT_FALSE(arr.SetArrayNumber(0, -1, 1));

  TValue copy(arr);
  copy.SetArrayNumber(0, 0, 9);
  copy.SetArrayString(1, 2, u"changed");
  EXPECT_EQ(1.5, Real(*arr.GetArrayValue(0, 0)));
  EXPECT_EQ(u"t", Text(*arr.GetArrayValue(1, 2)));
  EXPECT_NE(arr.GetArrayValue(1, 2)->TextPtr(), copy.GetArrayValue(1, 2)->TextPtr());

  // Resizing keeps the overlap.
  ASSERT_TRUE(arr.ResizeArray(3, 2));
  EXPECT_EQ(1.5, Real(*arr.GetArrayValue(0, 0)));
  EXPECT_TRUE(arr.GetArrayValue(2, 1)->IsEmpty());
  EXPECT_FALSE(arr.ResizeArray(-1, 2));
  EXPECT_FALSE(arr.ResizeArray(65536, 257));  // one row of 256 too many

  // Arrays do not nest.
  TValue inner;
  inner.ResizeArray(1, 1);
  arr.SetArrayValue(0, 0, inner);
  EXPECT_EQ(TValue::errValue, arr.GetArrayValue(0, 0)->GetError());

  TValue region;
  const TRange ranges[] = {TRange(0, 0, 1, 1), TRange(5, 5)};
  region.AddRanges(m_Sheets.Sheet(), 2, ranges);
  TValue regionCopy(region);
  const TRange more(9, 9);
  regionCopy.AddRanges(m_Sheets.Sheet(), 1, &more);
  const TRegion* pRegion = nullptr;
  ASSERT_TRUE(region.GetValue(nullptr, &pRegion));
  EXPECT_EQ(2, pRegion->Ranges());
  ASSERT_TRUE(regionCopy.GetValue(nullptr, &pRegion));
  EXPECT_EQ(3, pRegion->Ranges());
  EXPECT_EQ(0, region.Rows());
  EXPECT_NE(region, regionCopy);
}

// A value replaced by one of its own elements reads the element before freeing it.
TEST_F(ValueTest, AssignFromOwnElement) {
  for (bool bSST : {false, true}) {
    SCOPED_TRACE(bSST);
    TValue arr;
    arr.SetSST(bSST);
    arr.ResizeArray(1, 2);
    arr.SetArrayString(0, 0, u"first");
    arr.SetArrayNumber(0, 1, 2.0);
    TValue copy(arr);
    arr = *arr.GetArrayValue(0, 0);
    EXPECT_EQ(u"first", Text(arr));
    EXPECT_EQ(bSST, InSst(arr.TextPtr()));
    copy.SetSST(bSST);
    ASSERT_TRUE(copy.CvtArrayValToValue());
    EXPECT_EQ(u"first", Text(copy));
    EXPECT_EQ(bSST, InSst(copy.TextPtr()));
    TValue third;
    third.ResizeArray(1, 2);
    third.SetArrayNumber(0, 1, 7.0);
    third.CopyAndClearSource(*third.GetArrayValue(0, 1));
    EXPECT_EQ(u"7", Text(third));
  }
}

// ---- Errors ----

TEST_F(ValueTest, ErrorCodesMapBothWays) {
  // clang-format off
  struct TCase { TValue::TError err; unsigned char bExcel; const char16_t* pwszText; };
  constexpr TCase kCases[] = {
      {TValue::errNull, 0, u"#NULL!"}, {TValue::errDiv0, 7, u"#DIV/0!"},
      {TValue::errValue, 15, u"#VALUE!"}, {TValue::errRef, 23, u"#REF!"},
      {TValue::errName, 29, u"#NAME?"}, {TValue::errNum, 36, u"#NUM!"},
      {TValue::errNA, 42, u"#N/A"},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(c.bExcel);
    EXPECT_EQ(c.bExcel, TValue::ErrorToExcelError(c.err));
    EXPECT_EQ(c.err, TValue::ExcelErrorToError(c.bExcel));
    EXPECT_EQ(std::u16string(c.pwszText), TValue::GetErrorString(c.err));
    EXPECT_EQ(c.err, TValue::GetErrorToken(c.pwszText));
  }
  // #FORMULA! is shown and stored as #N/A, but never read back.
  EXPECT_EQ(std::u16string(u"#FORMULA!"), TValue::GetErrorString(TValue::errFormula));
  EXPECT_EQ(42, TValue::ErrorToExcelError(TValue::errFormula));
  EXPECT_EQ(TValue::errNone, TValue::GetErrorToken(u"#FORMULA!"));
  EXPECT_EQ(TValue::errNA, TValue::GetErrorToken(u"#n/a"));
  EXPECT_EQ(TValue::errNone, TValue::GetErrorToken(u"#N/A ", 5));
  EXPECT_EQ(TValue::errNA, TValue::GetErrorToken(u"#N/A ", 4));
  EXPECT_EQ(nullptr, TValue::GetErrorString(TValue::errNone));
  // Every byte that is not one of the six other codes reads as #N/A.
  int nOther = 0;
  for (int b = 0; b < 256; ++b) {
    if (TValue::ExcelErrorToError(static_cast<unsigned char>(b)) != TValue::errNA) ++nOther;
  }
  EXPECT_EQ(6, nOther);
}

TEST_F(ValueTest, PopKeepsTheFirstError) {
  struct TCase {
    const char* pszName;
    TValue::TError aErrs[3];  // errNone: a number in that slot
    TValue::TError errExpected;
  };
  // clang-format off
  constexpr TCase kCases[] = {
      {"none", {TValue::errNone, TValue::errNone, TValue::errNone}, TValue::errNone},
      {"own wins", {TValue::errNum, TValue::errDiv0, TValue::errNone}, TValue::errNum},
      {"lowest later", {TValue::errNone, TValue::errNA, TValue::errRef}, TValue::errNA},
      {"last", {TValue::errNone, TValue::errNone, TValue::errName}, TValue::errName},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(c.pszName);
    TValue args[3];
    for (int i = 0; i < 3; ++i)
      args[i] = c.aErrs[i] != TValue::errNone ? Err(c.aErrs[i]) : Txt(u"arg");
    args[0].Pop(3);
    EXPECT_EQ(c.errExpected, args[0].GetError());
    EXPECT_TRUE(c.errExpected != TValue::errNone || args[0].IsEmpty());
    for (int i = 1; i < 3; ++i) EXPECT_TRUE(args[i].IsEmpty() || args[i].IsError());
  }
}

// ---- Argument checks ----

// Each integer check one step inside and outside each bound, on the untruncated value.
TEST_F(ValueTest, IntegerChecksHaveExactBounds) {
  enum EKind { kInt, kShort, kUShort, kWord };
  // clang-format off
  struct TCase { EKind kind; double r; bool bOk; int nExpected; };
  constexpr TCase kCases[] = {
      {kInt, 2147483647.0, true, 2147483647}, {kInt, 2147483647.9, true, 2147483647},
      {kInt, 2147483648.0, false, 0}, {kInt, -2147483648.0, true, -2147483647 - 1},
      {kInt, -2147483648.5, false, 0}, {kInt, -1.9, true, -1},
      {kShort, 32767.5, true, 32767}, {kShort, 32768.0, false, 0},
      {kShort, -32768.0, true, -32768}, {kShort, -32768.1, false, 0},
      {kUShort, 32767.0, true, 32767}, {kUShort, 32768.0, false, 0}, {kUShort, 0.0, true, 0},
      {kUShort, -0.5, false, 0}, {kUShort, 65535.0, false, 0},
      {kWord, 32767.9, true, 32767}, {kWord, 32768.0, false, 0}, {kWord, -1.0, false, 0},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(testing::Message() << "kind " << c.kind << " value " << c.r);
    TValue v;
    v.SetValue(c.r);
    int nResult = -12345;
    short s = 0;
    unsigned short w = 0;
    const int bOk = c.kind == kInt     ? v.CheckInt(nResult)
                    : c.kind == kShort ? v.CheckShort(s)
                    : c.kind == kWord  ? v.CheckWord(w)
                                       : v.CheckUShort(w);
    if (c.kind != kInt) nResult = c.kind == kShort ? s : w;
    EXPECT_EQ(c.bOk, bOk != 0);
    if (c.bOk) {
      EXPECT_EQ(c.nExpected, nResult);
    } else {
      EXPECT_EQ(TValue::errValue, v.GetError());
    }
  }
  TValue nan;
  nan.SetValue(std::numeric_limits<double>::quiet_NaN());
  int n;
  EXPECT_FALSE(nan.CheckInt(n));
}

TEST_F(ValueTest, CheckRealByKind) {
  // Empty is 0.
  for (const auto& [value, rExpected] :
       {std::pair{TValue(), 0.0}, {Logical(1), 1.0}, {Txt(u" 12.5 "), 12.5}}) {
    TValue v(value);
    EXPECT_TRUE(v.CheckReal());
    EXPECT_EQ(rExpected, Real(v));
  }
  TValue v;
  v.SetValue(u"TRUE");  // a logical text is not a number
  EXPECT_FALSE(v.CheckReal());
  EXPECT_EQ(TValue::errValue, v.GetError());
  v.SetError(TValue::errDiv0);  // an error stays
  EXPECT_FALSE(v.CheckReal());
  EXPECT_EQ(TValue::errDiv0, v.GetError());
  v.SetValue(std::numeric_limits<double>::infinity());
  EXPECT_TRUE(v.CheckReal());
  EXPECT_FALSE(v.CheckNumber());
  EXPECT_EQ(TValue::errNum, v.GetError());

  TValue args[3];
  args[0].SetValue(1.0);
  args[1].SetValue(u"x");
  args[2].SetError(TValue::errRef);
  EXPECT_FALSE(args[0].CheckReals(3));  // stops at the first failure
  EXPECT_EQ(TValue::errValue, args[1].GetError());
  EXPECT_EQ(TValue::errRef, args[2].GetError());
}

TEST_F(ValueTest, CheckLogicalStrictAndLoose) {
  // clang-format off
  struct TCase { const char* pszName; TValue value; bool bStrict; int bOk; int bExpected; };
  const TCase kCases[] = {
      {"logical", Logical(1), true, 1, 1}, {"empty", TValue(), true, 1, 0},
      {"number loose", Num(-2), false, 1, 1}, {"zero loose", Num(0), false, 1, 0},
      {"number strict", Num(2), true, 0, -1}, {"text true", Txt(u"true"), false, 1, 1},
      {"text number", Txt(u"0"), false, 1, 0}, {"text strict", Txt(u"true"), true, 0, -1},
      {"text other", Txt(u"yes"), false, 0, -1},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(c.pszName);
    TValue v(c.value);
    int b = -1;
    EXPECT_EQ(c.bOk, v.CheckLogical(b, c.bStrict));
    EXPECT_EQ(c.bExpected, b);
    // Strict failures leave the value alone; loose failures leave #VALUE!.
    if (!c.bOk && c.bStrict) {
      EXPECT_EQ(0, v.CompareExact(c.value));
    }
    if (!c.bOk && !c.bStrict) {
      EXPECT_EQ(TValue::errValue, v.GetError());
    }
  }
  TValue v;
  v.SetValue(3.0);
  ASSERT_TRUE(v.CheckLogical());
  EXPECT_TRUE(v.IsLogical());
  EXPECT_EQ(1, v.GetLogical());
}

TEST_F(ValueTest, WithDefaultLeavesOmittedArgumentsAlone) {
  TValue omitted;
  int n = 77, b = 77;
  unsigned short w = 77;
  EXPECT_TRUE(omitted.CheckIntWithDefault(n));
  EXPECT_TRUE(omitted.CheckLogicalWithDefault(b));
  EXPECT_TRUE(omitted.CheckWordWithDefault(w));
  EXPECT_TRUE(omitted.CheckStringWithDefault());
  EXPECT_EQ(77, n);
  EXPECT_EQ(77, b);
  EXPECT_EQ(77, w);
  EXPECT_TRUE(omitted.IsEmpty());

  TValue given;
  given.SetValue(32768.0);
  EXPECT_FALSE(given.CheckWordWithDefault(w));
  EXPECT_EQ(TValue::errValue, given.GetError());
}

TEST_F(ValueTest, CheckStringConvertsEveryNonError) {
  for (const auto& [value, pwszExpected] :
       {std::pair{Num(0.1 + 0.2), u"0.3"}, {Logical(0), u"FALSE"}, {TValue(), u""}}) {
    TValue v(value);
    ASSERT_TRUE(v.CheckString());
    EXPECT_TRUE(v.IsText());
    EXPECT_EQ(pwszExpected, Text(v));
  }
  TValue v;
  v.SetError(TValue::errNA);
  EXPECT_FALSE(v.CheckString());
  EXPECT_TRUE(v.IsNAError());
}

TEST_F(ValueTest, RangeAndArrayChecks) {
  TValue v;
  v.SetValue(5.0);
  EXPECT_FALSE(v.CheckRange());
  EXPECT_EQ(TValue::errNA, v.GetError());  // #N/A, not #VALUE!

  v.SetCell(m_Sheets.Sheet(), 3, 4);
  ASSERT_TRUE(v.CheckRange());
  EXPECT_TRUE(v.IsRange());
  CSheetBase* pSheet = nullptr;
  TRange range;
  ASSERT_TRUE(v.GetValue(&pSheet, &range));
  EXPECT_EQ(TRange(3, 4, 3, 4), range);
  EXPECT_EQ(m_Sheets.Sheet(), pSheet);

  v.SetValue(u"t");
  EXPECT_FALSE(v.CheckArray());
  EXPECT_EQ(TValue::errValue, v.GetError());

  m_Sheets.Cell(1, 1).SetValue(1.0);
  m_Sheets.Cell(2, 2).SetValue(u"b");
  v.SetRange(m_Sheets.Sheet(), 2, 2, 1, 1);  // normalised to B2:C3
  EXPECT_EQ(2, v.Rows());
  EXPECT_EQ(2, v.Cols());
  ASSERT_TRUE(v.CheckArrayVal());
  ASSERT_TRUE(v.IsArrayVal());
  EXPECT_TRUE(v.GetArrayValue(0, 0)->IsReal());
  EXPECT_TRUE(v.GetArrayValue(0, 1)->IsEmpty());
  EXPECT_EQ(u"b", Text(*v.GetArrayValue(1, 1)));
  ASSERT_TRUE(v.CvtArrayValToValue());
  EXPECT_TRUE(v.IsReal());

  TValue empty;
  empty.ResizeArray(0, 0);
  EXPECT_FALSE(empty.CvtArrayValToValue());
  EXPECT_EQ(TValue::errValue, empty.GetError());
}

// ---- Implicit intersection ----

TEST_F(ValueTest, ImplicitIntersection) {
  // Column B (index 1) holds 10, 11, 12 in rows 0..2; row 5 holds 50.. in columns 0..2.
  for (int i = 0; i < 3; ++i) {
    m_Sheets.Cell(i, 1).SetValue(10.0 + i);
    m_Sheets.Cell(5, i).SetValue(50.0 + i);
  }
  struct TCase {
    const char* pszName;
    TRange range;
    int nBaseRow, nBaseCol;
    double rExpected;  // NaN: #VALUE!
  };
  const double kFail = std::numeric_limits<double>::quiet_NaN();
  const TCase kCases[] = {
      {"single cell", TRange(0, 1), 40, 40, 10},
      {"row meets base column", TRange(5, 0, 5, 2), 9, 2, 52},
      {"row misses base column", TRange(5, 0, 5, 2), 9, 3, kFail},
      {"column meets base row", TRange(0, 1, 2, 1), 1, 9, 11},
      {"column below base row", TRange(0, 1, 2, 1), 3, 9, kFail},
      {"block", TRange(0, 0, 2, 1), 1, 1, kFail},
  };
  for (const TCase& c : kCases) {
    SCOPED_TRACE(c.pszName);
    TValue v;
    v.SetValue(m_Sheets.Sheet(), c.range);
    g_nBaseRow = c.nBaseRow;
    g_nBaseCol = c.nBaseCol;
    const int bOk = v.CheckValue();
    if (std::isnan(c.rExpected)) {
      EXPECT_FALSE(bOk);
      EXPECT_EQ(TValue::errValue, v.GetError());
    } else {
      ASSERT_TRUE(bOk);
      EXPECT_EQ(c.rExpected, Real(v));
    }
  }
  // Given coordinates, absolute and relative to the range's first cell.
  TValue v;
  v.SetRange(m_Sheets.Sheet(), 0, 1, 2, 1);
  ASSERT_TRUE(v.CvtRangeToValue(2, 0));
  EXPECT_EQ(u"12", Text(v));
  v.SetRange(m_Sheets.Sheet(), 0, 1, 2, 1);
  ASSERT_TRUE(v.CvtRangeToValue(1, 0, true));
  EXPECT_EQ(u"11", Text(v));
  // Without a base cell a block has no value; a dangling reference is #REF!.
  g_nBaseRow = g_nBaseCol = -1;
  v.SetRange(m_Sheets.Sheet(), 0, 1, 2, 1);
  EXPECT_FALSE(v.CheckValue());
  EXPECT_EQ(TValue::errValue, v.GetError());
  v.SetCell(nullptr, 0, 0);
  EXPECT_FALSE(v.CheckReal());
  EXPECT_EQ(TValue::errRef, v.GetError());
  // An absent cell reads as Empty.
  v.SetCell(m_Sheets.Sheet(), 100, 100);
  ASSERT_TRUE(v.CheckValue());
  EXPECT_TRUE(v.IsEmpty());
}

// ---- Ordering ----

TEST_F(ValueTest, CompareOrdersAcrossKinds) {
  // clang-format off
  struct TCase { const char* pszName; TValue a, b; int nExpected; };
  const TCase kCases[] = {
      {"1 = next double", Num(1), Num(std::nextafter(1.0, 2.0)), 0},
      {"1 < 1+1e-14", Num(1), Num(1 + 1e-14), -1},
      {"1e20 = 1e20+1e4", Num(1e20), Num(1e20 + 1e4), 0},
      {"empty = 1e-16", TValue(), Num(1e-16), 0}, {"empty < 2e-15", TValue(), Num(2e-15), -1},
      {"-2e-15 < empty", Num(-2e-15), TValue(), -1}, {"abc = ABC", Txt(u"abc"), Txt(u"ABC"), 0},
      {"a < b", Txt(u"a"), Txt(u"B"), -1}, {"empty text = empty", Txt(u""), TValue(), 0},
      {"text > empty", Txt(u"a"), TValue(), 1}, {"5 < text 5", Num(5), Txt(u"5"), -1},
      {"text < FALSE", Txt(u"5"), Logical(0), -1}, {"FALSE < TRUE", Logical(0), Logical(1), -1},
      {"TRUE < #NULL!", Logical(1), Err(TValue::errNull), -1},
      {"#NULL! < #N/A", Err(TValue::errNull), Err(TValue::errNA), -1},
      {"empty < FALSE", TValue(), Logical(0), -1},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(c.pszName);
    EXPECT_EQ(c.nExpected, c.a.Compare(c.b));
    // Swapping the operands reverses the order (the tolerance is this value's, and
    // these cases lie far from its edge).
    EXPECT_EQ(-c.nExpected, c.b.Compare(c.a));
  }
  EXPECT_EQ(1, Num(1).CompareExact(Num(std::nextafter(1.0, 2.0))));
  EXPECT_EQ(0, Num(0.5).CompareExact(Num(0.5)));
  const double kNaN = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(1, Num(kNaN).CompareExact(Num(kNaN)));
  EXPECT_EQ(1, Num(0).CompareExact(TValue()));  // kinds differ
  EXPECT_EQ(0, Txt(u"abc").CompareExact(Txt(u"ABC")));
}

TEST_F(ValueTest, RkForm) {
  // clang-format off
  struct TCase { double r; bool bHas; unsigned nRK; };
  constexpr TCase kCases[] = {
      {1.0, true, 0x3FF00000},  // high word only
      {-2.5, true, 0xC0040000},  // high word only
      {100.0, true, 0x40590000},  // high word only, before the integer form
      {123456789.0, true, 123456789u << 2 | 2}, {536870911.0, true, 536870911u << 2 | 2},
      {536870912.0, true, 0x41C00000},  // 2^29: high word only
      {536870913.0, false, 0},  // one past 30 signed bits, low word in use
      {-536870912.0, true, 0xC1C00000}, {-536870913.0, false, 0}, {0.1, false, 0},
  };
  // clang-format on
  for (const TCase& c : kCases) {
    SCOPED_TRACE(c.r);
    TValue v;
    v.SetValue(c.r);
    int nRK = 0;
    EXPECT_EQ(c.bHas, v.GetRK(&nRK));
    if (c.bHas) {
      EXPECT_EQ(c.nRK, static_cast<unsigned>(nRK));
    }
  }
  EXPECT_FALSE(Txt(u"1").GetRK(nullptr));
}

// Number text is the General rule's (GeneralNumberTest covers it); -0 shows no sign.
TEST_F(ValueTest, ValueText) {
  EXPECT_EQ(u"0", Text(Num(-0.0)));
  TValue v;
  v.SetValue(u"truncate me");
  char16_t acBuf[5];
  EXPECT_EQ(4, v.GetValue(acBuf, 5));
  EXPECT_EQ(u"trun", std::u16string(acBuf));
}

TEST_F(ValueTest, UnparseArrayConstant) {
  TValue arr;
  arr.ResizeArray(2, 2);
  arr.SetArrayNumber(0, 0, 1.5);
  arr.SetArrayString(0, 1, u"say \"hi\"");
  arr.SetArrayLogical(1, 0, 1);
  arr.SetArrayError(1, 1, TValue::errNA);
  std::u16string str;
  arr.Unparse(nullptr, str);
  EXPECT_EQ(u"{1.5,\"say \"\"hi\"\"\";TRUE,#N/A}", str);
}

}  // namespace
