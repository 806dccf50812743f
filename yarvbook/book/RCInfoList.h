// CRCInfoList: the row or the column information of one sheet. Every index of the
// axis, 0 to the last index, belongs to exactly one run (CRCInfoItem) of consecutive
// indexes sharing size, format index, merged-cell index, outline level and marks.
// Runs are split and joined as spans change, so a sheet that sets the height of one
// row in the middle of 65,536 holds three runs, not 65,536 records.
#pragma once

#include "base/Export.h"
#include "base/ZelObject.h"

class YARVBOOK_API CRCInfoItem : public CZelObject {
 public:
  static constexpr unsigned short kNoMergedCell = 0xFFFF;
  static constexpr unsigned short kDefaultFormat = 15;
  static constexpr int kMaxLevel = 7;

  // A run of the default kind: default size, default-size mark, format 15, no merge.
  CRCInfoItem(int nFirst, int nLast, unsigned short wSize, bool bAuto);
  CRCInfoItem(const CRCInfoItem&) = delete;
  CRCInfoItem& operator=(const CRCInfoItem&) = delete;

  int GetFirst() const { return m_nFirst; }
  int GetLast() const { return m_nLast; }
  CRCInfoItem* GetNext() const { return m_pNext; }
  CRCInfoItem* GetPrev() const { return m_pPrev; }

  unsigned short GetSize() const { return m_wSize; }
  unsigned short GetFormat() const { return m_wFormat; }
  unsigned short GetMergedCellIndex() const { return m_wMergedCellIndex; }
  int GetLevel() const { return m_cMarks & kLevelMask; }
  bool GetAuto() const { return (m_cMarks & kAuto) != 0; }
  bool IsHidden() const { return (m_cMarks & kHidden) != 0; }
  bool IsFiltered() const { return (m_cMarks & kFiltered) != 0; }
  bool IsDefSize() const { return (m_cMarks & kDefSize) != 0; }
  bool IsCollapsed() const { return (m_cMarks & kCollapsed) != 0; }
  bool GetNeedsAutoSize() const { return (m_cMarks2 & kNeedsAutoSize) != 0; }
  bool IsUserDefinedSize() const { return (m_cMarks2 & kUserDefinedSize) != 0; }
  // Visible: not hidden and of a size above 0.
  bool IsVisible() const { return !IsHidden() && m_wSize != 0; }

  void SetSize(unsigned short wSize) { m_wSize = wSize; }
  void SetFormat(unsigned short wFormat) { m_wFormat = wFormat; }
  void SetMergedCellIndex(unsigned short wIndex) { m_wMergedCellIndex = wIndex; }
  // Clamped to 0..7.
  void SetLevel(int nLevel);
  void SetAuto(bool b) { SetMark(m_cMarks, kAuto, b); }
  void SetHidden(bool b) { SetMark(m_cMarks, kHidden, b); }
  void SetFiltered(bool b) { SetMark(m_cMarks, kFiltered, b); }
  void SetDefSize(bool b) { SetMark(m_cMarks, kDefSize, b); }
  void SetCollapsed(bool b) { SetMark(m_cMarks, kCollapsed, b); }
  void SetUserDefinedSize(bool b) { SetMark(m_cMarks2, kUserDefinedSize, b); }
  // Sets the needs-auto-size mark when the run is auto-sized, or default-sized and
  // bOn is set; returns the auto mark.
  bool SetNeedsAutoSize(bool bOn);
  void ClearNeedsAutoSize() { SetMark(m_cMarks2, kNeedsAutoSize, false); }
  // Back to the default kind with wSize: default-size mark set, format 15, no merge,
  // filtered and both second-byte marks clear; the auto mark becomes bAuto.
  void SetDefs(unsigned short wSize, bool bAuto);

  // Copies every field except the place in the chain and the span.
  void CopyFields(const CRCInfoItem& src);
  // True when every field except the place in the chain and the span agrees: two
  // neighbouring runs with equal fields are joined.
  bool HasSameFields(const CRCInfoItem& other) const;

 private:
  friend class CRCInfoList;

  // First mark byte: outline level in bits 0-2, then the single marks.
  static constexpr unsigned char kLevelMask = 0x07;
  static constexpr unsigned char kAuto = 0x08;
  static constexpr unsigned char kHidden = 0x10;
  static constexpr unsigned char kFiltered = 0x20;
  static constexpr unsigned char kDefSize = 0x40;
  static constexpr unsigned char kCollapsed = 0x80;
  // Second mark byte.
  static constexpr unsigned char kNeedsAutoSize = 0x01;
  static constexpr unsigned char kUserDefinedSize = 0x02;

  static void SetMark(unsigned char& cByte, unsigned char cMask, bool b) {
    cByte =
        b ? static_cast<unsigned char>(cByte | cMask) : static_cast<unsigned char>(cByte & ~cMask);
  }

  CRCInfoItem* m_pPrev = nullptr;
  CRCInfoItem* m_pNext = nullptr;
  int m_nFirst;
  int m_nLast;
  unsigned short m_wSize;
  unsigned short m_wMergedCellIndex = kNoMergedCell;
  unsigned short m_wFormat = kDefaultFormat;
  unsigned char m_cMarks;
  unsigned char m_cMarks2 = 0;
};

class YARVBOOK_API CRCInfoList {
 public:
  // An empty list: Init must run before the first lookup.
  CRCInfoList() = default;
  ~CRCInfoList();
  CRCInfoList(const CRCInfoList&) = delete;
  CRCInfoList& operator=(const CRCInfoList& src);  // deep copy of fields and runs

  // One run, 0 to nLastIndex, of the default kind. Both "set" marks come from bSizesSet.
  void Init(int nLastIndex, unsigned short wDefSize, bool bDefAuto, unsigned short wHdrSize,
            bool bSizesSet);
  // With bForce both sizes are stored and marked set; otherwise each only while not yet
  // set. With bApplyToItems every run goes back to the default kind (SetDefs).
  void InitSizes(unsigned short wDefSize, unsigned short wHdrSize, bool bForce, bool bApplyToItems);

  // The run that holds nIndex, or null outside 0..last index. Moves the cursor there.
  CRCInfoItem* GetInfo(int nIndex) const;
  // Cursor walk: Start puts it on the first run; Next moves on and returns false at the
  // last run.
  CRCInfoItem* Start() const;
  bool Next() const;
  CRCInfoItem* GetFirstInfo() const { return m_pFirst; }
  CRCInfoItem* GetCurInfo() const { return m_pCur; }
  CRCInfoItem* GetLastItem() const { return m_pLast; }
  int GetItems() const { return m_nItems; }
  int GetLastIndex() const { return m_nLastIndex; }

  // Readers: 0, false or 0xFFFF for an index that no run holds.
  unsigned short GetSize(int nIndex) const;
  bool GetAuto(int nIndex) const;
  unsigned short GetMergedCellIndex(int nIndex) const;
  unsigned short GetFormat(int nIndex) const;
  int GetLevel(int nIndex) const;
  bool IsFiltered(int nIndex) const;
  bool IsHidden(int nIndex) const;
  bool IsVisible(int nIndex) const;
  // True when no index of first..last is visible; HasHidden: when some one is not.
  bool GetHidden(int nFirst, int nLast) const;
  bool HasHidden(int nFirst, int nLast) const;

  unsigned short GetDefSize() const { return m_wDefSize; }
  bool GetDefAuto() const { return m_bDefAuto; }
  unsigned short GetHdrSize() const { return m_wHdrSize; }
  void SetHdrSize(unsigned short wSize) {
    m_wHdrSize = wSize;
    m_bHdrSizeSet = true;
  }
  // The default size, unless a run spans more than 32,767 indexes beyond its first:
  // then the size of the last such run.
  unsigned short GetMostOftenSize() const;
  // Moves the default-size marks to the runs whose size equals wSize; sizes stay.
  void ChangeDefSize(unsigned short wSize);

  // Gives first..last (clipped to the axis) the fields of pModel, splitting and joining
  // runs. Returns false when nothing of the span lies on the axis.
  bool SetInfo(int nFirst, int nLast, const CRCInfoItem& model);
  bool SetInfo(int nFirst, int nLast, unsigned short wSize, unsigned short wFormat,
               unsigned short wMergedCellIndex, int nLevel, bool bHidden, bool bAuto);
  // One field over a span; the others stay as they are per run.
  void SetSize(int nFirst, int nLast, unsigned short wSize);  // clears the default mark
  void SetDefSize(int nFirst, int nLast);  // back to the list's default size and mark
  void SetHidden(int nFirst, int nLast, bool bHidden);
  void SetFiltered(int nFirst, int nLast, bool bFiltered);
  void SetUserDefinedSize(int nFirst, int nLast, bool bOn);
  void SetFormat(int nFirst, int nLast, unsigned short wFormat);
  void SetMergedCellIndex(int nFirst, int nLast, unsigned short wIndex);
  void SetNeedsAutoSize(int nFirst, int nLast, bool bOn);
  // Adds nDelta to the outline level of every index of the span, clamped to 0..7.
  void IncLevelInfo(int nFirst, int nLast, int nDelta);
  void ModifyOutlineLevel(int nFirst, int nLast, int nLevel);

  // Outline. The summary index of a group follows its children (children have a
  // higher level and stand just before it).
  // The first later index whose level is below nIndex's, or -1 (level 0, or none).
  int FindParent(int nIndex) const;
  // The first index of the children that end just before nIndex; nIndex itself when
  // it has none.
  int FindFirstChild(int nIndex) const;
  bool IsExistChildren(int nIndex) const;
  // Marks the summary nIndex collapsed or expanded and hides or shows its children;
  // expanding keeps the children of nested collapsed summaries hidden.
  void DoCollaps(int nIndex, bool bCollapse);
  void CollapsInfo(int nIndex, bool bCollapse) { DoCollaps(nIndex, bCollapse); }
  // Shows the outline down to nLevel: indexes of a higher level are hidden, the others
  // shown; summaries of level nLevel or less with hidden children are marked collapsed.
  void DoCollapsLevel(int nLevel);
  // The lowest level among the hidden children of nIndex's group, 0 without any.
  int GetCollapsLevel(int nIndex) const;

  // Copies the information of nCount indexes from nFrom to nTo (clipped to the axis);
  // vacated indexes that were not overwritten get a fresh default run (auto clear).
  void Move(int nTo, int nFrom, int nCount);
  // Deletes every run and leaves the list uninitialised.
  void Clear();
  // Checks the chain: contiguous, ordered, covering 0..last index, counted right.
  bool Verify() const;

 private:
  // Makes a run start at nIndex (when nIndex lies on the axis) and returns it.
  CRCInfoItem* SplitAt(int nIndex);
  // Joins pItem with its equal neighbours; returns the surviving run.
  CRCInfoItem* JoinAround(CRCInfoItem* pItem);
  void Unlink(CRCInfoItem* pItem);
  void InsertAfter(CRCInfoItem* pAfter, CRCInfoItem* pItem);
  // Applies fn to the runs of first..last (split to fit), then joins equal runs.
  template <class TFn>
  void ModifySpan(int nFirst, int nLast, TFn fn);
  bool ClipSpan(int& nFirst, int& nLast) const;
  void DeleteAll();

  int m_nLastIndex = -1;
  unsigned short m_wDefSize = 0;
  unsigned short m_wHdrSize = 0;
  unsigned short m_wThirdSize = 0;  // kept for the stored layout, unused by the engine
  bool m_bDefSizeSet = false;
  bool m_bHdrSizeSet = false;
  bool m_bDefAuto = false;
  CRCInfoItem* m_pFirst = nullptr;  // owned chain
  CRCInfoItem* m_pLast = nullptr;
  mutable CRCInfoItem* m_pCur = nullptr;  // lookup cursor: a cache, not state
  int m_nItems = 0;
};
