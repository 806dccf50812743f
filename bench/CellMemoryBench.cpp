// Memory per cell for a block of 65,536 x 10 positions, measured as the growth of
// the heap (mallinfo2: bytes in use, small blocks and mapped ones) and of the
// resident set, and the time to read a cell. One book per kind of block, freed
// before the next, so every figure starts from the same heap.
#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

#include "book/BookBase.h"
#include "book/CellRecord.h"
#include "book/SharedCellTable.h"
#include "book/SheetBase.h"

namespace {

constexpr int kRows = 65536;
constexpr int kCols = 10;
constexpr double kCells = static_cast<double>(kRows) * kCols;

long long HeapBytes() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<long long>(info.uordblks + info.hblkhd);
}

long long ResidentBytes() {
  long long nPages = 0, nResident = 0;
  if (FILE* pFile = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(pFile, "%lld %lld", &nPages, &nResident) != 2) nResident = 0;
    std::fclose(pFile);
  }
  return nResident * sysconf(_SC_PAGESIZE);
}

template <class TFill>
void Measure(const char* pszKind, TFill fill) {
  malloc_trim(0);
  const long long nHeap0 = HeapBytes(), nRss0 = ResidentBytes();
  auto pBook = std::make_unique<CBookBase>();
  CSheetBase* pSheet = pBook->NewSheet(u"Bench");
  fill(*pSheet);
  pSheet->Optimize();  // spare slots of the row arrays go back
  const long long nHeap = HeapBytes() - nHeap0, nRss = ResidentBytes() - nRss0;
  std::printf("%-24s heap %6.1f bytes/cell   resident %6.1f bytes/cell\n", pszKind, nHeap / kCells,
              nRss / kCells);
  if (std::string(pszKind) == "number") {
    // Reading: row array index, then the cell slot. Summed so nothing is elided.
    double rSum = 0;
    const auto t0 = std::chrono::steady_clock::now();
    constexpr int kPasses = 20;
    for (int nPass = 0; nPass < kPasses; ++nPass)
      for (int r = 0; r < kRows; ++r)
        for (int c = 0; c < kCols; ++c) rSum += pSheet->QuickGetNumber(r, c);
    const auto t1 = std::chrono::steady_clock::now();
    const double rNs = std::chrono::duration<double, std::nano>(t1 - t0).count();
    std::printf("%-24s %.2f ns per cell read (sum %.0f)\n", "read", rNs / (kCells * kPasses), rSum);
  }
  pBook.reset();
  CSharedCellTable::Get().RemoveAllSCT();
}

}  // namespace

int main() {
  std::printf("CCell object: %zu bytes; row slot: %zu bytes\n", sizeof(CCell), sizeof(CCell*));
  Measure("number", [](CSheetBase& sheet) {
    for (int r = 0; r < kRows; ++r)
      for (int c = 0; c < kCols; ++c) sheet.SetNumber(TCell(r, c), r * 0.5 + c);
  });
  Measure("distinct text (8 ch)", [](CSheetBase& sheet) {
    char16_t wsz[9] = u"t0000000";
    for (int r = 0; r < kRows; ++r)
      for (int c = 0; c < kCols; ++c) {
        int n = r * kCols + c;
        for (int i = 7; i >= 1; --i, n /= 10) wsz[i] = static_cast<char16_t>(u'0' + n % 10);
        sheet.SetText(TCell(r, c), wsz);
      }
  });
  Measure("formatted empty", [](CSheetBase& sheet) {
    for (int r = 0; r < kRows; ++r)
      for (int c = 0; c < kCols; ++c) sheet.SetCellFormat(TCell(r, c), 20);
  });
  return 0;
}
