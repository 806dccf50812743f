// CUnparserRCUtilBase: the text pieces the formula unparsers are built from: cells and
// ranges in A1 and R1C1 notation, sheet and book prefixes with their quoting, and
// number constants. Every writer appends to a std::u16string, so no formula is too
// long for its output.
#pragma once

#include <string>

#include "base/Export.h"

class TCell;

class YARVBOOK_API CUnparserRCUtilBase {
 public:
  // A column word is that of the reference tokens: bits 0-7 the column, bit 14 set
  // when the column is relative, bit 15 when the row is.

  // ---- A1 -----------------------------------------------------------------------
  // "1".."65536" for nRow & 0xFFFF, "$" in front when not relative.
  static void FormatRowNr(std::u16string& s, int nRow, bool bRelative);
  // "A".."IV" for nCol & 0xFF, "$" in front when not relative.
  static void FormatColNr(std::u16string& s, int nCol, bool bRelative);
  // The cell at the absolute row and column, each part marked by the relative flags
  // of wColWord.
  static void FormatRCNr(std::u16string& s, int nRow, int nCol, unsigned short wColWord);
  // Two cells joined by ":", each with the flags of its own column word.
  static void FormatRangeNr(std::u16string& s, int nRow1, int nCol1, unsigned short wColWord1,
                            int nRow2, int nCol2, unsigned short wColWord2);

  // ---- R1C1 ---------------------------------------------------------------------
  // cLetter ("R" or "C") and: nValue + 1 when absolute; nothing more when relative and
  // nValue equals nBase; else the offset nValue - nBase in brackets ("C[-2]").
  static void GetR1C1RCNr(std::u16string& s, char16_t cLetter, int nValue, int nBase,
                          bool bRelative);
  static void FormatR1C1RowNr(std::u16string& s, int nRow, int nBaseRow, bool bRelative);
  static void FormatR1C1ColNr(std::u16string& s, int nCol, int nBaseCol, bool bRelative);
  // Row text then column text, relative parts as offsets from base.
  static void FormatR1C1RCNr(std::u16string& s, int nRow, int nCol, unsigned short wColWord,
                             const TCell& base);
  static void FormatR1C1RangeNr(std::u16string& s, int nRow1, int nCol1, unsigned short wColWord1,
                                int nRow2, int nCol2, unsigned short wColWord2, const TCell& base);

  // ---- Prefixes -----------------------------------------------------------------
  // True when a sheet or book name must stand between apostrophes: it holds a
  // character that is not a letter, a digit, "_" or ".". Beyond that rule, names that
  // the formula reader would take for something else are quoted too: the empty name,
  // a name that starts with a digit or ".", one that reads as a cell in A1 or R1C1
  // notation, and the logical constants.
  static bool NeedsQuotes(const char16_t* pwszName);
  static bool NeedsQuotes(const char16_t* pName, int nLen);
  // Appends pName with every apostrophe, and every full-width apostrophe, doubled: the
  // inside of a quoted prefix.
  static void AppendDoubledQuotes(std::u16string& s, const char16_t* pName, int nLen);
  // s := the name, between apostrophes (inner ones doubled) when NeedsQuotes.
  static void CopyStringWithQuotes(std::u16string& s, const char16_t* pwszName);
  // Appends the name as CopyStringWithQuotes writes it.
  static void ConcatStringWithQuotes(std::u16string& s, const char16_t* pwszName);
  // Appends the prefix of a reference into another sheet or book, with its "!":
  // "[book]" when pwszBook is not null, the first sheet, ":" and the last sheet when
  // pwszSheet2 is not null; the book without brackets when pwszSheet1 is null (a name
  // of that book). The whole prefix is quoted when any part needs it.
  static void Concat3dPart(std::u16string& s, const char16_t* pwszBook, const char16_t* pwszSheet1,
                           const char16_t* pwszSheet2);

  // ---- Constants ----------------------------------------------------------------
  // The number as the General format shows it, 15 significant digits and cDecimal as
  // the decimal separator. When those 15 digits would read back as a different double
  // the shortest of 16 or 17 digits that reads back exactly is written instead, so a
  // stored constant keeps its value through text. Not-finite values write "#NUM!".
  static void FormatNumber(std::u16string& s, double r, char16_t cDecimal);
  // "\"", the units with each double quote doubled, "\"".
  static void FormatString(std::u16string& s, const char16_t* p, int nLen);
};
