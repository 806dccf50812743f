// yarvbook format FORMAT VALUE...: renders each value through a number format. Values
// are read as a user types them into a cell, in the chosen locale: numbers with the
// locale's separators, dates and times (as their serials), TRUE/FALSE and error texts;
// anything else is text.
#include "FormatCommand.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "Utf8.h"
#include "yarvbook.h"

namespace {

// Writes the format, and a caret under the character at nErrorPos, to stderr.
void ShowErrorPosition(const std::u16string& strFormat, int nErrorPos) {
  std::fprintf(stderr, "  %s\n  ",
               ToUtf8(strFormat.data(), static_cast<int>(strFormat.size())).c_str());
  const int nLimit = std::min(nErrorPos, static_cast<int>(strFormat.size()));
  for (int i = 0; i < nLimit; ++i)
    if (strFormat[i] < 0xDC00 || strFormat[i] >= 0xE000) std::fputc(' ', stderr);
  std::fputs("^\n", stderr);
}

}  // namespace

int RunFormatCommand(int argc, char** argv) {
  int i = 0;
  const char* pszLocale = nullptr;
  while (i < argc && std::strcmp(argv[i], "--locale") == 0) {
    if (i + 1 >= argc) {
      std::fputs("yarvbook format: --locale needs a tag\n", stderr);
      return 2;
    }
    pszLocale = argv[i + 1];
    i += 2;
  }
  if (i >= argc) {
    std::fputs("usage: yarvbook format [--locale TAG] FORMAT VALUE...\n", stderr);
    return 2;
  }
  if (pszLocale && !SetLocale(pszLocale)) {
    std::fprintf(stderr, "yarvbook format: unknown locale '%s'\n", pszLocale);
    return 2;
  }
  const std::u16string strFormat = FromUtf8(argv[i++]);
  CValFormat format;
  int nErrorPos = 0;
  if (!format.Parse(strFormat.c_str(), &nErrorPos, ptEnglish)) {
    std::fprintf(stderr, "yarvbook format: the format does not parse at character %d\n",
                 nErrorPos + 1);
    ShowErrorPosition(strFormat, nErrorPos);
    return 1;
  }
  for (; i < argc; ++i) {
    const std::u16string strText = FromUtf8(argv[i]);
    TValue value;
    if (!value.StringToReal(strText.c_str(), nullptr, CSingleFormat::ftGeneral, ptLocal)) {
      format.Format(strText.c_str(), static_cast<int>(strText.size()));
    } else if (value.IsReal()) {
      double r = 0;
      value.GetValue(r);
      format.Format(r);
    } else {
      // TRUE/FALSE and error texts show in their own spelling through the text rules.
      const char16_t* pwszText = value.IsLogical()
                                     ? TValue::GetLogicalText(value.GetLogical() != 0, false)
                                     : TValue::GetErrorString(value.GetError());
      format.Format(pwszText, static_cast<int>(std::char_traits<char16_t>::length(pwszText)));
    }
    std::printf("%s\n", ToUtf8(CSingleFormat::m_Buf, CSingleFormat::m_wFormattedLen).c_str());
  }
  return 0;
}
