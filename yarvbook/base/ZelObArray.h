// CZelObArray: a growable array of owned CZelObject pointers, the base of the book,
// the sheet and the row. Slots may be null. Besides the usual array operations it
// offers the block move that inserting and deleting rows and columns is built on.
// Clear and Shrink have a virtual form and an indexed one: a derived class that
// overrides the virtual form adds `using CZelObArray::Clear;` (and Shrink) to keep both.
#pragma once

#include "base/Export.h"
#include "base/ZelObject.h"

class YARVBOOK_API CZelObArray : public CZelObject {
 public:
  CZelObArray() = default;
  // Deletes the objects (through CZelObArray::FreeObject: a derived class that does
  // not own all its slots must empty them in its own destructor).
  ~CZelObArray() override;

  // Deletes every object and frees the storage.
  void Clear() override;
  // A CZelObArray holding clones of the objects (null slots stay null). Derived
  // classes override it to make their own class.
  CZelObject* Clone() const override;
  // Replaces the contents by clones of pSrc's objects; pSrc is a CZelObArray.
  void Copy(const CZelObject* pSrc) override;
  // True when no slot is in use (after Shrink(), when no slot holds an object).
  bool IsEmpty() const override { return m_nSize == 0; }
  // Drops trailing null slots: the size becomes one past the last object.
  void Shrink() override;
  // Slots appended to the root's: the highest index a block move may reach.
  virtual int MaxIndex() const { return 65535; }
  // Sets the number of slots. A growBy other than -1 becomes the stored step.
  // newSize 0 frees the storage. Without storage exactly newSize zeroed slots are
  // allocated; past the capacity the step is the stored one or, when that is 0,
  // size / 8 clamped to 4..1024, and the capacity becomes the larger of capacity +
  // step and newSize. Slots exposed within the capacity are zeroed. Shrinking never
  // deletes the objects of dropped slots: clear them first. Throws CZelException
  // (memory) on failure, leaving the array as it was.
  virtual void SetSize(int nNewSize, int nGrowBy = -1);
  // Every deletion of an element goes through here. A derived class that does not
  // own some of its elements (a row's shared cells) overrides it.
  virtual void FreeObject(CZelObject* pObj);

  int GetSize() const { return m_nSize; }
  int GetUpperBound() const { return m_nSize - 1; }
  int GetCapacity() const { return m_nMaxSize; }
  int GetGrowBy() const { return m_nGrowBy; }
  bool IsValidIndex(int i) const { return i >= 0 && i < m_nSize; }
  // Indexes must be valid (0 <= i < size).
  CZelObject* GetAt(int i) const { return m_pData[i]; }
  // Stores pObj without deleting what the slot held.
  void SetAt(int i, CZelObject* pObj) { m_pData[i] = pObj; }
  CZelObject*& ElementAt(int i) { return m_pData[i]; }
  CZelObject* operator[](int i) const { return m_pData[i]; }
  CZelObject*& operator[](int i) { return m_pData[i]; }
  // Null while the array has no storage. Valid until the next size change.
  CZelObject** GetData() const { return m_pData; }

  // SetSize(n) when the size is below n.
  void GrowSize(int n);
  // Appends one null slot; returns its index.
  int GrowSize();
  // Grows to i + 1 slots when needed, then SetAt.
  void SetAtGrow(int i, CZelObject* pObj);
  // Appends pObj (taking it over); returns its index.
  int Add(CZelObject* pObj);
  // Inserts nCount slots before i (at or past the end: grows to i + nCount), each
  // holding pObj; pObj must be null when nCount > 1, since the array owns each
  // object once.
  void InsertAt(int i, CZelObject* pObj, int nCount = 1);
  // Inserts clones of the objects of *pArray before slot i.
  void InsertAt(int i, const CZelObArray* pArray);
  // Removes nCount slots from i on (clipped to the size), closing the gap. The
  // objects are not deleted: clear them first or take them over.
  void RemoveAt(int i, int nCount = 1);
  // Appends clones of the objects of *pArray; returns the index of the first.
  int Append(const CZelObArray* pArray);
  // Drops every slot and the storage without deleting the objects.
  void RemoveAll() { SetSize(0); }
  // Reallocates the storage to exactly the size.
  void FreeExtra();
  // Deletes the objects of the slots i .. i + nCount - 1 (clipped to the size) and
  // nulls those slots.
  void Clear(int i, int nCount);

  // Moves the block of nCount slots at nSrc to nDest. nCount is clipped so that the
  // block ends at MaxIndex() + 1 at most, and the source run to the size. Objects
  // standing in destination slots are deleted, moved-from slots are nulled, and the
  // destination slots that received nothing (the source ran past the size) are
  // cleared. Moving up grows the array to hold the last moved slot.
  void Move(int nDest, int nSrc, int nCount);
  // Opens nCount empty slots at i, moving the later slots up; objects pushed past
  // MaxIndex() are deleted. At or past the end it only grows the array.
  void Insert(int i, int nCount);
  // Deletes the objects of nCount slots at i and moves the later slots down; the
  // size stays and the freed slots at the end are null.
  void Delete(int i, int nCount);
  // Shrinks the object in slot i and deletes it when it is then empty; i == -1
  // shrinks the array itself (Shrink()).
  void Shrink(int i);
  // Shrink(i) for every slot, then Shrink().
  void ShrinkArrayOfArrays();

 protected:
  CZelObject** m_pData = nullptr;  // owned storage; the objects are owned too
  int m_nSize = 0;
  int m_nMaxSize = 0;
  int m_nGrowBy = 0;  // 0: chosen from the size
};
