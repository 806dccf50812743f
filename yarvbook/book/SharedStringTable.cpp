#include "book/SharedStringTable.h"

#include <cstring>
#include <new>

#include "base/WideString.h"
#include "base/ZelException.h"

namespace {

// Sits immediately in front of the text of every entry.
struct TEntryHead {
  int nLength;
  int nRefCount;
};

TEntryHead* HeadOf(const char16_t* pwszText) {
  return reinterpret_cast<TEntryHead*>(const_cast<char16_t*>(pwszText)) - 1;
}

int TextLength(const char16_t* pwszText) {
  int n = 0;
  while (pwszText[n] != 0) ++n;
  return n;
}

}  // namespace

CSharedStringTable& CSharedStringTable::GetGlobal() {
  static CSharedStringTable* s_pTable = new CSharedStringTable;
  return *s_pTable;
}

const char16_t* CSharedStringTable::AddString(const char16_t* pwszText, int nLen) {
  if (pwszText == nullptr) return g_wszEmpty;
  if (nLen < 0) nLen = TextLength(pwszText);
  if (nLen == 0) return g_wszEmpty;

  const std::u16string_view key(pwszText, static_cast<size_t>(nLen));
  auto it = m_Entries.find(key);
  if (it != m_Entries.end()) {
    ++HeadOf(it->data())->nRefCount;
    return it->data();
  }

  void* pBlock =
      ::operator new(sizeof(TEntryHead) + (static_cast<size_t>(nLen) + 1) * 2, std::nothrow);
  if (pBlock == nullptr) CZelException::ThrowMemory();
  auto* pHead = static_cast<TEntryHead*>(pBlock);
  pHead->nLength = nLen;
  pHead->nRefCount = 0;
  auto* pText = reinterpret_cast<char16_t*>(pHead + 1);
  std::memcpy(pText, pwszText, static_cast<size_t>(nLen) * 2);
  pText[nLen] = 0;
  try {
    m_Entries.emplace(pText, static_cast<size_t>(nLen));
  } catch (const std::bad_alloc&) {
    ::operator delete(pBlock);
    CZelException::ThrowMemory();
  }
  return pText;
}

void CSharedStringTable::IncRefSST(const char16_t* pwszText) {
  if (pwszText == nullptr || pwszText == g_wszEmpty) return;
  ++HeadOf(pwszText)->nRefCount;
}

void CSharedStringTable::DecRefSST(const char16_t* pwszText) {
  if (pwszText == nullptr || pwszText == g_wszEmpty) return;
  DeleteString(pwszText);
}

void CSharedStringTable::DeleteString(const char16_t* pwszEntry) {
  TEntryHead* pHead = HeadOf(pwszEntry);
  if (pHead->nRefCount >= 1) {
    --pHead->nRefCount;
    return;
  }
  m_Entries.erase(std::u16string_view(pwszEntry, static_cast<size_t>(pHead->nLength)));
  ::operator delete(pHead);
}

bool CSharedStringTable::IsSSTString(const char16_t* pwszText) const {
  if (pwszText == g_wszEmpty) return true;
  if (pwszText == nullptr) return false;
  auto it = m_Entries.find(std::u16string_view(pwszText));
  return it != m_Entries.end() && it->data() == pwszText;
}

int CSharedStringTable::GetRefCount(const char16_t* pwszText) const {
  if (!IsSSTString(pwszText) || pwszText == g_wszEmpty) return -1;
  return HeadOf(pwszText)->nRefCount;
}

int CSharedStringTable::MakeRTrimedLen(const char16_t* pwszText, int nLen) {
  if (nLen <= 0 || pwszText == nullptr) return nLen;
  while (nLen > 0 && pwszText[nLen - 1] <= 32) --nLen;
  return nLen;
}

void CSharedStringTable::RemoveAllSST() {
  for (const std::u16string_view& entry : m_Entries) ::operator delete(HeadOf(entry.data()));
  m_Entries.clear();
}
