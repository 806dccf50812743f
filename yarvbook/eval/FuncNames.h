// Name matching shared by the built-in and the external function registries.
// Private to eval/.
#pragma once

// Parse types 1 and 2 work with English names, every other with local names.
inline bool IsEnglishParseType(int nParseType) { return nParseType == 1 || nParseType == 2; }

// Characters that continue a function name: letters, digits, "_" and ".".
bool IsFuncNameChar(char16_t c);

// The length of pwszName when the upper-cased input begins with it, else -1. Stops at
// the input's terminator, never reading past it. pwszName is upper case.
int MatchFuncNamePrefix(const char16_t* pwszText, const char16_t* pwszName);

// True when the upper-cased nLength units at pwszText are exactly pwszName.
bool EqualsFuncName(const char16_t* pwszText, int nLength, const char16_t* pwszName);

// The position of "(" when it follows pwsz after optional white space, else null.
const char16_t* FindCallParen(const char16_t* pwsz);
