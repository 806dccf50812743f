// CName: a defined name. Formulas use it through tName tokens (by its 1-based index
// in the book's name table, CNameList) and tNameX tokens. A built-in name stores its
// one-character code as its text; reading it back gives the built-in's text.
#pragma once

#include <string>

#include "base/Export.h"
#include "base/ZelObject.h"

class CBookBase;
class CFormula;
class CFormulaEvaluator;
class CSheetBase;
class TCell;
class TRegion;
class TValue;

class YARVBOOK_API CName : public CZelObject {
 public:
  static constexpr int kNumBuiltInNames = 14;
  // The built-in names by code ("Consolidate_Area" is 0, "_FilterDatabase" 13).
  static const char16_t* const m_BuiltInNames[kNumBuiltInNames];
  // What a built-in code without a text reads back as.
  static const char16_t* const m_pwszUnsupportedBuiltIn;
  // Formula types of a name's formula (both store every reference as 3-D).
  static constexpr int kFormulaTypeName = 5;
  static constexpr int kFormulaTypeBuiltInName = 6;
  // SetFormula's result when parsing threw (memory).
  static constexpr int kResultParseThrew = 3;
  // The sheet of a book-level name.
  static constexpr int kBookLevel = -1;

  CName() = default;
  // A name of nSheet (kBookLevel for the book), set with SetName.
  explicit CName(const char16_t* pwszName, int nSheet = kBookLevel);
  ~CName() override;

  // Drops the formula and the text; the flags are cleared.
  void Clear() override;
  // May throw CZelException (memory).
  CZelObject* Clone() const override;
  // Text, built-in mark, sheet and a copy of the formula; the name counts as changed.
  void Copy(const CZelObject* pSrc) override;
  // 0 when text (ignoring case), built-in mark, sheet and formula bytes are equal.
  int Compare(const CZelObject* pOther) const override;
  bool IsEmpty() const override { return m_sName.empty(); }

  // Compares pwszName case-sensitively with the built-in names: on a match the name
  // becomes built-in and stores its code, otherwise it stores the text.
  void SetName(const char16_t* pwszName);
  // The text, or the built-in's text; never null.
  const char16_t* GetName() const;
  // Copies GetName() with its terminator into pBuf, which holds nMax units (at most
  // nMax - 1 characters); returns the characters copied.
  int GetName(char16_t* pBuf, int nMax) const;
  // Case-insensitive comparison of GetName() with pwszName.
  bool operator==(const char16_t* pwszName) const;
  // The same over the nLength units at pwszName.
  bool IsNamed(const char16_t* pwszName, int nLength) const;

  bool IsBuiltIn() const { return m_bBuiltIn; }
  // The built-in code, or -1 for an ordinary name.
  int GetBuiltInCode() const { return m_bBuiltIn && !m_sName.empty() ? m_sName[0] : -1; }
  // The code of the built-in name spelt exactly pwszName, or -1.
  static int FindBuiltInCode(const char16_t* pwszName);
  // The text of built-in code nCode ("UnsupportedBuiltinName" above 13).
  static const char16_t* GetBuiltInName(int nCode);

  // The sheet of a sheet-level name, kBookLevel for a book-level one.
  int GetSheet() const { return m_nSheet; }
  void SetSheet(int nSheet) { m_nSheet = nSheet; }

  // A name may be defined when: it is not empty; it does not read as a cell address;
  // its first character (full-width folded to half-width) is a letter, "_", "\" or
  // lies in U+E0BC..U+EFFF or U+F100..U+F66E; every further character is a letter,
  // a digit, "_", ".", "\" or "?".
  static bool ValidName(const char16_t* pwszName);

  // The definition; null for an undefined name. Owned by the name.
  CFormula* GetFormula() const { return m_pFormula; }
  int GetFormulaType() const { return m_bBuiltIn ? kFormulaTypeBuiltInName : kFormulaTypeName; }
  // Replaces the formula by a copy of pFormula, or removes it for null; marks the name
  // changed and the order of open books invalid. Throws CZelException when memory is
  // exhausted, keeping the old formula.
  void SetFormula(CBookBase* pBook, const CFormula* pFormula);
  // Parses pwszText (creating unknown names) with the name's formula type and
  // replaces the formula; an empty text removes it. Returns the parser's result code
  // (0 success; on failure the formula stays as it was), or kResultParseThrew. Marks
  // the name changed and the order of open books invalid in every case. Parse types
  // 1 and 2 read English function names and separators.
  int SetFormula(CBookBase* pBook, CSheetBase* pSheet, const TCell& base, const char16_t* pwszText,
                 int nParseType);

  // Computes the definition with evaluator, a nested evaluation on the caller's
  // book, sheet, formula cell and base cell. #NAME? when there is no formula or the
  // name is being computed already (it refers to itself, directly or through other
  // names). Returns the evaluator's result slot (see CFormulaEvaluator::Evaluate).
  TValue* Evaluate(CFormulaEvaluator& evaluator);
  // Clears region; when the name's value is a reference to a range on pSheet, adds
  // that range (each range of a region on pSheet).
  void Evaluate(CSheetBase* pSheet, TRegion& region);

  // Set when the definition changes; the recalculation clears it at its end.
  void SetChanged() {
    m_bChanged = true;
    m_bChangedSinceSave = true;
  }
  void ResetChanged() { m_bChanged = false; }
  bool IsChanged() const { return m_bChanged; }
  bool IsChangedSinceSave() const { return m_bChangedSinceSave; }
  void ResetChangedSinceSave() { m_bChangedSinceSave = false; }
  // Guards the evaluation of a name that refers to itself.
  bool IsEvaluating() const { return m_bEvaluating; }
  void SetEvaluating(bool bEvaluating) { m_bEvaluating = bEvaluating; }

 private:
  CFormula* m_pFormula = nullptr;  // owned
  std::u16string m_sName;          // the text, or one character holding the built-in code
  int m_nSheet = kBookLevel;
  bool m_bBuiltIn = false;
  bool m_bChanged = false;
  bool m_bChangedSinceSave = false;
  bool m_bEvaluating = false;
};
