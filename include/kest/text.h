// Text interchange: what mail, web pages and files call encodings, languages and kinds of text;
// plain text as HTML and back; Internet addresses as text.
//
// True of all of it:
//   Units      Text is 16-bit units up to the terminator, see string.h. Null text is empty text.
//   Ownership  Text goes to a TBstr of the caller's, numbers through pointers. Nothing is kept.
//   Aliasing   A source may lie in the text of the TBstr that receives the result.
//   Blocking   Never, save for what the allocator hooks do.
//   Cost       Linear in the text.
//   Failure    Nothing throws. A TBstr that gets no memory for its new text ends up empty, as after
//              any other change; the HTML functions may also leave it as it was, see there.
//   Threads    No state, save that the language codes use the C library's current locale.
//   Example    examples/encodings/encodings.cpp, examples/html/html.cpp,
//              examples/addresses/addresses.cpp
//   See        docs/text.md
#ifndef KEST_TEXT_H
#define KEST_TEXT_H

#include "kest/string.h"
namespace KEST {

// Arrays of units with a terminator, not pointers. Encoding names are compared without regard to
// the case of letters.
extern "C" {  // C++ name KEST::kUtf8Encoding, symbol kUtf8Encoding
extern KEST_API const unsigned short kAsciiEncoding[];       // The text "us-ascii".
extern KEST_API const unsigned short kLatin1Encoding[];      // The text "iso-8859-1".
extern KEST_API const unsigned short kUtf8Encoding[];        // The text "utf-8".
extern KEST_API const unsigned short kUnicodeEncoding[];     // The text "unicode-2-0".
extern KEST_API const unsigned short kEnglishLanguage[];     // The text "en".
extern KEST_API const unsigned short kTextMimeType[];        // The text "text".
extern KEST_API const unsigned short kTextPlainMimeType[];   // The text "text/plain".
extern KEST_API const unsigned short kTextZelRtfMimeType[];  // The text "text/x-zelrtf".
}
}  // namespace KEST
extern "C" {

// Clients number encodings and languages in a way of their own. These four translate; they return 1
// for what is known, else 0.
//
// The encodings are 0 "us-ascii", 2 "unicode-2-0", 3 "iso-8859-1" and 13 "utf-8". The languages are
// 0 to 143 with gaps: 0 is "en", 1 "fr", 2 "de"; docs/text.md has the table.
//
//   Cost  constant: the tables are small
//   See   KestZelToIsoEncoding, KestIsoToZelEncoding, KestZelToIsoLang, KestIsoToZelLang,
//         docs/text.md

// Gives the Internet name of an encoding.
//   encoding  a client's number
//   name      receives the name, or "?"
//   Result    1 for a known number, else 0; read off the name, so that WITHOUT MEMORY IT IS 1 and
//             the name empty
KEST_API int KestZelToIsoEncoding(int encoding, KEST::TBstr& name);

// Gives the number of an encoding.
//   name      the Internet name in any case of its ASCII letters; null and empty names are
//             "us-ascii"
//   encoding  receives the number, or -1; not null
//   Result    1 for a known name, else 0
//   Failure   none: nothing is allocated
KEST_API int KestIsoToZelEncoding(const unsigned short* name, int* encoding);

// Gives the code of a language after ISO 639, in lower case, with a region in "zh-tw" and "zh-cn".
// The codes "iw", "ji", "in", "jw" and "mo" are the old ones.
//   language  a client's number
//   code      receives the code, or "?"
//   Result    1 for a known number, else 0, whether there was memory or not
KEST_API int KestZelToIsoLang(unsigned int language, KEST::TBstr& code);

// Gives the lowest number of a language whose code THE TEXT STARTS WITH. "en-US" and "english" are
// 0, but "zh" alone is none. Case is that of the C library's current locale, for units below 256.
//   code      text up to its terminator, in any case; null and empty text is English
//   language  receives the number, or -1; not null
//   Result    1 for a known code, else 0
//   Failure   none: nothing is allocated
//   Threads   any, as long as none changes the locale
KEST_API int KestIsoToZelLang(const unsigned short* code, int* language);

// A minimal HTML: the four entities "&amp;" "&lt;" "&gt;" "&quot;" and the tag "<BR>". What else
// markup there is is dropped without trace, NUMERIC ENTITIES AND "&nbsp;" INCLUDED; nothing is an
// error.
//
//   text   plain text up to its terminator; null is empty
//   plain  plain text up to its terminator; null is empty
//   html   HTML up to its terminator; null is empty
//   out    receives the text
//   See    KestEntityEscape, KestEntityUnescape, KestPlainToHtml, KestHtmlToPlain, docs/text.md

// Writes '&', '<', '>' and '"' as entities, also an '&' that starts one already.
//   out      receives the text with entities, built in one block
//   Failure  out ends up empty without memory
KEST_API void KestEntityEscape(const unsigned short* text, KEST::TBstr& out);

// Turns entities back into characters. An entity reaches from the '&' to the next ';', whatever is
// between, and counts in lower case only. An unknown one is dropped, and so is one that another '&'
// or the end of the text cuts short: "AT&T" gives "AT".
//   text     text with entities, up to its terminator; null is empty
//   out      receives the text without them
//   Failure  text of 128 units and more takes a temporary block, and without memory for that out
//            stays as it was; without memory for the result it ends up empty
KEST_API void KestEntityUnescape(const unsigned short* text, KEST::TBstr& out);

// Makes an HTML page: the escaped text between "<HTML><BODY>" and "</BODY></HTML>". Each CR LF
// becomes "<BR>"; a CR or LF alone stays.
//   html     receives the page, built in one block
//   Failure  html ends up empty without memory
KEST_API void KestPlainToHtml(const unsigned short* plain, KEST::TBstr& html);

// Takes the tags out of HTML and unescapes what is left. A tag reaches from the '<' to the next
// '>'; "<BR>", in any case but with nothing else in it, becomes CR LF. One that another '<' or the
// end of the text cuts short is dropped; a '>' outside a tag is text.
//   plain    receives the text
//   Failure  HTML of 128 units and more takes a temporary block, and what is left of it one more;
//            without memory for these plain stays as it was, without memory for the result it ends
//            up empty
KEST_API void KestHtmlToPlain(const unsigned short* html, KEST::TBstr& plain);

// IPv4 addresses, with the first part of the text in the most significant byte: "1.2.3.4" is
// 0x01020304 on every machine.
//
//   address  the address as a number
//   port     the port as a number
//   text     receives the text
//   See      KestInetAtoN, KestInetNtoA, KestInetNtoAEx, docs/text.md

// Reads one to four decimal numbers with dots between, and ":" with a port.
//
// The last number is ORed in as it is and fills the bytes that are left: "127.1" is 127.0.0.1.
// IT IS NOT CHECKED: "1.2.3.256" is 1.2.3.0. Numbers are read as ucstol does: spaces and a sign may
// lead, a missing one is 0 (so empty text is 0.0.0.0), and what is above 2147483647 becomes that. A
// missing port is 0; its range and what follows it are not checked.
//   text     the address, up to its terminator; null is empty
//   address  receives the address; may be null
//   port     receives the port; may be null
//   Result   true; false, with nothing stored, when a number is negative, one that is not the last
//            is above 255, or the last is followed by anything but ":" or the end
//   Failure  none but the false: nothing is allocated
KEST_API bool KestInetAtoN(const unsigned short* text, unsigned int* address, unsigned int* port);

// Writes an address as "1.2.3.4".
//   Cost  constant
KEST_API void KestInetNtoA(unsigned int address, KEST::TBstr& text);

// Writes an address with its port as "1.2.3.4:80". A port above 0x7FFFFFFF is written as a negative
// number.
//   Cost  constant
KEST_API void KestInetNtoAEx(unsigned int address, unsigned int port, KEST::TBstr& text);
}

#endif  // KEST_TEXT_H
