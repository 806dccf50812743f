// The engine's UTF-16 string library: allocation that treats the shared empty text
// specially, measuring, copying, searching, case and width folding, character
// classes, a small formatter and file-name helpers. Texts are zero-terminated
// char16_t arrays; lengths count 16-bit units. Case and classes come from the
// platform's text services, so they follow Unicode rather than ASCII only.
#pragma once

#include <cstdarg>

#include "base/Export.h"

// The shared empty text. Never written, never freed: every freeing function skips it,
// and a holder may point at it instead of allocating an empty string.
extern YARVBOOK_API char16_t g_wszEmpty[1];

// ---- Allocation -------------------------------------------------------------------
// Every new buffer holds length + 1 units with a zero at index length. The New/Renew/
// Delete family uses new[]/delete[], the Malloc/Realloc/Free family malloc/free:
// free a buffer with the function of its own family. All of them throw
// CZelException (memory) when memory is exhausted.

// A zero-filled buffer for nLength units.
YARVBOOK_API char16_t* StringNewW(int nLength);
// A buffer for nLength units holding the first nLength units of pwsz (fewer when pwsz
// ends sooner, the rest zero); all zero when pwsz is null.
YARVBOOK_API char16_t* StringNewW(const char16_t* pwsz, int nLength);
// A copy of pwsz (an empty buffer for null).
YARVBOOK_API char16_t* StringNewW(const char16_t* pwsz);
YARVBOOK_API char16_t* StringMallocW(const char16_t* pwsz);
// Replaces *ppwsz (freed unless null or g_wszEmpty) by StringNewW(nLength): the old
// contents are not kept.
YARVBOOK_API void StringRenewW(char16_t** ppwsz, int nLength);
// Replaces *ppwsz by a copy of pwsz; pwsz may point into *ppwsz.
YARVBOOK_API void StringRenewW(char16_t** ppwsz, const char16_t* pwsz);
YARVBOOK_API void StringReallocW(char16_t** ppwsz, const char16_t* pwsz);
// Free unless null or g_wszEmpty.
YARVBOOK_API void StringDeleteW(char16_t* pwsz);
YARVBOOK_API void StringFreeW(char16_t* pwsz);

// The same on byte strings.
YARVBOOK_API char* StringNew(int nLength);
YARVBOOK_API char* StringNew(const char* psz, int nLength);
YARVBOOK_API char* StringNew(const char* psz);
YARVBOOK_API char* StringMalloc(const char* psz);
YARVBOOK_API void StringRenew(char** ppsz, int nLength);
YARVBOOK_API void StringRenew(char** ppsz, const char* psz);
YARVBOOK_API void StringRealloc(char** ppsz, const char* psz);
YARVBOOK_API void StringDelete(char* psz);
YARVBOOK_API void StringFree(char* psz);

// ---- Measuring, copying, searching --------------------------------------------------
// Null counts as the empty text in strlenW and strsizeW.
YARVBOOK_API int strlenW(const char16_t* pwsz);
// Bytes of storage including the terminator.
YARVBOOK_API int strsizeW(const char16_t* pwsz);
// Return pDst.
YARVBOOK_API char16_t* strcpyW(char16_t* pDst, const char16_t* pSrc);
YARVBOOK_API char16_t* strcatW(char16_t* pDst, const char16_t* pSrc);
// Copies pSrc to pDst and returns the address of the terminator written, for chaining.
YARVBOOK_API char16_t* straddW(char16_t* pDst, const char16_t* pSrc);
// First / last occurrence of c, or null. c == 0 finds the terminator.
YARVBOOK_API const char16_t* strchrW(const char16_t* pwsz, char16_t c);
YARVBOOK_API const char16_t* strrchrW(const char16_t* pwsz, char16_t c);
inline char16_t* strchrW(char16_t* pwsz, char16_t c) {
  return const_cast<char16_t*>(strchrW(static_cast<const char16_t*>(pwsz), c));
}
inline char16_t* strrchrW(char16_t* pwsz, char16_t c) {
  return const_cast<char16_t*>(strrchrW(static_cast<const char16_t*>(pwsz), c));
}

// ---- Comparison -------------------------------------------------------------------
// All three compare unit by unit (not by collation) and return <0, 0 or >0; a text
// that is a prefix of the other is the smaller.
// By code unit.
YARVBOOK_API int strqcmpW(const char16_t* pA, const char16_t* pB);
// Ignoring case: both units upper-cased.
YARVBOOK_API int strcmpiW(const char16_t* pA, const char16_t* pB);
// Ignoring case and width: full-width forms count as their half-width ones.
YARVBOOK_API int strxicmpW(const char16_t* pA, const char16_t* pB);
// True when the nLen units at p equal the zero-terminated pwszWord ignoring case (as
// strcmpiW folds it).
YARVBOOK_API bool EqualsNoCaseW(const char16_t* p, int nLen, const char16_t* pwszWord);

// ---- Characters -------------------------------------------------------------------
// Character-class bits for isctypeW, numbered as the Win32 C1_ classes.
constexpr unsigned C1_UPPER = 0x0001;
constexpr unsigned C1_LOWER = 0x0002;
constexpr unsigned C1_DIGIT = 0x0004;
constexpr unsigned C1_SPACE = 0x0008;
constexpr unsigned C1_PUNCT = 0x0010;
constexpr unsigned C1_CNTRL = 0x0020;
constexpr unsigned C1_BLANK = 0x0040;
constexpr unsigned C1_XDIGIT = 0x0080;
constexpr unsigned C1_ALPHA = 0x0100;

YARVBOOK_API char16_t toupperW(char16_t c);
// True when c belongs to any of the classes in nMask.
YARVBOOK_API bool isctypeW(char16_t c, unsigned nMask);
// Width folding then case folding: the key the x-i comparisons use.
YARVBOOK_API char16_t FoldWidthCaseW(char16_t c);
// Copies pSrc to pDst with full-width forms replaced by their half-width ones, one
// unit for one; pDst may equal pSrc. Returns the length.
YARVBOOK_API int full2halfW(char16_t* pDst, const char16_t* pSrc);
// Splits pwsz into tokens separated by runs of units from pwszDelims, compared
// ignoring case. Call first with the text, then with null and the same context;
// writes terminators into the text. Returns the next token, or null at the end.
YARVBOOK_API char16_t* cistrtokW(char16_t* pwsz, const char16_t* pwszDelims, char16_t** ppContext);

// A small printf for UTF-16 buffers. Conversions: %d %i (int), %u %x %X (unsigned),
// %ld %lu %lld %llu (long, long long), %c (char16_t passed as int), %s (const
// char16_t*, null prints "(null)"), %hs (const char*, bytes taken as Latin-1), %f %e
// %g (double), %%. Flags "-" and "0", a width and a precision, either as digits or
// "*". Writes at most nBufChars units including the terminator and always terminates
// (for nBufChars > 0). Returns the length written, or -1 when the output was cut
// short or the format is malformed.
YARVBOOK_API int sprintfW(char16_t* pBuf, int nBufChars, const char16_t* pwszFormat, ...);
YARVBOOK_API int vsprintfW(char16_t* pBuf, int nBufChars, const char16_t* pwszFormat, va_list args);

// True when every unit of the first nLength units (-1: the whole text) is below 0x80.
YARVBOOK_API bool IsAsciiString(const char16_t* pwsz, int nLength = -1);

// Copies the extension of the file name in pwszPath (after the last "." of the last
// path component, "/" or "\" separating components) without the dot into pwszExt,
// cut to nExtMax - 1 units. Returns false, leaving pwszExt empty, when there is none.
YARVBOOK_API bool GetFileExt(const char16_t* pwszPath, char16_t* pwszExt, int nExtMax);
