// TFormatSubstitution: fills the "%s" slots of a built-in format template from the
// locale: where the currency symbol goes and how negatives look, the order of the
// date parts, where the AM/PM marker stands.
#pragma once

#include <string>

#include "base/Export.h"

struct YARVBOOK_API TFormatSubstitution {
  enum ESource : int {
    srcNone = 0,
    srcCurrency = 1,          // positive prefix, suffix, negative prefix, suffix
    srcCurrencyNoSymbol = 2,  // positive suffix, negative prefix, suffix
    srcDateOrder = 3,         // month, day and year parts in the locale's order
    srcCurrencySymbol = 4,    // every slot: the currency symbol
    srcAmPm = 6,              // before and after the time: the AM/PM marker
  };

  // The template with each "%s" replaced, in order, by the source's slot texts (slots
  // past the source's last are empty). "%%" stands for '%'.
  static std::u16string Render(ESource nSource, const std::u16string& strTemplate);
  // The currency symbol as format text in the English notation: bare when the parser
  // reads it back as the currency, else in quotes.
  static std::u16string CurrencyText();
};
