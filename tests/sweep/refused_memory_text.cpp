// Operations of kest/text.h that ask for memory.

#include "kest/text.h"

#include "sweep/refused_memory.h"

using namespace KEST;

namespace kest_test {

namespace {

// An operation that writes to a string, which holds "earlier" before.
template <typename Operation>
auto WritesTo(Operation operation) {
  return OnString(KEST_TEXT("earlier"), operation);
}

// Too long for the buffers on the stack.
const std::u16string kLong(200, u'x');
const std::string kLongBytes(200, 'x');

}  // namespace

std::vector<RefusedMemoryRow> TextRows() {
  return {
      {{"KestZelToIsoEncoding"}, "1 utf-8", {"1 "}, WritesTo([](TBstr& name) {
         return KestZelToIsoEncoding(13, name);
       })},
      {{"KestZelToIsoLang"}, "1 de", {"1 "}, WritesTo([](TBstr& code) {
         return KestZelToIsoLang(2, code);
       })},
      {{"KestEntityEscape"}, "a&amp;b", {""}, WritesTo([](TBstr& out) {
         KestEntityEscape(KEST_TEXT("a&b"), out);
       })},
      {{"KestEntityUnescape"}, "a&b", {""}, WritesTo([](TBstr& out) {
         KestEntityUnescape(KEST_TEXT("a&amp;b"), out);
       })},
      {{"KestEntityUnescape"}, kLongBytes, {"earlier", ""}, WritesTo([](TBstr& out) {
         KestEntityUnescape(Units(kLong), out);
       })},
      {{"KestPlainToHtml"}, "<HTML><BODY>a&amp;b</BODY></HTML>", {""}, WritesTo([](TBstr& html) {
         KestPlainToHtml(KEST_TEXT("a&b"), html);
       })},
      {{"KestHtmlToPlain"}, "a&b", {""}, WritesTo([](TBstr& plain) {
         KestHtmlToPlain(KEST_TEXT("<B>a&amp;b</B>"), plain);
       })},
      {{"KestHtmlToPlain"}, kLongBytes, {"earlier", "earlier", ""}, WritesTo([](TBstr& plain) {
         KestHtmlToPlain(Units(kLong), plain);
       })},
      {{"KestInetNtoA"}, "1.2.3.4", {""}, WritesTo([](TBstr& text) {
         KestInetNtoA(0x01020304, text);
       })},
      {{"KestInetNtoAEx"}, "1.2.3.4:80", {""}, WritesTo([](TBstr& text) {
         KestInetNtoAEx(0x01020304, 80, text);
       })},
  };
}

}  // namespace kest_test
