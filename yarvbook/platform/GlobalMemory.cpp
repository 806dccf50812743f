// Each handle is a small header that owns a malloc'd payload. The handle never moves,
// so the payload may be reallocated under it while nobody holds it locked.
#include "platform/GlobalMemory.h"

#include <cstdlib>
#include <cstring>

struct TGlobalBlock {
  void* pData;  // owned; null for a block of size 0
  std::size_t nBytes;
  unsigned nLocks;
};

namespace {

PFNALLOCFAILURE g_pfnAllocFailure = nullptr;

bool IsFailureForced(std::size_t nBytes) {
  return g_pfnAllocFailure != nullptr && g_pfnAllocFailure(nBytes);
}

}  // namespace

HGLOBAL GlobalAlloc(unsigned nFlags, std::size_t nBytes) {
  if (IsFailureForced(nBytes)) return nullptr;
  auto* pBlock = static_cast<TGlobalBlock*>(std::malloc(sizeof(TGlobalBlock)));
  if (pBlock == nullptr) return nullptr;
  pBlock->pData = nullptr;
  pBlock->nBytes = nBytes;
  pBlock->nLocks = 0;
  if (nBytes != 0) {
    pBlock->pData = (nFlags & GMEM_ZEROINIT) != 0 ? std::calloc(1, nBytes) : std::malloc(nBytes);
    if (pBlock->pData == nullptr) {
      std::free(pBlock);
      return nullptr;
    }
  }
  return pBlock;
}

HGLOBAL GlobalReAlloc(HGLOBAL hMem, std::size_t nBytes, unsigned nFlags) {
  if (hMem == nullptr || hMem->nLocks != 0) return nullptr;
  if (IsFailureForced(nBytes)) return nullptr;
  if (nBytes == 0) {
    std::free(hMem->pData);
    hMem->pData = nullptr;
    hMem->nBytes = 0;
    return hMem;
  }
  void* pData = std::realloc(hMem->pData, nBytes);
  if (pData == nullptr) return nullptr;  // realloc left the old payload in place
  if ((nFlags & GMEM_ZEROINIT) != 0 && nBytes > hMem->nBytes)
    std::memset(static_cast<char*>(pData) + hMem->nBytes, 0, nBytes - hMem->nBytes);
  hMem->pData = pData;
  hMem->nBytes = nBytes;
  return hMem;
}

void* GlobalLock(HGLOBAL hMem) {
  if (hMem == nullptr) return nullptr;
  ++hMem->nLocks;
  return hMem->pData;
}

bool GlobalUnlock(HGLOBAL hMem) {
  if (hMem == nullptr || hMem->nLocks == 0) return false;
  return --hMem->nLocks != 0;
}

HGLOBAL GlobalFree(HGLOBAL hMem) {
  if (hMem == nullptr) return nullptr;
  std::free(hMem->pData);
  std::free(hMem);
  return nullptr;
}

std::size_t GlobalSize(HGLOBAL hMem) { return hMem == nullptr ? 0 : hMem->nBytes; }

void SetGlobalAllocFailureHook(PFNALLOCFAILURE pfnHook) { g_pfnAllocFailure = pfnHook; }
