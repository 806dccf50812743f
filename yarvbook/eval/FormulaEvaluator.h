// CFormulaEvaluator: computes one formula. It walks the postfix token stream once,
// from the first token to the last, on a class-wide stack of TValue records,
// applying operators (TOp) and functions (TFunc). An evaluator is made on the C++
// stack for each evaluation; a defined name met in the middle of a formula is
// computed by a nested evaluator on the same value stack, above the outer one's
// values. IF and CHOOSE do not jump: every argument is computed and the function
// picks among the values.
//
// Nothing here throws for bad data: an unknown token, a function number without a
// body or an argument count outside the function's range makes the whole formula
// "#FORMULA!", and every other failure is an error value.
#pragma once

#include <vector>

#include "base/Cell.h"
#include "base/Export.h"
#include "eval/Value.h"
#include "formula/Formula.h"

class CBookBase;
class CCell;
class CFormulaCell;
class CSheetBase;
class TFunc;
class TOpBinary;
class TOpUnary;

class YARVBOOK_API CFormulaEvaluator {
 public:
  // Room on the value stack: a formula pushes at most one value per byte of its
  // tokens, so twice the largest token stream holds the deepest formula with room
  // for the names it calls. A nested evaluation that would not fit gives #NAME?.
  static constexpr int kStackSize = 2 * 65536;
  // Names calling names: deeper chains give #NAME?, like a name calling itself.
  static constexpr int kMaxNesting = 64;

  CFormulaEvaluator(CBookBase* pBook, CSheetBase* pSheet, CFormulaCell* pCell, const TCell& base);
  // The cell's own sheet and position: what a recalculation computes a cell with.
  CFormulaEvaluator(CBookBase* pBook, CFormulaCell* pCell);
  CFormulaEvaluator(CBookBase* pBook, CSheetBase* pSheet, const TCell& base);
  CFormulaEvaluator(CBookBase* pBook, CSheetBase* pSheet);
  CFormulaEvaluator(const CFormulaEvaluator&) = delete;
  CFormulaEvaluator& operator=(const CFormulaEvaluator&) = delete;

  // Evaluates the token stream (relative references read per type). Returns the
  // result: a slot just above the stack's top, valid until the next evaluation on
  // this stack; copy or move it out. Null for a null formula.
  TValue* Evaluate(CFormula* pFormula, CFormulaBase::EFormulaType type);
  // Evaluates the cell's formula (in array mode for an array cell) and stores the
  // result in the cell with SetRecalcValue: a reference is read at the cell's own
  // position, an array gives its first element, and an empty result the number 0.
  void Evaluate(CFormulaCell* pCell);
  // Leaves err as the result, as an evaluation that gave it would; returns the slot.
  TValue* Evaluate(TValue::TError err);

  // Calls function nFunc over the top nArgs values, leaving the result in place of
  // them. False, with the stack unchanged, when nFunc is not below 371, has no
  // function, or nArgs lies outside its range. bSetFormat takes over a value format
  // the function proposes.
  bool EvaluateFunc(int nFunc, int nArgs, bool bSetFormat);
  // Operators in place: the result in pArgs[0], a binary operator's right operand
  // (pArgs[1]) left Empty. The WithArray forms apply the operator element by element
  // where array mode asks for it.
  void EvaluateOp(const TOpUnary* pOp, TValue* pArgs);
  void EvaluateOp(const TOpBinary* pOp, TValue* pArgs);
  void EvaluateOpWithArray(const TOpUnary* pOp, TValue* pArgs);
  void EvaluateOpWithArray(const TOpBinary* pOp, TValue* pArgs);

  // Element (nRow, nCol) of pVal for element-wise work: a value that is no array
  // serves every position, a one-row array is stretched down, a one-column array
  // across; a position outside gives #N/A. A Range must have been made an Array.
  static void GetArrayValue(const TValue* pVal, int nRow, int nCol, TValue& out);
  // The cell record at a position of pSheet, or null.
  static CCell* GetValueCell(const CSheetBase* pSheet, int nRow, int nCol);

  // The number format the last evaluation proposes for its result (0 = none).
  unsigned short GetValFormat() const { return m_nValFormat; }

  CBookBase* GetBook() const { return m_pBook; }
  CSheetBase* GetSheet() const { return m_pSheet; }
  CFormulaCell* GetFormulaCell() const { return m_pCell; }
  const TCell& GetBaseCell() const { return m_Base; }

  // ---- Class-wide state ------------------------------------------------------------
  static bool IsCalcArray() { return m_bCalcArray; }
  static void SetCalcArray(bool b) { m_bCalcArray = b; }
  static bool IsSubtotal() { return m_bSubtotal; }
  static bool IsSubA() { return m_bSubA; }
  // Set by SUBTOTAL and SUBTOTALA for the list function they call: in subtotal mode
  // cells in hidden rows and hidden columns are skipped too.
  static bool IsSubSkipHidden() { return m_bSubSkipHidden; }
  static void SetSubSkipHidden(bool b) { m_bSubSkipHidden = b; }
  // The context of the evaluation that ran last (a nested one leaves its own).
  static CBookBase* GetLastBook() { return m_pLastBook; }
  static CSheetBase* GetLastSheet() { return m_pLastSheet; }
  static CFormulaCell* GetLastFormulaCell() { return m_pLastCell; }
  static const TCell& GetLastBaseCell() { return m_LastBase; }
  static int GetLastBaseRow() { return m_LastBase.row; }
  static int GetLastBaseCol() { return m_LastBase.col; }
  // Values on the stack above its bottom; 0 between evaluations.
  static int GetStackDepth();

  // The top of the value stack, shared by all nested evaluations.
  static TValue* m_pVal;
  static bool m_bCalcArray;
  static bool m_bSubtotal;
  static bool m_bSubA;
  static bool m_bSubSkipHidden;

 private:
  void Init();
  void Run(CFormula* pFormula, TValue* pEntry);
  TValue* Push() { return ++m_pVal; }
  // Drops the values above pNewTop.
  static void DropTo(TValue* pNewTop);
  // Moves the added-data cursor past the item of the token just read (operands at
  // operands); false when the item runs past the added data.
  bool SkipAdded(unsigned char cBase, CFormulaBase::TPostfixPtr operands);
  void PushArray();
  void PushRef(unsigned char cBase, CFormulaBase::TPostfixPtr operands);
  // Pushes the value of the one cell a tRef or tRefN names on the evaluation's sheet;
  // false, with nothing pushed, when there is no sheet or the cell is empty.
  bool PushCellValue(unsigned char cBase, CFormulaBase::TPostfixPtr operands);
  void PushExtended(CFormulaBase::TPostfixPtr operands);
  void PushName(CBookBase* pBook, CSheetBase* pSheet, int nName);
  void PushNameX(int nExternSheet, int nName);
  bool EvaluateExternCall(int nArgs);
  // Array-class operands of a value formula: their slots, lowest first.
  bool IsArrayOperand(const TValue* pSlot) const;
  void DropArrayOperands(const TValue* pFrom);
  void EvaluateFuncWithArray(TFunc* pFunc, TValue* pArgs, int nArgs);
  void CallFunc(TFunc* pFunc, TValue* pArgs, int nArgs);
  // Stored row and column of a reference, made absolute.
  int AbsRow(unsigned short wRow, unsigned short wColWord, bool bOffset) const;
  int AbsCol(unsigned short wColWord, bool bOffset) const;

  CBookBase* m_pBook;
  CSheetBase* m_pSheet;
  CFormulaCell* m_pCell = nullptr;
  TCell m_Base;
  CFormula* m_pFormula = nullptr;
  TValue* m_pEntry = nullptr;  // the stack's top when this evaluation began
  CFormulaBase::TPostfixPtr m_Added;
  const unsigned char* m_pAddedEnd = nullptr;
  bool m_bRelIsOffset = false;
  unsigned short m_nValFormat = 0;
  // Stack slots holding operands written in array class while array mode is off
  // (an expression inside an array argument): operators take them element-wise.
  std::vector<const TValue*> m_ArrayOperands;

  static CBookBase* m_pLastBook;
  static CSheetBase* m_pLastSheet;
  static CFormulaCell* m_pLastCell;
  static TCell m_LastBase;
  static int m_nNesting;
};
