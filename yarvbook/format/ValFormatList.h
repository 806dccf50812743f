// CValFormatList: a book's number formats, addressed by index. 0..63 are the built-in
// formats (CSSValFormat, made from the locale-adapted built-in texts); user formats
// follow, each stored once. The list also holds the book's three quick local formats,
// used to show dates and times that carry no format of their own.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/Export.h"
#include "format/QuickLocalFormat.h"
#include "format/SingleFormat.h"

class CValFormat;

class YARVBOOK_API CValFormatList {
 public:
  enum EQuickFormat : int { qfDateTime = 0, qfDate = 1, qfTime = 2 };

  CValFormatList();
  CValFormatList(const CValFormatList&) = delete;
  CValFormatList& operator=(const CValFormatList&) = delete;
  ~CValFormatList();

  // Creates each built-in format 0..63 that the list does not hold yet, and the quick
  // local formats, in the current locale.
  void InitDefValFormats();

  int GetCount() const { return static_cast<int>(m_Formats.size()); }
  // The format at nIndex; the General format (index 0) when the index holds none, so a
  // cell with a stale index still shows its value. Valid until the list changes.
  const CValFormat* GetValFormat(int nIndex) const;
  bool HasValFormat(int nIndex) const;
  // The type of the format's first section (General for an index that holds none).
  CSingleFormat::EType GetValFormatType(int nIndex) const;
  // The built-in index that shows numbers of the given kind, as a typed number asks:
  // bDecimals chooses the variant with two decimals where there is one.
  static int GetStandardFormat(CSingleFormat::EType nType, bool bDecimals);
  const CValFormat& GetQuickFormat(EQuickFormat nWhich) const { return m_aQuick[nWhich]; }

  // The index of a format equal to format (Compare), or -1.
  int FindValFormat(const CValFormat& format) const;
  // Adds a user format, or finds an equal one; returns its index.
  int AddValFormat(std::unique_ptr<CValFormat> pFormat);
  // Parses pwszText and adds it; -1 when it does not parse (pnErrorPos as in Parse).
  int AddValFormat(const char16_t* pwszText, int nParseType, int* pnErrorPos = nullptr);

  // Makes the list whole after loading: missing built-ins are created, empty user slots
  // become General. Returns the number of slots repaired.
  int ValidateValFormats();

 private:
  std::vector<std::unique_ptr<CValFormat>> m_Formats;  // owned; null: not held
  CQuickLocalFormat m_aQuick[3];
};
