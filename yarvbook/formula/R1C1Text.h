// Reading cell and range references in R1C1 notation: "R1C1", "R[-1]C", "RC[2]",
// "R3" (a whole row), "C2" (a whole column), "R1C1:R2C2". Rows and columns are
// one-based in the text and zero-based in the results; a relative part is an offset
// from a base cell and wraps around the sheet (row 0 with offset -1 is row 65535).
// Readers take zero-terminated UTF-16 text, never read past its terminator, and on
// failure return 0 with the position untouched.
#pragma once

#include "base/Export.h"

class TCell;
class TRange;

// Which parts a corner carried.
constexpr int kR1C1HasRow = 1;
constexpr int kR1C1HasCol = 2;

// An optional "+" or "-" and at least one decimal digit whose value does not exceed
// nLimit. Sets *pValue (with its sign), advances *ppText; returns 1, or 0.
YARVBOOK_API int CvtR1C1Number(const char16_t** ppText, int nLimit, int* pValue);

// One part: cLetter ("R" or "C", either case in the text) followed by "[offset]"
// (relative: nBase + offset, wrapped modulo nSize), by a number 1..nSize (absolute:
// number - 1) or by neither (relative: nBase). *pbRelative tells which. Returns 0
// when the letter is missing, "[" lacks its "]" or a number is out of range.
YARVBOOK_API int CvtR1C1Part(const char16_t** ppText, char16_t cLetter, int nBase, int nSize,
                             int* pValue, bool* pbRelative);

// One corner: a row part, a column part, or both (not neither), not followed by a
// letter, digit, "_", "\\", "?" or "[". *pFlags gets kAbsCol and kAbsRow (A1Text.h) for
// absolute parts, *pParts kR1C1HasRow and kR1C1HasCol; a missing part is left at 0.
// Advances *ppText; returns 1, or 0.
YARVBOOK_API int CvtR1C1Corner(const char16_t** ppText, const TCell& base, int* pFlags, int* pParts,
                               int* pRow, int* pCol);

// A reference: a corner, optionally followed by ":", "." or ".." and a second corner.
// A range needs both parts in both corners; its rows and columns are put in order,
// each flag travelling with its coordinate, and *pIsRange is 1. When no second corner
// reads, *ppText stops behind the first corner. A single corner with only a row part
// is that whole row (columns 1 to 256), with only a column part that whole column
// (rows 1 to 65536), reported as a range whose added parts are absolute. Returns 0
// only when the first corner fails.
YARVBOOK_API int CvtRangeR1C1(const char16_t** ppText, const TCell& base, int* pIsRange,
                              int* pFlags1, int* pFlags2, TRange* pRange);
