// CSharedStringTable: reference-counted cell texts, so that equal texts share one
// buffer. Values whose holder sets the shared-string flag (cells) keep their text
// here; TValue's assignment adds, shares and releases entries.
//
// Entry layout, one allocation per distinct text:
//   int nLength | int nRefCount | char16_t text[nLength] | 0
//                                 ^ callers hold this pointer
// nRefCount is the number of users minus one: a fresh entry holds 0.
#pragma once

#include <string_view>
#include <unordered_set>

#include "base/Export.h"

class YARVBOOK_API CSharedStringTable {
 public:
  CSharedStringTable() = default;
  CSharedStringTable(const CSharedStringTable&) = delete;
  CSharedStringTable& operator=(const CSharedStringTable&) = delete;
  ~CSharedStringTable() { RemoveAllSST(); }

  // The process-wide table that values and cells use. It is never destroyed, so
  // values that outlive static destruction may still release their texts.
  static CSharedStringTable& GetGlobal();

  // The shared copy of the first nLen characters of pwszText (nLen < 0: up to the
  // terminator), counted once more when it is already present. A null text or a
  // length of 0 gives g_wszEmpty, which is never counted. Throws CZelException when
  // memory is exhausted.
  const char16_t* AddString(const char16_t* pwszText, int nLen = -1);
  // One user more of a text that AddString returned; null and g_wszEmpty are ignored.
  void IncRefSST(const char16_t* pwszText);
  // One user less; null and g_wszEmpty are ignored. The last release frees the entry.
  void DecRefSST(const char16_t* pwszText);
  // Frees the entry when its count is below 1, else decreases the count.
  void DeleteString(const char16_t* pwszEntry);
  // True for g_wszEmpty and for texts this table handed out; false for null and for
  // any other buffer, even one with equal contents.
  bool IsSSTString(const char16_t* pwszText) const;
  // nLen without trailing characters of code 32 or below; a non-positive nLen is
  // returned unchanged.
  static int MakeRTrimedLen(const char16_t* pwszText, int nLen);
  // Frees every entry; texts handed out before are dangling afterwards.
  void RemoveAllSST();

  // Number of distinct texts held (g_wszEmpty is not one).
  int GetCount() const { return static_cast<int>(m_Entries.size()); }
  // Users of a held text minus one, or -1 when pwszText is not an entry.
  int GetRefCount(const char16_t* pwszText) const;

 private:
  // Keyed by the text inside each entry: a view's data() is the text pointer that
  // callers hold.
  std::unordered_set<std::u16string_view> m_Entries;
};
