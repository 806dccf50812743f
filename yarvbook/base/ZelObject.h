// CZelObject: the root of the polymorphic model objects (array elements, pooled
// records, rows, sheets, books). It also holds two pieces of process-wide state that
// the model shares: the context of a copy between sheets or books, and the clean-up
// stack of objects to delete when an operation fails half-way.
#pragma once

#include "base/Export.h"

class CBookBase;
class CSheetBase;

class YARVBOOK_API CZelObject {
 public:
  CZelObject() = default;
  CZelObject(const CZelObject&) = delete;
  CZelObject& operator=(const CZelObject&) = delete;

  // The virtual operations, in slot order. The base versions do nothing and return
  // null, 0 or false.
  virtual ~CZelObject();
  // Frees what the object holds, leaving it empty and reusable.
  virtual void Clear();
  // A new object of the same class with equal contents, owned by the caller; null
  // where cloning is not supported. May throw CZelException (memory).
  virtual CZelObject* Clone() const;
  // Replaces this object's contents with a copy of pSrc's, which is of the same
  // class. May throw CZelException (memory).
  virtual void Copy(const CZelObject* pSrc);
  // 0 when the contents are equal; otherwise the sign orders the two (pooled records
  // use only equality). pOther is of the same class.
  virtual int Compare(const CZelObject* pOther) const;
  // True when the object holds nothing worth keeping (a container deletes it then).
  virtual bool IsEmpty() const;
  // Releases spare storage and empty parts.
  virtual void Shrink();
  // Renumbering state of pooled records (see CZelIndexObject).
  virtual void SetDefNewIndex();
  virtual bool IsDefNewIndex() const;
  virtual void SetUsedNewIndex();
  virtual bool IsUsedNewIndex() const;
  virtual void SetNewIndex(int nIndex);
  virtual int GetNewIndex() const;

  bool operator==(const CZelObject& other) const { return Compare(&other) == 0; }

  // ---- Copy between sheets and books -------------------------------------------
  // The whole copy context, for a copy started while another is in progress.
  struct TCopyInfo {
    bool bInCopy;
    CSheetBase* pSrcSheet;
    CSheetBase* pDstSheet;
    CBookBase* pSrcBook;
    CBookBase* pDstBook;
    int nNoCopyBetweenBooks;
    int nNoCopyBetweenSheets;
  };

  // Starts a copy from pSrcSheet (in pSrcBook) to pDstSheet (in pDstBook). The base
  // layer knows nothing of sheets, so the caller names the books: they are the books
  // that own the two sheets. The no-copy counters become 1 when source and
  // destination are the same (book, sheet), else 0.
  static void PrepareForCopy(CSheetBase* pDstSheet, CSheetBase* pSrcSheet, CBookBase* pDstBook,
                             CBookBase* pSrcBook);
  // Ends the copy: sheets and books cleared, both counters 1, not in copy.
  static void EndCopy();
  // Nest a section that behaves as a copy inside one book: both counters move together.
  static void IncNoCopyBetweenBooks();
  static void DecNoCopyBetweenBooks();
  static bool IsCopyBetweenBooks() { return m_bNoCopyBetweenBooks == 0; }
  static bool IsCopyBetweenSheets() { return m_bNoCopyBetweenSheets == 0; }
  static bool IsCopyProcessActive() { return m_bInCopy; }
  static void BackupCopyInfo(TCopyInfo* pBackup);
  static void RestoreCopyInfo(const TCopyInfo& backup);

  static bool m_bInCopy;
  static CSheetBase* m_pSrcSheet;
  static CSheetBase* m_pDstSheet;
  static CBookBase* m_pSrcBook;
  static CBookBase* m_pDstBook;
  // Counters despite the flag prefix: 0 means "copying between different ones".
  static int m_bNoCopyBetweenBooks;
  static int m_bNoCopyBetweenSheets;

  // ---- Clean-up stack ------------------------------------------------------------
  // An operation that may throw half-way pushes each object it creates before the
  // object has another owner, pops it once ownership has passed on, and its handler
  // calls CleanupObjects(). Callers never hold more than kMaxCleanupObjects.
  static constexpr int kMaxCleanupObjects = 8;
  static void SaveCleanupObject(CZelObject* pObj);
  // Drops the top entry without deleting it.
  static void PopCleanupObject();
  // Deletes every object on the stack, top first, and empties it.
  static void CleanupObjects();

  static CZelObject* m_pCleanupObjects[kMaxCleanupObjects];
  static int m_nCleanupObjects;
};
