// The list-argument classes: functions whose every argument may be a list (a
// reference, a region, a 3-D range, an array or a scalar) walked element by element.
// A family class writes only the start, element and finish hooks; the walk itself
// (subtotal skipping, error propagation, direct scalars) is the base class's and is
// defined with the evaluator in eval/FuncListArgs.cpp.
#pragma once

#include "base/Export.h"
#include "eval/Func.h"

class CCell;
class CSheetBase;
class TRange;
class TRegion;

// 1 to 30 arguments, each enumerated as a list. The two options choose what the
// walk hands on: bRefCells the non-empty cells of references to EnumCell (else a
// reference reaches EnumValue as it is), bArrayItems the elements of arrays to
// EnumValue (else the array itself). Direct scalars reach Enum, which hands them to
// EnumValue unless overridden; a reference to a deleted sheet reaches EnumValue as
// #REF!. Every argument is walked; the hooks decide what an error means. COUNT,
// COUNTA, AND and OR set both options.
class YARVBOOK_API TFuncListArgs : public TFuncVarArgs {
 public:
  TFuncListArgs(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bRefCells,
                bool bArrayItems)
      : TFuncVarArgs(nResId, pwszName, nFunc, 1, 30),
        m_bRefCells(bRefCells),
        m_bArrayItems(bArrayItems) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override { Evaluate(pArgs, 0, nArgs); }
  // Walks arguments nFirst to nArgs - 1 through the hooks; the result goes to pArgs[0].
  virtual void Evaluate(TValue* pArgs, int nFirst, int nArgs);

 protected:
  virtual void StartEnum() = 0;
  // One scalar argument given directly.
  virtual void Enum(TValue* pVal);
  virtual void EnumValue(const TValue* pVal) = 0;
  virtual void EnumCell(CSheetBase* pSheet, CCell* pCell) = 0;
  // Stores the result in pResult.
  virtual void FinishEnum(TValue* pResult) = 0;

  const bool m_bRefCells;
  const bool m_bArrayItems;
};

// Enumerates the numbers of all arguments: cells and array elements that hold
// numbers, direct numbers, logicals and omitted arguments; direct text is #VALUE!.
class YARVBOOK_API TFuncRealListArgs : public TFuncVarArgs {
 public:
  TFuncRealListArgs(unsigned nResId, const char16_t* pwszName, unsigned short nFunc,
                    unsigned char nMinArgs, unsigned char nMaxArgs)
      : TFuncVarArgs(nResId, pwszName, nFunc, nMinArgs, nMaxArgs) {}
  using TFuncVarArgs::Evaluate;
  void Evaluate(TValue* pArgs, int nArgs) override { Evaluate(pArgs, 0, nArgs); }
  // Sets the cursor to pArgs, calls StartEnum, EvaluateOneArg for nFirst to
  // nArgs - 1 (stopping at the first error), then FinishEnum unless an error became
  // the result. What counts: numbers in cells of references and in arrays (text,
  // logical and empty cells and elements are passed over; an error one is the
  // result); direct numbers, logicals (1 or 0) and omitted arguments (0); direct
  // text is #VALUE! and a direct error the result.
  virtual void Evaluate(TValue* pArgs, int nFirst, int nArgs);
  virtual void EvaluateOneArg(TValue* pArgs, int nIndex, int nArgs);

 protected:
  virtual void StartEnum() = 0;
  virtual void EnumReal(double r) = 0;
  virtual void Enum(TValue* pVal);
  virtual void Enum(const TValue* pVal);
  virtual void EnumCell(CSheetBase* pSheet, CCell* pCell);
  virtual void FinishEnum() = 0;
  virtual void OnMeetCell(CSheetBase* pSheet, int nRow, int nCol);
  virtual void OnMeetRange(CSheetBase* pSheet, const TRange& range);
  virtual void OnMeetRegion(CSheetBase* pSheet, const TRegion& region);
  // Makes err the call's result and stops the walk.
  static void SetResultError(int nError);

 public:
  // The walk's cursor (the result slot) and accumulator, shared by all list
  // functions: evaluation is single-threaded and list calls do not nest.
  static TValue* m_pVal;
  static double m_Real;
  // Values enumerated so far (AVERAGE, MIN, MAX and PRODUCT tell "none" apart).
  static int m_nCount;
  // Set by SetResultError: the walk stops and FinishEnum is not called.
  static bool m_bFailed;
};

// Proposes the number format of the first cell met that has a format record in the
// current book (SUM, AVERAGE, MIN, MAX).
class YARVBOOK_API TFuncRealListArgsWithValFormat : public TFuncRealListArgs {
 public:
  using TFuncRealListArgs::Evaluate;
  using TFuncRealListArgs::TFuncRealListArgs;
  void Evaluate(TValue* pArgs, int nFirst, int nArgs) override;

 protected:
  void EnumCell(CSheetBase* pSheet, CCell* pCell) override;
};

// The "A" variants: direct text and logical arguments reach EnumOther, which counts
// them the function's own way.
class YARVBOOK_API TFuncRTLListArgs : public TFuncRealListArgs {
 public:
  using TFuncRealListArgs::Evaluate;
  using TFuncRealListArgs::TFuncRealListArgs;
  void EvaluateOneArg(TValue* pArgs, int nIndex, int nArgs) override;

 protected:
  void Enum(TValue* pVal) override;
  void Enum(const TValue* pVal) override;
  // Text and logical cells of references reach EnumOther too.
  void EnumCell(CSheetBase* pSheet, CCell* pCell) override;
  virtual void EnumOther(const TValue* pVal) = 0;
};

// STDEV, STDEVP, VAR, VARP: sample or population, deviation or variance.
class YARVBOOK_API TStDevVarBase : public TFuncRealListArgs {
 public:
  TStDevVarBase(unsigned nResId, const char16_t* pwszName, unsigned short nFunc, bool bSample,
                bool bVariance)
      : TFuncRealListArgs(nResId, pwszName, nFunc, 1, 30),
        m_bSample(bSample),
        m_bVariance(bVariance) {}

 protected:
  const bool m_bSample;
  const bool m_bVariance;
};
