// Multi-byte code pages: lead-byte tests and conversion to and from UTF-16 through ICU
// converters. The active code page follows the selected locale (1252 for en-US, 949
// for ko-KR, 932 for ja-JP, ...).
#pragma once

#include "base/Export.h"

constexpr unsigned CP_ACP = 0;  // the active code page
constexpr unsigned CP_UTF8 = 65001;

// Character-set numbers as font records store them.
constexpr unsigned ANSI_CHARSET = 0;
constexpr unsigned DEFAULT_CHARSET = 1;
constexpr unsigned SYMBOL_CHARSET = 2;
constexpr unsigned SHIFTJIS_CHARSET = 128;
constexpr unsigned HANGUL_CHARSET = 129;
constexpr unsigned GB2312_CHARSET = 134;
constexpr unsigned CHINESEBIG5_CHARSET = 136;
constexpr unsigned JOHAB_CHARSET = 130;
constexpr unsigned GREEK_CHARSET = 161;
constexpr unsigned TURKISH_CHARSET = 162;
constexpr unsigned VIETNAMESE_CHARSET = 163;
constexpr unsigned HEBREW_CHARSET = 177;
constexpr unsigned ARABIC_CHARSET = 178;
constexpr unsigned BALTIC_CHARSET = 186;
constexpr unsigned RUSSIAN_CHARSET = 204;
constexpr unsigned THAI_CHARSET = 222;
constexpr unsigned EASTEUROPE_CHARSET = 238;

YARVBOOK_API unsigned GetACP();
// True when c starts a two-byte character in the active code page (or in nCodePage).
YARVBOOK_API bool IsDBCSLeadByte(unsigned char c);
YARVBOOK_API bool IsDBCSLeadByteEx(unsigned nCodePage, unsigned char c);
// True when the active code page is a double-byte one (932, 936, 949, 950).
YARVBOOK_API bool IsDBCSCodePage(unsigned nCodePage = CP_ACP);

// Win32 semantics: nSrc -1 reads through the terminator and counts it; nDst 0 returns
// the size needed without writing. Returns the units written, 0 on failure (an
// unsupported code page or a too-small destination).
YARVBOOK_API int MultiByteToWideChar(unsigned nCodePage, const char* pSrc, int nSrc,
                                     char16_t* pDst, int nDst);
YARVBOOK_API int WideCharToMultiByte(unsigned nCodePage, const char16_t* pSrc, int nSrc,
                                     char* pDst, int nDst);

// The code page of a font's character set. DEFAULT_CHARSET, SYMBOL_CHARSET and
// unknown sets give CP_ACP, which the conversions read as the active code page.
YARVBOOK_API unsigned CharSetToCodePage(unsigned nCharSet);
// The character set of a code page (CP_ACP: of the active one); DEFAULT_CHARSET for
// code pages without one of their own, UTF-8 among them.
YARVBOOK_API unsigned CodePageToCharSet(unsigned nCodePage);
// True for the code pages the conversions accept: 874, 932, 936, 949, 950,
// 1250..1258 and CP_UTF8. CP_ACP itself is not a code page and gives false.
YARVBOOK_API bool IsCodePageSupported(unsigned nCodePage);
// How many code pages IsCodePageSupported accepts.
YARVBOOK_API int SupportedCodePageCount();
