// CSupBook: a workbook that formulas of this book refer to (or this book itself, or
// another always-available source): its title (full path), the sheets and names of
// it that are referred to, and the live book or a loaded copy of its data when there
// is one. Formulas reach it by index through the extern-sheet table.
//
// Stored titles are encoded with control characters for their path parts, relative
// to the referring book's path where they share a drive or directory:
//   1          first character of every encoded title; inside, 1 + letter is the
//              drive "X:\" and 1 + '@' a network volume "\\"
//   2          root of the referring book's volume
//   3          directory separator
//   4          parent directory "..\"
//   5, n, ...  a URL ("://" inside) of n characters, taken literally
// A title that does not begin with character 1 is stored as it is.
#pragma once

#include <string>

#include "base/Export.h"
#include "base/ZelIndexObject.h"
#include "base/ZelObArray.h"

class CBookBase;
class CExternName;
class CSupSheet;

class YARVBOOK_API CSupBook : public CZelIndexObject {
 public:
  // Kind bits. The three source bits mark books that are always available and count
  // as opened without a referenced book.
  static constexpr unsigned char kKindSelf = 0x01;   // the referring book itself
  static constexpr unsigned char kKindAddIn = 0x02;  // holder of add-in functions
  static constexpr unsigned char kKindOther = 0x04;  // another always-present source
  static constexpr unsigned char kKindSources = 0x07;
  static constexpr unsigned char kKindCreated = 0x08;  // set on creation

  CSupBook();
  explicit CSupBook(const char16_t* pwszTitle, unsigned char bKind = 0);
  ~CSupBook() override;

  void Clear() override;
  CZelObject* Clone() const override;
  // Copies title, kinds, books, sheets and names (deep).
  void Copy(const CZelObject* pSrc) override;
  // Takes over pSrc's sheets and names, leaving it without them.
  void CopyAndClearSource(CSupBook* pSrc);
  // 0 for the same book: equal source bits and the same referenced book; when both
  // have no referenced book, titles equal ignoring case. Non-zero otherwise.
  int Compare(const CZelObject* pOther) const override;

  unsigned char GetKind() const { return m_bKind; }
  bool IsSelf() const { return (m_bKind & kKindSelf) != 0; }
  // True when a source bit is set or a referenced book is present.
  bool IsOpened() const { return (m_bKind & kKindSources) != 0 || m_pRefBook != nullptr; }

  // The full path; empty by default.
  const char16_t* GetFullTitle() const { return m_sTitle.c_str(); }
  void SetTitle(const char16_t* pwszTitle);
  // With a referenced book the file-name part of the title, else the long title.
  const char16_t* GetTitle() const;
  // The text after the last '\' of the title.
  const char16_t* GetBookTitle() const;
  void SetLongTitle(const char16_t* pwszLongTitle);
  const char16_t* GetLongTitle() const { return m_sLongTitle.c_str(); }

  // The books are not owned: the host keeps them alive while they are referenced.
  CBookBase* GetRefBook() const { return m_pRefBook; }
  CBookBase* GetDataBook() const { return m_pDataBook; }
  void SetRefBook(CBookBase* pBook) { m_pRefBook = pBook; }
  void SetDataBook(CBookBase* pBook) { m_pDataBook = pBook; }
  // The referenced book if present, else the data book (may be null).
  CBookBase* GetSupDataBook() const { return m_pRefBook != nullptr ? m_pRefBook : m_pDataBook; }

  // Sheets referred to.
  int GetNumSheets() const { return m_Sheets.GetSize(); }
  // The entry at nIndex, or null outside the list.
  CSupSheet* GetSheet(int nIndex) const;
  // The first entry whose name equals pwszName ignoring case (null counts as the
  // empty name); *pnIndex gets its index. Null, *pnIndex -1, when none.
  CSupSheet* FindSheet(const char16_t* pwszName, int* pnIndex) const;
  // Appends an entry named pwszName; *pnIndex gets its index. Throws CZelException
  // when memory is exhausted.
  CSupSheet* AddSheet(const char16_t* pwszName, int* pnIndex);
  // The sheet number that stored sheet index nIndex stands for: when this book is not
  // opened but has a data book, the number of the data book's sheet of the same name
  // (-1 when nIndex is outside the list, the entry has no name, or there is no such
  // sheet); in every other case nIndex unchanged.
  int CheckSheetIndex(int nIndex) const;

  // Names referred to.
  int GetNumExternNames() const { return m_ExternNames.GetSize(); }
  // The entry at nIndex, or null outside the list.
  CExternName* GetExternName(int nIndex) const;
  // The first entry named by the nLength units at pwszName, ignoring case; *pnIndex
  // gets its index. Null, *pnIndex -1, when none.
  CExternName* FindExternName(const char16_t* pwszName, int nLength, int* pnIndex) const;
  // Appends an entry; *pnIndex gets its index. Throws CZelException on exhaustion.
  CExternName* AddExternName(const char16_t* pwszName, int nLength, int* pnIndex);

  // ---- Stored titles ---------------------------------------------------------------
  // Encodes pwszTitle for storage, relative to pwszReferringPath (null or empty: no
  // referring path). Writes at most nSize units including the terminator into pOut
  // and returns the length; -1, with pOut empty when nSize > 0, when it does not fit.
  static int GetEncodedTitle(const char16_t* pwszTitle, char16_t* pOut, int nSize,
                             const char16_t* pwszReferringPath);
  // Decodes the nLength units at pEncoded, resolving a relative title against the
  // referring book's directory. Same output contract as GetEncodedTitle.
  static int GetDecodedTitle(char16_t* pOut, int nSize, const char16_t* pEncoded, int nLength,
                             const char16_t* pwszReferringPath);
  static std::u16string EncodeTitle(const char16_t* pwszTitle, const char16_t* pwszReferringPath);
  static std::u16string DecodeTitle(const char16_t* pEncoded, int nLength,
                                    const char16_t* pwszReferringPath);
  // Sets the title from its stored form.
  void SetEncodedTitle(const char16_t* pEncoded, int nLength, const char16_t* pwszReferringPath);

 private:
  std::u16string m_sTitle;
  CBookBase* m_pRefBook = nullptr;
  CBookBase* m_pDataBook = nullptr;
  CZelObArray m_Sheets;       // CSupSheet, owned
  CZelObArray m_ExternNames;  // CExternName, owned
  unsigned char m_bKind = kKindCreated;
  std::u16string m_sLongTitle;
};
