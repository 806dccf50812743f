// Wildcard matching for lookups, criteria and text search. "*" matches any run of
// characters, "?" exactly one. Two dialects:
//  - StrMatch (MATCH and the lookups): no escape character, case-insensitive.
//  - the Cmp*Wildcard and StrStr*Wildcard families (criteria, SEARCH): "~" makes the
//    next pattern character literal ("~*", "~?", "~~"), and a "~" that ends the
//    pattern ends it as if it were not there. The plain forms compare exactly, the i
//    forms ignore case, the x forms fold full-width forms to half-width ones, the xi
//    forms do both (the key of strxicmpW).
// Only ASCII "*", "?" and "~" are special; their full-width forms are ordinary
// characters (which the x forms then compare with the ASCII ones).
// All run in time proportional to pattern length times text length, without recursion.
#pragma once

#include "base/Export.h"

// True when pattern matches the whole of text, ignoring case. A "*" that ends the
// pattern matches the rest at once; any other "*" tries the rest of the pattern at
// each later position that still has a text character, so "a**" does not match "a"
// while "a*" does. "?" never matches the end of the text.
YARVBOOK_API bool StrMatch(const char16_t* pwszPattern, const char16_t* pwszText);

// 0 when pwszPattern matches the whole of pwszText; with bSearch set the match may
// start at any position of the text (a mismatch restarts one character later). On a
// mismatch the pattern character and the text character where matching finally
// stopped are compared (folded, the end counting as 0): 1 when the pattern's is the
// smaller, -1 otherwise. Without wildcards this orders like a plain comparison of
// text against pattern.
YARVBOOK_API int CmpWildcard(const char16_t* pwszText, const char16_t* pwszPattern,
                             int bSearch = 0);
YARVBOOK_API int CmpiWildcard(const char16_t* pwszText, const char16_t* pwszPattern,
                              int bSearch = 0);
YARVBOOK_API int CmpxWildcard(const char16_t* pwszText, const char16_t* pwszPattern,
                              int bSearch = 0);
YARVBOOK_API int CmpxiWildcard(const char16_t* pwszText, const char16_t* pwszPattern,
                               int bSearch = 0);

// The leftmost position of pwszText where pwszPattern matches a run of the text, or
// null. *pnLength (when given) receives the length of the shortest such run; a "*"
// ending the pattern takes the rest of the text. An empty pattern matches at the start.
YARVBOOK_API const char16_t* StrStrWildcard(const char16_t* pwszText, const char16_t* pwszPattern,
                                            int* pnLength = nullptr);
YARVBOOK_API const char16_t* StrStriWildcard(const char16_t* pwszText, const char16_t* pwszPattern,
                                             int* pnLength = nullptr);
YARVBOOK_API const char16_t* StrStrxWildcard(const char16_t* pwszText, const char16_t* pwszPattern,
                                             int* pnLength = nullptr);
YARVBOOK_API const char16_t* StrStrxiWildcard(const char16_t* pwszText, const char16_t* pwszPattern,
                                              int* pnLength = nullptr);
// StrStrxiWildcard from character nStart on, by index: the index of the match, or -1
// when there is none or nStart lies outside the text (0 <= nStart < length; an empty
// text has no valid start).
YARVBOOK_API int StrStrxiWildcardC(const char16_t* pwszText, const char16_t* pwszPattern,
                                   int nStart, int* pnLength = nullptr);
