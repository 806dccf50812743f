// CValFormat: a compiled number format of exactly four CSingleFormat sections, with the
// rules that pick a section for a value and the process-wide formatting result that
// Format leaves behind (text, fill, colour, General marks, '_' spacing marks).
#pragma once

#include <cstdint>
#include <string>

#include "base/Export.h"
#include "base/ZelObject.h"
#include "format/SingleFormat.h"

class CPelArchive;

class YARVBOOK_API CValFormat : public CZelObject {
 public:
  static constexpr int kSections = 4;

  // A place where '_' asked for a blank as wide as cChar.
  struct TSpaceChar {
    unsigned short wPos;
    char16_t cChar;
  };

  CValFormat() = default;
  // Copies the sections only: the object-root state is not a format's content.
  CValFormat(const CValFormat& other);
  CValFormat& operator=(const CValFormat& other);
  ~CValFormat() override;

  // Parses a whole format (up to four sections separated by ';') and fills in the
  // implicit conditions and sections. Returns 1 on success; 0 on failure, when
  // pnErrorPos (if given) receives the index in pwszText of the failing character.
  // A failed parse leaves the sections cleared or partly filled: discard the format.
  int Parse(const char16_t* pwszText, int* pnErrorPos, int nParseType);
  // Parses strText in the local notation into this format; 1 on success, else 0.
  int NewFormat(const std::u16string& strText);

  // Unused sections everywhere.
  void Clear() override;
  // A new copy, owned by the caller.
  CValFormat* Clone() const override;
  // pSrc must be a CValFormat (or derived); anything else leaves this format alone.
  void Copy(const CZelObject* pSrc) override;
  void Copy(const CValFormat& other) { *this = other; }
  // 0 when the sections are equal, else nonzero (section by section, ordered).
  int Compare(const CZelObject* pOther) const override;
  int Compare(const CValFormat& other) const;
  // No section in use.
  bool IsEmpty() const override { return !m_aSections[0].IsUsed(); }

  // Sets or clears the automatic-milliseconds mark in all four sections: a seconds
  // code written without fraction digits then shows the milliseconds when there are any.
  void SetAutoMilliseconds(bool bOn);

  // The sections joined by ';', stopping at the first unused one.
  std::u16string Unparse(int nParseType) const;

  // Reads or writes the format in the stored layout: a 32-bit section count (4 when
  // written) and the sections. Loading fails (false) on a count above 4 or a corrupt
  // section; the format is then cleared.
  [[nodiscard]] bool SerializeCB(CPelArchive& ar);

  // The type of the first section (General when there is none).
  CSingleFormat::EType GetType() const { return m_aSections[0].m_nType; }
  // Whether the first section shows a date or a time.
  bool IsDateOrTime() const;
  // The section a number would be shown through, or -1 when none (empty text).
  int ChooseSection(double r) const;

  // Formats a number into the process-wide result below. nGeneralWidth is the number of
  // characters the General rule may use: 0 for the value text (15 significant digits),
  // 11 for a cell of standard width.
  void Format(double r, int nGeneralWidth = 0) const;
  // Formats a text value (a text, or the text of a logical or an error value).
  void Format(const char16_t* pwszText, int nLen) const;

  CSingleFormat m_aSections[kSections];

  // The process-wide formatting result besides CSingleFormat::m_Buf. Valid until the
  // next Format call: copy at once.
  static char16_t m_cFillChar;  // 0 when no fill was asked for
  static unsigned short m_wFillPos;
  static bool m_bIsColorIndex;  // "ColorN": m_wColorIndex is N - 1
  static unsigned short m_wColorIndex;
  static bool m_bIsColorRef;  // a named colour: m_ColorRef is 0x00BBGGRR
  static uint32_t m_ColorRef;
  static unsigned short m_wSpaceChars;
  static TSpaceChar m_SpaceChars[CSingleFormat::kMaxSpaceChars];

 private:
  void SetResultColor(const CSingleFormat& section) const;
};
