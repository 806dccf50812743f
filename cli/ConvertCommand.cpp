// yarvbook convert --to r1c1|a1 [--at CELL] FORMULA: prints the formula in the other
// reference notation, relative references measured from CELL (default A1).
#include "ConvertCommand.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "Utf8.h"
#include "yarvbook.h"

namespace {

constexpr const char kConvertUsage[] = "usage: yarvbook convert --to r1c1|a1 [--at CELL] FORMULA\n";

}  // namespace

int RunConvertCommand(int argc, char** argv) {
  const char* pszTo = nullptr;
  const char* pszAt = "A1";
  const char* pszFormula = nullptr;
  for (int i = 0; i < argc; ++i) {
    if (std::strcmp(argv[i], "--to") == 0 && i + 1 < argc) {
      pszTo = argv[++i];
    } else if (std::strcmp(argv[i], "--at") == 0 && i + 1 < argc) {
      pszAt = argv[++i];
    } else if (pszFormula == nullptr) {
      pszFormula = argv[i];
    } else {
      std::fputs(kConvertUsage, stderr);
      return 2;
    }
  }
  const bool bToR1C1 =
      pszTo != nullptr && (std::strcmp(pszTo, "r1c1") == 0 || std::strcmp(pszTo, "R1C1") == 0);
  const bool bToA1 =
      pszTo != nullptr && (std::strcmp(pszTo, "a1") == 0 || std::strcmp(pszTo, "A1") == 0);
  if ((!bToR1C1 && !bToA1) || pszFormula == nullptr) {
    std::fputs(kConvertUsage, stderr);
    return 2;
  }
  TCell base;
  if (!CvtRCNr(FromUtf8(pszAt).c_str(), &base)) {
    std::fprintf(stderr, "yarvbook: '%s' is not a cell\n", pszAt);
    return 2;
  }
  CFormulaConverter converter(nullptr, nullptr, base, 1);
  const std::u16string strFormula = FromUtf8(pszFormula);
  const std::u16string strResult =
      bToR1C1 ? converter.ToR1C1(strFormula.c_str()) : converter.ToA1(strFormula.c_str());
  if (converter.GetResult() != 0) {
    std::fprintf(stderr, "yarvbook: the formula does not parse: error %d at position %d\n",
                 converter.GetError(), converter.GetErrorPos());
    return 1;
  }
  std::printf("%s\n", ToUtf8(strResult.data(), static_cast<int>(strResult.size())).c_str());
  return 0;
}
