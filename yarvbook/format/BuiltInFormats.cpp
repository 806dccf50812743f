// The static English table and its adaptation to the locale.
#include "format/BuiltInFormats.h"

#include <iterator>

#include "format/FormatSubstitution.h"
#include "format/LocalBuiltInFormat.h"
#include "format/ValFormat.h"
#include "platform/Locale.h"
#include "platform/Resources.h"

namespace {

using ESource = TFormatSubstitution::ESource;
constexpr ESource kNone = TFormatSubstitution::srcNone;
constexpr ESource kCurrency = TFormatSubstitution::srcCurrency;
constexpr ESource kNoSymbol = TFormatSubstitution::srcCurrencyNoSymbol;
constexpr ESource kDate = TFormatSubstitution::srcDateOrder;
constexpr ESource kAmPm = TFormatSubstitution::srcAmPm;

struct TBuiltInEntry {
  ESource nSource;
  bool bAlias;
  int nLink;
  const char16_t* pwszTemplate;  // null: the linked entry's template and source
};

constexpr TBuiltInEntry kEntries[] = {
    {kNone, false, -1, u"General"},
    {kNone, false, -1, u"0"},
    {kNone, false, -1, u"0.00"},
    {kNone, false, -1, u"#,##0"},
    {kNone, false, -1, u"#,##0.00"},
    {kCurrency, false, -1, u"%s#,##0%s;%s#,##0%s"},
    {kCurrency, false, -1, u"%s#,##0%s;[Red]%s#,##0%s"},
    {kCurrency, false, -1, u"%s#,##0.00%s;%s#,##0.00%s"},
    {kCurrency, false, -1, u"%s#,##0.00%s;[Red]%s#,##0.00%s"},
    {kNone, false, -1, u"0%"},
    {kNone, false, -1, u"0.00%"},
    {kNone, false, -1, u"0.00E+00"},
    {kNone, false, -1, u"# ?/?"},
    {kNone, false, -1,
     u"# ?"
     "?/?"
     "?"},
    {kDate, false, -1, u"%s/%s/%s"},
    {kNone, false, -1, u"d\\-mmm\\-yy"},
    {kNone, false, -1, u"d\\-mmm"},
    {kNone, false, -1, u"mmm\\-yy"},
    {kAmPm, false, -1, u"%sh:mm%s"},
    {kAmPm, false, -1, u"%sh:mm:ss%s"},
    {kNone, false, -1, u"h:mm"},
    {kNone, false, -1, u"h:mm:ss"},
    {kDate, false, -1, u"%s/%s/%s h:mm"},
    {kNone, true, 5, u"\\$#,##0_);\\(\\$#,##0\\)"},
    {kNone, true, 6, u"\\$#,##0_);[Red]\\(\\$#,##0\\)"},
    {kNone, true, 7, u"\\$#,##0.00_);\\(\\$#,##0.00\\)"},
    {kNone, true, 8, u"\\$#,##0.00_);[Red]\\(\\$#,##0.00\\)"},
    {kNone, true, 0, nullptr},
    {kNone, true, 0, nullptr},
    {kNone, true, 0, nullptr},
    {kNone, true, 14, u"m\\/d\\/yy"},
    {kNone, true, 14, nullptr},
    {kNone, true, 20, nullptr},
    {kNone, true, 21, nullptr},
    {kNone, true, 0, nullptr},
    {kNone, true, 0, nullptr},
    {kNone, true, 0, nullptr},
    {kNoSymbol, false, -1, u"#,##0%s;%s#,##0%s"},
    {kNoSymbol, false, -1, u"#,##0%s;[Red]%s#,##0%s"},
    {kNoSymbol, false, -1, u"#,##0.00%s;%s#,##0.00%s"},
    {kNoSymbol, false, -1, u"#,##0.00%s;[Red]%s#,##0.00%s"},
    {kNone, false, -1, u"_-* #,##0_-;-* #,##0_-;_-* \"-\"_-;_-@_-"},
    {kNone, false, -1, u"_-\"\\\"* #,##0_-;-\"\\\"* #,##0_-;_-\"\\\"* \"-\"_-;_-@_-"},
    {kNone, false, -1, u"_-* #,##0.00_-;-* #,##0.00_-;_-* \"-\"??_-;_-@_-"},
    {kNone, false, -1, u"_-\"\\\"* #,##0.00_-;-\"\\\"* #,##0.00_-;_-\"\\\"* \"-\"??_-;_-@_-"},
    {kNone, false, -1, u"mm:ss"},
    {kNone, false, -1, u"[h]:mm:ss"},
    {kNone, false, -1, u"mm:ss.0"},
    {kNone, false, -1, u"##0.0E+0"},
    {kNone, false, -1, u"@"},
    {kNone, true, 0, u"yyyy\u5E74 mm\u6708 dd\u65E5"},
    {kNone, true, 0, u"mm\"-\"dd"},
    {kNone, true, 0, u"yyyy/mm/dd"},
    {kNone, true, 0, u"yyyy\"-\"mm\"-\"dd"},
    {kNone, true, 0, u"mm\"-\"dd"},
    {kNone, false, 14, u"yyyy/mm/dd"},
    {kNone, false, 57, u"yyyy\"-\"mm\"-\"dd"},
    {kNone, false, 14, u"yyyy\u5E74 mm\u6708 dd\u65E5"},
    {kNone, false, 14, u"mm\"-\"dd"},
    {kNone, false, 0, u"0"},
    {kNone, false, 0, u"0.00"},
    {kNone, true, 0, u"#,##0"},
    {kNone, true, 0, u"#,##.00"},  // kept without a zero before the point
    {kNone, true, 44, u"\\#,##0;-\\#,##0"},
};
static_assert(std::size(kEntries) == CBuiltInFormats::kCount, "one entry per built-in format");

// The aliases whose equality with their link depends on the locale.
constexpr int kCheckedAliases[] = {23, 24, 25, 26, 30};

struct TAdapted {
  std::u16string astrText[CBuiltInFormats::kCount];
  bool abAlias[CBuiltInFormats::kCount] = {};
  int anLink[CBuiltInFormats::kCount] = {};
  unsigned nLocaleGeneration = ~0u;
  unsigned nResourceGeneration = ~0u;
};

TAdapted& GetAdapted() {
  static TAdapted s_adapted;
  return s_adapted;
}

// English text -> local text -> English text, as a format read in one notation and
// written in the other would come out.
std::u16string RoundTrip(const std::u16string& strText) {
  CValFormat format;
  if (!format.Parse(strText.c_str(), nullptr, ptEnglishFile)) return strText;
  const std::u16string strLocal = format.Unparse(ptLocal);
  if (!format.Parse(strLocal.c_str(), nullptr, ptLocal)) return strText;
  return format.Unparse(ptEnglishFile);
}

}  // namespace

void CBuiltInFormats::Init() {
  TAdapted& a = GetAdapted();
  if (a.nLocaleGeneration == GetLocaleGeneration() &&
      a.nResourceGeneration == GetResourceGeneration())
    return;
  ESource anSource[kCount];
  std::u16string astrTemplate[kCount];
  bool abHasTemplate[kCount];
  for (int n = 0; n < kCount; ++n) {
    const TBuiltInEntry& e = kEntries[n];
    anSource[n] = e.nSource;
    a.abAlias[n] = e.bAlias;
    a.anLink[n] = e.nLink;
    abHasTemplate[n] = e.pwszTemplate != nullptr;
    if (e.pwszTemplate) astrTemplate[n] = e.pwszTemplate;
    CLocalBuiltInFormat local;
    if (local.Load(n)) {
      anSource[n] = local.GetSource();
      a.abAlias[n] = false;
      a.anLink[n] = -1;
      astrTemplate[n] = local.GetTemplate();
      abHasTemplate[n] = true;
    }
  }
  // Links point to entries that have templates of their own (entries 27..36 to 0, 14,
  // 20 and 21), so one step is enough.
  for (int n = 0; n < kCount; ++n) {
    const int nLink = a.anLink[n];
    if (!abHasTemplate[n] && nLink >= 0 && nLink < kCount) {
      astrTemplate[n] = astrTemplate[nLink];
      anSource[n] = anSource[nLink];
    }
    a.astrText[n] = anSource[n] != TFormatSubstitution::srcNone
                        ? TFormatSubstitution::Render(anSource[n], astrTemplate[n])
                        : astrTemplate[n];
  }
  for (int n : kCheckedAliases) {
    const int nLink = a.anLink[n];
    if (a.abAlias[n] && nLink >= 0 && RoundTrip(a.astrText[n]) != a.astrText[nLink])
      a.abAlias[n] = false;
  }
  a.nLocaleGeneration = GetLocaleGeneration();
  a.nResourceGeneration = GetResourceGeneration();
}

const std::u16string& CBuiltInFormats::GetText(int nIndex) {
  static const std::u16string s_strEmpty;
  if (nIndex < 0 || nIndex >= kCount) return s_strEmpty;
  Init();
  return GetAdapted().astrText[nIndex];
}

bool CBuiltInFormats::IsAlias(int nIndex) {
  if (nIndex < 0 || nIndex >= kCount) return false;
  Init();
  return GetAdapted().abAlias[nIndex];
}

int CBuiltInFormats::GetLink(int nIndex) {
  if (nIndex < 0 || nIndex >= kCount) return -1;
  Init();
  return GetAdapted().anLink[nIndex];
}
