// CFormulaUnparserBase: a token stream back to formula text, without the leading "=".
// It is the inverse of the parser: parsing the text it writes gives the same tokens
// and added data. The A1 and R1C1 variants (FormulaUnparser.h, FormulaR1C1Unparser.h)
// differ only in how a cell or a range is written; the parse type chooses English or
// local vocabulary (function names, separators, decimal separator).
//
// Each operand token leaves one fragment of text on a stack; operators and function
// calls pop their operands' fragments and leave one combined fragment. Fragments are
// chains of pieces in one arena, so joining costs the same however long the operands
// are and a 65,535-byte token stream unparses in time linear in its length.
#pragma once

#include <string>
#include <vector>

#include "base/Cell.h"
#include "base/Export.h"
#include "formula/FormulaIterator.h"
#include "formula/UnparserRCUtilBase.h"

class CBookBase;
class CFormula;
class CSheetBase;

// What a host needs of an unparser: the text of the whole formula.
class YARVBOOK_API IFormulaUnparser {
 public:
  virtual ~IFormulaUnparser() = default;
  // Replaces out with the formula's text. Returns false when the stream could not be
  // shown; out then holds the failure message (unknown function or unknown token).
  virtual bool Unparse(std::u16string& out) = 0;
};

class YARVBOOK_API CFormulaUnparserBase : public CFormulaIterator,
                                          public IFormulaUnparser,
                                          public CUnparserRCUtilBase {
 public:
  // The formula is not owned and must outlive the unparser. nParseType 1 and 2 write
  // English names with "." and ","; any other value the locale's.
  CFormulaUnparserBase(CBookBase* pBook, CSheetBase* pSheet, CFormula* pFormula, EFormulaType type,
                       const TCell& base, int nParseType);
  CFormulaUnparserBase(CBookBase* pBook, CSheetBase* pSheet, CFormula* pFormula, EFormulaType type,
                       int nRow, int nCol, int nParseType);

  // Walks the stream from its start. Never reads outside the postfix or the added
  // data, whatever the bytes.
  bool Unparse(std::u16string& out) override;
  // The text, or the failure message.
  std::u16string Unparse();

  int GetParseType() const { return m_nParseType; }
  bool IsEnglish() const { return m_nParseType == 1 || m_nParseType == 2; }

  // The message texts (host resources 12493 and 12494), loaded on first use.
  static const std::u16string& GetUnknownFunctionFormat();
  static const std::u16string& GetUnparserFailure();

  // An extern-sheet entry as a prefix: the supporting book's title (empty for this
  // book), the first and last sheet, and whether the entry stands for a whole book
  // (the prefix of an external name: no sheets).
  struct TExternPrefix {
    bool bOtherBook = false;
    bool bBookOnly = false;
    std::u16string sBook;
    std::u16string sSheet1;
    std::u16string sSheet2;  // empty: the span is the first sheet alone
  };

 protected:
  // ---- Writers that differ between notations -------------------------------------
  // A cell at the absolute row and column with the relative flags of its column word.
  virtual void FormatCell(std::u16string& s, int nRow, int nCol, unsigned short wColWord) = 0;
  virtual void FormatRange(std::u16string& s, int nRow1, int nCol1, unsigned short wColWord1,
                           int nRow2, int nCol2, unsigned short wColWord2) = 0;

  // ---- What the unparser asks of the book and the function table ------------------
  // The name and, for tFunc, the fixed argument count of function nFunc. False when
  // no function has that number.
  virtual bool GetFunction(int nFunc, std::u16string* pName, int* pnArgs);
  // The name of sheet nSheet of this book; false (empty name) when there is none.
  virtual bool GetSheetName(int nSheet, std::u16string* pName);
  // The prefix of extern-sheet entry nIndex; false when the entry has no supporting
  // book (the reference is then written "#REF!").
  virtual bool GetExternSheet(int nIndex, TExternPrefix* pPrefix);
  // The text of defined name nIndex (1-based) and, for a sheet-level name of another
  // sheet, that sheet's name in *pSheet (else empty). False when there is no such name.
  virtual bool GetNameText(int nIndex, std::u16string* pName, std::u16string* pSheet);
  // The text of name nName (1-based) of the book behind extern-sheet entry nExternSheet.
  virtual bool GetExternNameText(int nExternSheet, int nName, std::u16string* pName);
  // The content of a label cell on the formula's sheet: its text, or its number with 15
  // significant digits. False when the cell holds neither.
  virtual bool GetLabelText(int nRow, int nCol, std::u16string* pText);

  // The localised TRUE or FALSE.
  std::u16string GetBoolText(bool b) const;
  char16_t GetArgSeparator() const;
  char16_t GetDecimal() const;

 private:
  // One piece of a fragment: nLen units of the arena from nStart, then piece nNext
  // (-1: the end).
  struct TPiece {
    int nStart;
    int nLen;
    int nNext;
  };
  struct TFragment {
    int nHead;  // -1: empty
    int nTail;
    // The text begins with a reference, and ends with a single cell: "A1" ":" "C1"
    // would read back as one range, so the range operator is written ": " between
    // them.
    bool bStartsWithRef = false;
    bool bEndsWithCell = false;
    // The text begins with a sheet or book prefix: "Tax" ":" "Sheet1!R5" would read
    // back as the sheet span "Tax:Sheet1", so the operator is written ": " here too.
    bool bStartsWithPrefix = false;
  };

  void Reset();
  // A piece holding s (or the arena text appended since nStart).
  int NewPiece(const char16_t* p, int nLen);
  int NewPieceFromArena(int nStart);
  void Push(int nPiece);
  void PushNumber(int nPiece);
  void PushText(const std::u16string& s);
  // Appends piece nPiece to fragment f, or puts it in front.
  void Append(TFragment& f, int nPiece);
  void Prepend(TFragment& f, int nPiece);
  void AppendFragment(TFragment& f, const TFragment& g);

  bool DoOperator(unsigned char cBase);
  bool DoFunction(int nFunc, int nArgs, bool bFixed);
  bool DoArray();
  bool DoExtended(const unsigned char* p);
  void DoReference(unsigned char cBase, const unsigned char* p);
  void DoPrefix(std::u16string& s, int nExternSheet, bool* pbValid);
  bool ReadAdded(int nBytes, const unsigned char** pp);
  void Fail(const std::u16string& sMessage, std::u16string& out);

  const int m_nParseType;
  std::u16string m_sArena;
  std::vector<TPiece> m_Pieces;
  std::vector<TFragment> m_Stack;
  const unsigned char* m_pAddedPos = nullptr;
  const unsigned char* m_pAddedEnd = nullptr;
  int m_nUnknownFunc = -1;  // set when a call names no function
};
