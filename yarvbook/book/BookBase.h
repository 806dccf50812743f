// CBookBase: one workbook: its sheets (the array slots, by sheet index), the flags
// that drive recalculation and the process-wide list of open books. The host derives
// its document class from it and fills in the virtual notifications, which are empty
// here.
//
// The book owns its number formats: the built-in formats 0..63 and the three quick
// local formats are made at construction, user formats follow. It owns its defined
// names (CNameList) and its supporting-book and extern-sheet tables (CExternTables)
// and forwards their operations. Format records join the book with the part of the
// engine that provides them.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/Cell.h"
#include "base/Export.h"
#include "base/Range.h"
#include "base/Region.h"
#include "base/ZelObArray.h"
#include "book/NameList.h"
#include "extern/ExternTables.h"
#include "format/SingleFormat.h"
#include "format/ValFormatList.h"

class CAddInFunc;
class CExternSheet;
class CFormulaCell;
class CRecalcChain;
class CName;
class CSheetBase;
class CSupBook;
class CValFormat;

class YARVBOOK_API CBookBase : public CZelObArray {
 public:
  // Settings byte.
  static constexpr unsigned char kSetModified = 0x02;      // bit 1
  static constexpr unsigned char kSetUndoRedoBook = 0x08;  // bit 3
  static constexpr unsigned char kSetTempBook = 0x10;      // bit 4
  static constexpr unsigned char kSetAutomatic = 0x20;     // bit 5
  static constexpr unsigned char kSetMinimal = 0x40;       // bit 6
  static constexpr unsigned char kSetIteration = 0x80;     // bit 7
  // Recalculation state byte.
  static constexpr unsigned char kStCircular = 0x04;      // bit 2: the last rebuild found a cycle
  static constexpr unsigned char kStNeedsRecalc = 0x08;   // bit 3
  static constexpr unsigned char kStRecalcAll = 0x10;     // bit 4
  static constexpr unsigned char kStOrderInvalid = 0x20;  // bit 5
  static constexpr unsigned char kStOrderInvalidFull = 0x40;  // bit 6
  static constexpr unsigned char kStRecalculating = 0x80;     // bit 7

  // At most this many characters in a name made by MakeSheetName.
  static constexpr int kMaxSheetNameBuffer = 4096;

  CBookBase();
  // Leaves the book list when still in it; deletes the sheets.
  ~CBookBase() override;

  // ---- The process-wide book list ------------------------------------------------
  // Puts the book at the head of the list (nothing when already in it).
  void AddToList();
  // Unlinks the book; it must be in the list.
  void RemoveFromList();
  static CBookBase* GetFirstBook() { return m_pFirst; }
  CBookBase* GetNextBook() const { return m_pNext; }
  // pBook when it is in the list, else null.
  static CBookBase* FindBook(const CBookBase* pBook);
  // The first book whose title or path name matches (MatchTitle), else null.
  static CBookBase* FindBook(const char16_t* pwszTitle);
  // The title or the path name equals pwszTitle, ignoring case.
  bool MatchTitle(const char16_t* pwszTitle) const;
  // The list order for recalculation across books: the books a book depends on come
  // before it.
  static void UpdateBooksOrder();
  static void CheckBooksOrder();
  static void InvalidateBooksOrder() { m_bBooksOrderInvalid = true; }

  // ---- Texts ---------------------------------------------------------------------
  void SetPathName(const char16_t* pwszPath);
  const char16_t* GetPathName() const { return m_sPathName.c_str(); }
  void SetTitle(const char16_t* pwszTitle);
  const char16_t* GetTitle() const { return m_sTitle.c_str(); }
  const char16_t* GetLongTitle() const { return m_sLongTitle.c_str(); }
  void ChangeLongTitle(const char16_t* pwszLongTitle);
  // The path name when set, else the title.
  const char16_t* GetDefaultPathName() const;

  // ---- Sheets --------------------------------------------------------------------
  int Sheets() const { return m_nSize; }
  // The sheet at nIndex, or null.
  CSheetBase* SheetBase(int nIndex) const;
  CSheetBase* GetActiveSheet() const { return SheetBase(m_nActiveSheet); }
  void SetActiveSheet(int nIndex) { m_nActiveSheet = nIndex; }
  // Appends pSheet (taken over) and gives it its index; returns the index. Throws
  // CZelException (memory); pSheet is then deleted.
  int AddSheet(std::unique_ptr<CSheetBase> pSheet);
  // Appends a new empty sheet named pwszName, or a new-sheet name when null. Null
  // when the name is taken (the sheet is not added). Throws CZelException (memory).
  CSheetBase* NewSheet(const char16_t* pwszName = nullptr);
  // The first sheet, in index order, whose name equals pwszName: ignoring case with
  // bIgnoreCase, else exactly. Null when none.
  CSheetBase* FindSheetBase(const char16_t* pwszName, bool bIgnoreCase) const;
  // The counter for new-sheet names; past 256 it restarts at 1.
  int GetNextSheetIndex();
  // The new-sheet pattern filled with the next index that no sheet uses (in any
  // case). Kept in the book; valid until the next call.
  const char16_t* GetNewSheetName();
  // A copy of GetNewSheetName() owned by the book until RemoveAllSheetName().
  const char16_t* MakeSheetName();
  void RemoveAllSheetName() { m_SheetNames.clear(); }
  // Gives each sheet its index in the array, after sheets were inserted or moved.
  void FixSheetNumbers();

  // ---- Defined names (1-based, as tName tokens index them) -------------------------
  int GetNumNames() const { return m_Names.GetNumNames(); }
  // Takes pName over and returns its index. When CZelException (memory) is thrown,
  // pName is still the caller's.
  int AddName(CName* pName) { return m_Names.AddName(pName); }
  // Deletes name nIndex; later names move down by one. False outside the table.
  bool DeleteName(int nIndex) { return m_Names.DeleteName(nIndex); }
  // The index of the name spelt by the nLength units at pwszName (-1: to the
  // terminator), ignoring case, for a formula on sheet nSheet: a name of that sheet
  // first, then a book-level name. 0 when none.
  int FindName(const char16_t* pwszName, int nLength, int nSheet) const {
    return m_Names.FindName(pwszName, nLength, nSheet);
  }
  // The name at nIndex, or null outside 1..GetNumNames().
  CName* GetName(int nIndex) const { return m_Names.GetName(nIndex); }
  CNameList& GetNameList() { return m_Names; }

  // ---- Supporting books and extern sheets (0-based) -------------------------------
  int GetNumSupBooks() const { return m_ExternTables.GetNumSupBooks(); }
  // The index of the entry for the book titled pwszTitle (or the open book pRefBook)
  // with kind bits bKind, added when there is none. Throws CZelException (memory).
  int MakeSupBook(const char16_t* pwszTitle, CBookBase* pRefBook, unsigned char bKind = 0) {
    return m_ExternTables.MakeSupBook(pwszTitle, pRefBook, bKind);
  }
  CSupBook* GetSupBook(int nIndex) const { return m_ExternTables.GetSupBook(nIndex); }
  int GetNumExternSheets() const { return m_ExternTables.GetNumExternSheets(); }
  // The entry for (nSupBook, nFirstSheet, nLastSheet), added when there is none.
  // Throws CZelException (memory).
  int MakeExternSheet(int nSupBook, int nFirstSheet, int nLastSheet) {
    return m_ExternTables.MakeExternSheet(nSupBook, nFirstSheet, nLastSheet);
  }
  // The index of that entry, or -1.
  int FindExternSheet(int nSupBook, int nFirstSheet, int nLastSheet) const {
    return m_ExternTables.FindExternSheet(nSupBook, nFirstSheet, nLastSheet);
  }
  CExternSheet* GetExternSheet(int nIndex) const { return m_ExternTables.GetExternSheet(nIndex); }
  CExternTables& GetExternTables() { return m_ExternTables; }

  // The number-format index of cell format record wCellFormat, which list functions
  // (SUM, AVERAGE, MIN, MAX) propose for their result; 0 while the book holds no
  // format records of its own.
  virtual unsigned short GetCellValFormat(unsigned short /*wCellFormat*/) const { return 0; }
  // ---- Number formats ------------------------------------------------------------
  // Creates every built-in format 0..63 the book lacks, in the current locale, and the
  // quick local formats. The constructor calls it.
  void InitDefValFormats() { m_ValFormats.InitDefValFormats(); }
  int GetNumValFormats() const { return m_ValFormats.GetCount(); }
  // The number format at nIndex; General for an index that holds none, so a stale
  // index still shows its value. Valid until the book's formats change.
  const CValFormat* GetValFormat(int nIndex) const { return m_ValFormats.GetValFormat(nIndex); }
  // The type of the format's first section (General for an index that holds none).
  CSingleFormat::EType GetValFormatType(int nIndex) const {
    return m_ValFormats.GetValFormatType(nIndex);
  }
  // The built-in index that shows numbers of the given type; bDecimals picks the
  // variant with two decimals where there is one.
  static int GetStandardFormat(CSingleFormat::EType nType, bool bDecimals) {
    return CValFormatList::GetStandardFormat(nType, bDecimals);
  }
  // The book's format for a date with time, a date or a time that has no format of
  // its own (milliseconds shown when there are any).
  const CValFormat& GetQuickFormat(CValFormatList::EQuickFormat nWhich) const {
    return m_ValFormats.GetQuickFormat(nWhich);
  }
  // The index of a format equal to format, or -1.
  int FindValFormat(const CValFormat& format) const { return m_ValFormats.FindValFormat(format); }
  // Adds a user format, or finds an equal one; returns its index. Throws CZelException
  // (memory) only through the allocator.
  int AddValFormat(std::unique_ptr<CValFormat> pFormat) {
    return m_ValFormats.AddValFormat(std::move(pFormat));
  }
  // Parses pwszText (nParseType: EParseType) and adds it; -1 when it does not parse,
  // with *pnErrorPos the index of the failing character.
  int AddValFormat(const char16_t* pwszText, int nParseType, int* pnErrorPos = nullptr) {
    return m_ValFormats.AddValFormat(pwszText, nParseType, pnErrorPos);
  }
  // Makes the list whole after loading: missing built-ins are created, empty user
  // slots become General. Returns the number of slots repaired.
  int ValidateValFormats() { return m_ValFormats.ValidateValFormats(); }
  CValFormatList& ValFormats() { return m_ValFormats; }
  const CValFormatList& ValFormats() const { return m_ValFormats; }

  // The number format a cell's format index selects. Until cell format records exist
  // the two indexes map one to one, with 0 and 15 swapped: a cell's default format 15
  // shows General (number format 0), cell format 0 shows number format 15
  // ("d-mmm-yy"), every other index the number format of the same index. The swap
  // keeps every number format reachable from a cell.
  static int GetCellValFormatIndex(unsigned short wCellFormat);
  // The cell format index that selects number format nValFormat (the inverse of
  // GetCellValFormatIndex); the default cell format for an index outside 0..65535.
  static unsigned short GetCellFormatForValFormat(int nValFormat);

  // ---- Flags ---------------------------------------------------------------------
  bool IsInited() const { return m_bInited; }
  void SetInited(bool b) { m_bInited = b; }
  // Sets the modified mark once the book is initialised.
  void SetModified();
  bool IsModified() const { return (m_cSettings & kSetModified) != 0; }
  void ClearModified() { m_cSettings &= static_cast<unsigned char>(~kSetModified); }
  unsigned char GetSettings() const { return m_cSettings; }
  unsigned char GetRecalcState() const { return m_cRecalcState; }
  bool IsUndoRedoBook() const { return (m_cSettings & kSetUndoRedoBook) != 0; }
  bool IsTempBook() const { return (m_cSettings & kSetTempBook) != 0; }
  void SetUndoRedoBook(bool b) { SetSetting(kSetUndoRedoBook, b); }
  void SetTempBook(bool b) { SetSetting(kSetTempBook, b); }

  // ---- Recalculation -------------------------------------------------------------
  void SetNeedsRecalc() { m_cRecalcState |= kStNeedsRecalc; }
  bool GetNeedsRecalc() const { return (m_cRecalcState & kStNeedsRecalc) != 0; }
  void SetNeedsRecalcAllFormulas() { m_cRecalcState |= kStRecalcAll | kStNeedsRecalc; }
  // The order of formulas must be rebuilt (in full when nFull is set; a pending full
  // request stays); the book needs recalculation.
  void InvalidateFormulasOrder(int nFull);
  // Tells the host first (OnSetAutomaticRecalc), stores the option, then CheckRecalc(1).
  void SetAutomaticRecalc(int nOn);
  bool GetAutomaticRecalc() const { return (m_cSettings & kSetAutomatic) != 0; }
  // Nothing when unchanged. Switching on turns a pending recalculation into one of all
  // formulas, and invalidates the order in full.
  void SetMinimalRecalc(int nOn);
  bool GetMinimalRecalc() const { return (m_cSettings & kSetMinimal) != 0; }
  void SetIteration(int nOn, unsigned nMaxIterations, double rMaxChange);
  bool GetIteration() const { return (m_cSettings & kSetIteration) != 0; }
  unsigned GetMaxIterations() const { return m_nMaxIterations; }
  double GetMaxChange() const { return m_rMaxChange; }
  bool HasCircularRefs() const { return (m_cRecalcState & kStCircular) != 0; }
  // With nAutomaticOnly and automatic recalculation off, only clears the
  // needs-recalculation mark and returns 0. Otherwise runs Recalc() when that mark is
  // set and returns its result; the mark is clear afterwards.
  int CheckRecalc(int nAutomaticOnly);
  // The full cycle: 0 at once while a recalculation runs. Otherwise StartRecalc, the
  // order rebuilt when invalid, every formula that needs it recomputed, RecalcObjects,
  // EndRecalc (which clears the changed mark of every name). Every formula is
  // computed after the cells it reads, so one call brings a book up to date. Returns the result of
  // the order check (0 when nothing was rebuilt or the rebuild succeeded).
  virtual int Recalc();
  void StartRecalc();
  void EndRecalc();
  bool IsRecalculating() const { return (m_cRecalcState & kStRecalculating) != 0; }
  // 0 when the order is valid; otherwise UpdateFormulasOrder()'s result.
  int CheckFormulasOrder();
  // The recalculation chain (defined with the chain): rebuilds the dependency-ordered
  // list of formula cells and clears the order marks; walks it and recomputes what
  // needs it.
  int UpdateFormulasOrder();
  void RecalcAllFormulas();
  // The chain with its dependency graph; null before the first rebuild.
  const CRecalcChain* GetRecalcChain() const { return m_pChain.get(); }
  // Passes run by the last RecalcAllFormulas: 1, or more when circular cells were
  // iterated.
  unsigned GetLastRecalcPasses() const { return m_nLastRecalcPasses; }
  // True when one of this book's supporting books is the open book pBook.
  bool RefersTo(const CBookBase* pBook) const;
  // Head of the chain of formula cells; null while it is not built or empty.
  CFormulaCell* GetFormulaOrder() const { return m_pFormulaOrder; }
  void SetFormulaOrder(CFormulaCell* pHead) { m_pFormulaOrder = pHead; }
  void SetCircularRefs(bool b);

  // ---- Notifications, empty here, filled by the host --------------------------------
  virtual void OnSetAutomaticRecalc(int /*nOn*/) {}
  virtual void OnEndRecalc() {}
  virtual void RecalcObjects() {}
  virtual void NotifyCircularRefs() {}
  virtual void InvalidateRange(CSheetBase* /*pSheet*/, const TCell& /*cell*/, int /*nFlags*/) {}
  virtual void InvalidateRange(CSheetBase* /*pSheet*/, const TRange& /*range*/, int /*nFlags*/) {}
  virtual void InvalidateRange(CSheetBase* /*pSheet*/, const TRegion& /*region*/, int /*nFlags*/) {}
  virtual void InvalidateEdit() {}
  virtual void SetColWidthAuto(CSheetBase* /*pSheet*/, int /*nCol1*/, int /*nCol2*/) {}
  virtual void UpdateView(CSheetBase* /*pSheet*/) {}
  virtual void UpdateAllViews() {}
  virtual void UpdateRows(CSheetBase* /*pSheet*/, int /*nRow1*/, int /*nRow2*/) {}
  virtual void UpdateRowHeaderLayout(CSheetBase* /*pSheet*/) {}
  virtual void SetProgressBar(int /*nPercent*/, const char16_t* /*pwszText*/) {}
  virtual void OnSheetsChanged() {}
  virtual void OnSheetsArrangeChanged() {}
  virtual void UpdatePrintArea(CSheetBase* /*pSheet*/) {}
  // An add-in function the host knows by name; null when none.
  virtual CAddInFunc* FindExternFunc(const char16_t* /*pwszName*/) { return nullptr; }
  // Conversion hooks: the base keeps the value.
  virtual int ColWidthToTwips(int nWidth) { return nWidth; }
  virtual int TwipsToColWidth(int nTwips) { return nTwips; }
  virtual int GetPaletteIndex(unsigned /*nColor*/) { return 0; }

 private:
  void SetSetting(unsigned char cBit, bool b) {
    m_cSettings = b ? static_cast<unsigned char>(m_cSettings | cBit)
                    : static_cast<unsigned char>(m_cSettings & ~cBit);
  }

  static CBookBase* m_pFirst;
  static bool m_bBooksOrderInvalid;
  CBookBase* m_pNext = nullptr;

  CNameList m_Names;
  CExternTables m_ExternTables;
  std::u16string m_sPathName;
  std::u16string m_sTitle;
  std::u16string m_sLongTitle;
  CFormulaCell* m_pFormulaOrder = nullptr;  // not owned: the cells belong to the rows
  std::unique_ptr<CRecalcChain> m_pChain;
  unsigned m_nLastRecalcPasses = 0;
  bool m_bNotifyCircular = false;  // a rebuild found cycles: tell the host at the end
  int m_nNextSheetIndex = 1;
  int m_nActiveSheet = 0;
  std::u16string m_sNewSheetName;
  std::vector<std::unique_ptr<char16_t[]>> m_SheetNames;
  unsigned char m_cSettings = 0;
  unsigned char m_cRecalcState = 0;
  bool m_bInited = false;
  CValFormatList m_ValFormats;
  unsigned m_nMaxIterations = 100;
  double m_rMaxChange = 0.001;
};
