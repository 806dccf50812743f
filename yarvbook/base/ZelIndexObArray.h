// CZelIndexObArray: a pool that stores equal records once and hands out their
// indexes. Owners keep the index, never the pointer. Unused entries are removed by
// a three-step renumbering:
//   PrepareNewIndex(start);           every entry from start on: unclaimed
//   ... owners mark each entry they refer to: pool[i]->SetUsedNewIndex() ...
//   if (NeedsCompacting(start)) {
//     ... owners rewrite each stored index i to pool[i]->GetNewIndex() ...
//     Compact(start);
//   }
#pragma once

#include "base/Export.h"
#include "base/ZelIndexObject.h"
#include "base/ZelObArray.h"

class YARVBOOK_API CZelIndexObArray : public CZelObArray {
 public:
  // The pool holds at most nMaxIndex + 1 entries. wDefIndex names the entry that
  // stands for "no particular record" (15 for cell formats); it is what
  // GetCopyIndex answers for an index the source pool does not hold.
  explicit CZelIndexObArray(int nMaxIndex = 65535, unsigned short wDefIndex = 0)
      : m_nMaxIndex(nMaxIndex), m_wDefIndex(wDefIndex) {}

  int MaxIndex() const override { return m_nMaxIndex; }
  unsigned short GetDefIndex() const { return m_wDefIndex; }
  bool IsFull() const { return m_nSize > m_nMaxIndex; }

  CZelIndexObject* GetEntry(int i) const { return static_cast<CZelIndexObject*>(m_pData[i]); }

  // The first index whose entry compares equal to *pObj, or -1. Linear in the pool
  // size: pools are bounded by MaxIndex().
  int FindIndex(const CZelObject* pObj) const;
  // Takes pObj over. When an equal entry exists pObj is deleted and that index
  // returned; when the pool is full pObj is deleted and CZelException (memory)
  // thrown; otherwise pObj is appended and its index returned.
  int MakeNewIndex(CZelIndexObject* pObj);
  // MakeNewIndex for a record brought over from another book's pool. Derived pools
  // whose records refer to book-level data rewrite those references before calling it.
  int MakeCopyIndex(CZelIndexObject* pObj);
  // The index in this pool of entry nIndex of *pSrcPool: nIndex itself when the
  // source is this pool; otherwise an equal entry, added (as a clone) when missing.
  // An index that the source does not hold (out of range or a null slot) gives
  // nDefIndex, or GetDefIndex() when nDefIndex is -1. Throws like MakeNewIndex.
  int GetCopyIndex(const CZelIndexObArray* pSrcPool, int nIndex, int nDefIndex = -1);

  // Marks every entry from nStart on unclaimed.
  void PrepareNewIndex(int nStart);
  // Numbers the claimed entries from nStart on consecutively from nStart upward.
  // When some entry there is unclaimed (so compaction would remove something), also
  // gives every entry before nStart its own index and returns true; else false.
  bool NeedsCompacting(int nStart);
  // Deletes the unclaimed entries from nStart on, moves the claimed ones down in
  // order, shrinks the array and calls EndNewIndex().
  void Compact(int nStart);
  // Leaves every entry claimed, with its own index as its new index.
  void EndNewIndex();

 protected:
  int m_nMaxIndex;
  unsigned short m_wDefIndex;
};
