// Operator lookup for the parser (position, longest match, host texts) and the
// operators' evaluation steps on values.
#include <gtest/gtest.h>

#include <cmath>
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

// Operands: a number, a text, TRUE, an error, or Empty.
struct TOperand {
  char cKind;  // 'n' number, 't' text, 'b' logical, 'e' error, '0' empty
  double r;
  const char16_t* pwsz;
};

void Load(TValue& val, const TOperand& op) {
  switch (op.cKind) {
    case 'n':
      val.SetValue(op.r);
      break;
    case 't':
      val.SetValue(op.pwsz);
      break;
    case 'b':
      val.SetLogical(op.r != 0);
      break;
    case 'e':
      val.SetError(static_cast<TValue::TError>(static_cast<int>(op.r)));
      break;
    default:
      val.Clear();
      break;
  }
}

struct TBinaryCase {
  unsigned char bToken;
  TOperand left, right;
  char cKind;  // expected: 'n' number, 'b' logical, 'e' error, 't' text
  double r;
  const char16_t* pwsz;
};

constexpr TOperand N(double r) { return {'n', r, nullptr}; }
constexpr TOperand T(const char16_t* pwsz) { return {'t', 0, pwsz}; }
constexpr TOperand E(TValue::TError err) { return {'e', static_cast<double>(err), nullptr}; }
constexpr TOperand kEmpty = {'0', 0, nullptr};

// The operators one by one on plain values; EvaluatorTest covers the conversions and
// error order through formulas in cells.
const TBinaryCase kBinaryCases[] = {
    {0x06, N(1), N(4), 'n', 0.25, nullptr},
    {0x03, T(u"2"), N(1), 'n', 3, nullptr},  // numeric text converts
    {0x04, N(1), E(TValue::errRef), 'e', TValue::errRef, nullptr},
    {0x07, N(10), N(400), 'e', TValue::errNum, nullptr},  // overflow
    {0x05, kEmpty, N(5), 'n', 0, nullptr},
    {0x09, N(1), T(u"1"), 'b', 1, nullptr},  // numbers order before text
    {0x0E, N(1), N(2), 'b', 1, nullptr},
    {0x0C, N(2), N(2), 'b', 1, nullptr},
    {0x0D, N(2), N(2), 'b', 0, nullptr},
    {0x0A, E(TValue::errNum), N(2), 'e', TValue::errNum, nullptr},
    {0x08, T(u"ab"), N(1), 't', 0, u"ab1"},
};

TEST_F(OpTest, BinaryOperatorsOnValues) {
  for (const TBinaryCase& c : kBinaryCases) {
    SCOPED_TRACE(testing::Message() << "case " << (&c - kBinaryCases));
    const auto* pOp = dynamic_cast<const TOpBinary*>(TOp::GetOp(c.bToken));
    ASSERT_NE(nullptr, pOp);
    TValue args[2];
    Load(args[0], c.left);
    Load(args[1], c.right);
    pOp->Evaluate(args);
    EXPECT_TRUE(args[1].IsEmpty());
    switch (c.cKind) {
      case 'n': {
        ASSERT_TRUE(args[0].IsReal());
        double r;
        args[0].GetValue(r);
        EXPECT_DOUBLE_EQ(c.r, r);
        break;
      }
      case 'b':
        ASSERT_TRUE(args[0].IsLogical());
        EXPECT_EQ(c.r != 0, args[0].GetLogical() != 0);
        break;
      case 't':
        ASSERT_TRUE(args[0].IsText());
        EXPECT_EQ(std::u16string(c.pwsz), args[0].TextPtr());
        break;
      default:
        EXPECT_EQ(static_cast<int>(c.r), args[0].GetError());
        break;
    }
  }
}

TEST_F(OpTest, UnaryOperatorsOnValues) {
  TValue val;
  val.SetValue(50.0);
  static_cast<const TOpUnary*>(TOp::GetOp(0x14))->Evaluate(&val);
  double r;
  val.GetValue(r);
  EXPECT_DOUBLE_EQ(0.5, r);
  val.SetValue(u"x");
  static_cast<const TOpUnary*>(TOp::GetOp(0x13))->Evaluate(&val);
  EXPECT_EQ(TValue::errValue, val.GetError());
  val.SetLogical(1);
  static_cast<const TOpUnary*>(TOp::GetOp(0x13))->Evaluate(&val);
  val.GetValue(r);
  EXPECT_DOUBLE_EQ(-1, r);
}

}  // namespace
