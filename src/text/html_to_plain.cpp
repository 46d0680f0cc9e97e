// The text of an HTML document.

#include "kest/text.h"
#include "string/splice.h"
#include "text/copy_until.h"
#include "text/scratch.h"

namespace {

using namespace KEST;

// Units in "<BR>", in any case of its letters the only tag that means something.
constexpr int kBreakLength = 4;

bool IsBreak(const unsigned short* tag, ptrdiff_t length) {
  return length == kBreakLength && ucsnicmp(tag, KEST_TEXT("<BR>"), kBreakLength) == 0;
}

// Writes the text without its tags, and a terminator. A tag that is never closed is dropped with
// what follows; one that another '<' cuts short starts again there.
void StripTags(const unsigned short* html, const unsigned short* end, unsigned short* dest) {
  while ((html = CopyUntil('<', html, end, dest)) != end) {
    const unsigned short* const open = html++;
    while (html != end && *html != '>' && *html != '<') ++html;
    if (html == end || *html == '<') continue;
    ++html;
    if (IsBreak(open, html - open)) {
      *dest++ = '\r';
      *dest++ = '\n';
    }
  }
  *dest = 0;
}

}  // namespace

extern "C" void KestHtmlToPlain(const unsigned short* html, TBstr& plain) {
  const int length = TextLength(html);
  TScratch scratch(length);
  unsigned short* stripped = scratch.Get();
  if (stripped == nullptr) return;
  StripTags(html, html + length, stripped);
  KestEntityUnescape(stripped, plain);
}
