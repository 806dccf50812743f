// Movable memory blocks with a transferable handle, in the shape of the Win32 global
// memory calls. The memory file builds its output in one and hands the handle over.
#pragma once

#include <cstddef>

#include "base/Export.h"

struct TGlobalBlock;
using HGLOBAL = TGlobalBlock*;

constexpr unsigned GMEM_FIXED = 0x0000;
constexpr unsigned GMEM_MOVEABLE = 0x0002;
constexpr unsigned GMEM_ZEROINIT = 0x0040;

// Allocates a block of nBytes (zero-filled with GMEM_ZEROINIT). Null on failure.
YARVBOOK_API HGLOBAL GlobalAlloc(unsigned nFlags, std::size_t nBytes);
// Resizes an unlocked block, keeping its contents (bytes added are zeroed with
// GMEM_ZEROINIT). Returns the handle, or null on failure, the old block then intact.
YARVBOOK_API HGLOBAL GlobalReAlloc(HGLOBAL hMem, std::size_t nBytes, unsigned nFlags);
// The block's address, valid until the matching GlobalUnlock; null for a null handle.
YARVBOOK_API void* GlobalLock(HGLOBAL hMem);
// Returns true while the block is still locked by another GlobalLock.
YARVBOOK_API bool GlobalUnlock(HGLOBAL hMem);
// Frees the block; returns null on success (as the Win32 call does).
YARVBOOK_API HGLOBAL GlobalFree(HGLOBAL hMem);
YARVBOOK_API std::size_t GlobalSize(HGLOBAL hMem);

// Test hook: while set, GlobalAlloc and GlobalReAlloc ask it first and fail when it
// returns true. Pass null to remove it.
using PFNALLOCFAILURE = bool (*)(std::size_t nBytes);
YARVBOOK_API void SetGlobalAllocFailureHook(PFNALLOCFAILURE pfnHook);
