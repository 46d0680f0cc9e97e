// Text interchange: what mail, web pages and files call encodings, languages and kinds of text;
// plain text as HTML and back; Internet addresses as text.
//
// True of all of it:
//   Units      Text is 16-bit units up to the terminator, see string.h. Null text is empty text.
//   Results    Text goes to a TBstr of the caller's, numbers through pointers.
//   Aliasing   A source may lie in the text of the TBstr that receives the result.
//   Failure    Nothing throws. A TBstr that gets no memory for its new text ends up empty, as after
//              any other change; the HTML functions may also leave it as it was, see there.
//   Threads    No state, save that the language codes use the C library's current locale.
//   Examples   examples/encodings/encodings.cpp, examples/html/html.cpp,
//              examples/addresses/addresses.cpp
#ifndef KEST_TEXT_H
#define KEST_TEXT_H

#include "kest/string.h"
namespace KEST {

// Arrays of units with a terminator, not pointers. Encoding names are compared without regard to
// the case of letters.
extern "C" {  // C++ name KEST::kUtf8Encoding, symbol kUtf8Encoding
extern KEST_API const unsigned short kAsciiEncoding[];       // "us-ascii"
extern KEST_API const unsigned short kLatin1Encoding[];      // "iso-8859-1"
extern KEST_API const unsigned short kUtf8Encoding[];        // "utf-8"
extern KEST_API const unsigned short kUnicodeEncoding[];     // "unicode-2-0"
extern KEST_API const unsigned short kEnglishLanguage[];     // "en"
extern KEST_API const unsigned short kTextMimeType[];        // "text"
extern KEST_API const unsigned short kTextPlainMimeType[];   // "text/plain"
extern KEST_API const unsigned short kTextZelRtfMimeType[];  // "text/x-zelrtf"
}
}  // namespace KEST
extern "C" {

// Clients number encodings and languages in a way of their own. These four translate; they return 1
// for what is known, else 0. Pointers to numbers must not be null.
//
// The encodings are 0 "us-ascii", 2 "unicode-2-0", 3 "iso-8859-1" and 13 "utf-8". The languages are
// 0 to 143 with gaps: 0 is "en", 1 "fr", 2 "de"; docs/text.md has the table.

// name becomes the Internet name, or "?". The result is read off the name: WITHOUT MEMORY IT IS 1
// and the name empty.
KEST_API int KestZelToIsoEncoding(int encoding, KEST::TBstr& name);

// *encoding becomes the number of the name, in any case of its ASCII letters, or -1. Null and empty
// names are "us-ascii".
KEST_API int KestIsoToZelEncoding(const unsigned short* name, int* encoding);

// code becomes the lower-case code after ISO 639, with a region in "zh-tw" and "zh-cn", or "?". The
// codes "iw", "ji", "in", "jw" and "mo" are the old ones. The result does not tell of memory.
KEST_API int KestZelToIsoLang(unsigned int language, KEST::TBstr& code);

// *language becomes the lowest number whose code THE TEXT STARTS WITH, in any case, or -1: "en-US"
// and "english" are 0, but "zh" alone is none. Null and empty text is English. Case is that of the
// C library's current locale, for units below 256.
KEST_API int KestIsoToZelLang(const unsigned short* code, int* language);

// A minimal HTML: the four entities "&amp;" "&lt;" "&gt;" "&quot;" and the tag "<BR>". What else
// markup there is is dropped without trace, NUMERIC ENTITIES AND "&nbsp;" INCLUDED; nothing is an
// error. Time is linear in the text.

// Writes '&', '<', '>' and '"' as entities, also an '&' that starts one already. out is built in
// one block, and ends up empty without memory.
KEST_API void KestEntityEscape(const unsigned short* text, KEST::TBstr& out);

// The other way. An entity reaches from the '&' to the next ';', whatever is between, and counts in
// lower case only. An unknown one is dropped, and so is one that another '&' or the end of the text
// cuts short: "AT&T" gives "AT". Text of 128 units and more takes a temporary block; without memory
// for that, out stays as it was.
KEST_API void KestEntityUnescape(const unsigned short* text, KEST::TBstr& out);

// The escaped text between "<HTML><BODY>" and "</BODY></HTML>", each CR LF as "<BR>"; a CR or LF
// alone stays. html is built in one block, and ends up empty without memory.
KEST_API void KestPlainToHtml(const unsigned short* plain, KEST::TBstr& html);

// The text without its tags, then unescaped. A tag reaches from the '<' to the next '>'; "<BR>", in
// any case but with nothing else in it, becomes CR LF. One that another '<' or the end of the text
// cuts short is dropped; a '>' outside a tag is text. HTML of 128 units and more takes a temporary
// block, and what is left of it one more; without memory for these, plain stays as it was.
KEST_API void KestHtmlToPlain(const unsigned short* html, KEST::TBstr& plain);

// IPv4 addresses, with the first part of the text in the most significant byte: "1.2.3.4" is
// 0x01020304 on every machine.

// Reads one to four decimal numbers with dots between, and ":" with a port. False, with nothing
// stored, when one is negative, one that is not the last is above 255, or the last is followed by
// anything but ":" or the end. address and port may be null.
//
// The last number is ORed in as it is and fills the bytes that are left: "127.1" is 127.0.0.1.
// IT IS NOT CHECKED: "1.2.3.256" is 1.2.3.0. Numbers are read as ucstol does: spaces and a sign may
// lead, a missing one is 0 (so empty text is 0.0.0.0), and what is above 2147483647 becomes that. A
// missing port is 0; its range and what follows it are not checked.
KEST_API bool KestInetAtoN(const unsigned short* text, unsigned int* address, unsigned int* port);

// "1.2.3.4", and "1.2.3.4:80". A port above 0x7FFFFFFF is written as a negative number.
KEST_API void KestInetNtoA(unsigned int address, KEST::TBstr& text);
KEST_API void KestInetNtoAEx(unsigned int address, unsigned int port, KEST::TBstr& text);
}

#endif  // KEST_TEXT_H
