// yarvbook format FORMAT VALUE...: renders each value through a number format.
#include "FormatCommand.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Utf8.h"
#include "yarvbook.h"

namespace {

// A value that reads completely as a number is a number; anything else is text.
bool ReadNumber(const char* psz, double& r) {
  if (!*psz) return false;
  char* pEnd = nullptr;
  errno = 0;
  r = std::strtod(psz, &pEnd);
  return *pEnd == 0 && errno == 0;
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
    return 1;
  }
  for (; i < argc; ++i) {
    double r = 0;
    if (ReadNumber(argv[i], r)) {
      format.Format(r);
    } else {
      const std::u16string strText = FromUtf8(argv[i]);
      format.Format(strText.c_str(), static_cast<int>(strText.size()));
    }
    std::printf("%s\n", ToUtf8(CSingleFormat::m_Buf, CSingleFormat::m_wFormattedLen).c_str());
  }
  return 0;
}
