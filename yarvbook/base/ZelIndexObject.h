// CZelIndexObject: a record kept once in a CZelIndexObArray pool (a cell format, a
// merged block, an external sheet) and referred to by its index. It carries the
// renumbering state that compacting the pool works with.
#pragma once

#include "base/Export.h"
#include "base/ZelObject.h"

class YARVBOOK_API CZelIndexObject : public CZelObject {
 public:
  // Unclaimed: nobody has said it still refers to the entry.
  void SetDefNewIndex() override { m_bUsed = false; }
  bool IsDefNewIndex() const override { return !m_bUsed; }
  // Claimed: something still refers to the entry; compaction keeps it.
  void SetUsedNewIndex() override { m_bUsed = true; }
  bool IsUsedNewIndex() const override { return m_bUsed; }
  // The index the entry has once the pool is compacted.
  void SetNewIndex(int nIndex) override { m_nNewIndex = nIndex; }
  int GetNewIndex() const override { return m_nNewIndex; }

 private:
  int m_nNewIndex = 0;
  bool m_bUsed = true;
};
