// Case mapping, character classes and width folding for UTF-16 text, through ICU.
#pragma once

#include <cstdint>

#include "base/Export.h"

// LCMapStringW-style flags for MapString.
constexpr unsigned LCMAP_LOWERCASE = 0x00000100;
constexpr unsigned LCMAP_UPPERCASE = 0x00000200;
constexpr unsigned LCMAP_HIRAGANA = 0x00100000;
constexpr unsigned LCMAP_KATAKANA = 0x00200000;
constexpr unsigned LCMAP_HALFWIDTH = 0x00400000;
constexpr unsigned LCMAP_FULLWIDTH = 0x00800000;

// Simple (one unit to one unit) case mappings; units without a simple mapping stay.
YARVBOOK_API char16_t ToUpperChar(char16_t c);
YARVBOOK_API char16_t ToLowerChar(char16_t c);
YARVBOOK_API bool IsLetterChar(char16_t c);
YARVBOOK_API bool IsDigitChar(char16_t c);      // decimal digits of any script
YARVBOOK_API bool IsSpaceChar(char16_t c);
YARVBOOK_API bool IsUpperChar(char16_t c);
YARVBOOK_API bool IsLowerChar(char16_t c);
YARVBOOK_API bool IsPunctChar(char16_t c);
// Full-width forms (U+FF01..U+FF5E, U+3000, half/full katakana) to half-width; other units stay.
YARVBOOK_API char16_t FullToHalfWidthChar(char16_t c);
YARVBOOK_API char16_t HalfToFullWidthChar(char16_t c);

// LCMapStringW: maps nSrc units (-1: through the terminator) of pSrc into pDst.
// nDst 0 returns the size needed. Width mappings may change the length (a voiced
// katakana splits in two when narrowed). Returns the units written, 0 on failure.
YARVBOOK_API int MapString(unsigned nFlags, const char16_t* pSrc, int nSrc, char16_t* pDst,
                           int nDst);

// lstrcmpiW: case-insensitive comparison in the locale's collation; <0, 0, >0.
YARVBOOK_API int CompareStringNoCase(const char16_t* pA, const char16_t* pB);
// The same over counted texts.
YARVBOOK_API int CompareStringNoCase(const char16_t* pA, int nA, const char16_t* pB, int nB);
// A hash of the text as CompareStringNoCase sees it: texts it calls equal hash equal.
// Null hashes as the empty text.
YARVBOOK_API std::uint64_t HashStringNoCase(const char16_t* p);
