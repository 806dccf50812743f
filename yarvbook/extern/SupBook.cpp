#include "extern/SupBook.h"

#include <cstring>

#include "base/WideString.h"
#include "book/BookBase.h"
#include "book/SheetBase.h"
#include "extern/ExternName.h"
#include "extern/SupSheet.h"

namespace {

constexpr char16_t kCodeVolume = 1;
constexpr char16_t kCodeRoot = 2;
constexpr char16_t kCodeSeparator = 3;
constexpr char16_t kCodeParent = 4;
constexpr char16_t kCodeUrl = 5;

bool IsDriveLetter(char16_t c) { return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z'); }

// Folds ASCII letters: paths compare like the file system the titles come from.
char16_t FoldPathChar(char16_t c) { return (c >= u'a' && c <= u'z') ? c - u'a' + u'A' : c; }

bool StartsWithNoCase(const std::u16string& text, const std::u16string& prefix) {
  if (prefix.empty() || text.size() < prefix.size()) return false;
  for (size_t i = 0; i < prefix.size(); ++i) {
    if (FoldPathChar(text[i]) != FoldPathChar(prefix[i])) return false;
  }
  return true;
}

// "X:" of a path that begins with a drive, else empty.
std::u16string DriveOf(const std::u16string& path) {
  if (path.size() >= 2 && IsDriveLetter(path[0]) && path[1] == u':') return path.substr(0, 2);
  return std::u16string();
}

// The path up to and including its last '\'; empty when it has none.
std::u16string DirectoryOf(const std::u16string& path) {
  const size_t nSlash = path.rfind(u'\\');
  return nSlash == std::u16string::npos ? std::u16string() : path.substr(0, nSlash + 1);
}

const char16_t* AfterLastBackslash(const std::u16string& text) {
  const size_t nSlash = text.rfind(u'\\');
  return text.c_str() + (nSlash == std::u16string::npos ? 0 : nSlash + 1);
}

int CopyOut(const std::u16string& text, char16_t* pOut, int nSize) {
  if (pOut == nullptr || nSize <= 0) return -1;
  if (static_cast<int>(text.size()) >= nSize) {
    pOut[0] = 0;
    return -1;
  }
  std::memcpy(pOut, text.data(), text.size() * sizeof(char16_t));
  pOut[text.size()] = 0;
  return static_cast<int>(text.size());
}

}  // namespace

CSupBook::CSupBook() = default;

CSupBook::CSupBook(const char16_t* pwszTitle, unsigned char bKind)
    : m_bKind(static_cast<unsigned char>(bKind | kKindCreated)) {
  SetTitle(pwszTitle);
}

CSupBook::~CSupBook() = default;

void CSupBook::Clear() {
  m_sTitle.clear();
  m_sLongTitle.clear();
  m_pRefBook = nullptr;
  m_pDataBook = nullptr;
  m_Sheets.Clear();
  m_ExternNames.Clear();
}

CZelObject* CSupBook::Clone() const {
  auto* pClone = new CSupBook;
  try {
    pClone->Copy(this);
  } catch (...) {
    delete pClone;
    throw;
  }
  return pClone;
}

void CSupBook::Copy(const CZelObject* pSrc) {
  const auto* pBook = static_cast<const CSupBook*>(pSrc);
  if (pBook == this) return;
  m_sTitle = pBook->m_sTitle;
  m_sLongTitle = pBook->m_sLongTitle;
  m_pRefBook = pBook->m_pRefBook;
  m_pDataBook = pBook->m_pDataBook;
  m_bKind = pBook->m_bKind;
  m_Sheets.Copy(&pBook->m_Sheets);
  m_ExternNames.Copy(&pBook->m_ExternNames);
}

// The object arrays own their elements: moving the pointers hands them over, and
// RemoveAll on the source drops its pointers without deleting.
void CSupBook::CopyAndClearSource(CSupBook* pSrc) {
  m_sTitle = pSrc->m_sTitle;
  m_sLongTitle = pSrc->m_sLongTitle;
  m_pRefBook = pSrc->m_pRefBook;
  m_pDataBook = pSrc->m_pDataBook;
  m_bKind = pSrc->m_bKind;
  m_Sheets.Clear();
  m_ExternNames.Clear();
  m_Sheets.SetSize(pSrc->m_Sheets.GetSize());
  for (int i = 0; i < pSrc->m_Sheets.GetSize(); ++i) {
    m_Sheets.SetAt(i, pSrc->m_Sheets.GetAt(i));
    pSrc->m_Sheets.SetAt(i, nullptr);
  }
  m_ExternNames.SetSize(pSrc->m_ExternNames.GetSize());
  for (int i = 0; i < pSrc->m_ExternNames.GetSize(); ++i) {
    m_ExternNames.SetAt(i, pSrc->m_ExternNames.GetAt(i));
    pSrc->m_ExternNames.SetAt(i, nullptr);
  }
  pSrc->m_Sheets.RemoveAll();
  pSrc->m_ExternNames.RemoveAll();
}

int CSupBook::Compare(const CZelObject* pOther) const {
  const auto* pBook = static_cast<const CSupBook*>(pOther);
  const int nKinds = (m_bKind & kKindSources) - (pBook->m_bKind & kKindSources);
  if (nKinds != 0) return nKinds;
  if (m_pRefBook != pBook->m_pRefBook) return m_pRefBook < pBook->m_pRefBook ? -1 : 1;
  if (m_pRefBook != nullptr) return 0;
  return strcmpiW(m_sTitle.c_str(), pBook->m_sTitle.c_str());
}

void CSupBook::SetTitle(const char16_t* pwszTitle) {
  m_sTitle = pwszTitle != nullptr ? pwszTitle : u"";
}

void CSupBook::SetLongTitle(const char16_t* pwszLongTitle) {
  m_sLongTitle = pwszLongTitle != nullptr ? pwszLongTitle : u"";
}

const char16_t* CSupBook::GetTitle() const {
  return m_pRefBook != nullptr ? AfterLastBackslash(m_sTitle) : m_sLongTitle.c_str();
}

const char16_t* CSupBook::GetBookTitle() const { return AfterLastBackslash(m_sTitle); }

CSupSheet* CSupBook::GetSheet(int nIndex) const {
  return m_Sheets.IsValidIndex(nIndex) ? static_cast<CSupSheet*>(m_Sheets.GetAt(nIndex)) : nullptr;
}

CSupSheet* CSupBook::FindSheet(const char16_t* pwszName, int* pnIndex) const {
  const char16_t* pwszWanted = pwszName != nullptr ? pwszName : u"";
  for (int i = 0; i < m_Sheets.GetSize(); ++i) {
    auto* pSheet = static_cast<CSupSheet*>(m_Sheets.GetAt(i));
    if (strcmpiW(pSheet->GetSheetName(), pwszWanted) != 0) continue;
    if (pnIndex != nullptr) *pnIndex = i;
    return pSheet;
  }
  if (pnIndex != nullptr) *pnIndex = -1;
  return nullptr;
}

CSupSheet* CSupBook::AddSheet(const char16_t* pwszName, int* pnIndex) {
  auto* pSheet = new CSupSheet;
  try {
    pSheet->SetSheetNameWithException(pwszName);
    const int nIndex = m_Sheets.Add(pSheet);
    if (pnIndex != nullptr) *pnIndex = nIndex;
  } catch (...) {
    delete pSheet;
    throw;
  }
  return pSheet;
}

int CSupBook::CheckSheetIndex(int nIndex) const {
  if (IsOpened() || m_pDataBook == nullptr) return nIndex;
  const CSupSheet* pEntry = GetSheet(nIndex);
  if (pEntry == nullptr || !pEntry->HasSheetName()) return -1;
  const CSheetBase* pSheet = m_pDataBook->FindSheetBase(pEntry->GetSheetName(), true);
  return pSheet != nullptr ? pSheet->GetSheetIndex() : -1;
}

CExternName* CSupBook::GetExternName(int nIndex) const {
  return m_ExternNames.IsValidIndex(nIndex) ? static_cast<CExternName*>(m_ExternNames.GetAt(nIndex))
                                            : nullptr;
}

CExternName* CSupBook::FindExternName(const char16_t* pwszName, int nLength, int* pnIndex) const {
  for (int i = 0; i < m_ExternNames.GetSize(); ++i) {
    auto* pName = static_cast<CExternName*>(m_ExternNames.GetAt(i));
    if (!pName->IsNamed(pwszName, nLength)) continue;
    if (pnIndex != nullptr) *pnIndex = i;
    return pName;
  }
  if (pnIndex != nullptr) *pnIndex = -1;
  return nullptr;
}

CExternName* CSupBook::AddExternName(const char16_t* pwszName, int nLength, int* pnIndex) {
  auto* pName = new CExternName(pwszName, nLength);
  try {
    const int nIndex = m_ExternNames.Add(pName);
    if (pnIndex != nullptr) *pnIndex = nIndex;
  } catch (...) {
    delete pName;
    throw;
  }
  return pName;
}

std::u16string CSupBook::EncodeTitle(const char16_t* pwszTitle, const char16_t* pwszReferringPath) {
  const std::u16string title = pwszTitle != nullptr ? pwszTitle : u"";
  std::u16string out;
  if (title.find(u"://") != std::u16string::npos) {
    out = {kCodeVolume, kCodeUrl, static_cast<char16_t>(title.size())};
    return out + title;
  }
  bool bEncoded = false;
  size_t nPos = 0;
  if (pwszReferringPath != nullptr && *pwszReferringPath != 0) {
    const std::u16string referring = pwszReferringPath;
    const std::u16string dir = DirectoryOf(referring);
    const std::u16string drive = DriveOf(referring);
    if (StartsWithNoCase(title, dir)) {
      nPos = dir.size();
      bEncoded = true;
    } else if (StartsWithNoCase(title, drive)) {
      nPos = drive.size();
      bEncoded = true;
    }
  }
  const size_t nStart = nPos;
  while (nPos < title.size()) {
    const char16_t c = title[nPos];
    const bool bAfterSeparator =
        nPos == nStart || title[nPos - 1] == u'\\' || title[nPos - 1] == u':';
    if (bAfterSeparator && title.compare(nPos, 3, u"..\\") == 0) {
      out += kCodeParent;
      nPos += 3;
    } else if (title.compare(nPos, 2, u"\\\\") == 0) {
      out += kCodeVolume;
      out += u'@';
      nPos += 2;
    } else if (c == u'\\') {
      out += nPos == nStart ? kCodeRoot : kCodeSeparator;
      ++nPos;
    } else if (nPos == nStart && IsDriveLetter(c) && nPos + 1 < title.size() &&
               title[nPos + 1] == u':') {
      out += kCodeVolume;
      out += c;
      nPos += 2;
      if (nPos < title.size() && title[nPos] == u'\\') ++nPos;
    } else {
      out += c;
      ++nPos;
      continue;
    }
    bEncoded = true;
  }
  if (bEncoded) out.insert(out.begin(), kCodeVolume);
  return out;
}

std::u16string CSupBook::DecodeTitle(const char16_t* pEncoded, int nLength,
                                     const char16_t* pwszReferringPath) {
  if (pEncoded == nullptr || nLength <= 0) return std::u16string();
  if (pEncoded[0] != kCodeVolume) return std::u16string(pEncoded, nLength);
  const std::u16string referring = pwszReferringPath != nullptr ? pwszReferringPath : u"";
  if (nLength >= 3 && pEncoded[1] == kCodeUrl) {
    const int nText = pEncoded[2] < nLength - 3 ? pEncoded[2] : nLength - 3;
    return std::u16string(pEncoded + 3, nText);
  }
  std::u16string out;
  int i = 1;
  // Without a volume of its own the title lies in the referring book's directory.
  const bool bHasVolume = i < nLength && (pEncoded[i] == kCodeVolume || pEncoded[i] == kCodeRoot);
  if (!bHasVolume) out = DirectoryOf(referring);
  while (i < nLength) {
    const char16_t c = pEncoded[i++];
    switch (c) {
      case kCodeVolume:
        if (i >= nLength) break;
        if (pEncoded[i] == u'@') {
          out += u"\\\\";
        } else {
          out += pEncoded[i];
          out += u":\\";
        }
        ++i;
        break;
      case kCodeRoot:
        out += DriveOf(referring);
        out += u'\\';
        break;
      case kCodeSeparator:
        out += u'\\';
        break;
      case kCodeParent:
        out += u"..\\";
        break;
      default:
        out += c;
        break;
    }
  }
  return out;
}

int CSupBook::GetEncodedTitle(const char16_t* pwszTitle, char16_t* pOut, int nSize,
                              const char16_t* pwszReferringPath) {
  return CopyOut(EncodeTitle(pwszTitle, pwszReferringPath), pOut, nSize);
}

int CSupBook::GetDecodedTitle(char16_t* pOut, int nSize, const char16_t* pEncoded, int nLength,
                              const char16_t* pwszReferringPath) {
  return CopyOut(DecodeTitle(pEncoded, nLength, pwszReferringPath), pOut, nSize);
}

void CSupBook::SetEncodedTitle(const char16_t* pEncoded, int nLength,
                               const char16_t* pwszReferringPath) {
  m_sTitle = DecodeTitle(pEncoded, nLength, pwszReferringPath);
}
