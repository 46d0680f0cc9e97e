// HTML: plain text becomes a small document and comes back unharmed.

#include <stdio.h>

#include "kest/frame.h"
#include "kest/text.h"

using KEST::TBstr;

static bool Run() {
  // Lines end with "\r\n" in plain text and with <BR> in the document.
  const TBstr note("Is 1 < 2 & 3 > 2?\r\nSay \"yes\".");
  TBstr document, plain;
  KestPlainToHtml(note.GetString(), document);
  if (note.IsEmpty() || document.IsEmpty()) return false;  // no memory
  puts(document.GetMultibyteString());
  KestHtmlToPlain(document.GetString(), plain);
  if (plain != note) return false;

  // Text that goes into a page of your own has to be escaped.
  TBstr name, page;
  KestEntityEscape(KEST_TEXT("<script>"), name);
  page.Format(KEST_TEXT("<p>Hello, <b>%s</b><br>and good bye</p>"), name.GetString());
  if (page.IsEmpty()) return false;
  puts(page.GetMultibyteString());

  // Of a page from elsewhere the text is kept. <BR> breaks a line, in any case of letters; other
  // tags and unknown entities are dropped.
  KestHtmlToPlain(page.GetString(), plain);
  if (plain.IsEmpty()) return false;
  plain.Remove(u'\r');
  puts(plain.GetMultibyteString());
  return true;
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  const bool done = Run();
  KestUninitialize();
  return done ? 0 : 1;
}
