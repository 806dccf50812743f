#include "base/ZelObject.h"

#include <cassert>

constinit bool CZelObject::m_bInCopy = false;
constinit CSheetBase* CZelObject::m_pSrcSheet = nullptr;
constinit CSheetBase* CZelObject::m_pDstSheet = nullptr;
constinit CBookBase* CZelObject::m_pSrcBook = nullptr;
constinit CBookBase* CZelObject::m_pDstBook = nullptr;
// Outside a copy everything counts as "same book, same sheet".
constinit int CZelObject::m_bNoCopyBetweenBooks = 1;
constinit int CZelObject::m_bNoCopyBetweenSheets = 1;
constinit CZelObject* CZelObject::m_pCleanupObjects[kMaxCleanupObjects] = {};
constinit int CZelObject::m_nCleanupObjects = 0;

CZelObject::~CZelObject() = default;
void CZelObject::Clear() {}
CZelObject* CZelObject::Clone() const { return nullptr; }
void CZelObject::Copy(const CZelObject*) {}
int CZelObject::Compare(const CZelObject*) const { return 0; }
bool CZelObject::IsEmpty() const { return false; }
void CZelObject::Shrink() {}
void CZelObject::SetDefNewIndex() {}
bool CZelObject::IsDefNewIndex() const { return false; }
void CZelObject::SetUsedNewIndex() {}
bool CZelObject::IsUsedNewIndex() const { return false; }
void CZelObject::SetNewIndex(int) {}
int CZelObject::GetNewIndex() const { return 0; }

void CZelObject::PrepareForCopy(CSheetBase* pDstSheet, CSheetBase* pSrcSheet, CBookBase* pDstBook,
                                CBookBase* pSrcBook) {
  m_bInCopy = true;
  m_pDstSheet = pDstSheet;
  m_pSrcSheet = pSrcSheet;
  m_pDstBook = pDstBook;
  m_pSrcBook = pSrcBook;
  m_bNoCopyBetweenBooks = pSrcBook == pDstBook ? 1 : 0;
  m_bNoCopyBetweenSheets = pSrcSheet == pDstSheet ? 1 : 0;
}

void CZelObject::EndCopy() {
  m_pDstSheet = nullptr;
  m_pSrcSheet = nullptr;
  m_pDstBook = nullptr;
  m_pSrcBook = nullptr;
  m_bNoCopyBetweenBooks = 1;
  m_bNoCopyBetweenSheets = 1;
  m_bInCopy = false;
}

void CZelObject::IncNoCopyBetweenBooks() {
  ++m_bNoCopyBetweenBooks;
  ++m_bNoCopyBetweenSheets;
}

void CZelObject::DecNoCopyBetweenBooks() {
  --m_bNoCopyBetweenBooks;
  --m_bNoCopyBetweenSheets;
}

void CZelObject::BackupCopyInfo(TCopyInfo* pBackup) {
  *pBackup = {m_bInCopy,  m_pSrcSheet,           m_pDstSheet,           m_pSrcBook,
              m_pDstBook, m_bNoCopyBetweenBooks, m_bNoCopyBetweenSheets};
}

void CZelObject::RestoreCopyInfo(const TCopyInfo& backup) {
  m_bInCopy = backup.bInCopy;
  m_pSrcSheet = backup.pSrcSheet;
  m_pDstSheet = backup.pDstSheet;
  m_pSrcBook = backup.pSrcBook;
  m_pDstBook = backup.pDstBook;
  m_bNoCopyBetweenBooks = backup.nNoCopyBetweenBooks;
  m_bNoCopyBetweenSheets = backup.nNoCopyBetweenSheets;
}

void CZelObject::SaveCleanupObject(CZelObject* pObj) {
  assert(m_nCleanupObjects < kMaxCleanupObjects && "clean-up stack holds eight objects");
  m_pCleanupObjects[m_nCleanupObjects++] = pObj;
}

void CZelObject::PopCleanupObject() {
  assert(m_nCleanupObjects > 0 && "pop from an empty clean-up stack");
  m_pCleanupObjects[--m_nCleanupObjects] = nullptr;
}

void CZelObject::CleanupObjects() {
  while (m_nCleanupObjects > 0) {
    CZelObject* pObj = m_pCleanupObjects[--m_nCleanupObjects];
    m_pCleanupObjects[m_nCleanupObjects] = nullptr;
    delete pObj;
  }
}
