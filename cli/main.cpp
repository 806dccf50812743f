// yarvbook: the command-line host of libYarvBook.
#include <cstdio>
#include <cstring>

#include "CalcCommand.h"
#include "ConvertCommand.h"
#include "FormatCommand.h"
#include "yarvbook.h"

namespace {

constexpr const char kUsage[] =
    "usage: yarvbook COMMAND [ARGS...]\n"
    "\n"
    "Commands:\n"
    "  calc IN.csv [MORE.csv ...] [--raw] [-o OUT.csv | --outdir DIR]\n"
    "       [--iterate MAXPASSES,MAXCHANGE] [--manual] [--locale TAG]\n"
    "                     load CSV files (a sheet per file), recalculate, write CSV\n"
    "  eval [--raw] [--locale TAG] FORMULA\n"
    "                     print the value of one formula\n"
    "  convert --to r1c1|a1 [--at CELL] FORMULA\n"
    "                     print the formula in the other reference notation\n"
    "  format [--locale TAG] FORMAT VALUE...\n"
    "                     print each value rendered through the number format\n"
    "  --version          print the library version\n"
    "  --help             print this text\n";

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  const char* pszCommand = argv[1];
  if (std::strcmp(pszCommand, "--version") == 0) {
    std::printf("yarvbook %s\n", YarvBookVersion());
    return 0;
  }
  if (std::strcmp(pszCommand, "calc") == 0) return RunCalcCommand(argc - 2, argv + 2);
  if (std::strcmp(pszCommand, "eval") == 0) return RunEvalCommand(argc - 2, argv + 2);
  if (std::strcmp(pszCommand, "format") == 0) return RunFormatCommand(argc - 2, argv + 2);
  if (std::strcmp(pszCommand, "convert") == 0) return RunConvertCommand(argc - 2, argv + 2);
  if (std::strcmp(pszCommand, "--help") == 0 || std::strcmp(pszCommand, "-h") == 0) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  std::fprintf(stderr, "yarvbook: unknown command '%s'\n\n%s", pszCommand, kUsage);
  return 2;
}
