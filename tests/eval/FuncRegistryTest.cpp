// The function registry against the function table: every row registered once with
// its own metadata, names found case-insensitively, 255 never found by name, local
// names from the host's resources.
#include <gtest/gtest.h>

#include <bitset>
#include <cmath>
#include <string>

#include "eval/ExternFunc.h"
#include "eval/Func.h"
#include "eval/FuncTable.h"
#include "eval/Value.h"
#include "platform/ResourceIds.h"
#include "platform/Resources.h"

namespace {

constexpr int kEnglish = 1;
constexpr int kLocal = 0;

std::u16string Str(const char16_t* pwsz) { return pwsz != nullptr ? pwsz : u"<null>"; }

// Leaves the host's resource table as the tests found it (none).
class FuncRegistryTest : public ::testing::Test {
 protected:
  void TearDown() override { SetResourceTable(nullptr, 0); }
};

TEST_F(FuncRegistryTest, EveryRowIsRegisteredWithItsOwnMetadata) {
  for (const TFuncInfo& info : g_FuncTable) {
    SCOPED_TRACE(testing::Message() << "function " << info.nFunc);
    const TFunc* pFunc = TFunc::GetFunc(info.nFunc);
    ASSERT_NE(nullptr, pFunc);
    EXPECT_EQ(info.nFunc, pFunc->GetFuncNumber());
    EXPECT_EQ(Str(info.pwszName), Str(pFunc->GetName()));
    EXPECT_EQ(info.nMinArgs, pFunc->GetMinArgs());
    EXPECT_EQ(info.nMaxArgs, pFunc->GetMaxArgs());
    EXPECT_LE(pFunc->GetMinArgs(), pFunc->GetMaxArgs());
    EXPECT_EQ(info.IsVarArgs(), pFunc->IsVarArgs());
    EXPECT_EQ(info.bVolatile, pFunc->IsVolatile());
    EXPECT_EQ(info.nResultClass, pFunc->GetResultClass());
    EXPECT_EQ(info.nValFormat, pFunc->GetValueFormat());
    EXPECT_EQ(info.GetResourceId(), pFunc->GetResourceId());
    for (int i = -1; i <= 31; ++i) EXPECT_EQ(info.GetArgClass(i), pFunc->GetArgClass(i)) << i;
  }
}

// Catches a dropped family file (a row without a function) and a pasted number (two
// bodies for one number, or a function the table does not know).
TEST_F(FuncRegistryTest, ListHoldsEachNumberOnce) {
  std::bitset<kNumFuncSlots> seen;
  int nCount = 0;
  for (const TFunc* pFunc = TFunc::GetFirstFunc(); pFunc != nullptr; pFunc = pFunc->GetNextFunc()) {
    const unsigned nFunc = pFunc->GetFuncNumber();
    ASSERT_LT(nFunc, static_cast<unsigned>(kNumFuncSlots));
    EXPECT_FALSE(seen.test(nFunc)) << "number " << nFunc << " listed twice";
    seen.set(nFunc);
    EXPECT_EQ(pFunc, TFunc::GetFunc(nFunc)) << nFunc;
    EXPECT_NE(nullptr, GetFuncInfo(nFunc)) << nFunc;
    ++nCount;
  }
  EXPECT_EQ(kNumBuiltinFuncs, nCount);
  EXPECT_EQ(0, TFunc::GetNumDuplicates());
  const int nPending = TFunc::GetNumPending();
  EXPECT_LE(0, nPending);
  EXPECT_GE(kNumBuiltinFuncs, nPending);
  RecordProperty("FunctionsWithoutBody", nPending);
  for (unsigned nFunc : {40u, 75u, 199u, 256u, 360u, 371u, 1000u, 65535u}) {
    EXPECT_EQ(nullptr, TFunc::GetFunc(nFunc)) << nFunc;  // numbers without a row
    EXPECT_EQ(nullptr, GetFuncInfo(nFunc)) << nFunc;
  }
}

TEST_F(FuncRegistryTest, EachEnglishNameFindsItsOwnEntry) {
  for (const TFuncInfo& info : g_FuncTable) {
    SCOPED_TRACE(testing::Message() << "function " << info.nFunc);
    const std::u16string name = info.pwszName;
    const TFunc* pExpected = info.nFunc == kFuncExtern ? nullptr : TFunc::GetFunc(info.nFunc);
    EXPECT_EQ(pExpected, TFunc::FindFunc(name.c_str(), static_cast<int>(name.size()), kEnglish));
    const std::u16string call = name + u"(";
    int nLength = -1;
    bool bCall = false;
    EXPECT_EQ(pExpected, TFunc::MatchFunc(call.c_str(), kEnglish, &nLength, &bCall));
    if (pExpected == nullptr) continue;
    EXPECT_EQ(static_cast<int>(name.size()), nLength);
    EXPECT_TRUE(bCall);
  }
}

struct TMatchCase {
  const char16_t* pwszText;
  int nFunc;  // -1: no match
  int nLength;
  bool bCall;
};

// Input is upper-cased before comparing; only "(" (after optional white space) makes
// a call, except for TRUE and FALSE, which stand alone as constants.
// clang-format off
constexpr TMatchCase kMatchCases[] = {
    {u"SUM(A1)", 4, 3, true}, {u"sum(A1)", 4, 3, true}, {u"Sum (A1)", 4, 3, true},
    {u"SUM\t(", 4, 3, true},
    {u"SUM", -1, 0, false},  // no parenthesis
    {u"SUM A1", -1, 0, false},  // something else follows
    {u"SUMX(", -1, 0, false},  // a longer, unknown name
    {u"SU(", -1, 0, false},  // a shorter one
    {u"LOG10(2)", 23, 5, true},  // not LOG followed by "10("
    {u"LOG(2)", 109, 3, true}, {u"error.type(", 261, 10, true}, {u"TRUE", 34, 4, false},
    {u"true+1", 34, 4, false}, {u"TRUE()", 34, 4, true}, {u"False ", 35, 5, false},
    // names that merely begin with TRUE
    {u"TRUEX", -1, 0, false}, {u"TRUE1", -1, 0, false}, {u"TRUE_", -1, 0, false},
    {u"EXTERN.CALL(", -1, 0, false},  // 255 is never found by name
    {u"__ADDIN(", 370, 7, true}, {u"", -1, 0, false}, {u"(", -1, 0, false},
};
// clang-format on

TEST_F(FuncRegistryTest, MatchFuncReadsTheNameAndTheParenthesis) {
  for (const TMatchCase& c : kMatchCases) {
    SCOPED_TRACE(testing::Message() << "case " << (&c - kMatchCases));
    int nLength = -1;
    bool bCall = false;
    const TFunc* pFunc = TFunc::MatchFunc(c.pwszText, kEnglish, &nLength, &bCall);
    if (c.nFunc < 0) {
      EXPECT_EQ(nullptr, pFunc);
      continue;
    }
    ASSERT_NE(nullptr, pFunc);
    EXPECT_EQ(c.nFunc, pFunc->GetFuncNumber());
    EXPECT_EQ(c.nLength, nLength);
    EXPECT_EQ(c.bCall, bCall);
  }
  EXPECT_EQ(nullptr, TFunc::MatchFunc(nullptr, kEnglish, nullptr, nullptr));
}

TEST_F(FuncRegistryTest, FindFuncNeedsTheWholeName) {
  EXPECT_EQ(TFunc::GetFunc(4), TFunc::FindFunc(u"sum", 3, kEnglish));
  EXPECT_EQ(TFunc::GetFunc(4), TFunc::FindFunc(u"SUMX", 3, kEnglish));  // counted
  EXPECT_EQ(nullptr, TFunc::FindFunc(u"SUMX", 4, kEnglish));
  EXPECT_EQ(nullptr, TFunc::FindFunc(u"SU", 2, kEnglish));
  EXPECT_EQ(nullptr, TFunc::FindFunc(u"SUM", 0, kEnglish));
  EXPECT_EQ(nullptr, TFunc::FindFunc(nullptr, 3, kEnglish));
}

// Volatile functions are recomputed on every recalculation; no other may be.
TEST_F(FuncRegistryTest, OnlyTheFiveVolatileFunctionsAreVolatile) {
  std::bitset<kNumFuncSlots> volatiles;
  for (unsigned nFunc : {63u, 74u, 78u, 148u, 221u})
    volatiles.set(nFunc);  // RAND NOW OFFSET INDIRECT TODAY
  for (const TFunc* pFunc = TFunc::GetFirstFunc(); pFunc != nullptr; pFunc = pFunc->GetNextFunc()) {
    EXPECT_EQ(volatiles.test(pFunc->GetFuncNumber()), pFunc->IsVolatile())
        << pFunc->GetFuncNumber();
  }
  EXPECT_EQ(22, TFunc::GetFunc(74)->GetValueFormat());   // NOW: date and time
  EXPECT_EQ(14, TFunc::GetFunc(221)->GetValueFormat());  // TODAY: date
}

TEST_F(FuncRegistryTest, ArgumentClassSlotsAndTheSharedTail) {
  TFunc* pFunc = TFunc::GetFunc(4);
  ASSERT_NE(nullptr, pFunc);
  TFuncInfo::ETokenClass saved[8];
  for (int i = 0; i < 8; ++i) saved[i] = pFunc->GetArgClass(i);

  pFunc->InitArgsClass(TFuncInfo::tcArray);
  for (int i : {-1, 0, 6, 7, 29}) EXPECT_EQ(TFuncInfo::tcArray, pFunc->GetArgClass(i)) << i;
  pFunc->SetArgClass(6, TFuncInfo::tcValue);      // the last slot of its own
  pFunc->SetArgClass(7, TFuncInfo::tcReference);  // ignored: the tail is shared
  pFunc->SetArgClass(-1, TFuncInfo::tcReference);
  EXPECT_EQ(TFuncInfo::tcValue, pFunc->GetArgClass(6));
  EXPECT_EQ(TFuncInfo::tcArray, pFunc->GetArgClass(5));
  EXPECT_EQ(TFuncInfo::tcArray, pFunc->GetArgClass(7));
  EXPECT_EQ(TFuncInfo::tcArray, pFunc->GetArgClass(-1));
  pFunc->SetArgsClass(TFuncInfo::tcReference, TFuncInfo::tcValue, TFuncInfo::tcDefault,
                      TFuncInfo::tcArray, TFuncInfo::tcReference, TFuncInfo::tcValue,
                      TFuncInfo::tcDefault);
  EXPECT_EQ(TFuncInfo::tcReference, pFunc->GetArgClass(0));
  EXPECT_EQ(TFuncInfo::tcArray, pFunc->GetArgClass(3));
  EXPECT_EQ(TFuncInfo::tcDefault, pFunc->GetArgClass(6));
  EXPECT_EQ(TFuncInfo::tcArray, pFunc->GetArgClass(8));  // untouched tail

  pFunc->InitArgsClass(saved[7]);
  for (int i = 0; i < 7; ++i) pFunc->SetArgClass(i, saved[i]);
  for (int i = 0; i < 8; ++i) EXPECT_EQ(saved[i], pFunc->GetArgClass(i));
}

TEST_F(FuncRegistryTest, LocalNamesComeFromTheHostAndEmptyFallsBackToEnglish) {
  const TResourceEntry german[] = {{IDS_FN_SUM, u"Summe"}, {IDS_FN_IF, u""}};
  SetResourceTable(german, 2);
  int nLength = 0;
  bool bCall = false;
  const TFunc* pSum = TFunc::GetFunc(4);
  EXPECT_EQ(pSum, TFunc::MatchFunc(u"summe(1)", kLocal, &nLength, &bCall));
  EXPECT_EQ(5, nLength);
  EXPECT_EQ(nullptr, TFunc::MatchFunc(u"SUM(1)", kLocal, &nLength, &bCall));
  EXPECT_EQ(pSum, TFunc::MatchFunc(u"SUM(1)", kEnglish, &nLength, &bCall));
  EXPECT_EQ(nullptr, TFunc::MatchFunc(u"SUMME(1)", 2, &nLength, &bCall));  // 2 is English too
  EXPECT_TRUE(pSum->HasLocalName());
  EXPECT_EQ(u"SUMME", Str(pSum->GetLocalName()));
  char16_t buf[16] = {};
  *pSum->Unparse(buf, 1, kLocal) = 0;
  EXPECT_EQ(u"SUMME", Str(buf));
  *pSum->Unparse(buf, 1, kEnglish) = 0;
  EXPECT_EQ(u"SUM", Str(buf));

  const TFunc* pIf = TFunc::GetFunc(1);
  EXPECT_EQ(pIf, TFunc::MatchFunc(u"IF(1,2)", kLocal, &nLength, &bCall));
  EXPECT_FALSE(pIf->HasLocalName());

  SetResourceTable(nullptr, 0);
  EXPECT_EQ(pSum, TFunc::MatchFunc(u"SUM(1)", kLocal, &nLength, &bCall));
  EXPECT_EQ(nullptr, TFunc::MatchFunc(u"SUMME(1)", kLocal, &nLength, &bCall));
}

// Functions without a body still parse; calling one gives #NAME? and settles the
// other argument slots.
TEST_F(FuncRegistryTest, PendingFunctionsGiveNameError) {
  for (TFunc* pFunc = TFunc::GetFirstFunc(); pFunc != nullptr; pFunc = pFunc->GetNextFunc()) {
    if (!pFunc->IsPending()) continue;
    SCOPED_TRACE(testing::Message() << "function " << pFunc->GetFuncNumber());
    TValue args[3];
    args[0].SetValue(1.0);
    args[1].SetValue(u"text");
    args[2].SetValue(2.0);
    const int nArgs = pFunc->GetMaxArgs() < 3 ? pFunc->GetMaxArgs() : 3;
    pFunc->Evaluate(args, nArgs, nullptr);
    EXPECT_EQ(TValue::errName, args[0].GetError());
    EXPECT_TRUE(nArgs < 2 || args[1].IsEmpty());
  }
}

TEST_F(FuncRegistryTest, ConvertKIsAnExternalFunction) {
  const TExternFunc* pConvert = TExternFunc::FindFunc(u"convertk", 8, kEnglish);
  ASSERT_NE(nullptr, pConvert);
  EXPECT_EQ(u"CONVERTK", Str(pConvert->GetName()));
  int nLength = 0;
  EXPECT_EQ(pConvert, TExternFunc::MatchFunc(u"ConvertK (1,1,1,2)", kEnglish, &nLength));
  EXPECT_EQ(8, nLength);
  EXPECT_EQ(nullptr, TExternFunc::MatchFunc(u"CONVERTK", kEnglish, &nLength));
  EXPECT_EQ(nullptr, TFunc::MatchFunc(u"CONVERTK(1,1,1,2)", kEnglish, nullptr, nullptr));
}

struct TConvertCase {
  double r, rCategory, rFrom, rTo;
  double rExpected;  // NaN: an error is expected
  TValue::TError err;
};

// Exact definitions: 1 in = 2.54 cm, 1 lb = 0.45359237 kg, 1 US gal = 3.785411784 l.
const TConvertCase kConvertCases[] = {
    {1, 1, 5, 2, 2.54, TValue::errNone},       {1, 1, 8, 4, 1.609344, TValue::errNone},
    {1, 2, 5, 1, 0.45359237, TValue::errNone}, {1, 4, 4, 1, 3.785411784, TValue::errNone},
    {100, 5, 1, 2, 212, TValue::errNone},      {32, 5, 2, 3, 273.15, TValue::errNone},
    {1, 1, 1, 9, std::nan(""), TValue::errNA},  // one unit past the category
    {1, 1, 0, 1, std::nan(""), TValue::errNA},  // codes are 1-based
    {1, 6, 1, 1, std::nan(""), TValue::errNA},  // no such category
    {1, 5, 4, 1, std::nan(""), TValue::errNA},
};

TEST(ConvertKTest, ConvertsWithinACategory) {
  TExternFunc* pConvert = TExternFunc::FindFunc(u"CONVERTK", 8, kEnglish);
  ASSERT_NE(nullptr, pConvert);
  for (const TConvertCase& c : kConvertCases) {
    SCOPED_TRACE(testing::Message() << "case " << (&c - kConvertCases));
    TValue args[4];
    for (int i = 0; i < 4; ++i)
      args[i].SetValue(i == 0 ? c.r : i == 1 ? c.rCategory : i == 2 ? c.rFrom : c.rTo);
    pConvert->Evaluate(args, 4, nullptr);
    EXPECT_EQ(c.err, args[0].GetError());
    if (c.err != TValue::errNone) continue;
    double r;
    args[0].GetValue(r);
    EXPECT_NEAR(c.rExpected, r, 1e-12 * std::fabs(c.rExpected));
  }
}

TEST(ConvertKTest, WrongCountOrTextIsValueError) {
  TExternFunc* pConvert = TExternFunc::FindFunc(u"CONVERTK", 8, kEnglish);
  ASSERT_NE(nullptr, pConvert);
  TValue args[5];
  for (int i = 0; i < 3; ++i) args[i].SetValue(1.0);
  pConvert->Evaluate(args, 3);
  EXPECT_EQ(TValue::errValue, args[0].GetError());
  args[0].SetValue(u"abc");
  for (int i = 1; i < 4; ++i) args[i].SetValue(1.0);
  pConvert->Evaluate(args, 4);
  EXPECT_EQ(TValue::errValue, args[0].GetError());
}

}  // namespace
