// CFormulaParser: formula text (without its leading "=") to the postfix token stream
// of Formula.h. A hand-written lexer and a precedence-climbing parser in one object.
// Reference syntax is one virtual operation (NextRangeToken) so that a parser for
// another notation reuses the rest; what the parser must learn from the book (sheets,
// names, supporting books, external sheets) goes through virtual lookups as well.
#pragma once

#include <memory>
#include <string>

#include "base/Export.h"
#include "base/Range.h"
#include "formula/FormulaIterator.h"

class CFormulaCell;

// A function as the parser sees it: what it writes and how it checks and classes
// the arguments. Classes are 0 (element-wise), 1 reference, 2 value, 3 array.
struct YARVBOOK_API TParseFunc {
  const char16_t* pwszName = nullptr;       // English, upper case
  const char16_t* pwszLocalName = nullptr;  // upper case; null: the English name
  unsigned short nFunc = 0;
  unsigned char nMinArgs = 0;
  unsigned char nMaxArgs = 0;
  unsigned char nResultClass = 2;
  // Two bits per argument 0..6; bits 14-15 for every argument from the eighth on.
  unsigned short wArgClasses = 0;
  bool bVolatile = false;
  bool bVarArgs = false;  // written as tFuncVar with an argument count

  int GetArgClass(int i) const {
    return (i >= 0 && i < 7) ? (wArgClasses >> (2 * i)) & 3 : (wArgClasses >> 14) & 3;
  }
};

// Lookup of functions by name, ignoring case on the input side: an open-addressed
// hash over the names, built once. The descriptors are not owned and must outlive
// the index.
class YARVBOOK_API CParseFuncIndex {
 public:
  CParseFuncIndex() = default;
  CParseFuncIndex(const CParseFuncIndex&) = delete;
  CParseFuncIndex& operator=(const CParseFuncIndex&) = delete;

  // Enters pFunc under its English name (bLocal false) or its local name. A name
  // entered twice keeps the first entry. Function 255 is never entered.
  void Add(const TParseFunc* pFunc, bool bLocal);
  // The function named by the nLen units at p, or null.
  const TParseFunc* Find(const char16_t* p, int nLen) const;
  int Size() const { return m_nCount; }

 private:
  struct TSlot {
    const char16_t* pwszName = nullptr;
    const TParseFunc* pFunc = nullptr;
    unsigned nHash = 0;
  };
  static unsigned Hash(const char16_t* p, int nLen);
  void Grow();

  std::unique_ptr<TSlot[]> m_pSlots;
  int m_nCapacity = 0;  // a power of two
  int m_nCount = 0;
};

class YARVBOOK_API CFormulaParser : public CFormulaIterator {
 public:
  // Error codes, kept as the first one set during a parse.
  enum EError : int {
    perNone = 0,
    perUnexpected = 1,      // unexpected character or token, no element, bad separator
    perMissingParen = 2,    // ")" missing, or an unreadable token after enough arguments
    perNotFunction = 3,     // a name followed by "(" that is no function
    perFewArgsAtParen = 4,  // ")" reached below the minimum argument count
    perNoEndQuote = 5,      // a string without its closing quote
    perStringTooLong = 6,   // a string of more than 255 units
    perFewArgs = 7,         // too few arguments: an empty last one, or the input ended
    perManyArgs = 8,        // more arguments than the maximum
    perTooDeep = 9,         // more than 30 nested function calls
    per3dForbidden = 10,    // a 3-D reference or external name where the type forbids it
  };
  // Result codes of Parse.
  static constexpr int kResultOk = 0;
  static constexpr int kResultError = 4;
  static constexpr int kResultFewArgs = 113;
  static constexpr int kResultManyArgs = 114;

  static constexpr int kMaxNestedCalls = 30;
  static constexpr int kMaxStringLen = 255;
  // Bound on nested groups and operators; deeper text is error 1, never a stack
  // overflow.
  static constexpr int kMaxDepth = 256;

  // bEnglish: English function names, "." decimals and "," separators; otherwise
  // the locale's local names and separators.
  CFormulaParser(CBookBase* pBook, CSheetBase* pSheet, const TCell& base, bool bEnglish = true);
  ~CFormulaParser() override;

  // Parses pwszText (zero-terminated) as a formula of the given type. Returns 0, or
  // 113 (error 7), 114 (error 8) or 4 (any other error); GetError and GetErrorPos
  // tell more.
  int Parse(const char16_t* pwszText, EFormulaType type);
  // As above; on success fills *ppFormula, creating it when it is null (the caller
  // owns it).
  int Parse(const char16_t* pwszText, CFormula** ppFormula, EFormulaType type);
  // Copies the last successful parse into pFormula: the tokens (with the leading
  // volatile tAttr only when the formula calls a volatile function) and the added
  // data.
  void GetParseResults(CFormula* pFormula) const;
  // The same into the formula of pCell, which takes the type of the last parse.
  void GetParseResults(CFormulaCell* pCell) const;

  // Points the parser at another book, sheet and base cell, keeping its working
  // buffers, so that one parser serves any number of formulas.
  void SetContext(CBookBase* pBook, CSheetBase* pSheet, const TCell& base);

  int GetError() const { return m_nError; }
  // Index into the text where the error was found.
  int GetErrorPos() const { return m_nErrorPos; }
  bool IsVolatile() const { return m_bVolatile; }
  void SetCreateNames(bool bCreate) { m_bCreateNames = bCreate; }
  void SetEnglish(bool bEnglish) { m_bEnglish = bEnglish; }
  void SetFormulaType(EFormulaType type) override;

  // The last parse's tokens without the volatile prefix, and its added data; valid
  // until the next Parse.
  const unsigned char* GetPostfix() const { return m_pOut.get() + kPrefixLen; }
  int GetPostfixLen() const { return m_nOut - kPrefixLen; }
  const unsigned char* GetAddedData() const { return m_pAdded.get(); }
  int GetAddedDataLen() const { return m_nAdded; }

  // A cell or rectangle at *ppText in the parser's notation. Sets *pIsRange, the
  // absolute flags of each corner (bit 0 column, bit 1 row) and the range, advances
  // *ppText; returns 0 (text untouched) when none is there.
  virtual int NextRangeToken(const char16_t** ppText, int* pIsRange, unsigned char* pFlags1,
                             unsigned char* pFlags2, TRange* pRange);

  // A sheet or book prefix as written before "!": book name (empty for this book),
  // first and last sheet (last empty: same as the first; both empty: the book alone).
  struct TExternPrefix {
    const char16_t* pBook = nullptr;
    int nBookLen = 0;
    const char16_t* pSheet1 = nullptr;
    int nSheet1Len = 0;
    const char16_t* pSheet2 = nullptr;
    int nSheet2Len = 0;
  };

 protected:
  // ---- What the parser asks of the book and the function table -----------------
  // The built-in function named by the nLen units at p (English or local name by the
  // parser's mode), or null.
  virtual const TParseFunc* FindFunction(const char16_t* p, int nLen);
  // An external or user-defined function: sets the function number (255 or 370), the
  // extern-sheet index and the name index that its tNameX carries. False when none.
  virtual bool FindExternFunction(const char16_t* p, int nLen, int* pFunc, int* pExternSheet,
                                  int* pNameIndex);
  // Index of a sheet of this book (by name, ignoring case), or -1.
  virtual int FindSheet(const char16_t* p, int nLen);
  // Index of the extern-sheet entry for the prefix (found or added), -1 when the
  // prefix names no usable book or sheet. bForName asks for the entry a name of that
  // book is reached through.
  virtual int FindExternSheet(const TExternPrefix& prefix, bool bForName);
  // The extern-sheet entry of this book whose first and last sheet are nSheet; -1.
  virtual int FindOwnExternSheet(int nSheet);
  // The index of the defined name (sheet-level first, then book-level), created as
  // an undefined name when bCreate; 0 when none.
  virtual int FindName(const char16_t* p, int nLen, bool bCreate);
  // The index of a name of the book behind an extern-sheet entry, created when
  // bCreate; 0 when none.
  virtual int FindExternName(int nExternSheet, const char16_t* p, int nLen, bool bCreate);
  // The sheet the formula belongs to (0 when none).
  virtual int GetFormulaSheetIndex();

 private:
  struct TParseOp;
  struct TFrame;
  struct TOperand;

  static constexpr int kPrefixLen = 4;  // reserved for the volatile tAttr

  enum EKind : unsigned char {
    lkEnd,
    lkNumber,
    lkString,
    lkBool,
    lkError,
    lkRef,    // cell or rectangle, maybe with an extern sheet
    lkName,   // tName
    lkNameX,  // tNameX
    lkFunc,   // function name, "(" consumed
    lkOp,
    lkSep,       // argument separator
    lkOpen,      // "("
    lkClose,     // ")"
    lkArrOpen,   // "{"
    lkArrClose,  // "}"
    lkRowSep,    // ";" in an array
    lkBad,
  };

  void Reset(const char16_t* pwszText);
  void SetError(int nError, const char16_t* pAt);
  void SetError(int nError) { SetError(nError, m_pTokStart); }

  // ---- lexer ----
  // Reads the next token; bOperator: where an operator may stand (after an operand).
  void Next(bool bOperator) { bOperator ? NextToken<true>() : NextToken<false>(); }
  template <bool bOperator>
  void NextToken();
  void LexToken(bool bOperator);
  bool LexNumber();
  bool LexNumberGeneral();
  bool LexString();
  inline bool LexOperator(bool bOperator);
  inline bool LexSingleOperator(unsigned nStarts);
  bool LexWord();
  bool LexPrefixed(const char16_t* pAfter);
  bool LexErrorLiteral();
  void EnsureOps();

  // ---- parser ----
  TOperand ParseExpr(int nMaxLevel);
  TOperand ParseOperators(TOperand left, int nMaxLevel);
  inline TOperand EmitOperand();
  TOperand ParseElement();
  TOperand ParseFunc();
  TOperand ParseArray();
  bool ParseArrayItem();
  inline void FixOperand(const TOperand& op, unsigned char cWant);
  // Turns the value-class operands written from nStart on into array class: an
  // expression whose result is wanted as an array computes its operators element-wise.
  void ForceArrayClass(int nStart);
  void InsertMemToken(int nStart, int nAddedStart);
  void PatchAttrs(const TFrame& frame, int nFuncEnd);
  void PutRef(unsigned char cBase, int nExternSheet);
  int ReadRangeToken(const char16_t** ppText, int* pIsRange, unsigned char* pFlags1,
                     unsigned char* pFlags2, TRange* pRange);

  // ---- output ----
  inline unsigned char* Out(int nBytes);
  inline unsigned char* OutAdded(int nBytes);
  void Insert(int nPos, int nBytes);
  void InsertAdded(int nPos, int nBytes);
  void Grow(std::unique_ptr<unsigned char[]>& p, int& nCap, int nNeed);

  // Input and the current lexical token.
  const char16_t* m_pText = nullptr;
  const char16_t* m_p = nullptr;
  const char16_t* m_pTokStart = nullptr;
  EKind m_nKind = lkEnd;
  double m_rNumber = 0;
  bool m_bIsInt = false;
  unsigned short m_wInt = 0;
  const char16_t* m_pStr = nullptr;  // string body as written (quotes doubled)
  int m_nStrRaw = 0;                 // units in the text
  int m_nStrLen = 0;                 // units stored
  bool m_bBool = false;
  unsigned char m_cErr = 0;  // BIFF8 code
  TRange m_Range;
  int m_nIsRange = 0;
  unsigned char m_cFlags1 = 0;
  unsigned char m_cFlags2 = 0;
  int m_nExternSheet = -1;
  int m_nNameIndex = 0;
  const TParseOp* m_pOp = nullptr;
  const TParseFunc* m_pFunc = nullptr;
  int m_nExternFunc = 0;  // 255 or 370 for external calls, else 0

  // Output.
  std::unique_ptr<unsigned char[]> m_pOut;
  int m_nOut = 0;
  int m_nOutCap = 0;
  std::unique_ptr<unsigned char[]> m_pAdded;
  int m_nAdded = 0;
  int m_nAddedCap = 0;
  std::u16string m_sScratch;  // unquoted prefixes
  std::u16string m_sName;     // a sheet name to look up, zero-terminated

  int m_nError = 0;
  int m_nErrorPos = 0;
  bool m_bVolatile = false;
  bool m_bEnglish = true;
  bool m_bCreateNames = false;
  bool m_bForce3d = false;
  bool m_bNo3d = false;
  unsigned char m_cTypeClass = 0;  // class of the whole formula's result
  char16_t m_cDecimal = u'.';
  char16_t m_cArgSep = u',';
  char16_t m_cUnion = u',';
  bool m_bInArgs = false;  // the innermost bracket is a function's argument list
  bool m_bInArray = false;
  int m_nDepth = 0;

  std::unique_ptr<TFrame[]> m_pFrames;
  int m_nFrames = 0;

  // Operator texts of the parser's mode, cached process-wide and rebuilt when the
  // resources or the locale change.
  const TParseOp* m_pOps = nullptr;
  int m_nOps = 0;
  // Per ASCII first character, the operators starting with it (see EnsureOps).
  const unsigned* m_pOpStarts = nullptr;
  TParseFunc m_ExternFunc;  // descriptor of the external call being lexed
};
