// CLocalBuiltInFormat: a format text in the kind-prefixed form the host's resources use
// for localized built-in formats, "kind:body". The kind says how the body becomes a
// format text in the current locale:
//   0 plain format                  1 currency slots ("%s")
//   2 currency slots, no symbol     3 date-part slots in the locale's order
//   4 currency-symbol slots         5 date parts "year;month;day;separator"
//   6 time with AM/PM slots         7 "second text;format" with currency slots
//   8 "second text;format" with AM/PM slots
//   9 date parts as in 5, then ";" and a time part with AM/PM slots
// "[AUTO]" in the body stands for "yyyy" or "yy", as the locale writes years.
#pragma once

#include <string>
#include <vector>

#include "base/Export.h"
#include "format/FormatSubstitution.h"

class YARVBOOK_API CLocalBuiltInFormat {
 public:
  // Reads the host's text for built-in format nIndex (0..63). False when there is none
  // (no resource, or a text of a single ";") or when it is malformed.
  [[nodiscard]] bool Load(int nIndex);
  // Takes a kind-prefixed text. False (and nothing kept) when the kind is missing or
  // outside 0..9, or the body lacks the parts its kind needs.
  [[nodiscard]] bool SetText(const std::u16string& strText);

  int GetKind() const { return m_nKind; }
  // The substitution source of the body's slots.
  TFormatSubstitution::ESource GetSource() const;
  // The format text with its slots still open (kinds 5 and 9: already in date order).
  std::u16string GetTemplate() const;
  // The format text in the current locale, slots filled.
  std::u16string GetFormatText() const {
    return TFormatSubstitution::Render(GetSource(), GetTemplate());
  }
  // Kinds 7 and 8: the text kept apart before the format.
  const std::u16string& GetSecondText() const { return m_strSecond; }

  // Splits at ';' outside double quotes and not escaped by '\'.
  static std::vector<std::u16string> SplitParts(const std::u16string& strBody);

 private:
  int m_nKind = -1;
  std::u16string m_strBody;
  std::u16string m_strSecond;
};
