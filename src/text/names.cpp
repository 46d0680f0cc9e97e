// Names of encodings, a language and MIME types, as they stand in mail and web headers.

#include "kest/text.h"

namespace KEST {

const unsigned short kAsciiEncoding[] = {'u', 's', '-', 'a', 's', 'c', 'i', 'i', 0};
const unsigned short kLatin1Encoding[] = {'i', 's', 'o', '-', '8', '8', '5', '9', '-', '1', 0};
const unsigned short kUtf8Encoding[] = {'u', 't', 'f', '-', '8', 0};
const unsigned short kUnicodeEncoding[] = {'u', 'n', 'i', 'c', 'o', 'd',
                                           'e', '-', '2', '-', '0', 0};
const unsigned short kEnglishLanguage[] = {'e', 'n', 0};
const unsigned short kTextMimeType[] = {'t', 'e', 'x', 't', 0};
const unsigned short kTextPlainMimeType[] = {'t', 'e', 'x', 't', '/', 'p', 'l', 'a', 'i', 'n', 0};
const unsigned short kTextZelRtfMimeType[] = {'t', 'e', 'x', 't', '/', 'x', '-',
                                              'z', 'e', 'l', 'r', 't', 'f', 0};

}  // namespace KEST
