// CCell: the record of one cell: its value, its format index, its merged-cell index
// and a byte of flags. A cell holds a constant (Empty, number, text, logical or
// error); it keeps it in 16 bytes rather than in a TValue (whose reference payloads
// a cell never holds), so that a number cell is 24 bytes. Texts are counted entries
// of the shared string table. TValue is the exchange form: GetValue and SetValue. Cells without a
// formula are shared between positions through the shared cell table (CSharedCellTable); a shared
// cell (IsSCT) is owned by the table, never by the rows that point at it, and is never changed in
// place: every change goes through the table's clone-on-write operations.
//
// Cells are allocated from a pool of fixed-size blocks, so that a number cell costs
// its object and nothing for the allocator: with its row slot, 32 bytes.
#pragma once

#include <cstddef>

#include "base/Export.h"
#include "base/ZelObject.h"
#include "eval/Value.h"

class YARVBOOK_API CCell : public CZelObject {
 public:
  static constexpr unsigned short kNoMergedCell = 0xFFFF;
  static constexpr unsigned short kDefaultFormat = 15;

  // Flag bits; stored in files, keep the numbers.
  enum EFlag : unsigned char {
    flFormula = 0x01,  // a CFormulaCell
    flArray = 0x02,    // member of an array formula
    flOpTable = 0x04,  // member of a data table
    flMemo = 0x08,     // has a memo
    flBidir = 0x10,    // right-to-left text
    flShared = 0x20,   // owned by the shared cell table
  };

  CCell() : CCell(kDefaultFormat) {}
  explicit CCell(unsigned short wFormat);
  ~CCell() override;

  // Copies value, indexes and flags (the shared flag included).
  CCell& operator=(const CCell& src);

  // A new cell of this cell's class, copied through the virtual Copy; owned by the
  // caller. Throws CZelException when memory is exhausted.
  CCell* Clone() const override;
  // A private copy: as Clone, with the shared flag clear.
  CCell* LocalClone() const;
  // pSrc is a CCell.
  void Copy(const CZelObject* pSrc) override;
  void Copy(const CCell* pSrc) { Copy(static_cast<const CZelObject*>(pSrc)); }
  // 0 when value (texts compared exactly), indexes and flags other than the shared
  // flag agree; 1 otherwise.
  int Compare(const CZelObject* pOther) const override;
  bool operator==(const CCell& other) const { return Compare(&other) == 0; }
  bool operator!=(const CCell& other) const { return Compare(&other) != 0; }

  // Value readers.
  TValue::TValType GetValType() const { return static_cast<TValue::TValType>(m_vt); }
  bool IsValue() const { return m_vt != TValue::vtEmpty; }
  bool IsEmpty() const final { return m_vt == TValue::vtEmpty; }
  bool IsText() const { return m_vt == TValue::vtText; }
  bool IsReal() const { return m_vt == TValue::vtReal; }
  bool IsLogical() const { return m_vt == TValue::vtLogical; }
  bool IsError() const { return m_vt == TValue::vtError; }
  // The number of a Real; 0 for every other kind.
  double GetReal() const { return m_vt == TValue::vtReal ? m_u.r : 0.0; }
  // A logical's flag; a number reads as TRUE when not 0; other kinds as FALSE.
  int GetLogical() const;
  TValue::TError GetError() const {
    return m_vt == TValue::vtError ? static_cast<TValue::TError>(m_u.n) : TValue::errNone;
  }
  // The text of a Text value (a shared string table entry), else null. Valid while
  // the cell is unchanged.
  const char16_t* TextPtr() const { return m_vt == TValue::vtText ? m_u.pText : nullptr; }
  // The value as a TValue (a text is copied, or shared when out carries the
  // shared-string flag). May throw CZelException (memory).
  void GetValue(TValue& out) const;
  TValue GetValue() const;
  // The value compared exactly: same kind and, for texts, the same characters.
  bool IsSameValue(const CCell& other) const;

  // Value writers. Only for a cell that no one else points at: a shared cell is
  // changed through CSharedCellTable. Text setters may throw CZelException (memory);
  // the cell then keeps its old value.
  void SetValue(double r);
  void SetValue(int n) { SetValue(static_cast<double>(n)); }
  // nLength -1: up to the terminator; null stores the empty text.
  void SetValue(const char16_t* pwszText, int nLength = -1);
  // Constants are stored as they are; an array stores its first element; a
  // reference or region, which a cell cannot hold, stores #VALUE!.
  void SetValue(const TValue& value);
  void SetLogical(int nLogical);
  void SetError(TValue::TError eError);
  void SetExcelError(unsigned char cError) { SetError(TValue::ExcelErrorToError(cError)); }
  void Clear() override;
  // Moves src's value into this cell and leaves src Empty.
  void CopyAndClearSource(TValue& src);

  unsigned short GetFormat() const { return m_wFormat; }
  void SetFormat(unsigned short wFormat) { m_wFormat = wFormat; }
  unsigned short GetMergedCellIndex() const { return m_wMergedCellIndex; }
  void SetMergedCellIndex(unsigned short wIndex) { m_wMergedCellIndex = wIndex; }
  bool IsMerged() const { return m_wMergedCellIndex != kNoMergedCell; }

  unsigned char GetFlags() const { return m_cFlags; }
  bool IsFormula() const { return (m_cFlags & flFormula) != 0; }
  bool IsArrayCell() const { return (m_cFlags & flArray) != 0; }
  bool IsOpTableCell() const { return (m_cFlags & flOpTable) != 0; }
  bool GetHasMemo() const { return (m_cFlags & flMemo) != 0; }
  void SetHasMemo(bool b) { SetFlag(flMemo, b); }
  bool GetBidir() const { return (m_cFlags & flBidir) != 0; }
  void SetBidir(bool b) { SetFlag(flBidir, b); }
  bool IsSCT() const { return (m_cFlags & flShared) != 0; }
  void SetSCT(bool b) { SetFlag(flShared, b); }

  // No merged index and none of the formula, array, data-table, memo and
  // right-to-left flags: what is left is a format and a value. The shared empty
  // cells are exactly the empty init cells, one per format.
  bool IsInitCell() const {
    return m_wMergedCellIndex == kNoMergedCell && (m_cFlags & ~flShared) == 0;
  }
  bool IsEmptyInitCell() const { return IsInitCell() && m_vt == TValue::vtEmpty; }

  // Size of a formula cell (CFormulaCell checks it): cells of exactly sizeof(CCell)
  // and of this size come from the two cell pools; any other size from the general
  // heap.
  static constexpr std::size_t kFormulaCellBytes = 64;
  // Throws CZelException when memory is exhausted.
  static void* operator new(std::size_t nBytes);
  static void operator delete(void* p, std::size_t nBytes);
  // Bytes the pools hold from the system, in use or free: for the memory benchmark.
  static std::size_t GetPoolBytes();

 protected:
  // Formula cells set the formula flag (and the array and data-table flags).
  void SetFlag(unsigned char cFlag, bool b) {
    m_cFlags = b ? static_cast<unsigned char>(m_cFlags | cFlag)
                 : static_cast<unsigned char>(m_cFlags & ~cFlag);
  }

 private:
  // Releases a held text and sets the kind.
  void Reset(TValue::TValType vt);

  // Layout, 24 bytes: vtable pointer, payload, kind, flags, merged index, format.
  union {
    double r;
    const char16_t* pText;  // a shared string table entry, counted once for this cell
    int n;                  // logical flag or error code
  } m_u = {};
  unsigned char m_vt = TValue::vtEmpty;
  unsigned char m_cFlags = 0;
  unsigned short m_wMergedCellIndex = kNoMergedCell;
  unsigned short m_wFormat;
};
