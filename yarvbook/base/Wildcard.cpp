#include "base/Wildcard.h"

#include "base/WideString.h"
#include "platform/TextServices.h"

namespace {

enum class EFold { kExact, kCase, kWidth, kWidthCase };

char16_t Fold(char16_t c, EFold nFold) {
  switch (nFold) {
    case EFold::kExact:
      return c;
    case EFold::kCase:
      return toupperW(c);
    case EFold::kWidth:
      return c < 0x80 ? c : FullToHalfWidthChar(c);
    case EFold::kWidthCase:
      return FoldWidthCaseW(c);
  }
  return c;
}

// One element of an escaping pattern.
struct TToken {
  enum EKind { kEnd, kStar, kAny, kLiteral } nKind;
  char16_t c;             // the literal, for kLiteral
  const char16_t* pNext;  // the pattern after the element
};

TToken ReadToken(const char16_t* p) {
  switch (*p) {
    case 0:
      return {TToken::kEnd, 0, p};
    case u'*':
      return {TToken::kStar, 0, p + 1};
    case u'?':
      return {TToken::kAny, 0, p + 1};
    case u'~':
      if (p[1] == 0) return {TToken::kEnd, 0, p};  // a final "~" ends the pattern
      return {TToken::kLiteral, p[1], p + 2};
    default:
      return {TToken::kLiteral, *p, p + 1};
  }
}

// The pattern after a run of stars starting at p.
const char16_t* SkipStars(const char16_t* p) {
  TToken tok = ReadToken(p);
  while (tok.nKind == TToken::kStar) {
    p = tok.pNext;
    tok = ReadToken(p);
  }
  return p;
}

// Why backtracking to the last star is enough, here and below: the last star was
// reached at the earliest text position any attempt can reach it, and from there it
// may still take every later position; if none of them works, retrying an earlier
// star only reaches the last one later still.

// Whole-text matching of an escaping pattern.
int CompareCore(const char16_t* pText, const char16_t* pPattern, bool bSearch, EFold nFold) {
  if (!pText) pText = g_wszEmpty;
  if (!pPattern) pPattern = g_wszEmpty;
  const char16_t* p = pPattern;
  const char16_t* t = pText;
  // Search mode behaves as a star before the pattern.
  const char16_t* pStarPattern = bSearch ? pPattern : nullptr;
  const char16_t* pStarText = pText;
  for (;;) {
    const TToken tok = ReadToken(p);
    if (tok.nKind == TToken::kStar) {
      p = SkipStars(p);
      if (ReadToken(p).nKind == TToken::kEnd) return 0;  // a trailing star takes the rest
      pStarPattern = p;
      pStarText = t;
      continue;
    }
    char16_t cPattern;
    char16_t cText;
    if (tok.nKind == TToken::kEnd) {
      if (*t == 0) return 0;
      cPattern = 0;
      cText = Fold(*t, nFold);
    } else if (*t == 0) {
      // The text ran out inside a run without stars: a restart would have less text.
      // The pattern character is not 0, so it is the larger.
      return -1;
    } else if (tok.nKind == TToken::kAny) {
      p = tok.pNext;
      ++t;
      continue;
    } else {
      cPattern = Fold(tok.c, nFold);
      cText = Fold(*t, nFold);
      if (cPattern == cText) {
        p = tok.pNext;
        ++t;
        continue;
      }
    }
    if (pStarPattern && *pStarText != 0) {
      p = pStarPattern;
      t = ++pStarText;
      continue;
    }
    return cPattern < cText ? 1 : -1;
  }
}

// Leftmost, then shortest, run of the text that the pattern matches.
const char16_t* FindCore(const char16_t* pText, const char16_t* pPattern, EFold nFold,
                         int* pnLength) {
  if (!pText) pText = g_wszEmpty;
  if (!pPattern) pPattern = g_wszEmpty;
  const char16_t* p = pPattern;
  const char16_t* t = pText;
  const char16_t* pStarPattern = pPattern;  // the implicit star before the pattern
  const char16_t* pStarText = pText;
  const char16_t* pStart = pText;
  bool bInFirstRun = true;  // the start moves with the implicit star only
  for (;;) {
    const TToken tok = ReadToken(p);
    if (tok.nKind == TToken::kStar) {
      p = SkipStars(p);
      bInFirstRun = false;
      if (ReadToken(p).nKind == TToken::kEnd) {
        while (*t) ++t;  // a trailing star takes the rest
        break;
      }
      pStarPattern = p;
      pStarText = t;
      continue;
    }
    if (tok.nKind == TToken::kEnd) break;
    if (*t == 0) return nullptr;
    if (tok.nKind == TToken::kAny || Fold(tok.c, nFold) == Fold(*t, nFold)) {
      p = tok.pNext;
      ++t;
      continue;
    }
    if (*pStarText == 0) return nullptr;
    p = pStarPattern;
    t = ++pStarText;
    if (bInFirstRun) pStart = pStarText;
  }
  if (pnLength) *pnLength = static_cast<int>(t - pStart);
  return pStart;
}

}  // namespace

bool StrMatch(const char16_t* pwszPattern, const char16_t* pwszText) {
  const char16_t* p = pwszPattern ? pwszPattern : g_wszEmpty;
  const char16_t* t = pwszText ? pwszText : g_wszEmpty;
  const char16_t* pStarPattern = nullptr;
  const char16_t* pStarText = nullptr;
  for (;;) {
    if (*p == u'*') {
      if (p[1] == 0) return true;  // the last pattern character: the rest matches
      // The rest is tried only at positions that still hold a text character.
      if (*t == 0) return false;
      pStarPattern = ++p;
      pStarText = t;
      continue;
    }
    if (*p == 0) {
      if (*t == 0) return true;
    } else if (*t == 0) {
      return false;
    } else if (*p == u'?' || toupperW(*p) == toupperW(*t)) {
      ++p;
      ++t;
      continue;
    }
    if (!pStarPattern || pStarText[1] == 0) return false;
    p = pStarPattern;
    t = ++pStarText;
  }
}

int CmpWildcard(const char16_t* pwszText, const char16_t* pwszPattern, int bSearch) {
  return CompareCore(pwszText, pwszPattern, bSearch != 0, EFold::kExact);
}
int CmpiWildcard(const char16_t* pwszText, const char16_t* pwszPattern, int bSearch) {
  return CompareCore(pwszText, pwszPattern, bSearch != 0, EFold::kCase);
}
int CmpxWildcard(const char16_t* pwszText, const char16_t* pwszPattern, int bSearch) {
  return CompareCore(pwszText, pwszPattern, bSearch != 0, EFold::kWidth);
}
int CmpxiWildcard(const char16_t* pwszText, const char16_t* pwszPattern, int bSearch) {
  return CompareCore(pwszText, pwszPattern, bSearch != 0, EFold::kWidthCase);
}

const char16_t* StrStrWildcard(const char16_t* pwszText, const char16_t* pwszPattern,
                               int* pnLength) {
  return FindCore(pwszText, pwszPattern, EFold::kExact, pnLength);
}
const char16_t* StrStriWildcard(const char16_t* pwszText, const char16_t* pwszPattern,
                                int* pnLength) {
  return FindCore(pwszText, pwszPattern, EFold::kCase, pnLength);
}
const char16_t* StrStrxWildcard(const char16_t* pwszText, const char16_t* pwszPattern,
                                int* pnLength) {
  return FindCore(pwszText, pwszPattern, EFold::kWidth, pnLength);
}
const char16_t* StrStrxiWildcard(const char16_t* pwszText, const char16_t* pwszPattern,
                                 int* pnLength) {
  return FindCore(pwszText, pwszPattern, EFold::kWidthCase, pnLength);
}

int StrStrxiWildcardC(const char16_t* pwszText, const char16_t* pwszPattern, int nStart,
                      int* pnLength) {
  if (!pwszText || nStart < 0 || nStart >= strlenW(pwszText)) return -1;
  const char16_t* pFound = FindCore(pwszText + nStart, pwszPattern, EFold::kWidthCase, pnLength);
  return pFound ? static_cast<int>(pFound - pwszText) : -1;
}
