#include "eval/Op.h"

#include "platform/Locale.h"
#include "platform/ResourceIds.h"
#include "platform/Resources.h"
#include "platform/TextServices.h"

constinit TOp* TOp::m_pFirstOp = nullptr;

namespace {

// The resource and locale generations the texts were loaded for, plus one (0: never).
constinit unsigned s_nResourceGeneration = 0;
constinit unsigned s_nLocaleGeneration = 0;

// Token codes of the stream.
constexpr unsigned char kAdd = 0x03, kSub = 0x04, kMul = 0x05, kDiv = 0x06, kPower = 0x07;
constexpr unsigned char kConcat = 0x08, kLT = 0x09, kLE = 0x0A, kEQ = 0x0B, kGE = 0x0C;
constexpr unsigned char kGT = 0x0D, kNE = 0x0E, kIsect = 0x0F, kList = 0x10, kRange = 0x11;
constexpr unsigned char kUPlus = 0x12, kUMinus = 0x13, kPercent = 0x14;

// GetOp's table by base code: the first operator of the list with that code (the
// one registered last), kept in step with the list by the constructor and the
// destructor.
constexpr int kNumCodes = 0x20;
constinit const TOp* s_apByCode[kNumCodes] = {};

// Folds the class bits of an operand token onto its base code.
unsigned char BaseToken(unsigned char bToken) {
  if (bToken >= 0x80) return 0xFF;
  if (bToken >= 0x60) return static_cast<unsigned char>(bToken - 0x40);
  if (bToken >= 0x40) return static_cast<unsigned char>(bToken - 0x20);
  return bToken;
}

}  // namespace

TOp::TOp(unsigned nResId, unsigned char bToken, unsigned char nPrecedence, bool bPostfix)
    : m_nResId(nResId), m_bToken(bToken), m_nPrecedence(nPrecedence), m_bPostfix(bPostfix) {
  m_pNextOp = m_pFirstOp;
  m_pFirstOp = this;
  if (bToken < kNumCodes) s_apByCode[bToken] = this;
}

TOp::~TOp() {
  for (TOp** ppLink = &m_pFirstOp; *ppLink != nullptr; ppLink = &(*ppLink)->m_pNextOp) {
    if (*ppLink == this) {
      *ppLink = m_pNextOp;
      break;
    }
  }
  if (m_bToken < kNumCodes && s_apByCode[m_bToken] == this) {
    const TOp* pNext = m_pNextOp;
    while (pNext != nullptr && pNext->m_bToken != m_bToken) pNext = pNext->m_pNextOp;
    s_apByCode[m_bToken] = pNext;
  }
}

const char16_t* TOp::GetText() const {
  Initializer::OnInit();
  return m_sText.c_str();
}

char16_t* TOp::Unparse(char16_t* pDst) const {
  for (const char16_t* pwsz = GetText(); *pwsz != 0; ++pwsz) *pDst++ = *pwsz;
  return pDst;
}

void TOp::Initializer::OnInit() {
  if (s_nResourceGeneration == GetResourceGeneration() + 1 &&
      s_nLocaleGeneration == GetLocaleGeneration() + 1) {
    return;
  }
  s_nResourceGeneration = GetResourceGeneration() + 1;
  s_nLocaleGeneration = GetLocaleGeneration() + 1;
  for (TOp* pOp = m_pFirstOp; pOp != nullptr; pOp = pOp->m_pNextOp) {
    if (pOp->m_nResId == 0) {
      pOp->m_sText.assign(1, GetLocaleSettings().cList);
      continue;
    }
    const char16_t* pwszText = LoadResourceString(pOp->m_nResId);
    pOp->m_sText = pwszText != nullptr ? pwszText : u"";
    for (char16_t& c : pOp->m_sText) c = ToUpperChar(c);
  }
}

const TOp* TOp::GetFirstOp() {
  Initializer::OnInit();
  return m_pFirstOp;
}

const TOp* TOp::GetOp(unsigned char bToken) {
  const unsigned char bBase = BaseToken(bToken);
  return bBase < kNumCodes ? s_apByCode[bBase] : nullptr;
}

const TOp* TOp::MatchOp(const char16_t* pwszText, bool bOperand, int* pnLength) {
  if (pwszText == nullptr) return nullptr;
  const TOp* pBest = nullptr;
  int nBest = 0;
  for (const TOp* pOp = GetFirstOp(); pOp != nullptr; pOp = pOp->m_pNextOp) {
    if (pOp->IsPrefix() != bOperand) continue;
    const char16_t* pwszOp = pOp->m_sText.c_str();
    int i = 0;
    while (pwszOp[i] != 0 && pwszText[i] != 0 && ToUpperChar(pwszText[i]) == pwszOp[i]) ++i;
    if (i == 0 || pwszOp[i] != 0 || i <= nBest) continue;
    pBest = pOp;
    nBest = i;
  }
  if (pBest != nullptr && pnLength != nullptr) *pnLength = nBest;
  return pBest;
}

TOpUMinus::TOpUMinus() : TOpUnaryReal(IDS_OP_UMINUS, kUMinus, 3, false) {}
TOpUPlus::TOpUPlus() : TOpUnaryReal(IDS_OP_UPLUS, kUPlus, 3, false) {}
TOpPercent::TOpPercent() : TOpUnaryReal(IDS_OP_PERCENT, kPercent, 4, true) {}
TOpPower::TOpPower() : TOpBinaryReal(IDS_OP_POWER, kPower, 5, false) {}
TOpDiv::TOpDiv() : TOpBinaryReal(IDS_OP_DIV, kDiv, 6, false) {}
TOpMul::TOpMul() : TOpBinaryReal(IDS_OP_MUL, kMul, 6, false) {}
TOpSub::TOpSub() : TOpBinaryReal(IDS_OP_SUB, kSub, 7, false) {}
TOpAdd::TOpAdd() : TOpBinaryReal(IDS_OP_ADD, kAdd, 7, false) {}
TOpConcat::TOpConcat() : TOpBinaryString(IDS_OP_CONCAT, kConcat, 8, false) {}
TOpGT::TOpGT() : TOpBinaryCompare(IDS_OP_GT, kGT, 9, false) {}
TOpGE::TOpGE() : TOpBinaryCompare(IDS_OP_GE, kGE, 9, false) {}
TOpLT::TOpLT() : TOpBinaryCompare(IDS_OP_LT, kLT, 9, false) {}
TOpLE::TOpLE() : TOpBinaryCompare(IDS_OP_LE, kLE, 9, false) {}
TOpNE::TOpNE() : TOpBinaryCompare(IDS_OP_NE, kNE, 9, false) {}
TOpEQ::TOpEQ() : TOpBinaryCompare(IDS_OP_EQ, kEQ, 9, false) {}
TOpRange::TOpRange() : TOpBinaryRef(IDS_OP_RANGE, kRange, 0, false) {}
TOpIntersection::TOpIntersection() : TOpBinaryRef(IDS_OP_INTERSECTION, kIsect, 1, false) {}
TOpUnion::TOpUnion() : TOpBinaryRef(0, kList, 2, false) {}

namespace {

// The built-in operators. Constructing one registers it.
TOpRange s_Range;
TOpIntersection s_Intersection;
TOpUnion s_Union;
TOpUMinus s_UMinus;
TOpUPlus s_UPlus;
TOpPercent s_Percent;
TOpPower s_Power;
TOpDiv s_Div;
TOpMul s_Mul;
TOpSub s_Sub;
TOpAdd s_Add;
TOpConcat s_Concat;
TOpGT s_GT;
TOpGE s_GE;
TOpLT s_LT;
TOpLE s_LE;
TOpNE s_NE;
TOpEQ s_EQ;

}  // namespace
