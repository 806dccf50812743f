// yarvbook format FORMAT VALUE...: renders each value through a number format. Values
// are read as a user types them into a cell, in the chosen locale: numbers with the
// locale's separators, dates and times (as their serials), TRUE/FALSE and error texts;
// anything else is text.
#include "FormatCommand.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "yarvbook.h"

namespace {

std::u16string FromUtf8(const char* psz) {
  std::u16string str;
  const auto* p = reinterpret_cast<const unsigned char*>(psz);
  while (*p) {
    char32_t c = *p;
    int nMore = 0;
    if (c >= 0xF0) {
      c &= 0x07;
      nMore = 3;
    } else if (c >= 0xE0) {
      c &= 0x0F;
      nMore = 2;
    } else if (c >= 0xC0) {
      c &= 0x1F;
      nMore = 1;
    }
    ++p;
    for (; nMore > 0 && (*p & 0xC0) == 0x80; --nMore) c = (c << 6) | (*p++ & 0x3F);
    if (c >= 0x10000) {
      c -= 0x10000;
      str += static_cast<char16_t>(0xD800 + (c >> 10));
      str += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    } else {
      str += static_cast<char16_t>(c);
    }
  }
  return str;
}

std::string ToUtf8(const char16_t* pwsz, int nLen) {
  std::string str;
  for (int i = 0; i < nLen; ++i) {
    char32_t c = pwsz[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < nLen && pwsz[i + 1] >= 0xDC00 && pwsz[i + 1] < 0xE000)
      c = 0x10000 + ((c - 0xD800) << 10) + (pwsz[++i] - 0xDC00);
    if (c < 0x80) {
      str += static_cast<char>(c);
    } else if (c < 0x800) {
      str += static_cast<char>(0xC0 | (c >> 6));
      str += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      str += static_cast<char>(0xE0 | (c >> 12));
      str += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      str += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      str += static_cast<char>(0xF0 | (c >> 18));
      str += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      str += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      str += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
  return str;
}

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
