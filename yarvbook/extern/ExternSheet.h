// CExternSheet: an entry of a book's extern-sheet table, the target of the index that
// 3-D references and tNameX tokens carry: a supporting book and a first and last
// sheet of it. A name of a book is reached through an entry whose two sheets are
// kSheetForNames.
#pragma once

#include "base/Export.h"
#include "base/ZelIndexObject.h"

class YARVBOOK_API CExternSheet : public CZelIndexObject {
 public:
  // Both sheet numbers of an entry that reaches a book's names.
  static constexpr int kSheetForNames = 0xFFFE;

  CExternSheet() = default;
  CExternSheet(int nSupBook, int nFirstSheet, int nLastSheet)
      : m_nSupBook(nSupBook), m_nFirstSheet(nFirstSheet), m_nLastSheet(nLastSheet) {}

  CZelObject* Clone() const override;
  void Copy(const CZelObject* pSrc) override;
  // 0 when all three indexes are equal; otherwise ordered by them in turn.
  int Compare(const CZelObject* pOther) const override;

  int GetSupBook() const { return m_nSupBook; }
  int GetFirstSheet() const { return m_nFirstSheet; }
  int GetLastSheet() const { return m_nLastSheet; }
  void Set(int nSupBook, int nFirstSheet, int nLastSheet) {
    m_nSupBook = nSupBook;
    m_nFirstSheet = nFirstSheet;
    m_nLastSheet = nLastSheet;
  }
  bool IsForNames() const { return m_nFirstSheet == kSheetForNames; }

 private:
  int m_nSupBook = 0;
  int m_nFirstSheet = 0;
  int m_nLastSheet = 0;
};
