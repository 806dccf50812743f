// CQuickLocalFormat: a number format built from a kind-prefixed locale text (see
// CLocalBuiltInFormat), parsed in the English notation with automatic milliseconds on.
// Books hold three: date and time, date, time.
#pragma once

#include "base/Export.h"
#include "format/ValFormat.h"

class YARVBOOK_API CQuickLocalFormat : public CValFormat {
 public:
  // The texts of the three book formats.
  static constexpr const char16_t* kDateTimeText = u"9:yyyy;mm;dd;/; %sh:mm:ss%s";
  static constexpr const char16_t* kDateText = u"5:yyyy;mm;dd;/";
  static constexpr const char16_t* kTimeText = u"6:%sh:mm:ss%s";

  // Builds the format from the text in the current locale; false (format cleared) when
  // the text is malformed or its format does not parse.
  [[nodiscard]] bool Create(const char16_t* pwszText);
  CValFormat* Clone() const override { return new CQuickLocalFormat(*this); }
};
