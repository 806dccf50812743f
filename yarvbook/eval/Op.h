// TOp: one operator of the formula language, with its text, token code and
// precedence. The eighteen built-in operators are static objects that register in a
// list when constructed; the parser matches their texts and climbs their
// precedences, the unparser writes their texts, and the evaluator applies them to
// the value stack in place (the result in the left operand's slot).
//
// Precedences, lower binding tighter: range 0, intersection 1, union 2, prefix minus
// and plus 3, percent 4, power 5, multiply and divide 6, add and subtract 7,
// concatenation 8, comparisons 9. A prefix minus binding tighter than "^" makes -2^2
// give 4, as users of the major spreadsheets expect.
#pragma once

#include <string>

#include "base/Export.h"
#include "base/ZelObject.h"

class TValue;

class YARVBOOK_API TOp : public CZelObject {
 public:
  // nResId: the host string resource holding the text; 0 for union, whose text is
  // the locale's list separator. Registers at the head of the list.
  TOp(unsigned nResId, unsigned char bToken, unsigned char nPrecedence, bool bPostfix);
  ~TOp() override;

  // The text as loaded (upper case as stored in the resources).
  const char16_t* GetText() const;
  unsigned GetResourceId() const { return m_nResId; }
  // The token code of the stream (0x03 to 0x14).
  unsigned char GetToken() const { return m_bToken; }
  unsigned char GetPrecedence() const { return m_nPrecedence; }
  bool IsPostfix() const { return m_bPostfix; }
  bool IsSecond() const { return m_bSecond; }
  virtual bool IsUnary() const = 0;
  // Written before its operand: a unary operator that is not postfix.
  bool IsPrefix() const { return IsUnary() && !m_bPostfix; }

  // Writes the text at pDst (no terminator) and returns the position behind it.
  char16_t* Unparse(char16_t* pDst) const;

  // The operator whose text begins pwszText, compared upper-cased; the longest text
  // wins. In operand position (bOperand) only prefix operators are candidates,
  // otherwise only binary and postfix ones. Union matches the locale's list
  // separator and intersection a space: the parser decides first whether a
  // separator or white space stands for them. *pnLength gets the text's length.
  // Null when nothing matches.
  static const TOp* MatchOp(const char16_t* pwszText, bool bOperand, int* pnLength);
  // The operator of a token code (class bits ignored); null for other codes.
  static const TOp* GetOp(unsigned char bToken);
  static const TOp* GetFirstOp();
  const TOp* GetNextOp() const { return m_pNextOp; }

  // Loads the operator texts from the host's resources (and the union text from the
  // locale); runs again when either has changed since.
  struct YARVBOOK_API Initializer {
    static void OnInit();
  };

  static TOp* m_pFirstOp;

 private:
  std::u16string m_sText;
  unsigned m_nResId;
  unsigned char m_bToken;
  unsigned char m_nPrecedence;
  bool m_bPostfix;
  bool m_bSecond = false;  // clear for every built-in operator
  TOp* m_pNextOp = nullptr;
};

class YARVBOOK_API TOpUnary : public TOp {
 public:
  using TOp::TOp;
  bool IsUnary() const override { return true; }
  // Applies the operator to *pArg in place. Never fails outward.
  virtual void Evaluate(TValue* pArg) const = 0;
};

// Converts with CheckReal, then applies Calc; a failed conversion leaves its error.
class YARVBOOK_API TOpUnaryReal : public TOpUnary {
 public:
  using TOpUnary::TOpUnary;
  void Evaluate(TValue* pArg) const override;
  virtual double Calc(double r) const = 0;
};

class YARVBOOK_API TOpUMinus final : public TOpUnaryReal {
 public:
  TOpUMinus();
  double Calc(double r) const override { return -r; }
};

class YARVBOOK_API TOpUPlus final : public TOpUnaryReal {
 public:
  TOpUPlus();
  double Calc(double r) const override { return r; }
};

class YARVBOOK_API TOpPercent final : public TOpUnaryReal {
 public:
  TOpPercent();
  double Calc(double r) const override { return r / 100; }
};

class YARVBOOK_API TOpBinary : public TOp {
 public:
  using TOp::TOp;
  bool IsUnary() const override { return false; }
  // Applies the operator to pLeft[0] and pLeft[1]; the result replaces pLeft[0] and
  // pLeft[1] is left Empty. Never fails outward: the left operand's error wins.
  virtual void Evaluate(TValue* pLeft) const = 0;
};

// Both operands through CheckReal (left first), then Calc.
class YARVBOOK_API TOpBinaryReal : public TOpBinary {
 public:
  using TOpBinary::TOpBinary;
  void Evaluate(TValue* pLeft) const override;
  // The arithmetic step: stores the result in *pResult and returns 0, or returns the
  // TValue error code of the failure.
  virtual int Calc(double a, double b, double* pResult) const = 0;
};

class YARVBOOK_API TOpAdd final : public TOpBinaryReal {
 public:
  TOpAdd();
  int Calc(double a, double b, double* pResult) const override;
};

class YARVBOOK_API TOpSub final : public TOpBinaryReal {
 public:
  TOpSub();
  int Calc(double a, double b, double* pResult) const override;
};

class YARVBOOK_API TOpMul final : public TOpBinaryReal {
 public:
  TOpMul();
  int Calc(double a, double b, double* pResult) const override;
};

// An exact zero divisor is #DIV/0! (NaN is not zero).
class YARVBOOK_API TOpDiv final : public TOpBinaryReal {
 public:
  TOpDiv();
  int Calc(double a, double b, double* pResult) const override;
};

// The C library's pow with its error indicator: 0^-1, (-8)^(1/3) and overflow are
// #NUM!.
class YARVBOOK_API TOpPower final : public TOpBinaryReal {
 public:
  TOpPower();
  int Calc(double a, double b, double* pResult) const override;
};

class YARVBOOK_API TOpBinaryString : public TOpBinary {
 public:
  using TOpBinary::TOpBinary;
};

// Both operands through CheckString (left first), joined as a new Text.
class YARVBOOK_API TOpConcat final : public TOpBinaryString {
 public:
  TOpConcat();
  void Evaluate(TValue* pLeft) const override;
};

// Both operands dereferenced with CheckValue; an error (left first) is the result,
// else the Logical of Test applied to TValue::Compare(left, right).
class YARVBOOK_API TOpBinaryCompare : public TOpBinary {
 public:
  using TOpBinary::TOpBinary;
  void Evaluate(TValue* pLeft) const override;
  // The comparison step on the sign of a comparison result.
  virtual bool Test(int nCmp) const = 0;
};

class YARVBOOK_API TOpEQ final : public TOpBinaryCompare {
 public:
  TOpEQ();
  bool Test(int nCmp) const override { return nCmp == 0; }
};

class YARVBOOK_API TOpNE final : public TOpBinaryCompare {
 public:
  TOpNE();
  bool Test(int nCmp) const override { return nCmp != 0; }
};

class YARVBOOK_API TOpLT final : public TOpBinaryCompare {
 public:
  TOpLT();
  bool Test(int nCmp) const override { return nCmp < 0; }
};

class YARVBOOK_API TOpLE final : public TOpBinaryCompare {
 public:
  TOpLE();
  bool Test(int nCmp) const override { return nCmp <= 0; }
};

class YARVBOOK_API TOpGT final : public TOpBinaryCompare {
 public:
  TOpGT();
  bool Test(int nCmp) const override { return nCmp > 0; }
};

class YARVBOOK_API TOpGE final : public TOpBinaryCompare {
 public:
  TOpGE();
  bool Test(int nCmp) const override { return nCmp >= 0; }
};

// Reference operators: both operands must be references (Cell, Range or Region);
// an error operand wins (left first), any other value is #VALUE!.
class YARVBOOK_API TOpBinaryRef : public TOpBinary {
 public:
  using TOpBinary::TOpBinary;
};

// The smallest range covering both operands, on one sheet.
class YARVBOOK_API TOpRange final : public TOpBinaryRef {
 public:
  TOpRange();
  void Evaluate(TValue* pLeft) const override;
};

// The cells in both operands, on one sheet; none is #NULL!.
class YARVBOOK_API TOpIntersection final : public TOpBinaryRef {
 public:
  TOpIntersection();
  void Evaluate(TValue* pLeft) const override;
};

// A Region of the ranges of both operands.
class YARVBOOK_API TOpUnion final : public TOpBinaryRef {
 public:
  TOpUnion();
  void Evaluate(TValue* pLeft) const override;
};
