#include "format/QuickLocalFormat.h"

#include "format/LocalBuiltInFormat.h"

bool CQuickLocalFormat::Create(const char16_t* pwszText) {
  Clear();
  CLocalBuiltInFormat local;
  if (!pwszText || !local.SetText(pwszText)) return false;
  const std::u16string strFormat = local.GetFormatText();
  if (!Parse(strFormat.c_str(), nullptr, ptEnglishFile)) {
    Clear();
    return false;
  }
  SetAutoMilliseconds(true);
  return true;
}
