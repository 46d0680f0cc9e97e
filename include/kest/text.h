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
#endif  // KEST_TEXT_H
