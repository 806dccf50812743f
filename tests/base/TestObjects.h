// A pooled test record with a live-instance count, and the leak-checking fixture of
// the object-array tests.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "base/ZelIndexObject.h"
#include "base/ZelObArray.h"

class CTestObj : public CZelIndexObject {
 public:
  explicit CTestObj(int nValue = 0) : m_nValue(nValue) { ++s_nLive; }
  ~CTestObj() override { --s_nLive; }

  CZelObject* Clone() const override { return new CTestObj(m_nValue); }
  void Copy(const CZelObject* pSrc) override {
    m_nValue = static_cast<const CTestObj*>(pSrc)->m_nValue;
  }
  int Compare(const CZelObject* pOther) const override {
    const int nOther = static_cast<const CTestObj*>(pOther)->m_nValue;
    return m_nValue < nOther ? -1 : m_nValue > nOther ? 1 : 0;
  }
  // Shrink zeroes negative values, so that ShrinkArrayOfArrays can be seen to call it.
  void Shrink() override {
    if (m_nValue < 0) m_nValue = 0;
  }
  bool IsEmpty() const override { return m_nValue == 0; }

  int m_nValue;
  static inline int s_nLive = 0;
};

// Value held in a slot, or -1 for a null slot.
inline int ValueAt(const CZelObArray& array, int i) {
  const CZelObject* pObj = array.GetAt(i);
  return pObj ? static_cast<const CTestObj*>(pObj)->m_nValue : -1;
}

inline std::vector<int> Values(const CZelObArray& array) {
  std::vector<int> result;
  for (int i = 0; i < array.GetSize(); ++i) result.push_back(ValueAt(array, i));
  return result;
}

// Fails a test that leaves more or fewer test records alive than it found.
class CLiveCountTest : public ::testing::Test {
 protected:
  void SetUp() override { m_nLiveBefore = CTestObj::s_nLive; }
  void TearDown() override { EXPECT_EQ(m_nLiveBefore, CTestObj::s_nLive) << "objects leaked"; }
  int m_nLiveBefore = 0;
};
