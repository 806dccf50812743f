// The host's string resources: localized function names, operator texts, format
// vocabulary, month and AM/PM names, localized built-in formats. The library carries
// an English table; a host replaces or extends it with its own.
#pragma once

#include "base/Export.h"

struct TResourceEntry {
  unsigned nId;
  const char16_t* pwszText;
};

// The text for nId, or null when neither the host's table nor the English one has it.
// The pointer stays valid until SetResourceTable is called again.
YARVBOOK_API const char16_t* LoadResourceString(unsigned nId);

// LoadStringW: copies at most nMax - 1 units and a terminator; returns the units
// copied, 0 when there is no such text.
YARVBOOK_API int LoadStringW(unsigned nId, char16_t* pBuf, int nMax);

// Installs the host's table (copied), looked up before the English table. Null or
// nCount 0 removes it. Bumps GetResourceGeneration().
YARVBOOK_API void SetResourceTable(const TResourceEntry* pEntries, int nCount);
YARVBOOK_API unsigned GetResourceGeneration();
