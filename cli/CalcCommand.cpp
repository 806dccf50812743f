// yarvbook calc FILE.csv...: loads CSV files into one book, a sheet per file,
// recalculates it and writes every cell's value back as CSV of the same shape.
// yarvbook eval FORMULA: the value of one formula on an empty book.
#include "CalcCommand.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "CellIo.h"
#include "Csv.h"
#include "Utf8.h"
#include "yarvbook.h"

namespace {

constexpr const char kCalcUsage[] =
    "usage: yarvbook calc IN.csv [MORE.csv ...] [--raw] [-o OUT.csv | --outdir DIR]\n"
    "                     [--iterate MAXPASSES,MAXCHANGE] [--manual] [--locale TAG]\n";
constexpr const char kEvalUsage[] = "usage: yarvbook eval [--raw] [--locale TAG] FORMULA\n";

// Short texts for the parser's error codes; keep in step with CFormulaParser::EError.
constexpr const char* kParseErrorTexts[] = {
    "no error",
    "unexpected character",
    "missing \")\"",
    "not a function",
    "too few arguments",
    "string without its closing quote",
    "string longer than 255 characters",
    "too few arguments",
    "too many arguments",
    "more than 30 nested function calls",
    "a reference to another sheet is not allowed here",
};
static_assert(std::size(kParseErrorTexts) == CFormulaParser::per3dForbidden + 1,
              "one text per parser error code");

const char* GetParseErrorText(int nError) {
  return nError >= 0 && nError < static_cast<int>(std::size(kParseErrorTexts))
             ? kParseErrorTexts[nError]
             : "unknown error";
}

struct TCalcOptions {
  std::vector<const char*> inputs;
  const char* pszOut = nullptr;
  const char* pszOutDir = nullptr;
  const char* pszLocale = nullptr;
  bool bRaw = false;
  bool bManual = false;
  bool bIterate = false;
  unsigned nMaxPasses = 0;
  double rMaxChange = 0;
};

// What the writer needs to give a sheet back the shape it was read in.
struct TSheetShape {
  std::vector<unsigned short> fieldCounts;  // per record
  bool bCrLf = false;
};

// "100,0.001": at least one pass and a finite, non-negative change.
bool ParseIterate(const char* psz, TCalcOptions& opts) {
  char* pEnd = nullptr;
  errno = 0;
  const unsigned long nPasses = std::strtoul(psz, &pEnd, 10);
  if (pEnd == psz || *pEnd != ',' || errno != 0 || nPasses < 1 || nPasses > 0xFFFFFFFFul ||
      *psz == '-')
    return false;
  const char* pszChange = pEnd + 1;
  const double rChange = std::strtod(pszChange, &pEnd);
  if (pEnd == pszChange || *pEnd != 0 || !std::isfinite(rChange) || rChange < 0) return false;
  opts.bIterate = true;
  opts.nMaxPasses = static_cast<unsigned>(nPasses);
  opts.rMaxChange = rChange;
  return true;
}

// Returns 0 or the exit code of a usage error (the message printed).
int ParseCalcArgs(int argc, char** argv, TCalcOptions& opts) {
  for (int i = 0; i < argc; ++i) {
    const char* pszArg = argv[i];
    const bool bHasValue = i + 1 < argc;
    if (std::strcmp(pszArg, "--raw") == 0) {
      opts.bRaw = true;
    } else if (std::strcmp(pszArg, "--manual") == 0) {
      opts.bManual = true;
    } else if (std::strcmp(pszArg, "-o") == 0 && bHasValue) {
      opts.pszOut = argv[++i];
    } else if (std::strcmp(pszArg, "--outdir") == 0 && bHasValue) {
      opts.pszOutDir = argv[++i];
    } else if (std::strcmp(pszArg, "--locale") == 0 && bHasValue) {
      opts.pszLocale = argv[++i];
    } else if (std::strcmp(pszArg, "--iterate") == 0 && bHasValue) {
      if (!ParseIterate(argv[++i], opts)) {
        std::fprintf(stderr,
                     "yarvbook calc: --iterate wants MAXPASSES,MAXCHANGE (a count of at least 1 "
                     "and a non-negative number), not '%s'\n",
                     argv[i]);
        return 2;
      }
    } else if (pszArg[0] == '-' && pszArg[1] != 0) {
      std::fprintf(stderr, "yarvbook calc: unknown or incomplete option '%s'\n%s", pszArg,
                   kCalcUsage);
      return 2;
    } else {
      opts.inputs.push_back(pszArg);
    }
  }
  const char* pszProblem = nullptr;
  if (opts.inputs.empty())
    pszProblem = "no input file";
  else if (opts.pszOut && opts.pszOutDir)
    pszProblem = "-o and --outdir exclude each other";
  else if (opts.inputs.size() > 1 && !opts.pszOutDir)
    pszProblem = "several inputs need --outdir";
  if (!pszProblem) return 0;
  std::fprintf(stderr, "yarvbook calc: %s\n%s", pszProblem, kCalcUsage);
  return 2;
}

// The file name without its folder and its last extension: "data/budget.csv" gives
// "budget".
std::string_view GetStem(std::string_view path) {
  const std::size_t nSlash = path.find_last_of('/');
  if (nSlash != std::string_view::npos) path.remove_prefix(nSlash + 1);
  const std::size_t nDot = path.find_last_of('.');
  if (nDot != std::string_view::npos && nDot > 0) path.remove_suffix(path.size() - nDot);
  return path;
}

std::string GetCellName(int nRow, int nCol) {
  std::string str;
  for (const char16_t* p = FormatColNr(nCol); *p; ++p) str += static_cast<char>(*p);
  for (const char16_t* p = FormatRowNr(nRow); *p; ++p) str += static_cast<char>(*p);
  return str;
}

// Reads one CSV file into pSheet. Returns false (message printed) when the file
// cannot be read or is malformed; formulas that do not parse only warn.
bool LoadSheet(const char* pszPath, CSheetBase& sheet, TSheetShape& shape) {
  std::FILE* pFile = std::fopen(pszPath, "rb");
  if (!pFile) {
    std::fprintf(stderr, "yarvbook calc: %s: cannot open: %s\n", pszPath, std::strerror(errno));
    return false;
  }
  CCsvReader reader(pFile);
  std::vector<std::u16string> fields;
  int nFields;
  int nRow = 0;
  while ((nFields = reader.ReadRecord(fields)) > 0) {
    for (int nCol = 0; nCol < nFields; ++nCol) {
      TFormulaFault fault;
      if (EnterCellText(sheet, TCell(nRow, nCol), fields[nCol], &fault)) continue;
      std::fprintf(stderr,
                   "yarvbook calc: %s: %s: the formula does not parse: error %d (%s) at "
                   "character %d; kept as text\n",
                   pszPath, GetCellName(nRow, nCol).c_str(), fault.nError,
                   GetParseErrorText(fault.nError), fault.nPos + 1);
    }
    shape.fieldCounts.push_back(static_cast<unsigned short>(nFields));
    ++nRow;
  }
  const bool bReadError = std::ferror(pFile) != 0;
  std::fclose(pFile);
  if (nFields < 0) {
    std::fprintf(stderr, "yarvbook calc: %s:%ld: %s\n", pszPath, reader.GetErrorLine(),
                 reader.GetError());
    return false;
  }
  if (bReadError) {
    std::fprintf(stderr, "yarvbook calc: %s: read error\n", pszPath);
    return false;
  }
  shape.bCrLf = reader.HasCrLf();
  return true;
}

// Writes the sheet as CSV in its input's shape. False when writing failed.
bool WriteSheet(std::FILE* pFile, const CSheetBase& sheet, const TSheetShape& shape, bool bRaw) {
  const char* pszLineEnd = shape.bCrLf ? "\r\n" : "\n";
  std::string strLine;
  std::u16string strText;
  const int nRows = static_cast<int>(shape.fieldCounts.size());
  for (int nRow = 0; nRow < nRows; ++nRow) {
    strLine.clear();
    for (int nCol = 0; nCol < shape.fieldCounts[nRow]; ++nCol) {
      if (nCol > 0) strLine += ',';
      GetCellOutputText(sheet, nRow, nCol, bRaw, strText);
      AppendCsvField(strLine, strText);
    }
    strLine += pszLineEnd;
    if (std::fwrite(strLine.data(), 1, strLine.size(), pFile) != strLine.size()) return false;
  }
  return true;
}

bool WriteSheetTo(const std::string& strPath, const CSheetBase& sheet, const TSheetShape& shape,
                  bool bRaw) {
  if (strPath.empty()) return WriteSheet(stdout, sheet, shape, bRaw) && std::fflush(stdout) == 0;
  std::FILE* pFile = std::fopen(strPath.c_str(), "wb");
  if (!pFile) {
    std::fprintf(stderr, "yarvbook calc: %s: cannot create: %s\n", strPath.c_str(),
                 std::strerror(errno));
    return false;
  }
  const bool bOk = WriteSheet(pFile, sheet, shape, bRaw);
  if (std::fclose(pFile) != 0 || !bOk) {
    std::fprintf(stderr, "yarvbook calc: %s: write error\n", strPath.c_str());
    return false;
  }
  return true;
}

int RunCalc(const TCalcOptions& opts) {
  CBookBase book;
  book.AddToList();
  if (opts.bIterate) book.SetIteration(1, opts.nMaxPasses, opts.rMaxChange);
  book.SetAutomaticRecalc(opts.bManual ? 0 : 1);

  // Every sheet exists before the first formula is read, so that formulas may refer
  // to any of the files by its stem.
  std::vector<CSheetBase*> sheets;
  for (const char* pszPath : opts.inputs) {
    const std::string_view stem = GetStem(pszPath);
    std::u16string strName;
    if (stem.empty() || !DecodeUtf8(stem, strName)) {
      std::fprintf(stderr, "yarvbook calc: %s: no usable sheet name in the file name\n", pszPath);
      return 1;
    }
    CSheetBase* pSheet = book.NewSheet(strName.c_str());
    if (!pSheet) {
      std::fprintf(stderr,
                   "yarvbook calc: %s: another input already gives the sheet name '%.*s' "
                   "(names ignore case and keep 31 characters)\n",
                   pszPath, static_cast<int>(stem.size()), stem.data());
      return 1;
    }
    sheets.push_back(pSheet);
  }
  std::vector<TSheetShape> shapes(sheets.size());
  for (std::size_t i = 0; i < sheets.size(); ++i) {
    if (!LoadSheet(opts.inputs[i], *sheets[i], shapes[i])) return 1;
  }

  // With automatic recalculation off, CheckRecalc only clears the book's
  // needs-recalculation mark: formulas keep the values they were stored with.
  if (book.GetAutomaticRecalc())
    book.Recalc();
  else
    book.CheckRecalc(1);
  if (book.HasCircularRefs())
    std::fprintf(stderr, "yarvbook calc: warning: circular references; %s\n",
                 book.GetIteration() ? "iterated" : "their cells are 0 (see --iterate)");

  for (std::size_t i = 0; i < sheets.size(); ++i) {
    std::string strPath;
    if (opts.pszOut) {
      strPath = opts.pszOut;
    } else if (opts.pszOutDir) {
      strPath = opts.pszOutDir;
      strPath += '/';
      strPath += GetStem(opts.inputs[i]);
      strPath += ".csv";
    }
    if (!WriteSheetTo(strPath, *sheets[i], shapes[i], opts.bRaw)) return 1;
  }
  return 0;
}

}  // namespace

int RunCalcCommand(int argc, char** argv) {
  TCalcOptions opts;
  if (const int nUsage = ParseCalcArgs(argc, argv, opts)) return nUsage;
  if (opts.pszLocale && !SetLocale(opts.pszLocale)) {
    std::fprintf(stderr, "yarvbook calc: unknown locale '%s'\n", opts.pszLocale);
    return 2;
  }
  try {
    return RunCalc(opts);
  } catch (const CZelException&) {
    std::fputs("yarvbook calc: out of memory\n", stderr);
    return 1;
  }
}

int RunEvalCommand(int argc, char** argv) {
  bool bRaw = false;
  const char* pszLocale = nullptr;
  const char* pszFormula = nullptr;
  for (int i = 0; i < argc; ++i) {
    if (std::strcmp(argv[i], "--raw") == 0) {
      bRaw = true;
    } else if (std::strcmp(argv[i], "--locale") == 0 && i + 1 < argc) {
      pszLocale = argv[++i];
    } else if (!pszFormula) {
      pszFormula = argv[i];
    } else {
      std::fputs(kEvalUsage, stderr);
      return 2;
    }
  }
  if (!pszFormula) {
    std::fputs(kEvalUsage, stderr);
    return 2;
  }
  if (pszLocale && !SetLocale(pszLocale)) {
    std::fprintf(stderr, "yarvbook eval: unknown locale '%s'\n", pszLocale);
    return 2;
  }
  std::u16string strFormula;
  if (!DecodeUtf8(pszFormula, strFormula)) {
    std::fputs("yarvbook eval: the formula is not valid UTF-8\n", stderr);
    return 2;
  }
  // "1+2" is taken as "=1+2"; positions are reported in the text as given.
  const int nShift = !strFormula.empty() && strFormula[0] == u'=' ? 0 : 1;
  if (nShift) strFormula.insert(0, 1, u'=');

  try {
    CBookBase book;
    book.AddToList();
    CSheetBase* pSheet = book.NewSheet();
    const TCell cell(0, 0);
    TFormulaFault fault;
    if (!EnterCellText(*pSheet, cell, strFormula, &fault)) {
      const int nPos = fault.nPos - nShift;  // index in the text as given
      std::fprintf(stderr,
                   "yarvbook eval: the formula does not parse: error %d (%s) at character %d\n",
                   fault.nError, GetParseErrorText(fault.nError), nPos + 1);
      std::fprintf(stderr, "%s\n", pszFormula);
      // One caret column per character: low surrogates share their pair's column.
      int nColumn = 0;
      for (int i = nShift; i < nShift + nPos && i < static_cast<int>(strFormula.size()); ++i) {
        if (strFormula[i] < 0xDC00 || strFormula[i] > 0xDFFF) ++nColumn;
      }
      std::fprintf(stderr, "%*s^\n", nColumn, "");
      return 1;
    }
    book.Recalc();
    std::u16string strText;
    GetCellOutputText(*pSheet, cell.row, cell.col, bRaw, strText);
    std::string strOut;
    AppendUtf8(strOut, strText.data(), strText.size());
    std::printf("%s\n", strOut.c_str());
    return 0;
  } catch (const CZelException&) {
    std::fputs("yarvbook eval: out of memory\n", stderr);
    return 1;
  }
}
