// Movable blocks: contents survive a resize, locks nest, the failure hook bites.
#include <gtest/gtest.h>

#include <cstring>

#include "platform/GlobalMemory.h"

namespace {

std::size_t g_nFailAt = 0;
bool FailAtOrAbove(std::size_t nBytes) { return nBytes >= g_nFailAt; }

TEST(GlobalMemory, ZeroInitAndSize) {
  HGLOBAL h = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 64);
  ASSERT_NE(nullptr, h);
  EXPECT_EQ(64u, GlobalSize(h));
  const auto* p = static_cast<const unsigned char*>(GlobalLock(h));
  ASSERT_NE(nullptr, p);
  for (int i = 0; i < 64; ++i) EXPECT_EQ(0, p[i]) << i;
  EXPECT_FALSE(GlobalUnlock(h));
  EXPECT_EQ(nullptr, GlobalFree(h));
}

TEST(GlobalMemory, ReAllocKeepsContentsAndZeroesTheGrowth) {
  HGLOBAL h = GlobalAlloc(GMEM_MOVEABLE, 10);
  ASSERT_NE(nullptr, h);
  std::memcpy(GlobalLock(h), "0123456789", 10);
  GlobalUnlock(h);
  for (std::size_t nSize : {std::size_t{4096}, std::size_t{1} << 20}) {
    ASSERT_EQ(h, GlobalReAlloc(h, nSize, GMEM_MOVEABLE | GMEM_ZEROINIT));
    const char* p = static_cast<const char*>(GlobalLock(h));
    EXPECT_EQ(0, std::memcmp(p, "0123456789", 10));
    EXPECT_EQ(0, p[10]);
    EXPECT_EQ(0, p[nSize - 1]);
    GlobalUnlock(h);
    EXPECT_EQ(nSize, GlobalSize(h));
  }
  ASSERT_EQ(h, GlobalReAlloc(h, 3, GMEM_MOVEABLE));  // shrinking keeps the head
  EXPECT_EQ(0, std::memcmp(GlobalLock(h), "012", 3));
  GlobalUnlock(h);
  GlobalFree(h);
}

TEST(GlobalMemory, LocksNestAndALockedBlockDoesNotResize) {
  HGLOBAL h = GlobalAlloc(GMEM_MOVEABLE, 8);
  ASSERT_NE(nullptr, h);
  void* p1 = GlobalLock(h);
  void* p2 = GlobalLock(h);
  EXPECT_EQ(p1, p2);
  EXPECT_EQ(nullptr, GlobalReAlloc(h, 16, GMEM_MOVEABLE));
  EXPECT_EQ(8u, GlobalSize(h));
  EXPECT_TRUE(GlobalUnlock(h));   // one lock still held
  EXPECT_FALSE(GlobalUnlock(h));  // now free
  EXPECT_FALSE(GlobalUnlock(h));  // unlocking an unlocked block is harmless
  EXPECT_EQ(h, GlobalReAlloc(h, 16, GMEM_MOVEABLE));
  GlobalFree(h);
}

TEST(GlobalMemory, NullHandles) {
  EXPECT_EQ(nullptr, GlobalLock(nullptr));
  EXPECT_FALSE(GlobalUnlock(nullptr));
  EXPECT_EQ(0u, GlobalSize(nullptr));
  EXPECT_EQ(nullptr, GlobalReAlloc(nullptr, 4, GMEM_MOVEABLE));
  EXPECT_EQ(nullptr, GlobalFree(nullptr));
}

TEST(GlobalMemory, FailureHookFailsAllocAndLeavesReAllocatedBlockIntact) {
  HGLOBAL h = GlobalAlloc(GMEM_MOVEABLE, 4);
  ASSERT_NE(nullptr, h);
  std::memcpy(GlobalLock(h), "abcd", 4);
  GlobalUnlock(h);
  g_nFailAt = 100;
  SetGlobalAllocFailureHook(&FailAtOrAbove);
  EXPECT_EQ(nullptr, GlobalAlloc(GMEM_MOVEABLE, 100));
  HGLOBAL hSmall = GlobalAlloc(GMEM_MOVEABLE, 99);  // one below the threshold
  EXPECT_NE(nullptr, hSmall);
  GlobalFree(hSmall);
  EXPECT_EQ(nullptr, GlobalReAlloc(h, 100, GMEM_MOVEABLE));
  EXPECT_EQ(4u, GlobalSize(h));
  EXPECT_EQ(0, std::memcmp(GlobalLock(h), "abcd", 4));
  GlobalUnlock(h);
  SetGlobalAllocFailureHook(nullptr);
  EXPECT_EQ(h, GlobalReAlloc(h, 100, GMEM_MOVEABLE));
  GlobalFree(h);
}

}  // namespace
