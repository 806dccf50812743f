// CBuiltInFormats: the 64 built-in number formats, their English templates and the
// texts adapted to the current locale (currency placement, date order, AM/PM place,
// and the host's localized built-in texts). The adapted texts are made on first use
// and made again after the locale or the host's resource table changes.
#pragma once

#include <string>

#include "base/Export.h"

class YARVBOOK_API CBuiltInFormats {
 public:
  static constexpr int kCount = 64;

  // Adapts the texts to the current locale unless that is already done.
  static void Init();
  // The adapted text of entry n (English notation), or empty for n outside 0..63.
  static const std::u16string& GetText(int nIndex);
  // Whether entry n shows the same as the entry it links to, in the current locale.
  static bool IsAlias(int nIndex);
  // The entry n derives from, or -1.
  static int GetLink(int nIndex);
};
