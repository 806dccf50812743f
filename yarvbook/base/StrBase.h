// CStrBase: string functions that depend on the host's active code page. Multi-byte
// text steps by characters of one or two bytes; in a double-byte code page (932,
// 936, 949, 950) a lead byte starts a two-byte character. Each stepping function
// comes as a single-byte variant (_sb) and a double-byte one (_db); the unprefixed
// name picks by DBCSMode(). Byte counts of UTF-16 text (the B text functions) count
// each character by its size in the active code page: 2 for a double-byte character,
// otherwise 1.
// CPTSTR and CPCTSTR are cursors over such multi-byte text.
#pragma once

#include "base/Export.h"
#include "base/WideString.h"
#include "platform/CodePage.h"

class YARVBOOK_API CStrBase {
 public:
  // True while the active code page is double-byte. Follows the host's locale.
  static bool DBCSMode();
  // c starts a two-byte character (never in single-byte mode).
  static bool IsDBCSLeadByte(unsigned char c);
  // p points at the first byte of a two-byte character of the text starting at
  // pszStart (scanned by characters from there: a trail byte may look like a lead).
  static bool IsPtrToAnyLeadByte(const char* pszStart, const char* p);

  // The next character; stays on the terminator. A lead byte followed by the
  // terminator counts as one byte.
  static const char* _sbstrinc(const char* p) { return *p ? p + 1 : p; }
  static const char* _dbstrinc(const char* p);
  static const char* strinc(const char* p) { return DBCSMode() ? _dbstrinc(p) : _sbstrinc(p); }
  // Characters in the text.
  static int _sbstrlen(const char* psz);
  static int _dbstrlen(const char* psz);
  static int strlen(const char* psz) { return DBCSMode() ? _dbstrlen(psz) : _sbstrlen(psz); }
  // The code of the character at p: its byte, or lead * 256 + trail.
  static unsigned _sbgetchar(const char* p) { return static_cast<unsigned char>(*p); }
  static unsigned _dbgetchar(const char* p) { return MBCHAR2Code(p); }
  static unsigned getchar(const char* p) { return DBCSMode() ? _dbgetchar(p) : _sbgetchar(p); }

  // lead * 256 + trail when p starts a two-byte character, else the byte at p.
  static unsigned MBCHAR2Code(const char* p);
  // nCode (a byte, or lead * 256 + trail) is a character of the active code page.
  static bool IsValidCode(unsigned nCode);

  // Bytes of c in the active code page: 2 for a double-byte character, else 1.
  static int charbytes(char16_t c);
  // Bytes of the first nLength units of pwsz (-1: all of it).
  static int strbytes(const char16_t* pwsz, int nLength = -1);
  // Advances over nBytes bytes of pwsz, stopping at the terminator. When the count
  // ends inside a double-byte character, *pbHalf is set and the result points at that
  // character (it is not passed); otherwise *pbHalf is cleared. nBytes <= 0 returns
  // pwsz.
  static const char16_t* safestrnincbytesC(const char16_t* pwsz, int nBytes, bool* pbHalf);
};

// The UTF-16 character of multi-byte code nCode in the active code page (a byte, or
// lead * 256 + trail); 0 when the code page has no such character.
YARVBOOK_API char16_t MAKEWCHAR(unsigned nCode);
// The multi-byte code of c in the active code page (see MAKEWCHAR); 0 when the code
// page cannot represent it.
YARVBOOK_API unsigned MAKECHAR(char16_t c);
// psz (nLength bytes, -1 through the terminator) converted from nCodePage to a new
// UTF-16 string; free it with StringDeleteW. Bytes that do not convert give an
// empty string. Throws CZelException (memory).
YARVBOOK_API char16_t* _MakeWSTR(const char* psz, int nLength = -1, unsigned nCodePage = CP_ACP);
// pwsz converted to nCodePage as a new byte string; free it with StringDelete.
YARVBOOK_API char* _MakeSTR(const char16_t* pwsz, int nLength = -1, unsigned nCodePage = CP_ACP);

// A read cursor over multi-byte text in the active code page. Stepping never passes
// the terminator.
class YARVBOOK_API CPCTSTR {
 public:
  CPCTSTR(const char* p = nullptr) : m_p(p) {}  // NOLINT: a cursor is its pointer
  const char* get() const { return m_p; }
  operator const char*() const { return m_p; }

  // Steps to the next character; returns the cursor.
  CPCTSTR& preinc() {
    m_p = CStrBase::strinc(m_p);
    return *this;
  }
  // The position of the next character.
  CPCTSTR strinc() const { return CPCTSTR(CStrBase::strinc(m_p)); }
  // The code of the character under the cursor (0 at the end).
  unsigned getfirst() const { return CStrBase::getchar(m_p); }
  // The code of the character nChars characters on (0 past the end).
  unsigned getat(int nChars) const;
  // The byte under the cursor, and the byte nBytes on (half of a character).
  unsigned char getfirsthalf() const { return static_cast<unsigned char>(*m_p); }
  unsigned char gethalfat(int nBytes) const { return static_cast<unsigned char>(m_p[nBytes]); }
  // Bytes from the cursor through the terminator.
  int strsize() const;

 protected:
  const char* m_p;
};

// A write cursor: CPCTSTR over modifiable text.
class YARVBOOK_API CPTSTR : public CPCTSTR {
 public:
  CPTSTR(char* p = nullptr) : CPCTSTR(p) {}  // NOLINT: a cursor is its pointer
  char* get() const { return const_cast<char*>(m_p); }
  operator char*() const { return const_cast<char*>(m_p); }
  CPTSTR& preinc() {
    CPCTSTR::preinc();
    return *this;
  }
  CPTSTR strinc() const { return CPTSTR(const_cast<char*>(CStrBase::strinc(m_p))); }
  // Copies psz (through its terminator) to the cursor; the caller ensures room.
  void strcpy(const char* psz) const;
};

// The byte-string allocation functions over cursors.
inline char* StringNew(const CPCTSTR& text) { return StringNew(text.get()); }
inline char* StringMalloc(const CPCTSTR& text) { return StringMalloc(text.get()); }
