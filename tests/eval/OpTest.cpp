// Operator lookup for the parser (position, longest match, host texts) and the
// operators' evaluation steps on values.
#include <gtest/gtest.h>

#include <string>

#include "eval/Op.h"
#include "eval/Value.h"
#include "platform/ResourceIds.h"
#include "platform/Resources.h"

namespace {

class OpTest : public ::testing::Test {
 protected:
  void TearDown() override { SetResourceTable(nullptr, 0); }
};

struct TOpCase {
  const char16_t* pwszText;
  bool bOperand;
  int nToken;  // -1: no match
  int nLength;
};

// In operand position only prefix operators; elsewhere binary and postfix ones; the
// longest text wins.
constexpr TOpCase kOpCases[] = {
    {u"<=1", false, 0x0A, 2},  {u"<>1", false, 0x0E, 2},    {u"<1", false, 0x09, 1},
    {u"< =1", false, 0x09, 1},  // no white space inside an operator
    {u">=1", false, 0x0C, 2},  {u">1", false, 0x0D, 1},     {u"=1", false, 0x0B, 1},
    {u"-1", true, 0x13, 1},    {u"-1", false, 0x04, 1},     {u"+1", true, 0x12, 1},
    {u"+1", false, 0x03, 1},   {u"%", false, 0x14, 1},      {u"%", true, -1, 0},  // postfix only
    {u"*2", true, -1, 0},      {u"*2", false, 0x05, 1},     {u"/2", false, 0x06, 1},
    {u"^2", false, 0x07, 1},   {u"&\"a\"", false, 0x08, 1}, {u":B2", false, 0x11, 1},
    {u",B2", false, 0x10, 1},  // union: the en-US list separator
    {u"x", false, -1, 0},      {u"", false, -1, 0},
};

TEST_F(OpTest, MatchOpTakesTheLongestTextForThePosition) {
  for (const TOpCase& c : kOpCases) {
    SCOPED_TRACE(testing::Message() << "case " << (&c - kOpCases));
    int nLength = -1;
    const TOp* pOp = TOp::MatchOp(c.pwszText, c.bOperand, &nLength);
    if (c.nToken < 0) {
      EXPECT_EQ(nullptr, pOp);
      continue;
    }
    ASSERT_NE(nullptr, pOp);
    EXPECT_EQ(c.nToken, pOp->GetToken());
    EXPECT_EQ(c.nLength, nLength);
    EXPECT_EQ(pOp, TOp::GetOp(pOp->GetToken()));
  }
  EXPECT_EQ(nullptr, TOp::MatchOp(nullptr, false, nullptr));
}

TEST_F(OpTest, EighteenOperatorsOnePerToken) {
  int nCount = 0;
  for (const TOp* pOp = TOp::GetFirstOp(); pOp != nullptr; pOp = pOp->GetNextOp()) {
    EXPECT_GE(pOp->GetToken(), 0x03);
    EXPECT_LE(pOp->GetToken(), 0x14);
    EXPECT_EQ(pOp, TOp::GetOp(pOp->GetToken()));
    EXPECT_NE(u'\0', pOp->GetText()[0]) << int{pOp->GetToken()};
    ++nCount;
  }
  EXPECT_EQ(18, nCount);
  for (unsigned char bToken : {0x00, 0x02, 0x15, 0x24, 0x43, 0xFF}) {
    EXPECT_EQ(nullptr, TOp::GetOp(bToken)) << int{bToken};
  }
}

// -2^2 is 4: the prefix minus binds tighter than power; union binds tighter than
// negation, range tighter than intersection.
TEST_F(OpTest, PrecedencesOrderTheLevels) {
  auto prec = [](unsigned char bToken) { return TOp::GetOp(bToken)->GetPrecedence(); };
  EXPECT_LT(prec(0x13), prec(0x07));
  EXPECT_LT(prec(0x10), prec(0x13));
  EXPECT_LT(prec(0x11), prec(0x0F));
  EXPECT_LT(prec(0x14), prec(0x07));
  EXPECT_LT(prec(0x07), prec(0x05));
  EXPECT_EQ(prec(0x05), prec(0x06));
  EXPECT_LT(prec(0x06), prec(0x03));
  EXPECT_LT(prec(0x03), prec(0x08));
  EXPECT_LT(prec(0x08), prec(0x0B));
  EXPECT_TRUE(TOp::GetOp(0x14)->IsPostfix());
  EXPECT_TRUE(TOp::GetOp(0x13)->IsPrefix());
  EXPECT_FALSE(TOp::GetOp(0x04)->IsUnary());
}

TEST_F(OpTest, HostTextsReplaceTheEnglishOnes) {
  const TResourceEntry texts[] = {{IDS_OP_CONCAT, u"&&"}, {IDS_OP_NE, u"!="}};
  SetResourceTable(texts, 2);
  int nLength = 0;
  const TOp* pOp = TOp::MatchOp(u"&&B1", false, &nLength);
  ASSERT_NE(nullptr, pOp);
  EXPECT_EQ(0x08, pOp->GetToken());
  EXPECT_EQ(2, nLength);
  EXPECT_EQ(nullptr, TOp::MatchOp(u"&B1", false, &nLength));
  char16_t buf[8] = {};
  *TOp::GetOp(0x0E)->Unparse(buf) = 0;
  EXPECT_EQ(std::u16string(u"!="), buf);
  SetResourceTable(nullptr, 0);
  *TOp::GetOp(0x0E)->Unparse(buf) = 0;
  EXPECT_EQ(std::u16string(u"<>"), buf);
}

// An operand as typed: a leading quote makes a text, "" is Empty, anything else is read as
// a number, logical or error.
TValue Operand(const char16_t* pwsz) {
  TValue val;
  if (pwsz[0] == u'"') {
    val.SetValue(pwsz + 1);
  } else if (pwsz[0] != 0) {
    EXPECT_TRUE(val.StringToReal(pwsz));
  }
  return val;
}

struct TEvalOpCase {
  unsigned char bToken;
  const char16_t* pwszLeft;
  const char16_t* pwszRight;  // nullptr: a unary operator
  TValue::TValType vt;
  const char16_t* pwszResult;
};

// The operators one by one on plain values; EvaluatorTest covers the conversions and
// error order through formulas in cells.
const TEvalOpCase kEvalCases[] = {
    {0x06, u"1", u"4", TValue::vtReal, u"0.25"},
    {0x03, u"\"2", u"1", TValue::vtReal, u"3"},  // numeric text converts
    {0x04, u"1", u"#REF!", TValue::vtError, u"#REF!"},
    {0x07, u"10", u"400", TValue::vtError, u"#NUM!"},  // overflow
    {0x05, u"", u"5", TValue::vtReal, u"0"},
    {0x09, u"1", u"\"1", TValue::vtLogical, u"TRUE"},  // numbers order before text
    {0x0E, u"1", u"2", TValue::vtLogical, u"TRUE"},
    {0x0C, u"2", u"2", TValue::vtLogical, u"TRUE"},
    {0x0D, u"2", u"2", TValue::vtLogical, u"FALSE"},
    {0x0A, u"#NUM!", u"2", TValue::vtError, u"#NUM!"},
    {0x08, u"\"ab", u"1", TValue::vtText, u"ab1"},
    {0x14, u"50", nullptr, TValue::vtReal, u"0.5"},
    {0x13, u"\"x", nullptr, TValue::vtError, u"#VALUE!"},
    {0x13, u"TRUE", nullptr, TValue::vtReal, u"-1"},
};

TEST_F(OpTest, OperatorsOnValues) {
  for (const TEvalOpCase& c : kEvalCases) {
    SCOPED_TRACE(testing::Message() << "case " << (&c - kEvalCases));
    TValue args[2] = {Operand(c.pwszLeft), Operand(c.pwszRight ? c.pwszRight : u"")};
    if (c.pwszRight != nullptr) {
      static_cast<const TOpBinary*>(TOp::GetOp(c.bToken))->Evaluate(args);
      EXPECT_TRUE(args[1].IsEmpty());
    } else {
      static_cast<const TOpUnary*>(TOp::GetOp(c.bToken))->Evaluate(args);
    }
    EXPECT_EQ(c.vt, args[0].GetValType());
    std::u16string str;
    args[0].GetValue(str);
    EXPECT_EQ(std::u16string(c.pwszResult), str);
  }
}

}  // namespace
