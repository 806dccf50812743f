// CValueCriteria: one condition, an operator and an operand, that values or cells are
// tested against. COUNTIF and SUMIF build one from their criterion argument (">=10",
// "a*", 5); filters build one with an operator chosen from a list (equal, begins
// with, contains, ...). Numbers match only numbers and texts only texts when the
// caller asks for the same kind; text comparisons ignore case and honour the
// wildcards "*" and "?" ("~" makes the next one literal).
#pragma once

#include <memory>
#include <string>

#include "base/Cell.h"
#include "base/Export.h"
#include "base/ZelObject.h"
#include "eval/Value.h"

class CFormula;
class CSheetBase;

class YARVBOOK_API CValueCriteria : public CZelObject {
 public:
  // Stored by filters and compared as numbers: keep the codes.
  enum EOperator : int {
    opEqual = 0,
    opGreater = 1,
    opGreaterEqual = 2,
    opLess = 3,
    opLessEqual = 4,
    opNotEqual = 5,
    opBeginsWith = 6,
    opNotBeginsWith = 7,
    opEndsWith = 8,
    opNotEndsWith = 9,
    opContains = 10,
    opNotContains = 11,
    opBlank = 12,     // from an empty operand with "=" or no operator
    opNotBlank = 13,  // from an empty operand with "<>"
    opAlways = 14,
    opFromText = 16,  // not given: the operand text carries it (">=10")
  };

  // Operand texts are cut to this many characters when a value becomes text.
  static constexpr int kMaxOperandText = 256;

  // Always true.
  CValueCriteria();
  // The worksheet functions' form (they pass -1 and opFromText). A blank operand (null,
  // Empty, the empty text) makes "=" "is blank" and "<>" "is not blank". A number
  // stays a number, except that the text operators with a valid nFormat (an index of
  // pSheet's book's number formats) take its text in that format; any other operand
  // becomes text, which the text operators keep as it is and the others parse
  // (InitFromText, without a sheet).
  CValueCriteria(const TValue* pOperand, int nFormat, EOperator eOp, CSheetBase* pSheet);
  // Operand text with a known operator (opFromText reads it from the text).
  CValueCriteria(const char16_t* pwszText, CSheetBase* pSheet, EOperator eOp);
  // Operand text with the operator as text: "=", ">", ">=", "<", "<=", "<>" exactly,
  // then the six text-operator names of the host (GetOperatorText); no match leaves
  // opFromText, so the operand text carries the operator.
  CValueCriteria(const char16_t* pwszText, CSheetBase* pSheet, const char16_t* pwszOperator);
  // An operand that is a formula (copied): a cell meets the criterion when the
  // formula, evaluated with that cell as its base, gives a true value.
  CValueCriteria(const CFormula* pFormula, EOperator eOp);
  CValueCriteria(const CValueCriteria& other);
  CValueCriteria& operator=(const CValueCriteria& other);
  ~CValueCriteria() override;

  // ---- CZelObject ----
  void Clear() override;  // back to always true
  // A new copy, owned by the caller.
  CValueCriteria* Clone() const override;
  // pSrc is a CValueCriteria.
  void Copy(const CZelObject* pSrc) override;
  // 0 when operator, operand (exactly), format and formula agree; 1 otherwise.
  int Compare(const CZelObject* pOther) const override;
  bool IsEmpty() const override { return m_eOperator == opAlways && !m_pFormula; }

  // Parses the operand text: with bParseOperator the comparison texts are tried as
  // prefixes, ignoring case, longest first ("<>", "<=", "<", ">=", ">", "="); the
  // rest is converted like typed text (numbers, dates, TRUE/FALSE, error texts) or
  // kept as text. With pSheet and the operator equal, a number that no number format
  // of the book shows exactly as the text is kept as text ("1.50" is not 1.5 unless
  // a format writes it so).
  void InitFromText(const char16_t* pwszText, CSheetBase* pSheet, bool bParseOperator);
  // Records the first number format of pSheet's book under which the operand number
  // renders as pwszText (ignoring case); false, recording none, when there is none.
  bool InitValFormat(const char16_t* pwszText, CSheetBase* pSheet);

  // Tests one value. bSameKind: the value (after converting numeric text when the
  // operand is a number) must be of the operand's kind. bExactText: texts compare as
  // whole strings ignoring case, without wildcards, and only with texts.
  bool MeetsCriteria(const TValue* pValue, int bSameKind, int bExactText) const;
  // Tests the cell at cell on pSheet (an absent cell as Empty). The text operators
  // test the cell's displayed text; a formula operand is evaluated at the cell.
  bool MeetsCriteria(CSheetBase* pSheet, const TCell& cell, int bSameKind = 0,
                     int bExactText = 0) const;
  // True when every position of the range meets the criterion.
  bool MeetsCriteria(CSheetBase* pSheet, int nRow1, int nCol1, int nRow2, int nCol2,
                     int bSameKind = 0, int bExactText = 0) const;

  // The index of the first match of the wildcard pattern in pwszText from character
  // nStart on (ignoring case and width), or -1: none, or nStart outside the text.
  static int Search(const char16_t* pwszPattern, const char16_t* pwszText, int nStart);
  // True when a match of the pattern runs to the end of the text.
  static bool EndsWith(const char16_t* pwszPattern, const char16_t* pwszText);

  // "=" ... "<>" for the comparisons, the host's names for the text operators, null
  // for the others.
  static const char16_t* GetOperatorText(EOperator eOp);

  EOperator GetOperator() const { return m_eOperator; }
  const TValue& GetOperand() const { return m_Operand; }
  int GetValFormat() const { return m_nValFormat; }
  const CFormula* GetFormula() const { return m_pFormula.get(); }

  // Loads the names of the six text operators from the host's string resources.
  struct YARVBOOK_API _CLateInit {
    // Runs the load when it has not run for the current resource table.
    static void OnInit();
  };

 private:
  void InitFromValue(const TValue* pOperand, int nFormat, EOperator eOp, CSheetBase* pSheet);
  bool MeetsText(const char16_t* pwszText) const;
  bool ApplyOperator(int nCompare) const;

  EOperator m_eOperator = opAlways;
  TValue m_Operand;
  int m_nValFormat = -1;             // number-format index of the operand, -1 for none
  unsigned char m_bFormatClass = 0;  // CSingleFormat::EType of that format
  std::unique_ptr<CFormula> m_pFormula;
};
