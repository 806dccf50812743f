// UTF-8 command-line text to the engine's UTF-16 and back.
#pragma once

#include <cstddef>
#include <string>

// Appends code point c to str, beyond U+FFFF as a surrogate pair.
void AppendUtf16(std::u16string& str, char32_t c);
// Decodes zero-terminated UTF-8; characters beyond U+FFFF become surrogate pairs.
std::u16string FromUtf8(const char* psz);
// Encodes nLen UTF-16 units, joining surrogate pairs; an unpaired surrogate becomes
// U+FFFD.
std::string ToUtf8(const char16_t* pwsz, int nLen);
// The same, appended to out.
void AppendUtf8(std::string& out, const char16_t* pwsz, std::size_t nLen);
