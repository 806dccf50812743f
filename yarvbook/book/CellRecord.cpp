#include "book/CellRecord.h"

#include <cstdint>
#include <cstdlib>
#include <new>

#include "base/ZelException.h"
#include "book/SharedStringTable.h"

#if defined(__SANITIZE_ADDRESS__)
#define YARVBOOK_CELL_POOL 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define YARVBOOK_CELL_POOL 0
#endif
#endif
#ifndef YARVBOOK_CELL_POOL
#define YARVBOOK_CELL_POOL 1
#endif

namespace {

// The cell pools: one for number, text and other constant cells (24 bytes), one for
// formula cells (CCell::kFormulaCellBytes). A block of malloc costs 16 bytes more than
// the cell; a pool costs nothing per cell and keeps the cells of a sheet close together.
// Slabs are aligned to their size, so a cell finds its slab by masking its address;
// each slab counts its live cells and goes back to the system when the count falls to
// zero (one empty slab is kept to absorb alternating allocation and release). Under
// AddressSanitizer cells use the heap directly so that use-after-free stays visible.
//
// Slab layout (kSlabBytes, aligned to kSlabBytes):
//   +--------------------+------------+------------+-----
//   | TSlab header       | block 1    | block 2    | ...
//   +--------------------+------------+------------+-----
constexpr std::size_t kCellBytes = sizeof(CCell);
static_assert(kCellBytes == 24,
              "a cell is 24 bytes: vtable pointer, payload, kind, flags, indexes");
static_assert(CCell::kFormulaCellBytes % alignof(CCell) == 0, "formula cell blocks stay aligned");
constexpr std::size_t kSlabBytes = 32768;

struct TFreeBlock {
  TFreeBlock* pNext;
};

struct TSlab {
  TSlab* pPrev;  // in the list of slabs that have room
  TSlab* pNext;
  TFreeBlock* pFree;  // released blocks of this slab
  int nLive;          // blocks handed out and not released
  int nBumped;        // blocks handed out from the untouched tail so far
};

template <std::size_t kBlockBytes>
struct TCellPool {
  static constexpr std::size_t kHeaderBlocks = (sizeof(TSlab) + kBlockBytes - 1) / kBlockBytes;
  static constexpr int kBlocksPerSlab = static_cast<int>(kSlabBytes / kBlockBytes - kHeaderBlocks);

  TSlab* pRoomy = nullptr;  // slabs with a free block
  TSlab* pSpare = nullptr;  // one empty slab kept back
  std::size_t nSlabs = 0;

  void Link(TSlab* pSlab) {
    pSlab->pPrev = nullptr;
    pSlab->pNext = pRoomy;
    if (pRoomy) pRoomy->pPrev = pSlab;
    pRoomy = pSlab;
  }
  void Unlink(TSlab* pSlab) {
    if (pSlab->pPrev)
      pSlab->pPrev->pNext = pSlab->pNext;
    else
      pRoomy = pSlab->pNext;
    if (pSlab->pNext) pSlab->pNext->pPrev = pSlab->pPrev;
  }

  void* Allocate() {
    if (!pRoomy) {
      TSlab* pSlab = pSpare;
      pSpare = nullptr;
      if (!pSlab) {
        pSlab = static_cast<TSlab*>(std::aligned_alloc(kSlabBytes, kSlabBytes));
        if (!pSlab) CZelException::ThrowMemory();
        ++nSlabs;
      }
      *pSlab = TSlab{nullptr, nullptr, nullptr, 0, 0};
      Link(pSlab);
    }
    TSlab* pSlab = pRoomy;
    void* p;
    if (pSlab->pFree) {
      p = pSlab->pFree;
      pSlab->pFree = pSlab->pFree->pNext;
    } else {
      p = reinterpret_cast<char*>(pSlab) + (kHeaderBlocks + pSlab->nBumped) * kBlockBytes;
      ++pSlab->nBumped;
    }
    if (++pSlab->nLive == kBlocksPerSlab) Unlink(pSlab);
    return p;
  }

  void Release(void* p) {
    auto* pSlab = reinterpret_cast<TSlab*>(reinterpret_cast<std::uintptr_t>(p) &
                                           ~static_cast<std::uintptr_t>(kSlabBytes - 1));
    if (pSlab->nLive-- == kBlocksPerSlab) Link(pSlab);
    auto* pBlock = static_cast<TFreeBlock*>(p);
    pBlock->pNext = pSlab->pFree;
    pSlab->pFree = pBlock;
    if (pSlab->nLive > 0) return;
    Unlink(pSlab);
    if (pSpare) {
      std::free(pSpare);
      --nSlabs;
    }
    pSpare = pSlab;
  }
};

constinit TCellPool<kCellBytes> g_CellPool;
constinit TCellPool<CCell::kFormulaCellBytes> g_FormulaCellPool;

}  // namespace

CCell::CCell(unsigned short wFormat) : m_wFormat(wFormat) {}

CCell::~CCell() { Reset(TValue::vtEmpty); }

void CCell::Reset(TValue::TValType vt) {
  if (m_vt == TValue::vtText) CSharedStringTable::GetGlobal().DecRefSST(m_u.pText);
  m_u = {};
  m_vt = vt;
}

CCell& CCell::operator=(const CCell& src) {
  if (this == &src) return *this;
  if (src.m_vt == TValue::vtText) CSharedStringTable::GetGlobal().IncRefSST(src.m_u.pText);
  Reset(TValue::vtEmpty);
  m_u = src.m_u;
  m_vt = src.m_vt;
  m_wMergedCellIndex = src.m_wMergedCellIndex;
  m_wFormat = src.m_wFormat;
  m_cFlags = src.m_cFlags;
  return *this;
}

CCell* CCell::Clone() const {
  auto* pCell = new CCell(m_wFormat);
  pCell->Copy(this);
  return pCell;
}

CCell* CCell::LocalClone() const {
  CCell* pCell = Clone();
  pCell->SetSCT(false);
  return pCell;
}

void CCell::Copy(const CZelObject* pSrc) { *this = *static_cast<const CCell*>(pSrc); }

int CCell::Compare(const CZelObject* pOther) const {
  const auto* pCell = static_cast<const CCell*>(pOther);
  if (m_wFormat != pCell->m_wFormat || m_wMergedCellIndex != pCell->m_wMergedCellIndex ||
      ((m_cFlags ^ pCell->m_cFlags) & ~flShared) != 0)
    return 1;
  return IsSameValue(*pCell) ? 0 : 1;
}

bool CCell::IsSameValue(const CCell& other) const {
  if (m_vt != other.m_vt) return false;
  switch (m_vt) {
    case TValue::vtReal:
      return m_u.r == other.m_u.r;
    case TValue::vtText:
      // The string table holds each text once: equal texts are the same entry.
      return m_u.pText == other.m_u.pText;
    case TValue::vtLogical:
    case TValue::vtError:
      return m_u.n == other.m_u.n;
    default:
      return true;
  }
}

int CCell::GetLogical() const {
  if (m_vt == TValue::vtLogical) return m_u.n;
  return m_vt == TValue::vtReal && m_u.r != 0 ? 1 : 0;
}

void CCell::GetValue(TValue& out) const {
  switch (m_vt) {
    case TValue::vtReal:
      out.SetValue(m_u.r);
      break;
    case TValue::vtText:
      out.SetValue(m_u.pText);
      break;
    case TValue::vtLogical:
      out.SetLogical(m_u.n);
      break;
    case TValue::vtError:
      out.SetError(static_cast<TValue::TError>(m_u.n));
      break;
    default:
      out.Clear();
  }
}

TValue CCell::GetValue() const {
  TValue value;
  GetValue(value);
  return value;
}

void CCell::SetValue(double r) {
  Reset(TValue::vtReal);
  m_u.r = r;
}

void CCell::SetValue(const char16_t* pwszText, int nLength) {
  // Add first: when it throws, the old value stays.
  const char16_t* pEntry =
      CSharedStringTable::GetGlobal().AddString(pwszText ? pwszText : u"", pwszText ? nLength : 0);
  Reset(TValue::vtText);
  m_u.pText = pEntry;
}

void CCell::SetValue(const TValue& value) {
  switch (value.GetValType()) {
    case TValue::vtEmpty:
      Clear();
      return;
    case TValue::vtReal: {
      double r;
      value.GetValue(r);
      SetValue(r);
      return;
    }
    case TValue::vtText:
      SetValue(value.TextPtr());
      return;
    case TValue::vtLogical:
      SetLogical(value.GetLogical());
      return;
    case TValue::vtError:
      SetError(value.GetError());
      return;
    case TValue::vtArray:
      if (value.Rows() > 0 && value.Cols() > 0) {
        SetValue(*value.GetArrayValue(0, 0));
        return;
      }
      [[fallthrough]];
    default:
      SetError(TValue::errValue);
  }
}

void CCell::SetLogical(int nLogical) {
  Reset(TValue::vtLogical);
  m_u.n = nLogical ? 1 : 0;
}

void CCell::SetError(TValue::TError eError) {
  Reset(TValue::vtError);
  m_u.n = eError;
}

void CCell::Clear() { Reset(TValue::vtEmpty); }

void CCell::CopyAndClearSource(TValue& src) {
  SetValue(src);
  src.Clear();
}

void* CCell::operator new(std::size_t nBytes) {
  if (YARVBOOK_CELL_POOL && nBytes == kCellBytes) return g_CellPool.Allocate();
  if (YARVBOOK_CELL_POOL && nBytes == kFormulaCellBytes) return g_FormulaCellPool.Allocate();
  void* p = std::malloc(nBytes);
  if (!p) CZelException::ThrowMemory();
  return p;
}

void CCell::operator delete(void* p, std::size_t nBytes) {
  if (!p) return;
  if (YARVBOOK_CELL_POOL && nBytes == kCellBytes) {
    g_CellPool.Release(p);
    return;
  }
  if (YARVBOOK_CELL_POOL && nBytes == kFormulaCellBytes) {
    g_FormulaCellPool.Release(p);
    return;
  }
  std::free(p);
}

std::size_t CCell::GetPoolBytes() {
  return (g_CellPool.nSlabs + g_FormulaCellPool.nSlabs) * kSlabBytes;
}
