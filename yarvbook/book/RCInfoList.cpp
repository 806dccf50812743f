#include "book/RCInfoList.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

CRCInfoItem::CRCInfoItem(int nFirst, int nLast, unsigned short wSize, bool bAuto)
    : m_nFirst(nFirst), m_nLast(nLast), m_wSize(wSize), m_cMarks(kDefSize) {
  SetAuto(bAuto);
}

void CRCInfoItem::SetLevel(int nLevel) {
  nLevel = std::clamp(nLevel, 0, kMaxLevel);
  m_cMarks = static_cast<unsigned char>((m_cMarks & ~kLevelMask) | nLevel);
}

bool CRCInfoItem::SetNeedsAutoSize(bool bOn) {
  if (GetAuto() || (IsDefSize() && bOn)) SetMark(m_cMarks2, kNeedsAutoSize, true);
  return GetAuto();
}

void CRCInfoItem::SetDefs(unsigned short wSize, bool bAuto) {
  m_wSize = wSize;
  m_wFormat = kDefaultFormat;
  m_wMergedCellIndex = kNoMergedCell;
  SetAuto(bAuto);
  SetDefSize(true);
  SetFiltered(false);
  m_cMarks2 = 0;
}

void CRCInfoItem::CopyFields(const CRCInfoItem& src) {
  m_wSize = src.m_wSize;
  m_wFormat = src.m_wFormat;
  m_wMergedCellIndex = src.m_wMergedCellIndex;
  m_cMarks = src.m_cMarks;
  m_cMarks2 = src.m_cMarks2;
}

bool CRCInfoItem::HasSameFields(const CRCInfoItem& other) const {
  return m_wSize == other.m_wSize && m_wFormat == other.m_wFormat &&
         m_wMergedCellIndex == other.m_wMergedCellIndex && m_cMarks == other.m_cMarks &&
         m_cMarks2 == other.m_cMarks2;
}

CRCInfoList::~CRCInfoList() { DeleteAll(); }

CRCInfoList& CRCInfoList::operator=(const CRCInfoList& src) {
  if (this == &src) return *this;
  DeleteAll();
  m_nLastIndex = src.m_nLastIndex;
  m_wDefSize = src.m_wDefSize;
  m_wHdrSize = src.m_wHdrSize;
  m_wThirdSize = src.m_wThirdSize;
  m_bDefSizeSet = src.m_bDefSizeSet;
  m_bHdrSizeSet = src.m_bHdrSizeSet;
  m_bDefAuto = src.m_bDefAuto;
  for (const CRCInfoItem* p = src.m_pFirst; p; p = p->m_pNext) {
    auto* pCopy = new CRCInfoItem(p->m_nFirst, p->m_nLast, 0, false);
    pCopy->CopyFields(*p);
    InsertAfter(m_pLast, pCopy);
  }
  m_pCur = m_pFirst;
  return *this;
}

void CRCInfoList::DeleteAll() {
  CRCInfoItem* p = m_pFirst;
  while (p) {
    CRCInfoItem* pNext = p->m_pNext;
    delete p;
    p = pNext;
  }
  m_pFirst = m_pLast = m_pCur = nullptr;
  m_nItems = 0;
}

void CRCInfoList::Clear() {
  DeleteAll();
  m_nLastIndex = -1;
}

void CRCInfoList::Init(int nLastIndex, unsigned short wDefSize, bool bDefAuto,
                       unsigned short wHdrSize, bool bSizesSet) {
  DeleteAll();
  m_nLastIndex = nLastIndex;
  m_wDefSize = wDefSize;
  m_bDefAuto = bDefAuto;
  m_wHdrSize = wHdrSize;
  m_bDefSizeSet = m_bHdrSizeSet = bSizesSet;
  if (nLastIndex < 0) return;
  InsertAfter(nullptr, new CRCInfoItem(0, nLastIndex, wDefSize, bDefAuto));
  m_pCur = m_pFirst;
}

void CRCInfoList::InitSizes(unsigned short wDefSize, unsigned short wHdrSize, bool bForce,
                            bool bApplyToItems) {
  if (bForce || !m_bDefSizeSet) {
    m_wDefSize = wDefSize;
    m_bDefSizeSet = true;
  }
  if (bForce || !m_bHdrSizeSet) {
    m_wHdrSize = wHdrSize;
    m_bHdrSizeSet = true;
  }
  if (!bApplyToItems) return;
  for (CRCInfoItem* p = m_pFirst; p; p = p->m_pNext) p->SetDefs(m_wDefSize, p->GetAuto());
  // Runs that differed only in fields SetDefs resets are equal now.
  for (CRCInfoItem* p = m_pFirst; p; p = p->m_pNext) p = JoinAround(p);
}

void CRCInfoList::InsertAfter(CRCInfoItem* pAfter, CRCInfoItem* pItem) {
  pItem->m_pPrev = pAfter;
  pItem->m_pNext = pAfter ? pAfter->m_pNext : m_pFirst;
  if (pItem->m_pNext)
    pItem->m_pNext->m_pPrev = pItem;
  else
    m_pLast = pItem;
  if (pAfter)
    pAfter->m_pNext = pItem;
  else
    m_pFirst = pItem;
  ++m_nItems;
}

void CRCInfoList::Unlink(CRCInfoItem* pItem) {
  if (pItem->m_pPrev)
    pItem->m_pPrev->m_pNext = pItem->m_pNext;
  else
    m_pFirst = pItem->m_pNext;
  if (pItem->m_pNext)
    pItem->m_pNext->m_pPrev = pItem->m_pPrev;
  else
    m_pLast = pItem->m_pPrev;
  if (m_pCur == pItem) m_pCur = pItem->m_pPrev ? pItem->m_pPrev : pItem->m_pNext;
  --m_nItems;
}

CRCInfoItem* CRCInfoList::GetInfo(int nIndex) const {
  if (nIndex < 0 || nIndex > m_nLastIndex || !m_pFirst) return nullptr;
  CRCInfoItem* p = m_pCur ? m_pCur : m_pFirst;
  while (p && nIndex > p->m_nLast) p = p->m_pNext;
  while (p && nIndex < p->m_nFirst) p = p->m_pPrev;
  if (p) m_pCur = p;
  return p;
}

CRCInfoItem* CRCInfoList::Start() const {
  m_pCur = m_pFirst;
  return m_pCur;
}

bool CRCInfoList::Next() const {
  if (!m_pCur || !m_pCur->m_pNext) return false;
  m_pCur = m_pCur->m_pNext;
  return true;
}

unsigned short CRCInfoList::GetSize(int nIndex) const {
  const CRCInfoItem* p = GetInfo(nIndex);
  return p ? p->GetSize() : 0;
}

bool CRCInfoList::GetAuto(int nIndex) const {
  const CRCInfoItem* p = GetInfo(nIndex);
  return p && p->GetAuto();
}

unsigned short CRCInfoList::GetMergedCellIndex(int nIndex) const {
  const CRCInfoItem* p = GetInfo(nIndex);
  return p ? p->GetMergedCellIndex() : CRCInfoItem::kNoMergedCell;
}

unsigned short CRCInfoList::GetFormat(int nIndex) const {
  const CRCInfoItem* p = GetInfo(nIndex);
  return p ? p->GetFormat() : CRCInfoItem::kDefaultFormat;
}

int CRCInfoList::GetLevel(int nIndex) const {
  const CRCInfoItem* p = GetInfo(nIndex);
  return p ? p->GetLevel() : 0;
}

bool CRCInfoList::IsFiltered(int nIndex) const {
  const CRCInfoItem* p = GetInfo(nIndex);
  return p && p->IsFiltered();
}

bool CRCInfoList::IsHidden(int nIndex) const {
  const CRCInfoItem* p = GetInfo(nIndex);
  return p && p->IsHidden();
}

bool CRCInfoList::IsVisible(int nIndex) const {
  const CRCInfoItem* p = GetInfo(nIndex);
  return p && p->IsVisible();
}

bool CRCInfoList::GetHidden(int nFirst, int nLast) const {
  if (!ClipSpan(nFirst, nLast)) return true;
  for (const CRCInfoItem* p = GetInfo(nFirst); p && p->m_nFirst <= nLast; p = p->m_pNext)
    if (p->IsVisible()) return false;
  return true;
}

bool CRCInfoList::HasHidden(int nFirst, int nLast) const {
  if (!ClipSpan(nFirst, nLast)) return false;
  for (const CRCInfoItem* p = GetInfo(nFirst); p && p->m_nFirst <= nLast; p = p->m_pNext)
    if (!p->IsVisible()) return true;
  return false;
}

unsigned short CRCInfoList::GetMostOftenSize() const {
  unsigned short wSize = m_wDefSize;
  for (const CRCInfoItem* p = m_pFirst; p; p = p->m_pNext)
    if (p->m_nLast - p->m_nFirst > 32767) wSize = p->GetSize();
  return wSize;
}

void CRCInfoList::ChangeDefSize(unsigned short wSize) {
  for (CRCInfoItem* p = m_pFirst; p; p = p->m_pNext) {
    if (p->IsDefSize() && p->GetSize() != wSize)
      p->SetDefSize(false);
    else if (!p->IsDefSize() && p->GetSize() == wSize)
      p->SetDefSize(true);
  }
  m_wDefSize = wSize;
  for (CRCInfoItem* p = m_pFirst; p; p = p->m_pNext) p = JoinAround(p);
}

bool CRCInfoList::ClipSpan(int& nFirst, int& nLast) const {
  if (nFirst > nLast) std::swap(nFirst, nLast);
  nFirst = std::max(nFirst, 0);
  nLast = std::min(nLast, m_nLastIndex);
  return m_pFirst && nFirst <= nLast;
}

CRCInfoItem* CRCInfoList::SplitAt(int nIndex) {
  CRCInfoItem* p = GetInfo(nIndex);
  if (!p || p->m_nFirst == nIndex) return p;
  auto* pTail = new CRCInfoItem(nIndex, p->m_nLast, 0, false);
  pTail->CopyFields(*p);
  p->m_nLast = nIndex - 1;
  InsertAfter(p, pTail);
  return pTail;
}

CRCInfoItem* CRCInfoList::JoinAround(CRCInfoItem* pItem) {
  while (pItem->m_pPrev && pItem->m_pPrev->HasSameFields(*pItem)) {
    CRCInfoItem* pPrev = pItem->m_pPrev;
    pPrev->m_nLast = pItem->m_nLast;
    Unlink(pItem);
    delete pItem;
    pItem = pPrev;
  }
  while (pItem->m_pNext && pItem->m_pNext->HasSameFields(*pItem)) {
    CRCInfoItem* pNext = pItem->m_pNext;
    pItem->m_nLast = pNext->m_nLast;
    Unlink(pNext);
    delete pNext;
  }
  m_pCur = pItem;
  return pItem;
}

template <class TFn>
void CRCInfoList::ModifySpan(int nFirst, int nLast, TFn fn) {
  if (!ClipSpan(nFirst, nLast)) return;
  CRCInfoItem* pStart = SplitAt(nFirst);
  if (nLast < m_nLastIndex) SplitAt(nLast + 1);
  for (CRCInfoItem* p = pStart; p && p->m_nFirst <= nLast; p = p->m_pNext) fn(*p);
  // Join from the run before the span to the run after it: every join point that the
  // change may have created lies in there.
  CRCInfoItem* p = pStart->m_pPrev ? pStart->m_pPrev : pStart;
  while (p && p->m_nFirst <= nLast + 1) {
    p = JoinAround(p);
    p = p->m_pNext;
  }
}

bool CRCInfoList::SetInfo(int nFirst, int nLast, const CRCInfoItem& model) {
  int nClipFirst = nFirst, nClipLast = nLast;
  if (!ClipSpan(nClipFirst, nClipLast)) return false;
  CRCInfoItem* pStart = SplitAt(nClipFirst);
  if (nClipLast < m_nLastIndex) SplitAt(nClipLast + 1);
  // The span becomes one run: drop the runs after the first one inside it.
  while (pStart->m_pNext && pStart->m_pNext->m_nFirst <= nClipLast) {
    CRCInfoItem* pNext = pStart->m_pNext;
    Unlink(pNext);
    delete pNext;
  }
  pStart->m_nLast = nClipLast;
  pStart->CopyFields(model);
  JoinAround(pStart);
  return true;
}

bool CRCInfoList::SetInfo(int nFirst, int nLast, unsigned short wSize, unsigned short wFormat,
                          unsigned short wMergedCellIndex, int nLevel, bool bHidden, bool bAuto) {
  CRCInfoItem model(0, 0, wSize, bAuto);
  model.SetDefSize(wSize == m_wDefSize);
  model.SetFormat(wFormat);
  model.SetMergedCellIndex(wMergedCellIndex);
  model.SetLevel(nLevel);
  model.SetHidden(bHidden);
  return SetInfo(nFirst, nLast, model);
}

void CRCInfoList::SetSize(int nFirst, int nLast, unsigned short wSize) {
  ModifySpan(nFirst, nLast, [wSize](CRCInfoItem& r) {
    r.SetSize(wSize);
    r.SetDefSize(false);
  });
}

void CRCInfoList::SetDefSize(int nFirst, int nLast) {
  const unsigned short wSize = m_wDefSize;
  ModifySpan(nFirst, nLast, [wSize](CRCInfoItem& r) {
    r.SetSize(wSize);
    r.SetDefSize(true);
    r.SetUserDefinedSize(false);
  });
}

void CRCInfoList::SetHidden(int nFirst, int nLast, bool bHidden) {
  ModifySpan(nFirst, nLast, [bHidden](CRCInfoItem& r) { r.SetHidden(bHidden); });
}

void CRCInfoList::SetFiltered(int nFirst, int nLast, bool bFiltered) {
  // A filtered-out index is hidden by the filter; clearing the filter shows it again.
  ModifySpan(nFirst, nLast, [bFiltered](CRCInfoItem& r) {
    if (r.IsFiltered() != bFiltered) r.SetHidden(bFiltered);
    r.SetFiltered(bFiltered);
  });
}

void CRCInfoList::SetUserDefinedSize(int nFirst, int nLast, bool bOn) {
  ModifySpan(nFirst, nLast, [bOn](CRCInfoItem& r) { r.SetUserDefinedSize(bOn); });
}

void CRCInfoList::SetFormat(int nFirst, int nLast, unsigned short wFormat) {
  ModifySpan(nFirst, nLast, [wFormat](CRCInfoItem& r) { r.SetFormat(wFormat); });
}

void CRCInfoList::SetMergedCellIndex(int nFirst, int nLast, unsigned short wIndex) {
  ModifySpan(nFirst, nLast, [wIndex](CRCInfoItem& r) { r.SetMergedCellIndex(wIndex); });
}

void CRCInfoList::SetNeedsAutoSize(int nFirst, int nLast, bool bOn) {
  ModifySpan(nFirst, nLast, [bOn](CRCInfoItem& r) { r.SetNeedsAutoSize(bOn); });
}

void CRCInfoList::IncLevelInfo(int nFirst, int nLast, int nDelta) {
  ModifySpan(nFirst, nLast, [nDelta](CRCInfoItem& r) { r.SetLevel(r.GetLevel() + nDelta); });
}

void CRCInfoList::ModifyOutlineLevel(int nFirst, int nLast, int nLevel) {
  ModifySpan(nFirst, nLast, [nLevel](CRCInfoItem& r) { r.SetLevel(nLevel); });
}

int CRCInfoList::FindParent(int nIndex) const {
  const CRCInfoItem* p = GetInfo(nIndex);
  if (!p || p->GetLevel() < 1) return -1;
  const int nLevel = p->GetLevel();
  // Every index of a run shares its level: whole runs are stepped over.
  for (p = p->m_pNext; p; p = p->m_pNext)
    if (p->GetLevel() < nLevel) return p->m_nFirst;
  return -1;
}

int CRCInfoList::FindFirstChild(int nIndex) const {
  const CRCInfoItem* p = GetInfo(nIndex);
  if (!p) return 0;
  const int nLevel = p->GetLevel();
  if (nIndex > p->m_nFirst) return nIndex;  // the index before has the same level
  for (p = p->m_pPrev; p; p = p->m_pPrev)
    if (p->GetLevel() <= nLevel) return p->m_nLast + 1;
  return 0;
}

bool CRCInfoList::IsExistChildren(int nIndex) const {
  return nIndex > 0 && GetLevel(nIndex - 1) > GetLevel(nIndex) && GetInfo(nIndex);
}

void CRCInfoList::DoCollaps(int nIndex, bool bCollapse) {
  if (!GetInfo(nIndex)) return;
  ModifySpan(nIndex, nIndex, [bCollapse](CRCInfoItem& r) { r.SetCollapsed(bCollapse); });
  if (!IsExistChildren(nIndex)) return;
  const int nFirstChild = FindFirstChild(nIndex);
  SetHidden(nFirstChild, nIndex - 1, bCollapse);
  if (bCollapse) return;
  // Nested summaries that stay collapsed keep their own children hidden. Each is
  // handled once, in index order; no walk recurses.
  for (int i = nFirstChild; i < nIndex; ++i) {
    const CRCInfoItem* p = GetInfo(i);
    if (p->IsCollapsed() && IsExistChildren(i)) SetHidden(FindFirstChild(i), i - 1, true);
  }
}

void CRCInfoList::DoCollapsLevel(int nLevel) {
  nLevel = std::clamp(nLevel, 0, CRCInfoItem::kMaxLevel);
  for (CRCInfoItem* p = m_pFirst; p; p = p->m_pNext) {
    if (p->GetLevel() > nLevel) {
      p->SetHidden(true);
      continue;
    }
    p->SetHidden(false);
    // A summary whose children (the index before, of a higher level) are now hidden.
    const bool bCollapsed =
        p->m_pPrev && p->m_pPrev->GetLevel() > nLevel && p->m_pPrev->GetLevel() > p->GetLevel();
    p->SetCollapsed(false);
    if (bCollapsed && p->m_nFirst < p->m_nLast) {
      // Only the first index of the run is the summary: split it off.
      CRCInfoItem* pRest = SplitAt(p->m_nFirst + 1);
      pRest->SetCollapsed(false);
    }
    p->SetCollapsed(bCollapsed);
  }
  for (CRCInfoItem* p = m_pFirst; p; p = p->m_pNext) p = JoinAround(p);
}

int CRCInfoList::GetCollapsLevel(int nIndex) const {
  if (!IsExistChildren(nIndex)) return 0;
  int nLowest = 0;
  for (const CRCInfoItem* p = GetInfo(FindFirstChild(nIndex)); p && p->m_nFirst < nIndex;
       p = p->m_pNext)
    if (p->IsHidden() && (nLowest == 0 || p->GetLevel() < nLowest)) nLowest = p->GetLevel();
  return nLowest;
}

void CRCInfoList::Move(int nTo, int nFrom, int nCount) {
  if (!m_pFirst || nCount <= 0 || nTo < 0 || nFrom < 0 || nTo == nFrom) return;
  nCount = std::min({nCount, m_nLastIndex - nTo + 1, m_nLastIndex - nFrom + 1});
  if (nCount <= 0) return;
  // Snapshot the source runs as (first, last, fields), relative to nFrom.
  struct TPiece {
    int nFirst, nLast;
    std::unique_ptr<CRCInfoItem> pFields;
  };
  std::vector<TPiece> pieces;
  const int nFromLast = nFrom + nCount - 1;
  for (const CRCInfoItem* p = GetInfo(nFrom); p && p->m_nFirst <= nFromLast; p = p->m_pNext) {
    auto pFields = std::make_unique<CRCInfoItem>(0, 0, 0, false);
    pFields->CopyFields(*p);
    pieces.push_back({std::max(p->m_nFirst, nFrom) - nFrom, std::min(p->m_nLast, nFromLast) - nFrom,
                      std::move(pFields)});
  }
  // Vacated and not overwritten: the part of the source outside the destination.
  CRCInfoItem fresh(0, 0, m_wDefSize, false);
  const int nToLast = nTo + nCount - 1;
  if (nFrom < nTo)
    SetInfo(nFrom, std::min(nFromLast, nTo - 1), fresh);
  else
    SetInfo(std::max(nFrom, nToLast + 1), nFromLast, fresh);
  for (const TPiece& piece : pieces) {
    SetInfo(nTo + piece.nFirst, nTo + piece.nLast, *piece.pFields);
  }
}

bool CRCInfoList::Verify() const {
  int nExpected = 0, nItems = 0;
  const CRCInfoItem* pPrev = nullptr;
  for (const CRCInfoItem* p = m_pFirst; p; p = p->m_pNext) {
    if (p->m_pPrev != pPrev || p->m_nFirst != nExpected || p->m_nLast < p->m_nFirst) return false;
    nExpected = p->m_nLast + 1;
    pPrev = p;
    ++nItems;
  }
  return pPrev == m_pLast && nItems == m_nItems &&
         (m_pFirst ? nExpected == m_nLastIndex + 1 : m_nLastIndex < 0);
}
