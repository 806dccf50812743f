// CExternTables: a book's supporting-book table and extern-sheet table. The book owns
// one and forwards its MakeSupBook, GetSupBook, MakeExternSheet, FindExternSheet and
// GetExternSheet to it. Indexes are 0-based and stay valid until an entry is removed
// (compaction renumbers them).
#pragma once

#include "base/Export.h"
#include "base/ZelObArray.h"

class CBookBase;
class CExternSheet;
class CSupBook;

class YARVBOOK_API CExternTables {
 public:
  CExternTables() = default;
  CExternTables(const CExternTables&) = delete;
  CExternTables& operator=(const CExternTables&) = delete;

  // Frees both tables.
  void Clear();

  int GetNumSupBooks() const { return m_SupBooks.GetSize(); }
  // The entry at nIndex, or null outside the table.
  CSupBook* GetSupBook(int nIndex) const;
  // The index of the entry that is the same book as supBook (CSupBook::Compare), or -1.
  int FindSupBook(const CSupBook& supBook) const;
  // The index of the entry for the book titled pwszTitle (or, with pRefBook, that
  // open book) with kind bits bKind, added when there is none. Throws CZelException
  // when memory is exhausted.
  int MakeSupBook(const char16_t* pwszTitle, CBookBase* pRefBook, unsigned char bKind = 0);
  // The index of the book's own entry (kind "self"), added when there is none.
  int MakeSelfSupBook();

  int GetNumExternSheets() const { return m_ExternSheets.GetSize(); }
  // The entry at nIndex, or null outside the table.
  CExternSheet* GetExternSheet(int nIndex) const;
  // The index of the entry for (nSupBook, nFirstSheet, nLastSheet), or -1.
  int FindExternSheet(int nSupBook, int nFirstSheet, int nLastSheet) const;
  // The same, added when there is none. Throws CZelException when memory is exhausted.
  int MakeExternSheet(int nSupBook, int nFirstSheet, int nLastSheet);

 private:
  CZelObArray m_SupBooks;      // CSupBook, owned
  CZelObArray m_ExternSheets;  // CExternSheet, owned
};
