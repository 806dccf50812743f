#include "extern/ExternTables.h"

#include <memory>

#include "extern/ExternSheet.h"
#include "extern/SupBook.h"

void CExternTables::Clear() {
  m_SupBooks.Clear();
  m_ExternSheets.Clear();
}

CSupBook* CExternTables::GetSupBook(int nIndex) const {
  return m_SupBooks.IsValidIndex(nIndex) ? static_cast<CSupBook*>(m_SupBooks.GetAt(nIndex))
                                         : nullptr;
}

int CExternTables::FindSupBook(const CSupBook& supBook) const {
  for (int i = 0; i < m_SupBooks.GetSize(); ++i) {
    if (m_SupBooks.GetAt(i)->Compare(&supBook) == 0) return i;
  }
  return -1;
}

int CExternTables::MakeSupBook(const char16_t* pwszTitle, CBookBase* pRefBook,
                               unsigned char bKind) {
  auto pSupBook = std::make_unique<CSupBook>(pwszTitle, bKind);
  pSupBook->SetRefBook(pRefBook);
  const int nFound = FindSupBook(*pSupBook);
  if (nFound >= 0) return nFound;
  const int nIndex = m_SupBooks.Add(pSupBook.get());
  pSupBook.release();
  return nIndex;
}

int CExternTables::MakeSelfSupBook() { return MakeSupBook(nullptr, nullptr, CSupBook::kKindSelf); }

CExternSheet* CExternTables::GetExternSheet(int nIndex) const {
  return m_ExternSheets.IsValidIndex(nIndex)
             ? static_cast<CExternSheet*>(m_ExternSheets.GetAt(nIndex))
             : nullptr;
}

int CExternTables::FindExternSheet(int nSupBook, int nFirstSheet, int nLastSheet) const {
  const CExternSheet wanted(nSupBook, nFirstSheet, nLastSheet);
  for (int i = 0; i < m_ExternSheets.GetSize(); ++i) {
    if (m_ExternSheets.GetAt(i)->Compare(&wanted) == 0) return i;
  }
  return -1;
}

int CExternTables::MakeExternSheet(int nSupBook, int nFirstSheet, int nLastSheet) {
  const int nFound = FindExternSheet(nSupBook, nFirstSheet, nLastSheet);
  if (nFound >= 0) return nFound;
  auto pSheet = std::make_unique<CExternSheet>(nSupBook, nFirstSheet, nLastSheet);
  const int nIndex = m_ExternSheets.Add(pSheet.get());
  pSheet.release();
  return nIndex;
}
