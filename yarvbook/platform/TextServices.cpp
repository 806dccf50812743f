// Case and character classes come from ICU's character properties. Width folding is
// table-driven: the full-width ASCII block is an offset, the half-width katakana a
// table, and voiced katakana split into base plus sound mark when narrowed.
#include "platform/TextServices.h"

#include <unicode/coll.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>

#include <iterator>
#include <memory>
#include <string>

#include "platform/Locale.h"

namespace {

constexpr char16_t kVoicedMark = 0xFF9E;      // half-width dakuten
constexpr char16_t kSemiVoicedMark = 0xFF9F;  // half-width handakuten

// The full-width counterpart of each half-width katakana U+FF61..U+FF9F.
constexpr char16_t kHalfKatakanaToFull[] = {
    0x3002, 0x300C, 0x300D, 0x3001, 0x30FB, 0x30F2, 0x30A1, 0x30A3, 0x30A5, 0x30A7, 0x30A9,
    0x30E3, 0x30E5, 0x30E7, 0x30C3, 0x30FC, 0x30A2, 0x30A4, 0x30A6, 0x30A8, 0x30AA, 0x30AB,
    0x30AD, 0x30AF, 0x30B1, 0x30B3, 0x30B5, 0x30B7, 0x30B9, 0x30BB, 0x30BD, 0x30BF, 0x30C1,
    0x30C4, 0x30C6, 0x30C8, 0x30CA, 0x30CB, 0x30CC, 0x30CD, 0x30CE, 0x30CF, 0x30D2, 0x30D5,
    0x30D8, 0x30DB, 0x30DE, 0x30DF, 0x30E0, 0x30E1, 0x30E2, 0x30E4, 0x30E6, 0x30E8, 0x30E9,
    0x30EA, 0x30EB, 0x30EC, 0x30ED, 0x30EF, 0x30F3, 0x309B, 0x309C};
static_assert(std::size(kHalfKatakanaToFull) == 0xFF9F - 0xFF61 + 1, "one entry per unit");

// Full-width signs U+FFE0..U+FFE6 and their narrow forms.
constexpr char16_t kFullSignToHalf[] = {0x00A2, 0x00A3, 0x00AC, 0x00AF, 0x00A6, 0x00A5, 0x20A9};

char16_t FullKatakanaToHalf(char16_t c) {
  for (std::size_t i = 0; i < std::size(kHalfKatakanaToFull); ++i)
    if (kHalfKatakanaToFull[i] == c) return static_cast<char16_t>(0xFF61 + i);
  return 0;
}

// The voiced (dakuten) form of a full-width katakana, or 0.
char16_t VoicedKatakana(char16_t c) {
  if ((c >= 0x30AB && c <= 0x30C2 && (c - 0x30AB) % 2 == 0) ||  // ka..chi
      c == 0x30C4 || c == 0x30C6 || c == 0x30C8 ||              // tsu, te, to
      (c >= 0x30CF && c <= 0x30DB && (c - 0x30CF) % 3 == 0))    // ha..ho
    return static_cast<char16_t>(c + 1);
  if (c == 0x30A6) return 0x30F4;  // u -> vu
  if (c == 0x30EF) return 0x30F7;  // wa -> va
  if (c == 0x30F2) return 0x30FA;  // wo -> vo
  return 0;
}

// The semi-voiced (handakuten) form: only the ha row has one.
char16_t SemiVoicedKatakana(char16_t c) {
  if (c >= 0x30CF && c <= 0x30DB && (c - 0x30CF) % 3 == 0) return static_cast<char16_t>(c + 2);
  return 0;
}

// Narrows c into one or two units; returns how many were written.
int NarrowChar(char16_t c, char16_t* pOut) {
  if (c >= 0x30A1 && c <= 0x30FE) {
    if (char16_t cHalf = FullKatakanaToHalf(c)) {
      pOut[0] = cHalf;
      return 1;
    }
    for (char16_t cBase = 0x30A1; cBase <= 0x30FA; ++cBase) {
      if (VoicedKatakana(cBase) == c || SemiVoicedKatakana(cBase) == c) {
        pOut[0] = FullKatakanaToHalf(cBase);
        pOut[1] = VoicedKatakana(cBase) == c ? kVoicedMark : kSemiVoicedMark;
        return 2;
      }
    }
  }
  pOut[0] = FullToHalfWidthChar(c);
  return 1;
}

// Widens the unit at pSrc[i], folding a following sound mark into a voiced katakana;
// returns how many source units were used.
int WidenChar(const char16_t* pSrc, int nSrc, int i, char16_t& cOut) {
  cOut = HalfToFullWidthChar(pSrc[i]);
  if (pSrc[i] < 0xFF61 || pSrc[i] > 0xFF9D || i + 1 >= nSrc) return 1;
  char16_t cCombined = 0;
  if (pSrc[i + 1] == kVoicedMark) cCombined = VoicedKatakana(cOut);
  if (pSrc[i + 1] == kSemiVoicedMark) cCombined = SemiVoicedKatakana(cOut);
  if (cCombined == 0) return 1;
  cOut = cCombined;
  return 2;
}

char16_t ToKatakana(char16_t c) {
  if ((c >= 0x3041 && c <= 0x3096) || c == 0x309D || c == 0x309E)
    return static_cast<char16_t>(c + 0x60);
  return c;
}

char16_t ToHiragana(char16_t c) {
  if ((c >= 0x30A1 && c <= 0x30F6) || c == 0x30FD || c == 0x30FE)
    return static_cast<char16_t>(c - 0x60);
  return c;
}

// The locale's collator at tertiary strength, rebuilt when the locale changes.
icu::Collator* GetCollator() {
  static std::unique_ptr<icu::Collator> s_pCollator;
  static unsigned s_nGeneration = 0;
  if (!s_pCollator || s_nGeneration != GetLocaleGeneration()) {
    UErrorCode status = U_ZERO_ERROR;
    s_pCollator.reset(
        icu::Collator::createInstance(icu::Locale(GetLocaleSettings().strIcuName.c_str()), status));
    if (U_FAILURE(status)) s_pCollator.reset();
    if (s_pCollator) s_pCollator->setStrength(icu::Collator::TERTIARY);
    s_nGeneration = GetLocaleGeneration();
  }
  return s_pCollator.get();
}

int Sign(int n) { return (n > 0) - (n < 0); }

// Simple case folding, code point by code point; unpaired surrogates stay.
icu::UnicodeString FoldCase(const char16_t* p, int n) {
  icu::UnicodeString strFolded;
  int i = 0;
  while (i < n) {
    UChar32 c;
    U16_NEXT(p, i, n, c);
    strFolded.append(u_foldCase(c, U_FOLD_CASE_DEFAULT));
  }
  return strFolded;
}

}  // namespace

// ASCII maps the same in every locale; it is most of what formulas and names hold,
// so it skips the library call.
char16_t ToUpperChar(char16_t c) {
  if (c < 0x80) return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 0x20) : c;
  if (c >= 0xD800 && c <= 0xDFFF) return c;
  const UChar32 cUpper = u_toupper(c);
  return cUpper <= 0xFFFF ? static_cast<char16_t>(cUpper) : c;
}

char16_t ToLowerChar(char16_t c) {
  if (c < 0x80) return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 0x20) : c;
  if (c >= 0xD800 && c <= 0xDFFF) return c;
  const UChar32 cLower = u_tolower(c);
  return cLower <= 0xFFFF ? static_cast<char16_t>(cLower) : c;
}

bool IsLetterChar(char16_t c) { return u_isalpha(c); }
bool IsDigitChar(char16_t c) { return u_isdigit(c); }
bool IsSpaceChar(char16_t c) { return u_isUWhiteSpace(c); }
bool IsUpperChar(char16_t c) { return u_isupper(c); }
bool IsLowerChar(char16_t c) { return u_islower(c); }
bool IsPunctChar(char16_t c) { return u_ispunct(c); }

char16_t FullToHalfWidthChar(char16_t c) {
  if (c >= 0xFF01 && c <= 0xFF5E) return static_cast<char16_t>(c - 0xFEE0);
  if (c == 0x3000) return u' ';
  if (c >= 0xFFE0 && c <= 0xFFE6) return kFullSignToHalf[c - 0xFFE0];
  if (c >= 0x3001 && c <= 0x30FE)
    if (char16_t cHalf = FullKatakanaToHalf(c)) return cHalf;
  return c;
}

char16_t HalfToFullWidthChar(char16_t c) {
  if (c >= 0x21 && c <= 0x7E) return static_cast<char16_t>(c + 0xFEE0);
  if (c == u' ') return 0x3000;
  if (c >= 0xFF61 && c <= 0xFF9F) return kHalfKatakanaToFull[c - 0xFF61];
  for (std::size_t i = 0; i < std::size(kFullSignToHalf); ++i)
    if (kFullSignToHalf[i] == c) return static_cast<char16_t>(0xFFE0 + i);
  return c;
}

int MapString(unsigned nFlags, const char16_t* pSrc, int nSrc, char16_t* pDst, int nDst) {
  if (pSrc == nullptr || nSrc == 0 || nSrc < -1 || nDst < 0 || (nDst > 0 && pDst == nullptr))
    return 0;
  constexpr unsigned kKnownFlags = LCMAP_LOWERCASE | LCMAP_UPPERCASE | LCMAP_HIRAGANA |
                                   LCMAP_KATAKANA | LCMAP_HALFWIDTH | LCMAP_FULLWIDTH;
  if ((nFlags & ~kKnownFlags) != 0) return 0;
  // Contradictory pairs are refused, as LCMapStringW refuses them.
  if ((nFlags & LCMAP_LOWERCASE) && (nFlags & LCMAP_UPPERCASE)) return 0;
  if ((nFlags & LCMAP_HIRAGANA) && (nFlags & LCMAP_KATAKANA)) return 0;
  if ((nFlags & LCMAP_HALFWIDTH) && (nFlags & LCMAP_FULLWIDTH)) return 0;
  if (nSrc == -1) {
    nSrc = 0;
    while (pSrc[nSrc] != 0) ++nSrc;
    ++nSrc;  // the terminator is mapped and counted too
  }
  std::u16string strOut;
  strOut.reserve(static_cast<std::size_t>(nSrc));
  for (int i = 0; i < nSrc;) {
    char16_t c = pSrc[i];
    int nUsed = 1;
    char16_t acNarrow[2];
    int nNarrow = 0;
    // Kana first, so that narrowing sees katakana; then width; then case.
    if (nFlags & LCMAP_KATAKANA) c = ToKatakana(c);
    if (nFlags & LCMAP_HIRAGANA) c = ToHiragana(c);
    if (nFlags & LCMAP_FULLWIDTH) {
      nUsed = WidenChar(pSrc, nSrc, i, c);
      if (nFlags & LCMAP_HIRAGANA) c = ToHiragana(c);
    }
    if (nFlags & LCMAP_HALFWIDTH) nNarrow = NarrowChar(c, acNarrow);
    if (nNarrow == 0) {
      acNarrow[0] = c;
      nNarrow = 1;
    }
    for (int k = 0; k < nNarrow; ++k) {
      char16_t cOut = acNarrow[k];
      if (nFlags & LCMAP_UPPERCASE) cOut = ToUpperChar(cOut);
      if (nFlags & LCMAP_LOWERCASE) cOut = ToLowerChar(cOut);
      strOut += cOut;
    }
    i += nUsed;
  }
  const int nOut = static_cast<int>(strOut.size());
  if (nDst == 0) return nOut;
  if (nOut > nDst) return 0;
  strOut.copy(pDst, strOut.size());
  return nOut;
}

int CompareStringNoCase(const char16_t* pA, const char16_t* pB) {
  int nA = 0, nB = 0;
  if (pA != nullptr)
    while (pA[nA] != 0) ++nA;
  if (pB != nullptr)
    while (pB[nB] != 0) ++nB;
  return CompareStringNoCase(pA, nA, pB, nB);
}

// Both texts are case-folded first and then ordered by the locale's collation, with
// the folded code units breaking ties. Equal therefore means "equal but for case":
// collation alone would also call texts equal that differ only by ignorable
// characters, and a spreadsheet's "=" must not. Ordering on the folded text alone
// keeps the order consistent for sorting (no two case variants order differently
// against a third text). Folding is the simple one-to-one kind, like ToUpperChar,
// so "ß" stays apart from "ss". HashStringNoCase relies on equal meaning equal folds.
int CompareStringNoCase(const char16_t* pA, int nA, const char16_t* pB, int nB) {
  if (pA == nullptr || nA < 0) nA = 0;
  if (pB == nullptr || nB < 0) nB = 0;
  const icu::UnicodeString strA = FoldCase(pA, nA);
  const icu::UnicodeString strB = FoldCase(pB, nB);
  if (strA == strB) return 0;
  if (icu::Collator* pCollator = GetCollator()) {
    UErrorCode status = U_ZERO_ERROR;
    const UCollationResult nResult = pCollator->compare(strA, strB, status);
    if (U_SUCCESS(status) && nResult != UCOL_EQUAL) return nResult == UCOL_LESS ? -1 : 1;
  }
  return Sign(strA.compare(strB));
}

// FNV-1a over the folded code units: folding is where CompareStringNoCase decides
// equality, so both go through FoldCase.
std::uint64_t HashStringNoCase(const char16_t* p) {
  int n = 0;
  if (p != nullptr)
    while (p[n] != 0) ++n;
  const icu::UnicodeString strFolded = FoldCase(p, n);
  std::uint64_t nHash = 14695981039346656037ull;
  for (int i = 0; i < strFolded.length(); ++i)
    nHash = (nHash ^ strFolded.charAt(i)) * 1099511628211ull;
  return nHash;
}
