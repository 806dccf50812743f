#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "base/ZelException.h"
#include "base/ZelMemFile.h"

namespace {

// Fails every allocation or reallocation of at least s_nFailFrom bytes.
std::size_t s_nFailFrom = 0;
bool FailLarge(std::size_t nBytes) { return nBytes >= s_nFailFrom; }

class ZelMemFileTest : public ::testing::Test {
 protected:
  void TearDown() override { SetGlobalAllocFailureHook(nullptr); }

  static void FailFrom(std::size_t nBytes) {
    s_nFailFrom = nBytes;
    SetGlobalAllocFailureHook(FailLarge);
  }
  static int ErrorOf(void (*pfnBody)(CZelMemFile&), CZelMemFile& file) {
    try {
      pfnBody(file);
    } catch (const CZelException& e) {
      return e.get_ErrorNum();
    }
    return 0;
  }
};

TEST_F(ZelMemFileTest, FinishShrinksToContentsAndTerminator) {
  CZelMemFile file;
  file.Init();
  EXPECT_EQ(CZelMemFile::kInitialSize, file.GetCapacity());
  file.Write("abc", 3);
  HGLOBAL hMem = file.Finish();
  ASSERT_NE(nullptr, hMem);
  EXPECT_EQ(4u, GlobalSize(hMem));
  const char* p = static_cast<const char*>(GlobalLock(hMem));
  EXPECT_EQ(0, std::memcmp(p, "abc", 4));
  GlobalUnlock(hMem);
  GlobalFree(hMem);
  EXPECT_EQ(nullptr, file.Finish());  // handed over: nothing left
}

// One doubling per write; a write larger than that grows to exactly what it needs.
TEST_F(ZelMemFileTest, GrowthDoublesOncePerWrite) {
  struct TCase {
    std::size_t nWrite;
    std::size_t nCapacityAfter;
  };
  constexpr TCase kSteps[] = {
      {16383, 16384},                    // one byte short of full
      {1, 16384},                        // exactly full
      {1, 32768},                        // one past: doubled
      {16383, 32768},                    // full again
      {1, 65536},     {200000, 232769},  // more than double: exactly the length needed
  };
  CZelMemFile file;
  file.Init();
  std::vector<unsigned char> expected;
  unsigned char nNext = 1;
  for (const TCase& c : kSteps) {
    std::vector<unsigned char> chunk(c.nWrite);
    for (unsigned char& b : chunk) b = nNext++;
    file.Write(chunk.data(), chunk.size());
    expected.insert(expected.end(), chunk.begin(), chunk.end());
    EXPECT_EQ(c.nCapacityAfter, file.GetCapacity()) << "after " << expected.size() << " bytes";
  }
  ASSERT_EQ(expected.size(), file.GetLength());
  EXPECT_EQ(0, std::memcmp(expected.data(), file.GetData(), expected.size()));
}

TEST_F(ZelMemFileTest, AllocationFailuresThrowError3WithoutLeaks) {
  CZelMemFile file;
  FailFrom(0);
  EXPECT_EQ(3, ErrorOf([](CZelMemFile& f) { f.Init(); }, file));
  EXPECT_EQ(nullptr, file.Finish());

  FailFrom(32768);  // the first doubling fails
  file.Init();
  file.Write("x", 1);
  EXPECT_EQ(3, ErrorOf(
                   [](CZelMemFile& f) {
                     std::vector<char> big(20000, 'y');
                     f.Write(big.data(), big.size());
                   },
                   file));
  EXPECT_EQ(1u, file.GetLength());  // what was written stays usable
  file.Write("z", 1);
  EXPECT_EQ('z', file.GetData()[1]);
  // The file's destructor frees the block: the sanitizer build reports a leak if not.
}

TEST_F(ZelMemFileTest, FailedShrinkFreesTheBlock) {
  CZelMemFile file;
  file.Init();
  file.Write("abc", 3);
  FailFrom(0);  // the shrink is a reallocation too
  EXPECT_EQ(nullptr, file.Finish());
  EXPECT_EQ(0u, file.GetLength());
}

}  // namespace
