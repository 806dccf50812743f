// CSingleFormat: one section of a number format, compiled to a flat array of 16-bit
// token codes plus the summary the renderer and the cell code need (type, condition,
// colour, scale, digit groups). Four of them make a CValFormat.
#pragma once

#include <cstdint>

#include "base/Export.h"

class CPelArchive;

// The vocabulary a format text is written in. 1 and 2 read and write the English
// notation, every other value the user's locale (decimal and grouping characters from
// the locale settings, words from the host's resources).
enum EParseType : int { ptLocal = 0, ptEnglish = 1, ptEnglishFile = 2 };

class YARVBOOK_API CSingleFormat {
 public:
  // Stored in files and compared by kind: these numbers are part of the format.
  enum EType : int {
    ftGeneral = 0,
    ftNumber = 1,
    ftCurrency = 2,
    ftDate = 3,
    ftTime = 4,  // also a date with a time
    ftPercent = 5,
    ftFraction = 6,
    ftScientific = 7,
    ftText = 8,
    ftUndetermined = 12,  // nothing but literals seen so far; an unused section
  };
  enum EOperator : int {
    opLessEqual = 0,
    opGreaterEqual = 1,
    opNotEqual = 2,
    opLess = 3,
    opEqual = 4,
    opGreater = 5,
    opOtherwise = 6,  // always met
    opNone = 7,       // always met
  };
  // Bits of m_bFlags (in memory). The stored word numbers them differently: see SerializeCB.
  enum EFlag : unsigned char {
    fPercent = 0x01,
    fSpare = 0x02,  // kept and stored, never set by parsing
    fFill = 0x04,
    fColor = 0x08,
    fDate = 0x10,
    fTime = 0x20,
    fCondition = 0x40,
    fAutoMilliseconds = 0x80,  // not stored
  };
  // Token codes. Stored in files: the numbers are fixed.
  enum EToken : unsigned short {
    tkGeneral = 0,
    tkDigitZero = 1,      // '0', operand: part
    tkDigitHash = 2,      // '#', operand: part
    tkDigitQuestion = 3,  // '?', operand: part
    tkDecimalPoint = 4,
    tkCurrency = 5,
    tkExponent = 6,  // operand: bit 0 lower-case 'e', bit 1 '+' written
    tkPercent = 7,
    tkFractionSlash = 8,
    tkDateFirst = 9,  // "mmmmm"; tkDateFirst + i is entry i of the date-code list
    tkMonthName1 = 9,
    tkMonthName = 10,
    tkMonthAbbrev = 11,
    tkMonth2 = 12,
    tkMonth1 = 13,
    tkDayNameA = 14,  // "aaaa"
    tkDayName = 15,
    tkDayAbbrevA = 16,  // "aaa"
    tkDayAbbrev = 17,
    tkDay2 = 18,
    tkDay1 = 19,
    tkYear4 = 20,
    tkYear2 = 21,
    tkYearC = 22,
    tkYearJ = 23,
    tkEra = 24,
    tkEraYear2 = 25,
    tkEraYear1 = 26,
    tkHw = 27,
    tkHnw = 28,
    tkDateLast = 28,
    tkHour2 = 29,  // operand: 12-hour flag
    tkHour1 = 30,  // operand: 12-hour flag
    tkMinute2 = 31,
    tkMinute1 = 32,
    tkSecond2 = 33,  // operand: fraction digits 0..3
    tkSecond1 = 34,  // operand: fraction digits 0..3
    tkAmPm = 35,
    tkAmPmChinese = 38,
    tkAmPmS = 39,
    tkAmPmC = 40,
    tkAmPmSS = 41,
    tkAP = 42,
    tkLiteral = 43,    // operand: the character
    tkQuoted = 44,     // operands: the characters, then 0
    tkTextValue = 45,  // '@'
    tkFill = 46,       // operand: the fill character
    tkSpace = 47,      // operand: the character (0 when '_' ends the text)
    tkDateSep = 48,
    tkTimeSep = 49,
    tkElapsedHours = 50,    // operand: letter count
    tkElapsedMinutes = 51,  // operand: letter count
    tkElapsedSeconds = 52,  // operands: letter count, fraction digits
    tkLocaleBlock = 53,     // operands: text, 0, LCID low word, LCID high word
    tkEnd = 54,
  };
  // Digit groups: 0 integer part, 1 decimals or numerator, 2 exponent or denominator.
  enum EGroupFlag : unsigned short {
    gfGrouping = 0x02,       // group 0: thousands grouping requested
    gfDecimalPoint = 0x01,   // group 1: a decimal point was written
    gfQuestionDenom = 0x01,  // group 2: the denominator's first placeholder is '?'
  };
  struct TDigitGroup {
    unsigned short nCount;
    unsigned short wFlags;
  };

  static constexpr int kMaxFormatted = 32768;   // characters of formatted text
  static constexpr int kMaxSectionText = 1024;  // characters of one section examined
  static constexpr int kMaxSpaceChars = 256;    // '_' positions recorded per result

  CSingleFormat();
  CSingleFormat(const CSingleFormat& other);
  CSingleFormat& operator=(const CSingleFormat& other);
  virtual ~CSingleFormat();

  // Back to an unused section: type 12, no condition, no tokens, seconds precision 3.
  virtual void Clear();

  // Parses one section from pwszText and advances it past the terminating ';' (or to
  // the end). Returns 1 on success; 0 on failure, with pwszText left at the character
  // that failed. At most kMaxSectionText characters of the section are examined: a
  // longer section ends there and the rest of the text is skipped.
  int Parse(const char16_t*& pwszText, int nParseType);

  // Writes the section's text into pBuf (at most nMax - 1 units and a terminator):
  // colour, condition, then the tokens. Returns the units written.
  int Unparse(char16_t* pBuf, int nMax, int nParseType) const;

  // Whether a number meets the section's condition; operators 6 and 7 always do.
  bool MeetsCriteria(double r) const;
  bool IsNumeric() const { return IsNumericType(m_nType); }
  static bool IsNumericType(int nType) {
    return nType == ftNumber || nType == ftCurrency || nType == ftPercent || nType == ftFraction ||
           nType == ftScientific;
  }
  bool IsUsed() const { return m_nType != ftUndetermined; }
  // True when the section shows negatives without a sign of its own making: its
  // condition admits no positive number ("<0", "<=0" and the like).
  bool IsNegativeSection() const;

  bool operator==(const CSingleFormat& other) const;
  bool operator!=(const CSingleFormat& other) const { return !(*this == other); }

  // Reads or writes the section in the stored layout. Loading returns false, leaving the
  // section cleared, when the record is inconsistent (token count out of range, a token
  // word that does not belong, operands running past the end).
  [[nodiscard]] bool SerializeCB(CPelArchive& ar);

  // Checks that a token array is well formed: known codes, operands inside the array,
  // terminated by tkEnd exactly at nCount - 1.
  static bool IsValidTokenArray(const unsigned short* pTokens, int nCount);

  // Formatting: appends this section's rendering of r (already chosen for it) to the
  // result buffer. bShowSign asks for a leading '-' when the shown digits are not zero;
  // nGeneralWidth is the room of the General rule (0: 15 significant digits).
  void FormatNumber(double r, bool bShowSign, int nGeneralWidth = 0) const;
  // Appends the section's rendering of a text value ('@' gives the text).
  void FormatText(const char16_t* pwszText, int nLen) const;

  // Appends text to the result buffer, cut at kMaxFormatted.
  static void Append(const char16_t* pwsz, int nLen);
  static void Append(char16_t c);
  static void ResetResult();

  // Fields in the declared order of the compiled form.
  uint32_t m_nFixedDenominator = 0;
  EType m_nType = ftUndetermined;
  EOperator m_nOperator = opNone;
  double m_rCondition = 0;
  unsigned char m_bFlags = 0;
  unsigned char m_nSecPrecision = 3;  // 0..3
  uint32_t m_nColorIndex = 0;
  unsigned short m_wColorNumber = 0;
  short m_nScale = 0;
  unsigned short m_wTokenCount = 0;
  unsigned short* m_pTokens = nullptr;  // owned; m_wTokenCount words ending in tkEnd
  TDigitGroup m_aGroups[3] = {};

  // The process-wide formatting result, reset by every CValFormat::Format. Valid until
  // the next formatting call: copy at once.
  static char16_t m_Buf[kMaxFormatted + 1];
  static unsigned short m_wFormattedLen;
  static bool m_bIsGeneral;  // the General rule produced the number in the text
  static double m_rGeneralValue;
  static unsigned short m_wGeneralStart;  // the number's place in m_Buf
  static unsigned short m_wGeneralEnd;
  static unsigned short m_wGeneralPrecision;  // significant digits shown

 private:
  friend class CValFormat;
  // Parse with the condition preset to "otherwise" when bOtherwise; *pbSemicolon tells
  // whether the section ended at a ';' (another section follows).
  int ParseSection(const char16_t*& pwszText, int nParseType, bool bOtherwise, bool* pbSemicolon);
  void SetTokens(const unsigned short* pTokens, int nCount);
  // Appends the General text of r (its sign when bShowSign) and records its place.
  void FormatGeneral(double r, int nWidth, bool bShowSign) const;
  void FormatScientific(double r, bool bShowSign) const;
  void FormatFraction(double r, bool bShowSign) const;
  void FormatFixed(double r, bool bShowSign) const;
  void FormatDateTime(double r) const;
  // Renders the token at index i when it is one that every kind of section shows the
  // same way (literals, quoted text, fill, spacing, currency, percent, locale block).
  // Returns the index after it, or -1 when the token is not one of those.
  int FormatCommonToken(int i) const;
};
