#include "Utf8.h"

void AppendUtf16(std::u16string& str, char32_t c) {
  if (c >= 0x10000) {
    c -= 0x10000;
    str += static_cast<char16_t>(0xD800 + (c >> 10));
    str += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    return;
  }
  str += static_cast<char16_t>(c);
}

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
    AppendUtf16(str, c);
  }
  return str;
}

void AppendUtf8(std::string& out, const char16_t* pwsz, std::size_t nLen) {
  for (std::size_t i = 0; i < nLen; ++i) {
    char32_t c = pwsz[i];
    if (c >= 0xD800 && c <= 0xDFFF) {
      if (c < 0xDC00 && i + 1 < nLen && pwsz[i + 1] >= 0xDC00 && pwsz[i + 1] <= 0xDFFF)
        c = 0x10000 + ((c - 0xD800) << 10) + (pwsz[++i] - 0xDC00);
      else
        c = 0xFFFD;
    }
    if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
      out += static_cast<char>(0xE0 | (c >> 12));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
      out += static_cast<char>(0xF0 | (c >> 18));
      out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
      out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (c & 0x3F));
    }
  }
}

std::string ToUtf8(const char16_t* pwsz, int nLen) {
  std::string str;
  AppendUtf8(str, pwsz, nLen < 0 ? 0 : static_cast<std::size_t>(nLen));
  return str;
}
