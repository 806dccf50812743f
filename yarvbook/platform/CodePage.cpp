// Code-page services over ICU converters. One converter per code page is opened on
// first use and kept; the engine is single-threaded, so the converters' state is
// simply reset before each call.
#include "platform/CodePage.h"

#include <unicode/ucnv.h>

#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

#include "platform/Locale.h"

namespace {

struct TCodePageInfo {
  unsigned nCodePage;
  const char* pszConverter;  // ICU's canonical name, so no alias lookup is ambiguous
  unsigned nCharSet;
};

constexpr TCodePageInfo kCodePages[] = {
    {874, "windows-874-2000", 222},  // THAI_CHARSET
    {932, "ibm-943_P15A-2003", SHIFTJIS_CHARSET},
    {936, "windows-936-2000", GB2312_CHARSET},
    {949, "windows-949-2000", HANGUL_CHARSET},
    {950, "windows-950-2000", CHINESEBIG5_CHARSET},
    {1250, "ibm-5346_P100-1998", EASTEUROPE_CHARSET},
    {1251, "ibm-5347_P100-1998", RUSSIAN_CHARSET},
    {1252, "ibm-5348_P100-1997", ANSI_CHARSET},
    {1253, "ibm-5349_P100-1998", GREEK_CHARSET},
    {1254, "ibm-5350_P100-1998", TURKISH_CHARSET},
    {1255, "ibm-9447_P100-2002", HEBREW_CHARSET},
    {1256, "ibm-9448_X100-2005", ARABIC_CHARSET},
    {1257, "ibm-9449_P100-2002", BALTIC_CHARSET},
    {1258, "ibm-5354_P100-1998", VIETNAMESE_CHARSET},
    {CP_UTF8, "UTF-8", DEFAULT_CHARSET},
};

const TCodePageInfo* FindCodePage(unsigned nCodePage) {
  if (nCodePage == CP_ACP) nCodePage = GetACP();
  for (const TCodePageInfo& info : kCodePages)
    if (info.nCodePage == nCodePage) return &info;
  return nullptr;
}

struct TConverterClose {
  void operator()(UConverter* pConverter) const { ucnv_close(pConverter); }
};

// An open converter with the lead bytes it reports.
struct TConverter {
  std::unique_ptr<UConverter, TConverterClose> pConverter;
  bool abLead[256] = {};
  bool bDoubleByte = false;
};

TConverter* GetConverter(unsigned nCodePage) {
  static std::unique_ptr<TConverter> s_apConverters[std::size(kCodePages)];
  const TCodePageInfo* pInfo = FindCodePage(nCodePage);
  if (pInfo == nullptr) return nullptr;
  std::unique_ptr<TConverter>& pSlot = s_apConverters[pInfo - kCodePages];
  if (pSlot) return pSlot.get();
  UErrorCode status = U_ZERO_ERROR;
  UConverter* pOpened = ucnv_open(pInfo->pszConverter, &status);
  if (U_FAILURE(status) || pOpened == nullptr) return nullptr;
  auto pConverter = std::make_unique<TConverter>();
  pConverter->pConverter.reset(pOpened);
  // Unmappable characters become '?', as the Win32 conversion writes them.
  status = U_ZERO_ERROR;
  ucnv_setSubstChars(pOpened, "?", 1, &status);
  // Lead bytes come from the converter's own table; UTF-8 is not a double-byte code
  // page in the Win32 sense and has none.
  if (ucnv_getType(pOpened) == UCNV_MBCS || ucnv_getType(pOpened) == UCNV_DBCS) {
    UBool abStarters[256] = {};
    status = U_ZERO_ERROR;
    ucnv_getStarters(pOpened, abStarters, &status);
    if (U_SUCCESS(status))
      for (int i = 0; i < 256; ++i) {
        pConverter->abLead[i] = abStarters[i] != 0;
        if (abStarters[i]) pConverter->bDoubleByte = true;
      }
  }
  pSlot = std::move(pConverter);
  return pSlot.get();
}

}  // namespace

unsigned GetACP() { return GetLocaleSettings().nCodePage; }

bool IsDBCSLeadByte(unsigned char c) { return IsDBCSLeadByteEx(CP_ACP, c); }

bool IsDBCSLeadByteEx(unsigned nCodePage, unsigned char c) {
  const TConverter* pConverter = GetConverter(nCodePage);
  return pConverter != nullptr && pConverter->abLead[c];
}

bool IsDBCSCodePage(unsigned nCodePage) {
  const TConverter* pConverter = GetConverter(nCodePage);
  return pConverter != nullptr && pConverter->bDoubleByte;
}

int MultiByteToWideChar(unsigned nCodePage, const char* pSrc, int nSrc, char16_t* pDst, int nDst) {
  if (pSrc == nullptr || nSrc == 0 || nSrc < -1 || nDst < 0 || (nDst > 0 && pDst == nullptr))
    return 0;
  TConverter* pConverter = GetConverter(nCodePage);
  if (pConverter == nullptr) return 0;
  // -1 converts the terminator too, so the count includes it.
  const std::size_t nBytes = nSrc == -1 ? std::strlen(pSrc) + 1 : static_cast<std::size_t>(nSrc);
  if (nBytes > static_cast<std::size_t>(INT32_MAX)) return 0;
  UConverter* pIcu = pConverter->pConverter.get();
  ucnv_resetToUnicode(pIcu);
  UErrorCode status = U_ZERO_ERROR;
  // Every byte yields at most two UTF-16 units (UTF-8 yields fewer), so this bound
  // is never too small.
  std::vector<char16_t> buffer(nBytes * 2);
  const int32_t nUnits = ucnv_toUChars(pIcu, buffer.data(), static_cast<int32_t>(buffer.size()),
                                       pSrc, static_cast<int32_t>(nBytes), &status);
  if (U_FAILURE(status) && status != U_STRING_NOT_TERMINATED_WARNING) return 0;
  if (nDst == 0) return nUnits;
  if (nUnits > nDst) return 0;
  std::memcpy(pDst, buffer.data(), static_cast<std::size_t>(nUnits) * sizeof(char16_t));
  return nUnits;
}

int WideCharToMultiByte(unsigned nCodePage, const char16_t* pSrc, int nSrc, char* pDst, int nDst) {
  if (pSrc == nullptr || nSrc == 0 || nSrc < -1 || nDst < 0 || (nDst > 0 && pDst == nullptr))
    return 0;
  TConverter* pConverter = GetConverter(nCodePage);
  if (pConverter == nullptr) return 0;
  std::size_t nUnits = 0;
  if (nSrc == -1) {
    while (pSrc[nUnits] != 0) ++nUnits;
    ++nUnits;
  } else {
    nUnits = static_cast<std::size_t>(nSrc);
  }
  if (nUnits > static_cast<std::size_t>(INT32_MAX / 4)) return 0;
  UConverter* pIcu = pConverter->pConverter.get();
  ucnv_resetFromUnicode(pIcu);
  UErrorCode status = U_ZERO_ERROR;
  // A UTF-16 unit becomes at most three bytes (UTF-8); a pair at most four.
  std::vector<char> buffer(nUnits * 3 + 1);
  const int32_t nBytes = ucnv_fromUChars(pIcu, buffer.data(), static_cast<int32_t>(buffer.size()),
                                         pSrc, static_cast<int32_t>(nUnits), &status);
  if (U_FAILURE(status) && status != U_STRING_NOT_TERMINATED_WARNING) return 0;
  if (nDst == 0) return nBytes;
  if (nBytes > nDst) return 0;
  std::memcpy(pDst, buffer.data(), static_cast<std::size_t>(nBytes));
  return nBytes;
}

unsigned CharSetToCodePage(unsigned nCharSet) {
  for (const TCodePageInfo& info : kCodePages)
    if (info.nCharSet == nCharSet && info.nCodePage != CP_UTF8) return info.nCodePage;
  if (nCharSet == JOHAB_CHARSET) return 1361;
  return CP_ACP;
}

unsigned CodePageToCharSet(unsigned nCodePage) {
  if (nCodePage == CP_ACP) nCodePage = GetACP();
  if (nCodePage == 1361) return JOHAB_CHARSET;
  for (const TCodePageInfo& info : kCodePages)
    if (info.nCodePage == nCodePage) return info.nCharSet;
  return DEFAULT_CHARSET;
}

bool IsCodePageSupported(unsigned nCodePage) {
  return nCodePage != CP_ACP && FindCodePage(nCodePage) != nullptr &&
         GetConverter(nCodePage) != nullptr;
}

int SupportedCodePageCount() {
  int nCount = 0;
  for (const TCodePageInfo& info : kCodePages)
    if (GetConverter(info.nCodePage) != nullptr) ++nCount;
  return nCount;
}
