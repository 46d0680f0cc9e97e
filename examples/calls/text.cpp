// The calls of kest/text.h.

#include "kest/text.h"

#include "check.h"
#include "kest/frame.h"

using KEST::TBstr;

int main() {
  if (!KestInitialize(nullptr)) return 1;
  {
    //! [encodings]
    TBstr name;
    Check(KestZelToIsoEncoding(13, name) == 1 && name == KEST::kUtf8Encoding);
    int encoding;
    Check(KestIsoToZelEncoding(KEST_TEXT("ISO-8859-1"), &encoding) == 1 && encoding == 3);
    //! [encodings]

    //! [languages]
    TBstr code;
    Check(KestZelToIsoLang(2, code) == 1 && code == KEST_TEXT("de"));
    int language;
    Check(KestIsoToZelLang(KEST_TEXT("en-US"), &language) == 1 && language == 0);
    //! [languages]

    //! [entities]
    TBstr escaped, plain;
    KestEntityEscape(KEST_TEXT("a < b & c"), escaped);
    Check(escaped == KEST_TEXT("a &lt; b &amp; c"));
    KestEntityUnescape(escaped.GetString(), plain);
    Check(plain == KEST_TEXT("a < b & c"));
    //! [entities]

    //! [html]
    TBstr page, text;
    KestPlainToHtml(KEST_TEXT("one\r\ntwo"), page);
    Check(page == KEST_TEXT("<HTML><BODY>one<BR>two</BODY></HTML>"));
    KestHtmlToPlain(page.GetString(), text);
    Check(text == KEST_TEXT("one\r\ntwo"));
    //! [html]

    //! [addresses]
    unsigned int address, port;
    Check(KestInetAtoN(KEST_TEXT("127.0.0.1:80"), &address, &port));
    Check(address == 0x7F000001 && port == 80);
    TBstr written;
    KestInetNtoA(address, written);
    Check(written == KEST_TEXT("127.0.0.1"));
    KestInetNtoAEx(address, port, written);
    Check(written == KEST_TEXT("127.0.0.1:80"));
    //! [addresses]
  }
  KestUninitialize();
  puts("as shown");
  return 0;
}
