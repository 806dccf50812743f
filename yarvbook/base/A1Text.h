// A1 text of rows, columns and addresses: "A".."IV" for columns 0..255, "1".."65536"
// for rows 0..65535, and parsers for "B7", "$B$7", "A1:C3" and "A1..C3". Parsers
// read zero-terminated UTF-16 text, never past its terminator; they return 0 and
// leave the position untouched on failure.
#pragma once

#include "base/Export.h"

class TCell;
class TRange;

// Absolute flags of a parsed address.
constexpr int kAbsCol = 1;  // "$" before the column letters
constexpr int kAbsRow = 2;  // "$" before the row digits

// Digits of (nRow & 0xFFFF) + 1, in a static buffer overwritten by the next call
// (not reentrant).
YARVBOOK_API const char16_t* FormatRowNr(int nRow);
// Letters of column nCol & 0xFF ("A".."IV"), in a second static buffer overwritten by
// the next call (not reentrant).
YARVBOOK_API const char16_t* FormatColNr(int nCol);

// One or two column letters, either case, at *ppText. Two letters must give at most
// column 256 ("IV") and may not be followed by a third. Sets *pCol and advances
// *ppText past the letters; returns 1, or 0 on failure.
YARVBOOK_API int CvtCNr(const char16_t** ppText, int* pCol);
// Decimal row digits at *ppText, 1 to 65536. Sets *pRow (zero-based) and advances
// *ppText; returns 1, or 0 on failure.
YARVBOOK_API int CvtRNr(const char16_t** ppText, int* pRow);
// An address "[$]col[$]row". *pFlags gets kAbsCol and kAbsRow for the "$" signs. The
// address may not run into a letter, digit, "_", "\" or "?". Advances *ppText;
// returns 1, or 0 on failure.
YARVBOOK_API int CvtRCNr(const char16_t** ppText, int* pFlags, int* pRow, int* pCol);
// A whole text that is exactly one address (with or without "$"). Returns 1 and sets
// *pCell, or 0.
YARVBOOK_API int CvtRCNr(const char16_t* pwszText, TCell* pCell);
// An address, optionally followed by ":", "." or ".." and a second address. With a
// second address the range is normalised, each "$" travelling with its row or
// column, and *pIsRange is 1. When no second address parses, *ppText stops at the
// separator and the result is the single cell (*pIsRange 0, *pFlags2 = *pFlags1).
// Returns 0 only when the first address fails.
YARVBOOK_API int CvtRange(const char16_t** ppText, int* pIsRange, int* pFlags1, int* pFlags2,
                          TRange* pRange);
