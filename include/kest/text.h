// Text interchange: the names by which mail, web and files call encodings, languages and kinds of
// text.
#ifndef KEST_TEXT_H
#define KEST_TEXT_H

#include "kest/string.h"
namespace KEST {

// Arrays of units with a terminator, not pointers. Encoding names are compared without regard to
// the case of letters.
extern "C" {  // C++ name KEST::kUtf8Encoding, symbol kUtf8Encoding
extern KEST_API const unsigned short kAsciiEncoding[];
extern KEST_API const unsigned short kLatin1Encoding[];
extern KEST_API const unsigned short kUtf8Encoding[];
extern KEST_API const unsigned short kUnicodeEncoding[];
extern KEST_API const unsigned short kEnglishLanguage[];
extern KEST_API const unsigned short kTextMimeType[];
extern KEST_API const unsigned short kTextPlainMimeType[];
extern KEST_API const unsigned short kTextZelRtfMimeType[];
}
}  // namespace KEST
extern "C" {
KEST_API int KestZelToIsoEncoding(int encoding, KEST::TBstr& name);
KEST_API int KestIsoToZelEncoding(const unsigned short* name, int* encoding);
KEST_API int KestZelToIsoLang(unsigned int language, KEST::TBstr& code);
KEST_API int KestIsoToZelLang(const unsigned short* code, int* language);
KEST_API void KestEntityEscape(const unsigned short* text, KEST::TBstr& out);
KEST_API void KestEntityUnescape(const unsigned short* text, KEST::TBstr& out);
KEST_API void KestPlainToHtml(const unsigned short* plain, KEST::TBstr& html);
KEST_API void KestHtmlToPlain(const unsigned short* html, KEST::TBstr& plain);
KEST_API bool KestInetAtoN(const unsigned short* text, unsigned int* address, unsigned int* port);
KEST_API void KestInetNtoA(unsigned int address, KEST::TBstr& text);
KEST_API void KestInetNtoAEx(unsigned int address, unsigned int port, KEST::TBstr& text);
}

#endif  // KEST_TEXT_H
