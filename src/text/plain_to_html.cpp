// Plain text as an HTML document.

#include "kest/text.h"
#include "text/escape.h"

namespace {

using namespace KEST;

void PutDocument(STextSink& sink, const unsigned short* plain) {
  sink.Put(KEST_TEXT("<HTML><BODY>"));
  // A CR or LF alone stays as it is, on purpose.
  while (const unsigned short* lineEnd = ucsstr(plain, KEST_TEXT("\r\n"))) {
    PutEscaped(sink, plain, lineEnd);
    sink.Put(KEST_TEXT("<BR>"));
    plain = lineEnd + 2;
  }
  PutEscaped(sink, plain, plain + ucslen(plain));
  sink.Put(KEST_TEXT("</BODY></HTML>"));
}

}  // namespace

extern "C" void KestPlainToHtml(const unsigned short* plain, TBstr& html) {
  BuildText(html, [=](STextSink& sink) { PutDocument(sink, plain); });
}
