// TValue: the one value record: cell constants, evaluator stack slots, function
// arguments and array elements. A TValue owns its payload (text, region, array)
// unless the holder's shared-string flag marks the text as a string-table entry.
#pragma once

#include <string>

#include "base/Export.h"

class CAddInFunc;
class CBookBase;
class CSheetBase;
class TCell;
class TRange;
class TRange3d;
class TRegion;
class TValue;

// Read access to the cells of a sheet. The book layer implements it and installs it
// with TValue::SetCellValueReader; until then every cell reads as absent.
class YARVBOOK_API ICellValueReader {
 public:
  virtual ~ICellValueReader() = default;
  // The value stored in the cell at (nRow, nCol) of pSheet, or null when there is no
  // cell there (it reads as Empty). The pointer is used at once, before anything that
  // may change the sheet, and never freed by the caller.
  virtual const TValue* GetCellValue(const CSheetBase* pSheet, int nRow, int nCol) const = 0;
  // Stores the value of that cell in out (Empty when there is no cell). The default
  // copies what GetCellValue returns; a reader that can build the value in place
  // saves the copy.
  virtual void ReadCellValue(const CSheetBase* pSheet, int nRow, int nCol, TValue& out) const;
};

// The base cell of the formula being evaluated, which implicit intersection uses.
// Stores it and returns true, or returns false when no formula is being evaluated.
using TBaseCellFn = bool (*)(int* pnRow, int* pnCol);

class YARVBOOK_API TValue {
 public:
  // Stored and compared by kind: these numbers are part of the format and give the
  // order of mixed comparisons (Empty < numbers < text < logicals < errors).
  enum TValType : unsigned char {
    vtEmpty = 0,
    vtReal = 1,
    vtText = 2,
    vtLogical = 3,
    vtError = 4,
    vtCell = 5,
    vtRange = 6,
    vtRegion = 7,
    vtRange3d = 8,
    vtAddInFunc = 9,
    vtArray = 10,
  };

  // Error codes; m_pErrorStrings holds their texts. errFormula marks a formula that
  // cannot be evaluated: it is shown, stored as #N/A and never read back from text.
  enum TError : int {
    errNone = 0,
    errNull = 1,
    errDiv0 = 2,
    errValue = 3,
    errRef = 4,
    errName = 5,
    errNum = 6,
    errNA = 7,
    errFormula = 8,
    errLast = errFormula,
  };

  // Error texts by code; index 0 has none.
  static const char16_t* const m_pErrorStrings[errLast + 1];

  // Typing 5 into a percent-formatted cell stores 0.05 while this is set (the default).
  static bool m_sbMakeAutoPercentValue;

  TValue() = default;
  // A copy is a new holder: its shared-string flag is clear and it owns private
  // copies of text, region and array.
  TValue(const TValue& src);
  // Takes payload and flag together (a counted text stays counted); never allocates.
  TValue(TValue&& src) noexcept;
  // Copies the payload by the holder rules: text private, added to or shared from the
  // string table per the two flags; arrays and regions deep; this value's flag stays.
  TValue& operator=(const TValue& src);
  // CopyAndClearSource. When the text must be copied between the table and a private
  // buffer and memory runs out, this becomes #VALUE! instead of throwing.
  TValue& operator=(TValue&& src) noexcept;
  ~TValue() { Clear(vtEmpty); }

  // ---- Kind and storage flag ----
  TValType GetValType() const { return m_vt; }
  bool IsEmpty() const { return m_vt == vtEmpty; }
  bool IsReal() const { return m_vt == vtReal; }
  bool IsText() const { return m_vt == vtText; }
  bool IsLogical() const { return m_vt == vtLogical; }
  bool IsError() const { return m_vt == vtError; }
  bool IsCell() const { return m_vt == vtCell; }
  bool IsRange() const { return m_vt == vtRange; }
  bool IsRegion() const { return m_vt == vtRegion; }
  bool IsRange3d() const { return m_vt == vtRange3d; }
  bool IsAddInFunc() const { return m_vt == vtAddInFunc; }
  bool IsArrayVal() const { return m_vt == vtArray; }
  // Cell or Range; not Region or Range3d.
  bool IsRef() const { return m_vt == vtCell || m_vt == vtRange; }
  bool IsNAError() const { return m_vt == vtError && m_u.nInt == errNA; }

  // The shared-string flag belongs to the holder: a cell's stored value sets it, so
  // its text is a counted entry of the process-wide string table. Changing it moves
  // a held text between the table and a private copy.
  bool IsSST() const { return m_bSST != 0; }
  void SetSST(bool bSST);

  // Releases what the value owns, zeroes the payload, keeps the flag, sets the kind.
  void Clear(TValType vt = vtEmpty);
  // Moves src here (text re-homed when the two flags differ) and leaves src Empty.
  void CopyAndClearSource(TValue& src);

  // Array: its counts; Range: its extent; Region and Range3d: 0; others: 1.
  int Rows() const;
  int Cols() const;

  // ---- Setters: each clears to the new kind first ----
  void SetValue(double r);
  void SetValue(int n) { SetValue(static_cast<double>(n)); }
  void SetValue(unsigned int n) { SetValue(static_cast<double>(n)); }
  void SetZero() { SetValue(0.0); }
  void SetLogical(int bValue);
  void SetError(TError err);
  void SetExcelError(unsigned char bCode) { SetError(ExcelErrorToError(bCode)); }
  // Text of nLen characters (-1: up to the terminator); null stores the empty text.
  // Throws CZelException when memory is exhausted.
  void SetValue(const char16_t* pwszText, int nLen = -1);
  // The same without throwing: returns false, leaving the value Empty, when the copy
  // cannot be made.
  bool SetValueWithoutException(const char16_t* pwszText, int nLen = -1);
  // References. Coordinates are clamped to the grid; ranges are normalised.
  void SetCell(CSheetBase* pSheet, int nRow, int nCol);
  void SetRange(CSheetBase* pSheet, int nRow1, int nCol1, int nRow2, int nCol2);
  void SetValue(CSheetBase* pSheet, const TRange& range);
  void SetValue(CSheetBase* pSheet, const TCell& cell);
  void SetValue(CSheetBase* pSheet, const TCell& cell1, const TCell& cell2);
  void SetRange3d(CBookBase* pBook, int nSheet1, int nRow1, int nCol1, int nSheet2, int nRow2,
                  int nCol2);
  void SetValue(CAddInFunc* pFunc);
  // Builds a Region of the ranges (appended when this already is a Region on pSheet).
  // Throws CZelException when memory is exhausted.
  void AddRanges(CSheetBase* pSheet, int nCount, const TRange* pRanges);

  // ---- Arrays (row-major, rows x cols elements) ----
  // Makes this an Array of nRows x nCols, keeping the elements that lie in both the
  // old and the new shape (new ones Empty). Returns false for negative counts or more
  // than kMaxArrayElements elements; throws CZelException when memory is exhausted.
  static constexpr int kMaxArrayElements = 65536 * 256;
  bool ResizeArray(int nRows, int nCols);
  // Element setters; false when this is not an Array or the position is outside.
  // Arrays do not nest: an Array or Region stored into an element becomes #VALUE!.
  bool SetArrayValue(int nRow, int nCol, const TValue& val);
  bool SetArrayValueAndClearSource(int nRow, int nCol, TValue& val);
  bool SetArrayNumber(int nRow, int nCol, double r);
  bool SetArrayString(int nRow, int nCol, const char16_t* pwszText, int nLen = -1);
  bool SetArrayLogical(int nRow, int nCol, int bValue);
  bool SetArrayError(int nRow, int nCol, TError err);
  bool SetArrayExcelError(int nRow, int nCol, unsigned char bCode);
  // The element, or null when this is not an Array or the position is outside. Valid
  // until the array is resized or cleared.
  TValue* GetArrayValue(int nRow, int nCol);
  const TValue* GetArrayValue(int nRow, int nCol) const;

  // Settles a failed call over nArgs slots starting here: non-error arguments are
  // cleared; this slot keeps its own error, else takes the first later one, else is
  // Empty.
  void Pop(int nArgs);

  // ---- Getters ----
  // The text of a Text value (never null for Text), else null.
  const char16_t* TextPtr() const { return m_vt == vtText ? m_u.pText : nullptr; }
  // The Real payload as it stands; 0 for every other kind.
  void GetValue(double& r) const { r = m_vt == vtReal ? m_u.r : 0.0; }
  // A converted copy (CheckReal on a scratch value); r = 0 and false when that fails.
  bool _GetValue(double& r) const;
  // Logical payload; for other kinds the Real payload, any non-zero (NaN too) is TRUE.
  int GetLogical() const;
  TError GetError() const { return m_vt == vtError ? static_cast<TError>(m_u.nInt) : errNone; }
  unsigned char GetExcelError() const { return ErrorToExcelError(GetError()); }
  CAddInFunc* GetAddInFunc() const { return m_vt == vtAddInFunc ? m_u.pAddIn : nullptr; }
  // The value as text: Text as it is, Logical as the local TRUE/FALSE text, Error as
  // its text, Real by the General rule with the locale's decimal separator, other
  // kinds empty. The buffer form copies at most nCapacity - 1 characters and a
  // terminator (nCapacity < 0: no limit) and returns the length copied.
  int GetValue(char16_t* pBuf, int nCapacity) const;
  void GetValue(std::u16string& str) const;
  // Unpacks a Cell or Range; false for every other kind. A dangling reference gives
  // a null sheet.
  bool GetValue(CSheetBase** ppSheet, TRange* pRange) const;
  // Unpacks a Range3d; false for every other kind.
  bool GetValue(CBookBase** ppBook, TRange3d* pRange) const;
  // Unpacks a Region; the pointer is valid while this value holds it.
  bool GetValue(CSheetBase** ppSheet, const TRegion** ppRegion) const;
  // The value of a cell through the installed reader: an absent cell gives Empty, a
  // null sheet #REF!.
  static void GetCellValue(const CSheetBase* pSheet, int nRow, int nCol, TValue& out);

  // The RK form of a Real (the flag bits in the low two bits); false when it has none.
  bool GetRK(int* pnRK) const;

  bool IsZero() const;  // Empty, or a Real equal to 0
  bool IsNeg() const { return m_vt == vtReal && m_u.r < 0; }
  bool IsValidReal() const;  // a Real holding a finite double
  void Negate() {
    if (m_vt == vtReal) m_u.r = -m_u.r;
  }

  // Ordering for comparison operators and lookups: -1, 0 or 1 for this against other.
  // Numbers equal within 1e-15 of this value's magnitude, text ignores case, and mixed
  // kinds order Empty < numbers < text < logicals < errors.
  int Compare(const TValue& other) const;
  // Equality only: 0 when the kinds match and the values are equal (Reals exactly, no
  // tolerance), else 1.
  int CompareExact(const TValue& other) const;
  bool operator==(const TValue& other) const { return CompareExact(other) == 0; }
  bool operator!=(const TValue& other) const { return CompareExact(other) != 0; }

  // The value as formula text (array constants): numbers with '.' (bEnglish) or the
  // locale's decimal separator, quoted text, TRUE/FALSE, error texts, arrays as
  // {a,b;c,d} with the locale's separators unless bEnglish, Cell and Range as A1
  // text. Appends to str.
  void Unparse(const CSheetBase* pSheet, std::u16string& str, bool bEnglish = true) const;

  // ---- Argument checks: non-zero on success, else an Error left in the value ----
  // Dereferences: Cell gives the cell's value, Range its implicitly intersected cell,
  // Region and Range3d #VALUE!, Array its first element; a Real must be finite.
  int CheckValue();
  // Converts in place to a number: a logical gives 1 or 0, Empty 0, numeric text
  // its value. On failure leaves #VALUE! (or the error already held); returns 0.
  int CheckReal();
  // A finite Real (other kinds through CheckReal first); else #NUM!.
  int CheckNumber();
  // Reads a truth value: Logical; Real (non-zero TRUE) unless bStrict; Empty FALSE;
  // text through the text conversion unless bStrict. When bStrict and the value is a
  // number or text, fails without changing the value.
  int CheckLogical(int& bOut, bool bStrict = false);
  // CheckLogical, not strict, storing the Logical back.
  int CheckLogical();
  // Text stays; any other non-error value becomes its text. Fails on an Error.
  int CheckString();
  int Check2Strings();
  int Check2Reals();
  int CheckReals(int nCount);
  // CheckReal, then the bounds (on the untruncated number), then truncation toward 0.
  int CheckInt(int& nOut);      // -2147483648 .. 2147483647
  int CheckLong(int& nOut);     // the same
  int CheckShort(short& nOut);  // -32768 .. 32767
  // 0 .. 32767, not 65535: callers read row and column counts through these and rely
  // on 32768 failing with #VALUE!.
  int CheckUShort(unsigned short& nOut);
  int CheckWord(unsigned short& nOut);
  // A Range; a Cell becomes a one-cell Range; anything else #N/A.
  int CheckRange();
  // Real, Array or what CheckRange accepts; other values #VALUE!.
  int CheckArray();
  // A Range (or Cell) becomes an Array of its cells' values; other values pass.
  int CheckArrayVal();
  // An omitted argument (Empty) succeeds without touching the output.
  int CheckIntWithDefault(int& nOut);
  int CheckLogicalWithDefault(int& bOut, bool bStrict = false);
  int CheckWordWithDefault(unsigned short& nOut);
  int CheckStringWithDefault();

  // ---- Implicit intersection and array to scalar ----
  // Replaces a Cell or Range by the value of one cell. The base position is (nRow,
  // nCol), or the formula's base cell when both are negative; with bRelative they are
  // offsets from the range's first cell. Fails with #VALUE! when the range does not
  // meet the base row or column, #REF! for a dangling reference.
  int CvtRangeToValue(int nRow = -1, int nCol = -1, bool bRelative = false);
  // The cell of range that implicit intersection picks for the base (nRow, nCol):
  // a single cell, the base column of a one-row range, the base row of a one-column
  // range. Stores it in nRow and nCol; false when there is none.
  static bool GetValueCell(const TRange& range, int& nRow, int& nCol);
  // An Array becomes its first element; an empty Array #VALUE!.
  int CvtArrayValToValue();

  // ---- Text to number ----
  // Reads pwszText as a number (separators of the locale, or English ones for parse
  // types 1 and 2), a TRUE/FALSE text, an error text, a fraction, or a date or time.
  // On success stores the result, reports the built-in number format matching the
  // text's shape through pnFormat (0 when none) and returns 1; otherwise returns 0
  // and leaves the value alone. nCellFormatType is the type of the cell's format
  // (percent and fraction change the reading).
  int StringToReal(const char16_t* pwszText, int* pnFormat = nullptr, int nCellFormatType = 0,
                   int nParseType = 0);

  // ---- Errors ----
  static unsigned char ErrorToExcelError(TError err);
  static TError ExcelErrorToError(unsigned char bCode);
  static const char16_t* GetErrorString(TError err);  // null for 0 and unknown codes
  static const char16_t* GetExcelErrorString(unsigned char bCode);
  // The error whose text equals, ignoring case, the first nLen characters of pwsz
  // (-1: all of it); errNone when none does. "#FORMULA!" is never recognised.
  static TError GetErrorToken(const char16_t* pwsz, int nLen = -1);

  // ---- TRUE and FALSE texts ----
  // The English forms are "TRUE" and "FALSE"; the local forms follow the locale's
  // language unless the host sets its own (null restores the built-in ones).
  static const char16_t* GetLogicalText(bool bValue, bool bEnglish);
  static void SetLocalLogicalTexts(const char16_t* pwszTrue, const char16_t* pwszFalse);

  // ---- Hooks set by the layers above ----
  // Both return the previous setting. Null reader: every cell reads as absent; null
  // base-cell function: there is no base cell.
  static ICellValueReader* SetCellValueReader(ICellValueReader* pReader);
  static TBaseCellFn SetBaseCellFn(TBaseCellFn pfn);

 private:
  // 16 bytes of payload: the largest kinds are the Region (sheet and owned region)
  // and the Array (two counts and the owned element block).
  struct TRefPayload {
    void* pSheet;  // CSheetBase* for Cell, Range, Region; CBookBase* for Range3d
    unsigned short wRow1, wRow2;
    unsigned char bCol1, bCol2;
  };
  union TPayload {
    double r;
    const char16_t* pText;  // owned, or a string-table entry when m_bSST is set
    int nInt;               // Logical (0 or 1) and Error
    TRefPayload ref;
    struct {
      void* pSheet;
      TRegion* pRegion;  // owned
    } region;
    struct {
      int nRows, nCols;
      TValue* pElems;  // owned, nRows * nCols
    } array;
    CAddInFunc* pAddIn;
  };

  void Deref();  // references and arrays to one value, or an Error
  void SetText(const char16_t* pwszText, int nLen, bool bThrow, bool* pbOk);
  void ReleasePayload();  // frees the text, region or array Clear lets go of
  void AssignFrom(const TValue& src);
  void StealFrom(TValue& src);
  int CheckIntRange(double rMin, double rMaxExclusive, int& nOut);
  CSheetBase* RefSheet() const { return static_cast<CSheetBase*>(m_u.ref.pSheet); }

  TPayload m_u = {};
  // Range3d keeps its two sheet indexes here; zero for every other kind.
  unsigned short m_wSheet1 = 0, m_wSheet2 = 0;
  TValType m_vt = vtEmpty;
  unsigned char m_bSST = 0;
};

// Inline: every evaluator step clears values, and most hold nothing to free.
inline void TValue::Clear(TValType vt) {
  constexpr unsigned kOwning = 1u << vtText | 1u << vtRegion | 1u << vtArray;
  if ((1u << m_vt) & kOwning) ReleasePayload();
  m_u = {};
  m_wSheet1 = m_wSheet2 = 0;
  m_vt = vt;
}

inline void TValue::SetValue(double r) {
  Clear(vtReal);
  m_u.r = r;
}
